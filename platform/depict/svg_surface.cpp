#include <charconv>
#include <cmath>
#include <string_view>

#include "platform/depict/internal/fonts.h"
#include "platform/depict/internal/surfaces.h"

namespace QVDepict {
namespace {

/// Writes the operations of an image as the elements of an SVG 1.1 file.
class SvgWriter {
 public:
  explicit SvgWriter(const QVImage& image)
      : out_(R"(<?xml version="1.0" encoding="UTF-8"?>)"
             "\n<svg xmlns=\"http://www.w3.org/2000/svg\" xml:space=\"preserve\"") {
    Number(" width", image.GetWidth());
    Number(" height", image.GetHeight());
    out_ += " viewBox=\"0 0 " + Text(image.GetWidth()) + ' ' + Text(image.GetHeight()) +
            "\" stroke-linejoin=\"round\">\n"
            "<rect width=\"100%\" height=\"100%\" fill=\"#ffffff\"/>\n";
    for (const QVDrawing& drawing : image.GetDrawings()) Draw(drawing);
    out_ += "</svg>\n";
  }

  std::string Take() { return std::move(out_); }

 private:
  /// Fixed point, at most two decimals: a hundredth of a unit cannot be seen.
  static std::string Text(double value) {
    char digits[400];
    const auto end =
        std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed, 2);
    std::string_view text(digits, static_cast<std::size_t>(end.ptr - digits));
    while (text.back() == '0') text.remove_suffix(1);
    if (text.back() == '.') text.remove_suffix(1);
    return text == "-0" ? "0" : std::string(text);
  }

  void Number(const char* name, double value) {
    out_ += name;
    out_ += "=\"" + Text(value) + '"';
  }

  void Color(const char* name, const QVSystem::QVColor& color) {
    constexpr const char* kHexDigits = "0123456789abcdef";
    out_ += std::string(" ") + name + "=\"#";
    for (const unsigned channel : {color.GetR(), color.GetG(), color.GetB()}) {
      out_ += kHexDigits[channel / 16];
      out_ += kHexDigits[channel % 16];
    }
    out_ += '"';
    if (color.GetA() != 255)
      Number((std::string(" ") + name + "-opacity").c_str(), color.GetA() / 255.0);
  }

  void Fill(const QVPen& pen) {
    if (pen.GetFill())
      Color("fill", pen.GetFillColor());
    else
      out_ += " fill=\"none\"";
  }

  void Outline(const QVPen& pen) {
    if (!HasOutline(pen)) return;
    Color("stroke", pen.GetLineColor());
    if (pen.GetLineWidth() != 1.0) Number(" stroke-width", pen.GetLineWidth());
    if (pen.GetRoundEnds()) out_ += " stroke-linecap=\"round\"";
    const DashLengths dashes = GetDashLengths(pen);
    if (dashes.gap > 0.0)
      out_ += " stroke-dasharray=\"" + Text(dashes.dash) + ' ' + Text(dashes.gap) + '"';
  }

  void Draw(const QVDrawing& drawing) {
    switch (drawing.kind) {
      case QVDrawing::Kind::Line:
      case QVDrawing::Kind::Polygon:
        return DrawPoints(drawing);
      case QVDrawing::Kind::Circle:
        return DrawCircle(drawing);
      case QVDrawing::Kind::Text:
        return DrawText(drawing);
      case QVDrawing::Kind::Pie:
        return DrawSector(drawing, true, true, true);
      case QVDrawing::Kind::Arc:
        if (drawing.pen.GetFill()) DrawSector(drawing, true, true, false);
        if (HasOutline(drawing.pen)) DrawSector(drawing, false, false, true);
    }
  }

  void DrawPoints(const QVDrawing& drawing) {
    out_ += drawing.kind == QVDrawing::Kind::Line ? "<polyline points=\"" : "<polygon points=\"";
    for (std::size_t i = 0; i < drawing.points.size(); ++i)
      out_ += (i > 0 ? " " : "") + Text(drawing.points[i].x) + ',' + Text(drawing.points[i].y);
    out_ += '"';
    Fill(drawing.pen);
    Outline(drawing.pen);
    out_ += "/>\n";
  }

  void DrawCircle(const QVDrawing& drawing) {
    out_ += "<circle";
    Number(" cx", drawing.points.front().x);
    Number(" cy", drawing.points.front().y);
    Number(" r", drawing.radius);
    Fill(drawing.pen);
    Outline(drawing.pen);
    out_ += "/>\n";
  }

  void DrawSector(const QVDrawing& drawing, bool throughCenter, bool fill, bool outline) {
    const QV2DPoint& center = drawing.points.front();
    const auto point = [&](double angle) {
      const double radians = angle * M_PI / 180.0;
      return Text(center.x + drawing.radius * std::sin(radians)) + ' ' +
             Text(center.y - drawing.radius * std::cos(radians));
    };
    // In two halves, because a full circle would end where it begins and vanish.
    const double middle = 0.5 * (drawing.beginAngle + drawing.endAngle);
    const std::string arc = " A" + Text(drawing.radius) + ' ' + Text(drawing.radius) + " 0 0 1 ";
    out_ += "<path d=\"M";
    if (throughCenter) out_ += Text(center.x) + ' ' + Text(center.y) + " L";
    out_ += point(drawing.beginAngle) + arc + point(middle) + arc + point(drawing.endAngle);
    out_ += throughCenter ? " Z\"" : "\"";
    if (fill)
      Fill(drawing.pen);
    else
      out_ += " fill=\"none\"";
    if (outline) Outline(drawing.pen);
    out_ += "/>\n";
  }

  void DrawText(const QVDrawing& drawing) {
    const QVFont& font = drawing.font;
    const QV2DPoint& anchor = drawing.points.front();
    out_ += "<text";
    Number(" x", anchor.x);
    Number(" y", anchor.y);
    out_ += std::string(" font-family=\"") + GetFamilyName(font) +
            (font.GetFamily() == QVFontFamily::Mono ? ", monospace\"" : ", Verdana, sans-serif\"");
    Number(" font-size", font.GetSize());
    if (IsBold(font)) out_ += " font-weight=\"bold\"";
    if (IsItalic(font)) out_ += " font-style=\"italic\"";
    if (font.GetAlignment() == QVAlignment::Center) out_ += " text-anchor=\"middle\"";
    if (font.GetAlignment() == QVAlignment::Right) out_ += " text-anchor=\"end\"";
    // Whatever font the viewer has, the text keeps the length that the layout gave it.
    Number(" textLength", QVMeasureText(drawing.text, font).width);
    out_ += " lengthAdjust=\"spacingAndGlyphs\"";
    if (font.GetRotation() != 0.0)
      out_ += " transform=\"rotate(" + Text(-font.GetRotation()) + ' ' + Text(anchor.x) + ' ' +
              Text(anchor.y) + ")\"";
    Color("fill", font.GetColor());
    out_ += '>';
    for (const char c : drawing.text) Escape(c);
    out_ += "</text>\n";
  }

  void Escape(char c) {
    if (c == '&')
      out_ += "&amp;";
    else if (c == '<')
      out_ += "&lt;";
    else if (c == '>')
      out_ += "&gt;";
    else
      out_ += c;
  }

  std::string out_;
};

}  // namespace

std::string MakeSvg(const QVImage& image) { return SvgWriter(image).Take(); }

}  // namespace QVDepict
