/// \file
/// \brief The variogram on similarity: how the difference of two responses grows as their objects
/// grow dissimilar, and the kernel parameter, nugget and sill that kriging on similarity takes.
///
///     QVBinnedVariogramFromSimilarity variogram(training, "activity", "similarity",
///                                               QVVariogramBinWeights(false, 0.1, 0.2), 20);
///     QVStatModelResult result = variogram.CalcEmpiricalVariogram(0.0, 0);
///     double objective, param;
///     if (result.IsSuccessful())
///       result = variogram.CalcOptimalTheoryVariogram(
///           objective, param, QVSimilarityKernelType::Exponential, 100, -1, -1, -1);
///     if (result.IsSuccessful()) model.SetModelParams(variogram.GetKrigingParameters());
///
/// Sources: N. A. C. Cressie, "Statistics for Spatial Data", revised edition, 1993, sections 2.4
/// and 2.6; J.-P. Chiles, P. Delfiner, "Geostatistics", 2nd edition, 2012, section 2.6.
#ifndef QVSTATS_API_LINEAR_SMOOTHER_VARIOGRAM_H
#define QVSTATS_API_LINEAR_SMOOTHER_VARIOGRAM_H

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "platform/opt/function.h"
#include "platform/system/iter.h"
#include "stats/api/data_table.h"
#include "stats/api/export.h"
#include "stats/api/linear_smoother_kernels.h"
#include "stats/api/stat_model.h"
#include "stats/api/stats_data_types.h"

namespace QVStats {

/// How the bins of a variogram count in a fit.
class QVSTATS_EXPORT QVVariogramBinWeights {
 public:
  /// \param equalWeights true: all usable bins weigh the same; false: a bin weighs as many pairs as
  /// it holds.
  /// \param fracAveBinCountThresholdForBinWeights in [0, 1]: a bin with fewer pairs than this share
  /// of the average count weighs nothing.
  /// \param similarityThresholdForBinWeights in [0, 1]: a bin that begins below this similarity
  /// weighs nothing; far pairs tell little about the kernel of near ones.
  ///
  /// Fails with ArgumentOutOfRange at the first of the two that is not in [0, 1].
  QVVariogramBinWeights(bool equalWeights, double fracAveBinCountThresholdForBinWeights,
                        double similarityThresholdForBinWeights);

  bool IsValid() const { return result_.IsSuccessful(); }
  QVStatModelResult GetResultOfConstruction() const { return result_; }

  /// The weights of B bins of equal width on [0, 1], with sum 1. With N pairs in all, bin i weighs
  /// in proportion to its count (or to 1), and 0 if i/B < similarity threshold or its count is
  /// below floor(fraction N / B). When no bin is left the weights are not numbers.
  ///
  /// Fails with ObjectNotValid, and with InternalLogicFailure without bins.
  QVStatModelResult GetBinWeights(std::vector<double>& weights,
                                  const std::vector<std::size_t>& numPairsInBin) const;

 private:
  bool equalWeights_;
  double countThreshold_;
  double similarityThreshold_;
  QVStatModelResult result_;
};

/// The variogram of n objects with responses y and similarities s_ij in [0, 1].
///
/// A pair i < j belongs to bin floor(B s_ij) of B bins of equal width, a pair of similarity 1 to
/// the last one; its semivariance is (y_j - y_i)^2 / 2. The empirical variogram is the mean
/// semivariance of each bin, the theoretical one
///     gamma(s) = nugget + (sill - nugget) (1 - K(s, p)),
/// K a similarity kernel, fitted to it.
///
/// Made, then CalcEmpiricalVariogram, then CalcOptimalTheoryVariogram as often as one likes; each
/// call replaces earlier results.
class QVSTATS_EXPORT QVBinnedVariogramFromSimilarity {
 public:
  using Point = std::pair<double, double>;

  /// Takes two columns of a table, over its rows: the response and the matrix of similarities, a
  /// lower-triangular column or one with n values a row.
  ///
  /// Failures, kept in the object:
  /// - those of QVGetDataVectorFromColumnByName, among them missing values.
  /// - MismatchBetweenInputVecSizes: the matrix is not as large as the responses ask for.
  /// - LowerBoundViolated: fewer than two bins.
  /// - that of the bin weights.
  QVBinnedVariogramFromSimilarity(const QVDataTable& table, const std::string& responseColName,
                                  const std::string& similarityColName,
                                  const QVVariogramBinWeights& binWeights, std::size_t numBins);
  /// The same of n responses and the n x n matrix of similarities, row after row. Of the matrix the
  /// part above the diagonal is used.
  QVBinnedVariogramFromSimilarity(const std::vector<double>& responses,
                                  const std::vector<double>& similarityMatrix,
                                  const QVVariogramBinWeights& binWeights, std::size_t numBins);

  bool IsValid() const { return result_.IsSuccessful(); }
  QVStatModelResult GetResultOfConstruction() const { return result_; }

  /// Averages the semivariances of each bin: their mean when `fractionToTrim` is at most 0.001,
  /// else the mean without that fraction of the pairs, half of it at either end. A bin without
  /// pairs gets the value 0. O(n^2). \param method 0. Any other computes nothing and succeeds.
  ///
  /// Failures, all in the name of CalcExactTrimmedMeanOfBinnedSqDiffs, which is no routine:
  /// - ObjectNotValid.
  /// - ArgumentOutOfRange: the fraction is not in [0, 1]; or a similarity lies so far outside of
  ///   [0, 1] that no bin is its own. The variogram is then empty. Similarities are not checked any
  ///   closer; one that is no count of bins at all (a missing value) is a fatal report before that.
  QVStatModelResult CalcEmpiricalVariogram(double fractionToTrim, std::size_t method);

  /// Fits the kernel parameter p: the weighted least-squares fit of nugget and sill
  /// (QVSimilarityVariogramLSFit) for each trial p, and a golden-section search from the initial p,
  /// first towards the minimum, and towards the maximum if it is no better there. The first step is
  /// 0.01 of the way. The minimum found is that of the slope that the search starts on.
  ///
  /// Nothing keeps the nugget from being negative.
  ///
  /// \param bestObjective out: the weighted root-mean-square residual.
  /// \param bestKernelParam out: p. Nugget and sill are those of the last p that was tried, which
  /// is within the search's tolerance (0.001, relative to the step) of this one. \param
  /// numTheoryPoints how many points of the fitted curve to keep, at the similarities (i + 0.5) /
  /// numTheoryPoints. \param initialParam, minParam, maxParam a negative value stands for the
  /// kernel's own.
  ///
  /// Failures, in the name of CalcTheoryVariogram; all that is fitted is then the bad double:
  /// - ObjectNotValid: invalid construction, or the null kernel.
  /// - NoData: there is no empirical variogram yet.
  /// - InternalLogicFailure: the objective falls in neither direction, as where it is constant.
  QVStatModelResult CalcOptimalTheoryVariogram(double& bestObjective, double& bestKernelParam,
                                               unsigned int kernelType, std::size_t numTheoryPoints,
                                               double initialParam, double minParam,
                                               double maxParam);

  /// \name Results
  /// Points are (similarity, semivariance), those of bins at the centre of the bin. The iterators
  /// read this object.
  /// @{
  QVSystem::QVIter<const std::size_t> GetNumPairsPerBin() const {
    return QVSystem::QVMakeIter<const std::size_t>(numPairs_);
  }
  QVSystem::QVIter<const Point> GetEmpiricalVariogram() const {
    return QVSystem::QVMakeIter<const Point>(empirical_);
  }
  QVSystem::QVIter<const Point> GetTheoryVariogram() const {
    return QVSystem::QVMakeIter<const Point>(theory_);
  }
  double GetNugget() const { return nugget_; }
  double GetSill() const { return sill_; }
  double GetKernelParameter() const { return kernelParam_; }
  /// [p, nugget, sill], as the krigings on similarity take them.
  std::vector<double> GetKrigingParameters() const { return {kernelParam_, nugget_, sill_}; }
  /// @}

 private:
  QVStatModelResult CheckBins() const;
  /// The bin of a similarity; numBins_ when it has none.
  std::size_t FindBin(double similarity) const;
  /// Calls take(bin, semivariance) for all pairs i < j, row after row.
  template <class Take>
  QVStatModelResult ForEachPair(const char* where, Take take) const;
  QVStatModelResult CalcExactMeanOfBinnedSqDiffsOfResponses();
  QVStatModelResult CalcTrimmedMeanOfBinnedSqDiffs(double fractionToTrim);
  void FillTheoryVariogram(std::size_t numPoints);
  double GetBinCenter(std::size_t bin) const;

  std::vector<double> responses_;
  std::vector<double> similarities_;
  QVVariogramBinWeights binWeights_;
  std::size_t numBins_;
  QVStatModelResult result_;
  std::vector<Point> empirical_;
  std::vector<Point> theory_;
  std::vector<std::size_t> numPairs_;
  QVSimilarityKernel kernel_{QVSimilarityKernelType::Null};
  double kernelParam_ = QVStatsBadData::BadDouble;
  double nugget_ = QVStatsBadData::BadDouble;
  double sill_ = QVStatsBadData::BadDouble;
};

/// The objective of the fit of a theoretical variogram, a function of the kernel parameter p.
///
/// For points (s_k, gamma_k) of weight w_k and u_k = 1 - K(s_k, p), gamma = a + b u is fitted by
/// weighted least squares: nugget a, sill a + b. The objective is the weighted root-mean-square
/// residual. Where all u_k are the same (the determinant W sum w u^2 - (sum w u)^2, W = sum w, is
/// below 10 eps), nugget and sill are the weighted mean of gamma.
class QVSTATS_EXPORT QVSimilarityVariogramLSFit : public QVOpt::QVFunc0 {
 public:
  /// Copies the points and the weights. Not valid for the null kernel, or when their numbers
  /// differ.
  QVSimilarityVariogramLSFit(unsigned int kernelType,
                             std::vector<std::pair<double, double>>& empiricalPoints,
                             const std::vector<double>& weights);

  bool IsValid() const { return valid_; }
  /// Of the latest evaluation; the bad double before it.
  double GetNugget() const { return nugget_; }
  double GetSill() const { return sill_; }

  /// 1.
  unsigned int NumVar() const override { return 1; }
  /// \return the objective at p = x[0]. The bad double, which nugget and sill become too, when the
  /// object is not valid, without points, and for a W below 10 eps.
  double operator()(const double* x) override;
  /// Empty: the function is not a sum of terms.
  QVSystem::QVIter<double> GetFComponents(const double*) override { return {}; }

 private:
  QVSimilarityKernel kernel_;
  std::vector<double> similarities_;
  std::vector<double> semivariances_;
  std::vector<double> weights_;
  bool valid_;
  double nugget_ = QVStatsBadData::BadDouble;
  double sill_ = QVStatsBadData::BadDouble;
};

}  // namespace QVStats

#endif  // QVSTATS_API_LINEAR_SMOOTHER_VARIOGRAM_H
