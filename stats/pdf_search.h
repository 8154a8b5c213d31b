/// \file
/// \brief The search for percentiles: brackets by doubling, then safeguarded Newton steps; values
/// of refused arguments, and counts.
#ifndef QVSTATS_PDF_SEARCH_H
#define QVSTATS_PDF_SEARCH_H

#include <cmath>
#include <cstddef>
#include <sstream>

#include "platform/system/cast.h"
#include "stats/api/stat_model.h"
#include "stats/api/stats_data_types.h"
#include "stats/failure.h"

namespace QVStats {

constexpr int kMaxSearchIters = 100;

inline bool QVIsProbability(double p) { return p >= 0.0 && p <= 1.0; }

inline QVStatModelResult QVRefuseProbability(double p, const char* where) {
  return QVFailure(QVStatModelFailureType::ArgumentOutOfRange, where)
         << "percentile must be between 0 and 1 "
         << "Argument entered: " << p;
}

/// What a function is at an argument that a check refused: its value below or above the support,
/// 0 for another argument outside it, otherwise the bad double.
inline double QVGetValueOfRefusedArgument(const QVStatModelResult& result, double below,
                                          double above) {
  switch (result.GetFailureType()) {
    case QVStatModelFailureType::LowerBoundViolated:
      return below;
    case QVStatModelFailureType::UpperBoundViolated:
      return above;
    case QVStatModelFailureType::IntegerArgumentRequired:
    case QVStatModelFailureType::SumOfArgumentsWrong:
      return 0.0;
    default:
      return QVStatsBadData::BadDouble;
  }
}

constexpr double kQVLargestCount = 0x1p53;

/// The integer nearest to a value that is to be a count; 0 when it cannot be one.
inline std::size_t QVRoundToCount(double value) {
  if (!(value > 0.0 && value <= kQVLargestCount)) return 0;
  return static_cast<std::size_t>(QVSystem::QVRoundHalfEven(value));
}

struct QVBracket {
  double lower;
  double upper;
};

/// Finds an end of a bracket: tries 0, then 1, 3, 7 ... times `sign` until the distribution
/// function there passes p. `cdf(rung, x)` is the distribution function.
/// \return the number of doublings, the rung. InternalLogicFailure after 100 of them.
template <class Cdf>
std::size_t QVSearchBracketEnd(double sign, double p, double& end, QVStatModelResult& result,
                               Cdf cdf) {
  double step = sign;
  end = 0.0;
  for (std::size_t rung = 0; rung < kMaxSearchIters; ++rung) {
    const double value = cdf(rung, end);
    if (sign > 0.0 ? value > p : p > value) return rung;
    end += step;
    step *= 2.0;
  }
  result = QVFailure(QVStatModelFailureType::InternalLogicFailure,
                     sign > 0.0 ? "GetUpperBoundOnInverseCDF" : "GetLowerBoundOnInverseCDF")
           << "Max Iters (" << kMaxSearchIters << ") exceeded";
  return kMaxSearchIters;
}

/// One run of the search below. `trace`, when there is one, gets a line for each step.
template <class Evaluator>
bool QVRunInversion(double p, QVBracket bracket, double tolX, double tolY, Evaluator evaluate,
                    std::ostream* trace, double& x, QVStatModelResult& result) {
  x = (bracket.lower + bracket.upper) / 2;
  double cdf, density;
  if (!evaluate(x, cdf, density, result)) return false;
  double dx = (bracket.upper - bracket.lower) / 2;
  double errY = std::abs(cdf - p);
  if (trace)
    *trace << "Percent, lower, upper = " << p << " " << bracket.lower << " " << bracket.upper
           << "\n";
  for (int iter = 0; iter < kMaxSearchIters; ++iter) {
    if (dx <= (std::abs(x) + 1.0) * tolX && errY <= tolY) return true;
    (p <= cdf ? bracket.upper : bracket.lower) = x;
    const double reach = dx * density;
    double next = (bracket.lower + bracket.upper) / 2;
    dx = (bracket.upper - bracket.lower) / 2;
    if (std::abs(p - cdf) < reach) {
      const double step = (p - cdf) / density;
      if ((step <= 0.0 && bracket.lower <= x + step) ||
          (step >= 0.0 && x + step <= bracket.upper)) {
        next = x + step;
        dx = std::abs(step);
      }
    }
    x = next;
    if (!evaluate(x, cdf, density, result)) return false;
    errY = std::abs(cdf - p);
    if (trace)
      *trace << "lower,xnew,upper,errX,errY = " << bracket.lower << " " << x << " " << bracket.upper
             << " " << dx << " " << errY << "\n";
  }
  return false;
}

/// The x in a bracket at which the distribution function is p: Newton steps that stay inside the
/// shrinking bracket and shorten, otherwise its middle, until the last step is at most
/// (|x| + 1) tolX and the distribution function within tolY of p.
///
/// `makeEvaluator()` returns a function `bool (x, cdf&, density&, result&)` that is false, with a
/// failure in `result`, where it cannot be computed. After 100 steps the search fails with
/// InternalLogicFailure and its trace as the comment; it is run again to write that trace, so that
/// searches that succeed do not pay for it.
template <class MakeEvaluator>
double QVInvertContinuousCDF(double p, const QVBracket& bracket, double tolX, double tolY,
                             QVStatModelResult& result, MakeEvaluator makeEvaluator) {
  double x;
  if (QVRunInversion(p, bracket, tolX, tolY, makeEvaluator(), nullptr, x, result)) return x;
  const char* where = "InverseContinuousCDF";
  if (QVFailedIn(result, where)) return QVStatsBadData::BadDouble;
  std::ostringstream trace;
  QVRunInversion(p, bracket, tolX, tolY, makeEvaluator(), &trace, x, result);
  result = QVFailure(QVStatModelFailureType::InternalLogicFailure, where)
           << trace.str() << "Max Iters (" << kMaxSearchIters << ") exceeded \n";
  return QVStatsBadData::BadDouble;
}

}  // namespace QVStats

#endif  // QVSTATS_PDF_SEARCH_H
