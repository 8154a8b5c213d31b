/// \file
/// \brief Objective functions of several variables, with and without derivatives.
#ifndef QV_PLATFORM_OPT_FUNCTION_H
#define QV_PLATFORM_OPT_FUNCTION_H

#include "platform/opt/export.h"
#include "platform/system/iter.h"

namespace QVOpt {

/// A function f of NumVar() variables, to be minimised.
class QVOPT_EXPORT QVFunc0 {
 public:
  virtual unsigned int NumVar() const = 0;
  /// f(x); `x` has NumVar() values.
  virtual double operator()(const double* x) = 0;
  /// The terms that f(x) is made of, where a function has such; otherwise an empty iterator.
  virtual QVSystem::QVIter<double> GetFComponents(const double* x) = 0;
  virtual ~QVFunc0();
};

/// A function with its gradient.
class QVOPT_EXPORT QVFunc1 : public QVFunc0 {
 public:
  using QVFunc0::operator();
  /// \return f(x); `gradient` receives NumVar() values.
  virtual double operator()(const double* x, double* gradient) = 0;
  /// Whether the function is defined at x.
  virtual bool CheckVariablesValidity(const double* x) = 0;
  /// Whether two points stand for the same solution, to a tolerance.
  virtual bool IsRedundant(const double* x1, const double* x2, double tolerance) const = 0;
};

/// A function with its gradient and Hessian.
class QVOPT_EXPORT QVFunc2 : public QVFunc1 {
 public:
  using QVFunc1::operator();
  /// \return f(x); `gradient` receives NumVar() values, `hessian` the full symmetric matrix, row
  /// after row.
  virtual double operator()(const double* x, double* gradient, double* hessian) = 0;
};

/// Watches an optimisation and may end it.
class QVOPT_EXPORT QVCheckpoint1 {
 public:
  virtual ~QVCheckpoint1();
  /// Called with each accepted point. \return whether to go on.
  virtual bool operator()(unsigned int iteration, unsigned int numVar, const double* x,
                          double value, const double* gradient) = 0;
};

}  // namespace QVOpt

#endif  // QV_PLATFORM_OPT_FUNCTION_H
