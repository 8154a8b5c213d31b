// qvstats smooth: predicts a response from similarities alone, with the variogram that sets the
// parameters.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "apps/commands.h"
#include "apps/output_file.h"
#include "apps/prediction_summary.h"
#include "apps/similarity_table.h"
#include "apps/table_output.h"
#include "platform/depict/image_writer.h"
#include "platform/depict/plot.h"
#include "platform/system/text.h"
#include "stats/api/data_table_split.h"
#include "stats/api/data_vector_functions.h"
#include "stats/api/linear_smoother.h"
#include "stats/api/linear_smoother_variogram.h"

namespace QVApps {

namespace {

using namespace QVStats;
using Values = std::vector<double>;

struct Arguments : SimilarityTableArguments {
  std::string model = "krige";
  std::string kernel = "Exponential";
  Values params;
  bool fitVariogram = false;
  std::size_t bins = 20;
  double trim = 0.0;
  bool equalWeights = false;
  double minPairs = 0.1;
  double minSimilarity = 0.3;
  double test = 0.2;
  unsigned int seed = 1;
  std::string out = "-";
  std::string summary;
  std::string variogram;
  std::string plot;
};

const std::pair<const char*, unsigned int> kModels[] = {
    {"kernel", QVLinearSmootherOnSimilarityType::KernelRegression},
    {"gp", QVLinearSmootherOnSimilarityType::GaussianProcess},
    {"krige", QVLinearSmootherOnSimilarityType::Krige},
    {"okrige", QVLinearSmootherOnSimilarityType::OrdinaryKrige}};

std::vector<std::string> GetModelNames() {
  std::vector<std::string> names;
  for (const auto& model : kModels) names.emplace_back(model.first);
  return names;
}

std::vector<std::string> GetKernelNames() {
  std::vector<std::string> names;
  for (unsigned int type = 1; type < QVSimilarityKernelType::NumTypes; ++type)
    names.push_back(QVGetSimilarityKernelName(type));
  return names;
}

/// Kriging parameters, and the variogram that they come from.
struct Fit {
  QVBinnedVariogramFromSimilarity variogram;
  Values weights;  ///< of the bins
  double objective;
  Values params;  ///< p, nugget, sill
};

void Check(const Arguments& arguments, const QVStatModelResult& result) {
  if (result.NotSuccessful()) throw Failure(arguments.table + ": " + Describe(result));
}

/// The root-mean-square error of training rows that simple kriging predicts from the others.
double GetLeftOutError(const Arguments& arguments, unsigned int kernelType,
                       const QVDataTable& training, const Values& params) {
  QVKrigeOnSimilarity model(kernelType, arguments.response, arguments.similarity, training);
  QVSimilarityPredictions leftOut;
  if (model.SetModelParams(params).NotSuccessful() ||
      model.GetLeaveOneOutPredictions(leftOut).NotSuccessful())
    return HUGE_VAL;
  const Values responses = training.GetDoubles(training.GetColumnFromName(arguments.response));
  PredictionSummary summary;
  for (std::size_t i = 0; i < responses.size(); ++i)
    summary.Add(leftOut.predicted[i], leftOut.estimatedErrors[i], responses[i]);
  return summary.GetRMSE();
}

/// Nothing keeps the nugget of a fit from being negative, and the pairs that are near enough to
/// tell a small one are few. Below 10 % of the variance of the responses it is replaced by the
/// share of that variance, 1 % to 40 %, with which rows are predicted best from the others.
void RepairNugget(const Arguments& arguments, unsigned int kernelType, const QVDataTable& training,
                  Values& params) {
  const double fitted = params[1], sill = params[2];
  if (!(sill > 0.0) || fitted >= sill)
    throw Failure(QVSystem::QVFormat(
        "%s: the fitted variogram does not grow with dissimilarity (nugget %.4g, sill %.4g); try "
        "another kernel, or --min-similarity",
        arguments.table.c_str(), fitted, sill));
  const double variance =
      QVSampleVariance()(training.GetDoubles(training.GetColumnFromName(arguments.response)));
  if (fitted >= 0.1 * variance) return;
  double least = HUGE_VAL;
  for (double share = 0.01; share < 0.5; share *= 1.4) {
    const Values candidate = {params[0], share * variance, sill};
    const double error = GetLeftOutError(arguments, kernelType, training, candidate);
    if (!(error < least)) continue;
    least = error;
    params[1] = candidate[1];
  }
  if (least == HUGE_VAL)
    throw Failure(arguments.table +
                  ": with the fitted variogram the covariance is not positive definite; try "
                  "another kernel");
  std::cerr << QVSystem::QVFormat(
      "the fitted nugget is %.4g: rows left out are predicted best with %.4g\n", fitted, params[1]);
}

Fit FitVariogram(const Arguments& arguments, unsigned int kernelType, const QVDataTable& training) {
  constexpr std::size_t kCurvePoints = 200;
  const QVVariogramBinWeights rule(arguments.equalWeights, arguments.minPairs,
                                   arguments.minSimilarity);
  Fit fit{{training, arguments.response, arguments.similarity, rule, arguments.bins}, {}, 0.0, {}};
  Check(arguments, fit.variogram.GetResultOfConstruction());
  Check(arguments, fit.variogram.CalcEmpiricalVariogram(arguments.trim, 0));
  const auto counts = fit.variogram.GetNumPairsPerBin();
  Check(arguments, rule.GetBinWeights(fit.weights, {counts.begin(), counts.end()}));
  const auto numUsed = std::count_if(fit.weights.begin(), fit.weights.end(),
                                     [](double weight) { return weight > 0.0; });
  if (numUsed < 3)
    throw Failure(arguments.table +
                  ": a variogram needs three bins with enough pairs; lower --min-similarity or "
                  "--min-pairs, or change --bins");
  double param;
  Check(arguments, fit.variogram.CalcOptimalTheoryVariogram(fit.objective, param, kernelType,
                                                            kCurvePoints, -1.0, -1.0, -1.0));
  fit.params = fit.variogram.GetKrigingParameters();
  RepairNugget(arguments, kernelType, training, fit.params);
  return fit;
}

void WriteVariogram(const std::string& path, const Fit& fit, const QVSimilarityKernel& kernel) {
  OutputFile file(path);
  WriteCsvRow(file.GetStream(), {"similarity", "pairs", "semivariance", "weight", "fitted"});
  auto count = fit.variogram.GetNumPairsPerBin();
  auto weight = fit.weights.begin();
  const double nugget = fit.variogram.GetNugget(), sill = fit.variogram.GetSill();
  for (const auto& [similarity, semivariance] : fit.variogram.GetEmpiricalVariogram()) {
    const double fitted =
        nugget + (sill - nugget) * (1.0 - kernel(similarity, fit.variogram.GetKernelParameter()));
    WriteCsvRow(file.GetStream(),
                {CsvNumber(similarity), std::to_string(*count),
                 *count > 0 ? CsvNumber(semivariance) : "", CsvNumber(*weight), CsvNumber(fitted)});
    ++count;
    ++weight;
  }
  file.Commit();
}

void DrawVariogram(const Arguments& arguments, const Fit& fit) {
  Values used[2], unused[2], curve[2];
  double top = 0.0;
  auto count = fit.variogram.GetNumPairsPerBin();
  auto weight = fit.weights.begin();
  for (const auto& [similarity, semivariance] : fit.variogram.GetEmpiricalVariogram()) {
    if (*count > 0) {
      Values* const points = *weight > 0.0 ? used : unused;
      points[0].push_back(similarity);
      points[1].push_back(semivariance);
      top = std::max(top, semivariance);
    }
    ++count;
    ++weight;
  }
  for (const auto& [similarity, semivariance] : fit.variogram.GetTheoryVariogram()) {
    curve[0].push_back(similarity);
    curve[1].push_back(semivariance);
    top = std::max(top, semivariance);
  }
  const Values fitted = fit.variogram.GetKrigingParameters();
  QVDepict::QVPlot plot;
  plot.SetTitle("Variogram of " + arguments.response);
  plot.SetXLabel("similarity").SetYLabel("semivariance");
  plot.SetXRange(0.0, 1.0).SetYRange(std::min(0.0, fitted[1]), 1.2 * top);
  plot.AddLine(curve[0], curve[1],
               arguments.kernel + QVSystem::QVFormat(": p %.3g, nugget %.3g, sill %.3g", fitted[0],
                                                     fitted[1], fitted[2]));
  plot.AddPoints(used[0], used[1], "bins in the fit");
  if (!unused[0].empty())
    plot.AddPoints(unused[0], unused[1], "other bins", QVSystem::QVColor(160, 160, 160));
  QVDepict::QVImage image(640.0, 420.0);
  if (!plot.Render(image) || !QVDepict::QVWriteImage(arguments.plot, image))
    throw Failure(arguments.plot + ": the plot could not be written");
}

/// Rows of the table by what they are for.
struct Split {
  QVDataTable training;
  QVDataTable test;
  QVDataTable unknown;
};

Split MakeSplit(const Arguments& arguments, const SimilarityTable& similarities) {
  const auto select = [&](const char* name, const std::vector<std::size_t>& rows) {
    return QVDataTable(name, similarities.table, QVDataTableRowSet(rows));
  };
  Split split{select("training", similarities.known), select("test", {}),
              select("unknown", similarities.unknown)};
  const auto numTest = static_cast<std::size_t>(
      std::lround(arguments.test * static_cast<double>(similarities.known.size())));
  if (similarities.known.size() < numTest + 2)
    throw Failure(arguments.table + ": fewer than two rows are left to train on");
  if (numTest == 0) return split;
  const QVDataTable known = split.training;
  QVMath::QVRanNumEngine engine(arguments.seed);
  Check(arguments, QVSplitDataTableByUnifSamplingWithoutReplacement(split.test, split.training,
                                                                    engine, numTest, known));
  return split;
}

/// The errors that ordinary kriging leaves open in its result tables.
Values GetErrors(const Arguments& arguments, const QVLinearSmootherOnSimilarity& model,
                 const QVDataTable& training, const QVDataTable& table, const Values& errors) {
  const auto* const kriging = dynamic_cast<const QVOrdinaryKrigeOnSimilarity*>(model.GetImpl());
  if (!kriging || errors.empty()) return errors;
  const std::vector<std::size_t> known = training.GetRowNumbers(), rows = table.GetRowNumbers();
  Eigen::MatrixXd similarities(static_cast<Eigen::Index>(known.size()),
                               static_cast<Eigen::Index>(rows.size()));
  const QVDataTableCol& column = training.GetColumnFromName(arguments.similarity);
  for (std::size_t i = 0; i < rows.size(); ++i)
    column.GetImpl()->GetDoubles(QVRowNumbers(known), rows[i],
                                 similarities.col(static_cast<Eigen::Index>(i)).data());
  Values exact;
  Check(arguments, kriging->GetOrdinaryKrigingErrors(exact, similarities));
  return exact;
}

/// Predictions of one kind of rows, as the library's result record has them.
struct Predictions {
  const char* set;
  const QVDataTable* rows;
  QVSimilarityRegressionResult results;
  Values leftOut;  ///< of training rows: predicted from the others
};

Values GetResultColumn(const Predictions& predictions, unsigned int code) {
  const QVDataTable& table = predictions.results.GetRegResultDataTable();
  return table.GetDoubles(
      table.GetColumnFromName(QVSimilarityRegressionResultColTypes::TypeName[code]));
}

/// Writes the rows and reports how good the predictions are.
void WriteRows(const Arguments& arguments, const QVLinearSmootherOnSimilarity& model,
               const SimilarityTable& similarities, const QVDataTable& training,
               const std::vector<Predictions>& all) {
  namespace Columns = QVSimilarityRegressionResultColTypes;
  OutputFile file(arguments.out);
  WriteCsvRow(file.GetStream(), {"row", "title", "set", arguments.response, "predicted", "residual",
                                 "estimated_error", "average_weight", "left_out"});
  for (const Predictions& part : all) {
    const std::vector<std::size_t> rows = part.rows->GetRowNumbers();
    const Values predicted = GetResultColumn(part, Columns::PredictedResponses);
    const Values weights = GetResultColumn(part, Columns::AverageSimilarityWeights);
    const Values errors = GetErrors(arguments, model, training, *part.rows,
                                    GetResultColumn(part, Columns::EstimatedPredictionError));
    PredictionSummary summary, leftOut;
    for (std::size_t i = 0; i < rows.size(); ++i) {
      const std::optional<double> response = similarities.responses[rows[i]];
      if (response) summary.Add(predicted[i], errors[i], *response);
      if (response && !part.leftOut.empty()) leftOut.Add(part.leftOut[i], errors[i], *response);
      WriteCsvRow(file.GetStream(),
                  {std::to_string(rows[i]), CsvField(similarities.titles[rows[i]]), part.set,
                   response ? CsvNumber(*response) : "", CsvNumber(predicted[i]),
                   response ? CsvNumber(*response - predicted[i]) : "", CsvNumber(errors[i]),
                   CsvNumber(weights[i]), part.leftOut.empty() ? "" : CsvNumber(part.leftOut[i])});
    }
    if (summary.GetCount() > 0)
      std::cerr << QVSystem::QVFormat("%-20s n %zu  R2 %.4f  RMSE %.4f\n", part.set,
                                      summary.GetCount(), summary.GetR2(), summary.GetRMSE());
    if (leftOut.GetCount() > 0)
      std::cerr << QVSystem::QVFormat("%-20s n %zu  R2 %.4f  RMSE %.4f\n", "training, left out",
                                      leftOut.GetCount(), leftOut.GetR2(), leftOut.GetRMSE());
  }
  file.Commit();
}

std::vector<Predictions> Predict(const Arguments& arguments,
                                 const QVLinearSmootherOnSimilarity& model, const Split& split) {
  std::vector<Predictions> all;
  all.push_back({"training", &split.training, model.GetTrainingSetResults(), {}});
  QVSimilarityPredictions leftOut;
  Check(arguments, model.GetLeaveOneOutPredictions(leftOut));
  all[0].leftOut = leftOut.predicted;
  for (const auto& [set, table] :
       {std::pair("test", &split.test), std::pair("unknown", &split.unknown)})
    if (table->GetNumRows() > 0)
      all.push_back({set, table, model.GetTestSetResults(arguments.response, *table), {}});
  for (const Predictions& part : all) Check(arguments, part.results.GetResultOfRegression());
  return all;
}

/// The parameters of the model: given, fitted, or the kernel's own where one is enough.
Values ChooseParams(const Arguments& arguments, const std::optional<Fit>& fit,
                    const QVSimilarityKernel& kernel, std::size_t numParams) {
  Values params = arguments.params;
  if (fit) params.assign(fit->params.begin(), fit->params.begin() + static_cast<int>(numParams));
  if (params.empty() && numParams == 1) params = {kernel.GetDefaultInitialParamVal()};
  if (params.size() != numParams)
    throw Failure("the model " + arguments.model + " needs " + std::to_string(numParams) +
                  (numParams == 1 ? " parameter" : " parameters (kernel parameter,nugget,sill)") +
                  ": give --params or --fit-variogram");
  return params;
}

int Run(const Arguments& arguments) {
  if (!arguments.plot.empty() && !QVDepict::QVIsImageFileName(arguments.plot))
    throw Failure(arguments.plot + ": a plot is a .pdf, .png or .svg file");
  const unsigned int kernelType = QVGetSimilarityKernelType(arguments.kernel);
  const QVSimilarityKernel kernel(kernelType);
  const unsigned int modelType =
      std::find_if(std::begin(kModels), std::end(kModels), [&](const auto& model) {
        return model.first == arguments.model;
      })->second;
  const SimilarityTable similarities = ReadSimilarityTable(arguments);
  const Split split = MakeSplit(arguments, similarities);
  std::optional<Fit> fit;
  if (arguments.fitVariogram) {
    fit.emplace(FitVariogram(arguments, kernelType, split.training));
    if (!arguments.variogram.empty()) WriteVariogram(arguments.variogram, *fit, kernel);
    if (!arguments.plot.empty()) DrawVariogram(arguments, *fit);
  }
  QVLinearSmootherOnSimilarity model(modelType, kernelType, arguments.response,
                                     arguments.similarity, split.training);
  const Values params = ChooseParams(arguments, fit, kernel, model.GetNumModelParams());
  Check(arguments, model.SetModelParams(params));
  for (std::size_t i = 0; i < params.size(); ++i)
    std::cerr << model.GetModelParamNames()[i] << ": " << CsvNumber(params[i]) << '\n';

  const std::vector<Predictions> all = Predict(arguments, model, split);
  if (!arguments.summary.empty()) {
    OutputFile file(arguments.summary);
    for (const Predictions& part : all) file.GetStream() << part.results.PrintSummary();
    file.Commit();
  }
  WriteRows(arguments, model, similarities, split.training, all);
  return similarities.numRefused == 0 ? kDone : kSomeRefused;
}

void AddVariogramOptions(CLI::App& command, Arguments& arguments) {
  CLI::Option* const fit =
      command.add_flag("--fit-variogram", arguments.fitVariogram,
                       "Take the parameters from the variogram of the training rows");
  command.add_option("--bins", arguments.bins, "Bins of the variogram")
      ->check(CLI::Range(std::size_t{2}, std::size_t{100000}))
      ->needs(fit)
      ->capture_default_str();
  command
      .add_option("--trim", arguments.trim,
                  "Fraction of the pairs of a bin that its mean leaves out, half at either end")
      ->check(CLI::Range(0.0, 1.0))
      ->needs(fit)
      ->capture_default_str();
  command
      .add_flag("--equal-weights", arguments.equalWeights,
                "Bins weigh the same in the fit, not as many pairs as they hold")
      ->needs(fit);
  command
      .add_option("--min-pairs", arguments.minPairs,
                  "Bins with fewer pairs than this share of the average are left out of the fit")
      ->check(CLI::Range(0.0, 1.0))
      ->needs(fit)
      ->capture_default_str();
  command
      .add_option("--min-similarity", arguments.minSimilarity,
                  "Bins below this similarity are left out of the fit")
      ->check(CLI::Range(0.0, 1.0))
      ->needs(fit)
      ->capture_default_str();
  command
      .add_option("--variogram", arguments.variogram, "CSV file for the bins and the fitted curve")
      ->needs(fit);
  command.add_option("--plot", arguments.plot, "Draw the variogram: a .pdf, .png or .svg file")
      ->needs(fit);
  command
      .add_option("--params", arguments.params,
                  "Kernel parameter, for the krigings with nugget and sill: P,NUGGET,SILL")
      ->delimiter(',')
      ->excludes(fit);
}

}  // namespace

void AddSmoothCommand(CLI::App& program, int& exitCode) {
  CLI::App* const command = program.add_subcommand(
      "smooth", "Predict a response from a matrix of similarities: regression and kriging");
  const auto arguments = std::make_shared<Arguments>();
  command
      ->add_option("--table", arguments->table,
                   "Similarities of all pairs as a triangle (.pgs, also .gz): qvstats similarity")
      ->required();
  command->add_option("--response", arguments->response, "Column of the response")->required();
  command->add_option("--values", arguments->values,
                      "CSV or TSV file with the response, joined to the titles of the triangle");
  command->add_option("--id", arguments->id,
                      "Column of --values with the titles; the first without it");
  command->add_option("--similarity", arguments->similarity, "Column of the similarities")
      ->capture_default_str();
  command->add_option("--model", arguments->model, "The model")
      ->check(CLI::IsMember(GetModelNames()))
      ->capture_default_str();
  command->add_option("--kernel", arguments->kernel, "The similarity kernel")
      ->check(CLI::IsMember(GetKernelNames()))
      ->capture_default_str();
  AddVariogramOptions(*command, *arguments);
  command->add_option("--test", arguments->test, "Share of the rows to hold out")
      ->check(CLI::Range(0.0, 1.0))
      ->capture_default_str();
  command->add_option("--seed", arguments->seed, "Of the draw of these rows")
      ->capture_default_str();
  command->add_option("--out", arguments->out, "CSV of all rows; - for standard output")
      ->capture_default_str();
  command->add_option("--summary", arguments->summary,
                      "Text file for the summaries of the results");
  command->footer(
      "Rows without a response are predicted too. Training rows are predicted with themselves in\n"
      "the model, and under left_out without. Example:\n"
      "  qvstats similarity mols.smi mols.pgs\n"
      "  qvstats smooth --table mols.pgs --values activity.csv --response pIC50 --model okrige \\\n"
      "    --fit-variogram --plot variogram.png --out predicted.csv");
  command->callback([arguments, &exitCode] { exitCode = Run(*arguments); });
}

}  // namespace QVApps
