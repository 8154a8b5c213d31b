/// \file
/// \brief Runs the program as a user does: files in, files out, messages and exit codes.
#ifndef QVSTATS_TESTS_SUPPORT_COMMAND_LINE_H
#define QVSTATS_TESTS_SUPPORT_COMMAND_LINE_H

#include <gmock/gmock.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/temporary_file.h"

/// A directory of its own for each test, with a few molecules and values.
class CommandLine : public testing::Test {
 protected:
  CommandLine() {
    Write("known.smi",
          "CCO ethanol\nCCCO propanol\nCCCCO butanol\nCCCCCO pentanol\nCC(C)O isopropanol\n"
          "CCCCCCO hexanol\nOc1ccccc1 phenol\nCc1ccccc1O cresol\n");
    Write("values.csv",
          "id,logP\nethanol,-0.31\npropanol,0.25\nbutanol,0.88\npentanol,1.51\nisopropanol,0.05\n"
          "hexanol,2.03\nphenol,1.46\ncresol,1.95\nheptanol,2.62\n");
  }
  void Write(const std::string& name, const std::string& text) const {
    std::ofstream(directory_ / name, std::ios::binary) << text;
  }

  std::string Read(const std::string& name) const {
    std::ifstream file(directory_ / name, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
  }

  std::vector<std::string> Lines(const std::string& text) const {
    std::istringstream stream(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
  }

  /// Runs `qvstats <arguments>` in the directory; standard output and error are kept.
  int Run(const std::string& arguments) {
    const std::string command = "cd '" + directory_.string() + "' && " QVSTATS_PROGRAM " " +
                                arguments + " >stdout 2>stderr";
    const int status = std::system(command.c_str());
    output_ = Read("stdout");
    messages_ = Read("stderr");
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

  const QVStats::TemporaryDirectory temporary_;
  const std::filesystem::path directory_ = temporary_.GetPath("");
  std::string output_;
  std::string messages_;
};

#endif  // QVSTATS_TESTS_SUPPORT_COMMAND_LINE_H
