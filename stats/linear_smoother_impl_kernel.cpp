#include <algorithm>
#include <cmath>

#include "platform/math/dense_kernels.h"
#include "stats/api/linear_smoother_impl.h"
#include "stats/api/stats_data_types.h"
#include "stats/failure.h"
#include "stats/linear_smoother_algebra.h"

namespace QVStats {

namespace {

namespace Failure = QVStatModelFailureType;
using QVStatsBadData::BadDouble;

const char* const kPredict = "QVKernelRegressionOnSimilarity::GetPredictedResponse";
/// Added to every weight, so that a neighbourhood without weight has a mean.
constexpr double kLeastWeight = 1.1920928955078125e-07;

/// Weighted moments of the responses.
struct Moments {
  double weight = 0.0;
  double first = 0.0;
  double second = 0.0;

  void Add(double w, double y) {
    weight += w;
    first += w * y;
    second += w * y * y;
  }
};

void AppendPrediction(QVSimilarityPredictions& predictions, const Moments& sums, double count) {
  const double mean = sums.first / sums.weight;
  predictions.predicted.push_back(mean);
  predictions.averageWeights.push_back(sums.weight / count);
  predictions.estimatedErrors.push_back(
      std::sqrt(std::abs(sums.second / sums.weight - mean * mean)));
}

}  // namespace

QVKernelRegressionOnSimilarity::QVKernelRegressionOnSimilarity(unsigned int kernelType,
                                                               const std::string& responseColName,
                                                               const std::string& similarityColName,
                                                               const QVDataTable& table)
    : QVLinearSmootherOnSimilarityBase(responseColName, similarityColName, table) {
  SetKernel(kernelType, "Constructor for QVKernelRegressionOnSimilarity", {});
  objectsTogether_ = 128;
}

QVKernelRegressionOnSimilarity* QVKernelRegressionOnSimilarity::CreateCopy() const {
  return new QVKernelRegressionOnSimilarity(*this);
}

unsigned int QVKernelRegressionOnSimilarity::GetTypeOfLinearSmootherOnSimilarity() const {
  return QVLinearSmootherOnSimilarityType::KernelRegression;
}

QVStatModelResult QVKernelRegressionOnSimilarity::SetModelParams(
    const std::vector<double>& params) {
  if (params.size() != GetNumModelParams())
    return QVFailure(Failure::WrongInputVectorSize,
                     "QVKernelRegressionOnSimilarity`::SetModelParams");
  params_ = params;
  return true;
}

QVStatModelResult QVKernelRegressionOnSimilarity::GetPredictedResponse(
    double& predicted, double& averageWeight, double& estimatedError,
    const QVDataTableCol& similarities) const {
  predicted = averageWeight = estimatedError = BadDouble;
  QVStatModelResult result;
  GetTrainingTable().GetColumnFromName(result, responseColName_);
  if (QVFailedIn(result, kPredict)) return result;
  result = CheckQuery(similarities, kPredict);
  if (result.NotSuccessful()) return result;
  return PredictOne(predicted, averageWeight, estimatedError, similarities);
}

QVStatModelResult QVKernelRegressionOnSimilarity::CheckResponses(
    const std::vector<double>& responses, std::size_t count) const {
  for (std::size_t i = 0; i < count; ++i)
    if (responses[i] == QVStatsBadData::MissingDouble || responses[i] == BadDouble)
      return QVFailure(Failure::ArgumentOutOfRange, kPredict)
             << "At row num " << GetTrainingRows()[i]
             << ", response column value = " << responses[i];
  return true;
}

QVStatModelResult QVKernelRegressionOnSimilarity::GetPredictedResponses(
    QVSimilarityPredictions& predictions, const Eigen::MatrixXd& similarities) const {
  static const SimilarityRange range = {1.0, Failure::ArgumentOutOfRange, "At row num (",
                                        "); sim value = "};
  predictions = {};
  QVStatModelResult result = CheckParams(kPredict);
  if (result.NotSuccessful()) return result;
  const std::size_t n = GetTrainingRows().size();
  const QVDataTableCol& column = GetTrainingTable().GetColumnFromName(responseColName_);
  const std::vector<double> y = column.GetDoubles(QVRowNumbers(GetTrainingRows()));
  const QVStatModelResult responsesAreGood = CheckResponses(y, n);
  std::vector<double> squares = y;
  for (double& square : squares) square *= square;
  const QVMath::QVDenseKernels& dense = QVMath::QVGetDenseKernels();
  QVSimilarityPredictions all;
  std::vector<double> weights(n);
  for (Eigen::Index object = 0; object < similarities.cols(); ++object) {
    const double* s = similarities.col(object).data();
    result = CheckSimilarities(range, kPredict, s);
    if (responsesAreGood.NotSuccessful() || result.NotSuccessful()) {
      // Rows are checked in order, similarity first: the first bad cell decides.
      const std::size_t numGood = static_cast<std::size_t>(
          std::find_if(s, s + n, [](double value) { return !(value >= 0.0 && value <= 1.0); }) - s);
      const QVStatModelResult before = CheckResponses(y, numGood);
      return before.NotSuccessful() ? before : result;
    }
    if (n == 0) return QVFailure(Failure::NoData, kPredict) << "Similarity column has no data!";
    kernel_.GetValues(s, n, params_[0], weights.data());
    for (double& weight : weights) weight += kLeastWeight;
    const Moments sums = {QVSum(weights.data(), weights.size()),
                          dense.dot(n, weights.data(), y.data()),
                          dense.dot(n, weights.data(), squares.data())};
    AppendPrediction(all, sums, static_cast<double>(n));
  }
  predictions = std::move(all);
  return true;
}

QVStatModelResult QVKernelRegressionOnSimilarity::GetLeaveOneOutPredictions(
    QVSimilarityPredictions& predictions) const {
  static const char* const where = "QVKernelRegressionOnSimilarity::GetLeaveOneOutPredictions";
  predictions = {};
  if (!ModelIsValid()) return QVFailure(Failure::ObjectNotValid, where) << GetResultOfConstructor();
  const std::size_t n = GetTrainingRows().size();
  if (n < 2) return QVFailure(Failure::NoData, where);
  Eigen::VectorXd y;
  Eigen::MatrixXd kernel;
  QVStatModelResult result = ReadResponses(y, where);
  if (result.IsSuccessful()) result = FillKernelMatrix(kernel, 1.0, where);
  if (result.NotSuccessful()) return result;
  std::vector<Moments> sums(n);
  for (std::size_t j = 0; j < n; ++j)
    for (std::size_t i = j + 1; i < n; ++i) {
      const auto row = static_cast<Eigen::Index>(i);
      const auto col = static_cast<Eigen::Index>(j);
      const double weight = kernel(row, col) + kLeastWeight;
      sums[i].Add(weight, y[col]);
      sums[j].Add(weight, y[row]);
    }
  for (const Moments& moments : sums)
    AppendPrediction(predictions, moments, static_cast<double>(n) - 1.0);
  return true;
}

}  // namespace QVStats
