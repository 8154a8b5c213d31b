/// \file
/// \brief What stands behind a molecular kriging result.
#ifndef QVSTATS_API_PRIVATE_MOL_KRIGE_RESULT_IMPL_H
#define QVSTATS_API_PRIVATE_MOL_KRIGE_RESULT_IMPL_H

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

#include "platform/chem/mol.h"
#include "platform/likeness/vsepr.h"
#include "platform/system/cow_ptr.h"
#include "stats/api/krige_result.h"
#include "stats/api/variogram.h"

namespace QVStats {

/// The training molecules of a model, by training identifier.
struct QVMolKrigeTrainingLists {
  std::vector<std::shared_ptr<const QVChem::QVMolBase>> molecules;
  std::vector<double> responses;
  std::vector<bool> unmeasured;
};

/// The training behind results, shared by all of one state of a model. The variogram is made when
/// it is first asked for: a model trained with a fixed kernel has none.
class QVMolKrigeTraining {
 public:
  using MakeVariogram = std::function<QVVariogram()>;

  /// Lists of different lengths are a fatal report.
  QVMolKrigeTraining(QVSystem::QVCowPtr<QVMolKrigeTrainingLists> lists,
                     MakeVariogram makeVariogram);

  const QVMolKrigeTrainingLists& GetLists() const { return *lists_; }
  const std::vector<double>& GetMeasuredResponses() const { return measured_; }
  const QVVariogram& GetVariogram() const;

 private:
  const QVSystem::QVCowPtr<QVMolKrigeTrainingLists> lists_;
  std::vector<double> measured_;
  MakeVariogram makeVariogram_;
  mutable std::once_flag made_;
  mutable QVVariogram variogram_;
};

/// What speaks for a response above a baseline, and what for one below it.
struct QVMolKrigeEvidence {
  QVLikeness::QVVseprFingerprint raising;
  QVLikeness::QVVseprFingerprint lowering;
  double raisingTotal = 0.0;
  double loweringTotal = 0.0;
};

class QVMolKrigeResultImpl {
 public:
  QVMolKrigeResultImpl(const QVKrigeResult& result,
                       std::shared_ptr<const QVMolKrigeTraining> training);

  const QVKrigeResult& GetResult() const { return result_; }
  const std::shared_ptr<const QVMolKrigeTraining>& GetTraining() const { return training_; }
  double GetResponse() const { return response_; }
  double GetVariance() const { return variance_; }
  /// \return null after a fatal report.
  const QVChem::QVMolBase* FindElement(unsigned int i) const;
  const QVChem::QVMolBase* FindElement(unsigned int i, unsigned int copy) const;

  std::vector<double> GetAtomContributions(const QVChem::QVMolBase& mol, double baseline) const;

 private:
  const QVChem::QVMolBase* FindMolecule(bool hasID, unsigned int id) const;
  QVMolKrigeEvidence CollectEvidence(double baseline) const;
  /// The evidence of a baseline, collected once.
  std::shared_ptr<const QVMolKrigeEvidence> GetEvidence(double baseline) const;

  QVKrigeResult result_;
  std::shared_ptr<const QVMolKrigeTraining> training_;
  double response_;
  double variance_;
  mutable std::mutex mutex_;  // of the evidence
  mutable std::map<double, std::shared_ptr<const QVMolKrigeEvidence>> evidence_;
};

}  // namespace QVStats

#endif  // QVSTATS_API_PRIVATE_MOL_KRIGE_RESULT_IMPL_H
