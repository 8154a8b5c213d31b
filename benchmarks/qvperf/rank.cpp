#include "benchmarks/qvperf/workloads.h"
#include "stats/api/data_vector_pairs.h"

namespace QVPerf {

bool RunRankCorrelations(const Run& run) {
  if (run.GetCase() != "rank2000" && run.GetCase() != "rank100000") return false;
  const Array data = run.Load(run.GetCase());
  std::vector<std::pair<double, double>> pairs;
  for (std::size_t i = 0; i < data.rows; ++i) pairs.emplace_back(data.Row(i)[0], data.Row(i)[1]);
  namespace Type = QVStats::QVTwoSampleStatisticType;
  double tau = 0.0, rho = 0.0;
  run.Time(
      "kendall", [] {}, [&] { tau = QVStats::QVTwoSampleStatistic(Type::KendallTau)(pairs); },
      [&] { return Check("tau", tau); });
  run.Time(
      "spearman", [] {}, [&] { rho = QVStats::QVTwoSampleStatistic(Type::SpearmanRho)(pairs); },
      [&] { return Check("rho", rho); });
  return true;
}

}  // namespace QVPerf
