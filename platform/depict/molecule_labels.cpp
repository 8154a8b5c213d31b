#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "platform/depict/internal/molecule_scene.h"
#include "platform/depict/molecule_display.h"

namespace QVDepict {
namespace {

using QVSystem::QVColor;

constexpr double kSmall = 0.68;          // of subscripts and superscripts, to the symbol
constexpr double kCapHeight = 0.73;      // of the font, to its size
constexpr double kSubscriptDrop = 0.22;  // of the base line, to the size of the symbol
constexpr double kSuperscriptLift = 0.40;

enum class Side { Right, Left, Up, Down };

/// The side on which the hydrogens stand: where the bonds leave the widest gap, right before left.
Side ChooseSide(const PlacedScene& placed, unsigned int atom) {
  const QV2DPoint& center = placed.positions[atom];
  const std::vector<unsigned int>& neighbors = placed.scene.atoms[atom].neighbors;
  // Formulas of single atoms read as written: H2O, but CH4, NH3.
  if (neighbors.empty()) {
    const unsigned int element = placed.scene.atoms[atom].element;
    const bool isHydride = element == 8 || element == 9 || element == 16 || element == 17 ||
                           element == 35 || element == 53;
    return isHydride ? Side::Left : Side::Right;
  }
  constexpr QV2DPoint kDirections[] = {{1.0, 0.0}, {-1.0, 0.0}, {0.0, -1.0}, {0.0, 1.0}};
  constexpr double kPreference[] = {0.0, 0.1, 0.30, 0.32};
  std::size_t best = 0;
  double lowest = 10.0;
  // A group at the end of a bond reads along the line of text.
  const std::size_t sides = neighbors.size() == 1 ? 2 : 4;
  for (std::size_t side = 0; side < sides; ++side) {
    double crowding = -1.0;  // the cosine of the angle to the nearest bond
    for (const unsigned int neighbor : neighbors) {
      const double dx = placed.positions[neighbor].x - center.x;
      const double dy = placed.positions[neighbor].y - center.y;
      const double length = std::max(1e-9, std::hypot(dx, dy));
      crowding = std::max(crowding, (dx * kDirections[side].x + dy * kDirections[side].y) / length);
    }
    const double cost = crowding + kPreference[side];
    if (cost >= lowest - 1e-9) continue;
    lowest = cost;
    best = side;
  }
  return static_cast<Side>(best);
}

std::string GetChargeText(const SceneAtom& atom) {
  std::string text;
  if (std::abs(atom.charge) > 1) text += std::to_string(std::abs(atom.charge));
  if (atom.charge != 0) text += atom.charge > 0 ? "+" : "\xE2\x88\x92";
  for (unsigned int k = 0; k < std::min(atom.radicals, 3u); ++k) text += "\xE2\x80\xA2";
  return text;
}

/// Puts the pieces of a label beside one another.
class LabelMaker {
 public:
  explicit LabelMaker(double size) : size_(size) {}

  double GetWidth(const std::string& text, double scale) const {
    return text.empty() ? 0.0 : QVMeasureText(text, QVFont().SetSize(scale * size_)).width;
  }
  void Add(const std::string& text, double x, double baseLine, double scale) {
    if (text.empty()) return;
    label_.pieces.push_back({text, {x, baseLine}, scale * size_, GetWidth(text, scale)});
  }
  AtomLabel Take() { return std::move(label_); }

 private:
  double size_;
  AtomLabel label_;
};

QVColor GetElementColor(unsigned int element, const QVColor& ink) {
  switch (element) {
    case 7:
      return QVColor(30, 60, 220);
    case 8:
      return QVColor(205, 20, 20);
    case 9:
    case 17:
      return QVColor(0, 120, 40);
    case 15:
      return QVColor(190, 95, 0);
    case 16:
      return QVColor(140, 115, 0);
    case 35:
      return QVColor(130, 60, 20);
    case 53:
      return QVColor(110, 0, 150);
    default:
      return ink;
  }
}

}  // namespace

QVColor GetInkColor(unsigned int colorStyle) {
  return colorStyle == QVAtomColorStyle::Grey ? QVColor(70, 70, 70) : QVSystem::QVBlack;
}

double AtomLabel::GetExtent(double directionX, double directionY, double padding) const {
  double extent = 0.0;
  // Pieces stand in the order from the symbol outwards, so a line leaves them in that order too.
  for (const Piece& piece : pieces) {
    const double left = piece.start.x - padding;
    const double right = piece.start.x + piece.width + padding;
    const double bottom = piece.start.y + padding;
    const double top = piece.start.y - kCapHeight * piece.size - padding;
    double begin = 0.0;
    double end = 1e9;
    const auto cut = [&](double direction, double low, double high) {
      if (std::abs(direction) < 1e-9) return low <= 0.0 && high >= 0.0;
      const double a = low / direction;
      const double b = high / direction;
      begin = std::max(begin, std::min(a, b));
      end = std::min(end, std::max(a, b));
      return begin < end;
    };
    if (cut(directionX, left, right) && cut(directionY, top, bottom) && begin <= extent + padding)
      extent = std::max(extent, end);
  }
  return extent;
}

AtomLabel MakeLabel(const PlacedScene& placed, unsigned int atom) {
  const SceneAtom& source = placed.scene.atoms[atom];
  if (!source.isLabelled) return {};
  const double size = placed.fontSize;
  LabelMaker maker(size);
  const double baseLine = 0.5 * kCapHeight * size;
  const double drop = baseLine + kSubscriptDrop * size;
  const double lift = baseLine - kSuperscriptLift * size;
  const std::string isotope = source.isotope > 0 ? std::to_string(source.isotope) : "";
  const std::string charge = GetChargeText(source);
  const std::string hydrogen = source.hydrogens > 0 ? "H" : "";
  const std::string count = source.hydrogens > 1 ? std::to_string(source.hydrogens) : "";

  const double symbolWidth = maker.GetWidth(source.symbol, 1.0);
  const double hydrogenWidth = maker.GetWidth(hydrogen, 1.0);
  const double countWidth = maker.GetWidth(count, kSmall);
  const double isotopeWidth = maker.GetWidth(isotope, kSmall);
  double left = -0.5 * symbolWidth;
  double right = 0.5 * symbolWidth;
  maker.Add(source.symbol, left, baseLine, 1.0);
  maker.Add(isotope, left - isotopeWidth, lift, kSmall);
  left -= isotopeWidth;
  switch (ChooseSide(placed, atom)) {
    case Side::Right:
      maker.Add(hydrogen, right, baseLine, 1.0);
      maker.Add(count, right + hydrogenWidth, drop, kSmall);
      // A charge stands above the count.
      right += hydrogenWidth;
      break;
    case Side::Left:
      maker.Add(count, left - countWidth, drop, kSmall);
      maker.Add(hydrogen, left - countWidth - hydrogenWidth, baseLine, 1.0);
      break;
    case Side::Up:
      maker.Add(hydrogen, -0.5 * hydrogenWidth, baseLine - 0.92 * size, 1.0);
      maker.Add(count, 0.5 * hydrogenWidth, drop - 0.92 * size, kSmall);
      break;
    case Side::Down:
      maker.Add(hydrogen, -0.5 * hydrogenWidth, baseLine + 0.92 * size, 1.0);
      maker.Add(count, 0.5 * hydrogenWidth, drop + 0.92 * size, kSmall);
      break;
  }
  maker.Add(charge, right, lift, kSmall);
  return maker.Take();
}

void DrawLabel(QVImageBase& image, const PlacedScene& placed, unsigned int atom,
               const AtomLabel& label) {
  const QVColor ink = GetInkColor(placed.colorStyle);
  const bool byElement = placed.colorStyle == QVAtomColorStyle::Default ||
                         placed.colorStyle == QVAtomColorStyle::ByElement;
  const QVColor color = byElement ? GetElementColor(placed.scene.atoms[atom].element, ink) : ink;
  const QV2DPoint& center = placed.positions[atom];
  for (const AtomLabel::Piece& piece : label.pieces)
    image.DrawText(
        {center.x + piece.start.x, center.y + piece.start.y}, piece.text,
        QVFont(QVFontFamily::Sans, QVFontStyle::Normal, piece.size, QVAlignment::Left, color));
}

}  // namespace QVDepict
