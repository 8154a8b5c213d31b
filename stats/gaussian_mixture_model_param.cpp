// Parameters of mixtures, and the functions of a mixing weight.

#include <algorithm>
#include <cmath>
#include <sstream>

#include "platform/math/special_functions.h"
#include "platform/system/cast.h"
#include "stats/api/gaussian_mixture_component.h"
#include "stats/api/stats_data_types.h"
#include "stats/failure.h"

namespace QVStats {

namespace {

using QVStatModelFailureType::InternalLogicFailure;
using QVStatsBadData::BadDouble;
namespace Type = QVGaussMixParamType;

/// The two values of a Dirichlet weight, prior or posterior.
struct DirichletValues {
  double alpha = 0.0;
  double total = 0.0;
};

enum class Which { Prior, Posterior };

/// Reads them; any other type of parameter is a failure.
DirichletValues ReadDirichlet(QVStatModelResult& result, const QVGaussMixParam& param, Which which,
                              const char* where) {
  DirichletValues values;
  if (param.GetParameterType() != Type::DirichletWeight) {
    result.SetFailureTypeAndWhereFailed(InternalLogicFailure, where);
    return values;
  }
  const auto read = which == Which::Prior ? &QVGaussMixParam::GetInitialOrPriorParamVal
                                          : &QVGaussMixParam::GetCurrentOrPosteriorParamVal;
  values.alpha = (param.*read)(result, 0);
  if (!QVFailedIn(result, where)) {
    values.total = (param.*read)(result, 1);
    QVFailedIn(result, where);
  }
  return values;
}

/// E[log density] of a Dirichlet distribution, one component's share.
double GetExpectedLogDirichlet(QVStatModelResult& result, const QVGaussMixParam& param, Which which,
                               const char* where) {
  result = true;
  const DirichletValues values = ReadDirichlet(result, param, which, where);
  if (result.NotSuccessful()) return BadDouble;
  const double expectedLog = GetExpectedLogComponentProb(result, param);
  if (QVFailedIn(result, where)) return BadDouble;
  return (values.alpha - 1.0) * expectedLog +
         values.alpha / values.total * QVMath::QVlgamma(values.total) -
         QVMath::QVlgamma(values.alpha);
}

}  // namespace

QVGaussMixParam::QVGaussMixParam(unsigned int paramType, const std::string& name,
                                 const std::vector<std::string>& paramNames,
                                 const std::vector<double>& values)
    : valid_(true),
      paramType_(paramType),
      name_(name),
      paramNames_(paramNames),
      sizes_(paramNames.size(), 1),
      initialOrPrior_(values),
      currentOrPosterior_(values) {
  for (std::size_t i = 0; i < paramNames.size(); ++i) offsets_.push_back(i);
}

QVGaussMixParam::QVGaussMixParam(unsigned int paramType, const std::string& name,
                                 const std::vector<std::string>& paramNames,
                                 const std::vector<std::vector<double>>& values)
    : valid_(true), paramType_(paramType), name_(name), paramNames_(paramNames) {
  for (const std::vector<double>& own : values) {
    offsets_.push_back(initialOrPrior_.size());
    sizes_.push_back(own.size());
    initialOrPrior_.insert(initialOrPrior_.end(), own.begin(), own.end());
  }
  currentOrPosterior_ = initialOrPrior_;
}

/// \return the code of the first fault in reading n values of parameter i, `count` of which there
/// may be; Undefined when there is none.
unsigned int QVGaussMixParam::FindFault(std::size_t i, std::size_t count, std::size_t n) const {
  using namespace QVStatModelFailureType;
  if (!valid_) return ObjectNotValid;
  if (i >= count) return ArgumentOutOfRange;
  const bool stored =
      i < sizes_.size() && sizes_[i] == n && offsets_[i] + n <= currentOrPosterior_.size();
  return stored ? Undefined : MismatchBetweenPrivateVecSizes;
}

double QVGaussMixParam::GetValue(QVStatModelResult& result, const std::vector<double>& values,
                                 std::size_t i, const char* where) const {
  const unsigned int fault = FindFault(i, values.size(), 1);
  if (fault != QVStatModelFailureType::Undefined) {
    result.SetFailureTypeAndWhereFailed(fault, where);
    return BadDouble;
  }
  result = true;
  return values[offsets_[i]];
}

QVStatModelResult QVGaussMixParam::GetVector(std::vector<double>& out,
                                             const std::vector<double>& values, std::size_t i,
                                             std::size_t n, const char* where) const {
  const unsigned int fault = FindFault(i, sizes_.size(), n);
  if (fault != QVStatModelFailureType::Undefined) return QVFailure(fault, where);
  const auto begin = values.begin() + static_cast<std::ptrdiff_t>(offsets_[i]);
  out.assign(begin, begin + static_cast<std::ptrdiff_t>(n));
  return true;
}

double QVGaussMixParam::GetInitialOrPriorParamVal(QVStatModelResult& result, std::size_t i) const {
  return GetValue(result, initialOrPrior_, i, "QVGaussMixParam::GetInitialOrPriorParamVal");
}

double QVGaussMixParam::GetCurrentOrPosteriorParamVal(QVStatModelResult& result,
                                                      std::size_t i) const {
  return GetValue(result, currentOrPosterior_, i, "QVGaussMixParam::GetCurrentOrPosteriorParamVal");
}

QVStatModelResult QVGaussMixParam::SetCurrentOrPosteriorParamVal(double value, std::size_t i) {
  const unsigned int fault = FindFault(i, currentOrPosterior_.size(), 1);
  if (fault != QVStatModelFailureType::Undefined)
    return QVFailure(fault, "QVGaussMixParam::SetCurrentOrPosteriorParamVal");
  currentOrPosterior_[offsets_[i]] = value;
  return true;
}

QVStatModelResult QVGaussMixParam::SetCurrentOrPosteriorParamVector(
    const std::vector<double>& values, std::size_t i) {
  const unsigned int fault = FindFault(i, sizes_.size(), values.size());
  if (fault != QVStatModelFailureType::Undefined)
    return QVFailure(fault, "QVGaussMixParam::SetCurrentOrPosteriorParamVector");
  std::copy(values.begin(), values.end(),
            currentOrPosterior_.begin() + static_cast<std::ptrdiff_t>(offsets_[i]));
  return true;
}

QVStatModelResult QVGaussMixParam::GetInitialOrPriorParamVector(std::vector<double>& values,
                                                                std::size_t i,
                                                                std::size_t n) const {
  return GetVector(values, initialOrPrior_, i, n, "QVGaussMixParam::GetInitialOrPriorParamVector");
}

QVStatModelResult QVGaussMixParam::GetCurrentOrPosteriorParamVector(std::vector<double>& values,
                                                                    std::size_t i,
                                                                    std::size_t n) const {
  return GetVector(values, currentOrPosterior_, i, n,
                   "QVGaussMixParam::GetCurrentOrPosteriorParamVector");
}

std::string QVGaussMixParam::Print() const {
  if (!valid_) return "INVALID MIXTURE PARAMETER!\n";
  std::ostringstream text;
  text << name_ << ":\n";
  for (std::size_t i = 0; i < paramNames_.size() && i < sizes_.size(); ++i) {
    text << "  " << paramNames_[i] << ": initial or prior";
    const std::size_t end = std::min<std::size_t>(offsets_[i] + sizes_[i], initialOrPrior_.size());
    for (std::size_t j = offsets_[i]; j < end; ++j) text << ' ' << initialOrPrior_[j];
    text << ", current or posterior";
    for (std::size_t j = offsets_[i]; j < end; ++j) text << ' ' << currentOrPosterior_[j];
    text << '\n';
  }
  return text.str();
}

double GetExpectedComponentProbability(QVStatModelResult& result, const QVGaussMixParam& param) {
  constexpr const char* where = "GetExpectedComponentProbability";
  result = true;
  if (param.GetParameterType() == Type::FrequentistWeight) {
    const double weight = param.GetCurrentOrPosteriorParamVal(result, 0);
    QVFailedIn(result, where);
    return weight;
  }
  const DirichletValues values = ReadDirichlet(result, param, Which::Posterior, where);
  return result.IsSuccessful() ? values.alpha / values.total : BadDouble;
}

double GetExpectedLogComponentProb(QVStatModelResult& result, const QVGaussMixParam& param) {
  constexpr const char* where = "GetExpectedLogComponentProb";
  result = true;
  if (param.GetParameterType() == Type::FrequentistWeight) {
    const double weight = param.GetCurrentOrPosteriorParamVal(result, 0);
    return QVFailedIn(result, where) ? BadDouble : std::log(weight);
  }
  const DirichletValues values = ReadDirichlet(result, param, Which::Posterior, where);
  if (result.NotSuccessful()) return BadDouble;
  return QVMath::QVDiGamma(values.alpha) - QVMath::QVDiGamma(values.total);
}

double GetExpectedLogDirichletPrior(QVStatModelResult& result, const QVGaussMixParam& param) {
  return GetExpectedLogDirichlet(result, param, Which::Prior, "GetExpectedLogDirichletPrior");
}

double GetExpectedLogDirichletPosterior(QVStatModelResult& result, const QVGaussMixParam& param) {
  return GetExpectedLogDirichlet(result, param, Which::Posterior,
                                 "GetExpectedLogDirichletPosterior");
}

QVStatModelResult UpdateComponentProbParams(double Nk, QVGaussMixParam& param, std::uint64_t N) {
  constexpr const char* where = "UpdateComponentProbParams";
  const double count = QVSystem::QVDoubleFromCount(N);
  if (param.GetParameterType() == Type::FrequentistWeight) {
    if (!(Nk < count)) return QVFailure(QVStatModelFailureType::ArgumentOutOfRange, where);
    return QVCalledFrom(where, param.SetCurrentOrPosteriorParamVal(Nk / count, 0));
  }
  QVStatModelResult result(true);
  const DirichletValues prior = ReadDirichlet(result, param, Which::Prior, where);
  if (result.IsSuccessful())
    result = QVCalledFrom(where, param.SetCurrentOrPosteriorParamVal(prior.alpha + Nk, 0));
  if (result.IsSuccessful())
    result = QVCalledFrom(where, param.SetCurrentOrPosteriorParamVal(prior.total + count, 1));
  return result;
}

}  // namespace QVStats
