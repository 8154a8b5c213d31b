/// \file
/// \brief Products of matrices: packed blocks, and a tile of the result held in registers.
#ifndef QV_PLATFORM_MATH_INTERNAL_DENSE_PRODUCT_IMPL_H
#define QV_PLATFORM_MATH_INTERNAL_DENSE_PRODUCT_IMPL_H

#include <cstdlib>

#include "platform/math/dense_kernels.h"
#include "platform/math/internal/dense_vector_impl.h"

namespace QVMath {
namespace QV_DENSE_NAMESPACE {
namespace {

/// The tile of the result: kTileRows x kTileColumns, its rows in registers.
constexpr Size kRowVectors = QV_DENSE_ROW_VECTORS;
constexpr Size kTileRows = kRowVectors * kWidth;
constexpr Size kTileColumns = QV_DENSE_COLUMNS;

/// Terms of a sum that are packed together: a strip of kTileRows x kDepth stays in the L1 cache
/// while strips of the other matrix, kBlockColumns of them in the L2 cache, pass by.
constexpr Size kDepth = 192;
constexpr Size kBlockColumns = 192;
constexpr Size kBlockRows = 960;

/// The largest triangle that is solved strip by strip, without a matrix product.
constexpr Size kSolveBase = 128;

/// Aligned memory for packed blocks.
class Buffer {
 public:
  explicit Buffer(Size count)
      : data_(static_cast<double*>(std::aligned_alloc(64, RoundUp(count * sizeof(double), 64)))) {
    if (!data_) std::abort();
  }
  ~Buffer() { std::free(data_); }
  Buffer(const Buffer&) = delete;
  Buffer& operator=(const Buffer&) = delete;
  double* Get() const { return data_; }

 private:
  double* data_;
};

/// What the routines pack into, made once for a whole factorisation.
struct Workspace {
  /// For results of at most `rows` x `columns`, either way round, and sums of `depth` terms.
  Workspace(Size rows, Size columns, Size depth)
      : a(RoundUp(Min(rows > columns ? rows : columns, kBlockRows), kTileRows) *
          Min(depth, kDepth)),
        b(RoundUp(Min(rows > columns ? rows : columns, kBlockColumns), kTileColumns) *
          Min(depth, kDepth)) {}
  Buffer a;
  Buffer b;
};

QV_DENSE_INLINE QVDenseView Offset(QVDenseView view, Size row, Size column) {
  view.data += Signed(row) * view.rowStep + Signed(column) * view.columnStep;
  return view;
}

/// Packs rows x depth elements into strips of kTile rows, term after term; the last strip is filled
/// up with zeros.
template <Size kTile>
void Pack(QVDenseView view, Size rows, Size depth, double* out) {
  static_assert(kTile % kWidth == 0);
  for (Size i = 0; i < rows; i += kTile) {
    const QVDenseView strip = Offset(view, i, 0);
    const Size used = Min(kTile, rows - i);
    for (Size k = 0; k < depth; ++k, out += kTile) {
      const double* from = strip.data + Signed(k) * strip.columnStep;
      if (used == kTile && strip.rowStep == 1) {
        for (Size r = 0; r < kTile; r += kWidth) Store(out + r, Load(from + r));
        continue;
      }
      Size r = 0;
      if (strip.rowStep == 1)
        for (; r + kWidth <= used; r += kWidth) Store(out + r, Load(from + r));
      for (; r < used; ++r) out[r] = from[Signed(r) * strip.rowStep];
      for (; r < kTile; ++r) out[r] = 0.0;
    }
  }
}

/// Multiplies the terms of packed strips by `factors`.
void ScaleTerms(Size rows, Size depth, const double* factors, double* packed) {
  for (Size j = 0; j < rows; j += kTileColumns)
    for (Size k = 0; k < depth; ++k, packed += kTileColumns)
      for (Size r = 0; r < kTileColumns; r += kWidth)
        Store(packed + r, Load(packed + r) * factors[k]);
}

template <Size kVectors>
using TileOf = Vector[kVectors][kTileColumns];
using Tile = TileOf<kRowVectors>;

/// Adds the product of two strips to a tile; the terms of each stand a step apart, and `columns`
/// says where in a term of B those of the tile stand.
template <Size kVectors>
QV_DENSE_INLINE void MultiplyTile(Size depth, const double* a, Step stepA, const double* b,
                                  Step stepB, const Size (&columns)[kTileColumns],
                                  TileOf<kVectors>& tile) {
  for (Size k = 0; k < depth; ++k, a += stepA, b += stepB) {
    Vector rows[kVectors];
#pragma GCC unroll 4
    for (Size v = 0; v < kVectors; ++v) rows[v] = Load(a + v * kWidth);
#pragma GCC unroll 4
    for (Size j = 0; j < kTileColumns; ++j) {
#pragma GCC unroll 4
      for (Size v = 0; v < kVectors; ++v) tile[v][j] += rows[v] * b[columns[j]];
    }
  }
}

/// The same for packed strips.
QV_DENSE_INLINE void MultiplyTile(Size depth, const double* a, const double* b, Tile& tile) {
  static_assert(kTileColumns == 4);
  constexpr Size kInOrder[] = {0, 1, 2, 3};
  MultiplyTile<kRowVectors>(depth, a, Signed(kTileRows), b, Signed(kTileColumns), kInOrder, tile);
}

/// Adds factor times the product of two packed strips to a whole tile of C.
void UpdateWholeTile(Size depth, double factor, const double* a, const double* b, double* c,
                     Size ldc) {
  for (Size j = 0; j < kTileColumns; ++j) {
    __builtin_prefetch(c + j * ldc, 1);
    __builtin_prefetch(c + j * ldc + kTileRows - 1, 1);
  }
  Tile tile = {};
  MultiplyTile(depth, a, b, tile);
#pragma GCC unroll 4
  for (Size j = 0; j < kTileColumns; ++j) {
#pragma GCC unroll 4
    for (Size v = 0; v < kRowVectors; ++v) {
      double* to = c + j * ldc + v * kWidth;
      Store(to, Load(to) + tile[v][j] * factor);
    }
  }
}

/// The same for the part of a tile that lies within rows x columns and, with `diagonal`, on or
/// below element (i, i + diagonal).
void UpdatePartOfTile(Size depth, double factor, const double* a, const double* b, double* c,
                      Size ldc, Size rows, Size columns, Step diagonal) {
  Tile tile = {};
  MultiplyTile(depth, a, b, tile);
  for (Size j = 0; j < columns; ++j)
    for (Size i = 0; i < rows; ++i)
      if (Signed(i) + diagonal >= Signed(j))
        c[j * ldc + i] += factor * tile[i / kWidth][j][i % kWidth];
}

/// Adds the product of packed blocks to C.
/// \param diagonal elements (i, j) with i + diagonal < j are left alone.
void UpdateBlock(Size rows, Size columns, Size depth, double factor, const double* a,
                 const double* b, double* c, Size ldc, Step diagonal) {
  for (Size i = 0; i < rows; i += kTileRows) {
    const Size usedRows = Min(kTileRows, rows - i);
    for (Size j = 0; j < columns; j += kTileColumns) {
      const Step offset = diagonal + Signed(i) - Signed(j);
      if (offset + Signed(usedRows) <= 0) break;
      const Size usedColumns = Min(kTileColumns, columns - j);
      const bool isWhole = usedRows == kTileRows && usedColumns == kTileColumns &&
                           offset >= Signed(kTileColumns) - 1;
      const double* stripA = a + i * depth;
      const double* stripB = b + j * depth;
      double* tile = c + i + j * ldc;
      if (isWhole)
        UpdateWholeTile(depth, factor, stripA, stripB, tile, ldc);
      else
        UpdatePartOfTile(depth, factor, stripA, stripB, tile, ldc, usedRows, usedColumns, offset);
    }
  }
}

constexpr Step kWholeMatrix = Step{1} << 40;

/// C(i, j) += factor * sum_k A(i, k) B(j, k) for i + diagonal >= j, C by columns. The terms are
/// multiplied by `weights`, unless null.
void AddProduct(const Workspace& work, Size m, Size n, Size depth, double factor, QVDenseView a,
                QVDenseView b, double* c, Size ldc, Step diagonal = kWholeMatrix,
                const double* weights = nullptr) {
  for (Size k = 0; k < depth; k += kDepth) {
    const Size terms = Min(kDepth, depth - k);
    for (Size i = 0; i < m; i += kBlockRows) {
      const Size rows = Min(kBlockRows, m - i);
      Pack<kTileRows>(Offset(a, i, k), rows, terms, work.a.Get());
      for (Size j = 0; j < n; j += kBlockColumns) {
        const Step offset = diagonal + Signed(i) - Signed(j);
        if (offset + Signed(rows) <= 0) break;
        const Size columns = Min(kBlockColumns, n - j);
        Pack<kTileColumns>(Offset(b, j, k), columns, terms, work.b.Get());
        if (weights) ScaleTerms(columns, terms, weights + k, work.b.Get());
        UpdateBlock(rows, columns, terms, factor, work.a.Get(), work.b.Get(), c + i + j * ldc, ldc,
                    offset);
      }
    }
  }
}

/// A matrix that is written, by its steps.
struct MutableView {
  double* data;
  Step rowStep;
  Step columnStep;

  QVDenseView Const() const { return {data, rowStep, columnStep}; }
  MutableView At(Size row, Size column) const {
    return {data + Signed(row) * rowStep + Signed(column) * columnStep, rowStep, columnStep};
  }
};

/// Runs through the rows of a view backwards.
template <class View>
void ReverseRows(View& view, Size rows) {
  view.data += Signed(rows - 1) * view.rowStep;
  view.rowStep = -view.rowStep;
}

/// The same product for a C of any steps, one of which is 1 or -1.
void AddProduct(const Workspace& work, Size m, Size n, Size depth, double factor, QVDenseView a,
                QVDenseView b, MutableView c) {
  if (m == 0 || n == 0) return;
  if (c.rowStep != 1 && c.rowStep != -1) {
    const MutableView transposed{c.data, c.columnStep, c.rowStep};
    return AddProduct(work, n, m, depth, factor, b, a, transposed);
  }
  if (c.rowStep < 0) {
    ReverseRows(c, m);
    ReverseRows(a, m);
  }
  AddProduct(work, m, n, depth, factor, a, b, c.data, static_cast<Size>(c.columnStep));
}

void Multiply(Size m, Size n, Size depth, double factor, QVDenseView a, QVDenseView b, double* c,
              Size ldc) {
  AddProduct(Workspace(m, n, depth), m, n, depth, factor, a, b, c, ldc);
}

/// Matrices of at most this order take their rank updates from rows side by side: packing them into
/// strips would cost more than it saves.
constexpr Size kFewRows = 48;
/// Terms of such an update that are copied together and stay in the L1 cache.
constexpr Size kFewRowsDepth = 64;
static_assert(kTileColumns % kWidth == 0);

/// Terms of an update of a small matrix: as they stand, and times their weights, each of these
/// filled up with zeros to whole registers.
struct FewRows {
  Size depth;
  const double* plain;
  Step plainStep;
  const double* weighted;
  Step weightedStep;
};

/// Copies the terms of n values, times `weights` unless null.
void CopyRows(QVDenseView a, Size n, Size depth, const double* weights, Size stride, double* out) {
  for (Size k = 0; k < depth; ++k, out += stride) {
    const double* from = a.data + Signed(k) * a.columnStep;
    const double weight = weights ? weights[k] : 1.0;
    Size i = 0;
    for (; i + kWidth <= n; i += kWidth) Store(out + i, Load(from + i) * weight);
    for (; i < n; ++i) out[i] = from[i] * weight;
    for (; i < stride; ++i) out[i] = 0.0;
  }
}

/// Adds the terms to kVectors registers of rows and kTileColumns columns of the lower triangle.
template <Size kVectors>
void UpdateFewRows(const FewRows& terms, Size n, Size row, Size column, double* c, Size ldc) {
  TileOf<kVectors> tile = {};
  Size columns[kTileColumns];
  for (Size k = 0; k < kTileColumns; ++k) columns[k] = Min(column + k, n - 1);
  MultiplyTile<kVectors>(terms.depth, terms.weighted + row, terms.weightedStep, terms.plain,
                         terms.plainStep, columns, tile);
#pragma GCC unroll 4
  for (Size k = 0; k < kTileColumns; ++k) {
    const Size j = column + k;
    if (j >= n) break;
#pragma GCC unroll 4
    for (Size v = 0; v < kVectors; ++v) {
      const Size first = row + v * kWidth;
      double* to = c + first + j * ldc;
      const Vector sums = tile[v][k];
      if (first >= j && first + kWidth <= n)
        Store(to, Load(to) + sums);
      else
        for (Size r = 0; r < kWidth; ++r)
          if (first + r >= j && first + r < n) to[r] += sums[r];
    }
  }
}

/// The rank update of a matrix of few rows, those of a term side by side.
void UpdateSmall(Size n, Size depth, const double* weights, QVDenseView a, double* c, Size ldc) {
  alignas(64) double weighted[kFewRowsDepth * kFewRows];
  const Size stride = RoundUp(n, kTileColumns);
  for (Size k = 0; k < depth; k += kFewRowsDepth) {
    const QVDenseView block = Offset(a, 0, k);
    const FewRows terms = {Min(kFewRowsDepth, depth - k), block.data, a.columnStep, weighted,
                           Signed(stride)};
    CopyRows(block, n, terms.depth, weights ? weights + k : nullptr, stride, weighted);
    for (Size column = 0; column < n; column += kTileColumns)
      for (Size row = column; row < stride;) {
        const Size left = (stride - row) / kWidth;
        const Size vectors = left == 4 ? 2 : Min(kRowVectors, left);  // a single one would wait
        (vectors == kRowVectors ? UpdateFewRows<kRowVectors>
         : vectors == 2         ? UpdateFewRows<2>
                                : UpdateFewRows<1>)(terms, n, row, column, c, ldc);
        row += vectors * kWidth;
      }
  }
}

void RankUpdate(Size n, Size depth, const double* weights, QVDenseView a, double* c, Size ldc) {
  if (n <= kFewRows && a.rowStep == 1) return UpdateSmall(n, depth, weights, a, c, ldc);
  AddProduct(Workspace(n, n, depth), n, n, depth, 1.0, a, a, c, ldc, 0, weights);
}

}  // namespace
}  // namespace QV_DENSE_NAMESPACE
}  // namespace QVMath

#endif  // QV_PLATFORM_MATH_INTERNAL_DENSE_PRODUCT_IMPL_H
