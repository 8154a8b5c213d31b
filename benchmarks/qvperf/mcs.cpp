#include <fstream>
#include <sstream>

#include "benchmarks/qvperf/workloads.h"
#include "platform/chem/smiles.h"
#include "stats/api/snn_dirty.h"

namespace QVPerf {

bool RunMCS(const Run& run) {
  if (run.GetCase() != "mcs_diverse50" && run.GetCase() != "mcs_series50") return false;
  std::vector<QVChem::QVGraphMol> mols;
  std::ifstream file(run.GetPath(run.GetCase() + ".smi"));
  for (std::string line, smiles; std::getline(file, line);) {
    std::istringstream(line) >> smiles;
    mols.emplace_back();
    QVChem::QVParseSmiles(mols.back(), smiles);
  }
  std::vector<QVStats::QVMolData> data;
  for (auto& mol : mols) data.push_back({&mol, static_cast<unsigned int>(data.size())});
  QVStats::QVSimInfo info;
  run.Time(
      "pairs", [] {}, [&] { info.InitSimilarity(data); },
      [&] {
        double sum = 0.0;
        for (const QVStats::QVSimItem& item : info.GetItems()) sum += item.similarity;
        return Check("mean_similarity", sum / static_cast<double>(info.GetItems().size()));
      });
  return true;
}

}  // namespace QVPerf
