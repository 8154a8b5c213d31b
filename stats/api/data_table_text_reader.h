/// \file
/// \brief Text files of any delimiters, quoting and spelling of missing values, read into a table.
///
///     QVDataTableReadOptions options;
///     options.delimiters = ";";
///     options.schema = {{"id", QVStatVariableType::Identifier, {}}};
///     options.badRows = QVBadRowPolicy::SkipAndReport;
///     QVDataTableReadReport report;
///     QVReadDataTable(table, in, "assay.csv", options, report);
///
/// The table gets the columns that the loaders of stats/api/data_table_fileInfo.h would give it:
/// "LineNumbers" (the line on which a row begins) and the columns of the file, their types inferred
/// in the same way where the schema gives none. Gzip is recognised.
#ifndef QVSTATS_API_DATA_TABLE_TEXT_READER_H
#define QVSTATS_API_DATA_TABLE_TEXT_READER_H

#include <cstddef>
#include <string>
#include <vector>

#include "platform/system/file_stream.h"
#include "stats/api/data_table.h"
#include "stats/api/export.h"
#include "stats/api/stat_model.h"

namespace QVStats {

/// What is known of a column beforehand.
struct QVDataTableColumnSchema {
  std::string name;
  /// Nominal, interval, ratio or identifier; unknown infers the type.
  unsigned int level = QVStatVariableType::Unknown;
  /// The categories of a nominal column; without any, its texts are the categories.
  std::vector<std::string> categories;
};

/// What happens at a row that has the wrong number of fields, a value that does not fit its column,
/// or faulty quotes.
enum class QVBadRowPolicy { Stop, SkipAndReport };

struct QVSTATS_EXPORT QVDataTableReadOptions {
  /// NoHeader, ArffAttributes, ColumnNameLine (also after one or two lines of comment).
  unsigned int headerType = QVDataTableFileHeaderType::ColumnNameLine;
  /// Each of these characters ends a field.
  std::string delimiters = ",";
  /// Runs of delimiters count as one, and those at the ends of a line as none: columns set apart by
  /// blanks.
  bool mergeDelimiters = false;
  /// A field that begins with one of these runs to the same character; within, delimiters and line
  /// ends are text and a doubled quote stands for one (RFC 4180). Empty: no quoting.
  std::string quotes = "\"";
  /// A line that begins with one of these, after blanks, is skipped. Blank lines always are.
  std::string commentCharacters;
  /// Spellings of a missing value. An empty field is always missing.
  std::vector<std::string> missingValues = {"?", "NA"};
  /// Columns by their name in the header; columns without an entry are inferred. Without a header
  /// an entry for each column, in order, names them.
  std::vector<QVDataTableColumnSchema> schema;
  QVBadRowPolicy badRows = QVBadRowPolicy::Stop;

  /// ARFF: attributes and "@DATA", quoted values with blanks or commas, % for comments, ? for
  /// missing values.
  static QVDataTableReadOptions Arff();
  /// Columns set apart by blanks and tabs.
  static QVDataTableReadOptions WhiteSpace();
};

/// A row that was not taken.
struct QVDataTableBadRow {
  std::size_t lineNumber;  ///< where the row begins, from 1
  std::string reason;
};

struct QVDataTableReadReport {
  std::size_t numRows = 0;  ///< rows in the table
  std::vector<QVDataTableBadRow> badRows;
};

/// Reads a file into a table. Blanks around a field that is not quoted are no part of it.
///
/// Failures name the file and the line in a comment; a file that fails adds no column:
/// - ArgumentValueWrong: a bad row, with the policy Stop.
/// - ColumnNotFound: the schema names a column that the file does not have.
/// - NoData: the file has no header, cannot be read, or is damaged.
/// - DuplicateNames: two columns have the same name; those before the second stay in the table.
/// and those of QVDataTableFileInfo for an ARFF header.
QVSTATS_EXPORT QVStatModelResult QVReadDataTable(QVDataTable& table, QVPlatform::qvifstream& in,
                                                 const std::string& fileName,
                                                 const QVDataTableReadOptions& options,
                                                 QVDataTableReadReport& report);

}  // namespace QVStats

#endif  // QVSTATS_API_DATA_TABLE_TEXT_READER_H
