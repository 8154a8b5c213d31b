/// \file
/// \brief Molecules in the plane: coordinates, layout and drawing.
///
///     QVChem::QVGraphMol picture(mol);
///     QVPrepareDepiction(picture);
///     QV2DMolDisplay display(picture, QV2DMolDisplayOptions(200.0, 150.0));
///     QVRenderMolecule(image, display);
#ifndef QV_PLATFORM_DEPICT_MOLECULE_DISPLAY_H
#define QV_PLATFORM_DEPICT_MOLECULE_DISPLAY_H

#include <memory>
#include <string>
#include <vector>

#include "platform/chem/mol.h"
#include "platform/depict/export.h"
#include "platform/depict/image.h"

namespace QVDepict {

/// How a molecule is turned: by the multiple of 30 degrees that suits best.
namespace QVDepictOrientation {
constexpr unsigned int Default = 0;     ///< as the coordinates come
constexpr unsigned int None = 1;        ///< the same
constexpr unsigned int Square = 2;      ///< into the smallest square
constexpr unsigned int Horizontal = 3;  ///< wide and low
constexpr unsigned int Vertical = 4;    ///< narrow and high
}  // namespace QVDepictOrientation

/// What QVPrepareDepiction does.
class QVPrepareDepictionOptions {
 public:
  /// \param clearCoordinates lays every molecule out anew; if false, coordinates in the plane that
  /// a molecule already has are kept, unless atoms lie on one another. \param suppressHydrogens
  /// drops the hydrogens that are only drawn out.
  explicit QVPrepareDepictionOptions(bool clearCoordinates = false, bool suppressHydrogens = true)
      : clearCoordinates_(clearCoordinates), suppressHydrogens_(suppressHydrogens) {}

  bool GetClearCoordinates() const { return clearCoordinates_; }
  bool GetSuppressHydrogens() const { return suppressHydrogens_; }
  unsigned int GetOrientation() const { return orientation_; }
  /// A code of QVDepictOrientation; others count as Default.
  QVPrepareDepictionOptions& SetOrientation(unsigned int orientation) {
    orientation_ = orientation;
    return *this;
  }

 private:
  bool clearCoordinates_;
  bool suppressHydrogens_;
  unsigned int orientation_ = QVDepictOrientation::Default;
};

/// Gives a molecule coordinates in the plane, y upwards, about 1.5 a bond.
/// \return false, and the molecule has none, if it is empty or has no layout.
QVDEPICT_EXPORT bool QVPrepareDepiction(
    QVChem::QVMolBase& mol, const QVPrepareDepictionOptions& options = QVPrepareDepictionOptions());

/// How atom labels are coloured.
namespace QVAtomColorStyle {
constexpr unsigned int Default = 0;    ///< the same as ByElement
constexpr unsigned int ByElement = 1;  ///< nitrogen blue, oxygen red, and so on
constexpr unsigned int Grey = 2;       ///< labels and bonds dark grey
constexpr unsigned int Black = 3;      ///< all black: for coloured grounds
}  // namespace QVAtomColorStyle

/// Where the title of the molecule stands.
namespace QVTitleLocation {
constexpr unsigned int Hidden = 0;
constexpr unsigned int Top = 1;
constexpr unsigned int Bottom = 2;
}  // namespace QVTitleLocation

/// Size and style of a molecule display.
class QV2DMolDisplayOptions {
 public:
  /// \param scale the length of a bond in units of the image; 0 takes what fits, at most a
  /// quarter of the smaller side, so that small molecules do not fill the page.
  QV2DMolDisplayOptions(double width, double height, double scale = 0.0)
      : width_(width), height_(height), scale_(scale) {}

  double GetWidth() const { return width_; }
  double GetHeight() const { return height_; }
  double GetScale() const { return scale_; }
  double GetAtomLabelFontScale() const { return atomLabelFontScale_; }
  unsigned int GetTitleLocation() const { return titleLocation_; }
  unsigned int GetAtomColorStyle() const { return atomColorStyle_; }
  const QVSystem::QVColor& GetBackgroundColor() const { return backgroundColor_; }

  /// 1 sets labels at 0.42 of a bond length.
  QV2DMolDisplayOptions& SetAtomLabelFontScale(double scale) {
    atomLabelFontScale_ = scale;
    return *this;
  }
  /// A code of QVTitleLocation.
  QV2DMolDisplayOptions& SetTitleLocation(unsigned int location) {
    titleLocation_ = location;
    return *this;
  }
  /// A code of QVAtomColorStyle.
  QV2DMolDisplayOptions& SetAtomColorStyle(unsigned int style) {
    atomColorStyle_ = style;
    return *this;
  }
  /// White, the default, is not drawn.
  QV2DMolDisplayOptions& SetBackgroundColor(const QVSystem::QVColor& color) {
    backgroundColor_ = color;
    return *this;
  }

 private:
  double width_;
  double height_;
  double scale_;
  double atomLabelFontScale_ = 1.0;
  unsigned int titleLocation_ = QVTitleLocation::Hidden;
  unsigned int atomColorStyle_ = QVAtomColorStyle::Default;
  QVSystem::QVColor backgroundColor_ = QVSystem::QVWhite;
};

struct MoleculeScene;

/// A molecule laid out in a rectangle, ready to be drawn any number of times.
class QVDEPICT_EXPORT QV2DMolDisplay {
 public:
  /// The molecule needs coordinates (QVPrepareDepiction); without them the display is not valid.
  QV2DMolDisplay(const QVChem::QVMolBase& mol, const QV2DMolDisplayOptions& options);

  bool IsValid() const { return scene_ != nullptr; }
  const QV2DMolDisplayOptions& GetOptions() const { return options_; }
  unsigned int GetNumAtoms() const { return static_cast<unsigned int>(positions_.size()); }
  /// In units of the image, from the top left corner of the display.
  const QV2DPoint& GetAtomPosition(unsigned int atom) const { return positions_[atom]; }
  /// The length of a usual bond, in units of the image.
  double GetBondLength() const { return bondLength_; }

  /// A coloured disc behind an atom. Discs of bonded atoms are joined by a band along the bond.
  /// \param radius in bond lengths.
  void SetAtomHalo(unsigned int atom, const QVSystem::QVColor& color, double radius = 0.42);

  /// A bar of colours beside the molecule.
  struct Legend {
    std::vector<QVSystem::QVColor> colors;  ///< bottom to top; empty for no legend
    std::string lowText;
    std::string highText;
    double fontScale = 1.0;
    bool left = false;  ///< else right
  };
  /// The molecule makes room for it.
  void SetLegend(Legend legend);

 private:
  friend QVDEPICT_EXPORT bool QVRenderMolecule(QVImageBase& image, const QV2DMolDisplay& display);

  struct Halo {
    QVSystem::QVColor color;
    double radius = 0.0;  // 0 for none
  };

  void LayOut();
  QVImageFrame GetMoleculeFrame(const QVImageBase& image) const;
  void DrawTitle(QVImageBase& image) const;
  void DrawHalos(QVImageBase& image) const;
  void DrawLegend(QVImageBase& image) const;

  QV2DMolDisplayOptions options_;
  std::shared_ptr<const MoleculeScene> scene_;
  std::string title_;
  std::vector<QV2DPoint> positions_;
  std::vector<Halo> halos_;
  Legend legend_;
  double bondLength_ = 0.0;
};

/// Draws the display with its top left corner at that of the image.
/// \return false, and nothing is drawn, if the display is not valid or has no room.
QVDEPICT_EXPORT bool QVRenderMolecule(QVImageBase& image, const QV2DMolDisplay& display);

/// Prepares a copy of the molecule and draws it into all of the image.
QVDEPICT_EXPORT bool QVRenderMolecule(QVImageBase& image, const QVChem::QVMolBase& mol);

}  // namespace QVDepict

#endif  // QV_PLATFORM_DEPICT_MOLECULE_DISPLAY_H
