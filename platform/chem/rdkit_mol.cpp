#include "platform/chem/internal/rdkit_mol.h"

#include <GraphMol/MolOps.h>
#include <GraphMol/RingInfo.h>
#include <RDGeneral/Invariant.h>

#include <exception>
#include <typeinfo>
#include <utility>

#include "platform/chem/internal/mol_access.h"

namespace QVChem::Internal {

namespace {

void CopyNeighbors(Chemistry& chemistry) {
  const RDKit::ROMol& mol = *chemistry.mol;
  chemistry.firstNeighbor.reserve(mol.getNumAtoms() + 1);
  chemistry.neighborAtoms.reserve(2 * std::size_t{mol.getNumBonds()});
  chemistry.neighborBonds.reserve(2 * std::size_t{mol.getNumBonds()});
  for (const RDKit::Atom* const atom : mol.atoms()) {
    if (atom->getAtomicNum() != 1) ++chemistry.numHeavyAtoms;
    chemistry.firstNeighbor.push_back(static_cast<unsigned int>(chemistry.neighborAtoms.size()));
    for (const RDKit::Bond* const bond : mol.atomBonds(atom)) {
      chemistry.neighborAtoms.push_back(bond->getOtherAtomIdx(atom->getIdx()));
      chemistry.neighborBonds.push_back(bond->getIdx());
    }
  }
  chemistry.firstNeighbor.push_back(static_cast<unsigned int>(chemistry.neighborAtoms.size()));
}

bool SameAtom(const RDKit::Atom& a, const RDKit::Atom& b) {
  return a.getAtomicNum() == b.getAtomicNum() && a.getFormalCharge() == b.getFormalCharge() &&
         a.getIsotope() == b.getIsotope() && a.getTotalNumHs() == b.getTotalNumHs() &&
         a.getChiralTag() == b.getChiralTag();
}

bool SameBond(const RDKit::Bond& a, const RDKit::Bond& b) {
  return a.getBeginAtomIdx() == b.getBeginAtomIdx() && a.getEndAtomIdx() == b.getEndAtomIdx() &&
         a.getBondType() == b.getBondType() && a.getStereo() == b.getStereo() &&
         a.getStereoAtoms() == b.getStereoAtoms();
}

/// A message has one line and no bytes that a terminal would act upon; an exception text may.
std::string OneLine(std::string text) {
  while (!text.empty() && (text.back() == '\n' || text.back() == ' ')) text.pop_back();
  for (char& c : text)
    if (c == '\n')
      c = ' ';
    else if (c < ' ' || c > '~')
      c = '?';
  return text;
}

}  // namespace

Chemistry::Chemistry(std::unique_ptr<const RDKit::ROMol> molecule) : mol(std::move(molecule)) {
  CopyNeighbors(*this);
}

const Chemistry& GetChemistry(const QVMolBase& mol) {
  static const Chemistry empty(std::make_unique<const RDKit::ROMol>());
  const auto& chemistry = MolAccess::GetChemistry(mol);
  return chemistry ? *chemistry : empty;
}

const RDKit::ROMol& GetRDKitMol(const QVMolBase& mol) { return *GetChemistry(mol).mol; }

std::unique_ptr<RDKit::RWMol> CopyToRDKit(const QVMolBase& mol) {
  auto copy = std::make_unique<RDKit::RWMol>(GetRDKitMol(mol));
  if (mol.HasCoordinates()) {
    auto conformer = std::make_unique<RDKit::Conformer>(copy->getNumAtoms());
    unsigned int atom = 0;
    for (const QVPoint3& point : mol.GetCoordinates())
      conformer->setAtomPos(atom++, RDGeom::Point3D(point.x, point.y, point.z));
    conformer->set3D(mol.Is3D());
    copy->addConformer(conformer.release(), true);
  }
  if (!mol.GetTitle().empty()) copy->setProp(RDKit::common_properties::_Name, mol.GetTitle());
  return copy;
}

void SetFromRDKit(QVMolBase& mol, std::unique_ptr<RDKit::RWMol> rdkit) {
  std::vector<QVPoint3> coordinates;
  if (rdkit->getNumConformers() > 0)
    for (const RDGeom::Point3D& point : rdkit->getConformer().getPositions())
      coordinates.push_back({point.x, point.y, point.z});
  rdkit->clearConformers();
  rdkit->clearProp(RDKit::common_properties::_Name);
  if (!rdkit->getRingInfo()->isInitialized()) RDKit::MolOps::findSSSR(*rdkit);
  rdkit->updatePropertyCache(false);
  MolAccess::SetChemistry(mol, std::make_shared<const Chemistry>(std::move(rdkit)));
  if (!coordinates.empty()) mol.SetCoordinates(std::move(coordinates));
}

bool HaveSameConnectionTable(const QVMolBase& a, const QVMolBase& b) {
  const RDKit::ROMol& first = GetRDKitMol(a);
  const RDKit::ROMol& second = GetRDKitMol(b);
  if (&first == &second) return true;
  if (first.getNumAtoms() != second.getNumAtoms() || first.getNumBonds() != second.getNumBonds())
    return false;
  for (unsigned int i = 0; i < first.getNumAtoms(); ++i)
    if (!SameAtom(*first.getAtomWithIdx(i), *second.getAtomWithIdx(i))) return false;
  for (unsigned int i = 0; i < first.getNumBonds(); ++i)
    if (!SameBond(*first.getBondWithIdx(i), *second.getBondWithIdx(i))) return false;
  return true;
}

void ShareConnectionTable(QVMolBase& mol, const QVMolBase& other) {
  MolAccess::ShareChemistry(mol, MolAccess::GetChemistry(other));
}

std::string GetTextOfCurrentException() {
  try {
    throw;
  } catch (const Invar::Invariant& failure) {
    // A check inside the library failed: its text is an expression of the library's own.
    return "the connection table contradicts itself (" + OneLine(failure.what()) + ")";
  } catch (const std::bad_cast&) {
    return "a number cannot be read";
  } catch (const std::exception& failure) {
    return OneLine(failure.what());
  } catch (...) {
    return "unknown error";
  }
}

}  // namespace QVChem::Internal
