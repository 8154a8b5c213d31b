/// \file
/// \brief Constraints on numbers, vectors and matrices, as objects: what a typed random variable
/// may hold.
///
/// An element-wise constraint looks at one number, a global one at a whole vector or matrix. Both
/// are made from a small code. A check returns success, or a failure recorded in
/// "<class>::CheckConstraint" with a comment that shows the value.
#ifndef QVSTATS_API_RAN_VAR_CONSTRAINTS_H
#define QVSTATS_API_RAN_VAR_CONSTRAINTS_H

#include <Eigen/Core>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/system/copy_ptr.h"
#include "stats/api/export.h"
#include "stats/api/stat_model.h"

namespace QVStats {

/// Codes of the constraints; any other stands for the null constraint of the family.
namespace QVRanVarConstraintCodes {
inline constexpr unsigned int ElementIsPositive = 1;
inline constexpr unsigned int ElementIsNonNegative = 2;
inline constexpr unsigned int VectorHasSumVal = 3;
}  // namespace QVRanVarConstraintCodes

/// A condition on one number.
class QVSTATS_EXPORT QVRanVarElemWiseConstraintBase {
 public:
  virtual QVRanVarElemWiseConstraintBase* CreateCopy() const = 0;
  virtual ~QVRanVarElemWiseConstraintBase();
  virtual QVStatModelResult CheckConstraint(double value) const = 0;
  /// One line that names the constraint, with its end.
  virtual std::string Print() const = 0;
};

/// An entry that was never configured: every check fails with ObjectNotValid.
class QVSTATS_EXPORT QVElemWiseNullConstraint : public QVRanVarElemWiseConstraintBase {
 public:
  QVElemWiseNullConstraint* CreateCopy() const override;
  QVStatModelResult CheckConstraint(double value) const override;
  std::string Print() const override;
};

/// value > 0. Failure: LowerBoundViolated.
class QVSTATS_EXPORT QVElementIsPositive : public QVRanVarElemWiseConstraintBase {
 public:
  QVElementIsPositive* CreateCopy() const override;
  QVStatModelResult CheckConstraint(double value) const override;
  std::string Print() const override;
};

/// value >= 0. Failure: LowerBoundViolated.
class QVSTATS_EXPORT QVElementIsNonNegative : public QVRanVarElemWiseConstraintBase {
 public:
  QVElementIsNonNegative* CreateCopy() const override;
  QVStatModelResult CheckConstraint(double value) const override;
  std::string Print() const override;
};

/// A condition on a whole vector or matrix.
class QVSTATS_EXPORT QVRanVarGlobalConstraintBase {
 public:
  virtual QVRanVarGlobalConstraintBase* CreateCopy() const = 0;
  virtual ~QVRanVarGlobalConstraintBase();
  virtual QVStatModelResult CheckConstraint(const Eigen::VectorXd& values) const = 0;
  virtual QVStatModelResult CheckConstraint(const Eigen::MatrixXd& values) const = 0;
  /// One line that names the constraint, with its end.
  virtual std::string Print() const = 0;
};

/// An entry that was never configured: every check fails with ObjectNotValid.
class QVSTATS_EXPORT QVGlobalNullConstraint : public QVRanVarGlobalConstraintBase {
 public:
  QVGlobalNullConstraint* CreateCopy() const override;
  QVStatModelResult CheckConstraint(const Eigen::VectorXd& values) const override;
  QVStatModelResult CheckConstraint(const Eigen::MatrixXd& values) const override;
  std::string Print() const override;
};

/// |sum of the elements - sumValue| <= tolerance. Failures: SumOfArgumentsWrong; for any matrix
/// VectorArgumentRequired.
class QVSTATS_EXPORT QVRanVarVectorHasSumVal : public QVRanVarGlobalConstraintBase {
 public:
  QVRanVarVectorHasSumVal(double sumValue, double tolerance);
  QVRanVarVectorHasSumVal* CreateCopy() const override;
  QVStatModelResult CheckConstraint(const Eigen::VectorXd& values) const override;
  QVStatModelResult CheckConstraint(const Eigen::MatrixXd& values) const override;
  std::string Print() const override;

 private:
  double sumValue_;
  double tolerance_;
};

/// \name Constraints from codes
/// New objects that the caller owns; a null constraint for a code that takes other arguments.
/// @{

/// Takes ElementIsPositive and ElementIsNonNegative.
QVSTATS_EXPORT QVRanVarElemWiseConstraintBase* QVGetElemWiseConstraintBase(std::uint64_t code);
/// No element-wise constraint has parameters: always the null one.
QVSTATS_EXPORT QVRanVarElemWiseConstraintBase* QVGetElemWiseConstraintBase(std::uint64_t code,
                                                                           double parameter);
QVSTATS_EXPORT QVRanVarElemWiseConstraintBase* QVGetElemWiseConstraintBase(std::uint64_t code,
                                                                           double first,
                                                                           double second);

/// No global constraint is without parameters: always the null one.
QVSTATS_EXPORT QVRanVarGlobalConstraintBase* QVGetGlobalConstraintBase(std::uint64_t code);
/// Takes VectorHasSumVal, with tolerance 1e-10.
QVSTATS_EXPORT QVRanVarGlobalConstraintBase* QVGetGlobalConstraintBase(std::uint64_t code,
                                                                       double sumValue);
/// Takes VectorHasSumVal.
QVSTATS_EXPORT QVRanVarGlobalConstraintBase* QVGetGlobalConstraintBase(std::uint64_t code,
                                                                       double sumValue,
                                                                       double tolerance);
/// @}

/// One element-wise constraint as a value; null by default.
class QVSTATS_EXPORT QVRanVarElemWiseConstraint {
 public:
  QVRanVarElemWiseConstraint();
  explicit QVRanVarElemWiseConstraint(std::uint64_t code);
  QVRanVarElemWiseConstraint(std::uint64_t code, double parameter);
  QVRanVarElemWiseConstraint(std::uint64_t code, double first, double second);

  QVStatModelResult CheckConstraint(double value) const { return impl_->CheckConstraint(value); }
  std::string Print() const { return impl_->Print(); }

 private:
  QVSystem::QVCopyPtr<QVRanVarElemWiseConstraintBase> impl_;
};

/// One global constraint as a value; null by default.
class QVSTATS_EXPORT QVRanVarGlobalConstraint {
 public:
  QVRanVarGlobalConstraint();
  explicit QVRanVarGlobalConstraint(std::uint64_t code);
  QVRanVarGlobalConstraint(std::uint64_t code, double sumValue);
  QVRanVarGlobalConstraint(std::uint64_t code, double sumValue, double tolerance);

  QVStatModelResult CheckConstraint(const Eigen::VectorXd& values) const {
    return impl_->CheckConstraint(values);
  }
  QVStatModelResult CheckConstraint(const Eigen::MatrixXd& values) const {
    return impl_->CheckConstraint(values);
  }
  std::string Print() const { return impl_->Print(); }

 private:
  QVSystem::QVCopyPtr<QVRanVarGlobalConstraintBase> impl_;
};

/// All constraints of a random variable. Every check applies them in the order of their lists and
/// returns the first failure; empty lists accept every value.
class QVSTATS_EXPORT QVCheckRanVarConstraints {
 public:
  /// One null constraint in each list: every check fails with ObjectNotValid.
  QVCheckRanVarConstraints();
  QVCheckRanVarConstraints(std::vector<QVRanVarGlobalConstraint> globalConstraints,
                           std::vector<QVRanVarElemWiseConstraint> elemWiseConstraints);
  /// A new copy that the caller owns.
  QVCheckRanVarConstraints* CreateCopy() const { return new QVCheckRanVarConstraints(*this); }

  /// The element-wise constraints.
  QVStatModelResult CheckConstraints(double value) const;
  /// The global constraints, then the element-wise ones.
  QVStatModelResult CheckConstraints(const Eigen::VectorXd& values) const;
  QVStatModelResult CheckConstraints(const Eigen::MatrixXd& values) const;

  QVStatModelResult CheckGlobalConstraints(const Eigen::VectorXd& values) const;
  QVStatModelResult CheckGlobalConstraints(const Eigen::MatrixXd& values) const;
  QVStatModelResult CheckElemWiseConstraints(double value) const;
  /// A failure gets a comment with the index and value of the element. Matrices are read row by
  /// row.
  QVStatModelResult CheckElemWiseConstraints(const Eigen::VectorXd& values) const;
  QVStatModelResult CheckElemWiseConstraints(const Eigen::MatrixXd& values) const;

  /// A line for each global constraint, then for each element-wise one.
  std::string Print() const;

 private:
  template <class Values>
  QVStatModelResult CheckGlobal(const Values& values) const;
  template <class Values>
  QVStatModelResult CheckBoth(const Values& values) const;
  QVStatModelResult CheckElement(double value) const;

  std::vector<QVRanVarGlobalConstraint> globalConstraints_;
  std::vector<QVRanVarElemWiseConstraint> elemWiseConstraints_;
};

}  // namespace QVStats

#endif  // QVSTATS_API_RAN_VAR_CONSTRAINTS_H
