// Where the components of a mixture in d dimensions begin.

#include "stats/gaussian_mixture_model_seeds.h"

#include <Eigen/Dense>
#include <algorithm>
#include <cmath>
#include <numeric>

namespace QVStats {

namespace {

using Points = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;
using Parts = std::vector<Eigen::Index>;

/// Equal parts in the order of the points along the direction of their largest variance.
Parts CutAlongPrincipalAxis(const Points& points, Eigen::Index numParts) {
  const Points covariance = points.transpose() * points;
  const Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> solver(covariance);
  const Eigen::VectorXd positions = points * solver.eigenvectors().rightCols(1);
  Parts order(static_cast<std::size_t>(points.rows()));
  std::iota(order.begin(), order.end(), Eigen::Index{0});
  std::stable_sort(order.begin(), order.end(),
                   [&](Eigen::Index a, Eigen::Index b) { return positions[a] < positions[b]; });
  Parts parts(order.size());
  for (std::size_t i = 0; i < order.size(); ++i)
    parts[static_cast<std::size_t>(order[i])] =
        static_cast<Eigen::Index>(i) * numParts / points.rows();
  return parts;
}

/// The means of the parts; an empty part keeps what it had.
void UpdateMeans(const Points& points, const Parts& parts, Points& means) {
  Points sums = Points::Zero(means.rows(), means.cols());
  Eigen::VectorXd counts = Eigen::VectorXd::Zero(means.rows());
  for (Eigen::Index n = 0; n < points.rows(); ++n) {
    const Eigen::Index part = parts[static_cast<std::size_t>(n)];
    sums.row(part) += points.row(n);
    counts[part] += 1.0;
  }
  for (Eigen::Index k = 0; k < means.rows(); ++k)
    if (counts[k] > 0.0) means.row(k) = sums.row(k) / counts[k];
}

/// Gives every point to the nearest mean. \return whether a point changed its part.
bool Reassign(const Points& points, const Points& means, Parts& parts) {
  bool changed = false;
  for (Eigen::Index n = 0; n < points.rows(); ++n) {
    Eigen::Index nearest;
    (means.rowwise() - points.row(n)).rowwise().squaredNorm().minCoeff(&nearest);
    Eigen::Index& part = parts[static_cast<std::size_t>(n)];
    changed |= part != nearest;
    part = nearest;
  }
  return changed;
}

}  // namespace

bool QVFindMultiDimSeeds(const std::vector<double>& data, std::size_t d, std::uint64_t numParts,
                         QVMultiDimSeeds& seeds) {
  constexpr int kMaxRounds = 100;
  constexpr double kRidge = 1e-6;
  const Eigen::Index dimension = static_cast<Eigen::Index>(d);
  const Eigen::Map<const Points> raw(data.data(), static_cast<Eigen::Index>(data.size() / d),
                                     dimension);
  if (!raw.allFinite()) return false;
  const Eigen::RowVectorXd center = raw.colwise().mean();
  Points points = raw.rowwise() - center;
  const Eigen::RowVectorXd scale =
      (points.colwise().squaredNorm() / static_cast<double>(points.rows())).cwiseSqrt();
  if (!(scale.array() > 1e-14 * center.array().abs()).all()) return false;
  points.array().rowwise() /= scale.array();

  const Eigen::Index count = static_cast<Eigen::Index>(numParts);
  Parts parts = CutAlongPrincipalAxis(points, count);
  Points means = Points::Zero(count, dimension);
  UpdateMeans(points, parts, means);
  for (int round = 0; round < kMaxRounds && Reassign(points, means, parts); ++round)
    UpdateMeans(points, parts, means);

  for (Eigen::Index n = 0; n < points.rows(); ++n)
    points.row(n) -= means.row(parts[static_cast<std::size_t>(n)]);
  Points covariance = points.transpose() * points / static_cast<double>(points.rows());
  covariance.diagonal().array() += kRidge;
  covariance = scale.transpose().asDiagonal() * covariance * scale.asDiagonal();
  seeds.covariance.assign(covariance.data(), covariance.data() + covariance.size());
  means = (means.array().rowwise() * scale.array()).matrix().rowwise() + center;
  for (Eigen::Index k = 0; k < count; ++k)
    seeds.means.emplace_back(means.row(k).begin(), means.row(k).end());
  return true;
}

}  // namespace QVStats
