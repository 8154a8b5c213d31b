/// \file
/// \brief The holders of the values of typed random variables.
#ifndef QVSTATS_NRAN_VAR_HOLDERS_H
#define QVSTATS_NRAN_VAR_HOLDERS_H

#include <string>
#include <type_traits>

#include "stats/api/nran_var.h"
#include "stats/failure.h"

namespace QVStats {

/// The name of a kind of value in messages.
template <class Value>
inline constexpr const char* nQVKindName = nullptr;
template <>
inline constexpr const char* nQVKindName<double> = "double";
template <>
inline constexpr const char* nQVKindName<Eigen::VectorXd> = "VectorXd";
template <>
inline constexpr const char* nQVKindName<Eigen::MatrixXd> = "MatrixXd";

/// All of the holders' access, once: to the kind that is held it succeeds, to any other it fails.
/// \tparam Held  the kind that is held; void for none.
/// \tparam Names gives the name of the holder's class.
template <class Held, class Names>
class nQVHolder : public nQVRanVarBase {
 public:
  using Vector = Eigen::VectorXd;
  using Matrix = Eigen::MatrixXd;

  bool LoadRanVarVal(double value) override { return Store(nullptr, "", value); }
  bool LoadRanVarVal(QVStatModelResult& result, double value) override {
    return Store(&result, "LoadRanVarVal", value);
  }
  bool LoadRanVarVec(const Vector& values) override { return Store(nullptr, "", values); }
  bool LoadRanVarVec(QVStatModelResult& result, const Vector& values) override {
    return Store(&result, "LoadRanVarVec", values);
  }
  bool LoadRanVarMat(const Matrix& values) override { return Store(nullptr, "", values); }
  bool LoadRanVarMat(QVStatModelResult& result, const Matrix& values) override {
    return Store(&result, "LoadRanVarMat", values);
  }

  double GetRanVarVal() const override { return ValueOr(Find<double>(nullptr, ""), BadDouble()); }
  double GetRanVarVal(QVStatModelResult& result) const override {
    return ValueOr(Find<double>(&result, "GetRanVarVal"), BadDouble());
  }
  const Vector& GetRanVarVec() const override {
    return ValueOr(Find<Vector>(nullptr, ""), BadVector());
  }
  const Vector& GetRanVarVec(QVStatModelResult& result) const override {
    return ValueOr(Find<Vector>(&result, "GetRanVarVec"), BadVector());
  }
  const Matrix& GetRanVarMat() const override {
    return ValueOr(Find<Matrix>(nullptr, ""), BadMatrix());
  }
  const Matrix& GetRanVarMat(QVStatModelResult& result) const override {
    return ValueOr(Find<Matrix>(&result, "GetRanVarMat"), BadMatrix());
  }

  const Vector* GetConstRanVarVecPtr() const override { return Find<Vector>(nullptr, ""); }
  const Vector* GetConstRanVarVecPtr(QVStatModelResult& result) const override {
    return Find<Vector>(&result, "GetConstRanVarVecPtr");
  }
  const Matrix* GetConstRanVarMatPtr() const override { return Find<Matrix>(nullptr, ""); }
  const Matrix* GetConstRanVarMatPtr(QVStatModelResult& result) const override {
    return Find<Matrix>(&result, "GetConstRanVarMatPtr");
  }
  Vector* GetRanVarVecPtr() override { return FindMutable<Vector>(nullptr, ""); }
  Vector* GetRanVarVecPtr(QVStatModelResult& result) override {
    return FindMutable<Vector>(&result, "GetRanVarVecPtr");
  }
  Matrix* GetRanVarMatPtr() override { return FindMutable<Matrix>(nullptr, ""); }
  Matrix* GetRanVarMatPtr(QVStatModelResult& result) override {
    return FindMutable<Matrix>(&result, "GetRanVarMatPtr");
  }

 protected:
  struct Nothing {};
  using Stored = std::conditional_t<std::is_void_v<Held>, Nothing, Held>;
  Stored value_;

  explicit nQVHolder(const Stored& value) : value_(value) {}

 private:
  /// Records that another kind was asked for; null `result` for a silent refusal.
  static void Refuse(QVStatModelResult* result, const char* operation, const char* verb,
                     const char* requestedKind) {
    if (!result) return;
    const std::string where = std::string(Names::Class) + "::" + operation;
    if constexpr (std::is_void_v<Held>)
      *result = QVFailure(QVStatModelFailureType::NoData, where.c_str())
                << "No data for Null Random Variable";
    else
      *result = QVFailure(QVStatModelFailureType::ArgumentTypeWrong, where.c_str())
                << "Private data is a " << nQVKindName<Held> << "; Can't " << verb << " a "
                << requestedKind;
  }

  template <class Value>
  const Value* Find(QVStatModelResult* result, const char* operation) const {
    if constexpr (std::is_same_v<Value, Held>) {
      if (result) *result = true;
      return &value_;
    } else {
      Refuse(result, operation, "return", nQVKindName<Value>);
      return nullptr;
    }
  }

  template <class Value>
  Value* FindMutable(QVStatModelResult* result, const char* operation) {
    return const_cast<Value*>(Find<Value>(result, operation));
  }

  template <class Value>
  bool Store(QVStatModelResult* result, const char* operation, const Value& value) {
    if constexpr (std::is_same_v<Value, Held>) {
      if (result) *result = true;
      value_ = value;
      return true;
    } else {
      Refuse(result, operation, "accept", nQVKindName<Value>);
      return false;
    }
  }

  static double ValueOr(const double* value, double bad) { return value ? *value : bad; }
  template <class Value>
  static const Value& ValueOr(const Value* value, const Value& bad) {
    return value ? *value : bad;
  }
};

struct nQVNullRanVarNames {
  static constexpr const char* Class = "nQVNullRanVar";
};
struct nQVScalarRanVarNames {
  static constexpr const char* Class = "nQVScalarRanVar";
};
struct nQVVectorRanVarNames {
  static constexpr const char* Class = "nQVVectorRanVar";
};
struct nQVMatrixRanVarNames {
  static constexpr const char* Class = "nQVMatrixRanVar";
};

/// Holds nothing.
class nQVNullRanVar final : public nQVHolder<void, nQVNullRanVarNames> {
 public:
  nQVNullRanVar() : nQVHolder({}) {}
  nQVNullRanVar* CreateCopy() const override { return new nQVNullRanVar(*this); }
  std::string Print(std::size_t limit) const override;
};

/// Holds a number.
class nQVScalarRanVar final : public nQVHolder<double, nQVScalarRanVarNames> {
 public:
  explicit nQVScalarRanVar(double value) : nQVHolder(value) {}
  nQVScalarRanVar* CreateCopy() const override { return new nQVScalarRanVar(*this); }
  std::string Print(std::size_t limit) const override;
};

/// Holds a vector of any size.
class nQVVectorRanVar final : public nQVHolder<Eigen::VectorXd, nQVVectorRanVarNames> {
 public:
  explicit nQVVectorRanVar(const Eigen::VectorXd& values) : nQVHolder(values) {}
  nQVVectorRanVar* CreateCopy() const override { return new nQVVectorRanVar(*this); }
  std::string Print(std::size_t limit) const override;
};

/// Holds a matrix of any size.
class nQVMatrixRanVar final : public nQVHolder<Eigen::MatrixXd, nQVMatrixRanVarNames> {
 public:
  explicit nQVMatrixRanVar(const Eigen::MatrixXd& values) : nQVHolder(values) {}
  nQVMatrixRanVar* CreateCopy() const override { return new nQVMatrixRanVar(*this); }
  std::string Print(std::size_t limit) const override;
};

}  // namespace QVStats

#endif  // QVSTATS_NRAN_VAR_HOLDERS_H
