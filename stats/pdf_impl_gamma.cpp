// The gamma distribution and the chi-squared distribution, a gamma distribution of scale 2.

#include "platform/math/special_functions.h"
#include "stats/pdf_law_impl.h"

namespace QVStats {
namespace QVLaws {

bool Gamma::SetParams(const double* params) {
  shape_ = params[0];
  rate_ = params[1];
  if (!(shape_ > 0.0 && rate_ > 0.0)) return false;
  integral_.SetParams(shape_);
  logNorm_ = shape_ * std::log(rate_) - integral_.GetLogGamma();
  generator.SetParams(shape_, 1.0 / rate_);
  return true;
}

double Gamma::LogDensity(double x) const {
  if (std::isinf(x) && x > 0.0) return -x;
  if (integral_.HasLargeParams() && x > 0.0) return integral_.LogPower(rate_ * x) - std::log(x);
  return logNorm_ + PowerLog(shape_ - 1.0, x) - rate_ * x;
}

double Gamma::Density(double x) const { return std::exp(LogDensity(x)); }

void Gamma::FillCDF(std::size_t n, const double* x, double* values) const {
  for (std::size_t i = 0; i < n; ++i) values[i] = rate_ * x[i];
  integral_.FillLower(n, values, values);
}

double Gamma::UpperTailPercentile(double q) const {
  if (q == 0.0) return kInfinity;
  if (q == 1.0) return 0.0;
  return QVMath::QVIncompleteGammaComplementInverse(shape_, q) / rate_;
}

Slope Gamma::GetSlope(double x) const { return {shape_ - 1.0 - rate_ * x, -rate_, x, 1.0, 0.0, x}; }

bool ChiSquare::SetParams(const double* params) {
  generator.SetParams(params[0]);
  const double gamma[] = {params[0] / 2.0, 0.5};
  return Gamma::SetParams(gamma);
}

}  // namespace QVLaws

template class QVUniVarLawImpl<QVLaws::Gamma>;
template class QVUniVarLawImpl<QVLaws::ChiSquare>;

}  // namespace QVStats
