/// \file
/// \brief Newton's method with step control.
#ifndef QV_PLATFORM_OPT_NEWTON_OPT_H
#define QV_PLATFORM_OPT_NEWTON_OPT_H

#include "platform/opt/export.h"
#include "platform/opt/function.h"

namespace QVOpt {

/// How a minimisation ended.
enum class QVNewtonStatus {
  NotRun,
  Converged,
  IterationLimit,       ///< the steps had not become small when the limit was reached
  NoDescent,            ///< no step along the search direction lowers the function
  InvalidPoint,         ///< the start is outside the domain or its value is not finite
  StoppedByCheckpoint,  ///< the caller's checkpoint ended it
};

/// Minimises a function with second derivatives.
///
/// Each step solves H d = -g by Cholesky factorisation; where H is not positive definite a multiple
/// of the identity is added until it is. The step is halved until it satisfies Armijo's condition
/// f(x + t d) <= f(x) + 1e-4 t g.d. Converged means that a full step moved each variable by at most
/// tolerance * max(1, |x_j|); that step is still taken, so that the error left is of the order of
/// the tolerance squared. Source: J. Nocedal, S. J. Wright, "Numerical Optimization", 2nd edition,
/// 2006, chapter 3.
class QVOPT_EXPORT QVNewtonOpt {
 public:
  /// Default 100.
  void SetIterLimit(unsigned int limit) { iterLimit_ = limit; }
  unsigned int GetIterLimit() const { return iterLimit_; }
  /// Default 1e-8.
  void SetTolerance(double tolerance) { tolerance_ = tolerance; }
  double GetTolerance() const { return tolerance_; }

  /// Minimises from `start`; `result` receives the best point found, however the search ended, and
  /// may be the same array. Both have NumVar() values. \return the value at `result`. GetStatus()
  /// says how the search ended.
  double operator()(QVFunc2& function, const double* start, double* result);
  /// The same with a checkpoint, which may be null.
  double operator()(QVFunc2& function, QVCheckpoint1* checkpoint, const double* start,
                    double* result);

  QVNewtonStatus GetStatus() const { return status_; }
  /// \return the steps taken by the last minimisation.
  unsigned int GetNumIterations() const { return iterations_; }

 private:
  unsigned int iterLimit_ = 100;
  double tolerance_ = 1e-8;
  QVNewtonStatus status_ = QVNewtonStatus::NotRun;
  unsigned int iterations_ = 0;
};

}  // namespace QVOpt

#endif  // QV_PLATFORM_OPT_NEWTON_OPT_H
