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
        for (Size d = 0; d < c; ++d) x[c] -= x[d] * triangle[d * kTileColumns + c];
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

/// Columns of a triangle that are solved one by one before the rest is updated by all of them.
constexpr Size kVectorBlock = 32;
/// Rows of such columns that stay in the cache while all right sides are updated.
constexpr Size kVectorRows = 256;

/// The part of a forward solve that belongs to the diagonal block of columns j to end.
void SolveTriangle(Size j, Size end, const double* l, Size ldl, double* side) {
  for (Size k = j; k < end; ++k) {
    const double* column = l + k * ldl;
    side[k] /= column[k];
    const double share = side[k];
    for (Size i = k + 1; i < end; ++i) side[i] -= share * column[i];
  }
}

/// The part of a backward solve that belongs to columns j to end of the triangle.
template <Size kSides>
void SolveColumnsTransposed(Size n, Size j, Size end, const double* l, Size ldl, double* x,
                            Size ldx) {
  MultiplyVectorsTransposed<kSides>(n - end, end - j, -1.0, l + end + j * ldl, ldl, x + end, ldx,
                                    x + j, ldx);
  for (Size s = 0; s < kSides; ++s)
    for (Size k = end; k-- > j;) {
      const double* column = l + k * ldl;
      double* side = x + s * ldx;
      side[k] = (side[k] - Dot(end - k - 1, column + k + 1, side + k + 1)) / column[k];
    }
}

/// Right sides go in groups through the same columns of the triangle, which stay in the cache for
/// all of them, and each gets the bits that it gets alone.
void SolveLowerEach(Size n, const double* l, Size ldl, Size m, double* b, Size ldb) {
  constexpr Size kGroup = kDenseFewRightSides;
  const Size step = m > kGroup ? kVectorRows : n;
  for (Size j = 0; j < n; j += kVectorBlock) {
    const Size end = Min(j + kVectorBlock, n);
    for (Size s = 0; s < m; ++s) SolveTriangle(j, end, l, ldl, b + s * ldb);
    for (Size i = end; i < n; i += step) {
      const Size rows = Min(step, n - i);
      const double* part = l + i + j * ldl;
      Size s = 0;
      for (; s + kGroup <= m; s += kGroup)
        MultiplyVectors<kGroup>(rows, end - j, -1.0, part, ldl, b + j + s * ldb, ldb,
                                b + i + s * ldb, ldb);
      for (; s < m; ++s)
        MultiplyVectors<1>(rows, end - j, -1.0, part, ldl, b + j + s * ldb, ldb, b + i + s * ldb,
                           ldb);
    }
  }
}

void SolveLowerTransposedEach(Size n, const double* l, Size ldl, Size m, double* b, Size ldb) {
  constexpr Size kGroup = kDenseFewRightSides;
  for (Size end = n; end > 0;) {
    const Size j = (end - 1) / kVectorBlock * kVectorBlock;
    Size s = 0;
    for (; s + kGroup <= m; s += kGroup)
      SolveColumnsTransposed<kGroup>(n, j, end, l, ldl, b + s * ldb, ldb);
    for (; s < m; ++s) SolveColumnsTransposed<1>(n, j, end, l, ldl, b + s * ldb, ldb);
    end = j;
  }
}

void SolveLower(Size n, const double* l, Size ldl, Size m, double* b, Size ldb) {
  if (m <= kDenseFewRightSides) return SolveLowerEach(n, l, ldl, m, b, ldb);
  // L X = B is X' L' = B'.
  SolveRight(SolveWorkspace(n, m), m, n, {l, 1, Signed(ldl)}, {b, Signed(ldb), 1});
}

void SolveLowerTransposed(Size n, const double* l, Size ldl, Size m, double* b, Size ldb) {
  if (m <= kDenseFewRightSides) return SolveLowerTransposedEach(n, l, ldl, m, b, ldb);
  // L' X = B with its equations and unknowns in reverse order is a lower system again.
  const QVDenseView reversed{l + (n - 1) * (ldl + 1), -Signed(ldl), -1};
  SolveRight(SolveWorkspace(n, m), m, n, reversed, {b + (n - 1), Signed(ldb), -1});
}

}  // namespace
}  // namespace QV_DENSE_NAMESPACE
}  // namespace QVMath

#endif  // QV_PLATFORM_MATH_INTERNAL_DENSE_FACTOR_IMPL_H
