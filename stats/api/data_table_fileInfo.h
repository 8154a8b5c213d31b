/// \file
/// \brief Tables from and to text files: plain tables, CSV, ARFF, and similarity matrices as a
/// lower triangle (PGS).
///
///     QVDataTable table("iris");
///     QVPlatform::qvifstream in("iris.csv");
///     const QVStatModelResult result = QVLoadDataTableFromCSVFileWithHeader(table, in,
///     "iris.csv");
///
/// A table that is read has the interval column "LineNumbers" (where each row stands in the file)
/// and then the columns of the file. Empty fields and "?" are missing. Columns without a declared
/// type become ratio columns when every field is a number or missing, otherwise nominal with at
/// most 19 distinct texts and identifiers with more. Files with other delimiters, quoted fields or
/// other spellings of missing values are read by stats/api/data_table_text_reader.h.
#ifndef QVSTATS_API_DATA_TABLE_FILEINFO_H
#define QVSTATS_API_DATA_TABLE_FILEINFO_H

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/system/file_stream.h"
#include "platform/system/iter.h"
#include "stats/api/data_table.h"
#include "stats/api/export.h"
#include "stats/api/stat_model.h"

namespace QVStats {

/// Position and counters of a reader in a file. Lines end with "\n" or "\r\n"; a last line without
/// an end counts; a UTF-8 byte-order mark before the first line is skipped.
class QVSTATS_EXPORT QVDataTableFileStatus {
 public:
  /// The stream must outlive the object.
  explicit QVDataTableFileStatus(QVPlatform::qvifstream& in);

  void GoToStartOfFile();
  /// Reads a line. \return false at the end of the file.
  bool GetNextLine();
  /// Makes the next GetNextLine deliver the same line again.
  void HoldLine() { held_ = true; }
  /// The line read last, valid until the next line is read.
  std::string_view GetLastLine() const { return line_; }
  std::size_t GetLineNumber() const { return lineNumber_; }
  unsigned int GetFileState() const { return state_; }
  /// Codes of QVDataTableFileState; others are ignored.
  void SetFileState(unsigned int state);
  /// How many lines the rest of the file holds, judged by the lines so far; BadIndex when the size
  /// of the file is not known.
  std::size_t EstimateLinesLeft() const;
  /// What the stream found wrong, empty when nothing.
  const std::string& GetErrorText() const { return in_->GetErrorText(); }

  std::size_t numHeaderLinesProcessed = 0;
  std::size_t numDataLinesProcessed = 0;

 private:
  /// Reads on; what is left of the buffer moves to its front.
  void Fill();

  QVPlatform::qvifstream* in_;
  std::vector<char> buffer_;
  std::size_t next_ = 0;    ///< where the next line begins in the buffer
  std::size_t filled_ = 0;  ///< bytes of the file in the buffer; one byte '\n' follows them
  std::size_t offset_ = 0;  ///< where the buffer begins in the file
  std::string_view line_;
  std::string lastLine_;  ///< keeps the line when the buffer changes at the end of the file
  bool held_ = false;
  bool ended_ = false;
  std::size_t lineNumber_ = 0;
  unsigned int state_ = QVDataTableFileState::AtStartOfFile;
};

/// A column of a file while it is read: fields become values of a column of known type, or are
/// collected as texts until the type can be chosen.
class QVSTATS_EXPORT QVDataTableFileCol {
 public:
  /// A null column named "___TEMPCOL___".
  QVDataTableFileCol();
  /// A column of a known level.
  QVDataTableFileCol(const std::string& name, const std::string& fullName, unsigned int level,
                     std::size_t numRows, const std::string& missingValue, std::size_t numColsInCol,
                     bool lowerTriangular);
  /// A column with a fixed list of categories.
  QVDataTableFileCol(const std::string& name, const std::string& fullName, unsigned int level,
                     const std::vector<std::string>& possibleValues, std::size_t numRows,
                     const std::string& missingValue);
  /// A column whose type is inferred.
  QVDataTableFileCol(const std::string& name, const std::string& fullName, std::size_t numRows,
                     const std::string& missingValue);

  /// Adds a field; an empty one is missing. Without a known type the text is kept. Otherwise it is
  /// converted; fails as QVAppendMissingDataToCol and QVConvertStringAndAppendToCol do.
  QVStatModelResult AddField(const std::string& text);
  /// Finishes the column: infers the type if it is open, and closes the column.
  QVStatModelResult FinishAddVars();
  /// Chooses the type by the texts kept, as the head of this file tells, and converts them.
  QVStatModelResult FillDataTableCol();
  /// Appends all texts kept to the column as it is. Stops at the first that does not convert.
  QVStatModelResult ConvertAllStringsAndAddToDataTableCol();
  std::size_t NumUniqueStringsToConvert() const;

  const std::string& GetColumnName() const { return column_.GetColumnName(); }
  const std::string& GetFullColumnName() const { return column_.GetFullColumnName(); }
  /// Whether the type is inferred from the file.
  bool FileDefinesStatVarType() const { return inferred_; }
  /// Fields so far while the type is open, else elements of the column.
  std::size_t GetNumRows() const;
  unsigned int GetCurrentStatVarType() const { return column_.GetStatVariableType(); }
  const QVDataTableCol& GetDataTableCol() const { return column_; }
  const std::string& GetMissingValueString() const { return missingValue_; }

 private:
  friend class QVDataTableFileInfo;

  /// Texts by their code while they are few, one by one when they are many.
  class Texts {
   public:
    void Add(std::string_view text);
    std::size_t size() const { return codes_.size() + texts_.size(); }
    std::size_t CountDistinct() const;
    const std::string& operator[](std::size_t i) const {
      return texts_.empty() ? distinct_[codes_[i]] : texts_[i];
    }
    std::vector<std::string> TakeAll();

   private:
    std::vector<unsigned char> codes_;
    std::vector<std::string> distinct_;
    std::vector<std::string> texts_;
  };

  void ReplaceColumn(unsigned int level);
  void FillIdentifiers();
  /// Takes over the values of a column of numbers; one of inferred type becomes a ratio column.
  void AdoptNumbers(std::vector<double> values);

  bool inferred_ = false;
  QVDataTableCol column_;
  std::string missingValue_;
  Texts texts_;
};

/// Walks a text file, cuts its lines into fields and feeds them to the file's columns.
///
/// A failure of an operation names it ("QVDataTableFileInfo::GoToStartOfData") and has
/// ReportFileTypeAndStatus() as a comment, and what the stream found wrong as another.
class QVSTATS_EXPORT QVDataTableFileInfo {
 public:
  /// Codes of QVDataTableFileHeaderType and QVDataTableFileDataLayoutType (unknown ones become 0);
  /// sets of characters; the text of a missing value. The stream must outlive the object.
  QVDataTableFileInfo(QVPlatform::qvifstream& in, const std::string& fileName,
                      unsigned int headerType, unsigned int layoutType,
                      const std::string& headerDelimiters, const std::string& dataDelimiters,
                      const std::string& headerQuotes, const std::string& dataQuotes,
                      const std::string& commentCharacters, const std::string& missingValue);
  /// One set of delimiters and one of quotes for header and data.
  QVDataTableFileInfo(QVPlatform::qvifstream& in, const std::string& fileName,
                      unsigned int headerType, unsigned int layoutType,
                      const std::string& delimiters, const std::string& quotes,
                      const std::string& commentCharacters, const std::string& missingValue);

  const std::string& GetFileName() const { return fileName_; }
  unsigned int GetDataTableFileHeaderType() const { return headerType_; }
  unsigned int GetDataTableFileDataLayoutType() const { return layoutType_; }
  std::size_t GetNumColumnsInFile() const { return columns_.size(); }
  QVSystem::QVIter<const QVDataTableFileCol> GetFileColumns() const;
  const QVDataTableFileCol& GetColOfTableLineNums() const { return lineNumbers_; }
  void GoToStartOfFile() { status_.GoToStartOfFile(); }
  void SetFileState(unsigned int state) { status_.SetFileState(state); }
  unsigned int GetFileState() const { return status_.GetFileState(); }
  std::size_t GetLineNumber() const { return status_.GetLineNumber(); }
  std::size_t GetNumDataLinesProcessed() const { return status_.numDataLinesProcessed; }
  bool FileIsInDataRegion() const { return GetFileState() == QVDataTableFileState::InData; }
  bool FileIsInHeaderRegion() const { return GetFileState() == QVDataTableFileState::InHeader; }
  bool GetNextLine() { return status_.GetNextLine(); }
  std::string GetLastLineReadIn() const { return std::string(status_.GetLastLine()); }
  /// Whether a line is white space alone or begins, after white space, with a comment character.
  bool IsBlankOrCommentLine(std::string_view line) const;

  QVStatModelResult GoToStartOfHeaderInfo();
  QVStatModelResult GoToStartOfData();
  /// In a file without a header these are the fields of its first line, whatever that holds.
  QVStatModelResult CountNumberOfHeaderColumns(std::size_t& count);
  QVStatModelResult CountNumberOfDataLines(std::size_t& count);
  /// The fields of the next header line. In an ARFF file these are the fields of the next attribute
  /// line; after the last one `fields` is empty and the file is in its data region.
  QVStatModelResult GetNextHeaderFieldVector(std::vector<std::string>& fields);
  /// The fields of the next data line; fails when their number is not the expected one.
  QVStatModelResult GetNextDataFieldVector(std::vector<std::string>& fields);
  /// Reads name, level and categories from the fields of the attribute line read last.
  QVStatModelResult ProcessArffAttributeLine(std::string& name,
                                             std::vector<std::string>& categories,
                                             unsigned int& level,
                                             const std::vector<std::string>& fields);

  /// Sets up the columns from the file's header.
  QVStatModelResult SetFileColumns();
  /// Sets up given columns. Level 0 (unknown) infers the type.
  QVStatModelResult SetFileColumns(const std::vector<std::string>& names);
  QVStatModelResult SetFileColumns(const std::vector<std::string>& names,
                                   const std::vector<unsigned int>& levels);
  QVStatModelResult SetFileColumns(const std::vector<std::string>& names,
                                   const std::vector<unsigned int>& levels,
                                   const std::vector<std::vector<std::string>>& categories);
  QVStatModelResult SetFileColumns(const std::vector<std::string>& names,
                                   const std::vector<unsigned int>& levels,
                                   const std::vector<std::size_t>& valuesPerRow,
                                   bool lastColumnIsLowerTriangular);

  /// Reads all data lines into the columns and closes them. Stops at the first line that fails.
  QVStatModelResult ProcessDataLines();
  /// The same without keeping the fields of a last column that is a lower triangle.
  QVStatModelResult ProcessLeadingColumnsOfDataLines();

  std::string ReportFileStatus() const;
  std::string ReportFileType() const;
  std::string ReportFileTypeAndStatus() const;

 private:
  class DataReader;

  QVStatModelResult Fail(unsigned int type, const char* operation,
                         const std::string& comment = "") const;
  QVStatModelResult AddReport(QVStatModelResult result) const;
  QVStatModelResult SetFileColumnsForArffFile();
  QVStatModelResult SetLineNumberColumn();
  std::string MakeFullName(const std::string& name) const { return fileName_ + "::" + name; }
  bool SkipLines(std::size_t count);
  /// Reads on to the next line that is neither blank nor a comment; false at the end of the file.
  bool GetNextLineOfSubstance();
  std::vector<std::string> CutDataLine() const;
  std::vector<std::string> CutArffLine() const;
  std::size_t GetExpectedNumFields() const;
  QVStatModelResult CheckNumFields(const std::vector<std::string>& fields) const;
  QVStatModelResult AddFieldsOfLine(const std::vector<std::string>& fields);
  QVStatModelResult ReadData(bool keepLowerTriangle);
  QVStatModelResult ProcessDataLines(bool keepLowerTriangle);

  QVDataTableFileStatus status_;
  std::string fileName_;
  unsigned int headerType_;
  unsigned int layoutType_;
  std::string headerDelimiters_;
  std::string dataDelimiters_;
  std::string headerQuotes_;
  std::string dataQuotes_;
  std::string commentCharacters_;
  std::string missingValue_;
  std::vector<QVDataTableFileCol> columns_;
  QVDataTableFileCol lineNumbers_;
};

/// Loaders. Each adds "LineNumbers" and the columns of the file to the table; on failure, which
/// names the loader without its prefix and reports where in the file it happened, the table gets no
/// column of the file; but a column that the table refuses (DuplicateNames) leaves those before it
/// in the table. Lines that are blank or begin with % are skipped.
///
/// ARFF: "@ATTRIBUTE name type" lines (numeric types are ratio columns, STRING and DATE identifier
/// columns, {a, b} nominal columns of these categories), "@DATA", then fields between commas and
/// blanks.
QVSTATS_EXPORT QVStatModelResult QVLoadDataTableFromArffFile(QVDataTable& table,
                                                             QVPlatform::qvifstream& in,
                                                             const std::string& fileName);
/// Fields between blanks and commas; the columns are called Column_0, Column_1, ...
QVSTATS_EXPORT QVStatModelResult QVLoadDataTableFromPlainFileWithoutHeader(
    QVDataTable& table, QVPlatform::qvifstream& in, const std::string& fileName);
/// A line of names, then fields between blanks, tabs and commas.
QVSTATS_EXPORT QVStatModelResult QVLoadDataTableFromPlainFileWithHeader(
    QVDataTable& table, QVPlatform::qvifstream& in, const std::string& fileName);
/// A line of names, then fields that commas end: two commas in a row hold a missing value. Quotes
/// are ordinary characters.
QVSTATS_EXPORT QVStatModelResult QVLoadDataTableFromCSVFileWithHeader(QVDataTable& table,
                                                                      QVPlatform::qvifstream& in,
                                                                      const std::string& fileName);
/// Two lines of comment, a header line, then "index,title,s_k0,...,s_kk" for row k: the columns
/// "Index", "Title" and "SimilarityMatrix". Without the matrix only the leading columns are loaded.
QVSTATS_EXPORT QVStatModelResult QVLoadDataTableFromPGSFile(QVDataTable& table,
                                                            QVPlatform::qvifstream& in,
                                                            const std::string& fileName,
                                                            bool loadSimilarityMatrix);

/// Writers: the rows of a table, what the loader of the format reads back to the same values. The
/// column "LineNumbers" of a table that was read is left out. Numbers are written with as many
/// digits as they need, missing values as "?"; an array column becomes one column "name_j" for each
/// of its values. What the loader would not read back is refused before anything is written
/// (ArgumentValueWrong, naming row and column): a delimiter or line end in a text or a name, an
/// empty text, a line that would pass for a comment; DuplicateNames for equal names. A write error
/// is InternalLogicFailure with the stream's text. `fileName` serves the messages.
QVSTATS_EXPORT QVStatModelResult QVWriteDataTableToCSVFileWithHeader(QVPlatform::qvofstream& out,
                                                                     const QVDataTable& table,
                                                                     const std::string& fileName);
QVSTATS_EXPORT QVStatModelResult QVWriteDataTableToPlainFileWithHeader(QVPlatform::qvofstream& out,
                                                                       const QVDataTable& table,
                                                                       const std::string& fileName);
/// Levels are kept: nominal columns declare their categories, ratio and interval columns are
/// NUMERIC, identifiers STRING.
QVSTATS_EXPORT QVStatModelResult QVWriteDataTableToArffFile(QVPlatform::qvofstream& out,
                                                            const QVDataTable& table,
                                                            const std::string& fileName);
/// The first two columns beside the matrix are index and title (the row number when there are
/// fewer); the matrix is the table's lower-triangular ratio column over all its rows. Fails with
/// MatrixArgumentRequired when the table has no such column or not all of its rows in order.
QVSTATS_EXPORT QVStatModelResult QVWriteDataTableToPGSFile(QVPlatform::qvofstream& out,
                                                           const QVDataTable& table,
                                                           const std::string& fileName);

}  // namespace QVStats

#endif  // QVSTATS_API_DATA_TABLE_FILEINFO_H
