/// \file
/// \brief Dividing the rows of a table between two tables, and drawing rows with replacement.
///
/// The new tables are sub-tables: they share the columns of the source and have rows of their own.
/// Each output table keeps its name. Every random draw comes from the caller's engine, in the order
/// stated, so a seed gives the same split on every platform. A failure leaves the outputs alone.
#ifndef QVSTATS_API_DATA_TABLE_SPLIT_H
#define QVSTATS_API_DATA_TABLE_SPLIT_H

#include <cstddef>
#include <string>

#include "platform/math/random.h"
#include "stats/api/data_table.h"
#include "stats/api/export.h"
#include "stats/api/stat_model.h"

namespace QVStats {

/// Each row is selected with the given probability, independently: one uniform number on [0, 1) a
/// row, in row order; below the probability the row is selected. 0 selects none and 1 all.
///
/// Fails with ArgumentOutOfRange when the probability is not within [0, 1].
QVSTATS_EXPORT QVStatModelResult QVSplitDataTableByRandomRowSelection(
    QVDataTable& selected, QVDataTable& rest, QVMath::QVRanNumEngine& engine,
    double selectionProbability, const QVDataTable& source);

/// Selects `numToChoose` rows, every subset of that size with the same probability, by
/// QVMath::QVSampleWithoutReplacement over the positions 0 ... N - 1. Both tables keep the order of
/// the source.
///
/// Fails with ArgumentOutOfRange unless numToChoose is less than the number of rows.
QVSTATS_EXPORT QVStatModelResult QVSplitDataTableByUnifSamplingWithoutReplacement(
    QVDataTable& selected, QVDataTable& rest, QVMath::QVRanNumEngine& engine,
    std::size_t numToChoose, const QVDataTable& source);

/// Selects rows so that the values of a column are covered evenly: farthest-point (max-min)
/// selection. The first row is drawn uniformly (one draw of an index). Then, until there are
/// enough, the row whose smallest distance to the selected rows is largest is selected, the first
/// such row in table order. The distance of two rows is |x - y| for a column of numbers, the
/// Euclidean distance over all values of an array column, 1 - s(r, c) for a lower-triangular
/// similarity column, and 0 or 1 (equal or not) for a column of texts. A row with a missing or bad
/// value covers nothing and is chosen after all others, unless it is drawn first. Both tables keep
/// the order of the source. O(N * numToChoose) time, O(N) memory: the distance matrix is computed
/// as it is needed. Source: T. F. Gonzalez, "Clustering to minimize the maximum intercluster
/// distance", Theor. Comput. Sci. 38, 1985.
///
/// Failures: ArgumentOutOfRange unless numToChoose is less than the number of rows; ColumnNotFound;
/// InternalLogicFailure when the column does not have all rows of the table.
QVSTATS_EXPORT QVStatModelResult QVSplitDataTableByMaxUnifCoverageOfColVals(
    QVDataTable& selected, QVDataTable& rest, QVMath::QVRanNumEngine& engine,
    std::size_t numToChoose, const std::string& columnName, const QVDataTable& source);

/// The sub-table of `numRows` rows drawn with replacement (QVMath::QVSampleWithReplacement over the
/// positions 0 ... N - 1), in draw order and repeats included: a bootstrap sample. It is named
/// after the source with "_Resampled" appended, and has no rows when the source has none.
QVSTATS_EXPORT QVDataTable QVGetNewDataTableByUnifSamplingWithReplacement(
    QVMath::QVRanNumEngine& engine, std::size_t numRows, const QVDataTable& source);

}  // namespace QVStats

#endif  // QVSTATS_API_DATA_TABLE_SPLIT_H
