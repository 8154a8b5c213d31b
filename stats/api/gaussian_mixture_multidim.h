/// \file
/// \brief Gaussian mixtures in d dimensions by variational Bayes.
///
/// Data are one vector of n d values, point after point; matrices are packed row by row.
///
/// Source: C. M. Bishop, "Pattern Recognition and Machine Learning", 2006, section 10.2.
#ifndef QVSTATS_API_GAUSSIAN_MIXTURE_MULTIDIM_H
#define QVSTATS_API_GAUSSIAN_MIXTURE_MULTIDIM_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/system/iter.h"
#include "stats/api/export.h"
#include "stats/api/gaussian_mixture_component.h"
#include "stats/api/stat_model.h"

namespace QVStats {

/// A component in d dimensions: a mixing weight and a Gauss-Wishart parameter (m, kappa, nu, W, L),
/// L the lower-triangular square root of W.
///
/// Failures are recorded under "QVMultiDimGaussMixComponent::" and the operation: a parameter that
/// is not of type GaussWishart is InternalLogicFailure, data whose length is no multiple of d
/// WrongInputVectorSize.
class QVSTATS_EXPORT QVMultiDimGaussMixComponent {
 public:
  QVMultiDimGaussMixComponent(const std::vector<std::string>& variableNames,
                              const QVGaussMixParam& probParams,
                              const QVGaussMixParam& gaussParams);

  const QVGaussMixParam& GetComponentProbParams() const { return probParams_; }
  const QVGaussMixParam& GetComponentGaussParams() const { return gaussParams_; }
  /// d, the number of variables.
  std::size_t GetDimension() const { return variableNames_.size(); }

  /// Vectors of d, 1, 1, d d and d d values.
  QVStatModelResult GetBayesPriorGaussWishartParams(std::vector<double>& m,
                                                    std::vector<double>& kappa,
                                                    std::vector<double>& nu, std::vector<double>& W,
                                                    std::vector<double>& L) const;
  QVStatModelResult GetBayesPosteriorGaussWishartParams(std::vector<double>& m,
                                                        std::vector<double>& kappa,
                                                        std::vector<double>& nu,
                                                        std::vector<double>& W,
                                                        std::vector<double>& L) const;

  /// sum_{i < d} psi((nu + 1 - i) / 2) + d log 2 + 2 log det(L L'). The textbook's expectation of
  /// log |Lambda|, GetTextbookLogDetGaussPrecision, begins at nu / 2 and has the determinant once.
  double GetExpectedLogDetGaussPrecision(QVStatModelResult& result) const;
  /// sum_{i < d} psi((nu - i) / 2) + d log 2 + log det W (Bishop, equation 10.65).
  double GetTextbookLogDetGaussPrecision(QVStatModelResult& result) const;

  /// E[log pi] + 0.5 (GetExpectedLogDetGaussPrecision - nu (x - m)' W (x - m) - d log 2 pi -
  /// d / kappa) for every point.
  QVStatModelResult EStepUpdateLogRelativeResponsibility(const std::vector<double>& data);
  /// The same with GetTextbookLogDetGaussPrecision.
  QVStatModelResult EStepUpdateByTextbook(const std::vector<double>& data);
  /// Whether there are n log responsibilities: else MismatchBetweenPrivateVecSizes.
  QVStatModelResult CheckSizeResponsibilityVec(std::size_t n) const;
  /// \return element n, the bad double beyond the end.
  double EStepGetLogRelativeResponsibility(std::size_t n) const;
  /// Ignored beyond the end.
  void EStepFillResponsibilityAndLogResp(std::size_t n, double resp, double logResp);

  /// Nk = sum r, xbar = sum r x / Nk, Sk = sum r (x - xbar)(x - xbar)' / Nk; all 0 when
  /// Nk <= 2^-52. MismatchBetweenInputVecSizes unless there is a responsibility for each point.
  QVStatModelResult GetSampleMoments(const std::vector<double>& data);
  /// kappa = kappa0 + Nk, m = (kappa0 m0 + Nk xbar) / kappa, nu = nu0 + Nk,
  /// W^-1 = W0^-1 + Nk Sk + kappa0 Nk / kappa (xbar - m0)(xbar - m0)', L L' = W. The failure of a
  /// matrix that is not positive definite is passed on.
  QVStatModelResult UpdateGaussParams();
  /// GetSampleMoments, UpdateComponentProbParams, UpdateGaussParams.
  QVStatModelResult MStepUpdateParams(const std::vector<double>& data);

  double GetSampleCount() const { return Nk_; }
  const std::vector<double>& GetSampleMean() const { return xbar_; }
  const std::vector<double>& GetSampleScatter() const { return Sk_; }

  /// The component's share of the lower bound that is left when sum_n log sum_k rho_nk is taken
  /// apart: less the divergences of the posteriors of weight and Gaussian from their priors.
  double GetNegativeDivergence(QVStatModelResult& result) const;
  /// The expected weight, m and the covariance matrix W^-1 / nu: 1 + d + d d values, appended.
  QVStatModelResult GetComponentParams(std::vector<double>& values) const;
  std::string Print() const;

 private:
  struct GaussWishart {
    std::vector<double> m, W, L;
    double kappa = 0.0, nu = 0.0;
  };
  QVStatModelResult ReadGauss(bool prior, GaussWishart& values, const char* where) const;
  double GetLogDetPrecision(QVStatModelResult& result, bool textbook, const char* where) const;
  QVStatModelResult EStep(const std::vector<double>& data, bool textbook, const char* where);

  std::vector<std::string> variableNames_;
  QVGaussMixParam probParams_;
  QVGaussMixParam gaussParams_;
  std::vector<double> responsibilities_;
  std::vector<double> logRelativeResponsibilities_;
  double Nk_ = 0.0;
  std::vector<double> xbar_;
  std::vector<double> Sk_;
};

/// A mixture of K components in d dimensions with a symmetric Dirichlet prior on the weights
/// (priorSampleSize / K each) and a Gauss-Wishart prior on each component, fitted by variational
/// Bayes with the textbook's expectations, whose lower bound never decreases.
///
/// Seeds: the points are cut into K equal parts along their first principal axis, variables scaled
/// to unit variance, and the parts improved by Lloyd's algorithm (k-means). Prior of a component:
/// m0 the part's mean, kappa0 = 1, nu0 = d + 1 and W0 such that the expected precision nu0 W0 is
/// the inverse of the covariance within the parts, pooled; 1e-6 of the data's variances is added to
/// that covariance, so that it can be inverted. Nothing is drawn at random.
class QVSTATS_EXPORT QVMultiDimGaussMixModel {
 public:
  /// Not valid: every operation is ObjectNotValid.
  QVMultiDimGaussMixModel() = default;
  /// Stays invalid for K = 0, without variables or data, for data whose length is no multiple of d,
  /// that are not finite, or of which a variable is constant.
  QVMultiDimGaussMixModel(std::uint64_t numComponents,
                          const std::vector<std::string>& variableNames, double priorSampleSize,
                          const std::vector<double>& data);

  bool Valid() const { return valid_; }
  /// One E-step and one M-step. The first failure is returned.
  QVStatModelResult DoOneEMCycle();
  /// Runs cycles until the bound changes by less than fitnessTol from one to the next; then
  /// InternalLogicFailure after maxCycles of them.
  /// \param fitness the lower bound plus log K!; on a failure the last bound, or the bad double.
  QVStatModelResult FitModel(double& fitness, double fitnessTol, std::uint64_t maxCycles);
  /// The lower bound after the last E-step, with the parameters that it used.
  double GetModelFitness(QVStatModelResult& result) const;
  /// The components' GetComponentParams, in order.
  QVStatModelResult GetModelParams(std::vector<double>& params) const;
  /// The component of the largest responsibility for each point, after a cycle.
  QVStatModelResult GetAssignments(std::vector<std::size_t>& components) const;
  /// The components in order. The iterator reads this object.
  QVSystem::QVIter<const QVMultiDimGaussMixComponent> GetComponents() const;
  /// "INVALID MIXTURE MODEL!", or the components.
  std::string Print() const;

 private:
  bool valid_ = false;
  std::size_t numPoints_ = 0;
  std::vector<double> data_;
  std::vector<QVMultiDimGaussMixComponent> components_;
  double fitness_ = 0.0;
};

}  // namespace QVStats

#endif  // QVSTATS_API_GAUSSIAN_MIXTURE_MULTIDIM_H
