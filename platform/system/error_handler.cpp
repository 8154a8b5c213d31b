#include "platform/system/error_handler.h"

#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <utility>

namespace QVSystem {

namespace {

std::string Format(const char* format, std::va_list arguments) {
  std::va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, again);
  va_end(again);
  if (length < 0) return format;
  std::string text(static_cast<std::size_t>(length) + 1, '\0');
  std::vsnprintf(text.data(), text.size(), format, arguments);
  text.pop_back();
  return text;
}

/// The path from the source root on, so that a report is the same wherever the build stood.
std::string_view PathFromSourceRoot(std::string_view file) {
  std::size_t start = std::string_view::npos;
  for (const std::string_view root : {"stats/", "platform/", "apps/", "tests/"}) {
    const std::size_t found = file.find(root);
    const bool isDirectory =
        found == 0 || (found != std::string_view::npos && file[found - 1] == '/');
    if (isDirectory && (start == std::string_view::npos || found > start)) start = found;
  }
  return start == std::string_view::npos ? file : file.substr(start);
}

void WriteToStandardError(QVErrorLevel level, const std::string& text) {
  const bool endsLine = !text.empty() && text.back() == '\n';
  std::fprintf(stderr, "%s: %s%s", QVGetErrorLevelName(level), text.c_str(), endsLine ? "" : "\n");
}

}  // namespace

QVErrorHandler QVThrow;

QVErrorSink::~QVErrorSink() = default;

const char* QVGetErrorLevelName(QVErrorLevel level) {
  static constexpr const char* kNames[] = {"Info", "Warning", "Error", "Fatal"};
  return kNames[static_cast<int>(level)];
}

void QVErrorHandler::Report(QVErrorLevel level, const char* format, std::va_list arguments) {
  const std::string text = Format(format, arguments);
  bool endsProcess = level == QVErrorLevel::Fatal;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (sink_) {
      sink_->Report(level, text);
      endsProcess = endsProcess && sink_->FatalEndsProcess();
    } else {
      WriteToStandardError(level, text);
    }
  }
  if (endsProcess) std::abort();
}

#define QV_DEFINE_LEVEL(Level)                          \
  void QVErrorHandler::Level(const char* format, ...) { \
    std::va_list arguments;                             \
    va_start(arguments, format);                        \
    Report(QVErrorLevel::Level, format, arguments);     \
    va_end(arguments);                                  \
  }
QV_DEFINE_LEVEL(Info)
QV_DEFINE_LEVEL(Warning)
QV_DEFINE_LEVEL(Error)
QV_DEFINE_LEVEL(Fatal)
#undef QV_DEFINE_LEVEL

std::shared_ptr<QVErrorSink> QVErrorHandler::SetSink(std::shared_ptr<QVErrorSink> sink) {
  const std::lock_guard<std::mutex> lock(mutex_);
  std::swap(sink, sink_);
  return sink;
}

class QVScopedRecordingSink::Sink : public QVErrorSink {
 public:
  void Report(QVErrorLevel level, const std::string& text) override {
    const std::lock_guard<std::mutex> lock(mutex);
    records.push_back({level, text});
  }
  bool FatalEndsProcess() const override { return false; }

  std::mutex mutex;
  std::vector<Record> records;
};

QVScopedRecordingSink::QVScopedRecordingSink()
    : sink_(std::make_shared<Sink>()), displaced_(QVThrow.SetSink(sink_)) {}

QVScopedRecordingSink::~QVScopedRecordingSink() { QVThrow.SetSink(displaced_); }

std::vector<QVScopedRecordingSink::Record> QVScopedRecordingSink::GetRecords() const {
  const std::lock_guard<std::mutex> lock(sink_->mutex);
  return sink_->records;
}

std::vector<std::string> QVScopedRecordingSink::GetTexts(QVErrorLevel level) const {
  std::vector<std::string> texts;
  for (const Record& record : GetRecords())
    if (record.level == level) texts.push_back(record.text);
  return texts;
}

void QVScopedRecordingSink::Clear() {
  const std::lock_guard<std::mutex> lock(sink_->mutex);
  sink_->records.clear();
}

bool QVReportFailedAssertion(int line, const char* file) {
  const std::string path(PathFromSourceRoot(file));
  QVThrow.Fatal("Assertion failed at line %d of %s.\n", line, path.c_str());
  return false;
}

bool QVReportFailedAssertion(const std::string& text, int line, const char* file) {
  const std::string path(PathFromSourceRoot(file));
  QVThrow.Fatal("%s\nAssertion failed at line %d of %s.\n", text.c_str(), line, path.c_str());
  return false;
}

}  // namespace QVSystem
