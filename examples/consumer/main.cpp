#include <cmath>
#include <cstdio>
#include <utility>

#include "platform/chem/smiles.h"
#include "stats/api/krige_2d_mol.h"

int main() {
  QVStats::QVMolKrige model{QVStats::QVGlobalKrigeOptions()};
  const std::pair<const char*, double> known[] = {
      {"CCO", -0.3}, {"CCCO", 0.3}, {"CCCCO", 0.9}, {"CCCCCO", 1.5}, {"Oc1ccccc1", 1.5}};
  QVChem::QVGraphMol mol;
  for (const auto& [smiles, logP] : known)
    if (QVChem::QVParseSmiles(mol, smiles)) model.AddTraining(mol, logP);
  QVChem::QVParseSmiles(mol, "CCCCCCO");
  const QVStats::QVMolKrigeResult result = model.GetResult(mol);
  if (!result.Valid()) return 1;
  std::printf("%.2f +- %.2f\n", result.GetResponse(), std::sqrt(result.GetVariance()));
}
