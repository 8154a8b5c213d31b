/// \file
/// \brief A molecular prediction: its value, its error, its neighbours, and what each atom did.
#ifndef QVSTATS_API_MOL_KRIGE_RESULT_H
#define QVSTATS_API_MOL_KRIGE_RESULT_H

#include <memory>
#include <vector>

#include "platform/chem/mol.h"
#include "platform/system/iter.h"
#include "stats/api/export.h"
#include "stats/api/krige_result.h"
#include "stats/api/variogram.h"

namespace QVStats {

class QVMolKrigeResultImpl;
class QVMolKrigeTraining;

/// The tag under which a training molecule carries its VSEPR fingerprint (a
/// QVLikeness::QVVseprFingerprint) as generic data.
inline constexpr const char* QVTrainingFingerprintTag = "QVMolKrigeImpl_training_fingerprint_tag";

/// The answer of QVMolKrige to one molecule. Immutable: copies share it, and so do many threads.
///
/// Elements are the training points that took part. A point stands for all training molecules with
/// equal fingerprints (distance 0), its copies. Indices out of range give what QVKrigeResultBase
/// says, after an error report.
class QVSTATS_EXPORT QVMolKrigeResult {
 public:
  /// An invalid result without training.
  QVMolKrigeResult();
  /// \param result the prediction; its identifiers are indices into the lists that follow.
  /// \param molecules the training molecules.
  /// \param responses a response for each training molecule, `unmeasured` whether it is an
  /// estimate. Lists of different lengths are a fatal report.
  QVMolKrigeResult(const QVKrigeResult& result,
                   std::vector<std::shared_ptr<const QVChem::QVMolBase>> molecules,
                   std::vector<double> responses, const std::vector<bool>& unmeasured,
                   const QVVariogram& variogram);
  /// Shares the training with the model and its other results.
  QVMolKrigeResult(const QVKrigeResult& result, std::shared_ptr<const QVMolKrigeTraining> training);

  /// Whether there is a prediction.
  bool Valid() const;
  /// The predicted response; the largest finite double for an invalid result.
  double GetResponse() const;
  /// The kriging variance, in the squared unit of the response: a measured value is expected in
  /// GetResponse() +- 1.96 sqrt(GetVariance()) 19 times of 20. The largest finite double for an
  /// invalid result or a negative variance.
  double GetVariance() const;

  unsigned int GetNumElements() const;
  /// From the molecule to element `i`, 0 to 1 for fingerprint distances.
  double GetElementDistance(unsigned int i) const;
  double GetElementWeight(unsigned int i) const;
  /// The response of element `i`, by the unique-response method if it has copies.
  double GetElementResponse(unsigned int i) const;
  bool GetElementIsUnmeasured(unsigned int i) const;
  /// The index of the training molecule of element `i`, in the order of adding.
  unsigned int GetElementID(unsigned int i) const;
  bool GetHasMultipleCopies(unsigned int i) const;
  unsigned int GetNumCopies(unsigned int i) const;
  /// The response of one copy, as it was added.
  double GetElementResponse(unsigned int i, unsigned int copy) const;
  bool GetElementIsUnmeasured(unsigned int i, unsigned int copy) const;

  /// The training molecule of element `i`, or of one of its copies. A bad index, or an element
  /// without identifier, is a fatal report; the answer is then an empty molecule. The form with a
  /// copy also refuses elements whose index `i` is not below the number of their copies.
  const QVChem::QVMolBase& GetElement(unsigned int i) const;
  const QVChem::QVMolBase& GetElement(unsigned int i, unsigned int copy) const;

  /// The indices of the `count` elements of largest absolute weight, larger first; ties go to the
  /// smaller distance, then to the smaller index. All elements when there are fewer.
  std::vector<unsigned int> GetLargestElements(unsigned int count) const;

  /// The kernel and the variogram behind the prediction.
  QVKrigeKernel GetKernel() const;
  QVVariogram GetVariogram() const;
  /// The responses of the training molecules in the order of adding, all or the measured ones.
  QVSystem::QVIter<const double> GetTrainingResponses(bool includeUnmeasured) const;
  const QVKrigeResult& GetKrigeResult() const;

  /// What an atom contributes to the prediction being above (positive) or below (negative) a
  /// baseline; without one, the predicted response itself, so that the atoms' contributions show
  /// what speaks for more and what for less.
  ///
  /// The training fingerprints, each times weight x (response - baseline), add up to a raising and
  /// a lowering evidence fingerprint; what is common to both is removed, and each atom gets its
  /// share of the paths that start at it. 0 for a hydrogen. Needs the fingerprints that VSEPR
  /// kriging leaves on the training molecules: without them a fatal report, and 0.
  double GetAtomContribution(const QVChem::QVAtomBase& atom) const;
  double GetAtomContribution(const QVChem::QVAtomBase& atom, double baseline) const;
  /// The contributions of all atoms of a molecule, in atom order, for the cost of one.
  std::vector<double> GetAtomContributions(const QVChem::QVMolBase& mol, double baseline) const;

 private:
  std::shared_ptr<const QVMolKrigeResultImpl> impl_;
};

/// Probabilities that the response of a molecule lies below `x`, above it, or between two numbers
/// in either order, by the normal distribution with the result's response and variance.
QVSTATS_EXPORT double QVProbabilityLessThan(const QVMolKrigeResult& result, double x);
QVSTATS_EXPORT double QVProbabilityGreaterThan(const QVMolKrigeResult& result, double x);
QVSTATS_EXPORT double QVProbabilityBetween(const QVMolKrigeResult& result, double a, double b);

}  // namespace QVStats

#endif  // QVSTATS_API_MOL_KRIGE_RESULT_H
