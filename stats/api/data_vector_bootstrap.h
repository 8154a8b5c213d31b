/// \file
/// \brief Bootstrap: samples drawn with replacement, the spread of a statistic over them, and
/// confidence intervals from that spread.
///
/// Source: B. Efron, R. J. Tibshirani, "An Introduction to the Bootstrap", 1993. All draws come
/// from the caller's engine in sequence, so that an engine's state fixes the replicates; calls that
/// share an engine must not run at the same time.
#ifndef QVSTATS_API_DATA_VECTOR_BOOTSTRAP_H
#define QVSTATS_API_DATA_VECTOR_BOOTSTRAP_H

#include <cstddef>
#include <utility>
#include <vector>

#include "platform/math/random.h"
#include "stats/api/export.h"
#include "stats/api/stat_model.h"

namespace QVStats {

/// \name One bootstrap sample
/// `sample` becomes as many values as `data` has, each drawn uniformly from the data, in draw
/// order. The forms that return a result fail with NoData without data; the others return an empty
/// sample. More than 2^31 data are a fatal report.
/// @{
QVSTATS_EXPORT void QVGetOneBootstrapSampleFromDataVec(QVMath::QVRanNumEngine& engine,
                                                       std::vector<double>& sample,
                                                       const std::vector<double>& data);
QVSTATS_EXPORT void QVGetOneBootstrapSampleFromDataPairVec(
    QVMath::QVRanNumEngine& engine, std::vector<std::pair<double, double>>& sample,
    const std::vector<std::pair<double, double>>& data);
QVSTATS_EXPORT QVStatModelResult QVGetBootstrapSampleForDataVec(QVMath::QVRanNumEngine& engine,
                                                                std::vector<double>& sample,
                                                                const std::vector<double>& data);
/// Provisional: every call begins with the fatal report "Bad implementation--need to fix!" and
/// resamples when the report returns. QVGetOneBootstrapSampleFromDataPairVec does not report.
QVSTATS_EXPORT QVStatModelResult QVGetBootstrapSampleForDataPairVec(
    QVMath::QVRanNumEngine& engine, std::vector<std::pair<double, double>>& sample,
    const std::vector<std::pair<double, double>>& data);
/// @}

/// \name The bootstrap distribution of a statistic
/// `stats` becomes the statistic of numReplicates samples. Without data and with replicates to draw
/// they fail with NoData. An unknown code gives the null statistic: bad doubles.
/// @{

/// A code of QVSampleStatisticType and the parameter of that statistic, 0 unless given. Order
/// statistics and the trimmed mean are read off the counts of the ranks drawn: no replicate is
/// sorted, and the values are those of the samples drawn one by one.
QVSTATS_EXPORT QVStatModelResult QVBootstrapSampleStatisticForDataVec(
    std::vector<double>& stats, QVMath::QVRanNumEngine& engine, unsigned int statisticCode,
    const std::vector<double>& data, std::size_t numReplicates);
QVSTATS_EXPORT QVStatModelResult QVBootstrapSampleStatisticForDataVec(
    std::vector<double>& stats, QVMath::QVRanNumEngine& engine, unsigned int statisticCode,
    double parameter, const std::vector<double>& data, std::size_t numReplicates);
/// A code of QVTwoSampleStatisticType. NoData leaves `stats` as it was. Every replicate makes the
/// report of QVGetBootstrapSampleForDataPairVec.
QVSTATS_EXPORT QVStatModelResult QVBootstrapTwoSampleStatisticForDataPairVec(
    std::vector<double>& stats, QVMath::QVRanNumEngine& engine, unsigned int statisticCode,
    const std::vector<std::pair<double, double>>& data, std::size_t numReplicates);
/// The same for a code of QVTwoSamplePairStatisticType.
QVSTATS_EXPORT QVStatModelResult QVBootstrapTwoSamplePairStatisticForDataPairVec(
    std::vector<std::pair<double, double>>& stats, QVMath::QVRanNumEngine& engine,
    unsigned int statisticCode, const std::vector<std::pair<double, double>>& data,
    std::size_t numReplicates);
/// @}

/// How an interval is read off the replicates.
enum class QVBootstrapInterval {
  /// From the (1 - level)/2 to the (1 + level)/2 quantile (type 8).
  Percentile,
  /// Bias-corrected and accelerated: quantiles moved by the share of replicates below the statistic
  /// (ties count one half) and by the skewness of the statistic's jackknife values. Source: B.
  /// Efron, "Better Bootstrap Confidence Intervals", J. Am. Stat. Assoc. 82(397), 1987,
  /// doi:10.2307/2289144.
  BiasCorrectedAccelerated
};

/// A confidence interval of a one-sample statistic. Quantiles beyond what the replicates tell are
/// their ends. Failures, "QVGetBootstrapConfidenceInterval":
/// - NoData: no data; ArgumentOutOfRange: the level is not inside (0, 1) or there is no replicate.
/// - ArgumentValueWrong: the statistic of the data, of a replicate or of a jackknife sample cannot
///   be computed.
/// The limits are then the bad double.
QVSTATS_EXPORT QVStatModelResult QVGetBootstrapConfidenceInterval(
    double& lower, double& upper, QVMath::QVRanNumEngine& engine, QVBootstrapInterval interval,
    double level, unsigned int statisticCode, double parameter, const std::vector<double>& data,
    std::size_t numReplicates);

}  // namespace QVStats

#endif  // QVSTATS_API_DATA_VECTOR_BOOTSTRAP_H
