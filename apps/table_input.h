/// \file
/// \brief The table that a subcommand works on: a file of any format that the library reads.
#ifndef QVSTATS_APPS_TABLE_INPUT_H
#define QVSTATS_APPS_TABLE_INPUT_H

#include <cstddef>
#include <string>
#include <vector>

#include "stats/api/data_table.h"

namespace CLI {
class App;
}

namespace QVApps {

/// The options as the user gave them.
struct TableInput {
  std::string path;
  std::string format;
  std::string delimiters;
  std::vector<std::string> missing;
  bool skipBad = false;
};

/// Adds FILE and the options that say how to read it.
void AddTableInputOptions(CLI::App& command, TableInput& input);

/// The name of a table's format: the one asked for, else by the extension of the path without
/// ".gz". Throws Failure for one that is not known.
std::string FindTableFormat(const std::string& asked, const std::string& path);

/// Whether the level of a column is ratio or interval.
bool HoldsNumbers(const QVStats::QVDataTableCol& column);

/// Rows that have the same text in a column.
struct RowGroup {
  std::string name;
  std::vector<std::size_t> rows;
};

/// A table with the places of its cells in the file. Messages name the file and the line.
class InputTable {
 public:
  /// Reads the file. Rows that do not fit are reported and counted, or fail, as the input says.
  /// Throws Failure.
  explicit InputTable(const TableInput& input);

  const QVStats::QVDataTable& GetTable() const { return table_; }
  /// What messages call the file.
  const std::string& GetName() const { return name_; }
  /// The columns of the file, in order.
  std::vector<QVStats::QVDataTableCol> GetColumns() const;
  /// A column by its exact name, else by its name in any case. Throws Failure, which lists the
  /// columns.
  QVStats::QVDataTableCol RequireColumn(const std::string& name) const;

  /// A number for each row, NaN where it is missing. Other text, and numbers that no model can be
  /// made of, are reported and counted, or fail, as bad rows do. Throws Failure for a column with
  /// several values a row too.
  std::vector<double> GetNumbers(const QVStats::QVDataTableCol& column);
  /// The rows by their text in a column: groups in the order of their numbers, or else of their
  /// texts; those without one come last, as "(missing)".
  std::vector<RowGroup> GetGroups(const QVStats::QVDataTableCol& column) const;

  /// Rows and cells that were left out.
  std::size_t GetNumRefused() const { return numRefused_; }

 private:
  /// "file, line 7".
  std::string GetPlace(std::size_t row) const;
  void RefuseCell(const QVStats::QVDataTableCol& column, std::size_t row, const std::string& fault);

  QVStats::QVDataTable table_;
  std::string name_;
  bool skipBad_;
  std::size_t numRefused_ = 0;
};

}  // namespace QVApps

#endif  // QVSTATS_APPS_TABLE_INPUT_H
