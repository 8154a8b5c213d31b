/// \file
/// \brief Binary regression by maximum likelihood: outcomes +1 and -1 on p predictors, with the
/// logistic or the normal distribution function (probit) as link.
///
/// P(y = +1 | x) = F(x . w); the log-likelihood is sum_i log F(y_i x_i . w). There is no intercept:
/// give a predictor that is 1 everywhere where one is wanted.
/// Source: P. McCullagh, J. A. Nelder, "Generalized Linear Models", 2nd edition, 1989, chapter 4.
#ifndef QVSTATS_API_LOGISTICREGRESSION_H
#define QVSTATS_API_LOGISTICREGRESSION_H

#include <memory>
#include <vector>

#include "platform/opt/function.h"
#include "stats/api/export.h"

namespace QVStats {

/// The regression types; every other code means probit too.
namespace QVBinaryRegressionType {
constexpr unsigned int Probit = 1;
constexpr unsigned int Logistic = 2;
}  // namespace QVBinaryRegressionType

/// \name The functions of the model
/// z is a real number and y an outcome, +1 or -1; phi is the standard normal density and Phi its
/// distribution function. The derivatives keep their digits where Phi is tiny.
/// @{
QVSTATS_EXPORT double Norm(double x);                          ///< phi(x)
QVSTATS_EXPORT double Norm(double x, double mean, double sd);  ///< phi((x - mean) / sd) / sd
QVSTATS_EXPORT double Phi(double x);
QVSTATS_EXPORT double logistic_func(double z);                   ///< 1 / (1 + exp(-z))
QVSTATS_EXPORT double deriv_log_logistic_func(double z);         ///< 1 - logistic(z)
QVSTATS_EXPORT double second_deriv_log_logistic_func(double z);  ///< (logistic(z) - 1) logistic(z)
QVSTATS_EXPORT double probit_func(double z);                     ///< Phi(z)
QVSTATS_EXPORT double deriv_log_probit_func(double z);           ///< r = phi(z) / Phi(z)
QVSTATS_EXPORT double second_deriv_log_probit_func(double z);    ///< r (-z - r)
QVSTATS_EXPORT double reg_func(unsigned int type, double z);
QVSTATS_EXPORT double deriv_log_reg_func(unsigned int type, double z);
QVSTATS_EXPORT double second_deriv_log_reg_func(unsigned int type, double z);
/// log F(y z).
QVSTATS_EXPORT double log_p(unsigned int type, int y, double z);
/// Its derivative by z; V is the same.
QVSTATS_EXPORT double deriv_log_p(unsigned int type, int y, double z);
QVSTATS_EXPORT double V(unsigned int type, int y, double z);
/// Its second derivative by z; W is the negative, the weight of an observation.
QVSTATS_EXPORT double second_deriv_log_p(unsigned int type, int y, double z);
QVSTATS_EXPORT double W(unsigned int type, int y, double z);
/// @}

/// The negative log-likelihood as a function of the coefficients, for a minimiser.
class QVSTATS_EXPORT QVRegressionLogLikelihoodOpt : public QVOpt::QVFunc2 {
 public:
  /// Copies the data: n x p predictors, row after row, and n outcomes.
  QVRegressionLogLikelihoodOpt(unsigned int p, unsigned int n, unsigned int regressionType,
                               const std::vector<double>& predictors,
                               const std::vector<int>& outcomes);
  /// The same on data that is shared, not copied.
  QVRegressionLogLikelihoodOpt(unsigned int p, unsigned int n, unsigned int regressionType,
                               std::shared_ptr<const std::vector<double>> predictors,
                               const std::vector<int>& outcomes);

  /// \return p.
  unsigned int NumVar() const override { return p_; }
  /// The negative log-likelihood at p coefficients; 0 without observations.
  double operator()(const double* w) override;
  /// \return an empty iterator.
  QVSystem::QVIter<double> GetFComponents(const double* w) override;
  ~QVRegressionLogLikelihoodOpt() override;
  double operator()(const double* w, double* gradient) override;
  /// \return true: every point is valid.
  bool CheckVariablesValidity(const double* w) override;
  /// \return whether the points differ by at most the tolerance in every coefficient.
  bool IsRedundant(const double* w1, const double* w2, double tolerance) const override;
  double operator()(const double* w, double* gradient, double* hessian) override;

  /// Gradient (p) and Hessian (p x p) of the log-likelihood, not negated:
  /// g = sum_i V_i x_i and H = -sum_i W_i x_i x_i'.
  void CalculateGradientHessian_v2(const double* w, std::vector<double>& gradient,
                                   std::vector<double>& hessian);
  /// Standard errors: the square roots of the diagonal of (-H)^-1 at w. Not finite, or not a
  /// number, when H is singular.
  void CalculateScoreVariance(const double* w, std::vector<double>& sigma);

 private:
  double Accumulate(const double* w, double* gradient, double* information) const;

  unsigned int p_;
  unsigned int n_;
  unsigned int type_;
  std::shared_ptr<const std::vector<double>> predictors_;
  std::vector<double> outcomes_;
  // Where second derivatives were asked for last, and their negatives: a minimiser's last step is
  // where standard errors are wanted.
  std::vector<double> lastPoint_;
  std::vector<double> lastHessian_;
};

/// Data, coefficients and standard errors of a binary regression.
class QVSTATS_EXPORT QVBinaryLinearRegression {
 public:
  /// Logistic, p = 1, n = 10.
  QVBinaryLinearRegression() = default;
  QVBinaryLinearRegression(unsigned int p, unsigned int n, unsigned int regressionType)
      : type_(regressionType), p_(p), n_(n) {}

  /// n x p predictors, row after row, and n outcomes, each +1 or -1.
  void SetInputData(const std::vector<double>& predictors, const std::vector<int>& outcomes);
  void GetInputData(std::vector<double>& predictors, std::vector<int>& outcomes) const;
  /// The largest relative step of the last iteration, and how many iterations there may be. The
  /// defaults are 1e-8 and 100.
  void SetNewtonParams(double tolerance, unsigned int iterationLimit);
  void GetNewtonParams(double& tolerance, unsigned int& iterationLimit) const;
  void Get_p_n_reg_type(unsigned int& p, unsigned int& n, unsigned int& regressionType) const;

  /// Fits by Newton's method (QVOpt::QVNewtonOpt) from w = 0 and writes the log-likelihood,
  /// coefficients and standard errors to standard output. The coefficients are appended to those of
  /// earlier fits; the standard errors are replaced.
  ///
  /// A fit that is stopped by the limit warns: outcomes that the predictors separate have no
  /// maximum, and the coefficients grow with every iteration. Fewer data than n x p and n are an
  /// error, and nothing is fitted.
  void MaximizeLogLikelihood();

  void GetBetaSigma(std::vector<double>& coefficients, std::vector<double>& sigma) const;

  /// The probability of +1 for each of m rows of p predictors, by the first p coefficients. With
  /// fewer coefficients or predictors it is an error, and `probabilities` is empty.
  void Predict(unsigned int m, const std::vector<double>& predictors,
               std::vector<double>& probabilities) const;

 private:
  unsigned int type_ = QVBinaryRegressionType::Logistic;
  unsigned int p_ = 1;
  unsigned int n_ = 10;
  std::shared_ptr<const std::vector<double>> predictors_ =
      std::make_shared<const std::vector<double>>();
  std::vector<int> outcomes_;
  std::vector<double> coefficients_;
  std::vector<double> sigma_;
  double newtonTolerance_ = 1e-8;
  unsigned int newtonIterLimit_ = 100;
};

}  // namespace QVStats

#endif  // QVSTATS_API_LOGISTICREGRESSION_H
