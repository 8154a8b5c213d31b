/// \file
/// \brief Numbers read from molecules: from SD data, from generic data, or computed; and lists of
/// them, the drift properties of universal kriging.
///
/// A property may be read only from a molecule that has it: reading it from another one is a fatal
/// assertion and gives the largest finite double.
///
///     QVSCMolPropertyList drift;
///     drift.PushTag("logD");
///     drift.Push(QVMolLog10PropertyFxn(QVMolecularWeightPropertyFxn()));
#ifndef QVSTATS_API_MOL_PROPERTIES_H
#define QVSTATS_API_MOL_PROPERTIES_H

#include <cstddef>
#include <string>

#include "platform/chem/mol.h"
#include "platform/chem/mol_properties.h"
#include "platform/system/copy_ptr.h"
#include "stats/api/export.h"
#include "stats/api/private/property_impl.h"
#include "stats/api/property_list.h"

namespace QVStats {

/// \name Properties of a molecule
/// @{

/// The SD data under a tag as a number. A text that is not a finite number is no property.
class QVSTATS_EXPORT QVSCMolGetSDData : public QVPropertyFxnHandle<QVChem::QVMolBase> {
 public:
  explicit QVSCMolGetSDData(const std::string& tag);
  QVSCMolGetSDData* CreateCopy() const override;
};

/// The first double among the generic data under a tag. With `convert`, when there is none, the
/// first float.
class QVSTATS_EXPORT QVSCMolGetGenericData : public QVPropertyFxnHandle<QVChem::QVMolBase> {
 public:
  QVSCMolGetGenericData(const std::string& tag, bool convert);
  QVSCMolGetGenericData* CreateCopy() const override;
};

/// The SD data under a tag; when that is no number, the generic data, floats too.
class QVSTATS_EXPORT QVSCMolGetTagged : public QVPropertyFxnHandle<QVChem::QVMolBase> {
 public:
  explicit QVSCMolGetTagged(const std::string& tag);
  QVSCMolGetTagged* CreateCopy() const override;
};
/// @}

/// \name Properties of a multi-conformer molecule
/// Read from the molecule itself when that has the property; else, with `checkActive`, from its
/// active conformer; else, with `checkConfs`, from the first conformer that has it.
/// @{
class QVSTATS_EXPORT QVMCMolGetSDData : public QVPropertyFxnHandle<QVChem::QVMCMolBase> {
 public:
  QVMCMolGetSDData(const std::string& tag, bool checkActive, bool checkConfs);
  QVMCMolGetSDData* CreateCopy() const override;
};

/// Floats are read too.
class QVSTATS_EXPORT QVMCMolGetGenericData : public QVPropertyFxnHandle<QVChem::QVMCMolBase> {
 public:
  QVMCMolGetGenericData(const std::string& tag, bool checkActive, bool checkConfs);
  QVMCMolGetGenericData* CreateCopy() const override;
};

class QVSTATS_EXPORT QVMCMolGetTagged : public QVPropertyFxnHandle<QVChem::QVMCMolBase> {
 public:
  QVMCMolGetTagged(const std::string& tag, bool checkActive, bool checkConfs);
  QVMCMolGetTagged* CreateCopy() const override;
};
/// @}

/// \name Computed properties
/// @{

/// The molecular weight in g/mol; every molecule has it.
class QVSTATS_EXPORT QVMolecularWeightPropertyFxn : public QVChem::QVMolPropertyFxn {
 public:
  bool Has(const QVChem::QVMolBase& mol) const override;
  bool Has(const QVChem::QVMCMolBase& mol) const override;
  double Get(const QVChem::QVMolBase& mol) const override;
  double Get(const QVChem::QVMCMolBase& mol) const override;
  QVMolecularWeightPropertyFxn* CreateCopy() const override;
};

/// The base-10 logarithm of another property, where that is positive.
class QVSTATS_EXPORT QVMolLog10PropertyFxn : public QVChem::QVMolPropertyFxn {
 public:
  explicit QVMolLog10PropertyFxn(const QVChem::QVMolPropertyFxn& fxn);
  bool Has(const QVChem::QVMolBase& mol) const override;
  bool Has(const QVChem::QVMCMolBase& mol) const override;
  double Get(const QVChem::QVMolBase& mol) const override;
  double Get(const QVChem::QVMCMolBase& mol) const override;
  QVMolLog10PropertyFxn* CreateCopy() const override;

 private:
  QVSystem::QVCopyPtr<QVChem::QVMolPropertyFxn> fxn_;
};
/// @}

/// \name Lists of properties
/// Both can be handed to QVMolKrige as its drift properties. PrepMol stores the values on a
/// molecule under the cache tag, so that reading them again costs nothing; two lists that prepare
/// the same molecules need cache tags of their own.
/// @{

/// An ordered list of properties of a molecule. Of a multi-conformer molecule it reads the molecule
/// itself, not its conformers.
class QVSTATS_EXPORT QVSCMolPropertyList : public QVPropertyListFxn<QVChem::QVMolBase>,
                                           public QVChem::QVMolPropertyList {
 public:
  /// Empty, with cache tag "QVMolPropertyListFxn_PrepMol_Cache".
  QVSCMolPropertyList();
  explicit QVSCMolPropertyList(const std::string& cacheTag);

  /// Appends a QVSCMolGetTagged.
  void PushTag(const std::string& tag);
  /// Appends a copy.
  void Push(const QVPropertyFxn<QVChem::QVMolBase>& fxn);
  void Push(const QVChem::QVMolPropertyFxn& fxn);
  /// Empties the list.
  void Clear();

  /// Computes and stores the values of a molecule; nothing to do for an empty list.
  /// \return false, and nothing is stored, when the molecule lacks one of them.
  bool PrepMol(QVChem::QVMolBase& mol) const;

  bool HasProperties(const QVChem::QVMolBase& mol) const override;
  bool HasProperties(const QVChem::QVMCMolBase& mol) const override;
  std::size_t GetSize() const override;
  /// Stored values are used when there is one for each property of the list. An index past the end
  /// is a fatal assertion.
  double GetProperty(const QVChem::QVMolBase& mol, std::size_t k) const override;
  double GetProperty(const QVChem::QVMCMolBase& mol, std::size_t k) const override;
  QVSCMolPropertyList* CreateCopy() const override;

 private:
  QVSCMolPropertyListImpl impl_;
};

/// An ordered list of properties of a multi-conformer molecule. A molecule in one conformation is
/// read as one with a single conformer.
class QVSTATS_EXPORT QVMCMolPropertyList : public QVPropertyListFxn<QVChem::QVMCMolBase>,
                                           public QVChem::QVMolPropertyList {
 public:
  /// Empty, with cache tag "QVMolPropertyListFxn_PrepMol_Cache".
  QVMCMolPropertyList();
  explicit QVMCMolPropertyList(const std::string& cacheTag);

  /// Appends a QVMCMolGetTagged.
  void PushTag(const std::string& tag, bool checkActive, bool checkConfs);
  /// Appends a copy.
  void Push(const QVPropertyFxn<QVChem::QVMCMolBase>& fxn);
  void Push(const QVChem::QVMolPropertyFxn& fxn);
  /// Empties the list.
  void Clear();

  /// See QVSCMolPropertyList.
  bool PrepMol(QVChem::QVMCMolBase& mol) const;
  bool HasProperties(const QVChem::QVMCMolBase& mol) const override;
  bool HasProperties(const QVChem::QVMolBase& mol) const override;
  std::size_t GetSize() const override;
  double GetProperty(const QVChem::QVMCMolBase& mol, std::size_t k) const override;
  double GetProperty(const QVChem::QVMolBase& mol, std::size_t k) const override;
  QVMCMolPropertyList* CreateCopy() const override;

 private:
  QVMCMolPropertyListImpl impl_;
};
/// @}

}  // namespace QVStats

#endif  // QVSTATS_API_MOL_PROPERTIES_H
