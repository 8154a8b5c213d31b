#include "stats/api/similarity_prediction.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>

#include "stats/api/stats_data_types.h"
#include "tests/support/matchers.h"

namespace QVStats {
namespace {

namespace Failure = QVStatModelFailureType;
namespace Kernel = QVSimilarityKernelType;
namespace Measure = QVPredictiveFitMeasureType;
using QVStatsBadData::BadDouble;
using testing::ElementsAre;
using Values = std::vector<double>;
using Rows = std::vector<std::size_t>;

constexpr double kLeastWeight = 1.1920928955078125e-07;
const char* const kAverage = "CalcWeightedSumOfResponseOnSelect";

/// Five objects; 0 to 2 are the training set, 3 and 4 the test set.
class SimilarityPrediction : public testing::Test {
 protected:
  explicit SimilarityPrediction(double last = 0.75)
      : all_("all"), training_("training"), test_("test") {
    all_.AddColumn(QVDataTableCol(
        "sim", Values{1, 0.5, 1, 0.25, 0.5, 1, 0.5, 0.75, 0, 1, 0.25, last, 0.5, 0.25, 1}, 5,
        true));
    all_.AddColumn(QVDataTableCol("y", Values{1, 2, 4, 3, 5}, 1, false));
    training_ = QVDataTable("training", all_, QVDataTableRowSet(Rows{0, 1, 2}));
    test_ = QVDataTable("test", all_, QVDataTableRowSet(Rows{3, 4}));
  }

  QVStatModelResult Average(const QVDataTable& rows, std::size_t object, unsigned int kernel,
                            double param) {
    QVSystem::QVIter<const QVDataTableRow> iter = rows.GetRows();
    return CalcWeightedAveOfResponseOnSelect(
        average_, nearest_, weight_, all_.GetColumnFromName("sim"), all_.GetColumnFromName("y"),
        object, iter, QVSimilarityKernel(kernel), param);
  }

  QVStatModelResult Optimise(unsigned int kernel, unsigned int measure, double low, double high,
                             std::size_t steps) {
    return OptimizePredResponseOverSimilarityKernelParams(
        error_, param_, kernel, measure, low, high, steps, "y", "sim", training_, test_);
  }

  QVDataTable all_;
  QVDataTable training_;
  QVDataTable test_;
  double average_ = 0.0;
  double nearest_ = 0.0;
  double weight_ = 0.0;
  double error_ = 0.0;
  double param_ = 0.0;
};

TEST_F(SimilarityPrediction, WeightedAverage) {
  // Linear kernel, p = 1: the weight is the similarity but for 10 eps.
  ASSERT_TRUE(Average(training_, 3, Kernel::Linear, 1.0).IsSuccessful());
  const double weight = 1.25 + 3 * kLeastWeight;
  EXPECT_THAT(weight_, IsCloseTo(weight, 1e-14));
  EXPECT_THAT(average_, IsCloseTo((0.5 + 1.5 + 7 * kLeastWeight) / weight, 1e-14));
  EXPECT_EQ(nearest_, 0.75);
  ASSERT_TRUE(Average(training_, 0, Kernel::Null, 1.0).IsSuccessful());
  EXPECT_THAT(average_, IsCloseTo(7.0 / 3.0, 1e-15));
  EXPECT_THAT(weight_, IsCloseTo(3 * kLeastWeight, 1e-15));

  const QVDataTable none("none", all_, QVDataTableRowSet(Rows{}));
  const QVStatModelResult empty = Average(none, 3, Kernel::Gaussian, 2.5);
  EXPECT_THAT(empty,
              FailedAlong(Failure::InternalLogicFailure, std::vector<std::string>{kAverage},
                          std::vector<std::string>{
                              "Sum of weights is non-Positive; Something wrong? Kernel type = "
                              "GaussianSimilarity array simparameter to convert similarity to "
                              "distance = 2.5Similarity matrix column number = 3The max similarity "
                              "on this column is 0; occurs at row number 18446744073709551615"}));
  EXPECT_EQ(average_, BadDouble);
  EXPECT_EQ(weight_, 0.0);
}

TEST_F(SimilarityPrediction, BadSimilarities) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const struct {
    double similarity;
    unsigned int failure;
    double nearest;
    const char* text;
  } rows[] = {{1.5, Failure::UpperBoundViolated, 1.5, "1.5"},
              {-0.1, Failure::LowerBoundViolated, 0.25, "-0.1"},
              {nan, Failure::LowerBoundViolated, 0.25, "nan"},
              {QVStatsBadData::MissingDouble, Failure::UpperBoundViolated,
               QVStatsBadData::MissingDouble, "1.79769e+307"}};
  for (const auto& row : rows) {
    const QVDataTableCol column("s", Values{0.25, row.similarity, 0.5}, 1, false);
    QVDataTable table("t");
    table.AddColumn(column);
    QVSystem::QVIter<const QVDataTableRow> iter = table.GetRows();
    EXPECT_THAT(CalcWeightedAveOfResponseOnSelect(average_, nearest_, weight_, column,
                                                  all_.GetColumnFromName("y"), 0, iter,
                                                  QVSimilarityKernel(Kernel::BoxCar), 1.0),
                FailedAlong(row.failure, std::vector<std::string>{kAverage},
                            std::vector<std::string>{
                                std::string("For similarity array s: Bad similarity: ") + row.text +
                                " at i,j = 1 0"}));
    EXPECT_EQ(average_, BadDouble);
    EXPECT_EQ(nearest_, row.nearest);
    EXPECT_EQ(weight_, 1.0 + kLeastWeight);
  }
}

TEST_F(SimilarityPrediction, PredictsTestRows) {
  Values responses = {7};
  Values predictions = {7};
  const QVSimilarityKernel kernel(Kernel::Exponential);
  ASSERT_TRUE(GetResponseAndPredResponseFromSimilarity(responses, predictions, "y", "sim",
                                                       training_, test_, kernel, 3.0)
                  .IsSuccessful());
  EXPECT_THAT(responses, ElementsAre(3.0, 5.0));
  ASSERT_EQ(predictions.size(), 2u);
  ASSERT_TRUE(Average(training_, 4, Kernel::Exponential, 3.0).IsSuccessful());
  EXPECT_EQ(predictions[1], average_);
  Values nearest;
  Values weights;
  ASSERT_TRUE(GetMinDistanceAndTotalWeightFromSimilarity(nearest, weights, "y", "sim", training_,
                                                         test_, kernel, 3.0)
                  .IsSuccessful());
  EXPECT_THAT(nearest, ElementsAre(0.75, 0.75));
  EXPECT_EQ(weights[1], weight_);
  EXPECT_THAT(
      GetResponseAndPredResponseFromSimilarity(responses, predictions, "y", "other", training_,
                                               test_, kernel, 3.0),
      testing::ResultOf([](const auto& r) { return r.GetFailureType(); }, Failure::ColumnNotFound));
  EXPECT_THAT(responses, testing::IsEmpty());
}

TEST_F(SimilarityPrediction, GridSearchIsTheBestOfItsSteps) {
  for (const unsigned int measure : {1u, 2u}) {
    ASSERT_TRUE(Optimise(Kernel::Exponential, measure, 0.0, 20.0, 41).IsSuccessful());
    double best = BadDouble;
    double bestParam = BadDouble;
    for (int i = 0; i <= 40; ++i) {
      Values responses;
      Values predictions;
      double error = 0.0;
      GetResponseAndPredResponseFromSimilarity(responses, predictions, "y", "sim", training_, test_,
                                               QVSimilarityKernel(Kernel::Exponential), 0.5 * i);
      GetResponseFitError(error, responses, predictions, measure);
      if (error < best) {
        best = error;
        bestParam = 0.5 * i;
      }
    }
    EXPECT_EQ(error_, best);
    EXPECT_EQ(param_, bestParam);
  }
  // Every parameter is as good as another: the first one wins; one step is the first parameter.
  ASSERT_TRUE(Optimise(Kernel::Null, Measure::AverageAbsoluteDeviation, 2, 9, 5).IsSuccessful());
  EXPECT_EQ(param_, 2.0);
  ASSERT_TRUE(Optimise(Kernel::Linear, Measure::RootMeanSquaredDeviation, 1, 9, 1).IsSuccessful());
  EXPECT_EQ(param_, 1.0);
}

class BadSimilarityPrediction : public SimilarityPrediction {
 protected:
  BadSimilarityPrediction() : SimilarityPrediction(1.5) {}
};

TEST_F(BadSimilarityPrediction, SearchTellsWhatFailed) {
  EXPECT_THAT(
      Optimise(Kernel::Linear, 1, 0, 1, 3),
      FailedAlong(
          Failure::UpperBoundViolated,
          std::vector<std::string>{kAverage, "GetResponseAndPredResponseFromSimilarity",
                                   "OptimizePredResponseOverSimilarityKernelParams"},
          std::vector<std::string>{"For similarity array sim: Bad similarity: 1.5 at i,j = 1 4"}));
  EXPECT_EQ(error_, BadDouble);
  EXPECT_EQ(param_, BadDouble);
}

TEST_F(SimilarityPrediction, SearchWithoutStepsRowsOrMeasure) {
  EXPECT_THAT(
      Optimise(Kernel::Linear, 1, 0, 1, 0),
      FailedWith(Failure::EmptyStatModel, "OptimizePredResponseOverSimilarityKernelParams"));
  EXPECT_THAT(Optimise(Kernel::Linear, 3, 0, 1, 2),
              FailedWith(Failure::ArgumentOutOfRange, "GetResponseFitError"));
  test_ = QVDataTable("none", all_, QVDataTableRowSet(Rows{}));
  EXPECT_THAT(Optimise(Kernel::Linear, 1, 0, 1, 2).ReportStatResultDetails(),
              testing::HasSubstr("Training or test set empty of rows.Num Training set rows = 3 "
                                 "Num Test set rows  = 0"));
}

TEST(PredictiveFit, MeasuresAndNames) {
  double error = 0.0;
  ASSERT_TRUE(GetResponseFitError(error, {1, 2}, {4, -2}, 1).IsSuccessful());
  EXPECT_DOUBLE_EQ(error, 3.5);
  ASSERT_TRUE(GetResponseFitError(error, {1, 2}, {4, -2}, 2).IsSuccessful());
  EXPECT_DOUBLE_EQ(error, std::sqrt(12.5));
  for (const auto& [y, f] : {std::pair<Values, Values>{{}, {}}, {{1, 2}, {1}}}) {
    EXPECT_EQ(GetResponseFitError(error, y, f, 1).GetFailureType(),
              Failure::MismatchBetweenInputVecSizes);
    EXPECT_EQ(error, BadDouble);
  }
  EXPECT_EQ(QVGetPredictiveFitMeasureType("AverageAbsoluteDeviation"), 1u);
  EXPECT_EQ(QVGetPredictiveFitMeasureType("RootMeanSquaredDeviation"), 1u);
  EXPECT_EQ(QVGetPredictiveFitMeasureType("Unknown"), 0u);
  EXPECT_EQ(QVGetPredictiveFitMeasureName(2), "RootMeanSquaredDeviation");
  EXPECT_EQ(QVGetPredictiveFitMeasureName(3), "Unknown");
}

}  // namespace
}  // namespace QVStats
