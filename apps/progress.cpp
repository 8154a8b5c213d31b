#include "apps/progress.h"

#include <unistd.h>

#include <cstdio>
#include <utility>

namespace QVApps {

Progress::Progress(std::string label, std::size_t total, bool quiet)
    : label_(std::move(label)), total_(total), shown_(!quiet && isatty(STDERR_FILENO) == 1) {}

Progress::~Progress() {
  if (shown_) std::fprintf(stderr, "\r\033[K");
}

void Progress::Step(std::size_t steps) {
  done_ += steps;
  if (!shown_) return;
  const auto now = std::chrono::steady_clock::now();
  if (now - lastDrawn_ < std::chrono::milliseconds(100) && done_ != total_) return;
  lastDrawn_ = now;
  Draw();
}

void Progress::Draw() {
  if (total_ == 0) {
    std::fprintf(stderr, "\r\033[K%s %zu", label_.c_str(), done_);
    return;
  }
  constexpr std::size_t kWidth = 30;
  const std::size_t filled = kWidth * done_ / total_;
  const std::string bar = std::string(filled, '=') + std::string(kWidth - filled, ' ');
  std::fprintf(stderr, "\r\033[K%s [%s] %zu/%zu", label_.c_str(), bar.c_str(), done_, total_);
}

}  // namespace QVApps
