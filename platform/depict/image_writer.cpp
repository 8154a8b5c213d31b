#include "platform/depict/image_writer.h"

#include "platform/depict/internal/surfaces.h"
#include "platform/system/error_handler.h"
#include "platform/system/output_file.h"
#include "platform/system/text.h"

namespace QVDepict {
namespace {

std::string GetExtension(const std::string& fileName) {
  const std::size_t dot = fileName.find_last_of("./");
  if (dot == std::string::npos || fileName[dot] == '/') return "";
  return QVSystem::QVToLower(fileName.substr(dot + 1));
}

bool IsKnown(const std::string& extension) {
  return extension == "png" || extension == "svg" || extension == "pdf";
}

bool MakeImageFile(const QVImage& image, const std::string& extension, double scale,
                   std::string& bytes, std::string& problem) {
  if (extension == "png") return MakePng(image, scale, bytes, problem);
  if (extension == "svg") {
    bytes = MakeSvg(image);
    return true;
  }
  if (extension == "pdf") {
    PdfDocument document;
    document.Add(image);
    return document.Finish(bytes, problem);
  }
  problem = "an image file ends in .png, .svg or .pdf";
  return false;
}

std::string GetNameOfPage(const std::string& fileName, std::size_t page) {
  if (page == 0) return fileName;
  const std::size_t dot = fileName.rfind('.');
  return fileName.substr(0, dot) + '-' + std::to_string(page + 1) + fileName.substr(dot);
}

}  // namespace

bool QVIsImageFileName(const std::string& fileName) { return IsKnown(GetExtension(fileName)); }

bool QVWriteImageToString(std::string& bytes, const std::string& extension, const QVImage& image) {
  std::string made;
  std::string problem;
  if (!MakeImageFile(image, QVSystem::QVToLower(extension), 1.0, made, problem)) {
    QVSystem::QVThrow.Error("QVWriteImageToString: %s", problem.c_str());
    return false;
  }
  bytes.swap(made);
  return true;
}

QVMultiPageImageFile::QVMultiPageImageFile(unsigned int rows, unsigned int columns, double width,
                                           double height)
    : rows_(rows), columns_(columns), width_(width), height_(height) {}

QVImage& QVMultiPageImageFile::NewPage() { return pages_.emplace_back(width_, height_); }

std::vector<QVImageFrame> QVMultiPageImageFile::GetCells(const QVImage& page) const {
  const QVImageGrid grid(page, rows_, columns_);
  std::vector<QVImageFrame> cells;
  for (unsigned int row = 0; row < grid.GetNumRows(); ++row)
    for (unsigned int column = 0; column < grid.GetNumColumns(); ++column)
      cells.push_back(grid.GetCell(row, column));
  return cells;
}

class QVImageFileWriter::Impl {
 public:
  Impl(const std::string& fileName, double scale)
      : fileName_(fileName), extension_(GetExtension(fileName)), scale_(scale) {}

  bool Add(const QVImage& page) {
    if (failed_) return false;
    ++pages_;
    if (extension_ == "pdf") {
      pdf_.Add(page);
      return true;
    }
    std::string bytes;
    std::string problem;
    const std::string name = GetNameOfPage(fileName_, pages_ - 1);
    return (MakeImageFile(page, extension_, scale_, bytes, problem) &&
            QVSystem::QVWriteWholeFile(name, bytes, problem)) ||
           Fail(name, problem);
  }

  bool Close() {
    if (failed_) return false;
    if (pages_ == 0) return Fail(fileName_, "there is no page to write");
    if (extension_ != "pdf") return true;
    std::string bytes;
    std::string problem;
    return (pdf_.Finish(bytes, problem) && QVSystem::QVWriteWholeFile(fileName_, bytes, problem)) ||
           Fail(fileName_, problem);
  }

 private:
  bool Fail(const std::string& name, const std::string& problem) {
    failed_ = true;
    QVSystem::QVThrow.Error("QVWriteImage: cannot write %s: %s", name.c_str(), problem.c_str());
    return false;
  }

  std::string fileName_;
  std::string extension_;
  double scale_;
  PdfDocument pdf_;
  std::size_t pages_ = 0;
  bool failed_ = false;
};

QVImageFileWriter::QVImageFileWriter(const std::string& fileName, double scale)
    : impl_(std::make_unique<Impl>(fileName, scale)) {}

QVImageFileWriter::~QVImageFileWriter() = default;

bool QVImageFileWriter::Add(const QVImage& page) { return impl_->Add(page); }

bool QVImageFileWriter::Close() { return impl_->Close(); }

bool QVWriteImage(const std::string& fileName, const QVImage& image) {
  QVImageFileWriter writer(fileName);
  return writer.Add(image) && writer.Close();
}

bool QVWriteImage(const std::string& fileName, const QVMultiPageImageFile& pages) {
  QVImageFileWriter writer(fileName);
  for (std::size_t page = 0; page < pages.GetNumPages(); ++page)
    if (!writer.Add(pages.GetPage(page))) return false;
  return writer.Close();
}

}  // namespace QVDepict
