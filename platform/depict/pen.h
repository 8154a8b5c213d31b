/// \file
/// \brief How lines and areas are drawn, and how text is set.
#ifndef QV_PLATFORM_DEPICT_PEN_H
#define QV_PLATFORM_DEPICT_PEN_H

#include "platform/system/color.h"

namespace QVDepict {

/// The pattern of a line. The low byte is the length of a dash, the byte above it that of the gap,
/// both in units of three line widths; 0 is a solid line.
namespace QVStipple {
constexpr unsigned int Solid = 0;
constexpr unsigned int Dash = 0x101;
constexpr unsigned int LongDash = 0x103;
}  // namespace QVStipple

/// A pen: the colour that fills an area, the colour and width of its outline, and whether areas are
/// filled at all. Widths are in units of the image.
class QVPen {
 public:
  /// A black line of width 1 that fills nothing.
  QVPen() = default;
  QVPen(const QVSystem::QVColor& fillColor, const QVSystem::QVColor& lineColor, bool fill = false,
        double lineWidth = 1.0, unsigned int stipple = QVStipple::Solid)
      : fillColor_(fillColor),
        lineColor_(lineColor),
        lineWidth_(lineWidth),
        stipple_(stipple),
        fill_(fill) {}

  const QVSystem::QVColor& GetFillColor() const { return fillColor_; }
  const QVSystem::QVColor& GetLineColor() const { return lineColor_; }
  double GetLineWidth() const { return lineWidth_; }
  unsigned int GetStipple() const { return stipple_; }
  bool GetFill() const { return fill_; }
  /// Lines end in half discs instead of being cut at their end points; joints are always round.
  bool GetRoundEnds() const { return roundEnds_; }

  QVPen& SetLineWidth(double width) {
    lineWidth_ = width;
    return *this;
  }
  QVPen& SetRoundEnds(bool roundEnds) {
    roundEnds_ = roundEnds;
    return *this;
  }

 private:
  QVSystem::QVColor fillColor_ = QVSystem::QVWhite;
  QVSystem::QVColor lineColor_ = QVSystem::QVBlack;
  double lineWidth_ = 1.0;
  unsigned int stipple_ = QVStipple::Solid;
  bool fill_ = false;
  bool roundEnds_ = false;
};

/// A pen that fills an area with one colour and draws no outline.
inline QVPen QVFillPen(const QVSystem::QVColor& color) { return QVPen(color, color, true, 0.0); }

/// A pen that draws lines of one colour and fills nothing.
inline QVPen QVLinePen(const QVSystem::QVColor& color, double width = 1.0,
                       unsigned int stipple = QVStipple::Solid) {
  return QVPen(QVSystem::QVWhite, color, false, width, stipple);
}

namespace QVFontFamily {
constexpr unsigned int Default = 0;  ///< the same as Sans
constexpr unsigned int Mono = 1;
constexpr unsigned int Narrow = 2;  ///< a condensed sans where the system has one, else Sans
constexpr unsigned int Sans = 3;
}  // namespace QVFontFamily

namespace QVFontStyle {
constexpr unsigned int Normal = 0;
constexpr unsigned int Italic = 1;
constexpr unsigned int Bold = 2;
constexpr unsigned int BoldItalic = 3;
}  // namespace QVFontStyle

/// Where a text stands relative to its anchor.
namespace QVAlignment {
constexpr unsigned int Default = 0;  ///< the same as Left
constexpr unsigned int Center = 1;   ///< the anchor is its middle
constexpr unsigned int Left = 2;     ///< the anchor is its left end
constexpr unsigned int Right = 3;    ///< the anchor is its right end
}  // namespace QVAlignment

/// How a text is set. A code outside its table counts as the default.
class QVFont {
 public:
  /// Black sans, size 12, left.
  QVFont() = default;
  QVFont(unsigned int family, unsigned int style, double size, unsigned int alignment,
         const QVSystem::QVColor& color = QVSystem::QVBlack)
      : size_(size), family_(family), style_(style), alignment_(alignment), color_(color) {}

  unsigned int GetFamily() const { return family_; }
  unsigned int GetStyle() const { return style_; }
  unsigned int GetAlignment() const { return alignment_; }
  /// The em size, in units of the image.
  double GetSize() const { return size_; }
  const QVSystem::QVColor& GetColor() const { return color_; }
  /// Degrees, counter-clockwise about the anchor.
  double GetRotation() const { return rotation_; }

  QVFont& SetSize(double size) {
    size_ = size;
    return *this;
  }
  QVFont& SetStyle(unsigned int style) {
    style_ = style;
    return *this;
  }
  QVFont& SetAlignment(unsigned int alignment) {
    alignment_ = alignment;
    return *this;
  }
  QVFont& SetColor(const QVSystem::QVColor& color) {
    color_ = color;
    return *this;
  }
  QVFont& SetRotation(double degrees) {
    rotation_ = degrees;
    return *this;
  }

 private:
  double size_ = 12.0;
  double rotation_ = 0.0;
  unsigned int family_ = QVFontFamily::Default;
  unsigned int style_ = QVFontStyle::Normal;
  unsigned int alignment_ = QVAlignment::Default;
  QVSystem::QVColor color_ = QVSystem::QVBlack;
};

}  // namespace QVDepict

#endif  // QV_PLATFORM_DEPICT_PEN_H
