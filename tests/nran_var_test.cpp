#include "stats/api/nran_var.h"

#include <gmock/gmock.h>

#include <cmath>
#include <memory>

#include "stats/api/npdf_impl.h"
#include "stats/api/ran_var_constraints.h"
#include "stats/api/ran_var_setup.h"
#include "stats/api/stats_data_types.h"
#include "tests/support/matchers.h"

namespace QVStats {
namespace {

using Chain = std::vector<std::string>;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
namespace Failure = QVStatModelFailureType;
namespace Codes = QVRanVarConstraintCodes;

const QVCheckRanVarConstraints kUnconstrained({}, {});
const QVCheckRanVarConstraints kPositive({},
                                         {QVRanVarElemWiseConstraint(Codes::ElementIsPositive)});

Eigen::VectorXd MakeVector(const std::vector<double>& values) {
  return Eigen::Map<const Eigen::VectorXd>(values.data(), static_cast<Eigen::Index>(values.size()));
}

nQVRanVar MakeScalar(double value, const QVCheckRanVarConstraints& constraints = kUnconstrained) {
  return nQVRanVar(nQVRanVarMajorType::UniVarGauss, nQVUniVarGaussRanVarsMinorType::Mean, "mu",
                   constraints, value);
}

TEST(RanVarConstraints, ElementsByCode) {
  const double nan = std::nan("");
  const QVRanVarElemWiseConstraint positive(Codes::ElementIsPositive);
  EXPECT_TRUE(positive.CheckConstraint(1e-300).IsSuccessful());
  EXPECT_FALSE(positive.CheckConstraint(nan).IsSuccessful());
  EXPECT_THAT(
      positive.CheckConstraint(0.0),
      FailedAlong(Failure::LowerBoundViolated, Chain{"QVElementIsPositive::CheckConstraint"},
                  Chain{"Argument value = 0; should be positive!"}));
  const QVRanVarElemWiseConstraint nonNegative(Codes::ElementIsNonNegative);
  EXPECT_TRUE(nonNegative.CheckConstraint(0.0).IsSuccessful());
  EXPECT_THAT(
      nonNegative.CheckConstraint(-0.5),
      FailedAlong(Failure::LowerBoundViolated, Chain{"QVElementIsNonNegative::CheckConstraint"},
                  Chain{"Argument value = -0.5; should be non-negative!"}));
  // With a parameter there is no element-wise constraint, whatever the code.
  for (const QVRanVarElemWiseConstraint& null :
       {QVRanVarElemWiseConstraint(), QVRanVarElemWiseConstraint(7),
        QVRanVarElemWiseConstraint(Codes::ElementIsPositive, 0.5),
        QVRanVarElemWiseConstraint(Codes::ElementIsPositive, 0.5, 1.0)})
    EXPECT_THAT(null.CheckConstraint(1.0),
                FailedWith(Failure::ObjectNotValid, "QVElemWiseNullConstraint::CheckConstraint"));
}

TEST(RanVarConstraints, SumOfAVector) {
  const QVRanVarGlobalConstraint sum(Codes::VectorHasSumVal, 1.0);
  EXPECT_TRUE(sum.CheckConstraint(MakeVector({0.25, 0.75 + 5e-11})).IsSuccessful());
  EXPECT_FALSE(sum.CheckConstraint(MakeVector({0.25, 0.75 + 2e-10})).IsSuccessful());
  EXPECT_THAT(
      QVRanVarGlobalConstraint(Codes::VectorHasSumVal, 1.0, 0.5)
          .CheckConstraint(MakeVector({1.0, 1.0})),
      FailedAlong(Failure::SumOfArgumentsWrong, Chain{"QVRanVarVectorHasSumVal::CheckConstraint"},
                  Chain{"Vector sums to = 2; Expected sum = 1; Tolerance = 0.5"}));
  EXPECT_THAT(sum.CheckConstraint(Eigen::MatrixXd(1, 1)),
              FailedAlong(Failure::VectorArgumentRequired,
                          Chain{"QVRanVarVectorHasSumVal::CheckConstraint"},
                          Chain{"Argument is a Matrix"}));
  EXPECT_THAT(QVRanVarGlobalConstraint(Codes::VectorHasSumVal).CheckConstraint(MakeVector({1})),
              FailedWith(Failure::ObjectNotValid, "QVGlobalNullConstraint::CheckConstraint"));
}

TEST(RanVarConstraints, ListsApplyInOrderAndNameTheElement) {
  const QVCheckRanVarConstraints weights({QVRanVarGlobalConstraint(Codes::VectorHasSumVal, 1.0)},
                                         {QVRanVarElemWiseConstraint(Codes::ElementIsNonNegative)});
  const std::unique_ptr<QVCheckRanVarConstraints> copy(weights.CreateCopy());
  EXPECT_TRUE(copy->CheckConstraints(MakeVector({0.5, 0.5, 0})).IsSuccessful());
  EXPECT_THAT(copy->CheckConstraints(MakeVector({0.5, -0.5})),
              FailedAlong(Failure::SumOfArgumentsWrong,
                          (Chain{"QVRanVarVectorHasSumVal::CheckConstraint",
                                 "QVCheckRanVarConstraints::CheckGlobalConstraints",
                                 "QVCheckRanVarConstraints::CheckConstraints"}),
                          Chain{"Vector sums to = 0; Expected sum = 1; Tolerance = 1e-10"}));
  EXPECT_THAT(copy->CheckConstraints(MakeVector({1.5, -0.5})),
              FailedAlong(Failure::LowerBoundViolated,
                          (Chain{"QVElementIsNonNegative::CheckConstraint",
                                 "QVCheckRanVarConstraints::CheckElemWiseConstraints",
                                 "QVCheckRanVarConstraints::CheckConstraints"}),
                          (Chain{"Argument value = -0.5; should be non-negative!",
                                 "Problem with Vector element(1); value = -0.5"})));
  Eigen::MatrixXd matrix(2, 2);
  matrix << 1, 2, -3, 4;
  EXPECT_THAT(kPositive.CheckElemWiseConstraints(matrix),
              FailedAlong(Failure::LowerBoundViolated,
                          (Chain{"QVElementIsPositive::CheckConstraint",
                                 "QVCheckRanVarConstraints::CheckElemWiseConstraints"}),
                          (Chain{"Argument value = -3; should be positive!",
                                 "Problem with Matrix element(1,0); value = -3"})));
  EXPECT_EQ(weights.Print(),
            "QVRanVarVectorHasSumVal: asserts elements sum to 1(tol: 1e-10)\n"
            "QVElementIsNonNegative: asserts value is non-negative\n");
}

TEST(RanVarConstraints, NullEntriesFailAndEmptyListsAccept) {
  const QVCheckRanVarConstraints null;
  EXPECT_EQ(null.CheckConstraints(1.0).GetFailureType(), Failure::ObjectNotValid);
  EXPECT_EQ(null.CheckConstraints(MakeVector({1})).GetFailureType(), Failure::ObjectNotValid);
  EXPECT_EQ(null.Print(),
            "This is a Null Global Constraint\nThis is an Element-Wise Null Constraint\n");
  EXPECT_TRUE(kUnconstrained.CheckConstraints(-1.0).IsSuccessful());
  EXPECT_TRUE(kUnconstrained.CheckConstraints(MakeVector({-1})).IsSuccessful());
}

TEST(TypedRanVar, TakesOnlyTheKindItHolds) {
  QVStatModelResult result(true);
  nQVRanVar scalar = MakeScalar(1.5);
  EXPECT_EQ(scalar.GetRanVarVal(result), 1.5);
  EXPECT_TRUE(result.IsSuccessful());
  EXPECT_EQ(scalar.GetRanVarVec(result).size(), 0);
  EXPECT_THAT(result,
              FailedAlong(Failure::ArgumentTypeWrong, Chain{"nQVScalarRanVar::GetRanVarVec"},
                          Chain{"Private data is a double; Can't return a VectorXd"}));
  EXPECT_EQ(scalar.GetRanVarMatPtr(), nullptr);
  nQVRanVar vector(1, 2, "x", kUnconstrained, MakeVector({1, 2}));
  EXPECT_FALSE(vector.LoadRanVarVal(result, 3.0));
  EXPECT_THAT(result,
              FailedAlong(Failure::ArgumentTypeWrong,
                          (Chain{"nQVRanVar::CheckConstraints", "nQVRanVar::LoadRanVarVal"}),
                          Chain{"Trying to load a scalar, while Random variable has required data "
                                "type Eigen::VectorXd"}));
  EXPECT_EQ(vector.GetRanVarMatPtr(result), nullptr);
  EXPECT_THAT(result,
              FailedAlong(Failure::ArgumentTypeWrong,
                          (Chain{"nQVVectorRanVar::GetRanVarMatPtr", "nQVRanVar::GetRanVarMatPtr"}),
                          Chain{"Private data is a VectorXd; Can't return a MatrixXd"}));
  EXPECT_TRUE(vector.LoadRanVarVec(result, MakeVector({1, 2, 3})));
  EXPECT_EQ(vector.GetRanVarVec().size(), 3);
  EXPECT_TRUE(result.IsSuccessful());
  nQVRanVar matrix(1, 2, "m", kUnconstrained, Eigen::MatrixXd(Eigen::MatrixXd::Identity(2, 2)));
  ASSERT_NE(matrix.GetRanVarMatPtr(), nullptr);
  (*matrix.GetRanVarMatPtr())(0, 1) = 7;
  EXPECT_EQ(matrix.GetRanVarMat()(0, 1), 7);
}

TEST(TypedRanVar, NullVariableHasNoData) {
  nQVRanVar null;
  QVStatModelResult result(true);
  EXPECT_EQ(null.GetRanVarVal(result), QVStatsBadData::BadDouble);
  EXPECT_THAT(result, FailedAlong(Failure::NoData, Chain{"nQVNullRanVar::GetRanVarVal"},
                                  Chain{"No data for Null Random Variable"}));
  EXPECT_EQ(null.GetConstRanVarVecPtr(result), nullptr);
  EXPECT_THAT(result, FailedAlong(Failure::NoData, Chain{"nQVNullRanVar::GetConstRanVarVecPtr"},
                                  Chain{"No data for Null Random Variable"}));
  EXPECT_FALSE(null.LoadRanVarVal(1.0));
  EXPECT_THAT(null.AttachData(nQVRanVar(), false),
              FailedAlong(Failure::InternalLogicFailure, Chain{"nQVRanVar::AttachData"},
                          Chain{"Source Ran Var has unknown Data Type!"}));
}

TEST(TypedRanVar, ConstraintsGuardLoads) {
  nQVRanVar variable = MakeScalar(1.0, kPositive);
  QVStatModelResult result(true);
  EXPECT_FALSE(variable.LoadRanVarVal(result, -1.0));
  EXPECT_THAT(result,
              FailedAlong(Failure::LowerBoundViolated,
                          (Chain{"QVElementIsPositive::CheckConstraint",
                                 "QVCheckRanVarConstraints::CheckElemWiseConstraints",
                                 "QVCheckRanVarConstraints::CheckConstraints",
                                 "nQVRanVar::CheckConstraints", "nQVRanVar::LoadRanVarVal"}),
                          Chain{"Argument value = -1; should be positive!"}));
  EXPECT_EQ(variable.GetRanVarVal(), 1.0);
}

TEST(TypedRanVar, AttachedVariablesShareTheirValue) {
  nQVRanVar source = MakeScalar(2.0);
  nQVRanVar attached = MakeScalar(1.0, kPositive);
  ASSERT_TRUE(attached.AttachData(source, true).IsSuccessful());
  EXPECT_EQ(attached.GetRanVarVal(), 2.0);
  EXPECT_EQ(source.GetRanVarRefCount(), 2u);
  EXPECT_TRUE(source.LoadRanVarVal(3.0));
  EXPECT_EQ(attached.GetRanVarVal(), 3.0);
  QVStatModelResult result(true);
  EXPECT_FALSE(attached.LoadRanVarVal(result, 4.0));
  EXPECT_THAT(result,
              FailedAlong(Failure::VariableIsReadOnly, Chain{"nQVRanVar::LoadRanVarVal"}, Chain{}));
  {
    const nQVRanVar copy = attached;
    EXPECT_EQ(source.GetRanVarRefCount(), 3u);
    EXPECT_TRUE(copy.RanVarDataIsReadOnly());
  }
  attached = MakeScalar(0.0);  // lets go
  EXPECT_EQ(source.GetRanVarRefCount(), 1u);
  EXPECT_TRUE(attached.AttachData(attached, false).IsSuccessful());
}

TEST(TypedRanVar, RefusesToAttachAnotherKindOrRange) {
  nQVRanVar positive = MakeScalar(1.0, kPositive);
  EXPECT_EQ(positive.AttachData(MakeScalar(-2.0), false).GetFailureType(),
            Failure::LowerBoundViolated);
  EXPECT_EQ(positive.GetRanVarVal(), 1.0);
  EXPECT_THAT(
      positive.AttachData(nQVRanVar(1, 2, "x", kUnconstrained, MakeVector({1})), false),
      FailedAlong(Failure::ArgumentTypeWrong, Chain{"nQVRanVar::AttachData"},
                  Chain{"Source random variable has required data type Eigen::VectorXdRandom "
                        "variable to be attached to has required data type Scalar Double"}));
}

TEST(TypedRanVar, GaussianSetup) {
  std::vector<nQVRanVar> variables;
  ASSERT_TRUE(SetupUniVarGaussianRanVars(variables, 2.5, 4.0).IsSuccessful());
  std::vector<std::string> names;
  for (const nQVRanVar& variable : variables) {
    names.push_back(variable.GetRanVarTypeName());
    EXPECT_EQ(variable.GetRanVarName(), names.back());
  }
  EXPECT_THAT(names, ElementsAre("Univariate Gaussian Random Variable::Mean",
                                 "Univariate Gaussian Random Variable::Variance",
                                 "Univariate Gaussian Random Variable::SampleMean",
                                 "Univariate Gaussian Random Variable::SampleVariance",
                                 "Common To All Random Variables::Single Observation",
                                 "Common To All Random Variables::Vector of Training Observations",
                                 "Common To All Random Variables::Vector of Testing Observations",
                                 "Common To All Random Variables::Vector of Training Observation "
                                 "Weights"));
  EXPECT_EQ(variables[1].GetRanVarVal(), 4.0);
  EXPECT_TRUE(variables[0].LoadRanVarVal(-1.0));
  EXPECT_FALSE(variables[3].LoadRanVarVal(0.0));
  EXPECT_TRUE(variables[7].LoadRanVarVec(MakeVector({0, 1})));
  EXPECT_FALSE(variables[7].LoadRanVarVec(MakeVector({0, -1})));
  EXPECT_THAT(
      SetupUniVarGaussianRanVars(variables, 0.0, 0.0),
      FailedAlong(Failure::LowerBoundViolated, Chain{"QVElementIsPositive::CheckConstraint"},
                  Chain{"Argument value = 0; should be positive!"}));
  EXPECT_THAT(variables, IsEmpty());
}

TEST(TypedRanVar, Prints) {
  nQVRanVar vector(1, 2, "x", kUnconstrained, MakeVector({1, 2.5, 3}));
  vector.SetRanVarDataReadOnly();
  EXPECT_EQ(vector.Print(2),
            "x\n"
            "Random Variable Type is Common To All Random Variables::Vector of Training "
            "Observations\n"
            "Random Variable is read-only\n"
            "Random Variable Required Data Type is Eigen::VectorXd\n"
            "Data is a dynamically sized vector of doubles (Eigen::VectorXd)\n"
            "Random Variable Vector: Size = 3\n"
            "1 2.5 \n");
  EXPECT_EQ(nQVGetRanVarTypeName(9, 9), "Unknown Major Type::Unknown Minor Type");
}

TEST(TypedPdf, NullDistributionAnswersNothingButKnowsItsVariables) {
  std::vector<nQVRanVar> variables;
  ASSERT_TRUE(SetupUniVarGaussianRanVars(variables, 2.5, 4.0).IsSuccessful());
  nQVUniVarNullPDFImpl pdf("y", variables);
  const std::unique_ptr<nQVUniVarPDFImpl> copy(pdf.CreateCopy());
  QVMath::QVRanNumEngine engine;
  QVStatModelResult result(true);
  EXPECT_EQ(copy->GetDensity(result, 0.0, true), QVStatsBadData::BadDouble);
  EXPECT_THAT(result, FailedWith(Failure::NullProbDistFunc, "nQVUniVarNullPDFImpl::GetDensity"));
  EXPECT_EQ(copy->GetRandomOutcome(result, engine), QVStatsBadData::BadDouble);
  EXPECT_THAT(result,
              FailedWith(Failure::NullProbDistFunc, "nQVUniVarNullPDFImpl::GetRandomOutcome"));
  const nQVRanVar& mean = copy->GetRanVar(result, nQVRanVarMajorType::UniVarGauss,
                                          nQVUniVarGaussRanVarsMinorType::Mean);
  EXPECT_TRUE(result.IsSuccessful());
  EXPECT_EQ(mean.GetRanVarVal(), 2.5);
  copy->GetRanVar(result, 3, 9);
  EXPECT_THAT(result, FailedWith(Failure::RanVarNotFound, "nQVProbDistFuncImpl::GetRanVar"));
  EXPECT_EQ(copy->GetPDFName(), "NullPDF");
  EXPECT_EQ(nQVUniVarNullPDFImpl("z").Print(3), "PDF: NullPDF\n Variable name: z\n");
}

}  // namespace
}  // namespace QVStats
