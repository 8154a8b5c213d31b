// The beta distribution and the two that are beta distributions of a transformed variable:
// Student's t and Snedecor's F.

#include "platform/math/special_functions.h"
#include "stats/pdf_law_impl.h"

namespace QVStats {
namespace QVLaws {

namespace {

/// What log(1 + s) lacks through the rounding of 1 + s, s >= 0.
double GetLostInSum(double s) { return (s - ((1.0 + s) - 1.0)) / (1.0 + s); }

/// log(1 + s) for s >= 0, as right as log1p and faster.
double LogOnePlus(double s) { return std::log(1.0 + s) + GetLostInSum(s); }

}  // namespace

// Student's t

bool StudentsT::SetParams(const double* params) {
  dof_ = params[0];
  location_ = params[1];
  precision_ = params[2];
  if (!(dof_ > 0.0 && precision_ > 0.0)) return false;
  precisionOverDof_ = precision_ / dof_;
  integral_.SetParams(0.5 * dof_, 0.5);
  // Gamma((nu + 1) / 2) / (Gamma(nu / 2) sqrt(pi nu)) = 1 / (B(nu / 2, 1 / 2) sqrt(nu)).
  logNorm_ = 0.5 * std::log(precision_ / dof_) - integral_.GetLogBeta();
  generator.SetParams(location_, std::sqrt(1.0 / precision_), dof_);
  return true;
}

double StudentsT::GetRatio(double x) const {
  return std::abs(x - location_) * std::sqrt(precisionOverDof_);
}

// Where the square of the ratio would overflow, or its reciprocal lose digits.
constexpr double kFarRatio = 1e140;

double StudentsT::LogDensity(double x) const {
  const double t = x - location_;
  const double square = precisionOverDof_ * t * t;
  if (square > kFarRatio * kFarRatio) return logNorm_ - (dof_ + 1.0) * std::log(GetRatio(x));
  return logNorm_ - 0.5 * (dof_ + 1.0) * LogOnePlus(square);
}

PowerForm StudentsT::GetPowerForm(double x) const {
  const double t = x - location_;
  const double square = precisionOverDof_ * t * t;
  if (square > kFarRatio * kFarRatio) return {1.0, 1.0, LogDensity(x)};
  return {1.0 + square, 1.0, logNorm_ + GetFirstPower() * GetLostInSum(square)};
}

double StudentsT::Density(double x) const { return std::exp(LogDensity(x)); }

double StudentsT::LogTail(double x) const {
  const double ratio = GetRatio(x);
  if (ratio > kFarRatio)  // 0.5 w^(nu / 2) / ((nu / 2) B(nu / 2, 1 / 2)), w = 1 / ratio^2
    return -dof_ * std::log(ratio) - std::log(dof_) - integral_.GetLogBeta();
  const double square = ratio * ratio;
  return std::log(0.5) + integral_.LogLower(1.0 / (1.0 + square), square / (1.0 + square));
}

double StudentsT::Tail(double x) const {
  const double t = x - location_;
  const double square = precisionOverDof_ * t * t;
  if (square > kFarRatio * kFarRatio) return std::exp(LogTail(x));
  const double share = 1.0 / (1.0 + square);
  return 0.5 * integral_.Lower(share, square * share);
}

double StudentsT::CDF(double x) const {
  const double tail = Tail(x);
  return x < location_ ? tail : 1.0 - tail;
}

void StudentsT::FillCDF(std::size_t n, const double* x, double* values) const {
  double share[kBlock] = {}, rest[kBlock] = {};
  for (std::size_t i = 0; i < n; ++i) {
    const double t = x[i] - location_;
    const double square = precisionOverDof_ * t * t;
    share[i] = 1.0 / (1.0 + square);
    rest[i] = square * share[i];
  }
  integral_.FillLower(n, share, rest, values);
  for (std::size_t i = 0; i < n; ++i) {
    const double tail = 0.5 * values[i];
    constexpr double kFarShare = 1.0 / kFarRatio;
    if (share[i] > kFarShare)
      values[i] = x[i] < location_ ? tail : 1.0 - tail;
    else
      values[i] = CDF(x[i]);
  }
}

double StudentsT::Survival(double x) const {
  const double tail = Tail(x);
  return x < location_ ? 1.0 - tail : tail;
}

double StudentsT::LogSurvival(double x) const {
  return x < location_ ? std::log1p(-Tail(x)) : LogTail(x);
}

double StudentsT::UpperTailPercentile(double q) const {
  if (q == 0.0 || q == 1.0) return q == 0.0 ? kInfinity : -kInfinity;
  double center;
  const double tail =
      QVMath::QVIncompleteBetaInverse(0.5 * dof_, 0.5, 2.0 * std::min(q, 1.0 - q), center);
  const double distance = std::sqrt(dof_ * center / (tail * precision_));
  return q < 0.5 ? location_ + distance : location_ - distance;
}

Moment StudentsT::Mean() const {
  if (dof_ > 1.0) return {location_};
  return {0.0, QVStatModelFailureType::MeanIsUndefined};
}

Moment StudentsT::Variance() const {
  if (dof_ > 2.0) return {dof_ / ((dof_ - 2.0) * precision_)};
  return {0.0, QVStatModelFailureType::VarianceIsUndefined};
}

Slope StudentsT::GetSlope(double x) const {
  const double t = x - location_;
  const double factor = -(dof_ + 1.0) * precision_;
  return {factor * t,           factor,     dof_ + precision_ * t * t,
          2.0 * precision_ * t, precision_, std::sqrt(t * t + dof_ / precision_)};
}

// Snedecor's F

bool SnedecorsF::SetParams(const double* params) {
  numerator_ = params[0];
  denominator_ = params[1];
  if (!(numerator_ > 0.0 && denominator_ > 0.0)) return false;
  integral_.SetParams(0.5 * numerator_, 0.5 * denominator_);
  logNorm_ = 0.5 * numerator_ * std::log(numerator_ / denominator_) - integral_.GetLogBeta();
  generator.SetParams(numerator_, denominator_);
  return true;
}

SnedecorsF::Shares SnedecorsF::GetShares(double x) const {
  const double odds = numerator_ * x / denominator_;
  if (std::isinf(odds) && odds > 0.0) return {1.0, 0.0};
  return {odds / (1.0 + odds), 1.0 / (1.0 + odds)};
}

double SnedecorsF::LogDensity(double x) const {
  if (std::isinf(x) && x > 0.0) return -x;
  if (integral_.HasLargeParams() && x > 0.0) {
    const Shares shares = GetShares(x);
    return integral_.LogPower(shares.numerator, shares.denominator) - std::log(x);
  }
  return logNorm_ + PowerLog(0.5 * numerator_ - 1.0, x) -
         0.5 * (numerator_ + denominator_) * std::log1p(numerator_ * x / denominator_);
}

double SnedecorsF::Density(double x) const { return std::exp(LogDensity(x)); }

double SnedecorsF::CDF(double x) const {
  const Shares shares = GetShares(x);
  return integral_.Lower(shares.numerator, shares.denominator);
}

void SnedecorsF::FillCDF(std::size_t n, const double* x, double* values) const {
  double share[kBlock] = {}, rest[kBlock] = {};
  for (std::size_t i = 0; i < n; ++i) {
    const Shares shares = GetShares(x[i]);
    share[i] = shares.numerator;
    rest[i] = shares.denominator;
  }
  integral_.FillLower(n, share, rest, values);
}

double SnedecorsF::Survival(double x) const {
  const Shares shares = GetShares(x);
  return integral_.Upper(shares.numerator, shares.denominator);
}

double SnedecorsF::LogSurvival(double x) const {
  const Shares shares = GetShares(x);
  return integral_.LogUpper(shares.numerator, shares.denominator);
}

double SnedecorsF::UpperTailPercentile(double q) const {
  if (q == 0.0 || q == 1.0) return q == 0.0 ? kInfinity : 0.0;
  double numeratorShare;
  const double denominatorShare =
      QVMath::QVIncompleteBetaInverse(0.5 * denominator_, 0.5 * numerator_, q, numeratorShare);
  return denominator_ * numeratorShare / (numerator_ * denominatorShare);
}

Moment SnedecorsF::Mean() const {
  if (denominator_ > 2.0) return {denominator_ / (denominator_ - 2.0)};
  return {0.0, QVStatModelFailureType::MeanIsUndefined};
}

Moment SnedecorsF::Variance() const {
  if (!(denominator_ > 4.0)) return {0.0, QVStatModelFailureType::VarianceIsUndefined};
  const double mean = denominator_ / (denominator_ - 2.0);
  return {2.0 * mean * mean * (numerator_ + denominator_ - 2.0) /
          (numerator_ * (denominator_ - 4.0))};
}

Moment SnedecorsF::Mode() const {
  if (!(numerator_ > 2.0)) return {0.0};
  return {(numerator_ - 2.0) / numerator_ * (denominator_ / (denominator_ + 2.0))};
}

Slope SnedecorsF::GetSlope(double x) const {
  const double power = 0.5 * numerator_ - 1.0;
  const double n1 = -numerator_ * (0.5 * denominator_ + 1.0);
  const double sum = denominator_ + numerator_ * x;
  return {power * denominator_ + n1 * x, n1, x * sum, sum + numerator_ * x, numerator_, x};
}

// Beta

bool Beta::SetParams(const double* params) {
  alpha_ = params[0];
  beta_ = params[1];
  if (!(alpha_ > 0.0 && beta_ > 0.0)) return false;
  integral_.SetParams(alpha_, beta_);
  generator.SetParams(alpha_, beta_);
  return true;
}

double Beta::LogDensity(double x) const {
  if (integral_.HasLargeParams() && x > 0.0 && x < 1.0)
    return integral_.LogPower(x, 1.0 - x) - std::log(x) - std::log1p(-x);
  return PowerLog(alpha_ - 1.0, x) + PowerLog(beta_ - 1.0, 1.0 - x) - integral_.GetLogBeta();
}

double Beta::Density(double x) const { return std::exp(LogDensity(x)); }

void Beta::FillCDF(std::size_t n, const double* x, double* values) const {
  double rest[kBlock] = {};
  for (std::size_t i = 0; i < n; ++i) rest[i] = 1.0 - x[i];
  integral_.FillLower(n, x, rest, values);
}

double Beta::UpperTailPercentile(double q) const {
  if (q == 0.0 || q == 1.0) return 1.0 - q;
  double x;
  QVMath::QVIncompleteBetaInverse(beta_, alpha_, q, x);
  return x;
}

Moment Beta::Variance() const {
  const double sum = alpha_ + beta_;
  return {alpha_ * beta_ / (sum * sum * (sum + 1.0))};
}

Moment Beta::Mode() const {
  if (alpha_ > 1.0 && beta_ > 1.0) return {(alpha_ - 1.0) / (alpha_ + beta_ - 2.0)};
  return {0.0, QVStatModelFailureType::ModeIsUndefined};
}

Slope Beta::GetSlope(double x) const {
  return {(alpha_ - 1.0) * (1.0 - x) - (beta_ - 1.0) * x,
          2.0 - alpha_ - beta_,
          x * (1.0 - x),
          1.0 - 2.0 * x,
          -1.0,
          std::min(x, 1.0 - x)};
}

}  // namespace QVLaws

template class QVUniVarLawImpl<QVLaws::StudentsT>;
template class QVUniVarLawImpl<QVLaws::SnedecorsF>;
template class QVUniVarLawImpl<QVLaws::Beta>;

}  // namespace QVStats
