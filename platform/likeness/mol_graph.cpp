#include "platform/likeness/internal/mol_graph.h"

#include <GraphMol/GraphMol.h>
#include <GraphMol/PeriodicTable.h>

#include <algorithm>
#include <string>

namespace QVLikeness {

namespace {

/// Non-bonding electron pairs in the valence shell; 0 for metals and other shells without a rule.
unsigned int CountLonePairs(const RDKit::Atom& atom) {
  static const RDKit::PeriodicTable* const table = RDKit::PeriodicTable::getTable();
  const int outer = table->getNouterElecs(static_cast<unsigned int>(atom.getAtomicNum()));
  const int free = outer - atom.getFormalCharge() - static_cast<int>(atom.getTotalValence()) -
                   static_cast<int>(atom.getNumRadicalElectrons());
  return static_cast<unsigned int>(std::max(free, 0)) / 2;
}

/// 0 for no assigned configuration, 1 for R, 2 for S, 3 and 4 for r and s.
unsigned int GetConfiguration(const RDKit::Atom& atom) {
  if (atom.getChiralTag() == RDKit::Atom::CHI_UNSPECIFIED) return 0;
  std::string label;
  if (!atom.getPropIfPresent(RDKit::common_properties::_CIPCode, label) || label.size() != 1)
    return 0;
  const std::size_t code = std::string("RSrs").find(label[0]);
  return code == std::string::npos ? 0 : static_cast<unsigned int>(code) + 1;
}

/// Packs small numbers into one word, a field of `width` bits each.
class Packer {
 public:
  Packer& Add(unsigned int value, unsigned int width) {
    word_ = (word_ << width) | (value & ((1U << width) - 1U));
    return *this;
  }
  std::uint64_t GetWord() const { return word_; }

 private:
  std::uint64_t word_ = 0;
};

MolGraph::AtomType GetAtomType(const RDKit::Atom& atom, unsigned int heavyDegree, bool inRing,
                               bool stereo) {
  // Of the neighbours that are atoms, those that are not heavy are hydrogens.
  const unsigned int hydrogens = atom.getTotalNumHs() + atom.getDegree() - heavyDegree;
  const unsigned int element = static_cast<unsigned int>(atom.getAtomicNum());
  Packer packer;
  packer
      .Add(1, 1)  // no shell is a bare element
      .Add(element, 8)
      .Add(heavyDegree, 6)
      .Add(hydrogens, 6)
      .Add(CountLonePairs(atom), 4)
      .Add(static_cast<unsigned int>(atom.getFormalCharge() + 16), 6)
      .Add(atom.getIsAromatic(), 1)
      .Add(inRing, 1)
      .Add(stereo ? GetConfiguration(atom) : 0, 3);
  return {MixBits(element), MixBits(packer.GetWord())};
}

std::uint64_t GetBondType(const RDKit::Bond& bond, bool stereo) {
  Packer packer;
  packer
      .Add(1, 2)  // no word of a bond is that of an atom
      .Add(bond.getIsAromatic() ? RDKit::Bond::AROMATIC : bond.getBondType(), 8)
      .Add(stereo && bond.getStereo() > RDKit::Bond::STEREOANY ? bond.getStereo() : 0, 4);
  return MixBits(~packer.GetWord());
}

}  // namespace

MolGraph MakeMolGraph(const RDKit::ROMol& mol, bool stereo) {
  MolGraph graph;
  const unsigned int numAtoms = mol.getNumAtoms();
  graph.heavyIndices.assign(numAtoms, MolGraph::kHydrogen);
  std::vector<const RDKit::Atom*> atoms;
  atoms.reserve(numAtoms);
  for (const RDKit::Atom* atom : mol.atoms()) {
    if (atom->getAtomicNum() == 1) continue;
    graph.heavyIndices[atom->getIdx()] = static_cast<std::uint32_t>(atoms.size());
    atoms.push_back(atom);
  }

  struct HeavyBond {
    std::uint32_t begin;
    std::uint32_t end;
    std::uint64_t type;
  };
  std::vector<HeavyBond> bonds;
  bonds.reserve(mol.getNumBonds());
  graph.offsets.assign(atoms.size() + 1, 0);
  for (const RDKit::Bond* bond : mol.bonds()) {
    const std::uint32_t begin = graph.heavyIndices[bond->getBeginAtomIdx()];
    const std::uint32_t end = graph.heavyIndices[bond->getEndAtomIdx()];
    if (begin == MolGraph::kHydrogen || end == MolGraph::kHydrogen) continue;
    bonds.push_back({begin, end, GetBondType(*bond, stereo)});
    ++graph.offsets[begin + 1];
    ++graph.offsets[end + 1];
  }
  for (std::size_t i = 1; i < graph.offsets.size(); ++i) graph.offsets[i] += graph.offsets[i - 1];

  std::vector<std::uint32_t> next(graph.offsets.begin(), graph.offsets.end() - 1);
  graph.neighbors.resize(2 * bonds.size());
  for (const HeavyBond& bond : bonds) {
    graph.neighbors[next[bond.begin]++] = {bond.end, bond.type};
    graph.neighbors[next[bond.end]++] = {bond.begin, bond.type};
  }

  const RDKit::RingInfo& rings = *mol.getRingInfo();
  const bool hasRings = rings.isInitialized();
  graph.atomTypes.reserve(atoms.size());
  for (std::size_t i = 0; i < atoms.size(); ++i) {
    const bool inRing = hasRings && rings.numAtomRings(atoms[i]->getIdx()) > 0;
    graph.atomTypes.push_back(
        GetAtomType(*atoms[i], graph.offsets[i + 1] - graph.offsets[i], inRing, stereo));
  }
  return graph;
}

}  // namespace QVLikeness
