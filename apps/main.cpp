#include <CLI/CLI.hpp>
#include <exception>
#include <iostream>
#include <new>

#include "apps/commands.h"
#include "stats/api/version.h"

namespace {

// A subcommand is a file beside this one and a row here.
constexpr QVApps::AddCommand kCommands[] = {
    nullptr,
};

int Run(int argc, char** argv) {
  CLI::App program("Statistical modelling for cheminformatics: predictions with an error bar.",
                   "qvstats");
  program.set_version_flag("--version", std::string("qvstats ") + QVStats::QVStatsGetRelease());
  program.require_subcommand(1);
  int exitCode = QVApps::kDone;
  for (const QVApps::AddCommand add : kCommands)
    if (add) add(program, exitCode);
  try {
    program.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return program.exit(error) == 0 ? QVApps::kDone : QVApps::kWrongUse;
  }
  return exitCode;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Run(argc, argv);
  } catch (const std::bad_alloc&) {
    std::cerr << "qvstats: out of memory\n";
  } catch (const std::exception& error) {
    std::cerr << "qvstats: " << error.what() << '\n';
  }
  return QVApps::kWrongUse;
}
