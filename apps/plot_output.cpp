#include "apps/plot_output.h"

#include <algorithm>
#include <cmath>

#include "apps/commands.h"
#include "platform/depict/image_writer.h"
#include "platform/system/cast.h"
#include "stats/api/data_plot_points.h"
#include "stats/api/data_vector_functions.h"

namespace QVApps {

void RequirePlotName(const std::string& path) {
  if (!QVDepict::QVIsImageFileName(path))
    throw Failure(path + ": a plot is a .pdf, .png or .svg file");
}

void WritePlot(const std::string& path, const QVDepict::QVPlot& plot, double width, double height) {
  constexpr double kPngScale = 2.0;
  QVDepict::QVImage image(width, height);
  if (!plot.Render(image)) throw Failure(path + ": there is no room for the plot");
  QVDepict::QVImageFileWriter writer(path, kPngScale);
  if (!writer.Add(image) || !writer.Close())
    throw Failure(path + ": the plot could not be written");
}

std::pair<double, double> MakePlotRange(double least, double most) {
  if (least < most) return {least, most};
  const double room = least == 0.0 ? 0.5 : 0.05 * std::abs(least);
  return {least - room, most + room};
}

std::size_t ChooseNumBins(const std::vector<double>& sorted, double low, double high) {
  constexpr double kMostBins = 200.0;
  constexpr std::size_t kFewestForQuartiles = 4;
  const double n = QVSystem::QVDoubleFromCount(sorted.size());
  double numBins = std::log2(n) + 1.0;
  if (sorted.size() >= kFewestForQuartiles) {
    const double quartiles =
        QVStats::QVQuantile(0.75, sorted, 8) - QVStats::QVQuantile(0.25, sorted, 8);
    if (quartiles > 0.0) numBins = (high - low) / (2.6 * quartiles) * std::cbrt(n);
  }
  return static_cast<std::size_t>(std::clamp(std::nearbyint(numBins), 1.0, kMostBins));
}

Histogram MakeHistogram(const std::vector<double>& sorted, std::size_t numBins, double low,
                        double high) {
  Histogram histogram;
  double xlo, xhi, ymin, ymax;
  QVStats::QVGetUserDefinedConstBinWidthHistogram(xlo, xhi, ymin, ymax, histogram.densities, sorted,
                                                  numBins, low, high);
  QVStats::QVGetBinBoundariesForSortedData(histogram.edges, numBins, false, sorted, low, high);
  return histogram;
}

}  // namespace QVApps
