#include "stats/api/data_transforms.h"

#include "platform/system/cast.h"

namespace QVStats {

QVDataTransformBase::~QVDataTransformBase() = default;

void QVSingleArgDataTransformBase::GetDoubles(const double* x, std::size_t n,
                                              double* results) const {
  for (std::size_t i = 0; i < n; ++i) results[i] = GetDouble(x[i]);
}

void QVSingleArgDataTransformBase::GetUnsigneds(const double* x, std::size_t n,
                                                unsigned int* results) const {
  for (std::size_t i = 0; i < n; ++i) results[i] = GetUnsigned(x[i]);
}

void QVTwoArgsDataTransformBase::GetDoubles(const double* x, const double* y, std::size_t n,
                                            double* results) const {
  for (std::size_t i = 0; i < n; ++i) results[i] = GetDouble(x[i], y[i]);
}

void QVTwoArgsDataTransformBase::GetUnsigneds(const double* x, const double* y, std::size_t n,
                                              unsigned int* results) const {
  for (std::size_t i = 0; i < n; ++i) results[i] = GetUnsigned(x[i], y[i]);
}

namespace QVFormulas {

double Average::Evaluate(const std::vector<double>& values) {
  if (values.empty()) return QVStatsBadData::BadDouble;
  double sum = 0.0;
  for (const double value : values) sum += value;
  return sum / QVSystem::QVDoubleFromCount(values.size());
}

double Variance::Evaluate(const std::vector<double>& values) {
  if (values.size() < 2) return QVStatsBadData::BadDouble;
  const double mean = Average::Evaluate(values);
  double sum = 0.0;
  for (const double value : values) sum += (value - mean) * (value - mean);
  return sum / QVSystem::QVDoubleFromCount(values.size() - 1);
}

double Range::Evaluate(const std::vector<double>& values) {
  return values.size() < 2 ? 0.0 : Largest::Evaluate(values) - Smallest::Evaluate(values);
}

double Largest::Evaluate(const std::vector<double>& values) {
  return values.empty() ? QVStatsBadData::BadDouble
                        : *std::max_element(values.begin(), values.end());
}

double Smallest::Evaluate(const std::vector<double>& values) {
  return values.empty() ? QVStatsBadData::BadDouble
                        : *std::min_element(values.begin(), values.end());
}

}  // namespace QVFormulas

}  // namespace QVStats
