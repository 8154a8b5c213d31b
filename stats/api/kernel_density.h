/// \file
/// \brief The density of a sample by Gaussian kernels: a smooth curve in the place of a histogram.
///
///     QVMath::QVDataSeries curve;
///     double xmin, xmax, ymin, ymax;
///     std::sort(values.begin(), values.end());
///     QVGetKernelDensityPlotPoints(curve, xmin, xmax, ymin, ymax, values,
///                                  QVGetKernelBandwidth(values), 512, values.front(),
///                                  values.back());
///
/// Source: B. W. Silverman, "Density Estimation for Statistics and Data Analysis", 1986, chapters 2
/// and 3.
#ifndef QVSTATS_API_KERNEL_DENSITY_H
#define QVSTATS_API_KERNEL_DENSITY_H

#include <cstddef>
#include <vector>

#include "platform/math/data_series.h"
#include "stats/api/export.h"
#include "stats/api/stat_model.h"

namespace QVStats {

/// The rule of thumb 0.9 min(s, IQR / 1.34) n^(-1/5), with s^2 the variance (divisor n - 1) and IQR
/// the inter-quartile range (quantiles of type 8). Where the IQR is 0, and below four values, s
/// alone; where s is 0 too, 0.05 |x| of the one value x there is, or 1 if that is 0. The bad double
/// without data.
/// \param sorted the sample in ascending order.
QVSTATS_EXPORT double QVGetKernelBandwidth(const std::vector<double>& sorted);

/// The density sum_i phi((x - x_i) / h) / (n h), phi that of the standard normal distribution, at
/// `numPoints` points spread evenly over the range of x: from three bandwidths h below the data to
/// three above, or further out to `lo` and `hi`. ymin is 0 and ymax the largest density. One point
/// stands at xmin; none gives an empty series. Kernels end 8.5 bandwidths from their value, where
/// they are below rounding.
///
/// The series is left empty on a failure, "QVGetKernelDensityPlotPoints":
/// - NoData: no data.
/// - LowerBoundViolated: the bandwidth is not above 0.
/// - MissingOrBadResponseValue: a value is a sentinel, infinite or NaN.
QVSTATS_EXPORT QVStatModelResult QVGetKernelDensityPlotPoints(
    QVMath::QVDataSeries& series, double& xmin, double& xmax, double& ymin, double& ymax,
    const std::vector<double>& data, double bandwidth, std::size_t numPoints, double lo, double hi);

}  // namespace QVStats

#endif  // QVSTATS_API_KERNEL_DENSITY_H
