/// \file
/// \brief What the regression subcommands share: a table with a response and its predictors.
#ifndef QVSTATS_APPS_TABLE_ARGUMENTS_H
#define QVSTATS_APPS_TABLE_ARGUMENTS_H

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace QVApps {

/// The options as the user gave them.
struct TableArguments {
  std::string table;
  std::string response;
  std::vector<std::string> predictors;
  std::string predict;
  std::string coefficients;
  std::string out = "-";
};

/// Adds the options of `arguments` to a subcommand.
void AddTableOptions(CLI::App& command, TableArguments& arguments);

/// The separator of a table by its name: a tab for .tsv and .tsv.gz, else a comma.
char GetSeparator(const std::string& path);

/// The rows of a table that are complete.
struct RegressionTable {
  std::vector<std::string> predictors;    ///< names
  std::vector<std::vector<double>> rows;  ///< a value for each predictor
  std::vector<double> responses;
};

/// Reads the table. Without predictors in the arguments, every column is one but the response and
/// those without a number in the first row, which are told on standard error. Rows that are not
/// complete are reported there and counted in `refused`.
/// \param readResponse stores the response of a text; else tells what the text is, as FindFault
/// does. Throws Failure when no complete row is left, or no predictor.
RegressionTable ReadRegressionTable(
    const TableArguments& arguments,
    const std::function<std::string(const std::string&, double&)>& readResponse,
    std::size_t& refused);

/// Reads the table of `arguments.predict` and writes its rows to `arguments.out`, each with further
/// columns; these are empty for a row that lacks a predictor, which is counted in `refused`.
/// \param predict the further fields of a row from its predictors.
void WritePredictions(
    const TableArguments& arguments, const std::vector<std::string>& predictors,
    const std::vector<std::string>& columns,
    const std::function<std::vector<std::string>(const std::vector<double>&)>& predict,
    std::size_t& refused);

/// Writes a table of coefficients: to `arguments.coefficients` when that is given, and to
/// `arguments.out` when there is nothing to predict.
void WriteCoefficients(const TableArguments& arguments,
                       const std::vector<std::vector<std::string>>& rows);

}  // namespace QVApps

#endif  // QVSTATS_APPS_TABLE_ARGUMENTS_H
