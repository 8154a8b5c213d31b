// The dense kernels for AVX-512: thirty-two registers of eight doubles, of which the product tile
// takes twenty-four. This file alone is compiled for that instruction set.
#define QV_DENSE_NAMESPACE DenseAvx512
#define QV_DENSE_NARROWER DenseAvx2
#define QV_DENSE_NAME "avx512"
#define QV_DENSE_WIDTH 8
#define QV_DENSE_ROW_VECTORS 3
#define QV_DENSE_COLUMNS 8
#include "platform/math/internal/dense_table_impl.h"
