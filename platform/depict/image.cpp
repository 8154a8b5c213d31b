#include "platform/depict/image.h"

#include <algorithm>
#include <cmath>

#include "platform/depict/internal/fonts.h"

namespace QVDepict {
namespace {

bool IsFinite(const QV2DPoint& point) { return std::isfinite(point.x) && std::isfinite(point.y); }

double PositiveOr1(double length) { return std::isfinite(length) && length > 0.0 ? length : 1.0; }

/// The size at which fits are measured.
constexpr double kEmSize = 100.0;

}  // namespace

QVImageBase::QVImageBase(std::shared_ptr<std::vector<QVDrawing>> drawings, const QV2DPoint& corner,
                         double width, double height)
    : drawings_(std::move(drawings)), corner_(corner), width_(width), height_(height) {}

bool QVImageBase::Add(QVDrawing drawing) {
  const bool measures = std::isfinite(drawing.radius) && drawing.radius >= 0.0 &&
                        std::isfinite(drawing.beginAngle) && std::isfinite(drawing.endAngle);
  if (!measures || !std::all_of(drawing.points.begin(), drawing.points.end(), IsFinite))
    return false;
  for (QV2DPoint& point : drawing.points) {
    point.x += corner_.x;
    point.y += corner_.y;
  }
  drawings_->push_back(std::move(drawing));
  return true;
}

bool QVImageBase::DrawLine(const QV2DPoint& from, const QV2DPoint& to, const QVPen& pen) {
  return DrawPolyline({from, to}, pen);
}

bool QVImageBase::DrawPolyline(std::vector<QV2DPoint> points, const QVPen& pen) {
  if (points.size() < 2) return false;
  QVDrawing drawing;
  drawing.points = std::move(points);
  drawing.pen = pen;
  return Add(std::move(drawing));
}

bool QVImageBase::DrawPolygon(std::vector<QV2DPoint> points, const QVPen& pen) {
  if (points.size() < 3) return false;
  QVDrawing drawing;
  drawing.kind = QVDrawing::Kind::Polygon;
  drawing.points = std::move(points);
  drawing.pen = pen;
  return Add(std::move(drawing));
}

bool QVImageBase::DrawRectangle(const QV2DPoint& corner, const QV2DPoint& opposite,
                                const QVPen& pen) {
  return DrawPolygon({corner, {opposite.x, corner.y}, opposite, {corner.x, opposite.y}}, pen);
}

bool QVImageBase::DrawCircle(const QV2DPoint& center, double radius, const QVPen& pen) {
  QVDrawing drawing;
  drawing.kind = QVDrawing::Kind::Circle;
  drawing.points = {center};
  drawing.radius = radius;
  drawing.pen = pen;
  return Add(std::move(drawing));
}

bool QVImageBase::DrawArc(const QV2DPoint& center, double beginAngle, double endAngle,
                          double radius, const QVPen& pen) {
  QVDrawing drawing;
  drawing.kind = QVDrawing::Kind::Arc;
  drawing.points = {center};
  drawing.radius = radius;
  drawing.beginAngle = beginAngle;
  drawing.endAngle = std::min(endAngle, beginAngle + 360.0);
  drawing.pen = pen;
  return endAngle >= beginAngle && Add(std::move(drawing));
}

bool QVImageBase::DrawPie(const QV2DPoint& center, double beginAngle, double endAngle,
                          double radius, const QVPen& pen) {
  if (!DrawArc(center, beginAngle, endAngle, radius, pen)) return false;
  drawings_->back().kind = QVDrawing::Kind::Pie;
  return true;
}

bool QVImageBase::DrawText(const QV2DPoint& anchor, const std::string& text, const QVFont& font) {
  if (!(font.GetSize() > 0.0) || !std::isfinite(font.GetSize()) ||
      !std::isfinite(font.GetRotation()) || !IsFinite(anchor))
    return false;
  if (text.empty()) return true;
  QVDrawing drawing;
  drawing.kind = QVDrawing::Kind::Text;
  drawing.points = {anchor};
  drawing.font = font;
  drawing.text = ToPrintableUtf8(text);
  return Add(std::move(drawing));
}

QVImage::QVImage(double width, double height)
    : QVImage(std::make_shared<std::vector<QVDrawing>>(), PositiveOr1(width), PositiveOr1(height)) {
}

QVImage::QVImage(std::shared_ptr<std::vector<QVDrawing>> record, double width, double height)
    : QVImageBase(record, {0.0, 0.0}, width, height), record_(std::move(record)) {}

QVImageFrame::QVImageFrame(const QVImageBase& image, const QV2DPoint& corner, double width,
                           double height)
    : QVImageBase(image.drawings_, {image.corner_.x + corner.x, image.corner_.y + corner.y},
                  std::max(0.0, width), std::max(0.0, height)) {}

QVImageFrame::QVImageFrame(const QVImageBase& image) : QVImageBase(image) {}

QVImageGrid::QVImageGrid(const QVImageBase& image, unsigned int rows, unsigned int columns,
                         double margin, double gap)
    : area_(QVGetInset(image, margin)),
      rows_(std::max(rows, 1u)),
      columns_(std::max(columns, 1u)),
      gap_(gap) {}

QVImageFrame QVImageGrid::GetCell(unsigned int row, unsigned int column) const {
  const double width = std::max(0.0, (area_.GetWidth() - gap_ * (columns_ - 1)) / columns_);
  const double height = std::max(0.0, (area_.GetHeight() - gap_ * (rows_ - 1)) / rows_);
  return QVImageFrame(area_, {column * (width + gap_), row * (height + gap_)}, width, height);
}

QV2DPoint QVGetCenter(const QVImageBase& image) {
  return {0.5 * image.GetWidth(), 0.5 * image.GetHeight()};
}

QVImageFrame QVGetBuffered(const QVImageBase& image, double fraction) {
  const QV2DPoint corner{fraction * image.GetWidth(), fraction * image.GetHeight()};
  return QVImageFrame(image, corner, image.GetWidth() - 2.0 * corner.x,
                      image.GetHeight() - 2.0 * corner.y);
}

QVImageFrame QVGetInset(const QVImageBase& image, double margin) {
  return QVImageFrame(image, {margin, margin}, image.GetWidth() - 2.0 * margin,
                      image.GetHeight() - 2.0 * margin);
}

std::pair<QVImageFrame, QVImageFrame> QVSplitVertically(const QVImageBase& image, double fraction) {
  const double height = fraction * image.GetHeight();
  return {QVImageFrame(image, {0.0, 0.0}, image.GetWidth(), height),
          QVImageFrame(image, {0.0, height}, image.GetWidth(), image.GetHeight() - height)};
}

std::pair<QVImageFrame, QVImageFrame> QVSplitHorizontally(const QVImageBase& image,
                                                          double fraction) {
  const double width = fraction * image.GetWidth();
  return {QVImageFrame(image, {0.0, 0.0}, width, image.GetHeight()),
          QVImageFrame(image, {width, 0.0}, image.GetWidth() - width, image.GetHeight())};
}

bool QVDrawBorder(QVImageBase& image, const QVPen& pen) {
  const double half = 0.5 * pen.GetLineWidth();
  return image.DrawRectangle({half, half}, {image.GetWidth() - half, image.GetHeight() - half},
                             pen);
}

double QVGetFittingSize(const std::string& text, const QVFont& font, double width, double height,
                        double smallest) {
  // Metrics are not hinted, so they grow in proportion to the size.
  const QVTextExtents extents = QVMeasureText(text, QVFont(font).SetSize(kEmSize));
  double size = font.GetSize();
  if (extents.width > 0.0) size = std::min(size, kEmSize * width / extents.width);
  const double lineHeight = extents.ascent + extents.descent;
  if (lineHeight > 0.0) size = std::min(size, kEmSize * height / lineHeight);
  return size > 0.0 && size >= smallest ? size : 0.0;
}

bool QVDrawTextToFit(QVImageBase& image, const std::string& text, const QVFont& font,
                     double smallest) {
  const double size = QVGetFittingSize(text, font, image.GetWidth(), image.GetHeight(), smallest);
  if (size <= 0.0) return false;
  const QVFont fitted = QVFont(font).SetSize(size);
  const QVTextExtents extents = QVMeasureText(text, fitted);
  const double share = GetAnchorShare(font);
  return image.DrawText(
      {share * image.GetWidth(), 0.5 * (image.GetHeight() + extents.ascent - extents.descent)},
      text, fitted);
}

std::string QVCutText(const std::string& text, const QVFont& font, double width) {
  if (QVMeasureText(text, font).width <= width) return text;
  const std::string ellipsis = "\xE2\x80\xA6";
  const auto cut = [&](std::size_t length) { return text.substr(0, length) + ellipsis; };
  // The longest prefix that fits, by bisection; it must not end inside a character.
  std::size_t fits = 0;
  std::size_t tooLong = text.size();
  if (QVMeasureText(cut(0), font).width > width) return "";
  while (tooLong - fits > 1) {
    const std::size_t middle = fits + (tooLong - fits) / 2;
    (QVMeasureText(cut(middle), font).width <= width ? fits : tooLong) = middle;
  }
  const auto isContinuation = [&](std::size_t i) {
    return (static_cast<unsigned char>(text[i]) & 0xC0u) == 0x80u;
  };
  while (fits > 0 && isContinuation(fits)) --fits;
  return cut(fits);
}

}  // namespace QVDepict
