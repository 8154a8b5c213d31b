/// \file
/// \brief Linear least squares on numeric property vectors, by singular value decomposition.
#ifndef QVSTATS_API_SVD_DATA_MODEL_H
#define QVSTATS_API_SVD_DATA_MODEL_H

#include <cstddef>
#include <vector>

#include "stats/api/data_model.h"
#include "stats/api/export.h"
#include "stats/api/property_list.h"

namespace QVStats {

/// The entries of a vector of fixed length as its properties.
class QVSTATS_EXPORT QVVecPropertyListFxn : public QVPropertyListFxn<std::vector<double>> {
 public:
  explicit QVVecPropertyListFxn(std::size_t size) : size_(size) {}
  /// Whether the vector has exactly GetSize() entries.
  bool HasProperties(const std::vector<double>& element) const override;
  std::size_t GetSize() const override { return size_; }
  /// Entry `k`; one past the end is a fatal report and yields 0.
  double GetProperty(const std::vector<double>& element, std::size_t k) const override;
  QVVecPropertyListFxn* CreateCopy() const override;

 private:
  std::size_t size_;
};

template <class T>
class QVSVD;

/// Ordinary least squares of a response on p properties and a constant: minimises
/// sum_i (y_i - b - sum_k beta_k x_ik)^2. Where the examples leave coefficients open, for example
/// with fewer examples than p + 1, those of the smallest Euclidean norm are taken. Coefficients are
/// refined with residuals in extended precision: right to rounding for the numbers as given, also
/// for polynomials of high degree.
/// Source: G. H. Golub, C. F. Van Loan, "Matrix Computations", 4th edition, 2013, section 5.5;
/// A. Bjorck, "Iterative refinement of linear least squares solutions I", BIT 7, 1967, 257-278.
template <>
class QVSTATS_EXPORT QVSVD<std::vector<double>> : public QVDataModelBase<std::vector<double>> {
 public:
  /// \param numProperties p.
  /// \param errorValue what Predict returns when the model cannot be trained.
  QVSVD(std::size_t numProperties, double errorValue);

  /// \return false, with nothing added, when `x` has not exactly p entries.
  bool AddTraining(const std::vector<double>& x, double y) override;
  /// \return false without examples or when they hold something that is not finite.
  bool Train() override;
  /// sum_k beta_k x_k + b. An `x` that has not exactly p entries is a fatal report and yields the
  /// error value.
  double Predict(const std::vector<double>& x) override;
  double Predict(const std::vector<double>& x) const override;
  double GetErrorValue() const override { return errorValue_; }
  void Clear() override;
  QVSVD* CreateCopy() const override;

  /// beta_0 ... beta_{p-1}, b; empty while untrained.
  const std::vector<double>& GetCoefficients() const { return coefficients_; }

 private:
  QVVecPropertyListFxn properties_;
  double errorValue_;
  bool trained_ = false;
  std::vector<std::vector<double>> inputs_;
  std::vector<double> responses_;
  std::vector<double> coefficients_;
};

}  // namespace QVStats

#endif  // QVSTATS_API_SVD_DATA_MODEL_H
