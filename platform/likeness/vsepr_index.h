/// \file
/// \brief One VSEPR fingerprint against many, in one pass.
///
/// An inverted index holds, for each feature, the fingerprints that have it: as a list where they
/// are few, as a column of one byte for each fingerprint where they are many. A query reads only
/// its own features, so it costs the features it shares instead of a merge for each fingerprint.
#ifndef QV_PLATFORM_LIKENESS_VSEPR_INDEX_H
#define QV_PLATFORM_LIKENESS_VSEPR_INDEX_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/likeness/export.h"
#include "platform/likeness/vsepr.h"

namespace QVLikeness {

/// A growing list of fingerprints. A value type; const operations may run in parallel.
class QVLIKENESS_EXPORT QVVseprIndex {
 public:
  /// Appends a fingerprint; its position is the size before.
  void Add(const QVVseprFingerprint& fingerprint);

  std::size_t GetSize() const { return volumes_.size(); }
  void Clear() { *this = QVVseprIndex(); }

  /// Writes, for each position i, the bits of `query.GetTanimoto(fingerprint i)` to `tanimotos[i]`.
  void GetTanimotos(const QVVseprFingerprint& query, double* tanimotos) const;

  /// The same complemented, 1 - Tanimoto.
  void GetDistances(const QVVseprFingerprint& query, double* distances) const;

 private:
  /// A fingerprint that has a feature, and the weight it has there.
  struct Posting {
    std::uint32_t position;
    std::uint32_t weight;
  };

  /// Where a feature occurs. The column reaches up to the last fingerprint it was filled for; later
  /// ones stand in the list, and so do weights that do not fit a byte.
  struct Feature {
    std::uint64_t code;
    std::size_t occurrences;
    std::vector<Posting> postings;
    std::vector<std::uint8_t> column;
  };

  /// A fingerprint whose weights are not all counts; it is compared by itself.
  struct Other {
    std::size_t position;
    QVVseprFingerprint fingerprint;
  };

  /// The slot of a code in the table, or the empty slot where it would go.
  std::size_t FindSlot(std::uint64_t code) const;
  Feature& GetFeature(std::uint64_t code);
  void ResizeTable(std::size_t slots);
  void FillColumns();
  template <class Sum>
  void AddShared(const QVVseprFingerprint& query, Sum* shared) const;
  template <class Sum, class Finish>
  void Compare(const QVVseprFingerprint& query, double* results, Finish finish) const;
  template <class Finish>
  void Dispatch(const QVVseprFingerprint& query, double* results, Finish finish) const;

  std::vector<Feature> features_;
  /// A hash table with open addressing: number of the feature plus 1, or 0 for an empty slot.
  std::vector<std::uint32_t> table_;
  std::vector<double> volumes_;
  std::vector<Other> others_;
  std::size_t nextFill_ = 64;
};

}  // namespace QVLikeness

#endif  // QV_PLATFORM_LIKENESS_VSEPR_INDEX_H
