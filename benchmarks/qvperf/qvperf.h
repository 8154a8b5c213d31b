/// \file
/// \brief What the workloads of the speed comparison share: input arrays, timing, the result line.
///
/// `qvperf WORKLOAD CASE DATADIR REPS` runs one case and writes, for each phase,
/// RESULT<TAB>WORKLOAD<TAB>CASE<TAB>PHASE<TAB>ours<TAB>MEDIAN<TAB>MIN<TAB>REPS<TAB>CHECK.
#ifndef QVSTATS_BENCHMARKS_QVPERF_QVPERF_H
#define QVSTATS_BENCHMARKS_QVPERF_QVPERF_H

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace QVPerf {

/// A raw array of doubles, row after row: DATADIR/NAME.f64 with its shape in DATADIR/NAME.json.
struct Array {
  std::size_t rows = 0;
  std::size_t columns = 0;
  std::vector<double> values;
  const double* Row(std::size_t i) const { return values.data() + i * columns; }
};

/// One run of the program.
class Run {
 public:
  Run(std::string workload, std::string name, std::string dataDirectory, unsigned int reps)
      : workload_(std::move(workload)),
        case_(std::move(name)),
        directory_(std::move(dataDirectory)),
        reps_(std::max(1u, reps)) {}

  const std::string& GetCase() const { return case_; }
  /// DATADIR/<name>.
  std::string GetPath(const std::string& name) const { return directory_ + "/" + name; }
  /// Ends the program with a message when the array cannot be read.
  Array Load(const std::string& name) const;

  /// Times `work()` REPS times and reports the phase; `prepare()` runs before each, untimed.
  /// `check()` is called once at the end and returns "name=value;name=value".
  template <class Prepare, class Work, class Check>
  void Time(const std::string& phase, Prepare prepare, Work work, Check check) const {
    std::vector<double> seconds;
    for (unsigned int rep = 0; rep < reps_; ++rep) {
      prepare();
      const auto start = std::chrono::steady_clock::now();
      work();
      const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
      seconds.push_back(elapsed.count());
    }
    Report(phase, seconds, check());
  }

  /// Writes the result line of a phase whose seconds were taken elsewhere.
  void Report(const std::string& phase, std::vector<double> seconds,
              const std::string& check) const;

  unsigned int GetReps() const { return reps_; }

 private:
  std::string workload_;
  std::string case_;
  std::string directory_;
  unsigned int reps_;
};

/// "name=value" with 17 significant digits; join several with ';'.
std::string Check(const std::string& name, double value);

/// A workload: its name, and a function that runs a case or returns false for an unknown one.
struct Workload {
  const char* name;
  bool (*run)(const Run& run);
};

}  // namespace QVPerf

#endif  // QVSTATS_BENCHMARKS_QVPERF_QVPERF_H
