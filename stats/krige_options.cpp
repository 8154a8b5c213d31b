#include "stats/api/krige_options.h"

#include "platform/system/error_handler.h"

namespace QVStats {

QVGlobalKrigeOptions& QVGlobalKrigeOptions::SetIncludeUnmeasured(bool include) {
  includeUnmeasured_ = include;
  return *this;
}

QVGlobalKrigeOptions& QVGlobalKrigeOptions::SetUniqueResponseMethod(unsigned int method) {
  uniqueResponseMethod_ = method;
  return *this;
}

QVLocalKrigeOptions& QVLocalKrigeOptions::SetNumLocal(unsigned int count) {
  numLocal_ = count;
  return *this;
}

QVLocalKrigeOptions& QVLocalKrigeOptions::SetIncludeUnmeasured(bool include) {
  includeUnmeasured_ = include;
  return *this;
}

QVLocalKrigeOptions& QVLocalKrigeOptions::SetMaxVariogramSize(unsigned int pairs) {
  maxVariogramSize_ = pairs;
  return *this;
}

QVLocalKrigeOptions& QVLocalKrigeOptions::SetPredictTraining(bool predict) {
  predictTraining_ = predict;
  return *this;
}

QVLocalKrigeOptions& QVLocalKrigeOptions::SetUniqueResponseMethod(unsigned int method) {
  uniqueResponseMethod_ = method;
  return *this;
}

QVKrigeOptions::QVKrigeOptions(const QVGlobalKrigeOptions& options) : numLocal_(0) {
  SetIncludeUnmeasured(options.GetIncludeUnmeasured());
  SetUniqueResponseMethod(options.GetUniqueResponseMethod());
}

QVKrigeOptions::QVKrigeOptions(const QVLocalKrigeOptions& options) {
  SetNumLocal(options.GetNumLocal());
  SetIncludeUnmeasured(options.GetIncludeUnmeasured());
  SetMaxVariogramSize(options.GetMaxVariogramSize());
  SetPredictTraining(options.GetPredictTraining());
  SetUniqueResponseMethod(options.GetUniqueResponseMethod());
}

QVKrigeOptions& QVKrigeOptions::SetNumLocal(unsigned int count) {
  numLocal_ = count;
  return *this;
}

QVKrigeOptions& QVKrigeOptions::SetErrorValue(double value) {
  errorValue_ = value;
  return *this;
}

QVKrigeOptions& QVKrigeOptions::SetMissingIDValue(unsigned int value) {
  missingIDValue_ = value;
  return *this;
}

QVKrigeOptions& QVKrigeOptions::SetIncludeUnmeasured(bool include) {
  includeUnmeasured_ = include;
  return *this;
}

QVKrigeOptions& QVKrigeOptions::SetMaxVariogramSize(unsigned int pairs) {
  maxVariogramSize_ = pairs;
  return *this;
}

QVKrigeOptions& QVKrigeOptions::SetPredictTraining(bool predict) {
  predictTraining_ = predict;
  return *this;
}

QVKrigeOptions& QVKrigeOptions::SetUniqueResponseMethod(unsigned int method) {
  if (method <= QVKrigeUniqueResponseMethod::Max)
    uniqueResponseMethod_ = method;
  else
    QVSystem::QVThrow.Warning(
        "QVKrigeOptions::SetUniqueResponseMethod.  %d is not a valid setting, ignorning.", method);
  return *this;
}

}  // namespace QVStats
