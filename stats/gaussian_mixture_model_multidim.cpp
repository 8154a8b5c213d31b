// A component in d dimensions, and the mixture of such.

#include <algorithm>
#include <cmath>
#include <sstream>

#include "platform/math/dense_kernels.h"
#include "platform/math/special_functions.h"
#include "platform/system/cast.h"
#include "stats/api/gaussian_mixture_multidim.h"
#include "stats/api/matrix.h"
#include "stats/api/stats_data_types.h"
#include "stats/failure.h"
#include "stats/gaussian_mixture_model_fit.h"
#include "stats/gaussian_mixture_model_seeds.h"

namespace QVStats {

namespace {

using QVStatModelFailureType::InternalLogicFailure;
using QVStatModelFailureType::ObjectNotValid;
using QVStatsBadData::BadDouble;
using Values = std::vector<double>;

constexpr double kLog2 = 0.6931471805599453;
constexpr double kLog2Pi = 1.8378770664093453;
constexpr double kNoData = 2.220446049250313e-16;

/// log of the Wishart normaliser B(W, nu) (Bishop, equation B.79), without the power of pi.
double GetLogWishartNormaliser(double logDetW, double nu, std::size_t d) {
  double value = -0.5 * nu * logDetW - 0.5 * nu * static_cast<double>(d) * kLog2;
  for (std::size_t i = 0; i < d; ++i)
    value -= QVMath::QVlgamma(0.5 * (nu - static_cast<double>(i)));
  return value;
}

/// a += factor v v', the lower and the upper triangle alike.
void AddOuterProduct(Values& a, double factor, const Values& v) {
  for (std::size_t i = 0; i < v.size(); ++i)
    for (std::size_t j = 0; j < v.size(); ++j) a[i * v.size() + j] += factor * v[i] * v[j];
}

}  // namespace

QVMultiDimGaussMixComponent::QVMultiDimGaussMixComponent(
    const std::vector<std::string>& variableNames, const QVGaussMixParam& probParams,
    const QVGaussMixParam& gaussParams)
    : variableNames_(variableNames), probParams_(probParams), gaussParams_(gaussParams) {}

QVStatModelResult QVMultiDimGaussMixComponent::ReadGauss(bool prior, GaussWishart& values,
                                                         const char* where) const {
  Values kappa, nu;
  const QVStatModelResult result =
      prior ? GetBayesPriorGaussWishartParams(values.m, kappa, nu, values.W, values.L)
            : GetBayesPosteriorGaussWishartParams(values.m, kappa, nu, values.W, values.L);
  if (result.NotSuccessful()) return QVCalledFrom(where, result);
  values.kappa = kappa[0];
  values.nu = nu[0];
  return true;
}

namespace {

using VectorGetter = QVStatModelResult (QVGaussMixParam::*)(Values&, std::size_t,
                                                            std::size_t) const;

/// Reads the five values of a Gauss-Wishart parameter.
QVStatModelResult ReadGaussWishart(const QVGaussMixParam& param, VectorGetter get, std::size_t d,
                                   const std::vector<Values*>& outputs, const char* where) {
  if (param.GetParameterType() != QVGaussMixParamType::GaussWishart)
    return QVFailure(InternalLogicFailure, where);
  const std::size_t sizes[] = {d, 1, 1, d * d, d * d};
  for (std::size_t i = 0; i < outputs.size(); ++i) {
    const QVStatModelResult result = (param.*get)(*outputs[i], i, sizes[i]);
    if (result.NotSuccessful()) return QVCalledFrom(where, result);
  }
  return true;
}

}  // namespace

QVStatModelResult QVMultiDimGaussMixComponent::GetBayesPriorGaussWishartParams(
    Values& m, Values& kappa, Values& nu, Values& W, Values& L) const {
  return ReadGaussWishart(gaussParams_, &QVGaussMixParam::GetInitialOrPriorParamVector,
                          GetDimension(), {&m, &kappa, &nu, &W, &L},
                          "QVMultiDimGaussMixComponent::GetBayesPriorGaussWishartParams");
}

QVStatModelResult QVMultiDimGaussMixComponent::GetBayesPosteriorGaussWishartParams(
    Values& m, Values& kappa, Values& nu, Values& W, Values& L) const {
  return ReadGaussWishart(gaussParams_, &QVGaussMixParam::GetCurrentOrPosteriorParamVector,
                          GetDimension(), {&m, &kappa, &nu, &W, &L},
                          "QVMultiDimGaussMixComponent::GetBayesPosteriorGaussWishartParams");
}

double QVMultiDimGaussMixComponent::GetLogDetPrecision(QVStatModelResult& result, bool textbook,
                                                       const char* where) const {
  GaussWishart p;
  result = gaussParams_.GetParameterType() == QVGaussMixParamType::GaussWishart
               ? ReadGauss(false, p, where)
               : QVStatModelResult(QVFailure(InternalLogicFailure, where));
  if (result.NotSuccessful()) return BadDouble;
  double logDet;
  result = QVLogDeterminantOfLowerTriSqRoot(GetDimension(), p.L, logDet);
  if (QVFailedIn(result, where)) return BadDouble;
  const double first = textbook ? p.nu : p.nu + 1.0;
  double sum = static_cast<double>(GetDimension()) * kLog2 + (textbook ? 1.0 : 2.0) * logDet;
  for (std::size_t i = 0; i < GetDimension(); ++i)
    sum += QVMath::QVDiGamma(0.5 * (first - static_cast<double>(i)));
  return sum;
}

double QVMultiDimGaussMixComponent::GetExpectedLogDetGaussPrecision(
    QVStatModelResult& result) const {
  return GetLogDetPrecision(result, false,
                            "QVMultiDimGaussMixComponent::GetExpectedLogDetGaussPrecision");
}

double QVMultiDimGaussMixComponent::GetTextbookLogDetGaussPrecision(
    QVStatModelResult& result) const {
  return GetLogDetPrecision(result, true,
                            "QVMultiDimGaussMixComponent::GetTextbookLogDetGaussPrecision");
}

QVStatModelResult QVMultiDimGaussMixComponent::EStep(const Values& data, bool textbook,
                                                     const char* where) {
  const std::size_t d = GetDimension();
  GaussWishart p;
  QVStatModelResult result = ReadGauss(false, p, where);
  if (result.NotSuccessful()) return result;
  if (d == 0 || data.size() % d != 0)
    return QVFailure(QVStatModelFailureType::WrongInputVectorSize, where);
  const double expectedLogWeight = GetExpectedLogComponentProb(result, probParams_);
  if (QVFailedIn(result, where)) return result;
  const double logDet = GetLogDetPrecision(result, textbook, where);
  if (result.NotSuccessful()) return result;
  const double size = static_cast<double>(d);
  const double scale = expectedLogWeight + 0.5 * (logDet - size * kLog2Pi - size / p.kappa);
  responsibilities_.resize(data.size() / d);
  logRelativeResponsibilities_.resize(data.size() / d);
  Values delta(d), product(d);
  for (std::size_t n = 0; n < logRelativeResponsibilities_.size(); ++n) {
    for (std::size_t i = 0; i < d; ++i) delta[i] = data[n * d + i] - p.m[i];
    double square = 0.0;
    result = QVMatrixTimesVector(d, p.W, delta, product);
    if (result.IsSuccessful()) result = QVDotProductOfVectors(d, delta, product, square);
    if (QVFailedIn(result, where)) return result;
    logRelativeResponsibilities_[n] = scale - 0.5 * p.nu * square;
  }
  return true;
}

QVStatModelResult QVMultiDimGaussMixComponent::EStepUpdateLogRelativeResponsibility(
    const Values& data) {
  return EStep(data, false, "QVMultiDimGaussMixComponent::EStepUpdateLogRelativeResponsibility");
}

QVStatModelResult QVMultiDimGaussMixComponent::EStepUpdateByTextbook(const Values& data) {
  return EStep(data, true, "QVMultiDimGaussMixComponent::EStepUpdateByTextbook");
}

QVStatModelResult QVMultiDimGaussMixComponent::CheckSizeResponsibilityVec(std::size_t n) const {
  if (logRelativeResponsibilities_.size() == n) return true;
  return QVFailure(QVStatModelFailureType::MismatchBetweenPrivateVecSizes,
                   "QVMultiDimGaussMixComponent::CheckSizeResponsibilityVec")
         << "Size logResponsibility = " << logRelativeResponsibilities_.size()
         << ". Desired size = " << n;
}

double QVMultiDimGaussMixComponent::EStepGetLogRelativeResponsibility(std::size_t n) const {
  return n < logRelativeResponsibilities_.size() ? logRelativeResponsibilities_[n] : BadDouble;
}

void QVMultiDimGaussMixComponent::EStepFillResponsibilityAndLogResp(std::size_t n, double resp,
                                                                    double logResp) {
  if (n >= responsibilities_.size()) return;
  responsibilities_[n] = resp;
  logRelativeResponsibilities_[n] = logResp;
}

QVStatModelResult QVMultiDimGaussMixComponent::GetSampleMoments(const Values& data) {
  const std::size_t d = GetDimension();
  if (responsibilities_.size() * d != data.size())
    return QVFailure(QVStatModelFailureType::MismatchBetweenInputVecSizes,
                     "QVMultiDimGaussMixComponent::GetSampleMoments");
  Nk_ = 0.0;
  xbar_.assign(d, 0.0);
  Sk_.assign(d * d, 0.0);
  double count = 0.0;
  for (const double r : responsibilities_) count += r;
  if (count <= kNoData) return true;
  Nk_ = count;
  for (std::size_t n = 0; n < responsibilities_.size(); ++n)
    for (std::size_t i = 0; i < d; ++i) xbar_[i] += responsibilities_[n] / count * data[n * d + i];
  Values delta(d);
  for (std::size_t n = 0; n < responsibilities_.size(); ++n) {
    for (std::size_t i = 0; i < d; ++i) delta[i] = data[n * d + i] - xbar_[i];
    AddOuterProduct(Sk_, responsibilities_[n] / count, delta);
  }
  return true;
}

QVStatModelResult QVMultiDimGaussMixComponent::UpdateGaussParams() {
  constexpr const char* where = "QVMultiDimGaussMixComponent::UpdateGaussParams";
  const std::size_t d = GetDimension();
  if (xbar_.size() != d)
    return QVFailure(QVStatModelFailureType::MismatchBetweenPrivateVecSizes, where);
  GaussWishart prior;
  QVStatModelResult result = ReadGauss(true, prior, where);
  if (result.NotSuccessful()) return result;
  const double kappa = prior.kappa + Nk_;
  Values mean(d), shift(d), scatter, W, L;
  for (std::size_t i = 0; i < d; ++i) {
    mean[i] = (prior.kappa * prior.m[i] + Nk_ * xbar_[i]) / kappa;
    shift[i] = xbar_[i] - prior.m[i];
  }
  result = QVInvOfSymmPosDefMatrixFromLowTriSqRoot(d, prior.L, scatter);
  if (result.IsSuccessful()) {
    for (std::size_t i = 0; i < d * d; ++i) scatter[i] += Nk_ * Sk_[i];
    AddOuterProduct(scatter, prior.kappa * Nk_ / kappa, shift);
    result = QVInverseOfSymmetricPositiveDefiniteMatrix(d, scatter, W);
  }
  if (result.IsSuccessful()) result = QVCholeskyDecomposition(d, W, L);
  if (QVFailedIn(result, where)) return result;
  const Values updates[] = {mean, {kappa}, {prior.nu + Nk_}, W, L};
  for (std::size_t i = 0; i < std::size(updates); ++i) {
    result = gaussParams_.SetCurrentOrPosteriorParamVector(updates[i], i);
    if (QVFailedIn(result, where)) return result;
  }
  return true;
}

QVStatModelResult QVMultiDimGaussMixComponent::MStepUpdateParams(const Values& data) {
  QVStatModelResult result = GetSampleMoments(data);
  if (result.IsSuccessful())
    result = UpdateComponentProbParams(Nk_, probParams_, responsibilities_.size());
  if (result.IsSuccessful()) result = UpdateGaussParams();
  return QVCalledFrom("QVMultiDimGaussMixComponent::MStepUpdateParams", result);
}

double QVMultiDimGaussMixComponent::GetNegativeDivergence(QVStatModelResult& result) const {
  constexpr const char* where = "QVMultiDimGaussMixComponent::GetNegativeDivergence";
  const std::size_t d = GetDimension();
  const double size = static_cast<double>(d);
  GaussWishart prior, p;
  result = ReadGauss(true, prior, where);
  if (result.IsSuccessful()) result = ReadGauss(false, p, where);
  if (result.NotSuccessful()) return BadDouble;
  double logDet0, logDet, square, trace;
  Values shift, product, inverse;
  result = QVLogDeterminantOfLowerTriSqRoot(d, prior.L, logDet0);
  if (result.IsSuccessful()) result = QVLogDeterminantOfLowerTriSqRoot(d, p.L, logDet);
  if (result.IsSuccessful()) result = QVDifferenceBetweenVectors(d, p.m, prior.m, shift);
  if (result.IsSuccessful()) result = QVMatrixTimesVector(d, p.W, shift, product);
  if (result.IsSuccessful()) result = QVDotProductOfVectors(d, shift, product, square);
  if (result.IsSuccessful()) result = QVInvOfSymmPosDefMatrixFromLowTriSqRoot(d, prior.L, inverse);
  if (result.IsSuccessful()) result = QVTraceOfMatrixProduct(d, inverse, p.W, trace);
  if (QVFailedIn(result, where)) return BadDouble;
  const double expectedLogDet = GetTextbookLogDetGaussPrecision(result);
  if (QVFailedIn(result, where)) return BadDouble;
  const double gauss = 0.5 * (size * (std::log(p.kappa / prior.kappa) + prior.kappa / p.kappa - 1) +
                              prior.kappa * p.nu * square);
  const double wishart = GetLogWishartNormaliser(logDet, p.nu, d) -
                         GetLogWishartNormaliser(logDet0, prior.nu, d) +
                         0.5 * (p.nu - prior.nu) * expectedLogDet + 0.5 * p.nu * (trace - size);
  const double priorWeight = GetExpectedLogDirichletPrior(result, probParams_);
  if (QVFailedIn(result, where)) return BadDouble;
  const double weight = GetExpectedLogDirichletPosterior(result, probParams_);
  return QVFailedIn(result, where) ? BadDouble : priorWeight - weight - gauss - wishart;
}

QVStatModelResult QVMultiDimGaussMixComponent::GetComponentParams(Values& values) const {
  constexpr const char* where = "QVMultiDimGaussMixComponent::GetComponentParams";
  const std::size_t d = GetDimension();
  GaussWishart p;
  Values inverse;
  QVStatModelResult result = ReadGauss(false, p, where);
  if (result.NotSuccessful()) return result;
  const double weight = GetExpectedComponentProbability(result, probParams_);
  if (QVFailedIn(result, where)) return result;
  result = QVInvOfSymmPosDefMatrixFromLowTriSqRoot(d, p.L, inverse);
  if (QVFailedIn(result, where)) return result;
  values.push_back(weight);
  values.insert(values.end(), p.m.begin(), p.m.end());
  for (const double element : inverse) values.push_back(element / p.nu);
  return true;
}

std::string QVMultiDimGaussMixComponent::Print() const {
  std::ostringstream text;
  text << "Mixture component of";
  for (const std::string& name : variableNames_) text << ' ' << name;
  text << ": \n" << probParams_.Print() << gaussParams_.Print() << "Nk = " << Nk_ << '\n';
  return text.str();
}

QVMultiDimGaussMixModel::QVMultiDimGaussMixModel(std::uint64_t numComponents,
                                                 const std::vector<std::string>& variableNames,
                                                 double priorSampleSize, const Values& data)
    : data_(data), fitness_(BadDouble) {
  const std::size_t d = variableNames.size();
  if (numComponents == 0 || d == 0 || data.empty() || data.size() % d != 0) return;
  numPoints_ = data.size() / d;
  QVMultiDimSeeds seeds;
  if (!QVFindMultiDimSeeds(data, d, numComponents, seeds)) return;
  // The expected precision nu W is the inverse of the pooled covariance.
  const double nu = static_cast<double>(d) + 1.0;
  Values scatter(seeds.covariance), W, L;
  for (double& element : scatter) element *= nu;
  if (QVInverseOfSymmetricPositiveDefiniteMatrix(d, scatter, W).NotSuccessful() ||
      QVCholeskyDecomposition(d, W, L).NotSuccessful())
    return;
  const double coefficient = priorSampleSize / QVSystem::QVDoubleFromCount(numComponents);
  const auto weights = QVMakeDirichletWeights(Values(numComponents, coefficient));
  for (std::uint64_t k = 0; k < numComponents; ++k)
    components_.emplace_back(
        variableNames, weights[k],
        QVGaussMixParam(QVGaussMixParamType::GaussWishart, "Bayes Gauss-Wishart Params",
                        {"Gauss-Wishart Mean", "Gauss-Wishart Precision Multiplier",
                         "Gauss-Wishart Degrees Of Freedom", "Gauss-Wishart Scale Matrix",
                         "Gauss-Wishart Square Root Of Scale Matrix"},
                        std::vector<Values>{seeds.means[k], {1.0}, {nu}, W, L}));
  valid_ = true;
}

QVStatModelResult QVMultiDimGaussMixModel::DoOneEMCycle() {
  constexpr const char* where = "QVMultiDimGaussMixModel::DoOneEMCycle";
  if (!valid_) return QVFailure(ObjectNotValid, where);
  QVStatModelResult result(true);
  double bound = 0.0;
  for (QVMultiDimGaussMixComponent& component : components_) {
    result = component.EStepUpdateByTextbook(data_);
    if (QVFailedIn(result, where)) return result;
    bound += component.GetNegativeDivergence(result);
    if (QVFailedIn(result, where)) return result;
  }
  const QVMath::QVDenseKernels& kernels = QVMath::QVGetDenseKernels();
  Values shares(components_.size()), logs(components_.size());
  for (std::size_t n = 0; n < numPoints_; ++n) {
    double largest = -BadDouble, sum = 0.0;
    for (std::size_t k = 0; k < components_.size(); ++k)
      largest = std::max(largest, logs[k] = components_[k].EStepGetLogRelativeResponsibility(n));
    for (double& log : logs) log -= largest;
    kernels.exp(shares.size(), logs.data(), shares.data());
    for (const double share : shares) sum += share;
    const double logSum = std::log(sum);
    bound += largest + logSum;
    for (std::size_t k = 0; k < components_.size(); ++k)
      components_[k].EStepFillResponsibilityAndLogResp(n, shares[k] / sum, logs[k] - logSum);
  }
  fitness_ = bound;
  for (QVMultiDimGaussMixComponent& component : components_) {
    result = component.MStepUpdateParams(data_);
    if (QVFailedIn(result, where)) return result;
  }
  return true;
}

QVStatModelResult QVMultiDimGaussMixModel::FitModel(double& fitness, double fitnessTol,
                                                    std::uint64_t maxCycles) {
  constexpr const char* where = "QVMultiDimGaussMixModel::FitModel";
  fitness = BadDouble;
  if (!valid_) return QVFailure(ObjectNotValid, where);
  for (std::uint64_t cycle = 0; cycle != maxCycles; ++cycle) {
    const QVStatModelResult result = DoOneEMCycle();
    if (result.NotSuccessful()) return QVCalledFrom(where, result);
    const double change = fitness_ - fitness;
    fitness = fitness_;
    if (!(std::abs(change) < fitnessTol)) continue;
    fitness += QVMath::QVlgamma(static_cast<double>(components_.size()) + 1.0);
    return true;
  }
  return QVFailure(InternalLogicFailure, where)
         << "The lower bound still changes after " << maxCycles << " cycles";
}

double QVMultiDimGaussMixModel::GetModelFitness(QVStatModelResult& result) const {
  result = true;
  if (!valid_) result = QVFailure(ObjectNotValid, "QVMultiDimGaussMixModel::GetModelFitness");
  return valid_ ? fitness_ : BadDouble;
}

QVStatModelResult QVMultiDimGaussMixModel::GetModelParams(Values& params) const {
  constexpr const char* where = "QVMultiDimGaussMixModel::GetModelParams";
  params.clear();
  if (!valid_) return QVFailure(ObjectNotValid, where);
  for (const QVMultiDimGaussMixComponent& component : components_) {
    const QVStatModelResult result = component.GetComponentParams(params);
    if (result.NotSuccessful()) return QVCalledFrom(where, result);
  }
  return true;
}

QVStatModelResult QVMultiDimGaussMixModel::GetAssignments(
    std::vector<std::size_t>& components) const {
  constexpr const char* where = "QVMultiDimGaussMixModel::GetAssignments";
  components.clear();
  if (!valid_) return QVFailure(ObjectNotValid, where);
  for (const QVMultiDimGaussMixComponent& component : components_) {
    const QVStatModelResult result = component.CheckSizeResponsibilityVec(numPoints_);
    if (result.NotSuccessful()) return QVCalledFrom(where, result);
  }
  components.assign(numPoints_, 0);
  for (std::size_t n = 0; n < numPoints_; ++n)
    for (std::size_t k = 1; k < components_.size(); ++k)
      if (components_[k].EStepGetLogRelativeResponsibility(n) >
          components_[components[n]].EStepGetLogRelativeResponsibility(n))
        components[n] = k;
  return true;
}

QVSystem::QVIter<const QVMultiDimGaussMixComponent> QVMultiDimGaussMixModel::GetComponents() const {
  return QVSystem::QVMakeIter<const QVMultiDimGaussMixComponent>(components_);
}

std::string QVMultiDimGaussMixModel::Print() const {
  if (!valid_) return "INVALID MIXTURE MODEL!\n";
  std::string text = "QVMultiDimGaussMixModel: \n";
  for (const QVMultiDimGaussMixComponent& component : components_) text += component.Print();
  return text;
}

}  // namespace QVStats
