#include <CLI/CLI.hpp>
#include <exception>
#include <iostream>
#include <memory>
#include <new>

#include "apps/commands.h"
#include "apps/report_sink.h"
#include "platform/system/error_handler.h"
#include "stats/api/version.h"

namespace {

// A subcommand is a file beside this one and a row here.
// clang-format off
constexpr QVApps::AddCommand kCommands[] = {
    &QVApps::AddAUCCommand,
    &QVApps::AddClusterCommand,
    &QVApps::AddLogitCommand,
    &QVApps::AddPLSCommand,
    &QVApps::AddMixtureCommand,
    &QVApps::AddPredictCommand,
    &QVApps::AddReportCommand,
    &QVApps::AddSimilarityCommand,
    &QVApps::AddTableCommand,
    &QVApps::AddValidateCommand,
};
// clang-format on

int Run(int argc, char** argv) {
  CLI::App program("Statistical modelling for cheminformatics: predictions with an error bar.",
                   "qvstats");
  program.set_version_flag("--version", std::string("qvstats ") + QVStats::QVStatsGetRelease());
  program.require_subcommand(1);
  int exitCode = QVApps::kDone;
  for (const QVApps::AddCommand add : kCommands) add(program, exitCode);
  try {
    program.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return program.exit(error) == 0 ? QVApps::kDone : QVApps::kWrongUse;
  }
  return exitCode;
}

}  // namespace

int main(int argc, char** argv) {
  QVSystem::QVThrow.SetSink(std::make_shared<QVApps::ReportSink>());
  try {
    return Run(argc, argv);
  } catch (const std::bad_alloc&) {
    std::cerr << "qvstats: out of memory\n";
  } catch (const std::exception& error) {
    std::cerr << "qvstats: " << error.what() << '\n';
  }
  return QVApps::kWrongUse;
}
