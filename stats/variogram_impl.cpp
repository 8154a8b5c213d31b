#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

#include "platform/system/cast.h"
#include "platform/system/error_handler.h"
#include "stats/api/full_variogram.h"
#include "stats/api/krige_kernels.h"
#include "stats/api/variogram.h"

namespace QVStats {

namespace {

constexpr double kLargest = std::numeric_limits<double>::max();
/// Elements this close are copies of one another; no kernel can tell them apart.
constexpr double kZeroDistance = 1e-30;

/// The quantity that `get(pair)` yields, averaged over the pairs of one bin.
template <class Get>
double MeanOverBin(unsigned int size, Get get) {
  double sum = 0.0;
  for (unsigned int pair = 0; pair < size; ++pair) sum += get(pair);
  return size > 0 ? sum / size : 0.0;
}

/// Range, nugget and sill of a kernel.
struct Parameters {
  double range;
  double nugget;
  double sill;
};

/// Judges a kernel by the first bins of a variogram, and moves its parameters.
class Fitter {
 public:
  Fitter(const QVVariogramBase& variogram, double fracPoints) : fracPoints_(fracPoints) {
    for (unsigned int bin = 0; bin < variogram.GetNumBins(); ++bin) {
      distances_.push_back(variogram.GetDistance(bin));
      semivariances_.push_back(variogram.GetSemivariance(bin));
    }
  }

  double Fit(QVKrigeKernelBase& kernel) const {
    const std::size_t bins = distances_.size();
    if (bins == 0) return kLargest;
    const double sill = bins > 2 ? *std::max_element(semivariances_.begin(), semivariances_.end())
                                 : semivariances_.back();
    if (sill <= 0.0 || distances_.back() <= kZeroDistance) return kLargest;
    if (bins == 1) {
      Apply(kernel, {distances_.back(), 0.0, sill});
      return 0.0;
    }
    if (bins == 2)
      ScanNugget(kernel);
    else
      SearchAllParameters(kernel, sill);
    return GetNormalisedFitness(kernel);
  }

  /// The root-mean-square error divided by the mean semivariance.
  double GetNormalisedFitness(const QVKrigeKernelBase& kernel) const {
    const std::size_t bins = CountBinsUsed();
    if (bins == 0) return kLargest;
    const double error = GetMeanSquaredError(kernel, bins);
    if (error == kLargest) return kLargest;
    double total = 0.0;
    for (std::size_t i = 0; i < bins; ++i) total += semivariances_[i];
    const double fitness = std::sqrt(error) / total * static_cast<double>(bins);
    return QV_ASSERT(!std::isnan(fitness)) ? fitness : kLargest;
  }

 private:
  /// \return 0 when there is nothing to judge by, which has then been reported.
  std::size_t CountBinsUsed() const {
    const std::size_t bins = distances_.size();
    if (fracPoints_ <= 0.0) {
      QVSystem::QVThrow.Warning("QVGetFitness, fracPoints must be greater than zero (%f passed)",
                                fracPoints_);
      return 0;
    }
    if (fracPoints_ >= 1.0) return bins;
    const double share = std::floor(static_cast<double>(bins) * fracPoints_ + 0.5);
    const std::size_t used =
        std::min<std::size_t>(QVSystem::QVUnsignedFromDoubleChecked(share), bins);
    QV_ASSERT(used > 0);
    return used;
  }

  /// \return the largest finite double when a distance, a semivariance or their difference is not a
  /// number, which has then been reported.
  double GetMeanSquaredError(const QVKrigeKernelBase& kernel, std::size_t bins) const {
    double sum = 0.0;
    for (std::size_t i = 0; i < bins; ++i) {
      const double difference = kernel.GetValue(distances_[i]) - semivariances_[i];
      sum += difference * difference;
    }
    return QV_ASSERT(!std::isnan(sum)) ? sum / static_cast<double>(bins) : kLargest;
  }

  double GetFitness(const QVKrigeKernelBase& kernel) const {
    const std::size_t bins = CountBinsUsed();
    return bins > 0 ? GetMeanSquaredError(kernel, bins) : kLargest;
  }

  /// \return what the kernel accepted.
  static Parameters Apply(QVKrigeKernelBase& kernel, const Parameters& parameters) {
    kernel.SetNugget(parameters.nugget);
    kernel.SetSill(parameters.sill);
    kernel.SetRange(parameters.range);
    return {kernel.GetRange(), kernel.GetNugget(), kernel.GetSill()};
  }

  /// Sill and range from the last bin, and the best nugget among the multiples of 1 % of the sill.
  void ScanNugget(QVKrigeKernelBase& kernel) const {
    kernel.SetSill(semivariances_.back());
    kernel.SetRange(distances_.back());
    double best = kLargest;
    double bestNugget = 0.0;
    for (int percent = 0; percent <= 100; ++percent) {
      const double nugget = 0.01 * percent * kernel.GetSill();
      kernel.SetNugget(nugget);
      const double fitness = GetFitness(kernel);
      if (fitness < best) {
        best = fitness;
        bestNugget = nugget;
      }
    }
    kernel.SetNugget(bestNugget);
  }

  /// One parameter moved away from (`up`) and towards its lower end, by a relative step.
  void Move(int parameter, double step, Parameters& up, Parameters& down) const {
    const double shrink = 1.0 / (1.0 + step);
    switch (parameter) {
      case 0:
        up.range += step * (distances_.back() - up.range);
        down.range *= shrink;
        break;
      case 1:
        up.nugget += step * (0.99 * up.sill - up.nugget);
        down.nugget *= shrink;
        break;
      default:
        up.sill *= 1.0 + step;
        down.sill += (shrink - 1.0) * (down.sill - down.nugget * 1.0101010101010102);
    }
  }

  /// Moves one parameter as long as that improves the fitness.
  /// \return whether it ever did.
  bool SearchParameter(QVKrigeKernelBase& kernel, int parameter, Parameters& current,
                       double& best) const {
    bool improved = false;
    double step = 1.0;
    while (step > 0.001) {
      Parameters up = current;
      Parameters down = current;
      Move(parameter, step, up, down);
      up = Apply(kernel, up);
      const double fitnessUp = GetFitness(kernel);
      down = Apply(kernel, down);
      const double fitnessDown = GetFitness(kernel);
      const bool chooseDown = fitnessDown <= fitnessUp;
      const double fitness = chooseDown ? fitnessDown : fitnessUp;
      if (fitness < best) {
        current = chooseDown ? down : up;
        best = fitness;
        improved = true;
      } else {
        step *= 0.5;
      }
    }
    return improved;
  }

  void SearchAllParameters(QVKrigeKernelBase& kernel, double sill) const {
    const double nugget = *std::min_element(semivariances_.begin(), semivariances_.end());
    Parameters current = Apply(kernel, {0.5 * distances_.back(), nugget, sill});
    if (current.nugget > current.sill)
      current = Apply(kernel, {current.range, current.nugget, 2.0 * current.nugget});
    double best = GetFitness(kernel);
    bool improved = true;
    while (improved) {
      improved = false;
      for (int parameter = 0; parameter < 3; ++parameter)
        if (SearchParameter(kernel, parameter, current, best)) improved = true;
    }
    Apply(kernel, current);
  }

  std::vector<double> distances_;
  std::vector<double> semivariances_;
  double fracPoints_;
};

/// Means every bin: more than the whole.
constexpr double kAllPoints = 10.0;

}  // namespace

QVVariogramBase::~QVVariogramBase() = default;

QVVariogramImpl::QVVariogramImpl(const QVFullVariogramBase& full) {
  for (unsigned int bin = 0; bin < full.GetNumBins(); ++bin) {
    const unsigned int size = full.GetNumBinElements(bin);
    Push(MeanOverBin(size, [&](unsigned int pair) { return full.GetDistance(bin, pair); }),
         MeanOverBin(size,
                     [&](unsigned int pair) { return full.GetHalfSquaredDifference(bin, pair); }));
  }
}

unsigned int QVVariogramImpl::GetNumBins() const {
  return static_cast<unsigned int>(distances_.size());
}

double QVVariogramImpl::GetDistance(unsigned int bin) const {
  return QV_ASSERT(bin < distances_.size()) ? distances_[bin] : 0.0;
}

double QVVariogramImpl::GetSemivariance(unsigned int bin) const {
  return QV_ASSERT(bin < semivariances_.size()) ? semivariances_[bin] : 0.0;
}

QVVariogramImpl* QVVariogramImpl::CreateCopy() const { return new QVVariogramImpl(*this); }

void QVVariogramImpl::Push(double distance, double semivariance) {
  distances_.push_back(distance);
  semivariances_.push_back(semivariance);
}

void QVVariogramImpl::Clear() {
  distances_.clear();
  semivariances_.clear();
}

QVVariogram::QVVariogram() : variogram_(std::make_shared<QVVariogramImpl>()) {}
QVVariogram::QVVariogram(const QVVariogramBase& variogram) : variogram_(variogram.CreateCopy()) {}
unsigned int QVVariogram::GetNumBins() const { return variogram_->GetNumBins(); }
double QVVariogram::GetDistance(unsigned int bin) const { return variogram_->GetDistance(bin); }
double QVVariogram::GetSemivariance(unsigned int bin) const {
  return variogram_->GetSemivariance(bin);
}
QVVariogramBase* QVVariogram::CreateCopy() const { return variogram_->CreateCopy(); }

double QVFitKernel(QVKrigeKernelBase& kernel, const QVVariogramBase& variogram) {
  return QVFitKernelPartial(kernel, variogram, kAllPoints);
}

double QVFitKernelPartial(QVKrigeKernelBase& kernel, const QVVariogramBase& variogram,
                          double fracPoints) {
  return Fitter(variogram, fracPoints).Fit(kernel);
}

double QVGetFitness(const QVKrigeKernelBase& kernel, const QVVariogramBase& variogram) {
  return Fitter(variogram, kAllPoints).GetNormalisedFitness(kernel);
}

double QVGetExperimentalVariance(const QVVariogramBase& variogram) {
  QVKrigeLinearKernel kernel;
  QVFitKernelPartial(kernel, variogram, 1.0 / 3.0);
  return kernel.GetNugget();
}

}  // namespace QVStats
