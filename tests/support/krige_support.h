/// \file
/// \brief Elements, distances and models that the kriging tests share.
#ifndef QVSTATS_TESTS_SUPPORT_KRIGE_SUPPORT_H
#define QVSTATS_TESTS_SUPPORT_KRIGE_SUPPORT_H

#include <cmath>
#include <cstddef>
#include <random>
#include <string>
#include <vector>

#include "examples/points.h"
#include "platform/system/error_handler.h"
#include "stats/api/krige_model.h"

namespace QVKrigeTest {

using Point = PointIn<2>;
using Storage = QVStats::QVKrigeDefaultElementStorage<Point>;
using Container = QVStats::QVKrigeTrainingContainer<Point, Storage>;
using Model = QVStats::QVKrigeImpl<Point>;

/// A distance given as a function, evaluated pair by pair in both orientations.
class FunctionDistance : public QVSystem::QVBinaryFunction<Point, Point, double> {
 public:
  using Function = double (*)(const Point&, const Point&);
  explicit FunctionDistance(Function function) : function_(function) {}
  double operator()(const Point& a, const Point& b) const override { return function_(a, b); }
  FunctionDistance* CreateCopy() const override { return new FunctionDistance(*this); }

 private:
  Function function_;
};

inline double Euclid(const Point& a, const Point& b) { return EuclideanDistance<2>()(a, b); }

/// x, and y when it is asked for two; points with a negative x have no properties.
class Coordinates : public QVStats::QVPropertyListFxn<Point> {
 public:
  explicit Coordinates(std::size_t size) : size_(size) {}
  bool HasProperties(const Point& p) const override { return p[0] >= 0.0; }
  std::size_t GetSize() const override { return size_; }
  double GetProperty(const Point& p, std::size_t k) const override { return p[k]; }
  Coordinates* CreateCopy() const override { return new Coordinates(*this); }

 private:
  std::size_t size_;
};

struct Sample {
  Point point;
  double value;
};

/// Points of the unit square with a smooth response and a little noise.
inline std::vector<Sample> MakeSamples(std::size_t count, unsigned int seed) {
  std::mt19937 engine(seed);
  std::uniform_real_distribution<double> uniform;
  std::vector<Sample> samples;
  for (std::size_t i = 0; i < count; ++i) {
    const Point p = {uniform(engine), uniform(engine)};
    samples.push_back({p, std::sin(4 * p[0]) + p[1] * p[1] + 0.1 * uniform(engine)});
  }
  return samples;
}

inline QVStats::QVKrigeOptions GlobalOptions() {
  return QVStats::QVKrigeOptions(QVStats::QVGlobalKrigeOptions());
}

inline QVStats::QVKrigeKernel MakeKernel(unsigned int type, double range, double sill,
                                         double nugget) {
  QVStats::QVKrigeKernel kernel(type);
  kernel.SetRange(range);
  kernel.SetNugget(nugget);
  kernel.SetSill(sill);
  return kernel;
}

enum class Kind { Simple, Ordinary, Universal };

inline Model MakeModel(
    Kind kind, const QVStats::QVKrigeOptions& options,
    const QVSystem::QVBinaryFunction<Point, Point, double>& distance = EuclideanDistance<2>()) {
  using QVStats::QVCreateKrige;
  if (kind == Kind::Universal)
    return Model(QVCreateKrige<Point, Storage>(distance, Coordinates(2), options));
  return Model(QVCreateKrige<Point, Storage>(distance, options, kind == Kind::Simple));
}

inline Model MakeModel(Kind kind, const std::vector<Sample>& samples,
                       const QVStats::QVKrigeOptions& options = GlobalOptions()) {
  Model model = MakeModel(kind, options);
  for (const Sample& sample : samples) model.AddTraining(sample.point, sample.value);
  return model;
}

/// The texts of all reports at one level while `work` ran.
template <class Work>
std::vector<std::string> Texts(QVSystem::QVErrorLevel level, Work work) {
  QVSystem::QVScopedRecordingSink sink;
  work();
  return sink.GetTexts(level);
}

}  // namespace QVKrigeTest

#endif  // QVSTATS_TESTS_SUPPORT_KRIGE_SUPPORT_H
