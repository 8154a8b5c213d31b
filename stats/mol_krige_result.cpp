#include "stats/api/mol_krige_result.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <utility>

#include "platform/math/special_functions.h"
#include "platform/system/error_handler.h"
#include "stats/api/private/krige_result_impl.h"
#include "stats/api/private/mol_krige_result_impl.h"

// Assertions of molecular results name one source, whichever file they stand in.
#define QV_MOL_ASSERT(condition)   \
  (static_cast<bool>(condition) || \
   QVSystem::QVReportFailedAssertion(__LINE__, "stats/krige_2d_mol.cpp"))

namespace QVStats {

namespace {

constexpr double kNoValue = std::numeric_limits<double>::max();
/// Products of weight and response difference up to this, and totals up to kNoEvidence, are
/// nothing.
constexpr double kSmallProduct = 1e-10;
constexpr double kNoEvidence = 1e-8;

/// The sum of scaled fingerprints, made in one go. Options are those of the first.
class EvidenceSum {
 public:
  void Add(const QVLikeness::QVVseprFingerprint& fingerprint, double factor) {
    if (isEmpty_) options_ = fingerprint.GetOptions();
    isEmpty_ = false;
    codes_.insert(codes_.end(), fingerprint.GetCodes().begin(), fingerprint.GetCodes().end());
    for (const double weight : fingerprint.GetWeights()) weights_.push_back(weight * factor);
    total_ += factor;
  }
  QVLikeness::QVVseprFingerprint GetSum() const {
    QVLikeness::QVVseprFingerprint sum;
    sum.Setup(codes_, weights_, options_);
    return sum;
  }
  double GetTotal() const { return total_; }

 private:
  bool isEmpty_ = true;
  QVLikeness::QVVseprOptions options_;
  std::vector<std::uint64_t> codes_;
  std::vector<double> weights_;
  double total_ = 0.0;
};

/// For each atom its share of the evidence, normalised so that the shares of all atoms add up to 1
/// (or are all 0).
std::vector<double> GetShares(const QVLikeness::QVVseprFingerprint& evidence,
                              const std::vector<QVLikeness::QVVseprFingerprint>& atoms) {
  std::vector<double> shares;
  for (const QVLikeness::QVVseprFingerprint& atom : atoms)
    shares.push_back(atom.GetVolume() > 0.0 ? evidence.GetSharedVolume(atom) / atom.GetVolume()
                                            : 0.0);
  const double total = std::accumulate(shares.begin(), shares.end(), 0.0);
  for (double& share : shares) share = total > kNoEvidence ? share / total : 0.0;
  return shares;
}

const QVChem::QVMolBase& OrEmpty(const QVChem::QVMolBase* mol) {
  static const QVChem::QVGraphMol empty;
  return mol ? *mol : empty;
}

std::shared_ptr<const QVMolKrigeTraining> MakeTraining(
    std::vector<std::shared_ptr<const QVChem::QVMolBase>> molecules, std::vector<double> responses,
    const std::vector<bool>& unmeasured, const QVVariogram& variogram) {
  QVSystem::QVCowPtr<QVMolKrigeTrainingLists> lists(
      {std::move(molecules), std::move(responses), unmeasured});
  return std::make_shared<const QVMolKrigeTraining>(std::move(lists),
                                                    [variogram] { return variogram; });
}

}  // namespace

QVMolKrigeTraining::QVMolKrigeTraining(QVSystem::QVCowPtr<QVMolKrigeTrainingLists> lists,
                                       MakeVariogram makeVariogram)
    : lists_(std::move(lists)), makeVariogram_(std::move(makeVariogram)) {
  if (!QV_MOL_ASSERT(lists_->responses.size() == lists_->unmeasured.size())) return;
  for (std::size_t i = 0; i < lists_->responses.size(); ++i)
    if (!lists_->unmeasured[i]) measured_.push_back(lists_->responses[i]);
}

const QVVariogram& QVMolKrigeTraining::GetVariogram() const {
  std::call_once(made_, [this] { variogram_ = makeVariogram_(); });
  return variogram_;
}

QVMolKrigeResultImpl::QVMolKrigeResultImpl(const QVKrigeResult& result,
                                           std::shared_ptr<const QVMolKrigeTraining> training)
    : result_(result),
      training_(std::move(training)),
      response_(QVCalculateResponse(result_, kNoValue)),
      variance_(QVCalculateVariance(result_, kNoValue)) {}

const QVChem::QVMolBase* QVMolKrigeResultImpl::FindMolecule(bool hasID, unsigned int id) const {
  const auto& molecules = training_->GetLists().molecules;
  if (!QV_MOL_ASSERT(hasID) || !QV_MOL_ASSERT(id < molecules.size())) return nullptr;
  return molecules[id].get();
}

const QVChem::QVMolBase* QVMolKrigeResultImpl::FindElement(unsigned int i) const {
  if (!QV_MOL_ASSERT(i < result_.GetNumElements())) return nullptr;
  return FindMolecule(result_.GetHasID(i), result_.GetID(i));
}

const QVChem::QVMolBase* QVMolKrigeResultImpl::FindElement(unsigned int i,
                                                           unsigned int copy) const {
  if (!QV_MOL_ASSERT(i < result_.GetNumElements())) return nullptr;
  // The element index is what is compared, as documented.
  if (!QV_MOL_ASSERT(i < result_.GetNumCopies(i))) return nullptr;
  return FindMolecule(result_.GetHasID(i, copy), result_.GetID(i, copy));
}

QVMolKrigeEvidence QVMolKrigeResultImpl::CollectEvidence(double baseline) const {
  EvidenceSum raising;
  EvidenceSum lowering;
  for (unsigned int i = 0; i < result_.GetNumElements(); ++i) {
    const double product =
        result_.GetWeight(i) * (result_.GetResponse(i) + result_.GetBaselineResponse() - baseline);
    const QVChem::QVMolBase* const mol = FindElement(i);
    const auto* const fingerprint =
        mol ? mol->FindData<QVLikeness::QVVseprFingerprint>(QVTrainingFingerprintTag) : nullptr;
    if (!QV_MOL_ASSERT(fingerprint)) return {};
    // Both tests are against the same positive number: a product of 0 is booked as lowering.
    if (product > kSmallProduct) raising.Add(*fingerprint, product);
    if (product < kSmallProduct) lowering.Add(*fingerprint, -product);
  }
  QVMolKrigeEvidence evidence{raising.GetSum(), lowering.GetSum(), raising.GetTotal(),
                              lowering.GetTotal()};
  // Crosswise, as documented: each is divided by the total of the other.
  if (evidence.loweringTotal > 0.0) evidence.raising.Scale(1.0 / evidence.loweringTotal);
  if (evidence.raisingTotal > 0.0) evidence.lowering.Scale(1.0 / evidence.raisingTotal);
  const QVLikeness::QVVseprFingerprint common = (evidence.raising & evidence.lowering).Scale(-1.0);
  evidence.raising += common;
  evidence.lowering += common;
  return evidence;
}

std::shared_ptr<const QVMolKrigeEvidence> QVMolKrigeResultImpl::GetEvidence(double baseline) const {
  // A NaN has no place among the keys of a map.
  if (!QV_MOL_ASSERT(!std::isnan(baseline))) return std::make_shared<const QVMolKrigeEvidence>();
  const std::lock_guard<std::mutex> lock(mutex_);
  std::shared_ptr<const QVMolKrigeEvidence>& evidence = evidence_[baseline];
  if (!evidence) evidence = std::make_shared<const QVMolKrigeEvidence>(CollectEvidence(baseline));
  return evidence;
}

std::vector<double> QVMolKrigeResultImpl::GetAtomContributions(const QVChem::QVMolBase& mol,
                                                               double baseline) const {
  const std::shared_ptr<const QVMolKrigeEvidence> evidence = GetEvidence(baseline);
  std::vector<double> contributions(mol.GetNumAtoms(), 0.0);
  const double raisingTotal = evidence->raisingTotal;
  const double loweringTotal = evidence->loweringTotal;
  if (!(raisingTotal + loweringTotal > kNoEvidence)) return contributions;

  const QVLikeness::QVVseprOptions& options = evidence->raising.GetVolume() > 0.0
                                                  ? evidence->raising.GetOptions()
                                                  : evidence->lowering.GetOptions();
  const auto atoms = QVLikeness::QVGetVseprAtomFingerprints(mol, options);
  const std::vector<double> raising = GetShares(evidence->raising, atoms);
  const std::vector<double> lowering = GetShares(evidence->lowering, atoms);
  const bool raisingIsLarger = loweringTotal <= raisingTotal;
  const double ratio =
      raisingIsLarger ? loweringTotal / raisingTotal : raisingTotal / loweringTotal;
  for (std::size_t i = 0; i < contributions.size(); ++i)
    contributions[i] =
        raisingIsLarger ? raising[i] * ratio - lowering[i] : raising[i] - ratio * lowering[i];
  return contributions;
}

QVMolKrigeResult::QVMolKrigeResult()
    : QVMolKrigeResult(QVKrigeResult(), MakeTraining({}, {}, {}, QVVariogram())) {}

QVMolKrigeResult::QVMolKrigeResult(const QVKrigeResult& result,
                                   std::vector<std::shared_ptr<const QVChem::QVMolBase>> molecules,
                                   std::vector<double> responses,
                                   const std::vector<bool>& unmeasured,
                                   const QVVariogram& variogram)
    : QVMolKrigeResult(
          result, MakeTraining(std::move(molecules), std::move(responses), unmeasured, variogram)) {
}

QVMolKrigeResult::QVMolKrigeResult(const QVKrigeResult& result,
                                   std::shared_ptr<const QVMolKrigeTraining> training)
    : impl_(std::make_shared<const QVMolKrigeResultImpl>(result, std::move(training))) {}

bool QVMolKrigeResult::Valid() const { return GetKrigeResult().Valid(); }
double QVMolKrigeResult::GetResponse() const { return impl_->GetResponse(); }
double QVMolKrigeResult::GetVariance() const { return impl_->GetVariance(); }
const QVKrigeResult& QVMolKrigeResult::GetKrigeResult() const { return impl_->GetResult(); }
unsigned int QVMolKrigeResult::GetNumElements() const { return GetKrigeResult().GetNumElements(); }

double QVMolKrigeResult::GetElementDistance(unsigned int i) const {
  return GetKrigeResult().GetDistance(i);
}

double QVMolKrigeResult::GetElementWeight(unsigned int i) const {
  return GetKrigeResult().GetWeight(i);
}

double QVMolKrigeResult::GetElementResponse(unsigned int i) const {
  const double response = GetKrigeResult().GetResponse(i);
  return i < GetNumElements() ? response + GetKrigeResult().GetBaselineResponse() : response;
}

bool QVMolKrigeResult::GetElementIsUnmeasured(unsigned int i) const {
  return GetKrigeResult().GetResponseIsUnmeasured(i);
}

unsigned int QVMolKrigeResult::GetElementID(unsigned int i) const {
  return GetKrigeResult().GetID(i);
}

bool QVMolKrigeResult::GetHasMultipleCopies(unsigned int i) const {
  return GetKrigeResult().GetHasMultipleCopies(i);
}

unsigned int QVMolKrigeResult::GetNumCopies(unsigned int i) const {
  return GetKrigeResult().GetBase().GetNumCopies(i);
}

double QVMolKrigeResult::GetElementResponse(unsigned int i, unsigned int copy) const {
  return GetKrigeResult().GetResponse(i, copy);
}

bool QVMolKrigeResult::GetElementIsUnmeasured(unsigned int i, unsigned int copy) const {
  return GetKrigeResult().GetResponseIsUnmeasured(i, copy);
}

const QVChem::QVMolBase& QVMolKrigeResult::GetElement(unsigned int i) const {
  return OrEmpty(impl_->FindElement(i));
}

const QVChem::QVMolBase& QVMolKrigeResult::GetElement(unsigned int i, unsigned int copy) const {
  return OrEmpty(impl_->FindElement(i, copy));
}

std::vector<unsigned int> QVMolKrigeResult::GetLargestElements(unsigned int count) const {
  std::vector<unsigned int> order(GetNumElements());
  std::iota(order.begin(), order.end(), 0U);
  std::vector<double> sizes = QVGetKrigeWeights(GetKrigeResult().GetBase());
  for (double& size : sizes) size = std::abs(size);
  const auto isLarger = [&](unsigned int a, unsigned int b) {
    if (sizes[a] != sizes[b]) return sizes[a] > sizes[b];
    const double distanceA = GetElementDistance(a);
    const double distanceB = GetElementDistance(b);
    return distanceA != distanceB ? distanceA < distanceB : a < b;
  };
  const auto end =
      order.begin() + std::min<std::ptrdiff_t>(count, static_cast<std::ptrdiff_t>(order.size()));
  std::partial_sort(order.begin(), end, order.end(), isLarger);
  order.erase(end, order.end());
  return order;
}

QVKrigeKernel QVMolKrigeResult::GetKernel() const { return GetKrigeResult().GetKernel(); }
QVVariogram QVMolKrigeResult::GetVariogram() const { return impl_->GetTraining()->GetVariogram(); }

QVSystem::QVIter<const double> QVMolKrigeResult::GetTrainingResponses(
    bool includeUnmeasured) const {
  const std::shared_ptr<const QVMolKrigeTraining>& training = impl_->GetTraining();
  // Keeps the training alive as long as the iterator.
  using Responses = const std::vector<double>;
  return QVSystem::QVMakeSharedIter<const double>(
      std::shared_ptr<Responses>(training, includeUnmeasured ? &training->GetLists().responses
                                                             : &training->GetMeasuredResponses()));
}

double QVMolKrigeResult::GetAtomContribution(const QVChem::QVAtomBase& atom) const {
  return GetAtomContribution(atom, GetResponse());
}

double QVMolKrigeResult::GetAtomContribution(const QVChem::QVAtomBase& atom,
                                             double baseline) const {
  if (!QV_MOL_ASSERT(atom.IsValid())) return 0.0;
  return GetAtomContributions(atom.GetParent(), baseline)[atom.GetIndex()];
}

std::vector<double> QVMolKrigeResult::GetAtomContributions(const QVChem::QVMolBase& mol,
                                                           double baseline) const {
  return impl_->GetAtomContributions(mol, baseline);
}

double QVProbabilityLessThan(const QVMolKrigeResult& result, double x) {
  const double deviation = x - result.GetResponse();
  return 0.5 * (1.0 + QVMath::QVerf(deviation / std::sqrt(2.0 * result.GetVariance())));
}

double QVProbabilityGreaterThan(const QVMolKrigeResult& result, double x) {
  return 1.0 - QVProbabilityLessThan(result, x);
}

double QVProbabilityBetween(const QVMolKrigeResult& result, double a, double b) {
  return QVProbabilityLessThan(result, std::max(a, b)) -
         QVProbabilityLessThan(result, std::min(a, b));
}

}  // namespace QVStats
