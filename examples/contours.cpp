// Contour lines of the density of two variables, traced on a grid and drawn into an SVG or PDF
// file.
//
// Each line joins the points of one density: 5, 15, ..., 95 % of the highest. The ellipses lean
// because the variables are correlated.
#include <cstdio>
#include <vector>

#include "platform/depict/image_writer.h"
#include "platform/depict/plot.h"
#include "stats/api/pdf_functions.h"

int main(int argc, char** argv) {
  const char* file = argc > 1 ? argv[1] : "contours.svg";
  // Deviations 1 and 0.8, correlation 0.6: the inverse of {1, 0.48, 0.48, 0.64}.
  const std::vector<double> precision = {1.5625, -1.171875, -1.171875, 2.44140625};
  QVStats::QVStatModelResult result(true);
  const QVStats::QVMultiVarPDF pdf =
      QVStats::QVMultivariateGaussian({"x", "y"}, {6.5, 5.0}, precision, result);
  std::vector<QVMath::QVDataSeries> contours;
  double xmin, xmax, ymin, ymax;
  if (result.IsSuccessful())
    result = QVStats::QVGet2DimPDFDensityPlotPoints(contours, xmin, xmax, ymin, ymax, pdf, 0.001,
                                                    200, 3.0, 10.0, 1.5, 8.5);
  if (result.NotSuccessful()) {
    std::fputs(result.ReportStatResultDetails().c_str(), stderr);
    return 1;
  }
  QVDepict::QVPlot plot;
  plot.SetXLabel("potency").SetYLabel("solubility").SetSquare(true);
  plot.SetXRange(3.0, 10.0).SetYRange(1.5, 8.5);
  for (const QVMath::QVDataSeries& contour : contours) {
    std::vector<double> x, y;
    for (const QVMath::QVDataPoint& point : contour.GetPointVec()) {
      x.push_back(point.GetX());
      y.push_back(point.GetY());
    }
    plot.AddLine(x, y, "", QVDepict::QVGetSeriesColor(0));
  }
  QVDepict::QVImage image(480.0, 480.0);
  if (!plot.Render(image) || !QVDepict::QVWriteImage(file, image)) {
    std::fprintf(stderr, "%s could not be written\n", file);
    return 1;
  }
  std::printf("%zu contour lines in %s\n", contours.size(), file);
  return 0;
}
