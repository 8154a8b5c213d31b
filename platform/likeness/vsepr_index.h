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

  /// Where a feature occurs. The column of a frequent one has a weight for each position up to the
  /// last occurrence; what does not fit a byte stands in the list.
  struct Feature {
    /// \return false when the weight does not fit.
    bool MoveToColumn(const Posting& posting);

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

  /// An entry of the hash table: the number of a feature plus 1, or 0 when it is empty.
  struct Slot {
    std::uint64_t code;
    std::uint32_t feature;
  };

  /// The slot of a code in the table, or the empty slot where it would go.
  std::size_t FindSlot(std::uint64_t code) const;
  Feature& GetFeature(std::uint64_t code);
  void ResizeTable(std::size_t slots);
  void MakeColumns();
  template <class Sum>
  void AddShared(const QVVseprFingerprint& query, Sum* shared) const;
  template <class Sum, class Finish>
  void Compare(const QVVseprFingerprint& query, double* results, Finish finish) const;
  template <class Finish>
  void Dispatch(const QVVseprFingerprint& query, double* results, Finish finish) const;

  std::vector<Feature> features_;
  std::vector<Slot> table_;  // open addressing
  std::vector<double> volumes_;
  std::vector<Other> others_;
  std::size_t nextColumns_ = 64;
};

}  // namespace QVLikeness

#endif  // QV_PLATFORM_LIKENESS_VSEPR_INDEX_H
