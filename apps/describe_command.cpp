// qvstats describe: statistics of the columns of a table, and correlations of their pairs.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "apps/commands.h"
#include "apps/output_file.h"
#include "apps/table_input.h"
#include "platform/system/cast.h"
#include "platform/system/text.h"
#include "stats/api/data_table_column_functions.h"
#include "stats/api/data_vector_functions.h"
#include "stats/api/data_vector_pairs.h"
#include "stats/api/stats_data_types.h"

namespace QVApps {

namespace {

using namespace QVStats;
using Values = std::vector<double>;
using Rows = std::vector<std::vector<std::string>>;

struct Arguments {
  TableInput input;
  std::vector<std::string> columns;
  std::string by;
  bool pairs = false;
  std::string out;
};

constexpr double kLargest = 1e300;  // the sentinels of missing and bad data lie beyond

constexpr double kNone = HUGE_VAL;

/// Empty for what does not exist.
std::string ShowNumber(double value) { return std::abs(value) < kLargest ? CsvNumber(value) : ""; }

/// A quartile as R's type 8 has it. QVQuantile has none where p < 1 / n.
double GetQuartile(const Values& sorted, double p) {
  const double n = QVSystem::QVDoubleFromCount(sorted.size());
  if (n * p >= 1.0) return QVQuantile(p, sorted, 8);
  const double position = n * p + (p + 1.0) / 3.0;
  if (sorted.size() == 1 || position <= 1.0) return sorted[0];
  return sorted[0] + (position - 1.0) * (sorted[1] - sorted[0]);
}

/// The rows of one group, and what it is called; a single one without a name for all rows.
struct Group {
  std::string name;
  QVDataTable table;
  std::vector<std::size_t> rows;
};

std::vector<Group> MakeGroups(const Arguments& arguments, const InputTable& input) {
  const QVDataTable& table = input.GetTable();
  if (arguments.by.empty()) return {{"", table, table.GetRowNumbers()}};
  std::vector<Group> groups;
  for (RowGroup& group : input.GetGroups(input.RequireColumn(arguments.by))) {
    QVDataTable part(group.name, table, QVDataTableRowSet(group.rows));
    groups.push_back({std::move(group.name), std::move(part), std::move(group.rows)});
  }
  return groups;
}

/// The columns asked for, else all but the one that groups.
std::vector<QVDataTableCol> ChooseColumns(const Arguments& arguments, const InputTable& input) {
  std::vector<QVDataTableCol> columns;
  for (const std::string& name : arguments.columns) columns.push_back(input.RequireColumn(name));
  if (!columns.empty()) return columns;
  const std::string by =
      arguments.by.empty() ? "" : input.RequireColumn(arguments.by).GetColumnName();
  for (const QVDataTableCol& column : input.GetColumns())
    if (column.GetColumnName() != by) columns.push_back(column);
  return columns;
}

/// The cells of a column, all values of a row together.
struct Cells {
  Values values;
  std::size_t numMissing = 0;
  std::size_t numBad = 0;
};

Cells GetCells(const QVDataTableCol& column, const std::vector<std::size_t>& numbers) {
  Cells cells;
  const bool isNumeric = HoldsNumbers(column);
  const QVRowNumbers rows(numbers);
  for (std::size_t j = 0; j < column.GetNumColumnsInCol(); ++j) {
    const std::vector<QVCellState> states = column.GetCellStates(rows, j);
    const Values values = column.GetDoubles(rows, j);
    for (std::size_t i = 0; i < states.size(); ++i) {
      if (states[i] == QVCellState::Missing)
        ++cells.numMissing;
      else if (states[i] == QVCellState::Good && (!isNumeric || std::abs(values[i]) < kLargest))
        cells.values.push_back(values[i]);
      else
        ++cells.numBad;
    }
  }
  return cells;
}

/// The power of two just below a size; 0 for a size of 0.
int GetExponent(double size) { return size > 0.0 ? std::ilogb(size) : 0; }

/// The values divided by a power of two, so that their squares neither overflow nor vanish.
Values Scale(Values values, int exponent) {
  for (double& value : values) value = std::ldexp(value, -exponent);
  return values;
}

const std::vector<std::string> kNumberHead = {"column", "group", "count", "missing", "bad", "mean",
                                              "sd",     "min",   "q1",    "median",  "q3",  "max"};

std::vector<std::string> DescribeNumbers(const QVDataTableCol& column, const Group& group) {
  Cells cells = GetCells(column, group.rows);
  Values& values = cells.values;
  std::vector<std::string> row = {column.GetColumnName(), group.name, std::to_string(values.size()),
                                  std::to_string(cells.numMissing), std::to_string(cells.numBad)};
  row.resize(kNumberHead.size());
  if (values.empty()) return row;
  std::sort(values.begin(), values.end());
  const int exponent = GetExponent(std::max(std::abs(values.front()), std::abs(values.back())));
  const Values scaled = Scale(values, exponent);
  const double variance = QVSampleVariance()(scaled);
  const double shown[] = {std::ldexp(QVSampleMean()(scaled), exponent),
                          values.size() > 1 ? std::ldexp(std::sqrt(variance), exponent) : kNone,
                          values.front(),
                          GetQuartile(values, 0.25),
                          GetQuartile(values, 0.5),
                          GetQuartile(values, 0.75),
                          values.back()};
  std::transform(std::begin(shown), std::end(shown), row.begin() + 5, ShowNumber);
  return row;
}

const std::vector<std::string> kLevelHead = {"column",  "group", "level", "count",
                                             "missing", "bad",   "share"};

/// A row for the column, with the number of its levels, and one for each level that occurs.
Rows DescribeLevels(const QVDataTableCol& column, const Group& group) {
  std::vector<std::pair<std::string, std::size_t>> frequencies;
  const Cells cells = GetCells(column, group.rows);
  const bool isNominal = column.GetStatVariableType() == QVStatVariableType::Nominal;
  const bool isPlain = column.GetNumColumnsInCol() == 1;
  std::size_t numMissing = cells.numMissing, numBad = cells.numBad;
  if (isNominal && isPlain)
    QVGetOutcomeFrequenciesOfNominalColumn(frequencies, numMissing, numBad, group.table,
                                           column.GetColumnName(), 0);
  const std::size_t count = group.rows.size() * column.GetNumColumnsInCol() - numMissing - numBad;
  Rows rows = {{column.GetColumnName(), group.name, "", std::to_string(count),
                std::to_string(numMissing), std::to_string(numBad), ""}};
  std::stable_sort(frequencies.begin(), frequencies.end(),
                   [](const auto& a, const auto& b) { return a.second > b.second; });
  for (const auto& [level, frequency] : frequencies)
    if (frequency > 0)
      rows.push_back(
          {column.GetColumnName(), group.name, level, std::to_string(frequency), "", "",
           CsvNumber(QVSystem::QVDoubleFromCount(frequency) / QVSystem::QVDoubleFromCount(count))});
  return rows;
}

/// The values with their range brought to about 1. Correlations do not depend on the scale, but
/// their statistics take variances below 2^-52 for 0.
Values ScaleByRange(const Values& values) {
  if (values.empty()) return values;
  const auto [least, most] = std::minmax_element(values.begin(), values.end());
  return Scale(values, GetExponent(*most - *least));
}

const std::vector<std::string> kPairHead = {"column1", "column2",  "group",   "count",
                                            "pearson", "spearman", "kendall", "distance"};

std::vector<std::string> DescribePair(const std::string& firstName, const std::string& secondName,
                                      const Group& group, const Values& first,
                                      const Values& second) {
  Values x, y;
  for (const std::size_t row : group.rows) {
    if (std::isnan(first[row]) || std::isnan(second[row])) continue;
    x.push_back(first[row]);
    y.push_back(second[row]);
  }
  x = ScaleByRange(x);
  y = ScaleByRange(y);
  std::vector<std::pair<double, double>> pairs;
  for (std::size_t i = 0; i < x.size(); ++i) pairs.emplace_back(x[i], y[i]);
  std::vector<std::string> row = {firstName, secondName, group.name, std::to_string(pairs.size())};
  for (const unsigned int code :
       {QVTwoSampleStatisticType::PearsonCorrelation, QVTwoSampleStatisticType::SpearmanRho,
        QVTwoSampleStatisticType::KendallTau, QVTwoSampleStatisticType::DistanceCorrelation})
    row.push_back(pairs.size() < 2 ? "" : ShowNumber(QVTwoSampleStatistic(code)(pairs)));
  return row;
}

Rows DescribePairs(const Arguments& arguments, InputTable& input,
                   const std::vector<Group>& groups) {
  std::vector<QVDataTableCol> columns = ChooseColumns(arguments, input);
  if (arguments.columns.empty())
    columns.erase(std::remove_if(columns.begin(), columns.end(),
                                 [](const QVDataTableCol& column) {
                                   return !HoldsNumbers(column) ||
                                          column.GetNumColumnsInCol() != 1 ||
                                          column.ColIsLowerTriangular();
                                 }),
                  columns.end());
  if (columns.size() < 2)
    throw Failure(input.GetName() + ": pairs need two columns of numbers, and here " +
                  (columns.empty() ? "is none" : "is only '" + columns[0].GetColumnName() + "'"));
  std::vector<Values> values;
  for (const QVDataTableCol& column : columns) values.push_back(input.GetNumbers(column));
  Rows rows;
  for (std::size_t i = 0; i < columns.size(); ++i)
    for (std::size_t j = i + 1; j < columns.size(); ++j)
      for (const Group& group : groups)
        rows.push_back(DescribePair(columns[i].GetColumnName(), columns[j].GetColumnName(), group,
                                    values[i], values[j]));
  return rows;
}

/// A table with a head, in columns as wide as their longest text; columns that hold nothing are
/// left out. Texts are on the left, numbers on the right.
void PrintAligned(std::ostream& out, const std::vector<std::string>& head, const Rows& rows,
                  std::size_t numTexts) {
  std::vector<std::size_t> widths;
  for (std::size_t k = 0; k < head.size(); ++k) {
    std::size_t width = 0;
    for (const auto& row : rows) width = std::max(width, row[k].size());
    widths.push_back(width == 0 ? 0 : std::max(width, head[k].size()));
  }
  const auto print = [&](const std::vector<std::string>& row) {
    std::string line;
    for (std::size_t k = 0; k < row.size(); ++k) {
      if (widths[k] == 0) continue;
      const std::string blanks(widths[k] - row[k].size(), ' ');
      line += (line.empty() ? "" : "  ") + (k < numTexts ? row[k] + blanks : blanks + row[k]);
    }
    out << line.substr(0, line.find_last_not_of(' ') + 1) << '\n';
  };
  print(head);
  for (const auto& row : rows) print(row);
}

/// At most this many levels of a column are printed; a CSV file holds all.
constexpr std::size_t kPrintedLevels = 12;

Rows ShortenLevels(const Rows& levels) {
  if (levels.size() <= kPrintedLevels + 2) return levels;
  Rows shown(levels.begin(), levels.begin() + kPrintedLevels + 1);
  std::vector<std::string> rest(kLevelHead.size());
  rest[0] = levels[0][0];
  rest[1] = levels[0][1];
  rest[2] = "(" + std::to_string(levels.size() - shown.size()) + " more)";
  shown.push_back(rest);
  return shown;
}

/// Numbers and levels under one head.
void WriteColumns(OutputFile& out, const Rows& numbers, const std::vector<Rows>& levels) {
  std::vector<std::string> head = kNumberHead;
  head.insert(head.begin() + 2, "level");
  head.push_back("share");
  WriteCsvRow(out.GetStream(), head);
  for (std::vector<std::string> row : numbers) {
    row.insert(row.begin() + 2, "");
    row.resize(head.size());
    WriteCsvRow(out.GetStream(), row);
  }
  for (const Rows& column : levels)
    for (std::vector<std::string> row : column) {
      row.insert(row.end() - 1, head.size() - row.size(), "");
      WriteCsvRow(out.GetStream(), row);
    }
}

void Describe(const Arguments& arguments, InputTable& input, const std::vector<Group>& groups) {
  Rows numbers;
  std::vector<Rows> levels;
  for (const QVDataTableCol& column : ChooseColumns(arguments, input))
    for (const Group& group : groups) {
      if (HoldsNumbers(column))
        numbers.push_back(DescribeNumbers(column, group));
      else
        levels.push_back(DescribeLevels(column, group));
    }
  OutputFile out(arguments.out.empty() ? "-" : arguments.out);
  if (!arguments.out.empty()) {
    WriteColumns(out, numbers, levels);
  } else {
    out.GetStream() << input.GetTable().GetNumRows() << " rows, " << input.GetColumns().size()
                    << " columns\n";
    if (!numbers.empty()) PrintAligned(out.GetStream() << '\n', kNumberHead, numbers, 2);
    Rows shown;
    for (const Rows& column : levels)
      for (std::vector<std::string>& row : ShortenLevels(column)) shown.push_back(std::move(row));
    if (!shown.empty()) PrintAligned(out.GetStream() << '\n', kLevelHead, shown, 3);
  }
  out.Commit();
}

int Run(const Arguments& arguments) {
  InputTable input(arguments.input);
  if (input.GetTable().GetNumRows() == 0) throw Failure(input.GetName() + ": no rows");
  const std::vector<Group> groups = MakeGroups(arguments, input);
  if (arguments.pairs) {
    const Rows rows = DescribePairs(arguments, input, groups);
    OutputFile out(arguments.out.empty() ? "-" : arguments.out);
    if (arguments.out.empty()) {
      PrintAligned(out.GetStream(), kPairHead, rows, 3);
    } else {
      WriteCsvRow(out.GetStream(), kPairHead);
      for (const auto& row : rows) WriteCsvRow(out.GetStream(), row);
    }
    out.Commit();
  } else {
    Describe(arguments, input, groups);
  }
  return input.GetNumRefused() == 0 ? kDone : kSomeRefused;
}

}  // namespace

void AddDescribeCommand(CLI::App& program, int& exitCode) {
  CLI::App* const command = program.add_subcommand(
      "describe", "Print statistics of the columns of a table, or correlations of their pairs");
  const auto arguments = std::make_shared<Arguments>();
  AddTableInputOptions(*command, arguments->input);
  command->add_option("--columns", arguments->columns, "The columns; without it all")
      ->delimiter(',')
      ->allow_extra_args(false);
  command->add_option("--by", arguments->by, "Each group of rows with the same text here");
  command->add_flag("--pairs", arguments->pairs,
                    "Correlations of the pairs of columns of numbers: Pearson, Spearman, Kendall "
                    "(tau-b) and distance correlation");
  command->add_option("--out", arguments->out,
                      "Write CSV, with all levels, to this file; - for output");
  command->footer(
      "Quartiles are of type 8, the standard deviation divides by n - 1. Examples:\n"
      "  (echo x,y; seq -f '%g,1' 1 9) | qvstats describe -\n"
      "  qvstats describe iris.arff --by class\n"
      "  qvstats describe assay.csv --pairs --columns pIC50,logP,mw --out pairs.csv");
  command->callback([arguments, &exitCode] { exitCode = Run(*arguments); });
}

}  // namespace QVApps
