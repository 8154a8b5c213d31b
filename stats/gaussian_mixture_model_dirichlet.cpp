// The Dirichlet Gauss-Gamma mixture, and the choice of its number of components.

#include <limits>

#include "platform/math/special_functions.h"
#include "platform/system/cast.h"
#include "platform/system/diagnostic_stream.h"
#include "platform/system/error_handler.h"
#include "stats/api/stats_data_types.h"
#include "stats/failure.h"
#include "stats/gaussian_mixture_model_fit.h"

namespace QVStats {

namespace {

using QVStatModelFailureType::ObjectNotValid;

}  // namespace

QVDirichletGaussGammaMixtureModel::QVDirichletGaussGammaMixtureModel(
    std::uint64_t numComponents, const std::string& name, double priorSampleSize,
    const std::vector<double>& data)
    : numComponents_(numComponents), name_(name) {
  if (numComponents == 0 || data.empty()) return;
  const double count = QVSystem::QVDoubleFromCount(numComponents);
  const std::vector<double> sorted = QVSortSeeds(data);
  std::vector<QVGaussMixParam> seeds;
  for (std::uint64_t k = 0; k < numComponents; ++k)
    seeds.push_back(QVMakeSeed(QVGaussMixParamType::GaussGamma, sorted,
                               static_cast<double>(k) / count, static_cast<double>(k + 1) / count));
  model_ = QVOneDimGaussMixModel(
      name, QVMakeDirichletWeights(std::vector<double>(numComponents, priorSampleSize / count)),
      seeds, data);
  valid_ = true;
}

QVStatModelResult QVDirichletGaussGammaMixtureModel::FitModel(double& fitness, double fitnessTol,
                                                              double paramTol,
                                                              std::uint64_t maxCycles) {
  constexpr const char* where = "QVDirichletGaussGammaMixtureModel::FitModel";
  fitness = QVStatsBadData::BadDouble;
  if (!valid_) return QVFailure(ObjectNotValid, where);
  QVVariationalRun run;
  const QVStatModelResult result =
      QVRunVariationalCycles(model_, 5 * numComponents_, fitnessTol, paramTol, maxCycles, run);
  fitness = run.fitness;
  if (result.NotSuccessful()) return QVCalledFrom(where, result);
  QVSystem::QVThrow.Warning("NumCycles exceeded");
  std::ostream& out = QVSystem::QVGetDiagnosticStream();
  QVWriteCycles(out, run);
  out.precision(9);
  out << run.fitness << std::endl;
  fitness += QVMath::QVlgamma(QVSystem::QVDoubleFromCount(numComponents_) + 1.0);
  return true;
}

unsigned int QVDirichletGaussGammaMixtureModel::GetNumComponents(QVStatModelResult& result) const {
  result = true;
  if (valid_) return QVSystem::QVUnsignedFromCountChecked(numComponents_);
  result = QVFailure(ObjectNotValid, "QVDirichletGaussGammaMixtureModel::GetNumComponents");
  return std::numeric_limits<unsigned int>::max();
}

QVUniVarPDF QVDirichletGaussGammaMixtureModel::GetPosteriorPredictiveDist(
    QVStatModelResult& result) const {
  constexpr const char* where = "QVDirichletGaussGammaMixtureModel::GetPosteriorPredictiveDist";
  result = true;
  QVPredictiveParts parts;
  if (valid_) {
    result = QVCalledFrom(where, QVCollectPredictive(model_, 0, numComponents_, parts));
  } else {
    result = QVFailure(ObjectNotValid, where);
  }
  if (result.NotSuccessful()) return QVUniVarNullPDF(name_);
  QVNormaliseTotal(parts.weights);
  return QVMakePredictive(result, name_, parts, where);
}

QVStatModelResult QVDirichletGaussGammaMixtureModel::GetModelParams(
    std::vector<double>& params) const {
  return QVCalledFrom("QVDirichletGaussGammaMixtureModel::GetModelParams",
                      model_.GetModelParams(params));
}

void FitDirichletGaussGammaMixtureModel(QVStatModelResult& result,
                                        std::vector<double>& modelWeights,
                                        std::vector<QVDirichletGaussGammaMixtureModel>& models,
                                        std::uint64_t minComponents, std::uint64_t maxComponents,
                                        const std::string& name, double priorSampleSize,
                                        const std::vector<double>& data) {
  models.clear();
  QVModelComparison comparison("NumComp", "numComp", "0");
  for (std::uint64_t k = minComponents; k <= maxComponents; ++k) {
    QVDirichletGaussGammaMixtureModel model(k, name, priorSampleSize, data);
    comparison.Add(std::to_string(k), [&model](double& fitness) {
      return model.FitModel(fitness, kQVModelSelectionTolerance, kQVModelSelectionTolerance,
                            kQVModelSelectionCycles);
    });
    models.push_back(std::move(model));
  }
  comparison.Finish(result, modelWeights, "FitDirichletGaussGammaMixtureModel");
}

}  // namespace QVStats
