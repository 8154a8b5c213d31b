/// \file
/// \brief The table of each instruction set, defined by the source file compiled for it.
#ifndef QV_PLATFORM_MATH_INTERNAL_DENSE_TABLES_H
#define QV_PLATFORM_MATH_INTERNAL_DENSE_TABLES_H

#include "platform/math/dense_kernels.h"

namespace QVMath {

namespace DensePlain {
extern const QVDenseKernels kKernels;
}
namespace DenseAvx2 {
extern const QVDenseKernels kKernels;
}
namespace DenseAvx512 {
extern const QVDenseKernels kKernels;
}

}  // namespace QVMath

#endif  // QV_PLATFORM_MATH_INTERNAL_DENSE_TABLES_H
