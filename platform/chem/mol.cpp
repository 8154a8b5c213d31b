#include "platform/chem/mol.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/chem/internal/mol_access.h"
#include "platform/chem/internal/rdkit_mol.h"
#include "platform/system/error_handler.h"

namespace QVChem {

namespace {

template <class T>
const std::vector<T>& ValuesOrNone(const std::shared_ptr<const std::vector<T>>& values) {
  static const std::vector<T> none;
  return values ? *values : none;
}

/// The list of the entries at `kept`; no list stays no list.
template <class T>
std::shared_ptr<const std::vector<T>> Keep(const std::shared_ptr<const std::vector<T>>& values,
                                           const std::vector<unsigned int>& kept) {
  if (!values) return nullptr;
  std::vector<T> result;
  result.reserve(kept.size());
  for (const unsigned int index : kept) result.push_back((*values)[index]);
  return std::make_shared<const std::vector<T>>(std::move(result));
}

bool IsFinite(const QVPoint3& point) {
  return std::isfinite(point.x) && std::isfinite(point.y) && std::isfinite(point.z);
}

template <class Pairs>
auto FindPair(Pairs& pairs, std::string_view tag) {
  return std::find_if(pairs.begin(), pairs.end(),
                      [&](const QVSDDataPair& pair) { return pair.tag == tag; });
}

}  // namespace

// ---- what all molecules have

QVMolBase::QVMolBase() = default;
QVMolBase::QVMolBase(const QVMolBase& other) = default;
QVMolBase::QVMolBase(QVMolBase&& other) noexcept = default;
QVMolBase& QVMolBase::operator=(const QVMolBase& other) = default;
QVMolBase& QVMolBase::operator=(QVMolBase&& other) noexcept = default;
QVMolBase::~QVMolBase() = default;

unsigned int QVMolBase::GetNumAtoms() const {
  return chemistry_ ? chemistry_->mol->getNumAtoms() : 0;
}
unsigned int QVMolBase::GetNumHeavyAtoms() const {
  return chemistry_ ? chemistry_->numHeavyAtoms : 0;
}
unsigned int QVMolBase::GetNumBonds() const {
  return chemistry_ ? chemistry_->mol->getNumBonds() : 0;
}

QVAtomBase QVMolBase::GetAtom(unsigned int index) const {
  return QV_ASSERT(index < GetNumAtoms()) ? QVAtomBase(this, index) : QVAtomBase();
}
QVBondBase QVMolBase::GetBond(unsigned int index) const {
  return QV_ASSERT(index < GetNumBonds()) ? QVBondBase(this, index) : QVBondBase();
}
QVAtomRange QVMolBase::GetAtoms() const { return {this, nullptr, GetNumAtoms()}; }
QVBondRange QVMolBase::GetBonds() const { return {this, nullptr, GetNumBonds()}; }

QVBondBase QVMolBase::GetBond(const QVAtomBase& a, const QVAtomBase& b) const {
  const QVAtomRange neighbors = QVAtomBase(this, a.GetIndex()).GetNeighbors();
  for (unsigned int i = 0; i < neighbors.size(); ++i)
    if (neighbors[i].GetIndex() == b.GetIndex())
      return QVAtomBase(this, a.GetIndex()).GetBonds()[i];
  return {};
}

bool QVMolBase::HasSDData(std::string_view tag) const {
  return FindPair(sdData_, tag) != sdData_.end();
}

const std::string& QVMolBase::GetSDData(std::string_view tag) const {
  static const std::string none;
  const auto pair = FindPair(sdData_, tag);
  return pair == sdData_.end() ? none : pair->value;
}

void QVMolBase::SetSDData(std::string_view tag, std::string value) {
  const auto pair = FindPair(sdData_, tag);
  if (pair == sdData_.end())
    sdData_.push_back({std::string(tag), std::move(value)});
  else
    pair->value = std::move(value);
}

bool QVMolBase::DeleteSDData(std::string_view tag) {
  const auto pair = FindPair(sdData_, tag);
  if (pair == sdData_.end()) return false;
  sdData_.erase(pair);
  return true;
}

QVSystem::QVDataHolder& QVMolBase::GetAtomData(const QVAtomBase& atom) {
  if (!QV_ASSERT(atom.GetIndex() < GetNumAtoms())) return *this;
  atomData_.resize(GetNumAtoms());
  return atomData_[atom.GetIndex()];
}

bool QVMolBase::Is3D() const {
  const auto& points = GetCoordinates();
  return std::any_of(points.begin(), points.end(),
                     [](const QVPoint3& point) { return point.z != 0.0; });
}

const std::vector<QVPoint3>& QVMolBase::GetCoordinates() const {
  return ValuesOrNone(coordinates_);
}

bool QVMolBase::SetCoordinates(std::vector<QVPoint3> coordinates) {
  if (coordinates.size() != GetNumAtoms() ||
      !std::all_of(coordinates.begin(), coordinates.end(), IsFinite))
    return false;
  coordinates_ = std::make_shared<const std::vector<QVPoint3>>(std::move(coordinates));
  return true;
}

const std::vector<double>& QVMolBase::GetRadii() const { return ValuesOrNone(radii_); }

bool QVMolBase::SetRadii(std::vector<double> radii) {
  if (radii.size() != GetNumAtoms()) return false;
  radii_ = std::make_shared<const std::vector<double>>(std::move(radii));
  return true;
}

void QVMolBase::Clear() {
  Internal::MolAccess::SetChemistry(*this, nullptr);
  title_.clear();
  sdData_.clear();
  ClearData();
}

void Internal::MolAccess::SetChemistry(QVMolBase& mol, std::shared_ptr<const Chemistry> chemistry) {
  mol.chemistry_ = std::move(chemistry);
  mol.coordinates_.reset();
  mol.radii_.reset();
  mol.atomData_.clear();
}

void Internal::MolAccess::SetChemistryOfKeptAtoms(QVMolBase& mol,
                                                  std::shared_ptr<const Chemistry> chemistry,
                                                  const std::vector<unsigned int>& kept) {
  mol.chemistry_ = std::move(chemistry);
  mol.coordinates_ = Keep(mol.coordinates_, kept);
  mol.radii_ = Keep(mol.radii_, kept);
  if (mol.atomData_.empty()) return;
  std::vector<QVSystem::QVDataHolder> data;
  for (const unsigned int index : kept) data.push_back(std::move(mol.atomData_[index]));
  mol.atomData_ = std::move(data);
}

// ---- one conformation

QVGraphMol::QVGraphMol() = default;
QVGraphMol::QVGraphMol(const QVGraphMol& other) = default;
QVGraphMol::QVGraphMol(QVGraphMol&& other) noexcept = default;
QVGraphMol::QVGraphMol(const QVMolBase& other) : QVMolBase(other) {}
QVGraphMol& QVGraphMol::operator=(const QVGraphMol& other) = default;
QVGraphMol& QVGraphMol::operator=(QVGraphMol&& other) noexcept = default;
QVGraphMol& QVGraphMol::operator=(const QVMolBase& other) {
  QVMolBase::operator=(other);
  return *this;
}
QVGraphMol::~QVGraphMol() = default;

QVGraphMol* QVGraphMol::CreateCopy() const { return new QVGraphMol(*this); }

// ---- many conformers

QVMCMolBase::QVMCMolBase() = default;
QVMCMolBase::QVMCMolBase(const QVMCMolBase& other) = default;
QVMCMolBase::QVMCMolBase(QVMCMolBase&& other) noexcept = default;
QVMCMolBase& QVMCMolBase::operator=(const QVMCMolBase& other) = default;
QVMCMolBase& QVMCMolBase::operator=(QVMCMolBase&& other) noexcept = default;
QVMCMolBase::~QVMCMolBase() = default;

unsigned int QVMCMolBase::GetNumConformers() const {
  return static_cast<unsigned int>(conformers_.size());
}

const QVMolBase& QVMCMolBase::GetConformer(unsigned int index) const {
  static const QVGraphMol none;
  if (!QV_ASSERT(index < conformers_.size())) return none;
  return conformers_[index];
}

QVMolBase& QVMCMolBase::GetConformer(unsigned int index) {
  if (!QV_ASSERT(index < conformers_.size())) return *this;
  return conformers_[index];
}

QVSystem::QVIter<const QVMolBase> QVMCMolBase::GetConformers() const {
  return QVSystem::QVMakeIter<const QVMolBase>(conformers_);
}

const QVMolBase& QVMCMolBase::GetActiveConformer() const {
  if (conformers_.empty()) return *this;
  return conformers_[active_];
}

bool QVMCMolBase::SetActiveConformer(unsigned int index) {
  if (index >= conformers_.size()) return false;
  active_ = index;
  if (conformers_[index].HasCoordinates())
    SetCoordinates(conformers_[index].GetCoordinates());
  else
    ClearCoordinates();
  return true;
}

bool QVMCMolBase::AddConformer(const QVMolBase& conformer) {
  if (IsEmpty() && conformers_.empty()) {
    Internal::MolAccess::SetChemistry(*this, Internal::MolAccess::GetChemistry(conformer));
    if (GetTitle().empty()) SetTitle(conformer.GetTitle());
  } else if (!Internal::HaveSameConnectionTable(*this, conformer)) {
    return false;
  }
  conformers_.emplace_back(conformer);
  Internal::ShareConnectionTable(conformers_.back(), *this);
  if (conformers_.size() == 1) SetActiveConformer(0);
  return true;
}

void QVMCMolBase::Clear() {
  QVMolBase::Clear();
  conformers_.clear();
  active_ = 0;
}

QVMCMol::QVMCMol() = default;
QVMCMol::QVMCMol(const QVMCMol& other) = default;
QVMCMol::QVMCMol(QVMCMol&& other) noexcept = default;
QVMCMol::QVMCMol(const QVMolBase& other) {
  if (const auto* const many = dynamic_cast<const QVMCMolBase*>(&other)) {
    QVMCMolBase::operator=(*many);
    return;
  }
  QVGraphMol conformer(other);
  conformer.ClearSDData();
  conformer.ClearData();
  QVMolBase::operator=(other);
  AddConformer(conformer);
}
QVMCMol& QVMCMol::operator=(const QVMCMol& other) = default;
QVMCMol& QVMCMol::operator=(QVMCMol&& other) noexcept = default;
QVMCMol::~QVMCMol() = default;

QVMCMol* QVMCMol::CreateCopy() const { return new QVMCMol(*this); }

}  // namespace QVChem
