#include "apps/number_field.h"

#include <algorithm>
#include <cmath>

#include "apps/commands.h"
#include "platform/system/text.h"

namespace QVApps {

std::string FindFault(double value) {
  if (!std::isfinite(value)) return "is not a finite number";
  return std::abs(value) > kLargestValue ? QVSystem::QVFormat("is beyond %g", kLargestValue) : "";
}

std::string ReadNumber(std::string_view text, double& value) {
  return FindFault(QVSystem::QVStringToNumber(text, value) ? value : std::nan(""));
}

void RequireSpan(const std::vector<double>& values, const std::string& file,
                 const std::string& column) {
  if (values.empty()) return;
  const auto [least, most] = std::minmax_element(values.begin(), values.end());
  const double span = *most - *least;
  if (span > 0.0 && span * kLargestValue < 1.0)
    throw Failure(file + ": the numbers in the column '" + column + "' differ by no more than " +
                  QVSystem::QVFormat("%g", span) +
                  ", so that their squares vanish; give them in a larger unit");
}

std::string Shorten(const std::string& field) {
  std::size_t size = 60;
  if (field.size() <= size) return field;
  while (size > 0 && (static_cast<unsigned char>(field[size]) & 0xC0u) == 0x80u) --size;  // UTF-8
  return field.substr(0, size) + "...";
}

}  // namespace QVApps
