#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <iostream>
#include <memory>

#include "apps/commands.h"
#include "apps/number_field.h"
#include "apps/output_file.h"
#include "apps/table_arguments.h"
#include "platform/system/text.h"
#include "stats/api/plskrige.h"

namespace QVApps {

namespace {

using QVStats::QVPartialLeastSquareRegression;

struct PLSArguments : TableArguments {
  unsigned int components = 0;
  unsigned int maxComponents = 10;
  unsigned int folds = 10;
  bool noScale = false;
};

QVPartialLeastSquareRegression Fit(const PLSArguments& arguments, const RegressionTable& table) {
  const auto options = QVStats::QVPLSOptions()
                           .SetNumComponents(arguments.components)
                           .SetMaxComponents(arguments.maxComponents)
                           .SetNumFolds(arguments.folds)
                           .SetScale(!arguments.noScale);
  QVPartialLeastSquareRegression pls(table.predictors.size(), std::nan(""), options);
  for (std::size_t i = 0; i < table.rows.size(); ++i)
    pls.AddTraining(table.rows[i], table.responses[i]);
  if (!pls.Train())
    throw Failure(arguments.table + ": a model cannot be trained on these " +
                  std::to_string(table.rows.size()) + " rows");
  return pls;
}

/// A line for each component: what it explains, and the error of a model that ends with it.
void PrintSummary(const QVPartialLeastSquareRegression& pls) {
  const auto& errors = pls.GetCrossValidatedErrors();
  const auto& response = pls.GetExplainedResponse();
  double sum = 0.0;
  std::cerr << "components  R2 of response  share of predictors  "
            << (errors.empty() ? "" : "cross-validated RMSE") << '\n';
  for (std::size_t a = 0; a <= std::max(response.size(), errors.empty() ? 0 : errors.size() - 1);
       ++a) {
    const bool used = a <= response.size();
    if (used && a > 0) sum += response[a - 1];
    std::cerr << QVSystem::QVFormat("%10zu  ", a)
              << (used ? QVSystem::QVFormat("%14.4f  %19.4f", sum,
                                            a == 0 ? 0.0 : pls.GetExplainedProperties()[a - 1])
                       : QVSystem::QVFormat("%14s  %19s", "", ""));
    if (a < errors.size()) std::cerr << QVSystem::QVFormat("  %20.6g", errors[a]);
    std::cerr << (a == response.size() ? "  used\n" : "\n");
  }
}

std::vector<std::vector<std::string>> MakeRows(const QVPartialLeastSquareRegression& pls,
                                               const RegressionTable& table) {
  const auto& coefficients = pls.GetCoefficients();
  std::vector<std::vector<std::string>> rows = {{"predictor", "coefficient"},
                                                {"(intercept)", CsvNumber(coefficients.back())}};
  for (std::size_t k = 0; k < table.predictors.size(); ++k)
    rows.push_back({table.predictors[k], CsvNumber(coefficients[k])});
  return rows;
}

int FitPLS(const PLSArguments& arguments) {
  std::size_t refused = 0;
  const RegressionTable table = ReadRegressionTable(arguments, ReadNumber, refused);
  const QVPartialLeastSquareRegression pls = Fit(arguments, table);
  PrintSummary(pls);
  WriteCoefficients(arguments, MakeRows(pls, table));
  if (!arguments.predict.empty()) {
    std::vector<std::string> columns = {"predicted"};
    for (std::size_t a = 1; a <= pls.GetNumComponents(); ++a)
      columns.push_back("score" + std::to_string(a));
    WritePredictions(
        arguments, table.predictors, columns,
        [&pls](const std::vector<double>& row) {
          std::vector<std::string> fields = {CsvNumber(pls.Predict(row))};
          for (const double score : pls.GetScores(row)) fields.push_back(CsvNumber(score));
          return fields;
        },
        refused);
  }
  return refused == 0 ? kDone : kSomeRefused;
}

}  // namespace

void AddPLSCommand(CLI::App& program, int& exitCode) {
  CLI::App* const command = program.add_subcommand(
      "pls", "Fit a response to many, also collinear, predictors: partial least squares");
  const auto arguments = std::make_shared<PLSArguments>();
  AddTableOptions(*command, *arguments);
  command
      ->add_option("--components", arguments->components,
                   "Number of components; without it cross-validation chooses")
      ->check(CLI::PositiveNumber);
  command
      ->add_option("--max-components", arguments->maxComponents,
                   "The largest number that cross-validation tries")
      ->check(CLI::PositiveNumber)
      ->capture_default_str();
  command->add_option("--folds", arguments->folds, "Parts of the cross-validation")
      ->check(CLI::Range(2, 1000000))
      ->capture_default_str();
  command->add_flag("--no-scale", arguments->noScale,
                    "Do not divide predictors by their standard deviation: for spectra");
  command->footer(
      "Predictions come with the scores of each row. Example:\n"
      "  printf 'a,b,y\\n1,2,1.1\\n2,4,2.0\\n3,6.1,2.9\\n4,8,4.2\\n' | qvstats pls --response y "
      "--components 1 -");
  command->callback([arguments, &exitCode] { exitCode = FitPLS(*arguments); });
}

}  // namespace QVApps
