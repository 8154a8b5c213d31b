#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

#include "platform/system/cast.h"
#include "platform/system/error_handler.h"
#include "stats/api/data_vector_pairs.h"
#include "stats/api/minimizer.h"
#include "stats/api/pdf.h"
#include "stats/api/stats_data_types.h"
#include "stats/distance_covariance.h"
#include "stats/ranking.h"
#include "stats/sample_sums.h"

namespace QVStats {

namespace {

using Pairs = std::vector<std::pair<double, double>>;
using QVStatsBadData::BadDouble;
using QVSystem::QVDoubleFromCount;

constexpr double kEpsilon = std::numeric_limits<double>::epsilon();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr std::pair<double, double> kBadPair = {BadDouble, BadDouble};

/// Means and second moments about them, divided by n; the bad double where there are too few pairs.
struct Moments {
  double meanX = BadDouble;
  double meanY = BadDouble;
  double sxx = BadDouble;
  double syy = BadDouble;
  double sxy = BadDouble;
};

Moments GetMoments(const Pairs& pairs) {
  Moments m;
  const std::size_t n = pairs.size();
  if (n == 0) return m;
  const double count = QVDoubleFromCount(n);
  m.meanX = QVSumTerms(0, n, [&](std::size_t i) { return pairs[i].first; }) / count;
  m.meanY = QVSumTerms(0, n, [&](std::size_t i) { return pairs[i].second; }) / count;
  if (n == 1) return m;
  const auto dx = [&](std::size_t i) { return pairs[i].first - m.meanX; };
  const auto dy = [&](std::size_t i) { return pairs[i].second - m.meanY; };
  // What the rounding of the means leaves of the sums of the deviations.
  const double restX = QVSumTerms(0, n, dx), restY = QVSumTerms(0, n, dy);
  const auto moment = [&](auto a, auto b, double restA, double restB) {
    return (QVSumTerms(0, n, [&](std::size_t i) { return a(i) * b(i); }) - restA * restB / count) /
           count;
  };
  m.sxx = moment(dx, dx, restX, restX);
  m.syy = moment(dy, dy, restY, restY);
  m.sxy = moment(dx, dy, restX, restY);
  return m;
}

double CorrelationOf(const Moments& m) {
  if (m.sxx < kEpsilon || m.syy < kEpsilon) return BadDouble;
  return m.sxy / std::sqrt(m.sxx * m.syy);
}

double Null(const Pairs&) { return BadDouble; }

double Covariance(const Pairs& pairs) { return GetMoments(pairs).sxy; }

double PearsonCorrelation(const Pairs& pairs) { return CorrelationOf(GetMoments(pairs)); }

double RSquared(const Pairs& pairs) {
  const Moments m = GetMoments(pairs);
  if (m.sxx < kEpsilon || m.syy < kEpsilon) return BadDouble;
  return m.sxy * m.sxy / (m.sxx * m.syy);
}

double RegressionSlope(const Pairs& pairs) {
  const Moments m = GetMoments(pairs);
  return m.sxx < kEpsilon ? BadDouble : m.sxy / m.sxx;
}

/// One of the two variables; `Member` is &Pair::first or &Pair::second.
std::vector<double> Take(const Pairs& pairs, double std::pair<double, double>::*member) {
  std::vector<double> values(pairs.size());
  std::transform(pairs.begin(), pairs.end(), values.begin(),
                 [member](const auto& pair) { return pair.*member; });
  return values;
}

std::vector<double> TakeX(const Pairs& pairs) {
  return Take(pairs, &std::pair<double, double>::first);
}
std::vector<double> TakeY(const Pairs& pairs) {
  return Take(pairs, &std::pair<double, double>::second);
}

double DistanceCorrelation(const Pairs& pairs) {
  if (pairs.empty()) return 0.0;
  const double n = QVDoubleFromCount(pairs.size());
  QVDistanceCovariance covariance(TakeX(pairs), TakeY(pairs));
  return QVDistanceCorrelationOf(covariance.GetCrossSum() / (n * n),
                                 covariance.GetSumOfSquaresOfX() / (n * n),
                                 covariance.GetSumOfSquaresOfY() / (n * n));
}

double DistanceCovarTestStat(const Pairs& pairs) {
  if (pairs.empty()) return 0.0;
  QVDistanceCovariance covariance(TakeX(pairs), TakeY(pairs));
  return covariance.GetCrossSum() / QVDoubleFromCount(pairs.size());
}

bool HasNaN(const Pairs& pairs) {
  return std::any_of(pairs.begin(), pairs.end(), [](const auto& pair) {
    return std::isnan(pair.first) || std::isnan(pair.second);
  });
}

double SpearmanRho(const Pairs& pairs) {
  if (!QV_ASSERT(!pairs.empty())) return BadDouble;
  if (HasNaN(pairs)) return kNaN;
  const QVRanking x = QVRankValues(TakeX(pairs)), y = QVRankValues(TakeY(pairs));
  Pairs ranks(pairs.size());
  for (std::size_t i = 0; i < pairs.size(); ++i)
    ranks[i] = {x.GetMeanPosition(x.rank[i]), y.GetMeanPosition(y.rank[i])};
  return CorrelationOf(GetMoments(ranks));
}

double GetTau(double concordantMinusDiscordant, double numPairs, double tiesX, double tiesY) {
  return concordantMinusDiscordant / std::sqrt((numPairs - tiesY) * (numPairs - tiesX));
}

double GetNumPairsOf(std::size_t n) {
  return 0.5 * QVDoubleFromCount(n) * (QVDoubleFromCount(n) - 1.0);
}

/// By the sign of the product of the differences, whatever it is: infinities and NaN included.
double KendallTauOverAllPairs(const Pairs& pairs) {
  double difference = 0.0, tiesX = 0.0, tiesY = 0.0;
  for (std::size_t i = 0; i < pairs.size(); ++i)
    for (std::size_t j = i + 1; j < pairs.size(); ++j) {
      const double d = (pairs[j].first - pairs[i].first) * (pairs[j].second - pairs[i].second);
      if (d == 0.0) {
        tiesX += pairs[i].first == pairs[j].first;
        tiesY += pairs[i].second == pairs[j].second;
      } else {
        difference += (d > 0.0) - (d < 0.0);
      }
    }
  return GetTau(difference, GetNumPairsOf(pairs.size()), tiesX, tiesY);
}

/// The smallest step between distinct values; infinite for equal values, 0 where the values span
/// more than a double holds.
double GetSmallestStep(const std::vector<double>& values, const QVRanking& ranking) {
  const auto valueOf = [&](std::size_t rank) {
    return values[ranking.order[ranking.starts[rank]]];
  };
  const std::size_t numRanks = ranking.GetNumRanks();
  double smallest = std::numeric_limits<double>::infinity();
  if (!std::isfinite(valueOf(numRanks - 1) - valueOf(0))) return 0.0;
  for (std::size_t r = 1; r < numRanks; ++r)
    smallest = std::min(smallest, valueOf(r) - valueOf(r - 1));
  return smallest;
}

double KendallTau(const Pairs& pairs) {
  if (pairs.empty() || HasNaN(pairs)) return KendallTauOverAllPairs(pairs);
  const std::vector<double> xValues = TakeX(pairs), yValues = TakeY(pairs);
  const QVRanking x = QVRankValues(xValues), y = QVRankValues(yValues);
  // A product of differences that underflows reads as no difference.
  if (GetSmallestStep(xValues, x) * GetSmallestStep(yValues, y) == 0.0)
    return KendallTauOverAllPairs(pairs);
  // The ranks of y in the order of x; by y where x is tied, so that ties are no inversions.
  std::vector<std::uint32_t> next(x.starts.begin(), x.starts.end() - 1), sequence(pairs.size());
  for (const std::uint32_t i : y.order) sequence[next[x.rank[i]]++] = y.rank[i];
  std::uint64_t tiesInBoth = 0;
  for (std::size_t r = 0; r < x.GetNumRanks(); ++r) {
    std::uint64_t run = 0;
    for (std::size_t k = x.starts[r] + 1; k < x.starts[r + 1]; ++k) {
      run = sequence[k] == sequence[k - 1] ? run + 1 : 0;
      tiesInBoth += run;
    }
  }
  const double tiesX = QVDoubleFromCount(x.CountTies()), tiesY = QVDoubleFromCount(y.CountTies());
  const double discordant = QVDoubleFromCount(QVCountInversions(sequence));
  const double numPairs = GetNumPairsOf(pairs.size());
  const double difference =
      numPairs - tiesX - tiesY + QVDoubleFromCount(tiesInBoth) - 2.0 * discordant;
  return GetTau(difference, numPairs, tiesX, tiesY);
}

std::pair<double, double> NullPair(const Pairs&) { return kBadPair; }

std::pair<double, double> Means(const Pairs& pairs) {
  const Moments m = GetMoments(pairs);
  return {m.meanX, m.meanY};
}

std::pair<double, double> Variances(const Pairs& pairs) {
  if (pairs.size() < 2) return kBadPair;
  const Moments m = GetMoments(pairs);
  const double n = QVDoubleFromCount(pairs.size());
  return {m.sxx * n / (n - 1.0), m.syy * n / (n - 1.0)};
}

std::pair<double, double> OLSRegression(const Pairs& pairs) {
  if (pairs.size() < 2) return kBadPair;
  const Moments m = GetMoments(pairs);
  if (m.sxx < kEpsilon) return kBadPair;
  const double slope = m.sxy / m.sxx;
  return {m.meanY - m.meanX * slope, slope};
}

std::pair<double, double> LMSRegression(const Pairs& pairs) {
  if (pairs.size() < 4 || HasNaN(pairs)) return kBadPair;
  QVLMSSlopeFunctor objective(pairs);
  const auto f = [&objective](double slope) { return objective(&slope); };
  const double atZero = f(0.0), above = f(1.0), below = f(-1.0);
  if (!(atZero < above || atZero < below)) return kBadPair;
  const bool isBelowBoth = atZero < above && atZero < below;
  const double start = isBelowBoth ? -1.0 : 0.0;
  double direction = isBelowBoth || atZero < below ? 1.0 : -1.0;
  // A best slope of 1/2 makes the slopes 0 and 1 equally good, so that a step of 1 is no descent.
  for (const double trial : {1.0, 0.5}) {
    double value = BadDouble, step = trial;
    if (!QVGoldenSectionSearch()(1, &start, &direction, &value, &step, objective)) continue;
    const double slope = start + direction * step;
    return {objective.GetIntercept(&slope), slope};
  }
  return kBadPair;
}

std::pair<double, double> PairedTTest(const Pairs& pairs) {
  const std::size_t n = pairs.size();
  if (n < 2) return kBadPair;
  const double count = QVDoubleFromCount(n);
  const double mean =
      QVSumTerms(0, n, [&](std::size_t i) { return pairs[i].second - pairs[i].first; }) / count;
  const double squares = QVSumTerms(0, n, [&](std::size_t i) {
    const double d = (pairs[i].second - mean) - pairs[i].first;
    return d * d;
  });
  const double t = std::sqrt((count / squares) * (count - 1.0)) * mean;
  QVStatModelResult result(true);
  const QVUniVarPDF distribution =
      QVUnivariateStudentsT("tTestStat", count - 1.0, 0.0, 1.0, result);
  if (result.NotSuccessful()) return kBadPair;
  const double p = distribution.GetSurvival(t, result, true);
  if (result.NotSuccessful()) return kBadPair;
  return {t, p};
}

template <unsigned int Code>
QVTwoSampleStatisticBase* Create() {
  return new QVCodedTwoSampleStatistic<Code>;
}

template <unsigned int Code>
QVTwoSamplePairStatisticBase* CreatePair() {
  return new QVCodedTwoSamplePairStatistic<Code>;
}

struct StatisticRow {
  const char* name;
  double (*compute)(const Pairs& pairs);
  QVTwoSampleStatisticBase* (*create)();
};

/// At each code its statistic.
constexpr StatisticRow kStatistics[] = {
    {"Null Statistic: Always returns a bad double", Null, Create<0>},
    {"Two Sample Covariance", Covariance, Create<1>},
    {"Two Sample Pearson Correlation", PearsonCorrelation, Create<2>},
    {"Slope of Regression of 2nd var on First", RegressionSlope, Create<3>},
    {"Szekely, Rizzo Distance Correlation For 2 dims", DistanceCorrelation, Create<4>},
    {"Szekely, Rizzo Distance Covar TestStat For 2 dims", DistanceCovarTestStat, Create<5>},
    {"Spearman Rank-order correlation", SpearmanRho, Create<6>},
    {"Kendall Tau Rank-order correlation", KendallTau, Create<7>},
    {"Two Sample R-Squared measure of Correlation", RSquared, Create<8>},
};
static_assert(std::size(kStatistics) == QVTwoSampleStatisticType::NumTypes);

struct PairStatisticRow {
  const char* name;
  std::pair<double, double> (*compute)(const Pairs& pairs);
  QVTwoSamplePairStatisticBase* (*create)();
};

/// At each code its statistic of two numbers.
constexpr PairStatisticRow kPairStatistics[] = {
    {"Null PairStatistic: Always returns a bad double pair", NullPair, CreatePair<0>},
    {"Pair of Sample Means for paired sample", Means, CreatePair<1>},
    {"Pair of Sample Variances for paired sample", Variances, CreatePair<2>},
    {"Slope and Intercept of Ordinary Least-SquaresRegression", OLSRegression, CreatePair<3>},
    {"Slope and Intercept of Least-Median of Squares Regression", LMSRegression, CreatePair<4>},
    {"Paired Two-Sample t-test and its p-value", PairedTTest, CreatePair<5>},
};
static_assert(std::size(kPairStatistics) == QVTwoSamplePairStatisticType::NumTypes);

}  // namespace

QVTwoSampleStatisticBase::~QVTwoSampleStatisticBase() = default;
QVTwoSamplePairStatisticBase::~QVTwoSamplePairStatisticBase() = default;

template <unsigned int Code>
QVCodedTwoSampleStatistic<Code>* QVCodedTwoSampleStatistic<Code>::CreateCopy() const {
  return new QVCodedTwoSampleStatistic(*this);
}
template <unsigned int Code>
std::string QVCodedTwoSampleStatistic<Code>::GetTwoSampleStatisticsName() const {
  return kStatistics[Code].name;
}
template <unsigned int Code>
double QVCodedTwoSampleStatistic<Code>::operator()(const Pairs& pairs) const {
  return kStatistics[Code].compute(pairs);
}

template <unsigned int Code>
QVCodedTwoSamplePairStatistic<Code>* QVCodedTwoSamplePairStatistic<Code>::CreateCopy() const {
  return new QVCodedTwoSamplePairStatistic(*this);
}
template <unsigned int Code>
std::string QVCodedTwoSamplePairStatistic<Code>::GetTwoSamplePairStatisticsName() const {
  return kPairStatistics[Code].name;
}
template <unsigned int Code>
std::pair<double, double> QVCodedTwoSamplePairStatistic<Code>::GetPairStatistic(
    const Pairs& pairs) const {
  return kPairStatistics[Code].compute(pairs);
}

template class QVCodedTwoSampleStatistic<0>;
template class QVCodedTwoSampleStatistic<1>;
template class QVCodedTwoSampleStatistic<2>;
template class QVCodedTwoSampleStatistic<3>;
template class QVCodedTwoSampleStatistic<4>;
template class QVCodedTwoSampleStatistic<5>;
template class QVCodedTwoSampleStatistic<6>;
template class QVCodedTwoSampleStatistic<7>;
template class QVCodedTwoSampleStatistic<8>;
template class QVCodedTwoSamplePairStatistic<0>;
template class QVCodedTwoSamplePairStatistic<1>;
template class QVCodedTwoSamplePairStatistic<2>;
template class QVCodedTwoSamplePairStatistic<3>;
template class QVCodedTwoSamplePairStatistic<4>;
template class QVCodedTwoSamplePairStatistic<5>;

QVTwoSampleStatisticBase* QVGetTwoSampleStatistic(unsigned int code) {
  return kStatistics[code < std::size(kStatistics) ? code : 0].create();
}

QVTwoSampleStatistic::QVTwoSampleStatistic(unsigned int code)
    : statistic_(QVGetTwoSampleStatistic(code)) {}
unsigned int QVTwoSampleStatistic::GetTwoSampleStatisticsType() const {
  return statistic_->GetTwoSampleStatisticsType();
}
std::string QVTwoSampleStatistic::GetTwoSampleStatisticsName() const {
  return statistic_->GetTwoSampleStatisticsName();
}
double QVTwoSampleStatistic::operator()(const Pairs& pairs) const { return (*statistic_)(pairs); }

QVTwoSamplePairStatisticBase* QVGetTwoSamplePairStatistic(unsigned int code) {
  return kPairStatistics[code < std::size(kPairStatistics) ? code : 0].create();
}

QVTwoSamplePairStatistic::QVTwoSamplePairStatistic(unsigned int code)
    : statistic_(QVGetTwoSamplePairStatistic(code)) {}
unsigned int QVTwoSamplePairStatistic::GetTwoSamplePairStatisticsType() const {
  return statistic_->GetTwoSamplePairStatisticsType();
}
std::string QVTwoSamplePairStatistic::GetTwoSamplePairStatisticsName() const {
  return statistic_->GetTwoSamplePairStatisticsName();
}
std::pair<double, double> QVTwoSamplePairStatistic::GetPairStatistic(const Pairs& pairs) const {
  return statistic_->GetPairStatistic(pairs);
}

QVLMSSlopeFunctor::QVLMSSlopeFunctor(const Pairs& pairs)
    : slope_(kNaN), intercept_(BadDouble), value_(BadDouble), pairs_(pairs) {}
QVLMSSlopeFunctor::~QVLMSSlopeFunctor() = default;

unsigned int QVLMSSlopeFunctor::NumVar() const { return 1; }

double QVLMSSlopeFunctor::operator()(const double* slope) {
  Update(*slope);
  return value_;
}

QVSystem::QVIter<double> QVLMSSlopeFunctor::GetFComponents(const double*) { return {}; }

double QVLMSSlopeFunctor::GetIntercept(const double* slope) {
  Update(*slope);
  return intercept_;
}

void QVLMSSlopeFunctor::Update(double slope) {
  if (slope == slope_) return;
  slope_ = slope;
  const std::size_t n = pairs_.size(), half = n / 2;
  residuals_.resize(n);
  for (std::size_t i = 0; i < n; ++i) residuals_[i] = pairs_[i].second - slope * pairs_[i].first;
  std::sort(residuals_.begin(), residuals_.end());
  double smallest = BadDouble;
  intercept_ = BadDouble;
  for (std::size_t i = 0; i + half < n; ++i) {
    const double width = residuals_[i + half] - residuals_[i];
    if (!(width < smallest)) continue;
    smallest = width;
    intercept_ = (residuals_[i + half] + residuals_[i]) / 2.0;
  }
  value_ = smallest / 2.0;
}

double QVGetTwoSampleStatisticForDataPairVec(QVStatModelResult& result, unsigned int code,
                                             const Pairs& pairs) {
  if (pairs.empty()) return BadDouble;
  result = true;
  return QVTwoSampleStatistic(code)(pairs);
}

std::pair<double, double> QVGetTwoSamplePairStatisticForDataPairVec(QVStatModelResult& result,
                                                                    unsigned int code,
                                                                    const Pairs& pairs) {
  result = true;
  return QVTwoSamplePairStatistic(code).GetPairStatistic(pairs);
}

}  // namespace QVStats
