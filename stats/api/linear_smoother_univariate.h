/// \file
/// \brief Smoothers that predict a response from one number: the least-squares line and kernel
/// regression.
///
///     QVUniVarLinearSmoother smoother(QVUnivarLinearSmootherType::KernelRegression,
///                                     QVKernelFunctionType::Gaussian, "solubility", "logP",
///                                     molecules, 0);
///     smoother.SetModelParams({2.0});
///     const double y = smoother.GetPredictedResponse(1.5);
///     std::cout << smoother.GetTrainingSetResults(true).PrintSummary();
///
/// Training rows are the rows of a table, which may be a sub-table, with the response in value 0 of
/// the response column and the predictor in one value of the predictor column, the sub-column. A
/// smoother keeps the training rows as they were when it was made.
#ifndef QVSTATS_API_LINEAR_SMOOTHER_UNIVARIATE_H
#define QVSTATS_API_LINEAR_SMOOTHER_UNIVARIATE_H

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "stats/api/data_table.h"
#include "stats/api/export.h"
#include "stats/api/linear_smoother_kernels.h"
#include "stats/api/private/smoother_handle.h"
#include "stats/api/regression_result.h"
#include "stats/api/stat_model.h"

namespace QVStats {

class QVKernelSums;

/// Codes 2, 4 and 5 have a name and no smoother: they give the null one.
namespace QVUnivarLinearSmootherType {
inline constexpr unsigned int Unknown = 0;
inline constexpr unsigned int SimpleLinearRegression = 1;
inline constexpr unsigned int PolynomialRegression = 2;
inline constexpr unsigned int KernelRegression = 3;
inline constexpr unsigned int LocalLinearRegression = 4;
inline constexpr unsigned int CubicSplineRegression = 5;
inline constexpr unsigned int NumTypes = 6;
inline const std::string TypeName[NumTypes] = {
    "Unknown Type",
    "Simple Linear Regression",
    "Polynomial Regression",
    "Kernel or Nadaraya-Watson Regression",
    "Local Linear or Moving Least-Squares Regression",
    "Cubic Spline Regression",
};
}  // namespace QVUnivarLinearSmootherType

/// The columns of a result table.
namespace QVUniVarRegressResultColTypes {
inline constexpr unsigned int Unknown = 0;
inline constexpr unsigned int Predictors = 1;
inline constexpr unsigned int Responses = 2;
inline constexpr unsigned int PredictedResponses = 3;
inline constexpr unsigned int ResidualErrors = 4;
inline constexpr unsigned int AbsoluteResidualErrors = 5;
inline constexpr unsigned int NumTypes = 6;
inline const std::string TypeName[NumTypes] = {
    "Unknown",        "Predictors",
    "Responses",      "PredictedResponses",
    "ResidualErrors", "AbsoluteResidualErrors",
};
}  // namespace QVUniVarRegressResultColTypes

/// A smoother of one predictor. Failures are kept in the object or returned; const operations may
/// run in parallel.
class QVSTATS_EXPORT QVUniVarLinearSmootherBase {
 public:
  /// Takes the two columns of a table. Failures, kept in the object: those of the look-up and of
  /// adding the columns to a table.
  QVUniVarLinearSmootherBase(const std::string& responseColName,
                             const std::string& predictorColName, const QVDataTable& table,
                             std::size_t predictorSubCol);
  /// Takes two columns of equal length, all rows.
  QVUniVarLinearSmootherBase(const QVDataTableCol& responseCol, const QVDataTableCol& predictorCol,
                             std::size_t predictorSubCol);
  virtual ~QVUniVarLinearSmootherBase();
  /// A new copy that the caller owns.
  virtual QVUniVarLinearSmootherBase* CreateCopy() const = 0;
  virtual std::string GetNameOfUniVarLinearSmoother() const;
  /// \return a code of QVUnivarLinearSmootherType.
  virtual unsigned int GetTypeOfUniVarLinearSmoother() const = 0;
  virtual std::size_t GetNumModelParams() const { return paramNames_.size(); }
  /// Fails with WrongInputVectorSize for another number of values than GetNumModelParams(), and
  /// keeps the parameters.
  virtual QVStatModelResult SetModelParams(const std::vector<double>& params) = 0;
  virtual const std::vector<double>& GetModelParams() const { return params_; }
  virtual const std::vector<std::string>& GetModelParamNames() const { return paramNames_; }
  /// Whether construction succeeded and, in a smoother that is not fitted by its constructor,
  /// parameters are there.
  virtual bool ModelIsValid() const;
  /// The reports of the table's set-up and of the construction, under a heading each.
  virtual std::string GetResultOfConstructor() const;
  /// The bad double when the smoother cannot predict.
  virtual double GetPredictedResponse(double x) const = 0;
  /// The same from the training rows of another row number.
  virtual double GetPredictedResponse(double x, std::size_t excludedRow) const = 0;

  /// A ratio column as wide as the predictor column, with the predictions at value
  /// `predictorSubCol` of the rows of the table; missing where the predictor is missing or bad.
  /// \param leaveOneOut whether the row of that number is left out of the training rows.
  /// \return a null column on failure: ColumnNotFound.
  QVDataTableCol GetPredictedResponseCol(QVStatModelResult& result,
                                         const std::string& predictorColName,
                                         const QVDataTable& table, bool leaveOneOut,
                                         std::size_t predictorSubCol) const;
  /// Predictions and residuals (response - predicted) of the rows of a table, all three at value
  /// `predictorSubCol`. The failure of any step is that of the record; ObjectNotValid when the
  /// model is not valid.
  QVUnivariateRegressionResult GetRegressionResults(const std::string& description,
                                                    const std::string& responseColName,
                                                    const std::string& predictorColName,
                                                    const QVDataTable& table, bool leaveOneOut,
                                                    std::size_t predictorSubCol) const;
  QVUnivariateRegressionResult GetTrainingSetResults(bool leaveOneOut) const;
  QVUnivariateRegressionResult GetTestSetResults(const std::string& responseColName,
                                                 const std::string& predictorColName,
                                                 const QVDataTable& table,
                                                 std::size_t predictorSubCol) const;
  QVUnivariateRegressionResult GetTestSetResults(const QVDataTableCol& responseCol,
                                                 const QVDataTableCol& predictorCol,
                                                 std::size_t predictorSubCol) const;

 protected:
  QVUniVarLinearSmootherBase(const QVUniVarLinearSmootherBase&) = default;
  QVUniVarLinearSmootherBase& operator=(const QVUniVarLinearSmootherBase&) = default;

  /// Takes the parameters, or fails as SetModelParams does.
  QVStatModelResult TakeParams(const std::vector<double>& params, const char* where);
  bool IsConstructed() const { return baseResult_.IsSuccessful() && result_.IsSuccessful(); }
  const QVDataTable& GetTrainingTable() const { return table_; }
  const std::string& GetResponseColName() const { return responseColName_; }
  const std::string& GetPredictorColName() const { return predictorColName_; }
  std::size_t GetPredictorSubCol() const { return predictorSubCol_; }

  std::vector<double> params_;
  std::vector<std::string> paramNames_;
  /// Of the smoother's own construction.
  QVStatModelResult result_;

 private:
  QVStatModelResult SetupDataTableFromTrainingSetNamesAndDataTable(const QVDataTable& table);
  QVStatModelResult SetupTrainingSetColsFromCols(const QVDataTableCol& responseCol,
                                                 const QVDataTableCol& predictorCol);

  std::string responseColName_;
  std::string predictorColName_;
  std::size_t predictorSubCol_;
  /// The predictor column, then the response column.
  QVDataTable table_;
  QVStatModelResult baseResult_;
};

/// Predicts nothing: what stands for a type without a smoother.
class QVSTATS_EXPORT QVNullRegression : public QVUniVarLinearSmootherBase {
 public:
  QVNullRegression();
  QVNullRegression* CreateCopy() const override { return new QVNullRegression(*this); }
  unsigned int GetTypeOfUniVarLinearSmoother() const override;
  QVStatModelResult SetModelParams(const std::vector<double>& params) override;
  double GetPredictedResponse(double x) const override;
  double GetPredictedResponse(double x, std::size_t excludedRow) const override;
};

/// The least-squares line y = intercept + slope x of the training rows where both values are there,
/// fitted by the constructor. It fails as the columns' values cannot be read; from fewer than two
/// rows, or x that do not differ (variance below 2^-52), both parameters and all predictions are
/// the bad double. Leaving a row out changes nothing: the line is not fitted again. A prediction
/// without the two parameters is a fatal report.
class QVSTATS_EXPORT QVSimpleLinearRegression : public QVUniVarLinearSmootherBase {
 public:
  QVSimpleLinearRegression(const std::string& responseColName, const std::string& predictorColName,
                           const QVDataTable& table, std::size_t predictorSubCol);
  QVSimpleLinearRegression(const QVDataTableCol& responseCol, const QVDataTableCol& predictorCol,
                           std::size_t predictorSubCol);
  QVSimpleLinearRegression* CreateCopy() const override {
    return new QVSimpleLinearRegression(*this);
  }
  unsigned int GetTypeOfUniVarLinearSmoother() const override;
  /// Replaces the fitted [intercept, slope].
  QVStatModelResult SetModelParams(const std::vector<double>& params) override;
  double GetPredictedResponse(double x) const override;
  double GetPredictedResponse(double x, std::size_t excludedRow) const override;

 private:
  void FitOnConstruction();
  QVStatModelResult SolveLeastSquaresForSlopeAndIntercept();
};

/// Kernel regression: the mean of the training responses weighted by w_i = K((x - x_i) h) + 2^-23,
/// so that a neighbourhood without weight gives the plain mean. One parameter, h, the inverse
/// bandwidth.
///
/// Left out are training rows with a missing or bad response or a missing predictor; a bad
/// predictor is a point far away. Without training rows the prediction is not a number. A
/// prediction takes O(log n) after O(n) for new parameters, but O(n) where a training value, the
/// query or h is not finite.
/// Sources: E. A. Nadaraya, Theory Probab. Appl. 9, 1964; G. S. Watson, Sankhya A 26, 1964.
class QVSTATS_EXPORT QVUniVarKernelRegression : public QVUniVarLinearSmootherBase {
 public:
  QVUniVarKernelRegression(unsigned int kernelType, const std::string& responseColName,
                           const std::string& predictorColName, const QVDataTable& table,
                           std::size_t predictorSubCol);
  QVUniVarKernelRegression(unsigned int kernelType, const QVDataTableCol& responseCol,
                           const QVDataTableCol& predictorCol, std::size_t predictorSubCol);
  QVUniVarKernelRegression* CreateCopy() const override {
    return new QVUniVarKernelRegression(*this);
  }
  unsigned int GetTypeOfUniVarLinearSmoother() const override;
  bool ModelIsValid() const override;
  QVStatModelResult SetModelParams(const std::vector<double>& params) override;
  double GetPredictedResponse(double x) const override;
  double GetPredictedResponse(double x, std::size_t excludedRow) const override;

 private:
  void SetUpKernel();
  void ReadTrainingRows();
  double PredictRowByRow(double x, std::size_t excludedRow) const;

  QVKernelFunction kernel_;
  /// The training rows by ascending predictor: predictors, responses, row numbers; and the first
  /// place of every row number.
  std::vector<double> x_;
  std::vector<double> y_;
  std::vector<std::size_t> rows_;
  std::vector<std::size_t> places_;
  double meanResponse_ = 0.0;
  /// Over the responses less their mean; null where something is not finite.
  std::shared_ptr<const QVKernelSums> sums_;
};

/// A new smoother that the caller owns, by a code of QVUnivarLinearSmootherType; the null one,
/// which ignores the other arguments, for a code without a smoother. The kernel type is a code of
/// QVKernelFunctionType, used by kernel regression alone.
QVSTATS_EXPORT QVUniVarLinearSmootherBase* QVGetUniVarLinearSmoother(
    unsigned int type, unsigned int kernelType, const std::string& responseColName,
    const std::string& predictorColName, const QVDataTable& table, std::size_t predictorSubCol);
QVSTATS_EXPORT QVUniVarLinearSmootherBase* QVGetUniVarLinearSmoother(
    unsigned int type, unsigned int kernelType, const QVDataTableCol& responseCol,
    const QVDataTableCol& predictorCol, std::size_t predictorSubCol);
/// The code of a smoother by its name or by "Linear" or "Kernel"; 0 for any other name, also those
/// of types without a smoother.
QVSTATS_EXPORT unsigned int QVGetLinearSmootherTypeFromName(const std::string& name);
/// The name of a code; for an unknown code a message of two lines that says so.
QVSTATS_EXPORT std::string QVGetLinearSmootherNameFromType(unsigned int type);

/// A smoother of one predictor as a value; its operations are those of QVUniVarLinearSmootherBase.
class QVSTATS_EXPORT QVUniVarLinearSmoother : public QVSmootherHandle<QVUniVarLinearSmootherBase> {
 public:
  QVUniVarLinearSmoother(unsigned int type, unsigned int kernelType,
                         const std::string& responseColName, const std::string& predictorColName,
                         const QVDataTable& table, std::size_t predictorSubCol)
      : QVSmootherHandle(QVGetUniVarLinearSmoother(type, kernelType, responseColName,
                                                   predictorColName, table, predictorSubCol)) {}
  QVUniVarLinearSmoother(unsigned int type, unsigned int kernelType,
                         const QVDataTableCol& responseCol, const QVDataTableCol& predictorCol,
                         std::size_t predictorSubCol)
      : QVSmootherHandle(QVGetUniVarLinearSmoother(type, kernelType, responseCol, predictorCol,
                                                   predictorSubCol)) {}

  std::string GetNameOfUniVarLinearSmoother() const {
    return smoother_->GetNameOfUniVarLinearSmoother();
  }
  unsigned int GetTypeOfUniVarLinearSmoother() const {
    return smoother_->GetTypeOfUniVarLinearSmoother();
  }
  double GetPredictedResponse(double x) const { return smoother_->GetPredictedResponse(x); }
  double GetPredictedResponse(double x, std::size_t excludedRow) const {
    return smoother_->GetPredictedResponse(x, excludedRow);
  }
  QVDataTableCol GetPredictedResponseCol(QVStatModelResult& result,
                                         const std::string& predictorColName,
                                         const QVDataTable& table, bool leaveOneOut,
                                         std::size_t predictorSubCol) const {
    return smoother_->GetPredictedResponseCol(result, predictorColName, table, leaveOneOut,
                                              predictorSubCol);
  }
  QVUnivariateRegressionResult GetRegressionResults(const std::string& description,
                                                    const std::string& responseColName,
                                                    const std::string& predictorColName,
                                                    const QVDataTable& table, bool leaveOneOut,
                                                    std::size_t predictorSubCol) const {
    return smoother_->GetRegressionResults(description, responseColName, predictorColName, table,
                                           leaveOneOut, predictorSubCol);
  }
  QVUnivariateRegressionResult GetTrainingSetResults(bool leaveOneOut) const {
    return smoother_->GetTrainingSetResults(leaveOneOut);
  }
  QVUnivariateRegressionResult GetTestSetResults(const std::string& responseColName,
                                                 const std::string& predictorColName,
                                                 const QVDataTable& table,
                                                 std::size_t predictorSubCol) const {
    return smoother_->GetTestSetResults(responseColName, predictorColName, table, predictorSubCol);
  }
  QVUnivariateRegressionResult GetTestSetResults(const QVDataTableCol& responseCol,
                                                 const QVDataTableCol& predictorCol,
                                                 std::size_t predictorSubCol) const {
    return smoother_->GetTestSetResults(responseCol, predictorCol, predictorSubCol);
  }
};

}  // namespace QVStats

#endif  // QVSTATS_API_LINEAR_SMOOTHER_UNIVARIATE_H
