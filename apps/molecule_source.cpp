#include "apps/molecule_source.h"

#include <algorithm>
#include <set>
#include <unordered_map>
#include <utility>

#include "apps/commands.h"
#include "apps/delimited_reader.h"
#include "apps/number_field.h"
#include "platform/chem/mol_io.h"
#include "platform/system/text.h"

namespace QVApps {

namespace {

/// The columns that are looked for when the user names none.
constexpr const char* kSmilesColumns[] = {"smiles", "canonical_smiles"};
constexpr const char* kIdColumns[] = {"id", "name", "title", "compound", "compound_id", "molecule"};

MoleculeFileFormat GetFormatByExtension(const std::string& path) {
  if (path == "-") return MoleculeFileFormat::Smiles;
  switch (QVChem::QVGetMolFormat(path)) {
    case QVChem::QVMolFormat::Smiles:
      return MoleculeFileFormat::Smiles;
    case QVChem::QVMolFormat::SDF:
      return MoleculeFileFormat::SDF;
    case QVChem::QVMolFormat::Unknown:
      break;
  }
  std::string name = QVSystem::QVToLower(path);
  const auto hasExtension = [&](const std::string& extension) {
    return name.size() > extension.size() &&
           name.compare(name.size() - extension.size(), extension.size(), extension) == 0;
  };
  if (hasExtension(".gz")) name.resize(name.size() - 3);
  if (hasExtension(".csv")) return MoleculeFileFormat::CSV;
  if (hasExtension(".tsv")) return MoleculeFileFormat::TSV;
  return MoleculeFileFormat::ByExtension;
}

char GetSeparator(MoleculeFileFormat format) {
  return format == MoleculeFileFormat::TSV ? '\t' : ',';
}

std::string AtLine(const std::string& file, std::size_t line) {
  return file + ": line " + std::to_string(line);
}

QVChem::QVMolParseOptions ParseOptions() {
  QVChem::QVMolParseOptions options;
  options.suppressHydrogens = true;
  return options;
}

}  // namespace

// ---- the formats

class MoleculeSource::Backend {
 public:
  virtual ~Backend() = default;
  /// Fills all but the value. \return false at the end.
  virtual bool Read(MoleculeRecord& record) = 0;
  /// Whether the file is known to have no such column or tag; an SD file is known at its end.
  virtual bool LacksColumn(const std::string& name) const = 0;
  /// What there is instead, for a message.
  virtual std::string DescribeColumns() const = 0;
};

namespace {

/// SMILES and SD files.
class ReaderBackend : public MoleculeSource::Backend {
 public:
  ReaderBackend(const std::string& path, QVChem::QVMolFormat format, std::string idColumn)
      : format_(format), idColumn_(std::move(idColumn)), reader_(ReaderOptions()) {
    const bool opened =
        path == "-" ? reader_.OpenStandardInput(format) : reader_.open(path, format);
    if (!opened) throw Failure(reader_.GetErrorText());
  }

  bool Read(MoleculeRecord& record) override {
    const QVChem::QVReadStatus status = reader_.Read(record.mol);
    if (reader_.HasError()) throw Failure(reader_.GetErrorText());
    atEnd_ = status == QVChem::QVReadStatus::End;
    if (atEnd_) return false;
    record.number = reader_.GetRecordNumber();
    record.line = reader_.GetLineNumber();
    record.smiles = reader_.GetSmiles();
    record.error = reader_.GetBadRecordText();
    record.id = idColumn_.empty() ? record.mol.GetTitle() : record.mol.GetSDData(idColumn_);
    for (const QVChem::QVSDDataPair& pair : record.mol.GetSDDataPairs()) tags_.insert(pair.tag);
    return true;
  }

  bool LacksColumn(const std::string& name) const override {
    return atEnd_ && tags_.count(name) == 0;
  }

  std::string DescribeColumns() const override {
    if (format_ == QVChem::QVMolFormat::Smiles && tags_.empty())
      return "it has no header line that names columns; begin it with one like \"SMILES Name "
             "Value\", or give the values in a table (--values)";
    return "the tags are " + ListNames({tags_.begin(), tags_.end()});
  }

 private:
  static QVChem::QVMolReadOptions ReaderOptions() {
    QVChem::QVMolReadOptions options;
    options.parse = ParseOptions();
    options.badRecords = QVChem::QVBadRecords::Return;
    return options;
  }

  QVChem::QVMolFormat format_;
  std::string idColumn_;
  QVChem::QVMolReader reader_;
  std::set<std::string> tags_;
  bool atEnd_ = false;
};

/// Tables with a SMILES column.
class TableBackend : public MoleculeSource::Backend {
 public:
  TableBackend(const std::string& path, char separator, const MoleculeSourceOptions& options)
      : reader_(path, separator),
        smilesColumn_(FindSmilesColumn(options.smilesColumn)),
        idColumn_(FindIdColumn(options.idColumn)) {}

  bool Read(MoleculeRecord& record) override {
    if (!reader_.Next(fields_)) return false;
    record.number = ++numRecords_;
    record.line = reader_.GetLineNumber();
    record.smiles = smilesColumn_ < fields_.size() ? fields_[smilesColumn_] : std::string();
    record.id = idColumn_ && *idColumn_ < fields_.size() ? fields_[*idColumn_] : std::string();
    record.error.clear();
    const std::size_t numColumns = reader_.GetColumns().size();
    if (fields_.size() == numColumns)
      QVChem::QVParseSmiles(record.mol, record.smiles, record.error, ParseOptions());
    else
      record.error = QVSystem::QVFormat("%zu fields where the header has %zu columns",
                                        fields_.size(), numColumns);
    if (!record.error.empty()) record.mol.Clear();
    record.mol.SetTitle(record.id);
    for (std::size_t i = 0; i < std::min(fields_.size(), numColumns); ++i)
      if (i != smilesColumn_ && !fields_[i].empty())
        record.mol.SetSDData(reader_.GetColumns()[i], fields_[i]);
    return true;
  }

  bool LacksColumn(const std::string& name) const override {
    const auto& columns = reader_.GetColumns();
    return std::find(columns.begin(), columns.end(), name) == columns.end();
  }

  std::string DescribeColumns() const override {
    return "the columns are " + ListNames(reader_.GetColumns());
  }

 private:
  std::size_t FindSmilesColumn(const std::string& name) const {
    if (!name.empty()) return reader_.RequireColumn(name);
    for (const char* const usual : kSmilesColumns)
      if (const auto column = reader_.FindColumn(usual)) return *column;
    throw Failure(reader_.GetName() + ": no column 'smiles'; name one of " +
                  ListNames(reader_.GetColumns()) + " with --smiles-column");
  }

  std::optional<std::size_t> FindIdColumn(const std::string& name) const {
    if (!name.empty()) return reader_.RequireColumn(name);
    for (const char* const usual : kIdColumns)
      if (const auto column = reader_.FindColumn(usual)) return column;
    return std::nullopt;
  }

  DelimitedReader reader_;
  std::size_t smilesColumn_;
  std::optional<std::size_t> idColumn_;
  std::vector<std::string> fields_;
  std::size_t numRecords_ = 0;
};

std::unique_ptr<MoleculeSource::Backend> OpenBackend(const std::string& path,
                                                     const MoleculeSourceOptions& options) {
  using QVChem::QVMolFormat;
  const MoleculeFileFormat format = options.format == MoleculeFileFormat::ByExtension
                                        ? GetFormatByExtension(path)
                                        : options.format;
  switch (format) {
    case MoleculeFileFormat::Smiles:
      return std::make_unique<ReaderBackend>(path, QVMolFormat::Smiles, options.idColumn);
    case MoleculeFileFormat::SDF:
      return std::make_unique<ReaderBackend>(path, QVMolFormat::SDF, options.idColumn);
    case MoleculeFileFormat::CSV:
    case MoleculeFileFormat::TSV:
      return std::make_unique<TableBackend>(path, GetSeparator(format), options);
    case MoleculeFileFormat::ByExtension:
      break;
  }
  throw Failure(path + ": a file of molecules is named .sdf, .smi, .csv or .tsv, each also .gz");
}

}  // namespace

// ---- values from a table of their own

class MoleculeSource::Values {
 public:
  Values(const MoleculeSourceOptions& options)
      : reader_(options.valuesFile, GetSeparator(GetFormatByExtension(options.valuesFile))) {
    const auto idColumn =
        options.idColumn.empty() ? std::nullopt : reader_.FindColumn(options.idColumn);
    const std::size_t id = idColumn.value_or(0);
    const std::size_t value = FindValueColumn(options.valueName);
    for (std::vector<std::string> fields; reader_.Next(fields);) {
      if (fields.size() != reader_.GetColumns().size())
        throw Failure(QVSystem::QVFormat("%s: %zu fields where the header has %zu columns",
                                         AtLine(GetName(), GetLine()).c_str(), fields.size(),
                                         reader_.GetColumns().size()));
      Add(fields[id], fields[value]);
    }
  }

  struct Entry {
    std::string text;
    std::size_t line;
    bool used = false;
  };

  /// \return the entry of an identifier, which counts as used now; null when there is none.
  const Entry* Find(const std::string& id) {
    const auto entry = entries_.find(id);
    if (entry == entries_.end()) return nullptr;
    numUsed_ += entry->second.used ? 0 : 1;
    entry->second.used = true;
    return &entry->second;
  }

  std::size_t GetNumUnused() const { return entries_.size() - numUsed_; }
  const std::string& GetName() const { return reader_.GetName(); }

 private:
  std::size_t GetLine() const { return reader_.GetLineNumber(); }

  std::size_t FindValueColumn(const std::string& name) const {
    if (!name.empty()) return reader_.RequireColumn(name);
    if (reader_.GetColumns().size() > 1) return 1;
    throw Failure(GetName() + ": needs a column of identifiers and one of values");
  }

  void Add(const std::string& id, const std::string& text) {
    const auto [entry, isNew] = entries_.emplace(id, Entry{text, GetLine()});
    if (!isNew && entry->second.text != text)
      throw Failure(AtLine(GetName(), GetLine()) + ": another value of '" + id +
                    "' stands on line " + std::to_string(entry->second.line));
  }

  DelimitedReader reader_;
  std::unordered_map<std::string, Entry> entries_;
  std::size_t numUsed_ = 0;
};

// ---- the source

MoleculeSource::MoleculeSource(const std::string& path, MoleculeSourceOptions options)
    : options_(std::move(options)),
      name_(path == "-" ? "standard input" : path),
      backend_(OpenBackend(path, options_)),
      values_(options_.valuesFile.empty() ? nullptr : std::make_unique<Values>(options_)) {
  CheckValueColumn();
}
MoleculeSource::MoleculeSource(MoleculeSource&& other) noexcept = default;
MoleculeSource& MoleculeSource::operator=(MoleculeSource&& other) noexcept = default;
MoleculeSource::~MoleculeSource() = default;

bool MoleculeSource::Next(MoleculeRecord& record) {
  record.value.reset();
  record.valueText.clear();
  if (!backend_->Read(record)) {
    CheckEnd();
    return false;
  }
  if (record.id.empty()) record.id = "record " + std::to_string(record.number);
  ReadValue(record);
  numMolecules_ += record.error.empty() ? 1 : 0;
  numValues_ += record.value ? 1 : 0;
  return true;
}

void MoleculeSource::ReadValue(MoleculeRecord& record) {
  std::string place = AtLine(name_, record.line);
  if (values_) {
    const Values::Entry* const entry = values_->Find(record.id);
    if (!entry) return;
    record.valueText = entry->text;
    place = AtLine(values_->GetName(), entry->line);
  } else if (!options_.valueName.empty()) {
    record.valueText = record.mol.GetSDData(options_.valueName);
  }
  double value;
  const std::string fault = ReadNumber(record.valueText, value);
  if (fault.empty())
    record.value = value;
  else if (!record.valueText.empty() && options_.valueRequired)
    throw Failure(place + ": the value '" + Shorten(record.valueText) + "' of '" + record.id +
                  "' " + fault);
}

void MoleculeSource::CheckValueColumn() const {
  if (options_.valueRequired && !values_ && backend_->LacksColumn(options_.valueName))
    throw Failure(name_ + ": no value '" + options_.valueName + "'; " +
                  backend_->DescribeColumns());
}

void MoleculeSource::CheckEnd() const {
  if (!options_.valueRequired) return;
  if (numMolecules_ == 0) throw Failure(name_ + ": no molecule could be read");
  if (numValues_ > 0) return;
  if (values_)
    throw Failure(values_->GetName() + ": no identifier is that of a molecule of " + name_);
  CheckValueColumn();
  throw Failure(name_ + ": no molecule has a value '" + options_.valueName + "'");
}

std::string MoleculeSource::Locate(const MoleculeRecord& record) const {
  return QVSystem::QVFormat("%s: record %zu (line %zu)", name_.c_str(), record.number, record.line);
}

std::size_t MoleculeSource::GetNumUnusedValues() const {
  return values_ ? values_->GetNumUnused() : 0;
}

std::string GetSmilesOf(const MoleculeRecord& record) {
  return record.smiles.empty() ? QVChem::QVCreateSmiles(record.mol) : record.smiles;
}

}  // namespace QVApps
