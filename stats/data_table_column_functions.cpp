#include "stats/api/data_table_column_functions.h"

#include <Eigen/Eigenvalues>
#include <algorithm>
#include <type_traits>

#include "stats/api/data_plot_points.h"
#include "stats/api/data_vector_functions.h"
#include "stats/api/data_vector_independence.h"
#include "stats/api/data_vector_pairs.h"
#include "stats/failure.h"

namespace QVStats {

namespace {

using Values = std::vector<double>;
using Pair = std::pair<double, double>;
using Pairs = std::vector<Pair>;
using QVStatsBadData::BadDouble;
namespace Failure = QVStatModelFailureType;

std::string Describe(const QVDataTableCol& col) {
  return col.GetColumnName() + ": " + QVStatVariableType::TypeName[col.GetStatVariableType()];
}

/// Whether a column is of a level of measurement.
QVStatModelResult CheckLevel(const char* where, const QVDataTableCol& col, unsigned int level) {
  if (col.GetStatVariableType() == level) return true;
  return QVFailure(Failure::ColumnHasWrongDataType, where) << "Column: " << Describe(col);
}

/// Walks over the cells of a column in order, counts the missing and bad ones and hands the rows of
/// the others to `take`, which is called with positions in `rows`.
template <class Take>
QVStatModelResult WalkCells(const char* where, std::size_t& numMissing, std::size_t& numBad,
                            const QVDataTableCol& col, std::size_t subCol, unsigned int level,
                            const QVRowNumbers& rows, Take take) {
  numMissing = numBad = 0;
  const QVStatModelResult result = CheckLevel(where, col, level);
  if (result.NotSuccessful()) return result;
  const std::vector<QVCellState> states = col.GetCellStates(rows, subCol);
  bool any = false;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    switch (states[i]) {
      case QVCellState::BadIndex:
        return QVFailure(Failure::ArgumentOutOfRange, where)
               << "row column index combination (" << rows[i] << ", " << subCol
               << ") out of range for Column!";
      case QVCellState::Missing:
        ++numMissing;
        break;
      case QVCellState::Bad:
        ++numBad;
        break;
      case QVCellState::Good:
        any = true;
        take(i);
    }
  }
  if (!any) return QVFailure(Failure::NoData, where);
  return true;
}

/// Finds a column of a table and calls `use` with it and the table's rows.
template <class Use>
QVStatModelResult WithColumn(const char* where, const QVDataTable& table, const std::string& name,
                             Use use) {
  QVStatModelResult result(true);
  const QVDataTableCol& col = table.GetColumnFromName(result, name);
  if (QVFailedIn(result, where)) return result;
  const std::vector<std::size_t> rows = table.GetRowNumbers();
  return use(col, QVRowNumbers(rows));
}

/// The same with two columns.
template <class Use>
QVStatModelResult WithColumns(const char* where, const QVDataTable& table,
                              const std::string& nameOne, const std::string& nameTwo, Use use) {
  QVStatModelResult result(true);
  const QVDataTableCol& one = table.GetColumnFromName(result, nameOne);
  if (QVFailedIn(result, where)) return result;
  const QVDataTableCol& two = table.GetColumnFromName(result, nameTwo);
  if (QVFailedIn(result, where)) return result;
  const std::vector<std::size_t> rows = table.GetRowNumbers();
  return use(one, two, QVRowNumbers(rows));
}

QVStatModelResult GatherValues(Values& values, std::size_t& numMissing, std::size_t& numBad,
                               const QVDataTableCol& col, std::size_t subCol,
                               const QVRowNumbers& rows) {
  values.reserve(rows.size());
  const Values cells = col.GetDoubles(rows, subCol);
  return WalkCells("QVGetVecOfDataFromColumnOfRatioType", numMissing, numBad, col, subCol,
                   QVStatVariableType::Ratio, rows,
                   [&](std::size_t i) { values.push_back(cells[i]); });
}

QVStatModelResult GatherInts(std::vector<int>& values, std::size_t& numMissing, std::size_t& numBad,
                             const QVDataTableCol& col, std::size_t subCol,
                             const QVRowNumbers& rows) {
  std::vector<int> cells(rows.size());
  col.GetImpl()->GetInts(rows, subCol, cells.data());
  return WalkCells("QVGetVecOfDataFromColumnOfIntervalType", numMissing, numBad, col, subCol,
                   QVStatVariableType::Interval, rows,
                   [&](std::size_t i) { values.push_back(cells[i]); });
}

/// Walks over the rows of two ratio columns; `take` gets the positions where both cells are good.
template <class Take>
QVStatModelResult WalkPairs(const char* where, std::size_t& numMissing, std::size_t& numBad,
                            const QVDataTableCol& one, const QVDataTableCol& two,
                            std::size_t elemOne, std::size_t elemTwo, const QVRowNumbers& rows,
                            Take take) {
  numMissing = numBad = 0;
  if (one.GetStatVariableType() != QVStatVariableType::Ratio ||
      two.GetStatVariableType() != QVStatVariableType::Ratio)
    return QVFailure(Failure::ColumnHasWrongDataType, where)
           << "Col One: " << Describe(one) << "\nCol Two: " << Describe(two);
  const auto statesOne = one.GetCellStates(rows, elemOne);
  const auto statesTwo = two.GetCellStates(rows, elemTwo);
  bool any = false;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const auto isEither = [&](QVCellState state) {
      return statesOne[i] == state || statesTwo[i] == state;
    };
    if (isEither(QVCellState::BadIndex))
      return QVFailure(Failure::ArgumentOutOfRange, where)
             << "row column index combination (" << rows[i] << "," << elemOne
             << ") out of range for ColumnOne!\nor row column index combination (" << rows[i] << ","
             << elemTwo << ") out of range for ColumnTwo!";
    if (isEither(QVCellState::Missing)) {
      ++numMissing;
    } else if (isEither(QVCellState::Bad)) {
      ++numBad;
    } else {
      any = true;
      take(i);
    }
  }
  if (!any) return QVFailure(Failure::NoData, where);
  return true;
}

QVStatModelResult GatherPairs(Pairs& pairs, std::size_t& numMissing, std::size_t& numBad,
                              const QVDataTableCol& one, const QVDataTableCol& two,
                              std::size_t elemOne, std::size_t elemTwo, const QVRowNumbers& rows) {
  pairs.clear();
  pairs.reserve(rows.size());
  const Values x = one.GetDoubles(rows, elemOne), y = two.GetDoubles(rows, elemTwo);
  return WalkPairs("QVGetVecOfPairedDataFromTwoColumnsOfRatioType", numMissing, numBad, one, two,
                   elemOne, elemTwo, rows, [&](std::size_t i) { pairs.emplace_back(x[i], y[i]); });
}

/// Splits what `gather` finds over the rows of known category: it is called with the counts of
/// what it leaves out, these rows, and a function from their positions to the group to fill.
template <class Group, class Gather>
QVStatModelResult SplitByCategory(const char* where, std::vector<std::string>& categories,
                                  std::vector<Group>& groups, std::size_t& numMissing,
                                  std::size_t& numBad, const QVDataTable& table,
                                  const std::string& nominalName, Gather gather) {
  categories.clear();
  groups.clear();
  numMissing = numBad = 0;
  return WithColumn(
      where, table, nominalName, [&](const QVDataTableCol& nominal, const QVRowNumbers& rows) {
        std::vector<std::size_t> known;
        std::vector<unsigned int> codes(rows.size()), knownCodes;
        nominal.GetImpl()->GetUnsigneds(rows, 0, codes.data());
        QVStatModelResult result = WalkCells(where, numMissing, numBad, nominal, 0,
                                             QVStatVariableType::Nominal, rows, [&](std::size_t i) {
                                               known.push_back(rows[i]);
                                               knownCodes.push_back(codes[i]);
                                             });
        if (result.NotSuccessful()) return result;
        std::vector<Group> split(nominal.GetNumUniqueDiscreteValues());
        std::size_t missing = 0, bad = 0;
        result = gather(missing, bad, QVRowNumbers(known),
                        [&](std::size_t i) -> Group& { return split[knownCodes[i]]; });
        numMissing += missing;
        numBad += bad;
        if (result.NotSuccessful()) return result;
        categories = nominal.GetUniqueDiscreteValues();
        groups = std::move(split);
        return result;
      });
}

/// A column as a sample for the tests of independence.
struct Sample {
  Values data;
  std::size_t dim = 1;
  bool isSimilarity = false;
};

/// Reads cells of a ratio column. Fails at the first that is missing, bad or not there.
QVStatModelResult ReadCells(const char* where, double* values, const QVDataTableCol& col,
                            const QVRowNumbers& rows, std::size_t j) {
  col.GetImpl()->GetDoubles(rows, j, values);
  // The sentinels are the largest values: states are looked up only where one may stand.
  for (std::size_t i = 0; i < rows.size(); ++i)
    if (values[i] >= QVStatsBadData::BadIndexDouble &&
        col.GetCellStates(rows.Slice(i, 1), j)[0] != QVCellState::Good)
      return QVFailure(Failure::MissingOrBadPredictorValue, where)
             << "Column: " << col.GetColumnName() << ": cell (" << rows[i] << ", " << j << ")";
  return true;
}

/// The lower triangle over some rows as a full matrix, row after row.
QVStatModelResult GetMatrix(const char* where, Values& matrix, const QVDataTableCol& col,
                            const std::vector<std::size_t>& rows) {
  const std::size_t n = rows.size();
  const QVStatModelResult made =
      QVMakeSquareArray(where, "The matrix", n, sizeof(double), [&] { matrix.resize(n * n); });
  if (made.NotSuccessful()) return made;
  for (std::size_t j = 0; j < n; ++j) {
    // A row of the triangle stands together in the column; the rest is its mirror image.
    const QVStatModelResult result =
        ReadCells(where, matrix.data() + j * n, col, QVRowNumbers(rows.data(), j + 1), rows[j]);
    if (result.NotSuccessful()) return result;
  }
  constexpr std::size_t kBlock = 32;  // columns that are written in turn and stay in the cache
  for (std::size_t first = 0; first < n; first += kBlock)
    for (std::size_t i = first; i < n; ++i)
      for (std::size_t j = first; j < std::min(i, first + kBlock); ++j)
        matrix[j * n + i] = matrix[i * n + j];
  return true;
}

/// Drops the rows where a cell of a column of points is missing or bad.
QVStatModelResult DropIncompleteRows(const char* where, std::vector<std::size_t>& rows,
                                     const QVDataTableCol& col) {
  for (std::size_t j = 0; j < col.GetNumColumnsInCol(); ++j) {
    const auto states = col.GetCellStates(QVRowNumbers(rows), j);
    std::size_t kept = 0;
    for (std::size_t i = 0; i < rows.size(); ++i) {
      if (states[i] == QVCellState::BadIndex)
        return QVFailure(Failure::ArgumentOutOfRange, where)
               << "row column index combination (" << rows[i] << ", " << j
               << ") out of range for Column!";
      if (states[i] == QVCellState::Good) rows[kept++] = rows[i];
    }
    rows.resize(kept);
  }
  return true;
}

QVStatModelResult GetSample(const char* where, Sample& sample, const QVDataTableCol& col,
                            const std::vector<std::size_t>& rows) {
  sample.isSimilarity = col.ColIsLowerTriangular();
  if (sample.isSimilarity) {
    sample.dim = rows.size();
    return GetMatrix(where, sample.data, col, rows);
  }
  sample.dim = col.GetNumColumnsInCol();
  sample.data.resize(rows.size() * sample.dim);
  for (std::size_t j = 0; j < sample.dim; ++j) {
    const Values cells = col.GetDoubles(QVRowNumbers(rows), j);
    for (std::size_t i = 0; i < rows.size(); ++i) sample.data[i * sample.dim + j] = cells[i];
  }
  return true;
}

QVStatModelResult GetSamples(const char* where, Sample& first, Sample& second,
                             const QVDataTable& table, const std::string& nameOne,
                             const std::string& nameTwo) {
  QVStatModelResult result(true);
  std::vector<std::size_t> rows = table.GetRowNumbers();
  const QVDataTableCol* cols[2] = {};
  for (const int k : {0, 1}) {
    cols[k] = &table.GetColumnFromName(result, k == 0 ? nameOne : nameTwo);
    if (QVFailedIn(result, where)) return result;
    result = CheckLevel(where, *cols[k], QVStatVariableType::Ratio);
    if (result.IsSuccessful() && !cols[k]->ColIsLowerTriangular())
      result = DropIncompleteRows(where, rows, *cols[k]);
    if (result.NotSuccessful()) return result;
  }
  if (rows.empty()) return QVFailure(Failure::NoData, where);
  result = GetSample(where, first, *cols[0], rows);
  return result.IsSuccessful() ? GetSample(where, second, *cols[1], rows) : result;
}

/// Extracts a column's clean values and hands them to a plot routine, which may have a result.
template <class Plot>
QVStatModelResult PlotColumn(const char* where, const QVDataTable& table,
                             const std::string& colName, std::size_t subCol, Plot plot) {
  Values values;
  std::size_t numMissing, numBad;
  QVStatModelResult result =
      QVGetVecOfDataFromColumnOfRatioType(values, numMissing, numBad, table, colName, subCol);
  if (QVFailedIn(result, where)) return result;
  if constexpr (std::is_void_v<decltype(plot(values))>)
    plot(values);
  else
    result = plot(values);
  return result;
}

}  // namespace

QVStatModelResult QVGetVecOfDataFromColumnOfRatioType(Values& values, std::size_t& numMissing,
                                                      std::size_t& numBad, const QVDataTable& table,
                                                      const std::string& colName,
                                                      std::size_t subCol) {
  values.clear();
  numMissing = numBad = 0;
  return WithColumn("QVGetVecOfDataFromColumnOfRatioType", table, colName,
                    [&](const QVDataTableCol& col, const QVRowNumbers& rows) {
                      return GatherValues(values, numMissing, numBad, col, subCol, rows);
                    });
}

QVStatModelResult QVGetVecOfDataFromColumnOfRatioType(Values& values, std::size_t& numMissing,
                                                      std::size_t& numBad,
                                                      const QVDataTableCol& col,
                                                      std::size_t subCol) {
  values.clear();
  return GatherValues(values, numMissing, numBad, col, subCol, col.GetAllRows());
}

QVStatModelResult QVGetVecOfDataFromColumnOfIntervalType(
    std::vector<int>& values, std::size_t& numMissing, std::size_t& numBad,
    const QVDataTable& table, const std::string& colName, std::size_t subCol) {
  values.clear();
  numMissing = numBad = 0;
  return WithColumn("QVGetVecOfDataFromColumnOfIntervalType", table, colName,
                    [&](const QVDataTableCol& col, const QVRowNumbers& rows) {
                      return GatherInts(values, numMissing, numBad, col, subCol, rows);
                    });
}

QVStatModelResult QVGetVecOfDataFromColumnOfIntervalType(std::vector<int>& values,
                                                         std::size_t& numMissing,
                                                         std::size_t& numBad,
                                                         const QVDataTableCol& col,
                                                         std::size_t subCol) {
  values.clear();
  return GatherInts(values, numMissing, numBad, col, subCol, col.GetAllRows());
}

QVStatModelResult QVGetOutcomeFrequenciesOfNominalColumn(
    std::vector<std::pair<std::string, std::size_t>>& frequencies, std::size_t& numMissing,
    std::size_t& numBad, const QVDataTable& table, const std::string& colName, std::size_t subCol) {
  const char* const where = "QVGetOutcomeFrequenciesOfNominalColumn";
  frequencies.clear();
  numMissing = numBad = 0;
  return WithColumn(
      where, table, colName, [&](const QVDataTableCol& col, const QVRowNumbers& rows) {
        std::vector<unsigned int> codes(rows.size());
        col.GetImpl()->GetUnsigneds(rows, subCol, codes.data());
        for (const std::string& category : col.GetUniqueDiscreteValues())
          frequencies.emplace_back(category, 0);
        QVStatModelResult result =
            WalkCells(where, numMissing, numBad, col, subCol, QVStatVariableType::Nominal, rows,
                      [&](std::size_t i) { ++frequencies[codes[i]].second; });
        if (result.NotSuccessful()) frequencies.clear();
        return result;
      });
}

QVStatModelResult QVGetVecOfPairedDataFromTwoColumnsOfRatioType(
    Pairs& pairs, std::size_t& numMissing, std::size_t& numBad, const QVDataTableCol& colOne,
    const QVDataTableCol& colTwo, std::size_t elemOne, std::size_t elemTwo) {
  return GatherPairs(pairs, numMissing, numBad, colOne, colTwo, elemOne, elemTwo,
                     colOne.GetAllRows());
}

QVStatModelResult QVGetVecOfPairedDataFromTwoColumnsOfRatioType(
    Pairs& pairs, std::size_t& numMissing, std::size_t& numBad, const QVDataTable& table,
    const std::string& nameOne, const std::string& nameTwo, std::size_t elemOne,
    std::size_t elemTwo) {
  pairs.clear();
  numMissing = numBad = 0;
  return WithColumns(
      "QVGetVecOfPairedDataFromTwoColumnsOfRatioType", table, nameOne, nameTwo,
      [&](const QVDataTableCol& one, const QVDataTableCol& two, const QVRowNumbers& rows) {
        return GatherPairs(pairs, numMissing, numBad, one, two, elemOne, elemTwo, rows);
      });
}

QVStatModelResult QVGetPairedVecsOfDataFromTwoColumnsOfRatioType(
    Values& valuesOne, Values& valuesTwo, std::size_t& numMissing, std::size_t& numBad,
    const QVDataTable& table, const std::string& nameOne, const std::string& nameTwo,
    std::size_t elemOne, std::size_t elemTwo) {
  valuesOne.clear();
  valuesTwo.clear();
  Pairs pairs;
  QVStatModelResult result = QVGetVecOfPairedDataFromTwoColumnsOfRatioType(
      pairs, numMissing, numBad, table, nameOne, nameTwo, elemOne, elemTwo);
  if (QVFailedIn(result, "QVGetPairedVecsOfDataFromTwoColumnsOfRatioType")) return result;
  for (const Pair& pair : pairs) {
    valuesOne.push_back(pair.first);
    valuesTwo.push_back(pair.second);
  }
  return result;
}

QVStatModelResult QVGetDataSplitByNominalColumn(
    std::vector<std::string>& categories, std::vector<Values>& values, std::size_t& numMissing,
    std::size_t& numBad, const QVDataTable& table, const std::string& colName,
    const std::string& nominalName, std::size_t subCol) {
  const char* const where = "QVGetDataSplitByNominalColumn";
  return SplitByCategory(
      where, categories, values, numMissing, numBad, table, nominalName,
      [&](std::size_t& missing, std::size_t& bad, const QVRowNumbers& rows, auto groupOf) {
        QVStatModelResult result(true);
        const QVDataTableCol& col = table.GetColumnFromName(result, colName);
        if (QVFailedIn(result, where)) return result;
        const Values x = col.GetDoubles(rows, subCol);
        return WalkCells(where, missing, bad, col, subCol, QVStatVariableType::Ratio, rows,
                         [&](std::size_t i) { groupOf(i).push_back(x[i]); });
      });
}

QVStatModelResult QVGetPairedDataSplitByNominalColumn(
    std::vector<std::string>& categories, std::vector<Pairs>& pairs, std::size_t& numMissing,
    std::size_t& numBad, const QVDataTable& table, const std::string& nameOne,
    const std::string& nameTwo, const std::string& nominalName, std::size_t elemOne,
    std::size_t elemTwo) {
  const char* const where = "QVGetPairedDataSplitByNominalColumn";
  return SplitByCategory(
      where, categories, pairs, numMissing, numBad, table, nominalName,
      [&](std::size_t& missing, std::size_t& bad, const QVRowNumbers& rows, auto groupOf) {
        QVStatModelResult result(true);
        const QVDataTableCol& one = table.GetColumnFromName(result, nameOne);
        if (QVFailedIn(result, where)) return result;
        const QVDataTableCol& two = table.GetColumnFromName(result, nameTwo);
        if (QVFailedIn(result, where)) return result;
        const Values x = one.GetDoubles(rows, elemOne), y = two.GetDoubles(rows, elemTwo);
        return WalkPairs(where, missing, bad, one, two, elemOne, elemTwo, rows,
                         [&](std::size_t i) { groupOf(i).emplace_back(x[i], y[i]); });
      });
}

QVStatModelResult QVPackColumnOfRatioType(QVDataTableCol& packed, std::size_t& numMissing,
                                          std::size_t& numBad, const QVDataTable& table,
                                          const std::string& colName, std::size_t subCol) {
  packed = QVDataTableCol();
  Values values;
  QVStatModelResult result =
      QVGetVecOfDataFromColumnOfRatioType(values, numMissing, numBad, table, colName, subCol);
  if (QVFailedIn(result, "QVPackColumnOfRatioType")) return result;
  const QVDataTableCol& source = table.GetColumnFromName(colName);
  packed = QVDataTableCol(source.GetColumnName(), source.GetFullColumnName(),
                          QVStatVariableType::Ratio, values.size(), 1, false);
  for (const double value : values) packed.GetImpl()->PushBackDouble(value);
  return result;
}

QVStatModelResult QVGetRowOfColumnOfRatioType(Values& values, const QVDataTableCol& col,
                                              std::size_t row) {
  const char* const where = "QVGetRowOfColumnOfRatioType";
  values.clear();
  const QVStatModelResult result = CheckLevel(where, col, QVStatVariableType::Ratio);
  if (result.NotSuccessful()) return result;
  const std::size_t size =
      col.ColIsLowerTriangular() ? col.GetTotalNumRowsInCol() : col.GetNumColumnsInCol();
  if (row >= col.GetTotalNumRowsInCol())
    return QVFailure(Failure::ArgumentOutOfRange, where)
           << "row column index combination (" << row << ", 0) out of range for Column!";
  for (std::size_t j = 0; j < size; ++j) values.push_back(col.GetDouble(row, j));
  return result;
}

QVStatModelResult QVGetDataVectorFromColumnByName(Values& values, std::size_t& numColumns,
                                                  const QVDataTable& table,
                                                  const std::string& colName) {
  const char* const where = "QVGetDataVectorFromColumnByName";
  values.clear();
  numColumns = 0;
  QVStatModelResult result(true);
  const QVDataTableCol& col = table.GetColumnFromName(result, colName);
  if (QVFailedIn(result, where)) return result;
  result = CheckLevel(where, col, QVStatVariableType::Ratio);
  if (result.NotSuccessful()) return result;
  const std::vector<std::size_t> rows = table.GetRowNumbers();
  Values cells;
  const std::size_t size = col.ColIsLowerTriangular() ? rows.size() : col.GetNumColumnsInCol();
  if (col.ColIsLowerTriangular()) {
    result = GetMatrix(where, cells, col, rows);
  } else {
    cells.resize(rows.size() * size);
    Values column(rows.size());
    for (std::size_t j = 0; j < size && result.IsSuccessful(); ++j) {
      result = ReadCells(where, column.data(), col, QVRowNumbers(rows), j);
      for (std::size_t i = 0; i < rows.size(); ++i) cells[i * size + j] = column[i];
    }
  }
  if (result.NotSuccessful()) return result;
  numColumns = size;
  values = std::move(cells);
  return result;
}

QVStatModelResult QVGetEigenvaluesOfSimilarityColumn(Values& eigenvalues, const QVDataTable& table,
                                                     const std::string& colName) {
  const char* const where = "QVGetEigenvaluesOfSimilarityColumn";
  eigenvalues.clear();
  QVStatModelResult result(true);
  const QVDataTableCol& col = table.GetColumnFromName(result, colName);
  if (QVFailedIn(result, where)) return result;
  result = CheckLevel(where, col, QVStatVariableType::Ratio);
  if (result.NotSuccessful()) return result;
  if (!col.ColIsLowerTriangular())
    return QVFailure(Failure::ColumnHasWrongDataType, where) << "Lower triangular matrix required";
  Values matrix;
  const std::vector<std::size_t> rows = table.GetRowNumbers();
  if (rows.empty()) return QVFailure(Failure::NoData, where);
  result = GetMatrix(where, matrix, col, rows);
  if (result.NotSuccessful()) return result;
  const auto n = static_cast<Eigen::Index>(rows.size());
  const Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> solver(
      Eigen::Map<const Eigen::MatrixXd>(matrix.data(), n, n), Eigen::EigenvaluesOnly);
  eigenvalues.assign(solver.eigenvalues().data(), solver.eigenvalues().data() + n);
  return result;
}

double QVGetSampleStatisticForColumnOfRatioType(QVStatModelResult& result, std::size_t& numMissing,
                                                std::size_t& numBad, unsigned int code,
                                                const QVDataTable& table,
                                                const std::string& colName, std::size_t subCol) {
  return QVGetSampleStatisticForColumnOfRatioType(result, numMissing, numBad, code, 0.0, table,
                                                  colName, subCol);
}

double QVGetSampleStatisticForColumnOfRatioType(QVStatModelResult& result, std::size_t& numMissing,
                                                std::size_t& numBad, unsigned int code,
                                                double parameter, const QVDataTable& table,
                                                const std::string& colName, std::size_t subCol) {
  Values values;
  result = QVGetVecOfDataFromColumnOfRatioType(values, numMissing, numBad, table, colName, subCol);
  if (QVFailedIn(result, "QVGetSampleStatisticForColumnOfRatioType")) return BadDouble;
  return QVGetSampleStatisticForDataVec(result, code, parameter, values);
}

double QVGetSampleStatisticForColumnOfRatioType(QVStatModelResult& result, std::size_t& numMissing,
                                                std::size_t& numBad, unsigned int code,
                                                const QVDataTableCol& col, std::size_t subCol) {
  Values values;
  result = QVGetVecOfDataFromColumnOfRatioType(values, numMissing, numBad, col, subCol);
  if (QVFailedIn(result, "QVGetSampleStatisticForColumnOfRatioType")) return BadDouble;
  return QVGetSampleStatisticForDataVec(result, code, values);
}

double QVGetTwoSampleStatisticForTwoColumnsOfRatioType(QVStatModelResult& result,
                                                       std::size_t& numMissing, std::size_t& numBad,
                                                       unsigned int code, const QVDataTable& table,
                                                       const std::string& nameOne,
                                                       const std::string& nameTwo,
                                                       std::size_t elemOne, std::size_t elemTwo) {
  Pairs pairs;
  result = QVGetVecOfPairedDataFromTwoColumnsOfRatioType(pairs, numMissing, numBad, table, nameOne,
                                                         nameTwo, elemOne, elemTwo);
  if (result.NotSuccessful()) return BadDouble;
  return QVGetTwoSampleStatisticForDataPairVec(result, code, pairs);
}

double QVGetTwoSampleStatisticForTwoColumnsOfRatioType(QVStatModelResult& result,
                                                       std::size_t& numMissing, std::size_t& numBad,
                                                       unsigned int code,
                                                       const QVDataTableCol& colOne,
                                                       const QVDataTableCol& colTwo,
                                                       std::size_t elemOne, std::size_t elemTwo) {
  Pairs pairs;
  result = QVGetVecOfPairedDataFromTwoColumnsOfRatioType(pairs, numMissing, numBad, colOne, colTwo,
                                                         elemOne, elemTwo);
  if (result.NotSuccessful()) return BadDouble;
  return QVGetTwoSampleStatisticForDataPairVec(result, code, pairs);
}

Pair QVGetTwoSamplePairStatisticForTwoColumnsOfRatioType(
    QVStatModelResult& result, std::size_t& numMissing, std::size_t& numBad, unsigned int code,
    const QVDataTable& table, const std::string& nameOne, const std::string& nameTwo,
    std::size_t elemOne, std::size_t elemTwo) {
  Pairs pairs;
  result = QVGetVecOfPairedDataFromTwoColumnsOfRatioType(pairs, numMissing, numBad, table, nameOne,
                                                         nameTwo, elemOne, elemTwo);
  if (result.NotSuccessful()) return {BadDouble, BadDouble};
  return QVGetTwoSamplePairStatisticForDataPairVec(result, code, pairs);
}

Pair QVGetTwoSamplePairStatisticForTwoColumnsOfRatioType(QVStatModelResult& result,
                                                         std::size_t& numMissing,
                                                         std::size_t& numBad, unsigned int code,
                                                         const QVDataTableCol& colOne,
                                                         const QVDataTableCol& colTwo,
                                                         std::size_t elemOne, std::size_t elemTwo) {
  Pairs pairs;
  result = QVGetVecOfPairedDataFromTwoColumnsOfRatioType(pairs, numMissing, numBad, colOne, colTwo,
                                                         elemOne, elemTwo);
  if (result.NotSuccessful()) return {BadDouble, BadDouble};
  return QVGetTwoSamplePairStatisticForDataPairVec(result, code, pairs);
}

double QVGetTwoSampleIndepStatForTwoColumnsOfRatioType(QVStatModelResult& result, unsigned int code,
                                                       const QVDataTable& table,
                                                       const std::string& nameOne,
                                                       const std::string& nameTwo) {
  const char* const where = "QVGetTwoSampleIndepStatForTwoColumnsOfRatioType";
  Sample x, y;
  result = GetSamples(where, x, y, table, nameOne, nameTwo);
  if (result.NotSuccessful()) return BadDouble;
  const double value = QVGetTwoSampleIndepStatForVectors(
      result, code, x.data, x.dim, x.isSimilarity, y.data, y.dim, y.isSimilarity);
  QVFailedIn(result, where);
  return value;
}

double QVGetPValueForTwoSampleIndepStatForTwoColumnsOfRatioType(
    QVStatModelResult& result, QVMath::QVRanNumEngine& engine, std::size_t numSims,
    unsigned int code, const QVDataTable& table, const std::string& nameOne,
    const std::string& nameTwo) {
  const char* const where = "QVGetPValueForTwoSampleIndepStatForTwoColumnsOfRatioType";
  Sample x, y;
  result = GetSamples(where, x, y, table, nameOne, nameTwo);
  if (result.NotSuccessful()) return BadDouble;
  const double p = QVGetPValueForTwoSampleIndepStatistic(
      result, engine, numSims, code, x.data, x.dim, x.isSimilarity, y.data, y.dim, y.isSimilarity);
  QVFailedIn(result, where);
  return p;
}

QVStatModelResult QVGetEmpiricalCDFPlotPointsForColumnName(
    QVMath::QVDataSeries& series, double& xmin, double& xmax, const QVDataTable& table,
    const std::string& colName, std::size_t subCol, double lo, double hi) {
  return PlotColumn(
      "QVGetEmpiricalCDFPlotPointsForColumnName", table, colName, subCol,
      [&](const Values& x) { QVGetEmpiricalCDFPlotPoints(series, xmin, xmax, x, lo, hi); });
}

QVStatModelResult QVGetAutoDefConstBinWidthHistPlotPointsForColName(
    QVMath::QVDataSeries& series, double& xmin, double& xmax, double& ymin, double& ymax,
    const QVDataTable& table, const std::string& colName, std::size_t subCol, double lo,
    double hi) {
  return PlotColumn("QVGetAutoDefConstBinWidthHistPlotPointsForColName", table, colName, subCol,
                    [&](const Values& x) {
                      QVGetAutoDefinedConstBinWidthHistPlotPoints(series, xmin, xmax, ymin, ymax, x,
                                                                  lo, hi);
                    });
}

QVStatModelResult QVGetUserDefConstBinWidthHistPlotPointsForColName(
    QVMath::QVDataSeries& series, double& xmin, double& xmax, double& ymin, double& ymax,
    const QVDataTable& table, const std::string& colName, std::size_t subCol, std::size_t numBins,
    double lo, double hi) {
  return PlotColumn("QVGetUserDefConstBinWidthHistPlotPointsForColName", table, colName, subCol,
                    [&](const Values& x) {
                      QVGetUserDefinedConstBinWidthHistPlotPoints(series, xmin, xmax, ymin, ymax, x,
                                                                  numBins, lo, hi);
                    });
}

QVStatModelResult QVGetUserDefConstFreqHistPlotPointsForColName(
    QVMath::QVDataSeries& series, double& xmin, double& xmax, double& ymin, double& ymax,
    const QVDataTable& table, const std::string& colName, std::size_t subCol, std::size_t numBins,
    double lo, double hi) {
  return PlotColumn("QVGetUserDefConstBinWidthHistPlotPointsForColName", table, colName, subCol,
                    [&](const Values& x) {
                      QVGetUserDefinedConstFreqHistPlotPoints(series, xmin, xmax, ymin, ymax, x,
                                                              numBins, lo, hi);
                    });
}

QVStatModelResult QVGetNormalProbabilityPlotPointsForColumnName(
    QVMath::QVDataSeries& series, double& xmin, double& xmax, double& ymin, double& ymax,
    const QVDataTable& table, const std::string& colName, std::size_t subCol, double xmin0,
    double xmax0, double ymin0, double ymax0) {
  return PlotColumn("QVGetNormalProbabilityPlotForColumnName", table, colName, subCol,
                    [&](Values& x) {
                      std::sort(x.begin(), x.end());
                      return QVGetNormalProbabilityPlotPointsForSortedData(
                          series, xmin, xmax, ymin, ymax, x, xmin0, xmax0, ymin0, ymax0);
                    });
}

QVStatModelResult QVGetAutoDefConstBinWidthHistPlotPtsConfidenceInt(
    QVMath::QVDataSeries& series, QVMath::QVDataSeries& lower, QVMath::QVDataSeries& upper,
    double& xmin, double& xmax, double& ymin, double& ymax, const QVDataTable& table,
    const std::string& colName, std::size_t subCol, double lo, double hi, double level) {
  return PlotColumn("QVGetAutoDefConstBinWidthHistPlotPtsConfidenceInt", table, colName, subCol,
                    [&](const Values& x) {
                      return QVGetAutoDefConstBinWidthHistPlotPtsConfidenceInt(
                          series, lower, upper, xmin, xmax, ymin, ymax, x, lo, hi, level);
                    });
}

QVStatModelResult QVGetUserDefConstBinWidthHistPlotPtsConfidenceInt(
    QVMath::QVDataSeries& series, QVMath::QVDataSeries& lower, QVMath::QVDataSeries& upper,
    double& xmin, double& xmax, double& ymin, double& ymax, const QVDataTable& table,
    const std::string& colName, std::size_t subCol, std::size_t numBins, double lo, double hi,
    double level) {
  return PlotColumn("QVGetUserDefConstBinWidthHistPlotPtsConfidenceInt", table, colName, subCol,
                    [&](const Values& x) {
                      return QVGetUserDefConstBinWidthHistPlotPtsConfidenceInt(
                          series, lower, upper, xmin, xmax, ymin, ymax, x, numBins, lo, hi, level);
                    });
}

QVStatModelResult QVGetScatterPlotPtsForColumnNamePair(
    QVMath::QVDataSeries& series, double& xmin, double& xmax, double& ymin, double& ymax,
    const QVDataTable& table, const std::string& nameOne, const std::string& nameTwo,
    std::size_t elemOne, std::size_t elemTwo, double xmin0, double xmax0, double ymin0,
    double ymax0) {
  Pairs pairs;
  std::size_t numMissing, numBad;
  QVStatModelResult result = QVGetVecOfPairedDataFromTwoColumnsOfRatioType(
      pairs, numMissing, numBad, table, nameOne, nameTwo, elemOne, elemTwo);
  if (QVFailedIn(result, "QVGetScatterPlotPtsForColumnNamePair")) return result;
  xmin = xmin0;
  xmax = xmax0;
  ymin = ymin0;
  ymax = ymax0;
  series.Clear();
  series.Reserve(pairs.size());
  for (const auto& [x, y] : pairs) {
    xmin = std::min(xmin, x);
    xmax = std::max(xmax, x);
    ymin = std::min(ymin, y);
    ymax = std::max(ymax, y);
    series.AddPoint(x, y);
  }
  return result;
}

}  // namespace QVStats
