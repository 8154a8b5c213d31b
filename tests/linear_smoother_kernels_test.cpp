#include "stats/api/linear_smoother_kernels.h"

#include <gmock/gmock.h>

#include <cmath>
#include <vector>

#include "stats/api/stats_data_types.h"
#include "tests/support/matchers.h"

namespace QVStats {
namespace {

constexpr double kTop = 1.0000000000000022;  // 1 + 10 eps

// By the formulas; at |u| = 1 the box car alone is not 0.
TEST(KernelFunctions, ValuesAndEnds) {
  const struct {
    unsigned int type;
    double atHalf;
    double atOne;
  } rows[] = {
      {0, QVStatsBadData::BadDouble, QVStatsBadData::BadDouble},
      {1, 0.3520653267642995, 0.24197072451914337},  // the normal density, from tables
      {2, 0.5, 0.5},
      {3, 0.5625, 0.0},
      {4, 0.52734375, 0.0},
      {5, 0.5789448302469136, 0.0},  // 70/81 (7/8)^3
      {9, QVStatsBadData::BadDouble, QVStatsBadData::BadDouble},
  };
  for (const auto& row : rows) {
    const QVKernelFunction kernel(row.type);
    for (const double sign : {-1.0, 1.0}) {
      EXPECT_THAT(kernel(0.5 * sign), IsCloseTo(row.atHalf, 1e-15)) << row.type;
      EXPECT_THAT(kernel(sign), IsCloseTo(row.atOne, 1e-15)) << row.type;
    }
  }
}

TEST(KernelFunctions, NamesAndTypes) {
  EXPECT_EQ(QVGetKernelFunctionTypeFromName("Epachnikov"), 3u);
  EXPECT_EQ(QVGetKernelFunctionTypeFromName("Epachnikov or Quadratic Kernel Function"), 3u);
  EXPECT_EQ(QVGetKernelFunctionTypeFromName("Epanechnikov"), 0u);
  EXPECT_EQ(QVGetKernelFunctionTypeFromName(""), 0u);
  EXPECT_EQ(QVGetKernelFunctionNameFromType(6),
            "QVGetKernelFunctionNameFromType: argument out of Range.\nType must be less than 6");
  for (unsigned int type = 0; type < 6; ++type) {
    EXPECT_EQ(QVKernelFunction(type).GetTypeOfKernel(), type);
    EXPECT_EQ(QVGetKernelFunctionTypeFromName(QVGetKernelFunctionNameFromType(type)), type);
  }
}

// At s = 0.75 with p = 2 the distance is 1/2 (to 10 eps); values by hand.
TEST(SimilarityKernels, ValuesAtHalfDistance) {
  const double expected[] = {
      0.0,    std::exp(-0.25),           std::exp(-0.5), 0.75, 1.0, 0.5, 0.5625, 0.669921875, 1.0,
      0.5625, std::exp(-std::sqrt(0.5)), 0.3125};
  for (unsigned int type = 0; type < 12; ++type)
    EXPECT_THAT(QVSimilarityKernel(type)(0.75, 2.0), IsCloseTo(expected[type], 1e-13)) << type;
}

TEST(SimilarityKernels, Ends) {
  namespace Type = QVSimilarityKernelType;
  for (unsigned int type = 1; type < Type::NumTypes; ++type) {
    const QVSimilarityKernel kernel(type);
    EXPECT_EQ(kernel(1.1, 2.0), 0.0) << type;
    EXPECT_THAT(kernel(1.0, 2.0), IsCloseTo(1.0, 1e-6)) << type;
  }
  EXPECT_EQ(QVSimilarityKernel(Type::Linear)(0.5, 2.0), 0.0);
  EXPECT_EQ(QVSimilarityKernel(Type::BoxCar)(0.0, 1.0), 0.0);
  EXPECT_EQ(QVSimilarityKernel(Type::BoxCar)(2.3e-15, 1.0), 1.0);
  EXPECT_EQ(QVSimilarityKernel(Type::Quadratic)(0.5, -1.0), 0.0);
  EXPECT_EQ(QVSimilarityKernel(Type::Gaussian)(-0.1, 1.0), 0.0);
  EXPECT_EQ(QVSimilarityKernel(Type::Power)(0.5, 0.0), 0.0);
  EXPECT_EQ(QVSimilarityKernel(Type::SmoothBoxCar)(2e-15, 1.0), 0.0);
  EXPECT_THAT(QVSimilarityKernel(Type::SmoothBoxCar)(0.7, 0.3), IsCloseTo(0.5, 1e-12));
  EXPECT_THAT(QVSimilarityKernel(Type::SmoothBoxCar)(0.75, 0.3), IsCloseTo(10.0 / 11, 1e-12));
}

TEST(SimilarityKernels, BulkValuesAreTheSingleOnes) {
  std::vector<double> s;
  for (int i = -3; i < 260; ++i) s.push_back(i / 250.0);
  s.push_back(kTop);
  for (unsigned int type = 0; type < 12; ++type) {
    const QVSimilarityKernel kernel(type);
    const double p = std::abs(kernel.GetDefaultInitialParamVal());
    std::vector<double> values(s.size());
    kernel.GetValues(s.data(), s.size(), p, values.data());
    for (std::size_t i = 0; i < s.size(); ++i)
      ASSERT_THAT(values[i], IsCloseTo(kernel(s[i], p), 1e-15)) << type << " at " << s[i];
  }
}

TEST(SimilarityKernels, NamesTypesAndParameters) {
  EXPECT_EQ(QVGetSimilarityKernelType("Unknown"), 0u);
  EXPECT_EQ(QVGetSimilarityKernelName(12), "Unknown");
  EXPECT_EQ(QVGetSimilarityKernelType("ExponentialOfSqRoot"), 10u);
  for (unsigned int type = 1; type < 12; ++type) {
    const QVSimilarityKernel kernel(type);
    EXPECT_EQ(QVGetSimilarityKernelType(kernel.GetKernelName()), type);
    EXPECT_LE(kernel.GetMinimumAllowedParamVal(), kernel.GetDefaultInitialParamVal());
    EXPECT_GT(kernel.GetMaximumAllowedParamVal(), kernel.GetDefaultInitialParamVal());
  }
  EXPECT_EQ(QVSimilarityKernel(0).GetMaximumAllowedParamVal(), -1.0);
}

TEST(SimilarityKernels, PlotPoints) {
  const QVSimilarityKernel kernel(QVSimilarityKernelType::Linear);
  const QVMath::QVDataSeries series = kernel.GetKernelValues(1.0, 11);
  ASSERT_EQ(series.GetNumPoints(), 11u);
  EXPECT_THAT(series.GetPoint(3).GetX(), IsCloseTo(0.3, 1e-15));
  EXPECT_THAT(series.GetPoint(3).GetY(), IsCloseTo(0.3, 1e-14));
  EXPECT_EQ(kernel.GetKernelValues(1.0, 0).GetNumPoints(), 0u);
  EXPECT_TRUE(std::isnan(kernel.GetKernelValues(1.0, 1).GetPoint(0).GetX()));
}

}  // namespace
}  // namespace QVStats
