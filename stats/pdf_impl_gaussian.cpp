// The univariate Gaussian.

#include "platform/math/special_functions.h"
#include "stats/pdf_law_impl.h"

namespace QVStats {
namespace QVLaws {

namespace {

constexpr double kHalf = 0.5;

/// log erfc(z) for z >= 5, by the asymptotic series of erfc (Abramowitz and Stegun, 7.1.23).
double LogErfcOfLarge(double z) {
  const double ratio = -kHalf / (z * z);
  double term = 1.0, sum = 1.0;
  for (int k = 1; k < 60; ++k) {
    const double next = term * ratio * (2 * k - 1);
    if (std::abs(next) >= std::abs(term) || std::abs(next) < 1e-18) break;
    term = next;
    sum += term;
  }
  constexpr double kLogRootPi = 0.5723649429247001;
  return -z * z - std::log(z) - kLogRootPi + std::log(sum);
}

}  // namespace

bool Gauss::SetParams(const double* params) {
  mean_ = params[0];
  precision_ = params[1];
  if (!(precision_ > 0.0)) return false;
  rootPrecision_ = std::sqrt(precision_);
  logNorm_ = kHalf * std::log(precision_ * 0.15915494309189535);
  generator.SetParams(mean_, std::sqrt(1.0 / precision_));
  return true;
}

double Gauss::LogDensity(double x) const {
  const double distance = x - mean_;
  return logNorm_ - kHalf * precision_ * distance * distance;
}

double Gauss::Density(double x) const { return std::exp(LogDensity(x)); }

double Gauss::CDF(double x) const { return kHalf * std::erfc(-Scale(x)); }

void Gauss::FillCDF(std::size_t n, const double* x, double* values) const {
  for (std::size_t i = 0; i < n; ++i) values[i] = -Scale(x[i]);
  QVMath::QVGetDenseKernels().erfc(n, values, values);
  for (std::size_t i = 0; i < n; ++i) values[i] *= kHalf;
}

double Gauss::Survival(double x) const { return kHalf * std::erfc(Scale(x)); }

double Gauss::LogSurvival(double x) const {
  const double z = Scale(x);
  constexpr double kFar = 8.0, kLogTwo = 0.6931471805599453;
  if (z > kFar) return std::isinf(z) ? -z : LogErfcOfLarge(z) - kLogTwo;
  return z < 0.0 ? std::log1p(-CDF(x)) : std::log(Survival(x));
}

double Gauss::UpperTailPercentile(double q) const {
  return mean_ + QVMath::QVerfcInverse(2.0 * q) * 1.4142135623730951 / rootPrecision_;
}

Slope Gauss::GetSlope(double x) const {
  return {-precision_ * (x - mean_), -precision_, 1.0, 0.0, 0.0, kInfinity};
}

}  // namespace QVLaws

template class QVUniVarLawImpl<QVLaws::Gauss>;

}  // namespace QVStats
