/// \file
/// \brief What the fingerprints read from a molecule: typed heavy atoms and bonds in flat arrays.
#ifndef QV_PLATFORM_LIKENESS_INTERNAL_MOL_GRAPH_H
#define QV_PLATFORM_LIKENESS_INTERNAL_MOL_GRAPH_H

#include <cstdint>
#include <vector>

namespace RDKit {
class ROMol;
}

namespace QVLikeness {

/// The heavy atoms of a molecule in their order, and the bonds between them. Hydrogens stand as
/// counts in the types of their neighbours, so it makes no difference whether they are atoms.
struct MolGraph {
  struct Neighbor {
    std::uint32_t atom;
    std::uint64_t bondType;
  };

  /// An atom's type at the two levels of detail, as well mixed 64-bit codes.
  struct AtomType {
    std::uint64_t element;
    std::uint64_t shell;
  };

  std::uint32_t GetNumAtoms() const { return static_cast<std::uint32_t>(atomTypes.size()); }
  const Neighbor* Begin(std::uint32_t atom) const { return neighbors.data() + offsets[atom]; }
  const Neighbor* End(std::uint32_t atom) const { return neighbors.data() + offsets[atom + 1]; }

  std::vector<AtomType> atomTypes;
  /// neighbors[offsets[a] .. offsets[a + 1]) are those of atom a.
  std::vector<std::uint32_t> offsets;
  std::vector<Neighbor> neighbors;
  /// For each atom of the molecule its number here, kHydrogen for a hydrogen.
  std::vector<std::uint32_t> heavyIndices;

  static constexpr std::uint32_t kHydrogen = 0xffffffffU;
};

/// Scrambles all bits of a code; one-to-one.
/// Source: the finaliser of G. Steele, D. Lea, C. Flood, "Fast splittable pseudorandom number
/// generators", OOPSLA 2014.
constexpr std::uint64_t MixBits(std::uint64_t x) {
  x += 0x9e3779b97f4a7c15ULL;
  x = (x ^ (x >> 30)) * 0xbf58476d1ce4e5b9ULL;
  x = (x ^ (x >> 27)) * 0x94d049bb133111ebULL;
  return x ^ (x >> 31);
}

/// An atom's shell type holds its element, its valence shell (bonded heavy atoms and hydrogens,
/// lone pairs, charge), its aromaticity and its being in a ring; a bond's type its order. With
/// `stereo` the R and S of an atom belong to its shell and the E and Z of a bond to its type.
MolGraph MakeMolGraph(const RDKit::ROMol& mol, bool stereo);

}  // namespace QVLikeness

#endif  // QV_PLATFORM_LIKENESS_INTERNAL_MOL_GRAPH_H
