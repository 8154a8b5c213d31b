/// \file
/// \brief Dense linear algebra and array functions at the speed of the machine.
///
/// One interface on raw pointers, implemented for the baseline instruction set, for AVX2 with
/// FMA and for AVX-512; the best one that the machine has is chosen at run time. The
/// implementations differ by rounding only. Matrices are stored by columns: element (i, j) of a
/// matrix with leading dimension ld stands at [i + j ld], as in Eigen's MatrixXd. Nothing is read
/// or written outside the parts that are named. All functions are safe to call from many threads on
/// distinct outputs.
///
/// Sources: K. Goto, R. A. van de Geijn, "Anatomy of High-Performance Matrix Multiplication", ACM
/// TOMS 34(3), 2008, doi:10.1145/1356052.1356053; F. G. Gustavson, "Recursion leads to automatic
/// variable blocking for dense linear-algebra algorithms", IBM J. Res. Dev. 41(6), 1997,
/// doi:10.1147/rd.416.0737.
#ifndef QV_PLATFORM_MATH_DENSE_KERNELS_H
#define QV_PLATFORM_MATH_DENSE_KERNELS_H

#include <cstddef>

#include "platform/math/export.h"

namespace QVMath {

/// Elements (i, k) of a matrix at data[i * rowStep + k * columnStep]; a step may be negative.
struct QVDenseView {
  const double* data;
  std::ptrdiff_t rowStep;
  std::ptrdiff_t columnStep;
};

/// The components of a mixture in one dimension, K arrays: the logarithm of weight times density of
/// component k at x is logScales[k] - halfPrecisions[k] (x - centers[k])^2.
struct QVMixtureTerms {
  std::size_t numComponents;
  const double* logScales;
  const double* halfPrecisions;
  const double* centers;
};

/// What one pass over the data adds up, K values each: the sums of the responsibilities r of
/// component k, of r (x - center) and of r (x - center)^2.
struct QVMixtureSums {
  double* counts;
  double* deviations;
  double* squares;
};

/// How many doubles of working memory QVDenseKernels::sumMixture needs for each component.
constexpr std::size_t kQVMixtureWork = 64;

/// The functions for one instruction set.
struct QVDenseKernels {
  const char* name;

  /// Replaces the lower triangle of a symmetric n x n matrix by its Cholesky factor L, A = L L'.
  /// The part above the diagonal is neither read nor written.
  /// \return false as soon as a pivot is not above 0, or is not a number: the matrix is not
  /// positive definite, and its lower triangle is then undefined.
  bool (*cholesky)(std::size_t n, double* a, std::size_t lda);

  /// Replaces B (n x m) by the solution X of L X = B, with the lower triangle of L (n x n). The
  /// bits of a column do not depend on the others, nor on how many they are.
  void (*solveLower)(std::size_t n, const double* l, std::size_t ldl, std::size_t m, double* b,
                     std::size_t ldb);
  /// The same for L' X = B.
  void (*solveLowerTransposed)(std::size_t n, const double* l, std::size_t ldl, std::size_t m,
                               double* b, std::size_t ldb);

  /// C(i, j) += factor * sum_k A(i, k) B(j, k) for the m x n matrix C and `depth` terms k.
  void (*multiply)(std::size_t m, std::size_t n, std::size_t depth, double factor, QVDenseView a,
                   QVDenseView b, double* c, std::size_t ldc);
  /// C(i, j) += sum_k w_k A(i, k) A(j, k) for the lower triangle of the n x n matrix C and `depth`
  /// terms k; null weights are ones.
  void (*rankUpdate)(std::size_t n, std::size_t depth, const double* weights, QVDenseView a,
                     double* c, std::size_t ldc);

  /// sum_i x_i y_i.
  double (*dot)(std::size_t n, const double* x, const double* y);
  /// y_j += factor * sum_i A(i, j) x_i: the m columns of A (n x m) against one vector.
  void (*multiplyTransposed)(std::size_t n, std::size_t m, double factor, const double* a,
                             std::size_t lda, const double* x, double* y);
  /// y_i += factor * sum_j A(i, j) x_j for A (n x m).
  void (*multiplyVector)(std::size_t n, std::size_t m, double factor, const double* a,
                         std::size_t lda, const double* x, double* y);

  /// y_i = exp(x_i), within 1 unit in the last place; subnormal results, infinities and NaN as
  /// std::exp. The arrays may be the same.
  void (*exp)(std::size_t n, const double* x, double* y);
  /// y_i = log(x_i), within 1 unit in the last place; NaN below 0, -infinity at 0.
  void (*log)(std::size_t n, const double* x, double* y);
  /// y_i = 1 - erf(x_i), within 4 units in the last place; what is subnormal may be 0.
  void (*erfc)(std::size_t n, const double* x, double* y);
  /// The terms of a logistic log-likelihood, for outcomes y_i of 1 or -1 and linear predictors z_i:
  /// the slope F(-t_i) y_i and the weight F(t_i) F(-t_i), t_i = y_i z_i, F(t) = 1 / (1 + exp(-t)).
  /// What is below 1e-307 counts as at most that.
  /// \return the sum of log F(t_i).
  double (*logisticTerms)(std::size_t n, const double* y, const double* z, double* slopes,
                          double* weights);
  /// y_i = sum_k c_k x_i^k over `size` terms, a multiple of 4, with coefficients and arguments that
  /// are not negative: complete to rounding, or NaN where more terms are needed.
  void (*sumSeries)(std::size_t size, const double* coefficients, std::size_t n, const double* x,
                    double* y);

  /// The expectation step of a mixture: for each of n data the responsibility of component k is its
  /// share in the mixture's density, r = exp(term k - L), L = log sum_j exp(term j), taken about
  /// the largest term. The sums are replaced; nothing is stored for a datum. A share below 1e-307
  /// counts as at most that.
  /// \param work kQVMixtureWork values for each component.
  /// \return the sum of L over the data; NaN, like the sums, when a datum is not finite.
  double (*sumMixture)(std::size_t n, const double* x, const QVMixtureTerms& terms,
                       const QVMixtureSums& sums, double* work);

  /// Reduces the symmetric matrix of a lower triangle (n x n, n >= 1) to the tridiagonal T = Q' A Q
  /// by Householder reflections: n diagonal elements and n - 1 beside it. `z`, unless null, is n
  /// values and becomes Q' z. The lower triangle of A is destroyed, the rest is left alone.
  /// Source: J. J. Dongarra, D. C. Sorensen, S. J. Hammarling, "Block reduction of matrices to
  /// condensed forms for eigenvalue computations", J. Comput. Appl. Math. 27, 1989.
  void (*tridiagonalise)(std::size_t n, double* a, std::size_t lda, double* diagonal,
                         double* offDiagonal, double* z);
};

/// The instruction sets, the slowest first.
enum class QVDensePath { Plain, Avx2, Avx512 };

/// \return the functions for an instruction set, or null where this machine or this build lacks it.
QVMATH_EXPORT const QVDenseKernels* QVFindDenseKernels(QVDensePath path);

/// The eigenvalues of a symmetric tridiagonal matrix, ascending: `diagonal` is n values and becomes
/// them; `offDiagonal` is n - 1 values and is destroyed. O(n^2), by the root-free QL iteration of
/// Pal, Walker and Kahan (B. N. Parlett, "The Symmetric Eigenvalue Problem", 1998, section 8.15).
/// \return whether the iteration converged; it does for finite matrices.
QVMATH_EXPORT bool QVGetTridiagonalEigenvalues(std::size_t n, double* diagonal,
                                               double* offDiagonal);

/// \return the fastest functions that this machine can run.
QVMATH_EXPORT const QVDenseKernels& QVGetDenseKernels();

}  // namespace QVMath

#endif  // QV_PLATFORM_MATH_DENSE_KERNELS_H
