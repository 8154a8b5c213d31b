#include "stats/api/calcauc.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>

#include "platform/math/special_functions.h"
#include "platform/system/error_handler.h"

namespace QVStats {

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

/// What a walk down a ranked list counts.
struct RankedCounts {
  std::uint64_t actives = 0;
  std::uint64_t decoys = 0;
  std::uint64_t correctPairs = 0;  // 64 bits, so that the sum never wraps
};

RankedCounts Walk(const std::vector<bool>& ranked) {
  RankedCounts counts;
  for (const bool active : ranked) {
    if (active) {
      ++counts.actives;
    } else {
      ++counts.decoys;
      counts.correctPairs += counts.actives;
    }
  }
  return counts;
}

double AsDouble(std::uint64_t count) { return static_cast<double>(count); }

/// The numbers among the scores, turned so that a higher one is better.
std::vector<double> TakeNumbers(const std::vector<double>& scores, bool higherIsBetter) {
  std::vector<double> numbers;
  numbers.reserve(scores.size());
  const double sign = higherIsBetter ? 1.0 : -1.0;
  for (const double score : scores)
    if (!std::isnan(score)) numbers.push_back(sign * score);
  return numbers;
}

/// Numbers grouped by equal intervals over their range, so that a look-up touches a few of them
/// only.
class IntervalIndex {
 public:
  /// Numbers that are not a number are left out.
  explicit IntervalIndex(const std::vector<double>& values) {
    const std::vector<double> numbers = TakeNumbers(values, true);
    if (numbers.empty()) return;
    const auto [low, high] = std::minmax_element(numbers.begin(), numbers.end());
    const double width = *high - *low;
    const std::size_t wanted = std::min<std::size_t>(numbers.size(), 1u << 17);
    // A range too wide or too narrow to be cut is one interval.
    const bool canCut = std::isfinite(width) && width > 1e-290;
    const std::size_t intervals = canCut ? wanted : 1;
    low_ = *low;
    scale_ = canCut ? static_cast<double>(intervals) / width : 0.0;
    starts_.assign(intervals + 1, 0);
    Group(numbers);
  }

  std::size_t Size() const { return size_; }

  /// What a set of probes counts.
  struct Halves {
    std::uint64_t probes = 0;  // those that are numbers
    std::uint64_t sum = 0;     // for each, twice the values below it plus the values equal to it
  };

  /// The probes of a block look up intervals, values and counts by turns, so that they wait for
  /// memory together.
  Halves CountHalvesBelow(const std::vector<double>& values) const {
    constexpr std::size_t kBlock = 64;
    Halves halves;
    double probes[kBlock];
    std::size_t intervals[kBlock];
    for (auto value = values.begin(); value != values.end();) {
      std::size_t size = 0;
      for (; size < kBlock && value != values.end(); ++value)
        if (!std::isnan(*value)) probes[size++] = *value;
      for (std::size_t i = 0; i < size; ++i) {
        intervals[i] = FindInterval(probes[i]);
        __builtin_prefetch(&starts_[intervals[i]]);
      }
      for (std::size_t i = 0; i < size; ++i) {
        const double* const window = &grouped_[starts_[intervals[i]]];
        __builtin_prefetch(window);
        __builtin_prefetch(window + kWindow - 1);
      }
      for (std::size_t i = 0; i < size; ++i)
        halves.sum += CountHalvesBelow(probes[i], intervals[i]);
      halves.probes += size;
    }
    return halves;
  }

 private:
  static constexpr std::size_t kWindow = 8;

  std::uint64_t CountHalvesBelow(double x, std::size_t interval) const {
    const std::size_t from = starts_[interval], to = starts_[interval + 1];
    if (to - from > kWindow) {
      const auto [low, high] =
          std::equal_range(grouped_.begin() + Offset(from), grouped_.begin() + Offset(to), x);
      return static_cast<std::uint64_t>((low - grouped_.begin()) + (high - grouped_.begin()));
    }
    // All values behind the interval are above x: a window of fixed width needs no branches.
    std::uint64_t halves = 2 * from;
    for (std::size_t i = from; i < from + kWindow; ++i)
      halves += static_cast<std::uint64_t>(grouped_[i] < x) + (grouped_[i] <= x);
    return halves;
  }

  static std::ptrdiff_t Offset(std::size_t i) { return static_cast<std::ptrdiff_t>(i); }

  /// Monotone: a higher value never lies in a lower interval.
  std::size_t FindInterval(double x) const {
    if (scale_ == 0.0) return 0;
    const auto last = static_cast<double>(starts_.size() - 2);
    return static_cast<std::size_t>(std::clamp((x - low_) * scale_, 0.0, last));
  }

  void Group(const std::vector<double>& numbers) {
    for (const double x : numbers) ++starts_[FindInterval(x) + 1];
    std::partial_sum(starts_.begin(), starts_.end(), starts_.begin());
    std::vector<std::uint32_t> next(starts_.begin(), starts_.end() - 1);
    size_ = numbers.size();
    grouped_.assign(size_ + kWindow, kNaN);  // what a window reads past the end counts for nothing
    for (const double x : numbers) grouped_[next[FindInterval(x)]++] = x;
    // What a window holds needs no order.
    for (std::size_t k = 0; k + 1 < starts_.size(); ++k)
      if (starts_[k + 1] - starts_[k] > kWindow)
        std::sort(grouped_.begin() + Offset(starts_[k]), grouped_.begin() + Offset(starts_[k + 1]));
  }

  double low_ = 0.0;
  double scale_ = 0.0;
  std::size_t size_ = 0;
  std::vector<std::uint32_t> starts_;  // of each interval, with the end at the back
  std::vector<double> grouped_;
};

/// Sums, over all pairs of numbers, 2 where the first is above the second and 1 where they are
/// equal.
std::uint64_t CountHalves(const std::vector<double>& first, const std::vector<double>& second) {
  const bool indexSecond = second.size() <= first.size();
  const IntervalIndex index(indexSecond ? second : first);
  if (index.Size() == 0) return 0;
  const auto halves = index.CountHalvesBelow(indexSecond ? first : second);
  return indexSecond ? halves.sum : 2 * halves.probes * index.Size() - halves.sum;
}

/// For each score, the share of `others` that it beats, ties counting one half.
std::vector<double> Placements(const std::vector<double>& scores, std::vector<double> others,
                               bool scoresAreActives, bool higherIsBetter) {
  const auto numOthers = static_cast<double>(others.size());
  others = TakeNumbers(others, higherIsBetter);
  std::sort(others.begin(), others.end());
  std::vector<double> placements;
  placements.reserve(scores.size());
  for (const double raw : scores) {
    if (std::isnan(raw)) {
      placements.push_back(0.0);
      continue;
    }
    const double score = higherIsBetter ? raw : -raw;
    const auto [low, high] = std::equal_range(others.begin(), others.end(), score);
    const auto worse = scoresAreActives ? low - others.begin() : others.end() - high;
    placements.push_back((static_cast<double>(worse) + 0.5 * static_cast<double>(high - low)) /
                         numOthers);
  }
  return placements;
}

double Mean(const std::vector<double>& x) {
  double sum = 0.0;
  for (const double value : x) sum += value;
  return sum / static_cast<double>(x.size());
}

/// Sum of (x - mean)(y - mean) / (n - 1).
double Covariance(const std::vector<double>& x, const std::vector<double>& y) {
  const double meanX = Mean(x), meanY = Mean(y);
  double sum = 0.0;
  for (std::size_t i = 0; i < x.size(); ++i) sum += (x[i] - meanX) * (y[i] - meanY);
  return sum / (static_cast<double>(x.size()) - 1.0);
}

/// The placement values of one ranking.
struct DeLongPlacements {
  DeLongPlacements(const std::vector<double>& active, const std::vector<double>& decoy,
                   bool higherIsBetter)
      : actives(Placements(active, decoy, true, higherIsBetter)),
        decoys(Placements(decoy, active, false, higherIsBetter)) {}

  std::vector<double> actives;
  std::vector<double> decoys;
};

/// The covariance of the AUCs of two rankings of the same objects.
double CovarianceOfAUC(const DeLongPlacements& a, const DeLongPlacements& b) {
  return Covariance(a.actives, b.actives) / static_cast<double>(a.actives.size()) +
         Covariance(a.decoys, b.decoys) / static_cast<double>(a.decoys.size());
}

struct ScoredObject {
  double score;  // higher is better; -infinity for not a number
  bool active;
};

std::vector<ScoredObject> RankByScore(const std::vector<double>& activeScores,
                                      const std::vector<double>& decoyScores, bool higherIsBetter) {
  std::vector<ScoredObject> objects;
  objects.reserve(activeScores.size() + decoyScores.size());
  const auto add = [&](const std::vector<double>& scores, bool active) {
    for (const double score : scores)
      objects.push_back({std::isnan(score) ? -std::numeric_limits<double>::infinity()
                                           : (higherIsBetter ? score : -score),
                         active});
  };
  add(activeScores, true);
  add(decoyScores, false);
  std::sort(objects.begin(), objects.end(),
            [](const ScoredObject& a, const ScoredObject& b) { return a.score > b.score; });
  return objects;
}

/// The true positive rate of the straight line from p to q at a false positive rate between them.
double Interpolate(const QVROCPoint& p, const QVROCPoint& q, double rate) {
  const double width = q.falsePositiveRate - p.falsePositiveRate;
  return p.truePositiveRate +
         (q.truePositiveRate - p.truePositiveRate) * (rate - p.falsePositiveRate) / width;
}

}  // namespace

bool QVCalculateAUC(double& auc, const std::vector<bool>& ranked) {
  const RankedCounts counts = Walk(ranked);
  if (counts.actives == 0 || counts.decoys == 0) return false;
  auc = AsDouble(counts.correctPairs) / (AsDouble(counts.actives) * AsDouble(counts.decoys));
  return true;
}

bool QVCalculateAUC(double& auc, const std::vector<bool>& ranked, unsigned int totalActives,
                    unsigned int totalDecoys) {
  if (totalActives == 0 || totalDecoys == 0) return false;
  const RankedCounts counts = Walk(ranked);
  if (totalActives < counts.actives) {
    QVSystem::QVThrow.Warning(
        "QVCalculateAUC, total number of actives (Nact %d) is less than number of actives there "
        "are "
        "known to be (nact %d)",
        static_cast<int>(totalActives), static_cast<int>(counts.actives));
    return false;
  }
  if (totalDecoys < counts.decoys) {
    QVSystem::QVThrow.Warning(
        "QVCalculateAUC, total number of decoys (Ndec %d) is less than number of decoys there are "
        "known to be (ndec %d)",
        static_cast<int>(totalDecoys), static_cast<int>(counts.decoys));
    return false;
  }
  const double unseenDecoys = AsDouble(totalDecoys - counts.decoys);
  const double seenAndAll = AsDouble(counts.actives + totalActives);
  auc = (unseenDecoys * seenAndAll * 0.5 + AsDouble(counts.correctPairs)) /
        (AsDouble(totalActives) * AsDouble(totalDecoys));
  return true;
}

double QVCalculateAUC(const std::vector<double>& activeScores,
                      const std::vector<double>& decoyScores, bool higherIsBetter) {
  if (activeScores.empty()) return kNaN;
  const std::uint64_t halves = higherIsBetter ? CountHalves(activeScores, decoyScores)
                                              : CountHalves(decoyScores, activeScores);
  return 0.5 * AsDouble(halves) /
         (static_cast<double>(decoyScores.size()) * static_cast<double>(activeScores.size()));
}

double QVCalculateStandardError(double auc, unsigned int numActives, unsigned int numDecoys) {
  const double q1 = auc / (2.0 - auc);
  const double q2 = 2.0 * auc * auc / (1.0 + auc);
  const double na = numActives, nd = numDecoys;
  return std::sqrt(
      (auc * (1.0 - auc) + (na - 1.0) * (q1 - auc * auc) + (nd - 1.0) * (q2 - auc * auc)) /
      (na * nd));
}

double QVCalculateDeLongStandardError(const std::vector<double>& activeScores,
                                      const std::vector<double>& decoyScores, bool higherIsBetter) {
  if (activeScores.size() < 2 || decoyScores.size() < 2) return kNaN;
  const DeLongPlacements placements(activeScores, decoyScores, higherIsBetter);
  return std::sqrt(CovarianceOfAUC(placements, placements));
}

QVAUCComparison QVCompareAUC(const std::vector<double>& activeScoresA,
                             const std::vector<double>& decoyScoresA,
                             const std::vector<double>& activeScoresB,
                             const std::vector<double>& decoyScoresB, bool higherIsBetter) {
  const std::size_t na = activeScoresA.size(), nd = decoyScoresA.size();
  if (na < 2 || nd < 2 || activeScoresB.size() != na || decoyScoresB.size() != nd)
    return {kNaN, kNaN, kNaN, kNaN, kNaN, kNaN};
  const DeLongPlacements a(activeScoresA, decoyScoresA, higherIsBetter);
  const DeLongPlacements b(activeScoresB, decoyScoresB, higherIsBetter);
  QVAUCComparison comparison{};
  comparison.aucA = Mean(a.actives);
  comparison.aucB = Mean(b.actives);
  comparison.difference = comparison.aucA - comparison.aucB;
  const double variance =
      CovarianceOfAUC(a, a) + CovarianceOfAUC(b, b) - 2.0 * CovarianceOfAUC(a, b);
  comparison.standardError = std::sqrt(std::max(variance, 0.0));
  comparison.z =
      comparison.standardError > 0.0 ? comparison.difference / comparison.standardError : kNaN;
  comparison.pValue = QVMath::QVerfc(std::abs(comparison.z) / std::sqrt(2.0));
  return comparison;
}

std::vector<QVROCPoint> QVGetROCCurve(const std::vector<double>& activeScores,
                                      const std::vector<double>& decoyScores, bool higherIsBetter) {
  std::vector<QVROCPoint> curve;
  if (activeScores.empty() || decoyScores.empty()) return curve;
  const auto objects = RankByScore(activeScores, decoyScores, higherIsBetter);
  const double sign = higherIsBetter ? 1.0 : -1.0;
  const auto numActives = static_cast<double>(activeScores.size());
  const auto numDecoys = static_cast<double>(decoyScores.size());
  curve.push_back({0.0, 0.0, sign * std::numeric_limits<double>::infinity()});
  double actives = 0.0, decoys = 0.0;
  for (std::size_t i = 0; i < objects.size(); ++i) {
    (objects[i].active ? actives : decoys) += 1.0;
    const bool tied = i + 1 < objects.size() && objects[i + 1].score == objects[i].score;
    if (!tied) curve.push_back({decoys / numDecoys, actives / numActives, sign * objects[i].score});
  }
  return curve;
}

std::vector<QVROCPoint> QVGetROCCurve(const std::vector<bool>& ranked) {
  std::vector<double> activeRanks, decoyRanks;
  for (std::size_t i = 0; i < ranked.size(); ++i)
    (ranked[i] ? activeRanks : decoyRanks).push_back(static_cast<double>(i + 1));
  return QVGetROCCurve(activeRanks, decoyRanks, false);
}

double QVCalculatePartialAUC(const std::vector<QVROCPoint>& curve, double maxFalsePositiveRate,
                             bool standardised) {
  const double limit = maxFalsePositiveRate;
  if (curve.empty() || !(limit > 0.0 && limit <= 1.0)) return kNaN;
  double area = 0.0;
  for (std::size_t i = 1; i < curve.size() && curve[i - 1].falsePositiveRate < limit; ++i) {
    const QVROCPoint& p = curve[i - 1];
    const QVROCPoint& q = curve[i];
    if (q.falsePositiveRate == p.falsePositiveRate) continue;
    const double end = std::min(q.falsePositiveRate, limit);
    area += 0.5 * (p.truePositiveRate + Interpolate(p, q, end)) * (end - p.falsePositiveRate);
  }
  if (!standardised) return area;
  const double random = 0.5 * limit * limit;
  return 0.5 * (1.0 + (area - random) / (limit - random));
}

double QVCalculateLogAUC(const std::vector<QVROCPoint>& curve, double lambda) {
  if (curve.empty() || !(lambda > 0.0 && lambda < 1.0)) return kNaN;
  double area = 0.0;
  for (std::size_t i = 1; i < curve.size(); ++i) {
    const QVROCPoint& p = curve[i - 1];
    const QVROCPoint& q = curve[i];
    const double from = std::max(p.falsePositiveRate, lambda), to = q.falsePositiveRate;
    if (!(to > from)) continue;
    // On y = base + slope x the integral of y d(log10 x) is slope (to - from) / ln 10 + base
    // log10(to / from).
    const double slope = (q.truePositiveRate - p.truePositiveRate) / (to - p.falsePositiveRate);
    const double base = q.truePositiveRate - slope * to;
    area += slope * (to - from) / std::log(10.0) + base * std::log10(to / from);
  }
  return area / std::log10(1.0 / lambda);
}

double QVCalculateEnrichmentFactor(const std::vector<bool>& ranked, double fraction) {
  const std::uint64_t actives = Walk(ranked).actives;
  if (actives == 0 || !(fraction > 0.0 && fraction <= 1.0)) return kNaN;
  const auto n = static_cast<double>(ranked.size());
  // A product that rounding puts just above a whole number is that number.
  const double top = std::min(n, std::ceil(fraction * n * (1.0 - 1e-12)));
  const auto found =
      std::count(ranked.begin(), ranked.begin() + static_cast<std::ptrdiff_t>(top), true);
  return (static_cast<double>(found) / top) / (AsDouble(actives) / n);
}

double QVCalculateBEDROC(const std::vector<bool>& ranked, double alpha) {
  const RankedCounts counts = Walk(ranked);
  if (counts.actives == 0 || counts.decoys == 0 || !(alpha > 0.0)) return kNaN;
  const auto n = static_cast<double>(ranked.size());
  const double share = AsDouble(counts.actives) / n;
  double sum = 0.0;
  for (std::size_t i = 0; i < ranked.size(); ++i)
    if (ranked[i]) sum += std::exp(-alpha * static_cast<double>(i + 1) / n);
  const double random = share * -std::expm1(-alpha) / std::expm1(alpha / n);
  // share sinh(alpha/2) / (cosh(alpha/2) - cosh(alpha/2 - alpha share)), without the large terms
  const double scale = share * -std::expm1(-alpha) /
                       (-std::expm1(-alpha * share) * -std::expm1(-alpha * (1.0 - share)));
  return sum / random * scale + 1.0 / -std::expm1(alpha * (1.0 - share));
}

}  // namespace QVStats
