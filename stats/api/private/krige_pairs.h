/// \file
/// \brief Pairs and neighbours of local kriging, free of the element type.
#ifndef QVSTATS_API_PRIVATE_KRIGE_PAIRS_H
#define QVSTATS_API_PRIVATE_KRIGE_PAIRS_H

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "stats/api/bulk_distance.h"
#include "stats/api/export.h"

namespace QVStats {

/// The distances of all pairs that enter a variogram, kept while they are at most a given number.
/// A pair qualifies when both elements are measured, or with `includeUnmeasured` at least one.
/// Pairs are stored without their indices: row i holds the qualifying earlier elements in order,
/// all of them or the measured ones.
class QVSTATS_EXPORT QVKrigePairCache {
 public:
  QVKrigePairCache() = default;
  QVKrigePairCache(std::size_t maxPairs, bool includeUnmeasured)
      : maxPairs_(maxPairs), includeUnmeasured_(includeUnmeasured) {}

  /// Whether there were too many pairs. The distances are dropped then, for good.
  bool IsGivenUp() const { return givenUp_; }
  std::size_t GetNumPairs() const { return distances_.size(); }

  /// Adds the next element and its pairs with earlier elements j at distance `getDistance(j)`.
  template <class GetDistance>
  void Add(bool unmeasured, GetDistance getDistance) {
    const Row row = BeginRow(unmeasured);
    if (row.partners == Partners::All)
      for (std::size_t j = 0; j < row.index; ++j) distances_.push_back(getDistance(j));
    else if (row.partners == Partners::Measured)
      for (const std::size_t j : measured_) distances_.push_back(getDistance(j));
    EndRow(unmeasured);
  }

  /// The distance of a pair of elements; null for one that does not qualify or after giving up.
  const double* Find(std::size_t a, std::size_t b) const;

  /// visit(later, earlier, distance) for every pair, in order of addition.
  template <class Visit>
  void ForEachPair(Visit visit) const {
    for (std::size_t i = 0; i < rows_.size(); ++i) {
      const double* distance = distances_.data() + rows_[i].first;
      if (rows_[i].partners == Partners::All)
        for (std::size_t j = 0; j < i; ++j) visit(i, j, *distance++);
      else if (rows_[i].partners == Partners::Measured)
        for (std::size_t k = 0; k < rows_[i].measuredBefore; ++k)
          visit(i, measured_[k], *distance++);
    }
  }

 private:
  enum class Partners { None, Measured, All };
  struct Row {
    std::size_t index;
    std::size_t first;           // where its distances begin
    std::size_t measuredBefore;  // earlier measured elements
    Partners partners;
    bool unmeasured;
  };
  Row BeginRow(bool unmeasured);
  void EndRow(bool unmeasured);

  std::size_t maxPairs_ = 0;
  bool includeUnmeasured_ = false;
  bool givenUp_ = false;
  std::vector<Row> rows_;
  std::vector<std::size_t> measured_;
  std::vector<double> distances_;
};

/// Draws pairs i < j of a large training set, each qualifying pair independently with the same
/// probability: 1, or so that about `maxPairs` are drawn. The same pairs on every run.
class QVSTATS_EXPORT QVKrigePairSampler {
 public:
  QVKrigePairSampler(const std::vector<bool>& unmeasured, bool includeUnmeasured,
                     unsigned int maxPairs);

  /// The number of pairs that qualify.
  std::uint64_t GetNumCandidates() const { return numCandidates_; }
  /// The probability of each.
  float GetFraction() const { return fraction_; }
  /// In index order. The time follows the number of pairs drawn, not of candidates: the gap to the
  /// next pair drawn is geometrically distributed.
  std::vector<std::pair<std::size_t, std::size_t>> Draw() const;

 private:
  const std::vector<bool>& unmeasured_;
  bool includeUnmeasured_;
  std::uint64_t numCandidates_;
  float fraction_;
};

/// The `count` nearest of the elements at the given distances, nearest first; of equal distances
/// the earlier element. With `leaveOutIdentical` those closer than 1e-30 are not considered. No
/// distance may be NaN.
QVSTATS_EXPORT std::vector<QVNeighbour> QVSelectNearest(const std::vector<double>& distances,
                                                        std::size_t count, bool leaveOutIdentical);

}  // namespace QVStats

#endif  // QVSTATS_API_PRIVATE_KRIGE_PAIRS_H
