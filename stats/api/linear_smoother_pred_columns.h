/// \file
/// \brief Kriging on several predictor columns at once: numbers and matrices of similarities.
///
///     QVLinearSmootherOnPredColumns model(
///         QVLinearSmootherOnPredColumnsType::Krige,
///         {QVSimilarityKernelType::Gaussian, QVSimilarityKernelType::Exponential}, "activity",
///         {"logP", "similarity"}, training);
///     const QVStatModelResult fit = model.SetModelParams({1.5, 4.0, 0.1, 1.2});
///     std::cout << model.GetTestSetResults("activity", test).PrintSummary();
///
/// Every predictor column tells how similar two rows are, from 0 to 1: a matrix of similarities (a
/// lower-triangular column) by its cell, a column of numbers x by 1 - |x_i - x_j| / r, r the range
/// of the training rows. An object farther than r from a training row has similarity 0 to it. The
/// kernel of two rows is the product of a similarity kernel of each column,
/// prod_d K_d(s_d, p_d).
#ifndef QVSTATS_API_LINEAR_SMOOTHER_PRED_COLUMNS_H
#define QVSTATS_API_LINEAR_SMOOTHER_PRED_COLUMNS_H

#include <Eigen/Core>
#include <cstddef>
#include <string>
#include <vector>

#include "stats/api/data_table.h"
#include "stats/api/export.h"
#include "stats/api/linear_smoother_impl.h"
#include "stats/api/linear_smoother_kernels.h"
#include "stats/api/private/smoother_handle.h"
#include "stats/api/regression_result.h"
#include "stats/api/stat_model.h"

namespace QVStats {

namespace QVLinearSmootherOnPredColumnsType {
inline constexpr unsigned int Unknown = 0;
inline constexpr unsigned int Krige = 1;
inline constexpr unsigned int NumTypes = 2;
inline const std::string TypeName[NumTypes] = {"Unknown Type", "Kriging on Vec of Pred Columns"};
}  // namespace QVLinearSmootherOnPredColumnsType

/// A smoother on predictor columns, with the conventions of QVLinearSmootherOnSimilarityBase: made,
/// then given parameters, then asked.
class QVSTATS_EXPORT QVLinearSmootherOnPredColumnsBase {
 public:
  /// Takes the columns of a table, which may be a sub-table. Failures, kept in the object:
  /// - WrongNumPredVars: no predictor column.
  /// - ColumnNotFound, DuplicateNames: of the columns.
  /// - MismatchBetweenPrivateVecSizes: a predictor is neither a symmetric matrix nor one number a
  ///   row.
  /// - MissingOrBadPredictorValue: a number is missing or bad.
  QVLinearSmootherOnPredColumnsBase(const std::string& responseColName,
                                    const std::vector<std::string>& predColNames,
                                    const QVDataTable& table);
  virtual ~QVLinearSmootherOnPredColumnsBase();
  /// A new copy that the caller owns.
  virtual QVLinearSmootherOnPredColumnsBase* CreateCopy() const = 0;
  virtual std::string GetNameOfLinearSmootherOnPredColumns() const;
  /// \return a code of QVLinearSmootherOnPredColumnsType.
  virtual unsigned int GetTypeOfLinearSmootherOnPredColumns() const = 0;
  virtual std::size_t GetNumModelParams() const { return paramNames_.size(); }
  virtual QVStatModelResult SetModelParams(const std::vector<double>& params) = 0;
  virtual const std::vector<double>& GetModelParams() const { return params_; }
  virtual const std::vector<std::string>& GetModelParamNames() const { return paramNames_; }
  virtual bool ModelIsValid() const;
  virtual std::string GetResultOfConstructor() const;
  /// Predicts one object from its similarities to the training rows by every predictor: a plain
  /// column each, in the order of the predictors, whose value at row r belongs to the training row
  /// with row number r. Failures, with the outputs at the bad double:
  /// - ObjectNotValid: no parameters yet.
  /// - WrongInputVectorSize: not a column for each predictor, or one with several values a row.
  /// - MissingOrBadPredictorValue: a similarity outside [0, 1 + 10 eps].
  virtual QVStatModelResult GetPredictedResponse(
      double& predicted, double& averageWeight, double& estimatedError,
      const std::vector<QVDataTableCol>& similarities) const = 0;
  /// Predicts m objects at once: a matrix (n x m) for each predictor, whose column j holds the
  /// similarities of object j to the training rows in their order. Fails, with no predictions, as
  /// the first object that cannot be predicted.
  virtual QVStatModelResult GetPredictedResponses(
      QVSimilarityPredictions& predictions,
      const std::vector<Eigen::MatrixXd>& similarities) const = 0;
  /// As QVLinearSmootherOnSimilarityBase::GetLeaveOneOutPredictions. The ranges of numbers stay
  /// those of all rows.
  virtual QVStatModelResult GetLeaveOneOutPredictions(
      QVSimilarityPredictions& predictions) const = 0;

  /// Whether a table has the predictor columns that the training rows have. A matrix of
  /// similarities may be a plain column with a value a row for each training row, value t of row r
  /// being the similarity of row r to the training row with row number t. Failures: ColumnNotFound;
  /// MismatchBetweenInputVecSizes for a column of another shape.
  QVStatModelResult CheckThatPredColumnsLineUp(const QVDataTable& table) const;
  /// Predicts the rows of a table; the three columns have a value at these.
  QVStatModelResult GetPredictedResponseCols(QVDataTableCol& predicted,
                                             QVDataTableCol& averageWeights,
                                             QVDataTableCol& estimatedErrors,
                                             const QVDataTable& table) const;
  /// Predictions, weights, estimated errors and residuals (response - predicted) of the rows of a
  /// table. The failure of any step is that of the record.
  QVSimilarityRegressionResult GetRegressionResults(const std::string& description,
                                                    const std::string& responseColName,
                                                    const QVDataTable& table) const;
  QVSimilarityRegressionResult GetTrainingSetResults() const;
  QVSimilarityRegressionResult GetTestSetResults(const std::string& responseColName,
                                                 const QVDataTable& testTable) const;

 protected:
  QVLinearSmootherOnPredColumnsBase(const QVLinearSmootherOnPredColumnsBase&) = default;
  QVLinearSmootherOnPredColumnsBase& operator=(const QVLinearSmootherOnPredColumnsBase&) = default;

  struct Predictor {
    std::string name;
    bool isSimilarity;
    /// Of a column of numbers: those of the training rows, and their range.
    std::vector<double> values;
    double range;
  };

  bool IsConstructed() const { return baseResult_.IsSuccessful() && result_.IsSuccessful(); }
  /// A kernel for every predictor, and its parameter's name.
  void SetKernels(const std::vector<unsigned int>& kernelTypes, const char* where);
  /// values[k] = product of the kernels, of n similarities by every predictor.
  void MultiplyKernels(const std::vector<const double*>& similarities, std::size_t n,
                       double* values) const;
  /// Fills the lower triangle of a matrix (n x n) with factor * kernel. Fails with
  /// MissingOrBadPredictorValue at a similarity outside [0, 1 + 10 eps].
  QVStatModelResult FillKernelMatrix(Eigen::MatrixXd& matrix, double factor,
                                     const char* where) const;
  QVStatModelResult CheckParams(const char* where) const;
  /// One matrix for each predictor, of n rows, with similarities in [0, 1 + 10 eps].
  QVStatModelResult CheckSimilarities(const std::vector<Eigen::MatrixXd>& similarities,
                                      const char* where) const;
  /// Reads what GetPredictedResponse is given; checks the shapes.
  QVStatModelResult ReadSimilarities(std::vector<Eigen::MatrixXd>& values,
                                     const std::vector<QVDataTableCol>& similarities,
                                     const char* where) const;
  const std::vector<std::size_t>& GetTrainingRows() const { return rows_; }
  const QVDataTableCol& GetResponseColumn() const {
    return table_.GetColumnFromName(responseColName_);
  }

  std::vector<QVSimilarityKernel> kernels_;
  std::vector<double> params_;
  std::vector<std::string> paramNames_;
  /// Of the model's own construction.
  QVStatModelResult result_;

 private:
  QVStatModelResult SetupDataTableFromTrainingSetNamesAndDataTable(
      const std::vector<std::string>& predColNames, const QVDataTable& table);
  QVStatModelResult AddPredictor(const QVDataTableCol& column, const char* where);
  /// Similarities of some rows of a table's column to the training rows, a column each.
  QVStatModelResult GatherSimilarities(Eigen::MatrixXd& similarities, const Predictor& predictor,
                                       const QVDataTableCol& column,
                                       const std::vector<std::size_t>& rows) const;

  std::string responseColName_;
  /// The response column, then the predictor columns.
  QVDataTable table_;
  std::vector<Predictor> predictors_;
  std::vector<std::size_t> rows_;
  QVStatModelResult baseResult_;
};

/// Predicts nothing: what stands for an unknown type. Every operation fails with ObjectNotValid.
class QVSTATS_EXPORT QVNullRegressionOnPredColumns : public QVLinearSmootherOnPredColumnsBase {
 public:
  QVNullRegressionOnPredColumns();
  QVNullRegressionOnPredColumns* CreateCopy() const override {
    return new QVNullRegressionOnPredColumns(*this);
  }
  unsigned int GetTypeOfLinearSmootherOnPredColumns() const override;
  QVStatModelResult SetModelParams(const std::vector<double>& params) override;
  QVStatModelResult GetPredictedResponse(
      double& predicted, double& averageWeight, double& estimatedError,
      const std::vector<QVDataTableCol>& similarities) const override;
  QVStatModelResult GetPredictedResponses(
      QVSimilarityPredictions& predictions,
      const std::vector<Eigen::MatrixXd>& similarities) const override;
  QVStatModelResult GetLeaveOneOutPredictions(QVSimilarityPredictions& predictions) const override;
};

/// Simple kriging around the mean of the responses, as QVKrigeOnSimilarity, with the product of the
/// kernels in place of one. Parameters: one of each kernel in the order of the predictors, nugget,
/// sill, as QVVariogramOnPredColumns fits them.
///
/// SetModelParams fails as QVKrigeOnSimilarity does; the model is then without parameters.
class QVSTATS_EXPORT QVKrigeOnPredColumns : public QVLinearSmootherOnPredColumnsBase {
 public:
  /// \param kernelTypes one for each predictor (WrongInputVectorSize), not 0 (ObjectNotValid).
  QVKrigeOnPredColumns(const std::vector<unsigned int>& kernelTypes,
                       const std::string& responseColName,
                       const std::vector<std::string>& predColNames, const QVDataTable& table);
  QVKrigeOnPredColumns* CreateCopy() const override { return new QVKrigeOnPredColumns(*this); }
  unsigned int GetTypeOfLinearSmootherOnPredColumns() const override;
  QVStatModelResult SetModelParams(const std::vector<double>& params) override;
  QVStatModelResult GetPredictedResponse(
      double& predicted, double& averageWeight, double& estimatedError,
      const std::vector<QVDataTableCol>& similarities) const override;
  QVStatModelResult GetPredictedResponses(
      QVSimilarityPredictions& predictions,
      const std::vector<Eigen::MatrixXd>& similarities) const override;
  QVStatModelResult GetLeaveOneOutPredictions(QVSimilarityPredictions& predictions) const override;

 private:
  QVStatModelResult GetTrainingSetLLTDecomposition();
  double GetSill() const { return params_.back(); }
  double GetNugget() const { return params_[params_.size() - 2]; }

  /// The Cholesky factor of the covariance in the lower triangle, C^-1 (y - m), y and m.
  Eigen::MatrixXd factor_;
  Eigen::VectorXd weights_;
  Eigen::VectorXd responses_;
  double meanResponse_ = 0.0;
};

/// A new smoother that the caller owns, by a code of QVLinearSmootherOnPredColumnsType; the null
/// one, which ignores the other arguments, for an unknown code.
QVSTATS_EXPORT QVLinearSmootherOnPredColumnsBase* QVGetLinearSmootherOnPredColumns(
    unsigned int smootherType, const std::vector<unsigned int>& kernelTypes,
    const std::string& responseColName, const std::vector<std::string>& predColNames,
    const QVDataTable& table);

/// A smoother on predictor columns as a value; its operations are those of
/// QVLinearSmootherOnPredColumnsBase.
class QVSTATS_EXPORT QVLinearSmootherOnPredColumns
    : public QVSimilaritySmootherHandle<QVLinearSmootherOnPredColumnsBase,
                                        std::vector<QVDataTableCol>, std::vector<Eigen::MatrixXd>> {
 public:
  QVLinearSmootherOnPredColumns(unsigned int smootherType,
                                const std::vector<unsigned int>& kernelTypes,
                                const std::string& responseColName,
                                const std::vector<std::string>& predColNames,
                                const QVDataTable& table)
      : QVSimilaritySmootherHandle(QVGetLinearSmootherOnPredColumns(
            smootherType, kernelTypes, responseColName, predColNames, table)) {}

  std::string GetNameOfLinearSmootherOnPredColumns() const {
    return smoother_->GetNameOfLinearSmootherOnPredColumns();
  }
  unsigned int GetTypeOfLinearSmootherOnPredColumns() const {
    return smoother_->GetTypeOfLinearSmootherOnPredColumns();
  }
};

}  // namespace QVStats

#endif  // QVSTATS_API_LINEAR_SMOOTHER_PRED_COLUMNS_H
