#include "apps/program.h"

#include <CLI/CLI.hpp>
#include <exception>
#include <iostream>
#include <new>

#include "apps/commands.h"
#include "stats/api/version.h"

namespace QVApps {

namespace {

// A subcommand is a file beside this one and a row here.
// clang-format off
constexpr AddCommand kCommands[] = {
    &AddAUCCommand,
    &AddClusterCommand,
    &AddDescribeCommand,
    &AddLogitCommand,
    &AddPLSCommand,
    &AddMixtureCommand,
    &AddPlotCommand,
    &AddPredictCommand,
    &AddReportCommand,
    &AddSimilarityCommand,
    &AddSmoothCommand,
    &AddTableCommand,
    &AddValidateCommand,
};
// clang-format on

int Parse(int argc, const char* const* argv) {
  CLI::App program("Statistical modelling for cheminformatics: predictions with an error bar.",
                   "qvstats");
  program.set_version_flag("--version", std::string("qvstats ") + QVStats::QVStatsGetRelease());
  program.require_subcommand(1);
  int exitCode = kDone;
  for (const AddCommand add : kCommands) add(program, exitCode);
  try {
    program.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return program.exit(error) == 0 ? kDone : kWrongUse;
  }
  return exitCode;
}

/// Commands print to the standard output without a look at it: a full disk or a closed pipe may
/// show only now.
void FinishStandardOutput() {
  if (!std::cout.flush()) throw CannotWrite("standard output");
}

}  // namespace

int RunProgram(int argc, const char* const* argv) {
  try {
    const int exitCode = Parse(argc, argv);
    FinishStandardOutput();
    return exitCode;
  } catch (const std::bad_alloc&) {
    std::cerr << "qvstats: out of memory\n";
  } catch (const std::exception& error) {
    std::cerr << "qvstats: " << error.what() << '\n';
  }
  return kWrongUse;
}

}  // namespace QVApps
