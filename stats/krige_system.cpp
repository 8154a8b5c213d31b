#include "stats/api/private/krige_system.h"

#include <Eigen/Cholesky>
#include <algorithm>
#include <cmath>
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

void QVFillLowerCovariances(MatrixXd& matrix, const QVKrigeDistances& distances,
                            const QVKrigeKernelBase& kernel) {
  // Rows are computed a strip at a time and written by columns: a strip is a cache line.
  constexpr std::size_t kStrip = 8;
  const std::size_t n = distances.GetNumPoints();
  const auto stride = static_cast<std::size_t>(matrix.outerStride());
  const double zero = 0.0;
  double diagonal = 0.0;
  kernel.GetCovariances(&zero, &diagonal, 1);
  std::vector<double> rows(kStrip * n);
  for (std::size_t first = 0; first < n; first += kStrip) {
    const std::size_t count = std::min(kStrip, n - first);
    for (std::size_t r = 0; r < count; ++r) {
      const std::size_t g = first + r;
      double* row = rows.data() + r * n;
      if (g > 0) kernel.GetCovariances(distances.GetRow(g), row, g);
      row[g] = diagonal;
    }
    double* to = matrix.data() + first;
    const std::size_t whole = count == kStrip ? first : 0;
    for (std::size_t column = 0; column < whole; ++column)
      for (std::size_t r = 0; r < kStrip; ++r) to[column * stride + r] = rows[r * n + column];
    for (std::size_t column = whole; column < first + count; ++column)
      for (std::size_t r = column < first ? 0 : column - first; r < count; ++r)
        to[column * stride + r] = rows[r * n + column];
  }
}

bool QVHasCompleteCovariances(const MatrixXd& matrix, std::size_t points) {
  for (Index column = 0; column < static_cast<Index>(points); ++column)
    if (matrix.col(column).segment(column, static_cast<Index>(points) - column).hasNaN())
      return QVSystem::QVReportFailedAssertion("a covariance is not a number", __LINE__, __FILE__);
  return true;
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
  void SolveWeights(const MatrixXd& borderRows, MatrixXd& c) const override {
    constexpr auto kTogether = static_cast<Index>(QVMath::kDenseFewRightSides);
    for (Index first = 0; first < c.cols(); first += kTogether) {
      auto block = c.middleCols(first, std::min(kTogether, c.cols() - first));
      SolveForward(block);
      for (Index q = 0; q < block.cols() && half_.cols() > 0; ++q) {
        double* z = block.col(q).data();
        const VectorXd lambda = schur_.solve(ProjectOnBorder(z) - borderRows.col(first + q));
        kernels_.multiplyVector(Count(block.rows()), Count(half_.cols()), -1.0, half_.data(),
                                Count(half_.rows()), lambda.data(), z);
      }
      SolveBackward(block);
    }
  }

  Eigen::Matrix2Xd SolveMoments(const MatrixXd& borderRows, MatrixXd& c) const override {
    const Index queries = c.cols();
    Eigen::Matrix2Xd moments(2, queries);
    for (Index q = 0; q < queries; ++q) moments(0, q) = Dot(alpha_.data(), c.col(q).data());
    // A few right sides are solved by other arithmetic than many. With some columns of zeros a
    // single query gets the bits that it has in a block.
    c.conservativeResize(Eigen::NoChange, std::max(queries, kManyRightSides));
    c.rightCols(c.cols() - queries).setZero();
    SolveForward(c);
    for (Index q = 0; q < queries; ++q) {
      const double* z = c.col(q).data();
      moments(1, q) = Dot(z, z);
      if (half_.cols() == 0) continue;
      const VectorXd projection = ProjectOnBorder(z);
      moments(0, q) += beta_.dot(borderRows.col(q));
      moments(1, q) -= projection.dot(schur_.solve(projection - borderRows.col(q)));
    }
    return moments;
  }

 private:
  /// Pivots of the Schur complement, scaled to a unit diagonal, below this leave the small system
  /// with fewer than half of its digits.
  static constexpr double kSafePivot = 1e-8;
  static constexpr Index kManyRightSides = QVMath::kDenseFewRightSides + 1;

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
  void SolveWeights(const MatrixXd& borderRows, MatrixXd& c) const override {
    VectorXd right(c.rows() + borderRows.rows());
    for (Index q = 0; q < c.cols(); ++q) {
      right << c.col(q), borderRows.col(q);
      c.col(q) = factor_.solve(right).head(c.rows());
    }
  }

  Eigen::Matrix2Xd SolveMoments(const MatrixXd& borderRows, MatrixXd& c) const override {
    MatrixXd weights = c;
    SolveWeights(borderRows, weights);
    Eigen::Matrix2Xd moments(2, c.cols());
    for (Index q = 0; q < c.cols(); ++q) {
      const VectorXd w = weights.col(q);
      moments(0, q) = w.dot(GetResponses());
      moments(1, q) = w.dot(VectorXd(c.col(q)));
    }
    return moments;
  }

 private:
  Eigen::LDLT<MatrixXd> factor_;
};

/// n x m covariances of m queries, column by column: the bits of one do not depend on the others.
MatrixXd GetCovariances(const MatrixXd& distances, const QVKrigeKernelBase& kernel) {
  MatrixXd covariances(distances.rows(), distances.cols());
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
  MatrixXd covariances(n, n);
  QVFillLowerCovariances(covariances, *points.distances, kernel);
  auto cholesky = std::make_shared<CholeskySystem>();
  if (!cholesky->Factorise(std::move(covariances))) {
    // Covariances that are not numbers never factorise: a fault of the kernel, not of the points.
    covariances = MatrixXd(n, n);
    QVFillLowerCovariances(covariances, *points.distances, kernel);
    QVHasCompleteCovariances(covariances, Count(n));
    return nullptr;
  }

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

std::vector<QVKrigeResult> QVKrigeSystem::GetResults(const MatrixXd& distances,
                                                     const MatrixXd& properties) const {
  const MatrixXd covariances = GetCovariances(distances, *kernel_);
  MatrixXd weights = covariances;
  SolveWeights(MakeBorderRows(properties), weights);
  std::vector<QVKrigeResult> results(Count(distances.cols()));
  for (Index q = 0; q < distances.cols(); ++q) {
    const auto d = distances.col(q);
    if (!QV_ASSERT(!d.hasNaN())) continue;
    // At a point the exact solution is known, and rounding must not refuse it.
    const Index identical = FindIdenticalPoint(d.data(), d.size());
    VectorXd w = weights.col(q);
    if (identical >= 0) w = VectorXd::Unit(w.size(), identical);
    if (numProperties_ > 0 && w.hasNaN()) {
      QVSystem::QVThrow.Warning("Universal kriging failed, NaN weights");
      continue;
    }
    if (identical < 0 && !IsValidVariance(ComputeVariance(w.dot(covariances.col(q))))) continue;
    results[Count(q)] = QVKrigeResult(std::make_unique<QVKrigeResultImpl>(
        points_, kernel_, baseline_, std::vector<double>(d.data(), d.data() + d.size()),
        std::vector<double>(w.data(), w.data() + w.size())));
  }
  return results;
}

std::vector<QVKrigeEstimate> QVKrigeSystem::GetEstimates(const MatrixXd& distances,
                                                         const MatrixXd& properties,
                                                         double errorValue) const {
  MatrixXd covariances = GetCovariances(distances, *kernel_);
  const Eigen::Matrix2Xd moments = SolveMoments(MakeBorderRows(properties), covariances);
  std::vector<QVKrigeEstimate> estimates(Count(distances.cols()), {errorValue, errorValue});
  for (Index q = 0; q < distances.cols(); ++q) {
    const auto d = distances.col(q);
    if (!QV_ASSERT(!d.hasNaN())) continue;
    QVKrigeEstimate& estimate = estimates[Count(q)];
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
