#include "stats/api/data_table_column.h"

#include <sstream>

#include "platform/system/cast.h"
#include "platform/system/text.h"
#include "stats/api/data_table.h"
#include "stats/api/data_transforms_columns.h"
#include "stats/failure.h"

namespace QVStats {

using namespace QVStatModelFailureType;

namespace {

using QVStatVariableType::Identifier;
using QVStatVariableType::Interval;
using QVStatVariableType::Nominal;
using QVStatVariableType::Ratio;

/// What every append asks first: an open column of a level that stores values.
QVStatModelResult CheckTakesValues(const QVDataTableCol& column, const char* where) {
  if (column.ColIsReadOnly()) return QVFailure(VariableIsReadOnly, where);
  const unsigned int level = column.GetStatVariableType();
  const bool stores =
      level == Nominal || level == Interval || level == Ratio || level == Identifier;
  return stores ? QVStatModelResult(true) : QVFailure(ColumnHasWrongDataType, where);
}

/// The failure of a checked append that met a column of another kind.
QVStatModelResult FailKind(const char* where, const char* kind, unsigned int level,
                           const char* kindOfInterval = "ints") {
  const std::string takes = level == Nominal ? "Nominal Var accepts only strings!"
                            : level == Interval
                                ? "Interval Var accepts only " + std::string(kindOfInterval) + "!"
                            : level == Ratio ? "Ratio Var accepts only doubles!"
                                             : "Identifier Var accepts only strings!";
  return QVFailure(ArgumentTypeWrong, where) << "Tried adding " << kind << ", but " << takes;
}

template <class Number>
std::string ToText(Number value) {
  std::ostringstream text;
  text << value;
  return text.str();
}

int ToInt(unsigned int value) { return QVSystem::QVIntFromUnsignedChecked(value); }
int ToInt(int value) { return value; }
int ToInt(double value) { return QVSystem::QVIntFromDoubleChecked(value); }

/// The converting append of a number.
template <class Number>
QVStatModelResult ConvertAndAppend(QVDataTableCol& column, Number value, const char* where) {
  const QVStatModelResult check = CheckTakesValues(column, where);
  if (check.NotSuccessful()) return check;
  switch (column.GetStatVariableType()) {
    case Nominal:
      return QVCalledFrom(where, QVAppendStringToCol(column, ToText(value)));
    case Interval:
      column.GetImpl()->PushBackInt(ToInt(value));
      return true;
    case Ratio:
      column.GetImpl()->PushBackDouble(static_cast<double>(value));
      return true;
    default:
      // The text is stored, and the kind is reported all the same.
      column.GetImpl()->PushBackString(ToText(value));
      return QVFailure(ColumnHasWrongDataType, where);
  }
}

QVDataTableColBase* MakeWithCategories(const std::string& name, const std::string& fullName,
                                       unsigned int level,
                                       const std::vector<std::string>& possibleValues,
                                       std::size_t numRows, std::size_t numColumnsInCol,
                                       bool lowerTriangular) {
  if (possibleValues.empty())
    return QVGetDataTableCol(name, fullName, level, numRows, numColumnsInCol, lowerTriangular);
  if (level != Nominal) return new QVNullDataTableCol(name, fullName);
  return new QVDataTableColOfNominals(name, fullName, possibleValues, numRows, numColumnsInCol,
                                      lowerTriangular);
}

}  // namespace

// The handle.

QVDataTableCol::QVDataTableCol() : QVDataTableCol("NullColumn", "NullColumn") {}
QVDataTableCol::QVDataTableCol(const std::string& name, const std::string& fullName)
    : column_(std::make_shared<QVNullDataTableCol>(name, fullName)) {}
QVDataTableCol::QVDataTableCol(std::unique_ptr<QVDataTableColBase> column)
    : column_(std::move(column)) {}
QVDataTableCol::QVDataTableCol(const std::string& name, unsigned int level, std::size_t numRows,
                               std::size_t numColumnsInCol, bool lowerTriangular)
    : QVDataTableCol(name, name, level, numRows, numColumnsInCol, lowerTriangular) {}
QVDataTableCol::QVDataTableCol(const std::string& name, const std::string& fullName,
                               unsigned int level, std::size_t numRows, std::size_t numColumnsInCol,
                               bool lowerTriangular)
    : column_(QVGetDataTableCol(name, fullName, level, numRows, numColumnsInCol, lowerTriangular)) {
}
QVDataTableCol::QVDataTableCol(const std::string& name, const std::vector<double>& values,
                               std::size_t numColumnsInCol, bool lowerTriangular)
    : column_(std::make_shared<QVDataTableColOfRatioVars>(name, name, values, numColumnsInCol,
                                                          lowerTriangular)) {}
QVDataTableCol::QVDataTableCol(const std::string& name, const std::string& fullName,
                               unsigned int level, std::size_t numRows,
                               const std::vector<QVRowColValue>& entries,
                               std::size_t numColumnsInCol, bool lowerTriangular)
    : column_(QVGetDataTableCol(name, fullName, level, numRows, entries, numColumnsInCol,
                                lowerTriangular)) {}
QVDataTableCol::QVDataTableCol(const std::string& name, unsigned int level,
                               const std::vector<std::string>& possibleValues, std::size_t numRows,
                               std::size_t numColumnsInCol, bool lowerTriangular)
    : QVDataTableCol(name, name, level, possibleValues, numRows, numColumnsInCol, lowerTriangular) {
}
QVDataTableCol::QVDataTableCol(const std::string& name, const std::string& fullName,
                               unsigned int level, const std::vector<std::string>& possibleValues,
                               std::size_t numRows, std::size_t numColumnsInCol,
                               bool lowerTriangular)
    : column_(MakeWithCategories(name, fullName, level, possibleValues, numRows, numColumnsInCol,
                                 lowerTriangular)) {}
QVDataTableCol::QVDataTableCol(const QVSingleArgDataTransformBase& transform,
                               const QVDataTableCol& column)
    : column_(std::make_shared<QVSingleArgColTransform>(transform, column)) {}
QVDataTableCol::QVDataTableCol(const QVTwoArgsDataTransformBase& transform,
                               const QVDataTableCol& first, const QVDataTableCol& second)
    : column_(std::make_shared<QVTransformTwoColsIntoOne>(transform, first, second)) {}
QVDataTableCol::QVDataTableCol(const QVVecOfArgsDataTransformBase& transform,
                               const std::vector<QVDataTableCol>& columns)
    : column_(std::make_shared<QVTransformVecOfColsIntoOne>(transform, columns)) {}

std::string QVDataTableCol::PrintSummaryPlusStartOfData(std::size_t maxRows,
                                                        std::size_t maxCols) const {
  return column_->PrintSummaryPlusStartOfData(maxRows, maxCols);
}
std::string QVDataTableCol::PrintSummaryPlusStartOfData(const QVDataTable& table,
                                                        std::size_t maxRows,
                                                        std::size_t maxCols) const {
  return column_->PrintSummaryPlusStartOfData(table, maxRows, maxCols);
}
std::string QVDataTableCol::PrintSummaryPlusStartOfData(QVSystem::QVIter<const QVDataTableRow> rows,
                                                        std::size_t maxRows,
                                                        std::size_t maxCols) const {
  return column_->PrintSummaryPlusStartOfData(std::move(rows), maxRows, maxCols);
}

std::vector<double> QVDataTableCol::GetDoubles(const QVRowNumbers& rows, std::size_t col) const {
  std::vector<double> values(rows.size());
  column_->GetDoubles(rows, col, values.data());
  return values;
}

std::vector<QVCellState> QVDataTableCol::GetCellStates(const QVRowNumbers& rows,
                                                       std::size_t col) const {
  std::vector<QVCellState> states(rows.size());
  column_->GetCellStates(rows, col, states.data());
  return states;
}

void QVFinishAppendingVars(QVDataTableCol& column) { column.GetImpl()->FinishAddingVars(); }

// Checked appends.

QVStatModelResult QVAppendUnsignedToCol(QVDataTableCol& column, unsigned int value) {
  const char* const where = "QVAppendUnsignedToCol";
  const QVStatModelResult check = CheckTakesValues(column, where);
  if (check.NotSuccessful()) return check;
  if (column.GetStatVariableType() != Interval)
    return FailKind(where, "unsigned", column.GetStatVariableType());
  column.GetImpl()->PushBackInt(ToInt(value));
  return true;
}

QVStatModelResult QVAppendIntToCol(QVDataTableCol& column, int value) {
  const char* const where = "QVAppendIntToCol";
  const QVStatModelResult check = CheckTakesValues(column, where);
  if (check.NotSuccessful()) return check;
  if (column.GetStatVariableType() != Interval)
    return FailKind(where, "int", column.GetStatVariableType());
  column.GetImpl()->PushBackInt(value);
  return true;
}

QVStatModelResult QVAppendDoubleToCol(QVDataTableCol& column, double value) {
  const char* const where = "QVAppendDoubleToCol";
  const QVStatModelResult check = CheckTakesValues(column, where);
  if (check.NotSuccessful()) return check;
  if (column.GetStatVariableType() != Ratio)
    return FailKind(where, "double", column.GetStatVariableType());
  column.GetImpl()->PushBackDouble(value);
  return true;
}

QVStatModelResult QVAppendFloatToCol(QVDataTableCol& column, float value) {
  const char* const where = "QVAppendFloatToCol";
  const QVStatModelResult check = CheckTakesValues(column, where);
  if (check.NotSuccessful()) return check;
  if (column.GetStatVariableType() != Ratio)
    return FailKind(where, "float", column.GetStatVariableType(), "doubles");
  column.GetImpl()->PushBackDouble(static_cast<double>(value));
  return true;
}

QVStatModelResult QVAppendStringToCol(QVDataTableCol& column, const std::string& value) {
  const char* const where = "QVAppendStringToCol";
  const QVStatModelResult check = CheckTakesValues(column, where);
  if (check.NotSuccessful()) return check;
  const unsigned int level = column.GetStatVariableType();
  if (level == Interval || level == Ratio) return FailKind(where, "string", level);
  if (level == Identifier || column.GetNumUniqueDiscreteValues() == 0) {
    column.GetImpl()->PushBackString(value);
    return true;
  }
  const unsigned int code = column.GetImpl()->IndexOfStringInListOfPossibleValues(value);
  if (code == QVStatsBadData::BadUnsigned)
    return QVFailure(ArgumentOutOfRange, where)
           << "String " << value << " not found in list of unique nominal values";
  column.GetImpl()->PushBackUnsigned(code);
  return true;
}

QVStatModelResult QVAppendMissingDataToCol(QVDataTableCol& column) {
  const char* const where = "QVAppendMissingDataToCol";
  const QVStatModelResult check = CheckTakesValues(column, where);
  if (check.NotSuccessful()) return check;
  switch (column.GetStatVariableType()) {
    case Nominal:
      return QVCalledFrom(where, QVAppendStringToCol(column, QVStatsBadData::MissingString));
    case Interval:
      column.GetImpl()->PushBackInt(QVStatsBadData::MissingInt);
      return true;
    case Ratio:
      column.GetImpl()->PushBackDouble(QVStatsBadData::MissingDouble);
      return true;
    default:
      column.GetImpl()->PushBackString(QVStatsBadData::MissingString);
      return true;
  }
}

// Converting appends.

QVStatModelResult QVConvertUnsignedAndAppendToCol(QVDataTableCol& column, unsigned int value) {
  return ConvertAndAppend(column, value, "QVConvertUnsignedAndAppendToCol");
}

QVStatModelResult QVConvertIntAndAppendToCol(QVDataTableCol& column, int value) {
  return ConvertAndAppend(column, value, "QVConvertIntAndAppendToCol");
}

QVStatModelResult QVConvertDoubleAndAppendToCol(QVDataTableCol& column, double value) {
  return ConvertAndAppend(column, value, "QVConvertDoubleAndAppendToCol");
}

QVStatModelResult QVConvertFloatAndAppendToCol(QVDataTableCol& column, float value) {
  return ConvertAndAppend(column, static_cast<double>(value), "QVConvertFloatAndAppendToCol");
}

QVStatModelResult QVConvertStringAndAppendToCol(QVDataTableCol& column, const std::string& value) {
  const char* const where = "QVConvertStringAndAppendToCol";
  const QVStatModelResult check = CheckTakesValues(column, where);
  if (check.NotSuccessful()) return check;
  const unsigned int level = column.GetStatVariableType();
  const auto failParse = [&](const char* type) -> QVStatModelResult {
    return QVFailure(ArgumentValueWrong, where)
           << "Unable to parse field : " << value << " as " << type;
  };
  if (level == Interval) {
    int number = 0;
    if (!QVSystem::QVStringToNumber(value, number)) return failParse("an int!");
    column.GetImpl()->PushBackInt(number);
    return true;
  }
  if (level == Ratio) {
    double number = 0.0;
    if (!QVSystem::QVStringToNumber(value, number)) return failParse("a double!");
    column.GetImpl()->PushBackDouble(number);
    return true;
  }
  return QVCalledFrom(where, QVAppendStringToCol(column, value));
}

// Slices.

QVDataTableCol QVSliceColumn(const QVDataTableCol& column, std::size_t j) {
  const std::string name = "SliceCol_" + std::to_string(j) + "_From:" + column.GetColumnName();
  const std::size_t numRows = column.GetTotalNumRowsInCol();
  const unsigned int level = column.GetStatVariableType();
  if (level == QVStatVariableType::Unknown || level == QVStatVariableType::Ordinal)
    return QVDataTableCol();
  QVDataTableCol slice(
      name, level, level == Nominal ? column.GetUniqueDiscreteValues() : std::vector<std::string>(),
      numRows, 1, false);
  QVDataTableColBase& target = *slice.GetImpl();
  for (std::size_t r = 0; r < numRows; ++r) {
    if (level == Nominal) target.PushBackUnsigned(column.GetUnsigned(r, j));
    if (level == Interval) target.PushBackInt(column.GetInt(r, j));
    if (level == Ratio) target.PushBackDouble(column.GetDouble(r, j));
    if (level == Identifier) target.PushBackString(column.GetString(r, j));
  }
  return slice;
}

}  // namespace QVStats
