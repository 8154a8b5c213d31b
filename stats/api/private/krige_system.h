/// \file
/// \brief The linear systems of kriging, free of the element type.
///
/// With covariances K between n points, K_gh = s - gamma(d_gh), a border F of b columns (none when
/// the mean is known; a column of ones and the drift properties when it is not), responses y, and
/// for a query the covariances c and the border row u, the weights w solve
///
///     K w + F lambda = c,   F' w = u.
///
/// They come from one factorisation K = L L' and the small matrix S = G'G with G = L^-1 F:
///
///     z = L^-1 c,   S lambda = G'z - u,   w = L'^-1 (z - G lambda).
///
/// Response and variance alone need no weights: y'w = alpha'c + beta'u with the generalised least
/// squares coefficients S beta = G' L^-1 y and alpha = K^-1 (y - F beta), and c'w = z'z -
/// lambda'G'z. Sources: N. A. C. Cressie, "Statistics for Spatial Data", revised edition, 1993,
/// section 3.4; C. E. Rasmussen, C. K. I. Williams, "Gaussian Processes for Machine Learning",
/// 2006, section 2.7.
#ifndef QVSTATS_API_PRIVATE_KRIGE_SYSTEM_H
#define QVSTATS_API_PRIVATE_KRIGE_SYSTEM_H

#include <Eigen/Core>
#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

#include "platform/system/cow_ptr.h"
#include "stats/api/export.h"
#include "stats/api/krige_kernels.h"
#include "stats/api/krige_result.h"
#include "stats/api/private/krige_result_impl.h"

namespace QVStats {

/// Elements closer than this are one point.
inline constexpr double kKrigeIdenticalDistance = 1e-30;

/// Distances between points, each pair once: row g holds the distances from point g to 0 ... g-1.
class QVSTATS_EXPORT QVKrigeDistances {
 public:
  std::size_t GetNumPoints() const { return size_; }
  const double* GetRow(std::size_t g) const { return packed_.data() + g * (g - 1) / 2; }
  /// 0 for a point and itself.
  double Get(std::size_t g, std::size_t h) const {
    if (g == h) return 0.0;
    return g > h ? GetRow(g)[h] : GetRow(h)[g];
  }
  /// Appends a point, GetNumPoints() distances away from the others.
  /// \return false, after an error, when the memory is too small.
  bool AddPoint(const double* distances);
  /// \return whether two different points are one (kKrigeIdenticalDistance).
  bool HaveIdenticalPoints() const;
  void Reserve(std::size_t points);

 private:
  bool Grow();

  std::size_t size_ = 0;
  std::vector<double> packed_;
};

/// Training as the systems see it: one row a point.
struct QVKrigePoints {
  const QVKrigeDistances* distances = nullptr;
  Eigen::VectorXd responses;   ///< n
  Eigen::MatrixXd properties;  ///< n x p drift properties
  /// What results say of the points; the responses are those above.
  QVKrigeResultPoints records;
};

enum class QVKrigeMean {
  Known,   ///< the mean of the responses (simple kriging)
  Unknown  ///< a constant, plus a linear function of the properties (ordinary, universal)
};

/// A factorised system. Immutable: models, their copies and their results share it.
class QVSTATS_EXPORT QVKrigeSystem : public std::enable_shared_from_this<QVKrigeSystem> {
 public:
  virtual ~QVKrigeSystem();

  /// Fills and factorises the system of `points`, at least one.
  /// \return null when the covariances are not positive definite, or the bordered matrix cannot be
  /// factorised.
  static std::shared_ptr<const QVKrigeSystem> Create(QVKrigePoints points, QVKrigeMean mean,
                                                     const QVKrigeKernelBase& kernel);

  std::size_t GetNumPoints() const { return static_cast<std::size_t>(responses_.size()); }
  const QVKrigeKernelBase& GetKernel() const { return *kernel_; }

  /// Results of m queries, in order; an invalid one where the variance is out of bounds. A block
  /// of queries and the queries one by one give the same bits. The weights of all are solved
  /// for when one is first read; until then the results keep the system alive, and after that each
  /// keeps the weights of all.
  /// \param distances n x m, from each query to the points.
  /// \param properties p x m.
  std::vector<QVKrigeResult> GetResults(const Eigen::MatrixXd& distances,
                                        const Eigen::MatrixXd& properties) const;
  /// Response and variance of the same queries, many at a time; they keep their bits in a block
  /// too.
  std::vector<QVKrigeEstimate> GetEstimates(const Eigen::MatrixXd& distances,
                                            const Eigen::MatrixXd& properties,
                                            double errorValue) const;

 protected:
  QVKrigeSystem() = default;
  /// [1; f] for each query, b rows; none when the mean is known.
  Eigen::MatrixXd MakeBorderRows(const Eigen::MatrixXd& properties) const;
  double ComputeVariance(double explained) const;
  bool IsValidVariance(double variance) const;

  /// y'w in the first row and c'w in the second, a column a query, from border rows and
  /// covariances. The columns are left half way to the weights, as z - G lambda. The numbers need
  /// not be finite.
  virtual Eigen::Matrix2Xd SolveMoments(const Eigen::MatrixXd& borderRows,
                                        Eigen::MatrixXd& c) const = 0;
  /// Goes the other half: each column becomes the weights of its query.
  virtual void FinishWeights(Eigen::MatrixXd& c) const = 0;

  const Eigen::VectorXd& GetResponses() const { return responses_; }

 private:
  class WeightsOnDemand;

  /// The prediction from the moments of a query; none when its variance is out of bounds.
  /// \param identical the point that the query coincides with, or -1.
  std::optional<QVKrigeEstimate> Judge(const double* distances, Eigen::Index identical,
                                       const Eigen::Vector2d& moments) const;

  QVKrigeMean mean_ = QVKrigeMean::Unknown;
  Eigen::Index numProperties_ = 0;
  double baseline_ = 0.0;
  double sill_ = 0.0;
  double nugget_ = 0.0;
  std::shared_ptr<const QVKrigeKernelBase> kernel_;
  Eigen::VectorXd responses_;
  QVSystem::QVCowPtr<QVKrigeResultPoints> points_;
};

/// The covariances of the points in the lower triangle of the leading block of `matrix`.
/// \return whether all are numbers. A NaN is a fatal report.
QVSTATS_EXPORT bool QVFillLowerCovariances(Eigen::MatrixXd& matrix,
                                           const QVKrigeDistances& distances,
                                           const QVKrigeKernelBase& kernel);

}  // namespace QVStats

#endif  // QVSTATS_API_PRIVATE_KRIGE_SYSTEM_H
