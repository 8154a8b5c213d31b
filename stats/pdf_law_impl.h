/// \file
/// \brief The members of QVUniVarLawImpl, for the sources that instantiate it.
#ifndef QVSTATS_PDF_LAW_IMPL_H
#define QVSTATS_PDF_LAW_IMPL_H

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "platform/system/error_handler.h"
#include "stats/api/pdf_families.h"
#include "stats/api/stats_data_types.h"
#include "stats/failure.h"
#include "stats/pdf_bulk.h"
#include "stats/pdf_search.h"

namespace QVStats {

namespace QVLaws {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// exponent * log(x), 0 for an exponent of 0 at x = 0.
inline double PowerLog(double exponent, double x) {
  return exponent == 0.0 && x == 0.0 ? 0.0 : exponent * std::log(x);
}

/// Steps along a distribution of Pearson's system: its density and distribution function at x
/// from those at a nearby point, by their power series. Nothing is stored when the step is too long
/// for a short series, or when the distribution function would lose digits to cancellation.
/// The coefficients c_k of f follow from f' d = f n:
/// d0 (k + 1) c_(k+1) = (n0 - k d1) c_k + (n1 - (k - 1) d2) c_(k-1).
bool StepAlong(const Slope& slope, double step, double& cdf, double& density);

}  // namespace QVLaws

/// The distribution function and the density of a law along the path of a search: the last point
/// is kept, so that a short step needs no more than a short series.
template <class Law>
class QVLawOnPath {
 public:
  explicit QVLawOnPath(const Law& law) : law_(law) {}

  /// Puts the path at a known point.
  void Start(double x, double cdf, double density) {
    x_ = x;
    cdf_ = cdf;
    density_ = density;
    started_ = true;
  }

  bool operator()(double x, double& cdf, double& density, QVStatModelResult&) {
    if (started_ && x == x_) {
      cdf = cdf_;
      density = density_;
      return true;
    }
    // With large parameters the distribution function has an error of its own, and steps from one
    // value of it would not meet another.
    if (!started_ || !law_.HasPowerDensity() ||
        !QVLaws::StepAlong(law_.GetSlope(x_), x - x_, cdf_, density_)) {
      cdf_ = law_.CDF(x);
      density_ = law_.Density(x);
    }
    Start(x, cdf_, density_);
    cdf = cdf_;
    density = density_;
    return true;
  }

 private:
  const Law& law_;
  double x_ = 0.0;
  double cdf_ = 0.0;
  double density_ = 0.0;
  bool started_ = false;
};

template <class Law>
QVUniVarLawImpl<Law>::QVUniVarLawImpl(const std::string& variableName,
                                      const std::vector<QVRanVar>& parameters,
                                      const std::vector<QVRanVar>& outcomes)
    : QVUniVarPDFImpl(Law::kPdfType, variableName, parameters, outcomes) {
  if (GetParams().IsSuccessful()) SetValid();
}

template <class Law>
QVUniVarLawImpl<Law>* QVUniVarLawImpl<Law>::CreateCopy() const {
  return new QVUniVarLawImpl(*this);
}

template <class Law>
QVStatModelResult QVUniVarLawImpl<Law>::GetParams() {
  const std::string where = std::string(Law::kClassName) + "::GetParams";
  QVStatModelResult result(true);
  double params[Law::kNumParams];
  for (std::uint64_t type = 0; type < Law::kNumParams; ++type) {
    params[type] = GetSingleParameterRanVarVal(type, result);
    if (QVFailedIn(result, where.c_str())) return result;
  }
  if (!QV_ASSERT(law_.SetParams(params)))
    return QVFailure(QVStatModelFailureType::InternalLogicFailure, where.c_str());
  for (const QVRanVar& outcome : GetOutcomeList()) {
    if (outcome.GetRanVarType() != Law::kOutcomeType) continue;
    lowerIsStrict_ = outcome.HasStrictLowerBound();
    lower_ =
        lowerIsStrict_ || outcome.HasLowerBound() ? outcome.GetLowerBound() : -QVLaws::kInfinity;
    upper_ = outcome.HasUpperBound() ? outcome.GetUpperBound() : QVLaws::kInfinity;
    boundsDecide_ = outcome.IsScalar() && !outcome.IsIntegerValued() &&
                    !outcome.HasStrictUpperBound() && !outcome.HasVarSumConstraint();
    break;
  }
  brackets_ = QVBracketTable();
  return result;
}

template <class Law>
double QVUniVarLawImpl<Law>::RefuseInvalid(const char* className, const char* name,
                                           QVStatModelResult& result) const {
  result = QVFailure(QVStatModelFailureType::InvalidProbDistFunc,
                     (std::string(className) + "::" + name).c_str());
  return QVStatsBadData::BadDouble;
}

template <class Law>
bool QVUniVarLawImpl<Law>::RefusesArgument(const char* name, double x,
                                           QVStatModelResult& result) const {
  result = CheckIfValIsOkForOutcomeRanVar(Law::kOutcomeType, x);
  return QVFailedIn(result, (std::string(Law::kClassName) + "::" + name).c_str());
}

template <class Law>
template <class Query>
double QVUniVarLawImpl<Law>::Ask(const char* name, double x, QVStatModelResult& result, bool check,
                                 double below, double above, Query query) const {
  if (!Valid()) return RefuseInvalid(Law::kClassName, name, result);
  if (check && !(boundsDecide_ && IsWithinBounds(x)) && RefusesArgument(name, x, result))
    return QVGetValueOfRefusedArgument(result, below, above);
  result = true;
  return query(x);
}

template <class Law>
double QVUniVarLawImpl<Law>::GetDensity(double x, QVStatModelResult& result, bool check) const {
  return Ask("GetDensity", x, result, check, 0.0, 0.0,
             [this](double at) { return law_.Density(at); });
}

template <class Law>
double QVUniVarLawImpl<Law>::GetCDF(double x, QVStatModelResult& result, bool check) const {
  return Ask("GetCDF", x, result, check, 0.0, 0.0, [this](double at) { return law_.CDF(at); });
}

template <class Law>
double QVUniVarLawImpl<Law>::GetSurvival(double x, QVStatModelResult& result, bool check) const {
  return Ask("GetSurvival", x, result, check, 1.0, 0.0,
             [this](double at) { return law_.Survival(at); });
}

template <class Law>
double QVUniVarLawImpl<Law>::GetLogDensity(double x, QVStatModelResult& result, bool check) const {
  return Ask("GetLogDensity", x, result, check, -QVLaws::kInfinity, -QVLaws::kInfinity,
             [this](double at) { return law_.LogDensity(at); });
}

template <class Law>
double QVUniVarLawImpl<Law>::GetLogSurvival(double x, QVStatModelResult& result, bool check) const {
  return Ask("GetLogSurvival", x, result, check, 0.0, -QVLaws::kInfinity,
             [this](double at) { return law_.LogSurvival(at); });
}

template <class Law>
double QVUniVarLawImpl<Law>::AskMoment(const char* name, QVStatModelResult& result,
                                       QVLaws::Moment (Law::*moment)() const) const {
  if (!Valid()) return RefuseInvalid(Law::kClassName, name, result);
  const QVLaws::Moment answer = (law_.*moment)();
  result = true;
  if (answer.failure == QVStatModelFailureType::Undefined) return answer.value;
  result = QVFailure(answer.failure, (std::string(Law::kClassName) + "::" + name).c_str());
  return QVStatsBadData::BadDouble;
}

template <class Law>
double QVUniVarLawImpl<Law>::GetMean(QVStatModelResult& result) const {
  return AskMoment("GetMean", result, &Law::Mean);
}

template <class Law>
double QVUniVarLawImpl<Law>::GetMode(QVStatModelResult& result) const {
  return AskMoment("GetMode", result, &Law::Mode);
}

template <class Law>
double QVUniVarLawImpl<Law>::GetVariance(QVStatModelResult& result) const {
  return AskMoment("GetVariance", result, &Law::Variance);
}

template <class Law>
double QVUniVarLawImpl<Law>::GetRandomOutcome(QVStatModelResult& result,
                                              QVMath::QVRanNumEngine& engine) {
  if (!Valid()) return RefuseInvalid(Law::kDrawClassName, "GetRandomOutcome", result);
  result = true;
  return law_.generator(engine);
}

template <class Law>
double QVUniVarLawImpl<Law>::GetPercentile(double p, QVStatModelResult& result) const {
  if (!Valid()) return RefuseInvalid(Law::kClassName, "GetPercentile", result);
  if (!QVIsProbability(p)) {
    result = QVRefuseProbability(p, (std::string(Law::kClassName) + "::GetPercentile").c_str());
    return QVStatsBadData::BadDouble;
  }
  result = true;
  if constexpr (Law::kSearch == QVLaws::Search::ClosedForm) {
    return law_.ClosedPercentile(p);
  } else {
    const double x = Search(p, result);
    if (result.NotSuccessful())
      result.AddCallContext(std::string(Law::kClassName) + "::GetPercentile");
    return x;
  }
}

template <class Law>
double QVUniVarLawImpl<Law>::GetUpperTailPercentile(double q, QVStatModelResult& result) const {
  if (!Valid()) return RefuseInvalid(Law::kClassName, "GetUpperTailPercentile", result);
  if (!QVIsProbability(q)) {
    result =
        QVRefuseProbability(q, (std::string(Law::kClassName) + "::GetUpperTailPercentile").c_str());
    return QVStatsBadData::BadDouble;
  }
  result = true;
  return law_.UpperTailPercentile(q);
}

template <class Law>
void QVUniVarLawImpl<Law>::GetValues(QVPDFFunction function, const std::vector<double>& arguments,
                                     std::vector<double>& values, QVStatModelResult& result,
                                     bool check) const {
  const bool takesProbabilities =
      function == QVPDFFunction::Percentile || function == QVPDFFunction::UpperTailPercentile;
  const auto isWithin = [this](double x) { return IsWithinBounds(x); };
  const bool isClear =
      Valid() && (takesProbabilities || !check ||
                  (boundsDecide_ && std::all_of(arguments.begin(), arguments.end(), isWithin)));
  values.assign(arguments.size(), std::numeric_limits<double>::quiet_NaN());
  if (isClear) FillValues(function, arguments, values);
  FillMissingValues(function, arguments, values, result, check);
}

template <class Law>
void QVUniVarLawImpl<Law>::FillValues(QVPDFFunction function, const std::vector<double>& arguments,
                                      std::vector<double>& values) const {
  if constexpr (Law::kSearch != QVLaws::Search::ClosedForm) {
    if (function == QVPDFFunction::Density)
      return QVLaws::FillInBlocks(arguments, values,
                                  [this](auto... block) { QVLaws::FillDensities(law_, block...); });
    if (function == QVPDFFunction::CDF)
      return QVLaws::FillInBlocks(arguments, values,
                                  [this](auto... block) { law_.FillCDF(block...); });
    if (function == QVPDFFunction::Percentile && arguments.size() >= QVLaws::kBlock) {
      const auto find = [this](double p, double& x, double& density) {
        QVStatModelResult result(true);
        x = Search(p, result);
        if (result.NotSuccessful()) x = std::numeric_limits<double>::quiet_NaN();
        density = law_.Density(x);
      };
      QVLaws::PercentileKnots knots;
      return QVLaws::FillInBlocks(arguments, values, [&](auto... block) {
        QVLaws::FillPercentiles(law_, knots, find, block...);
      });
    }
  }
  const auto fill = [&](double (Law::*query)(double) const) {
    std::transform(arguments.begin(), arguments.end(), values.begin(),
                   [&](double x) { return (law_.*query)(x); });
  };
  if (function == QVPDFFunction::Density) fill(&Law::Density);
  if (function == QVPDFFunction::CDF) fill(&Law::CDF);
  if (function == QVPDFFunction::Survival) fill(&Law::Survival);
  if (function == QVPDFFunction::LogDensity) fill(&Law::LogDensity);
  if (function == QVPDFFunction::LogSurvival) fill(&Law::LogSurvival);
}

template <class Law>
double QVUniVarLawImpl<Law>::Search([[maybe_unused]] double p,
                                    [[maybe_unused]] QVStatModelResult& result) const {
  using QVLaws::Search;
  if constexpr (Law::kSearch == Search::ClosedForm) {
    return QVStatsBadData::BadDouble;
  } else {
    QVBracket bracket{0.0, 1.0};
    const QVBracketTable::Side* side = nullptr;
    std::size_t rung = 0;
    if constexpr (Law::kSearch != Search::UnitInterval) {
      // Each end looks up the distribution function at the rung it tries, or computes it once.
      const auto search = [&](const QVBracketTable::Side& on, double sign, double& end) {
        return QVSearchBracketEnd(sign, p, end, result, [&](std::size_t i, double x) {
          if (Law::kSearch == Search::FromZero && x <= 0.0) return 0.0;
          if (i >= QVBracketTable::kSize) return law_.CDF(x);
          const QVLazyNumber& known = on.endCdf[i];
          if (std::isnan(known.Get())) known.Set(law_.CDF(x));
          return known.Get();
        });
      };
      std::size_t below = 0;
      if constexpr (Law::kSearch == Search::FromBothSides)
        below = search(brackets_.below, -1.0, bracket.lower);
      if (result.NotSuccessful()) return QVStatsBadData::BadDouble;
      const std::size_t above = search(brackets_.above, 1.0, bracket.upper);
      if (result.NotSuccessful()) return QVStatsBadData::BadDouble;
      rung = below + above;
      if (below == 0) side = &brackets_.above;
      if (above == 0) side = &brackets_.below;
    }
    const auto start = [&](QVLawOnPath<Law>& path) {
      if (!side || rung >= QVBracketTable::kSize) return;
      const double middle = (bracket.lower + bracket.upper) / 2;
      const QVLazyNumber& knownCdf = side->middleCdf[rung];
      const QVLazyNumber& knownDensity = side->middleDensity[rung];
      if (std::isnan(knownCdf.Get()) || std::isnan(knownDensity.Get())) {
        knownCdf.Set(law_.CDF(middle));
        knownDensity.Set(law_.Density(middle));
      }
      path.Start(middle, knownCdf.Get(), knownDensity.Get());
    };
    return QVInvertContinuousCDF(p, bracket, Law::kTolX, Law::kTolY, result, [&] {
      QVLawOnPath<Law> path(law_);
      start(path);
      return path;
    });
  }
}

}  // namespace QVStats

#endif  // QVSTATS_PDF_LAW_IMPL_H
