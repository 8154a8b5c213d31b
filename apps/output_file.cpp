#include "apps/output_file.h"

#include <cerrno>
#include <cmath>
#include <cstring>
#include <iostream>
#include <utility>

#include "apps/commands.h"
#include "platform/system/text.h"

namespace QVApps {

Failure CannotWrite(const std::string& what) {
  return Failure("cannot write " + what + ": " + std::strerror(errno));
}

OutputFile::OutputFile(std::string path) : path_(std::move(path)) {
  if (path_ == "-") return;
  file_.emplace(path_);
  stream_.open(file_->GetTemporaryName(), std::ios::binary);
  Check();
}

std::ostream& OutputFile::GetStream() { return file_ ? stream_ : std::cout; }

void OutputFile::Check() {
  if (!GetStream()) throw CannotWrite(file_ ? path_ : "standard output");
}

void OutputFile::Commit() {
  GetStream().flush();
  Check();
  if (!file_) return;
  stream_.close();
  Check();
  if (!file_->Commit()) throw CannotWrite(path_);
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
