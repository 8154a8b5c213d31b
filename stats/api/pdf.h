/// \file
/// \brief Probability distributions as values, and the functions that make them.
///
///     QVStatModelResult result(true);
///     const QVUniVarPDF pdf = QVUnivariateGaussian("potency", 6.5, 4.0, result);
///     const double p = pdf.GetSurvival(7.5, result, true);  // 0.0228, two deviations up
///
/// Names, failures and conventions of the queries: stats/api/pdf_impl.h.
#ifndef QVSTATS_API_PDF_H
#define QVSTATS_API_PDF_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/system/copy_ptr.h"
#include "stats/api/export.h"
#include "stats/api/pdf_impl.h"

namespace QVStats {

/// A univariate distribution. Copies are deep.
class QVSTATS_EXPORT QVUniVarPDF {
 public:
  /// The distribution of a code of QVPDFType, from random variables made by the set-up functions;
  /// the null one for a code without an implementation.
  QVUniVarPDF(std::uint64_t pdfType, const std::string& variableName,
              const std::vector<QVRanVar>& parameters, const std::vector<QVRanVar>& outcomes)
      : impl_(QVGetUniVarPDFImpl(pdfType, variableName, parameters, outcomes)) {}

  double GetRandomOutcome(QVStatModelResult& result, QVMath::QVRanNumEngine& engine) {
    return impl_->GetRandomOutcome(result, engine);
  }
  double GetDensity(double x, QVStatModelResult& result, bool check) const {
    return impl_->GetDensity(x, result, check);
  }
  double GetCDF(double x, QVStatModelResult& result, bool check) const {
    return impl_->GetCDF(x, result, check);
  }
  double GetPercentile(double p, QVStatModelResult& result) const {
    return impl_->GetPercentile(p, result);
  }
  double GetMean(QVStatModelResult& result) const { return impl_->GetMean(result); }
  double GetVariance(QVStatModelResult& result) const { return impl_->GetVariance(result); }
  double GetMode(QVStatModelResult& result) const { return impl_->GetMode(result); }
  std::string GetVariableName() const { return impl_->GetVariableName(); }
  std::string Print(std::size_t limit) const { return impl_->Print(limit); }
  /// Owned by this object.
  QVUniVarPDFImpl* GetImpl() const { return impl_.get(); }

  double GetSurvival(double x, QVStatModelResult& result, bool check) const {
    return impl_->GetSurvival(x, result, check);
  }
  double GetLogDensity(double x, QVStatModelResult& result, bool check) const {
    return impl_->GetLogDensity(x, result, check);
  }
  double GetLogSurvival(double x, QVStatModelResult& result, bool check) const {
    return impl_->GetLogSurvival(x, result, check);
  }
  double GetUpperTailPercentile(double q, QVStatModelResult& result) const {
    return impl_->GetUpperTailPercentile(q, result);
  }
  /// A function at each argument.
  void GetValues(QVPDFFunction function, const std::vector<double>& arguments,
                 std::vector<double>& values, QVStatModelResult& result, bool check) const {
    impl_->GetValues(function, arguments, values, result, check);
  }

 private:
  QVSystem::QVCopyPtr<QVUniVarPDFImpl> impl_;
};

/// A multivariate distribution. Copies are deep.
class QVSTATS_EXPORT QVMultiVarPDF {
 public:
  QVMultiVarPDF(std::uint64_t pdfType, const std::vector<std::string>& variableNames,
                const std::vector<QVRanVar>& parameters, const std::vector<QVRanVar>& outcomes)
      : impl_(QVGetMultiVarPDFImpl(pdfType, variableNames, parameters, outcomes)) {}

  std::vector<double> GetRandomOutcome(QVStatModelResult& result, QVMath::QVRanNumEngine& engine) {
    return impl_->GetRandomOutcome(result, engine);
  }
  double GetDensity(const std::vector<double>& x, QVStatModelResult& result, bool check) const {
    return impl_->GetDensity(x, result, check);
  }
  std::vector<double> GetMean(QVStatModelResult& result) const { return impl_->GetMean(result); }
  std::vector<double> GetCovariance(QVStatModelResult& result) const {
    return impl_->GetCovariance(result);
  }
  std::vector<double> GetMode(QVStatModelResult& result) const { return impl_->GetMode(result); }
  QVMultiVarPDF GetMultivariateMarginal(const std::vector<std::string>& names,
                                        QVStatModelResult& result) const {
    return impl_->GetMultivariateMarginal(names, result);
  }
  QVUniVarPDF GetUnivariateMarginal(const std::string& name, QVStatModelResult& result) const {
    return impl_->GetUnivariateMarginal(name, result);
  }
  std::size_t GetNumVariables() const { return impl_->GetNumVariables(); }
  QVSystem::QVIter<const std::string> GetVariableNames() const { return impl_->GetVariableNames(); }
  std::string Print(std::size_t limit) const { return impl_->Print(limit); }
  /// Owned by this object.
  QVMultiVarPDFImpl* GetImpl() const { return impl_.get(); }

 private:
  QVSystem::QVCopyPtr<QVMultiVarPDFImpl> impl_;
};

/// \name Factories
/// Each checks its numbers and returns the distribution. On a failure it returns a null
/// distribution, and `result` has the failure with the factory's name as a caller. The failures
/// are those of the family's set-up function (stats/api/pdf_setup.h): SingularScaleOrCovariance or
/// LowerBoundViolated for a parameter that must be positive.
/// @{
QVSTATS_EXPORT QVUniVarPDF QVUniVarNullPDF(const std::string& variableName);
QVSTATS_EXPORT QVMultiVarPDF QVMultiVarNullPDF(const std::vector<std::string>& variableNames);
/// precision = 1 / variance, > 0.
QVSTATS_EXPORT QVUniVarPDF QVUnivariateGaussian(const std::string& variableName, double mean,
                                                double precision, QVStatModelResult& result);
/// location + T / sqrt(precision), T with degreesOfFreedom > 0; precision > 0.
QVSTATS_EXPORT QVUniVarPDF QVUnivariateStudentsT(const std::string& variableName,
                                                 double degreesOfFreedom, double location,
                                                 double precision, QVStatModelResult& result);
/// Density inverseScale^shape x^(shape - 1) exp(-inverseScale x) / Gamma(shape); both > 0.
QVSTATS_EXPORT QVUniVarPDF QVGamma(const std::string& variableName, double shape,
                                   double inverseScale, QVStatModelResult& result);
/// degreesOfFreedom > 0.
QVSTATS_EXPORT QVUniVarPDF QVChiSquare(const std::string& variableName, double degreesOfFreedom,
                                       QVStatModelResult& result);
/// Both degrees of freedom > 0.
QVSTATS_EXPORT QVUniVarPDF QVSnedecorsF(const std::string& variableName, double numeratorDof,
                                        double denominatorDof, QVStatModelResult& result);
/// Density proportional to x^(alpha - 1) (1 - x)^(beta - 1) on [0, 1]; both > 0.
QVSTATS_EXPORT QVUniVarPDF QVBeta(const std::string& variableName, double alpha, double beta,
                                  QVStatModelResult& result);
/// F(x) = exp(-exp(-(x - location) / scale)), scale > 0.
QVSTATS_EXPORT QVUniVarPDF QVGumbel(const std::string& variableName, double location, double scale,
                                    QVStatModelResult& result);
/// F(x) = exp(-(1 + shape (x - location) / scale)^(-1 / shape)), scale > 0; Gumbel at shape 0.
QVSTATS_EXPORT QVUniVarPDF QVGeneralizedExtremeValue(const std::string& variableName,
                                                     double location, double scale, double shape,
                                                     QVStatModelResult& result);
/// The mean has d values and the precision matrix, symmetric positive definite, d x d, row by row.
QVSTATS_EXPORT QVMultiVarPDF QVMultivariateGaussian(const std::vector<std::string>& variableNames,
                                                    const std::vector<double>& mean,
                                                    const std::vector<double>& precisionMatrix,
                                                    QVStatModelResult& result);
/// Checks its arguments; the handle it returns is then a null one all the same. The distribution
/// itself is QVMultiVarStudentsTImpl, built directly.
QVSTATS_EXPORT QVMultiVarPDF QVMultivariateStudentsT(const std::vector<std::string>& variableNames,
                                                     double degreesOfFreedom,
                                                     const std::vector<double>& location,
                                                     const std::vector<double>& precisionMatrix,
                                                     QVStatModelResult& result);
/// The empirical distribution of sampleSize draws from `source`.
QVSTATS_EXPORT QVUniVarPDF QVUniVarContValRandomSample(QVStatModelResult& result,
                                                       QVUniVarPDF& source,
                                                       QVMath::QVRanNumEngine& engine,
                                                       std::size_t sampleSize);
/// A mixture: component k has the code pdfTypes[k], the numbers paramVecs[k] in the order of the
/// family's factory, and the probability mixtureProbs[k]; the probabilities sum to 1 within
/// K * 2^-52. EmptyStatModel: no component; MismatchBetweenInputVecSizes: unequal lengths. A
/// distribution whose probabilities are refused is an invalid one, not a null one.
QVSTATS_EXPORT QVUniVarPDF QVUnivariateMixture(const std::string& variableName,
                                               const std::vector<unsigned int>& pdfTypes,
                                               const std::vector<double>& mixtureProbs,
                                               const std::vector<std::vector<double>>& paramVecs,
                                               QVStatModelResult& result);
/// A mixture of Gaussians.
QVSTATS_EXPORT QVUniVarPDF QVUnivariateGaussMixture(const std::string& variableName,
                                                    const std::vector<double>& mixtureProbs,
                                                    const std::vector<double>& means,
                                                    const std::vector<double>& precisions,
                                                    QVStatModelResult& result);
/// A mixture of Student's t distributions.
QVSTATS_EXPORT QVUniVarPDF QVUnivariateStudentsTMixture(const std::string& variableName,
                                                        const std::vector<double>& mixtureProbs,
                                                        const std::vector<double>& degreesOfFreedom,
                                                        const std::vector<double>& locations,
                                                        const std::vector<double>& precisions,
                                                        QVStatModelResult& result);
/// @}

}  // namespace QVStats

#endif  // QVSTATS_API_PDF_H
