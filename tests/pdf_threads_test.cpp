// One distribution asked by many threads at once. Searches for percentiles share numbers that the
// first of them computes; a thread checker (-fsanitize=thread) sees every unordered access here.

#include <gmock/gmock.h>

#include <string>
#include <thread>
#include <vector>

#include "stats/api/pdf.h"

namespace QVStats {
namespace {

constexpr std::size_t kNumThreads = 8;

QVUniVarPDF MakePDF(const std::string& family) {
  QVStatModelResult result(true);
  if (family == "Gaussian") return QVUnivariateGaussian("x", 1.5, 0.25, result);
  if (family == "StudentsT") return QVUnivariateStudentsT("x", 5.0, -1.0, 4.0, result);
  if (family == "Gamma") return QVGamma("x", 2.7, 1.5, result);
  if (family == "SnedecorsF") return QVSnedecorsF("x", 6.0, 9.0, result);
  if (family == "Beta") return QVBeta("x", 2.0, 3.5, result);
  return QVUnivariateGaussMixture("x", {0.25, 0.75}, {-1.0, 2.0}, {1.0, 4.0}, result);
}

/// Everything const that a distribution answers, over a range of probabilities.
std::vector<double> AskAll(const QVUniVarPDF& pdf) {
  QVStatModelResult result(true);
  std::vector<double> p, answers, values;
  for (int i = 1; i < 300; ++i) p.push_back(i / 300.0);
  for (std::size_t i = 0; i < p.size(); i += 7) {
    const double x = pdf.GetPercentile(p[i], result);
    EXPECT_TRUE(result.IsSuccessful());
    for (const double value : {x, pdf.GetCDF(x, result, true), pdf.GetDensity(x, result, true),
                               pdf.GetUpperTailPercentile(p[i], result)})
      answers.push_back(value);
  }
  pdf.GetValues(QVPDFFunction::Percentile, p, values, result, true);
  EXPECT_TRUE(result.IsSuccessful());
  answers.insert(answers.end(), values.begin(), values.end());
  pdf.GetValues(QVPDFFunction::CDF, std::vector<double>(values), values, result, true);
  answers.insert(answers.end(), values.begin(), values.end());
  return answers;
}

class PdfThreads : public testing::TestWithParam<const char*> {};
INSTANTIATE_TEST_SUITE_P(Families, PdfThreads,
                         testing::Values("Gaussian", "StudentsT", "Gamma", "SnedecorsF", "Beta",
                                         "Mixture"),
                         [](const auto& row) { return std::string(row.param); });

TEST_P(PdfThreads, GiveTheAnswersOfOneThread) {
  const QVUniVarPDF pdf = MakePDF(GetParam());
  const QVUniVarPDF alone = pdf;  // copied before the first search, so that it shares no number
  std::vector<std::vector<double>> answers(kNumThreads);
  std::vector<std::thread> threads;
  for (auto& own : answers) threads.emplace_back([&pdf, &own] { own = AskAll(pdf); });
  for (std::thread& thread : threads) thread.join();
  EXPECT_THAT(answers, testing::Each(AskAll(alone)));
}

}  // namespace
}  // namespace QVStats
