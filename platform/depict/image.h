/// \file
/// \brief Images: what is drawn is recorded, and any number of files can be made of the record.
///
/// Lengths are in units of the image: one pixel of a PNG, one point (1/72 inch) of a PDF. The
/// origin is the top left corner, x grows to the right and y downwards. Angles are in degrees,
/// clockwise from twelve o'clock. Text is UTF-8; bytes that are not are read as Latin-1.
///
/// Every drawing operation returns whether it drew: false for coordinates that are not finite.
#ifndef QV_PLATFORM_DEPICT_IMAGE_H
#define QV_PLATFORM_DEPICT_IMAGE_H

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/depict/export.h"
#include "platform/depict/pen.h"

namespace QVDepict {

struct QV2DPoint {
  double x = 0.0;
  double y = 0.0;
};

/// One recorded drawing operation, in coordinates of the whole image.
struct QVDrawing {
  enum class Kind {
    Line,     ///< an open line through the points
    Polygon,  ///< a closed line through the points, filled if the pen says so
    Circle,   ///< points[0] is the centre
    Arc,      ///< a filling pen fills the sector; only the arc is outlined
    Pie,      ///< a sector with its whole outline
    Text,     ///< points[0] is the anchor on the base line
  };
  Kind kind = Kind::Line;
  std::vector<QV2DPoint> points;
  double radius = 0.0;
  double beginAngle = 0.0;
  double endAngle = 0.0;
  QVPen pen;
  QVFont font;
  std::string text;
};

/// A rectangle to draw in: a whole image or a part of one.
class QVDEPICT_EXPORT QVImageBase {
 public:
  double GetWidth() const { return width_; }
  double GetHeight() const { return height_; }

  bool DrawLine(const QV2DPoint& from, const QV2DPoint& to, const QVPen& pen);
  /// An open line through two points or more.
  bool DrawPolyline(std::vector<QV2DPoint> points, const QVPen& pen);
  /// A closed line through three points or more.
  bool DrawPolygon(std::vector<QV2DPoint> points, const QVPen& pen);
  bool DrawRectangle(const QV2DPoint& corner, const QV2DPoint& opposite, const QVPen& pen);
  bool DrawCircle(const QV2DPoint& center, double radius, const QVPen& pen);
  /// The arc from one angle to a larger one, at most 360 degrees on.
  bool DrawArc(const QV2DPoint& center, double beginAngle, double endAngle, double radius,
               const QVPen& pen);
  bool DrawPie(const QV2DPoint& center, double beginAngle, double endAngle, double radius,
               const QVPen& pen);
  /// \return also false for a font size that is not positive. An empty text is drawn at no cost.
  bool DrawText(const QV2DPoint& anchor, const std::string& text, const QVFont& font);

 protected:
  QVImageBase(std::shared_ptr<std::vector<QVDrawing>> drawings, const QV2DPoint& corner,
              double width, double height);

 private:
  friend class QVImageFrame;
  bool Add(QVDrawing drawing);

  std::shared_ptr<std::vector<QVDrawing>> drawings_;
  QV2DPoint corner_;
  double width_;
  double height_;
};

/// A whole image on white ground.
class QVDEPICT_EXPORT QVImage : public QVImageBase {
 public:
  /// A width or height that is not a positive number becomes 1.
  QVImage(double width, double height);
  QVImage(const QVImage&) = delete;
  QVImage& operator=(const QVImage&) = delete;
  QVImage(QVImage&&) = default;
  QVImage& operator=(QVImage&&) = default;

  /// What was drawn so far, in the order drawn: bottom first.
  const std::vector<QVDrawing>& GetDrawings() const { return *record_; }
  void Clear() { record_->clear(); }

 private:
  explicit QVImage(std::shared_ptr<std::vector<QVDrawing>> record, double width, double height);
  std::shared_ptr<std::vector<QVDrawing>> record_;
};

/// A part of an image, with its own origin. Drawing is not clipped to it. It shares the record of
/// the image, so it stays valid as long as it is used, and copies of it draw into the same image.
class QVDEPICT_EXPORT QVImageFrame : public QVImageBase {
 public:
  /// The part of `image` with its top left corner at `corner`. A negative width or height counts as
  /// 0.
  QVImageFrame(const QVImageBase& image, const QV2DPoint& corner, double width, double height);
  /// All of `image`.
  explicit QVImageFrame(const QVImageBase& image);
};

/// Equal cells in rows and columns.
class QVDEPICT_EXPORT QVImageGrid {
 public:
  /// `margin` is left free along the four sides, `gap` between neighbouring cells.
  QVImageGrid(const QVImageBase& image, unsigned int rows, unsigned int columns,
              double margin = 0.0, double gap = 0.0);

  unsigned int GetNumRows() const { return rows_; }
  unsigned int GetNumColumns() const { return columns_; }
  /// Rows and columns count from 0; there are cells beyond the last, outside of the image.
  QVImageFrame GetCell(unsigned int row, unsigned int column) const;

 private:
  QVImageFrame area_;
  unsigned int rows_;
  unsigned int columns_;
  double gap_;
};

QVDEPICT_EXPORT QV2DPoint QVGetCenter(const QVImageBase& image);
/// The image without a margin of `fraction` of its width at the left and right and of `fraction` of
/// its height at the top and bottom.
QVDEPICT_EXPORT QVImageFrame QVGetBuffered(const QVImageBase& image, double fraction);
/// The image without a margin of the same length on all sides.
QVDEPICT_EXPORT QVImageFrame QVGetInset(const QVImageBase& image, double margin);
/// The upper `fraction` of the image and the rest below it.
QVDEPICT_EXPORT std::pair<QVImageFrame, QVImageFrame> QVSplitVertically(const QVImageBase& image,
                                                                        double fraction);
/// The left `fraction` of the image and the rest beside it.
QVDEPICT_EXPORT std::pair<QVImageFrame, QVImageFrame> QVSplitHorizontally(const QVImageBase& image,
                                                                          double fraction);
/// The outline of the image, kept inside of it by half the line width.
QVDEPICT_EXPORT bool QVDrawBorder(QVImageBase& image, const QVPen& pen);

/// Measures of a text that is not rotated, in units of the image.
struct QVTextExtents {
  double width = 0.0;    ///< the advance from its first glyph to the end of its last
  double ascent = 0.0;   ///< of the font, above the base line
  double descent = 0.0;  ///< of the font, below the base line
};
QVDEPICT_EXPORT QVTextExtents QVMeasureText(const std::string& text, const QVFont& font);

/// The size, at most that of the font, at which the text fits a box.
/// \return 0 if it would be below `smallest`.
QVDEPICT_EXPORT double QVGetFittingSize(const std::string& text, const QVFont& font, double width,
                                        double height, double smallest = 6.0);

/// Draws a text into the image, centred vertically, at its left, middle or right as the font is
/// aligned, and as large as fits, but not above the size of the font.
/// \return false, and nothing is drawn, if it would be smaller than `smallest`.
QVDEPICT_EXPORT bool QVDrawTextToFit(QVImageBase& image, const std::string& text,
                                     const QVFont& font, double smallest = 6.0);

/// The text cut to a width, with an ellipsis for what was cut off; "" if not even that fits.
QVDEPICT_EXPORT std::string QVCutText(const std::string& text, const QVFont& font, double width);

}  // namespace QVDepict

#endif  // QV_PLATFORM_DEPICT_IMAGE_H
