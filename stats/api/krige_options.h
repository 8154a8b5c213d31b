/// \file
/// \brief What a caller may choose about a kriging model.
///
/// QVGlobalKrigeOptions and QVLocalKrigeOptions are filled by callers; the engine reads the
/// combined QVKrigeOptions. All are plain values.
#ifndef QVSTATS_API_KRIGE_OPTIONS_H
#define QVSTATS_API_KRIGE_OPTIONS_H

#include <limits>

#include "stats/api/export.h"

namespace QVStats {

/// Which response stands for a group of identical training elements. The measured members of a
/// group decide; when none is measured, all members do.
namespace QVKrigeUniqueResponseMethod {
inline constexpr unsigned int Mean = 0;
inline constexpr unsigned int Min = 1;
inline constexpr unsigned int Max = 2;
}  // namespace QVKrigeUniqueResponseMethod

/// Options of a model that answers every query from all training elements.
class QVSTATS_EXPORT QVGlobalKrigeOptions {
 public:
  /// Whether pairs with an unmeasured element enter the variogram; false at first.
  bool GetIncludeUnmeasured() const { return includeUnmeasured_; }
  QVGlobalKrigeOptions& SetIncludeUnmeasured(bool include);

  /// A code of QVKrigeUniqueResponseMethod, Mean at first. Stored unchecked: a code that does not
  /// exist is refused where the options are converted to QVKrigeOptions.
  unsigned int GetUniqueResponseMethod() const { return uniqueResponseMethod_; }
  QVGlobalKrigeOptions& SetUniqueResponseMethod(unsigned int method);

 private:
  bool includeUnmeasured_ = false;
  unsigned int uniqueResponseMethod_ = QVKrigeUniqueResponseMethod::Mean;
};

/// Options of a model that answers each query from the training elements nearest to it.
class QVSTATS_EXPORT QVLocalKrigeOptions {
 public:
  /// The number of nearest training elements behind each prediction; 100 at first.
  unsigned int GetNumLocal() const { return numLocal_; }
  QVLocalKrigeOptions& SetNumLocal(unsigned int count);

  /// Whether unmeasured training elements take part; false at first.
  bool GetIncludeUnmeasured() const { return includeUnmeasured_; }
  QVLocalKrigeOptions& SetIncludeUnmeasured(bool include);

  /// The most pairs of elements that a variogram is built from; 500000 at first.
  unsigned int GetMaxVariogramSize() const { return maxVariogramSize_; }
  QVLocalKrigeOptions& SetMaxVariogramSize(unsigned int pairs);

  /// Whether training elements identical to the query (distance below 1e-30) are left out, so that
  /// a training element is predicted from the others; false at first.
  bool GetPredictTraining() const { return predictTraining_; }
  QVLocalKrigeOptions& SetPredictTraining(bool predict);

  /// As for QVGlobalKrigeOptions.
  unsigned int GetUniqueResponseMethod() const { return uniqueResponseMethod_; }
  QVLocalKrigeOptions& SetUniqueResponseMethod(unsigned int method);

 private:
  unsigned int numLocal_ = 100;
  bool includeUnmeasured_ = false;
  unsigned int maxVariogramSize_ = 500000;
  bool predictTraining_ = false;
  unsigned int uniqueResponseMethod_ = QVKrigeUniqueResponseMethod::Mean;
};

/// The options that the engine reads. Default-constructed they are those of local kriging.
class QVSTATS_EXPORT QVKrigeOptions {
 public:
  QVKrigeOptions() = default;
  /// Global kriging is marked by a NumLocal of 0. Both conversions warn about a unique-response
  /// method that does not exist and use the mean.
  explicit QVKrigeOptions(const QVGlobalKrigeOptions& options);
  explicit QVKrigeOptions(const QVLocalKrigeOptions& options);

  unsigned int GetNumLocal() const { return numLocal_; }
  QVKrigeOptions& SetNumLocal(unsigned int count);

  /// What a prediction or a variance is when kriging fails; the largest finite double at first.
  double GetErrorValue() const { return errorValue_; }
  QVKrigeOptions& SetErrorValue(double value);

  /// The identifier of training elements that were added without one; all bits set at first.
  unsigned int GetMissingIDValue() const { return missingIDValue_; }
  QVKrigeOptions& SetMissingIDValue(unsigned int value);

  bool GetIncludeUnmeasured() const { return includeUnmeasured_; }
  QVKrigeOptions& SetIncludeUnmeasured(bool include);

  unsigned int GetMaxVariogramSize() const { return maxVariogramSize_; }
  QVKrigeOptions& SetMaxVariogramSize(unsigned int pairs);

  bool GetPredictTraining() const { return predictTraining_; }
  QVKrigeOptions& SetPredictTraining(bool predict);

  unsigned int GetUniqueResponseMethod() const { return uniqueResponseMethod_; }
  /// A code that does not exist is a warning and changes nothing.
  QVKrigeOptions& SetUniqueResponseMethod(unsigned int method);

 private:
  unsigned int numLocal_ = 100;
  double errorValue_ = std::numeric_limits<double>::max();
  unsigned int missingIDValue_ = std::numeric_limits<unsigned int>::max();
  bool includeUnmeasured_ = false;
  unsigned int maxVariogramSize_ = 500000;
  bool predictTraining_ = false;
  unsigned int uniqueResponseMethod_ = QVKrigeUniqueResponseMethod::Mean;
};

}  // namespace QVStats

#endif  // QVSTATS_API_KRIGE_OPTIONS_H
