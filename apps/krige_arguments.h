/// \file
/// \brief What the kriging subcommands share: their options, and the model that these make.
#ifndef QVSTATS_APPS_KRIGE_ARGUMENTS_H
#define QVSTATS_APPS_KRIGE_ARGUMENTS_H

#include <memory>
#include <string>
#include <vector>

#include "apps/molecule_source.h"
#include "platform/chem/mol.h"
#include "stats/api/krige_2d_mol.h"
#include "stats/api/krige_distfxns.h"
#include "stats/api/mol_properties.h"

namespace CLI {
class App;
}

namespace QVApps {

/// The options as the user gave them.
struct KrigeArguments {
  std::string train;
  std::string value;
  std::string values;
  std::string smilesColumn;
  std::string idColumn;
  unsigned int local = 0;  ///< neighbours of a local model, 0 for a global one
  std::vector<std::string> drift;
  std::string distance = "vsepr";
  std::string replicates = "mean";
  bool unlog = false;
  bool quiet = false;
};

/// Adds the options of `arguments` to a subcommand.
void AddKrigeOptions(CLI::App& command, KrigeArguments& arguments);

/// With what a molecule file is opened.
MoleculeSourceOptions MakeSourceOptions(const KrigeArguments& arguments);

/// A response as the user reads it: 10 to its power when responses are logarithms.
double ShowResponse(const KrigeArguments& arguments, double response);

/// A molecule that can train a model.
struct TrainingMolecule {
  std::string id;
  std::string smiles;
  QVChem::QVGraphMol mol;
  double value;
};

/// What a model says of a molecule. Not valid, with zeros, when the kriging variance was out of its
/// bounds.
struct Prediction {
  bool valid = false;
  double response = 0.0;
  double deviation = 0.0;            ///< the root of the kriging variance
  QVStats::QVMolKrigeResult result;  ///< with the neighbours, where they were asked for
};

/// A kriging model as the arguments ask for it.
class KrigePredictor {
 public:
  explicit KrigePredictor(const KrigeArguments& arguments);

  /// Attaches to a molecule what the model reads from it: fingerprint, drift values.
  /// \return false, with the reason in `error`, when something is missing.
  bool Prepare(QVChem::QVMolBase& mol, std::string& error) const;

  /// Adds prepared molecules and trains.
  /// \return whether that succeeded; the library has reported why it did not.
  bool Train(const std::vector<const TrainingMolecule*>& molecules);

  /// The predictions of prepared molecules, in order. Without neighbours they cost half as much.
  std::vector<Prediction> Predict(const std::vector<const QVChem::QVMolBase*>& mols,
                                  bool withNeighbours) const;
  /// The result of a prepared molecule; not valid without a prediction.
  QVStats::QVMolKrigeResult GetResult(const QVChem::QVMolBase& mol) const;

 private:
  bool isGlobal_;
  std::vector<std::string> driftTags_;
  QVStats::QVSCMolPropertyList drift_;
  std::unique_ptr<QVStats::QVMolKrigeLikenessDistFxn> distance_;  // null for VSEPR fingerprints
  QVStats::QVMolKrige model_;
};

/// Reads and prepares the training file. Records without a usable molecule or value are reported on
/// standard error and counted in `refused`; throws Failure when none is left.
std::vector<TrainingMolecule> ReadTraining(const KrigeArguments& arguments,
                                           const KrigePredictor& predictor, std::size_t& refused);

/// Pointers to all of them.
std::vector<const TrainingMolecule*> PointTo(const std::vector<TrainingMolecule>& molecules);

/// Reads the training file and trains the model for the molecules of the file `query`. Throws
/// Failure with the reason when it cannot. \return how many training records were refused.
std::size_t TrainFor(const std::string& query, const KrigeArguments& arguments,
                     KrigePredictor& predictor);

/// "Exponential: range 0.5, sill 1, nugget 0".
std::string DescribeKernel(const QVStats::QVKrigeKernelBase& kernel);

/// A row of predictions: its head, and the fields of one. Those of one that is not valid are empty.
std::vector<std::string> GetPredictionColumns(unsigned int numNeighbours);
std::vector<std::string> MakePredictionFields(const KrigeArguments& arguments,
                                              const Prediction& prediction,
                                              const std::string& status,
                                              unsigned int numNeighbours);

/// Why a prediction is not valid, or "ok".
const char* DescribeStatus(const Prediction& prediction);

}  // namespace QVApps

#endif  // QVSTATS_APPS_KRIGE_ARGUMENTS_H
