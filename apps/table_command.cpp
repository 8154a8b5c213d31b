// qvstats table: the columns of a table file, and the table in another format.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "apps/commands.h"
#include "apps/table_output.h"
#include "platform/system/text.h"
#include "stats/api/data_table_fileInfo.h"
#include "stats/api/data_table_text_reader.h"

namespace QVApps {

namespace {

using namespace QVStats;

struct Arguments {
  std::string path;
  std::string format;
  std::string out;
  std::string outFormat;
  std::string delimiters;
  std::vector<std::string> missing;
  bool skipBadRows = false;
};

/// What a format is called, the extensions of its files, and its writer.
struct Format {
  const char* name;
  std::vector<std::string> extensions;
  TableWriter write;
};

const std::vector<Format>& GetFormats() {
  static const std::vector<Format> formats = {
      {"csv", {"csv"}, QVWriteDataTableToCSVFileWithHeader},
      {"tsv", {"tsv", "tab"}, QVWriteDataTableToPlainFileWithHeader},
      {"plain", {"txt", "dat"}, QVWriteDataTableToPlainFileWithHeader},
      {"bare", {}, nullptr},
      {"arff", {"arff"}, QVWriteDataTableToArffFile},
      {"pgs", {"pgs"}, QVWriteDataTableToPGSFile},
  };
  return formats;
}

/// The format of a file: the one asked for, else by its extension without ".gz".
const Format& FindFormat(const std::string& asked, std::string path) {
  if (path.size() > 3 && path.substr(path.size() - 3) == ".gz") path.resize(path.size() - 3);
  const std::size_t dot = path.find_last_of("./");
  const std::string extension =
      dot == std::string::npos || path[dot] == '/' ? "" : QVSystem::QVToLower(path.substr(dot + 1));
  for (const Format& format : GetFormats()) {
    const bool byExtension =
        asked.empty() && std::find(format.extensions.begin(), format.extensions.end(), extension) !=
                             format.extensions.end();
    if (asked == format.name || byExtension) return format;
  }
  throw Failure(path + ": the format is not known by the extension \"" + extension +
                "\"; give it as csv, tsv, plain, bare, arff or pgs");
}

QVStatModelResult Read(const Arguments& arguments, QVDataTable& table,
                       QVDataTableReadReport& report) {
  const std::string format = FindFormat(arguments.format, arguments.path).name;
  QVPlatform::qvifstream in(arguments.path);
  if (!in.IsOpen()) throw Failure(in.GetErrorText());
  if (format == "plain") return QVLoadDataTableFromPlainFileWithHeader(table, in, arguments.path);
  if (format == "bare") return QVLoadDataTableFromPlainFileWithoutHeader(table, in, arguments.path);
  if (format == "pgs") return QVLoadDataTableFromPGSFile(table, in, arguments.path, true);
  QVDataTableReadOptions options =
      format == "arff" ? QVDataTableReadOptions::Arff() : QVDataTableReadOptions();
  if (format == "tsv") options.delimiters = "\t";
  if (!arguments.delimiters.empty()) options.delimiters = arguments.delimiters;
  if (!arguments.missing.empty()) options.missingValues = arguments.missing;
  if (arguments.skipBadRows) options.badRows = QVBadRowPolicy::SkipAndReport;
  return QVReadDataTable(table, in, arguments.path, options, report);
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
  double smallest = HUGE_VAL, largest = -HUGE_VAL, sum = 0.0, count = 0.0;
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
      sum += values[i];
      ++count;
    }
  }
  const bool numeric = column.GetStatVariableType() == QVStatVariableType::Ratio ||
                       column.GetStatVariableType() == QVStatVariableType::Interval;
  if (numeric && count > 0.0)
    summary.range = QVSystem::QVFormat("%.6g  %.6g  %.6g", smallest, sum / count, largest);
  return summary;
}

void Print(const QVDataTable& table) {
  std::size_t numColumns = 0;
  std::size_t width = 6;
  for (const QVDataTableCol& column : table.GetColumns()) {
    if (column.GetColumnName() == "LineNumbers") continue;
    ++numColumns;
    width = std::max(width, std::min<std::size_t>(column.GetColumnName().size(), 40));
  }
  std::printf("%zu rows, %zu columns\n\n", table.GetNumRows(), numColumns);
  const int w = static_cast<int>(width);
  std::printf("%-*s  %-10s  %-7s  %8s  %6s  %8s  %s\n", w, "column", "level", "type", "missing",
              "bad", "unique", "min  mean  max");
  for (const QVDataTableCol& column : table.GetColumns()) {
    if (column.GetColumnName() == "LineNumbers") continue;
    const Summary summary = Summarise(table, column);
    std::printf("%-*s  %-10s  %-7s  %8zu  %6zu  %8zu  %s\n", w, column.GetColumnName().c_str(),
                GetWord(QVStatVariableType::TypeName[column.GetStatVariableType()]).c_str(),
                GetWord(QVStatVarDataType::TypeName[column.GetStatVarDataType()]).c_str(),
                summary.numMissing, summary.numBad, column.GetNumUniqueDiscreteValues(),
                summary.range.c_str());
  }
}

int Run(const Arguments& arguments) {
  QVDataTable table("table");
  QVDataTableReadReport report;
  const QVStatModelResult result = Read(arguments, table, report);
  if (result.NotSuccessful()) throw Failure(Describe(result));
  for (const QVDataTableBadRow& row : report.badRows)
    std::cerr << arguments.path << ", line " << row.lineNumber << ": " << row.reason << '\n';
  if (arguments.out.empty()) {
    Print(table);
  } else {
    const Format& format = FindFormat(arguments.outFormat, arguments.out);
    if (!format.write) throw Failure("a table without a header line cannot be written");
    WriteTable(arguments.out, table, format.write);
  }
  return report.badRows.empty() ? kDone : kSomeRefused;
}

}  // namespace

void AddTableCommand(CLI::App& program, int& exitCode) {
  CLI::App* const command =
      program.add_subcommand("table", "Show the columns of a table file, or convert it");
  auto arguments = std::make_shared<Arguments>();
  command->add_option("FILE", arguments->path, "The table, plain or .gz")->required();
  command->add_option("--format", arguments->format,
                      "csv, tsv, plain (blanks), bare (plain without a header line), arff or pgs "
                      "(similarity triangle); by the extension otherwise");
  command->add_option("--convert", arguments->out, "Write the table to this file instead");
  command->add_option("--to", arguments->outFormat, "The format of that file");
  command->add_option("--delimiters", arguments->delimiters, "What separates fields (csv)");
  command->add_option("--missing", arguments->missing, "Spellings of a missing value");
  command->add_flag("--skip-bad", arguments->skipBadRows,
                    "Leave out rows that do not fit and report them (exit code 2)");
  command->footer(
      "Examples:\n"
      "  qvstats table iris.arff\n"
      "  qvstats table assay.csv --missing NA --missing n.d. --skip-bad\n"
      "  qvstats table assay.csv.gz --convert assay.arff");
  command->callback([arguments, &exitCode] { exitCode = Run(*arguments); });
}

}  // namespace QVApps
