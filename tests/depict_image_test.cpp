#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <limits>
#include <sstream>

#include "platform/depict/image.h"
#include "platform/depict/image_writer.h"
#include "platform/system/error_handler.h"

namespace QVDepict {
namespace {

using QVSystem::QVErrorLevel;
using QVSystem::QVScopedRecordingSink;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

std::string ReadFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::stringstream bytes;
  bytes << file.rdbuf();
  return bytes.str();
}

/// A directory of its own for each test, gone after it.
class ImageFiles : public testing::Test {
 protected:
  ImageFiles()
      : directory_(std::filesystem::temp_directory_path() /
                   ("qvdepict-" + std::to_string(::getpid()) + "-" +
                    testing::UnitTest::GetInstance()->current_test_info()->name())) {
    std::filesystem::create_directories(directory_);
  }
  ~ImageFiles() override { std::filesystem::remove_all(directory_); }

  std::string PathOf(const std::string& name) const { return (directory_ / name).string(); }
  std::vector<std::string> ListFiles() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(directory_))
      names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
  }

  std::filesystem::path directory_;
};

QVImage MakeSample() {
  QVImage image(120.0, 80.0);
  image.DrawRectangle({10.0, 10.0}, {50.0, 40.0}, QVFillPen(QVSystem::QVRed));
  image.DrawCircle({80.0, 40.0}, 20.0, QVPen());
  image.DrawArc({80.0, 40.0}, 0.0, 360.0, 10.0, QVLinePen(QVSystem::QVDarkBlue, 4.0));
  image.DrawPie({80.0, 40.0}, 0.0, 90.0, 8.0, QVFillPen(QVSystem::QVLightGrey));
  image.DrawLine({0.0, 79.0}, {120.0, 79.0}, QVLinePen(QVSystem::QVBlack, 1.0, QVStipple::Dash));
  image.DrawText({60.0, 60.0}, "a < b & \xC2\xB5", QVFont(3, 2, 12.0, QVAlignment::Center));
  return image;
}

TEST(Image, FramesGridsAndSplitsRecordInCoordinatesOfTheWhole) {
  QVImage image(200.0, 100.0);
  QVImageFrame right = QVSplitHorizontally(image, 0.25).second;
  QVImageFrame lower = QVSplitVertically(right, 0.4).second;
  EXPECT_EQ(lower.GetWidth(), 150.0);
  EXPECT_EQ(lower.GetHeight(), 60.0);
  QVImageFrame cell = QVImageGrid(lower, 2, 3, 5.0, 2.5).GetCell(1, 2);
  EXPECT_DOUBLE_EQ(cell.GetWidth(), 45.0);
  EXPECT_DOUBLE_EQ(cell.GetHeight(), 23.75);
  QVImageFrame inner = QVGetBuffered(cell, 0.1);
  EXPECT_DOUBLE_EQ(inner.GetWidth(), 36.0);
  inner.DrawCircle({1.0, 2.0}, 3.0, QVPen());
  ASSERT_EQ(image.GetDrawings().size(), 1u);
  // 50 + 5 + 2 * (45 + 2.5) + 4.5 + 1 and 40 + 5 + 23.75 + 2.5 + 2.375 + 2.
  EXPECT_DOUBLE_EQ(image.GetDrawings()[0].points[0].x, 155.5);
  EXPECT_DOUBLE_EQ(image.GetDrawings()[0].points[0].y, 75.625);
}

TEST(Image, RefusesWhatIsNotFinite) {
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  QVImage image(10.0, 10.0);
  EXPECT_FALSE(image.DrawLine({0.0, kNaN}, {1.0, 1.0}, QVPen()));
  EXPECT_FALSE(image.DrawCircle({0.0, 0.0}, -1.0, QVPen()));
  EXPECT_FALSE(image.DrawArc({0.0, 0.0}, 10.0, 0.0, 1.0, QVPen()));
  EXPECT_FALSE(image.DrawPolygon({{0.0, 0.0}, {1.0, 1.0}}, QVPen()));
  EXPECT_FALSE(image.DrawText({0.0, 0.0}, "x", QVFont().SetSize(0.0)));
  EXPECT_THAT(image.GetDrawings(), IsEmpty());
  EXPECT_EQ(QVImage(kNaN, -3.0).GetWidth(), 1.0);
}

TEST(Text, FitsItsBoxAndGrowsInProportion) {
  const QVFont font(QVFontFamily::Sans, QVFontStyle::Bold, 20.0, QVAlignment::Center);
  const QVTextExtents once = QVMeasureText("Model Quality", font);
  const QVTextExtents twice = QVMeasureText("Model Quality", QVFont(font).SetSize(40.0));
  EXPECT_NEAR(twice.width, 2.0 * once.width, 1e-9 * once.width);
  EXPECT_GT(once.ascent, once.descent);

  QVImage image(0.5 * once.width, 100.0);
  ASSERT_TRUE(QVDrawTextToFit(image, "Model Quality", font));
  const QVDrawing& drawn = image.GetDrawings().at(0);
  EXPECT_NEAR(drawn.font.GetSize(), 10.0, 1e-9);
  EXPECT_NEAR(drawn.points[0].x, 0.25 * once.width, 1e-9);
  QVImage narrow(0.2 * once.width, 100.0);
  EXPECT_FALSE(QVDrawTextToFit(narrow, "Model Quality", font)) << "below the smallest size";
  EXPECT_THAT(narrow.GetDrawings(), IsEmpty());
}

TEST(Text, IsCutBetweenCharacters) {
  const QVFont font;
  const std::string text = "\xCE\xB1\xCE\xB2\xCE\xB3\xCE\xB4\xCE\xB5\xCE\xB6";  // alpha to zeta
  const std::string cut = QVCutText(text, font, 0.7 * QVMeasureText(text, font).width);
  EXPECT_THAT(cut, StartsWith("\xCE\xB1"));
  EXPECT_THAT(cut, testing::EndsWith("\xE2\x80\xA6"));
  EXPECT_EQ(cut.size() % 2, 1u) << "whole letters of two bytes and an ellipsis of three";
  EXPECT_EQ(QVCutText(text, font, 1.0), "");
}

TEST(Text, ThatIsNotUtf8IsReadAsLatin1) {
  QVImage image(50.0, 20.0);
  image.DrawText({0.0, 10.0}, "caf\xE9\n\xC2\xB5", QVFont());
  EXPECT_EQ(image.GetDrawings().at(0).text, "caf\xC3\xA9 \xC2\xB5");
}

TEST(Svg, HoldsShapesAndText) {
  std::string svg;
  ASSERT_TRUE(QVWriteImageToString(svg, "SVG", MakeSample()));
  EXPECT_THAT(svg, HasSubstr("a &lt; b &amp; \xC2\xB5</text>"));
  EXPECT_THAT(svg, HasSubstr("<polygon points=\"10,10 50,10 50,40 10,40\" fill=\"#ff0000\"/>"));
  EXPECT_THAT(svg, HasSubstr("<circle cx=\"80\" cy=\"40\" r=\"20\" fill=\"none\" "
                             "stroke=\"#000000\"/>"));
  // The full ring runs from the top over the bottom back to the top.
  EXPECT_THAT(svg, HasSubstr("M80 30 A10 10 0 0 1 80 50 A10 10 0 0 1 80 30"));
  EXPECT_THAT(svg, HasSubstr("stroke-dasharray=\"3 3\""));
}

TEST_F(ImageFiles, OfEachFormatHaveTheirSignatureAndTheSameBytesAgain) {
  const QVImage image = MakeSample();
  const std::pair<const char*, const char*> formats[] = {
      {"a.PNG", "\x89PNG\r\n\x1A\n"}, {"a.svg", "<?xml version"}, {"a.pdf", "%PDF-1."}};
  for (const auto& [name, signature] : formats) {
    EXPECT_TRUE(QVIsImageFileName(name));
    ASSERT_TRUE(QVWriteImage(PathOf(name), image)) << name;
    const std::string first = ReadFile(PathOf(name));
    EXPECT_THAT(first, StartsWith(signature));
    ASSERT_TRUE(QVWriteImage(PathOf(name), image)) << name;
    EXPECT_EQ(ReadFile(PathOf(name)), first) << name;
  }
  EXPECT_THAT(ReadFile(PathOf("a.pdf")), Not(HasSubstr("Date")));
  EXPECT_THAT(ListFiles(), ElementsAre("a.PNG", "a.pdf", "a.svg"));
}

TEST_F(ImageFiles, HaveOnePdfOrManyPictures) {
  QVMultiPageImageFile pages(2, 2, 60.0, 40.0);
  for (int page = 0; page < 3; ++page)
    for (QVImageFrame& cell : pages.GetCells(pages.NewPage())) QVDrawBorder(cell, QVPen());
  EXPECT_EQ(pages.GetPage(2).GetDrawings().size(), 4u);
  ASSERT_TRUE(QVWriteImage(PathOf("r.pdf"), pages));
  ASSERT_TRUE(QVWriteImage(PathOf("r.svg"), pages));
  EXPECT_THAT(ListFiles(), ElementsAre("r-2.svg", "r-3.svg", "r.pdf", "r.svg"));
  EXPECT_THAT(ReadFile(PathOf("r.pdf")), HasSubstr("/Count 3"));
}

TEST_F(ImageFiles, ThatCannotBeWrittenAreReportedAndLeaveNothing) {
  const struct {
    std::string name;
    const char* message;
  } cases[] = {{PathOf("no/such/directory.png"), "No such file or directory"},
               {PathOf("picture.gif"), "an image file ends in .png, .svg or .pdf"},
               {PathOf("picture"), "an image file ends in .png, .svg or .pdf"}};
  for (const auto& row : cases) {
    const QVScopedRecordingSink sink;
    EXPECT_FALSE(QVWriteImage(row.name, MakeSample()));
    EXPECT_THAT(sink.GetTexts(QVErrorLevel::Error),
                ElementsAre("QVWriteImage: cannot write " + row.name + ": " + row.message));
  }
  const QVScopedRecordingSink sink;
  EXPECT_FALSE(QVWriteImage(PathOf("huge.png"), QVImage(1e6, 10.0)));
  EXPECT_FALSE(QVWriteImage(PathOf("empty.pdf"), QVMultiPageImageFile(1, 1)));
  EXPECT_EQ(sink.GetTexts(QVErrorLevel::Error).size(), 2u);
  EXPECT_THAT(ListFiles(), IsEmpty());
}

TEST_F(ImageFiles, OfOnePixelAreWritten) {
  for (const char* name : {"a.png", "a.svg", "a.pdf"})
    EXPECT_TRUE(QVWriteImage(PathOf(name), QVImage(1.0, 1.0))) << name;
}

}  // namespace
}  // namespace QVDepict
