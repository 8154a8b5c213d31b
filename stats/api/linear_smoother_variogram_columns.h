/// \file
/// \brief The variogram over several predictors: squared response differences on a grid of
/// similarities, one dimension for each predictor column, and its fit.
///
///     QVVariogramOnPredColumns variogram("activity", {"logP", "similarity"}, table, {5, 10}, true,
///                                        0.1, {0.0, 0.2}, QVSampleStatisticType::Mean, 0.0);
///     double objective;
///     const QVStatModelResult fit = variogram.CalcOptimalTheoryVariogram(
///         objective, {QVSimilarityKernelType::Gaussian, QVSimilarityKernelType::Exponential},
///         {0.1, 0.1}, {10, 10}, {40, 40});
#ifndef QVSTATS_API_LINEAR_SMOOTHER_VARIOGRAM_COLUMNS_H
#define QVSTATS_API_LINEAR_SMOOTHER_VARIOGRAM_COLUMNS_H

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "stats/api/data_table.h"
#include "stats/api/export.h"
#include "stats/api/stat_model.h"
#include "stats/api/stats_data_types.h"

namespace QVStats {

/// A cell of a variogram: where it lies, and the squared response differences of its pairs.
class QVSTATS_EXPORT QVVariogramBin {
 public:
  /// \param centerSimilarities a similarity for each dimension.
  /// \param numExpected how many differences to make room for.
  QVVariogramBin(std::vector<double> centerSimilarities, std::size_t numExpected)
      : center_(std::move(centerSimilarities)) {
    squaredDiffs_.reserve(numExpected);
  }

  const std::vector<double>& GetCenterSimilarities() const { return center_; }
  const std::vector<double>& GetSquaredDiffsOfResponses() const { return squaredDiffs_; }
  std::size_t GetNumPairs() const { return squaredDiffs_.size(); }
  void AddSquaredDiffOfResponses(double squaredDiff) { squaredDiffs_.push_back(squaredDiff); }
  void SortSquaredDiffsOfResponses();
  /// A statistic by a code of QVSampleStatisticType and its parameter; the bad double where it
  /// cannot be computed, as without pairs. Fails with ArgumentOutOfRange for the null statistic and
  /// unknown codes.
  double GetSampleStatisticForSqDiffsOfResponses(QVStatModelResult& result,
                                                 unsigned int statisticType,
                                                 double statisticParam) const;

 private:
  std::vector<double> center_;
  std::vector<double> squaredDiffs_;
};

/// The variogram of a response over D predictor columns.
///
/// The similarity of two rows in a scalar column is 1 - |x_i - x_j| / range, the range that of the
/// column (1 where the column is constant), in a lower-triangular column the value of the cell.
/// Dimension d has b_d bins of equal width on [0, 1]; a similarity s has the digit floor(s b_d), 1
/// the highest digit. The grid's cells are numbered ((d_0 b_1 + d_1) b_2 + d_2)..., and hold the
/// squared differences (y_j - y_i)^2 of the pairs i < j.
///
/// The theoretical variogram is gamma = nugget + (sill - nugget) (1 - K), with the product K =
/// prod_d K_d(s_d, p_d) of a similarity kernel for each dimension, taken at the centre of a cell.
/// It is fitted to half the statistic of the cells, so that nugget and sill are variances, as
/// kriging takes them.
class QVSTATS_EXPORT QVVariogramOnPredColumns {
 public:
  /// Fills the grid, the weights and the statistics from the rows of a table.
  ///
  /// \param binsPerDim one for each predictor column.
  /// \param weightByPairCount, fracAveBinCountThreshold, similarityThresholds how cells count in a
  /// fit: CalcWeightsForFittingVariogram; a threshold for each predictor column.
  /// \param statisticType, statisticParam of a cell: CalcSampleStatPerBin.
  ///
  /// Failures of the steps, with this constructor's name added; later steps are then skipped:
  /// - ColumnNotFound, DuplicateNames: a column is not there, or named twice.
  /// - ArgumentOutOfRange: a grid of more than 10^9 cells; a similarity outside of [0, 1]; an
  ///   unknown statistic.
  /// - ColumnHasWrongDataType: a predictor that is neither a ratio column nor a triangle, or one
  ///   with several values a row.
  /// - MismatchBetweenInputVecSizes: another number of columns than of dimensions.
  /// - MissingOrBadPredictorValue, MissingOrBadResponseValue.
  /// - InternalLogicFailure: a dimension without bins.
  /// - WrongInputVectorSize: another number of thresholds than of dimensions.
  QVVariogramOnPredColumns(const std::string& responseColName,
                           const std::vector<std::string>& predColNames, const QVDataTable& table,
                           const std::vector<std::size_t>& binsPerDim, bool weightByPairCount,
                           double fracAveBinCountThreshold,
                           const std::vector<double>& similarityThresholds,
                           unsigned int statisticType, double statisticParam);

  QVStatModelResult GetResultOfConstruction() const { return result_; }
  /// \name The cells, in order, as far as they were computed
  /// @{
  const std::vector<QVVariogramBin>& GetBins() const { return bins_; }
  const std::vector<double>& GetSampleStatisticPerBin() const { return statistics_; }
  const std::vector<double>& GetNumPairsPerBin() const { return numPairs_; }
  const std::vector<double>& GetKernelValuesPerBin() const { return kernelValues_; }
  const std::vector<double>& GetWeightsForFittingPerBin() const { return weights_; }
  /// @}
  /// \name The fit; the bad double until one succeeds
  /// @{
  double GetNugget() const { return nugget_; }
  double GetSill() const { return sill_; }
  /// Of the first dimension.
  double GetKernelParameter() const { return kernelParams_[0]; }
  /// One for each dimension.
  const std::vector<double>& GetKernelParameters() const { return kernelParams_; }
  /// [p_0, ..., p_(D-1), nugget, sill].
  std::vector<double> GetKrigingParameters() const;
  /// @}

  /// The cell of similarities in [0, 1], one for each dimension; BadIndex for another number of
  /// them. A product s b_d that is no count is a fatal report.
  std::size_t GetBinIndexFromSimilarities(const std::vector<double>& s) const;
  /// The centre of a cell, (digit + 0.5) / b_d; empty without cells.
  std::vector<double> GetSimilaritiesFromBinIndex(std::size_t index) const;
  /// The cell of two rows, by their numbers. Fails, with BadIndex, as the constructor does for
  /// them.
  std::size_t GetBinIndexForTwoRowNumbers(QVStatModelResult& result, std::size_t i,
                                          std::size_t j) const;

  /// \name Steps of the construction, which may be repeated
  /// @{
  QVStatModelResult SetupDataTableFromColumnNamesAndTable(
      const std::string& responseColName, const std::vector<std::string>& predColNames,
      const QVDataTable& table);
  QVStatModelResult FillVariogramBins(const std::string& responseColName);
  QVStatModelResult SetMaxDistPerDim();
  /// Weighs a cell by its number of pairs n_b, or by 1, and by 0 if n_b < T or its centre lies
  /// below a dimension's threshold; T is fracAveBinCountThreshold times the mean n_b, rounded half
  /// to even. The weights sum to 1; they are not numbers when no cell is left. Fails with
  /// WrongInputVectorSize.
  QVStatModelResult CalcWeightsForFittingVariogram(bool weightByPairCount,
                                                   double fracAveBinCountThreshold,
                                                   const std::vector<double>& similarityThresholds);
  /// Computes QVVariogramBin::GetSampleStatisticForSqDiffsOfResponses of every cell.
  QVStatModelResult CalcSampleStatPerBin(unsigned int statisticType, double statisticParam);
  /// @}

  /// \name Fitting
  /// @{

  /// Computes K at the centre of every cell, for a code of QVSimilarityKernelType and a parameter
  /// for each dimension. Fails with ObjectNotValid after a failed construction and for the null
  /// kernel, with WrongInputVectorSize for another number of kernels or parameters.
  QVStatModelResult CalcKernelValuePerBin(const std::vector<unsigned int>& kernelTypes,
                                          const std::vector<double>& kernelParams);
  /// Fits nugget and sill to the cells by weighted least squares for the kernel values at hand, as
  /// QVSimilarityVariogramLSFit. Cells without pairs or without a statistic are skipped.
  /// \return the weighted root-mean-square residual; the bad double, as are nugget and sill, when
  /// there is nothing to fit.
  double LeastSquaresFitGivenKernelVals(double& nugget, double& sill) const;
  /// Fits nugget and sill for every point of a grid of kernel parameters and keeps the best; among
  /// equals the first. O(number of points x number of cells).
  /// \param bestObjective out: the weighted root-mean-square residual.
  /// \param minParams, maxParams, numSteps the grid: GetParamValsFromGridIndex. A negative bound
  /// stands for the kernel's own.
  ///
  /// Failures, after which nothing is fitted:
  /// - those of CalcKernelValuePerBin, WrongInputVectorSize for the grid too.
  /// - LowerBoundViolated: a dimension of the grid without points.
  /// - ArgumentOutOfRange: more than 10^9 points.
  /// - NoData: no cell has pairs and weight.
  QVStatModelResult CalcOptimalTheoryVariogram(double& bestObjective,
                                               const std::vector<unsigned int>& kernelTypes,
                                               const std::vector<double>& minParams,
                                               const std::vector<double>& maxParams,
                                               const std::vector<std::size_t>& numSteps);
  /// A point of a grid with numSteps_d values in dimension d, evenly from the minimum to the
  /// maximum, both included (the minimum alone for one value); numbered as the cells are.
  static std::vector<double> GetParamValsFromGridIndex(std::size_t index,
                                                       const std::vector<double>& minParams,
                                                       const std::vector<double>& maxParams,
                                                       const std::vector<std::size_t>& numSteps);
  /// @}

 private:
  /// The predictor columns.
  std::vector<QVDataTableCol> GetPredictors() const;
  /// The similarity of two rows in dimension d.
  double GetSimilarity(QVStatModelResult& result, const QVDataTableCol& column, std::size_t d,
                       std::size_t i, std::size_t j) const;
  /// Pushes the squared differences of all pairs into their cells. \return whether all have one.
  bool AddPairs(const std::vector<std::size_t>& rows, const std::vector<double>& y);
  /// Why the first pair without a cell, in the order of the rows, has none.
  QVStatModelResult FindBadPair(const std::vector<std::size_t>& rows, const char* where) const;
  QVStatModelResult CheckFit(const char* where, const std::vector<unsigned int>& kernelTypes) const;

  QVStatModelResult result_;
  QVDataTable table_;
  std::vector<std::size_t> binsPerDim_;
  std::vector<double> maxDistPerDim_;
  std::vector<QVVariogramBin> bins_;
  std::vector<double> statistics_;
  std::vector<double> numPairs_;
  std::vector<double> kernelValues_;
  std::vector<double> weights_;
  double nugget_ = QVStatsBadData::BadDouble;
  double sill_ = QVStatsBadData::BadDouble;
  std::vector<double> kernelParams_ = {QVStatsBadData::BadDouble};
};

}  // namespace QVStats

#endif  // QVSTATS_API_LINEAR_SMOOTHER_VARIOGRAM_COLUMNS_H
