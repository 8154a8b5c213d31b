/// \file
/// \brief Files that appear whole or not at all.
#ifndef QV_PLATFORM_SYSTEM_OUTPUT_FILE_H
#define QV_PLATFORM_SYSTEM_OUTPUT_FILE_H

#include <string>
#include <string_view>

#include "platform/system/export.h"

namespace QVSystem {

/// Writes the bytes to a file beside `fileName` and renames it, so that a failure leaves what stood
/// there before, and no reader meets half a file. What is not a regular file (a device, a pipe) is
/// written to directly.
/// \return false, with the system's reason in `problem`.
QVSYSTEM_EXPORT bool QVWriteWholeFile(const std::string& fileName, std::string_view bytes,
                                      std::string& problem);

}  // namespace QVSystem

#endif  // QV_PLATFORM_SYSTEM_OUTPUT_FILE_H
