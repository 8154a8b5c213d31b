// The generalised extreme value distribution and its case of shape 0, the Gumbel distribution.

#include "platform/math/special_functions.h"
#include "stats/pdf_law_impl.h"

namespace QVStats {
namespace QVLaws {

namespace {

// Shortened on purpose: the published means of this library use it.
constexpr double kEuler = 0.577215665;
constexpr double kSixthOfPiSquared = 1.6449340668482262;

// zeta(k) / k at k, for the expansion of log Gamma(1 - s) = gamma s + sum of zeta(k) / k s^k.
constexpr double kLogGammaTerms[] = {0.0,
                                     0.5772156649015329,
                                     1.6449340668482264 / 2,
                                     1.2020569031595943 / 3,
                                     1.0823232337111382 / 4,
                                     1.0369277551433699 / 5,
                                     1.0173430619844491 / 6,
                                     1.0083492773819228 / 7,
                                     1.0040773561979443 / 8,
                                     1.0020083928260822 / 9,
                                     1.0009945751278181 / 10};
constexpr double kSmallShape = 0.01;

/// log Gamma(1 - s), with the relative digits of a small s.
double LogGammaOneMinus(double s) {
  if (std::abs(s) > kSmallShape) return QVMath::QVlgamma(1.0 - s);
  double sum = 0.0;
  for (int k = 10; k >= 1; --k) sum = (sum + kLogGammaTerms[k]) * s;
  return sum;
}

/// log Gamma(1 - 2 s) - 2 log Gamma(1 - s), of order s^2.
double LogGammaSpread(double s) {
  if (std::abs(s) > kSmallShape)
    return QVMath::QVlgamma(1.0 - 2.0 * s) - 2.0 * QVMath::QVlgamma(1.0 - s);
  double sum = 0.0, power = s;
  for (int k = 2; k <= 10; ++k) {
    power *= s;
    sum += kLogGammaTerms[k] * power * (std::ldexp(1.0, k) - 2.0);
  }
  return sum;
}

}  // namespace

bool GeneralizedExtremeValue::SetParams(const double* params) {
  location_ = params[0];
  scale_ = params[1];
  shape_ = params[2];
  if (!(scale_ > 0.0)) return false;
  generator.SetParams(location_, scale_, shape_);
  return true;
}

double GeneralizedExtremeValue::GetMinusLogReduced(double x) const {
  const double z = (x - location_) / scale_;
  return shape_ == 0.0 ? z : std::log1p(shape_ * z) / shape_;
}

double GeneralizedExtremeValue::LogDensity(double x) const {
  const double v = GetMinusLogReduced(x);
  const double reduced = std::exp(-v);
  if (std::isinf(reduced)) return -reduced;
  const double power = 1.0 + shape_;
  return (power == 0.0 ? 0.0 : -power * v) - reduced - std::log(scale_);
}

double GeneralizedExtremeValue::Density(double x) const { return std::exp(LogDensity(x)); }

double GeneralizedExtremeValue::CDF(double x) const {
  return std::exp(-std::exp(-GetMinusLogReduced(x)));
}

double GeneralizedExtremeValue::Survival(double x) const {
  return -std::expm1(-std::exp(-GetMinusLogReduced(x)));
}

double GeneralizedExtremeValue::LogSurvival(double x) const {
  const double v = GetMinusLogReduced(x);
  const double reduced = std::exp(-v);
  if (reduced > 1.0) return std::log1p(-std::exp(-reduced));
  constexpr double kFar = 300.0;  // from there log(1 - exp(-u)) is log u to rounding
  return v > kFar ? -v : std::log(-std::expm1(-reduced));
}

double GeneralizedExtremeValue::Invert(double logReduced) const {
  const double z = shape_ == 0.0 ? -logReduced : std::expm1(-shape_ * logReduced) / shape_;
  return location_ + scale_ * z;
}

double GeneralizedExtremeValue::ClosedPercentile(double p) const {
  return Invert(std::log(-std::log(p)));
}

double GeneralizedExtremeValue::UpperTailPercentile(double q) const {
  return Invert(std::log(-std::log1p(-q)));
}

Moment GeneralizedExtremeValue::Mean() const {
  if (shape_ >= 1.0) return {0.0, QVStatModelFailureType::MeanIsUndefined};
  if (shape_ == 0.0) return {location_ + kEuler * scale_};
  return {location_ + scale_ * std::expm1(LogGammaOneMinus(shape_)) / shape_};
}

Moment GeneralizedExtremeValue::Variance() const {
  if (shape_ >= 0.5) return {0.0, QVStatModelFailureType::VarianceIsUndefined};
  if (shape_ == 0.0) return {kSixthOfPiSquared * scale_ * scale_};
  const double ratio = scale_ / shape_;
  return {ratio * ratio * std::exp(2.0 * LogGammaOneMinus(shape_)) *
          std::expm1(LogGammaSpread(shape_))};
}

Moment GeneralizedExtremeValue::Mode() const {
  if (shape_ == 0.0) return {location_};
  return {location_ + scale_ * std::expm1(-shape_ * std::log1p(shape_)) / shape_};
}

bool Gumbel::SetParams(const double* params) {
  generator.SetParams(params[0], params[1]);
  const double extreme[] = {params[0], params[1], 0.0};
  return GeneralizedExtremeValue::SetParams(extreme);
}

}  // namespace QVLaws

template class QVUniVarLawImpl<QVLaws::Gumbel>;
template class QVUniVarLawImpl<QVLaws::GeneralizedExtremeValue>;

}  // namespace QVStats
