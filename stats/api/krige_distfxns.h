/// \file
/// \brief Ready-made distances between molecules: one minus a Tanimoto coefficient.
///
/// A distance lies in [0, 1], and equal fingerprints give exactly 0. Each molecule is prepared once
/// by PrepMol, which attaches its fingerprint; a distance only reads it, so distances of prepared
/// molecules may be computed in parallel.
#ifndef QVSTATS_API_KRIGE_DISTFXNS_H
#define QVSTATS_API_KRIGE_DISTFXNS_H

#include <string>

#include "platform/chem/mol.h"
#include "platform/system/functors.h"
#include "stats/api/bulk_distance.h"
#include "stats/api/default_krige_dist_options.h"
#include "stats/api/export.h"

namespace QVStats {

/// A distance between two molecules, symmetric to the last bit.
using QVMolDistanceFxn = QVSystem::QVBinaryFunction<QVChem::QVMolBase, QVChem::QVMolBase, double>;

/// The distance of VSEPR fingerprints, which kriging uses by default.
class QVSTATS_EXPORT QVMolKrigeDefaultDistFxn : public QVMolDistanceFxn,
                                                public QVBulkDistanceSource<QVChem::QVMolBase> {
 public:
  explicit QVMolKrigeDefaultDistFxn(const QVDefaultKrigeDistanceOptions& options = {});

  /// Attaches the VSEPR fingerprint, in place of an earlier one. \return true.
  bool PrepMol(QVChem::QVMolBase& mol) const;

  /// 1 - Tanimoto. A molecule that is not prepared is an error report, and the distance is 1.
  double operator()(const QVChem::QVMolBase& a, const QVChem::QVMolBase& b) const override;
  QVMolKrigeDefaultDistFxn* CreateCopy() const override;

  /// One molecule against many through an inverted index.
  QVBulkDistance<QVChem::QVMolBase>* CreateBulkDistance() const override;

 private:
  QVDefaultKrigeDistanceOptions options_;
};

/// The distance of common fingerprints of one type (QVLikeness::QVFPType).
class QVSTATS_EXPORT QVMolKrigeLikenessDistFxn : public QVMolDistanceFxn,
                                                 public QVBulkDistanceSource<QVChem::QVMolBase> {
 public:
  explicit QVMolKrigeLikenessDistFxn(unsigned int fpType);

  /// Attaches the fingerprint, in place of an earlier one of this type.
  /// \return false, and nothing changes, when the fingerprint cannot be made.
  bool PrepMol(QVChem::QVMolBase& mol) const;

  /// 1 - Tanimoto, the coefficient in single precision. A molecule that is not prepared is an error
  /// report, and the distance is 1.
  double operator()(const QVChem::QVMolBase& a, const QVChem::QVMolBase& b) const override;
  QVMolKrigeLikenessDistFxn* CreateCopy() const override;

  QVBulkDistance<QVChem::QVMolBase>* CreateBulkDistance() const override;

 private:
  unsigned int fpType_;
  std::string tag_;
};

}  // namespace QVStats

#endif  // QVSTATS_API_KRIGE_DISTFXNS_H
