#include "apps/cluster_page.h"

#include <utility>

#include "apps/commands.h"
#include "platform/depict/molecule_display.h"

namespace QVApps {

using QVDepict::QVImage;
using QVDepict::QVMultiPageImageFile;

namespace {

constexpr double kWidth = QVMultiPageImageFile::A4ShortSide;
constexpr double kHeight = QVMultiPageImageFile::A4LongSide;
constexpr double kMargin = 28.0;
constexpr double kHeading = 20.0;
constexpr std::size_t kColumns = 5;
constexpr double kCellWidth = (kWidth - 2.0 * kMargin) / kColumns;
constexpr double kCellHeight = 100.0;
constexpr double kGap = 6.0;
/// Pixels of a PNG for a point.
constexpr double kPngScale = 2.0;

constexpr QVSystem::QVColor kHeadFrame{0, 114, 178};

void DrawMember(const QVDepict::QVImageBase& page, const QVDepict::QV2DPoint& corner,
                const QVChem::QVMolBase& mol, bool head) {
  QVDepict::QVImageFrame cell(page, corner, kCellWidth, kCellHeight);
  QVDepict::QVImageFrame picture = QVDepict::QVGetInset(cell, 4.0);
  QVChem::QVGraphMol copy(mol);
  const auto prepare = QVDepict::QVPrepareDepictionOptions(true).SetOrientation(
      QVDepict::QVDepictOrientation::Horizontal);
  if (QVDepict::QVPrepareDepiction(copy, prepare)) {
    QVDepict::QV2DMolDisplayOptions options(picture.GetWidth(), picture.GetHeight());
    options.SetTitleLocation(QVDepict::QVTitleLocation::Bottom);
    QVDepict::QVRenderMolecule(picture, QVDepict::QV2DMolDisplay(copy, options));
  }
  QVDepict::QVImageFrame frame = QVDepict::QVGetInset(cell, 1.5);
  QVDepict::QVDrawBorder(frame, head ? QVDepict::QVLinePen(kHeadFrame, 1.5)
                                     : QVDepict::QVLinePen(QVSystem::QVLightGrey, 0.5));
}

}  // namespace

ClusterPages::ClusterPages(std::string path)
    : path_(std::move(path)), writer_(path_, kPngScale), page_(kWidth, kHeight) {
  StartPage();
}

void ClusterPages::StartPage() {
  page_ = QVImage(kWidth, kHeight);
  top_ = kMargin;
}

void ClusterPages::FinishPage() {
  if (!writer_.Add(page_)) throw Failure(path_ + ": the page could not be written");
}

void ClusterPages::DrawHeading(const std::string& heading) {
  const QVDepict::QVFont font(QVDepict::QVFontFamily::Sans, QVDepict::QVFontStyle::Bold, 11.0,
                              QVDepict::QVAlignment::Left);
  page_.DrawText({kMargin + 1.5, top_ + 0.7 * kHeading},
                 QVDepict::QVCutText(heading, font, kWidth - 2.0 * kMargin), font);
  top_ += kHeading;
}

void ClusterPages::Add(const std::string& heading,
                       const std::vector<const QVChem::QVMolBase*>& members) {
  const auto makeRoom = [&](double height, const std::string& text) {
    if (top_ + height <= kHeight - kMargin) return false;
    FinishPage();
    StartPage();
    DrawHeading(text);
    return true;
  };
  if (!makeRoom(kHeading + kCellHeight, heading)) DrawHeading(heading);
  for (std::size_t i = 0; i < members.size(); ++i) {
    const std::size_t column = i % kColumns;
    if (column == 0) makeRoom(kCellHeight, heading + " (continued)");
    DrawMember(page_, {kMargin + static_cast<double>(column) * kCellWidth, top_}, *members[i],
               i == 0);
    if (column + 1 == kColumns || i + 1 == members.size()) top_ += kCellHeight;
  }
  top_ += kGap;
}

void ClusterPages::Close() {
  FinishPage();
  if (!writer_.Close()) throw Failure(path_ + ": the pages could not be written");
}

}  // namespace QVApps
