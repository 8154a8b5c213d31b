#include "stats/api/snn.h"

#include <algorithm>
#include <iostream>
#include <numeric>
#include <string>

#include "platform/system/cast.h"
#include "platform/system/error_handler.h"
#include "stats/snn_selection.h"

namespace QVStats {

namespace {

using Lists = std::vector<std::vector<unsigned int>>;

/// For each object, the objects whose lists hold it, in ascending order.
Lists Reverse(const Lists& lists) {
  Lists holders(lists.size());
  for (std::size_t i = 0; i < lists.size(); ++i)
    for (const unsigned int j : lists[i]) holders[j].push_back(static_cast<unsigned int>(i));
  return holders;
}

/// A set of objects that is emptied in no time: an object is in it when it carries the last stamp.
class StampSet {
 public:
  explicit StampSet(std::size_t n) : stamps_(n, 0) {}
  void Fill(const std::vector<unsigned int>& members) {
    ++stamp_;
    for (const unsigned int member : members) stamps_[member] = stamp_;
  }
  bool Holds(unsigned int member) const { return stamps_[member] == stamp_; }
  unsigned int CountOf(const std::vector<unsigned int>& members) const {
    unsigned int count = 0;
    for (const unsigned int member : members) count += Holds(member);
    return count;
  }

 private:
  unsigned int stamp_ = 0;
  std::vector<unsigned int> stamps_;
};

void WriteSearchNotes(std::size_t count) {
  static const std::string kNote = "slow unsorted search of size nn\n";
  std::string notes;
  notes.reserve(count * kNote.size());
  for (std::size_t i = 0; i < count; ++i) notes += kNote;
  std::cerr.write(notes.data(), static_cast<std::streamsize>(notes.size()));
}

bool AreListsValid(const Lists& lists, std::size_t n) {
  if (lists.size() != n) {
    QVSystem::QVThrow.Error("QVGetSNNCluster, %zu neighbour lists for %zu objects", lists.size(),
                            n);
    return false;
  }
  for (std::size_t i = 0; i < n; ++i)
    for (const unsigned int j : lists[i])
      if (j >= n) {
        QVSystem::QVThrow.Error(
            "QVGetSNNCluster, the list of object %zu holds index %u, but there are %zu objects", i,
            j, n);
        return false;
      }
  return true;
}

/// Clusters in the making: heads, their merging, and the objects attached to them.
class Clustering {
 public:
  Clustering(std::size_t n, const std::vector<QVNNStrength>& records, const QVSNNParameters& params)
      : records_(records),
        params_(params),
        recordOf_(n, nullptr),
        isNoise_(n, false),
        isClustered_(n, false) {
    for (const QVNNStrength& record : records) recordOf_[record.GetSmallIdx()] = &record;
  }

  void Classify(std::vector<unsigned int>& noise) {
    for (const unsigned int object : noise) isNoise_[object] = true;
    for (const QVNNStrength& record : records_) {
      const unsigned int object = record.GetSmallIdx();
      if (record.GetStrCt() < params_.noise) {
        noise.push_back(object);
        isNoise_[object] = true;
      }
      if (record.GetStrCt() >= params_.topic) clusters_.push_back({object});
    }
  }

  /// Clusters are labelled 1, 2, ... and a merged group keeps the label of its first head.
  bool Merge() {
    constexpr std::size_t kNone = ~std::size_t{0};
    std::vector<std::size_t> clusterOfHead(recordOf_.size(), kNone);
    for (std::size_t c = 0; c < clusters_.size(); ++c) clusterOfHead[clusters_[c].front()] = c;
    std::vector<std::size_t> group(clusters_.size());
    std::iota(group.begin(), group.end(), std::size_t{0});
    for (std::size_t c = 0; c < clusters_.size(); ++c) {
      const QVNNStrength* record = recordOf_[clusters_[c].front()];
      if (!record) {
        QVSystem::QVThrow.Warning("unable to find cluster head %d in merge clusters.",
                                  static_cast<int>(clusters_[c].front()));
        continue;
      }
      for (const QVStrValue& link : record->GetLinks()) {
        if (link.strength <= params_.merge || isNoise_[link.neighbourIndex]) continue;
        const std::size_t other = clusterOfHead[link.neighbourIndex];
        if (other != kNone) Unite(group, c, other);
      }
    }
    CombineGroups(group);
    return !clusters_.empty();
  }

  void Attach() {
    for (const auto& cluster : clusters_)
      for (const unsigned int head : cluster) isClustered_[head] = true;
    for (auto& cluster : clusters_) {
      const std::size_t heads = cluster.size();
      for (std::size_t h = 0; h < heads; ++h) {
        const QVNNStrength* record = recordOf_[cluster[h]];
        if (!record) continue;
        for (const QVStrValue& link : record->GetLinks()) {
          const unsigned int j = link.neighbourIndex;
          if (link.strength <= params_.label || isNoise_[j] || isClustered_[j]) continue;
          isClustered_[j] = true;
          cluster.push_back(j);
        }
      }
    }
  }

  std::size_t CountSingletons() const {
    std::size_t count = 0;
    for (std::size_t i = 0; i < isNoise_.size(); ++i) count += !isNoise_[i] && !isClustered_[i];
    return count;
  }

  Lists& GetClusters() { return clusters_; }

 private:
  static std::size_t Root(std::vector<std::size_t>& group, std::size_t c) {
    while (group[c] != c) c = group[c] = group[group[c]];
    return c;
  }

  static void Unite(std::vector<std::size_t>& group, std::size_t a, std::size_t b) {
    const std::size_t rootA = Root(group, a), rootB = Root(group, b);
    group[std::max(rootA, rootB)] = std::min(rootA, rootB);
  }

  void CombineGroups(std::vector<std::size_t>& group) {
    for (std::size_t c = 0; c < clusters_.size(); ++c) {
      const std::size_t root = Root(group, c);
      if (root == c) continue;
      clusters_[root].insert(clusters_[root].end(), clusters_[c].begin(), clusters_[c].end());
      clusters_[c].clear();
      QVSystem::QVThrow.Warning("failed to find merge cluster %d", static_cast<int>(c + 1));
    }
    clusters_.erase(std::remove_if(clusters_.begin(), clusters_.end(),
                                   [](const auto& cluster) { return cluster.empty(); }),
                    clusters_.end());
  }

  const std::vector<QVNNStrength>& records_;
  const QVSNNParameters& params_;
  std::vector<const QVNNStrength*> recordOf_;
  std::vector<bool> isNoise_;
  std::vector<bool> isClustered_;
  Lists clusters_;
};

}  // namespace

QVSNNParameters QVGetSNNParameters(std::size_t n) {
  const double tenth = static_cast<double>(n) * 0.1;
  const auto k = static_cast<unsigned int>(std::clamp(tenth, 6.0, 30.0));
  const auto share = [k](double of) { return static_cast<unsigned int>(k * of); };
  return {k, share(0.75), share(0.5), share(0.63), share(0.53)};
}

Lists QVGetNearestNeighbours(const std::vector<double>& similarity, std::size_t n, unsigned int k) {
  // The matrix is read once, as it stands; each similarity counts for both of its objects.
  std::vector<BestNeighbours> best(n);
  for (BestNeighbours& neighbours : best) neighbours.Start(k);
  for (std::size_t i = 0; i < n; ++i) {
    const double* const row = similarity.data() + n * i;
    best[i].Offer(row[i], static_cast<unsigned int>(i));
    for (std::size_t j = i + 1; j < n; ++j) {
      best[i].Offer(row[j], static_cast<unsigned int>(j));
      best[j].Offer(row[j], static_cast<unsigned int>(i));
    }
  }
  Lists lists;
  for (BestNeighbours& neighbours : best) lists.push_back(neighbours.Take());
  return lists;
}

std::vector<QVNNStrength> QVGetNeighbourLinks(const Lists& nnLists) {
  const std::size_t n = nnLists.size();
  const Lists holders = Reverse(nnLists);
  StampSet own(n), holdersOfObject(n);
  std::vector<QVNNStrength> records;
  std::size_t searches = 0;
  for (std::size_t index = 0; index < n; ++index) {
    const auto i = static_cast<unsigned int>(index);
    own.Fill(nnLists[i]);
    holdersOfObject.Fill(holders[i]);
    QVNNStrength record(i);
    for (const unsigned int j : nnLists[i]) {
      if (j == i) continue;
      ++searches;
      if (holdersOfObject.Holds(j)) record.Add({j, own.CountOf(nnLists[j])});
    }
    if (record.GetStrCt() != 0) records.push_back(std::move(record));
  }
  WriteSearchNotes(searches);
  return records;
}

bool QVGetSNNCluster(Lists& clusters, std::vector<unsigned int>& noise, std::size_t n,
                     const Lists& nnLists, const QVSNNParameters& params, bool sortLists) {
  QVSystem::QVUnsignedFromCountChecked(n);
  if (!AreListsValid(nnLists, n)) return false;
  Lists sorted;
  if (sortLists) {
    sorted = nnLists;
    for (auto& list : sorted) std::sort(list.begin(), list.end());
  }
  for (std::size_t i = 0; i < n; ++i)
    if (nnLists[i].empty()) noise.push_back(static_cast<unsigned int>(i));
  const std::vector<QVNNStrength> records = QVGetNeighbourLinks(sortLists ? sorted : nnLists);
  if (records.empty()) {
    QVSystem::QVThrow.Warning("Failed to find any connected near-neighbors");
    return false;
  }
  Clustering clustering(n, records, params);
  clustering.Classify(noise);
  if (clustering.GetClusters().empty()) {
    QVSystem::QVThrow.Warning("Failed to identify representative clusters & noise.");
    return false;
  }
  clustering.Merge();
  clustering.Attach();
  QVSystem::QVThrow.Info("Singleton Ct = %d, Noise Ct = %d",
                         static_cast<int>(clustering.CountSingletons()),
                         static_cast<int>(noise.size()));
  clusters.insert(clusters.end(), clustering.GetClusters().begin(), clustering.GetClusters().end());
  return true;
}

}  // namespace QVStats
