/// \file
/// \brief The RDKit molecule behind a molecule, for source files of the platform. Not installed.
#ifndef QV_PLATFORM_CHEM_INTERNAL_RDKIT_MOL_H
#define QV_PLATFORM_CHEM_INTERNAL_RDKIT_MOL_H

#include <GraphMol/ROMol.h>
#include <GraphMol/RWMol.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/chem/export.h"
#include "platform/chem/mol.h"

namespace QVChem::Internal {

/// The connection table that copies of a molecule share. Immutable.
struct Chemistry {
  explicit Chemistry(std::unique_ptr<const RDKit::ROMol> molecule);

  /// Sanitized, with rings; without conformers, title and data.
  std::unique_ptr<const RDKit::ROMol> mol;
  unsigned int numHeavyAtoms = 0;
  /// The neighbours of atom i, and the bonds to them, stand at firstNeighbor[i] up to
  /// firstNeighbor[i + 1], in RDKit's order of the bonds of an atom.
  std::vector<unsigned int> firstNeighbor;
  std::vector<unsigned int> neighborAtoms;
  std::vector<unsigned int> neighborBonds;
};

/// The shared connection table; that of an empty molecule for an empty molecule.
QVCHEM_EXPORT const Chemistry& GetChemistry(const QVMolBase& mol);

/// The RDKit molecule: atom and bond indices are ours, and it has no conformer. It may be read from
/// many threads; operations that cache something in it (most take it non-const) need a copy.
QVCHEM_EXPORT const RDKit::ROMol& GetRDKitMol(const QVMolBase& mol);

/// A copy to change, with the coordinates as its only conformer and the title as its "_Name".
QVCHEM_EXPORT std::unique_ptr<RDKit::RWMol> CopyToRDKit(const QVMolBase& mol);

/// Makes `mol` the sanitized RDKit molecule: takes its first conformer as the coordinates and
/// leaves title and data of `mol` as they are, but drops those of atoms.
QVCHEM_EXPORT void SetFromRDKit(QVMolBase& mol, std::unique_ptr<RDKit::RWMol> rdkit);

/// Whether two molecules have the same atoms and bonds in the same order, stereochemistry included.
bool HaveSameConnectionTable(const QVMolBase& a, const QVMolBase& b);

/// Lets `mol` share the connection table of `other`; coordinates and data stay.
void ShareConnectionTable(QVMolBase& mol, const QVMolBase& other);

/// The text of the exception in flight, for a message: call inside a catch block.
std::string GetTextOfCurrentException();

}  // namespace QVChem::Internal

#endif  // QV_PLATFORM_CHEM_INTERNAL_RDKIT_MOL_H
