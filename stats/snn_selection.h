/// \file
/// \brief The selection of an object's near neighbours from its similarities.
#ifndef QVSTATS_SNN_SELECTION_H
#define QVSTATS_SNN_SELECTION_H

#include <algorithm>
#include <cstddef>
#include <vector>

namespace QVStats {

/// The k best of a stream of (similarity, index) pairs that come in ascending order of the index.
class BestNeighbours {
 public:
  void Start(std::size_t k) {
    k_ = k;
    heap_.clear();
  }

  void Offer(double similarity, unsigned int index) {
    if (heap_.size() < k_) {
      heap_.push_back({similarity, index});
      std::push_heap(heap_.begin(), heap_.end(), IsBetter);
    } else if (k_ != 0 && similarity > heap_.front().similarity) {
      std::pop_heap(heap_.begin(), heap_.end(), IsBetter);
      heap_.back() = {similarity, index};
      std::push_heap(heap_.begin(), heap_.end(), IsBetter);
    }
  }

  std::vector<unsigned int> Take() {
    std::sort_heap(heap_.begin(), heap_.end(), IsBetter);
    std::vector<unsigned int> indices;
    indices.reserve(heap_.size());
    for (const Neighbour& neighbour : heap_) indices.push_back(neighbour.index);
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

  std::size_t k_ = 0;
  std::vector<Neighbour> heap_;  // the worst one in front
};

}  // namespace QVStats

#endif  // QVSTATS_SNN_SELECTION_H
