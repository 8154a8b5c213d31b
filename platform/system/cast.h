/// \file
/// \brief Conversions between number types that report what does not fit.
#ifndef QV_PLATFORM_SYSTEM_CAST_H
#define QV_PLATFORM_SYSTEM_CAST_H

#include <cstdint>

#include "platform/system/export.h"

namespace QVSystem {

/// Conversions between 32-bit integers. A value that does not fit is a fatal report, "(int)-5 is
/// less than the minimum (unsigned int)0" or "(unsigned int)3000000000 is greater than the maximum
/// (int)2147483647", followed by the assertion line; the value is then converted modulo 2^32.
QVSYSTEM_EXPORT unsigned int QVUnsignedFromIntChecked(int value);
QVSYSTEM_EXPORT int QVIntFromUnsignedChecked(unsigned int value);

/// Rounds to the nearest integer, ties to even.
QVSYSTEM_EXPORT double QVRoundHalfEven(double value);

/// Rounds (ties to even) and converts; integers of a magnitude up to 2^53 are exact in a double,
/// anything beyond (or not a number) is a fatal report "(double)<value> is greater than the maximum
/// allowed(unsigned int)0 when performing conversions between integers and floating point types"
/// (below: "is less than the minimum allowed"; to int: the bound is printed) and converts to 0.
/// The result is the low 32 bits of the rounded value, so a negative value wraps.
QVSYSTEM_EXPORT unsigned int QVUnsignedFromDoubleChecked(double value);
QVSYSTEM_EXPORT int QVIntFromDoubleChecked(double value);

/// A count as 32 bits. A larger one is a fatal report, "(unsigned long)5000000000 is greater than
/// the maximum (unsigned int)4294967295", and converts modulo 2^32.
QVSYSTEM_EXPORT unsigned int QVUnsignedFromCountChecked(std::uint64_t count);

/// A count as a double. A count beyond 2^53 is a fatal report like those above.
QVSYSTEM_EXPORT double QVDoubleFromCount(std::uint64_t count);

}  // namespace QVSystem

#endif  // QV_PLATFORM_SYSTEM_CAST_H
