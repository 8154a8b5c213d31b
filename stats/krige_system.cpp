#include "stats/api/private/krige_system.h"

#include <Eigen/Cholesky>
#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/system/error_handler.h"

namespace QVStats {

using Eigen::Index;
using Eigen::MatrixXd;
using Eigen::VectorXd;

namespace {

bool HasNaN(const double* values, std::size_t count) {
  return std::any_of(values, values + count, [](double v) { return std::isnan(v); });
}

}  // namespace

void QVKrigeDistances::AddPoint(const double* distances) {
  // A quarter of slack rather than a doubling: the triangle is a large part of a model's memory.
  if (packed_.capacity() < packed_.size() + size_)
    packed_.reserve(packed_.size() + packed_.size() / 4 + size_);
  packed_.insert(packed_.end(), distances, distances + size_);
  ++size_;
}

void QVKrigeDistances::Reserve(std::size_t points) {
  if (points > 1) packed_.reserve(points * (points - 1) / 2);
}

void QVFillUpperCovariances(MatrixXd& matrix, const QVKrigeDistances& distances,
                            const QVKrigeKernelBase& kernel) {
  const double zero = 0.0;
  double diagonal = 0.0;
  kernel.GetCovariances(&zero, &diagonal, 1);
  bool complete = !std::isnan(diagonal);
  for (std::size_t g = 0; g < distances.GetNumPoints(); ++g) {
    double* column = matrix.data() + g * static_cast<std::size_t>(matrix.outerStride());
    if (g > 0) kernel.GetCovariances(distances.GetRow(g), column, g);
    column[g] = diagonal;
    complete = complete && !HasNaN(column, g);
  }
  QV_ASSERT(complete);
}

namespace {

/// [1, properties], n x b.
MatrixXd MakeBorder(const MatrixXd& properties, Index points) {
  MatrixXd border(points, 1 + properties.cols());
  border.col(0).setOnes();
  border.rightCols(properties.cols()) = properties;
  return border;
}

/// K = U'U with one factor, and the border through its Schur complement.
class CholeskySystem : public QVKrigeSystem {
 public:
  /// Whether the covariances in the upper triangle of `matrix`, which becomes the factor, are
  /// positive definite.
  bool Factorise(MatrixXd matrix) {
    factor_ = std::move(matrix);
    Eigen::LLT<Eigen::Ref<MatrixXd>, Eigen::Upper> llt(factor_);
    return llt.info() == Eigen::Success;
  }

  /// Whether the Schur complement of `border` is safely positive definite; it is not when columns
  /// of the border depend on each other.
  bool SetBorder(MatrixXd border) {
    SolveForward(border);
    half_ = std::move(border);
    const MatrixXd schur = half_.transpose() * half_;
    const VectorXd scale = schur.diagonal().cwiseSqrt().cwiseInverse();
    if (!scale.allFinite()) return false;
    const Eigen::LDLT<MatrixXd> scaled(scale.asDiagonal() * schur * scale.asDiagonal());
    if (scaled.info() != Eigen::Success || !(scaled.vectorD().minCoeff() > kSafePivot))
      return false;
    schur_.compute(schur);
    return schur_.info() == Eigen::Success;
  }

  void SetResponses(const VectorXd& responses) {
    MatrixXd z = responses;
    SolveForward(z);
    if (half_.cols() > 0) {
      beta_ = schur_.solve(half_.transpose() * z);
      z -= half_ * beta_;
    }
    SolveBackward(z);
    alpha_ = z;
  }

 protected:
  MatrixXd SolveWeights(const MatrixXd& covariances, const MatrixXd& properties) const override {
    MatrixXd z = covariances;
    SolveForward(z);
    if (half_.cols() > 0) {
      const MatrixXd rows = MakeBorderRows(properties);
      for (Index q = 0; q < z.cols(); ++q) {
        const VectorXd gz = half_.transpose() * z.col(q);
        z.col(q) -= half_ * schur_.solve(gz - rows.col(q));
      }
    }
    SolveBackward(z);
    return z;
  }

  Eigen::Matrix2Xd SolveMoments(MatrixXd& covariances, const MatrixXd& properties) const override {
    Eigen::Matrix2Xd moments(2, covariances.cols());
    for (Index q = 0; q < covariances.cols(); ++q) moments(0, q) = alpha_.dot(covariances.col(q));
    SolveForward(covariances);
    const MatrixXd rows = MakeBorderRows(properties);
    for (Index q = 0; q < covariances.cols(); ++q) {
      moments(1, q) = covariances.col(q).squaredNorm();
      if (half_.cols() == 0) continue;
      const VectorXd gz = half_.transpose() * covariances.col(q);
      moments(0, q) += beta_.dot(rows.col(q));
      moments(1, q) -= gz.dot(schur_.solve(gz - rows.col(q)));
    }
    return moments;
  }

 private:
  /// Pivots of the Schur complement, scaled to a unit diagonal, below this leave the small system
  /// with fewer than half of its digits.
  static constexpr double kSafePivot = 1e-8;

  /// Columns of B become U'^-1 B.
  void SolveForward(MatrixXd& b) const {
    factor_.triangularView<Eigen::Upper>().transpose().solveInPlace(b);
  }
  /// Columns of B become U^-1 B.
  void SolveBackward(MatrixXd& b) const { factor_.triangularView<Eigen::Upper>().solveInPlace(b); }

  MatrixXd factor_;
  MatrixXd half_;  // G = U'^-1 F
  Eigen::LLT<MatrixXd> schur_;
  VectorXd alpha_;
  VectorXd beta_;
};

/// The bordered matrix [K F; F' 0] as a whole, for borders whose columns depend on each other.
class BorderedSystem : public QVKrigeSystem {
 public:
  bool Factorise(const MatrixXd& border, const QVKrigeDistances& distances,
                 const QVKrigeKernelBase& kernel) {
    const Index n = border.rows();
    const Index b = border.cols();
    MatrixXd matrix(n + b, n + b);
    QVFillUpperCovariances(matrix, distances, kernel);
    matrix.topRightCorner(n, b) = border;
    matrix.bottomRightCorner(b, b).setZero();
    factor_.compute(matrix.selfadjointView<Eigen::Upper>());
    return factor_.info() == Eigen::Success;
  }

 protected:
  MatrixXd SolveWeights(const MatrixXd& covariances, const MatrixXd& properties) const override {
    const MatrixXd rows = MakeBorderRows(properties);
    const Index n = covariances.rows();
    MatrixXd weights(n, covariances.cols());
    VectorXd right(n + rows.rows());
    for (Index q = 0; q < covariances.cols(); ++q) {
      right << covariances.col(q), rows.col(q);
      weights.col(q) = factor_.solve(right).head(n);
    }
    return weights;
  }

  Eigen::Matrix2Xd SolveMoments(MatrixXd& covariances, const MatrixXd& properties) const override {
    const MatrixXd weights = SolveWeights(covariances, properties);
    Eigen::Matrix2Xd moments(2, weights.cols());
    for (Index q = 0; q < weights.cols(); ++q) {
      moments(0, q) = weights.col(q).dot(GetResponses());
      moments(1, q) = weights.col(q).dot(covariances.col(q));
    }
    return moments;
  }

 private:
  Eigen::LDLT<MatrixXd> factor_;
};

/// n x m covariances of m queries. A NaN distance is a fatal report.
MatrixXd GetCovariances(const MatrixXd& distances, const QVKrigeKernelBase& kernel) {
  MatrixXd covariances(distances.rows(), distances.cols());
  kernel.GetCovariances(distances.data(), covariances.data(),
                        static_cast<std::size_t>(distances.size()));
  return covariances;
}

/// \return the point that a query coincides with, or -1.
Index FindIdenticalPoint(const double* distances, Index points) {
  const double* end = distances + points;
  const double* found =
      std::find_if(distances, end, [](double d) { return std::abs(d) < kKrigeIdenticalDistance; });
  return found == end ? -1 : found - distances;
}

}  // namespace

QVKrigeSystem::~QVKrigeSystem() = default;

std::shared_ptr<const QVKrigeSystem> QVKrigeSystem::Create(QVKrigePoints points, QVKrigeMean mean,
                                                           const QVKrigeKernelBase& kernel) {
  const Index n = points.responses.size();
  MatrixXd covariances(n, n);
  QVFillUpperCovariances(covariances, *points.distances, kernel);
  auto cholesky = std::make_shared<CholeskySystem>();
  if (!cholesky->Factorise(std::move(covariances))) return nullptr;

  double baseline = 0.0;
  if (mean == QVKrigeMean::Known) {
    baseline = points.responses.mean();
    points.responses.array() -= baseline;
  }
  std::shared_ptr<QVKrigeSystem> system = cholesky;
  const MatrixXd border = MakeBorder(points.properties, n);
  if (mean == QVKrigeMean::Unknown && !cholesky->SetBorder(border)) {
    cholesky.reset();
    auto bordered = std::make_shared<BorderedSystem>();
    system = bordered;
    if (!bordered->Factorise(border, *points.distances, kernel)) return nullptr;
  }
  if (cholesky) cholesky->SetResponses(points.responses);

  for (Index g = 0; g < n; ++g)
    points.records.points[static_cast<std::size_t>(g)].response = points.responses[g];
  system->mean_ = mean;
  system->numProperties_ = points.properties.cols();
  system->baseline_ = baseline;
  system->sill_ = kernel.GetSill();
  system->nugget_ = kernel.GetNugget();
  system->kernel_.reset(kernel.CreateCopy());
  system->responses_ = std::move(points.responses);
  system->points_ = QVSystem::QVCowPtr<QVKrigeResultPoints>(std::move(points.records));
  return system;
}

MatrixXd QVKrigeSystem::MakeBorderRows(const MatrixXd& properties) const {
  MatrixXd rows(1 + properties.rows(), properties.cols());
  rows.row(0).setOnes();
  rows.bottomRows(properties.rows()) = properties;
  return rows;
}

/// \return -1 for a negative variance, as a failed one.
double QVKrigeSystem::ComputeVariance(double explained) const {
  const double variance = sill_ - explained;
  return variance < 0.0 ? -1.0 : variance;
}

bool QVKrigeSystem::IsValidVariance(double variance) const {
  if (mean_ == QVKrigeMean::Known) return variance >= 0.0;
  return 0.999999 * nugget_ <= variance && variance <= 1.000001 * sill_;
}

std::vector<QVKrigeResult> QVKrigeSystem::GetResults(const MatrixXd& distances,
                                                     const MatrixXd& properties) const {
  const MatrixXd covariances = GetCovariances(distances, *kernel_);
  MatrixXd weights = SolveWeights(covariances, properties);
  std::vector<QVKrigeResult> results(static_cast<std::size_t>(distances.cols()));
  for (Index q = 0; q < distances.cols(); ++q) {
    auto w = weights.col(q);
    const auto d = distances.col(q);
    if (!QV_ASSERT(!d.hasNaN())) continue;
    // At a point the exact solution is known, and rounding must not refuse it.
    const Index identical = FindIdenticalPoint(d.data(), d.size());
    if (identical >= 0) w = VectorXd::Unit(w.size(), identical);
    if (numProperties_ > 0 && w.hasNaN()) {
      QVSystem::QVThrow.Warning("Universal kriging failed, NaN weights");
      continue;
    }
    if (identical < 0 && !IsValidVariance(ComputeVariance(w.dot(covariances.col(q))))) continue;
    results[static_cast<std::size_t>(q)] = QVKrigeResult(std::make_unique<QVKrigeResultImpl>(
        points_, kernel_, baseline_, std::vector<double>(d.data(), d.data() + d.size()),
        std::vector<double>(w.data(), w.data() + w.size())));
  }
  return results;
}

std::vector<QVKrigeEstimate> QVKrigeSystem::GetEstimates(const MatrixXd& distances,
                                                         const MatrixXd& properties,
                                                         double errorValue) const {
  MatrixXd covariances = GetCovariances(distances, *kernel_);
  const Eigen::Matrix2Xd moments = SolveMoments(covariances, properties);
  std::vector<QVKrigeEstimate> estimates(static_cast<std::size_t>(distances.cols()),
                                         {errorValue, errorValue});
  for (Index q = 0; q < distances.cols(); ++q) {
    const auto d = distances.col(q);
    if (!QV_ASSERT(!d.hasNaN())) continue;
    QVKrigeEstimate& estimate = estimates[static_cast<std::size_t>(q)];
    const Index identical = FindIdenticalPoint(d.data(), d.size());
    if (identical >= 0) {
      double covariance = 0.0;
      kernel_->GetCovariances(d.data() + identical, &covariance, 1);
      estimate = {baseline_ + responses_[identical], ComputeVariance(covariance)};
      continue;
    }
    const double variance = ComputeVariance(moments(1, q));
    if (numProperties_ > 0 && std::isnan(variance))
      QVSystem::QVThrow.Warning("Universal kriging failed, NaN weights");
    else if (IsValidVariance(variance))
      estimate = {baseline_ + moments(0, q), variance};
  }
  return estimates;
}

}  // namespace QVStats
