/// \file
/// \brief The dense kernels, written once on registers of QV_DENSE_WIDTH doubles and included by
/// one source file for each instruction set.
///
/// Everything stands in an unnamed namespace, and no inline function of the standard library is
/// called: a shared symbol compiled for the faster instruction set could end up in the program of a
/// machine that lacks it.
#ifndef QV_PLATFORM_MATH_INTERNAL_DENSE_TABLE_IMPL_H
#define QV_PLATFORM_MATH_INTERNAL_DENSE_TABLE_IMPL_H

#include "platform/math/internal/dense_factor_impl.h"
#include "platform/math/internal/dense_functions_impl.h"
#include "platform/math/internal/dense_mixture_impl.h"
#include "platform/math/internal/dense_tables.h"
#include "platform/math/internal/dense_tridiagonal_impl.h"

namespace QVMath {
namespace QV_DENSE_NAMESPACE {

const QVDenseKernels kKernels = {
    QV_DENSE_NAME,  Cholesky,   SolveLower, SolveLowerTransposed,
    Multiply,       RankUpdate, Dot,        MultiplyTransposed,
    MultiplyVector, ExpArray,   LogArray,   ErfcArray,
    LogisticTerms,  SumSeries,  SumMixture, Tridiagonalise,
};

}  // namespace QV_DENSE_NAMESPACE
}  // namespace QVMath

#endif  // QV_PLATFORM_MATH_INTERNAL_DENSE_TABLE_IMPL_H
