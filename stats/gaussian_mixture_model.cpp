// The engine of one-dimensional mixtures.

#include "stats/api/gaussian_mixture_model.h"

#include <algorithm>
#include <cmath>

#include "platform/math/dense_kernels.h"
#include "stats/api/stats_data_types.h"
#include "stats/failure.h"

namespace QVStats {

namespace {

using QVStatModelFailureType::ObjectNotValid;
using QVStatsBadData::BadDouble;

constexpr double kWeightTolerance = 1.1920928955078125e-07;  // 2^-23

/// Whether frequentist weights sum to 1; Dirichlet ones always may.
bool WeightsAreUsable(const std::vector<QVGaussMixParam>& probParams) {
  if (probParams.front().GetParameterType() != QVGaussMixParamType::FrequentistWeight) return true;
  double sum = 0.0;
  for (const QVGaussMixParam& param : probParams) {
    QVStatModelResult result(true);
    sum += param.GetInitialOrPriorParamVal(result, 0);
    if (result.NotSuccessful()) return false;
  }
  return std::abs(sum - 1.0) <= kWeightTolerance;
}

}  // namespace

QVOneDimGaussMixModel::QVOneDimGaussMixModel(const std::string& name,
                                             const std::vector<QVGaussMixParam>& probParams,
                                             const std::vector<QVGaussMixParam>& gaussParams,
                                             const std::vector<double>& data)
    : data_(data) {
  if (probParams.empty() || probParams.size() != gaussParams.size()) return;
  if (!WeightsAreUsable(probParams)) return;
  for (std::size_t k = 0; k < probParams.size(); ++k)
    components_.emplace_back(name, probParams[k], gaussParams[k]);
  const std::size_t size = components_.size();
  for (auto* const row : {&work_.logScales, &work_.halfPrecisions, &work_.centers, &work_.counts,
                          &work_.deviations, &work_.squares})
    row->resize(size);
  work_.scratch.resize(size * QVMath::kQVMixtureWork);
  valid_ = true;
}

QVStatModelResult QVOneDimGaussMixModel::CollectTerms(const char* where) {
  haveTerms_ = false;
  for (std::size_t k = 0; k < components_.size(); ++k) {
    QVOneDimGaussMixComponent::Terms terms;
    const QVStatModelResult result = components_[k].GetTerms(terms);
    if (result.NotSuccessful()) return QVCalledFrom(where, result);
    work_.logScales[k] = terms.logScale;
    work_.halfPrecisions[k] = terms.halfPrecision;
    work_.centers[k] = terms.center;
  }
  haveTerms_ = true;
  return true;
}

/// The variance comes from moments about the previous mean, which lose digits when the mean moves
/// by many of the new deviations.
bool QVOneDimGaussMixModel::MomentsAreExact(std::size_t k) const {
  constexpr double kLargestLoss = 1e4;
  const double shift = work_.deviations[k] / work_.counts[k];
  const double square = work_.squares[k] / work_.counts[k];
  return !(square > kLargestLoss * (square - shift * shift)) || !(square > 0.0);
}

QVStatModelResult QVOneDimGaussMixModel::DoOneFastEMCycle() {
  constexpr const char* where = "QVOneDimGaussMixModel::DoOneEMCycle";
  if (!valid_) return QVFailure(ObjectNotValid, where);
  QVStatModelResult result = CollectTerms(where);
  if (result.NotSuccessful()) return result;
  const QVMath::QVMixtureTerms terms = {components_.size(), work_.logScales.data(),
                                        work_.halfPrecisions.data(), work_.centers.data()};
  const QVMath::QVMixtureSums sums = {work_.counts.data(), work_.deviations.data(),
                                      work_.squares.data()};
  const double logDensity = QVMath::QVGetDenseKernels().sumMixture(
      data_.size(), data_.data(), terms, sums, work_.scratch.data());
  bool exact = true;
  entropyTerm_ = -logDensity;
  for (std::size_t k = 0; k < components_.size(); ++k) {
    // sum r log r = sum r l - sum L, and l is a constant less a multiple of the square.
    entropyTerm_ += work_.logScales[k] * work_.counts[k];
    if (work_.squares[k] != 0.0) entropyTerm_ -= work_.halfPrecisions[k] * work_.squares[k];
    exact = exact && MomentsAreExact(k);
    const double shift = work_.deviations[k] / work_.counts[k];
    const double variance = work_.squares[k] / work_.counts[k] - shift * shift;
    components_[k].SetSampleMoments(work_.counts[k], work_.centers[k] + shift,
                                    std::max(variance, 0.0));
  }
  if (!exact) {
    FillResponsibilities();
    for (QVOneDimGaussMixComponent& component : components_) {
      result = QVCalledFrom(where, component.GetSampleMoments(data_));
      if (result.NotSuccessful()) return result;
    }
  }
  for (QVOneDimGaussMixComponent& component : components_) {
    result = component.UpdateParams(data_.size());
    if (result.NotSuccessful()) return QVCalledFrom(where, result);
  }
  return true;
}

QVStatModelResult QVOneDimGaussMixModel::DoOneEMCycle() {
  const QVStatModelResult result = DoOneFastEMCycle();
  FillResponsibilities();
  return result;
}

void QVOneDimGaussMixModel::FillResponsibilities() {
  if (!haveTerms_) return;
  const QVMath::QVDenseKernels& kernels = QVMath::QVGetDenseKernels();
  const std::size_t size = data_.size();
  std::vector<double> largest(size, -BadDouble), total(size), share(size);
  for (std::size_t k = 0; k < components_.size(); ++k) {
    std::vector<double>& logs = components_[k].logRelativeResponsibilities_;
    logs.resize(size);
    components_[k].responsibilities_.resize(size);
    for (std::size_t n = 0; n < size; ++n) {
      const double d = data_[n] - work_.centers[k];
      logs[n] = work_.logScales[k] - work_.halfPrecisions[k] * d * d;
      if (logs[n] > largest[n]) largest[n] = logs[n];
    }
  }
  for (const QVOneDimGaussMixComponent& component : components_) {
    for (std::size_t n = 0; n < size; ++n)
      share[n] = component.logRelativeResponsibilities_[n] - largest[n];
    kernels.exp(size, share.data(), share.data());
    for (std::size_t n = 0; n < size; ++n) total[n] += share[n];
  }
  kernels.log(size, total.data(), total.data());
  for (std::size_t n = 0; n < size; ++n) total[n] += largest[n];
  for (QVOneDimGaussMixComponent& component : components_) {
    std::vector<double>& logs = component.logRelativeResponsibilities_;
    for (std::size_t n = 0; n < size; ++n) logs[n] -= total[n];
    kernels.exp(size, logs.data(), component.responsibilities_.data());
  }
  entropyTerm_ = 0.0;
}

double QVOneDimGaussMixModel::GetModelFitness(QVStatModelResult& result) const {
  constexpr const char* where = "QVOneDimGaussMixModel::GetModelFitness";
  result = true;
  if (!valid_) {
    result = QVFailure(ObjectNotValid, where);
    return BadDouble;
  }
  double fitness = 0.0;
  bool bayesian = false;
  for (const QVOneDimGaussMixComponent& component : components_) {
    fitness += component.GetComponentOfModelFitness(result);
    if (QVFailedIn(result, where)) return BadDouble;
    bayesian |= component.GetComponentProbParams().GetParameterType() ==
                QVGaussMixParamType::DirichletWeight;
  }
  return bayesian ? fitness - entropyTerm_ : fitness;
}

QVStatModelResult QVOneDimGaussMixModel::GetModelParams(std::vector<double>& params) const {
  constexpr const char* where = "QVOneDimGaussMixModel::GetModelParams";
  params.clear();
  if (!valid_) return QVFailure(ObjectNotValid, where);
  for (const QVOneDimGaussMixComponent& component : components_) {
    const QVStatModelResult result = component.GetComponentParams(params);
    if (result.NotSuccessful()) return QVCalledFrom(where, result);
  }
  return true;
}

QVSystem::QVIter<const QVOneDimGaussMixComponent> QVOneDimGaussMixModel::GetComponents() const {
  return QVSystem::QVMakeIter<const QVOneDimGaussMixComponent>(components_);
}

std::string QVOneDimGaussMixModel::Print() const {
  if (!valid_) return "INVALID MIXTURE MODEL!\n";
  std::string text = "QVOneDimGaussMixModel: \n";
  for (const QVOneDimGaussMixComponent& component : components_) text += component.Print();
  return text;
}

}  // namespace QVStats
