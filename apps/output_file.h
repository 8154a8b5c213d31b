/// \file
/// \brief Output that is either whole or not there.
#ifndef QVSTATS_APPS_OUTPUT_FILE_H
#define QVSTATS_APPS_OUTPUT_FILE_H

#include <fstream>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace QVApps {

/// A text file that is written under a temporary name beside its own and renamed when it is
/// complete; a run that fails leaves nothing behind. "-" is standard output; a device or a pipe is
/// written to directly.
class OutputFile {
 public:
  /// Throws Failure when the file cannot be created.
  explicit OutputFile(std::string path);
  /// Removes what was not committed.
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  std::ostream& GetStream();
  /// Throws Failure when something could not be written: a full disk, a closed pipe.
  void Check();
  /// Completes the file. Throws Failure like Check().
  void Commit();

 private:
  bool IsStandardOutput() const { return path_ == "-"; }

  std::string path_;
  std::string temporaryPath_;
  std::ofstream file_;
  bool committed_ = false;
};

/// A field of comma-separated values, quoted where RFC 4180 asks for it.
std::string CsvField(std::string_view text);

/// Six significant figures; empty for what is not finite.
std::string CsvNumber(double value);

/// The fields of a row, joined and ended.
void WriteCsvRow(std::ostream& out, const std::vector<std::string>& fields);

}  // namespace QVApps

#endif  // QVSTATS_APPS_OUTPUT_FILE_H
