/// \file
/// \brief Partial least squares regression of one response, and its scores as drift properties of
/// molecular kriging.
///
/// Of many, also collinear, properties it finds a few directions with the largest covariance to the
/// response and regresses on those.
///
///     QVSCMolPropertyList descriptors;
///     for (const char* tag : {"MolWt", "logP", "TPSA"}) descriptors.PushTag(tag);
///     QVMolPLSPropertyList scores(descriptors, QVPLSOptions());
///     for (const auto& [mol, activity] : known) scores.AddTraining(mol, activity);
///     if (!scores.Train()) return;
///     QVMolKrige model(scores, QVGlobalKrigeOptions());  // drifts on the scores
#ifndef QVSTATS_API_PLSKRIGE_H
#define QVSTATS_API_PLSKRIGE_H

#include <Eigen/Core>
#include <cstddef>
#include <vector>

#include "platform/chem/mol_properties.h"
#include "platform/system/copy_ptr.h"
#include "stats/api/data_model.h"
#include "stats/api/export.h"

namespace QVStats {

/// How many components there shall be, and how properties are prepared.
class QVPLSOptions {
 public:
  /// The number of components; 0, the default, chooses it by cross-validation: the number, from 1
  /// to the largest allowed, with the least root mean square error. There are never more than the
  /// rank of the centred properties.
  QVPLSOptions& SetNumComponents(unsigned int number) { return Set(numComponents_, number); }
  unsigned int GetNumComponents() const { return numComponents_; }
  /// The largest number that cross-validation tries; default 10.
  QVPLSOptions& SetMaxComponents(unsigned int number) { return Set(maxComponents_, number); }
  unsigned int GetMaxComponents() const { return maxComponents_; }
  /// The number of folds, at most one for each example; default 10. Example i is left out in fold
  /// i modulo their number. Fewer than 2 count as 2.
  QVPLSOptions& SetNumFolds(unsigned int number) { return Set(numFolds_, number); }
  unsigned int GetNumFolds() const { return numFolds_; }
  /// Whether properties are divided by their standard deviation (n - 1), so that their units do not
  /// matter; default true. Leave it out for spectra, whose channels share a unit.
  QVPLSOptions& SetScale(bool scale) { return Set(scale_, scale); }
  bool GetScale() const { return scale_; }

 private:
  template <class T>
  QVPLSOptions& Set(T& field, T value) {
    field = value;
    return *this;
  }

  unsigned int numComponents_ = 0;
  unsigned int maxComponents_ = 10;
  unsigned int numFolds_ = 10;
  bool scale_ = true;
};

/// PLS1: with X the centred (and scaled) n x p properties and y the centred response, component a
/// has the weight w_a = X'(y - sum_{b<a} q_b t_b), normalised, the score t_a = X r_a that is what
/// orthogonalising X w_a against the earlier scores leaves, and the loading q_a = y't_a / t_a't_a.
/// The prediction is mean(y) + sum_a q_a t_a. Every score correlates positively with the response.
/// Sources: S. de Jong, "SIMPLS", Chemom. Intell. Lab. Syst. 18, 1993, 251-263; B. S. Dayal, J. F.
/// MacGregor, "Improved PLS algorithms", J. Chemom. 11, 1997, 73-85.
class QVSTATS_EXPORT QVPartialLeastSquareRegression : public QVDataModelBase<std::vector<double>> {
 public:
  /// \param numProperties p.
  /// \param errorValue what Predict returns when the model cannot be trained.
  QVPartialLeastSquareRegression(std::size_t numProperties, double errorValue,
                                 const QVPLSOptions& options = QVPLSOptions());

  /// \return false, with nothing added, when `x` has not exactly p entries.
  bool AddTraining(const std::vector<double>& x, double y) override;
  /// A response or properties that do not vary leave no component, and the model predicts the mean.
  /// \return false, with a warning, for fewer than two examples or values that are not finite.
  bool Train() override;
  /// An `x` that has not exactly p entries is a fatal report and yields the error value.
  double Predict(const std::vector<double>& x) override;
  double Predict(const std::vector<double>& x) const override;
  double GetErrorValue() const override { return errorValue_; }
  void Clear() override;
  QVPartialLeastSquareRegression* CreateCopy() const override;

  std::size_t GetNumProperties() const { return numProperties_; }
  bool IsTrained() const { return trained_; }

  /// \name What was learnt
  /// Empty, or 0, while untrained.
  /// @{
  std::size_t GetNumComponents() const { return static_cast<std::size_t>(rotations_.cols()); }
  /// The scores t_1 ... of an element. An `x` that has not exactly p entries is a fatal report and
  /// yields none.
  std::vector<double> GetScores(const std::vector<double>& x) const;
  /// beta_1 ... beta_p for the properties as they were given, and the constant b, last.
  const std::vector<double>& GetCoefficients() const { return coefficients_; }
  /// The share of the sum of squares of the centred response, or of the centred (and scaled)
  /// properties, that each component explains; 0 to 1.
  const std::vector<double>& GetExplainedResponse() const { return explainedResponse_; }
  const std::vector<double>& GetExplainedProperties() const { return explainedProperties_; }
  /// The cross-validated root mean square errors of 0, 1, 2, ... components; 0 is the mean alone.
  /// Empty when the number of components was given.
  const std::vector<double>& GetCrossValidatedErrors() const { return crossValidatedErrors_; }
  /// @}

 private:
  void Forget();

  std::size_t numProperties_;
  double errorValue_;
  QVPLSOptions options_;
  std::vector<double> inputs_;  // row after row
  std::vector<double> responses_;

  bool trained_ = false;
  Eigen::MatrixXd rotations_;  // p x components, for properties as they were given
  Eigen::RowVectorXd center_;
  std::vector<double> coefficients_;
  std::vector<double> explainedResponse_;
  std::vector<double> explainedProperties_;
  std::vector<double> crossValidatedErrors_;
};

/// The partial least squares scores of a molecule as its properties. Train the list before it is
/// handed to a model, which copies it; until then no molecule has the properties.
class QVSTATS_EXPORT QVMolPLSPropertyList : public QVChem::QVMolPropertyList {
 public:
  /// Copies `properties`, the list that the scores are made of. Each property is read once for each
  /// score: prepare the molecules for a list whose properties cost something.
  explicit QVMolPLSPropertyList(const QVChem::QVMolPropertyList& properties,
                                const QVPLSOptions& options = QVPLSOptions());

  /// Adds an example; the list is then untrained.
  /// \return false, with nothing added, when the molecule lacks a property.
  bool AddTraining(const QVChem::QVMolBase& mol, double response);
  bool AddTraining(const QVChem::QVMCMolBase& mol, double response);
  /// \return whether there are scores; see QVPartialLeastSquareRegression.
  bool Train() { return regression_.Train(); }
  const QVPartialLeastSquareRegression& GetRegression() const { return regression_; }

  /// Whether the list is trained and the molecule has all the properties it is made of.
  bool HasProperties(const QVChem::QVMolBase& mol) const override;
  bool HasProperties(const QVChem::QVMCMolBase& mol) const override;
  /// The number of components.
  std::size_t GetSize() const override { return regression_.GetNumComponents(); }
  /// Score k. An index past the end is a fatal assertion and yields 0.
  double GetProperty(const QVChem::QVMolBase& mol, std::size_t k) const override;
  double GetProperty(const QVChem::QVMCMolBase& mol, std::size_t k) const override;
  QVMolPLSPropertyList* CreateCopy() const override;

 private:
  QVSystem::QVCopyPtr<QVChem::QVMolPropertyList> properties_;
  QVPartialLeastSquareRegression regression_;
};

}  // namespace QVStats

#endif  // QVSTATS_API_PLSKRIGE_H
