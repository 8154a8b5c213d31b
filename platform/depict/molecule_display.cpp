#include "platform/depict/molecule_display.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

#include "platform/depict/internal/molecule_scene.h"

namespace QVDepict {
namespace {

constexpr double kFontSize = 0.42;      // of atom labels, in bond lengths
constexpr double kMargin = 0.55;        // around the atoms, in bond lengths: room for labels
constexpr double kLargestBond = 0.26;   // of the smaller side of the display
constexpr double kLegendShare = 0.16;   // of the width
constexpr double kTitleShare = 0.09;    // of the height
constexpr double kLargestTitle = 11.0;  // font size
constexpr double kSmallestSide = 4.0;   // below it there is no room for a molecule

}  // namespace

QV2DMolDisplay::QV2DMolDisplay(const QVChem::QVMolBase& mol, const QV2DMolDisplayOptions& options)
    : options_(options), scene_(MakeScene(mol)), title_(mol.GetTitle()) {
  if (!scene_) return;
  halos_.resize(scene_->atoms.size());
  LayOut();
}

void QV2DMolDisplay::SetAtomHalo(unsigned int atom, const QVSystem::QVColor& color, double radius) {
  if (atom < halos_.size()) halos_[atom] = {color, radius};
}

void QV2DMolDisplay::SetLegend(Legend legend) {
  legend_ = std::move(legend);
  if (scene_) LayOut();
}

/// The part of an image of the size of the display that title and legend leave free.
QVImageFrame QV2DMolDisplay::GetMoleculeFrame(const QVImageBase& image) const {
  const double width = options_.GetWidth();
  const double height = options_.GetHeight();
  const double legend = legend_.colors.empty() ? 0.0 : kLegendShare * width;
  const bool hasTitle = options_.GetTitleLocation() != QVTitleLocation::Hidden && !title_.empty();
  const double title = hasTitle ? std::min(kTitleShare * height, 1.5 * kLargestTitle) : 0.0;
  const double top = options_.GetTitleLocation() == QVTitleLocation::Top ? title : 0.0;
  return QVImageFrame(image, {legend_.left ? legend : 0.0, top}, width - legend, height - title);
}

void QV2DMolDisplay::LayOut() {
  const QVImage whole(options_.GetWidth(), options_.GetHeight());
  const QVImageFrame frame = GetMoleculeFrame(whole);
  QV2DPoint low{std::numeric_limits<double>::infinity(), std::numeric_limits<double>::infinity()};
  QV2DPoint high{-low.x, -low.y};
  for (const SceneAtom& atom : scene_->atoms) {
    low = {std::min(low.x, atom.position.x), std::min(low.y, atom.position.y)};
    high = {std::max(high.x, atom.position.x), std::max(high.y, atom.position.y)};
  }
  const double width = high.x - low.x;
  const double height = high.y - low.y;
  // A label has no more than about three letters beside its symbol.
  bondLength_ = std::min({frame.GetWidth() / (width + 3.0 * kMargin),
                          frame.GetHeight() / (height + 2.6 * kMargin),
                          kLargestBond * std::min(frame.GetWidth(), frame.GetHeight())});
  if (options_.GetScale() > 0.0) bondLength_ = options_.GetScale();

  const double top = options_.GetTitleLocation() == QVTitleLocation::Top
                         ? options_.GetHeight() - frame.GetHeight()
                         : 0.0;
  const double left = legend_.left ? options_.GetWidth() - frame.GetWidth() : 0.0;
  const QV2DPoint center{left + 0.5 * frame.GetWidth(), top + 0.5 * frame.GetHeight()};
  positions_.clear();
  for (const SceneAtom& atom : scene_->atoms)
    positions_.push_back({center.x + (atom.position.x - 0.5 * (low.x + high.x)) * bondLength_,
                          center.y + (atom.position.y - 0.5 * (low.y + high.y)) * bondLength_});
}

void QV2DMolDisplay::DrawTitle(QVImageBase& image) const {
  if (options_.GetTitleLocation() == QVTitleLocation::Hidden || title_.empty()) return;
  const double height = options_.GetHeight() - GetMoleculeFrame(image).GetHeight();
  const double top =
      options_.GetTitleLocation() == QVTitleLocation::Top ? 0.0 : options_.GetHeight() - height;
  QVImageFrame frame(image, {0.0, top}, options_.GetWidth(), height);
  const QVFont font(QVFontFamily::Sans, QVFontStyle::Normal, std::min(kLargestTitle, 0.75 * height),
                    QVAlignment::Center);
  QVDrawTextToFit(frame, QVCutText(title_, font, frame.GetWidth()), font, 1.0);
}

void QV2DMolDisplay::DrawHalos(QVImageBase& image) const {
  // Bands first, then discs from the palest to the strongest: what matters most lies on top.
  constexpr int kSteps = 8;
  for (const SceneBond& bond : scene_->bonds) {
    const Halo& begin = halos_[bond.begin];
    const Halo& end = halos_[bond.end];
    if (begin.radius <= 0.0 || end.radius <= 0.0) continue;
    const QV2DPoint& from = positions_[bond.begin];
    const QV2DPoint& to = positions_[bond.end];
    const auto at = [&](double share) {
      return QV2DPoint{from.x + (to.x - from.x) * share, from.y + (to.y - from.y) * share};
    };
    const double width = 1.3 * std::min(begin.radius, end.radius) * bondLength_;
    for (int k = 0; k < kSteps; ++k)
      // A little overlap hides the seams between the steps.
      image.DrawLine(
          at(static_cast<double>(k) / kSteps), at(std::min(1.0, (k + 1.3) / kSteps)),
          QVLinePen(QVSystem::QVMixColors(begin.color, end.color, (k + 0.5) / kSteps), width));
  }
  const auto getStrength = [&](unsigned int atom) {
    const QVSystem::QVColor& color = halos_[atom].color;
    return 765 - color.GetR() - color.GetG() - color.GetB();
  };
  std::vector<unsigned int> order(halos_.size());
  std::iota(order.begin(), order.end(), 0u);
  std::stable_sort(order.begin(), order.end(),
                   [&](unsigned int a, unsigned int b) { return getStrength(a) < getStrength(b); });
  for (const unsigned int atom : order)
    if (halos_[atom].radius > 0.0)
      image.DrawCircle(positions_[atom], halos_[atom].radius * bondLength_,
                       QVFillPen(halos_[atom].color));
}

void QV2DMolDisplay::DrawLegend(QVImageBase& image) const {
  if (legend_.colors.empty()) return;
  const double room = kLegendShare * options_.GetWidth();
  const double middle = legend_.left ? 0.5 * room : options_.GetWidth() - 0.5 * room;
  const double top = 0.2 * options_.GetHeight();
  const double step = 0.6 * options_.GetHeight() / static_cast<double>(legend_.colors.size());
  const double half = 0.12 * room;
  double y = top + 0.6 * options_.GetHeight();
  for (const QVSystem::QVColor& color : legend_.colors) {
    image.DrawRectangle({middle - half, y - 1.2 * step}, {middle + half, y}, QVFillPen(color));
    y -= step;
  }
  const double size = std::min(0.28 * room, 10.0) * legend_.fontScale;
  const QVFont font(QVFontFamily::Sans, QVFontStyle::Normal, size, QVAlignment::Center);
  image.DrawText({middle, top - 0.6 * size}, legend_.highText, font);
  image.DrawText({middle, 0.8 * options_.GetHeight() + 1.2 * size}, legend_.lowText, font);
}

bool QVRenderMolecule(QVImageBase& image, const QV2DMolDisplay& display) {
  const QV2DMolDisplayOptions& options = display.GetOptions();
  if (!display.IsValid() || options.GetWidth() < kSmallestSide ||
      options.GetHeight() < kSmallestSide)
    return false;
  if (options.GetBackgroundColor() != QVSystem::QVWhite)
    image.DrawRectangle({0.0, 0.0}, {options.GetWidth(), options.GetHeight()},
                        QVFillPen(options.GetBackgroundColor()));
  display.DrawHalos(image);
  const PlacedScene placed{*display.scene_,
                           display.positions_,
                           display.bondLength_,
                           kFontSize * display.bondLength_ * options.GetAtomLabelFontScale(),
                           std::clamp(0.05 * display.bondLength_, 0.3, 2.5),
                           options.GetAtomColorStyle()};
  std::vector<AtomLabel> labels;
  for (unsigned int atom = 0; atom < display.GetNumAtoms(); ++atom)
    labels.push_back(MakeLabel(placed, atom));
  for (const SceneBond& bond : display.scene_->bonds) DrawBond(image, placed, bond, labels);
  for (unsigned int atom = 0; atom < display.GetNumAtoms(); ++atom)
    DrawLabel(image, placed, atom, labels[atom]);
  display.DrawLegend(image);
  display.DrawTitle(image);
  return true;
}

bool QVRenderMolecule(QVImageBase& image, const QVChem::QVMolBase& mol) {
  QVChem::QVGraphMol picture(mol);
  const double width = image.GetWidth();
  const double height = image.GetHeight();
  const unsigned int orientation = width > 1.5 * height   ? QVDepictOrientation::Horizontal
                                   : height > 1.5 * width ? QVDepictOrientation::Vertical
                                                          : QVDepictOrientation::Square;
  return QVPrepareDepiction(picture, QVPrepareDepictionOptions().SetOrientation(orientation)) &&
         QVRenderMolecule(image, QV2DMolDisplay(picture, QV2DMolDisplayOptions(width, height)));
}

}  // namespace QVDepict
