// Bytes as the arguments of the program, a line each. The program runs in a directory of its own
// with a few small files; an argument that would leave it is dropped.
#include <fcntl.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <vector>

#include "apps/program.h"
#include "fuzz/fuzz_support.h"

namespace {

namespace fs = std::filesystem;

/// Text that a stream is given and nobody reads.
class NullBuffer : public std::streambuf {
 protected:
  int overflow(int character) override { return character; }
  std::streamsize xsputn(const char*, std::streamsize size) override { return size; }
};

/// The directory as it was: what a command wrote is gone, what it replaced is back.
void RestoreDirectory() {
  for (const fs::directory_entry& entry : fs::directory_iterator(".")) fs::remove_all(entry.path());
  fs::copy(QVSTATS_FUZZ_FILES, ".");
}

std::vector<std::string> SplitLines(const std::uint8_t* data, std::size_t size) {
  std::vector<std::string> lines(1);
  for (std::size_t i = 0; i < size; ++i) {
    if (data[i] == '\n')
      lines.emplace_back();
    else if (data[i] != '\0')
      lines.back().push_back(static_cast<char>(data[i]));
  }
  return lines;
}

/// A new directory to run in, which is gone at the end.
void EnterDirectory() {
  static std::string path = (fs::temp_directory_path() / "qvstats-fuzz-XXXXXX").string();
  fs::current_path(mkdtemp(path.data()));
  std::atexit([] { fs::remove_all(path); });
}

bool StaysInside(const std::string& argument) {
  return argument.find('/') == std::string::npos && argument.find("..") == std::string::npos;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  QVFuzz::InstallSink();
  static NullBuffer nowhere;
  std::cout.rdbuf(&nowhere);
  std::cerr.rdbuf(&nowhere);
  const int null = open("/dev/null", O_RDWR);
  dup2(null, STDIN_FILENO);
  dup2(null, STDOUT_FILENO);
  EnterDirectory();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::vector<std::string> lines = SplitLines(data, size);
  std::vector<const char*> arguments = {"qvstats"};
  for (const std::string& line : lines)
    if (StaysInside(line)) arguments.push_back(line.c_str());
  RestoreDirectory();
  const int code = QVApps::RunProgram(static_cast<int>(arguments.size()), arguments.data());
  QVFuzz::Require(code >= 0 && code <= 2, "the exit code is one of three");
  return 0;
}
