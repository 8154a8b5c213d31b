#include <GraphMol/Depictor/RDDepictor.h>
#include <GraphMol/FileParsers/FileParsers.h>

#include <algorithm>
#include <memory>
#include <utility>

#include "platform/chem/internal/rdkit_mol.h"
#include "platform/chem/mol_io.h"
#include "platform/system/text.h"

namespace QVChem {

namespace {

/// RDKit counts lines from the start of the block ("... on line 4"); a reader wants the file's.
std::string ShiftLineNumber(const std::string& text, std::size_t firstLine) {
  constexpr std::string_view kMark = " line";
  const std::size_t mark = text.rfind(kMark);
  if (mark == std::string::npos) return text;
  const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
  std::size_t start = mark + kMark.size();
  if (start < text.size() && text[start] == ' ') ++start;
  std::size_t end = start;
  while (end < text.size() && isDigit(text[end])) ++end;
  unsigned long line = 0;
  if (!QVSystem::QVStringToNumber(std::string_view(text).substr(start, end - start), line))
    return text;
  return text.substr(0, mark) + " line " + std::to_string(line + firstLine - 1) + text.substr(end);
}

std::string FirstLine(const std::string& block) {
  return std::string(QVSystem::QVStripWhiteSpace(block.substr(0, block.find('\n'))));
}

}  // namespace

bool QVParseMolBlock(QVMolBase& mol, const std::string& block, std::string& error,
                     const QVMolParseOptions& options, std::size_t firstLine) {
  mol.Clear();
  mol.SetTitle(FirstLine(block));
  error.clear();
  try {
    constexpr bool sanitize = true;
    std::unique_ptr<RDKit::RWMol> rdkit(
        RDKit::MolBlockToMol(block, sanitize, options.suppressHydrogens));
    if (rdkit && rdkit->getNumAtoms() > 0)
      Internal::SetFromRDKit(mol, std::move(rdkit));
    else
      error = rdkit ? "the molecule has no atoms" : "not a mol block";
  } catch (...) {
    error = ShiftLineNumber(Internal::GetTextOfCurrentException(), firstLine);
  }
  return error.empty();
}

std::string QVCreateMolBlock(const QVMolBase& mol, std::string& error) {
  error.clear();
  if (mol.IsEmpty()) {
    error = "the molecule has no atoms";
    return {};
  }
  try {
    const std::unique_ptr<RDKit::RWMol> rdkit = Internal::CopyToRDKit(mol);
    std::string title = mol.GetTitle();
    std::replace(title.begin(), title.end(), '\n', ' ');
    rdkit->setProp(RDKit::common_properties::_Name, title);
    if (!mol.HasCoordinates()) RDDepict::compute2DCoords(*rdkit);
    return RDKit::MolToMolBlock(*rdkit);
  } catch (...) {
    error = Internal::GetTextOfCurrentException();
  }
  return {};
}

}  // namespace QVChem
