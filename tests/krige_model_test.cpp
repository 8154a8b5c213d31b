#include <gmock/gmock.h>

#include <Eigen/LU>
#include <cmath>
#include <limits>
#include <memory>
#include <numeric>

#include "tests/support/krige_support.h"
#include "tests/support/matchers.h"

namespace QVStats {
namespace {

using namespace QVKrigeTest;
using QVSystem::QVErrorLevel;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr double kMax = std::numeric_limits<double>::max();
const QVKrigeKernel kKernel = MakeKernel(QVKrigeKernelType::Exponential, 0.8, 2.0, 0.3);

/// Weights of the points, by the whole bordered matrix with full pivoting in long double.
std::vector<double> SolveDense(Kind kind, const std::vector<Sample>& samples, const Point& query) {
  using Matrix = Eigen::Matrix<long double, Eigen::Dynamic, Eigen::Dynamic>;
  const auto n = static_cast<Eigen::Index>(samples.size());
  const Eigen::Index b = kind == Kind::Simple ? 0 : kind == Kind::Ordinary ? 1 : 3;
  const auto border = [](const Point& p, Eigen::Index k) {
    return k == 0 ? 1.0 : p[k == 1 ? 0 : 1];
  };
  const auto covariance = [](const Point& p, const Point& q) {
    return kKernel.GetSill() - kKernel.GetValue(Euclid(p, q));
  };
  Matrix matrix = Matrix::Zero(n + b, n + b);
  Matrix right = Matrix::Zero(n + b, 1);
  for (Eigen::Index i = 0; i < n; ++i) {
    const Point& p = samples[static_cast<std::size_t>(i)].point;
    for (Eigen::Index j = 0; j < n; ++j)
      matrix(i, j) = covariance(p, samples[static_cast<std::size_t>(j)].point);
    for (Eigen::Index k = 0; k < b; ++k) matrix(i, n + k) = matrix(n + k, i) = border(p, k);
    right(i, 0) = covariance(query, p);
  }
  for (Eigen::Index k = 0; k < b; ++k) right(n + k, 0) = border(query, k);
  const Matrix solution = matrix.fullPivLu().solve(right);
  std::vector<double> weights;
  for (Eigen::Index i = 0; i < n; ++i) weights.push_back(static_cast<double>(solution(i, 0)));
  return weights;
}

class EveryKind : public testing::TestWithParam<Kind> {};
INSTANTIATE_TEST_SUITE_P(Kinds, EveryKind,
                         testing::Values(Kind::Simple, Kind::Ordinary, Kind::Universal));

TEST_P(EveryKind, AgreesWithTheDenseSystem) {
  const std::vector<Sample> samples = MakeSamples(60, 3);
  Model model = MakeModel(GetParam(), samples);
  ASSERT_TRUE(model.TrainFixed(kKernel));
  double mean = 0.0;
  if (GetParam() == Kind::Simple)
    for (const Sample& sample : samples) mean += sample.value / 60.0;
  for (const Sample& query : MakeSamples(5, 4)) {
    const std::vector<double> weights = SolveDense(GetParam(), samples, query.point);
    double response = mean;
    double variance = kKernel.GetSill();
    const QVKrigeResult result = model.GetKrigeResult(query.point);
    for (unsigned int i = 0; i < 60; ++i) {
      EXPECT_NEAR(result.GetWeight(i), weights[i], 1e-12);
      EXPECT_EQ(result.GetDistance(i), Euclid(query.point, samples[i].point));
      response += weights[i] * (samples[i].value - mean);
      variance -= weights[i] * (kKernel.GetSill() - kKernel.GetValue(result.GetDistance(i)));
    }
    EXPECT_THAT(result.GetBaselineResponse(), IsCloseTo(mean, 1e-14));
    EXPECT_THAT(QVCalculateResponse(result, kMax), IsCloseTo(response, 1e-12));
    EXPECT_THAT(QVCalculateVariance(result, kMax), IsCloseTo(variance, 1e-12));
    EXPECT_THAT(model.Predict(query.point), IsCloseTo(response, 1e-12));
    EXPECT_THAT(model.GetVariance(query.point), IsCloseTo(variance, 1e-12));
  }
}

// More queries than a block holds, one of them without properties, one at a training point.
TEST_P(EveryKind, BlocksGiveTheBitsOfSingleQueries) {
  Model model = MakeModel(GetParam(), MakeSamples(150, 5));
  ASSERT_TRUE(model.TrainFixed(kKernel));
  std::vector<Sample> queries = MakeSamples(250, 6);
  queries[3].point = MakeSamples(150, 5)[7].point;
  queries[20].point[0] = -0.1;
  std::vector<const Point*> points;
  for (const Sample& query : queries) points.push_back(&query.point);
  const std::vector<QVKrigeEstimate> estimates = model.GetEstimates(points);
  const std::vector<QVKrigeResult> results = model.GetKrigeResults(points);
  ASSERT_EQ(estimates.size(), points.size());
  for (std::size_t q = 0; q < points.size(); ++q) {
    EXPECT_EQ(estimates[q].response, model.Predict(*points[q]));
    EXPECT_EQ(estimates[q].variance, model.GetVariance(*points[q]));
    const QVKrigeResult single = model.GetKrigeResult(*points[q]);
    ASSERT_EQ(results[q].GetNumElements(), single.GetNumElements());
    for (unsigned int i = 0; i < single.GetNumElements(); ++i)
      EXPECT_EQ(results[q].GetWeight(i), single.GetWeight(i));
  }
  EXPECT_EQ(results[20].Valid(), GetParam() != Kind::Universal);
}

// The weights are solved for when the model has gone. What they sum to was known before.
TEST_P(EveryKind, ResultsOutliveTheirModel) {
  const std::vector<Sample> samples = MakeSamples(60, 31);
  const std::vector<Sample> queries = MakeSamples(7, 32);
  std::vector<const Point*> points;
  for (const Sample& query : queries) points.push_back(&query.point);
  std::vector<QVKrigeResult> results;
  {
    Model model = MakeModel(GetParam(), samples);
    ASSERT_TRUE(model.TrainFixed(kKernel));
    results = model.GetKrigeResults(points);
  }
  for (const QVKrigeResult& result : results) {
    ASSERT_TRUE(result.Valid());
    const double response = QVCalculateResponse(result, kMax);
    const double variance = QVCalculateVariance(result, kMax);
    QVKrigeResultImpl changed(static_cast<const QVKrigeResultImpl&>(result.GetBase()));
    changed.AddElement(0.5, 0.25, 8.0, false, 0, true);
    const double covariance = kKernel.GetSill() - kKernel.GetValue(0.5);
    EXPECT_EQ(changed.GetWeight(3), result.GetWeight(3));
    EXPECT_THAT(QVCalculateResponse(changed, kMax), IsCloseTo(response + 2.0, 1e-12));
    EXPECT_NEAR(QVCalculateVariance(changed, kMax), variance - 0.25 * covariance, 1e-12);
    EXPECT_EQ(QVCalculateResponse(result, kMax), response);
  }
}

TEST_P(EveryKind, IsExactAtTrainingPoints) {
  const std::vector<Sample> samples = MakeSamples(40, 7);
  for (const double nugget : {0.0, 0.3, 1e-20}) {
    Model model = MakeModel(GetParam(), samples);
    ASSERT_TRUE(model.TrainFixed(MakeKernel(QVKrigeKernelType::Exponential, 0.8, 2.0, nugget)));
    for (unsigned int i = 0; i < samples.size(); i += 7) {
      const QVKrigeResult result = model.GetKrigeResult(samples[i].point);
      for (unsigned int k = 0; k < samples.size(); ++k)
        EXPECT_EQ(result.GetWeight(k), k == i ? 1.0 : 0.0);
      EXPECT_DOUBLE_EQ(model.Predict(samples[i].point), samples[i].value);
      EXPECT_NEAR(model.GetVariance(samples[i].point), nugget, 1e-15);
      EXPECT_NEAR(QVCalculateVariance(result, kMax), nugget, 1e-15);
    }
  }
}

// Order of training, a linear map of the responses, and a constraint on the weights.
TEST_P(EveryKind, KeepsItsInvariants) {
  std::vector<Sample> samples = MakeSamples(80, 8);
  Model model = MakeModel(GetParam(), samples);
  QVKrigeKernel fitted = kKernel;
  ASSERT_TRUE(model.Train(fitted));
  std::vector<Sample> mapped = samples;
  for (Sample& sample : mapped) sample.value = 3.0 - 10.0 * sample.value;
  std::reverse(mapped.begin(), mapped.end());
  Model other = MakeModel(GetParam(), mapped);
  QVKrigeKernel otherFitted = kKernel;
  ASSERT_TRUE(other.Train(otherFitted));
  EXPECT_THAT(otherFitted.GetSill(), IsCloseTo(100.0 * fitted.GetSill(), 1e-9));
  for (const Sample& query : MakeSamples(10, 9)) {
    const QVKrigeResult result = model.GetKrigeResult(query.point);
    ASSERT_TRUE(result.Valid());
    double sum = 0.0, x = 0.0;
    for (unsigned int i = 0; i < result.GetNumElements(); ++i) {
      sum += result.GetWeight(i);
      x += result.GetWeight(i) * samples[i].point[0];
    }
    if (GetParam() != Kind::Simple) {
      EXPECT_THAT(sum, IsCloseTo(1.0, 1e-9));
    }
    if (GetParam() == Kind::Universal) {
      EXPECT_THAT(x, IsCloseTo(query.point[0], 1e-8));
    }
    EXPECT_THAT(other.Predict(query.point),
                IsCloseTo(3.0 - 10.0 * model.Predict(query.point), 1e-6));
    EXPECT_THAT(other.GetVariance(query.point),
                IsCloseTo(100.0 * model.GetVariance(query.point), 1e-6));
  }
}

TEST_P(EveryKind, OneTrainingElementPredictsItself) {
  if (GetParam() == Kind::Universal) return;  // three coefficients from one response
  Model model = MakeModel(GetParam(), {{{0.5, 0.5}, 4.0}});
  EXPECT_THAT(
      Texts(QVErrorLevel::Warning, [&] { EXPECT_FALSE(model.Train()); }),
      Contains("QVStandardKrigeImpl::Train(), unable to train.  Not enough training data to "
               "constuct variogram. (0 bins)"));
  ASSERT_TRUE(model.TrainFixed(kKernel));
  EXPECT_DOUBLE_EQ(model.Predict({0.9, 0.1}), 4.0);
}

TEST_P(EveryKind, ConstantResponsesEndWithAWarning) {
  std::vector<Sample> samples = MakeSamples(30, 10);
  for (Sample& sample : samples) sample.value = 1.25;
  Model model = MakeModel(GetParam(), samples);
  QVSystem::QVScopedRecordingSink sink;
  if (GetParam() != Kind::Universal) {  // residuals of a fit are rounding, not 0
    EXPECT_FALSE(model.Train());
    EXPECT_THAT(sink.GetTexts(QVErrorLevel::Warning),
                ElementsAre("QVStandardKrigeImpl::Train(), unable to train.  No kernel fits the "
                            "variogram"));
    EXPECT_EQ(model.Predict({0.5, 0.5}), kMax);
  } else {
    model.Train();
  }
  EXPECT_THAT(sink.GetTexts(QVErrorLevel::Fatal), IsEmpty());
}

TEST_P(EveryKind, CopiesOfOneElementAreOnePoint) {
  const QVKrigeOptions options = GlobalOptions().SetUniqueResponseMethod(2);
  std::vector<Sample> samples = MakeSamples(20, 11);
  Model reference = MakeModel(GetParam(), samples, options);
  Model model = MakeModel(GetParam(), options);
  for (const Sample& sample : samples) model.AddTraining(sample.point, sample.value);
  model.AddTrainingWithID(samples[4].point, samples[4].value - 1.0, 77);
  model.AddUnmeasuredTraining(samples[4].point, samples[4].value + 5.0);
  ASSERT_TRUE(reference.TrainFixed(kKernel) && model.TrainFixed(kKernel));
  const QVKrigeResult result = model.GetKrigeResult({0.4, 0.6});
  EXPECT_EQ(result.GetNumElements(), 20u);
  EXPECT_EQ(result.GetNumCopies(4), 3.0);
  EXPECT_EQ(result.GetID(4), 77u);
  EXPECT_EQ(result.GetID(3), 4294967295u);
  EXPECT_FALSE(result.GetResponseIsUnmeasured(4));
  EXPECT_EQ(result.GetResponse(4, 2), samples[4].value + 5.0);
  EXPECT_EQ(model.Predict({0.4, 0.6}), reference.Predict({0.4, 0.6}));
}

// Kriging the residuals of the generalised least squares fit and adding the fit back is the same.
TEST(UniversalKriging, RemovesALinearDriftExactly) {
  std::vector<Sample> samples = MakeSamples(50, 12);
  Model plain = MakeModel(Kind::Universal, samples);
  for (Sample& sample : samples)
    sample.value += 7.0 * sample.point[0] - 2.0 * sample.point[1] + 5.0;
  Model drifted = MakeModel(Kind::Universal, samples);
  ASSERT_TRUE(plain.TrainFixed(kKernel) && drifted.TrainFixed(kKernel));
  for (const Point& p : {Point{0.3, 0.3}, Point{2.0, 5.0}}) {
    const double drift = 7.0 * p[0] - 2.0 * p[1] + 5.0;
    EXPECT_THAT(drifted.Predict(p), IsCloseTo(plain.Predict(p) + drift, 1e-11));
  }
}

// A property that never changes depends on the constant: the Schur complement is singular, and the
// bordered factorisation decides.
TEST(UniversalKriging, SurvivesADependentProperty) {
  std::vector<Sample> samples = MakeSamples(30, 13);
  for (Sample& sample : samples) sample.point[1] = 0.0;
  Model universal = MakeModel(Kind::Universal, samples);
  ASSERT_TRUE(universal.TrainFixed(kKernel));
  Model single(
      QVCreateKrige<Point, Storage>(EuclideanDistance<2>(), Coordinates(1), GlobalOptions()));
  for (const Sample& sample : samples) single.AddTraining(sample.point, sample.value);
  ASSERT_TRUE(single.TrainFixed(kKernel));
  EXPECT_THAT(universal.Predict({0.45, 0.0}), IsCloseTo(single.Predict({0.45, 0.0}), 1e-8));
}

TEST(UniversalKriging, RefusesElementsWithoutProperties) {
  Model model = MakeModel(Kind::Universal, MakeSamples(20, 14));
  EXPECT_FALSE(model.AddTraining({-1.0, 0.0}, 1.0));
  ASSERT_TRUE(model.TrainFixed(kKernel));
  EXPECT_FALSE(model.GetKrigeResult({-1.0, 0.0}).Valid());
  EXPECT_EQ(model.Predict({-1.0, 0.0}), kMax);
  const double nan = std::numeric_limits<double>::quiet_NaN();
  // The bulk distance sees the NaN as well, so the query is refused before its weights are.
  EXPECT_THAT(Texts(QVErrorLevel::Fatal, [&] { model.Predict({0.5, nan}); }), SizeIs(1));
}

// The property alone is a NaN, not the distance.
TEST(UniversalKriging, APropertyThatIsNoNumberIsReported) {
  class BadBeyondTwo : public Coordinates {
   public:
    BadBeyondTwo() : Coordinates(1) {}
    double GetProperty(const Point& p, std::size_t) const override {
      return p[0] > 2.0 ? std::numeric_limits<double>::quiet_NaN() : p[0];
    }
    BadBeyondTwo* CreateCopy() const override { return new BadBeyondTwo(*this); }
  };
  Model model(
      QVCreateKrige<Point, Storage>(EuclideanDistance<2>(), BadBeyondTwo(), GlobalOptions()));
  for (const Sample& sample : MakeSamples(20, 27)) model.AddTraining(sample.point, sample.value);
  ASSERT_TRUE(model.TrainFixed(kKernel));
  EXPECT_THAT(Texts(QVErrorLevel::Warning,
                    [&] {
                      EXPECT_FALSE(model.GetKrigeResult({3.0, 0.0}).Valid());
                      EXPECT_EQ(model.Predict({3.0, 0.0}), kMax);
                    }),
              ElementsAre("Universal kriging failed, NaN weights",
                          "Universal kriging failed, NaN weights"));
  model.AddTraining({4.0, 0.0}, 1.0);
  EXPECT_THAT(Texts(QVErrorLevel::Fatal, [&] { EXPECT_FALSE(model.TrainFixed(kKernel)); }),
              SizeIs(1));
}

TEST(StandardKriging, SaysWhyItCannotTrain) {
  struct Row {
    Kind kind;
    const char* text;
  };
  for (const Row& row : {Row{Kind::Simple, "QVSimpleKrige"}, Row{Kind::Ordinary, "QVOrdinaryKrige"},
                         Row{Kind::Universal, "QVUniversalKrige"}})
    EXPECT_THAT(
        Texts(QVErrorLevel::Warning,
              [&] { EXPECT_FALSE(MakeModel(row.kind, GlobalOptions()).TrainFixed(kKernel)); }),
        ElementsAre(row.text + std::string("::TrainFixed(QVKrigeKernelBase), unable to "
                                           "train.  No training data")));
  Model empty = MakeModel(Kind::Ordinary, GlobalOptions());
  QVKrigeKernel kernel = kKernel;
  EXPECT_THAT(
      Texts(QVErrorLevel::Warning,
            [&] {
              EXPECT_FALSE(empty.Train(kernel));
              EXPECT_EQ(empty.GetKernel().GetName(), "Linear");
            }),
      ElementsAre(
          "QVStandardKrigeImpl::Train(QVKrigeKernelBase), unable to train.  No training data",
          "QVStandardKrigeImpl::Train(), unable to train.  No training data",
          "QVStandardKrigeImpl::GetKernel failed to get kernel because Train failed"));
  Model two = MakeModel(Kind::Ordinary, MakeSamples(2, 15));
  EXPECT_THAT(Texts(QVErrorLevel::Warning, [&] { EXPECT_FALSE(two.Train(kernel)); }),
              ElementsAre("QVStandardKrigeImpl::Train(QVKrigeKernelBase), unable to train. Not "
                          "enough training data to constuct variogram"));
  Model one = MakeModel(Kind::Ordinary, MakeSamples(1, 15));
  EXPECT_THAT(Texts(QVErrorLevel::Warning,
                    [&] {
                      EXPECT_EQ(one.GetVariogram().GetNumBins(), 0u);
                      EXPECT_EQ(one.GetFullVariogram().GetNumBins(), 0u);
                    }),
              ElementsAre("Unable to construct variogram", "Unable to construct full variogram"));
}

// All covariances are 0 when the nugget is the sill.
TEST(StandardKriging, AFailedTrainingLeavesItUntrained) {
  Model model = MakeModel(Kind::Ordinary, MakeSamples(20, 16));
  ASSERT_TRUE(model.TrainFixed(kKernel));
  EXPECT_FALSE(model.TrainFixed(MakeKernel(QVKrigeKernelType::Exponential, 0.5, 1.0, 1.0)));
  EXPECT_NE(model.Predict({0.5, 0.5}), kMax);  // trains anew
  EXPECT_NE(model.GetKernel().GetSill(), 1.0);
}

// A range of 0 makes the covariance at distance 0 the share 0/0.
TEST(StandardKriging, CovariancesThatAreNoNumbersAreFatal) {
  Model model = MakeModel(Kind::Ordinary, MakeSamples(20, 26));
  const QVKrigeKernel kernel = MakeKernel(QVKrigeKernelType::Linear, 0.0, 1.0, 0.1);
  EXPECT_THAT(Texts(QVErrorLevel::Fatal, [&] { EXPECT_FALSE(model.TrainFixed(kernel)); }),
              SizeIs(1));
}

// A wave, whose covariance falls below 0.
class WaveKernel : public QVKrigeKernelImpl {
 public:
  std::string GetName() const override { return "Wave"; }
  double GetValue(double h) const override { return GetSill() * (1.0 - std::cos(3.0 * h)); }
  WaveKernel* CreateCopy() const override { return new WaveKernel(*this); }
};

TEST(StandardKriging, TheVarianceOfANegativeCovarianceIsFatal) {
  Model model = MakeModel(Kind::Simple, {{{0.0, 0.0}, 1.0}});
  ASSERT_TRUE(model.TrainFixed(WaveKernel()));
  const QVKrigeResult result = model.GetKrigeResult({1.0, 0.0});
  ASSERT_TRUE(result.Valid());
  EXPECT_THAT(Texts(QVErrorLevel::Fatal, [&] { QVCalculateVariance(result, kMax); }), SizeIs(1));
}

TEST(StandardKriging, ConstQuestionsLeaveAnUntrainedModelAlone) {
  int calls = 0;
  class Counting : public FunctionDistance {
   public:
    explicit Counting(int& count) : FunctionDistance(&Euclid), count_(count) {}
    double operator()(const Point& a, const Point& b) const override {
      ++count_;
      return FunctionDistance::operator()(a, b);
    }
    Counting* CreateCopy() const override { return new Counting(*this); }

   private:
    int& count_;
  };
  Model model = MakeModel(Kind::Ordinary, GlobalOptions(), Counting(calls));
  for (const Sample& sample : MakeSamples(30, 17)) model.AddTraining(sample.point, sample.value);
  EXPECT_EQ(calls, 30 * 29);  // each pair in both orientations
  calls = 0;
  const Model& constModel = model;
  const Point query = {0.2, 0.8};
  const double first = constModel.Predict(query);
  EXPECT_EQ(constModel.GetVariance(query),
            constModel.GetKrigeResult(query).Valid() ? model.GetVariance(query) : kMax);
  EXPECT_EQ(model.Predict(query), first);
  EXPECT_EQ(calls, 5 * 30);  // training elements are never compared again
}

TEST(StandardKriging, CopiesLiveOnTheirOwn) {
  Model model = MakeModel(Kind::Ordinary, MakeSamples(30, 18));
  ASSERT_TRUE(model.Train());
  const Point query = {0.2, 0.8};
  const double before = model.Predict(query);
  const Model copy = model;
  model.AddTraining(query, 100.0);
  EXPECT_EQ(model.Predict(query), 100.0);
  model.Clear();
  EXPECT_EQ(copy.Predict(query), before);
  EXPECT_EQ(copy.GetKrigeResult(query).GetNumElements(), 30u);
  EXPECT_THAT(Texts(QVErrorLevel::Warning, [&] { EXPECT_EQ(model.Predict(query), kMax); }),
              ElementsAre("QVStandardKrigeImpl::Train(), unable to train.  No training data"));
}

TEST(StandardKriging, VariogramsFollowTheTraining) {
  Model model = MakeModel(Kind::Ordinary, MakeSamples(30, 19));
  const QVVariogram variogram = model.GetVariogram();
  const QVFullVariogram full = model.GetFullVariogram();
  ASSERT_EQ(full.GetNumBins(), variogram.GetNumBins());
  unsigned int pairs = 0;
  for (unsigned int bin = 0; bin < full.GetNumBins(); ++bin) pairs += full.GetNumBinElements(bin);
  EXPECT_EQ(pairs, 435u);
  model.AddTraining({5.0, 5.0}, 0.0);
  const QVVariogram later = model.GetVariogram();
  EXPECT_GT(later.GetDistance(later.GetNumBins() - 1),
            variogram.GetDistance(variogram.GetNumBins() - 1));
}

TEST(StandardKriging, UnmeasuredElementsPredictButStayOutOfTheVariogram) {
  const std::vector<Sample> samples = MakeSamples(30, 20);
  for (const bool include : {false, true}) {
    Model model = MakeModel(Kind::Ordinary, GlobalOptions().SetIncludeUnmeasured(include));
    for (std::size_t i = 0; i < 30; ++i) {
      if (i < 20)
        model.AddTraining(samples[i].point, samples[i].value);
      else
        model.AddUnmeasuredTrainingWithID(samples[i].point, samples[i].value,
                                          static_cast<unsigned int>(i));
    }
    const QVFullVariogram full = model.GetFullVariogram();
    unsigned int pairs = 0;
    for (unsigned int bin = 0; bin < full.GetNumBins(); ++bin) pairs += full.GetNumBinElements(bin);
    EXPECT_EQ(pairs, include ? 435u - 45u : 190u);
    const QVKrigeResult result = model.GetKrigeResult({0.5, 0.5});
    ASSERT_EQ(result.GetNumElements(), 30u);
    EXPECT_TRUE(result.GetResponseIsUnmeasured(25));
    EXPECT_EQ(result.GetID(25), 25u);
  }
}

}  // namespace
}  // namespace QVStats
