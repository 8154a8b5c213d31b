/// \file
/// \brief Samples of a distribution, and points to plot it.
///
/// Every function returns success, or the first failure with its own name added as a caller. The
/// series may then be partly filled. `xLow` and `xHigh` widen the range of x that a plot covers by
/// itself and never narrow it. Ranges are returned for the axes: xmin, xmax and, where heights are
/// plotted, ymin, ymax.
#ifndef QVSTATS_API_PDF_FUNCTIONS_H
#define QVSTATS_API_PDF_FUNCTIONS_H

#include <cstddef>
#include <vector>

#include "platform/math/data_series.h"
#include "stats/api/export.h"
#include "stats/api/pdf.h"

namespace QVStats {

/// `sample` becomes n draws, in draw order.
QVSTATS_EXPORT QVStatModelResult QVGetPDFSample(std::vector<double>& sample, QVUniVarPDF& pdf,
                                                std::size_t n, QVMath::QVRanNumEngine& engine);

/// \name Plots of n draws
/// The routines of stats/api/data_plot_points.h on a sample drawn from the distribution.
/// @{

/// The empirical distribution function.
QVSTATS_EXPORT QVStatModelResult QVGetEmpiricalCDFPlotPointsForPDFSample(
    QVMath::QVDataSeries& series, double& xmin, double& xmax, QVUniVarPDF& pdf, std::size_t n,
    QVMath::QVRanNumEngine& engine, double xLow, double xHigh);
/// A histogram whose bin width follows from the sample.
QVSTATS_EXPORT QVStatModelResult QVGetAutoDefConstBinWidthHistPlotPointsForPDFSample(
    QVMath::QVDataSeries& series, double& xmin, double& xmax, double& ymin, double& ymax,
    QVUniVarPDF& pdf, std::size_t n, QVMath::QVRanNumEngine& engine, double xLow, double xHigh);
/// A histogram of numBins bins of equal width.
QVSTATS_EXPORT QVStatModelResult QVGetUserDefConstBinWidthHistPlotPointsForPDFSample(
    QVMath::QVDataSeries& series, double& xmin, double& xmax, double& ymin, double& ymax,
    QVUniVarPDF& pdf, std::size_t n, std::size_t numBins, QVMath::QVRanNumEngine& engine,
    double xLow, double xHigh);
/// A histogram of numBins bins of equal frequency.
QVSTATS_EXPORT QVStatModelResult QVGetUserDefConstFreqHistPlotPointsForPDFSample(
    QVMath::QVDataSeries& series, double& xmin, double& xmax, double& ymin, double& ymax,
    QVUniVarPDF& pdf, std::size_t n, std::size_t numBins, QVMath::QVRanNumEngine& engine,
    double xLow, double xHigh);
/// @}

/// The density at `numPoints` (>= 1) points spread evenly from the percentile at tailProb / 2 to
/// that at 1 - tailProb / 2. ymin is 0 and ymax the largest value. A report at information level,
/// "sum density = <sum>", gives the sum of the values times their spacing: about 1 - tailProb for a
/// density. One point stands at xmin; none gives an empty series.
QVSTATS_EXPORT QVStatModelResult QVGetPDFDensityPlotPoints(QVMath::QVDataSeries& series,
                                                           double& xmin, double& xmax, double& ymin,
                                                           double& ymax, const QVUniVarPDF& pdf,
                                                           double tailProb, std::size_t numPoints,
                                                           double xLow, double xHigh);
/// The same for the distribution function.
QVSTATS_EXPORT QVStatModelResult QVGetPDFCDFPlotPoints(QVMath::QVDataSeries& series, double& xmin,
                                                       double& xmax, double& ymin, double& ymax,
                                                       const QVUniVarPDF& pdf, double tailProb,
                                                       std::size_t numPoints, double xLow,
                                                       double xHigh);
/// The same for `scale` times the density, say the number of values in a histogram's bin.
QVSTATS_EXPORT QVStatModelResult
QVGetPDFScaledDensityPlotPoints(QVMath::QVDataSeries& series, double& xmin, double& xmax,
                                double& ymin, double& ymax, const QVUniVarPDF& pdf, double tailProb,
                                double scale, std::size_t numPoints, double xLow, double xHigh);

/// Contour lines of the density of two variables (WrongNumPDFVars otherwise), at 5, 15, ..., 95 %
/// of the highest of numPoints x numPoints nodes; each line is a series, the lowest level first.
/// The nodes cover each variable from its marginal percentile at tailProb / 2 to that at 1 -
/// tailProb / 2, widened to the given limits, with a spacing of that width over numPoints, so that
/// the last node stands a step short of the upper end. Means, variances, ranges and the highest
/// value are reported at information level.
QVSTATS_EXPORT QVStatModelResult QVGet2DimPDFDensityPlotPoints(
    std::vector<QVMath::QVDataSeries>& series, double& xmin, double& xmax, double& ymin,
    double& ymax, const QVMultiVarPDF& pdf, double tailProb, std::size_t numPoints, double xLow,
    double xHigh, double yLow, double yHigh);

}  // namespace QVStats

#endif  // QVSTATS_API_PDF_FUNCTIONS_H
