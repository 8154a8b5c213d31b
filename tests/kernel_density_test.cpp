#include "stats/api/kernel_density.h"

#include <gmock/gmock.h>

#include <cmath>

#include "stats/api/stats_data_types.h"
#include "tests/support/matchers.h"

namespace {

using namespace QVStats;
using Values = std::vector<double>;

const Values kSample = {2.1, 3.4, 3.9, 4.4, 5.0, 5.2, 7.7, 9.6};

// R: 0.9 * min(sd(x), diff(quantile(x, c(.25, .75), type = 8)) / 1.34) * length(x)^-0.2; the
// quartiles of the second sample are equal, the third has none, the last two are constant.
TEST(KernelDensity, BandwidthFollowsTheRuleOfThumb) {
  const struct {
    Values sorted;
    double bandwidth;
  } cases[] = {{kSample, 1.3515109011461155},
               {{1, 1, 1, 1, 1, 1, 9}, 1.84401253287874},
               {{1, 4}, 1.6620449580156367},
               {{-8, -8}, 0.4},
               {{0}, 1.0}};
  for (const auto& [sorted, bandwidth] : cases)
    EXPECT_THAT(QVGetKernelBandwidth(sorted), IsCloseTo(bandwidth, 1e-14)) << sorted.size();
  EXPECT_EQ(QVGetKernelBandwidth({}), QVStatsBadData::BadDouble);
}

// scipy.stats.norm.pdf((p - x) / 0.8).sum() / 6.4 at the ends and in the middle.
TEST(KernelDensity, IsTheSumOfTheKernels) {
  QVMath::QVDataSeries series;
  double xmin, xmax, ymin, ymax;
  ASSERT_TRUE(
      QVGetKernelDensityPlotPoints(series, xmin, xmax, ymin, ymax, kSample, 0.8, 3, 5.0, 5.0)
          .IsSuccessful());
  const double expected[] = {0.0006939547732427548, 0.10039006333891727, 0.0006925095199081128};
  for (std::size_t i = 0; i < 3; ++i)
    EXPECT_THAT(series.GetPoint(i).GetY(), IsCloseTo(expected[i], 1e-14)) << i;
  EXPECT_THAT(series.GetPoint(1).GetX(), IsCloseTo(5.85, 1e-14));
  EXPECT_EQ(ymax, series.GetPoint(1).GetY());

  QVGetKernelDensityPlotPoints(series, xmin, xmax, ymin, ymax, kSample, 0.05, 4001, -40.0, 90.0);
  EXPECT_EQ(xmin, -40.0);
  EXPECT_EQ(xmax, 90.0);
  double area = 0.0;
  for (const QVMath::QVDataPoint& point : series.GetPointVec()) area += point.GetY() * 130.0 / 4000;
  EXPECT_THAT(area, IsCloseTo(1.0, 1e-12));
  EXPECT_EQ(series.GetPoint(0).GetY(), 0.0);
}

TEST(KernelDensity, RefusesWhatHasNoDensity) {
  QVMath::QVDataSeries series;
  double a, b, c, d;
  const auto fail = [&](const Values& data, double bandwidth) {
    const auto result = QVGetKernelDensityPlotPoints(series, a, b, c, d, data, bandwidth, 9, 0, 1);
    EXPECT_EQ(series.GetNumPoints(), 0u);
    return result.GetFailureType();
  };
  EXPECT_EQ(fail({}, 1.0), QVStatModelFailureType::NoData);
  EXPECT_EQ(fail({1, 2}, 0.0), QVStatModelFailureType::LowerBoundViolated);
  EXPECT_EQ(fail({1, 2}, std::nan("")), QVStatModelFailureType::LowerBoundViolated);
  EXPECT_EQ(fail({1, QVStatsBadData::MissingDouble}, 1.0),
            QVStatModelFailureType::MissingOrBadResponseValue);
}

}  // namespace
