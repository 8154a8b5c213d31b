/// \file
/// \brief From a training container to numbers: covariances, and the pairs of its variogram.
#ifndef QVSTATS_API_PRIVATE_KRIGE_COVARIANCE_H
#define QVSTATS_API_PRIVATE_KRIGE_COVARIANCE_H

#include <Eigen/Core>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

#include "stats/api/full_variogram.h"
#include "stats/api/private/krige_container.h"
#include "stats/api/svd_data_model.h"
#include "stats/api/variogram.h"

namespace QVStats {

/// (distance, difference of responses) of pairs of training elements.
using QVKrigePairs = std::vector<std::pair<double, double>>;

/// Fills the leading n x n block of `matrix`, n the number of groups, with the covariances
/// s - gamma(d) of the groups. The rest is left as it is.
/// \return false, after an error, when the matrix is not square or too small.
template <class T, class TT>
bool QVFillCovarianceMatrix(Eigen::MatrixXd& matrix,
                            const QVKrigeTrainingContainer<T, TT>& container,
                            const QVKrigeKernelBase& kernel) {
  if (matrix.rows() != matrix.cols()) {
    QVSystem::QVThrow.Error(
        "QVKrigeTrainingContainer<T,TT>::FillCovarianceMatrix, not a square matrix");
    return false;
  }
  const auto n = static_cast<Eigen::Index>(container.GetNumUniqueElements());
  if (matrix.rows() < n) {
    QVSystem::QVThrow.Error(
        "QVKrigeTrainingContainer<T,TT>::FillCovarianceMatrix,matrix is to small (%dx%d) vs %d",
        static_cast<int>(matrix.rows()), static_cast<int>(matrix.cols()), static_cast<int>(n));
    return false;
  }
  QVFillLowerCovariances(matrix, container.GetUniqueDistances(), kernel);
  for (Eigen::Index g = 0; g < n; ++g)
    for (Eigen::Index h = 0; h < g; ++h) matrix(h, g) = matrix(g, h);
  return true;
}

/// Whether a pair of elements enters a variogram: both measured, or with `includeUnmeasured` at
/// least one.
template <class Data>
bool QVIsVariogramPair(const Data& a, const Data& b, bool includeUnmeasured) {
  return includeUnmeasured ? !(a.unmeasured && b.unmeasured) : !(a.unmeasured || b.unmeasured);
}

/// The responses of `elements`, in order.
template <class Data>
std::vector<double> QVGetTrainingResponses(const std::vector<Data>& elements) {
  std::vector<double> responses;
  responses.reserve(elements.size());
  for (const Data& data : elements) responses.push_back(data.response);
  return responses;
}

/// What a least-squares fit of the responses on the drift properties leaves of each response. The
/// fit uses measured elements, with `includeUnmeasured` all.
/// \return false, after a warning or without data, when the fit fails.
template <class Data>
bool QVGetTrainingResiduals(const std::vector<Data>& elements, bool includeUnmeasured,
                            std::vector<double>& residuals) {
  residuals.clear();
  if (elements.empty()) return false;
  QVSVD<std::vector<double>> drift(elements.front().properties.size(),
                                   std::numeric_limits<double>::max());
  for (const Data& data : elements) {
    if (data.unmeasured && !includeUnmeasured) continue;
    if (!drift.AddTraining(data.properties, data.response)) {
      QVSystem::QVThrow.Warning("QVGetDistAndDiffResidual, failed to add training");
      return false;
    }
  }
  if (!drift.Train()) return false;
  residuals.reserve(elements.size());
  for (const Data& data : elements)
    residuals.push_back(data.response - drift.Predict(data.properties));
  return true;
}

/// The pairs i < j of a container, with the differences values[i] - values[j].
template <class T, class TT>
void QVAppendContainerPairs(QVKrigePairs& pairs, const QVKrigeTrainingContainer<T, TT>& container,
                            const std::vector<double>& values, bool includeUnmeasured) {
  const auto& elements = container.GetElements();
  const QVKrigeDistances& distances = container.GetUniqueDistances();
  const std::size_t n = elements.size();
  // A doubling vector would hold twice the pairs of a large set.
  pairs.reserve(n * (n - 1) / 2);
  for (std::size_t i = 0; i < n; ++i)
    for (std::size_t j = i + 1; j < n; ++j)
      if (QVIsVariogramPair(elements[i], elements[j], includeUnmeasured))
        pairs.emplace_back(
            distances.Get(container.GetGroupOfElement(i), container.GetGroupOfElement(j)),
            values[i] - values[j]);
}

/// All pairs of elements that enter the variogram, in index order; the difference is that of the
/// earlier minus the later response.
template <class T, class TT>
bool QVGetDistAndDiff(QVKrigePairs& pairs, const QVKrigeTrainingContainer<T, TT>& container,
                      bool includeUnmeasured) {
  pairs.clear();
  if (container.GetNumElements() > 0)
    QVAppendContainerPairs(pairs, container, QVGetTrainingResponses(container.GetElements()),
                           includeUnmeasured);
  return true;
}

/// The same with residuals of the drift in place of responses.
/// \return false when the drift cannot be fitted.
template <class T, class TT>
bool QVGetDistAndDiffResidual(QVKrigePairs& pairs, const QVKrigeTrainingContainer<T, TT>& container,
                              bool includeUnmeasured) {
  pairs.clear();
  std::vector<double> residuals;
  if (!QVGetTrainingResiduals(container.GetElements(), includeUnmeasured, residuals)) return false;
  QVAppendContainerPairs(pairs, container, residuals, includeUnmeasured);
  return true;
}

/// Builds the binned or the full variogram of a container: of the residuals when there is a drift.
/// \return false when there are no pairs but those of identical elements.
template <class Variogram, class T, class TT>
bool QVConstructVariogram(Variogram& variogram, const QVKrigeTrainingContainer<T, TT>& container,
                          bool includeUnmeasured) {
  variogram.Clear();
  QVKrigePairs pairs;
  const bool collected = container.GetPropertyList().GetSize() > 0
                             ? QVGetDistAndDiffResidual(pairs, container, includeUnmeasured)
                             : QVGetDistAndDiff(pairs, container, includeUnmeasured);
  return collected && QVSetupVariogram(variogram, pairs, true);
}

}  // namespace QVStats

#endif  // QVSTATS_API_PRIVATE_KRIGE_COVARIANCE_H
