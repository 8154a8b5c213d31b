// Univariate distributions against 50-digit values: tests/data/pdf_reference.tsv, which
// tools/make_pdf_reference.py writes with mpmath.

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "platform/system/text.h"
#include "stats/api/pdf.h"
#include "tests/support/matchers.h"

namespace QVStats {
namespace {

struct ReferenceLine {
  std::string family, parameters, function;
  double argument, value;
};

/// The lines of one family.
std::vector<ReferenceLine> ReadReference(const std::string& family) {
  std::ifstream file(QVSTATS_TEST_DATA "/pdf_reference.tsv");
  std::vector<ReferenceLine> lines;
  ReferenceLine line;
  while (file >> line.family >> line.parameters >> line.function >> line.argument >> line.value)
    if (line.family == family) lines.push_back(line);
  return lines;
}

std::vector<double> Split(const std::string& parameters) {
  std::vector<double> numbers;
  for (const std::string& number : QVSystem::QVStringTokenize(parameters, ","))
    numbers.push_back(std::stod(number));
  return numbers;
}

bool HasHugeParameter(const std::string& parameters) {
  const std::vector<double> p = Split(parameters);
  return *std::max_element(p.begin(), p.end()) >= 1e4;
}

QVUniVarPDF Make(const std::string& family, const std::string& parameters) {
  const std::vector<double> p = Split(parameters);
  QVStatModelResult result(true);
  if (family == "gaussian") return QVUnivariateGaussian("x", p[0], p[1], result);
  if (family == "students_t") return QVUnivariateStudentsT("x", p[0], p[1], p[2], result);
  if (family == "gamma") return QVGamma("x", p[0], p[1], result);
  if (family == "chi_squared") return QVChiSquare("x", p[0], result);
  if (family == "snedecors_f") return QVSnedecorsF("x", p[0], p[1], result);
  if (family == "beta") return QVBeta("x", p[0], p[1], result);
  if (family == "gumbel") return QVGumbel("x", p[0], p[1], result);
  if (family == "gev") return QVGeneralizedExtremeValue("x", p[0], p[1], p[2], result);
  return QVUniVarNullPDF("x");
}

const std::map<std::string, QVPDFFunction> kFunctions = {
    {"density", QVPDFFunction::Density},
    {"cdf", QVPDFFunction::CDF},
    {"survival", QVPDFFunction::Survival},
    {"log_density", QVPDFFunction::LogDensity},
    {"log_survival", QVPDFFunction::LogSurvival}};

class PdfReference : public testing::TestWithParam<const char*> {};
INSTANTIATE_TEST_SUITE_P(Families, PdfReference,
                         testing::Values("gaussian", "students_t", "gamma", "chi_squared",
                                         "snedecors_f", "beta", "gumbel", "gev"),
                         [](const auto& row) { return std::string(row.param); });

// Relative error 1e-13. The condition number of a probability is about the logarithm of it, so
// that far out in a tail (from about exp(-80) on) it allows 6 roundings of that logarithm. With
// parameters of 10^4 and more the argument's rounding counts by their square root and more:
// 2e-12, and for probabilities, which the general incomplete integrals compute there, 1e-11.
TEST_P(PdfReference, FunctionsAreRightIntoTheTails) {
  const auto lines = ReadReference(GetParam());
  ASSERT_GT(lines.size(), 50u);
  for (const ReferenceLine& line : lines) {
    const QVUniVarPDF pdf = Make(line.family, line.parameters);
    QVStatModelResult result(true);
    const double value =
        pdf.GetImpl()->GetValue(kFunctions.at(line.function), line.argument, result, true);
    ASSERT_TRUE(result.IsSuccessful()) << result.ReportStatResultDetails();
    const bool isLog = line.function.compare(0, 4, "log_") == 0;
    const double scale = isLog ? std::max(1.0, std::abs(line.value)) : line.value;
    const double condition = isLog ? 0.0 : std::abs(std::log(line.value));
    const bool isProbability = line.function == "cdf" || line.function.find("surv") < 5;
    const double usual = !HasHugeParameter(line.parameters) ? 1e-13 : isProbability ? 1e-11 : 2e-12;
    const double tolerance = std::max(usual, 6 * 0x1p-52 * condition);
    EXPECT_LE(std::abs(value - line.value), tolerance * scale)
        << line.family << " " << line.parameters << " " << line.function << " at " << line.argument
        << ": " << value << ", should be " << line.value << ", relative error "
        << std::abs(value - line.value) / scale;
  }
}

TEST_P(PdfReference, BulkCallsAgreeWithSingleOnes) {
  std::map<std::string, std::vector<double>> arguments;
  for (const ReferenceLine& line : ReadReference(GetParam()))
    if (line.function == "density") arguments[line.parameters].push_back(line.argument);
  for (auto& [parameters, x] : arguments) {
    const QVUniVarPDF pdf = Make(GetParam(), parameters);
    x.push_back(1e200);
    for (const auto& [name, function] : kFunctions) {
      QVStatModelResult result(true);
      std::vector<double> values;
      pdf.GetValues(function, x, values, result, false);
      ASSERT_TRUE(result.IsSuccessful());
      for (std::size_t i = 0; i < x.size(); ++i) {
        const double single = pdf.GetImpl()->GetValue(function, x[i], result, false);
        if (values[i] == single || std::isnan(single)) continue;
        const double condition = single > 0.0 && single < 1.0 ? -std::log(single) : 1.0;
        EXPECT_THAT(values[i], IsCloseTo(single, 1e-15 * (10.0 + condition)))
            << name << " " << parameters << " at " << x[i];
      }
    }
  }
}

// The argument is the percentile of its distribution function. The search promises |F(x) - p| and
// the last step; an error of the probability comes back as an error of x through the density.
TEST_P(PdfReference, PercentilesInvertTheDistributionFunction) {
  std::map<std::string, double> density;
  const bool isStudents = std::string(GetParam()) == "students_t";
  const double tolX = isStudents ? 5e-8 : 2.3e-14, tolY = isStudents ? 5e-10 : 2.3e-14;
  int searched = 0;
  for (const ReferenceLine& line : ReadReference(GetParam())) {
    if (line.function == "density") density[line.parameters] = line.value;
    const bool upper = line.function == "survival";
    if ((line.function != "cdf" && !upper) || line.value < 1e-9 || line.value > 0.999) continue;
    const QVUniVarPDF pdf = Make(line.family, line.parameters);
    QVStatModelResult result(true);
    const double x = upper ? pdf.GetUpperTailPercentile(line.value, result)
                           : pdf.GetPercentile(line.value, result);
    ASSERT_TRUE(result.IsSuccessful()) << line.value << result.ReportStatResultDetails();
    const double byProbability =
        4 * (upper ? 0x1p-50 * line.value : tolY) / density[line.parameters];
    const double byStep = upper ? 0.0 : (1.0 + std::abs(x)) * tolX;
    const double rounding = 1e-13 * std::abs(line.argument);
    EXPECT_NEAR(x, line.argument, byProbability + byStep + rounding)
        << line.family << " " << line.parameters << " " << line.function << " " << line.value;
    ++searched;
  }
  EXPECT_GT(searched, 8);
}

// Long vectors of probabilities are inverted together: at each the distribution function is the
// probability to rounding, as after the single search within its tolerance; what fails alone fails
// here.
TEST_P(PdfReference, PercentilesOfLongVectors) {
  const bool isStudents = std::string(GetParam()) == "students_t";
  std::vector<double> p = {0.0, 1e-300, 1e-9, 1e-4, 0x1p-12, 0.5, 1 - 0x1p-12, 1 - 1e-9};
  for (int i = 1; i < 1000; ++i) p.push_back(i * 0.001);
  std::vector<std::string> seen;
  for (const ReferenceLine& line : ReadReference(GetParam())) {
    if (!seen.empty() && seen.back() == line.parameters) continue;
    seen.push_back(line.parameters);
    const QVUniVarPDF pdf = Make(line.family, line.parameters);
    std::vector<double> x;
    QVStatModelResult result(true), first(true), single(true);
    pdf.GetValues(QVPDFFunction::Percentile, p, x, result, true);
    for (std::size_t i = 0; i < p.size(); ++i) {
      const double alone = pdf.GetPercentile(p[i], single);
      if (single.NotSuccessful() || i < 4) {
        EXPECT_EQ(x[i], alone);
        if (first.IsSuccessful()) first = single;
        continue;
      }
      const double density = pdf.GetDensity(alone, single, false);
      const double tolerance = isStudents                          ? 5e-10
                               : HasHugeParameter(line.parameters) ? 1e-12
                                                                   : 5e-14;
      EXPECT_NEAR(x[i], alone, tolerance / density + 1e-13 * (1 + std::abs(alone)))
          << line.parameters << " at " << p[i];
      const bool isNear = p[i] > 0.0005 && p[i] < 0.9995;
      if (isNear && std::isfinite(density) && !HasHugeParameter(line.parameters)) {
        EXPECT_NEAR(pdf.GetCDF(x[i], single, false), p[i],
                    5e-14 + density * std::abs(x[i]) * 0x1p-52)
            << line.parameters;
      }
    }
    EXPECT_EQ(result.GetFailureType(), first.GetFailureType());
  }
  EXPECT_GT(seen.size(), 1u);
}

}  // namespace
}  // namespace QVStats
