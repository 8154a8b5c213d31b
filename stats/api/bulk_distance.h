/// \file
/// \brief Distances from one element to many stored ones, faster than one call a pair.
#ifndef QVSTATS_API_BULK_DISTANCE_H
#define QVSTATS_API_BULK_DISTANCE_H

#include <cstddef>
#include <vector>

namespace QVStats {

/// A stored element as seen from a query.
struct QVNeighbour {
  double distance;
  std::size_t index;
};

/// Elements stored for the question "how far is this one from each of you?". An implementation
/// may keep them in any form that answers fast: coordinates by columns, an inverted index.
template <class T>
class QVBulkDistance {
 public:
  /// Stores one more element; it gets the next position, counted from 0. The element may change or
  /// go away after the call.
  virtual void Add(const T& element) = 0;
  /// Writes to `distances[i]` the distance from `query` to stored element i, for all that are
  /// stored: equal to the last bit to what the distance function returns for the pair.
  virtual void GetDistances(const T& query, double* distances) const = 0;
  /// Finds the `count` stored elements nearest to `query`, or as many as there are, nearest first
  /// and of equally near ones the earlier first. An implementation may know a way that does not
  /// compute all distances; it must find what a sort of them gives, where one that is not a number
  /// counts as the nearest.
  /// \param leaveOutIdentical whether elements closer than 1e-30 are left out.
  /// \return false, with `nearest` as it was, where there is no such way.
  virtual bool FindNearest(const T& query, std::size_t count, bool leaveOutIdentical,
                           std::vector<QVNeighbour>& nearest) const {
    static_cast<void>(query), static_cast<void>(count), static_cast<void>(leaveOutIdentical),
        static_cast<void>(nearest);
    return false;
  }
  /// \return a new copy that the caller owns.
  virtual QVBulkDistance* CreateCopy() const = 0;
  virtual ~QVBulkDistance() = default;
};

/// A second base class of a `QVBinaryFunction<T, T, double>` that can answer in bulk. By deriving
/// from it a distance function also declares that it is symmetric, dist(a, b) == dist(b, a) to the
/// last bit, so that callers evaluate one orientation only.
template <class T>
class QVBulkDistanceSource {
 public:
  /// \return a new, empty store for this distance that the caller owns.
  virtual QVBulkDistance<T>* CreateBulkDistance() const = 0;

 protected:
  ~QVBulkDistanceSource() = default;
};

}  // namespace QVStats

#endif  // QVSTATS_API_BULK_DISTANCE_H
