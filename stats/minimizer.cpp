#include "stats/api/minimizer.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "stats/api/stats_data_types.h"

namespace QVStats {

namespace {

constexpr double kGoldenRatio = 1.618033988749895;
constexpr double kFirstGrowth = 2.618033988749895;     // 1 + the golden ratio
constexpr double kGoldenSection = 0.3819660112501051;  // 2 - the golden ratio
constexpr double kMagnificationLimit = 100.0;
constexpr int kMaxExpansions = 1000;

/// f(x + t d) as a function of t.
class LineFunction {
 public:
  LineFunction(unsigned int n, const double* x, const double* d, QVOpt::QVFunc0& f)
      : x_(x), d_(d), f_(f), point_(n) {}

  double operator()(double t) {
    for (std::size_t i = 0; i < point_.size(); ++i) point_[i] = x_[i] + t * d_[i];
    return f_(point_.data());
  }

 private:
  const double* x_;
  const double* d_;
  QVOpt::QVFunc0& f_;
  std::vector<double> point_;
};

/// A step with its function value.
struct Step {
  double t;
  double f;
};

Step Evaluate(LineFunction& f, double t) { return {t, f(t)}; }

/// Three steps a < b < c; a bracket once f(b) < f(c).
struct Triple {
  Step a, b, c;

  void Shift(const Step& next) {
    a = b;
    b = c;
    c = next;
  }
};

/// Goes downhill from (0, t) until the function rises or tMax is reached.
/// \return whether the function rose, that is, whether `s` is a bracket.
bool Descend(LineFunction& f, double t, double tMax, Triple& s) {
  s.a = Evaluate(f, 0.0);
  s.b = Evaluate(f, t);
  s.c = s.b;
  if (!(s.b.f < s.a.f) || !(t < tMax)) return false;
  s.c = Evaluate(f, std::min(kFirstGrowth * t, tMax));
  for (int expansion = 0; expansion < kMaxExpansions; ++expansion) {
    if (s.b.f < s.c.f) return true;
    if (!(s.c.t < tMax)) return false;
    const double limit = std::min(s.b.t + kMagnificationLimit * (s.c.t - s.b.t), tMax);
    const double vertex = MinArgOfInterpolatingQuadratic(s.a.t, s.b.t, s.c.t, s.a.f, s.b.f, s.c.f);
    if (vertex > s.b.t && vertex < s.c.t) {
      const Step u = Evaluate(f, vertex);
      if (u.f < s.c.f) {
        s = {s.b, u, s.c};
        return true;
      }
    } else if (vertex > s.c.t && vertex < limit) {
      s.Shift(Evaluate(f, vertex));
      if (s.b.f < s.c.f) return true;
    }
    s.Shift(Evaluate(f, std::min(s.c.t + kGoldenRatio * (s.c.t - s.b.t), tMax)));
  }
  return false;
}

/// Looks for a lower value between the last two steps of a descent that ended at tMax.
bool BracketBelowBound(LineFunction& f, Triple& s) {
  const Step inner = Evaluate(f, 0.5 * (s.b.t + s.c.t));
  if (!(inner.f < s.b.f && inner.f < s.c.f)) return false;
  s = {s.b, inner, s.c};
  return true;
}

bool DescendWithinBound(LineFunction& f, double t, double tMax, Triple& s) {
  if (Descend(f, t, tMax, s)) return true;
  return s.b.f < s.a.f && s.c.t == tMax && BracketBelowBound(f, s);
}

bool HandOut(bool found, const Triple& s, double& a, double& b, double& c) {
  a = s.a.t;
  b = s.b.t;
  c = s.c.t;
  return found;
}

/// Puts a second inner step into the larger part of the bracket.
void SplitLargerPart(LineFunction& f, const Triple& s, Step& x1, Step& x2) {
  if (s.c.t - s.b.t > s.b.t - s.a.t) {
    x1 = s.b;
    x2 = Evaluate(f, s.b.t + kGoldenSection * (s.c.t - s.b.t));
  } else {
    x1 = Evaluate(f, s.b.t - kGoldenSection * (s.b.t - s.a.t));
    x2 = s.b;
  }
}

/// \return whether the bracket became narrow enough; `best` is then the lower inner step.
bool Shrink(LineFunction& f, const Triple& s, double tolerance, std::size_t maxIterations,
            Step& best) {
  double a = s.a.t, c = s.c.t;
  Step x1, x2;
  SplitLargerPart(f, s, x1, x2);
  for (std::size_t iteration = 0; iteration < maxIterations; ++iteration) {
    if (std::abs(c - a) < tolerance * (std::abs(x1.t) + std::abs(x2.t))) {
      best = x1.f < x2.f ? x1 : x2;
      return true;
    }
    if (x2.f < x1.f) {
      a = x1.t;
      x1 = x2;
      x2 = Evaluate(f, x1.t + kGoldenSection * (c - x1.t));
    } else {
      c = x2.t;
      x2 = x1;
      x1 = Evaluate(f, x2.t - kGoldenSection * (x2.t - a));
    }
  }
  return false;
}

}  // namespace

double QVGetFunc0ValFromLineStep(double t, unsigned int n, const double* x, const double* d,
                                 QVOpt::QVFunc0& f) {
  return LineFunction(n, x, d, f)(t);
}

double MinArgOfInterpolatingQuadratic(double a, double b, double c, double fa, double fb,
                                      double fc) {
  constexpr double kTiny = 1e-20;
  const double p = (fc - fb) * (b - a);
  double q = (b - c) * (fb - fa) + p;
  if (std::abs(q) < kTiny) q = q > 0.0 ? kTiny : -kTiny;
  return b - ((c - b) * (c - b) * (fb - fa) + p * (b - a)) * 0.5 / q;
}

bool QVBracketLineMin(double& a, double& b, double& c, unsigned int n, double t, const double* x,
                      const double* d, QVOpt::QVFunc0& f, double tMax) {
  LineFunction line(n, x, d, f);
  Triple s;
  const bool found = Descend(line, t, tMax, s);
  return HandOut(found, s, a, b, c);
}

bool QVBoundedArgBracketLineMin(double& a, double& b, double& c, unsigned int n, double t,
                                const double* x, const double* d, QVOpt::QVFunc0& f, double tMax) {
  LineFunction line(n, x, d, f);
  Triple s;
  const bool found = DescendWithinBound(line, t, tMax, s);
  return HandOut(found, s, a, b, c);
}

bool QVGoldenSectionSearch::SetUpperLimOnOneDimSteps(double limit) {
  upperLimit_ = limit;
  return true;
}

bool QVGoldenSectionSearch::SetRelTolOnSolutionStepAccuracy(double tolerance) {
  tolerance_ = tolerance;
  return true;
}

bool QVGoldenSectionSearch::SetMaxIterations(std::size_t iterations) {
  maxIterations_ = iterations;
  return true;
}

QVGoldenSectionSearch* QVGoldenSectionSearch::CreateCopy() const {
  return new QVGoldenSectionSearch(*this);
}

bool QVGoldenSectionSearch::operator()(unsigned int n, const double* point, double* direction,
                                       double* value, double* step,
                                       QVOpt::QVFunc0& objective) const {
  if (!(*step < upperLimit_)) return false;
  LineFunction line(n, point, direction, objective);
  Triple s;
  Step best{QVStatsBadData::BadDouble, QVStatsBadData::BadDouble};
  bool found = false;
  if (DescendWithinBound(line, *step, upperLimit_, s)) {
    found = Shrink(line, s, tolerance_, maxIterations_, best);
  } else {
    if (!(s.b.f < s.a.f) || s.c.t != upperLimit_) return false;
    best = s.c;  // the function falls up to the bound
    found = true;
  }
  *step = best.t;
  *value = best.f;
  return found;
}

}  // namespace QVStats
