#include "stats/api/linear_smoother_pred_columns.h"

#include <gmock/gmock.h>

#include <Eigen/Dense>
#include <algorithm>
#include <cmath>
#include <random>

#include "stats/api/data_vector_functions.h"
#include "stats/api/linear_smoother_variogram_columns.h"
#include "stats/api/stats_data_types.h"
#include "tests/support/matchers.h"

namespace QVStats {
namespace {

namespace Failure = QVStatModelFailureType;
namespace Kernel = QVSimilarityKernelType;
namespace Type = QVLinearSmootherOnPredColumnsType;
using QVStatsBadData::BadDouble;
using testing::HasSubstr;
using Values = std::vector<double>;
using Codes = std::vector<unsigned int>;
using Names = std::vector<std::string>;
using Rows = std::vector<std::size_t>;

const Codes kKernels = {Kernel::Exponential, Kernel::Gaussian};
const Values kParams = {2.0, 1.5, 0.05, 0.7};

Rows Range(std::size_t first, std::size_t last) {
  Rows rows;
  for (std::size_t i = first; i < last; ++i) rows.push_back(i);
  return rows;
}

/// Objects with a number x and a place whose distance makes a similarity.
struct Sample {
  explicit Sample(Eigen::Index n) : s(n, n), x(n), y(n), table("objects") {
    std::mt19937 engine(5);
    std::uniform_real_distribution<double> uniform(0.0, 1.0);
    Eigen::VectorXd place(n);
    for (Eigen::Index i = 0; i < n; ++i) {
      x[i] = 10 * uniform(engine);
      place[i] = uniform(engine);
      y[i] = std::sin(x[i]) + 2 * place[i] + 0.1 * uniform(engine);
    }
    x[0] = 0.0;
    x[1] = 10.0;
    Values triangle;
    for (Eigen::Index i = 0; i < n; ++i)
      for (Eigen::Index j = 0; j < n; ++j) {
        s(i, j) = 1.0 - std::abs(place[i] - place[j]);
        if (j <= i) triangle.push_back(s(i, j));
      }
    table.AddColumn(QVDataTableCol("sim", triangle, static_cast<std::size_t>(n), true));
    table.AddColumn(QVDataTableCol("x", {x.data(), x.data() + n}, 1, false));
    table.AddColumn(QVDataTableCol("y", {y.data(), y.data() + n}, 1, false));
  }

  double GetSimilarityOfX(Eigen::Index i, Eigen::Index j) const {
    return 1.0 - std::abs(x[i] - x[j]) / 10.0;
  }
  /// Covariances of rows i and j: (sill - nugget) times the product of the kernels.
  double GetCovariance(Eigen::Index i, Eigen::Index j) const {
    const QVSimilarityKernel first(kKernels[0]);
    const QVSimilarityKernel second(kKernels[1]);
    return 0.65 * first(GetSimilarityOfX(i, j), kParams[0]) * second(s(i, j), kParams[1]);
  }
  QVDataTable Select(const Rows& rows) const {
    return QVDataTable("selection", table, QVDataTableRowSet(rows));
  }

  Eigen::MatrixXd s;
  Eigen::VectorXd x;
  Eigen::VectorXd y;
  QVDataTable table;
};

double Read(const QVSimilarityRegressionResult& results, const char* name, std::size_t row) {
  QVStatModelResult result;
  return results.GetColumnFromName(result, name).GetDouble(row, 0);
}

TEST(KrigeOnPredColumns, PredictsByTheProductOfTheKernels) {
  const Sample all(40);
  const Eigen::Index n = 30;
  QVLinearSmootherOnPredColumns model(Type::Krige, kKernels, "y", {"x", "sim"},
                                      all.Select(Range(0, 30)));
  EXPECT_EQ(model.GetNameOfLinearSmootherOnPredColumns(), "Kriging on Vec of Pred Columns");
  EXPECT_THAT(model.GetModelParamNames(),
              testing::ElementsAre("Kernel parameter for Exponential on x",
                                   "Kernel parameter for Gaussian on sim", "nugget", "sill"));
  EXPECT_THAT(model.GetTestSetResults("y", all.table).GetResultOfRegression(),
              FailedWith(Failure::ObjectNotValid,
                         "QVLinearSmootherOnPredColumnsBase::GetRegressionResults"));
  ASSERT_TRUE(model.SetModelParams(kParams).IsSuccessful());

  Eigen::MatrixXd c(n, n);
  for (Eigen::Index i = 0; i < n; ++i)
    for (Eigen::Index j = 0; j < n; ++j) c(i, j) = all.GetCovariance(i, j) + (i == j ? 0.05 : 0.0);
  const Eigen::VectorXd y = all.y.head(n);
  const QVSimilarityRegressionResult results =
      model.GetTestSetResults("y", all.Select(Range(30, 40)));
  ASSERT_TRUE(results.GetResultOfRegression().IsSuccessful())
      << results.GetResultOfRegression().ReportStatResultDetails();
  for (Eigen::Index row = n; row < 40; ++row) {
    Eigen::VectorXd k(n);
    for (Eigen::Index i = 0; i < n; ++i) k[i] = all.GetCovariance(row, i);
    const Eigen::VectorXd weights = c.fullPivLu().solve(k);
    const double expected = y.mean() + weights.dot((y.array() - y.mean()).matrix());
    const auto r = static_cast<std::size_t>(row);
    EXPECT_THAT(Read(results, "PredictedResponses", r), IsCloseTo(expected, 1e-11));
    EXPECT_THAT(Read(results, "EstimatedPredictionError", r),
                IsCloseTo(std::sqrt(0.7 - weights.dot(k)), 1e-11));
    EXPECT_THAT(Read(results, "AverageSimilarityWeights", r), IsCloseTo(k.mean() / 0.65, 1e-12));
    EXPECT_EQ(Read(results, "ResidualErrors", r),
              all.y[row] - Read(results, "PredictedResponses", r));
  }

  // The same row through its similarities.
  Values ofX;
  Values ofPlace;
  for (Eigen::Index i = 0; i < n; ++i) {
    ofX.push_back(all.GetSimilarityOfX(35, i));
    ofPlace.push_back(all.s(35, i));
  }
  const QVDataTableCol xCol("a", ofX, 1, false);
  const QVDataTableCol placeCol("b", ofPlace, 1, false);
  double predicted = 0.0;
  double weight = 0.0;
  double error = 0.0;
  ASSERT_TRUE(
      model.GetPredictedResponse(predicted, weight, error, {xCol, placeCol}).IsSuccessful());
  EXPECT_THAT(predicted, IsCloseTo(Read(results, "PredictedResponses", 35), 1e-13));
  EXPECT_EQ(model.GetPredictedResponse(predicted, weight, error, {xCol}).GetFailureType(),
            Failure::WrongInputVectorSize);
  EXPECT_EQ(predicted, BadDouble);
  ofPlace[4] = 1.2;
  EXPECT_THAT(model
                  .GetPredictedResponse(predicted, weight, error,
                                        {xCol, QVDataTableCol("b", ofPlace, 1, false)})
                  .ReportStatResultDetails(),
              HasSubstr("for predictor column sim at row (4) similarity value = 1.2"));
}

// One matrix of similarities: the same model as kriging on similarity.
TEST(KrigeOnPredColumns, OneSimilarityColumnIsKrigingOnSimilarity) {
  const Sample all(25);
  QVKrigeOnPredColumns model({Kernel::Exponential}, "y", {"sim"}, all.table);
  QVKrigeOnSimilarity other(Kernel::Exponential, "y", "sim", all.table);
  ASSERT_TRUE(model.SetModelParams({3.0, 0.1, 0.9}).IsSuccessful());
  ASSERT_TRUE(other.SetModelParams({3.0, 0.1, 0.9}).IsSuccessful());
  QVSimilarityPredictions one;
  QVSimilarityPredictions two;
  ASSERT_TRUE(model.GetLeaveOneOutPredictions(one).IsSuccessful());
  ASSERT_TRUE(other.GetLeaveOneOutPredictions(two).IsSuccessful());
  for (std::size_t i = 0; i < 25; ++i) {
    EXPECT_THAT(one.predicted[i], IsCloseTo(two.predicted[i], 1e-13));
    EXPECT_THAT(one.estimatedErrors[i], IsCloseTo(two.estimatedErrors[i], 1e-13));
    EXPECT_THAT(one.averageWeights[i], IsCloseTo(two.averageWeights[i], 1e-13));
  }
  ASSERT_TRUE(model.GetPredictedResponses(one, {all.s * 0.9}).IsSuccessful());
  ASSERT_TRUE(other.GetPredictedResponses(two, all.s * 0.9).IsSuccessful());
  EXPECT_THAT(one.predicted, testing::Pointwise(testing::DoubleEq(), two.predicted));
}

// A refit without the row, whose x is not at either end, so that the range stays.
TEST(KrigeOnPredColumns, LeaveOneOutIsWhatARefitPredicts) {
  const Sample all(20);
  QVKrigeOnPredColumns model(kKernels, "y", {"x", "sim"}, all.table);
  ASSERT_TRUE(model.SetModelParams(kParams).IsSuccessful());
  QVSimilarityPredictions predictions;
  ASSERT_TRUE(model.GetLeaveOneOutPredictions(predictions).IsSuccessful());
  for (const std::size_t left : {2u, 11u, 19u}) {
    Rows others = Range(0, 20);
    others.erase(others.begin() + static_cast<std::ptrdiff_t>(left));
    QVKrigeOnPredColumns refit(kKernels, "y", {"x", "sim"}, all.Select(others));
    ASSERT_TRUE(refit.SetModelParams(kParams).IsSuccessful());
    const QVSimilarityRegressionResult results = refit.GetTestSetResults("y", all.Select({left}));
    EXPECT_THAT(predictions.predicted[left],
                IsCloseTo(Read(results, "PredictedResponses", left), 1e-11));
    EXPECT_THAT(predictions.estimatedErrors[left],
                IsCloseTo(Read(results, "EstimatedPredictionError", left), 1e-11));
    EXPECT_THAT(predictions.averageWeights[left],
                IsCloseTo(Read(results, "AverageSimilarityWeights", left), 1e-12));
  }
}

TEST(KrigeOnPredColumns, NumbersBeyondTheRangeAreUnrelated) {
  const Sample all(10);
  QVKrigeOnPredColumns model({Kernel::Linear}, "y", {"x"}, all.table);
  ASSERT_TRUE(model.SetModelParams({2.0, 0.1, 0.9}).IsSuccessful());
  QVDataTable test("test");
  test.AddColumn(QVDataTableCol("x", Values{1e6, -40}, 1, false));
  test.AddColumn(QVDataTableCol("y", Values{0, 0}, 1, false));
  const QVSimilarityRegressionResult results = model.GetTestSetResults("y", test);
  EXPECT_THAT(Read(results, "PredictedResponses", 0), IsCloseTo(all.y.mean(), 1e-14));
  EXPECT_THAT(Read(results, "EstimatedPredictionError", 1), IsCloseTo(std::sqrt(0.9), 1e-14));
}

struct SetUpCase {
  const char* name;
  Names predictors;
  Codes kernels;
  const char* text;
};
void PrintTo(const SetUpCase& row, std::ostream* out) { *out << row.name; }

class PredColumnsSetUp : public testing::TestWithParam<SetUpCase> {};
INSTANTIATE_TEST_SUITE_P(
    Cases, PredColumnsSetUp,
    testing::Values(
        SetUpCase{"NoPredictors", {}, {}, "no predictor columns"},
        SetUpCase{"Unknown",
                  {"x", "z"},
                  kKernels,
                  "Called by Routine: Constructor for "
                  "QVLinearSmootherOnPredColumnsBase"},
        SetUpCase{"Twice", {"x", "x"}, kKernels, "SetupDataTableFromTrainingSetNames"},
        SetUpCase{"Wide",
                  {"x", "wide"},
                  kKernels,
                  "Predictor column wide Is not a symmetric matrix and has 2 values a row"},
        SetUpCase{"Missing", {"gap"}, {1}, "for predictor column gap at row (2) value = "},
        SetUpCase{"FewKernels", {"x", "sim"}, {1}, "num kernel types = 1; num pred cols = 2"},
        SetUpCase{
            "NullKernel", {"x", "sim"}, {1, 0}, "Null similarity kernel Function constructed"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_P(PredColumnsSetUp, TellsWhatIsWrong) {
  const Sample sample(4);
  QVDataTable table = sample.table;
  table.AddColumn(QVDataTableCol("wide", Values(8, 0.5), 2, false));
  table.AddColumn(QVDataTableCol("gap", Values{1, 2, QVStatsBadData::MissingDouble, 4}, 1, false));
  QVKrigeOnPredColumns model(GetParam().kernels, "y", GetParam().predictors, table);
  EXPECT_THAT(model.GetResultOfConstructor(), HasSubstr(GetParam().text));
  EXPECT_TRUE(model.SetModelParams(Values(model.GetNumModelParams(), 1.0)).NotSuccessful());
  EXPECT_FALSE(model.ModelIsValid());
}

TEST(KrigeOnPredColumns, BadParametersAndTestTables) {
  const Sample sample(8);
  QVKrigeOnPredColumns model(kKernels, "y", {"x", "sim"}, sample.table);
  EXPECT_EQ(model.SetModelParams({1.0}).GetFailureType(), Failure::WrongInputVectorSize);
  EXPECT_THAT(
      model.SetModelParams({1.0, 1.0, 0.5, 0.2}),
      FailedAlong(Failure::ArgumentOutOfRange, Names{"QVKrigeOnPredColumns::SetModelParams"},
                  Names{"nugget (0.5); greater than sill (0.2)"}));
  QVKrigeOnPredColumns box({Kernel::BoxCar}, "y", {"x"}, sample.table);
  EXPECT_EQ(box.SetModelParams({2.0, 0.0, 1.0}).GetFailureType(),
            Failure::SingularScaleOrCovariance);
  EXPECT_FALSE(box.ModelIsValid());

  ASSERT_TRUE(model.SetModelParams(kParams).IsSuccessful());
  QVDataTable test("test");
  test.AddColumn(QVDataTableCol("x", Values{1, QVStatsBadData::BadDouble}, 1, false));
  test.AddColumn(QVDataTableCol("y", Values{1, 2}, 1, false));
  EXPECT_EQ(model.CheckThatPredColumnsLineUp(test).GetFailureType(), Failure::ColumnNotFound);
  QVDataTable narrow = QVDataTable("narrow");
  for (const QVDataTableCol& column : test.GetColumns()) narrow.AddColumn(column);
  narrow.AddColumn(QVDataTableCol("sim", Values(4, 0.5), 2, false));
  EXPECT_THAT(
      model.GetTestSetResults("y", narrow).GetResultOfRegression().ReportStatResultDetails(),
      HasSubstr("Predictor column sim has 2 values a row; needed are 8"));
  test.AddColumn(QVDataTableCol("sim", Values(16, 0.5), 8, false));
  EXPECT_THAT(model.GetTestSetResults("y", test).GetResultOfRegression().ReportStatResultDetails(),
              HasSubstr("for predictor column x at row (1) value = "));
}

// A column that is the same in all rows changes nothing.
TEST(KrigeOnPredColumns, ConstantColumnsTellNothing) {
  const Sample all(12);
  QVDataTable table = all.table;
  table.AddColumn(QVDataTableCol("flat", Values(12, 3.0), 1, false));
  QVKrigeOnPredColumns with({Kernel::Exponential, Kernel::Linear}, "y", {"sim", "flat"}, table);
  QVKrigeOnPredColumns without({Kernel::Exponential}, "y", {"sim"}, table);
  ASSERT_TRUE(with.SetModelParams({3.0, 1.0, 0.1, 0.9}).IsSuccessful());
  ASSERT_TRUE(without.SetModelParams({3.0, 0.1, 0.9}).IsSuccessful());
  const QVSimilarityRegressionResult one = with.GetTestSetResults("y", table);
  const QVSimilarityRegressionResult two = without.GetTestSetResults("y", table);
  for (std::size_t i = 0; i < 12; ++i)
    EXPECT_THAT(Read(one, "PredictedResponses", i),
                IsCloseTo(Read(two, "PredictedResponses", i), 1e-12));
}

// Parameters from the variogram of the same columns, in its order.
TEST(KrigeOnPredColumns, TakesWhatTheVariogramFits) {
  const Sample all(120);
  const QVDataTable training = all.Select(Range(0, 90));
  const Names columns = {"x", "sim"};
  QVVariogramOnPredColumns variogram("y", columns, training, {12, 8}, true, 0.1, {0.5, 0.5},
                                     QVSampleStatisticType::Mean, 0.0);
  double objective = 0.0;
  ASSERT_TRUE(
      variogram.CalcOptimalTheoryVariogram(objective, kKernels, {0.5, 0.1}, {40, 5}, {40, 25})
          .IsSuccessful());
  QVKrigeOnPredColumns model(kKernels, "y", columns, training);
  Values params = variogram.GetKrigingParameters();
  params[2] = std::max(params[2], 1e-3);
  const QVStatModelResult fit = model.SetModelParams(params);
  ASSERT_TRUE(fit.IsSuccessful()) << fit.ReportStatResultDetails();
  const QVSimilarityRegressionResult results =
      model.GetTestSetResults("y", all.Select(Range(90, 120)));
  double squares = 0.0;
  double spread = 0.0;
  for (std::size_t row = 90; row < 120; ++row) {
    squares += std::pow(Read(results, "ResidualErrors", row), 2);
    spread += std::pow(all.y[static_cast<Eigen::Index>(row)] - all.y.head(90).mean(), 2);
  }
  EXPECT_LT(squares, 0.3 * spread);
}

TEST(NullRegressionOnPredColumns, PredictsNothing) {
  const Sample sample(4);
  QVLinearSmootherOnPredColumns null(9, kKernels, "y", {"x"}, sample.table);
  double value = 0.0;
  EXPECT_THAT(
      null.GetPredictedResponse(value, value, value, {}),
      FailedWith(Failure::ObjectNotValid, "QVNullRegressionOnPredColumns::GetPredictedResponse"));
  EXPECT_EQ(value, BadDouble);
  EXPECT_TRUE(null.SetModelParams({}).NotSuccessful());
  EXPECT_EQ(null.GetNameOfLinearSmootherOnPredColumns(), "Unknown Type");
}

}  // namespace
}  // namespace QVStats
