// qvstats mixture: Gaussian mixtures of one column, compared, tabulated and drawn.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <iostream>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "apps/commands.h"
#include "apps/delimited_reader.h"
#include "apps/number_field.h"
#include "apps/output_file.h"
#include "apps/plot_output.h"
#include "platform/system/diagnostic_stream.h"
#include "platform/system/error_handler.h"
#include "stats/api/gaussian_mixture_model.h"

namespace QVApps {

namespace {

using namespace QVStats;
using Values = std::vector<double>;

struct Arguments {
  std::string path;
  std::string column;
  std::string components = "1-6";
  double nullFraction = 0.8;
  std::string pairs;
  double nullProbability = 0.9;
  double priorSize = 1.0;
  double rate = 0.05;
  std::string out = "-";
  std::string curves;
  std::string calls;
  std::string plot;
  bool verbose = false;
};

/// A fitted model as the outputs see it.
struct Fit {
  std::string name;     // "3", or "1:2" for null and alternative components
  double weight;        // among the models
  std::size_t numNull;  // components of the null part; 0 without parts
  const QVOneDimGaussMixModel* model;
};

/// The values of the column, with the lines they stand on.
struct Column {
  Values values;
  std::vector<std::size_t> lines;
  std::size_t refused = 0;
};

/// Empty fields are missing and left out; other text that is no number to fit is refused.
Column ReadColumn(const Arguments& arguments) {
  const bool isTabbed = arguments.path.find(".tsv") != std::string::npos;
  DelimitedReader reader(arguments.path, isTabbed ? '\t' : ',');
  const std::size_t position = reader.RequireColumn(arguments.column);
  Column column;
  for (std::vector<std::string> fields; reader.Next(fields);) {
    const std::string text = position < fields.size() ? fields[position] : "";
    if (text.empty()) continue;
    double value;
    const std::string fault = ReadNumber(text, value);
    if (fault.empty()) {
      column.values.push_back(value);
      column.lines.push_back(reader.GetLineNumber());
    } else {
      ++column.refused;
      std::cerr << reader.GetName() << ", line " << reader.GetLineNumber() << ": \""
                << Shorten(text) << "\" " << fault << '\n';
    }
  }
  if (column.values.empty())
    throw Failure(reader.GetName() + ": the column '" + arguments.column + "' holds no number");
  const auto [least, most] = std::minmax_element(column.values.begin(), column.values.end());
  if (*least == *most)
    throw Failure(reader.GetName() + ": the column '" + arguments.column + "' is constant");
  RequireSpan(column.values, reader.GetName(), arguments.column);
  return column;
}

/// "A<separator>B", or "A" for A and A; counts from 1 to 1000.
std::pair<unsigned int, unsigned int> ParsePair(const std::string& text, char separator,
                                                bool needsBoth) {
  const std::size_t at = text.find(separator);
  const std::string parts[] = {text.substr(0, at),
                               at == std::string::npos ? text : text.substr(at + 1)};
  unsigned int numbers[2] = {};
  for (int i = 0; i < 2; ++i) {
    const char* const end = parts[i].data() + parts[i].size();
    const auto [stop, error] = std::from_chars(parts[i].data(), end, numbers[i]);
    if (error != std::errc() || stop != end || numbers[i] < 1 || numbers[i] > 1000 ||
        (needsBoth && at == std::string::npos))
      throw Failure("\"" + text + "\" is no " +
                    (needsBoth ? "pair of component counts such as 1:2"
                               : "range of component counts such as 1-6"));
  }
  if (!needsBoth && numbers[0] > numbers[1])
    throw Failure("\"" + text + "\" is an empty range of component counts");
  return {numbers[0], numbers[1]};
}

void CheckFits(const Arguments& arguments, const QVStatModelResult& result) {
  if (result.NotSuccessful())
    throw Failure(arguments.path + ": no mixture could be fitted to the column '" +
                  arguments.column + "': " + result.ReportStatResultDetails());
}

void WriteModels(const Arguments& arguments, const std::vector<Fit>& fits) {
  OutputFile file(arguments.out);
  WriteCsvRow(file.GetStream(), {"model", "model_weight", "component", "part", "proportion", "mean",
                                 "sd", "kappa", "alpha", "beta"});
  for (const Fit& fit : fits) {
    Values p;
    if (fit.model->GetModelParams(p).NotSuccessful()) continue;
    for (std::size_t k = 0; 5 * k < p.size(); ++k) {
      const double* const own = p.data() + 5 * k;
      const char* const part = fit.numNull == 0 ? "" : k < fit.numNull ? "null" : "alternative";
      WriteCsvRow(file.GetStream(),
                  {fit.name, CsvNumber(fit.weight), std::to_string(k + 1), part, CsvNumber(own[0]),
                   CsvNumber(own[1]), CsvNumber(std::sqrt(own[4] / own[3])), CsvNumber(own[2]),
                   CsvNumber(own[3]), CsvNumber(own[4])});
    }
  }
  file.Commit();
}

/// The predictive density of the best model and the shares of its components, on a grid.
struct Curves {
  Values x;
  Values total;
  std::vector<Values> components;
  std::vector<std::string> names;
};

Curves MakeCurves(const Arguments& arguments, const Fit& fit, const Values& sorted) {
  constexpr std::size_t kPoints = 401;
  const double margin = 0.1 * (sorted.back() - sorted.front());
  const double from = sorted.front() - margin;
  const double step = (sorted.back() + margin - from) / static_cast<double>(kPoints - 1);
  Curves curves;
  for (std::size_t i = 0; i < kPoints; ++i)
    curves.x.push_back(from + static_cast<double>(i) * step);
  curves.total.assign(kPoints, 0.0);
  std::size_t k = 0;
  for (const QVOneDimGaussMixComponent& component : fit.model->GetComponents()) {
    double weight, degreesOfFreedom, location, precision;
    QVStatModelResult result = GetComponentParamsForStudentsTPredictiveDist(
        component, weight, degreesOfFreedom, location, precision);
    CheckFits(arguments, result);
    const QVUniVarPDF density =
        QVUnivariateStudentsT("x", degreesOfFreedom, location, precision, result);
    Values values;
    density.GetValues(QVPDFFunction::Density, curves.x, values, result, false);
    CheckFits(arguments, result);
    for (std::size_t i = 0; i < kPoints; ++i) curves.total[i] += values[i] *= weight;
    const char* const part = fit.numNull == 0  ? "component"
                             : k < fit.numNull ? "null"
                                               : "alternative";
    curves.names.push_back(std::string(part) + "_" + std::to_string(++k));
    curves.components.push_back(std::move(values));
  }
  return curves;
}

void WriteCurves(const std::string& path, const Curves& curves) {
  OutputFile file(path);
  std::vector<std::string> row = {"x", "density"};
  row.insert(row.end(), curves.names.begin(), curves.names.end());
  WriteCsvRow(file.GetStream(), row);
  for (std::size_t i = 0; i < curves.x.size(); ++i) {
    row = {CsvNumber(curves.x[i]), CsvNumber(curves.total[i])};
    for (const Values& component : curves.components) row.push_back(CsvNumber(component[i]));
    WriteCsvRow(file.GetStream(), row);
  }
  file.Commit();
}

void DrawPlot(const Arguments& arguments, const Fit& fit, const Curves& curves,
              const Values& sorted) {
  // Twice as many bars as for a single hump, so that the components show.
  const double low = sorted.front(), high = sorted.back();
  const Histogram histogram =
      MakeHistogram(sorted, 2 * ChooseNumBins(sorted, low, high), low, high);
  QVDepict::QVPlot plot;
  plot.SetTitle("Mixture " + fit.name + " of " + std::to_string(sorted.size()) + " values");
  plot.SetXLabel(arguments.column).SetYLabel("density");
  plot.AddBars(histogram.edges, histogram.densities, "data", QVSystem::QVColor(205, 205, 205));
  for (std::size_t k = 0; k < curves.components.size(); ++k)
    plot.AddLine(curves.x, curves.components[k], curves.names[k]);
  plot.AddLine(curves.x, curves.total, "mixture", QVSystem::QVColor(0, 0, 0));
  WritePlot(arguments.plot, plot);
}

void WriteCalls(const Arguments& arguments, const DirGaussGammaMixForEmpiricalNullAlt& model,
                const Column& column) {
  const QVMixtureDiscovery discovery(model);
  QVStatModelResult result = discovery.GetResultOfConstructor();
  CheckFits(arguments, result);
  Values qValues;
  CheckFits(arguments, discovery.GetQValues(qValues, column.values));
  OutputFile file(arguments.calls);
  WriteCsvRow(file.GetStream(), {"line", "score", "local_fdr", "q_value", "called"});
  std::size_t numCalled = 0;
  for (std::size_t i = 0; i < qValues.size(); ++i) {
    const bool isCalled = qValues[i] <= arguments.rate;
    numCalled += isCalled ? 1 : 0;
    const double local = discovery.GetLocalFDR(result, column.values[i]);
    CheckFits(arguments, result);
    WriteCsvRow(file.GetStream(), {std::to_string(column.lines[i]), CsvNumber(column.values[i]),
                                   CsvNumber(local), CsvNumber(qValues[i]), isCalled ? "1" : "0"});
  }
  file.Commit();
  std::cerr << numCalled << " of " << qValues.size()
            << " scores called at a false discovery rate of " << arguments.rate << '\n';
}

/// Writes all that was asked for.
void Report(const Arguments& arguments, const std::vector<Fit>& fits, const Values& values) {
  const auto best = std::max_element(
      fits.begin(), fits.end(), [](const Fit& a, const Fit& b) { return a.weight < b.weight; });
  std::cerr << "best: " << best->name << ", with " << CsvNumber(best->weight)
            << " of the weight of all models\n";
  WriteModels(arguments, fits);
  if (arguments.curves.empty() && arguments.plot.empty()) return;
  Values sorted(values);
  std::sort(sorted.begin(), sorted.end());
  const Curves curves = MakeCurves(arguments, *best, sorted);
  if (!arguments.curves.empty()) WriteCurves(arguments.curves, curves);
  if (!arguments.plot.empty()) DrawPlot(arguments, *best, curves, sorted);
}

/// Every fit warns, also one that converged: the outcome is in the diagnostic lines.
template <class Fit>
void WithoutWarnings(Fit fit) {
  const QVSystem::QVScopedRecordingSink warnings;
  fit();
}

void RunDirichlet(const Arguments& arguments, const Column& column) {
  if (!arguments.calls.empty()) throw Failure("--calls needs a null part: give --pairs");
  const std::pair<unsigned int, unsigned int> sizes = ParsePair(arguments.components, '-', false);
  QVStatModelResult result;
  Values weights;
  std::vector<QVDirichletGaussGammaMixtureModel> models;
  WithoutWarnings([&] {
    FitDirichletGaussGammaMixtureModel(result, weights, models, sizes.first, sizes.second,
                                       arguments.column, arguments.priorSize, column.values);
  });
  CheckFits(arguments, result);
  std::vector<Fit> fits;
  for (std::size_t i = 0; i < models.size(); ++i)
    fits.push_back({std::to_string(sizes.first + i), weights[i], 0, &models[i].GetModel()});
  Report(arguments, fits, column.values);
}

void RunNullAlt(const Arguments& arguments, const Column& column) {
  std::vector<std::pair<unsigned int, unsigned int>> pairs;
  for (std::size_t at = 0; at <= arguments.pairs.size();) {
    const std::size_t end = std::min(arguments.pairs.find(',', at), arguments.pairs.size());
    pairs.push_back(ParsePair(arguments.pairs.substr(at, end - at), ':', true));
    at = end + 1;
  }
  QVStatModelResult result;
  Values weights;
  std::vector<DirGaussGammaMixForEmpiricalNullAlt> models;
  WithoutWarnings([&] {
    FitGaussGammaMixModel(result, weights, models, arguments.nullFraction, pairs, arguments.column,
                          arguments.nullProbability, arguments.priorSize, column.values);
  });
  CheckFits(arguments, result);
  std::vector<Fit> fits;
  for (std::size_t i = 0; i < models.size(); ++i)
    fits.push_back({std::to_string(pairs[i].first) + ":" + std::to_string(pairs[i].second),
                    weights[i], pairs[i].first, &models[i].GetModel()});
  Report(arguments, fits, column.values);
  if (arguments.calls.empty()) return;
  const auto best = std::max_element(weights.begin(), weights.end()) - weights.begin();
  WriteCalls(arguments, models[static_cast<std::size_t>(best)], column);
}

int Run(const Arguments& arguments) {
  if (!arguments.plot.empty()) RequirePlotName(arguments.plot);
  const Column column = ReadColumn(arguments);
  std::ostream silent(nullptr);
  const QVSystem::QVScopedDiagnosticStream diagnostics(arguments.verbose ? std::cerr : silent);
  if (arguments.pairs.empty()) {
    RunDirichlet(arguments, column);
  } else {
    RunNullAlt(arguments, column);
  }
  return column.refused == 0 ? kDone : kSomeRefused;
}

}  // namespace

void AddMixtureCommand(CLI::App& program, int& exitCode) {
  CLI::App* const command = program.add_subcommand(
      "mixture", "Fit Gaussian mixtures to a column, or split it into null and alternative");
  const auto arguments = std::make_shared<Arguments>();
  command->add_option("FILE", arguments->path, "CSV or TSV file with a header, - for CSV on input")
      ->required();
  command->add_option("--column", arguments->column, "The column of numbers")->required();
  command
      ->add_option("--components", arguments->components,
                   "How many components to try: a number or a range")
      ->capture_default_str();
  CLI::Option* const pairs = command->add_option(
      "--pairs", arguments->pairs,
      "Split into null and alternative: numbers of components to try, such as 1:1,1:2,2:1");
  command
      ->add_option("--null-fraction", arguments->nullFraction,
                   "The lowest fraction of the values, which seeds the null part")
      ->check(CLI::Range(0.0, 1.0))
      ->needs(pairs)
      ->capture_default_str();
  command
      ->add_option("--null-prob", arguments->nullProbability, "Prior probability of the null part")
      ->check(CLI::Range(0.0, 1.0))
      ->needs(pairs)
      ->capture_default_str();
  command
      ->add_option("--prior-size", arguments->priorSize,
                   "How many values the prior of the proportions counts for")
      ->check(CLI::PositiveNumber)
      ->capture_default_str();
  command->add_option("--out", arguments->out, "CSV of models and parameters; - for output")
      ->capture_default_str();
  command->add_option("--curves", arguments->curves,
                      "CSV of the predictive density of the best model and its components");
  command->add_option("--plot", arguments->plot, "Histogram and densities, as .png, .svg or .pdf");
  command
      ->add_option("--calls", arguments->calls,
                   "CSV of each score's local false discovery rate and q-value")
      ->needs(pairs);
  command->add_option("--rate", arguments->rate, "False discovery rate at which scores are called")
      ->check(CLI::Range(0.0, 1.0))
      ->needs(pairs)
      ->capture_default_str();
  command->add_flag("--verbose", arguments->verbose, "Show the progress of the fits");
  command->footer(
      "The alternative part lies above the null one. Empty cells are left out. Example:\n"
      "  (echo y; seq 1 0.1 2; seq 5 0.2 8) | qvstats mixture - --column y "
      "--components 1-2");
  command->callback([arguments, &exitCode] { exitCode = Run(*arguments); });
}

}  // namespace QVApps
