/// \file
/// \brief A progress line on standard error, when that is a terminal.
#ifndef QVSTATS_APPS_PROGRESS_H
#define QVSTATS_APPS_PROGRESS_H

#include <chrono>
#include <cstddef>
#include <string>

namespace QVApps {

/// Redraws at most ten times a second and clears its line at the end. Silent when standard error
/// is no terminal, or when asked to be quiet.
class Progress {
 public:
  /// `total` 0 means that the number of steps is not known.
  Progress(std::string label, std::size_t total, bool quiet);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void Step(std::size_t steps = 1);

 private:
  void Draw();

  std::string label_;
  std::size_t total_;
  std::size_t done_ = 0;
  bool shown_;
  std::chrono::steady_clock::time_point lastDrawn_;
};

}  // namespace QVApps

#endif  // QVSTATS_APPS_PROGRESS_H
