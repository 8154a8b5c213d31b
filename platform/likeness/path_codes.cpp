#include "platform/likeness/internal/path_codes.h"

#include <algorithm>
#include <array>
#include <utility>

namespace QVLikeness {

namespace {

constexpr std::uint64_t kBase = 0xd1342543de82ef95ULL;  // odd, so no power of it vanishes
constexpr std::uint32_t kAnyAtom = 0xffffffffU;

/// The hash of a path at one level of detail. The codes x0 x1 ... xn of its atoms and bonds are the
/// coefficients of a polynomial in kBase (mod 2^64), kept for both readings of the path as it
/// grows. The reading with the smaller hash is the canonical one.
struct PathHash {
  std::uint64_t forward;
  std::uint64_t backward;

  /// `factor` is kBase to the number of atoms and bonds so far.
  PathHash Extend(std::uint64_t bond, std::uint64_t atom, std::uint64_t factor) const {
    return {(forward * kBase + bond) * kBase + atom, backward + (bond + atom * kBase) * factor};
  }
  std::uint64_t GetCode(std::uint32_t numAtoms) const {
    return MixBits(std::min(forward, backward) + numAtoms);
  }
};

/// Depth-first walks from one atom at a time.
class PathWalker {
 public:
  PathWalker(const MolGraph& graph, const PathLimits& limits)
      : graph_(graph), limits_(limits), depths_(graph.GetNumAtoms(), kAnyAtom) {}

  /// Records the paths from `start` whose other end is numbered above `endsAbove` (any end for
  /// kAnyAtom), through `second` only unless that is kAnyAtom.
  void Walk(std::uint32_t start, std::uint32_t endsAbove, std::uint32_t second) {
    if (limits_.maxLength < limits_.minLength) return;
    endsAbove_ = endsAbove;
    const MolGraph::AtomType& type = graph_.atomTypes[start];
    const State state{start, 0, {type.element, type.element}, {type.shell, type.shell}, kBase};
    if (limits_.minLength == 0 && second == kAnyAtom) Record(state);
    if (limits_.maxLength == 0) return;
    if (limits_.outwards)
      FindDepths(start);
    else
      depths_[start] = 0;
    Extend(state, second);
    if (!limits_.outwards) depths_[start] = kAnyAtom;
  }

  std::vector<std::uint64_t>& GetCodes() { return codes_; }

 private:
  struct State {
    std::uint32_t atom;
    std::uint32_t length;  // in bonds
    PathHash elements;
    PathHash shells;
    std::uint64_t factor;  // kBase to the number of its atoms and bonds
  };

  void Record(const State& state) {
    const std::uint32_t numAtoms = state.length + 1;
    const std::uint64_t elements = state.elements.GetCode(numAtoms);
    const std::uint64_t shells = state.shells.GetCode(numAtoms);
    for (std::uint32_t times = limits_.byLength ? numAtoms : 1; times > 0; --times) {
      codes_.push_back(elements);
      codes_.push_back(shells);
    }
  }

  void Extend(const State& state, std::uint32_t only) {
    const std::uint32_t length = state.length + 1;
    for (auto step = graph_.Begin(state.atom); step != graph_.End(state.atom); ++step) {
      const std::uint32_t atom = step->atom;
      // On a walk depths_ marks the atoms of the path; on an outward walk it holds the distances.
      if (limits_.outwards ? depths_[atom] != length : depths_[atom] != kAnyAtom) continue;
      if (only != kAnyAtom && atom != only) continue;
      const MolGraph::AtomType& type = graph_.atomTypes[atom];
      const State next{atom, length,
                       state.elements.Extend(step->bondType, type.element, state.factor),
                       state.shells.Extend(step->bondType, type.shell, state.factor),
                       state.factor * kBase * kBase};
      if (length >= limits_.minLength && (endsAbove_ == kAnyAtom || atom > endsAbove_))
        Record(next);
      if (length == limits_.maxLength) continue;
      if (!limits_.outwards) depths_[atom] = length;
      Extend(next, kAnyAtom);
      if (!limits_.outwards) depths_[atom] = kAnyAtom;
    }
  }

  /// Breadth-first distances from `start`, up to the longest path.
  void FindDepths(std::uint32_t start) {
    std::fill(depths_.begin(), depths_.end(), kAnyAtom);
    depths_[start] = 0;
    queue_.assign(1, start);
    for (std::size_t head = 0; head < queue_.size(); ++head) {
      const std::uint32_t atom = queue_[head];
      if (depths_[atom] == limits_.maxLength) break;
      for (const auto* step = graph_.Begin(atom); step != graph_.End(atom); ++step) {
        if (depths_[step->atom] != kAnyAtom) continue;
        depths_[step->atom] = depths_[atom] + 1;
        queue_.push_back(step->atom);
      }
    }
  }

  const MolGraph& graph_;
  const PathLimits limits_;
  std::vector<std::uint32_t> depths_;
  std::vector<std::uint32_t> queue_;
  std::vector<std::uint64_t> codes_;
  std::uint32_t endsAbove_ = kAnyAtom;
};

}  // namespace

std::vector<std::uint64_t> GetPathCodes(const MolGraph& graph, const PathLimits& limits) {
  PathWalker walker(graph, limits);
  walker.GetCodes().reserve(32 * std::size_t{graph.GetNumAtoms()});
  // A path is met from both of its ends and recorded from the one with the lower number.
  for (std::uint32_t atom = 0; atom < graph.GetNumAtoms(); ++atom)
    walker.Walk(atom, atom, kAnyAtom);
  return std::move(walker.GetCodes());
}

std::vector<std::uint64_t> GetPathCodesFrom(const MolGraph& graph, const PathLimits& limits,
                                            std::uint32_t atom) {
  PathWalker walker(graph, limits);
  walker.Walk(atom, kAnyAtom, kAnyAtom);
  return std::move(walker.GetCodes());
}

std::vector<std::uint64_t> GetPathCodesFrom(const MolGraph& graph, const PathLimits& limits,
                                            std::uint32_t begin, std::uint32_t end) {
  PathWalker walker(graph, limits);
  walker.Walk(begin, kAnyAtom, end);
  PathLimits longer = limits;
  longer.minLength = std::max(limits.minLength, 2U);
  PathWalker back(graph, longer);
  back.Walk(end, kAnyAtom, begin);
  walker.GetCodes().insert(walker.GetCodes().end(), back.GetCodes().begin(), back.GetCodes().end());
  return std::move(walker.GetCodes());
}

void SortPathCodes(std::vector<std::uint64_t>& codes) {
  // Two passes of a radix sort put the codes in order by their highest 16 bits; as these are random
  // there is little left to do, and insertion does that.
  std::vector<std::uint64_t> other(codes.size());
  for (const unsigned int shift : {48U, 56U}) {
    std::array<std::uint32_t, 257> begins{};
    for (const std::uint64_t code : codes) ++begins[((code >> shift) & 255U) + 1];
    for (std::size_t digit = 1; digit < begins.size(); ++digit) begins[digit] += begins[digit - 1];
    for (const std::uint64_t code : codes) other[begins[(code >> shift) & 255U]++] = code;
    codes.swap(other);
  }
  for (std::size_t i = 1; i < codes.size(); ++i) {
    const std::uint64_t code = codes[i];
    std::size_t place = i;
    for (; place > 0 && codes[place - 1] > code; --place) codes[place] = codes[place - 1];
    codes[place] = code;
  }
}

}  // namespace QVLikeness
