#include <Eigen/Cholesky>
#include <cmath>
#include <limits>

#include "stats/api/linear_smoother_impl.h"
#include "stats/api/stats_data_types.h"
#include "stats/failure.h"
#include "stats/linear_smoother_algebra.h"

namespace QVStats {

namespace {

namespace Failure = QVStatModelFailureType;
using QVStatsBadData::BadDouble;

/// Both models report their constructor and the centre of a prediction under the simple one's name.
const char* const kConstructor = "Constructor for QVKrigeOnSimilarity";
const char* const kCentredPrediction = "QVKrigeOnSimilarity::GetPredictedCenteredResponse";

}  // namespace

// ----- what the models share

QVKrigeOnSimilarityBase::QVKrigeOnSimilarityBase(unsigned int type, const Names& names,
                                                 unsigned int kernelType,
                                                 const std::string& responseColName,
                                                 const std::string& similarityColName,
                                                 const QVDataTable& table)
    : QVLinearSmootherOnSimilarityBase(responseColName, similarityColName, table),
      type_(type),
      names_(names) {
  SetKernel(kernelType, kConstructor, {"nugget", "sill"});
}

QVStatModelResult QVKrigeOnSimilarityBase::SetModelParams(const std::vector<double>& params) {
  if (params.size() != 3)
    return QVFailure(Failure::WrongInputVectorSize, names_.setModelParams)
           << "size input params = " << params.size() << " size required = " << 3;
  const double nugget = params[1];
  if (nugget > params[2])
    return QVFailure(Failure::ArgumentOutOfRange, names_.setModelParams)
           << "nugget (" << nugget << "); greater than sill (" << params[2] << ")";
  params_ = params;
  Eigen::MatrixXd covariance;
  QVStatModelResult result = FillCovariance(covariance);
  if (result.IsSuccessful() && !Factorise(covariance))
    result = QVFailure(Failure::SingularScaleOrCovariance, names_.decomposition)
             << "eigen ldlt.info() reports a numerical issue";
  if (result.IsSuccessful()) result = ReadResponses(responses_, names_.transformedResponse);
  if (QVFailedIn(result, names_.setModelParams)) {
    params_.clear();
    return result;
  }
  SetResponses(responses_);
  return true;
}

QVStatModelResult QVKrigeOnSimilarityBase::FillCovariance(Eigen::MatrixXd& covariance) const {
  QVStatModelResult result = FillKernelMatrix(covariance, GetPartialSill(), names_.decomposition);
  if (result.IsSuccessful()) covariance.diagonal().array() += params_[1];
  return result;
}

QVStatModelResult QVKrigeOnSimilarityBase::GetPredictedResponse(
    double& predicted, double& averageWeight, double& estimatedError,
    const QVDataTableCol& similarities) const {
  predicted = averageWeight = estimatedError = BadDouble;
  QVStatModelResult result = CheckQuery(similarities, names_.getPredictedResponse);
  if (result.NotSuccessful()) return result;
  return PredictOne(predicted, averageWeight, estimatedError, similarities);
}

QVStatModelResult QVKrigeOnSimilarityBase::GetPredictedResponses(
    QVSimilarityPredictions& predictions, const Eigen::MatrixXd& similarities) const {
  predictions = {};
  Eigen::MatrixXd covariances;
  QVSimilarityPredictions all;
  QVStatModelResult result = GetCovariances(covariances, all.averageWeights, similarities);
  if (result.NotSuccessful()) return result;
  Predict(all, covariances);
  predictions = std::move(all);
  return true;
}

QVStatModelResult QVKrigeOnSimilarityBase::GetCovariances(
    Eigen::MatrixXd& covariances, std::vector<double>& averageWeights,
    const Eigen::MatrixXd& similarities) const {
  static const SimilarityRange range = {1.0 + 10.0 * std::numeric_limits<double>::epsilon(),
                                        Failure::MissingOrBadPredictorValue, "at row (",
                                        ") similarity value = "};
  const char* where = names_.getPredictedResponse;
  QVStatModelResult result = CheckParams(where);
  if (result.NotSuccessful()) return result;
  covariances.resize(similarities.rows(), similarities.cols());
  // Object by object, so that a column stays in the cache.
  for (Eigen::Index object = 0; object < similarities.cols(); ++object) {
    const double* s = similarities.col(object).data();
    result = CheckSimilarities(range, kCentredPrediction, s);
    if (QVFailedIn(result, where)) return result;
    auto column = covariances.col(object);
    kernel_.GetValues(s, static_cast<std::size_t>(similarities.rows()), params_[0], column.data());
    averageWeights.push_back(QVMean(column.data(), column.size()));
    column *= GetPartialSill();
  }
  return true;
}

QVStatModelResult QVKrigeOnSimilarityBase::CheckLeaveOneOut(const char* where) const {
  if (!ModelIsValid()) return QVFailure(Failure::ObjectNotValid, where) << GetResultOfConstructor();
  if (responses_.size() < 2) return QVFailure(Failure::NoData, where);
  return true;
}

// ----- simple kriging

QVKrigeOnSimilarity::QVKrigeOnSimilarity(unsigned int kernelType,
                                         const std::string& responseColName,
                                         const std::string& similarityColName,
                                         const QVDataTable& table)
    : QVKrigeOnSimilarityBase(QVLinearSmootherOnSimilarityType::Krige,
                              {"QVKrigeOnSimilarity::SetModelParams",
                               "QVKrigeOnSimilarity::GetTrainingSetLLTDecomposition",
                               "QVKrigeOnSimilarity::GetTrainingSetTransformedResponse",
                               "QVKrigeOnSimilarity::GetPredictedResponse"},
                              kernelType, responseColName, similarityColName, table) {}

bool QVKrigeOnSimilarity::Factorise(Eigen::MatrixXd& covariance) {
  if (!QVFactoriseInPlace(covariance)) return false;
  factor_.swap(covariance);
  return true;
}

void QVKrigeOnSimilarity::SetResponses(const Eigen::VectorXd& responses) {
  meanResponse_ = QVSolveSimpleKriging(weights_, factor_, responses);
}

void QVKrigeOnSimilarity::Predict(QVSimilarityPredictions& predictions,
                                  Eigen::MatrixXd& covariances) const {
  QVPredictBySimpleKriging(predictions, covariances, factor_, weights_, meanResponse_, GetSill());
}

QVStatModelResult QVKrigeOnSimilarity::GetLeaveOneOutPredictions(
    QVSimilarityPredictions& predictions) const {
  predictions = {};
  QVStatModelResult result = CheckLeaveOneOut("QVKrigeOnSimilarity::GetLeaveOneOutPredictions");
  if (result.NotSuccessful()) return result;
  Eigen::MatrixXd whitening = Eigen::MatrixXd::Identity(responses_.size(), responses_.size());
  QVSolveLower(factor_, whitening);
  QVLeaveOneOutAroundMean(predictions, whitening, responses_);
  predictions.averageWeights = GetAverageWeightsOfOthers();
  return true;
}

// ----- ordinary kriging

QVOrdinaryKrigeOnSimilarity::QVOrdinaryKrigeOnSimilarity(unsigned int kernelType,
                                                         const std::string& responseColName,
                                                         const std::string& similarityColName,
                                                         const QVDataTable& table)
    : QVKrigeOnSimilarityBase(QVLinearSmootherOnSimilarityType::OrdinaryKrige,
                              {"QVOrdinaryKrigeOnSimilarity::SetModelParams",
                               "QVOrdinaryKrigeOnSimilarity::GetTrainingSetLDLTDecomposition",
                               "QVOrdinaryKrigeOnSimilarity::GetTrainingSetTransformedResponse",
                               "QVOrdinaryKrigeOnSimilarity::GetPredictedResponse"},
                              kernelType, responseColName, similarityColName, table) {
  objectsTogether_ = 128;
}

bool QVOrdinaryKrigeOnSimilarity::Factorise(Eigen::MatrixXd& covariance) {
  const Eigen::Index n = covariance.rows();
  inverse_.resize(0, 0);
  // A positive definite C leaves A regular, since 1' C^-1 1 > 0: its factor solves both systems.
  if (n > 0 && QVFactoriseInPlace(covariance)) {
    factor_.swap(covariance);
    whitenedOnes_ = Eigen::VectorXd::Ones(n);
    QVSolveLower(factor_, whitenedOnes_);
    onesNorm_ = whitenedOnes_.squaredNorm();
    return true;
  }
  factor_.resize(0, 0);
  FillCovariance(covariance);  // again: the attempt has overwritten it
  Eigen::MatrixXd bordered = Eigen::MatrixXd::Zero(n + 1, n + 1);
  bordered.topLeftCorner(n, n).triangularView<Eigen::Lower>() = covariance;
  bordered.row(n).head(n).setOnes();
  const Eigen::LDLT<Eigen::MatrixXd, Eigen::Lower> ldlt(bordered);
  if (ldlt.info() != Eigen::Success) return false;
  inverse_ = ldlt.solve(Eigen::MatrixXd::Identity(n + 1, n + 1));
  return true;
}

void QVOrdinaryKrigeOnSimilarity::SetResponses(const Eigen::VectorXd& responses) {
  const Eigen::Index n = responses.size();
  weights_.resize(n + 1);
  if (factor_.rows() == 0) {
    weights_ = inverse_.leftCols(n) * responses;
    return;
  }
  Eigen::VectorXd solution = responses;
  QVSolveLower(factor_, solution);
  // The generalised least-squares mean: the last equation of the system, solved first.
  const double mean = whitenedOnes_.dot(solution) / onesNorm_;
  solution -= mean * whitenedOnes_;
  QVSolveLowerTransposed(factor_, solution);
  weights_.head(n) = solution;
  weights_[n] = mean;
}

void QVOrdinaryKrigeOnSimilarity::Predict(QVSimilarityPredictions& predictions,
                                          Eigen::MatrixXd& covariances) const {
  const Eigen::Index n = covariances.rows();
  for (Eigen::Index object = 0; object < covariances.cols(); ++object)
    predictions.predicted.push_back(QVDot(covariances.col(object).data(), weights_.data(), n) +
                                    weights_[n]);
  predictions.estimatedErrors.assign(predictions.predicted.size(), BadDouble);
}

QVStatModelResult QVOrdinaryKrigeOnSimilarity::GetOrdinaryKrigingErrors(
    std::vector<double>& errors, const Eigen::MatrixXd& similarities) const {
  errors.clear();
  Eigen::MatrixXd k;
  std::vector<double> weights;
  QVStatModelResult result = GetCovariances(k, weights, similarities);
  if (QVFailedIn(result, "QVOrdinaryKrigeOnSimilarity::GetOrdinaryKrigingErrors")) return result;
  const Eigen::Index n = k.rows();
  if (factor_.rows() == 0) {
    Eigen::VectorXd bordered(n + 1);
    for (Eigen::Index object = 0; object < k.cols(); ++object) {
      bordered << k.col(object), 1.0;
      errors.push_back(std::sqrt(GetSill() - bordered.dot(inverse_ * bordered)));
    }
    return true;
  }
  QVSolveLower(factor_, k);
  for (Eigen::Index object = 0; object < k.cols(); ++object) {
    const double* column = k.col(object).data();
    const double bias = 1.0 - QVDot(column, whitenedOnes_.data(), n);
    errors.push_back(std::sqrt(GetSill() - QVDot(column, column, n) + bias * bias / onesNorm_));
  }
  return true;
}

QVStatModelResult QVOrdinaryKrigeOnSimilarity::GetLeaveOneOutPredictions(
    QVSimilarityPredictions& predictions) const {
  predictions = {};
  QVStatModelResult result =
      CheckLeaveOneOut("QVOrdinaryKrigeOnSimilarity::GetLeaveOneOutPredictions");
  if (result.NotSuccessful()) return result;
  const Eigen::Index n = responses_.size();
  Eigen::VectorXd diagonal;
  if (factor_.rows() == 0) {
    diagonal = inverse_.diagonal().head(n);
  } else {
    Eigen::MatrixXd whitening = Eigen::MatrixXd::Identity(n, n);
    QVSolveLower(factor_, whitening);
    const QVInverseProducts inverse(whitening, responses_);
    diagonal = inverse.diagonal.array() - inverse.ones.array().square() / onesNorm_;
  }
  for (Eigen::Index i = 0; i < n; ++i) {
    predictions.predicted.push_back(responses_[i] - weights_[i] / diagonal[i]);
    predictions.estimatedErrors.push_back(std::sqrt(1.0 / diagonal[i]));
  }
  predictions.averageWeights = GetAverageWeightsOfOthers();
  return true;
}

}  // namespace QVStats
