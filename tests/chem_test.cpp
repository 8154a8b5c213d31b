#include <gmock/gmock.h>

#include <array>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "platform/chem/mol.h"
#include "platform/chem/mol_functions.h"
#include "platform/chem/smiles.h"
#include "platform/system/error_handler.h"
#include "tests/support/matchers.h"

namespace QVChem {
namespace {

using testing::ElementsAre;

QVGraphMol Parse(const std::string& smiles, const QVMolParseOptions& options = {}) {
  QVGraphMol mol;
  std::string error;
  EXPECT_TRUE(QVParseSmiles(mol, smiles, error, options)) << smiles << ": " << error;
  return mol;
}

TEST(Smiles, AtomsAndBondsAreWhatTheTextSays) {
  const QVGraphMol mol = Parse("C[N+](C)(C)Cc1ccc(cc1)C(=O)[O-]");
  ASSERT_EQ(mol.GetNumAtoms(), 14u);
  const QVAtomBase nitrogen = mol.GetAtom(1);
  // A symbol stays what it is when the next one is asked for.
  const char* const symbol = nitrogen.GetSymbol();
  EXPECT_STREQ(mol.GetAtom(0).GetSymbol(), "C");
  EXPECT_STREQ(symbol, "N");
  EXPECT_EQ(nitrogen.GetFormalCharge(), 1);
  EXPECT_EQ(nitrogen.GetDegree(), 4u);
  EXPECT_EQ(nitrogen.GetNumHydrogens(), 0u);
  EXPECT_EQ(nitrogen.GetHybridization(), QVHybridization::SP3);
  const QVAtomBase ring = mol.GetAtom(6);
  EXPECT_TRUE(ring.IsAromatic() && ring.IsInRingOfSize(6) && !ring.IsInRingOfSize(5));
  EXPECT_EQ(ring.GetNumHydrogens(), 1u);
  EXPECT_EQ(ring.GetValence(), 4u);

  std::vector<unsigned int> neighbors;
  for (const QVAtomBase& neighbor : mol.GetAtom(11).GetNeighbors())
    neighbors.push_back(neighbor.GetIndex());
  EXPECT_THAT(neighbors, testing::UnorderedElementsAre(8u, 12u, 13u));
  EXPECT_EQ(mol.GetBond(mol.GetAtom(11), mol.GetAtom(12)).GetOrder(), QVBondOrder::Double);
  EXPECT_EQ(mol.GetBond(mol.GetAtom(5), mol.GetAtom(6)).GetOrder(), QVBondOrder::Aromatic);
  EXPECT_FALSE(mol.GetBond(mol.GetAtom(0), mol.GetAtom(5)).IsValid());
  unsigned int inRing = 0;
  for (const QVBondBase& bond : mol.GetBonds()) inRing += bond.IsInRing() ? 1 : 0;
  EXPECT_EQ(inRing, 6u);
}

// The same centre written from two sides; the tag counts a hydrogen that is no atom as last.
TEST(Smiles, StereochemistryIsSeenFromTheNeighborsInTheirOrder) {
  const QVGraphMol second = Parse("C[C@H](N)O");
  EXPECT_EQ(second.GetAtom(1).GetStereo(), QVTetrahedralStereo::CounterClockwise);
  const QVGraphMol first = Parse("[C@H](C)(N)O");
  EXPECT_EQ(first.GetAtom(0).GetStereo(), QVTetrahedralStereo::Clockwise);
  EXPECT_EQ(Parse("N[C@@H](C)C(=O)O").GetAtom(1).GetCIP(), 'S');  // L-alanine
  EXPECT_EQ(Parse("NC(C)C(=O)O").GetAtom(1).GetCIP(), '\0');

  const QVGraphMol trans = Parse("C/C=C/C");
  const QVBondBase bond = trans.GetBond(1);
  EXPECT_EQ(bond.GetStereo(), QVDoubleBondStereo::Trans);
  EXPECT_EQ(bond.GetCIP(), 'E');
  QVAtomBase left, right;
  ASSERT_TRUE(bond.GetStereoAtoms(left, right));
  EXPECT_EQ(left.GetIndex(), 0u);
  EXPECT_EQ(right.GetIndex(), 3u);
  EXPECT_EQ(Parse("C/C=C\\C").GetBond(1).GetStereo(), QVDoubleBondStereo::Cis);
  EXPECT_EQ(Parse("CC=CC").GetBond(1).GetStereo(), QVDoubleBondStereo::None);
}

struct BadSmiles {
  const char* smiles;
  const char* error;
};

TEST(Smiles, WhatIsNoneIsRefusedWithItsReason) {
  const BadSmiles cases[] = {
      {"", "empty SMILES"},
      {"CC(", "unclosed '(' at character 3"},
      {"CC)C", "')' without '(' at character 3"},
      {"C1CC", "unclosed ring 1 at character 2"},
      {"C%12CC", "unclosed ring 12 at character 2"},
      {"C[NH2", "unclosed '[' at character 2"},
      {"CQC", "unknown atom 'Q' at character 2"},
      {"C C", "character 2 is a blank (0x20)"},
      {"C\xc3\xa9", "character 2 is not allowed (0xC3)"},
      {"C=#C", "not a SMILES"},
      {"C(C)(C)(C)(C)C", "Explicit valence for atom # 0 C, 5, is greater than permitted"},
  };
  for (const BadSmiles& row : cases) {
    QVGraphMol mol = Parse("CC");
    std::string error;
    EXPECT_FALSE(QVParseSmiles(mol, row.smiles, error)) << row.smiles;
    EXPECT_EQ(error, row.error) << row.smiles;
    EXPECT_TRUE(mol.IsEmpty());
  }
}

TEST(Smiles, CanonicalTextDoesNotDependOnTheOrderOfAtoms) {
  EXPECT_EQ(QVCreateSmiles(Parse("OC(=O)c1ccccc1")), QVCreateSmiles(Parse("c1cccc(C(O)=O)c1")));
  EXPECT_EQ(QVCreateSmiles(Parse("N[C@@H](C)O"), {true, false}), "CC(N)O");
  EXPECT_EQ(QVCreateSmiles(QVGraphMol()), "");
}

TEST(Mol, CopiesShareTheChemistryAndOwnTheirData) {
  QVGraphMol mol = Parse("CCO");
  mol.SetTitle("ethanol");
  mol.SetSDData("logP", "-0.3");
  mol.SetData("weight", 46.0);
  mol.GetAtomData(mol.GetAtom(2)).SetData("share", 0.5);
  const std::unique_ptr<QVMolBase> copy(mol.CreateCopy());
  mol.SetSDData("logP", "1");
  mol.SetData("weight", 1.0);
  mol.SetTitle("");
  EXPECT_EQ(copy->GetTitle(), "ethanol");
  EXPECT_EQ(copy->GetSDData("logP"), "-0.3");
  EXPECT_EQ(copy->GetData<double>("weight"), 46.0);
  EXPECT_EQ(*copy->GetAtom(2).GetDataHolder().FindData<double>("share"), 0.5);
  EXPECT_FALSE(copy->GetAtom(1).GetDataHolder().HasData("share"));
  EXPECT_EQ(&copy->GetAtom(0).GetParent(), copy.get());
}

TEST(Mol, SDDataKeepsItsOrder) {
  QVGraphMol mol;
  for (const char* tag : {"b", "a", "c"}) mol.SetSDData(tag, tag);
  mol.SetSDData("a", "again");
  EXPECT_TRUE(mol.DeleteSDData("b"));
  EXPECT_FALSE(mol.DeleteSDData("b"));
  std::vector<std::string> values;
  for (const QVSDDataPair& pair : mol.GetSDDataPairs()) values.push_back(pair.value);
  EXPECT_THAT(values, ElementsAre("again", "c"));
  EXPECT_EQ(mol.GetSDData("b"), "");
}

TEST(Mol, IndicesPastTheEndAreFatalAndSafe) {
  QVSystem::QVScopedRecordingSink sink;
  QVGraphMol mol = Parse("CC");
  EXPECT_FALSE(mol.GetAtom(2).IsValid());
  EXPECT_FALSE(mol.GetBond(1).IsValid());
  mol.GetAtomData(QVAtomBase(&mol, 2));
  QVMCMol many;
  many.GetConformer(0);
  EXPECT_EQ(sink.GetTexts(QVSystem::QVErrorLevel::Fatal).size(), 4u);
}

TEST(MCMol, ConformersShareOneConnectionTable) {
  QVGraphMol first = Parse("CCO");
  first.SetCoordinates({{0, 0, 0}, {1, 0, 0}, {1, 1, 1}});
  first.SetTitle("ethanol");
  first.SetSDData("energy", "1");
  QVGraphMol second = Parse("CCO");
  second.SetCoordinates({{0, 0, 0}, {1, 0, 0}, {1, 1, -1}});
  QVMCMol many;
  ASSERT_TRUE(many.AddConformer(first));
  ASSERT_TRUE(many.AddConformer(second));
  EXPECT_FALSE(many.AddConformer(Parse("OCC")));
  EXPECT_EQ(many.GetNumConformers(), 2u);
  EXPECT_EQ(many.GetTitle(), "ethanol");
  EXPECT_FALSE(many.HasSDData("energy"));
  EXPECT_EQ(many.GetActiveConformer().GetSDData("energy"), "1");
  EXPECT_EQ(many.GetCoordinates()[2].z, 1.0);
  ASSERT_TRUE(many.SetActiveConformer(1));
  EXPECT_EQ(many.GetCoordinates()[2].z, -1.0);
  EXPECT_FALSE(many.SetActiveConformer(2));

  const QVMCMol copy(static_cast<const QVMolBase&>(many));
  EXPECT_EQ(copy.GetActiveConformerIndex(), 1u);
  const QVMCMol single{static_cast<const QVMolBase&>(first)};
  EXPECT_EQ(single.GetNumConformers(), 1u);
  EXPECT_EQ(single.GetSDData("energy"), "1");
}

TEST(Mol, ReadingAndParsingRunInParallel) {
  const QVGraphMol shared = Parse("C[C@@H](N)C(=O)Oc1ccc(Cl)cc1");
  const std::string expected = QVCreateSmiles(shared);
  std::array<std::string, 4> results;
  std::vector<std::thread> threads;
  for (std::string& result : results)
    threads.emplace_back([&] {
      for (int i = 0; i < 50; ++i) {
        const QVGraphMol copy(shared);
        unsigned int hydrogens = 0;
        for (const QVAtomBase& atom : copy.GetAtoms()) hydrogens += atom.GetNumHydrogens();
        QVGraphMol parsed;
        QVParseSmiles(parsed, expected);
        result = QVCreateSmiles(i % 2 == 0 ? parsed : shared) + std::to_string(hydrogens);
      }
    });
  for (std::thread& thread : threads) thread.join();
  for (const std::string& result : results) EXPECT_EQ(result, expected + "10");
}

// Weights from the standard atomic weights of IUPAC (abridged, 2021).
TEST(MolFunctions, MolecularWeightCountsHydrogensOnce) {
  EXPECT_NEAR(QVCalculateMolecularWeight(Parse("CCO"), false), 46.069, 2e-3);
  EXPECT_NEAR(QVCalculateMolecularWeight(Parse("[H]OC([H])([H])C"), false), 46.069, 2e-3);
  EXPECT_NEAR(QVCalculateMolecularWeight(Parse("[2H]O[2H]"), false), 18.015, 2e-3);
  EXPECT_NEAR(QVCalculateMolecularWeight(Parse("[2H]O[2H]"), true), 20.027, 2e-3);
  EXPECT_EQ(QVCalculateMolecularWeight(QVGraphMol()), 0.0);
}

TEST(MolFunctions, SuppressedHydrogensTakeTheirCoordinatesWithThem) {
  QVGraphMol mol = Parse("[H]C([H])([2H])[C@@]([H])(N([H])C)O[H]");
  const unsigned int all = mol.GetNumAtoms();
  std::vector<QVPoint3> points(all);
  for (unsigned int i = 0; i < all; ++i) points[i].x = i;
  ASSERT_TRUE(mol.SetCoordinates(points));
  mol.GetAtomData(mol.GetAtom(4)).SetData("tag", 4);
  const std::string smiles = QVCreateSmiles(Parse(QVCreateSmiles(mol), {true}));

  QVGraphMol bare(mol);
  ASSERT_TRUE(QVSuppressHydrogens(bare));
  EXPECT_EQ(QVCreateSmiles(bare), smiles);
  EXPECT_EQ(bare.GetNumAtoms(), 6u);  // the deuterium stays
  std::vector<double> kept;
  for (const QVAtomBase& atom : bare.GetAtoms()) kept.push_back(atom.GetCoordinates().x);
  EXPECT_THAT(kept, ElementsAre(1, 3, 4, 6, 8, 9));
  EXPECT_EQ(bare.GetAtom(2).GetDataHolder().GetData<int>("tag"), 4);
  EXPECT_NE(bare.GetAtom(2).GetCIP(), '\0');

  const auto countAfter = [&](bool keepPolar, bool keepStereo, bool keepIsotopes) {
    QVGraphMol copy(mol);
    QVSuppressHydrogens(copy, keepPolar, keepStereo, keepIsotopes);
    return copy.GetNumAtoms();
  };
  EXPECT_EQ(countAfter(false, false, false), 5u);
  EXPECT_EQ(countAfter(true, false, false), 7u);
  EXPECT_EQ(countAfter(false, true, true), 7u);
  QVGraphMol hydrogen = Parse("[H][H]");
  EXPECT_TRUE(QVSuppressHydrogens(hydrogen));
  EXPECT_EQ(hydrogen.GetNumAtoms(), 2u);
}

TEST(MolFunctions, RadiiAreThoseOfBondi) {
  QVGraphMol mol = Parse("C[N+](C)(C)CCl");
  EXPECT_EQ(mol.GetAtom(0).GetRadius(), 0.0);
  QVAssignBondiVdWRadii(mol);
  EXPECT_THAT(mol.GetRadii(), ElementsAre(1.70, 1.55, 1.70, 1.70, 1.70, 1.75));
}

}  // namespace
}  // namespace QVChem
