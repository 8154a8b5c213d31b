/// \file
/// \brief The maximum common substructure of two molecules.
#ifndef QV_PLATFORM_CHEM_MCS_SEARCH_H
#define QV_PLATFORM_CHEM_MCS_SEARCH_H

#include <memory>
#include <utility>
#include <vector>

#include "platform/chem/export.h"
#include "platform/chem/mol.h"
#include "platform/system/iter.h"

namespace QVChem {

/// What two atoms must have in common to match; the values add up.
namespace QVMCSAtomMatch {
constexpr unsigned int AtomicNumber = 0x8;
constexpr unsigned int Aromaticity = 0x200;
constexpr unsigned int RingMember = 0x1000000;
constexpr unsigned int Default = AtomicNumber | Aromaticity | RingMember;  // 0x1000208
}  // namespace QVMCSAtomMatch

/// What two bonds must have in common to match; the values add up. Aromatic is an order of its own.
namespace QVMCSBondMatch {
constexpr unsigned int Order = 0x100000;
constexpr unsigned int RingMember = 0x1000000;
constexpr unsigned int Default = Order | RingMember;  // 0x1100000
}  // namespace QVMCSBondMatch

/// Pairs of matched atoms: index in the pattern, index in the target.
class QVCHEM_EXPORT QVMCSMatch {
 public:
  explicit QVMCSMatch(std::vector<std::pair<unsigned int, unsigned int>> pairs)
      : pairs_(std::move(pairs)) {}
  unsigned int GetNumAtoms() const { return static_cast<unsigned int>(pairs_.size()); }
  const std::vector<std::pair<unsigned int, unsigned int>>& GetAtomPairs() const { return pairs_; }

 private:
  std::vector<std::pair<unsigned int, unsigned int>> pairs_;
};

/// Finds a largest connected substructure that two molecules share: a one-to-one map of atoms, as
/// many as can be, under which matched atoms are bonded in the one molecule if and only if they are
/// bonded in the other, by matching bonds, and these bonds connect all of them.
///
/// Branch and bound over classes of interchangeable atoms; atoms that no bond path can still reach
/// do not count in the bound. Exact unless the time budget is spent, and then the best map found.
/// Source: C. McCreesh, P. Prosser, J. Trimble, "A Partitioning Algorithm for Maximum Common
/// Subgraph Problems", IJCAI 2017, 712-719.
class QVCHEM_EXPORT QVMCSSearch {
 public:
  /// \param searchType 0, the exact search; there is no other.
  explicit QVMCSSearch(unsigned int searchType = 0);
  ~QVMCSSearch();
  QVMCSSearch(QVMCSSearch&& other) noexcept;
  QVMCSSearch& operator=(QVMCSSearch&& other) noexcept;

  /// Sets the pattern. The molecule is not kept.
  /// \return false, with an error reported, for a molecule of more than 1024 atoms.
  bool Init(const QVMolBase& pattern, unsigned int atomMatch = QVMCSAtomMatch::Default,
            unsigned int bondMatch = QVMCSBondMatch::Default);

  /// Seconds that one match may take; 0, the default, means no limit.
  void SetTimeBudget(double seconds);
  /// Whether the last match ended because its time was spent.
  bool WasTimeSpent() const;

  /// The matches of the pattern in a target. Matches of the same atoms count as one, whatever
  /// `unique` says, and of equally large ones the first found is returned: the iterator stands on
  /// one match, or on none when no atoms match. It stays valid until the next call.
  QVSystem::QVIter<const QVMCSMatch> Match(const QVMolBase& target, bool unique = true);

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace QVChem

#endif  // QV_PLATFORM_CHEM_MCS_SEARCH_H
