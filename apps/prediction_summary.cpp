#include "apps/prediction_summary.h"

#include <cmath>

#include "platform/system/text.h"

namespace QVApps {

void PredictionSummary::Add(double predicted, double standardDeviation, double measured) {
  ++count_;
  const double fromMean = measured - mean_;
  mean_ += fromMean / static_cast<double>(count_);
  sumOfSquares_ += fromMean * (measured - mean_);  // Welford's update
  const double error = predicted - measured;
  squaredErrors_ += error * error;
  absoluteErrors_ += std::abs(error);
  covered_ += std::abs(error) <= kInterval95 * standardDeviation;
}

double PredictionSummary::GetR2() const {
  return sumOfSquares_ > 0.0 ? 1.0 - squaredErrors_ / sumOfSquares_ : std::nan("");
}

double PredictionSummary::GetRMSE() const {
  return std::sqrt(squaredErrors_ / static_cast<double>(count_));
}

double PredictionSummary::GetMAE() const { return absoluteErrors_ / static_cast<double>(count_); }

double PredictionSummary::GetCoverage() const {
  return static_cast<double>(covered_) / static_cast<double>(count_);
}

void PredictionSummary::Print(std::ostream& out) const {
  if (count_ == 0) {
    out << "n 0: no predicted molecule has a measured value\n";
    return;
  }
  out << QVSystem::QVFormat("n %zu  R2 %.3f  RMSE %.4g  MAE %.4g  in 95 %% interval %.1f %%\n",
                            count_, GetR2(), GetRMSE(), GetMAE(), 100.0 * GetCoverage());
}

}  // namespace QVApps
