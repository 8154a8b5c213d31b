#include "platform/system/cast.h"

#include <cmath>
#include <cstdio>
#include <limits>
#include <string>

#include "platform/system/error_handler.h"

namespace QVSystem {

namespace {

constexpr std::int64_t kExactLimit = std::int64_t{1} << 53;
constexpr const char* kBetweenKinds =
    " when performing conversions between integers and floating point types";

std::string FixedText(double value) {
  char text[400];
  std::snprintf(text, sizeof text, "%.12f", value);
  return text;
}

/// Rounds and checks against +-2^53; `greaterBound` and `lessBound` are printed as the bounds.
std::int64_t RoundChecked(double value, const std::string& greaterBound,
                          const std::string& lessBound) {
  const double rounded = QVRoundHalfEven(value);
  const auto limit = static_cast<double>(kExactLimit);
  if (rounded >= -limit && rounded <= limit) return static_cast<std::int64_t>(rounded);
  const bool less = rounded < -limit;
  const std::string text = "(double)" + FixedText(value) +
                           (less ? " is less than the minimum allowed" + lessBound
                                 : " is greater than the maximum allowed" + greaterBound) +
                           kBetweenKinds;
  QVReportFailedAssertion(text, __LINE__, __FILE__);
  return 0;
}

}  // namespace

unsigned int QVUnsignedFromIntChecked(int value) {
  if (value < 0)
    QVReportFailedAssertion(
        "(int)" + std::to_string(value) + " is less than the minimum (unsigned int)0", __LINE__,
        __FILE__);
  return static_cast<unsigned int>(value);
}

int QVIntFromUnsignedChecked(unsigned int value) {
  constexpr int kMax = std::numeric_limits<int>::max();
  if (value > static_cast<unsigned int>(kMax))
    QVReportFailedAssertion("(unsigned int)" + std::to_string(value) +
                                " is greater than the maximum (int)" + std::to_string(kMax),
                            __LINE__, __FILE__);
  return static_cast<int>(value);
}

double QVRoundHalfEven(double value) {
  constexpr double kTwoTo52 = 4503599627370496.0;
  const double magnitude = std::abs(value);
  if (!(magnitude < kTwoTo52)) return value;
  return std::copysign((magnitude + kTwoTo52) - kTwoTo52, value);
}

unsigned int QVUnsignedFromDoubleChecked(double value) {
  return static_cast<unsigned int>(RoundChecked(value, "(unsigned int)0", "(unsigned int)0"));
}

int QVIntFromDoubleChecked(double value) {
  const std::string bound = std::to_string(kExactLimit);
  return static_cast<int>(RoundChecked(value, "(int)" + bound, "(int)-" + bound));
}

unsigned int QVUnsignedFromCountChecked(std::uint64_t count) {
  constexpr unsigned int kMax = std::numeric_limits<unsigned int>::max();
  if (count > kMax)
    QVReportFailedAssertion("(unsigned long)" + std::to_string(count) +
                                " is greater than the maximum (unsigned int)" +
                                std::to_string(kMax),
                            __LINE__, __FILE__);
  return static_cast<unsigned int>(count);
}

double QVDoubleFromCount(std::uint64_t count) {
  if (count > static_cast<std::uint64_t>(kExactLimit))
    QVReportFailedAssertion("(unsigned long)" + std::to_string(count) +
                                " is greater than the maximum allowed(double)" +
                                FixedText(static_cast<double>(kExactLimit)) + kBetweenKinds,
                            __LINE__, __FILE__);
  return static_cast<double>(count);
}

}  // namespace QVSystem
