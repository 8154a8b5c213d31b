#include <algorithm>
#include <cmath>
#include <limits>

#include "benchmarks/qvperf/qvperf.h"
#include "benchmarks/qvperf/workloads.h"
#include "stats/api/krige_kernels.h"
#include "stats/api/variogram.h"

namespace QVPerf {

namespace {

using Pairs = std::vector<std::pair<double, double>>;

/// Distances of points of the unit cube, scaled to at most 1, with the differences of their values.
Pairs MakePairs(const Array& points, const Array& values, std::size_t count) {
  Pairs pairs;
  pairs.reserve(count * (count - 1) / 2);
  for (std::size_t i = 0; i < count; ++i)
    for (std::size_t j = i + 1; j < count; ++j) {
      double square = 0.0;
      for (std::size_t k = 0; k < points.columns; ++k)
        square += std::pow(points.Row(i)[k] - points.Row(j)[k], 2);
      pairs.emplace_back(std::sqrt(square / 3.0), values.values[i] - values.values[j]);
    }
  return pairs;
}

}  // namespace

bool RunVariogram(const Run& run) {
  if (run.GetCase() != "v500k") return false;
  const Pairs all = MakePairs(run.Load("gp_x"), run.Load("gp_y"), 1000);
  Pairs pairs;
  QVStats::QVVariogramImpl variogram;
  run.Time(
      "bin", [&] { pairs = all; }, [&] { QVStats::QVSetupVariogram(variogram, pairs, true); },
      [&] {
        const unsigned int bins = variogram.GetNumBins();
        return Check("bins", bins) + ";" + Check("last", variogram.GetSemivariance(bins - 1));
      });

  double best = 0.0;
  unsigned int bestKernel = 0;
  const auto fitAll = [&] {
    best = std::numeric_limits<double>::max();
    unsigned int number = 0;
    for (const QVStats::QVKrigeKernelBase& candidate : QVStats::QVGetKrigeKernels()) {
      QVStats::QVKrigeKernel kernel(candidate);
      const double error = QVStats::QVFitKernel(kernel, variogram);
      ++number;
      if (error < best) {
        best = error;
        bestKernel = number;
      }
    }
  };
  run.Time(
      "fit16", [] {}, fitAll,
      [&] { return Check("best", best) + ";" + Check("argbest", bestKernel); });
  return true;
}

}  // namespace QVPerf
