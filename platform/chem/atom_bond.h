/// \file
/// \brief Atoms and bonds of a molecule, as light handles.
#ifndef QV_PLATFORM_CHEM_ATOM_BOND_H
#define QV_PLATFORM_CHEM_ATOM_BOND_H

#include <cstddef>
#include <iterator>
#include <string>

#include "platform/chem/export.h"
#include "platform/system/generic_data.h"

namespace QVChem {

class QVMolBase;
class QVAtomBase;
class QVBondBase;

/// A point in space, in ångström.
struct QVPoint3 {
  double x = 0.0;
  double y = 0.0;
  double z = 0.0;
};

/// The order of a bond. Bonds of aromatic rings are Aromatic; a Kekulé form is not kept.
enum class QVBondOrder { Zero, Single, Double, Triple, Quadruple, Aromatic, Dative };

/// The hybridisation of an atom, from its bonds and lone pairs.
enum class QVHybridization { Unknown, S, SP, SP2, SP3, SP2D, SP3D, SP3D2 };

/// The arrangement of the neighbours of a tetrahedral atom: seen from the first neighbour, the
/// others (in the order of GetNeighbors, a hydrogen that is no atom last) turn this way.
enum class QVTetrahedralStereo { None, Clockwise, CounterClockwise };

/// The arrangement at a double bond: the two atoms of GetStereoAtoms stand on the same side (Cis)
/// or on opposite sides (Trans).
enum class QVDoubleBondStereo { None, Cis, Trans };

/// Handles of one molecule, for a range-for. `Handle` is QVAtomBase or QVBondBase.
template <class Handle>
class QVHandleRange {
 public:
  class iterator {
   public:
    using value_type = Handle;
    using reference = Handle;
    using pointer = const Handle*;
    using difference_type = std::ptrdiff_t;
    using iterator_category = std::input_iterator_tag;

    iterator(const QVMolBase* mol, const unsigned int* indices, unsigned int position)
        : mol_(mol), indices_(indices), position_(position) {}
    Handle operator*() const { return Handle(mol_, indices_ ? indices_[position_] : position_); }
    iterator& operator++() {
      ++position_;
      return *this;
    }
    bool operator==(const iterator& other) const { return position_ == other.position_; }
    bool operator!=(const iterator& other) const { return position_ != other.position_; }

   private:
    const QVMolBase* mol_;
    const unsigned int* indices_;
    unsigned int position_;
  };

  /// The handles with the given indices, or with 0 to size - 1 when `indices` is null.
  QVHandleRange(const QVMolBase* mol, const unsigned int* indices, unsigned int size)
      : mol_(mol), indices_(indices), size_(size) {}
  iterator begin() const { return {mol_, indices_, 0}; }
  iterator end() const { return {mol_, indices_, size_}; }
  unsigned int size() const { return size_; }
  bool empty() const { return size_ == 0; }
  Handle operator[](unsigned int position) const { return *iterator(mol_, indices_, position); }

 private:
  const QVMolBase* mol_;
  const unsigned int* indices_;
  unsigned int size_;
};

using QVAtomRange = QVHandleRange<QVAtomBase>;
using QVBondRange = QVHandleRange<QVBondBase>;

/// An atom: a molecule and an index. All but IsValid() need a valid handle.
class QVCHEM_EXPORT QVAtomBase {
 public:
  QVAtomBase() = default;
  QVAtomBase(const QVMolBase* parent, unsigned int index) : parent_(parent), index_(index) {}

  bool IsValid() const { return parent_ != nullptr; }
  const QVMolBase& GetParent() const { return *parent_; }
  /// 0 to the molecule's GetNumAtoms() - 1, in the order of the input.
  unsigned int GetIndex() const { return index_; }

  /// The atomic number; 0 for an atom without one ("*").
  unsigned int GetElement() const;
  /// The symbol, for example "Cl".
  std::string GetSymbol() const;
  int GetFormalCharge() const;
  /// The mass number of the isotope; 0 when it is not given.
  unsigned int GetIsotope() const;
  unsigned int GetNumRadicalElectrons() const;
  bool IsHydrogen() const { return GetElement() == 1; }

  /// All bonded hydrogens, those that are atoms of the molecule and those that are not.
  unsigned int GetNumHydrogens() const;
  /// The bonded hydrogens that are not atoms of the molecule.
  unsigned int GetNumImplicitHydrogens() const;
  /// The bonded atoms of the molecule, and those of them that are not hydrogen.
  unsigned int GetDegree() const;
  unsigned int GetHeavyDegree() const;
  /// The sum of the bond orders, hydrogens included.
  unsigned int GetValence() const;

  bool IsAromatic() const;
  bool IsInRing() const;
  /// Whether it is in a ring of `size` atoms, of the smallest set of smallest rings.
  bool IsInRingOfSize(unsigned int size) const;
  unsigned int GetNumRings() const;
  QVHybridization GetHybridization() const;

  QVTetrahedralStereo GetStereo() const;
  /// 'R' or 'S' after Cahn, Ingold and Prelog; 0 when there is none.
  char GetCIP() const;

  /// The bonded atoms, and the bonds to them in the same order.
  QVAtomRange GetNeighbors() const;
  QVBondRange GetBonds() const;

  /// The origin when the molecule has no coordinates.
  QVPoint3 GetCoordinates() const;
  /// The van der Waals radius; 0 until QVAssignBondiVdWRadii.
  double GetRadius() const;

  /// \return the generic data of the atom, empty when it has none. QVMolBase::GetAtomData changes
  /// it.
  const QVSystem::QVDataHolder& GetDataHolder() const;

  friend bool operator==(const QVAtomBase& a, const QVAtomBase& b) {
    return a.parent_ == b.parent_ && a.index_ == b.index_;
  }
  friend bool operator!=(const QVAtomBase& a, const QVAtomBase& b) { return !(a == b); }

 private:
  const QVMolBase* parent_ = nullptr;
  unsigned int index_ = 0;
};

/// A bond: a molecule and an index. All but IsValid() need a valid handle.
class QVCHEM_EXPORT QVBondBase {
 public:
  QVBondBase() = default;
  QVBondBase(const QVMolBase* parent, unsigned int index) : parent_(parent), index_(index) {}

  bool IsValid() const { return parent_ != nullptr; }
  const QVMolBase& GetParent() const { return *parent_; }
  /// 0 to the molecule's GetNumBonds() - 1.
  unsigned int GetIndex() const { return index_; }

  QVAtomBase GetBegin() const;
  QVAtomBase GetEnd() const;
  /// \return the atom at the other end.
  QVAtomBase GetOther(const QVAtomBase& atom) const;

  QVBondOrder GetOrder() const;
  bool IsAromatic() const;
  bool IsInRing() const;
  bool IsConjugated() const;

  QVDoubleBondStereo GetStereo() const;
  /// The neighbours, one at each end, that GetStereo() speaks of: of the begin and of the end atom.
  /// \return false, and the handles are unchanged, without stereochemistry.
  bool GetStereoAtoms(QVAtomBase& atBegin, QVAtomBase& atEnd) const;
  /// 'E' or 'Z' after Cahn, Ingold and Prelog; 0 when there is none.
  char GetCIP() const;

  friend bool operator==(const QVBondBase& a, const QVBondBase& b) {
    return a.parent_ == b.parent_ && a.index_ == b.index_;
  }
  friend bool operator!=(const QVBondBase& a, const QVBondBase& b) { return !(a == b); }

 private:
  const QVMolBase* parent_ = nullptr;
  unsigned int index_ = 0;
};

}  // namespace QVChem

#endif  // QV_PLATFORM_CHEM_ATOM_BOND_H
