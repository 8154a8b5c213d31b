#include "stats/api/stat_model.h"

#include <iterator>

namespace QVStats {

namespace {

/// The reason line of each failure type, by its code.
constexpr const char* kReasons[] = {
    "Failure Type is undefined!\n",
    "Column Not Found! \n",
    "Column Has Wrong Data Type!\n",
    "Column Is Nominal but With Wrong Num Vals!\n",
    "Column has missing or bad Predictor Value!\n",
    "Column has missing or bad Response Value!\n",
    "Internal Logic Failure!\n",
    "Empty Statistical Model!\n",
    "Cached column Nums are invalid!\n",
    "Wrong Num Predictor Variables!\n",
    "Wrong Num Response Variables!\n",
    "Wrong Num parameters for model or subtype!\n",
    "Wrong Model Type for request!\n",
    "Method not yet implemented!\n",
    "An argument is out of range!\n",
    "An input matrix has the wrong size!\n",
    "An input vector has the wrong size!\n",
    "Class Instance not initialized yet!\n",
    "No data to work with!\n",
    "Some mismatch between private vector/array sizes!\n",
    "Some mismatch between input vector/array sizes!\n",
    "Matrix is singular!\n",
    "Variance,Covariance or Scale is singular!\n",
    "Probability distribution is a null type: no information!\n",
    "Probability distribution is invalid!\n",
    "Probability distribution has wrong num variables!\n",
    "Probability distribution type is wrong!\n",
    "The density is undefined here for this pdf!\n",
    "The mean is undefined for this pdf!\n",
    "The variance or covariance is undefined for this pdf!\n",
    "The Mode is undefined for this pdf!\n",
    "Argument has unknown data type!\n",
    "Argument is missing!\n",
    "An integer valued argument is required!\n",
    "A scalar argument is required!\n",
    "Argument violates lower bound!\n",
    "Argument violates upper bound!\n",
    "Vector elements of argument sum to wrong value!\n",
    "Constraint type is inappropriate for argument!\n",
    "Random variable not found!\n",
    "Random variable already exists!\n",
    "Wrong Random variable name requested!\n",
    "Wrong Random variable type requested!\n",
    "Wrong Random variable value requested!\n",
    "Name not found in list !\n",
    "Names not in same order as in list !\n",
    "More than one copy of name in list !\n",
    "Attempting Write Acess to a readonly Variable !\n",
    "The argument is required to be of Vector Type !\n",
    "The argument is required to be of Matrix Type !\n",
    "The File type does not match any known type !\n",
    "The File type is wrong for desired operation !\n",
    "The File State is wrong for desired operation !\n",
    "An Invalid Failure type is given!\n",
};
static_assert(std::size(kReasons) == QVStatModelFailureType::InvalidFailureType + 1,
              "a reason for each failure type");

}  // namespace

QVStatModelResult& QVStatModelResult::operator=(const bool& ok) {
  if (!ok && !ok_) return *this;
  Clear();
  ok_ = ok;
  return *this;
}

void QVStatModelResult::Clear() {
  context_.clear();
  comments_.clear();
  failureType_ = QVStatModelFailureType::Undefined;
  ok_ = true;
}

QVSystem::QVIter<const std::string> QVStatModelResult::GetContext() const {
  return QVSystem::QVMakeIter<const std::string>(context_);
}

QVSystem::QVIter<const std::string> QVStatModelResult::GetComments() const {
  return QVSystem::QVMakeIter<const std::string>(comments_);
}

void QVStatModelResult::SetFailContext(const std::string& where) {
  if (ok_) failureType_ = QVStatModelFailureType::Undefined;
  ok_ = false;
  context_.assign(1, where);
}

void QVStatModelResult::SetFailureTypeAndWhereFailed(const unsigned int& type,
                                                     const std::string& where) {
  SetFailContext(where);
  failureType_ = type < QVStatModelFailureType::InvalidFailureType
                     ? type
                     : QVStatModelFailureType::InvalidFailureType;
}

void QVStatModelResult::SetFailTypeUndefined(const std::string& where) {
  SetFailureTypeAndWhereFailed(QVStatModelFailureType::Undefined, where);
}

void QVStatModelResult::AddCallContext(const std::string& caller) {
  if (context_.empty()) context_.emplace_back("Unknown Failure Routine");
  context_.push_back(caller);
}

void QVStatModelResult::AddExtraComment(const std::string& text) { comments_.push_back(text); }

std::string QVStatModelResult::ReportStatResultDetails() const {
  if (ok_) return "Result is successful!";
  std::string report = "\nResult was not successful: \n";
  if (context_.empty()) report += "Failed in Undetermined Routine: \n";
  const char* verb = "Failed in Routine: ";
  for (const std::string& routine : context_) {
    report += verb + routine + " \n";
    verb = "Called by Routine: ";
  }
  report += "Failure Reason(s):\n";
  report += kReasons[failureType_];
  if (!comments_.empty()) report += "Extra Comments:\n";
  for (const std::string& comment : comments_) report += comment + " \n";
  return report;
}

}  // namespace QVStats
