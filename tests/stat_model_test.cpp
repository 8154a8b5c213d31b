#include "stats/api/stat_model.h"

#include <gmock/gmock.h>

#include "tests/support/matchers.h"

namespace QVStats {
namespace {

using testing::ElementsAre;

std::vector<std::string> Texts(QVSystem::QVIter<const std::string> iter) {
  return {iter.begin(), iter.end()};
}

TEST(StatModelResult, DefaultIsAnUndefinedFailure) {
  EXPECT_EQ(QVStatModelResult().ReportStatResultDetails(),
            "\nResult was not successful: \n"
            "Failed in Undetermined Routine: \n"
            "Failure Reason(s):\n"
            "Failure Type is undefined!\n");
}

TEST(StatModelResult, ReportsTheChainInnermostFirst) {
  QVStatModelResult result(true);
  result.SetFailureTypeAndWhereFailed(QVStatModelFailureType::ColumnNotFound, "Inner");
  result.AddCallContext("Middle");
  result.AddCallContext("Outer");
  result.AddExtraComment("no column x");
  EXPECT_EQ(result.ReportStatResultDetails(),
            "\nResult was not successful: \n"
            "Failed in Routine: Inner \n"
            "Called by Routine: Middle \n"
            "Called by Routine: Outer \n"
            "Failure Reason(s):\n"
            "Column Not Found! \n"
            "Extra Comments:\n"
            "no column x \n");
}

TEST(StatModelResult, ContextWithoutAFailureStartsWithAPlaceholder) {
  QVStatModelResult result;
  result.AddCallContext("X");
  EXPECT_THAT(Texts(result.GetContext()), ElementsAre("Unknown Failure Routine", "X"));
}

TEST(StatModelResult, TypesBeyondTheListAreInvalid) {
  QVStatModelResult result(true);
  result.SetFailureTypeAndWhereFailed(77, "f");
  EXPECT_THAT(result, FailedWith(QVStatModelFailureType::InvalidFailureType, "f"));
  EXPECT_THAT(result.ReportStatResultDetails(),
              testing::HasSubstr("An Invalid Failure type is given!\n"));
}

TEST(StatModelResult, AssigningFalseKeepsAFailureAndClearsASuccess) {
  QVStatModelResult failed(true);
  failed.SetFailureTypeAndWhereFailed(QVStatModelFailureType::NoData, "f");
  failed = false;
  EXPECT_THAT(failed, FailedWith(QVStatModelFailureType::NoData, "f"));

  QVStatModelResult succeeded(true);
  succeeded.AddExtraComment("forgotten");
  EXPECT_EQ(succeeded.ReportStatResultDetails(), "Result is successful!");
  succeeded = false;
  EXPECT_TRUE(succeeded.NotSuccessful());
  EXPECT_TRUE(succeeded.FailTypeIsUndefined());
  EXPECT_THAT(Texts(succeeded.GetComments()), ElementsAre());
}

TEST(StatModelResult, FailContextReplacesTheChainAndKeepsTheTypeOfAFailure) {
  QVStatModelResult result(true);
  result.SetFailureTypeAndWhereFailed(QVStatModelFailureType::NoData, "f");
  result.AddCallContext("g");
  result.SetFailContext("h");
  EXPECT_THAT(result, FailedWith(QVStatModelFailureType::NoData, "h"));
  EXPECT_THAT(Texts(result.GetContext()), ElementsAre("h"));
}

}  // namespace
}  // namespace QVStats
