// A one-dimensional component: its steps, its moments and its terms of the lower bound.

#include <algorithm>
#include <cmath>
#include <sstream>

#include "platform/math/special_functions.h"
#include "stats/api/gaussian_mixture_component.h"
#include "stats/api/stats_data_types.h"
#include "stats/failure.h"

namespace QVStats {

namespace {

using QVStatModelFailureType::InternalLogicFailure;
using QVStatsBadData::BadDouble;
namespace Type = QVGaussMixParamType;

constexpr double kLog2Pi = 1.8378770664093453;
constexpr double kInverse2Pi = 0.15915494309189535;
constexpr double kNoData = 2.220446049250313e-16;

/// The four values of a Gauss-Gamma parameter.
struct GaussGamma {
  double m = 0.0, kappa = 0.0, a = 0.0, b = 0.0;
};

/// E[log density] of a Gauss-Gamma distribution under one of the same m, kappa and a / b; b E[tau]
/// is a, as the caller rounds it.
double GetExpectedLogDensity(const GaussGamma& p, double expectedLogTau, double precisionTimesB) {
  return 0.5 * (std::log(p.kappa * kInverse2Pi) + expectedLogTau - 1.0) + p.a * std::log(p.b) -
         QVMath::QVlgamma(p.a) + (p.a - 1.0) * expectedLogTau - precisionTimesB;
}

}  // namespace

QVOneDimGaussMixComponent::QVOneDimGaussMixComponent(const std::string& name,
                                                     const QVGaussMixParam& probParams,
                                                     const QVGaussMixParam& gaussParams)
    : name_(name), probParams_(probParams), gaussParams_(gaussParams) {}

QVStatModelResult QVOneDimGaussMixComponent::CheckSizeResponsibilityVec(std::size_t n) const {
  if (logRelativeResponsibilities_.size() == n) return true;
  return QVFailure(QVStatModelFailureType::MismatchBetweenPrivateVecSizes,
                   "QVOneDimGaussMixComponent::CheckSizeResponsibilityVec")
         << "Size logResponsibility = " << logRelativeResponsibilities_.size()
         << ". Desired size = " << n;
}

QVStatModelResult QVOneDimGaussMixComponent::ReadGauss(bool prior,
                                                       std::initializer_list<double*> values,
                                                       unsigned int paramType,
                                                       const char* where) const {
  if (gaussParams_.GetParameterType() != paramType) return QVFailure(InternalLogicFailure, where);
  QVStatModelResult result(true);
  std::size_t i = 0;
  for (double* const value : values) {
    *value = prior ? gaussParams_.GetInitialOrPriorParamVal(result, i)
                   : gaussParams_.GetCurrentOrPosteriorParamVal(result, i);
    if (QVFailedIn(result, where)) break;
    ++i;
  }
  return result;
}

QVStatModelResult QVOneDimGaussMixComponent::GetFrequentistGaussParams(double& mean,
                                                                       double& precision) const {
  return ReadGauss(false, {&mean, &precision}, Type::FrequentistGauss,
                   "QVOneDimGaussMixComponent::GetFrequentistGaussParams");
}

QVStatModelResult QVOneDimGaussMixComponent::GetBayesPriorGaussParams(double& m, double& kappa,
                                                                      double& a, double& b) const {
  return ReadGauss(true, {&m, &kappa, &a, &b}, Type::GaussGamma,
                   "QVOneDimGaussMixComponent::GetBayesPriorGaussParams");
}

QVStatModelResult QVOneDimGaussMixComponent::GetBayesPosteriorGaussParams(double& m, double& kappa,
                                                                          double& a,
                                                                          double& b) const {
  return ReadGauss(false, {&m, &kappa, &a, &b}, Type::GaussGamma,
                   "QVOneDimGaussMixComponent::GetBayesPosteriorGaussParams");
}

double QVOneDimGaussMixComponent::GetExpectedLogGaussPrecision(QVStatModelResult& result) const {
  constexpr const char* where = "QVOneDimGaussMixComponent::GetExpectedLogGaussPrecision";
  double mean, precision;
  GaussGamma p;
  switch (gaussParams_.GetParameterType()) {
    case Type::FrequentistGauss:
      result = QVCalledFrom(where, GetFrequentistGaussParams(mean, precision));
      return result.IsSuccessful() ? std::log(precision) : BadDouble;
    case Type::GaussGamma:
      result = QVCalledFrom(where, GetBayesPosteriorGaussParams(p.m, p.kappa, p.a, p.b));
      return result.IsSuccessful() ? QVMath::QVDiGamma(p.a) - std::log(p.b) : BadDouble;
    default:
      result = QVFailure(InternalLogicFailure, where);
      return BadDouble;
  }
}

QVStatModelResult QVOneDimGaussMixComponent::GetTerms(Terms& terms) const {
  constexpr const char* where = "QVOneDimGaussMixComponent::EStepUpdateLogRelativeResponsibility";
  QVStatModelResult result(true);
  const double expectedLogWeight = GetExpectedLogComponentProb(result, probParams_);
  if (QVFailedIn(result, where)) return result;
  const double expectedLogTau = GetExpectedLogGaussPrecision(result);
  if (QVFailedIn(result, where)) return result;
  double precision, inverseKappa = 0.0;
  if (gaussParams_.GetParameterType() == Type::FrequentistGauss) {
    result = GetFrequentistGaussParams(terms.center, precision);
  } else {
    GaussGamma p;
    result = GetBayesPosteriorGaussParams(terms.center, p.kappa, p.a, p.b);
    precision = p.a / p.b;
    inverseKappa = 1.0 / p.kappa;
  }
  terms.logScale = expectedLogWeight + 0.5 * (expectedLogTau - kLog2Pi - inverseKappa);
  terms.halfPrecision = 0.5 * precision;
  return QVCalledFrom(where, result);
}

QVStatModelResult QVOneDimGaussMixComponent::EStepUpdateLogRelativeResponsibility(
    const std::vector<double>& data) {
  Terms terms;
  const QVStatModelResult result = GetTerms(terms);
  if (result.NotSuccessful()) return result;
  responsibilities_.resize(data.size());
  logRelativeResponsibilities_.resize(data.size());
  for (std::size_t n = 0; n < data.size(); ++n) {
    const double d = data[n] - terms.center;
    logRelativeResponsibilities_[n] = terms.logScale - terms.halfPrecision * d * d;
  }
  return true;
}

double QVOneDimGaussMixComponent::EStepGetLogRelativeResponsibility(std::size_t n) const {
  return n < logRelativeResponsibilities_.size() ? logRelativeResponsibilities_[n] : BadDouble;
}

void QVOneDimGaussMixComponent::EStepFillResponsibilityAndLogResp(std::size_t n, double resp,
                                                                  double logResp) {
  if (n >= std::min(responsibilities_.size(), logRelativeResponsibilities_.size())) return;
  responsibilities_[n] = resp;
  logRelativeResponsibilities_[n] = logResp;
}

QVStatModelResult QVOneDimGaussMixComponent::GetSampleMoments(const std::vector<double>& data) {
  if (responsibilities_.size() != data.size())
    return QVFailure(QVStatModelFailureType::MismatchBetweenInputVecSizes,
                     "QVOneDimGaussMixComponent::GetSampleMoments");
  double count = 0.0, sum = 0.0, squares = 0.0;
  for (std::size_t n = 0; n < data.size(); ++n) {
    count += responsibilities_[n];
    sum += responsibilities_[n] * data[n];
  }
  Nk_ = xbar_ = Sk_ = 0.0;
  if (count <= kNoData) return true;
  Nk_ = count;
  xbar_ = sum / count;
  for (std::size_t n = 0; n < data.size(); ++n)
    squares += responsibilities_[n] * (data[n] - xbar_) * (data[n] - xbar_);
  Sk_ = squares / count;
  return true;
}

void QVOneDimGaussMixComponent::SetSampleMoments(double count, double mean, double variance) {
  const bool none = count <= kNoData;
  Nk_ = none ? 0.0 : count;
  xbar_ = none ? 0.0 : mean;
  Sk_ = none ? 0.0 : variance;
  responsibilities_.clear();
  logRelativeResponsibilities_.clear();
}

QVStatModelResult QVOneDimGaussMixComponent::UpdateGaussParams() {
  constexpr const char* where = "QVOneDimGaussMixComponent::UpdateGaussParams";
  double values[4];
  std::size_t numValues = 0;
  if (gaussParams_.GetParameterType() == Type::FrequentistGauss) {
    if (Sk_ <= 0.0)
      return QVFailure(QVStatModelFailureType::SingularScaleOrCovariance, where)
             << "Sample variance = " << Sk_;
    values[numValues++] = xbar_;
    values[numValues++] = 1.0 / Sk_;
  } else if (gaussParams_.GetParameterType() == Type::GaussGamma) {
    GaussGamma prior;
    const QVStatModelResult result =
        GetBayesPriorGaussParams(prior.m, prior.kappa, prior.a, prior.b);
    if (result.NotSuccessful()) return QVCalledFrom(where, result);
    const double kappa = prior.kappa + Nk_, shift = xbar_ - prior.m;
    values[numValues++] = (prior.kappa * prior.m + Nk_ * xbar_) / kappa;
    values[numValues++] = kappa;
    values[numValues++] = prior.a + 0.5 * Nk_;
    values[numValues++] =
        prior.b + 0.5 * Nk_ * Sk_ + (prior.kappa * Nk_ / kappa) * shift * shift * 0.5;
  } else {
    return QVFailure(InternalLogicFailure, where);
  }
  for (std::size_t i = 0; i < numValues; ++i) {
    const QVStatModelResult result = gaussParams_.SetCurrentOrPosteriorParamVal(values[i], i);
    if (result.NotSuccessful()) return QVCalledFrom(where, result);
  }
  return true;
}

QVStatModelResult QVOneDimGaussMixComponent::UpdateParams(std::uint64_t numData) {
  constexpr const char* where = "QVOneDimGaussMixComponent::MStepUpdateParams";
  const QVStatModelResult result = UpdateComponentProbParams(Nk_, probParams_, numData);
  return QVCalledFrom(where, result.NotSuccessful() ? result : UpdateGaussParams());
}

QVStatModelResult QVOneDimGaussMixComponent::MStepUpdateParams(const std::vector<double>& data) {
  const QVStatModelResult result = GetSampleMoments(data);
  if (result.NotSuccessful())
    return QVCalledFrom("QVOneDimGaussMixComponent::MStepUpdateParams", result);
  return UpdateParams(data.size());
}

double QVOneDimGaussMixComponent::GetExpectedLogProbZGivenComponentProb(
    QVStatModelResult& result) const {
  const double expectedLog = GetExpectedLogComponentProb(result, probParams_);
  return QVFailedIn(result, "QVOneDimGaussMixComponent::GetExpectedLogProbZGivenComponentProb")
             ? BadDouble
             : Nk_ * expectedLog;
}

double QVOneDimGaussMixComponent::GetExpectedLogOfVarDistOfZ() const {
  double sum = 0.0;
  for (std::size_t n = 0; n < responsibilities_.size(); ++n)
    if (responsibilities_[n] != 0.0) sum += responsibilities_[n] * logRelativeResponsibilities_[n];
  return sum;
}

double QVOneDimGaussMixComponent::GetExpectedLogPriorGaussGamma(QVStatModelResult& result) const {
  constexpr const char* where = "QVOneDimGaussMixComponent::GetExpectedLogPriorGaussGamma";
  GaussGamma prior;
  result = QVCalledFrom(where, GetBayesPriorGaussParams(prior.m, prior.kappa, prior.a, prior.b));
  if (result.NotSuccessful()) return BadDouble;
  const double expectedLogTau = GetExpectedLogGaussPrecision(result);
  if (QVFailedIn(result, where)) return BadDouble;
  return GetExpectedLogDensity(prior, expectedLogTau, prior.b * (prior.a / prior.b));
}

double QVOneDimGaussMixComponent::GetExpectedLogPosteriorGaussGamma(
    QVStatModelResult& result) const {
  constexpr const char* where = "QVOneDimGaussMixComponent::GetExpectedLogPosteriorGaussGamma";
  GaussGamma p;
  result = QVCalledFrom(where, GetBayesPosteriorGaussParams(p.m, p.kappa, p.a, p.b));
  if (result.NotSuccessful()) return BadDouble;
  const double expectedLogTau = GetExpectedLogGaussPrecision(result);
  if (QVFailedIn(result, where)) return BadDouble;
  return GetExpectedLogDensity(p, expectedLogTau, p.a);
}

double QVOneDimGaussMixComponent::GetExpectedLogProbDataGivenZAndParams(
    QVStatModelResult& result) const {
  constexpr const char* where = "QVOneDimGaussMixComponent::GetExpectedLogProbDataGivenZAndParams";
  GaussGamma p;
  result = QVCalledFrom(where, GetBayesPosteriorGaussParams(p.m, p.kappa, p.a, p.b));
  if (result.NotSuccessful()) return BadDouble;
  const double expectedLogTau = GetExpectedLogGaussPrecision(result);
  if (QVFailedIn(result, where)) return BadDouble;
  const double shift = xbar_ - p.m;
  return 0.5 * Nk_ *
         (expectedLogTau - kLog2Pi - 1.0 / p.kappa - (p.a / p.b) * (Sk_ + shift * shift));
}

double QVOneDimGaussMixComponent::GetVariationalBayesLowerBound(QVStatModelResult& result) const {
  using Component = QVOneDimGaussMixComponent;
  constexpr const char* where = "QVOneDimGaussMixComponent::GetVariationalBayesLowerBound";
  struct Term {
    double (Component::*get)(QVStatModelResult&) const;
    double sign;
  };
  constexpr Term kGaussTerms[] = {
      {&Component::GetExpectedLogProbDataGivenZAndParams, 1.0},
      {&Component::GetExpectedLogProbZGivenComponentProb, 1.0},
      {&Component::GetExpectedLogPriorGaussGamma, 1.0},
      {&Component::GetExpectedLogPosteriorGaussGamma, -1.0},
  };
  double bound = -GetExpectedLogOfVarDistOfZ();
  for (const Term& term : kGaussTerms) {
    bound += term.sign * (this->*term.get)(result);
    if (QVFailedIn(result, where)) return BadDouble;
  }
  bound += GetExpectedLogDirichletPrior(result, probParams_);
  if (QVFailedIn(result, where)) return BadDouble;
  bound -= GetExpectedLogDirichletPosterior(result, probParams_);
  return QVFailedIn(result, where) ? BadDouble : bound;
}

double QVOneDimGaussMixComponent::GetComponentOfModelFitness(QVStatModelResult& result) const {
  constexpr const char* where = "QVOneDimGaussMixComponent::GetComponentOfModelFitness";
  result = true;
  switch (probParams_.GetParameterType()) {
    case Type::FrequentistWeight:
      return 0.0;
    case Type::DirichletWeight: {
      const double bound = GetVariationalBayesLowerBound(result);
      QVFailedIn(result, where);
      return bound;
    }
    default:
      result = QVFailure(InternalLogicFailure, where);
      return BadDouble;
  }
}

unsigned int QVOneDimGaussMixComponent::GetNumComponentParams(QVStatModelResult& result) const {
  result = true;
  switch (gaussParams_.GetParameterType()) {
    case Type::FrequentistGauss:
      return 3;
    case Type::GaussGamma:
      return 5;
    default:
      result = QVFailure(InternalLogicFailure, "QVOneDimGaussMixComponent::GetNumComponentParams");
      return 0;
  }
}

QVStatModelResult QVOneDimGaussMixComponent::GetComponentParams(std::vector<double>& values) const {
  constexpr const char* where = "QVOneDimGaussMixComponent::GetComponentParams";
  QVStatModelResult result(true);
  const unsigned int count = GetNumComponentParams(result);
  if (QVFailedIn(result, where)) return result;
  const double weight = GetExpectedComponentProbability(result, probParams_);
  if (QVFailedIn(result, where)) return result;
  values.push_back(weight);
  for (std::size_t i = 0; i + 1 < count; ++i) {
    const double value = gaussParams_.GetCurrentOrPosteriorParamVal(result, i);
    if (QVFailedIn(result, where)) return result;
    values.push_back(value);
  }
  return true;
}

std::string QVOneDimGaussMixComponent::Print() const {
  std::ostringstream text;
  text << "Mixture component " << name_ << ": \n"
       << probParams_.Print() << gaussParams_.Print() << "Nk, xbar, Sk = " << Nk_ << ' ' << xbar_
       << ' ' << Sk_ << '\n';
  return text.str();
}

QVStatModelResult GetComponentParamsForStudentsTPredictiveDist(
    const QVOneDimGaussMixComponent& component, double& weight, double& degreesOfFreedom,
    double& location, double& precision) {
  constexpr const char* where = "GetComponentParamsForStudentsTPredictiveDist";
  QVStatModelResult result(true);
  weight = GetExpectedComponentProbability(result, component.GetComponentProbParams());
  if (QVFailedIn(result, where)) return result;
  GaussGamma p;
  result = component.GetBayesPosteriorGaussParams(p.m, p.kappa, p.a, p.b);
  if (QVFailedIn(result, where)) return result;
  degreesOfFreedom = 2.0 * p.a;
  location = p.m;
  precision = (p.a / p.b) * p.kappa / (p.kappa + 1.0);
  if (precision > 0.0) return true;
  return QVFailure(QVStatModelFailureType::SingularScaleOrCovariance, where)
         << "gaussGammaMean, precMultiplier, alpha, beta = " << p.m << " " << p.kappa << " " << p.a
         << " " << p.b;
}

QVStatModelResult GetComponentParamsForGaussPredictiveDist(
    const QVOneDimGaussMixComponent& component, double& weight, double& mean, double& precision) {
  constexpr const char* where = "GetComponentParamsForGaussPredictiveDist";
  QVStatModelResult result(true);
  weight = GetExpectedComponentProbability(result, component.GetComponentProbParams());
  if (QVFailedIn(result, where)) return result;
  result = component.GetFrequentistGaussParams(mean, precision);
  if (QVFailedIn(result, where)) return result;
  if (precision > 0.0) return true;
  return QVFailure(QVStatModelFailureType::SingularScaleOrCovariance, where)
         << "mean, precision = " << mean << " " << precision;
}

}  // namespace QVStats
