#include "stats/api/linear_smoother_variogram_columns.h"

#include <gmock/gmock.h>

#include <Eigen/Dense>
#include <cmath>
#include <map>
#include <numeric>
#include <random>

#include "stats/api/data_vector_functions.h"
#include "stats/api/linear_smoother_variogram.h"
#include "tests/support/matchers.h"

namespace QVStats {
namespace {

namespace Failure = QVStatModelFailureType;
namespace Kernel = QVSimilarityKernelType;
namespace Statistic = QVSampleStatisticType;
using QVStatsBadData::BadDouble;
using QVStatsBadData::BadIndex;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Texts = std::vector<std::string>;
using Values = std::vector<double>;
using Counts = std::vector<std::size_t>;
using Types = std::vector<unsigned int>;

const char* const kConstructor = "QVVariogramOnPredColumns::QVVariogramOnPredColumns";
const char* const kFill = "QVVariogramOnPredColumns::FillVariogramBins";
const char* const kPair = "QVVariogramOnPredColumns::GetBinIndexForTwoRowNumbers";

/// Random rows with the scalar columns "a" and "b", the triangle "sim", the response "y", and a
/// column each of what can be wrong.
QVDataTable MakeTable(std::size_t n) {
  std::mt19937 engine(5);
  std::uniform_real_distribution<double> uniform;
  Values a, b, y, triangle;
  for (std::size_t i = 0; i < n; ++i) {
    a.push_back(3 * uniform(engine) - 1);
    b.push_back(uniform(engine));
    y.push_back(std::sin(2 * a[i]) + 2 * b[i] + 0.3 * uniform(engine));
    for (std::size_t j = 0; j <= i; ++j) triangle.push_back(1 - std::abs(b[i] - b[j]));
  }
  QVDataTable table("rows");
  table.AddColumn(QVDataTableCol("y", y, 1, false));
  table.AddColumn(QVDataTableCol("a", a, 1, false));
  table.AddColumn(QVDataTableCol("b", b, 1, false));
  table.AddColumn(QVDataTableCol("sim", triangle, n, true));
  table.AddColumn(QVDataTableCol("constant", Values(n, 4.0), 1, false));
  table.AddColumn(QVDataTableCol("wide", Values(2 * n, 0.5), 2, false));
  triangle[8] = 1.2;  // of rows 3 and 2
  table.AddColumn(QVDataTableCol("beyond", triangle, n, true));
  a[2] = QVStatsBadData::MissingDouble;
  table.AddColumn(QVDataTableCol("gap", a, 1, false));
  return table;
}

QVVariogramOnPredColumns MakeVariogram(const QVDataTable& table, const Texts& predictors,
                                       const Counts& bins, bool byCount = false,
                                       double fraction = 0.0, Values thresholds = {},
                                       unsigned int statistic = Statistic::Mean,
                                       const char* response = "y") {
  if (thresholds.empty()) thresholds.assign(bins.size(), 0.0);
  return {response, predictors, table, bins, byCount, fraction, thresholds, statistic, 0.0};
}

TEST(VariogramOnPredColumns, NumbersTheCellsOfItsGrid) {
  const auto grid = MakeVariogram(MakeTable(10), {"a", "b"}, {4, 5});
  ASSERT_TRUE(grid.GetResultOfConstruction().IsSuccessful());
  EXPECT_THAT(grid.GetBins(), SizeIs(20));
  EXPECT_EQ(grid.GetBinIndexFromSimilarities({1.0, 0.0}), 15u);
  EXPECT_EQ(grid.GetBinIndexFromSimilarities({0.25, 1.0}), 9u);
  EXPECT_EQ(grid.GetBinIndexFromSimilarities({0.25}), BadIndex);
  EXPECT_THAT(grid.GetSimilaritiesFromBinIndex(15), ElementsAre(0.875, 0.1));
  for (std::size_t b = 0; b < 20; ++b)
    EXPECT_EQ(grid.GetBinIndexFromSimilarities(grid.GetSimilaritiesFromBinIndex(b)), b);
  EXPECT_THAT(grid.GetWeightsForFittingPerBin(), Each(0.05));
  EXPECT_THAT(grid.GetKrigingParameters(), ElementsAre(BadDouble, BadDouble, BadDouble));
}

// Every pair by itself, in a table whose rows are a shuffled part of the columns.
TEST(VariogramOnPredColumns, PutsEveryPairIntoItsCell) {
  const QVDataTable whole = MakeTable(60);
  Counts rows;
  for (std::size_t i = 0; i < 40; ++i) rows.push_back(i * 37 % 60);
  const QVDataTable table("some", whole, QVDataTableRowSet(rows));
  const Values a = table.GetDoubles(whole.GetColumnFromName("a"));
  const Values y = table.GetDoubles(whole.GetColumnFromName("y"));
  const auto [least, most] = std::minmax_element(a.begin(), a.end());
  const QVDataTableCol& sim = whole.GetColumnFromName("sim");
  std::map<std::size_t, Values> expected;
  auto variogram = MakeVariogram(table, {"a", "sim", "constant"}, {3, 4, 2}, true);
  ASSERT_TRUE(variogram.GetResultOfConstruction().IsSuccessful())
      << variogram.GetResultOfConstruction().ReportStatResultDetails();
  for (std::size_t i = 0; i < 40; ++i)
    for (std::size_t j = i + 1; j < 40; ++j) {
      const double distance = std::abs(a[i] - a[j]) / (*most - *least);
      const auto first = std::min(2.0, std::floor(3 * (1 - distance)));
      const auto second = std::min(3.0, std::floor(4 * sim.GetDouble(rows[i], rows[j])));
      // Rows of a constant column are identical: the top digit, 1.
      const auto cell = static_cast<std::size_t>((first * 4 + second) * 2 + 1);
      expected[cell].push_back(std::pow(y[i] - y[j], 2));
      QVStatModelResult result;
      EXPECT_EQ(variogram.GetBinIndexForTwoRowNumbers(result, rows[i], rows[j]), cell);
    }
  const double numPairs = 40 * 39 / 2;
  for (std::size_t b = 0; b < 24; ++b) {
    Values& values = expected[b];
    std::sort(values.begin(), values.end());
    EXPECT_THAT(variogram.GetBins()[b].GetSquaredDiffsOfResponses(),
                testing::Pointwise(testing::DoubleEq(), values));
    const auto count = static_cast<double>(values.size());
    EXPECT_EQ(variogram.GetNumPairsPerBin()[b], count);
    EXPECT_THAT(variogram.GetWeightsForFittingPerBin()[b], IsCloseTo(count / numPairs, 1e-12));
    const double mean = std::accumulate(values.begin(), values.end(), 0.0) / count;
    EXPECT_THAT(variogram.GetSampleStatisticPerBin()[b],
                IsCloseTo(values.empty() ? BadDouble : mean, 1e-12));
  }
  // The largest difference of a cell instead, in the same grid.
  ASSERT_TRUE(variogram.CalcSampleStatPerBin(Statistic::Quantile, 1.0).IsSuccessful());
  for (const auto& [b, values] : expected)
    EXPECT_THAT(variogram.GetSampleStatisticPerBin()[b],
                IsCloseTo(values.empty() ? BadDouble : values.back(), 1e-14));
}

TEST(VariogramOnPredColumns, WeighsCells) {
  const QVDataTable table = MakeTable(30);
  auto variogram = MakeVariogram(table, {"b", "sim"}, {2, 2}, true, 0.0, {0.0, 0.0});
  const Values counts = variogram.GetNumPairsPerBin();
  const double total = 30 * 29 / 2;
  EXPECT_EQ(std::accumulate(counts.begin(), counts.end(), 0.0), total);
  // A threshold at the centre of the upper bins keeps them, one above it does not.
  ASSERT_TRUE(variogram.CalcWeightsForFittingVariogram(false, 0, {0.75, 0.0}).IsSuccessful());
  EXPECT_THAT(variogram.GetWeightsForFittingPerBin(), ElementsAre(0, 0, 0.5, 0.5));
  variogram.CalcWeightsForFittingVariogram(false, 0, {0.76, 0.0});
  EXPECT_TRUE(std::isnan(variogram.GetWeightsForFittingPerBin()[3]));
  // A quarter of the pairs in each of four cells on average, rounded: 108.75 -> 109.
  variogram.CalcWeightsForFittingVariogram(true, 1, {0, 0});
  double kept = 0;
  for (const double count : counts) kept += count >= 109 ? count : 0;
  for (std::size_t b = 0; b < 4; ++b)
    EXPECT_THAT(variogram.GetWeightsForFittingPerBin()[b],
                IsCloseTo(counts[b] >= 109 ? counts[b] / kept : 0.0, 1e-14));
}

TEST(VariogramOnPredColumns, SaysWhatIsWrong) {
  const QVDataTable table = MakeTable(6);
  const char* const setup = "QVVariogramOnPredColumns::SetupDataTableFromColumnNamesAndTable";
  const char* const range = "QVVariogramOnPredColumns::SetMaxDistPerDim";
  const char* const kAny = nullptr;
  const struct {
    QVVariogramOnPredColumns variogram;
    unsigned int code;
    Texts lastContexts;
    const char* comment;
  } rows[] = {
      {MakeVariogram(table, {"no"}, {2}), Failure::ColumnNotFound, {setup}, kAny},
      {MakeVariogram(table, {"a", "a"}, {2, 2}), Failure::DuplicateNames, {setup}, kAny},
      {MakeVariogram(table, {"beyond"}, {5}),
       Failure::ArgumentOutOfRange,
       {kPair, kFill},
       "for similarity column beyondsimilarity at (2: 3) = 1.2"},
      {MakeVariogram(table, {"a"}, {5, 2}),
       Failure::MismatchBetweenInputVecSizes,
       {kPair, kFill},
       "num pred cols = 1; num dims in model = 2"},
      {MakeVariogram(table, {"a"}, {0}),
       Failure::InternalLogicFailure,
       {kFill},
       "bin index = 0; num bins = 0"},
      {MakeVariogram(table, {"a", "b"}, {100000, 100000}),
       Failure::ArgumentOutOfRange,
       {kFill},
       "more than 1000000000 bins"},
      {MakeVariogram(table, {"wide"}, {5}),
       Failure::ColumnHasWrongDataType,
       {range, kFill},
       "column wide has 2 values a row and is no triangle"},
      {MakeVariogram(table, {"gap"}, {5}),
       Failure::MissingOrBadPredictorValue,
       {kPair, kFill},
       "column gap, row 2: MissingDoubleData"},
      {MakeVariogram(table, {"a"}, {5}, true, 0, {0}, Statistic::Mean, "gap"),
       Failure::MissingOrBadResponseValue,
       {kFill},
       "at row number(2), response value = MissingDoubleData"},
      {MakeVariogram(table, {"a"}, {5}, true, 0, {0, 0}),
       Failure::WrongInputVectorSize,
       {"QVVariogramOnPredColumns::CalcWeightsForFittingVariogram"},
       "num thresholds = 2; num dims in model = 1"},
      {MakeVariogram(table, {"a"}, {5}, true, 0, {0}, Statistic::NumTypes),
       Failure::ArgumentOutOfRange,
       {"QVVariogramBin::GetSampleStatisticForSqDiffsOfResponses",
        "QVVariogramOnPredColumns::CalcSampleStatPerBin"},
       "statisticType = 16"},
  };
  for (const auto& row : rows) {
    const QVStatModelResult result = row.variogram.GetResultOfConstruction();
    EXPECT_EQ(result.GetFailureType(), row.code) << result.ReportStatResultDetails();
    const auto names = result.GetContext();
    const Texts context(names.begin(), names.end());
    Texts expected = row.lastContexts;
    expected.push_back(kConstructor);
    ASSERT_GE(context.size(), expected.size());
    EXPECT_EQ(Texts(context.end() - static_cast<std::ptrdiff_t>(expected.size()), context.end()),
              expected);
    const auto comments = result.GetComments();
    if (row.comment != kAny) {
      EXPECT_EQ(*comments, row.comment);
    }
    QVVariogramOnPredColumns copy = row.variogram;
    EXPECT_EQ(copy.CalcKernelValuePerBin({Kernel::Linear}, {1.0}).GetFailureType(),
              Failure::ObjectNotValid);
  }
}

// In one dimension, with the mean, this is the variogram on similarity.
TEST(VariogramOnPredColumns, FitsLikeTheVariogramOnSimilarity) {
  const QVDataTable table = MakeTable(80);
  auto columns = MakeVariogram(table, {"sim"}, {12}, true);
  QVBinnedVariogramFromSimilarity single(table, "y", "sim", QVVariogramBinWeights(false, 0, 0), 12);
  ASSERT_TRUE(single.CalcEmpiricalVariogram(0, 0).IsSuccessful());
  const auto iterator = single.GetEmpiricalVariogram();
  std::vector<std::pair<double, double>> points(iterator.begin(), iterator.end());
  for (const unsigned int type : {Kernel::Gaussian, Kernel::Spherical}) {
    QVSimilarityVariogramLSFit fit(type, points, columns.GetWeightsForFittingPerBin());
    const double p = 1.7;
    ASSERT_TRUE(columns.CalcKernelValuePerBin({type}, {p}).IsSuccessful());
    double nugget, sill;
    EXPECT_THAT(columns.LeastSquaresFitGivenKernelVals(nugget, sill), IsCloseTo(fit(&p), 1e-9));
    EXPECT_THAT(nugget, IsCloseTo(fit.GetNugget(), 1e-9));
    EXPECT_THAT(sill, IsCloseTo(fit.GetSill(), 1e-9));
  }
}

// Against a loop over the same grid of parameters, each fitted by a QR factorisation.
TEST(VariogramOnPredColumns, SearchesTheGridOfParameters) {
  const Types types = {Kernel::Gaussian, Kernel::Exponential};
  const QVSimilarityKernel first(types[0]), second(types[1]);
  // A fine grid: some cells hold no pair, and those of one pair no variance.
  auto variogram = MakeVariogram(MakeTable(50), {"a", "sim"}, {9, 8}, false, 0, {0.1, 0.0},
                                 Statistic::TrimmedMean);
  ASSERT_THAT(variogram.GetNumPairsPerBin(), testing::Contains(0.0));
  double objective;
  ASSERT_TRUE(variogram.CalcOptimalTheoryVariogram(objective, types, {0.5, 1}, {4.5, 3}, {9, 5})
                  .IsSuccessful());
  Values best;
  for (int i = 0; i < 9; ++i)
    for (int k = 0; k < 5; ++k) {
      const double p = 0.5 + 0.5 * i, q = 1 + 0.5 * k;
      std::vector<Eigen::Vector3d> equations;
      double sum = 0;
      for (std::size_t b = 0; b < 72; ++b) {
        if (variogram.GetNumPairsPerBin()[b] == 0) continue;
        const Values s = variogram.GetSimilaritiesFromBinIndex(b);
        const double w = variogram.GetWeightsForFittingPerBin()[b];
        sum += w;
        equations.emplace_back(std::sqrt(w) *
                               Eigen::Vector3d(1, 1 - first(s[0], p) * second(s[1], q),
                                               0.5 * variogram.GetSampleStatisticPerBin()[b]));
      }
      Eigen::MatrixXd a(equations.size(), 3);
      for (std::size_t r = 0; r < equations.size(); ++r)
        a.row(static_cast<Eigen::Index>(r)) = equations[r];
      const Eigen::Vector2d x = a.leftCols(2).colPivHouseholderQr().solve(a.col(2));
      const double residual = std::sqrt((a.leftCols(2) * x - a.col(2)).squaredNorm() / sum);
      if (best.empty() || residual < best[0]) best = {residual, p, q, x[0], x[0] + x[1]};
    }
  EXPECT_THAT(objective, IsCloseTo(best[0], 1e-10));
  EXPECT_THAT(variogram.GetKernelParameters(), ElementsAre(best[1], best[2]));
  EXPECT_EQ(variogram.GetKernelParameter(), best[1]);
  EXPECT_THAT(variogram.GetKrigingParameters(),
              ElementsAre(best[1], best[2], IsCloseTo(best[3], 1e-8), IsCloseTo(best[4], 1e-8)));
  EXPECT_THAT(variogram.GetKernelValuesPerBin()[5 * 8 + 3],
              IsCloseTo(first(5.5 / 9, best[1]) * second(3.5 / 8, best[2]), 1e-14));
  EXPECT_TRUE(best[1] > 0.5 && best[1] < 4.5) << "the optimum is inside: " << best[1];
}

TEST(VariogramOnPredColumns, FailedFitsLeaveNothingFitted) {
  EXPECT_THAT(QVVariogramOnPredColumns::GetParamValsFromGridIndex(7, {0, 1}, {4, 9}, {5, 3}),
              ElementsAre(2, 5));
  EXPECT_THAT(QVVariogramOnPredColumns::GetParamValsFromGridIndex(1, {0, 1}, {4, 9}, {2, 1}),
              ElementsAre(4, 1));
  auto variogram = MakeVariogram(MakeTable(20), {"a", "b"}, {3, 3});
  const Types linear = {Kernel::Linear, Kernel::Linear};
  const struct {
    Types types;
    Values least;
    Counts steps;
    unsigned int code;
  } rows[] = {{{Kernel::Linear}, {0, 0}, {3, 3}, Failure::WrongInputVectorSize},
              {linear, {0}, {3, 3}, Failure::WrongInputVectorSize},
              {linear, {0, 0}, {3, 0}, Failure::LowerBoundViolated},
              {linear, {0, 0}, {1u << 20, 1u << 20}, Failure::ArgumentOutOfRange},
              {{Kernel::Linear, Kernel::NumTypes}, {0, 0}, {3, 3}, Failure::ObjectNotValid}};
  double objective;
  for (const auto& row : rows) {
    ASSERT_TRUE(variogram.CalcOptimalTheoryVariogram(objective, linear, {-1, -1}, {-1, 5}, {101, 6})
                    .IsSuccessful());
    EXPECT_NE(variogram.GetSill(), BadDouble);
    // The kernel's own range, 0 to 100, in steps of 1.
    EXPECT_EQ(variogram.GetKernelParameter(), std::round(variogram.GetKernelParameter()));
    const QVStatModelResult result =
        variogram.CalcOptimalTheoryVariogram(objective, row.types, row.least, {5, 5}, row.steps);
    EXPECT_THAT(result,
                FailedWith(row.code, "QVVariogramOnPredColumns::CalcOptimalTheoryVariogram"));
    EXPECT_EQ(objective, BadDouble);
    EXPECT_THAT(variogram.GetKrigingParameters(), Each(BadDouble));
    EXPECT_THAT(variogram.GetKernelValuesPerBin(), IsEmpty());
  }
  variogram.CalcWeightsForFittingVariogram(true, 0, {1, 1});
  EXPECT_EQ(variogram.CalcOptimalTheoryVariogram(objective, linear, {1, 1}, {5, 5}, {3, 3})
                .GetFailureType(),
            Failure::NoData);
}

}  // namespace
}  // namespace QVStats
