/// \file
/// \brief The numbers of the user's files: which of them models are made of.
#ifndef QVSTATS_APPS_NUMBER_FIELD_H
#define QVSTATS_APPS_NUMBER_FIELD_H

#include <string>
#include <string_view>
#include <vector>

namespace QVApps {

/// Where the numbers end that models are made of: the squares of their squares are finite too.
constexpr double kLargestValue = 1e70;

/// What a message says of a number that no model can be made of: "is not a finite number" or
/// "is beyond 1e+70". Empty for all others.
std::string FindFault(double value);

/// Reads the number of a field.
/// \return FindFault of it; for other text that it is not a finite number.
std::string ReadNumber(std::string_view text, double& value);

/// Throws Failure when the numbers of a column differ, but by so little that their squares vanish.
void RequireSpan(const std::vector<double>& values, const std::string& file,
                 const std::string& column);

/// A field as messages show it: no more than its first 60 bytes.
std::string Shorten(const std::string& field);

}  // namespace QVApps

#endif  // QVSTATS_APPS_NUMBER_FIELD_H
