/// \file
/// \brief Typed random variable: a number, vector or matrix with constraints, whose value several
/// variables may share.
#ifndef QVSTATS_API_NRAN_VAR_H
#define QVSTATS_API_NRAN_VAR_H

#include <Eigen/Core>
#include <cstddef>
#include <memory>
#include <string>

#include "stats/api/export.h"
#include "stats/api/ran_var_constraints.h"
#include "stats/api/stat_model.h"

namespace QVStats {

/// What a typed random variable holds.
namespace nQVRanVarDataType {
inline constexpr unsigned int Unknown = 0;
inline constexpr unsigned int Scalar = 1;
inline constexpr unsigned int Vector = 2;
inline constexpr unsigned int Matrix = 3;
inline constexpr unsigned int NumTypes = 4;
inline const std::string RanVarDataTypeName[NumTypes] = {"Unknown Type", "Scalar Double",
                                                         "Eigen::VectorXd", "Eigen::MatrixXd"};
}  // namespace nQVRanVarDataType

/// The family of a typed random variable; its minor types are those of the namespace named.
namespace nQVRanVarMajorType {
inline constexpr unsigned int Unknown = 0;
inline constexpr unsigned int AllRanVars = 1;   ///< nQVAllRanVarsMinorType
inline constexpr unsigned int NullRanVar = 2;   ///< nQVNullRanVarMinorType
inline constexpr unsigned int UniVarGauss = 3;  ///< nQVUniVarGaussRanVarsMinorType
inline constexpr unsigned int NumTypes = 4;
inline const std::string TypeName[NumTypes] = {
    "Unknown Major Type", "Common To All Random Variables", "Null Random Variable",
    "Univariate Gaussian Random Variable"};
}  // namespace nQVRanVarMajorType

namespace nQVAllRanVarsMinorType {
inline constexpr unsigned int Unknown = 0;
inline constexpr unsigned int SingleObservation = 1;
inline constexpr unsigned int TrainingObservations = 2;
inline constexpr unsigned int TestingObservations = 3;
inline constexpr unsigned int TrainingWeights = 4;
inline constexpr unsigned int NumTypes = 5;
inline const std::string TypeName[NumTypes] = {
    "Unknown Minor Type", "Single Observation", "Vector of Training Observations",
    "Vector of Testing Observations", "Vector of Training Observation Weights"};
}  // namespace nQVAllRanVarsMinorType

namespace nQVNullRanVarMinorType {
inline constexpr unsigned int Unknown = 0;
inline constexpr unsigned int NumTypes = 1;
inline const std::string TypeName[NumTypes] = {"Unknown Minor Type"};
}  // namespace nQVNullRanVarMinorType

namespace nQVUniVarGaussRanVarsMinorType {
inline constexpr unsigned int Unknown = 0;
inline constexpr unsigned int Mean = 1;
inline constexpr unsigned int Variance = 2;
inline constexpr unsigned int SampleMean = 3;
inline constexpr unsigned int SampleVariance = 4;
inline constexpr unsigned int NumTypes = 5;
inline const std::string TypeName[NumTypes] = {"Unknown Minor Type", "Mean", "Variance",
                                               "SampleMean", "SampleVariance"};
}  // namespace nQVUniVarGaussRanVarsMinorType

/// "<major type name>::<minor type name>"; an unknown code has the name of code 0.
QVSTATS_EXPORT std::string nQVGetRanVarTypeName(unsigned int majorType, unsigned int minorType);

/// A value of one kind. Access to another kind fails: with a result, under the name of the class
/// and operation, with ArgumentTypeWrong (a null holder: NoData) and a comment; without one, it
/// is refused in silence. What is returned then is BadDouble(), BadVector(), BadMatrix(), null or
/// false, and the value stays.
class QVSTATS_EXPORT nQVRanVarBase {
 public:
  virtual ~nQVRanVarBase();
  virtual nQVRanVarBase* CreateCopy() const = 0;

  /// The largest finite double.
  static double BadDouble();
  /// Empty.
  static const Eigen::VectorXd& BadVector();
  static const Eigen::MatrixXd& BadMatrix();

  virtual bool LoadRanVarVal(double value) = 0;
  virtual bool LoadRanVarVal(QVStatModelResult& result, double value) = 0;
  virtual bool LoadRanVarVec(const Eigen::VectorXd& values) = 0;
  virtual bool LoadRanVarVec(QVStatModelResult& result, const Eigen::VectorXd& values) = 0;
  virtual bool LoadRanVarMat(const Eigen::MatrixXd& values) = 0;
  virtual bool LoadRanVarMat(QVStatModelResult& result, const Eigen::MatrixXd& values) = 0;

  virtual double GetRanVarVal() const = 0;
  virtual double GetRanVarVal(QVStatModelResult& result) const = 0;
  virtual const Eigen::VectorXd& GetRanVarVec() const = 0;
  virtual const Eigen::VectorXd& GetRanVarVec(QVStatModelResult& result) const = 0;
  virtual const Eigen::MatrixXd& GetRanVarMat() const = 0;
  virtual const Eigen::MatrixXd& GetRanVarMat(QVStatModelResult& result) const = 0;

  virtual const Eigen::VectorXd* GetConstRanVarVecPtr() const = 0;
  virtual const Eigen::VectorXd* GetConstRanVarVecPtr(QVStatModelResult& result) const = 0;
  virtual const Eigen::MatrixXd* GetConstRanVarMatPtr() const = 0;
  virtual const Eigen::MatrixXd* GetConstRanVarMatPtr(QVStatModelResult& result) const = 0;
  virtual Eigen::VectorXd* GetRanVarVecPtr() = 0;
  virtual Eigen::VectorXd* GetRanVarVecPtr(QVStatModelResult& result) = 0;
  virtual Eigen::MatrixXd* GetRanVarMatPtr() = 0;
  virtual Eigen::MatrixXd* GetRanVarMatPtr(QVStatModelResult& result) = 0;

  /// What is held, and the value: of a vector at most `limit` elements, of a matrix at most as
  /// many rows and columns.
  virtual std::string Print(std::size_t limit) const = 0;
};

/// A typed random variable: its type, name and constraints, and a shared value.
///
/// Copies share the value; the number of sharers is the reference count. Read-only is a property of
/// the variable, not of the value: others that share it may still change it. Constraints are
/// checked when a value is loaded or attached; a value changed through a pointer, or through
/// another variable that shares it, is not.
class QVSTATS_EXPORT nQVRanVar {
 public:
  /// No value, unknown types; every check fails.
  nQVRanVar();
  /// Holds a number, vector or matrix, and requires that kind from now on. The first value is not
  /// checked.
  nQVRanVar(unsigned int majorType, unsigned int minorType, const std::string& name,
            const QVCheckRanVarConstraints& constraints, double value);
  nQVRanVar(unsigned int majorType, unsigned int minorType, const std::string& name,
            const QVCheckRanVarConstraints& constraints, const Eigen::VectorXd& values);
  nQVRanVar(unsigned int majorType, unsigned int minorType, const std::string& name,
            const QVCheckRanVarConstraints& constraints, const Eigen::MatrixXd& values);
  // There is no move, so that no variable is ever left without a holder.
  nQVRanVar(const nQVRanVar&) = default;
  nQVRanVar& operator=(const nQVRanVar&) = default;
  ~nQVRanVar() = default;

  unsigned int GetRanVarMajorType() const { return majorType_; }
  unsigned int GetRanVarMinorType() const { return minorType_; }
  /// As nQVGetRanVarTypeName.
  std::string GetRanVarTypeName() const { return nQVGetRanVarTypeName(majorType_, minorType_); }
  const std::string& GetRanVarName() const { return name_; }
  bool IsDesiredType(unsigned int majorType, unsigned int minorType) const {
    return majorType_ == majorType && minorType_ == minorType;
  }
  /// A code of nQVRanVarDataType.
  unsigned int GetRanVarRequiredDataType() const { return requiredDataType_; }
  bool RanVarDataIsReadOnly() const { return readOnly_; }
  void SetRanVarDataReadOnly() { readOnly_ = true; }
  void ClearRanVarDataReadOnly() { readOnly_ = false; }
  /// How many variables share the value.
  std::size_t GetRanVarRefCount() const { return static_cast<std::size_t>(data_.use_count()); }

  /// \name Reading, as from the holder (see nQVRanVarBase)
  /// @{
  double GetRanVarVal() const { return Holder().GetRanVarVal(); }
  double GetRanVarVal(QVStatModelResult& result) const { return Holder().GetRanVarVal(result); }
  const Eigen::VectorXd& GetRanVarVec() const { return Holder().GetRanVarVec(); }
  const Eigen::VectorXd& GetRanVarVec(QVStatModelResult& result) const {
    return Holder().GetRanVarVec(result);
  }
  const Eigen::MatrixXd& GetRanVarMat() const { return Holder().GetRanVarMat(); }
  const Eigen::MatrixXd& GetRanVarMat(QVStatModelResult& result) const {
    return Holder().GetRanVarMat(result);
  }
  const Eigen::VectorXd* GetConstRanVarVecPtr() const { return Holder().GetConstRanVarVecPtr(); }
  const Eigen::VectorXd* GetConstRanVarVecPtr(QVStatModelResult& result) const {
    return Holder().GetConstRanVarVecPtr(result);
  }
  const Eigen::MatrixXd* GetConstRanVarMatPtr() const { return Holder().GetConstRanVarMatPtr(); }
  const Eigen::MatrixXd* GetConstRanVarMatPtr(QVStatModelResult& result) const {
    return Holder().GetConstRanVarMatPtr(result);
  }
  /// @}

  /// \name Writing
  /// A value is stored, whatever its size, if this variable is not read-only (VariableIsReadOnly)
  /// and CheckConstraints accepts it. A pointer is refused (null) to a read-only variable.
  /// \return whether it was stored.
  /// @{
  bool LoadRanVarVal(double value);
  bool LoadRanVarVal(QVStatModelResult& result, double value);
  bool LoadRanVarVec(const Eigen::VectorXd& values);
  bool LoadRanVarVec(QVStatModelResult& result, const Eigen::VectorXd& values);
  bool LoadRanVarMat(const Eigen::MatrixXd& values);
  bool LoadRanVarMat(QVStatModelResult& result, const Eigen::MatrixXd& values);
  Eigen::VectorXd* GetRanVarVecPtr();
  Eigen::VectorXd* GetRanVarVecPtr(QVStatModelResult& result);
  Eigen::MatrixXd* GetRanVarMatPtr();
  Eigen::MatrixXd* GetRanVarMatPtr(QVStatModelResult& result);
  /// @}

  /// The required kind (ArgumentTypeWrong), then the constraints.
  QVStatModelResult CheckConstraints(double value) const;
  QVStatModelResult CheckConstraints(const Eigen::VectorXd& values) const;
  QVStatModelResult CheckConstraints(const Eigen::MatrixXd& values) const;

  /// Shares the value of another variable from now on, if both require the same kind
  /// (ArgumentTypeWrong) and the value meets the constraints of this one. Its own is let go.
  /// \param makeReadOnly marks this variable read-only; false leaves it as it is.
  /// Also InternalLogicFailure, for a source of unknown kind.
  QVStatModelResult AttachData(const nQVRanVar& source, bool makeReadOnly);

  /// A line each for the name, the type, the access and the required kind, then the value.
  std::string Print(std::size_t limit) const;

 private:
  nQVRanVar(unsigned int majorType, unsigned int minorType, const std::string& name,
            const QVCheckRanVarConstraints& constraints, unsigned int requiredDataType,
            nQVRanVarBase* data);
  const nQVRanVarBase& Holder() const { return *data_; }
  template <class Value>
  QVStatModelResult CheckKindAndConstraints(const Value& value) const;
  template <class Value>
  QVStatModelResult CheckLoad(const char* where, const Value& value) const;
  bool CheckWritable(const char* where, QVStatModelResult& result) const;

  bool readOnly_ = false;
  unsigned int requiredDataType_ = nQVRanVarDataType::Unknown;
  unsigned int majorType_ = nQVRanVarMajorType::Unknown;
  unsigned int minorType_ = 0;
  std::string name_;
  QVCheckRanVarConstraints constraints_;
  std::shared_ptr<nQVRanVarBase> data_;
};

}  // namespace QVStats

#endif  // QVSTATS_API_NRAN_VAR_H
