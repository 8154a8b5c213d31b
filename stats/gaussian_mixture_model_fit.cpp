// What the variational mixtures share.

#include "stats/gaussian_mixture_model_fit.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

#include "platform/system/cast.h"
#include "platform/system/diagnostic_stream.h"
#include "stats/api/data_vector_functions.h"
#include "stats/api/stats_data_types.h"
#include "stats/failure.h"

namespace QVStats {

namespace {

using QVStatsBadData::BadDouble;

constexpr double kLargestFloat = 3.4028234663852886e38;
constexpr double kParamOffset = 1e-05;

double GetParamDifference(const std::vector<double>& before, const std::vector<double>& after) {
  double largest = 0.0;
  for (std::size_t i = 0; i < std::min(before.size(), after.size()); ++i) {
    const double change = std::abs(after[i] - before[i]) / std::abs(after[i] + kParamOffset);
    if (!(change <= largest)) largest = change;  // a NaN stays
    if (std::isnan(largest)) break;
  }
  return largest;
}

bool AllAreNaN(const std::vector<double>& values) {
  return std::all_of(values.begin(), values.end(), [](double value) { return std::isnan(value); });
}

/// A position in n sorted data, nearest to `share` of them.
std::ptrdiff_t GetPosition(double share, std::size_t n) {
  const double size = static_cast<double>(n);
  const double position = QVSystem::QVRoundHalfEven(share * size);
  return static_cast<std::ptrdiff_t>(position > 0.0 ? std::min(position, size) : 0.0);
}

void WriteProgress(std::ostream& out, const QVVariationalRun& run) {
  if (run.cycle % 100 == 0) out << "* ";
  if (run.cycle % 500 == 0)
    out << run.fitnessDifference << " " << run.paramDifference << " " << run.fitness << std::endl;
}

}  // namespace

std::vector<double> QVSortSeeds(const std::vector<double>& data) {
  std::vector<double> sorted(data);
  const auto end =
      std::partition(sorted.begin(), sorted.end(), [](double value) { return !std::isnan(value); });
  std::sort(sorted.begin(), end);
  return sorted;
}

QVGaussMixParam QVMakeSeed(unsigned int gaussParamType, const std::vector<double>& sorted,
                           double from, double to) {
  const std::ptrdiff_t first = GetPosition(from, sorted.size());
  const std::ptrdiff_t last = std::max(first, GetPosition(to, sorted.size()));
  double center, scale;
  QVGetCenterAndScale(center, scale, true,
                      std::vector<double>(sorted.begin() + first, sorted.begin() + last));
  const double precision = 1.0 / (scale * scale);
  if (gaussParamType == QVGaussMixParamType::FrequentistGauss)
    return {gaussParamType,
            "Frequentist One Dim Gauss Params",
            {"Gaussian Mean", "Gaussian Precision"},
            std::vector<double>{center, precision}};
  return {gaussParamType,
          "Bayes One Dim Gauss-Gamma Params",
          {"Gauss-Gamma Mean", "Gauss-Gamma Precision Multiplier", "Gauss-Gamma Precision Alpha",
           "Gauss-Gamma Precision Beta"},
          std::vector<double>{center, 1.0, 1.0, 1.0 / precision}};
}

std::vector<QVGaussMixParam> QVMakeDirichletWeights(const std::vector<double>& coefficients) {
  const double sum = std::accumulate(coefficients.begin(), coefficients.end(), 0.0);
  std::vector<QVGaussMixParam> params;
  for (const double coefficient : coefficients)
    params.emplace_back(QVGaussMixParamType::DirichletWeight, "Bayes Dirichlet Mixing Probs",
                        std::vector<std::string>{"Dirichlet Coeff", "Sum Of Dirichlet Coeffs"},
                        std::vector<double>{coefficient, sum});
  return params;
}

QVStatModelResult QVRunVariationalCycles(QVOneDimGaussMixModel& model, std::size_t numParams,
                                         double fitnessTol, double paramTol,
                                         std::uint64_t maxCycles, QVVariationalRun& run) {
  std::ostream& out = QVSystem::QVGetDiagnosticStream();
  std::vector<double> before(numParams), params(numParams, -kLargestFloat);
  double previousFitness = kLargestFloat;
  run.fitness = BadDouble;
  QVStatModelResult result(true);
  bool stuck = false;
  for (run.cycle = 0; run.cycle != maxCycles; ++run.cycle) {
    if (!stuck) {
      before.swap(params);
      result = model.DoOneFastEMCycle();
      if (result.NotSuccessful()) break;
      const double fitness = model.GetModelFitness(result);
      if (result.NotSuccessful()) break;
      run.fitness = fitness;
      result = model.GetModelParams(params);
      if (result.NotSuccessful()) break;
      run.paramDifference = GetParamDifference(before, params);
      run.fitnessDifference = run.fitness - previousFitness;
      // Where every parameter is NaN, the cycles left cannot change anything.
      stuck = std::isnan(run.fitness) && AllAreNaN(params);
    }
    WriteProgress(out, run);
    run.converged = std::abs(run.fitnessDifference) < fitnessTol && run.paramDifference < paramTol;
    if (run.converged) break;
    previousFitness = run.fitness;
  }
  model.FillResponsibilities();
  return result;
}

void QVWriteCycles(std::ostream& out, const QVVariationalRun& run) {
  out << "Num cycles, fitness difference, paramDiff, var lower bound = " << run.cycle << " "
      << run.fitnessDifference << " " << run.paramDifference << " ";
}

QVStatModelResult QVCollectPredictive(const QVOneDimGaussMixModel& model, std::size_t first,
                                      std::size_t last, QVPredictiveParts& parts) {
  std::size_t k = 0;
  for (const QVOneDimGaussMixComponent& component : model.GetComponents()) {
    if (k++ < first || k > last) continue;
    double weight, degreesOfFreedom, location, precision;
    QVStatModelResult result(true);
    if (component.GetComponentGaussParams().GetParameterType() == QVGaussMixParamType::GaussGamma) {
      result = GetComponentParamsForStudentsTPredictiveDist(component, weight, degreesOfFreedom,
                                                            location, precision);
      if (result.IsSuccessful()) parts.degreesOfFreedom.push_back(degreesOfFreedom);
    } else {
      result = GetComponentParamsForGaussPredictiveDist(component, weight, location, precision);
    }
    if (result.NotSuccessful()) return result;
    parts.weights.push_back(weight);
    parts.locations.push_back(location);
    parts.precisions.push_back(precision);
  }
  return true;
}

void QVNormaliseTotal(std::vector<double>& weights) {
  const double sum = std::accumulate(weights.begin(), weights.end(), 0.0);
  if (sum == 1.0) return;
  QVSystem::QVGetDiagnosticStream() << "sumP - 1 = " << sum - 1.0 << std::endl;
  for (double& weight : weights) weight /= sum;
}

QVUniVarPDF QVMakePredictive(QVStatModelResult& result, const std::string& name,
                             const QVPredictiveParts& parts, const char* where) {
  const bool isGaussian = parts.degreesOfFreedom.empty();
  QVUniVarPDF mixture =
      isGaussian
          ? QVUnivariateGaussMixture(name, parts.weights, parts.locations, parts.precisions, result)
          : QVUnivariateStudentsTMixture(name, parts.weights, parts.degreesOfFreedom,
                                         parts.locations, parts.precisions, result);
  return QVFailedIn(result, where) ? QVUniVarNullPDF(name) : mixture;
}

bool QVFitnessIsUsable(double fitness) { return std::isfinite(fitness) && fitness != BadDouble; }

std::vector<double> QVGetModelWeights(const std::vector<double>& fitnesses) {
  double best = -std::numeric_limits<double>::infinity();
  for (const double fitness : fitnesses)
    if (QVFitnessIsUsable(fitness)) best = std::max(best, fitness);
  std::vector<double> weights;
  double sum = 0.0;
  for (const double fitness : fitnesses) {
    weights.push_back(QVFitnessIsUsable(fitness) ? std::exp(fitness - best) : 0.0);
    sum += weights.back();
  }
  if (sum > 0.0)
    for (double& weight : weights) weight /= sum;
  return weights;
}

double QVFitTimer::GetSeconds() const {
  constexpr double kLongestForClock = 2147.0;
  const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - wall_;
  if (wall.count() > kLongestForClock) return wall.count();
  return static_cast<double>(static_cast<float>(std::clock() - processor_) * 1e-6f);
}

void QVModelComparison::Record(const std::string& numbers, double fitness, double seconds,
                               const QVStatModelResult& result) {
  QVSystem::QVGetDiagnosticStream() << label_ << ", OptimalFitness = " << numbers << " " << fitness
                                    << " Fitting time = " << seconds << std::endl;
  fitnesses_.push_back(fitness);
  if (QVFitnessIsUsable(fitness) && fitness > bestFitness_) {
    bestFitness_ = fitness;
    best_ = numbers;
  }
  if (result.NotSuccessful()) last_ = result;
}

void QVModelComparison::Finish(QVStatModelResult& result, std::vector<double>& modelWeights,
                               const char* where) const {
  QVSystem::QVGetDiagnosticStream() << std::string(42, '$') << "\nBest RESULT: " << bestLabel_
                                    << ", fitness = " << best_ << " " << bestFitness_ << std::endl;
  modelWeights = QVGetModelWeights(fitnesses_);
  const bool useful =
      fitnesses_.empty() || std::any_of(fitnesses_.begin(), fitnesses_.end(), QVFitnessIsUsable);
  result = true;
  if (useful) return;
  if (last_.NotSuccessful()) {
    result = QVCalledFrom(where, last_);
  } else {
    result = QVFailure(QVStatModelFailureType::InternalLogicFailure, where)
             << "No model has a finite fitness";
  }
}

}  // namespace QVStats
