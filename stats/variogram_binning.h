/// \file
/// \brief Where the bins of a variogram begin and end: a matter of counts alone.
#ifndef QVSTATS_VARIOGRAM_BINNING_H
#define QVSTATS_VARIOGRAM_BINNING_H

#include <cstddef>
#include <utility>
#include <vector>

namespace QVStats {

using QVDistanceAndDifference = std::pair<double, double>;

/// Pairs this close are pairs of identical elements.
inline constexpr double QVIdenticalPairDistance = 1e-30;

/// Ascending by distance, then difference; a total order, in which NaN comes last.
bool QVIsNearerPair(const QVDistanceAndDifference& a, const QVDistanceAndDifference& b);

/// The bins of `pairs` pairs in order, the first `identical` of them at distance zero.
struct QVVariogramBins {
  QVVariogramBins(std::size_t pairs, std::size_t identical);

  /// The first position after each bin; the first bin begins at 0.
  std::vector<std::size_t> ends;
  /// Whether the identical pairs are many enough for a bin of their own, the first.
  bool hasZeroBin;
  /// What a set-up routine returns: false without pairs beyond the zero bin.
  bool isUsable;
};

}  // namespace QVStats

#endif  // QVSTATS_VARIOGRAM_BINNING_H
