/// \file
/// \brief Sums over the points of a line, weighted by a kernel function of their distance from a
/// query.
///
/// The points, in ascending order, are cut into cells no wider than a bandwidth. Within a cell the
/// kernel is its Taylor series in the point's place t, sum_k f_k t^k, which is finite on either
/// side of the query where the kernel is piecewise polynomial, and 22 terms long for the normal
/// density. The sums of t^k over the first 16, 32, ... points of a cell are kept, so that a query
/// takes two differences a cell and a few points one by one: its cost hardly grows with n.
///
/// Sources: L. Greengard, J. Strain, "The fast Gauss transform", SIAM J. Sci. Stat. Comput. 12,
/// 1991, doi:10.1137/0912004; J. Fan, J. S. Marron, "Fast implementations of nonparametric curve
/// estimators", J. Comput. Graph. Stat. 3, 1994, doi:10.2307/1390794.
#ifndef QVSTATS_KERNEL_SUMS_H
#define QVSTATS_KERNEL_SUMS_H

#include <cstddef>
#include <utility>
#include <vector>

#include "stats/api/linear_smoother_kernels.h"

namespace QVStats {

/// sum_i K_i and sum_i K_i y_i.
struct QVKernelWeightedSum {
  double weight = 0.0;
  double response = 0.0;

  void Add(double k, double y) {
    weight += k;
    response += k * y;
  }
};

class QVKernelSums {
 public:
  /// \param x in ascending order, finite. \param y of the same length, finite.
  QVKernelSums(std::vector<double> x, std::vector<double> y)
      : x_(std::move(x)), y_(std::move(y)), kernel_(QVKernelFunctionType::Null) {}

  /// Prepares the sums for K((query - x) * inverseBandwidth), in O(n). The kernel is not the null
  /// one.
  void SetKernel(const QVKernelFunction& kernel, double inverseBandwidth);

  /// The sums over all points but those of the positions [skipFirst, skipLast). Normal densities
  /// below 1e-23 count as 0.
  QVKernelWeightedSum Get(double query, std::size_t skipFirst, std::size_t skipLast) const;

  const std::vector<double>& GetResponses() const { return y_; }

 private:
  /// Points [first, next cell's first); t = (x - reference) * inverse bandwidth - 1/2.
  struct Cell {
    std::size_t first;
    double reference;
    /// Where its sums stand in moments_; none for a cell of few points.
    std::size_t moments;
  };

  void StartCell(std::size_t first);
  void AddMoments(Cell& cell, std::size_t last);
  void AddEach(std::size_t first, std::size_t last, double query, QVKernelWeightedSum& sum) const;
  void AddPartOfCell(const Cell& cell, std::size_t first, std::size_t last, double query,
                     QVKernelWeightedSum& sum) const;
  void AddRange(std::size_t first, std::size_t last, double query, QVKernelWeightedSum& sum) const;

  std::vector<double> x_;
  std::vector<double> y_;
  QVKernelFunction kernel_;
  double inverseBandwidth_ = 0.0;
  /// Half the width of the window, in bandwidths.
  double support_ = 0.0;
  std::size_t numTerms_ = 0;
  std::vector<Cell> cells_;
  /// A row for the first 0, 16, 32, ... points of a cell: sum t^k and sum t^k y for every k.
  std::vector<double> moments_;
};

}  // namespace QVStats

#endif  // QVSTATS_KERNEL_SUMS_H
