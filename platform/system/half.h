/// \file
/// \brief Half-precision floating point (IEEE 754 binary16), a storage type.
#ifndef QV_PLATFORM_SYSTEM_HALF_H
#define QV_PLATFORM_SYSTEM_HALF_H

#include <cstdint>

#include "platform/system/export.h"

namespace QVPlatform {

/// Whether a value is not a number.
QVSYSTEM_EXPORT bool QVIsNaN(double value);
QVSYSTEM_EXPORT bool QVIsNaN(float value);

/// A number in 16 bits: 11 significant bits, largest finite value 65504, smallest positive value
/// 2^-24. It is stored in this type and computed with as a float.
class QVSYSTEM_EXPORT QVFloat16 {
 public:
  constexpr QVFloat16() = default;
  /// Rounds to the nearest number, ties to even; 65520 and beyond become infinite, and what is not
  /// a number stays so.
  explicit QVFloat16(float value);
  /// Rounds once, from the double.
  explicit QVFloat16(double value);

  /// Exact.
  operator float() const;

  std::uint16_t GetBits() const { return bits_; }
  static QVFloat16 FromBits(std::uint16_t bits);

 private:
  std::uint16_t bits_ = 0;
};

}  // namespace QVPlatform

#endif  // QV_PLATFORM_SYSTEM_HALF_H
