// Regression on similarity from the command line.
#include <cmath>

#include "tests/support/command_line.h"

namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

constexpr const char* kTriangle =
    "% c\n% c\nIndex,Title,SimilarityMatrix\n0,a,1\n1,b,0.6,1\n2,c,0.1,0.2,1\n3,d,0.9,0.7,0.3,1\n";

std::vector<std::string> Split(const std::string& line) {
  std::istringstream stream(line + ",");
  std::vector<std::string> fields;
  for (std::string field; std::getline(stream, field, ',');) fields.push_back(field);
  return fields;
}

TEST_F(CommandLine, PredictsFromSimilarities) {
  Write("s.pgs", kTriangle);
  Write("y.csv", "name,y\nc,6\na,1\nb,3\n");
  // Within 1/2 of a row lie a, b and d; each weight is 1 or next to nothing.
  ASSERT_EQ(Run("smooth --table s.pgs --values y.csv --response y --model kernel --kernel BoxCar "
                "--params 2 --test 0 --summary s.txt"),
            0)
      << messages_;
  EXPECT_THAT(Lines(output_),
              ElementsAre("row,title,set,y,predicted,residual,estimated_error,average_weight,"
                          "left_out",
                          "0,a,training,1,2,-1,1,0.666667,3", "1,b,training,3,2,1,1,0.666667,1",
                          AllOf(StartsWith("2,c,training,6,6,"), EndsWith(",0.333333,2")),
                          "3,d,unknown,,2,,1,0.666667,"));
  EXPECT_THAT(messages_, AllOf(HasSubstr("Kernel parameter for BoxCar: 2\n"),
                               HasSubstr("training, left out   n 3  R2 ")));
  EXPECT_THAT(Read("s.txt"), AllOf(StartsWith("Regression Model: Kernel or Nadaraya-Watson"),
                                   HasSubstr("Result type: Test Set Results\n")));
}

// Two rows of similarity s: the covariances of kriging can be solved by hand.
TEST_F(CommandLine, KrigesFromSimilarities) {
  Write("s.pgs", "%\n%\nIndex,Title,SimilarityMatrix\n0,7,1\n1,8,0.5,1\n2,9,0.75,0.5,1\n");
  Write("y.csv", "y,id,other\n2,07,x\n5,8.0,x\n,9,x\n");
  const std::string common =
      "smooth --table s.pgs --values y.csv --id id --response y --test 0 "
      "--kernel Linear --params 1,0.2,1.2 --model ";
  const double a = 1.2, b = 0.5, k1 = 0.75, k2 = 0.5;  // C = [a b; b a], the partial sill is 1
  const double det = a * a - b * b;
  const double w1 = (a * k1 - b * k2) / det, w2 = (a * k2 - b * k1) / det;
  ASSERT_EQ(Run(common + "krige"), 0) << messages_;
  std::vector<std::string> fields = Split(Lines(output_)[3]);
  EXPECT_EQ(fields[1], "9");
  EXPECT_NEAR(std::stod(fields[4]), 3.5 + w1 * -1.5 + w2 * 1.5, 1e-5);
  EXPECT_NEAR(std::stod(fields[6]), std::sqrt(1.2 - w1 * k1 - w2 * k2), 1e-5);
  // Ordinary kriging: by symmetry the mean is the same; the error has the Lagrange term.
  ASSERT_EQ(Run(common + "okrige"), 0) << messages_;
  fields = Split(Lines(output_)[3]);
  EXPECT_NEAR(std::stod(fields[4]), 3.5 + w1 * -1.5 + w2 * 1.5, 1e-5);
  const double lagrange = std::pow(1 - w1 - w2, 2) / (2 / (a + b));
  EXPECT_NEAR(std::stod(fields[6]), std::sqrt(1.2 - w1 * k1 - w2 * k2 + lagrange), 1e-5);
}

TEST_F(CommandLine, FitsTheVariogramOfSimilarities) {
  // Points on a line with a smooth response and some noise.
  std::string triangle = "%\n%\nIndex,Title,SimilarityMatrix\n", values = "id,y\n";
  const int n = 60;
  for (int i = 0; i < n; ++i) {
    triangle += std::to_string(i) + ",p" + std::to_string(i);
    for (int j = 0; j <= i; ++j) triangle += "," + std::to_string(1.0 - (i - j) / 60.0);
    triangle += "\n";
    values += "p" + std::to_string(i) + "," +
              std::to_string(std::sin(i * 2 * M_PI / n) + 0.1 * (i * 7 % 5)) + "\n";
  }
  Write("s.pgs", triangle);
  Write("y.csv", values + "p60,1\np3,high\n");
  const std::string common =
      "smooth --table s.pgs --values y.csv --response y --fit-variogram "
      "--kernel Gaussian --min-similarity 0.5 --bins 10 --out p.csv --variogram v.csv ";
  for (const char* model : {"kernel", "gp", "krige", "okrige"}) {
    ASSERT_EQ(Run(common + "--plot v.svg --model " + model), 2) << messages_;
    EXPECT_THAT(messages_, HasSubstr("y.csv, line 62: no row of s.pgs has the title 'p60'\n"
                                     "y.csv, line 63: the value 'high' is not a finite number\n"));
    EXPECT_THAT(messages_, HasSubstr("test                 n 12  R2 ")) << model;
    const auto rows = Lines(Read("p.csv"));
    ASSERT_THAT(rows, SizeIs(61));
    for (std::size_t i = 1; i < rows.size(); ++i) {
      const auto fields = Split(rows[i]);
      EXPECT_EQ(fields[2], i <= 48 ? "training" : "test");
      EXPECT_THAT(fields[6], Not(IsEmpty())) << "an error estimate from every model";
      EXPECT_EQ(fields[8].empty(), fields[2] == "test");
    }
  }
  const auto bins = Lines(Read("v.csv"));
  ASSERT_THAT(bins, SizeIs(11));
  EXPECT_EQ(bins[0], "similarity,pairs,semivariance,weight,fitted");
  double weights = 0, pairs = 0;
  for (std::size_t i = 1; i < bins.size(); ++i) {
    const auto fields = Split(bins[i]);
    pairs += std::stod(fields[1]);
    weights += std::stod(fields[3]);
    // Below 0.5 bins do not count.
    EXPECT_EQ(fields[3] == "0", i <= 5) << bins[i];
  }
  EXPECT_EQ(pairs, 48 * 47 / 2);
  EXPECT_NEAR(weights, 1, 1e-4);
  EXPECT_THAT(Read("v.svg"), AllOf(HasSubstr("Variogram of y"), HasSubstr("bins in the fit"),
                                   HasSubstr("other bins"), HasSubstr("Gaussian: p ")));
  // The draw of the test rows is the seed's.
  const std::string first = Read("p.csv");
  Run(common + "--model okrige");
  EXPECT_EQ(Read("p.csv"), first);
  Run(common + "--model okrige --seed 2");
  EXPECT_NE(Read("p.csv"), first);
}

TEST_F(CommandLine, SaysWhatIsWrongWithSimilarities) {
  Write("s.pgs", kTriangle);
  Write("y.csv", "id,y\na,1\nb,3\nc,6\nd,2\n");
  Write("twice.csv", "id,y\na,1\na,2\n");
  Write("one.csv", "id,y\na,1\n");
  Write("beyond.pgs", "%\n%\nIndex,Title,SimilarityMatrix\n0,a,1\n1,b,1.6,1\n");
  const struct {
    const char* arguments;
    const char* message;
  } rows[] = {
      {"--table no.pgs --response y", "no.pgs"},
      {"--table s.pgs --response y", "s.pgs: there is no column 'y'"},
      {"--table s.pgs --response Title", "s.pgs: the column 'Title' is no column of numbers"},
      {"--table s.pgs --response Index --similarity x", "s.pgs: there is no column 'x'"},
      {"--table s.pgs --values y.csv --response z", "'z'"},
      {"--table s.pgs --values twice.csv --response y", "twice.csv, line 3: another value of 'a'"},
      {"--table s.pgs --values one.csv --response y", "fewer than two rows have a value 'y'"},
      {"--table s.pgs --values y.csv --response y --test 1", "fewer than two rows are left"},
      {"--table s.pgs --values y.csv --response y --model krige", "needs 3 parameters"},
      {"--table s.pgs --values y.csv --response y --model gp --params 1,2", "needs 1 parameter:"},
      {"--table s.pgs --values y.csv --response y --params 1,3,2", "nugget (3); greater than sill"},
      {"--table s.pgs --values y.csv --response y --fit-variogram --min-similarity 1",
       "a variogram needs three bins"},
      {"--table s.pgs --values y.csv --response y --fit-variogram --plot v.gif", "v.gif: a plot"},
      {"--table s.pgs --values y.csv --response y --bins 5", "--fit-variogram"},
      {"--table s.pgs --values y.csv --response y --kernel Round", "Round"},
      {"--table beyond.pgs --values y.csv --response y --test 0 --model gp", "1.6"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(Run(std::string("smooth ") + row.arguments), 1) << row.arguments;
    EXPECT_THAT(messages_, HasSubstr(row.message)) << row.arguments;
    EXPECT_THAT(output_, IsEmpty()) << row.arguments;
  }
}

}  // namespace
