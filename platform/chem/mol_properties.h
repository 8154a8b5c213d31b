/// \file
/// \brief Numbers computed from a molecule: one property, and an ordered list of properties.
#ifndef QV_PLATFORM_CHEM_MOL_PROPERTIES_H
#define QV_PLATFORM_CHEM_MOL_PROPERTIES_H

#include <cstddef>

#include "platform/chem/export.h"
#include "platform/chem/mol.h"

namespace QVChem {

/// One number of a molecule. Get may be called only when Has says true.
class QVCHEM_EXPORT QVMolPropertyFxn {
 public:
  virtual ~QVMolPropertyFxn();
  virtual bool Has(const QVMolBase& mol) const = 0;
  virtual bool Has(const QVMCMolBase& mol) const = 0;
  virtual double Get(const QVMolBase& mol) const = 0;
  virtual double Get(const QVMCMolBase& mol) const = 0;
  /// \return a new copy that the caller owns.
  virtual QVMolPropertyFxn* CreateCopy() const = 0;
};

/// A fixed number of properties in a fixed order. GetProperty(mol, k) may be called only when
/// HasProperties(mol) says true, for k < GetSize().
class QVCHEM_EXPORT QVMolPropertyList {
 public:
  virtual ~QVMolPropertyList();
  virtual bool HasProperties(const QVMolBase& mol) const = 0;
  virtual bool HasProperties(const QVMCMolBase& mol) const = 0;
  virtual std::size_t GetSize() const = 0;
  virtual double GetProperty(const QVMolBase& mol, std::size_t k) const = 0;
  virtual double GetProperty(const QVMCMolBase& mol, std::size_t k) const = 0;
  /// \return a new copy that the caller owns.
  virtual QVMolPropertyList* CreateCopy() const = 0;
};

}  // namespace QVChem

#endif  // QV_PLATFORM_CHEM_MOL_PROPERTIES_H
