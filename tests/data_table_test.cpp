#include "stats/api/data_table.h"

#include <gmock/gmock.h>

#include <random>

#include "platform/system/error_handler.h"
#include "stats/api/data_table_impl.h"
#include "stats/api/data_table_row_predicates.h"
#include "stats/api/data_transforms_columns.h"
#include "tests/support/matchers.h"

namespace {

using namespace QVStats;
using namespace QVStats::QVStatModelFailureType;
using namespace QVStats::QVStatsBadData;
using testing::ElementsAre;
using testing::IsEmpty;

QVDataTableCol MakeCol(const std::string& name, const std::vector<double>& values) {
  return QVDataTableCol(name, values, 1, false);
}

QVDataTable MakeTable(std::size_t numRows) {
  QVDataTable table("t");
  std::vector<double> values(numRows);
  for (std::size_t i = 0; i < numRows; ++i) values[i] = static_cast<double>(i);
  table.AddColumn(MakeCol("x", values));
  return table;
}

std::string OnlyComment(const QVStatModelResult& result) {
  std::string all;
  for (const std::string& comment : result.GetComments()) all += comment;
  return all;
}

TEST(DataTable, ColumnsMustMatchInNameAndLength) {
  QVDataTable table = MakeTable(10);
  const QVStatModelResult duplicate = table.AddColumn(MakeCol("x", std::vector<double>(10)));
  EXPECT_THAT(duplicate, FailedWith(DuplicateNames, "QVDataTableColSetImpl::AddColumn"));
  EXPECT_EQ(OnlyComment(duplicate),
            "Column name: x\ncolumn with same name already present!\n"
            " Use SetColumnName to change current Column Name\n");
  const QVStatModelResult shorter = table.AddColumn(MakeCol("y", std::vector<double>(9)));
  EXPECT_THAT(shorter, FailedWith(WrongInputVectorSize, "QVDataTableColSetImpl::AddColumn"));
  EXPECT_EQ(OnlyComment(shorter),
            "New column (name: y) has wrong number rows!. Has 9 Data table expects 10\n");
  EXPECT_EQ(table.GetNumColumns(), 1u);
}

TEST(DataTable, LookupsNameWhatIsNotThere) {
  QVDataTable table("t");
  EXPECT_EQ(OnlyComment(table.DeleteColumn("x")),
            "Can't find column x in column set because the set is empty!");
  table.AddColumn(QVDataTableCol("short", "the full name", 4, 3, 1, false));
  EXPECT_EQ(OnlyComment(table.DeleteColumn("x")), "Can't find column x in column set");

  QVStatModelResult result;
  EXPECT_EQ(table.GetColumnFromFullName(result, "short").GetColumnName(), "short");
  EXPECT_TRUE(result.IsSuccessful());
  EXPECT_EQ(table.GetColumnFromFullName(result, "the full name").GetStatVariableType(), 0u);
  EXPECT_THAT(result, FailedWith(ColumnNotFound, "QVDataTableColSetImpl::GetColumnFromName"));
  EXPECT_EQ(OnlyComment(result), "requested columnName = the full name");
  const QVDataTableColSet& columns = table.GetImpl()->GetColumnSet();
  EXPECT_EQ(columns.GetColumnFromFullName(result, "the full name").GetColumnName(), "short");
  EXPECT_TRUE(result.IsSuccessful());
  EXPECT_EQ(table.GetColumnFromName("none").GetColumnName(), "NullColumn");
}

TEST(DataTable, CopiesAndSubTablesShareTheColumns) {
  QVDataTable table = MakeTable(10);
  QVDataTable copy = table;
  const QVDataTable every3rd("s", table, QVDataTableRowSet(std::vector<std::size_t>{9, 3, 0, 3}));
  copy.AddColumn(MakeCol("y", std::vector<double>(10, 2.0)));
  EXPECT_EQ(every3rd.GetNumColumns(), 2u) << "a column added through a copy is seen by all";
  EXPECT_THAT(every3rd.GetDoubles(every3rd.GetColumnFromName("x")), ElementsAre(9, 3, 0, 3));
  copy.ClearColumns();
  EXPECT_EQ(copy.GetNumColumns(), 0u);
  EXPECT_EQ(table.GetNumColumns(), 2u);
}

TEST(DataTable, TheFirstColumnSetsTheRowsOfItsTableOnly) {
  QVDataTable table("t");
  QVDataTable copy = table;
  EXPECT_TRUE(table.AddColumn(MakeCol("x", {1, 2, 3})).IsSuccessful());
  EXPECT_EQ(table.GetNumRows(), 3u);
  EXPECT_EQ(copy.GetNumRows(), 0u);
  EXPECT_EQ(copy.GetNumColumns(), 1u);

  QVDataTable emptied = MakeTable(5);
  emptied.ClearColumns();
  const QVStatModelResult result = emptied.AddColumn(MakeCol("short", {1, 2}));
  EXPECT_THAT(result, FailedWith(WrongInputVectorSize, "QVDataTableImpl::AddColumn"));
  EXPECT_EQ(OnlyComment(result),
            "Existing row set addresses rownumbers beyond the column size\n"
            "Highest row number in row set is: 4 While num rows in input col is: 2");
  EXPECT_EQ(emptied.GetNumColumns(), 1u);
}

TEST(DataTable, RowsBeyondTheColumnsGiveNoRows) {
  const QVDataTable table = MakeTable(10);
  const QVDataTable sub("s", table, QVDataTableRowSet(std::vector<std::size_t>{1, 10}));
  EXPECT_EQ(sub.GetNumRows(), 0u);
}

/// A condition of a program's own, without a bulk form. Counts its calls.
class IsEven : public QVDataTableRowPredBase {
 public:
  explicit IsEven(std::size_t& calls) : calls_(calls) {}
  bool operator()(const QVDataTableRow& row) const override {
    ++calls_;
    return row.GetImpl()->GetRowNumber() % 2 == 0;
  }
  IsEven* CreateCopy() const override { return new IsEven(*this); }

 private:
  std::size_t& calls_;
};

TEST(Predicates, FilterTheRowsOfATable) {
  const QVDataTable table = MakeTable(10);
  const QVDataTableCol& x = table.GetColumnFromName("x");
  std::size_t calls = 0;
  const QVDataTable even("even", table, IsEven(calls));
  const QVDataTable both("both", even, QVRowColWithinInclDoubleRange(3, 8, x, 0));
  EXPECT_EQ(even.GetNumRows(), 5u);
  EXPECT_THAT(both.GetRowNumbers(), ElementsAre(4, 6, 8));
  std::vector<double> seen;
  for (const QVDataTableRow& row : both.GetRows()) seen.push_back(row.GetDouble(x, 0));
  EXPECT_THAT(seen, ElementsAre(4, 6, 8));
}

TEST(Predicates, CompareCells) {
  QVDataTableCol ratio = MakeCol("r", {1.0000005, 1.0000011, 2, 5, MissingDouble});
  QVDataTableCol text("s", 5, 5, 1, false);
  for (const char* value : {"a", "abc", "b", "b0", "MissingStringData"})
    QVAppendStringToCol(text, value);
  const QVRowNumbers rows(std::size_t{0}, 6);
  const auto select = [&](const QVDataTableRowPredBase& pred) {
    std::vector<std::size_t> selected;
    for (std::size_t r = 0; r < rows.size(); ++r)
      if (pred(QVDataTableRow(r))) selected.push_back(r);
    EXPECT_EQ(pred.Select(rows), selected) << "bulk against single";
    return selected;
  };
  EXPECT_THAT(select(QVRowColEqualsDouble(1.0, ratio, 0, 1e-6)), ElementsAre(0));
  EXPECT_THAT(select(QVRowColEqualsDouble(2.0, ratio, 0, 3.0)), ElementsAre(0, 1, 2))
      << "strictly less than the tolerance";
  EXPECT_THAT(select(QVRowColWithinInclIntRange(2, 5, ratio, 0)), ElementsAre(2, 3));
  EXPECT_THAT(select(QVRowColWithinInclUnsignedRange(5, MissingUnsigned, ratio, 0)),
              ElementsAre(3, 4, 5))
      << "sentinels are compared as the numbers they are";
  EXPECT_THAT(select(QVRowColEqualsUnsigned(1, ratio, 0)), ElementsAre(0, 1));
  EXPECT_THAT(select(QVRowColEqualsInt(BadIndexInt, ratio, 1)), ElementsAre(0, 1, 2, 3, 4, 5));
  EXPECT_THAT(select(QVRowColEqualsString("b", text, 0)), ElementsAre(2));
  EXPECT_THAT(select(QVRowColWithinInclStringRange("a", "b", text, 0)), ElementsAre(0, 1, 2));
  EXPECT_THAT(select(QVRowColEqualsDouble()), IsEmpty());
  EXPECT_THAT(
      select(QVRowColWithinInclDoubleRange(2, 9, ratio, 0) && !QVRowColEqualsString("b", text, 0)),
      ElementsAre(3));
  EXPECT_THAT(select(!(QVRowColEqualsString("a", text, 0) || QVRowColEqualsInt(5, ratio, 0))),
              ElementsAre(1, 2, 4, 5));
}

TEST(Predicates, TheSecondOperandIsAskedOnlyWhereItMatters) {
  const QVDataTable table = MakeTable(4000);
  const QVRowColWithinInclDoubleRange low(0, 99, table.GetColumnFromName("x"), 0);
  std::size_t calls = 0;
  const QVRowNumbers rows(std::size_t{0}, 4000);
  EXPECT_EQ((low && IsEven(calls)).Select(rows).size(), 50u);
  EXPECT_EQ(calls, 100u);
  calls = 0;
  EXPECT_EQ((low || IsEven(calls)).Select(rows).size(), 100u + 1950u);
  EXPECT_EQ(calls, 3900u);
  calls = 0;
  EXPECT_TRUE((!(low && IsEven(calls)))(QVDataTableRow(100)));
  EXPECT_EQ(calls, 0u);

  // A negative number read as unsigned is a fatal report: the first operand keeps it out.
  QVSystem::QVScopedRecordingSink sink;
  QVDataTableCol count("n", 3, 4, 1, false);
  for (const int value : {-2, 7, -7, 3}) QVAppendIntToCol(count, value);
  const QVDataTableCol x = MakeCol("x", {-2e300, 7, -7e300, 3});
  EXPECT_THAT((QVRowColWithinInclIntRange(0, 9, count, 0) && QVRowColEqualsUnsigned(7, count, 0) &&
               QVRowColWithinInclIntRange(0, 9, x, 0))
                  .Select(QVRowNumbers(std::size_t{0}, 4)),
              ElementsAre(1));
  EXPECT_THAT(sink.GetTexts(QVSystem::QVErrorLevel::Fatal), IsEmpty());
}

struct TransformCase {
  const char* name;
  QVDataTableCol (*make)(const QVDataTableCol& x, const QVDataTableCol& y);
  std::vector<double> expected;
};
void PrintTo(const TransformCase& row, std::ostream* out) { *out << row.name; }

// x and y row by row: {-4, 2}, {0, 0}, {1, missing}, {missing, 3}, {bad, missing}.
const TransformCase kTransforms[] = {
    {"AddScalar", [](auto& x, auto&) { return 2 + x; }, {-2, 2, 3, MissingDouble, BadDouble}},
    {"FromScalar", [](auto& x, auto&) { return 2 - x; }, {6, 2, 1, MissingDouble, BadDouble}},
    {"OverZero",
     [](auto& x, auto&) { return x / 0.0; },
     {-HUGE_VAL, std::nan(""), HUGE_VAL, MissingDouble, BadDouble}},
    {"IntoScalar",
     [](auto& x, auto&) { return 8 / x; },
     {-2, BadDouble, 8, MissingDouble, BadDouble}},
    {"Abs", [](auto& x, auto&) { return QVAbsoluteValue(x); }, {4, 0, 1, MissingDouble, BadDouble}},
    {"Sqrt", [](auto& x, auto&) { return QVSqrt(x * 4); }, {-16, 0, 2, MissingDouble, BadDouble}},
    {"Log", [](auto& x, auto&) { return QVLog(x); }, {-4, 0, 0, MissingDouble, BadDouble}},
    {"Logistic",
     [](auto& x, auto&) { return QVLogistic(x, 0, 1, 0.01); },
     {-4, std::log(0.01 / 0.99), std::log(0.99 / 0.01), MissingDouble, BadDouble}},
    {"Difference",
     [](auto& x, auto& y) { return x - y; },
     {-6, 0, MissingDouble, MissingDouble, MissingDouble}},
    {"Quotient",
     [](auto& x, auto& y) { return x / y; },
     {-2, std::nan(""), MissingDouble, MissingDouble, MissingDouble}},
    {"GreaterEqual",
     [](auto& x, auto& y) { return x >= y; },
     {0, 1, MissingDouble, MissingDouble, MissingDouble}},
    {"EqualScalar", [](auto& x, auto&) { return x == 0; }, {0, 1, 0, 0, 0}},
    {"GreaterScalarComparesSentinels", [](auto& x, auto&) { return x > 0; }, {0, 0, 1, 1, 1}},
    {"Average",
     [](auto& x, auto& y) {
       return QVAverage({x, y, x + y});
     },
     {-4.0 / 3, 0, MissingDouble, MissingDouble, MissingDouble}},
    {"Variance",
     [](auto& x, auto& y) {
       return QVVariance({x, y});
     },
     {18, 0, MissingDouble, MissingDouble, MissingDouble}},
    {"Range", [](auto& x, auto&) { return QVRange({x}); }, {0, 0, 0, MissingDouble, BadDouble}},
};

class Transforms : public testing::TestWithParam<TransformCase> {};
INSTANTIATE_TEST_SUITE_P(Columns, Transforms, testing::ValuesIn(kTransforms),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_P(Transforms, ComputeWhenRead) {
  const QVDataTableCol x = MakeCol("x", {-4, 0, 1, MissingDouble, BadDouble});
  const QVDataTableCol y = MakeCol("y", {2, 0, MissingDouble, 3, MissingDouble});
  const QVDataTableCol column = GetParam().make(x, y);
  const std::vector<double> bulk = column.GetDoubles(column.GetAllRows());
  for (std::size_t r = 0; r < 5; ++r) {
    EXPECT_THAT(column.GetDouble(r, 0), testing::NanSensitiveDoubleEq(GetParam().expected[r])) << r;
    EXPECT_THAT(bulk[r], testing::NanSensitiveDoubleEq(GetParam().expected[r])) << r;
  }
  EXPECT_EQ(column.GetDouble(5, 0), BadIndexDouble);
  EXPECT_TRUE(column.ColIsReadOnly());
}

TEST(TransformColumns, ComparisonsAreNominalAndKeepSentinelsInEveryType) {
  const QVDataTableCol x = MakeCol("x", {1, MissingDouble, 3}), y = MakeCol("y", {0, 0, BadDouble});
  const QVDataTableCol column = x > y;
  EXPECT_EQ(column.GetStatVariableType(), 1u);
  EXPECT_THAT(column.GetUniqueDiscreteValues(), ElementsAre("False", "True"));
  EXPECT_EQ(column.GetColumnName(), "Arg Two Greater Than Arg One(x, y)");
  EXPECT_EQ(column.GetString(0, 0), "True");
  EXPECT_EQ(column.GetUnsigned(1, 0), 4294967294u);
  EXPECT_EQ(column.GetString(1, 0), "MissingStringData");
  EXPECT_EQ(column.GetInt(2, 0), BadInt);
  EXPECT_EQ(column.GetString(2, 0), "BadStringData");
  // Only the first argument is asked whether a cell is missing or bad.
  EXPECT_FALSE(column.RowColHasBadData(2, 0));
  EXPECT_EQ(column.GetNumUniqueDiscreteValues(), BadIndex);
}

TEST(TransformColumns, FollowWhatIsAppendedLater) {
  QVDataTableCol x("x", 4, 0, 1, false);
  const QVDataTableCol root = QVSqrt(x + 1);
  EXPECT_EQ(root.GetColumnName(), "Square Root Transform(Addition Of a Scalar(x, 1))");
  QVAppendDoubleToCol(x, 8);
  EXPECT_EQ(root.GetTotalNumRowsInCol(), 1u);
  EXPECT_EQ(root.GetDouble(0, 0), 3.0);
}

}  // namespace
