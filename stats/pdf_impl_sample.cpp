// The empirical distribution of a random sample.

#include <algorithm>
#include <cmath>

#include "platform/system/cast.h"
#include "stats/api/data_vector_functions.h"
#include "stats/pdf_law_impl.h"

namespace QVStats {

namespace {

using QVStatsBadData::BadDouble;

// Random-variable types of the family.
constexpr std::uint64_t kSampleSize = 0, kDrawnFrom = 3, kOutcome = 4;

std::string Where(const char* name) {
  return std::string("QVUniVarContValRandomSampleImpl::") + name;
}

}  // namespace

QVUniVarContValRandomSampleImpl::QVUniVarContValRandomSampleImpl(
    const std::string& variableName, const std::vector<QVRanVar>& parameters,
    const std::vector<QVRanVar>& outcomes)
    : QVUniVarPDFImpl(QVPDFType::UniVarContValRandomSample, variableName, parameters, outcomes) {
  if (GetParams().IsSuccessful()) SetValid();
}

QVUniVarContValRandomSampleImpl* QVUniVarContValRandomSampleImpl::CreateCopy() const {
  return new QVUniVarContValRandomSampleImpl(*this);
}

QVStatModelResult QVUniVarContValRandomSampleImpl::GetParams() {
  const std::string where = Where("GetParams");
  QVStatModelResult result(true);
  const double size = GetSingleParameterRanVarVal(kSampleSize, result);
  if (QVFailedIn(result, where.c_str())) return result;
  const std::size_t n = QVRoundToCount(size);
  if (n == 0) return QVFailure(QVStatModelFailureType::NoData, where.c_str());
  const auto values = GetOutcomeRanVarVals(kOutcome, n, result);
  if (QVFailedIn(result, where.c_str())) return result;
  sample_.clear();
  for (const double value : values) {
    if (std::isnan(value))
      return QVFailure(QVStatModelFailureType::ArgumentOutOfRange, where.c_str())
             << "Sample value " << sample_.size() << " is not a number";
    sample_.push_back(value);
  }
  sorted_ = sample_;
  std::sort(sorted_.begin(), sorted_.end());
  double sum = 0.0;
  for (const double value : sample_) sum += value;
  const double count = QVSystem::QVDoubleFromCount(n);
  mean_ = sum / count;
  // The sum of squares about the mean, which keeps its digits when the mean is far from 0.
  double squares = 0.0;
  for (const double value : sample_) squares += (value - mean_) * (value - mean_);
  variance_ = squares / (count - 1.0);
  return result;
}

std::string QVUniVarContValRandomSampleImpl::Print(std::size_t limit) const {
  QVStatModelResult result(true);
  const double drawnFrom = GetSingleParameterRanVarVal(kDrawnFrom, result);
  const auto type = drawnFrom >= 0.0 && drawnFrom < static_cast<double>(QVPDFType::NumTypes)
                        ? static_cast<std::size_t>(drawnFrom)
                        : std::size_t{QVPDFType::Unknown};
  return "PDF: " + GetPDFName() + "; Drawn from " + QVPDFType::NameOf[type] +
         "\n Variable name: " + GetVariableName() + "\n" + PrintRanVars(limit);
}

double QVUniVarContValRandomSampleImpl::Refuse(const char* name, QVStatModelResult& result) const {
  result = QVFailure(QVStatModelFailureType::InvalidProbDistFunc, Where(name).c_str());
  return BadDouble;
}

double QVUniVarContValRandomSampleImpl::GetRandomOutcome(QVStatModelResult& result,
                                                         QVMath::QVRanNumEngine& engine) {
  if (!Valid()) return Refuse("GetRandomOutcome", result);
  result = true;
  return sample_[engine.GetIndex(sample_.size())];
}

double QVUniVarContValRandomSampleImpl::GetDensity(double, QVStatModelResult& result, bool) const {
  if (!Valid()) return Refuse("GetDensity", result);
  result = QVFailure(QVStatModelFailureType::DensityIsUndefined, Where("GetDensity").c_str());
  return BadDouble;
}

double QVUniVarContValRandomSampleImpl::GetLogDensity(double, QVStatModelResult& result,
                                                      bool) const {
  if (!Valid()) return Refuse("GetLogDensity", result);
  result = QVFailure(QVStatModelFailureType::DensityIsUndefined, Where("GetLogDensity").c_str());
  return BadDouble;
}

double QVUniVarContValRandomSampleImpl::GetMode(QVStatModelResult& result) const {
  if (!Valid()) return Refuse("GetMode", result);
  result = QVFailure(QVStatModelFailureType::ModeIsUndefined, Where("GetMode").c_str());
  return BadDouble;
}

double QVUniVarContValRandomSampleImpl::GetMean(QVStatModelResult& result) const {
  if (!Valid()) return Refuse("GetMean", result);
  result = true;
  return mean_;
}

double QVUniVarContValRandomSampleImpl::GetVariance(QVStatModelResult& result) const {
  if (!Valid()) return Refuse("GetVariance", result);
  result = true;
  if (sample_.size() > 1) return variance_;
  result = QVFailure(QVStatModelFailureType::VarianceIsUndefined, Where("GetVariance").c_str());
  return BadDouble;
}

double QVUniVarContValRandomSampleImpl::GetCDF(double x, QVStatModelResult& result,
                                               bool check) const {
  if (!Valid()) return Refuse("GetCDF", result);
  result = true;
  if (check) {
    result = CheckIfValIsOkForOutcomeRanVar(kOutcome, x);
    if (QVFailedIn(result, Where("GetCDF").c_str()))
      return QVGetValueOfRefusedArgument(result, 0.0, 0.0);
  }
  const auto above = std::upper_bound(sorted_.begin(), sorted_.end(), x);
  return static_cast<double>(above - sorted_.begin()) / static_cast<double>(sorted_.size());
}

double QVUniVarContValRandomSampleImpl::GetPercentile(double p, QVStatModelResult& result) const {
  if (!Valid()) return Refuse("GetPercentile", result);
  if (!QVIsProbability(p)) {
    result = QVRefuseProbability(p, Where("GetPercentile").c_str());
    return BadDouble;
  }
  result = true;
  return QVQuantile(p, sorted_, 8);
}

}  // namespace QVStats
