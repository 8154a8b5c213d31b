// Molecules in, out and copied, beside the chemistry library called directly in the same run.
#include <GraphMol/GraphMol.h>
#include <GraphMol/SmilesParse/SmilesParse.h>
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "platform/chem/mol_io.h"
#include "platform/chem/smiles.h"
#include "platform/system/file_stream.h"

namespace {

// Marketed drugs of 13 to 60 heavy atoms: what a file of molecules to predict looks like.
constexpr const char* kDrugs[] = {
    "CC(=O)Oc1ccccc1C(=O)O",
    "CN1C=NC2=C1C(=O)N(C(=O)N2C)C",
    "CC(C)Cc1ccc(cc1)C(C)C(=O)O",
    "CN1CCN(CC1)Cc1ccc(cc1)C(=O)Nc1ccc(C)c(c1)Nc1nccc(n1)-c1cccnc1",
    "CCCc1nn(C)c2c1nc([nH]c2=O)-c1cc(ccc1OCC)S(=O)(=O)N1CCN(C)CC1",
    "CC(C)c1c(C(=O)Nc2ccccc2)c(-c2ccccc2)c(-c2ccc(F)cc2)n1CC[C@@H](O)C[C@@H](O)CC(=O)O",
    "CC1(C)S[C@@H]2[C@H](NC(=O)Cc3ccccc3)C(=O)N2[C@H]1C(=O)O",
    "CC1=C2[C@@]([C@]([C@H]([C@@H]3[C@]4([C@H](OC4)C[C@@H]([C@]3(C(=O)[C@@H]2OC(=O)C)C)O)OC(=O)C)"
    "OC(=O)c2ccccc2)(C[C@@H]1OC(=O)[C@H](O)[C@@H](NC(=O)c1ccccc1)c1ccccc1)O)(C)C",
    "COc1cc2ncnc(Nc3ccc(F)c(Cl)c3)c2cc1OCCCN1CCOCC1",
    "C[C@H]1COc2c(N3CCN(C)CC3)c(F)cc3c(=O)c(C(=O)O)cn1c23",
};

std::vector<QVChem::QVGraphMol> ParseAll() {
  std::vector<QVChem::QVGraphMol> mols;
  for (const char* const smiles : kDrugs) {
    QVChem::QVGraphMol mol;
    if (QVChem::QVParseSmiles(mol, smiles)) mols.push_back(std::move(mol));
  }
  return mols;
}

void CountMolecules(benchmark::State& state, std::size_t perIteration) {
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * perIteration));
}

std::string TemporaryPath(const char* extension) {
  const auto name = "qvstats_chem_" + std::to_string(getpid()) + extension;
  return (std::filesystem::temp_directory_path() / name).string();
}

void BM_ParseSmiles(benchmark::State& state) {
  if (ParseAll().size() != std::size(kDrugs)) return state.SkipWithError("a SMILES was refused");
  for (auto _ : state) benchmark::DoNotOptimize(ParseAll());
  CountMolecules(state, std::size(kDrugs));
}
BENCHMARK(BM_ParseSmiles)->Unit(benchmark::kMicrosecond);

void BM_ParseSmilesDirectly(benchmark::State& state) {
  for (auto _ : state)
    for (const char* const smiles : kDrugs) {
      const std::unique_ptr<RDKit::ROMol> mol(RDKit::SmilesToMol(smiles));
      benchmark::DoNotOptimize(mol.get());
    }
  CountMolecules(state, std::size(kDrugs));
}
BENCHMARK(BM_ParseSmilesDirectly)->Unit(benchmark::kMicrosecond);

void BM_CreateSmiles(benchmark::State& state) {
  const auto mols = ParseAll();
  for (auto _ : state)
    for (const auto& mol : mols) benchmark::DoNotOptimize(QVChem::QVCreateSmiles(mol));
  CountMolecules(state, mols.size());
}
BENCHMARK(BM_CreateSmiles)->Unit(benchmark::kMicrosecond);

void BM_CopyMol(benchmark::State& state) {
  auto mols = ParseAll();
  for (auto& mol : mols) mol.SetSDData("activity", "7.2");
  for (auto _ : state)
    for (const auto& mol : mols) benchmark::DoNotOptimize(QVChem::QVGraphMol(mol));
  CountMolecules(state, mols.size());
}
BENCHMARK(BM_CopyMol);

/// Writes 1000 records of an SD file (argument 1: gzip) and reads them back.
void BM_ReadSDF(benchmark::State& state) {
  const std::string path = TemporaryPath(state.range(0) != 0 ? ".sdf.gz" : ".sdf");
  const auto mols = ParseAll();
  constexpr std::size_t kRecords = 1000;
  QVChem::QVMolWriter writer(path);
  for (std::size_t i = 0; i < kRecords; ++i) writer.Write(mols[i % mols.size()]);
  if (!writer.close()) return state.SkipWithError(writer.GetErrorText().c_str());
  for (auto _ : state) {
    QVChem::QVMolReader reader(path);
    QVChem::QVGraphMol mol;
    std::size_t count = 0;
    while (reader.Read(mol) == QVChem::QVReadStatus::Molecule) ++count;
    if (count != kRecords) state.SkipWithError("a record was refused");
  }
  CountMolecules(state, kRecords);
  std::remove(path.c_str());
}
BENCHMARK(BM_ReadSDF)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

std::string TenMegabytesOfLines() {
  std::string text;
  for (std::size_t i = 0; text.size() < 10'000'000; ++i)
    text.append(kDrugs[i % std::size(kDrugs)])
        .append(" compound ")
        .append(std::to_string(i) + "\n");
  return text;
}

/// Times `read(path)` on a file of lines.
template <class Read>
void ReadLines(benchmark::State& state, const char* extension, Read read) {
  const std::string path = TemporaryPath(extension);
  const std::string text = TenMegabytesOfLines();
  QVPlatform::qvofstream out(path);
  out << text;
  if (!out.close()) return state.SkipWithError(out.GetErrorText().c_str());
  for (auto _ : state) read(path);
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
  std::remove(path.c_str());
}

void BM_ReadLines(benchmark::State& state) {
  ReadLines(state, state.range(0) != 0 ? ".txt.gz" : ".txt", [](const std::string& path) {
    QVPlatform::qvifstream in(path);
    for (std::string line; in.getline(line);) benchmark::DoNotOptimize(line.data());
  });
}
BENCHMARK(BM_ReadLines)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

void BM_ReadLinesByStandardStream(benchmark::State& state) {
  ReadLines(state, ".txt", [](const std::string& path) {
    std::ifstream in(path);
    for (std::string line; std::getline(in, line);) benchmark::DoNotOptimize(line.data());
  });
}
BENCHMARK(BM_ReadLinesByStandardStream)->Unit(benchmark::kMillisecond);

}  // namespace
