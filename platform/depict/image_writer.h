/// \file
/// \brief Image files: PNG, SVG and PDF, by the extension of their name.
///
/// Text stays text in SVG and PDF; a PDF carries its fonts. The same images give the same bytes. A
/// file appears whole or not at all: it is written under another name and renamed. Failures are
/// error reports that name the file.
#ifndef QV_PLATFORM_DEPICT_IMAGE_WRITER_H
#define QV_PLATFORM_DEPICT_IMAGE_WRITER_H

#include <cstddef>
#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "platform/depict/export.h"
#include "platform/depict/image.h"

namespace QVDepict {

/// Whether the name ends in ".png", ".svg" or ".pdf", in upper or lower case.
QVDEPICT_EXPORT bool QVIsImageFileName(const std::string& fileName);

/// The bytes of an image file.
/// \param extension "png", "svg" or "pdf", in upper or lower case.
/// \return whether `bytes` was set.
QVDEPICT_EXPORT bool QVWriteImageToString(std::string& bytes, const std::string& extension,
                                          const QVImage& image);

QVDEPICT_EXPORT bool QVWriteImage(const std::string& fileName, const QVImage& image);

/// Pages of one size.
class QVDEPICT_EXPORT QVMultiPageImageFile {
 public:
  static constexpr double A4LongSide = 841.89;    ///< in points
  static constexpr double A4ShortSide = 595.276;  ///< in points

  /// \param rows,columns the layout of `GetCells` on each page.
  QVMultiPageImageFile(unsigned int rows, unsigned int columns, double width = A4LongSide,
                       double height = A4ShortSide);

  /// A new empty page at the end. Stays valid while this object does.
  QVImage& NewPage();
  std::size_t GetNumPages() const { return pages_.size(); }
  const QVImage& GetPage(std::size_t page) const { return pages_[page]; }
  /// The cells of a page, by rows.
  std::vector<QVImageFrame> GetCells(const QVImage& page) const;

 private:
  std::deque<QVImage> pages_;
  unsigned int rows_;
  unsigned int columns_;
  double width_;
  double height_;
};

/// Writes all pages as `QVImageFileWriter` does.
QVDEPICT_EXPORT bool QVWriteImage(const std::string& fileName, const QVMultiPageImageFile& pages);

/// Writes page after page: a PDF of many pages, or for PNG and SVG one file a page: the name as
/// given for the first page, "name-2.png" for the second, and so on.
class QVDEPICT_EXPORT QVImageFileWriter {
 public:
  /// \param scale pixels of a PNG for one unit of the image.
  explicit QVImageFileWriter(const std::string& fileName, double scale = 1.0);
  /// Gives up a PDF that was not closed; no file is left of it.
  ~QVImageFileWriter();
  QVImageFileWriter(const QVImageFileWriter&) = delete;
  QVImageFileWriter& operator=(const QVImageFileWriter&) = delete;

  /// \return false after any failure so far.
  bool Add(const QVImage& page);
  /// Finishes the file.
  /// \return whether all pages are safely in their files; false if there is no page.
  bool Close();

 private:
  class Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace QVDepict

#endif  // QV_PLATFORM_DEPICT_IMAGE_WRITER_H
