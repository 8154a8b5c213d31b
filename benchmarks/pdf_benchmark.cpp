// Distributions: single calls, calls over vectors, percentiles, draws, and what making one costs.
// The same functions of Boost.Math, called directly in the same run, stand beside them.
#include <benchmark/benchmark.h>

#define BOOST_MATH_PROMOTE_DOUBLE_POLICY false
#include <boost/math/distributions/beta.hpp>
#include <boost/math/distributions/gamma.hpp>
#include <boost/math/distributions/students_t.hpp>
#include <vector>

#include "stats/api/pdf.h"

namespace {

using QVStats::QVPDFFunction;
using QVStats::QVStatModelResult;
using QVStats::QVUniVarPDF;

enum Family { kGaussian, kStudentsT, kGamma, kBeta, kSnedecorsF, kChiSquared, kGaussMixture };

QVUniVarPDF Make(long family) {
  QVStatModelResult result(true);
  switch (family) {
    case kGaussian:
      return QVStats::QVUnivariateGaussian("x", 0.0, 1.0, result);
    case kStudentsT:
      return QVStats::QVUnivariateStudentsT("x", 5.3, 0.0, 1.0, result);
    case kGamma:
      return QVStats::QVGamma("x", 2.7, 1.5, result);
    case kBeta:
      return QVStats::QVBeta("x", 2.3, 3.1, result);
    case kSnedecorsF:
      return QVStats::QVSnedecorsF("x", 5.0, 8.0, result);
    case kChiSquared:
      return QVStats::QVChiSquare("x", 4.0, result);
    default:
      return QVStats::QVUnivariateGaussMixture("x", {0.2, 0.3, 0.5}, {-2, 0, 3}, {1, 4, 0.5},
                                               result);
  }
}

constexpr std::size_t kCount = 10000;

std::vector<double> Draw(QVUniVarPDF pdf) {
  QVMath::QVRanNumEngine engine(1);
  QVStatModelResult result(true);
  std::vector<double> values;
  for (std::size_t i = 0; i < kCount; ++i) values.push_back(pdf.GetRandomOutcome(result, engine));
  return values;
}

/// The arguments of a function: draws, or probabilities.
std::vector<double> MakeArguments(const QVUniVarPDF& pdf, QVPDFFunction function) {
  if (function != QVPDFFunction::Percentile && function != QVPDFFunction::UpperTailPercentile)
    return Draw(pdf);
  QVMath::QVRanNumEngine engine(2);
  return QVMath::QVUniformDoubleRNG(0.001, 0.999).Draw(engine, kCount);
}

void SetItems(benchmark::State& state) {
  state.SetItemsProcessed(state.iterations() * static_cast<long>(kCount));
}

template <QVPDFFunction function>
void BM_Single(benchmark::State& state) {
  const QVUniVarPDF pdf = Make(state.range(0));
  const std::vector<double> arguments = MakeArguments(pdf, function);
  QVStatModelResult result(true);
  for (auto _ : state)
    for (const double at : arguments)
      benchmark::DoNotOptimize(pdf.GetImpl()->GetValue(function, at, result, true));
  SetItems(state);
}

template <QVPDFFunction function>
void BM_Bulk(benchmark::State& state) {
  const QVUniVarPDF pdf = Make(state.range(0));
  const std::vector<double> arguments = MakeArguments(pdf, function);
  QVStatModelResult result(true);
  std::vector<double> values;
  for (auto _ : state) {
    pdf.GetValues(function, arguments, values, result, true);
    benchmark::DoNotOptimize(values.data());
  }
  SetItems(state);
}

/// Calls `query` with Boost's distribution of the family.
template <class Query>
void WithBoost(long family, Query query) {
  if (family == kStudentsT) query(boost::math::students_t(5.3));
  if (family == kGamma) query(boost::math::gamma_distribution<>(2.7, 1 / 1.5));
  if (family == kBeta) query(boost::math::beta_distribution<>(2.3, 3.1));
}

template <QVPDFFunction function>
void BM_Boost(benchmark::State& state) {
  const std::vector<double> arguments = MakeArguments(Make(state.range(0)), function);
  WithBoost(state.range(0), [&](const auto& law) {
    for (auto _ : state)
      for (const double at : arguments) {
        if (function == QVPDFFunction::Density) benchmark::DoNotOptimize(pdf(law, at));
        if (function == QVPDFFunction::CDF) benchmark::DoNotOptimize(cdf(law, at));
        if (function == QVPDFFunction::Percentile) benchmark::DoNotOptimize(quantile(law, at));
      }
  });
  SetItems(state);
}

void BM_RandomOutcome(benchmark::State& state) {
  QVUniVarPDF pdf = Make(state.range(0));
  QVMath::QVRanNumEngine engine(3);
  QVStatModelResult result(true);
  for (auto _ : state) benchmark::DoNotOptimize(pdf.GetRandomOutcome(result, engine));
}

void BM_Make(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(Make(state.range(0)));
}

#define QV_FAMILIES DenseRange(kGaussian, kGaussMixture)->ArgName("family")
#define QV_BOOST_FAMILIES DenseRange(kStudentsT, kBeta)->ArgName("family")
BENCHMARK_TEMPLATE(BM_Single, QVPDFFunction::Density)->QV_FAMILIES;
BENCHMARK_TEMPLATE(BM_Bulk, QVPDFFunction::Density)->QV_FAMILIES;
BENCHMARK_TEMPLATE(BM_Boost, QVPDFFunction::Density)->QV_BOOST_FAMILIES;
BENCHMARK_TEMPLATE(BM_Single, QVPDFFunction::CDF)->QV_FAMILIES;
BENCHMARK_TEMPLATE(BM_Bulk, QVPDFFunction::CDF)->QV_FAMILIES;
BENCHMARK_TEMPLATE(BM_Boost, QVPDFFunction::CDF)->QV_BOOST_FAMILIES;
BENCHMARK_TEMPLATE(BM_Single, QVPDFFunction::Percentile)->QV_FAMILIES;
BENCHMARK_TEMPLATE(BM_Bulk, QVPDFFunction::Percentile)->QV_FAMILIES;
BENCHMARK_TEMPLATE(BM_Boost, QVPDFFunction::Percentile)->QV_BOOST_FAMILIES;
BENCHMARK_TEMPLATE(BM_Single, QVPDFFunction::UpperTailPercentile)->QV_FAMILIES;
BENCHMARK(BM_RandomOutcome)->QV_FAMILIES;
BENCHMARK(BM_Make)->QV_FAMILIES;

}  // namespace
