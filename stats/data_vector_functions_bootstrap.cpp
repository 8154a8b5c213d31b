#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

#include "platform/system/cast.h"
#include "platform/system/error_handler.h"
#include "stats/api/data_vector_bootstrap.h"
#include "stats/api/data_vector_functions.h"
#include "stats/api/data_vector_pairs.h"
#include "stats/api/pdf.h"
#include "stats/api/stats_data_types.h"
#include "stats/failure.h"
#include "stats/quantile_position.h"
#include "stats/ranking.h"

namespace QVStats {

namespace {

using Pairs = std::vector<std::pair<double, double>>;
using QVStatsBadData::BadDouble;

/// Positions 0 ... n - 1; n is at least 1.
QVMath::QVUniformIntRNG MakeGenerator(std::size_t n) {
  return QVMath::QVUniformIntRNG(
      0, QVSystem::QVIntFromUnsignedChecked(QVSystem::QVUnsignedFromCountChecked(n - 1)));
}

template <class T>
void Resample(QVMath::QVRanNumEngine& engine, std::vector<T>& sample, const std::vector<T>& data) {
  sample.clear();
  if (data.empty()) return;
  sample.reserve(data.size());
  const QVMath::QVUniformIntRNG generator = MakeGenerator(data.size());
  for (std::size_t i = 0; i < data.size(); ++i)
    sample.push_back(data[QVSystem::QVUnsignedFromIntChecked(generator(engine))]);
}

template <class T>
QVStatModelResult ResampleData(const char* where, QVMath::QVRanNumEngine& engine,
                               std::vector<T>& sample, const std::vector<T>& data) {
  Resample(engine, sample, data);
  if (data.empty()) return QVFailure(QVStatModelFailureType::NoData, where);
  return true;
}

/// Draws numReplicates samples by `draw` and appends `compute` of each.
template <class Value, class Datum, class Draw, class Compute>
QVStatModelResult Bootstrap(const char* where, std::vector<Value>& stats,
                            QVMath::QVRanNumEngine& engine, const std::vector<Datum>& data,
                            std::size_t numReplicates, Draw draw, Compute compute) {
  stats.clear();
  stats.reserve(numReplicates);
  std::vector<Datum> sample;
  for (std::size_t replicate = 0; replicate < numReplicates; ++replicate) {
    QVStatModelResult result = draw(engine, sample, data);
    if (QVFailedIn(result, where)) return result;
    stats.push_back(compute(sample));
  }
  return true;
}

/// A bootstrap sample as the number of times that each of the sorted data was drawn.
class CountedSample {
 public:
  explicit CountedSample(const std::vector<double>& data)
      : sorted_(data.size()), positions_(data.size()), counts_(data.size()) {
    const QVRanking ranking = QVRankValues(data);
    for (std::uint32_t k = 0; k < data.size(); ++k) {
      sorted_[k] = data[ranking.order[k]];
      positions_[ranking.order[k]] = k;
    }
  }

  void Draw(const QVMath::QVUniformIntRNG& generator, QVMath::QVRanNumEngine& engine) {
    std::fill(counts_.begin(), counts_.end(), 0u);
    generator.Draw(engine, size(), [counts = counts_.data(), positions = positions_.data()](int i) {
      ++counts[positions[static_cast<std::size_t>(i)]];
    });
    next_ = numBelow_ = 0;
  }

  std::size_t size() const { return sorted_.size(); }

  /// The k-th smallest value drawn, k from 1 to n; k must not fall between calls.
  double operator()(std::size_t k) {
    constexpr std::size_t kBlock = 16;
    for (; next_ + kBlock <= counts_.size(); next_ += kBlock) {
      std::uint32_t number = 0;
      for (std::size_t i = 0; i < kBlock; ++i) number += counts_[next_ + i];
      if (numBelow_ + number >= k) break;
      numBelow_ += number;
    }
    while (numBelow_ + counts_[next_] < k) numBelow_ += counts_[next_++];
    return sorted_[next_];
  }

  double GetQuantile(double p) {
    constexpr unsigned int kQuantileType = 8;
    return QVReadQuantile(QVFindQuantile(p, size(), kQuantileType), size(), *this);
  }

  /// The sum of the k-th to the l-th smallest value.
  double Sum(std::size_t k, std::size_t l) {
    (*this)(k);
    const std::size_t first = next_;
    // Values below position k that are equal to it, and the same at the upper end.
    const double dropped = static_cast<double>(k - 1 - numBelow_) * sorted_[first];
    (*this)(l);
    const std::size_t last = next_;
    const double added = static_cast<double>(l - numBelow_) * sorted_[last];
    double sums[4] = {0.0, 0.0, 0.0, 0.0};
    std::size_t i = first;
    for (; i + 4 <= last; i += 4)
      for (std::size_t lane = 0; lane < 4; ++lane)
        sums[lane] += static_cast<std::int32_t>(counts_[i + lane]) * sorted_[i + lane];
    for (; i < last; ++i) sums[0] += counts_[i] * sorted_[i];
    return ((sums[0] + sums[1]) + (sums[2] + sums[3])) + (added - dropped);
  }

 private:
  std::vector<double> sorted_;
  std::vector<std::uint32_t> positions_;  // of each datum among the sorted
  std::vector<std::uint32_t> counts_;
  std::size_t next_ = 0;      // the position last read
  std::size_t numBelow_ = 0;  // draws at positions before it
};

double TrimmedMeanOf(CountedSample& sample, double fraction) {
  const std::size_t n = sample.size(), k = QVGetNumTrimmed(fraction, n);
  if (k == n) return BadDouble;
  return sample.Sum(k + 1, n - k) / QVSystem::QVDoubleFromCount(n - 2 * k);
}

double InterQuartileRangeOf(CountedSample& sample) {
  const double lower = sample.GetQuantile(0.25);
  return sample.GetQuantile(0.75) - lower;
}

double RangeOf(CountedSample& sample) {
  const double smallest = sample(1);
  return sample(sample.size()) - smallest;
}

bool IsReadOffCounts(unsigned int code, std::size_t n) {
  namespace Type = QVSampleStatisticType;
  switch (code) {
    case Type::TrimmedMean:
    case Type::Median:
    case Type::Quantile:
    case Type::Min:
    case Type::Max:
      return n >= 1;
    case Type::Range:
    case Type::InterQuartileRange:
      return n >= 2;
    default:
      return false;
  }
}

double ReadOffCounts(CountedSample& sample, unsigned int code, double parameter) {
  namespace Type = QVSampleStatisticType;
  switch (code) {
    case Type::TrimmedMean:
      return TrimmedMeanOf(sample, parameter);
    case Type::Median:
      return sample.GetQuantile(0.5);
    case Type::Quantile:
      return sample.GetQuantile(parameter);
    case Type::Min:
      return sample(1);
    case Type::Max:
      return sample(sample.size());
    case Type::Range:
      return RangeOf(sample);
    default:
      return InterQuartileRangeOf(sample);
  }
}

bool HasNaN(const std::vector<double>& data) {
  return std::any_of(data.begin(), data.end(), [](double value) { return std::isnan(value); });
}

bool IsUsable(double value) { return std::isfinite(value) && std::abs(value) < BadDouble; }

/// The acceleration: a sixth of the skewness of what each datum's absence does to the statistic.
/// NaN when one of these cannot be computed.
double GetAcceleration(const QVSampleStatistic& statistic, const std::vector<double>& data) {
  const std::size_t n = data.size();
  std::vector<double> left(data.begin() + 1, data.end()), values(n);
  double mean = 0.0;
  for (std::size_t i = 0; i < n; ++i) {
    values[i] = statistic(left);
    if (!IsUsable(values[i])) return std::numeric_limits<double>::quiet_NaN();
    mean += values[i] / QVSystem::QVDoubleFromCount(n);
    if (i + 1 < n) left[i] = data[i];
  }
  double squares = 0.0, cubes = 0.0;
  for (const double value : values) {
    const double d = mean - value;
    squares += d * d;
    cubes += d * d * d;
  }
  return squares > 0.0 ? cubes / (6.0 * squares * std::sqrt(squares)) : 0.0;
}

/// A quantile of the replicates, their ends where there is none.
double GetReplicateQuantile(double p, const std::vector<double>& sorted) {
  const double q = QVQuantile(p, sorted, 8);
  return IsUsable(q) ? q : (p < 0.5 ? sorted.front() : sorted.back());
}

/// The share of sorted values below x, equal ones counting one half, kept off 0 and 1.
double GetShareBelow(double x, const std::vector<double>& sorted) {
  const auto [low, high] = std::equal_range(sorted.begin(), sorted.end(), x);
  const double n = QVSystem::QVDoubleFromCount(sorted.size());
  const double halves = static_cast<double>((low - sorted.begin()) + (high - sorted.begin()));
  return std::clamp(0.5 * halves / n, 0.5 / n, 1.0 - 0.5 / n);
}

}  // namespace

void QVGetOneBootstrapSampleFromDataVec(QVMath::QVRanNumEngine& engine, std::vector<double>& sample,
                                        const std::vector<double>& data) {
  Resample(engine, sample, data);
}

void QVGetOneBootstrapSampleFromDataPairVec(QVMath::QVRanNumEngine& engine, Pairs& sample,
                                            const Pairs& data) {
  Resample(engine, sample, data);
}

QVStatModelResult QVGetBootstrapSampleForDataVec(QVMath::QVRanNumEngine& engine,
                                                 std::vector<double>& sample,
                                                 const std::vector<double>& data) {
  return ResampleData("QVGetBootstrapSampleForDataVec", engine, sample, data);
}

QVStatModelResult QVGetBootstrapSampleForDataPairVec(QVMath::QVRanNumEngine& engine, Pairs& sample,
                                                     const Pairs& data) {
  QVSystem::QVThrow.Fatal("Bad implementation--need to fix!");
  return ResampleData("QVGetBootstrapSampleForDataPairVec", engine, sample, data);
}

QVStatModelResult QVBootstrapSampleStatisticForDataVec(std::vector<double>& stats,
                                                       QVMath::QVRanNumEngine& engine,
                                                       unsigned int statisticCode,
                                                       const std::vector<double>& data,
                                                       std::size_t numReplicates) {
  return QVBootstrapSampleStatisticForDataVec(stats, engine, statisticCode, 0.0, data,
                                              numReplicates);
}

QVStatModelResult QVBootstrapSampleStatisticForDataVec(std::vector<double>& stats,
                                                       QVMath::QVRanNumEngine& engine,
                                                       unsigned int statisticCode, double parameter,
                                                       const std::vector<double>& data,
                                                       std::size_t numReplicates) {
  if (!IsReadOffCounts(statisticCode, data.size()) || HasNaN(data))
    return Bootstrap("QVBootstrapSampleStatisticForDataVec", stats, engine, data, numReplicates,
                     QVGetBootstrapSampleForDataVec, QVSampleStatistic(statisticCode, parameter));
  stats.resize(numReplicates);
  CountedSample sample(data);
  const QVMath::QVUniformIntRNG generator = MakeGenerator(data.size());
  for (double& value : stats) {
    sample.Draw(generator, engine);
    value = ReadOffCounts(sample, statisticCode, parameter);
  }
  return true;
}

QVStatModelResult QVBootstrapTwoSampleStatisticForDataPairVec(std::vector<double>& stats,
                                                              QVMath::QVRanNumEngine& engine,
                                                              unsigned int statisticCode,
                                                              const Pairs& data,
                                                              std::size_t numReplicates) {
  const char* const where = "QVBootstrapTwoSampleStatisticForDataPairVec";
  if (data.empty()) return QVFailure(QVStatModelFailureType::NoData, where);
  return Bootstrap(where, stats, engine, data, numReplicates, QVGetBootstrapSampleForDataPairVec,
                   QVTwoSampleStatistic(statisticCode));
}

QVStatModelResult QVBootstrapTwoSamplePairStatisticForDataPairVec(Pairs& stats,
                                                                  QVMath::QVRanNumEngine& engine,
                                                                  unsigned int statisticCode,
                                                                  const Pairs& data,
                                                                  std::size_t numReplicates) {
  const char* const where = "QVBootstrapTwoSamplePairStatisticForDataPairVec";
  if (data.empty()) return QVFailure(QVStatModelFailureType::NoData, where);
  const QVTwoSamplePairStatistic statistic(statisticCode);
  return Bootstrap(where, stats, engine, data, numReplicates, QVGetBootstrapSampleForDataPairVec,
                   [&](const Pairs& sample) { return statistic.GetPairStatistic(sample); });
}

QVStatModelResult QVGetBootstrapConfidenceInterval(double& lower, double& upper,
                                                   QVMath::QVRanNumEngine& engine,
                                                   QVBootstrapInterval interval, double level,
                                                   unsigned int statisticCode, double parameter,
                                                   const std::vector<double>& data,
                                                   std::size_t numReplicates) {
  const char* const where = "QVGetBootstrapConfidenceInterval";
  lower = upper = BadDouble;
  if (data.empty()) return QVFailure(QVStatModelFailureType::NoData, where);
  if (!(level > 0.0 && level < 1.0) || numReplicates == 0)
    return QVFailure(QVStatModelFailureType::ArgumentOutOfRange, where)
           << "level, number of replicates = " << level << "; " << numReplicates;
  const QVSampleStatistic statistic(statisticCode, parameter);
  const double value = statistic(data);
  std::vector<double> stats;
  QVStatModelResult result = QVBootstrapSampleStatisticForDataVec(stats, engine, statisticCode,
                                                                  parameter, data, numReplicates);
  if (QVFailedIn(result, where)) return result;
  if (!IsUsable(value) || !std::all_of(stats.begin(), stats.end(), IsUsable))
    return QVFailure(QVStatModelFailureType::ArgumentValueWrong, where)
           << statistic.GetSampleStatisticsName();
  std::sort(stats.begin(), stats.end());
  double pLower = 0.5 * (1.0 - level), pUpper = 0.5 * (1.0 + level);
  if (interval == QVBootstrapInterval::BiasCorrectedAccelerated) {
    const double acceleration = GetAcceleration(statistic, data);
    if (std::isnan(acceleration))
      return QVFailure(QVStatModelFailureType::ArgumentValueWrong, where)
             << statistic.GetSampleStatisticsName();
    const QVUniVarPDF gaussian = QVUnivariateGaussian("z", 0.0, 1.0, result);
    const double bias = gaussian.GetPercentile(GetShareBelow(value, stats), result);
    for (double* p : {&pLower, &pUpper}) {
      const double shifted = bias + gaussian.GetPercentile(*p, result);
      *p = gaussian.GetCDF(bias + shifted / (1.0 - acceleration * shifted), result, true);
    }
    if (QVFailedIn(result, where)) return result;
  }
  lower = GetReplicateQuantile(pLower, stats);
  upper = GetReplicateQuantile(pUpper, stats);
  return true;
}

}  // namespace QVStats
