/// \file
/// \brief Reduction of a symmetric matrix to tridiagonal form by blocks of Householder reflections.
#ifndef QV_PLATFORM_MATH_INTERNAL_DENSE_TRIDIAGONAL_IMPL_H
#define QV_PLATFORM_MATH_INTERNAL_DENSE_TRIDIAGONAL_IMPL_H

#include "platform/math/internal/dense_product_impl.h"

namespace QVMath {
namespace QV_DENSE_NAMESPACE {
namespace {

/// Rows begin...n of four columns of a lower triangle against x, both as they stand and transposed:
/// y_i += sum_c a(i, c) x_c, and y_c += sum_i a(i, c) x_i for the columns' own places in y.
void AddColumnGroup(Size begin, Size n, const double* a, Size lda, const double* x,
                    const double* group, double* y, double* groupSums) {
  Vector sums[kColumnGroup] = {};
  double rest[kColumnGroup] = {};
  Size i = begin;
  for (; i + kWidth <= n; i += kWidth) {
    const Vector xi = Load(x + i);
    Vector yi = Load(y + i);
#pragma GCC unroll 4
    for (Size c = 0; c < kColumnGroup; ++c) {
      const Vector column = Load(a + c * lda + i);
      yi += column * group[c];
      sums[c] += column * xi;
    }
    Store(y + i, yi);
  }
  for (; i < n; ++i)
    for (Size c = 0; c < kColumnGroup; ++c) {
      y[i] += a[c * lda + i] * group[c];
      rest[c] += a[c * lda + i] * x[i];
    }
  for (Size c = 0; c < kColumnGroup; ++c) groupSums[c] += SumOf(sums[c]) + rest[c];
}

/// y = A x for the symmetric A of a lower triangle, which is read once.
void MultiplySymmetric(Size n, const double* a, Size lda, const double* x, double* y) {
  for (Size i = 0; i < n; ++i) y[i] = 0.0;
  for (Size j = 0; j < n; j += kColumnGroup) {
    const Size end = Min(j + kColumnGroup, n);
    for (Size c = j; c < end; ++c) {
      const double* column = a + c * lda;
      y[c] += column[c] * x[c];
      for (Size r = c + 1; r < end; ++r) {
        y[r] += column[r] * x[c];
        y[c] += column[r] * x[r];
      }
    }
    if (end < n) AddColumnGroup(end, n, a + j * lda, lda, x, x + j, y, y + j);
  }
}

/// Replaces x by v with v_0 = 1 such that (I - tau v v') x = (beta, 0, ..., 0).
/// \return tau, 0 when x is such a vector already.
double MakeReflection(Size n, double* x, double& beta) {
  const double alpha = x[0];
  const double tail = Dot(n - 1, x + 1, x + 1);
  x[0] = 1.0;
  beta = alpha;
  if (tail == 0.0) return 0.0;
  const double norm = __builtin_sqrt(alpha * alpha + tail);
  beta = alpha > 0.0 ? -norm : norm;
  const double scale = 1.0 / (alpha - beta);
  for (Size i = 1; i < n; ++i) x[i] *= scale;
  return (beta - alpha) / beta;
}

/// Columns that are reduced before the rest of the matrix is updated by all of them.
constexpr Size kPanel = 32;

/// The reflections v of a panel and the vectors w that go with them, A - V W' - W V' being the
/// matrix after them. Each vector is stored from row 0 of the matrix on.
struct ReflectionPanel {
  explicit ReflectionPanel(Size n)
      : rows(n), vThenW(2 * kPanel * n), wThenV(2 * kPanel * n), coefficients(2 * kPanel) {}

  double* V(Size k) const { return vThenW.Get() + k * rows; }
  double* W(Size k) const { return wThenV.Get() + k * rows; }

  /// column(i) -= sum_k V(i, k) W(j, k) + W(i, k) V(j, k) for i >= j and the first `count` k.
  void UpdateColumn(Size j, Size count, double* column) const {
    double* rowOfW = coefficients.Get();
    double* rowOfV = rowOfW + kPanel;
    for (Size k = 0; k < count; ++k) {
      rowOfW[k] = W(k)[j];
      rowOfV[k] = V(k)[j];
    }
    MultiplyVector(rows - j, count, -1.0, V(0) + j, rows, rowOfW, column + j);
    MultiplyVector(rows - j, count, -1.0, W(0) + j, rows, rowOfV, column + j);
  }

  /// Completes reflection k, whose v begins at row `begin`: w = tau (A v - V W'v - W V'v), less its
  /// share along v. `a` is the matrix before the panel.
  void MakeW(Size k, Size begin, double tau, const double* a, Size lda) const {
    const Size n = rows - begin;
    const double* v = V(k) + begin;
    double* w = W(k) + begin;
    MultiplySymmetric(n, a + begin * (lda + 1), lda, v, w);
    double* wTimesV = coefficients.Get();
    double* vTimesV = wTimesV + kPanel;
    for (Size i = 0; i < 2 * kPanel; ++i) wTimesV[i] = 0.0;
    MultiplyTransposed(n, k, 1.0, W(0) + begin, rows, v, wTimesV);
    MultiplyTransposed(n, k, 1.0, V(0) + begin, rows, v, vTimesV);
    MultiplyVector(n, k, -1.0, V(0) + begin, rows, wTimesV, w);
    MultiplyVector(n, k, -1.0, W(0) + begin, rows, vTimesV, w);
    for (Size i = 0; i < n; ++i) w[i] *= tau;
    const double along = 0.5 * tau * Dot(n, w, v);
    for (Size i = 0; i < n; ++i) w[i] -= along * v[i];
  }

  /// Subtracts V W' + W V' = [V W] [W V]' from the lower triangle beyond the panel.
  void UpdateRest(const Workspace& work, Size begin, double* a, Size lda) const {
    for (Size k = 0; k < kPanel; ++k)
      for (Size i = begin; i < rows; ++i) {
        V(kPanel + k)[i] = W(k)[i];
        W(kPanel + k)[i] = V(k)[i];
      }
    AddProduct(work, rows - begin, rows - begin, 2 * kPanel, -1.0, {V(0) + begin, 1, Signed(rows)},
               {W(0) + begin, 1, Signed(rows)}, a + begin * (lda + 1), lda, 0);
  }

  Size rows;
  Buffer vThenW;
  Buffer wThenV;
  Buffer coefficients;
};

void Tridiagonalise(Size n, double* a, Size lda, double* diagonal, double* offDiagonal, double* z) {
  const ReflectionPanel panel(n);
  const Workspace work(n, n, 2 * kPanel);
  for (Size j = 0; j < n; ++j) {
    const Size k = j % kPanel;
    if (k == 0 && j > 0) panel.UpdateRest(work, j, a, lda);
    double* column = a + j * lda;
    panel.UpdateColumn(j, k, column);
    diagonal[j] = column[j];
    if (j + 1 == n) break;
    const Size begin = j + 1;
    double* v = panel.V(k);
    for (Size i = begin; i < n; ++i) v[i] = column[i];
    const double tau = MakeReflection(n - begin, v + begin, offDiagonal[j]);
    panel.MakeW(k, begin, tau, a, lda);
    if (!z) continue;
    const double share = tau * Dot(n - begin, v + begin, z + begin);
    for (Size i = begin; i < n; ++i) z[i] -= share * v[i];
  }
}

}  // namespace
}  // namespace QV_DENSE_NAMESPACE
}  // namespace QVMath

#endif  // QV_PLATFORM_MATH_INTERNAL_DENSE_TRIDIAGONAL_IMPL_H
