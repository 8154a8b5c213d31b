#include <csignal>
#include <memory>

#include "apps/program.h"
#include "apps/report_sink.h"
#include "platform/system/error_handler.h"

int main(int argc, char** argv) {
  QVSystem::QVThrow.SetSink(std::make_shared<QVApps::ReportSink>());
  // A pipe that nobody reads and a file that has reached its limit are then errors of the write.
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
  return QVApps::RunProgram(argc, argv);
}
