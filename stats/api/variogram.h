/// \file
/// \brief The experimental variogram of a kriging model: how the difference of two responses grows
/// with the distance between their elements.
///
/// Pairs of training elements, each a distance d and a response difference delta, are binned by
/// distance; a bin holds the mean distance and the mean semivariance, delta^2 / 2, of its pairs.
/// Source: N. A. C. Cressie, "Statistics for Spatial Data", revised edition, 1993, section 2.4.
#ifndef QVSTATS_API_VARIOGRAM_H
#define QVSTATS_API_VARIOGRAM_H

#include <memory>
#include <utility>
#include <vector>

#include "stats/api/export.h"

namespace QVStats {

class QVFullVariogramBase;

/// Bins in order of increasing distance.
class QVSTATS_EXPORT QVVariogramBase {
 public:
  virtual ~QVVariogramBase();
  virtual unsigned int GetNumBins() const = 0;
  /// The mean distance of a bin, in the unit of the distance function. An index past the end is a
  /// fatal report and yields 0, here and below.
  virtual double GetDistance(unsigned int bin) const = 0;
  /// The mean of delta^2 / 2 over the pairs of a bin, in the squared unit of the response.
  virtual double GetSemivariance(unsigned int bin) const = 0;
  virtual QVVariogramBase* CreateCopy() const = 0;
};

/// A variogram that is built bin by bin.
class QVSTATS_EXPORT QVVariogramImpl : public QVVariogramBase {
 public:
  QVVariogramImpl() = default;
  /// A bin for each bin of `full`, with the means of its pairs.
  explicit QVVariogramImpl(const QVFullVariogramBase& full);

  unsigned int GetNumBins() const override;
  double GetDistance(unsigned int bin) const override;
  double GetSemivariance(unsigned int bin) const override;
  QVVariogramImpl* CreateCopy() const override;

  /// Appends a bin.
  void Push(double distance, double semivariance);
  void Clear();

 private:
  std::vector<double> distances_;
  std::vector<double> semivariances_;
};

/// A value that behaves as a copy of the variogram it was made from. It is immutable, so copies of
/// it share their bins.
class QVSTATS_EXPORT QVVariogram : public QVVariogramBase {
 public:
  /// No bins.
  QVVariogram();
  QVVariogram(const QVVariogramBase& variogram);  // NOLINT: any variogram may be passed as a value
  // Copies only: a variogram that was moved from would have nothing to read.
  QVVariogram(const QVVariogram& other) = default;
  QVVariogram& operator=(const QVVariogram& other) = default;

  unsigned int GetNumBins() const override;
  double GetDistance(unsigned int bin) const override;
  double GetSemivariance(unsigned int bin) const override;
  /// A copy of the variogram behind this one, not of the handle.
  QVVariogramBase* CreateCopy() const override;

 private:
  std::shared_ptr<const QVVariogramBase> variogram_;
};

/// Bins (distance, difference) pairs.
///
/// With P pairs in order, those at distance <= 1e-30 form a first bin when there are at least 50 of
/// them. The m others are cut into bins whose sizes double from m/15 (100 from m = 1500 on) up to
/// m/5; a tail that would not fill two more bins goes into the last ones, as one bin.
///
/// With `sort` the order is ascending by distance, then difference, and the order of `pairs` after
/// the call is unspecified: bins are found by selection, O(P) for distances that are spread evenly
/// and O(P log P) at worst. Without, the pairs are taken as they stand.
///
/// \return false when there are no pairs, or none but those of a zero-distance bin.
QVSTATS_EXPORT bool QVSetupVariogram(QVVariogramImpl& variogram,
                                     std::vector<std::pair<double, double>>& pairs, bool sort);

/// An estimate of the measurement variance: the nugget of a linear kernel fitted to the first third
/// of the bins, which is their semivariance extrapolated to distance 0. It is 0 where nothing can
/// be fitted.
QVSTATS_EXPORT double QVGetExperimentalVariance(const QVVariogramBase& variogram);

}  // namespace QVStats

#endif  // QVSTATS_API_VARIOGRAM_H
