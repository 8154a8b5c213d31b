#include "platform/depict/plot.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <unordered_set>

#include "platform/system/text.h"

namespace QVDepict {
namespace {

using QVSystem::QVColor;

constexpr double kLargest = 1e300;  // the sentinels of missing and bad data lie beyond
constexpr QVColor kAxisColor{60, 60, 60};
constexpr QVColor kGridColor{228, 228, 228};

bool IsUsable(double value) { return std::abs(value) < kLargest; }

QVColor WithAlpha(const QVColor& color, std::uint8_t alpha) {
  return QVColor(color.GetR(), color.GetG(), color.GetB(), alpha);
}

/// A range of data, grown value by value.
struct Range {
  double min = std::numeric_limits<double>::infinity();
  double max = -std::numeric_limits<double>::infinity();

  void Include(double value) {
    min = std::min(min, value);
    max = std::max(max, value);
  }
  bool IsEmpty() const { return !(min <= max); }
};

struct Tick {
  double position;  // on the scale of the axis: a logarithm where it is logarithmic
  std::string text;
};

/// The step between round numbers that gives at most `maxTicks` of them.
double GetTickStep(double span, unsigned int maxTicks) {
  const double rough = span / std::max(1u, maxTicks);
  const double power = std::pow(10.0, std::floor(std::log10(rough)));
  for (const double factor : {1.0, 2.0, 5.0})
    if (factor * power >= rough * (1.0 - 1e-9)) return factor * power;
  return 10.0 * power;
}

std::vector<Tick> MakeLinearTicks(double min, double max, unsigned int maxTicks) {
  const std::vector<double> values = QVGetTicks(min, max, maxTicks);
  const double step = values.size() > 1 ? values[1] - values[0] : max - min;
  std::vector<Tick> ticks;
  for (const double value : values) ticks.push_back({value, QVGetTickText(value, step)});
  return ticks;
}

/// Powers of ten, thinned to what fits; less than a decade gets linear ticks at their logarithms.
std::vector<Tick> MakeLogarithmicTicks(double min, double max, unsigned int maxTicks) {
  std::vector<Tick> ticks;
  const double first = std::ceil(min - 1e-9);
  const double last = std::floor(max + 1e-9);
  if (last - first < 1.0) {
    for (const Tick& tick : MakeLinearTicks(std::pow(10.0, min), std::pow(10.0, max), maxTicks))
      if (tick.position > 0.0) ticks.push_back({std::log10(tick.position), tick.text});
    return ticks;
  }
  const double step = std::max(1.0, std::ceil((last - first) / std::max(1u, maxTicks)));
  for (double power = first; power <= last; power += step)
    ticks.push_back({power, QVSystem::QVNumberToString(std::pow(10.0, power), 6)});
  return ticks;
}

}  // namespace

std::vector<double> QVGetTicks(double min, double max, unsigned int maxTicks) {
  if (!(min < max) || !IsUsable(min) || !IsUsable(max)) return {};
  const double step = GetTickStep(max - min, maxTicks);
  const double first = std::ceil(min / step - 1e-9);
  const double last = std::floor(max / step + 1e-9);
  std::vector<double> ticks;
  // From whole multiples, so that no rounding error adds up; + 0.0 turns -0 into 0.
  for (double k = first; k <= last && ticks.size() <= maxTicks; ++k)
    ticks.push_back(k * step + 0.0);
  return ticks;
}

std::string QVGetTickText(double tick, double step) {
  const double magnitude = std::max(std::abs(tick), step);
  if (magnitude >= 1e6 || magnitude < 1e-4) {
    const double digits = tick == 0.0 ? 1.0 : std::log10(std::abs(tick) / step) + 1.0;
    return QVSystem::QVNumberToString(
        tick, static_cast<unsigned int>(std::clamp(std::ceil(digits - 1e-9), 1.0, 15.0)));
  }
  const double decimals = std::clamp(-std::floor(std::log10(step) + 1e-9), 0.0, 12.0);
  return QVSystem::QVFormat("%.*f", static_cast<int>(decimals), tick);
}

QVColor QVGetSeriesColor(unsigned int i) {
  constexpr QVColor kColors[] = {{0, 114, 178}, {213, 94, 0},   {0, 158, 115}, {204, 121, 167},
                                 {230, 159, 0}, {86, 180, 233}, {0, 0, 0}};
  return kColors[i % std::size(kColors)];
}

QVPlot& QVPlot::SetTitle(std::string title) {
  title_ = std::move(title);
  return *this;
}

QVPlot& QVPlot::SetXLabel(std::string label) {
  x_.label = std::move(label);
  return *this;
}

QVPlot& QVPlot::SetYLabel(std::string label) {
  y_.label = std::move(label);
  return *this;
}

QVPlot& QVPlot::SetXRange(double min, double max) {
  if (min < max && IsUsable(min) && IsUsable(max)) x_.range = {min, max};
  return *this;
}

QVPlot& QVPlot::SetYRange(double min, double max) {
  if (min < max && IsUsable(min) && IsUsable(max)) y_.range = {min, max};
  return *this;
}

QVPlot& QVPlot::SetXLogarithmic(bool logarithmic) {
  x_.logarithmic = logarithmic;
  return *this;
}

QVPlot& QVPlot::SetYLogarithmic(bool logarithmic) {
  y_.logarithmic = logarithmic;
  return *this;
}

QVPlot& QVPlot::SetXTicks(std::vector<std::pair<double, std::string>> ticks) {
  xTicks_ = std::move(ticks);
  return *this;
}

QVPlot& QVPlot::SetSquare(bool square) {
  square_ = square;
  return *this;
}

QVPlot& QVPlot::Add(Kind kind, std::vector<double> x, std::vector<double> y,
                    std::vector<double> upper, std::string label, OptionalColor color,
                    unsigned int stipple) {
  if (!color) color = QVGetSeriesColor(numColors_++);
  series_.push_back(
      {kind, std::move(x), std::move(y), std::move(upper), std::move(label), *color, stipple});
  return *this;
}

QVPlot& QVPlot::AddLine(std::vector<double> x, std::vector<double> y, std::string label,
                        OptionalColor color, unsigned int stipple) {
  return Add(Kind::Line, std::move(x), std::move(y), {}, std::move(label), color, stipple);
}

QVPlot& QVPlot::AddSteps(const std::vector<double>& x, const std::vector<double>& y,
                         std::string label, OptionalColor color) {
  std::vector<double> stepX;
  std::vector<double> stepY;
  for (std::size_t i = 0; i < std::min(x.size(), y.size()); ++i) {
    if (i > 0) {
      stepX.push_back(x[i]);
      stepY.push_back(y[i - 1]);
    }
    stepX.push_back(x[i]);
    stepY.push_back(y[i]);
  }
  return Add(Kind::Line, std::move(stepX), std::move(stepY), {}, std::move(label), color);
}

QVPlot& QVPlot::AddPoints(std::vector<double> x, std::vector<double> y, std::string label,
                          OptionalColor color) {
  return Add(Kind::Points, std::move(x), std::move(y), {}, std::move(label), color);
}

QVPlot& QVPlot::AddBars(std::vector<double> edges, std::vector<double> heights, std::string label,
                        OptionalColor color) {
  return Add(Kind::Bars, std::move(edges), std::move(heights), {}, std::move(label), color);
}

QVPlot& QVPlot::AddBand(std::vector<double> x, std::vector<double> lower, std::vector<double> upper,
                        std::string label, OptionalColor color) {
  return Add(Kind::Band, std::move(x), std::move(lower), std::move(upper), std::move(label), color);
}

QVPlot& QVPlot::AddVerticalLine(double x, std::string label, OptionalColor color) {
  return Add(Kind::Vertical, {x}, {}, {}, std::move(label), color, QVStipple::Dash);
}

QVPlot& QVPlot::AddHorizontalLine(double y, std::string label, OptionalColor color) {
  return Add(Kind::Horizontal, {}, {y}, {}, std::move(label), color, QVStipple::Dash);
}

/// Lays one plot out on one image and draws it.
class QVPlot::Renderer {
 public:
  Renderer(const QVPlot& plot, QVImageBase& image) : plot_(plot), image_(image) {
    size_ = std::clamp(0.032 * std::min(image.GetWidth(), 1.4 * image.GetHeight()), 7.0, 14.0);
    font_ = QVFont(QVFontFamily::Sans, QVFontStyle::Normal, size_, QVAlignment::Center);
  }

  bool Render() {
    if (!FindRanges()) return false;
    right_ = image_.GetWidth() - 1.5 * size_;
    if (!LayOut()) return false;
    PlaceLegend();
    DrawGrid();
    for (const Series& series : plot_.series_) Draw(series);
    DrawAxes();
    DrawLegend();
    return true;
  }

 private:
  /// Converts to the scale of an axis; NaN for what cannot be shown.
  static double ToScale(const Axis& axis, double value) {
    if (!IsUsable(value) || (axis.logarithmic && !(value > 0.0)))
      return std::numeric_limits<double>::quiet_NaN();
    return axis.logarithmic ? std::log10(value) : value;
  }

  static void Include(Range& range, const Axis& axis, const std::vector<double>& values) {
    for (const double value : values) {
      const double scaled = ToScale(axis, value);
      if (!std::isnan(scaled)) range.Include(scaled);
    }
  }

  /// The range that is shown: as set, or that of the data with a little room around it.
  static Range Finish(Range range, const Axis& axis, bool keepMin) {
    if (axis.range) {
      const Range set{ToScale(axis, axis.range->first), ToScale(axis, axis.range->second)};
      if (!std::isnan(set.min) && !std::isnan(set.max)) return set;
    }
    const double span = range.max - range.min;
    const double room =
        span > 1e-12 * std::abs(range.max) ? 0.04 * span : std::max(0.5 * std::abs(range.max), 0.5);
    return {keepMin ? range.min : range.min - room, range.max + room};
  }

  bool FindRanges() {
    bool hasBars = false;
    for (const Series& series : plot_.series_) {
      Include(x_, plot_.x_, series.x);
      Include(y_, plot_.y_, series.y);
      Include(y_, plot_.y_, series.upper);
      hasBars = hasBars || series.kind == Kind::Bars;
    }
    if (x_.IsEmpty() && plot_.x_.range) x_ = {0.0, 1.0};
    if (y_.IsEmpty() && plot_.y_.range) y_ = {0.0, 1.0};
    if (x_.IsEmpty() || y_.IsEmpty()) return false;
    const bool fromZero = hasBars && !plot_.y_.logarithmic && y_.min >= 0.0;
    if (fromZero) y_.min = 0.0;
    x_ = Finish(x_, plot_.x_, false);
    y_ = Finish(y_, plot_.y_, fromZero);
    return true;
  }

  static std::vector<Tick> MakeTicks(const Axis& axis, const Range& range, double count) {
    const auto maxTicks = static_cast<unsigned int>(std::clamp(count, 2.0, 10.0));
    return axis.logarithmic ? MakeLogarithmicTicks(range.min, range.max, maxTicks)
                            : MakeLinearTicks(range.min, range.max, maxTicks);
  }

  double GetWidthOf(const std::string& text) const { return QVMeasureText(text, font_).width; }

  bool LayOut() {
    const double height = image_.GetHeight();
    top_ = plot_.title_.empty() ? 0.8 * size_ : 2.6 * size_;
    bottom_ = height - (plot_.x_.label.empty() ? 2.2 * size_ : 3.8 * size_);
    yTicks_ = MakeTicks(plot_.y_, y_, (bottom_ - top_) / (2.4 * size_));
    double widest = 0.0;
    for (const Tick& tick : yTicks_) widest = std::max(widest, GetWidthOf(tick.text));
    left_ = widest + (plot_.y_.label.empty() ? 1.2 : 2.9) * size_;
    if (right_ - left_ < 20.0 || bottom_ - top_ < 15.0) return false;
    if (plot_.square_) MakeSquare();
    // As many ticks as their own texts leave room for.
    for (double count = (right_ - left_) / (3.0 * size_);; count *= 0.7) {
      xTicks_ = MakeTicks(plot_.x_, x_, count);
      double length = 0.0;
      for (const Tick& tick : xTicks_) length += GetWidthOf(tick.text) + size_;
      if (length <= right_ - left_ || count < 2.0) break;
    }
    if (!plot_.xTicks_.empty()) TakeNamedTicks();
    return true;
  }

  void MakeSquare() {
    const double scale =
        std::min((right_ - left_) / (x_.max - x_.min), (bottom_ - top_) / (y_.max - y_.min));
    const double freeWidth = right_ - left_ - scale * (x_.max - x_.min);
    const double freeHeight = bottom_ - top_ - scale * (y_.max - y_.min);
    left_ += 0.5 * freeWidth;
    right_ -= 0.5 * freeWidth;
    top_ += 0.5 * freeHeight;
    bottom_ -= 0.5 * freeHeight;
  }

  void TakeNamedTicks() {
    xTicks_.clear();
    const double room = (right_ - left_) / static_cast<double>(plot_.xTicks_.size());
    for (const auto& [value, name] : plot_.xTicks_) {
      const double position = ToScale(plot_.x_, value);
      if (position >= x_.min && position <= x_.max)
        xTicks_.push_back({position, QVCutText(name, font_, std::max(room, 2.0 * size_))});
    }
  }

  /// From the scale of the axes to the image.
  double MapX(double x) const {
    return left_ + (x - x_.min) / (x_.max - x_.min) * (right_ - left_);
  }
  double MapY(double y) const {
    return bottom_ - (y - y_.min) / (y_.max - y_.min) * (bottom_ - top_);
  }
  QV2DPoint Map(double x, double y) const {
    return {MapX(ToScale(plot_.x_, x)), MapY(ToScale(plot_.y_, y))};
  }
  bool IsInside(const QV2DPoint& point) const {
    constexpr double kSlack = 1e-6;
    return point.x >= left_ - kSlack && point.x <= right_ + kSlack && point.y >= top_ - kSlack &&
           point.y <= bottom_ + kSlack;
  }

  void DrawGrid() {
    const QVPen pen = QVLinePen(kGridColor, 0.7);
    for (const Tick& tick : yTicks_)
      image_.DrawLine({left_, MapY(tick.position)}, {right_, MapY(tick.position)}, pen);
    for (const Tick& tick : xTicks_)
      image_.DrawLine({MapX(tick.position), top_}, {MapX(tick.position), bottom_}, pen);
  }

  void DrawAxes() {
    const QVPen pen = QVLinePen(kAxisColor, 1.0);
    image_.DrawPolyline({{left_, top_}, {left_, bottom_}, {right_, bottom_}}, pen);
    const double length = 0.35 * size_;
    for (const Tick& tick : xTicks_) {
      const double x = MapX(tick.position);
      image_.DrawLine({x, bottom_}, {x, bottom_ + length}, pen);
      image_.DrawText({x, bottom_ + 1.5 * size_}, tick.text, font_);
    }
    const QVFont right = QVFont(font_).SetAlignment(QVAlignment::Right);
    for (const Tick& tick : yTicks_) {
      const double y = MapY(tick.position);
      image_.DrawLine({left_ - length, y}, {left_, y}, pen);
      image_.DrawText({left_ - 0.6 * size_, y + 0.36 * size_}, tick.text, right);
    }
    const double middleX = 0.5 * (left_ + right_);
    const double middleY = 0.5 * (top_ + bottom_);
    image_.DrawText({middleX, bottom_ + 3.1 * size_},
                    QVCutText(plot_.x_.label, font_, right_ - left_), font_);
    image_.DrawText({left_ - (GetWidestYTick() + 1.3 * size_), middleY},
                    QVCutText(plot_.y_.label, font_, bottom_ - top_),
                    QVFont(font_).SetRotation(90.0));
    const QVFont bold = QVFont(font_).SetStyle(QVFontStyle::Bold).SetSize(1.15 * size_);
    image_.DrawText({middleX, std::min(1.6 * size_, top_ - 0.8 * size_)},
                    QVCutText(plot_.title_, bold, image_.GetWidth() - size_), bold);
  }

  double GetWidestYTick() const {
    double widest = 0.0;
    for (const Tick& tick : yTicks_) widest = std::max(widest, GetWidthOf(tick.text));
    return widest;
  }

  void Draw(const Series& series) {
    switch (series.kind) {
      case Kind::Line:
        return DrawLine(series);
      case Kind::Points:
        return DrawPoints(series);
      case Kind::Bars:
        return DrawBars(series);
      case Kind::Band:
        return DrawBand(series);
      case Kind::Vertical:
      case Kind::Horizontal:
        return DrawAcross(series);
    }
  }

  /// Cuts a segment to the plot area (Liang and Barsky, 1984).
  bool Clip(QV2DPoint& from, QV2DPoint& to) const {
    const double dx = to.x - from.x;
    const double dy = to.y - from.y;
    double begin = 0.0;
    double end = 1.0;
    const auto cut = [&](double direction, double distance) {
      if (direction == 0.0) return distance >= 0.0;
      const double t = distance / direction;
      if (direction < 0.0)
        begin = std::max(begin, t);
      else
        end = std::min(end, t);
      return begin <= end;
    };
    if (!cut(-dx, from.x - left_) || !cut(dx, right_ - from.x) || !cut(-dy, from.y - top_) ||
        !cut(dy, bottom_ - from.y))
      return false;
    const QV2DPoint start = from;
    from = {start.x + begin * dx, start.y + begin * dy};
    to = {start.x + end * dx, start.y + end * dy};
    return true;
  }

  /// Draws a run of points without a gap; points that cannot be told apart are drawn once.
  void DrawRun(const std::vector<QV2DPoint>& run, const QVPen& pen) {
    std::vector<QV2DPoint> piece;
    const auto flush = [&] {
      if (piece.size() > 1) image_.DrawPolyline(piece, pen);
      piece.clear();
    };
    for (std::size_t i = 1; i < run.size(); ++i) {
      QV2DPoint from = run[i - 1];
      QV2DPoint to = run[i];
      if (!Clip(from, to)) {
        flush();
        continue;
      }
      if (piece.empty() || std::hypot(piece.back().x - from.x, piece.back().y - from.y) > 0.3) {
        flush();
        piece.push_back(from);
      }
      const bool isLast = i + 1 == run.size();
      const double moved = std::hypot(to.x - piece.back().x, to.y - piece.back().y);
      if (moved > 0.25 || (isLast && moved > 0.0)) piece.push_back(to);
    }
    flush();
  }

  void DrawLine(const Series& series) {
    const QVPen pen = QVLinePen(series.color, 0.13 * size_, series.stipple);
    std::vector<QV2DPoint> run;
    const std::size_t count = std::min(series.x.size(), series.y.size());
    for (std::size_t i = 0; i < count; ++i) {
      const QV2DPoint point = Map(series.x[i], series.y[i]);
      if (!std::isnan(point.x) && !std::isnan(point.y)) {
        run.push_back(point);
        continue;
      }
      DrawRun(run, pen);
      run.clear();
    }
    DrawRun(run, pen);
  }

  /// One dot for each place that can be told apart; more places than can be looked at are drawn as
  /// the cells of a grid.
  void DrawPoints(const Series& series) {
    constexpr std::size_t kMostDots = 10000;
    const std::size_t count = std::min(series.x.size(), series.y.size());
    const double radius = size_ * (count > 2000 ? 0.12 : count > 200 ? 0.18 : 0.24);
    const QVPen pen = QVFillPen(WithAlpha(series.color, count > 200 ? 150 : 215));
    const double pitch = 0.5 * radius;
    std::unordered_set<std::uint64_t> taken;
    std::vector<QV2DPoint> inside, dots;
    for (std::size_t i = 0; i < count; ++i) {
      const QV2DPoint point = Map(series.x[i], series.y[i]);
      if (!IsInside(point)) continue;
      inside.push_back(point);
      const auto column = static_cast<std::uint64_t>((point.x - left_ + 1.0) / pitch);
      const auto row = static_cast<std::uint64_t>((point.y - top_ + 1.0) / pitch);
      if (dots.size() <= kMostDots && taken.insert(column << 32u | row).second)
        dots.push_back(point);
    }
    if (dots.size() > kMostDots) return DrawCells(inside, series.color);
    for (const QV2DPoint& dot : dots) image_.DrawCircle(dot, radius, pen);
  }

  /// A grid of cells, the darker the more points one holds, by the logarithm of their number.
  /// Neighbours of one shade are drawn as one rectangle. Cells of the only series are opaque and
  /// reach below their neighbours to the right and underneath, so that no seam shows between them.
  void DrawCells(const std::vector<QV2DPoint>& points, const QVColor& color) {
    constexpr double kCell = 4.0;
    constexpr int kShades = 6;
    const bool isAlone = plot_.series_.size() == 1;
    const double overlap = isAlone ? 0.5 : 0.0;
    const double x0 = std::floor(left_);
    const double y0 = std::floor(top_);
    const auto numColumns = static_cast<std::size_t>((right_ - x0) / kCell) + 1;
    std::vector<double> counts(numColumns * (static_cast<std::size_t>((bottom_ - y0) / kCell) + 1));
    for (const QV2DPoint& point : points)
      ++counts[static_cast<std::size_t>((std::clamp(point.y, top_, bottom_) - y0) / kCell) *
                   numColumns +
               static_cast<std::size_t>((std::clamp(point.x, left_, right_) - x0) / kCell)];
    const double largest = std::log1p(*std::max_element(counts.begin(), counts.end()));
    const auto shadeOf = [&](std::size_t i) {
      return static_cast<int>(std::ceil(kShades * std::log1p(counts[i]) / largest - 1e-9));
    };
    for (std::size_t i = 0; i < counts.size();) {
      const std::size_t row = i / numColumns;
      std::size_t end = i + 1;
      while (end < (row + 1) * numColumns && shadeOf(end) == shadeOf(i)) ++end;
      const auto first = static_cast<double>(i - row * numColumns);
      const auto last = static_cast<double>(end - row * numColumns);
      const double top = y0 + kCell * static_cast<double>(row);
      const QV2DPoint corner{std::max(left_, x0 + kCell * first), std::max(top_, top)};
      const QV2DPoint opposite{std::min(right_, x0 + kCell * last + overlap),
                               std::min(bottom_, top + kCell + overlap)};
      const double share = 0.08 + 0.82 * shadeOf(i) / kShades;
      const auto alpha = static_cast<std::uint8_t>(255.0 * share);
      if (shadeOf(i) > 0)
        image_.DrawRectangle(
            corner, opposite,
            QVFillPen(isAlone ? QVSystem::QVMixColors(QVSystem::QVWhite, color, share)
                              : WithAlpha(color, alpha)));
      i = end;
    }
  }

  void DrawBars(const Series& series) {
    const QVPen pen(QVSystem::QVMixColors(QVSystem::QVWhite, series.color, 0.55), series.color,
                    true, 0.06 * size_);
    const double base = plot_.y_.logarithmic ? bottom_ : std::clamp(MapY(0.0), top_, bottom_);
    for (std::size_t i = 0; i + 1 < series.x.size() && i < series.y.size(); ++i) {
      const QV2DPoint end = Map(series.x[i + 1], series.y[i]);
      const double from = MapX(ToScale(plot_.x_, series.x[i]));
      if (series.y[i] == 0.0 || std::isnan(end.x + end.y + from)) continue;
      const double begin = std::clamp(from, left_, right_);
      const double stop = std::clamp(end.x, left_, right_);
      if (begin != stop)
        image_.DrawRectangle({begin, std::clamp(end.y, top_, bottom_)}, {stop, base}, pen);
    }
  }

  void DrawBand(const Series& series) {
    const std::size_t count = std::min({series.x.size(), series.y.size(), series.upper.size()});
    std::vector<QV2DPoint> outline;
    std::vector<QV2DPoint> way;
    for (std::size_t i = 0; i < count; ++i) {
      QV2DPoint low = Map(series.x[i], series.y[i]);
      QV2DPoint high = Map(series.x[i], series.upper[i]);
      if (std::isnan(low.x + low.y + high.y) || low.x < left_ || low.x > right_) continue;
      outline.push_back({low.x, std::clamp(low.y, top_, bottom_)});
      way.push_back({high.x, std::clamp(high.y, top_, bottom_)});
    }
    outline.insert(outline.end(), way.rbegin(), way.rend());
    image_.DrawPolygon(outline, QVFillPen(WithAlpha(series.color, 60)));
  }

  void DrawAcross(const Series& series) {
    const bool vertical = series.kind == Kind::Vertical;
    const double place =
        vertical ? MapX(ToScale(plot_.x_, series.x[0])) : MapY(ToScale(plot_.y_, series.y[0]));
    QV2DPoint from = vertical ? QV2DPoint{place, bottom_} : QV2DPoint{left_, place};
    QV2DPoint to = vertical ? QV2DPoint{place, top_} : QV2DPoint{right_, place};
    if (!std::isnan(place) && Clip(from, to))
      image_.DrawLine(from, to, QVLinePen(series.color, 0.1 * size_, series.stipple));
  }

  /// In a free corner of the plot, or beside it when all of them hold data and there is room.
  void PlaceLegend() {
    double width = 0.0;
    for (const Series& series : plot_.series_) {
      if (series.label.empty()) continue;
      named_.push_back(&series);
      width = std::max(width, GetWidthOf(series.label));
    }
    if (named_.empty()) return;
    legendWidth_ = std::min(width + 3.4 * size_, right_ - left_);
    legendHeight_ = 1.5 * size_ * static_cast<double>(named_.size()) + 0.6 * size_;
    const double plotWidth = right_ - left_;
    if (FindFreeCorner() || plotWidth < 2.0 * legendWidth_) return;
    right_ = image_.GetWidth() - legendWidth_ - size_;
    LayOut();
    legend_ = {right_ + 0.6 * size_, top_};
  }

  void DrawLegend() {
    if (named_.empty()) return;
    image_.DrawRectangle(legend_, {legend_.x + legendWidth_, legend_.y + legendHeight_},
                         QVPen(WithAlpha(QVSystem::QVWhite, 225), kGridColor, true, 0.7));
    const QVFont left = QVFont(font_).SetAlignment(QVAlignment::Left);
    double y = legend_.y + 1.05 * size_;
    for (const Series* series : named_) {
      DrawSample(*series, legend_.x + 0.6 * size_, y);
      image_.DrawText({legend_.x + 2.8 * size_, y + 0.36 * size_},
                      QVCutText(series->label, left, legendWidth_ - 3.2 * size_), left);
      y += 1.5 * size_;
    }
  }

  void DrawSample(const Series& series, double x, double y) {
    const double length = 1.7 * size_;
    const QV2DPoint corner{x, y - 0.35 * size_};
    const QV2DPoint opposite{x + length, y + 0.35 * size_};
    switch (series.kind) {
      case Kind::Points:
        image_.DrawCircle({x + 0.5 * length, y}, 0.24 * size_, QVFillPen(series.color));
        return;
      case Kind::Bars:
        image_.DrawRectangle(corner, opposite,
                             QVPen(QVSystem::QVMixColors(QVSystem::QVWhite, series.color, 0.55),
                                   series.color, true, 0.06 * size_));
        return;
      case Kind::Band:
        image_.DrawRectangle(corner, opposite, QVFillPen(WithAlpha(series.color, 60)));
        return;
      default:
        image_.DrawLine({x, y}, {x + length, y},
                        QVLinePen(series.color, 0.13 * size_, series.stipple));
    }
  }

  /// Puts the legend where it covers least. \return whether it covers nothing there.
  bool FindFreeCorner() {
    const double gap = 0.5 * size_;
    const double west = left_ + gap;
    const double east = std::max(west, right_ - gap - legendWidth_);
    const double north = top_ + gap;
    const double south = std::max(north, bottom_ - gap - legendHeight_);
    const QV2DPoint corners[] = {{east, north}, {west, north}, {east, south}, {west, south}};
    std::size_t fewest = std::numeric_limits<std::size_t>::max();
    for (const QV2DPoint& corner : corners) {
      std::size_t covered = 0;
      for (const Series& series : plot_.series_) covered += CountCovered(series, corner);
      if (covered >= fewest) continue;
      fewest = covered;
      legend_ = corner;
    }
    return fewest == 0;
  }

  std::size_t CountCovered(const Series& series, const QV2DPoint& corner) const {
    const std::size_t count = std::min(series.x.size(), series.y.size());
    const std::size_t stride = 1 + count / 5000;
    // A line is looked at between its points too, bars down to their base.
    const bool isLine = series.kind == Kind::Line;
    const int steps = isLine && count < 500 ? 12 : 1;
    const bool bars = series.kind == Kind::Bars;
    std::size_t covered = 0;
    for (std::size_t i = 0; i < count; i += stride) {
      const QV2DPoint point = Map(series.x[i], series.y[i]);
      const QV2DPoint next = i + 1 < count ? Map(series.x[i + 1], series.y[i + 1]) : point;
      for (int k = 0; k < steps; ++k) {
        const double x = point.x + (next.x - point.x) * k / steps;
        const double y = point.y + (next.y - point.y) * k / steps;
        if (x >= corner.x && x <= corner.x + legendWidth_ && y <= corner.y + legendHeight_ &&
            (bars || y >= corner.y))
          ++covered;
      }
    }
    return covered;
  }

  const QVPlot& plot_;
  QVImageBase& image_;
  double size_;
  QVFont font_;
  Range x_;
  Range y_;
  std::vector<Tick> xTicks_;
  std::vector<Tick> yTicks_;
  double left_ = 0.0;
  double right_ = 0.0;
  double top_ = 0.0;
  double bottom_ = 0.0;
  std::vector<const Series*> named_;
  QV2DPoint legend_;
  double legendWidth_ = 0.0;
  double legendHeight_ = 0.0;
};

bool QVPlot::Render(QVImageBase& image) const { return Renderer(*this, image).Render(); }

}  // namespace QVDepict
