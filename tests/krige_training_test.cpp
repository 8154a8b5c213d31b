#include <gmock/gmock.h>

#include <limits>

#include "tests/support/krige_support.h"
#include "tests/support/matchers.h"

namespace QVStats {
namespace {

using QVKrigeTest::Container;
using QVKrigeTest::Coordinates;
using QVKrigeTest::Euclid;
using QVKrigeTest::FunctionDistance;
using QVKrigeTest::MakeKernel;
using QVKrigeTest::Point;
using QVKrigeTest::Storage;
using QVKrigeTest::Texts;
using QVSystem::QVErrorLevel;
using testing::ElementsAre;
using testing::Pair;

Container MakeContainer(
    unsigned int method = QVKrigeUniqueResponseMethod::Mean,
    const QVSystem::QVBinaryFunction<Point, Point, double>& distance = EuclideanDistance<2>(),
    const QVPropertyListFxn<Point>& list = QVNoPropertyListFxn<Point>()) {
  return Container(distance, QVGetUniqueTrainingDataResponseImpl<Point, Storage>(method), list,
                   QVGetMeanTrainingDataPropFxn<Point, Storage>());
}

bool Add(Container& container, Point point, double response, bool unmeasured = false) {
  Container::Data data{Storage(point), response, unmeasured, 4294967295u, false, {}};
  return container.AddElementAndProperties(data);
}

struct MethodCase {
  unsigned int method;
  double measured;  // of the copies 1, 3 and 8 with an unmeasured 100
  double guessed;   // of the unmeasured copies -5 and 7
};

class UniqueResponse : public testing::TestWithParam<MethodCase> {};
INSTANTIATE_TEST_SUITE_P(Methods, UniqueResponse,
                         testing::Values(MethodCase{QVKrigeUniqueResponseMethod::Mean, 4.0, 1.0},
                                         MethodCase{QVKrigeUniqueResponseMethod::Min, 1.0, -5.0},
                                         MethodCase{QVKrigeUniqueResponseMethod::Max, 8.0, 7.0}));

TEST_P(UniqueResponse, PrefersMeasuredCopies) {
  Container container = MakeContainer(GetParam().method);
  for (const double response : {1.0, 3.0, 8.0}) Add(container, {0, 0}, response);
  Add(container, {0, 0}, 100.0, true);
  Add(container, {1, 0}, -5.0, true);
  Add(container, {1, 0}, 7.0, true);
  ASSERT_EQ(container.GetNumUniqueElements(), 2u);
  EXPECT_EQ(container.GetUniqueResponse(0), GetParam().measured);
  EXPECT_EQ(container.GetUniqueResponse(1), GetParam().guessed);
  EXPECT_FALSE(container.GetUniqueIsUnmeasured(0));
  EXPECT_TRUE(container.GetUniqueIsUnmeasured(1));
}

TEST(UniqueResponseMethod, AnUnknownCodeIsTheMean) {
  EXPECT_THAT(Texts(QVErrorLevel::Error,
                    [] {
                      Container container = MakeContainer(9);
                      Add(container, {0, 0}, 1.0);
                      Add(container, {0, 0}, 3.0);
                      EXPECT_EQ(container.GetUniqueResponse(0), 2.0);
                    }),
              ElementsAre("Invalid KrigeUniqueResponseMethod 9, defaulting to mean"));
}

TEST(TrainingContainer, GroupsIdenticalElements) {
  for (const bool bulk : {true, false}) {
    const EuclideanDistance<2> fast;
    const FunctionDistance slow(&Euclid);
    Container container =
        bulk ? MakeContainer(0, fast) : MakeContainer(QVKrigeUniqueResponseMethod::Mean, slow);
    const std::vector<Point> points = {{0, 0}, {3, 4}, {0, 0}, {0, 1}, {3, 4}, {1e-31, 0}};
    for (const Point& point : points) Add(container, point, 1.0);
    EXPECT_THAT(container.GetUniqueElements(0), ElementsAre(0, 2, 5));
    EXPECT_THAT(container.GetUniqueElements(1), ElementsAre(1, 4));
    EXPECT_THAT(container.GetUniqueElements(2), ElementsAre(3));
    EXPECT_EQ(container.GetGroupOfElement(4), 1u);
    EXPECT_EQ(container.GetUniqueDistance(0, 1), 5.0);
    EXPECT_EQ(container.GetUniqueDistance(1, 2), std::sqrt(18.0));
    EXPECT_EQ(container.GetUniqueDistance(2, 2), 0.0);
    std::vector<double> distances(3);
    container.GetDistances({0, 0}, distances.data());
    EXPECT_THAT(distances, ElementsAre(0.0, 5.0, 1.0));
  }
}

TEST(TrainingContainer, AGroupHasTheFirstIdentifierOfItsMembers) {
  Container container = MakeContainer();
  Add(container, {0, 0}, 1.0);
  EXPECT_FALSE(container.GetUniqueHasID(0));
  EXPECT_EQ(container.GetUniqueID(0), 4294967295u);
  container.AddElement({Storage({0, 0}), 1.0, false, 12, true, {}});
  container.AddElement({Storage({0, 0}), 1.0, false, 13, true, {}});
  EXPECT_TRUE(container.GetUniqueHasID(0));
  EXPECT_EQ(container.GetUniqueID(0), 12u);
}

TEST(TrainingContainer, FatalReportsLeaveItUsable) {
  Container container = MakeContainer(
      QVKrigeUniqueResponseMethod::Mean,
      FunctionDistance([](const Point& a, const Point& b) { return a[0] < b[0] ? 1.0 : 2.0; }));
  const auto fatal = Texts(QVErrorLevel::Fatal, [&] {
    EXPECT_FALSE(Add(container, {5, 5}, std::numeric_limits<double>::quiet_NaN()));
    Add(container, {0, 0}, 1.0);
    Add(container, {1, 0}, 2.0);
    EXPECT_EQ(container.GetElement(7).response, 2.0);
    EXPECT_EQ(container.GetUniqueDistance(0, 7), 0.0);
    EXPECT_THAT(container.GetUniqueElements(7), testing::IsEmpty());
  });
  EXPECT_EQ(fatal.size(), 5u);
  for (const std::string& text : fatal)
    EXPECT_THAT(text, testing::MatchesRegex("Assertion failed at line [0-9]+ of "
                                            "stats/krige_model_impl.h.\n"));
  EXPECT_EQ(container.GetNumUniqueElements(), 2u);
}

// Whatever stands before it, an index past the end is reported, and the others decide.
TEST(TrainingContainer, AGroupOfUnknownElementsIsFatal) {
  Container container = MakeContainer();
  Add(container, {0, 0}, 4.0);
  const QVGetMeanTrainingDataResponseFxn<Point, Storage> response;
  const QVGetMeanTrainingDataPropFxn<Point, Storage> properties;
  const auto fatal = Texts(QVErrorLevel::Fatal, [&] {
    EXPECT_EQ(response.GetResponse(container.GetElements(), {0, 9}), 4.0);
    EXPECT_THAT(properties.GetProperties(container.GetElements(), {0, 9}), testing::IsEmpty());
    EXPECT_EQ(response.GetResponse(container.GetElements(), {9}),
              std::numeric_limits<double>::max());
    EXPECT_EQ(response.GetResponse(container.GetElements(), {}),
              std::numeric_limits<double>::max());
  });
  EXPECT_EQ(fatal.size(), 4u);
}

TEST(TrainingContainer, MeansThePropertiesOfMeasuredCopies) {
  class Serial : public Coordinates {  // every element of a point has its own property
   public:
    Serial() : Coordinates(1) {}
    double GetProperty(const Point&, std::size_t) const override { return next_ *= 2.0; }
    Serial* CreateCopy() const override { return new Serial(*this); }

   private:
    mutable double next_ = 1.0;
  };
  Container container = MakeContainer(0, EuclideanDistance<2>(), Serial());
  EXPECT_FALSE(Add(container, {-1, 0}, 1.0));
  Add(container, {0, 0}, 1.0);        // 2
  Add(container, {0, 0}, 1.0, true);  // 4
  Add(container, {0, 0}, 1.0);        // 8
  EXPECT_THAT(container.GetUniqueProperties(0), ElementsAre(5.0));
}

TEST(Covariance, FillsTheLeadingBlockOnly) {
  Container container = MakeContainer();
  for (const Point& point : {Point{0, 0}, Point{1, 0}, Point{0, 2}, Point{1, 1}})
    Add(container, point, 1.0);
  const QVKrigeKernel kernel = MakeKernel(QVKrigeKernelType::Exponential, 1.5, 2.0, 0.25);
  Eigen::MatrixXd matrix = Eigen::MatrixXd::Constant(6, 6, -7.0);
  ASSERT_TRUE(QVFillCovarianceMatrix(matrix, container, kernel));
  for (Eigen::Index i = 0; i < 6; ++i)
    for (Eigen::Index j = 0; j < 6; ++j) {
      const bool inside = i < 4 && j < 4;
      const double expected =
          inside ? 2.0 - kernel.GetValue(container.GetUniqueDistance(static_cast<std::size_t>(i),
                                                                     static_cast<std::size_t>(j)))
                 : -7.0;
      EXPECT_DOUBLE_EQ(matrix(i, j), expected);
    }

  Eigen::MatrixXd oblong(5, 4), small(3, 3);
  EXPECT_THAT(
      Texts(QVErrorLevel::Error,
            [&] {
              EXPECT_FALSE(QVFillCovarianceMatrix(oblong, container, kernel));
              EXPECT_FALSE(QVFillCovarianceMatrix(small, container, kernel));
            }),
      ElementsAre("QVKrigeTrainingContainer<T,TT>::FillCovarianceMatrix, not a square matrix",
                  "QVKrigeTrainingContainer<T,TT>::FillCovarianceMatrix,matrix is to small (3x3) "
                  "vs 4"));
}

TEST(VariogramPairs, AreEarlierMinusLaterInIndexOrder) {
  Container container = MakeContainer();
  Add(container, {0, 0}, 1.0);
  Add(container, {3, 4}, 10.0);
  Add(container, {0, 0}, 4.0);
  Add(container, {0, 1}, 30.0, true);
  Add(container, {0, 2}, 50.0, true);
  QVKrigePairs pairs;
  ASSERT_TRUE(QVGetDistAndDiff(pairs, container, false));
  EXPECT_THAT(pairs, ElementsAre(Pair(5.0, -9.0), Pair(0.0, -3.0), Pair(5.0, 6.0)));
  ASSERT_TRUE(QVGetDistAndDiff(pairs, container, true));
  ASSERT_EQ(pairs.size(), 9u);  // all ten but the one between the unmeasured elements
  EXPECT_THAT(pairs[3], Pair(2.0, -49.0));

  Container nothing = MakeContainer();
  EXPECT_TRUE(QVGetDistAndDiff(pairs, nothing, true));
  EXPECT_THAT(pairs, testing::IsEmpty());
}

// Responses 2x + 1 with the residuals 0.5, -1, 0.5, orthogonal to 1 and to x = 0, 1, 2.
TEST(VariogramPairs, UseResidualsOfTheDrift) {
  Container container = MakeContainer(0, EuclideanDistance<2>(), Coordinates(1));
  Add(container, {0, 0}, 1.5);
  Add(container, {1, 0}, 2.0);
  Add(container, {2, 0}, 5.5);
  Add(container, {3, 0}, 100.0, true);
  QVKrigePairs pairs;
  ASSERT_TRUE(QVGetDistAndDiffResidual(pairs, container, false));
  const double expected[][2] = {{1.0, 1.5}, {2.0, 0.0}, {1.0, -1.5}};
  ASSERT_EQ(pairs.size(), 3u);
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(pairs[i].first, expected[i][0]);
    EXPECT_NEAR(pairs[i].second, expected[i][1], 1e-13);
  }
}

TEST(VariogramPairs, NeedADriftThatCanBeFitted) {
  std::vector<double> residuals;
  const std::vector<Container::Data> ragged = {
      {Storage(Point{0, 0}), 1.0, false, 0, true, {1.0}},
      {Storage(Point{1, 0}), 2.0, false, 1, true, {1.0, 2.0}}};
  EXPECT_THAT(Texts(QVErrorLevel::Warning,
                    [&] { EXPECT_FALSE(QVGetTrainingResiduals(ragged, false, residuals)); }),
              ElementsAre("QVGetDistAndDiffResidual, failed to add training"));
  // Without measured elements there is nothing to fit.
  const std::vector<Container::Data> guessed = {{Storage(Point{0, 0}), 1.0, true, 0, true, {1.0}}};
  EXPECT_FALSE(QVGetTrainingResiduals(guessed, false, residuals));
  EXPECT_TRUE(QVGetTrainingResiduals(guessed, true, residuals));
}

}  // namespace
}  // namespace QVStats
