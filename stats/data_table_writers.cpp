#include <algorithm>
#include <array>
#include <set>

#include "platform/system/text.h"
#include "stats/api/data_table_fileInfo.h"

namespace QVStats {

using namespace QVStatModelFailureType;
using namespace QVStatsBadData;

namespace {

constexpr std::size_t kRowsOfBlock = 1024;
constexpr const char* kMissingText = "?";

QVStatModelResult Fail(unsigned int type, const char* where, const std::string& fileName,
                       const std::string& comment) {
  QVStatModelResult result;
  result.SetFailureTypeAndWhereFailed(type, where);
  result.AddExtraComment(fileName + ": " + comment);
  return result;
}

bool IsNumeric(const QVDataTableCol& column) {
  return column.GetStatVariableType() == QVStatVariableType::Ratio ||
         column.GetStatVariableType() == QVStatVariableType::Interval;
}

/// One value of every row: a plain column, or one of an array column.
struct Field {
  std::string name;
  QVDataTableCol column;
  std::size_t j;

  /// The texts of up to kRowsOfBlock rows as they stand in a file; they live until the next call.
  void Read(const QVRowNumbers& rows) {
    texts.resize(rows.size());
    if (!IsNumeric(column)) {
      column.GetImpl()->GetTexts(rows, j, texts.data(), buffer);
      std::replace(texts.begin(), texts.end(), std::string_view(MissingString),
                   std::string_view(kMissingText));
      return;
    }
    std::array<double, kRowsOfBlock> values;
    column.GetImpl()->GetDoubles(rows, j, values.data());
    buffer.resize(rows.size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
      buffer[i] = values[i] == MissingDouble ? kMissingText : QVSystem::QVNumberToString(values[i]);
      texts[i] = buffer[i];
    }
  }

  std::vector<std::string_view> texts;
  std::vector<std::string> buffer;
};

/// What a format's loader cannot read back.
struct Format {
  const char* writerName;
  char delimiter;
  const char* splitsText;  ///< characters that end a field
  const char* splitsName;  ///< characters that no name can hold
};

class Writer {
 public:
  Writer(const Format& format, QVPlatform::qvofstream& out, const QVDataTable& table,
         const std::string& fileName)
      : format_(format), out_(out), fileName_(fileName), rows_(table.GetRowNumbers()) {}

  void AddField(const std::string& name, const QVDataTableCol& column, std::size_t j) {
    fields_.push_back(Field{name, column, j, {}, {}});
  }

  void AddFieldsOf(const QVDataTable& table) {
    for (const QVDataTableCol& column : table.GetColumns()) {
      const std::string& name = column.GetColumnName();
      if (name == "LineNumbers") continue;
      const std::size_t size = column.GetNumColumnsInCol();
      for (std::size_t j = 0; j < size; ++j)
        AddField(size == 1 ? name : name + "_" + std::to_string(j), column, j);
    }
  }

  /// Whether all of it can be read back.
  QVStatModelResult Check() {
    std::set<std::string> names;
    for (const Field& field : fields_) {
      if (field.name.empty() || field.name.find_first_of(format_.splitsName) != std::string::npos ||
          field.name.find('\0') != std::string::npos)
        return Refuse("the name of column \"" + field.name + "\" cannot be written");
      if (!names.insert(field.name).second)
        return Fail(DuplicateNames, format_.writerName, fileName_,
                    "two columns are named \"" + field.name + "\"");
    }
    for (Field& field : fields_)
      if (!IsNumeric(field.column)) {
        const QVStatModelResult result = CheckTexts(field);
        if (result.NotSuccessful()) return result;
      }
    return true;
  }

  const std::vector<Field>& GetFields() const { return fields_; }

  void WriteNames() {
    std::string line;
    for (const Field& field : fields_) line += field.name + format_.delimiter;
    if (!line.empty()) line.back() = '\n';
    out_ << line;
  }

  void WriteRows() {
    ForEachBlock([this](const QVRowNumbers& rows, std::size_t) {
      std::string lines;
      for (Field& field : fields_) field.Read(rows);
      for (std::size_t i = 0; i < rows.size(); ++i) {
        for (const Field& field : fields_) {
          lines += field.texts[i];
          lines += format_.delimiter;
        }
        EndLine(lines);
      }
      out_ << lines;
      return true;
    });
  }

  QVStatModelResult Finish() const {
    if (!out_.HasError() && out_.IsOpen()) return true;
    return Fail(InternalLogicFailure, format_.writerName, fileName_,
                out_.HasError() ? out_.GetErrorText() : "the file is not open");
  }

  QVStatModelResult Refuse(const std::string& what) const {
    return Fail(ArgumentValueWrong, format_.writerName, fileName_, what);
  }

  const std::vector<std::size_t>& GetRowNumbers() const { return rows_; }

  static void EndLine(std::string& lines) {
    if (!lines.empty()) lines.back() = '\n';
  }

 private:
  /// Calls work(rows, position of the first) for each block until it returns false.
  template <class Work>
  void ForEachBlock(Work work) {
    const QVRowNumbers all(rows_);
    for (std::size_t from = 0; from < rows_.size(); from += kRowsOfBlock)
      if (!work(all.Slice(from, std::min(kRowsOfBlock, rows_.size() - from)), from)) return;
  }

  bool CanReadBack(const Field& field, std::string_view text) const {
    if (text.empty() || text.find_first_of(format_.splitsText) != std::string_view::npos)
      return false;
    if (&field != &fields_.front()) return true;
    // The beginning of a line must not pass for a comment, nor a whole line for a blank one.
    const std::string_view stripped = QVSystem::QVStripWhiteSpace(text);
    return stripped.empty() ? fields_.size() > 1 : stripped.front() != '%';
  }

  QVStatModelResult CheckTexts(Field& field) {
    QVStatModelResult result(true);
    std::vector<std::string> buffer;
    std::vector<std::string_view> texts(kRowsOfBlock);
    ForEachBlock([&](const QVRowNumbers& rows, std::size_t) {
      field.column.GetImpl()->GetTexts(rows, field.j, texts.data(), buffer);
      for (std::size_t i = 0; i < rows.size() && result.IsSuccessful(); ++i)
        if (texts[i] == kMissingText || !CanReadBack(field, texts[i]))
          result = Refuse("the text \"" + std::string(texts[i]) + "\" in row " +
                          std::to_string(rows[i]) + " of column \"" + field.name +
                          "\" would not be read back");
      return result.IsSuccessful();
    });
    return result;
  }

  const Format& format_;
  QVPlatform::qvofstream& out_;
  const std::string& fileName_;
  std::vector<std::size_t> rows_;
  std::vector<Field> fields_;
};

constexpr Format kCSV = {"QVWriteDataTableToCSVFileWithHeader", ',', ",\r\n", ",\r\n"};
constexpr Format kPlain = {"QVWriteDataTableToPlainFileWithHeader", ' ', " \t,\r\n", " \t,\r\n"};
constexpr Format kArff = {"QVWriteDataTableToArffFile", ',', " ,\r\n", "{}\r\n"};
constexpr Format kPGS = {"QVWriteDataTableToPGSFile", ',', ",\r\n", ",\r\n"};

QVStatModelResult WriteWithNameLine(const Format& format, QVPlatform::qvofstream& out,
                                    const QVDataTable& table, const std::string& fileName) {
  Writer writer(format, out, table, fileName);
  writer.AddFieldsOf(table);
  const QVStatModelResult result = writer.Check();
  if (result.NotSuccessful()) return result;
  writer.WriteNames();
  writer.WriteRows();
  return writer.Finish();
}

/// A text as the quoted tokeniser reads it back; empty when it cannot be quoted.
std::string Quote(const std::string& text, const char* delimiters) {
  const bool plain = !text.empty() && text.find_first_of(delimiters) == std::string::npos &&
                     text.front() != '\'' && text.front() != '"';
  if (plain) return text;
  for (const char quote : {'\'', '"'})
    if (text.find(quote) == std::string::npos) return quote + text + quote;
  return "";
}

/// The type of an ARFF attribute; empty when a category cannot be written.
std::string MakeArffType(const QVDataTableCol& column) {
  if (IsNumeric(column)) return "NUMERIC";
  if (column.GetStatVariableType() != QVStatVariableType::Nominal) return "STRING";
  std::string type = "{";
  for (const std::string& category : column.GetUniqueDiscreteValues()) {
    if (category == MissingString || category == BadString) continue;
    const std::string quoted = Quote(category, " ,\n");
    if (quoted.empty() || category.find_first_of("{}\r\n") != std::string::npos) return "";
    type += quoted + ",";
  }
  if (type.size() > 1) type.pop_back();
  return type + "}";
}

const QVDataTableCol* FindTriangle(const QVDataTable& table) {
  for (const QVDataTableCol& column : table.GetColumns())
    if (column.ColIsLowerTriangular() && IsNumeric(column)) return &column;
  return nullptr;
}

}  // namespace

QVStatModelResult QVWriteDataTableToCSVFileWithHeader(QVPlatform::qvofstream& out,
                                                      const QVDataTable& table,
                                                      const std::string& fileName) {
  return WriteWithNameLine(kCSV, out, table, fileName);
}

QVStatModelResult QVWriteDataTableToPlainFileWithHeader(QVPlatform::qvofstream& out,
                                                        const QVDataTable& table,
                                                        const std::string& fileName) {
  return WriteWithNameLine(kPlain, out, table, fileName);
}

QVStatModelResult QVWriteDataTableToArffFile(QVPlatform::qvofstream& out, const QVDataTable& table,
                                             const std::string& fileName) {
  Writer writer(kArff, out, table, fileName);
  writer.AddFieldsOf(table);
  const QVStatModelResult result = writer.Check();
  if (result.NotSuccessful()) return result;
  const std::string relation = Quote(table.GetTableName(), " \t\r\n");
  std::string header = "@RELATION " + (relation.empty() ? "table" : relation) + "\n\n";
  for (const Field& field : writer.GetFields()) {
    const std::string name = Quote(field.name, " \t\n");
    const std::string type = MakeArffType(field.column);
    if (name.empty() || type.empty())
      return writer.Refuse("the name or a category of column \"" + field.name +
                           "\" cannot be written");
    header.append("@ATTRIBUTE ").append(name).append(" ").append(type).append("\n");
  }
  out << header << "\n@DATA\n";
  writer.WriteRows();
  return writer.Finish();
}

QVStatModelResult QVWriteDataTableToPGSFile(QVPlatform::qvofstream& out, const QVDataTable& table,
                                            const std::string& fileName) {
  Writer writer(kPGS, out, table, fileName);
  const QVDataTableCol* const triangle = FindTriangle(table);
  const std::vector<std::size_t>& rows = writer.GetRowNumbers();
  bool whole = triangle && rows.size() == triangle->GetTotalNumRowsInCol();
  for (std::size_t i = 0; whole && i < rows.size(); ++i) whole = rows[i] == i;
  if (!whole)
    return Fail(MatrixArgumentRequired, kPGS.writerName, fileName,
                "a lower-triangular column of numbers and all of its rows are needed");
  for (const QVDataTableCol& column : table.GetColumns())
    if (column.GetColumnName() != "LineNumbers" && column.GetNumColumnsInCol() == 1 &&
        !column.ColIsLowerTriangular() && writer.GetFields().size() < 2)
      writer.AddField(column.GetColumnName(), column, 0);
  if (writer.GetFields().size() < 2) {
    std::vector<double> numbers(rows.begin(), rows.end());
    writer.AddField(" row", QVDataTableCol("", numbers, 1, false), 0);
  }
  if (writer.GetFields().size() < 2) writer.AddField("  row", writer.GetFields().front().column, 0);
  const QVStatModelResult result = writer.Check();
  if (result.NotSuccessful()) return result;
  out << "% Similarity matrix of " + std::to_string(rows.size()) + " rows\n"
      << "% Row k holds the similarities to rows 0 to k\nIndex,Title,SimilarityMatrix\n";
  std::vector<Field> leading(writer.GetFields());
  std::vector<double> values(rows.size());
  for (const std::size_t r : rows) {
    std::string line;
    for (Field& field : leading) {
      field.Read(QVRowNumbers(r, std::size_t{1}));
      line += field.texts.front();
      line += ',';
    }
    for (std::size_t c = 0; c <= r; ++c) {
      const double value = triangle->GetDouble(r, c);
      line += value == MissingDouble ? kMissingText : QVSystem::QVNumberToString(value);
      line += ',';
    }
    Writer::EndLine(line);
    out << line;
  }
  return writer.Finish();
}

}  // namespace QVStats
