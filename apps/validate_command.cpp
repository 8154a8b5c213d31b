#include <CLI/CLI.hpp>
#include <cmath>
#include <iostream>
#include <memory>
#include <numeric>
#include <random>

#include "apps/commands.h"
#include "apps/krige_arguments.h"
#include "apps/output_file.h"
#include "apps/prediction_summary.h"
#include "apps/progress.h"

namespace QVApps {

namespace {

struct ValidateArguments : KrigeArguments {
  unsigned int folds = 5;
  unsigned int seed = 1;
  std::string out;
};

/// The fold of each molecule: a random permutation, dealt in turn.
std::vector<unsigned int> DealFolds(std::size_t n, unsigned int folds, unsigned int seed) {
  std::vector<std::size_t> order(n);
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::mt19937 engine(seed);
  for (std::size_t i = n; i > 1; --i) std::swap(order[i - 1], order[engine() % i]);
  std::vector<unsigned int> fold(n);
  for (std::size_t i = 0; i < n; ++i) fold[order[i]] = static_cast<unsigned int>(i % folds);
  return fold;
}

/// Predicts every molecule from those of the other folds.
class CrossValidation {
 public:
  CrossValidation(const ValidateArguments& arguments,
                  const std::vector<TrainingMolecule>& molecules)
      : arguments_(arguments),
        molecules_(molecules),
        folds_(DealFolds(molecules.size(), arguments.folds, arguments.seed)),
        predictions_(molecules.size()) {}

  void Run() {
    Progress progress("validating", molecules_.size(), arguments_.quiet);
    for (unsigned int fold = 0; fold < arguments_.folds; ++fold) RunFold(fold, progress);
  }

  /// A row for each molecule, in the order of the file.
  void Write(std::ostream& out) const {
    std::vector<std::string> head = {"id", "smiles", "fold", "measured"};
    for (std::string& column : GetPredictionColumns(0)) head.push_back(std::move(column));
    WriteCsvRow(out, head);
    for (std::size_t i = 0; i < molecules_.size(); ++i) {
      const TrainingMolecule& molecule = molecules_[i];
      std::vector<std::string> row = {molecule.id, molecule.smiles, std::to_string(folds_[i] + 1),
                                      CsvNumber(ShowResponse(arguments_, molecule.value))};
      for (std::string& field :
           MakePredictionFields(arguments_, predictions_[i], DescribeStatus(predictions_[i]), 0))
        row.push_back(std::move(field));
      WriteCsvRow(out, row);
    }
  }

  PredictionSummary Summarise() const {
    PredictionSummary summary;
    for (std::size_t i = 0; i < molecules_.size(); ++i)
      if (predictions_[i].valid)
        summary.Add(predictions_[i].response, predictions_[i].deviation, molecules_[i].value);
    return summary;
  }

 private:
  void RunFold(unsigned int fold, Progress& progress) {
    std::vector<const TrainingMolecule*> training;
    std::vector<const QVChem::QVMolBase*> queries;
    std::vector<std::size_t> positions;
    for (std::size_t i = 0; i < molecules_.size(); ++i) {
      if (folds_[i] != fold) {
        training.push_back(&molecules_[i]);
      } else {
        queries.push_back(&molecules_[i].mol);
        positions.push_back(i);
      }
    }
    KrigePredictor predictor(arguments_);
    if (!predictor.Train(training))
      throw Failure(arguments_.train + ": a model cannot be trained without fold " +
                    std::to_string(fold + 1));
    const auto predictions = predictor.Predict(queries, false);
    for (std::size_t k = 0; k < positions.size(); ++k) predictions_[positions[k]] = predictions[k];
    progress.Step(queries.size());
  }

  const ValidateArguments& arguments_;
  const std::vector<TrainingMolecule>& molecules_;
  std::vector<unsigned int> folds_;
  std::vector<Prediction> predictions_;
};

/// The kernel of a model of all molecules: that which `predict` would use.
std::string DescribeKernelOfAll(const ValidateArguments& arguments,
                                const std::vector<TrainingMolecule>& molecules) {
  KrigePredictor predictor(arguments);
  if (!predictor.Train(PointTo(molecules)))
    return "none: a model of all molecules cannot be trained";
  const QVStats::QVMolKrigeResult result = predictor.GetResult(molecules.front().mol);
  return result.Valid() ? DescribeKernel(result.GetKernel()) : "none";
}

int Validate(const ValidateArguments& arguments) {
  const KrigePredictor predictor(arguments);
  std::size_t refused = 0;
  const auto molecules = ReadTraining(arguments, predictor, refused);
  if (molecules.size() < arguments.folds)
    throw Failure(arguments.train + ": " + std::to_string(molecules.size()) +
                  " molecules are too few for " + std::to_string(arguments.folds) + " folds");
  CrossValidation validation(arguments, molecules);
  validation.Run();
  if (!arguments.out.empty()) {
    OutputFile out(arguments.out);
    validation.Write(out.GetStream());
    out.Commit();
  }
  const PredictionSummary summary = validation.Summarise();
  std::ostream& report = arguments.out == "-" ? std::cerr : std::cout;
  report << "kernel  " << DescribeKernelOfAll(arguments, molecules) << '\n';
  summary.Print(report);
  return refused + (molecules.size() - summary.GetCount()) == 0 ? kDone : kSomeRefused;
}

}  // namespace

void AddValidateCommand(CLI::App& program, int& exitCode) {
  CLI::App* const command = program.add_subcommand(
      "validate", "Cross-validate: predict each molecule from those of the other folds");
  const auto arguments = std::make_shared<ValidateArguments>();
  AddKrigeOptions(*command, *arguments);
  command->add_option("--folds", arguments->folds, "Number of folds")
      ->check(CLI::Range(2u, 1000000u))
      ->capture_default_str();
  command->add_option("--seed", arguments->seed, "Of the random division into folds")
      ->capture_default_str();
  command->add_option("--out", arguments->out, "CSV file with a row for each molecule");
  command->footer(
      "Prints the kernel of a model of all molecules and the quality of the predictions: n, R2, "
      "root\n"
      "mean square and mean absolute error, share of values inside the 95 % interval. Example:\n"
      "  qvstats validate --train known.sdf --value pIC50 --folds 5 --out folds.csv");
  command->callback([arguments, &exitCode] { exitCode = Validate(*arguments); });
}

}  // namespace QVApps
