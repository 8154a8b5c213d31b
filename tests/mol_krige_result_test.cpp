// Molecular results on hand-made records: getters, probabilities, atom contributions.
#include "stats/api/mol_krige_result.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <limits>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/likeness/vsepr.h"
#include "platform/system/error_handler.h"
#include "stats/api/private/krige_result_impl.h"
#include "tests/support/matchers.h"
#include "tests/support/molecules.h"

namespace {

using namespace QVStats;
using QVLikeness::QVVseprFingerprint;
using QVLikeness::QVVseprOptions;
using MolList = std::vector<std::shared_ptr<const QVChem::QVMolBase>>;

const QVVseprOptions kPaths(3, 0, false, false, false);

std::shared_ptr<QVChem::QVMolBase> Training(const std::string& smiles) {
  auto mol = std::make_shared<QVChem::QVGraphMol>(MakeMol(smiles));
  mol->SetData(QVTrainingFingerprintTag, QVVseprFingerprint(*mol, kPaths));
  return mol;
}

struct Neighbor {
  const char* smiles;
  double weight;
  double response;
};

/// A result with these neighbours at distance 0.5, under a linear kernel of sill 2.
QVMolKrigeResult MakeResult(const std::vector<Neighbor>& neighbors, double baseline = 0.0) {
  QVKrigeResultImpl record;
  QVKrigeKernel kernel(QVKrigeKernelType::Linear);
  kernel.SetSill(2.0);
  kernel.SetRange(1.0);
  record.SetKernel(kernel);
  record.SetBaselineResponse(baseline);
  MolList mols;
  std::vector<double> responses;
  for (const Neighbor& neighbor : neighbors) {
    record.AddElement(0.5, neighbor.weight, neighbor.response, false,
                      static_cast<unsigned int>(mols.size()), true);
    mols.push_back(Training(neighbor.smiles));
    responses.push_back(neighbor.response + baseline);
  }
  const std::vector<bool> unmeasured(responses.size(), false);
  return {QVKrigeResult(record), mols, responses, unmeasured, QVVariogram()};
}

TEST(MolKrigeResult, ResponseVarianceAndProbabilities) {
  const QVMolKrigeResult result = MakeResult({{"CCO", 0.5, 3.0}, {"CCC", 0.5, 5.0}}, 1.0);
  EXPECT_EQ(result.GetResponse(), 5.0);  // 1 + 0.5 * 3 + 0.5 * 5
  EXPECT_EQ(result.GetVariance(), 1.0);  // 2 - (0.5 + 0.5) * (2 - 1)
  EXPECT_EQ(result.GetElementResponse(1), 6.0);
  // Normal distribution function at 1 and 2: Abramowitz and Stegun (1964), table 26.1.
  EXPECT_THAT(QVProbabilityLessThan(result, 6.0), IsCloseTo(0.841344746068543, 1e-14));
  EXPECT_THAT(QVProbabilityGreaterThan(result, 7.0), IsCloseTo(0.022750131948179, 1e-12));
  EXPECT_THAT(QVProbabilityBetween(result, 4.0, 6.0), IsCloseTo(0.682689492137086, 1e-14));
  EXPECT_EQ(QVProbabilityBetween(result, 6.0, 4.0), QVProbabilityBetween(result, 4.0, 6.0));
}

TEST(MolKrigeResult, LargestElementsByWeightThenDistance) {
  const QVMolKrigeResult result =
      MakeResult({{"C", 0.1, 0.0}, {"CC", -0.6, 0.0}, {"CCC", 0.4, 0.0}, {"CCCC", 0.1, 0.0}});
  EXPECT_THAT(result.GetLargestElements(3), testing::ElementsAre(1, 2, 0));
  EXPECT_THAT(result.GetLargestElements(9), testing::ElementsAre(1, 2, 0, 3));
}

TEST(MolKrigeResult, BadIndicesAndLists) {
  const double max = std::numeric_limits<double>::max();
  const QVMolKrigeResult result = MakeResult({{"CCO", 1.0, 3.0}, {"CCC", 0.0, 5.0}});
  const QVSystem::QVScopedRecordingSink sink;
  EXPECT_EQ(result.GetElementWeight(2), max);
  EXPECT_EQ(result.GetElementResponse(2), max);
  EXPECT_TRUE(result.GetElement(2).IsEmpty());
  EXPECT_EQ(result.GetElement(0, 0).GetNumAtoms(), 3U);
  // The element's index, not the copy's, is compared with the number of copies.
  EXPECT_TRUE(result.GetElement(1, 0).IsEmpty());
  EXPECT_THAT(sink.GetTexts(QVSystem::QVErrorLevel::Fatal),
              testing::Each(testing::HasSubstr("stats/krige_2d_mol")));
  EXPECT_THAT(sink.GetTexts(QVSystem::QVErrorLevel::Fatal), testing::SizeIs(2));
  const QVMolKrigeResult empty;
  EXPECT_FALSE(empty.Valid());
  EXPECT_EQ(empty.GetResponse(), max);
  EXPECT_TRUE(empty.GetLargestElements(3).empty());
}

/// The documented steps on maps from codes to weights, one neighbour and one atom at a time.
class SlowContributions {
 public:
  using Sparse = std::map<std::uint64_t, double>;

  SlowContributions(const QVMolKrigeResult& result, double baseline) {
    for (unsigned int i = 0; i < result.GetNumElements(); ++i) {
      const double c = result.GetElementWeight(i) * (result.GetElementResponse(i) - baseline);
      const Sparse fingerprint = ToMap(QVVseprFingerprint(result.GetElement(i), kPaths));
      if (c > 1e-10) Book(fingerprint, c, raising_, raisingTotal_);
      if (c < 1e-10) Book(fingerprint, -c, lowering_, loweringTotal_);
    }
    if (loweringTotal_ > 0.0)
      for (auto& entry : raising_) entry.second /= loweringTotal_;
    if (raisingTotal_ > 0.0)
      for (auto& entry : lowering_) entry.second /= raisingTotal_;
    for (auto& entry : raising_) {
      const auto other = lowering_.find(entry.first);
      if (other == lowering_.end()) continue;
      const double common = std::min(entry.second, other->second);
      entry.second -= common;
      other->second -= common;
    }
  }

  double Get(const QVChem::QVMolBase& mol, unsigned int index) const {
    double p = 0.0;
    double n = 0.0;
    double sumP = 0.0;
    double sumN = 0.0;
    for (const QVChem::QVAtomBase atom : mol.GetAtoms()) {
      if (atom.IsHydrogen()) continue;
      const QVVseprFingerprint fingerprint(atom, kPaths);
      const double share = Share(raising_, fingerprint);
      const double other = Share(lowering_, fingerprint);
      sumP += share;
      sumN += other;
      if (atom.GetIndex() == index) {
        p = share;
        n = other;
      }
    }
    p = sumP > 1e-8 ? p / sumP : 0.0;
    n = sumN > 1e-8 ? n / sumN : 0.0;
    if (raisingTotal_ + loweringTotal_ <= 1e-8) return 0.0;
    return loweringTotal_ <= raisingTotal_ ? p * (loweringTotal_ / raisingTotal_) - n
                                           : p - (raisingTotal_ / loweringTotal_) * n;
  }

 private:
  static Sparse ToMap(const QVVseprFingerprint& fingerprint) {
    Sparse map;
    for (std::size_t i = 0; i < fingerprint.GetNumFeatures(); ++i)
      map[fingerprint.GetCodes()[i]] = fingerprint.GetWeights()[i];
    return map;
  }
  static void Book(const Sparse& fingerprint, double factor, Sparse& sum, double& total) {
    for (const auto& entry : fingerprint) sum[entry.first] += entry.second * factor;
    total += factor;
  }
  static double Share(const Sparse& evidence, const QVVseprFingerprint& atom) {
    double shared = 0.0;
    for (const auto& entry : ToMap(atom)) {
      const auto found = evidence.find(entry.first);
      if (found != evidence.end()) shared += std::min(found->second, entry.second);
    }
    return shared / atom.GetVolume();
  }

  Sparse raising_;
  Sparse lowering_;
  double raisingTotal_ = 0.0;
  double loweringTotal_ = 0.0;
};

TEST(AtomContribution, FollowsTheDocumentedSteps) {
  const QVChem::QVGraphMol query = MakeMol("Clc1ccc(CCO)cc1[H]");
  const std::vector<std::vector<Neighbor>> cases = {
      {{"OCCc1ccccc1", 0.6, 1.0}, {"Clc1ccccc1", 0.5, 6.0}, {"CCO", -0.1, 2.0}},
      {{"OCCc1ccccc1", 0.9, 7.0}, {"Clc1ccccc1", 0.1, 2.0}, {"CCN", 0.0, 2.0}},
  };
  double largest = 0.0;
  for (const auto& neighbors : cases)
    for (const double baseline : {2.5, 4.0}) {
      const QVMolKrigeResult result = MakeResult(neighbors, 0.5);
      const SlowContributions slow(result, baseline);
      const std::vector<double> all = result.GetAtomContributions(query, baseline);
      for (const QVChem::QVAtomBase atom : query.GetAtoms()) {
        const double contribution = result.GetAtomContribution(atom, baseline);
        EXPECT_NEAR(contribution, slow.Get(query, atom.GetIndex()), 1e-14);
        EXPECT_EQ(contribution, all[atom.GetIndex()]);
        EXPECT_TRUE(!atom.IsHydrogen() || contribution == 0.0);
      }
      largest = std::max(largest, *std::max_element(all.begin(), all.end()));
    }
  EXPECT_GT(largest, 0.1);
}

TEST(AtomContribution, OneSidedAndEmptyEvidenceIsNothing) {
  const QVChem::QVGraphMol query = MakeMol("CCCO");
  // Product 2: only raising evidence, and the ratio of the totals is 0.
  const QVMolKrigeResult raising = MakeResult({{"CCO", 1.0, 3.0}});
  EXPECT_THAT(raising.GetAtomContributions(query, 1.0), testing::Each(0.0));
  // Products of 0, booked as lowering with a scale of 0.
  const QVMolKrigeResult nothing = MakeResult({{"CCO", 1.0, 3.0}, {"CCC", 0.0, 9.0}});
  EXPECT_THAT(nothing.GetAtomContributions(query, 3.0), testing::Each(0.0));
  EXPECT_EQ(nothing.GetAtomContribution(query.GetAtom(0)), 0.0);
}

TEST(AtomContribution, ABaselineThatIsNoNumberIsFatalAndForgotten) {
  const QVChem::QVGraphMol query = MakeMol("CCCO");
  const QVMolKrigeResult result = MakeResult({{"CCO", 0.6, 1.0}, {"CCC", 0.4, 6.0}});
  const QVMolKrigeResult other = MakeResult({{"CCO", 0.6, 1.0}, {"CCC", 0.4, 6.0}});
  const QVSystem::QVScopedRecordingSink sink;
  const double nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_THAT(result.GetAtomContributions(query, nan), testing::Each(0.0));
  EXPECT_EQ(sink.GetTexts(QVSystem::QVErrorLevel::Fatal).size(), 1u);
  EXPECT_EQ(result.GetAtomContributions(query, 3.0), other.GetAtomContributions(query, 3.0));
}

TEST(AtomContribution, NeedsFingerprintsOnTheTraining) {
  QVKrigeResultImpl record;
  record.AddElement(0.5, 1.0, 3.0, false, 0, true);
  const MolList mols = {std::make_shared<QVChem::QVGraphMol>(MakeMol("CCO"))};
  const QVChem::QVGraphMol query = MakeMol("CCCO");
  const QVSystem::QVScopedRecordingSink sink;
  const QVMolKrigeResult result(QVKrigeResult(record), mols, {3.0}, {false}, QVVariogram());
  EXPECT_EQ(result.GetAtomContribution(query.GetAtom(0), 1.0), 0.0);
  EXPECT_THAT(sink.GetTexts(QVSystem::QVErrorLevel::Fatal),
              testing::Contains(testing::HasSubstr("stats/krige_2d_mol")));
}

}  // namespace
