#include "stats/api/stats_data_types.h"

#include <sstream>

#include "platform/system/cast.h"
#include "platform/system/text.h"

namespace QVStats {

namespace {

using namespace QVStatsBadData;

/// The sentinels of a storage type and their names.
template <class T>
struct Sentinels;
template <>
struct Sentinels<unsigned int> {
  static constexpr unsigned int kMissing = MissingUnsigned, kBad = BadUnsigned;
  static const std::string& MissingName() { return MissingUnsignedName; }
  static const std::string& BadName() { return BadUnsignedName; }
};
template <>
struct Sentinels<int> {
  static constexpr int kMissing = MissingInt, kBad = BadInt;
  static const std::string& MissingName() { return MissingIntName; }
  static const std::string& BadName() { return BadIntName; }
};
template <>
struct Sentinels<double> {
  static constexpr double kMissing = MissingDouble, kBad = BadDouble;
  static const std::string& MissingName() { return MissingDoubleName; }
  static const std::string& BadName() { return BadDoubleName; }
};

/// Carries sentinels across and converts everything else.
template <class Target, class Source, class Convert>
Target FromNumber(Source value, Convert convert) {
  if (value == Sentinels<Source>::kMissing) return Sentinels<Target>::kMissing;
  if (value == Sentinels<Source>::kBad) return Sentinels<Target>::kBad;
  return convert(value);
}

bool IsOneOf(const std::string& text, const std::string& a, const std::string& b,
             const std::string& c, const std::string& d) {
  return text == a || text == b || text == c || text == d;
}

template <class Target>
Target FromText(const std::string& text) {
  if (IsOneOf(text, MissingUnsignedName, MissingIntName, MissingDoubleName, MissingString))
    return Sentinels<Target>::kMissing;
  Target value = Sentinels<Target>::kBad;
  if (IsOneOf(text, BadUnsignedName, BadIntName, BadDoubleName, BadString)) return value;
  QVSystem::QVStringToNumber(text, value);
  return value;
}

template <class Source>
std::string ToText(Source value) {
  if (value == Sentinels<Source>::kMissing) return Sentinels<Source>::MissingName();
  if (value == Sentinels<Source>::kBad) return Sentinels<Source>::BadName();
  std::ostringstream text;
  text << value;
  return text.str();
}

template <class Target, class Source>
std::vector<Target> ForEach(Target (*convert)(Source),
                            const std::vector<std::decay_t<Source>>& values) {
  std::vector<Target> converted;
  converted.reserve(values.size());
  for (const auto& value : values) converted.push_back(convert(value));
  return converted;
}

}  // namespace

unsigned int QVUnsignedFromInt(int value) {
  return FromNumber<unsigned int>(value, QVSystem::QVUnsignedFromIntChecked);
}
unsigned int QVUnsignedFromDouble(double value) {
  return FromNumber<unsigned int>(value, QVSystem::QVUnsignedFromDoubleChecked);
}
unsigned int QVUnsignedFromString(const std::string& text) { return FromText<unsigned int>(text); }
int QVIntFromUnsigned(unsigned int value) {
  return FromNumber<int>(value, QVSystem::QVIntFromUnsignedChecked);
}
int QVIntFromDouble(double value) {
  return FromNumber<int>(value, QVSystem::QVIntFromDoubleChecked);
}
int QVIntFromString(const std::string& text) { return FromText<int>(text); }
double QVDoubleFromUnsigned(unsigned int value) {
  return FromNumber<double>(value, [](unsigned int v) { return static_cast<double>(v); });
}
double QVDoubleFromInt(int value) {
  return FromNumber<double>(value, [](int v) { return static_cast<double>(v); });
}
double QVDoubleFromString(const std::string& text) { return FromText<double>(text); }
std::string QVStringFromUnsigned(unsigned int value) { return ToText(value); }
std::string QVStringFromInt(int value) { return ToText(value); }
std::string QVStringFromDouble(double value) { return ToText(value); }

std::vector<unsigned int> QVUnsignedFromInt(const std::vector<int>& values) {
  return ForEach<unsigned int, int>(QVUnsignedFromInt, values);
}
std::vector<unsigned int> QVUnsignedFromDouble(const std::vector<double>& values) {
  return ForEach<unsigned int, double>(QVUnsignedFromDouble, values);
}
std::vector<unsigned int> QVUnsignedFromString(const std::vector<std::string>& texts) {
  return ForEach<unsigned int, const std::string&>(QVUnsignedFromString, texts);
}
std::vector<int> QVIntFromUnsigned(const std::vector<unsigned int>& values) {
  return ForEach<int, unsigned int>(QVIntFromUnsigned, values);
}
std::vector<int> QVIntFromDouble(const std::vector<double>& values) {
  return ForEach<int, double>(QVIntFromDouble, values);
}
std::vector<int> QVIntFromString(const std::vector<std::string>& texts) {
  return ForEach<int, const std::string&>(QVIntFromString, texts);
}
std::vector<double> QVDoubleFromUnsigned(const std::vector<unsigned int>& values) {
  return ForEach<double, unsigned int>(QVDoubleFromUnsigned, values);
}
std::vector<double> QVDoubleFromInt(const std::vector<int>& values) {
  return ForEach<double, int>(QVDoubleFromInt, values);
}
std::vector<double> QVDoubleFromString(const std::vector<std::string>& texts) {
  return ForEach<double, const std::string&>(QVDoubleFromString, texts);
}
std::vector<std::string> QVStringFromUnsigned(const std::vector<unsigned int>& values) {
  return ForEach<std::string, unsigned int>(QVStringFromUnsigned, values);
}
std::vector<std::string> QVStringFromInt(const std::vector<int>& values) {
  return ForEach<std::string, int>(QVStringFromInt, values);
}
std::vector<std::string> QVStringFromDouble(const std::vector<double>& values) {
  return ForEach<std::string, double>(QVStringFromDouble, values);
}

}  // namespace QVStats
