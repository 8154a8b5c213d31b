#include "stats/kernel_sums.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace QVStats {

namespace {

namespace Type = QVKernelFunctionType;

/// Points between two rows of sums.
constexpr std::size_t kStep = 16;
/// What a query sums point by point rather than by a series.
constexpr std::size_t kFewSteps = 3;
constexpr std::size_t kMaxTerms = 22;
constexpr std::size_t kNoMoments = static_cast<std::size_t>(-1);

using Coefficients = std::array<double, kMaxTerms>;

/// The kernels of bounded support as polynomials of |u|, highest power last.
struct Polynomial {
  std::size_t numTerms;
  std::array<double, 10> factors;
};

constexpr double kTricube = 0.8641975308641975;

const Polynomial& GetPolynomial(unsigned int type) {
  static const Polynomial boxCar = {1, {0.5}};
  static const Polynomial epachnikov = {3, {0.75, 0.0, -0.75}};
  static const Polynomial biQuadratic = {5, {0.9375, 0.0, -1.875, 0.0, 0.9375}};
  static const Polynomial triCubic = {
      10, {kTricube, 0, 0, -3 * kTricube, 0, 0, 3 * kTricube, 0, 0, -kTricube}};
  if (type == Type::BoxCar) return boxCar;
  if (type == Type::Epachnikov) return epachnikov;
  return type == Type::BiQuadratic ? biQuadratic : triCubic;
}

/// The coefficients in t of P(|v - t|), where v - t has one sign throughout: those of P about |v|
/// (or what v is when all points are on the other side of it), by repeated synthetic division.
void ExpandPolynomial(const Polynomial& polynomial, double v, bool isBelowQuery, Coefficients& f) {
  const std::size_t n = polynomial.numTerms;
  std::copy_n(polynomial.factors.begin(), n, f.begin());
  const double centre = isBelowQuery ? v : -v;
  for (std::size_t k = 0; k + 1 < n; ++k)
    for (std::size_t j = n - 1; j-- > k;) f[j] += centre * f[j + 1];
  if (isBelowQuery)
    for (std::size_t k = 1; k < n; k += 2) f[k] = -f[k];
}

/// The coefficients in t of the normal density at v - t: density at v times He_k(v) / k!.
void ExpandNormalDensity(double density, double v, Coefficients& f) {
  f[0] = density;
  f[1] = v * density;
  for (std::size_t k = 2; k < kMaxTerms; ++k)
    f[k] = (v * f[k - 1] - f[k - 2]) / static_cast<double>(k);
}

}  // namespace

void QVKernelSums::SetKernel(const QVKernelFunction& kernel, double inverseBandwidth) {
  kernel_ = kernel;
  inverseBandwidth_ = std::abs(inverseBandwidth);
  const bool isNormal = kernel_.GetTypeOfKernel() == Type::Gaussian;
  support_ = isNormal ? 10.5 : 1.0;
  numTerms_ = isNormal ? kMaxTerms : GetPolynomial(kernel_.GetTypeOfKernel()).numTerms;
  cells_.clear();
  moments_.clear();
  for (std::size_t i = 0; i < x_.size(); ++i)
    if (i == 0 || !((x_[i] - cells_.back().reference) * inverseBandwidth_ <= 1.0)) StartCell(i);
  StartCell(x_.size());
}

void QVKernelSums::StartCell(std::size_t first) {
  if (!cells_.empty() && first - cells_.back().first >= kFewSteps * kStep)
    AddMoments(cells_.back(), first);
  cells_.push_back({first, first < x_.size() ? x_[first] : 0.0, kNoMoments});
}

void QVKernelSums::AddMoments(Cell& cell, std::size_t last) {
  cell.moments = moments_.size();
  const std::size_t width = 2 * numTerms_;
  std::array<double, 2 * kMaxTerms> sums{};
  for (std::size_t i = cell.first;; ++i) {
    if ((i - cell.first) % kStep == 0)
      moments_.insert(moments_.end(), sums.begin(),
                      sums.begin() + static_cast<std::ptrdiff_t>(width));
    if (i == last) break;
    const double t = (x_[i] - cell.reference) * inverseBandwidth_ - 0.5;
    double power = 1.0;
    for (std::size_t k = 0; k < width; k += 2) {
      sums[k] += power;
      sums[k + 1] += power * y_[i];
      power *= t;
    }
  }
}

void QVKernelSums::AddEach(std::size_t first, std::size_t last, double query,
                           QVKernelWeightedSum& sum) const {
  for (std::size_t i = first; i < last; ++i)
    sum.Add(kernel_((query - x_[i]) * inverseBandwidth_), y_[i]);
}

void QVKernelSums::AddPartOfCell(const Cell& cell, std::size_t first, std::size_t last,
                                 double query, QVKernelWeightedSum& sum) const {
  const std::size_t from = (first - cell.first + kStep - 1) / kStep;
  const std::size_t to = (last - cell.first) / kStep;
  if (cell.moments == kNoMoments || to < from + kFewSteps) return AddEach(first, last, query, sum);
  AddEach(first, cell.first + from * kStep, query, sum);
  AddEach(cell.first + to * kStep, last, query, sum);

  const double v = (query - cell.reference) * inverseBandwidth_ - 0.5;
  Coefficients f;
  if (kernel_.GetTypeOfKernel() == Type::Gaussian)
    ExpandNormalDensity(kernel_(v), v, f);
  else
    ExpandPolynomial(GetPolynomial(kernel_.GetTypeOfKernel()), v, x_[first] <= query, f);
  const double* lower = &moments_[cell.moments + from * 2 * numTerms_];
  const double* upper = &moments_[cell.moments + to * 2 * numTerms_];
  for (std::size_t k = 0; k < numTerms_; ++k) {
    sum.weight += f[k] * (upper[2 * k] - lower[2 * k]);
    sum.response += f[k] * (upper[2 * k + 1] - lower[2 * k + 1]);
  }
}

void QVKernelSums::AddRange(std::size_t first, std::size_t last, double query,
                            QVKernelWeightedSum& sum) const {
  if (first >= last) return;
  auto cell = std::upper_bound(cells_.begin(), cells_.end(), first,
                               [](std::size_t i, const Cell& each) { return i < each.first; });
  for (--cell; first < last; ++cell) {
    const std::size_t end = std::min(last, (cell + 1)->first);
    AddPartOfCell(*cell, first, end, query, sum);
    first = end;
  }
}

QVKernelWeightedSum QVKernelSums::Get(double query, std::size_t skipFirst,
                                      std::size_t skipLast) const {
  // The very differences that the kernel sees, so that its edges are exact.
  const auto firstWhere = [&](auto isBefore) {
    return static_cast<std::size_t>(std::partition_point(x_.begin(), x_.end(), isBefore) -
                                    x_.begin());
  };
  const auto distance = [&](double x) { return (query - x) * inverseBandwidth_; };
  const std::size_t first = firstWhere([&](double x) { return distance(x) > support_; });
  const std::size_t middle = firstWhere([&](double x) { return x <= query; });
  const std::size_t last = firstWhere([&](double x) { return distance(x) >= -support_; });
  const auto addAll = [&](auto add) {
    QVKernelWeightedSum sum;
    for (const auto& [from, to] :
         {std::pair(first, std::min(middle, last)), std::pair(std::max(first, middle), last)}) {
      if (from >= to) continue;
      add(from, std::clamp(skipFirst, from, to), sum);
      add(std::clamp(skipLast, from, to), to, sum);
    }
    return sum;
  };
  const QVKernelWeightedSum sum = addAll(
      [&](std::size_t from, std::size_t to, auto& part) { AddRange(from, to, query, part); });
  // Where all the points are at the edge of the support the series has cancelled.
  if (support_ > 1.0 || sum.weight > 1e-3 * static_cast<double>(last - first)) return sum;
  return addAll(
      [&](std::size_t from, std::size_t to, auto& part) { AddEach(from, to, query, part); });
}

}  // namespace QVStats
