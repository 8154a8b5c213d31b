#include "stats/api/ran_var_constraints.h"

#include <cmath>
#include <iterator>
#include <sstream>
#include <utility>

#include "stats/failure.h"

namespace QVStats {

namespace {

constexpr double kSumTolerance = 1e-10;

struct ElemWiseRow {
  std::uint64_t code;
  QVRanVarElemWiseConstraintBase* (*create)();
};

template <class Constraint>
QVRanVarElemWiseConstraintBase* Create() {
  return new Constraint;
}

constexpr ElemWiseRow kElemWiseConstraints[] = {
    {QVRanVarConstraintCodes::ElementIsPositive, &Create<QVElementIsPositive>},
    {QVRanVarConstraintCodes::ElementIsNonNegative, &Create<QVElementIsNonNegative>},
};

QVStatModelResult NotConfigured(const char* where) {
  return QVFailure(QVStatModelFailureType::ObjectNotValid, where);
}

QVStatModelResult TooLow(const char* where, double value, const char* requirement) {
  return QVFailure(QVStatModelFailureType::LowerBoundViolated, where)
         << "Argument value = " << value << requirement;
}

}  // namespace

QVRanVarElemWiseConstraintBase::~QVRanVarElemWiseConstraintBase() = default;
QVRanVarGlobalConstraintBase::~QVRanVarGlobalConstraintBase() = default;

QVElemWiseNullConstraint* QVElemWiseNullConstraint::CreateCopy() const {
  return new QVElemWiseNullConstraint(*this);
}

QVStatModelResult QVElemWiseNullConstraint::CheckConstraint(double) const {
  return NotConfigured("QVElemWiseNullConstraint::CheckConstraint");
}

std::string QVElemWiseNullConstraint::Print() const {
  return "This is an Element-Wise Null Constraint\n";
}

QVElementIsPositive* QVElementIsPositive::CreateCopy() const {
  return new QVElementIsPositive(*this);
}

QVStatModelResult QVElementIsPositive::CheckConstraint(double value) const {
  if (value > 0.0) return true;
  return TooLow("QVElementIsPositive::CheckConstraint", value, "; should be positive!");
}

std::string QVElementIsPositive::Print() const {
  return "QVElementIsPositive: asserts value is positive\n";
}

QVElementIsNonNegative* QVElementIsNonNegative::CreateCopy() const {
  return new QVElementIsNonNegative(*this);
}

QVStatModelResult QVElementIsNonNegative::CheckConstraint(double value) const {
  if (value >= 0.0) return true;
  return TooLow("QVElementIsNonNegative::CheckConstraint", value, "; should be non-negative!");
}

std::string QVElementIsNonNegative::Print() const {
  return "QVElementIsNonNegative: asserts value is non-negative\n";
}

QVGlobalNullConstraint* QVGlobalNullConstraint::CreateCopy() const {
  return new QVGlobalNullConstraint(*this);
}

QVStatModelResult QVGlobalNullConstraint::CheckConstraint(const Eigen::VectorXd&) const {
  return NotConfigured("QVGlobalNullConstraint::CheckConstraint");
}

QVStatModelResult QVGlobalNullConstraint::CheckConstraint(const Eigen::MatrixXd&) const {
  return NotConfigured("QVGlobalNullConstraint::CheckConstraint");
}

std::string QVGlobalNullConstraint::Print() const { return "This is a Null Global Constraint\n"; }

QVRanVarVectorHasSumVal::QVRanVarVectorHasSumVal(double sumValue, double tolerance)
    : sumValue_(sumValue), tolerance_(tolerance) {}

QVRanVarVectorHasSumVal* QVRanVarVectorHasSumVal::CreateCopy() const {
  return new QVRanVarVectorHasSumVal(*this);
}

QVStatModelResult QVRanVarVectorHasSumVal::CheckConstraint(const Eigen::VectorXd& values) const {
  const double sum = values.sum();
  if (std::abs(sum - sumValue_) <= tolerance_) return true;
  return QVFailure(QVStatModelFailureType::SumOfArgumentsWrong,
                   "QVRanVarVectorHasSumVal::CheckConstraint")
         << "Vector sums to = " << sum << "; Expected sum = " << sumValue_
         << "; Tolerance = " << tolerance_;
}

QVStatModelResult QVRanVarVectorHasSumVal::CheckConstraint(const Eigen::MatrixXd&) const {
  return QVFailure(QVStatModelFailureType::VectorArgumentRequired,
                   "QVRanVarVectorHasSumVal::CheckConstraint")
         << "Argument is a Matrix";
}

std::string QVRanVarVectorHasSumVal::Print() const {
  std::ostringstream text;
  text << "QVRanVarVectorHasSumVal: asserts elements sum to " << sumValue_ << "(tol: " << tolerance_
       << ")\n";
  return text.str();
}

QVRanVarElemWiseConstraintBase* QVGetElemWiseConstraintBase(std::uint64_t code) {
  for (const ElemWiseRow& row : kElemWiseConstraints)
    if (row.code == code) return row.create();
  return new QVElemWiseNullConstraint;
}

QVRanVarElemWiseConstraintBase* QVGetElemWiseConstraintBase(std::uint64_t, double) {
  return new QVElemWiseNullConstraint;
}

QVRanVarElemWiseConstraintBase* QVGetElemWiseConstraintBase(std::uint64_t, double, double) {
  return new QVElemWiseNullConstraint;
}

QVRanVarGlobalConstraintBase* QVGetGlobalConstraintBase(std::uint64_t) {
  return new QVGlobalNullConstraint;
}

QVRanVarGlobalConstraintBase* QVGetGlobalConstraintBase(std::uint64_t code, double sumValue) {
  return QVGetGlobalConstraintBase(code, sumValue, kSumTolerance);
}

QVRanVarGlobalConstraintBase* QVGetGlobalConstraintBase(std::uint64_t code, double sumValue,
                                                        double tolerance) {
  if (code == QVRanVarConstraintCodes::VectorHasSumVal)
    return new QVRanVarVectorHasSumVal(sumValue, tolerance);
  return new QVGlobalNullConstraint;
}

QVRanVarElemWiseConstraint::QVRanVarElemWiseConstraint() : impl_(new QVElemWiseNullConstraint) {}
QVRanVarElemWiseConstraint::QVRanVarElemWiseConstraint(std::uint64_t code)
    : impl_(QVGetElemWiseConstraintBase(code)) {}
QVRanVarElemWiseConstraint::QVRanVarElemWiseConstraint(std::uint64_t code, double parameter)
    : impl_(QVGetElemWiseConstraintBase(code, parameter)) {}
QVRanVarElemWiseConstraint::QVRanVarElemWiseConstraint(std::uint64_t code, double first,
                                                       double second)
    : impl_(QVGetElemWiseConstraintBase(code, first, second)) {}

QVRanVarGlobalConstraint::QVRanVarGlobalConstraint() : impl_(new QVGlobalNullConstraint) {}
QVRanVarGlobalConstraint::QVRanVarGlobalConstraint(std::uint64_t code)
    : impl_(QVGetGlobalConstraintBase(code)) {}
QVRanVarGlobalConstraint::QVRanVarGlobalConstraint(std::uint64_t code, double sumValue)
    : impl_(QVGetGlobalConstraintBase(code, sumValue)) {}
QVRanVarGlobalConstraint::QVRanVarGlobalConstraint(std::uint64_t code, double sumValue,
                                                   double tolerance)
    : impl_(QVGetGlobalConstraintBase(code, sumValue, tolerance)) {}

QVCheckRanVarConstraints::QVCheckRanVarConstraints()
    : globalConstraints_(1), elemWiseConstraints_(1) {}

QVCheckRanVarConstraints::QVCheckRanVarConstraints(
    std::vector<QVRanVarGlobalConstraint> globalConstraints,
    std::vector<QVRanVarElemWiseConstraint> elemWiseConstraints)
    : globalConstraints_(std::move(globalConstraints)),
      elemWiseConstraints_(std::move(elemWiseConstraints)) {}

template <class Values>
QVStatModelResult QVCheckRanVarConstraints::CheckGlobal(const Values& values) const {
  for (const QVRanVarGlobalConstraint& constraint : globalConstraints_) {
    QVStatModelResult result = constraint.CheckConstraint(values);
    if (QVFailedIn(result, "QVCheckRanVarConstraints::CheckGlobalConstraints")) return result;
  }
  return true;
}

template <class Values>
QVStatModelResult QVCheckRanVarConstraints::CheckBoth(const Values& values) const {
  QVStatModelResult result = CheckGlobalConstraints(values);
  if (result.IsSuccessful()) result = CheckElemWiseConstraints(values);
  return QVCalledFrom("QVCheckRanVarConstraints::CheckConstraints", result);
}

QVStatModelResult QVCheckRanVarConstraints::CheckConstraints(double value) const {
  return QVCalledFrom("QVCheckRanVarConstraints::CheckConstraints",
                      CheckElemWiseConstraints(value));
}

QVStatModelResult QVCheckRanVarConstraints::CheckConstraints(const Eigen::VectorXd& values) const {
  return CheckBoth(values);
}

QVStatModelResult QVCheckRanVarConstraints::CheckConstraints(const Eigen::MatrixXd& values) const {
  return CheckBoth(values);
}

QVStatModelResult QVCheckRanVarConstraints::CheckGlobalConstraints(
    const Eigen::VectorXd& values) const {
  return CheckGlobal(values);
}

QVStatModelResult QVCheckRanVarConstraints::CheckGlobalConstraints(
    const Eigen::MatrixXd& values) const {
  return CheckGlobal(values);
}

QVStatModelResult QVCheckRanVarConstraints::CheckElement(double value) const {
  for (const QVRanVarElemWiseConstraint& constraint : elemWiseConstraints_) {
    QVStatModelResult result = constraint.CheckConstraint(value);
    if (QVFailedIn(result, "QVCheckRanVarConstraints::CheckElemWiseConstraints")) return result;
  }
  return true;
}

QVStatModelResult QVCheckRanVarConstraints::CheckElemWiseConstraints(double value) const {
  return CheckElement(value);
}

QVStatModelResult QVCheckRanVarConstraints::CheckElemWiseConstraints(
    const Eigen::VectorXd& values) const {
  for (Eigen::Index i = 0; i < values.size(); ++i) {
    QVStatModelResult result = CheckElement(values(i));
    if (result.IsSuccessful()) continue;
    std::ostringstream comment;
    comment << "Problem with Vector element(" << i << "); value = " << values(i);
    result.AddExtraComment(comment.str());
    return result;
  }
  return true;
}

QVStatModelResult QVCheckRanVarConstraints::CheckElemWiseConstraints(
    const Eigen::MatrixXd& values) const {
  for (Eigen::Index i = 0; i < values.rows(); ++i)
    for (Eigen::Index j = 0; j < values.cols(); ++j) {
      QVStatModelResult result = CheckElement(values(i, j));
      if (result.IsSuccessful()) continue;
      std::ostringstream comment;
      comment << "Problem with Matrix element(" << i << "," << j << "); value = " << values(i, j);
      result.AddExtraComment(comment.str());
      return result;
    }
  return true;
}

std::string QVCheckRanVarConstraints::Print() const {
  std::string text;
  for (const QVRanVarGlobalConstraint& constraint : globalConstraints_) text += constraint.Print();
  for (const QVRanVarElemWiseConstraint& constraint : elemWiseConstraints_)
    text += constraint.Print();
  return text;
}

}  // namespace QVStats
