/// \file
/// \brief Lists of property functions over any element type, and what the lists of molecules share.
#ifndef QVSTATS_API_PRIVATE_PROPERTY_IMPL_H
#define QVSTATS_API_PRIVATE_PROPERTY_IMPL_H

#include <algorithm>
#include <cstddef>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "platform/chem/mol_properties.h"
#include "platform/system/copy_ptr.h"
#include "platform/system/error_handler.h"
#include "stats/api/property_list.h"

namespace QVStats {

/// What a property that cannot be read returns after the fatal report.
constexpr double QVNoPropertyValue = std::numeric_limits<double>::max();

/// An ordered list of copies of property functions.
template <class T>
class QVPropertyListPushFxn : public QVPropertyListFxn<T> {
 public:
  void Push(const QVPropertyFxn<T>& fxn) { fxns_.emplace_back(fxn.CreateCopy()); }
  void Clear() { fxns_.clear(); }

  bool HasProperties(const T& element) const override {
    return std::all_of(fxns_.begin(), fxns_.end(),
                       [&](const auto& fxn) { return fxn->Has(element); });
  }
  std::size_t GetSize() const override { return fxns_.size(); }
  /// An index past the end is a fatal assertion.
  double GetProperty(const T& element, std::size_t k) const override {
    return QV_ASSERT(k < fxns_.size()) ? fxns_[k]->Get(element) : QVNoPropertyValue;
  }
  QVPropertyListPushFxn* CreateCopy() const override { return new QVPropertyListPushFxn(*this); }

 private:
  std::vector<QVSystem::QVCopyPtr<QVPropertyFxn<T>>> fxns_;
};

/// A list of properties of molecules that can store the values on the molecule, as generic data (a
/// list of doubles) under its cache tag. T is QVChem::QVMolBase or QVChem::QVMCMolBase.
template <class T>
class QVMolPropertyListImpl : public QVPropertyListPushFxn<T> {
 public:
  explicit QVMolPropertyListImpl(std::string cacheTag) : cacheTag_(std::move(cacheTag)) {}

  /// Stores the values on the molecule.
  /// \return false, and nothing is stored, when it lacks one of them.
  bool PrepMol(T& mol) const {
    if (this->GetSize() == 0) return true;
    if (!this->HasProperties(mol)) return false;
    std::vector<double> values;
    for (std::size_t k = 0; k < this->GetSize(); ++k)
      values.push_back(QVPropertyListPushFxn<T>::GetProperty(mol, k));
    mol.SetData(cacheTag_, std::move(values));
    return true;
  }

  /// Stored values of a list of another length are ignored.
  double GetProperty(const T& mol, std::size_t k) const override {
    const auto* const values = mol.template FindData<std::vector<double>>(cacheTag_);
    if (values && values->size() == this->GetSize() && k < values->size()) return (*values)[k];
    return QVPropertyListPushFxn<T>::GetProperty(mol, k);
  }

  QVMolPropertyListImpl* CreateCopy() const override { return new QVMolPropertyListImpl(*this); }

 private:
  std::string cacheTag_;
};

using QVSCMolPropertyListImpl = QVMolPropertyListImpl<QVChem::QVMolBase>;
using QVMCMolPropertyListImpl = QVMolPropertyListImpl<QVChem::QVMCMolBase>;

/// A property function that owns the one it forwards to.
template <class T>
class QVPropertyFxnHandle : public QVPropertyFxn<T> {
 public:
  bool Has(const T& element) const override { return impl_->Has(element); }
  double Get(const T& element) const override { return impl_->Get(element); }

 protected:
  /// Takes ownership.
  explicit QVPropertyFxnHandle(QVPropertyFxn<T>* impl) : impl_(impl) {}

 private:
  QVSystem::QVCopyPtr<QVPropertyFxn<T>> impl_;
};

/// A property function of molecules as one of a list.
template <class T>
class QVMolPropertyFxnAdapter : public QVPropertyFxn<T> {
 public:
  explicit QVMolPropertyFxnAdapter(const QVChem::QVMolPropertyFxn& fxn) : fxn_(fxn.CreateCopy()) {}
  bool Has(const T& mol) const override { return fxn_->Has(mol); }
  double Get(const T& mol) const override { return fxn_->Get(mol); }
  QVMolPropertyFxnAdapter* CreateCopy() const override {
    return new QVMolPropertyFxnAdapter(*this);
  }

 private:
  QVSystem::QVCopyPtr<QVChem::QVMolPropertyFxn> fxn_;
};

}  // namespace QVStats

#endif  // QVSTATS_API_PRIVATE_PROPERTY_IMPL_H
