// Runs the program as a user does: files in, files out, messages and exit codes.
#include "tests/support/command_line.h"

#include "platform/likeness/vsepr.h"
#include "stats/api/data_table_fileInfo.h"
#include "tests/support/molecules.h"

namespace {

using testing::ContainsRegex;
using testing::HasSubstr;
using testing::SizeIs;

constexpr const char* kTrain = "--train known.smi --values values.csv --value logP ";

TEST_F(CommandLine, PredictsEachQueryInOrderAndRefusesBadOnesInPlace) {
  Write("query.smi", "CCCCCCCO heptanol\nC1CC( broken\nCCO ethanol\n");
  EXPECT_EQ(Run(std::string("predict --neighbours 2 --out out.csv ") + kTrain + "query.smi"), 2)
      << messages_;
  const auto rows = Lines(Read("out.csv"));
  ASSERT_THAT(rows, SizeIs(4));
  EXPECT_EQ(rows[0],
            "id,smiles,predicted,stddev,lower95,upper95,status,neighbour1_id,neighbour1_distance,"
            "neighbour1_weight,neighbour1_value,neighbour2_id,neighbour2_distance,"
            "neighbour2_weight,neighbour2_value");
  EXPECT_EQ(rows[1].rfind("heptanol,CCCCCCCO,", 0), 0u);
  EXPECT_THAT(rows[1], HasSubstr(",ok,hexanol,"));
  EXPECT_EQ(rows[2].rfind("broken,C1CC(,,,,,", 0), 0u);
  EXPECT_EQ(rows[3].rfind("ethanol,CCO,-0.31,", 0), 0u) << "a training molecule has its own value";
  EXPECT_THAT(messages_, HasSubstr("query.smi: record 2 (line 2): "));
  EXPECT_THAT(messages_, HasSubstr("n 2  R2 ")) << "the values table knows two of the queries";
}

TEST_F(CommandLine, PredictsTheSameWithAndWithoutNeighbours) {
  Write("query.smi", "CCCCCCCO heptanol\nOC1CCCCC1 cyclohexanol\nCCO ethanol\n");
  for (const char* options : {"", "--local 4 "}) {
    const std::string command = std::string("predict ") + options + kTrain + "query.smi ";
    ASSERT_EQ(Run(command + "--neighbours 1"), 0) << messages_;
    const auto whole = Lines(output_);
    ASSERT_EQ(Run(command + "--neighbours 0"), 0) << messages_;
    const auto bare = Lines(output_);
    ASSERT_THAT(bare, SizeIs(whole.size()));
    for (std::size_t i = 0; i < bare.size(); ++i)
      EXPECT_EQ(whole[i].rfind(bare[i] + ',', 0), 0u) << whole[i] << "\n" << bare[i];
  }
}

TEST_F(CommandLine, ReadsEveryFormatAndStandardInput) {
  Write("train.csv",
        "name,smiles,logP,size\nethanol,CCO,-0.31,3\npropanol,CCCO,0.25,4\nbutanol,CCCCO,0.88,5\n"
        "pentanol,CCCCCO,1.51,6\nhexanol,CCCCCCO,2.03,7\nphenol,Oc1ccccc1,1.46,7\n");
  Write("query.tsv", "SMILES\tid\tsize\nCCO\tethanol\t3\n");
  for (const char* options : {"--drift size", "--local 4 --distance path", "--replicates max"}) {
    EXPECT_EQ(Run(std::string("predict --train train.csv --value logP query.tsv ") + options), 0)
        << messages_;
    EXPECT_THAT(output_, HasSubstr("\nethanol,CCO,-0.31,")) << options;
  }
  Write("no_size.tsv", "SMILES\tid\nCCO\tethanol\n");
  EXPECT_EQ(Run("predict --train train.csv --value logP --drift size no_size.tsv"), 2);
  EXPECT_THAT(output_, HasSubstr("'' under the drift column 'size' is not a finite number"));
  ASSERT_EQ(std::system(("gzip -c '" + (directory_ / "train.csv").string() + "' > '" +
                         (directory_ / "train.csv.gz").string() + "'")
                            .c_str()),
            0);
  EXPECT_EQ(Run("predict --train train.csv.gz --value logP --unlog - < known.smi"), 0) << messages_;
  EXPECT_THAT(Lines(output_), SizeIs(9));
  EXPECT_THAT(output_, HasSubstr("\nethanol,CCO,0.489779,")) << "10^-0.31";
}

TEST_F(CommandLine, ValidatesByFolds) {
  EXPECT_NE(Run(std::string("validate --folds 4 --out folds.csv ") + kTrain), 1) << messages_;
  EXPECT_THAT(output_, HasSubstr("kernel  "));
  EXPECT_THAT(output_, HasSubstr("  RMSE "));
  const std::string first = Read("folds.csv");
  EXPECT_THAT(Lines(first), SizeIs(9));
  Run(std::string("validate --folds 4 --out folds.csv ") + kTrain);
  EXPECT_EQ(Read("folds.csv"), first) << "the same seed gives the same folds";
}

struct FailureCase {
  const char* file;
  std::string text;
  const char* arguments;
  const char* message;
};

TEST_F(CommandLine, SaysWhatIsWrongAndWritesNothing) {
  const FailureCase cases[] = {
      {"t.csv", "", "--train t.csv --value y", "t.csv"},
      {"t.csv", "smiles,id,y\n", "--train t.csv --value y", "t.csv"},
      {"t.csv", "smiles,id,y\nC,a,1\n", "--train t.csv --value z", "'z'"},
      {"t.csv", "smiles,id,y\nC,a,1\nCC,b,tall\nCCC,c,2\n", "--train t.csv --value y", "tall"},
      {"t.csv", "smiles,id,y\nC,a,1\n", "--train t.csv --value y", "1 molecules"},
      {"t.csv", "smiles,id,y\nC,a,1\nC,b,2\nC,c,3\n", "--train t.csv --value y", "trained"},
      {"t.csv", "smiles,id,y\nC,a,5\nCC,b,5\nCCO,c,5\nCCN,d,5\n", "--train t.csv --value y",
       "unable to train"},
      {"t.sdf.gz", std::string("\x1f\x8b\x08\x00\x00\x00\x00\x00\x00\x03\xcb\x48", 12),
       "--train t.sdf.gz --value y", "t.sdf.gz"},
      {"t.xyz", "", "--train t.xyz --value y", "t.xyz"},
      {"t.csv", "smiles,id,y\nC,a,1\n", "--train missing.smi --value y", "missing.smi"},
      {"t.csv", "smiles,id,y\nC,a,1\n", "--value y", "--train"},
  };
  for (const FailureCase& c : cases) {
    Write(c.file, c.text);
    EXPECT_EQ(Run(std::string("predict --out out.csv ") + c.arguments + " known.smi"), 1)
        << c.text << messages_;
    EXPECT_THAT(messages_, HasSubstr(c.message)) << c.text;
    EXPECT_FALSE(std::filesystem::exists(directory_ / "out.csv"));
  }
  EXPECT_EQ(Run(std::string("predict --out no/such/out.csv ") + kTrain + "known.smi"), 1);
  EXPECT_THAT(messages_, HasSubstr("cannot write no/such/out.csv"));
}

TEST_F(CommandLine, AQueryFileThatBreaksOffKeepsWhatCameBefore) {
  std::string lines;
  for (int i = 0; i < 2000; ++i) lines += "CCCCO butanol" + std::to_string(i * 7919) + "\n";
  Write("whole.smi", lines);
  ASSERT_EQ(std::system(
                ("cd '" + directory_.string() + "' && gzip -c whole.smi | head -c 3000 > q.smi.gz")
                    .c_str()),
            0);
  EXPECT_EQ(Run(std::string("predict --neighbours 0 --out out.csv ") + kTrain + "q.smi.gz"), 1);
  EXPECT_THAT(messages_, HasSubstr("q.smi.gz: the gzip file is truncated"));
  const auto rows = Lines(Read("out.csv"));
  ASSERT_GT(rows.size(), 100u);
  EXPECT_EQ(rows[1].rfind("butanol0,CCCCO,0.88,", 0), 0u);
  EXPECT_EQ(rows.back(), ",,,,,,q.smi.gz: the gzip file is truncated");
}

TEST_F(CommandLine, LeavesOutBadTrainingRecordsAndSaysWhich) {
  Write("train.smi", Read("known.smi") + "C1CC( broken\nCCCCCCCCO unknown\n");
  EXPECT_EQ(Run("predict --train train.smi --values values.csv --value logP known.smi"), 2);
  EXPECT_THAT(messages_, HasSubstr("train.smi: record 9 (line 9): "));
  EXPECT_THAT(messages_, HasSubstr("train.smi: record 10 (line 10): no value, left out"));
  EXPECT_THAT(Lines(output_), SizeIs(9));
}

TEST_F(CommandLine, AFullDiskIsAnError) {
  if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "no /dev/full here";
  const std::string command = "cd '" + directory_.string() + "' && " QVSTATS_PROGRAM " predict " +
                              kTrain + "known.smi >/dev/full 2>stderr";
  const int status = std::system(command.c_str());
  EXPECT_EQ(WEXITSTATUS(status), 1);
  EXPECT_THAT(Read("stderr"), HasSubstr("cannot write"));
}

TEST_F(CommandLine, ReportsOnEachQuery) {
  Write("query.csv",
        "id,smiles,batch\nheptanol,CCCCCCCO,B7\nbroken,C1CC(,B8\nbenzyl,OCc1ccccc1,B9\n");
  const std::string report = std::string("report --neighbours 4 --classes 0,1.5 ") + kTrain;
  EXPECT_EQ(Run(report + "--title 'About {id}' --property batch --out page.svg query.csv"), 2)
      << messages_;
  EXPECT_THAT(messages_, HasSubstr("query.csv: record 2 (line 3): "));
  EXPECT_THAT(Read("page.svg"), HasSubstr(">About heptanol<"));
  EXPECT_THAT(Read("page.svg"), HasSubstr(">B7<"));
  EXPECT_THAT(Read("page-2.svg"), HasSubstr(">About benzyl<"));
  EXPECT_EQ(Run(report + "--page slide --no-details --out page.pdf known.smi"), 0) << messages_;
  EXPECT_THAT(Read("page.pdf"), HasSubstr("/Count 8"));
}

TEST_F(CommandLine, RefusesReportsThatCannotBeWritten) {
  Write("none.smi", "C1CC( broken\n");
  const std::string report = std::string("report ") + kTrain;
  const struct {
    const char* arguments;
    const char* message;
  } cases[] = {{"--out page.gif known.smi", "page.gif: a report is a .pdf, .png or .svg file"},
               {"--out no/page.pdf known.smi", "no/page.pdf: there is no directory no"},
               {"--out page.pdf none.smi", "none.smi: no molecule to report on"}};
  for (const auto& row : cases) {
    EXPECT_EQ(Run(report + row.arguments), 1);
    EXPECT_THAT(messages_, HasSubstr(row.message));
  }
  for (const auto& entry : std::filesystem::directory_iterator(directory_))
    EXPECT_NE(entry.path().filename().string().rfind("page", 0), 0u) << entry.path();
}

// Real molecules to a similarity triangle, and back through the loader.
TEST_F(CommandLine, SimilaritiesReadBackAreTheTanimotos) {
  for (const std::string path : {QVSTATS_TEST_DATA "/drugs.smi",
                                 QVSTATS_RDKIT_DATA "/Contrib/FreeWilson/data/CHEMBL2321810.smi"}) {
    if (!std::filesystem::exists(path)) continue;
    ASSERT_EQ(Run("similarity --quiet '" + path + "' out.pgs.gz"), 0) << messages_;
    QVStats::QVDataTable table("similarities");
    QVPlatform::qvifstream in((directory_ / "out.pgs.gz").string());
    const QVStats::QVStatModelResult loaded =
        QVStats::QVLoadDataTableFromPGSFile(table, in, "out.pgs.gz", true);
    ASSERT_TRUE(loaded.IsSuccessful()) << loaded.ReportStatResultDetails();

    std::vector<QVLikeness::QVVseprFingerprint> fingerprints;
    std::ifstream molecules(path);
    for (std::string smiles, title; molecules >> smiles && std::getline(molecules, title);)
      fingerprints.emplace_back(MakeMol(smiles), QVLikeness::QVVseprOptions());
    const std::size_t size = fingerprints.size();
    ASSERT_EQ(table.GetNumRows(), size);
    const QVStats::QVDataTableCol& matrix = table.GetColumnFromName("SimilarityMatrix");
    ASSERT_TRUE(matrix.ColIsLowerTriangular());
    // All pairs of few molecules, some of many.
    const std::size_t step = size > 100 ? 97 : 1;
    for (std::size_t pair = 0; pair < size * size; pair += step)
      ASSERT_EQ(matrix.GetDouble(pair / size, pair % size),
                fingerprints[pair / size].GetTanimoto(fingerprints[pair % size]))
          << path << ", pair " << pair;

    EXPECT_EQ(Run("table out.pgs.gz"), 0) << messages_;
    EXPECT_THAT(output_, HasSubstr(std::to_string(size) + " rows, 3 columns"));
    EXPECT_THAT(output_, ContainsRegex("SimilarityMatrix +Ratio +Double +0 +0 "));
  }
}

}  // namespace
