/// \file
/// \brief Are two samples measured on the same objects independent? Distance correlation, distance
/// covariance and permutation tests.
///
/// A sample is given as (data, dim, isSimilarity): points of dimension dim, one after the other,
/// or, when isSimilarity is set, a dim x dim matrix of similarities in [0, 1], row after row. n is
/// the number of objects, data.size() / dim.
///
/// With D the distances of a sample (Euclidean; sqrt(1 - s) of similarities), r_i the mean of row i
/// and g that of all, the centred matrix is A_ij = D_ij - r_i - r_j + g; B is that of the other
/// sample. Samples of dimension 1 are handled in O(n log n) an evaluation and O(n) memory, others
/// in O(n^2).
///
/// Source: G. J. Szekely, M. L. Rizzo, N. K. Bakirov, "Measuring and Testing Dependence by
/// Correlation of Distances", Ann. Stat. 35(6), 2007, doi:10.1214/009053607000000505.
#ifndef QVSTATS_API_DATA_VECTOR_INDEPENDENCE_H
#define QVSTATS_API_DATA_VECTOR_INDEPENDENCE_H

#include <Eigen/Core>
#include <cstddef>
#include <string>
#include <vector>

#include "platform/math/random.h"
#include "platform/system/copy_ptr.h"
#include "stats/api/export.h"
#include "stats/api/stat_model.h"

namespace QVStats {

namespace QVIndependenceStatisticType {
/// Always the bad double.
inline constexpr unsigned int Null = 0;
/// sqrt(V_AB / sqrt(V_A V_B)) with V_AB = sum A_ij B_ij / n^2, V_A and V_B alike: 0 to 1. It is 0
/// when one of the three is below 2^-52, and without objects.
inline constexpr unsigned int DistanceCorrelation = 1;
/// sum A_ij B_ij / n; 0 without objects.
inline constexpr unsigned int TestStatistic = 2;
}  // namespace QVIndependenceStatisticType

/// The distances of a sample, n x n. Failures, "GetDistanceMatrix":
/// - WrongInputMatrixSize: a similarity matrix is not square.
/// - UpperBoundViolated, LowerBoundViolated: a similarity is above 1, or not at least 0; the first
///   one, row after row.
QVSTATS_EXPORT QVStatModelResult GetDistanceMatrix(Eigen::MatrixXd& distances,
                                                   const std::vector<double>& data, std::size_t dim,
                                                   bool isSimilarity);
/// Centres a symmetric matrix in place.
QVSTATS_EXPORT void CenterDistanceMatrix(Eigen::MatrixXd& distances);

/// A statistic of independence as a function object. Failures of both operations, before those of
/// GetDistanceMatrix: MismatchBetweenInputVecSizes, when the samples differ in n or a size is no
/// multiple of its dimension. The value is then the bad double.
class QVSTATS_EXPORT QVTwoSampleIndependenceStatisticBase {
 public:
  virtual ~QVTwoSampleIndependenceStatisticBase();
  /// A new copy that the caller owns.
  virtual QVTwoSampleIndependenceStatisticBase* CreateCopy() const = 0;
  /// \return a code of QVIndependenceStatisticType.
  virtual unsigned int GetTwoSampleIndepStatisticsType() const = 0;
  virtual std::string GetTwoSampleIndepStatisticsName() const = 0;
  /// `sims` becomes numSims values of the statistic for random permutations of the second sample.
  /// Modifies the engine.
  virtual QVStatModelResult SimulateStatisticUnderIndependence(
      std::vector<double>& sims, QVMath::QVRanNumEngine& engine, std::size_t numSims,
      const std::vector<double>& data1, std::size_t dim1, bool isSimilarity1,
      const std::vector<double>& data2, std::size_t dim2, bool isSimilarity2) const = 0;
  /// The statistic; `result` is set to success or to the failure.
  virtual double operator()(QVStatModelResult& result, const std::vector<double>& data1,
                            std::size_t dim1, bool isSimilarity1, const std::vector<double>& data2,
                            std::size_t dim2, bool isSimilarity2) const = 0;
};

/// A statistic of the family, by its code.
template <unsigned int Code>
class QVSTATS_EXPORT QVCodedIndependenceStatistic : public QVTwoSampleIndependenceStatisticBase {
 public:
  QVCodedIndependenceStatistic* CreateCopy() const override;
  unsigned int GetTwoSampleIndepStatisticsType() const override { return Code; }
  std::string GetTwoSampleIndepStatisticsName() const override;
  QVStatModelResult SimulateStatisticUnderIndependence(
      std::vector<double>& sims, QVMath::QVRanNumEngine& engine, std::size_t numSims,
      const std::vector<double>& data1, std::size_t dim1, bool isSimilarity1,
      const std::vector<double>& data2, std::size_t dim2, bool isSimilarity2) const override;
  double operator()(QVStatModelResult& result, const std::vector<double>& data1, std::size_t dim1,
                    bool isSimilarity1, const std::vector<double>& data2, std::size_t dim2,
                    bool isSimilarity2) const override;
};

/// Always the bad double; a simulation fails with EmptyStatModel.
using QVNullIndependenceStatistic = QVCodedIndependenceStatistic<QVIndependenceStatisticType::Null>;

/// The distance correlation; a simulation fails with NotYetImplemented.
class QVSTATS_EXPORT QVDistanceCorrelationMeasure
    : public QVCodedIndependenceStatistic<QVIndependenceStatisticType::DistanceCorrelation> {
 public:
  QVDistanceCorrelationMeasure* CreateCopy() const override;
  /// The measure of two centred matrices.
  static double DistanceMatrixCorrelation(const Eigen::MatrixXd& a, const Eigen::MatrixXd& b);
};

/// The distance covariance test statistic. A simulation draws one permutation
/// (QVRandomShuffleOfIndices) for each value.
class QVSTATS_EXPORT QVDistanceCorrelationTestStat
    : public QVCodedIndependenceStatistic<QVIndependenceStatisticType::TestStatistic> {
 public:
  QVDistanceCorrelationTestStat* CreateCopy() const override;
  /// (1/n) sum A_ij B_p(i)p(j) of two centred matrices. A permutation that does not fit them is a
  /// fatal report and gives the bad double.
  static double DistanceMatrixCovariance(const Eigen::MatrixXd& a, const Eigen::MatrixXd& b,
                                         const std::vector<std::size_t>& permutation);
};

/// \param code of QVIndependenceStatisticType; any other gives the null statistic.
/// \return a new statistic that the caller owns.
QVSTATS_EXPORT QVTwoSampleIndependenceStatisticBase* QVGetTwoSampleIndependenceStatistic(
    unsigned int code);

/// A statistic of independence as a value.
class QVSTATS_EXPORT QVTwoSampleIndependenceStatistic {
 public:
  explicit QVTwoSampleIndependenceStatistic(unsigned int code);
  unsigned int GetTwoSampleIndepStatisticsType() const;
  std::string GetTwoSampleIndepStatisticsName() const;
  QVStatModelResult SimulateStatisticUnderIndependence(
      std::vector<double>& sims, QVMath::QVRanNumEngine& engine, std::size_t numSims,
      const std::vector<double>& data1, std::size_t dim1, bool isSimilarity1,
      const std::vector<double>& data2, std::size_t dim2, bool isSimilarity2) const;
  double operator()(QVStatModelResult& result, const std::vector<double>& data1, std::size_t dim1,
                    bool isSimilarity1, const std::vector<double>& data2, std::size_t dim2,
                    bool isSimilarity2) const;

 private:
  QVSystem::QVCopyPtr<QVTwoSampleIndependenceStatisticBase> statistic_;
};

/// Builds a statistic and applies it.
QVSTATS_EXPORT double QVGetTwoSampleIndepStatForVectors(QVStatModelResult& result,
                                                        unsigned int code,
                                                        const std::vector<double>& data1,
                                                        std::size_t dim1, bool isSimilarity1,
                                                        const std::vector<double>& data2,
                                                        std::size_t dim2, bool isSimilarity2);

/// The p-value of independence: the share of numSims simulated values above the statistic. Writes
/// the smallest, the largest and the 90th percentile of the simulated values to standard output.
/// \return the bad double on failure: those of the statistic and of its simulation, and
/// ArgumentOutOfRange for 0 simulations.
QVSTATS_EXPORT double QVGetPValueForTwoSampleIndepStatistic(
    QVStatModelResult& result, QVMath::QVRanNumEngine& engine, std::size_t numSims,
    unsigned int code, const std::vector<double>& data1, std::size_t dim1, bool isSimilarity1,
    const std::vector<double>& data2, std::size_t dim2, bool isSimilarity2);

/// The share of the sorted values that are <= x; the bad double without values.
QVSTATS_EXPORT double QVEmpiricalCDF(double x, const std::vector<double>& sorted);

}  // namespace QVStats

#endif  // QVSTATS_API_DATA_VECTOR_INDEPENDENCE_H
