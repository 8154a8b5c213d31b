// Mixtures split into an empirical null and an alternative.

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

#include "platform/math/special_functions.h"
#include "platform/system/cast.h"
#include "platform/system/diagnostic_stream.h"
#include "stats/api/matrix.h"
#include "stats/api/stats_data_types.h"
#include "stats/failure.h"
#include "stats/gaussian_mixture_model_fit.h"

namespace QVStats {

namespace {

using QVStatModelFailureType::InternalLogicFailure;
using QVStatModelFailureType::ObjectNotValid;
using QVStatModelFailureType::UpperBoundViolated;
using QVStatsBadData::BadDouble;

constexpr double kWeightTolerance = 1.1920928955078125e-07;  // 2^-23

double Sum(const std::vector<double>& values) {
  return std::accumulate(values.begin(), values.end(), 0.0);
}

/// "probs sum to greater than one! " and the weights.
QVStatModelResult RefuseWeights(unsigned int type, const char* where, const char* complaint,
                                const std::string& label, const std::vector<double>& weights) {
  return QVFailure(type, where) << complaint << QVPrintVectorDoubles(label, weights, 0) << " "
                                << "sum probs = " << Sum(weights);
}

/// Seeds of `count` components: equal slices of the sorted data from share `from` to share `to`.
void AddSeeds(std::vector<QVGaussMixParam>& seeds, unsigned int gaussParamType,
              const std::vector<double>& sorted, double from, double width, std::uint64_t count) {
  const double step = width / QVSystem::QVDoubleFromCount(count);
  for (std::uint64_t i = 0; i < count; ++i) {
    const double begin = from + static_cast<double>(i) * step;
    const double end = from + static_cast<double>(i + 1) * step;
    seeds.push_back(QVMakeSeed(gaussParamType, sorted, std::max(begin, 0.0), std::min(end, 1.0)));
  }
}

}  // namespace

/// The components from `first` up to `last`.
struct QVEmpiricalNullAltMixture::Part {
  std::uint64_t first;
  std::uint64_t last;
  const char* label;  // of its weights; null for the whole mixture
};

QVEmpiricalNullAltMixture::QVEmpiricalNullAltMixture(const Names& names,
                                                     unsigned int gaussParamType,
                                                     double nullFraction, std::uint64_t numNull,
                                                     std::uint64_t numAlt, const std::string& name,
                                                     const std::vector<double>& dirichletCoeffs,
                                                     const std::vector<double>& data)
    : names_(names) {
  if (numNull == 0 || numAlt == 0 || numNull > dirichletCoeffs.size() ||
      numAlt != dirichletCoeffs.size() - numNull)
    return;
  nullFraction_ = nullFraction;
  numNull_ = numNull;
  numAlt_ = numAlt;
  name_ = name;
  const std::vector<double> sorted = QVSortSeeds(data);
  std::vector<QVGaussMixParam> seeds;
  AddSeeds(seeds, gaussParamType, sorted, 0.0, nullFraction, numNull);
  AddSeeds(seeds, gaussParamType, sorted, nullFraction, 1.0 - nullFraction, numAlt);
  model_ = QVOneDimGaussMixModel(name, QVMakeDirichletWeights(dirichletCoeffs), seeds, data);
  valid_ = true;
}

unsigned int QVEmpiricalNullAltMixture::GetCount(QVStatModelResult& result, std::uint64_t count,
                                                 const char* method) const {
  result = true;
  if (valid_) return QVSystem::QVUnsignedFromCountChecked(count);
  result.SetFailureTypeAndWhereFailed(ObjectNotValid, std::string(names_.inCountGetters) + method);
  return std::numeric_limits<unsigned int>::max();
}

double QVEmpiricalNullAltMixture::GetExpectedProb(QVStatModelResult& result, const Part& part,
                                                  const char* method) const {
  const std::string where = std::string(names_.own) + "::" + method;
  result = true;
  if (!valid_) {
    result = QVFailure(ObjectNotValid, where.c_str());
    return BadDouble;
  }
  std::vector<double> weights;
  std::uint64_t k = 0;
  for (const QVOneDimGaussMixComponent& component : model_.GetComponents()) {
    if (k++ < part.first || k > part.last) continue;
    weights.push_back(GetExpectedComponentProbability(result, component.GetComponentProbParams()));
    if (QVFailedIn(result, where.c_str())) return BadDouble;
  }
  if (weights.size() != part.last - part.first) {
    result = QVFailure(InternalLogicFailure, where.c_str());
    return BadDouble;
  }
  const double sum = Sum(weights);
  if (sum <= 1.0 || std::isnan(sum)) return sum;
  result = RefuseWeights(UpperBoundViolated, where.c_str(), "probs sum to greater than one! ",
                         part.label, weights);
  return BadDouble;
}

QVUniVarPDF QVEmpiricalNullAltMixture::GetPredictive(QVStatModelResult& result, const Part& part,
                                                     const char* method) const {
  const std::string where = std::string(names_.own) + "::" + method;
  result = true;
  QVPredictiveParts parts;
  if (valid_) {
    result = QVCalledFrom(where.c_str(), QVCollectPredictive(model_, part.first, part.last, parts));
  } else {
    result = QVFailure(ObjectNotValid, where.c_str());
  }
  if (result.NotSuccessful()) return QVUniVarNullPDF(name_);
  if (part.label) {
    const double sum = Sum(parts.weights);
    if (sum > 1.0)
      result = RefuseWeights(UpperBoundViolated, where.c_str(), "probs sum to greater than one! ",
                             "mixing probs", parts.weights);
    for (double& weight : parts.weights) weight /= sum;
    if (result.IsSuccessful() && !(std::abs(Sum(parts.weights) - 1.0) <= kWeightTolerance))
      result = RefuseWeights(InternalLogicFailure, where.c_str(),
                             "probs sum to different than one! ", "mixing probs", parts.weights);
    if (result.NotSuccessful()) return QVUniVarNullPDF(name_);
  } else {
    QVNormaliseTotal(parts.weights);
  }
  return QVMakePredictive(result, name_, parts, where.c_str());
}

unsigned int QVEmpiricalNullAltMixture::GetNumNullComponents(QVStatModelResult& result) const {
  return GetCount(result, numNull_, "::GetNumNullComponents");
}

unsigned int QVEmpiricalNullAltMixture::GetNumAltComponents(QVStatModelResult& result) const {
  return GetCount(result, numAlt_, "::GetNumAltComponents");
}

double QVEmpiricalNullAltMixture::GetExpectedProbNull(QVStatModelResult& result) const {
  return GetExpectedProb(result, {0, numNull_, "Null component probs"}, "GetExpectedProbNull");
}

double QVEmpiricalNullAltMixture::GetExpectedProbAlt(QVStatModelResult& result) const {
  return GetExpectedProb(result, {numNull_, numNull_ + numAlt_, "Alt component probs"},
                         "GetExpectedProbAlt");
}

QVUniVarPDF QVEmpiricalNullAltMixture::GetPosteriorPredictiveTotDist(
    QVStatModelResult& result) const {
  return GetPredictive(result, {0, numNull_ + numAlt_, nullptr}, "GetPosteriorPredictiveTotDist");
}

QVUniVarPDF QVEmpiricalNullAltMixture::GetPosteriorPredictiveNullDist(
    QVStatModelResult& result) const {
  return GetPredictive(result, {0, numNull_, "Null component probs"},
                       "GetPosteriorPredictiveNullDist");
}

QVUniVarPDF QVEmpiricalNullAltMixture::GetPosteriorPredictiveAltDist(
    QVStatModelResult& result) const {
  return GetPredictive(result, {numNull_, numNull_ + numAlt_, "Alt component probs"},
                       "GetPosteriorPredictiveAltDist");
}

QVStatModelResult QVEmpiricalNullAltMixture::GetModelParams(std::vector<double>& params) const {
  return QVCalledFrom((std::string(names_.own) + "::GetModelParams").c_str(),
                      model_.GetModelParams(params));
}

// The component counts of the first class report another class's name.
constexpr QVEmpiricalNullAltMixture::Names QVEmpiricalNullAltMixture::kGaussGammaNames = {
    "DirGaussGammaMixForEmpiricalNullAlt", "QVDirichletGaussGammaMixtureModel"};
constexpr QVEmpiricalNullAltMixture::Names QVEmpiricalNullAltMixture::kGaussNames = {
    "DirGaussMixForEmpiricalNullAlt", "DirGaussMixForEmpiricalNullAlt"};

DirGaussGammaMixForEmpiricalNullAlt::DirGaussGammaMixForEmpiricalNullAlt()
    : QVEmpiricalNullAltMixture(kGaussGammaNames) {}

DirGaussGammaMixForEmpiricalNullAlt::DirGaussGammaMixForEmpiricalNullAlt(
    double nullFraction, std::uint64_t numNull, std::uint64_t numAlt, const std::string& name,
    const std::vector<double>& dirichletCoeffs, const std::vector<double>& data)
    : QVEmpiricalNullAltMixture(kGaussGammaNames, QVGaussMixParamType::GaussGamma, nullFraction,
                                numNull, numAlt, name, dirichletCoeffs, data) {}

QVStatModelResult DirGaussGammaMixForEmpiricalNullAlt::FitModel(double& fitness, double fitnessTol,
                                                                double paramTol,
                                                                std::uint64_t maxCycles) {
  constexpr const char* where = "DirGaussGammaMixForEmpiricalNullAlt::FitModel";
  fitness = BadDouble;
  if (!valid_) return QVFailure(ObjectNotValid, where);
  QVVariationalRun run;
  const QVStatModelResult result = QVRunVariationalCycles(model_, 5 * (numNull_ + numAlt_),
                                                          fitnessTol, paramTol, maxCycles, run);
  fitness = run.fitness;
  if (result.NotSuccessful()) return QVCalledFrom(where, result);
  if (!run.converged)
    return QVFailure(InternalLogicFailure, where)
           << "Convergence Failure!! Num cycles, fitness difference, var lower bound = "
           << run.cycle << " " << run.fitnessDifference << " " << run.fitness << "\n";
  std::ostream& out = QVSystem::QVGetDiagnosticStream();
  QVWriteCycles(out, run);
  out << run.fitness << std::endl;
  fitness += QVMath::QVlgamma(QVSystem::QVDoubleFromCount(numNull_) + 1.0) +
             QVMath::QVlgamma(QVSystem::QVDoubleFromCount(numAlt_) + 1.0);
  return true;
}

DirGaussMixForEmpiricalNullAlt::DirGaussMixForEmpiricalNullAlt()
    : QVEmpiricalNullAltMixture(kGaussNames) {}

DirGaussMixForEmpiricalNullAlt::DirGaussMixForEmpiricalNullAlt(
    double nullFraction, std::uint64_t numNull, std::uint64_t numAlt, const std::string& name,
    const std::vector<double>& dirichletCoeffs, const std::vector<double>& data)
    : QVEmpiricalNullAltMixture(kGaussNames, QVGaussMixParamType::FrequentistGauss, nullFraction,
                                numNull, numAlt, name, dirichletCoeffs, data) {}

QVStatModelResult DirGaussMixForEmpiricalNullAlt::FitModel(std::uint64_t maxCycles) {
  constexpr const char* where = "DirGaussMixForEmpiricalNullAlt::FitModel";
  if (!valid_) return QVFailure(ObjectNotValid, where);
  QVStatModelResult result(true);
  for (std::uint64_t cycle = 0; cycle != maxCycles && result.IsSuccessful(); ++cycle)
    result = QVCalledFrom(where, model_.DoOneFastEMCycle());
  model_.FillResponsibilities();
  return result;
}

void FitGaussGammaMixModel(
    QVStatModelResult& result, std::vector<double>& modelWeights,
    std::vector<DirGaussGammaMixForEmpiricalNullAlt>& models, double nullFraction,
    const std::vector<std::pair<unsigned int, unsigned int>>& numNullAltPairs,
    const std::string& name, double priorNullProb, double priorSampleSize,
    const std::vector<double>& data) {
  const double nullTotal = priorNullProb * priorSampleSize;
  const double altTotal = (1.0 - priorNullProb) * priorSampleSize;
  models.clear();
  QVModelComparison comparison("NumNull, NumAlt", "numNull, NumAlt", "0 0");
  for (const auto& [numNull, numAlt] : numNullAltPairs) {
    std::vector<double> coefficients(numNull, nullTotal / numNull);
    coefficients.insert(coefficients.end(), numAlt, altTotal / numAlt);
    DirGaussGammaMixForEmpiricalNullAlt model(nullFraction, numNull, numAlt, name, coefficients,
                                              data);
    comparison.Add(std::to_string(numNull) + " " + std::to_string(numAlt), [&](double& fitness) {
      return model.FitModel(fitness, kQVModelSelectionTolerance, kQVModelSelectionTolerance,
                            kQVModelSelectionCycles);
    });
    models.push_back(std::move(model));
  }
  comparison.Finish(result, modelWeights, "FitGaussGammaMixModel");
}

}  // namespace QVStats
