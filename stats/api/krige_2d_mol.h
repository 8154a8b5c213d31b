/// \file
/// \brief Molecular kriging: a property of a molecule predicted from molecules where it is known.
///
///     QVStats::QVMolKrige model(QVStats::QVGlobalKrigeOptions{});
///     for (const auto& [mol, activity] : known) model.AddTraining(mol, activity);
///     if (!model.Train()) return;
///     const QVStats::QVMolKrigeResult result = model.GetResult(query);
///     const double activity = result.GetResponse();
///     const double margin = 1.96 * std::sqrt(result.GetVariance());  // of the 95 % interval
///
/// Similar molecules have similar properties: the distance between molecules is 1 - Tanimoto of
/// their VSEPR fingerprints (platform/likeness/vsepr.h), or a distance of the caller's. Training
/// measures by a variogram how fast the property changes with distance and fits a kernel to it; a
/// prediction is the best linear unbiased one under that kernel.
/// Sources: N. A. C. Cressie, "Statistics for Spatial Data", revised edition, 1993, chapter 3;
/// F. R. Burden, "Quantitative structure-activity relationship studies using Gaussian processes",
/// J. Chem. Inf. Comput. Sci. 41, 2001, 830.
#ifndef QVSTATS_API_KRIGE_2D_MOL_H
#define QVSTATS_API_KRIGE_2D_MOL_H

#include <vector>

#include "platform/chem/mol.h"
#include "platform/chem/mol_properties.h"
#include "platform/system/copy_ptr.h"
#include "platform/system/functors.h"
#include "stats/api/default_krige_dist_options.h"
#include "stats/api/export.h"
#include "stats/api/krige_base.h"
#include "stats/api/krige_distfxns.h"
#include "stats/api/krige_options.h"
#include "stats/api/mol_krige_result.h"
#include "stats/api/property_list.h"

namespace QVStats {

/// What stands behind a QVMolKrige. See there for the operations.
class QVSTATS_EXPORT QVMolKrigeImpl {
 public:
  virtual bool AddTraining(const QVChem::QVMolBase& mol, double response) = 0;
  virtual bool AddTraining(const QVChem::QVMCMolBase& mol, double response) = 0;
  virtual bool AddUnmeasuredTraining(const QVChem::QVMolBase& mol, double response) = 0;
  virtual bool AddUnmeasuredTraining(const QVChem::QVMCMolBase& mol, double response) = 0;
  virtual bool Train() = 0;
  virtual bool Train(QVKrigeKernelBase& kernel) = 0;
  virtual bool TrainFixed(const QVKrigeKernelBase& kernel) = 0;
  virtual QVMolKrigeResult GetResult(const QVChem::QVMolBase& mol) = 0;
  virtual QVMolKrigeResult GetResult(const QVChem::QVMolBase& mol) const = 0;
  virtual QVMolKrigeResult GetResult(const QVChem::QVMCMolBase& mol) = 0;
  virtual QVMolKrigeResult GetResult(const QVChem::QVMCMolBase& mol) const = 0;
  virtual QVVariogram GetVariogram() = 0;
  virtual QVVariogram GetVariogram() const = 0;
  virtual void Clear() = 0;
  virtual QVMolKrigeImpl* CreateCopy() const = 0;
  virtual ~QVMolKrigeImpl();

  virtual std::vector<QVMolKrigeResult> GetResults(
      const std::vector<const QVChem::QVMolBase*>& mols) const = 0;
  virtual std::vector<QVKrigeEstimate> GetEstimates(
      const std::vector<const QVChem::QVMolBase*>& mols) const = 0;
};

/// A molecular kriging model as a value. Copies share what they can until one of them changes.
///
/// Constructors without a distance function use VSEPR fingerprints. With drift properties the mean
/// is linear in them (universal kriging), else an unknown constant (ordinary kriging). Local
/// options answer each molecule from its nearest training molecules only.
class QVSTATS_EXPORT QVMolKrige {
 public:
  explicit QVMolKrige(const QVGlobalKrigeOptions& options);
  explicit QVMolKrige(const QVLocalKrigeOptions& options);
  QVMolKrige(const QVDefaultKrigeDistanceOptions& distance, const QVGlobalKrigeOptions& options);
  QVMolKrige(const QVDefaultKrigeDistanceOptions& distance, const QVLocalKrigeOptions& options);

  QVMolKrige(const QVChem::QVMolPropertyList& properties, const QVGlobalKrigeOptions& options);
  QVMolKrige(const QVChem::QVMolPropertyList& properties, const QVLocalKrigeOptions& options);
  QVMolKrige(const QVDefaultKrigeDistanceOptions& distance,
             const QVChem::QVMolPropertyList& properties, const QVGlobalKrigeOptions& options);
  QVMolKrige(const QVDefaultKrigeDistanceOptions& distance,
             const QVChem::QVMolPropertyList& properties, const QVLocalKrigeOptions& options);

  /// `distance` is copied, and called with the training molecules' copies and with queries: not
  /// negative, symmetric to the last bit, below 1e-30 for molecules that count as one. A molecule
  /// must be prepared for it (its PrepMol, if it has one) before it is given to the model. One that
  /// derives from QVBulkDistanceSource is evaluated in bulk.
  QVMolKrige(const QVMolDistanceFxn& distance, const QVGlobalKrigeOptions& options);
  QVMolKrige(const QVMolDistanceFxn& distance, const QVLocalKrigeOptions& options);
  QVMolKrige(const QVMolDistanceFxn& distance, const QVChem::QVMolPropertyList& properties,
             const QVGlobalKrigeOptions& options);
  QVMolKrige(const QVMolDistanceFxn& distance, const QVChem::QVMolPropertyList& properties,
             const QVLocalKrigeOptions& options);

  /// Takes ownership of an implementation.
  explicit QVMolKrige(QVMolKrigeImpl* impl);

  /// Adds a copy of a molecule whose property was measured. Its training identifier is the number
  /// of molecules added before. The model is then untrained.
  /// \param response not NaN.
  /// \return false, and the model is as before but for its training, when the molecule lacks a
  /// drift property.
  bool AddTraining(const QVChem::QVMolBase& mol, double response);
  bool AddTraining(const QVChem::QVMCMolBase& mol, double response);
  /// Adds a molecule whose property is an estimate.
  bool AddUnmeasuredTraining(const QVChem::QVMolBase& mol, double response);
  bool AddUnmeasuredTraining(const QVChem::QVMCMolBase& mol, double response);

  /// Fits the sixteen kernels to the variogram and keeps the best one that gives a solvable system.
  /// \return whether the model can predict. Reasons why not are reported as warnings.
  bool Train();
  /// Fits `kernel` in place and trains with it.
  bool Train(QVKrigeKernel& kernel);
  /// Trains with `kernel` as it is.
  bool TrainFixed(const QVKrigeKernel& kernel);

  /// The prediction for a molecule, which is only looked at. An untrained model trains itself; a
  /// const one trains a private copy at each call. On a trained model the const forms may run in
  /// many threads, if the caller's distance function may.
  /// \return an invalid result when training fails, the molecule lacks a drift property, or the
  /// variance is out of its bounds.
  QVMolKrigeResult GetResult(const QVChem::QVMolBase& mol);
  QVMolKrigeResult GetResult(const QVChem::QVMolBase& mol) const;
  QVMolKrigeResult GetResult(const QVChem::QVMCMolBase& mol);
  QVMolKrigeResult GetResult(const QVChem::QVMCMolBase& mol) const;

  /// The results of many molecules, in order: those of GetResult, in one solve instead of many.
  std::vector<QVMolKrigeResult> GetResults(const std::vector<const QVChem::QVMolBase*>& mols) const;
  /// Response and variance alone, in order, at about half the cost of results. Both are the largest
  /// finite double where GetResult is invalid.
  std::vector<QVKrigeEstimate> GetEstimates(
      const std::vector<const QVChem::QVMolBase*>& mols) const;

  /// The binned variogram of the training.
  QVVariogram GetVariogram();
  QVVariogram GetVariogram() const;
  /// Drops all training.
  void Clear();

 private:
  const QVMolKrigeImpl& Const() const { return *impl_; }

  QVSystem::QVCopyPtr<QVMolKrigeImpl> impl_;
};

/// Kriging on single-conformer molecules with a caller's distance, without the front-end's results.
class QVSTATS_EXPORT QVSCMolKrige : public QVKrigeImpl<QVChem::QVMolBase> {
 public:
  /// \param simple whether the mean is taken as known, that of the responses.
  QVSCMolKrige(const QVMolDistanceFxn& distance, const QVKrigeOptions& options, bool simple);
  /// With drift properties.
  QVSCMolKrige(const QVMolDistanceFxn& distance,
               const QVPropertyListFxn<QVChem::QVMolBase>& properties,
               const QVKrigeOptions& options);
};

/// The same on multi-conformer molecules.
class QVSTATS_EXPORT QVMCMolKrige : public QVKrigeImpl<QVChem::QVMCMolBase> {
 public:
  using DistanceFxn = QVSystem::QVBinaryFunction<QVChem::QVMCMolBase, QVChem::QVMCMolBase, double>;

  QVMCMolKrige(const DistanceFxn& distance, const QVKrigeOptions& options, bool simple);
  QVMCMolKrige(const DistanceFxn& distance,
               const QVPropertyListFxn<QVChem::QVMCMolBase>& properties,
               const QVKrigeOptions& options);
};

}  // namespace QVStats

#endif  // QVSTATS_API_KRIGE_2D_MOL_H
