#include "stats/api/data_vector_functions.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <limits>

#include "platform/system/cast.h"
#include "stats/api/stats_data_types.h"
#include "stats/quantile_position.h"
#include "stats/sample_sums.h"

namespace QVStats {

namespace {

using Sample = std::vector<double>;
using QVStatsBadData::BadDouble;

constexpr double kLowest = std::numeric_limits<double>::lowest();
constexpr unsigned int kQuantileType = 8;

double CountOf(const Sample& x) { return QVSystem::QVDoubleFromCount(x.size()); }

/// The sum of f(x_i).
template <class Function>
double Sum(const double* x, std::size_t n, Function f) {
  return QVSumTerms(0, n, [x, f](std::size_t i) { return f(x[i]); });
}

template <class Function>
double MeanOf(const Sample& x, Function f) {
  return Sum(x.data(), x.size(), f) / CountOf(x);
}

double Mean(const Sample& x) {
  return MeanOf(x, [](double value) { return value; });
}

/// sum (x - mean)^2, free of the error that the rounding of the mean makes.
double SumOfSquaredDeviations(const Sample& x) {
  const double mean = Mean(x);
  const double squares =
      Sum(x.data(), x.size(), [mean](double value) { return (value - mean) * (value - mean); });
  const double rest = Sum(x.data(), x.size(), [mean](double value) { return value - mean; });
  return squares - rest * rest / CountOf(x);
}

double CentralMoment(const Sample& x, double mean, int power) {
  return MeanOf(x, [mean, power](double value) {
    const double d = value - mean;
    return power == 2 ? d * d : power == 3 ? d * d * d : (d * d) * (d * d);
  });
}

/// The type's offset m; NaN for an unknown type.
double GetQuantileOffset(double p, unsigned int type) {
  switch (type) {
    case 1:
    case 2:
    case 4:
      return 0.0;
    case 3:
      return -0.5;
    case 5:
      return 0.5;
    case 6:
      return p;
    case 7:
      return 1.0 - p;
    case 8:
      return (p + 1.0) / 3.0;
    case 9:
      return (2.0 * p + 3.0) * 0.125;
    default:
      return std::numeric_limits<double>::quiet_NaN();
  }
}

/// Turns the share of types 1 to 3 into the one that picks what they say.
double GetShare(double g, std::size_t n, unsigned int type) {
  if (type > 3) return g;
  if (g != 0.0) return 1.0;
  if (type == 2) return 0.5;
  return type == 3 && n % 2 != 0 ? 1.0 : 0.0;
}

bool HasNaN(const Sample& x) {
  return std::any_of(x.begin(), x.end(), [](double value) { return std::isnan(value); });
}

/// A sample whose k-th smallest values are asked for in ascending order, each found by selection
/// among what lies above the one before.
class Selection {
 public:
  explicit Selection(Sample x) : x_(std::move(x)) {}

  double operator()(std::size_t k) {
    const auto nth = x_.begin() + static_cast<std::ptrdiff_t>(k - 1);
    if (k > done_) {
      std::nth_element(x_.begin() + static_cast<std::ptrdiff_t>(done_), nth, x_.end());
      done_ = k;
    }
    return *nth;
  }

  double GetQuantile(double p) {
    const auto at = [this](std::size_t k) { return (*this)(k); };
    return QVReadQuantile(QVFindQuantile(p, x_.size(), kQuantileType), x_.size(), at);
  }

  const Sample& GetValues() const { return x_; }

 private:
  Sample x_;
  std::size_t done_ = 0;
};

double Null(const Sample&, double) { return BadDouble; }

double MeanStatistic(const Sample& x, double) { return Mean(x); }

double TrimmedMean(const Sample& x, double fraction) {
  const std::size_t k = QVGetNumTrimmed(fraction, x.size());
  if (k == x.size()) return BadDouble;
  const std::size_t kept = x.size() - 2 * k;
  Selection selection(x);
  selection(k + 1);
  selection(k + kept);
  const auto identity = [](double value) { return value; };
  return Sum(selection.GetValues().data() + k, kept, identity) / QVSystem::QVDoubleFromCount(kept);
}

double Quantile(const Sample& x, double p) { return Selection(x).GetQuantile(p); }

double Median(const Sample& x, double) { return Quantile(x, 0.5); }

double Min(const Sample& x, double) { return *std::min_element(x.begin(), x.end()); }

double Max(const Sample& x, double) { return *std::max_element(x.begin(), x.end()); }

double Range(const Sample& x, double) {
  const auto [smallest, largest] = std::minmax_element(x.begin(), x.end());
  return *largest - *smallest;
}

double Variance(const Sample& x, double) { return SumOfSquaredDeviations(x) / (CountOf(x) - 1.0); }

double RootMeanSquareVal(const Sample& x, double) {
  return std::sqrt(MeanOf(x, [](double value) { return value * value; }));
}

double RootMeanSquareDev(const Sample& x, double) {
  return std::sqrt(SumOfSquaredDeviations(x) / CountOf(x));
}

double MeanAbsoluteDev(const Sample& x, double) {
  const double mean = Mean(x);
  return MeanOf(x, [mean](double value) { return std::abs(value - mean); });
}

double MedianAbsoluteDev(const Sample& x, double) {
  const double median = Quantile(x, 0.5);
  Sample deviations(x);
  for (double& value : deviations) value = std::abs(value - median);
  return Quantile(deviations, 0.5);
}

double InterQuartileRange(const Sample& x, double) {
  Selection selection(x);
  const double lower = selection.GetQuantile(0.25);
  return selection.GetQuantile(0.75) - lower;
}

double Skewness(const Sample& x, double) {
  const double mean = Mean(x);
  const double m2 = CentralMoment(x, mean, 2);
  return m2 == 0.0 ? BadDouble : CentralMoment(x, mean, 3) / (std::sqrt(m2) * m2);
}

double Kurtosis(const Sample& x, double) {
  const double mean = Mean(x);
  const double m2 = CentralMoment(x, mean, 2);
  return m2 == 0.0 ? BadDouble : CentralMoment(x, mean, 4) / (m2 * m2) - 3.0;
}

template <unsigned int Code>
QVSampleStatisticBase* CreatePlain(double) {
  return new QVPlainSampleStatistic<Code>;
}

template <unsigned int Code>
QVSampleStatisticBase* CreateWithParameter(double parameter) {
  return new QVParameterSampleStatistic<Code>(parameter);
}

struct StatisticRow {
  const char* name;
  std::size_t smallestSize;
  /// Whether it depends on the order of the values, so that a NaN has no place.
  bool isOrderStatistic;
  double (*compute)(const Sample& x, double parameter);
  QVSampleStatisticBase* (*create)(double parameter);
};

/// At each code its statistic.
constexpr StatisticRow kStatistics[] = {
    {"Null Statistic: Always returns a bad double", 0, false, Null, CreatePlain<0>},
    {"Sample Mean", 1, false, MeanStatistic, CreatePlain<1>},
    {"Trimmed Sample Mean", 1, true, TrimmedMean, CreateWithParameter<2>},
    {"Sample Median", 1, true, Median, CreatePlain<3>},
    {"Sample Quantile", 1, true, Quantile, CreateWithParameter<4>},
    {"Sample Min", 1, true, Min, CreatePlain<5>},
    {"Sample Max", 1, true, Max, CreatePlain<6>},
    {"Range of sample", 2, true, Range, CreatePlain<7>},
    {"Sample Variance", 2, false, Variance, CreatePlain<8>},
    {"Sample Root Mean Squared of Values", 2, false, RootMeanSquareVal, CreatePlain<9>},
    {"Sample Root Mean Squared Deviations from Mean", 2, false, RootMeanSquareDev, CreatePlain<10>},
    {"Sample Mean of Absolute Deviations from Mean", 2, false, MeanAbsoluteDev, CreatePlain<11>},
    {"Sample Median of Absolute Deviations from Median", 1, true, MedianAbsoluteDev,
     CreatePlain<12>},
    {"InterQuartile range of sample", 2, true, InterQuartileRange, CreatePlain<13>},
    {"Skewness of Sample", 3, false, Skewness, CreatePlain<14>},
    {"Kurtosis of Sample", 3, false, Kurtosis, CreatePlain<15>},
};
static_assert(std::size(kStatistics) == QVSampleStatisticType::NumTypes);

double Compute(unsigned int code, const Sample& x, double parameter) {
  const StatisticRow& row = kStatistics[code];
  if (x.size() < row.smallestSize) return BadDouble;
  if (row.isOrderStatistic && HasNaN(x)) return std::numeric_limits<double>::quiet_NaN();
  return row.compute(x, parameter);
}

}  // namespace

QVQuantilePosition QVFindQuantile(double p, std::size_t size, unsigned int type) {
  if (size == 0 || !(p <= 1.0)) return {0, 0.0, BadDouble};
  const double n = QVSystem::QVDoubleFromCount(size);
  if (p < 1.0 / n) return {0, 0.0, kLowest};
  const double h = n * p + GetQuantileOffset(p, type);
  if (std::isnan(h)) return {0, 0.0, BadDouble};
  const double below = std::floor(h);
  return {static_cast<std::size_t>(below), GetShare(h - below, size, type), 0.0};
}

std::size_t QVGetNumTrimmed(double fraction, std::size_t n) {
  const double size = QVSystem::QVDoubleFromCount(n);
  const double dropped = QVSystem::QVRoundHalfEven(fraction * 0.5 * size);
  return dropped >= 0.0 && 2.0 * dropped < size ? static_cast<std::size_t>(dropped) : n;
}

QVSampleStatisticBase::~QVSampleStatisticBase() = default;

template <unsigned int Code>
QVPlainSampleStatistic<Code>* QVPlainSampleStatistic<Code>::CreateCopy() const {
  return new QVPlainSampleStatistic(*this);
}

template <unsigned int Code>
std::string QVPlainSampleStatistic<Code>::GetSampleStatisticsName() const {
  return kStatistics[Code].name;
}

template <unsigned int Code>
double QVPlainSampleStatistic<Code>::operator()(const Sample& sample) const {
  return Compute(Code, sample, 0.0);
}

template <unsigned int Code>
QVParameterSampleStatistic<Code>* QVParameterSampleStatistic<Code>::CreateCopy() const {
  return new QVParameterSampleStatistic(*this);
}

template <unsigned int Code>
std::string QVParameterSampleStatistic<Code>::GetSampleStatisticsName() const {
  return kStatistics[Code].name;
}

template <unsigned int Code>
double QVParameterSampleStatistic<Code>::operator()(const Sample& sample) const {
  return Compute(Code, sample, parameter_);
}

template class QVPlainSampleStatistic<0>;
template class QVPlainSampleStatistic<1>;
template class QVParameterSampleStatistic<2>;
template class QVPlainSampleStatistic<3>;
template class QVParameterSampleStatistic<4>;
template class QVPlainSampleStatistic<5>;
template class QVPlainSampleStatistic<6>;
template class QVPlainSampleStatistic<7>;
template class QVPlainSampleStatistic<8>;
template class QVPlainSampleStatistic<9>;
template class QVPlainSampleStatistic<10>;
template class QVPlainSampleStatistic<11>;
template class QVPlainSampleStatistic<12>;
template class QVPlainSampleStatistic<13>;
template class QVPlainSampleStatistic<14>;
template class QVPlainSampleStatistic<15>;

QVSampleStatisticBase* QVGetSampleStatistic(unsigned int code, double parameter) {
  const unsigned int known = code < std::size(kStatistics) ? code : QVSampleStatisticType::Null;
  return kStatistics[known].create(parameter);
}

QVSampleStatistic::QVSampleStatistic(unsigned int code) : QVSampleStatistic(code, 0.0) {}
QVSampleStatistic::QVSampleStatistic(unsigned int code, double parameter)
    : statistic_(QVGetSampleStatistic(code, parameter)) {}
unsigned int QVSampleStatistic::GetSampleStatisticsType() const {
  return statistic_->GetSampleStatisticsType();
}
std::string QVSampleStatistic::GetSampleStatisticsName() const {
  return statistic_->GetSampleStatisticsName();
}
double QVSampleStatistic::operator()(const Sample& sample) const { return (*statistic_)(sample); }

double QVGetSampleStatisticForDataVec(QVStatModelResult& result, unsigned int code,
                                      const Sample& sample) {
  return QVGetSampleStatisticForDataVec(result, code, 0.0, sample);
}

double QVGetSampleStatisticForDataVec(QVStatModelResult& result, unsigned int code,
                                      double parameter, const Sample& sample) {
  result = true;
  return QVSampleStatistic(code, parameter)(sample);
}

double QVQuantile(double p, const Sample& sorted, unsigned int type) {
  return QVReadQuantile(QVFindQuantile(p, sorted.size(), type), sorted.size(),
                        [&sorted](std::size_t k) { return sorted[k - 1]; });
}

void QVGetCenterAndScale(double& center, double& scale, bool robust, const Sample& data) {
  center = data.empty() ? 0.0 : data.front();
  scale = 1.0;
  if (data.size() < 2) return;
  if (!robust) {
    center = Mean(data);
    scale = std::sqrt(Variance(data, 0.0));
    return;
  }
  const std::size_t middle = data.size() / 2;
  center = data.size() % 2 == 1 ? data[middle] : (data[middle - 1] + data[middle]) * 0.5;
  scale = (QVQuantile(0.75, data, kQuantileType) - QVQuantile(0.25, data, kQuantileType)) *
          0.7413008347047398;
}

void QVGetXloXhiForSortedData(double& xlo, double& xhi, const Sample& sorted, double lo,
                              double hi) {
  xlo = sorted.empty() ? 0.0 : std::min(lo, sorted.front());
  xhi = sorted.empty() ? 0.0 : std::max(hi, sorted.back());
}

}  // namespace QVStats
