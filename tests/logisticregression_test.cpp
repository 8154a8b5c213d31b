#include "stats/api/logisticregression.h"

#include <gmock/gmock.h>

#include <cmath>
#include <fstream>
#include <sstream>

#include "platform/system/error_handler.h"
#include "tests/support/matchers.h"

namespace QVStats {
namespace {

using QVBinaryRegressionType::Logistic;
using QVBinaryRegressionType::Probit;
using QVSystem::QVErrorLevel;
using QVSystem::QVScopedRecordingSink;

TEST(BinaryLinks, MatchTheirDefinitions) {
  for (const double z : {-6.0, -1.5, -0.1, 0.0, 0.3, 2.0, 5.0}) {
    const double logistic = 1 / (1 + std::exp(-z));
    const double cdf = (1 + std::erf(z / std::sqrt(2.0))) / 2;
    const double ratio = std::exp(-z * z / 2) * 0.7978845608031838 / (2 * cdf);
    EXPECT_THAT(logistic_func(z), IsCloseTo(logistic, 1e-14)) << z;
    EXPECT_THAT(probit_func(z), IsCloseTo(cdf, 1e-6)) << z;
    EXPECT_THAT(deriv_log_probit_func(z), IsCloseTo(ratio, 1e-6)) << z;
    EXPECT_THAT(second_deriv_log_reg_func(Logistic, z),
                IsCloseTo((logistic - 1) * logistic, 1e-13));
    for (const int y : {1, -1}) {
      // Derivatives against central differences of the function above them.
      for (const unsigned int type : {Probit, Logistic}) {
        const double h = 1e-5;
        EXPECT_NEAR(deriv_log_p(type, y, z),
                    (log_p(type, y, z + h) - log_p(type, y, z - h)) / (2 * h), 1e-8);
        EXPECT_NEAR(W(type, y, z), (V(type, y, z - h) - V(type, y, z + h)) / (2 * h), 1e-8);
      }
    }
  }
  EXPECT_EQ(Norm(0.0), 0.3989422804015919);
  EXPECT_THAT(Norm(3.0, 1.0, 2.0), IsCloseTo(std::exp(-0.5) * 0.3989422804015919 / 2, 1e-15));
}

TEST(BinaryLinks, KeepTheirDigitsInTheTail) {
  // log Phi(-40) = -804.608442013754... and phi(-40)/Phi(-40) = 40.024968847207..., to 30 digits
  // with mpmath.
  EXPECT_THAT(log_p(Probit, 1, -40.0), IsCloseTo(-804.60844201375, 1e-13));
  EXPECT_THAT(deriv_log_probit_func(-40.0), IsCloseTo(40.0249688472073, 1e-13));
  EXPECT_EQ(log_p(Logistic, -1, 1000.0), -1000.0);
  EXPECT_EQ(V(Logistic, 1, -1000.0), 1.0);
}

/// 189 births: low weight on age, mother's weight, smoking, hypertension, uterine irritability (D.
/// W. Hosmer, S. Lemeshow, "Applied Logistic Regression", 1989), with a leading 1.
class BirthWeight : public testing::Test {
 protected:
  void SetUp() override {
    std::ifstream file(QVSTATS_TEST_DATA "/birth_weight.csv");
    std::string line, field;
    std::getline(file, line);
    while (std::getline(file, line)) {
      std::istringstream fields(line);
      std::getline(fields, field, ',');
      outcomes_.push_back(field == "1" ? 1 : -1);
      predictors_.push_back(1.0);
      while (std::getline(fields, field, ',')) predictors_.push_back(std::stod(field));
    }
    ASSERT_EQ(outcomes_.size(), 189u);
  }

  std::string Fit(QVBinaryLinearRegression& regression) {
    regression.SetInputData(predictors_, outcomes_);
    regression.SetNewtonParams(1e-12, 50);
    testing::internal::CaptureStdout();
    regression.MaximizeLogLikelihood();
    return testing::internal::GetCapturedStdout();
  }

  std::vector<double> predictors_;
  std::vector<int> outcomes_;
};

struct FitCase {
  unsigned int type;
  double logLikelihood;
  std::vector<double> coefficients, errors;
};

TEST_F(BirthWeight, MatchesIndependentFits) {
  // The logistic figures are those of R 4.2's glm. Its probit, which iterates on the expected
  // information, stops at nine digits and takes its errors from there; the probit figures here,
  // with the errors of the observed information, are those of statsmodels 0.13.
  const FitCase cases[] = {{Logistic,
                            -105.888919550999,
                            {1.3997941575742920, -0.0340731410076444, -0.0154471000053400,
                             0.6475397216493709, 1.8932741700883626, 0.8846067846449269},
                            {1.08040786942113454, 0.03367394342574437, 0.00658679441790016,
                             0.33665021416572527, 0.68339275875147065, 0.44405143047066270}},
                           {Probit,
                            -105.688038443564,
                            {0.824254907996, -0.021789840739, -0.00906366195706, 0.404759042415,
                             1.14195966163, 0.545887930395},
                            {0.629646729396, 0.0203424278145, 0.00371857918495, 0.201130704848,
                             0.407614795216, 0.266895450146}}};
  for (const FitCase& c : cases) {
    QVBinaryLinearRegression regression(6, 189, c.type);
    const std::string text = Fit(regression);
    std::vector<double> w, sigma;
    regression.GetBetaSigma(w, sigma);
    ASSERT_EQ(w.size(), 6u);
    for (std::size_t j = 0; j < 6; ++j) {
      EXPECT_THAT(w[j], IsCloseTo(c.coefficients[j], 1e-9)) << c.type << ' ' << j;
      EXPECT_THAT(sigma[j], IsCloseTo(c.errors[j], 1e-8)) << c.type << ' ' << j;
    }
    std::ostringstream head;
    head << "bestLogLikelihood = " << c.logLikelihood << "\n{w opt, sigma opt} = {" << w[0] << ", "
         << sigma[0] << "}, ";
    EXPECT_EQ(text.rfind(head.str(), 0), 0u) << text;
    EXPECT_EQ(text.substr(text.size() - 4), "}, \n");
  }
}

TEST_F(BirthWeight, ASecondFitAppendsItsCoefficients) {
  QVBinaryLinearRegression regression(6, 189, Logistic);
  Fit(regression);
  Fit(regression);
  std::vector<double> w, sigma, probabilities;
  regression.GetBetaSigma(w, sigma);
  EXPECT_EQ(w.size(), 12u);
  EXPECT_EQ(sigma.size(), 6u);
  regression.Predict(189, predictors_, probabilities);
  double sum = 0.0;
  for (const double probability : probabilities) sum += probability;
  EXPECT_NEAR(sum, 59.0, 1e-8);  // with an intercept, the number of low weights among them
}

TEST(BinaryRegression, ObjectiveHandsOutWhatTheMinimiserNeeds) {
  const std::vector<double> x = {1, 0.5, 1, -2, 1, 3};
  const std::vector<int> y = {1, -1, 1};
  QVRegressionLogLikelihoodOpt objective(2, 3, Probit, x, y);
  const std::vector<double> zero = {0, 0}, w = {0.2, -0.4};
  EXPECT_THAT(objective(zero.data()), IsCloseTo(3 * std::log(2.0), 1e-14));
  std::vector<double> gradient, hessian;
  objective.CalculateGradientHessian_v2(w.data(), gradient, hessian);
  for (std::size_t j = 0; j < 2; ++j) {
    double expected = 0.0;
    for (std::size_t i = 0; i < 3; ++i)
      expected += V(Probit, y[i], x[2 * i] * 0.2 - x[2 * i + 1] * 0.4) * x[2 * i + j];
    EXPECT_THAT(gradient[j], IsCloseTo(expected, 1e-13));
  }
  EXPECT_EQ(hessian[1], hessian[2]);
  EXPECT_LT(hessian[0], 0.0);
  EXPECT_EQ(QVRegressionLogLikelihoodOpt(2, 0, Logistic, x, y)(w.data()), 0.0);
}

TEST(BinaryRegression, SaysWhenItDidNotConverge) {
  QVScopedRecordingSink sink;
  testing::internal::CaptureStdout();
  QVBinaryLinearRegression separable(1, 4, Logistic);
  separable.SetInputData({-2, -1, 1, 2}, {-1, -1, 1, 1});
  separable.SetNewtonParams(1e-10, 25);
  separable.MaximizeLogLikelihood();
  QVBinaryLinearRegression tooFew(2, 4, Logistic);
  tooFew.SetInputData({1, 2, 3}, {1, -1});
  tooFew.MaximizeLogLikelihood();
  testing::internal::GetCapturedStdout();
  const auto warnings = sink.GetTexts(QVErrorLevel::Warning);
  ASSERT_EQ(warnings.size(), 1u);
  EXPECT_THAT(warnings[0], testing::HasSubstr("not converged after 25 iterations"));
  EXPECT_EQ(sink.GetTexts(QVErrorLevel::Error).size(), 1u);
  std::vector<double> w, sigma;
  separable.GetBetaSigma(w, sigma);
  EXPECT_GT(w[0], 10.0);
  tooFew.GetBetaSigma(w, sigma);
  EXPECT_TRUE(w.empty());
}

}  // namespace
}  // namespace QVStats
