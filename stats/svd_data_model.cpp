#include "stats/api/svd_data_model.h"

#include <Eigen/SVD>
#include <memory>
#include <utility>

#include "platform/system/error_handler.h"

namespace QVStats {

namespace {

// The kriging engine's drift model: a wrong vector is reported as a fault of the engine.
constexpr const char* kSource = "stats/krige_model_impl";

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
  Eigen::MatrixXd design(rows, size + 1);
  for (Eigen::Index i = 0; i < rows; ++i)
    design.row(i).head(size) =
        Eigen::Map<const Eigen::RowVectorXd>(inputs_[static_cast<std::size_t>(i)].data(), size);
  design.col(size).setOnes();
  const Eigen::Map<const Eigen::VectorXd> response(responses_.data(), rows);
  if (!design.allFinite() || !response.allFinite()) return false;
  const Eigen::JacobiSVD<Eigen::MatrixXd, Eigen::ColPivHouseholderQRPreconditioner> svd(
      design, Eigen::ComputeThinU | Eigen::ComputeThinV);
  const Eigen::VectorXd solution = svd.solve(response);
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
