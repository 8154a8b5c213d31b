/// \file
/// \brief Conditions on the rows of a table: tests of one cell, and their combinations.
///
///     const QVDataTable light("light", table, QVRowColWithinInclDoubleRange(0, 300, weight, 0) &&
///                                                 !QVRowColEqualsString("salt", kind, 0));
///
/// A missing, bad or nonexistent cell is compared as the sentinel that its read gives.
#ifndef QVSTATS_API_DATA_TABLE_ROW_PREDICATES_H
#define QVSTATS_API_DATA_TABLE_ROW_PREDICATES_H

#include <cmath>
#include <cstddef>
#include <string>
#include <vector>

#include "platform/system/copy_ptr.h"
#include "platform/system/functors.h"
#include "stats/api/data_table.h"
#include "stats/api/export.h"

namespace QVStats {

/// A condition on a row.
class QVSTATS_EXPORT QVDataTableRowPredBase : public QVSystem::QVUnaryPredicate<QVDataTableRow> {
 public:
  ~QVDataTableRowPredBase() override;
  bool operator()(const QVDataTableRow& row) const override = 0;
  /// A new copy that the caller owns.
  QVDataTableRowPredBase* CreateCopy() const override = 0;

  /// holds[i] tells whether the condition holds for rows[i], 1 or 0, as single calls would tell.
  virtual void Evaluate(const QVRowNumbers& rows, unsigned char* holds) const;
  /// Whether the condition may be evaluated for rows that no one asked about, since that has no
  /// effect: a combination then evaluates whole columns at a time.
  virtual bool IsFreeOfEffects() const { return false; }
  /// The rows for which the condition holds, in order.
  std::vector<std::size_t> Select(const QVRowNumbers& rows) const;
};

/// What the tests of a cell share: a column and the index of the value within its row. The cell is
/// read as a `Value` (unsigned int, int, double or std::string) and given to `Test::Holds`.
template <class Test, class Value>
class QVSTATS_EXPORT QVRowColPredOf : public QVDataTableRowPredBase {
 public:
  bool operator()(const QVDataTableRow& row) const override;
  QVRowColPredOf* CreateCopy() const override;
  void Evaluate(const QVRowNumbers& rows, unsigned char* holds) const override;
  /// False where reading the cells may be a fatal report: numbers that may not fit `Value`.
  bool IsFreeOfEffects() const override;

 protected:
  /// The null column.
  QVRowColPredOf() = default;
  QVRowColPredOf(const QVDataTableCol& column, std::size_t j) : column_(column), j_(j) {}

 private:
  QVDataTableCol column_;
  std::size_t j_ = 0;
};

/// cell == value. By default the value is 0 or "" and the column the null column.
template <class Value>
class QVSTATS_EXPORT QVRowColEquals : public QVRowColPredOf<QVRowColEquals<Value>, Value> {
 public:
  QVRowColEquals() = default;
  QVRowColEquals(const Value& value, const QVDataTableCol& column, std::size_t j)
      : QVRowColPredOf<QVRowColEquals, Value>(column, j), value_(value) {}
  template <class Cell>
  bool Holds(const Cell& cell) const {
    return cell == value_;
  }

 private:
  Value value_{};
};

using QVRowColEqualsUnsigned = QVRowColEquals<unsigned int>;
using QVRowColEqualsInt = QVRowColEquals<int>;
using QVRowColEqualsString = QVRowColEquals<std::string>;

/// |cell - value| < tolerance. By default both are 0, so that it never holds.
class QVSTATS_EXPORT QVRowColEqualsDouble : public QVRowColPredOf<QVRowColEqualsDouble, double> {
 public:
  QVRowColEqualsDouble() = default;
  QVRowColEqualsDouble(double value, const QVDataTableCol& column, std::size_t j, double tolerance)
      : QVRowColPredOf(column, j), value_(value), tolerance_(tolerance) {}
  bool Holds(double cell) const { return std::abs(cell - value_) < tolerance_; }

 private:
  double value_ = 0.0;
  double tolerance_ = 0.0;
};

/// low <= cell <= high; texts in byte-wise order. By default the bounds are 0 or "".
template <class Value>
class QVSTATS_EXPORT QVRowColWithinInclRange
    : public QVRowColPredOf<QVRowColWithinInclRange<Value>, Value> {
 public:
  QVRowColWithinInclRange() = default;
  QVRowColWithinInclRange(const Value& low, const Value& high, const QVDataTableCol& column,
                          std::size_t j)
      : QVRowColPredOf<QVRowColWithinInclRange, Value>(column, j), low_(low), high_(high) {}
  template <class Cell>
  bool Holds(const Cell& cell) const {
    const bool notBelow = low_ <= cell;
    const bool notAbove = cell <= high_;
    return notBelow & notAbove;
  }

 private:
  Value low_{};
  Value high_{};
};

using QVRowColWithinInclUnsignedRange = QVRowColWithinInclRange<unsigned int>;
using QVRowColWithinInclIntRange = QVRowColWithinInclRange<int>;
using QVRowColWithinInclDoubleRange = QVRowColWithinInclRange<double>;
using QVRowColWithinInclStringRange = QVRowColWithinInclRange<std::string>;

// Instantiated in the library.
extern template class QVRowColPredOf<QVRowColEqualsUnsigned, unsigned int>;
extern template class QVRowColPredOf<QVRowColEqualsInt, int>;
extern template class QVRowColPredOf<QVRowColEqualsDouble, double>;
extern template class QVRowColPredOf<QVRowColEqualsString, std::string>;
extern template class QVRowColPredOf<QVRowColWithinInclUnsignedRange, unsigned int>;
extern template class QVRowColPredOf<QVRowColWithinInclIntRange, int>;
extern template class QVRowColPredOf<QVRowColWithinInclDoubleRange, double>;
extern template class QVRowColPredOf<QVRowColWithinInclStringRange, std::string>;

/// Both hold; the second is not evaluated where the first does not hold. A combination owns copies
/// of its operands; one made without operands must not be evaluated.
class QVSTATS_EXPORT QVAndOfDataTableRowPreds : public QVDataTableRowPredBase {
 public:
  QVAndOfDataTableRowPreds() = default;
  QVAndOfDataTableRowPreds(const QVDataTableRowPredBase& first,
                           const QVDataTableRowPredBase& second);
  bool operator()(const QVDataTableRow& row) const override;
  QVAndOfDataTableRowPreds* CreateCopy() const override;
  void Evaluate(const QVRowNumbers& rows, unsigned char* holds) const override;
  bool IsFreeOfEffects() const override {
    return first_ && second_ && first_->IsFreeOfEffects() && second_->IsFreeOfEffects();
  }

 private:
  QVSystem::QVCopyPtr<QVDataTableRowPredBase> first_;
  QVSystem::QVCopyPtr<QVDataTableRowPredBase> second_;
};

/// At least one holds; the second is not evaluated where the first holds.
class QVSTATS_EXPORT QVOrOfDataTableRowPreds : public QVDataTableRowPredBase {
 public:
  QVOrOfDataTableRowPreds() = default;
  QVOrOfDataTableRowPreds(const QVDataTableRowPredBase& first,
                          const QVDataTableRowPredBase& second);
  bool operator()(const QVDataTableRow& row) const override;
  QVOrOfDataTableRowPreds* CreateCopy() const override;
  void Evaluate(const QVRowNumbers& rows, unsigned char* holds) const override;
  bool IsFreeOfEffects() const override {
    return first_ && second_ && first_->IsFreeOfEffects() && second_->IsFreeOfEffects();
  }

 private:
  QVSystem::QVCopyPtr<QVDataTableRowPredBase> first_;
  QVSystem::QVCopyPtr<QVDataTableRowPredBase> second_;
};

class QVSTATS_EXPORT QVNotOfDataTableRowPred : public QVDataTableRowPredBase {
 public:
  QVNotOfDataTableRowPred() = default;
  explicit QVNotOfDataTableRowPred(const QVDataTableRowPredBase& operand);
  bool operator()(const QVDataTableRow& row) const override;
  QVNotOfDataTableRowPred* CreateCopy() const override;
  void Evaluate(const QVRowNumbers& rows, unsigned char* holds) const override;
  bool IsFreeOfEffects() const override { return operand_ && operand_->IsFreeOfEffects(); }

 private:
  QVSystem::QVCopyPtr<QVDataTableRowPredBase> operand_;
};

QVSTATS_EXPORT QVAndOfDataTableRowPreds operator&&(const QVDataTableRowPredBase& first,
                                                   const QVDataTableRowPredBase& second);
QVSTATS_EXPORT QVOrOfDataTableRowPreds operator||(const QVDataTableRowPredBase& first,
                                                  const QVDataTableRowPredBase& second);
QVSTATS_EXPORT QVNotOfDataTableRowPred operator!(const QVDataTableRowPredBase& operand);

}  // namespace QVStats

#endif  // QVSTATS_API_DATA_TABLE_ROW_PREDICATES_H
