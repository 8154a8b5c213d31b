/// \file
/// \brief Text as the surfaces need it: clean UTF-8, the family names of the font codes.
#ifndef QV_PLATFORM_DEPICT_INTERNAL_FONTS_H
#define QV_PLATFORM_DEPICT_INTERNAL_FONTS_H

#include <string>

#include "platform/depict/pen.h"

namespace QVDepict {

/// The text with bytes that are not UTF-8 read as Latin-1, and control characters as blanks.
std::string ToPrintableUtf8(const std::string& text);

/// The family that is asked of the system, which answers with its nearest one.
const char* GetFamilyName(const QVFont& font);
/// How much of a text stands left of its anchor: 0, 0.5 or 1.
inline double GetAnchorShare(const QVFont& font) {
  if (font.GetAlignment() == QVAlignment::Center) return 0.5;
  return font.GetAlignment() == QVAlignment::Right ? 1.0 : 0.0;
}

bool IsBold(const QVFont& font);
bool IsItalic(const QVFont& font);

/// Lengths of the dashes and gaps of a line, in units of the image; no gap for a solid line.
struct DashLengths {
  double dash;
  double gap;
};
inline DashLengths GetDashLengths(const QVPen& pen) {
  const double unit = 3.0 * pen.GetLineWidth();
  return {unit * (pen.GetStipple() & 0xFFu), unit * ((pen.GetStipple() >> 8u) & 0xFFu)};
}

/// Whether a surface draws an outline with this pen.
inline bool HasOutline(const QVPen& pen) { return pen.GetLineWidth() > 0.0; }

}  // namespace QVDepict

#endif  // QV_PLATFORM_DEPICT_INTERNAL_FONTS_H
