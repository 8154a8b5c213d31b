/// \file
/// \brief Univariate distributions fitted to samples by maximum likelihood.
///
///     QVStatModelResult result(true);
///     const QVPDFFit fit = QVFitGamma("half-life", halfLives, result);
///     // fit.parameters[0] +- fit.standardErrors[0] is the shape.
///
/// The likelihood is climbed by Newton steps, with its exact derivatives, from an estimate by
/// moments or quantiles. Where it has several maxima, as that of Student's t may have, the one
/// above that estimate is found. Standard errors come from the inverse of the observed information,
/// the negative second derivatives of the log-likelihood: they hold for large samples.
/// Sources: N. L. Johnson, S. Kotz, N. Balakrishnan, "Continuous Univariate Distributions", 2nd
/// ed., 1994-95; J. R. M. Hosking, J. R. Wallis, E. F. Wood, "Estimation of the Generalized
/// Extreme- Value Distribution by the Method of Probability-Weighted Moments", Technometrics 27(3),
/// 1985.
#ifndef QVSTATS_API_PDF_FIT_H
#define QVSTATS_API_PDF_FIT_H

#include <cstdint>
#include <string>
#include <vector>

#include "stats/api/export.h"
#include "stats/api/pdf.h"
#include "stats/api/stat_model.h"

namespace QVStats {

/// A fitted distribution. After a failure the distribution is a null one, the vectors are empty and
/// the log-likelihood is the bad double.
struct QVSTATS_EXPORT QVPDFFit {
  QVUniVarPDF pdf;
  /// In the order of the family's factory.
  std::vector<double> parameters;
  /// One for each parameter, in its unit; the bad double where they do not exist (see
  /// QVFitGeneralizedExtremeValue).
  std::vector<double> standardErrors;
  /// Of the parameters, k x k, row by row; empty where standard errors do not exist.
  std::vector<double> covariance;
  /// The sum of the logarithms of the density over the sample.
  double logLikelihood;
  /// Newton steps taken.
  unsigned int numSteps;
};

/// \name Fits of the families
/// The sample needs as many values as there are parameters, each of them finite.
///
/// Failures, in `result`, under the name of the function:
/// - NoData: too few values;
/// - MissingOrBadResponseValue: a value is a sentinel, infinite or NaN;
/// - LowerBoundViolated, UpperBoundViolated: a value is outside of the open support of the family;
/// - SingularScaleOrCovariance: all values are equal (for chi-squared they may be);
/// - WrongPDFType: the likelihood has no maximum in the family; it grows as a parameter goes to a
///   limit, as the degrees of freedom of Student's t do on samples with lighter tails than the
///   Gaussian;
/// - InternalLogicFailure: no maximum found after 200 steps.
/// A comment names the value or the parameter.
/// @{

/// Mean and inverse variance, in closed form; the variance is the mean square deviation.
QVSTATS_EXPORT QVPDFFit QVFitUnivariateGaussian(const std::string& variableName,
                                                const std::vector<double>& sample,
                                                QVStatModelResult& result);
/// Degrees of freedom, location and precision.
QVSTATS_EXPORT QVPDFFit QVFitUnivariateStudentsT(const std::string& variableName,
                                                 const std::vector<double>& sample,
                                                 QVStatModelResult& result);
/// Shape and inverse scale.
QVSTATS_EXPORT QVPDFFit QVFitGamma(const std::string& variableName,
                                   const std::vector<double>& sample, QVStatModelResult& result);
/// Degrees of freedom.
QVSTATS_EXPORT QVPDFFit QVFitChiSquare(const std::string& variableName,
                                       const std::vector<double>& sample,
                                       QVStatModelResult& result);
/// Degrees of freedom of numerator and denominator.
QVSTATS_EXPORT QVPDFFit QVFitSnedecorsF(const std::string& variableName,
                                        const std::vector<double>& sample,
                                        QVStatModelResult& result);
/// Alpha and beta.
QVSTATS_EXPORT QVPDFFit QVFitBeta(const std::string& variableName,
                                  const std::vector<double>& sample, QVStatModelResult& result);
/// Location and scale.
QVSTATS_EXPORT QVPDFFit QVFitGumbel(const std::string& variableName,
                                    const std::vector<double>& sample, QVStatModelResult& result);
/// Location, scale and shape. There is no maximum with a shape below -1 (WrongPDFType), and there
/// are no standard errors with one of -1/2 or less.
/// Source: R. L. Smith, "Maximum likelihood estimation in a class of nonregular cases", Biometrika
/// 72(1), 1985.
QVSTATS_EXPORT QVPDFFit QVFitGeneralizedExtremeValue(const std::string& variableName,
                                                     const std::vector<double>& sample,
                                                     QVStatModelResult& result);
/// The fit of a family by its code of QVPDFType; WrongPDFType for any but those above.
QVSTATS_EXPORT QVPDFFit QVFitUnivariatePDF(std::uint64_t pdfType, const std::string& variableName,
                                           const std::vector<double>& sample,
                                           QVStatModelResult& result);
/// @}

}  // namespace QVStats

#endif  // QVSTATS_API_PDF_FIT_H
