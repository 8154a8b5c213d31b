#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <optional>
#include <vector>

#include "platform/system/text.h"
#include "stats/api/krige_2d_mol_depict.h"
#include "stats/krige_report_format.h"
#include "stats/krige_report_panels.h"

namespace QVStats {

using QVDepict::QV2DPoint;
using QVDepict::QVFont;
using QVDepict::QVImageBase;
using QVDepict::QVImageFrame;
using QVDepict::QVPen;
using QVSystem::QVColor;

ResponseFormat::ResponseFormat(const QVMolKrigeResult& result, const QVKrigeReportOptions& options)
    : responseName_(options.GetResponseName()),
      significantFigures_(options.GetResponseSignificantFigures()),
      unlog_(options.GetUnlog()) {
  double largest = 0.0;
  for (unsigned int i = 0; i < result.GetNumElements(); ++i) {
    const double response = result.GetElementResponse(i);
    if (std::abs(response) > std::abs(largest)) largest = response;
  }
  format_ = GetFormatString(largest, significantFigures_);
}

std::string ResponseFormat::GetText(double response) const {
  constexpr double kLn10 = 2.302585092994046;
  if (unlog_) return FormatNumber(std::exp(response * kLn10), significantFigures_);
  return QVSystem::QVFormat(format_.c_str(), response);
}

std::string ResponseFormat::GetCaption(double response) const {
  return responseName_ + ' ' + GetText(response);
}

std::string ResponseFormat::GetInterval(double response, double standardDeviation,
                                        const char* separator) const {
  return " [" + GetText(response - kNormal95 * standardDeviation) + separator +
         GetText(response + kNormal95 * standardDeviation) + ']';
}

bool HasVariance(const QVMolKrigeResult& result) {
  return result.Valid() && result.GetVariance() >= 0.0 &&
         result.GetVariance() < std::numeric_limits<double>::max();
}

namespace {

constexpr unsigned int kNumBins = 10;
constexpr QVColor kTrainingColor{150, 160, 175};
constexpr QVColor kPredictionColor{213, 94, 0};

/// The axis that the parts of the panel share.
struct ResponseAxis {
  double min;
  double max;
  double width;

  double Map(double response) const { return (response - min) / (max - min) * width; }
};

std::array<double, kNumBins> MakeHistogram(const std::vector<double>& responses, double min,
                                           double max) {
  const double binWidth = (max - min) / kNumBins;
  std::array<double, kNumBins> counts{};
  for (const double response : responses) {
    unsigned int bin = 0;
    while (bin + 1 < kNumBins && !(min + (bin + 1) * binWidth >= response)) ++bin;
    ++counts[bin];
  }
  double squares = 0.0;
  for (const double count : counts) squares += count * count;
  if (squares >= 1e-16)
    for (double& count : counts) count /= std::sqrt(squares);
  return counts;
}

constexpr double kLargest = std::numeric_limits<double>::max();

/// The probability of the part of a class that lies between two responses.
double GetClassProbability(const QVMolKrigeResult& result, const QVKrigeReportOptions& options,
                           unsigned int k, double min = -kLargest, double max = kLargest) {
  const double low = options.GetClassificationLowerBound(k);
  const double high = options.GetClassificationUpperBound(k);
  if (result.GetVariance() != 0.0)
    return QVProbabilityBetween(result, std::min(high, max), std::max(low, min));
  // Without variance the prediction is in one class for certain; at a boundary, in the lower one.
  const double response = result.GetResponse();
  return low < response && response <= high && min <= response && response <= max ? 1.0 : 0.0;
}

/// A class as far as the axis shows it.
struct ShownClass {
  unsigned int index;
  double low;  // responses
  double high;
  QVColor color;
  unsigned int labelSize;
};

class DistributionPanel {
 public:
  DistributionPanel(QVImageBase& image, const QVMolKrigeResult& result,
                    const QVKrigeReportOptions& options)
      : image_(image), result_(result), options_(options), format_(result, options) {
    for (const double response : result.GetTrainingResponses(true)) responses_.push_back(response);
  }

  bool Draw() {
    auto [header, body] = QVDepict::QVSplitVertically(image_, 0.1);
    const bool drawn = DrawHeader(header);
    if (responses_.empty()) return false;
    const auto [low, high] = std::minmax_element(responses_.begin(), responses_.end());
    axis_ = {*low, *high, body.GetWidth()};
    // One response, or one many times, still has an axis around it.
    if (!(axis_.min < axis_.max)) {
      const double room = std::max(1.0, 0.1 * std::abs(axis_.min));
      axis_.min -= room;
      axis_.max += room;
    }
    return DrawBody(body) && drawn;
  }

 private:
  bool HasDensity() const { return HasVariance(result_) && result_.GetVariance() > 0.0; }

  bool DrawHeader(QVImageBase& header) const {
    const double response = result_.GetResponse();
    std::string text = format_.GetCaption(response);
    if (options_.GetShowConfidence() && HasVariance(result_))
      text += format_.GetInterval(response, std::sqrt(result_.GetVariance()), ", ");
    return QVDepict::QVDrawTextToFit(header, text, GetBoldFont(header.GetHeight()), 4.0);
  }

  bool DrawBody(const QVImageFrame& body) {
    const double height = body.GetHeight();
    const double size = std::clamp(0.075 * height, 5.0, 12.0);
    const double valueHeight = 2.2 * size;
    const double bandHeight = options_.GetNumClassifications() > 0 ? 0.16 * height : 0.0;
    const double labelHeight = 1.7 * size;
    const double plotHeight = height - valueHeight - bandHeight - labelHeight;
    if (plotHeight < 5.0 || body.GetWidth() < 20.0) return false;
    QVImageFrame value(body, {0.0, 0.0}, body.GetWidth(), valueHeight);
    QVImageFrame band(body, {0.0, valueHeight}, body.GetWidth(), bandHeight);
    QVImageFrame plot(body, {0.0, valueHeight + bandHeight}, body.GetWidth(), plotHeight);
    QVImageFrame labels(body, {0.0, height - labelHeight}, body.GetWidth(), labelHeight);
    if (bandHeight > 0.0) DrawBand(band);
    DrawHistogram(plot);
    if (HasDensity()) DrawDensity(plot);
    DrawKey(plot, size);
    DrawPrediction(value, size);
    DrawAxis(labels, size);
    return true;
  }

  std::vector<ShownClass> FindShownClasses(double bandHeight) const {
    std::vector<ShownClass> shown;
    for (unsigned int k = 0; k < options_.GetNumClassifications(); ++k) {
      const double low = std::max(options_.GetClassificationLowerBound(k), axis_.min);
      const double high = std::min(options_.GetClassificationUpperBound(k), axis_.max);
      if (!(low < high)) continue;
      const double width = axis_.Map(high) - axis_.Map(low);
      shown.push_back({k, low, high, options_.GetClassificationColor(k),
                       static_cast<unsigned int>(std::min(bandHeight, width / 3.0))});
    }
    return shown;
  }

  void DrawBand(QVImageBase& band) const {
    constexpr unsigned int kTooSmall = 7;
    constexpr unsigned int kSmallest = 8;
    const std::vector<ShownClass> shown = FindShownClasses(band.GetHeight());
    std::optional<unsigned int> commonSize;
    for (const ShownClass& piece : shown) {
      band.DrawRectangle({axis_.Map(piece.low), 0.0}, {axis_.Map(piece.high), band.GetHeight()},
                         QVPen(piece.color, piece.color, true, 1.0));
      if (piece.labelSize > kTooSmall)
        commonSize = std::min(commonSize.value_or(piece.labelSize), piece.labelSize);
    }
    if (!commonSize || !HasVariance(result_)) return;
    for (const ShownClass& piece : shown) {
      const double percent =
          100.0 * GetClassProbability(result_, options_, piece.index, axis_.min, axis_.max);
      const bool across = piece.labelSize >= kSmallest;
      const double low = axis_.Map(piece.low);
      const double high = axis_.Map(piece.high);
      QVFont font(QVDepict::QVFontFamily::Narrow, QVDepict::QVFontStyle::Bold,
                  across ? *commonSize : kSmallest, QVDepict::QVAlignment::Center);
      // The base line that centres figures in the height of the band.
      const double middle = 0.5 * band.GetHeight();
      const QV2DPoint anchor = across
                                   ? QV2DPoint{0.5 * (low + high), middle + 0.36 * font.GetSize()}
                                   : QV2DPoint{low + (high - low) * 2.0 / 3.0, middle};
      if (!across) font.SetRotation(90.0);
      band.DrawText(anchor, QVSystem::QVFormat("%2.0f%%", percent), font);
    }
  }

  void DrawHistogram(QVImageBase& plot) const {
    const std::array<double, kNumBins> heights = MakeHistogram(responses_, axis_.min, axis_.max);
    const double highest = *std::max_element(heights.begin(), heights.end());
    const double binWidth = plot.GetWidth() / kNumBins;
    const double base = plot.GetHeight();
    const QVPen pen(QVSystem::QVMixColors(QVSystem::QVWhite, kTrainingColor, 0.6), kTrainingColor,
                    true, 0.7);
    for (unsigned int k = 0; k < kNumBins; ++k)
      if (heights[k] > 0.0)
        plot.DrawRectangle({k * binWidth, base - 0.88 * base * heights[k] / highest},
                           {(k + 1) * binWidth, base}, pen);
  }

  /// As high as the highest bar; the area that holds 95 % of it is tinted.
  void DrawDensity(QVImageBase& plot) const {
    constexpr int kSteps = 160;
    const double mean = result_.GetResponse();
    const double variance = result_.GetVariance();
    const double deviation = std::sqrt(variance);
    const auto trace = [&](double reach) {
      const double low = std::clamp(mean - reach * deviation, axis_.min, axis_.max);
      const double high = std::clamp(mean + reach * deviation, axis_.min, axis_.max);
      std::vector<QV2DPoint> points;
      for (int k = 0; k <= kSteps && low < high; ++k) {
        const double x = low + (high - low) * k / kSteps;
        const double density = std::exp(-(x - mean) * (x - mean) / (2.0 * variance));
        points.push_back({axis_.Map(x), plot.GetHeight() * (1.0 - 0.88 * density)});
      }
      return points;
    };
    std::vector<QV2DPoint> area = trace(kNormal95);
    if (!area.empty()) {
      area.push_back({area.back().x, plot.GetHeight()});
      area.push_back({area.front().x, plot.GetHeight()});
      plot.DrawPolygon(area, QVDepict::QVFillPen(QVColor(213, 94, 0, 50)));
    }
    plot.DrawPolyline(trace(4.0), QVDepict::QVLinePen(kPredictionColor, 1.5));
  }

  /// Which is which, on the side where the prediction is not.
  void DrawKey(QVImageBase& plot, double size) const {
    const double keySize = 0.8 * size;
    const bool toTheRight = result_.GetResponse() < 0.5 * (axis_.min + axis_.max);
    QVFont font(QVDepict::QVFontFamily::Sans, QVDepict::QVFontStyle::Normal, keySize,
                toTheRight ? QVDepict::QVAlignment::Right : QVDepict::QVAlignment::Left,
                QVSystem::QVMixColors(kTrainingColor, QVSystem::QVBlack, 0.4));
    const double x = toTheRight ? plot.GetWidth() - 2.0 : 2.0;
    plot.DrawText({x, 1.3 * keySize}, "training", font);
    if (HasDensity())
      plot.DrawText({x, 2.6 * keySize}, "prediction",
                    font.SetColor(QVSystem::QVMixColors(kPredictionColor, QVSystem::QVBlack, 0.2)));
  }

  /// The value above its place; an arrow head shows where it lies when that is off the axis.
  void DrawPrediction(QVImageBase& value, double size) const {
    const double response = result_.GetResponse();
    const std::string text = format_.GetText(response);
    const QVFont font = GetBoldFont(size);
    const double width = value.GetWidth();
    const double place = std::clamp(axis_.Map(response), 0.0, width);
    const double half = 0.5 * QVDepict::QVMeasureText(text, font).width;
    const double middle = half < 0.5 * width ? std::clamp(place, half, width - half) : 0.5 * width;
    value.DrawText({middle, 1.05 * size}, text, font);
    const double bottom = value.GetHeight();
    const double top = bottom - 0.8 * size;
    if (response >= axis_.min && response <= axis_.max) {
      value.DrawLine({place, top}, {place, bottom}, QVDepict::QVLinePen(QVSystem::QVBlack, 1.5));
      return;
    }
    const double inwards = response < axis_.min ? 0.7 * size : -0.7 * size;
    value.DrawPolygon(
        {{place, 0.5 * (top + bottom)}, {place + inwards, top}, {place + inwards, bottom}},
        QVDepict::QVFillPen(QVSystem::QVBlack));
  }

  void DrawAxis(QVImageBase& labels, double size) const {
    labels.DrawLine({0.0, 0.0}, {labels.GetWidth(), 0.0}, QVPen());
    QVFont font(QVDepict::QVFontFamily::Sans, QVDepict::QVFontStyle::Normal, 0.9 * size,
                QVDepict::QVAlignment::Left);
    const double baseLine = 1.3 * size;
    for (const double x : {0.0, labels.GetWidth()})
      labels.DrawLine({x, 0.0}, {x, 0.35 * size}, QVPen());
    labels.DrawText({0.0, baseLine}, format_.GetText(axis_.min), font);
    labels.DrawText({labels.GetWidth(), baseLine}, format_.GetText(axis_.max),
                    font.SetAlignment(QVDepict::QVAlignment::Right));
    labels.DrawText({0.5 * labels.GetWidth(), baseLine},
                    QVDepict::QVCutText(options_.GetResponseName(), font, 0.5 * labels.GetWidth()),
                    font.SetAlignment(QVDepict::QVAlignment::Center));
  }

  QVImageBase& image_;
  const QVMolKrigeResult& result_;
  const QVKrigeReportOptions& options_;
  ResponseFormat format_;
  std::vector<double> responses_;
  ResponseAxis axis_{};
};

/// The bounds of a class in words.
std::string GetClassName(const QVKrigeReportOptions& options, unsigned int k) {
  const auto print = [&](double bound) { return QVSystem::QVNumberToString(bound, 6); };
  const unsigned int last = options.GetNumClassifications() - 1;
  if (k == 0) return "below " + print(options.GetClassificationUpperBound(k));
  if (k == last) return "above " + print(options.GetClassificationLowerBound(k));
  return print(options.GetClassificationLowerBound(k)) + " to " +
         print(options.GetClassificationUpperBound(k));
}

void DrawClassCircle(QVImageBase& image, const QVMolKrigeResult& result,
                     const QVKrigeReportOptions& options) {
  const QV2DPoint center = QVDepict::QVGetCenter(image);
  const double radius = 0.5 * std::min(image.GetWidth(), image.GetHeight());
  double share = 0.0;
  for (unsigned int k = 0; k < options.GetNumClassifications(); ++k) {
    const double probability = GetClassProbability(result, options, k);
    const QVColor color = options.GetClassificationColor(k);
    image.DrawArc(center, share * 360.0, (share + probability) * 360.0, radius,
                  QVPen(color, color, true, 1.0));
    share += probability;
  }
  image.DrawCircle(center, radius, QVPen(QVSystem::QVWhite, QVSystem::QVBlack, false, 1.0));
}

/// The caption, and a line for each class: its colour, its bounds, its probability.
bool DrawClassLegend(QVImageBase& image, const QVMolKrigeResult& result,
                     const QVKrigeReportOptions& options) {
  const unsigned int numClasses = options.GetNumClassifications();
  const double height = image.GetHeight() / (numClasses + 1);
  QVImageFrame caption(image, {0.0, 0.0}, image.GetWidth(), height);
  const double size = std::min(14.0, 0.8 * height);
  bool drawn = QVDepict::QVDrawTextToFit(caption, "This Molecule", GetBoldFont(size), 4.0);
  for (unsigned int k = 0; k < numClasses; ++k) {
    const double top = (k + 1) * height;
    const double side = std::min(0.6 * height, 0.12 * image.GetWidth());
    const QVColor color = options.GetClassificationColor(k);
    image.DrawRectangle({0.0, top + 0.5 * (height - side)}, {side, top + 0.5 * (height + side)},
                        QVPen(color, QVSystem::QVBlack, true, 0.5));
    QVImageFrame row(image, {1.5 * side, top}, image.GetWidth() - 1.5 * side, height);
    const std::string text =
        GetClassName(options, k) +
        QVSystem::QVFormat(": %.0f%%", 100.0 * GetClassProbability(result, options, k));
    QVFont font = GetPlainFont(0.85 * size);
    drawn =
        QVDepict::QVDrawTextToFit(row, text, font.SetAlignment(QVDepict::QVAlignment::Left), 4.0) &&
        drawn;
  }
  return drawn;
}

}  // namespace

bool QVKrigeRenderDistribution(QVImageBase& image, const QVMolKrigeResult& result,
                               const QVKrigeReportOptions& options) {
  return result.Valid() && DistributionPanel(image, result, options).Draw();
}

bool QVKrigeRenderClassification(QVImageBase& image, const QVMolKrigeResult& result,
                                 const QVKrigeReportOptions& options, bool legend) {
  if (!result.Valid()) return false;
  const bool hasClasses = options.GetNumClassifications() > 0;
  if (!legend) {
    if (hasClasses) DrawClassCircle(image, result, options);
    return true;
  }
  const bool stacked = !(image.GetWidth() > image.GetHeight());
  const QVDepict::QVImageGrid grid(image, stacked ? 2 : 1, stacked ? 1 : 2);
  QVImageFrame circle = QVDepict::QVGetBuffered(grid.GetCell(0, 0), 0.05);
  QVImageFrame names =
      QVDepict::QVGetBuffered(stacked ? grid.GetCell(1, 0) : grid.GetCell(0, 1), 0.05);
  if (hasClasses) DrawClassCircle(circle, result, options);
  return DrawClassLegend(names, result, options);
}

}  // namespace QVStats
