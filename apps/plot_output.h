/// \file
/// \brief What the subcommands that draw share: plots to files, and histograms.
#ifndef QVSTATS_APPS_PLOT_OUTPUT_H
#define QVSTATS_APPS_PLOT_OUTPUT_H

#include <cstddef>
#include <string>
#include <vector>

#include "platform/depict/plot.h"

namespace QVApps {

/// Throws Failure unless the name is that of a .pdf, .png or .svg file.
void RequirePlotName(const std::string& path);

/// Draws a plot, in points; a PNG has two pixels for each. Throws Failure.
void WritePlot(const std::string& path, const QVDepict::QVPlot& plot, double width = 720.0,
               double height = 480.0);

/// A range that shows data from `least` to `most`: wider than these where they are equal.
std::pair<double, double> MakePlotRange(double least, double most);

/// How many bins a histogram of the sorted values over a range gets: about 2.6 IQR / cbrt(n) wide,
/// or by Sturges' rule, log2 n + 1 of them, where there is no inter-quartile range to go by; at
/// most 200.
std::size_t ChooseNumBins(const std::vector<double>& sorted, double low, double high);

/// Bars of equal width, as densities.
struct Histogram {
  std::vector<double> edges;  // one more than densities
  std::vector<double> densities;
};

/// The histogram of the sorted values over a range that holds them.
Histogram MakeHistogram(const std::vector<double>& sorted, std::size_t numBins, double low,
                        double high);

}  // namespace QVApps

#endif  // QVSTATS_APPS_PLOT_OUTPUT_H
