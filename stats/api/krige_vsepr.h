/// \file
/// \brief Kriging on VSEPR fingerprints, the default of molecular kriging.
#ifndef QVSTATS_API_KRIGE_VSEPR_H
#define QVSTATS_API_KRIGE_VSEPR_H

#include <cstddef>
#include <vector>

#include "platform/chem/mol.h"
#include "platform/likeness/vsepr.h"
#include "platform/system/functors.h"
#include "stats/api/bulk_distance.h"
#include "stats/api/export.h"
#include "stats/api/krige_base.h"
#include "stats/api/krige_options.h"

namespace QVStats {

/// A VSEPR fingerprint with the drift properties of its molecule.
class QVSTATS_EXPORT QVVseprPropFP : public QVLikeness::QVVseprFingerprint {
 public:
  using QVVseprOptions = QVLikeness::QVVseprOptions;

  /// No features, no properties.
  QVVseprPropFP() = default;
  /// The fingerprint of a molecule, an atom or a bond without properties, or with `properties`.
  QVVseprPropFP(const QVChem::QVAtomBase& atom, const QVVseprOptions& options);
  QVVseprPropFP(const QVChem::QVBondBase& bond, const QVVseprOptions& options);
  QVVseprPropFP(const QVChem::QVMolBase& mol, const QVVseprOptions& options);
  QVVseprPropFP(const QVChem::QVAtomBase& atom, const std::vector<double>& properties,
                const QVVseprOptions& options);
  QVVseprPropFP(const QVChem::QVBondBase& bond, const std::vector<double>& properties,
                const QVVseprOptions& options);
  QVVseprPropFP(const QVChem::QVMolBase& mol, const std::vector<double>& properties,
                const QVVseprOptions& options);

  /// The same in place of what the object held; the forms without properties clear them.
  void Setup(const QVChem::QVAtomBase& atom, const QVVseprOptions& options);
  void Setup(const QVChem::QVBondBase& bond, const QVVseprOptions& options);
  void Setup(const QVChem::QVMolBase& mol, const QVVseprOptions& options);
  void Setup(const QVChem::QVAtomBase& atom, const std::vector<double>& properties,
             const QVVseprOptions& options);
  void Setup(const QVChem::QVBondBase& bond, const std::vector<double>& properties,
             const QVVseprOptions& options);
  void Setup(const QVChem::QVMolBase& mol, const std::vector<double>& properties,
             const QVVseprOptions& options);

  std::size_t GetNumProperties() const { return properties_.size(); }
  /// An index past the end is a fatal report; the value is then 0.
  double GetProperty(std::size_t k) const;

 private:
  std::vector<double> properties_;
};

/// The Jaccard distance, 1 - Tanimoto, 0 to 1. One against many goes through an inverted index.
class QVSTATS_EXPORT QVVseprDistance
    : public QVSystem::QVBinaryFunction<QVVseprPropFP, QVVseprPropFP, double>,
      public QVBulkDistanceSource<QVVseprPropFP> {
 public:
  double operator()(const QVVseprPropFP& a, const QVVseprPropFP& b) const override {
    return 1.0 - a.GetTanimoto(b);
  }
  QVVseprDistance* CreateCopy() const override { return new QVVseprDistance(*this); }
  QVBulkDistance<QVVseprPropFP>* CreateBulkDistance() const override;
};

/// A kriging model on VSEPR fingerprints under the Jaccard distance.
class QVSTATS_EXPORT QVVseprKrige : public QVKrigeImpl<QVVseprPropFP> {
 public:
  /// \param simple whether the mean is taken as known, that of the responses.
  QVVseprKrige(const QVKrigeOptions& options, bool simple);
  /// Universal kriging on fingerprints that carry exactly `numProperties` drift properties;
  /// ordinary kriging for 0.
  QVVseprKrige(const QVKrigeOptions& options, std::size_t numProperties);
};

}  // namespace QVStats

#endif  // QVSTATS_API_KRIGE_VSEPR_H
