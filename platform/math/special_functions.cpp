#include "platform/math/special_functions.h"

#include <boost/math/special_functions/beta.hpp>
#include <boost/math/special_functions/digamma.hpp>
#include <boost/math/special_functions/erf.hpp>
#include <boost/math/special_functions/gamma.hpp>
#include <boost/math/special_functions/trigamma.hpp>

namespace QVMath {

namespace {

namespace policies = boost::math::policies;

/// Nothing throws, and nothing is computed in a slower, wider type.
using Quiet = policies::policy<
    policies::domain_error<policies::ignore_error>, policies::pole_error<policies::ignore_error>,
    policies::overflow_error<policies::ignore_error>,
    policies::evaluation_error<policies::ignore_error>,
    policies::rounding_error<policies::ignore_error>, policies::promote_double<false>>;

}  // namespace

double QVerf(double x) { return boost::math::erf(x, Quiet()); }
double QVerfc(double x) { return boost::math::erfc(x, Quiet()); }
double QVlgamma(double x) { return boost::math::lgamma(x, Quiet()); }
double QVDiGamma(double x) { return boost::math::digamma(x, Quiet()); }
double QVTriGamma(double x) { return boost::math::trigamma(x, Quiet()); }
double QVIncompleteBeta(double a, double b, double x) {
  return boost::math::ibeta(a, b, x, Quiet());
}
double QVIncompleteBetaComplement(double a, double b, double x) {
  return boost::math::ibetac(a, b, x, Quiet());
}
double QVIncompleteGamma(double a, double x) { return boost::math::gamma_p(a, x, Quiet()); }
double QVIncompleteGammaComplement(double a, double x) {
  return boost::math::gamma_q(a, x, Quiet());
}

}  // namespace QVMath
