#include "stats/api/ran_var.h"

#include <gmock/gmock.h>

#include <limits>

#include "tests/support/matchers.h"

namespace QVStats {
namespace {

using Chain = std::vector<std::string>;
using testing::ElementsAre;
namespace Failure = QVStatModelFailureType;

/// A variable of the given kind, shape and range, with bounds 0 and 1 and sum 1.
QVRanVar MakeVariable(std::uint64_t dataType, std::uint64_t dimType, std::uint64_t constraintType,
                      std::uint64_t dimension = 1, bool multiValued = false,
                      std::vector<double> values = {}) {
  return QVRanVar(QVPDFType::Beta, QVPackageTypes::Outcomes, 2, "Beta Outcome", dataType, dimType,
                  constraintType, std::move(values), dimension, 0, 1, 1, multiValued);
}

QVRanVar MakeScalar(std::uint64_t constraintType) {
  return MakeVariable(QVRanVarDataType::Continuous, QVRanVarDimType::Scalar, constraintType);
}

QVRanVar MakeMatrix(std::uint64_t constraintType) {
  return MakeVariable(QVRanVarDataType::Continuous, QVRanVarDimType::SymmetricMatrix,
                      constraintType, 3);
}

struct RangeCase {
  std::uint64_t constraintType;
  std::vector<double> accepted;
  std::vector<double> tooLow;
  std::vector<double> tooHigh;
};

TEST(RanVar, RangeOfEachConstraintType) {
  const double infinity = std::numeric_limits<double>::infinity();
  namespace Types = QVRanVarConstraintTypes;
  const RangeCase cases[] = {
      {Types::Unknown, {-infinity, infinity}, {}, {}},
      {Types::UnConstrained, {-infinity, infinity}, {}, {}},
      {Types::LowerBound, {0, infinity}, {-1e-300, -infinity}, {}},
      {Types::StrictLowerBound, {1e-300, infinity}, {0, -1}, {}},
      {Types::UpperBound, {1, -infinity}, {}, {1.5, infinity}},
      {Types::StrictUpperBound, {0.5, -infinity}, {}, {1, infinity}},
      {Types::Bounded, {0, 0.5, 1}, {-0.5}, {1.5}},
  };
  for (const RangeCase& row : cases) {
    const QVRanVar variable = MakeScalar(row.constraintType);
    for (const double value : row.accepted)
      EXPECT_TRUE(variable.CheckIfRanVarValIsOk(value).IsSuccessful())
          << Types::Describe[row.constraintType] << ", " << value;
    for (const double value : row.tooLow)
      EXPECT_THAT(variable.CheckIfRanVarValIsOk(value),
                  FailedWith(Failure::LowerBoundViolated, "QVRanVar::CheckRanVarValConstraints"));
    for (const double value : row.tooHigh)
      EXPECT_THAT(variable.CheckIfRanVarValIsOk(value),
                  FailedWith(Failure::UpperBoundViolated, "QVRanVar::CheckRanVarValConstraints"));
  }
  // A strict bound is not reported as a plain one.
  EXPECT_FALSE(MakeScalar(Types::StrictLowerBound).HasLowerBound());
  EXPECT_TRUE(MakeScalar(Types::BoundedWithSum).HasLowerBound());
}

TEST(RanVar, BoundFailuresShowTheRangeAndTheElement) {
  QVRanVar variable = MakeScalar(QVRanVarConstraintTypes::StrictLowerBound);
  EXPECT_THAT(
      variable.SetRanVarVal(-2.5, true),
      FailedAlong(Failure::LowerBoundViolated,
                  (Chain{"QVRanVar::CheckRanVarValConstraints", "QVRanVar::CheckIfRanVarValsAreOk",
                         "QVRanVar::CheckIfRanVarValIsOk", "QVRanVar::SetRanVarVal"}),
                  (Chain{"Random Var must be Greater than Lower Bound",
                         "Lower Bound: 0; ran var element: -2.5"})));
  EXPECT_EQ(variable.GetNumRanVarVals(), 0u);
  EXPECT_TRUE(variable.SetRanVarVal(-2.5, false).IsSuccessful());
  EXPECT_THAT(variable.GetRanVarValVec(), ElementsAre(-2.5));
}

TEST(RanVar, ElementsMustSumToTheirConstant) {
  const QVRanVar variable = MakeVariable(QVRanVarDataType::Continuous, QVRanVarDimType::Vector,
                                         QVRanVarConstraintTypes::BoundedWithSum, 2);
  EXPECT_TRUE(variable.CheckIfRanVarValsAreOk({0.3, 0.7}).IsSuccessful());
  EXPECT_TRUE(variable.CheckIfRanVarValsAreOk({0.3, 0.7 + 1e-7}).IsSuccessful());
  EXPECT_THAT(
      variable.CheckIfRanVarValsAreOk({0.3, 0.6}),
      FailedAlong(Failure::ArgumentValueWrong,
                  (Chain{"QVRanVar::CheckVarSumConstraint", "QVRanVar::CheckRanVarValConstraints",
                         "QVRanVar::CheckIfRanVarValsAreOk"}),
                  (Chain{"Argument Var Sum Constraint: 0.9 Object Var Sum Constraint: 1"})));
}

TEST(RanVar, NumberOfValuesFollowsTheShape) {
  namespace Dim = QVRanVarDimType;
  const auto make = [](std::uint64_t dimType, std::uint64_t dimension, bool multiValued) {
    return MakeVariable(QVRanVarDataType::Continuous, dimType,
                        QVRanVarConstraintTypes::UnConstrained, dimension, multiValued);
  };
  const auto accepts = [](const QVRanVar& variable, std::size_t numValues) {
    return variable.CheckRanVarValDimType(std::vector<double>(numValues)).IsSuccessful();
  };
  EXPECT_TRUE(accepts(make(Dim::Scalar, 1, true), 7));
  EXPECT_TRUE(accepts(make(Dim::Vector, 3, true), 6));
  EXPECT_FALSE(accepts(make(Dim::Vector, 3, true), 7));
  EXPECT_FALSE(accepts(make(Dim::Vector, 3, false), 6));
  EXPECT_FALSE(accepts(make(Dim::Vector, 0, true), 1));
  for (std::size_t size = 0; size < 12; ++size)
    EXPECT_EQ(accepts(make(Dim::SymmetricMatrix, 3, false), size),
              size == 1 || size == 3 || size == 9);
  EXPECT_THAT(make(Dim::Scalar, 1, false).CheckRanVarValDimType({1, 2}),
              FailedAlong(Failure::ScalarArgumentRequired, Chain{"QVRanVar::CheckRanVarValDimType"},
                          Chain{"Ran var has 2 components"}));
  EXPECT_THAT(make(Dim::Vector, 3, true).CheckRanVarValDimType({1}),
              FailedAlong(Failure::WrongInputVectorSize, Chain{"QVRanVar::CheckRanVarValDimType"},
                          Chain{"vector size: 1; model dimension: 3"}));
}

TEST(RanVar, IntegerValuedToSinglePrecision) {
  const QVRanVar variable = MakeVariable(QVRanVarDataType::IntegerValued, QVRanVarDimType::Scalar,
                                         QVRanVarConstraintTypes::UnConstrained);
  EXPECT_TRUE(variable.CheckIfRanVarValIsOk(3 + 1e-7).IsSuccessful());
  EXPECT_TRUE(variable.CheckIfRanVarValIsOk(-1e300).IsSuccessful());
  EXPECT_THAT(
      variable.CheckRanVarValDataType({3, 3.1}),
      FailedAlong(Failure::IntegerArgumentRequired, Chain{"QVRanVar::CheckRanVarValDataType"},
                  Chain{"Argument value is 3.1"}));
}

TEST(RanVar, MatricesAreBoundedByTheirEigenvalues) {
  const std::vector<double> semidefinite = {1, 1, 0, 1, 1, 0, 0, 0, 2};
  EXPECT_TRUE(MakeMatrix(QVRanVarConstraintTypes::LowerBound)
                  .CheckIfRanVarValsAreOk(semidefinite)
                  .IsSuccessful());
  EXPECT_THAT(
      MakeMatrix(QVRanVarConstraintTypes::StrictLowerBound).CheckIfRanVarValsAreOk(semidefinite),
      FailedAlong(Failure::SingularMatrix,
                  (Chain{"QVCholeskyDecomposition", "QVMatrixIsPosDef",
                         "QVRanVar::CheckMatrixConstraints", "QVRanVar::CheckIfRanVarValsAreOk"}),
                  Chain{}));
  EXPECT_THAT(MakeMatrix(QVRanVarConstraintTypes::UpperBound).CheckMatrixConstraints({1}),
              FailedWith(Failure::InappropriateConstraint, "QVRanVar::CheckMatrixConstraints"));
  const QVRanVar boundNotZero(QVPDFType::MultiVariateGaussian, QVPackageTypes::Parameters, 2,
                              "Precision", QVRanVarDataType::Continuous,
                              QVRanVarDimType::SymmetricMatrix, QVRanVarConstraintTypes::LowerBound,
                              1.0, 3, 0.5, 0, 0);
  EXPECT_THAT(boundNotZero.CheckMatrixConstraints({1}),
              FailedWith(Failure::ArgumentValueWrong, "QVRanVar::CheckLowerBound"));
}

TEST(RanVar, DescriptorChecksKeepTheirTexts) {
  const QVRanVar variable = MakeScalar(QVRanVarConstraintTypes::Bounded);
  struct Case {
    QVStatModelResult result;
    unsigned int type;
    const char* where;
    const char* comment;
  };
  const Case cases[] = {
      {variable.CheckPdfType(6), Failure::ArgumentNameWrong, "QVRanVar::CheckPdfType",
       "Argument Type,name 6 Gamma; Object pdfType, Name 9 Beta"},
      {variable.CheckPackageType(1), Failure::ArgumentNameWrong, "QVRanVar::CheckPackageName",
       "Argument Type,name 1 Parameters; Object packageType, Name 2 Outcomes"},
      {variable.CheckRanVarTypeName(0, "x"), Failure::ArgumentNameWrong,
       "QVRanVar::CheckPackageName",
       "Argument Type,name 0 x; Object RanVar Type, Name 2 Beta Outcome"},
      {variable.CheckDataType(4), Failure::ArgumentOutOfRange, "QVRanVar::CheckDataType",
       "Num Data Types = 4; Argument is 4"},
      {variable.CheckDataType(2), Failure::ArgumentTypeWrong, "QVRanVar::CheckDataType",
       "Argument: Random Var Data Type is Integer Valued Object: Random Var Data Type is "
       "Continuous"},
      {variable.CheckDimensionalType(2), Failure::ArgumentTypeWrong,
       "QVRanVar::CheckDimensionalType",
       "Argument: Random Var Dimensional Type is Vector Object: Random Var Dimensional Type is "
       "Scalar"},
      {variable.CheckConstraintType(9), Failure::ArgumentOutOfRange,
       "QVRanVar::CheckDimensionalType", "Num Dimensional Types = 8; Argument is 9"},
      {variable.CheckModelDimension(2), Failure::ArgumentTypeWrong, "QVRanVar::CheckModelDimension",
       "Argument model dimension 2; Object model dimension 1"},
      {variable.CheckLowerBound(0.25), Failure::ArgumentValueWrong, "QVRanVar::CheckLowerBound",
       "Argument Lower Bound: 0.25 Object Lower Bound: 0"},
  };
  for (const Case& row : cases)
    EXPECT_THAT(row.result, FailedAlong(row.type, Chain{row.where}, Chain{row.comment}));
  EXPECT_TRUE(variable.CheckUpperBound(1 + 1e-7).IsSuccessful());
  EXPECT_TRUE(variable.CheckRanVarTypeName(2, "another name").IsSuccessful());
}

TEST(RanVar, TakesTheValuesOfAVariableDescribedAlike) {
  QVRanVar variable = MakeScalar(QVRanVarConstraintTypes::Bounded);
  QVRanVar alike = variable;
  ASSERT_TRUE(alike.SetRanVarVal(0.25, true).IsSuccessful());
  EXPECT_TRUE(variable.SetRanVarVals(alike, true).IsSuccessful());
  EXPECT_THAT(variable.GetRanVarValVec(), ElementsAre(0.25));
  const QVRanVar other = MakeScalar(QVRanVarConstraintTypes::LowerBound);
  EXPECT_THAT(variable.SetRanVarVals(other, true),
              FailedAlong(Failure::ArgumentTypeWrong,
                          (Chain{"QVRanVar::CheckDimensionalType", "QVRanVar::CheckIfRanVarIsOk",
                                 "QVRanVar::SetRanVarVals"}),
                          Chain{"Argument: Random Var must be Greater Or Equal to Lower Bound "
                                "Object: Random Var must be Bounded Above and Below"}));
  EXPECT_THAT(variable.GetRanVarValVec(), ElementsAre(0.25));
}

TEST(RanVar, Prints) {
  const QVRanVar vector =
      MakeVariable(QVRanVarDataType::Continuous, QVRanVarDimType::Vector,
                   QVRanVarConstraintTypes::BoundedWithSum, 3, false, {1, 2, 3});
  EXPECT_EQ(vector.Print(2),
            "Pdf Name: Beta\n"
            "Ran Var Package Name: Outcomes\n"
            "Ran Var Name: Beta Outcome\n"
            "ran var type = 2\n"
            "Random Var Data Type is Continuous\n"
            "Random Var Dimensional Type is Vector of dimension 3\n"
            "Random Vector, Elements must be Bounded And Sum to a Constant; Lower Bound: 0 "
            "; Upper Bound: 1 ; Var Sum Constraint: 1 \n"
            "Random Var Values: 1 2 ..... (1 more)");
  EXPECT_EQ(vector.PrintValues(3), "Random Var Values: 1 2 3 ..... (0 more)");
  EXPECT_EQ(vector.PrintValues(4), "Random Var Values: 1 2 3 ");
  QVRanVar matrix = MakeMatrix(QVRanVarConstraintTypes::StrictLowerBound);
  const std::pair<std::vector<double>, const char*> forms[] = {
      {{2}, ", Scalar times Identity, of dimension 3\n"},
      {{1, 2, 3}, ", diagonal, of dimension 3\n"},
      {{1, 0, 0, 0, 1, 0, 0, 0, 1}, ", of dimension 3\n"},
  };
  for (const auto& [values, text] : forms) {
    ASSERT_TRUE(matrix.SetRanVarVals(values, true).IsSuccessful());
    EXPECT_EQ(matrix.PrintDimensionalType(),
              std::string("Random Var Dimensional Type is Symmetric Matrix") + text);
  }
}

}  // namespace
}  // namespace QVStats
