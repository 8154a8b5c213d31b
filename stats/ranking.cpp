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

/// Sorts by the key, stably, a digit of kBits at a time from the lowest; digits that all share are
/// skipped.
template <unsigned int kBits>
void RadixSort(std::vector<Keyed>& values) {
  constexpr unsigned int kNumDigits = (64 + kBits - 1) / kBits;
  constexpr std::size_t kNumDigitValues = std::size_t{1} << kBits;
  const auto getDigit = [](std::uint64_t key, unsigned int digit) {
    return static_cast<std::size_t>(key >> (digit * kBits)) & (kNumDigitValues - 1);
  };
  using Histogram = std::array<std::uint32_t, kNumDigitValues>;
  std::vector<Histogram> histograms(kNumDigits, Histogram{});
  for (const Keyed& value : values)
    for (unsigned int digit = 0; digit < kNumDigits; ++digit)
      ++histograms[digit][getDigit(value.key, digit)];
  std::vector<Keyed> sorted(values.size());
  for (unsigned int digit = 0; digit < kNumDigits; ++digit) {
    Histogram& next = histograms[digit];
    if (next[getDigit(values.front().key, digit)] == values.size()) continue;
    std::uint32_t start = 0;
    for (std::uint32_t& count : next) {
      const std::uint32_t size = count;
      count = start;
      start += size;
    }
    for (const Keyed& value : values) sorted[next[getDigit(value.key, digit)]++] = value;
    values.swap(sorted);
  }
}

void Sort(std::vector<Keyed>& values) {
  // Wide digits are fewer passes, but more counts to set up.
  constexpr std::size_t kFewValues = 256, kManyValues = 16384;
  if (values.size() > kManyValues) return RadixSort<11>(values);
  if (values.size() > kFewValues) return RadixSort<8>(values);
  std::sort(values.begin(), values.end(), [](const Keyed& a, const Keyed& b) {
    return a.key != b.key ? a.key < b.key : a.position < b.position;
  });
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
    for (std::size_t low = 0; low < n; low += 2 * width)
      inversions += Merge(from + low, from + std::min(low + width, n),
                          from + std::min(low + 2 * width, n), merged.data() + low);
    sequence.swap(merged);
  }
  return inversions;
}

}  // namespace QVStats
