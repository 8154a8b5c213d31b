/// \file
/// \brief Minimisation along a line: downhill bracketing and golden-section search.
///
/// Source: W. H. Press et al., "Numerical Recipes", 2nd edition, 1992, sections 10.1 and 10.2 (the
/// methods); R. P. Brent, "Algorithms for Minimization without Derivatives", 1973.
#ifndef QVSTATS_API_MINIMIZER_H
#define QVSTATS_API_MINIMIZER_H

#include <cstddef>

#include "platform/opt/function.h"
#include "stats/api/export.h"

namespace QVStats {

/// f(x + t d); `x` and `d` have n values.
QVSTATS_EXPORT double QVGetFunc0ValFromLineStep(double t, unsigned int n, const double* x,
                                                const double* d, QVOpt::QVFunc0& f);

/// The vertex of the parabola through (a, fa), (b, fb) and (c, fc). A denominator of a magnitude
/// below 1e-20 is put at 1e-20 with its sign, so that a straight line gives a far, finite point.
QVSTATS_EXPORT double MinArgOfInterpolatingQuadratic(double a, double b, double c, double fa,
                                                     double fb, double fc);

/// Finds steps 0 <= a < b < c <= tMax with f(b) below f(a) and f(c), going downhill from the trial
/// step t by golden-ratio growth helped by parabolas.
///
/// \return false when f(t) is not below f(0), so that t is no descent, or when f still falls at
/// tMax; then b and c are the last two steps tried.
QVSTATS_EXPORT bool QVBracketLineMin(double& a, double& b, double& c, unsigned int n, double t,
                                     const double* x, const double* d, QVOpt::QVFunc0& f,
                                     double tMax);

/// The same, but a function that falls up to tMax is also tried between the last step and tMax, so
/// that a minimum close to the bound is found.
///
/// \return false when t is no descent, or when f is lowest at tMax; then c is tMax.
QVSTATS_EXPORT bool QVBoundedArgBracketLineMin(double& a, double& b, double& c, unsigned int n,
                                               double t, const double* x, const double* d,
                                               QVOpt::QVFunc0& f, double tMax);

/// A strategy for minimising along a line.
class QVSTATS_EXPORT QVLineMinimize0 {
 public:
  virtual ~QVLineMinimize0() = default;
  virtual QVLineMinimize0* CreateCopy() const = 0;

  /// Minimises f(x + t d) over the step t >= 0; `point` and `direction` have n values.
  /// \param step in: the trial step; out: the minimising step.
  /// \param value out: f at that step.
  /// \return whether a minimum was found.
  virtual bool operator()(unsigned int n, const double* point, double* direction, double* value,
                          double* step, QVOpt::QVFunc0& objective) const = 0;
};

/// Golden-section search of a bracketed minimum.
///
/// The trial step must be below the upper limit and must lower the function; otherwise the search
/// fails and leaves value and step unchanged. A function that falls up to the upper limit has its
/// minimum there. A search that does not converge sets value and step to the bad double.
class QVSTATS_EXPORT QVGoldenSectionSearch : public QVLineMinimize0 {
 public:
  /// Default 10000. \return true.
  bool SetUpperLimOnOneDimSteps(double limit);
  /// The search ends when the bracket is narrower than this share of the sum of its two inner
  /// steps. Default 3e-8. \return true.
  bool SetRelTolOnSolutionStepAccuracy(double tolerance);
  /// Default 1000. \return true.
  bool SetMaxIterations(std::size_t iterations);

  QVGoldenSectionSearch* CreateCopy() const override;
  bool operator()(unsigned int n, const double* point, double* direction, double* value,
                  double* step, QVOpt::QVFunc0& objective) const override;

 private:
  double upperLimit_ = 10000.0;
  double tolerance_ = 3e-08;
  std::size_t maxIterations_ = 1000;
};

}  // namespace QVStats

#endif  // QVSTATS_API_MINIMIZER_H
