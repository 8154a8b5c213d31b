#include "platform/system/text.h"

#include <algorithm>
#include <charconv>
#include <cstdarg>
#include <cstdio>

namespace QVSystem {

namespace {

template <class Number>
bool Parse(std::string_view text, Number& value) {
  text = QVStripWhiteSpace(text);
  if (!text.empty() && text.front() == '+') {
    text.remove_prefix(1);
    if (!text.empty() && text.front() == '-') return false;
  }
  Number parsed{};
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, parsed);
  if (error != std::errc() || stop != end) return false;
  value = parsed;
  return true;
}

template <class Change>
std::string ChangeEach(std::string_view text, Change change) {
  std::string changed(text);
  std::transform(changed.begin(), changed.end(), changed.begin(), change);
  return changed;
}

}  // namespace

bool QVStringToNumber(std::string_view text, double& value) { return Parse(text, value); }
bool QVStringToNumber(std::string_view text, float& value) { return Parse(text, value); }
bool QVStringToNumber(std::string_view text, int& value) { return Parse(text, value); }
bool QVStringToNumber(std::string_view text, unsigned int& value) { return Parse(text, value); }
bool QVStringToNumber(std::string_view text, unsigned long& value) { return Parse(text, value); }

std::string QVNumberToString(double value) {
  char text[32];
  const auto result = std::to_chars(text, text + sizeof text, value);
  return std::string(text, result.ptr);
}

std::string QVNumberToString(double value, unsigned int digits) {
  // At most a sign, the digits, a point, four zeros before them or an exponent.
  std::string text(digits + 16, '\0');
  const auto result = std::to_chars(text.data(), text.data() + text.size(), value,
                                    std::chars_format::general, static_cast<int>(digits));
  text.resize(static_cast<std::size_t>(result.ptr - text.data()));
  return text;
}

std::string QVFormat(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  std::va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, again);
  va_end(again);
  std::string text(length < 0 ? 1 : static_cast<std::size_t>(length) + 1, '\0');
  std::vsnprintf(text.data(), text.size(), format, arguments);
  va_end(arguments);
  text.pop_back();
  return text;
}

std::vector<std::string> QVStringTokenize(std::string_view text, std::string_view delimiters,
                                          bool dropEmpty) {
  std::vector<std::string> tokens;
  if (!dropEmpty) {
    for (std::size_t from = 0; from <= text.size();) {
      const std::size_t to = std::min(text.find_first_of(delimiters, from), text.size());
      tokens.emplace_back(text.substr(from, to - from));
      from = to + 1;
    }
    return tokens;
  }
  std::size_t start = text.find_first_not_of(delimiters);
  while (start != std::string_view::npos) {
    const std::size_t end = std::min(text.find_first_of(delimiters, start), text.size());
    tokens.emplace_back(text.substr(start, end - start));
    start = text.find_first_not_of(delimiters, end);
  }
  return tokens;
}

std::vector<std::string> QVStringTokenizeQuoted(std::string_view text, std::string_view delimiters,
                                                std::string_view quotes) {
  std::vector<std::string> tokens;
  std::size_t start = text.find_first_not_of(delimiters);
  while (start != std::string_view::npos) {
    const char first = text[start];
    const bool quoted = quotes.find(first) != std::string_view::npos;
    const std::size_t from = quoted ? start + 1 : start;
    const std::size_t end = std::min(
        quoted ? text.find(first, from) : text.find_first_of(delimiters, from), text.size());
    tokens.emplace_back(text.substr(from, end - from));
    start = text.find_first_not_of(delimiters, std::min(quoted ? end + 1 : end, text.size()));
  }
  return tokens;
}

std::string_view QVStripWhiteSpace(std::string_view text) {
  const std::size_t first = text.find_first_not_of(QVWhiteSpace);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(QVWhiteSpace) - first + 1);
}

std::string QVToUpper(std::string_view text) {
  return ChangeEach(text,
                    [](char c) { return 'a' <= c && c <= 'z' ? static_cast<char>(c - 32) : c; });
}

std::string QVToLower(std::string_view text) {
  return ChangeEach(text,
                    [](char c) { return 'A' <= c && c <= 'Z' ? static_cast<char>(c + 32) : c; });
}

}  // namespace QVSystem
