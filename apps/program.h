/// \file
/// \brief The whole program `qvstats`, callable from the program itself and from the fuzzer.
#ifndef QVSTATS_APPS_PROGRAM_H
#define QVSTATS_APPS_PROGRAM_H

namespace QVApps {

/// Runs the subcommand that the arguments name, the program's own name first. Never throws: what
/// goes wrong is told on standard error. \return an ExitCode (commands.h).
int RunProgram(int argc, const char* const* argv);

}  // namespace QVApps

#endif  // QVSTATS_APPS_PROGRAM_H
