/// \file
/// \brief Output that is either whole or not there.
#ifndef QVSTATS_APPS_OUTPUT_FILE_H
#define QVSTATS_APPS_OUTPUT_FILE_H

#include <fstream>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "platform/system/output_file.h"

namespace QVApps {

/// The stream of a QVNewFile, which a run that fails leaves as it was; "-" is standard output.
class OutputFile {
 public:
  /// Throws Failure when the file cannot be created.
  explicit OutputFile(std::string path);

  std::ostream& GetStream();
  /// Throws Failure when something could not be written: a full disk, a closed pipe.
  void Check();
  /// Completes the file. Throws Failure like Check().
  void Commit();

 private:
  std::string path_;
  std::optional<QVSystem::QVNewFile> file_;  // none for standard output
  std::ofstream stream_;
};

/// A field of comma-separated values, quoted where RFC 4180 asks for it.
std::string CsvField(std::string_view text);

/// Six significant figures; empty for what is not finite.
std::string CsvNumber(double value);

/// The fields of a row, joined and ended.
void WriteCsvRow(std::ostream& out, const std::vector<std::string>& fields);

}  // namespace QVApps

#endif  // QVSTATS_APPS_OUTPUT_FILE_H
