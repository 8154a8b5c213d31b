// Mixtures in d dimensions.

#include "stats/api/gaussian_mixture_multidim.h"

#include <gmock/gmock.h>

#include <cmath>
#include <random>

#include "platform/math/special_functions.h"
#include "stats/api/gaussian_mixture_model.h"
#include "stats/api/matrix.h"
#include "stats/api/stats_data_types.h"
#include "tests/support/matchers.h"
#include "tests/support/mixture_support.h"

namespace {

using namespace QVStats;
using Values = std::vector<double>;

const std::vector<std::string> kTwo = {"a", "b"};

QVGaussMixParam Wishart(const Values& m, double kappa, double nu, const Values& W,
                        const Values& L) {
  return {QVGaussMixParamType::GaussWishart,
          "gw",
          {"m", "kappa", "nu", "W", "L"},
          std::vector<Values>{m, {kappa}, {nu}, W, L}};
}
QVGaussMixParam Dirichlet(double alpha, double sum) {
  return {QVGaussMixParamType::DirichletWeight, "d", {"alpha", "sum"}, Values{alpha, sum}};
}

// psi(1) = -gamma, psi(3/2) = 2 - gamma - 2 log 2, psi(2) = 1 - gamma, psi(5/2) = psi(3/2) + 2/3.
TEST(MultiDimComponent, LogDeterminantsAndResponsibilities) {
  constexpr double gamma = 0.57721566490153286061;
  const double psi32 = 2.0 - gamma - 2.0 * std::log(2.0);
  const Values W = {4, 2, 2, 5}, L = {2, 0, 1, 2};  // det W = 16
  QVMultiDimGaussMixComponent component(kTwo, Dirichlet(1, 1), Wishart({1, 2}, 2, 3, W, L));
  QVStatModelResult result(true);
  const double asTold = component.GetExpectedLogDetGaussPrecision(result);
  EXPECT_THAT(asTold,
              IsCloseTo(1.0 - gamma + psi32 + 2 * std::log(2.0) + 2 * std::log(16.0), 1e-13));
  EXPECT_THAT(component.GetTextbookLogDetGaussPrecision(result),
              IsCloseTo(psi32 - gamma + 2 * std::log(2.0) + std::log(16.0), 1e-13));
  ASSERT_TRUE(component.EStepUpdateLogRelativeResponsibility({1, 2, 2, 1}).IsSuccessful());
  const double base = 0.5 * (asTold - 2 * std::log(2 * M_PI) - 1.0);
  EXPECT_THAT(component.EStepGetLogRelativeResponsibility(0), IsCloseTo(base, 1e-13));
  EXPECT_THAT(component.EStepGetLogRelativeResponsibility(1),  // (1, -1) W (1, -1)' = 5
              IsCloseTo(base - 0.5 * 3 * 5, 1e-13));
  EXPECT_EQ(component.CheckSizeResponsibilityVec(3).GetFailureType(),
            QVStatModelFailureType::MismatchBetweenPrivateVecSizes);

  Values m, kappa, nu;
  QVMultiDimGaussMixComponent wrong(kTwo, Dirichlet(1, 1), Dirichlet(1, 1));
  EXPECT_THAT(wrong.GetBayesPriorGaussWishartParams(m, kappa, nu, m, m),
              FailedWith(QVStatModelFailureType::InternalLogicFailure,
                         "QVMultiDimGaussMixComponent::GetBayesPriorGaussWishartParams"));
  EXPECT_EQ(wrong.GetExpectedLogDetGaussPrecision(result), QVStatsBadData::BadDouble);
  EXPECT_EQ(component.EStepUpdateLogRelativeResponsibility({1, 2, 3}).GetFailureType(),
            QVStatModelFailureType::WrongInputVectorSize);
}

// In one dimension Wishart(W, nu) is Gamma(nu / 2, rate 1 / (2 W)).
TEST(MultiDimComponent, IsTheGaussGammaComponentInOneDimension) {
  const Values data = {0.3, 1.9, 2.5, -0.7, 4.0};
  QVMultiDimGaussMixComponent multi({"x"}, Dirichlet(0.5, 1),
                                    Wishart({0.4}, 1.5, 3, {0.25}, {0.5}));
  QVOneDimGaussMixComponent one("x", Dirichlet(0.5, 1),
                                {QVGaussMixParamType::GaussGamma,
                                 "gg",
                                 {"m", "kappa", "a", "b"},
                                 Values{0.4, 1.5, 1.5, 2.0}});
  ASSERT_TRUE(multi.EStepUpdateByTextbook(data).IsSuccessful());
  ASSERT_TRUE(one.EStepUpdateLogRelativeResponsibility(data).IsSuccessful());
  for (std::size_t n = 0; n < data.size(); ++n) {
    EXPECT_THAT(multi.EStepGetLogRelativeResponsibility(n),
                IsCloseTo(one.EStepGetLogRelativeResponsibility(n), 1e-13));
    const double r = 0.15 * static_cast<double>(n + 1);
    multi.EStepFillResponsibilityAndLogResp(n, r, std::log(r));
    one.EStepFillResponsibilityAndLogResp(n, r, std::log(r));
  }
  ASSERT_TRUE(multi.MStepUpdateParams(data).IsSuccessful());
  ASSERT_TRUE(one.MStepUpdateParams(data).IsSuccessful());
  Values p, q;
  multi.GetComponentParams(p);
  one.GetComponentParams(q);
  EXPECT_THAT(p[0], IsCloseTo(q[0], 1e-14));
  EXPECT_THAT(p[1], IsCloseTo(q[1], 1e-14));
  EXPECT_THAT(p[2], IsCloseTo(q[4] / q[3], 1e-14));
}

class MultiDimMixture : public MixtureTest {};

// R's mclust 6.0, Mclust(faithful, G = 2, modelNames = "VVV"): maximum likelihood, so that the
// prior's few points show in the second digit.
TEST_F(MultiDimMixture, AgreesWithMclustOnOldFaithful) {
  QVMultiDimGaussMixModel model(2, {"eruptions", "waiting"}, 1.0, ReadNumbers("faithful.csv"));
  double fitness, before = -QVStatsBadData::BadDouble;
  QVStatModelResult result(true);
  for (int cycle = 0; cycle < 30; ++cycle) {
    ASSERT_TRUE(model.DoOneEMCycle().IsSuccessful());
    EXPECT_GE(model.GetModelFitness(result), before - 1e-9) << cycle;
    before = model.GetModelFitness(result);
  }
  ASSERT_TRUE(model.FitModel(fitness, 1e-8, 1000).IsSuccessful());
  EXPECT_THAT(fitness, IsCloseTo(before + std::log(2.0), 1e-6));
  Values p;
  ASSERT_TRUE(model.GetModelParams(p).IsSuccessful());
  constexpr double kExpected[] = {0.35592821, 2.0365235,   54.4798856, 0.069275209, 0.43630011,
                                  0.43630011, 33.70515324, 0.64407179, 4.289781,    79.969549,
                                  0.16981756, 0.93869749,  0.93869749, 36.02479639};
  ASSERT_EQ(p.size(), std::size(kExpected));
  for (std::size_t i = 0; i < p.size(); ++i) {
    const bool isCovariance = i % 7 > 2;
    EXPECT_THAT(p[i], IsCloseTo(kExpected[i], isCovariance ? 0.15 : 0.01)) << i;
  }
}

TEST_F(MultiDimMixture, FindsKnownClusters) {
  std::mt19937_64 engine(5);
  std::normal_distribution<double> normal;
  constexpr double kCenters[][2] = {{0, 0}, {6, 0}, {0, 8}};
  Values data;
  for (std::size_t n = 0; n < 600; ++n) {
    const double u = normal(engine), v = normal(engine);
    data.push_back(kCenters[n % 3][0] + u);
    data.push_back(kCenters[n % 3][1] + 0.8 * u + 0.6 * v);
  }
  double best = -QVStatsBadData::BadDouble, fitness;
  std::uint64_t bestCount = 0;
  for (std::uint64_t k = 1; k <= 5; ++k) {
    QVMultiDimGaussMixModel model(k, kTwo, 1.0, data);
    ASSERT_TRUE(model.FitModel(fitness, 1e-6, 50000).IsSuccessful()) << k;
    if (fitness > best) bestCount = k;
    best = std::max(best, fitness);
    if (k != 3) continue;
    std::vector<std::size_t> assigned;
    ASSERT_TRUE(model.GetAssignments(assigned).IsSuccessful());
    std::size_t numWrong = 0;
    for (std::size_t n = 3; n < assigned.size(); ++n)
      numWrong += assigned[n] != assigned[n % 3] ? 1 : 0;
    EXPECT_LT(numWrong, 6u);
  }
  EXPECT_EQ(bestCount, 3u);
}

TEST_F(MultiDimMixture, RefusesWhatCannotBeFitted) {
  double fitness;
  const auto isValid = [](std::uint64_t k, const Values& data) {
    return QVMultiDimGaussMixModel(k, kTwo, 1.0, data).Valid();
  };
  EXPECT_TRUE(isValid(1, {1, 2, 3, 5}));
  EXPECT_TRUE(isValid(4, {1, 2, 3, 5}));  // more components than points
  EXPECT_FALSE(isValid(0, {1, 2, 3, 5}));
  EXPECT_FALSE(isValid(1, {}));
  EXPECT_FALSE(isValid(1, {1, 2, 3}));
  EXPECT_FALSE(isValid(1, {1, 2, 3, std::nan("")}));
  EXPECT_FALSE(isValid(1, {1, 2, 1, 5}));  // constant in one variable
  EXPECT_THAT(
      QVMultiDimGaussMixModel().FitModel(fitness, 1e-3, 5),
      FailedWith(QVStatModelFailureType::ObjectNotValid, "QVMultiDimGaussMixModel::FitModel"));
  QVMultiDimGaussMixModel model(2, kTwo, 1.0, ReadNumbers("faithful.csv"));
  EXPECT_EQ(model.FitModel(fitness, 1e-300, 3).GetFailureType(),
            QVStatModelFailureType::InternalLogicFailure);
}

}  // namespace
