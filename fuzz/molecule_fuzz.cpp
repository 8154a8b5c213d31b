// Bytes as a file of molecules, SMILES or SD by the first of them, read record by record up to
// their fingerprints.
#include "fuzz/fuzz_support.h"
#include "platform/chem/mol.h"
#include "platform/chem/mol_io.h"
#include "platform/chem/smiles.h"
#include "platform/likeness/vsepr.h"

namespace {

/// What every molecule does, however strange it is.
void CheckMolecule(QVChem::QVGraphMol& mol, bool stereo) {
  QVLikeness::QVVseprOptions options;
  options.SetStereoAware(stereo);
  const QVLikeness::QVVseprFingerprint fingerprint(mol, options);
  QVFuzz::Require(fingerprint.GetTanimoto(fingerprint) == 1.0, "a molecule is like itself");
  QVFuzz::Require(QVLikeness::QVGetVseprAtomFingerprints(mol, options).size() == mol.GetNumAtoms(),
                  "every atom has a fingerprint");
  const std::string smiles = QVChem::QVCreateSmiles(mol);
  QVFuzz::Require(smiles.empty() == (mol.GetNumAtoms() == 0),
                  "only an empty molecule has no SMILES");
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  QVFuzz::InstallSink();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const unsigned int choice = data[0];
  const QVFuzz::MemoryFile file(data + 1, size - 1);
  QVChem::QVMolReadOptions options;
  options.badRecords = QVChem::QVBadRecords::Return;
  options.parse.suppressHydrogens = (choice & 2u) != 0;
  QVChem::QVMolReader reader(options);
  reader.open(file.GetPath(),
              (choice & 1u) != 0 ? QVChem::QVMolFormat::SDF : QVChem::QVMolFormat::Smiles);
  QVChem::QVGraphMol mol;
  for (;;) {
    const QVChem::QVReadStatus status = reader.Read(mol);
    if (status == QVChem::QVReadStatus::End) return 0;
    if (status == QVChem::QVReadStatus::Molecule)
      CheckMolecule(mol, (choice & 4u) != 0);
    else
      QVFuzz::Require(!reader.GetBadRecordText().empty(), "a bad record has a reason");
  }
}
