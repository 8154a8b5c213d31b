/// \file
/// \brief A model that learns a response from examples and predicts it for new elements.
#ifndef QVSTATS_API_DATA_MODEL_H
#define QVSTATS_API_DATA_MODEL_H

namespace QVStats {

/// The interface of trainable models over elements of type T. An untrained model trains itself at
/// its first prediction; the const prediction leaves the model as it is and trains a private copy.
template <class T>
class QVDataModelBase {
 public:
  /// Adds one example, which makes the model untrained.
  /// \return false when the model cannot use the element; the model is then as before.
  virtual bool AddTraining(const T& element, double response) = 0;
  /// \return whether the model can predict now.
  virtual bool Train() = 0;
  /// \return the predicted response, or GetErrorValue() when there is none.
  virtual double Predict(const T& element) = 0;
  virtual double Predict(const T& element) const = 0;
  /// What Predict returns when it cannot predict.
  virtual double GetErrorValue() const = 0;
  /// Drops all examples and what was learnt from them.
  virtual void Clear() = 0;
  /// \return a new copy, trained state included, that the caller owns.
  virtual QVDataModelBase* CreateCopy() const = 0;
  virtual ~QVDataModelBase() = default;
};

}  // namespace QVStats

#endif  // QVSTATS_API_DATA_MODEL_H
