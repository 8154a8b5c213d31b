#include "stats/api/krige_kernels.h"

#include <gmock/gmock.h>

#include <cmath>
#include <functional>
#include <memory>
#include <vector>

#include "platform/system/error_handler.h"
#include "stats/api/krige_options.h"
#include "tests/support/matchers.h"

namespace QVStats {
namespace {

using QVSystem::QVErrorLevel;
using QVSystem::QVScopedRecordingSink;

constexpr double kLargest = std::numeric_limits<double>::max();

QVKrigeKernel WithParameters(QVKrigeKernel kernel, double range, double sill, double nugget) {
  kernel.SetRange(range);
  kernel.SetSill(sill);
  kernel.SetNugget(nugget);
  return kernel;
}

/// The candidates and the one class that is not among them.
std::vector<QVKrigeKernel> GetAllKernels() {
  std::vector<QVKrigeKernel> kernels;
  for (const QVKrigeKernelBase& kernel : QVGetKrigeKernels()) kernels.emplace_back(kernel);
  kernels.emplace_back(QVKrigeReverseGaussianKernel(2.5));
  return kernels;
}

// Range 2, sill 5, nugget 1, so that each value is 1 + 4 times the formula in h/2, by hand.
TEST(KrigeKernels, ValuesFollowTheFormulas) {
  const double e = std::exp(1.0);
  const struct {
    QVKrigeKernel kernel;
    double h;
    double expected;
  } rows[] = {
      {QVKrigeKernel(QVKrigeKernelType::Linear), 0.5, 2.0},
      {QVKrigeKernel(QVKrigeKernelType::Exponential), 1.0, 5.0 - 4.0 / std::sqrt(10.0)},
      {QVKrigeKernel(QVKrigeKernelType::Gaussian), std::sqrt(2.0), 5.0 - 4.0 / std::sqrt(10.0)},
      {QVKrigeKernel(QVKrigeKernelType::Spherical), 1.0, 3.75},
      {QVKrigeKernel(QVKrigeKernelType::Cauchy), 2.0, 4.6},
      {QVKrigeKernel(QVKrigeKernelType::Cauchy), 1.0, 1.0 + 4.0 * 9.0 / 13.0},
      {QVKrigeStudentTKernel(3.0), 1.0, 1.0 + 4.0 * 9.0 / 17.0},
      {QVKrigeStudentTKernel(0.5), 8.0, 1.0 + 4.0 * 18.0 / 19.0},
      {QVKrigePowerKernel(0.5), 0.5, 3.0},
      {QVKrigePowerKernel(3.0), 1.0, 1.5},
      {QVKrigeReverseGaussianKernel(4.0), 1.0,
       1.0 + 4.0 * (1 / e - std::pow(e, -4)) / (1 - std::pow(e, -4))},
  };
  for (const auto& row : rows)
    EXPECT_THAT(WithParameters(row.kernel, 2.0, 5.0, 1.0).GetValue(row.h),
                IsCloseTo(row.expected, 1e-15))
        << row.kernel.GetName();
  // The constant is one unit above 9 on purpose.
  EXPECT_EQ(WithParameters(QVKrigeKernel(QVKrigeKernelType::Cauchy), 1.0, 1.0, 0.0).GetValue(1.0),
            1.0 - 1.0 / (1.0 + std::nextafter(9.0, 10.0)));
}

TEST(KrigeKernels, RiseFromTheNuggetTowardsTheSill) {
  for (QVKrigeKernel kernel : GetAllKernels()) {
    SCOPED_TRACE(kernel.GetName());
    kernel = WithParameters(kernel, 0.75, 3.0, 0.5);
    EXPECT_EQ(kernel.GetValue(0.0), 0.5);
    for (double h = 0.0; h < 3.0; h += 0.01)
      EXPECT_LE(kernel.GetValue(h), kernel.GetValue(h + 0.01) + 1e-15);
    EXPECT_THAT(kernel.GetValue(1e12), IsCloseTo(3.0, 1e-5));
    EXPECT_THAT(kernel.GetValue(std::nextafter(0.75, 1.0)),
                IsCloseTo(kernel.GetValue(0.75), 1e-14));

    kernel.SetRange(0.0);
    EXPECT_TRUE(std::isnan(kernel.GetValue(0.0)));
    EXPECT_EQ(kernel.GetValue(1e-3), 3.0);
  }
}

/// Doubles the sill that its base class computes with.
class DoubledSill : public QVKrigeExponentialKernel {
 public:
  double GetSill() const override { return 2.0 * QVKrigeExponentialKernel::GetSill(); }
  DoubledSill* CreateCopy() const override { return new DoubledSill(*this); }
};

TEST(KrigeKernels, CovariancesInBulkAreThoseOneByOne) {
  std::vector<QVKrigeKernel> kernels = GetAllKernels();
  kernels.emplace_back(QVKrigePowerKernel(0.7));
  kernels.emplace_back(QVKrigeStudentTKernel(1.3));
  kernels.emplace_back(DoubledSill());
  EXPECT_EQ(kernels.back().GetValue(1e9), 2.0);
  std::vector<double> distances = {0.0, 1e-30, 1e-9};
  for (int i = 1; i <= 200; ++i) distances.push_back(0.013 * i);
  for (QVKrigeKernel& kernel : kernels) {
    SCOPED_TRACE(kernel.GetName());
    kernel = WithParameters(kernel, 0.8, 1.7, 0.3);
    std::vector<double> covariances = distances;
    kernel.GetCovariances(covariances.data(), covariances.data(), covariances.size());
    for (std::size_t i = 0; i < distances.size(); ++i)
      EXPECT_NEAR(covariances[i], kernel.GetSill() - kernel.GetValue(distances[i]), 4.5e-16)
          << distances[i];
  }
}

TEST(KrigeKernels, OnlyRoundingCountsAsAZeroCovariance) {
  EXPECT_EQ(QVGetKrigeCovariance(1.0, 1.0 + 4e-16), 0.0);
  EXPECT_LT(QVGetKrigeCovariance(1.0, 1.0 + 1e-14), 0.0);
  EXPECT_EQ(QVGetKrigeCovariance(2.0, 0.5), 1.5);
}

TEST(KrigeKernels, CandidatesStandInTheirOrder) {
  std::vector<std::string> names;
  for (const QVKrigeKernelBase& kernel : QVGetKrigeKernels()) names.push_back(kernel.GetName());
  EXPECT_THAT(names,
              testing::ElementsAre("Linear", "Exponential", "Gaussian", "Spherical", "Cauchy",
                                   "StudentT(0.500000000000)", "StudentT(1.000000000000)",
                                   "StudentT(3.000000000000)", "StudentT(4.000000000000)",
                                   "Power(0.250)", "Power(0.333)", "Power(0.500)", "Power(1.500)",
                                   "Power(2.000)", "Power(3.000)", "Power(4.000)"));
  EXPECT_EQ(QVKrigeReverseGaussianKernel(2.0).GetName(), "Reverse Gaussian(2.000)");
}

TEST(KrigeKernels, ReportWhatTheyRefuse) {
  QVScopedRecordingSink sink;
  EXPECT_EQ(QVKrigeKernel(7).GetName(), "Linear");
  EXPECT_THAT(sink.GetTexts(QVErrorLevel::Warning),
              testing::ElementsAre("Invalid QVKrigeKernelType (7) passed to QVKrigeKernel "
                                   "constructor, defaulting to Linear kernel"));
  QVKrigeKernel kernel(QVKrigeKernelType::Gaussian);
  kernel.SetRange(0.0);
  kernel.SetNugget(0.0);
  EXPECT_TRUE(sink.GetTexts(QVErrorLevel::Fatal).empty());
  kernel.SetSill(0.0);
  kernel.SetRange(-1.0);
  kernel.SetNugget(-1.0);
  EXPECT_THAT(sink.GetTexts(QVErrorLevel::Fatal),
              testing::AllOf(testing::SizeIs(3),
                             testing::Each(testing::HasSubstr("stats/krige_kernels_impl"))));
  EXPECT_EQ(kernel.GetSill(), 0.0);
}

QVVariogramImpl MakeVariogram(const std::vector<double>& distances,
                              const std::function<double(double)>& semivariance) {
  QVVariogramImpl variogram;
  for (const double d : distances) variogram.Push(d, semivariance(d));
  return variogram;
}

TEST(KernelFit, FewBinsAreTakenAsTheyAre) {
  QVKrigeKernel kernel(QVKrigeKernelType::Spherical);
  EXPECT_EQ(QVFitKernel(kernel, QVVariogram()), kLargest);
  EXPECT_EQ(kernel.GetRange(), 0.5);
  EXPECT_EQ(QVGetFitness(kernel, QVVariogram()), kLargest);

  QVVariogramImpl variogram;
  variogram.Push(0.3, 2.0);
  EXPECT_EQ(QVFitKernel(kernel, variogram), 0.0);
  EXPECT_THAT(std::vector<double>({kernel.GetRange(), kernel.GetSill(), kernel.GetNugget()}),
              testing::ElementsAre(0.3, 2.0, 0.0));

  // A line through (0, n) and (0.6, 4) meets (0.3, 3) at n = 2, which is 50 % of the sill.
  QVKrigeKernel line(QVKrigeKernelType::Linear);
  variogram = MakeVariogram({0.3, 0.6}, [](double d) { return 2.0 + d / 0.3; });
  EXPECT_LE(QVFitKernel(line, variogram), 1e-15);
  EXPECT_EQ(line.GetNugget(), 2.0);
  EXPECT_EQ(line.GetRange(), 0.6);
}

TEST(KernelFit, FindsTheParametersThatMadeTheVariogram) {
  for (const unsigned int type : {QVKrigeKernelType::Exponential, QVKrigeKernelType::Gaussian,
                                  QVKrigeKernelType::Spherical, QVKrigeKernelType::Cauchy}) {
    const QVKrigeKernel truth = WithParameters(QVKrigeKernel(type), 0.6, 1.5, 0.2);
    SCOPED_TRACE(truth.GetName());
    const QVVariogramImpl variogram = MakeVariogram({0.1, 0.2, 0.3, 0.4, 0.5, 0.6, 0.7, 0.8, 0.9},
                                                    [&](double d) { return truth.GetValue(d); });
    QVKrigeKernel kernel(type);
    const double error = QVFitKernel(kernel, variogram);
    EXPECT_LT(error, 0.005);
    EXPECT_EQ(error, QVGetFitness(kernel, variogram));
    EXPECT_NEAR(kernel.GetRange(), 0.6, 0.02);
    EXPECT_NEAR(kernel.GetSill(), 1.5, 0.02);
    EXPECT_NEAR(kernel.GetNugget(), 0.2, 0.02);
  }
}

// A quarter of ten bins is floor(2.5 + 0.5) = 3 bins; the others enter through their extremes only.
TEST(KernelFit, PartialFitLooksAtTheFirstBins) {
  const std::vector<double> values = {1, 2, 3.5, 4, 5, 6, 7, 8, 9, 10};
  const auto fit = [&](std::size_t changed) {
    QVVariogramImpl variogram;
    for (std::size_t i = 0; i < values.size(); ++i)
      variogram.Push(0.1 * static_cast<double>(i + 1), values[i] + (i == changed ? 0.25 : 0.0));
    QVKrigeLinearKernel kernel;
    return QVFitKernelPartial(kernel, variogram, 0.25);
  };
  const double unchanged = fit(values.size());
  EXPECT_EQ(fit(3), unchanged);
  EXPECT_NE(fit(2), unchanged);

  QVScopedRecordingSink sink;
  QVKrigeLinearKernel kernel;
  EXPECT_EQ(QVFitKernelPartial(kernel, MakeVariogram({1, 2}, [](double d) { return d; }), 0.0),
            kLargest);
  EXPECT_THAT(sink.GetTexts(QVErrorLevel::Warning),
              testing::Contains("QVGetFitness, fracPoints must be greater than zero (0.000000 "
                                "passed)"));
}

TEST(KernelFit, EndsQuietlyWhereNothingCanBeFitted) {
  QVScopedRecordingSink sink;
  for (std::size_t bins = 1; bins <= 5; ++bins) {
    QVVariogramImpl flat;
    QVVariogramImpl identical;
    for (std::size_t i = 0; i < bins; ++i) {
      flat.Push(0.1 * static_cast<double>(i + 1), 0.0);
      identical.Push(0.0, 1.0);
    }
    for (const QVVariogramImpl& variogram : {flat, identical})
      for (QVKrigeKernel kernel : GetAllKernels()) {
        EXPECT_EQ(QVFitKernel(kernel, variogram), kLargest);
        EXPECT_EQ(kernel.GetSill(), 1.0);
        EXPECT_EQ(QVGetExperimentalVariance(variogram), 0.0);
      }
  }
  EXPECT_TRUE(sink.GetRecords().empty());
}

TEST(KernelFit, ANaNIsFatalOnceAndEnds) {
  QVScopedRecordingSink sink;
  QVVariogramImpl variogram =
      MakeVariogram({0.1, 0.2, 0.3, std::nan("")}, [](double) { return 1.0; });
  QVKrigeKernel kernel(QVKrigeKernelType::Spherical);
  EXPECT_EQ(QVGetFitness(kernel, variogram), kLargest);
  EXPECT_THAT(sink.GetTexts(QVErrorLevel::Fatal),
              testing::ElementsAre(testing::HasSubstr("stats/variogram_impl")));
}

TEST(ExperimentalVariance, IsTheNuggetOfALineThroughTheFirstThird) {
  const QVVariogramImpl variogram =
      MakeVariogram({1, 2, 3, 4, 5, 6, 7, 8, 9}, [](double d) { return d < 4 ? 0.5 + d : 4.0; });
  EXPECT_NEAR(QVGetExperimentalVariance(variogram), 0.5, 0.02);
}

TEST(KrigeOptions, ConvertFromGlobalAndLocal) {
  const QVKrigeOptions global{QVGlobalKrigeOptions().SetIncludeUnmeasured(true)};
  EXPECT_EQ(global.GetNumLocal(), 0u);
  EXPECT_EQ(global.GetMaxVariogramSize(), 500000u);
  EXPECT_FALSE(global.GetPredictTraining());
  EXPECT_TRUE(global.GetIncludeUnmeasured());
  EXPECT_EQ(global.GetErrorValue(), kLargest);
  EXPECT_EQ(global.GetMissingIDValue(), 4294967295u);

  const QVKrigeOptions local{QVLocalKrigeOptions()
                                 .SetNumLocal(7)
                                 .SetMaxVariogramSize(9)
                                 .SetPredictTraining(true)
                                 .SetUniqueResponseMethod(QVKrigeUniqueResponseMethod::Max)};
  EXPECT_EQ(local.GetNumLocal(), 7u);
  EXPECT_EQ(local.GetMaxVariogramSize(), 9u);
  EXPECT_TRUE(local.GetPredictTraining());
  EXPECT_EQ(local.GetUniqueResponseMethod(), QVKrigeUniqueResponseMethod::Max);
}

TEST(KrigeOptions, RefuseAnUnknownUniqueResponseMethod) {
  QVScopedRecordingSink sink;
  QVKrigeOptions options;
  options.SetUniqueResponseMethod(2).SetUniqueResponseMethod(3);
  EXPECT_EQ(options.GetUniqueResponseMethod(), 2u);
  const QVLocalKrigeOptions local = QVLocalKrigeOptions().SetUniqueResponseMethod(3);
  EXPECT_EQ(local.GetUniqueResponseMethod(), 3u);
  EXPECT_EQ(QVKrigeOptions(local).GetUniqueResponseMethod(), 0u);
  EXPECT_THAT(sink.GetTexts(QVErrorLevel::Warning),
              testing::AllOf(testing::SizeIs(2),
                             testing::Each("QVKrigeOptions::SetUniqueResponseMethod.  3 is not a "
                                           "valid setting, ignorning.")));
}

}  // namespace
}  // namespace QVStats
