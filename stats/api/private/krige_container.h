/// \file
/// \brief The training store of the kriging models: elements, groups of identical ones, distances.
#ifndef QVSTATS_API_PRIVATE_KRIGE_CONTAINER_H
#define QVSTATS_API_PRIVATE_KRIGE_CONTAINER_H

#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

#include "platform/system/copy_ptr.h"
#include "platform/system/error_handler.h"
#include "platform/system/functors.h"
#include "stats/api/bulk_distance.h"
#include "stats/api/krige_options.h"
#include "stats/api/private/krige_system.h"
#include "stats/api/property_list.h"

/// QV_ASSERT for the engine's templates: their headers report as one source.
#define QV_KRIGE_ASSERT(condition) \
  (static_cast<bool>(condition) || \
   QVSystem::QVReportFailedAssertion(__LINE__, "stats/krige_model_impl.h"))

namespace QVStats {

// Storage policies: how a training element is held. GetElement() requires HasElement().

/// Holds a copy.
template <class T>
class QVKrigeDefaultElementStorage {
 public:
  explicit QVKrigeDefaultElementStorage(const T& element) : element_(element) {}
  bool HasElement() const { return true; }
  const T& GetElement() const { return element_; }

 private:
  T element_;
};

/// Points to the caller's element, which must outlive the store unchanged.
template <class T>
class QVKrigeUnmanagedPtrElementStorage {
 public:
  explicit QVKrigeUnmanagedPtrElementStorage(const T& element) : element_(&element) {}
  bool HasElement() const { return true; }
  const T& GetElement() const { return *element_; }

 private:
  const T* element_;
};

/// Copies an element of a polymorphic class through its virtual CreateCopy.
template <class T>
struct QVCreateCopyFxn {
  T* operator()(const T& element) const { return element.CreateCopy(); }
};

/// Holds a copy made by `CreateCopyFxn`. The copy never changes, so copies of the store share it.
template <class T, class CreateCopyFxn = QVCreateCopyFxn<T>>
class QVKrigeCopyPtrElementStorage {
 public:
  explicit QVKrigeCopyPtrElementStorage(const T& element) : element_(CreateCopyFxn()(element)) {}
  bool HasElement() const { return element_ != nullptr; }
  const T& GetElement() const { return *element_; }

 private:
  std::shared_ptr<const T> element_;
};

/// One training element.
template <class T, class TT>
struct QVKrigeTrainingData {
  TT element;
  double response;  ///< never NaN
  bool unmeasured;  ///< the response is an estimate
  unsigned int id;  ///< the caller's, or the options' MissingIDValue
  bool hasID;
  std::vector<double> properties;  ///< drift properties; none in a model without drift

  const T& GetElement() const { return element.GetElement(); }
};

/// Reduces the members of a group of identical elements to one response.
template <class T, class TT>
class QVGetUniqueTrainingDataResponseFxn {
 public:
  using Elements = std::vector<QVKrigeTrainingData<T, TT>>;
  virtual ~QVGetUniqueTrainingDataResponseFxn() = default;
  virtual double GetResponse(const Elements& elements,
                             const std::vector<unsigned int>& members) const = 0;
  virtual QVGetUniqueTrainingDataResponseFxn* CreateCopy() const = 0;

 protected:
  /// The response that `combine` makes of the measured members' responses, one after the other, or
  /// of all members' when none is measured.
  template <class Combine>
  static double Reduce(const Elements& elements, const std::vector<unsigned int>& members,
                       Combine combine);
};

/// Whether any member of a group was measured.
template <class Elements>
bool QVHasMeasuredMember(const Elements& elements, const std::vector<unsigned int>& members) {
  for (const unsigned int i : members)
    if (i < elements.size() && !elements[i].unmeasured) return true;
  return false;
}

/// Calls `use` with the members that speak for a group: the measured ones, or all when none is.
/// No members, or an index past the end, is a fatal report.
/// \return how many there are.
template <class Elements, class Use>
std::size_t QVForEachSpeakingMember(const Elements& elements,
                                    const std::vector<unsigned int>& members, Use use) {
  QV_KRIGE_ASSERT(!members.empty());
  const bool measured = QVHasMeasuredMember(elements, members);
  std::size_t count = 0;
  for (const unsigned int i : members) {
    if (!QV_KRIGE_ASSERT(i < elements.size()) || (measured && elements[i].unmeasured)) continue;
    use(elements[i]);
    ++count;
  }
  return count;
}

template <class T, class TT>
template <class Combine>
double QVGetUniqueTrainingDataResponseFxn<T, TT>::Reduce(const Elements& elements,
                                                         const std::vector<unsigned int>& members,
                                                         Combine combine) {
  const double unresolved = std::numeric_limits<double>::max();
  double value = unresolved;
  bool first = true;
  const std::size_t count =
      QVForEachSpeakingMember(elements, members, [&](const QVKrigeTrainingData<T, TT>& data) {
        value = first ? data.response : combine(value, data.response);
        first = false;
      });
  if (count > 0) QV_KRIGE_ASSERT(!std::isnan(value) && value != unresolved);
  return value;
}

template <class T, class TT>
class QVGetMeanTrainingDataResponseFxn : public QVGetUniqueTrainingDataResponseFxn<T, TT> {
 public:
  double GetResponse(const std::vector<QVKrigeTrainingData<T, TT>>& elements,
                     const std::vector<unsigned int>& members) const override {
    std::size_t count = 1;
    const double sum = this->Reduce(elements, members, [&count](double a, double b) {
      ++count;
      return a + b;
    });
    return count == 1 ? sum : sum / static_cast<double>(count);
  }
  QVGetMeanTrainingDataResponseFxn* CreateCopy() const override {
    return new QVGetMeanTrainingDataResponseFxn(*this);
  }
};

template <class T, class TT>
class QVGetMinTrainingDataResponseFxn : public QVGetUniqueTrainingDataResponseFxn<T, TT> {
 public:
  double GetResponse(const std::vector<QVKrigeTrainingData<T, TT>>& elements,
                     const std::vector<unsigned int>& members) const override {
    return this->Reduce(elements, members, [](double a, double b) { return b < a ? b : a; });
  }
  QVGetMinTrainingDataResponseFxn* CreateCopy() const override {
    return new QVGetMinTrainingDataResponseFxn(*this);
  }
};

template <class T, class TT>
class QVGetMaxTrainingDataResponseFxn : public QVGetUniqueTrainingDataResponseFxn<T, TT> {
 public:
  double GetResponse(const std::vector<QVKrigeTrainingData<T, TT>>& elements,
                     const std::vector<unsigned int>& members) const override {
    return this->Reduce(elements, members, [](double a, double b) { return a < b ? b : a; });
  }
  QVGetMaxTrainingDataResponseFxn* CreateCopy() const override {
    return new QVGetMaxTrainingDataResponseFxn(*this);
  }
};

/// One of the three by a QVKrigeUniqueResponseMethod code; an unknown code is an error and the
/// mean.
template <class T, class TT>
class QVGetUniqueTrainingDataResponseImpl : public QVGetUniqueTrainingDataResponseFxn<T, TT> {
 public:
  explicit QVGetUniqueTrainingDataResponseImpl(unsigned int method) : method_(Create(method)) {}
  double GetResponse(const std::vector<QVKrigeTrainingData<T, TT>>& elements,
                     const std::vector<unsigned int>& members) const override {
    return method_->GetResponse(elements, members);
  }
  QVGetUniqueTrainingDataResponseImpl* CreateCopy() const override {
    return new QVGetUniqueTrainingDataResponseImpl(*this);
  }

 private:
  static QVGetUniqueTrainingDataResponseFxn<T, TT>* Create(unsigned int method) {
    if (method == QVKrigeUniqueResponseMethod::Min)
      return new QVGetMinTrainingDataResponseFxn<T, TT>;
    if (method == QVKrigeUniqueResponseMethod::Max)
      return new QVGetMaxTrainingDataResponseFxn<T, TT>;
    if (method != QVKrigeUniqueResponseMethod::Mean)
      QVSystem::QVThrow.Error("Invalid KrigeUniqueResponseMethod %d, defaulting to mean",
                              static_cast<int>(method));
    return new QVGetMeanTrainingDataResponseFxn<T, TT>;
  }

  QVSystem::QVCopyPtr<QVGetUniqueTrainingDataResponseFxn<T, TT>> method_;
};

/// Reduces the members of a group to one property vector.
template <class T, class TT>
class QVGetUniqueTrainingDataPropFxn {
 public:
  virtual ~QVGetUniqueTrainingDataPropFxn() = default;
  virtual std::vector<double> GetProperties(const std::vector<QVKrigeTrainingData<T, TT>>& elements,
                                            const std::vector<unsigned int>& members) const = 0;
  virtual QVGetUniqueTrainingDataPropFxn* CreateCopy() const = 0;
};

/// The mean of the measured members' vectors, or of all members' when none is measured.
template <class T, class TT>
class QVGetMeanTrainingDataPropFxn : public QVGetUniqueTrainingDataPropFxn<T, TT> {
 public:
  std::vector<double> GetProperties(const std::vector<QVKrigeTrainingData<T, TT>>& elements,
                                    const std::vector<unsigned int>& members) const override {
    std::vector<double> mean;
    const std::size_t count =
        QVForEachSpeakingMember(elements, members, [&](const QVKrigeTrainingData<T, TT>& data) {
          mean.resize(data.properties.size());
          for (std::size_t k = 0; k < mean.size(); ++k) mean[k] += data.properties[k];
        });
    if (count > 1)
      for (double& value : mean) value /= static_cast<double>(count);
    return mean;
  }
  QVGetMeanTrainingDataPropFxn* CreateCopy() const override {
    return new QVGetMeanTrainingDataPropFxn(*this);
  }
};

/// The list of a model without drift.
template <class T>
class QVNoPropertyListFxn : public QVPropertyListFxn<T> {
 public:
  bool HasProperties(const T&) const override { return true; }
  std::size_t GetSize() const override { return 0; }
  double GetProperty(const T&, std::size_t) const override { return 0.0; }
  QVNoPropertyListFxn* CreateCopy() const override { return new QVNoPropertyListFxn(*this); }
};

/// Training elements in order of addition. Elements whose distance is below 1e-30 in magnitude form
/// a group, which stands for one point; its first member represents it. Distances between groups
/// are computed once, when an element is added.
template <class T, class TT>
class QVKrigeTrainingContainer {
 public:
  using Data = QVKrigeTrainingData<T, TT>;
  using DistanceFxn = QVSystem::QVBinaryFunction<T, T, double>;

  /// Copies the four functions.
  QVKrigeTrainingContainer(const DistanceFxn& distance,
                           const QVGetUniqueTrainingDataResponseFxn<T, TT>& response,
                           const QVPropertyListFxn<T>& properties,
                           const QVGetUniqueTrainingDataPropFxn<T, TT>& groupProperties)
      : distance_(distance.CreateCopy()),
        response_(response.CreateCopy()),
        properties_(properties.CreateCopy()),
        groupProperties_(groupProperties.CreateCopy()) {
    if (const auto* source = dynamic_cast<const QVBulkDistanceSource<T>*>(distance_.get()))
      bulk_.reset(source->CreateBulkDistance());
  }

  /// A container for elements whose distances are given (SetElements), with functions that it
  /// shares.
  QVKrigeTrainingContainer(
      std::shared_ptr<const DistanceFxn> distance,
      std::shared_ptr<const QVGetUniqueTrainingDataResponseFxn<T, TT>> response,
      std::shared_ptr<const QVPropertyListFxn<T>> properties)
      : distance_(std::move(distance)),
        response_(std::move(response)),
        properties_(std::move(properties)),
        groupProperties_(std::make_shared<QVGetMeanTrainingDataPropFxn<T, TT>>()) {}

  /// Adds an element. A NaN response, or a distance function that is not symmetric to the last bit,
  /// is a fatal report; an element with a NaN, or without the properties of the list, is not added,
  /// nor is one, after an error, whose distances the memory does not hold.
  bool AddElement(const Data& data) {
    if (!IsComplete(data)) return false;
    std::vector<double> row;
    if (bulk_) {
      row.resize(groups_.size());
      bulk_->GetDistances(data.GetElement(), row.data());
    } else {
      row.reserve(groups_.size());
      for (std::size_t g = 0; g < groups_.size(); ++g) {
        const T& representative = GetRepresentative(g);
        const double d = (*distance_)(data.GetElement(), representative);
        const double reverse = (*distance_)(representative, data.GetElement());
        QV_KRIGE_ASSERT(d == reverse);
        row.push_back(d);
        if (IsIdentical(d)) break;
      }
    }
    return Insert(data, row);
  }

  /// Evaluates the drift properties of an element, stores them in `data` and adds it.
  /// \return false when the element lacks them.
  bool AddElementAndProperties(Data& data) {
    return EvaluateProperties(*properties_, data) && AddElement(data);
  }

  /// Fills an empty container with elements of another, the distances between them (not between
  /// groups) known.
  void SetElements(std::vector<Data> elements, QVKrigeDistances distances);

  static bool EvaluateProperties(const QVPropertyListFxn<T>& list, Data& data) {
    const std::size_t count = list.GetSize();
    if (count == 0) return true;
    const T& element = data.GetElement();
    if (!list.HasProperties(element)) return false;
    data.properties.resize(count);
    for (std::size_t k = 0; k < count; ++k) data.properties[k] = list.GetProperty(element, k);
    return true;
  }

  /// Drops all elements.
  void Clear() {
    elements_.clear();
    groups_.clear();
    groupOfElement_.clear();
    distances_ = QVKrigeDistances();
    if (bulk_)
      bulk_.reset(dynamic_cast<const QVBulkDistanceSource<T>&>(*distance_).CreateBulkDistance());
  }

  std::size_t GetNumElements() const { return elements_.size(); }
  /// An index past the end, of an element or a group, is a fatal report; the answer is then the
  /// last element, no members, or 0. An empty container has no element to answer with and ends the
  /// process.
  const Data& GetElement(std::size_t i) const {
    if (QV_KRIGE_ASSERT(i < elements_.size())) return elements_[i];
    if (elements_.empty()) std::abort();
    return elements_.back();
  }
  const std::vector<Data>& GetElements() const { return elements_; }
  std::size_t GetGroupOfElement(std::size_t i) const {
    return QV_KRIGE_ASSERT(i < groupOfElement_.size()) ? groupOfElement_[i] : 0;
  }
  unsigned int GetNumUniqueElements() const { return static_cast<unsigned int>(groups_.size()); }
  const std::vector<unsigned int>& GetUniqueElements(std::size_t g) const {
    static const std::vector<unsigned int> none;
    return QV_KRIGE_ASSERT(g < groups_.size()) ? groups_[g] : none;
  }
  double GetUniqueDistance(std::size_t g, std::size_t h) const {
    const bool valid = QV_KRIGE_ASSERT(g < groups_.size()) && QV_KRIGE_ASSERT(h < groups_.size());
    return valid ? distances_.Get(g, h) : 0.0;
  }
  const QVKrigeDistances& GetUniqueDistances() const { return distances_; }

  double GetUniqueResponse(std::size_t g) const {
    return response_->GetResponse(elements_, GetUniqueElements(g));
  }
  std::vector<double> GetUniqueProperties(std::size_t g) const {
    return groupProperties_->GetProperties(elements_, GetUniqueElements(g));
  }
  /// The identifier of the first member that has one, else the first member's.
  unsigned int GetUniqueID(std::size_t g) const {
    const std::vector<unsigned int>& members = GetUniqueElements(g);
    for (const unsigned int i : members)
      if (elements_[i].hasID) return elements_[i].id;
    return members.empty() ? std::numeric_limits<unsigned int>::max()
                           : elements_[members.front()].id;
  }
  bool GetUniqueHasID(std::size_t g) const {
    for (const unsigned int i : GetUniqueElements(g))
      if (elements_[i].hasID) return true;
    return false;
  }
  /// A group is unmeasured when all its members are.
  bool GetUniqueIsUnmeasured(std::size_t g) const {
    return !QVHasMeasuredMember(elements_, GetUniqueElements(g));
  }

  const QVPropertyListFxn<T>& GetPropertyList() const { return *properties_; }

  /// Distances from `query` to the representatives of all groups.
  void GetDistances(const T& query, double* distances) const {
    if (bulk_) return bulk_->GetDistances(query, distances);
    for (std::size_t g = 0; g < groups_.size(); ++g)
      distances[g] = (*distance_)(query, GetRepresentative(g));
  }

  /// The training as the linear systems see it. A NaN property is a fatal report.
  QVKrigePoints GetPoints() const;

 private:
  static bool IsIdentical(double distance) { return std::abs(distance) < kKrigeIdenticalDistance; }
  bool IsComplete(const Data& data) const {
    return QV_KRIGE_ASSERT(data.element.HasElement()) &&
           QV_KRIGE_ASSERT(!std::isnan(data.response)) &&
           QV_KRIGE_ASSERT(data.properties.size() == properties_->GetSize());
  }
  const T& GetRepresentative(std::size_t g) const {
    return elements_[groups_[g].front()].GetElement();
  }
  bool Insert(const Data& data, const std::vector<double>& row);

  std::shared_ptr<const DistanceFxn> distance_;
  std::shared_ptr<const QVGetUniqueTrainingDataResponseFxn<T, TT>> response_;
  std::shared_ptr<const QVPropertyListFxn<T>> properties_;
  std::shared_ptr<const QVGetUniqueTrainingDataPropFxn<T, TT>> groupProperties_;
  std::vector<Data> elements_;
  std::vector<std::vector<unsigned int>> groups_;
  std::vector<std::size_t> groupOfElement_;
  QVKrigeDistances distances_;
  QVSystem::QVCopyPtr<QVBulkDistance<T>> bulk_;  // the groups' representatives, if there is one
};

template <class T, class TT>
bool QVKrigeTrainingContainer<T, TT>::Insert(const Data& data, const std::vector<double>& row) {
  const auto index = static_cast<unsigned int>(elements_.size());
  std::size_t group = 0;
  while (group < row.size() && !IsIdentical(row[group])) ++group;
  if (group == groups_.size()) {
    if (!distances_.AddPoint(row.data())) return false;
    groups_.emplace_back();
    if (bulk_) bulk_->Add(data.GetElement());
  }
  groups_[group].push_back(index);
  groupOfElement_.push_back(group);
  elements_.push_back(data);
  return true;
}

template <class T, class TT>
void QVKrigeTrainingContainer<T, TT>::SetElements(std::vector<Data> elements,
                                                  QVKrigeDistances distances) {
  if (distances.HaveIdenticalPoints()) {
    std::vector<double> row;
    for (std::size_t i = 0; i < elements.size(); ++i) {
      row.clear();
      for (const auto& group : groups_) row.push_back(distances.GetRow(i)[group.front()]);
      Insert(elements[i], row);
    }
    return;
  }
  // Every element is a point, and the table serves as it stands.
  groups_.reserve(elements.size());
  for (unsigned int i = 0; i < elements.size(); ++i) {
    groups_.emplace_back(1, i);
    groupOfElement_.push_back(i);
  }
  elements_ = std::move(elements);
  distances_ = std::move(distances);
}

template <class T, class TT>
QVKrigePoints QVKrigeTrainingContainer<T, TT>::GetPoints() const {
  QVKrigePoints points;
  const auto n = static_cast<Eigen::Index>(groups_.size());
  points.distances = &distances_;
  points.responses.resize(n);
  points.properties.resize(n, static_cast<Eigen::Index>(properties_->GetSize()));
  points.records.points.reserve(groups_.size());
  for (Eigen::Index row = 0; row < n; ++row) {
    const auto g = static_cast<unsigned int>(row);
    points.responses[row] = GetUniqueResponse(g);
    if (points.properties.cols() > 0) {
      const std::vector<double> properties = GetUniqueProperties(g);
      for (Eigen::Index k = 0; k < points.properties.cols(); ++k)
        points.properties(row, k) = properties[static_cast<std::size_t>(k)];
    }
    points.records.points.push_back(
        {points.responses[row], GetUniqueIsUnmeasured(g), GetUniqueID(g), GetUniqueHasID(g)});
    if (groups_[g].size() > 1)
      for (const unsigned int i : groups_[g])
        points.records.copies[g].push_back(
            {elements_[i].response, elements_[i].unmeasured, elements_[i].id, elements_[i].hasID});
  }
  QV_KRIGE_ASSERT(!points.properties.hasNaN());
  return points;
}

}  // namespace QVStats

#endif  // QVSTATS_API_PRIVATE_KRIGE_CONTAINER_H
