// Bytes as a small kriging problem: options, training points on a coarse grid (so that points and
// distances coincide), responses of any size, then queries. What the model calls a prediction is
// finite, and blocks answer as single queries do.
#include <fuzzer/FuzzedDataProvider.h>

#include <cmath>
#include <limits>
#include <memory>
#include <vector>

#include "examples/points.h"
#include "fuzz/fuzz_support.h"
#include "stats/api/krige_model.h"

namespace {

using Point = PointIn<2>;
using Storage = QVStats::QVKrigeDefaultElementStorage<Point>;

/// The coordinates; those left of zero have none.
class Drift : public QVStats::QVPropertyListFxn<Point> {
 public:
  bool HasProperties(const Point& point) const override { return point[0] >= 0.0; }
  std::size_t GetSize() const override { return 2; }
  double GetProperty(const Point& point, std::size_t k) const override { return point[k]; }
  Drift* CreateCopy() const override { return new Drift(*this); }
};

Point MakePoint(FuzzedDataProvider& input) {
  const double x = input.ConsumeIntegralInRange(-2, 13);
  const double y = input.ConsumeIntegralInRange(-2, 13);
  return {x / 8.0, y / 8.0};
}

/// Of any size whose square is a number; larger ones are a mistake of the calling program.
double MakeResponse(FuzzedDataProvider& input) {
  if (input.ConsumeIntegralInRange(0, 7) == 0)
    return std::ldexp(input.ConsumeFloatingPointInRange(-1.0, 1.0),
                      input.ConsumeIntegralInRange(-1074, 500));
  return input.ConsumeIntegralInRange(-40, 40) / 8.0;
}

QVStats::QVKrigeOptions MakeOptions(FuzzedDataProvider& input) {
  const unsigned int method = input.ConsumeIntegralInRange(0u, 3u);
  const bool unmeasured = input.ConsumeBool();
  const unsigned int local = input.ConsumeIntegralInRange(0u, 6u);
  if (local == 0)
    return QVStats::QVKrigeOptions(
        QVStats::QVGlobalKrigeOptions().SetUniqueResponseMethod(method).SetIncludeUnmeasured(
            unmeasured));
  return QVStats::QVKrigeOptions(QVStats::QVLocalKrigeOptions()
                                     .SetNumLocal(local)
                                     .SetUniqueResponseMethod(method)
                                     .SetIncludeUnmeasured(unmeasured)
                                     .SetPredictTraining(input.ConsumeBool())
                                     .SetMaxVariogramSize(input.ConsumeIntegralInRange(0u, 500u)));
}

QVStats::QVKrigeBase<Point>* MakeModel(FuzzedDataProvider& input) {
  const QVStats::QVKrigeOptions options = MakeOptions(input);
  const EuclideanDistance<2> distance;
  const unsigned int kind = input.ConsumeIntegralInRange(0u, 2u);
  if (kind == 2) return QVStats::QVCreateKrige<Point, Storage>(distance, Drift(), options);
  return QVStats::QVCreateKrige<Point, Storage>(distance, options, kind == 1);
}

bool Train(FuzzedDataProvider& input, QVStats::QVKrigeImpl<Point>& model) {
  const unsigned int way = input.ConsumeIntegralInRange(0u, 3u);
  if (way == 0) return model.Train();
  QVStats::QVKrigeKernel kernel(input.ConsumeIntegralInRange(0u, 20u));
  if (way == 1) return model.Train(kernel);
  kernel.SetRange(input.ConsumeFloatingPointInRange(1e-9, 2.0));
  kernel.SetNugget(input.ConsumeFloatingPointInRange(0.0, 1.0));
  kernel.SetSill(input.ConsumeFloatingPointInRange(1e-9, 4.0));
  return model.TrainFixed(kernel);
}

void CheckQueries(const QVStats::QVKrigeImpl<Point>& model, const std::vector<Point>& queries) {
  std::vector<const Point*> pointers;
  for (const Point& query : queries) pointers.push_back(&query);
  const std::vector<QVStats::QVKrigeEstimate> estimates = model.GetEstimates(pointers);
  for (std::size_t q = 0; q < queries.size(); ++q) {
    const QVStats::QVKrigeResult result = model.GetKrigeResult(queries[q]);
    const double response = model.Predict(queries[q]);
    QVFuzz::Require(!std::isnan(response), "a response is a number or the error value");
    QVFuzz::Require(estimates[q].response == response, "a block answers as a single query does");
    if (!result.Valid()) continue;
    for (unsigned int i = 0; i < result.GetNumElements(); ++i)
      QVFuzz::Require(std::isfinite(result.GetWeight(i)), "weights are finite");
  }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  QVFuzz::InstallSink();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider input(data, size);
  QVStats::QVKrigeImpl<Point> model(MakeModel(input));
  const unsigned int count = input.ConsumeIntegralInRange(0u, 24u);
  for (unsigned int i = 0; i < count; ++i) {
    const Point point = MakePoint(input);
    if (input.ConsumeIntegralInRange(0, 9) == 0)
      model.AddUnmeasuredTraining(point, MakeResponse(input));
    else
      model.AddTraining(point, MakeResponse(input));
  }
  const bool trained = Train(input, model);
  std::vector<Point> queries;
  for (unsigned int i = 0; i < 6; ++i) queries.push_back(MakePoint(input));
  if (trained) CheckQueries(model, queries);
  return 0;
}
