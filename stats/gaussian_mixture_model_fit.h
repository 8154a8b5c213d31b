/// \file
/// \brief What the variational mixtures share: seeds, the loop of cycles, predictive distributions
/// and the comparison of models.
#ifndef QVSTATS_GAUSSIAN_MIXTURE_MODEL_FIT_H
#define QVSTATS_GAUSSIAN_MIXTURE_MODEL_FIT_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <string>
#include <vector>

#include "stats/api/gaussian_mixture_model.h"

namespace QVStats {

/// The tolerances and the limit of cycles with which models are compared.
inline constexpr double kQVModelSelectionTolerance = 0.0005;
inline constexpr std::uint64_t kQVModelSelectionCycles = 50000;

/// The data in ascending order, those that are NaN last.
std::vector<double> QVSortSeeds(const std::vector<double>& data);

/// The Gaussian of a component seeded by the sorted data from round(from N) up to round(to N): a
/// Gauss-Gamma prior or a frequentist start.
QVGaussMixParam QVMakeSeed(unsigned int gaussParamType, const std::vector<double>& sorted,
                           double from, double to);

/// A Dirichlet weight for each coefficient.
std::vector<QVGaussMixParam> QVMakeDirichletWeights(const std::vector<double>& coefficients);

/// Where a loop of cycles came to its end.
struct QVVariationalRun {
  bool converged = false;
  std::uint64_t cycle = 0;  ///< from 0
  double fitness;           ///< the last bound; the bad double if there was none
  double fitnessDifference = 0.0;
  double paramDifference = 0.0;
};

/// Runs cycles until both tolerances are met or maxCycles are done, with progress marks on the
/// diagnostic stream, and leaves the components with their responsibilities.
/// \return the failure of a cycle, without a call context of the caller.
QVStatModelResult QVRunVariationalCycles(QVOneDimGaussMixModel& model, std::size_t numParams,
                                         double fitnessTol, double paramTol,
                                         std::uint64_t maxCycles, QVVariationalRun& run);

/// "Num cycles, fitness difference, paramDiff, var lower bound = " and the first three of them.
void QVWriteCycles(std::ostream& out, const QVVariationalRun& run);

/// The parameters of the components that make a predictive distribution: Student's t for
/// Gauss-Gamma components, Gaussians (no degrees of freedom) for frequentist ones.
struct QVPredictiveParts {
  std::vector<double> weights, degreesOfFreedom, locations, precisions;
};

/// Of the components from `first` up to `last`.
QVStatModelResult QVCollectPredictive(const QVOneDimGaussMixModel& model, std::size_t first,
                                      std::size_t last, QVPredictiveParts& parts);

/// Makes the weights of all components sum to 1; a deviation is a diagnostic line.
void QVNormaliseTotal(std::vector<double>& weights);

/// The mixture; the null distribution, with the caller's name on the failure, otherwise.
QVUniVarPDF QVMakePredictive(QVStatModelResult& result, const std::string& name,
                             const QVPredictiveParts& parts, const char* where);

/// Whether a fit has a bound that can be compared.
bool QVFitnessIsUsable(double fitness);

/// exp(f_i) / sum_j exp(f_j) over usable fitnesses, 0 for the others.
std::vector<double> QVGetModelWeights(const std::vector<double>& fitnesses);

/// Takes the time of a fit.
class QVFitTimer {
 public:
  QVFitTimer() : wall_(std::chrono::steady_clock::now()), processor_(std::clock()) {}
  /// Seconds of processor time; of wall-clock time beyond 2147, where processor clocks wrap.
  double GetSeconds() const;

 private:
  std::chrono::steady_clock::time_point wall_;
  std::clock_t processor_;
};

/// Keeps the fits of a comparison: writes the diagnostic lines, remembers the best.
class QVModelComparison {
 public:
  /// \param label of the numbers that tell models apart: "NumComp".
  QVModelComparison(std::string label, std::string bestLabel, std::string none)
      : label_(std::move(label)), bestLabel_(std::move(bestLabel)), best_(std::move(none)) {}

  /// Times a fit, `fit(fitness)`, of the model with these numbers.
  template <class Fit>
  void Add(const std::string& numbers, Fit fit) {
    const QVFitTimer timer;
    double fitness;
    const QVStatModelResult result = fit(fitness);
    Record(numbers, fitness, timer.GetSeconds(), result);
  }
  /// Writes the closing lines, sets the weights, and the result: success unless every fit is of no
  /// use.
  void Finish(QVStatModelResult& result, std::vector<double>& modelWeights,
              const char* where) const;

 private:
  void Record(const std::string& numbers, double fitness, double seconds,
              const QVStatModelResult& result);

  std::string label_;
  std::string bestLabel_;
  std::string best_;
  double bestFitness_ = -1e+20;
  std::vector<double> fitnesses_;
  QVStatModelResult last_{true};
};

}  // namespace QVStats

#endif  // QVSTATS_GAUSSIAN_MIXTURE_MODEL_FIT_H
