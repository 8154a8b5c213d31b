// Loading a table of 10^6 rows and 10 columns of numbers from text.

#include <memory>

#include "benchmarks/qvperf/workloads.h"
#include "stats/api/data_table_fileInfo.h"

namespace QVPerf {

bool RunCsv(const Run& run) {
  using namespace QVStats;
  const bool arff = run.GetCase() == "arff";
  if (!arff && run.GetCase() != "csv") return false;
  const std::string path = run.GetPath(arff ? "table.arff" : "table.csv");
  std::unique_ptr<QVDataTable> table;
  QVStatModelResult result;
  run.Time(
      "read", [&] { table.reset(); },
      [&] {
        table = std::make_unique<QVDataTable>("table");
        QVPlatform::qvifstream in(path);
        result = arff ? QVLoadDataTableFromArffFile(*table, in, path)
                      : QVLoadDataTableFromCSVFileWithHeader(*table, in, path);
      },
      [&] {
        double sum = 0.0;
        for (const QVDataTableCol& column : table->GetColumns())
          if (column.GetColumnName() != "LineNumbers")
            for (const double value : table->GetDoubles(column)) sum += value;
        const double rows = static_cast<double>(table->GetNumRows());
        return Check("rows", result.IsSuccessful() ? rows : 0.0) + ";" + Check("sum", sum);
      });
  return true;
}

}  // namespace QVPerf
