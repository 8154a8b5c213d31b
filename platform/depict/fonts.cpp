#include "platform/depict/internal/fonts.h"

#include <cairo.h>

#include <memory>

#include "platform/depict/image.h"
#include "platform/depict/internal/cairo_font.h"

namespace QVDepict {
namespace {

/// Bytes of the UTF-8 character at `i`, or 0 if there is none.
std::size_t GetUtf8Length(const std::string& text, std::size_t i) {
  const auto byte = [&](std::size_t k) { return static_cast<unsigned char>(text[k]); };
  const unsigned char lead = byte(i);
  const std::size_t length = lead < 0x80u                     ? 1
                             : lead >= 0xC2u && lead < 0xE0u  ? 2
                             : lead >= 0xE0u && lead < 0xF0u  ? 3
                             : lead >= 0xF0u && lead <= 0xF4u ? 4
                                                              : 0;
  if (length == 0 || i + length > text.size()) return 0;
  for (std::size_t k = 1; k < length; ++k)
    if ((byte(i + k) & 0xC0u) != 0x80u) return 0;
  // Overlong forms, surrogates and what lies beyond the last character.
  if (lead == 0xE0u && byte(i + 1) < 0xA0u) return 0;
  if (lead == 0xEDu && byte(i + 1) > 0x9Fu) return 0;
  if (lead == 0xF0u && byte(i + 1) < 0x90u) return 0;
  if (lead == 0xF4u && byte(i + 1) > 0x8Fu) return 0;
  return length;
}

}  // namespace

std::string ToPrintableUtf8(const std::string& text) {
  std::string clean;
  clean.reserve(text.size());
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t length = GetUtf8Length(text, i);
    const auto byte = static_cast<unsigned char>(text[i]);
    if (length == 0) {
      clean += static_cast<char>(0xC0u | (byte >> 6u));
      clean += static_cast<char>(0x80u | (byte & 0x3Fu));
    } else if (byte < 0x20u || byte == 0x7Fu) {
      clean += ' ';
    } else {
      clean.append(text, i, length);
    }
    i += length == 0 ? 1 : length;
  }
  return clean;
}

const char* GetFamilyName(const QVFont& font) {
  switch (font.GetFamily()) {
    case QVFontFamily::Mono:
      return "DejaVu Sans Mono";
    case QVFontFamily::Narrow:
      return "DejaVu Sans Condensed";
    default:
      return "DejaVu Sans";
  }
}

bool IsBold(const QVFont& font) {
  return font.GetStyle() == QVFontStyle::Bold || font.GetStyle() == QVFontStyle::BoldItalic;
}

bool IsItalic(const QVFont& font) {
  return font.GetStyle() == QVFontStyle::Italic || font.GetStyle() == QVFontStyle::BoldItalic;
}

CairoPtr<cairo_font_face_t> MakeFontFace(const QVFont& font) {
  return CairoPtr<cairo_font_face_t>(cairo_toy_font_face_create(
      GetFamilyName(font), IsItalic(font) ? CAIRO_FONT_SLANT_ITALIC : CAIRO_FONT_SLANT_NORMAL,
      IsBold(font) ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL));
}

CairoPtr<cairo_font_options_t> MakeFontOptions() {
  CairoPtr<cairo_font_options_t> options(cairo_font_options_create());
  cairo_font_options_set_hint_style(options.get(), CAIRO_HINT_STYLE_NONE);
  cairo_font_options_set_hint_metrics(options.get(), CAIRO_HINT_METRICS_OFF);
  cairo_font_options_set_antialias(options.get(), CAIRO_ANTIALIAS_GRAY);
  return options;
}

QVTextExtents QVMeasureText(const std::string& text, const QVFont& font) {
  // Measured at one size and scaled: the scaled fonts that Cairo keeps are then few.
  constexpr double kEmSize = 100.0;
  cairo_matrix_t size;
  cairo_matrix_t identity;
  cairo_matrix_init_scale(&size, kEmSize, kEmSize);
  cairo_matrix_init_identity(&identity);
  const CairoPtr<cairo_font_face_t> face = MakeFontFace(font);
  const CairoPtr<cairo_font_options_t> options = MakeFontOptions();
  const CairoPtr<cairo_scaled_font_t> scaled(
      cairo_scaled_font_create(face.get(), &size, &identity, options.get()));
  cairo_text_extents_t textExtents{};
  cairo_font_extents_t fontExtents{};
  cairo_scaled_font_text_extents(scaled.get(), ToPrintableUtf8(text).c_str(), &textExtents);
  cairo_scaled_font_extents(scaled.get(), &fontExtents);
  const double scale = font.GetSize() / kEmSize;
  return {textExtents.x_advance * scale, fontExtents.ascent * scale, fontExtents.descent * scale};
}

}  // namespace QVDepict
