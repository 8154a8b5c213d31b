#include "platform/math/dense_kernels.h"

#include <gmock/gmock.h>

#include <Eigen/Cholesky>
#include <Eigen/Dense>
#include <Eigen/Eigenvalues>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

namespace QVMath {
namespace {

using Eigen::Index;
using Eigen::MatrixXd;
using Eigen::VectorXd;

constexpr double kEpsilon = std::numeric_limits<double>::epsilon();
/// Left where a routine must not write.
constexpr double kUntouched = 12345.0;

std::size_t Size(Index n) { return static_cast<std::size_t>(n); }

MatrixXd MakeRandom(Index rows, Index columns, unsigned int seed) {
  std::mt19937 engine(seed);
  std::normal_distribution<double> noise;
  MatrixXd a(rows, columns);
  for (double& element : a.reshaped()) element = noise(engine);
  return a;
}

MatrixXd MakePositiveDefinite(Index n) {
  const MatrixXd a = MakeRandom(n, n + 5, 3);
  return a * a.transpose() / static_cast<double>(n) + 0.1 * MatrixXd::Identity(n, n);
}

/// Every instruction set of this machine.
class DenseKernels : public testing::TestWithParam<QVDensePath> {
 protected:
  void SetUp() override {
    kernels_ = QVFindDenseKernels(GetParam());
    if (!kernels_) GTEST_SKIP() << "this machine lacks the instruction set";
  }

  /// The factor in the leading block of a larger matrix, its upper part as it was.
  static MatrixXd Embed(const MatrixXd& a) {
    MatrixXd large = MatrixXd::Constant(a.rows() + 3, a.cols(), kUntouched);
    large.topRows(a.rows()).triangularView<Eigen::Lower>() = a;
    return large;
  }

  const QVDenseKernels* kernels_ = nullptr;
};
constexpr const char* kPathNames[] = {"Plain", "Avx2", "Avx512"};
INSTANTIATE_TEST_SUITE_P(Paths, DenseKernels,
                         testing::Values(QVDensePath::Plain, QVDensePath::Avx2,
                                         QVDensePath::Avx512),
                         [](const auto& path) { return kPathNames[static_cast<int>(path.param)]; });

// Sizes around the register tiles, the base cases and the cache blocks.
constexpr Index kSizes[] = {1, 2, 3, 4, 5, 11, 12, 13, 23, 24, 25, 47, 64, 96, 97, 131, 200, 389};

TEST_P(DenseKernels, CholeskyLeavesASmallResidual) {
  for (const Index n : kSizes) {
    const MatrixXd a = MakePositiveDefinite(n);
    MatrixXd factor = Embed(a);
    ASSERT_TRUE(kernels_->cholesky(Size(n), factor.data(), Size(n + 3))) << n;
    const MatrixXd l = factor.topRows(n).triangularView<Eigen::Lower>();
    EXPECT_LE((l * l.transpose() - a).cwiseAbs().maxCoeff(),
              kEpsilon * static_cast<double>(n + 8) * a.diagonal().maxCoeff())
        << n;
    const MatrixXd reference = a.llt().matrixL();
    EXPECT_LE((l - reference).cwiseAbs().maxCoeff(), 1e-12) << n;
    EXPECT_EQ((factor.array() == kUntouched).count(), 3 * n + n * (n - 1) / 2) << n;
  }
}

TEST_P(DenseKernels, CholeskyRefusesWhatIsNotPositiveDefinite) {
  for (const Index n : {1, 5, 30, 150, 300})
    for (const double bad : {0.0, -1.0, std::nan("")}) {
      const Index where = 2 * n / 3;
      MatrixXd a = MakePositiveDefinite(n);
      a.row(where).setZero();
      a.col(where).setZero();
      a(where, where) = bad;
      EXPECT_FALSE(kernels_->cholesky(Size(n), a.data(), Size(n))) << n << " " << bad;
    }
  MatrixXd ones = MatrixXd::Ones(40, 40);
  EXPECT_FALSE(kernels_->cholesky(40, ones.data(), 40));
}

// Hilbert-like matrices, condition 1e13 at n = 10: the backward error must stay small all the same.
TEST_P(DenseKernels, CholeskyOfAnIllConditionedMatrix) {
  const Index n = 150;
  MatrixXd a(n, n);
  for (Index i = 0; i < n; ++i)
    for (Index j = 0; j < n; ++j)
      a(i, j) =
          std::exp(-0.5 * std::pow(0.3 * static_cast<double>(i - j), 2)) + (i == j ? 1e-12 : 0.0);
  MatrixXd factor = a;
  ASSERT_TRUE(kernels_->cholesky(Size(n), factor.data(), Size(n)));
  const MatrixXd l = factor.triangularView<Eigen::Lower>();
  EXPECT_LE((l * l.transpose() - a).cwiseAbs().maxCoeff(), 1e-14);
  VectorXd x = VectorXd::Ones(n);
  kernels_->solveLower(Size(n), l.data(), Size(n), 1, x.data(), Size(n));
  EXPECT_LE((l * x - VectorXd::Ones(n)).cwiseAbs().maxCoeff(),
            1e-14 * (l.cwiseAbs() * x.cwiseAbs()).maxCoeff());
}

TEST_P(DenseKernels, TriangularSolvesLeaveSmallResiduals) {
  for (const Index n : kSizes)
    for (const Index m : {1, 3, 4, 13, 50}) {
      const MatrixXd factor = Embed(MakePositiveDefinite(n).llt().matrixL());
      const MatrixXd l = factor.topRows(n).triangularView<Eigen::Lower>();
      MatrixXd b = MakeRandom(n + 2, m, 7);
      for (const bool transposed : {false, true}) {
        MatrixXd x = b;
        (transposed ? kernels_->solveLowerTransposed : kernels_->solveLower)(
            Size(n), factor.data(), Size(n + 3), Size(m), x.data(), Size(n + 2));
        const MatrixXd system = transposed ? MatrixXd(l.transpose()) : l;
        EXPECT_LE((system * x.topRows(n) - b.topRows(n)).cwiseAbs().maxCoeff(), 1e-12)
            << n << " " << m << " " << transposed;
        EXPECT_EQ(x.bottomRows(2), b.bottomRows(2));
        for (Index j = 0; j < m; ++j) {
          VectorXd alone = b.col(j);
          (transposed ? kernels_->solveLowerTransposed : kernels_->solveLower)(
              Size(n), factor.data(), Size(n + 3), 1, alone.data(), Size(n + 2));
          EXPECT_EQ(x.col(j).head(n), alone.head(n)) << "the bits of a vector in a block";
        }
      }
    }
}

TEST_P(DenseKernels, ProductsAreThoseOfEigen) {
  for (const Index m : {1, 5, 12, 40, 205})
    for (const Index n : {1, 4, 9, 200})
      for (const Index depth : {0, 1, 7, 193}) {
        // A by columns, B by rows and backwards.
        const MatrixXd a = MakeRandom(m + 1, depth, 11);
        const MatrixXd b = MakeRandom(depth, n, 12);
        MatrixXd c = MakeRandom(m + 2, n, 13);
        MatrixXd expected = c;
        expected.topRows(m) -= 0.5 * a.topRows(m) * b.rowwise().reverse();
        const double* lastColumn = b.data() + depth * (n - 1);
        kernels_->multiply(Size(m), Size(n), Size(depth), -0.5, {a.data(), 1, m + 1},
                           {lastColumn, -depth, 1}, c.data(), Size(m + 2));
        EXPECT_LE((c - expected).cwiseAbs().maxCoeff(), 1e-12) << m << " " << n << " " << depth;
      }
}

TEST_P(DenseKernels, RankUpdateWritesTheLowerTriangleAlone) {
  for (const Index n : {1, 3, 4, 6, 13, 20, 47, 48, 50, 210})
    for (const bool byColumns : {true, false}) {
      const Index depth = 70;
      const MatrixXd a = MakeRandom(n, depth, 21), rows = a.transpose();
      const QVDenseView view =
          byColumns ? QVDenseView{a.data(), 1, n} : QVDenseView{rows.data(), depth, 1};
      const VectorXd weights = MakeRandom(depth, 1, 22);
      MatrixXd c = MatrixXd::Constant(n, n, kUntouched), expected = c;
      c.triangularView<Eigen::Lower>().setZero();
      kernels_->rankUpdate(Size(n), Size(depth), weights.data(), view, c.data(), Size(n));
      kernels_->rankUpdate(Size(n), Size(depth), nullptr, view, c.data(), Size(n));
      expected.triangularView<Eigen::Lower>() =
          a * (weights.array() + 1.0).matrix().asDiagonal() * a.transpose();
      EXPECT_LE((c - expected).cwiseAbs().maxCoeff(), 1e-12) << n;
    }
}

TEST_P(DenseKernels, VectorProducts) {
  for (const Index n : {0, 1, 7, 33, 100})
    for (const Index m : {0, 1, 4, 6}) {
      const MatrixXd a = MakeRandom(n + 1, m, 5);
      const VectorXd x = MakeRandom(n, 1, 6), z = MakeRandom(m, 1, 7);
      VectorXd y = VectorXd::Ones(m), w = VectorXd::Ones(n);
      kernels_->multiplyTransposed(Size(n), Size(m), 0.5, a.data(), Size(n + 1), x.data(),
                                   y.data());
      kernels_->multiplyVector(Size(n), Size(m), -2.0, a.data(), Size(n + 1), z.data(), w.data());
      const MatrixXd top = a.topRows(n);
      EXPECT_TRUE(y.isApprox(VectorXd::Ones(m) + 0.5 * top.transpose() * x, 1e-13));
      EXPECT_TRUE(w.isApprox(VectorXd::Ones(n) - 2.0 * top * z, 1e-13));
      EXPECT_NEAR(kernels_->dot(Size(n), x.data(), w.data()), x.dot(w), 1e-12);
    }
}

/// The distance of a result from the exact value, in units in the last place of that value.
double GetUnitsOff(double value, long double exact) {
  const double rounded = static_cast<double>(exact);
  const double unit = std::nextafter(std::abs(rounded), INFINITY) - std::abs(rounded);
  return static_cast<double>(std::abs((static_cast<long double>(value) - exact) / unit));
}

// Against the 64-bit mantissa of long double.
TEST_P(DenseKernels, ExponentialAndLogarithmAreRightToOneUnit) {
  std::mt19937_64 engine(17);
  std::vector<double> x(100003);
  for (const double scale : {1e-3, 1.0, 30.0, 705.0}) {
    std::uniform_real_distribution<double> uniform(-scale, scale);
    for (double& value : x) value = uniform(engine);
    std::vector<double> y(x.size());
    kernels_->exp(x.size(), x.data(), y.data());
    double worstExp = 0.0, worstLog = 0.0;
    for (std::size_t i = 0; i < x.size(); ++i)
      worstExp = std::max(worstExp, GetUnitsOff(y[i], std::exp(static_cast<long double>(x[i]))));
    std::vector<double> z(y);
    kernels_->log(z.size(), z.data(), z.data());
    for (std::size_t i = 0; i < x.size(); ++i)
      worstLog = std::max(worstLog, GetUnitsOff(z[i], std::log(static_cast<long double>(y[i]))));
    EXPECT_LE(worstExp, 1.0) << scale;
    EXPECT_LE(worstLog, 1.0) << scale;
  }
}

TEST_P(DenseKernels, ExponentialAndLogarithmAtTheirLimits) {
  const double infinity = std::numeric_limits<double>::infinity();
  const std::vector<double> x = {0.0,    -0.0,   710.0,   infinity, -infinity, -745.0,
                                 -746.5, -720.0, -708.39, 709.78,   1.0,       std::nan("")};
  std::vector<double> y(x.size());
  kernels_->exp(x.size(), x.data(), y.data());
  for (std::size_t i = 0; i + 1 < x.size(); ++i) {
    const double expected = std::exp(x[i]);
    // Subnormal results are right to one of their own units.
    if (expected == y[i]) continue;
    EXPECT_NEAR(y[i], expected, std::max(4.95e-324, 2.3e-16 * expected)) << x[i];
  }
  EXPECT_TRUE(std::isnan(y.back()));

  const std::vector<double> u = {1.0, 0.0, infinity, 5e-324, 1e-310, 2.0, 0.5, -1.0, std::nan("")};
  std::vector<double> v(u.size());
  kernels_->log(u.size(), u.data(), v.data());
  for (std::size_t i = 0; i + 2 < u.size(); ++i) EXPECT_DOUBLE_EQ(v[i], std::log(u[i])) << u[i];
  EXPECT_TRUE(std::isnan(v[7]) && std::isnan(v[8]));
}

TEST_P(DenseKernels, ComplementaryErrorFunctionKeepsItsDigitsInTheTail) {
  std::vector<double> x, y;
  for (int i = -6000; i <= 26000; ++i) x.push_back(i * 0.00101);
  y.resize(x.size());
  kernels_->erfc(x.size(), x.data(), y.data());
  double worst = 0.0;
  for (std::size_t i = 0; i < x.size(); ++i)
    worst = std::max(worst, GetUnitsOff(y[i], std::erfc(static_cast<long double>(x[i]))));
  EXPECT_LE(worst, 4.0);
  const double infinity = std::numeric_limits<double>::infinity();
  const std::vector<double> limits = {0.0, infinity, -infinity, 1e300, -1e300, std::nan("")};
  std::vector<double> at(limits.size());
  kernels_->erfc(at.size(), limits.data(), at.data());
  at.pop_back();
  EXPECT_THAT(at, testing::ElementsAre(testing::DoubleEq(1.0), 0.0, 2.0, 0.0, 2.0));
  kernels_->erfc(1, &limits.back(), at.data());
  EXPECT_TRUE(std::isnan(at[0]));
}

TEST_P(DenseKernels, LogisticTermsKeepTheirDigitsOnBothSides) {
  for (const std::size_t n : {1, 16, 37, 64}) {
    std::vector<double> y(n), z(n), slopes(n), weights(n);
    long double sum = 0.0L;
    for (std::size_t i = 0; i < n; ++i) {
      y[i] = i % 3 == 0 ? -1.0 : 1.0;
      z[i] = std::pow(-1.3, static_cast<double>(i) - 12.0);
      sum += -std::log1p(std::exp(static_cast<long double>(-y[i] * z[i])));
    }
    const double total = static_cast<double>(sum);
    EXPECT_NEAR(kernels_->logisticTerms(n, y.data(), z.data(), slopes.data(), weights.data()),
                total, 4e-15 * std::abs(total))
        << n;
    for (std::size_t i = 0; i < n; ++i) {
      const long double t = y[i] * z[i], rest = 1 / (1 + std::exp(t));
      const auto weight = static_cast<double>(rest / (1 + std::exp(-t)));
      const double slope = y[i] * static_cast<double>(rest);
      EXPECT_NEAR(slopes[i], slope, 1e-15 * std::abs(slope) + 1e-307) << z[i];
      EXPECT_NEAR(weights[i], weight, 1e-15 * weight + 1e-307) << z[i];
    }
  }
  const double infinity = std::numeric_limits<double>::infinity(), y[] = {1.0, 1.0, -1.0};
  const double certain[] = {infinity, 800.0, -800.0}, wrong[] = {1.0, -infinity, 1.0};
  const double undefined[] = {1.0, std::nan(""), 1.0};
  double slopes[3], weights[3];
  EXPECT_EQ(kernels_->logisticTerms(3, y, certain, slopes, weights), 0.0);
  EXPECT_EQ(kernels_->logisticTerms(3, y, wrong, slopes, weights), -infinity);
  EXPECT_TRUE(std::isnan(kernels_->logisticTerms(3, y, undefined, slopes, weights)));
}

// The geometric series; what its 64 terms do not complete is NaN.
TEST_P(DenseKernels, SeriesAreCompleteOrNaN) {
  const std::vector<double> ones(64, 1.0);
  std::vector<double> x, y(1001), single(1);
  for (int i = 0; i <= 1000; ++i) x.push_back(i * 0.001);
  kernels_->sumSeries(ones.size(), ones.data(), x.size(), x.data(), y.data());
  for (std::size_t i = 0; i < x.size(); ++i) {
    if (x[i] > 0.55) {
      EXPECT_TRUE(std::isnan(y[i])) << x[i];
    } else if (x[i] < 0.5) {
      EXPECT_NEAR(y[i] * (1.0 - x[i]), 1.0, 4 * kEpsilon) << x[i];
    }
    kernels_->sumSeries(ones.size(), ones.data(), 1, &x[i], single.data());
    EXPECT_TRUE(single[0] == y[i] || std::isnan(y[i])) << "depends on its neighbours: " << x[i];
  }
  const double bad[] = {1e300, std::nan(""), 0.25};
  kernels_->sumSeries(ones.size(), ones.data(), 3, bad, y.data());
  EXPECT_TRUE(std::isnan(y[0]) && std::isnan(y[1]));
  EXPECT_NEAR(y[2], 4.0 / 3.0, kEpsilon);
}

MatrixXd MakeTridiagonal(const VectorXd& diagonal, const VectorXd& offDiagonal) {
  MatrixXd t = diagonal.asDiagonal();
  t.diagonal(1) = offDiagonal;
  t.diagonal(-1) = offDiagonal;
  return t;
}

// T = Q'AQ and z = Q'y with an orthogonal Q: the eigenvalues are those of A, and the moments
// z'T^k z are y'A^k y, which ties z to T.
TEST_P(DenseKernels, TridiagonalFormKeepsEigenvaluesAndMoments) {
  for (const Index n : {1, 2, 3, 5, 31, 32, 33, 34, 64, 65, 100, 163}) {
    MatrixXd a = MakeRandom(n, n, 31);
    a = (a + a.transpose()).eval() / std::sqrt(static_cast<double>(n));
    const VectorXd y = MakeRandom(n, 1, 32);
    MatrixXd work = Embed(a);
    VectorXd diagonal(n), offDiagonal(n - 1), z = y;
    kernels_->tridiagonalise(Size(n), work.data(), Size(n + 3), diagonal.data(), offDiagonal.data(),
                             z.data());
    EXPECT_EQ((work.array() == kUntouched).count(), 3 * n + n * (n - 1) / 2) << n;
    const MatrixXd t = MakeTridiagonal(diagonal, offDiagonal);
    VectorXd ay = y, tz = z;
    for (int k = 0; k <= 4; ++k) {
      EXPECT_NEAR(z.dot(tz), y.dot(ay), 1e-11 * y.squaredNorm()) << n << " " << k;
      ay = a * ay;
      tz = t * tz;
    }
    const VectorXd expected = a.selfadjointView<Eigen::Lower>().eigenvalues();
    EXPECT_TRUE(QVGetTridiagonalEigenvalues(Size(n), diagonal.data(), offDiagonal.data()));
    EXPECT_LE((diagonal - expected).cwiseAbs().maxCoeff(), 1e-13) << n;
  }
}

TEST_P(DenseKernels, TridiagonalFormOfADiagonalMatrix) {
  MatrixXd a = VectorXd::LinSpaced(40, 1.0, 40.0).asDiagonal();
  VectorXd diagonal(40), offDiagonal = VectorXd::Ones(39);
  kernels_->tridiagonalise(40, a.data(), 40, diagonal.data(), offDiagonal.data(), nullptr);
  EXPECT_EQ(diagonal, VectorXd::LinSpaced(40, 1.0, 40.0));
  EXPECT_TRUE(offDiagonal.isZero(0.0));
}

// 2 - 2 cos(k pi / (n + 1)) for the second difference; Wilkinson's matrix has pairs of eigenvalues
// that agree to all digits.
TEST(TridiagonalEigenvalues, OfMatricesWithKnownOnes) {
  for (const std::size_t n : {1u, 2u, 3u, 50u, 400u}) {
    std::vector<double> d(n, 2e100), e(n, -1e100);
    ASSERT_TRUE(QVGetTridiagonalEigenvalues(n, d.data(), e.data()));
    for (std::size_t k = 0; k < n; ++k) {
      const double angle = static_cast<double>(k + 1) * M_PI / static_cast<double>(n + 1);
      EXPECT_NEAR(d[k] * 1e-100, 2.0 - 2.0 * std::cos(angle), 1e-14) << n << " " << k;
    }
  }
  std::vector<double> d(21), e(20, 1.0);
  for (std::size_t i = 0; i < 21; ++i) d[i] = std::abs(10.0 - static_cast<double>(i));
  ASSERT_TRUE(QVGetTridiagonalEigenvalues(21, d.data(), e.data()));
  // J. H. Wilkinson, "The Algebraic Eigenvalue Problem", 1965, page 309: W21+.
  EXPECT_NEAR(d[20], 10.74619418290339, 1e-13);
  EXPECT_NEAR(d[19], 10.74619418290332, 1e-13);
  EXPECT_NEAR(d[0], -1.12544152211998, 1e-13);

  std::vector<double> zeros(5, 0.0), none(4, 0.0);
  EXPECT_TRUE(QVGetTridiagonalEigenvalues(5, zeros.data(), none.data()));
  EXPECT_EQ(zeros, std::vector<double>(5, 0.0));
  zeros[2] = std::nan("");
  EXPECT_FALSE(QVGetTridiagonalEigenvalues(5, zeros.data(), none.data()));
}

TEST(DenseDispatch, AlwaysHasAPath) {
  const QVDenseKernels* fastest = nullptr;
  for (const auto path : {QVDensePath::Plain, QVDensePath::Avx2, QVDensePath::Avx512})
    if (const QVDenseKernels* kernels = QVFindDenseKernels(path)) fastest = kernels;
  EXPECT_EQ(&QVGetDenseKernels(), fastest);
}

}  // namespace
}  // namespace QVMath
