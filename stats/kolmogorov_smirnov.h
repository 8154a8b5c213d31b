/// \file
/// \brief How probable a distance between distribution functions is when there is no difference.
#ifndef QVSTATS_KOLMOGOROV_SMIRNOV_H
#define QVSTATS_KOLMOGOROV_SMIRNOV_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace QVStats {

/// The distance of the distribution functions of n values and a continuous distribution.
/// \return P(D >= d), D the distance above (or below) alone or, two-sided, the larger of both.
double QVGetOneSampleKolmogorovTail(double d, std::size_t n, bool isTwoSided);
/// Up to how many values that is exact.
constexpr std::size_t QVGetMostValuesOfExactKolmogorovTail(bool isTwoSided) {
  return isTwoSided ? 1000 : 100000;
}

/// The distances of the distribution functions of two samples, in units of 1 / (m n).
struct QVSmirnovDistances {
  std::int64_t above = 0;  ///< of the first above the second
  std::int64_t below = 0;
  /// Of each length of the merged sample, whether the next value is a larger one.
  std::vector<char> isEndOfTies;
};

/// \param first, second sorted.
QVSmirnovDistances QVGetSmirnovDistances(const std::vector<double>& first,
                                         const std::vector<double>& second);

/// \return P(distance >= d / (m n)) of two samples with these ties, exact, in O(m n): the distance
/// of the first above the second or, two-sided, the larger of both.
double QVGetExactSmirnovTail(std::int64_t d, std::size_t m, std::size_t n,
                             const std::vector<char>& isEndOfTies, bool isTwoSided);

/// The limit of P(distance >= x / sqrt(n)) for large n.
double QVGetLimitOfKolmogorovTail(double x, bool isTwoSided);

}  // namespace QVStats

#endif  // QVSTATS_KOLMOGOROV_SMIRNOV_H
