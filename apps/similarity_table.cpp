#include "apps/similarity_table.h"

#include <iostream>
#include <unordered_map>

#include "apps/commands.h"
#include "apps/delimited_reader.h"
#include "apps/number_field.h"
#include "apps/table_arguments.h"
#include "apps/table_output.h"
#include "platform/system/text.h"
#include "stats/api/data_table_fileInfo.h"

namespace QVApps {

namespace {

using namespace QVStats;

/// A title that was read as a number is compared as a number: "0012" and "12" are the same then.
std::string MakeKey(const std::string& title, bool isNumeric) {
  double number;
  if (!isNumeric || !QVSystem::QVStringToNumber(title, number)) return title;
  return QVSystem::QVNumberToString(number);
}

void ReadTitles(SimilarityTable& all, const QVDataTableCol& column) {
  const std::size_t numRows = all.table.GetNumRows();
  const bool isNumeric = column.GetStatVariableType() == QVStatVariableType::Ratio;
  for (std::size_t i = 0; i < numRows; ++i)
    all.titles.push_back(isNumeric ? QVSystem::QVNumberToString(column.GetDouble(i, 0))
                                   : column.GetString(i, 0));
}

/// The responses of a file by title, added to the table as a column.
void ReadValues(SimilarityTable& all, const SimilarityTableArguments& arguments) {
  DelimitedReader reader(arguments.values, GetSeparator(arguments.values));
  const std::size_t id = arguments.id.empty() ? 0 : reader.RequireColumn(arguments.id);
  const std::size_t value = reader.RequireColumn(arguments.response);
  const bool isNumeric =
      all.table.GetColumnFromName("Title").GetStatVariableType() == QVStatVariableType::Ratio;
  std::unordered_map<std::string, std::vector<std::size_t>> rowsOf;
  for (std::size_t i = 0; i < all.titles.size(); ++i) rowsOf[all.titles[i]].push_back(i);
  const auto refuse = [&](const std::string& what) {
    ++all.numRefused;
    std::cerr << reader.GetName() << ", line " << reader.GetLineNumber() << ": " << what << '\n';
  };
  std::vector<double> column(all.titles.size(), QVStatsBadData::MissingDouble);
  for (std::vector<std::string> fields; reader.Next(fields);) {
    fields.resize(reader.GetColumns().size());
    if (fields[value].empty()) continue;
    const auto rows = rowsOf.find(MakeKey(fields[id], isNumeric));
    double number;
    if (rows == rowsOf.end()) {
      refuse("no row of " + arguments.table + " has the title '" + fields[id] + "'");
      continue;
    }
    if (const std::string fault = ReadNumber(fields[value], number); !fault.empty()) {
      refuse("the value '" + Shorten(fields[value]) + "' " + fault);
      continue;
    }
    for (const std::size_t row : rows->second) {
      if (column[row] != QVStatsBadData::MissingDouble && column[row] != number)
        throw Failure(reader.GetName() + ", line " + std::to_string(reader.GetLineNumber()) +
                      ": another value of '" + fields[id] + "' stands before it");
      column[row] = number;
    }
  }
  const QVStatModelResult result =
      all.table.AddColumn(QVDataTableCol(arguments.response, column, 1, false));
  if (result.NotSuccessful())
    throw Failure(arguments.table + " has a column '" + arguments.response + "' itself");
}

}  // namespace

SimilarityTable ReadSimilarityTable(const SimilarityTableArguments& arguments) {
  SimilarityTable all;
  QVPlatform::qvifstream in(arguments.table);
  if (!in.IsOpen()) throw Failure(in.GetErrorText());
  QVStatModelResult result = QVLoadDataTableFromPGSFile(all.table, in, arguments.table, true);
  if (result.NotSuccessful()) throw Failure(Describe(result));
  ReadTitles(all, all.table.GetColumnFromName("Title"));
  if (!arguments.values.empty()) ReadValues(all, arguments);
  for (const std::string& name : {arguments.similarity, arguments.response}) {
    const QVDataTableCol& column = all.table.GetColumnFromName(result, name);
    if (result.NotSuccessful())
      throw Failure(arguments.table + ": there is no column '" + name + "'");
    if (column.GetStatVariableType() != QVStatVariableType::Ratio)
      throw Failure(arguments.table + ": the column '" + name + "' is no column of numbers");
  }
  const QVDataTableCol& response = all.table.GetColumnFromName(arguments.response);
  const std::vector<QVCellState> states = response.GetCellStates(response.GetAllRows());
  std::vector<double> values;
  for (std::size_t i = 0; i < states.size(); ++i) {
    const bool isKnown = states[i] == QVCellState::Good;
    (isKnown ? all.known : all.unknown).push_back(i);
    all.responses.push_back(std::nullopt);
    if (!isKnown) continue;
    values.push_back(response.GetDouble(i, 0));
    all.responses.back() = values.back();
    if (const std::string fault = FindFault(values.back()); !fault.empty())
      throw Failure(QVSystem::QVFormat("%s, row %zu: the value '%g' under '%s' %s",
                                       arguments.table.c_str(), i + 1, values.back(),
                                       arguments.response.c_str(), fault.c_str()));
  }
  RequireSpan(values, arguments.table, arguments.response);
  if (all.known.size() < 2)
    throw Failure(arguments.table + ": fewer than two rows have a value '" + arguments.response +
                  "'");
  return all;
}

}  // namespace QVApps
