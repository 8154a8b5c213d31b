#include "stats/kolmogorov_smirnov.h"

#include <Eigen/Core>
#include <algorithm>
#include <cmath>

#include "platform/math/special_functions.h"
#include "platform/system/cast.h"

namespace QVStats {

namespace {

using QVSystem::QVDoubleFromCount;

/// A number times a power of 2, for products that leave the range of a double.
struct Scaled {
  double value = 1.0;
  int exponent = 0;

  void Multiply(double factor) {
    int shift;
    value = std::frexp(value * factor, &shift);
    exponent += shift;
  }
};

/// The sum of Birnbaum and Tingey: all its terms are positive.
double GetOneSidedTail(double d, std::size_t n) {
  const double count = QVDoubleFromCount(n);
  double sum = std::exp(count * std::log1p(-d)) / d;
  for (std::size_t j = 1; j < n; ++j) {
    const double k = QVDoubleFromCount(j), share = d + k / count, rest = 1.0 - share;
    if (!(rest > 0.0)) break;
    const double logChoose = -std::log1p(count) - QVMath::QVLogBeta(count - k + 1.0, k + 1.0);
    sum += std::exp(logChoose + (k - 1.0) * std::log(share) + (count - k) * std::log(rest));
  }
  return d * sum;
}

/// The matrix of Marsaglia, Tsang and Wang; k - 1 < n d <= k and h = k - n d.
Eigen::MatrixXd GetStepMatrix(Eigen::Index k, double h) {
  const Eigen::Index size = 2 * k - 1;
  Eigen::VectorXd reciprocal(size + 1), powers(size);  // 1 / i! and h^i / i!
  reciprocal[0] = 1.0;
  for (Eigen::Index i = 1; i <= size; ++i) {
    reciprocal[i] = reciprocal[i - 1] / static_cast<double>(i);
    powers[i - 1] = reciprocal[i] * std::pow(h, static_cast<double>(i));
  }
  Eigen::MatrixXd step = Eigen::MatrixXd::Zero(size, size);
  for (Eigen::Index i = 0; i < size; ++i)
    for (Eigen::Index j = 0; j <= std::min(i + 1, size - 1); ++j)
      step(i, j) = reciprocal[i - j + 1];
  step.col(0) -= powers;
  step.row(size - 1) -= powers.reverse().transpose();
  const double excess = std::max(0.0, 2.0 * h - 1.0);
  step(size - 1, 0) += std::pow(excess, static_cast<double>(size)) * reciprocal[size];
  return step;
}

/// The exponent by which the matrix is scaled to elements around 1.
int Rescale(Eigen::MatrixXd& matrix) {
  int exponent;
  std::frexp(matrix.maxCoeff(), &exponent);
  matrix *= std::ldexp(1.0, -exponent);
  return exponent;
}

/// P(D < d) = n! / n^n times the middle element of the n-th power of the step matrix.
double GetKolmogorovCDF(double d, std::size_t n) {
  const double count = QVDoubleFromCount(n), nd = count * d;
  const auto k = static_cast<Eigen::Index>(nd) + 1;
  Eigen::MatrixXd square = GetStepMatrix(k, static_cast<double>(k) - nd);
  // The middle row of the power, gathered from the squares that the bits of n name.
  Eigen::RowVectorXd row = Eigen::RowVectorXd::Unit(square.cols(), k - 1);
  Scaled product;
  int exponent = Rescale(square);
  for (std::size_t bits = n; bits > 0; bits >>= 1U) {
    if (bits & 1U) {
      row = (row * square).eval();
      product.exponent += exponent;
      const double scale = row.maxCoeff();
      product.Multiply(scale);
      row /= scale;
    }
    if (bits == 1) break;
    square = (square * square).eval();
    exponent = 2 * exponent + Rescale(square);
  }
  for (std::size_t i = 1; i <= n; ++i) product.Multiply(QVDoubleFromCount(i) / count);
  product.Multiply(row[k - 1]);
  return std::ldexp(product.value, product.exponent);
}

}  // namespace

double QVGetOneSampleKolmogorovTail(double d, std::size_t n, bool isTwoSided) {
  if (!(d > 0.0)) return 1.0;
  if (d >= 1.0) return 0.0;
  const double count = QVDoubleFromCount(n);
  if (isTwoSided && count * d <= 0.5) return 1.0;  // no sample comes nearer
  // Both distances are that large only with a share of exp(-6 n d^2) of the probability, never for
  // d >= 1/2: twice one of them is as good as the limit then, and for small n better than 1 - P.
  const bool isExact = n <= QVGetMostValuesOfExactKolmogorovTail(isTwoSided);
  const bool isFar = d >= 0.5 || count * d * d > (isExact ? 5.0 : 2.0);
  if (n <= QVGetMostValuesOfExactKolmogorovTail(false) && (isFar || !isTwoSided))
    return std::min(1.0, (isTwoSided ? 2.0 : 1.0) * GetOneSidedTail(d, n));
  if (isExact) return std::clamp(1.0 - GetKolmogorovCDF(d, n), 0.0, 1.0);
  // The terms of order n^-1/2 and 1/n: J. Vrbik, "Small-Sample Corrections to Kolmogorov-Smirnov
  // Test Statistic", Pioneer J. Theor. Appl. Stat. 15(1-2), 2018.
  const double root = std::sqrt(count), x = root * d;
  return QVGetLimitOfKolmogorovTail(x + 1.0 / (6.0 * root) + (x - 1.0) / (4.0 * count), isTwoSided);
}

QVSmirnovDistances QVGetSmirnovDistances(const std::vector<double>& first,
                                         const std::vector<double>& second) {
  const std::size_t m = first.size(), n = second.size();
  QVSmirnovDistances distances;
  distances.isEndOfTies.assign(m + n + 1, 0);
  std::size_t i = 0, j = 0;
  while (i < m || j < n) {
    const double value = j == n || (i < m && first[i] < second[j]) ? first[i] : second[j];
    while (i < m && first[i] == value) ++i;
    while (j < n && second[j] == value) ++j;
    distances.isEndOfTies[i + j] = 1;
    const auto difference = static_cast<std::int64_t>(i * n) - static_cast<std::int64_t>(j * m);
    distances.above = std::max(distances.above, difference);
    distances.below = std::max(distances.below, -difference);
  }
  return distances;
}

double QVGetExactSmirnovTail(std::int64_t d, std::size_t m, std::size_t n,
                             const std::vector<char>& isEndOfTies, bool isTwoSided) {
  if (d <= 0) return 1.0;
  // Orders of the merged sample are paths from (0, 0) to (m, n). touched[j] is the share of those
  // to (i, j) that came as far off the diagonal as d: a weighted mean of the two steps before.
  std::vector<double> touched(n + 1, 0.0), reciprocal(m + n + 1, 0.0);
  for (std::size_t k = 1; k <= m + n; ++k) reciprocal[k] = 1.0 / QVDoubleFromCount(k);
  for (std::size_t i = 0; i <= m; ++i) {
    const double a = QVDoubleFromCount(i);
    double before = 0.0, b = 0.0;
    auto difference = static_cast<std::int64_t>(i * n);
    for (std::size_t j = 0; j <= n; ++j, b += 1.0, difference -= static_cast<std::int64_t>(m)) {
      const bool touches = difference >= d || (isTwoSided && difference <= -d);
      const double mean = (a * touched[j] + b * before) * reciprocal[i + j];
      before = touched[j] = touches && isEndOfTies[i + j] ? 1.0 : mean;
    }
  }
  return std::min(1.0, touched[n]);
}

double QVGetLimitOfKolmogorovTail(double x, bool isTwoSided) {
  if (!(x > 0.0)) return 1.0;
  if (!isTwoSided) return std::exp(-2.0 * x * x);
  double sum = 0.0;
  if (x < 1.0) {
    // The transform of the series below: few terms where that one needs many.
    constexpr double kPi = 3.14159265358979323846;
    for (int k = 1; k < 20; k += 2) sum += std::exp(-k * k * kPi * kPi / (8.0 * x * x));
    return 1.0 - std::sqrt(2.0 * kPi) / x * sum;
  }
  for (int k = 9; k >= 1; --k) sum = std::exp(-2.0 * k * k * x * x) - sum;
  return 2.0 * sum;
}

}  // namespace QVStats
