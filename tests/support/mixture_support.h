/// \file
/// \brief Public data sets, and diagnostic lines kept out of the way.
#ifndef QVSTATS_TESTS_SUPPORT_MIXTURE_SUPPORT_H
#define QVSTATS_TESTS_SUPPORT_MIXTURE_SUPPORT_H

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "platform/math/special_functions.h"
#include "platform/system/diagnostic_stream.h"
#include "platform/system/error_handler.h"
#include "stats/api/gaussian_mixture_model.h"

/// The numbers of a file with a header line, row after row. faithful.csv: eruptions and waiting
/// times of Old Faithful (Azzalini and Bowman, Appl. Stat. 39, 1990). galaxies.csv: velocities of
/// 82 galaxies in km/s (Roeder, J. Am. Stat. Assoc. 85, 1990, with the 78th as in R's MASS).
inline std::vector<double> ReadNumbers(const std::string& name) {
  std::ifstream file(QVSTATS_TEST_DATA "/" + name);
  EXPECT_TRUE(file) << name;
  std::string line;
  std::getline(file, line);
  std::vector<double> values;
  for (char separator; std::getline(file, line);) {
    std::istringstream fields(line);
    for (double value; fields >> value; fields >> separator) values.push_back(value);
  }
  return values;
}

/// Every `step`th value from `first` on.
inline std::vector<double> TakeEvery(const std::vector<double>& values, std::size_t first,
                                     std::size_t step) {
  std::vector<double> taken;
  for (std::size_t i = first; i < values.size(); i += step) taken.push_back(values[i]);
  return taken;
}

/// A test whose diagnostic lines and warnings are recorded.
class MixtureTest : public testing::Test {
 protected:
  std::ostringstream lines_;
  QVSystem::QVScopedRecordingSink warnings_;

 private:
  QVSystem::QVScopedDiagnosticStream redirection_{lines_};
};

namespace QVStats {

/// The textbook's bound (Bishop 2006, equation 10.70, in one dimension), from parameters alone:
/// with responsibilities that are optimal for the posterior, sum_n log sum_k rho_nk less the
/// divergences of the weights' and the components' posteriors from their priors.
inline double GetTextbookBound(const QVOneDimGaussMixModel& model,
                               const std::vector<double>& data) {
  using QVMath::QVDiGamma;
  using QVMath::QVlgamma;
  QVStatModelResult result(true);
  double divergence = 0.0;
  std::vector<QVOneDimGaussMixComponent> components;
  for (const QVOneDimGaussMixComponent& component : model.GetComponents()) {
    components.push_back(component);
    divergence += GetExpectedLogDirichletPosterior(result, component.GetComponentProbParams()) -
                  GetExpectedLogDirichletPrior(result, component.GetComponentProbParams());
    double m0, k0, a0, b0, m, k, a, b;
    component.GetBayesPriorGaussParams(m0, k0, a0, b0);
    component.GetBayesPosteriorGaussParams(m, k, a, b);
    divergence += 0.5 * (std::log(k / k0) + k0 / k - 1.0 + k0 * a / b * (m - m0) * (m - m0));
    divergence += (a - a0) * QVDiGamma(a) - QVlgamma(a) + QVlgamma(a0) + a0 * std::log(b / b0) +
                  a * (b0 - b) / b;
    components.back().EStepUpdateLogRelativeResponsibility(data);
  }
  double bound = 0.0;
  for (std::size_t n = 0; n < data.size(); ++n) {
    double sum = 0.0;
    for (const auto& component : components)
      sum += std::exp(component.EStepGetLogRelativeResponsibility(n));
    bound += std::log(sum);
  }
  return bound - divergence;
}

}  // namespace QVStats

#endif  // QVSTATS_TESTS_SUPPORT_MIXTURE_SUPPORT_H
