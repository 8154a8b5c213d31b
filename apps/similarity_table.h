/// \file
/// \brief A triangle of similarities from a file, with the responses of its rows.
#ifndef QVSTATS_APPS_SIMILARITY_TABLE_H
#define QVSTATS_APPS_SIMILARITY_TABLE_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "stats/api/data_table.h"

namespace QVApps {

/// The options as the user gave them.
struct SimilarityTableArguments {
  std::string table;
  std::string response;
  std::string values;  ///< the file of the responses; the table itself when empty
  std::string id;
  std::string similarity = "SimilarityMatrix";
};

struct SimilarityTable {
  QVStats::QVDataTable table{"similarities"};
  /// Of each row.
  std::vector<std::string> titles;
  std::vector<std::optional<double>> responses;
  /// The rows with a response, and those without.
  std::vector<std::size_t> known;
  std::vector<std::size_t> unknown;
  /// Values that are no number, or of titles that the table has not; reported on standard error.
  std::size_t numRefused = 0;
};

/// Reads the table and adds the responses to it as a column. Throws Failure when something cannot
/// be read, when a title has two different values, or when fewer than two rows have one.
SimilarityTable ReadSimilarityTable(const SimilarityTableArguments& arguments);

}  // namespace QVApps

#endif  // QVSTATS_APPS_SIMILARITY_TABLE_H
