/// \file
/// \brief The one channel for messages: information, warnings, errors and fatal reports.
///
/// Every library reports through the process-wide handler `QVSystem::QVThrow`, printf-style. Where
/// a report goes is decided by the sink in force, which a program or a test replaces at run time.
#ifndef QV_PLATFORM_SYSTEM_ERROR_HANDLER_H
#define QV_PLATFORM_SYSTEM_ERROR_HANDLER_H

#include <cstdarg>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/system/export.h"

namespace QVSystem {

enum class QVErrorLevel { Info, Warning, Error, Fatal };

/// \return "Info", "Warning", "Error" or "Fatal".
QVSYSTEM_EXPORT const char* QVGetErrorLevelName(QVErrorLevel level);

/// Where reports go. A sink may be called from several threads at once, one call at a time.
class QVSYSTEM_EXPORT QVErrorSink {
 public:
  virtual ~QVErrorSink();

  /// Receives one report, already formatted, as the caller wrote it.
  virtual void Report(QVErrorLevel level, const std::string& text) = 0;

  /// Whether the process stops after a fatal report. The code after a fatal report is safe to run
  /// and returns a neutral value, so a sink may answer false.
  virtual bool FatalEndsProcess() const { return true; }
};

/// Formats reports and hands them to the sink in force. With no sink installed a report is one
/// line on standard error, headed by its level, and a fatal one aborts the process.
class QVSYSTEM_EXPORT QVErrorHandler {
 public:
  constexpr QVErrorHandler() = default;
  QVErrorHandler(const QVErrorHandler&) = delete;
  QVErrorHandler& operator=(const QVErrorHandler&) = delete;

  void Info(const char* format, ...) __attribute__((format(printf, 2, 3)));
  void Warning(const char* format, ...) __attribute__((format(printf, 2, 3)));
  void Error(const char* format, ...) __attribute__((format(printf, 2, 3)));
  /// Ends the process unless the sink says otherwise; callers go on as if it returned.
  void Fatal(const char* format, ...) __attribute__((format(printf, 2, 3)));

  /// Installs a sink for the whole process; null restores the default.
  /// \return the sink that was in force before, null for the default.
  std::shared_ptr<QVErrorSink> SetSink(std::shared_ptr<QVErrorSink> sink);

 private:
  void Report(QVErrorLevel level, const char* format, std::va_list arguments);

  std::mutex mutex_;
  std::shared_ptr<QVErrorSink> sink_;
};

/// The process-wide handler.
extern QVSYSTEM_EXPORT QVErrorHandler QVThrow;

/// Records reports instead of printing them, from its construction to its destruction, and lets
/// the process go on after a fatal one. The sink it displaced is put back at the end.
class QVSYSTEM_EXPORT QVScopedRecordingSink {
 public:
  struct Record {
    QVErrorLevel level;
    std::string text;
  };

  QVScopedRecordingSink();
  ~QVScopedRecordingSink();
  QVScopedRecordingSink(const QVScopedRecordingSink&) = delete;
  QVScopedRecordingSink& operator=(const QVScopedRecordingSink&) = delete;

  /// \return a copy of all reports so far, oldest first.
  std::vector<Record> GetRecords() const;
  /// \return the texts of the reports of one level, oldest first.
  std::vector<std::string> GetTexts(QVErrorLevel level) const;
  void Clear();

 private:
  class Sink;
  std::shared_ptr<Sink> sink_;
  std::shared_ptr<QVErrorSink> displaced_;
};

/// Reports "Assertion failed at line %d of %s.\n", or with a text "%s\nAssertion failed at line %d
/// of %s.\n", at fatal level. The file is named from the source root on ("stats/...").
/// \return false, so that a check can be written in one expression.
QVSYSTEM_EXPORT bool QVReportFailedAssertion(int line, const char* file);
QVSYSTEM_EXPORT bool QVReportFailedAssertion(const std::string& text, int line, const char* file);

}  // namespace QVSystem

/// Yields the condition; a false one is first reported as fatal. The code after it must stay
/// safe: `if (!QV_ASSERT(i < n)) return neutral;`
#define QV_ASSERT(condition) \
  (static_cast<bool>(condition) || QVSystem::QVReportFailedAssertion(__LINE__, __FILE__))

#endif  // QV_PLATFORM_SYSTEM_ERROR_HANDLER_H
