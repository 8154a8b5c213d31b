/// \file
/// \brief Predictions by similarity without a model: the kernel-weighted mean response of a
/// training set, and the kernel parameter that predicts a test set best.
///
/// Training and test set are two selections of rows of one table. Its columns are the response and
/// the similarities: value t of row r is the similarity of the objects of rows r and t, in [0, 1].
/// The columns are looked up in the test table and read at the rows of both.
///
///     double error, param;
///     OptimizePredResponseOverSimilarityKernelParams(
///         error, param, QVSimilarityKernelType::Exponential,
///         QVPredictiveFitMeasureType::RootMeanSquaredDeviation, 1.0, 100.0, 50, "activity",
///         "similarity", training, test);
///
/// Numbers that a routine returns by reference are the bad double until they are known. A failure
/// adds the routine's name to those of the routines that it called.
#ifndef QVSTATS_API_SIMILARITY_PREDICTION_H
#define QVSTATS_API_SIMILARITY_PREDICTION_H

#include <cstddef>
#include <string>
#include <vector>

#include "platform/system/iter.h"
#include "stats/api/data_table.h"
#include "stats/api/export.h"
#include "stats/api/linear_smoother_kernels.h"
#include "stats/api/stat_model.h"

namespace QVStats {

namespace QVPredictiveFitMeasureType {
inline constexpr unsigned int Unknown = 0;
inline constexpr unsigned int AverageAbsoluteDeviation = 1;
inline constexpr unsigned int RootMeanSquaredDeviation = 2;
}  // namespace QVPredictiveFitMeasureType

/// 1 for "AverageAbsoluteDeviation" and, as it stands, for "RootMeanSquaredDeviation"; 0 for any
/// other name. Code 2 is chosen by its number.
QVSTATS_EXPORT unsigned int QVGetPredictiveFitMeasureType(const std::string& name);
/// "AverageAbsoluteDeviation" for 1, "RootMeanSquaredDeviation" for 2, else "Unknown".
QVSTATS_EXPORT std::string QVGetPredictiveFitMeasureName(unsigned int type);

/// sum |y - f| / n for measure 1, sqrt(sum (y - f)^2 / n) for measure 2. Failures:
/// - MismatchBetweenInputVecSizes: no responses, or another number of predictions.
/// - ArgumentOutOfRange: another measure.
QVSTATS_EXPORT QVStatModelResult GetResponseFitError(double& fitError,
                                                     const std::vector<double>& responses,
                                                     const std::vector<double>& predictions,
                                                     unsigned int fitMeasure);

/// sum w_i y_i / sum w_i over the rows, w_i = K(s_i, p) + 2^-23, with s_i value
/// `similarityColNum` of the similarity column and y_i value 0 of the response column.
/// \param maxSimilarity the largest s_i, 0 when none is above 0.
/// Failures, named after "CalcWeightedSumOfResponseOnSelect"; the two sums are those before it:
/// - UpperBoundViolated, LowerBoundViolated: a similarity above 1; below 0 or not a number.
/// - InternalLogicFailure: the weights do not sum to more than 0; so without rows.
QVSTATS_EXPORT QVStatModelResult CalcWeightedAveOfResponseOnSelect(
    double& weightedAverage, double& maxSimilarity, double& sumOfWeights,
    const QVDataTableCol& similarityCol, const QVDataTableCol& responseCol,
    std::size_t similarityColNum, QVSystem::QVIter<const QVDataTableRow>& rows,
    const QVSimilarityKernel& kernel, double kernelParam);

/// Response and weighted mean of every test row. On failure, those of the rows before it (and the
/// response of the row itself).
QVSTATS_EXPORT QVStatModelResult GetResponseAndPredResponseFromSimilarity(
    std::vector<double>& responses, std::vector<double>& predictions,
    const std::string& responseColName, const std::string& similarityColName,
    const QVDataTable& trainingTable, const QVDataTable& testTable,
    const QVSimilarityKernel& kernel, double kernelParam);

/// Similarity of the nearest training row and sum of the weights, of every test row.
QVSTATS_EXPORT QVStatModelResult GetMinDistanceAndTotalWeightFromSimilarity(
    std::vector<double>& maxSimilarities, std::vector<double>& totalWeights,
    const std::string& responseColName, const std::string& similarityColName,
    const QVDataTable& trainingTable, const QVDataTable& testTable,
    const QVSimilarityKernel& kernel, double kernelParam);

/// The kernel parameter, of `numSteps` evenly spaced ones from `minParam` to `maxParam`, whose
/// predictions of the test rows have the smallest error; the smallest of equals. Fails with
/// EmptyStatModel for no steps, or no training or test rows; a failure of a parameter leaves the
/// best of those before it.
QVSTATS_EXPORT QVStatModelResult OptimizePredResponseOverSimilarityKernelParams(
    double& bestFitError, double& bestParam, unsigned int kernelType, unsigned int fitMeasure,
    double minParam, double maxParam, std::size_t numSteps, const std::string& responseColName,
    const std::string& similarityColName, const QVDataTable& trainingTable,
    const QVDataTable& testTable);

}  // namespace QVStats

#endif  // QVSTATS_API_SIMILARITY_PREDICTION_H
