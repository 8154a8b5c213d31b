#include "stats/api/pdf_setup.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/system/cast.h"
#include "stats/failure.h"

namespace QVStats {

namespace {

using Values = std::vector<double>;

bool MustBePositive(const QVRanVarDescription& row) {
  return row.kind.constraintType == QVRanVarConstraintTypes::StrictLowerBound;
}

/// A family whose parameters are numbers: its rows are the parameters, then the outcome.
struct ScalarFamily {
  std::uint64_t pdfType;
  const QVRanVarDescription* rows;
  std::size_t numParameters;
  const char* where;
  unsigned int failureType;  ///< when a parameter that must be positive is not
  const char* failureText;   ///< before the values of those parameters; null for no comment
  QVStatModelResult (*checkRest)(const char* where, const Values& values) = nullptr;
};

QVStatModelResult CheckBinomial(const char* where, const Values& values) {
  const double sampleSize = values[0];
  const double probability = values[1];
  if (!QVIsIntegerValued(sampleSize))
    return QVFailure(QVStatModelFailureType::IntegerArgumentRequired, where)
           << "sampleSize required to be an integer: argument value = " << sampleSize;
  if (probability >= 0.0 && probability <= 1.0) return true;
  return QVFailure(probability > 1.0 ? QVStatModelFailureType::UpperBoundViolated
                                     : QVStatModelFailureType::LowerBoundViolated,
                   where)
         << "successProbability required to be between 0 and 1: argument value = " << probability;
}

/// The row of a family in the table below.
template <class Family>
constexpr ScalarFamily Row(std::size_t numParameters, const char* where, unsigned int failureType,
                           const char* failureText,
                           QVStatModelResult (*checkRest)(const char*, const Values&) = nullptr) {
  return {Family::PdfType, Family::Descriptions, numParameters, where,
          failureType,     failureText,          checkRest};
}

using QVStatModelFailureType::LowerBoundViolated;
using QVStatModelFailureType::SingularScaleOrCovariance;

constexpr ScalarFamily kScalarFamilies[] = {
    Row<QVUniVarGaussRanVars>(2, "QVUniVarGaussRanVars::SetupRanVarVecs", SingularScaleOrCovariance,
                              nullptr),
    Row<QVUniVarStudentsTRanVars>(3, "QVUniVarStudentsTRanVars::SetupRanVarVecs",
                                  SingularScaleOrCovariance, nullptr),
    Row<QVGammaRanVars>(2, "QVGammaRanVars::SetupRanVarVecs", SingularScaleOrCovariance, nullptr),
    Row<QVChiSquareRanVars>(1, "QVChiSquareRanVars::SetupRanVarVecs", LowerBoundViolated,
                            "Degrees of freedom required to be positive: argument value ="),
    Row<QVSnedecorsFRanVars>(2, "QVSnedecorsFRanVars::SetupRanVarVecs", LowerBoundViolated,
                             "Numerator & Denominator Degrees of freedom required to be positive: "
                             "argument values ="),
    Row<QVBetaRanVars>(2, "QVBetaRanVars::SetupRanVarVecs", LowerBoundViolated,
                       "alpha & beta required to be positive: argument values ="),
    Row<QVLogNormalRanVars>(2, "QVLogNormalRanVars::SetupRanVarVecs", LowerBoundViolated,
                            "inverseScale required to be positive: argument value ="),
    Row<QVGumbelRanVars>(2, "QVGumbelRanVars::SetupRanVarVecs", LowerBoundViolated,
                         "scale required to be positive: argument value ="),
    Row<QVGeneralizedExtremeValueRanVars>(3, "QVGeneralizedExtremeValueRanVars::SetupRanVarVecs",
                                          LowerBoundViolated,
                                          "scale required to be positive: argument value ="),
    Row<QVBinomialRanVars>(2, "QVBinomialRanVars::SetupRanVarVecs", LowerBoundViolated,
                           "sampleSize required to be positive: argument value =", CheckBinomial),
};

const ScalarFamily* FindScalarFamily(std::uint64_t pdfType) {
  const auto row =
      std::find_if(std::begin(kScalarFamilies), std::end(kScalarFamilies),
                   [&](const ScalarFamily& family) { return family.pdfType == pdfType; });
  return row == std::end(kScalarFamilies) ? nullptr : row;
}

/// Appends the variable of a type: its description from the family's table, and its values.
void Append(std::uint64_t pdfType, const QVRanVarDescription* rows, std::uint64_t packageType,
            std::size_t ranVarType, Values values, std::size_t dimension, bool multiValued,
            QVRanVarVec& variables) {
  const QVRanVarDescription& row = rows[ranVarType];
  variables.emplace_back(pdfType, packageType, ranVarType, row.name, row.kind.dataType,
                         row.kind.dimensionalType, row.kind.constraintType, std::move(values),
                         dimension, row.lowerBound, row.upperBound, row.varSumConstraint,
                         multiValued);
}

template <class Family>
void AppendParameter(std::size_t ranVarType, Values values, std::size_t dimension,
                     QVRanVarVec& variables) {
  Append(Family::PdfType, Family::Descriptions, QVPackageTypes::Parameters, ranVarType,
         std::move(values), dimension, false, variables);
}

template <class Family>
void AppendOutcome(std::size_t ranVarType, Values values, std::size_t dimension, bool multiValued,
                   QVRanVarVec& variables) {
  Append(Family::PdfType, Family::Descriptions, QVPackageTypes::Outcomes, ranVarType,
         std::move(values), dimension, multiValued, variables);
}

QVStatModelResult CheckPositive(const ScalarFamily& family, const Values& values) {
  bool ok = true;
  for (std::size_t i = 0; i < family.numParameters; ++i)
    // Written as !(x > bound), so that a NaN is refused too.
    if (MustBePositive(family.rows[i]) && !(values[i] > family.rows[i].lowerBound)) ok = false;
  if (ok) return true;
  QVFailure failure(family.failureType, family.where);
  if (!family.failureText) return failure;
  failure << family.failureText;
  for (std::size_t i = 0; i < family.numParameters; ++i)
    if (MustBePositive(family.rows[i])) failure << " " << values[i];
  return failure;
}

void Clear(QVRanVarVec& parameters, QVRanVarVec& outcomes) {
  parameters.clear();
  outcomes.clear();
}

QVStatModelResult SetUp(const ScalarFamily& family, const Values& values, QVRanVarVec& parameters,
                        QVRanVarVec& outcomes) {
  Clear(parameters, outcomes);
  QVStatModelResult result = CheckPositive(family, values);
  if (result.IsSuccessful() && family.checkRest) result = family.checkRest(family.where, values);
  if (result.NotSuccessful()) return result;
  for (std::size_t i = 0; i < family.numParameters; ++i)
    Append(family.pdfType, family.rows, QVPackageTypes::Parameters, i, {values[i]}, 1, false,
           parameters);
  Append(family.pdfType, family.rows, QVPackageTypes::Outcomes, family.numParameters, {0.0}, 1,
         false, outcomes);
  return true;
}

template <class Family>
QVStatModelResult SetUp(const Values& values, QVRanVarVec& parameters, QVRanVarVec& outcomes) {
  return SetUp(*FindScalarFamily(Family::PdfType), values, parameters, outcomes);
}

QVStatModelResult CheckMultiVarSizes(const char* where, const Values& location,
                                     const Values& precisionMatrix) {
  const std::size_t d = location.size();
  if (d == 0)
    return QVFailure(QVStatModelFailureType::WrongInputVectorSize, where)
           << "vector size: " << d << "; at least one variable is required";
  if (precisionMatrix.size() == d * d) return true;
  return QVFailure(QVStatModelFailureType::WrongInputMatrixSize, where)
         << "matrix size: " << precisionMatrix.size() << "; model dimension: " << d;
}

/// Location, size and precision of a multivariate family, from a type on, and its outcome.
template <class Family>
void AppendMultiVar(std::size_t locationType, const Values& location, const Values& precisionMatrix,
                    QVRanVarVec& parameters, QVRanVarVec& outcomes) {
  const std::size_t d = location.size();
  AppendParameter<Family>(locationType, location, d, parameters);
  AppendParameter<Family>(locationType + 1, {QVSystem::QVDoubleFromCount(precisionMatrix.size())},
                          1, parameters);
  AppendParameter<Family>(locationType + 2, precisionMatrix, d, parameters);
  AppendOutcome<Family>(locationType + 3, Values(d), d, false, outcomes);
}

}  // namespace

QVStatModelResult QVNullPDFRanVars::SetupRanVarVecs(QVRanVarVec& parameters,
                                                    QVRanVarVec& outcomes) {
  Clear(parameters, outcomes);
  return true;
}

QVStatModelResult QVUniVarGaussRanVars::SetupRanVarVecs(double mean, double precision,
                                                        QVRanVarVec& parameters,
                                                        QVRanVarVec& outcomes) {
  return SetUp<QVUniVarGaussRanVars>({mean, precision}, parameters, outcomes);
}

QVStatModelResult QVMultiVarGaussRanVars::SetupRanVarVecs(const Values& mean,
                                                          const Values& precisionMatrix,
                                                          QVRanVarVec& parameters,
                                                          QVRanVarVec& outcomes) {
  Clear(parameters, outcomes);
  const QVStatModelResult result =
      CheckMultiVarSizes("QVMultiVarGaussRanVars::SetupRanVarVecs", mean, precisionMatrix);
  if (result.IsSuccessful())
    AppendMultiVar<QVMultiVarGaussRanVars>(0, mean, precisionMatrix, parameters, outcomes);
  return result;
}

QVStatModelResult QVUniVarStudentsTRanVars::SetupRanVarVecs(double degreesOfFreedom,
                                                            double location, double precision,
                                                            QVRanVarVec& parameters,
                                                            QVRanVarVec& outcomes) {
  return SetUp<QVUniVarStudentsTRanVars>({degreesOfFreedom, location, precision}, parameters,
                                         outcomes);
}

QVStatModelResult QVMultiVarStudentsTRanVars::SetupRanVarVecs(double degreesOfFreedom,
                                                              const Values& location,
                                                              const Values& precisionMatrix,
                                                              QVRanVarVec& parameters,
                                                              QVRanVarVec& outcomes) {
  const char* const where = "QVMultiVarStudentsTRanVars::SetupRanVarVecs";
  Clear(parameters, outcomes);
  const QVStatModelResult result = CheckMultiVarSizes(where, location, precisionMatrix);
  if (result.NotSuccessful()) return result;
  if (!(degreesOfFreedom > 0.0)) return QVFailure(SingularScaleOrCovariance, where);
  AppendParameter<QVMultiVarStudentsTRanVars>(0, {degreesOfFreedom}, 1, parameters);
  AppendMultiVar<QVMultiVarStudentsTRanVars>(1, location, precisionMatrix, parameters, outcomes);
  return true;
}

QVStatModelResult QVGammaRanVars::SetupRanVarVecs(double shape, double inverseScale,
                                                  QVRanVarVec& parameters, QVRanVarVec& outcomes) {
  return SetUp<QVGammaRanVars>({shape, inverseScale}, parameters, outcomes);
}

QVStatModelResult QVChiSquareRanVars::SetupRanVarVecs(double degreesOfFreedom,
                                                      QVRanVarVec& parameters,
                                                      QVRanVarVec& outcomes) {
  return SetUp<QVChiSquareRanVars>({degreesOfFreedom}, parameters, outcomes);
}

QVStatModelResult QVSnedecorsFRanVars::SetupRanVarVecs(double numeratorDof, double denominatorDof,
                                                       QVRanVarVec& parameters,
                                                       QVRanVarVec& outcomes) {
  return SetUp<QVSnedecorsFRanVars>({numeratorDof, denominatorDof}, parameters, outcomes);
}

QVStatModelResult QVBetaRanVars::SetupRanVarVecs(double alpha, double beta, QVRanVarVec& parameters,
                                                 QVRanVarVec& outcomes) {
  return SetUp<QVBetaRanVars>({alpha, beta}, parameters, outcomes);
}

QVStatModelResult QVLogNormalRanVars::SetupRanVarVecs(double location, double inverseScale,
                                                      QVRanVarVec& parameters,
                                                      QVRanVarVec& outcomes) {
  return SetUp<QVLogNormalRanVars>({location, inverseScale}, parameters, outcomes);
}

QVStatModelResult QVGumbelRanVars::SetupRanVarVecs(double location, double scale,
                                                   QVRanVarVec& parameters, QVRanVarVec& outcomes) {
  return SetUp<QVGumbelRanVars>({location, scale}, parameters, outcomes);
}

QVStatModelResult QVGeneralizedExtremeValueRanVars::SetupRanVarVecs(double location, double scale,
                                                                    double shape,
                                                                    QVRanVarVec& parameters,
                                                                    QVRanVarVec& outcomes) {
  return SetUp<QVGeneralizedExtremeValueRanVars>({location, scale, shape}, parameters, outcomes);
}

QVStatModelResult QVBinomialRanVars::SetupRanVarVecs(double sampleSize, double successProbability,
                                                     QVRanVarVec& parameters,
                                                     QVRanVarVec& outcomes) {
  return SetUp<QVBinomialRanVars>({sampleSize, successProbability}, parameters, outcomes);
}

QVStatModelResult QVUniVarContValRandomSampleRanVars::SetupRanVarVecs(
    std::uint64_t pdfTypeDrawnFrom, const Values& sample, QVRanVarVec& parameters,
    QVRanVarVec& outcomes) {
  using Family = QVUniVarContValRandomSampleRanVars;
  const char* const where = "QVUniVarContValRandomSampleRanVars::SetupRanVarVecs";
  Clear(parameters, outcomes);
  if (pdfTypeDrawnFrom >= QVPDFType::NumTypes)
    return QVFailure(QVStatModelFailureType::ArgumentOutOfRange, where)
           << "pdfTypeDrawnFrom must be less than: argument value = " << pdfTypeDrawnFrom;
  if (sample.empty()) return QVFailure(QVStatModelFailureType::NoData, where) << "Empty sample";
  const auto bad =
      std::find_if(sample.begin(), sample.end(), [](double x) { return std::isnan(x); });
  if (bad != sample.end())
    return QVFailure(QVStatModelFailureType::ArgumentOutOfRange, where)
           << "Sample value " << bad - sample.begin() << " is not a number";
  const auto [lowest, highest] = std::minmax_element(sample.begin(), sample.end());
  const double size = QVSystem::QVDoubleFromCount(sample.size());
  const double values[] = {size, *lowest, *highest, static_cast<double>(pdfTypeDrawnFrom)};
  for (std::size_t i = 0; i < std::size(values); ++i)
    AppendParameter<Family>(i, {values[i]}, 1, parameters);
  AppendOutcome<Family>(4, sample, 1, true, outcomes);
  return true;
}

QVStatModelResult QVUniVarMixtureRanVars::SetupRanVarVecs(std::size_t numComponents,
                                                          const std::vector<unsigned int>& pdfTypes,
                                                          const std::vector<std::size_t>& numParams,
                                                          const Values& mixtureProbs,
                                                          QVRanVarVec& parameters,
                                                          QVRanVarVec& outcomes) {
  using Family = QVUniVarMixtureRanVars;
  const char* const where = "QVUniVarMixtureRanVars::SetupRanVarVecs";
  Clear(parameters, outcomes);
  if (numComponents == 0) return QVFailure(QVStatModelFailureType::EmptyStatModel, where);
  for (const std::size_t size : {pdfTypes.size(), numParams.size(), mixtureProbs.size()})
    if (size != numComponents)
      return QVFailure(QVStatModelFailureType::MismatchBetweenInputVecSizes, where)
             << "vector size: " << size << "; num components: " << numComponents;
  AppendParameter<Family>(0, {QVSystem::QVDoubleFromCount(numComponents)}, 1, parameters);
  AppendParameter<Family>(1, Values(pdfTypes.begin(), pdfTypes.end()), numComponents, parameters);
  Values counts(numComponents);
  std::transform(numParams.begin(), numParams.end(), counts.begin(), QVSystem::QVDoubleFromCount);
  AppendParameter<Family>(2, std::move(counts), numComponents, parameters);
  AppendParameter<Family>(3, mixtureProbs, numComponents, parameters);
  AppendOutcome<Family>(4, {0.0}, 1, false, outcomes);
  return true;
}

QVStatModelResult QVUniVarGenericRanVars::SetupRanVarVecs(std::uint64_t pdfType,
                                                          const Values& paramValues,
                                                          QVRanVarVec& parameters,
                                                          QVRanVarVec& outcomes) {
  const char* const where = "QVUniVarGenericRanVars::SetupRanVarVecs";
  Clear(parameters, outcomes);
  const ScalarFamily* family = FindScalarFamily(pdfType);
  if (!family)
    return QVFailure(QVStatModelFailureType::WrongPDFType, where) << "pdf type: " << pdfType;
  if (paramValues.size() != family->numParameters)
    return QVFailure(QVStatModelFailureType::WrongNumParameters, where)
           << QVPDFType::NameOf[pdfType] << ": " << paramValues.size() << " values; Expected "
           << family->numParameters;
  return QVCalledFrom(where, SetUp(*family, paramValues, parameters, outcomes));
}

}  // namespace QVStats
