#include <memory>

#include "apps/program.h"
#include "apps/report_sink.h"
#include "platform/system/error_handler.h"

int main(int argc, char** argv) {
  QVSystem::QVThrow.SetSink(std::make_shared<QVApps::ReportSink>());
  return QVApps::RunProgram(argc, argv);
}
