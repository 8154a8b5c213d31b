#include "stats/api/data_vector_independence.h"

#include <gmock/gmock.h>

#include <cmath>

#include "platform/system/error_handler.h"
#include "stats/api/stats_data_types.h"
#include "tests/support/matchers.h"

namespace QVStats {
namespace {

using Values = std::vector<double>;
using QVStatsBadData::BadDouble;
constexpr unsigned int kMeasure = QVIndependenceStatisticType::DistanceCorrelation;
constexpr unsigned int kTestStat = QVIndependenceStatisticType::TestStatistic;

double Get(unsigned int code, const Values& x, std::size_t dimX, bool simX, const Values& y,
           std::size_t dimY, bool simY) {
  QVStatModelResult result;
  const double value =
      QVGetTwoSampleIndepStatForVectors(result, code, x, dimX, simX, y, dimY, simY);
  EXPECT_TRUE(result.IsSuccessful());
  return value;
}

Values Draw(std::size_t n, std::uint64_t seed) {
  QVMath::QVRanNumEngine engine(seed);
  return QVMath::QVGaussianRNG().Draw(engine, n);
}

TEST(Independence, DependentIndependentAndConstantSamples) {
  const Values x = {1, 5, 2, 8}, constant(4, 0.1);
  EXPECT_THAT(Get(kMeasure, x, 1, false, x, 1, false), IsCloseTo(1.0, 1e-14));
  EXPECT_EQ(Get(kMeasure, x, 1, false, constant, 1, false), 0.0);
  EXPECT_EQ(Get(kMeasure, {}, 1, false, {}, 2, false), 0.0);
  // Two points: D = |a - b| off the diagonal, A = -+ |a - b|/2, so the statistic is 4 (1/2)(3/2)/2.
  EXPECT_THAT(Get(kTestStat, {0, 1}, 1, false, {2, 5}, 1, false), IsCloseTo(1.5, 1e-15));
  EXPECT_EQ(Get(0, x, 1, false, x, 1, false), BadDouble);
}

// The same distances as numbers, as points in the plane and as similarities 1 - d^2.
TEST(Independence, FormsOfASampleAgree) {
  const std::size_t n = 40;
  const Values x = Draw(n, 3);
  Values y = Draw(n, 4), points, similarities;
  for (std::size_t i = 0; i < n; ++i) y[i] += x[i] * x[i];
  for (const double value : x) points.insert(points.end(), {0.6 * value, 0.8 * value});
  for (const double a : x)
    for (const double b : x) similarities.push_back(1.0 - (a - b) * (a - b) / 100.0);
  for (const unsigned int code : {kMeasure, kTestStat}) {
    const double expected = Get(code, x, 1, false, y, 1, false);
    EXPECT_THAT(Get(code, points, 2, false, y, 1, false), IsCloseTo(expected, 1e-12));
    const double scale = code == kTestStat ? 0.1 : 1.0;
    EXPECT_THAT(Get(code, similarities, n, true, y, 1, false), IsCloseTo(scale * expected, 1e-7));
  }
}

TEST(Independence, SimulationPermutesTheSecondSample) {
  const std::size_t n = 37, numSims = 70;
  const Values x = Draw(n, 5), y = Draw(n, 6);
  Eigen::MatrixXd a, b;
  ASSERT_TRUE(GetDistanceMatrix(a, x, 1, false).IsSuccessful());
  ASSERT_TRUE(GetDistanceMatrix(b, y, 1, false).IsSuccessful());
  CenterDistanceMatrix(a);
  CenterDistanceMatrix(b);
  EXPECT_LT(a.rowwise().sum().cwiseAbs().maxCoeff(), 1e-12);
  QVMath::QVRanNumEngine engine(7);
  Values expected;
  for (std::size_t k = 0; k < numSims; ++k) {
    const auto p = QVMath::QVRandomShuffleOfIndices(n, engine);
    double sum = 0;
    for (std::size_t i = 0; i < n; ++i)
      for (std::size_t j = 0; j < n; ++j)
        sum += a(static_cast<long>(i), static_cast<long>(j)) *
               b(static_cast<long>(p[i]), static_cast<long>(p[j]));
    expected.push_back(sum / n);
    EXPECT_THAT(QVDistanceCorrelationTestStat::DistanceMatrixCovariance(a, b, p),
                IsCloseTo(sum / n, 1e-12));
  }
  Values points;
  for (const double value : x) points.insert(points.end(), {0.6 * value, 0.8 * value});
  const QVTwoSampleIndependenceStatistic statistic(kTestStat);
  for (const std::size_t dim : {1u, 2u}) {
    QVMath::QVRanNumEngine same(7);
    Values sims;
    ASSERT_TRUE(statistic
                    .SimulateStatisticUnderIndependence(sims, same, numSims, dim == 1 ? x : points,
                                                        dim, false, y, 1, false)
                    .IsSuccessful());
    ASSERT_EQ(sims.size(), numSims);
    for (std::size_t k = 0; k < numSims; ++k) EXPECT_THAT(sims[k], IsCloseTo(expected[k], 1e-11));
  }
  // A similarity matrix need not be symmetric: then nothing is taken from one half alone.
  const std::vector<std::size_t> two = {1, 0};
  const Eigen::MatrixXd skew = (Eigen::MatrixXd(2, 2) << 1, 2, 3, 4).finished();
  EXPECT_EQ(QVDistanceCorrelationTestStat::DistanceMatrixCovariance(skew, skew, two),
            (1 * 4 + 2 * 3 + 3 * 2 + 4 * 1) / 2.0);
  QVSystem::QVScopedRecordingSink sink;
  EXPECT_EQ(QVDistanceCorrelationTestStat::DistanceMatrixCovariance(skew, skew, {0, 0}), BadDouble);
  EXPECT_EQ(sink.GetTexts(QVSystem::QVErrorLevel::Fatal).size(), 1u);
}

TEST(Independence, PValues) {
  const Values x = Draw(60, 8), noise = Draw(60, 9);
  Values y(noise);
  for (std::size_t i = 0; i < y.size(); ++i) y[i] = 0.3 * noise[i] + x[i] * x[i];
  QVMath::QVRanNumEngine engine(1);
  QVStatModelResult result;
  const auto getP = [&](const Values& second, unsigned int code, std::size_t numSims) {
    return QVGetPValueForTwoSampleIndepStatistic(result, engine, numSims, code, x, 1, false, second,
                                                 1, false);
  };
  testing::internal::CaptureStdout();
  EXPECT_LT(getP(y, kTestStat, 200), 0.01);
  EXPECT_THAT(testing::internal::GetCapturedStdout(),
              testing::MatchesRegex("min, max = [-.e0-9]+; [.0-9]+\n90th percentile = [.0-9]+\n"));
  EXPECT_GT(getP(noise, kTestStat, 200), 0.02);
  EXPECT_EQ(getP(y, kTestStat, 0), BadDouble);
  EXPECT_EQ(result.GetFailureType(), QVStatModelFailureType::ArgumentOutOfRange);
  EXPECT_EQ(getP(y, kMeasure, 10), BadDouble);
  EXPECT_THAT(result,
              FailedAlong(QVStatModelFailureType::NotYetImplemented,
                          (std::vector<std::string>{"QVDistanceCorrelationMeasure::"
                                                    "SimulateStatisticUnderIndependence",
                                                    "QVGetPValueForTwoSampleIndepStatistic"}),
                          std::vector<std::string>{}));
  EXPECT_EQ(getP(y, 7, 10), BadDouble);
  EXPECT_EQ(result.GetFailureType(), QVStatModelFailureType::EmptyStatModel);
  EXPECT_EQ(QVEmpiricalCDF(2, {1, 2, 2, 5}), 0.75);
  EXPECT_EQ(QVEmpiricalCDF(0, {1}), 0.0);
  EXPECT_EQ(QVEmpiricalCDF(0, {}), BadDouble);
}

TEST(Independence, BadSamples) {
  QVStatModelResult result;
  const Values six(6, 0.5);
  const auto apply = [&](const Values& x, std::size_t dim, bool isSimilarity) {
    EXPECT_EQ(QVGetTwoSampleIndepStatForVectors(result, kMeasure, x, dim, isSimilarity, {1, 2, 3},
                                                1, false),
              BadDouble);
    return result;
  };
  using Texts = std::vector<std::string>;
  EXPECT_THAT(apply(six, 2, true),
              FailedAlong(QVStatModelFailureType::WrongInputMatrixSize, Texts{"GetDistanceMatrix"},
                          Texts{"smilarity matrix assumed square, but numRows, numCols = 3; 2"}));
  EXPECT_THAT(apply({1, 0.5, 0.5, 0.5, 1, 1.5, 0.5, 0.5, 1}, 3, true),
              FailedAlong(QVStatModelFailureType::UpperBoundViolated, Texts{"GetDistanceMatrix"},
                          Texts{"For input vector: Bad similarity: 1.5 at i,j = 1; 2"}));
  EXPECT_EQ(apply({1, -0.5, 0, 0, 1, 0, 0, 0, 1}, 3, true).GetFailureType(),
            QVStatModelFailureType::LowerBoundViolated);
  for (const std::size_t dim : {0u, 1u, 4u})
    EXPECT_THAT(apply(six, dim, false),
                FailedWith(QVStatModelFailureType::MismatchBetweenInputVecSizes,
                           "QVDistanceCorrelationMeasure::operator"));
}

}  // namespace
}  // namespace QVStats
