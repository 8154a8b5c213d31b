// The incomplete beta and gamma integrals of fixed parameters: the distribution functions of five
// families. The constants of the parameters are computed once, and where the power series with
// positive terms is short it is summed here; everywhere else the general routines of
// platform/math/special_functions.h decide.

#include <algorithm>
#include <cmath>

#include "platform/math/dense_kernels.h"
#include "platform/math/special_functions.h"
#include "stats/api/private/pdf_laws.h"

namespace QVStats {
namespace QVLaws {

namespace {

// Above these parameters log Gamma is so large that its rounding shows in the power.
constexpr double kLargeBetaParams = 40.0;
constexpr double kLargeGammaParam = 40.0;
constexpr double kNegligible = 0x1p-56;

/// The sum with which I_x(a, b) = x^a (1 - x)^b / (a B(a, b)) times it, for x at which the kept
/// terms of the series do not suffice.
double SumLongBetaSeries(double a, double b, double x, int maxTerms) {
  double term = 1.0, total = 1.0;
  for (int k = 0; k < maxTerms; ++k) {
    const double ratio = x * (a + b + k) / (a + 1.0 + k);
    term *= ratio;
    total += term;
    if (term < kNegligible * total * (1.0 - std::max(ratio, x))) break;
  }
  return total;
}

/// The continued fraction K of Q(a, y) = y^a exp(-y) / Gamma(a) times K, for y > a + 1, by the
/// modified Lentz method. Source: Abramowitz and Stegun, 6.5.31; Lentz, Appl. Opt. 15, 1976.
double GammaContinuedFraction(double a, double y) {
  constexpr double kTiny = 1e-300;
  double b = y + 1.0 - a, c = 1.0 / kTiny, d = 1.0 / b, value = d;
  for (int k = 1; k < 10000; ++k) {
    const double numerator = -k * (k - a);
    b += 2.0;
    d = 1.0 / (numerator * d + b);
    c = b + numerator / c;
    value *= c * d;
    if (std::abs(c * d - 1.0) < 1e-16) break;
  }
  return value;
}

constexpr double kHalfLogTwoPi = 0.9189385332046727;

/// log(ratio) - u for ratio = 1 + u, each given with its own digits.
double LogMinusDistance(double ratio, double u) {
  constexpr double kNear = 0.5;
  return std::abs(u) < kNear ? QVMath::QVLogOnePlusMinus(u) : std::log(ratio) - u;
}

/// log(q) given q and p = 1 - q.
double LogOfShare(double q, double p) { return q > 0.5 ? std::log1p(-p) : std::log(q); }

// To there a series with positive terms is complete within the kept ones, unless they grow first.
constexpr double kShortSeries = 0.62;
// A distribution function above this keeps its digits as 1 less the survival function.
constexpr double kKeepsItsDigits = 0.125;

/// Beyond this bound the series of P(a, y) is long, and P(a, y) near 1.
double GetGammaSeriesEnd(double a) { return 3.0 * a + 20.0; }

// Below this the general routines may have lost digits to denormal numbers.
constexpr double kSmallestShare = 1e-290;

/// log I_x(a, b) for an I that underflows.
double LogLowerTail(double a, double b, double logBeta, double x, double y) {
  const double total = SumLongBetaSeries(a, b, x, 100000);
  return a * std::log(x) + b * std::log(y) - logBeta - std::log(a) + std::log(total);
}

}  // namespace

bool PositiveSeries::Sum(double x, double& total) const {
  const double square = x * x, fourth = square * square;
  const double* c = coefficients_.data();
  double power = 1.0, before = 0.0;
  total = 0.0;
  for (std::size_t k = 0; k < kSize; k += 4, c += 4) {
    const double part = power * ((c[0] + c[1] * x) + square * (c[2] + c[3] * x));
    total += part;
    // Once four terms are less than 3/4 of the four before them, what is left is at most 3 parts.
    if (part < kNegligible * total && part < 0.75 * before) return true;
    before = part;
    power *= fourth;
  }
  return false;
}

void PositiveSeries::Fill(std::size_t n, const double* x, double* totals) const {
  QVMath::QVGetDenseKernels().sumSeries(kSize, coefficients_.data(), n, x, totals);
}

void BetaIntegral::SetParams(double a, double b) {
  a_ = a;
  b_ = b;
  logBeta_ = QVMath::QVLogBeta(a, b);
  large_ = a + b > kLargeBetaParams;
  // Abramowitz and Stegun, 26.5.4: x^a (1 - x)^b / (a B(a, b)) times the series is I_x(a, b).
  lowerSeries_.SetRatios([=](double k) { return (a + b + k) / (a + 1.0 + k); });
  upperSeries_.SetRatios([=](double k) { return (a + b + k) / (b + 1.0 + k); });
}

double BetaIntegral::LogPower(double x, double y) const {
  if (!large_) return a_ * std::log(x) + b_ * std::log(y) - logBeta_;
  // About the maximum at x = a / n the large terms cancel: with u = x n / a - 1, v = y n / b - 1,
  // a u + b v = 0, so that a log(1 + u) + b log(1 + v) is a sum of small terms.
  // Source: C. Loader, "Fast and Accurate Computation of Binomial Probabilities", 2000.
  const double n = a_ + b_;
  const double distance = x < y ? x * n - a_ : b_ - y * n;
  return a_ * LogMinusDistance(x * n / a_, distance / a_) +
         b_ * LogMinusDistance(y * n / b_, -distance / b_) + 0.5 * std::log(a_ / n * b_) -
         kHalfLogTwoPi + QVMath::QVStirlingError(n) - QVMath::QVStirlingError(a_) -
         QVMath::QVStirlingError(b_);
}

double BetaIntegral::Lower(double x, double y) const {
  if (!large_ && x > 0.0 && y > 0.0) {
    const double power = std::exp(LogPower(x, y));
    double total;
    if (x < kShortSeries && lowerSeries_.Sum(x, total)) return power * total / a_;
    if (y < kShortSeries && upperSeries_.Sum(y, total)) {
      const double lower = 1.0 - power * total / b_;
      if (lower > kKeepsItsDigits) return lower;
      constexpr double kLongSeries = 0.9;
      if (x < kLongSeries) return power * SumLongBetaSeries(a_, b_, x, 1000) / a_;
    }
  }
  if (std::isnan(x)) return x;
  return x <= 0.5 ? QVMath::QVIncompleteBeta(a_, b_, x)
                  : QVMath::QVIncompleteBetaComplement(b_, a_, y);
}

// As Lower does it, with the series of I_x(a, b) for x on the left and of I_y(b, a) on the right,
// each for all its arguments at once. What they do not reach is left to Lower.
void BetaIntegral::FillLower(std::size_t n, const double* x, const double* y,
                             double* values) const {
  if (large_) {
    for (std::size_t i = 0; i < n; ++i) values[i] = Lower(x[i], y[i]);
    return;
  }
  const QVMath::QVDenseKernels& kernels = QVMath::QVGetDenseKernels();
  double power[kBlock], sums[kBlock];
  kernels.log(n, x, power);
  kernels.log(n, y, sums);
  for (std::size_t i = 0; i < n; ++i) power[i] = a_ * power[i] + b_ * sums[i] - logBeta_;
  kernels.exp(n, power, power);
  // The left ones from the front, the right ones from the back.
  std::size_t place[kBlock], numLeft = 0, right = n;
  const double middle = std::min(kShortSeries, std::max(0.5, a_ / (a_ + b_)));
  for (std::size_t i = 0; i < n; ++i) {
    const bool isLeft = x[i] < middle;
    const std::size_t at = isLeft ? numLeft++ : --right;
    place[at] = i;
    sums[at] = isLeft ? x[i] : y[i];
  }
  lowerSeries_.Fill(numLeft, sums, sums);
  upperSeries_.Fill(n - right, sums + right, sums + right);
  for (std::size_t at = 0; at < n; ++at) {
    const std::size_t i = place[at];
    const double value = at < numLeft ? power[i] * sums[at] / a_ : 1.0 - power[i] * sums[at] / b_;
    const bool isReached = x[i] > 0.0 && y[i] > 0.0 && (at < numLeft || value > kKeepsItsDigits);
    values[i] = isReached && !std::isnan(value) ? value : Lower(x[i], y[i]);
  }
}

double BetaIntegral::Upper(double x, double y) const {
  const double lower = Lower(x, y);
  if (lower < 0.5 || std::isnan(lower)) return 1.0 - lower;
  return y <= 0.5 ? QVMath::QVIncompleteBeta(b_, a_, y)
                  : QVMath::QVIncompleteBetaComplement(a_, b_, x);
}

double BetaIntegral::LogLower(double x, double y) const {
  const double lower = Lower(x, y);
  if (lower > kSmallestShare) return LogOfShare(lower, lower > 0.5 ? Upper(x, y) : 0.0);
  return x > 0.0 ? LogLowerTail(a_, b_, logBeta_, x, y) : std::log(lower);
}

double BetaIntegral::LogUpper(double x, double y) const {
  const double upper = Upper(x, y);
  if (upper > kSmallestShare) return LogOfShare(upper, upper > 0.5 ? Lower(x, y) : 0.0);
  return y > 0.0 ? LogLowerTail(b_, a_, logBeta_, y, x) : std::log(upper);
}

void GammaIntegral::SetParams(double a) {
  a_ = a;
  logGamma_ = QVMath::QVlgamma(a);
  large_ = a > kLargeGammaParam;
  // Abramowitz and Stegun, 6.5.29: y^a exp(-y) / Gamma(a + 1) times the series is P(a, y).
  series_.SetRatios([=](double k) { return 1.0 / (a + 1.0 + k); });
}

double GammaIntegral::LogPower(double y) const {
  if (!large_) return a_ * std::log(y) - y - logGamma_;
  return a_ * LogMinusDistance(y / a_, (y - a_) / a_) + 0.5 * std::log(a_) - kHalfLogTwoPi -
         QVMath::QVStirlingError(a_);
}

double GammaIntegral::Lower(double y) const {
  if (std::isinf(y) && y > 0.0) return 1.0;
  double total;
  if (!large_ && y > 0.0 && y < GetGammaSeriesEnd(a_) && series_.Sum(y, total))
    return std::exp(LogPower(y)) * total / a_;
  return std::isnan(y) ? y : QVMath::QVIncompleteGamma(a_, y);
}

void GammaIntegral::FillLower(std::size_t n, const double* y, double* values) const {
  double power[kBlock], sums[kBlock];
  if (!large_) {
    const QVMath::QVDenseKernels& kernels = QVMath::QVGetDenseKernels();
    kernels.log(n, y, power);
    for (std::size_t i = 0; i < n; ++i) power[i] = a_ * power[i] - y[i] - logGamma_;
    kernels.exp(n, power, power);
    series_.Fill(n, y, sums);
  }
  for (std::size_t i = 0; i < n; ++i) {
    const bool isShort =
        !large_ && y[i] > 0.0 && y[i] < GetGammaSeriesEnd(a_) && !std::isnan(sums[i]);
    values[i] = isShort ? power[i] * sums[i] / a_ : Lower(y[i]);
  }
}

double GammaIntegral::Upper(double y) const {
  const double lower = Lower(y);
  if (lower < 0.5 || std::isnan(lower)) return 1.0 - lower;
  return std::isinf(y) ? 0.0 : QVMath::QVIncompleteGammaComplement(a_, y);
}

double GammaIntegral::LogUpper(double y) const {
  const double upper = Upper(y);
  if (upper > kSmallestShare) return LogOfShare(upper, upper > 0.5 ? Lower(y) : 0.0);
  if (std::isinf(y)) return -y;
  return LogPower(y) + std::log(GammaContinuedFraction(a_, y));
}

}  // namespace QVLaws
}  // namespace QVStats
