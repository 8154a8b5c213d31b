/// \file
/// \brief The expectation step of a one-dimensional mixture, fused into one pass over the data.
#ifndef QV_PLATFORM_MATH_INTERNAL_DENSE_MIXTURE_IMPL_H
#define QV_PLATFORM_MATH_INTERNAL_DENSE_MIXTURE_IMPL_H

#include "platform/math/dense_kernels.h"
#include "platform/math/internal/dense_functions_impl.h"

namespace QVMath {
namespace QV_DENSE_NAMESPACE {
namespace {

/// Data that go through the components together, in registers: enough independent exponentials to
/// keep the arithmetic units busy, and each component's sums are then loaded once for them.
constexpr Size kMixtureVectors = 4;
constexpr Size kMixturePoints = kMixtureVectors * kWidth;
static_assert((kMixtureVectors + 3) * kWidth <= kQVMixtureWork, "working memory of a component");

/// Denominators multiplied up before one logarithm is taken of their product. Each is between 1 and
/// the number of components, so that the product cannot overflow.
constexpr Size kMixtureProduct = 16;

/// One pass: the state that a group of data changes.
struct MixturePass {
  const QVMixtureTerms& terms;
  double* shares;  // kMixturePoints for each component
  double* sums;    // three registers for each component
  Vector maxima[kMixtureVectors];
  Vector product;
};

/// Adds one group of data; `mask` is 1 for a datum that counts and 0 for one that fills up.
template <bool masked>
QV_DENSE_INLINE void AddGroup(MixturePass& pass, const double* x, const Vector* mask) {
  const Size numComponents = pass.terms.numComponents;
  Vector data[kMixtureVectors], largest[kMixtureVectors], total[kMixtureVectors];
  for (Size v = 0; v < kMixtureVectors; ++v) {
    data[v] = Load(x + v * kWidth);
    largest[v] = All(-1.7976931348623157e+308);
    total[v] = Vector{};
  }
  double* term = pass.shares;
  for (Size k = 0; k < numComponents; ++k)
    for (Size v = 0; v < kMixtureVectors; ++v, term += kWidth) {
      const Vector d = data[v] - pass.terms.centers[k];
      const Vector value = pass.terms.logScales[k] - (d * pass.terms.halfPrecisions[k]) * d;
      largest[v] = value > largest[v] ? value : largest[v];
      Store(term, value);
    }
  double* share = pass.shares;
  for (Size k = 0; k < numComponents; ++k)
    for (Size v = 0; v < kMixtureVectors; ++v, share += kWidth) {
      const Vector value = ExpOfNegative(Load(share) - largest[v]);
      total[v] += value;
      Store(share, value);
    }
  for (Size v = 0; v < kMixtureVectors; ++v) {
    if (masked) {
      total[v] = mask[v] > 0.0 ? total[v] : All(1.0);
      largest[v] *= mask[v];
    }
    pass.maxima[v] += largest[v];
    pass.product *= total[v];
    total[v] = masked ? mask[v] / total[v] : 1.0 / total[v];
  }
  share = pass.shares;
  double* sums = pass.sums;
  for (Size k = 0; k < numComponents; ++k, sums += 3 * kWidth) {
    Vector count = Load(sums), deviation = Load(sums + kWidth), square = Load(sums + 2 * kWidth);
    for (Size v = 0; v < kMixtureVectors; ++v, share += kWidth) {
      const Vector responsibility = Load(share) * total[v];
      const Vector d = data[v] - pass.terms.centers[k];
      const Vector weighted = responsibility * d;
      count += responsibility;
      deviation += weighted;
      square += weighted * d;
    }
    Store(sums, count);
    Store(sums + kWidth, deviation);
    Store(sums + 2 * kWidth, square);
  }
}

double SumMixture(Size n, const double* x, const QVMixtureTerms& terms, const QVMixtureSums& sums,
                  double* work) {
  const Size numComponents = terms.numComponents;
  MixturePass pass = {terms, work, work + numComponents * kMixturePoints, {}, All(1.0)};
  for (Size i = 0; i < numComponents * 3 * kWidth; ++i) pass.sums[i] = 0.0;
  Vector logs = {};
  Size i = 0, pending = 0;
  for (; i + kMixturePoints <= n; i += kMixturePoints) {
    AddGroup<false>(pass, x + i, nullptr);
    if ((pending += kMixtureVectors) < kMixtureProduct) continue;
    logs += Log(pass.product);
    pass.product = All(1.0);
    pending = 0;
  }
  if (i != n) {
    double rest[kMixturePoints];
    Vector mask[kMixtureVectors] = {};
    for (Size r = 0; r < kMixturePoints; ++r) {
      rest[r] = i + r < n ? x[i + r] : x[n - 1];
      if (i + r < n) mask[r / kWidth][r % kWidth] = 1.0;
    }
    AddGroup<true>(pass, rest, mask);
  }
  logs += Log(pass.product);
  for (Size v = 0; v < kMixtureVectors; ++v) logs += pass.maxima[v];
  for (Size k = 0; k < numComponents; ++k) {
    const double* own = pass.sums + k * 3 * kWidth;
    sums.counts[k] = SumOf(Load(own));
    sums.deviations[k] = SumOf(Load(own + kWidth));
    sums.squares[k] = SumOf(Load(own + 2 * kWidth));
  }
  return SumOf(logs);
}

}  // namespace
}  // namespace QV_DENSE_NAMESPACE
}  // namespace QVMath

#endif  // QV_PLATFORM_MATH_INTERNAL_DENSE_MIXTURE_IMPL_H
