/// \file
/// \brief Where the components of a mixture in d dimensions begin.
#ifndef QVSTATS_GAUSSIAN_MIXTURE_MODEL_SEEDS_H
#define QVSTATS_GAUSSIAN_MIXTURE_MODEL_SEEDS_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace QVStats {

struct QVMultiDimSeeds {
  std::vector<std::vector<double>> means;  ///< of each part, d values
  std::vector<double> covariance;          ///< within the parts, pooled; d x d
};

/// Cuts the points (n d values) into parts along their first principal axis and improves these by
/// Lloyd's algorithm, with variables scaled to unit variance. A part without points keeps the mean
/// it had.
/// \return false for data that are not finite or of which a variable is constant.
/// Source: S. P. Lloyd, "Least squares quantization in PCM", IEEE Trans. Inf. Theory 28(2), 1982.
bool QVFindMultiDimSeeds(const std::vector<double>& data, std::size_t d, std::uint64_t numParts,
                         QVMultiDimSeeds& seeds);

}  // namespace QVStats

#endif  // QVSTATS_GAUSSIAN_MIXTURE_MODEL_SEEDS_H
