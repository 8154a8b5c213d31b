/// \file
/// \brief Products of matrices: packed blocks, and a tile of the result held in registers.
#ifndef QV_PLATFORM_MATH_INTERNAL_DENSE_PRODUCT_IMPL_H
#define QV_PLATFORM_MATH_INTERNAL_DENSE_PRODUCT_IMPL_H

#include <cstdint>
#include <cstdlib>

#include "platform/math/dense_kernels.h"
#include "platform/math/internal/dense_tables.h"
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

/// Adds the product of two packed strips to a tile.
QV_DENSE_INLINE void MultiplyTile(Size depth, const double* a, const double* b, Tile& tile) {
  for (Size k = 0; k < depth; ++k, a += kTileRows, b += kTileColumns) {
    Vector rows[kRowVectors];
#pragma GCC unroll 4
    for (Size v = 0; v < kRowVectors; ++v) rows[v] = Load(a + v * kWidth);
#pragma GCC unroll 8
    for (Size j = 0; j < kTileColumns; ++j) {
#pragma GCC unroll 4
      for (Size v = 0; v < kRowVectors; ++v)
        tile[v][j] = AddProduct(tile[v][j], rows[v], Broadcast(b[j]));
    }
  }
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
#pragma GCC unroll 8
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
/// Terms of such an update that are taken together and stay in the L1 cache.
constexpr Size kFewRowsDepth = 64;

/// Brings memory nearer, a little with each call. It may reach beyond what is there to read, where
/// a pointer must not point: hence the integer.
class Prefetcher {
 public:
  Prefetcher(const double* from, Step bytes)
      : at_(reinterpret_cast<std::uintptr_t>(from)), bytes_(static_cast<std::uintptr_t>(bytes)) {}
  QV_DENSE_INLINE void Advance() {
    __builtin_prefetch(reinterpret_cast<const void*>(at_));  // NOLINT(performance-no-int-to-ptr)
    at_ += bytes_;
  }

 private:
  std::uintptr_t at_;
  std::uintptr_t bytes_;
};

/// Terms of an update of a small matrix, the values of a term side by side: as they stand, and
/// times their weights, which the tiles of the first columns fill in.
struct FewRows {
  Size depth;
  const double* plain;
  Step plainStep;
  const double* weights;
  double* weighted;
  Step weightedStep;
};

/// Where a tile begins, and the first of its rows that no tile before it has covered.
struct FewRowsPlace {
  Size column;
  Size row;
  Size firstNew;
};

/// The products of kVectors registers of rows with kTileColumns columns; of columns that are not
/// there, any.
template <Size kVectors, bool kIsFirst>
QV_DENSE_INLINE void MultiplyFewRows(const FewRows& terms, Size n, const FewRowsPlace& place,
                                     TileOf<kVectors>& tile, Prefetcher& prefetcher) {
  Size columns[kTileColumns];
  for (Size j = 0; j < kTileColumns; ++j) columns[j] = Min(place.column + j, n - 1);
  const double* plain = terms.plain;
  const double* from = (kIsFirst ? terms.plain : terms.weighted) + place.row;
  const Step step = kIsFirst ? terms.plainStep : terms.weightedStep;
  double* to = terms.weighted + place.row;
  Prefetcher ahead = prefetcher;
#pragma GCC unroll 2
  for (Size k = 0; k < terms.depth; ++k, from += step, plain += terms.plainStep) {
    ahead.Advance();
    Vector rows[kVectors];
#pragma GCC unroll 4
    for (Size v = 0; v < kVectors; ++v) rows[v] = Load(from + v * kWidth);
    if (kIsFirst) {
      const double weight = terms.weights[k];
#pragma GCC unroll 4
      for (Size v = 0; v < kVectors; ++v) Store(to + v * kWidth, rows[v] = rows[v] * weight);
      to += terms.weightedStep;
    }
#pragma GCC unroll 8
    for (Size j = 0; j < kTileColumns; ++j) {
#pragma GCC unroll 4
      for (Size v = 0; v < kVectors; ++v) tile[v][j] += rows[v] * plain[columns[j]];
    }
  }
  prefetcher = ahead;
}

/// Adds such products to what is new of the lower triangle.
template <Size kVectors, bool kIsFirst>
void UpdateFewRows(const FewRows& terms, Size n, const FewRowsPlace& place, double* c, Size ldc,
                   Prefetcher& prefetcher) {
  TileOf<kVectors> tile = {};
  MultiplyFewRows<kVectors, kIsFirst>(terms, n, place, tile, prefetcher);
#pragma GCC unroll 8
  for (Size k = 0; k < kTileColumns; ++k) {
    const Size j = place.column + k;
    if (j >= n) break;
    const Size top = Max(j, place.firstNew);
#pragma GCC unroll 4
    for (Size v = 0; v < kVectors; ++v) {
      const Size first = place.row + v * kWidth;
      double* to = c + first + j * ldc;
      const Vector sums = tile[v][k];
      if (first >= top)
        Store(to, Load(to) + sums);
      else
        for (Size r = 0; r < kWidth; ++r)
          if (first + r >= top) to[r] += sums[r];
    }
  }
}

/// The registers of the next tile, for rows still to be covered: the last tile begins early enough
/// to be whole. A single register would wait for its own sums.
constexpr Size GetTileVectors(Size n, Size rowsLeft) {
  const Size left = (rowsLeft + kWidth - 1) / kWidth;
  return Min(left == 4 ? 2 : Min(kRowVectors, left), n / kWidth);
}

/// The tiles of kTileColumns columns.
template <bool kIsFirst>
void UpdateFewRowsColumns(const FewRows& terms, Size n, Size column, double* c, Size ldc,
                          Prefetcher& prefetcher) {
  for (Size row = column; row < n;) {
    const Size vectors = GetTileVectors(n, n - row);
    const FewRowsPlace place = {column, Min(row, n - vectors * kWidth), row};
    (vectors == kRowVectors ? UpdateFewRows<kRowVectors, kIsFirst>
     : vectors == 2         ? UpdateFewRows<2, kIsFirst>
                            : UpdateFewRows<1, kIsFirst>)(terms, n, place, c, ldc, prefetcher);
    row = place.row + vectors * kWidth;
  }
}

constexpr Size CountFewRowsTiles(Size n) {
  Size tiles = 0;
  for (Size column = 0; column < n; column += kTileColumns)
    for (Size row = column; row < n; row += GetTileVectors(n, n - row) * kWidth) ++tiles;
  return tiles;
}

/// The rank update of a matrix of few rows, those of a term side by side. While a block of terms is
/// multiplied, the next one is fetched at an even pace: terms that come from memory then cost no
/// more than those in a cache.
void UpdateSmall(Size n, Size depth, const double* weights, QVDenseView a, double* c, Size ldc) {
  alignas(64) double weighted[kFewRowsDepth * kFewRows];
  double ones[kFewRowsDepth];
  if (!weights)
    for (double& one : ones) one = 1.0;
  const Step fetched = a.columnStep * Step{sizeof(double)} / Signed(CountFewRowsTiles(n));
  for (Size k = 0; k < depth; k += kFewRowsDepth) {
    const Size terms = Min(kFewRowsDepth, depth - k);
    const QVDenseView block = Offset(a, 0, k);
    const FewRows rows = {terms,        block.data,
                          a.columnStep, weights ? weights + k : ones,
                          weighted,     Signed(RoundUp(n, kWidth))};
    Prefetcher prefetcher(Offset(block, 0, terms).data, fetched);
    UpdateFewRowsColumns<true>(rows, n, 0, c, ldc, prefetcher);
    for (Size column = kTileColumns; column < n; column += kTileColumns)
      UpdateFewRowsColumns<false>(rows, n, column, c, ldc, prefetcher);
  }
}

/// The rank update of a matrix of kRows rows.
template <Size kRows>
void UpdateTiny(Size depth, const double* weights, QVDenseView a, double* c, Size ldc) {
  double sums[kRows][kRows] = {};
  for (Size k = 0; k < depth; ++k) {
    const double* term = a.data + Signed(k) * a.columnStep;
    const double weight = weights ? weights[k] : 1.0;
    for (Size j = 0; j < kRows; ++j)
      for (Size i = j; i < kRows; ++i) sums[j][i] += term[i] * weight * term[j];
  }
  for (Size j = 0; j < kRows; ++j)
    for (Size i = j; i < kRows; ++i) c[j * ldc + i] += sums[j][i];
}

void RankUpdate(Size n, Size depth, const double* weights, QVDenseView a, double* c, Size ldc) {
  if (n == 0 || depth == 0) return;
  if (n > kFewRows || a.rowStep != 1)
    return AddProduct(Workspace(n, n, depth), n, n, depth, 1.0, a, a, c, ldc, 0, weights);
#ifdef QV_DENSE_NARROWER
  if (n < kWidth)  // not a whole register of rows
    return QV_DENSE_NARROWER::kKernels.rankUpdate(n, depth, weights, a, c, ldc);
#endif
  switch (n) {  // below 4 the narrower registers may not be filled either
    case 1:
      return UpdateTiny<1>(depth, weights, a, c, ldc);
    case 2:
      return UpdateTiny<2>(depth, weights, a, c, ldc);
    case 3:
      return UpdateTiny<3>(depth, weights, a, c, ldc);
    default:
      return UpdateSmall(n, depth, weights, a, c, ldc);
  }
}

}  // namespace
}  // namespace QV_DENSE_NAMESPACE
}  // namespace QVMath

#endif  // QV_PLATFORM_MATH_INTERNAL_DENSE_PRODUCT_IMPL_H
