/// \file
/// \brief Exponential and logarithm of arrays.
#ifndef QV_PLATFORM_MATH_INTERNAL_DENSE_FUNCTIONS_IMPL_H
#define QV_PLATFORM_MATH_INTERNAL_DENSE_FUNCTIONS_IMPL_H

#include "platform/math/internal/dense_vector_impl.h"

namespace QVMath {
namespace QV_DENSE_NAMESPACE {
namespace {

typedef long long Bits __attribute__((vector_size(QV_DENSE_WIDTH * 8)));

QV_DENSE_INLINE Bits BitsOf(Vector x) { return reinterpret_cast<Bits>(x); }
QV_DENSE_INLINE Vector ValueOf(Bits x) { return reinterpret_cast<Vector>(x); }
QV_DENSE_INLINE Vector All(double x) { return Vector{} + x; }

/// Adding it rounds to an integer, which then stands in the low bits.
constexpr double kRounder = 6755399441055744.0;  // 1.5 * 2^52
/// ln 2 in two parts; the first has 21 trailing zero bits, so that n times it is exact.
constexpr double kLn2High = 6.93147180369123816490e-01;
constexpr double kLn2Low = 1.90821492927058770002e-10;

/// 2^n from n + kRounder, -1022 <= n <= 1023.
QV_DENSE_INLINE Vector PowerOfTwo(Vector rounded) {
  return ValueOf((BitsOf(rounded) + 1023) << 52);
}

/// exp(x) = 2^n exp(r), r = x - n ln 2 in [-ln 2 / 2, ln 2 / 2]: n, and exp(r) by the Taylor
/// polynomial of degree 13, whose remainder is below 2^-57.
struct ReducedExp {
  Vector n;
  Vector value;
};

QV_DENSE_INLINE ReducedExp ReduceExp(Vector x) {
  const Vector n = (x * 1.4426950408889634 + kRounder) - kRounder;
  const Vector r = (x - n * kLn2High) - n * kLn2Low;
  Vector p = All(1.0 / 6227020800.0);
  constexpr double kInverseFactorials[] = {1.0 / 479001600.0,
                                           1.0 / 39916800.0,
                                           1.0 / 3628800.0,
                                           1.0 / 362880.0,
                                           1.0 / 40320.0,
                                           1.0 / 5040.0,
                                           1.0 / 720.0,
                                           1.0 / 120.0,
                                           1.0 / 24.0,
                                           1.0 / 6.0,
                                           0.5};
#pragma GCC unroll 16
  for (const double c : kInverseFactorials) p = p * r + c;
  return {n, 1.0 + (r + r * r * p)};
}

/// The power of two is applied in two halves, so that subnormal results and overflow round once.
QV_DENSE_INLINE Vector Exp(Vector x) {
  x = x > 710.0 ? All(710.0) : x;
  x = x < -746.0 ? All(-746.0) : x;
  const ReducedExp reduced = ReduceExp(x);
  const Vector half = reduced.n * 0.5 + kRounder;
  const Vector rest = (reduced.n - (half - kRounder)) + kRounder;
  return reduced.value * PowerOfTwo(half) * PowerOfTwo(rest);
}

/// exp(x) for x <= 0; anything below -708 counts as -708, whose exponential is 3e-308.
QV_DENSE_INLINE Vector ExpOfNegative(Vector x) {
  x = x < -708.0 ? All(-708.0) : x;
  const ReducedExp reduced = ReduceExp(x);
  return reduced.value * PowerOfTwo(reduced.n + kRounder);
}

/// log(x) = k ln 2 + log(1 + f), 1 + f in [sqrt(1/2), sqrt(2)), with log(1 + f) from the series in
/// s = f / (2 + f), its tail replaced by a minimax polynomial in s^2: the method and the
/// coefficients of W. J. Cody, W. Waite, "Software Manual for the Elementary Functions", 1980, as
/// refined in the freely distributable libm of Sun Microsystems, 1993.
QV_DENSE_INLINE Vector Log(Vector x) {
  constexpr double kSmallestNormal = 2.2250738585072014e-308;
  constexpr double kTwo54 = 18014398509481984.0;
  const Vector argument = x;
  const Bits isSmall = x < kSmallestNormal;
  x = isSmall ? x * kTwo54 : x;
  // The bits above those of sqrt(1/2) count the powers of two.
  const Bits offset = BitsOf(x) - 0x3FE6A09E667F3BCDLL;
  const Bits exponent = offset >> 52;
  const Vector k =
      (ValueOf(exponent + 0x4338000000000000LL) - kRounder) - (isSmall ? All(54.0) : All(0.0));
  const Vector f = ValueOf(BitsOf(x) - (exponent << 52)) - 1.0;
  const Vector s = f / (2.0 + f);
  const Vector z = s * s;
  const Vector tail =
      z * (6.666666666666735130e-01 +
           z * (3.999999999940941908e-01 +
                z * (2.857142874366239149e-01 +
                     z * (2.222219843214978396e-01 +
                          z * (1.818357216161805012e-01 +
                               z * (1.531383769920937332e-01 + z * 1.479819860511658591e-01))))));
  const Vector halfSquare = 0.5 * f * f;
  Vector value = k * kLn2High - ((halfSquare - (s * (halfSquare + tail) + k * kLn2Low)) - f);
  const double infinity = __builtin_inf();
  value = argument == infinity ? argument : value;
  value = argument == 0.0 ? All(-infinity) : value;
  value = argument >= 0.0 ? value : All(__builtin_nan(""));
  return value;
}

/// Applies a function to whole registers, the last one filled up with ones.
template <class Function>
QV_DENSE_INLINE void ForEach(Size n, const double* x, double* y, Function function) {
  Size i = 0;
  for (; i + kWidth <= n; i += kWidth) Store(y + i, function(Load(x + i)));
  if (i == n) return;
  Vector rest = All(1.0);
  for (Size r = 0; i + r < n; ++r) rest[r] = x[i + r];
  rest = function(rest);
  for (Size r = 0; i + r < n; ++r) y[i + r] = rest[r];
}

void ExpArray(Size n, const double* x, double* y) {
  ForEach(
      n, x, y, [](Vector v) __attribute__((always_inline)) { return Exp(v); });
}

void LogArray(Size n, const double* x, double* y) {
  ForEach(
      n, x, y, [](Vector v) __attribute__((always_inline)) { return Log(v); });
}

}  // namespace
}  // namespace QV_DENSE_NAMESPACE
}  // namespace QVMath

#endif  // QV_PLATFORM_MATH_INTERNAL_DENSE_FUNCTIONS_IMPL_H
