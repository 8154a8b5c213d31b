/// \file
/// \brief Smoothers that predict a response from similarities alone: the framework and its models.
///
/// The training data are n rows of a table with two columns: the response y, and the symmetric
/// matrix of the similarities of the rows (a lower-triangular column; 1 means identical). A
/// prediction needs the similarities of the new object to the n training rows. K is a similarity
/// kernel with parameter p (stats/api/linear_smoother_kernels.h).
///
/// Programs use the handle QVLinearSmootherOnSimilarity (stats/api/linear_smoother.h).
#ifndef QVSTATS_API_LINEAR_SMOOTHER_IMPL_H
#define QVSTATS_API_LINEAR_SMOOTHER_IMPL_H

#include <Eigen/Core>
#include <cstddef>
#include <string>
#include <vector>

#include "stats/api/data_table.h"
#include "stats/api/export.h"
#include "stats/api/linear_smoother_kernels.h"
#include "stats/api/regression_result.h"
#include "stats/api/stat_model.h"

namespace QVStats {

namespace QVLinearSmootherOnSimilarityType {
inline constexpr unsigned int Unknown = 0;
inline constexpr unsigned int KernelRegression = 1;
inline constexpr unsigned int GaussianProcess = 2;
inline constexpr unsigned int Krige = 3;
inline constexpr unsigned int OrdinaryKrige = 4;
inline constexpr unsigned int NumTypes = 5;
inline const std::string TypeName[NumTypes] = {
    "Unknown Type",          "Kernel or Nadaraya-Watson Regression", "Gaussian Process Regression",
    "Kriging on Similarity", "Ordinary Kriging on Similarity",
};
}  // namespace QVLinearSmootherOnSimilarityType

/// The columns of a result table, beside the response.
namespace QVSimilarityRegressionResultColTypes {
inline constexpr unsigned int Unknown = 0;
inline constexpr unsigned int PredictedResponses = 1;
inline constexpr unsigned int AverageSimilarityWeights = 2;
inline constexpr unsigned int ResidualErrors = 3;
inline constexpr unsigned int AbsoluteResidualErrors = 4;
inline constexpr unsigned int EstimatedPredictionError = 5;
inline constexpr unsigned int NumTypes = 6;
inline const std::string TypeName[NumTypes] = {
    "Unknown",        "PredictedResponses",     "AverageSimilarityWeights",
    "ResidualErrors", "AbsoluteResidualErrors", "EstimatedPredictionError",
};
}  // namespace QVSimilarityRegressionResultColTypes

/// Predictions of m objects, a value each in the order of the objects.
struct QVSimilarityPredictions {
  /// In the unit of the response.
  std::vector<double> predicted;
  /// Mean kernel weight of the training rows: how near the object is to them.
  std::vector<double> averageWeights;
  /// Standard deviation of the prediction, as the model estimates it.
  std::vector<double> estimatedErrors;
};

/// A smoother on similarity.
///
/// Made, then given parameters (SetModelParams), then asked; every failure is a QVStatModelResult.
/// Const operations may run in parallel.
class QVSTATS_EXPORT QVLinearSmootherOnSimilarityBase {
 public:
  /// Takes the two columns of a table, which may be a sub-table. Failures, kept in the object:
  /// - ColumnNotFound: one of the columns is not there.
  /// - MismatchBetweenPrivateVecSizes: the similarity column is no symmetric matrix.
  QVLinearSmootherOnSimilarityBase(const std::string& responseColName,
                                   const std::string& similarityColName, const QVDataTable& table);
  virtual ~QVLinearSmootherOnSimilarityBase();
  /// A new copy that the caller owns.
  virtual QVLinearSmootherOnSimilarityBase* CreateCopy() const = 0;
  virtual std::string GetNameOfLinearSmootherOnSimilarity() const;
  /// \return a code of QVLinearSmootherOnSimilarityType.
  virtual unsigned int GetTypeOfLinearSmootherOnSimilarity() const = 0;
  virtual std::size_t GetNumModelParams() const { return paramNames_.size(); }
  /// Sets the parameters and fits the model. Fails with WrongInputVectorSize for another number of
  /// values than GetNumModelParams(); further failures stand at the models.
  virtual QVStatModelResult SetModelParams(const std::vector<double>& params) = 0;
  virtual const std::vector<double>& GetModelParams() const { return params_; }
  virtual const std::vector<std::string>& GetModelParamNames() const { return paramNames_; }
  /// Whether construction succeeded and parameters are there.
  virtual bool ModelIsValid() const;
  /// The reports of the table's set-up and of the construction, under a heading each.
  virtual std::string GetResultOfConstructor() const;
  /// Predicts one object. `similarities` is a plain column whose value at row r is the similarity
  /// to the training row with row number r.
  ///
  /// Failures; the outputs are then the bad double:
  /// - ObjectNotValid: no parameters yet.
  /// - WrongInputVectorSize: the column has several values a row.
  /// - A similarity out of range, with the code that stands at the model.
  virtual QVStatModelResult GetPredictedResponse(double& predicted, double& averageWeight,
                                                 double& estimatedError,
                                                 const QVDataTableCol& similarities) const = 0;

  /// Predicts m objects at once, with the same results: column j of `similarities` (n x m) holds
  /// the similarities of object j to the training rows in their order. Fails, with no predictions,
  /// as the first object that cannot be predicted.
  virtual QVStatModelResult GetPredictedResponses(QVSimilarityPredictions& predictions,
                                                  const Eigen::MatrixXd& similarities) const;
  /// Predicts every training row from the others: what the model with the same parameters (and, in
  /// the Gaussian process, the same variances) would say had it not seen the row, in closed form.
  /// Source: O. Dubrule, "Cross validation of kriging in a unique neighborhood", Math. Geol. 15,
  /// 1983, doi:10.1007/BF01033232.
  /// Fails with ObjectNotValid when the model is not valid, with NoData for fewer than two rows.
  virtual QVStatModelResult GetLeaveOneOutPredictions(QVSimilarityPredictions& predictions) const;

  /// Predicts the rows of a table with a similarity column of the training column's name, whose
  /// cell (r, t) is the similarity of row r to the training row with row number t: the square
  /// column itself, or a plain one. The three columns have a value at the rows of the table.
  QVStatModelResult GetPredictedResponseCols(QVDataTableCol& predicted,
                                             QVDataTableCol& averageWeights,
                                             QVDataTableCol& estimatedErrors,
                                             const QVDataTable& table) const;
  /// Predictions, weights, estimated errors and residuals (response - predicted) of the rows of a
  /// table. The failure of any step is that of the record.
  QVSimilarityRegressionResult GetRegressionResults(const std::string& description,
                                                    const std::string& responseColName,
                                                    const QVDataTable& table) const;
  /// The training rows, each predicted with itself in the model.
  QVSimilarityRegressionResult GetTrainingSetResults() const;
  QVSimilarityRegressionResult GetTestSetResults(const std::string& responseColName,
                                                 const QVDataTable& testTable) const;

 protected:
  QVLinearSmootherOnSimilarityBase(const QVLinearSmootherOnSimilarityBase&) = default;
  QVLinearSmootherOnSimilarityBase& operator=(const QVLinearSmootherOnSimilarityBase&) = default;

  /// Names the kernel parameter and those that follow it; the null kernel is a failure.
  void SetKernel(unsigned int kernelType, const char* where,
                 const std::vector<std::string>& furtherParams);

  /// What the checks of a model's similarities say.
  struct SimilarityRange {
    double upper;
    unsigned int failureType;
    /// The comment is these texts around the row number, and the similarity.
    const char* beforeRow;
    const char* afterRow;
  };
  /// The first similarity below 0 or above the bound, as the failure of `where`.
  QVStatModelResult CheckSimilarities(const SimilarityRange& range, const char* where,
                                      const double* similarities) const;
  /// The checks before a prediction; `where` is the model's GetPredictedResponse.
  QVStatModelResult CheckQuery(const QVDataTableCol& similarities, const char* where) const;
  QVStatModelResult CheckParams(const char* where) const;
  /// Predicts one object through GetPredictedResponses.
  QVStatModelResult PredictOne(double& predicted, double& averageWeight, double& estimatedError,
                               const QVDataTableCol& similarities) const;

  /// Fills the lower triangle of a matrix (n x n) with factor * K(s_ij, p). Fails with
  /// MissingOrBadPredictorValue at a similarity outside [0, 1 + 10 eps], or no number.
  QVStatModelResult FillKernelMatrix(Eigen::MatrixXd& matrix, double factor,
                                     const char* where) const;
  /// Reads the n responses. Fails with MissingOrBadResponseValue at a missing or bad one.
  QVStatModelResult ReadResponses(Eigen::VectorXd& responses, const char* where) const;
  /// Mean kernel weight of the other n - 1 rows, for every training row.
  std::vector<double> GetAverageWeightsOfOthers() const;

  const std::vector<std::size_t>& GetTrainingRows() const { return rows_; }
  const QVDataTable& GetTrainingTable() const { return table_; }
  const QVDataTableCol& GetSimilarityColumn() const {
    return table_.GetColumnFromName(similarityColName_);
  }

  QVSimilarityKernel kernel_{QVSimilarityKernelType::Null};
  std::vector<double> params_;
  std::vector<std::string> paramNames_;
  /// Of the model's own construction.
  QVStatModelResult result_;
  /// Rows of a table that are predicted together: many for a triangular solve, few where nothing
  /// but the cache gains.
  std::size_t objectsTogether_ = 1024;
  std::string responseColName_;
  std::string similarityColName_;

 private:
  QVStatModelResult SetUpTable(const QVDataTable& table);
  /// The similarities of `count` rows of a column to the training rows, a column each.
  void GatherSimilarities(const QVDataTableCol& column, const std::size_t* rows, std::size_t count,
                          Eigen::MatrixXd& similarities) const;
  /// values[j] = s_ij for the training rows j <= i.
  void GetSimilarityRow(std::size_t i, double* values) const;
  QVStatModelResult FindBadTrainingSimilarity(const char* where) const;

  QVDataTable table_;
  /// The row numbers of the training rows, in their order.
  std::vector<std::size_t> rows_;
  QVStatModelResult baseResult_;
};

/// Predicts nothing: what stands for an unknown type. Every operation fails with ObjectNotValid.
class QVSTATS_EXPORT QVNullRegressionOnSimilarity : public QVLinearSmootherOnSimilarityBase {
 public:
  QVNullRegressionOnSimilarity();
  QVNullRegressionOnSimilarity* CreateCopy() const override;
  unsigned int GetTypeOfLinearSmootherOnSimilarity() const override;
  QVStatModelResult SetModelParams(const std::vector<double>& params) override;
  QVStatModelResult GetPredictedResponse(double& predicted, double& averageWeight,
                                         double& estimatedError,
                                         const QVDataTableCol& similarities) const override;
};

/// Kernel regression: the mean of the training responses weighted by w_i = K(s_i, p) + 2^-23, so
/// that a neighbourhood without weight gives the plain mean; the estimated error is the weighted
/// standard deviation of the responses. One parameter, p.
///
/// Similarities lie in [0, 1]; another one, and a missing or bad response, fails with
/// ArgumentOutOfRange.
/// Sources: E. A. Nadaraya, Theory Probab. Appl. 9, 1964; G. S. Watson, Sankhya A 26, 1964.
class QVSTATS_EXPORT QVKernelRegressionOnSimilarity : public QVLinearSmootherOnSimilarityBase {
 public:
  QVKernelRegressionOnSimilarity(unsigned int kernelType, const std::string& responseColName,
                                 const std::string& similarityColName, const QVDataTable& table);
  QVKernelRegressionOnSimilarity* CreateCopy() const override;
  unsigned int GetTypeOfLinearSmootherOnSimilarity() const override;
  QVStatModelResult SetModelParams(const std::vector<double>& params) override;
  QVStatModelResult GetPredictedResponse(double& predicted, double& averageWeight,
                                         double& estimatedError,
                                         const QVDataTableCol& similarities) const override;
  QVStatModelResult GetPredictedResponses(QVSimilarityPredictions& predictions,
                                          const Eigen::MatrixXd& similarities) const override;
  QVStatModelResult GetLeaveOneOutPredictions(QVSimilarityPredictions& predictions) const override;

 private:
  /// The failure for the first bad response among the first `count` training rows.
  QVStatModelResult CheckResponses(const std::vector<double>& responses, std::size_t count) const;
};

/// Gaussian process y = m + f + e, m the mean response, with covariance sigma2 K + noise I. One
/// parameter, p; SetModelParams fits the two variances by the marginal likelihood.
///
/// With theta = noise / sigma2, lambda the eigenvalues of K (negative ones set to 0) and z the
/// centred responses in the basis of the eigenvectors, sigma2(theta) = sum z_i^2 / (lambda_i +
/// theta) / n, and theta is where the derivative of the log likelihood changes sign, bracketed
/// from 0.05 by factors of two and bisected to 0.001. sigma2 is that of the last theta tried, not
/// of the theta that is returned.
///
/// No eigenvectors are computed where K has no negative eigenvalue: sums over eigenvalues are
/// solutions with K's tridiagonal form, and predictions use the Cholesky factor of the covariance.
///
/// The estimated error is sqrt(sigma2 + noise - q), q the variance that the training rows explain.
/// Training similarities lie in [0, 1 + 10 eps], those of new objects in [0, 1]; another one fails
/// with MissingOrBadPredictorValue, a missing or bad response with MissingOrBadResponseValue. A
/// failed SetModelParams keeps the new parameters, but the model then predicts nothing
/// (InternalLogicFailure).
/// Source: C. E. Rasmussen, C. K. I. Williams, "Gaussian Processes for Machine Learning", 2006,
/// chapters 2 and 5.
class QVSTATS_EXPORT QVGaussianProcessOnSimilarity : public QVLinearSmootherOnSimilarityBase {
 public:
  QVGaussianProcessOnSimilarity(unsigned int kernelType, const std::string& responseColName,
                                const std::string& similarityColName, const QVDataTable& table);
  QVGaussianProcessOnSimilarity* CreateCopy() const override;
  unsigned int GetTypeOfLinearSmootherOnSimilarity() const override;
  QVStatModelResult SetModelParams(const std::vector<double>& params) override;
  QVStatModelResult GetPredictedResponse(double& predicted, double& averageWeight,
                                         double& estimatedError,
                                         const QVDataTableCol& similarities) const override;
  QVStatModelResult GetPredictedResponses(QVSimilarityPredictions& predictions,
                                          const Eigen::MatrixXd& similarities) const override;
  QVStatModelResult GetLeaveOneOutPredictions(QVSimilarityPredictions& predictions) const override;

  /// The derivative of the log marginal likelihood in theta, (n/2) (S3/S2 - S1/n) with S1 = sum
  /// 1/(lambda_i + theta) and Sk = sum z_i^2/(lambda_i + theta)^(k-1). Sets sigma2 = S2/n. Not a
  /// number for n = 0.
  double CalculateGradMLWRTTheta(double& sigma2, double theta) const;
  /// The fitted variances, in the squared unit of the response.
  double GetSignalVariance() const { return signalVariance_; }
  double GetNoiseVariance() const { return noiseVariance_; }

 private:
  QVStatModelResult MaximizeMarginalLikelihoodWrtVariances();
  void SearchForBestCovarParams(double& sigma2, double& noiseVariance) const;
  bool FitWithoutEigenvectors(Eigen::MatrixXd& kernelMatrix, const Eigen::VectorXd& centred);
  void FitWithEigenvectors(Eigen::MatrixXd& kernelMatrix, const Eigen::VectorXd& centred);
  /// Replaces the covariances of new objects with the training rows by F c, where F'F is the
  /// inverse covariance of the training rows.
  void Whiten(Eigen::MatrixXd& covariances) const;

  /// K's eigenvalues, and K in a basis in which it is tridiagonal (diagonal, when that is the
  /// basis of the eigenvectors) with the centred responses in that basis.
  Eigen::VectorXd eigenvalues_;
  Eigen::VectorXd diagonal_;
  Eigen::VectorXd offDiagonal_;
  Eigen::VectorXd transformedResponses_;
  /// The Cholesky factor of the covariance in the lower triangle; or the eigenvectors, and the
  /// inverse standard deviations along them.
  Eigen::MatrixXd factor_;
  Eigen::VectorXd inverseDeviations_;
  Eigen::VectorXd whitenedResponses_;
  double meanResponse_ = 0.0;
  double signalVariance_ = 0.0;
  double noiseVariance_ = 0.0;
};

/// What the two krigings share: parameters [p, nugget, sill], and the covariance C of the training
/// rows, (sill - nugget) K(s_ij, p) beside the diagonal and with the nugget added on it.
///
/// SetModelParams also fails with ArgumentOutOfRange for a nugget above the sill, with
/// MissingOrBadPredictorValue for a training similarity outside [0, 1 + 10 eps] (so do predictions
/// for theirs), with MissingOrBadResponseValue, and with SingularScaleOrCovariance. The model is
/// then without parameters.
/// Source: J.-P. Chiles, P. Delfiner, "Geostatistics", 2nd edition, 2012, chapter 3.
class QVSTATS_EXPORT QVKrigeOnSimilarityBase : public QVLinearSmootherOnSimilarityBase {
 public:
  unsigned int GetTypeOfLinearSmootherOnSimilarity() const override { return type_; }
  QVStatModelResult SetModelParams(const std::vector<double>& params) override;
  QVStatModelResult GetPredictedResponse(double& predicted, double& averageWeight,
                                         double& estimatedError,
                                         const QVDataTableCol& similarities) const override;
  QVStatModelResult GetPredictedResponses(QVSimilarityPredictions& predictions,
                                          const Eigen::MatrixXd& similarities) const override;

 protected:
  /// The names of a model's routines, as failures tell them.
  struct Names {
    const char* setModelParams;
    const char* decomposition;
    const char* transformedResponse;
    const char* getPredictedResponse;
  };
  QVKrigeOnSimilarityBase(unsigned int type, const Names& names, unsigned int kernelType,
                          const std::string& responseColName, const std::string& similarityColName,
                          const QVDataTable& table);
  /// Factorises C, given by its lower triangle, in place. \return whether it is usable.
  virtual bool Factorise(Eigen::MatrixXd& covariance) = 0;
  virtual void SetResponses(const Eigen::VectorXd& responses) = 0;
  /// Predicts objects from their covariances with the training rows, which it may overwrite.
  virtual void Predict(QVSimilarityPredictions& predictions,
                       Eigen::MatrixXd& covariances) const = 0;

  double GetPartialSill() const { return params_[2] - params_[1]; }
  double GetSill() const { return params_[2]; }
  /// Fills the lower triangle of C.
  QVStatModelResult FillCovariance(Eigen::MatrixXd& covariance) const;
  /// The covariances (n x m) of objects with the training rows, and the objects' average weights.
  QVStatModelResult GetCovariances(Eigen::MatrixXd& covariances,
                                   std::vector<double>& averageWeights,
                                   const Eigen::MatrixXd& similarities) const;
  QVStatModelResult CheckLeaveOneOut(const char* where) const;

  /// The Cholesky factor of C in the lower triangle; empty when C has none.
  Eigen::MatrixXd factor_;
  Eigen::VectorXd responses_;

 private:
  unsigned int type_;
  Names names_;
};

/// Simple kriging around the mean of the responses: m + k' C^-1 (y - m), k the covariances of the
/// new object. The estimated error is sqrt(sill - k' C^-1 k); the nugget is not added.
class QVSTATS_EXPORT QVKrigeOnSimilarity : public QVKrigeOnSimilarityBase {
 public:
  QVKrigeOnSimilarity(unsigned int kernelType, const std::string& responseColName,
                      const std::string& similarityColName, const QVDataTable& table);
  QVKrigeOnSimilarity* CreateCopy() const override { return new QVKrigeOnSimilarity(*this); }
  QVStatModelResult GetLeaveOneOutPredictions(QVSimilarityPredictions& predictions) const override;

 private:
  bool Factorise(Eigen::MatrixXd& covariance) override;
  void SetResponses(const Eigen::VectorXd& responses) override;
  void Predict(QVSimilarityPredictions& predictions, Eigen::MatrixXd& covariances) const override;

  double meanResponse_ = 0.0;
  Eigen::VectorXd weights_;
};

/// Ordinary kriging: an unknown constant mean, so that the kriging weights sum to 1. The weights
/// solve the system of A = [[C, 1], [1', 0]].
///
/// GetPredictedResponse and the result tables leave the estimated error at the bad double;
/// GetOrdinaryKrigingErrors computes it.
class QVSTATS_EXPORT QVOrdinaryKrigeOnSimilarity : public QVKrigeOnSimilarityBase {
 public:
  QVOrdinaryKrigeOnSimilarity(unsigned int kernelType, const std::string& responseColName,
                              const std::string& similarityColName, const QVDataTable& table);
  QVOrdinaryKrigeOnSimilarity* CreateCopy() const override {
    return new QVOrdinaryKrigeOnSimilarity(*this);
  }
  /// The estimated errors are those of ordinary kriging.
  QVStatModelResult GetLeaveOneOutPredictions(QVSimilarityPredictions& predictions) const override;
  /// The errors of the predictions of m objects (as GetPredictedResponses takes them),
  /// sqrt(sill - [k; 1]' A^-1 [k; 1]): the Lagrange term, for the estimated mean, included.
  QVStatModelResult GetOrdinaryKrigingErrors(std::vector<double>& errors,
                                             const Eigen::MatrixXd& similarities) const;

 private:
  bool Factorise(Eigen::MatrixXd& covariance) override;
  void SetResponses(const Eigen::VectorXd& responses) override;
  void Predict(QVSimilarityPredictions& predictions, Eigen::MatrixXd& covariances) const override;

  /// A^-1, kept only when C is not positive definite, so that factor_ is empty.
  Eigen::MatrixXd inverse_;
  /// L^-1 1 with the Cholesky factor L, and its squared norm 1' C^-1 1.
  Eigen::VectorXd whitenedOnes_;
  double onesNorm_ = 0.0;
  /// A^-1 [y; 0].
  Eigen::VectorXd weights_;
};

}  // namespace QVStats

#endif  // QVSTATS_API_LINEAR_SMOOTHER_IMPL_H
