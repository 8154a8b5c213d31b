#include "stats/api/two_dim_function_grid.h"

#include <gmock/gmock.h>

#include <cmath>
#include <functional>
#include <stdexcept>

#include "tests/support/matchers.h"

namespace QVStats {
namespace {

using Chain = std::vector<std::string>;
using SeriesVec = std::vector<QVMath::QVDataSeries>;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
namespace Failure = QVStatModelFailureType;

/// A grid of unit steps from the origin.
QVTwoDimFuncGrid MakeGrid(unsigned int numX, unsigned int numY,
                          const std::function<double(double, double)>& function) {
  std::vector<double> values;
  for (unsigned int j = 0; j < numY; ++j)
    for (unsigned int i = 0; i < numX; ++i) values.push_back(function(i, j));
  return QVTwoDimFuncGrid(numX, numY, 1.0, 1.0, 0.0, 0.0, values);
}

/// Plots without writing to the terminal.
struct Plot {
  Plot(QVTwoDimFuncGrid grid, double level) {
    testing::internal::CaptureStdout();
    result = grid.PlotContour(level, series);
    output = testing::internal::GetCapturedStdout();
  }
  QVStatModelResult result;
  SeriesVec series;
  std::string output;
};

using Points = std::vector<std::pair<double, double>>;
Points PointsOf(const QVMath::QVDataSeries& series) {
  Points points;
  for (const QVMath::QVDataPoint& point : series.GetPointVec())
    points.emplace_back(point.GetX(), point.GetY());
  return points;
}

// Interpolation is exact for a linear function, so every point lies on its line, and one lies on
// each grid line that it crosses.
TEST(TwoDimFuncGrid, LineFromTheBottomToTheRight) {
  std::vector<double> values;
  for (int j = 0; j < 4; ++j)
    for (int i = 0; i < 4; ++i) values.push_back((10 + 0.5 * i) - 2 * (3 + 0.25 * j));
  const Plot plot(QVTwoDimFuncGrid(4, 4, 0.5, 0.25, 10, 3, values), 4.75);
  ASSERT_TRUE(plot.result.IsSuccessful());
  ASSERT_THAT(plot.series, SizeIs(1));
  EXPECT_THAT(PointsOf(plot.series[0]),
              ElementsAre(std::pair(10.75, 3.0), std::pair(11.0, 3.125), std::pair(11.25, 3.25),
                          std::pair(11.5, 3.375)));
  EXPECT_EQ(plot.output, "num intersecting edges = 4\ninit cell: 1 0 0\n");
}

TEST(TwoDimFuncGrid, ClosedLoopEndsWithItsFirstPoint) {
  const auto paraboloid = [](double x, double y) { return -std::hypot(x - 10.3, y - 9.8); };
  const Plot plot(MakeGrid(21, 21, paraboloid), -6.0);
  ASSERT_TRUE(plot.result.IsSuccessful());
  ASSERT_THAT(plot.series, SizeIs(1));
  const Points points = PointsOf(plot.series[0]);
  EXPECT_EQ(points.front(), points.back());
  // The chord of an arc over one step leaves the circle by less than 1 / (8 radius).
  for (const auto& [x, y] : points) EXPECT_NEAR(std::hypot(x - 10.3, y - 9.8), 6.0, 1.0 / 48.0);
  EXPECT_THAT(
      plot.output,
      testing::StartsWith("num intersecting edges = " + std::to_string(points.size() - 1) + "\n"));
}

// Circles around two corners reach the bottom and the right; one around the middle is found last.
TEST(TwoDimFuncGrid, BranchesComeFromTheBoundariesFirst) {
  const auto bumps = [](double x, double y) {
    const auto bump = [&](double cx, double cy) {
      return std::exp(-0.5 * ((x - cx) * (x - cx) + (y - cy) * (y - cy)));
    };
    return bump(10.1, 10.2) + bump(19.6, 0.3) + bump(5.2, -0.4) + bump(12.3, 19.7) +
           bump(19.9, 12.1);
  };
  const Plot plot(MakeGrid(21, 21, bumps), 0.3);
  ASSERT_TRUE(plot.result.IsSuccessful()) << plot.result.ReportStatResultDetails();
  ASSERT_THAT(plot.series, SizeIs(5));
  const auto startsAt = [&](std::size_t branch) { return PointsOf(plot.series[branch]).front(); };
  EXPECT_EQ(startsAt(0).second, 0.0);
  EXPECT_EQ(startsAt(1).second, 0.0);
  EXPECT_LT(startsAt(0).first, startsAt(1).first);
  EXPECT_EQ(startsAt(2).second, 20.0);
  EXPECT_EQ(startsAt(3).first, 20.0);
  EXPECT_EQ(startsAt(4), PointsOf(plot.series[4]).back());
}

TEST(TwoDimFuncGrid, LevelOutsideTheValuesHasNoBranches) {
  const auto plane = [](double x, double y) { return x + y; };
  for (const double level : {-1.0, 7.0}) {
    const Plot plot(MakeGrid(4, 4, plane), level);
    EXPECT_TRUE(plot.result.IsSuccessful());
    EXPECT_THAT(plot.series, IsEmpty());
    EXPECT_EQ(plot.output, "num intersecting edges = 0\n");
  }
}

TEST(TwoDimFuncGrid, GridsWithoutCellsHaveNoBranches) {
  const auto plane = [](double x, double y) { return x + y; };
  for (const auto& [numX, numY] : {std::pair(1u, 5u), {5u, 1u}, {1u, 1u}, {0u, 0u}, {0u, 3u}}) {
    const Plot plot(MakeGrid(numX, numY, plane), 1.5);
    EXPECT_TRUE(plot.result.IsSuccessful()) << numX << " x " << numY;
    EXPECT_THAT(plot.series, IsEmpty());
  }
}

// The nodes on the level count as above it: the contour passes beside them, within the margin.
TEST(TwoDimFuncGrid, ValuesAtTheLevelAreMovedOffIt) {
  const auto plane = [](double x, double) { return x; };
  const Plot plot(MakeGrid(4, 4, plane), 2.0);
  ASSERT_TRUE(plot.result.IsSuccessful());
  ASSERT_THAT(plot.series, SizeIs(1));
  ASSERT_THAT(PointsOf(plot.series[0]), SizeIs(4));
  for (const auto& [x, y] : PointsOf(plot.series[0])) {
    EXPECT_LT(x, 2.0);
    EXPECT_NEAR(x, 2.0, 1e-13);
  }
}

TEST(TwoDimFuncGrid, OneGridServesManyLevels) {
  QVTwoDimFuncGrid grid = MakeGrid(15, 15, [](double x, double y) {
    return std::exp(-0.05 * ((x - 7.2) * (x - 7.2) + (y - 6.7) * (y - 6.7)));
  });
  const double highest = grid.GetMaxFuncValue();
  SeriesVec series;
  testing::internal::CaptureStdout();
  for (const double part : {0.25, 0.5, 0.75})
    EXPECT_TRUE(grid.PlotContour(part * highest, series).IsSuccessful());
  testing::internal::GetCapturedStdout();
  EXPECT_THAT(series, SizeIs(3));
  EXPECT_EQ(grid.GetMaxFuncValue(), highest);
}

TEST(TwoDimFuncGrid, SaddleEndsThePlot) {
  const auto saddle = [](double x, double y) { return (x - 1.5) * (y - 1.5); };
  const Plot plot(MakeGrid(4, 4, saddle), 0.01);
  EXPECT_THAT(plot.result, FailedAlong(Failure::InternalLogicFailure,
                                       (Chain{"QVTwoDimFuncGrid::CheckNumGridCellIntersections",
                                              "QVTwoDimFuncGrid::ProcessGridCell",
                                              "QVTwoDimFuncGrid::GetBranchOfContour",
                                              "QVTwoDimFuncGrid::PlotContour"}),
                                       Chain{"Number of New Intersections in grid is 3"}));
}

// A horizontal line has its ends on the left and on the right; the right is searched first.
TEST(TwoDimFuncGrid, BranchToTheLeftBoundaryIsFoundFromTheRight) {
  const Plot plot(MakeGrid(4, 4, [](double, double y) { return y; }), 1.25);
  ASSERT_TRUE(plot.result.IsSuccessful());
  ASSERT_THAT(plot.series, SizeIs(1));
  EXPECT_THAT(PointsOf(plot.series[0]), ElementsAre(std::pair(3.0, 1.25), std::pair(2.0, 1.25),
                                                    std::pair(1.0, 1.25), std::pair(0.0, 1.25)));
}

// A branch from the left boundary to the left boundary, with its lowest point there: the first
// edge stays set, but the number of crossings is used up.
TEST(TwoDimFuncGrid, BranchFromTheLeftBoundary) {
  const auto halfDisc = [](double x, double y) { return x * x + (y - 5) * (y - 5); };
  const Plot plot(MakeGrid(11, 11, halfDisc), 9.6);
  ASSERT_TRUE(plot.result.IsSuccessful()) << plot.result.ReportStatResultDetails();
  ASSERT_THAT(plot.series, SizeIs(1));
  const Points points = PointsOf(plot.series[0]);
  EXPECT_EQ(points.front().first, 0.0);
  EXPECT_EQ(points.back().first, 0.0);
  EXPECT_LT(points.front().second, points.back().second);
}

// A circle cut by the left boundary: the scan starts inside it, the branch ends on the boundary,
// and nothing uses up the edge where it started.
TEST(TwoDimFuncGrid, BranchThatUsesNothingEndsThePlot) {
  const auto disc = [](double x, double y) { return std::hypot(x - 2.1, y - 5.2); };
  const Plot plot(MakeGrid(11, 11, disc), 3.5);
  EXPECT_THAT(
      plot.result,
      FailedAlong(Failure::InternalLogicFailure,
                  (Chain{"QVTwoDimFuncGrid::GetBranchOfContour", "QVTwoDimFuncGrid::PlotContour"}),
                  Chain{"Branch uses no intersection"}));
  ASSERT_THAT(plot.series, SizeIs(1));
  EXPECT_EQ(PointsOf(plot.series[0]).back().first, 0.0);
}

// Whatever the values, tracing ends.
TEST(TwoDimFuncGrid, EndsForAnyValues) {
  unsigned int state = 1;
  for (int trial = 0; trial < 500; ++trial) {
    const unsigned int size = 2 + static_cast<unsigned int>(trial) % 6;
    const QVTwoDimFuncGrid grid = MakeGrid(size, size, [&](double, double) {
      state = state * 1664525u + 1013904223u;
      const unsigned int digit = (state >> 24) % 12;
      if (digit == 11) return std::nan("");
      return digit < 6 ? 0.0 : static_cast<double>(digit) - 6;
    });
    const Plot plot(grid, 1.0);
    EXPECT_LE(plot.series.size(), 2u * size * size);
  }
}

TEST(TwoDimFuncGrid, NodeWithoutAValueIsOutOfRange) {
  QVTwoDimFuncGrid grid(3, 3, 1, 1, 0, 0, {1, 2, 3});
  EXPECT_THROW(grid.SetupContour(1.5), std::out_of_range);
}

}  // namespace
}  // namespace QVStats
