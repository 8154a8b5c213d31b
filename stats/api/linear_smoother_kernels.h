/// \file
/// \brief Weight shapes of the smoothers: kernel functions of a scaled distance, and kernels of a
/// similarity.
///
/// Sources: W. Haerdle, "Applied Nonparametric Regression", 1990, section 3.1 (the kernel
/// functions); J.-P. Chiles, P. Delfiner, "Geostatistics", 2nd edition, 2012, section 2.5 (the
/// shapes that serve as covariances).
#ifndef QVSTATS_API_LINEAR_SMOOTHER_KERNELS_H
#define QVSTATS_API_LINEAR_SMOOTHER_KERNELS_H

#include <cstddef>
#include <string>

#include "platform/math/data_series.h"
#include "platform/system/copy_ptr.h"
#include "stats/api/export.h"

namespace QVStats {

/// The kernel functions K(u), u a signed scaled distance. The box car includes |u| = 1, the others
/// of bounded support exclude it.
namespace QVKernelFunctionType {
/// The bad double for every u.
inline constexpr unsigned int Null = 0;
/// The standard normal density.
inline constexpr unsigned int Gaussian = 1;
/// 1/2 for |u| <= 1.
inline constexpr unsigned int BoxCar = 2;
/// 3/4 (1 - u^2) for |u| < 1.
inline constexpr unsigned int Epachnikov = 3;
/// 15/16 (1 - u^2)^2 for |u| < 1.
inline constexpr unsigned int BiQuadratic = 4;
/// 70/81 (1 - |u|^3)^3 for |u| < 1.
inline constexpr unsigned int TriCubic = 5;
inline constexpr unsigned int NumTypes = 6;
inline const std::string TypeName[NumTypes] = {
    "Unknown Kernel Function",     "Gaussian Kernel Function",
    "BoxCar Kernel Function",      "Epachnikov or Quadratic Kernel Function",
    "BiQuadratic Kernel Function", "TriCubic Kernel Function",
};
}  // namespace QVKernelFunctionType

/// A kernel function as a function object.
class QVSTATS_EXPORT QVKernelFunctionBase {
 public:
  virtual ~QVKernelFunctionBase();
  /// A new copy that the caller owns.
  virtual QVKernelFunctionBase* CreateCopy() const = 0;
  /// \return the long name, QVKernelFunctionType::TypeName.
  virtual std::string GetNameOfKernel() const = 0;
  /// \return a code of QVKernelFunctionType.
  virtual unsigned int GetTypeOfKernel() const = 0;
  virtual double operator()(double u) const = 0;
};

/// A member of the family by its code; the aliases below are one class each.
template <unsigned int Code>
class QVSTATS_EXPORT QVKernelFunctionOfType : public QVKernelFunctionBase {
 public:
  QVKernelFunctionOfType* CreateCopy() const override;
  std::string GetNameOfKernel() const override { return QVKernelFunctionType::TypeName[Code]; }
  unsigned int GetTypeOfKernel() const override { return Code; }
  double operator()(double u) const override;
};

using QVNullKernelFunction = QVKernelFunctionOfType<QVKernelFunctionType::Null>;
using QVGaussianKernelFunction = QVKernelFunctionOfType<QVKernelFunctionType::Gaussian>;
using QVBoxCarKernelFunction = QVKernelFunctionOfType<QVKernelFunctionType::BoxCar>;
using QVEpachnikovKernelFunction = QVKernelFunctionOfType<QVKernelFunctionType::Epachnikov>;
using QVBiQuadraticKernelFunction = QVKernelFunctionOfType<QVKernelFunctionType::BiQuadratic>;
using QVTriCubicKernelFunction = QVKernelFunctionOfType<QVKernelFunctionType::TriCubic>;

/// \return a new kernel function that the caller owns; the null one for an unknown code.
QVSTATS_EXPORT QVKernelFunctionBase* QVGetKernelFunction(unsigned int type);
/// The code of a short name ("Gaussian", "BoxCar", "Epachnikov", "BiQuadratic", "TriCubic") or of
/// a long one, exactly as written; 0 for any other.
QVSTATS_EXPORT unsigned int QVGetKernelFunctionTypeFromName(const std::string& name);
/// The long name of a code; for an unknown code a message of two lines that says so.
QVSTATS_EXPORT std::string QVGetKernelFunctionNameFromType(unsigned int type);

/// A kernel function as a value.
class QVSTATS_EXPORT QVKernelFunction {
 public:
  explicit QVKernelFunction(unsigned int type) : kernel_(QVGetKernelFunction(type)) {}
  std::string GetNameOfKernel() const { return kernel_->GetNameOfKernel(); }
  unsigned int GetTypeOfKernel() const { return kernel_->GetTypeOfKernel(); }
  double operator()(double u) const { return (*kernel_)(u); }

 private:
  QVSystem::QVCopyPtr<QVKernelFunctionBase> kernel_;
};

/// The similarity kernels K(s, p): a weight in [0, 1] of the similarity s (1 means identical, 0
/// unrelated) with the shape parameter p. With c = 1 + 10 eps, eps the machine epsilon, the
/// distance is d = p (c - s): the excess keeps it above 0 for identical objects. In brackets the
/// default of p and its range, with which a fit to a variogram starts; the kernels do not hold p
/// to it. A kernel is 0 outside the s or d that is named.
namespace QVSimilarityKernelType {
/// 0 everywhere [-1, no parameter].
inline constexpr unsigned int Null = 0;
/// exp(-d^2), 0 <= s <= c [10: 0 to 100].
inline constexpr unsigned int Gaussian = 1;
/// exp(-d), 0 <= s <= c [30: 0 to 400].
inline constexpr unsigned int Exponential = 2;
/// 1 - d^2, 0 <= d < 1 [2: 0 to 100].
inline constexpr unsigned int Quadratic = 3;
/// 1, 0 <= d <= 1 [2: 1 to 100].
inline constexpr unsigned int BoxCar = 4;
/// 1 - d, 0 <= d < 1 [2: 0 to 100].
inline constexpr unsigned int Linear = 5;
/// (1 - d^2)^2, 0 <= d < 1 [2: 0 to 100].
inline constexpr unsigned int BiQuadratic = 6;
/// (1 - d^3)^3, 0 <= d < 1 [2: 0 to 100].
inline constexpr unsigned int TriCubic = 7;
/// 1 / (1 + 10^(20 (c - p - s))), 10 eps < s <= c: a step at s = c - p [0.5: 0 to 1].
inline constexpr unsigned int SmoothBoxCar = 8;
/// (s (1 - 10 eps))^p, 0 <= s <= c and p > 0 [1: 0 to 200].
inline constexpr unsigned int Power = 9;
/// exp(-sqrt(d)), 0 <= s <= c and p > 0 [4: 1e-6 to 1000].
inline constexpr unsigned int ExponentialOfSqRoot = 10;
/// 1 - 1.5 d + 0.5 d^3, 0 <= s <= c and 0 <= d <= 1 [2: 1e-4 to 100].
inline constexpr unsigned int Spherical = 11;
inline constexpr unsigned int NumTypes = 12;
}  // namespace QVSimilarityKernelType

/// A similarity kernel as a function object.
class QVSTATS_EXPORT QVSimilarityKernelBase {
 public:
  virtual ~QVSimilarityKernelBase();
  /// A new copy that the caller owns.
  virtual QVSimilarityKernelBase* CreateCopy() const = 0;
  /// \return a code of QVSimilarityKernelType.
  virtual unsigned int GetKernelType() const = 0;
  virtual std::string GetKernelName() const;
  /// Where a fit of p starts, and the range that it searches; -1 for the null kernel.
  virtual double GetDefaultInitialParamVal() const = 0;
  virtual double GetMinimumAllowedParamVal() const = 0;
  virtual double GetMaximumAllowedParamVal() const = 0;
  virtual double operator()(double similarity, double param) const = 0;
  /// values[i] = K(similarities[i], param) for n similarities, equal to the single values but for
  /// rounding; the same for a similarity wherever it stands. The arrays may be the same.
  virtual void GetValues(const double* similarities, std::size_t n, double param,
                         double* values) const;
};

/// A member of the family by its code; the aliases below are one class each.
template <unsigned int Code>
class QVSTATS_EXPORT QVSimilarityKernelOfType : public QVSimilarityKernelBase {
 public:
  QVSimilarityKernelOfType* CreateCopy() const override;
  unsigned int GetKernelType() const override { return Code; }
  double GetDefaultInitialParamVal() const override;
  double GetMinimumAllowedParamVal() const override;
  double GetMaximumAllowedParamVal() const override;
  double operator()(double similarity, double param) const override;
  void GetValues(const double* similarities, std::size_t n, double param,
                 double* values) const override;
};

using QVNullSimilarityKernel = QVSimilarityKernelOfType<QVSimilarityKernelType::Null>;
using QVGaussianSimilarityKernel = QVSimilarityKernelOfType<QVSimilarityKernelType::Gaussian>;
using QVExponentialSimilarityKernel = QVSimilarityKernelOfType<QVSimilarityKernelType::Exponential>;
using QVQuadraticSimilarityKernel = QVSimilarityKernelOfType<QVSimilarityKernelType::Quadratic>;
using QVBoxCarSimilarityKernel = QVSimilarityKernelOfType<QVSimilarityKernelType::BoxCar>;
using QVLinearSimilarityKernel = QVSimilarityKernelOfType<QVSimilarityKernelType::Linear>;
using QVBiQuadraticSimilarityKernel = QVSimilarityKernelOfType<QVSimilarityKernelType::BiQuadratic>;
using QVTriCubicSimilarityKernel = QVSimilarityKernelOfType<QVSimilarityKernelType::TriCubic>;
using QVSmoothBoxCarSimilarityKernel =
    QVSimilarityKernelOfType<QVSimilarityKernelType::SmoothBoxCar>;
using QVPowerSimilarityKernel = QVSimilarityKernelOfType<QVSimilarityKernelType::Power>;
using QVExponentialOfSqRoot = QVSimilarityKernelOfType<QVSimilarityKernelType::ExponentialOfSqRoot>;
using QVSphericalSimilarityKernel = QVSimilarityKernelOfType<QVSimilarityKernelType::Spherical>;

/// \return a new similarity kernel that the caller owns; the null one for an unknown code.
QVSTATS_EXPORT QVSimilarityKernelBase* QVGetSimilarityKernel(unsigned int type);
/// The code of a name, exactly as written: "Gaussian", "Exponential", "Quadratic", "BoxCar",
/// "Linear", "BiQuadratic", "TriCubic", "SmoothBoxCar", "Power", "ExponentialOfSqRoot" or
/// "Spherical"; 0 for any other.
QVSTATS_EXPORT unsigned int QVGetSimilarityKernelType(const std::string& name);
/// The name of a code; "Unknown" for the null kernel and for unknown codes.
QVSTATS_EXPORT std::string QVGetSimilarityKernelName(unsigned int type);

/// A similarity kernel as a value.
class QVSTATS_EXPORT QVSimilarityKernel {
 public:
  explicit QVSimilarityKernel(unsigned int type) : kernel_(QVGetSimilarityKernel(type)) {}
  QVSimilarityKernel(const QVSimilarityKernel&) = default;
  QVSimilarityKernel(QVSimilarityKernel&&) = default;
  QVSimilarityKernel& operator=(const QVSimilarityKernel&) = default;
  QVSimilarityKernel& operator=(QVSimilarityKernel&&) = default;
  virtual ~QVSimilarityKernel();

  unsigned int GetKernelType() const { return kernel_->GetKernelType(); }
  std::string GetKernelName() const { return kernel_->GetKernelName(); }
  double GetDefaultInitialParamVal() const { return kernel_->GetDefaultInitialParamVal(); }
  double GetMinimumAllowedParamVal() const { return kernel_->GetMinimumAllowedParamVal(); }
  double GetMaximumAllowedParamVal() const { return kernel_->GetMaximumAllowedParamVal(); }
  virtual double operator()(double similarity, double param) const {
    return (*kernel_)(similarity, param);
  }
  /// As QVSimilarityKernelBase::GetValues.
  void GetValues(const double* similarities, std::size_t n, double param, double* values) const {
    kernel_->GetValues(similarities, n, param, values);
  }
  /// The kernel to plot: n points (s, K(s, param)), s = i / (n - 1).
  QVMath::QVDataSeries GetKernelValues(double param, std::size_t n) const;

 private:
  QVSystem::QVCopyPtr<QVSimilarityKernelBase> kernel_;
};

}  // namespace QVStats

#endif  // QVSTATS_API_LINEAR_SMOOTHER_KERNELS_H
