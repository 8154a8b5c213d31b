/// \file
/// \brief Where fits write their progress and their outcome.
#ifndef QV_PLATFORM_SYSTEM_DIAGNOSTIC_STREAM_H
#define QV_PLATFORM_SYSTEM_DIAGNOSTIC_STREAM_H

#include <ostream>

#include "platform/system/export.h"

namespace QVSystem {

/// The stream of diagnostic lines: standard output, until a program redirects or silences it.
QVSYSTEM_EXPORT std::ostream& QVGetDiagnosticStream();

/// Sends diagnostic lines to a stream, which must outlive its use, for the whole process; null
/// restores standard output. `std::ostream silent(nullptr)` is a stream that drops everything.
/// Replacing the stream is thread-safe; writing to it from several threads is as safe as the stream
/// itself, so fits that run at the same time need one that is.
/// \return the stream that was in force.
QVSYSTEM_EXPORT std::ostream* QVSetDiagnosticStream(std::ostream* stream);

/// Redirects diagnostic lines for as long as it lives.
class QVSYSTEM_EXPORT QVScopedDiagnosticStream {
 public:
  explicit QVScopedDiagnosticStream(std::ostream& stream)
      : displaced_(QVSetDiagnosticStream(&stream)) {}
  ~QVScopedDiagnosticStream() { QVSetDiagnosticStream(displaced_); }
  QVScopedDiagnosticStream(const QVScopedDiagnosticStream&) = delete;
  QVScopedDiagnosticStream& operator=(const QVScopedDiagnosticStream&) = delete;

 private:
  std::ostream* displaced_;
};

}  // namespace QVSystem

#endif  // QV_PLATFORM_SYSTEM_DIAGNOSTIC_STREAM_H
