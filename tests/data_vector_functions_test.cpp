#include "stats/api/data_vector_functions.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

#include "platform/system/error_handler.h"
#include "stats/api/stats_data_types.h"
#include "stats/api/svd_data_model.h"
#include "tests/support/matchers.h"

namespace QVStats {
namespace {

using QVStatsBadData::BadDouble;
using Sample = std::vector<double>;
constexpr double kLowest = std::numeric_limits<double>::lowest();

double Get(unsigned int code, const Sample& sample, double parameter = 0.0) {
  return QVSampleStatistic(code, parameter)(sample);
}

// By hand for 1, 2, 3, 4, 10 (mean 4, deviations -3 -2 -1 0 6; quantiles at 8: h = 5p + (p+1)/3).
TEST(SampleStatistics, ValuesWorkedByHand) {
  namespace Type = QVSampleStatisticType;
  const Sample x = {10, 2, 4, 1, 3};
  const struct {
    unsigned int code;
    double parameter;
    double expected;
  } rows[] = {
      {Type::Null, 0, BadDouble},
      {Type::Mean, 0, 4},
      {Type::TrimmedMean, 0.4, 3},
      {Type::TrimmedMean, 0, 4},
      {Type::TrimmedMean, 0.2, 4},  // 0.5 values: rounds to the even 0
      {Type::TrimmedMean, 1, 3},    // 2.5 values: rounds to the even 2
      {Type::TrimmedMean, 2, BadDouble},
      {Type::Median, 0, 3},
      {Type::Quantile, 0.25, 5.0 / 3},
      {Type::Quantile, 0.0, kLowest},
      {Type::Quantile, 1.1, BadDouble},
      {Type::Min, 0, 1},
      {Type::Max, 0, 10},
      {Type::Range, 0, 9},
      {Type::Variance, 0, 12.5},
      {Type::RootMeanSquareVal, 0, std::sqrt(26.0)},
      {Type::RootMeanSquareDev, 0, std::sqrt(10.0)},
      {Type::MeanAbsoluteDev, 0, 2.4},
      {Type::MedianAbsoluteDev, 0, 1},
      {Type::InterQuartileRange, 0, 6.0 - 5.0 / 3},
      {Type::Skewness, 0, 36.0 / std::pow(10.0, 1.5)},
      {Type::Kurtosis, 0, 278.8 / 100 - 3},
      {16, 0, BadDouble},
  };
  for (const auto& row : rows)
    EXPECT_THAT(Get(row.code, x, row.parameter), IsCloseTo(row.expected, 1e-15))
        << QVSampleStatistic(row.code).GetSampleStatisticsName() << " " << row.parameter;
}

TEST(SampleStatistics, TooFewValuesGiveTheBadDouble) {
  const std::size_t smallest[] = {0, 1, 1, 1, 1, 1, 1, 2, 2, 2, 2, 2, 1, 2, 3, 3};
  for (unsigned int code = 1; code < QVSampleStatisticType::NumTypes; ++code) {
    EXPECT_EQ(QVSampleStatistic(code).GetSampleStatisticsType(), code);
    for (std::size_t n = 0; n < 4; ++n) {
      const Sample x = {3, 1, 2, 5};
      const double value = Get(code, Sample(x.begin(), x.begin() + static_cast<long>(n)), 0.4);
      // The lower quartile of two or three values is the low sentinel, which ends the same way.
      const bool isLowQuartile = code == QVSampleStatisticType::InterQuartileRange && n < 4;
      EXPECT_EQ(value == BadDouble, n < smallest[code] || isLowQuartile) << code << " " << n;
    }
  }
  EXPECT_EQ(Get(QVSampleStatisticType::Median, {4.0}), kLowest);
  EXPECT_EQ(Get(QVSampleStatisticType::MedianAbsoluteDev, {4.0}), kLowest);
  EXPECT_EQ(Get(QVSampleStatisticType::Skewness, {2, 2, 2}), BadDouble);
  EXPECT_EQ(Get(QVSampleStatisticType::Kurtosis, {2, 2, 2}), BadDouble);
  QVStatModelResult result(false);
  EXPECT_EQ(QVGetSampleStatisticForDataVec(result, 15, {1, 2}), BadDouble);
  EXPECT_TRUE(result.IsSuccessful());
}

// Selection against the definition on a sorted copy, ties and signs included.
TEST(SampleStatistics, OrderStatisticsAreThoseOfTheSortedSample) {
  namespace Type = QVSampleStatisticType;
  std::mt19937 engine(99);
  std::uniform_int_distribution<int> value(-20, 20);
  for (std::size_t n = 1; n < 120; ++n) {
    Sample x(n);
    for (double& v : x) v = value(engine) * 0.25;
    Sample sorted(x);
    std::sort(sorted.begin(), sorted.end());
    for (const double p : {0.03, 0.25, 0.5, 0.77, 1.0})
      EXPECT_EQ(Get(Type::Quantile, x, p), QVQuantile(p, sorted, 8)) << n << " " << p;
    if (n > 3) {
      EXPECT_EQ(Get(Type::InterQuartileRange, x),
                QVQuantile(0.75, sorted, 8) - QVQuantile(0.25, sorted, 8));
    }
    EXPECT_EQ(Get(Type::Min, x), sorted.front());
    EXPECT_EQ(Get(Type::Max, x), sorted.back());
    const std::size_t k = n / 10;
    double sum = 0.0;
    for (std::size_t i = k; i < n - k; ++i) sum += sorted[i];
    const double fraction = 2.0 * static_cast<double>(k) / static_cast<double>(n);
    EXPECT_NEAR(Get(Type::TrimmedMean, x, fraction), sum / static_cast<double>(n - 2 * k), 1e-14);
  }
}

TEST(SampleStatistics, ANaNHasNoPlaceAmongOrderStatistics) {
  Sample x(100, 1.0);
  x[31] = std::nan("");
  for (unsigned int code = 1; code < QVSampleStatisticType::NumTypes; ++code)
    EXPECT_TRUE(std::isnan(Get(code, x, 0.3))) << code;
}

// Types 4 to 9 interpolate between (p_k, x_k) with these plotting positions: Hyndman and Fan, 1996.
TEST(Quantile, InterpolatesThePlottingPositionsOfHyndmanAndFan) {
  const Sample x = {-2, 0, 0.5, 3, 7, 7.5, 20};
  const double n = 7;
  const auto position = [n](unsigned int type, double k) {
    switch (type) {
      case 4:
        return k / n;
      case 5:
        return (k - 0.5) / n;
      case 6:
        return k / (n + 1);
      case 7:
        return (k - 1) / (n - 1);
      case 8:
        return (k - 1.0 / 3) / (n + 1.0 / 3);
      default:
        return (k - 0.375) / (n + 0.25);
    }
  };
  for (unsigned int type = 4; type <= 9; ++type)
    for (double p = 0.15; p <= 1.0; p += 0.01) {
      double expected = x.front();
      for (std::size_t k = 1; k <= x.size(); ++k) {
        const double at = position(type, static_cast<double>(k));
        if (at > p) break;
        expected = x[k - 1];
        if (k == x.size()) break;
        const double share = (p - at) / (position(type, static_cast<double>(k + 1)) - at);
        expected += share * (x[k] - x[k - 1]);
      }
      EXPECT_NEAR(QVQuantile(p, x, type), expected, 1e-12) << type << " " << p;
    }
}

TEST(Quantile, StepTypesAndLimitsByHand) {
  const Sample four = {1, 2, 3, 4};
  const struct {
    double p;
    Sample x;
    unsigned int type;
    double expected;
  } rows[] = {
      {0.5, four, 1, 2},
      {0.5001, four, 1, 3},
      {0.5, four, 2, 2.5},
      {0.51, four, 2, 3},
      {0.625, four, 3, 2},
      {0.6, four, 3, 2},
      {0.5, {1, 2, 3, 4, 5}, 3, 3},
      {0.7, {1, 2, 3, 4, 5}, 3, 4},
      {0.5, four, 7, 2.5},
      {1.0, four, 1, 4},
      {1.0, four, 2, 4},
      {1.0, four, 4, 4},
      {1.0, four, 6, 4},
      {0.95, four, 6, 4},
      {0.24, four, 7, kLowest},
      {0.5, {4}, 8, kLowest},
      {1.0, {4}, 8, 4},
      {0.5, {}, 8, BadDouble},
      {1.01, four, 8, BadDouble},
      {0.5, four, 0, BadDouble},
      {0.5, four, 10, BadDouble},
      {std::nan(""), four, 8, BadDouble},
  };
  for (const auto& row : rows)
    EXPECT_EQ(QVQuantile(row.p, row.x, row.type), row.expected) << row.type << " " << row.p;
}

TEST(CenterAndScale, RobustAndClassical) {
  double center = -1, scale = -1;
  QVGetCenterAndScale(center, scale, true, {});
  EXPECT_EQ(center, 0.0);
  EXPECT_EQ(scale, 1.0);
  QVGetCenterAndScale(center, scale, false, {7});
  EXPECT_EQ(center, 7.0);
  EXPECT_EQ(scale, 1.0);
  QVGetCenterAndScale(center, scale, true, {1, 2, 3, 4, 10});
  EXPECT_EQ(center, 3.0);
  EXPECT_THAT(scale, IsCloseTo((6.0 - 5.0 / 3) * 0.7413008347047398, 1e-15));
  QVGetCenterAndScale(center, scale, true, {1, 2, 4, 9});
  EXPECT_EQ(center, 3.0);
  double lo = 0, hi = 0;
  QVGetXloXhiForSortedData(lo, hi, {1, 2, 3}, 2, 5);
  EXPECT_EQ(lo, 1.0);
  EXPECT_EQ(hi, 5.0);
  QVGetXloXhiForSortedData(lo, hi, {}, 2, 5);
  EXPECT_EQ(lo, 0.0);
  EXPECT_EQ(hi, 0.0);
}

using Svd = QVSVD<std::vector<double>>;

TEST(SvdDataModel, FitsALineAndTrainsItselfOrACopy) {
  Svd model(1, BadDouble);
  EXPECT_EQ(model.Predict({3}), BadDouble);
  EXPECT_FALSE(model.AddTraining({1, 2}, 0));
  EXPECT_TRUE(model.AddTraining({0}, 1));
  model.AddTraining({1}, 3);
  model.AddTraining({2}, 5);
  const Svd& constModel = model;
  EXPECT_THAT(constModel.Predict({3}), IsCloseTo(7.0, 1e-14));
  EXPECT_TRUE(model.GetCoefficients().empty());
  EXPECT_THAT(model.Predict({3}), IsCloseTo(7.0, 1e-14));
  EXPECT_THAT(model.GetCoefficients(), testing::Pointwise(testing::DoubleNear(1e-14), {2.0, 1.0}));
  QVSystem::QVScopedRecordingSink sink;
  EXPECT_EQ(constModel.Predict({3, 4}), BadDouble);
  EXPECT_THAT(sink.GetTexts(QVSystem::QVErrorLevel::Fatal),
              testing::ElementsAre(testing::HasSubstr("stats/krige_model_impl")));
  model.Clear();
  EXPECT_FALSE(model.Train());
}

// One equation, x + 2 y + b = 12 at (1, 2): the smallest solution is 2 (1, 2, 1).
TEST(SvdDataModel, TakesTheSmallestCoefficientsWhereExamplesLeaveThemOpen) {
  Svd model(2, BadDouble);
  model.AddTraining({1, 2}, 12);
  EXPECT_THAT(model.Predict({1, 2}), IsCloseTo(12.0, 1e-14));
  EXPECT_THAT(model.GetCoefficients(),
              testing::Pointwise(testing::DoubleNear(1e-14), {2.0, 4.0, 2.0}));
  model.AddTraining({std::nan(""), 0}, 1);
  EXPECT_EQ(model.Predict({1, 2}), BadDouble);
}

// Units may be such that the squares of a column, or the inverse of its length, are no doubles.
TEST(SvdDataModel, ColumnsMayBeOfAnyLength) {
  for (const double unit : {1e-310, 1e-200, 0.0, 1e200, 1e300}) {
    Svd model(1, BadDouble);
    const double slope = std::isnormal(unit) ? 2.0 / unit : 0.0;
    for (const double k : {0.0, 1.0, 3.0}) model.AddTraining({k * unit}, 1.0 + slope * (k * unit));
    ASSERT_TRUE(model.Train()) << unit;
    EXPECT_THAT(model.Predict({2.0 * unit}), IsCloseTo(slope > 0.0 ? 5.0 : 1.0, 1e-13)) << unit;
  }
}

}  // namespace
}  // namespace QVStats
