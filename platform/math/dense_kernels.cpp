#include "platform/math/dense_kernels.h"

#include <initializer_list>

#include "platform/math/internal/dense_tables.h"

namespace QVMath {

const QVDenseKernels* QVFindDenseKernels(QVDensePath path) {
  if (path == QVDensePath::Plain) return &DensePlain::kKernels;
#ifdef QV_DENSE_HAS_AVX
  const bool hasAvx2 = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
  if (path == QVDensePath::Avx2) return hasAvx2 ? &DenseAvx2::kKernels : nullptr;
  if (hasAvx2 && __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") &&
      __builtin_cpu_supports("avx512vl"))
    return &DenseAvx512::kKernels;
#endif
  return nullptr;
}

const QVDenseKernels& QVGetDenseKernels() {
  static const QVDenseKernels& fastest = []() -> const QVDenseKernels& {
    for (const auto path : {QVDensePath::Avx512, QVDensePath::Avx2})
      if (const QVDenseKernels* kernels = QVFindDenseKernels(path)) return *kernels;
    return DensePlain::kKernels;
  }();
  return fastest;
}

}  // namespace QVMath
