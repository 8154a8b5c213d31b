/// \file
/// \brief What a regression hands back: its outcome, its parameters, and a table of predictions and
/// residuals.
#ifndef QVSTATS_API_REGRESSION_RESULT_H
#define QVSTATS_API_REGRESSION_RESULT_H

#include <cstddef>
#include <string>
#include <vector>

#include "platform/math/data_series.h"
#include "stats/api/data_table.h"
#include "stats/api/export.h"
#include "stats/api/stat_model.h"

namespace QVStats {

/// The result of a smoother. It never changes, and it does not check what it is given.
class QVSTATS_EXPORT QVRegressionResult {
 public:
  QVStatModelResult GetResultOfRegression() const { return result_; }
  const QVDataTable& GetRegResultDataTable() const { return table_; }
  /// A column of the result table; fails with ColumnNotFound.
  QVDataTableCol GetColumnFromName(QVStatModelResult& result, const std::string& name) const {
    return table_.GetColumnFromName(result, name);
  }

  /// A code of QVSampleStatisticType of a column, with the counts of missing and bad cells: of
  /// value 0 of its rows, or of the value of the predictor's rows that the smoother used. Failures:
  /// those of QVGetSampleStatisticForColumnOfRatioType; the bad double then.
  double GetSampleStatisticOnColumn(QVStatModelResult& result, std::size_t& numMissing,
                                    std::size_t& numBad, unsigned int statisticType,
                                    std::string colName) const;
  /// A code of QVTwoSampleStatisticType, of value 0 of the rows of both columns; also of
  /// those whose values stand elsewhere.
  double GetSampleStatisticOnColumnPair(QVStatModelResult& result, std::size_t& numMissing,
                                        std::size_t& numBad, unsigned int statisticType,
                                        const std::string& colName1,
                                        const std::string& colName2) const;
  /// The pairs of values of two columns as points, and their ranges, widened from four starting
  /// values: QVGetScatterPlotPtsForColumnNamePair on the result table.
  QVStatModelResult GetScatterPlotPtsForColumnNamePair(
      QVMath::QVDataSeries& points, double& xmin, double& xmax, double& ymin, double& ymax,
      const std::string& xColName, const std::string& yColName, std::size_t xSubCol,
      std::size_t ySubCol, double xmin0, double xmax0, double ymin0, double ymax0) const;

  /// Model, outcome and parameters, a line each, then the summaries of the table's columns. A
  /// parameter without a value "is Not Defined".
  std::string PrintSummary() const;
  /// The same with the start of the columns' data: at most `first` rows and `last` values a row.
  std::string PrintSummaryPlusFirstRowsOfData(std::size_t first, std::size_t last) const;

 protected:
  /// \param where the caller's name of GetSampleStatisticOnColumn, for its failures.
  /// \param subCol the value of a column's rows of which it takes statistics.
  QVRegressionResult(const char* where, std::size_t subCol, const QVStatModelResult& result,
                     const std::string& smootherName, const std::string& description,
                     const QVDataTable& table, const std::vector<double>& paramValues,
                     const std::vector<std::string>& paramNames);

 private:
  std::string FormatHeading() const;

  const char* where_;
  std::size_t subCol_;
  QVStatModelResult result_;
  std::string smootherName_;
  std::string description_;
  QVDataTable table_;
  std::vector<double> paramValues_;
  std::vector<std::string> paramNames_;
};

/// The result of a smoother of one predictor column.
class QVSTATS_EXPORT QVUnivariateRegressionResult : public QVRegressionResult {
 public:
  /// A failure: no smoother name and description, an empty table "Null Results", and SIZE_MAX as
  /// the predictor's sub-column.
  explicit QVUnivariateRegressionResult(const QVStatModelResult& result);
  /// \param smootherName the model's own name.
  /// \param description what the table holds, "Training Set Results" or "Test Set Results".
  /// \param predictorSubCol the value of the predictor column's rows that the model used.
  QVUnivariateRegressionResult(const QVStatModelResult& result, const std::string& smootherName,
                               const std::string& description, const QVDataTable& table,
                               const std::vector<double>& paramValues,
                               const std::vector<std::string>& paramNames,
                               std::size_t predictorSubCol);
};

/// The result of a smoother on similarity.
class QVSTATS_EXPORT QVSimilarityRegressionResult : public QVRegressionResult {
 public:
  /// A failure, of the model "Null Model" with the description "Null Results".
  explicit QVSimilarityRegressionResult(const QVStatModelResult& result);
  QVSimilarityRegressionResult(const QVStatModelResult& result, const std::string& smootherName,
                               const std::string& description, const QVDataTable& table,
                               const std::vector<double>& paramValues,
                               const std::vector<std::string>& paramNames);
};

}  // namespace QVStats

#endif  // QVSTATS_API_REGRESSION_RESULT_H
