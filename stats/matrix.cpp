#include "stats/api/matrix.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <limits>
#include <sstream>

#include "platform/math/dense_kernels.h"
#include "stats/failure.h"

namespace QVStats {

namespace {

using Vector = std::vector<double>;

constexpr std::size_t kLanes = 4;

/// Dot product in independent partial sums, which the compiler keeps in vector registers.
double Dot(const double* a, const double* b, std::size_t n) {
  double sums[kLanes] = {};
  std::size_t i = 0;
  for (; i + kLanes <= n; i += kLanes)
    for (std::size_t lane = 0; lane < kLanes; ++lane) sums[lane] += a[i + lane] * b[i + lane];
  double rest = 0.0;
  for (; i < n; ++i) rest += a[i] * b[i];
  return ((sums[0] + sums[2]) + (sums[1] + sums[3])) + rest;
}

void AddScaled(double alpha, const double* x, double* y, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i) y[i] += alpha * x[i];
}

QVStatModelResult CheckVectorSizes(const char* where, std::size_t n,
                                   std::initializer_list<const Vector*> vectors) {
  for (const Vector* vector : vectors)
    if (vector->size() != n)
      return QVFailure(QVStatModelFailureType::WrongInputVectorSize, where)
             << "vector size: " << vector->size() << "; dimension: " << n;
  return true;
}

QVStatModelResult WrongMatrixSize(const char* where, std::size_t n, const Vector& matrix) {
  return QVFailure(QVStatModelFailureType::WrongInputMatrixSize, where)
         << "matrix size: " << matrix.size() << "; dimension: " << n;
}

QVStatModelResult CheckMatrixSizes(const char* where, std::size_t n, std::size_t size,
                                   std::initializer_list<const Vector*> matrices) {
  for (const Vector* matrix : matrices)
    if (matrix->size() != size) return WrongMatrixSize(where, n, *matrix);
  return true;
}

QVStatModelResult CheckFullSizes(const char* where, std::size_t n,
                                 std::initializer_list<const Vector*> matrices) {
  return CheckMatrixSizes(where, n, n * n, matrices);
}

/// A full matrix and the vectors that it multiplies or that stand on the right of its equations.
QVStatModelResult CheckFullAndVectorSizes(const char* where, std::size_t n, const Vector& matrix,
                                          const Vector& vector) {
  QVStatModelResult result = CheckFullSizes(where, n, {&matrix});
  if (result.IsSuccessful()) result = CheckVectorSizes(where, n, {&vector});
  return result;
}

QVStatModelResult CheckIndex(const char* where, std::size_t n, std::size_t index) {
  if (index < n) return true;
  return QVFailure(QVStatModelFailureType::ArgumentOutOfRange, where)
         << "Index: " << index << " bigger than dimension: " << n;
}

QVStatModelResult CheckIndices(const char* where, std::size_t n,
                               const std::vector<std::size_t>& indices) {
  for (const std::size_t index : indices)
    if (index >= n) return CheckIndex(where, n, index);
  return true;
}

enum class Form { Scalar, Diagonal, Full, Other };

Form FormOf(std::size_t n, const Vector& matrix) {
  if (matrix.size() == 1) return Form::Scalar;
  if (matrix.size() == n) return Form::Diagonal;
  if (matrix.size() == n * n) return Form::Full;
  return Form::Other;
}

/// Written as !(x > 0), so that a NaN is refused too.
bool AllPositive(const Vector& values) {
  return std::all_of(values.begin(), values.end(), [](double value) { return value > 0.0; });
}

QVStatModelResult SingularMatrix(const char* where) {
  return QVFailure(QVStatModelFailureType::SingularMatrix, where);
}

/// The checks of a diagonal (size n) or scalar (size 1) matrix.
QVStatModelResult CheckPositive(const char* where, std::size_t size, const Vector& matrix) {
  if (matrix.size() != size) return WrongMatrixSize(where, size, matrix);
  return AllPositive(matrix) ? QVStatModelResult(true) : SingularMatrix(where);
}

/// The checks of a triangular factor that is divided by.
QVStatModelResult CheckInvertible(const char* where, std::size_t n, const Vector& factor) {
  QVStatModelResult result = CheckFullSizes(where, n, {&factor});
  if (result.NotSuccessful()) return result;
  for (std::size_t i = 0; i < n; ++i)
    if (!(std::abs(factor[i * n + i]) > 0.0)) return SingularMatrix(where);
  return true;
}

template <class Function>
QVStatModelResult MapPositive(const char* where, std::size_t size, const Vector& matrix,
                              Vector& image, Function function) {
  const QVStatModelResult result = CheckPositive(where, size, matrix);
  if (result.NotSuccessful()) return result;
  image.resize(size);
  std::transform(matrix.begin(), matrix.end(), image.begin(), function);
  return true;
}

double Reciprocal(double value) { return 1.0 / value; }
double SquareRoot(double value) { return std::sqrt(value); }

/// A routine for any form: the form's own routine, with this one in the chain.
template <class Output>
struct FormRoutines {
  QVStatModelResult (*scalar)(std::size_t, const Vector&, Output&);
  QVStatModelResult (*diagonal)(std::size_t, const Vector&, Output&);
  QVStatModelResult (*full)(std::size_t, const Vector&, Output&);
};

template <class Output>
QVStatModelResult Dispatch(const char* where, const FormRoutines<Output>& routines, std::size_t n,
                           const Vector& matrix, Output& output) {
  switch (FormOf(n, matrix)) {
    case Form::Scalar:
      return QVCalledFrom(where, routines.scalar(n, matrix, output));
    case Form::Diagonal:
      return QVCalledFrom(where, routines.diagonal(n, matrix, output));
    case Form::Full:
      return QVCalledFrom(where, routines.full(n, matrix, output));
    case Form::Other:
      break;
  }
  return WrongMatrixSize(where, n, matrix);
}

/// From this size on the dense kernels, which pack what they work on, beat the plain loops.
constexpr std::size_t kBlockedSize = 48;

/// The elements on and below the diagonal, row by row, to those of another matrix by columns, or
/// back: either way the transpose. Tiles of both stay in the first cache.
void TransposeLower(std::size_t n, const double* from, double* to, bool fromRows) {
  constexpr std::size_t tile = 16;
  for (std::size_t top = 0; top < n; top += tile)
    for (std::size_t left = 0; left <= top; left += tile)
      for (std::size_t i = top; i < std::min(top + tile, n); ++i)
        for (std::size_t j = left; j < std::min(left + tile, i + 1); ++j)
          to[fromRows ? j * n + i : i * n + j] = from[fromRows ? i * n + j : j * n + i];
}

/// Turns the lower triangle of a matrix into its factor, in place, row by row.
/// \return the number of rows finished: n, or that of the row whose pivot is not positive.
std::size_t FactorByRows(double* factor, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i) {
    double* row = factor + i * n;
    for (std::size_t j = 0; j < i; ++j)
      row[j] = (row[j] - Dot(row, factor + j * n, j)) / factor[j * n + j];
    const double pivot = row[i] - Dot(row, row, i);
    if (!(pivot > 0.0)) return i;
    row[i] = std::sqrt(pivot);
  }
  return n;
}

/// The same for a large matrix, by blocks; `factor` is left alone if a pivot is not positive.
/// \return whether all pivots were positive.
bool FactorByBlocks(double* factor, std::size_t n) {
  Vector columns(n * n);
  TransposeLower(n, factor, columns.data(), true);
  if (!QVMath::QVGetDenseKernels().cholesky(n, columns.data(), n)) return false;
  TransposeLower(n, columns.data(), factor, false);
  return true;
}

/// product = a b by blocks. By columns the product is its transpose, the sum over k of b(k, j)
/// a(i, k).
void MultiplyByBlocks(std::size_t n, const double* a, const double* b, double* product) {
  const auto step = static_cast<std::ptrdiff_t>(n);
  QVMath::QVGetDenseKernels().multiply(n, n, n, 1.0, {b, 1, step}, {a, step, 1}, product, n);
}

/// Largest remaining diagonal element of a matrix that is being reduced from row `from` on.
std::size_t LargestPivot(const Vector& matrix, std::size_t from, std::size_t n) {
  std::size_t largest = from;
  for (std::size_t i = from + 1; i < n; ++i)
    if (matrix[i * n + i] > matrix[largest * n + largest]) largest = i;
  return largest;
}

void SwapRowsAndColumns(Vector& matrix, std::size_t i, std::size_t j, std::size_t n) {
  if (i == j) return;
  for (std::size_t k = 0; k < n; ++k) std::swap(matrix[i * n + k], matrix[j * n + k]);
  for (std::size_t k = 0; k < n; ++k) std::swap(matrix[k * n + i], matrix[k * n + j]);
}

/// The symmetric matrix whose lower triangle is given, scaled to a unit diagonal. A row whose
/// diagonal element is not positive is left as it is: it passes only if it is all zero.
Vector ScaledToUnitDiagonal(std::size_t n, const Vector& matrix) {
  Vector scale(n);
  for (std::size_t i = 0; i < n; ++i) {
    const double element = matrix[i * n + i];
    scale[i] = element > 0.0 ? 1.0 / std::sqrt(element) : 1.0;
  }
  Vector scaled(n * n);
  for (std::size_t i = 0; i < n; ++i)
    for (std::size_t j = 0; j <= i; ++j)
      scaled[i * n + j] = scaled[j * n + i] = matrix[i * n + j] * scale[i] * scale[j];
  return scaled;
}

/// Cholesky reduction with diagonal pivoting, until the pivots vanish to rounding: the matrix is
/// semidefinite if all that is left vanishes with them.
bool IsSemidefinite(std::size_t n, const Vector& matrix) {
  const double tolerance = static_cast<double>(n) * std::numeric_limits<double>::epsilon();
  Vector rest = ScaledToUnitDiagonal(n, matrix);
  std::size_t rank = 0;
  for (; rank < n; ++rank) {
    SwapRowsAndColumns(rest, rank, LargestPivot(rest, rank, n), n);
    const double* pivotRow = &rest[rank * n];
    if (!(pivotRow[rank] > tolerance)) break;
    for (std::size_t i = rank + 1; i < n; ++i)
      AddScaled(-rest[i * n + rank] / pivotRow[rank], pivotRow + rank + 1, &rest[i * n + rank + 1],
                n - rank - 1);
  }
  for (std::size_t i = rank; i < n; ++i)
    for (std::size_t j = rank; j < n; ++j)
      if (!(std::abs(rest[i * n + j]) <= tolerance)) return false;
  return true;
}

/// The forward substitutions of all columns of the identity, a row of the inverse at a time.
void InvertTriangleByRows(std::size_t n, const double* factor, double* inverse) {
  for (std::size_t i = 0; i < n; ++i) {
    double* row = inverse + i * n;
    for (std::size_t k = 0; k < i; ++k) AddScaled(-factor[i * n + k], inverse + k * n, row, k + 1);
    row[i] = 1.0;
    for (std::size_t j = 0; j <= i; ++j) row[j] /= factor[i * n + i];
  }
}

void InvertTriangleByBlocks(std::size_t n, const double* factor, double* inverse) {
  Vector columns(n * n), solution(n * n);
  TransposeLower(n, factor, columns.data(), true);
  for (std::size_t i = 0; i < n; ++i) solution[i * n + i] = 1.0;
  QVMath::QVGetDenseKernels().solveLower(n, columns.data(), n, n, solution.data(), n);
  TransposeLower(n, solution.data(), inverse, false);
}

/// The upper triangle of L' L, for lower-triangular L, as a sum over the rows of L.
void MultiplyTriangles(std::size_t n, const double* l, double* product) {
  if (n >= kBlockedSize) {
    // What is the upper triangle by rows is the lower one by columns.
    QVMath::QVGetDenseKernels().rankUpdate(n, n, nullptr, {l, 1, static_cast<std::ptrdiff_t>(n)},
                                           product, n);
    return;
  }
  for (std::size_t k = 0; k < n; ++k) {
    const double* row = l + k * n;
    for (std::size_t i = 0; i <= k; ++i) AddScaled(row[i], row + i, product + i * n + i, k - i + 1);
  }
}

}  // namespace

QVStatModelResult QVDotProductOfVectors(std::size_t n, const Vector& a, const Vector& b,
                                        double& product) {
  const QVStatModelResult result = CheckVectorSizes("QVDotProductOfVectors", n, {&a, &b});
  if (result.IsSuccessful()) product = Dot(a.data(), b.data(), n);
  return result;
}

QVStatModelResult QVVectorElementwiseSumAccumulate(std::size_t n, const Vector& a, Vector& b) {
  const QVStatModelResult result =
      CheckVectorSizes("QVVectorElementwiseSumAccumulate", n, {&a, &b});
  if (result.IsSuccessful()) AddScaled(1.0, a.data(), b.data(), n);
  return result;
}

QVStatModelResult QVVectorElementwiseProductAccumulate(std::size_t n, const Vector& a, Vector& b) {
  const QVStatModelResult result =
      CheckVectorSizes("QVVectorElementwiseProductAccumulate", n, {&a, &b});
  if (result.NotSuccessful()) return result;
  for (std::size_t i = 0; i < n; ++i) b[i] *= a[i];
  return true;
}

QVStatModelResult QVVectorSaxpy(std::size_t n, double alpha, const Vector& x, Vector& y) {
  const QVStatModelResult result = CheckVectorSizes("QVVectorSaxpy", n, {&x, &y});
  if (result.IsSuccessful()) AddScaled(alpha, x.data(), y.data(), n);
  return result;
}

QVStatModelResult QVScalarTimesVector(std::size_t n, double alpha, const Vector& x, Vector& y) {
  const QVStatModelResult result = CheckVectorSizes("QVScalarTimesVector", n, {&x});
  if (result.NotSuccessful()) return result;
  y.resize(n);
  for (std::size_t i = 0; i < n; ++i) y[i] = alpha * x[i];
  return true;
}

QVStatModelResult QVDifferenceBetweenVectors(std::size_t n, const Vector& a, const Vector& b,
                                             Vector& difference) {
  const QVStatModelResult result = CheckVectorSizes("QVDifferenceBetweenVectors", n, {&a, &b});
  if (result.NotSuccessful()) return result;
  difference.resize(n);
  for (std::size_t i = 0; i < n; ++i) difference[i] = a[i] - b[i];
  return true;
}

QVStatModelResult QVVectorVectorTranspose(std::size_t n, const Vector& v, Vector& matrix) {
  const QVStatModelResult result = CheckVectorSizes("QVVectorVectorTranspose", n, {&v});
  if (result.NotSuccessful()) return result;
  matrix.resize(n * n);
  for (std::size_t i = 0; i < n; ++i)
    for (std::size_t j = 0; j < n; ++j) matrix[i * n + j] = v[i] * v[j];
  return true;
}

QVStatModelResult QVGetVecElementFromIndex(std::size_t n, const Vector& v, std::size_t index,
                                           double& element) {
  const char* const where = "QVGetVecElementFromIndex";
  QVStatModelResult result = CheckIndex(where, n, index);
  if (result.IsSuccessful()) result = CheckVectorSizes(where, n, {&v});
  if (result.IsSuccessful()) element = v[index];
  return result;
}

QVStatModelResult QVGetVecOfVecElementsFromVecOfIndices(std::size_t n, const Vector& v,
                                                        const std::vector<std::size_t>& indices,
                                                        Vector& elements) {
  const char* const where = "QVGetVecOfVecElementsFromVecOfIndices";
  QVStatModelResult result = CheckIndices(where, n, indices);
  if (result.IsSuccessful()) result = CheckVectorSizes(where, n, {&v});
  if (result.NotSuccessful()) return result;
  elements.clear();
  elements.reserve(indices.size());
  for (const std::size_t index : indices) elements.push_back(v[index]);
  return true;
}

QVStatModelResult QVGetDiagonalElemOfMatrix(std::size_t n, const Vector& matrix, std::size_t index,
                                            double& element) {
  const char* const where = "QVGetDiagonalElemOfMatrix";
  if (index >= n)
    return QVFailure(QVStatModelFailureType::ArgumentOutOfRange, where)
           << index << " bigger than matrix Dimension: " << n;
  switch (FormOf(n, matrix)) {
    case Form::Scalar:
      element = matrix[0];
      return true;
    case Form::Diagonal:
      element = matrix[index];
      return true;
    case Form::Full:
      element = matrix[index * n + index];
      return true;
    case Form::Other:
      break;
  }
  return WrongMatrixSize(where, n, matrix);
}

QVStatModelResult QVGetBlockSubMatrixOfMatrix(std::size_t n, const Vector& matrix,
                                              const std::vector<std::size_t>& indices,
                                              Vector& subMatrix) {
  const char* const where = "QVGetBlockSubMatrixOfMatrix";
  const QVStatModelResult result = CheckIndices(where, n, indices);
  if (result.NotSuccessful()) return result;
  switch (FormOf(n, matrix)) {
    case Form::Scalar:
      subMatrix = matrix;
      return true;
    case Form::Diagonal:
      return QVCalledFrom(where,
                          QVGetVecOfVecElementsFromVecOfIndices(n, matrix, indices, subMatrix));
    case Form::Full:
      subMatrix.clear();
      subMatrix.reserve(indices.size() * indices.size());
      for (const std::size_t i : indices)
        for (const std::size_t j : indices) subMatrix.push_back(matrix[i * n + j]);
      return true;
    case Form::Other:
      break;
  }
  return WrongMatrixSize(where, n, matrix);
}

QVStatModelResult QVScalarTimesMatrixPlusDiagTerm(std::size_t n, const Vector& matrix, double a,
                                                  double b, Vector& result) {
  const QVStatModelResult check = CheckFullSizes("QVScalarTimesMatrixPlusDiagTerm", n, {&matrix});
  if (check.NotSuccessful()) return check;
  result.resize(n * n);
  for (std::size_t i = 0; i < n * n; ++i) result[i] = a * matrix[i];
  for (std::size_t i = 0; i < n; ++i) result[i * n + i] += b;
  return true;
}

QVStatModelResult QVMatrixTimesVector(std::size_t n, const Vector& matrix, const Vector& x,
                                      Vector& y) {
  const QVStatModelResult result = CheckFullAndVectorSizes("QVMatrixTimesVector", n, matrix, x);
  if (result.NotSuccessful()) return result;
  y.resize(n);
  for (std::size_t i = 0; i < n; ++i) y[i] = Dot(&matrix[i * n], x.data(), n);
  return true;
}

QVStatModelResult QVMatrixTimesMatrix(std::size_t n, const Vector& a, const Vector& b,
                                      Vector& product) {
  const QVStatModelResult result = CheckFullSizes("QVMatrixTimesMatrix", n, {&a, &b});
  if (result.NotSuccessful()) return result;
  product.assign(n * n, 0.0);
  if (n >= kBlockedSize) {
    MultiplyByBlocks(n, a.data(), b.data(), product.data());
    return true;
  }
  for (std::size_t i = 0; i < n; ++i) {
    const double* left = &a[i * n];
    double* row = &product[i * n];
    std::size_t k = 0;
    // Four rows of b at a time, so that the row of the product is loaded and stored once for four.
    for (; k + 4 <= n; k += 4) {
      const double* right = &b[k * n];
      for (std::size_t j = 0; j < n; ++j)
        row[j] += (left[k] * right[j] + left[k + 1] * right[n + j]) +
                  (left[k + 2] * right[2 * n + j] + left[k + 3] * right[3 * n + j]);
    }
    for (; k < n; ++k) AddScaled(left[k], &b[k * n], row, n);
  }
  return true;
}

QVStatModelResult QVTransposeMatrix(std::size_t n, const Vector& matrix, Vector& transpose) {
  const QVStatModelResult result = CheckFullSizes("QVTransposeMatrix", n, {&matrix});
  if (result.NotSuccessful()) return result;
  transpose.resize(n * n);
  constexpr std::size_t tile = 16;  // tiles of both matrices stay in the first cache
  for (std::size_t top = 0; top < n; top += tile)
    for (std::size_t left = 0; left < n; left += tile)
      for (std::size_t i = top; i < std::min(top + tile, n); ++i)
        for (std::size_t j = left; j < std::min(left + tile, n); ++j)
          transpose[j * n + i] = matrix[i * n + j];
  return true;
}

QVStatModelResult QVTraceOfMatrixProduct(std::size_t n, const Vector& a, const Vector& b,
                                         double& trace) {
  const QVStatModelResult result = CheckFullSizes("QVTraceOfMatrixProduct", n, {&a, &b});
  if (result.NotSuccessful()) return result;
  trace = 0.0;
  for (std::size_t i = 0; i < n; ++i)
    for (std::size_t j = 0; j < n; ++j) trace += a[i * n + j] * b[j * n + i];
  return true;
}

QVStatModelResult QVCholeskyDecomposition(std::size_t n, const Vector& matrix, Vector& factor) {
  const char* const where = "QVCholeskyDecomposition";
  const QVStatModelResult result = CheckFullSizes(where, n, {&matrix});
  if (result.NotSuccessful()) return result;
  factor.resize(n * n);
  for (std::size_t i = 0; i < n; ++i) {
    const auto row = static_cast<std::ptrdiff_t>(i * n);
    const auto diagonal = row + static_cast<std::ptrdiff_t>(i) + 1;
    std::copy(matrix.begin() + row, matrix.begin() + diagonal, factor.begin() + row);
    std::fill(factor.begin() + diagonal, factor.begin() + row + static_cast<std::ptrdiff_t>(n),
              0.0);
  }
  if (n >= kBlockedSize && FactorByBlocks(factor.data(), n)) return true;
  const std::size_t numFinished = FactorByRows(factor.data(), n);
  if (numFinished == n) return true;
  std::fill(factor.begin() + static_cast<std::ptrdiff_t>(numFinished * n), factor.end(), 0.0);
  return SingularMatrix(where);
}

QVStatModelResult QVSquareRootOfDiagonalMatrix(std::size_t n, const Vector& diagonal,
                                               Vector& root) {
  return MapPositive("QVSquareRootOfDiagonalMatrix", n, diagonal, root, SquareRoot);
}

QVStatModelResult QVSquareRootOfScalarMatrix(const Vector& scalar, Vector& root) {
  return MapPositive("QVSquareRootOfScalarMatrix", 1, scalar, root, SquareRoot);
}

QVStatModelResult QVSquareRootOfScalarMatrix(std::size_t, const Vector& scalar, Vector& root) {
  return QVSquareRootOfScalarMatrix(scalar, root);
}

QVStatModelResult QVSquareRootOfPosDefMatrix(std::size_t n, const Vector& matrix, Vector& root) {
  constexpr FormRoutines<Vector> routines = {QVSquareRootOfScalarMatrix,
                                             QVSquareRootOfDiagonalMatrix, QVCholeskyDecomposition};
  return Dispatch("QVSquareRootOfPosDefMatrix", routines, n, matrix, root);
}

QVStatModelResult QVLogDeterminantOfLowerTriSqRoot(std::size_t n, const Vector& factor,
                                                   double& logDeterminant) {
  const char* const where = "QVLogDeterminantOfLowerTriSqRoot";
  const QVStatModelResult result = CheckFullSizes(where, n, {&factor});
  if (result.NotSuccessful()) return result;
  logDeterminant = 0.0;
  for (std::size_t i = 0; i < n; ++i) {
    if (!(factor[i * n + i] > 0.0)) return SingularMatrix(where);
    logDeterminant += 2.0 * std::log(factor[i * n + i]);
  }
  return true;
}

QVStatModelResult QVLogDeterminantOfSymmPosDefMatrix(std::size_t n, const Vector& matrix,
                                                     double& logDeterminant) {
  const char* const where = "QVLogDeterminantOfSymmPosDefMatrix";
  Vector factor;
  QVStatModelResult result = QVCholeskyDecomposition(n, matrix, factor);
  if (QVFailedIn(result, where)) return result;
  return QVCalledFrom(where, QVLogDeterminantOfLowerTriSqRoot(n, factor, logDeterminant));
}

QVStatModelResult QVLogDeterminantOfDiagonalMatrix(std::size_t n, const Vector& diagonal,
                                                   double& logDeterminant) {
  const QVStatModelResult result = CheckPositive("QVLogDeterminantOfDiagonalMatrix", n, diagonal);
  if (result.NotSuccessful()) return result;
  logDeterminant = 0.0;
  for (const double element : diagonal) logDeterminant += std::log(element);
  return true;
}

QVStatModelResult QVLogDeterminantOfScalarMatrix(std::size_t n, const Vector& scalar,
                                                 double& logDeterminant) {
  const QVStatModelResult result = CheckPositive("QVLogDeterminantOfScalarMatrix", 1, scalar);
  if (result.IsSuccessful()) logDeterminant = static_cast<double>(n) * std::log(scalar[0]);
  return result;
}

QVStatModelResult QVLogDeterminantOfPosDefMatrix(std::size_t n, const Vector& matrix,
                                                 double& logDeterminant) {
  constexpr FormRoutines<double> routines = {QVLogDeterminantOfScalarMatrix,
                                             QVLogDeterminantOfDiagonalMatrix,
                                             QVLogDeterminantOfSymmPosDefMatrix};
  return Dispatch("QVLogDeterminantOfPosDefMatrix", routines, n, matrix, logDeterminant);
}

QVStatModelResult QVMatrixIsPosDef(std::size_t n, const Vector& matrix) {
  const char* const where = "QVMatrixIsPosDef";
  Vector factor;
  switch (FormOf(n, matrix)) {
    case Form::Scalar:
      if (matrix[0] > 0.0) return true;
      return QVFailure(QVStatModelFailureType::SingularMatrix, where)
             << "Scalar matrix with non-positive scalar";
    case Form::Diagonal:
      return CheckPositive(where, n, matrix);
    case Form::Full:
      return QVCalledFrom(where, QVCholeskyDecomposition(n, matrix, factor));
    case Form::Other:
      break;
  }
  return WrongMatrixSize(where, n, matrix);
}

QVStatModelResult QVMatrixIsNonNegDef(std::size_t n, const Vector& matrix) {
  const char* const where = "QVMatrixIsNonNegDef";
  QVStatModelResult result(true);
  Vector factor;
  switch (FormOf(n, matrix)) {
    case Form::Scalar:
      if (matrix[0] >= 0.0) return true;
      return QVFailure(QVStatModelFailureType::SingularMatrix, where)
             << "Scalar matrix with non-positive scalar";
    case Form::Diagonal:
      if (std::all_of(matrix.begin(), matrix.end(), [](double value) { return value >= 0.0; }))
        return true;
      return SingularMatrix(where);
    case Form::Full:
      result = QVCholeskyDecomposition(n, matrix, factor);
      if (result.NotSuccessful() && IsSemidefinite(n, matrix)) return true;
      return QVCalledFrom(where, result);
    case Form::Other:
      break;
  }
  return WrongMatrixSize(where, n, matrix);
}

QVStatModelResult QVInverseOfDiagonalMatrix(std::size_t n, const Vector& diagonal,
                                            Vector& inverse) {
  return MapPositive("QVInverseOfDiagonalMatrix", n, diagonal, inverse, Reciprocal);
}

QVStatModelResult QVInverseOfScalarMatrix(const Vector& scalar, Vector& inverse) {
  return MapPositive("QVInverseOfScalarMatrix", 1, scalar, inverse, Reciprocal);
}

QVStatModelResult QVInverseOfScalarMatrix(std::size_t, const Vector& scalar, Vector& inverse) {
  return QVInverseOfScalarMatrix(scalar, inverse);
}

QVStatModelResult QVInverseOfLowerTriangularMatrix(std::size_t n, const Vector& factor,
                                                   Vector& inverse) {
  const QVStatModelResult result = CheckInvertible("QVInverseOfLowerTriangularMatrix", n, factor);
  if (result.NotSuccessful()) return result;
  inverse.assign(n * n, 0.0);
  const auto invert = n >= kBlockedSize ? InvertTriangleByBlocks : InvertTriangleByRows;
  invert(n, factor.data(), inverse.data());
  return true;
}

QVStatModelResult QVInvOfSymmPosDefMatrixFromLowTriSqRoot(std::size_t n, const Vector& factor,
                                                          Vector& inverse) {
  Vector factorInverse;
  QVStatModelResult result = QVInverseOfLowerTriangularMatrix(n, factor, factorInverse);
  if (QVFailedIn(result, "QVInvOfSymmPosDefMatrixFromLowTriSqRoot")) return result;
  inverse.assign(n * n, 0.0);
  MultiplyTriangles(n, factorInverse.data(), inverse.data());
  for (std::size_t i = 0; i < n; ++i)
    for (std::size_t j = i + 1; j < n; ++j) inverse[j * n + i] = inverse[i * n + j];
  return true;
}

QVStatModelResult QVInverseOfSymmetricPositiveDefiniteMatrix(std::size_t n, const Vector& matrix,
                                                             Vector& inverse) {
  const char* const where = "QVInverseOfSymmetricPositiveDefiniteMatrix";
  Vector factor;
  QVStatModelResult result = QVCholeskyDecomposition(n, matrix, factor);
  if (QVFailedIn(result, where)) return result;
  return QVCalledFrom(where, QVInvOfSymmPosDefMatrixFromLowTriSqRoot(n, factor, inverse));
}

QVStatModelResult QVInverseOfPosDefMatrix(std::size_t n, const Vector& matrix, Vector& inverse) {
  constexpr FormRoutines<Vector> routines = {QVInverseOfScalarMatrix, QVInverseOfDiagonalMatrix,
                                             QVInverseOfSymmetricPositiveDefiniteMatrix};
  return Dispatch("QVInverseOfPosDefMatrix", routines, n, matrix, inverse);
}

QVStatModelResult QVSolveLowerTriangularEquations(std::size_t n, const Vector& factor,
                                                  const Vector& b, Vector& x) {
  const char* const where = "QVSolveLowerTriangularEquations";
  QVStatModelResult result = CheckInvertible(where, n, factor);
  if (result.IsSuccessful()) result = CheckVectorSizes(where, n, {&b});
  if (result.NotSuccessful()) return result;
  x = b;
  for (std::size_t i = 0; i < n; ++i)
    x[i] = (x[i] - Dot(&factor[i * n], x.data(), i)) / factor[i * n + i];
  return true;
}

QVStatModelResult QVSolveTransposedLowerTriangularEquations(std::size_t n, const Vector& factor,
                                                            const Vector& b, Vector& x) {
  const char* const where = "QVSolveTransposedLowerTriangularEquations";
  QVStatModelResult result = CheckInvertible(where, n, factor);
  if (result.IsSuccessful()) result = CheckVectorSizes(where, n, {&b});
  if (result.NotSuccessful()) return result;
  x = b;
  for (std::size_t i = n; i-- > 0;) {
    x[i] /= factor[i * n + i];
    AddScaled(-x[i], &factor[i * n], x.data(), i);
  }
  return true;
}

QVStatModelResult QVSolveSymmetricEquationsViaLowerTriSquareRoot(std::size_t n,
                                                                 const Vector& factor,
                                                                 const Vector& b, Vector& x) {
  const char* const where = "QVSolveSymmetricEquationsViaLowerTriSquareRoot";
  QVStatModelResult result = QVSolveLowerTriangularEquations(n, factor, b, x);
  if (QVFailedIn(result, where)) return result;
  return QVCalledFrom(where, QVSolveTransposedLowerTriangularEquations(n, factor, x, x));
}

std::string QVPrintVectorDoubles(const std::string& name, const Vector& values, std::size_t count) {
  const std::size_t numShown = std::min(count, values.size());
  std::ostringstream text;
  text << "Values of vector " << name << "\n";
  for (std::size_t i = 0; i < numShown; ++i) text << (i ? " " : "") << values[i];
  if (numShown < values.size()) text << " ... (" << values.size() - numShown << " more)";
  text << "\n";
  return text.str();
}

}  // namespace QVStats
