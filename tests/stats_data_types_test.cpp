#include "stats/api/stats_data_types.h"

#include <gmock/gmock.h>

#include <cstring>

#include "platform/system/error_handler.h"

namespace QVStats {
namespace {

using namespace QVStatsBadData;
using QVSystem::QVErrorLevel;
using QVSystem::QVScopedRecordingSink;

std::uint64_t Bits(double value) {
  std::uint64_t bits;
  std::memcpy(&bits, &value, sizeof bits);
  return bits;
}

TEST(StatsDataTypes, DoubleSentinelsAreTheseBits) {
  EXPECT_EQ(Bits(MissingDouble), 0x7FB9999999999999u);
  EXPECT_EQ(Bits(BadDouble), 0x7FEFFFFFFFFFFFFFu);
  EXPECT_EQ(Bits(BadIndexDouble), 0x7F847AE147AE147Au);
}

TEST(StatsDataTypes, PairNamesStandAtFirstTimesFivePlusSecond) {
  EXPECT_EQ(QVStatVarDataType::TwoTypeName[8], "Stat Two Variable Data Type is Unsigned, Double");
  EXPECT_EQ(QVStatVarDataType::TypeName[1], "Stat Variable Data Type is Unsigned Integer");
}

TEST(StatsDataTypes, SentinelsCrossEveryConversion) {
  EXPECT_EQ(QVUnsignedFromInt(MissingInt), MissingUnsigned);
  EXPECT_EQ(QVUnsignedFromInt(BadInt), BadUnsigned);
  EXPECT_EQ(QVIntFromUnsigned(MissingUnsigned), MissingInt);
  EXPECT_EQ(QVIntFromDouble(BadDouble), BadInt);
  EXPECT_EQ(QVDoubleFromUnsigned(BadUnsigned), BadDouble);
  EXPECT_EQ(QVDoubleFromString("MissingIntData"), MissingDouble);
  EXPECT_EQ(QVIntFromString("BadStringData"), BadInt);
  EXPECT_EQ(QVStringFromDouble(MissingDouble), "MissingDoubleData");
  EXPECT_EQ(QVStringFromUnsigned(BadUnsigned), "BadUnsignedData");
}

TEST(StatsDataTypes, OrdinaryValuesConvert) {
  EXPECT_EQ(QVUnsignedFromDouble(2.5), 2u);
  EXPECT_EQ(QVUnsignedFromDouble(3.5), 4u);
  EXPECT_EQ(QVUnsignedFromDouble(-1.0), 4294967295u);
  EXPECT_EQ(QVIntFromDouble(-2.5), -2);
  EXPECT_EQ(QVIntFromString("+12"), 12);
  EXPECT_EQ(QVUnsignedFromString("12x"), BadUnsigned);
  EXPECT_EQ(QVDoubleFromString("abc"), BadDouble);
  EXPECT_EQ(QVStringFromDouble(1234567.0), "1.23457e+06");
  EXPECT_EQ(QVDoubleFromInt(std::vector<int>({1, MissingInt})),
            std::vector<double>({1.0, MissingDouble}));
}

TEST(StatsDataTypes, WhatDoesNotFitIsFatal) {
  QVScopedRecordingSink sink;
  EXPECT_EQ(QVUnsignedFromInt(-5), 4294967291u);
  QVIntFromUnsigned(3000000000u);
  QVUnsignedFromDouble(1e16);
  QVIntFromDouble(-1e16);
  using testing::StartsWith;
  const std::string kinds =
      " when performing conversions between integers and floating point types\n"
      "Assertion failed at line ";
  EXPECT_THAT(
      sink.GetTexts(QVErrorLevel::Fatal),
      testing::ElementsAre(
          StartsWith("(int)-5 is less than the minimum (unsigned int)0\nAssertion failed at line "),
          StartsWith("(unsigned int)3000000000 is greater than the maximum (int)2147483647\n"),
          StartsWith("(double)10000000000000000.000000000000 is greater than the maximum "
                     "allowed(unsigned int)0" +
                     kinds),
          StartsWith("(double)-10000000000000000.000000000000 is less than the minimum "
                     "allowed(int)-9007199254740992" +
                     kinds)));
}

}  // namespace
}  // namespace QVStats
