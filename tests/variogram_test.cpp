#include "stats/api/variogram.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>
#include <random>

#include "platform/system/error_handler.h"
#include "stats/api/full_variogram.h"
#include "tests/support/matchers.h"

namespace QVStats {
namespace {

using QVSystem::QVErrorLevel;
using QVSystem::QVScopedRecordingSink;
using Pairs = std::vector<std::pair<double, double>>;

Pairs MakePairs(std::size_t identical, std::size_t others) {
  Pairs pairs(identical, {0.0, 1.0});
  for (std::size_t i = others; i > 0; --i) pairs.emplace_back(0.001 * static_cast<double>(i), 2.0);
  return pairs;
}

std::vector<unsigned int> GetBinSizes(const QVFullVariogramBase& variogram) {
  std::vector<unsigned int> sizes;
  for (unsigned int bin = 0; bin < variogram.GetNumBins(); ++bin)
    sizes.push_back(variogram.GetNumBinElements(bin));
  return sizes;
}

// Worked by hand from the rule: m/15 (100 from 1500 pairs on), doubling up to m/5, no small tail.
TEST(Variogram, BinSizesDoubleUpToAFifth) {
  const struct {
    std::size_t identical;
    std::size_t others;
    bool usable;
    std::vector<unsigned int> sizes;
  } rows[] = {
      {0, 0, false, {}},
      {0, 1, true, {1}},
      {0, 10, true, {1, 1, 2, 2, 2, 2}},
      {60, 300, true, {60, 20, 40, 60, 60, 60, 60}},
      {0, 2000, true, {100, 200, 400, 400, 400, 500}},
      {0, 1499, true, {100, 200, 300, 300, 599}},
      {20, 0, true, {1, 3, 4, 4, 4, 4}},
      {49, 0, true, {3, 7, 10, 10, 19}},
      {50, 0, false, {50}},
  };
  for (const auto& row : rows) {
    Pairs pairs = MakePairs(row.identical, row.others);
    QVFullVariogramImpl full;
    EXPECT_EQ(QVSetupVariogram(full, pairs, true), row.usable);
    EXPECT_EQ(GetBinSizes(full), row.sizes) << row.identical << " " << row.others;
    QVVariogramImpl variogram;
    EXPECT_EQ(QVSetupVariogram(variogram, pairs, true), row.usable);
    EXPECT_EQ(variogram.GetNumBins(), row.sizes.size());
  }
}

void ExpectSameBins(const QVVariogramBase& variogram, const QVVariogramBase& expected) {
  ASSERT_EQ(variogram.GetNumBins(), expected.GetNumBins());
  for (unsigned int bin = 0; bin < expected.GetNumBins(); ++bin) {
    EXPECT_THAT(variogram.GetDistance(bin), IsCloseTo(expected.GetDistance(bin), 1e-12)) << bin;
    EXPECT_THAT(variogram.GetSemivariance(bin), IsCloseTo(expected.GetSemivariance(bin), 1e-12))
        << bin;
  }
}

// The full variogram sorts, which shares nothing with selection by buckets. Distances on a coarse
// grid put whole bins of ties on the edges, where only the differences tell members apart.
TEST(Variogram, SelectionFindsTheBinsThatSortingFinds) {
  std::mt19937 engine(411);
  std::normal_distribution<double> noise;
  std::uniform_real_distribution<double> uniform;
  for (const bool onGrid : {false, true})
    for (const double identicalShare : {0.0, 0.0005, 0.1})
      for (const double power : {1.0, 0.25, 12.0}) {
        Pairs pairs(20000);
        for (auto& [distance, difference] : pairs) {
          distance = std::pow(uniform(engine), power);
          if (onGrid) distance = std::round(8.0 * distance) / 8.0;
          if (uniform(engine) < identicalShare) distance = 0.0;
          difference = noise(engine);
        }
        Pairs copy = pairs;
        QVFullVariogramImpl full;
        QVVariogramImpl variogram;
        EXPECT_TRUE(QVSetupVariogram(full, copy, true));
        EXPECT_TRUE(QVSetupVariogram(variogram, pairs, true));
        ExpectSameBins(variogram, QVVariogramImpl(full));
      }
}

TEST(Variogram, DistancesThatNoBucketHoldsAreSorted) {
  for (const double odd : {std::numeric_limits<double>::infinity(), std::nan(""), 0.5}) {
    Pairs pairs(5000, {0.5, 2.0});
    pairs[17].first = odd;
    QVVariogramImpl variogram;
    EXPECT_TRUE(QVSetupVariogram(variogram, pairs, true));
    EXPECT_EQ(variogram.GetDistance(0), 0.5);
    EXPECT_EQ(variogram.GetSemivariance(5), 2.0);
  }
}

TEST(Variogram, WithoutSortingThePairsStandAsTheyAre) {
  Pairs pairs = {{3, 2}, {1, 4}, {2, 6}};
  QVVariogramImpl variogram;
  EXPECT_TRUE(QVSetupVariogram(variogram, pairs, false));
  ASSERT_EQ(variogram.GetNumBins(), 3u);
  EXPECT_EQ(variogram.GetDistance(0), 3.0);
  EXPECT_EQ(variogram.GetSemivariance(1), 8.0);
}

TEST(Variogram, HandlesKeepWhatTheyWereMadeFrom) {
  QVVariogramImpl variogram;
  variogram.Push(1.0, 2.0);
  const QVVariogram handle(variogram);
  variogram.Clear();
  EXPECT_EQ(handle.GetNumBins(), 1u);
  EXPECT_EQ(handle.GetSemivariance(0), 2.0);

  QVScopedRecordingSink sink;
  EXPECT_EQ(handle.GetDistance(1), 0.0);
  QVFullVariogramImpl full;
  EXPECT_EQ(QVFullVariogram(full).GetDistance(0, 0), 0.0);
  EXPECT_EQ(sink.GetTexts(QVErrorLevel::Fatal).size(), 2u);
  full.Push({1.0}, {});
  EXPECT_EQ(full.GetNumBins(), 0u);
  EXPECT_THAT(sink.GetTexts(QVErrorLevel::Warning),
              testing::ElementsAre("QVFullVariogramImpl::Push : Vectors differ in size"));
}

}  // namespace
}  // namespace QVStats
