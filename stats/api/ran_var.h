/// \file
/// \brief Random variable: the described value that distributions are built from and exchange.
#ifndef QVSTATS_API_RAN_VAR_H
#define QVSTATS_API_RAN_VAR_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/system/iter.h"
#include "stats/api/export.h"
#include "stats/api/stat_model.h"

namespace QVStats {

/// Families of distributions.
namespace QVPDFType {
inline constexpr std::uint64_t Unknown = 0;
inline constexpr std::uint64_t NullPDF = 1;
inline constexpr std::uint64_t UniVariateGaussian = 2;
inline constexpr std::uint64_t MultiVariateGaussian = 3;
inline constexpr std::uint64_t UnivariateStudentsT = 4;
inline constexpr std::uint64_t MultivariateStudentsT = 5;
inline constexpr std::uint64_t Gamma = 6;
inline constexpr std::uint64_t ChiSquared = 7;
inline constexpr std::uint64_t SnedecorsF = 8;
inline constexpr std::uint64_t Beta = 9;
inline constexpr std::uint64_t Dirichlet = 10;
inline constexpr std::uint64_t Wishart = 11;
inline constexpr std::uint64_t LogNormal = 12;
inline constexpr std::uint64_t GaussianGamma = 13;
inline constexpr std::uint64_t GaussianWishart = 14;
inline constexpr std::uint64_t Gumbel = 15;
inline constexpr std::uint64_t GeneralizedExtremeValue = 16;
inline constexpr std::uint64_t Binomial = 17;
inline constexpr std::uint64_t Multinomial = 18;
inline constexpr std::uint64_t Poisson = 19;
inline constexpr std::uint64_t BetaBinomial = 20;
inline constexpr std::uint64_t UniVarContValRandomSample = 21;
inline constexpr std::uint64_t UniVarIntValRandomSample = 22;
inline constexpr std::uint64_t MultiVarContValRandomSample = 23;
inline constexpr std::uint64_t MultiVarIntValRandomSample = 24;
inline constexpr std::uint64_t UniVariateMixture = 25;
inline constexpr std::uint64_t MultiVariateMixture = 26;
inline constexpr std::uint64_t NumTypes = 27;
inline const std::string NameOf[NumTypes] = {
    "Unknown PDF",
    "NullPDF",
    "UniVariate Gaussian",
    "MultiVariate Gaussian",
    "Univariate Students-T",
    "Multivariate Students-T",
    "Gamma",
    "Chi-Squared",
    "Snedecors-F",
    "Beta",
    "Dirichlet",
    "Wishart",
    "LogNormal",
    "Gaussian-Gamma",
    "Gaussian-Wishart",
    "Gumbel",
    "Generalized Extreme Value",
    "Binomial",
    "Multinomial",
    "Poisson",
    "Beta-Binomial",
    "UniVariate Continuous Valued Random Sample",
    "UniVariate Integer Valued Random Sample",
    "MultiVariate Continuous Valued Random Sample",
    "MultiVariate Integer Valued Random Sample",
    "UniVariate Mixture",
    "MultiVariate Mixture",
};
}  // namespace QVPDFType

/// The role of a random variable in its distribution.
namespace QVPackageTypes {
inline constexpr std::uint64_t Unknown = 0;
inline constexpr std::uint64_t Parameters = 1;
inline constexpr std::uint64_t Outcomes = 2;
inline constexpr std::uint64_t SampleStatistics = 3;
inline constexpr std::uint64_t NumTypes = 4;
inline const std::string NameOf[NumTypes] = {
    "Unknown Package Type",
    "Parameters",
    "Outcomes",
    "Sample Statistics",
};
}  // namespace QVPackageTypes

/// What kind of number a random variable is.
namespace QVRanVarDataType {
inline constexpr std::uint64_t Unknown = 0;
inline constexpr std::uint64_t Continuous = 1;
inline constexpr std::uint64_t IntegerValued = 2;
inline constexpr std::uint64_t Discrete = 3;
inline constexpr std::uint64_t NumTypes = 4;
inline const std::string Describe[NumTypes] = {
    "Random Var Data Type is Unknown",
    "Random Var Data Type is Continuous",
    "Random Var Data Type is Integer Valued",
    "Random Var Data Type is Discrete",
};
}  // namespace QVRanVarDataType

/// The shape of a random variable.
namespace QVRanVarDimType {
inline constexpr std::uint64_t Unknown = 0;
inline constexpr std::uint64_t Scalar = 1;
inline constexpr std::uint64_t Vector = 2;
inline constexpr std::uint64_t SymmetricMatrix = 3;
inline constexpr std::uint64_t NumTypes = 4;
inline const std::string Describe[NumTypes] = {
    "Random Var Dimensional Type is Unknown",
    "Random Var Dimensional Type is Scalar",
    "Random Var Dimensional Type is Vector",
    "Random Var Dimensional Type is Symmetric Matrix",
};
}  // namespace QVRanVarDimType

/// The range of a random variable: of each element of a scalar or vector x, of the eigenvalues of
/// a symmetric matrix.
namespace QVRanVarConstraintTypes {
inline constexpr std::uint64_t Unknown = 0;           ///< no bound is checked
inline constexpr std::uint64_t UnConstrained = 1;     ///< none
inline constexpr std::uint64_t LowerBound = 2;        ///< x >= lower
inline constexpr std::uint64_t StrictLowerBound = 3;  ///< x > lower
inline constexpr std::uint64_t UpperBound = 4;        ///< x <= upper
inline constexpr std::uint64_t StrictUpperBound = 5;  ///< x < upper
inline constexpr std::uint64_t Bounded = 6;           ///< lower <= x <= upper
inline constexpr std::uint64_t BoundedWithSum = 7;    ///< the same, and the elements sum to a value
inline constexpr std::uint64_t NumTypes = 8;
inline const std::string Describe[NumTypes] = {
    "Random Var Constraint Type is Unknown",
    "Random Var Constraint Type is UnConstrained",
    "Random Var must be Greater Or Equal to Lower Bound",
    "Random Var must be Greater than Lower Bound",
    "Random Var must be Less Or Equal to Upper Bound",
    "Random Var must be Less than Upper Bound",
    "Random Var must be Bounded Above and Below",
    "Random Vector, Elements must be Bounded And Sum to a Constant",
};
}  // namespace QVRanVarConstraintTypes

/// Two numbers of random variables count as equal when they differ by at most this, the epsilon of
/// single precision.
inline constexpr double QVRanVarTolerance = 0x1p-23;

/// \return whether a value is that close to an integer; infinities and NaN are not.
QVSTATS_EXPORT bool QVIsIntegerValued(double value);

/// One named random variable: which distribution it belongs to, its role, the kind, shape and range
/// of its values, and the values.
///
/// Constructors store what they are given; the checks say whether values, or another variable,
/// conform to the description. A check returns success, or a failure recorded under the name that
/// its description gives, with a comment that shows both sides. A NaN violates no bound.
///
/// A plain value: concurrent reads are safe.
class QVSTATS_EXPORT QVRanVar {
 public:
  /// \param pdfType        code of QVPDFType.
  /// \param packageType    code of QVPackageTypes.
  /// \param ranVarType     index among the variables of its family (see pdf_setup.h).
  /// \param name           its name there, or the user's name of an outcome.
  /// \param dataType       code of QVRanVarDataType.
  /// \param dimensionalType code of QVRanVarDimType.
  /// \param constraintType code of QVRanVarConstraintTypes.
  /// \param values         a symmetric matrix in any packed form of matrix.h.
  /// \param modelDimension d: elements of a vector, rows of a matrix, 1 for a scalar.
  /// \param lowerBound, upperBound, varSumConstraint used as far as the constraint type asks.
  /// \param multiValued    whether a scalar may hold any number of values and a vector any multiple
  ///                       of d: a sample of outcomes.
  QVRanVar(std::uint64_t pdfType, std::uint64_t packageType, std::uint64_t ranVarType,
           std::string name, std::uint64_t dataType, std::uint64_t dimensionalType,
           std::uint64_t constraintType, std::vector<double> values, std::uint64_t modelDimension,
           double lowerBound, double upperBound, double varSumConstraint, bool multiValued);

  /// One value; not multi-valued.
  QVRanVar(std::uint64_t pdfType, std::uint64_t packageType, std::uint64_t ranVarType,
           std::string name, std::uint64_t dataType, std::uint64_t dimensionalType,
           std::uint64_t constraintType, double value, std::uint64_t modelDimension,
           double lowerBound, double upperBound, double varSumConstraint);

  /// \name Description
  /// A name of an unknown code is that of code 0.
  /// @{
  std::uint64_t GetPdfType() const { return pdfType_; }
  std::uint64_t GetPackageType() const { return packageType_; }
  std::uint64_t GetRanVarType() const { return ranVarType_; }
  std::uint64_t GetDataType() const { return dataType_; }
  std::uint64_t GetDimensionalType() const { return dimensionalType_; }
  std::uint64_t GetConstraintType() const { return constraintType_; }
  std::uint64_t GetModelDimension() const { return modelDimension_; }
  double GetLowerBound() const { return lowerBound_; }
  double GetUpperBound() const { return upperBound_; }
  double GetVarSumConstraint() const { return varSumConstraint_; }
  const std::string& GetRanVarName() const { return name_; }
  const std::string& GetPdfName() const;
  const std::string& GetPackageName() const;
  bool IsMultiValued() const { return multiValued_; }

  bool IsScalar() const { return dimensionalType_ == QVRanVarDimType::Scalar; }
  bool IsVector() const { return dimensionalType_ == QVRanVarDimType::Vector; }
  bool IsSymmetricMatrix() const { return dimensionalType_ == QVRanVarDimType::SymmetricMatrix; }
  bool IsIntegerValued() const { return dataType_ == QVRanVarDataType::IntegerValued; }
  bool IsUnConstrained() const { return constraintType_ == QVRanVarConstraintTypes::UnConstrained; }
  /// A lower bound that may be reached: constraint types LowerBound, Bounded and BoundedWithSum.
  /// A strict one is reported by HasStrictLowerBound() only.
  bool HasLowerBound() const {
    return constraintType_ == QVRanVarConstraintTypes::LowerBound || IsBoundedOnBothSides();
  }
  bool HasStrictLowerBound() const {
    return constraintType_ == QVRanVarConstraintTypes::StrictLowerBound;
  }
  /// An upper bound that may be reached: constraint types UpperBound, Bounded and BoundedWithSum.
  bool HasUpperBound() const {
    return constraintType_ == QVRanVarConstraintTypes::UpperBound || IsBoundedOnBothSides();
  }
  bool HasStrictUpperBound() const {
    return constraintType_ == QVRanVarConstraintTypes::StrictUpperBound;
  }
  bool HasVarSumConstraint() const {
    return constraintType_ == QVRanVarConstraintTypes::BoundedWithSum;
  }
  /// @}

  /// \name Values
  /// A setter that checks and finds a fault leaves the values as they are.
  /// @{
  std::size_t GetNumRanVarVals() const { return values_.size(); }
  /// The values, in order. The iterator reads this object.
  QVSystem::QVIter<const double> GetRanVarVals() const;
  /// The same, contiguous.
  const std::vector<double>& GetRanVarValVec() const { return values_; }

  void ClearRanVarVals() { values_.clear(); }
  /// With `check`, CheckIfRanVarValsAreOk first.
  QVStatModelResult SetRanVarVals(const std::vector<double>& values, bool check);
  /// The values of another variable; with `check`, CheckIfRanVarIsOk first.
  QVStatModelResult SetRanVarVals(const QVRanVar& other, bool check);
  /// With `check`, CheckIfRanVarValIsOk first.
  QVStatModelResult SetRanVarVal(double value, bool check);
  /// @}

  /// \name Checks of a description
  /// Each compares its argument with the variable's own field.
  /// @{

  /// Failure: ArgumentNameWrong in "QVRanVar::CheckPdfType".
  QVStatModelResult CheckPdfType(std::uint64_t pdfType) const;
  /// Failure: ArgumentNameWrong in "QVRanVar::CheckPackageName".
  QVStatModelResult CheckPackageType(std::uint64_t packageType) const;
  /// Compares the type alone; the name is shown. Failure: ArgumentNameWrong in
  /// "QVRanVar::CheckPackageName".
  QVStatModelResult CheckRanVarTypeName(std::uint64_t ranVarType, const std::string& name) const;
  /// Failures in "QVRanVar::CheckDataType": ArgumentOutOfRange for an unknown code,
  /// ArgumentTypeWrong.
  QVStatModelResult CheckDataType(std::uint64_t dataType) const;
  /// The same in "QVRanVar::CheckDimensionalType".
  QVStatModelResult CheckDimensionalType(std::uint64_t dimensionalType) const;
  /// The same, in "QVRanVar::CheckDimensionalType" too.
  QVStatModelResult CheckConstraintType(std::uint64_t constraintType) const;
  /// Failure: ArgumentTypeWrong in "QVRanVar::CheckModelDimension".
  QVStatModelResult CheckModelDimension(std::uint64_t modelDimension) const;
  /// Failure: ArgumentValueWrong in "QVRanVar::CheckLowerBound".
  QVStatModelResult CheckLowerBound(double bound) const;
  /// Failure: ArgumentValueWrong in "QVRanVar::CheckUpperBound".
  QVStatModelResult CheckUpperBound(double bound) const;
  /// Failure: ArgumentValueWrong in "QVRanVar::CheckVarSumConstraint".
  QVStatModelResult CheckVarSumConstraint(double sum) const;
  /// Whether another variable is described identically: all of the above in their order, bounds
  /// and sum as far as this variable has them.
  QVStatModelResult CheckIfRanVarIsOk(const QVRanVar& other) const;
  /// @}

  /// \name Checks of values
  /// @{

  /// An integer-valued variable takes values for which QVIsIntegerValued. Failure:
  /// IntegerArgumentRequired.
  QVStatModelResult CheckRanVarValDataType(const std::vector<double>& values) const;
  /// The number of values: 1, d, or the packed forms of a matrix. Failures:
  /// ScalarArgumentRequired, WrongInputVectorSize, WrongInputMatrixSize.
  QVStatModelResult CheckRanVarValDimType(const std::vector<double>& values) const;
  /// Bounds of each element, then their sum. Failures: LowerBoundViolated, UpperBoundViolated,
  /// ArgumentValueWrong from CheckVarSumConstraint.
  QVStatModelResult CheckRanVarValConstraints(const std::vector<double>& values) const;
  /// A lower bound of a matrix must be 0 and means non-negative definite, a strict one positive
  /// definite. Failures: those of CheckLowerBound, QVMatrixIsNonNegDef and QVMatrixIsPosDef;
  /// InappropriateConstraint for any other constraint.
  QVStatModelResult CheckMatrixConstraints(const std::vector<double>& values) const;
  /// The checks of kind, number and range that apply to this variable, in that order.
  QVStatModelResult CheckIfRanVarValsAreOk(const std::vector<double>& values) const;
  /// The same for one value.
  QVStatModelResult CheckIfRanVarValIsOk(double value) const;
  /// @}

  /// \name Text
  /// @{
  std::string PrintPdfName() const;
  std::string PrintPackageName() const;
  std::string PrintRanVarName() const;
  std::string PrintDataType() const;
  std::string PrintDimensionalType() const;
  std::string PrintConstraintType() const;
  /// At most `limit` values; from `limit` values on, the number left out (which may be 0) as well.
  std::string PrintValues(std::size_t limit) const;
  /// All of the above, in this order.
  std::string Print(std::size_t limit) const;
  /// @}

 private:
  bool IsBoundedOnBothSides() const {
    return constraintType_ == QVRanVarConstraintTypes::Bounded ||
           constraintType_ == QVRanVarConstraintTypes::BoundedWithSum;
  }
  QVStatModelResult CheckElement(double value) const;
  QVStatModelResult CheckElements(const double* values, std::size_t numValues) const;
  QVStatModelResult CheckIntegers(const double* values, std::size_t numValues) const;
  QVStatModelResult CheckNumValues(std::size_t numValues) const;

  std::uint64_t pdfType_;
  std::uint64_t packageType_;
  std::uint64_t ranVarType_;
  std::string name_;
  std::uint64_t dataType_;
  std::uint64_t dimensionalType_;
  std::uint64_t constraintType_;
  std::vector<double> values_;
  std::uint64_t modelDimension_;
  double lowerBound_;
  double upperBound_;
  double varSumConstraint_;
  bool multiValued_;
};

}  // namespace QVStats

#endif  // QVSTATS_API_RAN_VAR_H
