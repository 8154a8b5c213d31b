#include "stats/api/data_table_column_impl.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <sstream>

#include "stats/api/data_table.h"

namespace QVStats {

namespace {

using namespace QVStatsBadData;

/// What the classes of stored values differ in: sentinels, conversions, and the text of a cell that
/// does not exist.
template <class Value>
struct Traits;
template <>
struct Traits<int> {
  static constexpr int kMissing = MissingInt, kBad = BadInt;
  static const std::string& BadIndexText() { return BadIndexIntName; }
  static unsigned int ToUnsigned(int value) { return QVUnsignedFromInt(value); }
  static int ToInt(int value) { return value; }
  static double ToDouble(int value) { return QVDoubleFromInt(value); }
  static std::string ToString(int value) { return QVStringFromInt(value); }
};
template <>
struct Traits<double> {
  static constexpr double kMissing = MissingDouble, kBad = BadDouble;
  static const std::string& BadIndexText() { return BadIndexDoubleName; }
  static unsigned int ToUnsigned(double value) { return QVUnsignedFromDouble(value); }
  static int ToInt(double value) { return QVIntFromDouble(value); }
  static double ToDouble(double value) { return value; }
  static std::string ToString(double value) { return QVStringFromDouble(value); }
};
template <>
struct Traits<std::string> {
  static inline const std::string& kMissing = MissingString;
  static inline const std::string& kBad = BadString;
  static const std::string& BadIndexText() { return BadIndexString; }
  static unsigned int ToUnsigned(const std::string& value) { return QVUnsignedFromString(value); }
  static int ToInt(const std::string& value) { return QVIntFromString(value); }
  static double ToDouble(const std::string& value) { return QVDoubleFromString(value); }
  static const std::string& ToString(const std::string& value) { return value; }
};

std::size_t CountElements(std::size_t numRows, std::size_t numColumnsInCol, bool lowerTriangular) {
  return lowerTriangular ? numRows * (numRows + 1) / 2 : numRows * numColumnsInCol;
}

/// Where a lower triangle, row after row, keeps an element or its mirror image.
std::size_t GetTriangleIndex(std::size_t row, std::size_t col) {
  const std::size_t high = std::max(row, col);
  // The index of a row beyond 2^32 may not fit, and no such element can exist.
  return high >> 32 ? BadIndex : high * (high + 1) / 2 + std::min(row, col);
}

/// Room to reserve for a number of rows that the caller only expects.
std::size_t GetRoom(std::size_t numRows, std::size_t numColumnsInCol, bool lowerTriangular) {
  constexpr std::size_t kMaxRoom = std::size_t{1} << 28;
  if (numRows > kMaxRoom || (!lowerTriangular && numColumnsInCol > kMaxRoom)) return 0;
  return std::min(CountElements(numRows, numColumnsInCol, lowerTriangular), kMaxRoom);
}

/// Sorts ascending, not-a-numbers last, and removes repeats.
template <class Value>
void SortDistinct(std::vector<Value>& values) {
  std::sort(values.begin(), values.end());
  values.erase(std::unique(values.begin(), values.end()), values.end());
}
void SortDistinct(std::vector<double>& values) {
  const auto notANumber =
      std::partition(values.begin(), values.end(), [](double value) { return !std::isnan(value); });
  std::sort(values.begin(), notANumber);
  values.erase(std::unique(values.begin(), notANumber), notANumber);
}

constexpr const char* kIndent = "   ";

template <class GetTextOf>
std::string PrintDistinct(std::size_t size, std::size_t limit, GetTextOf getText) {
  std::ostringstream text;
  text << "Discrete Unique Values: \n" << kIndent;
  for (std::size_t i = 0; i < std::min(size, limit); ++i) {
    text << getText(i) << ' ';
    if (i % 10 == 9) text << '\n' << kIndent;
  }
  text << '\n';
  return text.str();
}

/// Appends the line of a row; \return false at the first cell that does not exist.
bool PrintRow(std::ostream& text, const QVDataTableColBase& col, std::size_t row,
              std::size_t numCols) {
  text << kIndent;
  for (std::size_t c = 0; c < numCols; ++c) {
    if (col.RowColIndexIsBad(row, c)) return false;
    text << col.GetString(row, c) << ' ';
  }
  text << '\n';
  return true;
}

}  // namespace

// The base.

QVDataTableColBase::QVDataTableColBase(const std::string& name, const std::string& fullName,
                                       std::size_t numColumnsInCol, bool lowerTriangular,
                                       bool sparse)
    : name_(name),
      fullName_(fullName),
      numColumnsInCol_(numColumnsInCol),
      lowerTriangular_(lowerTriangular),
      sparse_(sparse) {}

QVDataTableColBase::~QVDataTableColBase() = default;

std::size_t QVDataTableColBase::GetDataTableColIndex(std::size_t row, std::size_t col) const {
  if (col >= numColumnsInCol_) return BadIndex;
  if (lowerTriangular_) return GetTriangleIndex(row, col);
  if (row > (BadIndex - col) / numColumnsInCol_) return BadIndex;
  return row * numColumnsInCol_ + col;
}

std::size_t QVDataTableColBase::GetTotalNumRowsInCol() const {
  const std::size_t numElements = GetNumElementsInCol();
  if (numElements == 0 || numColumnsInCol_ == 0) return 0;
  return lowerTriangular_ ? numColumnsInCol_ : numElements / numColumnsInCol_;
}

bool QVDataTableColBase::RowColIndexIsBad(std::size_t row, std::size_t col) const {
  return GetDataTableColIndex(row, col) >= GetNumElementsInCol();
}

void QVDataTableColBase::GetUnsigneds(const QVRowNumbers& rows, std::size_t col,
                                      unsigned int* values) const {
  for (std::size_t i = 0; i < rows.size(); ++i) values[i] = GetUnsigned(rows[i], col);
}

void QVDataTableColBase::GetInts(const QVRowNumbers& rows, std::size_t col, int* values) const {
  for (std::size_t i = 0; i < rows.size(); ++i) values[i] = GetInt(rows[i], col);
}

void QVDataTableColBase::GetDoubles(const QVRowNumbers& rows, std::size_t col,
                                    double* values) const {
  for (std::size_t i = 0; i < rows.size(); ++i) values[i] = GetDouble(rows[i], col);
}

void QVDataTableColBase::GetCellStates(const QVRowNumbers& rows, std::size_t col,
                                       QVCellState* states) const {
  for (std::size_t i = 0; i < rows.size(); ++i)
    states[i] = RowColIndexIsBad(rows[i], col)       ? QVCellState::BadIndex
                : RowColHasMissingData(rows[i], col) ? QVCellState::Missing
                : RowColHasBadData(rows[i], col)     ? QVCellState::Bad
                                                     : QVCellState::Good;
}

void QVDataTableColBase::GetTexts(const QVRowNumbers& rows, std::size_t col,
                                  std::string_view* texts, std::vector<std::string>& buffer) const {
  buffer.resize(std::max(buffer.size(), rows.size()));
  for (std::size_t i = 0; i < rows.size(); ++i) texts[i] = buffer[i] = GetString(rows[i], col);
}

std::string QVDataTableColBase::PrintSummary() const {
  std::ostringstream text;
  text << std::string(52, '$') << '\n'
       << "Column Name: " << name_ << '\n'
       << "Full Column Name: " << fullName_ << '\n'
       << "Column Native Stat Var Type: " << QVStatVariableType::TypeName[GetStatVariableType()]
       << '\n'
       << "Column Native Data Type: " << QVStatVarDataType::TypeName[GetStatVarDataType()] << '\n';
  if (numColumnsInCol_ > 1) text << "Column is an array with " << numColumnsInCol_ << " columns\n";
  text << "Num rows in Column: " << GetTotalNumRowsInCol() << '\n';
  if (lowerTriangular_) text << "Column is a lower Triangular symmetric array\n";
  if (sparse_) text << "Column is a sparse array\n";
  if (readOnly_) text << "Column data is read only\n";
  return text.str();
}

std::string QVDataTableColBase::PrintSummaryPlusStartOfData(std::size_t maxRows,
                                                            std::size_t maxCols) const {
  std::vector<QVDataTableRow> rows;
  for (std::size_t r = 0; r < std::min(maxRows, GetTotalNumRowsInCol()); ++r) rows.emplace_back(r);
  return PrintSummaryPlusStartOfData(QVSystem::QVMakeIter<const QVDataTableRow>(rows), maxRows,
                                     maxCols);
}

std::string QVDataTableColBase::PrintSummaryPlusStartOfData(const QVDataTable& table,
                                                            std::size_t maxRows,
                                                            std::size_t maxCols) const {
  return PrintSummaryPlusStartOfData(table.GetRows(), maxRows, maxCols);
}

std::string QVDataTableColBase::PrintSummaryPlusStartOfData(
    QVSystem::QVIter<const QVDataTableRow> rows, std::size_t maxRows, std::size_t maxCols) const {
  std::ostringstream text;
  text << PrintSummary();
  const std::size_t numRows = std::min(maxRows, GetTotalNumRowsInCol());
  const std::size_t numCols = std::min(maxCols, numColumnsInCol_);
  if (numRows == 0 || numCols == 0) return text.str();
  text << "Start of Data in Col:\n";
  for (std::size_t printed = 0; rows && printed < numRows; ++rows, ++printed)
    if (!PrintRow(text, *this, rows->GetImpl()->GetRowNumber(), numCols)) break;
  return text.str();
}

// Columns of stored values.

template <class Value>
QVDataTableColOfValues<Value>::QVDataTableColOfValues(const std::string& name,
                                                      const std::string& fullName,
                                                      std::size_t numRows,
                                                      std::size_t numColumnsInCol,
                                                      bool lowerTriangular, bool sparse)
    : QVDataTableColBase(name, fullName, numColumnsInCol, lowerTriangular, sparse) {
  if (!sparse) values_.reserve(GetRoom(numRows, numColumnsInCol, lowerTriangular));
}

template <class Value>
unsigned int QVDataTableColOfValues<Value>::IndexOfStringInListOfPossibleValues(
    const std::string&) const {
  return BadUnsigned;
}

template <class Value>
void QVDataTableColOfValues<Value>::Append(const Value& value) {
  if (value == Traits<Value>::kMissing) SetColHasMissingData();
  if (value == Traits<Value>::kBad) SetColHasBadData();
  values_.push_back(value);
}

template <class Value>
void QVDataTableColOfValues<Value>::PushBackUnsigned(unsigned int) {}

template <class Value>
void QVDataTableColOfValues<Value>::PushBackInt([[maybe_unused]] int value) {
  if constexpr (std::is_same_v<Value, int>) Append(value);
}

template <class Value>
void QVDataTableColOfValues<Value>::PushBackDouble([[maybe_unused]] double value) {
  if constexpr (std::is_same_v<Value, double>) Append(value);
}

template <class Value>
void QVDataTableColOfValues<Value>::PushBackString([[maybe_unused]] const std::string& value) {
  if constexpr (std::is_same_v<Value, std::string>) Append(value);
}

template <class Value>
void QVDataTableColOfValues<Value>::FinishAddingVars() {
  SetColReadOnly();
}

template <class Value>
std::size_t QVDataTableColOfValues<Value>::GetNumElementsInCol() const {
  return values_.size();
}

template <class Value>
std::vector<Value> QVDataTableColOfValues<Value>::GetSortedDistinctValues() const {
  std::vector<Value> values(values_);
  SortDistinct(values);
  return values;
}

template <class Value>
std::size_t QVDataTableColOfValues<Value>::GetNumUniqueDiscreteValues() const {
  return GetSortedDistinctValues().size();
}

template <class Value>
std::vector<std::string> QVDataTableColOfValues<Value>::GetUniqueDiscreteValues() const {
  return {};
}

template <class Value>
std::string QVDataTableColOfValues<Value>::PrintUniqueDiscreteValues(std::size_t limit) const {
  const std::vector<Value> values = GetSortedDistinctValues();
  return PrintDistinct(values.size(), limit,
                       [&](std::size_t i) { return Traits<Value>::ToString(values[i]); });
}

template <class Value>
const Value* QVDataTableColOfValues<Value>::FindElement(std::size_t index) const {
  return index < values_.size() ? &values_[index] : nullptr;
}

template <class Value>
const Value* QVDataTableColOfValues<Value>::FindCell(std::size_t row, std::size_t col) const {
  const std::size_t index = GetDataTableColIndex(row, col);
  return index < GetNumElementsInCol() ? FindElement(index) : nullptr;
}

template <class Value>
bool QVDataTableColOfValues<Value>::RowColHasMissingData(std::size_t row, std::size_t col) const {
  const Value* value = FindCell(row, col);
  return value && *value == Traits<Value>::kMissing;
}

template <class Value>
bool QVDataTableColOfValues<Value>::RowColHasBadData(std::size_t row, std::size_t col) const {
  const Value* value = FindCell(row, col);
  return value && *value == Traits<Value>::kBad;
}

template <class Value>
unsigned int QVDataTableColOfValues<Value>::GetUnsigned(std::size_t row, std::size_t col) const {
  const Value* value = FindCell(row, col);
  return value ? Traits<Value>::ToUnsigned(*value) : BadIndexUnsigned;
}

template <class Value>
int QVDataTableColOfValues<Value>::GetInt(std::size_t row, std::size_t col) const {
  const Value* value = FindCell(row, col);
  return value ? Traits<Value>::ToInt(*value) : BadIndexInt;
}

template <class Value>
double QVDataTableColOfValues<Value>::GetDouble(std::size_t row, std::size_t col) const {
  const Value* value = FindCell(row, col);
  return value ? Traits<Value>::ToDouble(*value) : BadIndexDouble;
}

template <class Value>
std::string QVDataTableColOfValues<Value>::GetString(std::size_t row, std::size_t col) const {
  const Value* value = FindCell(row, col);
  return value ? Traits<Value>::ToString(*value) : Traits<Value>::BadIndexText();
}

template <class Value>
void QVDataTableColOfValues<Value>::GetTexts(const QVRowNumbers& rows, std::size_t col,
                                             std::string_view* texts,
                                             std::vector<std::string>& buffer) const {
  if constexpr (std::is_same_v<Value, std::string>)
    ReadBulk(rows, col, std::string_view(BadIndexString), texts,
             [](const Value& value) { return std::string_view(value); });
  else
    QVDataTableColBase::GetTexts(rows, col, texts, buffer);
}

template <class Value>
template <class Target, class Convert>
void QVDataTableColOfValues<Value>::ReadBulk(const QVRowNumbers& rows, std::size_t col,
                                             Target badIndex, Target* values,
                                             Convert convert) const {
  // A plain dense column is read straight from its vector: no virtual call, no index arithmetic.
  if (!ColIsSparse() && GetNumColumnsInCol() == 1 && col == 0 && !ColIsLowerTriangular()) {
    const std::size_t size = values_.size();
    if (rows.IsRange() && rows.size() > 0 && rows[0] < size && rows.size() <= size - rows[0]) {
      std::transform(&values_[rows[0]], &values_[rows[0]] + rows.size(), values, convert);
      return;
    }
    for (std::size_t i = 0; i < rows.size(); ++i)
      values[i] = rows[i] < size ? convert(values_[rows[i]]) : badIndex;
    return;
  }
  if (!ColIsSparse()) {
    const std::size_t size = values_.size();
    const auto read = [&](auto getIndex) {
      for (std::size_t i = 0; i < rows.size(); ++i) {
        const std::size_t index = getIndex(rows[i]);
        values[i] = index < size ? convert(values_[index]) : badIndex;
      }
    };
    if (ColIsLowerTriangular() && col < GetNumColumnsInCol()) {
      const std::size_t begin =
          GetTriangleIndex(col, 0);  // up to its diagonal a row stands together
      read([col, begin](std::size_t row) {
        return row <= col ? begin + row : GetTriangleIndex(row, col);
      });
    } else
      read([this, col](std::size_t row) { return GetDataTableColIndex(row, col); });
    return;
  }
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const Value* value = FindCell(rows[i], col);
    values[i] = value ? convert(*value) : badIndex;
  }
}

template <class Value>
void QVDataTableColOfValues<Value>::GetUnsigneds(const QVRowNumbers& rows, std::size_t col,
                                                 unsigned int* values) const {
  ReadBulk(rows, col, BadIndexUnsigned, values,
           [](const Value& value) { return Traits<Value>::ToUnsigned(value); });
}

template <class Value>
void QVDataTableColOfValues<Value>::GetInts(const QVRowNumbers& rows, std::size_t col,
                                            int* values) const {
  ReadBulk(rows, col, BadIndexInt, values,
           [](const Value& value) { return Traits<Value>::ToInt(value); });
}

template <class Value>
void QVDataTableColOfValues<Value>::GetDoubles(const QVRowNumbers& rows, std::size_t col,
                                               double* values) const {
  ReadBulk(rows, col, BadIndexDouble, values,
           [](const Value& value) { return Traits<Value>::ToDouble(value); });
}

template <class Value>
void QVDataTableColOfValues<Value>::GetCellStates(const QVRowNumbers& rows, std::size_t col,
                                                  QVCellState* states) const {
  ReadBulk(rows, col, QVCellState::BadIndex, states, [](const Value& value) {
    if (value == Traits<Value>::kMissing) return QVCellState::Missing;
    return value == Traits<Value>::kBad ? QVCellState::Bad : QVCellState::Good;
  });
}

template class QVDataTableColOfValues<int>;
template class QVDataTableColOfValues<double>;
template class QVDataTableColOfValues<std::string>;

QVDataTableColOfIntervalVars::QVDataTableColOfIntervalVars(const std::string& name,
                                                           const std::string& fullName,
                                                           std::size_t numRows,
                                                           std::size_t numColumnsInCol,
                                                           bool lowerTriangular)
    : QVDataTableColOfValues(name, fullName, numRows, numColumnsInCol, lowerTriangular, false) {}

QVDataTableColOfIdentifiers::QVDataTableColOfIdentifiers(const std::string& name,
                                                         const std::string& fullName,
                                                         std::size_t numRows,
                                                         std::size_t numColumnsInCol,
                                                         bool lowerTriangular)
    : QVDataTableColOfValues(name, fullName, numRows, numColumnsInCol, lowerTriangular, false) {}

QVDataTableColOfIdentifiers::QVDataTableColOfIdentifiers(const std::string& name,
                                                         const std::string& fullName,
                                                         std::vector<std::string> texts)
    : QVDataTableColOfValues(name, fullName, 0, 1, false, false) {
  const auto has = [&](const std::string& text) {
    return std::find(texts.begin(), texts.end(), text) != texts.end();
  };
  if (has(MissingString)) SetColHasMissingData();
  if (has(BadString)) SetColHasBadData();
  SetStoredValues(std::move(texts));
}

// Ratio columns.

QVDataTableColOfRatioVars::QVDataTableColOfRatioVars(const std::string& name,
                                                     const std::string& fullName,
                                                     std::size_t numRows,
                                                     std::size_t numColumnsInCol,
                                                     bool lowerTriangular)
    : QVDataTableColOfValues(name, fullName, numRows, numColumnsInCol, lowerTriangular, false),
      numRows_(numRows) {}

QVDataTableColOfRatioVars::QVDataTableColOfRatioVars(const std::string& name,
                                                     const std::string& fullName,
                                                     std::vector<double> values,
                                                     std::size_t numColumnsInCol,
                                                     bool lowerTriangular)
    : QVDataTableColOfValues(name, fullName, 0, numColumnsInCol, lowerTriangular, false),
      numRows_(lowerTriangular || numColumnsInCol == 0 ? numColumnsInCol
                                                       : values.size() / numColumnsInCol) {
  SetStoredValues(std::move(values));
}

QVDataTableColOfRatioVars::QVDataTableColOfRatioVars(
    const std::string& name, const std::string& fullName, std::size_t numRows,
    const std::vector<QVRowColValue>& entries, std::size_t numColumnsInCol, bool lowerTriangular)
    : QVDataTableColOfValues(name, fullName, numRows, numColumnsInCol, lowerTriangular, true),
      numRows_(numRows) {
  SetupSparseArray(entries);
  SetColReadOnly();
}

void QVDataTableColOfRatioVars::PushBackDouble(double value) {
  if (!ColIsSparse()) QVDataTableColOfValues::PushBackDouble(value);
}

std::size_t QVDataTableColOfRatioVars::GetNumElementsInCol() const {
  return ColIsSparse() ? CountElements(numRows_, GetNumColumnsInCol(), ColIsLowerTriangular())
                       : GetStoredValues().size();
}

void QVDataTableColOfRatioVars::SetupSparseArray(const std::vector<QVRowColValue>& entries) {
  sparse_.reserve(entries.size());
  for (const QVRowColValue& entry : entries) {
    const std::size_t index = GetDataTableColIndex(entry.GetRowNum(), entry.GetColNum());
    if (index >= GetNumElementsInCol()) {
      sparse_.clear();
      return;
    }
    sparse_.emplace_back(index, entry.GetValue());
  }
  std::sort(sparse_.begin(), sparse_.end(), [](const auto& a, const auto& b) {
    if (a.first != b.first) return a.first < b.first;
    return std::isnan(b.second) ? !std::isnan(a.second) : a.second < b.second;
  });
}

const double* QVDataTableColOfRatioVars::FindElement(std::size_t index) const {
  if (!ColIsSparse()) return QVDataTableColOfValues::FindElement(index);
  const auto at =
      std::lower_bound(sparse_.begin(), sparse_.end(), index,
                       [](const auto& entry, std::size_t wanted) { return entry.first < wanted; });
  return at != sparse_.end() && at->first == index ? &at->second : &MissingDouble;
}

std::vector<double> QVDataTableColOfRatioVars::GetSortedDistinctValues() const {
  if (!ColIsSparse()) return QVDataTableColOfValues::GetSortedDistinctValues();
  std::vector<double> values;
  std::size_t last = BadIndex;
  std::size_t numGiven = 0;
  for (const auto& [index, value] : sparse_) {
    if (index == last) continue;
    last = index;
    values.push_back(value);
    ++numGiven;
  }
  if (numGiven < GetNumElementsInCol()) values.push_back(MissingDouble);
  SortDistinct(values);
  return values;
}

// Nominal columns.

QVDataTableColOfNominals::QVDataTableColOfNominals(const std::string& name,
                                                   const std::string& fullName, std::size_t numRows,
                                                   std::size_t numColumnsInCol,
                                                   bool lowerTriangular)
    : QVDataTableColBase(name, fullName, numColumnsInCol, lowerTriangular, false) {
  codes_.reserve(GetRoom(numRows, numColumnsInCol, lowerTriangular));
}

QVDataTableColOfNominals::QVDataTableColOfNominals(const std::string& name,
                                                   const std::string& fullName,
                                                   const std::vector<std::string>& possibleValues,
                                                   std::size_t numRows, std::size_t numColumnsInCol,
                                                   bool lowerTriangular)
    : QVDataTableColOfNominals(name, fullName, numRows, numColumnsInCol, lowerTriangular) {
  if (possibleValues.empty()) return;
  std::vector<std::string> categories(possibleValues);
  categories.push_back(BadString);
  categories.push_back(MissingString);
  std::sort(categories.begin(), categories.end());
  FixCategories(std::move(categories));
}

void QVDataTableColOfNominals::FixCategories(std::vector<std::string> categories) {
  categories_ = std::move(categories);
  const auto findCodes = [this](const std::string& text) {
    const auto [first, last] = std::equal_range(categories_.begin(), categories_.end(), text);
    return std::pair(static_cast<unsigned int>(first - categories_.begin()),
                     static_cast<unsigned int>(last - categories_.begin()));
  };
  missingCodes_ = findCodes(MissingString);
  badCodes_ = findCodes(BadString);
}

unsigned int QVDataTableColOfNominals::IndexOfStringInListOfPossibleValues(
    const std::string& text) const {
  const auto at = std::lower_bound(categories_.begin(), categories_.end(), text);
  if (at == categories_.end() || *at != text) return BadUnsigned;
  return static_cast<unsigned int>(at - categories_.begin());
}

void QVDataTableColOfNominals::PushBackUnsigned(unsigned int value) {
  if (!categories_.empty()) codes_.push_back(value);
}

void QVDataTableColOfNominals::PushBackInt(int) {}
void QVDataTableColOfNominals::PushBackDouble(double) {}

void QVDataTableColOfNominals::PushBackString(const std::string& value) {
  if (!categories_.empty()) return;
  const auto next = static_cast<unsigned int>(distinctTexts_.size());
  codes_.push_back(distinctTexts_.try_emplace(value, next).first->second);
}

void QVDataTableColOfNominals::FinishAddingVars() {
  if (ColIsReadOnly()) return;
  SetColReadOnly();
  if (categories_.empty()) LoadUniqueNominalValues();
}

void QVDataTableColOfNominals::LoadUniqueNominalValues() {
  std::vector<std::pair<std::string, unsigned int>> texts(distinctTexts_.begin(),
                                                          distinctTexts_.end());
  std::sort(texts.begin(), texts.end());
  std::vector<unsigned int> rankOf(texts.size());
  std::vector<std::string> categories;
  for (auto& [text, code] : texts) {
    rankOf[code] = static_cast<unsigned int>(categories.size());
    categories.push_back(std::move(text));
  }
  for (unsigned int& code : codes_) code = rankOf[code];
  distinctTexts_.clear();
  FixCategories(std::move(categories));
}

std::string QVDataTableColOfNominals::PrintUniqueDiscreteValues(std::size_t limit) const {
  return PrintDistinct(categories_.size(), limit, [&](std::size_t i) { return categories_[i]; });
}

const std::string& QVDataTableColOfNominals::FindText(std::size_t row, std::size_t col) const {
  const std::size_t index = GetDataTableColIndex(row, col);
  if (index >= codes_.size() || categories_.empty()) return BadIndexToLookupTableName;
  return codes_[index] < categories_.size() ? categories_[codes_[index]] : BadLookupIndexName;
}

std::string QVDataTableColOfNominals::GetString(std::size_t row, std::size_t col) const {
  return FindText(row, col);
}

void QVDataTableColOfNominals::GetTexts(const QVRowNumbers& rows, std::size_t col,
                                        std::string_view* texts, std::vector<std::string>&) const {
  for (std::size_t i = 0; i < rows.size(); ++i) texts[i] = FindText(rows[i], col);
}

bool QVDataTableColOfNominals::CellIs(std::size_t row, std::size_t col,
                                      const std::string& category) const {
  return !RowColIndexIsBad(row, col) && FindText(row, col) == category;
}

bool QVDataTableColOfNominals::RowColHasMissingData(std::size_t row, std::size_t col) const {
  return CellIs(row, col, MissingString);
}

bool QVDataTableColOfNominals::RowColHasBadData(std::size_t row, std::size_t col) const {
  return CellIs(row, col, BadString);
}

unsigned int QVDataTableColOfNominals::GetUnsigned(std::size_t row, std::size_t col) const {
  const std::size_t index = GetDataTableColIndex(row, col);
  if (index >= codes_.size() || categories_.empty()) return BadIndexUnsigned;
  const unsigned int code = codes_[index];
  const auto isOneOf = [code](const std::pair<unsigned int, unsigned int>& codes) {
    return codes.first <= code && code < codes.second;
  };
  if (code >= categories_.size() || isOneOf(badCodes_)) return BadUnsigned;
  return isOneOf(missingCodes_) ? MissingUnsigned : code;
}

int QVDataTableColOfNominals::GetInt(std::size_t row, std::size_t col) const {
  const unsigned int code = GetUnsigned(row, col);
  return code == BadIndexUnsigned ? BadIndexInt : QVIntFromUnsigned(code);
}

double QVDataTableColOfNominals::GetDouble(std::size_t row, std::size_t col) const {
  const unsigned int code = GetUnsigned(row, col);
  return code == BadIndexUnsigned ? BadIndexDouble : QVDoubleFromUnsigned(code);
}

void QVDataTableColOfNominals::GetUnsigneds(const QVRowNumbers& rows, std::size_t col,
                                            unsigned int* values) const {
  // The class's own function: no virtual call for a cell.
  for (std::size_t i = 0; i < rows.size(); ++i)
    values[i] = QVDataTableColOfNominals::GetUnsigned(rows[i], col);
}

QVStatModelResult QVDataTableColOfNominals::FindStringInUniqueNominalVals(
    unsigned int& code, const std::string& text) const {
  const unsigned int found = IndexOfStringInListOfPossibleValues(text);
  QVStatModelResult result(true);
  if (found == BadUnsigned) {
    result.SetFailureTypeAndWhereFailed(QVStatModelFailureType::ArgumentOutOfRange,
                                        "QVDataTableColOfNominals::FindStringInUniqueNominalVals");
    result.AddExtraComment("String " + text + " not found in list of unique nominal values");
    return result;
  }
  code = found;
  return result;
}

// The null column.

QVNullDataTableCol::QVNullDataTableCol(const std::string& name, const std::string& fullName)
    : QVDataTableColBase(name, fullName, 1, false, false) {}

unsigned int QVNullDataTableCol::IndexOfStringInListOfPossibleValues(const std::string&) const {
  return BadUnsigned;
}
void QVNullDataTableCol::PushBackUnsigned(unsigned int) {}
void QVNullDataTableCol::PushBackInt(int) {}
void QVNullDataTableCol::PushBackDouble(double) {}
void QVNullDataTableCol::PushBackString(const std::string&) {}
void QVNullDataTableCol::FinishAddingVars() { SetColReadOnly(); }
std::string QVNullDataTableCol::PrintUniqueDiscreteValues(std::size_t) const {
  return "null column: no values\n";
}
bool QVNullDataTableCol::RowColHasMissingData(std::size_t, std::size_t) const { return false; }
bool QVNullDataTableCol::RowColHasBadData(std::size_t, std::size_t) const { return false; }
unsigned int QVNullDataTableCol::GetUnsigned(std::size_t, std::size_t) const {
  return BadIndexUnsigned;
}
int QVNullDataTableCol::GetInt(std::size_t, std::size_t) const { return BadIndexInt; }
double QVNullDataTableCol::GetDouble(std::size_t, std::size_t) const { return BadIndexDouble; }
std::string QVNullDataTableCol::GetString(std::size_t, std::size_t) const { return BadIndexString; }

// The factories.

QVDataTableColBase* QVGetDataTableCol(const std::string& name, const std::string& fullName,
                                      unsigned int level, std::size_t numRows,
                                      std::size_t numColumnsInCol, bool lowerTriangular) {
  using namespace QVStatVariableType;
  if (level == Nominal)
    return new QVDataTableColOfNominals(name, fullName, numRows, numColumnsInCol, lowerTriangular);
  if (level == Interval)
    return new QVDataTableColOfIntervalVars(name, fullName, numRows, numColumnsInCol,
                                            lowerTriangular);
  if (level == Ratio)
    return new QVDataTableColOfRatioVars(name, fullName, numRows, numColumnsInCol, lowerTriangular);
  if (level == Identifier)
    return new QVDataTableColOfIdentifiers(name, fullName, numRows, numColumnsInCol,
                                           lowerTriangular);
  return new QVNullDataTableCol(name, fullName);
}

QVDataTableColBase* QVGetDataTableCol(const std::string& name, const std::string& fullName,
                                      unsigned int level, std::size_t numRows,
                                      const std::vector<QVRowColValue>& entries,
                                      std::size_t numColumnsInCol, bool lowerTriangular) {
  if (level != QVStatVariableType::Ratio) return new QVNullDataTableCol(name, fullName);
  return new QVDataTableColOfRatioVars(name, fullName, numRows, entries, numColumnsInCol,
                                       lowerTriangular);
}

}  // namespace QVStats
