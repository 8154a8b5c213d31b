/// \file
/// \brief The typed random variables of the univariate Gaussian.
#ifndef QVSTATS_API_RAN_VAR_SETUP_H
#define QVSTATS_API_RAN_VAR_SETUP_H

#include <vector>

#include "stats/api/export.h"
#include "stats/api/nran_var.h"
#include "stats/api/stat_model.h"

namespace QVStats {

/// Fills `ranVars` with the eight variables of a univariate Gaussian, each named by its type:
/// mean; variance (positive); sample mean 0; sample variance 1 (positive); a single observation 0;
/// and, empty, the vectors of training observations, testing observations and training weights (not
/// negative).
///
/// Fails with LowerBoundViolated, and leaves the list empty, when the variance is not positive.
QVSTATS_EXPORT QVStatModelResult SetupUniVarGaussianRanVars(std::vector<nQVRanVar>& ranVars,
                                                            double mean, double variance);

}  // namespace QVStats

#endif  // QVSTATS_API_RAN_VAR_SETUP_H
