/// \file
/// \brief Molecules: a connection table with a title, SD data and generic data, in one conformation
/// or in many.
///
/// A molecule is read by QVParseSmiles (smiles.h) or QVMolReader (mol_io.h); its atoms and bonds
/// are then fixed. What is attached to it (title, SD data, generic data, coordinates, radii) can
/// change. Copies share the connection table and the coordinates, so that copying is cheap.
///
/// Const operations may run in parallel on one molecule and on copies of it.
#ifndef QV_PLATFORM_CHEM_MOL_H
#define QV_PLATFORM_CHEM_MOL_H

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/chem/atom_bond.h"
#include "platform/chem/export.h"
#include "platform/system/generic_data.h"
#include "platform/system/iter.h"

namespace QVChem {

namespace Internal {
struct Chemistry;
struct MolAccess;
}  // namespace Internal

/// A line of text data that travels with a molecule in an SD file.
struct QVSDDataPair {
  std::string tag;
  std::string value;  ///< several lines are separated by "\n"
};

/// What single- and multi-conformer molecules have in common. Functions that only look at a
/// molecule take a `const QVMolBase&`.
class QVCHEM_EXPORT QVMolBase : public QVSystem::QVDataHolder {
 public:
  virtual ~QVMolBase();
  /// \return a new molecule of the same class that the caller owns.
  virtual QVMolBase* CreateCopy() const = 0;

  /// \name Atoms and bonds
  /// A handle is a molecule and an index: it must not outlive the molecule or a change of its
  /// connection table. An index past the end is a fatal assertion and gives an invalid handle.
  /// @{
  unsigned int GetNumAtoms() const;
  /// The atoms that are not hydrogen.
  unsigned int GetNumHeavyAtoms() const;
  unsigned int GetNumBonds() const;
  QVAtomBase GetAtom(unsigned int index) const;
  QVBondBase GetBond(unsigned int index) const;
  QVAtomRange GetAtoms() const;
  QVBondRange GetBonds() const;
  /// \return the bond between two atoms, invalid when there is none.
  QVBondBase GetBond(const QVAtomBase& a, const QVAtomBase& b) const;
  bool IsEmpty() const { return GetNumAtoms() == 0; }
  /// @}

  const std::string& GetTitle() const { return title_; }
  void SetTitle(std::string title) { title_ = std::move(title); }

  /// \name SD data
  /// Text by tag, in the order of the file. A tag occurs once: setting it again replaces its text
  /// where it stands.
  /// @{
  bool HasSDData(std::string_view tag) const;
  /// \return the text, empty when there is none.
  const std::string& GetSDData(std::string_view tag) const;
  void SetSDData(std::string_view tag, std::string value);
  /// \return whether there was a text.
  bool DeleteSDData(std::string_view tag);
  void ClearSDData() { sdData_.clear(); }
  const std::vector<QVSDDataPair>& GetSDDataPairs() const { return sdData_; }
  /// @}

  /// \return what can be attached to one atom: generic data by tag. Reading is also possible
  /// through the handle, QVAtomBase::GetDataHolder(). An atom past the end is a fatal assertion and
  /// gives the molecule's own.
  QVSystem::QVDataHolder& GetAtomData(const QVAtomBase& atom);

  /// \name Coordinates, in ångström
  /// @{
  bool HasCoordinates() const { return coordinates_ != nullptr; }
  /// Whether a coordinate lies outside the plane z = 0.
  bool Is3D() const;
  /// \return a point for each atom; empty without coordinates.
  const std::vector<QVPoint3>& GetCoordinates() const;
  /// \return false, and nothing changes, unless there is a finite point for each atom.
  bool SetCoordinates(std::vector<QVPoint3> coordinates);
  void ClearCoordinates() { coordinates_.reset(); }
  /// @}

  /// The van der Waals radius of each atom, in ångström: empty until QVAssignBondiVdWRadii.
  const std::vector<double>& GetRadii() const;
  /// \return false, and nothing changes, unless there is a radius for each atom.
  bool SetRadii(std::vector<double> radii);

  /// Back to an empty molecule without title and data.
  virtual void Clear();

 protected:
  QVMolBase();
  QVMolBase(const QVMolBase& other);
  QVMolBase(QVMolBase&& other) noexcept;
  QVMolBase& operator=(const QVMolBase& other);
  QVMolBase& operator=(QVMolBase&& other) noexcept;

 private:
  friend struct Internal::MolAccess;
  friend class QVAtomBase;
  friend class QVBondBase;

  std::shared_ptr<const Internal::Chemistry> chemistry_;
  std::shared_ptr<const std::vector<QVPoint3>> coordinates_;
  std::shared_ptr<const std::vector<double>> radii_;
  std::string title_;
  std::vector<QVSDDataPair> sdData_;
  std::vector<QVSystem::QVDataHolder> atomData_;  // empty until an atom carries data
};

/// A molecule in one conformation, or without coordinates.
class QVCHEM_EXPORT QVGraphMol : public QVMolBase {
 public:
  QVGraphMol();
  QVGraphMol(const QVGraphMol& other);
  QVGraphMol(QVGraphMol&& other) noexcept;
  /// Copies any molecule; of a multi-conformer molecule its own data and active coordinates.
  explicit QVGraphMol(const QVMolBase& other);
  QVGraphMol& operator=(const QVGraphMol& other);
  QVGraphMol& operator=(QVGraphMol&& other) noexcept;
  QVGraphMol& operator=(const QVMolBase& other);
  ~QVGraphMol() override;

  QVGraphMol* CreateCopy() const override;
};

/// A molecule with any number of conformers, one of them active.
///
/// The molecule itself has its own title, SD data and generic data; each conformer is a molecule
/// of its own that shares the connection table. The coordinates of the molecule are those of its
/// active conformer.
class QVCHEM_EXPORT QVMCMolBase : public QVMolBase {
 public:
  ~QVMCMolBase() override;
  QVMCMolBase* CreateCopy() const override = 0;

  unsigned int GetNumConformers() const;
  /// An index past the end is a fatal assertion and gives an empty molecule.
  const QVMolBase& GetConformer(unsigned int index) const;
  QVMolBase& GetConformer(unsigned int index);
  /// The conformers in the order of their adding.
  QVSystem::QVIter<const QVMolBase> GetConformers() const;

  /// \return the active conformer; the molecule itself when it has no conformer.
  const QVMolBase& GetActiveConformer() const;
  unsigned int GetActiveConformerIndex() const { return active_; }
  /// \return false, and nothing changes, for an index past the end.
  bool SetActiveConformer(unsigned int index);

  /// Adds a copy of a molecule as a conformer. The first gives an empty molecule its connection
  /// table and title; each further one must have the same atoms and bonds in the same order, with
  /// the same stereochemistry.
  /// \return false, and nothing changes, when it has not.
  bool AddConformer(const QVMolBase& conformer);

  void Clear() override;

 protected:
  QVMCMolBase();
  QVMCMolBase(const QVMCMolBase& other);
  QVMCMolBase(QVMCMolBase&& other) noexcept;
  QVMCMolBase& operator=(const QVMCMolBase& other);
  QVMCMolBase& operator=(QVMCMolBase&& other) noexcept;

 private:
  std::vector<QVGraphMol> conformers_;
  unsigned int active_ = 0;
};

/// A multi-conformer molecule.
class QVCHEM_EXPORT QVMCMol : public QVMCMolBase {
 public:
  QVMCMol();
  QVMCMol(const QVMCMol& other);
  QVMCMol(QVMCMol&& other) noexcept;
  /// Copies any molecule; one with a single conformation becomes the only conformer of a molecule
  /// with the same title, SD data and generic data.
  explicit QVMCMol(const QVMolBase& other);
  QVMCMol& operator=(const QVMCMol& other);
  QVMCMol& operator=(QVMCMol&& other) noexcept;
  ~QVMCMol() override;

  QVMCMol* CreateCopy() const override;
};

}  // namespace QVChem

#endif  // QV_PLATFORM_CHEM_MOL_H
