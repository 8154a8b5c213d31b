#include <sstream>

#include "benchmarks/qvperf/workloads.h"
#include "platform/system/diagnostic_stream.h"
#include "platform/system/error_handler.h"
#include "stats/api/gaussian_mixture_model.h"

namespace QVPerf {

namespace {

/// The number after "var lower bound = ", one less than the cycles done.
double ReadCycles(const std::string& lines) {
  const std::string label = "var lower bound = ";
  const std::size_t at = lines.rfind(label);
  return at == std::string::npos ? 0.0 : std::stod(lines.substr(at + label.size())) + 1.0;
}

}  // namespace

bool RunMixtures(const Run& run) {
  if (run.GetCase() != "mix10000" && run.GetCase() != "mix100000") return false;
  const std::vector<double> data = run.Load(run.GetCase()).values;
  const QVSystem::QVScopedRecordingSink warnings;
  std::ostringstream lines;
  const QVSystem::QVScopedDiagnosticStream redirection(lines);
  const auto fit = [&](std::uint64_t numComponents) {
    QVStats::QVDirichletGaussGammaMixtureModel model(numComponents, "x", 1.0, data);
    double fitness;
    model.FitModel(fitness, 0.0005, 0.0005, 50000);
    return Check("fitness", fitness) + ";" + Check("cycles", ReadCycles(lines.str()));
  };
  constexpr std::uint64_t kLargest = 6;
  std::vector<double> sums(run.GetReps());
  for (std::uint64_t k = 1; k <= kLargest; ++k) {
    std::vector<double> seconds;
    std::string check;
    for (double& sum : sums) {
      lines.str("");
      const auto start = std::chrono::steady_clock::now();
      check = fit(k);
      const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
      seconds.push_back(elapsed.count());
      sum += elapsed.count();
    }
    run.Report("K" + std::to_string(k), seconds, check);
  }
  run.Report("K1-6", sums, Check("components", static_cast<double>(kLargest)));
  return true;
}

}  // namespace QVPerf
