#include "stats/api/krige_result.h"

#include <gmock/gmock.h>

#include <limits>

#include "stats/api/private/krige_result_impl.h"
#include "tests/support/krige_support.h"
#include "tests/support/matchers.h"

namespace QVStats {
namespace {

using QVKrigeTest::MakeKernel;
using QVKrigeTest::Texts;
using QVSystem::QVErrorLevel;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr double kMax = std::numeric_limits<double>::max();

/// Two points: one element with id 7, and three copies of another.
QVKrigeResultImpl MakeResult() {
  QVKrigeResultImpl result;
  result.AddElement(0.5, 0.75, 4.0, false, 7, true);
  result.AddElement(1.0, 0.25, 8.0, true, 4294967295u, false);
  for (unsigned int copy = 0; copy < 3; ++copy)
    result.PushCopyData(1, 8.0 + copy, copy > 0, copy, copy == 2);
  result.SetBaselineResponse(2.0);
  result.SetKernel(MakeKernel(QVKrigeKernelType::Linear, 2.0, 3.0, 1.0));
  return result;
}

TEST(KrigeResult, AnswersFromElementsAndCopies) {
  const QVKrigeResultImpl result = MakeResult();
  const auto errors = Texts(QVErrorLevel::Error, [&] {
    EXPECT_EQ(result.GetNumCopies(0), 1u);
    EXPECT_FALSE(result.GetHasMultipleCopies(0));
    EXPECT_EQ(result.GetResponse(0, 0), 4.0);
    EXPECT_EQ(result.GetID(0, 0), 7u);
    EXPECT_EQ(QVKrigeResult(result).GetNumCopies(1), 3.0);
    EXPECT_TRUE(result.GetHasMultipleCopies(1));
    EXPECT_EQ(result.GetResponse(1, 2), 10.0);
    EXPECT_TRUE(result.GetResponseIsUnmeasured(1, 1));
    EXPECT_FALSE(result.GetHasID(1, 0));
    EXPECT_EQ(result.GetID(1, 2), 2u);
    // The check of the copy index admits one past the end.
    EXPECT_EQ(result.GetResponse(1, 3), kMax);
  });
  EXPECT_THAT(errors, IsEmpty());
}

// 2 + 0.75 * 4 + 0.25 * 8; covariances are 3 - (1 + 2 h / 2) = 1.5 and 1.
TEST(KrigeResult, GivesResponseAndVariance) {
  const QVKrigeResultImpl result = MakeResult();
  EXPECT_EQ(QVCalculateResponse(result, -1.0), 7.0);
  EXPECT_EQ(QVCalculateVariance(result, -1.0), 3.0 - 0.75 * 1.5 - 0.25 * 1.0);
}

TEST(KrigeResult, NegativeVarianceIsTheErrorValue) {
  QVKrigeResultImpl result = MakeResult();
  result.AddElement(0.0, 100.0, 0.0, false, 0, true);
  EXPECT_EQ(QVCalculateVariance(result, -1.0), -1.0);
  EXPECT_EQ(QVCalculateResponse(result, -1.0), 7.0);
}

// A nugget above the sill gives covariances that are really negative.
TEST(KrigeResult, NegativeCovarianceIsFatalButRoundingIsNot) {
  QVKrigeResultImpl result = MakeResult();
  result.SetKernel(MakeKernel(QVKrigeKernelType::Linear, 2.0, 1.0, 3.0));
  EXPECT_THAT(Texts(QVErrorLevel::Fatal, [&] { QVCalculateVariance(result, -1.0); }),
              testing::Not(IsEmpty()));

  // n + (s - n) exceeds s by one unit for this pair.
  const double sill = 0.3, nugget = 0.1;
  result.SetKernel(MakeKernel(QVKrigeKernelType::Linear, 1.0, sill, nugget));
  EXPECT_THAT(Texts(QVErrorLevel::Fatal, [&] { QVCalculateVariance(result, -1.0); }), IsEmpty());
}

TEST(KrigeResult, AnEmptyOneIsInvalid) {
  const QVKrigeResult empty;
  EXPECT_FALSE(empty.Valid());
  EXPECT_EQ(QVCalculateResponse(empty, 7.0), 7.0);
  EXPECT_EQ(QVCalculateVariance(empty, 7.0), 7.0);
  EXPECT_THAT(Texts(QVErrorLevel::Error, [&] { EXPECT_EQ(empty.GetKernel().GetName(), "Linear"); }),
              ElementsAre("QVKrigeResultImpl::GetKernel().  Result is not valid"));
}

TEST(KrigeResult, NamesTheGetterOfAnInvalidIndex) {
  QVKrigeResultImpl result = MakeResult();
  EXPECT_THAT(Texts(QVErrorLevel::Error,
                    [&] {
                      EXPECT_EQ(result.GetDistance(2), kMax);
                      EXPECT_EQ(result.GetWeight(2), kMax);
                      EXPECT_EQ(result.GetResponse(2), kMax);
                      EXPECT_TRUE(result.GetResponseIsUnmeasured(2));
                      EXPECT_TRUE(result.GetHasID(2));
                      EXPECT_EQ(result.GetID(2), 4294967295u);
                      EXPECT_FALSE(result.GetHasMultipleCopies(2));
                      EXPECT_EQ(result.GetNumCopies(2), 0u);
                    }),
              ElementsAre("QVKrigeResultImpl::GetDistance(2).  Invalid element",
                          "QVKrigeResultImpl::GetWeight(2).  Invalid element",
                          "QVKrigeResultImpl::GetResponse(2).  Invalid element",
                          "QVKrigeResultImpl::GetResponseIsUnmeasured(2).  Invalid element",
                          "QVKrigeResultImpl::GetHasID(2).  Invalid element",
                          "QVKrigeResultImpl::GetID(2).  Invalid element",
                          "QVKrigeResultImpl::GetHasMultipleCopies(2).  Invalid element",
                          "QVKrigeResultImpl::GetNumCopies(2).  Invalid element"));
  EXPECT_THAT(Texts(QVErrorLevel::Error,
                    [&] {
                      EXPECT_EQ(result.GetResponse(0, 1), kMax);
                      EXPECT_TRUE(result.GetResponseIsUnmeasured(2, 0));
                      EXPECT_FALSE(result.GetHasID(1, 4));
                      EXPECT_EQ(result.GetID(2, 0), 4294967295u);
                    }),
              ElementsAre("QVKrigeResultImpl::GetResponse(0,1), invalid copy key",
                          "QVKrigeResultImpl::GetResponseIsUnmeasured(2,0), invalid element",
                          "QVKrigeResultImpl::GetHasID(1,4), invalid copy",
                          "QVKrigeResultImpl::GetID(2,0), invalid element"));
  QVKrigeResultImpl bare;
  bare.AddElement(0.0, 1.0, 5.0, false, 0, false);
  EXPECT_THAT(Texts(QVErrorLevel::Error, [&] { bare.GetKernel(); }),
              ElementsAre("QVKrigeResultImpl::GetKernel().  No kernel"));
}

TEST(KrigeResult, NaNIsFatal) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  QVKrigeResultImpl result;
  EXPECT_THAT(Texts(QVErrorLevel::Fatal,
                    [&] {
                      result.AddElement(0.0, nan, 1.0, false, 0, false);
                      result.SetBaselineResponse(nan);
                      result.PushCopyData(0, nan, false, 0, false);
                      EXPECT_EQ(QVCalculateResponse(MakeResult(), nan), 7.0);
                    }),
              testing::SizeIs(4));
}

TEST(KrigeResult, CopiesShareUntilOneChanges) {
  const QVKrigeResultImpl original = MakeResult();
  QVKrigeResultImpl changed = original;
  changed.AddElement(2.0, 1.0, 9.0, false, 1, true);
  EXPECT_FALSE(changed.PushCopyData(9, 1.0, false, 0, false));
  EXPECT_EQ(original.GetNumElements(), 2u);
  EXPECT_EQ(changed.GetResponse(2), 9.0);
  changed.Clear();
  EXPECT_FALSE(changed.Valid());
  EXPECT_EQ(original.GetResponse(1, 2), 10.0);
}

}  // namespace
}  // namespace QVStats
