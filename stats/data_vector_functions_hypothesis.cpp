#include <algorithm>
#include <cmath>
#include <iterator>
#include <numeric>

#include "platform/system/cast.h"
#include "stats/api/data_vector_functions.h"
#include "stats/api/data_vector_hypothesis.h"
#include "stats/failure.h"
#include "stats/kolmogorov_smirnov.h"
#include "stats/ranking.h"

namespace QVStats {

namespace {

using Values = std::vector<double>;
using Pairs = std::vector<std::pair<double, double>>;
using QVSystem::QVDoubleFromCount;
namespace Failure = QVStatModelFailureType;

/// Samples of this size and more go by the normal limit of a rank statistic.
constexpr std::size_t kFewestForLimit = 50;
/// The most steps of an exact Kolmogorov-Smirnov test of two samples.
constexpr double kMostSteps = 1e7;

/// The p-value from the probabilities of a statistic at most and at least as large.
double GetPValue(QVTestAlternative alternative, double atMost, double atLeast) {
  if (alternative == QVTestAlternative::Less) return atMost;
  if (alternative == QVTestAlternative::Greater) return atLeast;
  return std::min(1.0, 2.0 * std::min(atMost, atLeast));
}

double GetPValue(QVStatModelResult& result, QVTestAlternative alternative, double statistic,
                 const QVUniVarPDF& distribution) {
  const double atMost = distribution.GetCDF(statistic, result, false);
  if (result.NotSuccessful()) return QVStatsBadData::BadDouble;
  return GetPValue(alternative, atMost, distribution.GetSurvival(statistic, result, false));
}

/// The t test of a mean of some variance against 0. `magnitude` is that of the values: what does
/// not vary beyond their rounding has no t.
QVTestOutcome TestMean(QVStatModelResult& result, const char* where, QVTestAlternative alternative,
                       double mean, double variance, double degrees, double magnitude) {
  QVTestOutcome outcome;
  const double error = std::sqrt(variance), statistic = mean / error;
  constexpr double kRounding = 2.2e-15;
  if (!std::isfinite(statistic) || !(error > kRounding * magnitude)) {
    result = QVFailure(Failure::ArgumentValueWrong, where)
             << "The values do not vary or are not finite";
    return outcome;
  }
  const QVUniVarPDF distribution = QVUnivariateStudentsT("t", degrees, 0.0, 1.0, result);
  if (QVFailedIn(result, where)) return outcome;
  outcome.pValue = GetPValue(result, alternative, statistic, distribution);
  if (QVFailedIn(result, where)) return {};
  outcome.statistic = statistic;
  outcome.degreesOfFreedom = degrees;
  return outcome;
}

QVTestOutcome TestWelchT(QVStatModelResult& result, const char* where,
                         QVTestAlternative alternative, const Values& first, const Values& second) {
  const double m = QVDoubleFromCount(first.size()), n = QVDoubleFromCount(second.size());
  const double mx = QVSampleMean()(first), my = QVSampleMean()(second);
  const double vx = QVSampleVariance()(first) / m, vy = QVSampleVariance()(second) / n;
  const double variance = vx + vy;
  const double x = vx / variance, y = vy / variance;
  return TestMean(result, where, alternative, mx - my, variance,
                  1.0 / (x * x / (m - 1.0) + y * y / (n - 1.0)),
                  std::max(std::abs(mx), std::abs(my)));
}

/// The p-value of a statistic that takes the values 0, 1, ... in these numbers of cases.
double GetExactPValue(QVTestAlternative alternative, double statistic, const Values& counts) {
  const auto at = counts.begin() + static_cast<std::ptrdiff_t>(statistic);
  const double all = std::accumulate(counts.begin(), counts.end(), 0.0);
  return GetPValue(alternative, std::accumulate(counts.begin(), at + 1, 0.0) / all,
                   std::accumulate(at, counts.end(), 0.0) / all);
}

/// The p-value of a rank statistic by its normal limit, moved by 1/2 towards the mean.
double GetLimitPValue(QVStatModelResult& result, QVTestAlternative alternative, double statistic,
                      double mean, double variance) {
  const double distance = statistic - mean;
  double correction = alternative == QVTestAlternative::Less ? -0.5 : 0.5;
  if (alternative == QVTestAlternative::TwoSided)
    correction = 0.5 * ((distance > 0.0) - (distance < 0.0));
  const QVUniVarPDF normal = QVUnivariateGaussian("z", 0.0, 1.0, result);
  if (result.NotSuccessful()) return QVStatsBadData::BadDouble;
  return GetPValue(result, alternative, (distance - correction) / std::sqrt(variance), normal);
}

/// How many choices of m of m + n ranks give U = 0, 1, ..., m n: the partitions of U into m parts
/// of 0 to n.
Values CountRankSums(std::size_t m, std::size_t n) {
  const std::size_t size = m * n + 1;
  std::vector<Values> counts(m + 1, Values(size, 0.0));
  counts[0][0] = 1.0;
  for (std::size_t part = 0; part <= n; ++part)
    for (std::size_t j = 1; j <= m; ++j)
      for (std::size_t u = part; u < size; ++u) counts[j][u] += counts[j - 1][u - part];
  return counts[m];
}

/// How many choices of signs of the ranks 1 ... n give V = 0, 1, ..., n (n + 1) / 2.
Values CountSignedRankSums(std::size_t n) {
  Values counts(n * (n + 1) / 2 + 1, 0.0);
  counts[0] = 1.0;
  for (std::size_t rank = 1; rank <= n; ++rank)
    for (std::size_t v = counts.size() - 1; v >= rank; --v) counts[v] += counts[v - rank];
  return counts;
}

QVTestOutcome TestRankSum(QVStatModelResult& result, const char* where,
                          QVTestAlternative alternative, const Values& first,
                          const Values& second) {
  Values pooled(first);
  pooled.insert(pooled.end(), second.begin(), second.end());
  const QVRanking ranking = QVRankValues(pooled);
  if (ranking.GetNumRanks() == 1) {
    result = QVFailure(Failure::ArgumentValueWrong, where) << "All values are equal";
    return {};
  }
  const double m = QVDoubleFromCount(first.size()), n = QVDoubleFromCount(second.size());
  QVTestOutcome outcome;
  outcome.statistic = -0.5 * m * (m + 1.0);
  for (std::size_t i = 0; i < first.size(); ++i)
    outcome.statistic += ranking.GetMeanPosition(ranking.rank[i]);
  const double tieTerm = ranking.GetTieTerm();
  outcome.isExact =
      tieTerm == 0.0 && first.size() < kFewestForLimit && second.size() < kFewestForLimit;
  if (outcome.isExact) {
    outcome.pValue =
        GetExactPValue(alternative, outcome.statistic, CountRankSums(first.size(), second.size()));
    return outcome;
  }
  const double all = m + n;
  const double variance = m * n / 12.0 * (all + 1.0 - tieTerm / (all * (all - 1.0)));
  outcome.pValue = GetLimitPValue(result, alternative, outcome.statistic, 0.5 * m * n, variance);
  QVFailedIn(result, where);
  return outcome;
}

QVTestOutcome TestDistance(QVStatModelResult&, const char*, QVTestAlternative alternative,
                           const Values& first, const Values& second) {
  Values x(first), y(second);
  std::sort(x.begin(), x.end());
  std::sort(y.begin(), y.end());
  const QVSmirnovDistances distances = QVGetSmirnovDistances(x, y);
  const bool isTwoSided = alternative == QVTestAlternative::TwoSided;
  const bool isBelow = alternative == QVTestAlternative::Greater;
  const std::int64_t distance = isTwoSided ? std::max(distances.above, distances.below)
                                           : (isBelow ? distances.below : distances.above);
  // The first below the second is the second above the first.
  if (isBelow) std::swap(x, y);
  const double m = QVDoubleFromCount(x.size()), n = QVDoubleFromCount(y.size());
  QVTestOutcome outcome;
  outcome.statistic = static_cast<double>(distance) / (m * n);
  outcome.isExact = m * n <= kMostSteps;
  if (outcome.isExact)
    outcome.pValue =
        QVGetExactSmirnovTail(distance, x.size(), y.size(), distances.isEndOfTies, isTwoSided);
  else
    outcome.pValue =
        QVGetLimitOfKolmogorovTail(std::sqrt(m * n / (m + n)) * outcome.statistic, isTwoSided);
  return outcome;
}

QVTestOutcome TestStudentT(QVStatModelResult& result, const char* where,
                           QVTestAlternative alternative, const Values& differences) {
  const double n = QVDoubleFromCount(differences.size());
  const double mean = QVSampleMean()(differences);
  return TestMean(result, where, alternative, mean, QVSampleVariance()(differences) / n, n - 1.0,
                  std::abs(mean));
}

QVTestOutcome TestSignedRank(QVStatModelResult& result, const char* where,
                             QVTestAlternative alternative, const Values& differences) {
  Values sizes, signs;
  for (const double d : differences) {
    if (d == 0.0) continue;
    sizes.push_back(std::abs(d));
    signs.push_back(d);
  }
  if (sizes.empty()) {
    result = QVFailure(Failure::ArgumentValueWrong, where) << "All differences are 0";
    return {};
  }
  const QVRanking ranking = QVRankValues(sizes);
  QVTestOutcome outcome;
  outcome.statistic = 0.0;
  for (std::size_t i = 0; i < sizes.size(); ++i)
    if (signs[i] > 0.0) outcome.statistic += ranking.GetMeanPosition(ranking.rank[i]);
  const double n = QVDoubleFromCount(sizes.size()), tieTerm = ranking.GetTieTerm();
  outcome.isExact =
      tieTerm == 0.0 && sizes.size() == differences.size() && sizes.size() < kFewestForLimit;
  if (outcome.isExact) {
    outcome.pValue =
        GetExactPValue(alternative, outcome.statistic, CountSignedRankSums(sizes.size()));
    return outcome;
  }
  const double variance = n * (n + 1.0) * (2.0 * n + 1.0) / 24.0 - tieTerm / 48.0;
  outcome.pValue =
      GetLimitPValue(result, alternative, outcome.statistic, 0.25 * n * (n + 1.0), variance);
  QVFailedIn(result, where);
  return outcome;
}

struct TwoSampleTestRow {
  const char* name;
  std::size_t fewest;
  QVTestOutcome (*test)(QVStatModelResult& result, const char* where, QVTestAlternative alternative,
                        const Values& first, const Values& second);
};

/// At each code its test of two samples.
constexpr TwoSampleTestRow kTwoSampleTests[] = {
    {"No test", 0, nullptr},
    {"Welch's t-test", 2, TestWelchT},
    {"Wilcoxon-Mann-Whitney rank-sum test", 1, TestRankSum},
    {"Two-sample Kolmogorov-Smirnov test", 1, TestDistance},
};
static_assert(std::size(kTwoSampleTests) == QVTwoSampleTestType::NumTypes);

struct PairedTestRow {
  const char* name;
  std::size_t fewest;
  QVTestOutcome (*test)(QVStatModelResult& result, const char* where, QVTestAlternative alternative,
                        const Values& differences);
};

/// At each code its test of pairs.
constexpr PairedTestRow kPairedTests[] = {
    {"No test", 0, nullptr},
    {"Paired t-test", 2, TestStudentT},
    {"Wilcoxon signed-rank test", 1, TestSignedRank},
};
static_assert(std::size(kPairedTests) == QVPairedTestType::NumTypes);

template <class Row, std::size_t Size>
const Row& RowOf(const Row (&rows)[Size], unsigned int code) {
  return rows[code < Size ? code : 0];
}

/// Whether a sample can be tested.
QVStatModelResult CheckSample(const char* where, const char* name, const Values& values,
                              std::size_t fewest) {
  if (values.size() < fewest)
    return QVFailure(Failure::NoData, where)
           << name << ": " << values.size() << " values, at least " << fewest << " are needed";
  const auto nan =
      std::find_if(values.begin(), values.end(), [](double value) { return std::isnan(value); });
  if (nan == values.end()) return true;
  return QVFailure(Failure::ArgumentValueWrong, where)
         << name << ": value " << nan - values.begin() << " is not a number";
}

}  // namespace

std::string QVGetTwoSampleTestName(unsigned int code) { return RowOf(kTwoSampleTests, code).name; }

std::string QVGetPairedTestName(unsigned int code) { return RowOf(kPairedTests, code).name; }

QVTestOutcome QVGetTwoSampleTestForDataVecs(QVStatModelResult& result, unsigned int code,
                                            QVTestAlternative alternative, const Values& first,
                                            const Values& second) {
  const char* const where = "QVGetTwoSampleTestForDataVecs";
  const TwoSampleTestRow& row = RowOf(kTwoSampleTests, code);
  result = true;
  if (!row.test) {
    result = QVFailure(Failure::EmptyStatModel, where) << "Test: " << code;
    return {};
  }
  result = CheckSample(where, "First sample", first, row.fewest);
  if (result.IsSuccessful()) result = CheckSample(where, "Second sample", second, row.fewest);
  if (result.NotSuccessful()) return {};
  return row.test(result, where, alternative, first, second);
}

QVTestOutcome QVGetPairedTestForDataPairVec(QVStatModelResult& result, unsigned int code,
                                            QVTestAlternative alternative, const Pairs& pairs) {
  const char* const where = "QVGetPairedTestForDataPairVec";
  const PairedTestRow& row = RowOf(kPairedTests, code);
  if (!row.test) {
    result = QVFailure(Failure::EmptyStatModel, where) << "Test: " << code;
    return {};
  }
  Values differences(pairs.size());
  std::transform(pairs.begin(), pairs.end(), differences.begin(),
                 [](const auto& pair) { return pair.first - pair.second; });
  result = CheckSample(where, "Differences", differences, row.fewest);
  if (result.NotSuccessful()) return {};
  return row.test(result, where, alternative, differences);
}

QVTestOutcome QVGetKolmogorovSmirnovTestForDataVec(QVStatModelResult& result,
                                                   QVTestAlternative alternative,
                                                   const Values& data, const QVUniVarPDF& pdf) {
  const char* const where = "QVGetKolmogorovSmirnovTestForDataVec";
  result = CheckSample(where, "Sample", data, 1);
  if (result.NotSuccessful()) return {};
  Values sorted(data);
  std::sort(sorted.begin(), sorted.end());
  const double n = QVDoubleFromCount(sorted.size());
  double above = 0.0, below = 0.0;
  for (std::size_t i = 0; i < sorted.size(); ++i) {
    const double f = pdf.GetCDF(sorted[i], result, true);
    // Outside of the support f is 0 or 1.
    const bool isBelow = result.GetFailureType() == Failure::LowerBoundViolated;
    const bool isAbove = result.GetFailureType() == Failure::UpperBoundViolated;
    if (result.NotSuccessful() && (isBelow || isAbove)) result = true;
    if (QVFailedIn(result, where)) return {};
    const double expected = isAbove ? 1.0 : f, position = QVDoubleFromCount(i);
    above = std::max(above, (position + 1.0) / n - expected);
    below = std::max(below, expected - position / n);
  }
  const bool isTwoSided = alternative == QVTestAlternative::TwoSided;
  QVTestOutcome outcome;
  outcome.statistic = isTwoSided ? std::max(above, below)
                                 : (alternative == QVTestAlternative::Less ? above : below);
  outcome.isExact = sorted.size() <= QVGetMostValuesOfExactKolmogorovTail(isTwoSided);
  outcome.pValue = QVGetOneSampleKolmogorovTail(outcome.statistic, sorted.size(), isTwoSided);
  return outcome;
}

}  // namespace QVStats
