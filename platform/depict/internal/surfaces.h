/// \file
/// \brief The surfaces behind the image files.
#ifndef QV_PLATFORM_DEPICT_INTERNAL_SURFACES_H
#define QV_PLATFORM_DEPICT_INTERNAL_SURFACES_H

#include <cairo.h>

#include <string>

#include "platform/depict/image.h"
#include "platform/depict/internal/cairo_font.h"

namespace QVDepict {

/// The whole SVG file of an image.
std::string MakeSvg(const QVImage& image);

/// The whole PNG file of an image, `scale` pixels for a unit.
/// \return false, with the reason in `problem`, if the picture is too large.
bool MakePng(const QVImage& image, double scale, std::string& bytes, std::string& problem);

/// A PDF that grows page by page.
class PdfDocument {
 public:
  PdfDocument();
  PdfDocument(const PdfDocument&) = delete;
  PdfDocument& operator=(const PdfDocument&) = delete;
  void Add(const QVImage& page);
  /// Finishes the document and hands over its bytes.
  /// \return false with the reason in `problem`.
  bool Finish(std::string& bytes, std::string& problem);

 private:
  std::string bytes_;
  CairoPtr<cairo_surface_t> surface_;
};

}  // namespace QVDepict

#endif  // QV_PLATFORM_DEPICT_INTERNAL_SURFACES_H
