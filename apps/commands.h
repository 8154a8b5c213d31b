/// \file
/// \brief The subcommands of the program `qvstats`.
#ifndef QVSTATS_APPS_COMMANDS_H
#define QVSTATS_APPS_COMMANDS_H

#include <stdexcept>
#include <string>

namespace CLI {
class App;
}

namespace QVApps {

/// What the program returns.
enum ExitCode : int {
  kDone = 0,
  kWrongUse = 1,     ///< wrong use or unreadable input
  kSomeRefused = 2,  ///< done, but some molecules or rows were refused
};

/// Ends a subcommand with a message on standard error and exit code kWrongUse. The message names
/// the file, the line or the molecule.
class Failure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The failure to write `what`, for the reason in errno.
Failure CannotWrite(const std::string& what);

/// A subcommand adds itself to the program: its options, its help with an example that works, and a
/// callback that stores the exit code in `exitCode`.
using AddCommand = void (*)(CLI::App& program, int& exitCode);

// One declaration for each subcommand, a row of the table in program.cpp.
void AddAUCCommand(CLI::App& program, int& exitCode);
void AddClusterCommand(CLI::App& program, int& exitCode);
void AddDescribeCommand(CLI::App& program, int& exitCode);
void AddLogitCommand(CLI::App& program, int& exitCode);
void AddPLSCommand(CLI::App& program, int& exitCode);
void AddMixtureCommand(CLI::App& program, int& exitCode);
void AddPlotCommand(CLI::App& program, int& exitCode);
void AddPredictCommand(CLI::App& program, int& exitCode);
void AddReportCommand(CLI::App& program, int& exitCode);
void AddValidateCommand(CLI::App& program, int& exitCode);
void AddSimilarityCommand(CLI::App& program, int& exitCode);
void AddSmoothCommand(CLI::App& program, int& exitCode);
void AddTableCommand(CLI::App& program, int& exitCode);

}  // namespace QVApps

#endif  // QVSTATS_APPS_COMMANDS_H
