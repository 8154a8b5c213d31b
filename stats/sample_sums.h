/// \file
/// \brief Sums whose rounding error grows with the logarithm of the number of terms.
#ifndef QVSTATS_SAMPLE_SUMS_H
#define QVSTATS_SAMPLE_SUMS_H

#include <cstddef>

namespace QVStats {

/// term(begin) + ... + term(end - 1), added in halves down to short runs.
template <class Term>
double QVSumTerms(std::size_t begin, std::size_t end, Term term) {
  if (end - begin > 128) {
    const std::size_t middle = begin + (end - begin) / 2;
    return QVSumTerms(begin, middle, term) + QVSumTerms(middle, end, term);
  }
  double sums[4] = {0.0, 0.0, 0.0, 0.0};
  std::size_t i = begin;
  for (; i + 4 <= end; i += 4)
    for (std::size_t lane = 0; lane < 4; ++lane) sums[lane] += term(i + lane);
  for (; i < end; ++i) sums[0] += term(i);
  return (sums[0] + sums[1]) + (sums[2] + sums[3]);
}

}  // namespace QVStats

#endif  // QVSTATS_SAMPLE_SUMS_H
