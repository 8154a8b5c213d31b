#include "stats/api/krige_2d_mol.h"

#include "platform/system/error_handler.h"
#include "stats/api/bulk_distance.h"
#include "stats/api/krige_model.h"
#include "stats/api/private/krige_vsepr_impl.h"
#include "stats/api/private/mol_krige_model.h"

namespace QVStats {

namespace {

/// A molecule as an element of a kriging model: owned as training, borrowed as a query.
class MolContainer {
 public:
  MolContainer(std::shared_ptr<const QVChem::QVMolBase> owned, std::vector<double> properties)
      : owned_(std::move(owned)), properties_(std::move(properties)) {}
  MolContainer(const QVChem::QVMolBase& borrowed, std::vector<double> properties)
      : borrowed_(&borrowed), properties_(std::move(properties)) {}

  /// One without a molecule is a fatal report, and an empty molecule.
  const QVChem::QVMolBase& GetMolecule() const {
    static const QVChem::QVGraphMol empty;
    if (borrowed_) return *borrowed_;
    return QV_ASSERT(owned_) ? *owned_ : empty;
  }
  const std::vector<double>& GetProperties() const { return properties_; }

 private:
  std::shared_ptr<const QVChem::QVMolBase> owned_;
  const QVChem::QVMolBase* borrowed_ = nullptr;
  std::vector<double> properties_;
};

/// The caller's distance between the molecules of two containers.
class ContainerDistance : public QVSystem::QVBinaryFunction<MolContainer, MolContainer, double> {
 public:
  explicit ContainerDistance(const QVMolDistanceFxn& distance) : distance_(distance.CreateCopy()) {}
  double operator()(const MolContainer& a, const MolContainer& b) const override {
    return (*distance_)(a.GetMolecule(), b.GetMolecule());
  }
  ContainerDistance* CreateCopy() const override { return new ContainerDistance(*this); }

 protected:
  const QVMolDistanceFxn& GetDistance() const { return *distance_; }

 private:
  QVSystem::QVCopyPtr<QVMolDistanceFxn> distance_;
};

class ContainerBulkDistance : public QVBulkDistance<MolContainer> {
 public:
  explicit ContainerBulkDistance(QVBulkDistance<QVChem::QVMolBase>* bulk) : bulk_(bulk) {}
  void Add(const MolContainer& element) override { bulk_->Add(element.GetMolecule()); }
  void GetDistances(const MolContainer& query, double* distances) const override {
    bulk_->GetDistances(query.GetMolecule(), distances);
  }
  bool FindNearest(const MolContainer& query, std::size_t count, bool leaveOutIdentical,
                   std::vector<QVNeighbour>& nearest) const override {
    return bulk_->FindNearest(query.GetMolecule(), count, leaveOutIdentical, nearest);
  }
  ContainerBulkDistance* CreateCopy() const override { return new ContainerBulkDistance(*this); }

 private:
  QVSystem::QVCopyPtr<QVBulkDistance<QVChem::QVMolBase>> bulk_;
};

/// The same for a caller's distance that answers in bulk.
class BulkContainerDistance : public ContainerDistance, public QVBulkDistanceSource<MolContainer> {
 public:
  using ContainerDistance::ContainerDistance;
  BulkContainerDistance* CreateCopy() const override { return new BulkContainerDistance(*this); }
  ContainerBulkDistance* CreateBulkDistance() const override {
    return new ContainerBulkDistance(FindBulkSource(GetDistance())->CreateBulkDistance());
  }

  /// \return null for a distance that does not answer in bulk.
  static const QVBulkDistanceSource<QVChem::QVMolBase>* FindBulkSource(
      const QVMolDistanceFxn& distance) {
    return dynamic_cast<const QVBulkDistanceSource<QVChem::QVMolBase>*>(&distance);
  }
};

/// The drift properties that a container holds.
class ContainerPropertyList : public QVPropertyListFxn<MolContainer> {
 public:
  explicit ContainerPropertyList(std::size_t size) : size_(size) {}
  bool HasProperties(const MolContainer&) const override { return true; }
  std::size_t GetSize() const override { return size_; }
  double GetProperty(const MolContainer& element, std::size_t k) const override {
    const std::vector<double>& properties = element.GetProperties();
    return QV_ASSERT(k < properties.size()) ? properties[k] : 0.0;
  }
  ContainerPropertyList* CreateCopy() const override { return new ContainerPropertyList(*this); }

 private:
  std::size_t size_;
};

/// Molecular kriging on a distance function of the caller's.
class QVCustomMolKrigeImpl : public QVElementMolKrigeImpl<MolContainer> {
 public:
  /// `properties` may be null.
  QVCustomMolKrigeImpl(const QVMolDistanceFxn& distance,
                       const QVChem::QVMolPropertyList* properties, const QVKrigeOptions& options)
      : QVElementMolKrigeImpl(
            BulkContainerDistance::FindBulkSource(distance)
                ? CreateModel(BulkContainerDistance(distance), properties, options)
                : CreateModel(ContainerDistance(distance), properties, options),
            properties) {}
  QVCustomMolKrigeImpl* CreateCopy() const override { return new QVCustomMolKrigeImpl(*this); }

 protected:
  MolContainer MakeQueryElement(const QVChem::QVMolBase& mol,
                                std::vector<double> properties) const override {
    return {mol, std::move(properties)};
  }
  std::pair<MolContainer, MolPointer> MakeTrainingElement(
      std::unique_ptr<QVChem::QVMolBase> mol, std::vector<double> properties) const override {
    const MolPointer kept(std::move(mol));
    return {MolContainer(kept, std::move(properties)), kept};
  }

 private:
  static QVKrigeBase<MolContainer>* CreateModel(const ContainerDistance& distance,
                                                const QVChem::QVMolPropertyList* properties,
                                                const QVKrigeOptions& options) {
    const ContainerPropertyList list(properties ? properties->GetSize() : 0);
    return QVCreateKrige<MolContainer, QVKrigeDefaultElementStorage<MolContainer>>(distance, list,
                                                                                   options);
  }
};

template <class Mol>
using CopyStorage = QVKrigeCopyPtrElementStorage<Mol>;

}  // namespace

QVMolKrigeImpl::~QVMolKrigeImpl() = default;

QVMolKrige::QVMolKrige(QVMolKrigeImpl* impl) : impl_(impl) {}

QVMolKrige::QVMolKrige(const QVGlobalKrigeOptions& options)
    : QVMolKrige(QVDefaultKrigeDistanceOptions(), options) {}

QVMolKrige::QVMolKrige(const QVLocalKrigeOptions& options)
    : QVMolKrige(QVDefaultKrigeDistanceOptions(), options) {}

QVMolKrige::QVMolKrige(const QVDefaultKrigeDistanceOptions& distance,
                       const QVGlobalKrigeOptions& options)
    : impl_(new QVVseprMolKrigeImpl(options, distance.GetImpl())) {}

QVMolKrige::QVMolKrige(const QVDefaultKrigeDistanceOptions& distance,
                       const QVLocalKrigeOptions& options)
    : impl_(new QVVseprMolKrigeImpl(options, distance.GetImpl())) {}

QVMolKrige::QVMolKrige(const QVChem::QVMolPropertyList& properties,
                       const QVGlobalKrigeOptions& options)
    : QVMolKrige(QVDefaultKrigeDistanceOptions(), properties, options) {}

QVMolKrige::QVMolKrige(const QVChem::QVMolPropertyList& properties,
                       const QVLocalKrigeOptions& options)
    : QVMolKrige(QVDefaultKrigeDistanceOptions(), properties, options) {}

QVMolKrige::QVMolKrige(const QVDefaultKrigeDistanceOptions& distance,
                       const QVChem::QVMolPropertyList& properties,
                       const QVGlobalKrigeOptions& options)
    : impl_(new QVVseprMolKrigeImpl(properties, options, distance.GetImpl())) {}

QVMolKrige::QVMolKrige(const QVDefaultKrigeDistanceOptions& distance,
                       const QVChem::QVMolPropertyList& properties,
                       const QVLocalKrigeOptions& options)
    : impl_(new QVVseprMolKrigeImpl(properties, options, distance.GetImpl())) {}

QVMolKrige::QVMolKrige(const QVMolDistanceFxn& distance, const QVGlobalKrigeOptions& options)
    : impl_(new QVCustomMolKrigeImpl(distance, nullptr, QVKrigeOptions(options))) {}

QVMolKrige::QVMolKrige(const QVMolDistanceFxn& distance, const QVLocalKrigeOptions& options)
    : impl_(new QVCustomMolKrigeImpl(distance, nullptr, QVKrigeOptions(options))) {}

QVMolKrige::QVMolKrige(const QVMolDistanceFxn& distance,
                       const QVChem::QVMolPropertyList& properties,
                       const QVGlobalKrigeOptions& options)
    : impl_(new QVCustomMolKrigeImpl(distance, &properties, QVKrigeOptions(options))) {}

QVMolKrige::QVMolKrige(const QVMolDistanceFxn& distance,
                       const QVChem::QVMolPropertyList& properties,
                       const QVLocalKrigeOptions& options)
    : impl_(new QVCustomMolKrigeImpl(distance, &properties, QVKrigeOptions(options))) {}

bool QVMolKrige::AddTraining(const QVChem::QVMolBase& mol, double response) {
  return impl_->AddTraining(mol, response);
}

bool QVMolKrige::AddTraining(const QVChem::QVMCMolBase& mol, double response) {
  return impl_->AddTraining(mol, response);
}

bool QVMolKrige::AddUnmeasuredTraining(const QVChem::QVMolBase& mol, double response) {
  return impl_->AddUnmeasuredTraining(mol, response);
}

bool QVMolKrige::AddUnmeasuredTraining(const QVChem::QVMCMolBase& mol, double response) {
  return impl_->AddUnmeasuredTraining(mol, response);
}

bool QVMolKrige::Train() { return impl_->Train(); }
bool QVMolKrige::Train(QVKrigeKernel& kernel) { return impl_->Train(kernel); }
bool QVMolKrige::TrainFixed(const QVKrigeKernel& kernel) { return impl_->TrainFixed(kernel); }

QVMolKrigeResult QVMolKrige::GetResult(const QVChem::QVMolBase& mol) {
  return impl_->GetResult(mol);
}

QVMolKrigeResult QVMolKrige::GetResult(const QVChem::QVMolBase& mol) const {
  return Const().GetResult(mol);
}

QVMolKrigeResult QVMolKrige::GetResult(const QVChem::QVMCMolBase& mol) {
  return impl_->GetResult(mol);
}

QVMolKrigeResult QVMolKrige::GetResult(const QVChem::QVMCMolBase& mol) const {
  return Const().GetResult(mol);
}

std::vector<QVMolKrigeResult> QVMolKrige::GetResults(
    const std::vector<const QVChem::QVMolBase*>& mols) const {
  return Const().GetResults(mols);
}

std::vector<QVKrigeEstimate> QVMolKrige::GetEstimates(
    const std::vector<const QVChem::QVMolBase*>& mols) const {
  return Const().GetEstimates(mols);
}

QVVariogram QVMolKrige::GetVariogram() { return impl_->GetVariogram(); }
QVVariogram QVMolKrige::GetVariogram() const { return Const().GetVariogram(); }
void QVMolKrige::Clear() { impl_->Clear(); }

QVSCMolKrige::QVSCMolKrige(const QVMolDistanceFxn& distance, const QVKrigeOptions& options,
                           bool simple)
    : QVKrigeImpl(QVCreateKrige<QVChem::QVMolBase, CopyStorage<QVChem::QVMolBase>>(
          distance, options, simple)) {}

QVSCMolKrige::QVSCMolKrige(const QVMolDistanceFxn& distance,
                           const QVPropertyListFxn<QVChem::QVMolBase>& properties,
                           const QVKrigeOptions& options)
    : QVKrigeImpl(QVCreateKrige<QVChem::QVMolBase, CopyStorage<QVChem::QVMolBase>>(
          distance, properties, options)) {}

QVMCMolKrige::QVMCMolKrige(const DistanceFxn& distance, const QVKrigeOptions& options, bool simple)
    : QVKrigeImpl(QVCreateKrige<QVChem::QVMCMolBase, CopyStorage<QVChem::QVMCMolBase>>(
          distance, options, simple)) {}

QVMCMolKrige::QVMCMolKrige(const DistanceFxn& distance,
                           const QVPropertyListFxn<QVChem::QVMCMolBase>& properties,
                           const QVKrigeOptions& options)
    : QVKrigeImpl(QVCreateKrige<QVChem::QVMCMolBase, CopyStorage<QVChem::QVMCMolBase>>(
          distance, properties, options)) {}

}  // namespace QVStats
