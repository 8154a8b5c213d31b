#include <algorithm>
#include <cmath>

#include "platform/depict/internal/molecule_scene.h"

namespace QVDepict {
namespace {

constexpr double kLineGap = 0.15;  // between the lines of a double bond, in bond lengths

/// A bond in the image: from one atom to the other, its direction, and where its labels end.
struct BondAxis {
  QV2DPoint from;
  QV2DPoint along;   // of length 1
  QV2DPoint across;  // of length 1, to the right of the direction as seen in the image
  double length;
  double cutBegin;  // of the line, from its two ends
  double cutEnd;

  QV2DPoint At(double distance, double offset) const {
    return {from.x + distance * along.x + offset * across.x,
            from.y + distance * along.y + offset * across.y};
  }
};

class BondDrawer {
 public:
  BondDrawer(QVImageBase& image, const PlacedScene& placed, const SceneBond& bond,
             const std::vector<AtomLabel>& labels)
      : image_(image),
        placed_(placed),
        bond_(bond),
        color_(GetInkColor(placed.colorStyle)),
        pen_(QVLinePen(color_, placed.lineWidth).SetRoundEnds(true)),
        gap_(kLineGap * placed.bondLength) {
    const QV2DPoint& from = placed.positions[bond.begin];
    const QV2DPoint& to = placed.positions[bond.end];
    axis_.from = from;
    axis_.length = std::hypot(to.x - from.x, to.y - from.y);
    const double divisor = std::max(axis_.length, 1e-9);
    axis_.along = {(to.x - from.x) / divisor, (to.y - from.y) / divisor};
    axis_.across = {-axis_.along.y, axis_.along.x};
    const double padding = 0.10 * placed.fontSize + 0.5 * placed.lineWidth;
    axis_.cutBegin = labels[bond.begin].GetExtent(axis_.along.x, axis_.along.y, padding);
    axis_.cutEnd = labels[bond.end].GetExtent(-axis_.along.x, -axis_.along.y, padding);
  }

  void Draw() {
    if (axis_.cutBegin + axis_.cutEnd >= axis_.length) return;  // the labels touch
    switch (bond_.kind) {
      case SceneBondKind::Zero:
        return DrawLine(0.0, 0.0, 0.0, QVLinePen(color_, placed_.lineWidth, QVStipple::Dash));
      case SceneBondKind::Double:
        return DrawDouble(pen_);
      case SceneBondKind::Aromatic:
        return DrawDouble(QVLinePen(color_, 0.8 * placed_.lineWidth, QVStipple::Dash));
      case SceneBondKind::Triple:
        DrawLine(0.0, 0.0, 0.0, pen_);
        return DrawPair(gap_);
      case SceneBondKind::Quadruple:
        DrawPair(0.5 * gap_);
        return DrawPair(1.5 * gap_);
      case SceneBondKind::Dative:
        return DrawArrow();
      case SceneBondKind::Wedge:
        return DrawWedge();
      case SceneBondKind::Hash:
        return DrawHash();
      case SceneBondKind::Single:
        return DrawLine(0.0, 0.0, 0.0, pen_);
    }
  }

 private:
  void DrawLine(double offset, double trimBegin, double trimEnd, const QVPen& pen) {
    const double begin = std::max(axis_.cutBegin, trimBegin);
    const double end = axis_.length - std::max(axis_.cutEnd, trimEnd);
    if (begin < end) image_.DrawLine(axis_.At(begin, offset), axis_.At(end, offset), pen);
  }

  void DrawPair(double offset) {
    DrawLine(offset, 0.0, 0.0, pen_);
    DrawLine(-offset, 0.0, 0.0, pen_);
  }

  /// The offset of a point from the line of the bond, positive on the side of `across`.
  double GetSide(const QV2DPoint& point) const {
    return (point.x - axis_.from.x) * axis_.across.x + (point.y - axis_.from.y) * axis_.across.y;
  }

  /// How many neighbours of an end of the bond stand on a side of it.
  int CountNeighbors(unsigned int atom, unsigned int other, double side) const {
    int count = 0;
    for (const unsigned int neighbor : placed_.scene.atoms[atom].neighbors)
      if (neighbor != other && side * GetSide(placed_.positions[neighbor]) > 0.1 * gap_) ++count;
    return count;
  }

  /// +1 or -1 for the side of the second line, 0 for a line on either side of the axis.
  double ChooseSide() const {
    if (bond_.isInRing) {
      const SceneAtom& atom = placed_.scene.atoms[bond_.begin];
      const QV2DPoint& origin = placed_.positions[bond_.begin];
      const QV2DPoint center{
          origin.x + (bond_.ringCenter.x - atom.position.x) * placed_.bondLength,
          origin.y + (bond_.ringCenter.y - atom.position.y) * placed_.bondLength};
      return GetSide(center) > 0.0 ? 1.0 : -1.0;
    }
    const auto isEnd = [&](unsigned int atom) {
      return placed_.scene.atoms[atom].neighbors.size() == 1;
    };
    const bool isCarbonyl = (isEnd(bond_.begin) && placed_.scene.atoms[bond_.begin].isLabelled) ||
                            (isEnd(bond_.end) && placed_.scene.atoms[bond_.end].isLabelled);
    if (isCarbonyl) return 0.0;
    const int right =
        CountNeighbors(bond_.begin, bond_.end, 1.0) + CountNeighbors(bond_.end, bond_.begin, 1.0);
    const int left =
        CountNeighbors(bond_.begin, bond_.end, -1.0) + CountNeighbors(bond_.end, bond_.begin, -1.0);
    if (right + left == 0) return 0.0;
    return right >= left ? 1.0 : -1.0;
  }

  void DrawDouble(const QVPen& secondPen) {
    const double side = ChooseSide();
    if (side == 0.0) return DrawPair(0.5 * gap_);
    DrawLine(0.0, 0.0, 0.0, pen_);
    // Inside of an angle the second line is shorter, so that it does not cross the neighbour's.
    const auto getTrim = [&](unsigned int atom, unsigned int other) {
      return CountNeighbors(atom, other, side) > 0 ? 0.6 * gap_ : 0.0;
    };
    DrawLine(side * gap_, getTrim(bond_.begin, bond_.end), getTrim(bond_.end, bond_.begin),
             secondPen);
  }

  void DrawWedge() {
    const double half = 0.5 * GetWedgeWidth();
    const double end = axis_.length - axis_.cutEnd;
    image_.DrawPolygon({axis_.At(axis_.cutBegin, 0.0), axis_.At(end, half), axis_.At(end, -half)},
                       QVPen(color_, color_, true, 0.3 * placed_.lineWidth));
  }

  void DrawHash() {
    const double begin = axis_.cutBegin;
    const double end = axis_.length - axis_.cutEnd;
    const double step = std::max(0.09 * placed_.bondLength, 1.2 * placed_.lineWidth);
    const int count = std::max(3, static_cast<int>((end - begin) / step));
    for (int k = 1; k <= count; ++k) {
      const double share = static_cast<double>(k) / count;
      const double half = std::max(0.5 * GetWedgeWidth() * share, 0.5 * placed_.lineWidth);
      const double place = begin + (end - begin) * share;
      image_.DrawLine(axis_.At(place, half), axis_.At(place, -half),
                      QVLinePen(color_, 0.85 * placed_.lineWidth));
    }
  }

  double GetWedgeWidth() const { return 0.22 * placed_.bondLength; }

  void DrawArrow() {
    const double end = axis_.length - axis_.cutEnd;
    const double head = 0.22 * placed_.bondLength;
    DrawLine(0.0, 0.0, axis_.cutEnd + 0.5 * head, pen_);
    image_.DrawPolygon(
        {axis_.At(end, 0.0), axis_.At(end - head, 0.4 * head), axis_.At(end - head, -0.4 * head)},
        QVFillPen(color_));
  }

  QVImageBase& image_;
  const PlacedScene& placed_;
  const SceneBond& bond_;
  QVSystem::QVColor color_;
  QVPen pen_;
  double gap_;
  BondAxis axis_{};
};

}  // namespace

void DrawBond(QVImageBase& image, const PlacedScene& placed, const SceneBond& bond,
              const std::vector<AtomLabel>& labels) {
  BondDrawer(image, placed, bond, labels).Draw();
}

}  // namespace QVDepict
