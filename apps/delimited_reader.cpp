#include "apps/delimited_reader.h"

#include <algorithm>

#include "apps/commands.h"
#include "platform/system/text.h"

namespace QVApps {

namespace {

/// Splits the text of a row; text that ends inside quotes needs the next line of the file.
class RowSplitter {
 public:
  RowSplitter(char separator, std::vector<std::string>& fields)
      : separator_(separator), fields_(fields) {
    fields_.clear();
  }

  /// \return whether the row is complete.
  bool Add(std::string_view line) {
    for (std::size_t i = 0; i < line.size(); ++i) {
      const char c = line[i];
      if (inQuotes_) {
        if (c != '"') {
          field_.push_back(c);
        } else if (i + 1 < line.size() && line[i + 1] == '"') {
          field_.push_back(line[i++]);
        } else {
          inQuotes_ = false;
        }
      } else if (c == '"' && QVSystem::QVStripWhiteSpace(field_).empty()) {
        field_.clear();
        inQuotes_ = quoted_ = true;
      } else if (c == separator_) {
        EndField();
      } else if (!quoted_ || QVSystem::QVStripWhiteSpace(line.substr(i, 1)).size() == 1) {
        field_.push_back(c);
      }
    }
    if (inQuotes_) {
      field_.push_back('\n');
      return false;
    }
    EndField();
    return true;
  }

 private:
  void EndField() {
    fields_.push_back(quoted_ ? field_ : std::string(QVSystem::QVStripWhiteSpace(field_)));
    field_.clear();
    quoted_ = false;
  }

  char separator_;
  std::vector<std::string>& fields_;
  std::string field_;
  bool inQuotes_ = false;
  bool quoted_ = false;
};

std::string_view WithoutByteOrderMark(std::string_view line) {
  constexpr std::string_view kMark = "\xEF\xBB\xBF";
  return line.substr(0, kMark.size()) == kMark ? line.substr(kMark.size()) : line;
}

}  // namespace

std::string ListNames(const std::vector<std::string>& names) {
  constexpr std::size_t kShown = 20;
  std::string text;
  for (std::size_t i = 0; i < names.size() && i < kShown; ++i)
    text += (i == 0 ? "'" : ", '") + names[i] + "'";
  if (names.size() > kShown) text += " and " + std::to_string(names.size() - kShown) + " more";
  return text.empty() ? "none" : text;
}

DelimitedReader::DelimitedReader(const std::string& path, char separator)
    : name_(path == "-" ? "standard input" : path), separator_(separator) {
  const bool opened = path == "-" ? in_.OpenStandardInput() : in_.open(path);
  if (!opened) throw Failure(in_.GetErrorText());
  if (!ReadRow(columns_)) throw Failure(name_ + ": empty; a table begins with a header line");
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    if (columns_[i].empty())
      throw Failure(name_ + ": column " + std::to_string(i + 1) + " of the header has no name");
    if (std::find(columns_.begin(), columns_.begin() + static_cast<std::ptrdiff_t>(i),
                  columns_[i]) != columns_.begin() + static_cast<std::ptrdiff_t>(i))
      throw Failure(name_ + ": the header has two columns '" + columns_[i] + "'");
  }
}

std::optional<std::size_t> DelimitedReader::FindColumn(std::string_view name) const {
  const auto exact = std::find(columns_.begin(), columns_.end(), name);
  if (exact != columns_.end()) return static_cast<std::size_t>(exact - columns_.begin());
  const std::string lower = QVSystem::QVToLower(name);
  for (std::size_t i = 0; i < columns_.size(); ++i)
    if (QVSystem::QVToLower(columns_[i]) == lower) return i;
  return std::nullopt;
}

std::size_t DelimitedReader::RequireColumn(std::string_view name) const {
  if (const auto column = FindColumn(name)) return *column;
  throw Failure(name_ + ": no column '" + std::string(name) + "'; the columns are " +
                ListNames(columns_));
}

bool DelimitedReader::Next(std::vector<std::string>& fields) { return ReadRow(fields); }

bool DelimitedReader::ReadRow(std::vector<std::string>& fields) {
  RowSplitter splitter(separator_, fields);
  bool complete = true;
  for (std::string line; in_.getline(line);) {
    const bool isFirstOfRow = complete;
    if (isFirstOfRow && QVSystem::QVStripWhiteSpace(line).empty()) continue;
    if (isFirstOfRow) rowLine_ = in_.GetLineNumber();
    complete = splitter.Add(in_.GetLineNumber() == 1 ? WithoutByteOrderMark(line) : line);
    if (complete) return true;
  }
  if (in_.HasError()) throw Failure(in_.GetErrorText());
  if (!complete)
    throw Failure(name_ + ": line " + std::to_string(rowLine_) + ": a quote is not closed");
  return false;
}

}  // namespace QVApps
