#include "stats/api/linear_smoother_kernels.h"

#include <cmath>
#include <limits>
#include <utility>

#include "platform/math/dense_kernels.h"
#include "platform/system/cast.h"
#include "stats/api/stats_data_types.h"

namespace QVStats {

namespace {

constexpr double kEpsilon = std::numeric_limits<double>::epsilon();
/// c: what an identical object's similarity stands below, so that its distance is above 0.
constexpr double kTop = 1.0 + 10.0 * kEpsilon;
constexpr double kInfinity = std::numeric_limits<double>::infinity();

double Cube(double x) { return x * x * x; }

// ----- kernel functions

template <unsigned int Code>
double GetKernelFunctionValue(double u) {
  namespace Type = QVKernelFunctionType;
  if constexpr (Code == Type::Gaussian) return 0.3989422804014327 * std::exp(-0.5 * u * u);
  if constexpr (Code == Type::BoxCar) return std::abs(u) <= 1.0 ? 0.5 : 0.0;
  if constexpr (Code == Type::Epachnikov) return std::abs(u) < 1.0 ? 0.75 * (1.0 - u * u) : 0.0;
  if constexpr (Code == Type::BiQuadratic) {
    const double rest = 1.0 - u * u;
    return std::abs(u) < 1.0 ? 0.9375 * rest * rest : 0.0;
  }
  if constexpr (Code == Type::TriCubic)
    return std::abs(u) < 1.0 ? 0.8641975308641975 * Cube(1.0 - Cube(std::abs(u))) : 0.0;
  return QVStatsBadData::BadDouble;
}

struct KernelFunctionRow {
  const char* shortName;
  QVKernelFunctionBase* (*create)();
};

template <unsigned int Code>
QVKernelFunctionBase* CreateKernelFunction() {
  return new QVKernelFunctionOfType<Code>;
}

constexpr KernelFunctionRow kKernelFunctions[QVKernelFunctionType::NumTypes] = {
    {"", CreateKernelFunction<QVKernelFunctionType::Null>},
    {"Gaussian", CreateKernelFunction<QVKernelFunctionType::Gaussian>},
    {"BoxCar", CreateKernelFunction<QVKernelFunctionType::BoxCar>},
    {"Epachnikov", CreateKernelFunction<QVKernelFunctionType::Epachnikov>},
    {"BiQuadratic", CreateKernelFunction<QVKernelFunctionType::BiQuadratic>},
    {"TriCubic", CreateKernelFunction<QVKernelFunctionType::TriCubic>},
};

// ----- similarity kernels

bool IsSimilarity(double s) { return !(s > kTop || s < 0.0); }

/// The kernels that are exp(-x): the exponent, minus infinity where the kernel is 0.
template <unsigned int Code>
constexpr bool kIsExponential =
    Code == QVSimilarityKernelType::Gaussian || Code == QVSimilarityKernelType::Exponential ||
    Code == QVSimilarityKernelType::ExponentialOfSqRoot;

template <unsigned int Code>
double GetExponent(double s, double p) {
  namespace Type = QVSimilarityKernelType;
  const double d = p * (kTop - s);
  if constexpr (Code == Type::Gaussian) return IsSimilarity(s) ? -(d * d) : -kInfinity;
  if constexpr (Code == Type::Exponential) return IsSimilarity(s) ? -d : -kInfinity;
  return s >= 0.0 && s <= kTop && p > 0.0 ? -std::sqrt((kTop - s) * p) : -kInfinity;
}

template <unsigned int Code>
double GetSimilarityKernelValue(double s, double p) {
  namespace Type = QVSimilarityKernelType;
  const double d = p * (kTop - s);
  const bool isNear = d >= 0.0 && d < 1.0;
  if constexpr (kIsExponential<Code>) return std::exp(GetExponent<Code>(s, p));
  if constexpr (Code == Type::Quadratic) return isNear ? 1.0 - d * d : 0.0;
  if constexpr (Code == Type::BoxCar) return d >= 0.0 && d <= 1.0 ? 1.0 : 0.0;
  if constexpr (Code == Type::Linear) return isNear ? 1.0 - d : 0.0;
  if constexpr (Code == Type::BiQuadratic) {
    const double rest = 1.0 - d * d;
    return isNear ? rest * rest : 0.0;
  }
  if constexpr (Code == Type::TriCubic) return isNear ? Cube(1.0 - Cube(d)) : 0.0;
  if constexpr (Code == Type::SmoothBoxCar) {
    constexpr double kLn10 = 2.302585092994046;
    if (s > kTop || s <= 10.0 * kEpsilon) return 0.0;
    return 1.0 / (1.0 + std::exp(20.0 * kLn10 * ((kTop - p) - s)));
  }
  if constexpr (Code == Type::Power)
    return s >= 0.0 && s <= kTop && p > 0.0 ? std::pow(s * (1.0 - 10.0 * kEpsilon), p) : 0.0;
  if constexpr (Code == Type::Spherical)
    return IsSimilarity(s) && d >= 0.0 && d <= 1.0 ? 1.0 - 1.5 * d + 0.5 * Cube(d) : 0.0;
  return 0.0;
}

struct SimilarityKernelRow {
  const char* name;
  double defaultParam;
  double minParam;
  double maxParam;
  QVSimilarityKernelBase* (*create)();
};

template <unsigned int Code>
QVSimilarityKernelBase* CreateSimilarityKernel() {
  return new QVSimilarityKernelOfType<Code>;
}

// clang-format off: a row a kernel, in the order of the codes.
constexpr SimilarityKernelRow kSimilarityKernels[QVSimilarityKernelType::NumTypes] = {
    {"Unknown", -1, -1, -1, CreateSimilarityKernel<QVSimilarityKernelType::Null>},
    {"Gaussian", 10, 0, 100, CreateSimilarityKernel<QVSimilarityKernelType::Gaussian>},
    {"Exponential", 30, 0, 400, CreateSimilarityKernel<QVSimilarityKernelType::Exponential>},
    {"Quadratic", 2, 0, 100, CreateSimilarityKernel<QVSimilarityKernelType::Quadratic>},
    {"BoxCar", 2, 1, 100, CreateSimilarityKernel<QVSimilarityKernelType::BoxCar>},
    {"Linear", 2, 0, 100, CreateSimilarityKernel<QVSimilarityKernelType::Linear>},
    {"BiQuadratic", 2, 0, 100, CreateSimilarityKernel<QVSimilarityKernelType::BiQuadratic>},
    {"TriCubic", 2, 0, 100, CreateSimilarityKernel<QVSimilarityKernelType::TriCubic>},
    {"SmoothBoxCar", 0.5, 0, 1, CreateSimilarityKernel<QVSimilarityKernelType::SmoothBoxCar>},
    {"Power", 1, 0, 200, CreateSimilarityKernel<QVSimilarityKernelType::Power>},
    {"ExponentialOfSqRoot", 4, 0.000001, 1000,
     CreateSimilarityKernel<QVSimilarityKernelType::ExponentialOfSqRoot>},
    {"Spherical", 2, 0.0001, 100, CreateSimilarityKernel<QVSimilarityKernelType::Spherical>},
};
// clang-format on

}  // namespace

QVKernelFunctionBase::~QVKernelFunctionBase() = default;
QVSimilarityKernelBase::~QVSimilarityKernelBase() = default;
QVSimilarityKernel::~QVSimilarityKernel() = default;

template <unsigned int Code>
QVKernelFunctionOfType<Code>* QVKernelFunctionOfType<Code>::CreateCopy() const {
  return new QVKernelFunctionOfType(*this);
}

template <unsigned int Code>
double QVKernelFunctionOfType<Code>::operator()(double u) const {
  return GetKernelFunctionValue<Code>(u);
}

template class QVKernelFunctionOfType<QVKernelFunctionType::Null>;
template class QVKernelFunctionOfType<QVKernelFunctionType::Gaussian>;
template class QVKernelFunctionOfType<QVKernelFunctionType::BoxCar>;
template class QVKernelFunctionOfType<QVKernelFunctionType::Epachnikov>;
template class QVKernelFunctionOfType<QVKernelFunctionType::BiQuadratic>;
template class QVKernelFunctionOfType<QVKernelFunctionType::TriCubic>;

QVKernelFunctionBase* QVGetKernelFunction(unsigned int type) {
  return kKernelFunctions[type < QVKernelFunctionType::NumTypes ? type : 0].create();
}

unsigned int QVGetKernelFunctionTypeFromName(const std::string& name) {
  for (unsigned int type = 1; type < QVKernelFunctionType::NumTypes; ++type)
    if (name == kKernelFunctions[type].shortName || name == QVKernelFunctionType::TypeName[type])
      return type;
  return 0;
}

std::string QVGetKernelFunctionNameFromType(unsigned int type) {
  if (type < QVKernelFunctionType::NumTypes) return QVKernelFunctionType::TypeName[type];
  return "QVGetKernelFunctionNameFromType: argument out of Range.\nType must be less than " +
         std::to_string(QVKernelFunctionType::NumTypes);
}

std::string QVSimilarityKernelBase::GetKernelName() const {
  return QVGetSimilarityKernelName(GetKernelType());
}

void QVSimilarityKernelBase::GetValues(const double* similarities, std::size_t n, double param,
                                       double* values) const {
  for (std::size_t i = 0; i < n; ++i) values[i] = (*this)(similarities[i], param);
}

template <unsigned int Code>
QVSimilarityKernelOfType<Code>* QVSimilarityKernelOfType<Code>::CreateCopy() const {
  return new QVSimilarityKernelOfType(*this);
}

template <unsigned int Code>
double QVSimilarityKernelOfType<Code>::GetDefaultInitialParamVal() const {
  return kSimilarityKernels[Code].defaultParam;
}

template <unsigned int Code>
double QVSimilarityKernelOfType<Code>::GetMinimumAllowedParamVal() const {
  return kSimilarityKernels[Code].minParam;
}

template <unsigned int Code>
double QVSimilarityKernelOfType<Code>::GetMaximumAllowedParamVal() const {
  return kSimilarityKernels[Code].maxParam;
}

template <unsigned int Code>
double QVSimilarityKernelOfType<Code>::operator()(double similarity, double param) const {
  return GetSimilarityKernelValue<Code>(similarity, param);
}

template <unsigned int Code>
void QVSimilarityKernelOfType<Code>::GetValues(const double* similarities, std::size_t n,
                                               double param, double* values) const {
  if constexpr (kIsExponential<Code>) {
    for (std::size_t i = 0; i < n; ++i) values[i] = GetExponent<Code>(similarities[i], param);
    QVMath::QVGetDenseKernels().exp(n, values, values);
  } else {
    for (std::size_t i = 0; i < n; ++i)
      values[i] = GetSimilarityKernelValue<Code>(similarities[i], param);
  }
}

template class QVSimilarityKernelOfType<QVSimilarityKernelType::Null>;
template class QVSimilarityKernelOfType<QVSimilarityKernelType::Gaussian>;
template class QVSimilarityKernelOfType<QVSimilarityKernelType::Exponential>;
template class QVSimilarityKernelOfType<QVSimilarityKernelType::Quadratic>;
template class QVSimilarityKernelOfType<QVSimilarityKernelType::BoxCar>;
template class QVSimilarityKernelOfType<QVSimilarityKernelType::Linear>;
template class QVSimilarityKernelOfType<QVSimilarityKernelType::BiQuadratic>;
template class QVSimilarityKernelOfType<QVSimilarityKernelType::TriCubic>;
template class QVSimilarityKernelOfType<QVSimilarityKernelType::SmoothBoxCar>;
template class QVSimilarityKernelOfType<QVSimilarityKernelType::Power>;
template class QVSimilarityKernelOfType<QVSimilarityKernelType::ExponentialOfSqRoot>;
template class QVSimilarityKernelOfType<QVSimilarityKernelType::Spherical>;

QVSimilarityKernelBase* QVGetSimilarityKernel(unsigned int type) {
  return kSimilarityKernels[type < QVSimilarityKernelType::NumTypes ? type : 0].create();
}

unsigned int QVGetSimilarityKernelType(const std::string& name) {
  for (unsigned int type = 1; type < QVSimilarityKernelType::NumTypes; ++type)
    if (name == kSimilarityKernels[type].name) return type;
  return 0;
}

std::string QVGetSimilarityKernelName(unsigned int type) {
  return kSimilarityKernels[type < QVSimilarityKernelType::NumTypes ? type : 0].name;
}

QVMath::QVDataSeries QVSimilarityKernel::GetKernelValues(double param, std::size_t n) const {
  const double step = 1.0 / (QVSystem::QVDoubleFromCount(n) - 1.0);
  QVMath::QVDataSeries series;
  series.Reserve(n);
  for (std::size_t i = 0; i < n; ++i) {
    const double s = QVSystem::QVDoubleFromCount(i) * step;
    series.AddPoint(s, (*this)(s, param));
  }
  return series;
}

}  // namespace QVStats
