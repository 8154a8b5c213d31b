// What holds for every distribution and every fit of a mixture, tried with random parameters.
#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <random>

#include "stats/api/gaussian_mixture_model.h"
#include "stats/api/gaussian_mixture_multidim.h"
#include "stats/api/pdf.h"
#include "tests/support/matchers.h"
#include "tests/support/mixture_support.h"

namespace QVStats {
namespace {

using Engine = std::mt19937;

double Uniform(Engine& engine, double low, double high) {
  return std::uniform_real_distribution<double>(low, high)(engine);
}

/// Spread evenly in its logarithm.
double Positive(Engine& engine, double low, double high) {
  return std::exp(Uniform(engine, std::log(low), std::log(high)));
}

struct Family {
  const char* name;
  double tolerance;  ///< of |F(percentile at p) - p|
  QVUniVarPDF (*make)(Engine& engine, QVStatModelResult& result);
};

QVUniVarPDF MakeMixture(Engine& engine, QVStatModelResult& result) {
  const std::size_t size = 1 + engine() % 4;
  std::vector<unsigned int> types;
  std::vector<double> probabilities;
  std::vector<std::vector<double>> parameters;
  double left = 1.0;
  for (std::size_t k = 0; k < size; ++k) {
    probabilities.push_back(k + 1 == size ? left : left * Uniform(engine, 0.1, 0.9));
    left -= probabilities.back();
    const double location = Uniform(engine, -5.0, 5.0), precision = Positive(engine, 0.1, 10.0);
    const bool isGauss = engine() % 2 == 0;
    types.push_back(isGauss ? QVPDFType::UniVariateGaussian : QVPDFType::UnivariateStudentsT);
    parameters.push_back({location, precision});
    if (!isGauss) parameters.back().insert(parameters.back().begin(), Uniform(engine, 2.0, 20.0));
  }
  return QVUnivariateMixture("x", types, probabilities, parameters, result);
}

const Family kFamilies[] = {
    {"Gaussian", 1e-13,
     [](Engine& e, QVStatModelResult& result) {
       return QVUnivariateGaussian("x", Uniform(e, -100, 100), Positive(e, 1e-6, 1e6), result);
     }},
    {"StudentsT", 6e-10,
     [](Engine& e, QVStatModelResult& result) {
       return QVUnivariateStudentsT("x", Positive(e, 0.5, 200), Uniform(e, -10, 10),
                                    Positive(e, 1e-4, 1e4), result);
     }},
    {"Gamma", 1e-13,
     [](Engine& e, QVStatModelResult& result) {
       return QVGamma("x", Positive(e, 0.05, 200), Positive(e, 1e-3, 1e3), result);
     }},
    {"ChiSquare", 1e-13,
     [](Engine& e, QVStatModelResult& result) {
       return QVChiSquare("x", Positive(e, 0.1, 500), result);
     }},
    {"SnedecorsF", 1e-13,
     [](Engine& e, QVStatModelResult& result) {
       return QVSnedecorsF("x", Positive(e, 0.3, 300), Positive(e, 0.5, 300), result);
     }},
    {"Beta", 1e-13,
     [](Engine& e, QVStatModelResult& result) {
       return QVBeta("x", Positive(e, 0.1, 100), Positive(e, 0.1, 100), result);
     }},
    {"Gumbel", 1e-13,
     [](Engine& e, QVStatModelResult& result) {
       return QVGumbel("x", Uniform(e, -100, 100), Positive(e, 1e-2, 1e3), result);
     }},
    {"GeneralizedExtremeValue", 1e-12,
     [](Engine& e, QVStatModelResult& result) {
       const double shape = e() % 8 == 0 ? 0.0 : Uniform(e, -1.5, 1.5);
       return QVGeneralizedExtremeValue("x", Uniform(e, -10, 10), Positive(e, 1e-2, 1e2), shape,
                                        result);
     }},
    {"Mixture", 1e-13, MakeMixture},
};

class DistributionProperties : public testing::TestWithParam<Family> {
 protected:
  /// F(x) = p within the family's tolerance and the last digits of x.
  static void ExpectPercentile(const QVUniVarPDF& pdf, double p, double x) {
    QVStatModelResult result(true);
    const double digits = 8 * std::numeric_limits<double>::epsilon() * (1.0 + std::abs(x));
    const double below = pdf.GetCDF(x - digits, result, true);
    EXPECT_LE(result.IsSuccessful() ? below : 0.0, p + GetParam().tolerance) << x;
    result = true;
    const double above = pdf.GetCDF(x + digits, result, true);
    EXPECT_GE(result.IsSuccessful() ? above : 1.0, p - GetParam().tolerance) << x;
  }

  /// Calls `check` with distributions of random parameters.
  void ForEachDistribution(const std::function<void(const QVUniVarPDF&)>& check) {
    Engine engine(11);
    for (int i = 0; i < 60 && !HasFailure(); ++i) {
      QVStatModelResult result(true);
      const QVUniVarPDF pdf = GetParam().make(engine, result);
      ASSERT_TRUE(result.IsSuccessful()) << result.ReportStatResultDetails();
      SCOPED_TRACE(pdf.Print(20));
      check(pdf);
    }
  }
};
INSTANTIATE_TEST_SUITE_P(Families, DistributionProperties, testing::ValuesIn(kFamilies),
                         [](const auto& row) { return std::string(row.param.name); });

/// The percentiles of some probabilities, ascending; those that a search cannot reach are left out.
std::vector<std::pair<double, double>> GetPercentiles(const QVUniVarPDF& pdf) {
  std::vector<std::pair<double, double>> percentiles;
  for (const double p : {1e-9, 1e-4, 0.01, 0.1, 0.25, 0.5, 0.6, 0.9, 0.999, 1 - 1e-6}) {
    QVStatModelResult result(true);
    const double x = pdf.GetPercentile(p, result);
    if (result.IsSuccessful()) percentiles.emplace_back(p, x);
  }
  return percentiles;
}

TEST_P(DistributionProperties, PercentilesInvertTheDistributionFunction) {
  std::size_t numFound = 0;
  ForEachDistribution([&](const QVUniVarPDF& pdf) {
    double before = -std::numeric_limits<double>::infinity();
    for (const auto& [p, x] : GetPercentiles(pdf)) {
      ++numFound;
      QVStatModelResult result(true);
      ExpectPercentile(pdf, p, x);
      EXPECT_GE(x, before) << p;
      before = x;
      // The same number from the upper tail, whose probability is rounded here.
      const double upper = pdf.GetUpperTailPercentile(1.0 - p, result);
      ExpectPercentile(pdf, p, upper);
    }
  });
  // A search that cannot reach its tolerance in p, for want of digits in x, fails and says so.
  EXPECT_GT(numFound, 300u);
}

TEST_P(DistributionProperties, DistributionFunctionIsMonotone) {
  Engine engine(12);
  ForEachDistribution([&](const QVUniVarPDF& pdf) {
    QVStatModelResult result(true);
    const double low = pdf.GetPercentile(0.001, result);
    if (result.NotSuccessful()) return;
    const double high = pdf.GetPercentile(0.999, result);
    if (result.NotSuccessful()) return;
    std::vector<double> xs;
    for (int i = 0; i < 200; ++i) xs.push_back(Uniform(engine, low, high));
    // Neighbours in the last digits too.
    for (int i = 0; i < 50; ++i) xs.push_back(std::nextafter(xs[xs.size() - 1 - i % 3], high));
    std::sort(xs.begin(), xs.end());
    double before = 0.0;
    for (const double x : xs) {
      const double cdf = pdf.GetCDF(x, result, true);
      EXPECT_GE(cdf, before * (1 - 1e-12)) << x;
      EXPECT_LE(cdf, 1.0) << x;
      EXPECT_NEAR(pdf.GetSurvival(x, result, true), 1.0 - cdf, 1e-12) << x;
      before = std::max(before, cdf);
      const double density = pdf.GetDensity(x, result, true);
      EXPECT_GE(density, 0.0) << x;
      if (std::isfinite(density) && density > 1e-300) {
        EXPECT_NEAR(pdf.GetLogDensity(x, result, true), std::log(density),
                    1e-12 * (1.0 + std::abs(std::log(density))))
            << x;
      }
      ASSERT_TRUE(result.IsSuccessful()) << result.ReportStatResultDetails();
    }
  });
}

TEST_P(DistributionProperties, VectorsGiveTheSingleValues) {
  ForEachDistribution([&](const QVUniVarPDF& pdf) {
    std::vector<double> xs;
    for (const auto& [p, x] : GetPercentiles(pdf)) xs.push_back(x);
    const std::vector<double> ps = {0.003, 0.2, 0.5, 0.77, 0.998};
    const auto expect = [&](QVPDFFunction function, const std::vector<double>& arguments,
                            const std::function<double(double, QVStatModelResult&)>& single) {
      QVStatModelResult result(true);
      std::vector<double> values;
      pdf.GetValues(function, arguments, values, result, true);
      ASSERT_EQ(values.size(), arguments.size());
      bool eachSucceeded = true;
      for (std::size_t i = 0; i < values.size(); ++i) {
        QVStatModelResult one(true);
        EXPECT_THAT(values[i], IsCloseTo(single(arguments[i], one), 1e-12)) << arguments[i];
        eachSucceeded = eachSucceeded && one.IsSuccessful();
      }
      EXPECT_EQ(result.IsSuccessful(), eachSucceeded);
    };
    expect(QVPDFFunction::CDF, xs, [&](double x, auto& r) { return pdf.GetCDF(x, r, true); });
    expect(QVPDFFunction::Density, xs,
           [&](double x, auto& r) { return pdf.GetDensity(x, r, true); });
    expect(QVPDFFunction::Survival, xs,
           [&](double x, auto& r) { return pdf.GetSurvival(x, r, true); });
    expect(QVPDFFunction::LogDensity, xs,
           [&](double x, auto& r) { return pdf.GetLogDensity(x, r, true); });
    expect(QVPDFFunction::Percentile, ps,
           [&](double p, auto& r) { return pdf.GetPercentile(p, r); });
  });
}

/// Clusters of random number, place, width and size, and a few points far away.
std::vector<double> MakeClusters(Engine& engine) {
  std::vector<double> data;
  const std::size_t numClusters = 1 + engine() % 4;
  for (std::size_t c = 0; c < numClusters; ++c) {
    std::normal_distribution<double> normal(Uniform(engine, -20, 20), Positive(engine, 0.05, 5));
    for (std::size_t i = 5 + engine() % 60; i > 0; --i) data.push_back(normal(engine));
  }
  for (std::size_t i = engine() % 3; i > 0; --i) data.push_back(Uniform(engine, -100, 100));
  return data;
}

class MixtureProperties : public MixtureTest {};

TEST_F(MixtureProperties, LikelihoodNeverDecreases) {
  Engine engine(13);
  for (int i = 0; i < 60; ++i) {
    const std::vector<double> data = MakeClusters(engine);
    const std::size_t size = 2 + engine() % 3;
    std::vector<QVGaussMixParam> weights, gaussians;
    for (std::size_t k = 0; k < size; ++k) {
      weights.emplace_back(QVGaussMixParamType::FrequentistWeight, "w",
                           std::vector<std::string>{"pi"},
                           std::vector<double>{1.0 / static_cast<double>(size)});
      gaussians.emplace_back(QVGaussMixParamType::FrequentistGauss, "g",
                             std::vector<std::string>{"mean", "precision"},
                             std::vector<double>{Uniform(engine, -20, 20), 0.01});
    }
    QVOneDimGaussMixModel model("x", weights, gaussians, data);
    double before = -std::numeric_limits<double>::infinity();
    for (int cycle = 0; cycle < 40; ++cycle) {
      if (model.DoOneFastEMCycle().NotSuccessful()) break;  // a component took all or nothing
      std::vector<double> params;
      ASSERT_TRUE(model.GetModelParams(params).IsSuccessful());
      std::vector<double> probabilities, means, precisions;
      for (std::size_t k = 0; k < size; ++k) {
        probabilities.push_back(params[3 * k]);
        means.push_back(params[3 * k + 1]);
        precisions.push_back(params[3 * k + 2]);
      }
      // On a single point the likelihood has no bound, and no digits.
      if (*std::max_element(precisions.begin(), precisions.end()) > 1e9) break;
      double likelihood = 0.0;
      for (const double x : data) {
        double density = 0.0;
        for (std::size_t k = 0; k < size; ++k)
          density += probabilities[k] * std::sqrt(precisions[k] / 6.283185307179586) *
                     std::exp(-0.5 * precisions[k] * (x - means[k]) * (x - means[k]));
        likelihood += std::log(density);
      }
      EXPECT_GE(likelihood, before - 1e-9 * std::abs(before)) << i << ' ' << cycle;
      before = likelihood;
    }
  }
}

TEST_F(MixtureProperties, TextbookBoundNeverDecreases) {
  Engine engine(14);
  for (int i = 0; i < 40; ++i) {
    const std::vector<double> data = MakeClusters(engine);
    // A slice of a point or two has no scale to begin with.
    const std::size_t size = 1 + engine() % std::min<std::size_t>(5, data.size() / 4);
    QVOneDimGaussMixModel model =
        QVDirichletGaussGammaMixtureModel(size, "x", Positive(engine, 0.1, 10), data).GetModel();
    double before = -std::numeric_limits<double>::max();
    for (int cycle = 0; cycle < 30; ++cycle) {
      ASSERT_TRUE(model.DoOneFastEMCycle().IsSuccessful());
      const double bound = GetTextbookBound(model, data);
      EXPECT_GE(bound, before - 1e-9 * std::abs(before)) << i << ' ' << cycle;
      before = bound;
    }
  }
}

TEST_F(MixtureProperties, MultivariateBoundNeverDecreases) {
  Engine engine(15);
  for (int i = 0; i < 40; ++i) {
    const std::size_t d = 1 + engine() % 3;
    std::vector<std::string> names;
    for (std::size_t k = 0; k < d; ++k) names.push_back("x" + std::to_string(k));
    std::vector<double> data = MakeClusters(engine);
    while (data.size() < 12 || data.size() % d != 0) data.push_back(Uniform(engine, -20, 20));
    QVMultiDimGaussMixModel model(1 + engine() % 4, names, Positive(engine, 0.1, 10), data);
    ASSERT_TRUE(model.Valid());
    double before = -std::numeric_limits<double>::max();
    for (int cycle = 0; cycle < 40; ++cycle) {
      ASSERT_TRUE(model.DoOneEMCycle().IsSuccessful());
      QVStatModelResult result(true);
      const double bound = model.GetModelFitness(result);
      EXPECT_GE(bound, before - 1e-9 * std::abs(before)) << i << ' ' << cycle;
      before = bound;
    }
  }
}

}  // namespace
}  // namespace QVStats
