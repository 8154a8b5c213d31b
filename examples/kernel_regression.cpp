// kernel_regression FILE PREDICTOR RESPONSE [IMAGE]: the mean of one column of a CSV file along
// another one, with the bandwidth that predicts left-out rows best, beside the least-squares line.
//
//     example_kernel_regression tests/data/faithful.csv eruptions waiting faithful.svg
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iostream>
#include <string>
#include <vector>

#include "platform/depict/image_writer.h"
#include "platform/depict/plot.h"
#include "stats/api/data_table_text_reader.h"
#include "stats/api/linear_smoother_univariate.h"
#include "stats/api/stats_data_types.h"

namespace {

using namespace QVStats;
using Values = std::vector<double>;

double GetRootMeanSquare(const QVUnivariateRegressionResult& results) {
  QVStatModelResult result;
  const QVDataTableCol residuals = results.GetColumnFromName(result, "ResidualErrors");
  double sum = 0.0;
  double count = 0.0;
  for (const double residual : results.GetRegResultDataTable().GetDoubles(residuals)) {
    if (residual >= QVStatsBadData::BadIndexDouble) continue;
    sum += residual * residual;
    ++count;
  }
  return std::sqrt(sum / count);
}

/// Sets the best of forty bandwidths, from a hundredth of the range of x to all of it.
void ChooseBandwidth(QVUniVarLinearSmoother& smoother, double range) {
  double best = 0.0;
  double bestError = HUGE_VAL;
  for (int i = 0; i < 40; ++i) {
    const double inverse = 100.0 * std::pow(0.01, i / 39.0) / range;
    if (smoother.SetModelParams({inverse}).NotSuccessful()) return;
    const double error = GetRootMeanSquare(smoother.GetTrainingSetResults(true));
    if (error >= bestError) continue;
    best = inverse;
    bestError = error;
  }
  if (best > 0.0) smoother.SetModelParams({best});
}

bool Draw(const std::string& fileName, const std::string& xName, const std::string& yName,
          const Values& x, const Values& y, const QVUniVarLinearSmoother& kernel,
          const QVUniVarLinearSmoother& line) {
  const auto [low, high] = std::minmax_element(x.begin(), x.end());
  Values grid;
  Values byKernel;
  Values byLine;
  for (int i = 0; i <= 200; ++i) {
    grid.push_back(*low + (*high - *low) * i / 200.0);
    byKernel.push_back(kernel.GetPredictedResponse(grid.back()));
    byLine.push_back(line.GetPredictedResponse(grid.back()));
  }
  QVDepict::QVPlot plot;
  plot.SetXLabel(xName).SetYLabel(yName).AddPoints(x, y);
  plot.AddLine(grid, byKernel, "kernel regression").AddLine(grid, byLine, "least-squares line");
  QVDepict::QVImage image(560, 360);
  return plot.Render(image) && QVDepict::QVWriteImage(fileName, image);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 4) {
    std::cerr << "usage: " << argv[0] << " FILE PREDICTOR RESPONSE [IMAGE]\n";
    return 1;
  }
  QVDataTable table("data");
  QVPlatform::qvifstream in(argv[1]);
  QVDataTableReadReport report;
  const QVStatModelResult read =
      QVReadDataTable(table, in, argv[1], QVDataTableReadOptions(), report);
  if (read.NotSuccessful()) {
    std::cerr << read.ReportStatResultDetails();
    return 1;
  }
  QVUniVarLinearSmoother line(QVUnivarLinearSmootherType::SimpleLinearRegression, 0, argv[3],
                              argv[2], table, 0);
  QVUniVarLinearSmoother kernel(QVUnivarLinearSmootherType::KernelRegression,
                                QVKernelFunctionType::Gaussian, argv[3], argv[2], table, 0);
  if (!line.ModelIsValid()) {
    std::cerr << line.GetResultOfConstructor();
    return 1;
  }
  const Values x = table.GetDoubles(table.GetColumnFromName(argv[2]));
  const Values y = table.GetDoubles(table.GetColumnFromName(argv[3]));
  const auto [low, high] = std::minmax_element(x.begin(), x.end());
  ChooseBandwidth(kernel, *high - *low);
  if (!kernel.ModelIsValid()) return 1;
  std::printf("line: %s = %.4f + %.4f %s, root mean square %.3f\n", argv[3],
              line.GetModelParams()[0], line.GetModelParams()[1], argv[2],
              GetRootMeanSquare(line.GetTrainingSetResults(false)));
  std::printf("kernel regression: bandwidth %.4f, root mean square of left-out rows %.3f\n",
              1.0 / kernel.GetModelParams()[0],
              GetRootMeanSquare(kernel.GetTrainingSetResults(true)));
  return argc < 5 || Draw(argv[4], argv[2], argv[3], x, y, kernel, line) ? 0 : 1;
}
