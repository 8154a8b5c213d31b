#include "stats/api/regression_result.h"

#include <sstream>

#include "stats/api/data_table_column_functions.h"
#include "stats/api/stats_data_types.h"
#include "stats/failure.h"

namespace QVStats {

namespace {

struct Heading {
  const std::string& smootherName;
  const std::string& description;
  const QVStatModelResult& result;
  const std::vector<double>& paramValues;
  const std::vector<std::string>& paramNames;
};

std::string FormatHeading(const Heading& heading) {
  std::ostringstream text;
  text << "Regression Model: " << heading.smootherName << '\n'
       << "Result type: " << heading.description << '\n';
  if (heading.result.NotSuccessful()) text << "Result of Regression:\n";
  text << heading.result.ReportStatResultDetails() << '\n' << "Model Parameters: ";
  for (std::size_t i = 0; i < heading.paramNames.size(); ++i) {
    text << heading.paramNames[i] << ": ";
    if (i < heading.paramValues.size())
      text << heading.paramValues[i] << '\n';
    else
      text << "Parameter is Not Defined\n";
  }
  return text.str();
}

std::string Summarise(const Heading& heading, const QVDataTable& table) {
  std::string text = FormatHeading(heading);
  for (const QVDataTableCol& column : table.GetColumns()) text += column.PrintSummary();
  return text;
}

std::string SummariseWithData(const Heading& heading, const QVDataTable& table, std::size_t first,
                              std::size_t last) {
  std::string text = FormatHeading(heading);
  for (const QVDataTableCol& column : table.GetColumns())
    text += column.PrintSummaryPlusStartOfData(table, first, last);
  return text;
}

const char* const kNullTable = "Null Results";

}  // namespace

QVUnivariateRegressionResult::QVUnivariateRegressionResult(const QVStatModelResult& result)
    : result_(result), table_(kNullTable), predictorSubCol_(QVStatsBadData::BadIndex) {}

QVUnivariateRegressionResult::QVUnivariateRegressionResult(
    const QVStatModelResult& result, const std::string& smootherName,
    const std::string& description, const QVDataTable& table,
    const std::vector<double>& paramValues, const std::vector<std::string>& paramNames,
    std::size_t predictorSubCol)
    : result_(result),
      smootherName_(smootherName),
      description_(description),
      table_(table),
      paramValues_(paramValues),
      paramNames_(paramNames),
      predictorSubCol_(predictorSubCol) {}

std::string QVUnivariateRegressionResult::PrintSummary() const {
  return Summarise({smootherName_, description_, result_, paramValues_, paramNames_}, table_);
}

std::string QVUnivariateRegressionResult::PrintSummaryPlusFirstRowsOfData(std::size_t first,
                                                                          std::size_t last) const {
  return SummariseWithData({smootherName_, description_, result_, paramValues_, paramNames_},
                           table_, first, last);
}

double QVUnivariateRegressionResult::GetSampleStatisticOnColumn(QVStatModelResult& result,
                                                                std::size_t& numMissing,
                                                                std::size_t& numBad,
                                                                unsigned int statisticType,
                                                                std::string colName) const {
  const double value = QVGetSampleStatisticForColumnOfRatioType(
      result, numMissing, numBad, statisticType, table_, colName, predictorSubCol_);
  QVFailedIn(result, "QVUnivariateRegressionResult::GetSampleStatisticOnColumn");
  return value;
}

double QVUnivariateRegressionResult::GetSampleStatisticOnColumnPair(
    QVStatModelResult& result, std::size_t& numMissing, std::size_t& numBad,
    unsigned int statisticType, const std::string& colName1, const std::string& colName2) const {
  return QVGetTwoSampleStatisticForTwoColumnsOfRatioType(result, numMissing, numBad, statisticType,
                                                         table_, colName1, colName2, 0, 0);
}

QVStatModelResult QVUnivariateRegressionResult::GetScatterPlotPtsForColumnNamePair(
    QVMath::QVDataSeries& points, double& xmin, double& xmax, double& ymin, double& ymax,
    const std::string& xColName, const std::string& yColName, std::size_t xSubCol,
    std::size_t ySubCol, double xmin0, double xmax0, double ymin0, double ymax0) const {
  return QVGetScatterPlotPtsForColumnNamePair(points, xmin, xmax, ymin, ymax, table_, xColName,
                                              yColName, xSubCol, ySubCol, xmin0, xmax0, ymin0,
                                              ymax0);
}

QVSimilarityRegressionResult::QVSimilarityRegressionResult(const QVStatModelResult& result)
    : result_(result),
      smootherName_("Null Model"),
      description_("Null Results"),
      table_(kNullTable) {}

QVSimilarityRegressionResult::QVSimilarityRegressionResult(
    const QVStatModelResult& result, const std::string& smootherName,
    const std::string& description, const QVDataTable& table,
    const std::vector<double>& paramValues, const std::vector<std::string>& paramNames)
    : result_(result),
      smootherName_(smootherName),
      description_(description),
      table_(table),
      paramValues_(paramValues),
      paramNames_(paramNames) {}

std::string QVSimilarityRegressionResult::PrintSummary() const {
  return Summarise({smootherName_, description_, result_, paramValues_, paramNames_}, table_);
}

std::string QVSimilarityRegressionResult::PrintSummaryPlusFirstRowsOfData(std::size_t first,
                                                                          std::size_t last) const {
  return SummariseWithData({smootherName_, description_, result_, paramValues_, paramNames_},
                           table_, first, last);
}

double QVSimilarityRegressionResult::GetSampleStatisticOnColumn(QVStatModelResult& result,
                                                                std::size_t& numMissing,
                                                                std::size_t& numBad,
                                                                unsigned int statisticType,
                                                                std::string colName) const {
  const double value = QVGetSampleStatisticForColumnOfRatioType(result, numMissing, numBad,
                                                                statisticType, table_, colName, 0);
  QVFailedIn(result, "QVSimilarityRegressionResult::GetSampleStatisticOnColumn");
  return value;
}

double QVSimilarityRegressionResult::GetSampleStatisticOnColumnPair(
    QVStatModelResult& result, std::size_t& numMissing, std::size_t& numBad,
    unsigned int statisticType, const std::string& colName1, const std::string& colName2) const {
  return QVGetTwoSampleStatisticForTwoColumnsOfRatioType(result, numMissing, numBad, statisticType,
                                                         table_, colName1, colName2, 0, 0);
}

QVStatModelResult QVSimilarityRegressionResult::GetScatterPlotPtsForColumnNamePair(
    QVMath::QVDataSeries& points, double& xmin, double& xmax, double& ymin, double& ymax,
    const std::string& xColName, const std::string& yColName, std::size_t xSubCol,
    std::size_t ySubCol, double xmin0, double xmax0, double ymin0, double ymax0) const {
  return QVGetScatterPlotPtsForColumnNamePair(points, xmin, xmax, ymin, ymax, table_, xColName,
                                              yColName, xSubCol, ySubCol, xmin0, xmax0, ymin0,
                                              ymax0);
}

}  // namespace QVStats
