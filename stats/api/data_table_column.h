/// \file
/// \brief The handle through which programs use a column, and all that fills, converts, slices and
/// combines columns.
#ifndef QVSTATS_API_DATA_TABLE_COLUMN_H
#define QVSTATS_API_DATA_TABLE_COLUMN_H

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "stats/api/data_table_column_impl.h"
#include "stats/api/export.h"
#include "stats/api/stat_model.h"

namespace QVStats {

class QVSingleArgDataTransformBase;
class QVTwoArgsDataTransformBase;
class QVVecOfArgsDataTransformBase;

/// A shared handle to a column: copies see the same column, so a value appended through one is
/// seen by all. There is no deep copy. Reads are those of QVDataTableColBase.
class QVSTATS_EXPORT QVDataTableCol {
 public:
  /// A null column named "NullColumn".
  QVDataTableCol();
  /// A null column.
  QVDataTableCol(const std::string& name, const std::string& fullName);
  /// Takes ownership of a column.
  explicit QVDataTableCol(std::unique_ptr<QVDataTableColBase> column);

  /// An empty column of a level of measurement (QVGetDataTableCol) with `numColumnsInCol` values a
  /// row. Without a full name the full name is the name.
  QVDataTableCol(const std::string& name, unsigned int level, std::size_t numRows,
                 std::size_t numColumnsInCol, bool lowerTriangular);
  QVDataTableCol(const std::string& name, const std::string& fullName, unsigned int level,
                 std::size_t numRows, std::size_t numColumnsInCol, bool lowerTriangular);
  /// A dense ratio column with the values given, row after row.
  QVDataTableCol(const std::string& name, const std::vector<double>& values,
                 std::size_t numColumnsInCol, bool lowerTriangular);
  /// A sparse ratio column; a null column for any other level.
  QVDataTableCol(const std::string& name, const std::string& fullName, unsigned int level,
                 std::size_t numRows, const std::vector<QVRowColValue>& entries,
                 std::size_t numColumnsInCol, bool lowerTriangular);
  /// A nominal column with fixed categories. No possible values: an empty column of the level; any
  /// other level with possible values: a null column.
  QVDataTableCol(const std::string& name, unsigned int level,
                 const std::vector<std::string>& possibleValues, std::size_t numRows,
                 std::size_t numColumnsInCol, bool lowerTriangular);
  QVDataTableCol(const std::string& name, const std::string& fullName, unsigned int level,
                 const std::vector<std::string>& possibleValues, std::size_t numRows,
                 std::size_t numColumnsInCol, bool lowerTriangular);

  /// Columns that compute a transform of their argument columns when they are read
  /// (stats/api/data_transforms_columns.h). The transform is copied, the columns are shared.
  QVDataTableCol(const QVSingleArgDataTransformBase& transform, const QVDataTableCol& column);
  QVDataTableCol(const QVTwoArgsDataTransformBase& transform, const QVDataTableCol& first,
                 const QVDataTableCol& second);
  QVDataTableCol(const QVVecOfArgsDataTransformBase& transform,
                 const std::vector<QVDataTableCol>& columns);

  void SetColumnName(const std::string& name) { column_->SetColumnName(name); }
  const std::string& GetColumnName() const { return column_->GetColumnName(); }
  const std::string& GetFullColumnName() const { return column_->GetFullColumnName(); }
  std::size_t GetNumColumnsInCol() const { return column_->GetNumColumnsInCol(); }
  bool ColIsLowerTriangular() const { return column_->ColIsLowerTriangular(); }
  bool ColIsSparse() const { return column_->ColIsSparse(); }
  bool ColIsReadOnly() const { return column_->ColIsReadOnly(); }
  void SetColHasMissingData() { column_->SetColHasMissingData(); }
  void SetColHasBadData() { column_->SetColHasBadData(); }
  bool ColHasMissingData() const { return column_->ColHasMissingData(); }
  bool ColHasBadData() const { return column_->ColHasBadData(); }
  unsigned int GetStatVariableType() const { return column_->GetStatVariableType(); }
  unsigned int GetStatVarDataType() const { return column_->GetStatVarDataType(); }
  std::size_t GetNumElementsInCol() const { return column_->GetNumElementsInCol(); }
  std::size_t GetTotalNumRowsInCol() const { return column_->GetTotalNumRowsInCol(); }
  std::size_t GetNumUniqueDiscreteValues() const { return column_->GetNumUniqueDiscreteValues(); }
  std::vector<std::string> GetUniqueDiscreteValues() const {
    return column_->GetUniqueDiscreteValues();
  }
  std::string PrintUniqueDiscreteValues(std::size_t limit) const {
    return column_->PrintUniqueDiscreteValues(limit);
  }
  bool RowColIndexIsBad(std::size_t row, std::size_t col) const {
    return column_->RowColIndexIsBad(row, col);
  }
  bool RowColHasMissingData(std::size_t row, std::size_t col) const {
    return column_->RowColHasMissingData(row, col);
  }
  bool RowColHasBadData(std::size_t row, std::size_t col) const {
    return column_->RowColHasBadData(row, col);
  }
  unsigned int GetUnsigned(std::size_t row, std::size_t col) const {
    return column_->GetUnsigned(row, col);
  }
  int GetInt(std::size_t row, std::size_t col) const { return column_->GetInt(row, col); }
  double GetDouble(std::size_t row, std::size_t col) const { return column_->GetDouble(row, col); }
  std::string GetString(std::size_t row, std::size_t col) const {
    return column_->GetString(row, col);
  }
  std::string PrintSummary() const { return column_->PrintSummary(); }
  std::string PrintSummaryPlusStartOfData(std::size_t maxRows, std::size_t maxCols) const;
  std::string PrintSummaryPlusStartOfData(const QVDataTable& table, std::size_t maxRows,
                                          std::size_t maxCols) const;
  std::string PrintSummaryPlusStartOfData(QVSystem::QVIter<const QVDataTableRow> rows,
                                          std::size_t maxRows, std::size_t maxCols) const;

  /// Bulk reads, one value (or state) for each row in order, as the reads of single cells give.
  std::vector<double> GetDoubles(const QVRowNumbers& rows, std::size_t col = 0) const;
  std::vector<QVCellState> GetCellStates(const QVRowNumbers& rows, std::size_t col = 0) const;
  /// All rows of the column.
  QVRowNumbers GetAllRows() const { return QVRowNumbers(std::size_t{0}, GetTotalNumRowsInCol()); }

  QVDataTableColBase* GetImpl() const { return column_.get(); }

 private:
  std::shared_ptr<QVDataTableColBase> column_;
};

/// Closes a column for appends; a nominal column then builds its categories.
QVSTATS_EXPORT void QVFinishAppendingVars(QVDataTableCol& column);

/// Append a value of the column's own kind: whole numbers to an interval column, doubles and floats
/// to a ratio column, texts to an identifier or nominal column. On failure nothing is appended:
/// - VariableIsReadOnly: the column is closed.
/// - ColumnHasWrongDataType: a null or ordinal column.
/// - ArgumentTypeWrong: a value of another kind ("Tried adding ...").
/// - ArgumentOutOfRange: a text that is none of a nominal column's fixed categories.
/// An unsigned value of 2^31 or more is a fatal report.
QVSTATS_EXPORT QVStatModelResult QVAppendUnsignedToCol(QVDataTableCol& column, unsigned int value);
QVSTATS_EXPORT QVStatModelResult QVAppendIntToCol(QVDataTableCol& column, int value);
QVSTATS_EXPORT QVStatModelResult QVAppendDoubleToCol(QVDataTableCol& column, double value);
QVSTATS_EXPORT QVStatModelResult QVAppendFloatToCol(QVDataTableCol& column, float value);
QVSTATS_EXPORT QVStatModelResult QVAppendStringToCol(QVDataTableCol& column,
                                                     const std::string& value);

/// Appends the missing value of the column's type. Fails as the appends above do.
QVSTATS_EXPORT QVStatModelResult QVAppendMissingDataToCol(QVDataTableCol& column);

/// Append a value after converting it to the column's type: numbers to text with six significant
/// digits, doubles to whole numbers by rounding half to even, texts to numbers by reading them.
/// Sentinels are not translated. Failures as above, and
/// - ArgumentValueWrong: a text that is no number ("Unable to parse field : ...").
/// - ColumnHasWrongDataType: a number appended to an identifier column; its text IS appended.
/// A number that does not fit an interval column is a fatal report.
QVSTATS_EXPORT QVStatModelResult QVConvertUnsignedAndAppendToCol(QVDataTableCol& column,
                                                                 unsigned int value);
QVSTATS_EXPORT QVStatModelResult QVConvertIntAndAppendToCol(QVDataTableCol& column, int value);
QVSTATS_EXPORT QVStatModelResult QVConvertDoubleAndAppendToCol(QVDataTableCol& column,
                                                               double value);
QVSTATS_EXPORT QVStatModelResult QVConvertFloatAndAppendToCol(QVDataTableCol& column, float value);
QVSTATS_EXPORT QVStatModelResult QVConvertStringAndAppendToCol(QVDataTableCol& column,
                                                               const std::string& value);

/// Value `j` of every row as a new plain column "SliceCol_<j>_From:<name>", open for appends.
/// A nominal column gets the source's categories as its possible values and the source's codes
/// unchanged; since possible values are sorted together with the two sentinel texts, a code may
/// then stand for another text. A null column is returned for a null column.
QVSTATS_EXPORT QVDataTableCol QVSliceColumn(const QVDataTableCol& column, std::size_t j);

/// Arithmetic on columns: new columns that compute when they are read. Missing and bad cells stay
/// missing and bad; x / column is bad where the column is 0.
QVSTATS_EXPORT QVDataTableCol operator+(const QVDataTableCol& column, double x);
QVSTATS_EXPORT QVDataTableCol operator+(double x, const QVDataTableCol& column);
QVSTATS_EXPORT QVDataTableCol operator-(const QVDataTableCol& column, double x);
QVSTATS_EXPORT QVDataTableCol operator-(double x, const QVDataTableCol& column);
QVSTATS_EXPORT QVDataTableCol operator*(const QVDataTableCol& column, double x);
QVSTATS_EXPORT QVDataTableCol operator*(double x, const QVDataTableCol& column);
QVSTATS_EXPORT QVDataTableCol operator/(const QVDataTableCol& column, double x);
QVSTATS_EXPORT QVDataTableCol operator/(double x, const QVDataTableCol& column);
QVSTATS_EXPORT QVDataTableCol operator+(const QVDataTableCol& first, const QVDataTableCol& second);
QVSTATS_EXPORT QVDataTableCol operator-(const QVDataTableCol& first, const QVDataTableCol& second);
QVSTATS_EXPORT QVDataTableCol operator*(const QVDataTableCol& first, const QVDataTableCol& second);
QVSTATS_EXPORT QVDataTableCol operator/(const QVDataTableCol& first, const QVDataTableCol& second);

/// Square root of values >= 0, natural logarithm of values > 0; other values are left as they are.
QVSTATS_EXPORT QVDataTableCol QVSqrt(const QVDataTableCol& column);
QVSTATS_EXPORT QVDataTableCol QVLog(const QVDataTableCol& column);
QVSTATS_EXPORT QVDataTableCol QVAbsoluteValue(const QVDataTableCol& column);
/// log((z - low) / (high - z)) for values in [low, high], z the value kept `epsilon` away from both
/// ends; other values are left as they are.
QVSTATS_EXPORT QVDataTableCol QVLogistic(const QVDataTableCol& column, double low, double high,
                                         double epsilon);
/// Over the columns, row by row: mean, variance (divisor n - 1), largest minus smallest value.
QVSTATS_EXPORT QVDataTableCol QVAverage(const std::vector<QVDataTableCol>& columns);
QVSTATS_EXPORT QVDataTableCol QVVariance(const std::vector<QVDataTableCol>& columns);
QVSTATS_EXPORT QVDataTableCol QVRange(const std::vector<QVDataTableCol>& columns);

/// Comparisons: nominal columns with the outcomes "False" and "True".
QVSTATS_EXPORT QVDataTableCol operator>(const QVDataTableCol& column, double x);
QVSTATS_EXPORT QVDataTableCol operator>=(const QVDataTableCol& column, double x);
QVSTATS_EXPORT QVDataTableCol operator==(const QVDataTableCol& column, double x);
QVSTATS_EXPORT QVDataTableCol operator<=(const QVDataTableCol& column, double x);
QVSTATS_EXPORT QVDataTableCol operator<(const QVDataTableCol& column, double x);
QVSTATS_EXPORT QVDataTableCol operator>(const QVDataTableCol& first, const QVDataTableCol& second);
QVSTATS_EXPORT QVDataTableCol operator>=(const QVDataTableCol& first, const QVDataTableCol& second);
QVSTATS_EXPORT QVDataTableCol operator==(const QVDataTableCol& first, const QVDataTableCol& second);
QVSTATS_EXPORT QVDataTableCol operator<=(const QVDataTableCol& first, const QVDataTableCol& second);
QVSTATS_EXPORT QVDataTableCol operator<(const QVDataTableCol& first, const QVDataTableCol& second);

}  // namespace QVStats

#endif  // QVSTATS_API_DATA_TABLE_COLUMN_H
