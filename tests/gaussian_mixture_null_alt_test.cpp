// Mixtures of an empirical null and an alternative, and the discoveries they call.

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <random>

#include "stats/api/gaussian_mixture_model.h"
#include "stats/api/stats_data_types.h"
#include "tests/support/matchers.h"
#include "tests/support/mixture_support.h"

namespace {

using namespace QVStats;
using testing::HasSubstr;
using Values = std::vector<double>;

/// 90 % from N(0, 1), the others from N(4, 1); the nulls first.
Values DrawScores(std::size_t count) {
  std::mt19937_64 engine(3);
  std::normal_distribution<double> normal;
  Values scores;
  for (std::size_t i = 0; i < count; ++i)
    scores.push_back(normal(engine) + (10 * i < 9 * count ? 0.0 : 4.0));
  return scores;
}

class NullAltMixture : public MixtureTest {};

TEST_F(NullAltMixture, SeedsComponentsBySlices) {
  Values data(100);
  std::iota(data.rbegin(), data.rend(), 0.0);
  const DirGaussGammaMixForEmpiricalNullAlt model(0.2, 2, 1, "x", {1, 1, 1}, data);
  Values seeds;
  for (const QVOneDimGaussMixComponent& component : model.GetModel().GetComponents()) {
    double m, kappa, a, b;
    component.GetBayesPriorGaussParams(m, kappa, a, b);
    seeds.push_back(m);
  }
  EXPECT_THAT(seeds, testing::ElementsAre(4.5, 14.5, 59.5));
}

TEST_F(NullAltMixture, SeparatesAKnownMixture) {
  const Values scores = DrawScores(5000);
  Values weights;
  std::vector<DirGaussGammaMixForEmpiricalNullAlt> models;
  QVStatModelResult result;
  FitGaussGammaMixModel(result, weights, models, 0.85, {{1, 1}, {1, 2}, {0, 1}}, "score", 0.9, 1.0,
                        scores);
  ASSERT_TRUE(result.IsSuccessful());
  EXPECT_THAT(std::accumulate(weights.begin(), weights.end(), 0.0), IsCloseTo(1.0, 1e-14));
  EXPECT_GT(weights[0], 0.5);
  EXPECT_EQ(weights[2], 0.0);
  EXPECT_EQ(models[2].GetNumAltComponents(result), std::numeric_limits<unsigned int>::max());
  EXPECT_THAT(result, FailedWith(QVStatModelFailureType::ObjectNotValid,
                                 "QVDirichletGaussGammaMixtureModel::GetNumAltComponents"));
  EXPECT_THAT(lines_.str(), HasSubstr("NumNull, NumAlt, OptimalFitness = 1 2 "));
  EXPECT_THAT(lines_.str(), HasSubstr("Best RESULT: numNull, NumAlt, fitness = 1 1 "));

  const DirGaussGammaMixForEmpiricalNullAlt& model = models[0];
  const double probNull = model.GetExpectedProbNull(result);
  EXPECT_THAT(probNull, IsCloseTo(0.9, 0.01));
  EXPECT_THAT(probNull + model.GetExpectedProbAlt(result), IsCloseTo(1.0, 1e-12));
  EXPECT_NEAR(model.GetPosteriorPredictiveNullDist(result).GetMean(result), 0.0, 0.05);
  EXPECT_NEAR(model.GetPosteriorPredictiveAltDist(result).GetMean(result), 4.0, 0.1);
  for (const double x : {-1.0, 2.0, 3.5})
    EXPECT_THAT(
        model.GetPosteriorPredictiveTotDist(result).GetDensity(x, result, true),
        IsCloseTo(
            probNull * model.GetPosteriorPredictiveNullDist(result).GetDensity(x, result, true) +
                (1 - probNull) *
                    model.GetPosteriorPredictiveAltDist(result).GetDensity(x, result, true),
            1e-12));
}

TEST_F(NullAltMixture, FrequentistComponentsRunForAFixedNumberOfCycles) {
  DirGaussMixForEmpiricalNullAlt model(0.85, 1, 1, "score", {0.9, 0.1}, DrawScores(5000));
  ASSERT_TRUE(model.FitModel(200).IsSuccessful());
  QVStatModelResult result(true);
  EXPECT_NEAR(model.GetPosteriorPredictiveNullDist(result).GetVariance(result), 1.0, 0.05);
  EXPECT_NEAR(model.GetPosteriorPredictiveAltDist(result).GetMean(result), 4.0, 0.1);
  Values params;
  EXPECT_TRUE(model.GetModelParams(params).IsSuccessful());
  EXPECT_EQ(params.size(), 6u);
  EXPECT_EQ(
      DirGaussMixForEmpiricalNullAlt(0.5, 1, 2, "x", {1, 1}, {1, 2}).FitModel(1).GetFailureType(),
      QVStatModelFailureType::ObjectNotValid);
}

TEST_F(NullAltMixture, FitsThatDoNotConvergeSaySo) {
  DirGaussGammaMixForEmpiricalNullAlt model(0.85, 1, 1, "score", {0.9, 0.1}, DrawScores(500));
  double fitness, expected;
  const QVStatModelResult result = model.FitModel(fitness, 1e-300, 1e-300, 3);
  EXPECT_THAT(result, FailedWith(QVStatModelFailureType::InternalLogicFailure,
                                 "DirGaussGammaMixForEmpiricalNullAlt::FitModel"));
  EXPECT_THAT(
      result.ReportStatResultDetails(),
      HasSubstr("Convergence Failure!! Num cycles, fitness difference, var lower bound = 3 "));
  QVStatModelResult query(true);
  expected = model.GetModel().GetModelFitness(query);
  EXPECT_THAT(fitness, IsCloseTo(expected, 1e-12));
}

// The exact rates of the mixture that the scores were drawn from.
TEST_F(NullAltMixture, FalseDiscoveryRates) {
  const Values scores = DrawScores(20000);
  DirGaussMixForEmpiricalNullAlt model(0.85, 1, 1, "score", {0.9, 0.1}, scores);
  ASSERT_TRUE(model.FitModel(300).IsSuccessful());
  const QVMixtureDiscovery discovery(model);
  ASSERT_TRUE(discovery.GetResultOfConstructor().IsSuccessful());
  QVStatModelResult result(true);
  for (const double x : {1.0, 2.0, 3.0}) {
    const double local = 1.0 / (1.0 + std::exp(4.0 * x - 8.0) / 9.0);
    EXPECT_NEAR(discovery.GetLocalFDR(result, x), local, 0.05) << x;
    const double null = 0.9 * std::erfc(x / std::sqrt(2.0));
    const double alternative = 0.1 * std::erfc((x - 4.0) / std::sqrt(2.0));
    EXPECT_NEAR(discovery.GetTailFDR(result, x), null / (null + alternative), 0.02) << x;
  }
  EXPECT_LT(discovery.GetLocalFDR(result, 60.0), 1e-20);  // where both densities underflow

  std::vector<std::size_t> called;
  ASSERT_TRUE(discovery.Call(called, 0.05, scores).IsSuccessful());
  const auto numFalse =
      std::count_if(called.begin(), called.end(), [](std::size_t i) { return i < 18000; });
  const double share = static_cast<double>(numFalse) / static_cast<double>(called.size());
  EXPECT_NEAR(share, 0.05, 0.015);
  Values qValues;
  discovery.GetQValues(qValues, scores);
  for (std::size_t i = 1; i < called.size(); ++i) {
    EXPECT_GE(scores[called[i - 1]], scores[called[i]]);
    EXPECT_LE(qValues[called[i - 1]], qValues[called[i]]);
  }
  EXPECT_EQ(discovery.GetLocalFDR(result, std::nan("")), QVStatsBadData::BadDouble);
  EXPECT_EQ(QVMixtureDiscovery(DirGaussMixForEmpiricalNullAlt())
                .Call(called, 0.1, scores)
                .GetFailureType(),
            QVStatModelFailureType::ObjectNotValid);
}

// tools/make_fdr_reference.R: 900 scores from N(0, 1) and 100 from N(3.5, 1), with the figures of
// R's fdrtool 1.2 from their upper-tail p-values. It takes the null as given, where the model fits
// it, which moves tail areas by a few hundredths; and it estimates the density of the p-values as a
// step function, whose steps are up to 0.28 from the exact local rate, so that these agree in the
// mean.
TEST_F(NullAltMixture, RatesAgreeWithFdrtool) {
  const Values table = ReadNumbers("fdr_reference.csv");
  const Values scores = TakeEvery(table, 0, 3), local = TakeEvery(table, 1, 3),
               tail = TakeEvery(table, 2, 3);
  ASSERT_EQ(scores.size(), 1000u);
  Values weights, qValues;
  std::vector<DirGaussGammaMixForEmpiricalNullAlt> models;
  QVStatModelResult result;
  FitGaussGammaMixModel(result, weights, models, 0.85, {{1, 1}}, "z", 0.9, 1.0, scores);
  ASSERT_TRUE(result.IsSuccessful());
  EXPECT_NEAR(models[0].GetExpectedProbNull(result), 0.9019828, 0.02);
  const QVMixtureDiscovery discovery(models[0]);
  ASSERT_TRUE(discovery.GetQValues(qValues, scores).IsSuccessful());
  double meanDifference = 0.0;
  for (std::size_t i = 0; i < scores.size(); ++i) {
    EXPECT_NEAR(qValues[i], tail[i], tail[i] < 0.05 ? 0.015 : 0.06) << scores[i];
    meanDifference += std::abs(discovery.GetLocalFDR(result, scores[i]) - local[i]) / 1000.0;
  }
  EXPECT_LT(meanDifference, 0.02);
  for (const double rate : {0.01, 0.05, 0.1, 0.2}) {
    std::vector<std::size_t> called;
    ASSERT_TRUE(discovery.Call(called, rate, scores).IsSuccessful());
    const auto theirs =
        std::count_if(tail.begin(), tail.end(), [&](double q) { return q <= rate; });
    EXPECT_NEAR(static_cast<double>(called.size()), static_cast<double>(theirs), 8.0) << rate;
  }
}

// Fits of what is no mixture end, and say so.
TEST_F(NullAltMixture, BadInputEndsAtOnce) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  Values gap = DrawScores(20000);
  gap[7] = nan;
  const struct {
    const char* what;
    Values data;
    bool isFitted;
  } cases[] = {{"no data: the prior", {}, true},
               {"constant", Values(20000, 1.5), false},
               {"a NaN", gap, false},
               {"more components than data", {1, 2, 5}, true}};
  for (const auto& [what, data, isFitted] : cases) {
    Values weights;
    std::vector<DirGaussGammaMixForEmpiricalNullAlt> models;
    QVStatModelResult result;
    FitGaussGammaMixModel(result, weights, models, 0.8, {{3, 2}}, "x", 0.9, 1.0, data);
    EXPECT_EQ(result.IsSuccessful(), isFitted) << what;
    EXPECT_THAT(weights, testing::ElementsAre(isFitted ? 1.0 : 0.0)) << what;
  }
  const DirGaussMixForEmpiricalNullAlt none(0.8, 0, 0, "x", {}, {1, 2});
  EXPECT_FALSE(none.GetModel().Valid());
}

}  // namespace
