// False discovery rates from a null/alternative mixture.

#include <algorithm>
#include <cmath>
#include <numeric>

#include "stats/api/gaussian_mixture_model.h"
#include "stats/api/stats_data_types.h"
#include "stats/failure.h"

namespace QVStats {

namespace {

using QVStatModelFailureType::ArgumentOutOfRange;
using QVStatsBadData::BadDouble;

/// The positions of the scores, highest first.
std::vector<std::size_t> RankDownwards(const std::vector<double>& scores) {
  std::vector<std::size_t> order(scores.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(),
                   [&scores](std::size_t a, std::size_t b) { return scores[a] > scores[b]; });
  return order;
}

}  // namespace

QVMixtureDiscovery::QVMixtureDiscovery(const QVEmpiricalNullAltMixture& model)
    : result_(true), logOdds_(0.0), null_(QVUniVarNullPDF("null")), alternative_(null_) {
  constexpr const char* where = "QVMixtureDiscovery::QVMixtureDiscovery";
  const double probNull = model.GetExpectedProbNull(result_);
  if (QVFailedIn(result_, where)) return;
  const double probAlt = model.GetExpectedProbAlt(result_);
  if (QVFailedIn(result_, where)) return;
  null_ = model.GetPosteriorPredictiveNullDist(result_);
  if (QVFailedIn(result_, where)) return;
  alternative_ = model.GetPosteriorPredictiveAltDist(result_);
  QVFailedIn(result_, where);
  logOdds_ = std::log(probAlt / probNull);
}

double QVMixtureDiscovery::GetRate(QVStatModelResult& result, double score, bool tail,
                                   const char* where) const {
  result = true;
  if (result_.NotSuccessful() || std::isnan(score)) {
    result = QVFailure(
        result_.NotSuccessful() ? QVStatModelFailureType::ObjectNotValid : ArgumentOutOfRange,
        where);
    return BadDouble;
  }
  const auto getLog = tail ? &QVUniVarPDF::GetLogSurvival : &QVUniVarPDF::GetLogDensity;
  const double logNull = (null_.*getLog)(score, result, false);
  if (QVFailedIn(result, where)) return BadDouble;
  const double logAlternative = (alternative_.*getLog)(score, result, false);
  if (QVFailedIn(result, where)) return BadDouble;
  return 1.0 / (1.0 + std::exp(logOdds_ + logAlternative - logNull));
}

double QVMixtureDiscovery::GetLocalFDR(QVStatModelResult& result, double score) const {
  return GetRate(result, score, false, "QVMixtureDiscovery::GetLocalFDR");
}

double QVMixtureDiscovery::GetTailFDR(QVStatModelResult& result, double score) const {
  return GetRate(result, score, true, "QVMixtureDiscovery::GetTailFDR");
}

QVStatModelResult QVMixtureDiscovery::GetQValues(std::vector<double>& qValues,
                                                 const std::vector<double>& scores) const {
  qValues.clear();
  QVStatModelResult result(true);
  std::vector<double> rates;
  for (const double score : scores) {
    rates.push_back(GetRate(result, score, true, "QVMixtureDiscovery::GetQValues"));
    if (result.NotSuccessful()) return result;
  }
  const std::vector<std::size_t> order = RankDownwards(scores);
  double smallest = 1.0;
  for (auto i = order.rbegin(); i != order.rend(); ++i)
    rates[*i] = smallest = std::min(smallest, rates[*i]);
  qValues = std::move(rates);
  return true;
}

QVStatModelResult QVMixtureDiscovery::Call(std::vector<std::size_t>& called, double rate,
                                           const std::vector<double>& scores) const {
  constexpr const char* where = "QVMixtureDiscovery::Call";
  called.clear();
  if (std::isnan(rate)) return QVFailure(ArgumentOutOfRange, where);
  std::vector<double> qValues;
  const QVStatModelResult result = GetQValues(qValues, scores);
  if (result.NotSuccessful()) return QVCalledFrom(where, result);
  for (const std::size_t i : RankDownwards(scores))
    if (qValues[i] <= rate) called.push_back(i);
  return true;
}

}  // namespace QVStats
