/// \file
/// \brief How a routine of this library records a failure and passes one on.
#ifndef QVSTATS_FAILURE_H
#define QVSTATS_FAILURE_H

#include <cstddef>
#include <new>
#include <sstream>
#include <string>

#include "platform/system/memory.h"
#include "stats/api/stat_model.h"

namespace QVStats {

/// A failure under construction: its type, the routine's own name, and comments written as a
/// stream. It converts to the result that the routine returns.
///
///     return QVFailure(QVStatModelFailureType::ArgumentOutOfRange, where) << "Index: " << i;
class QVFailure {
 public:
  QVFailure(unsigned int type, const char* where) {
    result_.SetFailureTypeAndWhereFailed(type, where);
  }

  template <class T>
  QVFailure& operator<<(const T& part) {
    comment_ << part;
    return *this;
  }

  /// Ends the comment; what follows is the next one.
  QVFailure& NextComment() {
    result_.AddExtraComment(comment_.str());
    comment_.str("");
    return *this;
  }

  operator QVStatModelResult() {  // NOLINT: implicit, so that `return QVFailure(...);` reads
    if (comment_.tellp() > 0) NextComment();
    return result_;
  }

 private:
  QVStatModelResult result_;
  std::ostringstream comment_;
};

/// Passes a failure on: adds the caller's name to the chain of a failed result.
/// \return whether the result is a failure, so that a caller writes `if (QVFailedIn(...)) return`.
inline bool QVFailedIn(QVStatModelResult& result, const char* caller) {
  if (result.IsSuccessful()) return false;
  result.AddCallContext(caller);
  return true;
}

/// The same for a result that the caller returns.
inline QVStatModelResult QVCalledFrom(const char* caller, QVStatModelResult result) {
  QVFailedIn(result, caller);
  return result;
}

/// Runs `make`, which makes a square array of `size` rows that takes `bytesPerEntry`, when the
/// memory for it is there; else the failure says how much `what` needs (InternalLogicFailure).
template <class Make>
QVStatModelResult QVMakeSquareArray(const char* where, const char* what, std::size_t size,
                                    std::size_t bytesPerEntry, Make make) {
  const auto n = static_cast<double>(size);
  std::string problem;
  if (QVSystem::QVHasMemory(n * n * static_cast<double>(bytesPerEntry), problem)) {
    try {
      make();
      return true;
    } catch (const std::bad_alloc&) {
      problem = "needs more memory than the system grants";
    }
  }
  return QVFailure(QVStatModelFailureType::InternalLogicFailure, where)
         << what << " of " << size << " rows " << problem;
}

}  // namespace QVStats

#endif  // QVSTATS_FAILURE_H
