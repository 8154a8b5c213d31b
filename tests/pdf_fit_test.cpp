#include "stats/api/pdf_fit.h"

#include <gmock/gmock.h>

#include <cmath>
#include <fstream>
#include <limits>
#include <map>
#include <sstream>

#include "stats/api/pdf_setup.h"
#include "stats/api/stats_data_types.h"
#include "tests/support/matchers.h"

namespace QVStats {
namespace {

using Chain = std::vector<std::string>;
using testing::IsEmpty;
using testing::SizeIs;
namespace Failure = QVStatModelFailureType;

std::vector<double> ReadList(const std::string& text) {
  std::vector<double> values;
  std::istringstream stream(text);
  for (std::string part; std::getline(stream, part, ',');) values.push_back(std::stod(part));
  return values;
}

struct Reference {
  std::string family;
  std::vector<double> parameters, standardErrors;
  double logLikelihood;
  std::vector<double> sample;
};

// Maxima in arbitrary precision: tools/make_pdf_fit_reference.py.
std::vector<Reference> ReadReferences() {
  std::ifstream file(QVSTATS_TEST_DATA "/pdf_fit_reference.tsv");
  std::vector<Reference> references;
  for (std::string line; std::getline(file, line);) {
    std::istringstream stream(line);
    std::string field[5];
    for (std::string& text : field) std::getline(stream, text, '\t');
    references.push_back({field[0], ReadList(field[1]), ReadList(field[2]), std::stod(field[3]),
                          ReadList(field[4])});
  }
  return references;
}

const std::map<std::string, std::uint64_t> kPdfTypes = {
    {"gaussian", QVPDFType::UniVariateGaussian},
    {"students_t", QVPDFType::UnivariateStudentsT},
    {"gamma", QVPDFType::Gamma},
    {"chi_squared", QVPDFType::ChiSquared},
    {"snedecors_f", QVPDFType::SnedecorsF},
    {"beta", QVPDFType::Beta},
    {"gumbel", QVPDFType::Gumbel},
    {"gev", QVPDFType::GeneralizedExtremeValue},
};

TEST(PdfFit, FindsTheMaximumOfTheLikelihood) {
  const std::vector<Reference> references = ReadReferences();
  ASSERT_GE(references.size(), 14u);
  for (const Reference& reference : references) {
    SCOPED_TRACE(reference.family);
    QVStatModelResult result;
    const QVPDFFit fit =
        QVFitUnivariatePDF(kPdfTypes.at(reference.family), "x", reference.sample, result);
    ASSERT_TRUE(result.IsSuccessful()) << result.ReportStatResultDetails();
    ASSERT_THAT(fit.parameters, SizeIs(reference.parameters.size()));
    for (std::size_t i = 0; i < fit.parameters.size(); ++i) {
      // A part of the standard error says more than a part of a location does.
      EXPECT_NEAR(fit.parameters[i], reference.parameters[i], 1e-10 * reference.standardErrors[i]);
      EXPECT_THAT(fit.standardErrors[i], IsCloseTo(reference.standardErrors[i], 1e-9));
    }
    EXPECT_THAT(fit.logLikelihood, IsCloseTo(reference.logLikelihood, 1e-11));
    EXPECT_LE(fit.numSteps, 15u);
    double sum = 0.0;
    for (const double x : reference.sample) sum += fit.pdf.GetLogDensity(x, result, true);
    EXPECT_THAT(sum, IsCloseTo(fit.logLikelihood, 1e-11));
  }
}

struct Draw {
  std::uint64_t pdfType;
  std::vector<double> parameters;
};

// 10^5 draws: the parameters come back within a few of their standard errors.
TEST(PdfFit, RecoversTheParametersOfDraws) {
  const Draw draws[] = {
      {QVPDFType::UnivariateStudentsT, {7.0, 1.0, 4.0}},
      {QVPDFType::Gamma, {2.5, 1e-6}},
      {QVPDFType::SnedecorsF, {12.0, 4.0}},
      {QVPDFType::Beta, {0.2, 5.0}},
      {QVPDFType::Gumbel, {-5e6, 10.0}},
      {QVPDFType::GeneralizedExtremeValue, {0.0, 1.0, 0.0}},
      {QVPDFType::GeneralizedExtremeValue, {3.0, 1e-3, 0.8}},
      {QVPDFType::GeneralizedExtremeValue, {3.0, 1.0, -0.45}},
  };
  for (const Draw& draw : draws) {
    SCOPED_TRACE(QVPDFType::NameOf[draw.pdfType]);
    QVStatModelResult result;
    QVRanVarVec parameters, outcomes;
    result = QVUniVarGenericRanVars::SetupRanVarVecs(draw.pdfType, draw.parameters, parameters,
                                                     outcomes);
    ASSERT_TRUE(result.IsSuccessful());
    QVUniVarPDF pdf(draw.pdfType, "x", parameters, outcomes);
    QVMath::QVRanNumEngine engine(7);
    std::vector<double> sample(100000);
    for (double& x : sample) x = pdf.GetRandomOutcome(result, engine);
    const QVPDFFit fit = QVFitUnivariatePDF(draw.pdfType, "x", sample, result);
    ASSERT_TRUE(result.IsSuccessful()) << result.ReportStatResultDetails();
    for (std::size_t i = 0; i < draw.parameters.size(); ++i) {
      EXPECT_NEAR(fit.parameters[i], draw.parameters[i], 4.0 * fit.standardErrors[i]);
      EXPECT_GT(fit.standardErrors[i], 0.0);
    }
  }
}

// Another unit of the data changes the parameters by its factor, and nothing else.
TEST(PdfFit, FollowsTheUnitOfTheData) {
  for (const Reference& reference : ReadReferences()) {
    if (reference.family != "students_t" && reference.family != "gev") continue;
    SCOPED_TRACE(reference.family);
    std::vector<double> scaled = reference.sample;
    for (double& x : scaled) x = 1024.0 * x + 65536.0;
    QVStatModelResult result;
    const std::uint64_t pdfType = kPdfTypes.at(reference.family);
    const QVPDFFit fit = QVFitUnivariatePDF(pdfType, "x", scaled, result);
    const std::size_t location = reference.family == "gev" ? 0 : 1;
    const std::size_t shape = reference.family == "gev" ? 2 : 0;
    EXPECT_THAT(fit.parameters[location],
                IsCloseTo(1024.0 * reference.parameters[location] + 65536.0, 1e-9));
    EXPECT_THAT(fit.parameters[shape], IsCloseTo(reference.parameters[shape], 1e-9));
    EXPECT_THAT(fit.standardErrors[location],
                IsCloseTo(1024.0 * reference.standardErrors[location], 1e-9));
  }
}

// Equally spaced values have lighter tails than any Student's t; a maximum among F distributions
// would be at infinite degrees of freedom of the denominator.
TEST(PdfFit, SaysWhereALikelihoodHasNoMaximum) {
  QVStatModelResult result;
  std::vector<double> uniform;
  for (int i = 1; i < 50; ++i) uniform.push_back(i);
  const QVPDFFit fit = QVFitUnivariateStudentsT("x", uniform, result);
  EXPECT_THAT(result, FailedAlong(Failure::WrongPDFType, Chain{"QVFitUnivariateStudentsT"},
                                  Chain{"The likelihood grows as Univariate Students-T Degrees Of "
                                        "Freedom goes to infinity"}));
  EXPECT_THAT(fit.parameters, IsEmpty());
  EXPECT_EQ(fit.logLikelihood, QVStatsBadData::BadDouble);
  EXPECT_EQ(fit.pdf.GetMean(result), QVStatsBadData::BadDouble);
  // A density that rises to its upper end without a bound.
  std::vector<double> piled;
  for (int i = 1; i < 60; ++i) piled.push_back(-std::pow(i / 60.0, 8.0));
  QVFitGeneralizedExtremeValue("x", piled, result);
  EXPECT_TRUE(result.NotSuccessful());
}

TEST(PdfFit, NoStandardErrorsWhereTheyDoNotExist) {
  // Quantiles of a generalised extreme-value distribution of shape -0.7.
  std::vector<double> sample;
  for (int i = 0; i < 400; ++i)
    sample.push_back((std::exp(0.7 * std::log(-std::log((i + 0.5) / 400.0))) - 1.0) / -0.7);
  QVStatModelResult result;
  const QVPDFFit fit = QVFitGeneralizedExtremeValue("x", sample, result);
  ASSERT_TRUE(result.IsSuccessful()) << result.ReportStatResultDetails();
  EXPECT_NEAR(fit.parameters[2], -0.7, 0.03);
  EXPECT_THAT(fit.standardErrors, testing::Each(QVStatsBadData::BadDouble));
  EXPECT_THAT(fit.covariance, IsEmpty());
}

TEST(PdfFit, NamesTheFaultOfASample) {
  struct Case {
    std::uint64_t pdfType;
    std::vector<double> sample;
    unsigned int type;
    const char* where;
    const char* comment;
  };
  const double infinity = std::numeric_limits<double>::infinity();
  const Case cases[] = {
      {2,
       {1},
       Failure::NoData,
       "QVFitUnivariateGaussian",
       "Num values: 1; at least 2 are required"},
      {2,
       {1, infinity},
       Failure::MissingOrBadResponseValue,
       "QVFitUnivariateGaussian",
       "Value 1 of the sample is inf"},
      {15,
       {QVStatsBadData::MissingDouble, 1},
       Failure::MissingOrBadResponseValue,
       "QVFitGumbel",
       "Value 0 of the sample is 1.79769e+307"},
      {6, {1, 0}, Failure::LowerBoundViolated, "QVFitGamma", "Value 1 of the sample is 0"},
      {9, {0.5, 1}, Failure::UpperBoundViolated, "QVFitBeta", "Value 1 of the sample is 1"},
      {16,
       {3, 3, 3, 3},
       Failure::SingularScaleOrCovariance,
       "QVFitGeneralizedExtremeValue",
       "All values of the sample are 3"},
  };
  for (const Case& row : cases) {
    QVStatModelResult result;
    QVFitUnivariatePDF(row.pdfType, "x", row.sample, result);
    EXPECT_THAT(result, FailedAlong(row.type, (Chain{row.where, "QVFitUnivariatePDF"}),
                                    Chain{row.comment}));
  }
  QVStatModelResult result;
  QVFitUnivariatePDF(QVPDFType::Binomial, "x", {1, 2}, result);
  EXPECT_THAT(result, FailedWith(Failure::WrongPDFType, "QVFitUnivariatePDF"));
  EXPECT_GT(QVFitChiSquare("x", {2.0}, result).parameters.at(0), 0.0);
}

}  // namespace
}  // namespace QVStats
