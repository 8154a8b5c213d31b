/// \file
/// \brief What Gaussian mixtures are built from: parameters with a prior and a current value, and
/// one-dimensional components.
///
/// Sources: C. M. Bishop, "Pattern Recognition and Machine Learning", 2006, sections 9.2 and 10.2.
#ifndef QVSTATS_API_GAUSSIAN_MIXTURE_COMPONENT_H
#define QVSTATS_API_GAUSSIAN_MIXTURE_COMPONENT_H

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

#include "stats/api/export.h"
#include "stats/api/stat_model.h"

namespace QVStats {

/// What a QVGaussMixParam holds; in brackets its values by index.
namespace QVGaussMixParamType {
inline constexpr unsigned int Invalid = 0;
/// [weight pi]
inline constexpr unsigned int FrequentistWeight = 1;
/// A Dirichlet distribution of the weights [alpha_k, sum of alpha over all components].
inline constexpr unsigned int DirichletWeight = 2;
/// [mean mu, precision tau = 1 / variance]
inline constexpr unsigned int FrequentistGauss = 3;
/// [m, kappa, a, b]: the precision tau has a Gamma(a, rate b) distribution and, given tau, the mean
/// a Gaussian one with mean m and precision kappa tau.
inline constexpr unsigned int GaussGamma = 4;
/// [mean vector m (d), kappa, degrees of freedom nu, scale matrix W (d d, row by row), its
/// lower-triangular square root L (d d)]: the precision matrix Lambda has a Wishart(W, nu)
/// distribution and, given it, the mean a Gaussian one with mean m and precision kappa Lambda.
inline constexpr unsigned int GaussWishart = 5;
}  // namespace QVGaussMixParamType

/// A named bundle of parameters, each with an initial (frequentist) or prior (Bayesian) value and a
/// current or posterior one, which begins as its copy.
///
/// Scalars are read by the position i of the value. Failures, in the order tested; a getter then
/// returns the largest finite double:
/// - ObjectNotValid: default-constructed;
/// - ArgumentOutOfRange: i is not below the number of stored values (for vectors: of parameters);
/// - MismatchBetweenPrivateVecSizes: parameter i does not hold that many values.
class QVSTATS_EXPORT QVGaussMixParam {
 public:
  QVGaussMixParam() = default;
  /// Scalar parameters: paramNames[i] has the value values[i].
  QVGaussMixParam(unsigned int paramType, const std::string& name,
                  const std::vector<std::string>& paramNames, const std::vector<double>& values);
  /// Parameters that are vectors or matrices.
  QVGaussMixParam(unsigned int paramType, const std::string& name,
                  const std::vector<std::string>& paramNames,
                  const std::vector<std::vector<double>>& values);

  /// \return a code of QVGaussMixParamType.
  unsigned int GetParameterType() const { return paramType_; }
  double GetInitialOrPriorParamVal(QVStatModelResult& result, std::size_t i) const;
  double GetCurrentOrPosteriorParamVal(QVStatModelResult& result, std::size_t i) const;
  QVStatModelResult SetCurrentOrPosteriorParamVal(double value, std::size_t i);
  /// The number of values must stay.
  QVStatModelResult SetCurrentOrPosteriorParamVector(const std::vector<double>& values,
                                                     std::size_t i);
  /// Reads the n values of parameter i.
  QVStatModelResult GetInitialOrPriorParamVector(std::vector<double>& values, std::size_t i,
                                                 std::size_t n) const;
  QVStatModelResult GetCurrentOrPosteriorParamVector(std::vector<double>& values, std::size_t i,
                                                     std::size_t n) const;
  /// The name, then a line for each parameter with its prior and current values.
  std::string Print() const;

 private:
  unsigned int FindFault(std::size_t i, std::size_t count, std::size_t n) const;
  double GetValue(QVStatModelResult& result, const std::vector<double>& values, std::size_t i,
                  const char* where) const;
  QVStatModelResult GetVector(std::vector<double>& out, const std::vector<double>& values,
                              std::size_t i, std::size_t n, const char* where) const;

  bool valid_ = false;
  unsigned int paramType_ = QVGaussMixParamType::Invalid;
  std::string name_;
  std::vector<std::string> paramNames_;
  std::vector<std::uint64_t> offsets_;
  std::vector<std::uint64_t> sizes_;
  std::vector<double> initialOrPrior_;
  std::vector<double> currentOrPosterior_;
};

/// \name Functions of a mixing weight
/// A parameter of another type is InternalLogicFailure. On a failure they return the largest finite
/// double. psi is the digamma function, alpha and A the two values of a Dirichlet weight.
/// @{

/// pi, or alpha / A.
QVSTATS_EXPORT double GetExpectedComponentProbability(QVStatModelResult& result,
                                                      const QVGaussMixParam& param);
/// log pi, or psi(alpha) - psi(A).
QVSTATS_EXPORT double GetExpectedLogComponentProb(QVStatModelResult& result,
                                                  const QVGaussMixParam& param);
/// The component's share in E[log of the prior density] of the weights, a Dirichlet distribution:
/// (alpha0 - 1) E[log pi] + alpha0 / A0 * lgamma(A0) - lgamma(alpha0). The shares of all components
/// add up to the expectation.
QVSTATS_EXPORT double GetExpectedLogDirichletPrior(QVStatModelResult& result,
                                                   const QVGaussMixParam& param);
/// The same of the posterior density, with alpha and A.
QVSTATS_EXPORT double GetExpectedLogDirichletPosterior(QVStatModelResult& result,
                                                       const QVGaussMixParam& param);
/// The update from Nk, the component's share of N data: pi = Nk / N, refused with
/// ArgumentOutOfRange unless Nk < N; or alpha = alpha0 + Nk and A = A0 + N.
QVSTATS_EXPORT QVStatModelResult UpdateComponentProbParams(double Nk, QVGaussMixParam& param,
                                                           std::uint64_t N);
/// @}

/// A one-dimensional component: its weight, its Gaussian, and for n data the responsibilities r_n,
/// their logarithms and their moments.
///
/// Failures are recorded under "QVOneDimGaussMixComponent::" and the operation; a parameter of a
/// type that does not fit the operation is InternalLogicFailure; numeric queries then return the
/// largest finite double. Below, E[log tau] is GetExpectedLogGaussPrecision, (m, kappa, a, b) is
/// the posterior and (m0, kappa0, a0, b0) the prior of a Gauss-Gamma parameter.
class QVSTATS_EXPORT QVOneDimGaussMixComponent {
 public:
  QVOneDimGaussMixComponent(const std::string& name, const QVGaussMixParam& probParams,
                            const QVGaussMixParam& gaussParams);

  const QVGaussMixParam& GetComponentProbParams() const { return probParams_; }
  const QVGaussMixParam& GetComponentGaussParams() const { return gaussParams_; }

  /// Whether there are n log responsibilities: else MismatchBetweenPrivateVecSizes.
  QVStatModelResult CheckSizeResponsibilityVec(std::size_t n) const;
  /// E[log pi] + 0.5 (E[log tau] - log 2 pi - 1 / kappa - (a / b) (x - m)^2) for every datum; for a
  /// frequentist Gaussian without 1 / kappa, with tau and mu.
  QVStatModelResult EStepUpdateLogRelativeResponsibility(const std::vector<double>& data);
  /// \return element n, the bad double beyond the end: log rho_n after the update, log r_n after
  /// EStepFillResponsibilityAndLogResp.
  double EStepGetLogRelativeResponsibility(std::size_t n) const;
  /// Stores the responsibility for datum n and its logarithm; ignored beyond the end.
  void EStepFillResponsibilityAndLogResp(std::size_t n, double resp, double logResp);

  /// Nk = sum r, xbar = sum r x / Nk, Sk = sum r (x - xbar)^2 / Nk; all 0 when Nk <= 2^-52.
  /// MismatchBetweenInputVecSizes unless there is a responsibility for each datum.
  QVStatModelResult GetSampleMoments(const std::vector<double>& data);
  /// Frequentist: mu = xbar and tau = 1 / Sk; SingularScaleOrCovariance when Sk <= 0. Gauss-Gamma:
  /// kappa = kappa0 + Nk, m = (kappa0 m0 + Nk xbar) / kappa, a = a0 + Nk / 2,
  /// b = b0 + Nk Sk / 2 + kappa0 Nk / kappa (xbar - m0)^2 / 2.
  QVStatModelResult UpdateGaussParams();
  /// GetSampleMoments, UpdateComponentProbParams, UpdateGaussParams.
  QVStatModelResult MStepUpdateParams(const std::vector<double>& data);

  QVStatModelResult GetFrequentistGaussParams(double& mean, double& precision) const;
  QVStatModelResult GetBayesPriorGaussParams(double& m, double& kappa, double& a, double& b) const;
  QVStatModelResult GetBayesPosteriorGaussParams(double& m, double& kappa, double& a,
                                                 double& b) const;
  /// log tau, or psi(a) - log b.
  double GetExpectedLogGaussPrecision(QVStatModelResult& result) const;

  /// \name Terms of the lower bound
  /// @{

  /// Nk E[log pi].
  double GetExpectedLogProbZGivenComponentProb(QVStatModelResult& result) const;
  /// sum r log r; a responsibility of 0 contributes 0.
  double GetExpectedLogOfVarDistOfZ() const;
  /// 0.5 (log(kappa0 / 2 pi) + E[log tau] - 1) + a0 log b0 - lgamma(a0) + (a0 - 1) E[log tau] - a0:
  /// the precision's expectation, unlike that of its logarithm, is the prior's. The bound is
  /// therefore not the textbook's, and may decrease from one cycle to the next.
  double GetExpectedLogPriorGaussGamma(QVStatModelResult& result) const;
  /// 0.5 Nk (E[log tau] - log 2 pi - 1 / kappa - (a / b) (Sk + (xbar - m)^2)).
  double GetExpectedLogProbDataGivenZAndParams(QVStatModelResult& result) const;
  /// 0.5 (log(kappa / 2 pi) + E[log tau] - 1) + a log b - lgamma(a) + (a - 1) E[log tau] - a.
  double GetExpectedLogPosteriorGaussGamma(QVStatModelResult& result) const;
  /// Data, Z, Dirichlet prior and Gauss-Gamma prior terms less those of the variational
  /// distribution.
  double GetVariationalBayesLowerBound(QVStatModelResult& result) const;
  /// The lower bound for a Dirichlet weight, 0 for a frequentist one.
  double GetComponentOfModelFitness(QVStatModelResult& result) const;
  /// @}

  /// 3 for a frequentist Gaussian, 5 for a Gauss-Gamma one.
  unsigned int GetNumComponentParams(QVStatModelResult& result) const;
  /// Appends the expected weight and the current values of the Gaussian.
  QVStatModelResult GetComponentParams(std::vector<double>& values) const;
  std::string Print() const;

 private:
  friend class QVOneDimGaussMixModel;  // takes the terms of its fused cycle, returns the moments

  /// The log relative responsibility of x is logScale - halfPrecision (x - center)^2.
  struct Terms {
    double logScale;
    double halfPrecision;
    double center;
  };
  QVStatModelResult GetTerms(Terms& terms) const;
  /// Forgets the responsibilities and takes moments computed elsewhere.
  void SetSampleMoments(double count, double mean, double variance);
  QVStatModelResult UpdateParams(std::uint64_t numData);
  QVStatModelResult ReadGauss(bool prior, std::initializer_list<double*> values,
                              unsigned int paramType, const char* where) const;

  std::string name_;
  QVGaussMixParam probParams_;
  QVGaussMixParam gaussParams_;
  double Nk_ = 0.0;
  double xbar_ = 0.0;
  double Sk_ = 0.0;
  std::vector<double> responsibilities_;
  std::vector<double> logRelativeResponsibilities_;
};

/// The component's share in the distribution of a new datum: a Student's t with 2 a degrees of
/// freedom, location m and precision (a / b) kappa / (kappa + 1), with the expected weight. For a
/// Gauss-Gamma component; SingularScaleOrCovariance when that precision is not positive.
QVSTATS_EXPORT QVStatModelResult GetComponentParamsForStudentsTPredictiveDist(
    const QVOneDimGaussMixComponent& component, double& weight, double& degreesOfFreedom,
    double& location, double& precision);
/// The same for a frequentist component: its Gaussian.
QVSTATS_EXPORT QVStatModelResult GetComponentParamsForGaussPredictiveDist(
    const QVOneDimGaussMixComponent& component, double& weight, double& mean, double& precision);

}  // namespace QVStats

#endif  // QVSTATS_API_GAUSSIAN_MIXTURE_COMPONENT_H
