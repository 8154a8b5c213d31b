#include "platform/chem/smiles.h"

#include <GraphMol/MolOps.h>
#include <GraphMol/SmilesParse/SmilesParse.h>
#include <GraphMol/SmilesParse/SmilesWrite.h>

#include <array>
#include <cctype>
#include <memory>
#include <utility>

#include "platform/chem/internal/rdkit_mol.h"
#include "platform/system/text.h"

namespace QVChem {

namespace {

/// Whether the letter at a place outside of brackets belongs to an atom symbol.
bool IsAtomLetter(std::string_view smiles, std::size_t i) {
  constexpr std::string_view kOrganicSubset = "BCNOPSFIbcnops";
  if (kOrganicSubset.find(smiles[i]) != std::string_view::npos) return true;
  const std::string_view pair = i == 0 ? std::string_view() : smiles.substr(i - 1, 2);
  return pair == "Cl" || pair == "Br";
}

/// \return what is wrong with the brackets, parentheses, ring closures and atoms of a text that is
/// no SMILES, with the position counted from 1; a general text when they are sound.
std::string Diagnose(std::string_view smiles) {
  std::array<std::size_t, 100> openRings{};
  std::vector<std::size_t> branches;
  std::size_t bracket = 0;
  for (std::size_t i = 0; i < smiles.size(); ++i) {
    const char c = smiles[i];
    const auto at = static_cast<int>(i + 1);
    if (bracket != 0) {
      if (c == '[') return QVSystem::QVFormat("'[' inside a bracket at character %d", at);
      if (c == ']') bracket = 0;
      continue;
    }
    if (c == '[') bracket = i + 1;
    if (c == ']') return QVSystem::QVFormat("']' without '[' at character %d", at);
    if (std::isalpha(static_cast<unsigned char>(c)) != 0 && !IsAtomLetter(smiles, i))
      return QVSystem::QVFormat("unknown atom '%c' at character %d", c, at);
    if (c == '(') branches.push_back(i + 1);
    if (c == ')') {
      if (branches.empty()) return QVSystem::QVFormat("')' without '(' at character %d", at);
      branches.pop_back();
    }
    std::size_t ring = openRings.size();
    if (c >= '0' && c <= '9') ring = static_cast<std::size_t>(c - '0');
    if (c == '%' && i + 2 < smiles.size()) {
      unsigned int number = 0;
      if (QVSystem::QVStringToNumber(smiles.substr(i + 1, 2), number)) ring = number;
      i += 2;
    }
    if (ring < openRings.size())
      openRings[ring] = openRings[ring] == 0 ? static_cast<std::size_t>(at) : 0;
  }
  if (bracket != 0)
    return QVSystem::QVFormat("unclosed '[' at character %d", static_cast<int>(bracket));
  if (!branches.empty())
    return QVSystem::QVFormat("unclosed '(' at character %d", static_cast<int>(branches.back()));
  for (std::size_t ring = 0; ring < openRings.size(); ++ring)
    if (openRings[ring] != 0)
      return QVSystem::QVFormat("unclosed ring %d at character %d", static_cast<int>(ring),
                                static_cast<int>(openRings[ring]));
  return "not a SMILES";
}

/// \return the text of the first byte that no SMILES has, empty when there is none.
std::string FindForeignCharacter(std::string_view smiles) {
  for (std::size_t i = 0; i < smiles.size(); ++i) {
    const auto byte = static_cast<unsigned char>(smiles[i]);
    if (byte <= ' ' || byte > '~')
      return QVSystem::QVFormat("character %d is %s (0x%02X)", static_cast<int>(i + 1),
                                byte == ' ' ? "a blank" : "not allowed", byte);
  }
  return {};
}

/// Perceives what RDKit's parser would, except which unmarked centres could have stereochemistry:
/// nothing here asks for that, and it is a quarter of the work.
std::unique_ptr<RDKit::RWMol> Parse(std::string_view smiles, bool suppressHydrogens) {
  RDKit::SmilesParserParams params;
  params.allowCXSMILES = false;
  params.parseName = false;
  params.sanitize = false;
  params.removeHs = false;
  std::unique_ptr<RDKit::RWMol> mol(RDKit::SmilesToMol(std::string(smiles), params));
  if (!mol || mol->getNumAtoms() == 0) return nullptr;
  if (suppressHydrogens)
    RDKit::MolOps::removeHs(*mol, /*implicitOnly=*/false, /*updateExplicitCount=*/true);
  else
    RDKit::MolOps::sanitizeMol(*mol);
  RDKit::MolOps::assignStereochemistry(*mol, /*cleanIt=*/true, /*force=*/true);
  return mol;
}

}  // namespace

bool QVParseSmiles(QVMolBase& mol, std::string_view smiles, std::string& error,
                   const QVMolParseOptions& options) {
  mol.Clear();
  error = smiles.empty() ? "empty SMILES" : FindForeignCharacter(smiles);
  if (!error.empty()) return false;
  try {
    std::unique_ptr<RDKit::RWMol> rdkit = Parse(smiles, options.suppressHydrogens);
    if (rdkit)
      Internal::SetFromRDKit(mol, std::move(rdkit));
    else
      error = Diagnose(smiles);
  } catch (...) {
    error = Internal::GetTextOfCurrentException();
  }
  return error.empty();
}

bool QVParseSmiles(QVMolBase& mol, std::string_view smiles) {
  std::string error;
  return QVParseSmiles(mol, smiles, error);
}

std::string QVCreateSmiles(const QVMolBase& mol, const QVSmilesOptions& options) {
  if (mol.IsEmpty()) return {};
  RDKit::SmilesWriteParams params;
  params.canonical = options.canonical;
  params.doIsomericSmiles = options.stereo;
  // Writing caches ranks in the molecule, so it works on a copy.
  return RDKit::MolToSmiles(RDKit::ROMol(Internal::GetRDKitMol(mol)), params);
}

}  // namespace QVChem
