/// \file
/// \brief Molecular kriging on VSEPR fingerprints.
#ifndef QVSTATS_API_PRIVATE_KRIGE_VSEPR_IMPL_H
#define QVSTATS_API_PRIVATE_KRIGE_VSEPR_IMPL_H

#include <memory>
#include <utility>
#include <vector>

#include "stats/api/krige_vsepr.h"
#include "stats/api/private/mol_krige_model.h"

namespace QVStats {

/// The implementation behind every QVMolKrige without a caller's distance. Each kept training
/// molecule carries its fingerprint under QVTrainingFingerprintTag.
class QVSTATS_EXPORT QVVseprMolKrigeImpl : public QVElementMolKrigeImpl<QVVseprPropFP> {
 public:
  QVVseprMolKrigeImpl(const QVGlobalKrigeOptions& options, const QVLikeness::QVVseprOptions& vsepr);
  QVVseprMolKrigeImpl(const QVLocalKrigeOptions& options, const QVLikeness::QVVseprOptions& vsepr);
  QVVseprMolKrigeImpl(const QVChem::QVMolPropertyList& properties,
                      const QVGlobalKrigeOptions& options, const QVLikeness::QVVseprOptions& vsepr);
  QVVseprMolKrigeImpl(const QVChem::QVMolPropertyList& properties,
                      const QVLocalKrigeOptions& options, const QVLikeness::QVVseprOptions& vsepr);

  QVVseprMolKrigeImpl* CreateCopy() const override { return new QVVseprMolKrigeImpl(*this); }

 protected:
  QVVseprPropFP MakeQueryElement(const QVChem::QVMolBase& mol,
                                 std::vector<double> properties) const override;
  std::pair<QVVseprPropFP, MolPointer> MakeTrainingElement(
      std::unique_ptr<QVChem::QVMolBase> mol, std::vector<double> properties) const override;

 private:
  QVLikeness::QVVseprOptions vsepr_;
};

}  // namespace QVStats

#endif  // QVSTATS_API_PRIVATE_KRIGE_VSEPR_IMPL_H
