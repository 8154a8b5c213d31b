/// \file
/// \brief What the fuzz targets share: files in memory, and a sink under which a warning is silent
/// and a failed assertion ends the run.
#ifndef QVSTATS_FUZZ_FUZZ_SUPPORT_H
#define QVSTATS_FUZZ_FUZZ_SUPPORT_H

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "platform/system/error_handler.h"

namespace QVFuzz {

/// A file without a place on disk that others open by its path.
class MemoryFile {
 public:
  MemoryFile() : descriptor_(memfd_create("fuzz", MFD_CLOEXEC)) {}
  MemoryFile(const std::uint8_t* bytes, std::size_t size) : MemoryFile() {
    if (write(descriptor_, bytes, size) != static_cast<ssize_t>(size)) std::abort();
  }
  ~MemoryFile() { close(descriptor_); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  std::string GetPath() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

 private:
  int descriptor_;
};

/// No input may reach a fatal report: those are for mistakes of the calling program.
class FuzzSink : public QVSystem::QVErrorSink {
 public:
  void Report(QVSystem::QVErrorLevel level, const std::string& text) override {
    if (level != QVSystem::QVErrorLevel::Fatal) return;
    std::fprintf(stderr, "%s\n", text.c_str());
    std::abort();
  }
};

inline void InstallSink() { QVSystem::QVThrow.SetSink(std::make_shared<FuzzSink>()); }

/// Ends the run with a text when something that must hold does not.
inline void Require(bool condition, const char* what) {
  if (condition) return;
  std::fprintf(stderr, "violated: %s\n", what);
  std::abort();
}

}  // namespace QVFuzz

#endif  // QVSTATS_FUZZ_FUZZ_SUPPORT_H
