#include "stats/api/data_vector_hypothesis.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "platform/math/random.h"
#include "stats/kolmogorov_smirnov.h"
#include "tests/support/matchers.h"

namespace QVStats {
namespace {

using Values = std::vector<double>;
using Pairs = std::vector<std::pair<double, double>>;
using QVStatsBadData::BadDouble;
namespace Failure = QVStatModelFailureType;
namespace Two = QVTwoSampleTestType;
namespace Paired = QVPairedTestType;

constexpr auto kTwoSided = QVTestAlternative::TwoSided;
constexpr auto kLess = QVTestAlternative::Less;
constexpr auto kGreater = QVTestAlternative::Greater;

// The examples of R's wilcox.test: depression scores at two visits, and membrane permeability.
const Values kA = {1.83, 0.50, 1.62, 2.48, 1.68, 1.88, 1.55, 3.06, 1.30};
const Values kB = {0.878, 0.647, 0.598, 2.05, 1.06, 1.29, 1.06, 3.14, 1.29};
const Values kC = {0.80, 0.83, 1.89, 1.04, 1.45, 1.38, 1.91, 1.64, 0.73, 1.46};
const Values kD = {1.15, 0.88, 0.90, 0.74, 1.21};
// R's data set sleep: extra hours with two drugs, with ties and a difference of 0.
const Values kS1 = {0.7, -1.6, -0.2, -1.2, -0.1, 3.4, 3.7, 0.8, 0.0, 2.0};
const Values kS2 = {1.9, 0.8, 1.1, 0.1, -0.1, 4.4, 5.5, 1.6, 4.6, 3.4};

/// sqrt(1) ... sqrt(n), and 1.3 + i/8: large samples without ties.
Values GetRoots(int n) {
  Values roots;
  for (int i = 1; i <= n; ++i) roots.push_back(std::sqrt(i));
  return roots;
}
Values GetLine() {
  Values line;
  for (int i = 1; i <= 60; ++i) line.push_back(1.3 + i / 8.0);
  return line;
}
const Values kP = GetRoots(80), kQ = GetLine();

struct TestCase {
  unsigned int code;
  const Values& first;
  const Values& second;
  double statistic;         // two-sided
  double pValues[3];        // two-sided, less, greater
  double degreesOfFreedom;  // 0: none
  bool isExact;
};

/// \param getOutcome of an alternative.
template <class GetOutcome>
void ExpectOutcomes(const TestCase& row, const std::string& name, GetOutcome getOutcome) {
  constexpr QVTestAlternative kAlternatives[] = {kTwoSided, kLess, kGreater};
  for (int k = 0; k < 3; ++k) {
    SCOPED_TRACE(name + ", alternative " + std::to_string(k));
    QVStatModelResult result(false);
    const QVTestOutcome outcome = getOutcome(result, kAlternatives[k]);
    EXPECT_TRUE(result.IsSuccessful());
    if (k == 0) {
      EXPECT_THAT(outcome.statistic, IsCloseTo(row.statistic, 1e-13));
    }
    EXPECT_THAT(outcome.pValue, IsCloseTo(row.pValues[k], 2e-11));
    EXPECT_THAT(outcome.degreesOfFreedom,
                IsCloseTo(row.degreesOfFreedom == 0 ? BadDouble : row.degreesOfFreedom, 1e-13));
    EXPECT_EQ(outcome.isExact, row.isExact);
  }
}

// R 4.2.2: t.test(x, y, alternative = a), wilcox.test(x, y, alternative = a) and
// ks.test(x, y, alternative = a, exact = TRUE), there with "less" and "greater" exchanged.
const TestCase kTwoSample[] = {
    {Two::WelchT,
     kC,
     kD,
     2.0413830922100695,
     {0.062101343781078469, 0.96894932810946077, 0.031050671890539235},
     12.970538443257542,
     false},
    {Two::RankSum,
     kC,
     kD,
     35,
     {0.2544122544122544, 0.89676989676989671, 0.1272061272061272},
     0,
     true},
    {Two::KolmogorovSmirnov,
     kC,
     kD,
     0.60000000000000009,
     {0.16583416583416366, 0.90909090909090884, 0.082917082917080553},
     0,
     true},
    {Two::WelchT,
     kS1,
     kS2,
     -1.8608134674868531,
     {0.079394140187358173, 0.039697070093679086, 0.96030292990632093},
     17.776473516178498,
     false},
    {Two::RankSum,
     kS1,
     kS2,
     25.5,
     {0.069327575433626581, 0.034663787716813291, 0.97075166860727435},
     0,
     false},
    {Two::KolmogorovSmirnov,
     kS1,
     kS2,
     0.40000000000000002,
     {0.39682608413257958, 0.19895429647750817, 1},
     0,
     true},
    {Two::WelchT,
     kP,
     kQ,
     2.4694496249389108,
     {0.014891571734727155, 0.99255421413263645, 0.0074457858673635776},
     124.10435405623009,
     false},
    {Two::RankSum,
     kP,
     kQ,
     2981,
     {0.014511503920159504, 0.99282850754915652, 0.0072557519600797522},
     0,
     false},
    {Two::KolmogorovSmirnov,
     kP,
     kQ,
     0.19166666666666665,
     {0.14414337677099998, 0.94357785583501075, 0.07209359473646848},
     0,
     true},
};

TEST(HypothesisTests, OfTwoSamplesAgreeWithR) {
  for (const TestCase& row : kTwoSample)
    ExpectOutcomes(row, QVGetTwoSampleTestName(row.code), [&](auto& result, auto alternative) {
      return QVGetTwoSampleTestForDataVecs(result, row.code, alternative, row.first, row.second);
    });
}

// R 4.2.2: t.test(x, y, paired = TRUE, alternative = a), wilcox.test with the same arguments.
const Values kP60 = GetRoots(60);
const TestCase kPaired[] = {
    {Paired::StudentT,
     kA,
     kB,
     3.0353754156485913,
     {0.016176627434908095, 0.99191168628254589, 0.0080883137174540473},
     8,
     false},
    {Paired::SignedRank, kA, kB, 40, {0.0390625, 0.986328125, 0.01953125}, 0, true},
    {Paired::StudentT,
     kS1,
     kS2,
     -4.0621276833820366,
     {0.0028328901973842702, 0.0014164450986921351, 0.99858355490130779},
     9,
     false},
    {Paired::SignedRank,
     kS1,
     kS2,
     0,
     {0.0090906980159250559, 0.0045453490079625279, 0.99680626672425776},
     0,
     false},
    {Paired::StudentT,
     kP60,
     kQ,
     1.6417447816536668,
     {0.10596327110859528, 0.94701836444570242, 0.052981635554297642},
     59,
     false},
    {Paired::SignedRank,
     kP60,
     kQ,
     1143,
     {0.093979297348679575, 0.95372837517173104, 0.046989648674339787},
     0,
     false},
};

TEST(HypothesisTests, OfPairsAgreeWithR) {
  for (const TestCase& row : kPaired) {
    Pairs pairs;
    for (std::size_t i = 0; i < row.first.size(); ++i)
      pairs.emplace_back(row.first[i], row.second[i]);
    ExpectOutcomes(row, QVGetPairedTestName(row.code), [&](auto& result, auto alternative) {
      return QVGetPairedTestForDataPairVec(result, row.code, alternative, pairs);
    });
  }
}

// All orders of small samples, counted: no formula in common with the tests. The ties are not the
// same read backwards, so that both directions differ.
TEST(HypothesisTests, ExactPValuesAreSharesOfAllOrders) {
  const std::size_t m = 4, n = 5;
  const Values values = {1, 2, 2, 3, 4, 4, 4, 5, 6}, untied = {1, 2, 3, 4, 5, 6, 7, 8, 9};
  for (const unsigned int code : {Two::RankSum, Two::KolmogorovSmirnov})
    for (const auto alternative : {kTwoSided, kLess, kGreater}) {
      const Values& pooled = code == Two::RankSum ? untied : values;
      std::vector<std::pair<double, double>> outcomes;
      for (unsigned int bits = 0; bits < 1u << (m + n); ++bits) {
        Values x, y;
        for (std::size_t i = 0; i < m + n; ++i) (bits >> i & 1u ? x : y).push_back(pooled[i]);
        if (x.size() != m) continue;
        QVStatModelResult result;
        const auto outcome = QVGetTwoSampleTestForDataVecs(result, code, alternative, x, y);
        double extremity = outcome.statistic;
        if (code == Two::RankSum && alternative == kLess) extremity = -extremity;
        if (code == Two::RankSum && alternative == kTwoSided)
          extremity = std::abs(extremity - 0.5 * static_cast<double>(m * n));
        outcomes.emplace_back(extremity, outcome.pValue);
      }
      ASSERT_EQ(outcomes.size(), 126u);
      for (const auto& one : outcomes) {
        const auto asExtreme = std::count_if(outcomes.begin(), outcomes.end(), [&](const auto& o) {
          return o.first >= one.first - 1e-12;
        });
        EXPECT_THAT(one.second, IsCloseTo(static_cast<double>(asExtreme) / 126.0, 1e-13));
      }
    }
}

// The sum of Birnbaum and Tingey and the matrix of Marsaglia, Tsang and Wang in 60 digits (mpmath).
TEST(KolmogorovSmirnov, TailsAreThoseOfHighPrecisionArithmetic) {
  const struct {
    std::size_t n;
    double d, twoSided, oneSided;
  } rows[] = {
      {1, 0.75, 0.5, 0.25},
      {3, 0.4, 0.59466666666666661, 0.3013333333333333},
      {10, 0.25, 0.4841115325, 0.24491372483398437},
      {10, 0.45, 0.022891810311718745, 0.01144590521816406},
      {10, 0.6, 0.00056816720000000037, 0.00028408360000000019},
      {50, 0.1, 0.66231127046581848, 0.34490701996888},
      {50, 0.3, 0.00017353260202718067, 8.6766301013593688e-5},
      {50, 0.33, 2.3643144493804053e-5, 1.1821572246902027e-5},
      {400, 0.02, 0.99629570724747009, 0.71664022945547177},
      {400, 0.05, 0.26121260292565059, 0.1308963539251094},
      {400, 0.11, 0.00011378168022899472, 5.6890840114505003e-5},
      {1000, 0.04, 0.079339554975401224, 0.039672223454917563},
      {1000, 0.08, 5.1541893847898239e-6, 2.577094692394912e-6},
  };
  for (const auto& row : rows) {
    EXPECT_THAT(QVGetOneSampleKolmogorovTail(row.d, row.n, true), IsCloseTo(row.twoSided, 1e-9))
        << row.n << " " << row.d;
    EXPECT_THAT(QVGetOneSampleKolmogorovTail(row.d, row.n, false), IsCloseTo(row.oneSided, 1e-11))
        << row.n << " " << row.d;
  }
  EXPECT_EQ(QVGetOneSampleKolmogorovTail(0.0, 5, true), 1.0);
  EXPECT_EQ(QVGetOneSampleKolmogorovTail(0.1, 5, true), 1.0);
  EXPECT_EQ(QVGetOneSampleKolmogorovTail(1.0, 5, true), 0.0);
}

// scipy.stats.kstwo.sf and ksone.sf of SciPy 1.10.
TEST(KolmogorovSmirnov, LimitsAreCloseForLargeSamples) {
  const struct {
    std::size_t n;
    double d, twoSided, oneSided;
  } rows[] = {
      {1001, 0.02, 0.8104254267868812, 0.4430703580213952},
      {1001, 0.04, 0.079086036174708, 0.039545430077698465},
      {1001, 0.06, 0.0014183407311842767, 0.0007091703655921383},
      {10000, 0.008, 0.5414432241521093, 0.27656120303908555},
      {10000, 0.013, 0.06750118848339082, 0.03375189013938929},
      {10000, 0.02, 0.0006616848639387309, 0.00033084243196936547},
      {1000000, 0.001, 0.26982107442589376, 0.1352450897649141},
      {1000000, 0.0015, 0.022195758430640866, 0.011097879215320433},
  };
  for (const auto& row : rows) {
    EXPECT_THAT(QVGetOneSampleKolmogorovTail(row.d, row.n, true), IsCloseTo(row.twoSided, 1e-4))
        << row.n << " " << row.d;
    EXPECT_THAT(QVGetOneSampleKolmogorovTail(row.d, row.n, false), IsCloseTo(row.oneSided, 1e-4))
        << row.n << " " << row.d;
  }
}

// R 4.2.2: ks.test(x, "pnorm", 4.5, 2, alternative = a, exact = TRUE), tails as above, and
// ks.test(x, "pgamma", 2, 1.5, exact = TRUE).
TEST(KolmogorovSmirnov, OfASampleAndADistributionAgreesWithR) {
  QVStatModelResult result(true);
  const QVUniVarPDF normal = QVUnivariateGaussian("x", 4.5, 0.25, result);
  const QVUniVarPDF gamma = QVGamma("x", 2.0, 1.5, result);
  const struct {
    const QVUniVarPDF& pdf;
    const Values& data;
    QVTestAlternative alternative;
    double statistic, pValue;
  } rows[] = {
      {normal, kA, kTwoSided, 0.76423750222074882, 5.3027587717524582e-06},
      {normal, kA, kLess, 0.76423750222074882, 2.6513793860427626e-06},
      {normal, kA, kGreater, 0.022750131948179212, 0.97276419140295056},
      {normal, kP60, kTwoSided, 0.20429942594577488, 0.011314187193553593},
      {normal, kP60, kLess, 0.052296482496324737, 0.69630371019577386},
      {normal, kP60, kGreater, 0.20429942594577488, 0.0056570941543607756},
      {gamma, kA, kTwoSided, 0.46918037770867388, 0.024493988867931193},
  };
  for (const auto& row : rows) {
    const auto outcome =
        QVGetKolmogorovSmirnovTestForDataVec(result, row.alternative, row.data, row.pdf);
    EXPECT_THAT(outcome.statistic, IsCloseTo(row.statistic, 1e-14));
    EXPECT_THAT(outcome.pValue, IsCloseTo(row.pValue, 1e-9)) << row.statistic;
    EXPECT_TRUE(outcome.isExact && result.IsSuccessful());
  }
  // Values that the distribution cannot take stand at its ends.
  EXPECT_EQ(QVGetKolmogorovSmirnovTestForDataVec(result, kTwoSided, {-1, -2}, gamma).statistic,
            1.0);
  const QVUniVarPDF beta = QVBeta("x", 1.0, 1.0, result);
  EXPECT_EQ(QVGetKolmogorovSmirnovTestForDataVec(result, kTwoSided, {0.25, 7}, beta).statistic,
            0.5);
  EXPECT_TRUE(result.IsSuccessful());
  QVGetKolmogorovSmirnovTestForDataVec(result, kTwoSided, kA, QVUniVarNullPDF("x"));
  EXPECT_EQ(result.GetFailureType(), Failure::NullProbDistFunc);
}

// A true hypothesis is rejected as often as the level says: sizes on both sides of each limit.
TEST(HypothesisTests, HoldTheirLevel) {
  QVMath::QVRanNumEngine engine(17);
  const QVMath::QVGaussianRNG normal;
  QVStatModelResult result;
  const QVUniVarPDF standard = QVUnivariateGaussian("x", 0.0, 1.0, result);
  for (const std::size_t n : {12u, 60u}) {
    const int numTrials = 1000;
    int rejected[5] = {};
    for (int trial = 0; trial < numTrials; ++trial) {
      const Values x = normal.Draw(engine, n), y = normal.Draw(engine, n + 5);
      Pairs pairs;
      for (std::size_t i = 0; i < n; ++i) pairs.emplace_back(x[i], y[i]);
      for (unsigned int code = 1; code < 4; ++code)
        rejected[code - 1] +=
            QVGetTwoSampleTestForDataVecs(result, code, kTwoSided, x, y).pValue <= 0.1;
      rejected[3] +=
          QVGetPairedTestForDataPairVec(result, Paired::SignedRank, kGreater, pairs).pValue <= 0.1;
      rejected[4] +=
          QVGetKolmogorovSmirnovTestForDataVec(result, kTwoSided, x, standard).pValue <= 0.1;
    }
    // 100 expected, fewer where the statistic moves in steps; the standard deviation is 9.5.
    for (const int count : rejected) {
      EXPECT_GE(count, 50) << n;
      EXPECT_LE(count, 138) << n;
    }
  }
}

TEST(HypothesisTests, BadInput) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double infinity = std::numeric_limits<double>::infinity();
  const struct {
    unsigned int code;
    Values first, second;
    unsigned int failure;
    const char* comment;
  } rows[] = {
      {Two::Null, kA, kB, Failure::EmptyStatModel, "Test: 0"},
      {Two::NumTypes, kA, kB, Failure::EmptyStatModel, "Test: 4"},
      {Two::WelchT, {}, kB, Failure::NoData, "First sample: 0 values, at least 2 are needed"},
      {Two::WelchT, kA, {1}, Failure::NoData, "Second sample: 1 values, at least 2 are needed"},
      {Two::RankSum, kA, {}, Failure::NoData, "Second sample: 0 values, at least 1 are needed"},
      {Two::KolmogorovSmirnov,
       {1, nan},
       kB,
       Failure::ArgumentValueWrong,
       "First sample: value 1 is not a number"},
      {Two::WelchT,
       {0.1, 0.1, 0.1},
       {0.1, 0.1},
       Failure::ArgumentValueWrong,
       "The values do not vary or are not finite"},
      {Two::WelchT,
       {1, infinity},
       {1, 2},
       Failure::ArgumentValueWrong,
       "The values do not vary or are not finite"},
      {Two::RankSum, {3, 3}, {3}, Failure::ArgumentValueWrong, "All values are equal"},
  };
  QVStatModelResult result(true);
  for (const auto& row : rows) {
    const auto outcome =
        QVGetTwoSampleTestForDataVecs(result, row.code, kTwoSided, row.first, row.second);
    EXPECT_THAT(result,
                FailedAlong(row.failure, std::vector<std::string>{"QVGetTwoSampleTestForDataVecs"},
                            std::vector<std::string>{row.comment}));
    EXPECT_EQ(outcome.statistic, BadDouble);
    EXPECT_EQ(outcome.pValue, BadDouble);
  }
  const struct {
    unsigned int code;
    Pairs pairs;
    unsigned int failure;
  } pairedRows[] = {
      {Paired::NumTypes, {{1, 2}}, Failure::EmptyStatModel},
      {Paired::StudentT, {{1, 2}}, Failure::NoData},
      {Paired::StudentT, {{1, 2}, {2, 3}, {5, 6}}, Failure::ArgumentValueWrong},
      {Paired::SignedRank, {}, Failure::NoData},
      {Paired::SignedRank, {{1, 1}, {2, 2}}, Failure::ArgumentValueWrong},
      {Paired::SignedRank, {{infinity, infinity}}, Failure::ArgumentValueWrong},
  };
  for (const auto& row : pairedRows) {
    QVGetPairedTestForDataPairVec(result, row.code, kTwoSided, row.pairs);
    EXPECT_THAT(result, FailedWith(row.failure, "QVGetPairedTestForDataPairVec"));
  }
  // Samples without any difference are no failure of a test of distances.
  EXPECT_EQ(
      QVGetTwoSampleTestForDataVecs(result, Two::KolmogorovSmirnov, kTwoSided, {3, 3}, {3}).pValue,
      1.0);
  EXPECT_TRUE(result.IsSuccessful());
}

}  // namespace
}  // namespace QVStats
