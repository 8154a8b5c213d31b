/// \file
/// \brief Numbers of atoms shown as colours behind a molecule.
#ifndef QV_PLATFORM_DEPICT_PROPERTY_MAP_H
#define QV_PLATFORM_DEPICT_PROPERTY_MAP_H

#include <optional>
#include <string>

#include "platform/depict/export.h"
#include "platform/depict/molecule_display.h"

namespace QVPropDepict {

namespace QVLegendLocation {
constexpr unsigned int Default = 0;  ///< the same as Right
constexpr unsigned int Hidden = 1;
constexpr unsigned int Left = 2;
constexpr unsigned int Right = 3;
}  // namespace QVLegendLocation

/// Colours atoms by a number. 0 has the colour of the ground, the largest value the positive colour
/// and the smallest the negative one, each mixed with the ground so far that black labels stay
/// legible; in between colours are mixed in proportion.
class QVDEPICT_EXPORT QV2DPropMap {
 public:
  explicit QV2DPropMap(const QVSystem::QVColor& background = QVSystem::QVWhite)
      : background_(background) {}

  QV2DPropMap& SetNegativeColor(const QVSystem::QVColor& color) {
    negative_ = color;
    return *this;
  }
  QV2DPropMap& SetPositiveColor(const QVSystem::QVColor& color) {
    positive_ = color;
    return *this;
  }
  /// A code of QVLegendLocation.
  QV2DPropMap& SetLegendLocation(unsigned int location) {
    legendLocation_ = location;
    return *this;
  }
  QV2DPropMap& SetLegendFontScale(double scale) {
    legendFontScale_ = scale;
    return *this;
  }
  /// The values with the full colours; without them the smallest and the largest that occur.
  QV2DPropMap& SetMinValue(double value) {
    min_ = value;
    return *this;
  }
  QV2DPropMap& SetMaxValue(double value) {
    max_ = value;
    return *this;
  }

  /// The colour of a value on a scale from `min` to `max`.
  QVSystem::QVColor GetColor(double value, double min, double max) const;

  /// Colours the atoms of a display by the doubles that the atoms of `mol` carry as generic data
  /// under a tag. Atoms without one, and those whose value is 0 or not a number, stay as they are.
  /// A disc grows with the radius of its atom, where the molecule has radii (carbon's without).
  /// \return false, and the display is unchanged, if it is not of this molecule or no atom has a
  /// value.
  bool Render(QVDepict::QV2DMolDisplay& display, const QVChem::QVMolBase& mol,
              const std::string& tag) const;

 private:
  QVSystem::QVColor background_;
  QVSystem::QVColor negative_ = QVSystem::QVRed;
  QVSystem::QVColor positive_ = QVSystem::QVBlue;
  unsigned int legendLocation_ = QVLegendLocation::Default;
  double legendFontScale_ = 1.0;
  std::optional<double> min_;
  std::optional<double> max_;
};

}  // namespace QVPropDepict

#endif  // QV_PLATFORM_DEPICT_PROPERTY_MAP_H
