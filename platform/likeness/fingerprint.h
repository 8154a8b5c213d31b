/// \file
/// \brief Common molecular fingerprints by type code, and their Tanimoto coefficient.
///
/// For the fingerprint that kriging uses by default see vsepr.h.
#ifndef QV_PLATFORM_LIKENESS_FINGERPRINT_H
#define QV_PLATFORM_LIKENESS_FINGERPRINT_H

#include <cstdint>
#include <string>
#include <vector>

#include "platform/likeness/export.h"

namespace QVChem {
class QVMolBase;
}

namespace QVLikeness {

/// The types of QVFingerPrint. Bit types have 2048 bits unless said otherwise.
namespace QVFPType {
constexpr unsigned int Unknown = 0;
/// Bits: linear paths of 1 to 7 bonds.
constexpr unsigned int Path = 1;
/// Bits: connected subgraphs, branched ones too, of 1 to 5 bonds.
constexpr unsigned int Tree = 2;
/// Bits: the surroundings of each atom up to 2 bonds away. Source: D. Rogers, M. Hahn,
/// "Extended-connectivity fingerprints", J. Chem. Inf. Model. 50, 2010, 742.
constexpr unsigned int Circular = 3;
/// The same surroundings, counted and not folded.
constexpr unsigned int CircularCount = 4;
/// Bits: 166 structural keys. Source: J. L. Durant et al., "Reoptimization of MDL keys for use in
/// drug discovery", J. Chem. Inf. Comput. Sci. 42, 2002, 1273.
constexpr unsigned int StructuralKeys = 5;
/// Counts of pairs of atoms with their distance in bonds. Source: R. E. Carhart, D. H. Smith,
/// R. Venkataraghavan, J. Chem. Inf. Comput. Sci. 25, 1985, 64.
constexpr unsigned int AtomPair = 6;
/// Counts of paths of four atoms. Source: R. Nilakantan et al., J. Chem. Inf. Comput. Sci. 27,
/// 1987, 82.
constexpr unsigned int Torsion = 7;

/// The number of types, Unknown included, and their names by code.
constexpr unsigned int Count = 8;
QVLIKENESS_EXPORT extern const char* const TypeName[Count];
}  // namespace QVFPType

/// \return the code of a name of QVFPType::TypeName, whatever its case; Unknown for another.
QVLIKENESS_EXPORT unsigned int QVGetFPTypeFromName(const std::string& name);

/// A fingerprint of one type: bits, or counts of features. Made by QVMakeFP. A value type.
class QVLIKENESS_EXPORT QVFingerPrint {
 public:
  /// A feature and how often it occurs.
  struct Count {
    std::uint32_t feature;
    std::uint32_t count;
    friend bool operator==(const Count& a, const Count& b) {
      return a.feature == b.feature && a.count == b.count;
    }
  };

  /// Of type Unknown, without bits.
  QVFingerPrint() = default;
  QVFingerPrint(unsigned int type, std::vector<std::uint64_t> bits);
  /// `counts` in any order, each feature once.
  QVFingerPrint(unsigned int type, std::vector<Count> counts);

  unsigned int GetType() const { return type_; }
  /// The bits, 64 a word; empty for a type that counts.
  const std::vector<std::uint64_t>& GetBits() const { return bits_; }
  /// The counts by feature, ascending; empty for a type of bits.
  const std::vector<Count>& GetCounts() const { return counts_; }
  /// The number of bits set, or the sum of the counts.
  unsigned int GetTotal() const { return total_; }

  friend bool operator==(const QVFingerPrint& a, const QVFingerPrint& b) {
    return a.type_ == b.type_ && a.bits_ == b.bits_ && a.counts_ == b.counts_;
  }
  friend bool operator!=(const QVFingerPrint& a, const QVFingerPrint& b) { return !(a == b); }

 private:
  unsigned int type_ = QVFPType::Unknown;
  unsigned int total_ = 0;
  std::vector<std::uint64_t> bits_;
  std::vector<Count> counts_;
};

/// Makes the fingerprint of a molecule.
/// \param type a code of QVFPType.
/// \param stereo whether tetrahedral configuration tells features apart; no matter for Path, Tree
/// and StructuralKeys, which never look at it.
/// \return false, and `fp` is unchanged, for an unknown type or an empty molecule.
QVLIKENESS_EXPORT bool QVMakeFP(QVFingerPrint& fp, const QVChem::QVMolBase& mol, unsigned int type,
                                bool stereo);

/// Common bits over all bits, or the sum of the smaller counts over that of the larger ones: 1 for
/// equal fingerprints, two empty ones included.
/// \return 0, with an error report, when the fingerprints are of different types.
QVLIKENESS_EXPORT float QVTanimoto(const QVFingerPrint& a, const QVFingerPrint& b);

}  // namespace QVLikeness

#endif  // QV_PLATFORM_LIKENESS_FINGERPRINT_H
