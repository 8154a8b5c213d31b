#include "stats/api/linear_smoother_variogram.h"

#include <gmock/gmock.h>

#include <Eigen/Dense>
#include <algorithm>
#include <cmath>
#include <numeric>
#include <random>

#include "stats/api/data_table_column_functions.h"
#include "stats/api/linear_smoother.h"
#include "tests/support/matchers.h"

namespace QVStats {
namespace {

namespace Failure = QVStatModelFailureType;
namespace Kernel = QVSimilarityKernelType;
using QVStatsBadData::BadDouble;
using testing::DoubleEq;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;
using Texts = std::vector<std::string>;
using Values = std::vector<double>;
using Points = std::vector<std::pair<double, double>>;
using Counts = std::vector<std::size_t>;

const QVVariogramBinWeights kByCount(false, 0.0, 0.0);
const char* const kConstructor = "QVBinnedVariogramFromSimilarity::QVBinnedVariogramFromSimilarity";
const char* const kEmpirical =
    "QVBinnedVariogramFromSimilarity::CalcExactTrimmedMeanOfBinnedSqDiffs";
const char* const kTheory = "QVBinnedVariogramFromSimilarity::CalcTheoryVariogram";

template <class T>
std::vector<T> ToVector(QVSystem::QVIter<const T> iterator) {
  return {iterator.begin(), iterator.end()};
}

/// The matrix whose part above the diagonal is given, row after row; below is nonsense.
Values MatrixOf(std::size_t n, const Values& upper) {
  Values matrix(n * n, -7.0);
  std::size_t k = 0;
  for (std::size_t i = 0; i < n; ++i)
    for (std::size_t j = i + 1; j < n; ++j) matrix[i * n + j] = upper[k++];
  return matrix;
}

// ----- weights of bins

TEST(VariogramBinWeights, WeighsBins) {
  const struct {
    bool equal;
    double countThreshold;
    double similarityThreshold;
    Counts counts;
    Values expected;
  } rows[] = {
      {true, 0, 0.5, Counts(10, 3), {0, 0, 0, 0, 0, 0.2, 0.2, 0.2, 0.2, 0.2}},
      {false, 0, 0, {1, 0, 2, 5}, {0.125, 0, 0.25, 0.625}},
      // The threshold is floor(0.9 * 8 / 4) = 1 pair: an empty bin alone is below.
      {true, 0.9, 0, {1, 0, 2, 5}, {1 / 3., 0, 1 / 3., 1 / 3.}},
      {true, 1, 0, {1, 0, 2, 5}, {0, 0, 0.5, 0.5}},
      {true, 0, 0, {1, 0, 2, 5}, {0.25, 0.25, 0.25, 0.25}},
      {false, 1, 0.6, {1, 0, 2, 5}, {0, 0, 0, 1}},
  };
  for (const auto& row : rows) {
    Values weights = {7};
    const QVVariogramBinWeights rule(row.equal, row.countThreshold, row.similarityThreshold);
    ASSERT_TRUE(rule.GetBinWeights(weights, row.counts).IsSuccessful());
    EXPECT_THAT(weights, testing::Pointwise(testing::DoubleNear(1e-15), row.expected));
  }
  Values weights;
  const QVVariogramBinWeights none(true, 1, 1);
  EXPECT_TRUE(none.GetBinWeights(weights, {0, 1}).IsSuccessful());
  EXPECT_TRUE(std::isnan(weights[0]));
}

TEST(VariogramBinWeights, SaysWhatIsWrong) {
  const char* const where = "QVVariogramBinWeights::QVVariogramBinWeights";
  const char* const tail = "; must be between 0 and 1; must be between 0 and 1";
  const QVVariogramBinWeights both(true, -0.5, 2);
  EXPECT_THAT(
      both.GetResultOfConstruction(),
      FailedAlong(Failure::ArgumentOutOfRange, Texts{where},
                  Texts{std::string("fracAveBinCountThresholdForBinWeights = -0.5") + tail}));
  EXPECT_THAT(QVVariogramBinWeights(true, 1, 1.5).GetResultOfConstruction(),
              FailedAlong(Failure::ArgumentOutOfRange, Texts{where},
                          Texts{std::string("similarityThresholdForBinWeights = 1.5") + tail}));
  Values weights = {1};
  const char* const getter = "QVVariogramBinWeights::GetBinWeights";
  EXPECT_THAT(both.GetBinWeights(weights, {1}), FailedWith(Failure::ObjectNotValid, getter));
  EXPECT_THAT(
      kByCount.GetBinWeights(weights, {}),
      FailedAlong(Failure::InternalLogicFailure, Texts{getter}, Texts{"numPairsInBin is empty!"}));
  EXPECT_THAT(weights, IsEmpty());
  const QVBinnedVariogramFromSimilarity variogram({1, 2}, Values(4), both, 5);
  EXPECT_FALSE(variogram.IsValid());
  EXPECT_THAT(ToVector(variogram.GetResultOfConstruction().GetContext()),
              ElementsAre(where, kConstructor));
}

// ----- empirical variogram

// Responses 0, 1, 3, 7: the semivariances of the pairs in order are 0.5, 4.5, 24.5, 2, 18, 8.
TEST(VariogramFromSimilarity, AveragesThePairsOfABin) {
  const Values similarities = MatrixOf(4, {1.0, 0.80, 0.1, 0.75, 0.24, 0.99});
  QVBinnedVariogramFromSimilarity variogram({0, 1, 3, 7}, similarities, kByCount, 4);
  ASSERT_TRUE(variogram.IsValid());
  for (const double fraction : {0.0, 0.001}) {
    ASSERT_TRUE(variogram.CalcEmpiricalVariogram(fraction, 0).IsSuccessful());
    EXPECT_THAT(
        ToVector(variogram.GetEmpiricalVariogram()),
        ElementsAre(Pair(0.125, 21.25), Pair(0.375, 0.0), Pair(0.625, 0.0), Pair(0.875, 3.75)));
    EXPECT_THAT(ToVector(variogram.GetNumPairsPerBin()), ElementsAre(2, 0, 0, 4));
  }
  // Half of the four pairs of the last bin goes, one at either end: 2 and 4.5 are left.
  ASSERT_TRUE(variogram.CalcEmpiricalVariogram(0.5, 0).IsSuccessful());
  const Points trimmed = ToVector(variogram.GetEmpiricalVariogram());
  EXPECT_THAT(trimmed, ElementsAre(Pair(0.125, 21.25), Pair(0.375, 0.0), Pair(0.625, 0.0),
                                   Pair(0.875, 3.25)));
  EXPECT_THAT(ToVector(variogram.GetNumPairsPerBin()), ElementsAre(2, 0, 0, 4));
  // Other methods compute nothing.
  EXPECT_TRUE(variogram.CalcEmpiricalVariogram(0.1, 1).IsSuccessful());
  EXPECT_EQ(ToVector(variogram.GetEmpiricalVariogram()), trimmed);
}

// 2016 pairs: a fraction of 0.0011 drops one at either end, a fraction of 0.001 none.
TEST(VariogramFromSimilarity, TrimsFromAFractionOn) {
  const std::size_t n = 64;
  Values responses(n), semivariances;
  for (std::size_t i = 0; i < n; ++i) responses[i] = std::pow(static_cast<double>(i), 1.5);
  for (std::size_t i = 0; i < n; ++i)
    for (std::size_t j = i + 1; j < n; ++j)
      semivariances.push_back(std::pow(responses[i] - responses[j], 2) / 2);
  std::sort(semivariances.begin(), semivariances.end());
  const auto mean = [&](std::ptrdiff_t k) {
    return std::accumulate(semivariances.begin() + k, semivariances.end() - k, 0.0) /
           static_cast<double>(semivariances.size() - 2 * static_cast<std::size_t>(k));
  };
  QVBinnedVariogramFromSimilarity variogram(responses, Values(n * n, 0.9), kByCount, 2);
  variogram.CalcEmpiricalVariogram(0.001, 0);
  EXPECT_THAT(ToVector(variogram.GetEmpiricalVariogram())[1].second, IsCloseTo(mean(0), 1e-12));
  variogram.CalcEmpiricalVariogram(0.0011, 0);
  EXPECT_THAT(ToVector(variogram.GetEmpiricalVariogram())[1].second, IsCloseTo(mean(1), 1e-12));
  EXPECT_GT(mean(0) / mean(1), 1.001);
}

TEST(VariogramFromSimilarity, SaysWhatIsWrong) {
  using Variogram = QVBinnedVariogramFromSimilarity;
  EXPECT_THAT(Variogram({1, 2, 3}, Values(16), kByCount, 5).GetResultOfConstruction(),
              FailedAlong(Failure::MismatchBetweenInputVecSizes, Texts{kConstructor},
                          Texts{"similarityMatrix size = 16; whereas responseVals size = 3"}));
  Variogram invalid({1, 2, 3}, Values(9), kByCount, 1);
  EXPECT_THAT(invalid.GetResultOfConstruction(),
              FailedAlong(Failure::LowerBoundViolated, Texts{kConstructor},
                          Texts{" numBins (1); too small"}));
  EXPECT_THAT(invalid.CalcEmpiricalVariogram(0, 0),
              FailedWith(Failure::ObjectNotValid, kEmpirical));
  double objective = 0, param = 0;
  EXPECT_THAT(invalid.CalcOptimalTheoryVariogram(objective, param, 1, 5, -1, -1, -1),
              FailedWith(Failure::ObjectNotValid, kTheory));

  Variogram variogram({1, 2, 3}, MatrixOf(3, {0.5, 0.9, 1.3}), kByCount, 5);
  EXPECT_THAT(variogram.CalcEmpiricalVariogram(1.5, 0),
              FailedAlong(Failure::ArgumentOutOfRange, Texts{kEmpirical},
                          Texts{"fractionToTrimForTrimmedMeanSqDiff (1.5); should be between 0 "
                                "and 1 )"}));
  EXPECT_THAT(variogram.CalcOptimalTheoryVariogram(objective, param, 1, 5, -1, -1, -1),
              FailedAlong(Failure::NoData, Texts{kTheory},
                          Texts{"Need to first calculate empirical variogram!"}));
  for (const double fraction : {0.0, 0.2}) {
    const QVStatModelResult result = variogram.CalcEmpiricalVariogram(fraction, 0);
    EXPECT_EQ(result.GetFailureType(), Failure::ArgumentOutOfRange);
    EXPECT_EQ(*result.GetComments(), "similarity (1, 2) = 1.3; must be between 0 and 1");
    EXPECT_THAT(ToVector(variogram.GetEmpiricalVariogram()), IsEmpty());
  }
  Variogram negative({1, 2, 3}, MatrixOf(3, {0.5, -0.1, 0.3}), kByCount, 5);
  EXPECT_FALSE(negative.CalcEmpiricalVariogram(0, 0).IsSuccessful());
}

// ----- columns of tables

/// Points of the unit square, a smooth response with noise, similarities 1 - h / sqrt(2).
QVDataTable MakeTable(std::size_t n) {
  std::mt19937 engine(11);
  std::uniform_real_distribution<double> uniform;
  Values x, y, responses, triangle;
  for (std::size_t i = 0; i < n; ++i) {
    x.push_back(uniform(engine));
    y.push_back(uniform(engine));
    responses.push_back(std::sin(5 * x[i]) + std::cos(4 * y[i]) + 0.4 * uniform(engine));
    for (std::size_t j = 0; j <= i; ++j)
      triangle.push_back(1 - std::hypot(x[i] - x[j], y[i] - y[j]) / std::sqrt(2.0));
  }
  QVDataTable table("points");
  table.AddColumn(QVDataTableCol("sim", triangle, n, true));
  table.AddColumn(QVDataTableCol("y", responses, 1, false));
  table.AddColumn(QVDataTableCol("pair", Values(2 * n, 0.5), 2, false));
  return table;
}

TEST(VariogramFromSimilarity, ReadsTheRowsOfATable) {
  const QVDataTable table = MakeTable(70);
  const Counts rows = {3, 8, 65, 40, 12, 7};
  const QVDataTable some("some", table, QVDataTableRowSet(rows));
  Values responses, similarities;
  for (const std::size_t i : rows) {
    responses.push_back(table.GetColumnFromName("y").GetDouble(i, 0));
    for (const std::size_t j : rows)
      similarities.push_back(table.GetColumnFromName("sim").GetDouble(i, j));
  }
  Values fetched;
  std::size_t numColumns = 0;
  ASSERT_TRUE(QVGetDataVectorFromColumnByName(fetched, numColumns, some, "sim").IsSuccessful());
  EXPECT_EQ(fetched, similarities);
  EXPECT_EQ(numColumns, 6u);
  ASSERT_TRUE(QVGetDataVectorFromColumnByName(fetched, numColumns, some, "pair").IsSuccessful());
  EXPECT_THAT(fetched, SizeIs(12));
  EXPECT_EQ(numColumns, 2u);

  QVBinnedVariogramFromSimilarity fromTable(some, "y", "sim", kByCount, 3);
  QVBinnedVariogramFromSimilarity fromVectors(responses, similarities, kByCount, 3);
  ASSERT_TRUE(fromTable.CalcEmpiricalVariogram(0, 0).IsSuccessful());
  ASSERT_TRUE(fromVectors.CalcEmpiricalVariogram(0, 0).IsSuccessful());
  EXPECT_EQ(ToVector(fromTable.GetEmpiricalVariogram()),
            ToVector(fromVectors.GetEmpiricalVariogram()));
}

TEST(VariogramFromSimilarity, SaysWhatIsWrongWithATable) {
  QVDataTable table = MakeTable(4);
  const auto construct = [&](const char* response, const char* similarity) {
    return QVBinnedVariogramFromSimilarity(table, response, similarity, kByCount, 5)
        .GetResultOfConstruction();
  };
  const QVStatModelResult absent = construct("no", "sim");
  EXPECT_EQ(absent.GetFailureType(), Failure::ColumnNotFound);
  const Texts context = ToVector(absent.GetContext());
  EXPECT_EQ(context[context.size() - 2], "QVGetDataVectorFromColumnByName");
  EXPECT_EQ(context.back(), kConstructor);
  EXPECT_THAT(construct("y", "pair"),
              FailedAlong(Failure::MismatchBetweenInputVecSizes, Texts{kConstructor},
                          Texts{"similarityMatrix size = 8; responseVals size = 4\n; num cols in "
                                "simMatrix = 2; num cols in response vec = 1"}));
  EXPECT_THAT(construct("pair", "sim"),
              FailedWith(Failure::MismatchBetweenInputVecSizes, kConstructor));
  table.AddColumn(QVDataTableCol("gap", Values{1, 2, QVStatsBadData::MissingDouble, 4}, 1, false));
  EXPECT_THAT(construct("gap", "sim"),
              FailedAlong(Failure::MissingOrBadPredictorValue,
                          Texts{"QVGetDataVectorFromColumnByName", kConstructor},
                          Texts{"Column: gap: cell (2, 0)"}));
  QVDataTableCol names("names", QVStatVariableType::Identifier, 4, 1, false);
  for (const char* name : {"a", "b", "c", "d"}) QVAppendStringToCol(names, name);
  table.AddColumn(names);
  EXPECT_EQ(construct("names", "sim").GetFailureType(), Failure::ColumnHasWrongDataType);
}

// ----- least-squares objective

/// The weighted fit by a QR factorisation: [nugget, sill, objective].
Eigen::Vector3d FitByQR(const Points& points, const Values& weights, double p,
                        const QVSimilarityKernel& kernel) {
  const auto n = static_cast<Eigen::Index>(points.size());
  Eigen::MatrixXd a(n, 2);
  Eigen::VectorXd b(n);
  double sum = 0;
  for (Eigen::Index k = 0; k < n; ++k) {
    const auto& [s, gamma] = points[static_cast<std::size_t>(k)];
    const double w = weights[static_cast<std::size_t>(k)];
    a.row(k) << std::sqrt(w), std::sqrt(w) * (1 - kernel(s, p));
    b[k] = std::sqrt(w) * gamma;
    sum += w;
  }
  const Eigen::Vector2d x = a.colPivHouseholderQr().solve(b);
  return {x[0], x[0] + x[1], std::sqrt((a * x - b).squaredNorm() / sum)};
}

class EverySimilarityKernel : public testing::TestWithParam<unsigned int> {};
INSTANTIATE_TEST_SUITE_P(Kernels, EverySimilarityKernel, testing::Range(1u, Kernel::NumTypes));

TEST_P(EverySimilarityKernel, ObjectiveIsTheWeightedFit) {
  const QVSimilarityKernel kernel(GetParam());
  Points points;
  Values weights;
  for (int k = 0; k < 12; ++k) {
    points.emplace_back((k + 0.5) / 12, 2 - 0.1 * k + 0.2 * std::sin(7.0 * k));
    weights.push_back(1 + k % 3);
  }
  QVSimilarityVariogramLSFit fit(GetParam(), points, weights);
  ASSERT_TRUE(fit.IsValid());
  EXPECT_EQ(fit.GetNugget(), BadDouble);
  EXPECT_EQ(fit.NumVar(), 1u);
  EXPECT_FALSE(fit.GetFComponents(nullptr));
  const double p = 0.7 * kernel.GetDefaultInitialParamVal() + 0.2;
  const Eigen::Vector3d expected = FitByQR(points, weights, p, kernel);
  EXPECT_THAT(fit(&p), IsCloseTo(expected[2], 1e-12));
  EXPECT_THAT(fit.GetNugget(), IsCloseTo(expected[0], 1e-10));
  EXPECT_THAT(fit.GetSill(), IsCloseTo(expected[1], 1e-10));
}

TEST(SimilarityVariogramLSFit, HasNothingToFit) {
  Points points = {{0.25, 1.0}, {0.75, 4.0}};
  const double p = 1.0;
  // Every u is 0 where the box car covers all bins: the weighted mean and standard deviation.
  QVSimilarityVariogramLSFit flat(Kernel::BoxCar, points, {0.25, 0.5});
  EXPECT_THAT(flat(&p), DoubleEq(std::sqrt(2.0)));
  EXPECT_EQ(flat.GetNugget(), 3.0);
  EXPECT_EQ(flat.GetSill(), 3.0);
  Points none;
  for (QVSimilarityVariogramLSFit fit :
       {QVSimilarityVariogramLSFit(Kernel::Null, points, {1, 1}),
        QVSimilarityVariogramLSFit(Kernel::Linear, points, {1}),
        QVSimilarityVariogramLSFit(Kernel::Linear, none, {}),
        QVSimilarityVariogramLSFit(Kernel::Linear, points, {1e-15, 1e-15})}) {
    EXPECT_EQ(fit(&p), BadDouble);
    EXPECT_EQ(fit.GetNugget(), BadDouble);
    EXPECT_EQ(fit.GetSill(), BadDouble);
  }
}

// ----- theoretical variogram

/// A variogram with one pair in each of ten bins, on a given curve: responses 0 and sqrt(2 gamma).
QVBinnedVariogramFromSimilarity MakeCurve(double nugget, double sill, double p, unsigned int type) {
  // Object 0 against the others; pairs of others lie in an eleventh bin of weight 0.
  const std::size_t n = 11, bins = 11;
  const QVSimilarityKernel kernel(type);
  Values responses = {0}, similarities(n * n, 0.01);
  for (std::size_t k = 1; k < n; ++k) {
    const double s = (static_cast<double>(k) + 0.5) / static_cast<double>(bins);
    similarities[k] = s;
    responses.push_back(std::sqrt(2 * (nugget + (sill - nugget) * (1 - kernel(s, p)))));
  }
  return {responses, similarities, QVVariogramBinWeights(true, 0, 0.05), bins};
}

TEST(VariogramFromSimilarity, FindsTheCurveThatThePairsLieOn) {
  const struct {
    unsigned int type;
    double p;  // below and above where the search starts
  } rows[] = {{Kernel::Gaussian, 2.5},
              {Kernel::Exponential, 4.0},
              {Kernel::Power, 3.0},
              {Kernel::Gaussian, 14.0},
              {Kernel::ExponentialOfSqRoot, 9.0}};
  for (const auto& row : rows) {
    QVBinnedVariogramFromSimilarity variogram = MakeCurve(0.2, 1.5, row.p, row.type);
    ASSERT_TRUE(variogram.CalcEmpiricalVariogram(0, 0).IsSuccessful());
    double objective, param;
    const QVStatModelResult result =
        variogram.CalcOptimalTheoryVariogram(objective, param, row.type, 50, -1, -1, -1);
    ASSERT_TRUE(result.IsSuccessful()) << result.ReportStatResultDetails();
    EXPECT_THAT(param, IsCloseTo(row.p, 5e-3)) << row.type;
    EXPECT_LT(objective, 1e-2);
    EXPECT_THAT(variogram.GetNugget(), IsCloseTo(0.2, 0.02)) << row.type;
    EXPECT_THAT(variogram.GetSill(), IsCloseTo(1.5, 0.02)) << row.type;
    EXPECT_THAT(variogram.GetKrigingParameters(),
                ElementsAre(param, variogram.GetNugget(), variogram.GetSill()));
    EXPECT_EQ(variogram.GetKernelParameter(), param);
    const Points theory = ToVector(variogram.GetTheoryVariogram());
    ASSERT_THAT(theory, SizeIs(50));
    EXPECT_EQ(theory[10].first, 0.21);
    const double k = QVSimilarityKernel(row.type)(0.21, param);
    EXPECT_THAT(
        theory[10].second,
        DoubleEq((variogram.GetSill() - variogram.GetNugget()) * (1 - k) + variogram.GetNugget()));
  }
}

// Against the best of a grid of parameters, each fitted by QR.
TEST(VariogramFromSimilarity, FitsLikeAGridSearchAndFeedsKriging) {
  const QVDataTable table = MakeTable(150);
  QVBinnedVariogramFromSimilarity variogram(table, "y", "sim", kByCount, 20);
  ASSERT_TRUE(variogram.CalcEmpiricalVariogram(0, 0).IsSuccessful());
  const Counts counts = ToVector(variogram.GetNumPairsPerBin());
  EXPECT_EQ(std::accumulate(counts.begin(), counts.end(), std::size_t{0}), 150u * 149 / 2);
  double objective, param;
  ASSERT_TRUE(
      variogram.CalcOptimalTheoryVariogram(objective, param, Kernel::Gaussian, 10, -1, -1, -1)
          .IsSuccessful());
  Eigen::Vector3d best(0, 0, BadDouble);
  double bestParam = 0;
  for (double p = 0.05; p < 20; p += 0.001) {
    const Eigen::Vector3d fit =
        FitByQR(ToVector(variogram.GetEmpiricalVariogram()), Values(counts.begin(), counts.end()),
                p, QVSimilarityKernel(Kernel::Gaussian));
    if (fit[2] < best[2]) {
      best = fit;
      bestParam = p;
    }
  }
  EXPECT_THAT(param, IsCloseTo(bestParam, 0.01));
  EXPECT_THAT(objective, IsCloseTo(best[2], 1e-4));
  EXPECT_THAT(variogram.GetNugget(), IsCloseTo(best[0], 0.02));
  EXPECT_THAT(variogram.GetSill(), IsCloseTo(best[1], 0.02));

  QVLinearSmootherOnSimilarity model(QVLinearSmootherOnSimilarityType::Krige, Kernel::Gaussian, "y",
                                     "sim", table);
  EXPECT_TRUE(model.SetModelParams(variogram.GetKrigingParameters()).IsSuccessful());
}

TEST(VariogramFromSimilarity, FailedFitsLeaveNoParameters) {
  QVBinnedVariogramFromSimilarity variogram = MakeCurve(0.2, 1.5, 4, Kernel::Exponential);
  ASSERT_TRUE(variogram.CalcEmpiricalVariogram(0, 0).IsSuccessful());
  double objective, param;
  const auto fit = [&](unsigned int type, double initial, double least, double most) {
    return variogram.CalcOptimalTheoryVariogram(objective, param, type, 5, initial, least, most);
  };
  ASSERT_TRUE(fit(Kernel::Exponential, 5, 1, 9).IsSuccessful());
  const auto expectNothing = [&] {
    EXPECT_EQ(objective, BadDouble);
    EXPECT_EQ(param, BadDouble);
    EXPECT_THAT(variogram.GetKrigingParameters(), ElementsAre(BadDouble, BadDouble, BadDouble));
    EXPECT_THAT(ToVector(variogram.GetTheoryVariogram()), IsEmpty());
  };
  EXPECT_THAT(
      fit(Kernel::Null, -1, -1, -1),
      FailedAlong(Failure::ObjectNotValid, Texts{kTheory},
                  Texts{"optimization func invalid; invalid kernel or vec size mismatch?"}));
  expectNothing();
  ASSERT_TRUE(fit(Kernel::Exponential, 5, 1, 9).IsSuccessful());
  // A box car that covers all bins at every parameter: the objective is constant.
  EXPECT_THAT(fit(Kernel::BoxCar, 0.5, 0.1, 0.9),
              FailedAlong(Failure::InternalLogicFailure, Texts{kTheory},
                          Texts{"minmizer failed both directions!"}));
  expectNothing();
  // The bounds hold: the curve's own parameter lies beyond.
  ASSERT_TRUE(fit(Kernel::Exponential, 6, 5, 9).IsSuccessful());
  EXPECT_THAT(param, IsCloseTo(5.0, 1e-3));
}

}  // namespace
}  // namespace QVStats
