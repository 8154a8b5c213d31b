/// \file
/// \brief What the library reports, on standard error, without repeating itself.
#ifndef QVSTATS_APPS_REPORT_SINK_H
#define QVSTATS_APPS_REPORT_SINK_H

#include <cstddef>
#include <map>
#include <string>

#include "platform/system/error_handler.h"

namespace QVApps {

/// Writes each distinct text once and, when the program ends, how often it came again. Information
/// is left out.
class ReportSink : public QVSystem::QVErrorSink {
 public:
  ~ReportSink() override;
  void Report(QVSystem::QVErrorLevel level, const std::string& text) override;

 private:
  std::map<std::string, std::size_t> counts_;
};

}  // namespace QVApps

#endif  // QVSTATS_APPS_REPORT_SINK_H
