#include "stats/api/pdf_functions.h"

#include <algorithm>

#include "platform/system/cast.h"
#include "platform/system/error_handler.h"
#include "stats/api/data_plot_points.h"
#include "stats/api/two_dim_function_grid.h"
#include "stats/failure.h"

namespace QVStats {

namespace {

using QVMath::QVDataSeries;
using QVSystem::QVThrow;

/// Draws a sample and plots it.
template <class Plot>
QVStatModelResult PlotSample(const char* where, QVUniVarPDF& pdf, std::size_t n,
                             QVMath::QVRanNumEngine& engine, Plot plot) {
  std::vector<double> sample;
  const QVStatModelResult result = QVGetPDFSample(sample, pdf, n, engine);
  if (result.NotSuccessful()) return QVCalledFrom(where, result);
  plot(sample);
  return result;
}

/// The range of x between the percentiles that cut off half of tailProb at each end, widened to
/// the user's limits.
QVStatModelResult GetCentralRange(double& xmin, double& xmax, const QVUniVarPDF& pdf,
                                  double tailProb, double xLow, double xHigh) {
  QVStatModelResult result(true);
  xmin = pdf.GetPercentile(0.5 * tailProb, result);
  if (result.NotSuccessful()) return result;
  xmax = pdf.GetPercentile(1.0 - 0.5 * tailProb, result);
  xmin = std::min(xmin, xLow);
  xmax = std::max(xmax, xHigh);
  return result;
}

/// The curve of `height(x, result)` over the central range of a distribution.
template <class Height>
QVStatModelResult PlotCurve(const char* where, QVDataSeries& series, double& xmin, double& xmax,
                            double& ymin, double& ymax, const QVUniVarPDF& pdf, double tailProb,
                            std::size_t numPoints, double xLow, double xHigh, Height height) {
  QVStatModelResult result = GetCentralRange(xmin, xmax, pdf, tailProb, xLow, xHigh);
  if (QVFailedIn(result, where)) return result;
  series.Clear();
  const double step =
      numPoints > 1 ? (xmax - xmin) / (QVSystem::QVDoubleFromCount(numPoints) - 1.0) : 0.0;
  ymin = ymax = 0.0;
  double sum = 0.0;
  for (std::size_t i = 0; i < numPoints; ++i) {
    const double x = xmin + static_cast<double>(i) * step;
    const double y = height(x, result);
    if (QVFailedIn(result, where)) return result;
    ymax = std::max(ymax, y);
    sum += y * step;
    series.AddPoint(x, y);
  }
  QVThrow.Info("sum density = %f", sum);
  return result;
}

/// The density of two variables at the nodes of a grid, x fastest.
QVStatModelResult GetNodeDensities(std::vector<double>& values, const QVMultiVarPDF& pdf,
                                   std::size_t numPoints, double x0, double dx, double y0,
                                   double dy) {
  QVStatModelResult result(true);
  values.clear();
  values.reserve(numPoints * numPoints);
  for (std::size_t j = 0; j < numPoints; ++j)
    for (std::size_t i = 0; i < numPoints; ++i) {
      const std::vector<double> at = {x0 + static_cast<double>(i) * dx,
                                      y0 + static_cast<double>(j) * dy};
      values.push_back(pdf.GetDensity(at, result, true));
      if (result.NotSuccessful()) return result;
    }
  return result;
}

/// The marginal distributions of two variables, their means and variances reported, and ranges.
QVStatModelResult GetMarginalRanges(double& xmin, double& xmax, double& ymin, double& ymax,
                                    const QVMultiVarPDF& pdf, double tailProb, double xLow,
                                    double xHigh, double yLow, double yHigh) {
  QVStatModelResult result(true);
  double means[2] = {}, variances[2] = {};
  auto name = pdf.GetVariableNames();
  for (int i = 0; i < 2; ++i, ++name) {
    const QVUniVarPDF marginal = pdf.GetUnivariateMarginal(*name, result);
    if (result.NotSuccessful()) return result;
    means[i] = marginal.GetMean(result);
    if (result.NotSuccessful()) return result;
    variances[i] = marginal.GetVariance(result);
    if (result.NotSuccessful()) return result;
    result = i == 0 ? GetCentralRange(xmin, xmax, marginal, tailProb, xLow, xHigh)
                    : GetCentralRange(ymin, ymax, marginal, tailProb, yLow, yHigh);
    if (result.NotSuccessful()) return result;
  }
  QVThrow.Info("mean x, mean y = %f %f", means[0], means[1]);
  QVThrow.Info("Var x, Var y = %f %f", variances[0], variances[1]);
  QVThrow.Info("xlo,xhi,ylo,yhi = %f %f %f %f", xmin, xmax, ymin, ymax);
  return result;
}

}  // namespace

QVStatModelResult QVGetPDFSample(std::vector<double>& sample, QVUniVarPDF& pdf, std::size_t n,
                                 QVMath::QVRanNumEngine& engine) {
  QVStatModelResult result(true);
  sample.clear();
  sample.reserve(n);
  for (std::size_t i = 0; i < n; ++i) {
    const double outcome = pdf.GetRandomOutcome(result, engine);
    if (QVFailedIn(result, "QVGetPDFSample")) return result;
    sample.push_back(outcome);
  }
  return result;
}

QVStatModelResult QVGetEmpiricalCDFPlotPointsForPDFSample(QVDataSeries& series, double& xmin,
                                                          double& xmax, QVUniVarPDF& pdf,
                                                          std::size_t n,
                                                          QVMath::QVRanNumEngine& engine,
                                                          double xLow, double xHigh) {
  return PlotSample("QVGetEmpiricalCDFPlotPointsForPDFSample", pdf, n, engine,
                    [&](const std::vector<double>& sample) {
                      QVGetEmpiricalCDFPlotPoints(series, xmin, xmax, sample, xLow, xHigh);
                    });
}

QVStatModelResult QVGetAutoDefConstBinWidthHistPlotPointsForPDFSample(
    QVDataSeries& series, double& xmin, double& xmax, double& ymin, double& ymax, QVUniVarPDF& pdf,
    std::size_t n, QVMath::QVRanNumEngine& engine, double xLow, double xHigh) {
  return PlotSample("QVGetAutoDefConstBinWidthHistPlotPointsForPDFSample", pdf, n, engine,
                    [&](const std::vector<double>& sample) {
                      QVGetAutoDefinedConstBinWidthHistPlotPoints(series, xmin, xmax, ymin, ymax,
                                                                  sample, xLow, xHigh);
                    });
}

QVStatModelResult QVGetUserDefConstBinWidthHistPlotPointsForPDFSample(
    QVDataSeries& series, double& xmin, double& xmax, double& ymin, double& ymax, QVUniVarPDF& pdf,
    std::size_t n, std::size_t numBins, QVMath::QVRanNumEngine& engine, double xLow, double xHigh) {
  return PlotSample("QVGetUserDefConstBinWidthHistPlotPointsForPDFSample", pdf, n, engine,
                    [&](const std::vector<double>& sample) {
                      QVGetUserDefinedConstBinWidthHistPlotPoints(series, xmin, xmax, ymin, ymax,
                                                                  sample, numBins, xLow, xHigh);
                    });
}

QVStatModelResult QVGetUserDefConstFreqHistPlotPointsForPDFSample(
    QVDataSeries& series, double& xmin, double& xmax, double& ymin, double& ymax, QVUniVarPDF& pdf,
    std::size_t n, std::size_t numBins, QVMath::QVRanNumEngine& engine, double xLow, double xHigh) {
  return PlotSample("QVGetUserDefConstFreqHistPlotPointsForPDFSample", pdf, n, engine,
                    [&](const std::vector<double>& sample) {
                      QVGetUserDefinedConstFreqHistPlotPoints(series, xmin, xmax, ymin, ymax,
                                                              sample, numBins, xLow, xHigh);
                    });
}

QVStatModelResult QVGetPDFDensityPlotPoints(QVDataSeries& series, double& xmin, double& xmax,
                                            double& ymin, double& ymax, const QVUniVarPDF& pdf,
                                            double tailProb, std::size_t numPoints, double xLow,
                                            double xHigh) {
  return PlotCurve(
      "QVGetPDFDensityPlotPoints", series, xmin, xmax, ymin, ymax, pdf, tailProb, numPoints, xLow,
      xHigh, [&](double x, QVStatModelResult& result) { return pdf.GetDensity(x, result, true); });
}

QVStatModelResult QVGetPDFCDFPlotPoints(QVDataSeries& series, double& xmin, double& xmax,
                                        double& ymin, double& ymax, const QVUniVarPDF& pdf,
                                        double tailProb, std::size_t numPoints, double xLow,
                                        double xHigh) {
  return PlotCurve(
      "QVGetPDFCDFPlotPoints", series, xmin, xmax, ymin, ymax, pdf, tailProb, numPoints, xLow,
      xHigh, [&](double x, QVStatModelResult& result) { return pdf.GetCDF(x, result, true); });
}

QVStatModelResult QVGetPDFScaledDensityPlotPoints(QVDataSeries& series, double& xmin, double& xmax,
                                                  double& ymin, double& ymax,
                                                  const QVUniVarPDF& pdf, double tailProb,
                                                  double scale, std::size_t numPoints, double xLow,
                                                  double xHigh) {
  return PlotCurve("QVGetPDFScaledDensityPlotPoints", series, xmin, xmax, ymin, ymax, pdf, tailProb,
                   numPoints, xLow, xHigh, [&](double x, QVStatModelResult& result) {
                     return scale * pdf.GetDensity(x, result, true);
                   });
}

QVStatModelResult QVGet2DimPDFDensityPlotPoints(std::vector<QVDataSeries>& series, double& xmin,
                                                double& xmax, double& ymin, double& ymax,
                                                const QVMultiVarPDF& pdf, double tailProb,
                                                std::size_t numPoints, double xLow, double xHigh,
                                                double yLow, double yHigh) {
  const char* where = "QVGet2DimPDFDensityPlotPoints";
  if (pdf.GetNumVariables() != 2)
    return QVFailure(QVStatModelFailureType::WrongNumPDFVars, where)
           << "Num variables = " << pdf.GetNumVariables() << "; Expected 2";
  constexpr std::size_t kMostPoints = 65535;  // the nodes are counted by unsigned integers
  if (numPoints == 0 || numPoints > kMostPoints)
    return QVFailure(QVStatModelFailureType::ArgumentOutOfRange, where)
           << "Num points = " << numPoints << "; must be 1 to " << kMostPoints;
  QVStatModelResult result =
      GetMarginalRanges(xmin, xmax, ymin, ymax, pdf, tailProb, xLow, xHigh, yLow, yHigh);
  if (QVFailedIn(result, where)) return result;
  const double count = QVSystem::QVDoubleFromCount(numPoints);
  const double dx = (xmax - xmin) / count, dy = (ymax - ymin) / count;
  std::vector<double> values;
  result = GetNodeDensities(values, pdf, numPoints, xmin, dx, ymin, dy);
  if (QVFailedIn(result, where)) return result;
  const auto nodes = static_cast<unsigned int>(numPoints);
  QVTwoDimFuncGrid grid(nodes, nodes, dx, dy, xmin, ymin, values);
  const double highest = grid.GetMaxFuncValue();
  QVThrow.Info("fMax = %f", highest);
  series.clear();
  constexpr int kNumLevels = 10;
  for (int k = 0; k < kNumLevels; ++k) {
    result = grid.PlotContour(highest * (0.05 + 0.1 * k), series);
    if (QVFailedIn(result, where)) return result;
  }
  return result;
}

}  // namespace QVStats
