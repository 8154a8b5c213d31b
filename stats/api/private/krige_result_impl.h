/// \file
/// \brief The kriging result that the models build.
#ifndef QVSTATS_API_PRIVATE_KRIGE_RESULT_IMPL_H
#define QVSTATS_API_PRIVATE_KRIGE_RESULT_IMPL_H

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "platform/system/cow_ptr.h"
#include "stats/api/krige_result.h"

namespace QVStats {

/// What a result says of one training element, or of the point that stands for several.
struct QVKrigeResultCopyData {
  double response;
  bool unmeasured;
  unsigned int id;
  bool hasID;
};

/// The part of a result that depends on the training alone.
struct QVKrigeResultPoints {
  std::vector<QVKrigeResultCopyData> points;
  /// By point; only for points that stand for several elements.
  std::map<unsigned int, std::vector<QVKrigeResultCopyData>> copies;
};

/// The weights of queries that were asked together, solved for when one is first read.
class QVKrigeWeights {
 public:
  virtual ~QVKrigeWeights() = default;
  /// One value a point. Safe from many threads.
  virtual const double* Get(std::size_t query) const = 0;
};

/// Distances and weights are the result's own; points and kernel are shared with the model and all
/// its results until one of them is changed.
class QVSTATS_EXPORT QVKrigeResultImpl : public QVKrigeResultBase {
 public:
  /// An empty, invalid result.
  QVKrigeResultImpl() = default;
  /// The result of `query` among those of `weights`.
  /// \param distances one value a point.
  /// \param estimate what the weights predict, if it is known without them.
  QVKrigeResultImpl(QVSystem::QVCowPtr<QVKrigeResultPoints> points,
                    std::shared_ptr<const QVKrigeKernelBase> kernel, double baseline,
                    std::vector<double> distances, std::shared_ptr<const QVKrigeWeights> weights,
                    std::size_t query, std::optional<QVKrigeEstimate> estimate);

  /// Appends a point. A NaN distance, weight or response is a fatal report.
  /// \return the index of the new point.
  unsigned int AddElement(double distance, double weight, double response, bool unmeasured,
                          unsigned int id, bool hasID);
  /// Appends a copy to point `index`. A NaN response is a fatal report.
  /// \return whether there is such a point.
  bool PushCopyData(unsigned int index, double response, bool unmeasured, unsigned int id,
                    bool hasID);
  /// A NaN is a fatal report.
  void SetBaselineResponse(double response);
  /// Stores a copy.
  void SetKernel(const QVKrigeKernelBase& kernel);
  void Clear();
  /// The response and variance of these weights, if they are known.
  const std::optional<QVKrigeEstimate>& GetEstimate() const { return estimate_; }
  /// All weights, one a point.
  const double* GetWeights() const { return onDemand_ ? onDemand_->Get(query_) : weights_.data(); }

  bool Valid() const override;
  unsigned int GetNumElements() const override;
  double GetDistance(unsigned int i) const override;
  double GetWeight(unsigned int i) const override;
  double GetResponse(unsigned int i) const override;
  double GetBaselineResponse() const override;
  bool GetResponseIsUnmeasured(unsigned int i) const override;
  QVKrigeKernel GetKernel() const override;
  bool GetHasID(unsigned int i) const override;
  unsigned int GetID(unsigned int i) const override;
  bool GetHasMultipleCopies(unsigned int i) const override;
  unsigned int GetNumCopies(unsigned int i) const override;
  double GetResponse(unsigned int i, unsigned int copy) const override;
  bool GetResponseIsUnmeasured(unsigned int i, unsigned int copy) const override;
  bool GetHasID(unsigned int i, unsigned int copy) const override;
  unsigned int GetID(unsigned int i, unsigned int copy) const override;
  QVKrigeResultImpl* CreateCopy() const override;

 private:
  bool IsElement(unsigned int i, const char* getter) const;
  const QVKrigeResultCopyData* FindCopy(unsigned int i, unsigned int copy,
                                        const char* getter) const;

  double baseline_ = 0.0;
  std::shared_ptr<const QVKrigeKernelBase> kernel_;
  std::vector<double> distances_;
  std::vector<double> weights_;
  /// Where the weights are in place of weights_, unless null.
  std::shared_ptr<const QVKrigeWeights> onDemand_;
  std::size_t query_ = 0;
  std::optional<QVKrigeEstimate> estimate_;
  QVSystem::QVCowPtr<QVKrigeResultPoints> points_;
};

/// The weights of a result, one a point, for the price of one question.
QVSTATS_EXPORT std::vector<double> QVGetKrigeWeights(const QVKrigeResultBase& result);

}  // namespace QVStats

#endif  // QVSTATS_API_PRIVATE_KRIGE_RESULT_IMPL_H
