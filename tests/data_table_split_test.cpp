#include "stats/api/data_table_split.h"

#include <gmock/gmock.h>

#include <algorithm>

#include "tests/support/matchers.h"

namespace {

using namespace QVStats;
using namespace QVStats::QVStatModelFailureType;
using namespace QVStats::QVStatsBadData;
using testing::ElementsAre;
using testing::UnorderedElementsAre;

QVDataTable MakeTable(const std::vector<double>& values) {
  QVDataTable table("source");
  table.AddColumn(QVDataTableCol("x", values, 1, false));
  return table;
}

std::vector<double> Xs(const QVDataTable& table) {
  return table.GetDoubles(table.GetColumnFromName("x"));
}

TEST(Splits, DivideTheRowsBetweenTheTables) {
  const QVDataTable source = MakeTable({0, 1, 2, 3, 4, 5, 6, 7, 8, 9});
  QVDataTable selected("train"), rest("test");
  for (const double probability : {0.0, 0.5, 1.0}) {
    QVMath::QVRanNumEngine engine(11), same(11);
    ASSERT_TRUE(QVSplitDataTableByRandomRowSelection(selected, rest, engine, probability, source)
                    .IsSuccessful());
    std::vector<double> expected;
    const QVMath::QVUniformDoubleRNG uniform(0.0, 1.0);
    for (int i = 0; i < 10; ++i)
      if (uniform(same) < probability) expected.push_back(i);
    EXPECT_EQ(Xs(selected), expected) << "one draw a row, in row order";
    EXPECT_EQ(rest.GetNumRows(), 10 - expected.size());
    EXPECT_EQ(engine(), same());
  }
  QVMath::QVRanNumEngine engine(3);
  const QVStatModelResult refused =
      QVSplitDataTableByRandomRowSelection(selected, rest, engine, 1.0000001, source);
  EXPECT_THAT(refused, FailedWith(ArgumentOutOfRange, "SplitDataTableByRandomRowSelection"));
  EXPECT_EQ(*refused.GetComments(), "Bad selectionProbability: 1");
  EXPECT_EQ(selected.GetNumRows(), 10u) << "a failure leaves the outputs alone";

  ASSERT_TRUE(QVSplitDataTableByUnifSamplingWithoutReplacement(selected, rest, engine, 4, source)
                  .IsSuccessful());
  std::vector<double> all = Xs(selected);
  EXPECT_EQ(all.size(), 4u);
  EXPECT_TRUE(std::is_sorted(all.begin(), all.end()));
  for (const double x : Xs(rest)) all.push_back(x);
  EXPECT_THAT(all, UnorderedElementsAre(0, 1, 2, 3, 4, 5, 6, 7, 8, 9));
  EXPECT_EQ(selected.GetTableName(), "train");
  const QVStatModelResult tooMany =
      QVSplitDataTableByUnifSamplingWithoutReplacement(selected, rest, engine, 10, source);
  EXPECT_EQ(*tooMany.GetComments(), "Asking to choose 10 rows out of 10 rows available");

  const QVDataTable drawn = QVGetNewDataTableByUnifSamplingWithReplacement(engine, 1000, selected);
  EXPECT_EQ(drawn.GetNumRows(), 1000u);
  for (const double x : Xs(drawn)) EXPECT_THAT(Xs(selected), testing::Contains(x));
}

TEST(Splits, CoverTheValuesEvenly) {
  // From any start the rule is forced: the farthest end, the other end, then the middle.
  QVDataTable source = MakeTable({0, 1, 2, 49, 50, 98, 99, 100, MissingDouble});
  for (std::uint64_t seed = 0; seed < 20; ++seed) {
    QVMath::QVRanNumEngine engine(seed), same(seed);
    QVDataTable selected("s"), rest("r");
    ASSERT_TRUE(QVSplitDataTableByMaxUnifCoverageOfColVals(selected, rest, engine, 3, "x", source)
                    .IsSuccessful());
    const std::vector<double> xs = Xs(selected);
    const double first = source.GetColumnFromName("x").GetDouble(same.GetIndex(9), 0);
    EXPECT_THAT(xs, testing::Contains(first));
    EXPECT_EQ(rest.GetNumRows(), 6u);
    if (first < 50) {
      EXPECT_THAT(xs, testing::Contains(100.0));
    }
    if (first != MissingDouble) {
      EXPECT_THAT(xs, testing::Not(testing::Contains(MissingDouble)));
    }
    if (first == 0 || first == 100) {
      EXPECT_THAT(xs, ElementsAre(0, 50, 100));
    }
  }
  QVMath::QVRanNumEngine engine(1);
  QVDataTable selected("s"), rest("r");
  const auto split = [&](const std::string& column, std::size_t count) {
    return QVSplitDataTableByMaxUnifCoverageOfColVals(selected, rest, engine, count, column,
                                                      source);
  };
  EXPECT_EQ(split("x", 9).GetFailureType(), ArgumentOutOfRange);
  EXPECT_EQ(split("none", 2).GetFailureType(), ColumnNotFound);

  // Two groups of equal texts: the second choice is in the other group.
  QVDataTable texts("texts");
  QVDataTableCol kind("x", 1, 4, 1, false);
  for (const char* text : {"a", "b", "b", "b"}) QVAppendStringToCol(kind, text);
  QVFinishAppendingVars(kind);
  texts.AddColumn(kind);
  source = texts;
  EXPECT_TRUE(split("x", 2).IsSuccessful());
  EXPECT_THAT(Xs(selected), ElementsAre(0, 1));
}

TEST(Splits, CoverASimilarityMatrix) {
  QVDataTable source("s");
  source.AddColumn(QVDataTableCol("m", {1, 0.9, 1, 0.1, 0.2, 1}, 3, true));
  for (std::uint64_t seed = 0; seed < 9; ++seed) {
    QVMath::QVRanNumEngine engine(seed);
    QVDataTable selected("s"), rest("r");
    ASSERT_TRUE(QVSplitDataTableByMaxUnifCoverageOfColVals(selected, rest, engine, 2, "m", source)
                    .IsSuccessful());
    EXPECT_THAT(selected.GetRowNumbers(), testing::Contains(2u)) << "rows 0 and 1 are alike";
  }
}

}  // namespace
