/// \file
/// \brief Vectors and small square matrices in plain std::vector<double>.
///
/// An n x n matrix is packed into a vector in one of three forms, told apart by its length:
///
/// | length | form     | meaning                                       |
/// |--------|----------|-----------------------------------------------|
/// | n * n  | full     | element (i, j) at i * n + j, row by row       |
/// | n      | diagonal | element (i, i) at i, zero elsewhere           |
/// | 1      | scalar   | that number times the identity                |
///
/// When n is 1 the three coincide and the scalar form is taken. A routine named for a form accepts
/// that form only; a "PosDef" routine accepts any and keeps it. A triangular factor is a full
/// matrix with zeros above the diagonal.
///
/// Every routine returns success, or a failure recorded under its own name:
/// - WrongInputVectorSize: a vector does not have n elements;
/// - WrongInputMatrixSize: a matrix does not have the length of an accepted form;
/// - ArgumentOutOfRange: an index is n or more;
/// - SingularMatrix: a pivot, diagonal element or scalar is not positive (for triangular solves
///   and inverses: is zero).
/// Outputs are refilled, whatever they held, and are not defined after a failure. An output may be
/// one of the inputs only where that is said. From 48 rows on, factors, inverses and products of
/// full matrices take working memory for a matrix or two; apart from that nothing but outputs is
/// allocated where that is not said either.
///
/// Algorithms: G. H. Golub, C. F. Van Loan, "Matrix Computations", 4th ed., 2013, chapters 1, 3, 4.
#ifndef QVSTATS_API_MATRIX_H
#define QVSTATS_API_MATRIX_H

#include <cstddef>
#include <string>
#include <vector>

#include "stats/api/export.h"
#include "stats/api/stat_model.h"

namespace QVStats {

/// \name Vectors of n elements
/// @{

/// product = sum of a_i b_i.
QVSTATS_EXPORT QVStatModelResult QVDotProductOfVectors(std::size_t n, const std::vector<double>& a,
                                                       const std::vector<double>& b,
                                                       double& product);
/// b_i += a_i.
QVSTATS_EXPORT QVStatModelResult QVVectorElementwiseSumAccumulate(std::size_t n,
                                                                  const std::vector<double>& a,
                                                                  std::vector<double>& b);
/// b_i *= a_i.
QVSTATS_EXPORT QVStatModelResult QVVectorElementwiseProductAccumulate(std::size_t n,
                                                                      const std::vector<double>& a,
                                                                      std::vector<double>& b);
/// y_i += alpha x_i.
QVSTATS_EXPORT QVStatModelResult QVVectorSaxpy(std::size_t n, double alpha,
                                               const std::vector<double>& x,
                                               std::vector<double>& y);
/// y = alpha x; y may be x.
QVSTATS_EXPORT QVStatModelResult QVScalarTimesVector(std::size_t n, double alpha,
                                                     const std::vector<double>& x,
                                                     std::vector<double>& y);
/// difference = a - b; it may be a or b.
QVSTATS_EXPORT QVStatModelResult QVDifferenceBetweenVectors(std::size_t n,
                                                            const std::vector<double>& a,
                                                            const std::vector<double>& b,
                                                            std::vector<double>& difference);
/// matrix = v v', full.
QVSTATS_EXPORT QVStatModelResult QVVectorVectorTranspose(std::size_t n,
                                                         const std::vector<double>& v,
                                                         std::vector<double>& matrix);
/// element = v_index.
QVSTATS_EXPORT QVStatModelResult QVGetVecElementFromIndex(std::size_t n,
                                                          const std::vector<double>& v,
                                                          std::size_t index, double& element);
/// elements = v at each index, in the order of the indices, which may repeat.
QVSTATS_EXPORT QVStatModelResult QVGetVecOfVecElementsFromVecOfIndices(
    std::size_t n, const std::vector<double>& v, const std::vector<std::size_t>& indices,
    std::vector<double>& elements);
/// @}

/// \name Elements and products of matrices
/// @{

/// element = matrix(index, index), from any form.
QVSTATS_EXPORT QVStatModelResult QVGetDiagonalElemOfMatrix(std::size_t n,
                                                           const std::vector<double>& matrix,
                                                           std::size_t index, double& element);
/// The rows and columns of k indices, in their order, as a k x k matrix in the form of the input:
/// full, the k diagonal elements, or the scalar.
QVSTATS_EXPORT QVStatModelResult QVGetBlockSubMatrixOfMatrix(
    std::size_t n, const std::vector<double>& matrix, const std::vector<std::size_t>& indices,
    std::vector<double>& subMatrix);
/// result = a * matrix + b * I, for a full matrix; it may be the matrix.
QVSTATS_EXPORT QVStatModelResult QVScalarTimesMatrixPlusDiagTerm(std::size_t n,
                                                                 const std::vector<double>& matrix,
                                                                 double a, double b,
                                                                 std::vector<double>& result);
/// y = matrix x, for a full matrix.
QVSTATS_EXPORT QVStatModelResult QVMatrixTimesVector(std::size_t n,
                                                     const std::vector<double>& matrix,
                                                     const std::vector<double>& x,
                                                     std::vector<double>& y);
/// product = a b, for full matrices.
QVSTATS_EXPORT QVStatModelResult QVMatrixTimesMatrix(std::size_t n, const std::vector<double>& a,
                                                     const std::vector<double>& b,
                                                     std::vector<double>& product);
/// transpose(i, j) = matrix(j, i), for a full matrix.
QVSTATS_EXPORT QVStatModelResult QVTransposeMatrix(std::size_t n, const std::vector<double>& matrix,
                                                   std::vector<double>& transpose);
/// trace = sum over i and j of a(i, j) b(j, i), for full matrices.
QVSTATS_EXPORT QVStatModelResult QVTraceOfMatrixProduct(std::size_t n, const std::vector<double>& a,
                                                        const std::vector<double>& b,
                                                        double& trace);
/// @}

/// \name Square roots
/// For a full matrix the square root is the Cholesky factor.
/// @{

/// The lower-triangular L with L L' = matrix, for a full symmetric positive-definite matrix, of
/// which the lower triangle is read. n^3 / 3 operations.
///
/// Fails with SingularMatrix at the first row whose pivot is not positive; `factor` then holds the
/// rows finished before it.
QVSTATS_EXPORT QVStatModelResult QVCholeskyDecomposition(std::size_t n,
                                                         const std::vector<double>& matrix,
                                                         std::vector<double>& factor);
/// The square roots of the diagonal, diagonal; `root` may be the input.
QVSTATS_EXPORT QVStatModelResult QVSquareRootOfDiagonalMatrix(std::size_t n,
                                                              const std::vector<double>& diagonal,
                                                              std::vector<double>& root);
/// The square root of the scalar, scalar; `root` may be the input.
QVSTATS_EXPORT QVStatModelResult QVSquareRootOfScalarMatrix(const std::vector<double>& scalar,
                                                            std::vector<double>& root);
/// The same; the dimension plays no part.
QVSTATS_EXPORT QVStatModelResult QVSquareRootOfScalarMatrix(std::size_t n,
                                                            const std::vector<double>& scalar,
                                                            std::vector<double>& root);
/// Any form, kept.
QVSTATS_EXPORT QVStatModelResult QVSquareRootOfPosDefMatrix(std::size_t n,
                                                            const std::vector<double>& matrix,
                                                            std::vector<double>& root);
/// @}

/// \name Logarithms of determinants
/// @{

/// log det(L L') = 2 sum of log L(i, i), for a full lower-triangular L.
QVSTATS_EXPORT QVStatModelResult QVLogDeterminantOfLowerTriSqRoot(std::size_t n,
                                                                  const std::vector<double>& factor,
                                                                  double& logDeterminant);
/// Through the Cholesky factor of a full matrix, which it allocates.
QVSTATS_EXPORT QVStatModelResult QVLogDeterminantOfSymmPosDefMatrix(
    std::size_t n, const std::vector<double>& matrix, double& logDeterminant);
/// The sum of the logarithms of the diagonal.
QVSTATS_EXPORT QVStatModelResult QVLogDeterminantOfDiagonalMatrix(
    std::size_t n, const std::vector<double>& diagonal, double& logDeterminant);
/// n times the logarithm of the scalar.
QVSTATS_EXPORT QVStatModelResult QVLogDeterminantOfScalarMatrix(std::size_t n,
                                                                const std::vector<double>& scalar,
                                                                double& logDeterminant);
/// Any form.
QVSTATS_EXPORT QVStatModelResult QVLogDeterminantOfPosDefMatrix(std::size_t n,
                                                                const std::vector<double>& matrix,
                                                                double& logDeterminant);
/// @}

/// \name Definiteness, of any form
/// @{

/// Succeeds when the scalar or every diagonal element is positive, or when the Cholesky
/// factorisation of a full matrix (which it allocates) succeeds.
QVSTATS_EXPORT QVStatModelResult QVMatrixIsPosDef(std::size_t n, const std::vector<double>& matrix);

/// Succeeds when the scalar or every diagonal element is at least 0, or when a full symmetric
/// matrix is positive semidefinite to rounding: scaled to a unit diagonal and factorised with
/// diagonal pivoting, what is left once every pivot is at most n * 2^-52 is no larger than that
/// anywhere. A semidefinite matrix of rank r costs about n^2 r operations; two matrices are
/// allocated.
/// Source of the test: N. J. Higham, "Analysis of the Cholesky Decomposition of a Semi-definite
/// Matrix", in Reliable Numerical Computation, 1990.
QVSTATS_EXPORT QVStatModelResult QVMatrixIsNonNegDef(std::size_t n,
                                                     const std::vector<double>& matrix);
/// @}

/// \name Inverses
/// @{

/// 1 / d_i, diagonal; `inverse` may be the input.
QVSTATS_EXPORT QVStatModelResult QVInverseOfDiagonalMatrix(std::size_t n,
                                                           const std::vector<double>& diagonal,
                                                           std::vector<double>& inverse);
/// 1 / s, scalar; `inverse` may be the input.
QVSTATS_EXPORT QVStatModelResult QVInverseOfScalarMatrix(const std::vector<double>& scalar,
                                                         std::vector<double>& inverse);
/// The same; the dimension plays no part.
QVSTATS_EXPORT QVStatModelResult QVInverseOfScalarMatrix(std::size_t n,
                                                         const std::vector<double>& scalar,
                                                         std::vector<double>& inverse);
/// The inverse of a full lower-triangular matrix, lower-triangular too.
QVSTATS_EXPORT QVStatModelResult QVInverseOfLowerTriangularMatrix(std::size_t n,
                                                                  const std::vector<double>& factor,
                                                                  std::vector<double>& inverse);
/// (L L')^-1 = (L^-1)' L^-1, full and exactly symmetric. It allocates L^-1.
QVSTATS_EXPORT QVStatModelResult QVInvOfSymmPosDefMatrixFromLowTriSqRoot(
    std::size_t n, const std::vector<double>& factor, std::vector<double>& inverse);
/// The same from the full matrix, through its Cholesky factor.
QVSTATS_EXPORT QVStatModelResult QVInverseOfSymmetricPositiveDefiniteMatrix(
    std::size_t n, const std::vector<double>& matrix, std::vector<double>& inverse);
/// Any form, kept.
QVSTATS_EXPORT QVStatModelResult QVInverseOfPosDefMatrix(std::size_t n,
                                                         const std::vector<double>& matrix,
                                                         std::vector<double>& inverse);
/// @}

/// \name Triangular equations, from a full lower-triangular L; the solution may be b
/// @{

/// L x = b, by forward substitution.
QVSTATS_EXPORT QVStatModelResult QVSolveLowerTriangularEquations(std::size_t n,
                                                                 const std::vector<double>& factor,
                                                                 const std::vector<double>& b,
                                                                 std::vector<double>& x);
/// L' x = b, by back substitution.
QVSTATS_EXPORT QVStatModelResult
QVSolveTransposedLowerTriangularEquations(std::size_t n, const std::vector<double>& factor,
                                          const std::vector<double>& b, std::vector<double>& x);
/// (L L') x = b, by the two solves above.
QVSTATS_EXPORT QVStatModelResult QVSolveSymmetricEquationsViaLowerTriSquareRoot(
    std::size_t n, const std::vector<double>& factor, const std::vector<double>& b,
    std::vector<double>& x);
/// @}

/// "Values of vector <name>", a line end, and at most `count` values with six significant digits,
/// a blank between two; when some are left out, " ... (<number> more)". It ends in a line end.
QVSTATS_EXPORT std::string QVPrintVectorDoubles(const std::string& name,
                                                const std::vector<double>& values,
                                                std::size_t count);

}  // namespace QVStats

#endif  // QVSTATS_API_MATRIX_H
