#include "stats/api/data_table_impl.h"

#include <algorithm>
#include <numeric>

#include "stats/failure.h"

namespace QVStats {

using namespace QVStatModelFailureType;

namespace {

auto HasName(const std::string& name) {
  return [&name](const QVDataTableCol& column) { return column.GetColumnName() == name; };
}

}  // namespace

// Row sets.

QVDataTableRowSetImpl::QVDataTableRowSetImpl(std::size_t n) : highest_(n == 0 ? 0 : n - 1) {
  rows_.reserve(n);
  for (std::size_t r = 0; r < n; ++r) rows_.emplace_back(r);
}

QVDataTableRowSetImpl::QVDataTableRowSetImpl(std::vector<QVDataTableRow> rows)
    : rows_(std::move(rows)) {
  for (std::size_t i = 0; i < rows_.size(); ++i) {
    const std::size_t number = rows_[i].GetImpl()->GetRowNumber();
    highest_ = std::max(highest_, number);
    isRange_ = isRange_ && number == i;
  }
}

// Column sets.

const QVDataTableCol* QVDataTableColSetImpl::FindByName(const std::string& name) const {
  const auto found = std::find_if(columns_.begin(), columns_.end(), HasName(name));
  return found == columns_.end() ? nullptr : &*found;
}

bool QVDataTableColSetImpl::ColWithThisNameIsInSet(const std::string& name) const {
  return FindByName(name) != nullptr;
}

QVStatModelResult QVDataTableColSetImpl::AddColumn(const QVDataTableCol& column) {
  const char* const where = "QVDataTableColSetImpl::AddColumn";
  const std::string& name = column.GetColumnName();
  if (!columns_.empty()) {
    if (ColWithThisNameIsInSet(name))
      return QVFailure(DuplicateNames, where)
             << "Column name: " << name
             << "\ncolumn with same name already present!\n"
                " Use SetColumnName to change current Column Name\n";
    const std::size_t numRows = column.GetTotalNumRowsInCol();
    const std::size_t expected = columns_.front().GetTotalNumRowsInCol();
    if (numRows != expected)
      return QVFailure(WrongInputVectorSize, where)
             << "New column (name: " << name << ") has wrong number rows!. Has " << numRows
             << " Data table expects " << expected << "\n";
  }
  columns_.push_back(column);
  return true;
}

QVStatModelResult QVDataTableColSetImpl::DeleteColumn(const std::string& name) {
  const char* const where = "QVDataTableColSetImpl::DeleteColumn";
  const std::string comment = "Can't find column " + name + " in column set";
  if (columns_.empty())
    return QVFailure(ColumnNotFound, where) << comment << " because the set is empty!";
  const auto found = std::find_if(columns_.begin(), columns_.end(), HasName(name));
  if (found == columns_.end()) return QVFailure(ColumnNotFound, where) << comment;
  columns_.erase(found);
  return true;
}

// Tables.

QVDataTableImpl::QVDataTableImpl(std::string name, const QVDataTableImpl& parent,
                                 const QVDataTableRowSet& rows)
    : name_(std::move(name)), columns_(parent.columns_) {
  if (rows.GetHighestRowNum() < columns_.GetNumRowsInColumns()) rows_ = rows;
}

QVDataTableImpl::QVDataTableImpl(std::string name, const QVDataTableImpl& parent,
                                 const QVDataTableRowPredBase& predicate)
    : name_(std::move(name)), rows_(parent.rows_), columns_(parent.columns_) {
  if (parent.predicate_)
    predicate_.reset(new QVAndOfDataTableRowPreds(*parent.predicate_, predicate));
  else
    predicate_.reset(predicate.CreateCopy());
}

QVStatModelResult QVDataTableImpl::AddColumn(const QVDataTableCol& column) {
  const char* const where = "QVDataTableImpl::AddColumn";
  QVStatModelResult result = columns_.AddColumn(column);
  if (QVFailedIn(result, where)) return result;
  if (columns_.GetNumColumns() != 1) return true;
  const std::size_t numRows = column.GetTotalNumRowsInCol();
  if (rows_.GetNumRows() == 0) {
    rows_ = QVDataTableRowSet(numRows);
  } else if (rows_.GetHighestRowNum() >= numRows) {
    return QVFailure(WrongInputVectorSize, where)
           << "Existing row set addresses rownumbers beyond the column size\n"
              "Highest row number in row set is: "
           << rows_.GetHighestRowNum() << " While num rows in input col is: " << numRows;
  }
  return true;
}

QVStatModelResult QVDataTableImpl::DeleteColumn(const std::string& name) {
  QVStatModelResult result = columns_.DeleteColumn(name);
  if (result.NotSuccessful()) result.AddCallContext("QVDataTableImpl::DeleteColumn");
  return result;
}

QVSystem::QVIter<const QVDataTableRow> QVDataTableImpl::GetRows() const {
  if (!predicate_) return rows_.GetRows();
  return QVSystem::QVIter<const QVDataTableRow>(
      new QVSystem::QVPredIter<const QVDataTableRow>(rows_.GetRows(), *predicate_));
}

std::size_t QVDataTableImpl::GetNumRows() const {
  return predicate_ ? GetRowNumbers().size() : rows_.GetNumRows();
}

std::vector<std::size_t> QVDataTableImpl::GetRowNumbers() const {
  const std::vector<QVDataTableRow>& rows = rows_.GetImpl()->GetRows();
  if (predicate_ && rows_.GetImpl()->IsRangeFromZero())
    return predicate_->Select(QVRowNumbers(std::size_t{0}, rows.size()));
  std::vector<std::size_t> numbers(rows.size());
  std::transform(rows.begin(), rows.end(), numbers.begin(),
                 [](const QVDataTableRow& row) { return row.GetImpl()->GetRowNumber(); });
  return predicate_ ? predicate_->Select(QVRowNumbers(numbers)) : numbers;
}

std::vector<double> QVDataTableImpl::GetDoubles(const QVDataTableCol& column,
                                                std::size_t col) const {
  if (!predicate_ && rows_.GetImpl()->IsRangeFromZero())
    return column.GetDoubles(QVRowNumbers(std::size_t{0}, rows_.GetNumRows()), col);
  return column.GetDoubles(QVRowNumbers(GetRowNumbers()), col);
}

}  // namespace QVStats
