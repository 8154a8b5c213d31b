/// \file
/// \brief What the sources of this library may do to a molecule. Not installed.
#ifndef QV_PLATFORM_CHEM_INTERNAL_MOL_ACCESS_H
#define QV_PLATFORM_CHEM_INTERNAL_MOL_ACCESS_H

#include <memory>
#include <vector>

#include "platform/chem/mol.h"

namespace QVChem::Internal {

struct MolAccess {
  static const std::shared_ptr<const Chemistry>& GetChemistry(const QVMolBase& mol) {
    return mol.chemistry_;
  }
  /// A new connection table: coordinates, radii and data of atoms are dropped.
  static void SetChemistry(QVMolBase& mol, std::shared_ptr<const Chemistry> chemistry);
  /// The same connection table as a shared object: everything else stays.
  static void ShareChemistry(QVMolBase& mol, std::shared_ptr<const Chemistry> chemistry) {
    mol.chemistry_ = std::move(chemistry);
  }
  /// A connection table of some of the atoms: atom i is what atom `kept[i]` was, and keeps its
  /// coordinates, radius and data.
  static void SetChemistryOfKeptAtoms(QVMolBase& mol, std::shared_ptr<const Chemistry> chemistry,
                                      const std::vector<unsigned int>& kept);
  static const std::vector<QVSystem::QVDataHolder>& GetAtomData(const QVMolBase& mol) {
    return mol.atomData_;
  }
};

}  // namespace QVChem::Internal

#endif  // QV_PLATFORM_CHEM_INTERNAL_MOL_ACCESS_H
