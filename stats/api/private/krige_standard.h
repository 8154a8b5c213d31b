/// \file
/// \brief Simple, ordinary and universal kriging on all training elements.
#ifndef QVSTATS_API_PRIVATE_KRIGE_STANDARD_H
#define QVSTATS_API_PRIVATE_KRIGE_STANDARD_H

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/system/cow_ptr.h"
#include "platform/system/memory.h"
#include "stats/api/krige_base.h"
#include "stats/api/private/krige_covariance.h"

namespace QVStats {

/// A kernel with the error of its fit.
struct QVFittedKernel {
  double error;
  std::shared_ptr<const QVKrigeKernelBase> kernel;
};

/// The candidate kernels fitted to `variogram`, best first; without those that cannot be fitted,
/// which are all when every semivariance is 0.
QVSTATS_EXPORT std::vector<QVFittedKernel> QVRankKrigeKernels(const QVVariogramBase& variogram);

/// Fits `kernel` in place.
/// \return whether it could be fitted.
QVSTATS_EXPORT bool QVFitKrigeKernel(QVKrigeKernelBase& kernel, const QVVariogramBase& variogram);

/// What the three variants share. Training, system and variograms are shared with copies of the
/// model until one of them changes.
template <class T, class TT>
class QVStandardKrigeImpl : public QVKrigeBase<T> {
 public:
  using Container = QVKrigeTrainingContainer<T, TT>;
  using QVKrigeBase<T>::Train;

  bool AddTraining(const T& element, double response) override {
    return Add(element, response, false, missingID_, false);
  }
  bool AddTrainingWithID(const T& element, double response, unsigned int id) override {
    return Add(element, response, false, id, true);
  }
  bool AddUnmeasuredTraining(const T& element, double response) override {
    return Add(element, response, true, missingID_, false);
  }
  bool AddUnmeasuredTrainingWithID(const T& element, double response, unsigned int id) override {
    return Add(element, response, true, id, true);
  }

  bool Train() override;
  bool Train(QVKrigeKernelBase& kernel) override;
  bool TrainFixed(const QVKrigeKernelBase& kernel) override {
    system_.reset();
    system_ = CreateSystem(kernel, *container_);
    return IsTrained();
  }

  double Predict(const T& element) override {
    return EnsureTrained() ? Ask(element).response : errorValue_;
  }
  double Predict(const T& element) const override { return GetEstimates({&element})[0].response; }
  double GetVariance(const T& element) override {
    return EnsureTrained() ? Ask(element).variance : errorValue_;
  }
  double GetVariance(const T& element) const override {
    return GetEstimates({&element})[0].variance;
  }
  QVKrigeResult GetKrigeResult(const T& element) override {
    return EnsureTrained() ? GetResultsOfTrained({&element})[0] : QVKrigeResult();
  }
  QVKrigeResult GetKrigeResult(const T& element) const override {
    return GetKrigeResults({&element})[0];
  }
  std::vector<QVKrigeEstimate> GetEstimates(const std::vector<const T*>& queries) const override;
  std::vector<QVKrigeResult> GetKrigeResults(const std::vector<const T*>& queries) const override;

  /// The result of a query whose distances to the groups are known. The model must be trained.
  QVKrigeResult GetResultAtDistances(const T& element, const std::vector<double>& distances) const;

  QVKrigeKernel GetKernel() override;
  QVKrigeKernel GetKernel() const override;
  QVVariogram GetVariogram() override {
    EnsureVariogram();
    return QVVariogram(variogram_);
  }
  QVVariogram GetVariogram() const override {
    return variogramBuilt_ ? QVVariogram(variogram_) : CopySelf()->GetVariogram();
  }
  QVFullVariogram GetFullVariogram() override;
  QVFullVariogram GetFullVariogram() const override {
    return fullVariogramBuilt_ ? fullVariogram_ : CopySelf()->GetFullVariogram();
  }

  double GetErrorValue() const override { return errorValue_; }
  unsigned int GetMissingIDValue() const { return missingID_; }
  void Clear() override {
    container_.GetMutable().Clear();
    Forget();
  }

 protected:
  QVStandardKrigeImpl(Container container, QVKrigeMean mean, const char* name, double errorValue,
                      unsigned int missingID, bool includeUnmeasured)
      : mean_(mean),
        name_(name),
        errorValue_(errorValue),
        missingID_(missingID),
        includeUnmeasured_(includeUnmeasured),
        container_(std::move(container)) {}

  /// Whether the variant can work with the container's drift properties.
  virtual bool AcceptsProperties(std::size_t count) const = 0;

 private:
  bool Add(const T& element, double response, bool unmeasured, unsigned int id, bool hasID) {
    Forget();
    typename Container::Data data{TT(element), response, unmeasured, id, hasID, {}};
    return container_.GetMutable().AddElementAndProperties(data);
  }
  void Forget() {
    system_.reset();
    variogramBuilt_ = false;
    fullVariogramBuilt_ = false;
    variogram_.Clear();
    fullVariogram_ = QVFullVariogram();
  }
  bool IsTrained() const { return system_ != nullptr; }
  bool EnsureTrained() { return IsTrained() || Train(); }
  /// Runs a step that needs two numbers for each pair of the elements, or one for each entry of a
  /// square matrix of them; an error when the memory is too small.
  template <class Step>
  bool RunOnPairs(const std::string& what, std::size_t elements, Step step) const {
    const auto n = static_cast<double>(elements);
    return QVSystem::QVRunWithinMemory(what + " of " + std::to_string(elements) + " elements",
                                       sizeof(double) * n * n, step);
  }
  /// \return false when there is no memory for it.
  bool EnsureVariogram() {
    if (variogramBuilt_) return true;
    variogramBuilt_ = RunOnPairs("The variogram", container_->GetNumElements(), [this] {
      if (!QVConstructVariogram(variogram_, *container_, includeUnmeasured_))
        QVSystem::QVThrow.Warning("Unable to construct variogram");
      return true;
    });
    return variogramBuilt_;
  }
  std::unique_ptr<QVKrigeBase<T>> CopySelf() const {
    return std::unique_ptr<QVKrigeBase<T>>(this->CreateKrigeCopy());
  }
  std::shared_ptr<const QVKrigeSystem> CreateSystem(const QVKrigeKernelBase& kernel,
                                                    const Container& container) const;
  QVKrigeEstimate Ask(const T& element) const { return GetEstimatesOfTrained({&element})[0]; }
  std::vector<QVKrigeEstimate> GetEstimatesOfTrained(const std::vector<const T*>& queries) const;
  std::vector<QVKrigeResult> GetResultsOfTrained(const std::vector<const T*>& queries) const;
  template <class Answer, class Solve>
  std::vector<Answer> AnswerInBlocks(const std::vector<const T*>& queries, const Answer& failure,
                                     Solve solve) const;

  QVKrigeMean mean_;
  const char* name_;
  double errorValue_;
  unsigned int missingID_;
  bool includeUnmeasured_;
  QVSystem::QVCowPtr<Container> container_;
  std::shared_ptr<const QVKrigeSystem> system_;  // null when untrained
  bool variogramBuilt_ = false;
  QVVariogramImpl variogram_;
  bool fullVariogramBuilt_ = false;
  QVFullVariogram fullVariogram_;
};

template <class T, class TT>
bool QVStandardKrigeImpl<T, TT>::Train() {
  system_.reset();
  const char* unable = "QVStandardKrigeImpl::Train(), unable to train.";
  if (container_->GetNumElements() == 0) {
    QVSystem::QVThrow.Warning("%s  No training data", unable);
    return false;
  }
  if (!EnsureVariogram()) return false;
  if (variogram_.GetNumBins() == 0) {
    QVSystem::QVThrow.Warning("%s  Not enough training data to constuct variogram. (%d bins)",
                              unable, 0);
    return false;
  }
  const std::vector<QVFittedKernel> candidates = QVRankKrigeKernels(variogram_);
  if (candidates.empty()) QVSystem::QVThrow.Warning("%s  No kernel fits the variogram", unable);
  for (const QVFittedKernel& candidate : candidates)
    if (TrainFixed(*candidate.kernel)) return true;
  return false;
}

template <class T, class TT>
bool QVStandardKrigeImpl<T, TT>::Train(QVKrigeKernelBase& kernel) {
  system_.reset();
  const char* unable = "QVStandardKrigeImpl::Train(QVKrigeKernelBase), unable to train.";
  if (container_->GetNumElements() == 0) {
    QVSystem::QVThrow.Warning("%s  No training data", unable);
    return false;
  }
  if (!EnsureVariogram()) return false;
  if (variogram_.GetNumBins() < 3) {
    QVSystem::QVThrow.Warning("%s Not enough training data to constuct variogram", unable);
    return false;
  }
  if (!QVFitKrigeKernel(kernel, variogram_)) {
    QVSystem::QVThrow.Warning("%s  The kernel does not fit the variogram", unable);
    return false;
  }
  return TrainFixed(kernel);
}

template <class T, class TT>
std::shared_ptr<const QVKrigeSystem> QVStandardKrigeImpl<T, TT>::CreateSystem(
    const QVKrigeKernelBase& kernel, const Container& container) const {
  if (!QV_KRIGE_ASSERT(AcceptsProperties(container.GetPropertyList().GetSize()))) return nullptr;
  if (container.GetNumUniqueElements() == 0) {
    QVSystem::QVThrow.Warning(
        "%s::TrainFixed(QVKrigeKernelBase), unable to train.  No training data", name_);
    return nullptr;
  }
  std::shared_ptr<const QVKrigeSystem> system;
  RunOnPairs("The covariance matrix", container.GetNumUniqueElements(), [&] {
    QVKrigePoints points = container.GetPoints();
    if (!points.properties.hasNaN())
      system = QVKrigeSystem::Create(std::move(points), mean_, kernel);
    return true;
  });
  return system;
}

/// Distances and properties of a block of queries, then `solve(distances, properties)`. A query
/// without the drift properties keeps the answer `failure`.
template <class T, class TT>
template <class Answer, class Solve>
std::vector<Answer> QVStandardKrigeImpl<T, TT>::AnswerInBlocks(const std::vector<const T*>& queries,
                                                               const Answer& failure,
                                                               Solve solve) const {
  // Many right sides share each pass over the factor; a multiple of the solver's register rows.
  constexpr std::size_t kBlock = 240;
  const QVPropertyListFxn<T>& list = container_->GetPropertyList();
  const std::size_t numProperties = list.GetSize();
  std::vector<Answer> answers(queries.size(), failure);
  std::vector<std::size_t> accepted;
  for (std::size_t q = 0; q < queries.size(); ++q)
    if (numProperties == 0 || list.HasProperties(*queries[q])) accepted.push_back(q);

  for (std::size_t first = 0; first < accepted.size(); first += kBlock) {
    const std::size_t count = std::min(kBlock, accepted.size() - first);
    const auto columns = static_cast<Eigen::Index>(count);
    Eigen::MatrixXd distances(static_cast<Eigen::Index>(system_->GetNumPoints()), columns);
    Eigen::MatrixXd properties(static_cast<Eigen::Index>(numProperties), columns);
    for (Eigen::Index column = 0; column < columns; ++column) {
      const T& query = *queries[accepted[first + static_cast<std::size_t>(column)]];
      container_->GetDistances(query, distances.col(column).data());
      for (std::size_t k = 0; k < numProperties; ++k)
        properties(static_cast<Eigen::Index>(k), column) = list.GetProperty(query, k);
    }
    std::vector<Answer> solved = solve(distances, properties);
    for (std::size_t q = 0; q < count; ++q) answers[accepted[first + q]] = std::move(solved[q]);
  }
  return answers;
}

template <class T, class TT>
std::vector<QVKrigeEstimate> QVStandardKrigeImpl<T, TT>::GetEstimatesOfTrained(
    const std::vector<const T*>& queries) const {
  return AnswerInBlocks(
      queries, QVKrigeEstimate{errorValue_, errorValue_},
      [this](const Eigen::MatrixXd& distances, const Eigen::MatrixXd& properties) {
        return system_->GetEstimates(distances, properties, errorValue_);
      });
}

template <class T, class TT>
std::vector<QVKrigeResult> QVStandardKrigeImpl<T, TT>::GetResultsOfTrained(
    const std::vector<const T*>& queries) const {
  return AnswerInBlocks(
      queries, QVKrigeResult(),
      [this](const Eigen::MatrixXd& distances, const Eigen::MatrixXd& properties) {
        return system_->GetResults(distances, properties);
      });
}

template <class T, class TT>
std::vector<QVKrigeEstimate> QVStandardKrigeImpl<T, TT>::GetEstimates(
    const std::vector<const T*>& queries) const {
  if (IsTrained()) return GetEstimatesOfTrained(queries);
  const std::unique_ptr<QVKrigeBase<T>> copy = CopySelf();
  if (!copy->Train())
    return std::vector<QVKrigeEstimate>(queries.size(), {errorValue_, errorValue_});
  return std::as_const(*copy).GetEstimates(queries);
}

template <class T, class TT>
std::vector<QVKrigeResult> QVStandardKrigeImpl<T, TT>::GetKrigeResults(
    const std::vector<const T*>& queries) const {
  if (IsTrained()) return GetResultsOfTrained(queries);
  const std::unique_ptr<QVKrigeBase<T>> copy = CopySelf();
  if (!copy->Train()) return std::vector<QVKrigeResult>(queries.size());
  return std::as_const(*copy).GetKrigeResults(queries);
}

template <class T, class TT>
QVKrigeResult QVStandardKrigeImpl<T, TT>::GetResultAtDistances(
    const T& element, const std::vector<double>& distances) const {
  const QVPropertyListFxn<T>& list = container_->GetPropertyList();
  if (list.GetSize() > 0 && !list.HasProperties(element)) return QVKrigeResult();
  Eigen::MatrixXd properties(static_cast<Eigen::Index>(list.GetSize()), 1);
  for (Eigen::Index k = 0; k < properties.rows(); ++k)
    properties(k, 0) = list.GetProperty(element, static_cast<std::size_t>(k));
  const Eigen::Map<const Eigen::VectorXd> column(distances.data(),
                                                 static_cast<Eigen::Index>(distances.size()));
  QVKrigeResult result = system_->GetResults(column, properties)[0];
  // Solves for the weights, lest the result keep the system of its neighbourhood.
  if (result.Valid()) result.GetWeight(0);
  return result;
}

template <class T, class TT>
QVKrigeKernel QVStandardKrigeImpl<T, TT>::GetKernel() {
  if (EnsureTrained()) return QVKrigeKernel(system_->GetKernel());
  QVSystem::QVThrow.Warning(
      "QVStandardKrigeImpl::GetKernel failed to get kernel because Train failed");
  return QVKrigeKernel(QVKrigeKernelType::Linear);
}

template <class T, class TT>
QVKrigeKernel QVStandardKrigeImpl<T, TT>::GetKernel() const {
  return IsTrained() ? QVKrigeKernel(system_->GetKernel()) : CopySelf()->GetKernel();
}

template <class T, class TT>
QVFullVariogram QVStandardKrigeImpl<T, TT>::GetFullVariogram() {
  if (!fullVariogramBuilt_)
    fullVariogramBuilt_ = RunOnPairs("The full variogram", container_->GetNumElements(), [this] {
      QVFullVariogramImpl full;
      if (!QVConstructVariogram(full, *container_, includeUnmeasured_))
        QVSystem::QVThrow.Warning("Unable to construct full variogram");
      fullVariogram_ = QVFullVariogram(full);
      return true;
    });
  return fullVariogram_;
}

/// The mean is known: that of the responses. Weights are free; a query far from all training gets
/// the mean.
template <class T, class TT>
class QVSimpleKrige : public QVStandardKrigeImpl<T, TT> {
 public:
  using Container = QVKrigeTrainingContainer<T, TT>;
  QVSimpleKrige(Container container, double errorValue, unsigned int missingID,
                bool includeUnmeasured)
      : QVStandardKrigeImpl<T, TT>(std::move(container), QVKrigeMean::Known, "QVSimpleKrige",
                                   errorValue, missingID, includeUnmeasured) {}
  QVSimpleKrige* CreateKrigeCopy() const override { return new QVSimpleKrige(*this); }

 protected:
  bool AcceptsProperties(std::size_t count) const override { return count == 0; }
};

/// The mean is an unknown constant; weights sum to 1.
template <class T, class TT>
class QVOrdinaryKrige : public QVStandardKrigeImpl<T, TT> {
 public:
  using Container = QVKrigeTrainingContainer<T, TT>;
  QVOrdinaryKrige(Container container, double errorValue, unsigned int missingID,
                  bool includeUnmeasured)
      : QVStandardKrigeImpl<T, TT>(std::move(container), QVKrigeMean::Unknown, "QVOrdinaryKrige",
                                   errorValue, missingID, includeUnmeasured) {}
  QVOrdinaryKrige* CreateKrigeCopy() const override { return new QVOrdinaryKrige(*this); }

 protected:
  bool AcceptsProperties(std::size_t count) const override { return count == 0; }
};

/// The mean is an unknown linear function of the drift properties; weights sum to 1 and reproduce
/// the properties of the query.
template <class T, class TT>
class QVUniversalKrige : public QVStandardKrigeImpl<T, TT> {
 public:
  using Container = QVKrigeTrainingContainer<T, TT>;
  QVUniversalKrige(Container container, double errorValue, unsigned int missingID,
                   bool includeUnmeasured)
      : QVStandardKrigeImpl<T, TT>(std::move(container), QVKrigeMean::Unknown, "QVUniversalKrige",
                                   errorValue, missingID, includeUnmeasured) {}
  QVUniversalKrige* CreateKrigeCopy() const override { return new QVUniversalKrige(*this); }

 protected:
  bool AcceptsProperties(std::size_t) const override { return true; }
};

}  // namespace QVStats

#endif  // QVSTATS_API_PRIVATE_KRIGE_STANDARD_H
