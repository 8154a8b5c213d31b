#include "apps/table_arguments.h"

#include <CLI/CLI.hpp>
#include <iostream>

#include "apps/commands.h"
#include "apps/delimited_reader.h"
#include "apps/number_field.h"
#include "apps/output_file.h"
#include "platform/system/text.h"

namespace QVApps {

namespace {

std::string DescribeFault(const std::string& field, const std::string& column,
                          const std::string& fault) {
  return "'" + Shorten(field) + "' in the column '" + column + "' " + fault;
}

/// Columns of a table by name, and the numbers in them.
class Columns {
 public:
  Columns(const DelimitedReader& table, const std::vector<std::string>& names) : names_(names) {
    for (const std::string& name : names) positions_.push_back(table.RequireColumn(name));
  }

  /// \return false, with the reason in `error`, when one is no number.
  bool Read(const std::vector<std::string>& row, std::vector<double>& values,
            std::string& error) const {
    values.clear();
    for (std::size_t k = 0; k < positions_.size(); ++k) {
      const std::string& text = row[positions_[k]];
      double value;
      const std::string fault = ReadNumber(text, value);
      if (!fault.empty()) {
        error = DescribeFault(text, names_[k], fault);
        return false;
      }
      values.push_back(value);
    }
    return true;
  }

 private:
  std::vector<std::string> names_;
  std::vector<std::size_t> positions_;
};

/// All columns with a number in this row, but the response.
std::vector<std::string> ChoosePredictors(const DelimitedReader& table, std::size_t response,
                                          const std::vector<std::string>& row) {
  std::vector<std::string> chosen, others;
  for (std::size_t k = 0; k < table.GetColumns().size(); ++k) {
    double value;
    if (k == response) continue;
    (QVSystem::QVStringToNumber(row[k], value) ? chosen : others).push_back(table.GetColumns()[k]);
  }
  if (!others.empty())
    std::cerr << table.GetName() << ": no predictors, for want of numbers: " << ListNames(others)
              << '\n';
  return chosen;
}

void Report(const DelimitedReader& table, const std::string& what) {
  std::cerr << table.GetName() << ": line " << table.GetLineNumber() << ": " << what << '\n';
}

}  // namespace

void AddTableOptions(CLI::App& command, TableArguments& arguments) {
  command.add_option("--response", arguments.response, "Column of the response")->required();
  command
      .add_option("--predictors", arguments.predictors,
                  "Columns of the predictors; without it all columns of numbers")
      ->delimiter(',');
  command.add_option("--predict", arguments.predict,
                     "Table whose rows are written with their predictions instead of the "
                     "coefficients");
  command.add_option("--coefficients", arguments.coefficients,
                     "CSV file for the coefficients, with --predict too");
  command.add_option("--out", arguments.out, "CSV file to write; - for standard output")
      ->capture_default_str();
  command
      .add_option("TABLE", arguments.table,
                  "Responses and predictors: .csv or .tsv, also .gz; - for CSV from standard input")
      ->required();
}

char GetSeparator(const std::string& path) {
  std::string name = QVSystem::QVToLower(path);
  const auto endsWith = [&name](const std::string& end) {
    return name.size() >= end.size() &&
           name.compare(name.size() - end.size(), end.size(), end) == 0;
  };
  if (endsWith(".gz")) name.resize(name.size() - 3);
  return endsWith(".tsv") ? '\t' : ',';
}

RegressionTable ReadRegressionTable(
    const TableArguments& arguments,
    const std::function<std::string(const std::string&, double&)>& readResponse,
    std::size_t& refused) {
  DelimitedReader table(arguments.table, GetSeparator(arguments.table));
  const std::size_t response = table.RequireColumn(arguments.response);
  RegressionTable result{arguments.predictors, {}, {}};
  std::optional<Columns> columns;
  std::vector<double> values;
  for (std::vector<std::string> row; table.Next(row);) {
    row.resize(table.GetColumns().size());
    if (!columns) {
      if (result.predictors.empty()) result.predictors = ChoosePredictors(table, response, row);
      columns.emplace(table, result.predictors);
    }
    double outcome;
    const std::string fault = readResponse(row[response], outcome);
    std::string error = DescribeFault(row[response], arguments.response, fault);
    if (fault.empty() && columns->Read(row, values, error)) {
      result.rows.push_back(values);
      result.responses.push_back(outcome);
    } else {
      ++refused;
      Report(table, error + ", left out");
    }
  }
  if (result.predictors.empty())
    throw Failure(arguments.table + ": no column of numbers to predict from");
  if (result.rows.empty()) throw Failure(arguments.table + ": no complete row to fit");
  RequireSpan(result.responses, arguments.table, arguments.response);
  for (std::size_t k = 0; k < result.predictors.size(); ++k) {
    values.clear();
    for (const auto& row : result.rows) values.push_back(row[k]);
    RequireSpan(values, arguments.table, result.predictors[k]);
  }
  return result;
}

void WritePredictions(
    const TableArguments& arguments, const std::vector<std::string>& predictors,
    const std::vector<std::string>& columns,
    const std::function<std::vector<std::string>(const std::vector<double>&)>& predict,
    std::size_t& refused) {
  DelimitedReader table(arguments.predict, GetSeparator(arguments.predict));
  const Columns values(table, predictors);
  OutputFile out(arguments.out);
  std::vector<std::string> head;
  for (const auto* names : {&table.GetColumns(), &columns})
    for (const std::string& name : *names) head.push_back(name);
  WriteCsvRow(out.GetStream(), head);
  std::vector<double> x;
  std::string error;
  for (std::vector<std::string> row; table.Next(row);) {
    row.resize(table.GetColumns().size());
    if (values.Read(row, x, error)) {
      for (std::string& field : predict(x)) row.push_back(std::move(field));
    } else {
      ++refused;
      Report(table, error + ", no prediction");
      row.resize(head.size());
    }
    WriteCsvRow(out.GetStream(), row);
    out.Check();
  }
  out.Commit();
}

void WriteCoefficients(const TableArguments& arguments,
                       const std::vector<std::vector<std::string>>& rows) {
  const auto write = [&rows](const std::string& path) {
    OutputFile out(path);
    for (const auto& row : rows) WriteCsvRow(out.GetStream(), row);
    out.Commit();
  };
  if (!arguments.coefficients.empty()) write(arguments.coefficients);
  if (arguments.predict.empty()) write(arguments.out);
}

}  // namespace QVApps
