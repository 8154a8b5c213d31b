/// \file
/// \brief Shared-nearest-neighbour clustering of molecules, from a store of their similarities.
#ifndef QVSTATS_API_SNN_DIRTY_H
#define QVSTATS_API_SNN_DIRTY_H

#include <cstddef>
#include <functional>
#include <vector>

#include "platform/chem/mol.h"
#include "platform/likeness/vsepr.h"
#include "platform/system/iter.h"
#include "stats/api/export.h"
#include "stats/api/snn.h"

namespace QVStats {

/// A similarity between two objects.
struct QVSimItem {
  double similarity;
  unsigned int first;
  unsigned int second;
};

/// Ascending by similarity.
struct LessSimItem {
  bool operator()(const QVSimItem& a, const QVSimItem& b) const {
    return a.similarity < b.similarity;
  }
};

/// A molecule, not owned, and its index among those to be clustered.
struct QVMolData {
  QVChem::QVMolBase* molecule;
  unsigned int index;
};

/// Pairwise similarities of n objects: the n x n matrix, row after row, of which only the entries
/// of the orientation (first, second) that was computed are written, and the list of pairs,
/// ascending.
class QVSTATS_EXPORT QVSimInfo {
 public:
  /// \param computeFromMolecules whether InitSimilarity computes similarities; without it the
  /// matrix
  ///   is only sized, with zeros.
  explicit QVSimInfo(bool computeFromMolecules = true) : compute_(computeFromMolecules) {}

  /// Similarity c / (A + B - c) of every pair of molecules, self included, from the A and B atoms
  /// of the two and the c atoms of their maximum common substructure (QVChem::QVMCSSearch, type 0,
  /// atom match 0x1000208, bond match 0x1100000); n (n + 1) / 2 searches. The indices of the
  /// molecules are 0 to n - 1 in any order.
  /// \return false, with an error reported and the store empty, when the memory is too small for
  /// n^2
  ///     numbers; the same below.
  bool InitSimilarity(const std::vector<QVMolData>& mols);

  /// Takes over a full matrix of n x n similarities; the pairs are those with first <= second.
  /// \return false, with an error reported and the store empty, when the size is no square.
  bool InitSimilarity(std::vector<double> matrix);

  /// Tanimoto similarities of the molecules' VSEPR fingerprints.
  bool InitSimilarity(const std::vector<QVMolData>& mols,
                      const QVLikeness::QVVseprOptions& options);

  /// Seconds that the search of one pair may take; 0, the default, means no limit. A pair whose
  /// time is spent counts with the best substructure found; their number is reported as a warning.
  void SetTimeBudget(double secondsPerPair) { secondsPerPair_ = secondsPerPair; }

  /// Called with the number of pairs done and of all pairs, after each row.
  void SetProgress(std::function<void(std::size_t, std::size_t)> progress) {
    progress_ = std::move(progress);
  }

  unsigned int GetCount() const { return count_; }
  const std::vector<double>& GetMatrix() const { return matrix_; }
  const std::vector<QVSimItem>& GetItems() const { return items_; }
  /// \return how many searches of the last InitSimilarity ran out of time.
  std::size_t GetNumTimeSpent() const { return numTimeSpent_; }

 private:
  bool Resize(std::size_t count);
  void Store(unsigned int first, unsigned int second, double similarity);
  void CompareRow(const std::vector<QVMolData>& mols, std::size_t row);

  std::vector<QVSimItem> items_;
  std::vector<double> matrix_;
  unsigned int count_ = 0;
  bool compute_;
  double secondsPerPair_ = 0.0;
  std::size_t numTimeSpent_ = 0;
  std::function<void(std::size_t, std::size_t)> progress_;
};

/// The members of a cluster.
template <class T>
class QVClusterNode {
 public:
  virtual ~QVClusterNode() = default;
  void AddMember(T* member) { members_.push_back(member); }
  /// Pointers into the caller's vector, the head of the cluster first. The iterator reads this
  /// object.
  QVSystem::QVIter<T* const> GetMembers() const { return QVSystem::QVMakeIter<T* const>(members_); }

 private:
  std::vector<T*> members_;
};

/// Clusters n objects from their similarities: parameters by QVGetSNNParameters(n), neighbour lists
/// from the store, noise not returned. The parameters, all similarities, the neighbour lists and
/// "EndPrint" go to the standard error stream.
/// \return whether there are clusters; otherwise a warning says why.
QVSTATS_EXPORT bool QVGetSNNCluster(std::vector<std::vector<unsigned int>>& clusters, std::size_t n,
                                    QVSimInfo& info);

/// The same for molecules: one node a cluster, pointing into `mols`, which must outlive it.
/// \return whether a node was added.
QVSTATS_EXPORT bool QVGetSNNCluster(std::vector<QVClusterNode<QVMolData>>& nodes,
                                    std::vector<QVMolData>& mols, QVSimInfo& info);

/// The k nearest neighbours by VSEPR fingerprint, as QVGetNearestNeighbours gives them from a
/// matrix, without one: memory grows with n k.
QVSTATS_EXPORT std::vector<std::vector<unsigned int>> QVGetNearestNeighbours(
    const std::vector<QVLikeness::QVVseprFingerprint>& fingerprints, unsigned int k);

}  // namespace QVStats

#endif  // QVSTATS_API_SNN_DIRTY_H
