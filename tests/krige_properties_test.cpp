// What holds for every kriging model, tried on random ones: each seed stands for a kind of mean, a
// kernel, a global or a local model, with copies of points and unmeasured elements among the
// training.
#include <gmock/gmock.h>

#include <algorithm>
#include <limits>
#include <numeric>

#include "tests/support/krige_support.h"

namespace QVStats {
namespace {

using namespace QVKrigeTest;

constexpr double kMax = std::numeric_limits<double>::max();
constexpr unsigned int kLocal = 12;
constexpr unsigned int kNumSeeds = 180;

struct Element {
  Point point;
  double value;
  bool unmeasured;
};

struct Configuration {
  Kind kind;
  QVKrigeOptions options;
  QVKrigeKernel kernel;
  std::vector<Element> training;
  std::vector<Point> queries;
};

unsigned int Below(std::mt19937& engine, unsigned int n) {
  return static_cast<unsigned int>(engine() % n);
}

std::vector<Element> MakeTraining(std::mt19937& engine) {
  std::uniform_real_distribution<double> uniform;
  std::vector<Element> training;
  for (const Sample& sample : MakeSamples(20 + Below(engine, 50), Below(engine, 1000))) {
    training.push_back({sample.point, 10.0 * sample.value, uniform(engine) < 0.1});
    if (uniform(engine) < 0.2) training.back().point = training[engine() % training.size()].point;
  }
  return training;
}

Configuration MakeConfiguration(unsigned int seed) {
  std::mt19937 engine(seed);
  const unsigned int kernel = seed % 5;
  const bool isLocal = seed / 15 % 2 == 1;
  // Smooth kernels of a long range give matrices that are singular to rounding.
  const bool isSmooth =
      kernel == QVKrigeKernelType::Gaussian || kernel == QVKrigeKernelType::Cauchy;
  const double range = (isSmooth ? 0.005 : 0.1) * (1 + Below(engine, 10));
  const double share = 0.2 * (seed / 30 % 3);
  const double sill = 0.5 + Below(engine, 10);
  QVKrigeOptions options =
      isLocal ? QVKrigeOptions(QVLocalKrigeOptions().SetNumLocal(kLocal)) : GlobalOptions();
  options.SetUniqueResponseMethod(Below(engine, 3));
  Configuration made{static_cast<Kind>(seed / 5 % 3),
                     options,
                     MakeKernel(kernel, range, sill, share * sill),
                     MakeTraining(engine),
                     {}};
  for (const Sample& query : MakeSamples(8, Below(engine, 1000)))
    made.queries.push_back(query.point);
  return made;
}

Model Train(const Configuration& configuration) {
  Model model = MakeModel(configuration.kind, configuration.options);
  for (const Element& element : configuration.training) {
    if (element.unmeasured)
      model.AddUnmeasuredTraining(element.point, element.value);
    else
      model.AddTraining(element.point, element.value);
  }
  model.TrainFixed(configuration.kernel);
  return model;
}

/// Whether copies of a point stand on both sides of the edge of a query's neighbourhood, where the
/// order of training decides.
bool IsCutThroughCopies(const Configuration& configuration, const Point& query) {
  if (configuration.options.GetNumLocal() == 0) return false;
  std::vector<double> distances;
  for (const Element& element : configuration.training)
    distances.push_back(Euclid(query, element.point));
  std::sort(distances.begin(), distances.end());
  return distances[kLocal - 1] == distances[kLocal];
}

/// The response that stands for the copies of a point.
double GetGroupResponse(const Configuration& configuration, const Point& point) {
  std::vector<double> measured, all;
  for (const Element& element : configuration.training) {
    if (element.point != point) continue;
    all.push_back(element.value);
    if (!element.unmeasured) measured.push_back(element.value);
  }
  if (measured.empty()) measured = all;
  const auto [least, greatest] = std::minmax_element(measured.begin(), measured.end());
  switch (configuration.options.GetUniqueResponseMethod()) {
    case QVKrigeUniqueResponseMethod::Min:
      return *least;
    case QVKrigeUniqueResponseMethod::Max:
      return *greatest;
    default:
      return std::accumulate(measured.begin(), measured.end(), 0.0) /
             static_cast<double>(measured.size());
  }
}

/// A linear kernel need not be positive definite in the plane, nor an extrapolated drift within the
/// bounds of the variance: a model that answers nothing has nothing to check.
bool Answers(const Model& model, const Point& query) { return model.Predict(query) != kMax; }

class KrigeProperties : public testing::Test {
 protected:
  /// Checks every configuration until one fails.
  template <class Check>
  void ForEachConfiguration(Check check) {
    for (seed_ = 0; seed_ < kNumSeeds && !HasFailure(); ++seed_) {
      SCOPED_TRACE(seed_);
      configuration_ = MakeConfiguration(seed_);
      check(Train(configuration_));
    }
  }

  /// Another training with the same geometry predicts a y + b for y, a^2 v for v.
  void ExpectMapped(const Model& model, const Configuration& mapped, double a, double b) const {
    const Model other = Train(mapped);
    const double tolerance = 1e-7 * std::abs(a);
    for (const Point& query : configuration_.queries) {
      if (!Answers(model, query) || IsCutThroughCopies(configuration_, query)) continue;
      EXPECT_NEAR(other.Predict(query), a * model.Predict(query) + b, tolerance * 10.0);
      EXPECT_NEAR(other.GetVariance(query), a * a * model.GetVariance(query),
                  tolerance * std::abs(a) * configuration_.kernel.GetSill());
    }
  }

  unsigned int seed_ = 0;
  Configuration configuration_ = MakeConfiguration(0);
  QVSystem::QVScopedRecordingSink reports_;
};

TEST_F(KrigeProperties, TheOrderOfTrainingIsNothing) {
  ForEachConfiguration([this](const Model& model) {
    Configuration shuffled = configuration_;
    std::mt19937 engine(seed_);
    std::shuffle(shuffled.training.begin(), shuffled.training.end(), engine);
    ExpectMapped(model, shuffled, 1.0, 0.0);
  });
}

// A negative factor makes the least of some copies the greatest.
TEST_F(KrigeProperties, ALinearMapOfTheResponsesMapsPredictions) {
  ForEachConfiguration([this](const Model& model) {
    const auto isMin =
        configuration_.options.GetUniqueResponseMethod() == QVKrigeUniqueResponseMethod::Min;
    for (const auto& [a, b] : {std::pair{1e-3, 5.0}, std::pair{-40.0, 17.0}}) {
      Configuration mapped = configuration_;
      for (Element& element : mapped.training) element.value = a * element.value + b;
      mapped.kernel.SetSill(a * a * mapped.kernel.GetSill());
      mapped.kernel.SetNugget(a * a * mapped.kernel.GetNugget());
      if (a < 0.0 && mapped.options.GetUniqueResponseMethod() != QVKrigeUniqueResponseMethod::Mean)
        mapped.options.SetUniqueResponseMethod(isMin ? QVKrigeUniqueResponseMethod::Max
                                                     : QVKrigeUniqueResponseMethod::Min);
      ExpectMapped(model, mapped, a, b);
    }
  });
}

TEST_F(KrigeProperties, TrainingPointsKeepTheirResponse) {
  ForEachConfiguration([this](const Model& model) {
    for (std::size_t i = 0; i < configuration_.training.size(); i += 5) {
      const Point& point = configuration_.training[i].point;
      if (!Answers(model, point)) continue;
      EXPECT_NEAR(model.Predict(point), GetGroupResponse(configuration_, point), 1e-13);
      EXPECT_NEAR(model.GetVariance(point), configuration_.kernel.GetNugget(), 1e-14);
    }
  });
}

// Constraints on the weights, and bounds of the variance.
TEST_F(KrigeProperties, WeightsAndVarianceObeyTheirDefinition) {
  ForEachConfiguration([this](const Model& model) {
    const double sill = configuration_.kernel.GetSill(), nugget = configuration_.kernel.GetNugget();
    for (const Point& query : configuration_.queries) {
      const QVKrigeResult result = model.GetKrigeResult(query);
      EXPECT_EQ(result.Valid(), Answers(model, query));
      EXPECT_EQ(result.Valid(), model.GetVariance(query) != kMax);
      if (!result.Valid()) continue;
      double sum = 0.0;
      for (unsigned int i = 0; i < result.GetNumElements(); ++i) sum += result.GetWeight(i);
      if (configuration_.kind != Kind::Simple) {
        EXPECT_NEAR(sum, 1.0, 1e-10);
        EXPECT_GE(model.GetVariance(query), 0.999999 * nugget);
        EXPECT_LE(model.GetVariance(query), 1.000001 * sill);
      }
      EXPECT_GE(model.GetVariance(query), 0.0);
      // Far from all training nothing is explained.
      EXPECT_LE(model.GetVariance(query), 1.000001 * sill);
    }
  });
}

TEST_F(KrigeProperties, BlocksAndCopiesGiveTheBitsOfSingleQueries) {
  ForEachConfiguration([this](const Model& model) {
    std::vector<Point> points = configuration_.queries;
    points.push_back(configuration_.training[3].point);
    points.push_back({-0.5, 0.5});  // without drift properties
    points.push_back({50.0, 50.0});
    std::vector<const Point*> queries;
    for (const Point& point : points) queries.push_back(&point);
    const Model copy = model;
    const std::vector<QVKrigeEstimate> estimates = model.GetEstimates(queries);
    const std::vector<QVKrigeResult> results = model.GetKrigeResults(queries);
    for (std::size_t q = 0; q < points.size(); ++q) {
      EXPECT_EQ(estimates[q].response, model.Predict(points[q]));
      EXPECT_EQ(estimates[q].variance, model.GetVariance(points[q]));
      const QVKrigeResult single = copy.GetKrigeResult(points[q]);
      ASSERT_EQ(results[q].Valid(), single.Valid());
      for (unsigned int i = 0; i < single.GetNumElements(); ++i) {
        EXPECT_EQ(results[q].GetWeight(i), single.GetWeight(i));
        EXPECT_EQ(results[q].GetDistance(i), single.GetDistance(i));
      }
    }
  });
}

// The unit of the responses is a matter of taste, for the variogram and the choice of a kernel too.
TEST_F(KrigeProperties, FittedModelsDoNotDependOnTheUnit) {
  ForEachConfiguration([this](const Model&) {
    if (seed_ % 15 != 0) return;  // fits do not use the seed's kernel
    Model fitted = MakeModel(configuration_.kind, configuration_.options);
    Model scaled = fitted, tiny = fitted;
    for (const Element& element : configuration_.training) {
      fitted.AddTraining(element.point, element.value);
      scaled.AddTraining(element.point, 0x1p20 * element.value);
      tiny.AddTraining(element.point, 0x1p-20 * element.value);
    }
    ASSERT_TRUE(fitted.Train() && scaled.Train() && tiny.Train());
    EXPECT_EQ(scaled.GetKernel().GetName(), fitted.GetKernel().GetName());
    EXPECT_EQ(tiny.GetKernel().GetName(), fitted.GetKernel().GetName());
    for (const Point& query : configuration_.queries) {
      if (!Answers(fitted, query)) continue;
      EXPECT_NEAR(0x1p-20 * scaled.Predict(query), fitted.Predict(query), 1e-6);
      EXPECT_NEAR(0x1p20 * tiny.Predict(query), fitted.Predict(query), 1e-6);
    }
  });
}

// The checks above pass over what is not answered: most is.
TEST(KrigePropertiesOverall, NearlyAllConfigurationsAnswer) {
  const QVSystem::QVScopedRecordingSink reports;
  int answered = 0, asked = 0;
  for (unsigned int seed = 0; seed < kNumSeeds; ++seed) {
    const Configuration configuration = MakeConfiguration(seed);
    const Model model = Train(configuration);
    for (const Point& query : configuration.queries) {
      ++asked;
      answered += Answers(model, query);
    }
  }
  EXPECT_GT(answered, asked * 9 / 10);
}

}  // namespace
}  // namespace QVStats
