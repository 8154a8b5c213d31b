#include "stats/api/linear_smoother_pred_columns.h"

#include <algorithm>
#include <limits>

#include "stats/api/stats_data_types.h"
#include "stats/failure.h"
#include "stats/linear_smoother_algebra.h"
#include "stats/linear_smoother_tables.h"

namespace QVStats {

namespace {

namespace Failure = QVStatModelFailureType;
using QVStatsBadData::BadDouble;
using Matrices = std::vector<Eigen::MatrixXd>;

constexpr double kMaxSimilarity = 1.0 + 10.0 * std::numeric_limits<double>::epsilon();

bool IsSimilarity(double s) { return s >= 0.0 && s <= kMaxSimilarity; }

/// The similarities of a number to those of the training rows. Without a range only equals are
/// related.
void GetSimilarities(const std::vector<double>& values, std::size_t first, double range, double x,
                     double* similarities) {
  for (std::size_t i = first; i < values.size(); ++i)
    similarities[i - first] =
        x == values[i] ? 1.0 : std::max(0.0, 1.0 - std::abs(x - values[i]) / range);
}

/// Fails at the first number of the rows that is missing, bad or not finite.
QVStatModelResult CheckNumbers(const QVDataTableCol& column, const std::vector<std::size_t>& rows,
                               const std::vector<double>& values, const char* where) {
  for (std::size_t i = 0; i < rows.size(); ++i)
    if (!(std::abs(values[i]) < QVStatsBadData::BadIndexDouble))
      return QVFailure(Failure::MissingOrBadPredictorValue, where)
             << "for predictor column " << column.GetColumnName() << " at row (" << rows[i]
             << ") value = " << column.GetString(rows[i], 0);
  return true;
}

}  // namespace

// ----- set-up

QVLinearSmootherOnPredColumnsBase::QVLinearSmootherOnPredColumnsBase(
    const std::string& responseColName, const std::vector<std::string>& predColNames,
    const QVDataTable& table)
    : responseColName_(responseColName), table_(table) {
  baseResult_ = QVCalledFrom("Constructor for QVLinearSmootherOnPredColumnsBase",
                             SetupDataTableFromTrainingSetNamesAndDataTable(predColNames, table));
}

QVLinearSmootherOnPredColumnsBase::~QVLinearSmootherOnPredColumnsBase() = default;

QVStatModelResult QVLinearSmootherOnPredColumnsBase::SetupDataTableFromTrainingSetNamesAndDataTable(
    const std::vector<std::string>& predColNames, const QVDataTable& table) {
  static const char* const where =
      "QVLinearSmootherOnPredColumnsBase::SetupDataTableFromTrainingSetNamesAndDataTable";
  table_.ClearColumns();
  if (predColNames.empty())
    return QVFailure(Failure::WrongNumPredVars, where) << "no predictor columns";
  QVStatModelResult result;
  std::vector<QVDataTableCol> columns = {table.GetColumnFromName(result, responseColName_)};
  for (const std::string& name : predColNames)
    if (result.IsSuccessful()) columns.push_back(table.GetColumnFromName(result, name));
  if (result.IsSuccessful()) result = QVReplaceColumns(table_, table, columns);
  if (QVFailedIn(result, where)) return result;
  rows_ = table_.GetRowNumbers();
  for (std::size_t i = 1; result.IsSuccessful() && i < columns.size(); ++i)
    result = AddPredictor(columns[i], where);
  return result;
}

QVStatModelResult QVLinearSmootherOnPredColumnsBase::AddPredictor(const QVDataTableCol& column,
                                                                  const char* where) {
  const std::string& name = column.GetColumnName();
  predictors_.push_back({name, column.ColIsLowerTriangular(), {}, 0.0});
  if (column.ColIsLowerTriangular()) return true;
  if (column.GetNumColumnsInCol() != 1)
    return QVFailure(Failure::MismatchBetweenPrivateVecSizes, where)
           << "Predictor column " << name << " Is not a symmetric matrix and has "
           << column.GetNumColumnsInCol() << " values a row";
  Predictor& predictor = predictors_.back();
  predictor.values = column.GetDoubles(QVRowNumbers(rows_));
  QVStatModelResult result = CheckNumbers(column, rows_, predictor.values, where);
  if (result.NotSuccessful() || rows_.empty()) return result;
  const auto [least, largest] =
      std::minmax_element(predictor.values.begin(), predictor.values.end());
  predictor.range = *largest - *least;
  return true;
}

void QVLinearSmootherOnPredColumnsBase::SetKernels(const std::vector<unsigned int>& kernelTypes,
                                                   const char* where) {
  if (baseResult_.IsSuccessful() && kernelTypes.size() != predictors_.size()) {
    result_ = QVFailure(Failure::WrongInputVectorSize, where)
              << "num kernel types = " << kernelTypes.size()
              << "; num pred cols = " << predictors_.size();
    return;
  }
  result_ = true;
  for (const unsigned int type : kernelTypes) {
    kernels_.emplace_back(type);
    if (kernels_.back().GetKernelType() == QVSimilarityKernelType::Null)
      result_ = QVFailure(Failure::ObjectNotValid, where)
                << "Null similarity kernel Function constructed";
  }
  for (std::size_t d = 0; d < std::min(kernels_.size(), predictors_.size()); ++d)
    paramNames_.push_back("Kernel parameter for " + kernels_[d].GetKernelName() + " on " +
                          predictors_[d].name);
}

std::string QVLinearSmootherOnPredColumnsBase::GetNameOfLinearSmootherOnPredColumns() const {
  return QVLinearSmootherOnPredColumnsType::TypeName[GetTypeOfLinearSmootherOnPredColumns()];
}

bool QVLinearSmootherOnPredColumnsBase::ModelIsValid() const {
  return IsConstructed() && !params_.empty();
}

std::string QVLinearSmootherOnPredColumnsBase::GetResultOfConstructor() const {
  return "Result of Base Constructor:\n" + baseResult_.ReportStatResultDetails() +
         "\nResult of Constructor:\n" + result_.ReportStatResultDetails() + "\n";
}

// ----- similarities and kernels

void QVLinearSmootherOnPredColumnsBase::MultiplyKernels(
    const std::vector<const double*>& similarities, std::size_t n, double* values) const {
  kernels_[0].GetValues(similarities[0], n, params_[0], values);
  std::vector<double> factors(n);
  for (std::size_t d = 1; d < kernels_.size(); ++d) {
    kernels_[d].GetValues(similarities[d], n, params_[d], factors.data());
    for (std::size_t i = 0; i < n; ++i) values[i] *= factors[i];
  }
}

QVStatModelResult QVLinearSmootherOnPredColumnsBase::FillKernelMatrix(Eigen::MatrixXd& matrix,
                                                                      double factor,
                                                                      const char* where) const {
  const std::size_t n = rows_.size();
  matrix.resize(static_cast<Eigen::Index>(n), static_cast<Eigen::Index>(n));
  std::vector<std::vector<double>> columns(predictors_.size(), std::vector<double>(n));
  std::vector<const double*> similarities;
  for (const std::vector<double>& column : columns) similarities.push_back(column.data());
  for (std::size_t j = 0; j < n; ++j) {
    for (std::size_t d = 0; d < predictors_.size(); ++d) {
      const Predictor& predictor = predictors_[d];
      double* s = columns[d].data();
      if (!predictor.isSimilarity) {
        GetSimilarities(predictor.values, j, predictor.range, predictor.values[j], s);
        continue;
      }
      table_.GetColumnFromName(predictor.name)
          .GetImpl()
          ->GetDoubles(QVRowNumbers(rows_.data() + j, n - j), rows_[j], s);
      const double* bad = std::find_if_not(s, s + (n - j), IsSimilarity);
      if (bad != s + (n - j))
        return QVFailure(Failure::MissingOrBadPredictorValue, where)
               << "for similarity column " << predictor.name << " at row, column ("
               << j + static_cast<std::size_t>(bad - s) << "," << j
               << "), similarity value = " << *bad;
    }
    double* values = matrix.data() + j * (n + 1);
    MultiplyKernels(similarities, n - j, values);
    for (std::size_t i = 0; i < n - j; ++i) values[i] *= factor;
  }
  return true;
}

QVStatModelResult QVLinearSmootherOnPredColumnsBase::CheckParams(const char* where) const {
  if (!params_.empty()) return true;
  return QVFailure(Failure::ObjectNotValid, where) << "Model Parameter vector is empty!";
}

QVStatModelResult QVLinearSmootherOnPredColumnsBase::CheckSimilarities(const Matrices& similarities,
                                                                       const char* where) const {
  if (similarities.size() != predictors_.size())
    return QVFailure(Failure::WrongInputVectorSize, where)
           << "num similarities = " << similarities.size()
           << "; num pred cols = " << predictors_.size();
  for (std::size_t d = 0; d < similarities.size(); ++d) {
    const Eigen::MatrixXd& s = similarities[d];
    if (static_cast<std::size_t>(s.rows()) != rows_.size() || s.cols() != similarities[0].cols())
      return QVFailure(Failure::WrongInputVectorSize, where)
             << "for predictor column " << predictors_[d].name << " similarities of " << s.cols()
             << " objects to " << s.rows() << " rows";
    const double* bad = std::find_if_not(s.data(), s.data() + s.size(), IsSimilarity);
    if (bad != s.data() + s.size())
      return QVFailure(Failure::MissingOrBadPredictorValue, where)
             << "for predictor column " << predictors_[d].name << " at row ("
             << rows_[static_cast<std::size_t>(bad - s.data()) % rows_.size()]
             << ") similarity value = " << *bad;
  }
  return true;
}

QVStatModelResult QVLinearSmootherOnPredColumnsBase::ReadSimilarities(
    Matrices& values, const std::vector<QVDataTableCol>& similarities, const char* where) const {
  values.clear();
  for (const QVDataTableCol& column : similarities) {
    if (column.GetNumColumnsInCol() > 1)
      return QVFailure(Failure::WrongInputVectorSize, where)
             << "Procedure expects an array with only one column; argument has "
             << column.GetNumColumnsInCol() << " cols";
    values.emplace_back(static_cast<Eigen::Index>(rows_.size()), 1);
    column.GetImpl()->GetDoubles(QVRowNumbers(rows_), 0, values.back().data());
  }
  return true;
}

QVStatModelResult QVLinearSmootherOnPredColumnsBase::GatherSimilarities(
    Eigen::MatrixXd& similarities, const Predictor& predictor, const QVDataTableCol& column,
    const std::vector<std::size_t>& rows) const {
  const auto n = static_cast<Eigen::Index>(rows_.size());
  const auto m = static_cast<Eigen::Index>(rows.size());
  similarities.resize(n, m);
  if (!predictor.isSimilarity) {
    const std::vector<double> values = column.GetDoubles(QVRowNumbers(rows));
    const QVStatModelResult result = CheckNumbers(
        column, rows, values, "QVLinearSmootherOnPredColumnsBase::GetPredictedResponseCols");
    if (result.NotSuccessful()) return result;
    for (Eigen::Index object = 0; object < m; ++object)
      GetSimilarities(predictor.values, 0, predictor.range,
                      values[static_cast<std::size_t>(object)], similarities.col(object).data());
    return true;
  }
  std::vector<double> values(rows.size());
  for (Eigen::Index i = 0; i < n; ++i) {
    column.GetImpl()->GetDoubles(QVRowNumbers(rows), rows_[static_cast<std::size_t>(i)],
                                 values.data());
    similarities.row(i) = Eigen::Map<const Eigen::RowVectorXd>(values.data(), m);
  }
  return true;
}

QVStatModelResult QVLinearSmootherOnPredColumnsBase::CheckThatPredColumnsLineUp(
    const QVDataTable& table) const {
  static const char* const where = "QVLinearSmootherOnPredColumnsBase::CheckThatPredColumnsLineUp";
  for (const Predictor& predictor : predictors_) {
    QVStatModelResult result;
    const QVDataTableCol column = table.GetColumnFromName(result, predictor.name);
    if (QVFailedIn(result, where)) return result;
    const std::size_t width = column.GetNumColumnsInCol();
    const std::size_t needed =
        rows_.empty() ? 0 : 1 + *std::max_element(rows_.begin(), rows_.end());
    const bool linesUp =
        predictor.isSimilarity ? width >= needed : !column.ColIsLowerTriangular() && width == 1;
    if (!linesUp)
      return QVFailure(Failure::MismatchBetweenInputVecSizes, where)
             << "Predictor column " << predictor.name << " has " << width
             << " values a row; needed are " << (predictor.isSimilarity ? needed : 1);
  }
  return true;
}

// ----- results

QVStatModelResult QVLinearSmootherOnPredColumnsBase::GetPredictedResponseCols(
    QVDataTableCol& predicted, QVDataTableCol& averageWeights, QVDataTableCol& estimatedErrors,
    const QVDataTable& table) const {
  static const char* const where = "QVLinearSmootherOnPredColumnsBase::GetPredictedResponseCols";
  predicted = averageWeights = estimatedErrors = QVDataTableCol();
  QVStatModelResult result = CheckThatPredColumnsLineUp(table);
  if (QVFailedIn(result, where)) return result;

  constexpr std::size_t kBlock = 512;
  const std::vector<std::size_t> rows = table.GetRowNumbers();
  QVSimilarityPredictions all;
  Matrices similarities(predictors_.size());
  for (std::size_t first = 0; first < rows.size(); first += kBlock) {
    const auto begin = rows.begin() + static_cast<std::ptrdiff_t>(first);
    const std::vector<std::size_t> some(
        begin, begin + static_cast<std::ptrdiff_t>(std::min(kBlock, rows.size() - first)));
    for (std::size_t d = 0; d < predictors_.size(); ++d) {
      result = GatherSimilarities(similarities[d], predictors_[d],
                                  table.GetColumnFromName(predictors_[d].name), some);
      if (result.NotSuccessful()) return result;
    }
    QVSimilarityPredictions block;
    result = GetPredictedResponses(block, similarities);
    if (QVFailedIn(result, where)) return result;
    QVAppend(all, block);
  }
  std::size_t numRows = 0;
  if (table.GetNumColumns() > 0) numRows = table.GetColumns()->GetTotalNumRowsInCol();
  const QVPredictionColumns columns(all, {rows, numRows}, GetNameOfLinearSmootherOnPredColumns());
  predicted = columns.predicted;
  averageWeights = columns.averageWeights;
  estimatedErrors = columns.estimatedErrors;
  return true;
}

QVSimilarityRegressionResult QVLinearSmootherOnPredColumnsBase::GetRegressionResults(
    const std::string& description, const std::string& responseColName,
    const QVDataTable& table) const {
  return QVGetRegressionResults(*this, GetNameOfLinearSmootherOnPredColumns(),
                                "QVLinearSmootherOnPredColumnsBase::GetRegressionResults",
                                description, responseColName, table);
}

QVSimilarityRegressionResult QVLinearSmootherOnPredColumnsBase::GetTrainingSetResults() const {
  return GetRegressionResults("Training Set Results", responseColName_, table_);
}

QVSimilarityRegressionResult QVLinearSmootherOnPredColumnsBase::GetTestSetResults(
    const std::string& responseColName, const QVDataTable& testTable) const {
  QVStatModelResult result = QVCheckTestColumn(testTable, responseColName);
  if (result.IsSuccessful()) result = CheckThatPredColumnsLineUp(testTable);
  if (QVFailedIn(result, "QVLinearSmootherOnPredColumnsBase::GetTestSetResults"))
    return QVSimilarityRegressionResult(result);
  return GetRegressionResults("Test Set Results", responseColName, testTable);
}

// ----- the null smoother

QVNullRegressionOnPredColumns::QVNullRegressionOnPredColumns()
    : QVLinearSmootherOnPredColumnsBase("", {}, QVDataTable("")) {
  result_.SetFailureTypeAndWhereFailed(Failure::ObjectNotValid,
                                       "Constructor of QVNullRegressionOnPredColumns");
}

unsigned int QVNullRegressionOnPredColumns::GetTypeOfLinearSmootherOnPredColumns() const {
  return QVLinearSmootherOnPredColumnsType::Unknown;
}

QVStatModelResult QVNullRegressionOnPredColumns::SetModelParams(const std::vector<double>&) {
  return QVFailure(Failure::ObjectNotValid, "QVNullRegressionOnPredColumns::SetModelParams");
}

QVStatModelResult QVNullRegressionOnPredColumns::GetPredictedResponse(
    double& predicted, double& averageWeight, double& estimatedError,
    const std::vector<QVDataTableCol>&) const {
  predicted = averageWeight = estimatedError = BadDouble;
  return QVFailure(Failure::ObjectNotValid, "QVNullRegressionOnPredColumns::GetPredictedResponse");
}

QVStatModelResult QVNullRegressionOnPredColumns::GetPredictedResponses(
    QVSimilarityPredictions& predictions, const Matrices&) const {
  predictions = {};
  return QVFailure(Failure::ObjectNotValid, "QVNullRegressionOnPredColumns::GetPredictedResponses");
}

QVStatModelResult QVNullRegressionOnPredColumns::GetLeaveOneOutPredictions(
    QVSimilarityPredictions& predictions) const {
  predictions = {};
  return QVFailure(Failure::ObjectNotValid,
                   "QVNullRegressionOnPredColumns::GetLeaveOneOutPredictions");
}

// ----- kriging

QVKrigeOnPredColumns::QVKrigeOnPredColumns(const std::vector<unsigned int>& kernelTypes,
                                           const std::string& responseColName,
                                           const std::vector<std::string>& predColNames,
                                           const QVDataTable& table)
    : QVLinearSmootherOnPredColumnsBase(responseColName, predColNames, table) {
  SetKernels(kernelTypes, "Constructor for QVKrigeOnPredColumns");
  paramNames_.insert(paramNames_.end(), {"nugget", "sill"});
}

unsigned int QVKrigeOnPredColumns::GetTypeOfLinearSmootherOnPredColumns() const {
  return QVLinearSmootherOnPredColumnsType::Krige;
}

QVStatModelResult QVKrigeOnPredColumns::SetModelParams(const std::vector<double>& params) {
  static const char* const where = "QVKrigeOnPredColumns::SetModelParams";
  if (params.size() != GetNumModelParams())
    return QVFailure(Failure::WrongInputVectorSize, where)
           << "size input params = " << params.size() << " size required = " << GetNumModelParams();
  if (!IsConstructed())
    return QVFailure(Failure::ObjectNotValid, where) << GetResultOfConstructor();
  const double nugget = params[params.size() - 2];
  if (nugget > params.back())
    return QVFailure(Failure::ArgumentOutOfRange, where)
           << "nugget (" << nugget << "); greater than sill (" << params.back() << ")";
  params_ = params;
  QVStatModelResult result = GetTrainingSetLLTDecomposition();
  if (result.IsSuccessful())
    result = QVReadResponses(responses_, GetResponseColumn(), GetTrainingRows(),
                             "QVKrigeOnPredColumns::GetTrainingSetTransformedResponse");
  if (QVFailedIn(result, where)) {
    params_.clear();
    return result;
  }
  meanResponse_ = QVSolveSimpleKriging(weights_, factor_, responses_);
  return true;
}

QVStatModelResult QVKrigeOnPredColumns::GetTrainingSetLLTDecomposition() {
  static const char* const where = "QVKrigeOnPredColumns::GetTrainingSetLLTDecomposition";
  QVStatModelResult result = FillKernelMatrix(factor_, GetSill() - GetNugget(), where);
  if (result.NotSuccessful()) return result;
  factor_.diagonal().array() += GetNugget();
  if (QVFactoriseInPlace(factor_)) return true;
  return QVFailure(Failure::SingularScaleOrCovariance, where)
         << "eigen llt.info() reports a numerical issue";
}

QVStatModelResult QVKrigeOnPredColumns::GetPredictedResponse(
    double& predicted, double& averageWeight, double& estimatedError,
    const std::vector<QVDataTableCol>& similarities) const {
  predicted = averageWeight = estimatedError = BadDouble;
  Matrices values;
  QVStatModelResult result =
      ReadSimilarities(values, similarities, "QVKrigeOnPredColumns::GetPredictedResponse");
  QVSimilarityPredictions predictions;
  if (result.IsSuccessful()) result = GetPredictedResponses(predictions, values);
  if (result.NotSuccessful()) return result;
  predicted = predictions.predicted[0];
  averageWeight = predictions.averageWeights[0];
  estimatedError = predictions.estimatedErrors[0];
  return true;
}

QVStatModelResult QVKrigeOnPredColumns::GetPredictedResponses(QVSimilarityPredictions& predictions,
                                                              const Matrices& similarities) const {
  static const char* const where = "QVKrigeOnPredColumns::GetPredictedResponse";
  predictions = {};
  QVStatModelResult result = CheckParams(where);
  if (result.IsSuccessful()) result = CheckSimilarities(similarities, where);
  if (result.NotSuccessful()) return result;
  std::vector<const double*> each;
  for (const Eigen::MatrixXd& s : similarities) each.push_back(s.data());
  Eigen::MatrixXd covariances(similarities[0].rows(), similarities[0].cols());
  MultiplyKernels(each, static_cast<std::size_t>(covariances.size()), covariances.data());
  for (Eigen::Index object = 0; object < covariances.cols(); ++object)
    predictions.averageWeights.push_back(
        QVMean(covariances.col(object).data(), covariances.rows()));
  covariances *= GetSill() - GetNugget();
  QVPredictBySimpleKriging(predictions, covariances, factor_, weights_, meanResponse_, GetSill());
  return true;
}

QVStatModelResult QVKrigeOnPredColumns::GetLeaveOneOutPredictions(
    QVSimilarityPredictions& predictions) const {
  static const char* const where = "QVKrigeOnPredColumns::GetLeaveOneOutPredictions";
  predictions = {};
  if (!ModelIsValid()) return QVFailure(Failure::ObjectNotValid, where) << GetResultOfConstructor();
  const Eigen::Index n = responses_.size();
  if (n < 2) return QVFailure(Failure::NoData, where);
  Eigen::MatrixXd kernel;
  QVStatModelResult result = FillKernelMatrix(kernel, 1.0, where);
  if (result.NotSuccessful()) return result;
  kernel.diagonal().setZero();
  const Eigen::VectorXd sums = kernel.selfadjointView<Eigen::Lower>() * Eigen::VectorXd::Ones(n);
  for (Eigen::Index i = 0; i < n; ++i)
    predictions.averageWeights.push_back(sums[i] / static_cast<double>(n - 1));
  Eigen::MatrixXd whitening = Eigen::MatrixXd::Identity(n, n);
  QVSolveLower(factor_, whitening);
  QVLeaveOneOutAroundMean(predictions, whitening, responses_);
  return true;
}

// ----- by code

QVLinearSmootherOnPredColumnsBase* QVGetLinearSmootherOnPredColumns(
    unsigned int smootherType, const std::vector<unsigned int>& kernelTypes,
    const std::string& responseColName, const std::vector<std::string>& predColNames,
    const QVDataTable& table) {
  if (smootherType == QVLinearSmootherOnPredColumnsType::Krige)
    return new QVKrigeOnPredColumns(kernelTypes, responseColName, predColNames, table);
  return new QVNullRegressionOnPredColumns;
}

}  // namespace QVStats
