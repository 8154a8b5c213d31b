#include "benchmarks/qvperf/workloads.h"
#include "stats/api/data_vector_bootstrap.h"
#include "stats/api/data_vector_functions.h"

namespace QVPerf {

bool RunBootstrap(const Run& run) {
  if (run.GetCase() != "boot") return false;
  const Array data = run.Load("boot");
  namespace Type = QVStats::QVSampleStatisticType;
  std::vector<double> stats;
  const auto time = [&](const char* phase, unsigned int code, double parameter) {
    run.Time(
        phase, [] {},
        [&] {
          QVMath::QVRanNumEngine engine(1);
          QVStats::QVBootstrapSampleStatisticForDataVec(stats, engine, code, parameter, data.values,
                                                        10000);
        },
        [&] { return Check("sd", QVStats::QVSampleStatistic(Type::RootMeanSquareDev)(stats)); });
  };
  time("median", Type::Median, 0.0);
  time("trimmed_mean", Type::TrimmedMean, 0.1);
  return true;
}

}  // namespace QVPerf
