#include "stats/api/logisticregression.h"

#include <Eigen/LU>
#include <algorithm>
#include <cmath>
#include <iostream>
#include <utility>

#include "platform/math/dense_kernels.h"
#include "platform/math/special_functions.h"
#include "platform/opt/newton_opt.h"
#include "platform/system/error_handler.h"
#include "stats/sample_sums.h"

namespace QVStats {

namespace {

// Required to these digits; they differ from 1/sqrt(2 pi) and sqrt(2/pi) in the thirteenth.
constexpr double kNormFactor = 0.3989422804015919;
constexpr double kRatioFactor = 0.7978845608031838;
constexpr double kHalfRoot = 0.7071067811865475;  // 1/sqrt(2)

/// Below it Phi is left to its asymptotic form.
constexpr double kRangeOfPhi = -30.0;

/// phi(z) / Phi(z). Beyond the range of Phi the continued fraction of the tail takes over:
/// Phi(z) = phi(z) / (t + 1/(t + 2/(t + 3/(t + ...)))), t = -z.
double HazardRatio(double z) {
  if (z >= kRangeOfPhi)
    return kRatioFactor * std::exp(-0.5 * z * z) / QVMath::QVerfc(-z * kHalfRoot);
  double fraction = -z;
  for (int k = 8; k > 0; --k) fraction = -z + k / fraction;
  return fraction;
}

/// log Phi(z).
double LogPhi(double z) {
  if (z >= kRangeOfPhi) return std::log(0.5 * QVMath::QVerfc(-z * kHalfRoot));
  return -0.5 * z * z + std::log(kNormFactor / HazardRatio(z));
}

/// log(1 / (1 + exp(-z))), without overflow.
double LogLogistic(double z) { return std::min(z, 0.0) - std::log1p(std::exp(-std::abs(z))); }

bool IsLogistic(unsigned int type) { return type == QVBinaryRegressionType::Logistic; }

/// What a block of observations adds: the log-likelihood, and V and W of each.
class LinkBlock {
 public:
  // These rows of some dozens of predictors stay in the L1 cache.
  static constexpr std::size_t kSize = 64;

  /// Fills v and w from the first n of z and y. \return the log-likelihood.
  double Evaluate(unsigned int type, std::size_t n, const double* y) {
    return IsLogistic(type) ? kernels_.logisticTerms(n, y, z, v, w) : EvaluateProbit(n, y);
  }

  double z[kSize], v[kSize], w[kSize];

 private:
  double EvaluateProbit(std::size_t n, const double* y) {
    double t[kSize], tail[kSize], r[kSize], logs[kSize];
    for (std::size_t i = 0; i < n; ++i) {
      t[i] = y[i] * z[i];
      tail[i] = -kHalfRoot * t[i];
      r[i] = -0.5 * t[i] * t[i];
    }
    kernels_.erfc(n, tail, tail);
    kernels_.exp(n, r, r);
    for (std::size_t i = 0; i < n; ++i) {
      r[i] *= kRatioFactor / tail[i];
      logs[i] = 0.5 * tail[i];
    }
    kernels_.log(n, logs, logs);
    for (std::size_t i = 0; i < n; ++i)
      if (t[i] < kRangeOfPhi) {
        r[i] = HazardRatio(t[i]);
        logs[i] = LogPhi(t[i]);
      }
    for (std::size_t i = 0; i < n; ++i) {
      v[i] = y[i] * r[i];
      w[i] = (t[i] + r[i]) * r[i];
    }
    return QVSumTerms(0, n, [&](std::size_t i) { return logs[i]; });
  }

  const QVMath::QVDenseKernels& kernels_ = QVMath::QVGetDenseKernels();
};

}  // namespace

double Norm(double x) { return std::exp(-0.5 * x * x) * kNormFactor; }
double Norm(double x, double mean, double sd) { return Norm((x - mean) / sd) / sd; }
double Phi(double x) { return 0.5 * QVMath::QVerfc(-x * kHalfRoot); }

double logistic_func(double z) { return 1.0 / (1.0 + std::exp(-z)); }
double deriv_log_logistic_func(double z) { return logistic_func(-z); }
double second_deriv_log_logistic_func(double z) { return -logistic_func(-z) * logistic_func(z); }

double probit_func(double z) { return Phi(z); }
double deriv_log_probit_func(double z) { return HazardRatio(z); }
double second_deriv_log_probit_func(double z) {
  const double r = HazardRatio(z);
  return r * (-z - r);
}

double reg_func(unsigned int type, double z) {
  return IsLogistic(type) ? logistic_func(z) : probit_func(z);
}
double deriv_log_reg_func(unsigned int type, double z) {
  return IsLogistic(type) ? deriv_log_logistic_func(z) : deriv_log_probit_func(z);
}
double second_deriv_log_reg_func(unsigned int type, double z) {
  return IsLogistic(type) ? second_deriv_log_logistic_func(z) : second_deriv_log_probit_func(z);
}

double log_p(unsigned int type, int y, double z) {
  return IsLogistic(type) ? LogLogistic(y * z) : LogPhi(y * z);
}
double deriv_log_p(unsigned int type, int y, double z) {
  return y * deriv_log_reg_func(type, y * z);
}
double V(unsigned int type, int y, double z) { return deriv_log_p(type, y, z); }
double second_deriv_log_p(unsigned int type, int y, double z) {
  return second_deriv_log_reg_func(type, y * z);
}
double W(unsigned int type, int y, double z) { return -second_deriv_log_p(type, y, z); }

QVRegressionLogLikelihoodOpt::QVRegressionLogLikelihoodOpt(unsigned int p, unsigned int n,
                                                           unsigned int regressionType,
                                                           const std::vector<double>& predictors,
                                                           const std::vector<int>& outcomes)
    : QVRegressionLogLikelihoodOpt(
          p, n, regressionType, std::make_shared<const std::vector<double>>(predictors), outcomes) {
}

QVRegressionLogLikelihoodOpt::QVRegressionLogLikelihoodOpt(
    unsigned int p, unsigned int n, unsigned int regressionType,
    std::shared_ptr<const std::vector<double>> predictors, const std::vector<int>& outcomes)
    : p_(p), n_(n), type_(regressionType), predictors_(std::move(predictors)), outcomes_(n, 1.0) {
  std::copy_n(outcomes.begin(), std::min<std::size_t>(n, outcomes.size()), outcomes_.begin());
}

QVRegressionLogLikelihoodOpt::~QVRegressionLogLikelihoodOpt() = default;

/// The log-likelihood; `gradient` (p) and `information` (p x p, lower triangle by columns, -H) are
/// filled where given. Predictors are read once, a block of rows at a time.
double QVRegressionLogLikelihoodOpt::Accumulate(const double* w, double* gradient,
                                                double* information) const {
  const auto& kernels = QVMath::QVGetDenseKernels();
  const std::size_t p = p_;
  if (gradient) std::fill(gradient, gradient + p, 0.0);
  if (information) std::fill(information, information + p * p, 0.0);
  LinkBlock block;
  double logLikelihood = 0.0;
  for (std::size_t first = 0; first < n_; first += LinkBlock::kSize) {
    const std::size_t rows = std::min(LinkBlock::kSize, n_ - first);
    const double* const x = predictors_->data() + first * p;
    std::fill(block.z, block.z + rows, 0.0);
    kernels.multiplyTransposed(p, rows, 1.0, x, p, w, block.z);
    logLikelihood += block.Evaluate(type_, rows, outcomes_.data() + first);
    if (gradient) kernels.multiplyVector(p, rows, 1.0, x, p, block.v, gradient);
    if (information)
      kernels.rankUpdate(p, rows, block.w, {x, 1, static_cast<std::ptrdiff_t>(p)}, information, p);
  }
  return logLikelihood;
}

double QVRegressionLogLikelihoodOpt::operator()(const double* w) {
  return 0.0 - Accumulate(w, nullptr, nullptr);
}

QVSystem::QVIter<double> QVRegressionLogLikelihoodOpt::GetFComponents(const double*) { return {}; }

double QVRegressionLogLikelihoodOpt::operator()(const double* w, double* gradient) {
  const double value = 0.0 - Accumulate(w, gradient, nullptr);
  for (unsigned int j = 0; j < p_; ++j) gradient[j] = -gradient[j];
  return value;
}

bool QVRegressionLogLikelihoodOpt::CheckVariablesValidity(const double*) { return true; }

bool QVRegressionLogLikelihoodOpt::IsRedundant(const double* w1, const double* w2,
                                               double tolerance) const {
  return std::equal(w1, w1 + p_, w2,
                    [=](double a, double b) { return std::abs(a - b) <= tolerance; });
}

double QVRegressionLogLikelihoodOpt::operator()(const double* w, double* gradient,
                                                double* hessian) {
  const double value = 0.0 - Accumulate(w, gradient, hessian);
  for (std::size_t j = 0; j < p_; ++j) {
    gradient[j] = -gradient[j];
    for (std::size_t i = j + 1; i < p_; ++i) hessian[i * p_ + j] = hessian[j * p_ + i];
  }
  lastPoint_.assign(w, w + p_);
  lastHessian_.assign(hessian, hessian + std::size_t{p_} * p_);
  return value;
}

void QVRegressionLogLikelihoodOpt::CalculateGradientHessian_v2(const double* w,
                                                               std::vector<double>& gradient,
                                                               std::vector<double>& hessian) {
  gradient.resize(p_);
  hessian.resize(std::size_t{p_} * p_);
  (*this)(w, gradient.data(), hessian.data());
  for (double& value : gradient) value = -value;
  for (double& value : hessian) value = -value;
}

void QVRegressionLogLikelihoodOpt::CalculateScoreVariance(const double* w,
                                                          std::vector<double>& sigma) {
  if (lastPoint_.empty() || !std::equal(w, w + p_, lastPoint_.begin())) {
    std::vector<double> gradient, hessian;
    CalculateGradientHessian_v2(w, gradient, hessian);
  }
  const Eigen::Map<const Eigen::MatrixXd> information(lastHessian_.data(), p_, p_);
  const Eigen::MatrixXd covariance = information.partialPivLu().inverse();
  sigma.resize(p_);
  for (Eigen::Index j = 0; j < covariance.rows(); ++j)
    sigma[static_cast<std::size_t>(j)] = std::sqrt(covariance(j, j));
}

void QVBinaryLinearRegression::SetInputData(const std::vector<double>& predictors,
                                            const std::vector<int>& outcomes) {
  predictors_ = std::make_shared<const std::vector<double>>(predictors);
  outcomes_ = outcomes;
}

void QVBinaryLinearRegression::GetInputData(std::vector<double>& predictors,
                                            std::vector<int>& outcomes) const {
  predictors = *predictors_;
  outcomes = outcomes_;
}

void QVBinaryLinearRegression::SetNewtonParams(double tolerance, unsigned int iterationLimit) {
  newtonTolerance_ = tolerance;
  newtonIterLimit_ = iterationLimit;
}

void QVBinaryLinearRegression::GetNewtonParams(double& tolerance,
                                               unsigned int& iterationLimit) const {
  tolerance = newtonTolerance_;
  iterationLimit = newtonIterLimit_;
}

void QVBinaryLinearRegression::Get_p_n_reg_type(unsigned int& p, unsigned int& n,
                                                unsigned int& regressionType) const {
  p = p_;
  n = n_;
  regressionType = type_;
}

void QVBinaryLinearRegression::MaximizeLogLikelihood() {
  if (predictors_->size() < std::size_t{n_} * p_ || outcomes_.size() < n_) {
    QVSystem::QVThrow.Error(
        "QVBinaryLinearRegression::MaximizeLogLikelihood, %zu predictor values and %zu outcomes "
        "are "
        "fewer than %u x %u and %u",
        predictors_->size(), outcomes_.size(), n_, p_, n_);
    return;
  }
  QVRegressionLogLikelihoodOpt objective(p_, n_, type_, predictors_, outcomes_);
  QVOpt::QVNewtonOpt newton;
  newton.SetIterLimit(newtonIterLimit_);
  newton.SetTolerance(newtonTolerance_);
  std::vector<double> w(p_, 0.0);
  const double minimum = newton(objective, nullptr, w.data(), w.data());
  if (newton.GetStatus() != QVOpt::QVNewtonStatus::Converged)
    QVSystem::QVThrow.Warning(
        "QVBinaryLinearRegression::MaximizeLogLikelihood, not converged after %u iterations: "
        "predictors that separate the outcomes drive the coefficients without bound, and dependent "
        "predictors leave them undetermined",
        newton.GetNumIterations());
  objective.CalculateScoreVariance(w.data(), sigma_);
  std::cout << "bestLogLikelihood = " << -minimum << std::endl;
  std::cout << "{w opt, sigma opt} = ";
  for (std::size_t j = 0; j < p_; ++j) {
    std::cout << "{" << w[j] << ", " << sigma_[j] << "}, ";
    coefficients_.push_back(w[j]);
  }
  std::cout << std::endl;
}

void QVBinaryLinearRegression::GetBetaSigma(std::vector<double>& coefficients,
                                            std::vector<double>& sigma) const {
  coefficients = coefficients_;
  sigma = sigma_;
}

void QVBinaryLinearRegression::Predict(unsigned int m, const std::vector<double>& predictors,
                                       std::vector<double>& probabilities) const {
  probabilities.clear();
  if (coefficients_.size() < p_ || predictors.size() < std::size_t{m} * p_) {
    QVSystem::QVThrow.Error(
        "QVBinaryLinearRegression::Predict, %zu coefficients and %zu predictor values are fewer "
        "than "
        "%u and %u x %u",
        coefficients_.size(), predictors.size(), p_, m, p_);
    return;
  }
  for (std::size_t i = 0; i < m; ++i) {
    double z = 0.0;
    for (std::size_t j = 0; j < p_; ++j) z += predictors[i * p_ + j] * coefficients_[j];
    probabilities.push_back(reg_func(type_, z));
  }
}

}  // namespace QVStats
