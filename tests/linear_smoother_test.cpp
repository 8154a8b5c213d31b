#include "stats/api/linear_smoother.h"

#include <gmock/gmock.h>

#include <Eigen/Dense>
#include <cmath>
#include <memory>
#include <random>

#include "stats/api/stats_data_types.h"
#include "tests/support/matchers.h"

namespace QVStats {
namespace {

namespace Failure = QVStatModelFailureType;
namespace Type = QVLinearSmootherOnSimilarityType;
namespace Kernel = QVSimilarityKernelType;
using QVStatsBadData::BadDouble;
using testing::HasSubstr;
using Texts = std::vector<std::string>;

/// Points of the unit square with a smooth response and some noise, and the table of their
/// similarities 1 - h / sqrt(2).
struct Sample {
  explicit Sample(Eigen::Index n) : similarities(n, n), responses(n), table("points") {
    std::mt19937 engine(7);
    std::uniform_real_distribution<double> uniform(0.0, 1.0);
    Eigen::MatrixXd points(n, 2);
    for (Eigen::Index i = 0; i < n; ++i) {
      points(i, 0) = uniform(engine);
      points(i, 1) = uniform(engine);
      responses[i] = std::sin(4 * points(i, 0)) + points(i, 1) + 0.3 * uniform(engine);
    }
    for (Eigen::Index i = 0; i < n; ++i)
      for (Eigen::Index j = 0; j < n; ++j)
        similarities(i, j) = 1.0 - (points.row(i) - points.row(j)).norm() / std::sqrt(2.0);
    table = MakeTable(similarities, responses);
  }

  static QVDataTable MakeTable(const Eigen::MatrixXd& s, const Eigen::VectorXd& y) {
    std::vector<double> triangle;
    for (Eigen::Index i = 0; i < s.rows(); ++i)
      for (Eigen::Index j = 0; j <= i; ++j) triangle.push_back(s(i, j));
    QVDataTable table("points");
    table.AddColumn(QVDataTableCol("sim", triangle, static_cast<std::size_t>(s.rows()), true));
    table.AddColumn(QVDataTableCol("y", {y.data(), y.data() + y.size()}, 1, false));
    return table;
  }

  Eigen::MatrixXd similarities;
  Eigen::VectorXd responses;
  QVDataTable table;
};

std::unique_ptr<QVLinearSmootherOnSimilarityBase> Make(unsigned int type, const QVDataTable& table,
                                                       unsigned int kernel = Kernel::Exponential) {
  return std::unique_ptr<QVLinearSmootherOnSimilarityBase>(
      QVGetLinearSmootherOnSimilarity(type, kernel, "y", "sim", table));
}

std::vector<double> ParamsOf(unsigned int type, double p = 3.0) {
  if (type == Type::Krige || type == Type::OrdinaryKrige) return {p, 0.05, 0.6};
  return {p};
}

QVDataTableCol ColumnOf(const Eigen::VectorXd& values) {
  return QVDataTableCol("query", {values.data(), values.data() + values.size()}, 1, false);
}

Eigen::MatrixXd KernelOf(const Eigen::MatrixXd& s, double p, unsigned int type) {
  const QVSimilarityKernel kernel(type);
  return s.unaryExpr([&](double value) { return kernel(value, p); });
}

struct Prediction {
  double predicted = 0.0;
  double weight = 0.0;
  double error = 0.0;
  QVStatModelResult result;
};

Prediction Predict(const QVLinearSmootherOnSimilarityBase& model, const QVDataTableCol& sims) {
  Prediction p;
  p.result = model.GetPredictedResponse(p.predicted, p.weight, p.error, sims);
  return p;
}

// The spectral formulas with the eigenvectors, and the search as documented.
struct SpectralReference {
  SpectralReference(const Eigen::MatrixXd& kernel, const Eigen::VectorXd& y) {
    const Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> solver(kernel);
    lambda = solver.eigenvalues().cwiseMax(0.0);
    vectors = solver.eigenvectors();
    mean = y.mean();
    z = vectors.transpose() * (y.array() - mean).matrix();
    double low = 0.05;
    double high = 0.05;
    while (Gradient(low) < 0) {
      high = low;
      low /= 2;
    }
    while (Gradient(high) > 0) {
      low = high;
      high *= 2;
    }
    while (high - low > 0.001) (Gradient((low + high) / 2) > 0 ? low : high) = (low + high) / 2;
    noise = (low + high) / 2 * sigma2;
  }
  double Gradient(double theta) {
    const Eigen::ArrayXd shifted = lambda.array() + theta;
    const auto n = static_cast<double>(lambda.size());
    const double s2 = (z.array().square() / shifted).sum();
    sigma2 = s2 / n;
    return n / 2 * ((z.array() / shifted).square().sum() / s2 - shifted.inverse().sum() / n);
  }
  std::pair<double, double> Predict(const Eigen::VectorXd& k) const {
    const Eigen::ArrayXd w = sigma2 * (vectors.transpose() * k).array();
    const Eigen::ArrayXd variance = sigma2 * lambda.array() + noise;
    return {mean + (z.array() * w / variance).sum(),
            std::sqrt(sigma2 + noise - (w.square() / variance).sum())};
  }
  Eigen::VectorXd lambda;
  Eigen::MatrixXd vectors;
  Eigen::VectorXd z;
  double mean = 0.0;
  double sigma2 = 0.0;
  double noise = 0.0;
};

// The box car is not positive definite here, so that negative eigenvalues are cut
// off along their vectors.
TEST(GaussianProcessOnSimilarity, AgreesWithTheSpectralFormulas) {
  const Sample all(61);
  const Sample training(60);
  const struct {
    unsigned int kernel;
    double param;
    bool isIndefinite;
  } rows[] = {{Kernel::Exponential, 3.0, false},
              {Kernel::Gaussian, 2.0, false},
              {Kernel::BoxCar, 3.0, true}};
  for (const auto& row : rows) {
    QVGaussianProcessOnSimilarity model(row.kernel, "y", "sim", training.table);
    ASSERT_TRUE(model.SetModelParams({row.param}).IsSuccessful());
    const Eigen::MatrixXd kernel = KernelOf(training.similarities, row.param, row.kernel);
    const double least = Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd>(kernel).eigenvalues()[0];
    ASSERT_EQ(least < -0.1, row.isIndefinite);
    const SpectralReference reference(kernel, training.responses);
    EXPECT_THAT(model.GetSignalVariance(), IsCloseTo(reference.sigma2, 1e-9));
    EXPECT_THAT(model.GetNoiseVariance(), IsCloseTo(reference.noise, 1e-9));
    const Eigen::VectorXd query = all.similarities.col(60).head(60);
    const Eigen::VectorXd k = KernelOf(query, row.param, row.kernel);
    const auto [predicted, error] = reference.Predict(k);
    const Prediction p = Predict(model, ColumnOf(query));
    ASSERT_TRUE(p.result.IsSuccessful()) << p.result.ReportStatResultDetails();
    EXPECT_THAT(p.predicted, IsCloseTo(predicted, 1e-9));
    // The cut-off covariance may explain more variance than there is.
    if (std::isnan(error))
      EXPECT_TRUE(std::isnan(p.error));
    else
      EXPECT_THAT(p.error, IsCloseTo(error, 1e-9));
    EXPECT_THAT(p.weight, IsCloseTo(k.mean(), 1e-12));
  }
}

TEST(KrigeOnSimilarity, AgreesWithTheBorderedSystem) {
  const Sample all(41);
  const Sample training(40);
  const Eigen::VectorXd query = all.similarities.col(40).head(40);
  const double p = 3.0;
  const double nugget = 0.05;
  const double sill = 0.6;
  Eigen::MatrixXd c = (sill - nugget) * KernelOf(training.similarities, p, Kernel::Exponential);
  c.diagonal().array() += nugget;
  const Eigen::VectorXd k = (sill - nugget) * KernelOf(query, p, Kernel::Exponential);
  const Eigen::VectorXd& y = training.responses;

  const auto simple = Make(Type::Krige, training.table);
  ASSERT_TRUE(simple->SetModelParams({p, nugget, sill}).IsSuccessful());
  Prediction prediction = Predict(*simple, ColumnOf(query));
  const Eigen::MatrixXd inverse = c.inverse();
  EXPECT_THAT(prediction.predicted,
              IsCloseTo(y.mean() + k.dot(inverse * (y.array() - y.mean()).matrix()), 1e-11));
  EXPECT_THAT(prediction.error, IsCloseTo(std::sqrt(sill - k.dot(inverse * k)), 1e-11));

  Eigen::MatrixXd a = Eigen::MatrixXd::Zero(41, 41);
  a.topLeftCorner(40, 40) = c;
  a.col(40).head(40).setOnes();
  a.row(40).head(40).setOnes();
  Eigen::VectorXd bordered(41);
  bordered << k, 1.0;
  const Eigen::VectorXd weights = a.fullPivLu().solve(bordered);
  QVOrdinaryKrigeOnSimilarity ordinary(Kernel::Exponential, "y", "sim", training.table);
  ASSERT_TRUE(ordinary.SetModelParams({p, nugget, sill}).IsSuccessful());
  prediction = Predict(ordinary, ColumnOf(query));
  EXPECT_TRUE(prediction.result.IsSuccessful());
  EXPECT_THAT(prediction.predicted, IsCloseTo(weights.head(40).dot(y), 1e-11));
  EXPECT_EQ(prediction.error, BadDouble);
  std::vector<double> errors;
  ASSERT_TRUE(ordinary.GetOrdinaryKrigingErrors(errors, query).IsSuccessful());
  EXPECT_THAT(errors[0], IsCloseTo(std::sqrt(sill - bordered.dot(weights)), 1e-11));
}

// With a covariance that is not positive definite the bordered system is still regular: ordinary
// kriging goes on, simple kriging does not.
TEST(KrigeOnSimilarity, IndefiniteCovariance) {
  const Sample training(40);
  const std::vector<double> params = {3.0, 0.01, 0.6};
  const auto simple = Make(Type::Krige, training.table, Kernel::BoxCar);
  EXPECT_THAT(simple->SetModelParams(params),
              FailedAlong(Failure::SingularScaleOrCovariance,
                          Texts{"QVKrigeOnSimilarity::GetTrainingSetLLTDecomposition",
                                "QVKrigeOnSimilarity::SetModelParams"},
                          Texts{"eigen ldlt.info() reports a numerical issue"}));
  EXPECT_FALSE(simple->ModelIsValid());

  QVOrdinaryKrigeOnSimilarity ordinary(Kernel::BoxCar, "y", "sim", training.table);
  ASSERT_TRUE(ordinary.SetModelParams(params).IsSuccessful());
  Eigen::MatrixXd a = Eigen::MatrixXd::Ones(41, 41);
  a(40, 40) = 0;
  a.topLeftCorner(40, 40) = 0.59 * KernelOf(training.similarities, 3.0, Kernel::BoxCar);
  a.diagonal().head(40).array() += 0.01;
  const Eigen::VectorXd query = training.similarities.col(5) * 0.9;
  Eigen::VectorXd bordered(41);
  bordered << 0.59 * KernelOf(query, 3.0, Kernel::BoxCar), 1.0;
  const Eigen::VectorXd weights = a.fullPivLu().solve(bordered);
  const Prediction prediction = Predict(ordinary, ColumnOf(query));
  EXPECT_THAT(prediction.predicted, IsCloseTo(weights.head(40).dot(training.responses), 1e-7));
}

class EverySmoother : public testing::TestWithParam<unsigned int> {};
INSTANTIATE_TEST_SUITE_P(Types, EverySmoother, testing::Range(1u, 5u));

// Leave-one-out in closed form against models that never saw the row. The Gaussian process keeps
// its variances: kriging with the same covariance and the mean of the others stands for it.
TEST_P(EverySmoother, LeaveOneOutIsWhatARefitPredicts) {
  const unsigned int type = GetParam();
  const Eigen::Index n = 25;
  const Sample all(n);
  const auto model = Make(type, all.table);
  ASSERT_TRUE(model->SetModelParams(ParamsOf(type)).IsSuccessful());
  QVSimilarityPredictions predictions;
  ASSERT_TRUE(model->GetLeaveOneOutPredictions(predictions).IsSuccessful());
  for (const std::size_t left : {0u, 7u, 24u}) {
    std::vector<std::size_t> rows;
    for (std::size_t i = 0; i < static_cast<std::size_t>(n); ++i)
      if (i != left) rows.push_back(i);
    const QVDataTable others("others", all.table, QVDataTableRowSet(rows));
    const Eigen::VectorXd query = all.similarities.col(static_cast<Eigen::Index>(left));
    Prediction expected;
    if (type == Type::GaussianProcess) {
      const auto& process = static_cast<const QVGaussianProcessOnSimilarity&>(*model);
      const auto kriging = Make(Type::Krige, others);
      const double noise = process.GetNoiseVariance();
      ASSERT_TRUE(kriging->SetModelParams({3.0, noise, noise + process.GetSignalVariance()})
                      .IsSuccessful());
      expected = Predict(*kriging, ColumnOf(query));
    } else {
      const auto refit = Make(type, others);
      ASSERT_TRUE(refit->SetModelParams(ParamsOf(type)).IsSuccessful());
      expected = Predict(*refit, ColumnOf(query));
      if (type == Type::OrdinaryKrige) {
        std::vector<double> errors;
        Eigen::VectorXd sub(n - 1);
        for (std::size_t i = 0; i < rows.size(); ++i)
          sub[static_cast<Eigen::Index>(i)] = query[static_cast<Eigen::Index>(rows[i])];
        static_cast<const QVOrdinaryKrigeOnSimilarity&>(*refit).GetOrdinaryKrigingErrors(errors,
                                                                                         sub);
        expected.error = errors[0];
      }
    }
    EXPECT_THAT(predictions.predicted[left], IsCloseTo(expected.predicted, 1e-10));
    EXPECT_THAT(predictions.estimatedErrors[left], IsCloseTo(expected.error, 1e-10));
    EXPECT_THAT(predictions.averageWeights[left], IsCloseTo(expected.weight, 1e-6));
  }
}

// A square table split by rows; a training table of its own with a rectangular test column; and
// the rows one by one: all the same predictions.
TEST_P(EverySmoother, TablesAndSingleRowsAgree) {
  const unsigned int type = GetParam();
  const Sample all(90);
  const auto range = [](std::size_t from, std::size_t to) {
    std::vector<std::size_t> rows;
    for (std::size_t i = from; i < to; ++i) rows.push_back(i);
    return QVDataTableRowSet(rows);
  };
  const auto model = Make(type, QVDataTable("training", all.table, range(0, 20)));
  ASSERT_TRUE(model->SetModelParams(ParamsOf(type)).IsSuccessful());
  const QVSimilarityRegressionResult square =
      model->GetTestSetResults("y", QVDataTable("test", all.table, range(20, 90)));
  ASSERT_TRUE(square.GetResultOfRegression().IsSuccessful())
      << square.GetResultOfRegression().ReportStatResultDetails();

  const Sample training(20);
  std::vector<double> rectangle;
  for (Eigen::Index i = 20; i < 90; ++i)
    for (Eigen::Index j = 0; j < 20; ++j) rectangle.push_back(all.similarities(i, j));
  QVDataTable test("test");
  test.AddColumn(QVDataTableCol("sim", rectangle, 20, false));
  test.AddColumn(ColumnOf(all.responses.tail(70)));
  const auto apart =
      Make(type, Sample::MakeTable(all.similarities.topLeftCorner(20, 20), all.responses.head(20)));
  ASSERT_TRUE(apart->SetModelParams(ParamsOf(type)).IsSuccessful());
  const QVSimilarityRegressionResult plain = apart->GetTestSetResults("query", test);
  ASSERT_TRUE(plain.GetResultOfRegression().IsSuccessful());

  QVStatModelResult result;
  for (const char* name : {"PredictedResponses", "AverageSimilarityWeights",
                           "EstimatedPredictionError", "ResidualErrors"}) {
    const QVDataTableCol one = square.GetColumnFromName(result, name);
    const QVDataTableCol two = plain.GetColumnFromName(result, name);
    ASSERT_TRUE(result.IsSuccessful());
    for (std::size_t i = 0; i < 70; ++i)
      EXPECT_EQ(one.GetDouble(20 + i, 0), two.GetDouble(i, 0)) << name << " at " << i;
  }
  const QVDataTableCol predicted = square.GetColumnFromName(result, "PredictedResponses");
  const QVDataTableCol residual = square.GetColumnFromName(result, "ResidualErrors");
  for (const Eigen::Index row : {20, 55, 89}) {
    const Prediction single = Predict(*model, ColumnOf(all.similarities.col(row).head(20)));
    const auto r = static_cast<std::size_t>(row);
    EXPECT_EQ(predicted.GetDouble(r, 0), single.predicted);
    EXPECT_EQ(residual.GetDouble(r, 0), all.responses[row] - single.predicted);
  }
}

TEST_P(EverySmoother, TellsWhatIsWrongWithItsInput) {
  const unsigned int type = GetParam();
  const Sample sample(5);
  const auto model = Make(type, sample.table);
  const QVDataTableCol query = ColumnOf(sample.similarities.col(0));
  EXPECT_THAT(Predict(*model, query).result.ReportStatResultDetails(),
              HasSubstr("Model Parameter vector is empty!"));
  EXPECT_EQ(model->SetModelParams({1, 2, 3, 4}).GetFailureType(), Failure::WrongInputVectorSize);
  ASSERT_TRUE(model->SetModelParams(ParamsOf(type)).IsSuccessful());
  const QVDataTableCol wide("wide", {1, 1, 1, 1, 1, 1, 1, 1, 1, 1}, 2, false);
  const Prediction refused = Predict(*model, wide);
  EXPECT_EQ(refused.predicted, BadDouble);
  EXPECT_THAT(refused.result.ReportStatResultDetails(),
              HasSubstr("Procedure expects an array with only one column; argument has 2 cols"));

  // 1 + 10 eps: the krigings take it.
  const bool isKriging = type >= Type::Krige;
  Eigen::VectorXd edge = sample.similarities.col(0);
  edge[0] = 1.0 + 10.0 * 2.220446049250313e-16;
  EXPECT_EQ(Predict(*model, ColumnOf(edge)).result.IsSuccessful(), isKriging);

  const auto null = Make(type, sample.table, Kernel::Null);
  EXPECT_THAT(null->GetResultOfConstructor(),
              HasSubstr("Null similarity kernel Function constructed"));
  EXPECT_EQ(null->GetTrainingSetResults().GetResultOfRegression().GetFailureType(),
            Failure::ObjectNotValid);

  QVDataTable plain("plain");
  plain.AddColumn(QVDataTableCol("sim", {1, 0, 0, 1}, 2, false));
  plain.AddColumn(QVDataTableCol("y", {1, 2}, 1, false));
  EXPECT_THAT(Make(type, plain)->GetResultOfConstructor(),
              HasSubstr("Predictor column sim Is not a symmetric matrix"));
}

/// What a model says of bad data, parameters or queries, from the first step that refuses them.
struct BadInput {
  const char* name;
  std::vector<unsigned int> types;
  unsigned int failure;
  const char* text;
  /// Spoils the similarities and responses of four training rows, the parameters and the query.
  void (*spoil)(Eigen::MatrixXd& s, Eigen::VectorXd& y, std::vector<double>& params,
                Eigen::VectorXd& query);
};
void PrintTo(const BadInput& row, std::ostream* out) { *out << row.name; }

using Matrix = Eigen::MatrixXd;
using Vector = Eigen::VectorXd;
using Params = std::vector<double>;
const std::vector<unsigned int> kKrigings = {Type::Krige, Type::OrdinaryKrige};
const std::vector<unsigned int> kFitted = {Type::GaussianProcess, Type::Krige, Type::OrdinaryKrige};

const BadInput kBadInputs[] = {
    {"TrainingSimilarityAboveOne", kFitted, Failure::MissingOrBadPredictorValue,
     "at row, column (1,2), similarity value = 1.5",
     [](Matrix& s, Vector&, Params&, Vector&) { s(2, 1) = s(1, 2) = 1.5; }},
    {"TrainingSimilarityBelowZero", kFitted, Failure::MissingOrBadPredictorValue,
     "at row, column (0,3), similarity value = -0.5",
     [](Matrix& s, Vector&, Params&, Vector&) { s(3, 0) = s(0, 3) = -0.5; }},
    {"MissingTrainingSimilarity", kFitted, Failure::MissingOrBadPredictorValue,
     "at row, column (3,3), similarity value = 1.79769e+307",
     [](Matrix& s, Vector&, Params&, Vector&) { s(3, 3) = QVStatsBadData::MissingDouble; }},
    {"TrainingSimilarityIsNoNumber", kFitted, Failure::MissingOrBadPredictorValue,
     "at row, column (1,2), similarity value = nan",
     [](Matrix& s, Vector&, Params&, Vector&) { s(2, 1) = s(1, 2) = std::nan(""); }},
    {"QueryIsNoNumber", kFitted, Failure::MissingOrBadPredictorValue,
     "at row (3) similarity value = nan",
     [](Matrix&, Vector&, Params&, Vector& query) { query[3] = std::nan(""); }},
    {"QueryAboveOne", kFitted, Failure::MissingOrBadPredictorValue,
     "at row (3) similarity value = 1.5",
     [](Matrix&, Vector&, Params&, Vector& query) { query[3] = 1.5; }},
    {"QueryAboveOneForKernelRegression",
     {Type::KernelRegression},
     Failure::ArgumentOutOfRange,
     "At row num (3); sim value = 1.5",
     [](Matrix&, Vector&, Params&, Vector& query) { query[3] = 1.5; }},
    {"MissingResponse", kFitted, Failure::MissingOrBadResponseValue, "at row number(1)",
     [](Matrix&, Vector& y, Params&, Vector&) { y[1] = QVStatsBadData::MissingDouble; }},
    {"BadResponseForKernelRegression",
     {Type::KernelRegression},
     Failure::ArgumentOutOfRange,
     "At row num 1, response column value = 1.79769e+308",
     [](Matrix&, Vector& y, Params&, Vector&) { y[1] = BadDouble; }},
    {"NuggetAboveSill", kKrigings, Failure::ArgumentOutOfRange, "nugget (2); greater than sill (1)",
     [](Matrix&, Vector&, Params& params, Vector&) {
       params = {1.0, 2.0, 1.0};
     }},
    {"ZeroCovariance", kKrigings, Failure::SingularScaleOrCovariance,
     "eigen ldlt.info() reports a numerical issue",
     [](Matrix&, Vector&, Params& params, Vector&) {
       params = {1.0, 0.0, 0.0};
     }},
    {"EqualRowsWithoutNugget",
     {Type::Krige},
     Failure::SingularScaleOrCovariance,
     "eigen ldlt.info() reports a numerical issue",
     [](Matrix& s, Vector&, Params& params, Vector&) {
       s.setConstant(0.25);
       params = {0.0, 0.0, 1.0};
     }},
};

class RefusesBadInput : public testing::TestWithParam<BadInput> {};
INSTANTIATE_TEST_SUITE_P(Cases, RefusesBadInput, testing::ValuesIn(kBadInputs),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_P(RefusesBadInput, AndSaysWhere) {
  for (const unsigned int type : GetParam().types) {
    Sample sample(4);
    Vector query = sample.similarities.col(1) * 0.9;
    Params params = ParamsOf(type);
    GetParam().spoil(sample.similarities, sample.responses, params, query);
    const auto model = Make(type, Sample::MakeTable(sample.similarities, sample.responses));
    QVStatModelResult result = model->SetModelParams(params);
    if (result.IsSuccessful()) result = Predict(*model, ColumnOf(query)).result;
    EXPECT_EQ(result.GetFailureType(), GetParam().failure) << type;
    EXPECT_THAT(result.ReportStatResultDetails(), HasSubstr(GetParam().text)) << type;
  }
}

TEST(KrigeOnSimilarity, AllNuggetIsTheMean) {
  const Sample sample(5);
  const auto flat = Make(Type::Krige, sample.table);
  ASSERT_TRUE(flat->SetModelParams({1.0, 0.5, 0.5}).IsSuccessful());
  EXPECT_THAT(Predict(*flat, ColumnOf(sample.similarities.col(1))).predicted,
              IsCloseTo(sample.responses.mean(), 1e-14));
}

TEST(KernelRegressionOnSimilarity, WithoutWeightIsThePlainMean) {
  const Sample sample(6);
  const auto model = Make(Type::KernelRegression, sample.table, Kernel::Linear);
  ASSERT_TRUE(model->SetModelParams({2.0}).IsSuccessful());
  const Prediction far = Predict(*model, ColumnOf(Eigen::VectorXd::Constant(6, 0.1)));
  EXPECT_THAT(far.predicted, IsCloseTo(sample.responses.mean(), 1e-14));
  EXPECT_THAT(far.weight, IsCloseTo(1.1920928955078125e-07, 1e-14));
  EXPECT_EQ(model->SetModelParams({1.0, 2.0}).GetFailureType(), Failure::WrongInputVectorSize);
  EXPECT_THAT(model->GetModelParams(), testing::ElementsAre(2.0));
}

TEST(SmootherOnSimilarity, NamesAndTheNullSmoother) {
  EXPECT_EQ(QVGetLinearSmootherOnSimilarityType("GaussianProcess"), 2u);
  EXPECT_EQ(QVGetLinearSmootherOnSimilarityType("KernelRegression"), 1u);
  EXPECT_EQ(QVGetLinearSmootherOnSimilarityType("Kriging"), 0u);
  const Sample sample(4);
  const auto null = Make(77, sample.table);
  EXPECT_EQ(null->GetTypeOfLinearSmootherOnSimilarity(), 0u);
  EXPECT_THAT(Predict(*null, ColumnOf(sample.responses)).result,
              FailedWith(Failure::ObjectNotValid, "QVNullRegression::GetPredictedResponse"));
  EXPECT_THAT(Make(Type::Krige, sample.table)->GetModelParamNames(),
              testing::ElementsAre("Kernel parameter for Exponential", "nugget", "sill"));
}

TEST(RegressionResult, Summaries) {
  const QVSimilarityRegressionResult none{QVStatModelResult()};
  EXPECT_THAT(none.PrintSummary(),
              testing::StartsWith("Regression Model: Null Model\nResult type: Null Results\n"
                                  "Result of Regression:\n\nResult was not successful: \n"));
  const QVUnivariateRegressionResult empty{QVStatModelResult()};
  EXPECT_THAT(empty.PrintSummary(),
              testing::StartsWith("Regression Model: \nResult type: \nResult of Regression:\n"));
  EXPECT_THAT(empty.PrintSummary(), testing::EndsWith("\nModel Parameters: "));
  EXPECT_EQ(empty.GetRegResultDataTable().GetTableName(), "Null Results");
  const QVSimilarityRegressionResult some(true, "Model", "Test Set Results", QVDataTable("t"),
                                          {0.3, 7.0}, {"a"});
  EXPECT_EQ(some.PrintSummary(),
            "Regression Model: Model\nResult type: Test Set Results\nResult is successful!\n"
            "Model Parameters: a: 0.3\n");
  const QVUnivariateRegressionResult more(true, "Model", "", QVDataTable("t"), {0.3}, {"a", "b"},
                                          0);
  EXPECT_THAT(more.PrintSummary(), testing::EndsWith("a: 0.3\nb: Parameter is Not Defined\n"));
}

TEST(RegressionResult, PrintsTheColumnsOfTheTable) {
  const Sample sample(4);
  const auto model = Make(Type::KernelRegression, sample.table, Kernel::Gaussian);
  ASSERT_TRUE(model->SetModelParams({0.3}).IsSuccessful());
  const QVSimilarityRegressionResult results = model->GetTrainingSetResults();
  EXPECT_THAT(results.PrintSummary(), HasSubstr("Kernel parameter for Gaussian: 0.3\n"));
  EXPECT_THAT(results.PrintSummaryPlusFirstRowsOfData(2, 1),
              HasSubstr("Predicted Response forKernel or Nadaraya-Watson Regression"));
  Texts names;
  for (const QVDataTableCol& column : results.GetRegResultDataTable().GetColumns())
    names.push_back(column.GetColumnName());
  EXPECT_THAT(names, testing::ElementsAre("y", "PredictedResponses", "AverageSimilarityWeights",
                                          "EstimatedPredictionError", "ResidualErrors",
                                          "AbsoluteResidualErrors"));
}

}  // namespace
}  // namespace QVStats
