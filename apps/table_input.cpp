#include "apps/table_input.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <iostream>
#include <limits>
#include <map>

#include "apps/commands.h"
#include "apps/delimited_reader.h"
#include "apps/number_field.h"
#include "apps/table_output.h"
#include "platform/system/file_stream.h"
#include "platform/system/text.h"
#include "stats/api/data_table_fileInfo.h"
#include "stats/api/data_table_text_reader.h"

namespace QVApps {

using namespace QVStats;

namespace {

/// A column of the readers' own.
constexpr const char* kLineNumbers = "LineNumbers";
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

/// The formats and the extensions of their files.
const std::vector<std::pair<std::string, std::vector<std::string>>>& GetFormats() {
  static const std::vector<std::pair<std::string, std::vector<std::string>>> formats = {
      {"csv", {"csv"}}, {"tsv", {"tsv", "tab"}}, {"plain", {"txt", "dat"}},
      {"bare", {}},     {"arff", {"arff"}},      {"pgs", {"pgs"}}};
  return formats;
}

QVStatModelResult Read(const TableInput& input, const std::string& name, QVDataTable& table,
                       QVDataTableReadReport& report) {
  const bool isStandardInput = input.path == "-";
  const std::string format =
      isStandardInput && input.format.empty() ? "csv" : FindTableFormat(input.format, input.path);
  QVPlatform::qvifstream in;
  const bool opened = isStandardInput ? in.OpenStandardInput() : in.open(input.path);
  if (!opened) throw Failure(in.GetErrorText());
  if (format == "plain") return QVLoadDataTableFromPlainFileWithHeader(table, in, name);
  if (format == "bare") return QVLoadDataTableFromPlainFileWithoutHeader(table, in, name);
  if (format == "pgs") return QVLoadDataTableFromPGSFile(table, in, name, true);
  QVDataTableReadOptions options =
      format == "arff" ? QVDataTableReadOptions::Arff() : QVDataTableReadOptions();
  if (format == "tsv") options.delimiters = "\t";
  if (!input.delimiters.empty()) options.delimiters = input.delimiters;
  if (!input.missing.empty()) options.missingValues = input.missing;
  if (input.skipBad) options.badRows = QVBadRowPolicy::SkipAndReport;
  return QVReadDataTable(table, in, name, options, report);
}

void RequireOneValueARow(const QVDataTableCol& column, const std::string& name) {
  if (column.GetNumColumnsInCol() != 1 || column.ColIsLowerTriangular())
    throw Failure(name + ": the column '" + column.GetColumnName() +
                  "' holds several values a row");
}

}  // namespace

bool HoldsNumbers(const QVDataTableCol& column) {
  return column.GetStatVariableType() == QVStatVariableType::Ratio ||
         column.GetStatVariableType() == QVStatVariableType::Interval;
}

void AddTableInputOptions(CLI::App& command, TableInput& input) {
  command.add_option("FILE", input.path, "The table, plain or .gz; - for CSV from standard input")
      ->required();
  command.add_option("--format", input.format,
                     "csv, tsv, plain (blanks), bare (plain without a header line), arff or pgs "
                     "(similarity triangle); by the extension otherwise");
  command.add_option("--delimiters", input.delimiters, "What separates fields (csv)");
  command
      .add_option("--missing", input.missing,
                  "A spelling of a missing value, as often as there are")
      ->allow_extra_args(false);
  command.add_flag("--skip-bad", input.skipBad,
                   "Leave out what does not fit and report it (exit code 2)");
}

std::string FindTableFormat(const std::string& asked, const std::string& path) {
  std::string name = path;
  if (name.size() > 3 && name.substr(name.size() - 3) == ".gz") name.resize(name.size() - 3);
  const std::size_t dot = name.find_last_of("./");
  const std::string extension =
      dot == std::string::npos || name[dot] == '/' ? "" : QVSystem::QVToLower(name.substr(dot + 1));
  for (const auto& [format, extensions] : GetFormats()) {
    const bool byExtension = asked.empty() && std::find(extensions.begin(), extensions.end(),
                                                        extension) != extensions.end();
    if (asked == format || byExtension) return format;
  }
  throw Failure(path + ": the format is not known by the extension \"" + extension +
                "\"; give it as csv, tsv, plain, bare, arff or pgs");
}

InputTable::InputTable(const TableInput& input)
    : table_("table"),
      name_(input.path == "-" ? "standard input" : input.path),
      skipBad_(input.skipBad) {
  QVDataTableReadReport report;
  const QVStatModelResult result = Read(input, name_, table_, report);
  if (result.NotSuccessful()) throw Failure(Describe(result));
  for (const QVDataTableBadRow& row : report.badRows)
    std::cerr << name_ << ", line " << row.lineNumber << ": " << row.reason << '\n';
  numRefused_ = report.badRows.size();
}

std::vector<QVDataTableCol> InputTable::GetColumns() const {
  std::vector<QVDataTableCol> columns;
  for (const QVDataTableCol& column : table_.GetColumns())
    if (column.GetColumnName() != kLineNumbers) columns.push_back(column);
  return columns;
}

QVDataTableCol InputTable::RequireColumn(const std::string& name) const {
  const std::vector<QVDataTableCol> columns = GetColumns();
  for (const bool exact : {true, false})
    for (const QVDataTableCol& column : columns)
      if (exact ? column.GetColumnName() == name
                : QVSystem::QVToLower(column.GetColumnName()) == QVSystem::QVToLower(name))
        return column;
  std::vector<std::string> names;
  for (const QVDataTableCol& column : columns) names.push_back(column.GetColumnName());
  throw Failure(name_ + ": no column '" + name + "'; the columns are " + ListNames(names));
}

std::string InputTable::GetPlace(std::size_t row) const {
  QVStatModelResult result(true);
  const QVDataTableCol& lines = table_.GetColumnFromName(result, kLineNumbers);
  return name_ + (result.IsSuccessful() ? ", line " + std::to_string(lines.GetInt(row, 0))
                                        : ", row " + std::to_string(row + 1));
}

void InputTable::RefuseCell(const QVDataTableCol& column, std::size_t row,
                            const std::string& fault) {
  const std::string message = GetPlace(row) + ": \"" + Shorten(column.GetString(row, 0)) +
                              "\" in the column '" + column.GetColumnName() + "' " + fault;
  if (!skipBad_)
    throw Failure(message +
                  "; --missing tells what stands for a missing value, --skip-bad leaves "
                  "out what is none");
  std::cerr << message << '\n';
  ++numRefused_;
}

std::vector<double> InputTable::GetNumbers(const QVDataTableCol& column) {
  RequireOneValueARow(column, name_);
  const std::vector<QVCellState> states = column.GetCellStates(column.GetAllRows());
  std::vector<double> values(states.size(), kNaN);
  const bool isNumeric = HoldsNumbers(column);
  if (isNumeric) values = column.GetDoubles(column.GetAllRows());
  for (std::size_t row = 0; row < values.size(); ++row) {
    const bool isNumber =
        states[row] == QVCellState::Good &&
        (isNumeric || QVSystem::QVStringToNumber(column.GetString(row, 0), values[row]));
    const std::string fault = FindFault(isNumber ? values[row] : kNaN);
    if (fault.empty()) continue;
    values[row] = kNaN;
    if (states[row] != QVCellState::Missing) RefuseCell(column, row, fault);
  }
  return values;
}

std::vector<RowGroup> InputTable::GetGroups(const QVDataTableCol& column) const {
  RequireOneValueARow(column, name_);
  const std::vector<QVCellState> states = column.GetCellStates(column.GetAllRows());
  std::map<std::string, std::vector<std::size_t>> rowsByName;
  RowGroup missing{"(missing)", {}};
  for (std::size_t row = 0; row < states.size(); ++row)
    (states[row] == QVCellState::Missing ? missing.rows : rowsByName[column.GetString(row, 0)])
        .push_back(row);
  std::multimap<double, RowGroup> byNumber;
  std::vector<RowGroup> groups;
  for (auto& [name, rows] : rowsByName) {
    double number;
    if (QVSystem::QVStringToNumber(name, number)) byNumber.insert({number, {name, rows}});
    groups.push_back({name, std::move(rows)});
  }
  if (byNumber.size() == groups.size()) {
    groups.clear();
    for (auto& [number, group] : byNumber) groups.push_back(std::move(group));
  }
  if (!missing.rows.empty()) groups.push_back(std::move(missing));
  return groups;
}

}  // namespace QVApps
