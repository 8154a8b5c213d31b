#include "platform/math/special_functions.h"

#include <gmock/gmock.h>

#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "tests/support/matchers.h"

namespace QVMath {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
const double kNaN = std::numeric_limits<double>::quiet_NaN();

/// A function as one of a vector of arguments, and arguments inside its domain.
struct FunctionCase {
  const char* name;
  std::vector<double> arguments;
  std::function<double(const std::vector<double>&)> function;
};
void PrintTo(const FunctionCase& row, std::ostream* out) { *out << row.name; }

double other = 0.0;
const FunctionCase kFunctions[] = {
    {"erf", {0.5}, [](const auto& v) { return QVerf(v[0]); }},
    {"erfc", {0.5}, [](const auto& v) { return QVerfc(v[0]); }},
    {"lgamma", {2.5}, [](const auto& v) { return QVlgamma(v[0]); }},
    {"digamma", {2.5}, [](const auto& v) { return QVDiGamma(v[0]); }},
    {"trigamma", {2.5}, [](const auto& v) { return QVTriGamma(v[0]); }},
    {"ibeta", {2, 3, 0.5}, [](const auto& v) { return QVIncompleteBeta(v[0], v[1], v[2]); }},
    {"ibetaOfLarge",
     {200, 300, 0.5},
     [](const auto& v) { return QVIncompleteBeta(v[0], v[1], v[2]); }},
    {"ibetac",
     {2, 3, 0.5},
     [](const auto& v) { return QVIncompleteBetaComplement(v[0], v[1], v[2]); }},
    {"igamma", {2, 1}, [](const auto& v) { return QVIncompleteGamma(v[0], v[1]); }},
    {"igammac", {2, 1}, [](const auto& v) { return QVIncompleteGammaComplement(v[0], v[1]); }},
    {"logBeta", {2, 30}, [](const auto& v) { return QVLogBeta(v[0], v[1]); }},
    {"stirlingError", {20}, [](const auto& v) { return QVStirlingError(v[0]); }},
    {"logOnePlusMinus", {0.5}, [](const auto& v) { return QVLogOnePlusMinus(v[0]); }},
    {"erfcInverse", {0.5}, [](const auto& v) { return QVerfcInverse(v[0]); }},
    {"igammacInverse",
     {2, 0.5},
     [](const auto& v) { return QVIncompleteGammaComplementInverse(v[0], v[1]); }},
    {"ibetaInverse",
     {2, 3, 0.5},
     [](const auto& v) { return QVIncompleteBetaInverse(v[0], v[1], v[2], other); }},
};

class SpecialFunctions : public testing::TestWithParam<FunctionCase> {};
INSTANTIATE_TEST_SUITE_P(All, SpecialFunctions, testing::ValuesIn(kFunctions),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_P(SpecialFunctions, PassNaNThrough) {
  const FunctionCase& row = GetParam();
  EXPECT_TRUE(std::isfinite(row.function(row.arguments)));
  for (std::size_t i = 0; i < row.arguments.size(); ++i) {
    std::vector<double> arguments = row.arguments;
    arguments[i] = kNaN;
    other = 0.0;
    EXPECT_TRUE(std::isnan(row.function(arguments))) << "argument " << i;
    if (std::string(row.name) == "ibetaInverse") {
      EXPECT_TRUE(std::isnan(other));
    }
  }
}

TEST_P(SpecialFunctions, ThrowNothingAtTheEndsOfTheLine) {
  const FunctionCase& row = GetParam();
  for (std::size_t i = 0; i < row.arguments.size(); ++i)
    for (const double extreme :
         {-kInfinity, -1e308, -2.0, -1.0, -0.5, -5e-324, 0.0, 5e-324, 1.0, 2.0, 1e308, kInfinity}) {
      std::vector<double> arguments = row.arguments;
      arguments[i] = extreme;
      EXPECT_NO_THROW(row.function(arguments)) << "argument " << i << " = " << extreme;
    }
}

TEST(GammaFamily, PolesAndInfinities) {
  for (const double pole : {0.0, -0.0, -1.0, -2.0, -171.0, -1e17}) {
    EXPECT_EQ(QVlgamma(pole), kInfinity) << pole;
    EXPECT_EQ(QVDiGamma(pole), -kInfinity) << pole;
    EXPECT_EQ(QVTriGamma(pole), kInfinity) << pole;
  }
  EXPECT_EQ(QVlgamma(kInfinity), kInfinity);
  EXPECT_EQ(QVDiGamma(kInfinity), kInfinity);
  EXPECT_EQ(QVTriGamma(kInfinity), 0.0);
  // Gamma(-1/2) = -2 sqrt(pi); psi(-1/2) = 2 + psi(1/2); psi'(-1/2) = 4 + pi^2 / 2.
  EXPECT_THAT(QVlgamma(-0.5), IsCloseTo(1.2655121234846454, 1e-15));
  EXPECT_THAT(QVDiGamma(-0.5), IsCloseTo(0.03648997397857652, 1e-13));
  EXPECT_THAT(QVTriGamma(-0.5), IsCloseTo(8.934802200544679, 1e-14));
}

// 50-digit values: the density of the beta distribution integrated by mpmath, far from the mean its
// continued fraction. The argument is the double itself, so its rounding shifts nothing.
TEST(IncompleteBeta, LargeParameters) {
  struct {
    double a, b, x, lower;
  } const rows[] = {
      {100.0, 100.0, 0.5, 0.5},
      {100.0, 100.0, 0.4753129034449491, 0.242648003997141919},
      {100.0, 100.0, 0.32366359603535044, 1.31865249776795192e-7},
      {100.0, 100.0, 0.006258068898981173, 1.0781074759569667e-162},
      {100.0, 100.0, 0.5529009211893948, 0.933011833629024642},
      {1000.0, 300000.0, 0.0033222591362126247, 0.504184260590265638},
      {1000.0, 300000.0, 0.003248840180564774, 0.243622634024796553},
      {1000.0, 300000.0, 0.002797838024442262, 6.50355757684152103e-8},
      {1000.0, 300000.0, 0.001853880023255609, 8.14279943897683857e-64},
      {1000.0, 300000.0, 0.0034795854697437334, 0.931555606513766907},
      {1000000.0, 1000000.0, 0.5, 0.5},
      {1000000.0, 1000000.0, 0.49975251268845655, 0.241963720801849151},
      {1000000.0, 1000000.0, 0.4982322334889752, 2.86631130049711335e-7},
      {1000000.0, 1000000.0, 0.4950502537691306, 7.75658440595209309e-45},
      {1000000.0, 1000000.0, 0.5005303299533075, 0.933192780517758418},
      {1000000000.0, 1000000000.0, 0.5, 0.5},
      {1000000000.0, 1000000000.0, 0.4999921737620807, 0.241963652291896554},
      {1000000000.0, 1000000000.0, 0.49994409830057646, 2.86651551433525744e-7},
      {1000000000.0, 1000000000.0, 0.49984347524161415, 7.79349978147765543e-45},
      {1000000000.0, 1000000000.0, 0.5000167705098271, 0.933192798713078431},
      {300000000.0, 7000000000.0, 0.0410958904109589, 0.500007196022502559},
      {300000000.0, 7000000000.0, 0.041094264025820414, 0.241966524711095523},
      {300000000.0, 7000000000.0, 0.041084273374255416, 2.86008547404114518e-7},
      {300000000.0, 7000000000.0, 0.04106336270818914, 7.41699155646144052e-45},
      {300000000.0, 7000000000.0, 0.04109937552196995, 0.933189878651423184},
      {10000000000000.0, 2500000000000.0, 0.8, 0.499999943737635712},
      {10000000000000.0, 2500000000000.0, 0.7999999208040406, 0.241963629923296858},
      {10000000000000.0, 2500000000000.0, 0.7999994343145751, 2.86656618619000599e-7},
      {10000000000000.0, 2500000000000.0, 0.7999984160808102, 7.79656160880886377e-45},
      {10000000000000.0, 2500000000000.0, 0.8000001697056275, 0.933192821626064482},
  };
  for (const auto& row : rows) {
    const double tolerance = 1e-15 * (5.0 + 2.0 * std::abs(std::log(row.lower)));
    EXPECT_THAT(QVIncompleteBeta(row.a, row.b, row.x), IsCloseTo(row.lower, tolerance))
        << row.a << " " << row.b << " " << row.x;
    EXPECT_THAT(QVIncompleteBetaComplement(row.a, row.b, row.x),
                IsCloseTo(1.0 - row.lower, tolerance))
        << row.a << " " << row.b << " " << row.x;
  }
  EXPECT_EQ(QVIncompleteBeta(1e9, 1e9, 0.25), 0.0);
  EXPECT_EQ(QVIncompleteBeta(1e9, 1e9, 0.75), 1.0);
}

}  // namespace
}  // namespace QVMath
