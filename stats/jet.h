/// \file
/// \brief Numbers that carry their first and second derivatives.
#ifndef QVSTATS_JET_H
#define QVSTATS_JET_H

#include <array>
#include <cmath>
#include <cstddef>

#include "platform/math/special_functions.h"

namespace QVStats {

/// A number and its derivatives with respect to N variables: arithmetic on jets differentiates an
/// expression exactly, by the chain rule.
/// Source: A. Griewank, A. Walther, "Evaluating Derivatives", 2nd ed., 2008, chapter 13.
template <std::size_t N>
struct QVJet {
  double value = 0.0;
  std::array<double, N> gradient{};
  /// Its lower triangle: the derivative by variables i and j <= i.
  std::array<std::array<double, N>, N> hessian{};

  QVJet() = default;
  QVJet(double constant) : value(constant) {}  // NOLINT: implicit, so that formulas read

  static QVJet Variable(double value, std::size_t index) {
    QVJet jet(value);
    jet.gradient[index] = 1.0;
    return jet;
  }

  /// The function with this value, derivative and second derivative here, of this jet.
  QVJet Chain(double f, double slope, double curvature) const {
    QVJet jet(f);
    for (std::size_t i = 0; i < N; ++i) {
      jet.gradient[i] = slope * gradient[i];
      for (std::size_t j = 0; j <= i; ++j)
        jet.hessian[i][j] = slope * hessian[i][j] + curvature * gradient[i] * gradient[j];
    }
    return jet;
  }

  QVJet& operator+=(const QVJet& other) { return AddScaled(1.0, other); }
  QVJet& operator-=(const QVJet& other) { return AddScaled(-1.0, other); }

  friend QVJet operator+(QVJet a, const QVJet& b) { return a += b; }
  friend QVJet operator-(QVJet a, const QVJet& b) { return a -= b; }
  friend QVJet operator-(const QVJet& a) { return a.Chain(-a.value, -1.0, 0.0); }
  friend QVJet operator*(const QVJet& a, const QVJet& b) {
    QVJet jet(a.value * b.value);
    for (std::size_t i = 0; i < N; ++i) {
      jet.gradient[i] = a.value * b.gradient[i] + b.value * a.gradient[i];
      for (std::size_t j = 0; j <= i; ++j)
        jet.hessian[i][j] = a.value * b.hessian[i][j] + b.value * a.hessian[i][j] +
                            a.gradient[i] * b.gradient[j] + b.gradient[i] * a.gradient[j];
    }
    return jet;
  }
  friend QVJet operator*(double factor, const QVJet& a) {
    return a.Chain(factor * a.value, factor, 0.0);
  }
  friend QVJet operator*(const QVJet& a, double factor) { return factor * a; }
  friend QVJet operator/(const QVJet& a, const QVJet& b) {
    const double inverse = 1.0 / b.value;
    return a * b.Chain(inverse, -inverse * inverse, 2.0 * inverse * inverse * inverse);
  }

 private:
  QVJet& AddScaled(double factor, const QVJet& other) {
    value += factor * other.value;
    for (std::size_t i = 0; i < N; ++i) {
      gradient[i] += factor * other.gradient[i];
      for (std::size_t j = 0; j <= i; ++j) hessian[i][j] += factor * other.hessian[i][j];
    }
    return *this;
  }
};

template <std::size_t N>
QVJet<N> Exp(const QVJet<N>& a) {
  const double f = std::exp(a.value);
  return a.Chain(f, f, f);
}

template <std::size_t N>
QVJet<N> Log(const QVJet<N>& a) {
  const double inverse = 1.0 / a.value;
  return a.Chain(std::log(a.value), inverse, -inverse * inverse);
}

/// log(1 + a).
template <std::size_t N>
QVJet<N> Log1p(const QVJet<N>& a) {
  const double inverse = 1.0 / (1.0 + a.value);
  return a.Chain(std::log1p(a.value), inverse, -inverse * inverse);
}

/// log |Gamma(a)|.
template <std::size_t N>
QVJet<N> LogGamma(const QVJet<N>& a) {
  return a.Chain(QVMath::QVlgamma(a.value), QVMath::QVDiGamma(a.value),
                 QVMath::QVTriGamma(a.value));
}

}  // namespace QVStats

#endif  // QVSTATS_JET_H
