/// \file
/// \brief Kriging on the neighbourhood of each query.
#ifndef QVSTATS_API_PRIVATE_KRIGE_LOCAL_H
#define QVSTATS_API_PRIVATE_KRIGE_LOCAL_H

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "platform/system/cow_ptr.h"
#include "stats/api/krige_base.h"
#include "stats/api/private/krige_pairs.h"
#include "stats/api/private/krige_standard.h"

namespace QVStats {

/// Kernels are ranked once, on a variogram of all training; each query is answered by a model of
/// the other kind (standard) on its nearest training elements, with the first ranked kernel that
/// works there.
template <class T, class TT>
class QVLocalKrigeImpl : public QVKrigeBase<T> {
 public:
  using Neighbour = QVKrigeUnmanagedPtrElementStorage<T>;
  using Neighbours = QVKrigeTrainingContainer<T, Neighbour>;
  using LocalModel = QVStandardKrigeImpl<T, Neighbour>;
  using Data = QVKrigeTrainingData<T, TT>;
  using DistanceFxn = QVSystem::QVBinaryFunction<T, T, double>;
  using QVKrigeBase<T>::Train;

  QVLocalKrigeImpl(const DistanceFxn& distance, const QVPropertyListFxn<T>& properties,
                   const QVKrigeOptions& options)
      : options_(options),
        distance_(distance.CreateCopy()),
        bulkSource_(dynamic_cast<const QVBulkDistanceSource<T>*>(distance_.get())),
        properties_(properties.CreateCopy()),
        response_(std::make_shared<QVGetUniqueTrainingDataResponseImpl<T, Neighbour>>(
            options.GetUniqueResponseMethod())),
        training_(CreateTraining()) {}

  bool AddTraining(const T& element, double response) override {
    return Add(element, response, false, options_.GetMissingIDValue(), false);
  }
  bool AddTrainingWithID(const T& element, double response, unsigned int id) override {
    return Add(element, response, false, id, true);
  }
  bool AddUnmeasuredTraining(const T& element, double response) override {
    return Add(element, response, true, options_.GetMissingIDValue(), false);
  }
  bool AddUnmeasuredTrainingWithID(const T& element, double response, unsigned int id) override {
    return Add(element, response, true, id, true);
  }

  bool Train() override;
  bool Train(QVKrigeKernelBase& kernel) override;
  bool TrainFixed(const QVKrigeKernelBase& kernel) override {
    kernels_ = {std::shared_ptr<const QVKrigeKernelBase>(kernel.CreateCopy())};
    fixedKernel_ = true;
    return true;
  }

  double Predict(const T& element) override {
    return QVCalculateResponse(GetKrigeResult(element), GetErrorValue());
  }
  double Predict(const T& element) const override {
    return QVCalculateResponse(GetKrigeResult(element), GetErrorValue());
  }
  double GetVariance(const T& element) override {
    return QVCalculateVariance(GetKrigeResult(element), GetErrorValue());
  }
  double GetVariance(const T& element) const override {
    return QVCalculateVariance(GetKrigeResult(element), GetErrorValue());
  }
  QVKrigeResult GetKrigeResult(const T& element) override {
    return IsTrained() || Train() ? Krige(element) : QVKrigeResult();
  }
  QVKrigeResult GetKrigeResult(const T& element) const override {
    return GetKrigeResults({&element})[0];
  }
  std::vector<QVKrigeEstimate> GetEstimates(const std::vector<const T*>& queries) const override {
    std::vector<QVKrigeEstimate> estimates;
    for (const QVKrigeResult& result : GetKrigeResults(queries))
      estimates.push_back({QVCalculateResponse(result, GetErrorValue()),
                           QVCalculateVariance(result, GetErrorValue())});
    return estimates;
  }
  std::vector<QVKrigeResult> GetKrigeResults(const std::vector<const T*>& queries) const override;

  QVKrigeKernel GetKernel() override;
  QVKrigeKernel GetKernel() const override {
    return IsTrained() ? QVKrigeKernel(*kernels_.front()) : CopySelf()->GetKernel();
  }
  QVVariogram GetVariogram() override {
    EnsureVariogram();
    return QVVariogram(variogram_);
  }
  QVVariogram GetVariogram() const override {
    return variogramBuilt_ ? QVVariogram(variogram_) : CopySelf()->GetVariogram();
  }
  QVFullVariogram GetFullVariogram() override { return BuildFullVariogram(); }
  QVFullVariogram GetFullVariogram() const override { return BuildFullVariogram(); }

  double GetErrorValue() const override { return options_.GetErrorValue(); }
  void Clear() override {
    training_ = QVSystem::QVCowPtr<Training>(CreateTraining());
    Forget();
  }

 protected:
  /// A model of the variant's kind that owns `neighbours`.
  virtual std::unique_ptr<LocalModel> CreateLocalKrige(Neighbours neighbours, double errorValue,
                                                       unsigned int missingID,
                                                       bool includeUnmeasured) const = 0;

 private:
  struct Training {
    std::vector<Data> elements;
    QVKrigePairCache cache;
    QVSystem::QVCopyPtr<QVBulkDistance<T>> bulk;  // all elements, if the distance has one
  };
  struct Neighbourhood {
    Neighbours container;
    std::vector<double> distances;  // from the query to the container's groups
  };

  Training CreateTraining() const {
    Training training;
    training.cache =
        QVKrigePairCache(options_.GetMaxVariogramSize(), options_.GetIncludeUnmeasured());
    if (bulkSource_) training.bulk.reset(bulkSource_->CreateBulkDistance());
    return training;
  }
  bool Add(const T& element, double response, bool unmeasured, unsigned int id, bool hasID);
  void Forget() {
    kernels_.clear();
    fixedKernel_ = false;
    variogramBuilt_ = false;
    variogram_.Clear();
  }
  bool IsTrained() const { return !kernels_.empty(); }
  std::unique_ptr<QVKrigeBase<T>> CopySelf() const {
    return std::unique_ptr<QVKrigeBase<T>>(this->CreateKrigeCopy());
  }

  template <class Variogram>
  bool ConstructVariogram(Variogram& variogram) const {
    variogram.Clear();
    QVKrigePairs pairs;
    return FillDistAndDiff(pairs) && QVSetupVariogram(variogram, pairs, true);
  }
  void EnsureVariogram() {
    if (!variogramBuilt_) ConstructVariogram(variogram_);
    variogramBuilt_ = true;
  }
  QVFullVariogram BuildFullVariogram() const {
    QVFullVariogramImpl full;
    ConstructVariogram(full);
    return QVFullVariogram(full);
  }
  bool FillDistAndDiff(QVKrigePairs& pairs) const;

  double GetDistance(const T& a, const T& b) const { return (*distance_)(a, b); }
  bool FindNearest(const T& query, std::vector<QVNeighbour>& nearest) const;
  Neighbourhood CreateNeighbourhood(const std::vector<QVNeighbour>& nearest) const;
  QVKrigeDistances GetNeighbourDistances(const std::vector<QVNeighbour>& nearest) const;
  QVKrigeResult Krige(const T& query) const;

  QVKrigeOptions options_;
  std::shared_ptr<const DistanceFxn> distance_;
  const QVBulkDistanceSource<T>* bulkSource_;  // *distance_ itself, or null
  std::shared_ptr<const QVPropertyListFxn<T>> properties_;
  std::shared_ptr<const QVGetUniqueTrainingDataResponseFxn<T, Neighbour>> response_;
  QVSystem::QVCowPtr<Training> training_;
  std::vector<std::shared_ptr<const QVKrigeKernelBase>> kernels_;  // best first; empty: untrained
  bool fixedKernel_ = false;
  bool variogramBuilt_ = false;
  QVVariogramImpl variogram_;
};

template <class T, class TT>
bool QVLocalKrigeImpl<T, TT>::Add(const T& element, double response, bool unmeasured,
                                  unsigned int id, bool hasID) {
  Forget();
  Data data{TT(element), response, unmeasured, id, hasID, {}};
  if (!QV_KRIGE_ASSERT(data.element.HasElement()) || !QV_KRIGE_ASSERT(!std::isnan(response)) ||
      !QVKrigeTrainingContainer<T, TT>::EvaluateProperties(*properties_, data))
    return false;
  Training& training = training_.GetMutable();
  const T& added = data.GetElement();
  if (!training.cache.IsGivenUp()) {
    std::vector<double> all;
    if (training.bulk) {
      all.resize(training.elements.size());
      training.bulk->GetDistances(added, all.data());
    }
    training.cache.Add(unmeasured, [&](std::size_t j) {
      return training.bulk ? all[j] : GetDistance(added, training.elements[j].GetElement());
    });
  }
  if (training.bulk) training.bulk->Add(added);
  training.elements.push_back(std::move(data));
  return true;
}

template <class T, class TT>
bool QVLocalKrigeImpl<T, TT>::Train() {
  kernels_.clear();
  EnsureVariogram();
  if (variogram_.GetNumBins() < 3) {
    QVSystem::QVThrow.Warning(
        "QVLocalKrigeImpl::Train() failed, not enough data to construct variogram");
    return false;
  }
  for (const QVFittedKernel& fitted : QVRankKrigeKernels(variogram_))
    kernels_.push_back(fitted.kernel);
  fixedKernel_ = false;
  if (kernels_.empty())
    QVSystem::QVThrow.Warning("QVLocalKrigeImpl::Train() failed, no kernel fits the variogram");
  return IsTrained();
}

template <class T, class TT>
bool QVLocalKrigeImpl<T, TT>::Train(QVKrigeKernelBase& kernel) {
  kernels_.clear();
  EnsureVariogram();
  if (variogram_.GetNumBins() < 3) {
    QVSystem::QVThrow.Warning(
        "QVLocalKrigeImpl::Train(QVKrigeKernelBase ) failed, not enough data to construct "
        "variogram");
    return false;
  }
  if (!QVFitKrigeKernel(kernel, variogram_)) {
    QVSystem::QVThrow.Warning(
        "QVLocalKrigeImpl::Train(QVKrigeKernelBase ) failed, the kernel does not fit the "
        "variogram");
    return false;
  }
  return TrainFixed(kernel);
}

/// The pairs of the variogram: all from the cache while it is kept, else a random sample of about
/// MaxVariogramSize. In a cached pair the later element comes first.
template <class T, class TT>
bool QVLocalKrigeImpl<T, TT>::FillDistAndDiff(QVKrigePairs& pairs) const {
  const std::vector<Data>& elements = training_->elements;
  const bool includeUnmeasured = options_.GetIncludeUnmeasured();
  std::vector<double> values;
  if (properties_->GetSize() == 0)
    values = QVGetTrainingResponses(elements);
  else if (!QVGetTrainingResiduals(elements, includeUnmeasured, values))
    return false;

  if (!training_->cache.IsGivenUp()) {
    pairs.reserve(training_->cache.GetNumPairs());
    training_->cache.ForEachPair([&](std::size_t later, std::size_t earlier, double distance) {
      pairs.emplace_back(distance, values[later] - values[earlier]);
    });
    return true;
  }
  std::vector<bool> unmeasured;
  for (const Data& data : elements) unmeasured.push_back(data.unmeasured);
  const QVKrigePairSampler sampler(unmeasured, includeUnmeasured, options_.GetMaxVariogramSize());
  if (!QV_KRIGE_ASSERT(sampler.GetNumCandidates() > 0)) return false;
  for (const auto& [i, j] : sampler.Draw())
    pairs.emplace_back(GetDistance(elements[i].GetElement(), elements[j].GetElement()),
                       values[i] - values[j]);
  return true;
}

/// The elements that a query is answered from.
/// \return false when there is a distance that is not a number.
template <class T, class TT>
bool QVLocalKrigeImpl<T, TT>::FindNearest(const T& query, std::vector<QVNeighbour>& nearest) const {
  const Training& training = *training_;
  const std::size_t count = options_.GetNumLocal();
  const bool leaveOut = options_.GetPredictTraining();
  if (training.bulk && training.bulk->FindNearest(query, count, leaveOut, nearest))
    return nearest.empty() || !std::isnan(nearest.front().distance);
  std::vector<double> distances(training.elements.size());
  if (training.bulk)
    training.bulk->GetDistances(query, distances.data());
  else
    for (std::size_t i = 0; i < distances.size(); ++i)
      distances[i] = GetDistance(query, training.elements[i].GetElement());
  if (std::any_of(distances.begin(), distances.end(), [](double d) { return std::isnan(d); }))
    return false;
  nearest = QVSelectNearest(distances, count, leaveOut);
  return true;
}

template <class T, class TT>
QVKrigeDistances QVLocalKrigeImpl<T, TT>::GetNeighbourDistances(
    const std::vector<QVNeighbour>& nearest) const {
  const Training& training = *training_;
  QVSystem::QVCopyPtr<QVBulkDistance<T>> bulk;
  if (training.cache.IsGivenUp() && bulkSource_) bulk.reset(bulkSource_->CreateBulkDistance());
  QVKrigeDistances distances;
  distances.Reserve(nearest.size());
  std::vector<double> row(nearest.size());
  for (std::size_t a = 0; a < nearest.size(); ++a) {
    const T& element = training.elements[nearest[a].index].GetElement();
    if (bulk) {
      bulk->GetDistances(element, row.data());
      bulk->Add(element);
    } else {
      for (std::size_t b = 0; b < a; ++b) {
        const double* cached = training.cache.Find(nearest[a].index, nearest[b].index);
        if (cached) {
          row[b] = *cached;
          continue;
        }
        const T& other = training.elements[nearest[b].index].GetElement();
        row[b] = GetDistance(element, other);
        if (!bulkSource_) QV_KRIGE_ASSERT(row[b] == GetDistance(other, element));
      }
    }
    distances.AddPoint(row.data());
  }
  return distances;
}

template <class T, class TT>
typename QVLocalKrigeImpl<T, TT>::Neighbourhood QVLocalKrigeImpl<T, TT>::CreateNeighbourhood(
    const std::vector<QVNeighbour>& nearest) const {
  Neighbourhood result{Neighbours(distance_, response_, properties_), {}};
  std::vector<typename Neighbours::Data> elements;
  elements.reserve(nearest.size());
  for (const QVNeighbour& candidate : nearest) {
    const Data& data = training_->elements[candidate.index];
    elements.push_back({Neighbour(data.GetElement()), data.response, data.unmeasured, data.id,
                        data.hasID, data.properties});
  }
  result.container.SetElements(std::move(elements), GetNeighbourDistances(nearest));
  const unsigned int groups = result.container.GetNumUniqueElements();
  result.distances.reserve(groups);
  for (unsigned int g = 0; g < groups; ++g)
    result.distances.push_back(nearest[result.container.GetUniqueElements(g).front()].distance);
  return result;
}

template <class T, class TT>
QVKrigeResult QVLocalKrigeImpl<T, TT>::Krige(const T& query) const {
  std::vector<QVNeighbour> nearest;
  if (!QV_KRIGE_ASSERT(FindNearest(query, nearest)) || nearest.empty()) return QVKrigeResult();
  Neighbourhood neighbourhood = CreateNeighbourhood(nearest);
  const std::unique_ptr<LocalModel> local =
      CreateLocalKrige(std::move(neighbourhood.container), options_.GetErrorValue(),
                       options_.GetMissingIDValue(), options_.GetIncludeUnmeasured());
  const auto ask = [&] { return local->GetResultAtDistances(query, neighbourhood.distances); };

  for (const auto& kernel : kernels_) {
    if (!local->TrainFixed(*kernel)) continue;
    const QVKrigeResult result = ask();
    if (result.Valid()) return result;
  }
  if (fixedKernel_) return QVKrigeResult();
  for (const auto& kernel : kernels_) {
    QVKrigeKernel refitted(*kernel);
    if (!local->Train(refitted)) continue;
    const QVKrigeResult result = ask();
    if (!result.Valid()) continue;
    QVSystem::QVThrow.Warning("QVLocalKrige::GetKrigeResult, Falling back to local variogram");
    return result;
  }
  if (!local->Train()) return QVKrigeResult();
  const QVKrigeResult result = ask();
  if (result.Valid())
    QVSystem::QVThrow.Warning(
        "QVLocalKrige::GetKrigeResult, Falling back to local variogram kernels");
  return result;
}

template <class T, class TT>
std::vector<QVKrigeResult> QVLocalKrigeImpl<T, TT>::GetKrigeResults(
    const std::vector<const T*>& queries) const {
  if (!IsTrained()) {
    const std::unique_ptr<QVKrigeBase<T>> copy = CopySelf();
    if (!copy->Train()) return std::vector<QVKrigeResult>(queries.size());
    return std::as_const(*copy).GetKrigeResults(queries);
  }
  std::vector<QVKrigeResult> results;
  results.reserve(queries.size());
  for (const T* query : queries) results.push_back(Krige(*query));
  return results;
}

template <class T, class TT>
QVKrigeKernel QVLocalKrigeImpl<T, TT>::GetKernel() {
  if (IsTrained() || Train()) return QVKrigeKernel(*kernels_.front());
  QVSystem::QVThrow.Warning(
      "QVLocalKrige::GetKernel, failed to get kernel because training failed");
  return QVKrigeKernel(QVKrigeKernelType::Linear);
}

/// A local model whose neighbourhoods are answered by models of the class template `Standard`.
template <class T, class TT, template <class, class> class Standard>
class QVLocalKrigeOf : public QVLocalKrigeImpl<T, TT> {
 public:
  using Base = QVLocalKrigeImpl<T, TT>;
  using Base::Base;
  QVLocalKrigeOf* CreateKrigeCopy() const override { return new QVLocalKrigeOf(*this); }

 protected:
  std::unique_ptr<typename Base::LocalModel> CreateLocalKrige(
      typename Base::Neighbours neighbours, double errorValue, unsigned int missingID,
      bool includeUnmeasured) const override {
    return std::make_unique<Standard<T, typename Base::Neighbour>>(
        std::move(neighbours), errorValue, missingID, includeUnmeasured);
  }
};

template <class T, class TT>
using QVLocalSimpleKrige = QVLocalKrigeOf<T, TT, QVSimpleKrige>;
template <class T, class TT>
using QVLocalOrdinaryKrige = QVLocalKrigeOf<T, TT, QVOrdinaryKrige>;
template <class T, class TT>
using QVLocalUniversalKrige = QVLocalKrigeOf<T, TT, QVUniversalKrige>;

}  // namespace QVStats

#endif  // QVSTATS_API_PRIVATE_KRIGE_LOCAL_H
