// The multivariate Gaussian and Student's t distributions.

#include <cmath>

#include "platform/math/special_functions.h"
#include "platform/system/cast.h"
#include "platform/system/error_handler.h"
#include "stats/api/matrix.h"
#include "stats/api/pdf_families.h"
#include "stats/api/stats_data_types.h"
#include "stats/failure.h"
#include "stats/pdf_search.h"

namespace QVStats {
namespace QVLaws {

/// What is particular to the Gaussian: the type of its first matrix parameter, its functions of the
/// squared distance q, its coordinates' generator and its marginals.
class MultiVarGauss {
 public:
  static constexpr const char* kClassName = "QVMultiVarGaussImpl";
  static constexpr std::uint64_t kPdfType = QVPDFType::MultiVariateGaussian;
  static constexpr std::uint64_t kLocationType = 0;
  static constexpr bool kHasDegreesOfFreedom = false;

  static double GetLogNorm(double d, double) {
    constexpr double kHalfLogTwoPi = 0.9189385332046727;
    return -d * kHalfLogTwoPi;
  }
  static double GetLogShape(double q, double, double) { return -0.5 * q; }
  /// The covariance is this times the inverse of the precision; 0 when there is none.
  static double GetCovarianceFactor(double) { return 1.0; }
  static QVMath::QVGaussianRNG MakeGenerator(double) { return QVMath::QVGaussianRNG(); }
  static QVMultiVarPDF MakeMarginal(const std::vector<std::string>& names, double,
                                    const std::vector<double>& location,
                                    const std::vector<double>& matrix, QVStatModelResult& result) {
    return QVMultivariateGaussian(names, location, matrix, result);
  }
  static QVUniVarPDF MakeMarginal(const std::string& name, double, double location, double element,
                                  QVStatModelResult& result) {
    return QVUnivariateGaussian(name, location, element, result);
  }
};

/// The same for the Student's t of nu degrees of freedom.
class MultiVarStudentsT {
 public:
  static constexpr const char* kClassName = "QVMultiVarStudentsTImpl";
  static constexpr std::uint64_t kPdfType = QVPDFType::MultivariateStudentsT;
  static constexpr std::uint64_t kLocationType = 1;
  static constexpr bool kHasDegreesOfFreedom = true;

  static double GetLogNorm(double d, double nu) {
    constexpr double kPi = 3.141592653589793;
    // lgamma((nu + d) / 2) - lgamma(nu / 2), which keeps its digits for a large nu.
    const double gammas = QVMath::QVlgamma(0.5 * d) - QVMath::QVLogBeta(0.5 * nu, 0.5 * d);
    return gammas - 0.5 * d * std::log(nu * kPi);
  }
  static double GetLogShape(double q, double d, double nu) {
    return -0.5 * (d + nu) * std::log1p(q / nu);
  }
  static double GetCovarianceFactor(double nu) { return nu > 2.0 ? nu / (nu - 2.0) : 0.0; }
  static QVMath::QVStudentsTRNG MakeGenerator(double nu) {
    return QVMath::QVStudentsTRNG(0.0, 1.0, nu);
  }
  static QVMultiVarPDF MakeMarginal(const std::vector<std::string>& names, double nu,
                                    const std::vector<double>& location,
                                    const std::vector<double>& matrix, QVStatModelResult& result) {
    return QVMultivariateStudentsT(names, nu, location, matrix, result);
  }
  static QVUniVarPDF MakeMarginal(const std::string& name, double nu, double location,
                                  double element, QVStatModelResult& result) {
    return QVUnivariateStudentsT(name, nu, location, element, result);
  }
};

}  // namespace QVLaws

namespace {

// The outcome type that the density asks for, in both families.
constexpr std::uint64_t kCheckedOutcomeType = 3;

template <class Law>
std::string Where(const char* name) {
  return std::string(Law::kClassName) + "::" + name;
}

std::vector<double> Collect(const QVSystem::QVIter<const double>& values) {
  std::vector<double> list;
  for (const double value : values) list.push_back(value);
  return list;
}

/// The full form of a packed matrix that may be diagonal or a scalar.
std::vector<double> MakeFull(std::size_t d, const std::vector<double>& packed) {
  if (packed.size() == d * d) return packed;
  std::vector<double> full(d * d, 0.0);
  for (std::size_t i = 0; i < d; ++i) full[i * d + i] = packed[packed.size() == d ? i : 0];
  return full;
}

/// Precision matrix to covariance, its factor and the determinant.
QVStatModelResult FillFromPrecision(std::size_t d, QVEllipticParams& params) {
  QVStatModelResult result = QVMatrixIsPosDef(d, params.precision);
  if (result.IsSuccessful())
    result = QVInverseOfPosDefMatrix(d, params.precision, params.covariance);
  if (result.IsSuccessful())
    result = QVSquareRootOfPosDefMatrix(d, params.covariance, params.sqrtCovariance);
  double logDeterminant = 0.0;
  if (result.IsSuccessful())
    result = QVLogDeterminantOfPosDefMatrix(d, params.precision, logDeterminant);
  params.halfLogDetPrecision = 0.5 * logDeterminant;
  return result;
}

/// q = (x - location)' precision (x - location).
QVStatModelResult GetSquaredDistance(const QVEllipticParams& params, const std::vector<double>& x,
                                     double& q) {
  const std::size_t d = params.location.size();
  std::vector<double> difference, product;
  QVStatModelResult result = QVDifferenceBetweenVectors(d, x, params.location, difference);
  if (result.IsSuccessful()) result = QVMatrixTimesVector(d, params.precision, difference, product);
  if (result.IsSuccessful()) result = QVDotProductOfVectors(d, difference, product, q);
  return result;
}

}  // namespace

template <class Law>
QVEllipticImpl<Law>::QVEllipticImpl(const std::vector<std::string>& variableNames,
                                    const std::vector<QVRanVar>& parameters,
                                    const std::vector<QVRanVar>& outcomes)
    : QVMultiVarPDFImpl(Law::kPdfType, variableNames, parameters, outcomes) {
  if (GetParams().IsSuccessful()) SetValid();
}

template <class Law>
QVEllipticImpl<Law>* QVEllipticImpl<Law>::CreateCopy() const {
  return new QVEllipticImpl(*this);
}

template <class Law>
QVStatModelResult QVEllipticImpl<Law>::GetParams() {
  const std::string where = Where<Law>("GetParams");
  const std::size_t d = GetNumVariables();
  QVStatModelResult result(true);
  if (Law::kHasDegreesOfFreedom) {
    degreesOfFreedom_ = GetSingleParameterRanVarVal(0, result);
    if (QVFailedIn(result, where.c_str())) return result;
    if (!QV_ASSERT(degreesOfFreedom_ > 0.0))
      return QVFailure(QVStatModelFailureType::InternalLogicFailure, where.c_str());
  }
  params_.location = Collect(GetParameterRanVarVals(Law::kLocationType, d, result));
  if (QVFailedIn(result, where.c_str())) return result;
  const double size = GetSingleParameterRanVarVal(Law::kLocationType + 1, result);
  if (QVFailedIn(result, where.c_str())) return result;
  const auto count = static_cast<std::size_t>(QVSystem::QVRoundHalfEven(std::max(0.0, size)));
  params_.precision = Collect(GetParameterRanVarVals(Law::kLocationType + 2, count, result));
  if (QVFailedIn(result, where.c_str())) return result;
  if (d == 0 || (count != 1 && count != d && count != d * d))
    return QVFailure(QVStatModelFailureType::WrongInputMatrixSize, where.c_str())
           << "matrix size: " << count << "; model dimension: " << d;
  params_.precision = MakeFull(d, params_.precision);
  result = FillFromPrecision(d, params_);
  if (QVFailedIn(result, where.c_str())) return result;
  logNorm_ = params_.halfLogDetPrecision +
             Law::GetLogNorm(QVSystem::QVDoubleFromCount(d), degreesOfFreedom_);
  return true;
}

template <class Law>
bool QVEllipticImpl<Law>::Refuse(const char* name, QVStatModelResult& result) const {
  result = true;
  if (!Valid())
    result = QVFailure(QVStatModelFailureType::InvalidProbDistFunc, Where<Law>(name).c_str());
  return !Valid();
}

template <class Law>
bool QVEllipticImpl<Law>::FailedIn(const char* name, QVStatModelResult& result) const {
  return QVFailedIn(result, Where<Law>(name).c_str());
}

template <class Law>
double QVEllipticImpl<Law>::GetDensity(const std::vector<double>& x, QVStatModelResult& result,
                                       bool check) const {
  if (Refuse("GetDensity", result)) return QVStatsBadData::BadDouble;
  if (check) {
    result = CheckIfValsAreOkForOutcomeRanVar(kCheckedOutcomeType, x);
    if (FailedIn("GetDensity", result)) return QVGetValueOfRefusedArgument(result, 0.0, 0.0);
  }
  double q = 0.0;
  result = GetSquaredDistance(params_, x, q);
  if (FailedIn("GetDensity", result)) return QVStatsBadData::BadDouble;
  const double d = QVSystem::QVDoubleFromCount(GetNumVariables());
  return std::exp(logNorm_ + Law::GetLogShape(q, d, degreesOfFreedom_));
}

template <class Law>
std::vector<double> QVEllipticImpl<Law>::GetMean(QVStatModelResult& result) const {
  if (Refuse("GetMean", result)) return {};
  return params_.location;
}

template <class Law>
std::vector<double> QVEllipticImpl<Law>::GetMode(QVStatModelResult& result) const {
  if (Refuse("GetMode", result)) return {};
  return params_.location;
}

template <class Law>
std::vector<double> QVEllipticImpl<Law>::GetCovariance(QVStatModelResult& result) const {
  if (Refuse("GetCovariance", result)) return {};
  const double factor = Law::GetCovarianceFactor(degreesOfFreedom_);
  if (factor == 0.0) {
    result =
        QVFailure(QVStatModelFailureType::VarianceIsUndefined, Where<Law>("GetCovariance").c_str());
    return {};
  }
  std::vector<double> covariance(params_.covariance);
  for (double& element : covariance) element *= factor;
  return covariance;
}

template <class Law>
std::vector<double> QVEllipticImpl<Law>::GetRandomOutcome(QVStatModelResult& result,
                                                          QVMath::QVRanNumEngine& engine) {
  if (Refuse("GetRandomOutcome", result)) return {};
  const std::size_t d = GetNumVariables();
  const std::vector<double> z = Law::MakeGenerator(degreesOfFreedom_).Draw(engine, d);
  std::vector<double> outcome;
  result = QVMatrixTimesVector(d, params_.sqrtCovariance, z, outcome);
  if (result.IsSuccessful())
    result = QVVectorElementwiseSumAccumulate(d, params_.location, outcome);
  if (FailedIn("GetRandomOutcome", result)) return {};
  return outcome;
}

template <class Law>
QVUniVarPDF QVEllipticImpl<Law>::GetUnivariateMarginal(const std::string& name,
                                                       QVStatModelResult& result) const {
  const char* query = "GetUnivariateMarginal";
  if (Refuse(query, result)) return QVUniVarNullPDF(name);
  const std::size_t d = GetNumVariables();
  std::size_t index = 0;
  double location = 0.0, element = 0.0;
  result = GetIndexOfNameInVarNameList(name, index);
  if (result.IsSuccessful())
    result = QVGetVecElementFromIndex(d, params_.location, index, location);
  if (result.IsSuccessful())
    result = QVGetDiagonalElemOfMatrix(d, params_.covariance, index, element);
  if (FailedIn(query, result)) return QVUniVarNullPDF(name);
  QVUniVarPDF marginal = Law::MakeMarginal(name, degreesOfFreedom_, location, element, result);
  if (FailedIn(query, result)) return QVUniVarNullPDF(name);
  return marginal;
}

template <class Law>
QVMultiVarPDF QVEllipticImpl<Law>::GetMultivariateMarginal(const std::vector<std::string>& names,
                                                           QVStatModelResult& result) const {
  const char* query = "GetMultivariateMarginal";
  if (Refuse(query, result)) return QVMultiVarNullPDF(names);
  const std::size_t d = GetNumVariables();
  std::vector<std::size_t> indices;
  std::vector<double> location, block;
  result = GetIndicesOfNamesInVarNameList(names, indices);
  if (result.IsSuccessful())
    result = QVGetVecOfVecElementsFromVecOfIndices(d, params_.location, indices, location);
  if (result.IsSuccessful())
    result = QVGetBlockSubMatrixOfMatrix(d, params_.covariance, indices, block);
  if (FailedIn(query, result)) return QVMultiVarNullPDF(names);
  QVMultiVarPDF marginal = Law::MakeMarginal(names, degreesOfFreedom_, location, block, result);
  if (FailedIn(query, result)) return QVMultiVarNullPDF(names);
  return marginal;
}

template class QVEllipticImpl<QVLaws::MultiVarGauss>;
template class QVEllipticImpl<QVLaws::MultiVarStudentsT>;

}  // namespace QVStats
