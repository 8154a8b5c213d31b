/// \file
/// \brief The columns and tables of predictions that the smoothers hand back.
#ifndef QVSTATS_LINEAR_SMOOTHER_TABLES_H
#define QVSTATS_LINEAR_SMOOTHER_TABLES_H

#include <Eigen/Core>
#include <cstddef>
#include <string>
#include <vector>

#include "stats/api/data_table.h"
#include "stats/api/linear_smoother_impl.h"
#include "stats/api/stats_data_types.h"
#include "stats/failure.h"

namespace QVStats {

/// Where the values of a result column stand: at value `subCol` of the rows, in a column of that
/// many rows and values a row.
struct QVResultCells {
  const std::vector<std::size_t>& rows;
  std::size_t numRows;
  std::size_t subCol = 0;
  std::size_t numColumnsInCol = 1;
};

/// A ratio column with a value for each of the rows, missing elsewhere.
inline QVDataTableCol QVMakeResultColumn(const std::string& name, const std::string& fullName,
                                         const std::vector<double>& values,
                                         const QVResultCells& cells) {
  std::vector<QVRowColValue> entries;
  entries.reserve(values.size());
  for (std::size_t i = 0; i < values.size(); ++i)
    entries.emplace_back(values[i], cells.rows[i], cells.subCol);
  return QVDataTableCol(name, fullName, QVStatVariableType::Ratio, cells.numRows, entries,
                        cells.numColumnsInCol, false);
}

/// Makes `results` the rows of a table with other columns, in their order.
inline QVStatModelResult QVReplaceColumns(QVDataTable& results, const QVDataTable& table,
                                          const std::vector<QVDataTableCol>& columns) {
  results = table;
  results.ClearColumns();
  QVStatModelResult result = true;
  for (const QVDataTableCol& column : columns)
    if (result.IsSuccessful()) result = results.AddColumn(column);
  return result;
}

/// Reads the responses of some rows. Fails with MissingOrBadResponseValue at one that is missing,
/// bad or not there.
inline QVStatModelResult QVReadResponses(Eigen::VectorXd& responses, const QVDataTableCol& column,
                                         const std::vector<std::size_t>& rows, const char* where) {
  responses.resize(static_cast<Eigen::Index>(rows.size()));
  column.GetImpl()->GetDoubles(QVRowNumbers(rows), 0, responses.data());
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const double y = responses[static_cast<Eigen::Index>(i)];
    if (y == QVStatsBadData::BadIndexDouble || y == QVStatsBadData::MissingDouble ||
        y == QVStatsBadData::BadDouble)
      return QVFailure(QVStatModelFailureType::MissingOrBadResponseValue, where)
             << "at row number(" << rows[i]
             << "), response value = " << column.GetString(rows[i], 0);
  }
  return true;
}

inline void QVAppend(QVSimilarityPredictions& all, const QVSimilarityPredictions& part) {
  const auto append = [](std::vector<double>& to, const std::vector<double>& from) {
    to.insert(to.end(), from.begin(), from.end());
  };
  append(all.predicted, part.predicted);
  append(all.averageWeights, part.averageWeights);
  append(all.estimatedErrors, part.estimatedErrors);
}

/// The three columns of what a model predicts from similarities.
struct QVPredictionColumns {
  QVDataTableCol predicted;
  QVDataTableCol averageWeights;
  QVDataTableCol estimatedErrors;

  QVPredictionColumns() = default;
  QVPredictionColumns(const QVSimilarityPredictions& all, const QVResultCells& cells,
                      const std::string& smoother)
      : predicted(QVMakeResultColumn("Predicted Response", "Predicted Response for" + smoother,
                                     all.predicted, cells)),
        averageWeights(QVMakeResultColumn("Average Similarity Weights",
                                          "Average Similarity Weights" + smoother,
                                          all.averageWeights, cells)),
        estimatedErrors(QVMakeResultColumn("Estimated Prediction Error",
                                           "Estimated Prediction Error" + smoother,
                                           all.estimatedErrors, cells)) {}
};

/// The result table of a model that predicts from similarities: response, predictions, weights,
/// errors and residuals under their names there.
inline QVStatModelResult QVTabulatePredictions(QVDataTable& results, const QVDataTable& table,
                                               const std::string& responseColName,
                                               QVPredictionColumns columns) {
  namespace Columns = QVSimilarityRegressionResultColTypes;
  QVStatModelResult result;
  const QVDataTableCol response = table.GetColumnFromName(result, responseColName);
  if (result.NotSuccessful()) return result;
  QVDataTableCol residual = response - columns.predicted;
  QVDataTableCol absolute = QVAbsoluteValue(residual);
  columns.predicted.SetColumnName(Columns::TypeName[Columns::PredictedResponses]);
  columns.averageWeights.SetColumnName(Columns::TypeName[Columns::AverageSimilarityWeights]);
  columns.estimatedErrors.SetColumnName(Columns::TypeName[Columns::EstimatedPredictionError]);
  residual.SetColumnName(Columns::TypeName[Columns::ResidualErrors]);
  absolute.SetColumnName(Columns::TypeName[Columns::AbsoluteResidualErrors]);
  return QVReplaceColumns(results, table,
                          {response, columns.predicted, columns.averageWeights,
                           columns.estimatedErrors, residual, absolute});
}

/// Whether the rows of a test table have that column, and it fits them.
inline QVStatModelResult QVCheckTestColumn(const QVDataTable& table, const std::string& name) {
  QVStatModelResult result;
  const QVDataTableCol column = table.GetColumnFromName(result, name);
  if (result.NotSuccessful()) return result;
  QVDataTable emptied("");
  return QVReplaceColumns(emptied, table, {column});
}

/// Predictions and residuals of a table's rows by a smoother on similarities, as the record that
/// `where` hands back.
template <class Smoother>
QVSimilarityRegressionResult QVGetRegressionResults(const Smoother& smoother,
                                                    const std::string& name, const char* where,
                                                    const std::string& description,
                                                    const std::string& responseColName,
                                                    const QVDataTable& table) {
  using Result = QVSimilarityRegressionResult;
  if (!smoother.ModelIsValid())
    return Result(QVFailure(QVStatModelFailureType::ObjectNotValid, where)
                  << smoother.GetResultOfConstructor());
  QVPredictionColumns columns;
  QVStatModelResult result = smoother.GetPredictedResponseCols(
      columns.predicted, columns.averageWeights, columns.estimatedErrors, table);
  QVDataTable results("");
  if (result.IsSuccessful())
    result = QVTabulatePredictions(results, table, responseColName, columns);
  if (QVFailedIn(result, where)) return Result(result);
  return Result(result, name, description, results, smoother.GetModelParams(),
                smoother.GetModelParamNames());
}

}  // namespace QVStats

#endif  // QVSTATS_LINEAR_SMOOTHER_TABLES_H
