#include <cairo-pdf.h>
#include <cairo.h>

#include <cmath>

#include "platform/depict/internal/fonts.h"
#include "platform/depict/internal/surfaces.h"
#include "platform/system/text.h"

namespace QVDepict {
namespace {

constexpr double kRadiansPerDegree = 0.017453292519943295;

/// Draws the operations of an image on a Cairo context.
class Painter {
 public:
  explicit Painter(cairo_t* context) : context_(context) {
    cairo_set_line_join(context_, CAIRO_LINE_JOIN_ROUND);
    cairo_set_font_options(context_, MakeFontOptions().get());
  }

  void Draw(const QVDrawing& drawing) {
    if (drawing.kind == QVDrawing::Kind::Text) return DrawText(drawing);
    if (drawing.pen.GetFill()) {
      TracePath(drawing, drawing.kind == QVDrawing::Kind::Arc);
      SetColor(drawing.pen.GetFillColor());
      cairo_fill(context_);
    }
    if (HasOutline(drawing.pen)) {
      TracePath(drawing, false);
      Stroke(drawing.pen);
    }
  }

 private:
  void SetColor(const QVSystem::QVColor& color) {
    cairo_set_source_rgba(context_, color.GetR() / 255.0, color.GetG() / 255.0,
                          color.GetB() / 255.0, color.GetA() / 255.0);
  }

  void TracePath(const QVDrawing& drawing, bool throughCenter) {
    const QV2DPoint& first = drawing.points.front();
    cairo_new_path(context_);
    switch (drawing.kind) {
      case QVDrawing::Kind::Line:
      case QVDrawing::Kind::Polygon:
        for (const QV2DPoint& point : drawing.points) cairo_line_to(context_, point.x, point.y);
        if (drawing.kind == QVDrawing::Kind::Polygon) cairo_close_path(context_);
        break;
      case QVDrawing::Kind::Circle:
        cairo_arc(context_, first.x, first.y, drawing.radius, 0.0, 2.0 * M_PI);
        cairo_close_path(context_);
        break;
      default:
        if (throughCenter || drawing.kind == QVDrawing::Kind::Pie)
          cairo_move_to(context_, first.x, first.y);
        cairo_arc(context_, first.x, first.y, drawing.radius,
                  (drawing.beginAngle - 90.0) * kRadiansPerDegree,
                  (drawing.endAngle - 90.0) * kRadiansPerDegree);
        if (throughCenter || drawing.kind == QVDrawing::Kind::Pie) cairo_close_path(context_);
    }
  }

  void Stroke(const QVPen& pen) {
    SetColor(pen.GetLineColor());
    cairo_set_line_width(context_, pen.GetLineWidth());
    cairo_set_line_cap(context_, pen.GetRoundEnds() ? CAIRO_LINE_CAP_ROUND : CAIRO_LINE_CAP_BUTT);
    const DashLengths dashes = GetDashLengths(pen);
    const double lengths[] = {dashes.dash, dashes.gap};
    cairo_set_dash(context_, lengths, dashes.gap > 0.0 ? 2 : 0, 0.0);
    cairo_stroke(context_);
  }

  void DrawText(const QVDrawing& drawing) {
    const QVFont& font = drawing.font;
    cairo_save(context_);
    cairo_set_font_face(context_, MakeFontFace(font).get());
    cairo_set_font_size(context_, font.GetSize());
    SetColor(font.GetColor());
    cairo_translate(context_, drawing.points.front().x, drawing.points.front().y);
    cairo_rotate(context_, -font.GetRotation() * kRadiansPerDegree);
    const double shift = GetAnchorShare(font);
    cairo_move_to(context_, shift > 0.0 ? -shift * QVMeasureText(drawing.text, font).width : 0.0,
                  0.0);
    cairo_show_text(context_, drawing.text.c_str());
    cairo_restore(context_);
  }

  cairo_t* context_;
};

void Paint(cairo_t* context, const QVImage& image) {
  Painter painter(context);
  for (const QVDrawing& drawing : image.GetDrawings()) painter.Draw(drawing);
}

cairo_status_t AppendBytes(void* bytes, const unsigned char* data, unsigned int length) {
  static_cast<std::string*>(bytes)->append(reinterpret_cast<const char*>(data), length);
  return CAIRO_STATUS_SUCCESS;
}

bool Check(cairo_status_t status, std::string& problem) {
  if (status == CAIRO_STATUS_SUCCESS) return true;
  problem = cairo_status_to_string(status);
  return false;
}

}  // namespace

bool MakePng(const QVImage& image, double scale, std::string& bytes, std::string& problem) {
  constexpr double kMaxSide = 32767.0;  // of Cairo's image surfaces
  const double width = std::ceil(image.GetWidth() * scale - 1e-6);
  const double height = std::ceil(image.GetHeight() * scale - 1e-6);
  if (!(width >= 1.0) || !(height >= 1.0) || width > kMaxSide || height > kMaxSide) {
    problem = QVSystem::QVFormat("%.0f x %.0f pixels are not possible, a side has 1 to %.0f", width,
                                 height, kMaxSide);
    return false;
  }
  const CairoPtr<cairo_surface_t> surface(cairo_image_surface_create(
      CAIRO_FORMAT_RGB24, static_cast<int>(width), static_cast<int>(height)));
  const CairoPtr<cairo_t> context(cairo_create(surface.get()));
  cairo_set_source_rgb(context.get(), 1.0, 1.0, 1.0);
  cairo_paint(context.get());
  cairo_scale(context.get(), scale, scale);
  Paint(context.get(), image);
  if (!Check(cairo_status(context.get()), problem)) return false;
  bytes.clear();
  return Check(cairo_surface_write_to_png_stream(surface.get(), &AppendBytes, &bytes), problem);
}

PdfDocument::PdfDocument()
    : surface_(cairo_pdf_surface_create_for_stream(&AppendBytes, &bytes_, 1.0, 1.0)) {
  // The same images give the same bytes only without the time at which they were written.
  cairo_pdf_surface_set_metadata(surface_.get(), CAIRO_PDF_METADATA_CREATE_DATE, "");
}

void PdfDocument::Add(const QVImage& page) {
  cairo_pdf_surface_set_size(surface_.get(), page.GetWidth(), page.GetHeight());
  const CairoPtr<cairo_t> context(cairo_create(surface_.get()));
  Paint(context.get(), page);
  cairo_show_page(context.get());
}

bool PdfDocument::Finish(std::string& bytes, std::string& problem) {
  cairo_surface_finish(surface_.get());
  if (!Check(cairo_surface_status(surface_.get()), problem)) return false;
  bytes.swap(bytes_);
  return true;
}

}  // namespace QVDepict
