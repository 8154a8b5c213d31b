#include "stats/api/minimizer.h"

#include <gmock/gmock.h>

#include <cmath>
#include <functional>

#include "platform/opt/newton_opt.h"
#include "stats/api/stats_data_types.h"
#include "tests/support/matchers.h"

namespace QVStats {
namespace {

/// A function of one variable, counting its evaluations.
class Curve : public QVOpt::QVFunc0 {
 public:
  explicit Curve(std::function<double(double)> f) : f_(std::move(f)) {}
  unsigned int NumVar() const override { return 1; }
  double operator()(const double* x) override {
    ++evaluations;
    return f_(*x);
  }
  QVSystem::QVIter<double> GetFComponents(const double*) override { return {}; }

  int evaluations = 0;

 private:
  std::function<double(double)> f_;
};

bool Search(Curve& f, double trial, double limit, double& step, double& value) {
  QVGoldenSectionSearch search;
  search.SetUpperLimOnOneDimSteps(limit);
  const double x = 0.0;
  double direction = 1.0;
  step = trial;
  return search(1, &x, &direction, &value, &step, f);
}

TEST(Minimizer, VertexOfAParabola) {
  EXPECT_EQ(MinArgOfInterpolatingQuadratic(0, 1, 2, 1, 0, 1), 1.0);
  // Vertex of 2 (t - 0.3)^2 + 5 through three uneven points.
  const auto f = [](double t) { return 2 * (t - 0.3) * (t - 0.3) + 5; };
  EXPECT_THAT(MinArgOfInterpolatingQuadratic(-1, 0.5, 4, f(-1), f(0.5), f(4)),
              IsCloseTo(0.3, 1e-13));
}

struct SearchCase {
  const char* name;
  std::function<double(double)> f;
  double trial, limit, minimum;
};

TEST(Minimizer, GoldenSectionFindsTheMinimum) {
  const SearchCase cases[] = {
      {"parabola", [](double t) { return (t - 3) * (t - 3); }, 1.0, 1e4, 3.0},
      {"far minimum", [](double t) { return std::abs(t - 700.0); }, 0.01, 1e4, 700.0},
      {"close to the bound", [](double t) { return (t - 9.9) * (t - 9.9); }, 0.1, 10.0, 9.9},
      {"falls to the bound", [](double t) { return -t; }, 1.0, 50.0, 50.0},
      {"steep then flat", [](double t) { return t / 4 + 1 / (t + 0.1); }, 0.5, 1e4, 1.9},
  };
  for (const SearchCase& c : cases) {
    Curve f(c.f);
    double step = 0.0, value = 0.0;
    ASSERT_TRUE(Search(f, c.trial, c.limit, step, value)) << c.name;
    EXPECT_THAT(step, IsCloseTo(c.minimum, 1e-7)) << c.name;
    EXPECT_EQ(value, c.f(step)) << c.name;
    EXPECT_LT(f.evaluations, 120) << c.name;
  }
}

TEST(Minimizer, GoldenSectionRefusesWhatItCannotStartFrom) {
  Curve f([](double t) { return (t - 3) * (t - 3); });
  double step = 0.0, value = -7.0;
  EXPECT_FALSE(Search(f, 10.0, 10.0, step, value)) << "a trial step at the limit";
  EXPECT_FALSE(Search(f, 6.5, 1e4, step, value)) << "no descent at the trial step";
  EXPECT_EQ(step, 6.5);
  EXPECT_EQ(value, -7.0);
}

TEST(Minimizer, GoldenSectionThatDoesNotConvergeGivesTheBadDouble) {
  Curve f([](double t) { return (t - 3) * (t - 3); });
  QVGoldenSectionSearch search;
  search.SetMaxIterations(3);
  const double x = 0.0;
  double direction = 1.0, step = 1.0, value = 0.0;
  EXPECT_FALSE(search(1, &x, &direction, &value, &step, f));
  EXPECT_EQ(step, QVStatsBadData::BadDouble);
  EXPECT_EQ(value, QVStatsBadData::BadDouble);
}

TEST(Minimizer, BracketsEncloseALowerMiddle) {
  Curve f([](double t) { return std::cosh(t - 40.0); });
  const double x = 0.0, d = 1.0;
  for (const auto bracket : {QVBracketLineMin, QVBoundedArgBracketLineMin}) {
    double a, b, c;
    ASSERT_TRUE(bracket(a, b, c, 1, 0.5, &x, &d, f, 1000.0));
    EXPECT_TRUE(a < b && b < c);
    EXPECT_TRUE(f(&b) < f(&a) && f(&b) < f(&c));
  }
}

/// Rosenbrock's valley, f = 100 (y - x^2)^2 + (1 - x)^2, minimum 0 at (1, 1).
class Valley : public QVOpt::QVFunc2 {
 public:
  unsigned int NumVar() const override { return 2; }
  double operator()(const double* x) override {
    const double u = x[1] - x[0] * x[0], v = 1 - x[0];
    return 100 * u * u + v * v;
  }
  QVSystem::QVIter<double> GetFComponents(const double*) override { return {}; }
  double operator()(const double* x, double* g) override {
    const double u = x[1] - x[0] * x[0];
    g[0] = -400 * x[0] * u - 2 * (1 - x[0]);
    g[1] = 200 * u;
    return (*this)(x);
  }
  bool CheckVariablesValidity(const double* x) override { return x[0] > -2.0; }
  bool IsRedundant(const double*, const double*, double) const override { return false; }
  double operator()(const double* x, double* g, double* h) override {
    h[0] = 1200 * x[0] * x[0] - 400 * x[1] + 2;
    h[1] = h[2] = -400 * x[0];
    h[3] = 200;
    return (*this)(x, g);
  }
};

TEST(NewtonOpt, FollowsACurvedValleyToItsEnd) {
  Valley valley;
  QVOpt::QVNewtonOpt newton;
  newton.SetTolerance(1e-10);
  const double start[] = {-1.2, 1.0};
  double end[2];
  EXPECT_LT(newton(valley, start, end), 1e-20);
  EXPECT_EQ(newton.GetStatus(), QVOpt::QVNewtonStatus::Converged);
  EXPECT_NEAR(end[0], 1.0, 1e-10);
  EXPECT_NEAR(end[1], 1.0, 1e-10);
}

TEST(NewtonOpt, SaysHowItEnded) {
  class StopAtThird : public QVOpt::QVCheckpoint1 {
   public:
    bool operator()(unsigned int iteration, unsigned int, const double*, double,
                    const double*) override {
      return iteration < 3;
    }
  } stop;
  Valley valley;
  QVOpt::QVNewtonOpt newton;
  const double start[] = {-1.2, 1.0}, outside[] = {-3.0, 1.0};
  double end[2];
  newton(valley, &stop, start, end);
  EXPECT_EQ(newton.GetStatus(), QVOpt::QVNewtonStatus::StoppedByCheckpoint);
  EXPECT_EQ(newton.GetNumIterations(), 3u);
  newton.SetIterLimit(2);
  newton(valley, start, end);
  EXPECT_EQ(newton.GetStatus(), QVOpt::QVNewtonStatus::IterationLimit);
  newton(valley, outside, end);
  EXPECT_EQ(newton.GetStatus(), QVOpt::QVNewtonStatus::InvalidPoint);
}

}  // namespace
}  // namespace QVStats
