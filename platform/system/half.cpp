#include "platform/system/half.h"

#include <cmath>
#include <limits>

namespace QVPlatform {

namespace {

constexpr int kMantissaBits = 10;
constexpr int kSmallestNormalExponent = -14;
constexpr double kInfiniteFrom = 65520.0;  // halfway between the largest number and 2^16
constexpr unsigned int kInfinity = 0x7C00;
constexpr unsigned int kQuietNaN = 0x7E00;

/// The bits of a magnitude: exponent and mantissa, no sign.
unsigned int MagnitudeBits(double magnitude) {
  if (QVIsNaN(magnitude)) return kQuietNaN;
  if (magnitude >= kInfiniteFrom) return kInfinity;
  if (magnitude == 0.0) return 0;
  int exponent = std::ilogb(magnitude);
  if (exponent < kSmallestNormalExponent) exponent = kSmallestNormalExponent;
  // nearbyint rounds ties to even; the steps count in units of the last place.
  const auto steps =
      static_cast<unsigned int>(std::nearbyint(std::ldexp(magnitude, kMantissaBits - exponent)));
  // A subnormal has fewer steps than the implicit bit; a carry moves on to the next exponent.
  return steps + (static_cast<unsigned int>(exponent - kSmallestNormalExponent) << kMantissaBits);
}

}  // namespace

bool QVIsNaN(double value) { return std::isnan(value); }
bool QVIsNaN(float value) { return std::isnan(value); }

QVFloat16::QVFloat16(double value)
    : bits_(static_cast<std::uint16_t>(MagnitudeBits(std::fabs(value)) |
                                       (std::signbit(value) ? 0x8000u : 0u))) {}

QVFloat16::QVFloat16(float value) : QVFloat16(static_cast<double>(value)) {}

QVFloat16::operator float() const {
  const int exponent = (bits_ >> kMantissaBits) & 0x1F;
  const int mantissa = bits_ & 0x3FF;
  float magnitude = 0.0F;
  if (exponent == 0x1F) {
    magnitude = mantissa == 0 ? std::numeric_limits<float>::infinity()
                              : std::numeric_limits<float>::quiet_NaN();
  } else {
    const int steps = exponent == 0 ? mantissa : mantissa + (1 << kMantissaBits);
    const int scale = exponent == 0 ? 1 : exponent;
    magnitude =
        std::ldexp(static_cast<float>(steps), scale - 1 + kSmallestNormalExponent - kMantissaBits);
  }
  return (bits_ & 0x8000) != 0 ? -magnitude : magnitude;
}

QVFloat16 QVFloat16::FromBits(std::uint16_t bits) {
  QVFloat16 result;
  result.bits_ = bits;
  return result;
}

}  // namespace QVPlatform
