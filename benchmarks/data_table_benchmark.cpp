#include <benchmark/benchmark.h>

#include <random>

#include "stats/api/data_table.h"
#include "stats/api/data_table_row_predicates.h"

namespace {

using namespace QVStats;

QVDataTable MakeTable(std::size_t numRows) {
  std::mt19937 engine(5);
  std::normal_distribution<double> normal;
  QVDataTable table("t");
  for (const char* name : {"x", "y"}) {
    std::vector<double> values(numRows);
    for (double& value : values) value = normal(engine);
    table.AddColumn(QVDataTableCol(name, values, 1, false));
  }
  return table;
}

/// Reads the memory of the two columns and no more: what a transform or a selection cannot beat.
void BM_SumTwoVectors(benchmark::State& state) {
  const std::vector<double> x(static_cast<std::size_t>(state.range(0)), 1.5), y(x);
  std::vector<double> sum(x.size());
  for (auto _ : state) {
    for (std::size_t i = 0; i < x.size(); ++i) sum[i] = x[i] + y[i];
    benchmark::DoNotOptimize(sum.data());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_SumTwoVectors)->Arg(1000000);

void BM_SelectByPredicate(benchmark::State& state) {
  const QVDataTable table = MakeTable(static_cast<std::size_t>(state.range(0)));
  const QVDataTable selected(
      "s", table,
      QVRowColWithinInclDoubleRange(-1, 1, table.GetColumnFromName("x"), 0) &&
          !QVRowColWithinInclDoubleRange(0, 9, table.GetColumnFromName("y"), 0));
  for (auto _ : state) benchmark::DoNotOptimize(selected.GetRowNumbers().data());
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_SelectByPredicate)->Arg(1000000);

void BM_SelectRowByRow(benchmark::State& state) {
  const QVDataTable table = MakeTable(static_cast<std::size_t>(state.range(0)));
  const QVDataTable selected("s", table,
                             QVRowColWithinInclDoubleRange(-1, 1, table.GetColumnFromName("x"), 0));
  for (auto _ : state) {
    std::size_t count = 0;
    for (auto row = selected.GetRows(); row; ++row) ++count;
    benchmark::DoNotOptimize(count);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_SelectRowByRow)->Arg(1000000);

void BM_TransformChain(benchmark::State& state) {
  const QVDataTable table = MakeTable(static_cast<std::size_t>(state.range(0)));
  const QVDataTableCol chain =
      QVSqrt(QVAbsoluteValue(table.GetColumnFromName("x") * 2 + table.GetColumnFromName("y")) + 1);
  for (auto _ : state) benchmark::DoNotOptimize(table.GetDoubles(chain).data());
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_TransformChain)->Arg(1000000);

void BM_TransformChainCellByCell(benchmark::State& state) {
  const QVDataTable table = MakeTable(static_cast<std::size_t>(state.range(0)));
  const QVDataTableCol chain =
      QVSqrt(QVAbsoluteValue(table.GetColumnFromName("x") * 2 + table.GetColumnFromName("y")) + 1);
  for (auto _ : state)
    for (std::size_t row = 0; row < table.GetNumRows(); ++row)
      benchmark::DoNotOptimize(chain.GetDouble(row, 0));
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_TransformChainCellByCell)->Arg(1000000);

}  // namespace
