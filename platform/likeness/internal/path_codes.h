/// \file
/// \brief The codes of the simple bond paths of a molecule.
#ifndef QV_PLATFORM_LIKENESS_INTERNAL_PATH_CODES_H
#define QV_PLATFORM_LIKENESS_INTERNAL_PATH_CODES_H

#include <cstdint>
#include <vector>

#include "platform/likeness/internal/mol_graph.h"

namespace QVLikeness {

/// Which paths are enumerated; lengths in bonds.
struct PathLimits {
  std::uint32_t minLength;
  std::uint32_t maxLength;
  bool outwards;  // only shortest paths: each step leads farther from the start
};

/// A path at one level of detail by its code, the same from either end, and its number of atoms.
struct PathCode {
  std::uint64_t code;
  std::uint32_t numAtoms;
};

/// Each path of the molecule, once at each level of detail.
std::vector<PathCode> GetPathCodes(const MolGraph& graph, const PathLimits& limits);

/// The paths that start at an atom.
std::vector<PathCode> GetPathCodesFrom(const MolGraph& graph, const PathLimits& limits,
                                       std::uint32_t atom);

/// The paths that start with a bond, from either of its atoms; the bond alone counts once.
std::vector<PathCode> GetPathCodesFrom(const MolGraph& graph, const PathLimits& limits,
                                       std::uint32_t begin, std::uint32_t end);

}  // namespace QVLikeness

#endif  // QV_PLATFORM_LIKENESS_INTERNAL_PATH_CODES_H
