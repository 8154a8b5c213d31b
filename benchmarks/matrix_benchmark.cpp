#include <benchmark/benchmark.h>

#include <Eigen/Dense>
#include <random>
#include <vector>

#include "stats/api/matrix.h"

namespace {

using Vector = std::vector<double>;
using RowMajor = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;

/// A covariance-like matrix: exp(-|i - j| / 10), symmetric positive definite.
Vector MakeCovariance(std::size_t n) {
  Vector matrix(n * n);
  for (std::size_t i = 0; i < n; ++i)
    for (std::size_t j = 0; j < n; ++j)
      matrix[i * n + j] =
          std::exp(-std::abs(static_cast<double>(i) - static_cast<double>(j)) / 10.0);
  return matrix;
}

void BM_Cholesky(benchmark::State& state) {
  const auto n = static_cast<std::size_t>(state.range(0));
  const Vector matrix = MakeCovariance(n);
  Vector factor;
  if (QVStats::QVCholeskyDecomposition(n, matrix, factor).NotSuccessful())
    return state.SkipWithError("not positive definite");
  for (auto _ : state) {
    benchmark::DoNotOptimize(QVStats::QVCholeskyDecomposition(n, matrix, factor));
  }
  state.SetComplexityN(state.range(0));
}

// The same factor by Eigen, built for the same processor.
void BM_CholeskyEigen(benchmark::State& state) {
  const auto n = state.range(0);
  const Vector matrix = MakeCovariance(static_cast<std::size_t>(n));
  const Eigen::Map<const RowMajor> map(matrix.data(), n, n);
  for (auto _ : state) {
    const Eigen::LLT<RowMajor> factor(map);
    benchmark::DoNotOptimize(factor.info());
  }
}

void BM_Inverse(benchmark::State& state) {
  const auto n = static_cast<std::size_t>(state.range(0));
  const Vector matrix = MakeCovariance(n);
  Vector inverse;
  for (auto _ : state) {
    benchmark::DoNotOptimize(QVStats::QVInverseOfPosDefMatrix(n, matrix, inverse));
  }
  state.SetComplexityN(state.range(0));
}

void BM_InverseEigen(benchmark::State& state) {
  const auto n = state.range(0);
  const Vector matrix = MakeCovariance(static_cast<std::size_t>(n));
  const Eigen::Map<const RowMajor> map(matrix.data(), n, n);
  for (auto _ : state) {
    const Eigen::LLT<RowMajor> factor(map);
    const RowMajor inverse = factor.solve(RowMajor::Identity(n, n));
    benchmark::DoNotOptimize(inverse.data());
  }
}

void BM_MatrixTimesMatrix(benchmark::State& state) {
  const auto n = static_cast<std::size_t>(state.range(0));
  const Vector matrix = MakeCovariance(n);
  Vector product;
  for (auto _ : state) {
    benchmark::DoNotOptimize(QVStats::QVMatrixTimesMatrix(n, matrix, matrix, product));
  }
  state.SetComplexityN(state.range(0));
}

BENCHMARK(BM_Cholesky)->Arg(3)->Arg(10)->Arg(64)->Arg(300)->Arg(1000)->Complexity();
BENCHMARK(BM_CholeskyEigen)->Arg(3)->Arg(10)->Arg(64)->Arg(300)->Arg(1000);
BENCHMARK(BM_Inverse)->Arg(3)->Arg(10)->Arg(64)->Arg(300)->Arg(1000)->Complexity();
BENCHMARK(BM_InverseEigen)->Arg(3)->Arg(10)->Arg(64)->Arg(300)->Arg(1000);
BENCHMARK(BM_MatrixTimesMatrix)->Arg(3)->Arg(10)->Arg(64)->Arg(300)->Arg(1000)->Complexity();

}  // namespace
