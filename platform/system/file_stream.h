/// \file
/// \brief Text files, plain or gzip, read line by line and written.
#ifndef QV_PLATFORM_SYSTEM_FILE_STREAM_H
#define QV_PLATFORM_SYSTEM_FILE_STREAM_H

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "platform/system/export.h"

namespace QVPlatform {

/// Reads a text file line by line. Gzip is recognised by its first bytes, whatever the name.
///
///     qvifstream in(path);
///     std::string line;
///     while (in.getline(line)) Use(line, in.GetLineNumber());
///     if (in.HasError()) Report(in.GetErrorText());
///
/// Errors are the file that cannot be opened or read, and a gzip that is damaged or ends early: the
/// lines before the fault have been delivered, and nothing else tells it from the end of the file.
class QVSYSTEM_EXPORT qvifstream {
 public:
  qvifstream();
  /// Opens the file at once; see open().
  explicit qvifstream(const std::string& path);
  qvifstream(qvifstream&& other) noexcept;
  qvifstream& operator=(qvifstream&& other) noexcept;
  ~qvifstream();

  /// Closes what was open and opens a file. \return whether it could be opened.
  bool open(const std::string& path);
  /// Reads the standard input, which is called "standard input" in error texts.
  bool OpenStandardInput();
  void close();
  bool IsOpen() const;

  /// Reads the next line without its end, "\n" or "\r\n". A last line without an end counts,
  /// unless an error cut it; other bytes, NUL included, are delivered as they are.
  /// \return false at the end and after an error; `line` is then empty.
  bool getline(std::string& line);

  /// Reads up to `size` bytes as they are, after what getline() has delivered; for programs that
  /// find the lines themselves. Lines read this way are not counted.
  /// \return how many were read, fewer than asked for only at the end or after an error.
  std::size_t Read(char* bytes, std::size_t size);
  /// Goes back to the first byte. \return false when the input cannot be read again (a pipe).
  bool Rewind();
  /// The size of a plain file in bytes; 0 when it is not known, and for gzip.
  std::size_t GetPlainSize() const;

  /// The number of the line read last, from 1; 0 before the first.
  std::size_t GetLineNumber() const;
  bool HasError() const;
  /// "<path>: <what is wrong>", empty without an error.
  const std::string& GetErrorText() const;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

/// The same as a free function, as the standard streams have it.
inline bool getline(qvifstream& in, std::string& line) { return in.getline(line); }

/// Writes a text file; a name that ends in ".gz" makes it gzip.
///
/// Errors are kept and told by close(): a full disk shows there at the latest.
class QVSYSTEM_EXPORT qvofstream {
 public:
  qvofstream();
  explicit qvofstream(const std::string& path);
  qvofstream(qvofstream&& other) noexcept;
  qvofstream& operator=(qvofstream&& other) noexcept;
  /// Closes the file; an error that shows only then is lost, so call close() first.
  ~qvofstream();

  /// Closes what was open and creates or empties a file. \return whether it could be opened.
  bool open(const std::string& path);
  /// Writes to the standard output, uncompressed.
  bool OpenStandardOutput();
  /// Writes out what is buffered and closes. \return whether everything was written.
  bool close();
  bool IsOpen() const;

  qvofstream& operator<<(std::string_view text);
  qvofstream& operator<<(char character) { return *this << std::string_view(&character, 1); }

  bool HasError() const;
  /// "<path>: <what is wrong>", empty without an error.
  const std::string& GetErrorText() const;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace QVPlatform

#endif  // QV_PLATFORM_SYSTEM_FILE_STREAM_H
