#include "stats/api/linear_smoother_impl.h"

#include <algorithm>
#include <limits>

#include "stats/api/stats_data_types.h"
#include "stats/failure.h"
#include "stats/linear_smoother_tables.h"

namespace QVStats {

namespace {

namespace Failure = QVStatModelFailureType;
using QVStatsBadData::BadDouble;

constexpr double kMaxTrainingSimilarity = 1.0 + 10.0 * std::numeric_limits<double>::epsilon();

}  // namespace

QVLinearSmootherOnSimilarityBase::QVLinearSmootherOnSimilarityBase(
    const std::string& responseColName, const std::string& similarityColName,
    const QVDataTable& table)
    : responseColName_(responseColName),
      similarityColName_(similarityColName),
      table_(table),
      baseResult_(
          QVCalledFrom("Constructor for QVLinearSmootherOnSimilarityBase", SetUpTable(table))) {
  if (baseResult_.IsSuccessful()) rows_ = table_.GetRowNumbers();
}

QVLinearSmootherOnSimilarityBase::~QVLinearSmootherOnSimilarityBase() = default;

QVStatModelResult QVLinearSmootherOnSimilarityBase::SetUpTable(const QVDataTable& table) {
  // The smoothers of one predictor column report their set-up under this name too.
  static const char* const where =
      "QVUniVarLinearSmootherBase::SetupDataTableFromTrainingSetNamesAndDataTable";
  table_.ClearColumns();
  QVStatModelResult result;
  const QVDataTableCol similarity = table.GetColumnFromName(result, similarityColName_);
  if (QVFailedIn(result, where)) return result;
  if (!similarity.ColIsLowerTriangular())
    return QVFailure(Failure::MismatchBetweenPrivateVecSizes, where)
           << "Predictor column " << similarityColName_ << " Is not a symmetric matrix";
  const QVDataTableCol response = table.GetColumnFromName(result, responseColName_);
  if (QVFailedIn(result, where)) return result;
  result = table_.AddColumn(similarity);
  if (QVFailedIn(result, where)) return result;
  return QVCalledFrom(where, table_.AddColumn(response));
}

void QVLinearSmootherOnSimilarityBase::SetKernel(unsigned int kernelType, const char* where,
                                                 const std::vector<std::string>& furtherParams) {
  kernel_ = QVSimilarityKernel(kernelType);
  if (kernel_.GetKernelType() == QVSimilarityKernelType::Null) {
    result_ = QVFailure(Failure::ObjectNotValid, where)
              << "Null similarity kernel Function constructed";
    return;
  }
  paramNames_ = {"Kernel parameter for " + kernel_.GetKernelName()};
  paramNames_.insert(paramNames_.end(), furtherParams.begin(), furtherParams.end());
  result_ = true;
}

std::string QVLinearSmootherOnSimilarityBase::GetNameOfLinearSmootherOnSimilarity() const {
  return QVLinearSmootherOnSimilarityType::TypeName[GetTypeOfLinearSmootherOnSimilarity()];
}

bool QVLinearSmootherOnSimilarityBase::ModelIsValid() const {
  return baseResult_.IsSuccessful() && result_.IsSuccessful() && !params_.empty();
}

std::string QVLinearSmootherOnSimilarityBase::GetResultOfConstructor() const {
  return "Result of Base Constructor:\n" + baseResult_.ReportStatResultDetails() +
         "\nResult of Constructor:\n" + result_.ReportStatResultDetails() + "\n";
}

// ----- checks and data of the models

QVStatModelResult QVLinearSmootherOnSimilarityBase::CheckSimilarities(
    const SimilarityRange& range, const char* where, const double* similarities) const {
  std::size_t numBad = 0;  // counted without branches first: bad ones are rare
  for (std::size_t i = 0; i < rows_.size(); ++i)
    numBad +=
        static_cast<std::size_t>(!(similarities[i] >= 0.0)) + !(similarities[i] <= range.upper);
  if (numBad == 0) return true;
  for (std::size_t i = 0; i < rows_.size(); ++i) {
    const double s = similarities[i];
    if (!(s >= 0.0 && s <= range.upper))
      return QVFailure(range.failureType, where)
             << range.beforeRow << rows_[i] << range.afterRow << s;
  }
  return true;
}

QVStatModelResult QVLinearSmootherOnSimilarityBase::CheckParams(const char* where) const {
  if (!params_.empty()) return true;
  return QVFailure(Failure::ObjectNotValid, where) << "Model Parameter vector is empty!";
}

QVStatModelResult QVLinearSmootherOnSimilarityBase::CheckQuery(const QVDataTableCol& similarities,
                                                               const char* where) const {
  if (similarities.GetNumColumnsInCol() > 1)
    return QVFailure(Failure::WrongInputVectorSize, where)
           << "Procedure expects an array with only one column; argument has "
           << similarities.GetNumColumnsInCol() << " cols";
  return CheckParams(where);
}

QVStatModelResult QVLinearSmootherOnSimilarityBase::PredictOne(
    double& predicted, double& averageWeight, double& estimatedError,
    const QVDataTableCol& similarities) const {
  Eigen::MatrixXd column(static_cast<Eigen::Index>(rows_.size()), 1);
  similarities.GetImpl()->GetDoubles(QVRowNumbers(rows_), 0, column.data());
  QVSimilarityPredictions predictions;
  QVStatModelResult result = GetPredictedResponses(predictions, column);
  if (result.NotSuccessful()) return result;
  predicted = predictions.predicted[0];
  averageWeight = predictions.averageWeights[0];
  estimatedError = predictions.estimatedErrors[0];
  return result;
}

void QVLinearSmootherOnSimilarityBase::GetSimilarityRow(std::size_t i, double* values) const {
  // A row of the lower triangle stands together in the column.
  GetSimilarityColumn().GetImpl()->GetDoubles(QVRowNumbers(rows_.data(), i + 1), rows_[i], values);
}

QVStatModelResult QVLinearSmootherOnSimilarityBase::FindBadTrainingSimilarity(
    const char* where) const {
  const QVDataTableCol& column = GetSimilarityColumn();
  for (std::size_t i = 0; i < rows_.size(); ++i)
    for (std::size_t j = 0; j < rows_.size(); ++j) {
      const double s = column.GetDouble(rows_[i], rows_[j]);
      if (!(s >= 0.0 && s <= kMaxTrainingSimilarity))
        return QVFailure(Failure::MissingOrBadPredictorValue, where)
               << "at row, column (" << i << "," << j << "), similarity value = " << s;
    }
  return true;
}

QVStatModelResult QVLinearSmootherOnSimilarityBase::FillKernelMatrix(Eigen::MatrixXd& matrix,
                                                                     double factor,
                                                                     const char* where) const {
  // Rows are read whole and written some at a time, so that the writes fill cache lines.
  constexpr std::size_t kRows = 16;
  const std::size_t n = rows_.size();
  // The matrix, and as much again for what is solved with it.
  const QVStatModelResult made = QVMakeSquareArray(
      where, "The kernel matrix", n, 2 * sizeof(double),
      [&] { matrix.resize(static_cast<Eigen::Index>(n), static_cast<Eigen::Index>(n)); });
  if (made.NotSuccessful()) return made;
  std::vector<double> rows(kRows * n);
  for (std::size_t first = 0; first < n; first += kRows) {
    const std::size_t last = std::min(n, first + kRows);
    for (std::size_t i = first; i < last; ++i) {
      double* row = rows.data() + (i - first) * n;
      GetSimilarityRow(i, row);
      const bool isBad = std::any_of(
          row, row + i + 1, [](double s) { return !(s >= 0.0 && s <= kMaxTrainingSimilarity); });
      if (isBad) return FindBadTrainingSimilarity(where);
      kernel_.GetValues(row, i + 1, params_[0], row);
    }
    for (std::size_t j = 0; j < last; ++j) {
      double* column = matrix.data() + j * n;
      for (std::size_t i = std::max(first, j); i < last; ++i)
        column[i] = factor * rows[(i - first) * n + j];
    }
  }
  return true;
}

QVStatModelResult QVLinearSmootherOnSimilarityBase::ReadResponses(Eigen::VectorXd& responses,
                                                                  const char* where) const {
  return QVReadResponses(responses, table_.GetColumnFromName(responseColName_), rows_, where);
}

std::vector<double> QVLinearSmootherOnSimilarityBase::GetAverageWeightsOfOthers() const {
  const std::size_t n = rows_.size();
  std::vector<double> averages(n, 0.0);
  std::vector<double> row(n);
  for (std::size_t i = 0; i < n; ++i) {
    GetSimilarityRow(i, row.data());
    kernel_.GetValues(row.data(), i, params_[0], row.data());
    for (std::size_t j = 0; j < i; ++j) {
      averages[i] += row[j];
      averages[j] += row[j];
    }
  }
  for (double& average : averages) average /= static_cast<double>(n) - 1.0;
  return averages;
}

// ----- bulk predictions

QVStatModelResult QVLinearSmootherOnSimilarityBase::GetPredictedResponses(
    QVSimilarityPredictions& predictions, const Eigen::MatrixXd& similarities) const {
  predictions = {};
  std::vector<double> values(rows_.empty() ? 0 : 1 + *std::max_element(rows_.begin(), rows_.end()),
                             QVStatsBadData::MissingDouble);
  QVSimilarityPredictions all;
  for (Eigen::Index object = 0; object < similarities.cols(); ++object) {
    for (std::size_t i = 0; i < rows_.size(); ++i)
      values[rows_[i]] = similarities(static_cast<Eigen::Index>(i), object);
    double predicted = BadDouble;
    double averageWeight = BadDouble;
    double estimatedError = BadDouble;
    QVStatModelResult result = GetPredictedResponse(
        predicted, averageWeight, estimatedError, QVDataTableCol("similarities", values, 1, false));
    if (result.NotSuccessful()) return result;
    QVAppend(all, {{predicted}, {averageWeight}, {estimatedError}});
  }
  predictions = std::move(all);
  return true;
}

QVStatModelResult QVLinearSmootherOnSimilarityBase::GetLeaveOneOutPredictions(
    QVSimilarityPredictions& predictions) const {
  predictions = {};
  return QVFailure(Failure::ObjectNotValid,
                   "QVLinearSmootherOnSimilarityBase::GetLeaveOneOutPredictions");
}

void QVLinearSmootherOnSimilarityBase::GatherSimilarities(const QVDataTableCol& column,
                                                          const std::size_t* rows,
                                                          std::size_t count,
                                                          Eigen::MatrixXd& similarities) const {
  const std::size_t n = rows_.size();
  similarities.resize(static_cast<Eigen::Index>(n), static_cast<Eigen::Index>(count));
  // A row of a triangle stands together, up to its diagonal: the row of an object where it is the
  // lower one, a long stretch then, or else that of a training row, for many objects in a tile that
  // stays in the cache. A plain column is read by training rows.
  constexpr std::size_t kRows = 64, kObjects = 256;
  double values[kObjects];
  for (std::size_t object = 0; object < count; object += kObjects) {
    const QVRowNumbers objects(rows + object, std::min(kObjects, count - object));
    const auto isAbove = [&](std::size_t row) {
      return column.ColIsLowerTriangular() && row < n && rows_[row] < objects[0];
    };
    for (std::size_t row = 0, size; row < n; row += size) {
      size = std::min(kRows, n - row);
      const bool byObjects = isAbove(row);
      while (byObjects && isAbove(row + 2 * size - 1)) size *= 2;
      const QVRowNumbers training(rows_.data() + row, size);
      double* const tile = similarities.data() + object * n + row;
      for (std::size_t k = 0; byObjects && k < objects.size(); ++k)
        column.GetImpl()->GetDoubles(training, objects[k], tile + k * n);
      for (std::size_t i = 0; !byObjects && i < size; ++i) {
        column.GetImpl()->GetDoubles(objects, training[i], values);
        for (std::size_t k = 0; k < objects.size(); ++k) tile[k * n + i] = values[k];
      }
    }
  }
}

QVStatModelResult QVLinearSmootherOnSimilarityBase::GetPredictedResponseCols(
    QVDataTableCol& predicted, QVDataTableCol& averageWeights, QVDataTableCol& estimatedErrors,
    const QVDataTable& table) const {
  static const char* const where = "QVLinearSmootherOnSimilarityBase::GetPredictedResponse";
  predicted = averageWeights = estimatedErrors = QVDataTableCol();
  QVStatModelResult result;
  const QVDataTableCol similarity = table.GetColumnFromName(result, similarityColName_);
  if (QVFailedIn(result, where)) return result;

  const std::vector<std::size_t> rows = table.GetRowNumbers();
  QVSimilarityPredictions all;
  Eigen::MatrixXd similarities;
  for (std::size_t first = 0; first < rows.size(); first += objectsTogether_) {
    GatherSimilarities(similarity, rows.data() + first,
                       std::min(objectsTogether_, rows.size() - first), similarities);
    QVSimilarityPredictions block;
    result = GetPredictedResponses(block, similarities);
    if (QVFailedIn(result, where)) return result;
    QVAppend(all, block);
  }
  const QVPredictionColumns columns(all, {rows, similarity.GetTotalNumRowsInCol()},
                                    GetNameOfLinearSmootherOnSimilarity());
  predicted = columns.predicted;
  averageWeights = columns.averageWeights;
  estimatedErrors = columns.estimatedErrors;
  return true;
}

// ----- results

QVSimilarityRegressionResult QVLinearSmootherOnSimilarityBase::GetRegressionResults(
    const std::string& description, const std::string& responseColName,
    const QVDataTable& table) const {
  return QVGetRegressionResults(*this, GetNameOfLinearSmootherOnSimilarity(),
                                "QVLinearSmootherOnSimilarityBase::GetRegressionResults",
                                description, responseColName, table);
}

QVSimilarityRegressionResult QVLinearSmootherOnSimilarityBase::GetTrainingSetResults() const {
  return GetRegressionResults("Training Set Results", responseColName_, table_);
}

QVSimilarityRegressionResult QVLinearSmootherOnSimilarityBase::GetTestSetResults(
    const std::string& responseColName, const QVDataTable& testTable) const {
  QVStatModelResult result = QVCheckTestColumn(testTable, responseColName);
  if (QVFailedIn(result, "QVLinearSmootherOnSimilarityBase::GetTestSetResults"))
    return QVSimilarityRegressionResult(result);
  return GetRegressionResults("Test Set Results", responseColName, testTable);
}

// ----- the null smoother

QVNullRegressionOnSimilarity::QVNullRegressionOnSimilarity()
    : QVLinearSmootherOnSimilarityBase("", "", QVDataTable("")) {
  result_.SetFailureTypeAndWhereFailed(Failure::ObjectNotValid,
                                       "Constructor of QVNullRegressionOnSimilarity");
}

QVNullRegressionOnSimilarity* QVNullRegressionOnSimilarity::CreateCopy() const {
  return new QVNullRegressionOnSimilarity(*this);
}

unsigned int QVNullRegressionOnSimilarity::GetTypeOfLinearSmootherOnSimilarity() const {
  return QVLinearSmootherOnSimilarityType::Unknown;
}

QVStatModelResult QVNullRegressionOnSimilarity::SetModelParams(const std::vector<double>&) {
  return QVFailure(Failure::ObjectNotValid, "QVNullRegressionOnSimilarity::SetModelParams");
}

QVStatModelResult QVNullRegressionOnSimilarity::GetPredictedResponse(double& predicted,
                                                                     double& averageWeight,
                                                                     double& estimatedError,
                                                                     const QVDataTableCol&) const {
  predicted = averageWeight = estimatedError = BadDouble;
  return QVFailure(Failure::ObjectNotValid, "QVNullRegression::GetPredictedResponse");
}

}  // namespace QVStats
