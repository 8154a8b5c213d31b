#include <Eigen/Eigenvalues>
#include <cmath>
#include <limits>

#include "platform/math/dense_kernels.h"
#include "stats/api/linear_smoother_impl.h"
#include "stats/api/stats_data_types.h"
#include "stats/failure.h"
#include "stats/linear_smoother_algebra.h"

namespace QVStats {

namespace {

namespace Failure = QVStatModelFailureType;
using QVStatsBadData::BadDouble;

/// How far rounding can move an eigenvalue of an n x n matrix whose largest one is given.
double GetEigenvalueRounding(Eigen::Index n, double largest) {
  return static_cast<double>(n) * std::numeric_limits<double>::epsilon() * largest;
}

/// Solves (T + theta) x = z for a symmetric tridiagonal T by elimination without pivoting, which
/// is stable where T + theta is positive definite.
Eigen::VectorXd SolveShifted(const Eigen::VectorXd& diagonal, const Eigen::VectorXd& offDiagonal,
                             double theta, const Eigen::VectorXd& z) {
  const Eigen::Index n = z.size();
  Eigen::VectorXd x = z;
  Eigen::VectorXd factors(n);
  double pivot = 0.0;
  for (Eigen::Index i = 0; i < n; ++i) {
    pivot = diagonal[i] + theta;
    if (i > 0) {
      pivot -= offDiagonal[i - 1] * factors[i - 1];
      x[i] -= offDiagonal[i - 1] * x[i - 1];
    }
    if (i + 1 < n) factors[i] = offDiagonal[i] / pivot;
    x[i] /= pivot;
  }
  for (Eigen::Index i = n - 2; i >= 0; --i) x[i] -= factors[i] * x[i + 1];
  return x;
}

}  // namespace

QVGaussianProcessOnSimilarity::QVGaussianProcessOnSimilarity(unsigned int kernelType,
                                                             const std::string& responseColName,
                                                             const std::string& similarityColName,
                                                             const QVDataTable& table)
    : QVLinearSmootherOnSimilarityBase(responseColName, similarityColName, table) {
  SetKernel(kernelType, "Constructor for QVGaussianProcessOnSimilarity", {});
}

QVGaussianProcessOnSimilarity* QVGaussianProcessOnSimilarity::CreateCopy() const {
  return new QVGaussianProcessOnSimilarity(*this);
}

unsigned int QVGaussianProcessOnSimilarity::GetTypeOfLinearSmootherOnSimilarity() const {
  return QVLinearSmootherOnSimilarityType::GaussianProcess;
}

// ----- the fit

QVStatModelResult QVGaussianProcessOnSimilarity::SetModelParams(const std::vector<double>& params) {
  static const char* const where = "QVGaussianProcessOnSimilarity::SetModelParams";
  if (params.size() != GetNumModelParams())
    return QVFailure(Failure::WrongInputVectorSize, where)
           << "size input params = " << params.size() << " size required = " << GetNumModelParams();
  params_ = params;
  return QVCalledFrom(where, MaximizeMarginalLikelihoodWrtVariances());
}

QVStatModelResult QVGaussianProcessOnSimilarity::MaximizeMarginalLikelihoodWrtVariances() {
  static const char* const where =
      "QVGaussianProcessOnSimilarity::MaximizeMarginalLikelihoodWrtVariances";
  static const char* const decomposition =
      "QVGaussianProcessOnSimilarity::GetTrainingSetEigenDecomposition";
  static const char* const transform =
      "QVGaussianProcessOnSimilarity::GetTrainingSetTransformedResponse";
  whitenedResponses_.resize(0);
  transformedResponses_.resize(0);

  QVStatModelResult result = CheckParams(decomposition);
  if (QVFailedIn(result, where)) return result;
  Eigen::MatrixXd kernelMatrix;
  result = FillKernelMatrix(kernelMatrix, 1.0, decomposition);
  if (QVFailedIn(result, where)) return result;
  Eigen::VectorXd responses;
  result = ReadResponses(responses, transform);
  if (QVFailedIn(result, where)) return result;

  meanResponse_ = responses.sum() / static_cast<double>(responses.size());
  const Eigen::VectorXd centred = responses.array() - meanResponse_;
  if (FitWithoutEigenvectors(kernelMatrix, centred)) return true;
  // The reduction has destroyed the matrix.
  result = FillKernelMatrix(kernelMatrix, 1.0, decomposition);
  if (QVFailedIn(result, where)) return result;
  FitWithEigenvectors(kernelMatrix, centred);
  return true;
}

bool QVGaussianProcessOnSimilarity::FitWithoutEigenvectors(Eigen::MatrixXd& kernelMatrix,
                                                           const Eigen::VectorXd& centred) {
  const Eigen::Index n = centred.size();
  if (n == 0) return false;
  const auto size = static_cast<std::size_t>(n);
  diagonal_.resize(n);
  offDiagonal_.resize(n - 1);
  transformedResponses_ = centred;
  QVMath::QVGetDenseKernels().tridiagonalise(size, kernelMatrix.data(), size, diagonal_.data(),
                                             offDiagonal_.data(), transformedResponses_.data());
  eigenvalues_ = diagonal_;
  Eigen::VectorXd work = offDiagonal_;
  if (!QVMath::QVGetTridiagonalEigenvalues(size, eigenvalues_.data(), work.data())) return false;

  // A true negative eigenvalue has to be taken out along its vector; one of rounding has not, as
  // long as theta is far above it.
  const double rounding = GetEigenvalueRounding(n, eigenvalues_[n - 1]);
  if (!(eigenvalues_[0] >= -rounding)) return false;
  eigenvalues_ = eigenvalues_.cwiseMax(0.0);
  SearchForBestCovarParams(signalVariance_, noiseVariance_);
  if (!(noiseVariance_ > 1000.0 * rounding * signalVariance_)) return false;

  FillKernelMatrix(kernelMatrix, signalVariance_, "");
  kernelMatrix.diagonal().array() += noiseVariance_;
  if (!QVFactoriseInPlace(kernelMatrix)) return false;
  factor_.swap(kernelMatrix);
  inverseDeviations_.resize(0);
  whitenedResponses_ = centred;
  QVSolveLower(factor_, whitenedResponses_);
  return true;
}

void QVGaussianProcessOnSimilarity::FitWithEigenvectors(Eigen::MatrixXd& kernelMatrix,
                                                        const Eigen::VectorXd& centred) {
  if (centred.size() > 0) {
    const Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> solver(kernelMatrix);
    eigenvalues_ = solver.eigenvalues().cwiseMax(0.0);
    factor_ = solver.eigenvectors();
  } else {
    eigenvalues_.resize(0);
    factor_.resize(0, 0);
  }
  diagonal_ = eigenvalues_;
  offDiagonal_ = Eigen::VectorXd::Zero(centred.size());
  transformedResponses_ = factor_.transpose() * centred;
  SearchForBestCovarParams(signalVariance_, noiseVariance_);
  inverseDeviations_ = (signalVariance_ * eigenvalues_.array() + noiseVariance_).rsqrt();
  whitenedResponses_ = inverseDeviations_.cwiseProduct(transformedResponses_);
}

double QVGaussianProcessOnSimilarity::CalculateGradMLWRTTheta(double& sigma2, double theta) const {
  const auto n = static_cast<double>(eigenvalues_.size());
  const Eigen::VectorXd x = SolveShifted(diagonal_, offDiagonal_, theta, transformedResponses_);
  const double s1 = (eigenvalues_.array() + theta).inverse().sum();
  const double s2 = transformedResponses_.dot(x);
  const double s3 = x.squaredNorm();
  sigma2 = s2 / n;
  return n / 2.0 * (s3 / s2 - s1 / n);
}

void QVGaussianProcessOnSimilarity::SearchForBestCovarParams(double& sigma2,
                                                             double& noiseVariance) const {
  const auto gradient = [&](double theta) { return CalculateGradMLWRTTheta(sigma2, theta); };
  double low = 0.05;
  double high = 0.05;
  if (gradient(low) < 0.0) {
    low = 0.025;
    for (int halvings = 0; gradient(low) < 0.0 && halvings < 100; ++halvings) {
      high = low;
      low /= 2.0;
    }
  }
  double next = high;
  for (int doublings = 0; gradient(next) > 0.0 && doublings < 99; ++doublings) {
    low = next;
    next *= 2.0;
  }
  high = next;
  for (int step = 0; step < 101 && high - low > 0.001; ++step) {
    const double middle = (low + high) / 2.0;
    (gradient(middle) > 0.0 ? low : high) = middle;
  }
  noiseVariance = (low + high) / 2.0 * sigma2;
}

// ----- predictions

void QVGaussianProcessOnSimilarity::Whiten(Eigen::MatrixXd& covariances) const {
  if (inverseDeviations_.size() == 0 && factor_.rows() > 0) {
    QVSolveLower(factor_, covariances);
    return;
  }
  const auto n = static_cast<std::size_t>(factor_.rows());
  const auto m = static_cast<std::size_t>(covariances.cols());
  const auto step = static_cast<std::ptrdiff_t>(n);
  Eigen::MatrixXd whitened = Eigen::MatrixXd::Zero(factor_.rows(), covariances.cols());
  QVMath::QVGetDenseKernels().multiply(n, m, n, 1.0, {factor_.data(), step, 1},
                                       {covariances.data(), step, 1}, whitened.data(), n);
  covariances.noalias() = inverseDeviations_.asDiagonal() * whitened;
}

QVStatModelResult QVGaussianProcessOnSimilarity::GetPredictedResponse(
    double& predicted, double& averageWeight, double& estimatedError,
    const QVDataTableCol& similarities) const {
  predicted = averageWeight = estimatedError = BadDouble;
  QVStatModelResult result =
      CheckQuery(similarities, "QVGaussianProcessOnSimilarity::GetPredictedResponse");
  if (result.NotSuccessful()) return result;
  return PredictOne(predicted, averageWeight, estimatedError, similarities);
}

QVStatModelResult QVGaussianProcessOnSimilarity::GetPredictedResponses(
    QVSimilarityPredictions& predictions, const Eigen::MatrixXd& similarities) const {
  static const char* const where = "QVGaussianProcessOnSimilarity::GetPredictedResponse";
  static const char* const centredWhere =
      "QVGaussianProcessOnSimilarity::GetPredictedCenteredResponse";
  static const SimilarityRange range = {1.0, Failure::MissingOrBadPredictorValue, "at row (",
                                        ") similarity value = "};
  predictions = {};
  QVStatModelResult result = CheckParams(where);
  if (result.NotSuccessful()) return result;
  const auto n = static_cast<Eigen::Index>(GetTrainingRows().size());
  if (n != whitenedResponses_.size())
    return QVCalledFrom(where, QVFailure(Failure::InternalLogicFailure, centredWhere));
  Eigen::MatrixXd covariances(n, similarities.cols());
  Eigen::VectorXd weights(similarities.cols());
  // Object by object, so that a column stays in the cache.
  for (Eigen::Index object = 0; object < similarities.cols(); ++object) {
    const double* s = similarities.col(object).data();
    result = CheckSimilarities(range, centredWhere, s);
    if (QVFailedIn(result, where)) return result;
    auto column = covariances.col(object);
    kernel_.GetValues(s, GetTrainingRows().size(), params_[0], column.data());
    weights[object] = QVMean(column.data(), n);
    column *= signalVariance_;
  }
  Whiten(covariances);
  for (Eigen::Index object = 0; object < similarities.cols(); ++object) {
    const double* column = covariances.col(object).data();
    const double explained = QVDot(column, column, n);
    predictions.predicted.push_back(meanResponse_ + QVDot(column, whitenedResponses_.data(), n));
    predictions.averageWeights.push_back(weights[object]);
    predictions.estimatedErrors.push_back(
        std::sqrt((signalVariance_ + noiseVariance_) - explained));
  }
  return true;
}

QVStatModelResult QVGaussianProcessOnSimilarity::GetLeaveOneOutPredictions(
    QVSimilarityPredictions& predictions) const {
  static const char* const where = "QVGaussianProcessOnSimilarity::GetLeaveOneOutPredictions";
  predictions = {};
  const auto n = static_cast<Eigen::Index>(GetTrainingRows().size());
  if (!ModelIsValid() || n != whitenedResponses_.size())
    return QVFailure(Failure::ObjectNotValid, where) << GetResultOfConstructor();
  if (n < 2) return QVFailure(Failure::NoData, where);
  Eigen::VectorXd responses;
  QVStatModelResult result = ReadResponses(responses, where);
  if (result.NotSuccessful()) return result;
  Eigen::MatrixXd whitening = Eigen::MatrixXd::Identity(n, n);
  Whiten(whitening);
  QVLeaveOneOutAroundMean(predictions, whitening, responses);
  predictions.averageWeights = GetAverageWeightsOfOthers();
  return true;
}

}  // namespace QVStats
