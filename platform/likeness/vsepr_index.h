/// \file
/// \brief One VSEPR fingerprint against many, in one pass, and its nearest neighbours.
///
/// An inverted index holds, for each feature, the fingerprints that have it. The few features that
/// many fingerprints have stand in a table instead, a row of bytes for each fingerprint. A query
/// reads the lists of its own features and compares rows, so it costs neither a merge for each
/// fingerprint nor the length of the frequent features' lists.
///
/// Nearest neighbours need not even compare all rows. Two rows share in a group of columns at most
/// the smaller of their sums over the group; with what the lists say and the volumes of the
/// fingerprints this bounds the distance from below. Rows are compared only where the bound is
/// within the k-th distance so far. The idea of bounds from sizes: S. J. Swamidass, P. Baldi,
/// "Bounds and algorithms for fast exact searches of chemical fingerprints in linear and sublinear
/// time", J. Chem. Inf. Model. 47, 2007, 302, doi:10.1021/ci600358f.
#ifndef QV_PLATFORM_LIKENESS_VSEPR_INDEX_H
#define QV_PLATFORM_LIKENESS_VSEPR_INDEX_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/likeness/export.h"
#include "platform/likeness/vsepr.h"

namespace QVLikeness {

/// A stored fingerprint as seen from a query.
struct QVVseprNeighbour {
  double distance;  ///< 1 - Tanimoto
  std::size_t position;
};

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

  /// The `count` fingerprints nearest to `query`, or as many as there are, nearest first and of
  /// equally near ones the earlier first: exactly those that a sort of GetDistances gives. A
  /// distance that is not a number, which takes a weight that is none, counts as the nearest.
  /// \param leaveOutEqual whether fingerprints at distance 0 are left out.
  std::vector<QVVseprNeighbour> FindNearest(const QVVseprFingerprint& query, std::size_t count,
                                            bool leaveOutEqual) const;

 private:
  /// A fingerprint that has a feature, and the weight it has there.
  struct Posting {
    std::uint32_t position;
    std::uint32_t weight;
  };

  /// Where a feature occurs: in a column of the table if it has one, else, and where the weight
  /// does not fit a byte, in the list.
  struct Feature {
    std::uint64_t code;
    std::uint32_t occurrences;
    std::uint32_t column;
    std::vector<Posting> postings;
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

  /// A query of counts: what it shares with each fingerprint outside of the table, and its row.
  struct Counts {
    std::vector<std::uint16_t> shared;
    std::vector<std::uint8_t> row;
    std::uint32_t rowVolume;
    std::vector<std::uint8_t> summary;  // no sum above what a byte holds
    std::uint32_t summaryVolume;
  };

  /// The slot of a code in the hash table, or the empty slot where it would go.
  std::size_t FindSlot(std::uint64_t code) const;
  const Feature* FindFeature(std::uint64_t code) const;
  Feature& GetFeature(std::uint64_t code);
  void ResizeSlots(std::size_t slots);
  void ResizeRows(std::size_t numColumns);
  void MakeColumns();
  bool MoveToRow(const Feature& feature, const Posting& posting);

  Counts Count(const QVVseprFingerprint& query) const;
  /// What the rows of the query and of `count` positions share.
  void GetRowShares(const Counts& query, std::size_t first, std::size_t count,
                    std::uint32_t* shares) const;
  std::vector<double> Share(const QVVseprFingerprint& query) const;
  template <class Finish>
  void Compare(const QVVseprFingerprint& query, double* results, Finish finish) const;
  std::vector<double> GetLowerBounds(const Counts& query, double volume) const;

  std::vector<Feature> features_;
  std::vector<Slot> slots_;  // open addressing
  std::vector<double> volumes_;
  std::vector<Other> others_;
  std::vector<std::uint8_t> rows_;       // rowSize_ bytes a position
  std::vector<std::uint8_t> summaries_;  // of the rows
  std::vector<std::uint32_t> rowVolumes_;
  std::size_t rowSize_ = 0;
  std::uint32_t numColumns_ = 0;
  std::size_t nextColumns_ = 64;
};

}  // namespace QVLikeness

#endif  // QV_PLATFORM_LIKENESS_VSEPR_INDEX_H
