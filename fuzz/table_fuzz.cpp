// Bytes as a table file: the first chooses the reader, the rest is the file. A table that was read
// is written in the format's own spelling; what the writer accepts reads back to as many rows.
#include "fuzz/fuzz_support.h"
#include "stats/api/data_table.h"
#include "stats/api/data_table_fileInfo.h"
#include "stats/api/data_table_text_reader.h"

namespace {

using QVPlatform::qvifstream;
using QVPlatform::qvofstream;
using QVStats::QVDataTable;
using QVStats::QVStatModelResult;

using Reader = QVStatModelResult (*)(QVDataTable&, qvifstream&, const std::string&);
using Writer = QVStatModelResult (*)(qvofstream&, const QVDataTable&, const std::string&);

QVStatModelResult ReadPGS(QVDataTable& table, qvifstream& in, const std::string& name) {
  return QVStats::QVLoadDataTableFromPGSFile(table, in, name, true);
}

QVStatModelResult ReadPGSWithoutMatrix(QVDataTable& table, qvifstream& in,
                                       const std::string& name) {
  return QVStats::QVLoadDataTableFromPGSFile(table, in, name, false);
}

QVStatModelResult ReadLeniently(QVDataTable& table, qvifstream& in, const std::string& name) {
  QVStats::QVDataTableReadOptions options;
  options.commentCharacters = "#";
  options.badRows = QVStats::QVBadRowPolicy::SkipAndReport;
  QVStats::QVDataTableReadReport report;
  return QVStats::QVReadDataTable(table, in, name, options, report);
}

QVStatModelResult ReadArffWithQuotes(QVDataTable& table, qvifstream& in, const std::string& name) {
  QVStats::QVDataTableReadReport report;
  return QVStats::QVReadDataTable(table, in, name, QVStats::QVDataTableReadOptions::Arff(), report);
}

struct Format {
  Reader reader;
  Writer writer;  ///< null when what the reader takes has no writer of its own
};

constexpr Format kFormats[] = {
    {&QVStats::QVLoadDataTableFromCSVFileWithHeader, &QVStats::QVWriteDataTableToCSVFileWithHeader},
    {&QVStats::QVLoadDataTableFromPlainFileWithHeader,
     &QVStats::QVWriteDataTableToPlainFileWithHeader},
    {&QVStats::QVLoadDataTableFromArffFile, &QVStats::QVWriteDataTableToArffFile},
    {&ReadPGS, &QVStats::QVWriteDataTableToPGSFile},
    {&ReadPGSWithoutMatrix, nullptr},
    {&QVStats::QVLoadDataTableFromPlainFileWithoutHeader, nullptr},
    {&ReadLeniently, nullptr},
    {&ReadArffWithQuotes, nullptr},
};

bool Read(const Format& format, const std::string& path, QVDataTable& table) {
  qvifstream in(path);
  return format.reader(table, in, "input").IsSuccessful();
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  QVFuzz::InstallSink();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const Format& format = kFormats[data[0] % std::size(kFormats)];
  const QVFuzz::MemoryFile file(data + 1, size - 1);
  QVDataTable table("table");
  if (!Read(format, file.GetPath(), table) || format.writer == nullptr) return 0;
  const QVFuzz::MemoryFile copy;
  qvofstream out(copy.GetPath());
  if (!format.writer(out, table, "copy").IsSuccessful()) return 0;
  QVFuzz::Require(out.close(), "the copy is written");
  QVDataTable again("again");
  QVFuzz::Require(Read(format, copy.GetPath(), again), "what was written reads back");
  QVFuzz::Require(again.GetNumRows() == table.GetNumRows(), "with as many rows");
  return 0;
}
