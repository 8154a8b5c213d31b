#include "stats/api/krige_2d_mol_depict.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <memory>
#include <vector>

#include "platform/depict/image_writer.h"
#include "platform/system/error_handler.h"
#include "stats/api/krige_2d_mol.h"
#include "stats/api/private/krige_result_impl.h"
#include "tests/support/molecules.h"

namespace QVStats {
namespace {

using QVDepict::QVDrawing;
using QVDepict::QVImage;
using QVSystem::QVErrorLevel;
using QVSystem::QVScopedRecordingSink;
using testing::Contains;
using testing::DoubleNear;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::Not;
using testing::SizeIs;

constexpr double kTolerance = 1e-9;

std::vector<QVDrawing> Select(const QVImage& image, QVDrawing::Kind kind) {
  std::vector<QVDrawing> selected;
  for (const QVDrawing& drawing : image.GetDrawings())
    if (drawing.kind == kind) selected.push_back(drawing);
  return selected;
}

std::vector<std::string> GetTexts(const QVImage& image) {
  std::vector<std::string> texts;
  for (const QVDrawing& drawing : Select(image, QVDrawing::Kind::Text))
    texts.push_back(drawing.text);
  return texts;
}

/// A training element: what the synthetic result below is made of.
struct Element {
  const char* smiles;
  double distance;
  double weight;
  double response;
  bool unmeasured = false;
};

/// A result with these elements, a spherical kernel of range 0.5, sill 4 and nugget 0, and a
/// variogram of two bins. No fingerprints, so there are no contributions.
QVMolKrigeResult MakeResult(const std::vector<Element>& elements) {
  QVKrigeSphericalKernel kernel;
  kernel.SetSill(4.0);
  QVKrigeResultImpl result;
  result.SetKernel(kernel);
  std::vector<std::shared_ptr<const QVChem::QVMolBase>> molecules;
  std::vector<double> responses;
  std::vector<bool> unmeasured;
  for (const Element& element : elements) {
    result.AddElement(element.distance, element.weight, element.response, element.unmeasured,
                      static_cast<unsigned int>(molecules.size()), true);
    auto mol = std::make_shared<QVChem::QVGraphMol>(MakeMol(element.smiles));
    mol->SetTitle(element.smiles);
    molecules.push_back(mol);
    responses.push_back(element.response);
    unmeasured.push_back(element.unmeasured);
  }
  QVVariogramImpl variogram;
  variogram.Push(0.25, 2.0);
  variogram.Push(2.0, 5.0);
  return QVMolKrigeResult(QVKrigeResult(result), molecules, responses, unmeasured, variogram);
}

/// Responses 0 to 10; prediction 5.5, kriging variance 4 - (0.5 + 0.3 + 0.2) * 4 * k, where k is
/// the correlation at distance 0.25: 1 - (0.75 - 0.0625) = 0.3125. So the variance is 2.75.
QVMolKrigeResult MakeThree() {
  return MakeResult({{"CCO", 0.25, 0.3, 0.0}, {"CCCO", 0.25, 0.5, 7.0}, {"CCN", 0.25, 0.2, 10.0}});
}

TEST(ReportVariogram, MapsBinsKernelAndVariance) {
  // Title 20, plot 200 x 180, margin 0.2 * 180 = 36, axes area 164 x 144.
  // Largest distance: the second bin's 2; largest semivariance: its 5.
  QVImage image(200.0, 200.0);
  ASSERT_TRUE(QVKrigeRenderVariogram(image, MakeThree()));
  const auto mapX = [](double distance) { return 36.0 + distance / 2.0 * 164.0; };
  const auto mapY = [](double semivariance) {
    return 20.0 + 144.0 - 0.9523809523809523 / 5.0 * 144.0 * semivariance;
  };
  const std::vector<QVDrawing> bins = Select(image, QVDrawing::Kind::Circle);
  ASSERT_THAT(bins, SizeIs(2));
  EXPECT_NEAR(bins[0].points[0].x, mapX(0.25), kTolerance);
  EXPECT_NEAR(bins[0].points[0].y, mapY(2.0), kTolerance);
  EXPECT_EQ(bins[0].radius, 2.0);
  EXPECT_EQ(bins[0].pen.GetFillColor(), QVSystem::QVRed);

  const std::vector<QVDrawing> lines = Select(image, QVDrawing::Kind::Line);
  ASSERT_THAT(lines, SizeIs(4)) << "two axes, the variance, the kernel";
  EXPECT_NEAR(lines[2].points[0].y, mapY(2.75), kTolerance);
  EXPECT_EQ(lines[2].pen.GetStipple(), 0x101u);
  const QVDrawing& kernel = lines[3];
  EXPECT_EQ(kernel.pen.GetLineColor(), QVSystem::QVBlue);
  ASSERT_THAT(kernel.points, SizeIs(100)) << "0, 0.02, ..., 1.98";
  EXPECT_NEAR(kernel.points[0].y, mapY(0.0), kTolerance);
  EXPECT_NEAR(kernel.points[99].x, mapX(1.98), 1e-6);
  EXPECT_NEAR(kernel.points[99].y, mapY(4.0), kTolerance);
  EXPECT_THAT(GetTexts(image), ElementsAre("Distance", "Semivariance", "Variogram"));

  QVImage small(29.0, 25.0);
  QVKrigeRenderVariogram(small, MakeThree());
  EXPECT_THAT(GetTexts(small), IsEmpty()) << "no margin, no captions, no room for the title";
}

TEST(ReportGauge, HasAnArcForEachRatio) {
  // Caption 20, frame 200 x 180: r = 90, t = 18, box 18 * 2 sqrt(2).
  QVImage image(200.0, 200.0);
  const QVMolKrigeResult result = MakeResult(
      {{"CCO", 0.25, 0.3, 0.0}, {"CCCO", 0.25, 0.5, 7.0, true}, {"CCN", 0.25, 0.2, 10.0}});
  ASSERT_TRUE(QVKrigeRenderConfidenceRadial(image, result));
  const double fitness = QVGetFitness(result.GetKernel(), result.GetVariogram());
  const double ratios[] = {1.0 - 2.75 / 4.0, 2.0 - 2.0 / (std::exp(-4.0 * fitness) + 1.0), 0.5};
  const QVSystem::QVColor colors[] = {QVSystem::QVDarkBlue, QVSystem::QVDarkRed,
                                      QVSystem::QVDarkGreen};
  const std::vector<QVDrawing> arcs = Select(image, QVDrawing::Kind::Arc);
  ASSERT_THAT(arcs, SizeIs(3));
  for (unsigned int ring = 0; ring < 3; ++ring) {
    EXPECT_NEAR(arcs[ring].radius, 81.0 - 18.0 * ring, kTolerance);
    EXPECT_NEAR(arcs[ring].endAngle, 360.0 * ratios[ring], kTolerance);
    EXPECT_EQ(arcs[ring].pen.GetLineColor(), colors[ring]);
    EXPECT_NEAR(arcs[ring].pen.GetLineWidth(), 18.0, kTolerance);
    EXPECT_FALSE(arcs[ring].pen.GetFill());
  }
  const std::vector<QVDrawing> circles = Select(image, QVDrawing::Kind::Circle);
  ASSERT_THAT(circles, SizeIs(4));
  EXPECT_NEAR(circles[3].radius, 36.0, kTolerance);
  const std::vector<QVDrawing> pies = Select(image, QVDrawing::Kind::Pie);
  ASSERT_THAT(pies, SizeIs(1));
  EXPECT_NEAR(pies[0].endAngle, 360.0 * *std::min_element(ratios, ratios + 3), kTolerance);
  EXPECT_THAT(GetTexts(image), ElementsAre("Model Quality", "Conf", "Vari", "Meas", "31%"));
  const QVDrawing label = Select(image, QVDrawing::Kind::Text)[1];
  EXPECT_NEAR(label.points[0].x, 100.0 - 0.35 * 18.0, kTolerance);
  EXPECT_NEAR(label.points[0].y, 110.0 - 81.0 + 0.35 * 18.0, kTolerance);

  QVImage small(100.0, 110.0);  // r = 49.5, t = (49.5 - 15 sqrt 2) / 3
  ASSERT_TRUE(QVKrigeRenderConfidenceRadial(small, result));
  EXPECT_NEAR(Select(small, QVDrawing::Kind::Arc)[0].pen.GetLineWidth(),
              (49.5 - 21.213203435596427) / 3.0, kTolerance);
  QVImage tiny(60.0, 66.0);  // r = 29.7, t would be below 5
  QVKrigeRenderConfidenceRadial(tiny, result);
  EXPECT_EQ(Select(tiny, QVDrawing::Kind::Arc)[0].pen.GetLineWidth(), 5.0);
}

TEST(ReportDistribution, PrintsThePredictionAndCountsTheTraining) {
  QVKrigeReportOptions options;
  QVImage image(200.0, 200.0);
  ASSERT_TRUE(QVKrigeRenderDistribution(image, MakeThree(), options));
  EXPECT_THAT(GetTexts(image), IsSupersetOf({"Response 5.50", "0.00", "10.00", "5.50"}));
  // One response each in bins 0, 6 and 9; then the tinted part of the density.
  const std::vector<QVDrawing> polygons = Select(image, QVDrawing::Kind::Polygon);
  ASSERT_THAT(polygons, SizeIs(4));
  const double lefts[] = {0.0, 120.0, 180.0};
  for (unsigned int bar = 0; bar < 3; ++bar) {
    EXPECT_NEAR(polygons[bar].points[0].x, lefts[bar], kTolerance);
    EXPECT_NEAR(polygons[bar].points[2].x, lefts[bar] + 20.0, kTolerance);
    EXPECT_EQ(polygons[bar].points[0].y, polygons[0].points[0].y) << "of one height";
  }
  options.SetShowConfidence(true).SetResponseName("log S");
  QVImage confident(300.0, 200.0);
  ASSERT_TRUE(QVKrigeRenderDistribution(confident, MakeThree(), options));
  // 1.96 sqrt(2.75) = 3.2503
  EXPECT_THAT(GetTexts(confident), Contains("log S 5.50 [2.25, 8.75]"));
  options.SetUnlog(true).SetResponseSignificantFigures(3);
  QVImage unlogged(300.0, 200.0);
  ASSERT_TRUE(QVKrigeRenderDistribution(unlogged, MakeThree(), options));
  EXPECT_THAT(GetTexts(unlogged),
              IsSupersetOf({"log S 3.16e+05 [178, 5.63e+08]", "1.00", "1.00e+10"}));
}

TEST(ReportDistribution, IsSureOfATrainingMolecule) {
  QVKrigeReportOptions options;
  options.SetShowConfidence(true).PushClassificationBoundry(5.0);
  const QVMolKrigeResult result = MakeResult({{"CCO", 0.0, 1.0, 2.0}, {"CCN", 0.5, 0.0, 10.0}});
  ASSERT_EQ(result.GetVariance(), 0.0);
  QVImage image(300.0, 200.0);
  ASSERT_TRUE(QVKrigeRenderDistribution(image, result, options));
  EXPECT_THAT(GetTexts(image),
              IsSupersetOf({"Response 2.00 [2.00, 2.00]", "100%", " 0%", "training"}));
  EXPECT_THAT(GetTexts(image), Not(Contains("prediction"))) << "no density to point at";

  // A value on a boundary belongs to the class below it.
  QVImage circle(200.0, 200.0);
  options.PushClassificationBoundry(2.0);
  ASSERT_TRUE(QVKrigeRenderClassification(circle, result, options, false));
  std::vector<double> shares;
  for (const QVDrawing& arc : Select(circle, QVDrawing::Kind::Arc))
    shares.push_back(arc.endAngle - arc.beginAngle);
  EXPECT_THAT(shares, ElementsAre(360.0, 0.0, 0.0));
}

TEST(ReportDistribution, ShowsTheClassesOnItsAxis) {
  QVKrigeReportOptions options;
  options.PushClassificationBoundry(5.0).PushClassificationBoundry(9.5).PushClassificationBoundry(
      20.0);
  QVImage image(200.0, 200.0);
  ASSERT_TRUE(QVKrigeRenderDistribution(image, MakeThree(), options));
  const std::vector<QVDrawing> bands = Select(image, QVDrawing::Kind::Polygon);
  const double edges[] = {0.0, 100.0, 190.0, 200.0};
  for (unsigned int k = 0; k < 3; ++k) {
    EXPECT_NEAR(bands[k].points[0].x, edges[k], kTolerance);
    EXPECT_NEAR(bands[k].points[2].x, edges[k + 1], kTolerance);
    EXPECT_EQ(bands[k].pen.GetFillColor(), options.GetClassificationColor(k));
  }
  // Normal with mean 5.5 and variance 2.75: P(0..5) = 0.381, P(5..9.5) = 0.611, P(9.5..10) = 0.005.
  std::vector<QVDrawing> percents;
  for (const QVDrawing& text : Select(image, QVDrawing::Kind::Text))
    if (text.text.back() == '%') percents.push_back(text);
  ASSERT_THAT(percents, SizeIs(3));
  EXPECT_EQ(percents[0].text, "38%");
  EXPECT_EQ(percents[1].text, "61%");
  EXPECT_EQ(percents[2].text, " 0%");
  EXPECT_EQ(percents[0].font.GetSize(), percents[1].font.GetSize());
  EXPECT_NEAR(percents[0].points[0].x, 50.0, kTolerance);
  EXPECT_EQ(percents[2].font.GetRotation(), 90.0) << "too narrow to stand upright";
  EXPECT_EQ(percents[2].font.GetSize(), 8.0);
  EXPECT_NEAR(percents[2].points[0].x, 190.0 + 20.0 / 3.0, kTolerance);

  QVImage narrow(20.0, 200.0);
  QVKrigeRenderDistribution(narrow, MakeThree(), options);
  for (const std::string& text : GetTexts(narrow)) EXPECT_THAT(text, Not(HasSubstr("%")));
}

TEST(ReportTraining, OrdersCellsByWeightThenDistance) {
  const QVMolKrigeResult result = MakeResult({{"CCO", 0.3, 0.2, 1.0},
                                              {"CCCO", 0.2, -0.5, 2.0},
                                              {"CCN", 0.1, 0.2, 3.0},
                                              {"CCS", 0.4, 1.5, 4.0}});
  QVImage image(400.0, 400.0);
  ASSERT_TRUE(QVKrigeRenderTraining(image, result, QVKrigeReportOptions(), 2, 2));
  std::vector<std::string> responses;
  for (const std::string& text : GetTexts(image))
    if (text.rfind("Response", 0) == 0) responses.push_back(text);
  EXPECT_THAT(responses,
              ElementsAre("Response 4.000", "Response 2.000", "Response 3.000", "Response 1.000"));
  EXPECT_THAT(GetTexts(image), IsSupersetOf({"Similar Training Molecules", "Weight", " 1.500",
                                             "-0.500", "Distance  0.100"}));
  // A disc and its outline for each: full for a weight above 1, red for a negative one.
  const std::vector<QVDrawing> glyphs = Select(image, QVDrawing::Kind::Circle);
  ASSERT_THAT(glyphs, SizeIs(8));
  EXPECT_DOUBLE_EQ(glyphs[0].radius, glyphs[1].radius);
  EXPECT_EQ(glyphs[0].pen.GetFillColor(), QVSystem::QVBlue);
  EXPECT_NEAR(glyphs[2].radius, 0.5 * glyphs[3].radius, kTolerance);
  EXPECT_EQ(glyphs[2].pen.GetFillColor(), QVSystem::QVRed);

  QVImage empty(400.0, 400.0);
  EXPECT_TRUE(QVKrigeRenderTraining(empty, result, QVKrigeReportOptions(), 0, 2));
  EXPECT_THAT(empty.GetDrawings(), IsEmpty());
}

TEST(ReportTraining, AppendsTheMeasurementError) {
  const QVMolKrigeResult result = MakeThree();
  const double deviation = std::sqrt(QVGetExperimentalVariance(result.GetVariogram()));
  QVKrigeReportOptions options;
  options.SetShowConfidence(true);
  QVImage image(400.0, 400.0);
  ASSERT_TRUE(QVKrigeRenderTraining(image, result, options, 1, 1));
  char expected[100];
  std::snprintf(expected, sizeof expected, "Response 7.00 [%.2f,%.2f]", 7.0 - 1.96 * deviation,
                7.0 + 1.96 * deviation);
  EXPECT_THAT(GetTexts(image), Contains(deviation > 0.0 ? expected : "Response 7.00"));
}

TEST(ReportClassification, DividesTheCircleByProbability) {
  const QVMolKrigeResult result = MakeThree();
  QVKrigeReportOptions options;
  options.PushClassificationBoundry(5.5).PushClassificationBoundry(7.0);
  QVImage image(100.0, 60.0);
  ASSERT_TRUE(QVKrigeRenderClassification(image, result, options, false));
  const std::vector<QVDrawing> arcs = Select(image, QVDrawing::Kind::Arc);
  ASSERT_THAT(arcs, SizeIs(3));
  EXPECT_NEAR(arcs[0].endAngle, 180.0, 1e-6) << "half of it lies below the mean";
  for (unsigned int k = 1; k < 3; ++k)
    EXPECT_NEAR(arcs[k].beginAngle, arcs[k - 1].endAngle, kTolerance);
  EXPECT_NEAR(arcs[2].endAngle, 360.0, 1e-6);
  EXPECT_EQ(arcs[0].radius, 30.0);
  EXPECT_EQ(arcs[0].points[0].x, 50.0);

  QVImage wide(200.0, 100.0);
  ASSERT_TRUE(QVKrigeRenderClassification(wide, result, options, true));
  EXPECT_NEAR(Select(wide, QVDrawing::Kind::Arc)[0].points[0].x, 50.0, kTolerance);
  EXPECT_THAT(GetTexts(wide),
              ElementsAre("This Molecule", "below 5.5: 50%", "5.5 to 7: 32%", "above 7: 18%"));
  QVImage high(100.0, 200.0);
  ASSERT_TRUE(QVKrigeRenderClassification(high, result, options, true));
  EXPECT_NEAR(Select(high, QVDrawing::Kind::Arc)[0].points[0].y, 50.0, kTolerance);
  QVImage none(100.0, 60.0);
  EXPECT_TRUE(QVKrigeRenderClassification(none, result, QVKrigeReportOptions(), false));
  EXPECT_THAT(none.GetDrawings(), IsEmpty());
}

/// The log P model and its prediction for a molecule.
QVMolKrigeResult Predict(const QVChem::QVMolBase& mol) {
  static const QVMolKrige model = [] {
    QVMolKrige made{QVGlobalKrigeOptions()};
    for (const MeasuredMol& row : MakeLogPSet()) made.AddTraining(row.mol, row.response);
    made.Train();
    return made;
  }();
  return model.GetResult(mol);
}

TEST(ReportMolecule, ColoursAtomsByTheirContribution) {
  const QVChem::QVGraphMol mol = MakeMol("OCc1ccccc1Cl");
  const QVMolKrigeResult result = Predict(mol);
  ASSERT_TRUE(result.Valid());
  QVKrigeReportOptions options;
  options.SetResponseName("log P");
  QVImage image(200.0, 200.0);
  ASSERT_TRUE(QVKrigeRenderMoleculeWithLegend(image, result, mol, options));
  EXPECT_THAT(GetTexts(image),
              IsSupersetOf({" Contributes to Higher log P", " Contributes to Lower log P", "Cl"}));
  std::size_t coloured = 0;
  for (unsigned int i = 0; i < mol.GetNumAtoms(); ++i)
    coloured += result.GetAtomContribution(mol.GetAtom(i)) != 0.0 ? 1 : 0;
  EXPECT_THAT(Select(image, QVDrawing::Kind::Circle), SizeIs(coloured));

  options.SetContributionPositiveLabel("up");
  QVImage labelled(200.0, 200.0);
  ASSERT_TRUE(QVKrigeRenderMoleculeWithLegend(labelled, result, mol, options));
  EXPECT_THAT(GetTexts(labelled), Contains("up"));

  QVImage small(99.0, 200.0);
  EXPECT_FALSE(QVKrigeRenderMolecule(small, result, mol, options));
  EXPECT_FALSE(QVKrigeRenderMoleculeWithLegend(small, result, mol, options));
  EXPECT_THAT(small.GetDrawings(), IsEmpty());
}

TEST(ReportMolecule, IsPlainWithoutFingerprints) {
  const QVScopedRecordingSink sink;
  QVImage image(200.0, 200.0);
  EXPECT_TRUE(QVKrigeRenderMolecule(image, MakeThree(), MakeMol("CCO"), QVKrigeReportOptions()));
  EXPECT_THAT(Select(image, QVDrawing::Kind::Circle), IsEmpty());
  EXPECT_THAT(sink.GetRecords(), IsEmpty());
}

/// The box that a text covers, for text that is not rotated or rotated by 90 degrees.
void ExpectInside(const QVDrawing& text, const QVImage& page) {
  const QVDepict::QVTextExtents extents = QVDepict::QVMeasureText(text.text, text.font);
  const double shift = text.font.GetAlignment() == QVDepict::QVAlignment::Center  ? 0.5
                       : text.font.GetAlignment() == QVDepict::QVAlignment::Right ? 1.0
                                                                                  : 0.0;
  const bool upwards = text.font.GetRotation() == 90.0;
  const double x = text.points[0].x;
  const double y = text.points[0].y;
  const double low = upwards ? y + shift * extents.width : x - shift * extents.width;
  const double high = upwards ? low - extents.width : low + extents.width;
  const double limit = upwards ? page.GetHeight() : page.GetWidth();
  EXPECT_GE(std::min(low, high), -1e-6) << text.text;
  EXPECT_LE(std::max(low, high), limit + 1e-6) << text.text;
  EXPECT_GE(text.font.GetSize(), 2.0) << text.text;
}

TEST(ReportPage, HoldsItsPanelsInEveryLayout) {
  QVChem::QVGraphMol mol = MakeMol("OCc1ccccc1Cl");
  mol.SetTitle("2-chlorobenzyl alcohol");
  mol.SetSDData("batch", "B7");
  const QVMolKrigeResult result = Predict(mol);
  for (const char* title : {"", "A Title"})
    for (const bool details : {true, false})
      for (const bool properties : {true, false})
        for (const double width : {842.0, 595.0}) {
          QVKrigeReportOptions options;
          options.SetTitle(title).SetShowKrigeDetails(details).SetShowConfidence(true);
          options.PushClassificationBoundry(1.0);
          if (properties) options.PushSDProperty("batch", "Batch number");
          QVImage page(width, 595.0 * 842.0 / width);
          EXPECT_TRUE(QVKrigeRenderReport(page, result, mol, options, 3, 2));
          const std::vector<std::string> texts = GetTexts(page);
          EXPECT_THAT(texts, IsSupersetOf({"This Molecule", "Similar Training Molecules",
                                           "2-chlorobenzyl alcohol", "Weight"}));
          const auto has = [&](const char* text) {
            return std::find(texts.begin(), texts.end(), text) != texts.end();
          };
          EXPECT_EQ(has("Variogram"), details);
          EXPECT_EQ(has("Model Quality"), details);
          EXPECT_EQ(has("A Title"), *title != 0);
          EXPECT_EQ(has("Properties"), properties);
          EXPECT_EQ(has("B7"), properties);
          for (const QVDrawing& text : Select(page, QVDrawing::Kind::Text))
            ExpectInside(text, page);
        }
}

TEST(ReportPage, WarnsWhenPropertiesDoNotFit) {
  const QVChem::QVGraphMol mol = MakeMol("CCO");
  const QVMolKrigeResult result = Predict(mol);
  QVKrigeReportOptions options;
  for (int i = 0; i < 60; ++i) options.PushSDProperty("tag" + std::to_string(i));
  const auto render = [&](double width, double height) {
    const QVScopedRecordingSink sink;
    QVImage page(width, height);
    EXPECT_FALSE(QVKrigeRenderReport(page, result, mol, options, 0, 0));
    return sink.GetTexts(QVErrorLevel::Warning);
  };
  EXPECT_THAT(render(842.0, 595.0),
              ElementsAre("QVKrigeRenderReport, Not enough space to render all sd/data, skipping "
                          "some"));
  EXPECT_THAT(render(60.0, 50.0),
              ElementsAre("QVKrigeRenderReport, unable to render any data, skipping"));
}

TEST(ReportPage, OfAnInvalidResultSaysSo) {
  QVChem::QVGraphMol mol = MakeMol("CCO");
  mol.SetTitle("ethanol");
  const QVScopedRecordingSink sink;
  QVImage page(842.0, 595.0);
  EXPECT_FALSE(QVKrigeRenderReport(page, QVMolKrigeResult(), mol, QVKrigeReportOptions(), 3, 2));
  EXPECT_THAT(sink.GetTexts(QVErrorLevel::Warning),
              ElementsAre("QVKrigeRenderReport, the result for molecule 'ethanol' is not valid, "
                          "there is no prediction to show"));
  EXPECT_THAT(GetTexts(page), IsSupersetOf({"No Prediction", "Model Quality", "O", "ethanol"}));
  EXPECT_EQ(sink.GetRecords().size(), 1u);
  QVImage pixel(1.0, 1.0);
  EXPECT_FALSE(QVKrigeRenderReport(pixel, Predict(mol), mol, QVKrigeReportOptions(), 3, 2));
}

TEST(ReportFile, IsWrittenWholeOrNotAtAll) {
  const std::filesystem::path directory =
      std::filesystem::temp_directory_path() / ("qvreport-" + std::to_string(::getpid()));
  std::filesystem::create_directories(directory);
  const QVChem::QVGraphMol mol = MakeMol("OCc1ccccc1");
  const QVMolKrigeResult result = Predict(mol);
  const auto render = [&](const char* name) {
    return QVKrigeRenderReport((directory / name).string(), result, mol, QVKrigeReportOptions());
  };
  for (const char* name : {"a.pdf", "a.svg", "a.png"}) EXPECT_TRUE(render(name)) << name;
  const QVScopedRecordingSink sink;
  EXPECT_FALSE(render("a.tiff"));
  EXPECT_FALSE(render("missing/a.pdf"));
  EXPECT_THAT(sink.GetTexts(QVErrorLevel::Error),
              ElementsAre(HasSubstr("a.tiff"), HasSubstr("missing/a.pdf")));
  std::size_t files = 0;
  for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(directory)) ++files;
  EXPECT_EQ(files, 3u);
  std::filesystem::remove_all(directory);
}

}  // namespace
}  // namespace QVStats
