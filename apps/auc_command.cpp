#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <iostream>
#include <limits>
#include <memory>
#include <numeric>

#include "apps/commands.h"
#include "apps/delimited_reader.h"
#include "apps/number_field.h"
#include "apps/outcome_labels.h"
#include "apps/output_file.h"
#include "apps/plot_output.h"
#include "apps/prediction_summary.h"
#include "apps/table_arguments.h"
#include "platform/system/text.h"
#include "stats/api/calcauc.h"

namespace QVApps {

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

struct AUCArguments {
  std::string table;
  std::string score;
  std::string label;
  std::string active;
  std::string compare;
  bool lowerIsBetter = false;
  bool missingLast = false;
  double alpha = 20.0;
  double maxFalsePositiveRate = 0.1;
  std::string plot;
  std::string out = "-";
};

/// The scores of one column by the class of their objects, both in the order of the file.
struct Ranking {
  std::string name;
  std::vector<double> actives;
  std::vector<double> decoys;
};

/// The rankings of the file: one, or two over the same objects.
std::vector<Ranking> ReadRankings(const AUCArguments& arguments, std::size_t& refused) {
  DelimitedReader table(arguments.table, GetSeparator(arguments.table));
  std::vector<Ranking> rankings = {{arguments.score, {}, {}}};
  if (!arguments.compare.empty()) rankings.push_back({arguments.compare, {}, {}});
  const std::size_t label = table.RequireColumn(arguments.label);
  std::vector<std::size_t> columns;
  for (const Ranking& ranking : rankings) columns.push_back(table.RequireColumn(ranking.name));
  const OutcomeLabels labels(arguments.active);
  const auto refuse = [&](const std::string& reason) {
    ++refused;
    std::cerr << table.GetName() << ": line " << table.GetLineNumber() << ": " << reason
              << ", left out\n";
  };
  std::vector<double> scores(columns.size());
  for (std::vector<std::string> row; table.Next(row);) {
    row.resize(table.GetColumns().size());
    const auto outcome = labels.Read(row[label]);
    if (!outcome) {
      refuse("'" + Shorten(row[label]) + "' does not tell an active from a decoy");
      continue;
    }
    std::string missing;
    for (std::size_t k = 0; k < columns.size(); ++k) {
      const std::string& text = row[columns[k]];
      if (QVSystem::QVStringToNumber(text, scores[k]) && std::isfinite(scores[k])) continue;
      scores[k] = kNaN;
      missing = "the score '" + Shorten(text) + "' is not a finite number";
    }
    if (!missing.empty() && !arguments.missingLast) {
      refuse(missing);
      continue;
    }
    for (std::size_t k = 0; k < scores.size(); ++k)
      (*outcome ? rankings[k].actives : rankings[k].decoys).push_back(scores[k]);
  }
  return rankings;
}

/// Gives objects without a score one that is worse than all others.
void RankMissingLast(Ranking& ranking, bool higherIsBetter) {
  const double best = (higherIsBetter ? -1.0 : 1.0) * std::numeric_limits<double>::infinity();
  double worst = -best;
  for (const auto* scores : {&ranking.actives, &ranking.decoys})
    for (const double score : *scores)
      if (!std::isnan(score))
        worst = higherIsBetter ? std::min(worst, score) : std::max(worst, score);
  const double last = std::isinf(worst) ? 0.0 : std::nextafter(worst, best);
  for (auto* scores : {&ranking.actives, &ranking.decoys})
    for (double& score : *scores)
      if (std::isnan(score)) score = last;
}

/// The ranked list, best first. Among equal scores decoys come first, so that ties earn nothing.
std::vector<bool> MakeRankedList(const Ranking& ranking, bool higherIsBetter) {
  std::vector<std::pair<double, bool>> objects;
  const double sign = higherIsBetter ? -1.0 : 1.0;
  for (const double score : ranking.actives) objects.emplace_back(sign * score, true);
  for (const double score : ranking.decoys) objects.emplace_back(sign * score, false);
  std::sort(objects.begin(), objects.end());
  std::vector<bool> ranked;
  for (const auto& object : objects) ranked.push_back(object.second);
  return ranked;
}

struct Measure {
  std::string name;
  std::string value;
};

std::vector<Measure> GetMeasures(const AUCArguments& arguments, const Ranking& ranking) {
  using namespace QVStats;
  const bool higher = !arguments.lowerIsBetter;
  const auto numActives = static_cast<unsigned int>(ranking.actives.size());
  const auto numDecoys = static_cast<unsigned int>(ranking.decoys.size());
  const double auc = QVCalculateAUC(ranking.actives, ranking.decoys, higher);
  const double deLong = QVCalculateDeLongStandardError(ranking.actives, ranking.decoys, higher);
  const std::vector<bool> ranked = MakeRankedList(ranking, higher);
  const auto curve = QVGetROCCurve(ranking.actives, ranking.decoys, higher);
  const double rate = arguments.maxFalsePositiveRate;
  const std::string upTo = QVSystem::QVFormat("_%g", rate);
  return {{"actives", std::to_string(numActives)},
          {"decoys", std::to_string(numDecoys)},
          {"auc", CsvNumber(auc)},
          {"auc_se_hanley_mcneil", CsvNumber(QVCalculateStandardError(auc, numActives, numDecoys))},
          {"auc_se_delong", CsvNumber(deLong)},
          {"auc_lower95", CsvNumber(std::max(0.0, auc - kInterval95 * deLong))},
          {"auc_upper95", CsvNumber(std::min(1.0, auc + kInterval95 * deLong))},
          {"ef_1", CsvNumber(QVCalculateEnrichmentFactor(ranked, 0.01))},
          {"ef_5", CsvNumber(QVCalculateEnrichmentFactor(ranked, 0.05))},
          {"ef_10", CsvNumber(QVCalculateEnrichmentFactor(ranked, 0.10))},
          {QVSystem::QVFormat("bedroc_%g", arguments.alpha),
           CsvNumber(QVCalculateBEDROC(ranked, arguments.alpha))},
          {"partial_auc" + upTo, CsvNumber(QVCalculatePartialAUC(curve, rate, false))},
          {"partial_auc_standardised" + upTo, CsvNumber(QVCalculatePartialAUC(curve, rate, true))},
          {"log_auc", CsvNumber(QVCalculateLogAUC(curve))}};
}

void WriteMeasures(const AUCArguments& arguments, const std::vector<Ranking>& rankings) {
  OutputFile out(arguments.out);
  std::vector<std::string> head = {"measure"};
  std::vector<std::vector<Measure>> columns;
  for (const Ranking& ranking : rankings) {
    head.push_back(ranking.name);
    columns.push_back(GetMeasures(arguments, ranking));
  }
  WriteCsvRow(out.GetStream(), head);
  for (std::size_t i = 0; i < columns[0].size(); ++i) {
    std::vector<std::string> row = {columns[0][i].name};
    for (const auto& column : columns) row.push_back(column[i].value);
    WriteCsvRow(out.GetStream(), row);
  }
  if (rankings.size() == 2) {
    const auto comparison =
        QVStats::QVCompareAUC(rankings[0].actives, rankings[0].decoys, rankings[1].actives,
                              rankings[1].decoys, !arguments.lowerIsBetter);
    for (const auto& [name, value] :
         {std::pair("auc_difference", comparison.difference),
          std::pair("auc_difference_se", comparison.standardError), std::pair("z", comparison.z),
          std::pair("p", comparison.pValue)})
      WriteCsvRow(out.GetStream(), {name, CsvNumber(value), ""});
  }
  out.Commit();
}

void DrawCurves(const AUCArguments& arguments, const std::vector<Ranking>& rankings) {
  QVDepict::QVPlot plot;
  plot.SetXLabel("False positive rate").SetYLabel("True positive rate").SetSquare(true);
  plot.SetXRange(0.0, 1.0).SetYRange(0.0, 1.0);
  for (const Ranking& ranking : rankings) {
    std::vector<double> x, y;
    const bool higher = !arguments.lowerIsBetter;
    for (const auto& point : QVStats::QVGetROCCurve(ranking.actives, ranking.decoys, higher)) {
      x.push_back(point.falsePositiveRate);
      y.push_back(point.truePositiveRate);
    }
    const double auc = QVStats::QVCalculateAUC(ranking.actives, ranking.decoys, higher);
    plot.AddLine(x, y, ranking.name + QVSystem::QVFormat(" (AUC %.3f)", auc));
  }
  plot.AddLine({0.0, 1.0}, {0.0, 1.0}, "random (AUC 0.500)", QVSystem::QVGrey,
               QVDepict::QVStipple::Dash);
  WritePlot(arguments.plot, plot, 480.0, 480.0);
}

int CalculateAUC(const AUCArguments& arguments) {
  if (!arguments.plot.empty()) RequirePlotName(arguments.plot);
  std::size_t refused = 0;
  std::vector<Ranking> rankings = ReadRankings(arguments, refused);
  for (const auto& [scores, what] :
       {std::pair(&rankings[0].actives, "active"), std::pair(&rankings[0].decoys, "decoy")})
    if (scores->empty())
      throw Failure(arguments.table + ": no " + what + " with a score under '" + arguments.label +
                    "': a ranking needs both actives and decoys");
  for (Ranking& ranking : rankings) RankMissingLast(ranking, !arguments.lowerIsBetter);
  if (!arguments.plot.empty()) DrawCurves(arguments, rankings);
  WriteMeasures(arguments, rankings);
  return refused == 0 ? kDone : kSomeRefused;
}

}  // namespace

void AddAUCCommand(CLI::App& program, int& exitCode) {
  CLI::App* const command =
      program.add_subcommand("auc", "Measure how well scores separate actives from decoys");
  const auto arguments = std::make_shared<AUCArguments>();
  command->add_option("--score", arguments->score, "Column of the scores")->required();
  command->add_option("--label", arguments->label, "Column that tells actives from decoys")
      ->required();
  command->add_option("--active", arguments->active,
                      "The label of actives, all others being decoys; without it the labels are "
                      "words like 1 and 0, active and decoy, yes and no");
  command->add_option("--compare", arguments->compare,
                      "Column of the scores of a second method, for the paired test of DeLong");
  command->add_flag("--lower-is-better", arguments->lowerIsBetter,
                    "Scores are energies, distances, ranks: the lowest is the best");
  command->add_flag("--missing-last", arguments->missingLast,
                    "Rank rows without a numeric score last instead of leaving them out");
  command->add_option("--alpha", arguments->alpha, "Weight of early ranks in BEDROC")
      ->check(CLI::PositiveNumber)
      ->capture_default_str();
  command
      ->add_option("--max-fpr", arguments->maxFalsePositiveRate,
                   "False positive rate up to which the partial AUC is taken")
      ->check(CLI::Range(1e-9, 1.0))
      ->capture_default_str();
  command->add_option("--plot", arguments->plot, "Draw the ROC curves: a .pdf, .png or .svg file");
  command->add_option("--out", arguments->out, "CSV file to write; - for standard output")
      ->capture_default_str();
  command->add_option("TABLE", arguments->table, "Scores: .csv or .tsv, also .gz; - for CSV")
      ->required();
  command->footer(
      "Ties count half in the AUC; enrichment factors and BEDROC rank tied decoys first. Example:\n"
      "  printf 'score,label\\n0.9,1\\n0.8,0\\n0.7,1\\n0.2,0\\n0.1,0\\n' | qvstats auc --score "
      "score --label label -");
  command->callback([arguments, &exitCode] { exitCode = CalculateAUC(*arguments); });
}

}  // namespace QVApps
