// qvstats table: the columns of a table file, and the table in another format.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "apps/commands.h"
#include "apps/table_input.h"
#include "apps/table_output.h"
#include "platform/system/text.h"
#include "stats/api/data_table_fileInfo.h"

namespace QVApps {

namespace {

using namespace QVStats;

struct Arguments {
  TableInput input;
  std::string out;
  std::string outFormat;
};

/// The writer of a format; none for a table without a header line.
TableWriter FindWriter(const std::string& format) {
  static const std::map<std::string, TableWriter> writers = {
      {"csv", QVWriteDataTableToCSVFileWithHeader},
      {"tsv", QVWriteDataTableToPlainFileWithHeader},
      {"plain", QVWriteDataTableToPlainFileWithHeader},
      {"arff", QVWriteDataTableToArffFile},
      {"pgs", QVWriteDataTableToPGSFile}};
  const auto writer = writers.find(format);
  if (writer == writers.end()) throw Failure("a table without a header line cannot be written");
  return writer->second;
}

/// The word of a description such as "Stat Variable Type is Ratio".
std::string GetWord(const std::string& description) {
  return description.substr(description.rfind(" is ") + 4);
}

/// Missing and bad cells, and smallest, mean and largest of the others.
struct Summary {
  std::size_t numMissing = 0;
  std::size_t numBad = 0;
  std::string range;
};

Summary Summarise(const QVDataTable& table, const QVDataTableCol& column) {
  Summary summary;
  const std::vector<std::size_t> numbers = table.GetRowNumbers();
  const QVRowNumbers rows(numbers);
  double smallest = HUGE_VAL, largest = -HUGE_VAL, mean = 0.0, count = 0.0;
  const std::size_t numCols = column.GetNumColumnsInCol();
  for (std::size_t j = 0; j < numCols; ++j) {
    const std::vector<QVCellState> states = column.GetCellStates(rows, j);
    const std::vector<double> values = column.GetDoubles(rows, j);
    for (std::size_t i = 0; i < states.size(); ++i) {
      summary.numMissing += states[i] == QVCellState::Missing ? 1 : 0;
      summary.numBad += states[i] == QVCellState::Bad ? 1 : 0;
      if (states[i] != QVCellState::Good) continue;
      smallest = std::min(smallest, values[i]);
      largest = std::max(largest, values[i]);
      ++count;
      mean += values[i] / count - mean / count;  // a sum might overflow
    }
  }
  if (HoldsNumbers(column) && count > 0.0)
    summary.range = QVSystem::QVFormat("%.6g  %.6g  %.6g", smallest, mean, largest);
  return summary;
}

void Print(const InputTable& table) {
  const std::vector<QVDataTableCol> columns = table.GetColumns();
  std::size_t width = 6;
  for (const QVDataTableCol& column : columns)
    width = std::max(width, std::min<std::size_t>(column.GetColumnName().size(), 40));
  std::printf("%zu rows, %zu columns\n\n", table.GetTable().GetNumRows(), columns.size());
  const int w = static_cast<int>(width);
  std::printf("%-*s  %-10s  %-7s  %8s  %6s  %8s  %s\n", w, "column", "level", "type", "missing",
              "bad", "unique", "min  mean  max");
  for (const QVDataTableCol& column : columns) {
    const Summary summary = Summarise(table.GetTable(), column);
    std::printf("%-*s  %-10s  %-7s  %8zu  %6zu  %8zu  %s\n", w, column.GetColumnName().c_str(),
                GetWord(QVStatVariableType::TypeName[column.GetStatVariableType()]).c_str(),
                GetWord(QVStatVarDataType::TypeName[column.GetStatVarDataType()]).c_str(),
                summary.numMissing, summary.numBad, column.GetNumUniqueDiscreteValues(),
                summary.range.c_str());
  }
}

int Run(const Arguments& arguments) {
  const InputTable table(arguments.input);
  if (arguments.out.empty())
    Print(table);
  else
    WriteTable(arguments.out, table.GetTable(),
               FindWriter(FindTableFormat(arguments.outFormat, arguments.out)));
  return table.GetNumRefused() == 0 ? kDone : kSomeRefused;
}

}  // namespace

void AddTableCommand(CLI::App& program, int& exitCode) {
  CLI::App* const command =
      program.add_subcommand("table", "Show the columns of a table file, or convert it");
  auto arguments = std::make_shared<Arguments>();
  AddTableInputOptions(*command, arguments->input);
  command->add_option("--convert", arguments->out, "Write the table to this file instead");
  command->add_option("--to", arguments->outFormat, "The format of that file");
  command->footer(
      "Examples:\n"
      "  qvstats table iris.arff\n"
      "  qvstats table assay.csv --missing NA --missing n.d. --skip-bad\n"
      "  qvstats table assay.csv.gz --convert assay.arff");
  command->callback([arguments, &exitCode] { exitCode = Run(*arguments); });
}

}  // namespace QVApps
