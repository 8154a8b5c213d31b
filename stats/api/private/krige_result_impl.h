/// \file
/// \brief The kriging result that the models build.
#ifndef QVSTATS_API_PRIVATE_KRIGE_RESULT_IMPL_H
#define QVSTATS_API_PRIVATE_KRIGE_RESULT_IMPL_H

#include <map>
#include <memory>
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

/// Distances and weights are the result's own; points and kernel are shared with the model and all
/// its results until one of them is changed.
class QVSTATS_EXPORT QVKrigeResultImpl : public QVKrigeResultBase {
 public:
  /// An empty, invalid result.
  QVKrigeResultImpl() = default;
  /// \param distances, weights one value a point.
  QVKrigeResultImpl(QVSystem::QVCowPtr<QVKrigeResultPoints> points,
                    std::shared_ptr<const QVKrigeKernelBase> kernel, double baseline,
                    std::vector<double> distances, std::vector<double> weights);

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
  QVSystem::QVCowPtr<QVKrigeResultPoints> points_;
};

}  // namespace QVStats

#endif  // QVSTATS_API_PRIVATE_KRIGE_RESULT_IMPL_H
