#include "platform/opt/newton_opt.h"

#include <Eigen/Cholesky>
#include <algorithm>
#include <cmath>
#include <limits>

namespace QVOpt {

namespace {

using Eigen::MatrixXd;
using Eigen::VectorXd;

/// A point with what the function says of it.
struct Point {
  explicit Point(unsigned int n) : x(n), gradient(n), hessian(n, n) {}

  void Evaluate(QVFunc2& function) { value = function(x.data(), gradient.data(), hessian.data()); }
  bool IsFinite() const {
    return std::isfinite(value) && gradient.allFinite() && hessian.allFinite();
  }

  VectorXd x;
  double value = 0.0;
  VectorXd gradient;
  MatrixXd hessian;  // symmetric, so that its order of storage does not matter
};

/// Solves (H + shift I) d = -g with the smallest shift tried that makes it positive definite.
VectorXd FindDirection(const Point& point) {
  const double scale = std::max(point.hessian.diagonal().cwiseAbs().maxCoeff(), 1e-300);
  double shift = 0.0;
  for (int attempt = 0; attempt < 60; ++attempt) {
    MatrixXd shifted = point.hessian;
    shifted.diagonal().array() += shift;
    const Eigen::LLT<MatrixXd> factor(shifted);
    if (factor.info() == Eigen::Success) {
      const VectorXd direction = factor.solve(-point.gradient);
      if (direction.allFinite() && direction.dot(point.gradient) <= 0.0) return direction;
    }
    shift = std::max(10.0 * shift, 1e-10 * scale);
  }
  return -point.gradient / scale;
}

/// Halves the step until the value falls enough. A fall that rounding hides counts as one.
bool SearchAlong(QVFunc2& function, const Point& from, const VectorXd& direction, Point& to) {
  const double slope = from.gradient.dot(direction);
  const double rounding = 8.0 * std::numeric_limits<double>::epsilon() * std::abs(from.value);
  double step = 1.0;
  for (int halving = 0; halving < 60; ++halving, step *= 0.5) {
    to.x = from.x + step * direction;
    if (!function.CheckVariablesValidity(to.x.data())) continue;
    to.Evaluate(function);  // nearly always the step that is taken, so all at once
    if (to.IsFinite() && to.value <= from.value + 1e-4 * step * slope + rounding) return true;
  }
  return false;
}

bool IsSmall(const VectorXd& step, const VectorXd& x, double tolerance) {
  return (step.array().abs() <= tolerance * x.array().abs().max(1.0)).all();
}

}  // namespace

double QVNewtonOpt::operator()(QVFunc2& function, const double* start, double* result) {
  return (*this)(function, nullptr, start, result);
}

double QVNewtonOpt::operator()(QVFunc2& function, QVCheckpoint1* checkpoint, const double* start,
                               double* result) {
  const unsigned int n = function.NumVar();
  Point current(n), next(n);
  std::copy(start, start + n, current.x.data());
  iterations_ = 0;
  status_ = QVNewtonStatus::InvalidPoint;
  if (function.CheckVariablesValidity(current.x.data())) {
    current.Evaluate(function);
    if (current.IsFinite()) status_ = QVNewtonStatus::IterationLimit;
  }
  while (status_ == QVNewtonStatus::IterationLimit && iterations_ < iterLimit_) {
    const VectorXd direction = FindDirection(current);
    if (!SearchAlong(function, current, direction, next)) {
      status_ = QVNewtonStatus::NoDescent;
      break;
    }
    std::swap(current, next);
    ++iterations_;
    if (IsSmall(direction, current.x, tolerance_)) status_ = QVNewtonStatus::Converged;
    if (checkpoint &&
        !(*checkpoint)(iterations_, n, current.x.data(), current.value, current.gradient.data()))
      status_ = QVNewtonStatus::StoppedByCheckpoint;
  }
  std::copy(current.x.data(), current.x.data() + n, result);
  return current.value;
}

}  // namespace QVOpt
