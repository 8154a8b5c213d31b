#include <benchmark/benchmark.h>

#include <vector>

#include "stats/api/pdf_fit.h"

namespace {

/// Draws from a distribution with a fixed seed.
std::vector<double> Draw(QVStats::QVUniVarPDF pdf, std::size_t size) {
  QVStats::QVStatModelResult result;
  QVMath::QVRanNumEngine engine(7);
  std::vector<double> sample(size);
  for (double& x : sample) x = pdf.GetRandomOutcome(result, engine);
  return sample;
}

void Run(benchmark::State& state, const QVStats::QVUniVarPDF& pdf, std::uint64_t pdfType) {
  const std::vector<double> sample = Draw(pdf, static_cast<std::size_t>(state.range(0)));
  QVStats::QVStatModelResult result;
  unsigned int numSteps = 0;
  for (auto _ : state) {
    const QVStats::QVPDFFit fit = QVStats::QVFitUnivariatePDF(pdfType, "x", sample, result);
    if (result.NotSuccessful()) return state.SkipWithError("the fit failed");
    numSteps = fit.numSteps;
  }
  state.counters["steps"] = numSteps;
  state.SetComplexityN(state.range(0));
}

void BM_FitStudentsT(benchmark::State& state) {
  QVStats::QVStatModelResult result;
  Run(state, QVStats::QVUnivariateStudentsT("x", 5.0, 1.0, 4.0, result),
      QVStats::QVPDFType::UnivariateStudentsT);
}

void BM_FitGamma(benchmark::State& state) {
  QVStats::QVStatModelResult result;
  Run(state, QVStats::QVGamma("x", 2.5, 0.1, result), QVStats::QVPDFType::Gamma);
}

void BM_FitBeta(benchmark::State& state) {
  QVStats::QVStatModelResult result;
  Run(state, QVStats::QVBeta("x", 2.0, 5.0, result), QVStats::QVPDFType::Beta);
}

void BM_FitGeneralizedExtremeValue(benchmark::State& state) {
  QVStats::QVStatModelResult result;
  Run(state, QVStats::QVGeneralizedExtremeValue("x", 10.0, 2.0, 0.1, result),
      QVStats::QVPDFType::GeneralizedExtremeValue);
}

BENCHMARK(BM_FitStudentsT)->RangeMultiplier(100)->Range(100, 1000000);
BENCHMARK(BM_FitGamma)->RangeMultiplier(100)->Range(100, 1000000);
BENCHMARK(BM_FitBeta)->RangeMultiplier(100)->Range(100, 1000000);
BENCHMARK(BM_FitGeneralizedExtremeValue)->RangeMultiplier(100)->Range(100, 1000000);

}  // namespace
