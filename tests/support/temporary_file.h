/// \file
/// \brief Small files that a test writes for itself.
#ifndef QVSTATS_TESTS_SUPPORT_TEMPORARY_FILE_H
#define QVSTATS_TESTS_SUPPORT_TEMPORARY_FILE_H

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace QVStats {

/// A directory of its own, removed with everything in it.
class TemporaryDirectory {
 public:
  TemporaryDirectory() {
    std::string pattern = (std::filesystem::temp_directory_path() / "qvstats-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) ADD_FAILURE() << "no temporary directory";
    path_ = pattern;
  }
  ~TemporaryDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  std::string GetPath(const std::string& name) const { return (path_ / name).string(); }

  /// Writes a file as it is. \return its path.
  std::string Write(const std::string& name, const std::string& content) const {
    std::ofstream(GetPath(name), std::ios::binary) << content;
    return GetPath(name);
  }

  std::string Read(const std::string& name) const {
    std::ifstream in(GetPath(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  }

 private:
  std::filesystem::path path_;
};

}  // namespace QVStats

#endif  // QVSTATS_TESTS_SUPPORT_TEMPORARY_FILE_H
