#include "stats/api/data_table_split.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

#include "stats/failure.h"

namespace QVStats {

using namespace QVStatModelFailureType;

namespace {

std::vector<std::size_t> MakePositions(std::size_t size) {
  std::vector<std::size_t> positions(size);
  std::iota(positions.begin(), positions.end(), std::size_t{0});
  return positions;
}

/// Success when fewer rows are to be chosen than there are.
QVStatModelResult CheckNumToChoose(std::size_t numToChoose, std::size_t numRows,
                                   const char* where) {
  if (numToChoose < numRows) return true;
  return QVFailure(ArgumentOutOfRange, where)
         << "Asking to choose " << numToChoose << " rows out of " << numRows << " rows available";
}

/// Gives the rows to the two tables, those with a mark to the first.
void Divide(QVDataTable& selected, QVDataTable& rest, const QVDataTable& source,
            const std::vector<std::size_t>& rows, const std::vector<bool>& isSelected) {
  std::vector<std::size_t> first, second;
  for (std::size_t i = 0; i < rows.size(); ++i) (isSelected[i] ? first : second).push_back(rows[i]);
  // Both are made before either is assigned: the source may be one of the outputs.
  QVDataTable newSelected(selected.GetTableName(), source, QVDataTableRowSet(first));
  QVDataTable newRest(rest.GetTableName(), source, QVDataTableRowSet(second));
  selected = std::move(newSelected);
  rest = std::move(newRest);
}

/// Distances between the values of a column, one row against all.
class ColumnDistances {
 public:
  ColumnDistances(const QVDataTableCol& column, const std::vector<std::size_t>& rows)
      : column_(column), rows_(rows), isGood_(rows.size(), true), text_(IsText(column)) {
    const std::size_t size = column.ColIsLowerTriangular() ? 0 : column.GetNumColumnsInCol();
    for (std::size_t j = 0; j < size; ++j) {
      NoteGood(j);
      values_.push_back(column.GetDoubles(QVRowNumbers(rows), j));
    }
    if (text_) LoadTextCodes(size);
  }

  /// Lowers each of `smallest` to the distance from row `from`.
  void Lower(std::vector<double>& smallest, std::size_t from) const {
    const std::vector<double> similarities =
        column_.ColIsLowerTriangular() ? column_.GetDoubles(QVRowNumbers(rows_), rows_[from])
                                       : std::vector<double>();
    for (std::size_t i = 0; i < smallest.size(); ++i) {
      const double distance = similarities.empty()          ? GetDistance(i, from)
                              : IsSentinel(similarities[i]) ? 0.0
                                                            : 1.0 - similarities[i];
      smallest[i] = std::min(smallest[i], std::isnan(distance) ? 0.0 : distance);
    }
  }

 private:
  static bool IsText(const QVDataTableCol& column) {
    return column.GetStatVarDataType() == QVStatVarDataType::String;
  }
  static bool IsSentinel(double value) {
    return value == QVStatsBadData::MissingDouble || value == QVStatsBadData::BadDouble;
  }

  void NoteGood(std::size_t j) {
    const std::vector<QVCellState> states = column_.GetCellStates(QVRowNumbers(rows_), j);
    for (std::size_t i = 0; i < states.size(); ++i)
      if (states[i] != QVCellState::Good) isGood_[i] = false;
  }

  /// Texts take part by the rank of each among all: equal texts have equal codes.
  void LoadTextCodes(std::size_t size) {
    std::vector<std::string_view> texts(rows_.size());
    std::vector<std::string> buffer;
    for (std::size_t j = 0; j < size; ++j) {
      column_.GetImpl()->GetTexts(QVRowNumbers(rows_), j, texts.data(), buffer);
      std::vector<std::string_view> sorted(texts);
      std::sort(sorted.begin(), sorted.end());
      for (std::size_t i = 0; i < texts.size(); ++i)
        values_[j][i] = static_cast<double>(
            std::lower_bound(sorted.begin(), sorted.end(), texts[i]) - sorted.begin());
    }
  }

  double GetDistance(std::size_t a, std::size_t b) const {
    if (!isGood_[a]) return 0.0;
    if (!isGood_[b]) return std::numeric_limits<double>::infinity();
    double sum = 0.0;
    for (const std::vector<double>& ofColumn : values_) {
      const double difference = ofColumn[a] - ofColumn[b];
      if (values_.size() == 1 && !text_) return std::abs(difference);
      sum += text_ ? (difference == 0.0 ? 0.0 : 1.0) : difference * difference;
    }
    return std::sqrt(sum);
  }

  const QVDataTableCol& column_;
  const std::vector<std::size_t>& rows_;
  std::vector<bool> isGood_;
  bool text_;
  std::vector<std::vector<double>> values_;
};

}  // namespace

QVStatModelResult QVSplitDataTableByRandomRowSelection(QVDataTable& selected, QVDataTable& rest,
                                                       QVMath::QVRanNumEngine& engine,
                                                       double selectionProbability,
                                                       const QVDataTable& source) {
  if (!(selectionProbability >= 0.0 && selectionProbability <= 1.0))
    return QVFailure(ArgumentOutOfRange, "SplitDataTableByRandomRowSelection")
           << "Bad selectionProbability: " << selectionProbability;
  const std::vector<std::size_t> rows = source.GetRowNumbers();
  const QVMath::QVUniformDoubleRNG uniform(0.0, 1.0);
  std::vector<bool> isSelected(rows.size());
  for (std::size_t i = 0; i < rows.size(); ++i)
    isSelected[i] = uniform(engine) < selectionProbability;
  Divide(selected, rest, source, rows, isSelected);
  return true;
}

QVStatModelResult QVSplitDataTableByUnifSamplingWithoutReplacement(QVDataTable& selected,
                                                                   QVDataTable& rest,
                                                                   QVMath::QVRanNumEngine& engine,
                                                                   std::size_t numToChoose,
                                                                   const QVDataTable& source) {
  const std::vector<std::size_t> rows = source.GetRowNumbers();
  const QVStatModelResult check = CheckNumToChoose(
      numToChoose, rows.size(), "QVSplitDataTableByUnifSamplingWithoutReplacement");
  if (check.NotSuccessful()) return check;
  std::vector<std::size_t> chosen, remaining;
  QVMath::QVSampleWithoutReplacement(engine, chosen, remaining, numToChoose,
                                     MakePositions(rows.size()));
  std::vector<bool> isSelected(rows.size());
  for (const std::size_t position : chosen) isSelected[position] = true;
  Divide(selected, rest, source, rows, isSelected);
  return true;
}

QVStatModelResult QVSplitDataTableByMaxUnifCoverageOfColVals(
    QVDataTable& selected, QVDataTable& rest, QVMath::QVRanNumEngine& engine,
    std::size_t numToChoose, const std::string& columnName, const QVDataTable& source) {
  const char* const where = "QVSplitDataTableByMaxUnifCoverageOfColVals";
  const std::vector<std::size_t> rows = source.GetRowNumbers();
  QVStatModelResult result = CheckNumToChoose(numToChoose, rows.size(), where);
  if (result.NotSuccessful()) return result;
  const QVDataTableCol column = source.GetColumnFromName(result, columnName);
  if (result.NotSuccessful()) {
    result.AddCallContext(where);
    return result;
  }
  const auto numReadable = static_cast<std::size_t>(std::count_if(
      rows.begin(), rows.end(), [&](std::size_t row) { return !column.RowColIndexIsBad(row, 0); }));
  if (numReadable != rows.size())
    return QVFailure(InternalLogicFailure, where)
           << "Distance matrix has " << numReadable << "rows;  Whereas dataTable has "
           << rows.size() << " rows";

  const ColumnDistances distances(column, rows);
  std::vector<bool> isSelected(rows.size());
  std::vector<double> smallest(rows.size(), std::numeric_limits<double>::infinity());
  std::size_t next = static_cast<std::size_t>(engine.GetIndex(rows.size()));
  for (std::size_t chosen = 0; chosen < numToChoose; ++chosen) {
    isSelected[next] = true;
    distances.Lower(smallest, next);
    // A selected row lies below every other, whose distance is never negative.
    smallest[next] = -std::numeric_limits<double>::infinity();
    next = static_cast<std::size_t>(std::max_element(smallest.begin(), smallest.end()) -
                                    smallest.begin());
  }
  Divide(selected, rest, source, rows, isSelected);
  return true;
}

QVDataTable QVGetNewDataTableByUnifSamplingWithReplacement(QVMath::QVRanNumEngine& engine,
                                                           std::size_t numRows,
                                                           const QVDataTable& source) {
  const std::vector<std::size_t> rows = source.GetRowNumbers();
  return QVDataTable(source.GetTableName() + "_Resampled", source,
                     QVDataTableRowSet(QVMath::QVSampleWithReplacement(engine, numRows, rows)));
}

}  // namespace QVStats
