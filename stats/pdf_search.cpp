#include "stats/pdf_search.h"

#include <array>

#include "stats/pdf_law_impl.h"

namespace QVStats {
namespace QVLaws {

namespace {

constexpr int kMaxStepTerms = 24;

constexpr std::array<double, kMaxStepTerms + 2> MakeReciprocals() {
  std::array<double, kMaxStepTerms + 2> values{};
  for (std::size_t k = 1; k < values.size(); ++k) values[k] = 1.0 / static_cast<double>(k);
  return values;
}
constexpr auto kReciprocals = MakeReciprocals();

}  // namespace

bool StepAlong(const Slope& slope, double step, double& cdf, double& density) {
  constexpr double kShortStep = 0.15, kNegligible = 0x1p-54;
  if (!(std::abs(step) < kShortStep * slope.radius)) return false;
  const double scaled = step / slope.d0;
  const double n1 = slope.n1 * step, d2 = slope.d2 * step;
  double before = 0.0, term = density;  // c_(k-1) step^(k-1) and c_k step^k
  double newDensity = density, change = density;
  for (int k = 0; k < kMaxStepTerms; ++k) {
    const auto n = static_cast<std::size_t>(k) + 1;
    const double next = scaled * kReciprocals[n] *
                        ((slope.n0 - k * slope.d1) * term + (n1 - (k - 1) * d2) * before);
    before = term;
    term = next;
    newDensity += term;
    change += term * kReciprocals[n + 1];
    const double rest = std::abs(term) + std::abs(before);
    if (rest > 4.0 * (density + std::abs(newDensity))) return false;  // digits would cancel
    const double newCdf = cdf + step * change;
    if (rest <= kNegligible * newDensity && std::abs(step) * rest <= kNegligible * newCdf) {
      if (newCdf < 0.5 * cdf || newDensity < 0.25 * density) return false;
      cdf = newCdf;
      density = newDensity;
      return true;
    }
  }
  return false;
}

}  // namespace QVLaws
}  // namespace QVStats
