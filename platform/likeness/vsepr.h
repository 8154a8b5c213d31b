/// \file
/// \brief The VSEPR fingerprint: a molecule as a sparse vector of typed bond paths.
///
/// A feature is a simple path of bonds between heavy atoms, read in one canonical direction. Each
/// path counts twice, at two levels of detail: with the elements of its atoms, and with the whole
/// valence shells (element, bonded heavy atoms, hydrogens, lone pairs, charge, aromaticity, ring
/// membership; the arrangement of electron pairs follows from them). Bonds enter by their order at
/// both levels. The weight of a feature is the number of its paths. Features are named by 64-bit
/// hash codes, the same on every run and machine; among a million distinct features the chance
/// that two share a code is 3e-8.
///
/// Sources: paths as features: R. Nilakantan, N. Bauman, J. S. Dixon, R. Venkataraghavan,
/// "Topological torsion", J. Chem. Inf. Comput. Sci. 27, 1987, 82; the Tanimoto coefficient of
/// counts: P. Willett, J. M. Barnard, G. M. Downs, "Chemical similarity searching", J. Chem. Inf.
/// Comput. Sci. 38, 1998, 983; valence shells: R. J. Gillespie, R. S. Nyholm, "Inorganic
/// stereochemistry", Q. Rev. Chem. Soc. 11, 1957, 339.
#ifndef QV_PLATFORM_LIKENESS_VSEPR_H
#define QV_PLATFORM_LIKENESS_VSEPR_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/likeness/export.h"

namespace QVChem {
class QVAtomBase;
class QVBondBase;
class QVMolBase;
}  // namespace QVChem

namespace QVLikeness {

/// Which paths make up a fingerprint. The defaults predict best by cross-validation on measured
/// activities and partition coefficients (docs/fingerprint.md).
class QVLIKENESS_EXPORT QVVseprOptions {
 public:
  QVVseprOptions() = default;
  QVVseprOptions(unsigned int maxPathLength, unsigned int minPathLength, bool forcePathsOut,
                 bool weightByLength, bool stereoAware)
      : maxPathLength_(maxPathLength),
        minPathLength_(minPathLength),
        forcePathsOut_(forcePathsOut),
        weightByLength_(weightByLength),
        stereoAware_(stereoAware) {}

  /// The longest path, in bonds. The number of paths grows about as 1.4 to this power.
  unsigned int GetMaxPathLength() const { return maxPathLength_; }
  QVVseprOptions& SetMaxPathLength(unsigned int length) { return Set(maxPathLength_, length); }

  /// The shortest path, in bonds; 0 includes the single atoms. A minimum above the maximum leaves
  /// no features.
  unsigned int GetMinPathLength() const { return minPathLength_; }
  QVVseprOptions& SetMinPathLength(unsigned int length) { return Set(minPathLength_, length); }

  /// Only paths whose every step leads farther from their start, that is shortest paths.
  bool GetForcePathsOut() const { return forcePathsOut_; }
  QVVseprOptions& SetForcePathsOut(bool force) { return Set(forcePathsOut_, force); }

  /// A path counts with its number of atoms instead of once.
  bool GetWeightByLength() const { return weightByLength_; }
  QVVseprOptions& SetWeightByLength(bool weight) { return Set(weightByLength_, weight); }

  /// The configuration of stereo centres (R, S) and double bonds (E, Z) belongs to their types.
  /// Without it, stereoisomers have equal fingerprints.
  bool GetStereoAware() const { return stereoAware_; }
  QVVseprOptions& SetStereoAware(bool aware) { return Set(stereoAware_, aware); }

  friend bool operator==(const QVVseprOptions& a, const QVVseprOptions& b) {
    return a.maxPathLength_ == b.maxPathLength_ && a.minPathLength_ == b.minPathLength_ &&
           a.forcePathsOut_ == b.forcePathsOut_ && a.weightByLength_ == b.weightByLength_ &&
           a.stereoAware_ == b.stereoAware_;
  }
  friend bool operator!=(const QVVseprOptions& a, const QVVseprOptions& b) { return !(a == b); }

 private:
  template <class T>
  QVVseprOptions& Set(T& field, T value) {
    field = value;
    return *this;
  }

  unsigned int maxPathLength_ = 4;
  unsigned int minPathLength_ = 0;
  bool forcePathsOut_ = true;
  bool weightByLength_ = false;
  bool stereoAware_ = false;
};

/// The Tanimoto coefficient from its three sums: `shared` over `first + second - shared`; 1 when
/// that is 0, so that two empty fingerprints are equal.
inline double QVTanimotoFromSums(double shared, double first, double second) {
  const double united = first + second - shared;
  return united == 0.0 ? 1.0 : shared / united;
}

/// A sparse vector from feature codes to weights, sorted by code. The weights of a molecule are
/// positive integers; sums, scaled copies and differences may hold any number. A value type.
class QVLIKENESS_EXPORT QVVseprFingerprint {
 public:
  /// No features.
  QVVseprFingerprint() = default;
  /// The paths of a molecule, or those that start at one of its heavy atoms (none for a hydrogen),
  /// or with one of its bonds from either end (none for a bond to hydrogen).
  QVVseprFingerprint(const QVChem::QVMolBase& mol, const QVVseprOptions& options);
  QVVseprFingerprint(const QVChem::QVAtomBase& atom, const QVVseprOptions& options);
  QVVseprFingerprint(const QVChem::QVBondBase& bond, const QVVseprOptions& options);

  /// The same, in place of what the fingerprint held.
  void Setup(const QVChem::QVMolBase& mol, const QVVseprOptions& options);
  void Setup(const QVChem::QVAtomBase& atom, const QVVseprOptions& options);
  void Setup(const QVChem::QVBondBase& bond, const QVVseprOptions& options);

  /// From features in any order; the weights of a repeated code are added, zeros dropped.
  void Setup(const std::vector<std::uint64_t>& codes, const std::vector<double>& weights,
             const QVVseprOptions& options);

  /// Those of the set-up; a fingerprint without features takes over those of what is added to it.
  const QVVseprOptions& GetOptions() const { return options_; }

  /// Codes, ascending, and the weight of each.
  const std::vector<std::uint64_t>& GetCodes() const { return codes_; }
  const std::vector<double>& GetWeights() const { return weights_; }
  std::size_t GetNumFeatures() const { return codes_.size(); }

  /// The sum of the weights.
  double GetVolume() const { return volume_; }

  /// Sum of the smaller weights over sum of the larger ones, feature by feature: 1 for equal
  /// fingerprints, exactly, also for two empty ones; 0 without a common feature. Symmetric to the
  /// bit.
  double GetTanimoto(const QVVseprFingerprint& other) const;

  /// The sum of the smaller weights over the common features: GetVolume() of the intersection.
  double GetSharedVolume(const QVVseprFingerprint& other) const;

  /// Multiplies every weight; a factor of 0 leaves no features.
  QVVseprFingerprint& Scale(double factor);

  /// Adds weights feature by feature; features whose weights cancel are dropped.
  QVVseprFingerprint& operator+=(const QVVseprFingerprint& other);
  /// Keeps the common features, each with the smaller of its two weights.
  QVVseprFingerprint& operator&=(const QVVseprFingerprint& other);

  friend QVVseprFingerprint operator+(QVVseprFingerprint a, const QVVseprFingerprint& b) {
    return a += b;
  }
  friend QVVseprFingerprint operator&(QVVseprFingerprint a, const QVVseprFingerprint& b) {
    return a &= b;
  }
  /// The same features with the same weights; options do not matter.
  friend bool operator==(const QVVseprFingerprint& a, const QVVseprFingerprint& b) {
    return a.codes_ == b.codes_ && a.weights_ == b.weights_;
  }
  friend bool operator!=(const QVVseprFingerprint& a, const QVVseprFingerprint& b) {
    return !(a == b);
  }

 private:
  friend QVLIKENESS_EXPORT std::vector<QVVseprFingerprint> QVGetVseprAtomFingerprints(
      const QVChem::QVMolBase& mol, const QVVseprOptions& options);

  void SetFromPaths(std::vector<std::uint64_t> paths, const QVVseprOptions& options);
  void Append(std::uint64_t code, double weight);
  void FindVolume();

  QVVseprOptions options_;
  std::vector<std::uint64_t> codes_;
  std::vector<double> weights_;
  double volume_ = 0.0;
};

/// The fingerprint of every atom of a molecule, in atom order: what the constructor from an atom
/// gives, for the cost of one look at the molecule.
QVLIKENESS_EXPORT std::vector<QVVseprFingerprint> QVGetVseprAtomFingerprints(
    const QVChem::QVMolBase& mol, const QVVseprOptions& options);

/// Attaches its fingerprint to a molecule as generic data, in place of an earlier one.
QVLIKENESS_EXPORT void QVPrepVsepr(QVChem::QVMolBase& mol, const QVVseprOptions& options);

/// \return the fingerprint that QVPrepVsepr attached to a molecule; null when it is not prepared.
QVLIKENESS_EXPORT const QVVseprFingerprint* QVFindVsepr(const QVChem::QVMolBase& mol);

/// The Tanimoto coefficient of two molecules that QVPrepVsepr has prepared.
/// \return `errorValue` when one of them is not prepared.
QVLIKENESS_EXPORT double QVGetVseprTanimoto(const QVChem::QVMolBase& a, const QVChem::QVMolBase& b,
                                            double errorValue);

}  // namespace QVLikeness

#endif  // QV_PLATFORM_LIKENESS_VSEPR_H
