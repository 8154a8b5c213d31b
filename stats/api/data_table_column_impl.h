/// \file
/// \brief Storage of columns: one class for each level of measurement, behind one abstract base.
///
/// A column holds values of one native type and answers reads in every type. Data that is missing,
/// bad, or asked for at a cell that does not exist is told by the sentinels of
/// stats/api/stats_data_types.h; nothing here throws. Programs use columns through the handle
/// QVDataTableCol (stats/api/data_table_column.h).
///
/// A row may hold several values (an array column), and a column may hold one symmetric matrix as
/// its lower triangle. With m values a row, cell (r, c) is element r * m + c; in a lower triangle
/// it is r (r + 1) / 2 + c for c < r and c (c + 1) / 2 + r otherwise.
#ifndef QVSTATS_API_DATA_TABLE_COLUMN_IMPL_H
#define QVSTATS_API_DATA_TABLE_COLUMN_IMPL_H

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/system/iter.h"
#include "stats/api/export.h"
#include "stats/api/stat_model.h"
#include "stats/api/stats_data_types.h"

namespace QVStats {

class QVDataTable;
class QVDataTableRow;

/// One entry of a sparse column.
class QVRowColValue {
 public:
  QVRowColValue(double value, std::size_t row, std::size_t col)
      : value_(value), row_(row), col_(col) {}
  std::size_t GetRowNum() const { return row_; }
  std::size_t GetColNum() const { return col_; }
  double GetValue() const { return value_; }

 private:
  double value_;
  std::size_t row_;
  std::size_t col_;
};

/// The rows of a bulk read, in order: a list of row numbers, or a range. A list is not copied and
/// must outlive the object.
class QVRowNumbers {
 public:
  /// Rows first, first + 1, ..., first + size - 1.
  QVRowNumbers(std::size_t first, std::size_t size) : first_(first), size_(size) {}
  QVRowNumbers(const std::size_t* list, std::size_t size) : list_(list), size_(size) {}
  explicit QVRowNumbers(const std::vector<std::size_t>& list)
      : list_(list.data()), size_(list.size()) {}

  std::size_t size() const { return size_; }
  bool IsRange() const { return list_ == nullptr; }
  std::size_t operator[](std::size_t i) const { return list_ ? list_[i] : first_ + i; }
  /// `size` of these rows from position `from` on.
  QVRowNumbers Slice(std::size_t from, std::size_t size) const {
    return list_ ? QVRowNumbers(list_ + from, size) : QVRowNumbers(first_ + from, size);
  }

 private:
  const std::size_t* list_ = nullptr;
  std::size_t first_ = 0;
  std::size_t size_;
};

/// What a cell holds, as RowColIndexIsBad, RowColHasMissingData and RowColHasBadData tell it, the
/// first that holds.
enum class QVCellState : unsigned char { Good, BadIndex, Missing, Bad };

/// A column. Const operations are safe from many threads once nothing is appended any more.
class QVSTATS_EXPORT QVDataTableColBase {
 public:
  QVDataTableColBase(const std::string& name, const std::string& fullName,
                     std::size_t numColumnsInCol, bool lowerTriangular, bool sparse);
  virtual ~QVDataTableColBase();

  /// \return the code of a category; BadUnsigned when it is none, and for columns not nominal.
  virtual unsigned int IndexOfStringInListOfPossibleValues(const std::string& text) const = 0;

  /// Append a value. Each class takes its native type and ignores the others; the checked appends
  /// of stats/api/data_table_column.h report what does not fit.
  virtual void PushBackUnsigned(unsigned int value) = 0;
  virtual void PushBackInt(int value) = 0;
  virtual void PushBackDouble(double value) = 0;
  virtual void PushBackString(const std::string& value) = 0;
  /// Closes the column for appends; a nominal column then builds its categories. Once only.
  virtual void FinishAddingVars() = 0;

  /// Code of QVStatVariableType.
  virtual unsigned int GetStatVariableType() const = 0;
  /// Code of QVStatVarDataType.
  virtual unsigned int GetStatVarDataType() const = 0;
  virtual std::size_t GetNumElementsInCol() const = 0;
  /// Number of categories, or of distinct values (sentinels are values like others).
  virtual std::size_t GetNumUniqueDiscreteValues() const = 0;
  /// The categories of a nominal column in the order of their codes; empty otherwise.
  virtual std::vector<std::string> GetUniqueDiscreteValues() const = 0;
  /// A heading and at most `limit` distinct values, ten a line.
  virtual std::string PrintUniqueDiscreteValues(std::size_t limit) const = 0;

  /// Whether the cell does not exist.
  virtual bool RowColIndexIsBad(std::size_t row, std::size_t col) const;
  /// Both are false for a cell that does not exist.
  virtual bool RowColHasMissingData(std::size_t row, std::size_t col) const = 0;
  virtual bool RowColHasBadData(std::size_t row, std::size_t col) const = 0;

  /// The value of a cell, converted from the native type; the sentinel for a bad index when the
  /// cell does not exist.
  virtual unsigned int GetUnsigned(std::size_t row, std::size_t col) const = 0;
  virtual int GetInt(std::size_t row, std::size_t col) const = 0;
  virtual double GetDouble(std::size_t row, std::size_t col) const = 0;
  virtual std::string GetString(std::size_t row, std::size_t col) const = 0;

  /// Bulk reads: values[i] is what the read of one cell gives for (rows[i], col), one virtual call
  /// for all of them. `values` has room for rows.size() elements.
  virtual void GetUnsigneds(const QVRowNumbers& rows, std::size_t col, unsigned int* values) const;
  virtual void GetInts(const QVRowNumbers& rows, std::size_t col, int* values) const;
  virtual void GetDoubles(const QVRowNumbers& rows, std::size_t col, double* values) const;
  virtual void GetCellStates(const QVRowNumbers& rows, std::size_t col, QVCellState* states) const;
  /// Texts are not copied where the column stores them; otherwise `buffer` holds them.
  virtual void GetTexts(const QVRowNumbers& rows, std::size_t col, std::string_view* texts,
                        std::vector<std::string>& buffer) const;

  void SetColumnName(const std::string& name) { name_ = name; }
  const std::string& GetColumnName() const { return name_; }
  const std::string& GetFullColumnName() const { return fullName_; }
  /// Values in a row.
  std::size_t GetNumColumnsInCol() const { return numColumnsInCol_; }
  bool ColIsLowerTriangular() const { return lowerTriangular_; }
  std::size_t GetTotalNumRowsInCol() const;
  void SetColReadOnly() { readOnly_ = true; }
  bool ColIsReadOnly() const { return readOnly_; }
  bool ColIsSparse() const { return sparse_; }
  void SetColHasMissingData() { hasMissing_ = true; }
  void SetColHasBadData() { hasBad_ = true; }
  /// Whether a sentinel has been appended. Nominal columns do not keep track.
  bool ColHasMissingData() const { return hasMissing_; }
  bool ColHasBadData() const { return hasBad_; }
  /// Index of the element that holds a cell, BadIndex for col >= GetNumColumnsInCol().
  std::size_t GetDataTableColIndex(std::size_t row, std::size_t col) const;

  /// Names, types, sizes and flags, a line each.
  std::string PrintSummary() const;
  /// The summary and the texts of the first rows: of the column, of a table, or of an iterator.
  std::string PrintSummaryPlusStartOfData(std::size_t maxRows, std::size_t maxCols) const;
  std::string PrintSummaryPlusStartOfData(const QVDataTable& table, std::size_t maxRows,
                                          std::size_t maxCols) const;
  std::string PrintSummaryPlusStartOfData(QVSystem::QVIter<const QVDataTableRow> rows,
                                          std::size_t maxRows, std::size_t maxCols) const;

 protected:
  QVDataTableColBase(const QVDataTableColBase&) = default;
  QVDataTableColBase& operator=(const QVDataTableColBase&) = delete;

 private:
  std::string name_;
  std::string fullName_;
  std::size_t numColumnsInCol_;
  bool lowerTriangular_;
  bool readOnly_ = false;
  bool sparse_;
  bool hasMissing_ = false;
  bool hasBad_ = false;
};

/// A column that stores a vector of values as they were appended: what interval, ratio and
/// identifier columns share. `Value` is int, double or std::string.
template <class Value>
class QVSTATS_EXPORT QVDataTableColOfValues : public QVDataTableColBase {
 public:
  unsigned int IndexOfStringInListOfPossibleValues(const std::string& text) const override;
  void PushBackUnsigned(unsigned int value) override;
  void PushBackInt(int value) override;
  void PushBackDouble(double value) override;
  void PushBackString(const std::string& value) override;
  void FinishAddingVars() override;
  std::size_t GetNumElementsInCol() const override;
  std::size_t GetNumUniqueDiscreteValues() const override;
  std::vector<std::string> GetUniqueDiscreteValues() const override;
  std::string PrintUniqueDiscreteValues(std::size_t limit) const override;
  bool RowColHasMissingData(std::size_t row, std::size_t col) const override;
  bool RowColHasBadData(std::size_t row, std::size_t col) const override;
  unsigned int GetUnsigned(std::size_t row, std::size_t col) const override;
  int GetInt(std::size_t row, std::size_t col) const override;
  double GetDouble(std::size_t row, std::size_t col) const override;
  std::string GetString(std::size_t row, std::size_t col) const override;
  void GetUnsigneds(const QVRowNumbers& rows, std::size_t col, unsigned int* values) const override;
  void GetInts(const QVRowNumbers& rows, std::size_t col, int* values) const override;
  void GetDoubles(const QVRowNumbers& rows, std::size_t col, double* values) const override;
  void GetCellStates(const QVRowNumbers& rows, std::size_t col, QVCellState* states) const override;
  void GetTexts(const QVRowNumbers& rows, std::size_t col, std::string_view* texts,
                std::vector<std::string>& buffer) const override;

  /// The values of all elements, without the blanks of a sparse column.
  const std::vector<Value>& GetStoredValues() const { return values_; }

 protected:
  QVDataTableColOfValues(const std::string& name, const std::string& fullName, std::size_t numRows,
                         std::size_t numColumnsInCol, bool lowerTriangular, bool sparse);

  /// Takes over `values`, whose sentinels the caller has looked for.
  void SetStoredValues(std::vector<Value> values) { values_ = std::move(values); }
  /// Distinct values in ascending order.
  virtual std::vector<Value> GetSortedDistinctValues() const;
  /// \return the value of an element, null when there is none.
  virtual const Value* FindElement(std::size_t index) const;

 private:
  const Value* FindCell(std::size_t row, std::size_t col) const;
  void Append(const Value& value);
  template <class Target, class Convert>
  void ReadBulk(const QVRowNumbers& rows, std::size_t col, Target badIndex, Target* values,
                Convert convert) const;

  std::vector<Value> values_;
};

/// Whole numbers (interval level).
class QVSTATS_EXPORT QVDataTableColOfIntervalVars : public QVDataTableColOfValues<int> {
 public:
  /// Empty, with room for `numRows` rows.
  QVDataTableColOfIntervalVars(const std::string& name, const std::string& fullName,
                               std::size_t numRows, std::size_t numColumnsInCol,
                               bool lowerTriangular);
  unsigned int GetStatVariableType() const override { return QVStatVariableType::Interval; }
  unsigned int GetStatVarDataType() const override { return QVStatVarDataType::Integer; }
};

/// Texts that name their row (identifier level).
class QVSTATS_EXPORT QVDataTableColOfIdentifiers : public QVDataTableColOfValues<std::string> {
 public:
  /// Empty, with room for `numRows` rows.
  QVDataTableColOfIdentifiers(const std::string& name, const std::string& fullName,
                              std::size_t numRows, std::size_t numColumnsInCol,
                              bool lowerTriangular);
  /// Takes over texts and leaves the column open; the sentinels among them are noted.
  QVDataTableColOfIdentifiers(const std::string& name, const std::string& fullName,
                              std::vector<std::string> texts);
  unsigned int GetStatVariableType() const override { return QVStatVariableType::Identifier; }
  unsigned int GetStatVarDataType() const override { return QVStatVarDataType::String; }
};

/// Real numbers (ratio level), dense or sparse. A cell that a sparse column was not given is
/// missing.
class QVSTATS_EXPORT QVDataTableColOfRatioVars : public QVDataTableColOfValues<double> {
 public:
  /// Empty and dense, with room for `numRows` rows.
  QVDataTableColOfRatioVars(const std::string& name, const std::string& fullName,
                            std::size_t numRows, std::size_t numColumnsInCol, bool lowerTriangular);
  /// Dense, with the values given; open for appends, sentinels not looked for.
  QVDataTableColOfRatioVars(const std::string& name, const std::string& fullName,
                            std::vector<double> values, std::size_t numColumnsInCol,
                            bool lowerTriangular);
  /// Sparse and closed. One entry outside the column leaves it without any stored value.
  QVDataTableColOfRatioVars(const std::string& name, const std::string& fullName,
                            std::size_t numRows, const std::vector<QVRowColValue>& entries,
                            std::size_t numColumnsInCol, bool lowerTriangular);
  unsigned int GetStatVariableType() const override { return QVStatVariableType::Ratio; }
  unsigned int GetStatVarDataType() const override { return QVStatVarDataType::Double; }
  void PushBackDouble(double value) override;
  std::size_t GetNumElementsInCol() const override;

  /// The value of an element of a sparse column: the one with the smallest value when an element
  /// was given more than once, the missing double when it was not given.
  double GetDoubleFromSparseArray(std::size_t index) const { return *FindElement(index); }

 protected:
  std::vector<double> GetSortedDistinctValues() const override;
  const double* FindElement(std::size_t index) const override;

 private:
  void SetupSparseArray(const std::vector<QVRowColValue>& entries);

  std::size_t numRows_;
  std::vector<std::pair<std::size_t, double>> sparse_;
};

/// Categories (nominal level). The texts that are appended become categories when the column is
/// finished: their code is their rank in ascending byte-wise order. Until then no cell is readable.
class QVSTATS_EXPORT QVDataTableColOfNominals : public QVDataTableColBase {
 public:
  /// Empty, with room for `numRows` rows.
  QVDataTableColOfNominals(const std::string& name, const std::string& fullName,
                           std::size_t numRows, std::size_t numColumnsInCol, bool lowerTriangular);
  /// With fixed categories: the possible values, "BadStringData" and "MissingStringData", sorted.
  /// Values are appended by their codes. No possible values: as above.
  QVDataTableColOfNominals(const std::string& name, const std::string& fullName,
                           const std::vector<std::string>& possibleValues, std::size_t numRows,
                           std::size_t numColumnsInCol, bool lowerTriangular);

  unsigned int IndexOfStringInListOfPossibleValues(const std::string& text) const override;
  void PushBackUnsigned(unsigned int value) override;
  void PushBackInt(int value) override;
  void PushBackDouble(double value) override;
  void PushBackString(const std::string& value) override;
  void FinishAddingVars() override;
  unsigned int GetStatVariableType() const override { return QVStatVariableType::Nominal; }
  unsigned int GetStatVarDataType() const override { return QVStatVarDataType::String; }
  std::size_t GetNumElementsInCol() const override { return codes_.size(); }
  /// Size of the category table, the two sentinel categories of fixed categories included.
  std::size_t GetNumUniqueDiscreteValues() const override { return categories_.size(); }
  std::vector<std::string> GetUniqueDiscreteValues() const override { return categories_; }
  std::string PrintUniqueDiscreteValues(std::size_t limit) const override;
  bool RowColHasMissingData(std::size_t row, std::size_t col) const override;
  bool RowColHasBadData(std::size_t row, std::size_t col) const override;
  unsigned int GetUnsigned(std::size_t row, std::size_t col) const override;
  int GetInt(std::size_t row, std::size_t col) const override;
  double GetDouble(std::size_t row, std::size_t col) const override;
  std::string GetString(std::size_t row, std::size_t col) const override;
  void GetUnsigneds(const QVRowNumbers& rows, std::size_t col, unsigned int* values) const override;
  void GetTexts(const QVRowNumbers& rows, std::size_t col, std::string_view* texts,
                std::vector<std::string>& buffer) const override;

  /// Finds the code of a category.
  /// Fails with ArgumentOutOfRange when the text is no category; `code` is then unchanged.
  QVStatModelResult FindStringInUniqueNominalVals(unsigned int& code,
                                                  const std::string& text) const;

 private:
  /// \return the text of a cell, or the text that stands for what is wrong with it.
  const std::string& FindText(std::size_t row, std::size_t col) const;
  bool CellIs(std::size_t row, std::size_t col, const std::string& category) const;
  void FixCategories(std::vector<std::string> categories);
  void LoadUniqueNominalValues();

  std::vector<std::string> categories_;
  /// Codes of the elements: into `categories_`, or into `distinctTexts_` until the categories are
  /// loaded.
  std::vector<unsigned int> codes_;
  std::unordered_map<std::string, unsigned int> distinctTexts_;
  /// Codes of the sentinel categories, [first, second): none, or several where possible values
  /// repeat a sentinel.
  std::pair<unsigned int, unsigned int> missingCodes_;
  std::pair<unsigned int, unsigned int> badCodes_;
};

/// Stands for a column that does not exist: no elements, level and type unknown.
class QVSTATS_EXPORT QVNullDataTableCol : public QVDataTableColBase {
 public:
  QVNullDataTableCol(const std::string& name, const std::string& fullName);
  unsigned int IndexOfStringInListOfPossibleValues(const std::string& text) const override;
  void PushBackUnsigned(unsigned int value) override;
  void PushBackInt(int value) override;
  void PushBackDouble(double value) override;
  void PushBackString(const std::string& value) override;
  void FinishAddingVars() override;
  unsigned int GetStatVariableType() const override { return QVStatVariableType::Unknown; }
  unsigned int GetStatVarDataType() const override { return QVStatVarDataType::Unknown; }
  std::size_t GetNumElementsInCol() const override { return 0; }
  std::size_t GetNumUniqueDiscreteValues() const override { return 0; }
  std::vector<std::string> GetUniqueDiscreteValues() const override { return {}; }
  std::string PrintUniqueDiscreteValues(std::size_t limit) const override;
  bool RowColHasMissingData(std::size_t row, std::size_t col) const override;
  bool RowColHasBadData(std::size_t row, std::size_t col) const override;
  unsigned int GetUnsigned(std::size_t row, std::size_t col) const override;
  int GetInt(std::size_t row, std::size_t col) const override;
  double GetDouble(std::size_t row, std::size_t col) const override;
  std::string GetString(std::size_t row, std::size_t col) const override;
};

/// A new column of a level of measurement: nominal, interval, ratio or identifier, empty; a null
/// column for any other code (ordinal too). The caller owns it.
QVSTATS_EXPORT QVDataTableColBase* QVGetDataTableCol(const std::string& name,
                                                     const std::string& fullName,
                                                     unsigned int level, std::size_t numRows,
                                                     std::size_t numColumnsInCol,
                                                     bool lowerTriangular);
/// A new sparse column for the ratio level, a null column for any other code.
QVSTATS_EXPORT QVDataTableColBase* QVGetDataTableCol(
    const std::string& name, const std::string& fullName, unsigned int level, std::size_t numRows,
    const std::vector<QVRowColValue>& entries, std::size_t numColumnsInCol, bool lowerTriangular);

}  // namespace QVStats

#endif  // QVSTATS_API_DATA_TABLE_COLUMN_IMPL_H
