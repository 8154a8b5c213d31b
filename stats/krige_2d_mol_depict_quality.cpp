#include <algorithm>
#include <cmath>

#include "platform/system/text.h"
#include "stats/api/krige_2d_mol_depict.h"
#include "stats/krige_report_panels.h"

namespace QVStats {

using QVDepict::QV2DPoint;
using QVDepict::QVFont;
using QVDepict::QVImageBase;
using QVDepict::QVImageFrame;
using QVDepict::QVLinePen;
using QVDepict::QVPen;
using QVSystem::QVColor;

namespace {

constexpr double kLowestQuality = 0.001;

/// One ratio of the gauge: a ring of its colour.
struct Quality {
  double ratio;
  const char* name;
  QVColor color;
};

// The ratios are written so that what is no number, as for a model of equal responses, gives the
// lowest quality too.

double GetConfidence(const QVMolKrigeResult& result) {
  const double share = result.GetVariance() / result.GetKernel().GetSill();
  return share <= 0.999 ? 1.0 - share : kLowestQuality;
}

double GetVariogramFit(const QVMolKrigeResult& result) {
  const double fitness = QVGetFitness(result.GetKernel(), result.GetVariogram());
  const double misfit = 2.0 / (std::exp(-4.0 * fitness) + 1.0);
  return misfit <= 1.999 ? 2.0 - misfit : kLowestQuality;
}

double GetMeasuredShare(const QVMolKrigeResult& result) {
  double measured = 0.0;
  double all = 0.0;
  for (unsigned int i = 0; i < result.GetNumElements(); ++i) {
    const double weight = std::abs(result.GetElementWeight(i));
    all += weight;
    if (!result.GetElementIsUnmeasured(i)) measured += weight;
  }
  return measured / all > kLowestQuality ? measured / all : kLowestQuality;
}

/// The geometry of the gauge in its frame.
struct Gauge {
  Gauge(double width, double height) : radius(0.5 * std::min(width, height)) {
    if (2.0 * radius < 106.06601717798213) {  // 75 sqrt(2)
      ringWidth = (radius - 21.213203435596427) / 3.0;
      boxSize = 30.0;
    } else {
      ringWidth = 0.2 * radius;
      boxSize = ringWidth * 2.82842712474619;
    }
    if (ringWidth < 5.0) {
      ringWidth = 5.0;
      boxSize = (radius - 15.0) * 1.414213562373095;
    }
  }

  double radius;
  double ringWidth;
  double boxSize;
};

void DrawRing(QVImageBase& frame, const Gauge& gauge, const Quality& quality, unsigned int ring) {
  const QV2DPoint center = QVDepict::QVGetCenter(frame);
  const double radius = gauge.radius - gauge.ringWidth * (ring + 0.5);
  if (radius <= 0.0) return;
  frame.DrawArc(center, 0.0, quality.ratio * 360.0, radius,
                QVPen(QVSystem::QVWhite, quality.color, false, gauge.ringWidth));
  if (gauge.ringWidth < 8.571428571428571) return;  // 60 / 7: the label would be smaller than 6
  frame.DrawText({center.x - 0.35 * gauge.ringWidth, center.y - radius + 0.35 * gauge.ringWidth},
                 quality.name,
                 QVFont(QVDepict::QVFontFamily::Sans, QVDepict::QVFontStyle::Normal,
                        0.7 * gauge.ringWidth, QVDepict::QVAlignment::Left, QVSystem::QVLightGrey));
}

/// Where the variogram panel has its axes and what they span.
class VariogramPlot {
 public:
  VariogramPlot(QVImageBase& plot, const QVMolKrigeResult& result)
      : plot_(plot),
        kernel_(result.GetKernel()),
        variogram_(result.GetVariogram()),
        variance_(result.GetVariance()) {
    const double smaller = std::min(plot.GetWidth(), plot.GetHeight());
    margin_ = smaller >= 30.0 ? 0.2 * smaller : 0.0;
    width_ = plot.GetWidth() - margin_;
    height_ = plot.GetHeight() - margin_;
    maxDistance_ = std::max(kernel_.GetRange(), 1.0);
    maxSemivariance_ = kernel_.GetSill();
    for (unsigned int bin = 0; bin < variogram_.GetNumBins(); ++bin) {
      maxDistance_ = std::max(maxDistance_, variogram_.GetDistance(bin));
      maxSemivariance_ = std::max(maxSemivariance_, variogram_.GetSemivariance(bin));
    }
  }

  void Draw() {
    DrawAxes();
    DrawVariance();
    for (unsigned int bin = 0; bin < variogram_.GetNumBins(); ++bin)
      plot_.DrawCircle(Map(variogram_.GetDistance(bin), variogram_.GetSemivariance(bin)), 2.0,
                       QVPen(QVSystem::QVRed, QVSystem::QVRed, true, 1.0));
    DrawKernel();
    if (margin_ > 0.0) DrawCaptions();
  }

 private:
  QV2DPoint Map(double distance, double semivariance) const {
    constexpr double kHeadroom = 0.9523809523809523;  // 1 / 1.05
    return {margin_ + distance / maxDistance_ * width_,
            height_ - kHeadroom / maxSemivariance_ * height_ * semivariance};
  }

  void DrawAxes() {
    plot_.DrawLine({margin_, 0.0}, {margin_, height_}, QVPen());
    plot_.DrawLine({margin_, height_}, {margin_ + width_, height_}, QVPen());
  }

  void DrawVariance() {
    const double y = Map(0.0, variance_).y;
    if (y < 0.0) return;  // no variance, or one above the axis
    plot_.DrawLine({margin_, y}, {margin_ + width_, y},
                   QVLinePen(QVSystem::QVBlack, 1.0, QVDepict::QVStipple::Dash));
  }

  void DrawKernel() {
    const double step = 0.01 * maxDistance_;
    std::vector<QV2DPoint> curve{Map(0.0, kernel_.GetValue(0.0))};
    for (unsigned int k = 1; k * step < maxDistance_; ++k)
      curve.push_back(Map(k * step, kernel_.GetValue(k * step)));
    plot_.DrawPolyline(std::move(curve), QVLinePen(QVSystem::QVBlue));
  }

  void DrawCaptions() {
    constexpr double kSmallest = 6.0;
    double size = margin_;
    for (const char* caption : {"Distance", "Semivariance"}) {
      const QVDepict::QVTextExtents extents = QVDepict::QVMeasureText(caption, GetPlainFont(1.0));
      size = std::min(size, (plot_.GetHeight() - margin_) / extents.width);
    }
    size = std::max(size, kSmallest);
    QVFont font = GetPlainFont(size);
    plot_.DrawText({margin_ + 0.5 * width_, plot_.GetHeight() - size / 3.0}, "Distance", font);
    plot_.DrawText({2.0 * size / 3.0, 0.5 * height_}, "Semivariance", font.SetRotation(90.0));
  }

  QVImageBase& plot_;
  QVKrigeKernel kernel_;
  QVVariogram variogram_;
  double variance_;
  double margin_;
  double width_;
  double height_;
  double maxDistance_;
  double maxSemivariance_;
};

}  // namespace

bool QVKrigeRenderVariogram(QVImageBase& image, const QVMolKrigeResult& result) {
  if (!result.Valid()) return false;
  auto [title, plot] = QVDepict::QVSplitVertically(image, 0.1);
  VariogramPlot(plot, result).Draw();
  return QVDepict::QVDrawTextToFit(title, "Variogram", GetBoldFont(title.GetHeight()), 4.0);
}

bool QVKrigeRenderConfidenceRadial(QVImageBase& image, const QVMolKrigeResult& result) {
  auto [captionFrame, frame] = QVDepict::QVSplitVertically(image, 0.1);
  const double captionHeight = captionFrame.GetHeight();
  QVImageFrame caption =
      QVDepict::QVImageGrid(captionFrame, 1, 1, 0.1 * captionHeight).GetCell(0, 0);
  if (!QVDepict::QVDrawTextToFit(caption, "Model Quality", GetBoldFont(captionHeight), 4.0))
    return false;
  if (!result.Valid()) return false;

  const Quality qualities[] = {{GetConfidence(result), "Conf", QVSystem::QVDarkBlue},
                               {GetVariogramFit(result), "Vari", QVSystem::QVDarkRed},
                               {GetMeasuredShare(result), "Meas", QVSystem::QVDarkGreen}};
  const Gauge gauge(frame.GetWidth(), frame.GetHeight());
  const QV2DPoint center = QVDepict::QVGetCenter(frame);
  for (unsigned int ring = 0; ring < 3; ++ring) DrawRing(frame, gauge, qualities[ring], ring);
  for (unsigned int ring = 0; ring < 4; ++ring)
    frame.DrawCircle(center, gauge.radius - ring * gauge.ringWidth, QVLinePen(QVSystem::QVGrey));

  const Quality& overall =
      *std::min_element(std::begin(qualities), std::end(qualities),
                        [](const Quality& a, const Quality& b) { return a.ratio < b.ratio; });
  if (overall.ratio > 0.0)
    frame.DrawPie(center, 0.0, overall.ratio * 360.0, gauge.radius - 3.0 * gauge.ringWidth,
                  QVPen(QVSystem::QVLightGrey, QVSystem::QVLightGrey, true, 1.0));
  QVImageFrame box(frame, {center.x - 0.5 * gauge.boxSize, center.y - 0.5 * gauge.boxSize},
                   gauge.boxSize, gauge.boxSize);
  return QVDepict::QVDrawTextToFit(box, QVSystem::QVFormat("%2.0f%%", overall.ratio * 100.0),
                                   GetPlainFont(gauge.boxSize).SetColor(overall.color), 4.0);
}

}  // namespace QVStats
