/// \file
/// \brief Files that appear whole or not at all.
#ifndef QV_PLATFORM_SYSTEM_OUTPUT_FILE_H
#define QV_PLATFORM_SYSTEM_OUTPUT_FILE_H

#include <string>
#include <string_view>

#include "platform/system/export.h"

namespace QVSystem {

/// A file in the making. It is written, by any means, under a name beside its own, and gets its own
/// name when it is whole: a failure leaves what stood there before, and no reader meets half a
/// file. What is not a regular file (a device, a pipe) is written to directly; a link is followed.
///
///     QVNewFile file("table.csv.gz");
///     // write and close file.GetTemporaryName()
///     if (!file.Commit()) // errno tells why
class QVSYSTEM_EXPORT QVNewFile {
 public:
  explicit QVNewFile(const std::string& name);
  /// Removes what was not committed.
  ~QVNewFile();
  QVNewFile(const QVNewFile&) = delete;
  QVNewFile& operator=(const QVNewFile&) = delete;

  /// Where to write; the end of the name, by which writers choose a format, is the file's own.
  const std::string& GetTemporaryName() const { return temporaryName_; }
  /// Gives the file its name. \return false with the reason in errno.
  bool Commit();

 private:
  std::string name_;
  std::string temporaryName_;
};

/// Writes the bytes as a QVNewFile.
/// \return false, with the system's reason in `problem`.
QVSYSTEM_EXPORT bool QVWriteWholeFile(const std::string& fileName, std::string_view bytes,
                                      std::string& problem);

}  // namespace QVSystem

#endif  // QV_PLATFORM_SYSTEM_OUTPUT_FILE_H
