#include "stats/api/regression_result.h"

#include <sstream>

#include "stats/api/stats_data_types.h"

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

}  // namespace QVStats
