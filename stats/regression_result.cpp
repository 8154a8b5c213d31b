#include "stats/api/regression_result.h"

#include <sstream>

#include "stats/api/data_table_column_functions.h"
#include "stats/api/stats_data_types.h"
#include "stats/failure.h"

namespace QVStats {

namespace {

const char* const kNullTable = "Null Results";

}  // namespace

QVRegressionResult::QVRegressionResult(const char* where, std::size_t subCol,
                                       const QVStatModelResult& result,
                                       const std::string& smootherName,
                                       const std::string& description, const QVDataTable& table,
                                       const std::vector<double>& paramValues,
                                       const std::vector<std::string>& paramNames)
    : where_(where),
      subCol_(subCol),
      result_(result),
      smootherName_(smootherName),
      description_(description),
      table_(table),
      paramValues_(paramValues),
      paramNames_(paramNames) {}

std::string QVRegressionResult::FormatHeading() const {
  std::ostringstream text;
  text << "Regression Model: " << smootherName_ << '\n' << "Result type: " << description_ << '\n';
  if (result_.NotSuccessful()) text << "Result of Regression:\n";
  text << result_.ReportStatResultDetails() << '\n' << "Model Parameters: ";
  for (std::size_t i = 0; i < paramNames_.size(); ++i) {
    text << paramNames_[i] << ": ";
    if (i < paramValues_.size())
      text << paramValues_[i] << '\n';
    else
      text << "Parameter is Not Defined\n";
  }
  return text.str();
}

std::string QVRegressionResult::PrintSummary() const {
  std::string text = FormatHeading();
  for (const QVDataTableCol& column : table_.GetColumns()) text += column.PrintSummary();
  return text;
}

std::string QVRegressionResult::PrintSummaryPlusFirstRowsOfData(std::size_t first,
                                                                std::size_t last) const {
  std::string text = FormatHeading();
  for (const QVDataTableCol& column : table_.GetColumns())
    text += column.PrintSummaryPlusStartOfData(table_, first, last);
  return text;
}

double QVRegressionResult::GetSampleStatisticOnColumn(
    QVStatModelResult& result, std::size_t& numMissing, std::size_t& numBad,
    unsigned int statisticType,
    std::string colName) const {  // NOLINT: part of the interface
  const double value = QVGetSampleStatisticForColumnOfRatioType(
      result, numMissing, numBad, statisticType, table_, colName, subCol_);
  QVFailedIn(result, where_);
  return value;
}

double QVRegressionResult::GetSampleStatisticOnColumnPair(
    QVStatModelResult& result, std::size_t& numMissing, std::size_t& numBad,
    unsigned int statisticType, const std::string& colName1, const std::string& colName2) const {
  return QVGetTwoSampleStatisticForTwoColumnsOfRatioType(result, numMissing, numBad, statisticType,
                                                         table_, colName1, colName2, 0, 0);
}

QVStatModelResult QVRegressionResult::GetScatterPlotPtsForColumnNamePair(
    QVMath::QVDataSeries& points, double& xmin, double& xmax, double& ymin, double& ymax,
    const std::string& xColName, const std::string& yColName, std::size_t xSubCol,
    std::size_t ySubCol, double xmin0, double xmax0, double ymin0, double ymax0) const {
  return QVGetScatterPlotPtsForColumnNamePair(points, xmin, xmax, ymin, ymax, table_, xColName,
                                              yColName, xSubCol, ySubCol, xmin0, xmax0, ymin0,
                                              ymax0);
}

QVUnivariateRegressionResult::QVUnivariateRegressionResult(const QVStatModelResult& result)
    : QVUnivariateRegressionResult(result, "", "", QVDataTable(kNullTable), {}, {},
                                   QVStatsBadData::BadIndex) {}

QVUnivariateRegressionResult::QVUnivariateRegressionResult(
    const QVStatModelResult& result, const std::string& smootherName,
    const std::string& description, const QVDataTable& table,
    const std::vector<double>& paramValues, const std::vector<std::string>& paramNames,
    std::size_t predictorSubCol)
    : QVRegressionResult("QVUnivariateRegressionResult::GetSampleStatisticOnColumn",
                         predictorSubCol, result, smootherName, description, table, paramValues,
                         paramNames) {}

QVSimilarityRegressionResult::QVSimilarityRegressionResult(const QVStatModelResult& result)
    : QVSimilarityRegressionResult(result, "Null Model", "Null Results", QVDataTable(kNullTable),
                                   {}, {}) {}

QVSimilarityRegressionResult::QVSimilarityRegressionResult(
    const QVStatModelResult& result, const std::string& smootherName,
    const std::string& description, const QVDataTable& table,
    const std::vector<double>& paramValues, const std::vector<std::string>& paramNames)
    : QVRegressionResult("QVSimilarityRegressionResult::GetSampleStatisticOnColumn", 0, result,
                         smootherName, description, table, paramValues, paramNames) {}

}  // namespace QVStats
