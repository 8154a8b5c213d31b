/// \file
/// \brief A vector of bits with a size fixed by its owner.
#ifndef QV_PLATFORM_SYSTEM_BIT_VECTOR_H
#define QV_PLATFORM_SYSTEM_BIT_VECTOR_H

#include <climits>
#include <cstddef>
#include <vector>

#include "platform/system/error_handler.h"

namespace QVSystem {

/// At most INT_MAX bits; a greater size is a fatal report and leaves the vector empty. A bit beyond
/// the size reads as clear and cannot be set.
class QVBitVector {
 public:
  QVBitVector() = default;
  explicit QVBitVector(std::size_t size) { Resize(size); }

  std::size_t GetSize() const { return bits_.size(); }
  /// Sets the size and clears every bit.
  void Resize(std::size_t size) {
    const bool fits = size <= static_cast<std::size_t>(INT_MAX);
    if (!fits)
      QVReportFailedAssertion("Max size for an QVBitVector is INT_MAX", __LINE__, __FILE__);
    bits_.assign(fits ? size : 0, false);
  }

  bool IsBitOn(std::size_t bit) const { return bit < bits_.size() && bits_[bit]; }
  void SetBitOn(std::size_t bit) { Set(bit, true); }
  void SetBitOff(std::size_t bit) { Set(bit, false); }
  void ClearBits() { bits_.assign(bits_.size(), false); }

  std::size_t CountBits() const {
    std::size_t count = 0;
    for (const bool bit : bits_) count += bit ? 1 : 0;
    return count;
  }

 private:
  void Set(std::size_t bit, bool on) {
    if (bit < bits_.size()) bits_[bit] = on;
  }

  std::vector<bool> bits_;
};

}  // namespace QVSystem

#endif  // QV_PLATFORM_SYSTEM_BIT_VECTOR_H
