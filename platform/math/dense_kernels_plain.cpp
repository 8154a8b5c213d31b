// The dense kernels for the baseline instruction set: registers of two doubles.
#define QV_DENSE_NAMESPACE DensePlain
#define QV_DENSE_NAME "plain"
#define QV_DENSE_WIDTH 2
#define QV_DENSE_ROW_VECTORS 2
#define QV_DENSE_COLUMNS 4
#include "platform/math/internal/dense_table_impl.h"
