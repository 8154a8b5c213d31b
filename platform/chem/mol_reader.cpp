#include <array>
#include <optional>
#include <utility>

#include "platform/chem/mol_io.h"
#include "platform/system/error_handler.h"
#include "platform/system/file_stream.h"
#include "platform/system/text.h"

namespace QVChem {

namespace {

using QVSystem::QVStripWhiteSpace;

/// A record as it was read.
struct Record {
  QVReadStatus status = QVReadStatus::End;
  QVGraphMol mol;
  std::string error;
  std::string smiles;
  std::size_t number = 0;
  std::size_t line = 0;

  void Start(std::size_t recordNumber, std::size_t lineNumber) {
    status = QVReadStatus::Molecule;
    mol.Clear();
    error.clear();
    smiles.clear();
    number = recordNumber;
    line = lineNumber;
  }
  void Refuse(std::string reason) {
    status = QVReadStatus::BadRecord;
    error = std::move(reason);
  }
};

constexpr std::string_view kNulByte("\0", 1);

bool HasNulByte(std::string_view text) { return text.find(kNulByte) != std::string_view::npos; }

// ---- SMILES files

/// The columns of a SMILES file with a header line.
class SmilesHeader {
 public:
  /// \return whether the line is a header.
  bool Read(std::string_view line) {
    separators_ = line.find('\t') != std::string_view::npos ? "\t" : QVSystem::QVWhiteSpace;
    const std::vector<std::string> names = Split(line);
    if (names.empty() || QVSystem::QVToLower(names[0]) != "smiles") return false;
    names_ = names;
    return true;
  }

  bool IsPresent() const { return !names_.empty(); }
  const std::vector<std::string>& GetNames() const { return names_; }

  /// The fields of a line; between tabs a field may be empty.
  std::vector<std::string> Split(std::string_view line) const {
    if (separators_ != "\t") return QVSystem::QVStringTokenize(line, separators_);
    std::vector<std::string> fields;
    while (true) {
      const std::size_t tab = line.find('\t');
      fields.emplace_back(QVStripWhiteSpace(line.substr(0, tab)));
      if (tab == std::string_view::npos) return fields;
      line.remove_prefix(tab + 1);
    }
  }

 private:
  std::string_view separators_ = QVSystem::QVWhiteSpace;
  std::vector<std::string> names_;
};

/// Title and SD data by column. \return the SMILES.
std::string ReadColumns(Record& record, const SmilesHeader& header, std::string_view line) {
  const std::vector<std::string> fields = header.Split(line);
  const std::vector<std::string>& names = header.GetNames();
  if (fields.size() > names.size())
    record.Refuse(
        QVSystem::QVFormat("%zu columns where the header has %zu", fields.size(), names.size()));
  if (fields.size() > 1) record.mol.SetTitle(fields[1]);
  for (std::size_t i = 2; i < fields.size() && i < names.size(); ++i)
    if (!fields[i].empty()) record.mol.SetSDData(names[i], fields[i]);
  return fields.empty() ? std::string() : fields[0];
}

/// The title is the rest of the line. \return the SMILES.
std::string ReadPlainLine(Record& record, std::string_view line) {
  const std::size_t end = line.find_first_of(QVSystem::QVWhiteSpace);
  if (end != std::string_view::npos)
    record.mol.SetTitle(std::string(QVStripWhiteSpace(line.substr(end))));
  return std::string(line.substr(0, end));
}

void ParseSmilesLine(Record& record, const SmilesHeader& header, std::string_view line,
                     const QVMolParseOptions& options) {
  if (HasNulByte(line)) return record.Refuse("NUL byte");
  record.smiles =
      header.IsPresent() ? ReadColumns(record, header, line) : ReadPlainLine(record, line);
  if (record.status == QVReadStatus::BadRecord) return;
  QVGraphMol parsed;
  std::string error;
  if (!QVParseSmiles(parsed, record.smiles, error, options)) return record.Refuse(error);
  parsed.SetTitle(record.mol.GetTitle());
  for (const QVSDDataPair& pair : record.mol.GetSDDataPairs())
    parsed.SetSDData(pair.tag, pair.value);
  record.mol = std::move(parsed);
}

// ---- SD files

/// The lines of a record, without the line "$$$$".
struct SDRecordText {
  std::string block;  // up to "M  END" or the first data item
  std::vector<QVSDDataPair> data;
  std::size_t nulByteLine = 0;
  bool blockEnded = false;
  bool itemOpen = false;

  void AddLine(const std::string& line, std::size_t lineNumber) {
    if (nulByteLine == 0 && HasNulByte(line)) nulByteLine = lineNumber;
    if (line.empty() || line[0] != '>') {
      if (blockEnded) return AddDataLine(line);
      block.append(line).push_back('\n');
      blockEnded = QVStripWhiteSpace(line) == "M  END";
      return;
    }
    if (itemOpen) return AddDataLine(line);
    blockEnded = itemOpen = true;
    data.push_back({ReadTag(line), {}});
  }

 private:
  void AddDataLine(const std::string& line) {
    if (QVStripWhiteSpace(line).empty()) itemOpen = false;
    if (!itemOpen) return;
    std::string& value = data.back().value;
    if (hasValue_.size() < data.size()) {
      hasValue_.resize(data.size(), false);
    } else {
      value.push_back('\n');
    }
    value.append(line);
  }

  /// ">  <LogP>  (12)" is the tag "LogP"; a header without brackets is the tag itself.
  static std::string ReadTag(std::string_view line) {
    const std::size_t open = line.find('<');
    const std::size_t close = open == std::string_view::npos ? open : line.find('>', open);
    if (close == std::string_view::npos) return std::string(QVStripWhiteSpace(line.substr(1)));
    return std::string(line.substr(open + 1, close - open - 1));
  }

  std::vector<bool> hasValue_;
};

void ParseSDRecord(Record& record, SDRecordText text, const QVMolParseOptions& options) {
  if (text.nulByteLine != 0) {
    record.Refuse(QVSystem::QVFormat("NUL byte on line %zu", text.nulByteLine));
  } else {
    std::string error;
    if (!QVParseMolBlock(record.mol, text.block, error, options, record.line)) record.Refuse(error);
  }
  for (QVSDDataPair& item : text.data)
    if (!HasNulByte(item.tag)) record.mol.SetSDData(item.tag, std::move(item.value));
}

}  // namespace

// ---- the reader

struct QVMolReader::Impl {
  explicit Impl(const QVMolReadOptions& readOptions) : options(readOptions) {}

  QVMolReadOptions options;
  QVMolFormat format = QVMolFormat::Unknown;
  std::string path;
  std::string error;
  QVPlatform::qvifstream in;
  SmilesHeader header;
  bool firstLine = true;
  std::size_t numRecords = 0;
  std::string line;
  Record current;
  std::optional<Record> ahead;

  bool Start(std::string name, QVMolFormat recordFormat, bool opened) {
    path = std::move(name);
    format = recordFormat;
    error = opened ? std::string() : in.GetErrorText();
    header = {};
    firstLine = true;
    numRecords = 0;
    current = {};
    ahead.reset();
    if (opened && format == QVMolFormat::Unknown)
      error = path + ": a file of molecules is named .smi, .smiles, .ism, .sdf, .sd or .mol";
    return error.empty();
  }

  /// Reads a record; a bad one is refused, not reported.
  void ReadRecord(Record& record) {
    record.Start(numRecords + 1, in.GetLineNumber() + 1);
    const bool found = !error.empty()                  ? false
                       : format == QVMolFormat::SDF    ? ReadSDRecord(record)
                       : format == QVMolFormat::Smiles ? ReadSmilesRecord(record)
                                                       : false;
    if (found) {
      ++numRecords;
      return;
    }
    record.Start(0, 0);
    record.status = QVReadStatus::End;
    if (error.empty()) error = in.GetErrorText();
  }

  bool ReadSmilesRecord(Record& record) {
    while (in.getline(line)) {
      const std::string_view text = QVStripWhiteSpace(line);
      if (text.empty() || text[0] == '#') continue;
      if (std::exchange(firstLine, false) && header.Read(text)) continue;
      record.line = in.GetLineNumber();
      // A tab at the end of the line is an empty column, not white space.
      ParseSmilesLine(record, header, header.IsPresent() ? std::string_view(line) : text,
                      options.parse);
      return true;
    }
    return false;
  }

  bool ReadSDRecord(Record& record) {
    SDRecordText text;
    bool anyText = false;
    bool complete = false;
    while (!complete && in.getline(line)) {
      complete = line.compare(0, 4, "$$$$") == 0;
      if (complete) break;
      anyText = anyText || !QVStripWhiteSpace(line).empty();
      text.AddLine(line, in.GetLineNumber());
    }
    // A record that a fault of the file cut is no record; nor are blank lines at the end.
    if (!complete && (in.HasError() || !anyText)) return false;
    ParseSDRecord(record, std::move(text), options.parse);
    return true;
  }

  /// Makes the next record the current one; with QVBadRecords::Skip it is a molecule or the end.
  void Advance() {
    while (true) {
      if (ahead) {
        current = std::move(*ahead);
        ahead.reset();
      } else {
        ReadRecord(current);
      }
      if (current.status != QVReadStatus::BadRecord || options.badRecords == QVBadRecords::Return)
        return;
      QVSystem::QVThrow.Warning("%s: record %zu (line %zu): %s", path.c_str(), current.number,
                                current.line, current.error.c_str());
    }
  }
};

QVMolReader::QVMolReader(const QVMolReadOptions& options)
    : impl_(std::make_unique<Impl>(options)) {}
QVMolReader::QVMolReader(const std::string& path, const QVMolReadOptions& options)
    : QVMolReader(options) {
  open(path);
}
QVMolReader::QVMolReader(QVMolReader&& other) noexcept = default;
QVMolReader& QVMolReader::operator=(QVMolReader&& other) noexcept = default;
QVMolReader::~QVMolReader() = default;

bool QVMolReader::open(const std::string& path) { return open(path, QVGetMolFormat(path)); }

bool QVMolReader::open(const std::string& path, QVMolFormat format) {
  return impl_->Start(path, format, impl_->in.open(path));
}

bool QVMolReader::OpenStandardInput(QVMolFormat format) {
  return impl_->Start("standard input", format, impl_->in.OpenStandardInput());
}

QVReadStatus QVMolReader::Read(QVGraphMol& mol) {
  impl_->Advance();
  mol = std::move(impl_->current.mol);
  impl_->current.mol.Clear();
  return impl_->current.status;
}

QVReadStatus QVMolReader::Read(QVMCMolBase& mol) {
  mol.Clear();
  impl_->Advance();
  const Record& first = impl_->current;
  mol.SetTitle(first.mol.GetTitle());
  if (first.status == QVReadStatus::BadRecord)
    for (const QVSDDataPair& pair : first.mol.GetSDDataPairs()) mol.SetSDData(pair.tag, pair.value);
  if (first.status != QVReadStatus::Molecule) return first.status;
  mol.AddConformer(first.mol);
  while (!mol.GetTitle().empty()) {
    if (!impl_->ahead) impl_->ReadRecord(impl_->ahead.emplace());
    const Record& next = *impl_->ahead;
    if (next.status != QVReadStatus::Molecule || next.mol.GetTitle() != mol.GetTitle() ||
        !mol.AddConformer(next.mol))
      break;
    impl_->ahead.reset();
  }
  return QVReadStatus::Molecule;
}

std::size_t QVMolReader::GetRecordNumber() const { return impl_->current.number; }
std::size_t QVMolReader::GetLineNumber() const { return impl_->current.line; }
const std::string& QVMolReader::GetSmiles() const { return impl_->current.smiles; }
const std::string& QVMolReader::GetBadRecordText() const { return impl_->current.error; }
bool QVMolReader::HasError() const { return !impl_->error.empty(); }
const std::string& QVMolReader::GetErrorText() const { return impl_->error; }

QVMolFormat QVGetMolFormat(std::string_view path) {
  struct Extension {
    std::string_view text;
    QVMolFormat format;
  };
  constexpr std::array<Extension, 6> kExtensions = {{{".smi", QVMolFormat::Smiles},
                                                     {".smiles", QVMolFormat::Smiles},
                                                     {".ism", QVMolFormat::Smiles},
                                                     {".sdf", QVMolFormat::SDF},
                                                     {".sd", QVMolFormat::SDF},
                                                     {".mol", QVMolFormat::SDF}}};
  const std::string name = QVSystem::QVToLower(path);
  const auto endsWith = [](std::string_view text, std::string_view end) {
    return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
  };
  std::string_view bare = name;
  if (endsWith(bare, ".gz")) bare.remove_suffix(3);
  for (const Extension& extension : kExtensions)
    if (endsWith(bare, extension.text)) return extension.format;
  return QVMolFormat::Unknown;
}

}  // namespace QVChem
