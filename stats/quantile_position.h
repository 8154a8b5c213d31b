/// \file
/// \brief Where the quantiles of QVQuantile stand among the sorted values, however these are found.
#ifndef QVSTATS_QUANTILE_POSITION_H
#define QVSTATS_QUANTILE_POSITION_H

#include <algorithm>
#include <cstddef>

namespace QVStats {

/// A quantile stands at the j-th of the sorted values (from 1), or a share g on to the next.
struct QVQuantilePosition {
  std::size_t j;
  double g;
  /// What the quantile is when it stands nowhere; 0 when it stands somewhere.
  double sentinel;
};

/// Of the probability p among n values, for a type of QVQuantile.
QVQuantilePosition QVFindQuantile(double p, std::size_t n, unsigned int type);

/// \param at(k) the k-th smallest of n values, k from 1 to n; called with k in ascending order.
template <class At>
double QVReadQuantile(const QVQuantilePosition& position, std::size_t n, At at) {
  if (position.sentinel != 0.0) return position.sentinel;
  const auto inside = [n](std::size_t k) { return std::clamp<std::size_t>(k, 1, n); };
  const double g = position.g;
  if (g == 0.0) return at(inside(position.j));
  if (g == 1.0) return at(inside(position.j + 1));
  const double lower = at(inside(position.j));
  return (1.0 - g) * lower + g * at(inside(position.j + 1));
}

/// How many values the trimmed mean of a fraction drops at each end of n; n when nothing is left.
std::size_t QVGetNumTrimmed(double fraction, std::size_t n);

}  // namespace QVStats

#endif  // QVSTATS_QUANTILE_POSITION_H
