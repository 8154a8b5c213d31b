/// \file
/// \brief Kriging kernels: model variograms, and fitting them to an experimental one.
///
/// A kernel gives the semivariance of two elements at distance h: the nugget at h = 0, rising
/// towards the sill, which bounded kernels reach at the range. Kriging uses the covariance
/// sill - semivariance.
/// Source: N. A. C. Cressie, "Statistics for Spatial Data", revised edition, 1993, section 2.3.
#ifndef QVSTATS_API_KRIGE_KERNELS_H
#define QVSTATS_API_KRIGE_KERNELS_H

#include <cmath>
#include <cstddef>
#include <limits>
#include <string>

#include "platform/system/copy_ptr.h"
#include "platform/system/iter.h"
#include "stats/api/export.h"
#include "stats/api/variogram.h"

namespace QVStats {

/// Any model variogram. Immutable use (values and getters) is safe from many threads.
class QVSTATS_EXPORT QVKrigeKernelBase {
 public:
  virtual std::string GetName() const = 0;
  /// The semivariance at distance `h` >= 0, in the squared unit of the response.
  virtual double GetValue(double h) const = 0;
  virtual double GetRange() const = 0;
  virtual double GetNugget() const = 0;
  virtual double GetSill() const = 0;
  virtual void SetRange(double range) = 0;
  virtual void SetNugget(double nugget) = 0;
  virtual void SetSill(double sill) = 0;
  /// A new kernel of the same class with the same parameters; the caller owns it.
  virtual QVKrigeKernelBase* CreateCopy() const = 0;
  virtual ~QVKrigeKernelBase();

  /// The covariances QVGetKrigeCovariance(GetSill(), GetValue(h)) of `count` distances. The two
  /// arrays may be the same. The library's own kernels compute them together, to one unit in the
  /// last place of the sill; a class derived from one of them gets the loop over its GetValue.
  virtual void GetCovariances(const double* distances, double* covariances,
                              std::size_t count) const;
};

/// sill - semivariance, where a value that only rounding put below 0 (by at most four units of
/// 2^-52 of the sill) is 0.
inline double QVGetKrigeCovariance(double sill, double semivariance) {
  const double covariance = sill - semivariance;
  const bool isRounding =
      covariance < 0.0 && covariance >= -4.0 * std::numeric_limits<double>::epsilon() * sill;
  return isRounding ? 0.0 : covariance;
}

/// The three parameters of a kernel: range 0.5, sill 1, nugget 0 at first.
///
/// A setter reports a value outside its domain as a failed assertion (fatal) and stores it. The
/// parameters are not checked against each other.
class QVSTATS_EXPORT QVKrigeKernelImpl : public QVKrigeKernelBase {
 public:
  QVKrigeKernelImpl() = default;
  /// Stores the values unchecked.
  QVKrigeKernelImpl(double range, double sill, double nugget)
      : range_(range), sill_(sill), nugget_(nugget) {}

  double GetRange() const override { return range_; }
  double GetNugget() const override { return nugget_; }
  double GetSill() const override { return sill_; }
  /// Requires range >= 0. With a range of 0 the value at h = 0 is not a number.
  void SetRange(double range) override;
  /// Requires nugget >= 0.
  void SetNugget(double nugget) override;
  /// Requires sill > 0.
  void SetSill(double sill) override;

 private:
  double range_ = 0.5;
  double sill_ = 1.0;
  double nugget_ = 0.0;
};

/// What every kernel of the library below does alike; `Kernel` is the class itself. The value is
/// computed from the virtual getters, so a derived class may replace one.
template <class Kernel>
class QVSTATS_EXPORT QVKrigeKernelFamily : public QVKrigeKernelImpl {
 public:
  double GetValue(double h) const override;
  QVKrigeKernelBase* CreateCopy() const override;
  void GetCovariances(const double* distances, double* covariances,
                      std::size_t count) const override;
};

// The family. a is the range, s the sill, n the nugget, D = s - n; L = ln 10; K is the double next
// above 9, so that the unbounded kernels reach 90 % of D at h = a.

/// n + D h/a up to a, then s.
class QVSTATS_EXPORT QVKrigeLinearKernel : public QVKrigeKernelFamily<QVKrigeLinearKernel> {
 public:
  std::string GetName() const override;
};

/// n + D (1 - exp(-L h/a)).
class QVSTATS_EXPORT QVKrigeExponentialKernel
    : public QVKrigeKernelFamily<QVKrigeExponentialKernel> {
 public:
  std::string GetName() const override;
};

/// n + D (1 - exp(-L h^2/a^2)).
class QVSTATS_EXPORT QVKrigeGaussianKernel : public QVKrigeKernelFamily<QVKrigeGaussianKernel> {
 public:
  std::string GetName() const override;
};

/// n + D (1.5 h/a - 0.5 h^3/a^3) up to a, then s.
class QVSTATS_EXPORT QVKrigeSphericalKernel : public QVKrigeKernelFamily<QVKrigeSphericalKernel> {
 public:
  std::string GetName() const override;
};

/// n + D (1 - 1/(1 + K h^2/a^2)).
class QVSTATS_EXPORT QVKrigeCauchyKernel : public QVKrigeKernelFamily<QVKrigeCauchyKernel> {
 public:
  std::string GetName() const override;
};

/// n + D (1 - 1/(1 + K (h/a)^p)).
class QVSTATS_EXPORT QVKrigeStudentTKernel : public QVKrigeKernelFamily<QVKrigeStudentTKernel> {
 public:
  explicit QVKrigeStudentTKernel(double p) : p_(p) {}
  std::string GetName() const override;
  /// p.
  double GetExponent() const { return p_; }

 private:
  double p_;
};

/// n + D (h/a)^p up to a, then s.
class QVSTATS_EXPORT QVKrigePowerKernel : public QVKrigeKernelFamily<QVKrigePowerKernel> {
 public:
  explicit QVKrigePowerKernel(double p) : p_(p) {}
  std::string GetName() const override;
  /// p.
  double GetExponent() const { return p_; }

 private:
  double p_;
};

/// n + D (exp(-p (1 - h/a)^2) - c)/(1 - c) up to a, then s; c = exp(-p).
class QVSTATS_EXPORT QVKrigeReverseGaussianKernel
    : public QVKrigeKernelFamily<QVKrigeReverseGaussianKernel> {
 public:
  explicit QVKrigeReverseGaussianKernel(double p) : p_(p), c_(std::exp(-p)) {}
  std::string GetName() const override;
  /// p.
  double GetExponent() const { return p_; }
  /// c.
  double GetValueOffset() const { return c_; }

 private:
  double p_;
  double c_;
};

/// Kernels that a code can choose.
namespace QVKrigeKernelType {
inline constexpr unsigned int Linear = 0;
inline constexpr unsigned int Exponential = 1;
inline constexpr unsigned int Gaussian = 2;
inline constexpr unsigned int Spherical = 3;
inline constexpr unsigned int Cauchy = 4;
}  // namespace QVKrigeKernelType

/// A kernel as a value: owns one kernel of any class and forwards to it.
class QVSTATS_EXPORT QVKrigeKernel : public QVKrigeKernelBase {
 public:
  /// A kernel with default parameters. A code that does not exist is a warning and gives Linear.
  explicit QVKrigeKernel(unsigned int type);
  QVKrigeKernel(const QVKrigeKernelBase& kernel);  // NOLINT: any kernel may be passed as a value

  std::string GetName() const override;
  double GetValue(double h) const override;
  double GetRange() const override;
  double GetNugget() const override;
  double GetSill() const override;
  void SetRange(double range) override;
  void SetNugget(double nugget) override;
  void SetSill(double sill) override;
  /// A copy of the kernel within, not of the handle.
  QVKrigeKernelBase* CreateCopy() const override;
  void GetCovariances(const double* distances, double* covariances,
                      std::size_t count) const override;

 private:
  QVSystem::QVCopyPtr<QVKrigeKernelBase> kernel_;
};

/// The sixteen kernels that training tries, with default parameters: Linear, Exponential, Gaussian,
/// Spherical, Cauchy, StudentT with p = 0.5, 1, 3, 4, Power with p = 1/4, 1/3, 1/2, 3/2, 2, 3, 4.
/// The iterator owns them.
QVSTATS_EXPORT QVSystem::QVIter<const QVKrigeKernelBase> QVGetKrigeKernels();

/// Fits range, sill and nugget of `kernel` to all bins of `variogram`, in place.
///
/// One bin gives nugget 0, with the bin's semivariance as the sill and its distance as the range.
/// Two bins fix sill and range at the second; the nugget is the best multiple of 1 % of the sill.
/// From three bins on a coordinate search minimises the mean squared error: each parameter in turn
/// is moved up and down by a step that halves when neither move helps, until a pass helps nowhere.
///
/// \return the fitness of the fitted kernel (QVGetFitness; 0 for one bin). It is the largest finite
/// double, with the parameters untouched, where nothing can be fitted: no bins, no distance above
/// 1e-30, or a largest semivariance of 0. Such a kernel is not worth trying.
QVSTATS_EXPORT double QVFitKernel(QVKrigeKernelBase& kernel, const QVVariogramBase& variogram);

/// The same, judged by the first floor(fracPoints n + 0.5) of the n bins; all of them from a
/// fracPoints of 1 on. A fracPoints that is not positive is a warning at each judgement, and no
/// fit.
QVSTATS_EXPORT double QVFitKernelPartial(QVKrigeKernelBase& kernel,
                                         const QVVariogramBase& variogram, double fracPoints);

/// How well the kernel describes the variogram as it stands: the root of the mean squared error
/// over the bins, divided by the mean semivariance. The largest finite double without bins.
QVSTATS_EXPORT double QVGetFitness(const QVKrigeKernelBase& kernel,
                                   const QVVariogramBase& variogram);

}  // namespace QVStats

#endif  // QVSTATS_API_KRIGE_KERNELS_H
