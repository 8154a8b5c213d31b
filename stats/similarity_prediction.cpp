#include "stats/api/similarity_prediction.h"

#include <Eigen/Core>
#include <algorithm>
#include <cmath>
#include <limits>
#include <typeinfo>

#include "platform/math/dense_kernels.h"
#include "platform/system/cast.h"
#include "stats/api/stats_data_types.h"
#include "stats/failure.h"

namespace QVStats {

namespace {

namespace Failure = QVStatModelFailureType;
namespace Measure = QVPredictiveFitMeasureType;
using QVStatsBadData::BadDouble;

const char* const kMeasureNames[] = {"Unknown", "AverageAbsoluteDeviation",
                                     "RootMeanSquaredDeviation"};
/// Added to every weight, so that a kernel that vanishes everywhere gives a finite mean.
constexpr double kLeastWeight = 1.1920928955078125e-07;
constexpr std::size_t kNoRow = std::numeric_limits<std::size_t>::max();

bool IsSimilarity(double s) { return s >= 0.0 && s <= 1.0; }

/// Rows of a training set with the values that one object needs of them.
struct Neighbours {
  std::vector<std::size_t> rows;
  std::vector<double> responses;
  std::vector<double> similarities;
  /// The object's place among the values of a similarity row, and the column's name.
  std::size_t object = 0;
  std::string columnName;
  /// How many similarities there are before the first bad one.
  std::size_t numGood = 0;
  /// The largest of them and of the bad one, 0 when none is above 0, and its row.
  double maxSimilarity = 0.0;
  std::size_t nearest = kNoRow;

  Neighbours(std::vector<std::size_t> rowNumbers, const QVDataTableCol& response,
             const QVDataTableCol& similarity)
      : rows(std::move(rowNumbers)),
        responses(response.GetDoubles(QVRowNumbers(rows))),
        similarities(rows.size()),
        columnName(similarity.GetColumnName()) {}

  void SetObject(const QVDataTableCol& similarity, std::size_t number) {
    object = number;
    similarity.GetImpl()->GetDoubles(QVRowNumbers(rows), number, similarities.data());
    const auto bad = std::find_if_not(similarities.begin(), similarities.end(), IsSimilarity);
    numGood = static_cast<std::size_t>(bad - similarities.begin());
    maxSimilarity = 0.0;
    nearest = kNoRow;
    for (std::size_t i = 0; i < std::min(similarities.size(), numGood + 1); ++i)
      if (similarities[i] > maxSimilarity) {
        maxSimilarity = similarities[i];
        nearest = rows[i];
      }
  }
};

struct WeightedMean {
  double mean = BadDouble;
  double sumOfWeights = 0.0;
};

void GetKernelValues(const QVSimilarityKernel& kernel, const std::vector<double>& similarities,
                     std::size_t count, double param, std::vector<double>& values) {
  values.resize(count);
  if (typeid(kernel) == typeid(QVSimilarityKernel))
    return kernel.GetValues(similarities.data(), count, param, values.data());
  // A class of a caller may have a value of its own.
  for (std::size_t i = 0; i < count; ++i) values[i] = kernel(similarities[i], param);
}

QVStatModelResult Average(WeightedMean& average, const Neighbours& near,
                          const QVSimilarityKernel& kernel, double param,
                          std::vector<double>& weights) {
  static const char* const where = "CalcWeightedSumOfResponseOnSelect";
  const std::size_t good = near.numGood;
  average = {};
  GetKernelValues(kernel, near.similarities, good, param, weights);
  for (double& weight : weights) weight += kLeastWeight;
  average.sumOfWeights =
      Eigen::Map<const Eigen::VectorXd>(weights.data(), static_cast<Eigen::Index>(good)).sum();
  if (good < near.rows.size()) {
    const double bad = near.similarities[good];
    return QVFailure(bad > 1.0 ? Failure::UpperBoundViolated : Failure::LowerBoundViolated, where)
           << "For similarity array " << near.columnName << ": Bad similarity: " << bad
           << " at i,j = " << near.rows[good] << " " << near.object;
  }
  if (average.sumOfWeights > 0.0) {
    average.mean = QVMath::QVGetDenseKernels().dot(good, weights.data(), near.responses.data()) /
                   average.sumOfWeights;
    return true;
  }
  return QVFailure(Failure::InternalLogicFailure, where)
         << "Sum of weights is non-Positive; Something wrong? "
         << "Kernel type = " << kernel.GetKernelName() << "Similarity array " << near.columnName
         << "parameter to convert similarity to distance = " << param
         << "Similarity matrix column number = " << near.object
         << "The max similarity on this column is " << near.maxSimilarity
         << "; occurs at row number " << near.nearest;
}

/// The columns of a test table, read at the rows of both sets.
struct Columns {
  QVDataTableCol response;
  QVDataTableCol similarity;

  QVStatModelResult Fetch(const QVDataTable& testTable, const std::string& responseColName,
                          const std::string& similarityColName) {
    QVStatModelResult result;
    response = testTable.GetColumnFromName(result, responseColName);
    if (result.IsSuccessful()) similarity = testTable.GetColumnFromName(result, similarityColName);
    return result;
  }
};

/// Calls begin(columns, row) for every test row, then take(near, average), until one fails.
template <class Begin, class Take>
QVStatModelResult ForEachTestRow(const char* where, const std::string& responseColName,
                                 const std::string& similarityColName,
                                 const QVDataTable& trainingTable, const QVDataTable& testTable,
                                 const QVSimilarityKernel& kernel, double kernelParam, Begin begin,
                                 Take take) {
  Columns columns;
  QVStatModelResult result = columns.Fetch(testTable, responseColName, similarityColName);
  if (QVFailedIn(result, where)) return result;
  Neighbours near(trainingTable.GetRowNumbers(), columns.response, columns.similarity);
  std::vector<double> weights;
  for (const std::size_t row : testTable.GetRowNumbers()) {
    begin(columns, row);
    near.SetObject(columns.similarity, row);
    WeightedMean average;
    result = Average(average, near, kernel, kernelParam, weights);
    if (QVFailedIn(result, where)) return result;
    take(near, average);
  }
  return true;
}

std::vector<double> MakeGrid(double first, double last, std::size_t numSteps) {
  std::vector<double> grid = {first};
  if (numSteps == 1) return grid;
  const double step = (last - first) / QVSystem::QVDoubleFromCount(numSteps - 1);
  for (std::size_t i = 1; i < numSteps; ++i)
    grid.push_back(first + QVSystem::QVDoubleFromCount(i) * step);
  return grid;
}

/// Predictions of the test rows by one parameter, up to the first failure.
struct Trial {
  std::vector<double> predictions;
  QVStatModelResult result = true;
};

/// All trials at once, so that every row of similarities is read once.
std::vector<Trial> PredictOverGrid(const Columns& columns, const QVDataTable& trainingTable,
                                   const std::vector<std::size_t>& testRows,
                                   const QVSimilarityKernel& kernel,
                                   const std::vector<double>& grid) {
  std::vector<Trial> trials(grid.size());
  Neighbours near(trainingTable.GetRowNumbers(), columns.response, columns.similarity);
  std::vector<double> weights;
  for (const std::size_t row : testRows) {
    near.SetObject(columns.similarity, row);
    for (std::size_t i = 0; i < grid.size(); ++i) {
      if (trials[i].result.NotSuccessful()) continue;
      WeightedMean average;
      trials[i].result = Average(average, near, kernel, grid[i], weights);
      trials[i].predictions.push_back(average.mean);
    }
    // No later parameter counts, and a bad similarity fails them all.
    if (trials.front().result.NotSuccessful()) break;
  }
  return trials;
}

}  // namespace

unsigned int QVGetPredictiveFitMeasureType(const std::string& name) {
  const bool isKnown = name == kMeasureNames[Measure::AverageAbsoluteDeviation] ||
                       name == kMeasureNames[Measure::RootMeanSquaredDeviation];
  return isKnown ? Measure::AverageAbsoluteDeviation : Measure::Unknown;
}

std::string QVGetPredictiveFitMeasureName(unsigned int type) {
  return kMeasureNames[type <= Measure::RootMeanSquaredDeviation ? type : Measure::Unknown];
}

QVStatModelResult GetResponseFitError(double& fitError, const std::vector<double>& responses,
                                      const std::vector<double>& predictions,
                                      unsigned int fitMeasure) {
  static const char* const where = "GetResponseFitError";
  fitError = BadDouble;
  if (responses.empty() || responses.size() != predictions.size())
    return QVFailure(Failure::MismatchBetweenInputVecSizes, where);
  const double n = QVSystem::QVDoubleFromCount(responses.size());
  double absolute = 0.0;
  double squared = 0.0;
  for (std::size_t i = 0; i < responses.size(); ++i) {
    const double difference = responses[i] - predictions[i];
    absolute += std::abs(difference);
    squared += difference * difference;
  }
  if (fitMeasure == Measure::AverageAbsoluteDeviation)
    fitError = absolute / n;
  else if (fitMeasure == Measure::RootMeanSquaredDeviation)
    fitError = std::sqrt(squared / n);
  else
    return QVFailure(Failure::ArgumentOutOfRange, where) << "Bad predictiveFitMeasure";
  return true;
}

QVStatModelResult CalcWeightedAveOfResponseOnSelect(
    double& weightedAverage, double& maxSimilarity, double& sumOfWeights,
    const QVDataTableCol& similarityCol, const QVDataTableCol& responseCol,
    std::size_t similarityColNum, QVSystem::QVIter<const QVDataTableRow>& rows,
    const QVSimilarityKernel& kernel, double kernelParam) {
  std::vector<std::size_t> numbers;
  for (; rows; ++rows) numbers.push_back(rows->GetImpl()->GetRowNumber());
  Neighbours near(std::move(numbers), responseCol, similarityCol);
  near.SetObject(similarityCol, similarityColNum);
  WeightedMean average;
  std::vector<double> weights;
  QVStatModelResult result = Average(average, near, kernel, kernelParam, weights);
  weightedAverage = average.mean;
  maxSimilarity = near.maxSimilarity;
  sumOfWeights = average.sumOfWeights;
  return result;
}

QVStatModelResult GetResponseAndPredResponseFromSimilarity(
    std::vector<double>& responses, std::vector<double>& predictions,
    const std::string& responseColName, const std::string& similarityColName,
    const QVDataTable& trainingTable, const QVDataTable& testTable,
    const QVSimilarityKernel& kernel, double kernelParam) {
  responses.clear();
  predictions.clear();
  return ForEachTestRow(
      "GetResponseAndPredResponseFromSimilarity", responseColName, similarityColName, trainingTable,
      testTable, kernel, kernelParam,
      [&](const Columns& columns, std::size_t row) {
        responses.push_back(columns.response.GetDouble(row, 0));
      },
      [&](const Neighbours&, const WeightedMean& average) { predictions.push_back(average.mean); });
}

QVStatModelResult GetMinDistanceAndTotalWeightFromSimilarity(
    std::vector<double>& maxSimilarities, std::vector<double>& totalWeights,
    const std::string& responseColName, const std::string& similarityColName,
    const QVDataTable& trainingTable, const QVDataTable& testTable,
    const QVSimilarityKernel& kernel, double kernelParam) {
  maxSimilarities.clear();
  totalWeights.clear();
  return ForEachTestRow(
      "GetMinDistanceAndTotalWeightFromSimilarity", responseColName, similarityColName,
      trainingTable, testTable, kernel, kernelParam, [](const Columns&, std::size_t) {},
      [&](const Neighbours& near, const WeightedMean& average) {
        maxSimilarities.push_back(near.maxSimilarity);
        totalWeights.push_back(average.sumOfWeights);
      });
}

QVStatModelResult OptimizePredResponseOverSimilarityKernelParams(
    double& bestFitError, double& bestParam, unsigned int kernelType, unsigned int fitMeasure,
    double minParam, double maxParam, std::size_t numSteps, const std::string& responseColName,
    const std::string& similarityColName, const QVDataTable& trainingTable,
    const QVDataTable& testTable) {
  static const char* const where = "OptimizePredResponseOverSimilarityKernelParams";
  bestFitError = bestParam = BadDouble;
  if (numSteps == 0) return QVFailure(Failure::EmptyStatModel, where);
  const std::vector<std::size_t> testRows = testTable.GetRowNumbers();
  const std::size_t numTraining = trainingTable.GetNumRows();
  if (numTraining == 0 || testRows.empty())
    return QVFailure(Failure::EmptyStatModel, where) << "Training or test set empty of rows."
                                                     << "Num Training set rows = " << numTraining
                                                     << " Num Test set rows  = " << testRows.size();
  static const char* const predictions = "GetResponseAndPredResponseFromSimilarity";
  Columns columns;
  QVStatModelResult result =
      QVCalledFrom(predictions, columns.Fetch(testTable, responseColName, similarityColName));
  if (QVFailedIn(result, where)) return result;
  const std::vector<double> responses = columns.response.GetDoubles(QVRowNumbers(testRows));
  const std::vector<double> grid = MakeGrid(minParam, maxParam, numSteps);
  const std::vector<Trial> trials =
      PredictOverGrid(columns, trainingTable, testRows, QVSimilarityKernel(kernelType), grid);
  for (std::size_t i = 0; i < grid.size(); ++i) {
    result = QVCalledFrom(predictions, trials[i].result);
    double error = BadDouble;
    if (result.IsSuccessful())
      result = GetResponseFitError(error, responses, trials[i].predictions, fitMeasure);
    if (QVFailedIn(result, where)) return result;
    if (error < bestFitError) {
      bestFitError = error;
      bestParam = grid[i];
    }
  }
  return true;
}

}  // namespace QVStats
