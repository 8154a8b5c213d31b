/// \file
/// \brief Text: numbers to and from it, pieces of it, its case and its blanks.
///
/// All of it works on bytes and ignores the locale.
#ifndef QV_PLATFORM_SYSTEM_TEXT_H
#define QV_PLATFORM_SYSTEM_TEXT_H

#include <string>
#include <string_view>
#include <vector>

#include "platform/system/export.h"

namespace QVSystem {

/// Reads a number, base 10, from the whole text: blanks around it and a leading '+' are allowed,
/// anything else beside it is not. "inf" and "nan" are numbers for a double or a float.
/// \return whether the text is such a number and fits the type; if not, `value` is unchanged.
QVSYSTEM_EXPORT bool QVStringToNumber(std::string_view text, double& value);
QVSYSTEM_EXPORT bool QVStringToNumber(std::string_view text, float& value);
QVSYSTEM_EXPORT bool QVStringToNumber(std::string_view text, int& value);
QVSYSTEM_EXPORT bool QVStringToNumber(std::string_view text, unsigned int& value);
QVSYSTEM_EXPORT bool QVStringToNumber(std::string_view text, unsigned long& value);

/// The shortest text that reads back as the same number.
QVSYSTEM_EXPORT std::string QVNumberToString(double value);

/// What "%.<digits>g" prints: `digits` significant figures.
QVSYSTEM_EXPORT std::string QVNumberToString(double value, unsigned int digits);

/// Formats like printf.
QVSYSTEM_EXPORT std::string QVFormat(const char* format, ...) __attribute__((format(printf, 1, 2)));

constexpr const char* QVWhiteSpace = " \t\r\n\f\v";

/// The pieces of a text between runs of delimiters; no piece is empty. With `dropEmpty` false every
/// delimiter ends a piece, so that "a,,b," has four pieces, the second and the last one empty.
QVSYSTEM_EXPORT std::vector<std::string> QVStringTokenize(
    std::string_view text, std::string_view delimiters = QVWhiteSpace, bool dropEmpty = true);

/// The pieces between runs of delimiters, but a piece that begins with one of the quotes runs to
/// the matching quote, delimiters included; the quotes are dropped. A quote that is not closed runs
/// to the end of the text.
QVSYSTEM_EXPORT std::vector<std::string> QVStringTokenizeQuoted(
    std::string_view text, std::string_view delimiters = QVWhiteSpace,
    std::string_view quotes = "'\"");

/// The text without white space at its two ends.
QVSYSTEM_EXPORT std::string_view QVStripWhiteSpace(std::string_view text);

/// ASCII letters in upper or lower case, other bytes unchanged.
QVSYSTEM_EXPORT std::string QVToUpper(std::string_view text);
QVSYSTEM_EXPORT std::string QVToLower(std::string_view text);

}  // namespace QVSystem

#endif  // QV_PLATFORM_SYSTEM_TEXT_H
