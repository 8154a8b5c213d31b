/// \file
/// \brief Abstract function objects that callers implement and the library copies.
#ifndef QV_PLATFORM_SYSTEM_FUNCTORS_H
#define QV_PLATFORM_SYSTEM_FUNCTORS_H

namespace QVSystem {

/// A function of one argument. `CreateCopy` returns a new copy that the caller owns.
template <class Argument, class Result>
class QVUnaryFunction {
 public:
  virtual ~QVUnaryFunction() = default;
  virtual Result operator()(const Argument& argument) const = 0;
  virtual QVUnaryFunction* CreateCopy() const = 0;
};

/// A function of two arguments, for example a distance.
template <class First, class Second, class Result>
class QVBinaryFunction {
 public:
  virtual ~QVBinaryFunction() = default;
  virtual Result operator()(const First& first, const Second& second) const = 0;
  virtual QVBinaryFunction* CreateCopy() const = 0;
};

/// A condition on objects of one type.
template <class T>
class QVUnaryPredicate : public QVUnaryFunction<T, bool> {
 public:
  QVUnaryPredicate* CreateCopy() const override = 0;
};

/// The same on const objects; kept as a name of its own for callers that spell it.
template <class T>
using QVConstUnaryPredicate = QVUnaryPredicate<T>;

}  // namespace QVSystem

#endif  // QV_PLATFORM_SYSTEM_FUNCTORS_H
