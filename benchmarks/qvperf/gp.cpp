#include <memory>
#include <string>

#include "benchmarks/qvperf/qvperf.h"
#include "benchmarks/qvperf/workloads.h"
#include "examples/points.h"
#include "stats/api/krige_model.h"

namespace QVPerf {

namespace {

using Point = PointIn<3>;
using Model = QVStats::QVKrigeImpl<Point>;

std::vector<Point> GetPoints(const Array& array, std::size_t count) {
  std::vector<Point> points;
  for (std::size_t i = 0; i < count; ++i)
    points.push_back({array.Row(i)[0], array.Row(i)[1], array.Row(i)[2]});
  return points;
}

struct Data {
  std::vector<Point> points;
  std::vector<double> values;
  std::vector<Point> queries;
};

Data LoadData(const Run& run, std::size_t numTraining, std::size_t numQueries) {
  return {GetPoints(run.Load("gp_x"), numTraining), run.Load("gp_y").values,
          GetPoints(run.Load("gp_q"), numQueries)};
}

std::unique_ptr<Model> MakeModel(const Data& data, unsigned int numLocal) {
  auto model = std::make_unique<Model>(
      QVStats::QVCreateKrige<Point, QVStats::QVKrigeDefaultElementStorage<Point>>(
          EuclideanDistance<3>(), QVStats::QVKrigeOptions().SetNumLocal(numLocal), false));
  for (std::size_t i = 0; i < data.points.size(); ++i)
    model->AddTraining(data.points[i], data.values[i]);
  return model;
}

/// Means of response and variance over the queries.
class Summary {
 public:
  void Clear() { *this = Summary(); }
  void Add(double response, double variance) {
    mean_ += response;
    variance_ += variance;
    ++count_;
  }
  std::string GetCheck() const {
    return Check("mean", mean_ / count_) + ";" + Check("var", variance_ / count_);
  }

 private:
  double mean_ = 0.0;
  double variance_ = 0.0;
  double count_ = 0.0;
};

/// \param weights whether a weight is read, so that the result solves for them.
void AskOneByOne(const Model& model, const Data& data, bool weights, Summary& summary) {
  summary.Clear();
  for (const Point& query : data.queries) {
    const QVStats::QVKrigeResult result = model.GetKrigeResult(query);
    if (weights) result.GetWeight(0);
    summary.Add(QVStats::QVCalculateResponse(result, 0.0),
                QVStats::QVCalculateVariance(result, 0.0));
  }
}

void AskTogether(const Model& model, const Data& data, Summary& summary) {
  std::vector<const Point*> queries;
  for (const Point& query : data.queries) queries.push_back(&query);
  summary.Clear();
  for (const QVStats::QVKrigeEstimate& estimate : model.GetEstimates(queries))
    summary.Add(estimate.response, estimate.variance);
}

void RunGlobal(const Run& run, std::size_t numTraining) {
  const Data data = LoadData(run, numTraining, 200);
  const QVStats::QVKrigeKernel kernel(QVStats::QVKrigeKernelType::Exponential);
  std::unique_ptr<Model> model;
  Summary summary;
  const auto nothing = [] {};
  const auto check = [&] { return summary.GetCheck(); };
  run.Time(
      "add", [&] { model.reset(); }, [&] { model = MakeModel(data, 0); }, check);
  run.Time(
      "fit", nothing, [&] { model->TrainFixed(kernel); }, check);
  run.Time(
      "predict_single", nothing, [&] { AskOneByOne(*model, data, false, summary); }, check);
  run.Time(
      "predict_weights", nothing, [&] { AskOneByOne(*model, data, true, summary); }, check);
  run.Time(
      "predict_batch", nothing, [&] { AskTogether(*model, data, summary); }, check);
}

void RunTraining(const Run& run) {
  const Data data = LoadData(run, 1000, 0);
  const std::unique_ptr<Model> empty = MakeModel(data, 0);
  std::unique_ptr<QVStats::QVKrigeBase<Point>> model;
  run.Time(
      "train", [&] { model.reset(empty->CreateKrigeCopy()); }, [&] { model->Train(); },
      [&] {
        const QVStats::QVKrigeKernel kernel = model->GetKernel();
        return Check("range", kernel.GetRange()) + ";" + Check("sill", kernel.GetSill());
      });
}

void RunLocal(const Run& run) {
  const Data data = LoadData(run, 4000, 1000);
  const std::unique_ptr<Model> model = MakeModel(data, 100);
  Summary summary;
  run.Time(
      "fit+predict", [] {},
      [&] {
        model->TrainFixed(QVStats::QVKrigeKernel(QVStats::QVKrigeKernelType::Exponential));
        AskOneByOne(*model, data, true, summary);
      },
      [&] { return summary.GetCheck(); });
}

}  // namespace

bool RunGaussianProcess(const Run& run) {
  const std::string& name = run.GetCase();
  for (const std::size_t size : {1000u, 2000u, 4000u, 8000u})
    if (name == "gp" + std::to_string(size)) return RunGlobal(run, size), true;
  if (name == "gpfit1000") return RunTraining(run), true;
  if (name == "local4000") return RunLocal(run), true;
  return RunSpectralGaussianProcess(run);
}

}  // namespace QVPerf
