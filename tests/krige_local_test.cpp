#include <gmock/gmock.h>

#include <algorithm>
#include <limits>
#include <numeric>

#include "tests/support/krige_support.h"
#include "tests/support/matchers.h"

namespace QVStats {
namespace {

using namespace QVKrigeTest;
using QVSystem::QVErrorLevel;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr double kMax = std::numeric_limits<double>::max();

QVKrigeOptions LocalOptions(unsigned int count) {
  return QVKrigeOptions(QVLocalKrigeOptions().SetNumLocal(count));
}

/// The samples nearest to a query, by a full sort.
std::vector<Sample> FindNearest(std::vector<Sample> samples, const Point& query,
                                std::size_t count) {
  std::stable_sort(samples.begin(), samples.end(), [&](const Sample& a, const Sample& b) {
    return Euclid(query, a.point) < Euclid(query, b.point);
  });
  samples.resize(count);
  return samples;
}

class LocalKinds : public testing::TestWithParam<Kind> {};
INSTANTIATE_TEST_SUITE_P(Kinds, LocalKinds,
                         testing::Values(Kind::Simple, Kind::Ordinary, Kind::Universal));

// On a grid many distances tie, so the neighbourhood depends on the order of training too. The
// cache of pairs is kept, given up at once, or avoided by a distance without bulk form.
TEST_P(LocalKinds, AreModelsOfTheNeighbourhood) {
  std::vector<Sample> samples;
  for (int i = 0; i < 64; ++i) samples.push_back({{i % 8 / 4.0, i / 8 / 4.0}, std::cos(i * 0.7)});
  samples[33].point = samples[30].point;  // copies
  const QVKrigeKernel kernel = MakeKernel(QVKrigeKernelType::Spherical, 1.5, 2.0, 0.1);
  const FunctionDistance slow(&Euclid);
  const EuclideanDistance<2> fast;
  for (const unsigned int maxPairs : {500000u, 10u})
    for (const bool bulk : {true, false}) {
      const QVSystem::QVBinaryFunction<Point, Point, double>& distance =
          bulk ? static_cast<const QVSystem::QVBinaryFunction<Point, Point, double>&>(fast) : slow;
      Model model = MakeModel(GetParam(), LocalOptions(15).SetMaxVariogramSize(maxPairs), distance);
      for (const Sample& sample : samples) model.AddTraining(sample.point, sample.value);
      ASSERT_TRUE(model.TrainFixed(kernel));
      for (const Point& query : {Point{0.6, 0.7}, Point{0.9, 1.0}, samples[30].point}) {
        Model reference = MakeModel(GetParam(), FindNearest(samples, query, 15));
        ASSERT_TRUE(reference.TrainFixed(kernel));
        const QVKrigeResult expected = reference.GetKrigeResult(query);
        const QVKrigeResult result = model.GetKrigeResult(query);
        ASSERT_EQ(result.GetNumElements(), expected.GetNumElements());
        for (unsigned int i = 0; i < result.GetNumElements(); ++i) {
          EXPECT_EQ(result.GetDistance(i), expected.GetDistance(i));
          EXPECT_EQ(result.GetWeight(i), expected.GetWeight(i));
        }
        EXPECT_EQ(model.Predict(query), QVCalculateResponse(expected, kMax));
        EXPECT_EQ(model.GetVariance(query), QVCalculateVariance(expected, kMax));
      }
    }
}

TEST(LocalKriging, LeavesIdenticalElementsOutToPredictTraining) {
  const std::vector<Sample> samples = MakeSamples(60, 21);
  for (const bool predict : {true, false}) {
    Model model = MakeModel(Kind::Ordinary, samples, LocalOptions(20).SetPredictTraining(predict));
    const QVKrigeKernel kernel = MakeKernel(QVKrigeKernelType::Exponential, 1.0, 1.0, 0.0);
    ASSERT_TRUE(model.TrainFixed(kernel));
    const QVKrigeResult result = model.GetKrigeResult(samples[5].point);
    EXPECT_EQ(result.GetNumElements(), 20u);
    EXPECT_EQ(result.GetDistance(0) == 0.0, !predict);
    EXPECT_EQ(model.Predict(samples[5].point) == samples[5].value, !predict);
  }
}

TEST(LocalKriging, RanksKernelsOnTheGlobalVariogram) {
  const std::vector<Sample> samples = MakeSamples(60, 22);
  Model local = MakeModel(Kind::Ordinary, samples, LocalOptions(60));
  Model global = MakeModel(Kind::Ordinary, samples);
  ASSERT_TRUE(local.Train());
  // The cache holds the differences with the opposite sign, which only breaks ties of distance.
  const QVVariogram a = local.GetVariogram();
  const QVVariogram b = global.GetVariogram();
  ASSERT_EQ(a.GetNumBins(), b.GetNumBins());
  for (unsigned int bin = 0; bin < a.GetNumBins(); ++bin)
    EXPECT_THAT(a.GetSemivariance(bin), IsCloseTo(b.GetSemivariance(bin), 1e-12));
  const Model copy = local;
  EXPECT_EQ(copy.GetKrigeResult({0.5, 0.5}).GetKernel().GetName(), local.GetKernel().GetName());
  local.AddTraining({0.1, 0.2}, 3.0);
  EXPECT_EQ(std::as_const(local).GetVariogram().GetNumBins(), a.GetNumBins());
  EXPECT_NE(std::as_const(local).Predict({0.5, 0.5}), kMax);
}

TEST(LocalKriging, SaysWhyItCannotTrain) {
  QVKrigeKernel kernel(QVKrigeKernelType::Linear);
  EXPECT_THAT(
      Texts(QVErrorLevel::Warning,
            [&] {
              Model model = MakeModel(Kind::Ordinary, MakeSamples(2, 23), LocalOptions(10));
              EXPECT_FALSE(model.Train(kernel));
              EXPECT_EQ(model.GetKernel().GetName(), "Linear");
            }),
      ElementsAre(
          "QVLocalKrigeImpl::Train(QVKrigeKernelBase ) failed, not enough data to construct "
          "variogram",
          "QVLocalKrigeImpl::Train() failed, not enough data to construct variogram",
          "QVLocalKrige::GetKernel, failed to get kernel because training failed"));
  std::vector<Sample> flat = MakeSamples(30, 24);
  for (Sample& sample : flat) sample.value = 2.0;
  EXPECT_THAT(Texts(QVErrorLevel::Warning,
                    [&] {
                      Model model = MakeModel(Kind::Ordinary, flat, LocalOptions(10));
                      EXPECT_EQ(model.Predict({0.5, 0.5}), kMax);
                    }),
              ElementsAre("QVLocalKrigeImpl::Train() failed, no kernel fits the variogram"));
}

/// Symmetric but no metric: near points are far too near, and no kernel of a range that suits all
/// training is positive definite on a neighbourhood.
double Steep(const Point& a, const Point& b) { return std::pow(Euclid(a, b), 8); }

constexpr const char* kLocalVariogram =
    "QVLocalKrige::GetKrigeResult, Falling back to local variogram";
constexpr const char* kLocalKernels =
    "QVLocalKrige::GetKrigeResult, Falling back to local variogram kernels";

TEST(LocalKriging, FallsBackToTheLocalVariogram) {
  Model model = MakeModel(Kind::Ordinary, LocalOptions(6), FunctionDistance(&Steep));
  for (const Sample& sample : MakeSamples(60, 1)) model.AddTraining(sample.point, sample.value);
  ASSERT_TRUE(model.Train());
  int fallbacks = 0, refused = 0;
  for (const Sample& query : MakeSamples(40, 501)) {
    QVKrigeResult result;
    const auto warnings =
        Texts(QVErrorLevel::Warning, [&] { result = model.GetKrigeResult(query.point); });
    refused += !result.Valid();
    if (!result.Valid() || warnings.empty()) continue;
    EXPECT_EQ(warnings.back(), kLocalVariogram);
    EXPECT_NE(result.GetKernel().GetRange(), model.GetKernel().GetRange());
    ++fallbacks;
  }
  EXPECT_GT(fallbacks, 0);
  EXPECT_GT(refused, 0);
  EXPECT_TRUE(model.TrainFixed(model.GetKernel()));
  for (const Sample& query : MakeSamples(40, 501))
    EXPECT_THAT(Texts(QVErrorLevel::Warning, [&] { model.Predict(query.point); }), IsEmpty());
}

// Unmeasured neighbours stay out of the local variogram, and the one pair left is one bin: too few
// to refit a ranked kernel, enough for the last stage, where its distance becomes the range.
TEST(LocalKriging, FallsBackToLocalKernels) {
  Model model = MakeModel(Kind::Ordinary, LocalOptions(6), FunctionDistance(&Steep));
  for (const Sample& sample : MakeSamples(60, 1)) model.AddTraining(sample.point, sample.value);
  model.AddTraining({2.5, 0.5}, 1.0);
  model.AddTraining({2.55, 0.5}, 2.0);
  for (const Point& point : {Point{2.2, 0.2}, Point{2.8, 0.2}, Point{2.2, 0.8}, Point{2.8, 0.8}})
    model.AddUnmeasuredTraining(point, 3.0);
  ASSERT_TRUE(model.Train());
  QVKrigeResult result;
  const auto warnings = Texts(QVErrorLevel::Warning, [&] {
    result = model.GetKrigeResult({2.525, 0.6});
  });
  ASSERT_TRUE(result.Valid());
  ASSERT_FALSE(warnings.empty());
  EXPECT_EQ(warnings.back(), kLocalKernels);
  EXPECT_THAT(result.GetKernel().GetRange(), IsCloseTo(std::pow(0.05, 8), 1e-9));
}

/// Every qualifying pair, by the definition.
std::vector<std::pair<std::size_t, std::size_t>> ListPairs(const std::vector<bool>& unmeasured,
                                                           bool include) {
  std::vector<std::pair<std::size_t, std::size_t>> pairs;
  for (std::size_t i = 0; i < unmeasured.size(); ++i)
    for (std::size_t j = i + 1; j < unmeasured.size(); ++j)
      if (include ? !(unmeasured[i] && unmeasured[j]) : !(unmeasured[i] || unmeasured[j]))
        pairs.emplace_back(i, j);
  return pairs;
}

TEST(LocalPairs, CacheAndSamplerHoldEveryQualifyingPair) {
  const std::vector<bool> unmeasured = {false, true, false, false, true, true, false, true};
  for (const bool include : {false, true}) {
    const auto expected = ListPairs(unmeasured, include);
    QVKrigePairCache cache(100, include);
    for (std::size_t i = 0; i < unmeasured.size(); ++i)
      cache.Add(unmeasured[i], [i](std::size_t j) { return static_cast<double>(100 * i + j); });
    std::vector<std::pair<std::size_t, std::size_t>> visited;
    cache.ForEachPair([&](std::size_t later, std::size_t earlier, double distance) {
      visited.emplace_back(earlier, later);
      EXPECT_EQ(distance, static_cast<double>(100 * later + earlier));
      EXPECT_EQ(*cache.Find(later, earlier), distance);
      EXPECT_EQ(*cache.Find(earlier, later), distance);
    });
    EXPECT_THAT(visited, testing::UnorderedElementsAreArray(expected));
    EXPECT_EQ(cache.Find(1, 4), nullptr);

    const QVKrigePairSampler sampler(unmeasured, include, 100);
    EXPECT_EQ(sampler.GetNumCandidates(), expected.size());
    EXPECT_EQ(sampler.Draw(), expected);
  }
}

TEST(LocalPairs, TheCacheIsGivenUpBeyondItsLimit) {
  for (const std::size_t limit : {6u, 5u}) {
    QVKrigePairCache cache(limit, false);
    for (int i = 0; i < 4; ++i) cache.Add(false, [](std::size_t) { return 1.0; });
    EXPECT_EQ(cache.IsGivenUp(), limit == 5u);
    EXPECT_EQ(cache.Find(2, 1) == nullptr, limit == 5u);
  }
}

// Each of 44850 - 435 pairs is drawn with the same probability: totals by first and by second
// element stay within five standard deviations, and so does the number of adjacent draws.
TEST(LocalPairs, TheSampleIsUniformAndTheSameOnEveryRun) {
  std::vector<bool> unmeasured(300, false);
  for (std::size_t i = 0; i < 300; i += 10) unmeasured[i] = true;
  const QVKrigePairSampler sampler(unmeasured, true, 9000);
  const auto all = ListPairs(unmeasured, true);
  ASSERT_EQ(sampler.GetNumCandidates(), all.size());
  const double p = 9000.0 / static_cast<double>(all.size());
  EXPECT_THAT(sampler.GetFraction(), IsCloseTo(p, 1e-6));
  const auto drawn = sampler.Draw();
  EXPECT_EQ(drawn, sampler.Draw());
  EXPECT_TRUE(std::includes(all.begin(), all.end(), drawn.begin(), drawn.end()));
  EXPECT_TRUE(std::adjacent_find(drawn.begin(), drawn.end()) == drawn.end());

  const auto expectBinomial = [](double count, double trials, double chance) {
    EXPECT_NEAR(count, trials * chance, 5.0 * std::sqrt(trials * chance * (1.0 - chance)) + 1.0);
  };
  expectBinomial(static_cast<double>(drawn.size()), static_cast<double>(all.size()), p);
  std::vector<double> candidates(300), draws(300);
  for (const auto& [i, j] : all) candidates[i] += 1.0, candidates[j] += 1.0;
  for (const auto& [i, j] : drawn) draws[i] += 1.0, draws[j] += 1.0;
  for (std::size_t i = 0; i < 300; ++i) expectBinomial(draws[i], candidates[i], p);
  double adjacent = 0.0;
  for (std::size_t k = 1; k < drawn.size(); ++k)
    adjacent += drawn[k].first == drawn[k - 1].first && drawn[k].second == drawn[k - 1].second + 1;
  expectBinomial(adjacent, static_cast<double>(all.size()), p * p);
}

TEST(LocalPairs, NearestAreOrderedByDistanceThenIndex) {
  const std::vector<double> distances = {2.0, 1.0, 0.0, 1.0, 3.0, 1.0};
  const auto indices = [&](std::size_t count, bool leaveOut) {
    std::vector<std::size_t> result;
    for (const QVNeighbour& candidate : QVSelectNearest(distances, count, leaveOut))
      result.push_back(candidate.index);
    return result;
  };
  EXPECT_THAT(indices(3, false), ElementsAre(2, 1, 3));
  EXPECT_THAT(indices(3, true), ElementsAre(1, 3, 5));
  EXPECT_THAT(indices(9, false), ElementsAre(2, 1, 3, 5, 0, 4));
  EXPECT_THAT(indices(0, false), IsEmpty());
}

// Many elements, where a bound from a sample comes first: good, misleading, and with ties.
TEST(LocalPairs, NearestOfManyAgreeWithASort) {
  std::mt19937 engine(25);
  for (int shape = 0; shape < 3; ++shape) {
    std::vector<double> distances(5000);
    for (std::size_t i = 0; i < distances.size(); ++i) {
      const double uniform = std::uniform_real_distribution<double>()(engine);
      distances[i] = shape == 0   ? uniform
                     : shape == 1 ? (i % 16 == 0 ? 0.0 : 1.0 + uniform)
                                  : std::floor(20.0 * uniform);
    }
    std::vector<std::size_t> order(distances.size());
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(),
                     [&](std::size_t a, std::size_t b) { return distances[a] < distances[b]; });
    for (const bool leaveOut : {false, true}) {
      if (leaveOut) {
        const auto isZero = [&](std::size_t i) { return distances[i] == 0.0; };
        order.erase(std::remove_if(order.begin(), order.end(), isZero), order.end());
      }
      for (const std::size_t count : {1u, 100u, 320u, 2000u}) {
        const auto nearest = QVSelectNearest(distances, count, leaveOut);
        ASSERT_EQ(nearest.size(), count);
        for (std::size_t k = 0; k < count; ++k) ASSERT_EQ(nearest[k].index, order[k]);
      }
    }
  }
}

}  // namespace
}  // namespace QVStats
