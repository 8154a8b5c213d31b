#include "stats/api/ran_var_setup.h"

#include <iterator>

#include "stats/failure.h"

namespace QVStats {

namespace {

constexpr unsigned int kNoConstraint = 0;

/// A variable that starts as a number, or else as an empty vector.
struct GaussianVariable {
  unsigned int majorType;
  unsigned int minorType;
  bool isScalar;
  double value;
  unsigned int elemWiseConstraint;
};

QVCheckRanVarConstraints MakeConstraints(unsigned int elemWiseConstraint) {
  std::vector<QVRanVarElemWiseConstraint> elemWise;
  if (elemWiseConstraint != kNoConstraint) elemWise.emplace_back(elemWiseConstraint);
  return QVCheckRanVarConstraints({}, elemWise);
}

nQVRanVar MakeVariable(const GaussianVariable& row) {
  const std::string name = nQVGetRanVarTypeName(row.majorType, row.minorType);
  const QVCheckRanVarConstraints constraints = MakeConstraints(row.elemWiseConstraint);
  if (row.isScalar) return nQVRanVar(row.majorType, row.minorType, name, constraints, row.value);
  return nQVRanVar(row.majorType, row.minorType, name, constraints, Eigen::VectorXd());
}

}  // namespace

QVStatModelResult SetupUniVarGaussianRanVars(std::vector<nQVRanVar>& ranVars, double mean,
                                             double variance) {
  using QVRanVarConstraintCodes::ElementIsNonNegative;
  using QVRanVarConstraintCodes::ElementIsPositive;
  namespace Gauss = nQVUniVarGaussRanVarsMinorType;
  namespace All = nQVAllRanVarsMinorType;
  constexpr unsigned int gauss = nQVRanVarMajorType::UniVarGauss;
  constexpr unsigned int all = nQVRanVarMajorType::AllRanVars;
  const GaussianVariable rows[] = {
      {gauss, Gauss::Mean, true, mean, kNoConstraint},
      {gauss, Gauss::Variance, true, variance, ElementIsPositive},
      {gauss, Gauss::SampleMean, true, 0.0, kNoConstraint},
      {gauss, Gauss::SampleVariance, true, 1.0, ElementIsPositive},
      {all, All::SingleObservation, true, 0.0, kNoConstraint},
      {all, All::TrainingObservations, false, 0.0, kNoConstraint},
      {all, All::TestingObservations, false, 0.0, kNoConstraint},
      {all, All::TrainingWeights, false, 0.0, ElementIsNonNegative},
  };
  ranVars.clear();
  ranVars.reserve(std::size(rows));
  const QVStatModelResult result =
      QVRanVarElemWiseConstraint(ElementIsPositive).CheckConstraint(variance);
  if (result.NotSuccessful()) return result;
  for (const GaussianVariable& row : rows) ranVars.push_back(MakeVariable(row));
  return true;
}

}  // namespace QVStats
