/// \file
/// \brief How well a ranking separates actives from decoys: the area under the ROC curve, its
/// standard errors, and the measures of early enrichment.
///
/// A ranking is given as flags, best rank first, true for an active; or as the scores of the
/// actives and of the decoys. A score that is not a number is neither better than, nor equal to,
/// any other, but counts as an object.
#ifndef QVSTATS_API_CALCAUC_H
#define QVSTATS_API_CALCAUC_H

#include <vector>

#include "stats/api/export.h"

namespace QVStats {

/// The AUC of a complete ranked list: the share of active-decoy pairs that are ranked correctly.
/// \return false, with `auc` unchanged, unless the list holds actives and decoys.
QVSTATS_EXPORT bool QVCalculateAUC(double& auc, const std::vector<bool>& ranked);

/// The AUC of a ranking of which only the top is known, with the total numbers of actives and
/// decoys. Every unseen decoy ranks below every seen active and ties with the unseen actives.
/// \return false, with `auc` unchanged, when a total is 0, or (with a warning) when the list holds
/// more actives or decoys than the total.
QVSTATS_EXPORT bool QVCalculateAUC(double& auc, const std::vector<bool>& ranked,
                                   unsigned int totalActives, unsigned int totalDecoys);

/// The AUC of scores, (number of pairs with the active better + half the number of ties) / pairs:
/// the Mann-Whitney statistic. O(n) expected time for scores that are spread evenly, O(n log n) at
/// worst; the count is exact. \return the AUC; not a number when there are no actives or no decoys.
QVSTATS_EXPORT double QVCalculateAUC(const std::vector<double>& activeScores,
                                     const std::vector<double>& decoyScores, bool higherIsBetter);

/// The standard error of an AUC A from the sizes of the two groups alone, with Q1 = A / (2 - A) and
/// Q2 = 2 A^2 / (1 + A):
/// sqrt((A (1 - A) + (n_a - 1)(Q1 - A^2) + (n_d - 1)(Q2 - A^2)) / (n_a n_d)).
/// Source: J. A. Hanley, B. J. McNeil, Radiology 143, 1982, 29-36.
QVSTATS_EXPORT double QVCalculateStandardError(double auc, unsigned int numActives,
                                               unsigned int numDecoys);

/// The standard error of the AUC of scores, from the variances of the placement values.
/// Source: E. R. DeLong, D. M. DeLong, D. L. Clarke-Pearson, Biometrics 44, 1988, 837-845.
/// \return not a number with fewer than two actives or two decoys.
QVSTATS_EXPORT double QVCalculateDeLongStandardError(const std::vector<double>& activeScores,
                                                     const std::vector<double>& decoyScores,
                                                     bool higherIsBetter);

/// Two rankings of the same objects, compared.
struct QVAUCComparison {
  double aucA;
  double aucB;
  double difference;     ///< aucA - aucB
  double standardError;  ///< of the difference, with the covariance of the two rankings
  double z;              ///< difference / standardError
  double pValue;         ///< two-sided, from the normal distribution
};

/// The paired test of DeLong, DeLong and Clarke-Pearson (1988). Entry i of both lists of actives is
/// the same object, likewise of both lists of decoys. \return all fields not a number when the
/// lists differ in length or a list has fewer than two scores; z and pValue are not a number when
/// the rankings agree on every placement.
QVSTATS_EXPORT QVAUCComparison QVCompareAUC(const std::vector<double>& activeScoresA,
                                            const std::vector<double>& decoyScoresA,
                                            const std::vector<double>& activeScoresB,
                                            const std::vector<double>& decoyScoresB,
                                            bool higherIsBetter);

/// A point of a ROC curve.
struct QVROCPoint {
  double falsePositiveRate;
  double truePositiveRate;
  double threshold;  ///< objects with this score or a better one are called active
};

/// The corners of the ROC curve, from (0, 0) to (1, 1); tied scores make one slanted step. Scores
/// that are not a number come last, tied. The first threshold is the infinity that calls nothing
/// active. \return empty when there are no actives or no decoys.
QVSTATS_EXPORT std::vector<QVROCPoint> QVGetROCCurve(const std::vector<double>& activeScores,
                                                     const std::vector<double>& decoyScores,
                                                     bool higherIsBetter);

/// The same of a complete ranked list; the threshold of a point is its number of ranks.
QVSTATS_EXPORT std::vector<QVROCPoint> QVGetROCCurve(const std::vector<bool>& ranked);

/// The area under a ROC curve up to a false positive rate f in (0, 1]. Standardised it is
/// (1 + (area - f^2/2) / (f - f^2/2)) / 2, which is 0.5 for a random and 1 for a perfect ranking.
/// Source: D. K. McClish, Med. Decis. Making 9, 1989, 190-195.
/// \return not a number for an empty curve or an f out of range.
QVSTATS_EXPORT double QVCalculatePartialAUC(const std::vector<QVROCPoint>& curve,
                                            double maxFalsePositiveRate, bool standardised);

/// The area under a ROC curve drawn over log10 of the false positive rate from lambda to 1, divided
/// by log10(1 / lambda); a random ranking has about 0.1446 for lambda = 0.001. Source: M. M.
/// Mysinger, B. K. Shoichet, J. Chem. Inf. Model. 50, 2010, 1561-1573. \return not a number for an
/// empty curve or a lambda outside (0, 1).
QVSTATS_EXPORT double QVCalculateLogAUC(const std::vector<QVROCPoint>& curve,
                                        double lambda = 0.001);

/// The share of actives among the first ceil(fraction * n) objects over their share among all.
/// \return not a number for a list without actives or a fraction outside (0, 1].
QVSTATS_EXPORT double QVCalculateEnrichmentFactor(const std::vector<bool>& ranked, double fraction);

/// The Boltzmann-enhanced discrimination of the ROC curve, in [0, 1]: exponential weights
/// exp(-alpha rank / n) put the stress on the early ranks (alpha = 20: 80 % of the score from the
/// first 8 %). Source: J.-F. Truchon, C. I. Bayly, J. Chem. Inf. Model. 47, 2007, 488-508. \return
/// not a number unless the list holds actives and decoys and alpha > 0.
QVSTATS_EXPORT double QVCalculateBEDROC(const std::vector<bool>& ranked, double alpha = 20.0);

}  // namespace QVStats

#endif  // QVSTATS_API_CALCAUC_H
