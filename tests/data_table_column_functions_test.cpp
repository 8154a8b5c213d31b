#include "stats/api/data_table_column_functions.h"

#include <gmock/gmock.h>

#include <cmath>
#include <functional>

#include "stats/api/data_plot_points.h"
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

  std::vector<Values> groups;
  EXPECT_TRUE(QVGetDataSplitByNominalColumn(categories, groups, numMissing_, numBad_, table_, "x",
                                            "group", 0)
                  .IsSuccessful());
  EXPECT_EQ(categories, (Texts{"a", "b"}));
  EXPECT_EQ(groups, (std::vector<Values>{{2, 6}, {1, 4}}));
  EXPECT_EQ(std::make_pair(numMissing_, numBad_), std::make_pair(std::size_t{1}, std::size_t{1}));

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

TEST_F(ColumnFunctions, TestsOfHypotheses) {
  namespace Two = QVTwoSampleTestType;
  const auto kTwoSided = QVTestAlternative::TwoSided;
  const Values x = {1, 2, 4, 6}, y = {3, 12, 9, 21};
  const auto expectSame = [&](const QVTestOutcome& a, const QVTestOutcome& b) {
    EXPECT_TRUE(result_.IsSuccessful());
    EXPECT_NE(a.pValue, BadDouble);
    EXPECT_EQ(a.statistic, b.statistic);
    EXPECT_EQ(a.pValue, b.pValue);
  };
  const auto expectCounts = [&](std::size_t missing, std::size_t bad) {
    EXPECT_EQ(std::make_pair(numMissing_, numBad_), std::make_pair(missing, bad));
  };
  expectSame(QVGetTwoSampleTestForTwoColumnsOfRatioType(result_, numMissing_, numBad_, Two::WelchT,
                                                        kTwoSided, table_, "x", "y", 0, 0),
             QVGetTwoSampleTestForDataVecs(result_, Two::WelchT, kTwoSided, x, y));
  expectCounts(3, 1);
  expectSame(QVGetTwoSampleTestSplitByNominalColumn(result_, numMissing_, numBad_, Two::WelchT,
                                                    kTwoSided, table_, "x", "group", "b", "a", 0),
             QVGetTwoSampleTestForDataVecs(result_, Two::WelchT, kTwoSided, {1, 4}, {2, 6}));
  expectCounts(1, 1);
  expectSame(QVGetPairedTestForTwoColumnsOfRatioType(result_, numMissing_, numBad_,
                                                     QVPairedTestType::SignedRank, kTwoSided,
                                                     table_, "x", "y", 0, 0),
             QVGetPairedTestForDataPairVec(result_, QVPairedTestType::SignedRank, kTwoSided,
                                           {{1, 3}, {4, 12}, {6, 21}}));
  expectCounts(2, 1);
  const QVUniVarPDF pdf = QVUnivariateGaussian("x", 3.0, 1.0, result_);
  expectSame(QVGetKolmogorovSmirnovTestForColumnOfRatioType(result_, numMissing_, numBad_,
                                                            kTwoSided, pdf, table_, "x", 0),
             QVGetKolmogorovSmirnovTestForDataVec(result_, kTwoSided, x, pdf));
  expectCounts(1, 1);

  QVGetTwoSampleTestSplitByNominalColumn(result_, numMissing_, numBad_, Two::WelchT, kTwoSided,
                                         table_, "x", "group", "b", "c", 0);
  EXPECT_THAT(result_,
              FailedAlong(Failure::NameNotFound, Texts{"QVGetTwoSampleTestSplitByNominalColumn"},
                          Texts{"Column: group: no category: c"}));
  Add(QVDataTableCol("constant", Values(6, 0.1), 1, false));
  const auto outcome = QVGetTwoSampleTestForTwoColumnsOfRatioType(
      result_, numMissing_, numBad_, Two::RankSum, kTwoSided, table_, "constant", "constant", 0, 0);
  EXPECT_EQ(outcome.pValue, BadDouble);
  EXPECT_THAT(result_, FailedAlong(Failure::ArgumentValueWrong,
                                   (Texts{"QVGetTwoSampleTestForDataVecs",
                                          "QVGetTwoSampleTestForTwoColumnsOfRatioType"}),
                                   Texts{"All values are equal"}));
}

// Every routine on a column that is not there, of another level, without values, and without rows.
TEST_F(ColumnFunctions, BadColumns) {
  QVMath::QVRanNumEngine engine(1);
  QVMath::QVDataSeries series, lower, upper;
  double xmin, xmax, ymin, ymax;
  Values values;
  Pairs pairs;
  std::vector<Values> groups;
  std::vector<Pairs> pairGroups;
  Texts categories;
  QVDataTableCol packed;
  const QVUniVarPDF pdf = QVUnivariateGaussian("x", 0.0, 1.0, result_);
  const auto kTwoSided = QVTestAlternative::TwoSided;
  std::size_t &m = numMissing_, &b = numBad_;
  using Table = const QVDataTable&;
  using Name = const std::string&;
  // A statistic that fails is the bad double.
  const auto expectBad = [this](double value) {
    EXPECT_EQ(value, BadDouble);
    return result_;
  };
  const std::function<QVStatModelResult(Table, Name)> routines[] = {
      [&](Table t, Name c) { return QVGetVecOfDataFromColumnOfRatioType(values, m, b, t, c, 0); },
      [&](Table t, Name c) {
        return QVGetVecOfPairedDataFromTwoColumnsOfRatioType(pairs, m, b, t, "x", c, 0, 0);
      },
      [&](Table t, Name c) {
        return QVGetDataSplitByNominalColumn(categories, groups, m, b, t, c, "group", 0);
      },
      [&](Table t, Name c) {
        return QVGetPairedDataSplitByNominalColumn(categories, pairGroups, m, b, t, c, "x", "group",
                                                   0, 0);
      },
      [&](Table t, Name c) { return QVPackColumnOfRatioType(packed, m, b, t, c, 0); },
      [&](Table t, Name c) {
        return expectBad(QVGetSampleStatisticForColumnOfRatioType(result_, m, b, 1, t, c, 0));
      },
      [&](Table t, Name c) {
        return expectBad(
            QVGetTwoSampleStatisticForTwoColumnsOfRatioType(result_, m, b, 1, t, c, "x", 0, 0));
      },
      [&](Table t, Name c) {
        return expectBad(
            QVGetTwoSamplePairStatisticForTwoColumnsOfRatioType(result_, m, b, 1, t, "x", c, 0, 0)
                .first);
      },
      [&](Table t, Name c) {
        return expectBad(QVGetTwoSampleIndepStatForTwoColumnsOfRatioType(result_, 2, t, "x", c));
      },
      [&](Table t, Name c) {
        return expectBad(QVGetPValueForTwoSampleIndepStatForTwoColumnsOfRatioType(result_, engine,
                                                                                  5, 2, t, "x", c));
      },
      [&](Table t, Name c) {
        return expectBad(
            QVGetTwoSampleTestForTwoColumnsOfRatioType(result_, m, b, 1, kTwoSided, t, "x", c, 0, 0)
                .pValue);
      },
      [&](Table t, Name c) {
        return expectBad(QVGetTwoSampleTestSplitByNominalColumn(result_, m, b, 1, kTwoSided, t, c,
                                                                "group", "a", "b", 0)
                             .pValue);
      },
      [&](Table t, Name c) {
        return expectBad(
            QVGetPairedTestForTwoColumnsOfRatioType(result_, m, b, 1, kTwoSided, t, c, "x", 0, 0)
                .pValue);
      },
      [&](Table t, Name c) {
        return expectBad(
            QVGetKolmogorovSmirnovTestForColumnOfRatioType(result_, m, b, kTwoSided, pdf, t, c, 0)
                .pValue);
      },
      [&](Table t, Name c) {
        return QVGetEmpiricalCDFPlotPointsForColumnName(series, xmin, xmax, t, c, 0, 0, 1);
      },
      [&](Table t, Name c) {
        return QVGetAutoDefConstBinWidthHistPlotPointsForColName(series, xmin, xmax, ymin, ymax, t,
                                                                 c, 0, 0, 1);
      },
      [&](Table t, Name c) {
        return QVGetAutoDefConstBinWidthHistPlotPtsConfidenceInt(series, lower, upper, xmin, xmax,
                                                                 ymin, ymax, t, c, 0, 0, 1, 0.9);
      },
      [&](Table t, Name c) {
        return QVGetUserDefConstBinWidthHistPlotPtsConfidenceInt(series, lower, upper, xmin, xmax,
                                                                 ymin, ymax, t, c, 0, 4, 0, 1, 0.9);
      },
      [&](Table t, Name c) {
        return QVGetNormalProbabilityPlotPointsForColumnName(series, xmin, xmax, ymin, ymax, t, c,
                                                             0, 0, 0, 0, 0);
      },
      [&](Table t, Name c) {
        return QVGetScatterPlotPtsForColumnNamePair(series, xmin, xmax, ymin, ymax, t, c, "y", 0, 0,
                                                    0, 0, 0, 0);
      },
  };
  const QVDataTable noRows("no rows", table_, QVDataTableRowSet(std::vector<std::size_t>{}));
  std::size_t position = 0;
  for (const auto& routine : routines) {
    SCOPED_TRACE(position++);
    EXPECT_EQ(routine(table_, "absent").GetFailureType(), Failure::ColumnNotFound);
    EXPECT_EQ(routine(table_, "group").GetFailureType(), Failure::ColumnHasWrongDataType);
    EXPECT_EQ(routine(table_, "none").GetFailureType(), Failure::NoData);
    EXPECT_EQ(routine(noRows, "y").GetFailureType(), Failure::NoData);
  }
  EXPECT_EQ(
      QVGetDataSplitByNominalColumn(categories, groups, m, b, table_, "x", "y", 0).GetFailureType(),
      Failure::ColumnHasWrongDataType);
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
  EXPECT_TRUE(QVGetScatterPlotPtsForColumnNamePair(series, xmin, xmax, ymin, ymax, table_, "x", "y",
                                                   0, 0, 2, 3, 20, 20)
                  .IsSuccessful());
  EXPECT_EQ((Values{xmin, xmax, ymin, ymax}), (Values{1, 6, 3, 21}));
  EXPECT_EQ(series.GetNumPoints(), 3u);
  EXPECT_TRUE(QVGetNormalProbabilityPlotPointsForColumnName(series, xmin, xmax, ymin, ymax, table_,
                                                            "x", 0, 0, 0, 0, 0)
                  .IsSuccessful());
  EXPECT_EQ(series.GetNumPoints(), 4u);
  // The outlines of x, 1 2 4 6 in two bins of width 2.5, and of its band.
  QVMath::QVDataSeries lower, upper;
  EXPECT_TRUE(QVGetUserDefConstBinWidthHistPlotPtsConfidenceInt(
                  series, lower, upper, xmin, xmax, ymin, ymax, table_, "x", 0, 2, 1, 6, 0.9)
                  .IsSuccessful());
  EXPECT_EQ(series.GetNumPoints() + lower.GetNumPoints() + upper.GetNumPoints(), 21u);
  EXPECT_THAT(ymax, IsCloseTo(0.902388537113585576 / 2.5, 1e-14));
  const QVStatModelResult failed = QVGetUserDefConstFreqHistPlotPointsForColName(
      series, xmin, xmax, ymin, ymax, table_, "none", 0, 5, 1, 6);
  EXPECT_THAT(failed, FailedAlong(Failure::NoData,
                                  (Texts{"QVGetVecOfDataFromColumnOfRatioType",
                                         "QVGetUserDefConstBinWidthHistPlotPointsForColName"}),
                                  Texts{}));
}

// The reciprocal of a subnormal width is infinite.
TEST(Histogram, SubnormalBinsAreOneBin) {
  std::vector<double> densities;
  double xlo, xhi, ymin, ymax;
  QVGetUserDefinedConstBinWidthHistogram(xlo, xhi, ymin, ymax, densities, {1e-310, 2e-310, 9e-310},
                                         2, 1e-310, 9e-310);
  ASSERT_EQ(densities.size(), 2u);
  EXPECT_GT(densities[0], 0.0);
  EXPECT_EQ(densities[1], 0.0);
}

// R 4.2.2, binom.test(k, 4, conf.level = 0.9)$conf.int for k = 0, 1, 3, 4.
TEST(HistogramBand, HoldsTheLimitsOfClopperAndPearson) {
  QVMath::QVDataSeries series, lower, upper;
  double xmin, xmax, ymin, ymax;
  const auto getHeights = [](const QVMath::QVDataSeries& outline) {
    Values heights;
    for (std::size_t i = 1; i < outline.GetNumPoints(); i += 3)
      heights.push_back(outline.GetPoint(i).GetY());
    return heights;
  };
  const auto plot = [&](const Values& data, std::size_t numBins, double level) {
    return QVGetUserDefConstBinWidthHistPlotPtsConfidenceInt(series, lower, upper, xmin, xmax, ymin,
                                                             ymax, data, numBins, 10, 0, level);
  };
  const auto expectHeights = [&](const Values& low, const Values& middle, const Values& high) {
    using testing::Pointwise;
    EXPECT_THAT(getHeights(lower), Pointwise(testing::DoubleNear(1e-15), low));
    EXPECT_THAT(getHeights(series), Pointwise(testing::DoubleNear(1e-15), middle));
    EXPECT_THAT(getHeights(upper), Pointwise(testing::DoubleNear(1e-15), high));
  };
  ASSERT_TRUE(plot({9, 0, 1, 2}, 3, 0.9).IsSuccessful());  // bins of width 3
  expectHeights({0.24860462573018144 / 3, 0, 0.012741455098566187 / 3}, {0.25, 0, 0.25 / 3},
                {0.98725854490143383 / 3, 0.52712919549841197 / 3, 0.751395374269818395 / 3});
  EXPECT_EQ(ymax, getHeights(upper)[0]);
  ASSERT_TRUE(QVGetAutoDefConstBinWidthHistPlotPtsConfidenceInt(series, lower, upper, xmin, xmax,
                                                                ymin, ymax, {7, 7, 7, 7}, 7, 7, 0.9)
                  .IsSuccessful());
  expectHeights({0.47287080450158786}, {1}, {1});
  ASSERT_TRUE(plot({}, 3, 0.9).IsSuccessful());
  EXPECT_EQ(series.GetNumPoints() + lower.GetNumPoints() + upper.GetNumPoints(), 0u);
  for (const double level : {0.0, 1.0, std::nan("")})
    EXPECT_THAT(plot({1, 2}, 3, level),
                FailedWith(Failure::ArgumentOutOfRange,
                           "QVGetUserDefConstBinWidthHistPlotPtsConfidenceInt"));
}

}  // namespace
}  // namespace QVStats
