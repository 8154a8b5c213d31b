#include "stats/api/data_vector_pairs.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "platform/math/random.h"
#include "platform/system/error_handler.h"
#include "stats/api/stats_data_types.h"
#include "tests/support/matchers.h"

namespace QVStats {
namespace {

using Pairs = std::vector<std::pair<double, double>>;
using QVStatsBadData::BadDouble;
namespace Type = QVTwoSampleStatisticType;
namespace PairType = QVTwoSamplePairStatisticType;

double Get(unsigned int code, const Pairs& pairs) { return QVTwoSampleStatistic(code)(pairs); }

std::pair<double, double> GetPair(unsigned int code, const Pairs& pairs) {
  return QVTwoSamplePairStatistic(code).GetPairStatistic(pairs);
}

// Shifted far from 0 the line stays: the moments are taken about the means.
TEST(PairStatistics, KeepTheirDigitsFarFromZero) {
  Pairs pairs;
  for (int i = 0; i < 1001; ++i)
    pairs.emplace_back(1e7 + i, 2.0 * (1e7 + i) + (i % 2 ? 0.5 : -0.5));
  // The zigzag has the sum -1/2 and the sum of products with i - 500 of 0.
  EXPECT_THAT(Get(Type::RegressionSlope, pairs), IsCloseTo(2.0, 1e-14));
  EXPECT_THAT(Get(Type::Covariance, pairs), IsCloseTo(2.0 * (1001.0 * 1001.0 - 1) / 12, 1e-13));
}

// By hand for (1,2), (2,1), (3,4), (4,3), (5,5): Sxx = Syy = 2, Sxy = 1.6; 8 pairs agree, 2 do not.
TEST(PairStatistics, ValuesWorkedByHand) {
  const Pairs pairs = {{1, 2}, {2, 1}, {3, 4}, {4, 3}, {5, 5}};
  EXPECT_THAT(Get(Type::Covariance, pairs), IsCloseTo(1.6, 1e-15));
  EXPECT_THAT(Get(Type::PearsonCorrelation, pairs), IsCloseTo(0.8, 1e-15));
  EXPECT_THAT(Get(Type::RegressionSlope, pairs), IsCloseTo(0.8, 1e-15));
  EXPECT_THAT(Get(Type::RSquared, pairs), IsCloseTo(0.64, 1e-15));
  EXPECT_THAT(Get(Type::SpearmanRho, pairs), IsCloseTo(0.8, 1e-15));
  EXPECT_THAT(Get(Type::KendallTau, pairs), IsCloseTo(0.6, 1e-15));
  EXPECT_EQ(GetPair(PairType::Means, pairs), std::make_pair(3.0, 3.0));
  EXPECT_EQ(GetPair(PairType::Variances, pairs), std::make_pair(2.5, 2.5));
  // x = 1, 1, 2 share ranks 1.5, 1.5, 3: deviations -.5 -.5 1 against -1 0 1.
  EXPECT_THAT(Get(Type::SpearmanRho, {{1, 5}, {1, 6}, {2, 7}}),
              IsCloseTo(1.5 / std::sqrt(1.5 * 2), 1e-15));
  // Differences 1, 2, 3: t = 2 sqrt(3); the tail of t with 2 degrees is (1 - t/sqrt(2 + t^2))/2.
  const auto [t, p] = GetPair(PairType::PairedTTest, {{1, 2}, {5, 7}, {2, 5}});
  EXPECT_THAT(t, IsCloseTo(2 * std::sqrt(3.0), 1e-14));
  EXPECT_THAT(p, IsCloseTo(0.5 * (1 - t / std::sqrt(2 + t * t)), 1e-12));
}

TEST(PairStatistics, TooFewOrConstantPairs) {
  for (const Pairs& few : {Pairs{}, Pairs{{1, 2}}}) {
    EXPECT_EQ(Get(Type::Covariance, few), BadDouble);
    EXPECT_EQ(Get(Type::PearsonCorrelation, few), 0.0);
    EXPECT_EQ(Get(Type::RegressionSlope, few), 1.0);
    EXPECT_TRUE(std::isnan(Get(Type::RSquared, few)));
    EXPECT_TRUE(std::isnan(Get(Type::KendallTau, few)));
    EXPECT_EQ(Get(Type::DistanceCorrelation, few), 0.0);
    EXPECT_EQ(GetPair(PairType::OLSRegression, few).first, BadDouble);
    EXPECT_EQ(GetPair(PairType::Variances, few).second, BadDouble);
  }
  const Pairs constant = {{0.1, 1}, {0.1, 2}, {0.1, 4}};
  for (const unsigned int code : {Type::PearsonCorrelation, Type::RegressionSlope, Type::RSquared,
                                  Type::SpearmanRho, Type::Null, 9u})
    EXPECT_EQ(Get(code, constant), BadDouble) << code;
  EXPECT_TRUE(std::isnan(Get(Type::KendallTau, constant)));
  EXPECT_EQ(Get(Type::DistanceCorrelation, constant), 0.0);
  EXPECT_EQ(GetPair(PairType::OLSRegression, constant).first, BadDouble);
  EXPECT_EQ(GetPair(PairType::LMSRegression, constant).first, BadDouble);

  QVStatModelResult result(false);
  EXPECT_EQ(QVGetTwoSampleStatisticForDataPairVec(result, Type::Covariance, {}), BadDouble);
  EXPECT_TRUE(result.NotSuccessful());
  QVGetTwoSamplePairStatisticForDataPairVec(result, PairType::Means, {});
  EXPECT_TRUE(result.IsSuccessful());
  QVSystem::QVScopedRecordingSink sink;
  EXPECT_EQ(Get(Type::SpearmanRho, {}), BadDouble);
  EXPECT_THAT(sink.GetTexts(QVSystem::QVErrorLevel::Fatal),
              testing::ElementsAre(testing::HasSubstr("data_vector_functions")));
}

double GetTauPairByPair(const Pairs& pairs) {
  double agree = 0, tiesX = 0, tiesY = 0, all = 0;
  for (std::size_t j = 0; j < pairs.size(); ++j)
    for (std::size_t i = 0; i < j; ++i, ++all) {
      const double d = (pairs[j].first - pairs[i].first) * (pairs[j].second - pairs[i].second);
      agree += (d > 0) - (d < 0);
      tiesX += d == 0 && pairs[i].first == pairs[j].first;
      tiesY += d == 0 && pairs[i].second == pairs[j].second;
    }
  return agree / std::sqrt((all - tiesY) * (all - tiesX));
}

/// The distance correlation and test statistic from centred matrices.
std::pair<double, double> GetDistanceStatistics(const Pairs& pairs) {
  const std::size_t n = pairs.size();
  const auto center = [n](auto valueOf) {
    std::vector<double> d(n * n), means(n, 0.0);
    double mean = 0;
    for (std::size_t i = 0; i < n; ++i)
      for (std::size_t j = 0; j < n; ++j) {
        d[i * n + j] = std::abs(valueOf(i) - valueOf(j));
        means[i] += d[i * n + j] / static_cast<double>(n);
        mean += d[i * n + j] / static_cast<double>(n * n);
      }
    for (std::size_t i = 0; i < n; ++i)
      for (std::size_t j = 0; j < n; ++j) d[i * n + j] += mean - means[i] - means[j];
    return d;
  };
  const auto a = center([&](std::size_t i) { return pairs[i].first; });
  const auto b = center([&](std::size_t i) { return pairs[i].second; });
  double ab = 0, aa = 0, bb = 0;
  for (std::size_t k = 0; k < n * n; ++k) {
    ab += a[k] * b[k];
    aa += a[k] * a[k];
    bb += b[k] * b[k];
  }
  return {std::sqrt(ab / std::sqrt(aa * bb)), ab / static_cast<double>(n)};
}

TEST(PairStatistics, FastFormsAgreeWithTheDefinitions) {
  QVMath::QVRanNumEngine engine(11);
  // Continuous, tied, heavily tied and two-valued samples, far from zero.
  for (const double step : {0.0, 0.25, 2.0, 4.0})
    for (const std::size_t n : {2u, 3u, 7u, 8u, 9u, 16u, 17u, 100u, 255u, 300u, 1000u}) {
      Pairs pairs;
      for (std::size_t i = 0; i < n; ++i) {
        const double x = 8 * engine.GetUniform(), y = 4 * engine.GetUniform() + 0.3 * x;
        pairs.emplace_back(step > 0 ? step * std::floor(x / step) : x,
                           1e3 + (step > 0 ? step * std::floor(y / step) : y));
      }
      const double tau = GetTauPairByPair(pairs);
      if (std::isnan(tau)) continue;
      EXPECT_EQ(Get(Type::KendallTau, pairs), tau) << n << " " << step;
      const auto [correlation, statistic] = GetDistanceStatistics(pairs);
      EXPECT_THAT(Get(Type::DistanceCorrelation, pairs), IsCloseTo(correlation, 1e-10)) << n;
      EXPECT_THAT(Get(Type::DistanceCovarTestStat, pairs), IsCloseTo(statistic, 1e-10)) << n;
    }
}

// What tells the values apart stands in their lowest digits, below those that a sort looks at
// first.
TEST(PairStatistics, KendallTellsValuesApartByTheirLastDigits) {
  QVMath::QVRanNumEngine engine(12);
  for (const std::size_t n : {300u, 1000u, 17000u}) {
    Pairs pairs;
    for (std::size_t i = 0; i < n; ++i) {
      const double x = 1.0 + std::floor(8 * engine.GetUniform()) +
                       0x1p-40 * std::floor(500 * engine.GetUniform());
      pairs.emplace_back(x, n > 1000 ? x * x : 3 * x + 0x1p-39 * engine.GetUniform());
    }
    EXPECT_EQ(Get(Type::KendallTau, pairs), n > 1000 ? 1.0 : GetTauPairByPair(pairs)) << n;
  }
}

TEST(PairStatistics, KendallCountsAsTheProductOfDifferencesDoes) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const Pairs samples[] = {
      {{0, 0}, {1e-200, 1e-200}, {1, 1}, {2, 0.5}},       // a product underflows
      {{-1e308, 1}, {1e308, 1}, {0, 2}, {1, 3}},          // a difference overflows
      {{-kInfinity, 1}, {kInfinity, 1}, {0, 2}, {1, 1}},  // and meets a tie
      {{nan, 1}, {2, 1}, {0, 2}, {1, 3}},
      {{0.0, 1}, {-0.0, 2}, {1, 3}},
  };
  for (const Pairs& pairs : samples)
    EXPECT_EQ(Get(Type::KendallTau, pairs), GetTauPairByPair(pairs));
  EXPECT_TRUE(std::isnan(Get(Type::SpearmanRho, samples[3])));
}

TEST(PairStatistics, DistanceCorrelationOfKnownSamples) {
  // A grid is independent; points on a line depend fully; infinities give no number.
  Pairs grid, line;
  for (int i = 0; i < 6; ++i)
    for (int j = 0; j < 5; ++j) grid.emplace_back(0.1 * i, 0.7 * j);
  for (int i = 0; i < 50; ++i) line.emplace_back(i * i, 3.0 - 2.0 * i * i);
  EXPECT_EQ(Get(Type::DistanceCorrelation, grid), 0.0);
  EXPECT_THAT(Get(Type::DistanceCorrelation, line), IsCloseTo(1.0, 1e-13));
  line[3].first = std::numeric_limits<double>::infinity();
  EXPECT_TRUE(std::isnan(Get(Type::DistanceCorrelation, line)));
}

TEST(PairStatistics, LeastMedianOfSquaresFindsTheLineOfTheMajority) {
  for (const double slope : {0.9, 0.5, 0.3, 0.0, -0.2, -0.5, -0.99}) {
    Pairs pairs;
    for (int i = 0; i < 20; ++i)
      pairs.emplace_back(i, i % 4 == 0 ? 100.0 + i * i : 2.0 + slope * i);
    const auto [intercept, found] = GetPair(PairType::LMSRegression, pairs);
    EXPECT_NEAR(found, slope, 1e-6);
    EXPECT_NEAR(intercept, 2.0, 1e-4);
  }
  EXPECT_EQ(GetPair(PairType::LMSRegression, {{1, 1}, {2, 2}, {3, 3}}).first, BadDouble);
  EXPECT_EQ(GetPair(PairType::LMSRegression, {{1, 1}, {1, 1}, {1, 1}, {1, 1}}).first, BadDouble);
  QVLMSSlopeFunctor none({});
  const double slope = 1.0;
  EXPECT_EQ(none(&slope), BadDouble / 2);
  EXPECT_EQ(none.GetIntercept(&slope), BadDouble);
}

}  // namespace
}  // namespace QVStats
