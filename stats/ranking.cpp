#include "stats/ranking.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace QVStats {

namespace {

/// A value as an integer of the same order, and where it stands.
struct Keyed {
  std::uint64_t key;
  std::uint32_t position;
};

std::uint64_t GetKey(double value) {
  value += 0.0;  // -0 becomes 0
  std::uint64_t bits;
  std::memcpy(&bits, &value, sizeof bits);
  constexpr std::uint64_t kSign = std::uint64_t{1} << 63;
  return bits & kSign ? ~bits : bits | kSign;
}

bool IsBefore(const Keyed& a, const Keyed& b) {
  return a.key != b.key ? a.key < b.key : a.position < b.position;
}

/// Sorts by the key and the position, values that stand in the order of their positions: stably by
/// a digit of kBits at a time, from the lower to the higher. Digits that all share are skipped. Of
/// the others the highest few tell almost all values apart; what they leave equal is compared.
template <unsigned int kBits>
void RadixSort(std::vector<Keyed>& values) {
  constexpr unsigned int kNumDigits = (64 + kBits - 1) / kBits;
  constexpr unsigned int kDigitsToSortBy = 3;
  constexpr std::size_t kNumDigitValues = std::size_t{1} << kBits;
  const auto getDigit = [](std::uint64_t key, unsigned int digit) {
    return static_cast<std::size_t>(key >> (digit * kBits)) & (kNumDigitValues - 1);
  };
  std::uint64_t varying = 0;
  for (const Keyed& value : values) varying |= value.key ^ values.front().key;
  unsigned int lowest = kNumDigits;
  for (unsigned int digits = 0; lowest > 0 && digits < kDigitsToSortBy;)
    digits += getDigit(varying, --lowest) != 0;
  std::vector<Keyed> sorted(values.size());
  for (unsigned int digit = lowest; digit < kNumDigits; ++digit) {
    if (getDigit(varying, digit) == 0) continue;
    std::array<std::uint32_t, kNumDigitValues> next{};
    for (const Keyed& value : values) ++next[getDigit(value.key, digit)];
    std::uint32_t start = 0;
    for (std::uint32_t& count : next) {
      const std::uint32_t size = count;
      count = start;
      start += size;
    }
    for (const Keyed& value : values) sorted[next[getDigit(value.key, digit)]++] = value;
    values.swap(sorted);
  }
  const unsigned int shift = lowest * kBits;
  if ((varying & ((std::uint64_t{1} << shift) - 1)) == 0) return;
  for (auto first = values.begin(); first != values.end();) {
    auto last = first + 1;
    while (last != values.end() && last->key >> shift == first->key >> shift) ++last;
    if (!std::is_sorted(first, last, IsBefore)) std::sort(first, last, IsBefore);
    first = last;
  }
}

void Sort(std::vector<Keyed>& values) {
  // Wide digits are fewer passes, but more counts to set up.
  constexpr std::size_t kFewValues = 256, kManyValues = 16384;
  if (values.size() > kManyValues) return RadixSort<11>(values);
  if (values.size() > kFewValues) return RadixSort<8>(values);
  std::sort(values.begin(), values.end(), IsBefore);
}

void SortByInsertion(std::uint32_t* first, std::uint32_t* last, std::uint64_t& inversions) {
  for (std::uint32_t* i = first; i < last; ++i) {
    const std::uint32_t value = *i;
    std::uint32_t* j = i;
    for (; j > first && j[-1] > value; --j) *j = j[-1];
    *j = value;
    inversions += static_cast<std::uint64_t>(i - j);
  }
}

/// Merges [left, middle) and [middle, right) to `out`. \return the inversions between the two.
std::uint64_t Merge(const std::uint32_t* left, const std::uint32_t* middle,
                    const std::uint32_t* right, std::uint32_t* out) {
  std::uint64_t inversions = 0;
  const std::uint32_t* second = middle;
  while (left < middle && second < right) {
    // Free of branches, which would be mispredicted every other time.
    const bool takeSecond = *second < *left;
    *out++ = takeSecond ? *second : *left;
    inversions += takeSecond ? static_cast<std::uint64_t>(middle - left) : 0;
    second += takeSecond;
    left += !takeSecond;
  }
  out = std::copy(left, middle, out);
  std::copy(second, right, out);
  return inversions;
}

/// The same for halves of `width` values each: from both ends at once, which the processor
/// overlaps. As many steps as a half is long never run out of either half.
std::uint64_t MergeHalves(const std::uint32_t* left, std::size_t width, std::uint32_t* out) {
  const std::uint32_t* const middle = left + width;
  const std::uint32_t* second = middle;
  const std::uint32_t* leftEnd = middle;
  const std::uint32_t* secondEnd = middle + width;
  std::uint32_t* outEnd = out + 2 * width;
  std::uint64_t inversions = 0;
  for (std::size_t step = 0; step < width; ++step) {
    const bool takeSecond = *second < *left;
    *out++ = takeSecond ? *second : *left;
    inversions += takeSecond ? static_cast<std::uint64_t>(middle - left) : 0;
    second += takeSecond;
    left += !takeSecond;
    const bool takeLast = !(secondEnd[-1] < leftEnd[-1]);
    *--outEnd = takeLast ? secondEnd[-1] : leftEnd[-1];
    inversions += takeLast ? static_cast<std::uint64_t>(middle - leftEnd) : 0;
    secondEnd -= takeLast;
    leftEnd -= !takeLast;
  }
  return inversions;
}

}  // namespace

std::uint64_t QVRanking::CountTies() const {
  std::uint64_t ties = 0;
  for (std::size_t r = 0; r < GetNumRanks(); ++r) {
    const std::uint64_t size = starts[r + 1] - starts[r];
    ties += size * (size - 1) / 2;
  }
  return ties;
}

double QVRanking::GetTieTerm() const {
  double sum = 0.0;
  for (std::size_t r = 0; r < GetNumRanks(); ++r) {
    const double t = static_cast<double>(starts[r + 1] - starts[r]);
    sum += t * t * t - t;
  }
  return sum;
}

QVRanking QVRankValues(const std::vector<double>& values) {
  const auto n = static_cast<std::uint32_t>(values.size());
  std::vector<Keyed> keyed(n);
  for (std::uint32_t i = 0; i < n; ++i) keyed[i] = {GetKey(values[i]), i};
  Sort(keyed);
  QVRanking ranking;
  ranking.starts.reserve(n + std::size_t{1});
  ranking.order.resize(n);
  ranking.rank.resize(n);
  for (std::uint32_t i = 0; i < n; ++i) {
    if (i == 0 || keyed[i].key != keyed[i - 1].key) ranking.starts.push_back(i);
    ranking.order[i] = keyed[i].position;
    ranking.rank[keyed[i].position] = static_cast<std::uint32_t>(ranking.starts.size() - 1);
  }
  ranking.starts.push_back(n);
  return ranking;
}

std::uint64_t QVCountInversions(std::vector<std::uint32_t>& sequence) {
  const std::size_t n = sequence.size();
  constexpr std::size_t kRun = 8;
  std::uint64_t inversions = 0;
  std::uint32_t* const data = sequence.data();
  for (std::size_t low = 0; low < n; low += kRun)
    SortByInsertion(data + low, data + std::min(low + kRun, n), inversions);
  std::vector<std::uint32_t> merged(n);
  for (std::size_t width = kRun; width < n; width *= 2) {
    const std::uint32_t* const from = sequence.data();
    std::size_t low = 0;
    for (; low + 2 * width <= n; low += 2 * width)
      inversions += MergeHalves(from + low, width, merged.data() + low);
    inversions += Merge(from + low, from + std::min(low + width, n), from + n, merged.data() + low);
    sequence.swap(merged);
  }
  return inversions;
}

}  // namespace QVStats
