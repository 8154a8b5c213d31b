#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <iostream>
#include <memory>
#include <sstream>

#include "apps/commands.h"
#include "apps/outcome_labels.h"
#include "apps/output_file.h"
#include "apps/prediction_summary.h"
#include "apps/table_arguments.h"
#include "platform/system/text.h"
#include "stats/api/calcauc.h"
#include "stats/api/logisticregression.h"

namespace QVApps {

namespace {

struct LogitArguments : TableArguments {
  std::string positive;
  std::string link = "logit";
  bool noIntercept = false;
};

/// Keeps what is written to standard output while it lives: a fit prints its result there, where
/// the CSV belongs.
class CapturedOutput {
 public:
  CapturedOutput() : displaced_(std::cout.rdbuf(text_.rdbuf())) {}
  ~CapturedOutput() { std::cout.rdbuf(displaced_); }
  CapturedOutput(const CapturedOutput&) = delete;
  CapturedOutput& operator=(const CapturedOutput&) = delete;

 private:
  std::ostringstream text_;
  std::streambuf* displaced_;
};

/// A binary regression of a table.
class LogitModel {
 public:
  LogitModel(const LogitArguments& arguments, const RegressionTable& table)
      : intercept_(!arguments.noIntercept),
        type_(arguments.link == "logit" ? QVStats::QVBinaryRegressionType::Logistic
                                        : QVStats::QVBinaryRegressionType::Probit),
        regression_(static_cast<unsigned int>(table.predictors.size() + (intercept_ ? 1 : 0)),
                    static_cast<unsigned int>(table.rows.size()), type_) {
    if (intercept_) names_.push_back("(intercept)");
    names_.insert(names_.end(), table.predictors.begin(), table.predictors.end());
    std::vector<double> predictors;
    for (const auto& row : table.rows) Append(predictors, row);
    std::vector<int> outcomes;
    for (const double response : table.responses) outcomes.push_back(response > 0.0 ? 1 : -1);
    regression_.SetInputData(predictors, outcomes);
    const CapturedOutput captured;
    regression_.MaximizeLogLikelihood();
    QVStats::QVRegressionLogLikelihoodOpt objective(static_cast<unsigned int>(names_.size()),
                                                    static_cast<unsigned int>(outcomes.size()),
                                                    type_, predictors, outcomes);
    std::vector<double> sigma;
    regression_.GetBetaSigma(coefficients_, sigma);
    logLikelihood_ = 0.0 - objective(coefficients_.data());
    for (const double error : sigma) sigma_.push_back(std::isfinite(error) ? error : std::nan(""));
  }

  double GetLogLikelihood() const { return logLikelihood_; }

  bool HasStandardErrors() const {
    return std::none_of(sigma_.begin(), sigma_.end(), [](double s) { return std::isnan(s); });
  }

  /// The probability of the positive outcome.
  double Predict(const std::vector<double>& row) const {
    std::vector<double> predictors, probabilities;
    Append(predictors, row);
    regression_.Predict(1, predictors, probabilities);
    return probabilities.at(0);
  }

  std::vector<std::vector<std::string>> MakeRows() const {
    const bool odds = type_ == QVStats::QVBinaryRegressionType::Logistic;
    std::vector<std::vector<std::string>> rows = {{"predictor", "coefficient", "se", "z", "p"}};
    if (odds)
      for (const char* column : {"odds_ratio", "odds_ratio_lower95", "odds_ratio_upper95"})
        rows[0].push_back(column);
    for (std::size_t k = 0; k < names_.size(); ++k) {
      const double beta = coefficients_[k], se = sigma_[k], z = beta / se;
      rows.push_back({names_[k], CsvNumber(beta), CsvNumber(se), CsvNumber(z),
                      CsvNumber(std::erfc(std::abs(z) / std::sqrt(2.0)))});
      if (!odds) continue;
      for (const double value : {beta, beta - kInterval95 * se, beta + kInterval95 * se})
        rows.back().push_back(CsvNumber(std::exp(value)));
    }
    return rows;
  }

 private:
  void Append(std::vector<double>& predictors, const std::vector<double>& row) const {
    if (intercept_) predictors.push_back(1.0);
    predictors.insert(predictors.end(), row.begin(), row.end());
  }

  bool intercept_;
  unsigned int type_;
  QVStats::QVBinaryLinearRegression regression_;
  std::vector<std::string> names_;
  std::vector<double> coefficients_;
  std::vector<double> sigma_;
  double logLikelihood_ = 0.0;
};

/// Refuses tables that no fit can be made of.
void CheckTable(const LogitArguments& arguments, const RegressionTable& table) {
  std::size_t positives = 0;
  for (const double response : table.responses) positives += response > 0.0;
  if (positives == 0 || positives == table.responses.size())
    throw Failure(arguments.table + ": all " + std::to_string(table.responses.size()) +
                  " outcomes under '" + arguments.response + "' are " +
                  (positives == 0 ? "negative" : "positive") + ", a fit needs both");
}

void PrintSummary(const LogitModel& model, const RegressionTable& table) {
  std::vector<double> positives, negatives;
  for (std::size_t i = 0; i < table.rows.size(); ++i)
    (table.responses[i] > 0.0 ? positives : negatives).push_back(model.Predict(table.rows[i]));
  const double auc = QVStats::QVCalculateAUC(positives, negatives, true);
  const double n = static_cast<double>(table.rows.size());
  const double share = static_cast<double>(positives.size()) / n;
  const double null = n * (share * std::log(share) + (1.0 - share) * std::log(1.0 - share));
  std::cerr << QVSystem::QVFormat(
      "n %zu (%zu positive)  log-likelihood %.6g (constant alone %.6g)  AUC of the fit %.4f\n",
      table.rows.size(), positives.size(), model.GetLogLikelihood(), null, auc);
  if (!model.HasStandardErrors())
    std::cerr << "no standard errors: a predictor is constant, or follows from the others\n";
}

int FitLogit(const LogitArguments& arguments) {
  std::size_t refused = 0;
  const OutcomeLabels labels(arguments.positive);
  const RegressionTable table = ReadRegressionTable(
      arguments,
      [&labels](const std::string& text, double& response) {
        const auto outcome = labels.Read(text);
        response = outcome.value_or(false) ? 1.0 : -1.0;
        return std::string(outcome ? "" : "is no response");
      },
      refused);
  CheckTable(arguments, table);
  const LogitModel model(arguments, table);
  PrintSummary(model, table);
  WriteCoefficients(arguments, model.MakeRows());
  if (!arguments.predict.empty())
    WritePredictions(
        arguments, table.predictors, {"probability"},
        [&model](const std::vector<double>& row) {
          return std::vector<std::string>{CsvNumber(model.Predict(row))};
        },
        refused);
  return refused == 0 ? kDone : kSomeRefused;
}

}  // namespace

void AddLogitCommand(CLI::App& program, int& exitCode) {
  CLI::App* const command = program.add_subcommand(
      "logit", "Fit the probability of an outcome to predictors: logistic or probit regression");
  const auto arguments = std::make_shared<LogitArguments>();
  AddTableOptions(*command, *arguments);
  command->add_option("--positive", arguments->positive,
                      "The response that counts as positive, all others being negative; without it "
                      "responses are words like 1 and 0, yes and no, active and inactive");
  command->add_option("--link", arguments->link, "Distribution that links predictors and outcome")
      ->check(CLI::IsMember({"logit", "probit"}))
      ->capture_default_str();
  command->add_flag("--no-intercept", arguments->noIntercept, "Fit no constant");
  command->footer(
      "Writes coefficients with standard errors, z, two-sided p and odds ratios with 95 % "
      "intervals. Example:\n"
      "  printf 'dose,cured\\n1,0\\n2,0\\n3,1\\n4,0\\n5,1\\n6,1\\n' | qvstats logit --response "
      "cured "
      "-");
  command->callback([arguments, &exitCode] { exitCode = FitLogit(*arguments); });
}

}  // namespace QVApps
