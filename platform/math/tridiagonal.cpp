#include <algorithm>
#include <cmath>

#include "platform/math/dense_kernels.h"

namespace QVMath {

namespace {

/// The square of a rounding error in a matrix whose largest element is 1: an off-diagonal element
/// that small splits the matrix.
constexpr double kNegligible = 1.2e-32;
constexpr std::size_t kMaxSweepsPerValue = 60;

/// The eigenvalue of the leading 2 x 2 block that is nearest to its first element.
double GetShift(double d0, double d1, double squaredE0) {
  const double e = std::sqrt(squaredE0);
  const double half = (d1 - d0) / (2.0 * e);
  return d0 - e / (half + std::copysign(std::hypot(half, 1.0), half));
}

/// One QL sweep over elements first...last, which drives the first off-diagonal element to 0. All
/// rotations are kept as squares of their cosines and sines, so that no root is taken.
void Sweep(std::size_t first, std::size_t last, double* d, double* squaredE) {
  const double shift = GetShift(d[first], d[first + 1], squaredE[first]);
  double cosine = 1.0, sine = 0.0;
  double gamma = d[last] - shift;
  double p = gamma * gamma;
  for (std::size_t i = last; i-- > first;) {
    const double e = squaredE[i];
    const double r = p + e;
    if (i + 1 < last) squaredE[i + 1] = sine * r;
    const double oldCosine = cosine;
    const double oldGamma = gamma;
    cosine = p / r;
    sine = e / r;
    gamma = cosine * (d[i] - shift) - sine * oldGamma;
    d[i + 1] = oldGamma + (d[i] - gamma);
    p = cosine != 0.0 ? gamma * gamma / cosine : oldCosine * e;
  }
  squaredE[first] = sine * p;
  d[first] = shift + gamma;
}

/// The end of the unreduced block that begins at `first`.
std::size_t FindBlockEnd(std::size_t n, std::size_t first, const double* squaredE) {
  std::size_t last = first;
  while (last + 1 < n && squaredE[last] > kNegligible) ++last;
  return last;
}

}  // namespace

bool QVGetTridiagonalEigenvalues(std::size_t n, double* diagonal, double* offDiagonal) {
  if (n == 0) return true;
  double norm = 0.0;
  bool isFinite = true;
  const auto measure = [&](double x) {
    norm = std::max(norm, std::abs(x));
    isFinite = isFinite && std::isfinite(x);
  };
  std::for_each(diagonal, diagonal + n, measure);
  std::for_each(offDiagonal, offDiagonal + (n - 1), measure);
  if (!isFinite) return false;
  if (norm == 0.0) return true;
  for (std::size_t i = 0; i < n; ++i) diagonal[i] /= norm;
  for (std::size_t i = 0; i + 1 < n; ++i) offDiagonal[i] = std::pow(offDiagonal[i] / norm, 2);

  std::size_t sweeps = 0;
  for (std::size_t first = 0; first < n;) {
    const std::size_t last = FindBlockEnd(n, first, offDiagonal);
    if (last == first) {
      ++first;
      continue;
    }
    if (++sweeps > kMaxSweepsPerValue * n) return false;
    Sweep(first, last, diagonal, offDiagonal);
  }
  for (std::size_t i = 0; i < n; ++i) diagonal[i] *= norm;
  std::sort(diagonal, diagonal + n);
  return true;
}

}  // namespace QVMath
