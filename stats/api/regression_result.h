/// \file
/// \brief What a regression hands back: its outcome, its parameters, and a table of predictions and
/// residuals.
#ifndef QVSTATS_API_REGRESSION_RESULT_H
#define QVSTATS_API_REGRESSION_RESULT_H

#include <cstddef>
#include <string>
#include <vector>

#include "stats/api/data_table.h"
#include "stats/api/export.h"
#include "stats/api/stat_model.h"

namespace QVStats {

/// The result of a smoother of one predictor column. It never changes, and it does not check what
/// it is given.
class QVSTATS_EXPORT QVUnivariateRegressionResult {
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

  QVStatModelResult GetResultOfRegression() const { return result_; }
  const QVDataTable& GetRegResultDataTable() const { return table_; }
  /// A column of the result table; fails with ColumnNotFound.
  QVDataTableCol GetColumnFromName(QVStatModelResult& result, const std::string& name) const {
    return table_.GetColumnFromName(result, name);
  }

  /// Model, outcome and parameters, a line each, then the summaries of the table's columns. A
  /// parameter without a value "is Not Defined".
  std::string PrintSummary() const;
  /// The same with the start of the columns' data: at most `first` rows and `last` values a row.
  std::string PrintSummaryPlusFirstRowsOfData(std::size_t first, std::size_t last) const;

 private:
  QVStatModelResult result_;
  std::string smootherName_;
  std::string description_;
  QVDataTable table_;
  std::vector<double> paramValues_;
  std::vector<std::string> paramNames_;
  std::size_t predictorSubCol_;
};

/// The result of a smoother on similarity; as QVUnivariateRegressionResult, but that the record of
/// a failure names its model "Null Model" and describes itself as "Null Results".
class QVSTATS_EXPORT QVSimilarityRegressionResult {
 public:
  explicit QVSimilarityRegressionResult(const QVStatModelResult& result);
  QVSimilarityRegressionResult(const QVStatModelResult& result, const std::string& smootherName,
                               const std::string& description, const QVDataTable& table,
                               const std::vector<double>& paramValues,
                               const std::vector<std::string>& paramNames);

  QVStatModelResult GetResultOfRegression() const { return result_; }
  const QVDataTable& GetRegResultDataTable() const { return table_; }
  QVDataTableCol GetColumnFromName(QVStatModelResult& result, const std::string& name) const {
    return table_.GetColumnFromName(result, name);
  }

  std::string PrintSummary() const;
  std::string PrintSummaryPlusFirstRowsOfData(std::size_t first, std::size_t last) const;

 private:
  QVStatModelResult result_;
  std::string smootherName_;
  std::string description_;
  QVDataTable table_;
  std::vector<double> paramValues_;
  std::vector<std::string> paramNames_;
};

}  // namespace QVStats

#endif  // QVSTATS_API_REGRESSION_RESULT_H
