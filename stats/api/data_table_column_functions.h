/// \file
/// \brief Clean values of the columns of a table, and statistics and plot points of them.
///
/// The table forms read the rows of the table, in order; the column forms all rows of the column. A
/// cell is (row, subCol), subCol being 0 in plain columns. Missing and bad cells are left out and
/// counted. Failures, each with the routine's name:
/// - ColumnNotFound: the table has no column of that name (the look-up's own failure, passed on).
/// - ColumnHasWrongDataType: a column is not of the level asked for.
/// - ArgumentOutOfRange: a cell does not exist.
/// - NoData: nothing is left.
/// What a routine returns by reference is then empty, or, of statistics, the bad double, unless
/// said otherwise.
#ifndef QVSTATS_API_DATA_TABLE_COLUMN_FUNCTIONS_H
#define QVSTATS_API_DATA_TABLE_COLUMN_FUNCTIONS_H

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "platform/math/data_series.h"
#include "platform/math/random.h"
#include "stats/api/data_table.h"
#include "stats/api/data_vector_hypothesis.h"
#include "stats/api/export.h"
#include "stats/api/stat_model.h"

namespace QVStats {

/// \name Values
/// @{

/// The values of a ratio column. On failure the values and counts are those up to the cell that
/// failed.
QVSTATS_EXPORT QVStatModelResult QVGetVecOfDataFromColumnOfRatioType(
    std::vector<double>& values, std::size_t& numMissing, std::size_t& numBad,
    const QVDataTable& table, const std::string& colName, std::size_t subCol);
QVSTATS_EXPORT QVStatModelResult QVGetVecOfDataFromColumnOfRatioType(std::vector<double>& values,
                                                                     std::size_t& numMissing,
                                                                     std::size_t& numBad,
                                                                     const QVDataTableCol& col,
                                                                     std::size_t subCol);

/// The values of an interval column.
QVSTATS_EXPORT QVStatModelResult QVGetVecOfDataFromColumnOfIntervalType(
    std::vector<int>& values, std::size_t& numMissing, std::size_t& numBad,
    const QVDataTable& table, const std::string& colName, std::size_t subCol);
QVSTATS_EXPORT QVStatModelResult QVGetVecOfDataFromColumnOfIntervalType(std::vector<int>& values,
                                                                        std::size_t& numMissing,
                                                                        std::size_t& numBad,
                                                                        const QVDataTableCol& col,
                                                                        std::size_t subCol);

/// The categories of a nominal column, in the order of their codes, with the number of cells of
/// each; categories that no cell has count 0.
QVSTATS_EXPORT QVStatModelResult QVGetOutcomeFrequenciesOfNominalColumn(
    std::vector<std::pair<std::string, std::size_t>>& frequencies, std::size_t& numMissing,
    std::size_t& numBad, const QVDataTable& table, const std::string& colName, std::size_t subCol);

/// The pairs of values of two ratio columns, over the rows where both are there: a row with a
/// missing cell counts as missing, else one with a bad cell as bad. The first column decides how
/// many rows there are; a shorter second one fails at its first missing row with
/// ArgumentOutOfRange. On failure the pairs gathered so far stay.
QVSTATS_EXPORT QVStatModelResult QVGetVecOfPairedDataFromTwoColumnsOfRatioType(
    std::vector<std::pair<double, double>>& pairs, std::size_t& numMissing, std::size_t& numBad,
    const QVDataTableCol& colOne, const QVDataTableCol& colTwo, std::size_t elemOne,
    std::size_t elemTwo);
/// The same over the rows of a table.
QVSTATS_EXPORT QVStatModelResult QVGetVecOfPairedDataFromTwoColumnsOfRatioType(
    std::vector<std::pair<double, double>>& pairs, std::size_t& numMissing, std::size_t& numBad,
    const QVDataTable& table, const std::string& nameOne, const std::string& nameTwo,
    std::size_t elemOne, std::size_t elemTwo);
/// The same as two vectors of equal length.
QVSTATS_EXPORT QVStatModelResult QVGetPairedVecsOfDataFromTwoColumnsOfRatioType(
    std::vector<double>& valuesOne, std::vector<double>& valuesTwo, std::size_t& numMissing,
    std::size_t& numBad, const QVDataTable& table, const std::string& nameOne,
    const std::string& nameTwo, std::size_t elemOne, std::size_t elemTwo);

/// The values of a ratio column, one vector for each category of a nominal column (in the order of
/// the codes). Rows where either cell is missing or bad are counted.
QVSTATS_EXPORT QVStatModelResult QVGetDataSplitByNominalColumn(
    std::vector<std::string>& categories, std::vector<std::vector<double>>& values,
    std::size_t& numMissing, std::size_t& numBad, const QVDataTable& table,
    const std::string& colName, const std::string& nominalName, std::size_t subCol);
/// The same with the pairs of values of two ratio columns.
QVSTATS_EXPORT QVStatModelResult QVGetPairedDataSplitByNominalColumn(
    std::vector<std::string>& categories,
    std::vector<std::vector<std::pair<double, double>>>& pairs, std::size_t& numMissing,
    std::size_t& numBad, const QVDataTable& table, const std::string& nameOne,
    const std::string& nameTwo, const std::string& nominalName, std::size_t elemOne,
    std::size_t elemTwo);

/// A new plain ratio column, of the same names, without the missing and bad cells; a null column on
/// failure.
QVSTATS_EXPORT QVStatModelResult
QVPackColumnOfRatioType(QVDataTableCol& packed, std::size_t& numMissing, std::size_t& numBad,
                        const QVDataTable& table, const std::string& colName, std::size_t subCol);

/// One row of a ratio column: its values, or, of a lower-triangular column, the row of the full
/// symmetric matrix. Missing and bad cells are kept as they are.
QVSTATS_EXPORT QVStatModelResult QVGetRowOfColumnOfRatioType(std::vector<double>& values,
                                                             const QVDataTableCol& col,
                                                             std::size_t row);

/// All cells of a ratio column over the rows of the table, row after row, and the number of values
/// a row; of a lower-triangular column the full symmetric matrix, with as many values a row as the
/// table has rows. Fails with MissingOrBadPredictorValue at a missing or bad cell, and with the
/// failures of the column's look-up and level; the vector is then empty.
QVSTATS_EXPORT QVStatModelResult QVGetDataVectorFromColumnByName(std::vector<double>& values,
                                                                 std::size_t& numColumns,
                                                                 const QVDataTable& table,
                                                                 const std::string& colName);

/// The eigenvalues, ascending, of the symmetric matrix of a lower-triangular ratio column, over the
/// rows of the table. Fails with ColumnHasWrongDataType and the comment "Lower triangular matrix
/// required" for any other column, and with MissingOrBadPredictorValue at a missing or bad cell.
QVSTATS_EXPORT QVStatModelResult QVGetEigenvaluesOfSimilarityColumn(
    std::vector<double>& eigenvalues, const QVDataTable& table, const std::string& colName);
/// @}

/// \name Statistics
/// @{

/// A code of QVSampleStatisticType, and its parameter, 0 unless given.
QVSTATS_EXPORT double QVGetSampleStatisticForColumnOfRatioType(
    QVStatModelResult& result, std::size_t& numMissing, std::size_t& numBad, unsigned int code,
    const QVDataTable& table, const std::string& colName, std::size_t subCol);
QVSTATS_EXPORT double QVGetSampleStatisticForColumnOfRatioType(
    QVStatModelResult& result, std::size_t& numMissing, std::size_t& numBad, unsigned int code,
    double parameter, const QVDataTable& table, const std::string& colName, std::size_t subCol);
QVSTATS_EXPORT double QVGetSampleStatisticForColumnOfRatioType(
    QVStatModelResult& result, std::size_t& numMissing, std::size_t& numBad, unsigned int code,
    const QVDataTableCol& col, std::size_t subCol);

/// A code of QVTwoSampleStatisticType.
QVSTATS_EXPORT double QVGetTwoSampleStatisticForTwoColumnsOfRatioType(
    QVStatModelResult& result, std::size_t& numMissing, std::size_t& numBad, unsigned int code,
    const QVDataTable& table, const std::string& nameOne, const std::string& nameTwo,
    std::size_t elemOne, std::size_t elemTwo);
QVSTATS_EXPORT double QVGetTwoSampleStatisticForTwoColumnsOfRatioType(
    QVStatModelResult& result, std::size_t& numMissing, std::size_t& numBad, unsigned int code,
    const QVDataTableCol& colOne, const QVDataTableCol& colTwo, std::size_t elemOne,
    std::size_t elemTwo);

/// A code of QVTwoSamplePairStatisticType; the bad pair on failure.
QVSTATS_EXPORT std::pair<double, double> QVGetTwoSamplePairStatisticForTwoColumnsOfRatioType(
    QVStatModelResult& result, std::size_t& numMissing, std::size_t& numBad, unsigned int code,
    const QVDataTable& table, const std::string& nameOne, const std::string& nameTwo,
    std::size_t elemOne, std::size_t elemTwo);
QVSTATS_EXPORT std::pair<double, double> QVGetTwoSamplePairStatisticForTwoColumnsOfRatioType(
    QVStatModelResult& result, std::size_t& numMissing, std::size_t& numBad, unsigned int code,
    const QVDataTableCol& colOne, const QVDataTableCol& colTwo, std::size_t elemOne,
    std::size_t elemTwo);

/// A code of QVIndependenceStatisticType, over the rows of the table. A column with m values a row
/// is a sample of points of m dimensions, and rows with a missing or bad cell in either column are
/// left out; a lower-triangular column is a matrix of similarities, in which no cell may be missing
/// or bad (MissingOrBadPredictorValue).
QVSTATS_EXPORT double QVGetTwoSampleIndepStatForTwoColumnsOfRatioType(QVStatModelResult& result,
                                                                      unsigned int code,
                                                                      const QVDataTable& table,
                                                                      const std::string& nameOne,
                                                                      const std::string& nameTwo);
/// Its p-value, as QVGetPValueForTwoSampleIndepStatistic finds it.
QVSTATS_EXPORT double QVGetPValueForTwoSampleIndepStatForTwoColumnsOfRatioType(
    QVStatModelResult& result, QVMath::QVRanNumEngine& engine, std::size_t numSims,
    unsigned int code, const QVDataTable& table, const std::string& nameOne,
    const std::string& nameTwo);
/// @}

/// \name Tests of hypotheses
/// Those of stats/api/data_vector_hypothesis.h; their failures are passed on.
/// @{

/// A code of QVTwoSampleTestType for the values of two columns, each without its own missing and
/// bad cells, whose counts are added: a row need not be complete.
QVSTATS_EXPORT QVTestOutcome QVGetTwoSampleTestForTwoColumnsOfRatioType(
    QVStatModelResult& result, std::size_t& numMissing, std::size_t& numBad, unsigned int code,
    QVTestAlternative alternative, const QVDataTable& table, const std::string& nameOne,
    const std::string& nameTwo, std::size_t elemOne, std::size_t elemTwo);
/// The same for the values of one column in the rows of two categories of a nominal column. Counts
/// are those of QVGetDataSplitByNominalColumn. NameNotFound: not a category.
QVSTATS_EXPORT QVTestOutcome QVGetTwoSampleTestSplitByNominalColumn(
    QVStatModelResult& result, std::size_t& numMissing, std::size_t& numBad, unsigned int code,
    QVTestAlternative alternative, const QVDataTable& table, const std::string& colName,
    const std::string& nominalName, const std::string& categoryOne, const std::string& categoryTwo,
    std::size_t subCol);
/// A code of QVPairedTestType for the rows where both cells are there.
QVSTATS_EXPORT QVTestOutcome QVGetPairedTestForTwoColumnsOfRatioType(
    QVStatModelResult& result, std::size_t& numMissing, std::size_t& numBad, unsigned int code,
    QVTestAlternative alternative, const QVDataTable& table, const std::string& nameOne,
    const std::string& nameTwo, std::size_t elemOne, std::size_t elemTwo);
/// A column against a distribution.
QVSTATS_EXPORT QVTestOutcome QVGetKolmogorovSmirnovTestForColumnOfRatioType(
    QVStatModelResult& result, std::size_t& numMissing, std::size_t& numBad,
    QVTestAlternative alternative, const QVUniVarPDF& pdf, const QVDataTable& table,
    const std::string& colName, std::size_t subCol);
/// @}

/// \name Plot points
/// The routines of stats/api/data_plot_points.h on the clean values of a ratio column.
/// @{
QVSTATS_EXPORT QVStatModelResult QVGetEmpiricalCDFPlotPointsForColumnName(
    QVMath::QVDataSeries& series, double& xmin, double& xmax, const QVDataTable& table,
    const std::string& colName, std::size_t subCol, double lo, double hi);
QVSTATS_EXPORT QVStatModelResult QVGetAutoDefConstBinWidthHistPlotPointsForColName(
    QVMath::QVDataSeries& series, double& xmin, double& xmax, double& ymin, double& ymax,
    const QVDataTable& table, const std::string& colName, std::size_t subCol, double lo, double hi);
QVSTATS_EXPORT QVStatModelResult QVGetUserDefConstBinWidthHistPlotPointsForColName(
    QVMath::QVDataSeries& series, double& xmin, double& xmax, double& ymin, double& ymax,
    const QVDataTable& table, const std::string& colName, std::size_t subCol, std::size_t numBins,
    double lo, double hi);
/// Names itself "QVGetUserDefConstBinWidthHistPlotPointsForColName" in failures.
QVSTATS_EXPORT QVStatModelResult QVGetUserDefConstFreqHistPlotPointsForColName(
    QVMath::QVDataSeries& series, double& xmin, double& xmax, double& ymin, double& ymax,
    const QVDataTable& table, const std::string& colName, std::size_t subCol, std::size_t numBins,
    double lo, double hi);
/// Names itself "QVGetNormalProbabilityPlotForColumnName" in failures.
QVSTATS_EXPORT QVStatModelResult QVGetNormalProbabilityPlotPointsForColumnName(
    QVMath::QVDataSeries& series, double& xmin, double& xmax, double& ymin, double& ymax,
    const QVDataTable& table, const std::string& colName, std::size_t subCol, double xmin0,
    double xmax0, double ymin0, double ymax0);
QVSTATS_EXPORT QVStatModelResult QVGetAutoDefConstBinWidthHistPlotPtsConfidenceInt(
    QVMath::QVDataSeries& series, QVMath::QVDataSeries& lower, QVMath::QVDataSeries& upper,
    double& xmin, double& xmax, double& ymin, double& ymax, const QVDataTable& table,
    const std::string& colName, std::size_t subCol, double lo, double hi, double level);
QVSTATS_EXPORT QVStatModelResult QVGetUserDefConstBinWidthHistPlotPtsConfidenceInt(
    QVMath::QVDataSeries& series, QVMath::QVDataSeries& lower, QVMath::QVDataSeries& upper,
    double& xmin, double& xmax, double& ymin, double& ymax, const QVDataTable& table,
    const std::string& colName, std::size_t subCol, std::size_t numBins, double lo, double hi,
    double level);
/// The pairs of values of two columns as points, and the ranges of both, widened from the four
/// starting values.
QVSTATS_EXPORT QVStatModelResult QVGetScatterPlotPtsForColumnNamePair(
    QVMath::QVDataSeries& series, double& xmin, double& xmax, double& ymin, double& ymax,
    const QVDataTable& table, const std::string& nameOne, const std::string& nameTwo,
    std::size_t elemOne, std::size_t elemTwo, double xmin0, double xmax0, double ymin0,
    double ymax0);
/// @}

}  // namespace QVStats

#endif  // QVSTATS_API_DATA_TABLE_COLUMN_FUNCTIONS_H
