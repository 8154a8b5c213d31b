#include "stats/api/krige_result.h"

#include <cmath>
#include <optional>
#include <typeinfo>
#include <utility>
#include <vector>

#include "platform/system/error_handler.h"
#include "stats/api/private/krige_result_impl.h"

namespace QVStats {

QVKrigeResultBase::~QVKrigeResultBase() = default;

QVKrigeResult::QVKrigeResult() : result_(std::make_shared<const QVKrigeResultImpl>()) {}

QVKrigeResult::QVKrigeResult(const QVKrigeResultBase& result) : result_(result.CreateCopy()) {}

QVKrigeResult::QVKrigeResult(std::unique_ptr<QVKrigeResultBase> result)
    : result_(result ? std::move(result) : std::make_unique<QVKrigeResultImpl>()) {}

namespace {

/// \return the result of a model; null for a derived class, which may have other getters.
const QVKrigeResultImpl* FindModelResult(const QVKrigeResultBase& result) {
  return typeid(result) == typeid(QVKrigeResultImpl)
             ? static_cast<const QVKrigeResultImpl*>(&result)
             : nullptr;
}

/// The prediction that a model stored with its result: the sums below without the weights.
std::optional<QVKrigeEstimate> FindEstimate(const QVKrigeResultBase& result) {
  const QVKrigeResultImpl* const found = FindModelResult(result);
  return found ? found->GetEstimate() : std::nullopt;
}

double SumResponses(const QVKrigeResultBase& result) {
  double sum = 0.0;
  for (unsigned int i = 0; i < result.GetNumElements(); ++i)
    sum += result.GetWeight(i) * result.GetResponse(i);
  return result.GetBaselineResponse() + sum;
}

}  // namespace

std::vector<double> QVGetKrigeWeights(const QVKrigeResultBase& result) {
  const unsigned int size = result.GetNumElements();
  if (const QVKrigeResultImpl* const found = FindModelResult(result); found && size > 0)
    return std::vector<double>(found->GetWeights(), found->GetWeights() + size);
  std::vector<double> weights;
  weights.reserve(size);
  for (unsigned int i = 0; i < size; ++i) weights.push_back(result.GetWeight(i));
  return weights;
}

double QVCalculateResponse(const QVKrigeResultBase& result, double errorValue) {
  QV_ASSERT(!std::isnan(errorValue));
  if (!result.Valid()) return errorValue;
  const std::optional<QVKrigeEstimate> estimate = FindEstimate(result);
  const double response = estimate ? estimate->response : SumResponses(result);
  return QV_ASSERT(!std::isnan(response)) ? response : errorValue;
}

double QVCalculateResponse(const QVKrigeResult& result, double errorValue) {
  return QVCalculateResponse(result.GetBase(), errorValue);
}

double QVCalculateVariance(const QVKrigeResultBase& result, double errorValue) {
  if (!result.Valid()) return errorValue;
  if (const std::optional<QVKrigeEstimate> estimate = FindEstimate(result))
    return estimate->variance;
  const QVKrigeKernel kernel = result.GetKernel();
  const double sill = kernel.GetSill();
  std::vector<double> covariances(result.GetNumElements());
  for (unsigned int i = 0; i < covariances.size(); ++i) covariances[i] = result.GetDistance(i);
  kernel.GetCovariances(covariances.data(), covariances.data(), covariances.size());
  double sum = 0.0;
  for (unsigned int i = 0; i < covariances.size(); ++i) {
    QV_ASSERT(covariances[i] >= 0.0);
    sum += result.GetWeight(i) * covariances[i];
  }
  const double variance = sill - sum;
  return variance < 0.0 ? errorValue : variance;
}

double QVCalculateVariance(const QVKrigeResult& result, double errorValue) {
  return QVCalculateVariance(result.GetBase(), errorValue);
}

}  // namespace QVStats
