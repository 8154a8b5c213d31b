#include "stats/api/matrix.h"

#include <gmock/gmock.h>

#include <Eigen/Dense>
#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <random>

#include "tests/support/matchers.h"

namespace QVStats {
namespace {

using Vector = std::vector<double>;
using Chain = std::vector<std::string>;
using RowMajor = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;
using testing::DoubleNear;
using testing::ElementsAre;
using testing::Pointwise;
namespace Failure = QVStatModelFailureType;

const double kNaN = std::numeric_limits<double>::quiet_NaN();

Eigen::Map<const RowMajor> AsEigen(std::size_t n, const Vector& matrix) {
  const auto size = static_cast<Eigen::Index>(n);
  return Eigen::Map<const RowMajor>(matrix.data(), size, size);
}

Vector RandomVector(std::size_t size, unsigned int seed) {
  std::mt19937 engine(seed);
  std::normal_distribution<double> normal;
  Vector values(size);
  for (double& value : values) value = normal(engine);
  return values;
}

/// B B' for an n x rank matrix B: of full rank it is positive definite.
Vector RandomGram(std::size_t n, std::size_t rank, unsigned int seed) {
  const Vector entries = RandomVector(n * rank, seed);
  const Eigen::Map<const RowMajor> b(entries.data(), static_cast<Eigen::Index>(n),
                                     static_cast<Eigen::Index>(rank));
  const RowMajor gram = b * b.transpose();
  return Vector(gram.data(), gram.data() + gram.size());
}

// Sizes on both sides of the lanes of a sum and of the first size that is worked on by blocks.
class MatrixOfSize : public testing::TestWithParam<std::size_t> {
 protected:
  const std::size_t n_ = GetParam();
  const Vector a_ = RandomVector(n_ * n_, 1);
  const Vector b_ = RandomVector(n_ * n_, 2);
  const Vector x_ = RandomVector(n_, 3);
  const Vector spd_ = RandomGram(n_, n_ + 5, 4);
};
INSTANTIATE_TEST_SUITE_P(Sizes, MatrixOfSize, testing::Values(2, 3, 5, 8, 17, 47, 48, 49, 65, 130));

TEST_P(MatrixOfSize, ProductsAgreeWithEigen) {
  const auto a = AsEigen(n_, a_), b = AsEigen(n_, b_);
  const Eigen::Map<const Eigen::VectorXd> x(x_.data(), a.rows());
  Vector product, transpose, y;
  double trace = 0.0, dot = 0.0;
  ASSERT_TRUE(QVMatrixTimesMatrix(n_, a_, b_, product).IsSuccessful());
  ASSERT_TRUE(QVTransposeMatrix(n_, a_, transpose).IsSuccessful());
  ASSERT_TRUE(QVMatrixTimesVector(n_, a_, x_, y).IsSuccessful());
  ASSERT_TRUE(QVTraceOfMatrixProduct(n_, a_, b_, trace).IsSuccessful());
  ASSERT_TRUE(QVDotProductOfVectors(n_, x_, y, dot).IsSuccessful());
  EXPECT_LT((AsEigen(n_, product) - a * b).norm(), 1e-14 * (a * b).norm());
  EXPECT_EQ(AsEigen(n_, transpose), a.transpose());
  EXPECT_NEAR(trace, (a * b).trace(), 1e-14 * a.norm() * b.norm());
  EXPECT_NEAR(dot, x.dot(a * x), 1e-14 * a.norm() * x.squaredNorm());
}

TEST_P(MatrixOfSize, CholeskyFactorReproducesTheMatrix) {
  Vector factor;
  Vector lower = spd_;
  for (std::size_t i = 0; i < n_; ++i)
    for (std::size_t j = i + 1; j < n_; ++j) lower[i * n_ + j] = kNaN;  // never read
  ASSERT_TRUE(QVCholeskyDecomposition(n_, lower, factor).IsSuccessful());
  const auto l = AsEigen(n_, factor), a = AsEigen(n_, spd_);
  EXPECT_LT((l * l.transpose() - a).norm(), 1e-15 * static_cast<double>(n_) * a.norm());
  EXPECT_TRUE(RowMajor(l.triangularView<Eigen::StrictlyUpper>()).isZero(0.0));
}

TEST_P(MatrixOfSize, SolvesAndInversesLeaveSmallResiduals) {
  Vector factor, inverse, factorInverse, x;
  double logDeterminant = 0.0;
  ASSERT_TRUE(QVCholeskyDecomposition(n_, spd_, factor).IsSuccessful());
  ASSERT_TRUE(QVInverseOfLowerTriangularMatrix(n_, factor, factorInverse).IsSuccessful());
  ASSERT_TRUE(QVInverseOfPosDefMatrix(n_, spd_, inverse).IsSuccessful());
  ASSERT_TRUE(QVSolveSymmetricEquationsViaLowerTriSquareRoot(n_, factor, x_, x).IsSuccessful());
  ASSERT_TRUE(QVLogDeterminantOfPosDefMatrix(n_, spd_, logDeterminant).IsSuccessful());
  const auto l = AsEigen(n_, factor), a = AsEigen(n_, spd_);
  const RowMajor identity = RowMajor::Identity(a.rows(), a.cols());
  const Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> eigen(a);
  const double condition = eigen.eigenvalues().tail(1)(0) / eigen.eigenvalues()(0);
  const double tolerance = 1e-15 * static_cast<double>(n_) * condition;
  EXPECT_LT((l * AsEigen(n_, factorInverse) - identity).norm(), tolerance);
  EXPECT_LT((a * AsEigen(n_, inverse) - identity).norm(), tolerance);
  EXPECT_EQ(AsEigen(n_, inverse), AsEigen(n_, inverse).transpose());
  Vector product;
  ASSERT_TRUE(QVMatrixTimesVector(n_, spd_, x, product).IsSuccessful());
  EXPECT_THAT(product, Pointwise(DoubleNear(tolerance), x_));
  EXPECT_NEAR(logDeterminant, eigen.eigenvalues().array().log().sum(), tolerance);
}

// A pivot that is negative in one row or another: the rows before it stay.
TEST_P(MatrixOfSize, CholeskyKeepsTheRowsBeforeTheFault) {
  Vector whole, factor;
  ASSERT_TRUE(QVCholeskyDecomposition(n_, spd_, whole).IsSuccessful());
  for (std::size_t fault = 0; fault < n_; fault += 1 + n_ / 16) {
    Vector singular = spd_;
    singular[fault * n_ + fault] = -1.0;
    EXPECT_THAT(QVCholeskyDecomposition(n_, singular, factor),
                FailedWith(Failure::SingularMatrix, "QVCholeskyDecomposition"));
    Vector expected = whole;
    std::fill(expected.begin() + static_cast<std::ptrdiff_t>(fault * n_), expected.end(), 0.0);
    EXPECT_THAT(factor, Pointwise(DoubleNear(1e-13 * static_cast<double>(n_)), expected));
  }
}

TEST_P(MatrixOfSize, SemidefiniteMatricesAreNonNegativeDefiniteOnly) {
  for (std::size_t rank = 1; rank < n_; rank += 1 + n_ / 5) {
    Vector matrix = RandomGram(n_, rank, 5);
    EXPECT_TRUE(QVMatrixIsNonNegDef(n_, matrix).IsSuccessful()) << "rank " << rank;
    matrix[n_ * n_ - 1] *= 0.99;  // one eigenvalue falls below zero
    EXPECT_THAT(QVMatrixIsNonNegDef(n_, matrix),
                FailedAlong(Failure::SingularMatrix,
                            (Chain{"QVCholeskyDecomposition", "QVMatrixIsNonNegDef"}), Chain{}))
        << "rank " << rank;
  }
}

TEST(Matrix, SmallCasesByHand) {
  Vector output;
  double number = 0.0;
  ASSERT_TRUE(QVCholeskyDecomposition(2, {4, 2, 2, 3}, output).IsSuccessful());
  EXPECT_THAT(output, ElementsAre(2, 0, 1, IsCloseTo(std::sqrt(2.0), 1e-15)));
  ASSERT_TRUE(QVVectorVectorTranspose(2, {3, -1}, output).IsSuccessful());
  EXPECT_THAT(output, ElementsAre(9, -3, -3, 1));
  ASSERT_TRUE(QVScalarTimesMatrixPlusDiagTerm(2, {1, 2, 3, 4}, 2, 10, output).IsSuccessful());
  EXPECT_THAT(output, ElementsAre(12, 4, 6, 18));
  ASSERT_TRUE(
      QVGetBlockSubMatrixOfMatrix(3, {1, 2, 3, 4, 5, 6, 7, 8, 9}, {2, 0}, output).IsSuccessful());
  EXPECT_THAT(output, ElementsAre(9, 7, 3, 1));
  ASSERT_TRUE(QVGetBlockSubMatrixOfMatrix(3, {1, 2, 3}, {2, 0}, output).IsSuccessful());
  EXPECT_THAT(output, ElementsAre(3, 1));
  ASSERT_TRUE(QVGetDiagonalElemOfMatrix(2, {1, 2, 3, 4}, 1, number).IsSuccessful());
  EXPECT_EQ(number, 4);
  output = {1, 2};
  ASSERT_TRUE(QVVectorSaxpy(2, 3, {10, 20}, output).IsSuccessful());
  EXPECT_THAT(output, ElementsAre(31, 62));
  ASSERT_TRUE(QVDifferenceBetweenVectors(2, output, {1, 2}, output).IsSuccessful());
  EXPECT_THAT(output, ElementsAre(30, 60));
  EXPECT_EQ(QVPrintVectorDoubles("w", {1, 2.5, 3}, 2), "Values of vector w\n1 2.5 ... (1 more)\n");
}

TEST(Matrix, ScalarAndDiagonalFormsKeepTheirForm) {
  Vector output;
  double number = 0.0;
  ASSERT_TRUE(QVLogDeterminantOfPosDefMatrix(3, {2}, number).IsSuccessful());
  EXPECT_THAT(number, IsCloseTo(3 * std::log(2.0), 1e-15));
  ASSERT_TRUE(QVInverseOfPosDefMatrix(3, {2}, output).IsSuccessful());
  EXPECT_THAT(output, ElementsAre(0.5));
  ASSERT_TRUE(QVSquareRootOfPosDefMatrix(3, {2}, output).IsSuccessful());
  EXPECT_THAT(output, ElementsAre(std::sqrt(2.0)));
  ASSERT_TRUE(QVInverseOfScalarMatrix({4}, output).IsSuccessful());
  EXPECT_THAT(output, ElementsAre(0.25));
  ASSERT_TRUE(QVInverseOfPosDefMatrix(2, {2, 4}, output).IsSuccessful());
  EXPECT_THAT(output, ElementsAre(0.5, 0.25));
  ASSERT_TRUE(QVSquareRootOfPosDefMatrix(2, {4, 9}, output).IsSuccessful());
  EXPECT_THAT(output, ElementsAre(2, 3));
  ASSERT_TRUE(QVLogDeterminantOfPosDefMatrix(2, {2, 4}, number).IsSuccessful());
  EXPECT_THAT(number, IsCloseTo(std::log(8.0), 1e-15));
}

// The outer product of a vector with itself, in units a million million apart.
TEST(Matrix, SemidefiniteTestIgnoresTheUnits) {
  const Vector v = {1e-6, 3, 2e6, -1};
  Vector matrix;
  ASSERT_TRUE(QVVectorVectorTranspose(4, v, matrix).IsSuccessful());
  EXPECT_TRUE(QVMatrixIsNonNegDef(4, matrix).IsSuccessful());
  EXPECT_TRUE(QVMatrixIsNonNegDef(3, Vector(9, 0.0)).IsSuccessful());
  EXPECT_TRUE(QVMatrixIsNonNegDef(2, {0, 0, 0, 1}).IsSuccessful());
  EXPECT_FALSE(QVMatrixIsNonNegDef(2, {0, 1, 1, 1}).IsSuccessful());
  EXPECT_FALSE(QVMatrixIsNonNegDef(2, {1, 2, 2, 1}).IsSuccessful());
  EXPECT_FALSE(QVMatrixIsNonNegDef(2, {1, kNaN, kNaN, 1}).IsSuccessful());
  EXPECT_FALSE(QVMatrixIsPosDef(4, matrix).IsSuccessful());
}

struct FailureCase {
  const char* name;
  std::function<QVStatModelResult()> call;
  unsigned int type;
  Chain routines;
  Chain comments;
};
void PrintTo(const FailureCase& row, std::ostream* out) { *out << row.name; }

Vector ignoredVector;
double ignoredNumber;

const FailureCase kFailures[] = {
    {"DiagonalIndex",
     [] { return QVGetDiagonalElemOfMatrix(3, {1}, 3, ignoredNumber); },
     Failure::ArgumentOutOfRange,
     {"QVGetDiagonalElemOfMatrix"},
     {"3 bigger than matrix Dimension: 3"}},
    {"VectorIndex",
     [] {
       return QVGetVecElementFromIndex(2, {1, 2}, 5, ignoredNumber);
     },
     Failure::ArgumentOutOfRange,
     {"QVGetVecElementFromIndex"},
     {"Index: 5 bigger than dimension: 2"}},
    {"BlockIndex",
     [] {
       return QVGetBlockSubMatrixOfMatrix(2, {1, 2}, {0, 2}, ignoredVector);
     },
     Failure::ArgumentOutOfRange,
     {"QVGetBlockSubMatrixOfMatrix"},
     {"Index: 2 bigger than dimension: 2"}},
    {"MatrixSize",
     [] {
       return QVMatrixIsPosDef(3, {1, 2});
     },
     Failure::WrongInputMatrixSize,
     {"QVMatrixIsPosDef"},
     {"matrix size: 2; dimension: 3"}},
    {"VectorSize",
     [] {
       return QVMatrixTimesVector(2, {1, 2, 3, 4}, {1}, ignoredVector);
     },
     Failure::WrongInputVectorSize,
     {"QVMatrixTimesVector"},
     {"vector size: 1; dimension: 2"}},
    {"ScalarForm",
     [] {
       return QVInverseOfScalarMatrix({1, 2}, ignoredVector);
     },
     Failure::WrongInputMatrixSize,
     {"QVInverseOfScalarMatrix"},
     {"matrix size: 2; dimension: 1"}},
    {"NegativeScalar",
     [] { return QVMatrixIsPosDef(3, {-1}); },
     Failure::SingularMatrix,
     {"QVMatrixIsPosDef"},
     {"Scalar matrix with non-positive scalar"}},
    {"NonNegScalar",
     [] { return QVMatrixIsNonNegDef(3, {-1}); },
     Failure::SingularMatrix,
     {"QVMatrixIsNonNegDef"},
     {"Scalar matrix with non-positive scalar"}},
    {"ZeroOnDiagonal",
     [] {
       return QVInverseOfPosDefMatrix(2, {1, 0}, ignoredVector);
     },
     Failure::SingularMatrix,
     {"QVInverseOfDiagonalMatrix", "QVInverseOfPosDefMatrix"},
     {}},
    {"RootOfZero",
     [] {
       return QVSquareRootOfDiagonalMatrix(2, {1, 0}, ignoredVector);
     },
     Failure::SingularMatrix,
     {"QVSquareRootOfDiagonalMatrix"},
     {}},
    {"LogOfZero",
     [] {
       return QVLogDeterminantOfDiagonalMatrix(2, {1, 0}, ignoredNumber);
     },
     Failure::SingularMatrix,
     {"QVLogDeterminantOfDiagonalMatrix"},
     {}},
    {"NaNPivot",
     [] {
       return QVMatrixIsPosDef(2, {1, 0, 0, kNaN});
     },
     Failure::SingularMatrix,
     {"QVCholeskyDecomposition", "QVMatrixIsPosDef"},
     {}},
    {"Indefinite",
     [] {
       return QVInverseOfPosDefMatrix(2, {1, 2, 2, 1}, ignoredVector);
     },
     Failure::SingularMatrix,
     {"QVCholeskyDecomposition", "QVInverseOfSymmetricPositiveDefiniteMatrix",
      "QVInverseOfPosDefMatrix"},
     {}},
    {"SingularFactor",
     [] {
       return QVSolveTransposedLowerTriangularEquations(2, {1, 0, 1, 0}, {1, 1}, ignoredVector);
     },
     Failure::SingularMatrix,
     {"QVSolveTransposedLowerTriangularEquations"},
     {}},
};

class MatrixFailure : public testing::TestWithParam<FailureCase> {};
INSTANTIATE_TEST_SUITE_P(Routines, MatrixFailure, testing::ValuesIn(kFailures),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_P(MatrixFailure, NamesTheFaultAndTheRoutines) {
  const FailureCase& row = GetParam();
  EXPECT_THAT(row.call(), FailedAlong(row.type, row.routines, row.comments));
}

}  // namespace
}  // namespace QVStats
