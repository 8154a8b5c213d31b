#include "stats/api/data_table_text_reader.h"

#include <algorithm>
#include <utility>

#include "platform/system/text.h"
#include "stats/api/data_table_fileInfo.h"

namespace QVStats {

using namespace QVStatModelFailureType;

namespace {

/// The missing value as the columns are told: a text that no file of texts holds.
const std::string kMissing("\0", 1);

constexpr std::string_view kBlanks = " \t";

bool IsIn(char c, std::string_view set) { return set.find(c) != std::string_view::npos; }

struct Field {
  std::string text;
  bool quoted = false;
};

/// Cuts rows into fields; a row may take several lines.
class RowCutter {
 public:
  RowCutter(QVDataTableFileInfo& file, const QVDataTableReadOptions& options)
      : file_(file), options_(options) {}

  /// Cuts the row that begins with the file's last line. \return what is wrong with it, or "".
  std::string Cut(std::vector<Field>& fields) {
    fields.clear();
    line_ = file_.GetLastLineReadIn();
    at_ = 0;
    if (options_.mergeDelimiters) SkipDelimiters();
    while (at_ < line_.size() || !options_.mergeDelimiters) {
      fields.emplace_back();
      const std::string fault = CutField(fields.back());
      if (!fault.empty()) return fault;
      if (at_ >= line_.size()) break;
      ++at_;
      if (options_.mergeDelimiters) SkipDelimiters();
    }
    return "";
  }

 private:
  bool IsDelimiter(char c) const { return IsIn(c, options_.delimiters); }

  void SkipDelimiters() {
    while (at_ < line_.size() && IsDelimiter(line_[at_])) ++at_;
  }

  void SkipBlanks() {
    while (at_ < line_.size() && IsIn(line_[at_], kBlanks) && !IsDelimiter(line_[at_])) ++at_;
  }

  /// Leaves the position at the delimiter after the field or at the end of the line.
  std::string CutField(Field& field) {
    SkipBlanks();
    if (at_ < line_.size() && IsIn(line_[at_], options_.quotes)) return CutQuoted(field);
    const std::size_t end = std::min(line_.find_first_of(options_.delimiters, at_), line_.size());
    field.text = QVSystem::QVStripWhiteSpace(std::string_view(line_).substr(at_, end - at_));
    at_ = end;
    return "";
  }

  std::string CutQuoted(Field& field) {
    const char quote = line_[at_++];
    field.quoted = true;
    for (;;) {
      const std::size_t end = line_.find(quote, at_);
      if (end == std::string::npos) {
        field.text.append(line_, at_, std::string::npos);
        if (!file_.GetNextLine()) return "a quote is not closed";
        field.text += '\n';
        line_ = file_.GetLastLineReadIn();
        at_ = 0;
        continue;
      }
      field.text.append(line_, at_, end - at_);
      at_ = end + 1;
      if (at_ >= line_.size() || line_[at_] != quote) break;
      field.text += quote;
      ++at_;
    }
    SkipBlanks();
    if (at_ < line_.size() && !IsDelimiter(line_[at_])) return "text follows a closing quote";
    return "";
  }

  QVDataTableFileInfo& file_;
  const QVDataTableReadOptions& options_;
  std::string line_;
  std::size_t at_ = 0;
};

class TableReader {
 public:
  TableReader(QVPlatform::qvifstream& in, const std::string& fileName,
              const QVDataTableReadOptions& options, QVDataTableReadReport& report)
      : in_(in),
        fileName_(fileName),
        options_(options),
        report_(report),
        file_(in, fileName, options.headerType, QVDataTableFileDataLayoutType::Rectangular, " \t",
              ", \t", "'\"", "'\"", options.commentCharacters, "?"),
        cutter_(file_, options),
        lineNumbers_("LineNumbers", fileName + "::LineNumbers", QVStatVariableType::Interval, 0,
                     kMissing, 1, false) {}

  QVStatModelResult Read(QVDataTable& table) {
    report_ = QVDataTableReadReport();
    QVStatModelResult result = SetUpColumns();
    if (result.IsSuccessful()) result = ReadRows();
    if (result.IsSuccessful() && in_.HasError()) result = Fail(NoData, in_.GetErrorText());
    if (result.IsSuccessful()) result = lineNumbers_.FinishAddVars();
    for (QVDataTableFileCol& column : columns_)
      if (result.IsSuccessful()) result = column.FinishAddVars();
    if (result.IsSuccessful()) result = table.AddColumn(lineNumbers_.GetDataTableCol());
    for (const QVDataTableFileCol& column : columns_)
      if (result.IsSuccessful()) result = table.AddColumn(column.GetDataTableCol());
    if (result.NotSuccessful()) result.AddCallContext("QVReadDataTable");
    return result;
  }

 private:
  static QVStatModelResult Fail(unsigned int type, const std::string& comment) {
    QVStatModelResult result;
    result.SetFailureTypeAndWhereFailed(type, "QVReadDataTable");
    result.AddExtraComment(comment);
    return result;
  }

  bool GetNextRow() {
    while (file_.GetNextLine())
      if (!file_.IsBlankOrCommentLine(file_.GetLastLineReadIn())) return true;
    return false;
  }

  /// Leaves the file at its first row.
  QVStatModelResult SetUpColumns() {
    std::vector<QVDataTableColumnSchema> columns;
    QVStatModelResult result =
        options_.headerType == QVDataTableFileHeaderType::ArffAttributes ? ReadAttributes(columns)
        : options_.headerType == QVDataTableFileHeaderType::NoHeader     ? CountColumns(columns)
                                                                         : ReadNames(columns);
    if (result.IsSuccessful()) result = ApplySchema(columns);
    if (result.NotSuccessful()) return result;
    for (const QVDataTableColumnSchema& column : columns) {
      const std::string fullName = fileName_ + "::" + column.name;
      if (column.level == QVStatVariableType::Unknown)
        columns_.emplace_back(column.name, fullName, 0, kMissing);
      else
        columns_.emplace_back(column.name, fullName, column.level, column.categories, 0, kMissing);
    }
    return true;
  }

  QVStatModelResult ReadAttributes(std::vector<QVDataTableColumnSchema>& columns) {
    QVStatModelResult result = file_.GoToStartOfHeaderInfo();
    std::vector<std::string> fields;
    while (result.IsSuccessful()) {
      result = file_.GetNextHeaderFieldVector(fields);
      if (result.NotSuccessful() || file_.FileIsInDataRegion()) break;
      columns.emplace_back();
      result = file_.ProcessArffAttributeLine(columns.back().name, columns.back().categories,
                                              columns.back().level, fields);
    }
    return result;
  }

  QVStatModelResult ReadNames(std::vector<QVDataTableColumnSchema>& columns) {
    const QVStatModelResult result = file_.GoToStartOfHeaderInfo();
    if (result.NotSuccessful()) return result;
    std::vector<Field> fields;
    if (!GetNextRow())
      return Fail(NoData, in_.HasError() ? in_.GetErrorText() : fileName_ + ": no header line");
    const std::string fault = cutter_.Cut(fields);
    if (!fault.empty()) return Fail(NoData, fileName_ + ": header line: " + fault);
    for (Field& field : fields) columns.push_back({std::move(field.text), 0, {}});
    return true;
  }

  QVStatModelResult CountColumns(std::vector<QVDataTableColumnSchema>& columns) {
    std::vector<Field> fields;
    file_.GoToStartOfFile();
    if (!GetNextRow())
      return Fail(NoData, in_.HasError() ? in_.GetErrorText() : fileName_ + ": no data");
    cutter_.Cut(fields);
    const bool named = options_.schema.size() == fields.size();
    file_.GoToStartOfFile();
    for (std::size_t i = 0; i < fields.size(); ++i)
      columns.push_back({named ? options_.schema[i].name : "Column_" + std::to_string(i), 0, {}});
    return true;
  }

  QVStatModelResult ApplySchema(std::vector<QVDataTableColumnSchema>& columns) const {
    for (const QVDataTableColumnSchema& entry : options_.schema) {
      const auto column =
          std::find_if(columns.begin(), columns.end(),
                       [&](const QVDataTableColumnSchema& one) { return one.name == entry.name; });
      if (column == columns.end())
        return Fail(ColumnNotFound, fileName_ + ": no column named \"" + entry.name + "\"");
      *column = entry;
    }
    return true;
  }

  QVStatModelResult ReadRows() {
    std::vector<Field> fields;
    while (GetNextRow()) {
      const std::size_t lineNumber = file_.GetLineNumber();
      std::string fault = cutter_.Cut(fields);
      if (fault.empty()) fault = CheckRow(fields);
      if (fault.empty()) {
        const QVStatModelResult result = AddRow(lineNumber, fields);
        if (result.NotSuccessful()) return result;
        continue;
      }
      if (options_.badRows == QVBadRowPolicy::Stop)
        return Fail(ArgumentValueWrong,
                    fileName_ + ", line " + std::to_string(lineNumber) + ": " + fault);
      report_.badRows.push_back({lineNumber, std::move(fault)});
    }
    return true;
  }

  bool IsMissing(const std::string& text) const {
    return text.empty() || std::find(options_.missingValues.begin(), options_.missingValues.end(),
                                     text) != options_.missingValues.end();
  }

  /// \return what is wrong with a row, or "". Looked at as a whole, so that no part is stored.
  std::string CheckRow(const std::vector<Field>& fields) const {
    if (fields.size() != columns_.size())
      return std::to_string(fields.size()) + " fields instead of " +
             std::to_string(columns_.size());
    for (std::size_t i = 0; i < fields.size(); ++i) {
      const std::string& text = fields[i].text;
      if (IsMissing(text)) continue;
      const char* const fault = CheckValue(columns_[i].GetDataTableCol(), text);
      if (fault)
        return "column \"" + columns_[i].GetColumnName() + "\": \"" + text + "\" is " + fault;
    }
    return "";
  }

  static const char* CheckValue(const QVDataTableCol& column, const std::string& text) {
    const unsigned int level = column.GetStatVariableType();
    double number = 0.0;
    int whole = 0;
    if (level == QVStatVariableType::Ratio && !QVSystem::QVStringToNumber(text, number))
      return "no number";
    if (level == QVStatVariableType::Interval && !QVSystem::QVStringToNumber(text, whole))
      return "no whole number";
    const bool fixed =
        level == QVStatVariableType::Nominal && column.GetNumUniqueDiscreteValues() > 0;
    if (fixed &&
        column.GetImpl()->IndexOfStringInListOfPossibleValues(text) == QVStatsBadData::BadUnsigned)
      return "none of the categories";
    return nullptr;
  }

  QVStatModelResult AddRow(std::size_t lineNumber, const std::vector<Field>& fields) {
    QVStatModelResult result = lineNumbers_.AddField(std::to_string(lineNumber));
    for (std::size_t i = 0; i < fields.size() && result.IsSuccessful(); ++i)
      result = columns_[i].AddField(IsMissing(fields[i].text) ? kMissing : fields[i].text);
    ++report_.numRows;
    return result;
  }

  QVPlatform::qvifstream& in_;
  const std::string& fileName_;
  const QVDataTableReadOptions& options_;
  QVDataTableReadReport& report_;
  QVDataTableFileInfo file_;
  RowCutter cutter_;
  QVDataTableFileCol lineNumbers_;
  std::vector<QVDataTableFileCol> columns_;
};

}  // namespace

QVDataTableReadOptions QVDataTableReadOptions::Arff() {
  QVDataTableReadOptions options;
  options.headerType = QVDataTableFileHeaderType::ArffAttributes;
  options.quotes = "'\"";
  options.commentCharacters = "%";
  options.missingValues = {"?"};
  return options;
}

QVDataTableReadOptions QVDataTableReadOptions::WhiteSpace() {
  QVDataTableReadOptions options;
  options.delimiters = " \t";
  options.mergeDelimiters = true;
  options.commentCharacters = "#";
  return options;
}

QVStatModelResult QVReadDataTable(QVDataTable& table, QVPlatform::qvifstream& in,
                                  const std::string& fileName,
                                  const QVDataTableReadOptions& options,
                                  QVDataTableReadReport& report) {
  return TableReader(in, fileName, options, report).Read(table);
}

}  // namespace QVStats
