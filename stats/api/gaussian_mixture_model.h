/// \file
/// \brief One-dimensional Gaussian mixtures: by maximum likelihood, by variational Bayes, and split
/// into an empirical null and an alternative.
///
///     std::vector<double> weights;
///     std::vector<QVDirichletGaussGammaMixtureModel> models;
///     QVStatModelResult result(true);
///     FitDirichletGaussGammaMixtureModel(result, weights, models, 1, 6, "velocity", 1.0, data);
///     // weights[k]: the probability of k + 1 components among the six models
///
/// Fits write progress and outcome as diagnostic lines, platform/system/diagnostic_stream.h says
/// where; the texts are told with each fit. Failures are recorded under "Class::Method" or the name
/// of the function. Data that hold a NaN or an infinity, or that are constant, give bounds that are
/// NaN: such a fit ends at its limit of cycles, at once.
///
/// Sources: A. P. Dempster, N. M. Laird, D. B. Rubin, J. R. Stat. Soc. B 39(1), 1977 (EM);
/// C. M. Bishop, "Pattern Recognition and Machine Learning", 2006, section 10.2 (variational
/// mixtures); B. Efron, "Large-Scale Inference", 2010, chapters 2 to 6 (empirical null).
#ifndef QVSTATS_API_GAUSSIAN_MIXTURE_MODEL_H
#define QVSTATS_API_GAUSSIAN_MIXTURE_MODEL_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "platform/system/iter.h"
#include "stats/api/export.h"
#include "stats/api/gaussian_mixture_component.h"
#include "stats/api/pdf.h"
#include "stats/api/stat_model.h"

namespace QVStats {

/// The engine: data, components and one cycle of expectation and maximisation. Whether a cycle is a
/// step of maximum likelihood or of variational Bayes is decided by the types of the parameters.
class QVSTATS_EXPORT QVOneDimGaussMixModel {
 public:
  /// Not valid: every operation is ObjectNotValid.
  QVOneDimGaussMixModel() = default;
  /// One component, called `name`, for each pair of parameters. Stays invalid, which nothing
  /// reports, without parameters, for lists of unequal length, or when frequentist weights do not
  /// sum to 1 within 2^-23. The data are copied.
  QVOneDimGaussMixModel(const std::string& name, const std::vector<QVGaussMixParam>& probParams,
                        const std::vector<QVGaussMixParam>& gaussParams,
                        const std::vector<double>& data);

  /// The E-step, which shares out each datum, r_nk = exp(l_nk - L_n) with l the log relative
  /// responsibilities and L_n = log sum_k exp(l_nk); then each component's M-step. The first
  /// failure is returned; the components are then partly updated.
  QVStatModelResult DoOneEMCycle();
  /// The same for runs of many cycles: the components get their moments and parameters, equal to
  /// rounding, but no responsibilities. About twice as fast; nothing is allocated.
  QVStatModelResult DoOneFastEMCycle();
  /// Gives the components the responsibilities of the last cycle; does nothing before the first.
  void FillResponsibilities();

  /// The sum of the components' GetComponentOfModelFitness: the lower bound for Dirichlet weights,
  /// 0 for frequentist ones.
  double GetModelFitness(QVStatModelResult& result) const;
  /// Replaces `params` by the components' GetComponentParams, in order.
  QVStatModelResult GetModelParams(std::vector<double>& params) const;
  /// The components in order. The iterator reads this object.
  QVSystem::QVIter<const QVOneDimGaussMixComponent> GetComponents() const;
  /// "INVALID MIXTURE MODEL!", or the components.
  std::string Print() const;

  bool Valid() const { return valid_; }

 private:
  /// One row of numbers for each component, all that a fast cycle works on.
  struct Workspace {
    std::vector<double> logScales, halfPrecisions, centers, counts, deviations, squares, scratch;
  };

  QVStatModelResult CollectTerms(const char* where);
  bool MomentsAreExact(std::size_t k) const;

  bool valid_ = false;
  std::vector<double> data_;
  std::vector<QVOneDimGaussMixComponent> components_;
  Workspace work_;
  bool haveTerms_ = false;  // of the last cycle's E-step
  /// sum r log r over data and components, of the last fast cycle; 0 when the components have their
  /// responsibilities.
  double entropyTerm_ = 0.0;
};

/// A mixture of K components with a symmetric Dirichlet prior on the weights and a Gauss-Gamma
/// prior on each component, fitted by variational Bayes.
///
/// Component k is seeded by a slice of the sorted data, from position round(k N / K) up to
/// round((k + 1) N / K): its prior has the slice's robust centre as m0, the square of its robust
/// scale as b0 (QVGetCenterAndScale), and kappa0 = a0 = 1. The Dirichlet coefficients are
/// priorSampleSize / K.
class QVSTATS_EXPORT QVDirichletGaussGammaMixtureModel {
 public:
  /// Not valid, with the name "invalid": every operation is ObjectNotValid.
  QVDirichletGaussGammaMixtureModel() = default;
  /// Stays invalid for K = 0 and without data.
  QVDirichletGaussGammaMixtureModel(std::uint64_t numComponents, const std::string& name,
                                    double priorSampleSize, const std::vector<double>& data);

  /// Runs cycles until the bound changes by less than fitnessTol and every parameter p by less than
  /// paramTol |p + 1e-05|, or maxCycles cycles are done: neither is a failure, and both end with
  /// the warning "NumCycles exceeded" through QVSystem::QVThrow.
  /// \param fitness the lower bound plus log K!, for the equivalent labellings. When a cycle fails:
  /// the last bound, or the bad double if there is none.
  QVStatModelResult FitModel(double& fitness, double fitnessTol, double paramTol,
                             std::uint64_t maxCycles);

  /// \return the largest unsigned value on a failure.
  unsigned int GetNumComponents(QVStatModelResult& result) const;
  /// The distribution of a new datum: a mixture of Student's t distributions, a component each
  /// (GetComponentParamsForStudentsTPredictiveDist). The null one on a failure.
  QVUniVarPDF GetPosteriorPredictiveDist(QVStatModelResult& result) const;
  /// Five values a component: weight, m, kappa, a, b.
  QVStatModelResult GetModelParams(std::vector<double>& params) const;
  std::string Print() const { return model_.Print(); }

  /// The engine with its components.
  const QVOneDimGaussMixModel& GetModel() const { return model_; }

 private:
  bool valid_ = false;
  std::uint64_t numComponents_ = 0;
  std::string name_ = "invalid";
  QVOneDimGaussMixModel model_;
};

/// Fits models of minComponents, minComponents + 1, ... maxComponents components, with tolerances
/// 0.0005 and at most 50000 cycles.
///
/// \param modelWeights exp(f_K) / sum_j exp(f_j) from the fitnesses f; replaced. A fitness that is
/// not finite gets the weight 0.
/// \param models the fitted models; replaced.
/// The result is success if a model could be fitted or none was asked for, else the last failure.
QVSTATS_EXPORT void FitDirichletGaussGammaMixtureModel(
    QVStatModelResult& result, std::vector<double>& modelWeights,
    std::vector<QVDirichletGaussGammaMixtureModel>& models, std::uint64_t minComponents,
    std::uint64_t maxComponents, const std::string& name, double priorSampleSize,
    const std::vector<double>& data);

/// What the two null/alternative models share: the first numNull components describe the null part
/// of the data, the numAlt after them the alternative part.
///
/// The null components are seeded by equal slices of the lowest nullFraction of the sorted data,
/// the others by equal slices of the rest, each by its robust centre and scale. Invalid, which the
/// queries report as ObjectNotValid, unless both counts are positive and there is a Dirichlet
/// coefficient for every component.
class QVSTATS_EXPORT QVEmpiricalNullAltMixture {
 public:
  unsigned int GetNumNullComponents(QVStatModelResult& result) const;
  unsigned int GetNumAltComponents(QVStatModelResult& result) const;
  /// The expected weight of the null components, of the alternative ones; the largest finite double
  /// on a failure.
  double GetExpectedProbNull(QVStatModelResult& result) const;
  double GetExpectedProbAlt(QVStatModelResult& result) const;
  /// The distribution of a new datum, of a new null datum and of a new alternative one; the null
  /// distribution on a failure.
  QVUniVarPDF GetPosteriorPredictiveTotDist(QVStatModelResult& result) const;
  QVUniVarPDF GetPosteriorPredictiveNullDist(QVStatModelResult& result) const;
  QVUniVarPDF GetPosteriorPredictiveAltDist(QVStatModelResult& result) const;
  QVStatModelResult GetModelParams(std::vector<double>& params) const;
  std::string Print() const { return model_.Print(); }

  /// The engine with its components.
  const QVOneDimGaussMixModel& GetModel() const { return model_; }

 protected:
  /// The class names that head those of failing routines.
  struct Names {
    const char* own;
    const char* inCountGetters;
  };
  explicit QVEmpiricalNullAltMixture(const Names& names) : names_(names) {}
  QVEmpiricalNullAltMixture(const Names& names, unsigned int gaussParamType, double nullFraction,
                            std::uint64_t numNull, std::uint64_t numAlt, const std::string& name,
                            const std::vector<double>& dirichletCoeffs,
                            const std::vector<double>& data);
  ~QVEmpiricalNullAltMixture() = default;
  QVEmpiricalNullAltMixture(const QVEmpiricalNullAltMixture&) = default;
  QVEmpiricalNullAltMixture& operator=(const QVEmpiricalNullAltMixture&) = default;

  static const Names kGaussGammaNames;
  static const Names kGaussNames;

  Names names_;
  bool valid_ = false;
  double nullFraction_ = 1.0;
  std::uint64_t numNull_ = 0;
  std::uint64_t numAlt_ = 0;
  std::string name_ = "invalid";
  QVOneDimGaussMixModel model_;

 private:
  struct Part;  // a range of the components and its names

  unsigned int GetCount(QVStatModelResult& result, std::uint64_t count, const char* method) const;
  double GetExpectedProb(QVStatModelResult& result, const Part& part, const char* method) const;
  QVUniVarPDF GetPredictive(QVStatModelResult& result, const Part& part, const char* method) const;
};

/// A Dirichlet prior on the weights and Gauss-Gamma priors on the components (m0 the seed's centre,
/// b0 its squared scale, kappa0 = a0 = 1). Predictive distributions are mixtures of Student's t.
class QVSTATS_EXPORT DirGaussGammaMixForEmpiricalNullAlt : public QVEmpiricalNullAltMixture {
 public:
  DirGaussGammaMixForEmpiricalNullAlt();
  DirGaussGammaMixForEmpiricalNullAlt(double nullFraction, std::uint64_t numNull,
                                      std::uint64_t numAlt, const std::string& name,
                                      const std::vector<double>& dirichletCoeffs,
                                      const std::vector<double>& data);

  /// Runs cycles as QVDirichletGaussGammaMixtureModel::FitModel does. InternalLogicFailure when
  /// maxCycles cycles did not converge.
  /// \param fitness the lower bound plus log numNull! numAlt!. On a failure: the last bound, or the
  /// bad double if there is none.
  QVStatModelResult FitModel(double& fitness, double fitnessTol, double paramTol,
                             std::uint64_t maxCycles);
};

/// A Dirichlet prior on the weights and frequentist Gaussians, which start as the seeds. Predictive
/// distributions are Gaussian mixtures.
class QVSTATS_EXPORT DirGaussMixForEmpiricalNullAlt : public QVEmpiricalNullAltMixture {
 public:
  DirGaussMixForEmpiricalNullAlt();
  DirGaussMixForEmpiricalNullAlt(double nullFraction, std::uint64_t numNull, std::uint64_t numAlt,
                                 const std::string& name,
                                 const std::vector<double>& dirichletCoeffs,
                                 const std::vector<double>& data);

  /// Runs exactly maxCycles cycles; the first failure ends them.
  QVStatModelResult FitModel(std::uint64_t maxCycles);
};

/// Fits a model for each pair (numNull, numAlt), with tolerances 0.0005 and at most 50000 cycles.
/// The Dirichlet coefficients of a part share priorNullProb priorSampleSize (null) or the rest of
/// priorSampleSize equally. Outputs and result as FitDirichletGaussGammaMixtureModel.
QVSTATS_EXPORT void FitGaussGammaMixModel(
    QVStatModelResult& result, std::vector<double>& modelWeights,
    std::vector<DirGaussGammaMixForEmpiricalNullAlt>& models, double nullFraction,
    const std::vector<std::pair<unsigned int, unsigned int>>& numNullAltPairs,
    const std::string& name, double priorNullProb, double priorSampleSize,
    const std::vector<double>& data);

/// Which scores are discoveries, from a null/alternative model with the alternative above the null.
///
/// With p0, p1 the expected weights of the parts, f0, f1 their predictive densities and S0, S1
/// their predictive survival functions:
/// - the local false discovery rate of a score x, the probability that it is a null one, is
///   p0 f0(x) / (p0 f0(x) + p1 f1(x));
/// - the tail-area rate, the expected share of nulls among scores of x or more, is
///   p0 S0(x) / (p0 S0(x) + p1 S1(x));
/// - the q-value of a score in a list is the smallest tail-area rate at it or at a lower score of
///   the list: the lowest rate at which the score is called.
/// Densities and survivals enter by their logarithms, so that far tails do not become 0 / 0.
///
/// Source: B. Efron, "Large-Scale Inference", 2010, chapters 2, 4 and 5; J. D. Storey, Ann. Stat.
/// 31(6), 2003 (q-values).
class QVSTATS_EXPORT QVMixtureDiscovery {
 public:
  /// Takes the weights and predictive distributions of the model as it stands; the model is not
  /// read afterwards. Test GetResultOfConstructor(): a failure of the model's queries.
  explicit QVMixtureDiscovery(const QVEmpiricalNullAltMixture& model);

  const QVStatModelResult& GetResultOfConstructor() const { return result_; }

  /// Failures of the queries: ObjectNotValid without a valid model; ArgumentOutOfRange for a score
  /// or a rate that is NaN. The rates are then the bad double.
  double GetLocalFDR(QVStatModelResult& result, double score) const;
  double GetTailFDR(QVStatModelResult& result, double score) const;
  /// A q-value for each score, in their order. O(n log n).
  QVStatModelResult GetQValues(std::vector<double>& qValues,
                               const std::vector<double>& scores) const;
  /// The positions of the scores whose q-value is at most `rate`, highest score first.
  QVStatModelResult Call(std::vector<std::size_t>& called, double rate,
                         const std::vector<double>& scores) const;

 private:
  double GetRate(QVStatModelResult& result, double score, bool tail, const char* where) const;

  QVStatModelResult result_;
  double logOdds_;  // of the alternative: log(p1 / p0)
  QVUniVarPDF null_;
  QVUniVarPDF alternative_;
};

}  // namespace QVStats

#endif  // QVSTATS_API_GAUSSIAN_MIXTURE_MODEL_H
