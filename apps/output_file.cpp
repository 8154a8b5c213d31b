#include "apps/output_file.h"

#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <utility>

#include "apps/commands.h"
#include "platform/system/text.h"

namespace QVApps {

OutputFile::OutputFile(std::string path) : path_(std::move(path)) {
  if (IsStandardOutput()) return;
  std::error_code error;
  const auto status = std::filesystem::status(path_, error);
  const bool isDevice =
      std::filesystem::exists(status) && !std::filesystem::is_regular_file(status);
  temporaryPath_ = isDevice ? path_ : path_ + ".part" + std::to_string(getpid());
  file_.open(temporaryPath_, std::ios::binary);
  if (!file_) throw Failure("cannot write " + path_ + ": " + std::strerror(errno));
}

OutputFile::~OutputFile() {
  if (IsStandardOutput() || committed_ || temporaryPath_ == path_) return;
  file_.close();
  std::remove(temporaryPath_.c_str());
}

std::ostream& OutputFile::GetStream() {
  return IsStandardOutput() ? std::cout : static_cast<std::ostream&>(file_);
}

void OutputFile::Check() {
  if (!GetStream()) throw Failure("cannot write " + path_ + ": " + std::strerror(errno));
}

void OutputFile::Commit() {
  GetStream().flush();
  Check();
  if (IsStandardOutput()) return;
  file_.close();
  Check();
  if (temporaryPath_ != path_ && std::rename(temporaryPath_.c_str(), path_.c_str()) != 0)
    throw Failure("cannot write " + path_ + ": " + std::strerror(errno));
  committed_ = true;
}

std::string CsvField(std::string_view text) {
  if (text.find_first_of(",\"\r\n") == std::string_view::npos) return std::string(text);
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"') quoted += '"';
    quoted += c;
  }
  return quoted + '"';
}

std::string CsvNumber(double value) {
  return std::isfinite(value) ? QVSystem::QVNumberToString(value, 6) : std::string();
}

void WriteCsvRow(std::ostream& out, const std::vector<std::string>& fields) {
  const char* separator = "";
  for (const std::string& field : fields) {
    out << separator << CsvField(field);
    separator = ",";
  }
  out << '\n';
}

}  // namespace QVApps
