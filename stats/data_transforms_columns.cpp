#include "stats/api/data_transforms_columns.h"

#include <algorithm>
#include <array>
#include <type_traits>

#include "platform/system/text.h"

namespace QVStats {

using namespace QVStatsBadData;

namespace {

/// "Transform name(first argument, second argument, parameter)".
template <class GetNameOf>
std::string MakeName(const QVDataTransformBase& transform,
                     const std::vector<QVDataTableCol>& arguments, GetNameOf getName) {
  std::string name = transform.GetTransformName() + "(";
  const char* separator = "";
  const auto add = [&](const std::string& text) {
    name += separator + text;
    separator = ", ";
  };
  for (const QVDataTableCol& argument : arguments) add(getName(argument));
  for (const double parameter : transform.GetParameters())
    add(QVSystem::QVNumberToString(parameter));
  return name + ")";
}

std::string MakeShortName(const QVDataTransformBase& transform,
                          const std::vector<QVDataTableCol>& arguments) {
  return MakeName(transform, arguments,
                  [](const QVDataTableCol& column) { return column.GetColumnName(); });
}

std::string MakeFullName(const QVDataTransformBase& transform,
                         const std::vector<QVDataTableCol>& arguments) {
  return MakeName(transform, arguments,
                  [](const QVDataTableCol& column) { return column.GetFullColumnName(); });
}

const QVDataTableCol& GetFirst(const std::vector<QVDataTableCol>& arguments) {
  static const QVDataTableCol none;
  return arguments.empty() ? none : arguments.front();
}

std::vector<QVDataTableCol> AtLeastOne(const std::vector<QVDataTableCol>& arguments) {
  return arguments.empty() ? std::vector<QVDataTableCol>(1) : arguments;
}

/// The cells of the argument columns, as the arguments of a transform of one, of two and of any
/// number. Read calls evaluate(arguments...); `get` is a member function of QVDataTableCol.
template <class Transform>
struct ArgumentsOf;
template <>
struct ArgumentsOf<QVSingleArgDataTransformBase> {
  const std::vector<QVDataTableCol>& columns;
  template <class Get, class Evaluate>
  auto Read(Get get, std::size_t row, std::size_t col, Evaluate evaluate) const {
    return evaluate((columns[0].*get)(row, col));
  }
};
template <>
struct ArgumentsOf<QVTwoArgsDataTransformBase> {
  const std::vector<QVDataTableCol>& columns;
  template <class Get, class Evaluate>
  auto Read(Get get, std::size_t row, std::size_t col, Evaluate evaluate) const {
    return evaluate((columns[0].*get)(row, col), (columns[1].*get)(row, col));
  }
};
template <>
struct ArgumentsOf<QVVecOfArgsDataTransformBase> {
  const std::vector<QVDataTableCol>& columns;
  template <class Value>
  std::vector<Value> Collect(Value (QVDataTableCol::*get)(std::size_t, std::size_t) const,
                             std::size_t row, std::size_t col) const {
    std::vector<Value> values;
    values.reserve(columns.size());
    for (const QVDataTableCol& column : columns) values.push_back((column.*get)(row, col));
    return values;
  }
  template <class Get, class Evaluate>
  auto Read(Get get, std::size_t row, std::size_t col, Evaluate evaluate) const {
    return evaluate(Collect(get, row, col));
  }
};

/// Calls evaluate(arguments...) with the cell's arguments in the type that the transform takes.
template <class Transform, class Evaluate>
auto EvaluateCell(const Transform& transform, const std::vector<QVDataTableCol>& columns,
                  std::size_t row, std::size_t col, Evaluate evaluate) {
  const ArgumentsOf<Transform> arguments{columns};
  switch (transform.DataTypeOfTransformArgument()) {
    case QVStatVarDataType::Unsigned:
      return arguments.Read(&QVDataTableCol::GetUnsigned, row, col, evaluate);
    case QVStatVarDataType::Integer:
      return arguments.Read(&QVDataTableCol::GetInt, row, col, evaluate);
    case QVStatVarDataType::String:
      return arguments.Read(&QVDataTableCol::GetString, row, col, evaluate);
    default:
      return arguments.Read(&QVDataTableCol::GetDouble, row, col, evaluate);
  }
}

bool TakesDoubles(const QVDataTransformBase& transform) {
  return transform.DataTypeOfTransformArgument() == QVStatVarDataType::Double;
}

/// Cells that are computed at a time: what nested transforms compute for each other stays in the
/// first-level cache.
constexpr std::size_t kBlock = 1024;

template <class Transform, class... Arguments>
void Apply(const Transform& transform, std::size_t n, double* values, Arguments... x) {
  transform.GetDoubles(x..., n, values);
}
template <class Transform, class... Arguments>
void Apply(const Transform& transform, std::size_t n, unsigned int* values, Arguments... x) {
  transform.GetUnsigneds(x..., n, values);
}

/// The values of a block of cells by a transform of doubles. The arguments stand in arrays of their
/// own, so that the loop of a transform can be vectorised.
template <class Value>
void EvaluateBlock(const QVSingleArgDataTransformBase& transform,
                   const std::vector<QVDataTableCol>& columns, const QVRowNumbers& rows,
                   std::size_t col, Value* values) {
  std::array<double, kBlock> x;
  columns[0].GetImpl()->GetDoubles(rows, col, x.data());
  Apply(transform, rows.size(), values, x.data());
}

template <class Value>
void EvaluateBlock(const QVTwoArgsDataTransformBase& transform,
                   const std::vector<QVDataTableCol>& columns, const QVRowNumbers& rows,
                   std::size_t col, Value* values) {
  std::array<double, kBlock> x;
  std::array<double, kBlock> y;
  columns[0].GetImpl()->GetDoubles(rows, col, x.data());
  columns[1].GetImpl()->GetDoubles(rows, col, y.data());
  Apply(transform, rows.size(), values, x.data(), y.data());
}

template <class Value>
void EvaluateBlock(const QVVecOfArgsDataTransformBase& transform,
                   const std::vector<QVDataTableCol>& columns, const QVRowNumbers& rows,
                   std::size_t col, Value* values) {
  const std::size_t n = rows.size();
  std::vector<double> cells(n * columns.size());
  for (std::size_t k = 0; k < columns.size(); ++k)
    columns[k].GetImpl()->GetDoubles(rows, col, &cells[k * n]);
  std::vector<double> ofRow(columns.size());
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t k = 0; k < ofRow.size(); ++k) ofRow[k] = cells[k * n + i];
    if constexpr (std::is_same_v<Value, double>)
      values[i] = transform.GetDouble(ofRow);
    else
      values[i] = transform.GetUnsigned(ofRow);
  }
}

}  // namespace

// What the three share.

QVTransformColBase::QVTransformColBase(const std::string& name, const std::string& fullName,
                                       const std::vector<QVDataTableCol>& arguments)
    : QVDataTableColBase(name, fullName, GetFirst(arguments).GetNumColumnsInCol(),
                         GetFirst(arguments).ColIsLowerTriangular(),
                         GetFirst(arguments).ColIsSparse()),
      arguments_(AtLeastOne(arguments)) {
  SetColReadOnly();
}

unsigned int QVTransformColBase::IndexOfStringInListOfPossibleValues(
    const std::string& text) const {
  const std::vector<std::string> outcomes = GetTransform().GetOutcomes();
  const auto at = std::find(outcomes.begin(), outcomes.end(), text);
  return at == outcomes.end() ? BadUnsigned : static_cast<unsigned int>(at - outcomes.begin());
}

void QVTransformColBase::PushBackUnsigned(unsigned int) {}
void QVTransformColBase::PushBackInt(int) {}
void QVTransformColBase::PushBackDouble(double) {}
void QVTransformColBase::PushBackString(const std::string&) {}
void QVTransformColBase::FinishAddingVars() {}

unsigned int QVTransformColBase::GetStatVariableType() const {
  return GetTransform().StatVarTypeOfTransformResult();
}

unsigned int QVTransformColBase::GetStatVarDataType() const {
  return GetTransform().DataTypeOfTransformResult();
}

std::vector<std::string> QVTransformColBase::GetUniqueDiscreteValues() const {
  return GetTransform().GetOutcomes();
}

std::string QVTransformColBase::PrintUniqueDiscreteValues(std::size_t limit) const {
  const std::vector<std::string> outcomes = GetTransform().GetOutcomes();
  if (!outcomes.empty()) {
    QVDataTableColOfNominals categories("", "", outcomes.size(), 1, false);
    for (const std::string& outcome : outcomes) categories.PushBackString(outcome);
    categories.FinishAddingVars();
    return categories.PrintUniqueDiscreteValues(limit);
  }
  std::vector<double> values;
  const QVRowNumbers rows(std::size_t{0}, GetTotalNumRowsInCol());
  std::vector<double> ofColumn(rows.size());
  for (std::size_t c = 0; c < GetNumColumnsInCol(); ++c) {
    GetDoubles(rows, c, ofColumn.data());
    values.insert(values.end(), ofColumn.begin(), ofColumn.end());
  }
  return QVDataTableColOfRatioVars("", "", std::move(values), 1, false)
      .PrintUniqueDiscreteValues(limit);
}

bool QVTransformColBase::RowColIndexIsBad(std::size_t row, std::size_t col) const {
  return arguments_.front().RowColIndexIsBad(row, col);
}

bool QVTransformColBase::RowColHasMissingData(std::size_t row, std::size_t col) const {
  return arguments_.front().RowColHasMissingData(row, col);
}

bool QVTransformColBase::RowColHasBadData(std::size_t row, std::size_t col) const {
  return arguments_.front().RowColHasBadData(row, col);
}

void QVTransformColBase::GetCellStates(const QVRowNumbers& rows, std::size_t col,
                                       QVCellState* states) const {
  arguments_.front().GetImpl()->GetCellStates(rows, col, states);
}

bool QVTransformColBase::AnyArgumentIsAbsent(std::size_t row, std::size_t col) const {
  return std::any_of(arguments_.begin(), arguments_.end(), [=](const QVDataTableCol& argument) {
    return argument.RowColIndexIsBad(row, col);
  });
}

bool QVTransformColBase::AllArgumentsExist(const QVRowNumbers& rows, std::size_t col) const {
  if (rows.size() == 0) return true;
  // Element indices grow with the row, so the highest row decides for all.
  std::size_t highest = rows[rows.size() - 1];
  if (!rows.IsRange())
    for (std::size_t i = 0; i < rows.size(); ++i) highest = std::max(highest, rows[i]);
  return !AnyArgumentIsAbsent(highest, col);
}

unsigned int QVTransformColBase::GetUnsigned(std::size_t row, std::size_t col) const {
  return AnyArgumentIsAbsent(row, col) ? BadIndexUnsigned : EvaluateUnsigned(row, col);
}

int QVTransformColBase::GetInt(std::size_t row, std::size_t col) const {
  return AnyArgumentIsAbsent(row, col) ? BadIndexInt : EvaluateInt(row, col);
}

double QVTransformColBase::GetDouble(std::size_t row, std::size_t col) const {
  return AnyArgumentIsAbsent(row, col) ? BadIndexDouble : EvaluateDouble(row, col);
}

std::string QVTransformColBase::GetString(std::size_t row, std::size_t col) const {
  if (!AnyArgumentIsAbsent(row, col)) return EvaluateString(row, col);
  return GetStatVariableType() == QVStatVariableType::Nominal ? BadIndexToLookupTableName
                                                              : BadIndexDoubleName;
}

void QVTransformColBase::GetDoubles(const QVRowNumbers& rows, std::size_t col,
                                    double* values) const {
  for (std::size_t from = 0; from < rows.size(); from += kBlock) {
    const QVRowNumbers block = rows.Slice(from, std::min(kBlock, rows.size() - from));
    if (AllArgumentsExist(block, col))
      EvaluateDoubles(block, col, values + from);
    else
      QVDataTableColBase::GetDoubles(block, col, values + from);
  }
}

void QVTransformColBase::GetUnsigneds(const QVRowNumbers& rows, std::size_t col,
                                      unsigned int* values) const {
  for (std::size_t from = 0; from < rows.size(); from += kBlock) {
    const QVRowNumbers block = rows.Slice(from, std::min(kBlock, rows.size() - from));
    if (AllArgumentsExist(block, col))
      EvaluateUnsigneds(block, col, values + from);
    else
      QVDataTableColBase::GetUnsigneds(block, col, values + from);
  }
}

// Evaluation, of one cell and of a block of rows.

template <class Transform>
QVTransformColOf<Transform>::QVTransformColOf(const Transform& transform, const std::string& name,
                                              const std::string& fullName,
                                              const std::vector<QVDataTableCol>& arguments)
    : QVTransformColBase(name, fullName, arguments), transform_(transform.CreateCopy()) {}

template <class Transform>
unsigned int QVTransformColOf<Transform>::EvaluateUnsigned(std::size_t row, std::size_t col) const {
  return EvaluateCell(*transform_, GetArguments(), row, col, [&](const auto&... arguments) {
    return transform_->GetUnsigned(arguments...);
  });
}

template <class Transform>
int QVTransformColOf<Transform>::EvaluateInt(std::size_t row, std::size_t col) const {
  return EvaluateCell(*transform_, GetArguments(), row, col,
                      [&](const auto&... arguments) { return transform_->GetInt(arguments...); });
}

template <class Transform>
double QVTransformColOf<Transform>::EvaluateDouble(std::size_t row, std::size_t col) const {
  return EvaluateCell(*transform_, GetArguments(), row, col, [&](const auto&... arguments) {
    return transform_->GetDouble(arguments...);
  });
}

template <class Transform>
std::string QVTransformColOf<Transform>::EvaluateString(std::size_t row, std::size_t col) const {
  return EvaluateCell(*transform_, GetArguments(), row, col, [&](const auto&... arguments) {
    return transform_->GetString(arguments...);
  });
}

template <class Transform>
void QVTransformColOf<Transform>::EvaluateDoubles(const QVRowNumbers& rows, std::size_t col,
                                                  double* values) const {
  if (!TakesDoubles(*transform_)) return QVDataTableColBase::GetDoubles(rows, col, values);
  EvaluateBlock(*transform_, GetArguments(), rows, col, values);
}

template <class Transform>
void QVTransformColOf<Transform>::EvaluateUnsigneds(const QVRowNumbers& rows, std::size_t col,
                                                    unsigned int* values) const {
  if (!TakesDoubles(*transform_)) return QVDataTableColBase::GetUnsigneds(rows, col, values);
  EvaluateBlock(*transform_, GetArguments(), rows, col, values);
}

template class QVTransformColOf<QVSingleArgDataTransformBase>;
template class QVTransformColOf<QVTwoArgsDataTransformBase>;
template class QVTransformColOf<QVVecOfArgsDataTransformBase>;

// One column.

QVSingleArgColTransform::QVSingleArgColTransform(const QVSingleArgDataTransformBase& transform,
                                                 const QVDataTableCol& argument)
    : QVSingleArgColTransform(transform, MakeShortName(transform, {argument}),
                              MakeFullName(transform, {argument}), argument) {}

QVSingleArgColTransform::QVSingleArgColTransform(const QVSingleArgDataTransformBase& transform,
                                                 const std::string& name,
                                                 const std::string& fullName,
                                                 const QVDataTableCol& argument)
    : QVTransformColOf(transform, name, fullName, {argument}) {}

std::size_t QVSingleArgColTransform::GetNumUniqueDiscreteValues() const {
  return GetArguments().front().GetNumUniqueDiscreteValues();
}

// Two columns.

QVTransformTwoColsIntoOne::QVTransformTwoColsIntoOne(const QVTwoArgsDataTransformBase& transform,
                                                     const QVDataTableCol& first,
                                                     const QVDataTableCol& second)
    : QVTransformTwoColsIntoOne(transform, MakeShortName(transform, {first, second}),
                                MakeFullName(transform, {first, second}), first, second) {}

QVTransformTwoColsIntoOne::QVTransformTwoColsIntoOne(const QVTwoArgsDataTransformBase& transform,
                                                     const std::string& name,
                                                     const std::string& fullName,
                                                     const QVDataTableCol& first,
                                                     const QVDataTableCol& second)
    : QVTransformColOf(transform, name, fullName, {first, second}) {}

// Any number of columns.

QVTransformVecOfColsIntoOne::QVTransformVecOfColsIntoOne(
    const QVVecOfArgsDataTransformBase& transform, const std::vector<QVDataTableCol>& arguments)
    : QVTransformVecOfColsIntoOne(transform, MakeShortName(transform, arguments),
                                  MakeFullName(transform, arguments), arguments) {}

QVTransformVecOfColsIntoOne::QVTransformVecOfColsIntoOne(
    const QVVecOfArgsDataTransformBase& transform, const std::string& name,
    const std::string& fullName, const std::vector<QVDataTableCol>& arguments)
    : QVTransformColOf(transform, name, fullName, arguments) {}

std::size_t QVTransformVecOfColsIntoOne::GetNumUniqueDiscreteValues() const {
  std::vector<double> values(GetTotalNumRowsInCol());
  GetDoubles(QVRowNumbers(std::size_t{0}, values.size()), 0, values.data());
  return QVDataTableColOfRatioVars("", "", std::move(values), 1, false)
      .GetNumUniqueDiscreteValues();
}

bool QVTransformVecOfColsIntoOne::RowColIndexIsBad(std::size_t row, std::size_t col) const {
  return std::any_of(
      GetArguments().begin(), GetArguments().end(),
      [=](const QVDataTableCol& argument) { return argument.RowColIndexIsBad(row, col); });
}

bool QVTransformVecOfColsIntoOne::RowColHasMissingData(std::size_t row, std::size_t col) const {
  return std::any_of(
      GetArguments().begin(), GetArguments().end(),
      [=](const QVDataTableCol& argument) { return argument.RowColHasMissingData(row, col); });
}

bool QVTransformVecOfColsIntoOne::RowColHasBadData(std::size_t row, std::size_t col) const {
  return std::any_of(
      GetArguments().begin(), GetArguments().end(),
      [=](const QVDataTableCol& argument) { return argument.RowColHasBadData(row, col); });
}

void QVTransformVecOfColsIntoOne::GetCellStates(const QVRowNumbers& rows, std::size_t col,
                                                QVCellState* states) const {
  QVDataTableColBase::GetCellStates(rows, col, states);
}

using Arguments = ArgumentsOf<QVVecOfArgsDataTransformBase>;

std::vector<unsigned int> QVTransformVecOfColsIntoOne::GetVecOfUnsigneds(std::size_t row,
                                                                         std::size_t col) const {
  return Arguments{GetArguments()}.Collect(&QVDataTableCol::GetUnsigned, row, col);
}

std::vector<int> QVTransformVecOfColsIntoOne::GetVecOfInts(std::size_t row, std::size_t col) const {
  return Arguments{GetArguments()}.Collect(&QVDataTableCol::GetInt, row, col);
}

std::vector<double> QVTransformVecOfColsIntoOne::GetVecOfDoubles(std::size_t row,
                                                                 std::size_t col) const {
  return Arguments{GetArguments()}.Collect(&QVDataTableCol::GetDouble, row, col);
}

std::vector<std::string> QVTransformVecOfColsIntoOne::GetVecOfStrings(std::size_t row,
                                                                      std::size_t col) const {
  return Arguments{GetArguments()}.Collect(&QVDataTableCol::GetString, row, col);
}

// The operators on columns.

namespace {

const std::vector<std::string> kOutcomes = {"False", "True"};

}  // namespace

QVDataTableCol operator+(const QVDataTableCol& column, double x) {
  return QVDataTableCol(QVAddAScalarDataTransform(x), column);
}
QVDataTableCol operator+(double x, const QVDataTableCol& column) { return column + x; }
QVDataTableCol operator-(const QVDataTableCol& column, double x) {
  return QVDataTableCol(QVSubtractAScalarDataTransform(x), column);
}
QVDataTableCol operator-(double x, const QVDataTableCol& column) {
  return QVDataTableCol(QVSubtractFromAScalarDataTransform(x), column);
}
QVDataTableCol operator*(const QVDataTableCol& column, double x) {
  return QVDataTableCol(QVMultiplyByScalarDataTransform(x), column);
}
QVDataTableCol operator*(double x, const QVDataTableCol& column) { return column * x; }
QVDataTableCol operator/(const QVDataTableCol& column, double x) {
  return QVDataTableCol(QVDivideByScalarDataTransform(x), column);
}
QVDataTableCol operator/(double x, const QVDataTableCol& column) {
  return QVDataTableCol(QVDivideIntoScalarDataTransform(x), column);
}
QVDataTableCol operator+(const QVDataTableCol& first, const QVDataTableCol& second) {
  return QVDataTableCol(QVSumOfTwoDoubles(), first, second);
}
QVDataTableCol operator-(const QVDataTableCol& first, const QVDataTableCol& second) {
  return QVDataTableCol(QVDifferenceOfTwoDoubles(), first, second);
}
QVDataTableCol operator*(const QVDataTableCol& first, const QVDataTableCol& second) {
  return QVDataTableCol(QVProductOfTwoDoubles(), first, second);
}
QVDataTableCol operator/(const QVDataTableCol& first, const QVDataTableCol& second) {
  return QVDataTableCol(QVRatioOfTwoDoubles(), first, second);
}

QVDataTableCol QVSqrt(const QVDataTableCol& column) {
  return QVDataTableCol(QVSqrtDataTransform(), column);
}
QVDataTableCol QVLog(const QVDataTableCol& column) {
  return QVDataTableCol(QVLogDataTransform(), column);
}
QVDataTableCol QVAbsoluteValue(const QVDataTableCol& column) {
  return QVDataTableCol(QVAbsoluteValueDataTransform(), column);
}
QVDataTableCol QVLogistic(const QVDataTableCol& column, double low, double high, double epsilon) {
  return QVDataTableCol(QVLogisticDataTransform(low, high, epsilon), column);
}
QVDataTableCol QVAverage(const std::vector<QVDataTableCol>& columns) {
  return QVDataTableCol(QVAveOfVecOfDoubles(), columns);
}
QVDataTableCol QVVariance(const std::vector<QVDataTableCol>& columns) {
  return QVDataTableCol(QVVarianceOfVecOfDoubles(), columns);
}
QVDataTableCol QVRange(const std::vector<QVDataTableCol>& columns) {
  return QVDataTableCol(QVRangeOfVecOfDoubles(), columns);
}

QVDataTableCol operator>(const QVDataTableCol& column, double x) {
  return QVDataTableCol(QVArgGreaterThanScalar(kOutcomes, x), column);
}
QVDataTableCol operator>=(const QVDataTableCol& column, double x) {
  return QVDataTableCol(QVArgGreaterEqualToScalar(kOutcomes, x), column);
}
QVDataTableCol operator==(const QVDataTableCol& column, double x) {
  return QVDataTableCol(QVArgEqualToScalar(kOutcomes, x), column);
}
QVDataTableCol operator<=(const QVDataTableCol& column, double x) {
  return QVDataTableCol(QVArgLessEqualToScalar(kOutcomes, x), column);
}
QVDataTableCol operator<(const QVDataTableCol& column, double x) {
  return QVDataTableCol(QVArgLessThanScalar(kOutcomes, x), column);
}
QVDataTableCol operator>(const QVDataTableCol& first, const QVDataTableCol& second) {
  return QVDataTableCol(QVArgOneGreaterThanArgTwo(kOutcomes), first, second);
}
QVDataTableCol operator>=(const QVDataTableCol& first, const QVDataTableCol& second) {
  return QVDataTableCol(QVArgOneGreaterEqualToArgTwo(kOutcomes), first, second);
}
QVDataTableCol operator==(const QVDataTableCol& first, const QVDataTableCol& second) {
  return QVDataTableCol(QVArgOneEqualToArgTwo(kOutcomes), first, second);
}
QVDataTableCol operator<=(const QVDataTableCol& first, const QVDataTableCol& second) {
  return QVDataTableCol(QVArgOneLessEqualToArgTwo(kOutcomes), first, second);
}
QVDataTableCol operator<(const QVDataTableCol& first, const QVDataTableCol& second) {
  return QVDataTableCol(QVArgOneLessThanArgTwo(kOutcomes), first, second);
}

}  // namespace QVStats
