#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "platform/chem/mol_functions.h"
#include "platform/chem/smiles.h"
#include "platform/depict/property_map.h"

namespace QVDepict {
namespace {

using testing::IsEmpty;
using testing::Lt;
using testing::SizeIs;
using testing::UnorderedElementsAre;

QVChem::QVGraphMol Prepare(const std::string& smiles, unsigned int orientation = 0) {
  QVChem::QVGraphMol mol;
  EXPECT_TRUE(QVChem::QVParseSmiles(mol, smiles)) << smiles;
  EXPECT_TRUE(
      QVPrepareDepiction(mol, QVPrepareDepictionOptions(false, true).SetOrientation(orientation)))
      << smiles;
  return mol;
}

QVImage Draw(const std::string& smiles) {
  QVImage image(200.0, 150.0);
  EXPECT_TRUE(QVRenderMolecule(
      image, QV2DMolDisplay(Prepare(smiles), QV2DMolDisplayOptions(200.0, 150.0))));
  return image;
}

std::vector<std::string> GetTexts(const QVImage& image) {
  std::vector<std::string> texts;
  for (const QVDrawing& drawing : image.GetDrawings())
    if (drawing.kind == QVDrawing::Kind::Text) texts.push_back(drawing.text);
  return texts;
}

std::size_t Count(const QVImage& image, QVDrawing::Kind kind) {
  std::size_t count = 0;
  for (const QVDrawing& drawing : image.GetDrawings()) count += drawing.kind == kind ? 1 : 0;
  return count;
}

TEST(MoleculeLabels, NameWhatIsNotPlainCarbon) {
  const struct {
    const char* smiles;
    std::vector<std::string> pieces;
  } cases[] = {
      {"CCCC", {}},
      {"CO", {"O", "H"}},
      {"C[NH3+]", {"N", "H", "3", "+"}},
      {"[13CH4]", {"C", "13", "H", "4"}},
      {"C[CH2]", {"C", "H", "2", "\xE2\x80\xA2"}},
      {"[Fe+2]", {"Fe", "2+"}},
      {"CC(=O)[O-].[Na+]", {"O", "O", "\xE2\x88\x92", "Na", "+"}},
      {"C=C=C", {"C"}},
      {"[2H]C", {"H", "2"}},
      {"C*", {"R"}},
  };
  for (const auto& row : cases)
    EXPECT_THAT(GetTexts(Draw(row.smiles)), testing::UnorderedElementsAreArray(row.pieces))
        << row.smiles;
}

// A line for each line of a bond.
TEST(MoleculeBonds, HaveAsManyLinesAsTheirOrder) {
  const struct {
    const char* smiles;
    std::size_t lines;
  } cases[] = {{"CC", 1}, {"C=C", 2}, {"C#C", 3}, {"CC=CC", 4}, {"c1ccccc1", 9}, {"c1cc[nH]c1", 7}};
  for (const auto& row : cases)
    EXPECT_EQ(Count(Draw(row.smiles), QVDrawing::Kind::Line), row.lines) << row.smiles;
}

TEST(MoleculeBonds, ShowWhichHandAStereocentreHas) {
  // The two hands have the same layout, so one has a wedge where the other has a hashed bond.
  const QVImage left = Draw("C[C@H](F)Cl");
  const QVImage right = Draw("C[C@@H](F)Cl");
  EXPECT_EQ(Count(left, QVDrawing::Kind::Polygon) + Count(right, QVDrawing::Kind::Polygon), 1u);
  EXPECT_EQ(Count(Draw("CC(F)Cl"), QVDrawing::Kind::Polygon), 0u);
}

TEST(MoleculeBonds, EndBeforeTheLabelsOfTheirAtoms) {
  const QVChem::QVGraphMol mol = Prepare("CO");
  const QV2DMolDisplay display(mol, QV2DMolDisplayOptions(200.0, 150.0));
  QVImage image(200.0, 150.0);
  ASSERT_TRUE(QVRenderMolecule(image, display));
  const QVDrawing& bond = image.GetDrawings().front();
  ASSERT_EQ(bond.kind, QVDrawing::Kind::Line);
  const double drawn =
      std::hypot(bond.points[1].x - bond.points[0].x, bond.points[1].y - bond.points[0].y);
  EXPECT_GT(drawn, 0.5 * display.GetBondLength());
  EXPECT_LT(drawn, 0.85 * display.GetBondLength());
}

TEST(MoleculeDisplay, KeepsEverythingInItsFrame) {
  for (const char* smiles :
       {"O", "CCO", "CC1CCCCCCCCCCCCC(=O)C1", "OC[C@H]1O[C@@H](O)[C@H](O)[C@@H](O)[C@@H]1O",
        "CC(=O)NCCCCCCCCCCCCCCCCCCCCCCCCCCCCCCCCCCCCCCCCCCCCCCCCCCCCCCCCCCCCN"}) {
    const QVImage image = Draw(smiles);
    for (const QVDrawing& drawing : image.GetDrawings())
      for (const QV2DPoint& point : drawing.points) {
        EXPECT_GE(point.x, 0.0) << smiles;
        EXPECT_LE(point.x, 200.0) << smiles;
        EXPECT_GE(point.y, 0.0) << smiles;
        EXPECT_LE(point.y, 150.0) << smiles;
      }
  }
}

TEST(MoleculeDisplay, TurnsToItsOrientation) {
  const auto getAspect = [](unsigned int orientation) {
    const QVChem::QVGraphMol mol = Prepare("c1ccc(cc1)c1ccc(cc1)c1ccccc1", orientation);
    double lowX = 1e9, highX = -1e9, lowY = 1e9, highY = -1e9;
    for (const QVChem::QVPoint3& point : mol.GetCoordinates()) {
      lowX = std::min(lowX, point.x);
      highX = std::max(highX, point.x);
      lowY = std::min(lowY, point.y);
      highY = std::max(highY, point.y);
    }
    return (highX - lowX) / (highY - lowY);
  };
  EXPECT_GT(getAspect(QVDepictOrientation::Horizontal), 3.0);
  EXPECT_LT(getAspect(QVDepictOrientation::Vertical), 1.0 / 3.0);
  const double square = getAspect(QVDepictOrientation::Square);
  EXPECT_GT(square, 0.4);
  EXPECT_LT(square, 2.5);
}

TEST(MoleculeDisplay, KeepsPlaneCoordinatesUnlessAtomsCoincide) {
  QVChem::QVGraphMol mol;
  ASSERT_TRUE(QVChem::QVParseSmiles(mol, "CCO"));
  ASSERT_TRUE(mol.SetCoordinates({{0, 0, 0}, {3, 0, 0}, {3, 3, 0}}));
  ASSERT_TRUE(QVPrepareDepiction(mol));
  EXPECT_EQ(mol.GetCoordinates()[1].x, 3.0);
  ASSERT_TRUE(mol.SetCoordinates({{1, 1, 0}, {1, 1, 0}, {3, 3, 0}}));
  ASSERT_TRUE(QVPrepareDepiction(mol));
  EXPECT_NE(mol.GetCoordinates()[1].x, mol.GetCoordinates()[0].x);
}

TEST(MoleculeDisplay, OfNothingOrWithoutRoomDrawsNothing) {
  QVImage image(100.0, 100.0);
  EXPECT_FALSE(QVRenderMolecule(image, QVChem::QVGraphMol()));
  EXPECT_FALSE(QV2DMolDisplay(QVChem::QVGraphMol(), QV2DMolDisplayOptions(10, 10)).IsValid());
  QVImage tiny(1.0, 1.0);
  EXPECT_FALSE(QVRenderMolecule(tiny, Prepare("CCO")));
  EXPECT_THAT(image.GetDrawings(), IsEmpty());
  EXPECT_THAT(tiny.GetDrawings(), IsEmpty());
}

TEST(PropertyMap, ColoursAtomsBySignAndSize) {
  QVChem::QVGraphMol mol = Prepare("CCO");
  QVChem::QVAssignBondiVdWRadii(mol);
  mol.GetAtomData(mol.GetAtom(0)).SetData<double>("v", 1.0);
  mol.GetAtomData(mol.GetAtom(2)).SetData<double>("v", -0.5);
  QVPropDepict::QV2DPropMap map;
  map.SetMinValue(-1.0).SetMaxValue(1.0).SetLegendLocation(QVPropDepict::QVLegendLocation::Hidden);
  QV2DMolDisplay display(mol, QV2DMolDisplayOptions(200.0, 150.0));
  ASSERT_TRUE(map.Render(display, mol, "v"));
  EXPECT_FALSE(map.Render(display, mol, "no such tag"));
  QVImage image(200.0, 150.0);
  ASSERT_TRUE(QVRenderMolecule(image, display));
  std::vector<QVDrawing> discs;
  for (const QVDrawing& drawing : image.GetDrawings())
    if (drawing.kind == QVDrawing::Kind::Circle) discs.push_back(drawing);
  ASSERT_THAT(discs, SizeIs(2)) << "none for the atom without a value";
  EXPECT_DOUBLE_EQ(discs[1].points[0].x, display.GetAtomPosition(0).x) << "the strongest on top";
  EXPECT_EQ(discs[1].pen.GetFillColor(), map.GetColor(1.0, -1.0, 1.0));
  EXPECT_THAT(discs[0].radius, Lt(discs[1].radius)) << "oxygen is smaller than carbon";
  EXPECT_GT(map.GetColor(-1.0, -1.0, 1.0).GetR(), map.GetColor(-1.0, -1.0, 1.0).GetB());
  EXPECT_EQ(map.GetColor(0.0, -1.0, 1.0), QVSystem::QVWhite);
}

TEST(PropertyMap, MakesRoomForItsLegend) {
  QVChem::QVGraphMol mol = Prepare("CCO");
  mol.GetAtomData(mol.GetAtom(0)).SetData<double>("v", 2.5);
  QV2DMolDisplay display(mol, QV2DMolDisplayOptions(200.0, 150.0));
  const double before = display.GetAtomPosition(0).x;
  ASSERT_TRUE(QVPropDepict::QV2DPropMap().Render(display, mol, "v"));
  EXPECT_LT(display.GetAtomPosition(0).x, before);
  QVImage image(200.0, 150.0);
  ASSERT_TRUE(QVRenderMolecule(image, display));
  EXPECT_THAT(GetTexts(image), UnorderedElementsAre("O", "H", "0", "2.5"));
}

}  // namespace
}  // namespace QVDepict
