/// \file
/// \brief Regression on similarity: the handle that programs use.
///
///     QVLinearSmootherOnSimilarity model(QVLinearSmootherOnSimilarityType::GaussianProcess,
///                                        QVSimilarityKernelType::Exponential, "activity",
///                                        "similarity", training);
///     const QVStatModelResult fit = model.SetModelParams({4.0});
///     const QVSimilarityRegressionResult test = model.GetTestSetResults("activity", testRows);
///     std::cout << test.PrintSummary();
#ifndef QVSTATS_API_LINEAR_SMOOTHER_H
#define QVSTATS_API_LINEAR_SMOOTHER_H

#include <cstddef>
#include <string>
#include <vector>

#include "stats/api/export.h"
#include "stats/api/linear_smoother_impl.h"
#include "stats/api/linear_smoother_variogram.h"
#include "stats/api/linear_smoother_variogram_columns.h"
#include "stats/api/private/smoother_handle.h"

namespace QVStats {

/// A new smoother that the caller owns, by a code of QVLinearSmootherOnSimilarityType; the null
/// one, which ignores the other arguments, for an unknown code.
QVSTATS_EXPORT QVLinearSmootherOnSimilarityBase* QVGetLinearSmootherOnSimilarity(
    unsigned int smootherType, unsigned int kernelType, const std::string& responseColName,
    const std::string& similarityColName, const QVDataTable& table);

/// The code of "KernelRegression" or "GaussianProcess"; 0 for any other name. The krigings have no
/// name and are chosen by code.
QVSTATS_EXPORT unsigned int QVGetLinearSmootherOnSimilarityType(const std::string& name);

/// A smoother on similarity as a value; its operations are those of
/// QVLinearSmootherOnSimilarityBase.
class QVSTATS_EXPORT QVLinearSmootherOnSimilarity
    : public QVSimilaritySmootherHandle<QVLinearSmootherOnSimilarityBase, QVDataTableCol,
                                        Eigen::MatrixXd> {
 public:
  QVLinearSmootherOnSimilarity(unsigned int smootherType, unsigned int kernelType,
                               const std::string& responseColName,
                               const std::string& similarityColName, const QVDataTable& table)
      : QVSimilaritySmootherHandle(QVGetLinearSmootherOnSimilarity(
            smootherType, kernelType, responseColName, similarityColName, table)) {}

  std::string GetNameOfLinearSmootherOnSimilarity() const {
    return smoother_->GetNameOfLinearSmootherOnSimilarity();
  }
  unsigned int GetTypeOfLinearSmootherOnSimilarity() const {
    return smoother_->GetTypeOfLinearSmootherOnSimilarity();
  }
  /// The model itself, for what one model alone offers.
  const QVLinearSmootherOnSimilarityBase* GetImpl() const { return smoother_.get(); }
};

}  // namespace QVStats

#endif  // QVSTATS_API_LINEAR_SMOOTHER_H
