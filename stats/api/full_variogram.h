/// \file
/// \brief The variogram with every pair of every bin kept.
#ifndef QVSTATS_API_FULL_VARIOGRAM_H
#define QVSTATS_API_FULL_VARIOGRAM_H

#include <memory>
#include <utility>
#include <vector>

#include "stats/api/export.h"

namespace QVStats {

/// Bins in order of increasing distance, each a list of pairs: distance and half squared
/// difference. An index past the end, of a bin or within one, is a fatal report and yields 0.
class QVSTATS_EXPORT QVFullVariogramBase {
 public:
  virtual ~QVFullVariogramBase();
  virtual unsigned int GetNumBins() const = 0;
  virtual unsigned int GetNumBinElements(unsigned int bin) const = 0;
  virtual double GetDistance(unsigned int bin, unsigned int pair) const = 0;
  virtual double GetHalfSquaredDifference(unsigned int bin, unsigned int pair) const = 0;
  virtual QVFullVariogramBase* CreateCopy() const = 0;
};

/// A full variogram that is built bin by bin.
class QVSTATS_EXPORT QVFullVariogramImpl : public QVFullVariogramBase {
 public:
  unsigned int GetNumBins() const override;
  unsigned int GetNumBinElements(unsigned int bin) const override;
  double GetDistance(unsigned int bin, unsigned int pair) const override;
  double GetHalfSquaredDifference(unsigned int bin, unsigned int pair) const override;
  QVFullVariogramImpl* CreateCopy() const override;

  /// Appends a bin. Lists of different lengths are a warning and add nothing.
  void Push(const std::vector<double>& distances, const std::vector<double>& halfSquaredDiffs);
  void Clear();

 private:
  struct Bin {
    std::vector<double> distances;
    std::vector<double> halfSquaredDiffs;
  };
  std::vector<Bin> bins_;
};

/// A value that behaves as a copy of the full variogram it was made from; copies of it share the
/// pairs, which never change.
class QVSTATS_EXPORT QVFullVariogram : public QVFullVariogramBase {
 public:
  /// No bins.
  QVFullVariogram();
  QVFullVariogram(const QVFullVariogramBase& variogram);  // NOLINT: implicit, as QVVariogram's
  QVFullVariogram(const QVFullVariogram& other) = default;
  QVFullVariogram& operator=(const QVFullVariogram& other) = default;

  unsigned int GetNumBins() const override;
  unsigned int GetNumBinElements(unsigned int bin) const override;
  double GetDistance(unsigned int bin, unsigned int pair) const override;
  double GetHalfSquaredDifference(unsigned int bin, unsigned int pair) const override;
  /// A copy of the variogram behind this one, not of the handle.
  QVFullVariogramBase* CreateCopy() const override;

 private:
  std::shared_ptr<const QVFullVariogramBase> variogram_;
};

/// Bins (distance, difference) pairs as QVSetupVariogram does for a QVVariogramImpl. With `sort`
/// the pairs are sorted in place, O(P log P).
/// \return false when there are no pairs, or none but those of a zero-distance bin.
QVSTATS_EXPORT bool QVSetupVariogram(QVFullVariogramImpl& variogram,
                                     std::vector<std::pair<double, double>>& pairs, bool sort);

}  // namespace QVStats

#endif  // QVSTATS_API_FULL_VARIOGRAM_H
