// qvstats plot: one column of a table, or two, as a picture.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <iostream>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "apps/commands.h"
#include "apps/number_field.h"
#include "apps/output_file.h"
#include "apps/plot_output.h"
#include "apps/table_input.h"
#include "apps/table_output.h"
#include "platform/system/text.h"
#include "stats/api/data_plot_points.h"
#include "stats/api/data_vector_functions.h"
#include "stats/api/kernel_density.h"
#include "stats/api/pdf_fit.h"
#include "stats/api/pdf_functions.h"
#include "stats/api/ran_var.h"

namespace QVApps {

namespace {

using namespace QVStats;
using QVDepict::QVPlot;
using QVMath::QVDataSeries;
using Values = std::vector<double>;

struct Arguments {
  TableInput input;
  std::string column;
  std::string kind = "histogram";
  std::string against;
  std::string by;
  std::string fit;
  std::size_t numBins = 0;  // 0: by rule
  double bandLevel = 0.0;   // 0: no bands
  double bandwidth = 0.0;   // 0: by rule
  bool isLogarithmic = false;
  bool isAgainstLogarithmic = false;
  std::optional<std::string> title;
  std::string xLabel;
  std::string yLabel;
  double width = 720.0;
  double height = 480.0;
  std::string out;
};

/// The values that are drawn in one colour. On a logarithmic axis they are logarithms to base 10.
struct Group {
  std::string name;  // empty when there is only one
  Values values;     // sorted, but for a scatter plot
  Values against;
};

/// The scale of an axis: values as they are, or their logarithms to base 10.
class Scale {
 public:
  explicit Scale(bool isLogarithmic) : isLogarithmic_(isLogarithmic) {}
  bool Has(double value) const { return !isLogarithmic_ || value > 0.0; }
  double To(double value) const { return isLogarithmic_ ? std::log10(value) : value; }
  double From(double value) const { return isLogarithmic_ ? std::pow(10.0, value) : value; }
  Values From(Values values) const {
    for (double& value : values) value = From(value);
    return values;
  }

 private:
  bool isLogarithmic_;
};

struct Drawing {
  const Arguments& arguments;
  Scale scale;  // of the column
  Scale againstScale;
  std::vector<Group> groups = {};
  std::size_t numValues = 0;
  double least = HUGE_VAL;  // of all groups
  double most = -HUGE_VAL;

  bool HasGroups() const { return !arguments.by.empty(); }
};

/// Draws a curve that the library gives, in the units of the column.
void AddCurve(QVPlot& plot, const QVDataSeries& series, const Scale& scale,
              const std::string& label, QVPlot::OptionalColor color = {},
              unsigned int stipple = QVDepict::QVStipple::Solid) {
  Values x, y;
  for (const QVMath::QVDataPoint& point : series.GetPointVec()) {
    x.push_back(scale.From(point.GetX()));
    y.push_back(point.GetY());
  }
  plot.AddLine(std::move(x), std::move(y), label, color, stipple);
}

/// A family that --fit knows, and its parameters.
struct Family {
  std::uint64_t type;
  std::vector<std::string> parameters;
};

const std::map<std::string, Family>& GetFamilies() {
  static const std::map<std::string, Family> families = {
      {"normal", {QVPDFType::UniVariateGaussian, {"mean", "precision"}}},
      {"t", {QVPDFType::UnivariateStudentsT, {"degrees of freedom", "location", "precision"}}},
      {"gamma", {QVPDFType::Gamma, {"shape", "rate"}}},
      {"beta", {QVPDFType::Beta, {"alpha", "beta"}}},
      {"chisquared", {QVPDFType::ChiSquared, {"degrees of freedom"}}},
      {"f", {QVPDFType::SnedecorsF, {"numerator", "denominator degrees of freedom"}}},
      {"gumbel", {QVPDFType::Gumbel, {"location", "scale"}}},
      {"gev", {QVPDFType::GeneralizedExtremeValue, {"location", "scale", "shape"}}}};
  return families;
}

/// What messages and legends call a group.
std::string GetName(const Drawing& drawing, const Group& group) {
  return drawing.HasGroups() ? group.name : drawing.arguments.column;
}

void CheckSucceeded(const Drawing& drawing, const Group& group, const QVStatModelResult& result) {
  if (result.NotSuccessful())
    throw Failure(drawing.arguments.input.path + ": " + GetName(drawing, group) + ": " +
                  Describe(result));
}

QVUniVarPDF Fit(const Drawing& drawing, const Group& group) {
  const std::string& name = drawing.arguments.fit;
  const Family& family = GetFamilies().at(name);
  QVStatModelResult result(true);
  const QVPDFFit fit =
      QVFitUnivariatePDF(family.type, drawing.arguments.column, group.values, result);
  CheckSucceeded(drawing, group, result);
  std::cerr << GetName(drawing, group) << ": " << name << ": ";
  for (std::size_t i = 0; i < fit.parameters.size(); ++i)
    std::cerr << family.parameters[i] << ' ' << CsvNumber(fit.parameters[i]) << " (se "
              << (fit.covariance.empty() ? "none" : CsvNumber(fit.standardErrors[i])) << "), ";
  std::cerr << "log-likelihood " << CsvNumber(fit.logLikelihood) << '\n';
  return fit.pdf;
}

/// The curve of a family fitted to each group by maximum likelihood.
void AddFits(const Drawing& drawing, bool isCumulative, QVPlot& plot) {
  if (drawing.arguments.fit.empty()) return;
  constexpr double kTail = 0.002;
  constexpr std::size_t kPoints = 401;
  const auto getPoints = isCumulative ? QVGetPDFCDFPlotPoints : QVGetPDFDensityPlotPoints;
  for (const Group& group : drawing.groups) {
    QVDataSeries series;
    double xmin, xmax, ymin, ymax;
    CheckSucceeded(drawing, group,
                   getPoints(series, xmin, xmax, ymin, ymax, Fit(drawing, group), kTail, kPoints,
                             group.values.front(), group.values.back()));
    AddCurve(plot, series, drawing.scale,
             (drawing.HasGroups() ? group.name + ": " : "") + drawing.arguments.fit + " fit",
             drawing.HasGroups() ? QVPlot::OptionalColor() : QVSystem::QVBlack,
             QVDepict::QVStipple::Dash);
  }
}

/// The confidence limits of each bar, as a band without the walls between the bars.
void AddBand(const Drawing& drawing, const Group& group, std::size_t numBins, QVPlot& plot) {
  const double level = drawing.arguments.bandLevel;
  const auto [low, high] = MakePlotRange(drawing.least, drawing.most);
  QVDataSeries outline, lower, upper;
  double xmin, xmax, ymin, ymax;
  CheckSucceeded(
      drawing, group,
      QVGetUserDefConstBinWidthHistPlotPtsConfidenceInt(
          outline, lower, upper, xmin, xmax, ymin, ymax, group.values, numBins, low, high, level));
  Values x, least, most;
  for (std::size_t i = 0; i < upper.GetNumPoints(); ++i) {
    if (i % 3 == 0) continue;  // the outline comes down to 0 after each bar
    x.push_back(drawing.scale.From(upper.GetPoint(i).GetX()));
    least.push_back(lower.GetPoint(i).GetY());
    most.push_back(upper.GetPoint(i).GetY());
  }
  plot.AddBand(std::move(x), std::move(least), std::move(most),
               QVSystem::QVFormat("%g %% confidence", 100.0 * level), QVSystem::QVBlack);
}

void DrawHistogram(const Drawing& drawing, QVPlot& plot) {
  const Arguments& arguments = drawing.arguments;
  const auto [low, high] = MakePlotRange(drawing.least, drawing.most);
  std::size_t numBins = arguments.numBins;
  if (numBins == 0)
    for (const Group& group : drawing.groups)
      numBins = std::max(numBins, ChooseNumBins(group.values, low, high));
  for (const Group& group : drawing.groups) {
    const Histogram histogram = MakeHistogram(group.values, numBins, low, high);
    const Values edges = drawing.scale.From(histogram.edges);
    if (!drawing.HasGroups()) {
      plot.AddBars(edges, histogram.densities);
      if (arguments.bandLevel > 0.0) AddBand(drawing, group, numBins, plot);
      continue;
    }
    // An outline without walls between the bars, so that several can be told apart.
    Values x = {edges.front()}, y = {0.0};
    x.insert(x.end(), edges.begin(), edges.end());
    y.insert(y.end(), histogram.densities.begin(), histogram.densities.end());
    y.push_back(0.0);
    plot.AddSteps(x, y, group.name);
  }
  AddFits(drawing, false, plot);
  plot.SetYLabel(arguments.isLogarithmic ? "density per decade" : "density");
}

void DrawCDF(const Drawing& drawing, QVPlot& plot) {
  constexpr double kMargin = 0.04;  // where the function is seen to be 0 and 1
  const auto [low, high] = MakePlotRange(drawing.least, drawing.most);
  const double margin = kMargin * (high - low);
  for (const Group& group : drawing.groups) {
    QVDataSeries series;
    double xmin, xmax;
    QVGetEmpiricalCDFPlotPoints(series, xmin, xmax, group.values, low - margin, high + margin);
    AddCurve(plot, series, drawing.scale, group.name);
  }
  AddFits(drawing, true, plot);
  plot.SetYLabel("cumulative fraction");
}

void DrawNormal(const Drawing& drawing, QVPlot& plot) {
  constexpr std::size_t kFewestForQuartiles = 4;
  for (std::size_t k = 0; k < drawing.groups.size(); ++k) {
    const Group& group = drawing.groups[k];
    QVDataSeries series;
    double xmin, xmax, ymin, ymax;
    CheckSucceeded(drawing, group,
                   QVGetNormalProbabilityPlotPointsForSortedData(series, xmin, xmax, ymin, ymax,
                                                                 group.values, 0, 0, 0, 0));
    // In the units of the column; the line is that of the robust centre and scale.
    Values quantiles;
    for (const QVMath::QVDataPoint& point : series.GetPointVec()) quantiles.push_back(point.GetX());
    const QVSystem::QVColor color = QVDepict::QVGetSeriesColor(static_cast<unsigned int>(k));
    double center, scale;
    QVGetCenterAndScale(center, scale, true, group.values);
    if (group.values.size() >= kFewestForQuartiles && scale > 0.0)
      plot.AddLine({quantiles.front(), quantiles.back()},
                   drawing.scale.From(Values{center + scale * quantiles.front(),
                                             center + scale * quantiles.back()}),
                   "", drawing.HasGroups() ? color : QVSystem::QVGrey, QVDepict::QVStipple::Dash);
    plot.AddPoints(std::move(quantiles), drawing.scale.From(group.values), group.name, color);
  }
  plot.SetXLabel("standard normal quantile").SetYLabel(drawing.arguments.column);
}

void DrawScatter(const Drawing& drawing, QVPlot& plot) {
  for (const Group& group : drawing.groups)
    plot.AddPoints(drawing.againstScale.From(group.against), drawing.scale.From(group.values),
                   group.name);
  plot.SetXLabel(drawing.arguments.against).SetYLabel(drawing.arguments.column);
}

void DrawDensity(const Drawing& drawing, QVPlot& plot) {
  constexpr std::size_t kPoints = 512;
  const Arguments& arguments = drawing.arguments;
  for (const Group& group : drawing.groups) {
    const double bandwidth =
        arguments.bandwidth > 0.0 ? arguments.bandwidth : QVGetKernelBandwidth(group.values);
    QVDataSeries series;
    double xmin, xmax, ymin, ymax;
    CheckSucceeded(
        drawing, group,
        QVGetKernelDensityPlotPoints(series, xmin, xmax, ymin, ymax, group.values, bandwidth,
                                     kPoints, group.values.front(), group.values.back()));
    AddCurve(plot, series, drawing.scale, group.name);
    std::cerr << GetName(drawing, group) << ": bandwidth " << CsvNumber(bandwidth)
              << (arguments.isLogarithmic ? " decades\n" : "\n");
  }
  AddFits(drawing, false, plot);
  plot.SetYLabel(arguments.isLogarithmic ? "density per decade" : "density");
}

/// What a kind is, and the options that it takes beside those of all.
struct Kind {
  void (*draw)(const Drawing&, QVPlot&);
  std::vector<std::string> options;
  bool columnIsOnY;
};

const std::map<std::string, Kind>& GetKinds() {
  static const std::map<std::string, Kind> kinds = {
      {"histogram", {DrawHistogram, {"--bins", "--bands", "--fit"}, false}},
      {"cdf", {DrawCDF, {"--fit"}, false}},
      {"normal", {DrawNormal, {}, true}},
      {"scatter", {DrawScatter, {"--against", "--log-against"}, true}},
      {"density", {DrawDensity, {"--bandwidth", "--fit"}, false}}};
  return kinds;
}

/// Throws Failure for an option that the kind does not take, or that it lacks.
void CheckOptions(const Arguments& arguments) {
  const std::pair<const char*, bool> given[] = {{"--bins", arguments.numBins > 0},
                                                {"--bands", arguments.bandLevel > 0.0},
                                                {"--bandwidth", arguments.bandwidth > 0.0},
                                                {"--fit", !arguments.fit.empty()},
                                                {"--against", !arguments.against.empty()},
                                                {"--log-against", arguments.isAgainstLogarithmic}};
  const std::vector<std::string>& taken = GetKinds().at(arguments.kind).options;
  for (const auto& [option, isGiven] : given)
    if (isGiven && std::find(taken.begin(), taken.end(), option) == taken.end())
      throw Failure(std::string(option) + " is no option of --kind " + arguments.kind);
  if (arguments.kind == "scatter" && arguments.against.empty())
    throw Failure("--kind scatter needs the column of the other axis: --against");
  if (arguments.bandLevel > 0.0 && !arguments.by.empty())
    throw Failure("--bands and --by exclude each other: bands would cover the other groups");
}

/// The rows of each group; one without a name for all rows.
std::vector<RowGroup> MakeRowGroups(const Arguments& arguments, const InputTable& input) {
  if (!arguments.by.empty()) return input.GetGroups(input.RequireColumn(arguments.by));
  return {{"", input.GetTable().GetRowNumbers()}};
}

/// Reads the values, on the scales of their axes, and counts what these have no place for.
std::vector<Group> MakeGroups(const Drawing& drawing, InputTable& input,
                              std::size_t& numNotPositive) {
  const Arguments& arguments = drawing.arguments;
  const bool isScatter = !arguments.against.empty();
  const Values values = input.GetNumbers(input.RequireColumn(arguments.column));
  const Values against =
      isScatter ? input.GetNumbers(input.RequireColumn(arguments.against)) : Values();
  std::size_t numMissing = 0;
  std::vector<Group> groups;
  for (const RowGroup& rows : MakeRowGroups(arguments, input)) {
    Group group{rows.name, {}, {}};
    for (const std::size_t row : rows.rows) {
      if (std::isnan(values[row]) || (isScatter && std::isnan(against[row]))) {
        ++numMissing;
      } else if (!drawing.scale.Has(values[row]) ||
                 (isScatter && !drawing.againstScale.Has(against[row]))) {
        ++numNotPositive;
      } else {
        group.values.push_back(drawing.scale.To(values[row]));
        if (isScatter) group.against.push_back(drawing.againstScale.To(against[row]));
      }
    }
    if (!isScatter) std::sort(group.values.begin(), group.values.end());
    if (!group.values.empty()) groups.push_back(std::move(group));
  }
  if (numMissing > 0)
    std::cerr << input.GetName() << ": " << numMissing << " rows without a number left out\n";
  if (numNotPositive > 0)
    std::cerr << input.GetName() << ": " << numNotPositive
              << " rows left out that are not positive on the logarithmic axis\n";
  return groups;
}

Drawing MakeDrawing(const Arguments& arguments, InputTable& input, std::size_t& numNotPositive) {
  Drawing drawing{arguments, Scale(arguments.isLogarithmic), Scale(arguments.isAgainstLogarithmic)};
  drawing.groups = MakeGroups(drawing, input, numNotPositive);
  if (drawing.groups.empty())
    throw Failure(input.GetName() + ": the column '" + arguments.column + "' holds no number" +
                  (numNotPositive > 0 ? " above 0" : ""));
  constexpr std::size_t kMostGroups = 7;  // as many as there are colours
  if (drawing.groups.size() > kMostGroups)
    throw Failure(input.GetName() + ": the column '" + arguments.by + "' makes " +
                  std::to_string(drawing.groups.size()) + " groups; at most " +
                  std::to_string(kMostGroups) + " can be told apart");
  for (const Group& group : drawing.groups) {
    const auto [least, most] = std::minmax_element(group.values.begin(), group.values.end());
    drawing.least = std::min(drawing.least, *least);
    drawing.most = std::max(drawing.most, *most);
    drawing.numValues += group.values.size();
  }
  RequireSpan({drawing.least, drawing.most}, input.GetName(), arguments.column);
  return drawing;
}

int Run(const Arguments& arguments) {
  RequirePlotName(arguments.out);
  CheckOptions(arguments);
  InputTable input(arguments.input);
  std::size_t numNotPositive = 0;
  const Drawing drawing = MakeDrawing(arguments, input, numNotPositive);
  const Kind& kind = GetKinds().at(arguments.kind);
  QVPlot plot;
  plot.SetTitle(arguments.title ? *arguments.title
                                : arguments.column + ", n = " + std::to_string(drawing.numValues));
  plot.SetXLabel(arguments.column);
  kind.draw(drawing, plot);
  if (!arguments.xLabel.empty()) plot.SetXLabel(arguments.xLabel);
  if (!arguments.yLabel.empty()) plot.SetYLabel(arguments.yLabel);
  if (kind.columnIsOnY)
    plot.SetYLogarithmic(arguments.isLogarithmic).SetXLogarithmic(arguments.isAgainstLogarithmic);
  else
    plot.SetXLogarithmic(arguments.isLogarithmic);
  WritePlot(arguments.out, plot, arguments.width, arguments.height);
  return numNotPositive + input.GetNumRefused() == 0 ? kDone : kSomeRefused;
}

template <class Value>
std::vector<std::string> GetKeys(const std::map<std::string, Value>& map) {
  std::vector<std::string> keys;
  for (const auto& entry : map) keys.push_back(entry.first);
  return keys;
}

}  // namespace

void AddPlotCommand(CLI::App& program, int& exitCode) {
  CLI::App* const command = program.add_subcommand("plot", "Draw a column of a table, or two");
  const auto arguments = std::make_shared<Arguments>();
  AddTableInputOptions(*command, arguments->input);
  command->add_option("--column", arguments->column, "The column of numbers")->required();
  command->add_option("--kind", arguments->kind, "What is drawn")
      ->check(CLI::IsMember(GetKeys(GetKinds())))
      ->capture_default_str();
  command->add_option("--out", arguments->out, "The picture: a .pdf, .png or .svg file")
      ->required();
  command->add_option("--against", arguments->against,
                      "The column on the horizontal axis (scatter)");
  command->add_option("--by", arguments->by, "A colour for each text in this column, at most 7");
  command
      ->add_option("--bands", arguments->bandLevel,
                   "Also the limits of each bar at this level of confidence (histogram)")
      ->check(CLI::Range(0.01, 0.9999));
  command->add_option("--bins", arguments->numBins, "How many bars (histogram)")
      ->check(CLI::Range(1, 10000));
  command
      ->add_option("--bandwidth", arguments->bandwidth,
                   "Standard deviation of the kernels (density)")
      ->check(CLI::PositiveNumber);
  command
      ->add_option("--fit", arguments->fit,
                   "Also the distribution fitted by maximum likelihood (histogram, density, cdf)")
      ->check(CLI::IsMember(GetKeys(GetFamilies())));
  command->add_flag("--log", arguments->isLogarithmic,
                    "A logarithmic axis for the column; bars, kernels and fits follow it");
  command->add_flag("--log-against", arguments->isAgainstLogarithmic,
                    "A logarithmic axis for the other column (scatter)");
  command->add_option("--title", arguments->title, "The title; without it the column and its size");
  command->add_option("--x-label", arguments->xLabel, "The text of the horizontal axis");
  command->add_option("--y-label", arguments->yLabel, "The text of the vertical axis");
  for (const auto& [name, length] :
       {std::pair("--width", &arguments->width), std::pair("--height", &arguments->height)})
    command->add_option(name, *length, "In points; a .png has two pixels for each")
        ->check(CLI::Range(100.0, 5000.0))
        ->capture_default_str();
  command->footer(
      "Missing cells are left out. Many thousands of points are drawn as the shades of a grid: "
      "the\n"
      "darker, the more of them. Examples:\n"
      "  (echo y; seq 1 0.1 2; seq 5 0.2 8) | qvstats plot - --column y --out y.svg\n"
      "  qvstats plot iris.arff --column petallength --kind density --by class --out petals.png\n"
      "  qvstats plot assay.csv --column ic50 --against mw --kind scatter --log --out ic50.svg");
  command->callback([arguments, &exitCode] { exitCode = Run(*arguments); });
}

}  // namespace QVApps
