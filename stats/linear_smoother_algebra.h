/// \file
/// \brief Linear algebra that the Gaussian process and the krigings on similarity share.
#ifndef QVSTATS_LINEAR_SMOOTHER_ALGEBRA_H
#define QVSTATS_LINEAR_SMOOTHER_ALGEBRA_H

#include <Eigen/Core>
#include <cmath>
#include <vector>

#include "platform/math/dense_kernels.h"
#include "stats/api/linear_smoother_impl.h"
#include "stats/sample_sums.h"

namespace QVStats {

/// The Cholesky factor in place of a lower triangle. \return whether the matrix has one.
inline bool QVFactoriseInPlace(Eigen::MatrixXd& matrix) {
  const auto n = static_cast<std::size_t>(matrix.rows());
  return QVMath::QVGetDenseKernels().cholesky(n, matrix.data(), n);
}

/// Replaces the right sides B by L^-1 B.
template <class Dense>
void QVSolveLower(const Eigen::MatrixXd& factor, Dense& rightSides) {
  const auto n = static_cast<std::size_t>(factor.rows());
  QVMath::QVGetDenseKernels().solveLower(
      n, factor.data(), n, static_cast<std::size_t>(rightSides.cols()), rightSides.data(), n);
}

inline void QVSolveLowerTransposed(const Eigen::MatrixXd& factor, Eigen::VectorXd& rightSide) {
  const auto n = static_cast<std::size_t>(factor.rows());
  QVMath::QVGetDenseKernels().solveLowerTransposed(n, factor.data(), n, 1, rightSide.data(), n);
}

inline double QVDot(const double* x, const double* y, Eigen::Index n) {
  return QVMath::QVGetDenseKernels().dot(static_cast<std::size_t>(n), x, y);
}

/// The sum of n values, the same bits wherever they stand in memory.
inline double QVSum(const double* x, std::size_t n) {
  return QVSumTerms(0, n, [x](std::size_t i) { return x[i]; });
}

inline double QVMean(const double* x, Eigen::Index n) {
  return QVSum(x, static_cast<std::size_t>(n)) / static_cast<double>(n);
}

/// Simple kriging around the mean m of the responses y: the weights C^-1 (y - m), from the Cholesky
/// factor of C. \return m.
inline double QVSolveSimpleKriging(Eigen::VectorXd& weights, const Eigen::MatrixXd& factor,
                                   const Eigen::VectorXd& responses) {
  const double mean = responses.sum() / static_cast<double>(responses.size());
  weights = responses.array() - mean;
  QVSolveLower(factor, weights);
  QVSolveLowerTransposed(factor, weights);
  return mean;
}

/// Appends predictions and errors sqrt(sill - k' C^-1 k) of objects with covariances k, a column
/// each, which are destroyed.
inline void QVPredictBySimpleKriging(QVSimilarityPredictions& predictions,
                                     Eigen::MatrixXd& covariances, const Eigen::MatrixXd& factor,
                                     const Eigen::VectorXd& weights, double mean, double sill) {
  const Eigen::Index n = covariances.rows();
  for (Eigen::Index object = 0; object < covariances.cols(); ++object)
    predictions.predicted.push_back(mean +
                                    QVDot(covariances.col(object).data(), weights.data(), n));
  QVSolveLower(factor, covariances);
  for (Eigen::Index object = 0; object < covariances.cols(); ++object) {
    const double* column = covariances.col(object).data();
    predictions.estimatedErrors.push_back(std::sqrt(sill - QVDot(column, column, n)));
  }
}

/// Products with the inverse of a covariance matrix C, from its whitening matrix W, W'W = C^-1.
struct QVInverseProducts {
  Eigen::VectorXd responses;  ///< C^-1 y
  Eigen::VectorXd ones;       ///< C^-1 1
  Eigen::VectorXd diagonal;   ///< (C^-1)_ii

  QVInverseProducts(const Eigen::MatrixXd& whitening, const Eigen::VectorXd& y)
      : responses(whitening.transpose() * (whitening * y)),
        ones(whitening.transpose() * whitening.rowwise().sum()),
        diagonal(whitening.colwise().squaredNorm().transpose()) {}
};

/// Leave-one-out predictions around the mean of the other responses, for fixed covariances: with m
/// that mean, y_i - (C^-1 (y - m))_i / (C^-1)_ii, of variance 1 / (C^-1)_ii.
inline void QVLeaveOneOutAroundMean(QVSimilarityPredictions& predictions,
                                    const Eigen::MatrixXd& whitening, const Eigen::VectorXd& y) {
  const QVInverseProducts inverse(whitening, y);
  const double sum = y.sum();
  const double others = static_cast<double>(y.size()) - 1.0;
  for (Eigen::Index i = 0; i < y.size(); ++i) {
    const double mean = (sum - y[i]) / others;
    predictions.predicted.push_back(y[i] - (inverse.responses[i] - mean * inverse.ones[i]) /
                                               inverse.diagonal[i]);
    predictions.estimatedErrors.push_back(std::sqrt(1.0 / inverse.diagonal[i]));
  }
}

}  // namespace QVStats

#endif  // QVSTATS_LINEAR_SMOOTHER_ALGEBRA_H
