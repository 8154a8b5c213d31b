#include "platform/math/random.h"

#include <algorithm>
#include <boost/random/beta_distribution.hpp>
#include <boost/random/chi_squared_distribution.hpp>
#include <boost/random/exponential_distribution.hpp>
#include <boost/random/fisher_f_distribution.hpp>
#include <boost/random/gamma_distribution.hpp>
#include <boost/random/normal_distribution.hpp>
#include <boost/random/student_t_distribution.hpp>
#include <cmath>
#include <limits>
#include <numeric>
#include <utility>

namespace QVMath {

namespace {

/// The recurrence of the twister: the upper 33 bits of one word and the lower 31 of the next.
std::uint64_t Twist(std::uint64_t word, std::uint64_t next) {
  constexpr std::uint64_t kLowerBits = 0x7FFFFFFF;
  const std::uint64_t bits = (word & ~kLowerBits) | (next & kLowerBits);
  return (bits >> 1) ^ ((0 - (next & 1)) & 0xB5026F5AA96619E9u);
}

std::uint64_t Temper(std::uint64_t word) {
  word ^= (word >> 29) & 0x5555555555555555u;
  word ^= (word << 17) & 0x71D67FFFEDA60000u;
  word ^= (word << 37) & 0xFFF7EEE000000000u;
  return word ^ (word >> 43);
}

/// Fills with draws of a law when its parameters are valid, otherwise with NaN.
template <class Law>
void FillWith(bool valid, Law law, double* values, std::size_t count) {
  if (!valid) {
    std::fill_n(values, count, std::numeric_limits<double>::quiet_NaN());
    return;
  }
  for (std::size_t i = 0; i < count; ++i) values[i] = law();
}

bool IsPositive(double value) { return value > 0.0 && std::isfinite(value); }

/// The logarithm of an exponential variate of mean 1; its negative is a standard Gumbel variate.
double DrawLogExponential(boost::random::exponential_distribution<double>& law,
                          QVRanNumEngine& engine) {
  double value;
  do value = law(engine);
  while (value <= 0.0);
  return std::log(value);
}

// Below this a gamma variate may underflow to 0, and a quotient of two lose its meaning.
constexpr double kSmallShape = 0.1;

/// log(X / Y) of two gamma variates, however small their shapes a and b: G(a) has the law of
/// G(a + 1) U^(1/a). Where a logarithm would overflow the quotient keeps its sign.
double DrawLogGammaRatio(double a, double b, QVRanNumEngine& engine) {
  boost::random::gamma_distribution<double> aboveA(a + 1.0), aboveB(b + 1.0);
  const double x = aboveA(engine), logU = std::log(1.0 - engine.GetUniform());
  const double y = aboveB(engine), logV = std::log(1.0 - engine.GetUniform());
  return std::log(x / y) + (logU - (logV == 0.0 ? 0.0 : a / b * logV)) / a;
}

}  // namespace

void QVRanNumEngine::Seed(std::uint64_t seed) {
  state_[0] = seed;
  for (std::size_t i = 1; i < kBlock; ++i)
    state_[i] = 6364136223846793005u * (state_[i - 1] ^ (state_[i - 1] >> 62)) + i;
  next_ = kBlock;
}

void QVRanNumEngine::MakeBlock() {
  constexpr std::size_t kMiddle = 156;
  for (std::size_t i = 0; i < kBlock - kMiddle; ++i)
    state_[i] = state_[i + kMiddle] ^ Twist(state_[i], state_[i + 1]);
  for (std::size_t i = kBlock - kMiddle; i + 1 < kBlock; ++i)
    state_[i] = state_[i - (kBlock - kMiddle)] ^ Twist(state_[i], state_[i + 1]);
  state_[kBlock - 1] = state_[kMiddle - 1] ^ Twist(state_[kBlock - 1], state_[0]);
  for (std::size_t i = 0; i < kBlock; ++i) block_[i] = Temper(state_[i]);
  next_ = 0;
}

QVRealGenerator::~QVRealGenerator() = default;

double QVRealGenerator::operator()(QVRanNumEngine& engine) const {
  double value;
  Fill(engine, &value, 1);
  return value;
}

std::vector<double> QVRealGenerator::Draw(QVRanNumEngine& engine, std::size_t count) const {
  std::vector<double> values(count);
  Fill(engine, values.data(), count);
  return values;
}

void QVUniformDoubleRNG::SetParams(double lower, double upper) {
  lower_ = lower;
  upper_ = upper;
}

void QVUniformDoubleRNG::Fill(QVRanNumEngine& engine, double* values, std::size_t count) const {
  const double width = upper_ - lower_;
  const auto law = [&] {
    double value;
    do value = lower_ + width * engine.GetUniform();
    while (value >= upper_);  // reached by rounding only
    return value;
  };
  FillWith(lower_ < upper_ && std::isfinite(width), law, values, count);
}

void QVGaussianRNG::SetParams(double mean, double deviation) {
  mean_ = mean;
  deviation_ = deviation;
}

void QVGaussianRNG::Fill(QVRanNumEngine& engine, double* values, std::size_t count) const {
  boost::random::normal_distribution<double> unit;
  FillWith(
      deviation_ >= 0.0, [&] { return mean_ + deviation_ * unit(engine); }, values, count);
}

void QVStudentsTRNG::SetParams(double location, double scale, double degreesOfFreedom) {
  location_ = location;
  scale_ = scale;
  degreesOfFreedom_ = degreesOfFreedom;
}

void QVStudentsTRNG::Fill(QVRanNumEngine& engine, double* values, std::size_t count) const {
  const bool valid = IsPositive(degreesOfFreedom_);
  boost::random::student_t_distribution<double> unit(valid ? degreesOfFreedom_ : 1.0);
  FillWith(
      valid, [&] { return location_ + scale_ * unit(engine); }, values, count);
}

void QVGammaRNG::SetParams(double shape, double scale) {
  shape_ = shape;
  scale_ = scale;
}

void QVGammaRNG::Fill(QVRanNumEngine& engine, double* values, std::size_t count) const {
  const bool valid = IsPositive(shape_) && IsPositive(scale_);
  boost::random::gamma_distribution<double> law(valid ? shape_ : 1.0, valid ? scale_ : 1.0);
  FillWith(
      valid, [&] { return law(engine); }, values, count);
}

void QVChiSquaredRNG::SetParams(double degreesOfFreedom) { degreesOfFreedom_ = degreesOfFreedom; }

void QVChiSquaredRNG::Fill(QVRanNumEngine& engine, double* values, std::size_t count) const {
  const bool valid = IsPositive(degreesOfFreedom_);
  boost::random::chi_squared_distribution<double> law(valid ? degreesOfFreedom_ : 1.0);
  FillWith(
      valid, [&] { return law(engine); }, values, count);
}

void QVSnedecorsFRNG::SetParams(double numerator, double denominator) {
  numerator_ = numerator;
  denominator_ = denominator;
}

void QVSnedecorsFRNG::Fill(QVRanNumEngine& engine, double* values, std::size_t count) const {
  const bool valid = IsPositive(numerator_) && IsPositive(denominator_);
  if (valid && 0.5 * std::min(numerator_, denominator_) < kSmallShape) {
    const double logOdds = std::log(denominator_) - std::log(numerator_);
    const auto law = [&] {
      return std::exp(DrawLogGammaRatio(0.5 * numerator_, 0.5 * denominator_, engine) + logOdds);
    };
    FillWith(true, law, values, count);
    return;
  }
  boost::random::fisher_f_distribution<double> law(valid ? numerator_ : 1.0,
                                                   valid ? denominator_ : 1.0);
  FillWith(
      valid, [&] { return law(engine); }, values, count);
}

void QVBetaRNG::SetParams(double alpha, double beta) {
  alpha_ = alpha;
  beta_ = beta;
}

void QVBetaRNG::Fill(QVRanNumEngine& engine, double* values, std::size_t count) const {
  const bool valid = IsPositive(alpha_) && IsPositive(beta_);
  if (valid && std::min(alpha_, beta_) < kSmallShape) {
    const auto law = [&] {
      return 1.0 / (1.0 + std::exp(-DrawLogGammaRatio(alpha_, beta_, engine)));
    };
    FillWith(true, law, values, count);
    return;
  }
  boost::random::beta_distribution<double> law(valid ? alpha_ : 1.0, valid ? beta_ : 1.0);
  FillWith(
      valid, [&] { return law(engine); }, values, count);
}

void QVGumbelRNG::SetParams(double location, double scale) {
  location_ = location;
  scale_ = scale;
}

void QVGumbelRNG::Fill(QVRanNumEngine& engine, double* values, std::size_t count) const {
  QVGenExtremeValRNG(location_, scale_, 0.0).Fill(engine, values, count);
}

void QVGenExtremeValRNG::SetParams(double location, double scale, double shape) {
  location_ = location;
  scale_ = scale;
  shape_ = shape;
}

void QVGenExtremeValRNG::Fill(QVRanNumEngine& engine, double* values, std::size_t count) const {
  boost::random::exponential_distribution<double> exponential;
  const auto law = [&] {
    const double gumbel = -DrawLogExponential(exponential, engine);
    const double z = shape_ == 0.0 ? gumbel : std::expm1(shape_ * gumbel) / shape_;
    return location_ + scale_ * z;
  };
  FillWith(scale_ > 0.0, law, values, count);
}

void QVUniformIntRNG::SetParams(int lower, int upper) {
  lower_ = lower;
  count_ = upper < lower ? 1 : static_cast<std::uint64_t>(std::int64_t{upper} - lower) + 1;
}

std::vector<std::size_t> QVRandomShuffleOfIndices(std::size_t n, QVRanNumEngine& engine) {
  std::vector<std::size_t> indices(n);
  std::iota(indices.begin(), indices.end(), std::size_t{0});
  for (std::size_t left = n; left > 1; --left)
    std::swap(indices[left - 1], indices[engine.GetIndex(left)]);
  return indices;
}

void QVSampleWithoutReplacement(QVRanNumEngine& engine, std::vector<std::size_t>& chosen,
                                std::vector<std::size_t>& remaining, std::size_t count,
                                const std::vector<std::size_t>& candidates) {
  std::vector<std::size_t> pool(candidates);
  count = std::min(count, pool.size());
  for (std::size_t i = 0; i < count; ++i)
    std::swap(pool[i], pool[i + engine.GetIndex(pool.size() - i)]);
  const auto middle = pool.begin() + static_cast<std::ptrdiff_t>(count);
  chosen.assign(pool.begin(), middle);
  remaining.assign(middle, pool.end());
}

std::vector<std::size_t> QVSampleWithReplacement(QVRanNumEngine& engine, std::size_t count,
                                                 const std::vector<std::size_t>& candidates) {
  if (candidates.empty()) return {};
  std::vector<std::size_t> drawn(count);
  for (std::size_t& index : drawn) index = candidates[engine.GetIndex(candidates.size())];
  return drawn;
}

}  // namespace QVMath
