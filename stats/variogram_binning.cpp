#include "stats/variogram_binning.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

#include "stats/api/variogram.h"

namespace QVStats {

namespace {

using Pairs = std::vector<QVDistanceAndDifference>;

constexpr std::size_t kSmallestZeroBin = 50;

double HalfSquare(double difference) { return 0.5 * difference * difference; }

/// The running sums of a bin.
struct Sums {
  std::size_t count = 0;
  double distance = 0.0;
  double halfSquares = 0.0;

  void Add(const QVDistanceAndDifference& pair) {
    ++count;
    distance += pair.first;
    halfSquares += HalfSquare(pair.second);
  }
  void Add(const Sums& other) {
    count += other.count;
    distance += other.distance;
    halfSquares += other.halfSquares;
  }
  void PushTo(QVVariogramImpl& variogram) const {
    const double n = static_cast<double>(count);
    variogram.Push(distance / n, halfSquares / n);
  }
};

void PushBinsInOrder(QVVariogramImpl& variogram, const Pairs& pairs, const QVVariogramBins& bins) {
  std::size_t position = 0;
  for (const std::size_t end : bins.ends) {
    Sums sums;
    for (; position < end; ++position) sums.Add(pairs[position]);
    sums.PushTo(variogram);
  }
}

bool IsIdentical(const QVDistanceAndDifference& pair) {
  return pair.first <= QVIdenticalPairDistance;
}

/// Sums bins of pairs that are not sorted. The distances are cut into narrow buckets of equal
/// width, each with its sums; a bucket that lies within a bin enters it as a whole, and only the
/// few buckets in which a bin ends are sorted.
class BucketedPairs {
 public:
  /// \param skipIdentical leaves the pairs at distance zero out.
  BucketedPairs(const Pairs& pairs, bool skipIdentical)
      : pairs_(pairs), skipIdentical_(skipIdentical) {
    for (const auto& pair : pairs_) {
      if (IsSkipped(pair)) continue;
      lowest_ = std::min(lowest_, pair.first);
      highest_ = std::max(highest_, pair.first);
    }
    scale_ = static_cast<double>(kBuckets) / (highest_ - lowest_);
  }

  /// \return whether the distances are finite and spread out, so that buckets can hold them.
  bool AreUsable() const {
    const auto isFinite = [](const QVDistanceAndDifference& p) { return std::isfinite(p.first); };
    return std::isfinite(scale_) && scale_ > 0.0 &&
           std::all_of(pairs_.begin(), pairs_.end(), isFinite);
  }

  /// Pushes bins that end at these ranks, counted from the first pair that is not skipped.
  void PushBins(QVVariogramImpl& variogram, const std::vector<std::size_t>& ends) const {
    std::vector<Sums> buckets(kBuckets);
    for (const auto& pair : pairs_)
      if (!IsSkipped(pair)) buckets[FindBucket(pair)].Add(pair);
    const std::vector<Pairs> edges = CollectEdgeBuckets(buckets, ends);
    Sums bin;
    std::size_t rank = 0;
    auto end = ends.begin();
    for (std::size_t bucket = 0; bucket < kBuckets; ++bucket) {
      if (rank + buckets[bucket].count < *end) {
        bin.Add(buckets[bucket]);
        rank += buckets[bucket].count;
        continue;
      }
      for (const auto& pair : edges[bucket]) {
        bin.Add(pair);
        if (++rank < *end) continue;
        bin.PushTo(variogram);
        bin = Sums();
        if (++end == ends.end()) return;
      }
    }
  }

 private:
  static constexpr std::size_t kBuckets = 4096;

  bool IsSkipped(const QVDistanceAndDifference& pair) const {
    return skipIdentical_ && IsIdentical(pair);
  }

  /// Never decreases with the distance, rounding included.
  std::size_t FindBucket(const QVDistanceAndDifference& pair) const {
    const auto bucket = static_cast<std::int64_t>((pair.first - lowest_) * scale_);
    return std::min(static_cast<std::size_t>(bucket), kBuckets - 1);
  }

  /// \return for each bucket in which a bin ends its sorted pairs, for the others nothing.
  std::vector<Pairs> CollectEdgeBuckets(const std::vector<Sums>& buckets,
                                        const std::vector<std::size_t>& ends) const {
    std::vector<char> isEdge(kBuckets, 0);
    std::size_t rank = 0;
    auto end = ends.begin();
    for (std::size_t bucket = 0; bucket < kBuckets; ++bucket) {
      rank += buckets[bucket].count;
      while (end != ends.end() && *end <= rank) {
        isEdge[bucket] = 1;
        ++end;
      }
    }
    std::vector<Pairs> edges(kBuckets);
    for (const auto& pair : pairs_) {
      if (IsSkipped(pair)) continue;
      const std::size_t bucket = FindBucket(pair);
      if (isEdge[bucket]) edges[bucket].push_back(pair);
    }
    for (Pairs& edge : edges) std::sort(edge.begin(), edge.end(), QVIsNearerPair);
    return edges;
  }

  const Pairs& pairs_;
  bool skipIdentical_;
  double lowest_ = std::numeric_limits<double>::infinity();
  double highest_ = -std::numeric_limits<double>::infinity();
  double scale_ = 0.0;
};

/// Below this the buckets cost more than sorting.
constexpr std::size_t kSmallestBucketedSize = 4096;

bool PushBinsByBuckets(QVVariogramImpl& variogram, const Pairs& pairs,
                       const QVVariogramBins& bins) {
  if (pairs.size() < kSmallestBucketedSize) return false;
  const BucketedPairs buckets(pairs, bins.hasZeroBin);
  if (!buckets.AreUsable()) return false;
  std::vector<std::size_t> ends = bins.ends;
  if (bins.hasZeroBin) {
    Sums zero;
    for (const auto& pair : pairs)
      if (IsIdentical(pair)) zero.Add(pair);
    zero.PushTo(variogram);
    ends.erase(ends.begin());
    for (std::size_t& end : ends) end -= zero.count;
  }
  buckets.PushBins(variogram, ends);
  return true;
}

}  // namespace

bool QVIsNearerPair(const QVDistanceAndDifference& a, const QVDistanceAndDifference& b) {
  const auto isBefore = [](double x, double y) {
    return x < y || (std::isnan(y) && !std::isnan(x));
  };
  if (isBefore(a.first, b.first)) return true;
  if (isBefore(b.first, a.first)) return false;
  return isBefore(a.second, b.second);
}

QVVariogramBins::QVVariogramBins(std::size_t pairs, std::size_t identical)
    : hasZeroBin(identical >= kSmallestZeroBin), isUsable(pairs > 0) {
  std::size_t position = 0;
  if (hasZeroBin) {
    position = identical;
    ends.push_back(position);
    isUsable = position < pairs;
  }
  const double count = static_cast<double>(pairs - position);
  const double largest = 0.2 * count;
  double size = count < 1500.0 ? largest / 3.0 : 100.0;
  const auto round = [](double x) {
    return std::max<std::size_t>(1, static_cast<std::size_t>(std::floor(x + 0.5)));
  };
  std::size_t next = round(size);
  while (position < pairs) {
    position += std::min(next, pairs - position);
    ends.push_back(position);
    size = std::min(2.0 * size, largest);
    next = round(size);
    const std::size_t left = pairs - position;
    if (ends.size() >= 2 && left < 2 * next) next = left;
  }
}

bool QVSetupVariogram(QVVariogramImpl& variogram, Pairs& pairs, bool sort) {
  variogram.Clear();
  const auto firstOther = std::find_if_not(pairs.begin(), pairs.end(), IsIdentical);
  const auto identical =
      sort ? std::count_if(pairs.begin(), pairs.end(), IsIdentical) : firstOther - pairs.begin();
  const QVVariogramBins bins(pairs.size(), static_cast<std::size_t>(identical));
  if (sort && PushBinsByBuckets(variogram, pairs, bins)) return bins.isUsable;
  if (sort) std::sort(pairs.begin(), pairs.end(), QVIsNearerPair);
  PushBinsInOrder(variogram, pairs, bins);
  return bins.isUsable;
}

}  // namespace QVStats
