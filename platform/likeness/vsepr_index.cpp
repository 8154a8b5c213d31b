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

/// Separate, so that the compiler sees plain arrays without overlap and uses vector instructions.
template <class Sum, class Weight>
void AddColumn(const std::uint8_t* __restrict column, std::size_t size, Weight weight,
               Sum* __restrict shared) {
  for (std::size_t i = 0; i < size; ++i)
    shared[i] = static_cast<Sum>(shared[i] + std::min(static_cast<Weight>(column[i]), weight));
}

void AddColumn(const std::uint8_t* column, std::size_t size, double weight, double* shared) {
  // A fingerprint without the feature shares nothing, also with a negative weight.
  for (std::size_t i = 0; i < size; ++i)
    shared[i] += column[i] == 0 ? 0.0 : std::min(static_cast<double>(column[i]), weight);
}

template <class Sum>
void AddColumn(const std::vector<std::uint8_t>& column, Sum weight, Sum* shared) {
  // No entry of a column is above 255, so neither is a minimum.
  AddColumn(
      column.data(), column.size(),
      static_cast<std::uint8_t>(std::min<Sum>(weight, std::numeric_limits<std::uint8_t>::max())),
      shared);
}

void AddColumn(const std::vector<std::uint8_t>& column, double weight, double* shared) {
  AddColumn(column.data(), column.size(), weight, shared);
}

}  // namespace

std::size_t QVVseprIndex::FindSlot(std::uint64_t code) const {
  const std::size_t mask = table_.size() - 1;
  std::size_t slot = static_cast<std::size_t>(code) & mask;
  while (table_[slot] != 0 && features_[table_[slot] - 1].code != code) slot = (slot + 1) & mask;
  return slot;
}

void QVVseprIndex::ResizeTable(std::size_t slots) {
  table_.assign(slots, 0);
  for (std::size_t i = 0; i < features_.size(); ++i)
    table_[FindSlot(features_[i].code)] = static_cast<std::uint32_t>(i + 1);
}

QVVseprIndex::Feature& QVVseprIndex::GetFeature(std::uint64_t code) {
  if (2 * (features_.size() + 1) > table_.size())
    ResizeTable(std::max<std::size_t>(1024, 2 * table_.size()));
  std::uint32_t& entry = table_[FindSlot(code)];
  if (entry == 0) {
    features_.push_back({code, 0, {}, {}});
    entry = static_cast<std::uint32_t>(features_.size());
  }
  return features_[entry - 1];
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
    feature.postings.push_back({static_cast<std::uint32_t>(position),
                                static_cast<std::uint32_t>(fingerprint.GetWeights()[i])});
    ++feature.occurrences;
  }
  if (volumes_.size() < nextFill_) return;
  FillColumns();
  nextFill_ = volumes_.size() + volumes_.size() / 2;
}

void QVVseprIndex::FillColumns() {
  for (Feature& feature : features_) {
    if (feature.occurrences * kColumnShare < volumes_.size()) continue;
    feature.column.resize(volumes_.size());
    const auto moves = [&](const Posting& posting) {
      if (posting.weight > std::numeric_limits<std::uint8_t>::max()) return false;
      feature.column[posting.position] = static_cast<std::uint8_t>(posting.weight);
      return true;
    };
    feature.postings.erase(std::remove_if(feature.postings.begin(), feature.postings.end(), moves),
                           feature.postings.end());
  }
}

template <class Sum>
void QVVseprIndex::AddShared(const QVVseprFingerprint& query, Sum* shared) const {
  if (table_.empty()) return;
  // In the order of the codes, as a merge adds, so that real weights give the same bits too.
  for (std::size_t i = 0; i < query.GetNumFeatures(); ++i) {
    const std::uint32_t entry = table_[FindSlot(query.GetCodes()[i])];
    if (entry == 0) continue;
    const Feature& feature = features_[entry - 1];
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
