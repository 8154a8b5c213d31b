/// \file
/// \brief A small seedable generator for thinning and shuffling inside the library.
#ifndef QV_PLATFORM_SYSTEM_RANDOM_H
#define QV_PLATFORM_SYSTEM_RANDOM_H

#include <cstdint>

namespace QVSystem {

/// Uniform numbers from a seed: the same on every platform, and independent for different seeds.
/// The state is one counter, so that making one costs nothing.
/// Source: G. L. Steele, D. Lea, C. H. Flood, "Fast Splittable Pseudorandom Number Generators",
/// OOPSLA 2014, doi:10.1145/2660193.2660195 (SplitMix64).
class QVRandom {
 public:
  explicit QVRandom(std::uint64_t seed = 0) : state_(seed) {}

  /// Starts the sequence of `seed` over.
  void SetSeed(std::uint64_t seed) { state_ = seed; }

  /// \return 64 random bits.
  std::uint64_t NextBits() {
    std::uint64_t z = state_ += 0x9e3779b97f4a7c15u;
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9u;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebu;
    return z ^ (z >> 31);
  }
  /// \return a multiple of 2^-24 in [0, 1).
  float NextFloat() { return static_cast<float>(NextBits() >> 40) * 0x1p-24f; }
  /// \return a multiple of 2^-53 in [0, 1).
  double NextDouble() { return static_cast<double>(NextBits() >> 11) * 0x1p-53; }
  /// \return an integer in [0, bound); 0 for a bound of 0. Exact up to 2^53.
  std::uint64_t NextBelow(std::uint64_t bound) {
    return static_cast<std::uint64_t>(NextDouble() * static_cast<double>(bound));
  }

 private:
  std::uint64_t state_;
};

}  // namespace QVSystem

#endif  // QV_PLATFORM_SYSTEM_RANDOM_H
