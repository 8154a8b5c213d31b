/// \file
/// \brief Kriging models: a response predicted as a weighted sum of training responses, with
/// weights that follow from the distances between elements and an error estimate from the same
/// weights.
///
/// The element type T is anything with a distance: points, fingerprints, molecules. Make a model
/// with QVCreateKrige (krige_model.h), add training, ask:
///
///     QVKrigeImpl<Point> model(QVCreateKrige<Point, QVKrigeDefaultElementStorage<Point>>(
///         EuclideanDistance(), QVKrigeOptions(QVGlobalKrigeOptions()), false));
///     for (const Sample& s : samples) model.AddTraining(s.point, s.value);
///     const double value = model.Predict(query), variance = model.GetVariance(query);
///
/// Source: N. A. C. Cressie, "Statistics for Spatial Data", revised edition, 1993, chapter 3.
#ifndef QVSTATS_API_KRIGE_BASE_H
#define QVSTATS_API_KRIGE_BASE_H

#include <vector>

#include "platform/system/copy_ptr.h"
#include "stats/api/data_model.h"
#include "stats/api/full_variogram.h"
#include "stats/api/krige_kernels.h"
#include "stats/api/krige_result.h"
#include "stats/api/variogram.h"

namespace QVStats {

/// What every kriging model offers. Elements closer than 1e-30 are one training point. Any addition
/// makes the model untrained; an untrained model trains itself when it is asked. The const form of
/// a question leaves the model as it is: an untrained one trains a private copy at every call. On a
/// trained model the const forms may run concurrently.
///
/// Responses are numbers whose squared differences are finite; others are a mistake of the caller,
/// which training reports as fatal.
///
/// A model on all of n training elements holds 4 n^2 bytes of distances and, once trained, 8 n^2
/// bytes of a matrix; training that would not fit into memory fails with an error that says how
/// much it needs. A local model grows with n alone.
template <class T>
class QVKrigeBase : public QVDataModelBase<T> {
 public:
  /// Adds an element with an identifier, by which results name it.
  /// \return false when the element lacks the model's drift properties, or after an error when the
  /// memory is too small for its distances, here and below.
  virtual bool AddTrainingWithID(const T& element, double response, unsigned int id) = 0;
  /// Adds an element whose response is an estimate. It takes part in predictions, and in variograms
  /// by the model's options.
  virtual bool AddUnmeasuredTraining(const T& element, double response) = 0;
  virtual bool AddUnmeasuredTrainingWithID(const T& element, double response, unsigned int id) = 0;

  using QVDataModelBase<T>::Train;
  using QVDataModelBase<T>::Predict;
  /// Fits `kernel` in place to the variogram of the training and trains with it. Needs at least
  /// three bins.
  virtual bool Train(QVKrigeKernelBase& kernel) = 0;
  /// Trains with `kernel` as it is; no variogram is built.
  /// \return false when the covariances are not positive definite.
  virtual bool TrainFixed(const QVKrigeKernelBase& kernel) = 0;

  /// The kriging variance of a prediction (QVCalculateVariance), in the squared unit of the
  /// response; GetErrorValue() when there is no prediction.
  virtual double GetVariance(const T& element) = 0;
  virtual double GetVariance(const T& element) const = 0;
  /// The prediction with its points, distances and weights; invalid when training fails or the
  /// variance is out of its bounds.
  virtual QVKrigeResult GetKrigeResult(const T& element) = 0;
  virtual QVKrigeResult GetKrigeResult(const T& element) const = 0;
  /// The kernel of the training; a linear one, after a warning, when training fails.
  virtual QVKrigeKernel GetKernel() = 0;
  virtual QVKrigeKernel GetKernel() const = 0;
  /// The binned variogram of the training, built when it is first needed.
  virtual QVVariogram GetVariogram() = 0;
  virtual QVVariogram GetVariogram() const = 0;
  /// The same with all pairs: memory for two numbers a pair.
  virtual QVFullVariogram GetFullVariogram() = 0;
  virtual QVFullVariogram GetFullVariogram() const = 0;
  /// \return a new copy, trained state included, that the caller owns. Training and factorised
  /// systems are shared until one of the two changes, so a copy costs next to nothing.
  virtual QVKrigeBase* CreateKrigeCopy() const = 0;

  /// Response and variance of many queries, in order: equal to the last bit to Predict and
  /// GetVariance one by one, and several times faster on large training sets.
  virtual std::vector<QVKrigeEstimate> GetEstimates(const std::vector<const T*>& queries) const = 0;
  /// The results of many queries, in order: equal to the last bit to GetKrigeResult one by one.
  virtual std::vector<QVKrigeResult> GetKrigeResults(
      const std::vector<const T*>& queries) const = 0;

  QVKrigeBase* CreateCopy() const override { return CreateKrigeCopy(); }
};

/// A kriging model as a value: owns a model of any kind and forwards to it.
template <class T>
class QVKrigeImpl : public QVKrigeBase<T> {
 public:
  /// Takes ownership of a model, as QVCreateKrige returns it.
  explicit QVKrigeImpl(QVKrigeBase<T>* model) : model_(model) {}

  bool AddTraining(const T& x, double y) override { return model_->AddTraining(x, y); }
  bool AddTrainingWithID(const T& x, double y, unsigned int id) override {
    return model_->AddTrainingWithID(x, y, id);
  }
  bool AddUnmeasuredTraining(const T& x, double y) override {
    return model_->AddUnmeasuredTraining(x, y);
  }
  bool AddUnmeasuredTrainingWithID(const T& x, double y, unsigned int id) override {
    return model_->AddUnmeasuredTrainingWithID(x, y, id);
  }
  bool Train() override { return model_->Train(); }
  bool Train(QVKrigeKernelBase& kernel) override { return model_->Train(kernel); }
  bool TrainFixed(const QVKrigeKernelBase& kernel) override { return model_->TrainFixed(kernel); }
  double Predict(const T& x) override { return model_->Predict(x); }
  double Predict(const T& x) const override { return Const().Predict(x); }
  double GetVariance(const T& x) override { return model_->GetVariance(x); }
  double GetVariance(const T& x) const override { return Const().GetVariance(x); }
  QVKrigeResult GetKrigeResult(const T& x) override { return model_->GetKrigeResult(x); }
  QVKrigeResult GetKrigeResult(const T& x) const override { return Const().GetKrigeResult(x); }
  std::vector<QVKrigeEstimate> GetEstimates(const std::vector<const T*>& queries) const override {
    return Const().GetEstimates(queries);
  }
  std::vector<QVKrigeResult> GetKrigeResults(const std::vector<const T*>& queries) const override {
    return Const().GetKrigeResults(queries);
  }
  QVKrigeKernel GetKernel() override { return model_->GetKernel(); }
  QVKrigeKernel GetKernel() const override { return Const().GetKernel(); }
  QVVariogram GetVariogram() override { return model_->GetVariogram(); }
  QVVariogram GetVariogram() const override { return Const().GetVariogram(); }
  QVFullVariogram GetFullVariogram() override { return model_->GetFullVariogram(); }
  QVFullVariogram GetFullVariogram() const override { return Const().GetFullVariogram(); }
  double GetErrorValue() const override { return Const().GetErrorValue(); }
  void Clear() override { model_->Clear(); }
  /// A copy of the model within, not of the handle.
  QVKrigeBase<T>* CreateKrigeCopy() const override { return Const().CreateKrigeCopy(); }

 private:
  const QVKrigeBase<T>& Const() const { return *model_; }

  QVSystem::QVCopyPtr<QVKrigeBase<T>> model_;
};

}  // namespace QVStats

#endif  // QVSTATS_API_KRIGE_BASE_H
