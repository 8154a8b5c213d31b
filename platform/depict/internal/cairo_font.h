/// \file
/// \brief Cairo objects that free themselves, and the fonts of the library as Cairo has them.
#ifndef QV_PLATFORM_DEPICT_INTERNAL_CAIRO_FONT_H
#define QV_PLATFORM_DEPICT_INTERNAL_CAIRO_FONT_H

#include <cairo.h>

#include <memory>

#include "platform/depict/pen.h"

namespace QVDepict {

struct CairoDelete {
  void operator()(cairo_t* context) const { cairo_destroy(context); }
  void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
  void operator()(cairo_font_face_t* face) const { cairo_font_face_destroy(face); }
  void operator()(cairo_scaled_font_t* font) const { cairo_scaled_font_destroy(font); }
  void operator()(cairo_font_options_t* options) const { cairo_font_options_destroy(options); }
};
template <class T>
using CairoPtr = std::unique_ptr<T, CairoDelete>;

/// The system's font for the codes of `font`; Cairo's built-in font where the system has none.
CairoPtr<cairo_font_face_t> MakeFontFace(const QVFont& font);

/// No hinting: metrics grow in proportion to the size, and are the same on every surface.
CairoPtr<cairo_font_options_t> MakeFontOptions();

}  // namespace QVDepict

#endif  // QV_PLATFORM_DEPICT_INTERNAL_CAIRO_FONT_H
