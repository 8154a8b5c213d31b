// Tables are the same after they were written and read, or the writer refuses them: tried with
// random tables of odd names, odd texts, extreme numbers and missing values, in every format.
#include <gmock/gmock.h>

#include <cstring>
#include <limits>
#include <random>

#include "stats/api/data_table_fileInfo.h"
#include "tests/support/temporary_file.h"

namespace QVStats {
namespace {

using QVStatsBadData::MissingDouble;
using QVStatsBadData::MissingInt;

struct Format {
  const char* name;
  QVStatModelResult (*write)(QVPlatform::qvofstream&, const QVDataTable&, const std::string&);
  QVStatModelResult (*load)(QVDataTable&, QVPlatform::qvifstream&, const std::string&);
};
constexpr Format kFormats[] = {
    {"CSV", QVWriteDataTableToCSVFileWithHeader, QVLoadDataTableFromCSVFileWithHeader},
    {"Plain", QVWriteDataTableToPlainFileWithHeader, QVLoadDataTableFromPlainFileWithHeader},
    {"ARFF", QVWriteDataTableToArffFile, QVLoadDataTableFromArffFile},
    {"PGS", QVWriteDataTableToPGSFile,
     [](QVDataTable& table, QVPlatform::qvifstream& in, const std::string& name) {
       return QVLoadDataTableFromPGSFile(table, in, name, true);
     }}};

/// Mostly plain words; else what a reader may take for something else.
std::string MakeText(std::mt19937& engine) {
  static const char* const kOdd[] = {"",
                                     " ",
                                     "?",
                                     "%",
                                     "%x",
                                     " % x",
                                     "a b",
                                     " a",
                                     "a ",
                                     "\t",
                                     "a\tb",
                                     "'",
                                     "\"",
                                     "'a'",
                                     "\"a\"",
                                     "'a",
                                     "a'",
                                     "it's",
                                     "a,b",
                                     "a\nb",
                                     "a\r",
                                     "{a}",
                                     "}",
                                     "@DATA",
                                     "@",
                                     "@data x",
                                     "#",
                                     "1",
                                     "007",
                                     "1e3",
                                     "nan",
                                     "inf",
                                     "-inf",
                                     "0x10",
                                     "1,5",
                                     "NA",
                                     "\xEF\xBB\xBF",
                                     "\xC3\xA9",
                                     "\xFF\xFE",
                                     "\x01",
                                     "\\",
                                     "a\\",
                                     ";",
                                     "LineNumbers",
                                     "MissingStringData",
                                     "BadStringData",
                                     "NUMERIC",
                                     "Column_0"};
  constexpr std::size_t kCount = sizeof kOdd / sizeof *kOdd;
  if (engine() % 12 == 0) return kOdd[engine() % kCount];
  return "word" + std::to_string(engine() % 1000);
}

double MakeNumber(std::mt19937& engine) {
  static const double kOdd[] = {0.0,
                                -0.0,
                                std::numeric_limits<double>::denorm_min(),
                                -std::numeric_limits<double>::min(),
                                std::numeric_limits<double>::epsilon(),
                                0.1,
                                1.0 / 3.0,
                                -1e300,
                                0x1p53 + 2.0,
                                std::numeric_limits<double>::infinity(),
                                -std::numeric_limits<double>::infinity(),
                                std::numeric_limits<double>::max(),
                                MissingDouble};
  if (engine() % 3 == 0) return kOdd[engine() % (sizeof kOdd / sizeof *kOdd)];
  // Any bits but those of a NaN.
  const std::uint64_t bits = (std::uint64_t{engine()} << 32) | engine();
  double number = 0.0;
  std::memcpy(&number, &bits, sizeof number);
  return number == number ? number : 1.5;
}

/// A closed column. Its first cell shows the level: a number, or a text that is none.
QVDataTableCol MakeColumn(std::mt19937& engine, const std::string& name, std::size_t numRows) {
  constexpr unsigned int kLevels[] = {QVStatVariableType::Nominal, QVStatVariableType::Interval,
                                      QVStatVariableType::Ratio, QVStatVariableType::Identifier};
  const unsigned int level = kLevels[engine() % 4];
  QVDataTableCol column(name, level, numRows, 1, false);
  for (std::size_t i = 0; i < numRows; ++i) {
    if (i > 0 && engine() % 8 == 0)
      QVAppendMissingDataToCol(column);
    else if (level == QVStatVariableType::Ratio)
      QVAppendDoubleToCol(column, i == 0 ? 0.5 : MakeNumber(engine));
    else if (level == QVStatVariableType::Interval)
      QVAppendIntToCol(column, i == 0 ? -7 : static_cast<int>(engine()) / 2);
    else
      QVAppendStringToCol(column, i == 0 ? "text" : MakeText(engine));
  }
  QVFinishAppendingVars(column);
  return column;
}

QVDataTable MakeTable(std::mt19937& engine) {
  QVDataTable table(MakeText(engine));
  const std::size_t numRows = 1 + engine() % 8, numColumns = 1 + engine() % 4;
  for (std::size_t j = 0; j < numColumns; ++j)
    table.AddColumn(MakeColumn(
        engine, engine() % 4 == 0 ? MakeText(engine) : "c" + std::to_string(j), numRows));
  if (engine() % 4 == 0) {
    std::vector<double> triangle;
    for (std::size_t i = 0; i < numRows * (numRows + 1) / 2; ++i)
      triangle.push_back(MakeNumber(engine));
    table.AddColumn(QVDataTableCol("s", triangle, numRows, true));
  }
  return table;
}

bool IsNumeric(const QVDataTableCol& column) {
  return column.GetStatVariableType() == QVStatVariableType::Interval ||
         column.GetStatVariableType() == QVStatVariableType::Ratio;
}

bool HasSameBits(double a, double b) { return a == b && std::signbit(a) == std::signbit(b); }

void ExpectSameCells(const QVDataTableCol& written, const QVDataTableCol& read, std::size_t j) {
  ASSERT_EQ(read.GetTotalNumRowsInCol(), written.GetTotalNumRowsInCol());
  ASSERT_EQ(IsNumeric(read), IsNumeric(written));
  for (std::size_t i = 0; i < written.GetTotalNumRowsInCol(); ++i) {
    const std::size_t jRead = read.GetNumColumnsInCol() == 1 ? 0 : j;
    EXPECT_EQ(read.RowColHasMissingData(i, jRead), written.RowColHasMissingData(i, j)) << i;
    if (IsNumeric(written))
      EXPECT_TRUE(HasSameBits(read.GetDouble(i, jRead), written.GetDouble(i, j)))
          << i << ": " << read.GetDouble(i, jRead) << " for " << written.GetDouble(i, j);
    else
      EXPECT_EQ(read.GetString(i, jRead), written.GetString(i, j)) << i;
  }
}

void ExpectSameTable(const Format& format, const QVDataTable& written, const QVDataTable& read) {
  std::vector<QVDataTableCol> columns;
  for (const QVDataTableCol& column : read.GetColumns())
    if (column.GetColumnName() != "LineNumbers") columns.push_back(column);
  std::size_t next = 0;
  for (const QVDataTableCol& column : written.GetColumns()) {
    const bool isPGS = format.load == kFormats[3].load;
    if (isPGS && !column.ColIsLowerTriangular()) continue;  // names and number of these change
    if (column.GetColumnName() == "LineNumbers") continue;
    for (std::size_t j = 0; j < column.GetNumColumnsInCol(); ++j) {
      SCOPED_TRACE("column \"" + column.GetColumnName() + "\"");
      if (isPGS) {
        ASSERT_EQ(columns.size(), 3u);
        ExpectSameCells(column, columns[2], j);
        continue;
      }
      ASSERT_LT(next, columns.size());
      if (column.GetNumColumnsInCol() == 1) {
        EXPECT_EQ(columns[next].GetColumnName(), column.GetColumnName());
      }
      ExpectSameCells(column, columns[next++], j);
    }
  }
}

class TableProperties : public testing::TestWithParam<std::size_t> {};
INSTANTIATE_TEST_SUITE_P(Formats, TableProperties, testing::Range(std::size_t{0}, std::size_t{4}),
                         [](const auto& row) { return kFormats[row.param].name; });

TEST_P(TableProperties, AreTheSameAfterWriteAndRead) {
  const Format& format = kFormats[GetParam()];
  const TemporaryDirectory directory;
  std::mt19937 engine(7);
  int numWritten = 0;
  for (int i = 0; i < 1500 && !HasFailure(); ++i) {
    const QVDataTable table = MakeTable(engine);
    const std::string path = directory.GetPath(i % 2 == 0 ? "table" : "table.gz");
    QVPlatform::qvofstream out(path);
    const QVStatModelResult written = format.write(out, table, "table");
    ASSERT_TRUE(out.close());
    if (written.NotSuccessful()) continue;
    ++numWritten;
    QVPlatform::qvifstream in(path);
    QVDataTable loaded("loaded");
    const QVStatModelResult read = format.load(loaded, in, "table");
    std::string text;
    QVPlatform::qvifstream again(path);
    for (std::string line; again.getline(line);) text += line + '\n';
    SCOPED_TRACE(text);
    ASSERT_TRUE(read.IsSuccessful()) << read.ReportStatResultDetails();
    ExpectSameTable(format, table, loaded);
  }
  EXPECT_GT(numWritten, 200);
}

}  // namespace
}  // namespace QVStats
