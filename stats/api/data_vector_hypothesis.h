/// \file
/// \brief Tests of hypotheses: do two samples, or a sample and a distribution, differ?
///
/// Samples are clean values in any order: missing and bad data have been removed. The p-value is
/// the probability, if there is no difference, of a statistic at least as far from what is then
/// expected as the one that was found.
///
///     QVStatModelResult result(true);
///     const QVTestOutcome outcome = QVGetTwoSampleTestForDataVecs(
///         result, QVTwoSampleTestType::RankSum, QVTestAlternative::TwoSided, actives, inactives);
///     if (result.IsSuccessful() && outcome.pValue < 0.01) ...
#ifndef QVSTATS_API_DATA_VECTOR_HYPOTHESIS_H
#define QVSTATS_API_DATA_VECTOR_HYPOTHESIS_H

#include <string>
#include <utility>
#include <vector>

#include "stats/api/export.h"
#include "stats/api/pdf.h"
#include "stats/api/stat_model.h"
#include "stats/api/stats_data_types.h"

namespace QVStats {

/// What the p-value is evidence for.
enum class QVTestAlternative {
  TwoSided,  ///< The samples differ.
  Less,      ///< The first sample's values are smaller.
  /// The first sample's values are larger. Of a Kolmogorov-Smirnov test this is the alternative
  /// that the first distribution function lies below the second, which other software calls "less".
  Greater,
};

/// What a test found; the bad double where there is no such number.
struct QVTestOutcome {
  double statistic = QVStatsBadData::BadDouble;
  double pValue = QVStatsBadData::BadDouble;
  /// Of a t statistic.
  double degreesOfFreedom = QVStatsBadData::BadDouble;
  /// Of tests by ranks and by distances: whether the p-value is that of the statistic's
  /// distribution at these sample sizes, not that of its limit for large ones.
  bool isExact = false;
};

/// Tests of two independent samples, x of m and y of n values.
namespace QVTwoSampleTestType {
/// No test.
inline constexpr unsigned int Null = 0;
/// Equal means, whatever the variances: t = (mx - my) / sqrt(vx/m + vy/n), by Student's t with
/// (vx/m + vy/n)^2 / ((vx/m)^2/(m-1) + (vy/n)^2/(n-1)) degrees of freedom; m, n >= 2. Source:
/// B. L. Welch, "The Generalization of 'Student's' Problem when Several Different Population
/// Variances are Involved", Biometrika 34(1-2), 1947, doi:10.1093/biomet/34.1-2.28.
inline constexpr unsigned int WelchT = 1;
/// Equal distributions, against a shift: U, the number of pairs (x, y) with x > y, ties counted
/// one half, so that U / (m n) is an area under the ROC curve. Exact when there are no ties and m
/// and n are below 50; otherwise normal, with the variance corrected for ties and U moved by 1/2
/// towards its mean. Source: H. B. Mann, D. R. Whitney, "On a Test of Whether one of Two Random
/// Variables is Stochastically Larger than the Other", Ann. Math. Stat. 18(1), 1947,
/// doi:10.1214/aoms/1177730491.
inline constexpr unsigned int RankSum = 2;
/// Equal distributions, against any difference: D, the largest distance between the empirical
/// distribution functions F of x and G of y: |F - G|, F - G (Less) or G - F (Greater). Exact for
/// m n <= 10^7, given the ties, in O(m n); otherwise the limit at D sqrt(m n / (m + n)). Source: J.
/// L. Hodges, "The Significance Probability of the Smirnov Two-Sample Test", Ark. Mat. 3, 1958,
/// doi:10.1007/BF02589501.
inline constexpr unsigned int KolmogorovSmirnov = 3;
inline constexpr unsigned int NumTypes = 4;
}  // namespace QVTwoSampleTestType

/// Tests of pairs (x, y), through their n differences x - y. Pairs whose second value is the same
/// number c test one sample against c.
namespace QVPairedTestType {
/// No test.
inline constexpr unsigned int Null = 0;
/// A mean difference of 0: t = d / sqrt(v / n), d and v the mean and variance of the differences,
/// by Student's t with n - 1 degrees of freedom; n >= 2.
inline constexpr unsigned int StudentT = 1;
/// Differences symmetric about 0: V, the sum of the ranks of |x - y| over the pairs with x > y.
/// Pairs of equal values are dropped. Exact when nothing is dropped or tied and n is below 50;
/// otherwise normal, corrected as the rank-sum test is. Source: F. Wilcoxon, "Individual
/// Comparisons by Ranking Methods", Biometrics Bull. 1(6), 1945, doi:10.2307/3001968.
inline constexpr unsigned int SignedRank = 2;
inline constexpr unsigned int NumTypes = 3;
}  // namespace QVPairedTestType

/// \return the name of a test; "No test" for any other code.
QVSTATS_EXPORT std::string QVGetTwoSampleTestName(unsigned int code);
QVSTATS_EXPORT std::string QVGetPairedTestName(unsigned int code);

/// \name Tests
/// Failures, each with the routine's name; the outcome is then bad doubles:
/// - EmptyStatModel: the code is that of no test.
/// - NoData: fewer values than the test needs, 1 unless told above.
/// - ArgumentValueWrong: a value is NaN, or nothing can be computed: t where the values do not vary
///   beyond rounding or are infinite, ranks where all values (or all differences from 0) are equal.
/// @{

/// \param code of QVTwoSampleTestType.
QVSTATS_EXPORT QVTestOutcome QVGetTwoSampleTestForDataVecs(QVStatModelResult& result,
                                                           unsigned int code,
                                                           QVTestAlternative alternative,
                                                           const std::vector<double>& first,
                                                           const std::vector<double>& second);
/// \param code of QVPairedTestType.
QVSTATS_EXPORT QVTestOutcome QVGetPairedTestForDataPairVec(
    QVStatModelResult& result, unsigned int code, QVTestAlternative alternative,
    const std::vector<std::pair<double, double>>& pairs);

/// Whether a sample of n values comes from a continuous distribution F: D, the largest distance of
/// its empirical distribution function from F, as of two samples with `pdf` as the second. Exact
/// for n <= 1000, one-sided for n <= 100 000, by the one-sided sum, its double where n D^2 > 5 and
/// a matrix power where not, with a relative error of 1e-9; otherwise the limit with a correction
/// of order 1/n, within 1e-4 of the p-value. A distribution that was fitted to the same values
/// gives p-values that are too large. Passes failures of the distribution on. Sources: G.
/// Marsaglia, W. W. Tsang, J. Wang, "Evaluating Kolmogorov's Distribution", J. Stat. Softw. 8(18),
/// 2003, doi:10.18637/jss.v008.i18; Z. W. Birnbaum, F. H. Tingey, "One-Sided Confidence Contours
/// for Probability Distribution Functions", Ann. Math. Stat. 22(4), 1951,
/// doi:10.1214/aoms/1177729550.
QVSTATS_EXPORT QVTestOutcome QVGetKolmogorovSmirnovTestForDataVec(QVStatModelResult& result,
                                                                  QVTestAlternative alternative,
                                                                  const std::vector<double>& data,
                                                                  const QVUniVarPDF& pdf);
/// @}

}  // namespace QVStats

#endif  // QVSTATS_API_DATA_VECTOR_HYPOTHESIS_H
