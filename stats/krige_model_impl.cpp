#include <algorithm>
#include <limits>

#include "stats/api/private/krige_standard.h"

namespace QVStats {

bool QVFitKrigeKernel(QVKrigeKernelBase& kernel, const QVVariogramBase& variogram) {
  return QVFitKernel(kernel, variogram) < std::numeric_limits<double>::max();
}

std::vector<QVFittedKernel> QVRankKrigeKernels(const QVVariogramBase& variogram) {
  std::vector<QVFittedKernel> fitted;
  for (const QVKrigeKernelBase& candidate : QVGetKrigeKernels()) {
    std::shared_ptr<QVKrigeKernelBase> kernel(candidate.CreateCopy());
    const double error = QVFitKernel(*kernel, variogram);
    if (error < std::numeric_limits<double>::max()) fitted.push_back({error, kernel});
  }
  std::stable_sort(fitted.begin(), fitted.end(),
                   [](const auto& a, const auto& b) { return a.error < b.error; });
  return fitted;
}

}  // namespace QVStats
