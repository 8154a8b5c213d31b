#include "platform/likeness/fingerprint.h"

#include <DataStructs/BitOps.h>
#include <DataStructs/ExplicitBitVect.h>
#include <DataStructs/SparseIntVect.h>
#include <GraphMol/Fingerprints/AtomPairs.h>
#include <GraphMol/Fingerprints/Fingerprints.h>
#include <GraphMol/Fingerprints/MACCS.h>
#include <GraphMol/Fingerprints/MorganFingerprints.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <utility>

#include "platform/chem/internal/rdkit_mol.h"
#include "platform/chem/mol.h"
#include "platform/likeness/internal/mol_graph.h"
#include "platform/system/error_handler.h"
#include "platform/system/text.h"

namespace QVLikeness {

namespace {

constexpr unsigned int kNumBits = 2048;
constexpr unsigned int kCircularRadius = 2;

QVFingerPrint FromBits(unsigned int type, const ExplicitBitVect* made) {
  const std::unique_ptr<const ExplicitBitVect> bits(made);
  std::vector<std::uint64_t> words((bits->getNumBits() + 63) / 64);
  std::vector<int> on;
  bits->getOnBits(on);
  for (const int bit : on)
    words[static_cast<std::size_t>(bit) / 64] |= std::uint64_t{1} << (bit % 64);
  return {type, std::move(words)};
}

template <class Index>
QVFingerPrint FromCounts(unsigned int type, const RDKit::SparseIntVect<Index>* made) {
  const std::unique_ptr<const RDKit::SparseIntVect<Index>> vector(made);
  std::vector<QVFingerPrint::Count> counts;
  for (const auto& [feature, count] : vector->getNonzeroElements()) {
    // Wider codes than 32 bits are hashed down.
    const auto wide = static_cast<std::uint64_t>(feature);
    const auto code = static_cast<std::uint32_t>(sizeof(Index) > 4 ? MixBits(wide) : wide);
    counts.push_back({code, static_cast<std::uint32_t>(count)});
  }
  return {type, std::move(counts)};
}

QVFingerPrint MakePath(const RDKit::ROMol& mol, bool) {
  return FromBits(QVFPType::Path,
                  RDKit::RDKFingerprintMol(mol, 1, 7, kNumBits, 2, true, 0.0, 128, false));
}

QVFingerPrint MakeTree(const RDKit::ROMol& mol, bool) {
  return FromBits(QVFPType::Tree, RDKit::RDKFingerprintMol(mol, 1, 5, kNumBits));
}

QVFingerPrint MakeCircular(const RDKit::ROMol& mol, bool stereo) {
  return FromBits(QVFPType::Circular,
                  RDKit::MorganFingerprints::getFingerprintAsBitVect(mol, kCircularRadius, kNumBits,
                                                                     nullptr, nullptr, stereo));
}

QVFingerPrint MakeCircularCount(const RDKit::ROMol& mol, bool stereo) {
  return FromCounts(QVFPType::CircularCount, RDKit::MorganFingerprints::getFingerprint(
                                                 mol, kCircularRadius, nullptr, nullptr, stereo));
}

QVFingerPrint MakeStructuralKeys(const RDKit::ROMol& mol, bool) {
  return FromBits(QVFPType::StructuralKeys, RDKit::MACCSFingerprints::getFingerprintAsBitVect(mol));
}

QVFingerPrint MakeAtomPair(const RDKit::ROMol& mol, bool stereo) {
  return FromCounts(QVFPType::AtomPair, RDKit::AtomPairs::getAtomPairFingerprint(
                                            mol, nullptr, nullptr, nullptr, stereo));
}

QVFingerPrint MakeTorsion(const RDKit::ROMol& mol, bool stereo) {
  return FromCounts(QVFPType::Torsion, RDKit::AtomPairs::getTopologicalTorsionFingerprint(
                                           mol, 4, nullptr, nullptr, nullptr, stereo));
}

using Maker = QVFingerPrint (*)(const RDKit::ROMol& mol, bool stereo);
constexpr Maker kMakers[QVFPType::Count] = {nullptr,       &MakePath,          &MakeTree,
                                            &MakeCircular, &MakeCircularCount, &MakeStructuralKeys,
                                            &MakeAtomPair, &MakeTorsion};

unsigned int CountCommon(const std::vector<std::uint64_t>& a, const std::vector<std::uint64_t>& b) {
  unsigned int common = 0;
  for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i)
    common += static_cast<unsigned int>(__builtin_popcountll(a[i] & b[i]));
  return common;
}

unsigned int CountCommon(const std::vector<QVFingerPrint::Count>& a,
                         const std::vector<QVFingerPrint::Count>& b) {
  unsigned int common = 0;
  auto i = a.begin();
  auto j = b.begin();
  while (i != a.end() && j != b.end()) {
    if (i->feature == j->feature)
      common += std::min((i++)->count, (j++)->count);
    else
      i->feature < j->feature ? static_cast<void>(++i) : static_cast<void>(++j);
  }
  return common;
}

}  // namespace

namespace QVFPType {
const char* const TypeName[Count] = {"Unknown",       "Path",           "Tree",     "Circular",
                                     "CircularCount", "StructuralKeys", "AtomPair", "Torsion"};
}

unsigned int QVGetFPTypeFromName(const std::string& name) {
  const std::string wanted = QVSystem::QVToLower(name);
  const auto* const found =
      std::find_if(std::begin(QVFPType::TypeName), std::end(QVFPType::TypeName),
                   [&](const char* type) { return QVSystem::QVToLower(type) == wanted; });
  return found == std::end(QVFPType::TypeName)
             ? QVFPType::Unknown
             : static_cast<unsigned int>(found - std::begin(QVFPType::TypeName));
}

QVFingerPrint::QVFingerPrint(unsigned int type, std::vector<std::uint64_t> bits)
    : type_(type), bits_(std::move(bits)) {
  total_ = CountCommon(bits_, bits_);
}

QVFingerPrint::QVFingerPrint(unsigned int type, std::vector<Count> counts)
    : type_(type), counts_(std::move(counts)) {
  std::sort(counts_.begin(), counts_.end(),
            [](const Count& a, const Count& b) { return a.feature < b.feature; });
  total_ = CountCommon(counts_, counts_);
}

bool QVMakeFP(QVFingerPrint& fp, const QVChem::QVMolBase& mol, unsigned int type, bool stereo) {
  if (type >= QVFPType::Count || !kMakers[type] || mol.IsEmpty()) return false;
  fp = kMakers[type](QVChem::Internal::GetRDKitMol(mol), stereo);
  return true;
}

float QVTanimoto(const QVFingerPrint& a, const QVFingerPrint& b) {
  if (a.GetType() != b.GetType()) {
    QVSystem::QVThrow.Error("QVTanimoto, fingerprints of different types (%u, %u)", a.GetType(),
                            b.GetType());
    return 0.0F;
  }
  const unsigned int common =
      CountCommon(a.GetBits(), b.GetBits()) + CountCommon(a.GetCounts(), b.GetCounts());
  const unsigned int united = a.GetTotal() + b.GetTotal() - common;
  return united == 0 ? 1.0F : static_cast<float>(common) / static_cast<float>(united);
}

}  // namespace QVLikeness
