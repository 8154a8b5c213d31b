#include "apps/krige_arguments.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <iostream>
#include <iterator>
#include <limits>
#include <utility>

#include "apps/commands.h"
#include "apps/number_field.h"
#include "apps/output_file.h"
#include "apps/prediction_summary.h"
#include "apps/progress.h"
#include "platform/likeness/fingerprint.h"
#include "platform/system/memory.h"
#include "platform/system/text.h"

namespace QVApps {

namespace {

using QVStats::QVMolKrige;
using QVStats::QVMolKrigeResult;

constexpr const char* kReplicates[] = {"mean", "min", "max"};  // by unique-response code

unsigned int GetUniqueResponseMethod(const std::string& name) {
  const auto found = std::find(std::begin(kReplicates), std::end(kReplicates), name);
  return static_cast<unsigned int>(found - std::begin(kReplicates));
}

QVStats::QVSCMolPropertyList MakeDrift(const std::vector<std::string>& tags) {
  QVStats::QVSCMolPropertyList drift;
  for (const std::string& tag : tags) drift.PushTag(tag);
  return drift;
}

std::unique_ptr<QVStats::QVMolKrigeLikenessDistFxn> MakeDistance(const std::string& name) {
  if (name == "vsepr") return nullptr;
  return std::make_unique<QVStats::QVMolKrigeLikenessDistFxn>(
      QVLikeness::QVGetFPTypeFromName(name));
}

template <class Options>
QVMolKrige MakeModelWith(const Options& options, const QVStats::QVMolKrigeLikenessDistFxn* distance,
                         const QVStats::QVSCMolPropertyList& drift) {
  if (distance)
    return drift.GetSize() == 0 ? QVMolKrige(*distance, options)
                                : QVMolKrige(*distance, drift, options);
  return drift.GetSize() == 0 ? QVMolKrige(options) : QVMolKrige(drift, options);
}

QVMolKrige MakeModel(const KrigeArguments& arguments,
                     const QVStats::QVMolKrigeLikenessDistFxn* distance,
                     const QVStats::QVSCMolPropertyList& drift) {
  const unsigned int method = GetUniqueResponseMethod(arguments.replicates);
  if (arguments.local == 0) {
    QVStats::QVGlobalKrigeOptions options;
    return MakeModelWith(options.SetUniqueResponseMethod(method), distance, drift);
  }
  QVStats::QVLocalKrigeOptions options;
  options.SetNumLocal(arguments.local).SetUniqueResponseMethod(method);
  return MakeModelWith(options, distance, drift);
}

/// Every name that --distance takes.
std::vector<std::string> GetDistanceNames() {
  std::vector<std::string> names = {"vsepr"};
  for (unsigned int type = 1; type < QVLikeness::QVFPType::Count; ++type)
    names.push_back(QVSystem::QVToLower(QVLikeness::QVFPType::TypeName[type]));
  return names;
}

}  // namespace

void AddKrigeOptions(CLI::App& command, KrigeArguments& arguments) {
  command
      .add_option("--train", arguments.train,
                  "Molecules with measured values: .sdf .smi .csv .tsv, also .gz; - for standard "
                  "input")
      ->required();
  command.add_option("--value", arguments.value, "Column or SD tag of the value")->required();
  command.add_option("--values", arguments.values,
                     "Table (.csv, .tsv) with the values by identifier, for files without them");
  command.add_option("--smiles-column", arguments.smilesColumn, "SMILES column of a table");
  command.add_option("--id-column", arguments.idColumn, "Column or SD tag of the identifier");
  command.add_option("--local", arguments.local,
                     "Predict each molecule from its N nearest only (at least 3)");
  command.add_option("--drift", arguments.drift, "Columns or SD tags with a linear effect")
      ->delimiter(',');
  command.add_option("--distance", arguments.distance, "Fingerprint of the distance")
      ->check(CLI::IsMember(GetDistanceNames()))
      ->capture_default_str();
  command
      .add_option("--replicates", arguments.replicates, "Value of a molecule measured repeatedly")
      ->check(
          CLI::IsMember(std::vector<std::string>(std::begin(kReplicates), std::end(kReplicates))))
      ->capture_default_str();
  command.add_flag("--unlog", arguments.unlog,
                   "Values are base-10 logarithms: show predictions and intervals as 10^value");
  command.add_flag("--quiet", arguments.quiet, "No progress line");
}

MoleculeSourceOptions MakeSourceOptions(const KrigeArguments& arguments) {
  MoleculeSourceOptions options;
  options.smilesColumn = arguments.smilesColumn;
  options.idColumn = arguments.idColumn;
  options.valueName = arguments.value;
  options.valuesFile = arguments.values;
  return options;
}

double ShowResponse(const KrigeArguments& arguments, double response) {
  return arguments.unlog ? std::pow(10.0, response) : response;
}

KrigePredictor::KrigePredictor(const KrigeArguments& arguments)
    : isGlobal_(arguments.local == 0),
      driftTags_(arguments.drift),
      drift_(MakeDrift(arguments.drift)),
      distance_(MakeDistance(arguments.distance)),
      model_(MakeModel(arguments, distance_.get(), drift_)) {}

bool KrigePredictor::Prepare(QVChem::QVMolBase& mol, std::string& error) const {
  for (const std::string& tag : driftTags_) {
    const std::string text = mol.GetSDData(tag);
    double value;
    const std::string fault = ReadNumber(text, value);
    if (fault.empty()) continue;
    error = QVSystem::QVFormat("'%s' under the drift column '%s' %s", Shorten(text).c_str(),
                               tag.c_str(), fault.c_str());
    return false;
  }
  if (!drift_.PrepMol(mol) || (distance_ && !distance_->PrepMol(mol))) {
    error = "no fingerprint can be made";
    return false;
  }
  return true;
}

bool KrigePredictor::Train(const std::vector<const TrainingMolecule*>& molecules) {
  model_.Clear();
  // Distances of all pairs, and a matrix; better refused now than after minutes of comparing.
  const auto n = static_cast<double>(molecules.size());
  std::string problem;
  if (isGlobal_ && !QVSystem::QVHasMemory(1.5 * sizeof(double) * n * n, problem))
    throw Failure("a model on all of " + std::to_string(molecules.size()) + " molecules " +
                  problem + "; --local needs less");
  for (const TrainingMolecule* molecule : molecules)
    if (!model_.AddTraining(molecule->mol, molecule->value)) return false;
  return model_.Train();
}

std::vector<Prediction> KrigePredictor::Predict(const std::vector<const QVChem::QVMolBase*>& mols,
                                                bool withNeighbours) const {
  std::vector<Prediction> predictions;
  predictions.reserve(mols.size());
  if (withNeighbours) {
    for (QVMolKrigeResult& result : model_.GetResults(mols)) {
      predictions.emplace_back();
      if (result.Valid())
        predictions.back() = {true, result.GetResponse(), std::sqrt(result.GetVariance()),
                              std::move(result)};
    }
    return predictions;
  }
  constexpr double kNone = std::numeric_limits<double>::max();
  for (const QVStats::QVKrigeEstimate& estimate : model_.GetEstimates(mols)) {
    predictions.emplace_back();
    if (estimate.variance != kNone)
      predictions.back() = {true, estimate.response, std::sqrt(estimate.variance), {}};
  }
  return predictions;
}

QVMolKrigeResult KrigePredictor::GetResult(const QVChem::QVMolBase& mol) const {
  return model_.GetResult(mol);
}

std::vector<TrainingMolecule> ReadTraining(const KrigeArguments& arguments,
                                           const KrigePredictor& predictor, std::size_t& refused) {
  MoleculeSourceOptions options = MakeSourceOptions(arguments);
  options.valueRequired = true;
  MoleculeSource source(arguments.train, options);
  Progress progress("reading " + arguments.train, 0, arguments.quiet);
  std::vector<TrainingMolecule> molecules;
  for (MoleculeRecord record; source.Next(record); progress.Step()) {
    std::string error = record.error;
    if (error.empty() && !record.value) error = "no value";
    if (error.empty()) predictor.Prepare(record.mol, error);
    if (error.empty()) {
      std::string smiles = GetSmilesOf(record);
      molecules.push_back({record.id, std::move(smiles), std::move(record.mol), *record.value});
    } else {
      ++refused;
      std::cerr << source.Locate(record) << ": " << error << ", left out\n";
    }
  }
  if (molecules.empty()) throw Failure(arguments.train + ": no molecule with a value to train on");
  return molecules;
}

std::vector<const TrainingMolecule*> PointTo(const std::vector<TrainingMolecule>& molecules) {
  std::vector<const TrainingMolecule*> pointers;
  for (const TrainingMolecule& molecule : molecules) pointers.push_back(&molecule);
  return pointers;
}

std::size_t TrainFor(const std::string& query, const KrigeArguments& arguments,
                     KrigePredictor& predictor) {
  if (arguments.train == "-" && query == "-")
    throw Failure("training and queries cannot both come from the standard input");
  std::size_t refused = 0;
  const auto training = ReadTraining(arguments, predictor, refused);
  if (!predictor.Train(PointTo(training)))
    throw Failure(arguments.train + ": a model cannot be trained on these " +
                  std::to_string(training.size()) + " molecules");
  return refused;
}

std::string DescribeKernel(const QVStats::QVKrigeKernelBase& kernel) {
  return kernel.GetName() + QVSystem::QVFormat(": range %.4g, sill %.4g, nugget %.4g",
                                               kernel.GetRange(), kernel.GetSill(),
                                               kernel.GetNugget());
}

namespace {

constexpr const char* kPredictionColumns[] = {"predicted", "stddev", "lower95", "upper95",
                                              "status"};
constexpr const char* kNeighbourColumns[] = {"id", "distance", "weight", "value"};

}  // namespace

std::vector<std::string> GetPredictionColumns(unsigned int numNeighbours) {
  std::vector<std::string> columns(std::begin(kPredictionColumns), std::end(kPredictionColumns));
  for (unsigned int k = 1; k <= numNeighbours; ++k)
    for (const char* field : kNeighbourColumns)
      columns.push_back("neighbour" + std::to_string(k) + "_" + field);
  return columns;
}

std::vector<std::string> MakePredictionFields(const KrigeArguments& arguments,
                                              const Prediction& prediction,
                                              const std::string& status,
                                              unsigned int numNeighbours) {
  constexpr std::size_t kFirstNeighbour = std::size(kPredictionColumns);
  std::vector<std::string> fields(kFirstNeighbour + numNeighbours * std::size(kNeighbourColumns));
  fields[kFirstNeighbour - 1] = status;
  if (!prediction.valid) return fields;
  const double response = prediction.response, deviation = prediction.deviation;
  const auto show = [&](double value) { return CsvNumber(ShowResponse(arguments, value)); };
  fields[0] = show(response);
  fields[1] = CsvNumber(deviation);
  fields[2] = show(response - kInterval95 * deviation);
  fields[3] = show(response + kInterval95 * deviation);
  if (numNeighbours == 0) return fields;
  const QVMolKrigeResult& result = prediction.result;
  std::size_t next = kFirstNeighbour;
  for (const unsigned int i : result.GetLargestElements(numNeighbours)) {
    fields[next++] = result.GetElement(i).GetTitle();
    fields[next++] = CsvNumber(result.GetElementDistance(i));
    fields[next++] = CsvNumber(result.GetElementWeight(i));
    fields[next++] = show(result.GetElementResponse(i));
  }
  return fields;
}

const char* DescribeStatus(const Prediction& prediction) {
  return prediction.valid ? "ok" : "no prediction: kriging variance out of its bounds";
}

}  // namespace QVApps
