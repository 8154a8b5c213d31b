#include "stats/api/linear_smoother_variogram.h"

#include <cmath>
#include <limits>
#include <numeric>

#include "platform/system/cast.h"
#include "stats/api/data_table_column_functions.h"
#include "stats/api/data_vector_functions.h"
#include "stats/api/minimizer.h"
#include "stats/failure.h"
#include "stats/linear_smoother_variogram_fit.h"

namespace QVStats {

namespace {

namespace Failure = QVStatModelFailureType;
using QVStatsBadData::BadDouble;
using QVSystem::QVDoubleFromCount;
using Values = std::vector<double>;

const char* const kConstructor = "QVBinnedVariogramFromSimilarity::QVBinnedVariogramFromSimilarity";

bool IsFraction(double value) { return value >= 0.0 && value <= 1.0; }

/// Searches from p0 in a direction up to the bound; `param` and `value` are set when there is a
/// minimum.
bool SearchTowards(double bound, double p0, double direction, double& param, double& value,
                   QVSimilarityVariogramLSFit& objective) {
  const double range = direction * (bound - p0);
  QVGoldenSectionSearch search;
  search.SetRelTolOnSolutionStepAccuracy(0.001);
  search.SetMaxIterations(100);
  search.SetUpperLimOnOneDimSteps(range);
  double step = 0.01 * range;
  double minimum = BadDouble;
  if (!search(1, &p0, &direction, &minimum, &step, objective)) return false;
  param = p0 + direction * step;
  value = minimum;
  return true;
}

}  // namespace

// ----- weights of bins

QVVariogramBinWeights::QVVariogramBinWeights(bool equalWeights,
                                             double fracAveBinCountThresholdForBinWeights,
                                             double similarityThresholdForBinWeights)
    : equalWeights_(equalWeights),
      countThreshold_(fracAveBinCountThresholdForBinWeights),
      similarityThreshold_(similarityThresholdForBinWeights),
      result_(true) {
  const struct {
    const char* name;
    double value;
  } rows[] = {{"fracAveBinCountThresholdForBinWeights", countThreshold_},
              {"similarityThresholdForBinWeights", similarityThreshold_}};
  for (const auto& row : rows)
    if (!IsFraction(row.value)) {
      result_ =
          QVFailure(Failure::ArgumentOutOfRange, "QVVariogramBinWeights::QVVariogramBinWeights")
          << row.name << " = " << row.value << "; must be between 0 and 1; must be between 0 and 1";
      return;
    }
}

QVStatModelResult QVVariogramBinWeights::GetBinWeights(
    Values& weights, const std::vector<std::size_t>& numPairsInBin) const {
  static const char* const where = "QVVariogramBinWeights::GetBinWeights";
  weights.clear();
  if (!IsValid()) return QVFailure(Failure::ObjectNotValid, where);
  if (numPairsInBin.empty())
    return QVFailure(Failure::InternalLogicFailure, where) << "numPairsInBin is empty!";
  const double numPairs = QVDoubleFromCount(
      std::accumulate(numPairsInBin.begin(), numPairsInBin.end(), std::size_t{0}));
  const double numBins = QVDoubleFromCount(numPairsInBin.size());
  const double least = std::floor(countThreshold_ * numPairs / numBins);
  for (std::size_t i = 0; i < numPairsInBin.size(); ++i) {
    const double count = QVDoubleFromCount(numPairsInBin[i]);
    const bool isUsable =
        !(QVDoubleFromCount(i) / numBins < similarityThreshold_) && count >= least;
    weights.push_back(!isUsable ? 0.0 : equalWeights_ ? 1.0 : count / numPairs);
  }
  const double sum = std::accumulate(weights.begin(), weights.end(), 0.0);
  for (double& weight : weights) weight /= sum;
  return true;
}

// ----- construction

QVBinnedVariogramFromSimilarity::QVBinnedVariogramFromSimilarity(
    const QVDataTable& table, const std::string& responseColName,
    const std::string& similarityColName, const QVVariogramBinWeights& binWeights,
    std::size_t numBins)
    : binWeights_(binWeights), numBins_(numBins) {
  std::size_t numMatrixCols = 0;
  std::size_t numResponseCols = 0;
  result_ = QVGetDataVectorFromColumnByName(similarities_, numMatrixCols, table, similarityColName);
  if (QVFailedIn(result_, kConstructor)) return;
  result_ = QVGetDataVectorFromColumnByName(responses_, numResponseCols, table, responseColName);
  if (QVFailedIn(result_, kConstructor)) return;
  if (numMatrixCols * numMatrixCols != similarities_.size() || numResponseCols != 1 ||
      numMatrixCols != responses_.size())
    result_ = QVFailure(Failure::MismatchBetweenInputVecSizes, kConstructor)
              << "similarityMatrix size = " << similarities_.size()
              << "; responseVals size = " << responses_.size()
              << "\n; num cols in simMatrix = " << numMatrixCols
              << "; num cols in response vec = " << numResponseCols;
  else
    result_ = CheckBins();
}

QVBinnedVariogramFromSimilarity::QVBinnedVariogramFromSimilarity(
    const Values& responses, const Values& similarityMatrix,
    const QVVariogramBinWeights& binWeights, std::size_t numBins)
    : responses_(responses),
      similarities_(similarityMatrix),
      binWeights_(binWeights),
      numBins_(numBins) {
  if (responses.size() * responses.size() != similarityMatrix.size())
    result_ = QVFailure(Failure::MismatchBetweenInputVecSizes, kConstructor)
              << "similarityMatrix size = " << similarityMatrix.size()
              << "; whereas responseVals size = " << responses.size();
  else
    result_ = CheckBins();
}

QVStatModelResult QVBinnedVariogramFromSimilarity::CheckBins() const {
  if (numBins_ < 2)
    return QVFailure(Failure::LowerBoundViolated, kConstructor)
           << " numBins (" << numBins_ << "); too small";
  return QVCalledFrom(kConstructor, binWeights_.GetResultOfConstruction());
}

// ----- empirical variogram

double QVBinnedVariogramFromSimilarity::GetBinCenter(std::size_t bin) const {
  return (QVDoubleFromCount(bin) + 0.5) / QVDoubleFromCount(numBins_);
}

std::size_t QVBinnedVariogramFromSimilarity::FindBin(double similarity) const {
  const auto numBins = static_cast<double>(numBins_);
  const double place = numBins * similarity;
  if (place >= 0.0 && place < numBins) return static_cast<std::size_t>(place);
  if (std::floor(place) == numBins) return numBins_ - 1;
  // Reports what is no count.
  QVSystem::QVUnsignedFromDoubleChecked(std::floor(place));
  return numBins_;
}

template <class Take>
QVStatModelResult QVBinnedVariogramFromSimilarity::ForEachPair(const char* where, Take take) const {
  const std::size_t n = responses_.size();
  for (std::size_t i = 0; i < n; ++i) {
    const double* const similarities = similarities_.data() + i * n;
    for (std::size_t j = i + 1; j < n; ++j) {
      const std::size_t bin = FindBin(similarities[j]);
      if (bin == numBins_)
        return QVFailure(Failure::ArgumentOutOfRange, where)
               << "similarity (" << i << ", " << j << ") = " << similarities[j]
               << "; must be between 0 and 1";
      const double difference = responses_[j] - responses_[i];
      take(bin, 0.5 * difference * difference);
    }
  }
  return true;
}

QVStatModelResult QVBinnedVariogramFromSimilarity::CalcEmpiricalVariogram(double fractionToTrim,
                                                                          std::size_t method) {
  static const char* const where =
      "QVBinnedVariogramFromSimilarity::CalcExactTrimmedMeanOfBinnedSqDiffs";
  if (!IsValid()) return QVFailure(Failure::ObjectNotValid, where);
  if (!IsFraction(fractionToTrim))
    return QVFailure(Failure::ArgumentOutOfRange, where)
           << "fractionToTrimForTrimmedMeanSqDiff (" << fractionToTrim
           << "); should be between 0 and 1 )";
  if (method != 0) return true;
  empirical_.clear();
  numPairs_.assign(numBins_, 0);
  QVStatModelResult result = fractionToTrim <= 0.001
                                 ? CalcExactMeanOfBinnedSqDiffsOfResponses()
                                 : CalcTrimmedMeanOfBinnedSqDiffs(fractionToTrim);
  if (QVFailedIn(result, where)) numPairs_.clear();
  return result;
}

QVStatModelResult QVBinnedVariogramFromSimilarity::CalcExactMeanOfBinnedSqDiffsOfResponses() {
  Values sums(numBins_, 0.0);
  const QVStatModelResult result =
      ForEachPair("QVBinnedVariogramFromSimilarity::CalcExactMeanOfBinnedSqDiffsOfResponses",
                  [&](std::size_t bin, double semivariance) {
                    sums[bin] += semivariance;
                    ++numPairs_[bin];
                  });
  if (result.NotSuccessful()) return result;
  for (std::size_t bin = 0; bin < numBins_; ++bin)
    empirical_.emplace_back(GetBinCenter(bin), numPairs_[bin] == 0
                                                   ? 0.0
                                                   : sums[bin] / QVDoubleFromCount(numPairs_[bin]));
  return result;
}

QVStatModelResult QVBinnedVariogramFromSimilarity::CalcTrimmedMeanOfBinnedSqDiffs(
    double fractionToTrim) {
  static const char* const where =
      "QVBinnedVariogramFromSimilarity::CalcTrimmedMeanOfBinnedSqDiffsUsingLinkedList";
  // Counted before they are stored: half the memory of lists through the matrix, read in order.
  const QVStatModelResult result =
      ForEachPair(where, [&](std::size_t bin, double) { ++numPairs_[bin]; });
  if (result.NotSuccessful()) return result;
  std::vector<Values> semivariances(numBins_);
  for (std::size_t bin = 0; bin < numBins_; ++bin) semivariances[bin].reserve(numPairs_[bin]);
  ForEachPair(where, [&](std::size_t bin, double semivariance) {
    semivariances[bin].push_back(semivariance);
  });
  const QVTrimmedSampleMean trimmedMean(fractionToTrim);
  for (std::size_t bin = 0; bin < numBins_; ++bin)
    empirical_.emplace_back(GetBinCenter(bin),
                            semivariances[bin].empty() ? 0.0 : trimmedMean(semivariances[bin]));
  return result;
}

// ----- theoretical variogram

QVNuggetAndSill QVFitNuggetAndSill(const Values& u, const Values& gamma, const Values& weights) {
  constexpr double kTiny = 10.0 * std::numeric_limits<double>::epsilon();
  QVNuggetAndSill fit;
  double w = 0.0, wu = 0.0, wuu = 0.0, wg = 0.0, wug = 0.0;
  for (std::size_t k = 0; k < u.size(); ++k) {
    w += weights[k];
    wu += weights[k] * u[k];
    wuu += weights[k] * u[k] * u[k];
    wg += weights[k] * gamma[k];
    wug += weights[k] * u[k] * gamma[k];
  }
  if (u.empty() || w < kTiny) return fit;
  const double determinant = w * wuu - wu * wu;
  double slope = 0.0;
  fit.nugget = wg / w;
  if (!(std::abs(determinant) < kTiny)) {
    fit.nugget = (wg * wuu - wug * wu) / determinant;
    slope = (w * wug - wu * wg) / determinant;
  }
  fit.sill = fit.nugget + slope;
  // Residuals one by one: their sum from the moments loses all digits of a close fit.
  double squares = 0.0;
  for (std::size_t k = 0; k < u.size(); ++k) {
    const double residual = gamma[k] - fit.nugget - slope * u[k];
    squares += weights[k] * residual * residual;
  }
  fit.objective = std::sqrt(squares / w);
  return fit;
}

QVSimilarityVariogramLSFit::QVSimilarityVariogramLSFit(
    unsigned int kernelType, std::vector<std::pair<double, double>>& empiricalPoints,
    const Values& weights)
    : kernel_(kernelType),
      weights_(weights),
      valid_(kernel_.GetDefaultInitialParamVal() >= 0.0 &&
             empiricalPoints.size() == weights.size()) {
  for (const auto& [similarity, semivariance] : empiricalPoints) {
    similarities_.push_back(similarity);
    semivariances_.push_back(semivariance);
  }
}

double QVSimilarityVariogramLSFit::operator()(const double* x) {
  QVNuggetAndSill fit;
  if (valid_) {
    Values u(similarities_.size());
    kernel_.GetValues(similarities_.data(), u.size(), x[0], u.data());
    for (double& value : u) value = 1.0 - value;
    fit = QVFitNuggetAndSill(u, semivariances_, weights_);
  }
  nugget_ = fit.nugget;
  sill_ = fit.sill;
  return fit.objective;
}

QVStatModelResult QVBinnedVariogramFromSimilarity::CalcOptimalTheoryVariogram(
    double& bestObjective, double& bestKernelParam, unsigned int kernelType,
    std::size_t numTheoryPoints, double initialParam, double minParam, double maxParam) {
  static const char* const where = "QVBinnedVariogramFromSimilarity::CalcTheoryVariogram";
  bestObjective = bestKernelParam = kernelParam_ = nugget_ = sill_ = BadDouble;
  theory_.clear();
  if (!IsValid()) return QVFailure(Failure::ObjectNotValid, where);
  if (empirical_.empty())
    return QVFailure(Failure::NoData, where) << "Need to first calculate empirical variogram!";
  Values weights;
  QVStatModelResult result = binWeights_.GetBinWeights(weights, numPairs_);
  if (QVFailedIn(result, where)) return result;

  kernel_ = QVSimilarityKernel(kernelType);
  QVSimilarityVariogramLSFit objective(kernelType, empirical_, weights);
  if (!objective.IsValid())
    return QVFailure(Failure::ObjectNotValid, where)
           << "optimization func invalid; invalid kernel or vec size mismatch?";
  if (initialParam < 0.0) initialParam = kernel_.GetDefaultInitialParamVal();
  if (minParam < 0.0) minParam = kernel_.GetMinimumAllowedParamVal();
  if (maxParam < 0.0) maxParam = kernel_.GetMaximumAllowedParamVal();
  const auto isFound = [&](double bound, double direction) {
    return SearchTowards(bound, initialParam, direction, bestKernelParam, bestObjective, objective);
  };
  if (!isFound(minParam, -1.0) && !isFound(maxParam, 1.0))
    return QVFailure(Failure::InternalLogicFailure, where) << "minmizer failed both directions!";

  kernelParam_ = bestKernelParam;
  nugget_ = objective.GetNugget();
  sill_ = objective.GetSill();
  FillTheoryVariogram(numTheoryPoints);
  return true;
}

void QVBinnedVariogramFromSimilarity::FillTheoryVariogram(std::size_t numPoints) {
  theory_.reserve(numPoints);
  for (std::size_t i = 0; i < numPoints; ++i) {
    const double x = (QVDoubleFromCount(i) + 0.5) / QVDoubleFromCount(numPoints);
    theory_.emplace_back(x, (sill_ - nugget_) * (1.0 - kernel_(x, kernelParam_)) + nugget_);
  }
}

}  // namespace QVStats
