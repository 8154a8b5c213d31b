#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iostream>
#include <iterator>

#include "platform/system/cast.h"
#include "platform/system/error_handler.h"
#include "stats/api/data_vector_functions.h"
#include "stats/api/data_vector_independence.h"
#include "stats/api/stats_data_types.h"
#include "stats/distance_covariance.h"
#include "stats/failure.h"

namespace QVStats {

namespace {

using Eigen::MatrixXd;
using QVStatsBadData::BadDouble;
using QVSystem::QVDoubleFromCount;
using Index = Eigen::Index;

/// A sample as the callers give it.
struct SampleView {
  const std::vector<double>& data;
  std::size_t dim;
  bool isSimilarity;

  bool IsWhole() const { return dim != 0 && data.size() % dim == 0; }
  std::size_t GetNumObjects() const { return data.size() / dim; }
  bool IsOneDimensional() const { return dim == 1 && !isSimilarity; }
};

bool SizesMatch(const SampleView& first, const SampleView& second) {
  return first.IsWhole() && second.IsWhole() && first.GetNumObjects() == second.GetNumObjects();
}

QVStatModelResult GetCenteredMatrices(MatrixXd& a, MatrixXd& b, const SampleView& first,
                                      const SampleView& second) {
  QVStatModelResult result = GetDistanceMatrix(a, first.data, first.dim, first.isSimilarity);
  if (result.IsSuccessful())
    result = GetDistanceMatrix(b, second.data, second.dim, second.isSimilarity);
  if (result.NotSuccessful()) return result;
  CenterDistanceMatrix(a);
  CenterDistanceMatrix(b);
  return result;
}

double SumOfProducts(const MatrixXd& a, const MatrixXd& b) { return (a.array() * b.array()).sum(); }

bool IsSymmetric(const MatrixXd& m) {
  for (Index j = 0; j < m.cols(); ++j)
    for (Index i = 0; i < j; ++i)
      if (!(m(i, j) == m(j, i))) return false;
  return true;
}

/// sum_i row[p(i)] a[i] over a prefix, in four sums.
double GatherDot(const double* a, const double* row, const std::uint32_t* p, std::size_t n) {
  double sums[4] = {0.0, 0.0, 0.0, 0.0};
  std::size_t i = 0;
  for (; i + 4 <= n; i += 4)
    for (std::size_t lane = 0; lane < 4; ++lane) sums[lane] += a[i + lane] * row[p[i + lane]];
  for (; i < n; ++i) sums[0] += a[i] * row[p[i]];
  return (sums[0] + sums[1]) + (sums[2] + sums[3]);
}

/// sum A_ij B_p(i)p(j) for a batch of permutations p. A column of B stays in the nearest cache
/// while all permutations read it; those of A are read in order, and only down to the diagonal when
/// both matrices are symmetric.
class PermutedSums {
 public:
  PermutedSums(const MatrixXd& a, const MatrixXd& b)
      : a_(a),
        b_(b),
        n_(static_cast<std::size_t>(a.rows())),
        symmetric_(IsSymmetric(a) && IsSymmetric(b)) {}

  void Add(const std::vector<std::size_t>& permutation) {
    const std::size_t begin = permutations_.size();
    permutations_.resize(begin + n_);
    inverses_.resize(begin + n_);
    for (std::size_t i = 0; i < n_; ++i) {
      const std::uint32_t to = QVSystem::QVUnsignedFromCountChecked(permutation[i]);
      permutations_[begin + i] = to;
      inverses_[begin + to] = static_cast<std::uint32_t>(i);
    }
  }

  /// The sums of the permutations added since the last call.
  std::vector<double> Take() {
    std::vector<double> sums(n_ == 0 ? 0 : permutations_.size() / n_, 0.0);
    for (std::size_t column = 0; column < n_; ++column) {
      const double* const b = b_.data() + column * n_;
      for (std::size_t k = 0; k < sums.size(); ++k) {
        const std::uint32_t* const p = permutations_.data() + k * n_;
        const std::size_t j = inverses_[k * n_ + column];
        const double* const a = a_.data() + j * n_;
        sums[k] +=
            symmetric_ ? 2.0 * GatherDot(a, b, p, j) + a[j] * b[column] : GatherDot(a, b, p, n_);
      }
    }
    permutations_.clear();
    inverses_.clear();
    return sums;
  }

 private:
  const MatrixXd& a_;
  const MatrixXd& b_;
  std::size_t n_;
  bool symmetric_;
  std::vector<std::uint32_t> permutations_;
  std::vector<std::uint32_t> inverses_;
};

/// The statistic of the samples themselves; the result is set to the failure if there is one.
double GetTestStatistic(QVStatModelResult& result, const SampleView& first,
                        const SampleView& second) {
  if (first.data.empty()) return 0.0;
  const double n = QVDoubleFromCount(first.GetNumObjects());
  if (first.IsOneDimensional() && second.IsOneDimensional())
    return QVDistanceCovariance(first.data, second.data).GetCrossSum() / n;
  MatrixXd a, b;
  result = GetCenteredMatrices(a, b, first, second);
  return result.IsSuccessful() ? SumOfProducts(a, b) / n : BadDouble;
}

double GetMeasure(QVStatModelResult& result, const SampleView& first, const SampleView& second) {
  if (first.data.empty()) return 0.0;
  if (first.IsOneDimensional() && second.IsOneDimensional()) {
    QVDistanceCovariance covariance(first.data, second.data);
    const double n = QVDoubleFromCount(first.GetNumObjects()), squared = n * n;
    return QVDistanceCorrelationOf(covariance.GetCrossSum() / squared,
                                   covariance.GetSumOfSquaresOfX() / squared,
                                   covariance.GetSumOfSquaresOfY() / squared);
  }
  MatrixXd a, b;
  result = GetCenteredMatrices(a, b, first, second);
  if (result.NotSuccessful()) return BadDouble;
  return QVDistanceCorrelationMeasure::DistanceMatrixCorrelation(a, b);
}

double GetNull(QVStatModelResult&, const SampleView&, const SampleView&) { return BadDouble; }

QVStatModelResult SimulateTestStatistic(const char* where, std::vector<double>& sims,
                                        QVMath::QVRanNumEngine& engine, std::size_t numSims,
                                        const SampleView& first, const SampleView& second) {
  sims.clear();
  if (!SizesMatch(first, second))
    return QVFailure(QVStatModelFailureType::MismatchBetweenInputVecSizes, where);
  const std::size_t n = first.GetNumObjects();
  if (n == 0) {
    sims.assign(numSims, 0.0);
    return true;
  }
  if (first.IsOneDimensional() && second.IsOneDimensional()) {
    QVDistanceCovariance covariance(first.data, second.data);
    for (std::size_t k = 0; k < numSims; ++k)
      sims.push_back(covariance.GetCrossSum(QVMath::QVRandomShuffleOfIndices(n, engine)));
  } else {
    MatrixXd a, b;
    const QVStatModelResult result = GetCenteredMatrices(a, b, first, second);
    if (result.NotSuccessful()) return result;
    PermutedSums permuted(a, b);
    constexpr std::size_t kBatch = 64;
    while (sims.size() < numSims) {
      for (std::size_t k = sims.size(), end = std::min(numSims, k + kBatch); k < end; ++k)
        permuted.Add(QVMath::QVRandomShuffleOfIndices(n, engine));
      const std::vector<double> sums = permuted.Take();
      sims.insert(sims.end(), sums.begin(), sums.end());
    }
  }
  for (double& sum : sims) sum /= QVDoubleFromCount(n);
  return true;
}

/// A simulation that there is not.
template <unsigned int Failure>
QVStatModelResult FailToSimulate(const char* where, std::vector<double>&, QVMath::QVRanNumEngine&,
                                 std::size_t, const SampleView&, const SampleView&) {
  return QVFailure(Failure, where);
}

struct StatisticRow {
  const char* name;
  const char* where;  // of the operator; null where any sizes will do
  double (*compute)(QVStatModelResult& result, const SampleView& first, const SampleView& second);
  const char* whereSimulated;
  QVStatModelResult (*simulate)(const char* where, std::vector<double>& sims,
                                QVMath::QVRanNumEngine& engine, std::size_t numSims,
                                const SampleView& first, const SampleView& second);
  QVTwoSampleIndependenceStatisticBase* (*create)();
};

template <class Statistic>
QVTwoSampleIndependenceStatisticBase* Create() {
  return new Statistic;
}

/// At each code its statistic.
constexpr StatisticRow kStatistics[] = {
    {"Null Statistic: Always returns a bad double", nullptr, GetNull,
     "QVNullIndependenceStatistic::SimulateStatisticUnderIndependence",
     FailToSimulate<QVStatModelFailureType::EmptyStatModel>, Create<QVNullIndependenceStatistic>},
    {"DistanceMatrixCorrelationMeasure", "QVDistanceCorrelationMeasure::operator", GetMeasure,
     "QVDistanceCorrelationMeasure::SimulateStatisticUnderIndependence",
     FailToSimulate<QVStatModelFailureType::NotYetImplemented>,
     Create<QVDistanceCorrelationMeasure>},
    {"DistanceMatrixCorrelationTestStatistic", "QVDistanceCorrelationTestStat::operator",
     GetTestStatistic, "QVDistanceCorrelationTestStat::SimulateStatisticUnderIndependence",
     SimulateTestStatistic, Create<QVDistanceCorrelationTestStat>},
};

}  // namespace

QVStatModelResult GetDistanceMatrix(MatrixXd& distances, const std::vector<double>& data,
                                    std::size_t dim, bool isSimilarity) {
  const char* const where = "GetDistanceMatrix";
  constexpr const char* kWhat = "A distance matrix";
  QVStatModelResult made(true);
  const std::size_t count = dim == 0 ? 0 : data.size() / dim;
  const auto n = static_cast<Index>(count);
  if (isSimilarity) {
    if (count != dim || data.size() != count * dim)
      return QVFailure(QVStatModelFailureType::WrongInputMatrixSize, where)
             << "smilarity matrix assumed square, but numRows, numCols = " << count << "; " << dim;
    made = QVMakeSquareArray(where, kWhat, count, sizeof(double), [&] { distances.resize(n, n); });
    if (made.NotSuccessful()) return made;
    for (std::size_t i = 0; i < count; ++i)
      for (std::size_t j = 0; j < count; ++j) {
        const double s = data[i * dim + j];
        if (!(s >= 0.0 && s <= 1.0))
          return QVFailure(s > 1.0 ? QVStatModelFailureType::UpperBoundViolated
                                   : QVStatModelFailureType::LowerBoundViolated,
                           where)
                 << "For input vector: Bad similarity: " << s << " at i,j = " << i << "; " << j;
        distances(static_cast<Index>(i), static_cast<Index>(j)) = std::sqrt(1.0 - s);
      }
    return true;
  }
  made = QVMakeSquareArray(where, kWhat, count, sizeof(double), [&] { distances.setZero(n, n); });
  if (made.NotSuccessful()) return made;
  for (Index j = 0; j < n; ++j)
    for (Index i = 0; i < j; ++i) {
      double squares = 0.0;
      for (std::size_t k = 0; k < dim; ++k) {
        const double d = data[static_cast<std::size_t>(i) * dim + k] -
                         data[static_cast<std::size_t>(j) * dim + k];
        squares += d * d;
      }
      distances(i, j) = distances(j, i) = std::sqrt(squares);
    }
  return true;
}

void CenterDistanceMatrix(MatrixXd& distances) {
  if (distances.size() == 0) return;
  const Eigen::VectorXd means = distances.rowwise().mean();
  const double mean = means.mean();
  // The sum of two row means is the same either way round, so that a symmetric matrix stays one.
  for (Index j = 0; j < distances.cols(); ++j)
    for (Index i = 0; i < distances.rows(); ++i) distances(i, j) -= (means[i] + means[j]) - mean;
}

QVTwoSampleIndependenceStatisticBase::~QVTwoSampleIndependenceStatisticBase() = default;

template <unsigned int Code>
QVCodedIndependenceStatistic<Code>* QVCodedIndependenceStatistic<Code>::CreateCopy() const {
  return new QVCodedIndependenceStatistic(*this);
}
template <unsigned int Code>
std::string QVCodedIndependenceStatistic<Code>::GetTwoSampleIndepStatisticsName() const {
  return kStatistics[Code].name;
}
template <unsigned int Code>
QVStatModelResult QVCodedIndependenceStatistic<Code>::SimulateStatisticUnderIndependence(
    std::vector<double>& sims, QVMath::QVRanNumEngine& engine, std::size_t numSims,
    const std::vector<double>& data1, std::size_t dim1, bool isSimilarity1,
    const std::vector<double>& data2, std::size_t dim2, bool isSimilarity2) const {
  const StatisticRow& row = kStatistics[Code];
  return row.simulate(row.whereSimulated, sims, engine, numSims, {data1, dim1, isSimilarity1},
                      {data2, dim2, isSimilarity2});
}
template <unsigned int Code>
double QVCodedIndependenceStatistic<Code>::operator()(QVStatModelResult& result,
                                                      const std::vector<double>& data1,
                                                      std::size_t dim1, bool isSimilarity1,
                                                      const std::vector<double>& data2,
                                                      std::size_t dim2, bool isSimilarity2) const {
  const StatisticRow& row = kStatistics[Code];
  const SampleView first = {data1, dim1, isSimilarity1}, second = {data2, dim2, isSimilarity2};
  if (row.where && !SizesMatch(first, second)) {
    result = QVFailure(QVStatModelFailureType::MismatchBetweenInputVecSizes, row.where);
    return BadDouble;
  }
  result = true;
  return row.compute(result, first, second);
}

template class QVCodedIndependenceStatistic<0>;
template class QVCodedIndependenceStatistic<1>;
template class QVCodedIndependenceStatistic<2>;

QVDistanceCorrelationMeasure* QVDistanceCorrelationMeasure::CreateCopy() const {
  return new QVDistanceCorrelationMeasure(*this);
}
double QVDistanceCorrelationMeasure::DistanceMatrixCorrelation(const MatrixXd& a,
                                                               const MatrixXd& b) {
  if (a.rows() < 1) return 0.0;
  const double n = static_cast<double>(a.rows()), squared = n * n;
  return QVDistanceCorrelationOf(SumOfProducts(a, b) / squared, a.squaredNorm() / squared,
                                 b.squaredNorm() / squared);
}

QVDistanceCorrelationTestStat* QVDistanceCorrelationTestStat::CreateCopy() const {
  return new QVDistanceCorrelationTestStat(*this);
}
double QVDistanceCorrelationTestStat::DistanceMatrixCovariance(
    const MatrixXd& a, const MatrixXd& b, const std::vector<std::size_t>& permutation) {
  const std::size_t n = permutation.size();
  std::vector<bool> seen(n, false);
  for (const std::size_t to : permutation)
    if (to < n) seen[to] = true;
  const bool fits = a.rows() == static_cast<Index>(n) && a.cols() == a.rows() &&
                    b.rows() == a.rows() && b.cols() == a.rows() &&
                    std::find(seen.begin(), seen.end(), false) == seen.end();
  if (!QV_ASSERT(fits)) return BadDouble;
  if (n == 0) return 0.0;
  PermutedSums permuted(a, b);
  permuted.Add(permutation);
  return permuted.Take().front() / QVDoubleFromCount(n);
}

QVTwoSampleIndependenceStatisticBase* QVGetTwoSampleIndependenceStatistic(unsigned int code) {
  return kStatistics[code < std::size(kStatistics) ? code : 0].create();
}

QVTwoSampleIndependenceStatistic::QVTwoSampleIndependenceStatistic(unsigned int code)
    : statistic_(QVGetTwoSampleIndependenceStatistic(code)) {}
unsigned int QVTwoSampleIndependenceStatistic::GetTwoSampleIndepStatisticsType() const {
  return statistic_->GetTwoSampleIndepStatisticsType();
}
std::string QVTwoSampleIndependenceStatistic::GetTwoSampleIndepStatisticsName() const {
  return statistic_->GetTwoSampleIndepStatisticsName();
}
QVStatModelResult QVTwoSampleIndependenceStatistic::SimulateStatisticUnderIndependence(
    std::vector<double>& sims, QVMath::QVRanNumEngine& engine, std::size_t numSims,
    const std::vector<double>& data1, std::size_t dim1, bool isSimilarity1,
    const std::vector<double>& data2, std::size_t dim2, bool isSimilarity2) const {
  return statistic_->SimulateStatisticUnderIndependence(sims, engine, numSims, data1, dim1,
                                                        isSimilarity1, data2, dim2, isSimilarity2);
}
double QVTwoSampleIndependenceStatistic::operator()(QVStatModelResult& result,
                                                    const std::vector<double>& data1,
                                                    std::size_t dim1, bool isSimilarity1,
                                                    const std::vector<double>& data2,
                                                    std::size_t dim2, bool isSimilarity2) const {
  return (*statistic_)(result, data1, dim1, isSimilarity1, data2, dim2, isSimilarity2);
}

double QVGetTwoSampleIndepStatForVectors(QVStatModelResult& result, unsigned int code,
                                         const std::vector<double>& data1, std::size_t dim1,
                                         bool isSimilarity1, const std::vector<double>& data2,
                                         std::size_t dim2, bool isSimilarity2) {
  return QVTwoSampleIndependenceStatistic(code)(result, data1, dim1, isSimilarity1, data2, dim2,
                                                isSimilarity2);
}

double QVGetPValueForTwoSampleIndepStatistic(QVStatModelResult& result,
                                             QVMath::QVRanNumEngine& engine, std::size_t numSims,
                                             unsigned int code, const std::vector<double>& data1,
                                             std::size_t dim1, bool isSimilarity1,
                                             const std::vector<double>& data2, std::size_t dim2,
                                             bool isSimilarity2) {
  const char* const where = "QVGetPValueForTwoSampleIndepStatistic";
  const QVTwoSampleIndependenceStatistic statistic(code);
  const double value = statistic(result, data1, dim1, isSimilarity1, data2, dim2, isSimilarity2);
  if (QVFailedIn(result, where)) return BadDouble;
  std::vector<double> sims;
  result = statistic.SimulateStatisticUnderIndependence(sims, engine, numSims, data1, dim1,
                                                        isSimilarity1, data2, dim2, isSimilarity2);
  if (QVFailedIn(result, where)) return BadDouble;
  if (sims.empty()) {
    result = QVFailure(QVStatModelFailureType::ArgumentOutOfRange, where)
             << "Number of simulations: " << numSims;
    return BadDouble;
  }
  std::sort(sims.begin(), sims.end());
  std::cout << "min, max = " << sims.front() << "; " << sims.back() << '\n'
            << "90th percentile = " << QVQuantile(0.9, sims, 8) << std::endl;
  return 1.0 - QVEmpiricalCDF(value, sims);
}

double QVEmpiricalCDF(double x, const std::vector<double>& sorted) {
  if (sorted.empty()) return BadDouble;
  const auto above = std::upper_bound(sorted.begin(), sorted.end(), x);
  return QVDoubleFromCount(static_cast<std::uint64_t>(above - sorted.begin())) /
         QVDoubleFromCount(sorted.size());
}

}  // namespace QVStats
