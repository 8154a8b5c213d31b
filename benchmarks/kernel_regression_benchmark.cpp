// Kernel regression: on a line, against its sums row by row, and the grid search of prediction by
// similarity.
#include <benchmark/benchmark.h>

#include <cmath>
#include <numeric>
#include <random>

#include "stats/api/linear_smoother_univariate.h"
#include "stats/api/similarity_prediction.h"

namespace {

using namespace QVStats;

std::vector<double> Draw(std::size_t n, unsigned int seed) {
  std::mt19937_64 engine(seed);
  std::uniform_real_distribution<double> uniform;
  std::vector<double> values(n);
  for (double& value : values) value = uniform(engine);
  return values;
}

/// n points of the unit cube: similarity 1 - h / sqrt(3), a smooth response with noise.
QVDataTable MakeTable(std::size_t n) {
  const std::vector<double> points = Draw(3 * n, 3);
  const std::vector<double> noise = Draw(n, 4);
  std::vector<double> triangle;
  std::vector<double> responses;
  triangle.reserve(n * (n + 1) / 2);
  for (std::size_t i = 0; i < n; ++i) {
    const double* a = &points[3 * i];
    for (std::size_t j = 0; j <= i; ++j) {
      const double* b = &points[3 * j];
      const double h = std::hypot(a[0] - b[0], a[1] - b[1], a[2] - b[2]);
      triangle.push_back(1.0 - h / std::sqrt(3.0));
    }
    responses.push_back(std::sin(4.0 * a[0]) + a[1] * a[2] + 0.1 * noise[i]);
  }
  QVDataTable table("points");
  table.AddColumn(QVDataTableCol("sim", triangle, n, true));
  table.AddColumn(QVDataTableCol("y", responses, 1, false));
  return table;
}

QVDataTable Select(const QVDataTable& table, std::size_t first, std::size_t count) {
  std::vector<std::size_t> rows(count);
  std::iota(rows.begin(), rows.end(), first);
  return QVDataTable("selection", table, QVDataTableRowSet(rows));
}

QVDataTable MakeLine(std::size_t n) {
  const std::vector<double> x = Draw(n, 6);
  std::vector<double> y = Draw(n, 7);
  for (std::size_t i = 0; i < n; ++i) y[i] += std::sin(20.0 * x[i]);
  QVDataTable table("line");
  table.AddColumn(QVDataTableCol("x", x, 1, false));
  table.AddColumn(QVDataTableCol("y", y, 1, false));
  return table;
}

/// All training rows, each predicted from the others, with a bandwidth of a twentieth of the range.
void BM_UnivariateLeaveOneOut(benchmark::State& state) {
  const QVDataTable table = MakeLine(static_cast<std::size_t>(state.range(0)));
  QVUniVarLinearSmoother smoother(QVUnivarLinearSmootherType::KernelRegression,
                                  static_cast<unsigned int>(state.range(1)), "y", "x", table, 0);
  for (auto _ : state) {
    if (smoother.SetModelParams({20.0}).NotSuccessful()) return state.SkipWithError("the fit");
    QVStatModelResult result;
    benchmark::DoNotOptimize(smoother.GetPredictedResponseCol(result, "x", table, true, 0));
  }
  state.SetLabel(QVKernelFunctionType::TypeName[state.range(1)]);
}
BENCHMARK(BM_UnivariateLeaveOneOut)
    ->ArgsProduct({{100, 1000, 10000, 100000}, {1, 2, 3, 4, 5}})
    ->Unit(benchmark::kMillisecond);

void BM_UnivariateRowByRow(benchmark::State& state) {
  const QVDataTable table = MakeLine(static_cast<std::size_t>(state.range(0)));
  const std::vector<double> x = table.GetDoubles(table.GetColumnFromName("x"));
  const std::vector<double> y = table.GetDoubles(table.GetColumnFromName("y"));
  const QVKernelFunction kernel(static_cast<unsigned int>(state.range(1)));
  std::vector<double> predicted(x.size());
  for (auto _ : state) {
    for (std::size_t r = 0; r < x.size(); ++r) {
      double weight = 0.0;
      double sum = 0.0;
      for (std::size_t i = 0; i < x.size(); ++i) {
        if (i == r) continue;
        const double w = kernel((x[r] - x[i]) * 20.0) + 1.1920928955078125e-07;
        weight += w;
        sum += w * y[i];
      }
      predicted[r] = sum / weight;
    }
    benchmark::DoNotOptimize(predicted.data());
  }
  state.SetLabel(kernel.GetNameOfKernel());
}
BENCHMARK(BM_UnivariateRowByRow)
    ->ArgsProduct({{100, 1000, 10000}, {1, 4}})
    ->Unit(benchmark::kMillisecond);

void BM_SimilarityGrid(benchmark::State& state) {
  const auto n = static_cast<std::size_t>(state.range(0));
  const QVDataTable table = MakeTable(2 * n);
  const QVDataTable training = Select(table, 0, n);
  const QVDataTable test = Select(table, n, n);
  double error = 0.0;
  double param = 0.0;
  for (auto _ : state)
    if (OptimizePredResponseOverSimilarityKernelParams(error, param,
                                                       static_cast<unsigned int>(state.range(1)), 2,
                                                       1.0, 60.0, 60, "y", "sim", training, test)
            .NotSuccessful())
      return state.SkipWithError("the search failed");
  state.SetItemsProcessed(state.iterations() * state.range(0) * state.range(0) * 60);
  state.SetLabel(QVGetSimilarityKernelName(static_cast<unsigned int>(state.range(1))));
}
BENCHMARK(BM_SimilarityGrid)
    ->Args({1000, QVSimilarityKernelType::Exponential})
    ->Args({1000, QVSimilarityKernelType::TriCubic})
    ->Unit(benchmark::kMillisecond);

}  // namespace
