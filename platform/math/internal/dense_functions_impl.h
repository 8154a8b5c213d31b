/// \file
/// \brief Exponential, logarithm, error function and power series of arrays.
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

/// erfc(z) exp(z^2) (1 + 2 z) for 0 <= z <= 28 as a polynomial in t = (z - 3) / (z + 3): the
/// Chebyshev expansion of degree 25, whose remainder is below 2^-63, by powers of t. The
/// transformation is that of M. M. Shepherd, J. G. Laframboise, Math. Comp. 36, 1981.
constexpr double kErfcPolynomial[] = {
    3.4869092389855793e-10,  1.4163314255749584e-09,  -4.641958988771049e-10,
    -1.0864024859334643e-08, -1.0679321440105356e-08, 4.645399694880145e-08,
    9.911418328843628e-08,   -1.4687451014919947e-07, -6.148561721276281e-07,
    3.606433901980539e-07,   3.471667901024315e-06,   -7.333205102149286e-07,
    -2.0100374667053086e-05, 4.9500550441599e-06,     0.00012509932493306574,
    -0.00010515991612430618, -0.0007798322711212952,  0.0018886903737624166,
    0.0025293918163367245,   -0.023770514919671356,   0.0683080273439409,
    -0.11927366341527358,    0.12964515870276222,     -0.0475622943534512,
    -0.1356211061245812,     1.2530080582697296};

QV_DENSE_INLINE Vector Erfc(Vector x) {
  constexpr double kBeyondUnderflow = 28.0;
  constexpr long long kAllButSign = 0x7FFFFFFFFFFFFFFFLL, kUpperHalf = ~0x7FFFFFFLL;
  Vector z = ValueOf(BitsOf(x) & kAllButSign);
  z = z > kBeyondUnderflow ? All(kBeyondUnderflow) : z;
  const Vector t = (z - 3.0) / (z + 3.0);
  Vector p = All(0.0);
#pragma GCC unroll 32
  for (const double c : kErfcPolynomial) p = p * t + c;
  // exp(-z^2) = exp(-high^2) exp(-rest): the square of the upper half of the digits is exact.
  const Vector high = ValueOf(BitsOf(z) & kUpperHalf);
  const Vector rest = (z - high) * (z + high);
  const Vector share = 1.0 - rest * (1.0 - rest * (0.5 - rest * (1.0 / 6.0)));
  const Vector value = Exp(-(high * high)) * (p / (1.0 + 2.0 * z)) * share;
  return x < 0.0 ? 2.0 - value : value;
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

void ErfcArray(Size n, const double* x, double* y) {
  ForEach(
      n, x, y, [](Vector v) __attribute__((always_inline)) { return Erfc(v); });
}

/// Registers whose factors 1 + exp(-|t|) share a logarithm: their product is at most 16.
constexpr Size kLogisticGroup = 4;

/// The terms of a group. \return log F(t), lane by lane.
QV_DENSE_INLINE Vector AddLogisticTerms(const double* y, const double* z, double* slopes,
                                        double* weights) {
  constexpr long long kSignBit = ~0x7FFFFFFFFFFFFFFFLL;
  Vector product = All(1.0), negative = All(0.0);
#pragma GCC unroll 4
  for (Size g = 0; g < kLogisticGroup; ++g) {
    const Vector outcome = Load(y + g * kWidth);
    const Vector t = outcome * Load(z + g * kWidth);
    const Vector e = ExpOfNegative(ValueOf(BitsOf(t) | kSignBit));
    const Vector small = e / (1.0 + e);  // F(-|t|)
    const Vector large = 1.0 - small;
    Store(slopes + g * kWidth, outcome * (t > 0.0 ? small : large));
    Store(weights + g * kWidth, small * large);
    product *= 1.0 + e;
    negative += t < 0.0 ? t : All(0.0);
  }
  return negative - Log(product);
}

/// log F(t) = min(t, 0) - log(1 + exp(-|t|)), with one logarithm for the product of four.
double LogisticTerms(Size n, const double* y, const double* z, double* slopes, double* weights) {
  constexpr Size kTogether = kLogisticGroup * kWidth;
  constexpr double kCertain = 1000.0;  // adds nothing
  Vector sum = All(0.0);
  Size i = 0;
  for (; i + kTogether <= n; i += kTogether)
    sum += AddLogisticTerms(y + i, z + i, slopes + i, weights + i);
  if (i == n) return SumOf(sum);
  double restY[kTogether], restZ[kTogether], restSlopes[kTogether], restWeights[kTogether];
  for (Size r = 0; r < kTogether; ++r) {
    restY[r] = i + r < n ? y[i + r] : 1.0;
    restZ[r] = i + r < n ? z[i + r] : kCertain;
  }
  sum += AddLogisticTerms(restY, restZ, restSlopes, restWeights);
  for (Size r = 0; i + r < n; ++r) {
    slopes[i + r] = restSlopes[r];
    weights[i + r] = restWeights[r];
  }
  return SumOf(sum);
}

/// Registers whose series are summed together, to keep the multipliers busy.
constexpr Size kSeriesGroup = 4;

QV_DENSE_INLINE bool AllOf(Bits flags) {
  long long all = flags[0];
  for (Size lane = 1; lane < kWidth; ++lane) all &= flags[lane];
  return all != 0;
}

/// A group of series, four terms at a time. A sum is complete when four terms no longer change it
/// and fall by a quarter against the four before, so that what follows is at most 3 times as much.
/// Further terms leave its bits alone: a value does not depend on its neighbours.
QV_DENSE_INLINE void SumSeriesGroup(Size size, const double* c, const double* x, double* y) {
  constexpr double kNegligible = 0x1p-56;
  Vector argument[kSeriesGroup], square[kSeriesGroup], fourth[kSeriesGroup], power[kSeriesGroup];
  Vector before[kSeriesGroup], total[kSeriesGroup];
  Bits complete[kSeriesGroup];
#pragma GCC unroll 4
  for (Size g = 0; g < kSeriesGroup; ++g) {
    argument[g] = Load(x + g * kWidth);
    square[g] = argument[g] * argument[g];
    fourth[g] = square[g] * square[g];
    power[g] = All(1.0);
    before[g] = total[g] = All(0.0);
    complete[g] = Bits{};
  }
  for (Size k = 0; k < size; k += 4) {
    Bits all = ~Bits{};
#pragma GCC unroll 4
    for (Size g = 0; g < kSeriesGroup; ++g) {
      const Vector part = power[g] * ((c[k] + c[k + 1] * argument[g]) +
                                      square[g] * (c[k + 2] + c[k + 3] * argument[g]));
      total[g] += part;
      complete[g] |= (part < kNegligible * total[g]) & (part < 0.75 * before[g]);
      all &= complete[g];
      before[g] = part;
      power[g] *= fourth[g];
    }
    if (AllOf(all)) break;
  }
#pragma GCC unroll 4
  for (Size g = 0; g < kSeriesGroup; ++g)
    Store(y + g * kWidth, complete[g] ? total[g] : All(__builtin_nan("")));
}

void SumSeries(Size size, const double* coefficients, Size n, const double* x, double* y) {
  constexpr Size kTogether = kSeriesGroup * kWidth;
  Size i = 0;
  for (; i + kTogether <= n; i += kTogether) SumSeriesGroup(size, coefficients, x + i, y + i);
  if (i == n) return;
  double rest[kTogether] = {};
  for (Size r = 0; i + r < n; ++r) rest[r] = x[i + r];
  SumSeriesGroup(size, coefficients, rest, rest);
  for (Size r = 0; i + r < n; ++r) y[i + r] = rest[r];
}

}  // namespace
}  // namespace QV_DENSE_NAMESPACE
}  // namespace QVMath

#endif  // QV_PLATFORM_MATH_INTERNAL_DENSE_FUNCTIONS_IMPL_H
