#include "apps/report_sink.h"

#include <iostream>

#include "platform/system/text.h"

namespace QVApps {

ReportSink::~ReportSink() {
  for (const auto& [text, count] : counts_)
    if (count > 1) std::cerr << "qvstats: " << count - 1 << " more times: " << text << '\n';
}

void ReportSink::Report(QVSystem::QVErrorLevel level, const std::string& text) {
  if (level == QVSystem::QVErrorLevel::Info) return;
  const std::string line(QVSystem::QVStripWhiteSpace(text));
  if (++counts_[line] > 1) return;
  std::cerr << "qvstats: " << QVSystem::QVToLower(QVSystem::QVGetErrorLevelName(level)) << ": "
            << line << '\n';
}

}  // namespace QVApps
