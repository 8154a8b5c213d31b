/// \file
/// \brief Registers of doubles, and products of matrices with one vector.
#ifndef QV_PLATFORM_MATH_INTERNAL_DENSE_VECTOR_IMPL_H
#define QV_PLATFORM_MATH_INTERNAL_DENSE_VECTOR_IMPL_H

#include <cstddef>

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

constexpr Size Min(Size a, Size b) { return a < b ? a : b; }
constexpr Size RoundUp(Size n, Size multiple) { return (n + multiple - 1) / multiple * multiple; }
constexpr Step Signed(Size n) { return static_cast<Step>(n); }

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

void MultiplyVector(Size n, Size m, double factor, const double* a, Size lda, const double* x,
                    double* y) {
  Size j = 0;
  for (; j + kColumnGroup <= m; j += kColumnGroup) {
    const double* a0 = a + j * lda;
    const double* a1 = a0 + lda;
    const double* a2 = a1 + lda;
    const double* a3 = a2 + lda;
    const double x0 = factor * x[j], x1 = factor * x[j + 1];
    const double x2 = factor * x[j + 2], x3 = factor * x[j + 3];
    Size i = 0;
    for (; i + kWidth <= n; i += kWidth)
      Store(y + i, Load(y + i) + ((Load(a0 + i) * x0 + Load(a1 + i) * x1) +
                                  (Load(a2 + i) * x2 + Load(a3 + i) * x3)));
    for (; i < n; ++i) y[i] += (a0[i] * x0 + a1[i] * x1) + (a2[i] * x2 + a3[i] * x3);
  }
  for (; j < m; ++j) {
    const double* column = a + j * lda;
    const double share = factor * x[j];
    Size i = 0;
    for (; i + kWidth <= n; i += kWidth) Store(y + i, Load(y + i) + Load(column + i) * share);
    for (; i < n; ++i) y[i] += column[i] * share;
  }
}

void MultiplyTransposed(Size n, Size m, double factor, const double* a, Size lda, const double* x,
                        double* y) {
  Size j = 0;
  for (; j + kColumnGroup <= m; j += kColumnGroup) {
    const double* column = a + j * lda;
    Vector sums[kColumnGroup] = {};
    double rest[kColumnGroup] = {};
    Size i = 0;
    for (; i + kWidth <= n; i += kWidth) {
      const Vector v = Load(x + i);
      for (Size c = 0; c < kColumnGroup; ++c) sums[c] += Load(column + c * lda + i) * v;
    }
    for (; i < n; ++i)
      for (Size c = 0; c < kColumnGroup; ++c) rest[c] += column[c * lda + i] * x[i];
    for (Size c = 0; c < kColumnGroup; ++c) y[j + c] += factor * (SumOf(sums[c]) + rest[c]);
  }
  for (; j < m; ++j) y[j] += factor * Dot(n, a + j * lda, x);
}

}  // namespace
}  // namespace QV_DENSE_NAMESPACE
}  // namespace QVMath

#endif  // QV_PLATFORM_MATH_INTERNAL_DENSE_VECTOR_IMPL_H
