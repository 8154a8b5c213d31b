/// \file
/// \brief Points to plot a sample: empirical distribution function, histograms, normal probability
/// plot.
///
/// Histograms cover the range from the smaller of `lo` and the smallest value to the larger of `hi`
/// and the largest. Their heights are densities, relative frequency over bin width. Without data,
/// or with no bins, ranges are 0 and vectors and series empty.
#ifndef QVSTATS_API_DATA_PLOT_POINTS_H
#define QVSTATS_API_DATA_PLOT_POINTS_H

#include <cstddef>
#include <vector>

#include "platform/math/data_series.h"
#include "stats/api/export.h"
#include "stats/api/stat_model.h"

namespace QVStats {

/// The steps of the empirical distribution function: two points at each value, and one at `lo` and
/// at `hi` where these lie outside the data. xmin and xmax are the smallest and largest value,
/// unchanged without data.
QVSTATS_EXPORT void QVGetEmpiricalCDFPlotPoints(QVMath::QVDataSeries& series, double& xmin,
                                                double& xmax, const std::vector<double>& data,
                                                double lo, double hi);

/// \name Histograms of a sorted sample
/// ymin is 0 and ymax the largest density, but for the constant-frequency one, where both are 0.
/// @{

/// Bins about 2.6 IQR / cbrt(n) wide; one bin where the inter-quartile range is not above 0. A
/// range so narrow that the rule gives no bin throws std::out_of_range. Source: D. W. Scott,
/// "Multivariate Density Estimation", 1992, section 3.2.
QVSTATS_EXPORT void QVGetAutoDefinedConstBinWidthHistogram(
    double& xlo, double& xhi, double& ymin, double& ymax, std::vector<double>& densities,
    std::size_t& numBins, const std::vector<double>& sorted, double lo, double hi);
/// `numBins` bins of equal width.
QVSTATS_EXPORT void QVGetUserDefinedConstBinWidthHistogram(
    double& xlo, double& xhi, double& ymin, double& ymax, std::vector<double>& densities,
    const std::vector<double>& sorted, std::size_t numBins, double lo, double hi);
/// Bins between the quantiles k / numBins (type 8). Density k is (1 / numBins) over the distance
/// from xlo, not from the boundary before, to the upper boundary of the bin.
QVSTATS_EXPORT void QVGetUserDefinedConstFreqHistogram(double& xlo, double& xhi, double& ymin,
                                                       double& ymax, std::vector<double>& densities,
                                                       const std::vector<double>& sorted,
                                                       std::size_t numBins, double lo, double hi);
/// numBins + 1 boundaries: evenly spaced, or quantiles k / numBins between the ends of the range.
QVSTATS_EXPORT void QVGetBinBoundariesForSortedData(std::vector<double>& boundaries,
                                                    std::size_t numBins, bool byQuantile,
                                                    const std::vector<double>& sorted, double lo,
                                                    double hi);
/// The outline of the bars, 3 K + 1 points for K densities; empty unless there is a boundary more.
QVSTATS_EXPORT void QVGetHistogramPlotPointsFromBinStats(QVMath::QVDataSeries& series,
                                                         const std::vector<double>& densities,
                                                         const std::vector<double>& boundaries);
/// @}

/// \name Histogram outlines of a sample in any order
/// @{
QVSTATS_EXPORT void QVGetAutoDefinedConstBinWidthHistPlotPoints(QVMath::QVDataSeries& series,
                                                                double& xmin, double& xmax,
                                                                double& ymin, double& ymax,
                                                                const std::vector<double>& data,
                                                                double lo, double hi);
QVSTATS_EXPORT void QVGetUserDefinedConstBinWidthHistPlotPoints(
    QVMath::QVDataSeries& series, double& xmin, double& xmax, double& ymin, double& ymax,
    const std::vector<double>& data, std::size_t numBins, double lo, double hi);
QVSTATS_EXPORT void QVGetUserDefinedConstFreqHistPlotPoints(
    QVMath::QVDataSeries& series, double& xmin, double& xmax, double& ymin, double& ymax,
    const std::vector<double>& data, std::size_t numBins, double lo, double hi);
/// @}

/// \name Histogram outlines with confidence bands
/// `lower` and `upper` are the outlines of the limits of each bin's density: those of the
/// probability of a bin that k of n values fell into, over the bin width. Each bin by itself holds
/// the density, averaged over the bin, with at least the probability `level`. ymax is the largest
/// upper limit. Fails with ArgumentOutOfRange unless the level is inside (0, 1); the series are
/// then empty. Source: C. J. Clopper, E. S. Pearson, "The Use of Confidence or Fiducial Limits
/// Illustrated in the Case of the Binomial", Biometrika 26(4), 1934, doi:10.1093/biomet/26.4.404.
/// @{
QVSTATS_EXPORT QVStatModelResult QVGetAutoDefConstBinWidthHistPlotPtsConfidenceInt(
    QVMath::QVDataSeries& series, QVMath::QVDataSeries& lower, QVMath::QVDataSeries& upper,
    double& xmin, double& xmax, double& ymin, double& ymax, const std::vector<double>& data,
    double lo, double hi, double level);
QVSTATS_EXPORT QVStatModelResult QVGetUserDefConstBinWidthHistPlotPtsConfidenceInt(
    QVMath::QVDataSeries& series, QVMath::QVDataSeries& lower, QVMath::QVDataSeries& upper,
    double& xmin, double& xmax, double& ymin, double& ymax, const std::vector<double>& data,
    std::size_t numBins, double lo, double hi, double level);
/// @}

/// Standardised values against the standard normal percentiles at (i - 1/3) / (n + 1/3): a straight
/// line for normal data. Values are standardised by the robust centre and scale of
/// QVGetCenterAndScale. The ranges start at the four given values and are widened to the points.
QVSTATS_EXPORT QVStatModelResult QVGetNormalProbabilityPlotPointsForSortedData(
    QVMath::QVDataSeries& series, double& xmin, double& xmax, double& ymin, double& ymax,
    const std::vector<double>& sorted, double xmin0, double xmax0, double ymin0, double ymax0);

}  // namespace QVStats

#endif  // QVSTATS_API_DATA_PLOT_POINTS_H
