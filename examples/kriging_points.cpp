// Kriging on points in the plane: an element type of one's own, trained and asked in a few lines.
//
// Forty measurements of a height at scattered places; an exponential kernel is fitted to their
// variogram, and the model predicts the height elsewhere, with an error bar and the neighbours that
// spoke. Train() without a kernel would try all of the library's kernels instead.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <numeric>
#include <vector>

#include "examples/points.h"
#include "stats/api/krige_model.h"

namespace {

using Place = PointIn<2>;

double Height(const Place& place) { return 50.0 + 20.0 * std::sin(place[0]) - 8.0 * place[1]; }

/// Scattered over [0, 4] x [0, 2] without a random number: multiples of irrational numbers.
std::vector<Place> ScatterPlaces(unsigned int count) {
  std::vector<Place> places;
  for (unsigned int i = 1; i <= count; ++i)
    places.push_back({4.0 * std::fmod(i * 0.7548776662466927, 1.0),
                      2.0 * std::fmod(i * 0.5698402909980532, 1.0)});
  return places;
}

void PrintPrediction(const QVStats::QVKrigeImpl<Place>& model, const Place& query) {
  const QVStats::QVKrigeResult result = model.GetKrigeResult(query);
  if (!result.Valid()) {
    std::printf("(%.2f, %.2f)  no prediction\n", query[0], query[1]);
    return;
  }
  const double height = QVStats::QVCalculateResponse(result, model.GetErrorValue());
  const double deviation = std::sqrt(QVStats::QVCalculateVariance(result, model.GetErrorValue()));
  std::printf("(%.2f, %.2f)  height %.2f +- %.2f, really %.2f; nearest:", query[0], query[1],
              height, 1.96 * deviation, Height(query));
  std::vector<unsigned int> order(result.GetNumElements());
  std::iota(order.begin(), order.end(), 0u);
  std::sort(order.begin(), order.end(), [&](unsigned int a, unsigned int b) {
    return result.GetDistance(a) < result.GetDistance(b);
  });
  for (std::size_t k = 0; k < 3; ++k)
    std::printf("  #%u (weight %.2f)", result.GetID(order[k]), result.GetWeight(order[k]));
  std::printf("\n");
}

}  // namespace

int main() {
  QVStats::QVKrigeImpl<Place> model(
      QVStats::QVCreateKrige<Place, QVStats::QVKrigeDefaultElementStorage<Place>>(
          EuclideanDistance<2>(), QVStats::QVKrigeOptions(QVStats::QVGlobalKrigeOptions()), false));
  unsigned int id = 0;
  for (const Place& place : ScatterPlaces(40)) model.AddTrainingWithID(place, Height(place), id++);
  QVStats::QVKrigeKernel kernel(QVStats::QVKrigeKernelType::Exponential);
  if (!model.Train(kernel)) return 1;
  std::printf("kernel %s, range %.3g, sill %.4g, nugget %.3g\n", kernel.GetName().c_str(),
              kernel.GetRange(), kernel.GetSill(), kernel.GetNugget());
  for (const Place& query : {Place{1.0, 1.0}, Place{3.3, 0.4}, Place{0.1, 1.9}})
    PrintPrediction(model, query);
  return 0;
}
