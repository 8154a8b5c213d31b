#include <algorithm>
#include <cmath>

#include "benchmarks/qvperf/workloads.h"
#include "stats/api/data_vector_independence.h"

namespace QVPerf {

namespace {

using Values = std::vector<double>;

/// 1 - d^2 of the distances d, scaled to at most 1.
Values GetSimilarities(const Values& x) {
  const auto [low, high] = std::minmax_element(x.begin(), x.end());
  const double range = *high - *low;
  Values similarities;
  similarities.reserve(x.size() * x.size());
  for (const double a : x)
    for (const double b : x) {
      const double d = std::abs(a - b) / range;
      similarities.push_back(1.0 - d * d);
    }
  return similarities;
}

void TimeTest(const Run& run, const char* phase, const Values& x, const Values& y, std::size_t dim,
              bool isSimilarity) {
  constexpr unsigned int kCode = QVStats::QVIndependenceStatisticType::TestStatistic;
  const QVStats::QVTwoSampleIndependenceStatistic statistic(kCode);
  double value = 0.0, p = 0.0;
  run.Time(
      phase, [] {},
      [&] {
        QVStats::QVStatModelResult result;
        QVMath::QVRanNumEngine engine(1);
        Values sims;
        value = statistic(result, x, dim, isSimilarity, y, dim, isSimilarity);
        result = statistic.SimulateStatisticUnderIndependence(sims, engine, 500, x, dim,
                                                              isSimilarity, y, dim, isSimilarity);
        std::sort(sims.begin(), sims.end());
        p = 1.0 - QVStats::QVEmpiricalCDF(value, sims);
      },
      [&] { return Check("stat", value) + ";" + Check("p", p); });
}

}  // namespace

bool RunDistanceCovariance(const Run& run) {
  if (run.GetCase() != "dcov500" && run.GetCase() != "dcov2000") return false;
  const Array data = run.Load(run.GetCase());
  Values x, y;
  for (std::size_t i = 0; i < data.rows; ++i) {
    x.push_back(data.Row(i)[0]);
    y.push_back(data.Row(i)[1]);
  }
  TimeTest(run, "test500", x, y, 1, false);
  TimeTest(run, "test500_matrix", GetSimilarities(x), GetSimilarities(y), data.rows, true);
  return true;
}

}  // namespace QVPerf
