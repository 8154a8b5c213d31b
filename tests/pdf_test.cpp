#include "stats/api/pdf.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <numeric>
#include <string>
#include <vector>

#include "platform/system/error_handler.h"
#include "stats/api/data_plot_points.h"
#include "stats/api/pdf_families.h"
#include "stats/api/pdf_functions.h"
#include "stats/api/pdf_setup.h"
#include "stats/api/stats_data_types.h"
#include "tests/support/matchers.h"

namespace QVStats {
namespace {

using QVStatsBadData::BadDouble;
using testing::ElementsAre;
using testing::HasSubstr;
namespace Failure = QVStatModelFailureType;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
const double kNaN = std::numeric_limits<double>::quiet_NaN();

std::vector<std::string> GetContextOf(const QVStatModelResult& result) {
  std::vector<std::string> names;
  for (const std::string& name : result.GetContext()) names.push_back(name);
  return names;
}

/// The numbers of a distribution without failures; a failed query stops the test.
QVUniVarPDF MakePDF(const std::string& family) {
  QVStatModelResult result(true);
  if (family == "Gaussian") return QVUnivariateGaussian("x", 1.5, 0.25, result);
  if (family == "StudentsT") return QVUnivariateStudentsT("x", 5.0, -1.0, 4.0, result);
  if (family == "Gamma") return QVGamma("x", 2.7, 1.5, result);
  if (family == "ChiSquare") return QVChiSquare("x", 3.0, result);
  if (family == "SnedecorsF") return QVSnedecorsF("x", 6.0, 9.0, result);
  if (family == "Beta") return QVBeta("x", 2.0, 3.5, result);
  if (family == "Gumbel") return QVGumbel("x", 1.0, 2.0, result);
  if (family == "HeavyGEV") return QVGeneralizedExtremeValue("x", 0.0, 1.0, 0.1, result);
  if (family == "BoundedGEV") return QVGeneralizedExtremeValue("x", 0.0, 1.0, -0.4, result);
  if (family == "Mixture")
    return QVUnivariateGaussMixture("x", {0.25, 0.75}, {-1.0, 2.0}, {1.0, 4.0}, result);
  if (family == "MixtureOfFamilies")
    return QVUnivariateMixture("x", {2, 6, 9}, {0.5, 0.25, 0.25}, {{0, 1}, {2, 3}, {2, 2}}, result);
  ADD_FAILURE() << family;
  return QVUniVarNullPDF("x");
}

class Families : public testing::TestWithParam<const char*> {};
INSTANTIATE_TEST_SUITE_P(All, Families,
                         testing::Values("Gaussian", "StudentsT", "Gamma", "ChiSquare",
                                         "SnedecorsF", "Beta", "Gumbel", "HeavyGEV", "BoundedGEV",
                                         "Mixture", "MixtureOfFamilies"),
                         [](const auto& row) { return std::string(row.param); });

/// The integral over u of g(percentile at u), by the midpoint rule with u = (1 - cos s) / 2, which
/// crowds the nodes at both ends.
double IntegrateOverPercentiles(const QVUniVarPDF& pdf, const std::function<double(double)>& g) {
  constexpr int kNodes = 20000;
  const double step = 3.14159265358979323846 / kNodes;
  QVStatModelResult result(true);
  double sum = 0.0;
  for (int i = 0; i < kNodes; ++i) {
    const double s = (i + 0.5) * step;
    const double x = s < 1.5707963267948966
                         ? pdf.GetPercentile((1.0 - std::cos(s)) / 2, result)
                         : pdf.GetUpperTailPercentile((1.0 + std::cos(s)) / 2, result);
    EXPECT_TRUE(result.IsSuccessful()) << result.ReportStatResultDetails();
    sum += g(x) * std::sin(s) / 2 * step;
  }
  return sum;
}

// Percentiles, closed moments and densities are separate formulas: the moments of the percentiles
// must be the moments, and the slope of the distribution function the density.
TEST_P(Families, MomentsAndDensityFollowFromThePercentiles) {
  const QVUniVarPDF pdf = MakePDF(GetParam());
  QVStatModelResult result(true);
  const double mean = pdf.GetMean(result), variance = pdf.GetVariance(result);
  ASSERT_TRUE(result.IsSuccessful()) << result.ReportStatResultDetails();
  EXPECT_NEAR(IntegrateOverPercentiles(pdf, [](double x) { return x; }), mean, 2e-6);
  EXPECT_THAT(IntegrateOverPercentiles(pdf, [&](double x) { return (x - mean) * (x - mean); }),
              IsCloseTo(variance, 2e-4));
  for (const double p : {0.02, 0.3, 0.5, 0.8, 0.99}) {
    const double x = pdf.GetPercentile(p, result), h = 1e-4;
    const double slope =
        (pdf.GetCDF(x + h, result, false) - pdf.GetCDF(x - h, result, false)) / (2 * h);
    if (std::isfinite(slope) && std::string(GetParam()) != "MixtureOfFamilies") {
      EXPECT_THAT(slope, IsCloseTo(pdf.GetDensity(x, result, false), 1e-6)) << p;
    }
  }
}

TEST_P(Families, ModeIsTheHighestPoint) {
  const QVUniVarPDF pdf = MakePDF(GetParam());
  QVStatModelResult result(true);
  const double mode = pdf.GetMode(result);
  ASSERT_TRUE(result.IsSuccessful()) << result.ReportStatResultDetails();
  const double height = pdf.GetDensity(mode, result, false);
  const bool isSearched = std::string(GetParam()).compare(0, 7, "Mixture") == 0;
  for (double p = 0.015; p < 0.985 && std::string(GetParam()) != "MixtureOfFamilies"; p += 0.01)
    EXPECT_LE(pdf.GetDensity(pdf.GetPercentile(p, result), result, true),
              height * (isSearched ? 1.005 : 1 + 1e-12));
}

// Draws against the distribution function, by the Kolmogorov-Smirnov distance at a level of 1e-6.
TEST_P(Families, DrawsFollowTheDistributionFunction) {
  QVUniVarPDF pdf = MakePDF(GetParam());
  QVMath::QVRanNumEngine engine(99);
  std::vector<double> sample;
  ASSERT_TRUE(QVGetPDFSample(sample, pdf, 100000, engine).IsSuccessful());
  std::sort(sample.begin(), sample.end());
  double distance = 0.0;
  for (std::size_t i = 0; i < sample.size(); i += 10) {
    QVStatModelResult result(true);
    const double cdf = pdf.GetCDF(sample[i], result, true);
    if (result.NotSuccessful()) continue;  // outside the support of a component
    distance = std::max(distance, std::abs(cdf - (static_cast<double>(i) + 0.5) / 1e5));
  }
  EXPECT_LT(distance * std::sqrt(1e5), 2.7);
}

TEST_P(Families, BulkCallsVisitEveryArgument) {
  const QVUniVarPDF pdf = MakePDF(GetParam());
  const std::vector<double> x = {0.5, -7.0, 0.25, 3.0};
  for (const auto function : {QVPDFFunction::Density, QVPDFFunction::CDF, QVPDFFunction::Survival,
                              QVPDFFunction::LogDensity, QVPDFFunction::LogSurvival}) {
    QVStatModelResult result(true), first(true);
    std::vector<double> values;
    pdf.GetValues(function, x, values, result, true);
    ASSERT_EQ(values.size(), x.size());
    for (std::size_t i = 0; i < x.size(); ++i) {
      QVStatModelResult single(true);
      const double expected = pdf.GetImpl()->GetValue(function, x[i], single, true);
      if (values[i] != expected && !std::isnan(expected)) {
        EXPECT_THAT(values[i], IsCloseTo(expected, 1e-13));
      }
      if (single.NotSuccessful() && first.IsSuccessful()) first = single;
    }
    EXPECT_EQ(result.GetFailureType(), first.GetFailureType());
  }
}

TEST_P(Families, CopiesAreIndependentAndEqual) {
  QVUniVarPDF pdf = MakePDF(GetParam());
  QVStatModelResult result(true);
  const double before = pdf.GetPercentile(0.3, result);
  QVUniVarPDF copy = pdf;
  EXPECT_NE(copy.GetImpl(), pdf.GetImpl());
  pdf = QVUniVarNullPDF("y");
  EXPECT_EQ(copy.GetPercentile(0.3, result), before);
  EXPECT_EQ(copy.GetVariableName(), "x");
}

TEST_P(Families, RefuseWhatIsNoProbability) {
  const QVUniVarPDF pdf = MakePDF(GetParam());
  for (const double p : {-0.1, 1.0000001, kNaN}) {
    QVStatModelResult result(true);
    EXPECT_EQ(pdf.GetPercentile(p, result), BadDouble);
    EXPECT_EQ(result.GetFailureType(), Failure::ArgumentOutOfRange);
    EXPECT_THAT(*result.GetComments(),
                HasSubstr("percentile must be between 0 and 1 Argument entered: "));
    EXPECT_THAT(*result.GetContext(), HasSubstr("Impl::GetPercentile"));
    EXPECT_EQ(pdf.GetUpperTailPercentile(p, result), BadDouble);
    EXPECT_EQ(result.GetFailureType(), Failure::ArgumentOutOfRange);
  }
}

// Whatever the probability, a search ends; where it succeeds the answer is right.
TEST_P(Families, SearchesEndInTheTails) {
  const QVUniVarPDF pdf = MakePDF(GetParam());
  for (const double p : {1e-300, 1e-100, 1e-15, 1e-6, 1 - 1e-6, 1 - 1e-12, 1 - 0x1p-53}) {
    QVStatModelResult result(true);
    const double x = pdf.GetPercentile(p, result);
    if (result.NotSuccessful()) {
      EXPECT_EQ(x, BadDouble);
      EXPECT_EQ(result.GetFailureType(), Failure::InternalLogicFailure);
      continue;
    }
    const double cdf = pdf.GetCDF(x, result, false);
    if (std::isnan(cdf)) continue;  // outside the support of a component
    EXPECT_NEAR(cdf, p, 1e-9) << p;
  }
}

TEST(PDF, PercentileOfOneHasNoBracket) {
  QVStatModelResult result(true);
  const QVUniVarPDF pdf = QVUnivariateGaussian("x", 0, 1, result);
  EXPECT_EQ(pdf.GetPercentile(1.0, result), BadDouble);
  EXPECT_THAT(GetContextOf(result),
              ElementsAre("GetUpperBoundOnInverseCDF", "QVUniVarGaussImpl::GetPercentile"));
  EXPECT_EQ(*result.GetComments(), "Max Iters (100) exceeded");
  EXPECT_EQ(pdf.GetUpperTailPercentile(0.0, result), kInfinity);
  EXPECT_THAT(pdf.GetPercentile(0.975, result), IsCloseTo(1.959963984540054, 1e-14));
}

// Towards a tail of 1e-290 the Newton steps are short and more than 100: the trace is the comment.
TEST(PDF, AnUnfinishedSearchTellsItsTrace) {
  QVStatModelResult result(true);
  const QVUniVarPDF pdf = QVUnivariateGaussian("x", 0, 1, result);
  const double x = pdf.GetPercentile(1e-290, result);
  ASSERT_EQ(x, BadDouble);
  EXPECT_THAT(GetContextOf(result),
              ElementsAre("InverseContinuousCDF", "QVUniVarGaussImpl::GetPercentile"));
  const std::string trace = *result.GetComments();
  EXPECT_EQ(trace.rfind("Percent, lower, upper = 1e-290 -63 0\n", 0), 0u) << trace;
  EXPECT_EQ(std::count(trace.begin(), trace.end(), '\n'), 102);
  EXPECT_THAT(trace, HasSubstr("lower,xnew,upper,errX,errY = "));
  EXPECT_THAT(trace, HasSubstr("Max Iters (100) exceeded \n"));
}

struct RefusalCase {
  const char* name;
  std::function<QVUniVarPDF(QVStatModelResult&)> make;
  unsigned int failure;
  std::vector<std::string> chain;
};
void PrintTo(const RefusalCase& row, std::ostream* out) { *out << row.name; }

const RefusalCase kRefusals[] = {
    {"NegativePrecision",
     [](auto& r) { return QVUnivariateGaussian("x", 0, -1, r); },
     Failure::SingularScaleOrCovariance,
     {"QVUniVarGaussRanVars::SetupRanVarVecs", "QVUnivariateGaussian"}},
    {"NaNPrecision",
     [](auto& r) { return QVUnivariateStudentsT("x", 3, 0, kNaN, r); },
     Failure::SingularScaleOrCovariance,
     {"QVUniVarStudentsTRanVars::SetupRanVarVecs", "QVUnivariateStudentsT"}},
    {"NoDegreesOfFreedom",
     [](auto& r) { return QVChiSquare("x", 0, r); },
     Failure::LowerBoundViolated,
     {"QVChiSquareRanVars::SetupRanVarVecs", "QVChiSquare"}},
    {"EmptyMixture",
     [](auto& r) { return QVUnivariateMixture("x", {}, {}, {}, r); },
     Failure::EmptyStatModel,
     {"QVUnivariateMixture"}},
    {"TooManyProbabilities",
     [](auto& r) {
       return QVUnivariateMixture("x", {2, 2}, {0.2, 0.3, 0.5}, {{0, 1}, {0, 1}}, r);
     },
     Failure::MismatchBetweenInputVecSizes,
     {"QVUnivariateMixture"}},
    {"BadComponent",
     [](auto& r) {
       return QVUnivariateGaussMixture("x", {0.5, 0.5}, {0, 1}, {1, -1}, r);
     },
     Failure::SingularScaleOrCovariance,
     {"QVUniVarGaussRanVars::SetupRanVarVecs", "QVUniVarGenericRanVars::SetupRanVarVecs",
      "QVUnivariateMixture", "QVUnivariateGaussMixture"}},
    {"UnequalMixtureVectors",
     [](auto& r) {
       return QVUnivariateStudentsTMixture("x", {1.0}, {3}, {0, 0}, {1}, r);
     },
     Failure::MismatchBetweenInputVecSizes,
     {"QVUnivariateStudentsTMixture"}},
};

class Refusals : public testing::TestWithParam<RefusalCase> {};
INSTANTIATE_TEST_SUITE_P(Factories, Refusals, testing::ValuesIn(kRefusals),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_P(Refusals, GiveANullDistributionAndTheChainOfNames) {
  QVStatModelResult result(true);
  const QVUniVarPDF pdf = GetParam().make(result);
  EXPECT_EQ(result.GetFailureType(), GetParam().failure);
  EXPECT_EQ(GetContextOf(result), GetParam().chain);
  EXPECT_EQ(pdf.GetMean(result), BadDouble);
  EXPECT_THAT(result, FailedWith(Failure::NullProbDistFunc, "QVUniVarNullPDFImpl::GetMean"));
  std::vector<double> values;
  pdf.GetValues(QVPDFFunction::Survival, {0, 1}, values, result, true);
  EXPECT_THAT(values, ElementsAre(BadDouble, BadDouble));
  EXPECT_EQ(result.GetFailureType(), Failure::NullProbDistFunc);
}

TEST(PDF, ArgumentsOutsideTheSupport) {
  QVStatModelResult result(true);
  const QVUniVarPDF beta = QVBeta("x", 2, 3, result);
  EXPECT_EQ(beta.GetDensity(1.5, result, true), 0.0);
  EXPECT_EQ(result.GetFailureType(), Failure::UpperBoundViolated);
  EXPECT_EQ(GetContextOf(result).back(), "QVBetaImpl::GetDensity");
  EXPECT_EQ(beta.GetSurvival(-0.5, result, true), 1.0);
  EXPECT_EQ(result.GetFailureType(), Failure::LowerBoundViolated);
  EXPECT_EQ(beta.GetLogDensity(1.5, result, true), -kInfinity);
  EXPECT_TRUE(std::isnan(beta.GetDensity(1.5, result, false)) ||
              beta.GetDensity(1.5, result, false) > 0.0);
  EXPECT_TRUE(result.IsSuccessful());

  const QVUniVarPDF gamma = QVGamma("x", 2, 1, result);
  EXPECT_EQ(gamma.GetCDF(0.0, result, true), 0.0);
  EXPECT_EQ(result.GetFailureType(), Failure::LowerBoundViolated);
  EXPECT_EQ(gamma.GetCDF(0.0, result, false), 0.0);
  EXPECT_EQ(gamma.GetCDF(kInfinity, result, true), 1.0);
  EXPECT_EQ(gamma.GetDensity(kInfinity, result, true), 0.0);
  EXPECT_TRUE(std::isnan(gamma.GetDensity(kNaN, result, true)));

  std::vector<double> values;
  gamma.GetValues(QVPDFFunction::CDF, {1.0, -1.0, 2.0, -3.0}, values, result, true);
  EXPECT_EQ(result.GetFailureType(), Failure::LowerBoundViolated);
  EXPECT_EQ(values[1], 0.0);
  EXPECT_EQ(values[2], gamma.GetCDF(2.0, result, true));
}

TEST(PDF, MomentsThatDoNotExist) {
  QVStatModelResult result(true);
  const auto t = [&](double nu) { return QVUnivariateStudentsT("x", nu, 3, 1, result); };
  EXPECT_EQ(t(1).GetMean(result), BadDouble);
  EXPECT_THAT(result, FailedWith(Failure::MeanIsUndefined, "QVUniVarStudentsTImpl::GetMean"));
  EXPECT_EQ(t(1).GetMode(result), 3.0);
  EXPECT_EQ(t(2).GetVariance(result), BadDouble);
  EXPECT_EQ(result.GetFailureType(), Failure::VarianceIsUndefined);
  EXPECT_EQ(QVGamma("x", 0.5, 1, result).GetMode(result), 0.0);
  EXPECT_EQ(QVChiSquare("x", 2, result).GetMode(result), 0.0);
  EXPECT_EQ(QVBeta("x", 1, 3, result).GetMode(result), BadDouble);
  EXPECT_THAT(result, FailedWith(Failure::ModeIsUndefined, "QVBetaImpl::GetMode"));
  const auto gev = [&](double xi) { return QVGeneralizedExtremeValue("x", 1, 2, xi, result); };
  EXPECT_EQ(gev(0.5).GetVariance(result), BadDouble);
  EXPECT_EQ(result.GetFailureType(), Failure::VarianceIsUndefined);
  EXPECT_EQ(gev(1).GetMean(result), BadDouble);
  EXPECT_EQ(result.GetFailureType(), Failure::MeanIsUndefined);
  EXPECT_EQ(gev(0).GetMean(result), QVGumbel("x", 1, 2, result).GetMean(result));
}

// log Gamma is expanded for small shapes: at the change of formulas both must agree, and at a tiny
// shape the moments are the Gumbel's.
TEST(PDF, ExtremeValueMomentsAreContinuousInTheShape) {
  QVStatModelResult result(true);
  const auto gev = [&](double xi) { return QVGeneralizedExtremeValue("x", 0, 1, xi, result); };
  for (const double xi : {0.01, -0.01}) {
    const QVUniVarPDF inside = gev(xi * (1 - 1e-12)), outside = gev(xi * (1 + 1e-12));
    EXPECT_THAT(inside.GetMean(result), IsCloseTo(outside.GetMean(result), 1e-12));
    EXPECT_THAT(inside.GetVariance(result), IsCloseTo(outside.GetVariance(result), 1e-11));
  }
  EXPECT_THAT(gev(1e-13).GetVariance(result), IsCloseTo(1.6449340668482264, 1e-12));
  EXPECT_THAT(gev(1e-13).GetMean(result), IsCloseTo(0.5772156649015329, 1e-12));
}

TEST(PDF, AnInvalidObjectSaysSo) {
  QVUniVarPDF pdf(QVPDFType::ChiSquared, "x", {}, {});
  QVStatModelResult result(true);
  EXPECT_EQ(pdf.GetDensity(1, result, true), BadDouble);
  EXPECT_THAT(result, FailedWith(Failure::InvalidProbDistFunc, "QVChiSquareImpl::GetDensity"));
  QVMath::QVRanNumEngine engine;
  EXPECT_EQ(pdf.GetRandomOutcome(result, engine), BadDouble);
  EXPECT_THAT(result, FailedWith(Failure::InvalidProbDistFunc, "QVGammaImpl::GetRandomOutcome"));
  auto* impl = dynamic_cast<QVChiSquareImpl*>(pdf.GetImpl());
  ASSERT_NE(impl, nullptr);
  EXPECT_THAT(
      GetContextOf(impl->GetParams()),
      ElementsAre("QVProbDistFuncImpl::GetParameterRanVarVals",
                  "QVProbDistFuncImpl::GetSingleParameterRanVarVal", "QVChiSquareImpl::GetParams"));
}

TEST(PDF, AParameterThatIsNotPositiveIsAFatalReport) {
  QVRanVarVec parameters, outcomes;
  ASSERT_TRUE(QVGammaRanVars::SetupRanVarVecs(1, 1, parameters, outcomes).IsSuccessful());
  parameters[0].SetRanVarVal(-1, false);
  QVSystem::QVScopedRecordingSink sink;
  const QVUniVarPDF pdf(QVPDFType::Gamma, "x", parameters, outcomes);
  EXPECT_THAT(sink.GetTexts(QVSystem::QVErrorLevel::Fatal),
              ElementsAre(HasSubstr("Assertion failed at line ")));
  QVStatModelResult result(true);
  EXPECT_EQ(pdf.GetMean(result), BadDouble);
  EXPECT_EQ(result.GetFailureType(), Failure::InvalidProbDistFunc);
}

TEST(PDF, LookupOfRandomVariables) {
  QVStatModelResult result(true);
  const QVUniVarPDF pdf = QVUnivariateGaussMixture("x", {0.5, 0.5}, {0, 1}, {1, 1}, result);
  const QVUniVarPDFImpl& impl = *pdf.GetImpl();
  EXPECT_FALSE(impl.GetParameterRanVarVals(3, 1, result));
  EXPECT_THAT(result, FailedWith(Failure::WrongNumParameters,
                                 "QVProbDistFuncImpl::GetParameterRanVarVals"));
  EXPECT_EQ(*result.GetComments(), "NumRanVarVals = 2; Expected 1");
  EXPECT_FALSE(impl.GetOutcomeRanVarVals(77, 1, result));
  EXPECT_THAT(result,
              FailedWith(Failure::RanVarNotFound, "QVProbDistFuncImpl::GetOutcomeRanVarVals"));
  EXPECT_EQ(impl.CheckIfValIsOkForOutcomeRanVar(77, 0).GetFailureType(), Failure::RanVarNotFound);
}

TEST(Mixture, ProbabilitiesMustSumToOne) {
  QVStatModelResult result(true);
  const auto make = [&](double w) {
    return QVUnivariateGaussMixture("x", {0.3, w}, {0, 1}, {1, 1}, result);
  };
  make(0.7);
  EXPECT_TRUE(result.IsSuccessful());
  const QVUniVarPDF off = make(0.7 + 1e-10);
  EXPECT_THAT(result, FailedWith(Failure::InternalLogicFailure, "QVUniVarMixtureImpl::GetParams"));
  EXPECT_THAT(*result.GetComments(), HasSubstr("Sum of probabilities(error = 1e-10) is out of"));
  EXPECT_EQ(off.GetDensity(0, result, true), BadDouble);
  EXPECT_THAT(result, FailedWith(Failure::InvalidProbDistFunc, "QVUniVarMixtureImpl::GetDensity"));
  make(-0.1);
  EXPECT_THAT(*result.GetComments(), HasSubstr("Component probability out of range"));
}

// A gamma and a Gaussian component: below 0 the gamma refuses, the search goes on.
TEST(Mixture, HasPercentilesOutsideTheSupportOfAComponent) {
  QVStatModelResult result(true);
  const QVUniVarPDF pdf = QVUnivariateMixture("x", {6, 2}, {0.5, 0.5}, {{2, 1}, {-5, 1}}, result);
  EXPECT_EQ(pdf.GetCDF(-5, result, true), BadDouble);
  EXPECT_EQ(GetContextOf(result).back(), "QVUniVarMixtureImpl::GetCDF");
  const double x = pdf.GetPercentile(0.25, result);
  ASSERT_TRUE(result.IsSuccessful()) << result.ReportStatResultDetails();
  EXPECT_NEAR(x, -5.0, 1e-6);
}

TEST(RandomSample, IsTheEmpiricalDistribution) {
  QVStatModelResult result(true);
  QVUniVarPDF source = QVUnivariateGaussian("dose", 3, 1, result);
  QVMath::QVRanNumEngine engine(5), again(5);
  QVUniVarPDF sample = QVUniVarContValRandomSample(result, source, engine, 2000);
  ASSERT_TRUE(result.IsSuccessful()) << result.ReportStatResultDetails();
  std::vector<double> drawn;
  QVGetPDFSample(drawn, source, 2000, again);
  const double mean = std::accumulate(drawn.begin(), drawn.end(), 0.0) / 2000;
  EXPECT_THAT(sample.GetMean(result), IsCloseTo(mean, 1e-14));
  EXPECT_NEAR(sample.GetVariance(result), 1.0, 0.1);
  EXPECT_EQ(sample.GetCDF(drawn[17], result, true) * 2000,
            std::count_if(drawn.begin(), drawn.end(), [&](double x) { return x <= drawn[17]; }));
  EXPECT_NEAR(sample.GetPercentile(0.5, result), 3.0, 0.1);
  EXPECT_EQ(std::count(drawn.begin(), drawn.end(), sample.GetRandomOutcome(result, engine)), 1);
  EXPECT_EQ(sample.GetDensity(3, result, true), BadDouble);
  EXPECT_EQ(result.GetFailureType(), Failure::DensityIsUndefined);
  EXPECT_EQ(sample.GetMode(result), BadDouble);
  EXPECT_EQ(result.GetFailureType(), Failure::ModeIsUndefined);
  EXPECT_EQ(sample.Print(2).rfind("PDF: UniVariate Continuous Valued Random Sample; Drawn from "
                                  "UniVariate Gaussian\n Variable name: dose\n",
                                  0),
            0u);
  QVUniVarContValRandomSample(result, source, engine, 0);
  EXPECT_FALSE(result.IsSuccessful());
}

// A NaN has no place in a sorted sample, and what is no count is no size.
TEST(PDF, RandomSampleRefusesWhatIsNoNumber) {
  using Family = QVUniVarContValRandomSampleRanVars;
  QVRanVarVec parameters, outcomes;
  QVStatModelResult result =
      Family::SetupRanVarVecs(QVPDFType::Gamma, {1.0, 2.0, kNaN}, parameters, outcomes);
  EXPECT_EQ(result.GetFailureType(), Failure::ArgumentOutOfRange);
  EXPECT_EQ(*result.GetComments(), "Sample value 2 is not a number");
  EXPECT_TRUE(parameters.empty() && outcomes.empty());

  ASSERT_TRUE(
      Family::SetupRanVarVecs(QVPDFType::Gamma, {1.0, 2.0}, parameters, outcomes).IsSuccessful());
  for (const double size : {kInfinity, -kInfinity, kNaN, 1e300, 0.4}) {
    QVRanVarVec bad = parameters;
    bad[0].SetRanVarVal(size, false);
    QVUniVarContValRandomSampleImpl pdf("x", bad, outcomes);
    EXPECT_EQ(pdf.GetParams().GetFailureType(), Failure::NoData) << size;
    EXPECT_EQ(pdf.GetMean(result), BadDouble);
    EXPECT_EQ(result.GetFailureType(), Failure::InvalidProbDistFunc);
  }
  outcomes[0].SetRanVarVals(std::vector<double>{1.0, kNaN}, false);
  QVUniVarContValRandomSampleImpl pdf("x", parameters, outcomes);
  EXPECT_EQ(pdf.GetParams().GetFailureType(), Failure::ArgumentOutOfRange);
  EXPECT_FALSE(pdf.Valid());
}

TEST(PDF, PrintsParametersAndOutcomes) {
  QVStatModelResult result(true);
  const std::string text = QVUnivariateGaussian("x", 1.5, 2, result).Print(5);
  EXPECT_EQ(text.rfind("PDF: UniVariate Gaussian\n Variable name: x\nPdf Name: ", 0), 0u);
  const std::string rule = "\n---------------------\n";
  const std::string percents = "\n%%%%%%%%%%%%%%%%%%%%%%%%%%%%%\n";
  EXPECT_THAT(text, HasSubstr("Random Var Values: 2 "));
  EXPECT_EQ(text.substr(text.size() - rule.size() - percents.size()), rule + percents);
  EXPECT_EQ(QVUniVarNullPDF("x").Print(5),
            "PDF: NullPDF\n Variable name: x\n" + percents + percents);
}

// Multivariate distributions

const std::vector<std::string> kNames = {"a", "b", "c"};
// The inverse of this precision matrix by hand: [[4,2,0],[2,5,0],[0,0,2]] / 16 -> below.
const std::vector<double> kPrecision = {5.0 / 16, -2.0 / 16, 0, -2.0 / 16, 4.0 / 16, 0, 0, 0, 0.5};
const std::vector<double> kCovariance = {4, 2, 0, 2, 5, 0, 0, 0, 2};

TEST(MultiVarGauss, DensityMomentsAndMarginals) {
  QVStatModelResult result(true);
  const QVMultiVarPDF plane = QVMultivariateGaussian({"x", "y"}, {1, 2}, {1, 0, 0, 1}, result);
  EXPECT_THAT(plane.GetDensity({1, 2}, result, true), IsCloseTo(0.15915494309189535, 1e-15));

  const QVMultiVarPDF pdf = QVMultivariateGaussian(kNames, {1, 2, 3}, kPrecision, result);
  ASSERT_TRUE(result.IsSuccessful()) << result.ReportStatResultDetails();
  EXPECT_THAT(pdf.GetCovariance(result),
              testing::Pointwise(testing::DoubleNear(1e-13), kCovariance));
  // At one step along a: q = 5 / 16, determinant of the covariance 32.
  const double expected = std::exp(-0.5 * 5 / 16) / std::sqrt(std::pow(2 * M_PI, 3) * 32);
  EXPECT_THAT(pdf.GetDensity({2, 2, 3}, result, true), IsCloseTo(expected, 1e-14));
  EXPECT_EQ(pdf.GetDensity({2, 2}, result, true), BadDouble);
  EXPECT_EQ(result.GetFailureType(), Failure::WrongInputVectorSize);

  // The covariance stands where the factory expects a precision.
  EXPECT_THAT(pdf.GetUnivariateMarginal("a", result).GetVariance(result), IsCloseTo(0.25, 1e-14));
  EXPECT_EQ(pdf.GetMultivariateMarginal({"a", "c"}, result).GetNumVariables(), 2u);
  EXPECT_TRUE(result.IsSuccessful());
  const QVMultiVarPDF reversed = pdf.GetMultivariateMarginal({"c", "a"}, result);
  EXPECT_EQ(result.GetFailureType(), Failure::NamesOutOfOrder);
  EXPECT_EQ(GetContextOf(result).back(), "QVMultiVarGaussImpl::GetMultivariateMarginal");
  EXPECT_TRUE(reversed.GetMean(result).empty());
  EXPECT_EQ(result.GetFailureType(), Failure::NullProbDistFunc);
  pdf.GetUnivariateMarginal("z", result);
  EXPECT_EQ(result.GetFailureType(), Failure::NameNotFound);
  std::vector<std::size_t> indices;
  EXPECT_TRUE(pdf.GetImpl()->GetIndicesOfNamesInVarNameList({"a", "a"}, indices).IsSuccessful());
  EXPECT_THAT(indices, ElementsAre(0u, 0u));
}

TEST(MultiVarGauss, RefusesAMatrixThatIsNotPositiveDefinite) {
  QVStatModelResult result(true);
  const QVMultiVarPDF pdf = QVMultivariateGaussian({"x", "y"}, {0, 0}, {1, 2, 2, 1}, result);
  EXPECT_FALSE(result.IsSuccessful());
  EXPECT_TRUE(pdf.GetMean(result).empty());
  EXPECT_THAT(result, FailedWith(Failure::InvalidProbDistFunc, "QVMultiVarGaussImpl::GetMean"));
}

TEST(MultiVarGauss, AMarginalThatIsSingularIsNull) {
  QVStatModelResult result;
  const QVMultiVarPDF pdf = QVMultivariateGaussian({"a", "b"}, {0, 0}, {1, 0, 0, 1}, result);
  const QVMultiVarPDF marginal = pdf.GetMultivariateMarginal({"a", "a"}, result);
  EXPECT_EQ(result.GetFailureType(), QVStatModelFailureType::SingularMatrix);
  marginal.GetMean(result);
  EXPECT_EQ(result.GetFailureType(), QVStatModelFailureType::NullProbDistFunc);
}

TEST(MultiVarGauss, DrawsHaveItsCovariance) {
  QVStatModelResult result(true);
  QVMultiVarPDF pdf = QVMultivariateGaussian(kNames, {1, 2, 3}, kPrecision, result);
  QVMath::QVRanNumEngine engine(17);
  std::vector<double> moments(9, 0.0);
  constexpr int kDraws = 200000;
  for (int n = 0; n < kDraws; ++n) {
    const std::vector<double> x = pdf.GetRandomOutcome(result, engine);
    for (std::size_t i = 0; i < 9; ++i)
      moments[i] += (x[i / 3] - 1.0 - static_cast<double>(i / 3)) *
                    (x[i % 3] - 1.0 - static_cast<double>(i % 3)) / kDraws;
  }
  EXPECT_THAT(moments, testing::Pointwise(testing::DoubleNear(0.08), kCovariance));
}

TEST(MultiVarStudentsT, IsReachedByItsImplementationOnly) {
  QVStatModelResult result(true);
  const QVMultiVarPDF handle = QVMultivariateStudentsT(kNames, 4, {1, 2, 3}, kPrecision, result);
  EXPECT_TRUE(result.IsSuccessful());
  EXPECT_EQ(handle.GetDensity({1, 2, 3}, result, true), BadDouble);
  EXPECT_EQ(result.GetFailureType(), Failure::NullProbDistFunc);

  QVRanVarVec parameters, outcomes;
  QVMultiVarStudentsTRanVars::SetupRanVarVecs(4, {1, 2, 3}, kPrecision, parameters, outcomes);
  QVMultiVarStudentsTImpl pdf(kNames, parameters, outcomes);
  // Gamma(7/2) / (Gamma(2) (4 pi)^(3/2) sqrt(32)) (1 + 5/64)^(-7/2)
  const double expected =
      std::tgamma(3.5) / (std::pow(4 * M_PI, 1.5) * std::sqrt(32.0)) * std::pow(1 + 5.0 / 64, -3.5);
  EXPECT_THAT(pdf.GetDensity({2, 2, 3}, result, false), IsCloseTo(expected, 1e-13));
  EXPECT_EQ(pdf.GetDensity({2, 2, 3}, result, true), BadDouble);
  EXPECT_EQ(result.GetFailureType(), Failure::RanVarNotFound);
  EXPECT_THAT(pdf.GetCovariance(result)[0], IsCloseTo(8.0, 1e-13));
  QVMath::QVRanNumEngine engine(3);
  EXPECT_EQ(pdf.GetRandomOutcome(result, engine).size(), 3u);
  EXPECT_THAT(pdf.GetUnivariateMarginal("b", result).GetVariance(result), IsCloseTo(0.4, 1e-13));

  QVMultiVarStudentsTRanVars::SetupRanVarVecs(2, {1, 2, 3}, kPrecision, parameters, outcomes);
  EXPECT_TRUE(QVMultiVarStudentsTImpl(kNames, parameters, outcomes).GetCovariance(result).empty());
  EXPECT_EQ(result.GetFailureType(), Failure::VarianceIsUndefined);
}

// Plot points

TEST(PDFPlot, CurvesCoverTheCentreAndIntegrate) {
  QVStatModelResult result(true);
  const QVUniVarPDF pdf = QVUnivariateGaussian("x", 0, 1, result);
  QVMath::QVDataSeries series;
  double xmin, xmax, ymin, ymax;
  QVSystem::QVScopedRecordingSink sink;
  ASSERT_TRUE(QVGetPDFDensityPlotPoints(series, xmin, xmax, ymin, ymax, pdf, 0.05, 101, 5, -5)
                  .IsSuccessful());
  EXPECT_NEAR(xmin, -1.96, 1e-4);
  EXPECT_NEAR(xmax, 1.96, 1e-4);
  EXPECT_EQ(series.GetNumPoints(), 101u);
  EXPECT_THAT(ymax, IsCloseTo(0.3989422804014327, 1e-12));
  EXPECT_THAT(sink.GetTexts(QVSystem::QVErrorLevel::Info),
              ElementsAre(HasSubstr("sum density = 0.952")));
  QVGetPDFScaledDensityPlotPoints(series, xmin, xmax, ymin, ymax, pdf, 0.05, 10, 3, -4, 3);
  EXPECT_EQ(xmin, -4.0);
  EXPECT_EQ(xmax, 3.0);
  EXPECT_THAT(series.GetPoint(1).GetY(),
              IsCloseTo(10 * std::exp(-0.125) / std::sqrt(2 * M_PI), 1e-12));
  QVGetPDFCDFPlotPoints(series, xmin, xmax, ymin, ymax, pdf, 0.05, 1, 0, 0);
  EXPECT_EQ(series.GetNumPoints(), 1u);
  EXPECT_THAT(series.GetPoint(0).GetY(), IsCloseTo(0.025, 1e-10));
  result =
      QVGetPDFCDFPlotPoints(series, xmin, xmax, ymin, ymax, QVUniVarNullPDF("x"), 0.05, 9, 0, 0);
  EXPECT_THAT(GetContextOf(result),
              ElementsAre("QVUniVarNullPDFImpl::GetPercentile", "QVGetPDFCDFPlotPoints"));
}

MATCHER_P2(IsPoint, x, y, "") {
  return std::abs(arg.GetX() - x) < 1e-15 && std::abs(arg.GetY() - y) < 1e-15;
}

TEST(DataPlot, OutlinesOfSmallSamples) {
  QVMath::QVDataSeries series;
  double xmin, xmax, ymin, ymax;
  QVGetEmpiricalCDFPlotPoints(series, xmin, xmax, {3, 1, 2}, 0, 5);
  EXPECT_THAT(series.GetPointVec(),
              ElementsAre(IsPoint(0, 0), IsPoint(1, 0), IsPoint(1, 1.0 / 3), IsPoint(2, 1.0 / 3),
                          IsPoint(2, 2.0 / 3), IsPoint(3, 2.0 / 3), IsPoint(3, 1), IsPoint(5, 1)));
  EXPECT_EQ(xmin, 1.0);
  EXPECT_EQ(xmax, 3.0);
  QVGetUserDefinedConstBinWidthHistPlotPoints(series, xmin, xmax, ymin, ymax, {3, 2, 1, 0}, 2, 0,
                                              0);
  EXPECT_EQ(series.GetNumPoints(), 7u);
  EXPECT_THAT(series.GetPoint(5).GetY(), IsCloseTo(1.0 / 3, 1e-15));
  EXPECT_EQ(xmax, 3.0);
  QVGetAutoDefinedConstBinWidthHistPlotPoints(series, xmin, xmax, ymin, ymax, {4, 4, 4, 4, 4}, 2,
                                              6);
  EXPECT_THAT(series.GetPointVec(),
              ElementsAre(IsPoint(2, 0), IsPoint(2, 0.25), IsPoint(6, 0.25), IsPoint(6, 0)));
  QVGetUserDefinedConstFreqHistPlotPoints(series, xmin, xmax, ymin, ymax, {1, 2, 3, 4, 5}, 2, 0, 8);
  EXPECT_THAT(series.GetPointVec(),
              ElementsAre(IsPoint(0, 0), IsPoint(0, 0.5 / 3), IsPoint(3, 0.5 / 3), IsPoint(3, 0),
                          IsPoint(3, 0.5 / 8), IsPoint(8, 0.5 / 8), IsPoint(8, 0)));
  EXPECT_EQ(ymax, 0.0);
  QVGetUserDefinedConstBinWidthHistPlotPoints(series, xmin, xmax, ymin, ymax, {}, 2, 0, 9);
  EXPECT_EQ(series.GetNumPoints(), 0u);
  const QVStatModelResult result = QVGetNormalProbabilityPlotPointsForSortedData(
      series, xmin, xmax, ymin, ymax, {7}, -1, 1, -1, 1);
  EXPECT_TRUE(result.IsSuccessful());
  EXPECT_THAT(series.GetPointVec(), ElementsAre(IsPoint(0, 0)));
}

// The area under the outline of a histogram of draws is 1, and the bars follow the density.
TEST(PDFPlot, HistogramsOfDraws) {
  QVStatModelResult result(true);
  QVUniVarPDF pdf = QVUnivariateGaussian("x", 0, 1, result);
  QVMath::QVRanNumEngine engine(8);
  QVMath::QVDataSeries series;
  double xmin, xmax, ymin, ymax;
  result = QVGetAutoDefConstBinWidthHistPlotPointsForPDFSample(series, xmin, xmax, ymin, ymax, pdf,
                                                               100000, engine, 0, 0);
  ASSERT_TRUE(result.IsSuccessful());
  const auto& points = series.GetPointVec();
  double area = 0.0;
  for (std::size_t i = 1; i + 1 < points.size(); i += 3) {
    area += points[i].GetY() * (points[i + 1].GetX() - points[i].GetX());
    const double middle = (points[i].GetX() + points[i + 1].GetX()) / 2;
    EXPECT_NEAR(points[i].GetY(), pdf.GetDensity(middle, result, true), 0.035);
  }
  EXPECT_THAT(area, IsCloseTo(1.0, 1e-9));
  QVUniVarPDF none = QVUniVarNullPDF("x");
  result = QVGetEmpiricalCDFPlotPointsForPDFSample(series, xmin, xmax, none, 5, engine, 0, 0);
  EXPECT_THAT(GetContextOf(result),
              ElementsAre("QVUniVarNullPDFImpl::GetRandomOutcome", "QVGetPDFSample",
                          "QVGetEmpiricalCDFPlotPointsForPDFSample"));
}

// Contours of a standard Gaussian in the plane are circles of radius sqrt(-2 log level).
TEST(PDFPlot, ContoursOfTwoVariables) {
  QVStatModelResult result(true);
  const QVMultiVarPDF pdf = QVMultivariateGaussian({"x", "y"}, {0, 0}, {1, 0, 0, 1}, result);
  QVSystem::QVScopedRecordingSink sink;
  std::vector<QVMath::QVDataSeries> series;
  double xmin, xmax, ymin, ymax;
  result =
      QVGet2DimPDFDensityPlotPoints(series, xmin, xmax, ymin, ymax, pdf, 0.01, 200, -4, 4, -4, 4);
  ASSERT_TRUE(result.IsSuccessful()) << result.ReportStatResultDetails();
  ASSERT_EQ(series.size(), 10u);
  for (std::size_t k = 0; k < 10; ++k) {
    const double radius = std::sqrt(-2 * std::log(0.05 + 0.1 * static_cast<double>(k)));
    for (const QVMath::QVDataPoint& point : series[k].GetPoints())
      EXPECT_NEAR(std::hypot(point.GetX(), point.GetY()), radius, 2e-3);
  }
  EXPECT_EQ(sink.GetTexts(QVSystem::QVErrorLevel::Info).size(), 4u);
  const QVMultiVarPDF three = QVMultivariateGaussian(kNames, {1, 2, 3}, kPrecision, result);
  EXPECT_EQ(
      QVGet2DimPDFDensityPlotPoints(series, xmin, xmax, ymin, ymax, three, 0.01, 9, 0, 0, 0, 0)
          .GetFailureType(),
      Failure::WrongNumPDFVars);
}

}  // namespace
}  // namespace QVStats
