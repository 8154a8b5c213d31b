#include "platform/depict/internal/molecule_scene.h"

#include <GraphMol/Depictor/RDDepictor.h>
#include <GraphMol/FileParsers/MolFileStereochem.h>
#include <GraphMol/GraphMol.h>
#include <GraphMol/MolOps.h>

#include <algorithm>
#include <cmath>
#include <exception>
#include <limits>

#include "platform/chem/internal/rdkit_mol.h"
#include "platform/chem/mol_functions.h"
#include "platform/depict/molecule_display.h"

namespace QVDepict {
namespace {

constexpr double kUsualBondLength = 1.5;

/// The median distance of bonded atoms.
double GetTypicalBondLength(const RDKit::ROMol& mol, const RDKit::Conformer& conformer) {
  std::vector<double> lengths;
  for (const RDKit::Bond* bond : mol.bonds())
    lengths.push_back((conformer.getAtomPos(bond->getBeginAtomIdx()) -
                       conformer.getAtomPos(bond->getEndAtomIdx()))
                          .length());
  if (lengths.empty()) return kUsualBondLength;
  const auto middle = lengths.begin() + static_cast<std::ptrdiff_t>(lengths.size() / 2);
  std::nth_element(lengths.begin(), middle, lengths.end());
  return *middle > 1e-6 ? *middle : kUsualBondLength;
}

bool HasUsablePlaneCoordinates(const QVChem::QVMolBase& mol) {
  if (!mol.HasCoordinates() || mol.Is3D()) return false;
  double shortest = std::numeric_limits<double>::infinity();
  double longest = 0.0;
  const auto& points = mol.GetCoordinates();
  for (std::size_t i = 0; i < points.size(); ++i)
    for (std::size_t j = 0; j < i; ++j) {
      const double distance = std::hypot(points[i].x - points[j].x, points[i].y - points[j].y);
      shortest = std::min(shortest, distance);
      longest = std::max(longest, distance);
    }
  return points.size() == 1 || shortest > 1e-3 * longest;
}

/// The measure that an orientation wants small, of the points turned by an angle.
double GetCost(const std::vector<QVChem::QVPoint3>& points, double angle,
               unsigned int orientation) {
  const double cosine = std::cos(angle);
  const double sine = std::sin(angle);
  double lowX = std::numeric_limits<double>::infinity();
  double lowY = lowX;
  double highX = -lowX;
  double highY = -lowX;
  for (const QVChem::QVPoint3& point : points) {
    const double x = cosine * point.x - sine * point.y;
    const double y = sine * point.x + cosine * point.y;
    lowX = std::min(lowX, x);
    highX = std::max(highX, x);
    lowY = std::min(lowY, y);
    highY = std::max(highY, y);
  }
  const double width = highX - lowX;
  const double height = highY - lowY;
  switch (orientation) {
    case QVDepictOrientation::Square:
      return std::max(width, height);
    case QVDepictOrientation::Horizontal:
      return height - 0.01 * width;
    case QVDepictOrientation::Vertical:
      return width - 0.01 * height;
    default:
      return 0.0;
  }
}

void Orient(std::vector<QVChem::QVPoint3>& points, unsigned int orientation) {
  constexpr int kSteps = 12;  // a half turn changes nothing, but the first best is kept
  double bestAngle = 0.0;
  double lowest = GetCost(points, 0.0, orientation);
  for (int step = 1; step < kSteps / 2; ++step) {
    const double angle = 2.0 * M_PI * step / kSteps;
    const double cost = GetCost(points, angle, orientation);
    // Only a gain that can be seen is worth leaving the usual orientation.
    if (cost >= lowest - 0.1) continue;
    lowest = cost;
    bestAngle = angle;
  }
  const double cosine = std::cos(bestAngle);
  const double sine = std::sin(bestAngle);
  for (QVChem::QVPoint3& point : points)
    point = {cosine * point.x - sine * point.y, sine * point.x + cosine * point.y, 0.0};
}

SceneBondKind GetKind(const RDKit::Bond& bond) {
  if (bond.getBondDir() == RDKit::Bond::BEGINWEDGE) return SceneBondKind::Wedge;
  if (bond.getBondDir() == RDKit::Bond::BEGINDASH) return SceneBondKind::Hash;
  switch (bond.getBondType()) {
    case RDKit::Bond::DOUBLE:
      return SceneBondKind::Double;
    case RDKit::Bond::TRIPLE:
      return SceneBondKind::Triple;
    case RDKit::Bond::QUADRUPLE:
      return SceneBondKind::Quadruple;
    case RDKit::Bond::AROMATIC:
      return SceneBondKind::Aromatic;
    case RDKit::Bond::DATIVE:
      return SceneBondKind::Dative;
    case RDKit::Bond::ZERO:
    case RDKit::Bond::HYDROGEN:
      return SceneBondKind::Zero;
    default:
      return SceneBondKind::Single;
  }
}

SceneAtom MakeAtom(const RDKit::Atom& atom, const RDGeom::Point3D& position, double bondLength) {
  SceneAtom made;
  made.position = {position.x / bondLength, -position.y / bondLength};
  made.element = static_cast<unsigned int>(atom.getAtomicNum());
  made.symbol = made.element == 0 ? "R" : atom.getSymbol();
  made.hydrogens = atom.getTotalNumHs();
  made.charge = atom.getFormalCharge();
  made.isotope = atom.getIsotope();
  made.radicals = atom.getNumRadicalElectrons();
  for (const RDKit::Atom* neighbor : atom.getOwningMol().atomNeighbors(&atom))
    made.neighbors.push_back(neighbor->getIdx());
  made.isLabelled = made.element != 6 || made.charge != 0 || made.isotope != 0 ||
                    made.radicals != 0 || made.neighbors.empty();
  return made;
}

/// Of the rings of a double bond, the aromatic and then the smallest carries the second line.
bool FindRingCenter(const RDKit::ROMol& mol, const std::vector<SceneAtom>& atoms,
                    const RDKit::Bond& bond, QV2DPoint& center) {
  const RDKit::RingInfo& rings = *mol.getRingInfo();
  const std::vector<int>* best = nullptr;
  long bestScore = 0;
  for (std::size_t ring = 0; ring < rings.bondRings().size(); ++ring) {
    const std::vector<int>& bonds = rings.bondRings()[ring];
    const int index = static_cast<int>(bond.getIdx());
    if (std::find(bonds.begin(), bonds.end(), index) == bonds.end()) continue;
    long doubles = 0;
    for (const int member : bonds)
      doubles += mol.getBondWithIdx(static_cast<unsigned int>(member))->getBondType() !=
                         RDKit::Bond::SINGLE
                     ? 1
                     : 0;
    const long score = 1000 * doubles / static_cast<long>(bonds.size()) -
                       10 * std::abs(static_cast<long>(bonds.size()) - 6) + 1000;
    if (best && score <= bestScore) continue;
    best = &rings.atomRings()[ring];
    bestScore = score;
  }
  if (!best) return false;
  center = {0.0, 0.0};
  for (const int atom : *best) {
    const QV2DPoint& position = atoms[static_cast<std::size_t>(atom)].position;
    center.x += position.x / static_cast<double>(best->size());
    center.y += position.y / static_cast<double>(best->size());
  }
  return true;
}

/// A carbon between two double bonds is named: it could not be seen in a straight line.
void LabelCumulenes(MoleculeScene& scene) {
  std::vector<int> numDoubles(scene.atoms.size());
  for (const SceneBond& bond : scene.bonds)
    if (bond.kind == SceneBondKind::Double) {
      ++numDoubles[bond.begin];
      ++numDoubles[bond.end];
    }
  for (std::size_t i = 0; i < scene.atoms.size(); ++i)
    if (numDoubles[i] == 2 && scene.atoms[i].neighbors.size() == 2)
      scene.atoms[i].isLabelled = true;
}

/// With alternating bonds where that is possible, and wedges at the stereocentres.
std::unique_ptr<RDKit::RWMol> MakeDrawable(const QVChem::QVMolBase& mol) {
  std::unique_ptr<RDKit::RWMol> drawable = QVChem::Internal::CopyToRDKit(mol);
  try {
    RDKit::RWMol alternating(*drawable);
    RDKit::MolOps::Kekulize(alternating, false);
    *drawable = alternating;
  } catch (const std::exception&) {
    // A ring without alternating bonds is drawn with dashed lines instead.
  }
  RDKit::WedgeMolBonds(*drawable, &drawable->getConformer());
  return drawable;
}

}  // namespace

std::shared_ptr<const MoleculeScene> MakeScene(const QVChem::QVMolBase& mol) {
  if (mol.IsEmpty() || !mol.HasCoordinates()) return nullptr;
  const std::unique_ptr<RDKit::RWMol> drawable = MakeDrawable(mol);
  const RDKit::Conformer& conformer = drawable->getConformer();
  const double bondLength = GetTypicalBondLength(*drawable, conformer);
  auto scene = std::make_shared<MoleculeScene>();
  for (const RDKit::Atom* atom : drawable->atoms())
    scene->atoms.push_back(MakeAtom(*atom, conformer.getAtomPos(atom->getIdx()), bondLength));
  for (const RDKit::Bond* bond : drawable->bonds()) {
    SceneBond made;
    made.begin = bond->getBeginAtomIdx();
    made.end = bond->getEndAtomIdx();
    made.kind = GetKind(*bond);
    if (made.kind == SceneBondKind::Double || made.kind == SceneBondKind::Aromatic)
      made.isInRing = FindRingCenter(*drawable, scene->atoms, *bond, made.ringCenter);
    scene->bonds.push_back(made);
  }
  LabelCumulenes(*scene);
  return scene;
}

bool QVPrepareDepiction(QVChem::QVMolBase& mol, const QVPrepareDepictionOptions& options) {
  if (mol.IsEmpty()) return false;
  if (options.GetSuppressHydrogens()) QVChem::QVSuppressHydrogens(mol, false, false, true);
  std::vector<QVChem::QVPoint3> points;
  if (!options.GetClearCoordinates() && HasUsablePlaneCoordinates(mol)) {
    points = mol.GetCoordinates();
  } else {
    mol.ClearCoordinates();
    try {
      const std::unique_ptr<RDKit::RWMol> copy = QVChem::Internal::CopyToRDKit(mol);
      RDDepict::compute2DCoords(*copy, nullptr, true);
      for (const RDGeom::Point3D& point : copy->getConformer().getPositions())
        points.push_back({point.x, point.y, 0.0});
    } catch (const std::exception&) {
      return false;
    }
  }
  Orient(points, options.GetOrientation());
  return mol.SetCoordinates(std::move(points));
}

}  // namespace QVDepict
