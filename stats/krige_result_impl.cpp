#include "stats/api/private/krige_result_impl.h"

#include <cmath>
#include <limits>
#include <utility>

#include "platform/system/error_handler.h"

namespace QVStats {

namespace {

constexpr double kNoValue = std::numeric_limits<double>::max();
constexpr unsigned int kNoID = std::numeric_limits<unsigned int>::max();

double Checked(double value) {
  QV_ASSERT(!std::isnan(value));
  return value;
}

}  // namespace

QVKrigeResultImpl::QVKrigeResultImpl(QVSystem::QVCowPtr<QVKrigeResultPoints> points,
                                     std::shared_ptr<const QVKrigeKernelBase> kernel,
                                     double baseline, std::vector<double> distances,
                                     std::shared_ptr<const QVKrigeWeights> weights,
                                     std::size_t query, std::optional<QVKrigeEstimate> estimate)
    : baseline_(baseline),
      kernel_(std::move(kernel)),
      distances_(std::move(distances)),
      onDemand_(std::move(weights)),
      query_(query),
      estimate_(estimate),
      points_(std::move(points)) {}

unsigned int QVKrigeResultImpl::AddElement(double distance, double weight, double response,
                                           bool unmeasured, unsigned int id, bool hasID) {
  if (onDemand_) {
    const double* weights = onDemand_->Get(query_);
    weights_.assign(weights, weights + distances_.size());
    onDemand_.reset();
  }
  estimate_.reset();
  distances_.push_back(Checked(distance));
  weights_.push_back(Checked(weight));
  points_.GetMutable().points.push_back({Checked(response), unmeasured, id, hasID});
  return GetNumElements() - 1;
}

bool QVKrigeResultImpl::PushCopyData(unsigned int index, double response, bool unmeasured,
                                     unsigned int id, bool hasID) {
  points_.GetMutable().copies[index].push_back({Checked(response), unmeasured, id, hasID});
  return index < GetNumElements();
}

void QVKrigeResultImpl::SetBaselineResponse(double response) {
  estimate_.reset();
  baseline_ = Checked(response);
}

void QVKrigeResultImpl::SetKernel(const QVKrigeKernelBase& kernel) {
  estimate_.reset();
  kernel_.reset(kernel.CreateCopy());
}

void QVKrigeResultImpl::Clear() { *this = QVKrigeResultImpl(); }

bool QVKrigeResultImpl::Valid() const { return !distances_.empty(); }

unsigned int QVKrigeResultImpl::GetNumElements() const {
  return static_cast<unsigned int>(distances_.size());
}

bool QVKrigeResultImpl::IsElement(unsigned int i, const char* getter) const {
  if (i < GetNumElements()) return true;
  QVSystem::QVThrow.Error("QVKrigeResultImpl::%s(%d).  Invalid element", getter,
                          static_cast<int>(i));
  return false;
}

double QVKrigeResultImpl::GetDistance(unsigned int i) const {
  return IsElement(i, "GetDistance") ? Checked(distances_[i]) : kNoValue;
}

double QVKrigeResultImpl::GetWeight(unsigned int i) const {
  if (!IsElement(i, "GetWeight")) return kNoValue;
  return Checked(onDemand_ ? onDemand_->Get(query_)[i] : weights_[i]);
}

double QVKrigeResultImpl::GetResponse(unsigned int i) const {
  return IsElement(i, "GetResponse") ? Checked(points_->points[i].response) : kNoValue;
}

double QVKrigeResultImpl::GetBaselineResponse() const { return Checked(baseline_); }

bool QVKrigeResultImpl::GetResponseIsUnmeasured(unsigned int i) const {
  return !IsElement(i, "GetResponseIsUnmeasured") || points_->points[i].unmeasured;
}

QVKrigeKernel QVKrigeResultImpl::GetKernel() const {
  if (kernel_) return QVKrigeKernel(*kernel_);
  QVSystem::QVThrow.Error(Valid() ? "QVKrigeResultImpl::GetKernel().  No kernel"
                                  : "QVKrigeResultImpl::GetKernel().  Result is not valid");
  return QVKrigeKernel(QVKrigeKernelType::Linear);
}

bool QVKrigeResultImpl::GetHasID(unsigned int i) const {
  return !IsElement(i, "GetHasID") || points_->points[i].hasID;
}

unsigned int QVKrigeResultImpl::GetID(unsigned int i) const {
  return IsElement(i, "GetID") ? points_->points[i].id : kNoID;
}

bool QVKrigeResultImpl::GetHasMultipleCopies(unsigned int i) const {
  return IsElement(i, "GetHasMultipleCopies") && GetNumCopies(i) > 1;
}

unsigned int QVKrigeResultImpl::GetNumCopies(unsigned int i) const {
  if (!IsElement(i, "GetNumCopies")) return 0;
  const auto copies = points_->copies.find(i);
  return copies == points_->copies.end() ? 1 : static_cast<unsigned int>(copies->second.size());
}

/// \return null after a report, and without one for a copy index equal to the number of copies.
const QVKrigeResultCopyData* QVKrigeResultImpl::FindCopy(unsigned int i, unsigned int copy,
                                                         const char* getter) const {
  const char* fault = nullptr;
  const auto copies = points_->copies.find(i);
  if (copies != points_->copies.end()) {
    const std::size_t count = copies->second.size();
    if (copy < count) return &copies->second[copy];
    if (copy > count) fault = "copy";
  } else if (i >= GetNumElements()) {
    fault = "element";
  } else if (copy == 0) {
    return &points_->points[i];
  } else {
    fault = "copy key";
  }
  if (fault)
    QVSystem::QVThrow.Error("QVKrigeResultImpl::%s(%d,%d), invalid %s", getter, static_cast<int>(i),
                            static_cast<int>(copy), fault);
  return nullptr;
}

double QVKrigeResultImpl::GetResponse(unsigned int i, unsigned int copy) const {
  const QVKrigeResultCopyData* data = FindCopy(i, copy, "GetResponse");
  return data ? data->response : kNoValue;
}

bool QVKrigeResultImpl::GetResponseIsUnmeasured(unsigned int i, unsigned int copy) const {
  const QVKrigeResultCopyData* data = FindCopy(i, copy, "GetResponseIsUnmeasured");
  return !data || data->unmeasured;
}

bool QVKrigeResultImpl::GetHasID(unsigned int i, unsigned int copy) const {
  const QVKrigeResultCopyData* data = FindCopy(i, copy, "GetHasID");
  return data && data->hasID;
}

unsigned int QVKrigeResultImpl::GetID(unsigned int i, unsigned int copy) const {
  const QVKrigeResultCopyData* data = FindCopy(i, copy, "GetID");
  return data ? data->id : kNoID;
}

QVKrigeResultImpl* QVKrigeResultImpl::CreateCopy() const { return new QVKrigeResultImpl(*this); }

}  // namespace QVStats
