#include "stats/api/mol_properties.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/chem/smiles.h"
#include "platform/likeness/fingerprint.h"
#include "platform/likeness/vsepr.h"
#include "platform/system/error_handler.h"
#include "stats/api/krige_distfxns.h"
#include "tests/support/matchers.h"

namespace QVStats {
namespace {

using QVChem::QVGraphMol;
using QVChem::QVMCMol;
using QVChem::QVMolBase;
using QVSystem::QVErrorLevel;
using testing::ElementsAre;

QVGraphMol Parse(const std::string& smiles) {
  QVGraphMol mol;
  EXPECT_TRUE(QVChem::QVParseSmiles(mol, smiles)) << smiles;
  return mol;
}

TEST(MolProperties, SDDataCountsWhenItIsANumber) {
  QVGraphMol mol = Parse("CC");
  const QVSCMolGetSDData fxn("x");
  EXPECT_FALSE(fxn.Has(mol));
  for (const char* text : {"", "n/a", "7.2 kcal", "7,2", "nan", "inf", "> 7"}) {
    mol.SetSDData("x", text);
    EXPECT_FALSE(fxn.Has(mol)) << text;
    EXPECT_FALSE(QVSCMolGetTagged("x").Has(mol)) << text;
  }
  mol.SetSDData("x", " 7.2 ");
  EXPECT_TRUE(fxn.Has(mol));
  EXPECT_EQ(fxn.Get(mol), 7.2);
  EXPECT_EQ(QVSCMolGetTagged("x").Get(mol), 7.2);
}

TEST(MolProperties, GenericDataCountsByItsType) {
  QVGraphMol mol = Parse("CC");
  const QVSCMolGetGenericData strict("x", false);
  const QVSCMolGetGenericData convert("x", true);
  mol.AddData("x", 1);
  mol.AddData("x", std::string("2"));
  EXPECT_FALSE(convert.Has(mol));
  mol.AddData("x", 0.1F);
  EXPECT_FALSE(strict.Has(mol));
  EXPECT_EQ(convert.Get(mol), static_cast<double>(0.1F));
  mol.AddData("x", 4.0);
  mol.AddData("x", 5.0);
  EXPECT_EQ(strict.Get(mol), 4.0);
  EXPECT_EQ(convert.Get(mol), 4.0);
  EXPECT_EQ(QVSCMolGetTagged("x").Get(mol), 4.0);
  mol.SetSDData("x", "6");
  EXPECT_EQ(QVSCMolGetTagged("x").Get(mol), 6.0);
}

TEST(MolProperties, ConformersAreAskedInTheirTurn) {
  QVMCMol mol(static_cast<const QVMolBase&>(Parse("CC")));
  for (int i = 0; i < 2; ++i) mol.AddConformer(Parse("CC"));
  mol.GetConformer(1).SetSDData("x", "1");
  mol.GetConformer(2).SetSDData("x", "2");
  EXPECT_FALSE(QVMCMolGetSDData("x", true, false).Has(mol));
  EXPECT_EQ(QVMCMolGetTagged("x", true, true).Get(mol), 1.0);
  mol.SetActiveConformer(2);
  EXPECT_EQ(QVMCMolGetSDData("x", true, true).Get(mol), 2.0);
  EXPECT_EQ(QVMCMolGetSDData("x", false, true).Get(mol), 1.0);
  EXPECT_FALSE(QVMCMolGetSDData("x", false, false).Has(mol));
  mol.SetData("x", 3.0F);
  EXPECT_EQ(QVMCMolGetGenericData("x", true, true).Get(mol), 3.0);
  mol.SetSDData("x", "4");
  EXPECT_EQ(QVMCMolGetTagged("x", true, true).Get(mol), 4.0);
}

TEST(MolProperties, LogarithmNeedsAPositiveNumber) {
  const QVMolLog10PropertyFxn fxn{QVMolecularWeightPropertyFxn()};
  const std::unique_ptr<QVChem::QVMolPropertyFxn> copy(fxn.CreateCopy());
  EXPECT_NEAR(copy->Get(Parse("CCO")), 1.66341, 1e-5);  // log10 of 46.069
  const QVGraphMol none;                                // weighs nothing
  EXPECT_FALSE(fxn.Has(none));
}

TEST(MolProperties, ReadingWhatIsNotThereIsFatalAndSafe) {
  const QVSystem::QVScopedRecordingSink sink;
  const QVGraphMol mol = Parse("CC");
  const QVMCMol many{static_cast<const QVMolBase&>(mol)};
  EXPECT_EQ(QVSCMolGetSDData("x").Get(mol), QVNoPropertyValue);
  EXPECT_EQ(QVSCMolGetGenericData("x", true).Get(mol), QVNoPropertyValue);
  EXPECT_EQ(QVSCMolGetTagged("x").Get(mol), QVNoPropertyValue);
  EXPECT_EQ(QVMCMolGetTagged("x", true, true).Get(many), QVNoPropertyValue);
  EXPECT_EQ(QVMolLog10PropertyFxn(QVMolecularWeightPropertyFxn()).Get(QVGraphMol()),
            QVNoPropertyValue);
  EXPECT_EQ(QVSCMolPropertyList().GetProperty(mol, 0), QVNoPropertyValue);
  const auto texts = sink.GetTexts(QVErrorLevel::Fatal);
  EXPECT_EQ(texts.size(), 6u);
  EXPECT_THAT(texts[1], testing::MatchesRegex(
                            "Assertion failed at line [0-9]+ of stats/mol_properties.cpp.\n"));
}

TEST(MolPropertyList, PreparedMoleculesAnswerFromTheirCache) {
  QVGraphMol mol = Parse("CCO");
  QVSCMolPropertyList list("cache");
  EXPECT_TRUE(list.PrepMol(mol));  // nothing to do
  EXPECT_FALSE(mol.HasData("cache"));
  list.PushTag("logP");
  list.Push(QVMolecularWeightPropertyFxn());
  EXPECT_FALSE(list.PrepMol(mol));
  EXPECT_FALSE(mol.HasData("cache"));
  EXPECT_FALSE(list.HasProperties(mol));
  mol.SetSDData("logP", "-0.3");
  ASSERT_TRUE(list.PrepMol(mol));
  EXPECT_THAT(*mol.FindData<std::vector<double>>("cache"),
              ElementsAre(-0.3, IsCloseTo(46.069, 1e-4)));
  mol.SetSDData("logP", "9");
  EXPECT_EQ(list.GetProperty(mol, 0), -0.3);

  const std::unique_ptr<QVSCMolPropertyList> longer(list.CreateCopy());
  longer->PushTag("logP");  // the stored values are those of another list now
  EXPECT_EQ(longer->GetSize(), 3u);
  EXPECT_EQ(longer->GetProperty(mol, 2), 9.0);
  EXPECT_EQ(longer->GetProperty(mol, 0), 9.0);
  EXPECT_EQ(list.GetSize(), 2u);
  list.Clear();
  EXPECT_EQ(list.GetSize(), 0u);
}

TEST(MolPropertyList, SingleAndManyConformersMeetThroughTheCommonInterface) {
  QVGraphMol mol = Parse("CCO");
  mol.SetSDData("x", "5");
  QVMCMol many;
  many.AddConformer(mol);
  QVSCMolPropertyList single;
  single.PushTag("x");
  QVMCMolPropertyList multiple;
  multiple.PushTag("x", true, false);
  for (const QVChem::QVMolPropertyList* list :
       std::vector<const QVChem::QVMolPropertyList*>{&single, &multiple}) {
    EXPECT_TRUE(list->HasProperties(mol));
    EXPECT_EQ(list->GetProperty(mol, 0), 5.0);
  }
  EXPECT_FALSE(single.HasProperties(many));  // the conformer's data is not the molecule's
  EXPECT_EQ(multiple.GetProperty(many, 0), 5.0);
  EXPECT_TRUE(multiple.PrepMol(many));
  EXPECT_TRUE(many.HasData("QVMolPropertyListFxn_PrepMol_Cache"));
}

template <class Distance>
void ExpectBulkAgrees(const Distance& distance, std::vector<QVGraphMol>& mols) {
  const std::unique_ptr<QVBulkDistance<QVMolBase>> bulk(distance.CreateBulkDistance());
  for (const QVGraphMol& mol : mols) bulk->Add(mol);
  std::vector<double> distances(mols.size());
  for (const QVGraphMol& query : mols) {
    bulk->GetDistances(query, distances.data());
    for (std::size_t i = 0; i < mols.size(); ++i) EXPECT_EQ(distances[i], distance(query, mols[i]));
  }
}

std::vector<QVGraphMol> SomeMolecules() {
  std::vector<QVGraphMol> mols;
  for (const char* smiles : {"CCO", "OCC", "CCN", "c1ccccc1O", "CC(=O)Nc1ccc(O)cc1", "O"})
    mols.push_back(Parse(smiles));
  return mols;
}

TEST(KrigeDistance, DefaultIsTheComplementOfTheVseprTanimoto) {
  std::vector<QVGraphMol> mols = SomeMolecules();
  QVDefaultKrigeDistanceOptions options;
  options.SetMaxPathLength(3);
  const QVMolKrigeDefaultDistFxn distance(options);
  for (QVGraphMol& mol : mols) ASSERT_TRUE(distance.PrepMol(mol));
  EXPECT_EQ(distance(mols[0], mols[1]), 0.0);
  EXPECT_EQ(distance(mols[0], mols[2]),
            1.0 - QVLikeness::QVVseprFingerprint(mols[0], options.GetImpl())
                      .GetTanimoto(QVLikeness::QVVseprFingerprint(mols[2], options.GetImpl())));
  const QVSystem::QVScopedRecordingSink sink;
  const std::string error =
      "QVMolKrigeDefaultDistFxn::PrepMol not called on mol passed to "
      "QVMolKrigeDefaultDistFxn::operator()";
  EXPECT_EQ(distance(mols[0], Parse("C")), 1.0);
  EXPECT_THAT(sink.GetTexts(QVErrorLevel::Error), ElementsAre(error));
  mols.insert(mols.begin() + 2, Parse("CCC"));  // one that is not prepared
  ExpectBulkAgrees(distance, mols);
}

TEST(KrigeDistance, LikenessIsTheComplementOfTheFingerprintTanimoto) {
  std::vector<QVGraphMol> mols = SomeMolecules();
  const QVMolKrigeLikenessDistFxn distance(QVLikeness::QVFPType::Circular);
  for (QVGraphMol& mol : mols) ASSERT_TRUE(distance.PrepMol(mol));
  EXPECT_TRUE(mols[0].HasData<QVLikeness::QVFingerPrint>("QVFingerPrint (type 3)"));
  EXPECT_EQ(distance(mols[0], mols[1]), 0.0);
  EXPECT_GT(distance(mols[0], mols[2]), 0.0);
  EXPECT_LE(distance(mols[0], mols[3]), 1.0);
  QVGraphMol none;
  EXPECT_FALSE(distance.PrepMol(none));
  const QVSystem::QVScopedRecordingSink sink;
  EXPECT_EQ(distance(none, mols[0]), 1.0);
  EXPECT_THAT(sink.GetTexts(QVErrorLevel::Error),
              ElementsAre("QVMolKrigeLikenessDistFxn::PrepMol no called on mol passed to "
                          "QVMolKrigeLikenessDistFxn::operator(), or PrepMol failed"));
  mols.push_back(none);
  ExpectBulkAgrees(distance, mols);
}

}  // namespace
}  // namespace QVStats
