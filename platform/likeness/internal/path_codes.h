/// \file
/// \brief The codes of the simple bond paths of a molecule.
#ifndef QV_PLATFORM_LIKENESS_INTERNAL_PATH_CODES_H
#define QV_PLATFORM_LIKENESS_INTERNAL_PATH_CODES_H

#include <cstdint>
#include <vector>

#include "platform/likeness/internal/mol_graph.h"

namespace QVLikeness {

/// Which paths are enumerated, lengths in bonds, and how often each is listed.
struct PathLimits {
  std::uint32_t minLength;
  std::uint32_t maxLength;
  bool outwards;  // only shortest paths: each step leads farther from the start
  bool byLength;  // once for each of its atoms
};

/// The codes of the paths of a molecule, the same from either end: each path at each of the two
/// levels of detail.
std::vector<std::uint64_t> GetPathCodes(const MolGraph& graph, const PathLimits& limits);

/// The paths that start at an atom.
std::vector<std::uint64_t> GetPathCodesFrom(const MolGraph& graph, const PathLimits& limits,
                                            std::uint32_t atom);

/// The paths that start with a bond, from either of its atoms; the bond alone counts once.
std::vector<std::uint64_t> GetPathCodesFrom(const MolGraph& graph, const PathLimits& limits,
                                            std::uint32_t begin, std::uint32_t end);

/// Sorts codes, whose bits are well mixed.
void SortPathCodes(std::vector<std::uint64_t>& codes);

}  // namespace QVLikeness

#endif  // QV_PLATFORM_LIKENESS_INTERNAL_PATH_CODES_H
