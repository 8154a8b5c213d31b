#include "stats/api/nran_var.h"

#include <algorithm>
#include <sstream>

#include "stats/api/stats_data_types.h"
#include "stats/nran_var_holders.h"

namespace QVStats {

namespace {

struct MinorTypeTable {
  const std::string* names;
  unsigned int numTypes;
};

/// The minor types of each major type, by its code.
const MinorTypeTable kMinorTypes[] = {
    {nQVNullRanVarMinorType::TypeName, nQVNullRanVarMinorType::NumTypes},
    {nQVAllRanVarsMinorType::TypeName, nQVAllRanVarsMinorType::NumTypes},
    {nQVNullRanVarMinorType::TypeName, nQVNullRanVarMinorType::NumTypes},
    {nQVUniVarGaussRanVarsMinorType::TypeName, nQVUniVarGaussRanVarsMinorType::NumTypes},
};

/// What a variable must require for a kind of value, and the kind's name in messages.
struct Kind {
  unsigned int dataType;
  const char* name;
};
Kind KindOf(double) { return {nQVRanVarDataType::Scalar, "scalar"}; }
Kind KindOf(const Eigen::VectorXd&) { return {nQVRanVarDataType::Vector, "vector"}; }
Kind KindOf(const Eigen::MatrixXd&) { return {nQVRanVarDataType::Matrix, "matrix"}; }

const std::string& DataTypeName(unsigned int dataType) {
  return nQVRanVarDataType::RanVarDataTypeName[dataType];
}

}  // namespace

std::string nQVGetRanVarTypeName(unsigned int majorType, unsigned int minorType) {
  const unsigned int major = majorType < nQVRanVarMajorType::NumTypes ? majorType : 0;
  const MinorTypeTable& minorTypes = kMinorTypes[major];
  const unsigned int minor = minorType < minorTypes.numTypes ? minorType : 0;
  return nQVRanVarMajorType::TypeName[major] + "::" + minorTypes.names[minor];
}

nQVRanVarBase::~nQVRanVarBase() = default;

double nQVRanVarBase::BadDouble() { return QVStatsBadData::BadDouble; }

const Eigen::VectorXd& nQVRanVarBase::BadVector() {
  static const Eigen::VectorXd empty;
  return empty;
}

const Eigen::MatrixXd& nQVRanVarBase::BadMatrix() {
  static const Eigen::MatrixXd empty;
  return empty;
}

std::string nQVNullRanVar::Print(std::size_t) const { return "No data for Null Random Variable\n"; }

std::string nQVScalarRanVar::Print(std::size_t) const {
  std::ostringstream text;
  text << "Data is a scalar double\nRandom Variable Value: " << value_ << "\n";
  return text.str();
}

std::string nQVVectorRanVar::Print(std::size_t limit) const {
  const auto size = static_cast<std::size_t>(value_.size());
  std::ostringstream text;
  text << "Data is a dynamically sized vector of doubles (Eigen::VectorXd)\n"
       << "Random Variable Vector: Size = " << size << "\n";
  for (std::size_t i = 0; i < std::min(limit, size); ++i)
    text << value_(static_cast<Eigen::Index>(i)) << " ";
  text << "\n";
  return text.str();
}

std::string nQVMatrixRanVar::Print(std::size_t limit) const {
  std::ostringstream text;
  text << "Data is a dynamically sized matrix of doubles (Eigen::MatrixXd)\n"
       << "Random Variable Matrix: Num Rows = " << value_.rows() << "; Num Cols = " << value_.cols()
       << "; Print limit = " << limit << "\n";
  const auto shown = [&](Eigen::Index size) {
    return static_cast<Eigen::Index>(std::min(limit, static_cast<std::size_t>(size)));
  };
  for (Eigen::Index i = 0; i < shown(value_.rows()); ++i) {
    for (Eigen::Index j = 0; j < shown(value_.cols()); ++j) text << value_(i, j) << " ";
    text << "\n";
  }
  return text.str();
}

nQVRanVar::nQVRanVar() : data_(new nQVNullRanVar) {}

nQVRanVar::nQVRanVar(unsigned int majorType, unsigned int minorType, const std::string& name,
                     const QVCheckRanVarConstraints& constraints, unsigned int requiredDataType,
                     nQVRanVarBase* data)
    : requiredDataType_(requiredDataType),
      majorType_(majorType),
      minorType_(minorType),
      name_(name),
      constraints_(constraints),
      data_(data) {}

nQVRanVar::nQVRanVar(unsigned int majorType, unsigned int minorType, const std::string& name,
                     const QVCheckRanVarConstraints& constraints, double value)
    : nQVRanVar(majorType, minorType, name, constraints, nQVRanVarDataType::Scalar,
                new nQVScalarRanVar(value)) {}

nQVRanVar::nQVRanVar(unsigned int majorType, unsigned int minorType, const std::string& name,
                     const QVCheckRanVarConstraints& constraints, const Eigen::VectorXd& values)
    : nQVRanVar(majorType, minorType, name, constraints, nQVRanVarDataType::Vector,
                new nQVVectorRanVar(values)) {}

nQVRanVar::nQVRanVar(unsigned int majorType, unsigned int minorType, const std::string& name,
                     const QVCheckRanVarConstraints& constraints, const Eigen::MatrixXd& values)
    : nQVRanVar(majorType, minorType, name, constraints, nQVRanVarDataType::Matrix,
                new nQVMatrixRanVar(values)) {}

bool nQVRanVar::CheckWritable(const char* where, QVStatModelResult& result) const {
  result = true;
  if (readOnly_) result = QVFailure(QVStatModelFailureType::VariableIsReadOnly, where);
  return !readOnly_;
}

template <class Value>
QVStatModelResult nQVRanVar::CheckKindAndConstraints(const Value& value) const {
  const char* const where = "nQVRanVar::CheckConstraints";
  const Kind kind = KindOf(value);
  if (requiredDataType_ != kind.dataType)
    return QVFailure(QVStatModelFailureType::ArgumentTypeWrong, where)
           << "Trying to load a " << kind.name << ", while Random variable has required data type "
           << DataTypeName(requiredDataType_);
  return QVCalledFrom(where, constraints_.CheckConstraints(value));
}

template <class Value>
QVStatModelResult nQVRanVar::CheckLoad(const char* where, const Value& value) const {
  QVStatModelResult result(true);
  if (!CheckWritable(where, result)) return result;
  return QVCalledFrom(where, CheckKindAndConstraints(value));
}

bool nQVRanVar::LoadRanVarVal(QVStatModelResult& result, double value) {
  result = CheckLoad("nQVRanVar::LoadRanVarVal", value);
  return result.IsSuccessful() && data_->LoadRanVarVal(value);
}

bool nQVRanVar::LoadRanVarVec(QVStatModelResult& result, const Eigen::VectorXd& values) {
  result = CheckLoad("nQVRanVar::LoadRanVarVec", values);
  return result.IsSuccessful() && data_->LoadRanVarVec(values);
}

bool nQVRanVar::LoadRanVarMat(QVStatModelResult& result, const Eigen::MatrixXd& values) {
  result = CheckLoad("nQVRanVar::LoadRanVarMat", values);
  return result.IsSuccessful() && data_->LoadRanVarMat(values);
}

bool nQVRanVar::LoadRanVarVal(double value) {
  QVStatModelResult ignored;
  return LoadRanVarVal(ignored, value);
}

bool nQVRanVar::LoadRanVarVec(const Eigen::VectorXd& values) {
  QVStatModelResult ignored;
  return LoadRanVarVec(ignored, values);
}

bool nQVRanVar::LoadRanVarMat(const Eigen::MatrixXd& values) {
  QVStatModelResult ignored;
  return LoadRanVarMat(ignored, values);
}

Eigen::VectorXd* nQVRanVar::GetRanVarVecPtr(QVStatModelResult& result) {
  const char* const where = "nQVRanVar::GetRanVarVecPtr";
  if (!CheckWritable(where, result)) return nullptr;
  Eigen::VectorXd* const values = data_->GetRanVarVecPtr(result);
  QVFailedIn(result, where);
  return values;
}

Eigen::MatrixXd* nQVRanVar::GetRanVarMatPtr(QVStatModelResult& result) {
  const char* const where = "nQVRanVar::GetRanVarMatPtr";
  if (!CheckWritable(where, result)) return nullptr;
  Eigen::MatrixXd* const values = data_->GetRanVarMatPtr(result);
  QVFailedIn(result, where);
  return values;
}

Eigen::VectorXd* nQVRanVar::GetRanVarVecPtr() {
  QVStatModelResult ignored;
  return GetRanVarVecPtr(ignored);
}

Eigen::MatrixXd* nQVRanVar::GetRanVarMatPtr() {
  QVStatModelResult ignored;
  return GetRanVarMatPtr(ignored);
}

QVStatModelResult nQVRanVar::CheckConstraints(double value) const {
  return CheckKindAndConstraints(value);
}

QVStatModelResult nQVRanVar::CheckConstraints(const Eigen::VectorXd& values) const {
  return CheckKindAndConstraints(values);
}

QVStatModelResult nQVRanVar::CheckConstraints(const Eigen::MatrixXd& values) const {
  return CheckKindAndConstraints(values);
}

QVStatModelResult nQVRanVar::AttachData(const nQVRanVar& source, bool makeReadOnly) {
  const char* const where = "nQVRanVar::AttachData";
  if (source.requiredDataType_ != requiredDataType_)
    return QVFailure(QVStatModelFailureType::ArgumentTypeWrong, where)
           << "Source random variable has required data type "
           << DataTypeName(source.requiredDataType_)
           << "Random variable to be attached to has required data type "
           << DataTypeName(requiredDataType_);
  QVStatModelResult result(true);
  switch (source.requiredDataType_) {
    case nQVRanVarDataType::Scalar:
      result = CheckConstraints(source.GetRanVarVal());
      break;
    case nQVRanVarDataType::Vector:
      result = CheckConstraints(source.GetRanVarVec());
      break;
    case nQVRanVarDataType::Matrix:
      result = CheckConstraints(source.GetRanVarMat());
      break;
    default:
      return QVFailure(QVStatModelFailureType::InternalLogicFailure, where)
             << "Source Ran Var has unknown Data Type!";
  }
  if (QVFailedIn(result, where)) return result;
  data_ = source.data_;
  if (makeReadOnly) readOnly_ = true;
  return true;
}

std::string nQVRanVar::Print(std::size_t limit) const {
  std::string text = name_ + "\n";
  text += "Random Variable Type is " + GetRanVarTypeName() + "\n";
  text +=
      readOnly_ ? "Random Variable is read-only\n" : "Random Variable allows read-write access\n";
  text += "Random Variable Required Data Type is " + DataTypeName(requiredDataType_) + "\n";
  return text + data_->Print(limit);
}

}  // namespace QVStats
