#include "stats/api/linear_smoother_univariate.h"

#include <gmock/gmock.h>

#include <cmath>
#include <memory>
#include <random>

#include "platform/system/error_handler.h"
#include "stats/api/data_vector_functions.h"
#include "stats/api/data_vector_pairs.h"
#include "stats/api/stats_data_types.h"
#include "tests/support/matchers.h"

namespace QVStats {
namespace {

namespace Failure = QVStatModelFailureType;
namespace Type = QVUnivarLinearSmootherType;
namespace Kernel = QVKernelFunctionType;
using QVStatsBadData::BadDouble;
using QVStatsBadData::MissingDouble;
using testing::HasSubstr;
using Texts = std::vector<std::string>;
using Values = std::vector<double>;

constexpr double kLeastWeight = 1.1920928955078125e-07;
constexpr std::size_t kNoRow = static_cast<std::size_t>(-1);

QVDataTable MakeTable(const Values& x, const Values& y, std::size_t width = 1) {
  QVDataTable table("data");
  table.AddColumn(QVDataTableCol("x", x, width, false));
  table.AddColumn(QVDataTableCol("y", y, 1, false));
  return table;
}

Values ReadColumn(const QVUnivariateRegressionResult& results, const std::string& name,
                  std::size_t subCol = 0) {
  QVStatModelResult result;
  const QVDataTableCol column = results.GetColumnFromName(result, name);
  EXPECT_TRUE(result.IsSuccessful()) << name;
  return results.GetRegResultDataTable().GetDoubles(column, subCol);
}

/// The sums as they are defined, over all points.
double PredictByDefinition(const Values& x, const Values& y, unsigned int kernelType, double h,
                           double query, std::size_t excluded) {
  const QVKernelFunction kernel(kernelType);
  double weight = 0.0;
  double sum = 0.0;
  for (std::size_t i = 0; i < x.size(); ++i) {
    if (i == excluded || y[i] == MissingDouble || y[i] == BadDouble || x[i] == MissingDouble)
      continue;
    const double w = kernel((query - x[i]) * h) + kLeastWeight;
    weight += w;
    sum += w * y[i];
  }
  return sum / weight;
}

class EveryKernelFunction : public testing::TestWithParam<unsigned int> {};
INSTANTIATE_TEST_SUITE_P(Types, EveryKernelFunction, testing::Range(1u, 6u));

// Dense and sparse stretches, ties, a far cluster, an offset that would cost digits, and rows to
// skip; bandwidths from one that sees a point or two to one that sees all.
TEST_P(EveryKernelFunction, FastSumsAreThoseOfTheDefinition) {
  const unsigned int kernel = GetParam();
  std::mt19937 engine(11);
  std::normal_distribution<double> normal;
  Values x;
  Values y;
  for (int i = 0; i < 1500; ++i) {
    x.push_back(i % 3 == 0 ? std::round(10 * normal(engine)) / 10 : normal(engine));
    y.push_back(1e4 + std::sin(3 * x.back()) + 0.1 * normal(engine));
  }
  for (int i = 0; i < 40; ++i) x.push_back(1000 + normal(engine)), y.push_back(9e3);
  x[7] = MissingDouble;
  x[8] = BadDouble;
  y[9] = BadDouble;
  y[10] = MissingDouble;
  QVUniVarKernelRegression smoother(kernel, "y", "x", MakeTable(x, y), 0);
  for (const double h : {0.0, 1e-4, 0.2, -1.0, 7.0, 300.0}) {
    ASSERT_TRUE(smoother.SetModelParams({h}).IsSuccessful());
    for (const double query : {-8.0, -3.99, -0.1, 0.0, 0.3, 2.5, 15.0, 999.0, 1003.5, 1e9})
      EXPECT_THAT(smoother.GetPredictedResponse(query),
                  IsCloseTo(PredictByDefinition(x, y, kernel, h, query, kNoRow), 2e-13))
          << "h " << h << " at " << query;
    for (const std::size_t row : {0u, 1u, 2u, 3u, 8u, 9u, 500u, 1499u, 1500u, 1539u})
      EXPECT_THAT(smoother.GetPredictedResponse(x[row], row),
                  IsCloseTo(PredictByDefinition(x, y, kernel, h, x[row], row), 2e-13))
          << "h " << h << " without row " << row;
  }
}

// Points crowd where a kernel all but vanishes: the series there has to give way.
TEST_P(EveryKernelFunction, EdgesOfTheSupport) {
  const unsigned int kernel = GetParam();
  Values x;
  Values y;
  for (int i = 0; i < 200; ++i) x.push_back(0.9999 + 1e-7 * i), y.push_back(i);
  x.push_back(1.0);
  y.push_back(-1000.0);
  QVUniVarKernelRegression smoother(kernel, "y", "x", MakeTable(x, y), 0);
  ASSERT_TRUE(smoother.SetModelParams({1.0}).IsSuccessful());
  for (const double query : {0.0, 2.0, std::nextafter(0.0, -1.0), 1e-5, 1.99995})
    EXPECT_THAT(smoother.GetPredictedResponse(query),
                IsCloseTo(PredictByDefinition(x, y, kernel, 1.0, query, kNoRow), 1e-11))
        << query;
}

TEST(UniVarKernelRegression, BoxCarByHand) {
  QVUniVarKernelRegression smoother(Kernel::BoxCar, "y", "x",
                                    MakeTable({0, 1, 2, 5, 2}, {1, 2, 6, 100, MissingDouble}), 0);
  EXPECT_FALSE(smoother.ModelIsValid());
  EXPECT_EQ(smoother.GetPredictedResponse(1.0), BadDouble);
  EXPECT_EQ(smoother.SetModelParams({}).GetFailureType(), Failure::WrongInputVectorSize);
  ASSERT_TRUE(smoother.SetModelParams({1.0}).IsSuccessful());
  EXPECT_THAT(smoother.GetModelParamNames(),
              testing::ElementsAre("Parameter for Kernel of type BoxCar Kernel Function"));
  EXPECT_THAT(smoother.GetPredictedResponse(1.0),
              IsCloseTo((4.5 + 109 * kLeastWeight) / (1.5 + 4 * kLeastWeight), 1e-15));
  EXPECT_THAT(smoother.GetPredictedResponse(50.0), IsCloseTo(109.0 / 4.0, 1e-15));
  EXPECT_THAT(smoother.GetPredictedResponse(1.0, 1),
              IsCloseTo((3.5 + 107 * kLeastWeight) / (1.0 + 3 * kLeastWeight), 1e-15));
  // A row that is repeated is left out as often as it is there.
  const QVDataTable table = MakeTable({0, 1}, {3, 7});
  QVUniVarKernelRegression repeated(
      Kernel::BoxCar, "y", "x",
      QVDataTable("repeated", table, QVDataTableRowSet(std::vector<std::size_t>{1, 0, 1})), 0);
  ASSERT_TRUE(repeated.SetModelParams({1.0}).IsSuccessful());
  EXPECT_DOUBLE_EQ(repeated.GetPredictedResponse(1.0), 17.0 / 3.0);
  EXPECT_DOUBLE_EQ(repeated.GetPredictedResponse(1.0, 1), 3.0);
  QVUniVarKernelRegression lone(Kernel::BoxCar, "y", "x", MakeTable({0}, {3}), 0);
  ASSERT_TRUE(lone.SetModelParams({1.0}).IsSuccessful());
  EXPECT_TRUE(std::isnan(lone.GetPredictedResponse(0.0, 0)));
}

// F. J. Anscombe, "Graphs in statistical analysis", Am. Stat. 27, 1973: the first set.
TEST(SimpleLinearRegression, AnscombesFirstSet) {
  const Values x = {10, 8, 13, 9, 11, 14, 6, 4, 12, 7, 5};
  const Values y = {8.04, 6.95, 7.58, 8.81, 8.33, 9.96, 7.24, 4.26, 10.84, 4.82, 5.68};
  QVUniVarLinearSmoother line(Type::SimpleLinearRegression, 0, "y", "x", MakeTable(x, y), 0);
  ASSERT_TRUE(line.ModelIsValid()) << line.GetResultOfConstructor();
  EXPECT_THAT(line.GetModelParams()[0], IsCloseTo(3.000090909090909, 1e-13));
  EXPECT_THAT(line.GetModelParams()[1], IsCloseTo(0.500090909090909, 1e-13));
  EXPECT_EQ(line.GetPredictedResponse(10.0, 0), line.GetPredictedResponse(10.0));

  const QVUnivariateRegressionResult results = line.GetTrainingSetResults(true);
  ASSERT_TRUE(results.GetResultOfRegression().IsSuccessful());
  const Values residuals = ReadColumn(results, "ResidualErrors");
  for (std::size_t i = 0; i < x.size(); ++i)
    EXPECT_DOUBLE_EQ(residuals[i], y[i] - line.GetPredictedResponse(x[i]));
  QVStatModelResult result;
  std::size_t missing = 9;
  std::size_t bad = 9;
  EXPECT_THAT(results.GetSampleStatisticOnColumn(result, missing, bad, QVSampleStatisticType::Mean,
                                                 "ResidualErrors"),
              testing::DoubleNear(0.0, 1e-14));
  EXPECT_EQ(missing + bad, 0u);
  EXPECT_THAT(results.GetSampleStatisticOnColumnPair(
                  result, missing, bad, QVTwoSampleStatisticType::PearsonCorrelation, "x", "y"),
              IsCloseTo(0.81642051634484, 1e-13));
  QVMath::QVDataSeries points;
  double range[4];
  EXPECT_TRUE(results
                  .GetScatterPlotPtsForColumnNamePair(points, range[0], range[1], range[2],
                                                      range[3], "x", "PredictedResponses", 0, 0, 5,
                                                      5, 0, 0)
                  .IsSuccessful());
  EXPECT_EQ(points.GetNumPoints(), 11u);
  EXPECT_THAT(range, testing::ElementsAre(4.0, 14.0, 0.0, line.GetPredictedResponse(14.0)));
  EXPECT_EQ(results.GetSampleStatisticOnColumn(result, missing, bad, QVSampleStatisticType::Mean,
                                               "nowhere"),
            BadDouble);
  EXPECT_THAT(result.ReportStatResultDetails(),
              HasSubstr("QVUnivariateRegressionResult::GetSampleStatisticOnColumn"));

  EXPECT_THAT(line.SetModelParams({1.0}), FailedWith(Failure::WrongInputVectorSize,
                                                     "QVSimpleLinearRegression::SetModelParams"));
  ASSERT_TRUE(line.SetModelParams({1.0, 2.0}).IsSuccessful());
  EXPECT_DOUBLE_EQ(line.GetPredictedResponse(3.0), 7.0);
}

TEST(SimpleLinearRegression, WithoutAFit) {
  const QVSimpleLinearRegression flat("y", "x", MakeTable({2, 2, 2}, {1, 2, 3}), 0);
  EXPECT_THAT(flat.GetModelParams(), testing::Each(BadDouble));
  EXPECT_EQ(flat.GetPredictedResponse(1.0), BadDouble);
  const QVSimpleLinearRegression beyond("y", "x", MakeTable({1, 2}, {1, 2}), 1);
  EXPECT_FALSE(beyond.ModelIsValid());
  EXPECT_THAT(beyond.GetResultOfConstructor(),
              HasSubstr("Called by Routine: Constructor for QVSimpleLinearRegression"));
  QVSystem::QVScopedRecordingSink sink;
  EXPECT_EQ(beyond.GetPredictedResponse(1.0), BadDouble);
  EXPECT_THAT(sink.GetTexts(QVSystem::QVErrorLevel::Fatal).at(0), HasSubstr("Assertion failed"));

  const QVSimpleLinearRegression lost("y", "z", MakeTable({1, 2}, {1, 2}), 0);
  EXPECT_THAT(lost.GetResultOfConstructor(),
              HasSubstr("SetupDataTableFromTrainingSetNamesAndDataTable \nCalled by Routine: "
                        "Constructor of QVUniVarLinearSmootherBase"));
  const QVDataTableCol shorter("y", Values{1, 2}, 1, false);
  const QVSimpleLinearRegression uneven(shorter, QVDataTableCol("x", Values{1, 2, 3}, 1, false), 0);
  EXPECT_THAT(uneven.GetResultOfConstructor(), HasSubstr("SetupTrainingSetColsFromCols"));
}

// The predictor is the second of three values a row; a test row without it has no prediction.
TEST(UniVarLinearSmoother, SubColumnsAndTestSets) {
  const QVDataTable training =
      MakeTable({0, 1, 0, 0, 2, 0, 0, 3, 0, 0, MissingDouble, 0}, {3, 5, 7, 1}, 3);
  const QVUniVarLinearSmoother line(Type::SimpleLinearRegression, 0, "y", "x", training, 1);
  EXPECT_THAT(line.GetModelParams(), testing::ElementsAre(IsCloseTo(1.0, 1e-14), 2.0));
  const QVUnivariateRegressionResult results = line.GetTrainingSetResults(false);
  ASSERT_TRUE(results.GetResultOfRegression().IsSuccessful())
      << results.GetResultOfRegression().ReportStatResultDetails();
  EXPECT_THAT(ReadColumn(results, "PredictedResponses", 1),
              testing::ElementsAre(3.0, 5.0, 7.0, MissingDouble));
  EXPECT_THAT(ReadColumn(results, "PredictedResponses", 0), testing::Each(MissingDouble));
  EXPECT_THAT(ReadColumn(results, "AbsoluteResidualErrors", 1),
              testing::ElementsAre(0.0, 0.0, 0.0, MissingDouble));
  QVStatModelResult result;
  std::size_t missing = 0;
  std::size_t bad = 0;
  EXPECT_EQ(results.GetSampleStatisticOnColumn(result, missing, bad, QVSampleStatisticType::Mean,
                                               "PredictedResponses"),
            5.0);
  EXPECT_EQ(missing, 1u);
  Texts names;
  for (const QVDataTableCol& column : results.GetRegResultDataTable().GetColumns())
    names.push_back(column.GetColumnName());
  EXPECT_THAT(names, testing::ElementsAre("x", "y", "PredictedResponses", "ResidualErrors",
                                          "AbsoluteResidualErrors"));
  EXPECT_EQ(results.GetColumnFromName(result, "PredictedResponses").GetFullColumnName(),
            "Predicted Response forSimple Linear Regression");

  const QVUnivariateRegressionResult test =
      line.GetTestSetResults(QVDataTableCol("measured", Values{10, BadDouble}, 1, false),
                             QVDataTableCol("t", Values{4, 5}, 1, false), 0);
  ASSERT_TRUE(test.GetResultOfRegression().IsSuccessful());
  EXPECT_EQ(test.GetRegResultDataTable().GetTableName(), "Response and Predictor Columns");
  EXPECT_THAT(ReadColumn(test, "ResidualErrors"), testing::ElementsAre(1.0, BadDouble));
  EXPECT_THAT(line.GetTestSetResults("y", "z", training, 0).GetResultOfRegression(),
              testing::ResultOf([](const auto& r) { return r.ReportStatResultDetails(); },
                                HasSubstr("QVUniVarLinearSmootherBase::GetTestSetResults")));
}

TEST(UniVarLinearSmoother, LeavesOutTheRowOfThatNumber) {
  const Values x = {0, 1, 2, 3, 4};
  const Values y = {1, 5, 2, 8, 3};
  const QVDataTable table = MakeTable(x, y);
  QVUniVarLinearSmoother smoother(
      Type::KernelRegression, Kernel::Gaussian, "y", "x",
      QVDataTable("some", table, QVDataTableRowSet(std::vector<std::size_t>{4, 1, 2})), 0);
  ASSERT_TRUE(smoother.SetModelParams({1.5}).IsSuccessful());
  const Values left = ReadColumn(smoother.GetTrainingSetResults(true), "PredictedResponses");
  const Values some_x = {4, 1, 2};
  const Values some_y = {3, 5, 2};
  for (std::size_t i = 0; i < 3; ++i)
    EXPECT_THAT(
        left[i],
        IsCloseTo(PredictByDefinition(some_x, some_y, Kernel::Gaussian, 1.5, some_x[i], i), 1e-14));
}

TEST(UniVarLinearSmoother, NamesAndTheNullSmoother) {
  const QVDataTable table = MakeTable({1, 2}, {1, 2});
  for (const unsigned int type : {0u, 2u, 4u, 5u, 99u}) {
    QVUniVarLinearSmoother null(type, Kernel::Gaussian, "y", "x", table, 0);
    EXPECT_EQ(null.GetTypeOfUniVarLinearSmoother(), 0u);
    EXPECT_EQ(null.GetPredictedResponse(1.0), BadDouble);
    EXPECT_EQ(null.GetPredictedResponse(1.0, 0), BadDouble);
    EXPECT_THAT(null.SetModelParams({}),
                FailedWith(Failure::ObjectNotValid, "QVNullRegression::SetModelParams"));
    EXPECT_THAT(
        null.GetTrainingSetResults(false).GetResultOfRegression(),
        FailedWith(Failure::ObjectNotValid, "QVUniVarLinearSmootherBase::GetRegressionResults"));
  }
  EXPECT_THAT(QVUniVarLinearSmoother(3, Kernel::Null, "y", "x", table, 0).GetResultOfConstructor(),
              HasSubstr("Null kernelFunction constructed"));
  const std::pair<const char*, unsigned int> codes[] = {
      {"Linear", 1},  {"Simple Linear Regression", 1},
      {"Kernel", 3},  {"Kernel or Nadaraya-Watson Regression", 3},
      {"kernel", 0},  {"Cubic Spline Regression", 0},
      {"Unknown", 0},
  };
  for (const auto& [name, code] : codes) EXPECT_EQ(QVGetLinearSmootherTypeFromName(name), code);
  EXPECT_EQ(QVGetLinearSmootherNameFromType(5), "Cubic Spline Regression");
  EXPECT_EQ(QVGetLinearSmootherNameFromType(6),
            "QVGetLinearSmootherNameFromType: argument out of Range.\nType must be less than 6");
}

}  // namespace
}  // namespace QVStats
