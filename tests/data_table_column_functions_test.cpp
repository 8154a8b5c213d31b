#include "stats/api/data_table_column_functions.h"

#include <gmock/gmock.h>

#include <cmath>

#include "stats/api/data_vector_functions.h"
#include "stats/api/data_vector_independence.h"
#include "stats/api/data_vector_pairs.h"
#include "stats/api/stats_data_types.h"
#include "tests/support/matchers.h"

namespace QVStats {
namespace {

using Values = std::vector<double>;
using Pairs = std::vector<std::pair<double, double>>;
using Texts = std::vector<std::string>;
using QVStatsBadData::BadDouble;
using QVStatsBadData::MissingDouble;
namespace Failure = QVStatModelFailureType;

/// Six rows: x with a missing and a bad cell, y with a missing one beside them, a group, and a
/// column without values.
class ColumnFunctions : public testing::Test {
 protected:
  ColumnFunctions() : table_("samples") {
    Add(QVDataTableCol("x", Values{1, 2, MissingDouble, 4, BadDouble, 6}, 1, false));
    Add(QVDataTableCol("y", Values{3, MissingDouble, MissingDouble, 12, 9, 21}, 1, false));
    Add(QVDataTableCol("none", Values(6, MissingDouble), 1, false));
    QVDataTableCol group("group", QVStatVariableType::Nominal, 6, 1, false);
    for (const char* text : {"b", "a", "a", "b", "a", "a"}) QVAppendStringToCol(group, text);
    QVFinishAppendingVars(group);
    Add(group);
    QVDataTableCol count("count", QVStatVariableType::Interval, 6, 1, false);
    for (const int value : {5, 4, 3, 2, 1, 0}) QVAppendIntToCol(count, value);
    QVAppendMissingDataToCol(count);
    QVFinishAppendingVars(count);
    count_ = count;
  }

  void Add(const QVDataTableCol& column) { ASSERT_TRUE(table_.AddColumn(column).IsSuccessful()); }

  QVDataTable table_;
  QVDataTableCol count_;
  QVStatModelResult result_;
  std::size_t numMissing_ = 9;
  std::size_t numBad_ = 9;
};

TEST_F(ColumnFunctions, ExtractValuesAndCountTheRest) {
  const char* const where = "QVGetVecOfDataFromColumnOfRatioType";
  Values values = {7};
  const auto get = [&](const QVDataTable& table, const char* name, std::size_t subCol) {
    return QVGetVecOfDataFromColumnOfRatioType(values, numMissing_, numBad_, table, name, subCol);
  };
  EXPECT_TRUE(get(table_, "x", 0).IsSuccessful());
  EXPECT_EQ(values, (Values{1, 2, 4, 6}));
  EXPECT_EQ(std::make_pair(numMissing_, numBad_), std::make_pair(std::size_t{1}, std::size_t{1}));
  // The rows of the table in its order, repeats included.
  const QVDataTable rows("some", table_, QVDataTableRowSet(std::vector<std::size_t>{5, 2, 0, 0}));
  EXPECT_TRUE(get(rows, "x", 0).IsSuccessful());
  EXPECT_EQ(values, (Values{6, 1, 1}));
  EXPECT_THAT(get(table_, "none", 0), FailedWith(Failure::NoData, where));
  EXPECT_EQ(numMissing_, 6u);
  EXPECT_EQ(get(table_, "absent", 0).GetFailureType(), Failure::ColumnNotFound);
  EXPECT_THAT(get(table_, "group", 0),
              FailedAlong(Failure::ColumnHasWrongDataType, Texts{where},
                          Texts{"Column: group: " +
                                QVStatVariableType::TypeName[QVStatVariableType::Nominal]}));
  EXPECT_THAT(get(table_, "x", 3),
              FailedAlong(Failure::ArgumentOutOfRange, Texts{where},
                          Texts{"row column index combination (0, 3) out of range for Column!"}));

  std::vector<int> ints;
  EXPECT_TRUE(
      QVGetVecOfDataFromColumnOfIntervalType(ints, numMissing_, numBad_, count_, 0).IsSuccessful());
  EXPECT_EQ(ints, (std::vector<int>{5, 4, 3, 2, 1, 0}));
  EXPECT_EQ(numMissing_, 1u);

  QVDataTableCol packed;
  EXPECT_TRUE(QVPackColumnOfRatioType(packed, numMissing_, numBad_, table_, "x", 0).IsSuccessful());
  EXPECT_EQ(packed.GetDoubles(packed.GetAllRows()), (Values{1, 2, 4, 6}));
}

TEST_F(ColumnFunctions, GatherAndSplitPairs) {
  const char* const where = "QVGetVecOfPairedDataFromTwoColumnsOfRatioType";
  Pairs pairs;
  const auto& x = table_.GetColumnFromName("x");
  const auto gather = [&](const QVDataTableCol& one, const QVDataTableCol& two) {
    return QVGetVecOfPairedDataFromTwoColumnsOfRatioType(pairs, numMissing_, numBad_, one, two, 0,
                                                         0);
  };
  EXPECT_TRUE(gather(x, table_.GetColumnFromName("y")).IsSuccessful());
  EXPECT_EQ(pairs, (Pairs{{1, 3}, {4, 12}, {6, 21}}));
  EXPECT_EQ(std::make_pair(numMissing_, numBad_), std::make_pair(std::size_t{2}, std::size_t{1}));
  EXPECT_THAT(
      gather(x, QVDataTableCol("short", Values{8, 9}, 1, false)),
      FailedAlong(Failure::ArgumentOutOfRange, Texts{where},
                  Texts{"row column index combination (2,0) out of range for ColumnOne!\n"
                        "or row column index combination (2,0) out of range for ColumnTwo!"}));
  EXPECT_EQ(pairs.size(), 2u);
  const std::string& nominal = QVStatVariableType::TypeName[QVStatVariableType::Nominal];
  const std::string& ratio = QVStatVariableType::TypeName[QVStatVariableType::Ratio];
  EXPECT_THAT(gather(table_.GetColumnFromName("group"), x),
              FailedAlong(Failure::ColumnHasWrongDataType, Texts{where},
                          Texts{"Col One: group: " + nominal + "\nCol Two: x: " + ratio}));
  EXPECT_THAT(gather(x, table_.GetColumnFromName("none")), FailedWith(Failure::NoData, where));

  Texts categories;
  std::vector<Pairs> split;
  EXPECT_TRUE(QVGetPairedDataSplitByNominalColumn(categories, split, numMissing_, numBad_, table_,
                                                  "x", "y", "group", 0, 0)
                  .IsSuccessful());
  ASSERT_EQ(categories.size(), split.size());
  Pairs ofA, ofB;
  for (std::size_t k = 0; k < split.size(); ++k)
    if (!split[k].empty()) (categories[k] == "a" ? ofA : ofB) = split[k];
  EXPECT_EQ(ofA, (Pairs{{6, 21}}));
  EXPECT_EQ(ofB, (Pairs{{1, 3}, {4, 12}}));

  std::vector<std::pair<std::string, std::size_t>> frequencies;
  EXPECT_TRUE(
      QVGetOutcomeFrequenciesOfNominalColumn(frequencies, numMissing_, numBad_, table_, "group", 0)
          .IsSuccessful());
  EXPECT_THAT(frequencies,
              testing::IsSupersetOf({std::make_pair(std::string("a"), std::size_t{4}),
                                     std::make_pair(std::string("b"), std::size_t{2})}));
}

TEST_F(ColumnFunctions, StatisticsOfColumns) {
  EXPECT_EQ(QVGetSampleStatisticForColumnOfRatioType(result_, numMissing_, numBad_,
                                                     QVSampleStatisticType::Mean, table_, "x", 0),
            3.25);
  EXPECT_EQ(numBad_, 1u);
  EXPECT_EQ(QVGetSampleStatisticForColumnOfRatioType(
                result_, numMissing_, numBad_, QVSampleStatisticType::Mean, table_, "none", 0),
            BadDouble);
  EXPECT_EQ(result_.GetFailureType(), Failure::NoData);
  EXPECT_EQ(QVGetTwoSampleStatisticForTwoColumnsOfRatioType(result_, numMissing_, numBad_,
                                                            QVTwoSampleStatisticType::KendallTau,
                                                            table_, "x", "y", 0, 0),
            1.0);
  EXPECT_EQ(QVGetTwoSamplePairStatisticForTwoColumnsOfRatioType(result_, numMissing_, numBad_,
                                                                QVTwoSamplePairStatisticType::Means,
                                                                table_, "x", "y", 0, 0)
                .second,
            12.0);
  const double expected =
      QVGetTwoSampleIndepStatForVectors(result_, 1, {1, 4, 6}, 1, false, {3, 12, 21}, 1, false);
  EXPECT_EQ(QVGetTwoSampleIndepStatForTwoColumnsOfRatioType(result_, 1, table_, "x", "y"),
            expected);
  EXPECT_TRUE(result_.IsSuccessful());
}

TEST(SimilarityColumn, RowsAndEigenvalues) {
  const QVDataTableCol column("s", Values{1, 0.5, 1, 0.25, 0.75, 1}, 3, true);
  QVDataTable table("t");
  ASSERT_TRUE(table.AddColumn(column).IsSuccessful());
  Values values;
  EXPECT_TRUE(QVGetRowOfColumnOfRatioType(values, column, 1).IsSuccessful());
  EXPECT_EQ(values, (Values{0.5, 1, 0.75}));
  ASSERT_TRUE(QVGetEigenvaluesOfSimilarityColumn(values, table, "s").IsSuccessful());
  // Trace 3, sum of squares 3 + 2 (1/4 + 1/16 + 9/16), determinant 1 + 3/16 - 14/16.
  EXPECT_THAT(values[0] + values[1] + values[2], IsCloseTo(3.0, 1e-14));
  EXPECT_THAT(values[0] * values[0] + values[1] * values[1] + values[2] * values[2],
              IsCloseTo(4.75, 1e-14));
  EXPECT_THAT(values[0] * values[1] * values[2], IsCloseTo(0.3125, 1e-13));
  EXPECT_LT(values[0], values[1]);
  ASSERT_TRUE(table.AddColumn(QVDataTableCol("x", Values{1, 2, 3}, 1, false)).IsSuccessful());
  EXPECT_THAT(
      QVGetEigenvaluesOfSimilarityColumn(values, table, "x"),
      FailedAlong(Failure::ColumnHasWrongDataType, Texts{"QVGetEigenvaluesOfSimilarityColumn"},
                  Texts{"Lower triangular matrix required"}));
  QVStatModelResult result;
  EXPECT_EQ(
      QVGetTwoSampleIndepStatForTwoColumnsOfRatioType(result, 2, table, "s", "x"),
      QVGetTwoSampleIndepStatForVectors(result, 2, {1, 0.5, 0.25, 0.5, 1, 0.75, 0.25, 0.75, 1}, 3,
                                        true, {1, 2, 3}, 1, false));
}

TEST_F(ColumnFunctions, PlotPoints) {
  QVMath::QVDataSeries series;
  double xmin = 0, xmax = 0, ymin = 0, ymax = 0;
  EXPECT_TRUE(QVGetEmpiricalCDFPlotPointsForColumnName(series, xmin, xmax, table_, "x", 0, 0, 7)
                  .IsSuccessful());
  EXPECT_EQ(series.GetNumPoints(), 10u);
  EXPECT_TRUE(QVGetUserDefConstBinWidthHistPlotPointsForColName(series, xmin, xmax, ymin, ymax,
                                                                table_, "x", 0, 5, 1, 6)
                  .IsSuccessful());
  EXPECT_EQ(series.GetNumPoints(), 16u);
  EXPECT_TRUE(QVGetScatterPlotPointsForTwoColumnNames(series, xmin, xmax, ymin, ymax, table_, "x",
                                                      "y", 0, 0, 2, 3, 20, 20)
                  .IsSuccessful());
  EXPECT_EQ((Values{xmin, xmax, ymin, ymax}), (Values{1, 6, 3, 21}));
  EXPECT_EQ(series.GetNumPoints(), 3u);
  EXPECT_TRUE(QVGetNormalProbabilityPlotPointsForColumnName(series, xmin, xmax, ymin, ymax, table_,
                                                            "x", 0, 0, 0, 0, 0)
                  .IsSuccessful());
  EXPECT_EQ(series.GetNumPoints(), 4u);
  const QVStatModelResult failed = QVGetUserDefConstFreqHistPlotPointsForColName(
      series, xmin, xmax, ymin, ymax, table_, "none", 0, 5, 1, 6);
  EXPECT_THAT(failed, FailedAlong(Failure::NoData,
                                  (Texts{"QVGetVecOfDataFromColumnOfRatioType",
                                         "QVGetUserDefConstBinWidthHistPlotPointsForColName"}),
                                  Texts{}));
}

}  // namespace
}  // namespace QVStats
