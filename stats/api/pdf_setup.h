/// \file
/// \brief From plain numbers to the random variables that a distribution is built from.
///
/// A family of distributions is described by one table, a row for each of its random variables:
/// name, kind, shape, range. The position of a row is the type of the variable. Parameters come
/// first, the outcome after them, then sample statistics where a family has them.
///
/// Each family has a set-up function, SetupRanVarVecs. It empties both lists, checks its numbers,
/// and fills the lists with the parameters and the outcomes, in the order of the table. It returns
/// success, or a failure recorded in "<family>::SetupRanVarVecs" with both lists empty:
/// - SingularScaleOrCovariance (Gaussian, Student's t, gamma) or LowerBoundViolated (the others): a
///   parameter that must be positive is not; a NaN is not either;
/// - those that a function names.
/// Other numbers are not checked: an infinite mean is a parameter like any other.
#ifndef QVSTATS_API_PDF_SETUP_H
#define QVSTATS_API_PDF_SETUP_H

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <vector>

#include "stats/api/export.h"
#include "stats/api/ran_var.h"
#include "stats/api/stat_model.h"

namespace QVStats {

/// The codes of a random variable, as in ran_var.h.
struct QVRanVarKind {
  std::uint64_t dataType;
  std::uint64_t dimensionalType;
  std::uint64_t constraintType;
};

/// One random variable of a family. Of the bounds those count that its constraint type uses.
struct QVRanVarDescription {
  const char* name;
  QVRanVarKind kind;
  double lowerBound = 0.0;
  double upperBound = 0.0;
  double varSumConstraint = 0.0;
};

/// The tables of the families.
namespace QVRanVarTables {

inline constexpr QVRanVarKind NoKind = {QVRanVarDataType::Unknown, QVRanVarDimType::Unknown,
                                        QVRanVarConstraintTypes::Unknown};
inline constexpr QVRanVarKind Real = {QVRanVarDataType::Continuous, QVRanVarDimType::Scalar,
                                      QVRanVarConstraintTypes::UnConstrained};
inline constexpr QVRanVarKind Positive = {QVRanVarDataType::Continuous, QVRanVarDimType::Scalar,
                                          QVRanVarConstraintTypes::StrictLowerBound};
inline constexpr QVRanVarKind NonNegative = {QVRanVarDataType::Continuous, QVRanVarDimType::Scalar,
                                             QVRanVarConstraintTypes::LowerBound};
inline constexpr QVRanVarKind Interval = {QVRanVarDataType::Continuous, QVRanVarDimType::Scalar,
                                          QVRanVarConstraintTypes::Bounded};
inline constexpr QVRanVarKind Count = {QVRanVarDataType::IntegerValued, QVRanVarDimType::Scalar,
                                       QVRanVarConstraintTypes::StrictLowerBound};
inline constexpr QVRanVarKind BoundedCount = {
    QVRanVarDataType::IntegerValued, QVRanVarDimType::Scalar, QVRanVarConstraintTypes::Bounded};
inline constexpr QVRanVarKind Code = {QVRanVarDataType::IntegerValued, QVRanVarDimType::Scalar,
                                      QVRanVarConstraintTypes::LowerBound};
inline constexpr QVRanVarKind RealVector = {QVRanVarDataType::Continuous, QVRanVarDimType::Vector,
                                            QVRanVarConstraintTypes::UnConstrained};
inline constexpr QVRanVarKind CountVector = {QVRanVarDataType::IntegerValued,
                                             QVRanVarDimType::Vector,
                                             QVRanVarConstraintTypes::StrictLowerBound};
inline constexpr QVRanVarKind WeightVector = {QVRanVarDataType::Continuous, QVRanVarDimType::Vector,
                                              QVRanVarConstraintTypes::BoundedWithSum};
inline constexpr QVRanVarKind PosDefMatrix = {QVRanVarDataType::Continuous,
                                              QVRanVarDimType::SymmetricMatrix,
                                              QVRanVarConstraintTypes::StrictLowerBound};

inline constexpr QVRanVarDescription Unspecified[] = {
    {"Unknown Parameter", NoKind},
    {"Unknown Outcome", NoKind},
};
inline constexpr QVRanVarDescription UniVarGauss[] = {
    {"Univariate Gaussian Mean", Real},        {"Univariate Gaussian Inverse Variance", Positive},
    {"Univariate Gaussian Outcome", Real},     {"Univariate Gaussian Sample Size", Count},
    {"Univariate Gaussian Sample Mean", Real}, {"Univariate Gaussian Sample Variance", NonNegative},
};
inline constexpr QVRanVarDescription MultiVarGauss[] = {
    {"Multivariate Gaussian Mean", RealVector},
    {"Multivariate Gaussian Size of Precision Matrix", Count},
    {"Multivariate Gaussian Precision Matrix", PosDefMatrix},
    {"Multivariate Gaussian Outcome", RealVector},
};
inline constexpr QVRanVarDescription UniVarStudentsT[] = {
    {"Univariate Students-T Degrees Of Freedom", Positive},
    {"Univariate Students-T Location", Real},
    {"Univariate Students-T Precision", Positive},
    {"Univariate Students-T Outcome", Real},
};
inline constexpr QVRanVarDescription MultiVarStudentsT[] = {
    {"Multivariate Students-T Degrees Of Freedom", Positive},
    {"Multivariate Students-T Location", RealVector},
    {"Multivariate Size of Precision Matrix", Count},
    {"Multivariate Students-T Precision Matrix", PosDefMatrix},
    {"Multivariate Students-T Outcome", RealVector},
};
inline constexpr QVRanVarDescription Gamma[] = {
    {"Gamma Shape", Positive}, {"Gamma Inverse Scale", Positive}, {"Gamma Outcome", Positive},
    {"Sample Size", Count},    {"Sample Product", Positive},      {"Sample Sum", Positive},
};
inline constexpr QVRanVarDescription ChiSquare[] = {
    {"Chi-Squared Degrees Of Freedom", Positive},
    {"Chi-Squared Outcome", Positive},
};
inline constexpr QVRanVarDescription SnedecorsF[] = {
    {"Snedecor's F Numerator Degrees Of Freedom", Positive},
    {"Snedecor's F Denominator Degrees Of Freedom", Positive},
    {"Snedecor's F Outcome", Positive},
};
inline constexpr QVRanVarDescription Beta[] = {
    {"Beta shape Alpha", Positive},
    {"Beta shape Beta", Positive},
    {"Beta Outcome", Interval, 0.0, 1.0},
};
inline constexpr QVRanVarDescription LogNormal[] = {
    {"LogNormal Location", Real},
    {"LogNormal Inverse Scale", Positive},
    {"LogNormal Outcome", Positive},
};
inline constexpr QVRanVarDescription Gumbel[] = {
    {"Gumbel Location", Real},
    {"Gumbel Scale", Positive},
    {"Gumbel Outcome", Real},
};
inline constexpr QVRanVarDescription GeneralizedExtremeValue[] = {
    {"GeneralizedExtremeValue Location", Real},
    {"GeneralizedExtremeValue Scale", Positive},
    {"GeneralizedExtremeValue Shape", Real},
    {"GeneralizedExtremeValue Outcome", Real},
};
inline constexpr QVRanVarDescription Binomial[] = {
    {"Binomial Sample Size", Count},
    {"Binomial Success Probability", Interval, 0.0, 1.0},
    {"Binomial Outcome", BoundedCount},
};
inline constexpr QVRanVarDescription UniVarRandomSample[] = {
    {"Random Sample Size", Count},   {"Random Sample Minimum", Real},
    {"Random Sample Maximum", Real}, {"PDF Sample Was Drawn From", Code},
    {"Random Sample Outcome", Real},
};
inline constexpr QVRanVarDescription UniVarMixture[] = {
    {"Number of PDF Components", Count},
    {"Univariate PDF Typesa of Components", CountVector},
    {"Number of Params per PDF Components", CountVector},
    {"Mixture Probabilities of Components", WeightVector, 0.0, 0.0, 1.0},
    {"Univariate Mixture Outcome", Real},
};

}  // namespace QVRanVarTables

/// What all families have: their code, their table and its names, by the type of the variable.
template <std::uint64_t pdfType, const auto& table>
struct QVRanVarFamily {
  static constexpr std::uint64_t PdfType = pdfType;
  static constexpr std::size_t NumTypes = std::size(table);
  static constexpr const QVRanVarDescription* Descriptions = table;

  /// The names by the type of the variable, which is below NumTypes.
  struct Names {
    constexpr const char* operator[](std::size_t ranVarType) const {
      return table[ranVarType].name;
    }
  };
  static constexpr Names NameOf = {};
};

using QVRanVarVec = std::vector<QVRanVar>;

struct QVUnknownPDFRanVars : QVRanVarFamily<QVPDFType::Unknown, QVRanVarTables::Unspecified> {};

struct QVSTATS_EXPORT QVNullPDFRanVars
    : QVRanVarFamily<QVPDFType::NullPDF, QVRanVarTables::Unspecified> {
  /// Empties both lists; always succeeds.
  static QVStatModelResult SetupRanVarVecs(QVRanVarVec& parameters, QVRanVarVec& outcomes);
};

struct QVSTATS_EXPORT QVUniVarGaussRanVars
    : QVRanVarFamily<QVPDFType::UniVariateGaussian, QVRanVarTables::UniVarGauss> {
  /// \param precision the inverse of the variance, positive.
  static QVStatModelResult SetupRanVarVecs(double mean, double precision, QVRanVarVec& parameters,
                                           QVRanVarVec& outcomes);
};

struct QVSTATS_EXPORT QVMultiVarGaussRanVars
    : QVRanVarFamily<QVPDFType::MultiVariateGaussian, QVRanVarTables::MultiVarGauss> {
  /// \param mean            d >= 1 values.
  /// \param precisionMatrix the inverse of the covariance, full, row by row. Its definiteness is
  ///                        checked by the distribution.
  /// Failures: WrongInputVectorSize for an empty mean, WrongInputMatrixSize for a matrix that does
  /// not have d * d values.
  static QVStatModelResult SetupRanVarVecs(const std::vector<double>& mean,
                                           const std::vector<double>& precisionMatrix,
                                           QVRanVarVec& parameters, QVRanVarVec& outcomes);
};

struct QVSTATS_EXPORT QVUniVarStudentsTRanVars
    : QVRanVarFamily<QVPDFType::UnivariateStudentsT, QVRanVarTables::UniVarStudentsT> {
  /// \param degreesOfFreedom, precision positive.
  static QVStatModelResult SetupRanVarVecs(double degreesOfFreedom, double location,
                                           double precision, QVRanVarVec& parameters,
                                           QVRanVarVec& outcomes);
};

struct QVSTATS_EXPORT QVMultiVarStudentsTRanVars
    : QVRanVarFamily<QVPDFType::MultivariateStudentsT, QVRanVarTables::MultiVarStudentsT> {
  /// As for the multivariate Gaussian; then SingularScaleOrCovariance for degrees of freedom that
  /// are not positive.
  static QVStatModelResult SetupRanVarVecs(double degreesOfFreedom,
                                           const std::vector<double>& location,
                                           const std::vector<double>& precisionMatrix,
                                           QVRanVarVec& parameters, QVRanVarVec& outcomes);
};

struct QVSTATS_EXPORT QVGammaRanVars : QVRanVarFamily<QVPDFType::Gamma, QVRanVarTables::Gamma> {
  /// \param shape, inverseScale positive.
  static QVStatModelResult SetupRanVarVecs(double shape, double inverseScale,
                                           QVRanVarVec& parameters, QVRanVarVec& outcomes);
};

struct QVSTATS_EXPORT QVChiSquareRanVars
    : QVRanVarFamily<QVPDFType::ChiSquared, QVRanVarTables::ChiSquare> {
  /// \param degreesOfFreedom positive.
  static QVStatModelResult SetupRanVarVecs(double degreesOfFreedom, QVRanVarVec& parameters,
                                           QVRanVarVec& outcomes);
};

struct QVSTATS_EXPORT QVSnedecorsFRanVars
    : QVRanVarFamily<QVPDFType::SnedecorsF, QVRanVarTables::SnedecorsF> {
  /// \param numeratorDof, denominatorDof degrees of freedom, positive.
  static QVStatModelResult SetupRanVarVecs(double numeratorDof, double denominatorDof,
                                           QVRanVarVec& parameters, QVRanVarVec& outcomes);
};

struct QVSTATS_EXPORT QVBetaRanVars : QVRanVarFamily<QVPDFType::Beta, QVRanVarTables::Beta> {
  /// \param alpha, beta positive.
  static QVStatModelResult SetupRanVarVecs(double alpha, double beta, QVRanVarVec& parameters,
                                           QVRanVarVec& outcomes);
};

struct QVSTATS_EXPORT QVLogNormalRanVars
    : QVRanVarFamily<QVPDFType::LogNormal, QVRanVarTables::LogNormal> {
  /// \param inverseScale positive.
  static QVStatModelResult SetupRanVarVecs(double location, double inverseScale,
                                           QVRanVarVec& parameters, QVRanVarVec& outcomes);
};

struct QVSTATS_EXPORT QVGumbelRanVars : QVRanVarFamily<QVPDFType::Gumbel, QVRanVarTables::Gumbel> {
  /// \param scale positive.
  static QVStatModelResult SetupRanVarVecs(double location, double scale, QVRanVarVec& parameters,
                                           QVRanVarVec& outcomes);
};

struct QVSTATS_EXPORT QVGeneralizedExtremeValueRanVars
    : QVRanVarFamily<QVPDFType::GeneralizedExtremeValue, QVRanVarTables::GeneralizedExtremeValue> {
  /// \param scale positive. \param shape any sign.
  static QVStatModelResult SetupRanVarVecs(double location, double scale, double shape,
                                           QVRanVarVec& parameters, QVRanVarVec& outcomes);
};

struct QVSTATS_EXPORT QVBinomialRanVars
    : QVRanVarFamily<QVPDFType::Binomial, QVRanVarTables::Binomial> {
  /// \param sampleSize         positive, else LowerBoundViolated; an integer (QVIsIntegerValued),
  /// else
  ///                           IntegerArgumentRequired.
  /// \param successProbability in [0, 1], else LowerBoundViolated or UpperBoundViolated.
  static QVStatModelResult SetupRanVarVecs(double sampleSize, double successProbability,
                                           QVRanVarVec& parameters, QVRanVarVec& outcomes);
};

struct QVSTATS_EXPORT QVUniVarContValRandomSampleRanVars
    : QVRanVarFamily<QVPDFType::UniVarContValRandomSample, QVRanVarTables::UniVarRandomSample> {
  /// The outcome is multi-valued and holds the sample, in the order given.
  /// Failures: ArgumentOutOfRange for a pdfTypeDrawnFrom above 26 and for a NaN in the sample, with
  /// its (0-based) place; NoData for an empty sample.
  static QVStatModelResult SetupRanVarVecs(std::uint64_t pdfTypeDrawnFrom,
                                           const std::vector<double>& sample,
                                           QVRanVarVec& parameters, QVRanVarVec& outcomes);
};

struct QVUniVarIntValRandomSampleRanVars
    : QVRanVarFamily<QVPDFType::UniVarIntValRandomSample, QVRanVarTables::UniVarRandomSample> {};

struct QVSTATS_EXPORT QVUniVarMixtureRanVars
    : QVRanVarFamily<QVPDFType::UniVariateMixture, QVRanVarTables::UniVarMixture> {
  /// The mixture's own variables; those of its components follow them (see QVUnivariateMixture).
  /// \param pdfTypes     the family of each component, a code of QVPDFType.
  /// \param numParams    the number of parameter variables of each component.
  /// \param mixtureProbs the weight of each component. Their range and sum are checked by the
  ///                     distribution.
  /// Failures: EmptyStatModel for no components, MismatchBetweenInputVecSizes when a vector does
  /// not have numComponents entries.
  static QVStatModelResult SetupRanVarVecs(std::size_t numComponents,
                                           const std::vector<unsigned int>& pdfTypes,
                                           const std::vector<std::size_t>& numParams,
                                           const std::vector<double>& mixtureProbs,
                                           QVRanVarVec& parameters, QVRanVarVec& outcomes);
};

struct QVSTATS_EXPORT QVUniVarGenericRanVars {
  /// The set-up of any univariate family whose parameters are numbers, given in the order of its
  /// table. Failures: WrongPDFType for another family, WrongNumParameters, and those of the
  /// family's own set-up, which is first in the chain.
  static QVStatModelResult SetupRanVarVecs(std::uint64_t pdfType,
                                           const std::vector<double>& paramValues,
                                           QVRanVarVec& parameters, QVRanVarVec& outcomes);
};

}  // namespace QVStats

#endif  // QVSTATS_API_PDF_SETUP_H
