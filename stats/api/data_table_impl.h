/// \file
/// \brief What stands behind the handles of stats/api/data_table.h.
#ifndef QVSTATS_API_DATA_TABLE_IMPL_H
#define QVSTATS_API_DATA_TABLE_IMPL_H

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "platform/system/copy_ptr.h"
#include "stats/api/data_table.h"
#include "stats/api/data_table_row_predicates.h"

namespace QVStats {

class QVSTATS_EXPORT QVDataTableRowSetImpl {
 public:
  QVDataTableRowSetImpl() = default;
  explicit QVDataTableRowSetImpl(std::size_t n);
  explicit QVDataTableRowSetImpl(std::vector<QVDataTableRow> rows);

  std::size_t GetNumRows() const { return rows_.size(); }
  std::size_t GetHighestRowNum() const { return highest_; }
  const std::vector<QVDataTableRow>& GetRows() const { return rows_; }
  /// Whether the rows are 0, 1, ..., n - 1.
  bool IsRangeFromZero() const { return isRange_; }

 private:
  std::vector<QVDataTableRow> rows_;
  std::size_t highest_ = 0;
  bool isRange_ = true;
};

class QVSTATS_EXPORT QVDataTableColSetImpl {
 public:
  const std::vector<QVDataTableCol>& GetColumns() const { return columns_; }
  const QVDataTableCol& GetNullColumn() const { return nullColumn_; }
  bool ColWithThisNameIsInSet(const std::string& name) const;
  /// \return null when there is none.
  const QVDataTableCol* FindByName(const std::string& name) const;
  QVStatModelResult AddColumn(const QVDataTableCol& column);
  QVStatModelResult DeleteColumn(const std::string& name);

 private:
  std::vector<QVDataTableCol> columns_;
  QVDataTableCol nullColumn_;
};

class QVSTATS_EXPORT QVDataTableImpl {
 public:
  explicit QVDataTableImpl(std::string name) : name_(std::move(name)) {}
  QVDataTableImpl(std::string name, const QVDataTableImpl& parent, const QVDataTableRowSet& rows);
  QVDataTableImpl(std::string name, const QVDataTableImpl& parent,
                  const QVDataTableRowPredBase& predicate);
  QVDataTableImpl* CreateCopy() const { return new QVDataTableImpl(*this); }

  const std::string& GetTableName() const { return name_; }
  const QVDataTableRowSet& GetRowSet() const { return rows_; }
  const QVDataTableColSet& GetColumnSet() const { return columns_; }
  /// Null when the table has none.
  const QVDataTableRowPredBase* GetPredicate() const { return predicate_.get(); }

  QVStatModelResult AddColumn(const QVDataTableCol& column);
  QVStatModelResult DeleteColumn(const std::string& name);
  void ClearColumns() { columns_ = QVDataTableColSet(); }

  QVSystem::QVIter<const QVDataTableRow> GetRows() const;
  std::size_t GetNumRows() const;
  std::vector<std::size_t> GetRowNumbers() const;
  std::vector<double> GetDoubles(const QVDataTableCol& column, std::size_t col) const;

 private:
  std::string name_;
  QVDataTableRowSet rows_;
  QVDataTableColSet columns_;
  QVSystem::QVCopyPtr<QVDataTableRowPredBase> predicate_;
};

}  // namespace QVStats

#endif  // QVSTATS_API_DATA_TABLE_IMPL_H
