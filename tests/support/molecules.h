/// \file
/// \brief Molecules for tests.
#ifndef QVSTATS_TESTS_SUPPORT_MOLECULES_H
#define QVSTATS_TESTS_SUPPORT_MOLECULES_H

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "platform/chem/mol.h"
#include "platform/chem/smiles.h"

/// A molecule from a SMILES, which must be a good one.
inline QVChem::QVGraphMol MakeMol(const std::string& smiles) {
  QVChem::QVGraphMol mol;
  EXPECT_TRUE(QVChem::QVParseSmiles(mol, smiles)) << smiles;
  return mol;
}

/// A molecule and its measured property.
struct MeasuredMol {
  QVChem::QVGraphMol mol;
  double response;
};

/// Octanol-water partition coefficients, log P, of 24 simple compounds, from C. Hansch, A. Leo,
/// D. Hoekman, "Exploring QSAR: Hydrophobic, Electronic, and Steric Constants", 1995.
inline std::vector<MeasuredMol> MakeLogPSet() {
  const std::pair<const char*, double> rows[] = {
      {"CO", -0.77},        {"CCO", -0.31},       {"CCCO", 0.25},        {"CCCCO", 0.88},
      {"CCCCCO", 1.56},     {"CCCCCCO", 2.03},    {"CC(C)O", 0.05},      {"CC(C)(C)O", 0.35},
      {"CC(=O)C", -0.24},   {"CCC(=O)C", 0.29},   {"CCCC(=O)C", 0.91},   {"CC(=O)O", -0.17},
      {"CCC(=O)O", 0.33},   {"CCCC(=O)O", 0.79},  {"c1ccccc1", 2.13},    {"Cc1ccccc1", 2.73},
      {"CCc1ccccc1", 3.15}, {"Oc1ccccc1", 1.46},  {"Nc1ccccc1", 0.90},   {"Clc1ccccc1", 2.84},
      {"Brc1ccccc1", 2.99}, {"COc1ccccc1", 2.11}, {"N#Cc1ccccc1", 1.56}, {"OCc1ccccc1", 1.10}};
  std::vector<MeasuredMol> set;
  for (const auto& [smiles, logP] : rows) set.push_back({MakeMol(smiles), logP});
  return set;
}

#endif  // QVSTATS_TESTS_SUPPORT_MOLECULES_H
