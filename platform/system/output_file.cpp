#include "platform/system/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

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
bool WriteTo(const std::string& name, int flags, std::string_view bytes) {
  const int file = ::open(name.c_str(), flags | O_WRONLY | O_CLOEXEC, 0666);
  if (file < 0) return false;
  const bool written = WriteAll(file, bytes);
  const int reason = errno;
  if (::close(file) == 0 && written) return true;
  if (!written) errno = reason;
  return false;
}

bool IsSpecialFile(const std::string& name) {
  struct stat status {};
  return ::stat(name.c_str(), &status) == 0 && !S_ISREG(status.st_mode);
}

}  // namespace

bool QVWriteWholeFile(const std::string& fileName, std::string_view bytes, std::string& problem) {
  const std::string beside = fileName + '.' + std::to_string(::getpid()) + ".part";
  bool written = false;
  if (IsSpecialFile(fileName)) {
    written = WriteTo(fileName, 0, bytes);
  } else {
    written = WriteTo(beside, O_CREAT | O_TRUNC, bytes) &&
              std::rename(beside.c_str(), fileName.c_str()) == 0;
  }
  if (written) return true;
  problem = std::strerror(errno);
  ::unlink(beside.c_str());
  return false;
}

}  // namespace QVSystem
