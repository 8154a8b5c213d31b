#include <algorithm>

#include "stats/api/data_table_column_functions.h"
#include "stats/failure.h"

namespace QVStats {

namespace {

using Values = std::vector<double>;

/// Passes the result of the vector routine on with this routine's name.
QVTestOutcome Finish(QVStatModelResult& result, const char* where, const QVTestOutcome& outcome) {
  QVFailedIn(result, where);
  return outcome;
}

}  // namespace

QVTestOutcome QVGetTwoSampleTestForTwoColumnsOfRatioType(
    QVStatModelResult& result, std::size_t& numMissing, std::size_t& numBad, unsigned int code,
    QVTestAlternative alternative, const QVDataTable& table, const std::string& nameOne,
    const std::string& nameTwo, std::size_t elemOne, std::size_t elemTwo) {
  const char* const where = "QVGetTwoSampleTestForTwoColumnsOfRatioType";
  Values first, second;
  result = QVGetVecOfDataFromColumnOfRatioType(first, numMissing, numBad, table, nameOne, elemOne);
  if (QVFailedIn(result, where)) return {};
  std::size_t missing = 0, bad = 0;
  result = QVGetVecOfDataFromColumnOfRatioType(second, missing, bad, table, nameTwo, elemTwo);
  numMissing += missing;
  numBad += bad;
  if (QVFailedIn(result, where)) return {};
  return Finish(result, where,
                QVGetTwoSampleTestForDataVecs(result, code, alternative, first, second));
}

QVTestOutcome QVGetTwoSampleTestSplitByNominalColumn(
    QVStatModelResult& result, std::size_t& numMissing, std::size_t& numBad, unsigned int code,
    QVTestAlternative alternative, const QVDataTable& table, const std::string& colName,
    const std::string& nominalName, const std::string& categoryOne, const std::string& categoryTwo,
    std::size_t subCol) {
  const char* const where = "QVGetTwoSampleTestSplitByNominalColumn";
  std::vector<std::string> categories;
  std::vector<Values> values;
  result = QVGetDataSplitByNominalColumn(categories, values, numMissing, numBad, table, colName,
                                         nominalName, subCol);
  if (QVFailedIn(result, where)) return {};
  const auto find = [&](const std::string& category) {
    return static_cast<std::size_t>(std::find(categories.begin(), categories.end(), category) -
                                    categories.begin());
  };
  const std::size_t one = find(categoryOne), two = find(categoryTwo);
  if (one == categories.size() || two == categories.size()) {
    result = QVFailure(QVStatModelFailureType::NameNotFound, where)
             << "Column: " << nominalName
             << ": no category: " << (one == categories.size() ? categoryOne : categoryTwo);
    return {};
  }
  return Finish(result, where,
                QVGetTwoSampleTestForDataVecs(result, code, alternative, values[one], values[two]));
}

QVTestOutcome QVGetPairedTestForTwoColumnsOfRatioType(
    QVStatModelResult& result, std::size_t& numMissing, std::size_t& numBad, unsigned int code,
    QVTestAlternative alternative, const QVDataTable& table, const std::string& nameOne,
    const std::string& nameTwo, std::size_t elemOne, std::size_t elemTwo) {
  const char* const where = "QVGetPairedTestForTwoColumnsOfRatioType";
  std::vector<std::pair<double, double>> pairs;
  result = QVGetVecOfPairedDataFromTwoColumnsOfRatioType(pairs, numMissing, numBad, table, nameOne,
                                                         nameTwo, elemOne, elemTwo);
  if (QVFailedIn(result, where)) return {};
  return Finish(result, where, QVGetPairedTestForDataPairVec(result, code, alternative, pairs));
}

QVTestOutcome QVGetKolmogorovSmirnovTestForColumnOfRatioType(
    QVStatModelResult& result, std::size_t& numMissing, std::size_t& numBad,
    QVTestAlternative alternative, const QVUniVarPDF& pdf, const QVDataTable& table,
    const std::string& colName, std::size_t subCol) {
  const char* const where = "QVGetKolmogorovSmirnovTestForColumnOfRatioType";
  Values values;
  result = QVGetVecOfDataFromColumnOfRatioType(values, numMissing, numBad, table, colName, subCol);
  if (QVFailedIn(result, where)) return {};
  return Finish(result, where,
                QVGetKolmogorovSmirnovTestForDataVec(result, alternative, values, pdf));
}

}  // namespace QVStats
