#include "stats/api/data_plot_points.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "platform/math/special_functions.h"
#include "platform/system/cast.h"
#include "stats/api/data_vector_functions.h"
#include "stats/api/pdf.h"
#include "stats/failure.h"

namespace QVStats {

namespace {

using QVMath::QVDataSeries;
using QVSystem::QVDoubleFromCount;

constexpr unsigned int kQuantileType = 8;

std::vector<double> Sorted(const std::vector<double>& data) {
  std::vector<double> sorted(data);
  std::sort(sorted.begin(), sorted.end());
  return sorted;
}

void Reset(double& xlo, double& xhi, double& ymin, double& ymax, std::vector<double>& densities) {
  xlo = xhi = ymin = ymax = 0.0;
  densities.clear();
}

/// Adds each value's share of density to the bin that `binOf` gives it; the upper end of the range
/// belongs to the last bin.
template <class BinOf>
void AddToBins(std::vector<double>& densities, double& ymax, const std::vector<double>& sorted,
               double width, BinOf binOf) {
  const double share = 1.0 / (QVDoubleFromCount(sorted.size()) * width);
  for (const double x : sorted) {
    auto bin = static_cast<std::size_t>(binOf(x));
    if (bin == densities.size()) --bin;
    densities.at(bin) += share;
  }
  ymax = *std::max_element(densities.begin(), densities.end());
}

/// Outlines of a histogram and of its band.
/// \param getDensities fills the ranges and densities from the sorted data.
template <class GetDensities>
QVStatModelResult PlotWithBand(const char* where, QVDataSeries& series, QVDataSeries& lower,
                               QVDataSeries& upper, double& ymax, const std::vector<double>& data,
                               double lo, double hi, double level, GetDensities getDensities) {
  for (QVDataSeries* each : {&series, &lower, &upper}) each->Clear();
  if (!(level > 0.0 && level < 1.0))
    return QVFailure(QVStatModelFailureType::ArgumentOutOfRange, where)
           << "Confidence level: " << level;
  const std::vector<double> sorted = Sorted(data);
  std::vector<double> densities, boundaries;
  getDensities(sorted, densities);
  QVGetBinBoundariesForSortedData(boundaries, densities.size(), false, sorted, lo, hi);
  QVGetHistogramPlotPointsFromBinStats(series, densities, boundaries);
  // The density of a bin that holds all values; they sum to it.
  const double full = std::accumulate(densities.begin(), densities.end(), 0.0);
  const double n = QVDoubleFromCount(sorted.size()), tail = 0.5 * (1.0 - level);
  std::vector<double> low, high;
  for (const double density : densities) {
    const double k = std::isinf(density) ? n : std::round(n * density / full);
    // The upper limit is 1 - the lower limit of the other n - k values.
    double least = 0.0, most = 1.0, rest;
    if (k > 0.0) least = QVMath::QVIncompleteBetaInverse(k, n - k + 1.0, tail, rest);
    if (k < n) QVMath::QVIncompleteBetaInverse(n - k, k + 1.0, tail, most);
    low.push_back(least > 0.0 ? least * full : 0.0);
    high.push_back(most * full);
    ymax = std::max(ymax, high.back());
  }
  QVGetHistogramPlotPointsFromBinStats(lower, low, boundaries);
  QVGetHistogramPlotPointsFromBinStats(upper, high, boundaries);
  return true;
}

}  // namespace

void QVGetEmpiricalCDFPlotPoints(QVDataSeries& series, double& xmin, double& xmax,
                                 const std::vector<double>& data, double lo, double hi) {
  series.Clear();
  if (data.empty()) return;
  const std::vector<double> s = Sorted(data);
  xmin = s.front();
  xmax = s.back();
  if (lo < xmin) series.AddPoint(lo, 0.0);
  series.AddPoint(xmin, 0.0);
  const double step = 1.0 / QVDoubleFromCount(s.size());
  double height = 0.0;
  for (std::size_t i = 1; i < s.size(); ++i) {
    height += step;
    series.AddPoint(s[i - 1], height);
    series.AddPoint(s[i], height);
  }
  series.AddPoint(xmax, height + step);
  if (xmax < hi) series.AddPoint(hi, 1.0);
}

void QVGetAutoDefinedConstBinWidthHistogram(double& xlo, double& xhi, double& ymin, double& ymax,
                                            std::vector<double>& densities, std::size_t& numBins,
                                            const std::vector<double>& sorted, double lo,
                                            double hi) {
  Reset(xlo, xhi, ymin, ymax, densities);
  numBins = 0;
  if (sorted.empty()) return;
  QVGetXloXhiForSortedData(xlo, xhi, sorted, lo, hi);
  const double range = xhi - xlo;
  const double iqr =
      QVQuantile(0.75, sorted, kQuantileType) - QVQuantile(0.25, sorted, kQuantileType);
  if (!(iqr > 0.0)) {
    numBins = 1;
    densities.assign(1, range > 0.0 ? 1.0 / range : 1.0);
    ymax = densities[0];
    return;
  }
  constexpr double kReciprocalOfFactor = 0.3846153846153846;  // 1 / 2.6
  numBins = static_cast<std::size_t>(QVSystem::QVRoundHalfEven(
      range * kReciprocalOfFactor / (iqr / std::cbrt(QVDoubleFromCount(sorted.size())))));
  const double width = range / QVDoubleFromCount(numBins);
  densities.assign(numBins, 0.0);
  AddToBins(densities, ymax, sorted, width,
            [&](double x) { return numBins ? std::floor((x - xlo) / width) : 1.0; });
}

void QVGetUserDefinedConstBinWidthHistogram(double& xlo, double& xhi, double& ymin, double& ymax,
                                            std::vector<double>& densities,
                                            const std::vector<double>& sorted, std::size_t numBins,
                                            double lo, double hi) {
  Reset(xlo, xhi, ymin, ymax, densities);
  if (sorted.empty() || numBins == 0) return;
  QVGetXloXhiForSortedData(xlo, xhi, sorted, lo, hi);
  const double width = (xhi - xlo) / QVDoubleFromCount(numBins);
  densities.assign(numBins, 0.0);
  const double binsPerUnit = 1.0 / width;  // infinite for a subnormal width too
  AddToBins(densities, ymax, sorted, width, [&](double x) {
    return std::isfinite(binsPerUnit) ? std::floor((x - xlo) * binsPerUnit) : 0.0;
  });
}

void QVGetUserDefinedConstFreqHistogram(double& xlo, double& xhi, double& ymin, double& ymax,
                                        std::vector<double>& densities,
                                        const std::vector<double>& sorted, std::size_t numBins,
                                        double lo, double hi) {
  Reset(xlo, xhi, ymin, ymax, densities);
  std::vector<double> boundaries;
  QVGetBinBoundariesForSortedData(boundaries, numBins, true, sorted, lo, hi);
  if (boundaries.empty()) return;
  xlo = boundaries.front();
  xhi = boundaries.back();
  for (std::size_t k = 1; k < boundaries.size(); ++k)
    densities.push_back(1.0 / QVDoubleFromCount(numBins) / (boundaries[k] - xlo));
}

void QVGetBinBoundariesForSortedData(std::vector<double>& boundaries, std::size_t numBins,
                                     bool byQuantile, const std::vector<double>& sorted, double lo,
                                     double hi) {
  boundaries.clear();
  if (sorted.empty() || numBins == 0) return;
  double xlo, xhi;
  QVGetXloXhiForSortedData(xlo, xhi, sorted, lo, hi);
  const double count = QVDoubleFromCount(numBins), width = (xhi - xlo) / count;
  boundaries.push_back(xlo);
  for (std::size_t k = 1; k < numBins; ++k) {
    const double position = QVDoubleFromCount(k);
    boundaries.push_back(byQuantile ? QVQuantile(position / count, sorted, kQuantileType)
                                    : xlo + position * width);
  }
  boundaries.push_back(byQuantile ? xhi : xlo + count * width);
}

void QVGetHistogramPlotPointsFromBinStats(QVDataSeries& series,
                                          const std::vector<double>& densities,
                                          const std::vector<double>& boundaries) {
  series.Clear();
  if (densities.empty() || boundaries.size() != densities.size() + 1) return;
  series.AddPoint(boundaries[0], 0.0);
  for (std::size_t k = 0; k < densities.size(); ++k) {
    series.AddPoint(boundaries[k], densities[k]);
    series.AddPoint(boundaries[k + 1], densities[k]);
    series.AddPoint(boundaries[k + 1], 0.0);
  }
}

void QVGetAutoDefinedConstBinWidthHistPlotPoints(QVDataSeries& series, double& xmin, double& xmax,
                                                 double& ymin, double& ymax,
                                                 const std::vector<double>& data, double lo,
                                                 double hi) {
  const std::vector<double> sorted = Sorted(data);
  std::vector<double> densities, boundaries;
  std::size_t numBins = 0;
  QVGetAutoDefinedConstBinWidthHistogram(xmin, xmax, ymin, ymax, densities, numBins, sorted, lo,
                                         hi);
  QVGetBinBoundariesForSortedData(boundaries, numBins, false, sorted, lo, hi);
  QVGetHistogramPlotPointsFromBinStats(series, densities, boundaries);
}

void QVGetUserDefinedConstBinWidthHistPlotPoints(QVDataSeries& series, double& xmin, double& xmax,
                                                 double& ymin, double& ymax,
                                                 const std::vector<double>& data,
                                                 std::size_t numBins, double lo, double hi) {
  const std::vector<double> sorted = Sorted(data);
  std::vector<double> densities, boundaries;
  QVGetUserDefinedConstBinWidthHistogram(xmin, xmax, ymin, ymax, densities, sorted, numBins, lo,
                                         hi);
  QVGetBinBoundariesForSortedData(boundaries, numBins, false, sorted, lo, hi);
  QVGetHistogramPlotPointsFromBinStats(series, densities, boundaries);
}

void QVGetUserDefinedConstFreqHistPlotPoints(QVDataSeries& series, double& xmin, double& xmax,
                                             double& ymin, double& ymax,
                                             const std::vector<double>& data, std::size_t numBins,
                                             double lo, double hi) {
  const std::vector<double> sorted = Sorted(data);
  std::vector<double> densities, boundaries;
  QVGetUserDefinedConstFreqHistogram(xmin, xmax, ymin, ymax, densities, sorted, numBins, lo, hi);
  QVGetBinBoundariesForSortedData(boundaries, numBins, true, sorted, lo, hi);
  QVGetHistogramPlotPointsFromBinStats(series, densities, boundaries);
}

QVStatModelResult QVGetAutoDefConstBinWidthHistPlotPtsConfidenceInt(
    QVDataSeries& series, QVDataSeries& lower, QVDataSeries& upper, double& xmin, double& xmax,
    double& ymin, double& ymax, const std::vector<double>& data, double lo, double hi,
    double level) {
  return PlotWithBand("QVGetAutoDefConstBinWidthHistPlotPtsConfidenceInt", series, lower, upper,
                      ymax, data, lo, hi, level,
                      [&](const std::vector<double>& sorted, std::vector<double>& densities) {
                        std::size_t numBins;
                        QVGetAutoDefinedConstBinWidthHistogram(xmin, xmax, ymin, ymax, densities,
                                                               numBins, sorted, lo, hi);
                      });
}

QVStatModelResult QVGetUserDefConstBinWidthHistPlotPtsConfidenceInt(
    QVDataSeries& series, QVDataSeries& lower, QVDataSeries& upper, double& xmin, double& xmax,
    double& ymin, double& ymax, const std::vector<double>& data, std::size_t numBins, double lo,
    double hi, double level) {
  return PlotWithBand("QVGetUserDefConstBinWidthHistPlotPtsConfidenceInt", series, lower, upper,
                      ymax, data, lo, hi, level,
                      [&](const std::vector<double>& sorted, std::vector<double>& densities) {
                        QVGetUserDefinedConstBinWidthHistogram(xmin, xmax, ymin, ymax, densities,
                                                               sorted, numBins, lo, hi);
                      });
}

QVStatModelResult QVGetNormalProbabilityPlotPointsForSortedData(
    QVDataSeries& series, double& xmin, double& xmax, double& ymin, double& ymax,
    const std::vector<double>& sorted, double xmin0, double xmax0, double ymin0, double ymax0) {
  const char* where = "QVGetNormalProbabilityPlotPointsForSortedData";
  QVStatModelResult result(true);
  const QVUniVarPDF gaussian = QVUnivariateGaussian("z", 0.0, 1.0, result);
  if (QVFailedIn(result, where)) return result;
  xmin = xmin0;
  xmax = xmax0;
  ymin = ymin0;
  ymax = ymax0;
  double center, scale;
  QVGetCenterAndScale(center, scale, true, sorted);
  series.Clear();
  const double unit = 1.0 / ((QVDoubleFromCount(sorted.size()) + 1.0) - 0.6666666666666666);
  for (std::size_t i = 0; i < sorted.size(); ++i) {
    const double p = (QVDoubleFromCount(i + 1) - 0.3333333333333333) * unit;
    const double z = gaussian.GetPercentile(p, result);
    if (QVFailedIn(result, where)) return result;
    const double y = (sorted[i] - center) / scale;
    xmin = std::min(xmin, z);
    xmax = std::max(xmax, z);
    ymin = std::min(ymin, y);
    ymax = std::max(ymax, y);
    series.AddPoint(z, y);
  }
  return result;
}

}  // namespace QVStats
