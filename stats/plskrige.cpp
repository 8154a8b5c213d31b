#include "stats/api/plskrige.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/system/error_handler.h"

namespace QVStats {

namespace {

using Eigen::Index;
using Eigen::MatrixXd;
using Eigen::RowVectorXd;
using Eigen::VectorXd;

/// What rounding leaves of something that is zero, relative to what it was made of.
constexpr double kNothing = 1e-12;

/// The components of properties `x` and a response `y`.
struct Decomposition {
  RowVectorXd center;
  RowVectorXd inverseScale;
  double meanResponse;
  MatrixXd rotations;  // r: scores are the centred and scaled properties times these
  VectorXd loadings;   // q
  std::vector<double> explainedResponse;
  std::vector<double> explainedProperties;
};

/// Centres the columns, and divides those that vary by their standard deviation.
void Standardise(MatrixXd& x, bool scale, Decomposition& result) {
  result.center = x.colwise().mean();
  const RowVectorXd magnitude = x.cwiseAbs().colwise().maxCoeff();
  x.rowwise() -= result.center;
  result.inverseScale = RowVectorXd::Ones(x.cols());
  for (Index j = 0; j < x.cols(); ++j) {
    const double deviation = x.col(j).norm() / std::sqrt(static_cast<double>(x.rows() - 1));
    if (deviation <= kNothing * magnitude[j])
      x.col(j).setZero();
    else if (scale)
      result.inverseScale[j] = 1.0 / deviation;
  }
  x.array().rowwise() *= result.inverseScale.array();
}

Decomposition Decompose(MatrixXd x, const VectorXd& response, Index maxComponents, bool scale) {
  Decomposition result;
  result.meanResponse = response.mean();
  Standardise(x, scale, result);
  VectorXd residual = response.array() - result.meanResponse;
  if (residual.norm() <= kNothing * response.norm()) residual.setZero();
  const double allOfX = x.squaredNorm(), allOfY = residual.squaredNorm();
  const double smallestWeight = kNothing * std::sqrt(allOfX * allOfY);
  const Index limit = std::min({maxComponents, x.cols(), x.rows() - 1});
  // Scores and rotations are kept for scores of length 1, which are easy to orthogonalise against.
  MatrixXd scores(x.rows(), limit), rotations(x.cols(), limit);
  std::vector<double> lengths, loadings;
  for (Index size = 0; size < limit; ++size) {
    VectorXd rotation = x.transpose() * residual;
    const double weight = rotation.norm();
    if (!(weight > smallestWeight)) break;
    rotation /= weight;
    VectorXd score = x * rotation;
    const double before = score.norm();
    // Twice makes the scores orthogonal to rounding.
    for (int pass = 0; pass < 2; ++pass) {
      const VectorXd overlap = scores.leftCols(size).transpose() * score;
      score -= scores.leftCols(size) * overlap;
      rotation -= rotations.leftCols(size) * overlap;
    }
    const double length = score.norm();
    if (!(length > kNothing * before)) break;
    scores.col(size) = score / length;
    rotations.col(size) = rotation / length;
    const double loading = scores.col(size).dot(residual);
    residual -= loading * scores.col(size);
    lengths.push_back(length);
    loadings.push_back(loading);
    result.explainedResponse.push_back(loading * loading / allOfY);
    result.explainedProperties.push_back((x.transpose() * scores.col(size)).squaredNorm() / allOfX);
  }
  const auto size = static_cast<Index>(lengths.size());
  const Eigen::Map<const VectorXd> scoreLengths(lengths.data(), size);
  result.rotations = rotations.leftCols(size) * scoreLengths.asDiagonal();
  result.loadings = Eigen::Map<const VectorXd>(loadings.data(), size).cwiseQuotient(scoreLengths);
  return result;
}

/// The root mean square errors of 0 to maxComponents components, each example predicted from those
/// of the other folds. A decomposition that ends early predicts as it does with all it has.
std::vector<double> CrossValidate(const MatrixXd& x, const VectorXd& y,
                                  const QVPLSOptions& options) {
  const Index folds = std::clamp<Index>(options.GetNumFolds(), 2, x.rows());
  const Index most = std::min<Index>({options.GetMaxComponents(), x.cols(), x.rows() - 1});
  VectorXd squares = VectorXd::Zero(most + 1);
  for (Index fold = 0; fold < folds; ++fold) {
    std::vector<Index> kept, left;
    for (Index i = 0; i < x.rows(); ++i) (i % folds == fold ? left : kept).push_back(i);
    const Decomposition fit = Decompose(x(kept, Eigen::all), y(kept), most, options.GetScale());
    const MatrixXd scores =
        ((x(left, Eigen::all).rowwise() - fit.center).array().rowwise() * fit.inverseScale.array())
            .matrix() *
        fit.rotations;
    VectorXd errors = y(left).array() - fit.meanResponse;
    squares[0] += errors.squaredNorm();
    for (Index a = 0; a < most; ++a) {
      if (a < scores.cols()) errors -= fit.loadings[a] * scores.col(a);
      squares[a + 1] += errors.squaredNorm();
    }
  }
  std::vector<double> result;
  for (const double square : squares)
    result.push_back(std::sqrt(square / static_cast<double>(x.rows())));
  return result;
}

template <class Mol>
std::vector<double> ReadProperties(const QVChem::QVMolPropertyList& properties, const Mol& mol) {
  std::vector<double> values(properties.GetSize());
  for (std::size_t k = 0; k < values.size(); ++k) values[k] = properties.GetProperty(mol, k);
  return values;
}

template <class Mol>
bool AddExample(QVPartialLeastSquareRegression& regression,
                const QVChem::QVMolPropertyList& properties, const Mol& mol, double response) {
  return properties.HasProperties(mol) &&
         regression.AddTraining(ReadProperties(properties, mol), response);
}

template <class Mol>
double GetScore(const QVPartialLeastSquareRegression& regression,
                const QVChem::QVMolPropertyList& properties, const Mol& mol, std::size_t k) {
  if (!QV_ASSERT(k < regression.GetNumComponents())) return 0.0;
  return regression.GetScores(ReadProperties(properties, mol))[k];
}

}  // namespace

QVPartialLeastSquareRegression::QVPartialLeastSquareRegression(std::size_t numProperties,
                                                               double errorValue,
                                                               const QVPLSOptions& options)
    : numProperties_(numProperties), errorValue_(errorValue), options_(options) {
  Forget();
}

bool QVPartialLeastSquareRegression::AddTraining(const std::vector<double>& x, double y) {
  if (x.size() != numProperties_) return false;
  inputs_.insert(inputs_.end(), x.begin(), x.end());
  responses_.push_back(y);
  Forget();
  return true;
}

void QVPartialLeastSquareRegression::Forget() {
  trained_ = false;
  rotations_.resize(static_cast<Index>(numProperties_), 0);
  coefficients_.clear();
  explainedResponse_.clear();
  explainedProperties_.clear();
  crossValidatedErrors_.clear();
}

bool QVPartialLeastSquareRegression::Train() {
  Forget();
  const auto n = static_cast<Index>(responses_.size()), p = static_cast<Index>(numProperties_);
  using RowMajor = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;
  const MatrixXd x = Eigen::Map<const RowMajor>(inputs_.data(), n, p);
  const Eigen::Map<const VectorXd> y(responses_.data(), n);
  if (n < 2 || !x.allFinite() || !y.allFinite()) {
    QVSystem::QVThrow.Warning(
        "QVPartialLeastSquareRegression::Train, %s",
        n < 2 ? "fewer than two examples" : "a property or a response is not finite");
    return false;
  }
  Index components = options_.GetNumComponents();
  if (components == 0) {
    crossValidatedErrors_ = CrossValidate(x, y, options_);
    if (crossValidatedErrors_.size() > 1)
      components =
          std::min_element(crossValidatedErrors_.begin() + 1, crossValidatedErrors_.end()) -
          crossValidatedErrors_.begin();
  }
  Decomposition fit = Decompose(x, y, components, options_.GetScale());
  rotations_ = fit.inverseScale.asDiagonal() * fit.rotations;
  center_ = fit.center;
  const VectorXd beta = rotations_ * fit.loadings;
  coefficients_.assign(beta.data(), beta.data() + p);
  coefficients_.push_back(fit.meanResponse - center_.dot(beta));
  explainedResponse_ = std::move(fit.explainedResponse);
  explainedProperties_ = std::move(fit.explainedProperties);
  trained_ = true;
  return true;
}

double QVPartialLeastSquareRegression::Predict(const std::vector<double>& x) {
  if (!trained_ && !Train()) return errorValue_;
  return std::as_const(*this).Predict(x);
}

double QVPartialLeastSquareRegression::Predict(const std::vector<double>& x) const {
  if (!trained_) return QVPartialLeastSquareRegression(*this).Predict(x);
  if (!QV_ASSERT(x.size() == numProperties_)) return errorValue_;
  double prediction = coefficients_.back();
  for (std::size_t k = 0; k < x.size(); ++k) prediction += coefficients_[k] * x[k];
  return prediction;
}

std::vector<double> QVPartialLeastSquareRegression::GetScores(const std::vector<double>& x) const {
  if (!trained_ || !QV_ASSERT(x.size() == numProperties_)) return {};
  const Eigen::Map<const RowVectorXd> row(x.data(), static_cast<Index>(x.size()));
  std::vector<double> scores(GetNumComponents());
  Eigen::Map<RowVectorXd>(scores.data(), rotations_.cols()) = (row - center_) * rotations_;
  return scores;
}

void QVPartialLeastSquareRegression::Clear() {
  inputs_.clear();
  responses_.clear();
  Forget();
}

QVPartialLeastSquareRegression* QVPartialLeastSquareRegression::CreateCopy() const {
  return new QVPartialLeastSquareRegression(*this);
}

QVMolPLSPropertyList::QVMolPLSPropertyList(const QVChem::QVMolPropertyList& properties,
                                           const QVPLSOptions& options)
    : properties_(properties.CreateCopy()), regression_(properties.GetSize(), 0.0, options) {}

bool QVMolPLSPropertyList::AddTraining(const QVChem::QVMolBase& mol, double response) {
  return AddExample(regression_, *properties_, mol, response);
}

bool QVMolPLSPropertyList::AddTraining(const QVChem::QVMCMolBase& mol, double response) {
  return AddExample(regression_, *properties_, mol, response);
}

bool QVMolPLSPropertyList::HasProperties(const QVChem::QVMolBase& mol) const {
  return regression_.IsTrained() && properties_->HasProperties(mol);
}

bool QVMolPLSPropertyList::HasProperties(const QVChem::QVMCMolBase& mol) const {
  return regression_.IsTrained() && properties_->HasProperties(mol);
}

double QVMolPLSPropertyList::GetProperty(const QVChem::QVMolBase& mol, std::size_t k) const {
  return GetScore(regression_, *properties_, mol, k);
}

double QVMolPLSPropertyList::GetProperty(const QVChem::QVMCMolBase& mol, std::size_t k) const {
  return GetScore(regression_, *properties_, mol, k);
}

QVMolPLSPropertyList* QVMolPLSPropertyList::CreateCopy() const {
  return new QVMolPLSPropertyList(*this);
}

}  // namespace QVStats
