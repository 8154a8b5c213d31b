/// \file
/// \brief Tables in text files, a row at a time: comma- or tab-separated, with a header line.
#ifndef QVSTATS_APPS_DELIMITED_READER_H
#define QVSTATS_APPS_DELIMITED_READER_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/system/file_stream.h"

namespace QVApps {

/// Reads rows of fields. A field in double quotes may hold separators, line ends and, doubled,
/// quotes (RFC 4180). Blanks around a field without quotes are dropped, and so are empty lines.
class DelimitedReader {
 public:
  /// Opens the file, plain or gzip, "-" for the standard input, and reads its header.
  /// Throws Failure when that fails, the header is missing or a column has no name or occurs twice.
  DelimitedReader(const std::string& path, char separator);

  const std::vector<std::string>& GetColumns() const { return columns_; }
  /// The position of a column by its exact name; else by its name in any case.
  std::optional<std::size_t> FindColumn(std::string_view name) const;
  /// The position of a column that must be there: throws Failure, which lists the columns.
  std::size_t RequireColumn(std::string_view name) const;

  /// Reads the next row; its number of fields may differ from that of the columns.
  /// \return false at the end. Throws Failure for a fault of the file or an unclosed quote.
  bool Next(std::vector<std::string>& fields);
  /// The number of the first line of the row read last, from 1.
  std::size_t GetLineNumber() const { return rowLine_; }
  /// What messages call the file.
  const std::string& GetName() const { return name_; }

 private:
  bool ReadRow(std::vector<std::string>& fields);

  QVPlatform::qvifstream in_;
  std::string name_;
  char separator_;
  std::vector<std::string> columns_;
  std::size_t rowLine_ = 0;
};

/// "'a', 'b' and 3 more": names for a message.
std::string ListNames(const std::vector<std::string>& names);

}  // namespace QVApps

#endif  // QVSTATS_APPS_DELIMITED_READER_H
