#include "stats/api/linear_smoother_variogram_columns.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "platform/system/cast.h"
#include "stats/api/data_table_column_functions.h"
#include "stats/api/data_vector_functions.h"
#include "stats/api/linear_smoother_kernels.h"
#include "stats/failure.h"
#include "stats/linear_smoother_variogram_fit.h"

namespace QVStats {

namespace {

namespace Failure = QVStatModelFailureType;
using QVStatsBadData::BadDouble;
using QVStatsBadData::BadIndex;
using QVSystem::QVDoubleFromCount;
using Values = std::vector<double>;
using Counts = std::vector<std::size_t>;

const char* const kPairOfRows = "QVVariogramOnPredColumns::GetBinIndexForTwoRowNumbers";
constexpr std::size_t kMostCells = 1000000000;

/// The number of cells of a grid; BadIndex when there are too many to think of.
std::size_t CountCells(const Counts& sizes) {
  std::size_t count = 1;
  for (const std::size_t size : sizes) {
    if (size > 0 && count > kMostCells / size) return BadIndex;
    count *= size;
  }
  return count;
}

/// The digits of the number of a cell, the first dimension the most significant.
Counts GetDigits(std::size_t index, const Counts& sizes) {
  Counts digits(sizes.size());
  for (std::size_t d = sizes.size(); d-- > 0;) {
    const std::size_t size = std::max<std::size_t>(sizes[d], 1);
    digits[d] = index % size;
    index /= size;
  }
  return digits;
}

/// Appends the digit of a similarity in [0, 1] to the number of a cell.
std::size_t AppendDigit(std::size_t index, double similarity, std::size_t size) {
  auto digit = static_cast<std::size_t>(similarity * static_cast<double>(size));
  if (digit == size && digit > 0) --digit;
  return index * size + digit;
}

bool IsSimilarity(double value) { return value >= 0.0 && value <= 1.0; }

double GetScalarSimilarity(double x, double y, double range) {
  return range > 0.0 ? 1.0 - std::abs(x - y) / range : 1.0;
}

bool IsSentinel(double value) {
  return value == BadDouble || value == QVStatsBadData::MissingDouble ||
         value == QVStatsBadData::BadIndexDouble;
}

}  // namespace

// ----- a cell

void QVVariogramBin::SortSquaredDiffsOfResponses() {
  std::sort(squaredDiffs_.begin(), squaredDiffs_.end());
}

double QVVariogramBin::GetSampleStatisticForSqDiffsOfResponses(QVStatModelResult& result,
                                                               unsigned int statisticType,
                                                               double statisticParam) const {
  if (statisticType == QVSampleStatisticType::Null ||
      statisticType >= QVSampleStatisticType::NumTypes) {
    result = QVFailure(Failure::ArgumentOutOfRange,
                       "QVVariogramBin::GetSampleStatisticForSqDiffsOfResponses")
             << "statisticType = " << statisticType;
    return BadDouble;
  }
  if (squaredDiffs_.empty()) {
    result = true;
    return BadDouble;
  }
  return QVGetSampleStatisticForDataVec(result, statisticType, statisticParam, squaredDiffs_);
}

// ----- construction

QVVariogramOnPredColumns::QVVariogramOnPredColumns(
    const std::string& responseColName, const std::vector<std::string>& predColNames,
    const QVDataTable& table, const Counts& binsPerDim, bool weightByPairCount,
    double fracAveBinCountThreshold, const Values& similarityThresholds, unsigned int statisticType,
    double statisticParam)
    : table_(table), binsPerDim_(binsPerDim) {
  result_ = SetupDataTableFromColumnNamesAndTable(responseColName, predColNames, table);
  if (result_.IsSuccessful()) result_ = FillVariogramBins(responseColName);
  if (result_.IsSuccessful())
    result_ = CalcWeightsForFittingVariogram(weightByPairCount, fracAveBinCountThreshold,
                                             similarityThresholds);
  if (result_.IsSuccessful()) result_ = CalcSampleStatPerBin(statisticType, statisticParam);
  QVFailedIn(result_, "QVVariogramOnPredColumns::QVVariogramOnPredColumns");
}

QVStatModelResult QVVariogramOnPredColumns::SetupDataTableFromColumnNamesAndTable(
    const std::string& responseColName, const std::vector<std::string>& predColNames,
    const QVDataTable& table) {
  static const char* const where =
      "QVVariogramOnPredColumns::SetupDataTableFromColumnNamesAndTable";
  QVDataTable chosen(table);
  chosen.ClearColumns();
  QVStatModelResult result(true);
  std::vector<std::string> names = {responseColName};
  names.insert(names.end(), predColNames.begin(), predColNames.end());
  for (const std::string& name : names) {
    const QVDataTableCol column = table.GetColumnFromName(result, name);
    if (result.IsSuccessful()) result = chosen.AddColumn(column);
    if (QVFailedIn(result, where)) break;
  }
  table_ = chosen;
  return result;
}

std::vector<QVDataTableCol> QVVariogramOnPredColumns::GetPredictors() const {
  std::vector<QVDataTableCol> predictors;
  for (const QVDataTableCol& column : table_.GetColumns()) predictors.push_back(column);
  if (!predictors.empty()) predictors.erase(predictors.begin());  // the response
  return predictors;
}

QVStatModelResult QVVariogramOnPredColumns::SetMaxDistPerDim() {
  static const char* const where = "QVVariogramOnPredColumns::SetMaxDistPerDim";
  maxDistPerDim_.clear();
  QVStatModelResult result(true);
  for (const QVDataTableCol& column : GetPredictors()) {
    double range = BadDouble;  // a triangle needs none
    if (!column.ColIsLowerTriangular()) {
      if (column.GetNumColumnsInCol() != 1)
        return QVFailure(Failure::ColumnHasWrongDataType, where)
               << "column " << column.GetColumnName() << " has " << column.GetNumColumnsInCol()
               << " values a row and is no triangle";
      std::size_t numMissing, numBad;
      range = QVGetSampleStatisticForColumnOfRatioType(result, numMissing, numBad,
                                                       QVSampleStatisticType::Range, table_,
                                                       column.GetColumnName(), 0);
      if (QVFailedIn(result, where)) return result;
    }
    maxDistPerDim_.push_back(range);
  }
  return result;
}

QVStatModelResult QVVariogramOnPredColumns::FillVariogramBins(const std::string& responseColName) {
  static const char* const where = "QVVariogramOnPredColumns::FillVariogramBins";
  bins_.clear();
  const std::size_t numBins = CountCells(binsPerDim_);
  if (numBins == BadIndex)
    return QVFailure(Failure::ArgumentOutOfRange, where) << "more than " << kMostCells << " bins";
  const Counts rows = table_.GetRowNumbers();
  bins_.reserve(numBins);
  for (std::size_t b = 0; b < numBins; ++b)
    bins_.emplace_back(GetSimilaritiesFromBinIndex(b),
                       rows.size() * (rows.size() + 1) / 2 / numBins + 1);
  QVStatModelResult result = SetMaxDistPerDim();
  if (QVFailedIn(result, where)) return result;
  const QVDataTableCol& response = table_.GetColumnFromName(result, responseColName);
  if (QVFailedIn(result, where)) return result;
  const Values y = response.GetDoubles(QVRowNumbers(rows));
  for (std::size_t i = 0; i < rows.size(); ++i)
    if (IsSentinel(y[i]))
      return QVFailure(Failure::MissingOrBadResponseValue, where)
             << "at row number(" << rows[i]
             << "), response value = " << response.GetString(rows[i], 0);
  if (!AddPairs(rows, y)) return FindBadPair(rows, where);
  for (QVVariogramBin& bin : bins_) bin.SortSquaredDiffsOfResponses();
  return result;
}

bool QVVariogramOnPredColumns::AddPairs(const Counts& rows, const Values& y) {
  if (rows.size() < 2) return true;
  const std::vector<QVDataTableCol> predictors = GetPredictors();
  if (predictors.size() != binsPerDim_.size()) return false;
  std::vector<Values> scalars;
  for (const QVDataTableCol& column : predictors) {
    scalars.push_back(column.ColIsLowerTriangular() ? Values()
                                                    : column.GetDoubles(QVRowNumbers(rows)));
    if (std::any_of(scalars.back().begin(), scalars.back().end(), IsSentinel)) return false;
  }
  Counts cells;
  Values similarities(rows.size());
  for (std::size_t j = 1; j < rows.size(); ++j) {
    cells.assign(j, 0);
    for (std::size_t d = 0; d < predictors.size(); ++d) {
      if (predictors[d].ColIsLowerTriangular())
        // A row of the triangle stands together in the column.
        predictors[d].GetImpl()->GetDoubles(QVRowNumbers(rows.data(), j), rows[j],
                                            similarities.data());
      else
        for (std::size_t i = 0; i < j; ++i)
          similarities[i] = GetScalarSimilarity(scalars[d][i], scalars[d][j], maxDistPerDim_[d]);
      for (std::size_t i = 0; i < j; ++i) {
        if (!IsSimilarity(similarities[i])) return false;
        cells[i] = AppendDigit(cells[i], similarities[i], binsPerDim_[d]);
      }
    }
    for (std::size_t i = 0; i < j; ++i) {
      if (cells[i] >= bins_.size()) return false;
      const double difference = y[j] - y[i];
      bins_[cells[i]].AddSquaredDiffOfResponses(difference * difference);
    }
  }
  return true;
}

QVStatModelResult QVVariogramOnPredColumns::FindBadPair(const Counts& rows,
                                                        const char* where) const {
  QVStatModelResult result(true);
  for (std::size_t i = 0; i < rows.size(); ++i)
    for (std::size_t j = i + 1; j < rows.size(); ++j) {
      const std::size_t cell = GetBinIndexForTwoRowNumbers(result, rows[i], rows[j]);
      if (QVFailedIn(result, where)) return result;
      if (cell >= bins_.size())
        return QVFailure(Failure::InternalLogicFailure, where)
               << "bin index = " << cell << "; num bins = " << bins_.size();
    }
  return QVFailure(Failure::MissingOrBadPredictorValue, where) << "a predictor is not a number";
}

// ----- the grid

std::size_t QVVariogramOnPredColumns::GetBinIndexFromSimilarities(const Values& s) const {
  if (s.size() != binsPerDim_.size()) return BadIndex;
  std::size_t index = 0;
  for (std::size_t d = 0; d < s.size(); ++d) {
    if (IsSimilarity(s[d])) {
      index = AppendDigit(index, s[d], binsPerDim_[d]);
    } else {
      const double place = std::floor(s[d] * QVDoubleFromCount(binsPerDim_[d]));
      std::size_t digit = QVSystem::QVUnsignedFromDoubleChecked(place);
      if (digit == binsPerDim_[d] && digit > 0) --digit;
      index = index * binsPerDim_[d] + digit;
    }
  }
  return index;
}

Values QVVariogramOnPredColumns::GetSimilaritiesFromBinIndex(std::size_t index) const {
  if (CountCells(binsPerDim_) == 0) return {};
  Values center;
  const Counts digits = GetDigits(index, binsPerDim_);
  for (std::size_t d = 0; d < digits.size(); ++d)
    center.push_back((QVDoubleFromCount(digits[d]) + 0.5) / QVDoubleFromCount(binsPerDim_[d]));
  return center;
}

double QVVariogramOnPredColumns::GetSimilarity(QVStatModelResult& result,
                                               const QVDataTableCol& column, std::size_t d,
                                               std::size_t i, std::size_t j) const {
  if (column.ColIsLowerTriangular()) {
    const double s = column.GetDouble(i, j);
    if (!IsSimilarity(s))
      result = QVFailure(Failure::ArgumentOutOfRange, kPairOfRows)
               << "for similarity column " << column.GetColumnName() << "similarity at (" << i
               << ": " << j << ") = " << s;
    return s;
  }
  if (column.GetNumColumnsInCol() != 1) {
    result = QVFailure(Failure::ColumnHasWrongDataType, kPairOfRows)
             << "column " << column.GetColumnName() << " has " << column.GetNumColumnsInCol()
             << " values a row";
    return BadDouble;
  }
  for (const std::size_t row : {i, j})
    if (IsSentinel(column.GetDouble(row, 0))) {
      result = QVFailure(Failure::MissingOrBadPredictorValue, kPairOfRows)
               << "column " << column.GetColumnName() << ", row " << row << ": "
               << column.GetString(row, 0);
      return BadDouble;
    }
  return GetScalarSimilarity(column.GetDouble(i, 0), column.GetDouble(j, 0), maxDistPerDim_[d]);
}

std::size_t QVVariogramOnPredColumns::GetBinIndexForTwoRowNumbers(QVStatModelResult& result,
                                                                  std::size_t i,
                                                                  std::size_t j) const {
  const std::vector<QVDataTableCol> predictors = GetPredictors();
  if (predictors.size() != binsPerDim_.size()) {
    result = QVFailure(Failure::MismatchBetweenInputVecSizes, kPairOfRows)
             << "num pred cols = " << predictors.size()
             << "; num dims in model = " << binsPerDim_.size();
    return BadIndex;
  }
  if (maxDistPerDim_.size() != predictors.size()) {
    result = QVFailure(Failure::ObjectNotValid, kPairOfRows) << "the construction failed";
    return BadIndex;
  }
  result = true;
  Values similarities;
  for (std::size_t d = 0; d < predictors.size(); ++d) {
    similarities.push_back(GetSimilarity(result, predictors[d], d, i, j));
    if (result.NotSuccessful()) return BadIndex;
  }
  return GetBinIndexFromSimilarities(similarities);
}

// ----- weights and statistics

QVStatModelResult QVVariogramOnPredColumns::CalcWeightsForFittingVariogram(
    bool weightByPairCount, double fracAveBinCountThreshold, const Values& similarityThresholds) {
  numPairs_.clear();
  weights_.clear();
  if (similarityThresholds.size() != binsPerDim_.size())
    return QVFailure(Failure::WrongInputVectorSize,
                     "QVVariogramOnPredColumns::CalcWeightsForFittingVariogram")
           << "num thresholds = " << similarityThresholds.size()
           << "; num dims in model = " << binsPerDim_.size();
  if (bins_.empty()) return true;
  std::size_t total = 0;
  for (const QVVariogramBin& bin : bins_) total += bin.GetNumPairs();
  const std::size_t least = QVSystem::QVUnsignedFromDoubleChecked(
      QVDoubleFromCount(total) / QVDoubleFromCount(bins_.size()) * fracAveBinCountThreshold);
  for (const QVVariogramBin& bin : bins_) {
    const Values& center = bin.GetCenterSimilarities();
    const bool isUsable = bin.GetNumPairs() >= least &&
                          std::equal(center.begin(), center.end(), similarityThresholds.begin(),
                                     [](double s, double threshold) { return !(s < threshold); });
    const double count = QVDoubleFromCount(bin.GetNumPairs());
    numPairs_.push_back(count);
    weights_.push_back(!isUsable ? 0.0 : weightByPairCount ? count : 1.0);
  }
  const double sum = std::accumulate(weights_.begin(), weights_.end(), 0.0);
  for (double& weight : weights_) weight /= sum;
  return true;
}

QVStatModelResult QVVariogramOnPredColumns::CalcSampleStatPerBin(unsigned int statisticType,
                                                                 double statisticParam) {
  static const char* const where = "QVVariogramOnPredColumns::CalcSampleStatPerBin";
  if (result_.NotSuccessful()) return QVCalledFrom(where, result_);
  statistics_.clear();
  QVStatModelResult result(true);
  for (const QVVariogramBin& bin : bins_) {
    statistics_.push_back(
        bin.GetSampleStatisticForSqDiffsOfResponses(result, statisticType, statisticParam));
    if (QVFailedIn(result, where)) {
      statistics_.clear();
      return result;
    }
  }
  return result;
}

// ----- fitting

Values QVVariogramOnPredColumns::GetKrigingParameters() const {
  Values params = kernelParams_;
  params.push_back(nugget_);
  params.push_back(sill_);
  return params;
}

QVStatModelResult QVVariogramOnPredColumns::CheckFit(
    const char* where, const std::vector<unsigned int>& kernelTypes) const {
  if (result_.NotSuccessful())
    return QVFailure(Failure::ObjectNotValid, where) << "the construction failed";
  if (kernelTypes.size() != binsPerDim_.size())
    return QVFailure(Failure::WrongInputVectorSize, where)
           << "num kernels = " << kernelTypes.size()
           << "; num dims in model = " << binsPerDim_.size();
  for (const unsigned int type : kernelTypes)
    if (QVSimilarityKernel(type).GetKernelType() == QVSimilarityKernelType::Null)
      return QVFailure(Failure::ObjectNotValid, where) << "kernel type " << type << " is unknown";
  return true;
}

QVStatModelResult QVVariogramOnPredColumns::CalcKernelValuePerBin(
    const std::vector<unsigned int>& kernelTypes, const Values& kernelParams) {
  static const char* const where = "QVVariogramOnPredColumns::CalcKernelValuePerBin";
  kernelValues_.clear();
  QVStatModelResult result = CheckFit(where, kernelTypes);
  if (result.NotSuccessful()) return result;
  if (kernelParams.size() != kernelTypes.size())
    return QVFailure(Failure::WrongInputVectorSize, where)
           << "num kernels = " << kernelTypes.size() << "; num params = " << kernelParams.size();
  // Each dimension multiplies the values so far by its own, as the numbers of the cells grow.
  kernelValues_ = {1.0};
  for (std::size_t d = 0; d < binsPerDim_.size(); ++d) {
    const QVSimilarityKernel kernel(kernelTypes[d]);
    Values values;
    for (const double before : kernelValues_)
      for (std::size_t digit = 0; digit < binsPerDim_[d]; ++digit) {
        const double center = (QVDoubleFromCount(digit) + 0.5) / QVDoubleFromCount(binsPerDim_[d]);
        values.push_back(before * kernel(center, kernelParams[d]));
      }
    kernelValues_ = std::move(values);
  }
  return true;
}

double QVVariogramOnPredColumns::LeastSquaresFitGivenKernelVals(double& nugget,
                                                                double& sill) const {
  Values u, gamma, weights;
  const std::size_t numBins =
      std::min({kernelValues_.size(), statistics_.size(), weights_.size(), numPairs_.size()});
  for (std::size_t b = 0; b < numBins; ++b) {
    // The median of a single value is the lowest double.
    if (numPairs_[b] == 0.0 || !(std::abs(statistics_[b]) < BadDouble)) continue;
    u.push_back(1.0 - kernelValues_[b]);
    gamma.push_back(0.5 * statistics_[b]);
    weights.push_back(weights_[b]);
  }
  const QVNuggetAndSill fit = QVFitNuggetAndSill(u, gamma, weights);
  nugget = fit.nugget;
  sill = fit.sill;
  return fit.objective;
}

Values QVVariogramOnPredColumns::GetParamValsFromGridIndex(std::size_t index,
                                                           const Values& minParams,
                                                           const Values& maxParams,
                                                           const Counts& numSteps) {
  Values params;
  const Counts digits = GetDigits(index, numSteps);
  for (std::size_t d = 0; d < digits.size(); ++d) {
    const double share =
        numSteps[d] > 1 ? QVDoubleFromCount(digits[d]) / QVDoubleFromCount(numSteps[d] - 1) : 0.0;
    params.push_back(minParams[d] + share * (maxParams[d] - minParams[d]));
  }
  return params;
}

QVStatModelResult QVVariogramOnPredColumns::CalcOptimalTheoryVariogram(
    double& bestObjective, const std::vector<unsigned int>& kernelTypes, const Values& minParams,
    const Values& maxParams, const Counts& numSteps) {
  static const char* const where = "QVVariogramOnPredColumns::CalcOptimalTheoryVariogram";
  bestObjective = nugget_ = sill_ = BadDouble;
  kernelParams_.assign(std::max<std::size_t>(binsPerDim_.size(), 1), BadDouble);
  kernelValues_.clear();
  QVStatModelResult result = CheckFit(where, kernelTypes);
  if (result.NotSuccessful()) return result;
  const std::size_t dims = kernelTypes.size();
  if (minParams.size() != dims || maxParams.size() != dims || numSteps.size() != dims)
    return QVFailure(Failure::WrongInputVectorSize, where)
           << "num min params = " << minParams.size() << "; num max params = " << maxParams.size()
           << "; num steps = " << numSteps.size() << "; num dims in model = " << dims;
  const std::size_t numPoints = CountCells(numSteps);
  if (numPoints == 0)
    return QVFailure(Failure::LowerBoundViolated, where) << "numSteps (0); too small";
  if (numPoints == BadIndex)
    return QVFailure(Failure::ArgumentOutOfRange, where)
           << "more than " << kMostCells << " points of the grid";
  Values lowest(minParams), highest(maxParams);
  for (std::size_t d = 0; d < dims; ++d) {
    const QVSimilarityKernel kernel(kernelTypes[d]);
    if (lowest[d] < 0.0) lowest[d] = kernel.GetMinimumAllowedParamVal();
    if (highest[d] < 0.0) highest[d] = kernel.GetMaximumAllowedParamVal();
  }

  std::size_t best = BadIndex;
  for (std::size_t point = 0; point < numPoints; ++point) {
    CalcKernelValuePerBin(kernelTypes, GetParamValsFromGridIndex(point, lowest, highest, numSteps));
    double nugget, sill;
    const double objective = LeastSquaresFitGivenKernelVals(nugget, sill);
    if (!(objective < bestObjective)) continue;
    bestObjective = objective;
    nugget_ = nugget;
    sill_ = sill;
    best = point;
  }
  kernelValues_.clear();
  if (best == BadIndex) return QVFailure(Failure::NoData, where) << "no bin has pairs and a weight";
  const Values params = GetParamValsFromGridIndex(best, lowest, highest, numSteps);
  if (dims > 0) kernelParams_ = params;
  return QVCalledFrom(where, CalcKernelValuePerBin(kernelTypes, params));
}

}  // namespace QVStats
