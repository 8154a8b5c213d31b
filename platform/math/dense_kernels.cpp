#include "platform/math/dense_kernels.h"

#include "platform/math/internal/dense_tables.h"

namespace QVMath {

const QVDenseKernels* QVFindDenseKernels(QVDensePath path) {
  if (path == QVDensePath::Plain) return &DensePlain::kKernels;
#ifdef QV_DENSE_HAS_AVX2
  if (__builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma")) return &DenseAvx2::kKernels;
#endif
  return nullptr;
}

const QVDenseKernels& QVGetDenseKernels() {
  static const QVDenseKernels* const avx2 = QVFindDenseKernels(QVDensePath::Avx2);
  return avx2 ? *avx2 : DensePlain::kKernels;
}

}  // namespace QVMath
