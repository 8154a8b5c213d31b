/// \file
/// \brief The log-likelihoods of the univariate families, for fits.
///
/// Each family is a struct with
/// - RanVars, its description, and Roles, what its parameters are;
/// - Standard, the units in which its samples are fitted;
/// - a constructor from a sample in those units, which keeps what the likelihood needs of it;
/// - Start, parameters to begin with;
/// - MeanLogDensity, the log-likelihood by observation, with derivatives.
/// A positive parameter beyond 1/Limit to Limit counts as gone to 0 or infinity.
#ifndef QVSTATS_PDF_LIKELIHOODS_H
#define QVSTATS_PDF_LIKELIHOODS_H

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numeric>
#include <vector>

#include "stats/api/pdf_setup.h"
#include "stats/jet.h"

namespace QVStats {
namespace QVLikelihoods {

/// What happens to a parameter when the unit of the data changes. All but Location and RealShape
/// are positive.
enum class Role { Location, Scale, Precision, Rate, Shape, RealShape };

using Sample = std::vector<double>;

/// Data x become (x - center) / scale.
struct Unit {
  double center = 0.0;
  double scale = 1.0;
};

constexpr double kLogTwoPi = 1.8378770664093454836;
constexpr double kEuler = 0.57721566490153286061;

/// The mean of a function of the values, in blocks, so that rounding does not pile up.
template <class Result, class Function>
Result MeanOf(const Sample& sample, Function function) {
  constexpr std::size_t blockSize = 256;
  Result sum = Result();
  for (std::size_t begin = 0; begin < sample.size(); begin += blockSize) {
    Result block = Result();
    for (std::size_t i = begin; i < std::min(begin + blockSize, sample.size()); ++i)
      block += function(sample[i]);
    sum += block;
  }
  return (1.0 / static_cast<double>(sample.size())) * sum;
}

inline double Mean(const Sample& sample) {
  return MeanOf<double>(sample, [](double x) { return x; });
}
inline double Variance(const Sample& sample) {
  const double mean = Mean(sample);
  return MeanOf<double>(sample, [&](double x) { return (x - mean) * (x - mean); });
}
inline double MeanLog(const Sample& sample) {
  return MeanOf<double>(sample, [](double x) { return std::log(x); });
}

/// The middle value, or the higher of the two; reorders the sample.
inline double Median(Sample& sample) {
  const auto middle = sample.begin() + static_cast<std::ptrdiff_t>(sample.size() / 2);
  std::nth_element(sample.begin(), middle, sample.end());
  return *middle;
}

/// Median and median absolute deviation, or the standard deviation where half the values are equal.
inline Unit LocationScaleUnit(Sample sample) {
  Unit unit;
  unit.center = Median(sample);
  for (double& x : sample) x = std::abs(x - unit.center);
  unit.scale = Median(sample);
  if (!(unit.scale > 0.0)) unit.scale = std::sqrt(Variance(sample));
  return unit;
}

struct Gaussian {
  using RanVars = QVUniVarGaussRanVars;
  static constexpr std::array<Role, 2> Roles = {Role::Location, Role::Precision};
  static constexpr double Limit = 1e12;
  static Unit Standard(const Sample& sample) { return LocationScaleUnit(sample); }

  explicit Gaussian(const Sample& sample) : mean(Mean(sample)), variance(Variance(sample)) {}
  std::array<double, 2> Start() const { return {mean, 1.0 / variance}; }

  template <std::size_t N>
  QVJet<N> MeanLogDensity(const std::array<QVJet<N>, 2>& p) const {
    const QVJet<N> shift = mean - p[0];
    return 0.5 * (Log(p[1]) - kLogTwoPi) - 0.5 * p[1] * (variance + shift * shift);
  }

  double mean, variance;
};

struct StudentsT {
  using RanVars = QVUniVarStudentsTRanVars;
  static constexpr std::array<Role, 3> Roles = {Role::Shape, Role::Location, Role::Precision};
  static constexpr double Limit = 1e6;
  static Unit Standard(const Sample& sample) { return LocationScaleUnit(sample); }

  explicit StudentsT(const Sample& data) : sample(data) {}
  /// The median absolute deviation with 4 degrees of freedom is 0.741 / sqrt(precision).
  std::array<double, 3> Start() const { return {4.0, 0.0, 0.549}; }

  /// log(Gamma(a + 1/2) / (Gamma(a) sqrt(a))).
  template <std::size_t N>
  static QVJet<N> LogGammaStep(const QVJet<N>& a) {
    if (a.value < 20.0) return LogGamma(a + 0.5) - LogGamma(a) - 0.5 * Log(a);
    // The difference would lose its digits. Series from that of log Gamma, by differences.
    const QVJet<N> inverse = 1.0 / a;
    const QVJet<N> square = inverse * inverse;
    return inverse *
           (square * (square * (square * (17.0 / 14336.0 - 31.0 / 18432.0 * square) - 1.0 / 640.0) +
                      1.0 / 192.0) -
            0.125);
  }

  template <std::size_t N>
  QVJet<N> MeanLogDensity(const std::array<QVJet<N>, 3>& p) const {
    const QVJet<N> ratio = p[2] / p[0];
    const QVJet<N> meanLog = MeanOf<QVJet<N>>(sample, [&](double x) {
      const QVJet<N> distance = x - p[1];
      return Log1p(ratio * distance * distance);
    });
    return LogGammaStep(0.5 * p[0]) + 0.5 * (Log(p[2]) - kLogTwoPi) - 0.5 * (p[0] + 1.0) * meanLog;
  }

  Sample sample;
};

struct Gamma {
  using RanVars = QVGammaRanVars;
  static constexpr std::array<Role, 2> Roles = {Role::Shape, Role::Rate};
  static constexpr double Limit = 1e8;
  static Unit Standard(const Sample& sample) { return {0.0, Mean(sample)}; }

  explicit Gamma(const Sample& sample) : mean(Mean(sample)), meanLog(MeanLog(sample)) {}
  /// Within 1.5 % of the maximum. Source: T. P. Minka, "Estimating a Gamma distribution", 2002.
  std::array<double, 2> Start() const {
    const double gap = std::log(mean) - meanLog;
    const double shape =
        (3.0 - gap + std::sqrt((gap - 3.0) * (gap - 3.0) + 24.0 * gap)) / (12.0 * gap);
    return {shape, shape / mean};
  }

  template <std::size_t N>
  QVJet<N> MeanLogDensity(const std::array<QVJet<N>, 2>& p) const {
    return p[0] * Log(p[1]) - LogGamma(p[0]) + (p[0] - 1.0) * meanLog - p[1] * mean;
  }

  double mean, meanLog;
};

struct ChiSquared {
  using RanVars = QVChiSquareRanVars;
  static constexpr std::array<Role, 1> Roles = {Role::Shape};
  static constexpr double Limit = 1e12;
  static Unit Standard(const Sample&) { return {}; }

  explicit ChiSquared(const Sample& sample) : mean(Mean(sample)), meanLog(MeanLog(sample)) {}
  /// The digamma function of half the degrees of freedom is the mean of log(x / 2): about its
  /// inverse. Source: T. P. Minka, "Estimating a Dirichlet distribution", 2000, appendix C.
  std::array<double, 1> Start() const {
    const double y = meanLog - std::log(2.0);
    return {2.0 * (y >= -2.22 ? std::exp(y) + 0.5 : -1.0 / (y + kEuler))};
  }

  template <std::size_t N>
  QVJet<N> MeanLogDensity(const std::array<QVJet<N>, 1>& p) const {
    const QVJet<N> half = 0.5 * p[0];
    return half * (meanLog - std::log(2.0)) - LogGamma(half) - meanLog - 0.5 * mean;
  }

  double mean, meanLog;
};

struct SnedecorsF {
  using RanVars = QVSnedecorsFRanVars;
  static constexpr std::array<Role, 2> Roles = {Role::Shape, Role::Shape};
  static constexpr double Limit = 1e6;
  static Unit Standard(const Sample&) { return {}; }

  explicit SnedecorsF(const Sample& data) : sample(data), meanLog(MeanLog(data)) {}
  /// Equal ones, from the variance of log x, which is about the sum of their inverses doubled.
  std::array<double, 2> Start() const {
    const double variance = MeanOf<double>(
        sample, [&](double x) { return (std::log(x) - meanLog) * (std::log(x) - meanLog); });
    const double degrees = std::min(std::max(4.0 / variance, 0.1), 1e4);
    return {degrees, degrees};
  }

  template <std::size_t N>
  QVJet<N> MeanLogDensity(const std::array<QVJet<N>, 2>& p) const {
    const QVJet<N> ratio = p[0] / p[1];
    const QVJet<N> first = 0.5 * p[0], second = 0.5 * p[1];
    const QVJet<N> meanLog1p = MeanOf<QVJet<N>>(sample, [&](double x) { return Log1p(x * ratio); });
    return LogGamma(first + second) - LogGamma(first) - LogGamma(second) + first * Log(ratio) +
           (first - 1.0) * meanLog - (first + second) * meanLog1p;
  }

  Sample sample;
  double meanLog;
};

struct Beta {
  using RanVars = QVBetaRanVars;
  static constexpr std::array<Role, 2> Roles = {Role::Shape, Role::Shape};
  static constexpr double Limit = 1e8;
  static Unit Standard(const Sample&) { return {}; }

  explicit Beta(const Sample& sample)
      : mean(Mean(sample)),
        variance(Variance(sample)),
        meanLog(MeanLog(sample)),
        meanLogRest(MeanOf<double>(sample, [](double x) { return std::log1p(-x); })) {}
  /// From mean and variance.
  std::array<double, 2> Start() const {
    const double sum = std::max(mean * (1.0 - mean) / variance - 1.0, 0.01);
    return {mean * sum, (1.0 - mean) * sum};
  }

  template <std::size_t N>
  QVJet<N> MeanLogDensity(const std::array<QVJet<N>, 2>& p) const {
    return LogGamma(p[0] + p[1]) - LogGamma(p[0]) - LogGamma(p[1]) + (p[0] - 1.0) * meanLog +
           (p[1] - 1.0) * meanLogRest;
  }

  double mean, variance, meanLog, meanLogRest;
};

struct Gumbel {
  using RanVars = QVGumbelRanVars;
  static constexpr std::array<Role, 2> Roles = {Role::Location, Role::Scale};
  static constexpr double Limit = 1e12;
  static Unit Standard(const Sample& sample) { return LocationScaleUnit(sample); }

  explicit Gumbel(const Sample& data) : sample(data) {}
  /// From mean and variance, pi^2 / 6 of the squared scale.
  std::array<double, 2> Start() const {
    const double scale = std::sqrt(Variance(sample) / 1.6449340668482262);
    return {Mean(sample) - kEuler * scale, scale};
  }

  template <std::size_t N>
  QVJet<N> MeanLogDensity(const std::array<QVJet<N>, 2>& p) const {
    const QVJet<N> inverse = 1.0 / p[1];
    return MeanOf<QVJet<N>>(sample,
                            [&](double x) {
                              const QVJet<N> reduced = (x - p[0]) * inverse;
                              return -reduced - Exp(-reduced);
                            }) -
           Log(p[1]);
  }

  Sample sample;
};

struct GeneralizedExtremeValue {
  using RanVars = QVGeneralizedExtremeValueRanVars;
  static constexpr std::array<Role, 3> Roles = {Role::Location, Role::Scale, Role::RealShape};
  static constexpr double Limit = 1e12;
  static Unit Standard(const Sample& sample) { return LocationScaleUnit(sample); }

  explicit GeneralizedExtremeValue(const Sample& data) : sample(data) {}

  /// From probability-weighted moments; from a Gumbel distribution where a value lies outside.
  std::array<double, 3> Start() const {
    const std::array<double, 3> start = FromWeightedMoments();
    const auto [lowest, highest] = std::minmax_element(sample.begin(), sample.end());
    const auto isInside = [&](double x) {
      return 1.0 + start[2] * (x - start[0]) / start[1] > 0.01;
    };
    if (start[1] > 0.0 && start[2] > -0.9 && isInside(*lowest) && isInside(*highest)) return start;
    const std::array<double, 2> gumbel = Gumbel(sample).Start();
    return {gumbel[0], gumbel[1], 0.0};
  }

  /// log(1 + w) / w, smooth through 0.
  template <std::size_t N>
  static QVJet<N> LogRatio(const QVJet<N>& w) {
    double f = 0.0, slope = 0.0, curvature = 0.0;
    const double x = w.value;
    if (std::abs(x) < 0.1) {
      // The sum of (-x)^k / (k + 1), with its derivatives, by Horner's rule.
      for (int k = 18; k >= 0; --k) {
        curvature = curvature * x + 2.0 * slope;
        slope = slope * x + f;
        f = f * x + (k % 2 ? -1.0 : 1.0) / (k + 1.0);
      }
    } else {
      f = std::log1p(x) / x;
      slope = (1.0 / (1.0 + x) - f) / x;
      curvature = (-1.0 / ((1.0 + x) * (1.0 + x)) - 2.0 * slope) / x;
    }
    return w.Chain(f, slope, curvature);
  }

  template <std::size_t N>
  QVJet<N> MeanLogDensity(const std::array<QVJet<N>, 3>& p) const {
    if (!(p[2].value > -1.0)) return -std::numeric_limits<double>::infinity();
    const QVJet<N> inverse = 1.0 / p[1];
    const QVJet<N> power = p[2] + 1.0;
    return MeanOf<QVJet<N>>(sample,
                            [&](double x) {
                              const QVJet<N> reduced = (x - p[0]) * inverse;
                              const QVJet<N> y = reduced * LogRatio(p[2] * reduced);
                              return -(power * y) - Exp(-y);
                            }) -
           Log(p[1]);
  }

  Sample sample;

 private:
  std::array<double, 3> FromWeightedMoments() const {
    Sample sorted = sample;
    std::sort(sorted.begin(), sorted.end());
    const double n = static_cast<double>(sorted.size());
    double b0 = 0.0, b1 = 0.0, b2 = 0.0;
    for (std::size_t i = 0; i < sorted.size(); ++i) {
      const double rank = static_cast<double>(i);
      b0 += sorted[i] / n;
      b1 += sorted[i] * rank / (n * (n - 1.0));
      b2 += sorted[i] * rank * (rank - 1.0) / (n * (n - 1.0) * (n - 2.0));
    }
    const double c = (2.0 * b1 - b0) / (3.0 * b2 - b0) - std::log(2.0) / std::log(3.0);
    double k = 7.8590 * c + 2.9554 * c * c;
    if (std::abs(k) < 1e-6) k = 1e-6;
    const double gamma = std::tgamma(1.0 + k);
    const double scale = (2.0 * b1 - b0) * k / (gamma * (1.0 - std::pow(2.0, -k)));
    return {b0 + scale * (gamma - 1.0) / k, scale, -k};
  }
};

}  // namespace QVLikelihoods
}  // namespace QVStats

#endif  // QVSTATS_PDF_LIKELIHOODS_H
