// Fingerprints of a file of molecules, and all distances between them.
#include <fstream>
#include <string>
#include <vector>

#include "benchmarks/qvperf/qvperf.h"
#include "benchmarks/qvperf/workloads.h"
#include "platform/chem/mol.h"
#include "platform/chem/smiles.h"
#include "platform/likeness/vsepr.h"
#include "platform/likeness/vsepr_index.h"
#include "stats/api/krige_vsepr.h"

namespace QVPerf {

namespace {

std::vector<std::string> ReadSmiles(const std::string& path) {
  std::vector<std::string> all;
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) all.push_back(line.substr(0, line.find(' ')));
  return all;
}

}  // namespace

bool RunFingerprints(const Run& run) {
  if (run.GetCase() != "fp1000" && run.GetCase() != "fp4000") return false;
  const std::vector<std::string> smiles = ReadSmiles(run.GetPath(run.GetCase() + ".smi"));
  const std::size_t n = smiles.size();
  const auto nothing = [] {};

  std::vector<QVChem::QVGraphMol> mols;
  run.Time(
      "parse_smiles", [&] { mols.assign(n, {}); },
      [&] {
        for (std::size_t i = 0; i < n; ++i) QVChem::QVParseSmiles(mols[i], smiles[i]);
      },
      [&] { return Check("mols", static_cast<double>(n)); });

  std::vector<QVStats::QVVseprPropFP> fingerprints;
  const QVLikeness::QVVseprOptions options;
  run.Time(
      "fingerprint", [&] { fingerprints.assign(n, {}); },
      [&] {
        for (std::size_t i = 0; i < n; ++i) fingerprints[i].Setup(mols[i], options);
      },
      [] { return std::string(); });

  const double pairs = 0.5 * static_cast<double>(n) * static_cast<double>(n - 1);
  double sum = 0.0;
  const auto check = [&] { return Check("mean_tanimoto", 1.0 - sum / pairs); };
  std::vector<double> row(n);
  run.Time(
      "pairs", nothing,
      [&] {
        QVLikeness::QVVseprIndex index;
        sum = 0.0;
        for (std::size_t i = 0; i < n; ++i) {
          index.GetDistances(fingerprints[i], row.data());
          for (std::size_t j = 0; j < i; ++j) sum += row[j];
          index.Add(fingerprints[i]);
        }
      },
      check);

  const QVStats::QVVseprDistance distance;
  run.Time(
      "pairs_functor", nothing,
      [&] {
        sum = 0.0;
        for (std::size_t i = 0; i < n; ++i)
          for (std::size_t j = 0; j < i; ++j)
            sum += (distance(fingerprints[i], fingerprints[j]) +
                    distance(fingerprints[j], fingerprints[i])) /
                   2.0;
      },
      check);
  return true;
}

}  // namespace QVPerf
