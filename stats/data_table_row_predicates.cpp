#include "stats/api/data_table_row_predicates.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <type_traits>

#include "platform/system/error_handler.h"

namespace QVStats {

namespace {

/// Rows that are evaluated at a time: their cells stay in the first-level cache.
constexpr std::size_t kBlock = 1024;

/// Evaluates `second` on the rows for which holds[i] == `where`, and stores its answers there.
void EvaluateWhere(unsigned char where, const QVDataTableRowPredBase& second,
                   const QVRowNumbers& rows, unsigned char* holds) {
  std::vector<std::size_t> positions;
  std::vector<std::size_t> numbers;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if (holds[i] != where) continue;
    positions.push_back(i);
    numbers.push_back(rows[i]);
  }
  std::vector<unsigned char> answers(numbers.size());
  second.Evaluate(QVRowNumbers(numbers), answers.data());
  for (std::size_t k = 0; k < positions.size(); ++k) holds[positions[k]] = answers[k];
}

/// The same for both combinations of two: the first operand decides where its answer is `decided`.
void EvaluateBoth(bool decided, const QVDataTableRowPredBase* first,
                  const QVDataTableRowPredBase* second, const QVRowNumbers& rows,
                  unsigned char* holds) {
  if (!QV_ASSERT(first && second)) {
    std::fill_n(holds, rows.size(), static_cast<unsigned char>(0));
    return;
  }
  std::array<unsigned char, kBlock> answers;
  for (std::size_t from = 0; from < rows.size(); from += kBlock) {
    const QVRowNumbers block = rows.Slice(from, std::min(kBlock, rows.size() - from));
    first->Evaluate(block, holds + from);
    if (!second->IsFreeOfEffects()) {
      EvaluateWhere(decided ? 0 : 1, *second, block, holds + from);
      continue;
    }
    second->Evaluate(block, answers.data());
    for (std::size_t i = 0; i < block.size(); ++i) {
      unsigned char& one = holds[from + i];
      one = static_cast<unsigned char>(decided ? one | answers[i] : one & answers[i]);
    }
  }
}

}  // namespace

QVDataTableRowPredBase::~QVDataTableRowPredBase() = default;

void QVDataTableRowPredBase::Evaluate(const QVRowNumbers& rows, unsigned char* holds) const {
  for (std::size_t i = 0; i < rows.size(); ++i) holds[i] = (*this)(QVDataTableRow(rows[i])) ? 1 : 0;
}

std::vector<std::size_t> QVDataTableRowPredBase::Select(const QVRowNumbers& rows) const {
  std::vector<unsigned char> holds(rows.size());
  Evaluate(rows, holds.data());
  std::size_t size = 0;
  for (const unsigned char one : holds) size += one;
  std::vector<std::size_t> selected(size + 1);
  // Every row is written and only the selected ones move on: no branch to guess.
  std::size_t next = 0;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    selected[next] = rows[i];
    next += holds[i];
  }
  selected.resize(size);
  return selected;
}

template <class Test, class Value>
bool QVRowColPredOf<Test, Value>::operator()(const QVDataTableRow& row) const {
  const auto& test = static_cast<const Test&>(*this);
  if constexpr (std::is_same_v<Value, unsigned int>)
    return test.Holds(row.GetUnsigned(column_, j_));
  else if constexpr (std::is_same_v<Value, int>)
    return test.Holds(row.GetInt(column_, j_));
  else if constexpr (std::is_same_v<Value, double>)
    return test.Holds(row.GetDouble(column_, j_));
  else
    return test.Holds(row.GetString(column_, j_));
}

template <class Test, class Value>
bool QVRowColPredOf<Test, Value>::IsFreeOfEffects() const {
  if constexpr (!std::is_integral_v<Value>) return true;
  // Texts and codes read as whole numbers without reports, an int as an int.
  const unsigned int type = column_.GetStatVarDataType();
  return type == QVStatVarDataType::String ||
         (type == QVStatVarDataType::Integer && std::is_same_v<Value, int>);
}

template <class Test, class Value>
QVRowColPredOf<Test, Value>* QVRowColPredOf<Test, Value>::CreateCopy() const {
  return new Test(static_cast<const Test&>(*this));
}

template <class Test, class Value>
void QVRowColPredOf<Test, Value>::Evaluate(const QVRowNumbers& rows, unsigned char* holds) const {
  using Cell = std::conditional_t<std::is_same_v<Value, std::string>, std::string_view, Value>;
  const auto& test = static_cast<const Test&>(*this);
  const QVDataTableColBase& column = *column_.GetImpl();
  std::vector<std::string> buffer;
  std::vector<Cell> cells(std::min(kBlock, rows.size()));
  for (std::size_t from = 0; from < rows.size(); from += kBlock) {
    const QVRowNumbers block = rows.Slice(from, std::min(kBlock, rows.size() - from));
    if constexpr (std::is_same_v<Value, unsigned int>)
      column.GetUnsigneds(block, j_, cells.data());
    else if constexpr (std::is_same_v<Value, int>)
      column.GetInts(block, j_, cells.data());
    else if constexpr (std::is_same_v<Value, double>)
      column.GetDoubles(block, j_, cells.data());
    else
      column.GetTexts(block, j_, cells.data(), buffer);
    for (std::size_t i = 0; i < block.size(); ++i) holds[from + i] = test.Holds(cells[i]) ? 1 : 0;
  }
}

template class QVRowColPredOf<QVRowColEqualsUnsigned, unsigned int>;
template class QVRowColPredOf<QVRowColEqualsInt, int>;
template class QVRowColPredOf<QVRowColEqualsDouble, double>;
template class QVRowColPredOf<QVRowColEqualsString, std::string>;
template class QVRowColPredOf<QVRowColWithinInclUnsignedRange, unsigned int>;
template class QVRowColPredOf<QVRowColWithinInclIntRange, int>;
template class QVRowColPredOf<QVRowColWithinInclDoubleRange, double>;
template class QVRowColPredOf<QVRowColWithinInclStringRange, std::string>;

QVAndOfDataTableRowPreds::QVAndOfDataTableRowPreds(const QVDataTableRowPredBase& first,
                                                   const QVDataTableRowPredBase& second)
    : first_(first.CreateCopy()), second_(second.CreateCopy()) {}

bool QVAndOfDataTableRowPreds::operator()(const QVDataTableRow& row) const {
  return QV_ASSERT(first_ && second_) && (*first_)(row) && (*second_)(row);
}

QVAndOfDataTableRowPreds* QVAndOfDataTableRowPreds::CreateCopy() const {
  return new QVAndOfDataTableRowPreds(*this);
}

void QVAndOfDataTableRowPreds::Evaluate(const QVRowNumbers& rows, unsigned char* holds) const {
  EvaluateBoth(false, first_.get(), second_.get(), rows, holds);
}

QVOrOfDataTableRowPreds::QVOrOfDataTableRowPreds(const QVDataTableRowPredBase& first,
                                                 const QVDataTableRowPredBase& second)
    : first_(first.CreateCopy()), second_(second.CreateCopy()) {}

bool QVOrOfDataTableRowPreds::operator()(const QVDataTableRow& row) const {
  return QV_ASSERT(first_ && second_) && ((*first_)(row) || (*second_)(row));
}

QVOrOfDataTableRowPreds* QVOrOfDataTableRowPreds::CreateCopy() const {
  return new QVOrOfDataTableRowPreds(*this);
}

void QVOrOfDataTableRowPreds::Evaluate(const QVRowNumbers& rows, unsigned char* holds) const {
  EvaluateBoth(true, first_.get(), second_.get(), rows, holds);
}

QVNotOfDataTableRowPred::QVNotOfDataTableRowPred(const QVDataTableRowPredBase& operand)
    : operand_(operand.CreateCopy()) {}

bool QVNotOfDataTableRowPred::operator()(const QVDataTableRow& row) const {
  return QV_ASSERT(operand_) && !(*operand_)(row);
}

QVNotOfDataTableRowPred* QVNotOfDataTableRowPred::CreateCopy() const {
  return new QVNotOfDataTableRowPred(*this);
}

void QVNotOfDataTableRowPred::Evaluate(const QVRowNumbers& rows, unsigned char* holds) const {
  std::fill_n(holds, rows.size(), static_cast<unsigned char>(1));
  if (!QV_ASSERT(operand_)) return;
  operand_->Evaluate(rows, holds);
  for (std::size_t i = 0; i < rows.size(); ++i) holds[i] ^= 1;
}

QVAndOfDataTableRowPreds operator&&(const QVDataTableRowPredBase& first,
                                    const QVDataTableRowPredBase& second) {
  return QVAndOfDataTableRowPreds(first, second);
}

QVOrOfDataTableRowPreds operator||(const QVDataTableRowPredBase& first,
                                   const QVDataTableRowPredBase& second) {
  return QVOrOfDataTableRowPreds(first, second);
}

QVNotOfDataTableRowPred operator!(const QVDataTableRowPredBase& operand) {
  return QVNotOfDataTableRowPred(operand);
}

}  // namespace QVStats
