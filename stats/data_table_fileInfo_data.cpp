// Reading the data lines: one pass over the file, numbers converted where they stand.

#include <algorithm>
#include <array>
#include <cstdint>

#include "platform/system/text.h"
#include "stats/api/data_table_fileInfo.h"

namespace QVStats {

using namespace QVStatModelFailureType;

namespace {

/// Reads a plain decimal number, digits with at most one point and a minus sign before them, of at
/// most 19 digits and a value of digits below 2^53: then one division by a power of ten, both
/// exact, gives the nearest double. The byte after the number must be readable. \return the end of
/// the number, null for any other text.
const char* ReadPlainDecimal(const char* at, double& value) {
  static constexpr std::array<double, 23> kPowers = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                     1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                                     1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
  const bool negative = *at == '-';
  at += negative ? 1 : 0;
  const char* const start = at;
  std::uint64_t digits = 0;
  const auto readDigits = [&] {
    for (unsigned int digit; (digit = static_cast<unsigned char>(*at) - unsigned{'0'}) < 10; ++at)
      digits = digits * 10 + digit;
  };
  readDigits();
  std::ptrdiff_t numDigits = at - start;
  std::ptrdiff_t numDecimals = 0;
  if (*at == '.') {
    const char* const decimals = ++at;
    readDigits();
    numDecimals = at - decimals;
    numDigits += numDecimals;
  }
  if (numDigits == 0 || numDigits > 19 || digits >> 53 != 0) return nullptr;
  const double magnitude =
      static_cast<double>(digits) / kPowers[static_cast<std::size_t>(numDecimals)];
  value = negative ? -magnitude : magnitude;
  return at;
}

}  // namespace

/// Reads data lines into the columns of a file. Columns of numbers, by declaration or as long as
/// all their fields are numbers, are converted at once; a column of open type that turns out to
/// hold texts after numbers is read again at the end, so that no text has to be kept.
class QVDataTableFileInfo::DataReader {
 public:
  DataReader(QVDataTableFileInfo& file, bool keepLowerTriangle)
      : file_(file),
        triangular_(file.layoutType_ ==
                    QVDataTableFileDataLayoutType::LeadingColsPlusLowerTriangular),
        keepTriangle_(keepLowerTriangle),
        keepEmpty_(file.dataDelimiters_ == ",\n"),
        columns_(file.columns_.size() - (triangular_ ? 1 : 0)),
        block_(columns_.size() * kRows),
        texts_(columns_.size()) {
    for (const char c : file.dataDelimiters_) isDelimiter_[static_cast<unsigned char>(c)] = true;
    for (std::size_t j = 0; j < columns_.size(); ++j)
      columns_[j].kind = HoldsNumbers(file.columns_[j]) ? Kind::Numbers : Kind::Texts;
  }

  /// Whether all that a file asks for can be read this way; if not, fields are read one by one.
  static bool CanRead(const QVDataTableFileInfo& file) {
    const std::string numberCharacters = "+-.0123456789";
    double number = 0.0;
    if (file.dataDelimiters_.find_first_of(numberCharacters) != std::string::npos) return false;
    if (QVSystem::QVStringToNumber(file.missingValue_, number)) return false;
    if (file.layoutType_ == QVDataTableFileDataLayoutType::Rectangular) return true;
    return file.columns_.back().GetCurrentStatVarType() == QVStatVariableType::Ratio;
  }

  QVStatModelResult Read() {
    QVStatModelResult result(true);
    if (triangular_ && keepTriangle_) ReserveTriangle();
    while (result.IsSuccessful() && file_.GetNextLineOfSubstance()) {
      numFields_ = keepEmpty_ ? CutLine<true>() : CutLine<false>();
      if (numFields_ != file_.GetExpectedNumFields())
        result = FailLine();
      else
        result = CommitLine();
    }
    StoreNumbers();
    if (result.IsSuccessful()) result = ReadTextsAgain();
    return result;
  }

 private:
  enum class Kind { Numbers, Texts, ReadAgain };
  struct Column {
    Kind kind = Kind::Numbers;
    bool failed = false;  ///< the field of this line is no number
    std::size_t numMissing = 0;
    std::vector<double> values;
  };
  static constexpr std::size_t kRows = 256;

  static bool HoldsNumbers(const QVDataTableFileCol& column) {
    if (column.GetNumRows() > 0) return false;
    if (column.FileDefinesStatVarType()) return true;
    return column.GetCurrentStatVarType() == QVStatVariableType::Ratio &&
           !column.GetDataTableCol().ColIsLowerTriangular();
  }

  bool EndsField(const char* at, const char* end) const {
    return at == end || isDelimiter_[static_cast<unsigned char>(*at)];
  }

  bool IsMissing(std::string_view text) const {
    return text.empty() || text == file_.missingValue_;
  }

  /// Cuts the line at hand into the block, the texts and the triangle. \return the number of
  /// fields.
  template <bool KeepEmpty>
  std::size_t CutLine() {
    const std::string_view line = file_.status_.GetLastLine();
    const char* at = line.data();
    const char* const end = at + line.size();
    std::size_t numFields = 0;
    triangleStart_ = triangle_.size();
    anyFailed_ = false;
    for (;;) {
      if constexpr (!KeepEmpty) {
        while (at != end && EndsField(at, end)) ++at;
        if (at == end) break;
      }
      at = CutField(numFields, at, end);
      ++numFields;
      if constexpr (KeepEmpty) {
        if (at == end) break;
        ++at;
      }
    }
    return numFields;
  }

  /// \return the end of the field.
  const char* CutField(std::size_t j, const char* at, const char* end) {
    const bool leading = j < columns_.size();
    const bool number = leading ? columns_[j].kind == Kind::Numbers : triangular_ && keepTriangle_;
    double value = 0.0;
    if (number) {
      const char* const stop = ReadPlainDecimal(at, value);
      if (stop && EndsField(stop, end)) {
        if (leading)
          block_[j * kRows + numInBlock_] = value;
        else
          triangle_.push_back(value);
        return stop;
      }
    }
    const char* stop = at;
    while (!EndsField(stop, end)) ++stop;
    const std::string_view text(at, static_cast<std::size_t>(stop - at));
    if (leading) texts_[j] = text;
    if (number) ReadOtherNumber(j, text);
    return stop;
  }

  void ReadOtherNumber(std::size_t j, std::string_view text) {
    const bool leading = j < columns_.size();
    const bool missing = IsMissing(text);
    double value = QVStatsBadData::MissingDouble;
    const bool failed = !missing && !QVSystem::QVStringToNumber(text, value);
    anyFailed_ = anyFailed_ || failed;
    if (!leading) {
      triangle_.push_back(value);
      return;
    }
    columns_[j].failed = failed;
    if (missing) missingInLine_.push_back(j);
    block_[j * kRows + numInBlock_] = value;
  }

  QVStatModelResult FailLine() {
    triangle_.resize(triangleStart_);
    missingInLine_.clear();
    return file_.CheckNumFields(file_.CutDataLine());
  }

  /// Takes the line at hand into the columns.
  QVStatModelResult CommitLine() {
    if (anyFailed_) {
      const QVStatModelResult result = CommitFailures();
      if (result.NotSuccessful()) return result;
    }
    AddLineNumber();
    for (std::size_t j = 0; j < columns_.size(); ++j) {
      if (columns_[j].kind != Kind::Texts) continue;
      field_.assign(texts_[j]);
      const QVStatModelResult result = file_.columns_[j].AddField(field_);
      if (result.NotSuccessful()) return file_.AddReport(result);
    }
    for (const std::size_t j : missingInLine_) ++columns_[j].numMissing;
    missingInLine_.clear();
    ++file_.status_.numDataLinesProcessed;
    if (++numInBlock_ == kRows) FlushBlock();
    return true;
  }

  void AddLineNumber() {
    const std::size_t number = file_.GetLineNumber();
    file_.lineNumbers_.column_.GetImpl()->PushBackInt(
        number < static_cast<std::size_t>(QVStatsBadData::BadIndexInt) ? static_cast<int>(number)
                                                                       : QVStatsBadData::BadInt);
  }

  /// Fields that are no numbers: of a column of open type, it holds texts; otherwise the line
  /// fails, as it does when its fields are added one by one.
  QVStatModelResult CommitFailures() {
    bool declared = false;
    for (std::size_t j = 0; j < columns_.size(); ++j)
      if (columns_[j].failed) declared = declared || !file_.columns_[j].FileDefinesStatVarType();
    const bool inTriangle = std::none_of(columns_.begin(), columns_.end(),
                                         [](const Column& column) { return column.failed; });
    if (declared || inTriangle) {
      triangle_.resize(triangleStart_);
      StoreNumbers();
      return file_.AddFieldsOfLine(file_.CutDataLine());
    }
    for (std::size_t j = 0; j < columns_.size(); ++j)
      if (columns_[j].failed) TurnIntoTexts(j);
    return true;
  }

  void TurnIntoTexts(std::size_t j) {
    Column& column = columns_[j];
    const std::size_t numRows = file_.GetNumDataLinesProcessed();
    column.failed = false;
    // Only missing values so far: their text is known.
    column.kind = column.numMissing == numRows ? Kind::Texts : Kind::ReadAgain;
    if (column.kind == Kind::Texts)
      for (std::size_t i = 0; i < numRows; ++i) file_.columns_[j].AddField(file_.missingValue_);
    column.values = std::vector<double>();
  }

  void FlushBlock() {
    for (std::size_t j = 0; j < columns_.size(); ++j) {
      if (columns_[j].kind != Kind::Numbers) continue;
      std::vector<double>& values = columns_[j].values;
      const std::size_t wanted = values.size() + numInBlock_;
      if (wanted > values.capacity()) {
        // A little more than the lines so far promise; unused room is never touched.
        const std::size_t left = file_.status_.EstimateLinesLeft();
        values.reserve(left == QVStatsBadData::BadIndex ? std::max(wanted, 2 * values.capacity())
                                                        : wanted + left + left / 16);
      }
      const double* const first = &block_[j * kRows];
      values.insert(values.end(), first, first + numInBlock_);
    }
    numInBlock_ = 0;
  }

  void ReserveTriangle() {
    const std::size_t size = file_.columns_.back().GetDataTableCol().GetNumColumnsInCol();
    triangle_.reserve(size * (size + 1) / 2);
  }

  void StoreNumbers() {
    if (stored_) return;
    stored_ = true;
    FlushBlock();
    for (std::size_t j = 0; j < columns_.size(); ++j) {
      if (columns_[j].kind != Kind::Numbers) continue;
      file_.columns_[j].AdoptNumbers(std::move(columns_[j].values));
      columns_[j].values = std::vector<double>();
    }
    if (triangular_ && keepTriangle_) file_.columns_.back().AdoptNumbers(std::move(triangle_));
    triangle_.clear();
  }

  QVStatModelResult ReadTextsAgain() {
    const auto again = [](const Column& column) { return column.kind == Kind::ReadAgain; };
    if (std::none_of(columns_.begin(), columns_.end(), again)) return true;
    QVStatModelResult result = file_.GoToStartOfData();
    while (result.IsSuccessful() && file_.GetNextLineOfSubstance()) {
      const std::vector<std::string> fields = file_.CutDataLine();
      result = file_.CheckNumFields(fields);
      if (result.NotSuccessful()) break;
      for (std::size_t j = 0; j < columns_.size(); ++j)
        if (again(columns_[j])) file_.columns_[j].AddField(fields[j]);
      ++file_.status_.numDataLinesProcessed;
    }
    return result;
  }

  QVDataTableFileInfo& file_;
  bool triangular_;
  bool keepTriangle_;
  bool keepEmpty_;
  std::array<bool, 256> isDelimiter_{};
  std::vector<Column> columns_;
  std::vector<double> block_;  ///< the numbers of up to kRows lines, column after column
  std::size_t numInBlock_ = 0;
  std::vector<std::string_view> texts_;  ///< the fields of the line at hand that are no numbers
  std::vector<std::size_t> missingInLine_;
  std::vector<double> triangle_;
  std::size_t triangleStart_ = 0;
  std::size_t numFields_ = 0;
  bool anyFailed_ = false;
  bool stored_ = false;
  std::string field_;
};

QVStatModelResult QVDataTableFileInfo::AddFieldsOfLine(const std::vector<std::string>& fields) {
  QVStatModelResult result = lineNumbers_.AddField(std::to_string(GetLineNumber()));
  const std::size_t last = columns_.size() - 1;
  for (std::size_t i = 0; i < fields.size() && result.IsSuccessful(); ++i)
    result = columns_[std::min(i, last)].AddField(fields[i]);
  return AddReport(result);
}

QVStatModelResult QVDataTableFileInfo::AddReport(QVStatModelResult result) const {
  if (result.NotSuccessful()) result.AddExtraComment(ReportFileTypeAndStatus());
  return result;
}

QVStatModelResult QVDataTableFileInfo::ReadData(bool keepLowerTriangle) {
  QVStatModelResult result = GoToStartOfData();
  if (result.NotSuccessful()) return result;
  if (layoutType_ == QVDataTableFileDataLayoutType::Unknown)
    return Fail(BadDataViewFileType, "GetNextDataFieldVector");
  if (DataReader::CanRead(*this)) return DataReader(*this, keepLowerTriangle).Read();
  while (result.IsSuccessful() && GetNextLineOfSubstance()) {
    std::vector<std::string> fields = CutDataLine();
    result = CheckNumFields(fields);
    if (!keepLowerTriangle) fields.resize(std::min(fields.size(), columns_.size() - 1));
    if (result.IsSuccessful()) result = AddFieldsOfLine(fields);
    if (result.IsSuccessful()) ++status_.numDataLinesProcessed;
  }
  return result;
}

QVStatModelResult QVDataTableFileInfo::ProcessDataLines() { return ProcessDataLines(true); }

QVStatModelResult QVDataTableFileInfo::ProcessLeadingColumnsOfDataLines() {
  return ProcessDataLines(false);
}

QVStatModelResult QVDataTableFileInfo::ProcessDataLines(bool keepLowerTriangle) {
  const char* const here = "ProcessDataLines";
  if (columns_.empty()) return Fail(ColumnNotFound, here, "No columns defined to parse data rows!");
  const bool triangular =
      layoutType_ == QVDataTableFileDataLayoutType::LeadingColsPlusLowerTriangular;
  if (triangular && !columns_.back().GetDataTableCol().ColIsLowerTriangular())
    return Fail(WrongDataViewFileType, here,
                "File data type has Lower tri form!\nBut Last Column not that type of array!");
  QVStatModelResult result = ReadData(keepLowerTriangle);
  // A damaged stream ends like a file does.
  const bool damaged = result.IsSuccessful() && !status_.GetErrorText().empty();
  if (damaged) return Fail(NoData, here);
  if (result.IsSuccessful()) result = lineNumbers_.FinishAddVars();
  for (QVDataTableFileCol& column : columns_)
    if (result.IsSuccessful()) result = column.FinishAddVars();
  if (result.NotSuccessful()) {
    result.AddCallContext("QVDataTableFileInfo::ProcessDataLines");
    return result;
  }
  return true;
}

}  // namespace QVStats
