#include "platform/chem/mol_functions.h"

#include <GraphMol/MolOps.h>
#include <GraphMol/PeriodicTable.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <utility>
#include <vector>

#include "platform/chem/internal/mol_access.h"
#include "platform/chem/internal/rdkit_mol.h"

namespace QVChem {

namespace {

struct ElementRadius {
  unsigned int element;
  double radius;  // ångström
};

// Table I of the paper and its list of metals, by element.
constexpr ElementRadius kBondiRadii[] = {
    {1, 1.20},  {2, 1.40},  {3, 1.82},  {6, 1.70},  {7, 1.55},  {8, 1.52},  {9, 1.47},  {10, 1.54},
    {11, 2.27}, {12, 1.73}, {14, 2.10}, {15, 1.80}, {16, 1.80}, {17, 1.75}, {18, 1.88}, {19, 2.75},
    {28, 1.63}, {29, 1.40}, {30, 1.39}, {31, 1.87}, {33, 1.85}, {34, 1.90}, {35, 1.85}, {36, 2.02},
    {46, 1.63}, {47, 1.72}, {48, 1.58}, {49, 1.93}, {50, 2.17}, {52, 2.06}, {53, 1.98}, {54, 2.16},
    {78, 1.75}, {79, 1.66}, {80, 1.55}, {81, 1.96}, {82, 2.02}, {92, 1.86}};
constexpr double kUnknownRadius = 2.0;

double GetBondiRadius(unsigned int element) {
  const auto* const row = std::lower_bound(
      std::begin(kBondiRadii), std::end(kBondiRadii), element,
      [](const ElementRadius& entry, unsigned int key) { return entry.element < key; });
  return row != std::end(kBondiRadii) && row->element == element ? row->radius : kUnknownRadius;
}

constexpr const char* kIndexTag = "_qvIndex";
constexpr int kKeepMark = 999;

/// Marks by an atom map number, which the removal respects, the hydrogens that are to stay.
void MarkHydrogensToKeep(RDKit::RWMol& mol, bool keepPolar, bool keepStereo) {
  for (RDKit::Atom* const atom : mol.atoms()) {
    atom->setProp(kIndexTag, atom->getIdx());
    if (atom->getAtomicNum() != 1 || atom->getAtomMapNum() != 0) continue;
    for (const RDKit::Atom* const neighbor : mol.atomNeighbors(atom)) {
      const bool polar = neighbor->getAtomicNum() != 6;
      const bool stereo = neighbor->getChiralTag() != RDKit::Atom::CHI_UNSPECIFIED;
      if ((keepPolar && polar) || (keepStereo && stereo)) atom->setAtomMapNum(kKeepMark);
    }
  }
}

/// Clears the marks. \return for each atom its index before the removal.
std::vector<unsigned int> TakeKeptAtoms(RDKit::RWMol& mol) {
  std::vector<unsigned int> kept;
  for (RDKit::Atom* const atom : mol.atoms()) {
    kept.push_back(atom->getProp<unsigned int>(kIndexTag));
    atom->clearProp(kIndexTag);
    if (atom->getAtomMapNum() == kKeepMark) atom->setAtomMapNum(0);
  }
  return kept;
}

}  // namespace

double QVCalculateMolecularWeight(const QVMolBase& mol, bool isotopes) {
  const RDKit::PeriodicTable& table = *RDKit::PeriodicTable::getTable();
  double weight = 0.0;
  for (const RDKit::Atom* const atom : Internal::GetRDKitMol(mol).atoms()) {
    const auto element = static_cast<unsigned int>(atom->getAtomicNum());
    weight +=
        isotopes && atom->getIsotope() != 0 ? atom->getMass() : table.getAtomicWeight(element);
    weight += atom->getTotalNumHs() * table.getAtomicWeight(1u);
  }
  return weight;
}

bool QVSuppressHydrogens(QVMolBase& mol, bool keepPolar, bool keepStereo, bool keepIsotopes) {
  if (mol.GetNumAtoms() == mol.GetNumHeavyAtoms()) return true;
  try {
    auto rdkit = std::make_unique<RDKit::RWMol>(Internal::GetRDKitMol(mol));
    MarkHydrogensToKeep(*rdkit, keepPolar, keepStereo);
    RDKit::MolOps::RemoveHsParameters parameters;
    parameters.removeMapped = false;
    parameters.removeIsotopes = !keepIsotopes;
    parameters.showWarnings = false;
    RDKit::MolOps::removeHs(*rdkit, parameters);
    const std::vector<unsigned int> kept = TakeKeptAtoms(*rdkit);
    const auto chemistry = std::make_shared<const Internal::Chemistry>(std::move(rdkit));
    Internal::MolAccess::SetChemistryOfKeptAtoms(mol, chemistry, kept);
    if (auto* const many = dynamic_cast<QVMCMolBase*>(&mol))
      for (unsigned int i = 0; i < many->GetNumConformers(); ++i)
        Internal::MolAccess::SetChemistryOfKeptAtoms(many->GetConformer(i), chemistry, kept);
  } catch (...) {
    return false;
  }
  return true;
}

void QVAssignBondiVdWRadii(QVMolBase& mol) {
  std::vector<double> radii;
  radii.reserve(mol.GetNumAtoms());
  for (const QVAtomBase& atom : mol.GetAtoms()) radii.push_back(GetBondiRadius(atom.GetElement()));
  mol.SetRadii(std::move(radii));
}

}  // namespace QVChem
