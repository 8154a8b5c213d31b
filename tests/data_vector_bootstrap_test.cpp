#include "stats/api/data_vector_bootstrap.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "platform/system/error_handler.h"
#include "stats/api/data_vector_functions.h"
#include "stats/api/data_vector_pairs.h"
#include "stats/api/stats_data_types.h"
#include "tests/support/matchers.h"

namespace QVStats {
namespace {

using Values = std::vector<double>;
using Pairs = std::vector<std::pair<double, double>>;
using Texts = std::vector<std::string>;
using QVStatsBadData::BadDouble;
namespace Type = QVSampleStatisticType;

// Statistics read off counts are those of samples drawn one by one, ties and all.
TEST(Bootstrap, StatisticsAreThoseOfTheSamplesDrawn) {
  QVMath::QVRanNumEngine setup(2);
  for (const std::size_t n : {1u, 2u, 5u, 40u, 333u}) {
    Values data = QVMath::QVGaussianRNG().Draw(setup, n);
    for (std::size_t i = 0; i < n; i += 3) data[i] = std::round(data[i]);
    for (unsigned int code = 0; code <= Type::NumTypes; ++code)
      for (const double parameter : {0.1, 0.5, 0.97}) {
        QVMath::QVRanNumEngine engine(5), same(5);
        Values stats, sample;
        ASSERT_TRUE(QVBootstrapSampleStatisticForDataVec(stats, engine, code, parameter, data, 30)
                        .IsSuccessful());
        ASSERT_EQ(stats.size(), 30u);
        for (const double value : stats) {
          QVGetOneBootstrapSampleFromDataVec(same, sample, data);
          EXPECT_THAT(value, IsCloseTo(QVSampleStatistic(code, parameter)(sample), 1e-12))
              << code << " " << parameter << " " << n;
        }
        EXPECT_EQ(engine(), same());
      }
  }
}

TEST(Bootstrap, DegenerateData) {
  QVMath::QVRanNumEngine engine(1), untouched(1);
  Values stats = {1};
  EXPECT_TRUE(
      QVBootstrapSampleStatisticForDataVec(stats, engine, Type::Mean, {1, 2}, 0).IsSuccessful());
  EXPECT_TRUE(stats.empty());
  EXPECT_EQ(engine(), untouched());
  QVBootstrapSampleStatisticForDataVec(stats, engine, Type::Mean, {5.0}, 3);
  EXPECT_EQ(stats, Values(3, 5.0));
  for (const unsigned int code : {Type::Mean, Type::Median}) {
    stats = {1};
    EXPECT_THAT(QVBootstrapSampleStatisticForDataVec(stats, engine, code, {}, 10),
                FailedAlong(QVStatModelFailureType::NoData,
                            (Texts{"QVGetBootstrapSampleForDataVec",
                                   "QVBootstrapSampleStatisticForDataVec"}),
                            Texts{}));
    EXPECT_TRUE(stats.empty());
  }
  const double nan = std::numeric_limits<double>::quiet_NaN();
  QVBootstrapSampleStatisticForDataVec(stats, engine, Type::Max, {nan, 1.0}, 40);
  EXPECT_TRUE(std::any_of(stats.begin(), stats.end(), [](double v) { return v == 1.0; }));
  EXPECT_TRUE(std::any_of(stats.begin(), stats.end(), [](double v) { return std::isnan(v); }));
}

TEST(Bootstrap, EveryPairSampleReports) {
  const Pairs data = {{1, 2}, {2, 4}, {3, 6}};
  QVSystem::QVScopedRecordingSink sink;
  const auto numReports = [&sink] {
    const auto texts = sink.GetTexts(QVSystem::QVErrorLevel::Fatal);
    EXPECT_THAT(texts, testing::Each("Bad implementation--need to fix!"));
    sink.Clear();
    return texts.size();
  };
  QVMath::QVRanNumEngine engine(1), same(1);
  Pairs sample, expected, pairStats = {{7, 7}};
  Values stats = {7};
  EXPECT_TRUE(QVGetBootstrapSampleForDataPairVec(engine, sample, data).IsSuccessful());
  EXPECT_EQ(numReports(), 1u);
  QVGetOneBootstrapSampleFromDataPairVec(same, expected, data);
  EXPECT_EQ(sample, expected);
  EXPECT_THAT(QVGetBootstrapSampleForDataPairVec(engine, sample, {}),
              FailedWith(QVStatModelFailureType::NoData, "QVGetBootstrapSampleForDataPairVec"));
  EXPECT_EQ(numReports(), 1u);
  EXPECT_THAT(
      QVBootstrapTwoSampleStatisticForDataPairVec(stats, engine, 1, {}, 4),
      FailedWith(QVStatModelFailureType::NoData, "QVBootstrapTwoSampleStatisticForDataPairVec"));
  EXPECT_THAT(QVBootstrapTwoSamplePairStatisticForDataPairVec(pairStats, engine, 1, {}, 4),
              FailedWith(QVStatModelFailureType::NoData,
                         "QVBootstrapTwoSamplePairStatisticForDataPairVec"));
  EXPECT_EQ(numReports() + stats.size() + pairStats.size(), 2u);
  QVBootstrapTwoSampleStatisticForDataPairVec(stats, engine,
                                              QVTwoSampleStatisticType::RegressionSlope, data, 4);
  EXPECT_EQ(numReports(), 4u);
  QVBootstrapTwoSamplePairStatisticForDataPairVec(pairStats, engine,
                                                  QVTwoSamplePairStatisticType::Means, data, 4);
  EXPECT_EQ(numReports(), 4u);
  for (const auto& means : pairStats) EXPECT_THAT(means.second, IsCloseTo(2 * means.first, 1e-15));
}

// For the mean of normal data both intervals come near mean -+ 1.96 s/sqrt(n); for the variance of
// skewed data the accelerated one moves up.
TEST(Bootstrap, ConfidenceIntervals) {
  QVMath::QVRanNumEngine engine(3);
  const Values normal = QVMath::QVGaussianRNG(10.0, 2.0).Draw(engine, 400);
  const double mean = QVSampleStatistic(Type::Mean)(normal);
  const double half = 1.959964 * std::sqrt(QVSampleStatistic(Type::Variance)(normal) / 400);
  const auto get = [&](QVBootstrapInterval kind, unsigned int code, const Values& data) {
    std::pair<double, double> limits;
    EXPECT_TRUE(QVGetBootstrapConfidenceInterval(limits.first, limits.second, engine, kind, 0.95,
                                                 code, 0.0, data, 4000)
                    .IsSuccessful());
    return limits;
  };
  const auto kPercentile = QVBootstrapInterval::Percentile;
  const auto kAccelerated = QVBootstrapInterval::BiasCorrectedAccelerated;
  for (const auto kind : {kPercentile, kAccelerated}) {
    const auto [lower, upper] = get(kind, Type::Mean, normal);
    EXPECT_NEAR(lower, mean - half, 0.1 * half);
    EXPECT_NEAR(upper, mean + half, 0.1 * half);
  }
  const Values skewed = QVMath::QVGammaRNG(0.5, 1.0).Draw(engine, 60);
  EXPECT_GT(get(kAccelerated, Type::Variance, skewed).first,
            get(kPercentile, Type::Variance, skewed).first);
  EXPECT_GT(get(kAccelerated, Type::Variance, skewed).second,
            get(kPercentile, Type::Variance, skewed).second);
  EXPECT_EQ(get(kAccelerated, Type::Mean, {4, 4, 4}), std::make_pair(4.0, 4.0));

  // The spatial test scores of Efron and Tibshirani, table 14.1. R 4.2.2, boot 1.3:
  // boot.ci(boot(scores, function(x, i) sd of x[i] with divisor n, 20000), 0.9).
  const Values scores = {48, 36, 20, 29, 42, 42, 20, 42, 22, 41, 45, 14, 6,
                         0,  33, 28, 34, 4,  32, 24, 47, 41, 24, 26, 30, 41};
  double lower, upper;
  const auto expectLimits = [&](QVBootstrapInterval kind, double low, double high) {
    EXPECT_TRUE(QVGetBootstrapConfidenceInterval(lower, upper, engine, kind, 0.9,
                                                 Type::RootMeanSquareDev, 0.0, scores, 20000)
                    .IsSuccessful());
    EXPECT_THAT(lower, IsCloseTo(low, 0.02));
    EXPECT_THAT(upper, IsCloseTo(high, 0.01));
  };
  expectLimits(kPercentile, 9.94, 15.37);
  expectLimits(kAccelerated, 10.78, 16.20);

  const auto fail = [&](double level, unsigned int code, const Values& data) {
    const auto result = QVGetBootstrapConfidenceInterval(lower, upper, engine, kAccelerated, level,
                                                         code, 0.0, data, 10);
    EXPECT_EQ(lower, BadDouble);
    return result.GetFailureType();
  };
  EXPECT_EQ(fail(0.95, Type::Mean, {}), QVStatModelFailureType::NoData);
  EXPECT_EQ(fail(1.0, Type::Mean, {1, 2}), QVStatModelFailureType::ArgumentOutOfRange);
  EXPECT_EQ(fail(0.95, Type::Skewness, {1, 2}), QVStatModelFailureType::ArgumentValueWrong);
  EXPECT_EQ(fail(0.95, Type::Mean, {1}), QVStatModelFailureType::ArgumentValueWrong);
}

}  // namespace
}  // namespace QVStats
