/// \file
/// \brief How transforms answer in every storage type, written once for all families.
#ifndef QVSTATS_API_PRIVATE_DATA_TRANSFORMS_IMPL_H
#define QVSTATS_API_PRIVATE_DATA_TRANSFORMS_IMPL_H

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "stats/api/stats_data_types.h"

namespace QVStats {

/// The evaluations for one tuple of argument types, a result type each.
template <class... Arguments>
class QVTransformEvaluation {
 public:
  virtual unsigned int GetUnsigned(Arguments... arguments) const = 0;
  virtual int GetInt(Arguments... arguments) const = 0;
  virtual double GetDouble(Arguments... arguments) const = 0;
  virtual std::string GetString(Arguments... arguments) const = 0;

 protected:
  ~QVTransformEvaluation() = default;
};

/// The evaluations for several tuples as overloads.
template <class... Evaluations>
class QVTransformOverloads : public Evaluations... {
 public:
  using Evaluations::GetDouble...;
  using Evaluations::GetInt...;
  using Evaluations::GetString...;
  using Evaluations::GetUnsigned...;

 protected:
  ~QVTransformOverloads() = default;
};

inline double QVArgumentAsDouble(unsigned int value) { return QVDoubleFromUnsigned(value); }
inline double QVArgumentAsDouble(int value) { return QVDoubleFromInt(value); }
inline double QVArgumentAsDouble(const std::string& value) { return QVDoubleFromString(value); }
inline std::vector<double> QVArgumentAsDouble(const std::vector<unsigned int>& values) {
  return QVDoubleFromUnsigned(values);
}
inline std::vector<double> QVArgumentAsDouble(const std::vector<int>& values) {
  return QVDoubleFromInt(values);
}
inline std::vector<double> QVArgumentAsDouble(const std::vector<std::string>& values) {
  return QVDoubleFromString(values);
}

/// Evaluates arguments of other types by converting them to double.
template <class Family, class... Arguments>
class QVConvertsToDouble : public Family {
 public:
  using Family::GetDouble;
  using Family::GetInt;
  using Family::GetString;
  using Family::GetUnsigned;
  unsigned int GetUnsigned(Arguments... arguments) const override {
    return this->GetUnsigned(QVArgumentAsDouble(arguments)...);
  }
  int GetInt(Arguments... arguments) const override {
    return this->GetInt(QVArgumentAsDouble(arguments)...);
  }
  double GetDouble(Arguments... arguments) const override {
    return this->GetDouble(QVArgumentAsDouble(arguments)...);
  }
  std::string GetString(Arguments... arguments) const override {
    return this->GetString(QVArgumentAsDouble(arguments)...);
  }
};

/// A transform of doubles with a double as its result: GetDouble is left to the concrete class.
template <class Family, class... Doubles>
class QVDoubleResult : public Family {
 public:
  using Family::GetDouble;
  using Family::GetInt;
  using Family::GetString;
  using Family::GetUnsigned;
  unsigned int DataTypeOfTransformArgument() const override { return QVStatVarDataType::Double; }
  unsigned int DataTypeOfTransformResult() const override { return QVStatVarDataType::Double; }
  unsigned int StatVarTypeOfTransformResult() const override { return QVStatVariableType::Ratio; }
  unsigned int GetUnsigned(Doubles... arguments) const override {
    return QVUnsignedFromDouble(this->GetDouble(arguments...));
  }
  int GetInt(Doubles... arguments) const override {
    return QVIntFromDouble(this->GetDouble(arguments...));
  }
  std::string GetString(Doubles... arguments) const override {
    return QVStringFromDouble(this->GetDouble(arguments...));
  }
};

/// A transform of doubles with an outcome as its result: GetUnsigned, which yields the index of the
/// outcome or a sentinel, is left to the concrete class.
template <class Family, class... Doubles>
class QVNominalResult : public Family {
 public:
  using Family::GetDouble;
  using Family::GetInt;
  using Family::GetString;
  using Family::GetUnsigned;
  explicit QVNominalResult(std::vector<std::string> outcomes) : outcomes_(std::move(outcomes)) {}
  std::vector<std::string> GetOutcomes() const override { return outcomes_; }
  unsigned int DataTypeOfTransformArgument() const override { return QVStatVarDataType::Double; }
  unsigned int DataTypeOfTransformResult() const override { return QVStatVarDataType::String; }
  unsigned int StatVarTypeOfTransformResult() const override { return QVStatVariableType::Nominal; }
  int GetInt(Doubles... arguments) const override {
    return QVIntFromUnsigned(this->GetUnsigned(arguments...));
  }
  double GetDouble(Doubles... arguments) const override {
    return QVDoubleFromUnsigned(this->GetUnsigned(arguments...));
  }
  std::string GetString(Doubles... arguments) const override {
    const unsigned int outcome = this->GetUnsigned(arguments...);
    if (outcome == QVStatsBadData::MissingUnsigned) return QVStatsBadData::MissingString;
    if (outcome == QVStatsBadData::BadUnsigned) return QVStatsBadData::BadString;
    return outcome < outcomes_.size() ? outcomes_[outcome] : QVStatsBadData::BadLookupIndexName;
  }

 private:
  std::vector<std::string> outcomes_;
};

}  // namespace QVStats

#endif  // QVSTATS_API_PRIVATE_DATA_TRANSFORMS_IMPL_H
