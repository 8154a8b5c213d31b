#include <benchmark/benchmark.h>

#include <cmath>
#include <random>

#include "stats/api/krige_kernels.h"
#include "stats/api/variogram.h"

namespace {

using Pairs = std::vector<std::pair<double, double>>;

/// Pairs whose differences grow with their distance, as those of a smooth response do.
Pairs MakePairs(std::size_t count) {
  std::mt19937 engine(7);
  std::uniform_real_distribution<double> distance;
  std::normal_distribution<double> noise;
  Pairs pairs(count);
  for (auto& pair : pairs) {
    pair.first = std::cbrt(distance(engine));
    pair.second = std::sqrt(0.1 + pair.first) * noise(engine);
  }
  return pairs;
}

void BM_SetupVariogram(benchmark::State& state) {
  const Pairs all = MakePairs(static_cast<std::size_t>(state.range(0)));
  QVStats::QVVariogramImpl variogram;
  for (auto _ : state) {
    state.PauseTiming();
    Pairs pairs = all;
    state.ResumeTiming();
    if (!QVStats::QVSetupVariogram(variogram, pairs, true))
      return state.SkipWithError("no variogram");
  }
  state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_SetupVariogram)->RangeMultiplier(8)->Range(1 << 12, 1 << 21)->Complexity();

void BM_FitAllKernels(benchmark::State& state) {
  Pairs pairs = MakePairs(100000);
  QVStats::QVVariogramImpl variogram;
  QVStats::QVSetupVariogram(variogram, pairs, true);
  for (auto _ : state)
    for (const QVStats::QVKrigeKernelBase& candidate : QVStats::QVGetKrigeKernels()) {
      QVStats::QVKrigeKernel kernel(candidate);
      benchmark::DoNotOptimize(QVStats::QVFitKernel(kernel, variogram));
    }
}
BENCHMARK(BM_FitAllKernels)->Unit(benchmark::kMillisecond);

/// Covariances of a million distances, by the number of the candidate kernel.
void BM_Covariances(benchmark::State& state) {
  auto candidate = QVStats::QVGetKrigeKernels();
  for (std::int64_t i = 0; i < state.range(0); ++i) ++candidate;
  std::vector<double> distances(1000000);
  std::mt19937 engine(3);
  std::uniform_real_distribution<double> distance;
  for (double& h : distances) h = distance(engine);
  std::vector<double> covariances(distances.size());
  for (auto _ : state) {
    candidate->GetCovariances(distances.data(), covariances.data(), distances.size());
    benchmark::DoNotOptimize(covariances.data());
  }
  state.SetLabel(candidate->GetName());
  state.SetItemsProcessed(state.iterations() * 1000000);
}
BENCHMARK(BM_Covariances)->DenseRange(0, 15)->Unit(benchmark::kMillisecond);

}  // namespace
