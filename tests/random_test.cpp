#include "platform/math/random.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>
#include <numeric>
#include <random>
#include <string>

#include "platform/math/special_functions.h"
#include "tests/support/matchers.h"

namespace QVMath {
namespace {

/// A generator and the distribution function of what it should draw.
struct LawCase {
  const char* name;
  std::shared_ptr<QVRealGenerator> generator;
  std::function<double(double)> cdf;
};
void PrintTo(const LawCase& row, std::ostream* out) { *out << row.name; }

double GaussCdf(double z) { return 0.5 * QVerfc(-z * 0.70710678118654752); }
double StudentsTCdf(double t, double nu) {
  const double tail = 0.5 * QVIncompleteBeta(nu / 2, 0.5, nu / (nu + t * t));
  return t < 0 ? tail : 1 - tail;
}
double GevCdf(double z, double shape) {
  const double base = 1 + shape * z;
  if (base <= 0) return shape > 0 ? 0 : 1;
  return std::exp(-std::pow(base, -1 / shape));
}

const LawCase kLaws[] = {
    {"Uniform", std::make_shared<QVUniformDoubleRNG>(-2, 3), [](double x) { return (x + 2) / 5; }},
    {"Gaussian", std::make_shared<QVGaussianRNG>(1, 2),
     [](double x) { return GaussCdf((x - 1) / 2); }},
    {"StudentsT", std::make_shared<QVStudentsTRNG>(-1, 0.5, 2.5),
     [](double x) { return StudentsTCdf((x + 1) / 0.5, 2.5); }},
    {"Gamma", std::make_shared<QVGammaRNG>(2.7, 0.4),
     [](double x) { return QVIncompleteGamma(2.7, x / 0.4); }},
    {"GammaOfSmallShape", std::make_shared<QVGammaRNG>(0.3, 2),
     [](double x) { return QVIncompleteGamma(0.3, x / 2); }},
    {"ChiSquared", std::make_shared<QVChiSquaredRNG>(3.5),
     [](double x) { return QVIncompleteGamma(1.75, x / 2); }},
    {"SnedecorsF", std::make_shared<QVSnedecorsFRNG>(4, 7),
     [](double x) { return QVIncompleteBeta(2, 3.5, 4 * x / (7 + 4 * x)); }},
    {"SnedecorsFOfFewDegrees", std::make_shared<QVSnedecorsFRNG>(0.15, 0.3),
     [](double x) {
       return x < 2 ? QVIncompleteBeta(0.075, 0.15, x / (2 + x))
                    : QVIncompleteBetaComplement(0.15, 0.075, 2 / (2 + x));
     }},
    {"Beta", std::make_shared<QVBetaRNG>(2.3, 0.8),
     [](double x) { return QVIncompleteBeta(2.3, 0.8, x); }},
    {"BetaOfSmallShapes", std::make_shared<QVBetaRNG>(0.05, 0.4),
     [](double x) { return QVIncompleteBeta(0.05, 0.4, x); }},
    {"Gumbel", std::make_shared<QVGumbelRNG>(3, 0.7),
     [](double x) { return std::exp(-std::exp(-(x - 3) / 0.7)); }},
    {"HeavyTailedExtremeValue", std::make_shared<QVGenExtremeValRNG>(0, 1, 0.4),
     [](double x) { return GevCdf(x, 0.4); }},
    {"BoundedExtremeValue", std::make_shared<QVGenExtremeValRNG>(1, 2, -0.3),
     [](double x) { return GevCdf((x - 1) / 2, -0.3); }},
};

class RandomLaw : public testing::TestWithParam<LawCase> {};
INSTANTIATE_TEST_SUITE_P(Laws, RandomLaw, testing::ValuesIn(kLaws),
                         [](const auto& row) { return std::string(row.param.name); });

// The Kolmogorov-Smirnov distance of 10^6 draws, and separately Pearson's chi-squared over 1000
// equally probable bins, each at a level of about 1e-6. The seed is fixed: no chance failure.
TEST_P(RandomLaw, FitsItsDistributionFunction) {
  constexpr std::size_t kDraws = 1000000, kBins = 1000;
  QVRanNumEngine engine(20261121);
  std::vector<double> p = GetParam().generator->Draw(engine, kDraws);
  std::transform(p.begin(), p.end(), p.begin(), GetParam().cdf);
  std::vector<double> observed(kBins, 0.0);
  for (const double u : p) {
    ASSERT_TRUE(u >= 0.0 && u <= 1.0);
    observed[std::min(kBins - 1, static_cast<std::size_t>(u * kBins))] += 1.0;
  }
  double chiSquared = 0.0;
  for (const double count : observed) chiSquared += (count - 1000.0) * (count - 1000.0) / 1000.0;
  EXPECT_LT(std::abs(chiSquared - 999.0), 4.9 * std::sqrt(2 * 999.0));
  std::sort(p.begin(), p.end());
  double distance = 0.0;
  for (std::size_t i = 0; i < kDraws; ++i)
    distance = std::max(distance, std::abs(p[i] - (static_cast<double>(i) + 0.5) / kDraws));
  EXPECT_LT(distance * std::sqrt(1.0 * kDraws), 2.7);
}

TEST_P(RandomLaw, BulkAndSingleDrawsAreTheSame) {
  QVRanNumEngine bulk(7), single(7);
  for (const double value : GetParam().generator->Draw(bulk, 100))
    EXPECT_EQ((*GetParam().generator)(single), value);
}

// The gamma variates of such shapes underflow; one is larger than the other all the same.
TEST(Random, QuotientsOfTinyShapes) {
  for (const double shape : {1e-3, 1e-300, 1e-320}) {
    QVRanNumEngine engine(31);
    const QVSnedecorsFRNG f(shape, shape);
    const QVBetaRNG beta(shape, shape);
    int numLargeF = 0, numLargeBeta = 0;
    for (int i = 0; i < 1000; ++i) {
      const double quotient = f(engine), share = beta(engine);
      ASSERT_TRUE(quotient >= 0.0 && share >= 0.0 && share <= 1.0) << shape;
      numLargeF += quotient > 1.0 ? 1 : 0;
      numLargeBeta += share > 0.5 ? 1 : 0;
    }
    EXPECT_NEAR(numLargeF, 500, 80) << shape;
    EXPECT_NEAR(numLargeBeta, 500, 80) << shape;
  }
}

TEST(Random, RefusesParametersWithNaN) {
  QVRanNumEngine engine;
  EXPECT_TRUE(std::isnan(QVGammaRNG(-1, 1)(engine)));
  EXPECT_TRUE(std::isnan(QVBetaRNG(1, 0)(engine)));
  EXPECT_TRUE(std::isnan(QVStudentsTRNG(0, 1, 0)(engine)));
  EXPECT_TRUE(std::isnan(QVUniformDoubleRNG(1, 1)(engine)));
  EXPECT_TRUE(std::isnan(QVGumbelRNG(0, -1)(engine)));
}

// The 10000th output of the default seed is named in the C++ standard, [rand.predef].
TEST(Random, TheEngineIsThatOfTheStandard) {
  for (const std::uint64_t seed : {std::uint64_t{5489}, std::uint64_t{0}, ~std::uint64_t{0}}) {
    QVRanNumEngine engine(seed);
    std::mt19937_64 expected(seed);
    for (int i = 0; i < 1000; ++i) ASSERT_EQ(engine(), expected()) << seed << ' ' << i;
    QVRanNumEngine copy(engine);
    EXPECT_EQ(copy(), engine());
    engine.Seed(1);
    EXPECT_EQ(engine(), std::mt19937_64(1)());
  }
  QVRanNumEngine engine;
  for (int i = 0; i < 9999; ++i) engine();
  EXPECT_EQ(engine(), 9981545732273789042u) << "the number that the standard names";
}

TEST(Random, IndicesDrawnTogetherAreThoseDrawnOneByOne) {
  // The largest counts refuse a quarter and a half of the bits.
  for (const std::uint64_t count : {std::uint64_t{0}, std::uint64_t{1}, std::uint64_t{1000},
                                    std::uint64_t{3} << 62, (std::uint64_t{1} << 63) + 1}) {
    QVRanNumEngine together(11), single(11);
    for (const std::size_t number : {0u, 1u, 311u, 312u, 313u, 1000u})
      together.DrawIndices(count, number, [&](std::uint64_t index) {
        ASSERT_EQ(index, single.GetIndex(count)) << count;
      });
    EXPECT_EQ(together(), single());
  }
}

// Pearson's chi-squared of 10^6 draws over 7 cells, at a level of 1e-6: 38.3.
TEST(Random, IntegersCoverTheirRangeEvenly) {
  constexpr int kDraws = 1000000;
  QVRanNumEngine engine(3);
  const QVUniformIntRNG law(-3, 3);
  std::vector<double> counts(7, 0.0);
  for (int i = 0; i < kDraws; ++i) {
    const int value = law(engine);
    ASSERT_TRUE(value >= -3 && value <= 3);
    ++counts[static_cast<std::size_t>(value + 3)];
  }
  double chiSquared = 0.0;
  for (const double count : counts)
    chiSquared += std::pow(count - kDraws / 7.0, 2) / (kDraws / 7.0);
  EXPECT_LT(chiSquared, 38.3);
  constexpr int kLowest = std::numeric_limits<int>::min(), kTop = std::numeric_limits<int>::max();
  double sum = 0.0;
  for (int i = 0; i < 100000; ++i) sum += QVUniformIntRNG(kLowest, kTop)(engine);
  EXPECT_LT(std::abs(sum / 100000), 2e7);
  EXPECT_EQ(QVUniformIntRNG(5, 2)(engine), 5);
}

// All 24 permutations of four indices, 24000 shuffles: each within 5 standard deviations.
TEST(Random, EveryPermutationIsAsLikely) {
  QVRanNumEngine engine(11);
  std::vector<int> counts(256, 0);
  for (int i = 0; i < 24000; ++i) {
    std::size_t code = 0;
    for (const std::size_t index : QVRandomShuffleOfIndices(4, engine)) code = code * 4 + index;
    ++counts[code];
  }
  EXPECT_EQ(std::count(counts.begin(), counts.end(), 0), 256 - 24);
  for (const int count : counts) {
    if (count > 0) {
      EXPECT_NEAR(count, 1000, 155);
    }
  }
  EXPECT_TRUE(QVRandomShuffleOfIndices(0, engine).empty());
}

TEST(Random, SamplesOfIndices) {
  QVRanNumEngine engine(13);
  const std::vector<std::size_t> candidates = {4, 8, 15, 16, 23, 42};
  std::vector<std::size_t> chosen, remaining;
  QVSampleWithoutReplacement(engine, chosen, remaining, 2, candidates);
  EXPECT_EQ(chosen.size(), 2u);
  chosen.insert(chosen.end(), remaining.begin(), remaining.end());
  EXPECT_THAT(chosen, testing::UnorderedElementsAreArray(candidates));
  QVSampleWithoutReplacement(engine, chosen, remaining, 9, candidates);
  EXPECT_THAT(chosen, testing::UnorderedElementsAreArray(candidates));
  EXPECT_TRUE(remaining.empty());
  EXPECT_THAT(QVSampleWithReplacement(engine, 50, candidates),
              testing::Each(testing::AnyOfArray(candidates)));
  EXPECT_TRUE(QVSampleWithReplacement(engine, 50, {}).empty());
}

}  // namespace
}  // namespace QVMath
