/// \file
/// \brief Ranks of values, by a radix sort.
#ifndef QVSTATS_RANKING_H
#define QVSTATS_RANKING_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace QVStats {

/// The order of n values and their ranks. Equal values (0 and -0 are equal) share a rank.
struct QVRanking {
  /// The values' positions in ascending order, those of equal values in input order.
  std::vector<std::uint32_t> order;
  /// Of each value, the number of distinct values below it.
  std::vector<std::uint32_t> rank;
  /// Of each rank, where its values begin in `order`; n at the back.
  std::vector<std::uint32_t> starts;

  std::size_t GetNumRanks() const { return starts.size() - 1; }
  /// The mean of the positions, from 1, of the values of a rank.
  double GetMeanPosition(std::uint32_t r) const {
    return 0.5 * (static_cast<double>(starts[r]) + static_cast<double>(starts[r + 1]) + 1.0);
  }
  /// The number of pairs of equal values.
  std::uint64_t CountTies() const;
  /// sum (t^3 - t) over the sizes t of the groups of equal values.
  double GetTieTerm() const;
};

/// Ranks fewer than 2^32 values, none of which is NaN.
QVRanking QVRankValues(const std::vector<double>& values);

/// The pairs i < j with sequence[i] > sequence[j], counted while merging in n log n.
/// \param sequence is sorted.
std::uint64_t QVCountInversions(std::vector<std::uint32_t>& sequence);

}  // namespace QVStats

#endif  // QVSTATS_RANKING_H
