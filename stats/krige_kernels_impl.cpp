#include "platform/system/error_handler.h"
#include "stats/api/krige_kernels.h"

namespace QVStats {

QVKrigeKernelBase::~QVKrigeKernelBase() = default;

void QVKrigeKernelBase::GetCovariances(const double* distances, double* covariances,
                                       std::size_t count) const {
  const double sill = GetSill();
  for (std::size_t i = 0; i < count; ++i)
    covariances[i] = QVGetKrigeCovariance(sill, GetValue(distances[i]));
}

void QVKrigeKernelImpl::SetRange(double range) {
  QV_ASSERT(range >= 0.0);
  range_ = range;
}

void QVKrigeKernelImpl::SetNugget(double nugget) {
  QV_ASSERT(nugget >= 0.0);
  nugget_ = nugget;
}

void QVKrigeKernelImpl::SetSill(double sill) {
  QV_ASSERT(sill > 0.0);
  sill_ = sill;
}

}  // namespace QVStats
