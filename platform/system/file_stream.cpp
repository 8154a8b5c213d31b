#include "platform/system/file_stream.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <vector>

namespace QVPlatform {

namespace {

constexpr std::size_t kBufferSize = std::size_t{1} << 17;

std::string ErrnoText() { return std::strerror(errno); }

bool EndsWith(std::string_view text, std::string_view end) {
  return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

}  // namespace

// zlib's gzip layer reads plain files as they are, so that both come through one door.
struct qvifstream::Impl {
  gzFile file = nullptr;
  std::string path;
  std::string error;
  std::vector<char> buffer;
  std::size_t position = 0;
  std::size_t filled = 0;
  std::size_t lineNumber = 0;
  std::size_t sizeOnDisk = 0;

  ~Impl() { Close(); }

  void Close() {
    if (file) gzclose_r(file);
    file = nullptr;
  }

  bool Open(int descriptor, std::string name) {
    path = std::move(name);
    error.clear();
    position = filled = lineNumber = 0;
    if (descriptor < 0) return Fail(ErrnoText());
    struct stat status {};
    const bool known = fstat(descriptor, &status) == 0;
    if (known && S_ISDIR(status.st_mode)) {
      ::close(descriptor);
      return Fail("is a directory");
    }
    sizeOnDisk = known && S_ISREG(status.st_mode) ? static_cast<std::size_t>(status.st_size) : 0;
    file = gzdopen(descriptor, "rb");
    if (!file) {
      ::close(descriptor);
      return Fail("out of memory");
    }
    gzbuffer(file, static_cast<unsigned int>(kBufferSize));
    buffer.resize(kBufferSize);
    return true;
  }

  bool Fail(const std::string& reason) {
    error = path + ": " + reason;
    Close();
    return false;
  }

  /// \return false at the end of the file and after an error.
  bool Fill() {
    position = 0;
    filled = ReadBytes(buffer.data(), buffer.size());
    return filled > 0;
  }

  /// \return how many bytes were read.
  std::size_t ReadBytes(char* bytes, std::size_t size) {
    if (!file) return 0;
    const int count = gzread(file, bytes, static_cast<unsigned int>(size));
    const std::size_t numRead = count > 0 ? static_cast<std::size_t>(count) : 0;
    if (numRead == size) return numRead;
    int code = Z_OK;
    const char* const text = gzerror(file, &code);
    // A gzip that ends early still delivers the bytes before its end.
    if (code == Z_BUF_ERROR)
      error = path + ": the gzip file is truncated";
    else if (code == Z_ERRNO)
      error = path + ": " + ErrnoText();
    else if (code != Z_OK && code != Z_STREAM_END)
      error = path + ": the gzip file is damaged (" + text + ")";
    if (!error.empty()) Close();
    return numRead;
  }
};

qvifstream::qvifstream() : impl_(std::make_unique<Impl>()) {}
qvifstream::qvifstream(const std::string& path) : qvifstream() { open(path); }
qvifstream::qvifstream(qvifstream&& other) noexcept = default;
qvifstream& qvifstream::operator=(qvifstream&& other) noexcept = default;
qvifstream::~qvifstream() = default;

bool qvifstream::open(const std::string& path) {
  close();
  return impl_->Open(::open(path.c_str(), O_RDONLY | O_CLOEXEC), path);
}

bool qvifstream::OpenStandardInput() {
  close();
  return impl_->Open(::dup(STDIN_FILENO), "standard input");
}

void qvifstream::close() {
  if (!impl_) impl_ = std::make_unique<Impl>();
  impl_->Close();
  impl_->position = impl_->filled = 0;
}

bool qvifstream::IsOpen() const { return impl_ && impl_->file != nullptr; }

bool qvifstream::getline(std::string& line) {
  line.clear();
  if (!impl_) return false;
  Impl& in = *impl_;
  bool any = false;
  bool ended = false;
  while (!ended && (in.position < in.filled || in.Fill())) {
    any = true;
    const char* const start = in.buffer.data() + in.position;
    const std::size_t left = in.filled - in.position;
    const void* const end = std::memchr(start, '\n', left);
    if (!end) {
      line.append(start, left);
      in.position = in.filled;
      continue;
    }
    const auto length = static_cast<std::size_t>(static_cast<const char*>(end) - start);
    line.append(start, length);
    in.position += length + 1;
    ended = true;
  }
  // A line that a fault cut could pass for a whole one.
  if (!any || (!ended && HasError())) {
    line.clear();
    return false;
  }
  if (!line.empty() && line.back() == '\r') line.pop_back();
  ++in.lineNumber;
  return true;
}

std::size_t qvifstream::Read(char* bytes, std::size_t size) {
  if (!impl_) return 0;
  Impl& in = *impl_;
  const std::size_t buffered = std::min(size, in.filled - in.position);
  std::copy_n(in.buffer.data() + in.position, buffered, bytes);
  in.position += buffered;
  std::size_t total = buffered;
  // zlib counts in int.
  constexpr std::size_t kMost = std::size_t{1} << 30;
  while (total < size) {
    const std::size_t wanted = std::min(size - total, kMost);
    const std::size_t count = in.ReadBytes(bytes + total, wanted);
    total += count;
    if (count < wanted) break;
  }
  return total;
}

bool qvifstream::Rewind() {
  if (!impl_ || !impl_->file || gzrewind(impl_->file) != 0) return false;
  impl_->position = impl_->filled = impl_->lineNumber = 0;
  return true;
}

std::size_t qvifstream::GetPlainSize() const {
  return IsOpen() && gzdirect(impl_->file) ? impl_->sizeOnDisk : 0;
}

std::size_t qvifstream::GetLineNumber() const { return impl_ ? impl_->lineNumber : 0; }
bool qvifstream::HasError() const { return impl_ && !impl_->error.empty(); }
const std::string& qvifstream::GetErrorText() const {
  static const std::string none;
  return impl_ ? impl_->error : none;
}

struct qvofstream::Impl {
  gzFile file = nullptr;
  std::string path;
  std::string error;

  ~Impl() { Close(); }

  bool Open(int descriptor, std::string name, const char* mode) {
    path = std::move(name);
    error.clear();
    if (descriptor < 0) return Fail(ErrnoText());
    file = gzdopen(descriptor, mode);
    if (!file) {
      ::close(descriptor);
      return Fail("out of memory");
    }
    gzbuffer(file, static_cast<unsigned int>(kBufferSize));
    return true;
  }

  bool Fail(const std::string& reason) {
    if (error.empty()) error = path + ": " + reason;
    return false;
  }

  bool Close() {
    if (file && gzclose_w(file) != Z_OK) Fail("could not be written: " + ErrnoText());
    file = nullptr;
    return error.empty();
  }
};

qvofstream::qvofstream() : impl_(std::make_unique<Impl>()) {}
qvofstream::qvofstream(const std::string& path) : qvofstream() { open(path); }
qvofstream::qvofstream(qvofstream&& other) noexcept = default;
qvofstream& qvofstream::operator=(qvofstream&& other) noexcept = default;
qvofstream::~qvofstream() = default;

bool qvofstream::open(const std::string& path) {
  close();
  constexpr mode_t kReadableByAll = 0666;
  const int descriptor =
      ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, kReadableByAll);
  return impl_->Open(descriptor, path, EndsWith(path, ".gz") ? "wb" : "wbT");
}

bool qvofstream::OpenStandardOutput() {
  close();
  return impl_->Open(::dup(STDOUT_FILENO), "standard output", "wbT");
}

bool qvofstream::close() {
  if (!impl_) impl_ = std::make_unique<Impl>();
  return impl_->Close();
}

bool qvofstream::IsOpen() const { return impl_ && impl_->file != nullptr; }

qvofstream& qvofstream::operator<<(std::string_view text) {
  if (!impl_ || !impl_->file) return *this;
  while (!text.empty()) {
    const std::size_t length = std::min<std::size_t>(text.size(), std::size_t{1} << 30);
    if (gzwrite(impl_->file, text.data(), static_cast<unsigned int>(length)) <= 0) {
      impl_->Fail("could not be written: " + ErrnoText());
      break;
    }
    text.remove_prefix(length);
  }
  return *this;
}

bool qvofstream::HasError() const { return impl_ && !impl_->error.empty(); }
const std::string& qvofstream::GetErrorText() const {
  static const std::string none;
  return impl_ ? impl_->error : none;
}

}  // namespace QVPlatform
