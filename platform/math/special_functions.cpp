// At extreme arguments Boost's assertions would end a program for what is a NaN here.
#define BOOST_DISABLE_ASSERTS

#include "platform/math/special_functions.h"

#include <algorithm>
#include <array>
#include <boost/math/special_functions/beta.hpp>
#include <boost/math/special_functions/digamma.hpp>
#include <boost/math/special_functions/erf.hpp>
#include <boost/math/special_functions/gamma.hpp>
#include <boost/math/special_functions/log1p.hpp>
#include <boost/math/special_functions/trigamma.hpp>
#include <cmath>
#include <exception>
#include <limits>

namespace QVMath {

namespace {

namespace policies = boost::math::policies;

/// Nothing throws, and nothing is computed in a slower, wider type.
using Quiet = policies::policy<
    policies::domain_error<policies::ignore_error>, policies::pole_error<policies::ignore_error>,
    policies::overflow_error<policies::ignore_error>,
    policies::evaluation_error<policies::ignore_error>,
    policies::rounding_error<policies::ignore_error>, policies::promote_double<false>>;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// A function of Boost at arguments that are numbers. Given a NaN or a huge parameter some of them
/// throw whatever the policy says.
template <class Function, class... Arguments>
double OfNumbers(Function function, Arguments... arguments) {
  if ((std::isnan(arguments) || ...)) return kNaN;
  try {
    return function(arguments..., Quiet());
  } catch (const std::exception&) {
    return kNaN;
  }
}

/// The same for a function of the gamma family: its value at a pole (0, -1, -2, ...), at infinity
/// and at minus infinity are given.
template <class Function>
double OfGammaFamily(Function function, double x, double pole, double atInfinity,
                     double atMinusInfinity) {
  if (std::isinf(x)) return x > 0.0 ? atInfinity : atMinusInfinity;
  if (x <= 0.0 && x == std::floor(x)) return pole;
  return OfNumbers(function, x);
}

// From here on the expansion below has all its digits; the general method loses as many as the
// larger parameter has.
constexpr double kLargeBetaParams = 100.0;
constexpr std::size_t kLargeBetaTerms = 22;

/// The coefficients d_n of the expansion below, two more with each call of Extend. With c_n those
/// of the logarithm's powers they follow from sum_j c_j d_(n-j) = 0.
class LargeBetaCoefficients {
 public:
  LargeBetaCoefficients(double a, double b)
      : ratio_(std::min(a, b) / std::max(a, b)), difference_((b - a) / std::max(a, b)) {
    base_[1] = 2.0 / 3.0 * difference_;
    c_[1] = -0.5 * base_[1];
    d_[1] = -c_[1];
  }
  double GetRatio() const { return ratio_; }
  double Get(std::size_t n) const { return d_[n]; }

  /// Adds d_n and d_(n+1), n even.
  void Extend(std::size_t n) {
    power_ *= ratio_ * ratio_;
    base_[n] = 2.0 / (1.0 + ratio_) * (1.0 + ratio_ * power_) / static_cast<double>(n + 2);
    sum_ += power_;
    base_[n + 1] = 2.0 * difference_ * sum_ / static_cast<double>(n + 3);
    Add(n);
    Add(n + 1);
  }

 private:
  using Numbers = std::array<double, kLargeBetaTerms + 2>;

  void Add(std::size_t n) {
    // The powers of the series with the coefficients base_, by Euler's recurrence.
    const double r = -0.5 * static_cast<double>(n + 1);
    Numbers powers{};
    powers[1] = r * base_[1];
    for (std::size_t m = 2; m <= n; ++m) {
      double sum = 0.0;
      for (std::size_t j = 1; j < m; ++j)
        sum += (static_cast<double>(j) * r - static_cast<double>(m - j)) * base_[j] * powers[m - j];
      powers[m] = r * base_[m] + sum / static_cast<double>(m);
    }
    c_[n] = powers[n] / static_cast<double>(n + 1);
    double sum = c_[n];
    for (std::size_t j = 1; j < n; ++j) sum += d_[n - j] * c_[j];
    d_[n] = -sum;
  }

  double ratio_, difference_, sum_ = 1.0, power_ = 1.0;
  Numbers base_{}, c_{}, d_{};
};

/// I_x(a, b) for large a and b, lambda = a - (a + b) x >= 0: an expansion about the error function;
/// NaN where it does not converge, far out in the tail.
/// Source: A. R. DiDonato, A. H. Morris, "Algorithm 708: Significant digit computation of the
/// incomplete beta function ratios", ACM TOMS 18, 1992.
double ExpandLargeBeta(double a, double b, double lambda) {
  const double exponent = -(a * QVLogOnePlusMinus(-lambda / a) + b * QVLogOnePlusMinus(lambda / b));
  constexpr double kUnderflow = 750.0, kRootEighth = 0.35355339059327379;
  constexpr double kTwoOverRootPi = 1.1283791670955126;
  if (exponent > kUnderflow) return 0.0;
  LargeBetaCoefficients coefficients(a, b);
  const double step = 1.0 / std::sqrt(std::min(a, b) * (1.0 + coefficients.GetRatio()));
  const double z = std::sqrt(exponent);
  // The integrals of the expansion's even and odd terms, by recurrence.
  double even = 0.5 / kTwoOverRootPi * std::exp(exponent) * QVerfc(z), odd = kRootEighth;
  double evenPower = 0.5 * z / kRootEighth, oddPower = 2.0 * exponent, scale = step;
  double total = even + coefficients.Get(1) * step * odd;
  for (std::size_t n = 2; n <= kLargeBetaTerms; n += 2) {
    coefficients.Extend(n);
    even = kRootEighth * evenPower + static_cast<double>(n - 1) * even;
    odd = kRootEighth * oddPower + static_cast<double>(n) * odd;
    evenPower *= 2.0 * exponent;
    oddPower *= 2.0 * exponent;
    scale *= step;
    const double evenTerm = coefficients.Get(n) * scale * even;
    scale *= step;
    const double oddTerm = coefficients.Get(n + 1) * scale * odd;
    total += evenTerm + oddTerm;
    if (std::abs(evenTerm) + std::abs(oddTerm) <= 0x1p-54 * total)
      return kTwoOverRootPi * total *
             std::exp(QVStirlingError(a + b) - QVStirlingError(a) - QVStirlingError(b) - exponent);
  }
  return kNaN;
}

/// a - (a + b) x to its own rounding.
double GetLambda(double a, double b, double x) {
  const double sum = a + b, partOfB = sum - a;
  const double lost = (a - (sum - partOfB)) + (b - partOfB);
  return std::fma(-sum, x, a) - lost * x;
}

/// I_x(a, b), or its complement, for large a and b within (0, 1); NaN where another method must do.
double GetLargeBeta(double a, double b, double x, bool complement) {
  if (!(std::min(a, b) >= kLargeBetaParams && std::isfinite(a + b) && x > 0.0 && x < 1.0))
    return kNaN;
  const double lambda = GetLambda(a, b, x);
  const double tail =
      lambda >= 0.0 ? ExpandLargeBeta(a, b, lambda) : ExpandLargeBeta(b, a, -lambda);
  return (lambda >= 0.0) == complement ? 1.0 - tail : tail;
}

}  // namespace

double QVerf(double x) {
  return OfNumbers([](auto... of) { return boost::math::erf(of...); }, x);
}
double QVerfc(double x) {
  return OfNumbers([](auto... of) { return boost::math::erfc(of...); }, x);
}
double QVlgamma(double x) {
  return OfGammaFamily([](auto... of) { return boost::math::lgamma(of...); }, x, kInfinity,
                       kInfinity, kInfinity);
}
double QVDiGamma(double x) {
  return OfGammaFamily([](auto... of) { return boost::math::digamma(of...); }, x, -kInfinity,
                       kInfinity, kNaN);
}
double QVTriGamma(double x) {
  return OfGammaFamily([](auto... of) { return boost::math::trigamma(of...); }, x, kInfinity, 0.0,
                       kNaN);
}
double QVIncompleteBeta(double a, double b, double x) {
  const double large = GetLargeBeta(a, b, x, false);
  if (!std::isnan(large)) return large;
  return OfNumbers([](auto... of) { return boost::math::ibeta(of...); }, a, b, x);
}
double QVIncompleteBetaComplement(double a, double b, double x) {
  const double large = GetLargeBeta(a, b, x, true);
  if (!std::isnan(large)) return large;
  return OfNumbers([](auto... of) { return boost::math::ibetac(of...); }, a, b, x);
}
double QVIncompleteGamma(double a, double x) {
  return OfNumbers([](auto... of) { return boost::math::gamma_p(of...); }, a, x);
}
double QVIncompleteGammaComplement(double a, double x) {
  return OfNumbers([](auto... of) { return boost::math::gamma_q(of...); }, a, x);
}
double QVLogBeta(double a, double b) {
  const double small = std::min(a, b), large = std::max(a, b);
  constexpr double kPlainUpTo = 20.0;  // to there the terms are small and lose no digits
  if (small + large <= kPlainUpTo) return QVlgamma(small) + QVlgamma(large) - QVlgamma(a + b);
  const double beta = OfNumbers([](auto... of) { return boost::math::beta(of...); }, a, b);
  if (beta > std::numeric_limits<double>::min()) return std::log(beta);
  return QVlgamma(small) + QVlgamma(large) - QVlgamma(a + b);
}
double QVStirlingError(double a) {
  constexpr double kHalfLogTwoPi = 0.9189385332046727, kLarge = 16.0;
  if (a < kLarge) return QVlgamma(a) - ((a - 0.5) * std::log(a) - a + kHalfLogTwoPi);
  const double r = 1.0 / (a * a);
  return (1.0 / 12 - r * (1.0 / 360 - r * (1.0 / 1260 - r * (1.0 / 1680 - r / 1188)))) / a;
}
double QVLogOnePlusMinus(double x) {
  return OfNumbers([](auto... of) { return boost::math::log1pmx(of...); }, x);
}
double QVerfcInverse(double q) {
  return OfNumbers([](auto... of) { return boost::math::erfc_inv(of...); }, q);
}
double QVIncompleteGammaComplementInverse(double a, double q) {
  return OfNumbers([](auto... of) { return boost::math::gamma_q_inv(of...); }, a, q);
}
double QVIncompleteBetaInverse(double a, double b, double p, double& oneMinusX) {
  oneMinusX = kNaN;
  return OfNumbers(
      [&](double alpha, double beta, double share, Quiet policy) {
        return boost::math::ibeta_inv(alpha, beta, share, &oneMinusX, policy);
      },
      a, b, p);
}

}  // namespace QVMath
