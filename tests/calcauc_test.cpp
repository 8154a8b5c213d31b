#include "stats/api/calcauc.h"

#include <gmock/gmock.h>

#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <random>

#include "platform/system/error_handler.h"
#include "tests/support/matchers.h"

namespace QVStats {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(AUC, OfRankedLists) {
  const std::vector<std::pair<std::vector<bool>, double>> cases = {
      {{true, true, false, false}, 1.0},
      {{false, false, true, true}, 0.0},
      {{true, false, true, false}, 0.75},
  };
  for (const auto& [ranked, expected] : cases) {
    double auc = -1.0;
    ASSERT_TRUE(QVCalculateAUC(auc, ranked));
    EXPECT_EQ(auc, expected);
  }
  double auc = -1.0;
  for (const std::vector<bool>& ranked : {std::vector<bool>{}, {true, true}, {false}})
    EXPECT_FALSE(QVCalculateAUC(auc, ranked));
  EXPECT_EQ(auc, -1.0);
}

TEST(AUC, OfTheTopOfARanking) {
  double auc = -1.0;
  ASSERT_TRUE(QVCalculateAUC(auc, {}, 10, 90));
  EXPECT_EQ(auc, 0.5);
  ASSERT_TRUE(QVCalculateAUC(auc, {true, false}, 1, 1));
  EXPECT_EQ(auc, 1.0);
  // 2 seen actives above 3 unseen decoys; 1 decoy seen below 1 active; 1 unseen active ties.
  ASSERT_TRUE(QVCalculateAUC(auc, {true, false, true}, 3, 4));
  EXPECT_THAT(auc, IsCloseTo((3 * (2 + 3) * 0.5 + 1) / 12.0, 1e-15));

  QVSystem::QVScopedRecordingSink sink;
  EXPECT_FALSE(QVCalculateAUC(auc, {true, true}, 1, 1));
  EXPECT_FALSE(QVCalculateAUC(auc, {false, false}, 1, 1));
  EXPECT_THAT(sink.GetTexts(QVSystem::QVErrorLevel::Warning),
              testing::ElementsAre(
                  "QVCalculateAUC, total number of actives (Nact 1) is less than number of actives "
                  "there are known to be (nact 2)",
                  "QVCalculateAUC, total number of decoys (Ndec 1) is less than number of decoys "
                  "there are known to be (ndec 2)"));
}

double AUCByPairs(const std::vector<double>& actives, const std::vector<double>& decoys,
                  bool higherIsBetter) {
  double sum = 0.0;
  for (const double a : actives)
    for (const double d : decoys)
      sum += a == d ? 0.5 : ((higherIsBetter ? a > d : a < d) ? 1.0 : 0.0);
  return sum / static_cast<double>(actives.size() * decoys.size());
}

TEST(AUC, OfScoresEqualsTheCountOverAllPairs) {
  std::mt19937 engine(3);
  std::normal_distribution<double> normal;
  std::uniform_int_distribution<int> few(0, 9);
  const std::vector<std::function<double()>> sources = {
      [&] { return normal(engine); },
      [&] { return static_cast<double>(few(engine)); },
      [&] { return std::exp(40 * normal(engine)); },  // a few huge values: intervals cut again
      [&] { return 5.0; },
      [&] { return few(engine) == 0 ? kNaN : normal(engine); },
      [&] { return few(engine) == 0 ? kInfinity : -kInfinity; },
      [&] { return 4.9e-324 * few(engine); },
  };
  for (std::size_t kind = 0; kind < sources.size(); ++kind) {
    std::vector<double> actives(301), decoys(1702);
    for (double& a : actives) a = sources[kind]();
    for (double& d : decoys) d = sources[kind]();
    for (const bool higher : {true, false})
      EXPECT_EQ(QVCalculateAUC(actives, decoys, higher), AUCByPairs(actives, decoys, higher))
          << kind;
  }
  EXPECT_TRUE(std::isnan(QVCalculateAUC({}, {1.0}, true)));
  EXPECT_TRUE(std::isnan(QVCalculateAUC({1.0}, {}, true)));
}

// Two markers on 6 actives and 8 decoys. The expected values are those of the R package pROC 1.18:
// auc, sqrt(var(method = "delong")), roc.test(paired = TRUE), auc(partial.auc = c(1, 0.7)).
const std::vector<double> kActivesA = {0.9, 0.8, 0.8, 0.65, 0.3, 0.7};
const std::vector<double> kDecoysA = {0.1, 0.4, 0.35, 0.8, 0.2, 0.55, 0.3, 0.05};
const std::vector<double> kActivesB = {0.5, 0.9, 0.2, 0.6, 0.4, 0.7};
const std::vector<double> kDecoysB = {0.3, 0.45, 0.1, 0.6, 0.5, 0.2, 0.35, 0.15};

std::vector<double> Negated(std::vector<double> scores) {
  for (double& score : scores) score = -score;
  return scores;
}

TEST(AUC, DeLongErrorsAndPairedTest) {
  EXPECT_THAT(QVCalculateDeLongStandardError(kActivesA, kDecoysA, true),
              IsCloseTo(0.114136031690955, 1e-12));
  EXPECT_TRUE(std::isnan(QVCalculateDeLongStandardError({1.0}, kDecoysA, true)));
  const QVAUCComparison test = QVCompareAUC(kActivesA, kDecoysA, kActivesB, kDecoysB, true);
  EXPECT_EQ(test.aucA, 0.84375);
  EXPECT_EQ(test.aucB, 0.78125);
  EXPECT_THAT(test.z, IsCloseTo(0.444540279643866, 1e-12));
  EXPECT_THAT(test.pValue, IsCloseTo(0.656652013789544, 1e-12));
  const QVAUCComparison mirrored = QVCompareAUC(Negated(kActivesA), Negated(kDecoysA),
                                                Negated(kActivesB), Negated(kDecoysB), false);
  EXPECT_THAT(mirrored.z, IsCloseTo(test.z, 1e-12));
  EXPECT_TRUE(std::isnan(QVCompareAUC(kActivesA, kDecoysA, {1, 2}, kDecoysB, true).z));
  EXPECT_TRUE(std::isnan(QVCompareAUC(kActivesA, kDecoysA, kActivesA, kDecoysA, true).pValue));
}

TEST(AUC, HanleyAndMcNeilsError) {
  // A = 3/4 gives Q1 = 3/5 and Q2 = 9/14.
  EXPECT_THAT(QVCalculateStandardError(0.75, 2, 2),
              IsCloseTo(std::sqrt((3.0 / 16 + 3.0 / 80 + 9.0 / 112) / 4), 1e-14));
}

TEST(ROCCurve, AreasUnderIt) {
  const auto curve = QVGetROCCurve(kActivesA, kDecoysA, true);
  EXPECT_THAT(QVCalculatePartialAUC(curve, 1.0, false), IsCloseTo(0.84375, 1e-14));
  EXPECT_THAT(QVCalculatePartialAUC(curve, 0.3, false), IsCloseTo(0.1875, 1e-13));
  EXPECT_THAT(QVCalculatePartialAUC(curve, 0.3, true), IsCloseTo(0.779411764705882, 1e-13));
  // The diagonal: integral of x d(log10 x) from lambda to 1 over log10(1 / lambda).
  const std::vector<QVROCPoint> diagonal = {{0, 0, 2}, {1, 1, 1}};
  EXPECT_THAT(QVCalculateLogAUC(diagonal), IsCloseTo(0.999 / std::log(1000.0), 1e-14));
  EXPECT_THAT(QVCalculateLogAUC({{0, 0, 3}, {0, 1, 2}, {1, 1, 1}}), IsCloseTo(1.0, 1e-14));
  EXPECT_TRUE(std::isnan(QVCalculatePartialAUC({}, 0.5, false)));
  EXPECT_TRUE(std::isnan(QVCalculatePartialAUC(curve, 0.0, false)));
}

TEST(ROCCurve, TiesMakeOneSlantedStep) {
  const auto curve = QVGetROCCurve({2, 1}, {1, 0, kNaN, 1}, true);
  const std::vector<std::array<double, 3>> expected = {
      {0, 0, kInfinity}, {0, 0.5, 2}, {0.5, 1, 1}, {0.75, 1, 0}, {1, 1, -kInfinity}};
  ASSERT_EQ(curve.size(), expected.size());
  for (std::size_t i = 0; i < curve.size(); ++i) {
    EXPECT_EQ(curve[i].falsePositiveRate, expected[i][0]) << i;
    EXPECT_EQ(curve[i].truePositiveRate, expected[i][1]) << i;
    EXPECT_EQ(curve[i].threshold, expected[i][2]) << i;
  }
  EXPECT_TRUE(QVGetROCCurve({1.0}, {}, true).empty());
}

TEST(EarlyEnrichment, MatchesThePublishedMeasures) {
  // 5 actives among 40, at ranks 1, 3, 4, 7 and 12; values of RDKit's Scoring module.
  std::vector<bool> ranked(40, false);
  for (const std::size_t rank : {1, 3, 4, 7, 12}) ranked[rank - 1] = true;
  EXPECT_THAT(QVCalculateBEDROC(ranked, 20.0), IsCloseTo(0.7050883738275289, 1e-12));
  EXPECT_THAT(QVCalculateBEDROC(ranked, 5.0), IsCloseTo(0.804415656103854, 1e-12));
  EXPECT_THAT(QVCalculateEnrichmentFactor(ranked, 0.05), IsCloseTo(4.0, 1e-14));
  EXPECT_THAT(QVCalculateEnrichmentFactor(ranked, 0.1), IsCloseTo(6.0, 1e-14));
  EXPECT_THAT(QVCalculateEnrichmentFactor(ranked, 0.25), IsCloseTo(3.2, 1e-14));
  EXPECT_TRUE(std::isnan(QVCalculateBEDROC({true, true}, 20.0)));
  EXPECT_TRUE(std::isnan(QVCalculateEnrichmentFactor(ranked, 0.0)));
  // Stays finite where the hyperbolic functions of the textbook form overflow.
  EXPECT_TRUE(std::isfinite(QVCalculateBEDROC(ranked, 5000.0)));
}

}  // namespace
}  // namespace QVStats
