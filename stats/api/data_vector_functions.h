/// \file
/// \brief Statistics of one sample of doubles.
///
/// A sample is a vector of n clean values in any order: missing and bad data have been removed. A
/// statistic that cannot be computed is the bad double, QVStatsBadData::BadDouble; an order
/// statistic of a sample that holds a NaN is NaN.
#ifndef QVSTATS_API_DATA_VECTOR_FUNCTIONS_H
#define QVSTATS_API_DATA_VECTOR_FUNCTIONS_H

#include <string>
#include <vector>

#include "platform/system/copy_ptr.h"
#include "stats/api/export.h"
#include "stats/api/stat_model.h"

namespace QVStats {

/// The statistics, with m the mean and Q(p) the quantile QVQuantile(p, sorted sample, 8). In
/// brackets the smallest n.
namespace QVSampleStatisticType {
/// Always the bad double.
inline constexpr unsigned int Null = 0;
/// sum x / n [1].
inline constexpr unsigned int Mean = 1;
/// The mean of what is left when k = f n/2 values (rounded half to even; f is the parameter) are
/// dropped at each end [1]. The bad double when that drops them all.
inline constexpr unsigned int TrimmedMean = 2;
/// Q(0.5) [1]. The median of one value is what Q says: the lowest finite double.
inline constexpr unsigned int Median = 3;
/// Q(p), p the parameter [1].
inline constexpr unsigned int Quantile = 4;
inline constexpr unsigned int Min = 5;
inline constexpr unsigned int Max = 6;
/// Largest - smallest [2].
inline constexpr unsigned int Range = 7;
/// sum (x - m)^2 / (n - 1) [2].
inline constexpr unsigned int Variance = 8;
/// sqrt(sum x^2 / n) [2].
inline constexpr unsigned int RootMeanSquareVal = 9;
/// sqrt(sum (x - m)^2 / n) [2].
inline constexpr unsigned int RootMeanSquareDev = 10;
/// sum |x - m| / n [2].
inline constexpr unsigned int MeanAbsoluteDev = 11;
/// Q(0.5) of the values |x - Q(0.5)| [1].
inline constexpr unsigned int MedianAbsoluteDev = 12;
/// Q(0.75) - Q(0.25) [2].
inline constexpr unsigned int InterQuartileRange = 13;
/// m3 / m2^1.5 with the moments mk = sum (x - m)^k / n [3]. The bad double for equal values.
inline constexpr unsigned int Skewness = 14;
/// The excess m4 / m2^2 - 3 [3]. The bad double for equal values.
inline constexpr unsigned int Kurtosis = 15;
inline constexpr unsigned int NumTypes = 16;
}  // namespace QVSampleStatisticType

/// A statistic as a function object.
class QVSTATS_EXPORT QVSampleStatisticBase {
 public:
  virtual ~QVSampleStatisticBase();
  /// A new copy that the caller owns.
  virtual QVSampleStatisticBase* CreateCopy() const = 0;
  /// \return a code of QVSampleStatisticType.
  virtual unsigned int GetSampleStatisticsType() const = 0;
  virtual std::string GetSampleStatisticsName() const = 0;
  virtual double operator()(const std::vector<double>& sample) const = 0;
};

/// A statistic of the family, by its code. The template and its aliases below are one class each.
template <unsigned int Code>
class QVSTATS_EXPORT QVPlainSampleStatistic : public QVSampleStatisticBase {
 public:
  QVPlainSampleStatistic* CreateCopy() const override;
  unsigned int GetSampleStatisticsType() const override { return Code; }
  std::string GetSampleStatisticsName() const override;
  double operator()(const std::vector<double>& sample) const override;
};

/// The same with a parameter.
template <unsigned int Code>
class QVSTATS_EXPORT QVParameterSampleStatistic : public QVSampleStatisticBase {
 public:
  explicit QVParameterSampleStatistic(double parameter) : parameter_(parameter) {}
  QVParameterSampleStatistic* CreateCopy() const override;
  unsigned int GetSampleStatisticsType() const override { return Code; }
  std::string GetSampleStatisticsName() const override;
  double operator()(const std::vector<double>& sample) const override;

 private:
  double parameter_;
};

using QVNullSampleStatistic = QVPlainSampleStatistic<QVSampleStatisticType::Null>;
using QVSampleMean = QVPlainSampleStatistic<QVSampleStatisticType::Mean>;
/// The parameter is the fraction of the sample to drop, both ends together.
using QVTrimmedSampleMean = QVParameterSampleStatistic<QVSampleStatisticType::TrimmedMean>;
using QVSampleMedian = QVPlainSampleStatistic<QVSampleStatisticType::Median>;
/// The parameter is the probability.
using QVSampleQuantile = QVParameterSampleStatistic<QVSampleStatisticType::Quantile>;
using QVSampleMin = QVPlainSampleStatistic<QVSampleStatisticType::Min>;
using QVSampleMax = QVPlainSampleStatistic<QVSampleStatisticType::Max>;
using QVSampleRange = QVPlainSampleStatistic<QVSampleStatisticType::Range>;
using QVSampleVariance = QVPlainSampleStatistic<QVSampleStatisticType::Variance>;
using QVSampleRootMeanSquareVal = QVPlainSampleStatistic<QVSampleStatisticType::RootMeanSquareVal>;
using QVSampleRootMeanSquareDev = QVPlainSampleStatistic<QVSampleStatisticType::RootMeanSquareDev>;
using QVSampleMeanAbsoluteDev = QVPlainSampleStatistic<QVSampleStatisticType::MeanAbsoluteDev>;
using QVSampleMedianAbsoluteDev = QVPlainSampleStatistic<QVSampleStatisticType::MedianAbsoluteDev>;
using QVSampleInterQuartileRange =
    QVPlainSampleStatistic<QVSampleStatisticType::InterQuartileRange>;
using QVSampleSkewness = QVPlainSampleStatistic<QVSampleStatisticType::Skewness>;
using QVSampleKurtosis = QVPlainSampleStatistic<QVSampleStatisticType::Kurtosis>;

/// \param code of QVSampleStatisticType; any other gives the null statistic.
/// \param parameter of the trimmed mean or the quantile; the others ignore it.
/// \return a new statistic that the caller owns.
QVSTATS_EXPORT QVSampleStatisticBase* QVGetSampleStatistic(unsigned int code, double parameter);

/// A statistic as a value.
class QVSTATS_EXPORT QVSampleStatistic {
 public:
  /// The parameter is 0.
  explicit QVSampleStatistic(unsigned int code);
  QVSampleStatistic(unsigned int code, double parameter);

  unsigned int GetSampleStatisticsType() const;
  std::string GetSampleStatisticsName() const;
  double operator()(const std::vector<double>& sample) const;

 private:
  QVSystem::QVCopyPtr<QVSampleStatisticBase> statistic_;
};

/// Computes one statistic. The result is always success: a statistic that cannot be computed is the
/// bad double.
QVSTATS_EXPORT double QVGetSampleStatisticForDataVec(QVStatModelResult& result, unsigned int code,
                                                     const std::vector<double>& sample);
QVSTATS_EXPORT double QVGetSampleStatisticForDataVec(QVStatModelResult& result, unsigned int code,
                                                     double parameter,
                                                     const std::vector<double>& sample);

/// The quantile of a sample at probability p.
///
/// With a position h = n p + m, j = floor(h), g = h - j and x_j the j-th value (1-based; a position
/// outside 1..n is moved to the nearest end), the types are:
///
/// | type | m | quantile |
/// |---|---|---|
/// | 1 | 0 | x_j when g = 0, else x_{j+1} |
/// | 2 | 0 | (x_j + x_{j+1}) / 2 when g = 0, else x_{j+1} |
/// | 3 | -1/2 | x_j when g = 0 and n is even, else x_{j+1} |
/// | 4 | 0 | (1 - g) x_j + g x_{j+1} |
/// | 5 | 1/2 | as 4 |
/// | 6 | p | as 4 |
/// | 7 | 1 - p | as 4 |
/// | 8 | (p + 1)/3 | as 4 |
/// | 9 | (2p + 3)/8 | as 4 |
///
/// Source: R. J. Hyndman, Y. Fan, "Sample Quantiles in Statistical Packages", Am. Stat. 50(4),
/// 1996, doi:10.2307/2684934, but for type 3, whose parity is that of n and not of j, and for small
/// p, below.
///
/// \param sorted the sample in ascending order.
/// \return the lowest finite double when p < 1/n, the bad double without data, for p > 1 and for
/// any other type.
QVSTATS_EXPORT double QVQuantile(double p, const std::vector<double>& sorted, unsigned int type);

/// Location and scale of a sample; 0 and 1 without data, its value and 1 for a single value.
///
/// Robust: the middle value (the mean of the two middle ones when n is even) and
/// 0.7413008347047398 (Q(0.75) - Q(0.25)), which estimates the standard deviation of normal data;
/// the data must be sorted. Else the mean and sqrt(sum (x - mean)^2 / (n - 1)).
QVSTATS_EXPORT void QVGetCenterAndScale(double& center, double& scale, bool robust,
                                        const std::vector<double>& data);

/// The range of a plot: from the smaller of `lo` and the first value to the larger of `hi` and the
/// last. Both are 0 without data.
QVSTATS_EXPORT void QVGetXloXhiForSortedData(double& xlo, double& xhi,
                                             const std::vector<double>& sorted, double lo,
                                             double hi);

}  // namespace QVStats

#endif  // QVSTATS_API_DATA_VECTOR_FUNCTIONS_H
