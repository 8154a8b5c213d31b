/// \file
/// \brief Columns that hold no values: each cell is a transform of the argument columns' cells,
/// computed when it is read.
///
/// The short name of such a column is the name of the transform with the arguments' short names and
/// the transform's parameters in parentheses, "Addition Of a Scalar(weight, 2)"; the full name has
/// the arguments' full names. A cell that the argument columns do not have reads as one that does
/// not exist. The columns are closed: nothing can be appended.
#ifndef QVSTATS_API_DATA_TRANSFORMS_COLUMNS_H
#define QVSTATS_API_DATA_TRANSFORMS_COLUMNS_H

#include <cstddef>
#include <string>
#include <vector>

#include "platform/system/copy_ptr.h"
#include "stats/api/data_table_column.h"
#include "stats/api/data_transforms.h"
#include "stats/api/export.h"

namespace QVStats {

/// What transform columns share. Level and storage type are those of the transform's result; the
/// unique values of a nominal result are the transform's outcomes.
class QVSTATS_EXPORT QVTransformColBase : public QVDataTableColBase {
 public:
  unsigned int IndexOfStringInListOfPossibleValues(const std::string& text) const override;
  void PushBackUnsigned(unsigned int value) override;
  void PushBackInt(int value) override;
  void PushBackDouble(double value) override;
  void PushBackString(const std::string& value) override;
  void FinishAddingVars() override;
  unsigned int GetStatVariableType() const override;
  unsigned int GetStatVarDataType() const override;
  std::size_t GetNumElementsInCol() const override {
    return arguments_.front().GetNumElementsInCol();
  }
  std::vector<std::string> GetUniqueDiscreteValues() const override;
  std::string PrintUniqueDiscreteValues(std::size_t limit) const override;
  bool RowColIndexIsBad(std::size_t row, std::size_t col) const override;
  bool RowColHasMissingData(std::size_t row, std::size_t col) const override;
  bool RowColHasBadData(std::size_t row, std::size_t col) const override;
  unsigned int GetUnsigned(std::size_t row, std::size_t col) const override;
  int GetInt(std::size_t row, std::size_t col) const override;
  double GetDouble(std::size_t row, std::size_t col) const override;
  std::string GetString(std::size_t row, std::size_t col) const override;
  void GetUnsigneds(const QVRowNumbers& rows, std::size_t col, unsigned int* values) const override;
  void GetDoubles(const QVRowNumbers& rows, std::size_t col, double* values) const override;
  void GetCellStates(const QVRowNumbers& rows, std::size_t col, QVCellState* states) const override;

 protected:
  /// At least one argument column; `arguments` without any stands for one null column.
  QVTransformColBase(const std::string& name, const std::string& fullName,
                     const std::vector<QVDataTableCol>& arguments);

  virtual const QVDataTransformBase& GetTransform() const = 0;
  /// The value of a cell whose arguments exist.
  virtual unsigned int EvaluateUnsigned(std::size_t row, std::size_t col) const = 0;
  virtual int EvaluateInt(std::size_t row, std::size_t col) const = 0;
  virtual double EvaluateDouble(std::size_t row, std::size_t col) const = 0;
  virtual std::string EvaluateString(std::size_t row, std::size_t col) const = 0;
  /// The values of a block of cells whose arguments exist.
  virtual void EvaluateDoubles(const QVRowNumbers& rows, std::size_t col, double* values) const = 0;
  virtual void EvaluateUnsigneds(const QVRowNumbers& rows, std::size_t col,
                                 unsigned int* values) const = 0;

  const std::vector<QVDataTableCol>& GetArguments() const { return arguments_; }

 private:
  bool AnyArgumentIsAbsent(std::size_t row, std::size_t col) const;
  bool AllArgumentsExist(const QVRowNumbers& rows, std::size_t col) const;

  std::vector<QVDataTableCol> arguments_;
};

/// The evaluation of a column of one of the three families of transforms.
template <class Transform>
class QVSTATS_EXPORT QVTransformColOf : public QVTransformColBase {
 protected:
  QVTransformColOf(const Transform& transform, const std::string& name, const std::string& fullName,
                   const std::vector<QVDataTableCol>& arguments);
  const QVDataTransformBase& GetTransform() const override { return *transform_; }
  unsigned int EvaluateUnsigned(std::size_t row, std::size_t col) const override;
  int EvaluateInt(std::size_t row, std::size_t col) const override;
  double EvaluateDouble(std::size_t row, std::size_t col) const override;
  std::string EvaluateString(std::size_t row, std::size_t col) const override;
  void EvaluateDoubles(const QVRowNumbers& rows, std::size_t col, double* values) const override;
  void EvaluateUnsigneds(const QVRowNumbers& rows, std::size_t col,
                         unsigned int* values) const override;

 private:
  QVSystem::QVCopyPtr<Transform> transform_;
};

/// A transform of one column, cell by cell. Its shape, its missing and its bad cells are those of
/// the argument column.
class QVSTATS_EXPORT QVSingleArgColTransform
    : public QVTransformColOf<QVSingleArgDataTransformBase> {
 public:
  QVSingleArgColTransform(const QVSingleArgDataTransformBase& transform,
                          const QVDataTableCol& argument);
  QVSingleArgColTransform(const QVSingleArgDataTransformBase& transform, const std::string& name,
                          const std::string& fullName, const QVDataTableCol& argument);
  std::size_t GetNumUniqueDiscreteValues() const override;
};

/// A transform of two columns of equal size, cell by cell. Whether a cell exists, is missing or is
/// bad is asked of the first column alone; sentinels of the second still reach the values.
class QVSTATS_EXPORT QVTransformTwoColsIntoOne
    : public QVTransformColOf<QVTwoArgsDataTransformBase> {
 public:
  QVTransformTwoColsIntoOne(const QVTwoArgsDataTransformBase& transform,
                            const QVDataTableCol& first, const QVDataTableCol& second);
  QVTransformTwoColsIntoOne(const QVTwoArgsDataTransformBase& transform, const std::string& name,
                            const std::string& fullName, const QVDataTableCol& first,
                            const QVDataTableCol& second);
  /// Not known: all bits set.
  std::size_t GetNumUniqueDiscreteValues() const override { return QVStatsBadData::BadIndex; }
};

/// A transform of the cells of several columns of equal size. A cell exists when all its arguments
/// do; it is missing or bad when any of them is.
class QVSTATS_EXPORT QVTransformVecOfColsIntoOne
    : public QVTransformColOf<QVVecOfArgsDataTransformBase> {
 public:
  QVTransformVecOfColsIntoOne(const QVVecOfArgsDataTransformBase& transform,
                              const std::vector<QVDataTableCol>& arguments);
  QVTransformVecOfColsIntoOne(const QVVecOfArgsDataTransformBase& transform,
                              const std::string& name, const std::string& fullName,
                              const std::vector<QVDataTableCol>& arguments);
  /// Distinct values of the result.
  std::size_t GetNumUniqueDiscreteValues() const override;
  bool RowColIndexIsBad(std::size_t row, std::size_t col) const override;
  bool RowColHasMissingData(std::size_t row, std::size_t col) const override;
  bool RowColHasBadData(std::size_t row, std::size_t col) const override;
  void GetCellStates(const QVRowNumbers& rows, std::size_t col, QVCellState* states) const override;

  /// The arguments of a cell.
  std::vector<unsigned int> GetVecOfUnsigneds(std::size_t row, std::size_t col) const;
  std::vector<int> GetVecOfInts(std::size_t row, std::size_t col) const;
  std::vector<double> GetVecOfDoubles(std::size_t row, std::size_t col) const;
  std::vector<std::string> GetVecOfStrings(std::size_t row, std::size_t col) const;
};

}  // namespace QVStats

#endif  // QVSTATS_API_DATA_TRANSFORMS_COLUMNS_H
