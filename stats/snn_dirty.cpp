#include "stats/api/snn_dirty.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iostream>
#include <string>

#include "platform/chem/mcs_search.h"
#include "platform/likeness/vsepr_index.h"
#include "platform/system/cast.h"
#include "platform/system/error_handler.h"
#include "platform/system/memory.h"
#include "stats/snn_selection.h"

namespace QVStats {

namespace {

using Lists = std::vector<std::vector<unsigned int>>;

/// Lines for the standard error stream, gathered and written in one piece.
class Lines {
 public:
  ~Lines() { std::cerr.write(text_.data(), static_cast<std::streamsize>(text_.size())); }

  Lines& operator<<(const char* text) {
    text_ += text;
    return *this;
  }
  Lines& operator<<(std::size_t number) { return Append(number); }
  /// As a stream writes it: six significant digits.
  Lines& operator<<(double number) { return Append(number, std::chars_format::general, 6); }

 private:
  template <class... Arguments>
  Lines& Append(Arguments... arguments) {
    char buffer[32];
    const auto end = std::to_chars(buffer, buffer + sizeof buffer, arguments...);
    text_.append(buffer, end.ptr);
    return *this;
  }

  std::string text_;
};

void PrintParameters(const QVSNNParameters& params) {
  Lines() << "nbrCt = " << std::size_t{params.nbrCt} << "\ntopic = " << std::size_t{params.topic}
          << "\nnoise = " << std::size_t{params.noise} << "\nmerge = " << std::size_t{params.merge}
          << "\nlabel = " << std::size_t{params.label} << "\n";
}

void PrintSimilarities(const std::vector<double>& matrix, std::size_t n) {
  Lines lines;
  for (std::size_t i = 0; i < n; ++i) {
    lines << i << ": ";
    for (std::size_t j = 0; j < n; ++j)
      lines << " (" << matrix[n * std::min(i, j) + std::max(i, j)] << "," << j << ")";
    lines << "\n";
  }
}

void PrintLists(const Lists& lists) {
  Lines lines;
  for (std::size_t i = 0; i < lists.size(); ++i) {
    lines << i << ": ";
    for (const unsigned int member : lists[i]) lines << std::size_t{member} << " ";
    lines << "\n";
  }
  lines << "EndPrint\n";
}

unsigned int CountCommonAtoms(QVChem::QVMCSSearch& search, const QVChem::QVMolBase& target) {
  const auto match = search.Match(target, true);
  return match ? match->GetNumAtoms() : 0;
}

}  // namespace

bool QVSimInfo::Resize(std::size_t count) {
  items_.clear();
  numTimeSpent_ = 0;
  const auto n = static_cast<double>(count);
  const bool fits = QVSystem::QVRunWithinMemory(
      "QVSimInfo::InitSimilarity, a matrix of " + std::to_string(count) + " objects",
      n * n * (sizeof(double) + 0.5 * sizeof(QVSimItem)), [&] {
        matrix_.assign(count * count, 0.0);
        return true;
      });
  if (!fits) matrix_ = {};
  count_ = fits ? QVSystem::QVUnsignedFromCountChecked(count) : 0;
  return fits;
}

void QVSimInfo::Store(unsigned int first, unsigned int second, double similarity) {
  matrix_[std::size_t{count_} * first + second] = similarity;
  items_.push_back({similarity, first, second});
}

void QVSimInfo::CompareRow(const std::vector<QVMolData>& mols, std::size_t row) {
  QVChem::QVMCSSearch search(0);
  search.SetTimeBudget(secondsPerPair_);
  const QVMolData& a = mols[row];
  search.Init(*a.molecule, 0x1000208, 0x1100000);
  const unsigned int atomsOfA = a.molecule->GetNumAtoms();
  for (std::size_t column = row; column < mols.size(); ++column) {
    const QVMolData& b = mols[column];
    const unsigned int common = CountCommonAtoms(search, *b.molecule);
    numTimeSpent_ += search.WasTimeSpent();
    const unsigned int all = atomsOfA + b.molecule->GetNumAtoms() - common;
    Store(a.index, b.index, all == 0 ? 0.0 : static_cast<double>(common) / all);
  }
}

bool QVSimInfo::InitSimilarity(const std::vector<QVMolData>& mols) {
  const std::size_t n = mols.size();
  if (!Resize(n)) return false;
  std::size_t done = 0;
  for (std::size_t row = 0; compute_ && row < n; ++row) {
    CompareRow(mols, row);
    done += n - row;
    if (progress_) progress_(done, n * (n + 1) / 2);
  }
  if (numTimeSpent_ != 0)
    QVSystem::QVThrow.Warning(
        "QVSimInfo::InitSimilarity, the time of %zu of %zu substructure searches was spent",
        numTimeSpent_, items_.size());
  std::stable_sort(items_.begin(), items_.end(), LessSimItem());
  return true;
}

bool QVSimInfo::InitSimilarity(std::vector<double> matrix) {
  const auto n =
      static_cast<std::size_t>(std::llround(std::sqrt(static_cast<double>(matrix.size()))));
  if (n * n != matrix.size()) {
    QVSystem::QVThrow.Error("QVSimInfo::InitSimilarity, %zu values are no square matrix",
                            matrix.size());
    Resize(0);
    return false;
  }
  if (!Resize(n)) return false;
  matrix_ = std::move(matrix);
  for (unsigned int i = 0; i < n; ++i)
    for (unsigned int j = i; j < n; ++j) items_.push_back({matrix_[n * i + j], i, j});
  std::stable_sort(items_.begin(), items_.end(), LessSimItem());
  return true;
}

bool QVSimInfo::InitSimilarity(const std::vector<QVMolData>& mols,
                               const QVLikeness::QVVseprOptions& options) {
  if (!Resize(mols.size())) return false;
  QVLikeness::QVVseprIndex index;
  std::vector<double> tanimotos(mols.size());
  for (std::size_t column = 0; column < mols.size(); ++column) {
    const QVLikeness::QVVseprFingerprint fingerprint(*mols[column].molecule, options);
    index.Add(fingerprint);
    index.GetTanimotos(fingerprint, tanimotos.data());
    for (std::size_t row = 0; row <= column; ++row)
      Store(mols[row].index, mols[column].index, tanimotos[row]);
  }
  std::stable_sort(items_.begin(), items_.end(), LessSimItem());
  return true;
}

bool QVGetSNNCluster(Lists& clusters, std::size_t n, QVSimInfo& info) {
  const QVSNNParameters params = QVGetSNNParameters(n);
  PrintParameters(params);
  PrintSimilarities(info.GetMatrix(), info.GetCount());
  const Lists lists = QVGetNearestNeighbours(info.GetMatrix(), info.GetCount(), params.nbrCt);
  if (lists.empty()) {
    QVSystem::QVThrow.Warning("Failed to identify near-neghbors");
    return false;
  }
  PrintLists(lists);
  std::vector<unsigned int> noise;
  if (QVGetSNNCluster(clusters, noise, n, lists, params, true)) return true;
  QVSystem::QVThrow.Warning("Failed to generate cluster from NN list.");
  return false;
}

bool QVGetSNNCluster(std::vector<QVClusterNode<QVMolData>>& nodes, std::vector<QVMolData>& mols,
                     QVSimInfo& info) {
  Lists clusters;
  if (!QVGetSNNCluster(clusters, mols.size(), info)) return false;
  for (const auto& cluster : clusters) {
    QVClusterNode<QVMolData> node;
    for (const unsigned int member : cluster) node.AddMember(&mols[member]);
    nodes.push_back(std::move(node));
  }
  return !clusters.empty();
}

Lists QVGetNearestNeighbours(const std::vector<QVLikeness::QVVseprFingerprint>& fingerprints,
                             unsigned int k) {
  QVLikeness::QVVseprIndex index;
  for (const auto& fingerprint : fingerprints) index.Add(fingerprint);
  Lists lists;
  std::vector<double> tanimotos(fingerprints.size());
  BestNeighbours best;
  for (const auto& fingerprint : fingerprints) {
    index.GetTanimotos(fingerprint, tanimotos.data());
    best.Start(k);
    for (std::size_t j = 0; j < tanimotos.size(); ++j)
      best.Offer(tanimotos[j], static_cast<unsigned int>(j));
    lists.push_back(best.Take());
  }
  return lists;
}

}  // namespace QVStats
