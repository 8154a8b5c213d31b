#include "platform/likeness/vsepr_index.h"

#include <algorithm>
#include <limits>
#include <type_traits>

namespace QVLikeness {

namespace {

/// A feature of at least one fingerprint in so many gets a column: adding a list costs about as
/// much for each entry as adding a column does for this many.
constexpr std::size_t kColumnShare = 16;

bool HasCountsOnly(const QVVseprFingerprint& fingerprint) {
  const auto isCount = [](double weight) {
    return weight >= 1.0 && weight <= std::numeric_limits<std::uint32_t>::max() &&
           weight == static_cast<double>(static_cast<std::uint32_t>(weight));
  };
  const std::vector<double>& weights = fingerprint.GetWeights();
  return std::all_of(weights.begin(), weights.end(), isCount);
}

/// shared[i] += min(column[i], weight). Separate, so that the compiler sees plain arrays without
/// overlap and uses vector instructions.
void AddColumn(const std::uint8_t* __restrict column, std::size_t size, std::uint8_t weight,
               std::uint16_t* __restrict shared) {
  for (std::size_t i = 0; i < size; ++i)
    shared[i] = static_cast<std::uint16_t>(shared[i] + std::min(column[i], weight));
}

void AddColumn(const std::vector<std::uint8_t>& column, std::uint16_t weight,
               std::uint16_t* shared) {
  // No entry of a column is above 255, so neither is a minimum.
  constexpr std::uint16_t limit = std::numeric_limits<std::uint8_t>::max();
  AddColumn(column.data(), column.size(), static_cast<std::uint8_t>(std::min(weight, limit)),
            shared);
}

void AddColumn(const std::vector<std::uint8_t>& column, double weight, double* shared) {
  // A fingerprint without the feature shares nothing, also with a negative weight.
  for (std::size_t i = 0; i < column.size(); ++i)
    shared[i] += column[i] == 0 ? 0.0 : std::min(static_cast<double>(column[i]), weight);
}

}  // namespace

std::size_t QVVseprIndex::FindSlot(std::uint64_t code) const {
  const std::size_t mask = table_.size() - 1;
  std::size_t slot = static_cast<std::size_t>(code) & mask;
  while (table_[slot].feature != 0 && table_[slot].code != code) slot = (slot + 1) & mask;
  return slot;
}

void QVVseprIndex::ResizeTable(std::size_t slots) {
  table_.assign(slots, {0, 0});
  for (std::size_t i = 0; i < features_.size(); ++i)
    table_[FindSlot(features_[i].code)] = {features_[i].code, static_cast<std::uint32_t>(i + 1)};
}

QVVseprIndex::Feature& QVVseprIndex::GetFeature(std::uint64_t code) {
  if (2 * (features_.size() + 1) > table_.size())
    ResizeTable(std::max<std::size_t>(1024, 2 * table_.size()));
  Slot& slot = table_[FindSlot(code)];
  if (slot.feature == 0) {
    features_.push_back({code, 0, {}, {}});
    slot = {code, static_cast<std::uint32_t>(features_.size())};
  }
  return features_[slot.feature - 1];
}

void QVVseprIndex::Add(const QVVseprFingerprint& fingerprint) {
  const std::size_t position = volumes_.size();
  volumes_.push_back(fingerprint.GetVolume());
  if (!HasCountsOnly(fingerprint)) {
    others_.push_back({position, fingerprint});
    return;
  }
  for (std::size_t i = 0; i < fingerprint.GetNumFeatures(); ++i) {
    Feature& feature = GetFeature(fingerprint.GetCodes()[i]);
    ++feature.occurrences;
    const Posting posting{static_cast<std::uint32_t>(position),
                          static_cast<std::uint32_t>(fingerprint.GetWeights()[i])};
    if (feature.column.empty() || !feature.MoveToColumn(posting))
      feature.postings.push_back(posting);
  }
  if (volumes_.size() < nextColumns_) return;
  MakeColumns();
  nextColumns_ = volumes_.size() + volumes_.size() / 4;
}

bool QVVseprIndex::Feature::MoveToColumn(const Posting& posting) {
  if (posting.weight > std::numeric_limits<std::uint8_t>::max()) return false;
  if (column.size() <= posting.position) column.resize(posting.position + std::size_t{1});
  column[posting.position] = static_cast<std::uint8_t>(posting.weight);
  return true;
}

void QVVseprIndex::MakeColumns() {
  for (Feature& feature : features_) {
    if (!feature.column.empty() || feature.occurrences * kColumnShare < volumes_.size()) continue;
    const auto moves = [&](const Posting& posting) { return feature.MoveToColumn(posting); };
    feature.postings.erase(std::remove_if(feature.postings.begin(), feature.postings.end(), moves),
                           feature.postings.end());
  }
}

template <class Sum>
void QVVseprIndex::AddShared(const QVVseprFingerprint& query, Sum* shared) const {
  if (table_.empty()) return;
  // In the order of the codes, as a merge adds, so that real weights give the same bits too.
  for (std::size_t i = 0; i < query.GetNumFeatures(); ++i) {
    const std::uint32_t number = table_[FindSlot(query.GetCodes()[i])].feature;
    if (number == 0) continue;
    const Feature& feature = features_[number - 1];
    const Sum weight = static_cast<Sum>(query.GetWeights()[i]);
    AddColumn(feature.column, weight, shared);
    using Wide = std::common_type_t<Sum, std::uint32_t>;
    for (const Posting& posting : feature.postings)
      shared[posting.position] =
          static_cast<Sum>(shared[posting.position] + std::min<Wide>(posting.weight, weight));
  }
}

template <class Sum, class Finish>
void QVVseprIndex::Compare(const QVVseprFingerprint& query, double* results, Finish finish) const {
  std::vector<Sum> shared(volumes_.size());
  AddShared(query, shared.data());
  const double volume = query.GetVolume();
  for (std::size_t i = 0; i < shared.size(); ++i)
    results[i] = finish(QVTanimotoFromSums(static_cast<double>(shared[i]), volume, volumes_[i]));
  for (const Other& other : others_)
    results[other.position] = finish(query.GetTanimoto(other.fingerprint));
}

template <class Finish>
void QVVseprIndex::Dispatch(const QVVseprFingerprint& query, double* results, Finish finish) const {
  // No sum is above the volume of the query.
  if (!HasCountsOnly(query))
    Compare<double>(query, results, finish);
  else if (query.GetVolume() <= std::numeric_limits<std::uint16_t>::max())
    Compare<std::uint16_t>(query, results, finish);
  else
    Compare<double>(query, results, finish);
}

void QVVseprIndex::GetTanimotos(const QVVseprFingerprint& query, double* tanimotos) const {
  Dispatch(query, tanimotos, [](double tanimoto) { return tanimoto; });
}

void QVVseprIndex::GetDistances(const QVVseprFingerprint& query, double* distances) const {
  Dispatch(query, distances, [](double tanimoto) { return 1.0 - tanimoto; });
}

}  // namespace QVLikeness
