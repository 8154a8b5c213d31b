// The cost of a report page, beside that of the molecule drawings on it alone.
#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "platform/chem/smiles.h"
#include "platform/depict/image_writer.h"
#include "platform/depict/molecule_display.h"
#include "stats/api/krige_2d_mol.h"
#include "stats/api/krige_2d_mol_depict.h"

namespace {

constexpr unsigned int kRows = 3;
constexpr unsigned int kColumns = 2;
constexpr double kWidth = 842.0;
constexpr double kHeight = 595.0;

QVChem::QVGraphMol MakeMol(const std::string& smiles) {
  QVChem::QVGraphMol mol;
  QVChem::QVParseSmiles(mol, smiles);
  return mol;
}

/// Sulphonamides of drug size with one of 64 patterns of substituents.
QVChem::QVGraphMol MakeDrug(unsigned int pattern) {
  const char* const first[] = {"F", "Cl", "C#N", "C"};
  const char* const second[] = {"c4nccs4", "c4ncccn4", "c4ccccn4", "C4CCCC4"};
  const char* const third[] = {"c5ccnn5C", "c5ccccc5", "OC", "C(F)(F)F"};
  return MakeMol(std::string("O=S(=O)(N") + second[pattern / 4 % 4] + ")c1ccc(Oc2ccccc2" +
                 third[pattern / 16 % 4] + ")c(" + first[pattern % 4] + ")c1");
}

struct Example {
  QVStats::QVMolKrigeResult result;
  QVChem::QVGraphMol query = MakeDrug(21);

  Example() {
    QVStats::QVMolKrige model{QVStats::QVGlobalKrigeOptions()};
    for (unsigned int k = 0; k < 64; ++k)
      if (k != 21) model.AddTraining(MakeDrug(k), 5.0 + 0.3 * (k % 4) - 0.2 * (k / 4 % 4));
    result = model.GetResult(query);
  }
};

void BM_MoleculeDrawingsOfAPage(benchmark::State& state) {
  const Example example;
  const auto elements = example.result.GetLargestElements(kRows * kColumns);
  for (auto _ : state) {
    QVDepict::QVImage page(kWidth, kHeight);
    for (const unsigned int element : elements) {
      QVDepict::QVImageFrame cell(page, {0.0, 0.0}, 150.0, 120.0);
      QVDepict::QVRenderMolecule(cell, example.result.GetElement(element));
    }
    QVDepict::QVImageFrame large(page, {0.0, 0.0}, 400.0, 250.0);
    QVDepict::QVRenderMolecule(large, example.query);
    benchmark::DoNotOptimize(page.GetDrawings().size());
  }
}
BENCHMARK(BM_MoleculeDrawingsOfAPage)->Unit(benchmark::kMicrosecond);

void BM_Page(benchmark::State& state) {
  const Example example;
  QVStats::QVKrigeReportOptions options;
  options.SetTitle("A title").SetShowConfidence(true).PushClassificationBoundry(5.5);
  for (auto _ : state) {
    QVDepict::QVImage page(kWidth, kHeight);
    if (!QVStats::QVKrigeRenderReport(page, example.result, example.query, options, kRows,
                                      kColumns))
      return state.SkipWithError("the page was not drawn");
    benchmark::DoNotOptimize(page.GetDrawings().size());
  }
}
BENCHMARK(BM_Page)->Unit(benchmark::kMicrosecond);

/// A whole file of a page that is drawn already.
void BM_File(benchmark::State& state, const char* extension) {
  const Example example;
  QVDepict::QVImage page(kWidth, kHeight);
  QVStats::QVKrigeRenderReport(page, example.result, example.query, QVStats::QVKrigeReportOptions(),
                               kRows, kColumns);
  std::string bytes;
  for (auto _ : state)
    if (!QVDepict::QVWriteImageToString(bytes, extension, page))
      return state.SkipWithError("the file was not made");
  state.counters["bytes"] = static_cast<double>(bytes.size());
}
BENCHMARK_CAPTURE(BM_File, pdf, "pdf")->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_File, svg, "svg")->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_File, png, "png")->Unit(benchmark::kMicrosecond);

}  // namespace
