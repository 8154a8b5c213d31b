#include "stats/api/kernel_density.h"

#include <algorithm>
#include <cmath>

#include "platform/system/cast.h"
#include "stats/api/data_vector_functions.h"
#include "stats/api/stats_data_types.h"
#include "stats/failure.h"

namespace QVStats {

namespace {

constexpr std::size_t kFewestForQuartiles = 4;
constexpr double kReach = 8.5;   // exp(-8.5^2 / 2) < 2^-52
constexpr double kMargin = 3.0;  // of the plot, in bandwidths

bool IsData(double value) {
  return std::isfinite(value) && value != QVStatsBadData::BadDouble &&
         value != QVStatsBadData::MissingDouble;
}

}  // namespace

double QVGetKernelBandwidth(const std::vector<double>& sorted) {
  if (sorted.empty()) return QVStatsBadData::BadDouble;
  double center, spread = 0.0;
  if (sorted.front() < sorted.back()) QVGetCenterAndScale(center, spread, false, sorted);
  if (spread == 0.0) return sorted.front() == 0.0 ? 1.0 : 0.05 * std::abs(sorted.front());
  if (sorted.size() >= kFewestForQuartiles) {
    const double range = QVQuantile(0.75, sorted, 8) - QVQuantile(0.25, sorted, 8);
    if (range > 0.0) spread = std::min(spread, range / 1.34);
  }
  return 0.9 * spread * std::pow(QVSystem::QVDoubleFromCount(sorted.size()), -0.2);
}

QVStatModelResult QVGetKernelDensityPlotPoints(QVMath::QVDataSeries& series, double& xmin,
                                               double& xmax, double& ymin, double& ymax,
                                               const std::vector<double>& data, double bandwidth,
                                               std::size_t numPoints, double lo, double hi) {
  const char* const where = "QVGetKernelDensityPlotPoints";
  series.Clear();
  if (data.empty()) return QVFailure(QVStatModelFailureType::NoData, where);
  if (!(bandwidth > 0.0))
    return QVFailure(QVStatModelFailureType::LowerBoundViolated, where)
           << "Bandwidth: " << bandwidth;
  for (const double x : data)
    if (!IsData(x))
      return QVFailure(QVStatModelFailureType::MissingOrBadResponseValue, where) << "Value: " << x;
  std::vector<double> sorted(data);
  std::sort(sorted.begin(), sorted.end());
  xmin = std::min(lo, sorted.front() - kMargin * bandwidth);
  xmax = std::max(hi, sorted.back() + kMargin * bandwidth);
  ymin = ymax = 0.0;
  const double step =
      numPoints > 1 ? (xmax - xmin) / QVSystem::QVDoubleFromCount(numPoints - 1) : 0.0;
  const double scale =
      1.0 / (std::sqrt(2.0 * M_PI) * bandwidth * QVSystem::QVDoubleFromCount(sorted.size()));
  std::size_t begin = 0, end = 0;  // the values whose kernels reach the point
  for (std::size_t i = 0; i < numPoints; ++i) {
    const double x = xmin + QVSystem::QVDoubleFromCount(i) * step;
    while (begin < sorted.size() && sorted[begin] < x - kReach * bandwidth) ++begin;
    while (end < sorted.size() && sorted[end] <= x + kReach * bandwidth) ++end;
    double sum = 0.0;
    for (std::size_t k = begin; k < end; ++k) {
      const double u = (x - sorted[k]) / bandwidth;
      sum += std::exp(-0.5 * u * u);
    }
    series.AddPoint(x, scale * sum);
    ymax = std::max(ymax, scale * sum);
  }
  return true;
}

}  // namespace QVStats
