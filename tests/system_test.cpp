#include <gmock/gmock.h>

#include <map>

#include "platform/system/cast.h"
#include "platform/system/error_handler.h"
#include "platform/system/iter.h"
#include "platform/system/text.h"

namespace QVSystem {
namespace {

using testing::ElementsAre;

TEST(ErrorHandler, FormatsAndGoesToTheSinkInForce) {
  QVScopedRecordingSink outer;
  {
    QVScopedRecordingSink inner;
    QVThrow.Warning("%s is %d", "answer", 42);
    EXPECT_THAT(inner.GetTexts(QVErrorLevel::Warning), ElementsAre("answer is 42"));
  }
  QVThrow.Error("after");
  EXPECT_THAT(outer.GetTexts(QVErrorLevel::Error), ElementsAre("after"));
  EXPECT_EQ(outer.GetRecords().size(), 1u);
}

TEST(ErrorHandler, AssertionNamesTheFileFromTheSourceRoot) {
  QVScopedRecordingSink sink;
  EXPECT_TRUE(QV_ASSERT(1 < 2));
  EXPECT_FALSE(QVReportFailedAssertion(7, "/somewhere/build/../stats/krige.cpp"));
  EXPECT_FALSE(QVReportFailedAssertion("why", 8, "/stats/lib/platform/chem/mol.cpp"));
  EXPECT_THAT(sink.GetTexts(QVErrorLevel::Fatal),
              ElementsAre("Assertion failed at line 7 of stats/krige.cpp.\n",
                          "why\nAssertion failed at line 8 of platform/chem/mol.cpp.\n"));
}

TEST(ErrorHandlerDeathTest, FatalEndsTheProcessByDefault) {
  EXPECT_DEATH(QVThrow.Fatal("no way on"), "Fatal: no way on");
}

TEST(Text, NumbersAreWholeTexts) {
  double value = -1.0;
  EXPECT_TRUE(QVStringToNumber(" +7.25e-1\t", value));
  EXPECT_EQ(value, 0.725);
  for (const char* text : {"", " ", "7.2x", "+-1", "--1", "1,5", "0x10"})
    EXPECT_FALSE(QVStringToNumber(text, value)) << text;
  EXPECT_EQ(value, 0.725);
  unsigned int count = 0;
  EXPECT_FALSE(QVStringToNumber("4294967296", count));
  EXPECT_FALSE(QVStringToNumber("-1", count));
  EXPECT_TRUE(QVStringToNumber("4294967295", count));
  EXPECT_EQ(count, 4294967295u);
}

TEST(Text, TokensAreNeverEmptyAndQuotesHoldDelimiters) {
  EXPECT_THAT(QVStringTokenize("a,,b, c", ","), ElementsAre("a", "b", " c"));
  EXPECT_THAT(QVStringTokenize("  "), ElementsAre());
  EXPECT_THAT(QVStringTokenizeQuoted("x 'a b' \"c'd\" 'open end"),
              ElementsAre("x", "a b", "c'd", "open end"));
}

TEST(Cast, RoundsHalfToEvenAtEverySize) {
  const std::map<double, double> cases = {
      {0.5, 0.0}, {1.5, 2.0}, {-2.5, -2.0}, {4503599627370497.0, 4503599627370497.0}};
  for (const auto& [value, rounded] : cases) EXPECT_EQ(QVRoundHalfEven(value), rounded) << value;
}

struct IsEven : QVUnaryPredicate<int> {
  bool operator()(const int& value) const override { return value % 2 == 0; }
  IsEven* CreateCopy() const override { return new IsEven(*this); }
};

TEST(Iter, StepsThroughRangesAndFilteredRanges) {
  const std::vector<int> values = {1, 2, 3, 4, 6, 7};
  const QVIter<const int> all = QVMakeIter<const int>(values);
  EXPECT_EQ(std::vector<int>(all.begin(), all.end()), values);
  const QVIter<const int> even(new QVPredIter<const int>(all, IsEven()));
  EXPECT_THAT(std::vector<int>(even.begin(), even.end()), ElementsAre(2, 4, 6));
  EXPECT_FALSE(QVIter<int>());
}

TEST(Iter, SharedRangeKeepsItsContainerAlive) {
  auto values = std::make_shared<std::vector<int>>(3, 5);
  QVIter<int> iter = QVMakeSharedIter<int>(values);
  values.reset();
  int sum = 0;
  for (const int value : iter) sum += value;
  EXPECT_EQ(sum, 15);
}

}  // namespace
}  // namespace QVSystem
