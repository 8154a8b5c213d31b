// Where output cannot go: full disks, files at their limit, pipes that nobody reads. Every command
// then ends with a message and exit code 1, and leaves no file that looks whole.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>

#include "tests/support/command_line.h"

namespace {

using testing::HasSubstr;
using testing::IsEmpty;

struct Case {
  const char* name;
  const char* command;  ///< %s is where the output goes
  const char* suffix;   ///< of the output's name
};

#define KNOWN "--train known.smi --values values.csv --value logP --quiet "

/// Every option that names an output.
const Case kCases[] = {
    {"Predict", "predict " KNOWN "--out %s known.smi", ".csv"},
    {"Validate", "validate " KNOWN "--folds 2 --out %s", ".csv"},
    {"Report", "report " KNOWN "--out %s query.smi", ".pdf"},
    {"ReportPng", "report " KNOWN "--out %s query.smi", ".png"},
    {"Cluster", "cluster --quiet --out %s known.smi", ".csv"},
    {"ClusterPage", "cluster --quiet --page %s chains.smi", ".pdf"},
    {"Similarity", "similarity --quiet known.smi %s", ".pgs"},
    {"SimilarityGzip", "similarity --quiet known.smi %s", ".pgs.gz"},
    {"Table", "table numbers.csv --convert %s", ".csv"},
    {"TableArff", "table numbers.csv --convert %s", ".arff"},
    {"Mixture", "mixture numbers.csv --column x --components 1-2 --out %s", ".csv"},
    {"MixturePlot", "mixture numbers.csv --column x --components 1-2 --plot %s", ".svg"},
    {"MixtureCurves", "mixture numbers.csv --column x --components 1-2 --curves %s", ".csv"},
    {"MixtureCalls", "mixture numbers.csv --column x --pairs 1:1 --calls %s", ".csv"},
    {"Auc", "auc numbers.csv --label active --score x --out %s", ".csv"},
    {"AucPlot", "auc numbers.csv --label active --score x --plot %s", ".svg"},
    {"Logit", "logit numbers.csv --response active --predictors x --out %s", ".csv"},
    {"LogitCoefficients", "logit numbers.csv --response active --predictors x --coefficients %s",
     ".csv"},
    {"Pls", "pls numbers.csv --response y --predictors x --out %s", ".csv"},
};

std::string Fill(const std::string& command, const std::string& out) {
  std::string filled = command;
  filled.replace(filled.find("%s"), 2, out);
  return filled;
}

class OutputThatCannotBe : public CommandLine, public testing::WithParamInterface<Case> {
 protected:
  OutputThatCannotBe() {
    Write("query.smi", "CCCCCCCO heptanol\n");
    std::string chains;
    for (std::size_t length = 1; length < 13; ++length) chains += std::string(length, 'C') + "O\n";
    Write("chains.smi", chains);
    std::string numbers = "x,y,active\n";
    for (int i = 0; i < 300; ++i) {
      const double x = i % 7 + 0.01 * i + (i % 2) * 9.0;
      numbers += std::to_string(x) + ',' + std::to_string(2 * x + i % 3) + ',' +
                 (i % 2 + i % 5 == 4 ? "0" : std::to_string(i % 2)) + '\n';
    }
    Write("numbers.csv", numbers);
  }

  std::vector<std::string> GetFiles() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(directory_))
      names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
  }
};
INSTANTIATE_TEST_SUITE_P(Commands, OutputThatCannotBe, testing::ValuesIn(kCases),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_P(OutputThatCannotBe, AFullDeviceIsAFailure) {
  const std::string name = std::string("full") + GetParam().suffix;
  std::filesystem::create_symlink("/dev/full", directory_ / name);
  EXPECT_EQ(Run(Fill(GetParam().command, name)), 1) << messages_;
  EXPECT_THAT(messages_, HasSubstr(name));
  EXPECT_THAT(messages_, HasSubstr("No space left on device"));
}

// The limit is that of a quota: it lets the first bytes through.
TEST_P(OutputThatCannotBe, AFileAtItsLimitLeavesNothing) {
  const std::string name = std::string("out") + GetParam().suffix;
  ASSERT_NE(Run(Fill(GetParam().command, name)), 1) << messages_;
  const std::vector<std::string> files = GetFiles();
  const std::string whole = Read(name);
  ASSERT_FALSE(whole.empty());
  ASSERT_TRUE(std::filesystem::remove(directory_ / name));
  if (whole.size() <= 1024) return;  // the least limit is a block
  const std::string command =
      "cd '" + directory_.string() + "' && (ulimit -f 1; " QVSTATS_PROGRAM " " +
      Fill(GetParam().command, name) + "; echo $? >code) 2>&1 >stdout | cat >stderr";
  ASSERT_EQ(std::system(command.c_str()), 0);
  EXPECT_EQ(Read("code"), "1\n");
  EXPECT_THAT(Read("stderr"), HasSubstr("File too large"));
  EXPECT_FALSE(std::filesystem::exists(directory_ / name));
  EXPECT_EQ(GetFiles().size(), files.size()) << "a code, and no part of a file";
  // What stood there before stays.
  Write(name, "before");
  ASSERT_EQ(std::system(command.c_str()), 0);
  EXPECT_EQ(Read(name), "before");
}

class StandardOutput : public OutputThatCannotBe {};
INSTANTIATE_TEST_SUITE_P(
    Commands, StandardOutput,
    testing::Values(Case{"Predict", "predict " KNOWN "known.smi", ""},
                    Case{"Validate", "validate " KNOWN "--folds 2", ""},
                    Case{"Cluster", "cluster --quiet known.smi", ""},
                    Case{"Table", "table numbers.csv", ""},
                    Case{"Mixture", "mixture numbers.csv --column x --components 1-2", ""},
                    Case{"Auc", "auc numbers.csv --label active --score x", ""},
                    Case{"Logit", "logit numbers.csv --response active --predictors x", ""},
                    Case{"Pls", "pls numbers.csv --response y --predictors x", ""},
                    Case{"Help", "--help", ""}, Case{"Version", "--version", ""}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_P(StandardOutput, MayBeFullOrClosed) {
  int ends[2] = {};
  ASSERT_EQ(pipe(ends), 0);
  close(ends[0]);
  for (const auto& [target, reason] :
       {std::pair{std::string("/dev/full"), "No space left on device"},
        std::pair{"&" + std::to_string(ends[1]), "Broken pipe"},
        std::pair{std::string("&-"), "Bad file descriptor"}}) {
    const std::string command = "cd '" + directory_.string() + "' && " QVSTATS_PROGRAM " " +
                                GetParam().command + " 2>stderr >" + target;
    const int status = std::system(command.c_str());
    EXPECT_EQ(WIFEXITED(status) ? WEXITSTATUS(status) : -1, 1) << target;
    EXPECT_THAT(Read("stderr"),
                HasSubstr(std::string("qvstats: cannot write standard output: ") + reason));
  }
  close(ends[1]);
}

}  // namespace
