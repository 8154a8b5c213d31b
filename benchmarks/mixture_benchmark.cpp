// Mixtures: a cycle per point and component, with and without responsibilities, and whole fits.
#include <benchmark/benchmark.h>

#include <ostream>
#include <random>

#include "platform/system/diagnostic_stream.h"
#include "platform/system/error_handler.h"
#include "stats/api/gaussian_mixture_model.h"
#include "stats/api/gaussian_mixture_multidim.h"

namespace {

using Values = std::vector<double>;

/// Three clusters in each of d dimensions.
Values Draw(std::size_t numPoints, std::size_t d) {
  std::mt19937_64 engine(17);
  std::normal_distribution<double> normal;
  Values data;
  for (std::size_t n = 0; n < numPoints; ++n)
    for (std::size_t i = 0; i < d; ++i)
      data.push_back(3.0 * static_cast<double>(n % 3) + normal(engine));
  return data;
}

template <QVStats::QVStatModelResult (QVStats::QVOneDimGaussMixModel::*Cycle)()>
void BM_Cycle(benchmark::State& state) {
  const auto numPoints = static_cast<std::size_t>(state.range(0));
  const auto numComponents = static_cast<std::uint64_t>(state.range(1));
  QVStats::QVOneDimGaussMixModel model =
      QVStats::QVDirichletGaussGammaMixtureModel(numComponents, "x", 1.0, Draw(numPoints, 1))
          .GetModel();
  for (auto _ : state)
    if ((model.*Cycle)().NotSuccessful()) return state.SkipWithError("the cycle failed");
  state.SetItemsProcessed(state.iterations() * state.range(0) * state.range(1));
}
BENCHMARK_TEMPLATE(BM_Cycle, &QVStats::QVOneDimGaussMixModel::DoOneFastEMCycle)
    ->ArgsProduct({{1000, 100000}, {1, 3, 6}});
BENCHMARK_TEMPLATE(BM_Cycle, &QVStats::QVOneDimGaussMixModel::DoOneEMCycle)
    ->ArgsProduct({{1000, 100000}, {3}});

void BM_FitDirichlet(benchmark::State& state) {
  std::ostream silent(nullptr);
  const QVSystem::QVScopedDiagnosticStream redirection(silent);
  const QVSystem::QVScopedRecordingSink warnings;
  const Values data = Draw(static_cast<std::size_t>(state.range(0)), 1);
  for (auto _ : state) {
    QVStats::QVDirichletGaussGammaMixtureModel model(3, "x", 1.0, data);
    double fitness;
    if (model.FitModel(fitness, 5e-4, 5e-4, 50000).NotSuccessful())
      return state.SkipWithError("the fit failed");
    benchmark::DoNotOptimize(fitness);
  }
}
BENCHMARK(BM_FitDirichlet)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

void BM_MultiDimCycle(benchmark::State& state) {
  const auto d = static_cast<std::size_t>(state.range(0));
  QVStats::QVMultiDimGaussMixModel model(3, std::vector<std::string>(d, "x"), 1.0, Draw(10000, d));
  for (auto _ : state)
    if (model.DoOneEMCycle().NotSuccessful()) return state.SkipWithError("the cycle failed");
  state.SetItemsProcessed(state.iterations() * 30000);
}
BENCHMARK(BM_MultiDimCycle)->Arg(2)->Arg(8);

}  // namespace
