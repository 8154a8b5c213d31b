#include "stats/api/data_table_fileInfo.h"

namespace QVStats {

namespace {

/// How a format is cut into fields.
struct Format {
  const char* loaderName;
  unsigned int headerType;
  unsigned int layoutType;
  const char* headerDelimiters;
  const char* dataDelimiters;
};

using namespace QVDataTableFileHeaderType;
using namespace QVDataTableFileDataLayoutType;

constexpr Format kArff = {"LoadDataTableFromArffFile", ArffAttributes, Rectangular, " \t\n",
                          " ,\n"};
constexpr Format kPlainWithoutHeader = {"LoadDataTableFromPlainFileWithoutHeader", NoHeader,
                                        Rectangular, " \t\n", " ,\n"};
constexpr Format kPlainWithHeader = {"LoadDataTableFromPlainFileWithHeader", ColumnNameLine,
                                     Rectangular, " ,\t\n", " \t,\n"};
constexpr Format kCSV = {"LoadDataTableFromCSVFileWithHeader", ColumnNameLine, Rectangular, ",\n",
                         ",\n"};
constexpr Format kPGS = {"LoadDataTableFromPGSFile", TwoCommentsThenColumnNameLine,
                         LeadingColsPlusLowerTriangular, " ,\n", ",\n"};

QVDataTableFileInfo Open(const Format& format, QVPlatform::qvifstream& in,
                         const std::string& fileName) {
  constexpr const char* kQuotes = "'\"";
  return QVDataTableFileInfo(in, fileName, format.headerType, format.layoutType,
                             format.headerDelimiters, format.dataDelimiters, kQuotes, kQuotes, "%",
                             "?");
}

/// Adds the line numbers and the first `numColumns` columns of a file that has been read.
QVStatModelResult AddColumns(QVDataTable& table, const QVDataTableFileInfo& file,
                             std::size_t numColumns) {
  QVStatModelResult result = table.AddColumn(file.GetColOfTableLineNums().GetDataTableCol());
  auto column = file.GetFileColumns();
  for (std::size_t i = 0; i < numColumns && column && result.IsSuccessful(); ++i, ++column)
    result = table.AddColumn(column->GetDataTableCol());
  return result;
}

QVStatModelResult Finish(const Format& format, QVStatModelResult result) {
  if (result.NotSuccessful()) result.AddCallContext(format.loaderName);
  return result;
}

QVStatModelResult Load(const Format& format, QVDataTable& table, QVPlatform::qvifstream& in,
                       const std::string& fileName) {
  QVDataTableFileInfo file = Open(format, in, fileName);
  QVStatModelResult result = file.SetFileColumns();
  if (result.IsSuccessful()) result = file.ProcessDataLines();
  if (result.IsSuccessful()) result = AddColumns(table, file, file.GetNumColumnsInFile());
  return Finish(format, result);
}

}  // namespace

QVStatModelResult QVLoadDataTableFromArffFile(QVDataTable& table, QVPlatform::qvifstream& in,
                                              const std::string& fileName) {
  return Load(kArff, table, in, fileName);
}

QVStatModelResult QVLoadDataTableFromPlainFileWithoutHeader(QVDataTable& table,
                                                            QVPlatform::qvifstream& in,
                                                            const std::string& fileName) {
  return Load(kPlainWithoutHeader, table, in, fileName);
}

QVStatModelResult QVLoadDataTableFromPlainFileWithHeader(QVDataTable& table,
                                                         QVPlatform::qvifstream& in,
                                                         const std::string& fileName) {
  return Load(kPlainWithHeader, table, in, fileName);
}

QVStatModelResult QVLoadDataTableFromCSVFileWithHeader(QVDataTable& table,
                                                       QVPlatform::qvifstream& in,
                                                       const std::string& fileName) {
  return Load(kCSV, table, in, fileName);
}

QVStatModelResult QVLoadDataTableFromPGSFile(QVDataTable& table, QVPlatform::qvifstream& in,
                                             const std::string& fileName,
                                             bool loadSimilarityMatrix) {
  QVDataTableFileInfo file = Open(kPGS, in, fileName);
  std::size_t numRows = 0;
  QVStatModelResult result = file.CountNumberOfDataLines(numRows);
  if (result.IsSuccessful()) {
    const std::vector<std::string> names = {"Index", "Title", "SimilarityMatrix"};
    const std::vector<unsigned int> levels = {
        QVStatVariableType::Unknown, QVStatVariableType::Unknown, QVStatVariableType::Ratio};
    // Without the matrix its column stays empty and only the leading columns reach the table.
    result = file.SetFileColumns(
        names, levels, std::vector<std::size_t>{1, 1, loadSimilarityMatrix ? numRows : 1}, true);
  }
  if (result.IsSuccessful())
    result =
        loadSimilarityMatrix ? file.ProcessDataLines() : file.ProcessLeadingColumnsOfDataLines();
  if (result.IsSuccessful())
    result = AddColumns(table, file, file.GetNumColumnsInFile() - (loadSimilarityMatrix ? 0 : 1));
  return Finish(kPGS, result);
}

}  // namespace QVStats
