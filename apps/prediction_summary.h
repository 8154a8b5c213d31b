/// \file
/// \brief How good predictions were, once the measured values are known.
#ifndef QVSTATS_APPS_PREDICTION_SUMMARY_H
#define QVSTATS_APPS_PREDICTION_SUMMARY_H

#include <cstddef>
#include <ostream>

namespace QVApps {

/// The half width of the 95 % interval of a normal distribution, in standard deviations.
constexpr double kInterval95 = 1.96;

/// Collects pairs of predicted and measured values in constant memory.
class PredictionSummary {
 public:
  void Add(double predicted, double standardDeviation, double measured);

  std::size_t GetCount() const { return count_; }
  /// 1 - sum of squared errors / sum of squares about the mean of the measured values; not a number
  /// when these are all equal.
  double GetR2() const;
  double GetRMSE() const;
  double GetMAE() const;
  /// The share of the 95 % intervals that hold the measured value.
  double GetCoverage() const;

  /// One line: n, R2, RMSE, MAE, coverage.
  void Print(std::ostream& out) const;

 private:
  std::size_t count_ = 0;
  std::size_t covered_ = 0;
  double mean_ = 0.0;
  double sumOfSquares_ = 0.0;  // about the running mean
  double squaredErrors_ = 0.0;
  double absoluteErrors_ = 0.0;
};

}  // namespace QVApps

#endif  // QVSTATS_APPS_PREDICTION_SUMMARY_H
