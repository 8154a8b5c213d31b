#include "stats/api/data_table.h"

#include <numeric>

#include "stats/api/data_table_impl.h"

namespace QVStats {

namespace {

std::vector<QVDataTableRow> MakeRows(const std::vector<std::size_t>& numbers) {
  std::vector<QVDataTableRow> rows;
  rows.reserve(numbers.size());
  for (const std::size_t number : numbers) rows.emplace_back(number);
  return rows;
}

}  // namespace

// Row sets.

QVDataTableRowSet::QVDataTableRowSet() : impl_(std::make_shared<QVDataTableRowSetImpl>()) {}
QVDataTableRowSet::QVDataTableRowSet(std::size_t n)
    : impl_(std::make_shared<QVDataTableRowSetImpl>(n)) {}
QVDataTableRowSet::QVDataTableRowSet(std::vector<QVDataTableRow> rows)
    : impl_(std::make_shared<QVDataTableRowSetImpl>(std::move(rows))) {}
QVDataTableRowSet::QVDataTableRowSet(const std::vector<std::size_t>& numbers)
    : QVDataTableRowSet(MakeRows(numbers)) {}

std::size_t QVDataTableRowSet::GetNumRows() const { return impl_->GetNumRows(); }
std::size_t QVDataTableRowSet::GetHighestRowNum() const { return impl_->GetHighestRowNum(); }
QVSystem::QVIter<const QVDataTableRow> QVDataTableRowSet::GetRows() const {
  return QVSystem::QVMakeIter<const QVDataTableRow>(impl_->GetRows());
}

// Column sets.

QVDataTableColSet::QVDataTableColSet() : impl_(std::make_shared<QVDataTableColSetImpl>()) {}

std::size_t QVDataTableColSet::GetNumColumns() const { return impl_->GetColumns().size(); }

std::size_t QVDataTableColSet::GetTotalNumElementsPerRow() const {
  std::size_t total = 0;
  for (const QVDataTableCol& column : impl_->GetColumns()) total += column.GetNumColumnsInCol();
  return total;
}

std::size_t QVDataTableColSet::GetNumRowsInColumns() const {
  return impl_->GetColumns().empty() ? 0 : impl_->GetColumns().front().GetTotalNumRowsInCol();
}

QVSystem::QVIter<const QVDataTableCol> QVDataTableColSet::GetColumns() const {
  return QVSystem::QVMakeIter<const QVDataTableCol>(impl_->GetColumns());
}

const QVDataTableCol& QVDataTableColSet::GetColumnFromName(const std::string& name) const {
  const QVDataTableCol* found = impl_->FindByName(name);
  return found ? *found : impl_->GetNullColumn();
}

const QVDataTableCol& QVDataTableColSet::GetColumnFromName(QVStatModelResult& result,
                                                           const std::string& name) const {
  if (const QVDataTableCol* found = impl_->FindByName(name)) {
    result = true;
    return *found;
  }
  result.SetFailureTypeAndWhereFailed(QVStatModelFailureType::ColumnNotFound,
                                      "QVDataTableColSetImpl::GetColumnFromName");
  result.AddExtraComment("requested columnName = " + name);
  return impl_->GetNullColumn();
}

const QVDataTableCol& QVDataTableColSet::GetColumnFromFullName(QVStatModelResult& result,
                                                               const std::string& fullName) const {
  for (const QVDataTableCol& column : impl_->GetColumns()) {
    if (column.GetFullColumnName() != fullName) continue;
    result = true;
    return column;
  }
  result.SetFailureTypeAndWhereFailed(QVStatModelFailureType::ColumnNotFound,
                                      "QVDataTableColSetImpl::GetColumnFromFullName");
  return impl_->GetNullColumn();
}

QVStatModelResult QVDataTableColSet::AddColumn(const QVDataTableCol& column) {
  return impl_->AddColumn(column);
}

QVStatModelResult QVDataTableColSet::DeleteColumn(const std::string& name) {
  return impl_->DeleteColumn(name);
}

// Tables.

QVDataTable::QVDataTable(const std::string& name) : impl_(new QVDataTableImpl(name)) {}
QVDataTable::QVDataTable(const std::string& name, const QVDataTable& parent,
                         const QVDataTableRowSet& rows)
    : impl_(new QVDataTableImpl(name, *parent.impl_, rows)) {}
QVDataTable::QVDataTable(const std::string& name, const QVDataTable& parent,
                         const QVDataTableRowPredBase& predicate)
    : impl_(new QVDataTableImpl(name, *parent.impl_, predicate)) {}
QVDataTable::QVDataTable(const QVDataTable& other) = default;
QVDataTable::QVDataTable(QVDataTable&& other) noexcept = default;
QVDataTable& QVDataTable::operator=(const QVDataTable& other) = default;
QVDataTable& QVDataTable::operator=(QVDataTable&& other) noexcept = default;
QVDataTable::~QVDataTable() = default;

const std::string& QVDataTable::GetTableName() const { return impl_->GetTableName(); }
std::size_t QVDataTable::GetNumColumns() const { return impl_->GetColumnSet().GetNumColumns(); }
QVSystem::QVIter<const QVDataTableCol> QVDataTable::GetColumns() const {
  return impl_->GetColumnSet().GetColumns();
}
const QVDataTableCol& QVDataTable::GetColumnFromName(const std::string& name) const {
  return impl_->GetColumnSet().GetColumnFromName(name);
}
const QVDataTableCol& QVDataTable::GetColumnFromName(QVStatModelResult& result,
                                                     const std::string& name) const {
  return impl_->GetColumnSet().GetColumnFromName(result, name);
}
const QVDataTableCol& QVDataTable::GetColumnFromFullName(QVStatModelResult& result,
                                                         const std::string& name) const {
  return GetColumnFromName(result, name);
}
QVStatModelResult QVDataTable::AddColumn(const QVDataTableCol& column) {
  return impl_->AddColumn(column);
}
QVStatModelResult QVDataTable::DeleteColumn(const std::string& name) {
  return impl_->DeleteColumn(name);
}
void QVDataTable::ClearColumns() { impl_->ClearColumns(); }
QVSystem::QVIter<const QVDataTableRow> QVDataTable::GetRows() const { return impl_->GetRows(); }
std::size_t QVDataTable::GetNumRows() const { return impl_->GetNumRows(); }
std::vector<std::size_t> QVDataTable::GetRowNumbers() const { return impl_->GetRowNumbers(); }
std::vector<double> QVDataTable::GetDoubles(const QVDataTableCol& column, std::size_t col) const {
  return impl_->GetDoubles(column, col);
}

}  // namespace QVStats
