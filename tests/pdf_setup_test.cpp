#include "stats/api/pdf_setup.h"

#include <gmock/gmock.h>

#include <functional>
#include <limits>

#include "tests/support/matchers.h"

namespace QVStats {
namespace {

using Chain = std::vector<std::string>;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
namespace Failure = QVStatModelFailureType;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
const double kNaN = std::numeric_limits<double>::quiet_NaN();

// A list of variables in short: their names, codes and values.
std::vector<std::string> Describe(const QVRanVarVec& variables) {
  std::vector<std::string> lines;
  for (const QVRanVar& variable : variables) {
    std::string line = variable.GetPdfName() + "|" + variable.GetPackageName() + "|" +
                       std::to_string(variable.GetRanVarType()) + " " + variable.GetRanVarName() +
                       "|" + std::to_string(variable.GetDataType()) +
                       std::to_string(variable.GetDimensionalType()) +
                       std::to_string(variable.GetConstraintType()) + "|";
    lines.push_back(line + variable.PrintValues(9).substr(19));
  }
  return lines;
}

TEST(PdfSetup, ScalarFamiliesFollowTheirTables) {
  QVRanVarVec parameters, outcomes;
  ASSERT_TRUE(
      QVUniVarStudentsTRanVars::SetupRanVarVecs(3, -1, 0.5, parameters, outcomes).IsSuccessful());
  EXPECT_THAT(
      Describe(parameters),
      ElementsAre("Univariate Students-T|Parameters|0 Univariate Students-T Degrees Of Freedom|"
                  "113|3 ",
                  "Univariate Students-T|Parameters|1 Univariate Students-T Location|111|-1 ",
                  "Univariate Students-T|Parameters|2 Univariate Students-T Precision|113|0.5 "));
  EXPECT_THAT(Describe(outcomes),
              ElementsAre("Univariate Students-T|Outcomes|3 Univariate Students-T Outcome|111|0 "));
  ASSERT_TRUE(QVBetaRanVars::SetupRanVarVecs(2, 3, parameters, outcomes).IsSuccessful());
  ASSERT_THAT(parameters, SizeIs(2));  // what was in the lists is gone
  ASSERT_THAT(outcomes, SizeIs(1));
  EXPECT_EQ(outcomes[0].PrintConstraintType(),
            "Random Var must be Bounded Above and Below; Lower Bound: 0 ; Upper Bound: 1 \n");
  ASSERT_TRUE(QVNullPDFRanVars::SetupRanVarVecs(parameters, outcomes).IsSuccessful());
  EXPECT_THAT(parameters, IsEmpty());
  EXPECT_THAT(outcomes, IsEmpty());
}

TEST(PdfSetup, MultivariateFamilies) {
  QVRanVarVec parameters, outcomes;
  ASSERT_TRUE(
      QVMultiVarStudentsTRanVars::SetupRanVarVecs(3, {1, 2}, {4, 0, 0, 4}, parameters, outcomes)
          .IsSuccessful());
  const std::string head = "Multivariate Students-T|Parameters|";
  EXPECT_THAT(Describe(parameters),
              ElementsAre(head + "0 Multivariate Students-T Degrees Of Freedom|113|3 ",
                          head + "1 Multivariate Students-T Location|121|1 2 ",
                          head + "2 Multivariate Size of Precision Matrix|213|4 ",
                          head + "3 Multivariate Students-T Precision Matrix|133|4 0 0 4 "));
  ASSERT_THAT(outcomes, SizeIs(1));
  EXPECT_EQ(outcomes[0].GetRanVarType(), 4u);
  EXPECT_TRUE(outcomes[0].CheckIfRanVarValsAreOk({-1, 7}).IsSuccessful());
  EXPECT_FALSE(outcomes[0].CheckIfRanVarValsAreOk({-1}).IsSuccessful());
}

TEST(PdfSetup, RandomSampleAndMixture) {
  QVRanVarVec parameters, outcomes;
  ASSERT_TRUE(
      QVUniVarContValRandomSampleRanVars::SetupRanVarVecs(6, {2, -1, 5}, parameters, outcomes)
          .IsSuccessful());
  std::string values;
  for (const QVRanVar& parameter : parameters) values += parameter.PrintValues(9).substr(19);
  EXPECT_EQ(values, "3 -1 5 6 ");
  EXPECT_THAT(outcomes.at(0).GetRanVarValVec(), ElementsAre(2, -1, 5));
  EXPECT_TRUE(outcomes.at(0).IsMultiValued());

  ASSERT_TRUE(
      QVUniVarMixtureRanVars::SetupRanVarVecs(2, {2, 4}, {2, 3}, {0.25, 0.75}, parameters, outcomes)
          .IsSuccessful());
  const std::string head = "UniVariate Mixture|Parameters|";
  EXPECT_THAT(Describe(parameters),
              ElementsAre(head + "0 Number of PDF Components|213|2 ",
                          head + "1 Univariate PDF Typesa of Components|223|2 4 ",
                          head + "2 Number of Params per PDF Components|223|2 3 ",
                          head + "3 Mixture Probabilities of Components|127|0.25 0.75 "));
  EXPECT_EQ(parameters[3].GetVarSumConstraint(), 1.0);
  EXPECT_EQ(outcomes.at(0).GetRanVarType(), 4u);
}

TEST(PdfSetup, GenericSetupGivesWhatTheFamilyGives) {
  QVRanVarVec parameters, outcomes, expectedParameters, expectedOutcomes;
  ASSERT_TRUE(
      QVUniVarGenericRanVars::SetupRanVarVecs(QVPDFType::Gamma, {2, 3}, parameters, outcomes)
          .IsSuccessful());
  ASSERT_TRUE(
      QVGammaRanVars::SetupRanVarVecs(2, 3, expectedParameters, expectedOutcomes).IsSuccessful());
  EXPECT_EQ(Describe(parameters), Describe(expectedParameters));
  EXPECT_EQ(Describe(outcomes), Describe(expectedOutcomes));
}

struct FailureCase {
  const char* name;
  std::function<QVStatModelResult(QVRanVarVec&, QVRanVarVec&)> call;
  unsigned int type;
  Chain routines;
  Chain comments;
};
void PrintTo(const FailureCase& row, std::ostream* out) { *out << row.name; }

#define QV_CALL(...) [](QVRanVarVec& parameters, QVRanVarVec& outcomes) { return __VA_ARGS__; }

const FailureCase kFailures[] = {
    {"GaussianPrecision",
     QV_CALL(QVUniVarGaussRanVars::SetupRanVarVecs(0, 0, parameters, outcomes)),
     Failure::SingularScaleOrCovariance,
     {"QVUniVarGaussRanVars::SetupRanVarVecs"},
     {}},
    {"GammaNaN",
     QV_CALL(QVGammaRanVars::SetupRanVarVecs(kNaN, 1, parameters, outcomes)),
     Failure::SingularScaleOrCovariance,
     {"QVGammaRanVars::SetupRanVarVecs"},
     {}},
    {"StudentsTDegreesOfFreedom",
     QV_CALL(QVUniVarStudentsTRanVars::SetupRanVarVecs(-1, 0, 1, parameters, outcomes)),
     Failure::SingularScaleOrCovariance,
     {"QVUniVarStudentsTRanVars::SetupRanVarVecs"},
     {}},
    {"ChiSquared",
     QV_CALL(QVChiSquareRanVars::SetupRanVarVecs(0, parameters, outcomes)),
     Failure::LowerBoundViolated,
     {"QVChiSquareRanVars::SetupRanVarVecs"},
     {"Degrees of freedom required to be positive: argument value = 0"}},
    {"SnedecorsF",
     QV_CALL(QVSnedecorsFRanVars::SetupRanVarVecs(2.5, -1, parameters, outcomes)),
     Failure::LowerBoundViolated,
     {"QVSnedecorsFRanVars::SetupRanVarVecs"},
     {"Numerator & Denominator Degrees of freedom required to be positive: argument values = 2.5 "
      "-1"}},
    {"Beta",
     QV_CALL(QVBetaRanVars::SetupRanVarVecs(0, 1, parameters, outcomes)),
     Failure::LowerBoundViolated,
     {"QVBetaRanVars::SetupRanVarVecs"},
     {"alpha & beta required to be positive: argument values = 0 1"}},
    {"LogNormal",
     QV_CALL(QVLogNormalRanVars::SetupRanVarVecs(0, -2, parameters, outcomes)),
     Failure::LowerBoundViolated,
     {"QVLogNormalRanVars::SetupRanVarVecs"},
     {"inverseScale required to be positive: argument value = -2"}},
    {"GeneralizedExtremeValue",
     QV_CALL(QVGeneralizedExtremeValueRanVars::SetupRanVarVecs(0, -2, -3, parameters, outcomes)),
     Failure::LowerBoundViolated,
     {"QVGeneralizedExtremeValueRanVars::SetupRanVarVecs"},
     {"scale required to be positive: argument value = -2"}},
    {"BinomialSize",
     QV_CALL(QVBinomialRanVars::SetupRanVarVecs(0, 2, parameters, outcomes)),
     Failure::LowerBoundViolated,
     {"QVBinomialRanVars::SetupRanVarVecs"},
     {"sampleSize required to be positive: argument value = 0"}},
    {"BinomialFraction",
     QV_CALL(QVBinomialRanVars::SetupRanVarVecs(10.5, 2, parameters, outcomes)),
     Failure::IntegerArgumentRequired,
     {"QVBinomialRanVars::SetupRanVarVecs"},
     {"sampleSize required to be an integer: argument value = 10.5"}},
    {"BinomialInfinite",
     QV_CALL(QVBinomialRanVars::SetupRanVarVecs(kInfinity, 0.5, parameters, outcomes)),
     Failure::IntegerArgumentRequired,
     {"QVBinomialRanVars::SetupRanVarVecs"},
     {"sampleSize required to be an integer: argument value = inf"}},
    {"BinomialProbability",
     QV_CALL(QVBinomialRanVars::SetupRanVarVecs(10, 1.2, parameters, outcomes)),
     Failure::UpperBoundViolated,
     {"QVBinomialRanVars::SetupRanVarVecs"},
     {"successProbability required to be between 0 and 1: argument value = 1.2"}},
    {"SampleOfUnknownFamily",
     QV_CALL(QVUniVarContValRandomSampleRanVars::SetupRanVarVecs(27, {1}, parameters, outcomes)),
     Failure::ArgumentOutOfRange,
     {"QVUniVarContValRandomSampleRanVars::SetupRanVarVecs"},
     {"pdfTypeDrawnFrom must be less than: argument value = 27"}},
    {"EmptySample",
     QV_CALL(QVUniVarContValRandomSampleRanVars::SetupRanVarVecs(2, {}, parameters, outcomes)),
     Failure::NoData,
     {"QVUniVarContValRandomSampleRanVars::SetupRanVarVecs"},
     {"Empty sample"}},
    {"MatrixSize",
     QV_CALL(QVMultiVarGaussRanVars::SetupRanVarVecs({1, 2}, {1, 1}, parameters, outcomes)),
     Failure::WrongInputMatrixSize,
     {"QVMultiVarGaussRanVars::SetupRanVarVecs"},
     {"matrix size: 2; model dimension: 2"}},
    {"MixtureSizes",
     QV_CALL(QVUniVarMixtureRanVars::SetupRanVarVecs(2, {2, 2}, {2, 2}, {1}, parameters, outcomes)),
     Failure::MismatchBetweenInputVecSizes,
     {"QVUniVarMixtureRanVars::SetupRanVarVecs"},
     {"vector size: 1; num components: 2"}},
    {"GenericUnsupported",
     QV_CALL(QVUniVarGenericRanVars::SetupRanVarVecs(3, {1}, parameters, outcomes)),
     Failure::WrongPDFType,
     {"QVUniVarGenericRanVars::SetupRanVarVecs"},
     {"pdf type: 3"}},
    {"GenericCount",
     QV_CALL(QVUniVarGenericRanVars::SetupRanVarVecs(2, {1}, parameters, outcomes)),
     Failure::WrongNumParameters,
     {"QVUniVarGenericRanVars::SetupRanVarVecs"},
     {"UniVariate Gaussian: 1 values; Expected 2"}},
    {"GenericValue",
     QV_CALL(QVUniVarGenericRanVars::SetupRanVarVecs(15, {0, 0}, parameters, outcomes)),
     Failure::LowerBoundViolated,
     {"QVGumbelRanVars::SetupRanVarVecs", "QVUniVarGenericRanVars::SetupRanVarVecs"},
     {"scale required to be positive: argument value = 0"}},
};

class PdfSetupFailure : public testing::TestWithParam<FailureCase> {};
INSTANTIATE_TEST_SUITE_P(Families, PdfSetupFailure, testing::ValuesIn(kFailures),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_P(PdfSetupFailure, NamesTheFaultAndLeavesTheListsEmpty) {
  QVRanVarVec parameters, outcomes;
  ASSERT_TRUE(QVUniVarGaussRanVars::SetupRanVarVecs(0, 1, parameters, outcomes).IsSuccessful());
  const FailureCase& row = GetParam();
  EXPECT_THAT(row.call(parameters, outcomes), FailedAlong(row.type, row.routines, row.comments));
  EXPECT_THAT(parameters, IsEmpty());
  EXPECT_THAT(outcomes, IsEmpty());
}

}  // namespace
}  // namespace QVStats
