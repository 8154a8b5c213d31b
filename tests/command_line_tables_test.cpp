// The commands that cluster molecules and that read tables.
#include "tests/support/command_line.h"

namespace {

using testing::HasSubstr;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

constexpr const char* kScores =
    "id,score,energy,label\na,0.9,-9,active\nb,0.8,-5,decoy\nc,0.7,-8,active\nd,0.7,-2,decoy\n"
    "e,0.2,-7,decoy\nf,0.1,-1,decoy\n";

TEST_F(CommandLine, MeasuresARanking) {
  Write("scores.csv", kScores);
  ASSERT_EQ(Run("auc --score score --label label --plot roc.svg scores.csv"), 0) << messages_;
  // a beats 4 decoys; c loses to b, ties with d and beats 2.
  EXPECT_THAT(output_, HasSubstr("\nauc,0.8125\n"));
  EXPECT_THAT(output_, HasSubstr("\nef_1,3\n"));
  EXPECT_THAT(Read("roc.svg"), HasSubstr("score (AUC 0.812)"));
  ASSERT_EQ(Run("auc --score energy --lower-is-better --label label scores.csv"), 0) << messages_;
  EXPECT_THAT(output_, HasSubstr("\nauc,1\n"));
  Write("negated.csv", "score,other,hit\n9,9,x\n8,5,y\n7,8,x\n7,2,y\n2,7,y\n1,1,y\n");
  ASSERT_EQ(Run("auc --score score --compare other --active X --label hit negated.csv"), 0);
  EXPECT_THAT(Lines(output_)[0], "measure,score,other");
  EXPECT_THAT(output_, HasSubstr("\nauc,0.8125,1\n"));
  EXPECT_THAT(output_, HasSubstr("\nauc_difference,-0.1875,\n"));
}

TEST_F(CommandLine, RowsWithoutAScoreAreLeftOutOrRankedLast) {
  Write("scores.csv", std::string(kScores) + "g,nan,-3,active\nh,,-3,decoy\ni,0.3,-3,maybe\n");
  EXPECT_EQ(Run("auc --score score --label label scores.csv"), 2);
  EXPECT_THAT(output_, HasSubstr("\nauc,0.8125\n"));
  EXPECT_THAT(messages_, HasSubstr("scores.csv: line 8: the score 'nan' is not a finite number"));
  EXPECT_THAT(messages_, HasSubstr("scores.csv: line 10: 'maybe' does not tell"));
  EXPECT_EQ(Run("auc --missing-last --score score --label label scores.csv"), 2);
  // 6.5 of 8 pairs as before, 2 more with the decoy h, and g ties with h alone.
  EXPECT_THAT(output_, HasSubstr("\nauc,0.6\n"));
}

TEST_F(CommandLine, FitsBinaryRegressions) {
  const std::string births = "'" QVSTATS_TEST_DATA "/birth_weight.csv'";
  ASSERT_EQ(Run("logit --response low " + births), 0) << messages_;
  EXPECT_THAT(Lines(output_), SizeIs(7)) << "nothing but the table on standard output";
  EXPECT_THAT(output_, StartsWith("predictor,coefficient,se,z,p,odds_ratio,"));
  // R: glm(low ~ age + lwt + smoke + ht + ui, binomial).
  EXPECT_THAT(output_, HasSubstr("\n(intercept),1.39979,1.08"));
  EXPECT_THAT(messages_, HasSubstr("n 189 (59 positive)"));
  ASSERT_EQ(Run("logit --link probit --predictors lwt,smoke --response low --coefficients c.csv "
                "--predict " +
                births + " --out p.csv " + births),
            0)
      << messages_;
  EXPECT_THAT(Lines(Read("c.csv")), SizeIs(4));
  EXPECT_THAT(Read("c.csv"), Not(HasSubstr("odds")));
  EXPECT_THAT(Lines(Read("p.csv")), SizeIs(190));
  EXPECT_THAT(Read("p.csv"), StartsWith("low,age,lwt,smoke,ht,ui,probability\n"));
  Write("separable.csv", "x,y\n1,no\n2,no\n3,yes\n4,yes\n");
  EXPECT_EQ(Run("logit --response y separable.csv"), 0);
  EXPECT_THAT(messages_, HasSubstr("separate the outcomes"));
}

TEST_F(CommandLine, FitsPartialLeastSquares) {
  const std::string table = "'" QVSTATS_TEST_DATA "/pls_molecules.csv'";
  ASSERT_EQ(Run("pls --response activity --predictors MolWt,logP,TPSA,MR,HBA " + table), 0);
  EXPECT_THAT(Lines(output_), SizeIs(7));
  EXPECT_THAT(messages_, HasSubstr("cross-validated RMSE"));
  EXPECT_THAT(messages_, HasSubstr("used"));
  Write("line.csv", "a,b,name,y\n1,2,p,1\n2,4,q,2\n3,6,r,3\n4,,s,4\n5,10,t,5\n");
  EXPECT_EQ(Run("pls --response y --components 1 --no-scale --predict line.csv line.csv"), 2);
  EXPECT_THAT(Lines(output_)[0], "a,b,name,y,predicted,score1");
  EXPECT_THAT(Lines(output_)[3], StartsWith("3,6,r,3,3,"));
  EXPECT_THAT(Lines(output_)[4], "4,,s,4,,");
  EXPECT_THAT(messages_,
              HasSubstr("line.csv: line 5: '' in the column 'b' is not a finite number"));
  EXPECT_THAT(messages_, HasSubstr("for want of numbers: 'name'"));
}

TEST_F(CommandLine, ClustersMolecules) {
  std::string molecules;
  for (std::size_t i = 1; i <= 12; ++i) {
    const std::string chain(i, 'C'), id = std::to_string(i);
    molecules += chain + "CCCO alcohol" + id + "\nc1ccccc1C(=O)N" + chain + " amide" + id + "\n";
  }
  Write("mols.smi", molecules + "C1CC( broken\n");
  for (const char* by : {"vsepr", "circular", "substructure --budget 1"}) {
    EXPECT_EQ(Run(std::string("cluster --page page.svg --by ") + by + " mols.smi"), 2);
    const auto rows = Lines(output_);
    ASSERT_THAT(rows, SizeIs(25)) << by;
    EXPECT_EQ(rows[0], "id,smiles,cluster,role");
    EXPECT_THAT(output_, HasSubstr(",head\n")) << by;
    EXPECT_THAT(output_, HasSubstr(",member\n")) << by;
    EXPECT_THAT(Lines(messages_), SizeIs(2)) << messages_;
    EXPECT_THAT(messages_, HasSubstr("mols.smi: record 25 (line 25): "));
    EXPECT_THAT(Read("page.svg"), HasSubstr("Cluster 1: ")) << by;
  }
  EXPECT_EQ(Run("cluster --neighbours 8 --noise 1 --quiet known.smi"), 0) << messages_;
}

// Fourth powers of such numbers overflow or vanish, and long fields would hide what the message
// says.
TEST_F(CommandLine, NumbersOutOfAllProportionAreRefusedByTheirPlace) {
  const auto write = [this](const char* name, const std::string& second, const char* fourth) {
    Write(name,
          "y,x,c\n1,1,0\n2," + second + ",1\n3,2,1\n4," + fourth + ",0\n5,4,1\n3,5,0\n4,7,1\n");
  };
  write("big.csv", "1e200", "-1e308");
  write("odd.csv", "inf", "nan");
  write("long.csv", std::string(99999, '9'), "3");
  Write("tiny.csv", "y,x,c\n1,1e-310,0\n2,2e-310,1\n3,-1e-309,1\n4,5e-310,0\n");
  for (const std::string command :
       {"plot --skip-bad --column x --fit normal --out p.svg ",
        "plot --skip-bad --column x --kind density --out p.svg ",
        "plot --skip-bad --column x --kind scatter --against y --out p.svg ",
        "logit --response c --predictors x ", "pls --response y --predictors x --components 1 ",
        "pls --response x --predictors y --components 1 ", "mixture --components 1 --column x "}) {
    const std::pair<const char*, std::vector<const char*>> cases[] = {
        {"big.csv",
         {"line 3: .1e.?200. .*is beyond 1e.70", "line 5: .-1e.?308. .*is beyond 1e.70"}},
        {"odd.csv", {"line 3: .inf. .*is not a finite", "line 5: .nan. .*is not a finite"}},
        {"long.csv", {"line 3: .9999*\\.\\.\\.. .*is not a finite"}}};
    for (const auto& [file, messages] : cases) {
      EXPECT_EQ(Run(command + file), 2) << command << file << messages_;
      EXPECT_LT(messages_.size(), 1000u) << command << file;
      for (const char* message : messages)
        EXPECT_THAT(messages_, testing::ContainsRegex(message)) << command << file;
    }
    EXPECT_EQ(Run(command + "tiny.csv"), 1) << command << messages_;
    EXPECT_THAT(messages_, HasSubstr("tiny.csv: the numbers in the column 'x' differ by no more "
                                     "than 1.5e-309"))
        << command;
  }
  EXPECT_EQ(Run("describe --pairs --skip-bad --columns x,y big.csv"), 2);
  EXPECT_THAT(messages_, HasSubstr("big.csv, line 3: \"1e+200\" in the column 'x' is beyond"));
  // What needs no squares of the numbers has no limit.
  for (const std::string unit : {"e-310", "e200", "e298"}) {
    Write("scaled.csv", "x,c\n1" + unit + ",1\n2" + unit + ",0\n-3" + unit + ",0\n7" + unit +
                            ",1\n5" + unit + ",0\n");
    EXPECT_EQ(Run("describe --columns x --out - scaled.csv"), 0);
    EXPECT_THAT(output_, testing::ContainsRegex("x,,,5,0,0,2.4e.?" + unit.substr(1) +
                                                ",3.84708e.?" + unit.substr(1) + ",-3e"))
        << unit;
    EXPECT_EQ(Run("auc --score x --label c scaled.csv"), 0);
    EXPECT_THAT(output_, HasSubstr("\nauc,0.666667\n")) << unit;
  }
}

// Divided by an infinite error it would show p = 1 and an odds ratio of at least 0.
TEST_F(CommandLine, AConstantPredictorHasNoStandardError) {
  Write("constant.csv", "y,x\n1,2\n0,2\n1,2\n");
  EXPECT_EQ(Run("logit --response y constant.csv"), 0);
  EXPECT_THAT(messages_, HasSubstr("no standard errors: a predictor is constant"));
  EXPECT_THAT(Lines(output_)[2], testing::MatchesRegex("x,[-0-9.e]+,,,,[0-9.e]+,,"));
}

TEST_F(CommandLine, SaysWhatIsWrongWithATable) {
  Write("scores.csv", kScores);
  Write("one.csv", "x,y\n1,1\n2,1\n");
  Write("words.csv", "x,y\na,1\nb,0\n");
  Write("empty.csv", "x,y\n");
  Write("nameless.csv", "x,,y\n1,2,3\n");
  const struct {
    const char* arguments;
    const char* message;
  } cases[] = {
      {"auc --score no --label label scores.csv", "'no'"},
      {"auc --score x --label y one.csv", "one.csv: no decoy with a score"},
      {"auc --score x --label y empty.csv", "empty.csv: no active with a score"},
      {"auc --score score --label label --plot roc.gif scores.csv", "roc.gif: a plot is"},
      {"logit --response y one.csv", "one.csv: all 2 outcomes under 'y' are positive"},
      {"logit --response y words.csv", "words.csv: no column of numbers"},
      {"logit --response y empty.csv", "empty.csv: no "},
      {"pls --response x words.csv", "words.csv: no complete row"},
      {"pls --response z one.csv", "'z'"},
      {"pls --response x nameless.csv", "nameless.csv: column 2 of the header has no name"},
      {"mixture --column y one.csv", "one.csv: the column 'y' is constant"},
      {"mixture --column x words.csv", "words.csv: the column 'x' holds no number"},
      {"mixture --column x --components 3-2 one.csv", "\"3-2\" is an empty range"},
      {"mixture --column x --components 0 one.csv", "\"0\" is no range of component counts"},
      {"mixture --column x --pairs 1:1,2 one.csv", "\"2\" is no pair of component counts"},
      {"cluster --page page.gif known.smi", "page.gif: a page is"},
      {"cluster missing.smi", "missing.smi"},
      {"cluster empty.smi", "empty.smi: no molecule to cluster"},
  };
  Write("empty.smi", "");
  for (const auto& row : cases) {
    EXPECT_EQ(Run(std::string(row.arguments) + " --out out.csv"), 1) << row.arguments;
    EXPECT_THAT(messages_, HasSubstr(row.message)) << row.arguments;
    EXPECT_FALSE(std::filesystem::exists(directory_ / "out.csv")) << row.arguments;
  }
}

}  // namespace
