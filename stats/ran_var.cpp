#include "stats/api/ran_var.h"

#include <cmath>
#include <sstream>
#include <utility>

#include "platform/system/cast.h"
#include "stats/api/matrix.h"
#include "stats/failure.h"

namespace QVStats {

namespace {

template <std::size_t numNames>
const std::string& NameAt(const std::string (&names)[numNames], std::uint64_t code) {
  return names[code < numNames ? code : 0];
}

/// Two codes and their names that should be the same.
QVStatModelResult CheckNamedCode(const char* where, const char* what, std::uint64_t argument,
                                 const std::string& argumentName, std::uint64_t own,
                                 const std::string& ownName) {
  if (argument == own) return true;
  return QVFailure(QVStatModelFailureType::ArgumentNameWrong, where)
         << "Argument Type,name " << argument << " " << argumentName << "; Object " << what
         << ", Name " << own << " " << ownName;
}

/// Two codes of a table of descriptions that should be the same.
template <std::size_t numTypes>
QVStatModelResult CheckDescribedCode(const char* where, const char* countText,
                                     const std::string (&descriptions)[numTypes],
                                     std::uint64_t argument, std::uint64_t own) {
  if (argument >= numTypes)
    return QVFailure(QVStatModelFailureType::ArgumentOutOfRange, where)
           << countText << numTypes << "; Argument is " << argument;
  if (argument == own) return true;
  return QVFailure(QVStatModelFailureType::ArgumentTypeWrong, where)
         << "Argument: " << descriptions[argument] << " Object: " << NameAt(descriptions, own);
}

/// Two numbers that should be the same.
QVStatModelResult CheckEqual(const char* where, const char* what, double argument, double own) {
  if (std::abs(argument - own) <= QVRanVarTolerance) return true;
  return QVFailure(QVStatModelFailureType::ArgumentValueWrong, where)
         << "Argument " << what << ": " << argument << " Object " << what << ": " << own;
}

template <class Value>
std::string Concatenate(const char* label, const Value& value, const char* end) {
  std::ostringstream text;
  text << label << value << end;
  return text.str();
}

}  // namespace

bool QVIsIntegerValued(double value) {
  return std::abs(value - QVSystem::QVRoundHalfEven(value)) <= QVRanVarTolerance;
}

QVRanVar::QVRanVar(std::uint64_t pdfType, std::uint64_t packageType, std::uint64_t ranVarType,
                   std::string name, std::uint64_t dataType, std::uint64_t dimensionalType,
                   std::uint64_t constraintType, std::vector<double> values,
                   std::uint64_t modelDimension, double lowerBound, double upperBound,
                   double varSumConstraint, bool multiValued)
    : pdfType_(pdfType),
      packageType_(packageType),
      ranVarType_(ranVarType),
      name_(std::move(name)),
      dataType_(dataType),
      dimensionalType_(dimensionalType),
      constraintType_(constraintType),
      values_(std::move(values)),
      modelDimension_(modelDimension),
      lowerBound_(lowerBound),
      upperBound_(upperBound),
      varSumConstraint_(varSumConstraint),
      multiValued_(multiValued) {}

QVRanVar::QVRanVar(std::uint64_t pdfType, std::uint64_t packageType, std::uint64_t ranVarType,
                   std::string name, std::uint64_t dataType, std::uint64_t dimensionalType,
                   std::uint64_t constraintType, double value, std::uint64_t modelDimension,
                   double lowerBound, double upperBound, double varSumConstraint)
    : QVRanVar(pdfType, packageType, ranVarType, std::move(name), dataType, dimensionalType,
               constraintType, std::vector<double>(1, value), modelDimension, lowerBound,
               upperBound, varSumConstraint, false) {}

const std::string& QVRanVar::GetPdfName() const { return NameAt(QVPDFType::NameOf, pdfType_); }

const std::string& QVRanVar::GetPackageName() const {
  return NameAt(QVPackageTypes::NameOf, packageType_);
}

QVSystem::QVIter<const double> QVRanVar::GetRanVarVals() const {
  return QVSystem::QVMakeIter<const double>(values_);
}

QVStatModelResult QVRanVar::SetRanVarVals(const std::vector<double>& values, bool check) {
  if (check) {
    QVStatModelResult result = CheckIfRanVarValsAreOk(values);
    if (QVFailedIn(result, "QVRanVar::SetRanVarVals")) return result;
  }
  values_ = values;
  return true;
}

QVStatModelResult QVRanVar::SetRanVarVals(const QVRanVar& other, bool check) {
  if (check) {
    QVStatModelResult result = CheckIfRanVarIsOk(other);
    if (QVFailedIn(result, "QVRanVar::SetRanVarVals")) return result;
  }
  values_ = other.values_;
  return true;
}

QVStatModelResult QVRanVar::SetRanVarVal(double value, bool check) {
  if (check) {
    QVStatModelResult result = CheckIfRanVarValIsOk(value);
    if (QVFailedIn(result, "QVRanVar::SetRanVarVal")) return result;
  }
  values_.assign(1, value);
  return true;
}

QVStatModelResult QVRanVar::CheckPdfType(std::uint64_t pdfType) const {
  return CheckNamedCode("QVRanVar::CheckPdfType", "pdfType", pdfType,
                        NameAt(QVPDFType::NameOf, pdfType), pdfType_, GetPdfName());
}

QVStatModelResult QVRanVar::CheckPackageType(std::uint64_t packageType) const {
  return CheckNamedCode("QVRanVar::CheckPackageName", "packageType", packageType,
                        NameAt(QVPackageTypes::NameOf, packageType), packageType_,
                        GetPackageName());
}

QVStatModelResult QVRanVar::CheckRanVarTypeName(std::uint64_t ranVarType,
                                                const std::string& name) const {
  return CheckNamedCode("QVRanVar::CheckPackageName", "RanVar Type", ranVarType, name, ranVarType_,
                        name_);
}

QVStatModelResult QVRanVar::CheckDataType(std::uint64_t dataType) const {
  return CheckDescribedCode("QVRanVar::CheckDataType",
                            "Num Data Types = ", QVRanVarDataType::Describe, dataType, dataType_);
}

QVStatModelResult QVRanVar::CheckDimensionalType(std::uint64_t dimensionalType) const {
  return CheckDescribedCode("QVRanVar::CheckDimensionalType",
                            "Num Dimensional Types = ", QVRanVarDimType::Describe, dimensionalType,
                            dimensionalType_);
}

QVStatModelResult QVRanVar::CheckConstraintType(std::uint64_t constraintType) const {
  return CheckDescribedCode("QVRanVar::CheckDimensionalType",
                            "Num Dimensional Types = ", QVRanVarConstraintTypes::Describe,
                            constraintType, constraintType_);
}

QVStatModelResult QVRanVar::CheckModelDimension(std::uint64_t modelDimension) const {
  if (modelDimension == modelDimension_) return true;
  return QVFailure(QVStatModelFailureType::ArgumentTypeWrong, "QVRanVar::CheckModelDimension")
         << "Argument model dimension " << modelDimension << "; Object model dimension "
         << modelDimension_;
}

QVStatModelResult QVRanVar::CheckLowerBound(double bound) const {
  return CheckEqual("QVRanVar::CheckLowerBound", "Lower Bound", bound, lowerBound_);
}

QVStatModelResult QVRanVar::CheckUpperBound(double bound) const {
  return CheckEqual("QVRanVar::CheckUpperBound", "Upper Bound", bound, upperBound_);
}

QVStatModelResult QVRanVar::CheckVarSumConstraint(double sum) const {
  return CheckEqual("QVRanVar::CheckVarSumConstraint", "Var Sum Constraint", sum,
                    varSumConstraint_);
}

QVStatModelResult QVRanVar::CheckIfRanVarIsOk(const QVRanVar& other) const {
  QVStatModelResult result = CheckPdfType(other.pdfType_);
  if (result.IsSuccessful()) result = CheckPackageType(other.packageType_);
  if (result.IsSuccessful()) result = CheckRanVarTypeName(other.ranVarType_, other.name_);
  if (result.IsSuccessful()) result = CheckDataType(other.dataType_);
  if (result.IsSuccessful()) result = CheckDimensionalType(other.dimensionalType_);
  if (result.IsSuccessful()) result = CheckConstraintType(other.constraintType_);
  if (result.IsSuccessful()) result = CheckModelDimension(other.modelDimension_);
  if (result.IsSuccessful() && (HasLowerBound() || HasStrictLowerBound()))
    result = CheckLowerBound(other.lowerBound_);
  if (result.IsSuccessful() && (HasUpperBound() || HasStrictUpperBound()))
    result = CheckUpperBound(other.upperBound_);
  if (result.IsSuccessful() && HasVarSumConstraint())
    result = CheckVarSumConstraint(other.varSumConstraint_);
  return QVCalledFrom("QVRanVar::CheckIfRanVarIsOk", result);
}

QVStatModelResult QVRanVar::CheckIntegers(const double* values, std::size_t numValues) const {
  if (!IsIntegerValued()) return true;
  for (std::size_t i = 0; i < numValues; ++i)
    if (!QVIsIntegerValued(values[i]))
      return QVFailure(QVStatModelFailureType::IntegerArgumentRequired,
                       "QVRanVar::CheckRanVarValDataType")
             << "Argument value is " << values[i];
  return true;
}

QVStatModelResult QVRanVar::CheckNumValues(std::size_t numValues) const {
  const char* const where = "QVRanVar::CheckRanVarValDimType";
  const std::uint64_t d = modelDimension_;
  if (IsScalar() && !multiValued_ && numValues != 1)
    return QVFailure(QVStatModelFailureType::ScalarArgumentRequired, where)
           << "Ran var has " << numValues << " components";
  // No vector but the empty one is a multiple of dimension 0.
  const bool multipleOfD = d == 0 ? numValues == 0 : numValues % d == 0;
  if (IsVector() && (multiValued_ ? !multipleOfD : numValues != d))
    return QVFailure(QVStatModelFailureType::WrongInputVectorSize, where)
           << "vector size: " << numValues << "; model dimension: " << d;
  if (IsSymmetricMatrix() && numValues != 1 && numValues != d && numValues != d * d)
    return QVFailure(QVStatModelFailureType::WrongInputMatrixSize, where)
           << "matrix size: " << numValues << "; model dimension: " << d;
  return true;
}

QVStatModelResult QVRanVar::CheckElement(double value) const {
  const bool tooLow =
      (HasLowerBound() && value < lowerBound_) || (HasStrictLowerBound() && value <= lowerBound_);
  const bool tooHigh =
      (HasUpperBound() && value > upperBound_) || (HasStrictUpperBound() && value >= upperBound_);
  if (!tooLow && !tooHigh) return true;
  QVFailure failure(tooLow ? QVStatModelFailureType::LowerBoundViolated
                           : QVStatModelFailureType::UpperBoundViolated,
                    "QVRanVar::CheckRanVarValConstraints");
  (failure << NameAt(QVRanVarConstraintTypes::Describe, constraintType_)).NextComment();
  return failure << (tooLow ? "Lower Bound: " : "Upper Bound: ")
                 << (tooLow ? lowerBound_ : upperBound_) << "; ran var element: " << value;
}

QVStatModelResult QVRanVar::CheckElements(const double* values, std::size_t numValues) const {
  if (IsUnConstrained()) return true;
  double sum = 0.0;
  for (std::size_t i = 0; i < numValues; ++i) {
    const QVStatModelResult result = CheckElement(values[i]);
    if (result.NotSuccessful()) return result;
    sum += values[i];
  }
  if (!HasVarSumConstraint()) return true;
  return QVCalledFrom("QVRanVar::CheckRanVarValConstraints", CheckVarSumConstraint(sum));
}

QVStatModelResult QVRanVar::CheckRanVarValDataType(const std::vector<double>& values) const {
  return CheckIntegers(values.data(), values.size());
}

QVStatModelResult QVRanVar::CheckRanVarValDimType(const std::vector<double>& values) const {
  return CheckNumValues(values.size());
}

QVStatModelResult QVRanVar::CheckRanVarValConstraints(const std::vector<double>& values) const {
  return CheckElements(values.data(), values.size());
}

QVStatModelResult QVRanVar::CheckMatrixConstraints(const std::vector<double>& values) const {
  const char* const where = "QVRanVar::CheckMatrixConstraints";
  if (IsUnConstrained()) return true;
  if (!HasLowerBound() && !HasStrictLowerBound())
    return QVFailure(QVStatModelFailureType::InappropriateConstraint, where);
  QVStatModelResult result = CheckLowerBound(0.0);
  if (QVFailedIn(result, where)) return result;
  const auto isDefinite = HasLowerBound() ? QVMatrixIsNonNegDef : QVMatrixIsPosDef;
  return QVCalledFrom(where, isDefinite(modelDimension_, values));
}

QVStatModelResult QVRanVar::CheckIfRanVarValsAreOk(const std::vector<double>& values) const {
  QVStatModelResult result = CheckRanVarValDataType(values);
  if (result.IsSuccessful()) result = CheckRanVarValDimType(values);
  if (result.IsSuccessful())
    result =
        IsSymmetricMatrix() ? CheckMatrixConstraints(values) : CheckRanVarValConstraints(values);
  return QVCalledFrom("QVRanVar::CheckIfRanVarValsAreOk", result);
}

QVStatModelResult QVRanVar::CheckIfRanVarValIsOk(double value) const {
  const char* const where = "QVRanVar::CheckIfRanVarValIsOk";
  // Distributions ask this of every argument: one number needs no vector.
  if (IsSymmetricMatrix()) return QVCalledFrom(where, CheckIfRanVarValsAreOk({value}));
  QVStatModelResult result = CheckIntegers(&value, 1);
  if (result.IsSuccessful()) result = CheckNumValues(1);
  if (result.IsSuccessful()) result = CheckElements(&value, 1);
  if (result.IsSuccessful()) return result;
  result.AddCallContext("QVRanVar::CheckIfRanVarValsAreOk");
  return QVCalledFrom(where, result);
}

std::string QVRanVar::PrintPdfName() const { return "Pdf Name: " + GetPdfName() + "\n"; }

std::string QVRanVar::PrintPackageName() const {
  return "Ran Var Package Name: " + GetPackageName() + "\n";
}

std::string QVRanVar::PrintRanVarName() const {
  return "Ran Var Name: " + name_ + "\nran var type = " + std::to_string(ranVarType_) + "\n";
}

std::string QVRanVar::PrintDataType() const {
  return NameAt(QVRanVarDataType::Describe, dataType_) + "\n";
}

std::string QVRanVar::PrintDimensionalType() const {
  std::string text = NameAt(QVRanVarDimType::Describe, dimensionalType_);
  if (IsSymmetricMatrix() && values_.size() == 1)
    text += ", Scalar times Identity,";
  else if (IsSymmetricMatrix() && values_.size() == modelDimension_)
    text += ", diagonal,";
  else if (IsSymmetricMatrix())
    text += ",";
  if (IsVector() || IsSymmetricMatrix()) text += " of dimension " + std::to_string(modelDimension_);
  return text + "\n";
}

std::string QVRanVar::PrintConstraintType() const {
  std::string text = NameAt(QVRanVarConstraintTypes::Describe, constraintType_);
  if (HasLowerBound() || HasStrictLowerBound())
    text += Concatenate("; Lower Bound: ", lowerBound_, " ");
  if (HasUpperBound() || HasStrictUpperBound())
    text += Concatenate("; Upper Bound: ", upperBound_, " ");
  if (HasVarSumConstraint()) text += Concatenate("; Var Sum Constraint: ", varSumConstraint_, " ");
  return text + "\n";
}

std::string QVRanVar::PrintValues(std::size_t limit) const {
  std::ostringstream text;
  text << "Random Var Values: ";
  std::size_t numPrinted = 0;
  for (; numPrinted < values_.size() && numPrinted < limit; ++numPrinted)
    text << values_[numPrinted] << " ";
  if (numPrinted >= limit) text << "..... (" << values_.size() - limit << " more)";
  return text.str();
}

std::string QVRanVar::Print(std::size_t limit) const {
  return PrintPdfName() + PrintPackageName() + PrintRanVarName() + PrintDataType() +
         PrintDimensionalType() + PrintConstraintType() + PrintValues(limit);
}

}  // namespace QVStats
