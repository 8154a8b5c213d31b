/// \file
/// \brief Data tables: named columns of equal length and the rows of them that belong to the table.
///
///     QVDataTable table("measurements");
///     table.AddColumn(activity);
///     table.AddColumn(weight);
///     const QVDataTable heavy("heavy", table, QVRowColWithinInclDoubleRange(400, 900, weight, 0));
///     const std::vector<double> values = heavy.GetDoubles(activity);
///
/// A sub-table shares the columns of its parent and has rows of its own: selecting copies no data.
/// Read-only use of a finished table from several threads is safe.
#ifndef QVSTATS_API_DATA_TABLE_H
#define QVSTATS_API_DATA_TABLE_H

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "platform/system/copy_ptr.h"
#include "platform/system/iter.h"
#include "stats/api/data_table_column.h"
#include "stats/api/export.h"
#include "stats/api/stat_model.h"

namespace QVStats {

class QVDataTableColSetImpl;
class QVDataTableImpl;
class QVDataTableRowPredBase;
class QVDataTableRowSetImpl;

/// What a row is: its number in the columns, from 0.
class QVDataTableRowImpl {
 public:
  explicit QVDataTableRowImpl(std::size_t number) : number_(number) {}
  std::size_t GetRowNumber() const { return number_; }

 private:
  std::size_t number_;
};

/// A row of a table. Reads of cell (row, j) are those of the column.
class QVSTATS_EXPORT QVDataTableRow {
 public:
  explicit QVDataTableRow(std::size_t number) : impl_(number) {}

  bool IsMissingValue(const QVDataTableCol& column, std::size_t j) const {
    return column.RowColHasMissingData(impl_.GetRowNumber(), j);
  }
  unsigned int GetUnsigned(const QVDataTableCol& column, std::size_t j) const {
    return column.GetUnsigned(impl_.GetRowNumber(), j);
  }
  int GetInt(const QVDataTableCol& column, std::size_t j) const {
    return column.GetInt(impl_.GetRowNumber(), j);
  }
  double GetDouble(const QVDataTableCol& column, std::size_t j) const {
    return column.GetDouble(impl_.GetRowNumber(), j);
  }
  std::string GetString(const QVDataTableCol& column, std::size_t j) const {
    return column.GetString(impl_.GetRowNumber(), j);
  }
  const QVDataTableRowImpl* GetImpl() const { return &impl_; }

 private:
  QVDataTableRowImpl impl_;
};

/// A list of rows in an order of its own. Copies share the list, which never changes.
class QVSTATS_EXPORT QVDataTableRowSet {
 public:
  /// No rows.
  QVDataTableRowSet();
  /// Rows 0 to n - 1.
  explicit QVDataTableRowSet(std::size_t n);
  explicit QVDataTableRowSet(std::vector<QVDataTableRow> rows);
  /// Rows by their numbers.
  explicit QVDataTableRowSet(const std::vector<std::size_t>& numbers);

  std::size_t GetNumRows() const;
  /// The largest row number, 0 without rows.
  std::size_t GetHighestRowNum() const;
  /// The rows in their order. The iterator reads this list.
  QVSystem::QVIter<const QVDataTableRow> GetRows() const;
  const QVDataTableRowSetImpl* GetImpl() const { return impl_.get(); }

 private:
  std::shared_ptr<const QVDataTableRowSetImpl> impl_;
};

/// A list of columns of equal length with distinct names. Copies share the list: a column added
/// through one is seen by all.
class QVSTATS_EXPORT QVDataTableColSet {
 public:
  QVDataTableColSet();

  std::size_t GetNumColumns() const;
  /// The sum of GetNumColumnsInCol() over the columns.
  std::size_t GetTotalNumElementsPerRow() const;
  /// Rows of the first column, 0 without columns.
  std::size_t GetNumRowsInColumns() const;
  /// In the order of their addition. The iterator reads this list.
  QVSystem::QVIter<const QVDataTableCol> GetColumns() const;
  /// The first column of that name, else a null column named "NullColumn".
  const QVDataTableCol& GetColumnFromName(const std::string& name) const;
  /// The same; fails with ColumnNotFound, and sets `result` to success otherwise.
  const QVDataTableCol& GetColumnFromName(QVStatModelResult& result, const std::string& name) const;
  const QVDataTableCol& GetColumnFromFullName(QVStatModelResult& result,
                                              const std::string& fullName) const;
  /// Adds a column. An empty set takes any. Failures:
  /// - DuplicateNames: a column of that name is there.
  /// - WrongInputVectorSize: its number of rows is not that of the first column.
  QVStatModelResult AddColumn(const QVDataTableCol& column);
  /// Removes the first column of that name. Fails with ColumnNotFound.
  QVStatModelResult DeleteColumn(const std::string& name);
  QVDataTableColSetImpl* GetImpl() const { return impl_.get(); }

 private:
  std::shared_ptr<QVDataTableColSetImpl> impl_;
};

/// Named columns and the rows that belong to the table: a row set, filtered by a predicate if the
/// table has one. A copy, and every sub-table, shares the column set.
class QVSTATS_EXPORT QVDataTable {
 public:
  /// Without columns and rows.
  explicit QVDataTable(const std::string& name);
  /// A sub-table of some rows of the parent's columns, in the order of the set and repeats
  /// included. The parent's predicate does not apply. A set with a row beyond the columns gives no
  /// rows.
  QVDataTable(const std::string& name, const QVDataTable& parent, const QVDataTableRowSet& rows);
  /// A sub-table of the parent's rows for which the predicate holds (and the parent's predicate).
  QVDataTable(const std::string& name, const QVDataTable& parent,
              const QVDataTableRowPredBase& predicate);
  QVDataTable(const QVDataTable& other);
  QVDataTable(QVDataTable&& other) noexcept;
  QVDataTable& operator=(const QVDataTable& other);
  QVDataTable& operator=(QVDataTable&& other) noexcept;
  ~QVDataTable();

  const std::string& GetTableName() const;
  std::size_t GetNumColumns() const;
  /// In the order of their addition. The iterator reads the column set.
  QVSystem::QVIter<const QVDataTableCol> GetColumns() const;
  /// The first column of that name, else a null column.
  const QVDataTableCol& GetColumnFromName(const std::string& name) const;
  /// The same; fails with ColumnNotFound, and sets `result` to success otherwise.
  const QVDataTableCol& GetColumnFromName(QVStatModelResult& result, const std::string& name) const;
  /// Looks the text up among the short names, as GetColumnFromName does.
  const QVDataTableCol& GetColumnFromFullName(QVStatModelResult& result,
                                              const std::string& name) const;
  /// Adds a column to the column set. The first column gives a table without rows all its rows.
  /// Failures: those of QVDataTableColSet::AddColumn, and WrongInputVectorSize when the table's
  /// rows lie beyond its first column, which then stays in the set.
  QVStatModelResult AddColumn(const QVDataTableCol& column);
  /// Removes a column from the column set. Fails with ColumnNotFound.
  QVStatModelResult DeleteColumn(const std::string& name);
  /// Gives this table an empty column set of its own; its rows stay.
  void ClearColumns();

  /// The rows in order, filtered by the predicate. The iterator reads this table.
  QVSystem::QVIter<const QVDataTableRow> GetRows() const;
  /// How many rows GetRows() yields; a pass over the rows when the table has a predicate.
  std::size_t GetNumRows() const;

  /// Bulk reads, in the order of GetRows(): the row numbers, and a column's doubles. Each filters
  /// the rows anew when the table has a predicate, so a caller that reads several columns fetches
  /// the row numbers once and reads the columns with them.
  std::vector<std::size_t> GetRowNumbers() const;
  std::vector<double> GetDoubles(const QVDataTableCol& column, std::size_t col = 0) const;

  QVDataTableImpl* GetImpl() const { return impl_.get(); }

 private:
  QVSystem::QVCopyPtr<QVDataTableImpl> impl_;
};

}  // namespace QVStats

#endif  // QVSTATS_API_DATA_TABLE_H
