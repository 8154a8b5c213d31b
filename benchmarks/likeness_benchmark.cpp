// Fingerprints and one-against-many distances at the sizes of a lead series. The molecules are
// substituted biphenyls, so that features are shared as in a series.
#include <benchmark/benchmark.h>

#include <cstddef>
#include <string>
#include <vector>

#include "platform/chem/mol.h"
#include "platform/chem/smiles.h"
#include "platform/likeness/vsepr.h"
#include "platform/likeness/vsepr_index.h"

namespace {

std::vector<QVChem::QVGraphMol> MakeSeries(std::size_t count) {
  const std::string groups[] = {"C",      "CC",  "OC",       "F",          "Cl",
                                "C(=O)N", "C#N", "N1CCOCC1", "S(=O)(=O)C", "C(F)(F)F"};
  constexpr std::size_t kGroups = std::size(groups);
  std::vector<QVChem::QVGraphMol> mols(count);
  for (std::size_t i = 0; i < count; ++i)
    QVChem::QVParseSmiles(mols[i], groups[i % kGroups] + "c1cc(" + groups[i / kGroups % kGroups] +
                                       ")ccc1-c1ccc(" + groups[i / 100 % kGroups] + ")cc1" +
                                       groups[i / 1000 % kGroups]);
  return mols;
}

std::vector<QVLikeness::QVVseprFingerprint> MakeFingerprints(std::size_t count) {
  std::vector<QVLikeness::QVVseprFingerprint> fingerprints;
  for (const QVChem::QVGraphMol& mol : MakeSeries(count))
    fingerprints.emplace_back(mol, QVLikeness::QVVseprOptions());
  return fingerprints;
}

void BM_Fingerprint(benchmark::State& state) {
  const std::vector<QVChem::QVGraphMol> mols = MakeSeries(100);
  std::size_t i = 0;
  for (auto _ : state) {
    const QVLikeness::QVVseprFingerprint fingerprint(mols[i++ % mols.size()],
                                                     QVLikeness::QVVseprOptions());
    benchmark::DoNotOptimize(fingerprint.GetVolume());
  }
}
BENCHMARK(BM_Fingerprint);

void BM_PairwiseTanimoto(benchmark::State& state) {
  const auto fingerprints = MakeFingerprints(2);
  for (auto _ : state) benchmark::DoNotOptimize(fingerprints[0].GetTanimoto(fingerprints[1]));
}
BENCHMARK(BM_PairwiseTanimoto);

void BM_OneAgainstMany(benchmark::State& state) {
  const auto fingerprints = MakeFingerprints(static_cast<std::size_t>(state.range(0)));
  QVLikeness::QVVseprIndex index;
  for (const auto& fingerprint : fingerprints) index.Add(fingerprint);
  std::vector<double> distances(fingerprints.size());
  for (auto _ : state) {
    index.GetDistances(fingerprints[0], distances.data());
    benchmark::DoNotOptimize(distances.data());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_OneAgainstMany)->Arg(1000)->Arg(10000);

/// The hundred nearest, to be compared with the distances of all.
void BM_Nearest(benchmark::State& state) {
  const auto fingerprints = MakeFingerprints(static_cast<std::size_t>(state.range(0)));
  QVLikeness::QVVseprIndex index;
  for (const auto& fingerprint : fingerprints) index.Add(fingerprint);
  for (auto _ : state)
    benchmark::DoNotOptimize(index.FindNearest(fingerprints[0], 100, false).data());
}
BENCHMARK(BM_Nearest)->Arg(1000)->Arg(10000);

}  // namespace
