#include "platform/chem/mcs_search.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <numeric>

#include "platform/system/error_handler.h"

namespace QVChem {

namespace {

using Pairs = std::vector<std::pair<unsigned int, unsigned int>>;

/// A molecule as the search sees it: atoms with a type, bonds with a type from 1 on.
struct TypedGraph {
  struct Bond {
    unsigned int atom;
    std::uint32_t type;
  };

  std::vector<std::uint32_t> atomTypes;
  std::vector<std::vector<Bond>> bonds;

  std::size_t Size() const { return atomTypes.size(); }
};

std::uint32_t AtomType(const QVAtomBase& atom, unsigned int options) {
  std::uint32_t type = options & QVMCSAtomMatch::AtomicNumber ? atom.GetElement() << 2 : 0;
  if (options & QVMCSAtomMatch::Aromaticity) type |= atom.IsAromatic() ? 2u : 0u;
  if (options & QVMCSAtomMatch::RingMember) type |= atom.IsInRing() ? 1u : 0u;
  return type;
}

std::uint32_t BondType(const QVBondBase& bond, unsigned int options) {
  std::uint32_t type = 2;
  if (options & QVMCSBondMatch::Order) {
    const QVBondOrder order = bond.IsAromatic() ? QVBondOrder::Aromatic : bond.GetOrder();
    type += static_cast<std::uint32_t>(order) << 2;
  }
  if (options & QVMCSBondMatch::RingMember) type |= bond.IsInRing() ? 1u : 0u;
  return type;
}

TypedGraph MakeGraph(const QVMolBase& mol, unsigned int atomMatch, unsigned int bondMatch) {
  TypedGraph graph;
  for (const QVAtomBase atom : mol.GetAtoms()) graph.atomTypes.push_back(AtomType(atom, atomMatch));
  graph.bonds.resize(graph.Size());
  for (const QVBondBase bond : mol.GetBonds()) {
    const unsigned int a = bond.GetBegin().GetIndex(), b = bond.GetEnd().GetIndex();
    const std::uint32_t type = BondType(bond, bondMatch);
    graph.bonds[a].push_back({b, type});
    graph.bonds[b].push_back({a, type});
  }
  return graph;
}

/// Invariants of growing environments: equal for atoms whose surroundings match to that radius.
constexpr std::size_t kRadii = 6;
std::vector<std::array<std::uint64_t, kRadii>> Environments(const TypedGraph& graph) {
  const auto mix = [](std::uint64_t x) {
    x = (x ^ (x >> 31)) * 0x9E3779B97F4A7C15u;
    return x ^ (x >> 29);
  };
  std::vector<std::array<std::uint64_t, kRadii>> codes(graph.Size());
  for (std::size_t i = 0; i < graph.Size(); ++i) codes[i][0] = mix(graph.atomTypes[i] + 1);
  for (std::size_t radius = 1; radius < kRadii; ++radius)
    for (std::size_t i = 0; i < graph.Size(); ++i) {
      std::uint64_t sum = codes[i][radius - 1];
      for (const TypedGraph::Bond& bond : graph.bonds[i])
        sum += mix(codes[bond.atom][radius - 1] * 31 + bond.type);
      codes[i][radius] = mix(sum);
    }
  return codes;
}

/// A set of atoms, as bits.
template <std::size_t Words>
struct AtomSet {
  std::array<std::uint64_t, Words> words{};

  void Add(std::size_t i) { words[i / 64] |= std::uint64_t{1} << (i % 64); }
  void Remove(std::size_t i) { words[i / 64] &= ~(std::uint64_t{1} << (i % 64)); }
  bool Holds(std::size_t i) const { return (words[i / 64] >> (i % 64)) & 1; }
  bool IsEmpty() const {
    std::uint64_t any = 0;
    for (const std::uint64_t word : words) any |= word;
    return any == 0;
  }
  std::size_t Count() const {
    std::size_t count = 0;
    for (const std::uint64_t word : words)
      count += static_cast<std::size_t>(__builtin_popcountll(word));
    return count;
  }
  std::size_t First() const {
    std::size_t word = 0;
    while (words[word] == 0) ++word;
    return word * 64 + static_cast<std::size_t>(__builtin_ctzll(words[word]));
  }
  AtomSet operator&(const AtomSet& other) const {
    return Combine(other, [](auto a, auto b) { return a & b; });
  }
  AtomSet operator|(const AtomSet& other) const {
    return Combine(other, [](auto a, auto b) { return a | b; });
  }
  AtomSet operator-(const AtomSet& other) const {
    return Combine(other, [](auto a, auto b) { return a & ~b; });
  }

 private:
  template <class Op>
  AtomSet Combine(const AtomSet& other, Op op) const {
    AtomSet result;
    for (std::size_t i = 0; i < Words; ++i) result.words[i] = op(words[i], other.words[i]);
    return result;
  }
};

/// The adjacency of a graph as sets, its atoms renumbered so that those with more bonds come first.
template <std::size_t Words>
struct SetGraph {
  using Set = AtomSet<Words>;

  SetGraph(const TypedGraph& graph, const std::vector<std::uint32_t>& bondTypes)
      : order(graph.Size()),
        byType(bondTypes.size(), std::vector<Set>(graph.Size())),
        neighbours(graph.Size()) {
    std::iota(order.begin(), order.end(), 0u);
    std::stable_sort(order.begin(), order.end(), [&](unsigned int a, unsigned int b) {
      return graph.bonds[a].size() > graph.bonds[b].size();
    });
    std::vector<std::size_t> position(order.size());
    for (std::size_t i = 0; i < order.size(); ++i) position[order[i]] = i;
    for (std::size_t i = 0; i < order.size(); ++i)
      for (const TypedGraph::Bond& bond : graph.bonds[order[i]]) {
        neighbours[i].Add(position[bond.atom]);
        const auto type = std::lower_bound(bondTypes.begin(), bondTypes.end(), bond.type);
        if (type != bondTypes.end() && *type == bond.type)
          byType[static_cast<std::size_t>(type - bondTypes.begin())][i].Add(position[bond.atom]);
      }
  }

  /// Atoms of `open` on a path of open atoms from `start`.
  Set Reach(const Set& start, const Set& open) const {
    Set reached = start, fresh = start;
    while (!fresh.IsEmpty()) {
      Set next;
      for (; !fresh.IsEmpty(); fresh.Remove(fresh.First())) next = next | neighbours[fresh.First()];
      fresh = (next & open) - reached;
      reached = reached | fresh;
    }
    return reached;
  }

  std::vector<unsigned int> order;  // the graph's own numbers
  std::vector<std::vector<Set>> byType;
  std::vector<Set> neighbours;
};

/// Bond types that both graphs have, sorted. Others match nothing.
std::vector<std::uint32_t> AllBondTypes(const TypedGraph& a, const TypedGraph& b) {
  std::vector<std::uint32_t> types;
  for (const TypedGraph* graph : {&a, &b})
    for (const auto& bonds : graph->bonds)
      for (const TypedGraph::Bond& bond : bonds) types.push_back(bond.type);
  std::sort(types.begin(), types.end());
  types.erase(std::unique(types.begin(), types.end()), types.end());
  return types;
}

/// One branch-and-bound search.
template <std::size_t Words>
class CommonSubgraph {
 public:
  using Set = AtomSet<Words>;
  using Clock = std::chrono::steady_clock;

  CommonSubgraph(const TypedGraph& a, const TypedGraph& b, double seconds)
      : types_(AllBondTypes(a, b)),
        a_(a, types_),
        b_(b, types_),
        limited_(seconds > 0.0),
        deadline_(Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                     std::chrono::duration<double>(limited_ ? seconds : 0.0))) {
    RankTargets(a, b);
    FindTwins();
  }

  Pairs Run(const TypedGraph& a, const TypedGraph& b) {
    std::vector<Class> classes;
    std::vector<std::uint32_t> types(a.atomTypes);
    std::sort(types.begin(), types.end());
    types.erase(std::unique(types.begin(), types.end()), types.end());
    for (const std::uint32_t type : types) {
      Class c;
      for (std::size_t i = 0; i < a.Size(); ++i)
        if (a.atomTypes[a_.order[i]] == type) c.left.Add(i);
      for (std::size_t i = 0; i < b.Size(); ++i)
        if (b.atomTypes[b_.order[i]] == type) c.right.Add(i);
      if (!c.right.IsEmpty()) classes.push_back(c);
    }
    goal_ = std::min(a.Size(), b.Size());
    frames_.resize(goal_ + 2);
    frames_[0] = classes;
    Expand(0);
    Pairs pairs;
    for (const auto& [i, j] : best_) pairs.emplace_back(a_.order[i], b_.order[j]);
    std::sort(pairs.begin(), pairs.end());
    return pairs;
  }

  bool WasTimeSpent() const { return timeSpent_; }

 private:
  /// Atoms that may still be mapped onto one another.
  struct Class {
    Set left, right;
    bool touches = false;  // bonded to a mapped atom
  };

  /// For each atom of the left graph, the atoms of the right by falling likeness of surroundings,
  /// so that the first dive finds a large map.
  void RankTargets(const TypedGraph& a, const TypedGraph& b) {
    const auto left = Environments(a), right = Environments(b);
    ranked_.resize(a.Size());
    for (std::size_t i = 0; i < a.Size(); ++i) {
      const auto& code = left[a_.order[i]];
      std::vector<std::pair<std::size_t, std::size_t>> targets;
      for (std::size_t j = 0; j < b.Size(); ++j) {
        std::size_t radius = 0;
        while (radius < kRadii && code[radius] == right[b_.order[j]][radius]) ++radius;
        if (radius != 0) targets.emplace_back(kRadii - radius, j);
      }
      std::sort(targets.begin(), targets.end());
      for (const auto& target : targets) ranked_[i].push_back(target.second);
    }
  }

  /// Twins have the same bonds to the same atoms: where one fails, so does the other.
  void FindTwins() {
    const std::size_t n = b_.order.size();
    twinsBefore_.resize(n);
    for (std::size_t j = 0; j < n; ++j)
      for (std::size_t k = 0; k < n; ++k)
        if (k != j && AreTwins(j, k)) twinsBefore_[j].Add(k);
  }

  bool AreTwins(std::size_t j, std::size_t k) const {
    for (const auto& sets : b_.byType)
      if (sets[j].words != sets[k].words) return false;
    return true;
  }

  std::size_t Bound(const std::vector<Class>& classes) const {
    std::size_t bound = map_.size();
    if (map_.empty()) {
      for (const Class& c : classes) bound += std::min(c.left.Count(), c.right.Count());
      return bound;
    }
    Set openLeft, openRight, startLeft, startRight;
    for (const Class& c : classes) {
      openLeft = openLeft | c.left;
      openRight = openRight | c.right;
      if (!c.touches) continue;
      startLeft = startLeft | c.left;
      startRight = startRight | c.right;
    }
    const Set left = a_.Reach(startLeft, openLeft), right = b_.Reach(startRight, openRight);
    for (const Class& c : classes)
      bound += std::min((c.left & left).Count(), (c.right & right).Count());
    return bound;
  }

  /// The class to branch on: the smallest of those that touch the map. \return null at a leaf.
  Class* Select(std::vector<Class>& classes) const {
    Class* selected = nullptr;
    std::size_t smallest = ~std::size_t{0};
    for (Class& c : classes) {
      if (!map_.empty() && !c.touches) continue;
      const std::size_t size = std::max(c.left.Count(), c.right.Count());
      if (size >= smallest) continue;
      smallest = size;
      selected = &c;
    }
    return selected;
  }

  /// The classes that remain once v is mapped onto w.
  void Refine(const std::vector<Class>& classes, std::size_t v, std::size_t w,
              std::vector<Class>& refined) const {
    refined.clear();
    const auto add = [&refined](const Set& left, const Set& right, bool touches) {
      if (!left.IsEmpty() && !right.IsEmpty()) refined.push_back({left, right, touches});
    };
    for (const Class& c : classes) {
      Set left = c.left, right = c.right;
      left.Remove(v);
      right.Remove(w);
      add(left - a_.neighbours[v], right - b_.neighbours[w], c.touches);
      if ((left & a_.neighbours[v]).IsEmpty()) continue;
      for (std::size_t t = 0; t < types_.size(); ++t)
        add(left & a_.byType[t][v], right & b_.byType[t][w], true);
    }
  }

  bool IsFinished() {
    if (best_.size() == goal_ || timeSpent_) return true;
    if (limited_ && (++nodes_ & 1023) == 0) timeSpent_ = Clock::now() > deadline_;
    return timeSpent_;
  }

  void Expand(std::size_t depth) {
    std::vector<Class>& classes = frames_[depth];
    if (map_.size() > best_.size()) best_ = map_;
    while (!IsFinished()) {
      if (Bound(classes) <= best_.size()) return;
      Class* const selected = Select(classes);
      if (!selected) return;
      const std::size_t v = selected->left.First();
      Set tried;
      for (const std::size_t w : ranked_[v]) {
        if (!selected->right.Holds(w) || !(twinsBefore_[w] & tried).IsEmpty()) continue;
        tried.Add(w);
        map_.emplace_back(v, w);
        Refine(classes, v, w, frames_[depth + 1]);
        Expand(depth + 1);
        map_.pop_back();
        if (IsFinished()) return;
      }
      selected->left.Remove(v);  // the maps without v
      if (selected->left.IsEmpty()) {
        *selected = classes.back();
        classes.pop_back();
      }
    }
  }

  std::vector<std::uint32_t> types_;
  SetGraph<Words> a_, b_;
  std::vector<std::vector<std::size_t>> ranked_;
  std::vector<Set> twinsBefore_;
  std::vector<std::vector<Class>> frames_;  // the classes of each depth
  std::vector<std::pair<std::size_t, std::size_t>> map_, best_;
  std::size_t goal_ = 0;
  std::size_t nodes_ = 0;
  bool limited_;
  Clock::time_point deadline_;
  bool timeSpent_ = false;
};

template <std::size_t Words>
Pairs Search(const TypedGraph& a, const TypedGraph& b, double seconds, bool& timeSpent) {
  CommonSubgraph<Words> search(a, b, seconds);
  Pairs pairs = search.Run(a, b);
  timeSpent = search.WasTimeSpent();
  return pairs;
}

constexpr std::size_t kMaxAtoms = 1024;

bool IsSmallEnough(const QVMolBase& mol) {
  if (mol.GetNumAtoms() <= kMaxAtoms) return true;
  QVSystem::QVThrow.Error("QVMCSSearch, molecule %s has %u atoms, more than %zu",
                          mol.GetTitle().c_str(), mol.GetNumAtoms(), kMaxAtoms);
  return false;
}

}  // namespace

struct QVMCSSearch::Impl {
  TypedGraph pattern;
  unsigned int atomMatch = QVMCSAtomMatch::Default;
  unsigned int bondMatch = QVMCSBondMatch::Default;
  double seconds = 0.0;
  bool timeSpent = false;
  std::vector<QVMCSMatch> matches;

  /// The smaller graph is mapped into the larger.
  Pairs FindPairs(const TypedGraph& target) {
    const bool swapped = target.Size() < pattern.Size();
    const TypedGraph& a = swapped ? target : pattern;
    const TypedGraph& b = swapped ? pattern : target;
    const auto search = b.Size() <= 64    ? Search<1>
                        : b.Size() <= 128 ? Search<2>
                        : b.Size() <= 256 ? Search<4>
                                          : Search<kMaxAtoms / 64>;
    Pairs pairs = search(a, b, seconds, timeSpent);
    if (swapped)
      for (auto& pair : pairs) std::swap(pair.first, pair.second);
    return pairs;
  }
};

QVMCSSearch::QVMCSSearch(unsigned int searchType) : impl_(std::make_unique<Impl>()) {
  if (searchType != 0)
    QVSystem::QVThrow.Warning("QVMCSSearch, search type %u is not known, the exact search is used",
                              searchType);
}

QVMCSSearch::~QVMCSSearch() = default;
QVMCSSearch::QVMCSSearch(QVMCSSearch&& other) noexcept = default;
QVMCSSearch& QVMCSSearch::operator=(QVMCSSearch&& other) noexcept = default;

bool QVMCSSearch::Init(const QVMolBase& pattern, unsigned int atomMatch, unsigned int bondMatch) {
  impl_->pattern = TypedGraph();
  impl_->atomMatch = atomMatch;
  impl_->bondMatch = bondMatch;
  if (!IsSmallEnough(pattern)) return false;
  impl_->pattern = MakeGraph(pattern, atomMatch, bondMatch);
  return true;
}

void QVMCSSearch::SetTimeBudget(double seconds) { impl_->seconds = seconds; }

bool QVMCSSearch::WasTimeSpent() const { return impl_->timeSpent; }

QVSystem::QVIter<const QVMCSMatch> QVMCSSearch::Match(const QVMolBase& target, bool) {
  impl_->timeSpent = false;
  impl_->matches.clear();
  if (IsSmallEnough(target)) {
    Pairs pairs = impl_->FindPairs(MakeGraph(target, impl_->atomMatch, impl_->bondMatch));
    if (!pairs.empty()) impl_->matches.emplace_back(std::move(pairs));
  }
  return QVSystem::QVMakeIter<const QVMCSMatch>(impl_->matches);
}

}  // namespace QVChem
