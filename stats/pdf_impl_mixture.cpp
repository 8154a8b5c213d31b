// Finite mixtures of univariate distributions.

#include <algorithm>
#include <cmath>

#include "stats/pdf_law_impl.h"

namespace QVStats {

namespace {

using QVStatsBadData::BadDouble;

// Random-variable types of the family; the components' parameters follow its own four.
constexpr std::uint64_t kNumComponents = 0, kPdfTypes = 1, kNumParams = 2, kProbabilities = 3;
constexpr std::size_t kNumOwnParameters = 4;

constexpr double kTolX = 1e-08, kTolY = QVLaws::kFineTolerance;

std::string Where(const char* name) { return std::string("QVUniVarMixtureImpl::") + name; }

/// Adds a query's name to the chain of a failed result.
bool FailedIn(const char* name, QVStatModelResult& result) {
  return result.NotSuccessful() && QVFailedIn(result, Where(name).c_str());
}

/// A value that is to be a count. One that cannot be is a broken invariant.
std::size_t ToCount(double value) {
  return QV_ASSERT(value <= kQVLargestCount) ? QVRoundToCount(value) : 0;
}

}  // namespace

QVUniVarMixtureImpl::QVUniVarMixtureImpl(const std::string& variableName,
                                         const std::vector<QVRanVar>& parameters,
                                         const std::vector<QVRanVar>& outcomes)
    : QVUniVarPDFImpl(QVPDFType::UniVariateMixture, variableName, parameters, outcomes) {
  if (GetParams().IsSuccessful()) SetValid();
}

QVUniVarMixtureImpl* QVUniVarMixtureImpl::CreateCopy() const {
  return new QVUniVarMixtureImpl(*this);
}

std::string QVUniVarMixtureImpl::Print(std::size_t limit) const {
  std::string text = DefaultPrint(limit);
  for (const QVUniVarPDF& component : components_) text += component.Print(limit);
  return text;
}

QVStatModelResult QVUniVarMixtureImpl::GetParams() {
  const std::string where = Where("GetParams");
  QVStatModelResult result(true);
  const std::size_t count = ToCount(GetSingleParameterRanVarVal(kNumComponents, result));
  if (QVFailedIn(result, where.c_str())) return result;
  std::vector<double> lists[3];
  for (const std::uint64_t type : {kPdfTypes, kNumParams, kProbabilities}) {
    const auto values = GetParameterRanVarVals(type, count, result);
    if (QVFailedIn(result, where.c_str())) return result;
    for (const double value : values) lists[type - kPdfTypes].push_back(value);
  }
  probabilities_ = lists[2];
  result = CheckProbabilities(where.c_str());
  return result.IsSuccessful() ? MakeComponents(lists[0], lists[1], where.c_str()) : result;
}

QVStatModelResult QVUniVarMixtureImpl::CheckProbabilities(const char* where) const {
  double sum = 0.0;
  for (const double probability : probabilities_) {
    if (!QVIsProbability(probability))
      return QVFailure(QVStatModelFailureType::InternalLogicFailure, where)
             << "Component probability out of range";
    sum += probability;
  }
  const double error = std::abs(sum - 1.0);
  constexpr double kEpsilon = 2.220446049250313e-16;
  if (error <= static_cast<double>(probabilities_.size()) * kEpsilon) return true;
  return QVFailure(QVStatModelFailureType::InternalLogicFailure, where)
         << "Sum of probabilities(error = " << error << ")"
         << " is out of range";
}

QVStatModelResult QVUniVarMixtureImpl::MakeComponents(const std::vector<double>& pdfTypes,
                                                      const std::vector<double>& numParams,
                                                      const char* where) {
  const std::vector<QVRanVar>& parameters = GetParameterList();
  const std::vector<QVRanVar>& outcomes = GetOutcomeList();
  components_.clear();
  std::size_t first = std::min(kNumOwnParameters, parameters.size());
  for (std::size_t k = 0; k < pdfTypes.size(); ++k) {
    const std::size_t count = ToCount(numParams[k]);
    if (count > parameters.size() - first)
      return QVFailure(QVStatModelFailureType::InternalLogicFailure, where)
             << "Wrong number of components";
    if (k + 1 >= outcomes.size())
      return QVFailure(QVStatModelFailureType::MismatchBetweenInputVecSizes, where)
             << "Wrong number of outcome parameters";
    const auto begin = parameters.begin() + static_cast<std::ptrdiff_t>(first);
    const std::vector<QVRanVar> own(begin, begin + static_cast<std::ptrdiff_t>(count));
    components_.emplace_back(ToCount(pdfTypes[k]), GetVariableName(), own,
                             std::vector<QVRanVar>{outcomes[k + 1]});
    first += count;
  }
  return true;
}

double QVUniVarMixtureImpl::Refuse(const char* name, QVStatModelResult& result) const {
  result = QVFailure(QVStatModelFailureType::InvalidProbDistFunc, Where(name).c_str());
  return BadDouble;
}

double QVUniVarMixtureImpl::Sum(const char* name, QVPDFFunction function, double x,
                                QVStatModelResult& result, bool check) const {
  if (!Valid()) return Refuse(name, result);
  double sum = 0.0;
  for (std::size_t k = 0; k < components_.size(); ++k) {
    sum += probabilities_[k] * components_[k].GetImpl()->GetValue(function, x, result, check);
    if (FailedIn(name, result)) return BadDouble;
  }
  result = true;
  return sum;
}

double QVUniVarMixtureImpl::SumWithin(QVPDFFunction function, double x,
                                      QVStatModelResult& result) const {
  double sum = 0.0;
  for (std::size_t k = 0; k < components_.size(); ++k) {
    double value = components_[k].GetImpl()->GetValue(function, x, result, true);
    if (result.NotSuccessful()) {
      const unsigned int failure = result.GetFailureType();
      const bool above = failure == QVStatModelFailureType::UpperBoundViolated;
      if (!above && failure != QVStatModelFailureType::LowerBoundViolated) return BadDouble;
      if (above && function == QVPDFFunction::CDF) value = 1.0;
    }
    sum += probabilities_[k] * value;
  }
  result = true;
  return sum;
}

double QVUniVarMixtureImpl::GetDensity(double x, QVStatModelResult& result, bool check) const {
  return Sum("GetDensity", QVPDFFunction::Density, x, result, check);
}

double QVUniVarMixtureImpl::GetCDF(double x, QVStatModelResult& result, bool check) const {
  return Sum("GetCDF", QVPDFFunction::CDF, x, result, check);
}

double QVUniVarMixtureImpl::GetSurvival(double x, QVStatModelResult& result, bool check) const {
  return Sum("GetSurvival", QVPDFFunction::Survival, x, result, check);
}

void QVUniVarMixtureImpl::GetValues(QVPDFFunction function, const std::vector<double>& arguments,
                                    std::vector<double>& values, QVStatModelResult& result,
                                    bool check) const {
  const bool isSum = function == QVPDFFunction::Density || function == QVPDFFunction::CDF ||
                     function == QVPDFFunction::Survival;
  std::vector<double> own;
  values.assign(arguments.size(), 0.0);
  result = true;
  for (std::size_t k = 0; k < components_.size() && isSum && result.IsSuccessful(); ++k) {
    components_[k].GetValues(function, arguments, own, result, check);
    for (std::size_t i = 0; i < own.size(); ++i) values[i] += probabilities_[k] * own[i];
  }
  if (isSum && Valid() && result.IsSuccessful()) return;
  // One by one, for the other functions and for the first failure.
  QVUniVarPDFImpl::GetValues(function, arguments, values, result, check);
}

double QVUniVarMixtureImpl::GetLogDensity(double x, QVStatModelResult& result, bool check) const {
  if (!Valid()) return Refuse("GetLogDensity", result);
  std::vector<double> logs(components_.size());
  for (std::size_t k = 0; k < components_.size(); ++k) {
    logs[k] = std::log(probabilities_[k]) + components_[k].GetLogDensity(x, result, check);
    if (FailedIn("GetLogDensity", result)) return BadDouble;
  }
  result = true;
  const double largest = *std::max_element(logs.begin(), logs.end());
  if (std::isinf(largest)) return largest;
  double sum = 0.0;
  for (const double value : logs) sum += std::exp(value - largest);
  return largest + std::log(sum);
}

double QVUniVarMixtureImpl::GetMean(QVStatModelResult& result) const {
  if (!Valid()) return Refuse("GetMean", result);
  double mean = 0.0;
  for (std::size_t k = 0; k < components_.size(); ++k) {
    mean += probabilities_[k] * components_[k].GetMean(result);
    if (FailedIn("GetMean", result)) return BadDouble;
  }
  return mean;
}

double QVUniVarMixtureImpl::GetVariance(QVStatModelResult& result) const {
  const double mean = GetMean(result);
  if (!Valid()) return Refuse("GetVariance", result);
  if (FailedIn("GetVariance", result)) return BadDouble;
  // Sum of w (variance + component mean^2) - mean^2, about the mean, where no digits cancel.
  double variance = 0.0;
  for (std::size_t k = 0; k < components_.size(); ++k) {
    const double distance = components_[k].GetMean(result) - mean;
    const double own = components_[k].GetVariance(result);
    if (FailedIn("GetVariance", result)) return BadDouble;
    variance += probabilities_[k] * (own + distance * distance);
  }
  return variance;
}

double QVUniVarMixtureImpl::GetMode(QVStatModelResult& result) const {
  if (!Valid()) return Refuse("GetMode", result);
  constexpr double kTail = 0.01;
  constexpr int kNumSteps = 100;
  const double lower = GetPercentile(kTail, result);
  if (FailedIn("GetMode", result)) return BadDouble;
  const double upper = GetPercentile(1.0 - kTail, result);
  if (FailedIn("GetMode", result)) return BadDouble;
  const double step = 0.01 * (upper - lower);
  double mode = BadDouble, highest = 0.0;
  for (int i = 0; i <= kNumSteps; ++i) {
    const double x = lower + i * step;
    const double density = SumWithin(QVPDFFunction::Density, x, result);
    if (FailedIn("GetMode", result)) return BadDouble;
    if (density > highest) {
      highest = density;
      mode = x;
    }
  }
  return mode;
}

double QVUniVarMixtureImpl::Invert(const char* name, bool upperTail, double p,
                                   QVStatModelResult& result) const {
  if (!Valid()) return Refuse(name, result);
  if (!QVIsProbability(p)) {
    result = QVRefuseProbability(p, Where(name).c_str());
    return BadDouble;
  }
  const auto invert = upperTail ? QVPDFFunction::UpperTailPercentile : QVPDFFunction::Percentile;
  QVBracket bracket{BadDouble, -BadDouble};
  for (const QVUniVarPDF& component : components_) {
    const double near = component.GetImpl()->GetValue(invert, p / 2, result, true);
    if (FailedIn(name, result)) return BadDouble;
    const double far = component.GetImpl()->GetValue(invert, p + (1.0 - p) / 2, result, true);
    if (FailedIn(name, result)) return BadDouble;
    bracket.lower = std::min(bracket.lower, upperTail ? far : near);
    bracket.upper = std::max(bracket.upper, upperTail ? near : far);
  }
  result = true;
  // The survival function falls: its negative rises like a distribution function.
  const double sign = upperTail ? -1.0 : 1.0;
  const auto function = upperTail ? QVPDFFunction::Survival : QVPDFFunction::CDF;
  const double x = QVInvertContinuousCDF(sign * p, bracket, kTolX, kTolY, result, [&] {
    return [&](double at, double& cdf, double& density, QVStatModelResult& outcome) {
      cdf = sign * SumWithin(function, at, outcome);
      if (outcome.NotSuccessful()) return false;
      density = SumWithin(QVPDFFunction::Density, at, outcome);
      return outcome.IsSuccessful();
    };
  });
  FailedIn(name, result);
  return x;
}

double QVUniVarMixtureImpl::GetPercentile(double p, QVStatModelResult& result) const {
  return Invert("GetPercentile", false, p, result);
}

double QVUniVarMixtureImpl::GetUpperTailPercentile(double q, QVStatModelResult& result) const {
  return Invert("GetUpperTailPercentile", true, q, result);
}

double QVUniVarMixtureImpl::GetRandomOutcome(QVStatModelResult& result,
                                             QVMath::QVRanNumEngine& engine) {
  if (!Valid()) return Refuse("GetRandomOutcome", result);
  const double u = engine.GetUniform();
  double sum = 0.0;
  for (std::size_t k = 0; k < components_.size(); ++k) {
    sum += probabilities_[k];
    if (!(sum > u)) continue;
    const double outcome = components_[k].GetRandomOutcome(result, engine);
    return FailedIn("GetRandomOutcome", result) ? BadDouble : outcome;
  }
  result =
      QVFailure(QVStatModelFailureType::InternalLogicFailure, Where("GetRandomOutcome").c_str())
      << "random prob " << u << "never exceeded by sum of mixture probs."
      << " The latter is " << sum;
  return BadDouble;
}

}  // namespace QVStats
