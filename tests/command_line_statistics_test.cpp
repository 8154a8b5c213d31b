// The commands that describe the columns of a table and draw them.
#include "tests/support/command_line.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

const char* const kIris = "'" QVSTATS_TEST_DATA "/iris.arff'";

// R: summary, sd and quantile(type = 8) of iris.
TEST_F(CommandLine, DescribesColumns) {
  ASSERT_EQ(Run(std::string("describe --out - ") + kIris), 0) << messages_;
  const auto rows = Lines(output_);
  EXPECT_THAT(rows[0],
              StartsWith("column,group,level,count,missing,bad,mean,sd,min,q1,median,q3,"));
  EXPECT_EQ(rows[1], "sepallength,,,150,0,0,5.84333,0.828066,4.3,5.1,5.8,6.4,7.9,");
  EXPECT_THAT(output_, HasSubstr("\nclass,,,150,0,0,,,,,,,,\n"));
  EXPECT_THAT(output_, HasSubstr("\nclass,,Iris-setosa,50,,,,,,,,,,0.333333\n"));
  ASSERT_EQ(Run(std::string("describe --columns petalwidth --by class ") + kIris), 0);
  const auto lines = Lines(output_);
  ASSERT_THAT(lines, SizeIs(6)) << output_;
  EXPECT_EQ(lines[3],
            "petalwidth  Iris-setosa         50        0    0  0.246  0.105386  0.1  0.2     0.2  "
            "0.3  0.6");
  EXPECT_THAT(lines[5], testing::MatchesRegex("petalwidth +Iris-virginica +50 .* 2\\.026 .*"));
}

TEST_F(CommandLine, DescribesWhatIsMissingAndTiny) {
  Write("gaps.csv", "id,y,g\na,1,u\nb,,u\nc,4,v\nd,NA,\ne,7,v\nf,nan,v\ng,9,w\n");
  ASSERT_EQ(Run("describe --out gaps.out gaps.csv"), 0) << messages_;
  EXPECT_THAT(Read("gaps.out"), HasSubstr("\ny,,,4,2,1,5.25,3.5,1,"));
  EXPECT_THAT(Read("gaps.out"), HasSubstr("\ng,,,6,1,0,"));
  ASSERT_EQ(Run("describe --columns y --by g --out - gaps.csv"), 0);
  const auto rows = Lines(output_);
  EXPECT_EQ(rows[1], "y,u,,1,1,0,1,,1,1,1,1,1,") << "one value has no deviation, but a median";
  EXPECT_EQ(rows[2], "y,v,,2,0,1,5.5,2.12132,4,4,5.5,7,7,");
  EXPECT_EQ(rows[4], "y,(missing),,0,1,0,,,,,,,,");
}

TEST_F(CommandLine, DescribesLevels) {
  std::string table = "id,g\nfirst,\"a, \"\"b\"\"\"\n";
  for (int i = 0; i < 48; ++i)
    table += "id" + std::to_string(i) + ",level" + std::to_string(i % 16) + "\n";
  Write("levels.csv", table);
  ASSERT_EQ(Run("describe levels.csv"), 0) << messages_;
  EXPECT_THAT(output_, HasSubstr("\ng       level0        3                0.0612245\n"));
  EXPECT_THAT(output_, HasSubstr("\ng       (5 more)\n"));
  ASSERT_EQ(Run("describe --out - levels.csv"), 0);
  EXPECT_THAT(Lines(output_), SizeIs(1 + 1 + 1 + 17));
  EXPECT_THAT(output_, HasSubstr("\nid,,,49,0,0,")) << "identifiers have no levels, but are there";
  EXPECT_THAT(output_, HasSubstr("\ng,,\"a, \"\"b\"\"\",1,"));
}

// R: cor with its three methods; energy::dcor.
TEST_F(CommandLine, DescribesPairs) {
  ASSERT_EQ(Run(std::string("describe --pairs --columns petallength,petalwidth --out - ") + kIris),
            0)
      << messages_;
  EXPECT_THAT(Lines(output_),
              ElementsAre("column1,column2,group,count,pearson,spearman,kendall,distance",
                          "petallength,petalwidth,,150,0.962865,0.937667,0.806891,0.973631"));
  ASSERT_EQ(Run(std::string("describe --pairs --by class ") + kIris), 0);
  EXPECT_THAT(Lines(output_), SizeIs(1 + 6 * 3));
  // Concentrations in mol/l: far below 2^-52 in variance, and no less correlated. A constant has no
  // correlation.
  Write("small.csv", "a,b,c\n1e-12,2e-9,1\n2e-12,4e-9,1\n3e-12,7e-9,1\n,1,1\n");
  ASSERT_EQ(Run("describe --pairs --out - small.csv"), 0);
  EXPECT_THAT(Lines(output_)[1], StartsWith("a,b,,3,0.993399,1,1,"));
  EXPECT_THAT(Lines(output_)[2], StartsWith("a,c,,3,,,,"));
}

TEST_F(CommandLine, DrawsEveryKindOfPlot) {
  Write("one.csv", "y,x\n1.5,1\n");
  Write("two.csv", "y,x\n1.5,1\n2.5,2\n");
  Write("three.csv", "y,x\n1.5,1\n2.5,2\n9,3\n");
  Write("constant.csv", "y,x\n3,1\n3,2\n3,3\n3,4\n3,5\n");
  std::string skewed = "y,x,g\n";
  for (int i = 1; i <= 300; ++i)
    skewed += std::to_string(1e6 / (i * i)) + "," + std::to_string(i) + "," +
              (i % 3 == 0 ? "third" : "other") + "\n";
  Write("skewed.csv", skewed);
  for (const char* kind : {"histogram", "cdf", "normal", "density", "scatter --against x"})
    for (const char* file : {"one.csv", "two.csv", "three.csv", "constant.csv", "skewed.csv",
                             "skewed.csv --log", "skewed.csv --by g"}) {
      const std::string arguments = std::string("plot --column y --out p.svg --kind ") + kind + " ";
      ASSERT_EQ(Run(arguments + file), 0) << arguments << file << messages_;
      const std::string picture = Read("p.svg");
      EXPECT_THAT(picture, HasSubstr("<text")) << arguments << file;
      EXPECT_THAT(picture, Not(HasSubstr("nan"))) << arguments << file;
      EXPECT_LT(picture.size(), 200000u) << arguments << file;
      if (std::string(file).find("--by") != std::string::npos) {
        EXPECT_THAT(picture, HasSubstr(">third</text>")) << arguments << file;
      }
    }
  EXPECT_EQ(Run("plot --column y --fit gamma --title T --x-label X --out p.svg skewed.csv"), 0);
  for (const char* text : {">T<", ">X<", ">density<", ">gamma fit<"})
    EXPECT_THAT(Read("p.svg"), HasSubstr(text));
  EXPECT_EQ(Run("plot --column y --bands 0.9 --out p.svg skewed.csv"), 0) << messages_;
  EXPECT_THAT(Read("p.svg"), HasSubstr(">90 % confidence<"));
  EXPECT_EQ(Run("plot --column Y --out p.png two.csv"), 0) << "a name in any case";
  EXPECT_THAT(Read("p.png"), StartsWith("\x89PNG"));
}

TEST_F(CommandLine, ManyPointsMakeASmallPicture) {
  std::string table = "x,y\n";
  unsigned int state = 1;
  const auto next = [&state] {
    return std::to_string((state = state * 1664525u + 1013904223u) >> 16u);
  };
  for (int i = 0; i < 60000; ++i) table += next() + "," + next() + "\n";
  Write("many.csv", table);
  ASSERT_EQ(Run("plot --kind scatter --column y --against x --out p.svg many.csv"), 0);
  EXPECT_LT(Read("p.svg").size(), 2000000u);
  EXPECT_THAT(Read("p.svg"), Not(HasSubstr("<circle")));
}

TEST_F(CommandLine, LeavesOutWhatCannotBeDrawn) {
  Write("mixed.csv", "y,x\n1,1\n-2,2\n,3\n4,4\ntall,5\n8,6\n");
  EXPECT_EQ(Run("plot --column y --log --skip-bad --out p.svg mixed.csv"), 2);
  EXPECT_THAT(messages_,
              HasSubstr("mixed.csv, line 6: \"tall\" in the column 'y' is not a finite"));
  EXPECT_THAT(messages_, HasSubstr("1 rows left out that are not positive"));
  EXPECT_THAT(Read("p.svg"), HasSubstr(">y, n = 3<"));
  EXPECT_EQ(Run("plot --column y --missing tall --out p.svg - < mixed.csv"), 0) << messages_;
}

TEST_F(CommandLine, SaysWhatIsWrongWithAColumn) {
  Write("t.csv", "name,y,z\na,1,-1\nb,2,\nc,tall,-3\nd,4,\n");
  Write("none.csv", "name,y\n");
  Write("empty.csv", "");
  Write("gaps.csv", "name,y\na,\nb,\n");
  Write("ids.csv", "id,y\na,1\nb,2\nc,3\nd,4\ne,5\nf,6\ng,7\nh,8\n");
  const struct {
    const char* arguments;
    const char* message;
  } cases[] = {
      {"plot --column w t.csv", "t.csv: no column 'w'; the columns are 'name', 'y', 'z'"},
      {"plot --column y t.csv", "t.csv, line 4: \"tall\" in the column 'y' is not a finite number"},
      {"plot --column y empty.csv", "empty.csv: no header line"},
      {"plot --column y none.csv", "none.csv: the column 'y' holds no number"},
      {"plot --column y gaps.csv", "gaps.csv: the column 'y' holds no number"},
      {"plot --column z --log t.csv", "t.csv: the column 'z' holds no number above 0"},
      {"plot --column y missing.csv", "missing.csv"},
      {"plot --column y --kind scatter ids.csv", "--against"},
      {"plot --column y --kind cdf --bins 5 ids.csv", "--bins is no option of --kind cdf"},
      {"plot --column y --bands 0.9 --by id ids.csv", "--bands and --by exclude each other"},
      {"plot --column y --by id ids.csv", "'id' makes 8 groups; at most 7"},
      {"plot --column y --kind pie ids.csv", "pie"},
      {"plot --column y --fit beta ids.csv", "y: "},
      {"describe empty.csv", "empty.csv: no header line"},
      {"describe none.csv", "none.csv: no rows"},
      {"describe --columns w t.csv", "no column 'w'"},
      {"describe --by w t.csv", "no column 'w'"},
      {"describe --pairs ids.csv",
       "ids.csv: pairs need two columns of numbers, and here is only 'y'"},
      {"describe --pairs --columns y,z t.csv", "t.csv, line 4: \"tall\" in the column 'y'"},
  };
  for (const auto& [arguments, message] : cases) {
    EXPECT_EQ(Run(std::string(arguments) + " --out out.svg"), 1) << arguments;
    EXPECT_THAT(messages_, HasSubstr(message)) << arguments;
    EXPECT_FALSE(std::filesystem::exists(directory_ / "out.svg")) << arguments;
  }
  EXPECT_EQ(Run("plot --column y --out y.gif ids.csv"), 1);
  EXPECT_THAT(messages_, HasSubstr("y.gif: a plot is a .pdf, .png or .svg file"));
}

}  // namespace
