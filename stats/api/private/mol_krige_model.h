/// \file
/// \brief The molecular front-end over a kriging model on elements made from molecules.
#ifndef QVSTATS_API_PRIVATE_MOL_KRIGE_MODEL_H
#define QVSTATS_API_PRIVATE_MOL_KRIGE_MODEL_H

#include <memory>
#include <utility>
#include <vector>

#include "platform/system/copy_ptr.h"
#include "platform/system/cow_ptr.h"
#include "stats/api/krige_2d_mol.h"
#include "stats/api/private/mol_krige_result_impl.h"

namespace QVStats {

/// Keeps the training molecules and lets a QVKrigeBase<Element> do the kriging. What an element is
/// and how it is made of a molecule is left to the derived class.
template <class Element>
class QVElementMolKrigeImpl : public QVMolKrigeImpl {
 public:
  bool AddTraining(const QVChem::QVMolBase& mol, double response) override {
    return Add(mol, response, false);
  }
  bool AddTraining(const QVChem::QVMCMolBase& mol, double response) override {
    return Add(mol, response, false);
  }
  bool AddUnmeasuredTraining(const QVChem::QVMolBase& mol, double response) override {
    return Add(mol, response, true);
  }
  bool AddUnmeasuredTraining(const QVChem::QVMCMolBase& mol, double response) override {
    return Add(mol, response, true);
  }

  bool Train() override {
    Forget();
    return FinishTraining(model_->Train(), HasTraining());
  }
  bool Train(QVKrigeKernelBase& kernel) override {
    Forget();
    return FinishTraining(model_->Train(kernel), HasTraining());
  }
  bool TrainFixed(const QVKrigeKernelBase& kernel) override {
    Forget();
    return FinishTraining(model_->TrainFixed(kernel), false);
  }

  QVMolKrigeResult GetResult(const QVChem::QVMolBase& mol) override { return Ask(mol); }
  QVMolKrigeResult GetResult(const QVChem::QVMCMolBase& mol) override { return Ask(mol); }
  QVMolKrigeResult GetResult(const QVChem::QVMolBase& mol) const override { return AskConst(mol); }
  QVMolKrigeResult GetResult(const QVChem::QVMCMolBase& mol) const override {
    return AskConst(mol);
  }

  std::vector<QVMolKrigeResult> GetResults(
      const std::vector<const QVChem::QVMolBase*>& mols) const override {
    const std::shared_ptr<const QVElementMolKrigeImpl> trained = GetTrained();
    const Queries queries = MakeQueries(mols);
    std::vector<QVKrigeResult> results(queries.pointers.size());
    if (trained->trained_) results = trained->GetModel().GetKrigeResults(queries.pointers);
    std::vector<QVMolKrigeResult> answers(mols.size());
    for (std::size_t i = 0; i < results.size(); ++i)
      answers[queries.positions[i]] = QVMolKrigeResult(results[i], trained->training_);
    return answers;
  }

  std::vector<QVKrigeEstimate> GetEstimates(
      const std::vector<const QVChem::QVMolBase*>& mols) const override {
    const double errorValue = model_->GetErrorValue();
    std::vector<QVKrigeEstimate> answers(mols.size(), {errorValue, errorValue});
    const std::shared_ptr<const QVElementMolKrigeImpl> trained = GetTrained();
    if (!trained->trained_) return answers;
    const Queries queries = MakeQueries(mols);
    const std::vector<QVKrigeEstimate> estimates =
        trained->GetModel().GetEstimates(queries.pointers);
    for (std::size_t i = 0; i < estimates.size(); ++i) answers[queries.positions[i]] = estimates[i];
    return answers;
  }

  /// Made once for each training, whoever asks.
  QVVariogram GetVariogram() override {
    return training_ ? training_->GetVariogram() : model_->GetVariogram();
  }
  QVVariogram GetVariogram() const override {
    return training_ ? training_->GetVariogram() : GetModel().GetVariogram();
  }

  void Clear() override {
    Forget();
    model_->Clear();
    lists_ = QVSystem::QVCowPtr<QVMolKrigeTrainingLists>();
  }

 protected:
  using MolPointer = std::shared_ptr<const QVChem::QVMolBase>;

  /// Takes ownership of the model; copies the property list, which may be null.
  QVElementMolKrigeImpl(QVKrigeBase<Element>* model, const QVChem::QVMolPropertyList* properties)
      : model_(model), properties_(properties ? properties->CreateCopy() : nullptr) {}

  /// The element of a query, which may borrow the molecule.
  virtual Element MakeQueryElement(const QVChem::QVMolBase& mol,
                                   std::vector<double> properties) const = 0;
  /// The element of a training molecule, and the molecule as it is kept: `mol` or a changed copy.
  virtual std::pair<Element, MolPointer> MakeTrainingElement(
      std::unique_ptr<QVChem::QVMolBase> mol, std::vector<double> properties) const = 0;

 private:
  /// The elements of the molecules that have all properties, and where these stand in the list.
  struct Queries {
    std::vector<Element> elements;
    std::vector<const Element*> pointers;
    std::vector<std::size_t> positions;
  };

  /// For the const forms of its questions.
  const QVKrigeBase<Element>& GetModel() const { return *model_; }

  /// \return false when the molecule lacks a property.
  template <class Mol>
  bool ReadProperties(const Mol& mol, std::vector<double>& values) const {
    values.clear();
    if (!properties_) return true;
    if (!properties_->HasProperties(mol)) return false;
    for (std::size_t k = 0; k < properties_->GetSize(); ++k)
      values.push_back(properties_->GetProperty(mol, k));
    return true;
  }

  template <class Mol>
  bool Add(const Mol& mol, double response, bool unmeasured) {
    std::vector<double> properties;
    if (!ReadProperties(mol, properties)) return false;
    Forget();
    const auto id = static_cast<unsigned int>(lists_->molecules.size());
    auto [element, kept] = MakeTrainingElement(std::unique_ptr<QVChem::QVMolBase>(mol.CreateCopy()),
                                               std::move(properties));
    const bool added = unmeasured ? model_->AddUnmeasuredTrainingWithID(element, response, id)
                                  : model_->AddTrainingWithID(element, response, id);
    if (!added) return false;
    QVMolKrigeTrainingLists& lists = lists_.GetMutable();
    lists.molecules.push_back(std::move(kept));
    lists.responses.push_back(response);
    lists.unmeasured.push_back(unmeasured);
    return true;
  }

  void Forget() {
    trained_ = false;
    training_.reset();
  }

  bool HasTraining() const { return !lists_->molecules.empty(); }

  /// Makes what results share of the training as it is now. A model that was given its kernel, or
  /// has no training, has no variogram; it is made when it is asked for.
  bool FinishTraining(bool trained, bool hasVariogram) {
    trained_ = trained;
    QVMolKrigeTraining::MakeVariogram make;
    if (hasVariogram)
      make = [variogram = model_->GetVariogram()] { return variogram; };
    else
      make = [model = std::shared_ptr<const QVKrigeBase<Element>>(model_->CreateKrigeCopy())] {
        return model->GetVariogram();
      };
    training_ = std::make_shared<const QVMolKrigeTraining>(lists_, std::move(make));
    return trained;
  }

  template <class Mol>
  QVMolKrigeResult Ask(const Mol& mol) {
    if (!trained_) Train();
    return Answer(mol);
  }

  template <class Mol>
  QVMolKrigeResult AskConst(const Mol& mol) const {
    return GetTrained()->Answer(mol);
  }

  /// \return an invalid result when the model could not be trained.
  template <class Mol>
  QVMolKrigeResult Answer(const Mol& mol) const {
    std::vector<double> properties;
    if (!ReadProperties(mol, properties)) return QVMolKrigeResult();
    if (!trained_) return QVMolKrigeResult(QVKrigeResult(), training_);
    const Element query = MakeQueryElement(mol, std::move(properties));
    return QVMolKrigeResult(GetModel().GetKrigeResult(query), training_);
  }

  /// This model if it is trained, else a copy that has tried to train.
  std::shared_ptr<const QVElementMolKrigeImpl> GetTrained() const {
    if (trained_) return {std::shared_ptr<const void>(), this};
    const std::shared_ptr<QVElementMolKrigeImpl> copy(
        static_cast<QVElementMolKrigeImpl*>(this->CreateCopy()));
    copy->Train();
    return copy;
  }

  Queries MakeQueries(const std::vector<const QVChem::QVMolBase*>& mols) const {
    Queries queries;
    queries.elements.reserve(mols.size());
    std::vector<double> properties;
    for (std::size_t i = 0; i < mols.size(); ++i) {
      if (!ReadProperties(*mols[i], properties)) continue;
      queries.elements.push_back(MakeQueryElement(*mols[i], properties));
      queries.positions.push_back(i);
    }
    for (const Element& element : queries.elements) queries.pointers.push_back(&element);
    return queries;
  }

  QVSystem::QVCopyPtr<QVKrigeBase<Element>> model_;
  QVSystem::QVCowPtr<QVMolKrigeTrainingLists> lists_;
  QVSystem::QVCopyPtr<QVChem::QVMolPropertyList> properties_;
  bool trained_ = false;
  std::shared_ptr<const QVMolKrigeTraining> training_;
};

}  // namespace QVStats

#endif  // QVSTATS_API_PRIVATE_MOL_KRIGE_MODEL_H
