#include "stats/api/data_table_fileInfo.h"

#include <algorithm>
#include <cstring>
#include <sstream>

#include "platform/system/text.h"

namespace QVStats {

using namespace QVStatModelFailureType;
using QVSystem::QVStringTokenize;
using QVSystem::QVStringTokenizeQuoted;
using QVSystem::QVToUpper;

namespace {

/// Bytes that are read at a time: they stay in the second-level cache while they are cut up.
constexpr std::size_t kBlockBytes = std::size_t{1} << 19;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

std::string KeywordOf(const std::vector<std::string>& fields) {
  return fields.empty() ? std::string() : QVToUpper(fields.front());
}

/// A failure, if it is one, with the caller's name added.
QVStatModelResult PassOn(QVStatModelResult result, const char* operation) {
  if (result.NotSuccessful())
    result.AddCallContext(std::string("QVDataTableFileInfo::") + operation);
  return result;
}

/// Lines before the header line, for the header types that have one.
std::size_t CountLinesBeforeHeader(unsigned int headerType) {
  return headerType - QVDataTableFileHeaderType::ColumnNameLine;
}

bool HasHeaderLine(unsigned int headerType) {
  return headerType >= QVDataTableFileHeaderType::ColumnNameLine &&
         headerType <= QVDataTableFileHeaderType::TwoCommentsThenColumnNameLine;
}

}  // namespace

// Position in the file.

QVDataTableFileStatus::QVDataTableFileStatus(QVPlatform::qvifstream& in) : in_(&in) {}

void QVDataTableFileStatus::GoToStartOfFile() {
  if (offset_ > 0) {
    // What cannot be read again reads as ended.
    ended_ = !in_->Rewind();
    filled_ = offset_ = 0;
  }
  next_ = 0;
  line_ = {};
  held_ = false;
  lineNumber_ = 0;
  state_ = QVDataTableFileState::AtStartOfFile;
}

void QVDataTableFileStatus::Fill() {
  if (line_.data() != lastLine_.data()) lastLine_.assign(line_);
  line_ = lastLine_;
  const std::size_t kept = filled_ - next_;
  std::vector<char> grown;
  if (buffer_.size() < kept + kBlockBytes + 1) grown.resize(2 * kept + kBlockBytes + 1);
  std::vector<char>& target = grown.empty() ? buffer_ : grown;
  if (kept > 0) std::memmove(target.data(), buffer_.data() + next_, kept);
  if (!grown.empty()) buffer_.swap(grown);
  offset_ += next_;
  next_ = 0;
  const std::size_t room = buffer_.size() - 1 - kept;
  const std::size_t count = in_->Read(buffer_.data() + kept, room);
  filled_ = kept + count;
  buffer_[filled_] = '\n';
  ended_ = count < room;
}

bool QVDataTableFileStatus::GetNextLine() {
  if (held_) {
    held_ = false;
    return true;
  }
  const auto findEnd = [this] {
    const void* const end =
        next_ < filled_ ? std::memchr(buffer_.data() + next_, '\n', filled_ - next_) : nullptr;
    return static_cast<const char*>(end);
  };
  const char* end = findEnd();
  while (!end && !ended_) {
    Fill();
    end = findEnd();
  }
  if (!end && next_ == filled_) return false;
  if (!end) end = buffer_.data() + filled_;
  const char* const start = buffer_.data() + next_;
  next_ = std::min(static_cast<std::size_t>(end - buffer_.data()) + 1, filled_);
  line_ = std::string_view(start, static_cast<std::size_t>(end - start));
  if (!line_.empty() && line_.back() == '\r') line_.remove_suffix(1);
  if (lineNumber_ == 0 && line_.substr(0, kByteOrderMark.size()) == kByteOrderMark)
    line_.remove_prefix(kByteOrderMark.size());
  ++lineNumber_;
  return true;
}

void QVDataTableFileStatus::SetFileState(unsigned int state) {
  if (state < QVDataTableFileState::NumTypes) state_ = state;
}

std::size_t QVDataTableFileStatus::EstimateLinesLeft() const {
  const std::size_t size = in_->GetPlainSize();
  const std::size_t done = offset_ + next_;
  if (lineNumber_ == 0 || size == 0) return QVStatsBadData::BadIndex;
  if (size <= done) return 0;
  const double bytesPerLine = static_cast<double>(done) / static_cast<double>(lineNumber_);
  return static_cast<std::size_t>(static_cast<double>(size - done) / bytesPerLine) + 1;
}

// Construction, reports and small helpers.

QVDataTableFileInfo::QVDataTableFileInfo(
    QVPlatform::qvifstream& in, const std::string& fileName, unsigned int headerType,
    unsigned int layoutType, const std::string& headerDelimiters, const std::string& dataDelimiters,
    const std::string& headerQuotes, const std::string& dataQuotes,
    const std::string& commentCharacters, const std::string& missingValue)
    : status_(in),
      fileName_(fileName),
      headerType_(headerType < QVDataTableFileHeaderType::NumTypes ? headerType : 0),
      layoutType_(layoutType < QVDataTableFileDataLayoutType::NumTypes ? layoutType : 0),
      headerDelimiters_(headerDelimiters),
      dataDelimiters_(dataDelimiters),
      headerQuotes_(headerQuotes),
      dataQuotes_(dataQuotes),
      commentCharacters_(commentCharacters),
      missingValue_(missingValue) {
  GoToStartOfFile();
}

QVDataTableFileInfo::QVDataTableFileInfo(QVPlatform::qvifstream& in, const std::string& fileName,
                                         unsigned int headerType, unsigned int layoutType,
                                         const std::string& delimiters, const std::string& quotes,
                                         const std::string& commentCharacters,
                                         const std::string& missingValue)
    : QVDataTableFileInfo(in, fileName, headerType, layoutType, delimiters, delimiters, quotes,
                          quotes, commentCharacters, missingValue) {}

QVSystem::QVIter<const QVDataTableFileCol> QVDataTableFileInfo::GetFileColumns() const {
  return QVSystem::QVMakeIter<const QVDataTableFileCol>(columns_);
}

std::string QVDataTableFileInfo::ReportFileStatus() const {
  std::ostringstream text;
  text << "Current File State: " << QVDataTableFileState::StateName[GetFileState()] << '\n'
       << "Current File Line Number: " << GetLineNumber() << '\n'
       << "Last Line Read In: " << status_.GetLastLine() << '\n'
       << "Num Header Lines Processed: " << status_.numHeaderLinesProcessed << '\n'
       << "Num Data Lines Processed: " << status_.numDataLinesProcessed << '\n';
  return text.str();
}

std::string QVDataTableFileInfo::ReportFileType() const {
  std::ostringstream text;
  text << "File Name: " << fileName_ << '\n'
       << "Assigned File Header Type: " << QVDataTableFileHeaderType::TypeName[headerType_] << '\n'
       << "Assigned File Data Layout Type: " << QVDataTableFileDataLayoutType::TypeName[layoutType_]
       << '\n'
       << "Number Of Fixed Columns in Data Region : " << columns_.size() << '\n';
  return text.str();
}

std::string QVDataTableFileInfo::ReportFileTypeAndStatus() const {
  return ReportFileType() + ReportFileStatus();
}

QVStatModelResult QVDataTableFileInfo::Fail(unsigned int type, const char* operation,
                                            const std::string& comment) const {
  QVStatModelResult result;
  result.SetFailureTypeAndWhereFailed(type, std::string("QVDataTableFileInfo::") + operation);
  if (!status_.GetErrorText().empty()) result.AddExtraComment(status_.GetErrorText());
  if (!comment.empty()) result.AddExtraComment(comment);
  result.AddExtraComment(ReportFileTypeAndStatus());
  return result;
}

bool QVDataTableFileInfo::IsBlankOrCommentLine(std::string_view line) const {
  const std::string_view stripped = QVSystem::QVStripWhiteSpace(line);
  return stripped.empty() || commentCharacters_.find(stripped.front()) != std::string::npos;
}

bool QVDataTableFileInfo::SkipLines(std::size_t count) {
  for (std::size_t i = 0; i < count; ++i)
    if (!GetNextLine()) return false;
  return true;
}

bool QVDataTableFileInfo::GetNextLineOfSubstance() {
  while (GetNextLine())
    if (!IsBlankOrCommentLine(status_.GetLastLine())) return true;
  return false;
}

std::vector<std::string> QVDataTableFileInfo::CutDataLine() const {
  return QVStringTokenize(status_.GetLastLine(), dataDelimiters_, dataDelimiters_ != ",\n");
}

std::vector<std::string> QVDataTableFileInfo::CutArffLine() const {
  return QVStringTokenizeQuoted(status_.GetLastLine(), headerDelimiters_, headerQuotes_);
}

// Positioning and counting.

QVStatModelResult QVDataTableFileInfo::GoToStartOfHeaderInfo() {
  const char* const here = "GoToStartOfHeaderInfo";
  using namespace QVDataTableFileHeaderType;
  GoToStartOfFile();
  status_.numHeaderLinesProcessed = 0;
  if (headerType_ == NoHeader) return Fail(WrongDataViewFileType, here);
  if (headerType_ == ArffAttributes) {
    if (!GetNextLineOfSubstance())
      return Fail(InternalLogicFailure, here, "Switch should have caught all possibilities");
    // The line is usually "@RELATION name"; an attribute must not be lost.
    const std::string keyword = KeywordOf(CutArffLine());
    if (keyword == "@ATTRIBUTE" || keyword == "@DATA") status_.HoldLine();
  } else if (HasHeaderLine(headerType_)) {
    if (!SkipLines(CountLinesBeforeHeader(headerType_))) return Fail(NoData, here);
  } else {
    return Fail(BadDataViewFileType, here);
  }
  SetFileState(QVDataTableFileState::InHeader);
  return true;
}

QVStatModelResult QVDataTableFileInfo::GoToStartOfData() {
  const char* const here = "GoToStartOfData";
  using namespace QVDataTableFileHeaderType;
  GoToStartOfFile();
  status_.numDataLinesProcessed = 0;
  if (headerType_ == ArffAttributes) {
    do {
      if (!GetNextLineOfSubstance())
        return Fail(InternalLogicFailure, here,
                    "While loop should have caught line starting with @DATA ");
    } while (KeywordOf(CutArffLine()) != "@DATA");
  } else if (HasHeaderLine(headerType_)) {
    if (!SkipLines(CountLinesBeforeHeader(headerType_) + 1)) return Fail(NoData, here);
  } else if (headerType_ != NoHeader) {
    return Fail(BadDataViewFileType, here);
  }
  SetFileState(QVDataTableFileState::InData);
  return true;
}

QVStatModelResult QVDataTableFileInfo::CountNumberOfHeaderColumns(std::size_t& count) {
  const char* const here = "CountNumberOfHeaderColumns";
  count = 0;
  if (headerType_ == QVDataTableFileHeaderType::NoHeader) {
    GoToStartOfFile();
    if (!GetNextLine()) return Fail(NoData, here);
    count = CutDataLine().size();
    return true;
  }
  QVStatModelResult result = GoToStartOfHeaderInfo();
  if (result.NotSuccessful()) return PassOn(result, here);
  std::vector<std::string> fields;
  if (headerType_ != QVDataTableFileHeaderType::ArffAttributes) {
    result = PassOn(GetNextHeaderFieldVector(fields), here);
    count = fields.size();
    return result;
  }
  while (GetNextLineOfSubstance()) {
    const std::string keyword = KeywordOf(CutArffLine());
    if (keyword == "@DATA") return true;
    if (keyword == "@ATTRIBUTE") ++count;
  }
  return Fail(InternalLogicFailure, here, "While loop should have caught possibilities");
}

QVStatModelResult QVDataTableFileInfo::CountNumberOfDataLines(std::size_t& count) {
  count = 0;
  const QVStatModelResult result = GoToStartOfData();
  if (result.NotSuccessful()) return PassOn(result, "CountNumberOfDataLines");
  while (GetNextLineOfSubstance()) ++count;
  return true;
}

// Fields.

QVStatModelResult QVDataTableFileInfo::GetNextHeaderFieldVector(std::vector<std::string>& fields) {
  const char* const here = "GetNextHeaderFieldVector";
  fields.clear();
  if (!FileIsInHeaderRegion())
    return Fail(WrongDataViewFileState, here,
                "Desired File State is: " +
                    QVDataTableFileState::StateName[QVDataTableFileState::InHeader]);
  if (headerType_ == QVDataTableFileHeaderType::NoHeader) return Fail(WrongDataViewFileType, here);
  if (headerType_ == QVDataTableFileHeaderType::Unknown) return Fail(BadDataViewFileType, here);
  if (headerType_ != QVDataTableFileHeaderType::ArffAttributes) {
    if (!GetNextLine()) return Fail(NoData, here);
    fields = QVStringTokenize(status_.GetLastLine(), headerDelimiters_);
    ++status_.numHeaderLinesProcessed;
    SetFileState(QVDataTableFileState::InData);
    return true;
  }
  while (GetNextLineOfSubstance()) {
    std::vector<std::string> cut = CutArffLine();
    const std::string keyword = KeywordOf(cut);
    if (keyword == "@ATTRIBUTE") {
      fields = std::move(cut);
      ++status_.numHeaderLinesProcessed;
      return true;
    }
    if (keyword == "@DATA") {
      SetFileState(QVDataTableFileState::InData);
      return true;
    }
  }
  return Fail(InternalLogicFailure, here, "Switch should have caught all possibilities");
}

std::size_t QVDataTableFileInfo::GetExpectedNumFields() const {
  const bool triangular =
      layoutType_ == QVDataTableFileDataLayoutType::LeadingColsPlusLowerTriangular;
  return columns_.size() + (triangular ? status_.numDataLinesProcessed : 0);
}

QVStatModelResult QVDataTableFileInfo::CheckNumFields(
    const std::vector<std::string>& fields) const {
  const std::size_t expected = GetExpectedNumFields();
  if (fields.size() == expected) return true;
  std::ostringstream comment;
  comment << "Num Field elements tokenized: " << fields.size() << "; Expected " << expected
          << "\nFields: \n";
  for (std::size_t i = 0; i < fields.size(); ++i) {
    comment << fields[i] << " // ";
    if (i % 10 == 9) comment << '\n';
  }
  return Fail(MismatchBetweenPrivateVecSizes, "GetNextDataFieldVector", comment.str());
}

QVStatModelResult QVDataTableFileInfo::GetNextDataFieldVector(std::vector<std::string>& fields) {
  const char* const here = "GetNextDataFieldVector";
  fields.clear();
  if (!FileIsInDataRegion())
    return Fail(
        WrongDataViewFileState, here,
        "Desired File State is: " + QVDataTableFileState::StateName[QVDataTableFileState::InData]);
  if (layoutType_ == QVDataTableFileDataLayoutType::Unknown) return Fail(BadDataViewFileType, here);
  if (!GetNextLineOfSubstance())
    return Fail(InternalLogicFailure, here, "While loop should have caught remaining data ");
  fields = CutDataLine();
  QVStatModelResult result = CheckNumFields(fields);
  if (result.IsSuccessful()) ++status_.numDataLinesProcessed;
  return result;
}

QVStatModelResult QVDataTableFileInfo::ProcessArffAttributeLine(
    std::string& name, std::vector<std::string>& categories, unsigned int& level,
    const std::vector<std::string>& fields) {
  const char* const here = "ProcessArffAttributeLine";
  if (headerType_ != QVDataTableFileHeaderType::ArffAttributes)
    return Fail(WrongDataViewFileType, here);
  if (fields.size() < 3)
    return Fail(WrongInputVectorSize, here,
                "Number of fields in input line (" + std::to_string(fields.size()) +
                    ") is less than minimum of 3");
  name = fields[1];
  categories.clear();
  const std::string_view line = status_.GetLastLine();
  const std::size_t open = line.find('{');
  if (open != std::string_view::npos) {
    const std::size_t close = line.find('}', open);
    if (close == std::string_view::npos)
      return Fail(InternalLogicFailure, here, "No matching '}' for '{' ");
    categories = QVStringTokenizeQuoted(line.substr(open + 1, close - open - 1), dataDelimiters_,
                                        dataQuotes_);
    level = QVStatVariableType::Nominal;
    return true;
  }
  const std::string type = QVToUpper(fields[2]);
  if (type == "REAL" || type == "INTEGER" || type == "NUMERIC")
    level = QVStatVariableType::Ratio;
  else if (type == "STRING" || type == "DATE")
    level = QVStatVariableType::Identifier;
  else
    return Fail(InternalLogicFailure, here, "Unable to parse DataType");
  return true;
}

// Setting up the columns.

QVStatModelResult QVDataTableFileInfo::SetLineNumberColumn() {
  // Only whether there are data lines to count: room is found without counting them.
  std::size_t count = 0;
  if (GoToStartOfData().NotSuccessful())
    return PassOn(CountNumberOfDataLines(count), "SetFileColumns");
  columns_.clear();
  lineNumbers_ = QVDataTableFileCol("LineNumbers", MakeFullName("LineNumbers"),
                                    QVStatVariableType::Interval, 0, missingValue_, 1, false);
  return true;
}

QVStatModelResult QVDataTableFileInfo::SetFileColumns() {
  const char* const here = "SetFileColumns";
  using namespace QVDataTableFileHeaderType;
  if (headerType_ == Unknown) return Fail(BadDataViewFileType, here);
  if (headerType_ == ArffAttributes) return PassOn(SetFileColumnsForArffFile(), here);
  std::vector<std::string> names;
  if (headerType_ == NoHeader) {
    std::size_t count = 0;
    const QVStatModelResult result = CountNumberOfHeaderColumns(count);
    if (result.NotSuccessful()) return PassOn(result, here);
    for (std::size_t i = 0; i < count; ++i) names.push_back("Column_" + std::to_string(i));
  } else {
    QVStatModelResult result = GoToStartOfHeaderInfo();
    if (result.IsSuccessful()) result = GetNextHeaderFieldVector(names);
    if (result.NotSuccessful()) return PassOn(result, here);
  }
  return SetFileColumns(names);
}

QVStatModelResult QVDataTableFileInfo::SetFileColumnsForArffFile() {
  const char* const here = "SetFileColumnsForArffFile";
  if (headerType_ != QVDataTableFileHeaderType::ArffAttributes)
    return Fail(WrongDataViewFileType, here);
  QVStatModelResult result = GoToStartOfHeaderInfo();
  std::vector<std::string> names, fields;
  std::vector<unsigned int> levels;
  std::vector<std::vector<std::string>> categories;
  while (result.IsSuccessful()) {
    result = GetNextHeaderFieldVector(fields);
    if (result.NotSuccessful() || FileIsInDataRegion()) break;
    names.emplace_back();
    levels.emplace_back();
    categories.emplace_back();
    result = ProcessArffAttributeLine(names.back(), categories.back(), levels.back(), fields);
  }
  if (result.IsSuccessful()) result = SetFileColumns(names, levels, categories);
  return PassOn(result, here);
}

QVStatModelResult QVDataTableFileInfo::SetFileColumns(const std::vector<std::string>& names) {
  return SetFileColumns(names,
                        std::vector<unsigned int>(names.size(), QVStatVariableType::Unknown));
}

QVStatModelResult QVDataTableFileInfo::SetFileColumns(const std::vector<std::string>& names,
                                                      const std::vector<unsigned int>& levels) {
  if (names.size() != levels.size())
    return Fail(MismatchBetweenPrivateVecSizes, "SetFileColumns",
                "num names = " + std::to_string(names.size()) +
                    " num stat var types = " + std::to_string(levels.size()));
  return SetFileColumns(names, levels, std::vector<std::size_t>(levels.size(), 1), false);
}

QVStatModelResult QVDataTableFileInfo::SetFileColumns(
    const std::vector<std::string>& names, const std::vector<unsigned int>& levels,
    const std::vector<std::vector<std::string>>& categories) {
  if (names.size() != levels.size() || names.size() != categories.size())
    return Fail(MismatchBetweenPrivateVecSizes, "SetFileColumns",
                "num names = " + std::to_string(names.size()) +
                    " num stat var types = " + std::to_string(levels.size()) +
                    "size of vec of discrete value vecs = " + std::to_string(categories.size()));
  const QVStatModelResult result = SetLineNumberColumn();
  if (result.NotSuccessful()) return result;
  for (std::size_t i = 0; i < names.size(); ++i)
    columns_.emplace_back(names[i], MakeFullName(names[i]), levels[i], categories[i], 0,
                          missingValue_);
  return true;
}

QVStatModelResult QVDataTableFileInfo::SetFileColumns(const std::vector<std::string>& names,
                                                      const std::vector<unsigned int>& levels,
                                                      const std::vector<std::size_t>& valuesPerRow,
                                                      bool lastColumnIsLowerTriangular) {
  if (names.size() != levels.size() || names.size() != valuesPerRow.size())
    return Fail(MismatchBetweenPrivateVecSizes, "SetFileColumns",
                "num names = " + std::to_string(names.size()) +
                    " num stat var types = " + std::to_string(levels.size()) +
                    " num column 2nd dimension = " + std::to_string(valuesPerRow.size()));
  const QVStatModelResult result = SetLineNumberColumn();
  if (result.NotSuccessful()) return result;
  for (std::size_t i = 0; i < names.size(); ++i) {
    const bool triangular = lastColumnIsLowerTriangular && i + 1 == names.size();
    if (levels[i] == QVStatVariableType::Unknown)
      columns_.emplace_back(names[i], MakeFullName(names[i]), 0, missingValue_);
    else
      columns_.emplace_back(names[i], MakeFullName(names[i]), levels[i],
                            triangular ? valuesPerRow[i] : 0, missingValue_, valuesPerRow[i],
                            triangular);
  }
  return true;
}

}  // namespace QVStats
