/// \file
/// \brief What is drawn of a molecule, without its chemistry: labels, lines, wedges.
#ifndef QV_PLATFORM_DEPICT_INTERNAL_MOLECULE_SCENE_H
#define QV_PLATFORM_DEPICT_INTERNAL_MOLECULE_SCENE_H

#include <memory>
#include <string>
#include <vector>

#include "platform/chem/mol.h"
#include "platform/depict/image.h"

namespace QVDepict {

struct SceneAtom {
  QV2DPoint position;  // in bond lengths, y downwards
  std::string symbol;
  unsigned int element = 0;
  unsigned int hydrogens = 0;
  int charge = 0;
  unsigned int isotope = 0;
  unsigned int radicals = 0;
  std::vector<unsigned int> neighbors;
  bool isLabelled = false;
};

enum class SceneBondKind { Zero, Single, Double, Triple, Quadruple, Aromatic, Dative, Wedge, Hash };

struct SceneBond {
  unsigned int begin = 0;  // the narrow end of a wedge
  unsigned int end = 0;
  SceneBondKind kind = SceneBondKind::Single;
  bool isInRing = false;
  QV2DPoint ringCenter;  // of the ring on whose side the second line of a double bond stands
};

struct MoleculeScene {
  std::vector<SceneAtom> atoms;
  std::vector<SceneBond> bonds;
};

/// Null for a molecule without atoms or coordinates.
std::shared_ptr<const MoleculeScene> MakeScene(const QVChem::QVMolBase& mol);

/// The scene in an image: where its atoms are, and how large a bond is there.
struct PlacedScene {
  const MoleculeScene& scene;
  const std::vector<QV2DPoint>& positions;
  double bondLength;
  double fontSize;
  double lineWidth;
  unsigned int colorStyle;
};

/// A label of one atom, in pieces, and the room it takes.
struct AtomLabel {
  struct Piece {
    std::string text;
    QV2DPoint start;  // of the base line, from the position of the atom
    double size;
    double width;
  };
  std::vector<Piece> pieces;
  /// How far a line from the atom in a direction runs inside the label.
  double GetExtent(double directionX, double directionY, double padding) const;
};

/// Empty for an atom that is drawn without a label.
AtomLabel MakeLabel(const PlacedScene& placed, unsigned int atom);
void DrawLabel(QVImageBase& image, const PlacedScene& placed, unsigned int atom,
               const AtomLabel& label);

/// Draws a bond, cut where the labels of its atoms begin.
void DrawBond(QVImageBase& image, const PlacedScene& placed, const SceneBond& bond,
              const std::vector<AtomLabel>& labels);

/// The colour of bonds and carbon labels in a style.
QVSystem::QVColor GetInkColor(unsigned int colorStyle);

}  // namespace QVDepict

#endif  // QV_PLATFORM_DEPICT_INTERNAL_MOLECULE_SCENE_H
