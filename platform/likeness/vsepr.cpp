#include "platform/likeness/vsepr.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "platform/chem/internal/rdkit_mol.h"
#include "platform/chem/mol.h"
#include "platform/likeness/internal/mol_graph.h"
#include "platform/likeness/internal/path_codes.h"
#include "platform/system/error_handler.h"

namespace QVLikeness {

namespace {

constexpr const char* kFingerprintTag = "QVVseprFingerprint";

PathLimits GetLimits(const QVVseprOptions& options) {
  return {options.GetMinPathLength(), options.GetMaxPathLength(), options.GetForcePathsOut(),
          options.GetWeightByLength()};
}

MolGraph MakeGraph(const QVChem::QVMolBase& mol, const QVVseprOptions& options) {
  return MakeMolGraph(QVChem::Internal::GetRDKitMol(mol), options.GetStereoAware());
}

}  // namespace

QVVseprFingerprint::QVVseprFingerprint(const QVChem::QVMolBase& mol,
                                       const QVVseprOptions& options) {
  Setup(mol, options);
}

QVVseprFingerprint::QVVseprFingerprint(const QVChem::QVAtomBase& atom,
                                       const QVVseprOptions& options) {
  Setup(atom, options);
}

QVVseprFingerprint::QVVseprFingerprint(const QVChem::QVBondBase& bond,
                                       const QVVseprOptions& options) {
  Setup(bond, options);
}

void QVVseprFingerprint::Setup(const QVChem::QVMolBase& mol, const QVVseprOptions& options) {
  SetFromPaths(GetPathCodes(MakeGraph(mol, options), GetLimits(options)), options);
}

void QVVseprFingerprint::Setup(const QVChem::QVAtomBase& atom, const QVVseprOptions& options) {
  SetFromPaths({}, options);
  if (!QV_ASSERT(atom.IsValid())) return;
  const MolGraph graph = MakeGraph(atom.GetParent(), options);
  const std::uint32_t index = graph.heavyIndices[atom.GetIndex()];
  if (index != MolGraph::kHydrogen)
    SetFromPaths(GetPathCodesFrom(graph, GetLimits(options), index), options);
}

void QVVseprFingerprint::Setup(const QVChem::QVBondBase& bond, const QVVseprOptions& options) {
  SetFromPaths({}, options);
  if (!QV_ASSERT(bond.IsValid())) return;
  const MolGraph graph = MakeGraph(bond.GetParent(), options);
  const std::uint32_t begin = graph.heavyIndices[bond.GetBegin().GetIndex()];
  const std::uint32_t end = graph.heavyIndices[bond.GetEnd().GetIndex()];
  if (begin != MolGraph::kHydrogen && end != MolGraph::kHydrogen)
    SetFromPaths(GetPathCodesFrom(graph, GetLimits(options), begin, end), options);
}

void QVVseprFingerprint::Setup(const std::vector<std::uint64_t>& codes,
                               const std::vector<double>& weights, const QVVseprOptions& options) {
  SetFromPaths({}, options);
  if (!QV_ASSERT(codes.size() == weights.size())) return;
  std::vector<std::size_t> order(codes.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(),
                   [&](std::size_t a, std::size_t b) { return codes[a] < codes[b]; });
  for (std::size_t first = 0; first < order.size();) {
    const std::uint64_t code = codes[order[first]];
    double weight = 0.0;
    for (; first < order.size() && codes[order[first]] == code; ++first)
      weight += weights[order[first]];
    Append(code, weight);
  }
  FindVolume();
}

void QVVseprFingerprint::SetFromPaths(std::vector<std::uint64_t> paths,
                                      const QVVseprOptions& options) {
  options_ = options;
  SortPathCodes(paths);
  codes_.clear();
  weights_.clear();
  std::size_t distinct = paths.empty() ? 0 : 1;
  for (std::size_t i = 1; i < paths.size(); ++i) distinct += paths[i] != paths[i - 1];
  codes_.reserve(distinct);
  weights_.reserve(distinct);
  for (std::size_t first = 0, last = 0; first < paths.size(); first = last) {
    while (last < paths.size() && paths[last] == paths[first]) ++last;
    Append(paths[first], static_cast<double>(last - first));
  }
  FindVolume();
}

void QVVseprFingerprint::Append(std::uint64_t code, double weight) {
  if (weight == 0.0) return;
  codes_.push_back(code);
  weights_.push_back(weight);
}

void QVVseprFingerprint::FindVolume() {
  volume_ = std::accumulate(weights_.begin(), weights_.end(), 0.0);
}

double QVVseprFingerprint::GetSharedVolume(const QVVseprFingerprint& other) const {
  const std::uint64_t* a = codes_.data();
  const std::uint64_t* b = other.codes_.data();
  const std::uint64_t* const endA = a + codes_.size();
  const std::uint64_t* const endB = b + other.codes_.size();
  const double* weightA = weights_.data();
  const double* weightB = other.weights_.data();
  double shared = 0.0;
  // Steps without a branch: which code is smaller is a coin toss that no predictor wins.
  while (a != endA && b != endB) {
    const bool stepA = *a <= *b;
    const bool stepB = *b <= *a;
    shared += stepA && stepB ? std::min(*weightA, *weightB) : 0.0;
    a += stepA;
    weightA += stepA;
    b += stepB;
    weightB += stepB;
  }
  return shared;
}

double QVVseprFingerprint::GetTanimoto(const QVVseprFingerprint& other) const {
  return QVTanimotoFromSums(GetSharedVolume(other), volume_, other.volume_);
}

QVVseprFingerprint& QVVseprFingerprint::Scale(double factor) {
  if (factor == 0.0) {
    codes_.clear();
    weights_.clear();
  }
  for (double& weight : weights_) weight *= factor;
  FindVolume();
  return *this;
}

QVVseprFingerprint& QVVseprFingerprint::operator+=(const QVVseprFingerprint& other) {
  const QVVseprFingerprint self = std::move(*this);
  *this = QVVseprFingerprint();
  options_ = self.codes_.empty() ? other.options_ : self.options_;
  codes_.reserve(self.codes_.size() + other.codes_.size());
  weights_.reserve(codes_.capacity());
  std::size_t i = 0;
  std::size_t j = 0;
  while (i < self.codes_.size() && j < other.codes_.size()) {
    if (self.codes_[i] == other.codes_[j]) {
      Append(self.codes_[i], self.weights_[i] + other.weights_[j]);
      ++i, ++j;
    } else if (self.codes_[i] < other.codes_[j]) {
      Append(self.codes_[i], self.weights_[i]);
      ++i;
    } else {
      Append(other.codes_[j], other.weights_[j]);
      ++j;
    }
  }
  for (; i < self.codes_.size(); ++i) Append(self.codes_[i], self.weights_[i]);
  for (; j < other.codes_.size(); ++j) Append(other.codes_[j], other.weights_[j]);
  FindVolume();
  return *this;
}

QVVseprFingerprint& QVVseprFingerprint::operator&=(const QVVseprFingerprint& other) {
  std::size_t kept = 0;
  std::size_t j = 0;
  for (std::size_t i = 0; i < codes_.size(); ++i) {
    while (j < other.codes_.size() && other.codes_[j] < codes_[i]) ++j;
    if (j == other.codes_.size()) break;
    if (other.codes_[j] != codes_[i]) continue;
    codes_[kept] = codes_[i];
    weights_[kept] = std::min(weights_[i], other.weights_[j]);
    ++kept;
  }
  codes_.resize(kept);
  weights_.resize(kept);
  FindVolume();
  return *this;
}

std::vector<QVVseprFingerprint> QVGetVseprAtomFingerprints(const QVChem::QVMolBase& mol,
                                                           const QVVseprOptions& options) {
  const MolGraph graph = MakeGraph(mol, options);
  std::vector<QVVseprFingerprint> fingerprints(graph.heavyIndices.size());
  for (std::size_t i = 0; i < fingerprints.size(); ++i) {
    std::vector<std::uint64_t> paths;
    if (graph.heavyIndices[i] != MolGraph::kHydrogen)
      paths = GetPathCodesFrom(graph, GetLimits(options), graph.heavyIndices[i]);
    fingerprints[i].SetFromPaths(std::move(paths), options);
  }
  return fingerprints;
}

void QVPrepVsepr(QVChem::QVMolBase& mol, const QVVseprOptions& options) {
  mol.SetData(kFingerprintTag, QVVseprFingerprint(mol, options));
}

const QVVseprFingerprint* QVFindVsepr(const QVChem::QVMolBase& mol) {
  return mol.FindData<QVVseprFingerprint>(kFingerprintTag);
}

double QVGetVseprTanimoto(const QVChem::QVMolBase& a, const QVChem::QVMolBase& b,
                          double errorValue) {
  const QVVseprFingerprint* const first = QVFindVsepr(a);
  const QVVseprFingerprint* const second = QVFindVsepr(b);
  return first && second ? first->GetTanimoto(*second) : errorValue;
}

}  // namespace QVLikeness
