/// \file
/// \brief Plots on two axes: lines, steps, points, bars and bands, with ticks, labels and a legend.
#ifndef QV_PLATFORM_DEPICT_PLOT_H
#define QV_PLATFORM_DEPICT_PLOT_H

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/depict/export.h"
#include "platform/depict/image.h"

namespace QVDepict {

/// Round numbers (1, 2 or 5 times a power of ten apart) inside [min, max], at most `maxTicks`.
/// Empty if min < max does not hold.
QVDEPICT_EXPORT std::vector<double> QVGetTicks(double min, double max, unsigned int maxTicks);

/// The text of a tick, with as many digits as tell it from a neighbour `step` away.
QVDEPICT_EXPORT std::string QVGetTickText(double tick, double step);

/// The i-th colour for data: a set that colour-blind readers can tell apart. Starts over after 7.
/// Source: M. Okabe, K. Ito, "Color Universal Design", 2008.
QVDEPICT_EXPORT QVSystem::QVColor QVGetSeriesColor(unsigned int i);

/// A plot. What is added first lies below; whatever has a label is named in the legend. Values that
/// are not finite (or beyond 1e300: the sentinels of bad data), and on a logarithmic axis values
/// that are not positive, are left out; they interrupt lines. Vectors of unequal length are read as
/// far as the shortest. Each series takes the next colour unless one is given.
class QVDEPICT_EXPORT QVPlot {
 public:
  using OptionalColor = std::optional<QVSystem::QVColor>;

  QVPlot& SetTitle(std::string title);
  QVPlot& SetXLabel(std::string label);
  QVPlot& SetYLabel(std::string label);
  /// Fixes the range of an axis; without it the data decide, widened a little, and bars begin at 0.
  /// Ignored unless both are finite and min < max.
  QVPlot& SetXRange(double min, double max);
  QVPlot& SetYRange(double min, double max);
  QVPlot& SetXLogarithmic(bool logarithmic);
  QVPlot& SetYLogarithmic(bool logarithmic);
  /// Ticks with names, for categories.
  QVPlot& SetXTicks(std::vector<std::pair<double, std::string>> ticks);
  /// One unit of x is as long as one of y: for ROC curves and maps.
  QVPlot& SetSquare(bool square);

  QVPlot& AddLine(std::vector<double> x, std::vector<double> y, std::string label = "",
                  OptionalColor color = {}, unsigned int stipple = QVStipple::Solid);
  /// A step function that takes the value y[i] from x[i] on.
  QVPlot& AddSteps(const std::vector<double>& x, const std::vector<double>& y,
                   std::string label = "", OptionalColor color = {});
  /// Dots. Where more than 10000 of them could be told apart, a grid of cells, the darker the more
  /// points one holds, by the logarithm of their number: a million points make a small file.
  QVPlot& AddPoints(std::vector<double> x, std::vector<double> y, std::string label = "",
                    OptionalColor color = {});
  /// Bars between neighbouring edges, from 0 to their heights: `edges` has one more entry.
  QVPlot& AddBars(std::vector<double> edges, std::vector<double> heights, std::string label = "",
                  OptionalColor color = {});
  /// The area between two lines, translucent.
  QVPlot& AddBand(std::vector<double> x, std::vector<double> lower, std::vector<double> upper,
                  std::string label = "", OptionalColor color = {});
  /// A dashed line across the whole plot at a value of x or of y.
  QVPlot& AddVerticalLine(double x, std::string label = "", OptionalColor color = {});
  QVPlot& AddHorizontalLine(double y, std::string label = "", OptionalColor color = {});

  /// Draws the plot over all of the image.
  /// \return false, and nothing is drawn, if the image leaves no room (below about 60 x 40) or
  /// there is nothing to show.
  bool Render(QVImageBase& image) const;

 private:
  enum class Kind { Line, Points, Bars, Band, Vertical, Horizontal };
  struct Series {
    Kind kind;
    std::vector<double> x;
    std::vector<double> y;
    std::vector<double> upper;  // of a band
    std::string label;
    QVSystem::QVColor color;
    unsigned int stipple;
  };
  struct Axis {
    std::string label;
    std::optional<std::pair<double, double>> range;
    bool logarithmic = false;
  };
  class Renderer;

  QVPlot& Add(Kind kind, std::vector<double> x, std::vector<double> y, std::vector<double> upper,
              std::string label, OptionalColor color, unsigned int stipple = QVStipple::Solid);

  std::string title_;
  Axis x_;
  Axis y_;
  std::vector<std::pair<double, std::string>> xTicks_;
  std::vector<Series> series_;
  unsigned int numColors_ = 0;
  bool square_ = false;
};

}  // namespace QVDepict

#endif  // QV_PLATFORM_DEPICT_PLOT_H
