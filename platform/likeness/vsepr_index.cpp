#include "platform/likeness/vsepr_index.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <limits>

namespace QVLikeness {

namespace {

/// A feature of at least one fingerprint in so many gets a column of the table: comparing a byte of
/// every row then costs less than adding up the list.
constexpr std::size_t kColumnShare = 6;
constexpr std::uint32_t kNoColumn = std::numeric_limits<std::uint32_t>::max();
constexpr std::uint32_t kLargestByte = std::numeric_limits<std::uint8_t>::max();
/// Rows are filled up with zeros to a multiple of the widest registers.
constexpr std::size_t kRowStep = 32;

/// A row is summarised by the sums of groups of its columns. Columns made one after the other stand
/// together: they come from the same molecules and tend to occur together, so that little is lost.
constexpr std::size_t kSummarySize = 32;
constexpr std::size_t GetGroup(std::size_t column) { return column / 8 % kSummarySize; }

bool HasCountsOnly(const QVVseprFingerprint& fingerprint) {
  const auto isCount = [](double weight) {
    return weight >= 1.0 && weight <= std::numeric_limits<std::uint32_t>::max() &&
           weight == static_cast<double>(static_cast<std::uint32_t>(weight));
  };
  const std::vector<double>& weights = fingerprint.GetWeights();
  return std::all_of(weights.begin(), weights.end(), isCount);
}

/// Whether nothing that the fingerprint shares exceeds 16 bits.
bool IsCounted(const QVVseprFingerprint& fingerprint) {
  return fingerprint.GetVolume() <= std::numeric_limits<std::uint16_t>::max() &&
         HasCountsOnly(fingerprint);
}

/// sums[i] = sum_k |row i [k] - query[k]|.
void SumDifferences(const std::uint8_t* rows, std::size_t size, std::size_t count,
                    const std::uint8_t* query, std::uint32_t* sums) {
  for (std::size_t i = 0; i < count; ++i, rows += size) {
    std::uint32_t sum = 0;
    for (std::size_t k = 0; k < size; ++k)
      sum += static_cast<std::uint32_t>(std::abs(int{rows[k]} - int{query[k]}));
    sums[i] = sum;
  }
}

/// The nearest of the fingerprints that are offered.
class NearestList {
 public:
  NearestList(std::size_t count, bool leaveOutEqual) : count_(count), leaveOut_(leaveOutEqual) {}

  /// What is farther than this is not taken.
  double GetReach() const { return reach_; }

  void Offer(double distance, std::size_t position) {
    if ((leaveOut_ && distance == 0.0) || count_ == 0) return;
    const QVVseprNeighbour offered{distance, position};
    if (list_.size() == count_) {
      if (!IsNearer(offered, list_.front())) return;
      std::pop_heap(list_.begin(), list_.end(), IsNearer);
      list_.back() = offered;
    } else {
      list_.push_back(offered);
    }
    std::push_heap(list_.begin(), list_.end(), IsNearer);
    if (list_.size() == count_) reach_ = list_.front().distance;
  }

  std::vector<QVVseprNeighbour> TakeInOrder() {
    std::sort_heap(list_.begin(), list_.end(), IsNearer);
    return std::move(list_);
  }

 private:
  static bool IsNearer(const QVVseprNeighbour& a, const QVVseprNeighbour& b) {
    const bool noNumberA = std::isnan(a.distance);
    const bool noNumberB = std::isnan(b.distance);
    if (noNumberA != noNumberB) return noNumberA;
    if (a.distance != b.distance && !noNumberA) return a.distance < b.distance;
    return a.position < b.position;
  }

  std::size_t count_;
  bool leaveOut_;
  double reach_ = std::numeric_limits<double>::infinity();
  std::vector<QVVseprNeighbour> list_;  // a heap, the farthest first
};

/// A number that at least `count` of the bounds are below, and not many more: the end of a class of
/// a histogram over their range, 0 to 1.
double FindCommonBound(const std::vector<double>& bounds, std::size_t count) {
  constexpr std::size_t kClasses = 256;
  std::array<std::size_t, kClasses + 1> histogram{};
  for (const double bound : bounds)
    ++histogram[bound <= 1.0 ? static_cast<std::size_t>(bound * kClasses) : kClasses];
  std::size_t last = 0;
  for (std::size_t sum = histogram[0]; sum < count && last < kClasses; sum += histogram[last])
    ++last;
  return static_cast<double>(last + 1) / kClasses;
}

}  // namespace

// ---- the features

std::size_t QVVseprIndex::FindSlot(std::uint64_t code) const {
  const std::size_t mask = slots_.size() - 1;
  std::size_t slot = static_cast<std::size_t>(code) & mask;
  while (slots_[slot].feature != 0 && slots_[slot].code != code) slot = (slot + 1) & mask;
  return slot;
}

const QVVseprIndex::Feature* QVVseprIndex::FindFeature(std::uint64_t code) const {
  if (slots_.empty()) return nullptr;
  const std::uint32_t number = slots_[FindSlot(code)].feature;
  return number == 0 ? nullptr : &features_[number - 1];
}

void QVVseprIndex::ResizeSlots(std::size_t slots) {
  slots_.assign(slots, {0, 0});
  for (std::size_t i = 0; i < features_.size(); ++i)
    slots_[FindSlot(features_[i].code)] = {features_[i].code, static_cast<std::uint32_t>(i + 1)};
}

QVVseprIndex::Feature& QVVseprIndex::GetFeature(std::uint64_t code) {
  if (2 * (features_.size() + 1) > slots_.size())
    ResizeSlots(std::max<std::size_t>(1024, 2 * slots_.size()));
  Slot& slot = slots_[FindSlot(code)];
  if (slot.feature == 0) {
    features_.push_back({code, 0, kNoColumn, {}});
    slot = {code, static_cast<std::uint32_t>(features_.size())};
  }
  return features_[slot.feature - 1];
}

void QVVseprIndex::Add(const QVVseprFingerprint& fingerprint) {
  const std::size_t position = volumes_.size();
  volumes_.push_back(fingerprint.GetVolume());
  rowVolumes_.push_back(0);
  rows_.resize(rows_.size() + rowSize_);
  summaries_.resize(summaries_.size() + kSummarySize);
  if (!HasCountsOnly(fingerprint)) {
    others_.push_back({position, fingerprint});
    return;
  }
  for (std::size_t i = 0; i < fingerprint.GetNumFeatures(); ++i) {
    Feature& feature = GetFeature(fingerprint.GetCodes()[i]);
    ++feature.occurrences;
    const Posting posting{static_cast<std::uint32_t>(position),
                          static_cast<std::uint32_t>(fingerprint.GetWeights()[i])};
    if (!MoveToRow(feature, posting)) feature.postings.push_back(posting);
  }
  if (volumes_.size() < nextColumns_) return;
  MakeColumns();
  nextColumns_ = volumes_.size() + volumes_.size() / 4;
}

/// \return false when the feature has no column, or the weight does not fit the row or its summary.
bool QVVseprIndex::MoveToRow(const Feature& feature, const Posting& posting) {
  if (feature.column == kNoColumn) return false;
  std::uint8_t& sum = summaries_[posting.position * kSummarySize + GetGroup(feature.column)];
  if (posting.weight > kLargestByte - sum) return false;
  sum = static_cast<std::uint8_t>(sum + posting.weight);
  rows_[posting.position * rowSize_ + feature.column] = static_cast<std::uint8_t>(posting.weight);
  rowVolumes_[posting.position] += posting.weight;
  return true;
}

/// Gives the features that have become frequent a column.
void QVVseprIndex::MakeColumns() {
  std::vector<Feature*> frequent;
  for (Feature& feature : features_)
    if (feature.column == kNoColumn && feature.occurrences * kColumnShare >= volumes_.size())
      frequent.push_back(&feature);
  ResizeRows(numColumns_ + frequent.size());
  for (Feature* const feature : frequent) {
    feature->column = numColumns_++;
    const auto moves = [&](const Posting& posting) { return MoveToRow(*feature, posting); };
    std::vector<Posting>& postings = feature->postings;
    postings.erase(std::remove_if(postings.begin(), postings.end(), moves), postings.end());
    postings.shrink_to_fit();
  }
}

void QVVseprIndex::ResizeRows(std::size_t numColumns) {
  const std::size_t size = (numColumns + kRowStep - 1) / kRowStep * kRowStep;
  if (size == rowSize_) return;
  std::vector<std::uint8_t> rows;
  // As much slack as there is time until the next change.
  rows.reserve((volumes_.size() + volumes_.size() / 4) * size);
  rows.resize(volumes_.size() * size);
  for (std::size_t i = 0; i < volumes_.size(); ++i)
    std::copy_n(rows_.begin() + static_cast<std::ptrdiff_t>(i * rowSize_), rowSize_,
                rows.begin() + static_cast<std::ptrdiff_t>(i * size));
  rows_ = std::move(rows);
  rowSize_ = size;
}

// ---- all distances

QVVseprIndex::Counts QVVseprIndex::Count(const QVVseprFingerprint& query) const {
  Counts counts{std::vector<std::uint16_t>(volumes_.size()), std::vector<std::uint8_t>(rowSize_), 0,
                std::vector<std::uint8_t>(kSummarySize), 0};
  // Most lists are short and wait for memory; asked for early, they do so together.
  std::vector<const Feature*> features;
  features.reserve(query.GetNumFeatures());
  for (const std::uint64_t code : query.GetCodes()) features.push_back(FindFeature(code));
  for (const Feature* const feature : features)
    if (feature) __builtin_prefetch(feature->postings.data());
  for (std::size_t i = 0; i < features.size(); ++i) {
    const Feature* const feature = features[i];
    if (!feature) continue;
    const auto weight = static_cast<std::uint32_t>(query.GetWeights()[i]);
    for (const Posting& posting : feature->postings) {
      std::uint16_t& shared = counts.shared[posting.position];
      shared = static_cast<std::uint16_t>(shared + std::min(posting.weight, weight));
    }
    if (feature->column == kNoColumn) continue;
    // No byte of the table is above the largest, so neither is a minimum.
    const std::uint32_t inRow = std::min(weight, kLargestByte);
    counts.row[feature->column] = static_cast<std::uint8_t>(inRow);
    counts.rowVolume += inRow;
    std::uint8_t& sum = counts.summary[GetGroup(feature->column)];
    const std::uint32_t inSummary = std::min(inRow, kLargestByte - sum);
    sum = static_cast<std::uint8_t>(sum + inSummary);
    counts.summaryVolume += inSummary;
  }
  return counts;
}

/// sum min(a, b) = (sum a + sum b - sum |a - b|) / 2.
void QVVseprIndex::GetRowShares(const Counts& query, std::size_t first, std::size_t count,
                                std::uint32_t* shares) const {
  SumDifferences(rows_.data() + first * rowSize_, rowSize_, count, query.row.data(), shares);
  for (std::size_t i = 0; i < count; ++i)
    shares[i] = (query.rowVolume + rowVolumes_[first + i] - shares[i]) / 2;
}

/// What the query shares with each fingerprint, for weights of any kind. The sums run in the order
/// of the codes, as those of a merge, so that real weights give the same bits.
std::vector<double> QVVseprIndex::Share(const QVVseprFingerprint& query) const {
  std::vector<double> shared(volumes_.size());
  for (std::size_t i = 0; i < query.GetNumFeatures(); ++i) {
    const Feature* const feature = FindFeature(query.GetCodes()[i]);
    if (!feature) continue;
    const double weight = query.GetWeights()[i];
    for (const Posting& posting : feature->postings)
      shared[posting.position] += std::min(static_cast<double>(posting.weight), weight);
    if (feature->column == kNoColumn) continue;
    const std::uint8_t* entry = rows_.data() + feature->column;
    // A fingerprint without the feature shares nothing, also with a negative weight.
    for (std::size_t k = 0; k < shared.size(); ++k, entry += rowSize_)
      shared[k] += *entry == 0 ? 0.0 : std::min(static_cast<double>(*entry), weight);
  }
  return shared;
}

template <class Finish>
void QVVseprIndex::Compare(const QVVseprFingerprint& query, double* results, Finish finish) const {
  const double volume = query.GetVolume();
  const auto finishAt = [&](std::size_t i, double shared) {
    results[i] = finish(QVTanimotoFromSums(shared, volume, volumes_[i]));
  };
  if (IsCounted(query)) {
    const Counts counts = Count(query);
    std::vector<std::uint32_t> inRows(volumes_.size());
    GetRowShares(counts, 0, inRows.size(), inRows.data());
    for (std::size_t i = 0; i < inRows.size(); ++i) finishAt(i, counts.shared[i] + inRows[i]);
  } else {
    const std::vector<double> shared = Share(query);
    for (std::size_t i = 0; i < shared.size(); ++i) finishAt(i, shared[i]);
  }
  for (const Other& other : others_)
    results[other.position] = finish(query.GetTanimoto(other.fingerprint));
}

void QVVseprIndex::GetTanimotos(const QVVseprFingerprint& query, double* tanimotos) const {
  Compare(query, tanimotos, [](double tanimoto) { return tanimoto; });
}

void QVVseprIndex::GetDistances(const QVVseprFingerprint& query, double* distances) const {
  Compare(query, distances, [](double tanimoto) { return 1.0 - tanimoto; });
}

// ---- the nearest

/// What the distances from the query are at least. Sums of counts are exact and division rounds
/// monotonously, so that no bound is above its distance. Not a number for those that are compared
/// otherwise.
std::vector<double> QVVseprIndex::GetLowerBounds(const Counts& query, double volume) const {
  std::vector<double> bounds(volumes_.size());
  std::vector<std::uint32_t> differences(volumes_.size());
  SumDifferences(summaries_.data(), kSummarySize, bounds.size(), query.summary.data(),
                 differences.data());
  for (std::size_t i = 0; i < bounds.size(); ++i) {
    const std::uint32_t inRow = (query.summaryVolume + rowVolumes_[i] - differences[i]) / 2;
    // A weight that is too large for a row may stand in a list and in the query's row.
    const double most =
        std::min(static_cast<double>(query.shared[i] + inRow), std::min(volume, volumes_[i]));
    bounds[i] = 1.0 - QVTanimotoFromSums(most, volume, volumes_[i]);
  }
  for (const Other& other : others_)
    bounds[other.position] = std::numeric_limits<double>::quiet_NaN();
  return bounds;
}

std::vector<QVVseprNeighbour> QVVseprIndex::FindNearest(const QVVseprFingerprint& query,
                                                        std::size_t count,
                                                        bool leaveOutEqual) const {
  NearestList nearest(count, leaveOutEqual);
  if (!IsCounted(query)) {
    std::vector<double> distances(volumes_.size());
    GetDistances(query, distances.data());
    for (std::size_t i = 0; i < distances.size(); ++i) nearest.Offer(distances[i], i);
    return nearest.TakeInOrder();
  }
  for (const Other& other : others_)
    nearest.Offer(1.0 - query.GetTanimoto(other.fingerprint), other.position);
  const Counts counts = Count(query);
  const std::vector<double> bounds = GetLowerBounds(counts, query.GetVolume());
  const auto compare = [&](std::size_t i) {
    std::uint32_t inRow = 0;
    GetRowShares(counts, i, 1, &inRow);
    const double shared = counts.shared[i] + inRow;
    nearest.Offer(1.0 - QVTanimotoFromSums(shared, query.GetVolume(), volumes_[i]), i);
  };
  // Those with the lowest bounds come first: with them the reach is soon near its end.
  const double first = FindCommonBound(bounds, count);
  for (std::size_t i = 0; i < bounds.size(); ++i)
    if (bounds[i] < first) compare(i);
  for (std::size_t i = 0; i < bounds.size(); ++i)
    if (bounds[i] >= first && bounds[i] <= nearest.GetReach()) compare(i);
  return nearest.TakeInOrder();
}

}  // namespace QVLikeness
