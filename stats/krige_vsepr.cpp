#include "stats/api/krige_vsepr.h"

#include "platform/likeness/vsepr_index.h"
#include "platform/system/error_handler.h"
#include "stats/api/krige_model.h"
#include "stats/api/private/krige_vsepr_impl.h"

namespace QVStats {

namespace {

class VseprBulkDistance : public QVBulkDistance<QVVseprPropFP> {
 public:
  void Add(const QVVseprPropFP& element) override { index_.Add(element); }
  void GetDistances(const QVVseprPropFP& query, double* distances) const override {
    index_.GetDistances(query, distances);
  }
  bool FindNearest(const QVVseprPropFP& query, std::size_t count, bool leaveOutIdentical,
                   std::vector<QVNeighbour>& nearest) const override {
    nearest.clear();
    for (const auto& found : index_.FindNearest(query, count, leaveOutIdentical))
      nearest.push_back({found.distance, found.position});
    return true;
  }
  VseprBulkDistance* CreateCopy() const override { return new VseprBulkDistance(*this); }

 private:
  QVLikeness::QVVseprIndex index_;
};

/// The drift properties that a fingerprint carries.
class VseprPropertyList : public QVPropertyListFxn<QVVseprPropFP> {
 public:
  explicit VseprPropertyList(std::size_t size) : size_(size) {}
  bool HasProperties(const QVVseprPropFP& element) const override {
    return element.GetNumProperties() == size_;
  }
  std::size_t GetSize() const override { return size_; }
  double GetProperty(const QVVseprPropFP& element, std::size_t k) const override {
    return QV_ASSERT(k < size_) ? element.GetProperty(k) : 0.0;
  }
  VseprPropertyList* CreateCopy() const override { return new VseprPropertyList(*this); }

 private:
  std::size_t size_;
};

using Storage = QVKrigeDefaultElementStorage<QVVseprPropFP>;

}  // namespace

QVVseprPropFP::QVVseprPropFP(const QVChem::QVAtomBase& atom, const QVVseprOptions& options)
    : QVVseprFingerprint(atom, options) {}

QVVseprPropFP::QVVseprPropFP(const QVChem::QVBondBase& bond, const QVVseprOptions& options)
    : QVVseprFingerprint(bond, options) {}

QVVseprPropFP::QVVseprPropFP(const QVChem::QVMolBase& mol, const QVVseprOptions& options)
    : QVVseprFingerprint(mol, options) {}

QVVseprPropFP::QVVseprPropFP(const QVChem::QVAtomBase& atom, const std::vector<double>& properties,
                             const QVVseprOptions& options)
    : QVVseprFingerprint(atom, options), properties_(properties) {}

QVVseprPropFP::QVVseprPropFP(const QVChem::QVBondBase& bond, const std::vector<double>& properties,
                             const QVVseprOptions& options)
    : QVVseprFingerprint(bond, options), properties_(properties) {}

QVVseprPropFP::QVVseprPropFP(const QVChem::QVMolBase& mol, const std::vector<double>& properties,
                             const QVVseprOptions& options)
    : QVVseprFingerprint(mol, options), properties_(properties) {}

void QVVseprPropFP::Setup(const QVChem::QVAtomBase& atom, const QVVseprOptions& options) {
  Setup(atom, {}, options);
}

void QVVseprPropFP::Setup(const QVChem::QVBondBase& bond, const QVVseprOptions& options) {
  Setup(bond, {}, options);
}

void QVVseprPropFP::Setup(const QVChem::QVMolBase& mol, const QVVseprOptions& options) {
  Setup(mol, {}, options);
}

void QVVseprPropFP::Setup(const QVChem::QVAtomBase& atom, const std::vector<double>& properties,
                          const QVVseprOptions& options) {
  QVVseprFingerprint::Setup(atom, options);
  properties_ = properties;
}

void QVVseprPropFP::Setup(const QVChem::QVBondBase& bond, const std::vector<double>& properties,
                          const QVVseprOptions& options) {
  QVVseprFingerprint::Setup(bond, options);
  properties_ = properties;
}

void QVVseprPropFP::Setup(const QVChem::QVMolBase& mol, const std::vector<double>& properties,
                          const QVVseprOptions& options) {
  QVVseprFingerprint::Setup(mol, options);
  properties_ = properties;
}

double QVVseprPropFP::GetProperty(std::size_t k) const {
  return QV_ASSERT(k < properties_.size()) ? properties_[k] : 0.0;
}

QVBulkDistance<QVVseprPropFP>* QVVseprDistance::CreateBulkDistance() const {
  return new VseprBulkDistance;
}

QVVseprKrige::QVVseprKrige(const QVKrigeOptions& options, bool simple)
    : QVKrigeImpl(QVCreateKrige<QVVseprPropFP, Storage>(QVVseprDistance(), options, simple)) {}

QVVseprKrige::QVVseprKrige(const QVKrigeOptions& options, std::size_t numProperties)
    : QVKrigeImpl(QVCreateKrige<QVVseprPropFP, Storage>(
          QVVseprDistance(), VseprPropertyList(numProperties), options)) {}

QVVseprMolKrigeImpl::QVVseprMolKrigeImpl(const QVGlobalKrigeOptions& options,
                                         const QVLikeness::QVVseprOptions& vsepr)
    : QVElementMolKrigeImpl(new QVVseprKrige(QVKrigeOptions(options), false), nullptr),
      vsepr_(vsepr) {}

QVVseprMolKrigeImpl::QVVseprMolKrigeImpl(const QVLocalKrigeOptions& options,
                                         const QVLikeness::QVVseprOptions& vsepr)
    : QVElementMolKrigeImpl(new QVVseprKrige(QVKrigeOptions(options), false), nullptr),
      vsepr_(vsepr) {}

QVVseprMolKrigeImpl::QVVseprMolKrigeImpl(const QVChem::QVMolPropertyList& properties,
                                         const QVGlobalKrigeOptions& options,
                                         const QVLikeness::QVVseprOptions& vsepr)
    : QVElementMolKrigeImpl(new QVVseprKrige(QVKrigeOptions(options), properties.GetSize()),
                            &properties),
      vsepr_(vsepr) {}

QVVseprMolKrigeImpl::QVVseprMolKrigeImpl(const QVChem::QVMolPropertyList& properties,
                                         const QVLocalKrigeOptions& options,
                                         const QVLikeness::QVVseprOptions& vsepr)
    : QVElementMolKrigeImpl(new QVVseprKrige(QVKrigeOptions(options), properties.GetSize()),
                            &properties),
      vsepr_(vsepr) {}

QVVseprPropFP QVVseprMolKrigeImpl::MakeQueryElement(const QVChem::QVMolBase& mol,
                                                    std::vector<double> properties) const {
  return {mol, properties, vsepr_};
}

std::pair<QVVseprPropFP, QVVseprMolKrigeImpl::MolPointer> QVVseprMolKrigeImpl::MakeTrainingElement(
    std::unique_ptr<QVChem::QVMolBase> mol, std::vector<double> properties) const {
  QVVseprPropFP fingerprint(*mol, properties, vsepr_);
  mol->SetData<QVLikeness::QVVseprFingerprint>(QVTrainingFingerprintTag, fingerprint);
  return {std::move(fingerprint), std::move(mol)};
}

}  // namespace QVStats
