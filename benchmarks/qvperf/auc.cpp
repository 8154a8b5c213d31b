#include "benchmarks/qvperf/workloads.h"
#include "stats/api/calcauc.h"

namespace QVPerf {

bool RunAUC(const Run& run) {
  if (run.GetCase() != "auc1e6") return false;
  const Array scores = run.Load("auc_score"), labels = run.Load("auc_label");
  std::vector<double> actives, decoys;
  for (std::size_t i = 0; i < scores.values.size(); ++i)
    (labels.values[i] > 0.5 ? actives : decoys).push_back(scores.values[i]);
  double auc = 0.0;
  run.Time(
      "auc", [] {}, [&] { auc = QVStats::QVCalculateAUC(actives, decoys, true); },
      [&] { return Check("auc", auc); });
  return true;
}

}  // namespace QVPerf
