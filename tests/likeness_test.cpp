// The fingerprints: features against hand counts and a slow enumeration, the algebra, and the
// one-against-many index against the pairwise merge.
#include <gmock/gmock.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <numeric>
#include <random>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "platform/chem/mol.h"
#include "platform/chem/mol_functions.h"
#include "platform/chem/smiles.h"
#include "platform/likeness/fingerprint.h"
#include "platform/likeness/vsepr.h"
#include "platform/likeness/vsepr_index.h"
#include "platform/system/error_handler.h"
#include "tests/support/matchers.h"

namespace {

using namespace QVLikeness;
using QVChem::QVGraphMol;

QVGraphMol Mol(const std::string& smiles) {
  QVGraphMol mol;
  EXPECT_TRUE(QVChem::QVParseSmiles(mol, smiles)) << smiles;
  return mol;
}

QVVseprFingerprint Vsepr(const std::string& smiles, const QVVseprOptions& options = {}) {
  return {Mol(smiles), options};
}

QVVseprOptions Paths(unsigned int maxLength, unsigned int minLength = 0) {
  return {maxLength, minLength, false, false, false};
}

const std::vector<std::string> kSmiles = {"CCO",
                                          "c1ccccc1O",
                                          "CC(=O)Oc1ccccc1C(=O)O",
                                          "CN1C=NC2=C1C(=O)N(C(=O)N2C)C",
                                          "O=S(=O)(Nc1cccs1)c2ccc(Oc3ccccc3c4ccccc4)c(c2)C#N",
                                          "C1CC2CCC1CC2",
                                          "[Na+].[O-]C(=O)c1ccccc1",
                                          "CC(C)Cc1ccc(cc1)[C@@H](C)C(=O)O",
                                          "C/C=C/C(=O)N1CCOCC1",
                                          "FC(F)(F)c1cc(Cl)ccc1C#N"};

struct CountCase {
  const char* name;
  const char* smiles;
  QVVseprOptions options;
  double volume;
};
void PrintTo(const CountCase& row, std::ostream* out) { *out << row.name; }

class VseprVolume : public testing::TestWithParam<CountCase> {};

// Numbers of simple paths counted by hand, each at two levels of detail. A ring of six has 6 paths
// of every length from 0 to 5; those of up to 3 bonds are shortest ways.
INSTANTIATE_TEST_SUITE_P(
    Vsepr, VseprVolume,
    testing::Values(CountCase{"Methane", "C", Paths(5), 2.0},
                    CountCase{"EthanolAtoms", "CCO", Paths(0), 6.0},
                    CountCase{"Ethanol", "CCO", Paths(5), 12.0},
                    CountCase{"EthanolBonds", "CCO", Paths(1, 1), 4.0},
                    CountCase{"EthanolByLength", "CCO", {5, 0, false, true, false}, 20.0},
                    CountCase{"RingOfSix", "C1CCCCC1", Paths(5), 72.0},
                    CountCase{"RingOfSixOutwards", "C1CCCCC1", {5, 0, true, false, false}, 48.0},
                    CountCase{"RingOfSixUpToTwo", "C1CCCCC1", Paths(2), 36.0},
                    CountCase{"MinimumAboveMaximum", "CCO", Paths(1, 2), 0.0},
                    CountCase{"Hydrogen", "[H][H]", Paths(5), 0.0}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_P(VseprVolume, IsTheNumberOfPaths) {
  EXPECT_EQ(Vsepr(GetParam().smiles, GetParam().options).GetVolume(), GetParam().volume);
}

/// Every simple path by breadth-first growth of atom lists, described in words through the public
/// interface of the molecule: shares nothing with the fingerprint but its definition.
std::vector<double> CountPathsSlowly(const QVGraphMol& mol, unsigned int maxLength) {
  const auto describeAtom = [](const QVChem::QVAtomBase& atom, bool shell) {
    std::string text = atom.GetSymbol();
    if (shell)
      text += "/" + std::to_string(atom.GetHeavyDegree()) + "," +
              std::to_string(atom.GetNumHydrogens()) + "," +
              std::to_string(atom.GetFormalCharge()) + "," + std::to_string(atom.GetValence()) +
              (atom.IsAromatic() ? "a" : "") + (atom.IsInRing() ? "r" : "");
    return text;
  };
  std::map<std::vector<std::string>, double> counts;
  std::vector<std::vector<unsigned int>> paths;
  for (const auto atom : mol.GetAtoms()) paths.push_back({atom.GetIndex()});
  while (!paths.empty()) {
    std::vector<std::vector<unsigned int>> longer;
    for (const auto& path : paths) {
      if (path.front() <= path.back())
        for (const bool shell : {false, true}) {
          std::vector<std::string> words{shell ? "shells" : "elements"};
          std::vector<std::string> reading;
          for (std::size_t i = 0; i < path.size(); ++i) {
            const auto atom = mol.GetAtom(path[i]);
            if (i > 0)
              reading.push_back(std::to_string(
                  static_cast<int>(mol.GetBond(mol.GetAtom(path[i - 1]), atom).GetOrder())));
            reading.push_back(describeAtom(atom, shell));
          }
          std::vector<std::string> reversed(reading.rbegin(), reading.rend());
          const auto& canonical = std::min(reading, reversed);
          words.insert(words.end(), canonical.begin(), canonical.end());
          counts[words] += 1.0;
        }
      if (path.size() > maxLength) continue;
      for (const auto neighbor : mol.GetAtom(path.back()).GetNeighbors())
        if (std::find(path.begin(), path.end(), neighbor.GetIndex()) == path.end()) {
          longer.push_back(path);
          longer.back().push_back(neighbor.GetIndex());
        }
    }
    paths = std::move(longer);
  }
  std::vector<double> weights;
  for (const auto& entry : counts) weights.push_back(entry.second);
  std::sort(weights.begin(), weights.end());
  return weights;
}

// The codes are hashes, so the two are compared by their sorted counts.
TEST(Vsepr, CountsThePathsOfASlowEnumeration) {
  for (const std::string& smiles : kSmiles)
    for (const unsigned int maxLength : {0U, 2U, 4U, 6U}) {
      std::vector<double> weights = Vsepr(smiles, Paths(maxLength)).GetWeights();
      std::sort(weights.begin(), weights.end());
      EXPECT_EQ(weights, CountPathsSlowly(Mol(smiles), maxLength)) << smiles << " " << maxLength;
    }
}

TEST(Vsepr, DoesNotDependOnTheOrderOfAtomsOrOnDrawnHydrogens) {
  EXPECT_EQ(Vsepr("CC(=O)Oc1ccccc1C(=O)O"), Vsepr("OC(=O)c1ccccc1OC(C)=O"));
  EXPECT_EQ(Vsepr("[H]OC([H])([H])C([H])([H])[H]"), Vsepr("CCO"));
  EXPECT_NE(Vsepr("CCO"), Vsepr("COC"));
  EXPECT_NE(Vsepr("CC(=O)[O-]"), Vsepr("CC(=O)O"));
}

// Fingerprints may be stored and compared across machines, so the codes must not move: of a single
// carbon at the level of elements, mix(mix(6) + 1), by an independent implementation of the mixer.
TEST(Vsepr, CodesAreFixed) {
  EXPECT_THAT(Vsepr("C").GetCodes(), testing::Contains(0x3b5b26b4abedc4abULL));
  EXPECT_THAT(Vsepr("CCO").GetCodes(), testing::Contains(0x3b5b26b4abedc4abULL));
}

TEST(Vsepr, StereoCountsOnlyWhenAskedFor) {
  QVVseprOptions aware;
  aware.SetStereoAware(true);
  QVVseprOptions blind;
  blind.SetStereoAware(false);
  const std::pair<const char*, const char*> pairs[] = {{"C[C@H](N)C(=O)O", "C[C@@H](N)C(=O)O"},
                                                       {"F/C=C/Cl", "F/C=C\\Cl"}};
  for (const auto& [first, second] : pairs) {
    EXPECT_EQ(Vsepr(first, blind), Vsepr(second, blind)) << first;
    EXPECT_NE(Vsepr(first, aware), Vsepr(second, aware)) << first;
  }
}

// The path from i to j starts at i and at j, so the atoms together hold each path of two or more
// atoms twice and each atom once; a bond holds what starts with it.
TEST(Vsepr, AtomsAndBondsAddUpToTheMolecule) {
  for (const std::string& smiles : kSmiles) {
    const QVGraphMol mol = Mol(smiles);
    for (const bool outwards : {false, true}) {
      const QVVseprOptions options(4, 0, outwards, false, false);
      QVVseprFingerprint atoms;
      for (const auto atom : mol.GetAtoms()) atoms += QVVseprFingerprint(atom, options);
      QVVseprFingerprint expected(mol, options);
      expected.Scale(2.0);
      const QVVseprFingerprint single(mol, {0, 0, outwards, false, false});
      EXPECT_EQ(atoms + single, expected) << smiles;

      const auto bulk = QVGetVseprAtomFingerprints(mol, options);
      ASSERT_EQ(bulk.size(), mol.GetNumAtoms());
      for (const auto atom : mol.GetAtoms())
        EXPECT_EQ(bulk[atom.GetIndex()], QVVseprFingerprint(atom, options));
    }
  }
  // Propane: of the paths of its first bond, C-C itself and C-C-C.
  EXPECT_EQ(QVVseprFingerprint(Mol("CCC").GetBond(0), QVVseprOptions()).GetVolume(), 4.0);
}

TEST(Vsepr, AlgebraOfSparseVectors) {
  const auto make = [](std::vector<std::uint64_t> codes, std::vector<double> weights) {
    QVVseprFingerprint fingerprint;
    fingerprint.Setup(codes, weights, QVVseprOptions());
    return fingerprint;
  };
  const QVVseprFingerprint a = make({7, 3, 3, 9}, {2.0, 1.0, 0.5, 4.0});
  const QVVseprFingerprint b = make({3, 8, 9}, {2.0, 1.0, 1.0});
  EXPECT_THAT(a.GetCodes(), testing::ElementsAre(3, 7, 9));
  EXPECT_EQ(a.GetVolume(), 7.5);
  EXPECT_EQ(a + b, make({3, 7, 8, 9}, {3.5, 2.0, 1.0, 5.0}));
  EXPECT_EQ(a & b, make({3, 9}, {1.5, 1.0}));
  EXPECT_EQ(a.GetTanimoto(b), 2.5 / (7.5 + 4.0 - 2.5));
  EXPECT_EQ(b.GetTanimoto(a), a.GetTanimoto(b));
  QVVseprFingerprint negative = a;
  negative.Scale(-1.0);
  EXPECT_EQ(negative.GetVolume(), -7.5);
  EXPECT_EQ((a + negative).GetNumFeatures(), 0U);
  EXPECT_EQ(negative.Scale(0.0), QVVseprFingerprint());
  EXPECT_EQ(QVVseprFingerprint().GetTanimoto(QVVseprFingerprint()), 1.0);
  EXPECT_EQ(QVVseprFingerprint().GetTanimoto(a), 0.0);

  QVVseprFingerprint sum;  // empty, so it takes over the options of the first that is added
  QVVseprOptions options(3, 1, true, true, true);
  sum += Vsepr("CCO", options);
  EXPECT_EQ(sum.GetOptions(), options);
}

/// The nearest by a sort of the distances that the pairwise merge gives.
std::vector<QVVseprNeighbour> SortNeighbours(const std::vector<QVVseprFingerprint>& all,
                                             const QVVseprFingerprint& query, bool leaveOutEqual) {
  std::vector<QVVseprNeighbour> sorted;
  for (std::size_t i = 0; i < all.size(); ++i)
    if (const double distance = 1.0 - query.GetTanimoto(all[i]); !leaveOutEqual || distance != 0.0)
      sorted.push_back({distance, i});
  std::stable_sort(sorted.begin(), sorted.end(),
                   [](const auto& a, const auto& b) { return a.distance < b.distance; });
  return sorted;
}

void ExpectNearestOfSort(const QVVseprIndex& index, const std::vector<QVVseprFingerprint>& all,
                         const QVVseprFingerprint& query) {
  for (const bool leaveOutEqual : {false, true}) {
    const auto sorted = SortNeighbours(all, query, leaveOutEqual);
    for (const std::size_t count :
         {std::size_t{0}, std::size_t{1}, std::size_t{30}, std::size_t{100}, all.size() + 1}) {
      const auto nearest = index.FindNearest(query, count, leaveOutEqual);
      ASSERT_EQ(nearest.size(), std::min(count, sorted.size()));
      for (std::size_t k = 0; k < nearest.size(); ++k) {
        ASSERT_EQ(nearest[k].position, sorted[k].position) << count << " " << k;
        ASSERT_EQ(nearest[k].distance, sorted[k].distance);
      }
    }
  }
}

/// The fingerprints of the molecules above and of mutated copies, so that sizes and densities vary.
std::vector<QVVseprFingerprint> MakeMany(std::size_t count) {
  std::vector<QVVseprFingerprint> all;
  std::mt19937 engine(7);
  while (all.size() < count) {
    std::string smiles;
    const std::size_t parts = 1 + engine() % 3;
    for (std::size_t part = 0; part < parts; ++part) {
      if (part > 0) smiles += ".";
      smiles += kSmiles[engine() % kSmiles.size()];
    }
    all.push_back(Vsepr(
        smiles, {2 + static_cast<unsigned int>(engine() % 4), 0, false, engine() % 2 == 0, false}));
  }
  return all;
}

// 300 is beyond the first and second time that the frequent features get columns; counts above 255
// do not fit those, real and negative weights stand apart.
TEST(VseprIndex, GivesTheBitsOfTheMerge) {
  std::vector<QVVseprFingerprint> all = MakeMany(300);
  all[5].Scale(1000.0);
  all[70].Scale(0.3);
  all[71].Scale(-1.0);
  for (std::size_t i = 90; i < 130; ++i) all[i].Scale(40.0);
  all[200] = QVVseprFingerprint();
  all[201].Scale(70000.0);
  QVVseprIndex index;
  std::vector<double> tanimotos(all.size());
  std::vector<double> distances(all.size());
  for (std::size_t n = 0; n < all.size(); ++n) {
    if (n % 37 == 0 || n == 72 || n == 202) {
      index.GetTanimotos(all[n], tanimotos.data());
      index.GetDistances(all[n], distances.data());
      for (std::size_t i = 0; i < n; ++i) {
        ASSERT_EQ(tanimotos[i], all[n].GetTanimoto(all[i])) << n << " " << i;
        ASSERT_EQ(distances[i], 1.0 - all[i].GetTanimoto(all[n]));
      }
    }
    index.Add(all[n]);
  }
  for (const std::size_t n : {5U, 70U, 71U, 95U, 120U, 200U, 201U, 299U}) {
    index.GetTanimotos(all[n], tanimotos.data());
    for (std::size_t i = 0; i < all.size(); ++i)
      ASSERT_EQ(tanimotos[i], all[n].GetTanimoto(all[i])) << n << " " << i;
    EXPECT_EQ(tanimotos[n], 1.0);
    ExpectNearestOfSort(index, all, all[n]);
  }
  ExpectNearestOfSort(QVVseprIndex(), {}, all[0]);
}

// What does not fit a byte stands in the list, and the query's row holds as much of it as it can:
// the parts of a bound together must not exceed what a fingerprint has.
TEST(VseprIndex, FindsTheNearestWhereWeightsDoNotFitAByte) {
  std::vector<QVVseprFingerprint> all(100);
  QVVseprIndex index;
  for (std::size_t i = 0; i < all.size(); ++i) {
    const auto large = static_cast<double>(200 + i * i % 300);
    all[i].Setup({1, 2, 3, 4, 5, 6, 7, 8}, {large, 30, 30, 30, 30, 30, 30, 30}, {});
    index.Add(all[i]);
  }
  QVVseprFingerprint query;
  query.Setup({1, 2}, {300, 1}, {});
  ExpectNearestOfSort(index, all, query);
  ExpectNearestOfSort(index, all, all[50]);
}

// Real molecules have the features, the sizes and the ties that bounds meet in use.
TEST(VseprIndex, FindsTheNearestRealMolecules) {
  std::ifstream file(QVSTATS_RDKIT_DATA "/Data/NCI/first_5K.smi");
  if (!file) GTEST_SKIP() << "no rdkit-data";
  std::vector<QVVseprFingerprint> all;
  QVVseprIndex index;
  std::size_t ties = 0;
  for (std::string line; all.size() < 2000 && std::getline(file, line);) {
    QVGraphMol mol;
    if (!QVChem::QVParseSmiles(mol, line.substr(0, line.find_first_of(" \t")))) continue;
    all.emplace_back(mol, QVVseprOptions());
    index.Add(all.back());
  }
  ASSERT_EQ(all.size(), 2000U);
  for (std::size_t n = 0; n < all.size(); n += 83) {
    ExpectNearestOfSort(index, all, all[n]);
    const auto nearest = index.FindNearest(all[n], 101, false);
    ties += nearest[99].distance == nearest[100].distance;
  }
  EXPECT_GT(ties, 0U);  // a tie at the end is where an order could go wrong
}

TEST(Vsepr, PreparedMoleculesCompareByTheirFingerprints) {
  QVGraphMol a = Mol("CCO");
  QVGraphMol b = Mol("CCCO");
  EXPECT_EQ(QVGetVseprTanimoto(a, b, -1.0), -1.0);
  QVPrepVsepr(a, QVVseprOptions());
  QVPrepVsepr(b, QVVseprOptions());
  EXPECT_EQ(QVGetVseprTanimoto(a, b, -1.0), Vsepr("CCO").GetTanimoto(Vsepr("CCCO")));
  QVPrepVsepr(b, Paths(1));
  EXPECT_EQ(QVGetVseprTanimoto(a, b, -1.0), Vsepr("CCO").GetTanimoto(Vsepr("CCCO", Paths(1))));
}

TEST(FingerPrint, EveryTypeTellsMoleculesApart) {
  for (unsigned int type = 1; type < QVFPType::Count; ++type) {
    SCOPED_TRACE(QVFPType::TypeName[type]);
    EXPECT_EQ(QVGetFPTypeFromName(QVFPType::TypeName[type]), type);
    QVFingerPrint aspirin;
    QVFingerPrint same;
    QVFingerPrint caffeine;
    ASSERT_TRUE(QVMakeFP(aspirin, Mol("CC(=O)Oc1ccccc1C(=O)O"), type, false));
    ASSERT_TRUE(QVMakeFP(same, Mol("OC(=O)c1ccccc1OC(C)=O"), type, false));
    ASSERT_TRUE(QVMakeFP(caffeine, Mol("Cn1cnc2c1c(=O)n(C)c(=O)n2C"), type, false));
    EXPECT_EQ(aspirin.GetType(), type);
    EXPECT_EQ(aspirin, same);
    EXPECT_EQ(QVTanimoto(aspirin, same), 1.0F);
    EXPECT_LT(QVTanimoto(aspirin, caffeine), 0.7F);
    EXPECT_EQ(QVTanimoto(aspirin, caffeine), QVTanimoto(caffeine, aspirin));
  }
}

// Tanimoto coefficients of aspirin and salicylic acid by RDKit's Python interface, 2022.09.
TEST(FingerPrint, AgreesWithTheToolkit) {
  const std::pair<unsigned int, float> expected[] = {{QVFPType::Path, 75.0F / 128.0F},
                                                     {QVFPType::Circular, 13.0F / 29.0F},
                                                     {QVFPType::CircularCount, 21.0F / 41.0F},
                                                     {QVFPType::StructuralKeys, 17.0F / 23.0F}};
  for (const auto& [type, tanimoto] : expected) {
    QVFingerPrint a;
    QVFingerPrint b;
    ASSERT_TRUE(QVMakeFP(a, Mol("CC(=O)Oc1ccccc1C(=O)O"), type, false));
    ASSERT_TRUE(QVMakeFP(b, Mol("OC(=O)c1ccccc1O"), type, false));
    EXPECT_EQ(QVTanimoto(a, b), tanimoto) << QVFPType::TypeName[type];
  }
}

TEST(FingerPrint, RefusesUnknownTypesAndEmptyMolecules) {
  QVFingerPrint fp;
  EXPECT_FALSE(QVMakeFP(fp, Mol("CCO"), QVFPType::Unknown, false));
  EXPECT_FALSE(QVMakeFP(fp, Mol("CCO"), QVFPType::Count, false));
  EXPECT_FALSE(QVMakeFP(fp, QVGraphMol(), QVFPType::Path, false));
  EXPECT_EQ(QVGetFPTypeFromName("circular"), QVFPType::Circular);
  EXPECT_EQ(QVGetFPTypeFromName("round"), QVFPType::Unknown);
  QVFingerPrint path;
  ASSERT_TRUE(QVMakeFP(path, Mol("CCO"), QVFPType::Path, false));
  const QVSystem::QVScopedRecordingSink sink;
  EXPECT_EQ(QVTanimoto(fp, path), 0.0F);
  EXPECT_THAT(sink.GetTexts(QVSystem::QVErrorLevel::Error), testing::SizeIs(1));
}

}  // namespace
