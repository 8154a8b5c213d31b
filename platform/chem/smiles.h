/// \file
/// \brief Molecules from and to SMILES.
#ifndef QV_PLATFORM_CHEM_SMILES_H
#define QV_PLATFORM_CHEM_SMILES_H

#include <string>
#include <string_view>

#include "platform/chem/export.h"
#include "platform/chem/mol.h"

namespace QVChem {

/// How the connection table of a molecule is read.
struct QVMolParseOptions {
  /// Drops hydrogen atoms that are only drawn out, as QVSuppressHydrogens does. Values that depend
  /// on the chemistry alone (GetNumHydrogens, weight, aromaticity) are the same either way.
  bool suppressHydrogens = false;
};

/// Reads one SMILES without a title. Aromaticity, rings and stereochemistry are perceived; what was
/// attached to `mol` is dropped.
/// \return false when the text is no SMILES or a valence is impossible; `mol` is then empty and
/// `error` says what is wrong, in one line without the SMILES itself.
QVCHEM_EXPORT bool QVParseSmiles(QVMolBase& mol, std::string_view smiles, std::string& error,
                                 const QVMolParseOptions& options = {});

/// The same; the error text is dropped.
QVCHEM_EXPORT bool QVParseSmiles(QVMolBase& mol, std::string_view smiles);

struct QVSmilesOptions {
  bool canonical = true;  ///< independent of the order of the atoms
  bool stereo = true;     ///< with isotopes, tetrahedral and double-bond stereochemistry
};

/// \return the SMILES of a molecule, empty for an empty molecule.
QVCHEM_EXPORT std::string QVCreateSmiles(const QVMolBase& mol, const QVSmilesOptions& options = {});

}  // namespace QVChem

#endif  // QV_PLATFORM_CHEM_SMILES_H
