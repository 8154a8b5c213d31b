/// \file
/// \brief The selection of an object's near neighbours from its similarities.
#ifndef QVSTATS_SNN_SELECTION_H
#define QVSTATS_SNN_SELECTION_H

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

namespace QVStats {

/// The k best of a stream of (similarity, index) pairs that come in ascending order of the index.
/// What is no number counts as the lowest similarity. Candidates are gathered and now and then cut
/// down to k, which costs less than keeping the best in order all the time.
class BestNeighbours {
 public:
  void Start(std::size_t k) {
    k_ = k;
    threshold_ = std::numeric_limits<double>::quiet_NaN();  // passed by all
    candidates_.clear();
  }

  void Offer(double similarity, unsigned int index) {
    if (similarity <= threshold_) return;
    const double lowest = -std::numeric_limits<double>::infinity();
    candidates_.push_back({std::isnan(similarity) ? lowest : similarity, index});
    if (candidates_.size() >= 2 * k_ + 8) Cut();
  }

  std::vector<unsigned int> Take() {
    Cut();
    std::sort(candidates_.begin(), candidates_.end(), IsBetter);
    std::vector<unsigned int> indices;
    indices.reserve(candidates_.size());
    for (const Neighbour& neighbour : candidates_) indices.push_back(neighbour.index);
    return indices;
  }

 private:
  struct Neighbour {
    double similarity;
    unsigned int index;
  };

  static bool IsBetter(const Neighbour& a, const Neighbour& b) {
    return a.similarity > b.similarity || (a.similarity == b.similarity && a.index < b.index);
  }

  void Cut() {
    if (candidates_.size() <= k_) return;
    const auto end = candidates_.begin() + static_cast<std::ptrdiff_t>(k_);
    if (k_ != 0) {
      std::nth_element(candidates_.begin(), end - 1, candidates_.end(), IsBetter);
      threshold_ = candidates_[k_ - 1].similarity;
    }
    candidates_.erase(end, candidates_.end());
  }

  std::size_t k_ = 0;
  double threshold_ = 0.0;
  std::vector<Neighbour> candidates_;
};

}  // namespace QVStats

#endif  // QVSTATS_SNN_SELECTION_H
