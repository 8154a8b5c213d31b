#include "stats/api/krige_2d_mol_depict.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "platform/chem/mol_functions.h"
#include "platform/depict/image_writer.h"
#include "platform/depict/molecule_display.h"
#include "platform/depict/property_map.h"
#include "platform/system/error_handler.h"
#include "platform/system/text.h"
#include "stats/krige_report_panels.h"

namespace QVStats {

using QVChem::QVMolBase;
using QVDepict::QV2DPoint;
using QVDepict::QVFont;
using QVDepict::QVImageBase;
using QVDepict::QVImageFrame;
using QVDepict::QVPen;
using QVSystem::QVColor;

namespace {

constexpr double kSmallestMoleculeImage = 100.0;
constexpr double kSmallestText = 4.0;
constexpr double kLargestCaption = 16.0;

unsigned int GetOrientation(const QVImageBase& image) {
  if (image.GetWidth() > 1.5 * image.GetHeight()) return QVDepict::QVDepictOrientation::Horizontal;
  if (image.GetHeight() > 1.5 * image.GetWidth()) return QVDepict::QVDepictOrientation::Vertical;
  return QVDepict::QVDepictOrientation::Square;
}

bool Prepare(QVChem::QVGraphMol& mol, const QVImageBase& image) {
  return QVDepict::QVPrepareDepiction(
      mol, QVDepict::QVPrepareDepictionOptions(false, true).SetOrientation(GetOrientation(image)));
}

/// The molecule with its title and without contributions.
bool DrawPlainMolecule(QVImageBase& image, const QVMolBase& mol, unsigned int titleLocation) {
  QVChem::QVGraphMol picture(mol);
  if (!Prepare(picture, image)) return false;
  QVDepict::QV2DMolDisplayOptions options(image.GetWidth(), image.GetHeight());
  options.SetTitleLocation(titleLocation);
  return QVDepict::QVRenderMolecule(image, QVDepict::QV2DMolDisplay(picture, options));
}

/// Whether the model left the fingerprints behind that contributions are read from.
bool HasContributions(const QVMolKrigeResult& result) {
  return result.GetNumElements() > 0 && result.GetElement(0).HasData(QVTrainingFingerprintTag);
}

/// Squashes contributions into (-1, 1) and leaves them on the atoms.
void StoreContributions(QVChem::QVGraphMol& mol, const QVMolKrigeResult& result, double baseline,
                        const char* tag) {
  const std::vector<double> contributions = result.GetAtomContributions(mol, baseline);
  const double numHeavyAtoms = mol.GetNumHeavyAtoms();
  for (const QVChem::QVAtomBase atom : mol.GetAtoms())
    mol.GetAtomData(atom).SetData<double>(
        tag, 2.0 / (std::exp(-contributions[atom.GetIndex()] * numHeavyAtoms) + 1.0) - 1.0);
}

/// What a row of the contribution legend or of the properties shows.
struct TextVariable {
  std::string name;
  std::string value;
  QVColor color;
};

void DrawContributionLegend(QVImageBase& strip, const QVKrigeReportOptions& options) {
  const auto orDefault = [&](const std::string& label, const char* format) {
    return label.empty() ? QVSystem::QVFormat(format, options.GetResponseName().c_str()) : label;
  };
  const std::pair<std::string, QVColor> entries[] = {
      {orDefault(options.GetContributionPositiveLabel(), " Contributes to Higher %s"),
       options.GetContributionPositiveColor()},
      {orDefault(options.GetContributionNegativeLabel(), " Contributes to Lower %s"),
       options.GetContributionNegativeColor()}};
  const QVDepict::QVImageGrid grid(strip, 1, 2, 0.0, 6.0);
  const double side = std::min(0.45 * strip.GetHeight(), 10.0);
  // Both texts have the size of the longer one.
  double size = std::min(11.0, 0.8 * strip.GetHeight());
  const double room = grid.GetCell(0, 0).GetWidth() - 1.4 * side;
  for (const auto& [text, color] : entries)
    size = std::min(
        size, QVDepict::QVGetFittingSize(text, GetPlainFont(size), room, strip.GetHeight(), 0.0));
  unsigned int column = 0;
  for (const auto& [text, color] : entries) {
    QVImageFrame cell = grid.GetCell(0, column++);
    const double top = 0.5 * (cell.GetHeight() - side);
    cell.DrawRectangle({0.0, top}, {side, top + side}, QVDepict::QVFillPen(color));
    QVImageFrame label(cell, {1.4 * side, 0.0}, room, cell.GetHeight());
    QVDepict::QVDrawTextToFit(label, text,
                              GetPlainFont(size).SetAlignment(QVDepict::QVAlignment::Left), 1.0);
  }
}

// The training panel

void DrawWeightGlyph(QVImageBase& area, double weight) {
  const QV2DPoint center = QVDepict::QVGetCenter(area);
  const double radius = 0.45 * std::min(area.GetWidth(), area.GetHeight());
  const QVColor color = weight < 0.0 ? QVSystem::QVRed : QVSystem::QVBlue;
  area.DrawCircle(center, radius * std::min(1.0, std::abs(weight)), QVPen(color, color, true, 0.0));
  area.DrawCircle(center, radius, QVPen(QVSystem::QVWhite, QVSystem::QVBlack, false, 1.0));
}

bool DrawWeight(const QVImageBase& image, double weight) {
  const double width = image.GetWidth();
  const double height = std::min(image.GetHeight(), 2.0 * width);
  const QVImageFrame area(image, {0.0, 0.5 * (image.GetHeight() - height)}, width, height);
  auto [texts, glyph] = QVDepict::QVSplitVertically(area, 0.5);
  auto [caption, value] = QVDepict::QVSplitVertically(texts, 0.5);
  const QVFont font = GetPlainFont(std::min(caption.GetHeight(), 11.0));
  const bool drawn = QVDepict::QVDrawTextToFit(caption, "Weight", font, kSmallestText);
  if (!QVDepict::QVDrawTextToFit(value, QVSystem::QVFormat("%6.3f", weight), font, kSmallestText))
    return false;
  DrawWeightGlyph(glyph, weight);
  return drawn;
}

class TrainingPanel {
 public:
  TrainingPanel(const QVMolKrigeResult& result, const QVKrigeReportOptions& options)
      : result_(result), format_(result, options) {
    if (!options.GetShowConfidence()) return;
    const double variance = QVGetExperimentalVariance(result.GetVariogram());
    if (variance > 0.0) measurementDeviation_ = std::sqrt(variance);
  }

  bool DrawCell(const QVImageBase& frame, unsigned int element) const {
    const QVImageFrame cell = QVDepict::QVGetInset(frame, 3.0);
    auto [picture, texts] = QVDepict::QVSplitVertically(cell, 0.68);
    const bool hasMolecule =
        DrawPlainMolecule(picture, result_.GetElement(element), QVDepict::QVTitleLocation::Top);
    auto [left, weight] = QVDepict::QVSplitHorizontally(texts, 0.75);
    const bool hasTexts = DrawResponseAndDistance(left, element);
    return DrawWeight(weight, result_.GetElementWeight(element)) && hasMolecule && hasTexts;
  }

 private:
  bool DrawResponseAndDistance(const QVImageBase& image, unsigned int element) const {
    const double response = result_.GetElementResponse(element);
    const std::string caption = format_.GetCaption(response);
    const std::string interval = measurementDeviation_ > 0.0
                                     ? format_.GetInterval(response, measurementDeviation_, ",")
                                     : "";
    const auto [top, bottom] = QVDepict::QVSplitVertically(image, 0.6);
    const QVImageFrame upper = QVDepict::QVGetBuffered(top, 0.1);
    QVImageFrame lower = QVDepict::QVGetBuffered(bottom, 0.1);
    const QVFont font = GetBoldFont(upper.GetHeight());
    // In a narrow cell the interval gets a line of its own.
    const double oneLine =
        QVDepict::QVGetFittingSize(caption + interval, font, upper.GetWidth(), upper.GetHeight());
    const std::vector<std::string> lines =
        oneLine > 0.0 || interval.empty() ? std::vector<std::string>{caption + interval}
                                          : std::vector<std::string>{caption, interval.substr(1)};
    const QVDepict::QVImageGrid grid(upper, static_cast<unsigned int>(lines.size()), 1);
    double size = upper.GetHeight();
    for (const std::string& line : lines)
      size = std::min(size, QVDepict::QVGetFittingSize(line, font, grid.GetCell(0, 0).GetWidth(),
                                                       grid.GetCell(0, 0).GetHeight(), 0.0));
    bool drawn = true;
    for (unsigned int row = 0; row < grid.GetNumRows(); ++row) {
      QVImageFrame place = grid.GetCell(row, 0);
      drawn =
          QVDepict::QVDrawTextToFit(place, lines[row], GetBoldFont(size), kSmallestText) && drawn;
    }
    const std::string distance =
        "Distance " + QVSystem::QVFormat("%6.3f", result_.GetElementDistance(element));
    return QVDepict::QVDrawTextToFit(lower, distance, GetPlainFont(std::max(size, 7.0)),
                                     kSmallestText) &&
           drawn;
  }

  const QVMolKrigeResult& result_;
  ResponseFormat format_;
  double measurementDeviation_ = 0.0;
};

// The page

/// As many rows as fit, all of one size; what does not fit is reported.
bool DrawProperties(QVImageBase& image, const std::vector<TextVariable>& variables) {
  constexpr double kSmallestRow = 7.5;
  constexpr double kLargestRow = 16.0;
  const double numRows = static_cast<double>(variables.size()) + 1.3;
  const double row = std::clamp(image.GetHeight() / numRows, kSmallestRow, kLargestRow);
  const double size = row / 1.35;
  if (image.GetHeight() < 2.3 * row) {
    QVSystem::QVThrow.Warning("QVKrigeRenderReport, unable to render any data, skipping");
    return false;
  }
  QVImageFrame caption(image, {0.0, 0.0}, image.GetWidth(), 1.3 * row);
  QVDepict::QVDrawTextToFit(caption, "Properties", GetBoldFont(size), kSmallestText);
  double top = 1.3 * row;
  const double half = 0.5 * image.GetWidth();
  for (const TextVariable& variable : variables) {
    if (top + row > image.GetHeight() * (1.0 + 1e-9)) {
      QVSystem::QVThrow.Warning(
          "QVKrigeRenderReport, Not enough space to render all sd/data, skipping some");
      return false;
    }
    const double baseLine = top + 0.72 * row;
    const QVFont name =
        GetPlainFont(size).SetAlignment(QVDepict::QVAlignment::Left).SetColor(variable.color);
    const QVFont value = QVFont(name).SetAlignment(QVDepict::QVAlignment::Right);
    // Each may take the room that the other leaves, but at least half.
    const double nameWidth = QVDepict::QVMeasureText(variable.name, name).width;
    const double valueWidth = QVDepict::QVMeasureText(variable.value, value).width;
    const double gap = 0.5 * size;
    const double forName = std::max(half, image.GetWidth() - valueWidth) - gap;
    const double forValue = std::max(half, image.GetWidth() - nameWidth) - gap;
    image.DrawText({0.0, baseLine}, QVDepict::QVCutText(variable.name, name, forName), name);
    image.DrawText({image.GetWidth(), baseLine},
                   QVDepict::QVCutText(variable.value, value, forValue), value);
    image.DrawLine({0.0, top + row}, {image.GetWidth(), top + row},
                   QVDepict::QVLinePen(QVSystem::QVLightGrey, 0.5));
    top += row;
  }
  return true;
}

/// Draws the panels into their frames and remembers whether all went well.
class ReportPage {
 public:
  ReportPage(const QVMolKrigeResult& result, const QVMolBase& mol,
             const QVKrigeReportOptions& options, std::vector<TextVariable> properties,
             unsigned int rows, unsigned int columns)
      : result_(result),
        mol_(mol),
        options_(options),
        properties_(std::move(properties)),
        rows_(rows),
        columns_(columns) {}

  bool Draw(QVImageBase& image) {
    if (!result_.Valid()) {
      QVSystem::QVThrow.Warning(
          "QVKrigeRenderReport, the result for molecule '%s' is not valid, there is no prediction "
          "to show",
          mol_.GetTitle().c_str());
      succeeded_ = false;
    }
    if (options_.GetTitle().empty())
      DrawUntitled(image);
    else
      DrawTitled(image);
    return succeeded_;
  }

 private:
  void DrawUntitled(const QVImageBase& image) {
    const auto [training, rest] = QVDepict::QVSplitHorizontally(image, 0.4);
    DrawTraining(training);
    const bool details = options_.GetShowKrigeDetails();
    const auto [wide, strip] = QVDepict::QVSplitVertically(rest, details ? 0.8 : 1.0);
    const auto [molecule, prediction] = QVDepict::QVSplitVertically(wide, 0.6);
    DrawMolecule(molecule);
    if (properties_.empty()) {
      DrawDistribution(prediction);
    } else {
      const auto [distribution, properties] = QVDepict::QVSplitHorizontally(prediction, 0.6);
      DrawDistribution(distribution);
      DrawPropertyPanel(properties);
    }
    if (!details) return;
    const auto [variogram, gauge] = QVDepict::QVSplitHorizontally(strip, 0.5);
    DrawDetails(variogram, gauge);
  }

  void DrawTitled(const QVImageBase& image) {
    const double titleHeight = std::min(0.07 * image.GetHeight(), 40.0);
    QVImageFrame title(image, {0.0, 0.0}, image.GetWidth(), titleHeight);
    QVImageFrame inset = QVDepict::QVGetInset(title, 0.15 * titleHeight);
    const QVFont font = GetBoldFont(0.6 * titleHeight);
    Note(QVDepict::QVDrawTextToFit(inset,
                                   QVDepict::QVCutText(options_.GetTitle(), font, inset.GetWidth()),
                                   font, kSmallestText));
    const QVImageFrame area(image, {0.0, titleHeight}, image.GetWidth(),
                            image.GetHeight() - titleHeight);
    const auto [upper, lower] = QVDepict::QVSplitVertically(area, 0.4);
    const auto [molecule, prediction] = QVDepict::QVSplitHorizontally(upper, 0.5);
    DrawMolecule(molecule);
    if (properties_.empty()) {
      DrawDistribution(prediction);
    } else {
      const auto [distribution, properties] = QVDepict::QVSplitVertically(prediction, 0.5);
      DrawDistribution(distribution);
      DrawPropertyPanel(properties);
    }
    const bool details = options_.GetShowKrigeDetails();
    const auto [training, side] = QVDepict::QVSplitHorizontally(lower, details ? 0.65 : 1.0);
    DrawTraining(training);
    if (!details) return;
    const auto [variogram, gauge] = QVDepict::QVSplitVertically(side, 0.5);
    DrawDetails(variogram, gauge);
  }

  /// The border of a panel, a little inside of its frame so that neighbours stand apart, and the
  /// image within it.
  static QVImageFrame OpenPanel(const QVImageBase& frame) {
    QVImageFrame panel = QVDepict::QVGetInset(frame, 2.0);
    QVDepict::QVDrawBorder(panel, QVPen(QVSystem::QVWhite, QVSystem::QVBlack, false, 1.0));
    return QVDepict::QVGetBuffered(frame, 0.05);
  }

  void DrawTraining(const QVImageBase& frame) {
    QVImageFrame panel = OpenPanel(frame);
    if (result_.Valid()) Note(QVKrigeRenderTraining(panel, result_, options_, rows_, columns_));
  }

  void DrawMolecule(const QVImageBase& frame) {
    QVImageFrame panel = OpenPanel(frame);
    const double captionHeight = std::min(0.08 * panel.GetHeight(), kLargestCaption);
    QVImageFrame caption(panel, {0.0, 0.0}, panel.GetWidth(), captionHeight);
    QVImageFrame picture(panel, {0.0, captionHeight}, panel.GetWidth(),
                         panel.GetHeight() - captionHeight);
    Note(QVDepict::QVDrawTextToFit(caption, "This Molecule", GetBoldFont(captionHeight),
                                   kSmallestText));
    Note(result_.Valid() ? QVKrigeRenderMoleculeWithLegend(picture, result_, mol_, options_)
                         : DrawPlainMolecule(picture, mol_, QVDepict::QVTitleLocation::Bottom));
  }

  void DrawDistribution(const QVImageBase& frame) {
    QVImageFrame panel = OpenPanel(frame);
    if (result_.Valid())
      Note(QVKrigeRenderDistribution(panel, result_, options_));
    else
      QVDepict::QVDrawTextToFit(panel, "No Prediction", GetBoldFont(18.0), kSmallestText);
  }

  void DrawPropertyPanel(const QVImageBase& frame) {
    QVImageFrame panel = OpenPanel(frame);
    Note(DrawProperties(panel, properties_));
  }

  void DrawDetails(const QVImageBase& variogramFrame, const QVImageBase& gaugeFrame) {
    QVImageFrame variogram = OpenPanel(variogramFrame);
    QVImageFrame gauge = OpenPanel(gaugeFrame);
    Note(QVKrigeRenderVariogram(variogram, result_));
    Note(QVKrigeRenderConfidenceRadial(gauge, result_));
  }

  void Note(bool drawn) { succeeded_ = succeeded_ && drawn; }

  const QVMolKrigeResult& result_;
  const QVMolBase& mol_;
  const QVKrigeReportOptions& options_;
  std::vector<TextVariable> properties_;
  unsigned int rows_;
  unsigned int columns_;
  bool succeeded_ = true;
};

template <class Mol>
bool RenderReport(QVImageBase& image, const QVMolKrigeResult& result, const Mol& mol,
                  const QVKrigeReportOptions& options, unsigned int rows, unsigned int columns) {
  std::vector<TextVariable> properties;
  for (unsigned int i = 0; i < options.GetNumProperties(); ++i)
    properties.push_back(
        {options.GetPropertyName(i), options.GetPropertyValue(i, mol), QVSystem::QVBlack});
  return ReportPage(result, mol, options, std::move(properties), rows, columns).Draw(image);
}

template <class Mol>
bool RenderReportFile(const std::string& fileName, const QVMolKrigeResult& result, const Mol& mol,
                      const QVKrigeReportOptions& options) {
  QVDepict::QVMultiPageImageFile pages(2, 2);
  QVKrigeRenderReport(pages.NewPage(), result, mol, options, 0, 0);
  return QVDepict::QVWriteImage(fileName, pages);
}

}  // namespace

bool QVKrigeRenderReport(QVImageBase& image, const QVMolKrigeResult& result, const QVMolBase& mol,
                         const QVKrigeReportOptions& options, unsigned int rows,
                         unsigned int columns) {
  return RenderReport(image, result, mol, options, rows, columns);
}

bool QVKrigeRenderReport(QVImageBase& image, const QVMolKrigeResult& result,
                         const QVChem::QVMCMolBase& mol, const QVKrigeReportOptions& options,
                         unsigned int rows, unsigned int columns) {
  return RenderReport(image, result, mol, options, rows, columns);
}

bool QVKrigeRenderReport(const std::string& fileName, const QVMolKrigeResult& result,
                         const QVMolBase& mol, const QVKrigeReportOptions& options) {
  return RenderReportFile(fileName, result, mol, options);
}

bool QVKrigeRenderReport(const std::string& fileName, const QVMolKrigeResult& result,
                         const QVChem::QVMCMolBase& mol, const QVKrigeReportOptions& options) {
  return RenderReportFile(fileName, result, mol, options);
}

bool QVKrigeRenderMolecule(QVImageBase& image, const QVMolKrigeResult& result, const QVMolBase& mol,
                           const QVKrigeReportOptions& options, bool title) {
  if (image.GetWidth() < kSmallestMoleculeImage || image.GetHeight() < kSmallestMoleculeImage ||
      !result.Valid())
    return false;
  constexpr const char* kTag = "Contribution";
  const double baseline = options.GetHasContributionBaseline() ? options.GetContributionBaseline()
                                                               : result.GetResponse();
  QVChem::QVGraphMol picture(mol);
  QVChem::QVAssignBondiVdWRadii(picture);
  QVChem::QVSuppressHydrogens(picture, false, false, true);
  if (!Prepare(picture, image)) return false;

  QVDepict::QV2DMolDisplayOptions displayOptions(image.GetWidth(), image.GetHeight(), 0.0);
  displayOptions.SetBackgroundColor(QVSystem::QVWhite)
      .SetAtomLabelFontScale(1.0)
      .SetTitleLocation(title ? QVDepict::QVTitleLocation::Bottom
                              : QVDepict::QVTitleLocation::Hidden)
      .SetAtomColorStyle(QVDepict::QVAtomColorStyle::Black);
  QVDepict::QV2DMolDisplay display(picture, displayOptions);
  if (HasContributions(result)) {
    StoreContributions(picture, result, baseline, kTag);
    QVPropDepict::QV2DPropMap map(QVSystem::QVWhite);
    map.SetNegativeColor(options.GetContributionNegativeColor())
        .SetPositiveColor(options.GetContributionPositiveColor())
        .SetLegendLocation(QVPropDepict::QVLegendLocation::Hidden)
        .SetMinValue(-1.0)
        .SetMaxValue(1.0)
        .SetLegendFontScale(1.0);
    map.Render(display, picture, kTag);
  }
  return QVDepict::QVRenderMolecule(image, display);
}

bool QVKrigeRenderMoleculeWithLegend(QVImageBase& image, const QVMolKrigeResult& result,
                                     const QVMolBase& mol, const QVKrigeReportOptions& options) {
  if (image.GetWidth() < kSmallestMoleculeImage || image.GetHeight() < kSmallestMoleculeImage)
    return false;
  auto [molecule, bottom] = QVDepict::QVSplitVertically(image, 0.9);
  constexpr double kInset = 5.0;
  QVImageFrame strip(bottom, {kInset, 0.0}, bottom.GetWidth() - 2.0 * kInset, bottom.GetHeight());
  const bool drawn = QVKrigeRenderMolecule(molecule, result, mol, options);
  DrawContributionLegend(strip, options);
  return drawn;
}

bool QVKrigeRenderTraining(QVImageBase& image, const QVMolKrigeResult& result,
                           const QVKrigeReportOptions& options, unsigned int rows,
                           unsigned int columns) {
  if (rows == 0 || columns == 0) return true;
  if (!result.Valid()) return false;
  auto [captionFrame, body] = QVDepict::QVSplitVertically(image, 0.05);
  bool drawn = QVDepict::QVDrawTextToFit(
      captionFrame, "Similar Training Molecules",
      GetBoldFont(std::min(captionFrame.GetHeight(), kLargestCaption)), kSmallestText);
  const QVDepict::QVImageGrid grid(body, rows, columns, 0.0, 4.0);
  const TrainingPanel panel(result, options);
  unsigned int place = 0;
  for (const unsigned int element : result.GetLargestElements(rows * columns)) {
    QVImageFrame cell = grid.GetCell(place / columns, place % columns);
    drawn = panel.DrawCell(cell, element) && drawn;
    QVDepict::QVDrawBorder(cell, QVDepict::QVLinePen(QVSystem::QVLightGrey, 0.7));
    ++place;
  }
  return drawn;
}

}  // namespace QVStats
