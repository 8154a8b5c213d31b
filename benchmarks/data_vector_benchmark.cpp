// Statistics of samples: from one assay's values to a million of a screening deck.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <iostream>
#include <sstream>
#include <utility>
#include <vector>

#include "stats/api/data_vector_bootstrap.h"
#include "stats/api/data_vector_functions.h"
#include "stats/api/data_vector_hypothesis.h"
#include "stats/api/data_vector_independence.h"
#include "stats/api/data_vector_pairs.h"

namespace {

using QVStats::QVStatModelResult;
using Values = std::vector<double>;
using Pairs = std::vector<std::pair<double, double>>;

Values Draw(std::int64_t n, std::uint64_t seed) {
  QVMath::QVRanNumEngine engine(seed);
  return QVMath::QVGaussianRNG().Draw(engine, static_cast<std::size_t>(n));
}

/// Correlated pairs; every tenth y is rounded, as measured values are.
Pairs DrawPairs(std::int64_t n) {
  const Values x = Draw(n, 1), noise = Draw(n, 2);
  Pairs pairs(x.size());
  for (std::size_t i = 0; i < x.size(); ++i) {
    const double y = 0.5 * x[i] + noise[i];
    pairs[i] = {x[i], i % 10 == 0 ? std::round(10.0 * y) / 10.0 : y};
  }
  return pairs;
}

/// Keeps what the permutation test writes to standard output out of the report.
class SilentOutput {
 public:
  SilentOutput() : saved_(std::cout.rdbuf(text_.rdbuf())) {}
  ~SilentOutput() { std::cout.rdbuf(saved_); }
  SilentOutput(const SilentOutput&) = delete;
  SilentOutput& operator=(const SilentOutput&) = delete;

 private:
  std::ostringstream text_;
  std::streambuf* saved_;
};

void RunSampleStatistic(benchmark::State& state, unsigned int code, double parameter) {
  const Values x = Draw(state.range(0), 3);
  const QVStats::QVSampleStatistic statistic(code, parameter);
  for (auto _ : state) benchmark::DoNotOptimize(statistic(x));
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void RunPairStatistic(benchmark::State& state, unsigned int code) {
  const Pairs pairs = DrawPairs(state.range(0));
  const QVStats::QVTwoSampleStatistic statistic(code);
  for (auto _ : state) benchmark::DoNotOptimize(statistic(pairs));
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_Median(benchmark::State& state) {
  RunSampleStatistic(state, QVStats::QVSampleStatisticType::Median, 0.0);
}
void BM_Quantile(benchmark::State& state) {
  RunSampleStatistic(state, QVStats::QVSampleStatisticType::Quantile, 0.95);
}
void BM_TrimmedMean(benchmark::State& state) {
  RunSampleStatistic(state, QVStats::QVSampleStatisticType::TrimmedMean, 0.2);
}
void BM_Variance(benchmark::State& state) {
  RunSampleStatistic(state, QVStats::QVSampleStatisticType::Variance, 0.0);
}
void BM_SpearmanRho(benchmark::State& state) {
  RunPairStatistic(state, QVStats::QVTwoSampleStatisticType::SpearmanRho);
}
void BM_KendallTau(benchmark::State& state) {
  RunPairStatistic(state, QVStats::QVTwoSampleStatisticType::KendallTau);
}
void BM_DistanceCorrelation(benchmark::State& state) {
  RunPairStatistic(state, QVStats::QVTwoSampleStatisticType::DistanceCorrelation);
}

/// A bootstrap interval of the trimmed mean from 2000 replicates.
void BM_BootstrapInterval(benchmark::State& state) {
  const Values x = Draw(state.range(0), 4);
  double lower = 0.0, upper = 0.0;
  for (auto _ : state) {
    QVMath::QVRanNumEngine engine(5);
    const QVStatModelResult result = QVStats::QVGetBootstrapConfidenceInterval(
        lower, upper, engine, QVStats::QVBootstrapInterval::BiasCorrectedAccelerated, 0.95,
        QVStats::QVSampleStatisticType::TrimmedMean, 0.2, x, 2000);
    if (result.NotSuccessful()) return state.SkipWithError("no interval");
  }
  state.counters["width"] = upper - lower;
}

/// The distance covariance permutation test of 999 permutations: of numbers, and of points in
/// dim dimensions against numbers, as of descriptors and an activity.
void BM_PermutationTest(benchmark::State& state) {
  const auto dim = static_cast<std::size_t>(state.range(1));
  const Values x = Draw(state.range(0) * state.range(1), 6), y = Draw(state.range(0), 7);
  const SilentOutput silent;
  double p = 0.0;
  for (auto _ : state) {
    QVMath::QVRanNumEngine engine(8);
    QVStatModelResult result;
    p = QVStats::QVGetPValueForTwoSampleIndepStatistic(
        result, engine, 999, QVStats::QVIndependenceStatisticType::TestStatistic, x, dim, false, y,
        1, false);
    if (result.NotSuccessful()) return state.SkipWithError("no p-value");
  }
  state.counters["p"] = p;
}

void RunTwoSampleTest(benchmark::State& state, unsigned int code) {
  const Values x = Draw(state.range(0), 9), y = Draw(state.range(0), 10);
  QVStatModelResult result;
  QVStats::QVTestOutcome outcome;
  for (auto _ : state) {
    outcome = QVStats::QVGetTwoSampleTestForDataVecs(result, code,
                                                     QVStats::QVTestAlternative::TwoSided, x, y);
    if (result.NotSuccessful()) return state.SkipWithError("the test failed");
  }
  state.counters["exact"] = outcome.isExact;
}

void BM_WelchT(benchmark::State& state) {
  RunTwoSampleTest(state, QVStats::QVTwoSampleTestType::WelchT);
}
void BM_RankSum(benchmark::State& state) {
  RunTwoSampleTest(state, QVStats::QVTwoSampleTestType::RankSum);
}
void BM_KolmogorovSmirnov(benchmark::State& state) {
  RunTwoSampleTest(state, QVStats::QVTwoSampleTestType::KolmogorovSmirnov);
}

BENCHMARK(BM_Median)->RangeMultiplier(100)->Range(100, 1000000);
BENCHMARK(BM_Quantile)->RangeMultiplier(100)->Range(100, 1000000);
BENCHMARK(BM_TrimmedMean)->RangeMultiplier(100)->Range(100, 1000000);
BENCHMARK(BM_Variance)->RangeMultiplier(100)->Range(100, 1000000);
BENCHMARK(BM_SpearmanRho)->RangeMultiplier(10)->Range(1000, 1000000);
BENCHMARK(BM_KendallTau)->RangeMultiplier(10)->Range(1000, 1000000);
BENCHMARK(BM_DistanceCorrelation)->RangeMultiplier(10)->Range(1000, 100000);
BENCHMARK(BM_BootstrapInterval)
    ->RangeMultiplier(10)
    ->Range(100, 10000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PermutationTest)
    ->Args({500, 1})
    ->Args({2000, 1})
    ->Args({500, 10})
    ->Args({2000, 10})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_WelchT)->Arg(20)->Arg(10000);
BENCHMARK(BM_RankSum)->Arg(20)->Arg(49)->Arg(10000);
BENCHMARK(BM_KolmogorovSmirnov)->Arg(20)->Arg(1000)->Arg(3000)->Arg(10000);

}  // namespace
