#include "stats/api/svd_data_model.h"

#include <Eigen/SVD>
#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>

#include "platform/system/error_handler.h"

namespace QVStats {

namespace {

// The kriging engine's drift model: a wrong vector is reported as a fault of the engine.
constexpr const char* kSource = "stats/krige_model_impl";

using Eigen::MatrixXd;
using Eigen::VectorXd;
using ThinSVD = Eigen::JacobiSVD<MatrixXd, Eigen::ColPivHouseholderQRPreconditioner>;

/// left - right x, each entry summed in extended precision.
template <class Matrix>
VectorXd SubtractProduct(const VectorXd& left, const Matrix& right, const VectorXd& x) {
  VectorXd difference(left.size());
  for (Eigen::Index i = 0; i < left.size(); ++i) {
    long double sum = left[i];
    for (Eigen::Index k = 0; k < x.size(); ++k) sum -= static_cast<long double>(right(i, k)) * x[k];
    difference[i] = static_cast<double>(sum);
  }
  return difference;
}

/// The least-squares solution of A x = b from the decomposition U S V^T of A. It solves
/// r + A x = b, A^T r = 0 and is refined in x and r at once, since with a large r the errors of x
/// grow with the square of the condition of A; two steps make it right to rounding.
/// Source: A. Bjorck, "Iterative refinement of linear least squares solutions I", BIT 7, 1967, 257.
VectorXd SolveLeastSquares(const ThinSVD& svd, const MatrixXd& design, const VectorXd& response) {
  const Eigen::Index rank = svd.rank();
  const auto u = svd.matrixU().leftCols(rank);
  const auto v = svd.matrixV().leftCols(rank);
  const auto s = svd.singularValues().head(rank).array();
  VectorXd solution = svd.solve(response);
  VectorXd residual = response - design * solution;
  for (int step = 0; step < 2; ++step) {
    const VectorXd f = SubtractProduct(response - residual, design, solution);
    const VectorXd g = SubtractProduct(VectorXd::Zero(design.cols()), design.transpose(), residual);
    const VectorXd inner = ((u.transpose() * f).array() - (v.transpose() * g).array() / s).matrix();
    solution += v * (inner.array() / s).matrix();
    residual += f - u * inner;
  }
  return solution;
}

/// Powers and mixed units make columns of very different lengths, which hide the rank of a design
/// from its singular values. Columns of length 1 show it, and where it is full the solution is the
/// same; where it is not, the shortest solution is that of the columns as they are.
VectorXd SolveLeastSquares(const MatrixXd& design, const VectorXd& response) {
  constexpr unsigned kThin = Eigen::ComputeThinU | Eigen::ComputeThinV;
  const auto norms = design.colwise().stableNorm();
  const Eigen::RowVectorXd scale = norms.unaryExpr([](double norm) {
    constexpr int kLargestExponent = 1000;  // that of a subnormal length would overflow
    return norm > 0.0 ? std::exp2(std::min(-std::ilogb(norm), kLargestExponent)) : 1.0;  // exact
  });
  const MatrixXd scaled = design * scale.asDiagonal();
  if (const ThinSVD svd(scaled, kThin); svd.rank() == design.cols())
    return scale.transpose().cwiseProduct(SolveLeastSquares(svd, scaled, response));
  return SolveLeastSquares(ThinSVD(design, kThin), design, response);
}

}  // namespace

bool QVVecPropertyListFxn::HasProperties(const std::vector<double>& element) const {
  return element.size() == size_;
}

double QVVecPropertyListFxn::GetProperty(const std::vector<double>& element, std::size_t k) const {
  return QV_ASSERT(k < element.size()) ? element[k] : 0.0;
}

QVVecPropertyListFxn* QVVecPropertyListFxn::CreateCopy() const {
  return new QVVecPropertyListFxn(*this);
}

QVSVD<std::vector<double>>::QVSVD(std::size_t numProperties, double errorValue)
    : properties_(numProperties), errorValue_(errorValue) {}

bool QVSVD<std::vector<double>>::AddTraining(const std::vector<double>& x, double y) {
  if (!properties_.HasProperties(x)) return false;
  inputs_.push_back(x);
  responses_.push_back(y);
  trained_ = false;
  coefficients_.clear();
  return true;
}

bool QVSVD<std::vector<double>>::Train() {
  trained_ = false;
  coefficients_.clear();
  if (inputs_.empty()) return false;
  const auto rows = static_cast<Eigen::Index>(inputs_.size());
  const auto size = static_cast<Eigen::Index>(properties_.GetSize());
  MatrixXd design(rows, size + 1);
  for (Eigen::Index i = 0; i < rows; ++i)
    design.row(i).head(size) =
        Eigen::Map<const Eigen::RowVectorXd>(inputs_[static_cast<std::size_t>(i)].data(), size);
  design.col(size).setOnes();
  const Eigen::Map<const VectorXd> response(responses_.data(), rows);
  if (!design.allFinite() || !response.allFinite()) return false;
  const VectorXd solution = SolveLeastSquares(design, response);
  if (!solution.allFinite()) return false;
  coefficients_.assign(solution.data(), solution.data() + solution.size());
  trained_ = true;
  return true;
}

double QVSVD<std::vector<double>>::Predict(const std::vector<double>& x) {
  if (!trained_ && !Train()) return errorValue_;
  return std::as_const(*this).Predict(x);
}

double QVSVD<std::vector<double>>::Predict(const std::vector<double>& x) const {
  if (!trained_) return std::unique_ptr<QVSVD>(CreateCopy())->Predict(x);
  if (!properties_.HasProperties(x)) {
    QVSystem::QVReportFailedAssertion(__LINE__, kSource);
    return errorValue_;
  }
  double prediction = coefficients_.back();
  for (std::size_t k = 0; k < x.size(); ++k) prediction += coefficients_[k] * x[k];
  return prediction;
}

void QVSVD<std::vector<double>>::Clear() {
  trained_ = false;
  inputs_.clear();
  responses_.clear();
  coefficients_.clear();
}

QVSVD<std::vector<double>>* QVSVD<std::vector<double>>::CreateCopy() const {
  return new QVSVD(*this);
}

}  // namespace QVStats
