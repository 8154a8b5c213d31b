/// \file
/// \brief Special functions, right to a few units in the last place over their domains.
///
/// None throws, and a NaN gives a NaN. Outside its domain a function returns NaN, at a pole the
/// infinity that it approaches from the right.
/// Source of the definitions: M. Abramowitz, I. A. Stegun, "Handbook of Mathematical Functions",
/// 1964, chapters 6, 7 and 26.
#ifndef QV_PLATFORM_MATH_SPECIAL_FUNCTIONS_H
#define QV_PLATFORM_MATH_SPECIAL_FUNCTIONS_H

#include "platform/math/export.h"

namespace QVMath {

/// erf(x) = 2/sqrt(pi) * integral from 0 to x of exp(-t^2) dt.
QVMATH_EXPORT double QVerf(double x);
/// 1 - erf(x), with all its digits for large x.
QVMATH_EXPORT double QVerfc(double x);
/// log |Gamma(x)|; infinity at the poles 0, -1, -2, ...
QVMATH_EXPORT double QVlgamma(double x);
/// The digamma function, the derivative of log Gamma(x); minus infinity at 0, -1, -2, ...
QVMATH_EXPORT double QVDiGamma(double x);
/// The trigamma function, the second derivative of log Gamma(x); infinity at 0, -1, -2, ...
QVMATH_EXPORT double QVTriGamma(double x);
/// The regularised incomplete beta function I_x(a, b), a > 0, b > 0, 0 <= x <= 1. With both
/// parameters above 100 it is right to its condition, however large they are. When one alone is
/// large, n, about n units in the last place are lost.
QVMATH_EXPORT double QVIncompleteBeta(double a, double b, double x);
/// Its complement 1 - I_x(a, b), with all its digits where that is small.
QVMATH_EXPORT double QVIncompleteBetaComplement(double a, double b, double x);
/// The regularised lower incomplete gamma function P(a, x), a > 0, x >= 0.
QVMATH_EXPORT double QVIncompleteGamma(double a, double x);
/// The upper one, Q(a, x) = 1 - P(a, x), with all its digits where that is small.
QVMATH_EXPORT double QVIncompleteGammaComplement(double a, double x);
/// log B(a, b) = log Gamma(a) + log Gamma(b) - log Gamma(a + b), with the digits that the
/// differences of large terms would lose; a > 0, b > 0.
QVMATH_EXPORT double QVLogBeta(double a, double b);
/// What Stirling's formula leaves over, log Gamma(a) - ((a - 1/2) log a - a + log(2 pi) / 2); a >
/// 0. Source: Abramowitz and Stegun, 6.1.41.
QVMATH_EXPORT double QVStirlingError(double a);
/// log(1 + x) - x, with the digits of a small x; x > -1.
QVMATH_EXPORT double QVLogOnePlusMinus(double x);
/// The x with 1 - erf(x) = q, 0 <= q <= 2.
QVMATH_EXPORT double QVerfcInverse(double q);
/// The x with Q(a, x) = q, 0 <= q <= 1.
QVMATH_EXPORT double QVIncompleteGammaComplementInverse(double a, double q);
/// The x with I_x(a, b) = p, 0 <= p <= 1, and 1 - x with all its digits. For parameters of a sum n
/// above 100 the probability is met to about n units in the last place.
QVMATH_EXPORT double QVIncompleteBetaInverse(double a, double b, double p, double& oneMinusX);

}  // namespace QVMath

#endif  // QV_PLATFORM_MATH_SPECIAL_FUNCTIONS_H
