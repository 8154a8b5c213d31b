#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

#include "platform/depict/plot.h"

namespace QVDepict {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

std::vector<const QVDrawing*> Select(const QVImage& image, QVDrawing::Kind kind) {
  std::vector<const QVDrawing*> selected;
  for (const QVDrawing& drawing : image.GetDrawings())
    if (drawing.kind == kind) selected.push_back(&drawing);
  return selected;
}

std::vector<std::string> GetTexts(const QVImage& image) {
  std::vector<std::string> texts;
  for (const QVDrawing* drawing : Select(image, QVDrawing::Kind::Text))
    texts.push_back(drawing->text);
  return texts;
}

TEST(Ticks, AreRoundAndInside) {
  EXPECT_THAT(QVGetTicks(0.0, 10.0, 6), ElementsAre(0.0, 2.0, 4.0, 6.0, 8.0, 10.0));
  EXPECT_THAT(QVGetTicks(-0.31, 0.22, 6),
              testing::Pointwise(testing::DoubleEq(), {-0.3, -0.2, -0.1, 0.0, 0.1, 0.2}));
  EXPECT_THAT(QVGetTicks(1.0, 1.0, 5), IsEmpty());
  EXPECT_THAT(QVGetTicks(kNaN, 1.0, 5), IsEmpty());
  EXPECT_EQ(QVGetTickText(0.30000000000000004, 0.1), "0.3");
  EXPECT_EQ(QVGetTickText(2500.0, 500.0), "2500");
  EXPECT_EQ(QVGetTickText(1.5e7, 5e6), "1.5e+07");
}

TEST(Plot, PutsPointsWhereTheAxesSay) {
  QVPlot plot;
  plot.SetXRange(0.0, 10.0).SetYRange(0.0, 1.0).AddPoints({0.0, 10.0, 5.0}, {0.0, 1.0, 0.5});
  QVImage image(300.0, 200.0);
  ASSERT_TRUE(plot.Render(image));
  const auto circles = Select(image, QVDrawing::Kind::Circle);
  ASSERT_EQ(circles.size(), 3u);
  const QV2DPoint low = circles[0]->points[0];
  const QV2DPoint high = circles[1]->points[0];
  const QV2DPoint middle = circles[2]->points[0];
  EXPECT_LT(low.x, high.x);
  EXPECT_GT(low.y, high.y) << "y grows upwards";
  EXPECT_DOUBLE_EQ(middle.x, 0.5 * (low.x + high.x));
  EXPECT_DOUBLE_EQ(middle.y, 0.5 * (low.y + high.y));
}

TEST(Plot, LeavesOutWhatHasNoPlace) {
  QVPlot plot;
  plot.SetYLogarithmic(true)
      .AddPoints({1.0, 2.0, kNaN, 4.0}, {1.0, -1.0, 1.0, 100.0})
      .AddLine({1.0, 2.0, 3.0, 4.0, 5.0}, {1.0, 10.0, std::numeric_limits<double>::max(), 1.0, 2.0},
               "", QVSystem::QVRed);
  QVImage image(300.0, 200.0);
  ASSERT_TRUE(plot.Render(image));
  EXPECT_EQ(Select(image, QVDrawing::Kind::Circle).size(), 2u);
  std::size_t runs = 0;
  for (const QVDrawing* line : Select(image, QVDrawing::Kind::Line))
    runs += line->pen.GetLineColor() == QVSystem::QVRed ? 1 : 0;
  EXPECT_EQ(runs, 2u) << "a bad value interrupts the line";
}

TEST(Plot, CutsLinesAtItsFrame) {
  QVPlot plot;
  plot.SetXRange(0.0, 1.0).SetYRange(0.0, 1.0).AddLine({-1e6, 1e6}, {0.5, 0.5}, "far",
                                                       QVSystem::QVRed);
  QVImage image(300.0, 200.0);
  ASSERT_TRUE(plot.Render(image));
  for (const QVDrawing& drawing : image.GetDrawings())
    for (const QV2DPoint& point : drawing.points) {
      EXPECT_GE(point.x, 0.0);
      EXPECT_LE(point.x, 300.0);
    }
  EXPECT_THAT(GetTexts(image), testing::Contains("far"));
}

// Dots as long as these can be told apart, else cells that are darkest where most points are.
TEST(Plot, OfAMillionPointsIsAGridOfShades) {
  std::mt19937 engine(3);
  std::normal_distribution<double> normal;
  std::vector<double> x(1000000);
  std::vector<double> y(x.size());
  for (std::size_t i = 0; i < x.size(); ++i) {
    x[i] = normal(engine);
    y[i] = x[i] + normal(engine);
  }
  QVImage image(400.0, 300.0);
  ASSERT_TRUE(QVPlot().AddPoints(x, y).AddLine(x, y).Render(image));
  EXPECT_THAT(Select(image, QVDrawing::Kind::Circle), IsEmpty());
  const auto cells = Select(image, QVDrawing::Kind::Polygon);
  EXPECT_LT(cells.size(), 5000u);
  const auto alphaOf = [](const QVDrawing* cell) { return cell->pen.GetFillColor().GetA(); };
  const auto darkest = std::max_element(
      cells.begin(), cells.end(),
      [&](const QVDrawing* a, const QVDrawing* b) { return alphaOf(a) < alphaOf(b); });
  EXPECT_NEAR((*darkest)->points[0].x, 215.0, 60.0) << "in the middle of the plot";
  EXPECT_NEAR((*darkest)->points[0].y, 140.0, 60.0);

  QVImage constant(400.0, 300.0);
  ASSERT_TRUE(QVPlot().AddPoints(std::vector<double>(20000, 1.0), y).Render(constant));
  EXPECT_GT(Select(constant, QVDrawing::Kind::Circle).size(), 10u) << "few places are dots";
}

TEST(Plot, WithNothingToShowOrNoRoomDrawsNothing) {
  QVImage image(300.0, 200.0);
  EXPECT_FALSE(QVPlot().Render(image));
  EXPECT_FALSE(QVPlot().AddPoints({kNaN}, {1.0}).Render(image));
  QVImage small(1.0, 1.0);
  EXPECT_FALSE(QVPlot().AddPoints({1.0}, {1.0}).Render(small));
  EXPECT_THAT(image.GetDrawings(), IsEmpty());
  EXPECT_THAT(small.GetDrawings(), IsEmpty());
}

TEST(Plot, OfOneValueHasARangeAroundIt) {
  QVImage image(300.0, 200.0);
  EXPECT_TRUE(QVPlot().AddPoints({7.0}, {7.0}).Render(image));
  EXPECT_TRUE(QVPlot().AddBars({0.0, 1.0}, {0.0}).Render(image));
}

}  // namespace
}  // namespace QVDepict
