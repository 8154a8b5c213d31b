#include <benchmark/benchmark.h>

#include <Eigen/Cholesky>
#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "platform/math/dense_kernels.h"
#include "platform/system/memory.h"

namespace {

using QVMath::QVDenseKernels;
using QVMath::QVDensePath;

/// Not yet filled, on pages as the library takes them.
Eigen::MatrixXd MakeMatrix(Eigen::Index rows, Eigen::Index columns) {
  Eigen::MatrixXd matrix(rows, columns);
  QVSystem::QVPreferLargePages(matrix.data(),
                               static_cast<std::size_t>(matrix.size()) * sizeof(double));
  return matrix;
}

Eigen::MatrixXd MakePositiveDefinite(Eigen::Index n) {
  Eigen::MatrixXd a = MakeMatrix(n, n);
  for (Eigen::Index j = 0; j < n; ++j)
    for (Eigen::Index i = 0; i < n; ++i)
      a(i, j) = std::exp(-0.05 * static_cast<double>(std::abs(i - j))) + (i == j ? 0.1 : 0.0);
  return a;
}

const QVDenseKernels* GetKernels(benchmark::State& state) {
  const auto* kernels = QVMath::QVFindDenseKernels(static_cast<QVDensePath>(state.range(1)));
  if (!kernels)
    state.SkipWithError("this machine lacks the instruction set");
  else
    state.SetLabel(kernels->name);
  return kernels;
}

void SetFlops(benchmark::State& state, double flops) {
  state.counters["GFLOP/s"] = benchmark::Counter(
      flops * 1e-9 * static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}

void BM_Cholesky(benchmark::State& state) {
  const auto* kernels = GetKernels(state);
  if (!kernels) return;
  const Eigen::Index n = state.range(0);
  const Eigen::MatrixXd a = MakePositiveDefinite(n);
  Eigen::MatrixXd l = MakeMatrix(n, n);
  const auto size = static_cast<std::size_t>(n);
  for (auto _ : state) {
    state.PauseTiming();
    l = a;
    state.ResumeTiming();
    if (!kernels->cholesky(size, l.data(), size)) return state.SkipWithError("not factorised");
  }
  SetFlops(state, std::pow(static_cast<double>(n), 3) / 3.0);
}
BENCHMARK(BM_Cholesky)
    ->ArgsProduct({{100, 500, 1000, 2000, 4000, 8000}, {1, 2}})
    ->ArgsProduct({{100, 1000}, {0}})
    ->Unit(benchmark::kMillisecond);

void BM_EigenCholesky(benchmark::State& state) {
  const Eigen::MatrixXd a = MakePositiveDefinite(state.range(0));
  for (auto _ : state) {
    const Eigen::LLT<Eigen::MatrixXd> llt(a);
    benchmark::DoNotOptimize(llt.info());
  }
  SetFlops(state, std::pow(static_cast<double>(state.range(0)), 3) / 3.0);
}
BENCHMARK(BM_EigenCholesky)->Arg(100)->Arg(1000)->Unit(benchmark::kMillisecond);

void BM_Multiply(benchmark::State& state) {
  const auto* kernels = GetKernels(state);
  if (!kernels) return;
  const auto n = static_cast<std::size_t>(state.range(0));
  std::vector<double> a(n * n, 0.5), c(n * n, 0.0);
  const QVMath::QVDenseView view{a.data(), 1, static_cast<std::ptrdiff_t>(n)};
  for (auto _ : state) kernels->multiply(n, n, n, 1.0, view, view, c.data(), n);
  SetFlops(state, 2.0 * std::pow(static_cast<double>(n), 3));
}
BENCHMARK(BM_Multiply)
    ->ArgsProduct({{100, 1000, 2000}, {1, 2}})
    ->Args({1000, 0})
    ->Unit(benchmark::kMillisecond);

/// Both triangular solves, with few right sides and many.
void BM_Solve(benchmark::State& state) {
  const auto* kernels = GetKernels(state);
  if (!kernels) return;
  const Eigen::Index n = state.range(0);
  const auto size = static_cast<std::size_t>(n);
  const auto sides = static_cast<std::size_t>(state.range(2));
  Eigen::MatrixXd l = MakePositiveDefinite(n);
  kernels->cholesky(size, l.data(), size);
  std::vector<double> b(size * sides, 1.0);
  for (auto _ : state) {
    std::fill(b.begin(), b.end(), 1.0);
    kernels->solveLower(size, l.data(), size, sides, b.data(), size);
    kernels->solveLowerTransposed(size, l.data(), size, sides, b.data(), size);
  }
  SetFlops(state, 2.0 * static_cast<double>(size * size * sides));
}
BENCHMARK(BM_Solve)
    ->ArgsProduct({{100, 1000, 4000}, {1, 2}, {1, 3, 12, 96, 240}})
    ->Unit(benchmark::kMillisecond);

/// Reduction to tridiagonal form, and that with the eigenvalues.
void BM_Tridiagonalise(benchmark::State& state) {
  const auto* kernels = GetKernels(state);
  if (!kernels) return;
  const Eigen::MatrixXd a = MakePositiveDefinite(state.range(0));
  const auto size = static_cast<std::size_t>(state.range(0));
  Eigen::MatrixXd work = MakeMatrix(a.rows(), a.cols());
  std::vector<double> d(size), e(size), z(size, 1.0);
  for (auto _ : state) {
    work = a;
    kernels->tridiagonalise(size, work.data(), size, d.data(), e.data(), z.data());
    if (state.range(2) && !QVMath::QVGetTridiagonalEigenvalues(size, d.data(), e.data()))
      return state.SkipWithError("no eigenvalues");
  }
  SetFlops(state, 4.0 / 3.0 * std::pow(static_cast<double>(size), 3));
}
BENCHMARK(BM_Tridiagonalise)
    ->ArgNames({"n", "path", "values"})
    ->ArgsProduct({{500, 1000, 2000}, {1, 2}, {0, 1}})
    ->Args({1000, 0, 0})
    ->Unit(benchmark::kMillisecond);

void BM_Exp(benchmark::State& state) {
  const auto* kernels = GetKernels(state);
  if (!kernels) return;
  std::vector<double> x(static_cast<std::size_t>(state.range(0)), -1.25), y(x.size());
  const auto function = state.range(2) ? kernels->log : kernels->exp;
  if (state.range(2)) std::fill(x.begin(), x.end(), 1.25);
  for (auto _ : state) {
    function(x.size(), x.data(), y.data());
    benchmark::DoNotOptimize(y.data());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_Exp)->ArgNames({"n", "path", "log"})->ArgsProduct({{4096}, {0, 1, 2}, {0, 1}});

}  // namespace
