// Measures how well molecular kriging predicts with different fingerprints (docs/fingerprint.md).
//
//   fingerprint_study options RDKIT_DATA         5-fold cross-validation of VSEPR options, three
//   sets fingerprint_study splits RDKIT_DATA [FILE]   ten random 80/20 splits of CHEMBL2321810,
//   global and
//                                                local, VSEPR and circular counts; writes the
//                                                indices of the test molecules to FILE, a line a
//                                                split
//
// RDKIT_DATA is where Debian's rdkit-data puts its files, /usr/share/RDKit.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <functional>
#include <limits>
#include <map>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "platform/chem/mol.h"
#include "platform/chem/mol_io.h"
#include "platform/likeness/fingerprint.h"
#include "platform/system/text.h"
#include "stats/api/krige_2d_mol.h"

namespace {

using namespace QVStats;

struct DataSet {
  std::string name;
  std::vector<QVChem::QVGraphMol> mols;
  std::vector<double> values;
};

/// Molecules whose `getValue` finds a number, in file order.
DataSet Read(const std::string& name, const std::string& path,
             const std::function<bool(const QVChem::QVGraphMol&, double&)>& getValue) {
  DataSet set;
  set.name = name;
  QVChem::QVMolReader reader(path);
  QVChem::QVGraphMol mol;
  while (reader.Read(mol) == QVChem::QVReadStatus::Molecule) {
    double value = 0.0;
    if (!getValue(mol, value)) continue;
    set.mols.push_back(mol);
    set.values.push_back(value);
  }
  if (reader.HasError()) std::fprintf(stderr, "%s\n", reader.GetErrorText().c_str());
  return set;
}

DataSet ReadSDF(const std::string& name, const std::string& path, const std::string& tag) {
  return Read(name, path, [&tag](const QVChem::QVGraphMol& mol, double& value) {
    return QVSystem::QVStringToNumber(mol.GetSDData(tag), value);
  });
}

DataSet ReadSeries(const std::string& data) {
  const std::string stem = data + "/Contrib/FreeWilson/data/CHEMBL2321810";
  std::map<std::string, double> activities;
  std::ifstream file(stem + "_act.csv");
  for (std::string line; std::getline(file, line);) {
    const std::size_t comma = line.find(',');
    double value = 0.0;
    if (comma != std::string::npos && QVSystem::QVStringToNumber(line.substr(comma + 1), value))
      activities[line.substr(0, comma)] = value;
  }
  return Read("CHEMBL2321810", stem + ".smi",
              [&activities](const QVChem::QVGraphMol& mol, double& value) {
                const auto found = activities.find(mol.GetTitle());
                if (found == activities.end()) return false;
                value = found->second;
                return true;
              });
}

/// A random order of 0 to n - 1, the same on every machine.
std::vector<std::size_t> Shuffle(std::size_t n, unsigned int seed) {
  std::vector<std::size_t> order(n);
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::mt19937 engine(seed);
  for (std::size_t i = n; i > 1; --i) std::swap(order[i - 1], order[engine() % i]);
  return order;
}

/// What predictions are worth: the usual coefficients, and the share of values within 1.96 standard
/// deviations of their prediction, in percent.
struct Score {
  double r2 = 0.0;
  double rmse = 0.0;
  double coverage = 0.0;
  unsigned int refused = 0;  // predictions that were invalid, left out of the others

  Score& operator+=(const Score& other) {
    r2 += other.r2;
    rmse += other.rmse;
    coverage += other.coverage;
    refused += other.refused;
    return *this;
  }
};

class Scorer {
 public:
  void Add(double value, const QVKrigeEstimate& estimate) {
    if (estimate.variance == std::numeric_limits<double>::max()) {
      ++refused_;
      return;
    }
    const double error = value - estimate.response;
    values_.push_back(value);
    squares_ += error * error;
    covered_ += std::abs(error) <= 1.96 * std::sqrt(estimate.variance) ? 1.0 : 0.0;
  }
  Score GetScore() const {
    const auto n = static_cast<double>(values_.size());
    const double mean = std::accumulate(values_.begin(), values_.end(), 0.0) / n;
    double total = 0.0;
    for (const double value : values_) total += (value - mean) * (value - mean);
    return {1.0 - squares_ / total, std::sqrt(squares_ / n), 100.0 * covered_ / n, refused_};
  }

 private:
  std::vector<double> values_;
  double squares_ = 0.0;
  double covered_ = 0.0;
  unsigned int refused_ = 0;
};

/// Trains on all but the molecules at order[first .. last) and scores those.
void Predict(QVMolKrige model, const DataSet& set, const std::vector<std::size_t>& order,
             std::size_t first, std::size_t last, Scorer& scorer) {
  std::vector<const QVChem::QVMolBase*> queries;
  for (std::size_t i = 0; i < order.size(); ++i) {
    const std::size_t mol = order[i];
    if (i >= first && i < last)
      queries.push_back(&set.mols[mol]);
    else
      model.AddTraining(set.mols[mol], set.values[mol]);
  }
  model.Train();
  const std::vector<QVKrigeEstimate> estimates = model.GetEstimates(queries);
  for (std::size_t i = first; i < last; ++i) scorer.Add(set.values[order[i]], estimates[i - first]);
}

void CompareOptions(const std::string& data) {
  const DataSet sets[] = {ReadSeries(data),
                          ReadSDF("bzr", data + "/Projects/DbCLI/testData/bzr.sdf", "ACTIVITY"),
                          ReadSDF("NCI", data + "/Data/NCI/first_200.props.sdf", "CLOGP")};
  std::vector<QVLikeness::QVVseprOptions> candidates;
  for (const bool outwards : {false, true})
    for (const unsigned int maxLength : {2U, 3U, 4U, 5U, 6U, 7U})
      candidates.push_back({maxLength, 0, outwards, false, false});
  for (const unsigned int minLength : {1U, 2U})
    candidates.push_back({5, minLength, true, false, false});
  candidates.push_back({5, 0, true, true, false});
  candidates.push_back({5, 0, false, true, false});
  candidates.push_back({5, 0, true, false, true});

  std::printf("| longest | shortest | outwards | by length | stereo |");
  for (const DataSet& set : sets) std::printf(" %s, n = %zu |", set.name.c_str(), set.mols.size());
  std::printf("\n|---|---|---|---|---|---|---|---|\n");
  for (const QVLikeness::QVVseprOptions& candidate : candidates) {
    QVDefaultKrigeDistanceOptions distance;
    distance.SetMaxPathLength(candidate.GetMaxPathLength())
        .SetMinPathLength(candidate.GetMinPathLength())
        .SetForcePathsOut(candidate.GetForcePathsOut())
        .SetWeightByLength(candidate.GetWeightByLength())
        .SetStereoAware(candidate.GetStereoAware());
    std::printf("| %u | %u | %s | %s | %s |", candidate.GetMaxPathLength(),
                candidate.GetMinPathLength(), candidate.GetForcePathsOut() ? "yes" : "no",
                candidate.GetWeightByLength() ? "yes" : "no",
                candidate.GetStereoAware() ? "yes" : "no");
    for (const DataSet& set : sets) {
      constexpr std::size_t kFolds = 5;
      const std::vector<std::size_t> order = Shuffle(set.mols.size(), 1);
      Scorer scorer;
      for (std::size_t fold = 0; fold < kFolds; ++fold)
        Predict(QVMolKrige(distance, QVGlobalKrigeOptions()), set, order,
                fold * order.size() / kFolds, (fold + 1) * order.size() / kFolds, scorer);
      const Score score = scorer.GetScore();
      std::printf(" %.3f / %.3f / %.1f / %u |", score.r2, score.rmse, score.coverage,
                  score.refused);
    }
    std::printf("\n");
    std::fflush(stdout);
  }
}

void CompareOnSplits(const std::string& data, const std::string& indexFile) {
  constexpr unsigned int kSplits = 10;
  DataSet set = ReadSeries(data);
  const QVMolKrigeLikenessDistFxn circular(QVLikeness::QVFPType::CircularCount);
  for (QVChem::QVGraphMol& mol : set.mols) circular.PrepMol(mol);
  const std::pair<const char*, QVMolKrige> models[] = {
      {"VSEPR defaults, global", QVMolKrige(QVGlobalKrigeOptions())},
      {"VSEPR defaults, local (100)", QVMolKrige(QVLocalKrigeOptions())},
      {"circular counts, global", QVMolKrige(circular, QVGlobalKrigeOptions())},
      {"circular counts, local (100)", QVMolKrige(circular, QVLocalKrigeOptions())}};
  const std::size_t numTest = set.mols.size() / 5;
  std::ofstream indices(indexFile);
  for (unsigned int split = 0; split < kSplits && indices; ++split) {
    const std::vector<std::size_t> order = Shuffle(set.mols.size(), split);
    for (std::size_t i = 0; i < numTest; ++i) indices << order[i] << (i + 1 < numTest ? ' ' : '\n');
  }
  std::printf(
      "| model | R2 | RMSE | inside the 95 %% interval | refused |\n|---|---|---|---|---|\n");
  for (const auto& [name, model] : models) {
    Score sum;
    for (unsigned int split = 0; split < kSplits; ++split) {
      Scorer scorer;
      Predict(model, set, Shuffle(set.mols.size(), split), 0, numTest, scorer);
      sum += scorer.GetScore();
    }
    std::printf("| %s | %.3f | %.3f | %.1f %% | %u |\n", name, sum.r2 / kSplits, sum.rmse / kSplits,
                sum.coverage / kSplits, sum.refused);
    std::fflush(stdout);
  }
}

}  // namespace

int main(int argc, char** argv) {
  const std::string command = argc > 2 ? argv[1] : "";
  if (command == "options" && argc == 3) {
    CompareOptions(argv[2]);
  } else if (command == "splits") {
    CompareOnSplits(argv[2], argc > 3 ? argv[3] : "");
  } else {
    std::fprintf(stderr, "usage: fingerprint_study options|splits RDKIT_DATA [FILE]\n");
    return 1;
  }
  return 0;
}
