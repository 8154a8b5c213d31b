#include "stats/api/private/krige_system.h"

#include <Eigen/Cholesky>
#include <algorithm>
#include <cmath>
#include <mutex>
#include <string>
#include <utility>

#include "platform/math/dense_kernels.h"
#include "platform/system/error_handler.h"
#include "platform/system/memory.h"

namespace QVStats {

using Eigen::Index;
using Eigen::MatrixXd;
using Eigen::VectorXd;

bool QVKrigeDistances::AddPoint(const double* distances) {
  if (packed_.capacity() < packed_.size() + size_ && !Grow()) return false;
  packed_.insert(packed_.end(), distances, distances + size_);
  ++size_;
  return true;
}

bool QVKrigeDistances::Grow() {
  // A quarter of slack rather than a doubling: the triangle is a large part of a model's memory.
  const std::size_t room = packed_.size() + packed_.size() / 4 + size_;
  return QVSystem::QVRunWithinMemory(
      "The table of distances between " + std::to_string(size_ + 1) + " training elements",
      static_cast<double>(room * sizeof(double)), [&] {
        packed_.reserve(room);
        return true;
      });
}

void QVKrigeDistances::Reserve(std::size_t points) {
  if (points > 1) packed_.reserve(points * (points - 1) / 2);
}

bool QVKrigeDistances::HaveIdenticalPoints() const {
  // Counted without a branch, several at a time.
  std::size_t count = 0;
  for (const double d : packed_) count += std::abs(d) < kKrigeIdenticalDistance;
  return count > 0;
}

bool QVFillLowerCovariances(MatrixXd& matrix, const QVKrigeDistances& distances,
                            const QVKrigeKernelBase& kernel) {
  // Rows are computed a strip at a time, as they stand in the packed triangle, and written by
  // columns: the rows of a strip are a cache line.
  constexpr std::size_t kStrip = 8;
  const std::size_t n = distances.GetNumPoints();
  const auto stride = static_cast<std::size_t>(matrix.outerStride());
  const double zero = 0.0;
  double diagonal = 0.0;
  kernel.GetCovariances(&zero, &diagonal, 1);
  bool complete = !std::isnan(diagonal);
  std::vector<double> strip(kStrip * n);
  for (std::size_t first = 0; first < n; first += kStrip) {
    const std::size_t count = std::min(kStrip, n - first);
    const double* rows[kStrip];
    std::size_t size = 0;
    for (std::size_t r = 0; r < count; size += first + r++) rows[r] = strip.data() + size;
    if (size > 0) kernel.GetCovariances(distances.GetRow(first), strip.data(), size);
    std::size_t missing = 0;
    for (std::size_t i = 0; i < size; ++i) missing += std::isnan(strip[i]);
    complete = complete && missing == 0;

    double* to = matrix.data() + first;
    const std::size_t whole = count == kStrip ? first : 0;
    for (std::size_t column = 0; column < whole; ++column)
      for (std::size_t r = 0; r < kStrip; ++r) to[column * stride + r] = rows[r][column];
    for (std::size_t r = 0; r < count; ++r) {
      for (std::size_t column = whole; column < first + r; ++column)
        to[column * stride + r] = rows[r][column];
      to[(first + r) * stride + r] = diagonal;
    }
  }
  return complete ||
         QVSystem::QVReportFailedAssertion("a covariance is not a number", __LINE__, __FILE__);
}

namespace {

/// [1, properties], n x b.
MatrixXd MakeBorder(const MatrixXd& properties, Index points) {
  MatrixXd border(points, 1 + properties.cols());
  border.col(0).setOnes();
  border.rightCols(properties.cols()) = properties;
  return border;
}

std::size_t Count(Index n) { return static_cast<std::size_t>(n); }

/// A matrix, not yet filled, that is read by rows and by columns.
MatrixXd MakeLargeMatrix(Index rows, Index columns) {
  MatrixXd matrix(rows, columns);
  QVSystem::QVPreferLargePages(matrix.data(), Count(matrix.size()) * sizeof(double));
  return matrix;
}

/// K = L L' with one factor, and the border through its Schur complement.
class CholeskySystem : public QVKrigeSystem {
 public:
  /// Whether the covariances in the lower triangle of `matrix`, which becomes the factor, are
  /// positive definite.
  bool Factorise(MatrixXd matrix) {
    factor_ = std::move(matrix);
    return kernels_.cholesky(Count(factor_.rows()), factor_.data(), Count(factor_.rows()));
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
  Eigen::Matrix2Xd SolveMoments(const MatrixXd& borderRows, MatrixXd& c) const override {
    Eigen::Matrix2Xd moments(2, borderRows.cols());
    for (Index q = 0; q < moments.cols(); ++q) moments(0, q) = Dot(alpha_.data(), c.col(q).data());
    SolveForward(c);
    for (Index q = 0; q < moments.cols(); ++q) {
      double* z = c.col(q).data();
      moments(1, q) = Dot(z, z);
      if (half_.cols() == 0) continue;
      const VectorXd projection = ProjectOnBorder(z);
      const VectorXd lambda = schur_.solve(projection - borderRows.col(q));
      moments(0, q) += beta_.dot(borderRows.col(q));
      moments(1, q) -= projection.dot(lambda);
      kernels_.multiplyVector(Count(half_.rows()), Count(half_.cols()), -1.0, half_.data(),
                              Count(half_.rows()), lambda.data(), z);
    }
    return moments;
  }

  void FinishWeights(MatrixXd& c) const override { SolveBackward(c); }

 private:
  /// Pivots of the Schur complement, scaled to a unit diagonal, below this leave the small system
  /// with fewer than half of its digits.
  static constexpr double kSafePivot = 1e-8;

  double Dot(const double* x, const double* y) const {
    return kernels_.dot(Count(factor_.rows()), x, y);
  }
  /// G'z.
  VectorXd ProjectOnBorder(const double* z) const {
    VectorXd projection = VectorXd::Zero(half_.cols());
    kernels_.multiplyTransposed(Count(half_.rows()), Count(half_.cols()), 1.0, half_.data(),
                                Count(half_.rows()), z, projection.data());
    return projection;
  }
  /// Columns of B become L^-1 B.
  template <class Matrix>
  void SolveForward(Matrix& b) const {
    const std::size_t n = Count(factor_.rows());
    kernels_.solveLower(n, factor_.data(), n, Count(b.cols()), b.data(), n);
  }
  /// Columns of B become L'^-1 B.
  template <class Matrix>
  void SolveBackward(Matrix& b) const {
    const std::size_t n = Count(factor_.rows());
    kernels_.solveLowerTransposed(n, factor_.data(), n, Count(b.cols()), b.data(), n);
  }

  const QVMath::QVDenseKernels& kernels_ = QVMath::QVGetDenseKernels();
  MatrixXd factor_;  // L in the lower triangle; nothing above it
  MatrixXd half_;    // G = L^-1 F
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
    QVFillLowerCovariances(matrix, distances, kernel);
    matrix.bottomLeftCorner(b, n) = border.transpose();
    matrix.bottomRightCorner(b, b).setZero();
    factor_.compute(matrix.selfadjointView<Eigen::Lower>());
    return factor_.info() == Eigen::Success;
  }

 protected:
  /// Comes by the moments from the weights.
  Eigen::Matrix2Xd SolveMoments(const MatrixXd& borderRows, MatrixXd& c) const override {
    Eigen::Matrix2Xd moments(2, borderRows.cols());
    VectorXd right(c.rows() + borderRows.rows());
    for (Index q = 0; q < moments.cols(); ++q) {
      right << c.col(q), borderRows.col(q);
      const VectorXd weights = factor_.solve(right).head(c.rows());
      moments.col(q) << weights.dot(GetResponses()), weights.dot(c.col(q));
      c.col(q) = weights;
    }
    return moments;
  }

  void FinishWeights(MatrixXd&) const override {}

 private:
  Eigen::LDLT<MatrixXd> factor_;
};

/// The covariances of queries, column by column, as the bits of one do not depend on the others.
MatrixXd GetCovariances(const MatrixXd& distances, const QVKrigeKernelBase& kernel) {
  MatrixXd covariances = MakeLargeMatrix(distances.rows(), distances.cols());
  for (Index q = 0; q < distances.cols(); ++q)
    kernel.GetCovariances(distances.col(q).data(), covariances.col(q).data(),
                          Count(distances.rows()));
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
  MatrixXd covariances = MakeLargeMatrix(n, n);
  if (!QVFillLowerCovariances(covariances, *points.distances, kernel)) return nullptr;
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

  for (Index g = 0; g < n; ++g) points.records.points[Count(g)].response = points.responses[g];
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
  if (mean_ == QVKrigeMean::Known) return MatrixXd(0, properties.cols());
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

std::optional<QVKrigeEstimate> QVKrigeSystem::Judge(const double* distances, Index identical,
                                                    const Eigen::Vector2d& moments) const {
  if (!QV_ASSERT(!VectorXd::Map(distances, responses_.size()).hasNaN())) return std::nullopt;
  if (identical >= 0) {
    // At a point the exact solution is known, and rounding must not refuse it.
    double covariance = 0.0;
    kernel_->GetCovariances(distances + identical, &covariance, 1);
    return QVKrigeEstimate{baseline_ + responses_[identical], ComputeVariance(covariance)};
  }
  const QVKrigeEstimate estimate{baseline_ + moments[0], ComputeVariance(moments[1])};
  if (numProperties_ > 0 && std::isnan(estimate.variance))
    QVSystem::QVThrow.Warning("Universal kriging failed, NaN weights");
  else if (IsValidVariance(estimate.variance))
    return estimate;
  return std::nullopt;
}

/// The weights of queries that were solved together, shared by their results.
class QVKrigeSystem::WeightsOnDemand : public QVKrigeWeights {
 public:
  /// \param columns what SolveMoments left.
  /// \param identical the point that each query coincides with, or -1.
  WeightsOnDemand(std::shared_ptr<const QVKrigeSystem> system, MatrixXd columns,
                  std::vector<Index> identical)
      : system_(std::move(system)),
        columns_(std::move(columns)),
        identical_(std::move(identical)) {}

  const double* Get(std::size_t query) const override {
    std::call_once(solved_, [this] {
      system_->FinishWeights(columns_);
      for (std::size_t q = 0; q < identical_.size(); ++q)
        if (identical_[q] >= 0)
          columns_.col(static_cast<Index>(q)) = VectorXd::Unit(columns_.rows(), identical_[q]);
      system_.reset();
    });
    return columns_.col(static_cast<Index>(query)).data();
  }

 private:
  mutable std::once_flag solved_;
  mutable std::shared_ptr<const QVKrigeSystem> system_;
  mutable MatrixXd columns_;
  const std::vector<Index> identical_;
};

std::vector<QVKrigeResult> QVKrigeSystem::GetResults(const MatrixXd& distances,
                                                     const MatrixXd& properties) const {
  MatrixXd columns = GetCovariances(distances, *kernel_);
  const Eigen::RowVectorXd least = columns.colwise().minCoeff();
  const Eigen::Matrix2Xd moments = SolveMoments(MakeBorderRows(properties), columns);
  std::vector<Index> identical;
  for (Index q = 0; q < distances.cols(); ++q)
    identical.push_back(FindIdenticalPoint(distances.col(q).data(), distances.rows()));
  const auto weights =
      std::make_shared<const WeightsOnDemand>(shared_from_this(), std::move(columns), identical);
  std::vector<QVKrigeResult> results(identical.size());
  for (Index q = 0; q < distances.cols(); ++q) {
    const double* d = distances.col(q).data();
    std::optional<QVKrigeEstimate> estimate = Judge(d, identical[Count(q)], moments.col(q));
    if (!estimate) continue;
    // Covariances and variances below 0 are for whoever asks for the variance to report.
    if (!(least[q] >= 0.0) || estimate->variance < 0.0) estimate.reset();
    results[Count(q)] = QVKrigeResult(std::make_unique<QVKrigeResultImpl>(
        points_, kernel_, baseline_, std::vector<double>(d, d + distances.rows()), weights,
        Count(q), estimate));
  }
  return results;
}

std::vector<QVKrigeEstimate> QVKrigeSystem::GetEstimates(const MatrixXd& distances,
                                                         const MatrixXd& properties,
                                                         double errorValue) const {
  MatrixXd columns = GetCovariances(distances, *kernel_);
  const Eigen::Matrix2Xd moments = SolveMoments(MakeBorderRows(properties), columns);
  std::vector<QVKrigeEstimate> estimates;
  estimates.reserve(Count(distances.cols()));
  for (Index q = 0; q < distances.cols(); ++q) {
    const double* d = distances.col(q).data();
    estimates.push_back(Judge(d, FindIdenticalPoint(d, distances.rows()), moments.col(q))
                            .value_or(QVKrigeEstimate{errorValue, errorValue}));
  }
  return estimates;
}

}  // namespace QVStats
