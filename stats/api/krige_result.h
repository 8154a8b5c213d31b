/// \file
/// \brief What one kriging prediction rests on: the training points, their distances and weights.
///
/// The predicted response and its variance are computed from this record on demand. A point stands
/// for all training elements at distance 0 from each other; they are its copies.
/// Source: N. A. C. Cressie, "Statistics for Spatial Data", revised edition, 1993, chapter 3.
#ifndef QVSTATS_API_KRIGE_RESULT_H
#define QVSTATS_API_KRIGE_RESULT_H

#include <memory>

#include "stats/api/export.h"
#include "stats/api/krige_kernels.h"

namespace QVStats {

/// Read access to a result. Indices `i` count points from 0; indices `copy` count the copies of a
/// point from 0. An index past the end is reported as an error and yields the value named here.
class QVSTATS_EXPORT QVKrigeResultBase {
 public:
  /// Whether there is a prediction. An invalid result has no points.
  virtual bool Valid() const = 0;
  virtual unsigned int GetNumElements() const = 0;
  /// From the query to point `i`; the largest finite double for an invalid index.
  virtual double GetDistance(unsigned int i) const = 0;
  /// The factor with which the response of point `i` enters the prediction; the largest finite
  /// double for an invalid index.
  virtual double GetWeight(unsigned int i) const = 0;
  /// The response of point `i` relative to the baseline; the largest finite double for an invalid
  /// index.
  virtual double GetResponse(unsigned int i) const = 0;
  /// What the prediction is when every weight is 0: the mean in simple kriging, else 0.
  virtual double GetBaselineResponse() const = 0;
  /// Whether no copy of point `i` was measured; true for an invalid index.
  virtual bool GetResponseIsUnmeasured(unsigned int i) const = 0;
  /// The kernel behind the weights. Without one: an error, and a linear kernel.
  virtual QVKrigeKernel GetKernel() const = 0;
  /// Whether a copy of point `i` was added with an identifier; true for an invalid index.
  virtual bool GetHasID(unsigned int i) const = 0;
  /// The identifier of the first copy that has one; 4294967295 for an invalid index.
  virtual unsigned int GetID(unsigned int i) const = 0;
  /// Whether point `i` stands for more than one training element; false for an invalid index.
  virtual bool GetHasMultipleCopies(unsigned int i) const = 0;
  /// The number of training elements behind point `i`; 0 for an invalid index.
  virtual unsigned int GetNumCopies(unsigned int i) const = 0;
  /// The response of one copy as it was added, no baseline subtracted; the largest finite double
  /// for invalid indices.
  virtual double GetResponse(unsigned int i, unsigned int copy) const = 0;
  /// True for invalid indices.
  virtual bool GetResponseIsUnmeasured(unsigned int i, unsigned int copy) const = 0;
  /// False for invalid indices.
  virtual bool GetHasID(unsigned int i, unsigned int copy) const = 0;
  /// 4294967295 for invalid indices.
  virtual unsigned int GetID(unsigned int i, unsigned int copy) const = 0;
  /// \return a new copy that the caller owns.
  virtual QVKrigeResultBase* CreateCopy() const = 0;
  virtual ~QVKrigeResultBase();
};

/// A result as a value. See QVKrigeResultBase for what the getters return.
///
/// The result of a model on all training solves for its weights when one of them is first read;
/// response and variance do not need them. Until then it keeps the model's factorised system alive,
/// 8 n^2 bytes for n points, which results and model share. Reading is safe from many threads.
class QVSTATS_EXPORT QVKrigeResult {
 public:
  /// An invalid result.
  QVKrigeResult();
  /// Holds a copy of `result`.
  explicit QVKrigeResult(const QVKrigeResultBase& result);
  /// Takes ownership; null is an invalid result.
  explicit QVKrigeResult(std::unique_ptr<QVKrigeResultBase> result);
  // Copies only: a result that was moved from would have nothing to read.
  QVKrigeResult(const QVKrigeResult& other) = default;
  QVKrigeResult& operator=(const QVKrigeResult& other) = default;

  bool Valid() const { return result_->Valid(); }
  unsigned int GetNumElements() const { return result_->GetNumElements(); }
  double GetDistance(unsigned int i) const { return result_->GetDistance(i); }
  double GetWeight(unsigned int i) const { return result_->GetWeight(i); }
  double GetResponse(unsigned int i) const { return result_->GetResponse(i); }
  double GetBaselineResponse() const { return result_->GetBaselineResponse(); }
  bool GetResponseIsUnmeasured(unsigned int i) const { return result_->GetResponseIsUnmeasured(i); }
  QVKrigeKernel GetKernel() const { return result_->GetKernel(); }
  bool GetHasID(unsigned int i) const { return result_->GetHasID(i); }
  unsigned int GetID(unsigned int i) const { return result_->GetID(i); }
  bool GetHasMultipleCopies(unsigned int i) const { return result_->GetHasMultipleCopies(i); }
  /// The count of QVKrigeResultBase, as a double.
  double GetNumCopies(unsigned int i) const { return result_->GetNumCopies(i); }
  double GetResponse(unsigned int i, unsigned int copy) const {
    return result_->GetResponse(i, copy);
  }
  bool GetResponseIsUnmeasured(unsigned int i, unsigned int copy) const {
    return result_->GetResponseIsUnmeasured(i, copy);
  }
  bool GetHasID(unsigned int i, unsigned int copy) const { return result_->GetHasID(i, copy); }
  unsigned int GetID(unsigned int i, unsigned int copy) const { return result_->GetID(i, copy); }

  const QVKrigeResultBase& GetBase() const { return *result_; }

 private:
  std::shared_ptr<const QVKrigeResultBase> result_;
};

/// A prediction without what it rests on. Both are the model's error value when there is none.
struct QVKrigeEstimate {
  double response;  ///< QVCalculateResponse of the result
  double variance;  ///< QVCalculateVariance of the result
};

/// The predicted response, baseline + sum_i w_i y_i, in the unit of the responses.
/// \param errorValue returned for an invalid result; not NaN.
QVSTATS_EXPORT double QVCalculateResponse(const QVKrigeResultBase& result, double errorValue);
QVSTATS_EXPORT double QVCalculateResponse(const QVKrigeResult& result, double errorValue);

/// The kriging variance without its Lagrange terms, s - sum_i w_i (s - gamma(d_i)), with the
/// kernel's sill s and semivariances gamma, in the squared unit of the responses.
/// \param errorValue returned for an invalid result, and for a variance below 0.
QVSTATS_EXPORT double QVCalculateVariance(const QVKrigeResultBase& result, double errorValue);
QVSTATS_EXPORT double QVCalculateVariance(const QVKrigeResult& result, double errorValue);

}  // namespace QVStats

#endif  // QVSTATS_API_KRIGE_RESULT_H
