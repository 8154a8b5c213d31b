#include <CLI/CLI.hpp>
#include <cmath>
#include <iostream>
#include <memory>
#include <optional>

#include "apps/commands.h"
#include "apps/krige_arguments.h"
#include "apps/output_file.h"
#include "apps/prediction_summary.h"
#include "apps/progress.h"

namespace QVApps {

namespace {

struct PredictArguments : KrigeArguments {
  unsigned int neighbours = 3;
  std::string out = "-";
  std::string query;
};

/// Predicts the records of the query file, a block at a time, and writes a row for each.
class QueryPredictor {
 public:
  QueryPredictor(const PredictArguments& arguments, const KrigePredictor& predictor)
      : arguments_(arguments), predictor_(predictor), out_(arguments.out) {
    std::vector<std::string> head = {"id", "smiles"};
    for (std::string& column : GetPredictionColumns(arguments.neighbours))
      head.push_back(std::move(column));
    WriteCsvRow(out_.GetStream(), head);
  }

  /// A fault of the query file itself ends the run; the records before it keep their rows, and a
  /// last row says what happened.
  void Run() {
    MoleculeSource source(arguments_.query, MakeSourceOptions(arguments_));
    Progress progress("predicting", 0, arguments_.quiet);
    // Solved together: as many as the model takes through its matrix at a time.
    constexpr std::size_t kBlock = 240;
    std::vector<MoleculeRecord> block;
    std::optional<Failure> fault;
    std::size_t done = 0;
    for (bool more = true; more;) {
      block.resize(kBlock);
      std::size_t size = 0;
      try {
        while (size < kBlock && (more = source.Next(block[size]))) ++size;
      } catch (const Failure& failure) {
        fault = failure;
        more = false;
      }
      block.resize(size);
      PredictBlock(source, block);
      progress.Step(size);
      done += size;
    }
    if (fault && done == 0) throw *fault;
    if (fault) WriteRow(MoleculeRecord(), Prediction(), fault->what());
    out_.Commit();
    if (fault) throw *fault;
  }

  std::size_t GetNumRefused() const { return refused_; }
  const PredictionSummary& GetSummary() const { return summary_; }

 private:
  void PredictBlock(const MoleculeSource& source, std::vector<MoleculeRecord>& block) {
    std::vector<const QVChem::QVMolBase*> mols;
    for (MoleculeRecord& record : block)
      if (record.error.empty() && predictor_.Prepare(record.mol, record.error))
        mols.push_back(&record.mol);
    const auto predictions = predictor_.Predict(mols, arguments_.neighbours != 0);
    auto prediction = predictions.begin();
    for (const MoleculeRecord& record : block) {
      if (record.error.empty()) {
        WriteRow(record, *prediction, DescribeStatus(*prediction));
        ++prediction;
      } else {
        std::cerr << source.Locate(record) << ": " << record.error << '\n';
        WriteRow(record, Prediction(), record.error);
      }
    }
    out_.Check();
  }

  void WriteRow(const MoleculeRecord& record, const Prediction& prediction,
                const std::string& status) {
    std::vector<std::string> row = {record.id, GetSmilesOf(record)};
    for (std::string& field :
         MakePredictionFields(arguments_, prediction, status, arguments_.neighbours))
      row.push_back(std::move(field));
    WriteCsvRow(out_.GetStream(), row);
    if (!prediction.valid) {
      ++refused_;
    } else if (record.value) {
      summary_.Add(prediction.response, prediction.deviation, *record.value);
    }
  }

  const PredictArguments& arguments_;
  const KrigePredictor& predictor_;
  OutputFile out_;
  PredictionSummary summary_;
  std::size_t refused_ = 0;
};

int Predict(const PredictArguments& arguments) {
  KrigePredictor predictor(arguments);
  const std::size_t refused = TrainFor(arguments.query, arguments, predictor);
  QueryPredictor queries(arguments, predictor);
  queries.Run();
  if (queries.GetSummary().GetCount() != 0) queries.GetSummary().Print(std::cerr);
  return refused + queries.GetNumRefused() == 0 ? kDone : kSomeRefused;
}

}  // namespace

void AddPredictCommand(CLI::App& program, int& exitCode) {
  CLI::App* const command = program.add_subcommand(
      "predict", "Predict a property of molecules from molecules with measured values");
  const auto arguments = std::make_shared<PredictArguments>();
  AddKrigeOptions(*command, *arguments);
  command
      ->add_option("--neighbours", arguments->neighbours,
                   "How many neighbours to list, by the size of their weight")
      ->capture_default_str();
  command->add_option("--out", arguments->out, "CSV file to write; - for standard output")
      ->capture_default_str();
  command->add_option("QUERY", arguments->query, "Molecules to predict, in any of the formats")
      ->required();
  command->footer(
      "Writes a row for each query record, in order, also for a bad one. Example:\n"
      "  printf 'CCO ethanol\\nCCCO propanol\\nCCCCO butanol\\nCCCCCO pentanol\\n' > known.smi\n"
      "  printf 'id,logP\\nethanol,-0.3\\npropanol,0.3\\nbutanol,0.9\\npentanol,1.5\\n' > "
      "logp.csv\n"
      "  echo 'CCCCCCO hexanol' | qvstats predict --train known.smi --values logp.csv --value logP "
      "-");
  command->callback([arguments, &exitCode] { exitCode = Predict(*arguments); });
}

}  // namespace QVApps
