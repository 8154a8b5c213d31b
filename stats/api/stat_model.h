/// \file
/// \brief Success or failure of a routine: what failed, where, and through which callers.
#ifndef QVSTATS_API_STAT_MODEL_H
#define QVSTATS_API_STAT_MODEL_H

#include <string>
#include <vector>

#include "platform/system/iter.h"
#include "stats/api/export.h"

namespace QVStats {

/// Why a routine failed. ReportStatResultDetails() prints a reason line for each code.
namespace QVStatModelFailureType {
inline constexpr unsigned int Undefined = 0;
inline constexpr unsigned int ColumnNotFound = 1;
inline constexpr unsigned int ColumnHasWrongDataType = 2;
inline constexpr unsigned int ColumnNominalWithWrongNumVals = 3;
inline constexpr unsigned int MissingOrBadPredictorValue = 4;
inline constexpr unsigned int MissingOrBadResponseValue = 5;
inline constexpr unsigned int InternalLogicFailure = 6;
inline constexpr unsigned int EmptyStatModel = 7;
inline constexpr unsigned int CachedColNumsInvalid = 8;
inline constexpr unsigned int WrongNumPredVars = 9;
inline constexpr unsigned int WrongNumRespVars = 10;
inline constexpr unsigned int WrongNumParameters = 11;
inline constexpr unsigned int WrongModelType = 12;
inline constexpr unsigned int NotYetImplemented = 13;
inline constexpr unsigned int ArgumentOutOfRange = 14;
inline constexpr unsigned int WrongInputMatrixSize = 15;
inline constexpr unsigned int WrongInputVectorSize = 16;
inline constexpr unsigned int ObjectNotValid = 17;
inline constexpr unsigned int NoData = 18;
inline constexpr unsigned int MismatchBetweenPrivateVecSizes = 19;
inline constexpr unsigned int MismatchBetweenInputVecSizes = 20;
inline constexpr unsigned int SingularMatrix = 21;
inline constexpr unsigned int SingularScaleOrCovariance = 22;
inline constexpr unsigned int NullProbDistFunc = 23;
inline constexpr unsigned int InvalidProbDistFunc = 24;
inline constexpr unsigned int WrongNumPDFVars = 25;
inline constexpr unsigned int WrongPDFType = 26;
inline constexpr unsigned int DensityIsUndefined = 27;
inline constexpr unsigned int MeanIsUndefined = 28;
inline constexpr unsigned int VarianceIsUndefined = 29;
inline constexpr unsigned int ModeIsUndefined = 30;
inline constexpr unsigned int ArgumentDataTypeUnknown = 31;
inline constexpr unsigned int ArgumentMissing = 32;
inline constexpr unsigned int IntegerArgumentRequired = 33;
inline constexpr unsigned int ScalarArgumentRequired = 34;
inline constexpr unsigned int LowerBoundViolated = 35;
inline constexpr unsigned int UpperBoundViolated = 36;
inline constexpr unsigned int SumOfArgumentsWrong = 37;
inline constexpr unsigned int InappropriateConstraint = 38;
inline constexpr unsigned int RanVarNotFound = 39;
inline constexpr unsigned int RanVarAlreadyExists = 40;
inline constexpr unsigned int ArgumentNameWrong = 41;
inline constexpr unsigned int ArgumentTypeWrong = 42;
inline constexpr unsigned int ArgumentValueWrong = 43;
inline constexpr unsigned int NameNotFound = 44;
inline constexpr unsigned int NamesOutOfOrder = 45;
inline constexpr unsigned int DuplicateNames = 46;
inline constexpr unsigned int VariableIsReadOnly = 47;
inline constexpr unsigned int VectorArgumentRequired = 48;
inline constexpr unsigned int MatrixArgumentRequired = 49;
inline constexpr unsigned int BadDataViewFileType = 50;
inline constexpr unsigned int WrongDataViewFileType = 51;
inline constexpr unsigned int WrongDataViewFileState = 52;
inline constexpr unsigned int InvalidFailureType = 53;
}  // namespace QVStatModelFailureType

/// The outcome of a routine: a success flag, a failure type, the chain of routine names from the
/// one that failed outwards, and comments.
///
/// A routine that finds a fault calls SetFailureTypeAndWhereFailed with its own name
/// ("Class::Method" or the name of the free function), may add comments, and returns a neutral
/// value. A caller that passes the failure on calls AddCallContext with its own name and returns at
/// once. A routine that starts a fresh computation on a caller's result assigns true or calls
/// Clear() first.
///
/// A result belongs to one chain of calls; distinct results are independent.
class QVSTATS_EXPORT QVStatModelResult {
 public:
  /// Not successful, with an undefined failure: a result means success only when made from true.
  QVStatModelResult() = default;
  QVStatModelResult(const bool& ok) : ok_(ok) {}  // NOLINT: implicit, so that `return true;` reads

  /// Empties context and comments and sets the flag; but false assigned to a result that failed
  /// already changes nothing, so that the recorded failure is kept.
  QVStatModelResult& operator=(const bool& ok);

  bool IsSuccessful() const { return ok_; }
  bool NotSuccessful() const { return !ok_; }

  /// Success, with nothing recorded.
  void Clear();

  /// \return a code of QVStatModelFailureType.
  unsigned int GetFailureType() const { return failureType_; }
  bool FailTypeIsUndefined() const { return failureType_ == QVStatModelFailureType::Undefined; }

  /// Routine names, the one that failed first. The iterator reads this object.
  QVSystem::QVIter<const std::string> GetContext() const;
  /// Comments, oldest first. The iterator reads this object.
  QVSystem::QVIter<const std::string> GetComments() const;

  /// Marks the result failed in `where`, which replaces the chain. The failure type of an earlier
  /// failure and the comments are kept.
  void SetFailContext(const std::string& where);
  /// The same with a failure type; a type above 52 is stored as InvalidFailureType.
  void SetFailureTypeAndWhereFailed(const unsigned int& type, const std::string& where);
  /// The same with the undefined failure type.
  void SetFailTypeUndefined(const std::string& where);
  /// Appends a caller to the chain; an empty chain first gets "Unknown Failure Routine".
  void AddCallContext(const std::string& caller);
  void AddExtraComment(const std::string& text);

  /// "Result is successful!", or the chain, the reason and the comments, a line each.
  std::string ReportStatResultDetails() const;

 private:
  bool ok_ = false;
  std::vector<std::string> context_;
  std::vector<std::string> comments_;
  unsigned int failureType_ = QVStatModelFailureType::Undefined;
};

}  // namespace QVStats

#endif  // QVSTATS_API_STAT_MODEL_H
