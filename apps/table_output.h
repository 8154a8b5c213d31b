/// \file
/// \brief Writing a table to a file that appears whole or not at all.
#ifndef QVSTATS_APPS_TABLE_OUTPUT_H
#define QVSTATS_APPS_TABLE_OUTPUT_H

#include <string>

#include "stats/api/data_table_fileInfo.h"

namespace QVApps {

/// One of the writers of stats/api/data_table_fileInfo.h.
using TableWriter = QVStats::QVStatModelResult (*)(QVPlatform::qvofstream&,
                                                   const QVStats::QVDataTable&, const std::string&);

/// Writes beside the file and renames, so that a failure leaves what stood there before; devices
/// and pipes are written to directly. Throws Failure with what is wrong and where.
void WriteTable(const std::string& path, const QVStats::QVDataTable& table, TableWriter write);

/// The comments of a failure, which say what is wrong and where.
std::string Describe(const QVStats::QVStatModelResult& result);

}  // namespace QVApps

#endif  // QVSTATS_APPS_TABLE_OUTPUT_H
