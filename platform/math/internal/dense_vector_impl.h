/// \file
/// \brief Registers of doubles, and products of matrices with one vector.
#ifndef QV_PLATFORM_MATH_INTERNAL_DENSE_VECTOR_IMPL_H
#define QV_PLATFORM_MATH_INTERNAL_DENSE_VECTOR_IMPL_H

#include <cstddef>
#if QV_DENSE_WIDTH > 2
#include <immintrin.h>
#endif

#define QV_DENSE_INLINE inline __attribute__((always_inline))

namespace QVMath {
namespace QV_DENSE_NAMESPACE {
namespace {

using Size = std::size_t;
using Step = std::ptrdiff_t;

constexpr Size kWidth = QV_DENSE_WIDTH;
typedef double Vector __attribute__((vector_size(QV_DENSE_WIDTH * 8)));
typedef double UnalignedVector
    __attribute__((vector_size(QV_DENSE_WIDTH * 8), aligned(8), may_alias));

QV_DENSE_INLINE Vector Load(const double* p) {
  return *reinterpret_cast<const UnalignedVector*>(p);
}
QV_DENSE_INLINE void Store(double* p, Vector x) { *reinterpret_cast<UnalignedVector*>(p) = x; }

QV_DENSE_INLINE double SumOf(Vector x) {
  double sum = x[0];
  for (Size i = 1; i < kWidth; ++i) sum += x[i];
  return sum;
}

/// The sum of each of kWidth registers.
QV_DENSE_INLINE Vector SumsOf(const Vector* x) {
#if QV_DENSE_WIDTH == 8
  Vector pairs[4], fours[2];
  for (Size i = 0; i < 4; ++i)
    pairs[i] = __builtin_shufflevector(x[2 * i], x[2 * i + 1], 0, 8, 2, 10, 4, 12, 6, 14) +
               __builtin_shufflevector(x[2 * i], x[2 * i + 1], 1, 9, 3, 11, 5, 13, 7, 15);
  for (Size i = 0; i < 2; ++i)
    fours[i] = __builtin_shufflevector(pairs[2 * i], pairs[2 * i + 1], 0, 1, 8, 9, 4, 5, 12, 13) +
               __builtin_shufflevector(pairs[2 * i], pairs[2 * i + 1], 2, 3, 10, 11, 6, 7, 14, 15);
  return __builtin_shufflevector(fours[0], fours[1], 0, 1, 2, 3, 8, 9, 10, 11) +
         __builtin_shufflevector(fours[0], fours[1], 4, 5, 6, 7, 12, 13, 14, 15);
#elif QV_DENSE_WIDTH == 4
  const Vector first = __builtin_shufflevector(x[0], x[1], 0, 4, 2, 6) +
                       __builtin_shufflevector(x[0], x[1], 1, 5, 3, 7);
  const Vector second = __builtin_shufflevector(x[2], x[3], 0, 4, 2, 6) +
                        __builtin_shufflevector(x[2], x[3], 1, 5, 3, 7);
  return __builtin_shufflevector(first, second, 0, 1, 4, 5) +
         __builtin_shufflevector(first, second, 2, 3, 6, 7);
#else
  static_assert(kWidth == 2);
  return __builtin_shufflevector(x[0], x[1], 0, 2) + __builtin_shufflevector(x[0], x[1], 1, 3);
#endif
}

constexpr Size Min(Size a, Size b) { return a < b ? a : b; }
constexpr Size Max(Size a, Size b) { return a > b ? a : b; }
constexpr Size RoundUp(Size n, Size multiple) { return (n + multiple - 1) / multiple * multiple; }
constexpr Step Signed(Size n) { return static_cast<Step>(n); }

/// sum + a b in every lane, and for one number. Rounded once where the instruction set can,
/// whatever the compiler would fuse: sums in the same order have the same bits then.
#if QV_DENSE_WIDTH == 8
QV_DENSE_INLINE Vector Broadcast(double x) { return _mm512_set1_pd(x); }
QV_DENSE_INLINE Vector AddProduct(Vector sum, Vector a, Vector b) {
  return _mm512_fmadd_pd(a, b, sum);
}
#elif QV_DENSE_WIDTH == 4
QV_DENSE_INLINE Vector Broadcast(double x) { return _mm256_set1_pd(x); }
QV_DENSE_INLINE Vector AddProduct(Vector sum, Vector a, Vector b) {
  return _mm256_fmadd_pd(a, b, sum);
}
#else
QV_DENSE_INLINE Vector Broadcast(double x) { return Vector{x, x}; }
QV_DENSE_INLINE Vector AddProduct(Vector sum, Vector a, Vector b) { return sum + a * b; }
#endif
QV_DENSE_INLINE double AddProduct(double sum, double a, double b) {
  return QV_DENSE_WIDTH > 2 ? __builtin_fma(a, b, sum) : sum + a * b;
}

double Dot(Size n, const double* x, const double* y) {
  Vector sums[4] = {};
  Size i = 0;
  for (; i + 4 * kWidth <= n; i += 4 * kWidth)
    for (Size lane = 0; lane < 4; ++lane)
      sums[lane] += Load(x + i + lane * kWidth) * Load(y + i + lane * kWidth);
  double sum = SumOf((sums[0] + sums[1]) + (sums[2] + sums[3]));
  for (; i < n; ++i) sum += x[i] * y[i];
  return sum;
}

/// Columns taken together, so that the vector is read once for them.
constexpr Size kColumnGroup = 4;

/// y_s += factor * A x_s for kSides vectors x_s and y_s, which stand ldx and ldy apart. A is read
/// once for them, and each gets the bits that it gets alone.
template <Size kSides>
QV_DENSE_INLINE void MultiplyVectors(Size n, Size m, double factor, const double* a, Size lda,
                                     const double* x, Size ldx, double* y, Size ldy) {
  Size j = 0;
  for (; j + kColumnGroup <= m; j += kColumnGroup) {
    const double* a0 = a + j * lda;
    const double* a1 = a0 + lda;
    const double* a2 = a1 + lda;
    const double* a3 = a2 + lda;
    double shares[kSides][kColumnGroup];
    for (Size s = 0; s < kSides; ++s)
      for (Size c = 0; c < kColumnGroup; ++c) shares[s][c] = factor * x[s * ldx + j + c];
    Size i = 0;
    for (; i + kWidth <= n; i += kWidth)
#pragma GCC unroll 4
      for (Size s = 0; s < kSides; ++s) {
        const double* share = shares[s];
        double* to = y + s * ldy + i;
        Vector sum = AddProduct(Load(to), Load(a0 + i), Broadcast(share[0]));
        sum = AddProduct(sum, Load(a1 + i), Broadcast(share[1]));
        sum = AddProduct(sum, Load(a2 + i), Broadcast(share[2]));
        Store(to, AddProduct(sum, Load(a3 + i), Broadcast(share[3])));
      }
    for (; i < n; ++i)
      for (Size s = 0; s < kSides; ++s) {
        const double* share = shares[s];
        double sum = AddProduct(y[s * ldy + i], a0[i], share[0]);
        sum = AddProduct(sum, a1[i], share[1]);
        sum = AddProduct(sum, a2[i], share[2]);
        y[s * ldy + i] = AddProduct(sum, a3[i], share[3]);
      }
  }
  for (; j < m; ++j) {
    const double* column = a + j * lda;
    for (Size s = 0; s < kSides; ++s) {
      const double share = factor * x[s * ldx + j];
      double* to = y + s * ldy;
      Size i = 0;
      for (; i + kWidth <= n; i += kWidth)
        Store(to + i, AddProduct(Load(to + i), Load(column + i), Broadcast(share)));
      for (; i < n; ++i) to[i] = AddProduct(to[i], column[i], share);
    }
  }
}

/// Columns whose sums fill at least one register.
constexpr Size kSumGroup = Max(kColumnGroup, kWidth);

/// y += factor * A' x.
void MultiplyTransposed(Size n, Size m, double factor, const double* a, Size lda, const double* x,
                        double* y) {
  Size j = 0;
  for (; j + kSumGroup <= m; j += kSumGroup) {
    const double* column = a + j * lda;
    Vector sums[kSumGroup] = {};
    Size i = 0;
    for (; i + kWidth <= n; i += kWidth)
#pragma GCC unroll 8
      for (Size c = 0; c < kSumGroup; ++c) sums[c] += Load(column + c * lda + i) * Load(x + i);
    double rest[kSumGroup] = {};
    for (; i < n; ++i)
      for (Size c = 0; c < kSumGroup; ++c) rest[c] += column[c * lda + i] * x[i];
    for (Size c = 0; c < kSumGroup; c += kWidth) {
      double* to = y + j + c;
      Store(to, Load(to) + (SumsOf(sums + c) + Load(rest + c)) * factor);
    }
  }
  for (; j < m; ++j) y[j] += factor * Dot(n, a + j * lda, x);
}

/// Rows become columns: halves, quarters and so on of the registers change places.
QV_DENSE_INLINE void Transpose(Vector* x) {
  Vector y[kWidth];
#if QV_DENSE_WIDTH == 8
  for (Size i = 0; i < 4; ++i) {
    y[i] = __builtin_shufflevector(x[i], x[i + 4], 0, 1, 2, 3, 8, 9, 10, 11);
    y[i + 4] = __builtin_shufflevector(x[i], x[i + 4], 4, 5, 6, 7, 12, 13, 14, 15);
  }
  for (Size k = 0; k < 4; ++k) {
    const Size i = k / 2 * 4 + k % 2;
    x[i] = __builtin_shufflevector(y[i], y[i + 2], 0, 1, 8, 9, 4, 5, 12, 13);
    x[i + 2] = __builtin_shufflevector(y[i], y[i + 2], 2, 3, 10, 11, 6, 7, 14, 15);
  }
  for (Size i = 0; i < 8; i += 2) {
    y[i] = __builtin_shufflevector(x[i], x[i + 1], 0, 8, 2, 10, 4, 12, 6, 14);
    y[i + 1] = __builtin_shufflevector(x[i], x[i + 1], 1, 9, 3, 11, 5, 13, 7, 15);
  }
  for (Size i = 0; i < 8; ++i) x[i] = y[i];
#elif QV_DENSE_WIDTH == 4
  for (Size i = 0; i < 2; ++i) {
    y[i] = __builtin_shufflevector(x[i], x[i + 2], 0, 1, 4, 5);
    y[i + 2] = __builtin_shufflevector(x[i], x[i + 2], 2, 3, 6, 7);
  }
  for (Size i = 0; i < 4; i += 2) {
    x[i] = __builtin_shufflevector(y[i], y[i + 1], 0, 4, 2, 6);
    x[i + 1] = __builtin_shufflevector(y[i], y[i + 1], 1, 5, 3, 7);
  }
#else
  static_assert(kWidth == 2);
  y[0] = x[0];
  x[0] = __builtin_shufflevector(y[0], x[1], 0, 2);
  x[1] = __builtin_shufflevector(y[0], x[1], 1, 3);
#endif
}

/// Parts of columns longer than this come from beyond the L1 cache.
constexpr Size kLongColumn = 32;

/// The sums below for kGroup registers of columns.
template <Size kSides, Size kGroup>
QV_DENSE_INLINE void AddTransposedTile(Size n, const double* a, Size lda, const double* x, Size ldx,
                                       double* y, Size ldy) {
  Vector sums[kSides][kGroup];
  for (Size s = 0; s < kSides; ++s)
    for (Size g = 0; g < kGroup; ++g) sums[s][g] = Load(y + s * ldy + g * kWidth);
  Size i = n;
  for (; i % kWidth != 0; --i)
    for (Size g = 0; g < kGroup; ++g) {
      Vector row = {};
      for (Size lane = 0; lane < kWidth; ++lane) row[lane] = a[i - 1 + (g * kWidth + lane) * lda];
      for (Size s = 0; s < kSides; ++s)
        sums[s][g] = AddProduct(sums[s][g], row, Broadcast(x[s * ldx + i - 1]));
    }
  for (; i > 0; i -= kWidth) {
    const double* block = a + i - kWidth;
    const double* from = x + i - kWidth;
#pragma GCC unroll 4
    for (Size g = 0; g < kGroup; ++g) {
      Vector rows[kWidth];
#pragma GCC unroll 8
      for (Size lane = 0; lane < kWidth; ++lane)
        rows[lane] = Load(block + (g * kWidth + lane) * lda);
      // So many columns are beyond what the processor fetches ahead of itself.
      if (n > kLongColumn)
#pragma GCC unroll 8
        for (Size lane = 0; lane < kWidth; ++lane)
          __builtin_prefetch(block + ((kGroup + g) * kWidth + lane) * lda);
      Transpose(rows);
#pragma GCC unroll 8
      for (Size r = 1; r <= kWidth; ++r)
#pragma GCC unroll 4
        for (Size s = 0; s < kSides; ++s)
          sums[s][g] =
              AddProduct(sums[s][g], rows[kWidth - r], Broadcast(from[s * ldx + kWidth - r]));
    }
  }
  for (Size s = 0; s < kSides; ++s)
    for (Size g = 0; g < kGroup; ++g) Store(y + s * ldy + g * kWidth, sums[s][g]);
}

/// y_s += A' x_s for kSides vectors x_s and y_s (A is n x m), each element added up from the last
/// row to the first.
template <Size kSides>
void AddTransposedBackwards(Size n, Size m, const double* a, Size lda, const double* x, Size ldx,
                            double* y, Size ldy) {
  constexpr Size kGroup = kSides == 1 ? 4 : 2;
  Size j = 0;
  for (; j + kGroup * kWidth <= m; j += kGroup * kWidth)
    AddTransposedTile<kSides, kGroup>(n, a + j * lda, lda, x, ldx, y + j, ldy);
  for (; j + kWidth <= m; j += kWidth)
    AddTransposedTile<kSides, 1>(n, a + j * lda, lda, x, ldx, y + j, ldy);
  for (; j < m; ++j)
    for (Size s = 0; s < kSides; ++s) {
      double sum = y[s * ldy + j];
      for (Size i = n; i-- > 0;) sum = AddProduct(sum, a[i + j * lda], x[s * ldx + i]);
      y[s * ldy + j] = sum;
    }
}

void MultiplyVector(Size n, Size m, double factor, const double* a, Size lda, const double* x,
                    double* y) {
  MultiplyVectors<1>(n, m, factor, a, lda, x, 0, y, 0);
}

}  // namespace
}  // namespace QV_DENSE_NAMESPACE
}  // namespace QVMath

#endif  // QV_PLATFORM_MATH_INTERNAL_DENSE_VECTOR_IMPL_H
