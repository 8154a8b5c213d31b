#include "stats/api/plskrige.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <limits>
#include <memory>
#include <sstream>

#include "platform/chem/smiles.h"
#include "platform/system/error_handler.h"
#include "stats/api/krige_2d_mol.h"
#include "stats/api/mol_properties.h"
#include "stats/api/svd_data_model.h"
#include "tests/support/matchers.h"

namespace QVStats {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

/// The fields of the lines of a file of the test data.
std::vector<std::vector<std::string>> ReadFields(const std::string& name) {
  std::ifstream file(QVSTATS_TEST_DATA "/" + name);
  std::vector<std::vector<std::string>> rows;
  for (std::string line; std::getline(file, line);) {
    std::istringstream stream(line);
    rows.emplace_back();
    for (std::string field; std::getline(stream, field, ',');) rows.back().push_back(field);
  }
  EXPECT_FALSE(rows.empty()) << name;
  return rows;
}

std::vector<double> ToNumbers(const std::vector<std::string>& fields, std::size_t first) {
  std::vector<double> numbers;
  for (std::size_t k = first; k < fields.size(); ++k) numbers.push_back(std::stod(fields[k]));
  return numbers;
}

struct Molecule {
  std::string smiles;
  double activity;
  std::vector<double> descriptors;
};

/// 80 measured molecules with 12 descriptors.
std::vector<Molecule> ReadMolecules() {
  auto rows = ReadFields("pls_molecules.csv");
  rows.erase(rows.begin());
  std::vector<Molecule> molecules;
  for (const auto& row : rows) molecules.push_back({row[1], std::stod(row[2]), ToNumbers(row, 3)});
  return molecules;
}

QVPartialLeastSquareRegression Fit(const std::vector<Molecule>& molecules,
                                   const QVPLSOptions& options) {
  QVPartialLeastSquareRegression pls(molecules[0].descriptors.size(), -1.0, options);
  for (const Molecule& molecule : molecules)
    pls.AddTraining(molecule.descriptors, molecule.activity);
  EXPECT_TRUE(pls.Train());
  return pls;
}

/// Against scikit-learn: tools/make_pls_reference.py.
TEST(PartialLeastSquares, FitsMeasuredActivities) {
  const auto molecules = ReadMolecules();
  const std::size_t p = molecules[0].descriptors.size();
  for (const auto& row : ReadFields("pls_reference.csv")) {
    const auto components = static_cast<unsigned int>(std::stoul(row[1]));
    const auto pls =
        Fit(molecules, QVPLSOptions().SetScale(row[0] == "1").SetNumComponents(components));
    const std::string where = row[0] + "," + row[1];
    ASSERT_EQ(pls.GetNumComponents(), components) << where;
    const std::vector<double> expected = ToNumbers(row, 2);
    double explained = 0.0;
    for (const double share : pls.GetExplainedResponse()) explained += share;
    EXPECT_THAT(explained, IsCloseTo(expected[0], 1e-10)) << where;
    for (std::size_t k = 0; k <= p; ++k)
      EXPECT_THAT(pls.GetCoefficients()[k], IsCloseTo(expected[1 + k], 1e-7)) << where << " " << k;
    const auto scores = pls.GetScores(molecules[0].descriptors);
    for (std::size_t a = 0; a < components; ++a)
      EXPECT_THAT(std::abs(scores[a]), IsCloseTo(expected[2 + p + a], 1e-7)) << where << " " << a;
  }
}

TEST(PartialLeastSquares, ScoresAreOrthogonalAndFollowTheResponse) {
  const auto molecules = ReadMolecules();
  const auto pls = Fit(molecules, QVPLSOptions().SetNumComponents(12));
  const std::size_t size = pls.GetNumComponents();
  ASSERT_EQ(size, 12u);
  std::vector<std::vector<double>> scores;
  for (const Molecule& molecule : molecules) scores.push_back(pls.GetScores(molecule.descriptors));
  for (std::size_t a = 0; a < size; ++a) {
    double withResponse = 0.0;
    for (std::size_t i = 0; i < scores.size(); ++i)
      withResponse += scores[i][a] * molecules[i].activity;
    EXPECT_GT(withResponse, 0.0) << a;
    for (std::size_t b = 0; b <= a; ++b) {
      double product = 0.0, squareA = 0.0, squareB = 0.0;
      for (const auto& row : scores) {
        product += row[a] * row[b];
        squareA += row[a] * row[a];
        squareB += row[b] * row[b];
      }
      EXPECT_NEAR(product / std::sqrt(squareA * squareB), a == b ? 1.0 : 0.0, 1e-9) << a << b;
    }
  }
  // All components are ordinary least squares, whatever the scale.
  QVSVD<std::vector<double>> leastSquares(12, -1.0);
  for (const Molecule& molecule : molecules)
    leastSquares.AddTraining(molecule.descriptors, molecule.activity);
  const auto unscaled = Fit(molecules, QVPLSOptions().SetNumComponents(12).SetScale(false));
  for (const Molecule& molecule : molecules) {
    EXPECT_NEAR(pls.Predict(molecule.descriptors), leastSquares.Predict(molecule.descriptors),
                1e-8);
    EXPECT_NEAR(unscaled.Predict(molecule.descriptors), pls.Predict(molecule.descriptors), 1e-6);
  }
}

TEST(PartialLeastSquares, CrossValidationLeavesEachExampleOutOnce) {
  const auto molecules = ReadMolecules();
  const auto options = QVPLSOptions().SetMaxComponents(6).SetNumFolds(5);
  const auto pls = Fit(molecules, options);
  const auto& errors = pls.GetCrossValidatedErrors();
  ASSERT_THAT(errors, SizeIs(7));
  const auto best = std::min_element(errors.begin() + 1, errors.end()) - errors.begin();
  EXPECT_EQ(pls.GetNumComponents(), static_cast<std::size_t>(best));
  EXPECT_LT(errors[static_cast<std::size_t>(best)], errors[0]) << "better than the mean";
  double squares = 0.0;
  for (std::size_t fold = 0; fold < 5; ++fold) {
    QVPartialLeastSquareRegression part(12, -1.0, QVPLSOptions().SetNumComponents(3));
    for (std::size_t i = 0; i < molecules.size(); ++i)
      if (i % 5 != fold) part.AddTraining(molecules[i].descriptors, molecules[i].activity);
    for (std::size_t i = fold; i < molecules.size(); i += 5) {
      const double error = part.Predict(molecules[i].descriptors) - molecules[i].activity;
      squares += error * error;
    }
  }
  EXPECT_THAT(errors[3], IsCloseTo(std::sqrt(squares / 80.0), 1e-10));
}

TEST(PartialLeastSquares, EndsAtTheRank) {
  QVPartialLeastSquareRegression pls(3, -1.0, QVPLSOptions().SetNumComponents(3));
  for (const double t : {1.0, 2.0, 4.0, 7.0}) pls.AddTraining({t, -2.0 * t, 5.0}, 3.0 * t + 1.0);
  ASSERT_TRUE(pls.Train());
  EXPECT_EQ(pls.GetNumComponents(), 1u) << "three properties, one direction";
  EXPECT_NEAR(pls.Predict({10.0, -20.0, 5.0}), 31.0, 1e-10);
  EXPECT_NEAR(pls.GetExplainedProperties()[0], 1.0, 1e-12);
  for (const bool chosen : {false, true}) {
    QVPartialLeastSquareRegression constant(1, -1.0, QVPLSOptions().SetNumComponents(chosen));
    for (const double x : {1.0, 2.0, 3.0}) constant.AddTraining({x}, 0.1);
    ASSERT_TRUE(constant.Train());
    EXPECT_EQ(constant.GetNumComponents(), 0u);
    EXPECT_DOUBLE_EQ(constant.Predict({9.0}), 0.1);
  }
}

TEST(PartialLeastSquares, RefusesWhatItCannotUse) {
  QVSystem::QVScopedRecordingSink sink;
  QVPartialLeastSquareRegression pls(2, -1.0);
  EXPECT_FALSE(pls.AddTraining({1.0}, 1.0));
  EXPECT_EQ(pls.Predict({1.0, 2.0}), -1.0) << "no examples";
  pls.AddTraining({1.0, 2.0}, 1.0);
  EXPECT_FALSE(pls.Train()) << "one example";
  pls.AddTraining({2.0, std::numeric_limits<double>::quiet_NaN()}, 2.0);
  EXPECT_FALSE(pls.Train());
  EXPECT_THAT(sink.GetTexts(QVSystem::QVErrorLevel::Warning), SizeIs(3));
  pls.Clear();
  for (const double x : {1.0, 2.0, 3.0}) pls.AddTraining({x, x * x}, x);
  const std::unique_ptr<const QVPartialLeastSquareRegression> copy(pls.CreateCopy());
  const double predicted = copy->Predict({2.0, 4.0});
  EXPECT_FALSE(copy->IsTrained());
  EXPECT_THAT(copy->GetScores({2.0, 4.0}), IsEmpty());
  ASSERT_TRUE(pls.Train());
  EXPECT_EQ(pls.Predict({2.0, 4.0}), predicted) << "the const model trained a copy";
  EXPECT_EQ(pls.Predict({2.0}), -1.0);
  EXPECT_THAT(pls.GetScores({2.0}), IsEmpty());
  EXPECT_THAT(sink.GetTexts(QVSystem::QVErrorLevel::Fatal), SizeIs(2));
  pls.AddTraining({4.0, 16.0}, 4.0);
  EXPECT_FALSE(pls.IsTrained()) << "a new example";
}

TEST(MolPLSPropertyList, KrigingDriftsOnTheScores) {
  const auto rows = ReadMolecules();
  const char* const names[] = {"MolWt", "logP", "TPSA", "RotatableBonds"};
  const std::size_t columns[] = {0, 2, 4, 7};
  QVSCMolPropertyList descriptors;
  for (const char* name : names) descriptors.PushTag(name);
  QVMolPLSPropertyList scores(descriptors, QVPLSOptions().SetNumComponents(2));
  std::vector<QVChem::QVGraphMol> mols(rows.size());
  for (std::size_t i = 0; i < rows.size(); ++i) {
    ASSERT_TRUE(QVChem::QVParseSmiles(mols[i], rows[i].smiles));
    for (std::size_t k = 0; k < 4; ++k)
      mols[i].SetSDData(names[k], std::to_string(rows[i].descriptors[columns[k]]));
    if (i < 60) scores.AddTraining(mols[i], rows[i].activity);
  }
  EXPECT_FALSE(scores.HasProperties(mols[0])) << "untrained";
  ASSERT_TRUE(scores.Train());
  ASSERT_EQ(scores.GetSize(), 2u);
  QVChem::QVGraphMol bare;
  ASSERT_TRUE(QVChem::QVParseSmiles(bare, "CCO"));
  EXPECT_FALSE(scores.HasProperties(bare));
  EXPECT_FALSE(scores.AddTraining(bare, 1.0));
  const QVChem::QVMCMol conformers(static_cast<const QVChem::QVMolBase&>(mols[3]));
  EXPECT_EQ(scores.GetProperty(conformers, 1), scores.GetProperty(mols[3], 1));

  // A response that is linear in the scores is all drift: the prediction is exact.
  const auto response = [&](const QVChem::QVMolBase& mol) {
    return 5.0 + 2.0 * scores.GetProperty(mol, 0) - scores.GetProperty(mol, 1);
  };
  QVMolKrige linear(scores, QVGlobalKrigeOptions{});
  QVMolKrige measured(scores, QVGlobalKrigeOptions{});
  for (std::size_t i = 0; i < 60; ++i) {
    ASSERT_TRUE(linear.AddTraining(mols[i], response(mols[i])));
    ASSERT_TRUE(measured.AddTraining(mols[i], rows[i].activity));
  }
  EXPECT_FALSE(linear.AddTraining(bare, 1.0));
  QVKrigeKernel kernel(QVKrigeKernelType::Exponential);
  ASSERT_TRUE(linear.TrainFixed(kernel));
  ASSERT_TRUE(measured.TrainFixed(kernel));
  for (std::size_t i = 60; i < rows.size(); ++i) {
    const auto result = linear.GetResult(mols[i]);
    EXPECT_TRUE(result.Valid()) << i;
    EXPECT_NEAR(result.GetResponse(), response(mols[i]), 1e-6) << i;
  }
  EXPECT_TRUE(measured.GetResult(mols[70]).Valid());
}

}  // namespace
}  // namespace QVStats
