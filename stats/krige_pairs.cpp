#include "stats/api/private/krige_pairs.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "platform/system/error_handler.h"
#include "platform/system/random.h"
#include "stats/api/private/krige_system.h"

namespace QVStats {

QVKrigePairCache::Row QVKrigePairCache::BeginRow(bool unmeasured) {
  Row row{rows_.size(), distances_.size(), measured_.size(), Partners::None, unmeasured};
  if (!givenUp_) {
    if (includeUnmeasured_)
      row.partners = unmeasured ? Partners::Measured : Partners::All;
    else if (!unmeasured)
      row.partners = Partners::Measured;
  }
  rows_.push_back(row);
  return row;
}

void QVKrigePairCache::EndRow(bool unmeasured) {
  if (!unmeasured) measured_.push_back(rows_.size() - 1);
  if (distances_.size() <= maxPairs_) return;
  givenUp_ = true;
  rows_ = {};
  measured_ = {};
  distances_ = {};
}

const double* QVKrigePairCache::Find(std::size_t a, std::size_t b) const {
  if (givenUp_ || a == b) return nullptr;
  const Row& later = rows_[std::max(a, b)];
  const Row& earlier = rows_[std::min(a, b)];
  if (later.partners == Partners::All) return &distances_[later.first + earlier.index];
  if (later.partners == Partners::None || earlier.unmeasured) return nullptr;
  return &distances_[later.first + earlier.measuredBefore];
}

namespace {

/// The probability of a pair, in single precision; a maximum that has no exact value there is a
/// fatal report.
float ComputeFraction(std::uint64_t candidates, unsigned int maxPairs) {
  if (candidates <= maxPairs) return 1.0f;
  QV_ASSERT(static_cast<double>(static_cast<float>(maxPairs)) == static_cast<double>(maxPairs));
  return 1.0f / static_cast<float>(candidates) * static_cast<float>(maxPairs);
}

std::uint64_t CountPairs(std::uint64_t n) { return n < 2 ? 0 : n * (n - 1) / 2; }

}  // namespace

QVKrigePairSampler::QVKrigePairSampler(const std::vector<bool>& unmeasured, bool includeUnmeasured,
                                       unsigned int maxPairs)
    : unmeasured_(unmeasured), includeUnmeasured_(includeUnmeasured) {
  const std::uint64_t n = unmeasured.size();
  const auto u = static_cast<std::uint64_t>(std::count(unmeasured.begin(), unmeasured.end(), true));
  numCandidates_ = includeUnmeasured ? CountPairs(n) - CountPairs(u) : CountPairs(n - u);
  fraction_ = ComputeFraction(numCandidates_, maxPairs);
}

std::vector<std::pair<std::size_t, std::size_t>> QVKrigePairSampler::Draw() const {
  std::vector<std::pair<std::size_t, std::size_t>> pairs;
  pairs.reserve(static_cast<std::size_t>(std::min(1.0, 1.01 * static_cast<double>(fraction_)) *
                                         static_cast<double>(numCandidates_)));
  const double logSkip = std::log1p(-static_cast<double>(fraction_));
  QVSystem::QVRandom random(0);
  // How many candidates are passed over before the next one that is drawn.
  const auto drawGap = [&]() -> double {
    return fraction_ >= 1.0f ? 0.0 : std::floor(std::log1p(-random.NextDouble()) / logSkip);
  };

  std::vector<std::size_t> measured;
  for (std::size_t i = 0; i < unmeasured_.size(); ++i)
    if (!unmeasured_[i]) measured.push_back(i);
  std::size_t firstLater = 0;  // of measured elements, the first after i
  double gap = drawGap();
  for (std::size_t i = 0; i < unmeasured_.size(); ++i) {
    if (!unmeasured_[i]) ++firstLater;
    if (unmeasured_[i] && !includeUnmeasured_) continue;
    const bool any = includeUnmeasured_ && !unmeasured_[i];
    const std::size_t partners = any ? unmeasured_.size() - i - 1 : measured.size() - firstLater;
    double next = gap;
    for (; next < static_cast<double>(partners); next += 1.0 + drawGap()) {
      const auto k = static_cast<std::size_t>(next);
      pairs.emplace_back(i, any ? i + 1 + k : measured[firstLater + k]);
    }
    gap = next - static_cast<double>(partners);
  }
  return pairs;
}

namespace {

/// A distance that at least `count` of the elements do not exceed, and not many more: from the
/// order in a regular sample. Infinity when the sample cannot tell.
double EstimateBound(const std::vector<double>& distances, std::size_t count) {
  constexpr std::size_t kStep = 16;
  std::vector<double> sample;
  for (std::size_t i = 0; i < distances.size(); i += kStep) sample.push_back(distances[i]);
  // Four standard deviations of the number of sampled elements among the nearest.
  const double expected = static_cast<double>(count) / kStep;
  const auto rank = static_cast<std::size_t>(expected + 4.0 * std::sqrt(expected) + 4.0);
  if (2 * rank > sample.size()) return std::numeric_limits<double>::infinity();
  std::nth_element(sample.begin(), sample.begin() + static_cast<std::ptrdiff_t>(rank),
                   sample.end());
  return sample[rank];
}

/// The elements within `bound`; without a branch on the distances, which no processor can predict.
std::vector<QVNeighbour> CollectWithin(const std::vector<double>& distances, double bound,
                                       double leastDistance) {
  constexpr std::size_t kBlock = 256;
  QVNeighbour block[kBlock];
  std::vector<QVNeighbour> candidates;
  for (std::size_t first = 0; first < distances.size(); first += kBlock) {
    const std::size_t end = std::min(first + kBlock, distances.size());
    std::size_t size = 0;
    for (std::size_t i = first; i < end; ++i) {
      block[size] = {distances[i], i};
      const bool within = distances[i] <= bound;
      const bool admitted = std::abs(distances[i]) >= leastDistance;
      size += static_cast<std::size_t>(within & admitted);
    }
    candidates.insert(candidates.end(), block, block + size);
  }
  return candidates;
}

}  // namespace

std::vector<QVNeighbour> QVSelectNearest(const std::vector<double>& distances, std::size_t count,
                                         bool leaveOutIdentical) {
  const double least = leaveOutIdentical ? kKrigeIdenticalDistance : 0.0;
  const double unbounded = std::numeric_limits<double>::infinity();
  const double bound = EstimateBound(distances, count);
  std::vector<QVNeighbour> candidates = CollectWithin(distances, bound, least);
  if (candidates.size() < count && bound < unbounded)
    candidates = CollectWithin(distances, unbounded, least);
  const auto nearer = [](const QVNeighbour& a, const QVNeighbour& b) {
    return a.distance < b.distance || (a.distance == b.distance && a.index < b.index);
  };
  if (count < candidates.size()) {
    const auto end = candidates.begin() + static_cast<std::ptrdiff_t>(count);
    std::nth_element(candidates.begin(), end, candidates.end(), nearer);
    candidates.erase(end, candidates.end());
  }
  std::sort(candidates.begin(), candidates.end(), nearer);
  return candidates;
}

}  // namespace QVStats
