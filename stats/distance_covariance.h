/// \file
/// \brief Inner products of centred distance matrices of one-dimensional samples, without the
/// matrices.
#ifndef QVSTATS_DISTANCE_COVARIANCE_H
#define QVSTATS_DISTANCE_COVARIANCE_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace QVStats {

/// Two samples of the same n >= 1 objects. A and B are the matrices of the distances |x_i - x_j|
/// and |y_i - y_j|, doubly centred.
///
/// sum A_ij B_ij = sum |x_i - x_j| |y_i - y_j| - (2/n) sum a_i b_i + (sum a_i)(sum b_i) / n^2 with
/// the row sums a and b of the distances. The first term is found in n log n: over all pairs in the
/// order of x it is sum (x_j - x_i)(y_j - y_i) but for the sign of the pairs that y orders the
/// other way, and these are summed while the sequence is sorted by the bits of the ranks of y.
/// Source: the idea is that of X. Huo, G. J. Szekely, "Fast Computing for Distance Covariance",
/// Technometrics 58(4), 2016, doi:10.1080/00401706.2015.1054435.
class QVDistanceCovariance {
 public:
  QVDistanceCovariance(const std::vector<double>& x, const std::vector<double>& y);

  /// sum A_ij B_ij, evaluated pair by pair where the fast form would leave rounding only. NaN, as
  /// all sums, when a value is not finite.
  double GetCrossSum();
  /// sum A_ij B_p(i)p(j) for a permutation p of 0 ... n - 1.
  double GetCrossSum(const std::vector<std::size_t>& permutation);
  /// sum A_ij^2 and sum B_ij^2.
  double GetSumOfSquaresOfX() const { return x_.sumOfSquares; }
  double GetSumOfSquaresOfY() const { return y_.sumOfSquares; }

 private:
  /// A sample, shifted so that its median is 0.
  struct Sample {
    explicit Sample(const std::vector<double>& sample);
    std::vector<double> values;
    std::vector<std::uint32_t> order;
    std::vector<double> rowSums;
    double sumOfRowSums = 0.0;
    double sumOfSquares = 0.0;
  };
  struct Item {
    double x;
    double y;
    std::uint32_t rankOfY;
  };

  template <class IndexOf>
  double Sum(IndexOf indexOf, double& sumOfProducts);
  double SumOverInversions();
  double SumPairByPair() const;

  Sample x_;
  Sample y_;
  std::vector<std::uint32_t> rankOfY_;  // 0 ... n - 1, each once
  std::vector<Item> items_;
  std::vector<Item> sorted_;
  bool finite_;
};

/// sqrt(vAB / sqrt(vA vB)), or 0 when one of the three is below 2^-52.
double QVDistanceCorrelationOf(double vAB, double vA, double vB);

}  // namespace QVStats

#endif  // QVSTATS_DISTANCE_COVARIANCE_H
