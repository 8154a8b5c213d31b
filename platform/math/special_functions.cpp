#include "platform/math/special_functions.h"

#include <algorithm>
#include <boost/math/special_functions/beta.hpp>
#include <boost/math/special_functions/digamma.hpp>
#include <boost/math/special_functions/erf.hpp>
#include <boost/math/special_functions/gamma.hpp>
#include <boost/math/special_functions/log1p.hpp>
#include <boost/math/special_functions/trigamma.hpp>
#include <cmath>
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

/// A function of Boost at arguments that are numbers: given a NaN, some of them throw whatever the
/// policy says.
template <class Function, class... Arguments>
double OfNumbers(Function function, Arguments... arguments) {
  if ((std::isnan(arguments) || ...)) return std::numeric_limits<double>::quiet_NaN();
  return function(arguments...);
}

}  // namespace

double QVerf(double x) { return boost::math::erf(x, Quiet()); }
double QVerfc(double x) { return boost::math::erfc(x, Quiet()); }
double QVlgamma(double x) { return boost::math::lgamma(x, Quiet()); }
double QVDiGamma(double x) { return boost::math::digamma(x, Quiet()); }
double QVTriGamma(double x) { return boost::math::trigamma(x, Quiet()); }
double QVIncompleteBeta(double a, double b, double x) {
  return OfNumbers([](auto... of) { return boost::math::ibeta(of..., Quiet()); }, a, b, x);
}
double QVIncompleteBetaComplement(double a, double b, double x) {
  return OfNumbers([](auto... of) { return boost::math::ibetac(of..., Quiet()); }, a, b, x);
}
double QVIncompleteGamma(double a, double x) {
  return OfNumbers([](auto... of) { return boost::math::gamma_p(of..., Quiet()); }, a, x);
}
double QVIncompleteGammaComplement(double a, double x) {
  return OfNumbers([](auto... of) { return boost::math::gamma_q(of..., Quiet()); }, a, x);
}
double QVLogBeta(double a, double b) {
  const double small = std::min(a, b), large = std::max(a, b);
  constexpr double kPlainUpTo = 20.0;  // to there the terms are small and lose no digits
  if (small + large <= kPlainUpTo) return QVlgamma(small) + QVlgamma(large) - QVlgamma(a + b);
  const double beta = boost::math::beta(a, b, Quiet());
  if (beta > std::numeric_limits<double>::min()) return std::log(beta);
  return QVlgamma(small) + QVlgamma(large) - QVlgamma(a + b);
}
double QVLogOnePlusMinus(double x) { return boost::math::log1pmx(x, Quiet()); }
double QVerfcInverse(double q) { return boost::math::erfc_inv(q, Quiet()); }
double QVIncompleteGammaComplementInverse(double a, double q) {
  return OfNumbers([](auto... of) { return boost::math::gamma_q_inv(of..., Quiet()); }, a, q);
}
double QVIncompleteBetaInverse(double a, double b, double p, double& oneMinusX) {
  oneMinusX = std::numeric_limits<double>::quiet_NaN();
  return OfNumbers([&](auto... of) { return boost::math::ibeta_inv(of..., &oneMinusX, Quiet()); },
                   a, b, p);
}

}  // namespace QVMath
