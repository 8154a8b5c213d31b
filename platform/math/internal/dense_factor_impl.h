/// \file
/// \brief Cholesky factorisation and triangular solves, recursive down to strips in registers.
#ifndef QV_PLATFORM_MATH_INTERNAL_DENSE_FACTOR_IMPL_H
#define QV_PLATFORM_MATH_INTERNAL_DENSE_FACTOR_IMPL_H

#include "platform/math/internal/dense_product_impl.h"

namespace QVMath {
namespace QV_DENSE_NAMESPACE {
namespace {

struct SolveWorkspace : Workspace {
  /// For triangles of at most `size` and `sides` right sides.
  SolveWorkspace(Size size, Size sides)
      : Workspace(size, sides, size), triangle(CountPacked(size)), strip(Base(size) * kTileRows) {}

  static Size Base(Size size) { return RoundUp(Min(size, kSolveBase), kTileColumns); }
  /// Doubles that PackTriangle writes.
  static Size CountPacked(Size size) { return Base(size) * (Base(size) + kTileColumns) / 2; }

  Buffer triangle;
  Buffer strip;
};

/// Packs a lower triangle in groups of kTileColumns rows: for each group the columns before it, as
/// strips of a product, then its own small triangle with inverted diagonal. Rows that fill up the
/// last group are those of the identity.
void PackTriangle(QVDenseView l, Size n, double* out) {
  for (Size j = 0; j < n; j += kTileColumns) {
    const Size used = Min(kTileColumns, n - j);
    Pack<kTileColumns>(Offset(l, j, 0), used, j, out);
    out += j * kTileColumns;
    for (Size k = 0; k < kTileColumns; ++k)
      for (Size r = 0; r < kTileColumns; ++r) {
        const bool isInside = r < used && k <= r;
        const double element = isInside ? *Offset(l, j + r, j + k).data : 0.0;
        *out++ = r != k ? element : isInside ? 1.0 / element : 1.0;
      }
  }
}

/// Solves X L' = B for one packed strip of kTileRows rows of B.
void SolveStrip(Size n, const double* triangle, double* strip) {
  for (Size j = 0; j < n; j += kTileColumns) {
    Tile tile = {};
    MultiplyTile(j, strip, triangle, tile);
    triangle += j * kTileColumns;
    double* columns = strip + j * kTileRows;
#pragma GCC unroll 4
    for (Size v = 0; v < kRowVectors; ++v) {
      Vector x[kTileColumns];
#pragma GCC unroll 8
      for (Size c = 0; c < kTileColumns; ++c) {
        x[c] = Load(columns + c * kTileRows + v * kWidth) - tile[v][c];
#pragma GCC unroll 8
        for (Size d = 0; d < c; ++d)
          x[c] = AddProduct(x[c], -x[d], Broadcast(triangle[d * kTileColumns + c]));
        x[c] *= triangle[c * kTileColumns + c];
        Store(columns + c * kTileRows + v * kWidth, x[c]);
      }
    }
    triangle += kTileColumns * kTileColumns;
  }
}

void UnpackStrip(const double* strip, Size rows, Size n, MutableView x) {
  for (Size k = 0; k < n; ++k, strip += kTileRows) {
    double* to = x.data + Signed(k) * x.columnStep;
    if (rows == kTileRows && x.rowStep == 1)
      for (Size r = 0; r < kTileRows; r += kWidth) Store(to + r, Load(strip + r));
    else
      for (Size r = 0; r < rows; ++r) to[Signed(r) * x.rowStep] = strip[r];
  }
}

/// Replaces B (m x n) by the solution X of X L' = B, with the lower triangle of L (n x n).
void SolveRight(const SolveWorkspace& work, Size m, Size n, QVDenseView l, MutableView b) {
  if (n > kSolveBase) {
    const Size half = RoundUp(n / 2, kTileColumns);
    SolveRight(work, m, half, l, b);
    AddProduct(work, m, n - half, half, -1.0, b.Const(), Offset(l, half, 0), b.At(0, half));
    return SolveRight(work, m, n - half, Offset(l, half, half), b.At(0, half));
  }
  PackTriangle(l, n, work.triangle.Get());
  const Size padding = RoundUp(n, kTileColumns) - n;
  double* strip = work.strip.Get();
  for (Size k = 0; k < padding * kTileRows; ++k) strip[n * kTileRows + k] = 0.0;
  for (Size i = 0; i < m; i += kTileRows) {
    const Size rows = Min(kTileRows, m - i);
    Pack<kTileRows>(b.At(i, 0).Const(), rows, n, strip);
    SolveStrip(n, work.triangle.Get(), strip);
    UnpackStrip(strip, rows, n, b.At(i, 0));
  }
}

/// Up to this size a factorisation goes column by column.
constexpr Size kCholeskyBase = 2 * kTileRows;

/// Left-looking: a column takes the products of all before it in registers. Works on a copy that is
/// filled up to whole registers; what these hold above the diagonal is never read.
bool FactorColumns(Size n, double* a, Size lda) {
  double copy[kCholeskyBase * kCholeskyBase] = {};
  for (Size j = 0; j < n; ++j)
    for (Size i = j; i < n; ++i) copy[j * kCholeskyBase + i] = a[j * lda + i];
  for (Size j = 0; j < n; ++j) {
    double* column = copy + j * kCholeskyBase;
    for (Size i = j / kTileRows * kTileRows; i < n; i += kTileRows) {
      Vector rows[kRowVectors];
#pragma GCC unroll 4
      for (Size v = 0; v < kRowVectors; ++v) rows[v] = Load(column + i + v * kWidth);
      for (Size k = 0; k < j; ++k) {
        const double* from = copy + k * kCholeskyBase;
#pragma GCC unroll 4
        for (Size v = 0; v < kRowVectors; ++v) rows[v] -= Load(from + i + v * kWidth) * from[j];
      }
#pragma GCC unroll 4
      for (Size v = 0; v < kRowVectors; ++v) Store(column + i + v * kWidth, rows[v]);
    }
    if (!(column[j] > 0.0)) return false;
    const double root = __builtin_sqrt(column[j]);
    const double inverse = 1.0 / root;
    column[j] = root;
    for (Size i = j + 1; i < n; ++i) column[i] *= inverse;
  }
  for (Size j = 0; j < n; ++j)
    for (Size i = j; i < n; ++i) a[j * lda + i] = copy[j * kCholeskyBase + i];
  return true;
}

bool Factor(const SolveWorkspace& work, Size n, double* a, Size lda) {
  if (n <= kCholeskyBase) return FactorColumns(n, a, lda);
  const Size half = n > 8 * kTileRows ? RoundUp(n / 2, 4 * kTileRows) : RoundUp(n / 2, kTileRows);
  const Size rest = n - half;
  if (!Factor(work, half, a, lda)) return false;
  const MutableView below{a + half, 1, Signed(lda)};
  double* corner = a + half + half * lda;
  SolveRight(work, rest, half, {a, 1, Signed(lda)}, below);
  AddProduct(work, rest, rest, half, -1.0, below.Const(), below.Const(), corner, lda, 0);
  return Factor(work, rest, corner, lda);
}

bool Cholesky(Size n, double* a, Size lda) {
  if (n <= kCholeskyBase) return FactorColumns(n, a, lda);
  return Factor(SolveWorkspace(n, n), n, a, lda);
}

/// Right sides that go through the columns of the triangle together, as vectors.
constexpr Size kVectorSides = 3;
/// Up to so many are solved as vectors: in matrix products they would be mostly padding.
constexpr Size kFewSides = 2 * kVectorSides;
/// Sums that stay in the L1 cache while columns pass by.
constexpr Size kVectorSums = 2048;

/// The solves of few right sides. They split the triangle as SolveRight does and add up in the same
/// order, so that a vector gets the bits that it has among many.
template <Size kSides>
struct VectorSolve {
  Size ldl;
  Size ldx;

  /// L X = B.
  void Forward(Size n, const double* l, double* x) const {
    if (n <= kSolveBase) return ForwardBase(n, l, x);
    const Size half = RoundUp(n / 2, kTileColumns);
    Forward(half, l, x);
    for (Size k = 0; k < half; k += kDepth)
      for (Size i = half; i < n; i += kVectorSums) {
        double sums[kSides * kVectorSums] = {};
        const Size rows = Min(kVectorSums, n - i);
        MultiplyVectors<kSides>(rows, Min(kDepth, half - k), 1.0, l + i + k * ldl, ldl, x + k, ldx,
                                sums, kVectorSums);
        Subtract(rows, sums, x + i);
      }
    Forward(n - half, l + half * (ldl + 1), x + half);
  }

  /// L' X = B, from the last equation to the first.
  void Backward(Size n, const double* l, double* x) const {
    if (n <= kSolveBase) return BackwardBase(n, l, x);
    const Size top = n - RoundUp(n / 2, kTileColumns);
    Backward(n - top, l + top * (ldl + 1), x + top);
    for (Size end = n; end > top; end -= Min(kDepth, end - top))
      for (Size j = 0; j < top; j += kVectorSums) {
        double sums[kSides * kVectorSums] = {};
        const Size columns = Min(kVectorSums, top - j);
        const Size begin = end - Min(kDepth, end - top);
        AddTransposedBackwards<kSides>(end - begin, columns, l + begin + j * ldl, ldl, x + begin,
                                       ldx, sums, kVectorSums);
        Subtract(columns, sums, x + j);
      }
    Backward(top, l, x);
  }

 private:
  void Subtract(Size count, const double* sums, double* x) const {
    for (Size s = 0; s < kSides; ++s)
      for (Size i = 0; i < count; ++i) x[s * ldx + i] -= sums[s * kVectorSums + i];
  }

  void ForwardBase(Size n, const double* l, double* x) const {
    double sums[kSides * kSolveBase] = {};
    for (Size j = 0; j < n; j += kTileColumns) {
      const Size end = Min(j + kTileColumns, n);
      for (Size i = j; i < end; ++i) {
        const double inverse = 1.0 / l[i * (ldl + 1)];
        for (Size s = 0; s < kSides; ++s) {
          double* side = x + s * ldx;
          double value = side[i] - sums[s * kSolveBase + i];
          for (Size k = j; k < i; ++k) value = AddProduct(value, -side[k], l[i + k * ldl]);
          side[i] = value * inverse;
        }
      }
      MultiplyVectors<kSides>(n - end, end - j, 1.0, l + end + j * ldl, ldl, x + j, ldx, sums + end,
                              kSolveBase);
    }
  }

  void BackwardBase(Size n, const double* l, double* x) const {
    double sums[kSides * kSolveBase] = {};
    for (Size end = n; end > 0;) {
      const Size j = end - Min(kTileColumns, end);
      for (Size i = end; i-- > j;) {
        const double inverse = 1.0 / l[i * (ldl + 1)];
        for (Size s = 0; s < kSides; ++s) {
          double* side = x + s * ldx;
          double value = side[i] - sums[s * kSolveBase + i];
          for (Size k = end; --k > i;) value = AddProduct(value, -side[k], l[k + i * ldl]);
          side[i] = value * inverse;
        }
      }
      AddTransposedBackwards<kSides>(end - j, j, l + j, ldl, x + j, ldx, sums, kSolveBase);
      end = j;
    }
  }
};

void SolveLower(Size n, const double* l, Size ldl, Size m, double* b, Size ldb) {
  // L X = B is X' L' = B'.
  if (m > kFewSides)
    return SolveRight(SolveWorkspace(n, m), m, n, {l, 1, Signed(ldl)}, {b, Signed(ldb), 1});
  Size s = 0;
  for (; s + kVectorSides <= m; s += kVectorSides)
    VectorSolve<kVectorSides>{ldl, ldb}.Forward(n, l, b + s * ldb);
  for (; s < m; ++s) VectorSolve<1>{ldl, ldb}.Forward(n, l, b + s * ldb);
}

void SolveLowerTransposed(Size n, const double* l, Size ldl, Size m, double* b, Size ldb) {
  if (m > kFewSides) {
    // L' X = B with its equations and unknowns in reverse order is a lower system again.
    const QVDenseView reversed{l + (n - 1) * (ldl + 1), -Signed(ldl), -1};
    return SolveRight(SolveWorkspace(n, m), m, n, reversed, {b + (n - 1), Signed(ldb), -1});
  }
  Size s = 0;
  for (; s + kVectorSides <= m; s += kVectorSides)
    VectorSolve<kVectorSides>{ldl, ldb}.Backward(n, l, b + s * ldb);
  for (; s < m; ++s) VectorSolve<1>{ldl, ldb}.Backward(n, l, b + s * ldb);
}

}  // namespace
}  // namespace QV_DENSE_NAMESPACE
}  // namespace QVMath

#endif  // QV_PLATFORM_MATH_INTERNAL_DENSE_FACTOR_IMPL_H
