#include <utility>

#include "platform/chem/mol_io.h"
#include "platform/system/file_stream.h"
#include "platform/system/text.h"

namespace QVChem {

namespace {

/// A data item; an empty line would end its text.
std::string FormatDataItem(const QVSDDataPair& item) {
  std::string text = ">  <" + item.tag + ">\n";
  for (const std::string& line : QVSystem::QVStringTokenize(item.value, "\r\n"))
    if (!QVSystem::QVStripWhiteSpace(line).empty()) text += line + '\n';
  return text + '\n';
}

std::string FormatSmilesLine(const QVMolBase& mol, std::string& error) {
  std::string text = QVCreateSmiles(mol);
  if (text.empty()) {
    error = "the molecule has no atoms";
    return {};
  }
  for (const std::string& line : QVSystem::QVStringTokenize(mol.GetTitle(), "\r\n"))
    text += ' ' + line;
  return text + '\n';
}

std::string FormatSDRecord(const QVMolBase& mol, std::string& error) {
  std::string text = QVCreateMolBlock(mol, error);
  if (!error.empty()) return {};
  for (const QVSDDataPair& item : mol.GetSDDataPairs()) text += FormatDataItem(item);
  return text + "$$$$\n";
}

/// A record for each conformer, with the title and data of the whole where it has none of its own.
std::string FormatConformers(const QVMCMolBase& mol, std::string& error) {
  std::string text;
  for (unsigned int i = 0; i < mol.GetNumConformers() && error.empty(); ++i) {
    QVGraphMol conformer(mol.GetConformer(i));
    if (conformer.GetTitle().empty()) conformer.SetTitle(mol.GetTitle());
    for (const QVSDDataPair& item : mol.GetSDDataPairs())
      if (!conformer.HasSDData(item.tag)) conformer.SetSDData(item.tag, item.value);
    text += FormatSDRecord(conformer, error);
  }
  return text;
}

}  // namespace

struct QVMolWriter::Impl {
  QVMolFormat format = QVMolFormat::Unknown;
  QVPlatform::qvofstream out;
  std::string path;
  std::string error;

  bool Start(std::string name, QVMolFormat recordFormat, bool opened) {
    path = std::move(name);
    format = recordFormat;
    error = opened ? std::string() : out.GetErrorText();
    return opened;
  }

  std::string Format(const QVMolBase& mol, std::string& reason) const {
    if (format == QVMolFormat::Smiles) return FormatSmilesLine(mol, reason);
    const auto* const many = dynamic_cast<const QVMCMolBase*>(&mol);
    return many && many->GetNumConformers() > 0 ? FormatConformers(*many, reason)
                                                : FormatSDRecord(mol, reason);
  }
};

QVMolWriter::QVMolWriter() : impl_(std::make_unique<Impl>()) {}
QVMolWriter::QVMolWriter(const std::string& path) : QVMolWriter() { open(path); }
QVMolWriter::QVMolWriter(QVMolWriter&& other) noexcept = default;
QVMolWriter& QVMolWriter::operator=(QVMolWriter&& other) noexcept = default;
QVMolWriter::~QVMolWriter() = default;

bool QVMolWriter::open(const std::string& path) { return open(path, QVGetMolFormat(path)); }

bool QVMolWriter::open(const std::string& path, QVMolFormat format) {
  if (format != QVMolFormat::Unknown) return impl_->Start(path, format, impl_->out.open(path));
  impl_->error = path + ": molecules are written to .smi, .smiles, .ism, .sdf, .sd or .mol";
  return false;
}

bool QVMolWriter::OpenStandardOutput(QVMolFormat format) {
  return impl_->Start("standard output", format, impl_->out.OpenStandardOutput());
}

bool QVMolWriter::Write(const QVMolBase& mol) {
  std::string reason;
  const std::string text = impl_->Format(mol, reason);
  if (reason.empty()) {
    impl_->out << text;
    if (impl_->out.IsOpen() && !impl_->out.HasError()) return true;
    reason = impl_->out.HasError() ? impl_->out.GetErrorText() : "no file is open";
  } else {
    reason = impl_->path + ": molecule '" + mol.GetTitle() + "': " + reason;
  }
  if (impl_->error.empty()) impl_->error = reason;
  return false;
}

bool QVMolWriter::close() {
  if (!impl_->out.close() && impl_->error.empty()) impl_->error = impl_->out.GetErrorText();
  return impl_->error.empty();
}

const std::string& QVMolWriter::GetErrorText() const { return impl_->error; }

}  // namespace QVChem
