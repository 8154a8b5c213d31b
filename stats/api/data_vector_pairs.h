/// \file
/// \brief Statistics of a sample of pairs (x, y).
///
/// A sample is a vector of n clean pairs in any order: missing and bad data have been removed. A
/// statistic that cannot be computed is the bad double, QVStatsBadData::BadDouble. Below, mx and my
/// are the means, Sxx = sum (x - mx)^2 / n, Syy and Sxy alike, and eps = 2^-52.
#ifndef QVSTATS_API_DATA_VECTOR_PAIRS_H
#define QVSTATS_API_DATA_VECTOR_PAIRS_H

#include <string>
#include <utility>
#include <vector>

#include "platform/opt/function.h"
#include "platform/system/copy_ptr.h"
#include "stats/api/export.h"
#include "stats/api/stat_model.h"

namespace QVStats {

/// Statistics that are one number. For n < 2 the moments S are the bad double, which the formulas
/// of the covariance, the Pearson correlation, the slope and R squared carry on.
namespace QVTwoSampleStatisticType {
/// Always the bad double.
inline constexpr unsigned int Null = 0;
/// Sxy: the divisor is n.
inline constexpr unsigned int Covariance = 1;
/// Sxy / sqrt(Sxx Syy); the bad double when Sxx or Syy is below eps.
inline constexpr unsigned int PearsonCorrelation = 2;
/// Of y on x, Sxy / Sxx; the bad double when Sxx is below eps.
inline constexpr unsigned int RegressionSlope = 3;
/// The distance correlation of stats/api/data_vector_independence.h; O(n log n).
inline constexpr unsigned int DistanceCorrelation = 4;
/// The distance covariance test statistic of the same header; O(n log n).
inline constexpr unsigned int DistanceCovarTestStat = 5;
/// The Pearson correlation of the ranks; equal values share the mean of their ranks. An empty
/// sample is a fatal report and gives the bad double; a NaN gives NaN.
inline constexpr unsigned int SpearmanRho = 6;
/// tau-b, (C - D) / sqrt((N - Ty)(N - Tx)): N pairs of pairs, of which C agree in order, D
/// disagree, and Tx and Ty are tied. 0/0 or 1/0 when all are tied. O(n log n). Source: W. R.
/// Knight, "A Computer Method for Calculating Kendall's Tau with Ungrouped Data", J. Am. Stat.
/// Assoc. 61(314), 1966, doi:10.2307/2282833.
inline constexpr unsigned int KendallTau = 7;
/// Sxy^2 / (Sxx Syy); the bad double when Sxx or Syy is below eps.
inline constexpr unsigned int RSquared = 8;
inline constexpr unsigned int NumTypes = 9;
}  // namespace QVTwoSampleStatisticType

/// Statistics that are two numbers; both are the bad double when they cannot be computed.
namespace QVTwoSamplePairStatisticType {
/// Always the bad pair.
inline constexpr unsigned int Null = 0;
/// (mx, my); n >= 1.
inline constexpr unsigned int Means = 1;
/// (Sxx, Syy) n / (n - 1); n >= 2.
inline constexpr unsigned int Variances = 2;
/// Intercept my - slope mx and slope Sxy / Sxx of the least-squares line; n >= 2, Sxx >= eps.
inline constexpr unsigned int OLSRegression = 3;
/// Intercept and slope of the line whose floor(n/2) + 1 closest points lie in the narrowest strip,
/// found by a golden-section search from a slope of 0, or of -1 when 0 lies below both 1 and -1;
/// n >= 4. The bad pair where the search cannot begin: 0 is no better than slopes 1 and -1. Source:
/// P. J. Rousseeuw, "Least Median of Squares Regression", J. Am. Stat. Assoc. 79(388), 1984,
/// doi:10.2307/2288718.
inline constexpr unsigned int LMSRegression = 4;
/// t = sqrt(n (n - 1) / SS) d of the differences y - x, with d their mean and SS = sum (y - x -
/// d)^2, and the upper tail 1 - F(t) of Student's t with n - 1 degrees of freedom; n >= 2.
inline constexpr unsigned int PairedTTest = 5;
inline constexpr unsigned int NumTypes = 6;
}  // namespace QVTwoSamplePairStatisticType

/// A statistic of pairs as a function object.
class QVSTATS_EXPORT QVTwoSampleStatisticBase {
 public:
  virtual ~QVTwoSampleStatisticBase();
  /// A new copy that the caller owns.
  virtual QVTwoSampleStatisticBase* CreateCopy() const = 0;
  /// \return a code of QVTwoSampleStatisticType.
  virtual unsigned int GetTwoSampleStatisticsType() const = 0;
  virtual std::string GetTwoSampleStatisticsName() const = 0;
  virtual double operator()(const std::vector<std::pair<double, double>>& pairs) const = 0;
};

/// A statistic of the family, by its code.
template <unsigned int Code>
class QVSTATS_EXPORT QVCodedTwoSampleStatistic : public QVTwoSampleStatisticBase {
 public:
  QVCodedTwoSampleStatistic* CreateCopy() const override;
  unsigned int GetTwoSampleStatisticsType() const override { return Code; }
  std::string GetTwoSampleStatisticsName() const override;
  double operator()(const std::vector<std::pair<double, double>>& pairs) const override;
};

using QVNullTwoSampleStatistic = QVCodedTwoSampleStatistic<QVTwoSampleStatisticType::Null>;
using QVTwoSampleCovariance = QVCodedTwoSampleStatistic<QVTwoSampleStatisticType::Covariance>;
using QVTwoSamplePearsonCorrelation =
    QVCodedTwoSampleStatistic<QVTwoSampleStatisticType::PearsonCorrelation>;
using QVTwoSampleRegressionSlope =
    QVCodedTwoSampleStatistic<QVTwoSampleStatisticType::RegressionSlope>;
using QVDistanceCorrelation =
    QVCodedTwoSampleStatistic<QVTwoSampleStatisticType::DistanceCorrelation>;
using QVDistanceCovarTestStat =
    QVCodedTwoSampleStatistic<QVTwoSampleStatisticType::DistanceCovarTestStat>;
using QVSpearmanRho = QVCodedTwoSampleStatistic<QVTwoSampleStatisticType::SpearmanRho>;
using QVKendallTau = QVCodedTwoSampleStatistic<QVTwoSampleStatisticType::KendallTau>;
using QVTwoSampleRSquared = QVCodedTwoSampleStatistic<QVTwoSampleStatisticType::RSquared>;

/// \param code of QVTwoSampleStatisticType; any other gives the null statistic.
/// \return a new statistic that the caller owns.
QVSTATS_EXPORT QVTwoSampleStatisticBase* QVGetTwoSampleStatistic(unsigned int code);

/// A statistic of pairs as a value.
class QVSTATS_EXPORT QVTwoSampleStatistic {
 public:
  explicit QVTwoSampleStatistic(unsigned int code);
  unsigned int GetTwoSampleStatisticsType() const;
  std::string GetTwoSampleStatisticsName() const;
  double operator()(const std::vector<std::pair<double, double>>& pairs) const;

 private:
  QVSystem::QVCopyPtr<QVTwoSampleStatisticBase> statistic_;
};

/// A statistic of two numbers as a function object.
class QVSTATS_EXPORT QVTwoSamplePairStatisticBase {
 public:
  virtual ~QVTwoSamplePairStatisticBase();
  /// A new copy that the caller owns.
  virtual QVTwoSamplePairStatisticBase* CreateCopy() const = 0;
  /// \return a code of QVTwoSamplePairStatisticType.
  virtual unsigned int GetTwoSamplePairStatisticsType() const = 0;
  virtual std::string GetTwoSamplePairStatisticsName() const = 0;
  virtual std::pair<double, double> GetPairStatistic(
      const std::vector<std::pair<double, double>>& pairs) const = 0;
};

/// A statistic of the family, by its code.
template <unsigned int Code>
class QVSTATS_EXPORT QVCodedTwoSamplePairStatistic : public QVTwoSamplePairStatisticBase {
 public:
  QVCodedTwoSamplePairStatistic* CreateCopy() const override;
  unsigned int GetTwoSamplePairStatisticsType() const override { return Code; }
  std::string GetTwoSamplePairStatisticsName() const override;
  std::pair<double, double> GetPairStatistic(
      const std::vector<std::pair<double, double>>& pairs) const override;
};

using QVNullTwoSamplePairStatistic =
    QVCodedTwoSamplePairStatistic<QVTwoSamplePairStatisticType::Null>;
using QVTwoSamplePairOfMeans = QVCodedTwoSamplePairStatistic<QVTwoSamplePairStatisticType::Means>;
using QVTwoSamplePairOfVariances =
    QVCodedTwoSamplePairStatistic<QVTwoSamplePairStatisticType::Variances>;
using QVInterceptSlopeOfOLSRegression =
    QVCodedTwoSamplePairStatistic<QVTwoSamplePairStatisticType::OLSRegression>;
using QVInterceptSlopeOfLMSRegression =
    QVCodedTwoSamplePairStatistic<QVTwoSamplePairStatisticType::LMSRegression>;
using QVPairedTTestStatAndPValue =
    QVCodedTwoSamplePairStatistic<QVTwoSamplePairStatisticType::PairedTTest>;

/// \param code of QVTwoSamplePairStatisticType; any other gives the null statistic.
/// \return a new statistic that the caller owns.
QVSTATS_EXPORT QVTwoSamplePairStatisticBase* QVGetTwoSamplePairStatistic(unsigned int code);

/// A statistic of two numbers as a value.
class QVSTATS_EXPORT QVTwoSamplePairStatistic {
 public:
  explicit QVTwoSamplePairStatistic(unsigned int code);
  unsigned int GetTwoSamplePairStatisticsType() const;
  std::string GetTwoSamplePairStatisticsName() const;
  std::pair<double, double> GetPairStatistic(
      const std::vector<std::pair<double, double>>& pairs) const;

 private:
  QVSystem::QVCopyPtr<QVTwoSamplePairStatisticBase> statistic_;
};

/// What the least-median-of-squares line minimises over its slope b: half the width of the
/// narrowest span of floor(n/2) + 1 sorted residuals y - b x. Remembers the last slope asked for.
class QVSTATS_EXPORT QVLMSSlopeFunctor : public QVOpt::QVFunc0 {
 public:
  /// Copies the pairs.
  explicit QVLMSSlopeFunctor(const std::vector<std::pair<double, double>>& pairs);
  /// 1.
  unsigned int NumVar() const override;
  /// Half the bad double without pairs.
  double operator()(const double* slope) override;
  /// None.
  QVSystem::QVIter<double> GetFComponents(const double* slope) override;
  ~QVLMSSlopeFunctor() override;
  /// The middle of the narrowest span, the first of equal ones; the bad double without pairs.
  double GetIntercept(const double* slope);

 private:
  void Update(double slope);

  double slope_;
  double intercept_;
  double value_;
  std::vector<std::pair<double, double>> pairs_;
  std::vector<double> residuals_;
};

/// Computes one statistic and sets the result to success. Without pairs the bad double is returned
/// and the result left as it was: test the value.
QVSTATS_EXPORT double QVGetTwoSampleStatisticForDataPairVec(
    QVStatModelResult& result, unsigned int code,
    const std::vector<std::pair<double, double>>& pairs);
/// Computes one statistic of two numbers. The result is always success.
QVSTATS_EXPORT std::pair<double, double> QVGetTwoSamplePairStatisticForDataPairVec(
    QVStatModelResult& result, unsigned int code,
    const std::vector<std::pair<double, double>>& pairs);

}  // namespace QVStats

#endif  // QVSTATS_API_DATA_VECTOR_PAIRS_H
