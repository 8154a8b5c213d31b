#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <random>
#include <vector>

#include "examples/points.h"
#include "stats/api/krige_model.h"
#include "stats/api/private/krige_system.h"

namespace {

using QVStats::QVKrigeKernel;
using Point = PointIn<3>;
using Model = QVStats::QVKrigeImpl<Point>;

std::vector<Point> MakePoints(std::size_t count, unsigned int seed) {
  std::mt19937 engine(seed);
  std::uniform_real_distribution<double> uniform;
  std::vector<Point> points(count);
  for (Point& point : points)
    for (double& coordinate : point) coordinate = uniform(engine);
  return points;
}

Model MakeModel(std::size_t count, unsigned int numLocal) {
  using QVStats::QVKrigeDefaultElementStorage;
  Model model(QVStats::QVCreateKrige<Point, QVKrigeDefaultElementStorage<Point>>(
      EuclideanDistance<3>(), QVStats::QVKrigeOptions().SetNumLocal(numLocal), false));
  for (const Point& point : MakePoints(count, 7))
    model.AddTraining(point, std::sin(5.0 * point[0]) + point[1] * point[2]);
  return model;
}

const QVKrigeKernel& GetKernel() {
  static const QVKrigeKernel kernel(QVStats::QVKrigeKernelType::Exponential);
  return kernel;
}

void BM_AddTraining(benchmark::State& state) {
  for (auto _ : state) {
    Model model = MakeModel(static_cast<std::size_t>(state.range(0)), 0);
    benchmark::DoNotOptimize(model);
  }
  state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_AddTraining)->RangeMultiplier(2)->Range(500, 4000)->Unit(benchmark::kMillisecond);

void BM_TrainFixed(benchmark::State& state) {
  Model model = MakeModel(static_cast<std::size_t>(state.range(0)), 0);
  for (auto _ : state)
    if (!model.TrainFixed(GetKernel())) return state.SkipWithError("the training failed");
  const double n = static_cast<double>(state.range(0));
  state.counters["flop/s"] =
      benchmark::Counter(n * n * n / 3.0, benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK(BM_TrainFixed)->RangeMultiplier(2)->Range(500, 4000)->Unit(benchmark::kMillisecond);

/// The system of n points with a known mean (no border), or with an unknown one: a border of ones
/// and some drift properties.
void BM_CreateSystem(benchmark::State& state) {
  const std::vector<Point> points = MakePoints(static_cast<std::size_t>(state.range(0)), 7);
  const auto n = static_cast<Eigen::Index>(points.size());
  QVStats::QVKrigeDistances distances;
  std::vector<double> row(points.size());
  for (std::size_t g = 0; g < points.size(); ++g) {
    for (std::size_t h = 0; h < g; ++h) row[h] = EuclideanDistance<3>()(points[g], points[h]);
    distances.AddPoint(row.data());
  }
  const Eigen::Index border = state.range(1);
  const QVStats::QVKrigeMean mean =
      border == 0 ? QVStats::QVKrigeMean::Known : QVStats::QVKrigeMean::Unknown;
  QVStats::QVKrigePoints training;
  training.distances = &distances;
  training.responses = Eigen::VectorXd::LinSpaced(n, 0.0, 1.0);
  training.properties.resize(n, std::max<Eigen::Index>(border - 1, 0));
  for (Eigen::Index g = 0; g < n; ++g)
    for (Eigen::Index k = 0; k + 1 < border; ++k)
      training.properties(g, k) = std::cos(static_cast<double>((k + 1) * g));
  training.records.points.resize(points.size());
  for (auto _ : state) {
    const auto system = QVStats::QVKrigeSystem::Create(training, mean, GetKernel());
    if (!system) return state.SkipWithError("no system");
  }
}
BENCHMARK(BM_CreateSystem)
    ->ArgNames({"n", "border"})
    ->ArgsProduct({{100, 500, 1000, 2000, 4000}, {0, 1, 4}})
    ->Unit(benchmark::kMillisecond);

void BM_Train(benchmark::State& state) {
  const Model untrained = MakeModel(static_cast<std::size_t>(state.range(0)), 0);
  for (auto _ : state) {
    std::unique_ptr<QVStats::QVKrigeBase<Point>> model(untrained.CreateKrigeCopy());
    if (!model->Train()) return state.SkipWithError("the training failed");
  }
}
BENCHMARK(BM_Train)->RangeMultiplier(2)->Range(500, 2000)->Unit(benchmark::kMillisecond);

void BM_ResultOfOneQuery(benchmark::State& state) {
  Model model = MakeModel(static_cast<std::size_t>(state.range(0)), 0);
  model.TrainFixed(GetKernel());
  const Point query = MakePoints(1, 8)[0];
  if (!model.GetKrigeResult(query).Valid()) return state.SkipWithError("no prediction");
  for (auto _ : state) benchmark::DoNotOptimize(model.GetKrigeResult(query));
}
BENCHMARK(BM_ResultOfOneQuery)->RangeMultiplier(2)->Range(500, 4000)->Unit(benchmark::kMicrosecond);

void BM_EstimatesOf200Queries(benchmark::State& state) {
  Model model = MakeModel(static_cast<std::size_t>(state.range(0)), 0);
  model.TrainFixed(GetKernel());
  const std::vector<Point> points = MakePoints(200, 8);
  std::vector<const Point*> queries;
  for (const Point& point : points) queries.push_back(&point);
  for (auto _ : state) benchmark::DoNotOptimize(model.GetEstimates(queries));
}
BENCHMARK(BM_EstimatesOf200Queries)
    ->RangeMultiplier(2)
    ->Range(500, 4000)
    ->Unit(benchmark::kMillisecond);

void BM_LocalQuery(benchmark::State& state) {
  Model model = MakeModel(4000, static_cast<unsigned int>(state.range(0)));
  model.TrainFixed(GetKernel());
  const Point query = MakePoints(1, 8)[0];
  if (!model.GetKrigeResult(query).Valid()) return state.SkipWithError("no prediction");
  for (auto _ : state) benchmark::DoNotOptimize(model.GetKrigeResult(query));
}
BENCHMARK(BM_LocalQuery)->Arg(25)->Arg(100)->Arg(400)->Unit(benchmark::kMicrosecond);

}  // namespace
