#include <gmock/gmock.h>

#include "platform/system/error_handler.h"
#include "stats/api/data_table.h"
#include "stats/api/data_table_column.h"
#include "tests/support/matchers.h"

namespace {

using namespace QVStats;
using namespace QVStats::QVStatModelFailureType;
using namespace QVStats::QVStatsBadData;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

constexpr unsigned int kLevels[] = {0, 1, 2, 3, 4, 5};

QVDataTableCol MakeCol(unsigned int level, const std::string& name = "c", std::size_t m = 1) {
  return QVDataTableCol(name, level, 4, m, false);
}

std::string FirstComment(const QVStatModelResult& result) {
  const auto comments = result.GetComments();
  return comments ? *comments : "";
}

TEST(Columns, LowerTriangleIsStoredOnceAndReadFromBothSides) {
  const QVDataTableCol col("s", std::vector<double>{0, 10, 11, 20, 21, 22}, 3, true);
  EXPECT_EQ(col.GetNumElementsInCol(), 6u);
  EXPECT_EQ(col.GetTotalNumRowsInCol(), 3u);
  for (std::size_t r = 0; r < 3; ++r)
    for (std::size_t c = 0; c < 3; ++c)
      EXPECT_EQ(col.GetDouble(r, c), 10.0 * double(std::max(r, c)) + double(std::min(r, c)));
  EXPECT_EQ(col.GetDouble(3, 0), BadIndexDouble);
  EXPECT_EQ(col.GetDouble(0, 3), BadIndexDouble);
}

TEST(Columns, IndicesThatWouldOverflowAreBad) {
  const QVDataTableCol triangle("s", {1, 2, 3}, 2, true);
  const QVDataTableCol array("a", {1, 2, 3, 4, 5, 6}, 3, false);
  for (const std::size_t row : {~std::size_t{0}, ~std::size_t{0} / 3 + 1, std::size_t{1} << 63})
    for (std::size_t col = 0; col < 3; ++col) {
      EXPECT_TRUE(triangle.RowColIndexIsBad(row, col)) << row << ' ' << col;
      EXPECT_TRUE(array.RowColIndexIsBad(row, col)) << row << ' ' << col;
    }
}

TEST(Columns, CellsThatDoNotExistReadAsTheSentinelOfEachType) {
  const char* const texts[] = {BadIndexString.c_str(),     BadIndexToLookupTableName.c_str(),
                               BadIndexString.c_str(),     BadIndexIntName.c_str(),
                               BadIndexDoubleName.c_str(), BadIndexString.c_str()};
  for (const unsigned int level : kLevels) {
    QVDataTableCol col = MakeCol(level);
    EXPECT_EQ(col.GetUnsigned(0, 0), 4294967293u);
    EXPECT_EQ(col.GetInt(5, 1), 2147483645);
    EXPECT_EQ(col.GetDouble(0, 1), 1.7976931348623156e+306);
    EXPECT_EQ(col.GetString(7, 0), texts[level]);
    EXPECT_FALSE(col.RowColHasMissingData(0, 0));
    EXPECT_FALSE(col.RowColHasBadData(0, 0));
  }
}

TEST(Columns, SentinelsCarryOverToEveryType) {
  QVDataTableCol interval = MakeCol(3), ratio = MakeCol(4), identifier = MakeCol(5);
  for (const int value : {7, MissingInt, BadInt}) QVAppendIntToCol(interval, value);
  for (const double value : {7.0, MissingDouble, BadDouble}) QVAppendDoubleToCol(ratio, value);
  for (const char* value : {"7", "MissingStringData", "BadStringData"})
    QVAppendStringToCol(identifier, value);
  for (const QVDataTableCol& col : {interval, ratio, identifier}) {
    SCOPED_TRACE(col.PrintSummary());
    EXPECT_EQ(col.GetUnsigned(0, 0), 7u);
    EXPECT_EQ(col.GetUnsigned(1, 0), MissingUnsigned);
    EXPECT_EQ(col.GetUnsigned(2, 0), BadUnsigned);
    EXPECT_EQ(col.GetInt(1, 0), MissingInt);
    EXPECT_EQ(col.GetInt(2, 0), BadInt);
    EXPECT_EQ(col.GetDouble(0, 0), 7.0);
    EXPECT_EQ(col.GetDouble(1, 0), MissingDouble);
    EXPECT_EQ(col.GetDouble(2, 0), BadDouble);
    EXPECT_EQ(col.GetString(0, 0), "7");
    EXPECT_TRUE(col.ColHasMissingData() && col.ColHasBadData());
    EXPECT_EQ(col.GetCellStates(col.GetAllRows()),
              (std::vector{QVCellState::Good, QVCellState::Missing, QVCellState::Bad}));
    EXPECT_EQ(col.GetNumUniqueDiscreteValues(), 3u);
  }
}

TEST(Columns, NominalCodesAreRanksOfTheTexts) {
  QVDataTableCol col = MakeCol(1);
  for (const char* text : {"b", "a", "b", "MissingStringData"}) QVAppendStringToCol(col, text);
  EXPECT_EQ(col.GetNumElementsInCol(), 4u);
  EXPECT_EQ(col.GetUnsigned(0, 0), BadIndexUnsigned) << "no codes before the column is finished";
  QVFinishAppendingVars(col);
  EXPECT_THAT(col.GetUniqueDiscreteValues(), ElementsAre("MissingStringData", "a", "b"));
  EXPECT_EQ(col.GetUnsigned(0, 0), 2u);
  EXPECT_EQ(col.GetDouble(1, 0), 1.0);
  EXPECT_EQ(col.GetInt(3, 0), MissingInt);
  EXPECT_TRUE(col.RowColHasMissingData(3, 0));
  EXPECT_EQ(col.GetString(2, 0), "b");
}

TEST(Columns, FixedCategoriesIncludeTheSentinelsAndRefuseOtherTexts) {
  QVDataTableCol col("c", 1, std::vector<std::string>{"y", "x"}, 3, 1, false);
  EXPECT_THAT(col.GetUniqueDiscreteValues(),
              ElementsAre("BadStringData", "MissingStringData", "x", "y"));
  EXPECT_TRUE(QVAppendStringToCol(col, "x").IsSuccessful());
  EXPECT_TRUE(QVAppendMissingDataToCol(col).IsSuccessful());
  const QVStatModelResult refused = QVAppendStringToCol(col, "z");
  EXPECT_THAT(refused, FailedWith(ArgumentOutOfRange, "QVAppendStringToCol"));
  EXPECT_EQ(FirstComment(refused), "String z not found in list of unique nominal values");
  const QVStatModelResult converted = QVConvertStringAndAppendToCol(col, "z");
  EXPECT_THAT(converted.ReportStatResultDetails(),
              HasSubstr("Called by Routine: QVConvertStringAndAppendToCol"));
  col.GetImpl()->PushBackUnsigned(9);
  EXPECT_THAT(col.GetUnsigned(0, 0), 2u);
  EXPECT_THAT(col.GetUnsigned(1, 0), MissingUnsigned);
  EXPECT_THAT(col.GetUnsigned(2, 0), BadUnsigned);
  EXPECT_EQ(col.GetString(2, 0), "BadIndexInTheLookupTable");
  EXPECT_EQ(
      QVDataTableCol("c", 4, std::vector<std::string>{"y"}, 3, 1, false).GetStatVariableType(), 0u);
}

TEST(Columns, CellsThatASparseColumnWasNotGivenAreMissing) {
  const auto make = [](const std::vector<QVRowColValue>& entries) {
    return QVDataTableCol("s", "sparse", 4, 3, entries, 2, false);
  };
  const QVDataTableCol col = make({{5.0, 2, 1}, {3.0, 0, 1}, {2.0, 0, 1}});
  EXPECT_TRUE(col.ColIsSparse() && col.ColIsReadOnly());
  EXPECT_EQ(col.GetDouble(0, 1), 2.0) << "the smallest value of an element given twice";
  EXPECT_EQ(col.GetDouble(2, 1), 5.0);
  EXPECT_TRUE(col.RowColHasMissingData(1, 0));
  EXPECT_EQ(col.GetDouble(3, 0), BadIndexDouble);
  EXPECT_EQ(col.GetNumUniqueDiscreteValues(), 3u);
  EXPECT_EQ(make({{5.0, 2, 1}, {1.0, 3, 0}}).GetDouble(2, 1), MissingDouble)
      << "one entry outside empties the column";
}

TEST(Columns, CheckedAppendsRefuseOtherKinds) {
  struct Case {
    unsigned int level;
    const char* kind;
    const char* takes;
  };
  const Case cases[] = {
      {1, "unsigned", "Nominal Var accepts only strings!"},
      {4, "unsigned", "Ratio Var accepts only doubles!"},
      {5, "int", "Identifier Var accepts only strings!"},
      {3, "double", "Interval Var accepts only ints!"},
      {3, "float", "Interval Var accepts only doubles!"},
      {1, "float", "Nominal Var accepts only strings!"},
      {3, "string", "Interval Var accepts only ints!"},
      {4, "string", "Ratio Var accepts only doubles!"},
  };
  for (const auto& [level, kind, takes] : cases) {
    QVDataTableCol col = MakeCol(level);
    const std::string which = kind;
    const QVStatModelResult result = which == "unsigned" ? QVAppendUnsignedToCol(col, 1)
                                     : which == "int"    ? QVAppendIntToCol(col, 1)
                                     : which == "double" ? QVAppendDoubleToCol(col, 1)
                                     : which == "float"  ? QVAppendFloatToCol(col, 1)
                                                         : QVAppendStringToCol(col, "1");
    EXPECT_EQ(result.GetFailureType(), ArgumentTypeWrong);
    EXPECT_EQ(FirstComment(result), "Tried adding " + which + ", but " + takes);
    EXPECT_EQ(col.GetNumElementsInCol(), 0u);
  }
  for (const unsigned int level : {0u, 2u}) {
    QVDataTableCol col = MakeCol(level);
    EXPECT_THAT(QVAppendMissingDataToCol(col),
                FailedWith(ColumnHasWrongDataType, "QVAppendMissingDataToCol"));
  }
  for (const unsigned int level : {1u, 3u, 4u, 5u}) {
    QVDataTableCol col = MakeCol(level);
    QVFinishAppendingVars(col);
    EXPECT_THAT(QVConvertStringAndAppendToCol(col, "1"),
                FailedWith(VariableIsReadOnly, "QVConvertStringAndAppendToCol"));
  }
}

TEST(Columns, ConvertingAppendsRoundParseAndReport) {
  QVDataTableCol interval = MakeCol(3), ratio = MakeCol(4), identifier = MakeCol(5);
  EXPECT_TRUE(QVConvertDoubleAndAppendToCol(interval, 2.5).IsSuccessful());
  EXPECT_TRUE(QVConvertFloatAndAppendToCol(interval, 3.5f).IsSuccessful());
  EXPECT_TRUE(QVConvertStringAndAppendToCol(interval, " +12 ").IsSuccessful());
  const QVStatModelResult result = QVConvertStringAndAppendToCol(interval, "12x");
  EXPECT_THAT(result, FailedWith(ArgumentValueWrong, "QVConvertStringAndAppendToCol"));
  EXPECT_EQ(FirstComment(result), "Unable to parse field : 12x as an int!");
  EXPECT_THAT(interval.GetDoubles(interval.GetAllRows()), ElementsAre(2, 4, 12));
  EXPECT_EQ(FirstComment(QVConvertStringAndAppendToCol(ratio, "1,5")),
            "Unable to parse field : 1,5 as a double!");
  EXPECT_THAT(QVConvertIntAndAppendToCol(identifier, 7),
              FailedWith(ColumnHasWrongDataType, "QVConvertIntAndAppendToCol"));
  EXPECT_EQ(identifier.GetString(0, 0), "7") << "stored although reported";
}

TEST(Columns, NumbersThatDoNotFitAreFatalReports) {
  QVSystem::QVScopedRecordingSink sink;
  QVDataTableCol col = MakeCol(3);
  QVAppendUnsignedToCol(col, 2147483648u);
  QVConvertDoubleAndAppendToCol(col, 1e300);
  const auto texts = sink.GetTexts(QVSystem::QVErrorLevel::Fatal);
  ASSERT_EQ(texts.size(), 2u);
  EXPECT_THAT(texts[0], StartsWith("(unsigned int)2147483648 is greater than the maximum "));
  EXPECT_THAT(texts[1], HasSubstr(" is greater than the maximum allowed"));
}

TEST(Columns, SlicesTakeOneValueOfEveryRow) {
  const QVDataTableCol source("fp", {1, 2, 3, 4, 5, 6}, 3, false);
  const QVDataTableCol slice = QVSliceColumn(source, 2);
  EXPECT_EQ(slice.GetColumnName(), "SliceCol_2_From:fp");
  EXPECT_THAT(slice.GetDoubles(slice.GetAllRows()), ElementsAre(3, 6));
  EXPECT_FALSE(slice.ColIsReadOnly());

  QVDataTableCol nominal = MakeCol(1, "n");
  for (const char* text : {"a", "b"}) QVAppendStringToCol(nominal, text);
  QVFinishAppendingVars(nominal);
  // Codes 0 and 1 now index the table that the two sentinel categories were sorted into.
  const QVDataTableCol codes = QVSliceColumn(nominal, 0);
  EXPECT_EQ(codes.GetString(0, 0), "BadStringData");
  EXPECT_EQ(codes.GetString(1, 0), "MissingStringData");
  // Possible values that hold the sentinels already make them categories twice.
  const QVDataTableCol twice = QVSliceColumn(codes, 0);
  EXPECT_THAT(twice.GetUniqueDiscreteValues(),
              ElementsAre("BadStringData", "BadStringData", "MissingStringData",
                          "MissingStringData", "a", "b"));
  QVDataTableCol repeated("r", 1, twice.GetUniqueDiscreteValues(), 9, 1, false);
  for (unsigned int code = 0; code < 7; ++code) repeated.GetImpl()->PushBackUnsigned(code);
  for (std::size_t row = 0; row < 6; ++row) {
    EXPECT_EQ(repeated.GetUnsigned(row, 0), row < 3 ? BadUnsigned : MissingUnsigned) << row;
    EXPECT_EQ(repeated.RowColHasBadData(row, 0), row < 3) << row;
  }
  EXPECT_EQ(repeated.GetUnsigned(6, 0), 6u);
  EXPECT_EQ(QVSliceColumn(QVDataTableCol(), 0).GetColumnName(), "NullColumn");
}

TEST(Columns, SummaryNamesWhatHolds) {
  const std::string line(52, '$');
  EXPECT_EQ(QVDataTableCol("s", {1, 2, 3}, 2, true).PrintSummaryPlusStartOfData(9, 9),
            line +
                "\nColumn Name: s\nFull Column Name: s\n"
                "Column Native Stat Var Type: Stat Variable Type is Ratio\n"
                "Column Native Data Type: Stat Variable Data Type is Double\n"
                "Column is an array with 2 columns\nNum rows in Column: 2\n"
                "Column is a lower Triangular symmetric array\n"
                "Start of Data in Col:\n   1 2 \n   2 3 \n");
  QVDataTableCol col = MakeCol(3);
  for (int i = 0; i < 12; ++i) QVAppendIntToCol(col, 11 - i);
  EXPECT_THAT(col.PrintUniqueDiscreteValues(11),
              StartsWith("Discrete Unique Values: \n   0 1 2 3 4 5 6 7 8 9 \n   10 "));
  EXPECT_EQ(QVDataTableCol().PrintUniqueDiscreteValues(3), "null column: no values\n");
}

/// Bulk reads against the reads of single cells, for every class, shape and kind of row list.
TEST(Columns, BulkReadsAreTheReadsOfSingleCells) {
  QVDataTableCol nominal = MakeCol(1), interval = MakeCol(3, "i", 2), identifier = MakeCol(5);
  for (const char* text : {"b", "MissingStringData", "a", "BadStringData"}) {
    QVAppendStringToCol(nominal, text);
    QVAppendStringToCol(identifier, text);
  }
  QVFinishAppendingVars(nominal);
  for (const int value : {1, MissingInt, BadInt, 4, 5, 6}) QVAppendIntToCol(interval, value);
  const QVDataTableCol ratio("r", {1, MissingDouble, 3, BadDouble}, 1, false);
  const QVDataTableCol columns[] = {
      nominal,
      interval,
      identifier,
      ratio,
      QVDataTableCol(),
      QVSqrt(ratio),
      ratio + interval,
      ratio > nominal,
      QVAverage({ratio, nominal}),
      QVDataTableCol("t", {1, 2, 3, 4, MissingDouble, 6}, 3, true),
      QVDataTableCol("s", "s", 4, 3, std::vector<QVRowColValue>{{4.0, 1, 0}}, 2, false)};
  const std::vector<std::size_t> list = {3, 0, 9, 1, 1, 2};
  const QVRowNumbers rowsToTry[] = {QVRowNumbers(list), QVRowNumbers(std::size_t{0}, 4),
                                    QVRowNumbers(std::size_t{2}, 5)};
  for (const QVDataTableCol& col : columns)
    for (const QVRowNumbers& rows : rowsToTry)
      for (std::size_t c = 0; c < 3; ++c) {
        SCOPED_TRACE(col.GetColumnName() + " " + std::to_string(c));
        const QVDataTableColBase& impl = *col.GetImpl();
        std::vector<unsigned int> unsigneds(rows.size());
        std::vector<int> ints(rows.size());
        std::vector<std::string_view> texts(rows.size());
        std::vector<std::string> buffer;
        impl.GetUnsigneds(rows, c, unsigneds.data());
        impl.GetInts(rows, c, ints.data());
        impl.GetTexts(rows, c, texts.data(), buffer);
        const std::vector<double> doubles = col.GetDoubles(rows, c);
        const std::vector<QVCellState> states = col.GetCellStates(rows, c);
        for (std::size_t i = 0; i < rows.size(); ++i) {
          EXPECT_EQ(unsigneds[i], col.GetUnsigned(rows[i], c));
          EXPECT_EQ(ints[i], col.GetInt(rows[i], c));
          EXPECT_EQ(doubles[i], col.GetDouble(rows[i], c));
          EXPECT_EQ(texts[i], col.GetString(rows[i], c));
          EXPECT_EQ(states[i] == QVCellState::BadIndex, col.RowColIndexIsBad(rows[i], c));
          EXPECT_EQ(states[i] == QVCellState::Missing, col.RowColHasMissingData(rows[i], c));
          EXPECT_EQ(states[i] == QVCellState::Bad, col.RowColHasBadData(rows[i], c));
        }
      }
}

}  // namespace
