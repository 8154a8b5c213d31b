#include "platform/system/output_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

namespace QVSystem {
namespace {

bool WriteAll(int file, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(file, bytes.data(), bytes.size());
    if (written < 0 && errno != EINTR) return false;
    if (written > 0) bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

/// Opens, writes and closes; a full disk may show only when the file is closed.
bool WriteTo(const std::string& name, std::string_view bytes) {
  const int file = ::open(name.c_str(), O_CREAT | O_TRUNC | O_WRONLY | O_CLOEXEC, 0666);
  if (file < 0) return false;
  const bool written = WriteAll(file, bytes);
  const int reason = errno;
  if (::close(file) == 0 && written) return true;
  if (!written) errno = reason;
  return false;
}

}  // namespace

QVNewFile::QVNewFile(const std::string& name) : name_(name), temporaryName_(name) {
  namespace fs = std::filesystem;
  std::error_code ignored;
  const fs::file_status status = fs::status(name, ignored);
  if (fs::exists(status) && !fs::is_regular_file(status)) return;
  if (const fs::path target = fs::canonical(name, ignored); !target.empty())
    name_ = target.string();
  const std::size_t base = name_.rfind('/') + 1;
  temporaryName_ = name_;
  temporaryName_.insert(base, ".part" + std::to_string(::getpid()) + '.');
}

QVNewFile::~QVNewFile() {
  const int reason = errno;
  if (temporaryName_ != name_) ::unlink(temporaryName_.c_str());
  errno = reason;
}

bool QVNewFile::Commit() {
  if (temporaryName_ == name_) return true;
  if (std::rename(temporaryName_.c_str(), name_.c_str()) != 0) return false;
  temporaryName_ = name_;
  return true;
}

bool QVWriteWholeFile(const std::string& fileName, std::string_view bytes, std::string& problem) {
  QVNewFile file(fileName);
  if (WriteTo(file.GetTemporaryName(), bytes) && file.Commit()) return true;
  problem = std::strerror(errno);
  return false;
}

}  // namespace QVSystem
