#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "benchmarks/qvperf/qvperf.h"
#include "benchmarks/qvperf/workloads.h"
#include "stats/api/linear_smoother_impl.h"

namespace QVPerf {

namespace {

using Smoother = QVStats::QVGaussianProcessOnSimilarity;

/// 1 - h / sqrt(3), h the distance of two points of the unit cube.
double GetSimilarity(const double* a, const double* b) {
  return 1.0 - std::sqrt(((a[0] - b[0]) * (a[0] - b[0]) + (a[1] - b[1]) * (a[1] - b[1]) +
                          (a[2] - b[2]) * (a[2] - b[2])) /
                         3.0);
}

QVStats::QVDataTable MakeTraining(const Array& points, const std::vector<double>& responses,
                                  std::size_t n) {
  std::vector<double> triangle;
  triangle.reserve(n * (n + 1) / 2);
  for (std::size_t i = 0; i < n; ++i)
    for (std::size_t j = 0; j <= i; ++j)
      triangle.push_back(GetSimilarity(points.Row(i), points.Row(j)));
  QVStats::QVDataTable table("points");
  table.AddColumn(QVStats::QVDataTableCol("similarity", triangle, n, true));
  table.AddColumn(QVStats::QVDataTableCol(
      "response",
      std::vector<double>(responses.begin(), responses.begin() + static_cast<std::ptrdiff_t>(n)), 1,
      false));
  return table;
}

double Mean(const std::vector<double>& values) {
  double sum = 0.0;
  for (const double value : values) sum += value;
  return sum / static_cast<double>(values.size());
}

void RunSpectral(const Run& run, std::size_t n) {
  const Array points = run.Load("gp_x");
  const Array queries = run.Load("gp_q");
  const QVStats::QVDataTable table = MakeTraining(points, run.Load("gp_y").values, n);
  Eigen::MatrixXd similarities(static_cast<Eigen::Index>(n), 200);
  for (Eigen::Index q = 0; q < similarities.cols(); ++q)
    for (Eigen::Index i = 0; i < similarities.rows(); ++i)
      similarities(i, q) = GetSimilarity(points.Row(static_cast<std::size_t>(i)),
                                         queries.Row(static_cast<std::size_t>(q)));
  Smoother smoother(QVStats::QVSimilarityKernelType::Gaussian, "response", "similarity", table);
  QVStats::QVSimilarityPredictions predictions;
  run.Time(
      "fit", [] {}, [&] { smoother.SetModelParams({5.256521769756932}); },
      [&] {
        return Check("sigma2", smoother.GetSignalVariance()) + ";" +
               Check("noise", smoother.GetNoiseVariance());
      });
  run.Time(
      "predict200", [] {}, [&] { smoother.GetPredictedResponses(predictions, similarities); },
      [&] {
        return Check("mean", Mean(predictions.predicted)) + ";" +
               Check("err", Mean(predictions.estimatedErrors));
      });
}

}  // namespace

bool RunSpectralGaussianProcess(const Run& run) {
  for (const std::size_t size : {500u, 1000u, 2000u})
    if (run.GetCase() == "eig" + std::to_string(size)) return RunSpectral(run, size), true;
  return false;
}

}  // namespace QVPerf
