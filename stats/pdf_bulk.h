/// \file
/// \brief Densities, distribution functions and percentiles of a law at many arguments, by the
/// vectorised functions of platform/math/dense_kernels.h.
#ifndef QVSTATS_PDF_BULK_H
#define QVSTATS_PDF_BULK_H

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#include "platform/math/dense_kernels.h"
#include "stats/api/private/pdf_laws.h"

namespace QVStats {
namespace QVLaws {

/// Calls fill(n, arguments, values) for one block after the other.
template <class Fill>
void FillInBlocks(const std::vector<double>& arguments, std::vector<double>& values, Fill fill) {
  for (std::size_t start = 0; start < arguments.size(); start += kBlock)
    fill(std::min(kBlock, arguments.size() - start), arguments.data() + start,
         values.data() + start);
}

/// The densities of a block. Where the power form has no finite value, at the ends of a support,
/// the single density answers, as it does where the power form would lose digits.
template <class Law>
void FillDensities(const Law& law, std::size_t n, const double* x, double* densities) {
  if (!law.HasPowerDensity()) {
    for (std::size_t i = 0; i < n; ++i) densities[i] = law.Density(x[i]);
    return;
  }
  const QVMath::QVDenseKernels& kernels = QVMath::QVGetDenseKernels();
  double first[kBlock], second[kBlock], rest[kBlock];
  for (std::size_t i = 0; i < n; ++i) {
    const PowerForm form = law.GetPowerForm(x[i]);
    first[i] = form.first;
    second[i] = form.second;
    rest[i] = form.rest;
  }
  const double firstPower = law.GetFirstPower(), secondPower = law.GetSecondPower();
  if (firstPower != 0.0) {
    kernels.log(n, first, first);
    for (std::size_t i = 0; i < n; ++i) rest[i] += firstPower * first[i];
  }
  if (secondPower != 0.0) {
    kernels.log(n, second, second);
    for (std::size_t i = 0; i < n; ++i) rest[i] += secondPower * second[i];
  }
  kernels.exp(n, rest, densities);
  for (std::size_t i = 0; i < n; ++i)
    if (!std::isfinite(densities[i])) densities[i] = law.Density(x[i]);
}

/// Percentiles of one law between knots at which they are known, by cubic Hermite interpolation.
/// The knots stand at 2^-e (1 + m / 8), m = 0, ..., 7, from either end, as densely in the tails as
/// their curvature asks. A knot is computed when an argument first needs it.
class PercentileKnots {
 public:
  /// About the percentile at p. findKnot(p, x, density) finds one exactly, NaN where there is none.
  template <class FindKnot>
  double Interpolate(double p, FindKnot findKnot) {
    const bool isUpper = p > 0.5;
    const double q = isUpper ? 1.0 - p : p;
    if (!(q >= kLeast)) return std::numeric_limits<double>::quiet_NaN();
    const std::size_t i = std::min(GetIndex(q), kNumKnots - 2);
    const double q0 = GetKnot(i), q1 = GetKnot(i + 1);
    const Knot& a = Get(isUpper, i, q0, findKnot);
    const Knot& b = Get(isUpper, i + 1, q1, findKnot);
    const double h = q1 - q0, u = (q - q0) / h, rise = b.x - a.x;
    const double s0 = h * a.slope - rise, s1 = rise - h * b.slope;
    return a.x + u * (rise + (1.0 - u) * ((1.0 - u) * s0 + u * s1));
  }

 private:
  static constexpr double kLeast = 0x1p-12;
  static constexpr int kShift = 49;  // keeps three digits of the significand
  static constexpr std::size_t kNumKnots = 8 * 11 + 1;

  struct Knot {
    double x, slope;
    bool isKnown = false;
  };

  static std::uint64_t GetBits(double value) {
    std::uint64_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
  }
  static std::size_t GetIndex(double q) {
    return static_cast<std::size_t>((GetBits(q) >> kShift) - (GetBits(kLeast) >> kShift));
  }
  static double GetKnot(std::size_t i) {
    const std::uint64_t bits = ((GetBits(kLeast) >> kShift) + i) << kShift;
    double value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
  }

  template <class FindKnot>
  const Knot& Get(bool isUpper, std::size_t i, double q, FindKnot findKnot) {
    Knot& knot = knots_[isUpper][i];
    if (knot.isKnown) return knot;
    double density;
    findKnot(isUpper ? 1.0 - q : q, knot.x, density);
    knot.slope = (isUpper ? -1.0 : 1.0) / density;
    knot.isKnown = true;
    return knot;
  }

  std::array<std::array<Knot, kNumKnots>, 2> knots_;
};

/// One step from x, where the distribution function is `miss` too large, along the inverse of the
/// distribution function to the third order; NaN when the step is so long that what the fourth
/// order would add could show.
template <class Law>
double CorrectPercentile(const Law& law, double x, double miss, double density) {
  constexpr double kShort = 1e-4;
  const Slope at = law.GetSlope(x);
  const double step = -miss / density;
  const double s = at.n0 / at.d0;                     // f' / f
  const double change = (at.n1 - s * at.d1) / at.d0;  // its derivative
  const bool isShort = std::abs(step) < kShort * at.radius && std::abs(step * s) < kShort &&
                       std::abs(step * step * change) < kShort * kShort;
  if (!isShort) return std::numeric_limits<double>::quiet_NaN();
  return x + step * (1.0 - step * (0.5 * s - step * (2.0 * s * s - change) / 6.0));
}

/// The percentiles of a block: an interpolated start and one step, to the rounding of the
/// distribution function. NaN where this does not do, in the far tails and beyond.
template <class Law, class FindKnot>
void FillPercentiles(const Law& law, PercentileKnots& knots, FindKnot findKnot, std::size_t n,
                     const double* p, double* x) {
  double start[kBlock] = {}, cdf[kBlock] = {}, density[kBlock];
  for (std::size_t i = 0; i < n; ++i) start[i] = knots.Interpolate(p[i], findKnot);
  law.FillCDF(n, start, cdf);
  FillDensities(law, n, start, density);
  for (std::size_t i = 0; i < n; ++i)
    x[i] = CorrectPercentile(law, start[i], cdf[i] - p[i], density[i]);
}

}  // namespace QVLaws
}  // namespace QVStats

#endif  // QVSTATS_PDF_BULK_H
