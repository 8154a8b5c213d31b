#include "platform/chem/mcs_search.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <set>

#include "platform/chem/smiles.h"
#include "platform/system/error_handler.h"

namespace QVChem {
namespace {

QVGraphMol Mol(const std::string& smiles) {
  QVGraphMol mol;
  EXPECT_TRUE(QVParseSmiles(mol, smiles)) << smiles;
  return mol;
}

unsigned int CountCommon(const QVMolBase& a, const QVMolBase& b,
                         unsigned int atomMatch = QVMCSAtomMatch::Default) {
  QVMCSSearch search;
  search.Init(a, atomMatch);
  const auto match = search.Match(b);
  return match ? match->GetNumAtoms() : 0;
}

bool AtomsMatch(const QVAtomBase& a, const QVAtomBase& b) {
  return a.GetElement() == b.GetElement() && a.IsAromatic() == b.IsAromatic() &&
         a.IsInRing() == b.IsInRing();
}

/// 0 for no bond, otherwise a number that is equal for matching bonds.
int BondCode(const QVMolBase& mol, unsigned int i, unsigned int j) {
  const QVBondBase bond = mol.GetBond(mol.GetAtom(i), mol.GetAtom(j));
  if (!bond.IsValid()) return 0;
  return 1 + 2 * (bond.IsAromatic() ? 9 : static_cast<int>(bond.GetOrder())) + bond.IsInRing();
}

using Map = std::vector<std::pair<unsigned int, unsigned int>>;

bool Extends(const QVMolBase& a, const QVMolBase& b, const Map& map, unsigned int i,
             unsigned int j) {
  if (!AtomsMatch(a.GetAtom(i), b.GetAtom(j))) return false;
  bool connected = map.empty();
  for (const auto& [p, q] : map) {
    const int code = BondCode(a, i, p);
    if (p == i || q == j || code != BondCode(b, j, q)) return false;
    connected = connected || code != 0;
  }
  return connected;
}

/// Grows every connected map in every way; visits each set of pairs once.
void GrowAll(const QVMolBase& a, const QVMolBase& b, Map& map, std::set<Map>& seen,
             std::size_t& largest) {
  largest = std::max(largest, map.size());
  for (unsigned int i = 0; i < a.GetNumAtoms(); ++i)
    for (unsigned int j = 0; j < b.GetNumAtoms(); ++j) {
      if (!Extends(a, b, map, i, j)) continue;
      Map grown = map;
      grown.emplace_back(i, j);
      std::sort(grown.begin(), grown.end());
      if (seen.insert(grown).second) GrowAll(a, b, grown, seen, largest);
    }
}

const char* const kMolecules[] = {
    "CCO",       "CC(C)(C)O",  "C1CCCCC1", "CCCCCC",   "c1ccccc1",    "Cc1ccncc1",  "OC1CC1C(=O)N",
    "FC(F)(F)C", "C1CC1C1CC1", "N#CC=CC",  "CSC(=O)C", "CC.OCC(=O)O", "c1ccsc1C=O", "C1CC2CC1C2"};

TEST(MCSSearch, IsAsLargeAsAnyMapThatCanBeGrown) {
  for (const char* first : kMolecules)
    for (const char* second : kMolecules) {
      const QVGraphMol a = Mol(first), b = Mol(second);
      Map map;
      std::set<Map> seen;
      std::size_t largest = 0;
      GrowAll(a, b, map, seen, largest);
      EXPECT_EQ(CountCommon(a, b), largest) << first << " in " << second;
    }
}

TEST(MCSSearch, ReturnsAMapThatHolds) {
  const QVGraphMol a = Mol("N#Cc1cc(S(=O)(=O)Nc2cccs2)ccc1Oc1ccccc1-c1ccccc1");
  const QVGraphMol b = Mol("Cn1ncnc1-c1cc(Cl)ccc1Oc1ccc(S(=O)(=O)Nc2nccs2)cc1F");
  QVMCSSearch search;
  ASSERT_TRUE(search.Init(a));
  const auto match = search.Match(b);
  ASSERT_TRUE(match);
  Map ordered;  // in an order in which each pair touches those before it
  Map left = match->GetAtomPairs();
  while (!left.empty()) {
    const auto next = std::find_if(left.begin(), left.end(), [&](const auto& pair) {
      return Extends(a, b, ordered, pair.first, pair.second);
    });
    ASSERT_NE(next, left.end());
    ordered.push_back(*next);
    left.erase(next);
  }
  EXPECT_GE(ordered.size(), 20u);
  EXPECT_EQ(CountCommon(b, a), ordered.size());
}

TEST(MCSSearch, FollowsItsMatchOptions) {
  EXPECT_EQ(CountCommon(Mol("CCO"), Mol("CCS")), 2u);
  EXPECT_EQ(CountCommon(Mol("CCO"), Mol("CCS"), QVMCSAtomMatch::Aromaticity), 3u);
  EXPECT_EQ(CountCommon(Mol("CCO"), Mol("[Na+]")), 0u);
  EXPECT_EQ(CountCommon(Mol("CCO"), QVGraphMol()), 0u);
}

TEST(MCSSearch, WorksBeyondAWordOfAtoms) {
  const QVGraphMol longer = Mol(std::string(150, 'C') + "O"), shorter = Mol(std::string(90, 'C'));
  EXPECT_EQ(CountCommon(longer, shorter), 90u);
  QVSystem::QVScopedRecordingSink sink;
  QVMCSSearch search;
  EXPECT_FALSE(search.Init(Mol(std::string(1025, 'C'))));
  EXPECT_EQ(sink.GetTexts(QVSystem::QVErrorLevel::Error).size(), 1u);
}

TEST(MCSSearch, KeepsToItsTime) {
  // Two cages of equal atoms: far too many maps to try them all.
  const QVGraphMol a = Mol("C12C3C4C1C5C2C3C45CC67C8C9C6C%10C7C8C9%10"),
                   b = Mol("C1CC2CCC3CCC4CCC5CCC1C6C2C3C4C56");
  QVMCSSearch search;
  search.SetTimeBudget(1e-9);
  search.Init(a);
  EXPECT_TRUE(search.Match(b));
  EXPECT_TRUE(search.WasTimeSpent());
}

}  // namespace
}  // namespace QVChem
