#include "stats/api/mol_properties.h"

#include <cmath>
#include <utility>

#include "platform/chem/mol_functions.h"
#include "platform/system/text.h"

namespace QVStats {

using QVChem::QVMCMolBase;
using QVChem::QVMolBase;

namespace {

constexpr const char* kDefaultCacheTag = "QVMolPropertyListFxn_PrepMol_Cache";

// ---- where a molecule keeps a number

class QVSCMolGetSDDataImpl : public QVPropertyFxn<QVMolBase> {
 public:
  explicit QVSCMolGetSDDataImpl(std::string tag) : tag_(std::move(tag)) {}

  bool Has(const QVMolBase& mol) const override {
    double value = 0.0;
    return Read(mol, value);
  }
  double Get(const QVMolBase& mol) const override {
    double value = 0.0;
    return QV_ASSERT(Read(mol, value)) ? value : QVNoPropertyValue;
  }
  QVSCMolGetSDDataImpl* CreateCopy() const override { return new QVSCMolGetSDDataImpl(*this); }

 private:
  bool Read(const QVMolBase& mol, double& value) const {
    return mol.HasSDData(tag_) && QVSystem::QVStringToNumber(mol.GetSDData(tag_), value) &&
           std::isfinite(value);
  }

  std::string tag_;
};

class QVSCMolGetGenericDataImpl : public QVPropertyFxn<QVMolBase> {
 public:
  QVSCMolGetGenericDataImpl(std::string tag, bool convert)
      : tag_(std::move(tag)), convert_(convert) {}

  bool Has(const QVMolBase& mol) const override {
    return mol.HasData<double>(tag_) || (convert_ && mol.HasData<float>(tag_));
  }
  double Get(const QVMolBase& mol) const override {
    if (const double* const value = mol.FindData<double>(tag_)) return *value;
    const float* const value = convert_ ? mol.FindData<float>(tag_) : nullptr;
    return QV_ASSERT(value != nullptr) ? static_cast<double>(*value) : QVNoPropertyValue;
  }
  QVSCMolGetGenericDataImpl* CreateCopy() const override {
    return new QVSCMolGetGenericDataImpl(*this);
  }

 private:
  std::string tag_;
  bool convert_;
};

class QVSCMolGetTaggedImpl : public QVPropertyFxn<QVMolBase> {
 public:
  explicit QVSCMolGetTaggedImpl(const std::string& tag) : generic_(tag, true), sd_(tag) {}

  bool Has(const QVMolBase& mol) const override { return sd_.Has(mol) || generic_.Has(mol); }
  double Get(const QVMolBase& mol) const override {
    return sd_.Has(mol) ? sd_.Get(mol) : generic_.Get(mol);
  }
  QVSCMolGetTaggedImpl* CreateCopy() const override { return new QVSCMolGetTaggedImpl(*this); }

 private:
  QVSCMolGetGenericDataImpl generic_;
  QVSCMolGetSDDataImpl sd_;
};

/// Reads a multi-conformer molecule with a function of single ones.
class QVGetMCMolWrapperFxnImpl : public QVPropertyFxn<QVMCMolBase> {
 public:
  /// Takes ownership.
  QVGetMCMolWrapperFxnImpl(QVPropertyFxn<QVMolBase>* fxn, bool checkActive, bool checkConfs)
      : fxn_(fxn), checkActive_(checkActive), checkConfs_(checkConfs) {}

  bool Has(const QVMCMolBase& mol) const override { return FindSource(mol) != nullptr; }
  double Get(const QVMCMolBase& mol) const override {
    const QVMolBase* const source = FindSource(mol);
    return QV_ASSERT(source != nullptr) ? fxn_->Get(*source) : QVNoPropertyValue;
  }
  QVGetMCMolWrapperFxnImpl* CreateCopy() const override {
    return new QVGetMCMolWrapperFxnImpl(*this);
  }

 private:
  const QVMolBase* FindSource(const QVMCMolBase& mol) const {
    if (fxn_->Has(mol)) return &mol;
    if (checkActive_ && fxn_->Has(mol.GetActiveConformer())) return &mol.GetActiveConformer();
    if (checkConfs_)
      for (unsigned int i = 0; i < mol.GetNumConformers(); ++i)
        if (fxn_->Has(mol.GetConformer(i))) return &mol.GetConformer(i);
    return nullptr;
  }

  QVSystem::QVCopyPtr<QVPropertyFxn<QVMolBase>> fxn_;
  bool checkActive_;
  bool checkConfs_;
};

/// The molecule as a multi-conformer one: itself, or a copy that holds it as its only conformer.
template <class Use>
auto AsMultiConformer(const QVMolBase& mol, Use use) {
  const auto* const many = dynamic_cast<const QVMCMolBase*>(&mol);
  return many ? use(*many) : use(QVChem::QVMCMol(mol));
}

// ---- logarithms

template <class Mol>
bool HasLog10(const QVChem::QVMolPropertyFxn& fxn, const Mol& mol) {
  return fxn.Has(mol) && fxn.Get(mol) > 0.0;
}

template <class Mol>
double GetLog10(const QVChem::QVMolPropertyFxn& fxn, const Mol& mol) {
  return QV_ASSERT(HasLog10(fxn, mol)) ? std::log10(fxn.Get(mol)) : QVNoPropertyValue;
}

}  // namespace

// ---- functions of a molecule

QVSCMolGetSDData::QVSCMolGetSDData(const std::string& tag)
    : QVPropertyFxnHandle(new QVSCMolGetSDDataImpl(tag)) {}
QVSCMolGetSDData* QVSCMolGetSDData::CreateCopy() const { return new QVSCMolGetSDData(*this); }

QVSCMolGetGenericData::QVSCMolGetGenericData(const std::string& tag, bool convert)
    : QVPropertyFxnHandle(new QVSCMolGetGenericDataImpl(tag, convert)) {}
QVSCMolGetGenericData* QVSCMolGetGenericData::CreateCopy() const {
  return new QVSCMolGetGenericData(*this);
}

QVSCMolGetTagged::QVSCMolGetTagged(const std::string& tag)
    : QVPropertyFxnHandle(new QVSCMolGetTaggedImpl(tag)) {}
QVSCMolGetTagged* QVSCMolGetTagged::CreateCopy() const { return new QVSCMolGetTagged(*this); }

// ---- functions of a multi-conformer molecule

QVMCMolGetSDData::QVMCMolGetSDData(const std::string& tag, bool checkActive, bool checkConfs)
    : QVPropertyFxnHandle(
          new QVGetMCMolWrapperFxnImpl(new QVSCMolGetSDDataImpl(tag), checkActive, checkConfs)) {}
QVMCMolGetSDData* QVMCMolGetSDData::CreateCopy() const { return new QVMCMolGetSDData(*this); }

QVMCMolGetGenericData::QVMCMolGetGenericData(const std::string& tag, bool checkActive,
                                             bool checkConfs)
    : QVPropertyFxnHandle(new QVGetMCMolWrapperFxnImpl(new QVSCMolGetGenericDataImpl(tag, true),
                                                       checkActive, checkConfs)) {}
QVMCMolGetGenericData* QVMCMolGetGenericData::CreateCopy() const {
  return new QVMCMolGetGenericData(*this);
}

QVMCMolGetTagged::QVMCMolGetTagged(const std::string& tag, bool checkActive, bool checkConfs)
    : QVPropertyFxnHandle(
          new QVGetMCMolWrapperFxnImpl(new QVSCMolGetTaggedImpl(tag), checkActive, checkConfs)) {}
QVMCMolGetTagged* QVMCMolGetTagged::CreateCopy() const { return new QVMCMolGetTagged(*this); }

// ---- computed properties

bool QVMolecularWeightPropertyFxn::Has(const QVMolBase& /*mol*/) const { return true; }
bool QVMolecularWeightPropertyFxn::Has(const QVMCMolBase& /*mol*/) const { return true; }
double QVMolecularWeightPropertyFxn::Get(const QVMolBase& mol) const {
  return QVChem::QVCalculateMolecularWeight(mol, false);
}
double QVMolecularWeightPropertyFxn::Get(const QVMCMolBase& mol) const {
  return QVChem::QVCalculateMolecularWeight(mol, false);
}
QVMolecularWeightPropertyFxn* QVMolecularWeightPropertyFxn::CreateCopy() const {
  return new QVMolecularWeightPropertyFxn(*this);
}

QVMolLog10PropertyFxn::QVMolLog10PropertyFxn(const QVChem::QVMolPropertyFxn& fxn)
    : fxn_(fxn.CreateCopy()) {}
bool QVMolLog10PropertyFxn::Has(const QVMolBase& mol) const { return HasLog10(*fxn_, mol); }
bool QVMolLog10PropertyFxn::Has(const QVMCMolBase& mol) const { return HasLog10(*fxn_, mol); }
double QVMolLog10PropertyFxn::Get(const QVMolBase& mol) const { return GetLog10(*fxn_, mol); }
double QVMolLog10PropertyFxn::Get(const QVMCMolBase& mol) const { return GetLog10(*fxn_, mol); }
QVMolLog10PropertyFxn* QVMolLog10PropertyFxn::CreateCopy() const {
  return new QVMolLog10PropertyFxn(*this);
}

// ---- lists of properties of a molecule

QVSCMolPropertyList::QVSCMolPropertyList() : QVSCMolPropertyList(kDefaultCacheTag) {}
QVSCMolPropertyList::QVSCMolPropertyList(const std::string& cacheTag) : impl_(cacheTag) {}

void QVSCMolPropertyList::PushTag(const std::string& tag) { impl_.Push(QVSCMolGetTagged(tag)); }
void QVSCMolPropertyList::Push(const QVPropertyFxn<QVMolBase>& fxn) { impl_.Push(fxn); }
void QVSCMolPropertyList::Push(const QVChem::QVMolPropertyFxn& fxn) {
  impl_.Push(QVMolPropertyFxnAdapter<QVMolBase>(fxn));
}
void QVSCMolPropertyList::Clear() { impl_.Clear(); }
bool QVSCMolPropertyList::PrepMol(QVMolBase& mol) const { return impl_.PrepMol(mol); }

bool QVSCMolPropertyList::HasProperties(const QVMolBase& mol) const {
  return impl_.HasProperties(mol);
}
bool QVSCMolPropertyList::HasProperties(const QVMCMolBase& mol) const {
  return impl_.HasProperties(mol);
}
std::size_t QVSCMolPropertyList::GetSize() const { return impl_.GetSize(); }
double QVSCMolPropertyList::GetProperty(const QVMolBase& mol, std::size_t k) const {
  return impl_.GetProperty(mol, k);
}
double QVSCMolPropertyList::GetProperty(const QVMCMolBase& mol, std::size_t k) const {
  return impl_.GetProperty(mol, k);
}
QVSCMolPropertyList* QVSCMolPropertyList::CreateCopy() const {
  return new QVSCMolPropertyList(*this);
}

// ---- lists of properties of a multi-conformer molecule

QVMCMolPropertyList::QVMCMolPropertyList() : QVMCMolPropertyList(kDefaultCacheTag) {}
QVMCMolPropertyList::QVMCMolPropertyList(const std::string& cacheTag) : impl_(cacheTag) {}

void QVMCMolPropertyList::PushTag(const std::string& tag, bool checkActive, bool checkConfs) {
  impl_.Push(QVMCMolGetTagged(tag, checkActive, checkConfs));
}
void QVMCMolPropertyList::Push(const QVPropertyFxn<QVMCMolBase>& fxn) { impl_.Push(fxn); }
void QVMCMolPropertyList::Push(const QVChem::QVMolPropertyFxn& fxn) {
  impl_.Push(QVMolPropertyFxnAdapter<QVMCMolBase>(fxn));
}
void QVMCMolPropertyList::Clear() { impl_.Clear(); }
bool QVMCMolPropertyList::PrepMol(QVMCMolBase& mol) const { return impl_.PrepMol(mol); }

bool QVMCMolPropertyList::HasProperties(const QVMCMolBase& mol) const {
  return impl_.HasProperties(mol);
}
bool QVMCMolPropertyList::HasProperties(const QVMolBase& mol) const {
  return AsMultiConformer(mol, [&](const QVMCMolBase& many) { return HasProperties(many); });
}
std::size_t QVMCMolPropertyList::GetSize() const { return impl_.GetSize(); }
double QVMCMolPropertyList::GetProperty(const QVMCMolBase& mol, std::size_t k) const {
  return impl_.GetProperty(mol, k);
}
double QVMCMolPropertyList::GetProperty(const QVMolBase& mol, std::size_t k) const {
  return AsMultiConformer(mol, [&](const QVMCMolBase& many) { return GetProperty(many, k); });
}
QVMCMolPropertyList* QVMCMolPropertyList::CreateCopy() const {
  return new QVMCMolPropertyList(*this);
}

}  // namespace QVStats
