/// \file
/// \brief Functions of a whole molecule: weight, hydrogens, radii.
#ifndef QV_PLATFORM_CHEM_MOL_FUNCTIONS_H
#define QV_PLATFORM_CHEM_MOL_FUNCTIONS_H

#include "platform/chem/export.h"
#include "platform/chem/mol.h"

namespace QVChem {

/// The molecular weight in g/mol, hydrogens included.
/// \param isotopes whether an isotope that is given counts with its own mass; if not, every element
/// counts with its average mass.
QVCHEM_EXPORT double QVCalculateMolecularWeight(const QVMolBase& mol, bool isotopes = false);

/// Drops the hydrogen atoms that are only drawn out: neutral, and bonded by a single bond to one
/// other atom that is not hydrogen. The other atoms keep their order, coordinates, radii and data;
/// of a multi-conformer molecule all conformers change.
///
/// \param keepPolar keeps hydrogens on atoms other than carbon.
/// \param keepStereo keeps hydrogens on tetrahedral stereocentres. (One that defines a double
/// bond's stereochemistry is always kept.) \param keepIsotopes keeps hydrogens with an isotope; if
/// false, deuterium and tritium go too. \return false, and nothing changes, when the molecule would
/// be impossible without them.
QVCHEM_EXPORT bool QVSuppressHydrogens(QVMolBase& mol, bool keepPolar = false,
                                       bool keepStereo = false, bool keepIsotopes = true);

/// Gives each atom its van der Waals radius after Bondi, in ångström; elements without one get 2.
/// Source: A. Bondi, "van der Waals Volumes and Radii", J. Phys. Chem. 68(3), 441-451, 1964.
QVCHEM_EXPORT void QVAssignBondiVdWRadii(QVMolBase& mol);

}  // namespace QVChem

#endif  // QV_PLATFORM_CHEM_MOL_FUNCTIONS_H
