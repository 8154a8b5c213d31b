#include "stats/distance_covariance.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "stats/ranking.h"
#include "stats/sample_sums.h"

namespace QVStats {

namespace {

bool AllFinite(const std::vector<double>& values) {
  return std::all_of(values.begin(), values.end(), [](double v) { return std::isfinite(v); });
}

/// Groups of so many items are compared pair by pair.
constexpr unsigned int kDirectBits = 3;

}  // namespace

QVDistanceCovariance::Sample::Sample(const std::vector<double>& sample) : values(sample) {
  const std::size_t n = values.size();
  order = QVRankValues(values).order;
  const double median = values[order[n / 2]];
  for (double& value : values) value -= median;
  const double count = static_cast<double>(n);
  const double total = QVSumTerms(0, n, [this](std::size_t i) { return values[i]; });
  const double squares = QVSumTerms(0, n, [this](std::size_t i) { return values[i] * values[i]; });
  rowSums.resize(n);
  double below = 0.0;
  for (std::size_t k = 0; k < n; ++k) {
    const double value = values[order[k]];
    rowSums[order[k]] = (2.0 * static_cast<double>(k) - count) * value + (total - 2.0 * below);
    below += value;
  }
  sumOfRowSums = QVSumTerms(0, n, [this](std::size_t i) { return rowSums[i]; });
  const double rowSquares =
      QVSumTerms(0, n, [this](std::size_t i) { return rowSums[i] * rowSums[i]; });
  const double mean = sumOfRowSums / count;
  sumOfSquares = 2.0 * (count * squares - total * total) - 2.0 / count * rowSquares + mean * mean;
}

QVDistanceCovariance::QVDistanceCovariance(const std::vector<double>& x,
                                           const std::vector<double>& y)
    : x_(x), y_(y), rankOfY_(y.size()), finite_(AllFinite(x) && AllFinite(y)) {
  for (std::uint32_t k = 0; k < y.size(); ++k) rankOfY_[y_.order[k]] = k;
  items_.resize(x.size());
  sorted_.resize(x.size());
}

template <class IndexOf>
double QVDistanceCovariance::Sum(IndexOf indexOf, double& sumOfProducts) {
  if (!finite_) return std::numeric_limits<double>::quiet_NaN();
  const std::size_t n = items_.size();
  double sumX = 0.0, sumY = 0.0, sumXY = 0.0, rows = 0.0;
  for (std::size_t k = 0; k < n; ++k) {
    const std::size_t i = x_.order[k], j = indexOf(i);
    const Item item = {x_.values[i], y_.values[j], rankOfY_[j]};
    items_[k] = item;
    sumX += item.x;
    sumY += item.y;
    sumXY += item.x * item.y;
    rows += x_.rowSums[i] * y_.rowSums[j];
  }
  const double count = static_cast<double>(n);
  sumOfProducts = 2.0 * (count * sumXY - sumX * sumY - 2.0 * SumOverInversions());
  return sumOfProducts - 2.0 / count * rows + (x_.sumOfRowSums / count) * (y_.sumOfRowSums / count);
}

double QVDistanceCovariance::SumOverInversions() {
  const std::size_t n = items_.size();
  unsigned int bits = kDirectBits;
  while ((n - 1) >> bits != 0) ++bits;
  double sum = 0.0;
  for (unsigned int bit = bits; bit-- > kDirectBits;) {
    const std::size_t half = std::size_t{1} << bit;
    for (std::size_t low = 0; low < n; low += 2 * half) {
      const std::size_t high = std::min(low + 2 * half, n);
      // Of the items seen so far that belong to the upper half of the group.
      double number = 0.0, sumX = 0.0, sumY = 0.0, sumXY = 0.0;
      std::size_t lower = low, upper = low + half;
      for (std::size_t k = low; k < high; ++k) {
        const Item item = items_[k];
        const bool isUpper = (item.rankOfY >> bit) & 1;
        const double in = isUpper ? 1.0 : 0.0, xy = item.x * item.y;
        sum += (1.0 - in) * ((number * xy + sumXY) - (item.x * sumY + item.y * sumX));
        number += in;
        sumX += in * item.x;
        sumY += in * item.y;
        sumXY += in * xy;
        sorted_[isUpper ? upper : lower] = item;
        upper += isUpper;
        lower += !isUpper;
      }
    }
    items_.swap(sorted_);
  }
  const std::size_t group = std::size_t{1} << kDirectBits;
  for (std::size_t low = 0; low < n; low += group) {
    const std::size_t high = std::min(low + group, n);
    for (std::size_t j = low + 1; j < high; ++j)
      for (std::size_t i = low; i < j; ++i)
        sum += (items_[j].x - items_[i].x) * std::min(items_[j].y - items_[i].y, 0.0);
  }
  return sum;
}

double QVDistanceCovariance::SumPairByPair() const {
  const std::size_t n = x_.values.size();
  const double count = static_cast<double>(n);
  const auto center = [count](const Sample& sample, std::size_t i, std::size_t j) {
    return std::abs(sample.values[i] - sample.values[j]) -
           (sample.rowSums[i] + sample.rowSums[j] - sample.sumOfRowSums / count) / count;
  };
  double sum = 0.0;
  for (std::size_t i = 0; i < n; ++i)
    sum += QVSumTerms(0, n, [&](std::size_t j) { return center(x_, i, j) * center(y_, i, j); });
  return sum;
}

double QVDistanceCovariance::GetCrossSum() {
  double products = 0.0;
  const double sum = Sum([](std::size_t i) { return i; }, products);
  constexpr double kRounding = 1e-11;
  return std::abs(sum) < kRounding * products ? SumPairByPair() : sum;
}

double QVDistanceCovariance::GetCrossSum(const std::vector<std::size_t>& permutation) {
  double products = 0.0;
  return Sum([&permutation](std::size_t i) { return permutation[i]; }, products);
}

double QVDistanceCorrelationOf(double vAB, double vA, double vB) {
  constexpr double kEpsilon = std::numeric_limits<double>::epsilon();
  if (vA < kEpsilon || vB < kEpsilon || vAB < kEpsilon) return 0.0;
  return std::sqrt(vAB / std::sqrt(vA * vB));
}

}  // namespace QVStats
