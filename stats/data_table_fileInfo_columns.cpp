#include <algorithm>

#include "stats/api/data_table_fileInfo.h"

namespace QVStats {

namespace {

/// With more distinct texts than this a column is no nominal one.
constexpr std::size_t kMaxCategories = 19;
constexpr const char* kTemporaryName = "___TEMPCOL___";

QVStatModelResult PassOn(QVStatModelResult result, const char* where) {
  if (result.NotSuccessful()) result.AddCallContext(where);
  return result;
}

}  // namespace

// Texts.

void QVDataTableFileCol::Texts::Add(std::string_view text) {
  if (!texts_.empty()) {
    texts_.emplace_back(text);
    return;
  }
  auto code = static_cast<std::size_t>(std::find(distinct_.begin(), distinct_.end(), text) -
                                       distinct_.begin());
  if (code == kMaxCategories) {
    std::vector<std::string> all = TakeAll();
    texts_ = std::move(all);
    texts_.emplace_back(text);
    return;
  }
  if (code == distinct_.size()) distinct_.emplace_back(text);
  codes_.push_back(static_cast<unsigned char>(code));
}

std::size_t QVDataTableFileCol::Texts::CountDistinct() const {
  if (texts_.empty()) return distinct_.size();
  std::vector<std::string_view> sorted(texts_.begin(), texts_.end());
  std::sort(sorted.begin(), sorted.end());
  return static_cast<std::size_t>(std::unique(sorted.begin(), sorted.end()) - sorted.begin());
}

std::vector<std::string> QVDataTableFileCol::Texts::TakeAll() {
  std::vector<std::string> all = std::move(texts_);
  if (all.empty())
    for (const unsigned char code : codes_) all.push_back(distinct_[code]);
  *this = Texts();
  return all;
}

// The column.

QVDataTableFileCol::QVDataTableFileCol() : column_(kTemporaryName, kTemporaryName) {}

QVDataTableFileCol::QVDataTableFileCol(const std::string& name, const std::string& fullName,
                                       unsigned int level, std::size_t numRows,
                                       const std::string& missingValue, std::size_t numColsInCol,
                                       bool lowerTriangular)
    : column_(name, fullName, level, numRows, numColsInCol, lowerTriangular),
      missingValue_(missingValue) {}

QVDataTableFileCol::QVDataTableFileCol(const std::string& name, const std::string& fullName,
                                       unsigned int level,
                                       const std::vector<std::string>& possibleValues,
                                       std::size_t numRows, const std::string& missingValue)
    : column_(name, fullName, level, possibleValues, numRows, 1, false),
      missingValue_(missingValue) {}

QVDataTableFileCol::QVDataTableFileCol(const std::string& name, const std::string& fullName,
                                       std::size_t, const std::string& missingValue)
    : inferred_(true), column_(name, fullName), missingValue_(missingValue) {}

std::size_t QVDataTableFileCol::GetNumRows() const {
  return texts_.size() > 0 ? texts_.size() : column_.GetNumElementsInCol();
}

QVStatModelResult QVDataTableFileCol::AddField(const std::string& text) {
  const std::string& field = text.empty() ? missingValue_ : text;
  if (inferred_) {
    texts_.Add(field);
    return true;
  }
  return PassOn(field == missingValue_ ? QVAppendMissingDataToCol(column_)
                                       : QVConvertStringAndAppendToCol(column_, field),
                "QVDataTableFileCol::AddField");
}

std::size_t QVDataTableFileCol::NumUniqueStringsToConvert() const { return texts_.CountDistinct(); }

QVStatModelResult QVDataTableFileCol::ConvertAllStringsAndAddToDataTableCol() {
  for (std::size_t i = 0; i < texts_.size(); ++i) {
    const QVStatModelResult result = texts_[i] == missingValue_
                                         ? QVAppendMissingDataToCol(column_)
                                         : QVConvertStringAndAppendToCol(column_, texts_[i]);
    if (result.NotSuccessful())
      return PassOn(result, "QVDataTableFileCol::ConvertAllStringsAndAddToDataTableCol");
  }
  return true;
}

void QVDataTableFileCol::ReplaceColumn(unsigned int level) {
  column_ = QVDataTableCol(std::string(GetColumnName()), std::string(GetFullColumnName()), level,
                           texts_.size(), 1, false);
}

void QVDataTableFileCol::FillIdentifiers() {
  std::vector<std::string> texts = texts_.TakeAll();
  std::replace(texts.begin(), texts.end(), missingValue_, QVStatsBadData::MissingString);
  column_ = QVDataTableCol(std::make_unique<QVDataTableColOfIdentifiers>(
      std::string(GetColumnName()), std::string(GetFullColumnName()), std::move(texts)));
}

QVStatModelResult QVDataTableFileCol::FillDataTableCol() {
  ReplaceColumn(QVStatVariableType::Ratio);
  QVStatModelResult result = ConvertAllStringsAndAddToDataTableCol();
  if (result.NotSuccessful()) {
    result = true;
    if (NumUniqueStringsToConvert() <= kMaxCategories) {
      ReplaceColumn(QVStatVariableType::Nominal);
      result = ConvertAllStringsAndAddToDataTableCol();
    } else {
      FillIdentifiers();
    }
  }
  texts_ = Texts();
  QVFinishAppendingVars(column_);
  return PassOn(result, "QVDataTableFileCol::FillDataTableCol");
}

QVStatModelResult QVDataTableFileCol::FinishAddVars() {
  const bool open = inferred_ && column_.GetStatVariableType() == QVStatVariableType::Unknown;
  if (open) return PassOn(FillDataTableCol(), "QVDataTableFileCol::FinishAddVars");
  QVFinishAppendingVars(column_);
  return true;
}

void QVDataTableFileCol::AdoptNumbers(std::vector<double> values) {
  const auto has = [&](double sentinel) {
    return std::find(values.begin(), values.end(), sentinel) != values.end();
  };
  const bool hasMissing = has(QVStatsBadData::MissingDouble);
  const bool hasBad = has(QVStatsBadData::BadDouble);
  column_ = QVDataTableCol(std::make_unique<QVDataTableColOfRatioVars>(
      std::string(GetColumnName()), std::string(GetFullColumnName()), std::move(values),
      column_.GetNumColumnsInCol(), column_.ColIsLowerTriangular()));
  if (hasMissing) column_.SetColHasMissingData();
  if (hasBad) column_.SetColHasBadData();
}

}  // namespace QVStats
