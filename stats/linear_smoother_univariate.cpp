#include "stats/api/linear_smoother_univariate.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

#include "platform/system/error_handler.h"
#include "stats/api/data_table_column_functions.h"
#include "stats/api/data_vector_pairs.h"
#include "stats/api/stats_data_types.h"
#include "stats/failure.h"
#include "stats/kernel_sums.h"
#include "stats/linear_smoother_tables.h"

namespace QVStats {

namespace {

namespace Failure = QVStatModelFailureType;
namespace Type = QVUnivarLinearSmootherType;
using QVStatsBadData::BadDouble;
using QVStatsBadData::MissingDouble;

const char* const kColumnsTable = "Response and Predictor Columns";
constexpr std::size_t kNoRow = std::numeric_limits<std::size_t>::max();
/// Added to every weight of the kernel regression, so that a query far from all points has a mean.
constexpr double kLeastWeight = 1.1920928955078125e-07;

bool IsMissingOrBad(double value) { return value == MissingDouble || value == BadDouble; }

/// The responses of the rows, at the cells of the predictions.
QVDataTableCol AlignResponses(const QVDataTableCol& response, const QVResultCells& cells) {
  if (cells.numColumnsInCol == 1) return response;
  return QVMakeResultColumn(response.GetColumnName(), response.GetFullColumnName(),
                            response.GetDoubles(QVRowNumbers(cells.rows)), cells);
}

template <class... Arguments>
QVUniVarLinearSmootherBase* CreateSmoother(unsigned int type, unsigned int kernelType,
                                           const Arguments&... arguments) {
  if (type == Type::SimpleLinearRegression) return new QVSimpleLinearRegression(arguments...);
  if (type == Type::KernelRegression) return new QVUniVarKernelRegression(kernelType, arguments...);
  return new QVNullRegression;
}

}  // namespace

QVUniVarLinearSmootherBase::QVUniVarLinearSmootherBase(const std::string& responseColName,
                                                       const std::string& predictorColName,
                                                       const QVDataTable& table,
                                                       std::size_t predictorSubCol)
    : responseColName_(responseColName),
      predictorColName_(predictorColName),
      predictorSubCol_(predictorSubCol),
      table_(table),
      baseResult_(QVCalledFrom("Constructor of QVUniVarLinearSmootherBase",
                               SetupDataTableFromTrainingSetNamesAndDataTable(table))) {}

QVUniVarLinearSmootherBase::QVUniVarLinearSmootherBase(const QVDataTableCol& responseCol,
                                                       const QVDataTableCol& predictorCol,
                                                       std::size_t predictorSubCol)
    : responseColName_(responseCol.GetColumnName()),
      predictorColName_(predictorCol.GetColumnName()),
      predictorSubCol_(predictorSubCol),
      table_(kColumnsTable),
      baseResult_(QVCalledFrom("Constructor of QVUniVarLinearSmootherBase",
                               SetupTrainingSetColsFromCols(responseCol, predictorCol))) {}

QVUniVarLinearSmootherBase::~QVUniVarLinearSmootherBase() = default;

QVStatModelResult QVUniVarLinearSmootherBase::SetupDataTableFromTrainingSetNamesAndDataTable(
    const QVDataTable& table) {
  static const char* const where =
      "QVUniVarLinearSmootherBase::SetupDataTableFromTrainingSetNamesAndDataTable";
  QVStatModelResult result;
  const QVDataTableCol predictor = table.GetColumnFromName(result, predictorColName_);
  table_.ClearColumns();
  if (QVFailedIn(result, where)) return result;
  const QVDataTableCol response = table.GetColumnFromName(result, responseColName_);
  if (QVFailedIn(result, where)) return result;
  return QVCalledFrom(where, QVReplaceColumns(table_, table, {predictor, response}));
}

QVStatModelResult QVUniVarLinearSmootherBase::SetupTrainingSetColsFromCols(
    const QVDataTableCol& responseCol, const QVDataTableCol& predictorCol) {
  return QVCalledFrom(
      "QVUniVarLinearSmootherBase::SetupTrainingSetColsFromCols",
      QVReplaceColumns(table_, QVDataTable(kColumnsTable), {predictorCol, responseCol}));
}

std::string QVUniVarLinearSmootherBase::GetNameOfUniVarLinearSmoother() const {
  return Type::TypeName[GetTypeOfUniVarLinearSmoother()];
}

QVStatModelResult QVUniVarLinearSmootherBase::TakeParams(const std::vector<double>& params,
                                                         const char* where) {
  if (params.size() != GetNumModelParams()) return QVFailure(Failure::WrongInputVectorSize, where);
  params_ = params;
  return true;
}

bool QVUniVarLinearSmootherBase::ModelIsValid() const { return IsConstructed(); }

std::string QVUniVarLinearSmootherBase::GetResultOfConstructor() const {
  return "Result of Base Constructor:\n" + baseResult_.ReportStatResultDetails() +
         "\nResult of Constructor:\n" + result_.ReportStatResultDetails() + "\n";
}

// ----- results

QVDataTableCol QVUniVarLinearSmootherBase::GetPredictedResponseCol(
    QVStatModelResult& result, const std::string& predictorColName, const QVDataTable& table,
    bool leaveOneOut, std::size_t predictorSubCol) const {
  const QVDataTableCol predictor = table.GetColumnFromName(result, predictorColName);
  if (QVFailedIn(result, "QVUniVarLinearSmootherBase::GetPredictedResponse"))
    return QVDataTableCol();
  const std::vector<std::size_t> rows = table.GetRowNumbers();
  std::vector<double> values = predictor.GetDoubles(QVRowNumbers(rows), predictorSubCol);
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if (IsMissingOrBad(values[i]))
      values[i] = MissingDouble;
    else if (leaveOneOut)
      values[i] = GetPredictedResponse(values[i], rows[i]);
    else
      values[i] = GetPredictedResponse(values[i]);
  }
  return QVMakeResultColumn(
      "Predicted Response", "Predicted Response for" + GetNameOfUniVarLinearSmoother(), values,
      {rows, predictor.GetTotalNumRowsInCol(), predictorSubCol, predictor.GetNumColumnsInCol()});
}

QVUnivariateRegressionResult QVUniVarLinearSmootherBase::GetRegressionResults(
    const std::string& description, const std::string& responseColName,
    const std::string& predictorColName, const QVDataTable& table, bool leaveOneOut,
    std::size_t predictorSubCol) const {
  static const char* const where = "QVUniVarLinearSmootherBase::GetRegressionResults";
  namespace Columns = QVUniVarRegressResultColTypes;
  using Result = QVUnivariateRegressionResult;
  if (!ModelIsValid())
    return Result(QVFailure(Failure::ObjectNotValid, where) << GetResultOfConstructor());
  QVStatModelResult result;
  QVDataTableCol predicted =
      GetPredictedResponseCol(result, predictorColName, table, leaveOneOut, predictorSubCol);
  if (QVFailedIn(result, where)) return Result(result);
  const QVDataTableCol response = table.GetColumnFromName(result, responseColName);
  if (QVFailedIn(result, where)) return Result(result);

  const std::vector<std::size_t> rows = table.GetRowNumbers();
  QVDataTableCol residual =
      AlignResponses(response, {rows, response.GetTotalNumRowsInCol(), predictorSubCol,
                                predicted.GetNumColumnsInCol()}) -
      predicted;
  QVDataTableCol absolute = QVAbsoluteValue(residual);
  predicted.SetColumnName(Columns::TypeName[Columns::PredictedResponses]);
  residual.SetColumnName(Columns::TypeName[Columns::ResidualErrors]);
  absolute.SetColumnName(Columns::TypeName[Columns::AbsoluteResidualErrors]);
  QVDataTable results("");
  result = QVReplaceColumns(
      results, table,
      {table.GetColumnFromName(predictorColName), response, predicted, residual, absolute});
  if (QVFailedIn(result, where)) return Result(result);
  return Result(result, GetNameOfUniVarLinearSmoother(), description, results, GetModelParams(),
                GetModelParamNames(), predictorSubCol);
}

QVUnivariateRegressionResult QVUniVarLinearSmootherBase::GetTrainingSetResults(
    bool leaveOneOut) const {
  return GetRegressionResults("Training Set Results", responseColName_, predictorColName_, table_,
                              leaveOneOut, predictorSubCol_);
}

QVUnivariateRegressionResult QVUniVarLinearSmootherBase::GetTestSetResults(
    const std::string& responseColName, const std::string& predictorColName,
    const QVDataTable& table, std::size_t predictorSubCol) const {
  for (const std::string& name : {responseColName, predictorColName}) {
    QVStatModelResult result = QVCheckTestColumn(table, name);
    if (QVFailedIn(result, "QVUniVarLinearSmootherBase::GetTestSetResults"))
      return QVUnivariateRegressionResult(result);
  }
  return GetRegressionResults("Test Set Results", responseColName, predictorColName, table, false,
                              predictorSubCol);
}

QVUnivariateRegressionResult QVUniVarLinearSmootherBase::GetTestSetResults(
    const QVDataTableCol& responseCol, const QVDataTableCol& predictorCol,
    std::size_t predictorSubCol) const {
  QVDataTable table(kColumnsTable);
  QVStatModelResult result =
      QVReplaceColumns(table, QVDataTable(kColumnsTable), {responseCol, predictorCol});
  if (QVFailedIn(result, "QVUniVarLinearSmootherBase::GetTestSetResults"))
    return QVUnivariateRegressionResult(result);
  return GetTestSetResults(responseCol.GetColumnName(), predictorCol.GetColumnName(), table,
                           predictorSubCol);
}

// ----- the null smoother

QVNullRegression::QVNullRegression() : QVUniVarLinearSmootherBase("", "", QVDataTable(""), 0) {
  result_.SetFailureTypeAndWhereFailed(Failure::ObjectNotValid, "Constructor of QVNullRegression");
}

unsigned int QVNullRegression::GetTypeOfUniVarLinearSmoother() const { return Type::Unknown; }

QVStatModelResult QVNullRegression::SetModelParams(const std::vector<double>&) {
  return QVFailure(Failure::ObjectNotValid, "QVNullRegression::SetModelParams");
}

double QVNullRegression::GetPredictedResponse(double) const { return BadDouble; }
double QVNullRegression::GetPredictedResponse(double, std::size_t) const { return BadDouble; }

// ----- the least-squares line

QVSimpleLinearRegression::QVSimpleLinearRegression(const std::string& responseColName,
                                                   const std::string& predictorColName,
                                                   const QVDataTable& table,
                                                   std::size_t predictorSubCol)
    : QVUniVarLinearSmootherBase(responseColName, predictorColName, table, predictorSubCol) {
  FitOnConstruction();
}

QVSimpleLinearRegression::QVSimpleLinearRegression(const QVDataTableCol& responseCol,
                                                   const QVDataTableCol& predictorCol,
                                                   std::size_t predictorSubCol)
    : QVUniVarLinearSmootherBase(responseCol, predictorCol, predictorSubCol) {
  FitOnConstruction();
}

void QVSimpleLinearRegression::FitOnConstruction() {
  paramNames_ = {"intercept of linear regression line", "slope of linear regression line"};
  result_ = true;
  result_ = QVCalledFrom("Constructor for QVSimpleLinearRegression",
                         SolveLeastSquaresForSlopeAndIntercept());
}

QVStatModelResult QVSimpleLinearRegression::SolveLeastSquaresForSlopeAndIntercept() {
  static const char* const where =
      "QVSimpleLinearRegression::SolveLeastSquaresForSlopeAndIntercept";
  params_.clear();
  if (!ModelIsValid()) return QVFailure(Failure::ObjectNotValid, where) << GetResultOfConstructor();
  QVStatModelResult result;
  std::size_t numMissing = 0;
  std::size_t numBad = 0;
  const auto [intercept, slope] = QVGetTwoSamplePairStatisticForTwoColumnsOfRatioType(
      result, numMissing, numBad, QVTwoSamplePairStatisticType::OLSRegression, GetTrainingTable(),
      GetPredictorColName(), GetResponseColName(), GetPredictorSubCol(), 0);
  if (QVFailedIn(result, where)) return result;
  params_ = {intercept, slope};
  return true;
}

unsigned int QVSimpleLinearRegression::GetTypeOfUniVarLinearSmoother() const {
  return Type::SimpleLinearRegression;
}

QVStatModelResult QVSimpleLinearRegression::SetModelParams(const std::vector<double>& params) {
  return TakeParams(params, "QVSimpleLinearRegression::SetModelParams");
}

double QVSimpleLinearRegression::GetPredictedResponse(double x) const {
  if (!QV_ASSERT(params_.size() == 2) || params_[1] == BadDouble) return BadDouble;
  return params_[0] + params_[1] * x;
}

double QVSimpleLinearRegression::GetPredictedResponse(double x, std::size_t) const {
  return GetPredictedResponse(x);
}

// ----- kernel regression

QVUniVarKernelRegression::QVUniVarKernelRegression(unsigned int kernelType,
                                                   const std::string& responseColName,
                                                   const std::string& predictorColName,
                                                   const QVDataTable& table,
                                                   std::size_t predictorSubCol)
    : QVUniVarLinearSmootherBase(responseColName, predictorColName, table, predictorSubCol),
      kernel_(kernelType) {
  SetUpKernel();
}

QVUniVarKernelRegression::QVUniVarKernelRegression(unsigned int kernelType,
                                                   const QVDataTableCol& responseCol,
                                                   const QVDataTableCol& predictorCol,
                                                   std::size_t predictorSubCol)
    : QVUniVarLinearSmootherBase(responseCol, predictorCol, predictorSubCol), kernel_(kernelType) {
  SetUpKernel();
}

void QVUniVarKernelRegression::SetUpKernel() {
  if (kernel_.GetTypeOfKernel() == QVKernelFunctionType::Null) {
    result_ = QVFailure(Failure::ObjectNotValid, "Constructor for QVUniVarKernelRegression")
              << "Null kernelFunction constructed";
    return;
  }
  paramNames_ = {"Parameter for Kernel of type " + kernel_.GetNameOfKernel()};
  result_ = true;
  if (IsConstructed()) ReadTrainingRows();
}

void QVUniVarKernelRegression::ReadTrainingRows() {
  const QVDataTable& table = GetTrainingTable();
  const std::vector<std::size_t> rows = table.GetRowNumbers();
  const std::vector<double> x = table.GetColumnFromName(GetPredictorColName())
                                    .GetDoubles(QVRowNumbers(rows), GetPredictorSubCol());
  const std::vector<double> y =
      table.GetColumnFromName(GetResponseColName()).GetDoubles(QVRowNumbers(rows));
  std::vector<std::size_t> order;
  for (std::size_t i = 0; i < rows.size(); ++i)
    if (!IsMissingOrBad(y[i]) && x[i] != MissingDouble) order.push_back(i);
  // Not-numbers last, so that there is an order.
  std::sort(order.begin(), order.end(), [&](std::size_t i, std::size_t j) {
    if (std::isnan(x[i]) || std::isnan(x[j]))
      return std::isnan(x[i]) == std::isnan(x[j]) ? rows[i] < rows[j] : std::isnan(x[j]);
    return x[i] != x[j] ? x[i] < x[j] : rows[i] < rows[j];
  });
  for (const std::size_t i : order) {
    x_.push_back(x[i]);
    y_.push_back(y[i]);
    rows_.push_back(rows[i]);
  }
  meanResponse_ = std::accumulate(y_.begin(), y_.end(), 0.0) / static_cast<double>(y_.size());
  if (!rows_.empty()) places_.assign(*std::max_element(rows_.begin(), rows_.end()) + 1, kNoRow);
  for (std::size_t place = rows_.size(); place-- > 0;) places_[rows_[place]] = place;
}

unsigned int QVUniVarKernelRegression::GetTypeOfUniVarLinearSmoother() const {
  return Type::KernelRegression;
}

bool QVUniVarKernelRegression::ModelIsValid() const { return IsConstructed() && !params_.empty(); }

QVStatModelResult QVUniVarKernelRegression::SetModelParams(const std::vector<double>& params) {
  QVStatModelResult result = TakeParams(params, "QVUniVarKernelRegression::SetModelParams");
  if (result.NotSuccessful() || !ModelIsValid()) return result;
  sums_.reset();
  const auto areFinite = [](const std::vector<double>& values) {
    return std::all_of(values.begin(), values.end(), [](double x) { return std::isfinite(x); });
  };
  if (!areFinite(x_) || !areFinite(y_) || !areFinite(params_)) return result;
  std::vector<double> deviations = y_;
  for (double& y : deviations) y -= meanResponse_;
  const auto sums = std::make_shared<QVKernelSums>(x_, std::move(deviations));
  sums->SetKernel(kernel_, params_[0]);
  sums_ = sums;
  return result;
}

double QVUniVarKernelRegression::GetPredictedResponse(double x) const {
  return GetPredictedResponse(x, kNoRow);
}

double QVUniVarKernelRegression::GetPredictedResponse(double x, std::size_t excludedRow) const {
  if (!ModelIsValid()) return BadDouble;
  if (!sums_ || !std::isfinite(x)) return PredictRowByRow(x, excludedRow);
  // A row that the table repeats stands together here: equal predictors are ordered by row.
  std::size_t first = excludedRow < places_.size() ? places_[excludedRow] : kNoRow;
  if (first == kNoRow) first = rows_.size();
  std::size_t last = first;
  while (last < rows_.size() && rows_[last] == excludedRow) ++last;
  const std::size_t count = rows_.size() - (last - first);
  if (count == 0) return std::numeric_limits<double>::quiet_NaN();
  QVKernelWeightedSum sum = sums_->Get(x, first, last);
  sum.weight += kLeastWeight * static_cast<double>(count);
  // The deviations of all rows sum to 0.
  for (std::size_t i = first; i < last; ++i)
    sum.response -= kLeastWeight * sums_->GetResponses()[i];
  return meanResponse_ + sum.response / sum.weight;
}

double QVUniVarKernelRegression::PredictRowByRow(double x, std::size_t excludedRow) const {
  QVKernelWeightedSum sum;
  for (std::size_t i = 0; i < x_.size(); ++i)
    if (rows_[i] != excludedRow) sum.Add(kernel_((x - x_[i]) * params_[0]) + kLeastWeight, y_[i]);
  return sum.response / sum.weight;
}

// ----- by code and by name

QVUniVarLinearSmootherBase* QVGetUniVarLinearSmoother(unsigned int type, unsigned int kernelType,
                                                      const std::string& responseColName,
                                                      const std::string& predictorColName,
                                                      const QVDataTable& table,
                                                      std::size_t predictorSubCol) {
  return CreateSmoother(type, kernelType, responseColName, predictorColName, table,
                        predictorSubCol);
}

QVUniVarLinearSmootherBase* QVGetUniVarLinearSmoother(unsigned int type, unsigned int kernelType,
                                                      const QVDataTableCol& responseCol,
                                                      const QVDataTableCol& predictorCol,
                                                      std::size_t predictorSubCol) {
  return CreateSmoother(type, kernelType, responseCol, predictorCol, predictorSubCol);
}

unsigned int QVGetLinearSmootherTypeFromName(const std::string& name) {
  if (name == "Linear" || name == Type::TypeName[Type::SimpleLinearRegression])
    return Type::SimpleLinearRegression;
  if (name == "Kernel" || name == Type::TypeName[Type::KernelRegression])
    return Type::KernelRegression;
  return Type::Unknown;
}

std::string QVGetLinearSmootherNameFromType(unsigned int type) {
  if (type < Type::NumTypes) return Type::TypeName[type];
  return "QVGetLinearSmootherNameFromType: argument out of Range.\nType must be less than " +
         std::to_string(Type::NumTypes);
}

}  // namespace QVStats
