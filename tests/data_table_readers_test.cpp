#include <gmock/gmock.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>

#include "stats/api/data_table_fileInfo.h"
#include "stats/api/data_table_text_reader.h"
#include "tests/support/matchers.h"

namespace {

using namespace QVStats;
using namespace QVStats::QVStatModelFailureType;
using namespace QVStats::QVStatsBadData;
using testing::ElementsAre;
using testing::HasSubstr;

struct Read {
  QVStatModelResult result;
  QVDataTable table{"t"};
  QVDataTableReadReport report;
  std::string Text(const std::string& column, std::size_t row) const {
    return table.GetColumnFromName(column).GetString(row, 0);
  }
};

Read ReadText(const std::string& text, const QVDataTableReadOptions& options) {
  const std::string path = testing::TempDir() + "qvreader" + std::to_string(getpid());
  std::ofstream(path, std::ios::binary) << text;
  Read read;
  QVPlatform::qvifstream in(path);
  read.result = QVReadDataTable(read.table, in, "f.csv", options, read.report);
  std::remove(path.c_str());
  return read;
}

TEST(TextReader, QuotesFollowTheStandard) {
  const Read read = ReadText(
      "id,\"a \"\"quoted\"\", name\",n\r\n"
      "x , \"1, 2\r\nnext\" ,5\r\n\r\n\"\",\"NA\",NA\r\n",
      {});
  ASSERT_TRUE(read.result.IsSuccessful()) << read.result.ReportStatResultDetails();
  const std::string name = "a \"quoted\", name";
  EXPECT_EQ(read.Text("id", 0), "x");
  EXPECT_EQ(read.Text(name, 0), "1, 2\nnext");
  EXPECT_EQ(read.Text(name, 1), "MissingStringData");
  EXPECT_THAT(read.table.GetDoubles(read.table.GetColumnFromName("n")),
              ElementsAre(5, MissingDouble));
  EXPECT_THAT(read.table.GetDoubles(read.table.GetColumnFromName("LineNumbers")),
              ElementsAre(2, 5));
}

TEST(TextReader, BadRowsStopOrAreReported) {
  QVDataTableReadOptions options;
  options.delimiters = ";";
  options.schema = {{"x", QVStatVariableType::Ratio, {}},
                    {"n", QVStatVariableType::Interval, {}},
                    {"k", QVStatVariableType::Nominal, {"a", "b"}}};
  const std::string text =
      "k;x;n;free\na;1;2;p\na;one;2;p\nb;2;2.5;p\nc;1;1;p\na;1\n?;3;NA;q\n\"a;1\n";
  const Read stopped = ReadText(text, options);
  EXPECT_THAT(stopped.result, FailedWith(ArgumentValueWrong, "QVReadDataTable"));
  EXPECT_THAT(stopped.result.ReportStatResultDetails(),
              HasSubstr("f.csv, line 3: column \"x\": \"one\" is no number"));
  EXPECT_EQ(stopped.table.GetNumColumns(), 0u);

  options.badRows = QVBadRowPolicy::SkipAndReport;
  const Read skipped = ReadText(text, options);
  ASSERT_TRUE(skipped.result.IsSuccessful()) << skipped.result.ReportStatResultDetails();
  EXPECT_EQ(skipped.report.numRows, 2u);
  std::vector<std::string> reports;
  for (const QVDataTableBadRow& row : skipped.report.badRows)
    reports.push_back(std::to_string(row.lineNumber) + " " + row.reason);
  EXPECT_THAT(reports, ElementsAre("3 column \"x\": \"one\" is no number",
                                   "4 column \"n\": \"2.5\" is no whole number",
                                   "5 column \"k\": \"c\" is none of the categories",
                                   "6 2 fields instead of 4", "8 a quote is not closed"));
  EXPECT_EQ(skipped.table.GetColumnFromName("n").GetInt(1, 0), MissingInt);
  EXPECT_EQ(skipped.table.GetColumnFromName("k").GetUnsigned(0, 0), 2u);

  options.schema.push_back({"none", 4, {}});
  EXPECT_THAT(ReadText(text, options).result.ReportStatResultDetails(),
              HasSubstr("no column named \"none\""));
}

TEST(TextReader, ReadsQuotedArffAndBlanksAndFilesWithoutHeader) {
  const Read arff = ReadText(
      "% c\n@RELATION r\n@ATTRIBUTE colour {'dark red', green}\n@ATTRIBUTE 'the n' REAL\n@DATA\n"
      "'dark red', 2\ngreen,?\n",
      QVDataTableReadOptions::Arff());
  ASSERT_TRUE(arff.result.IsSuccessful()) << arff.result.ReportStatResultDetails();
  EXPECT_EQ(arff.Text("colour", 0), "dark red");
  EXPECT_EQ(arff.table.GetColumnFromName("the n").GetDouble(0, 0), 2.0);

  const Read blanks =
      ReadText("# comment\n  a   b \n 1 \t 2\n   3 4   \n", QVDataTableReadOptions::WhiteSpace());
  ASSERT_TRUE(blanks.result.IsSuccessful()) << blanks.result.ReportStatResultDetails();
  EXPECT_THAT(blanks.table.GetDoubles(blanks.table.GetColumnFromName("b")), ElementsAre(2, 4));

  QVDataTableReadOptions bare;
  bare.headerType = QVDataTableFileHeaderType::NoHeader;
  bare.schema = {{"first", QVStatVariableType::Identifier, {}}, {"second", 0, {}}};
  const Read named = ReadText("1,2\n3,4\n", bare);
  ASSERT_TRUE(named.result.IsSuccessful()) << named.result.ReportStatResultDetails();
  EXPECT_EQ(named.table.GetColumnFromName("first").GetStatVariableType(), 5u);
  EXPECT_EQ(named.table.GetNumRows(), 2u);
  EXPECT_EQ(ReadText("", {}).result.GetFailureType(), NoData);
}

}  // namespace
