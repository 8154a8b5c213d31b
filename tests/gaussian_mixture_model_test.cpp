// One-dimensional mixtures: building blocks, the engine, the Dirichlet model.

#include "stats/api/gaussian_mixture_model.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

#include "platform/math/dense_kernels.h"
#include "platform/math/special_functions.h"
#include "stats/api/stats_data_types.h"
#include "tests/support/matchers.h"
#include "tests/support/mixture_support.h"

namespace {

using namespace QVStats;
namespace Type = QVGaussMixParamType;
using QVStatsBadData::BadDouble;
using testing::ElementsAre;
using testing::HasSubstr;
using Values = std::vector<double>;

const double kNaN = std::numeric_limits<double>::quiet_NaN();

QVGaussMixParam Weight(double weight) {
  return {Type::FrequentistWeight, "w", {"pi"}, Values{weight}};
}
QVGaussMixParam Dirichlet(double alpha, double sum) {
  return {Type::DirichletWeight, "d", {"alpha", "sum"}, Values{alpha, sum}};
}
QVGaussMixParam Gauss(double mean, double precision) {
  return {Type::FrequentistGauss, "g", {"mean", "precision"}, Values{mean, precision}};
}
QVGaussMixParam GaussGamma(double m, double kappa, double a, double b) {
  return {Type::GaussGamma, "gg", {"m", "kappa", "a", "b"}, Values{m, kappa, a, b}};
}

Values ParamsOf(const QVOneDimGaussMixComponent& component) {
  Values values;
  EXPECT_TRUE(component.GetComponentParams(values).IsSuccessful());
  return values;
}

/// A component that holds all of the data.
QVOneDimGaussMixComponent FillWith(const QVGaussMixParam& weight, const QVGaussMixParam& gauss,
                                   const Values& data, double responsibility) {
  QVOneDimGaussMixComponent component("c", weight, gauss);
  EXPECT_TRUE(component.EStepUpdateLogRelativeResponsibility(data).IsSuccessful());
  for (std::size_t n = 0; n < data.size(); ++n)
    component.EStepFillResponsibilityAndLogResp(n, responsibility, std::log(responsibility));
  return component;
}

Values DrawThreeClusters(std::size_t count) {
  std::mt19937_64 engine(11);
  std::normal_distribution<double> normal;
  Values data;
  for (std::size_t i = 0; i < count; ++i)
    data.push_back(static_cast<double>(i % 3) * 8.0 + normal(engine) * (1.0 + 0.2 * double(i % 3)));
  return data;
}

TEST(GaussMixParam, ReportsWhatCannotBeRead) {
  QVStatModelResult result(true);
  EXPECT_EQ(QVGaussMixParam().GetCurrentOrPosteriorParamVal(result, 0), BadDouble);
  EXPECT_THAT(result, FailedWith(QVStatModelFailureType::ObjectNotValid,
                                 "QVGaussMixParam::GetCurrentOrPosteriorParamVal"));
  QVGaussMixParam vector(Type::GaussWishart, "v", {"m", "kappa"}, {Values{1, 2}, Values{3}});
  EXPECT_EQ(vector.GetInitialOrPriorParamVal(result, 3), BadDouble);
  EXPECT_EQ(result.GetFailureType(), QVStatModelFailureType::ArgumentOutOfRange);
  EXPECT_EQ(vector.GetInitialOrPriorParamVal(result, 0), BadDouble);
  EXPECT_EQ(result.GetFailureType(), QVStatModelFailureType::MismatchBetweenPrivateVecSizes);
  EXPECT_EQ(vector.GetInitialOrPriorParamVal(result, 1), 3.0);  // at its offset
  Values values;
  EXPECT_TRUE(vector.SetCurrentOrPosteriorParamVector({5, 6}, 0).IsSuccessful());
  EXPECT_TRUE(vector.GetCurrentOrPosteriorParamVector(values, 0, 2).IsSuccessful());
  EXPECT_THAT(values, ElementsAre(5, 6));
  EXPECT_TRUE(vector.GetInitialOrPriorParamVector(values, 0, 2).IsSuccessful());
  EXPECT_THAT(values, ElementsAre(1, 2));
  EXPECT_EQ(vector.SetCurrentOrPosteriorParamVector({5}, 0).GetFailureType(),
            QVStatModelFailureType::MismatchBetweenPrivateVecSizes);
}

TEST(MixingWeight, UpdatesAndRefusals) {
  QVStatModelResult result(true);
  EXPECT_EQ(GetExpectedLogComponentProb(result, Dirichlet(1, 1)), 0.0);
  // (3 - 1)(psi(3) - psi(5)) + 3/5 lgamma(5) - lgamma(3), psi(3) - psi(5) = -(1/3 + 1/4).
  EXPECT_THAT(GetExpectedLogDirichletPrior(result, Dirichlet(3, 5)),
              IsCloseTo(-7.0 / 6.0 + 0.6 * std::log(24.0) - std::log(2.0), 1e-14));
  EXPECT_EQ(GetExpectedLogDirichletPrior(result, Weight(0.5)), BadDouble);
  EXPECT_THAT(result, FailedWith(QVStatModelFailureType::InternalLogicFailure,
                                 "GetExpectedLogDirichletPrior"));
  QVGaussMixParam weight = Weight(0.5);
  EXPECT_THAT(UpdateComponentProbParams(10.0, weight, 10),
              FailedWith(QVStatModelFailureType::ArgumentOutOfRange, "UpdateComponentProbParams"));
  const QVSystem::QVScopedRecordingSink fatal;
  UpdateComponentProbParams(1.0, weight, std::uint64_t{1} << 60);
  EXPECT_THAT(fatal.GetTexts(QVSystem::QVErrorLevel::Fatal),
              ElementsAre(HasSubstr(" is greater than the maximum allowed")));
}

TEST(MixtureComponent, UpdatesByHand) {
  auto component = FillWith(Dirichlet(1, 1), GaussGamma(0, 1, 1, 1), {0.5, 1.5}, 1.0);
  ASSERT_TRUE(component.MStepUpdateParams({0.5, 1.5}).IsSuccessful());
  const Values params = ParamsOf(component);
  const Values expected = {1.0, 2.0 / 3.0, 3.0, 2.0, 1.25 + 1.0 / 3.0};
  for (std::size_t i = 0; i < expected.size(); ++i)
    EXPECT_THAT(params[i], IsCloseTo(expected[i], 1e-15)) << i;
  EXPECT_EQ(component.GetExpectedLogOfVarDistOfZ(), 0.0);

  double weight, dof, location, precision;
  ASSERT_TRUE(
      GetComponentParamsForStudentsTPredictiveDist(component, weight, dof, location, precision)
          .IsSuccessful());
  EXPECT_EQ(dof, 4.0);
  EXPECT_THAT(precision, IsCloseTo(2.0 / (1.25 + 1.0 / 3.0) * 0.75, 1e-15));
  EXPECT_EQ(component.GetFrequentistGaussParams(location, precision).GetFailureType(),
            QVStatModelFailureType::InternalLogicFailure);

  auto empty = FillWith(Weight(0.5), Gauss(0, 1), {1, 2}, 0.0);
  EXPECT_EQ(empty.GetExpectedLogOfVarDistOfZ(), 0.0);
  EXPECT_THAT(
      empty.MStepUpdateParams({1, 2}),
      FailedAlong(QVStatModelFailureType::SingularScaleOrCovariance,
                  (std::vector<std::string>{"QVOneDimGaussMixComponent::UpdateGaussParams",
                                            "QVOneDimGaussMixComponent::MStepUpdateParams"}),
                  (std::vector<std::string>{"Sample variance = 0"})));
  EXPECT_EQ(empty.GetSampleMoments({1}).GetFailureType(),
            QVStatModelFailureType::MismatchBetweenInputVecSizes);
  EXPECT_THAT(empty.CheckSizeResponsibilityVec(3).ReportStatResultDetails(),
              HasSubstr("Size logResponsibility = 2. Desired size = 3"));
}

/// The cycle as its definition reads, through the components' own steps.
void DoCycleByDefinition(std::vector<QVOneDimGaussMixComponent>& components, const Values& data) {
  for (auto& component : components)
    ASSERT_TRUE(component.EStepUpdateLogRelativeResponsibility(data).IsSuccessful());
  for (std::size_t n = 0; n < data.size(); ++n) {
    double largest = -BadDouble, sum = 0.0;
    for (const auto& component : components)
      largest = std::max(largest, component.EStepGetLogRelativeResponsibility(n));
    for (const auto& component : components)
      sum += std::exp(component.EStepGetLogRelativeResponsibility(n) - largest);
    for (auto& component : components) {
      const double log = component.EStepGetLogRelativeResponsibility(n) - (largest + std::log(sum));
      component.EStepFillResponsibilityAndLogResp(n, std::exp(log), log);
    }
  }
  for (auto& component : components) ASSERT_TRUE(component.MStepUpdateParams(data).IsSuccessful());
}

// An odd number of data, one of them far out, and starts so far away that the fused moments must be
// taken anew.
TEST(MixtureEngine, FusedCyclesAgreeWithTheDefinition) {
  Values data = DrawThreeClusters(997);
  data.push_back(-60.0);
  const std::vector<std::vector<QVGaussMixParam>> starts[] = {
      {{Weight(0.3), Weight(0.3), Weight(0.4)}, {Gauss(0, 1), Gauss(3, 2), Gauss(9, 1)}},
      {{Dirichlet(0.5, 1), Dirichlet(0.5, 1)},
       {GaussGamma(0, 1, 1, 1), GaussGamma(1e7, 1, 1, 1e15)}},
  };
  for (const auto& start : starts)
    for (const bool fast : {false, true}) {
      QVOneDimGaussMixModel model("x", start[0], start[1], data);
      std::vector<QVOneDimGaussMixComponent> components;
      for (std::size_t k = 0; k < start[0].size(); ++k)
        components.emplace_back("x", start[0][k], start[1][k]);
      QVStatModelResult result(true);
      for (int cycle = 0; cycle < 5; ++cycle) {
        ASSERT_TRUE((fast ? model.DoOneFastEMCycle() : model.DoOneEMCycle()).IsSuccessful());
        DoCycleByDefinition(components, data);
        double fitness = 0.0;
        for (const auto& component : components)
          fitness += component.GetComponentOfModelFitness(result);
        EXPECT_THAT(model.GetModelFitness(result), IsCloseTo(fitness, 1e-11));
      }
      std::size_t k = 0;
      for (const QVOneDimGaussMixComponent& component : model.GetComponents()) {
        const Values params = ParamsOf(component), expected = ParamsOf(components[k]);
        for (std::size_t i = 0; i < params.size(); ++i)
          EXPECT_THAT(params[i], IsCloseTo(expected[i], 1e-9)) << k << ' ' << i;
        if (!fast) {
          EXPECT_THAT(component.EStepGetLogRelativeResponsibility(5),
                      IsCloseTo(components[k].EStepGetLogRelativeResponsibility(5), 1e-9));
        }
        ++k;
      }
    }
}

// Every instruction set, against one pass in long double.
TEST(MixtureKernel, SumsAgreeOnEveryPath) {
  const Values data = DrawThreeClusters(53);
  const Values logScales = {-1.0, -2.5, -700.0}, halves = {0.5, 3.0, 0.1}, centers = {0, 4, 8};
  long double expected[10] = {};
  for (const double x : data) {
    long double terms[3], sum = 0;
    for (int k = 0; k < 3; ++k)
      sum += terms[k] = std::exp(logScales[k] - static_cast<long double>(halves[k]) *
                                                    (x - centers[k]) * (x - centers[k]));
    for (int k = 0; k < 3; ++k) {
      const long double d = x - centers[k];
      for (int power = 0; power < 3; ++power)
        expected[3 * k + power] += terms[k] / sum * std::pow(d, power);
    }
    expected[9] += std::log(sum);
  }
  for (const auto path :
       {QVMath::QVDensePath::Plain, QVMath::QVDensePath::Avx2, QVMath::QVDensePath::Avx512}) {
    const QVMath::QVDenseKernels* const kernels = QVMath::QVFindDenseKernels(path);
    if (!kernels) continue;
    Values counts(3), deviations(3), squares(3), work(3 * QVMath::kQVMixtureWork);
    const double logs = kernels->sumMixture(
        data.size(), data.data(), {3, logScales.data(), halves.data(), centers.data()},
        {counts.data(), deviations.data(), squares.data()}, work.data());
    EXPECT_THAT(logs, IsCloseTo(static_cast<double>(expected[9]), 1e-14)) << kernels->name;
    for (std::size_t k = 0; k < 3; ++k) {
      const Values sums = {counts[k], deviations[k], squares[k]};
      for (std::size_t power = 0; power < 3; ++power)
        EXPECT_THAT(sums[power], IsCloseTo(static_cast<double>(expected[3 * k + power]), 1e-12))
            << kernels->name << k << power;
    }
  }
}

TEST(MixtureEngine, RefusesWhatIsNoMixture) {
  const Values data = {1, 2, 3};
  QVOneDimGaussMixModel unequal("x", {Weight(1)}, {}, data);
  EXPECT_EQ(unequal.Print(), "INVALID MIXTURE MODEL!\n");
  EXPECT_THAT(unequal.DoOneEMCycle(), FailedWith(QVStatModelFailureType::ObjectNotValid,
                                                 "QVOneDimGaussMixModel::DoOneEMCycle"));
  const auto isValid = [&](double a, double b) {
    return QVOneDimGaussMixModel("x", {Weight(a), Weight(b)}, {Gauss(0, 1), Gauss(1, 1)}, data)
        .Valid();
  };
  EXPECT_TRUE(isValid(0.5, 0.5000001));
  EXPECT_FALSE(isValid(0.5, 0.501));
  EXPECT_FALSE(isValid(0.5, kNaN));
  // One component takes every datum whole, which a frequentist weight refuses.
  QVOneDimGaussMixModel one("x", {Weight(1)}, {Gauss(0, 1)}, {-1000, 0, 1000});
  EXPECT_EQ(one.DoOneEMCycle().GetFailureType(), QVStatModelFailureType::ArgumentOutOfRange);
  EXPECT_EQ((*one.GetComponents()).GetExpectedLogOfVarDistOfZ(), 0.0);
}

class DirichletMixture : public MixtureTest {};

TEST_F(DirichletMixture, TextbookBoundNeverDecreases) {
  const Values eruptions = TakeEvery(ReadNumbers("faithful.csv"), 0, 2);
  for (const std::uint64_t k : {2u, 4u}) {
    QVOneDimGaussMixModel model =
        QVDirichletGaussGammaMixtureModel(k, "x", 1.0, eruptions).GetModel();
    double before = -BadDouble;
    for (int cycle = 0; cycle < 60; ++cycle) {
      ASSERT_TRUE(model.DoOneFastEMCycle().IsSuccessful());
      const double bound = GetTextbookBound(model, eruptions);
      EXPECT_GE(bound, before - 1e-9) << k << ' ' << cycle;
      before = bound;
    }
  }
}

// scikit-learn 1.2: BayesianGaussianMixture(2, weight_concentration_prior=0.5,
// mean_precision_prior=1) gives these weights, means and variances; its priors centre on all data.
TEST_F(DirichletMixture, AgreesWithScikitLearnOnOldFaithful) {
  const Values eruptions = TakeEvery(ReadNumbers("faithful.csv"), 0, 2);
  ASSERT_EQ(eruptions.size(), 272u);
  QVDirichletGaussGammaMixtureModel model(2, "eruptions", 1.0, eruptions);
  double fitness;
  ASSERT_TRUE(model.FitModel(fitness, 1e-8, 1e-8, 5000).IsSuccessful());
  Values p;
  model.GetModelParams(p);
  EXPECT_THAT(p[0], IsCloseTo(0.3568285, 0.02));
  EXPECT_THAT(p[1], IsCloseTo(2.05277338, 0.02));
  EXPECT_THAT(p[6], IsCloseTo(4.28573378, 0.005));
  EXPECT_THAT(p[9] / p[8], IsCloseTo(0.17963941, 0.1));
  QVStatModelResult result(true);
  const QVUniVarPDF predictive = model.GetPosteriorPredictiveDist(result);
  EXPECT_THAT(predictive.GetMean(result), IsCloseTo(3.4878, 0.01));  // of the data
  EXPECT_TRUE(result.IsSuccessful());
}

/// `count` quantiles of a Gaussian: a cluster without noise.
void AddCluster(Values& data, double mean, double deviation, int count) {
  for (int i = 0; i < count; ++i) {
    const double z = -std::sqrt(2.0) * QVMath::QVerfcInverse(2.0 * (i + 0.5) / count);
    data.push_back(mean + deviation * z);
  }
}

// R's mclust 6.0, Mclust(G = 1:6, modelNames = "V"), picks 3 for both and gives these parameters
// for the first; of scikit-learn's BayesianGaussianMixture with six components, three keep more
// than 1 %.
TEST_F(DirichletMixture, AgreesWithMclustOnSeparateClusters) {
  const int sizes[][3] = {{100, 100, 100}, {100, 150, 50}};
  for (const auto& size : sizes) {
    Values data, weights, p;
    AddCluster(data, 0.0, 1.0, size[0]);
    AddCluster(data, 8.0, 1.2, size[1]);
    AddCluster(data, 16.0, 1.4, size[2]);
    std::vector<QVDirichletGaussGammaMixtureModel> models;
    QVStatModelResult result;
    FitDirichletGaussGammaMixtureModel(result, weights, models, 1, 6, "x", 1.0, data);
    ASSERT_TRUE(result.IsSuccessful());
    ASSERT_EQ(std::max_element(weights.begin(), weights.end()) - weights.begin(), 2) << size[2];
    if (size[2] != 100) continue;  // the prior of a component is centred on a third of the data
    ASSERT_TRUE(models[2].GetModelParams(p).IsSuccessful());
    const double expected[][3] = {{0.33333107, -0.00001277771, 0.9936323},
                                  {0.33328408, 8.00007242072, 1.1937550},
                                  {0.33338484, 15.99865011082, 1.3941529}};
    for (std::size_t k = 0; k < 3; ++k) {
      EXPECT_NEAR(p[5 * k], expected[k][0], 0.002) << k;
      EXPECT_NEAR(p[5 * k + 1], expected[k][1], 0.01) << k;
      EXPECT_THAT(std::sqrt(p[5 * k + 4] / p[5 * k + 3]), IsCloseTo(expected[k][2], 0.01)) << k;
    }
  }
}

// R's mclust 6.0, Mclust(faithful$eruptions, G = 2, modelNames = "V") run to a tolerance of 1e-14:
// the maximum of the likelihood, which frequentist parameters climb too.
TEST(MixtureEngine, FindsTheMaximumLikelihoodOfMclust) {
  const Values eruptions = TakeEvery(ReadNumbers("faithful.csv"), 0, 2);
  QVOneDimGaussMixModel model("x", {Weight(0.5), Weight(0.5)}, {Gauss(2, 4), Gauss(4, 4)},
                              eruptions);
  for (int cycle = 0; cycle < 300; ++cycle) ASSERT_TRUE(model.DoOneFastEMCycle().IsSuccessful());
  Values p;
  ASSERT_TRUE(model.GetModelParams(p).IsSuccessful());
  const double expected[] = {0.34840464114, 2.01860783367, 1 / 0.0555176316605,
                             0.65159535886, 4.27334343697, 1 / 0.1910241730449};
  for (std::size_t i = 0; i < p.size(); ++i) EXPECT_THAT(p[i], IsCloseTo(expected[i], 1e-5)) << i;
}

// An implementation in NumPy and SciPy that shares no line with this one: fitness and cycles for 1
// to 6 components.
TEST_F(DirichletMixture, FitnessesAndCyclesAgreeWithNumPy) {
  struct Fit {
    double fitness;
    int cycles;
  };
  constexpr Fit kEruptions[] = {{-426.4681883839311, 2},   {-290.2052548933573, 15},
                                {-287.4855430293816, 248}, {-290.2160398428893, 229},
                                {-288.1916120211897, 85},  {-290.87294780894337, 222}};
  constexpr Fit kGalaxies[] = {{-812.4290641290827, 2},  {-800.4089476685492, 24},
                               {-792.260444247547, 32},  {-795.6312372253242, 70},
                               {-794.8646663974635, 76}, {-794.7847714721594, 145}};
  for (const bool galaxies : {false, true}) {
    const Values data =
        galaxies ? ReadNumbers("galaxies.csv") : TakeEvery(ReadNumbers("faithful.csv"), 0, 2);
    for (std::uint64_t k = 1; k <= 6; ++k) {
      const Fit& expected = (galaxies ? kGalaxies : kEruptions)[k - 1];
      double fitness;
      lines_.str("");
      QVDirichletGaussGammaMixtureModel(k, "x", 1.0, data).FitModel(fitness, 5e-4, 5e-4, 50000);
      EXPECT_THAT(fitness, IsCloseTo(expected.fitness, 1e-11)) << galaxies << k;
      EXPECT_THAT(lines_.str(),
                  HasSubstr("Num cycles, fitness difference, paramDiff, var lower bound = " +
                            std::to_string(expected.cycles - 1) + " "));
    }
  }
}

TEST_F(DirichletMixture, ChoosesTheNumberOfComponents) {
  std::vector<double> weights;
  std::vector<QVDirichletGaussGammaMixtureModel> models;
  QVStatModelResult result;
  FitDirichletGaussGammaMixtureModel(result, weights, models, 1, 5, "x", 1.0,
                                     DrawThreeClusters(900));
  ASSERT_TRUE(result.IsSuccessful());
  EXPECT_EQ(std::max_element(weights.begin(), weights.end()) - weights.begin(), 2);
  const std::string lines = lines_.str();
  for (const char* text : {"* ", "NumComp, OptimalFitness = 3 ", "Fitting time = ",
                           "\n$$$$$$$$$$$$$$$$$$$$$$$$$$$$$$$$$$$$$$$$$$\n"
                           "Best RESULT: numComp, fitness = 3 ",
                           "Num cycles, fitness difference, paramDiff, var lower bound = "})
    EXPECT_THAT(lines, HasSubstr(text));
  EXPECT_THAT(warnings_.GetTexts(QVSystem::QVErrorLevel::Warning),
              testing::Each("NumCycles exceeded"));

  FitDirichletGaussGammaMixtureModel(result, weights, models, 2, 1, "x", 1.0, {1, 2});
  EXPECT_TRUE(result.IsSuccessful() && weights.empty() && models.empty());
}

TEST_F(DirichletMixture, BadInputEndsAtOnce) {
  double fitness = 0.0;
  QVStatModelResult result(true);
  QVDirichletGaussGammaMixtureModel none(0, "x", 1.0, {1, 2});
  EXPECT_EQ(none.FitModel(fitness, 1e-4, 1e-4, 10).GetFailureType(),
            QVStatModelFailureType::ObjectNotValid);
  EXPECT_EQ(fitness, BadDouble);
  EXPECT_EQ(none.GetNumComponents(result), std::numeric_limits<unsigned int>::max());
  Values many(100000, 2.5), gap = DrawThreeClusters(100000);
  gap[5] = kNaN;
  for (const Values& data : {many, gap}) {  // hours, were every cycle run
    QVDirichletGaussGammaMixtureModel model(3, "x", 1.0, data);
    EXPECT_TRUE(model.FitModel(fitness, 1e-4, 1e-4, 50000).IsSuccessful());
    EXPECT_TRUE(std::isnan(fitness));
  }
  std::vector<double> weights;
  std::vector<QVDirichletGaussGammaMixtureModel> models;
  FitDirichletGaussGammaMixtureModel(result, weights, models, 1, 2, "x", 1.0, many);
  EXPECT_EQ(result.GetFailureType(), QVStatModelFailureType::InternalLogicFailure);
  EXPECT_THAT(weights, ElementsAre(0.0, 0.0));
  // More components than data: the empty ones are seeded at 0 with scale 1.
  FitDirichletGaussGammaMixtureModel(result, weights, models, 0, 5, "x", 1.0, {1, 2, 5});
  EXPECT_TRUE(result.IsSuccessful());
  EXPECT_EQ(weights[0], 0.0);
}

}  // namespace
