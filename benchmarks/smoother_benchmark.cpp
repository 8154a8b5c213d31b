#include <benchmark/benchmark.h>

#include <Eigen/Core>
#include <cmath>
#include <random>

#include "platform/math/dense_kernels.h"
#include "stats/api/data_vector_functions.h"
#include "stats/api/linear_smoother.h"

namespace {

using namespace QVStats;
namespace Kernel = QVSimilarityKernelType;
namespace Type = QVLinearSmootherOnSimilarityType;
using Values = std::vector<double>;

constexpr double kParam = 3.0;

/// Points of the unit square with a smooth response and noise; similarities 1 - h / sqrt(2).
struct Points {
  explicit Points(std::size_t n) : x(n), y(n), responses(n) {
    std::mt19937 engine(7);
    std::uniform_real_distribution<double> uniform;
    for (std::size_t i = 0; i < n; ++i) {
      x[i] = uniform(engine);
      y[i] = uniform(engine);
      responses[i] = std::sin(5.0 * x[i]) + std::cos(4.0 * y[i]) + 0.4 * uniform(engine);
    }
  }
  double GetSimilarity(std::size_t i, std::size_t j) const {
    return 1.0 - std::hypot(x[i] - x[j], y[i] - y[j]) / std::sqrt(2.0);
  }
  QVDataTable MakeTable() const {
    Values triangle;
    for (std::size_t i = 0; i < x.size(); ++i)
      for (std::size_t j = 0; j <= i; ++j) triangle.push_back(GetSimilarity(i, j));
    QVDataTable table("points");
    table.AddColumn(QVDataTableCol("sim", triangle, x.size(), true));
    table.AddColumn(QVDataTableCol("y", responses, 1, false));
    return table;
  }

  Values x, y, responses;
};

// ----- variograms

QVBinnedVariogramFromSimilarity MakeVariogram(const QVDataTable& table) {
  return {table, "y", "sim", QVVariogramBinWeights(false, 0.1, 0.3), 50};
}

void BM_ReadVariogram(benchmark::State& state) {
  const QVDataTable table = Points(static_cast<std::size_t>(state.range(0))).MakeTable();
  for (auto _ : state) benchmark::DoNotOptimize(MakeVariogram(table).IsValid());
}
BENCHMARK(BM_ReadVariogram)->Arg(1000)->Arg(2000)->Arg(4000)->Unit(benchmark::kMillisecond);

/// By the number of objects and a fraction to trim in percent.
void BM_EmpiricalVariogram(benchmark::State& state) {
  auto variogram = MakeVariogram(Points(static_cast<std::size_t>(state.range(0))).MakeTable());
  const double trim = 0.01 * static_cast<double>(state.range(1));
  for (auto _ : state)
    if (variogram.CalcEmpiricalVariogram(trim, 0).NotSuccessful())
      return state.SkipWithError("no variogram");
  state.SetItemsProcessed(state.iterations() * state.range(0) * (state.range(0) - 1) / 2);
}
BENCHMARK(BM_EmpiricalVariogram)
    ->ArgsProduct({{1000, 2000, 4000}, {0, 10}})
    ->Unit(benchmark::kMillisecond);

void BM_FitTheoryVariogram(benchmark::State& state) {
  auto variogram = MakeVariogram(Points(2000).MakeTable());
  variogram.CalcEmpiricalVariogram(0.0, 0);
  double objective, param;
  for (auto _ : state)
    if (variogram
            .CalcOptimalTheoryVariogram(objective, param, Kernel::Gaussian, 200, -1.0, -1.0, -1.0)
            .NotSuccessful())
      return state.SkipWithError("no fit");
}
BENCHMARK(BM_FitTheoryVariogram)->Unit(benchmark::kMicrosecond);

/// Two dimensions of 12 bins, and a search over 50 x 50 parameters.
void BM_VariogramOnPredColumns(benchmark::State& state) {
  const Points points(static_cast<std::size_t>(state.range(0)));
  QVDataTable table = points.MakeTable();
  table.AddColumn(QVDataTableCol("x", points.x, 1, false));
  for (auto _ : state) {
    QVVariogramOnPredColumns variogram("y", {"x", "sim"}, table, {12, 12}, true, 0.1, {0.0, 0.0},
                                       QVSampleStatisticType::Mean, 0.0);
    double objective;
    if (variogram
            .CalcOptimalTheoryVariogram(objective, {Kernel::Gaussian, Kernel::Exponential},
                                        {0.1, 0.1}, {10.0, 10.0}, {50, 50})
            .NotSuccessful())
      return state.SkipWithError("no fit");
  }
}
BENCHMARK(BM_VariogramOnPredColumns)->Arg(500)->Arg(2000)->Unit(benchmark::kMillisecond);

// ----- predictions of whole tables

/// 2000 training rows and 2000 to predict, halves of one table.
struct Halves {
  Halves() : all(Points(4000).MakeTable()) {
    std::vector<std::size_t> rows[2];
    for (std::size_t i = 0; i < 4000; ++i) rows[i % 2].push_back(i);
    training = QVDataTable("training", all, QVDataTableRowSet(rows[0]));
    test = QVDataTable("test", all, QVDataTableRowSet(rows[1]));
  }
  QVDataTable all;
  QVDataTable training{"training"};
  QVDataTable test{"test"};
};

const Halves& GetHalves() {
  static const Halves halves;
  return halves;
}

/// The library's whole way, from the two tables to the table of results.
void BM_PredictTable(benchmark::State& state) {
  const Halves& halves = GetHalves();
  const auto type = static_cast<unsigned int>(state.range(0));
  QVLinearSmootherOnSimilarity model(type, Kernel::Exponential, "y", "sim", halves.training);
  const Values params = {kParam, 0.05, 1.0};
  if (model
          .SetModelParams({params.begin(),
                           params.begin() + static_cast<std::ptrdiff_t>(model.GetNumModelParams())})
          .NotSuccessful())
    return state.SkipWithError("no model");
  state.SetLabel(model.GetNameOfLinearSmootherOnSimilarity());
  for (auto _ : state)
    if (model.GetTestSetResults("y", halves.test).GetResultOfRegression().NotSuccessful())
      return state.SkipWithError("no predictions");
}
BENCHMARK(BM_PredictTable)->DenseRange(1, 4)->Unit(benchmark::kMillisecond);

/// The arithmetic alone, on matrices that stand ready: kernel values and a product with the
/// weights; with variances (argument 1) a triangular solve with all right sides and their squared
/// norms.
void BM_PredictAlgebra(benchmark::State& state) {
  const Halves& halves = GetHalves();
  const std::size_t n = 2000;
  const QVMath::QVDenseKernels& dense = QVMath::QVGetDenseKernels();
  const std::vector<std::size_t> rows = halves.training.GetRowNumbers();
  const std::vector<std::size_t> queries = halves.test.GetRowNumbers();
  const QVDataTableCol& column = halves.all.GetColumnFromName("sim");
  const QVSimilarityKernel kernel(Kernel::Exponential);
  Eigen::MatrixXd factor(n, n), similarities(n, n), values(n, n);
  for (std::size_t j = 0; j < n; ++j) {
    const auto col = static_cast<Eigen::Index>(j);
    column.GetImpl()->GetDoubles(QVRowNumbers(rows), rows[j], factor.col(col).data());
    column.GetImpl()->GetDoubles(QVRowNumbers(rows), queries[j], similarities.col(col).data());
  }
  kernel.GetValues(factor.data(), n * n, kParam, factor.data());
  factor.diagonal().array() += 0.05;
  if (!dense.cholesky(n, factor.data(), n)) return state.SkipWithError("no factor");
  const Eigen::VectorXd weights = Eigen::VectorXd::Random(n);
  Eigen::VectorXd predicted(n), variances = Eigen::VectorXd::Zero(n);
  for (auto _ : state) {
    kernel.GetValues(similarities.data(), n * n, kParam, values.data());
    predicted.setZero();
    dense.multiplyTransposed(n, n, 1.0, values.data(), n, weights.data(), predicted.data());
    if (state.range(0) == 1) {
      dense.solveLower(n, factor.data(), n, n, values.data(), n);
      variances = values.colwise().squaredNorm();
    }
    benchmark::DoNotOptimize(predicted.data());
    benchmark::DoNotOptimize(variances.data());
  }
}
BENCHMARK(BM_PredictAlgebra)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

}  // namespace
