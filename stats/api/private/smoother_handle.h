/// \file
/// \brief Smoothers as values: what their handles forward to the model that they own.
#ifndef QVSTATS_API_PRIVATE_SMOOTHER_HANDLE_H
#define QVSTATS_API_PRIVATE_SMOOTHER_HANDLE_H

#include <cstddef>
#include <string>
#include <vector>

#include "platform/system/copy_ptr.h"
#include "stats/api/data_table.h"
#include "stats/api/regression_result.h"
#include "stats/api/stat_model.h"

namespace QVStats {

struct QVSimilarityPredictions;

/// What every smoother has; the operations are those of `Model`.
template <class Model>
class QVSmootherHandle {
 public:
  std::size_t GetNumModelParams() const { return smoother_->GetNumModelParams(); }
  QVStatModelResult SetModelParams(const std::vector<double>& params) {
    return smoother_->SetModelParams(params);
  }
  const std::vector<double>& GetModelParams() const { return smoother_->GetModelParams(); }
  const std::vector<std::string>& GetModelParamNames() const {
    return smoother_->GetModelParamNames();
  }
  bool ModelIsValid() const { return smoother_->ModelIsValid(); }
  std::string GetResultOfConstructor() const { return smoother_->GetResultOfConstructor(); }

 protected:
  /// Takes ownership.
  explicit QVSmootherHandle(Model* smoother) : smoother_(smoother) {}

  QVSystem::QVCopyPtr<Model> smoother_;
};

/// What smoothers on similarity have beside it; `Query` is what the similarities of one object are
/// given as, `Queries` those of many.
template <class Model, class Query, class Queries>
class QVSimilaritySmootherHandle : public QVSmootherHandle<Model> {
 public:
  QVSimilarityRegressionResult GetTrainingSetResults() const {
    return smoother_->GetTrainingSetResults();
  }
  QVSimilarityRegressionResult GetTestSetResults(const std::string& responseColName,
                                                 const QVDataTable& testTable) const {
    return smoother_->GetTestSetResults(responseColName, testTable);
  }
  QVStatModelResult GetPredictedResponse(double& predicted, double& averageWeight,
                                         double& estimatedError, const Query& similarities) const {
    return smoother_->GetPredictedResponse(predicted, averageWeight, estimatedError, similarities);
  }
  QVStatModelResult GetPredictedResponses(QVSimilarityPredictions& predictions,
                                          const Queries& similarities) const {
    return smoother_->GetPredictedResponses(predictions, similarities);
  }
  QVStatModelResult GetLeaveOneOutPredictions(QVSimilarityPredictions& predictions) const {
    return smoother_->GetLeaveOneOutPredictions(predictions);
  }

 protected:
  using QVSmootherHandle<Model>::QVSmootherHandle;
  using QVSmootherHandle<Model>::smoother_;
};

}  // namespace QVStats

#endif  // QVSTATS_API_PRIVATE_SMOOTHER_HANDLE_H
