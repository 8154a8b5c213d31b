// The dense kernels for AVX2 with FMA: sixteen registers of four doubles, of which the product
// tile takes twelve. This file alone is compiled for that instruction set.
#define QV_DENSE_NAMESPACE DenseAvx2
#define QV_DENSE_NAME "avx2"
#define QV_DENSE_WIDTH 4
#define QV_DENSE_ROW_VECTORS 3
#define QV_DENSE_COLUMNS 4
#include "platform/math/internal/dense_table_impl.h"
