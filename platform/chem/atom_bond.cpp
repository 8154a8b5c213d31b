#include "platform/chem/atom_bond.h"

#include <GraphMol/Atom.h>
#include <GraphMol/Bond.h>
#include <GraphMol/PeriodicTable.h>
#include <GraphMol/RingInfo.h>
#include <RDGeneral/types.h>

#include <algorithm>
#include <cctype>
#include <string>
#include <vector>

#include "platform/chem/internal/mol_access.h"
#include "platform/chem/internal/rdkit_mol.h"

namespace QVChem {

namespace {

using Internal::Chemistry;
using Internal::MolAccess;

const Chemistry& ChemistryOf(const QVMolBase* mol) { return *MolAccess::GetChemistry(*mol); }

const RDKit::Atom& AtomOf(const QVMolBase* mol, unsigned int index) {
  return *ChemistryOf(mol).mol->getAtomWithIdx(index);
}

const RDKit::Bond& BondOf(const QVMolBase* mol, unsigned int index) {
  return *ChemistryOf(mol).mol->getBondWithIdx(index);
}

}  // namespace

// ---- atoms

unsigned int QVAtomBase::GetElement() const {
  return static_cast<unsigned int>(AtomOf(parent_, index_).getAtomicNum());
}

const char* QVAtomBase::GetSymbol() const {
  // The periodic table gives its symbols by value; kept here they live as long as the process.
  constexpr unsigned int kLastElement = 118;
  static const std::vector<std::string> symbols = [] {
    std::vector<std::string> all;
    for (unsigned int element = 0; element <= kLastElement; ++element)
      all.push_back(RDKit::PeriodicTable::getTable()->getElementSymbol(element));
    return all;
  }();
  return symbols[std::min(GetElement(), kLastElement)].c_str();
}

int QVAtomBase::GetFormalCharge() const { return AtomOf(parent_, index_).getFormalCharge(); }

unsigned int QVAtomBase::GetIsotope() const { return AtomOf(parent_, index_).getIsotope(); }

unsigned int QVAtomBase::GetNumRadicalElectrons() const {
  return AtomOf(parent_, index_).getNumRadicalElectrons();
}

unsigned int QVAtomBase::GetNumHydrogens() const {
  return AtomOf(parent_, index_).getTotalNumHs(true);
}

unsigned int QVAtomBase::GetNumImplicitHydrogens() const {
  return AtomOf(parent_, index_).getTotalNumHs(false);
}

unsigned int QVAtomBase::GetDegree() const { return GetNeighbors().size(); }

unsigned int QVAtomBase::GetHeavyDegree() const {
  unsigned int count = 0;
  for (const QVAtomBase& neighbor : GetNeighbors()) count += neighbor.IsHydrogen() ? 0 : 1;
  return count;
}

unsigned int QVAtomBase::GetValence() const {
  return static_cast<unsigned int>(AtomOf(parent_, index_).getTotalValence());
}

bool QVAtomBase::IsAromatic() const { return AtomOf(parent_, index_).getIsAromatic(); }

bool QVAtomBase::IsInRing() const { return GetNumRings() > 0; }

bool QVAtomBase::IsInRingOfSize(unsigned int size) const {
  return ChemistryOf(parent_).mol->getRingInfo()->isAtomInRingOfSize(index_, size);
}

unsigned int QVAtomBase::GetNumRings() const {
  return ChemistryOf(parent_).mol->getRingInfo()->numAtomRings(index_);
}

QVHybridization QVAtomBase::GetHybridization() const {
  switch (AtomOf(parent_, index_).getHybridization()) {
    case RDKit::Atom::S:
      return QVHybridization::S;
    case RDKit::Atom::SP:
      return QVHybridization::SP;
    case RDKit::Atom::SP2:
      return QVHybridization::SP2;
    case RDKit::Atom::SP3:
      return QVHybridization::SP3;
    case RDKit::Atom::SP2D:
      return QVHybridization::SP2D;
    case RDKit::Atom::SP3D:
      return QVHybridization::SP3D;
    case RDKit::Atom::SP3D2:
      return QVHybridization::SP3D2;
    default:
      return QVHybridization::Unknown;
  }
}

QVTetrahedralStereo QVAtomBase::GetStereo() const {
  switch (AtomOf(parent_, index_).getChiralTag()) {
    case RDKit::Atom::CHI_TETRAHEDRAL_CW:
      return QVTetrahedralStereo::Clockwise;
    case RDKit::Atom::CHI_TETRAHEDRAL_CCW:
      return QVTetrahedralStereo::CounterClockwise;
    default:
      return QVTetrahedralStereo::None;
  }
}

char QVAtomBase::GetCIP() const {
  std::string code;
  AtomOf(parent_, index_).getPropIfPresent(RDKit::common_properties::_CIPCode, code);
  return code == "R" || code == "S" ? code[0] : '\0';
}

QVAtomRange QVAtomBase::GetNeighbors() const {
  const Chemistry& chemistry = ChemistryOf(parent_);
  const unsigned int first = chemistry.firstNeighbor[index_];
  return {parent_, chemistry.neighborAtoms.data() + first,
          chemistry.firstNeighbor[index_ + std::size_t{1}] - first};
}

QVBondRange QVAtomBase::GetBonds() const {
  const Chemistry& chemistry = ChemistryOf(parent_);
  const unsigned int first = chemistry.firstNeighbor[index_];
  return {parent_, chemistry.neighborBonds.data() + first,
          chemistry.firstNeighbor[index_ + std::size_t{1}] - first};
}

QVPoint3 QVAtomBase::GetCoordinates() const {
  return parent_->HasCoordinates() ? parent_->GetCoordinates()[index_] : QVPoint3();
}

double QVAtomBase::GetRadius() const {
  return parent_->GetRadii().empty() ? 0.0 : parent_->GetRadii()[index_];
}

const QVSystem::QVDataHolder& QVAtomBase::GetDataHolder() const {
  static const QVSystem::QVDataHolder none;
  const auto& data = MolAccess::GetAtomData(*parent_);
  return index_ < data.size() ? data[index_] : none;
}

// ---- bonds

QVAtomBase QVBondBase::GetBegin() const {
  return {parent_, BondOf(parent_, index_).getBeginAtomIdx()};
}

QVAtomBase QVBondBase::GetEnd() const { return {parent_, BondOf(parent_, index_).getEndAtomIdx()}; }

QVAtomBase QVBondBase::GetOther(const QVAtomBase& atom) const {
  return atom == GetBegin() ? GetEnd() : GetBegin();
}

QVBondOrder QVBondBase::GetOrder() const {
  switch (BondOf(parent_, index_).getBondType()) {
    case RDKit::Bond::SINGLE:
      return QVBondOrder::Single;
    case RDKit::Bond::DOUBLE:
      return QVBondOrder::Double;
    case RDKit::Bond::TRIPLE:
      return QVBondOrder::Triple;
    case RDKit::Bond::QUADRUPLE:
      return QVBondOrder::Quadruple;
    case RDKit::Bond::AROMATIC:
      return QVBondOrder::Aromatic;
    case RDKit::Bond::DATIVE:
    case RDKit::Bond::DATIVEL:
    case RDKit::Bond::DATIVER:
    case RDKit::Bond::DATIVEONE:
      return QVBondOrder::Dative;
    default:
      return QVBondOrder::Zero;
  }
}

bool QVBondBase::IsAromatic() const { return BondOf(parent_, index_).getIsAromatic(); }

bool QVBondBase::IsInRing() const {
  return ChemistryOf(parent_).mol->getRingInfo()->numBondRings(index_) > 0;
}

bool QVBondBase::IsConjugated() const { return BondOf(parent_, index_).getIsConjugated(); }

QVDoubleBondStereo QVBondBase::GetStereo() const {
  switch (BondOf(parent_, index_).getStereo()) {
    case RDKit::Bond::STEREOZ:
    case RDKit::Bond::STEREOCIS:
      return QVDoubleBondStereo::Cis;
    case RDKit::Bond::STEREOE:
    case RDKit::Bond::STEREOTRANS:
      return QVDoubleBondStereo::Trans;
    default:
      return QVDoubleBondStereo::None;
  }
}

bool QVBondBase::GetStereoAtoms(QVAtomBase& atBegin, QVAtomBase& atEnd) const {
  const std::vector<int>& atoms = BondOf(parent_, index_).getStereoAtoms();
  if (GetStereo() == QVDoubleBondStereo::None || atoms.size() != 2) return false;
  atBegin = QVAtomBase(parent_, static_cast<unsigned int>(atoms[0]));
  atEnd = QVAtomBase(parent_, static_cast<unsigned int>(atoms[1]));
  return true;
}

char QVBondBase::GetCIP() const {
  switch (BondOf(parent_, index_).getStereo()) {
    case RDKit::Bond::STEREOZ:
      return 'Z';
    case RDKit::Bond::STEREOE:
      return 'E';
    default:
      return '\0';
  }
}

}  // namespace QVChem
