/// \file
/// \brief The implementations of the single families of distributions.
///
/// Percentiles of the Gaussian, Student's t, gamma, chi-squared, F, beta and mixture distributions
/// are found by Newton steps inside a shrinking bracket, at most 100 of them, after at most 100
/// doublings for each end of the bracket; those of the Gumbel and generalised extreme value
/// distributions are known in closed form. Vectors of 256 and more probabilities share searches: a
/// percentile is then interpolated and corrected, with a distribution function right to rounding,
/// where the search stops within its tolerance (5e-10 for Student's t, 2.2e-14). Upper-tail
/// percentiles come from inverse incomplete beta and gamma functions. Source of the formulas: N. L.
/// Johnson, S. Kotz, N. Balakrishnan, "Continuous Univariate Distributions", 2nd ed., 1994-95.
#ifndef QVSTATS_API_PDF_FAMILIES_H
#define QVSTATS_API_PDF_FAMILIES_H

#include <array>
#include <atomic>
#include <cstddef>
#include <limits>
#include <string>
#include <vector>

#include "stats/api/export.h"
#include "stats/api/pdf.h"
#include "stats/api/pdf_impl.h"
#include "stats/api/private/pdf_laws.h"

namespace QVStats {

/// A number computed when first asked for, by whichever thread comes first; NaN until then. All
/// threads compute the same number, so they need no order among them.
class QVLazyNumber {
 public:
  QVLazyNumber() = default;
  QVLazyNumber(const QVLazyNumber& other) : value_(other.Get()) {}
  QVLazyNumber& operator=(const QVLazyNumber& other) {
    Set(other.Get());
    return *this;
  }
  double Get() const { return value_.load(std::memory_order_relaxed); }
  void Set(double value) const { value_.store(value, std::memory_order_relaxed); }

 private:
  mutable std::atomic<double> value_{std::numeric_limits<double>::quiet_NaN()};
};

/// What the search for percentiles of one distribution needs again and again: the distribution
/// function at the ends 2^i - 1 and 1 - 2^i of brackets, and function and density in the middle of
/// the brackets that begin at 0.
struct QVBracketTable {
  static constexpr std::size_t kSize = 12;
  struct Side {
    std::array<QVLazyNumber, kSize> endCdf, middleCdf, middleDensity;
  };
  Side above, below;
};

/// A univariate distribution of one family, whose mathematics is a law of
/// stats/api/private/pdf_laws.h.
template <class Law>
class QVSTATS_EXPORT QVUniVarLawImpl final : public QVUniVarPDFImpl {
 public:
  /// Valid when GetParams() succeeds.
  QVUniVarLawImpl(const std::string& variableName, const std::vector<QVRanVar>& parameters,
                  const std::vector<QVRanVar>& outcomes);
  QVUniVarLawImpl* CreateCopy() const override;
  std::string Print(std::size_t limit) const override { return DefaultPrint(limit); }

  /// Reads the parameters and the support and computes the constants.
  QVStatModelResult GetParams();

  double GetRandomOutcome(QVStatModelResult& result, QVMath::QVRanNumEngine& engine) override;
  double GetDensity(double x, QVStatModelResult& result, bool check) const override;
  double GetMean(QVStatModelResult& result) const override;
  double GetMode(QVStatModelResult& result) const override;
  double GetVariance(QVStatModelResult& result) const override;
  double GetPercentile(double p, QVStatModelResult& result) const override;
  double GetCDF(double x, QVStatModelResult& result, bool check) const override;
  double GetSurvival(double x, QVStatModelResult& result, bool check) const override;
  double GetLogDensity(double x, QVStatModelResult& result, bool check) const override;
  double GetLogSurvival(double x, QVStatModelResult& result, bool check) const override;
  double GetUpperTailPercentile(double q, QVStatModelResult& result) const override;
  void GetValues(QVPDFFunction function, const std::vector<double>& arguments,
                 std::vector<double>& values, QVStatModelResult& result, bool check) const override;

 private:
  /// Whether the bounds of the support alone admit x.
  bool IsWithinBounds(double x) const {
    return !(x < lower_ || x > upper_ || (lowerIsStrict_ && x <= lower_));
  }
  /// Runs a query at x: validity, the check of x, then the law. `below` and `above` are the answers
  /// for an x that the check finds below or above the support.
  template <class Query>
  double Ask(const char* name, double x, QVStatModelResult& result, bool check, double below,
             double above, Query query) const;
  double AskMoment(const char* name, QVStatModelResult& result,
                   QVLaws::Moment (Law::*moment)() const) const;
  double RefuseInvalid(const char* className, const char* name, QVStatModelResult& result) const;
  bool RefusesArgument(const char* name, double x, QVStatModelResult& result) const;
  double Search(double p, QVStatModelResult& result) const;
  /// The values of a function for which no argument fails; some may be left as they are.
  void FillValues(QVPDFFunction function, const std::vector<double>& arguments,
                  std::vector<double>& values) const;

  Law law_;
  // The check of an argument, when it is no more than bounds: a true comparison refuses.
  double lower_ = 0.0;
  double upper_ = 0.0;
  bool boundsDecide_ = false;
  bool lowerIsStrict_ = false;
  QVBracketTable brackets_;
};

/// \name The families
/// @{
using QVUniVarGaussImpl = QVUniVarLawImpl<QVLaws::Gauss>;
using QVUniVarStudentsTImpl = QVUniVarLawImpl<QVLaws::StudentsT>;
using QVGammaImpl = QVUniVarLawImpl<QVLaws::Gamma>;
using QVChiSquareImpl = QVUniVarLawImpl<QVLaws::ChiSquare>;
using QVSnedecorsFImpl = QVUniVarLawImpl<QVLaws::SnedecorsF>;
using QVBetaImpl = QVUniVarLawImpl<QVLaws::Beta>;
using QVGumbelImpl = QVUniVarLawImpl<QVLaws::Gumbel>;
using QVGeneralizedExtremeValueImpl = QVUniVarLawImpl<QVLaws::GeneralizedExtremeValue>;

extern template class QVUniVarLawImpl<QVLaws::Gauss>;
extern template class QVUniVarLawImpl<QVLaws::StudentsT>;
extern template class QVUniVarLawImpl<QVLaws::Gamma>;
extern template class QVUniVarLawImpl<QVLaws::ChiSquare>;
extern template class QVUniVarLawImpl<QVLaws::SnedecorsF>;
extern template class QVUniVarLawImpl<QVLaws::Beta>;
extern template class QVUniVarLawImpl<QVLaws::Gumbel>;
extern template class QVUniVarLawImpl<QVLaws::GeneralizedExtremeValue>;
/// @}

/// A finite mixture of univariate distributions: density and distribution function are the sums of
/// the components', weighted with the mixture probabilities.
///
/// The mode is the densest of 101 points spread evenly between the percentiles at 0.01 and 0.99. A
/// component that refuses an argument makes the mixture refuse it, but the search for a percentile
/// goes on through such places with that component's probability 0 below its support, 1 above.
class QVSTATS_EXPORT QVUniVarMixtureImpl : public QVUniVarPDFImpl {
 public:
  /// \param parameters number of components, their codes, their numbers of parameters, their
  ///   probabilities, then the components' own parameters, component by component.
  /// \param outcomes the mixture's, then one for each component.
  QVUniVarMixtureImpl(const std::string& variableName, const std::vector<QVRanVar>& parameters,
                      const std::vector<QVRanVar>& outcomes);
  QVUniVarMixtureImpl* CreateCopy() const override;
  /// The default print, then each component's.
  std::string Print(std::size_t limit) const override;

  QVStatModelResult GetParams();

  double GetRandomOutcome(QVStatModelResult& result, QVMath::QVRanNumEngine& engine) override;
  double GetDensity(double x, QVStatModelResult& result, bool check) const override;
  double GetMean(QVStatModelResult& result) const override;
  double GetMode(QVStatModelResult& result) const override;
  double GetVariance(QVStatModelResult& result) const override;
  double GetPercentile(double p, QVStatModelResult& result) const override;
  double GetCDF(double x, QVStatModelResult& result, bool check) const override;
  double GetSurvival(double x, QVStatModelResult& result, bool check) const override;
  double GetLogDensity(double x, QVStatModelResult& result, bool check) const override;
  double GetUpperTailPercentile(double q, QVStatModelResult& result) const override;
  void GetValues(QVPDFFunction function, const std::vector<double>& arguments,
                 std::vector<double>& values, QVStatModelResult& result, bool check) const override;

 private:
  double Refuse(const char* name, QVStatModelResult& result) const;
  /// The weighted sum of a function of the components.
  double Sum(const char* name, QVPDFFunction function, double x, QVStatModelResult& result,
             bool check) const;
  /// The same where a component that does not reach to x counts as 0 (or, above its support, 1).
  double SumWithin(QVPDFFunction function, double x, QVStatModelResult& result) const;
  double Invert(const char* name, bool upperTail, double p, QVStatModelResult& result) const;
  QVStatModelResult CheckProbabilities(const char* where) const;
  QVStatModelResult MakeComponents(const std::vector<double>& pdfTypes,
                                   const std::vector<double>& numParams, const char* where);

  std::vector<QVUniVarPDF> components_;
  std::vector<double> probabilities_;
};

/// The empirical distribution of a sample: a step of 1 / n at each of its values. It has no density
/// and no mode. A sample with a NaN is refused (ArgumentOutOfRange), as is a size that is no count
/// (NoData).
class QVSTATS_EXPORT QVUniVarContValRandomSampleImpl : public QVUniVarPDFImpl {
 public:
  QVUniVarContValRandomSampleImpl(const std::string& variableName,
                                  const std::vector<QVRanVar>& parameters,
                                  const std::vector<QVRanVar>& outcomes);
  QVUniVarContValRandomSampleImpl* CreateCopy() const override;
  std::string Print(std::size_t limit) const override;

  QVStatModelResult GetParams();

  /// One of the values, each as likely.
  double GetRandomOutcome(QVStatModelResult& result, QVMath::QVRanNumEngine& engine) override;
  double GetDensity(double x, QVStatModelResult& result, bool check) const override;
  double GetMean(QVStatModelResult& result) const override;
  double GetMode(QVStatModelResult& result) const override;
  /// With n - 1 in the denominator; VarianceIsUndefined for one value.
  double GetVariance(QVStatModelResult& result) const override;
  /// The sample quantile of type 8.
  double GetPercentile(double p, QVStatModelResult& result) const override;
  double GetCDF(double x, QVStatModelResult& result, bool check) const override;
  double GetLogDensity(double x, QVStatModelResult& result, bool check) const override;

 private:
  double Refuse(const char* name, QVStatModelResult& result) const;

  std::vector<double> sample_;  // in draw order
  std::vector<double> sorted_;
  double mean_ = 0.0;
  double variance_ = 0.0;
};

/// The numbers of a multivariate distribution with an elliptic density: location, precision matrix
/// and what follows from them. Matrices have d x d values, row by row.
struct QVEllipticParams {
  std::vector<double> location;
  std::vector<double> precision;
  std::vector<double> covariance;      // the inverse of the precision
  std::vector<double> sqrtCovariance;  // its Cholesky factor
  double halfLogDetPrecision = 0.0;
};

/// What the two multivariate families share; `Law` tells them apart.
template <class Law>
class QVSTATS_EXPORT QVEllipticImpl final : public QVMultiVarPDFImpl {
 public:
  QVEllipticImpl(const std::vector<std::string>& variableNames,
                 const std::vector<QVRanVar>& parameters, const std::vector<QVRanVar>& outcomes);
  QVEllipticImpl* CreateCopy() const override;

  QVStatModelResult GetParams();

  std::vector<double> GetRandomOutcome(QVStatModelResult& result,
                                       QVMath::QVRanNumEngine& engine) override;
  double GetDensity(const std::vector<double>& x, QVStatModelResult& result,
                    bool check) const override;
  std::vector<double> GetMean(QVStatModelResult& result) const override;
  std::vector<double> GetCovariance(QVStatModelResult& result) const override;
  std::vector<double> GetMode(QVStatModelResult& result) const override;
  QVMultiVarPDF GetMultivariateMarginal(const std::vector<std::string>& names,
                                        QVStatModelResult& result) const override;
  QVUniVarPDF GetUnivariateMarginal(const std::string& name,
                                    QVStatModelResult& result) const override;

 private:
  bool Refuse(const char* name, QVStatModelResult& result) const;
  bool FailedIn(const char* name, QVStatModelResult& result) const;

  QVEllipticParams params_;
  double degreesOfFreedom_ = 0.0;  // of the Student's t
  double logNorm_ = 0.0;
};

namespace QVLaws {
class MultiVarGauss;
class MultiVarStudentsT;
}  // namespace QVLaws

/// Density exp(c - q / 2), q the squared distance (x - mean)' precision (x - mean).
using QVMultiVarGaussImpl = QVEllipticImpl<QVLaws::MultiVarGauss>;
/// Density exp(c - (d + nu) / 2 log(1 + q / nu)). A random outcome maps d independent Student's t
/// variates linearly, so its law is close to but not the multivariate t. The check of an argument
/// of the density asks for an outcome of type 3 and finds none: RanVarNotFound.
using QVMultiVarStudentsTImpl = QVEllipticImpl<QVLaws::MultiVarStudentsT>;

extern template class QVEllipticImpl<QVLaws::MultiVarGauss>;
extern template class QVEllipticImpl<QVLaws::MultiVarStudentsT>;

}  // namespace QVStats

#endif  // QVSTATS_API_PDF_FAMILIES_H
