/// \file
/// \brief The linear part of fitting a theoretical variogram.
#ifndef QVSTATS_LINEAR_SMOOTHER_VARIOGRAM_FIT_H
#define QVSTATS_LINEAR_SMOOTHER_VARIOGRAM_FIT_H

#include <vector>

#include "stats/api/stats_data_types.h"

namespace QVStats {

/// All bad when there is nothing to fit.
struct QVNuggetAndSill {
  double nugget = QVStatsBadData::BadDouble;
  double sill = QVStatsBadData::BadDouble;
  /// The weighted root-mean-square residual.
  double objective = QVStatsBadData::BadDouble;
};

/// Fits gamma = nugget + (sill - nugget) u by weighted least squares; the vectors are of one
/// length. Nothing is fitted without values or with a sum of weights below 10 eps. Values u that
/// are all the same give nugget = sill = the weighted mean.
QVNuggetAndSill QVFitNuggetAndSill(const std::vector<double>& u, const std::vector<double>& gamma,
                                   const std::vector<double>& weights);

}  // namespace QVStats

#endif  // QVSTATS_LINEAR_SMOOTHER_VARIOGRAM_FIT_H
