#include "benchmarks/qvperf/qvperf.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <regex>
#include <sstream>

#include "benchmarks/qvperf/workloads.h"

namespace QVPerf {

namespace {

// A workload is a file beside this one and a row here.
// clang-format off
constexpr Workload kWorkloads[] = {
    {"auc", RunAUC},
    {"boot", RunBootstrap},
    {"csv", RunCsv},
    {"dcov", RunDistanceCovariance},
    {"dist", RunDistributions},
    {"fp", RunFingerprints},
    {"gp", RunGaussianProcess},
    {"logit", RunLogit},
    {"mcs", RunMCS},
    {"mix", RunMixtures},
    {"rank", RunRankCorrelations},
    {"snn", RunSNN},
    {"vario", RunVariogram},
};
// clang-format on

[[noreturn]] void Stop(const std::string& message) {
  std::fprintf(stderr, "qvperf: %s\n", message.c_str());
  std::exit(2);
}

std::string ReadAll(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) Stop("cannot read " + path);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

}  // namespace

Array Run::Load(const std::string& name) const {
  const std::string shape = ReadAll(GetPath(name + ".json"));
  std::smatch match;
  if (!std::regex_search(shape, match, std::regex(R"(\[\s*(\d+)\s*(?:,\s*(\d+)\s*)?\])")))
    Stop("no shape in " + GetPath(name + ".json"));
  Array array;
  array.rows = std::stoul(match[1]);
  array.columns = match[2].matched ? std::stoul(match[2]) : 1;
  array.values.resize(array.rows * array.columns);
  std::ifstream file(GetPath(name + ".f64"), std::ios::binary);
  const auto bytes = static_cast<std::streamsize>(array.values.size() * sizeof(double));
  if (!file.read(reinterpret_cast<char*>(array.values.data()), bytes))
    Stop("cannot read " + GetPath(name + ".f64"));
  return array;
}

void Run::Report(const std::string& phase, std::vector<double> seconds,
                 const std::string& check) const {
  std::sort(seconds.begin(), seconds.end());
  const std::size_t n = seconds.size();
  const double median = (seconds[(n - 1) / 2] + seconds[n / 2]) / 2;
  std::printf("RESULT\t%s\t%s\t%s\tours\t%.9g\t%.9g\t%zu\t%s\n", workload_.c_str(), case_.c_str(),
              phase.c_str(), median, seconds.front(), n, check.c_str());
  std::fflush(stdout);
}

std::string Check(const std::string& name, double value) {
  char text[64];
  std::snprintf(text, sizeof text, "=%.17g", value);
  return name + text;
}

}  // namespace QVPerf

int main(int argc, char** argv) {
  using namespace QVPerf;
  if (argc != 5) Stop("usage: qvperf WORKLOAD CASE DATADIR REPS");
  const std::string workload = argv[1];
  const Run run(workload, argv[2], argv[3], static_cast<unsigned int>(std::atoi(argv[4])));
  for (const Workload& row : kWorkloads)
    if (workload == row.name) return row.run(run) ? 0 : 3;
  return 3;
}
