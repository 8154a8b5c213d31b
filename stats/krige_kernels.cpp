#include "stats/api/krige_kernels.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <memory>
#include <typeinfo>
#include <utility>
#include <vector>

#include "platform/math/dense_kernels.h"
#include "platform/system/error_handler.h"
#include "platform/system/text.h"

namespace QVStats {

namespace {

constexpr double kLog10 = 2.302585092994046;
/// 1/(1 - 0.9) - 1 in double precision, one unit in the last place above 9.
constexpr double kNine = 9.000000000000002;

// The model variogram of each class as a function of h, its parameters read once.

auto Shape(const QVKrigeLinearKernel& k) {
  return [a = k.GetRange(), s = k.GetSill(), n = k.GetNugget()](double h) {
    return h <= a ? n + (s - n) * (h / a) : s;
  };
}

// Kernels with an exponential are split: the exponent of each distance, and the value from its
// exponential. Between the two, arrays take their exponentials together.

auto Exponent(const QVKrigeExponentialKernel& k) {
  return [a = k.GetRange()](double h) { return -kLog10 * h / a; };
}

auto Exponent(const QVKrigeGaussianKernel& k) {
  return [a2 = k.GetRange() * k.GetRange()](double h) { return -kLog10 * (h * h) / a2; };
}

auto Exponent(const QVKrigeReverseGaussianKernel& k) {
  return [a = k.GetRange(), p = k.GetExponent()](double h) {
    return (h / a - 1.0) * p * (1.0 - h / a);
  };
}

// For arrays the exponents are taken by one product, which differs by rounding.

auto ArrayExponent(const QVKrigeExponentialKernel& k) {
  return [factor = -kLog10 / k.GetRange()](double h) { return factor * h; };
}

auto ArrayExponent(const QVKrigeGaussianKernel& k) {
  return [factor = -kLog10 / (k.GetRange() * k.GetRange())](double h) { return factor * (h * h); };
}

auto ArrayExponent(const QVKrigeReverseGaussianKernel& k) { return Exponent(k); }

/// Of the exponential and the Gaussian kernel.
auto ValueOfExponential(const QVKrigeKernelImpl& k) {
  return [s = k.GetSill(), n = k.GetNugget()](double, double e) { return n + (s - n) * (1.0 - e); };
}

auto ValueOfExponential(const QVKrigeReverseGaussianKernel& k) {
  return [a = k.GetRange(), s = k.GetSill(), n = k.GetNugget(), c = k.GetValueOffset()](
             double h, double e) { return h <= a ? n + (s - n) * (e - c) / (1.0 - c) : s; };
}

template <class Kernel>
auto ExponentialShape(const Kernel& k) {
  return [exponent = Exponent(k), value = ValueOfExponential(k)](double h) {
    return value(h, std::exp(exponent(h)));
  };
}

auto Shape(const QVKrigeExponentialKernel& k) { return ExponentialShape(k); }
auto Shape(const QVKrigeGaussianKernel& k) { return ExponentialShape(k); }
auto Shape(const QVKrigeReverseGaussianKernel& k) { return ExponentialShape(k); }

auto Shape(const QVKrigeSphericalKernel& k) {
  const double a = k.GetRange();
  return [a, a3 = a * a * a, s = k.GetSill(), n = k.GetNugget()](double h) {
    return a < h ? s : n + (s - n) * (1.5 * h / a - 0.5 * (h * h * h) / a3);
  };
}

auto Shape(const QVKrigeCauchyKernel& k) {
  return [scale = kNine / (k.GetRange() * k.GetRange()), s = k.GetSill(), n = k.GetNugget()](
             double h) { return n + (s - n) * (1.0 - 1.0 / (1.0 + h * h * scale)); };
}

/// \param power the function x -> x^p.
template <class Power>
auto Shape(const QVKrigeStudentTKernel& k, Power power) {
  return
      [scale = std::pow(k.GetRange(), -k.GetExponent()) * kNine, s = k.GetSill(), n = k.GetNugget(),
       power](double h) { return n + (s - n) * (1.0 - 1.0 / (1.0 + scale * power(h))); };
}

template <class Power>
auto Shape(const QVKrigePowerKernel& k, Power power) {
  return [a = k.GetRange(), s = k.GetSill(), n = k.GetNugget(), power](double h) {
    return h <= a ? n + (s - n) * power(h / a) : s;
  };
}

auto PowerOf(double p) {
  return [p](double x) { return std::pow(x, p); };
}

auto Shape(const QVKrigeStudentTKernel& k) { return Shape(k, PowerOf(k.GetExponent())); }
auto Shape(const QVKrigePowerKernel& k) { return Shape(k, PowerOf(k.GetExponent())); }

/// Calls `use` with x -> x^p where roots and products suffice for it.
/// \return whether they do.
template <class Use>
bool WithSimplePower(double p, Use use) {
  if (p == 0.25)
    use([](double x) { return std::sqrt(std::sqrt(x)); });
  else if (p == 0.5)
    use([](double x) { return std::sqrt(x); });
  else if (p == 1.0)
    use([](double x) { return x; });
  else if (p == 1.5)
    use([](double x) { return x * std::sqrt(x); });
  else if (p == 2.0)
    use([](double x) { return x * x; });
  else if (p == 3.0)
    use([](double x) { return x * x * x; });
  else if (p == 4.0)
    use([](double x) { return (x * x) * (x * x); });
  else
    return false;
  return true;
}

template <class Shape>
void FillByShape(double sill, Shape shape, const double* distances, double* covariances,
                 std::size_t count) {
  for (std::size_t i = 0; i < count; ++i)
    covariances[i] = QVGetKrigeCovariance(sill, shape(distances[i]));
}

/// Distances that are worked on together, small enough to stay in the fastest cache.
constexpr std::size_t kBlock = 512;

/// Covariances by array functions.
/// \param transform(h, work, size) puts what `value(h, work)` needs beside each distance into
/// `work`.
template <class Transform, class Value>
void FillByBlocks(double sill, Transform transform, Value value, const double* distances,
                  double* covariances, std::size_t count) {
  double work[kBlock];
  for (std::size_t begin = 0; begin < count; begin += kBlock) {
    const std::size_t size = std::min(kBlock, count - begin);
    const double* h = distances + begin;
    transform(h, work, size);
    for (std::size_t i = 0; i < size; ++i)
      covariances[begin + i] = QVGetKrigeCovariance(sill, value(h[i], work[i]));
  }
}

template <class Kernel>
void FillByExponentials(const Kernel& kernel, const double* distances, double* covariances,
                        std::size_t count) {
  const auto transform = [exponent = ArrayExponent(kernel)](const double* h, double* work,
                                                            std::size_t size) {
    for (std::size_t i = 0; i < size; ++i) work[i] = exponent(h[i]);
    QVMath::QVGetDenseKernels().exp(size, work, work);
  };
  FillByBlocks(kernel.GetSill(), transform, ValueOfExponential(kernel), distances, covariances,
               count);
}

// The covariances of an array, by class.

template <class Kernel>
void Fill(const Kernel& kernel, const double* distances, double* covariances, std::size_t count) {
  FillByShape(kernel.GetSill(), Shape(kernel), distances, covariances, count);
}

void Fill(const QVKrigeExponentialKernel& kernel, const double* distances, double* covariances,
          std::size_t count) {
  FillByExponentials(kernel, distances, covariances, count);
}

void Fill(const QVKrigeGaussianKernel& kernel, const double* distances, double* covariances,
          std::size_t count) {
  FillByExponentials(kernel, distances, covariances, count);
}

void Fill(const QVKrigeReverseGaussianKernel& kernel, const double* distances, double* covariances,
          std::size_t count) {
  FillByExponentials(kernel, distances, covariances, count);
}

/// \return false, with nothing done, when the kernel's power needs more than roots and products.
template <class Kernel>
bool FillBySimplePower(const Kernel& kernel, const double* distances, double* covariances,
                       std::size_t count) {
  return WithSimplePower(kernel.GetExponent(), [&](auto power) {
    FillByShape(kernel.GetSill(), Shape(kernel, power), distances, covariances, count);
  });
}

void Fill(const QVKrigeStudentTKernel& kernel, const double* distances, double* covariances,
          std::size_t count) {
  if (FillBySimplePower(kernel, distances, covariances, count)) return;
  FillByShape(kernel.GetSill(), Shape(kernel), distances, covariances, count);
}

void Fill(const QVKrigePowerKernel& kernel, const double* distances, double* covariances,
          std::size_t count) {
  if (FillBySimplePower(kernel, distances, covariances, count)) return;
  const double p = kernel.GetExponent();
  if (!(p > 0.0))
    return FillByShape(kernel.GetSill(), Shape(kernel), distances, covariances, count);
  // Up to the range, where x = h/a <= 1, exp(p log x) is right to an ulp of 1.
  const double a = kernel.GetRange();
  const auto transform = [p, a](const double* h, double* work, std::size_t size) {
    const QVMath::QVDenseKernels& dense = QVMath::QVGetDenseKernels();
    for (std::size_t i = 0; i < size; ++i) work[i] = h[i] / a;
    dense.log(size, work, work);
    for (std::size_t i = 0; i < size; ++i) work[i] *= p;
    dense.exp(size, work, work);
  };
  const auto value = [a, s = kernel.GetSill(), n = kernel.GetNugget()](double h, double power) {
    return h <= a ? n + (s - n) * power : s;
  };
  FillByBlocks(kernel.GetSill(), transform, value, distances, covariances, count);
}

QVKrigeKernelBase* CreateKernel(unsigned int type) {
  switch (type) {
    case QVKrigeKernelType::Linear:
      return new QVKrigeLinearKernel;
    case QVKrigeKernelType::Exponential:
      return new QVKrigeExponentialKernel;
    case QVKrigeKernelType::Gaussian:
      return new QVKrigeGaussianKernel;
    case QVKrigeKernelType::Spherical:
      return new QVKrigeSphericalKernel;
    case QVKrigeKernelType::Cauchy:
      return new QVKrigeCauchyKernel;
    default:
      QVSystem::QVThrow.Warning(
          "Invalid QVKrigeKernelType (%d) passed to QVKrigeKernel constructor, defaulting to "
          "Linear kernel",
          type);
      return new QVKrigeLinearKernel;
  }
}

using KernelList = std::vector<std::unique_ptr<QVKrigeKernelBase>>;

/// Steps through a shared list of kernels.
class KernelIter : public QVSystem::QVIterBase<const QVKrigeKernelBase> {
 public:
  explicit KernelIter(std::shared_ptr<const KernelList> kernels) : kernels_(std::move(kernels)) {}
  bool IsValid() const override { return position_ < kernels_->size(); }
  const QVKrigeKernelBase& Get() const override { return *(*kernels_)[position_]; }
  void Increment() override { ++position_; }
  KernelIter* CreateCopy() const override { return new KernelIter(*this); }

 private:
  std::shared_ptr<const KernelList> kernels_;
  std::size_t position_ = 0;
};

}  // namespace

std::string QVKrigeLinearKernel::GetName() const { return "Linear"; }
std::string QVKrigeExponentialKernel::GetName() const { return "Exponential"; }
std::string QVKrigeGaussianKernel::GetName() const { return "Gaussian"; }
std::string QVKrigeSphericalKernel::GetName() const { return "Spherical"; }
std::string QVKrigeCauchyKernel::GetName() const { return "Cauchy"; }
std::string QVKrigeStudentTKernel::GetName() const {
  return QVSystem::QVFormat("StudentT(%.12f)", p_);
}
std::string QVKrigePowerKernel::GetName() const { return QVSystem::QVFormat("Power(%5.3f)", p_); }
std::string QVKrigeReverseGaussianKernel::GetName() const {
  return QVSystem::QVFormat("Reverse Gaussian(%5.3f)", p_);
}

template <class Kernel>
double QVKrigeKernelFamily<Kernel>::GetValue(double h) const {
  return Shape(static_cast<const Kernel&>(*this))(h);
}

template <class Kernel>
QVKrigeKernelBase* QVKrigeKernelFamily<Kernel>::CreateCopy() const {
  return new Kernel(static_cast<const Kernel&>(*this));
}

template <class Kernel>
void QVKrigeKernelFamily<Kernel>::GetCovariances(const double* distances, double* covariances,
                                                 std::size_t count) const {
  // A derived class may have another GetValue.
  if (typeid(*this) != typeid(Kernel))
    return QVKrigeKernelBase::GetCovariances(distances, covariances, count);
  Fill(static_cast<const Kernel&>(*this), distances, covariances, count);
}

template class QVKrigeKernelFamily<QVKrigeLinearKernel>;
template class QVKrigeKernelFamily<QVKrigeExponentialKernel>;
template class QVKrigeKernelFamily<QVKrigeGaussianKernel>;
template class QVKrigeKernelFamily<QVKrigeSphericalKernel>;
template class QVKrigeKernelFamily<QVKrigeCauchyKernel>;
template class QVKrigeKernelFamily<QVKrigeStudentTKernel>;
template class QVKrigeKernelFamily<QVKrigePowerKernel>;
template class QVKrigeKernelFamily<QVKrigeReverseGaussianKernel>;

QVKrigeKernel::QVKrigeKernel(unsigned int type) : kernel_(CreateKernel(type)) {}
QVKrigeKernel::QVKrigeKernel(const QVKrigeKernelBase& kernel) : kernel_(kernel.CreateCopy()) {}

std::string QVKrigeKernel::GetName() const { return kernel_->GetName(); }
double QVKrigeKernel::GetValue(double h) const { return kernel_->GetValue(h); }
double QVKrigeKernel::GetRange() const { return kernel_->GetRange(); }
double QVKrigeKernel::GetNugget() const { return kernel_->GetNugget(); }
double QVKrigeKernel::GetSill() const { return kernel_->GetSill(); }
void QVKrigeKernel::SetRange(double range) { kernel_->SetRange(range); }
void QVKrigeKernel::SetNugget(double nugget) { kernel_->SetNugget(nugget); }
void QVKrigeKernel::SetSill(double sill) { kernel_->SetSill(sill); }
QVKrigeKernelBase* QVKrigeKernel::CreateCopy() const { return kernel_->CreateCopy(); }
void QVKrigeKernel::GetCovariances(const double* distances, double* covariances,
                                   std::size_t count) const {
  if (typeid(*this) != typeid(QVKrigeKernel))
    return QVKrigeKernelBase::GetCovariances(distances, covariances, count);
  kernel_->GetCovariances(distances, covariances, count);
}

QVSystem::QVIter<const QVKrigeKernelBase> QVGetKrigeKernels() {
  auto kernels = std::make_shared<KernelList>();
  for (unsigned int type = 0; type <= QVKrigeKernelType::Cauchy; ++type)
    kernels->emplace_back(CreateKernel(type));
  for (const double p : {0.5, 1.0, 3.0, 4.0})
    kernels->push_back(std::make_unique<QVKrigeStudentTKernel>(p));
  for (const double p : {0.25, 1.0 / 3.0, 0.5, 1.5, 2.0, 3.0, 4.0})
    kernels->push_back(std::make_unique<QVKrigePowerKernel>(p));
  return QVSystem::QVIter<const QVKrigeKernelBase>(new KernelIter(std::move(kernels)));
}

}  // namespace QVStats
