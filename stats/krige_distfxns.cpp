#include "stats/api/krige_distfxns.h"

#include <vector>

#include "platform/likeness/fingerprint.h"
#include "platform/likeness/vsepr.h"
#include "platform/likeness/vsepr_index.h"
#include "platform/system/error_handler.h"
#include "platform/system/text.h"

namespace QVStats {

namespace {

using QVChem::QVMolBase;
using QVLikeness::QVFingerPrint;
using QVLikeness::QVVseprFingerprint;

constexpr double kLargestDistance = 1.0;

double ReportUnpreparedVsepr() {
  QVSystem::QVThrow.Error(
      "QVMolKrigeDefaultDistFxn::PrepMol not called on mol passed to "
      "QVMolKrigeDefaultDistFxn::operator()");
  return kLargestDistance;
}

double ReportUnpreparedLikeness() {
  QVSystem::QVThrow.Error(
      "QVMolKrigeLikenessDistFxn::PrepMol no called on mol passed to "
      "QVMolKrigeLikenessDistFxn::operator(), or PrepMol failed");
  return kLargestDistance;
}

double DistanceOf(const QVFingerPrint* a, const QVFingerPrint* b) {
  if (!a || !b) return ReportUnpreparedLikeness();
  const float tanimoto = QVLikeness::QVTanimoto(*a, *b);
  return tanimoto > 1.0F ? 0.0 : 1.0 - static_cast<double>(tanimoto);
}

/// The VSEPR fingerprints of the molecules; an unprepared one leaves an empty fingerprint behind.
class VseprBulkDistance : public QVBulkDistance<QVMolBase> {
 public:
  void Add(const QVMolBase& mol) override {
    const QVVseprFingerprint* const fingerprint = QVLikeness::QVFindVsepr(mol);
    if (!fingerprint) unprepared_.push_back(index_.GetSize());
    index_.Add(fingerprint ? *fingerprint : QVVseprFingerprint());
  }

  void GetDistances(const QVMolBase& query, double* distances) const override {
    const QVVseprFingerprint* const fingerprint = QVLikeness::QVFindVsepr(query);
    if (fingerprint) {
      index_.GetDistances(*fingerprint, distances);
      for (const std::size_t i : unprepared_) distances[i] = ReportUnpreparedVsepr();
    } else {
      for (std::size_t i = 0; i < index_.GetSize(); ++i) distances[i] = ReportUnpreparedVsepr();
    }
  }

  bool FindNearest(const QVMolBase& query, std::size_t count, bool leaveOutIdentical,
                   std::vector<QVNeighbour>& nearest) const override {
    const QVVseprFingerprint* const fingerprint = QVLikeness::QVFindVsepr(query);
    if (!fingerprint || !unprepared_.empty()) return false;
    nearest.clear();
    for (const auto& found : index_.FindNearest(*fingerprint, count, leaveOutIdentical))
      nearest.push_back({found.distance, found.position});
    return true;
  }

  VseprBulkDistance* CreateCopy() const override { return new VseprBulkDistance(*this); }

 private:
  QVLikeness::QVVseprIndex index_;
  std::vector<std::size_t> unprepared_;
};

class LikenessBulkDistance : public QVBulkDistance<QVMolBase> {
 public:
  explicit LikenessBulkDistance(std::string tag) : tag_(std::move(tag)) {}

  void Add(const QVMolBase& mol) override {
    const auto* const fingerprint = mol.FindData<QVFingerPrint>(tag_);
    prepared_.push_back(fingerprint != nullptr);
    fingerprints_.push_back(fingerprint ? *fingerprint : QVFingerPrint());
  }

  void GetDistances(const QVMolBase& query, double* distances) const override {
    const auto* const fingerprint = query.FindData<QVFingerPrint>(tag_);
    for (std::size_t i = 0; i < fingerprints_.size(); ++i)
      distances[i] = DistanceOf(fingerprint, prepared_[i] ? &fingerprints_[i] : nullptr);
  }

  LikenessBulkDistance* CreateCopy() const override { return new LikenessBulkDistance(*this); }

 private:
  std::string tag_;
  std::vector<QVFingerPrint> fingerprints_;
  std::vector<bool> prepared_;
};

}  // namespace

// ---- VSEPR fingerprints

QVMolKrigeDefaultDistFxn::QVMolKrigeDefaultDistFxn(const QVDefaultKrigeDistanceOptions& options)
    : options_(options) {}

bool QVMolKrigeDefaultDistFxn::PrepMol(QVMolBase& mol) const {
  QVLikeness::QVPrepVsepr(mol, options_.GetImpl());
  return true;
}

double QVMolKrigeDefaultDistFxn::operator()(const QVMolBase& a, const QVMolBase& b) const {
  constexpr double kUnprepared = -1.0;
  const double tanimoto = QVLikeness::QVGetVseprTanimoto(a, b, kUnprepared);
  return tanimoto == kUnprepared ? ReportUnpreparedVsepr() : 1.0 - tanimoto;
}

QVMolKrigeDefaultDistFxn* QVMolKrigeDefaultDistFxn::CreateCopy() const {
  return new QVMolKrigeDefaultDistFxn(*this);
}

QVBulkDistance<QVMolBase>* QVMolKrigeDefaultDistFxn::CreateBulkDistance() const {
  return new VseprBulkDistance;
}

// ---- common fingerprints

QVMolKrigeLikenessDistFxn::QVMolKrigeLikenessDistFxn(unsigned int fpType)
    : fpType_(fpType),
      tag_(QVSystem::QVFormat("QVFingerPrint (type %d)", static_cast<int>(fpType))) {}

bool QVMolKrigeLikenessDistFxn::PrepMol(QVMolBase& mol) const {
  constexpr bool kStereo = false;
  QVFingerPrint fingerprint;
  if (!QVLikeness::QVMakeFP(fingerprint, mol, fpType_, kStereo)) return false;
  mol.SetData(tag_, std::move(fingerprint));
  return true;
}

double QVMolKrigeLikenessDistFxn::operator()(const QVMolBase& a, const QVMolBase& b) const {
  return DistanceOf(a.FindData<QVFingerPrint>(tag_), b.FindData<QVFingerPrint>(tag_));
}

QVMolKrigeLikenessDistFxn* QVMolKrigeLikenessDistFxn::CreateCopy() const {
  return new QVMolKrigeLikenessDistFxn(*this);
}

QVBulkDistance<QVMolBase>* QVMolKrigeLikenessDistFxn::CreateBulkDistance() const {
  return new LikenessBulkDistance(tag_);
}

}  // namespace QVStats
