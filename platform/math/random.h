/// \file
/// \brief Random numbers: the engine, generators of every family, shuffles and samples of indices.
///
/// The engine and the laws are the same on every platform, so a seed gives the same numbers
/// everywhere (to the rounding of the platform's exp and log). A generator holds parameters only;
/// all state is in the engine that the caller passes. Drawing modifies the engine, so calls that
/// share an engine must not run at the same time.
#ifndef QV_PLATFORM_MATH_RANDOM_H
#define QV_PLATFORM_MATH_RANDOM_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/math/export.h"

namespace QVMath {

/// The source of random bits: the 64-bit Mersenne Twister, whose sequence for a seed is fixed by
/// the C++ standard (std::mt19937_64). Numbers are made a block at a time, by loops that compilers
/// turn into vector code. Copies continue the same sequence independently. It meets the standard's
/// requirements of a uniform random bit generator.
/// Source: M. Matsumoto, T. Nishimura, ACM Trans. Model. Comput. Simul. 8(1), 1998.
class QVMATH_EXPORT QVRanNumEngine {
 public:
  using result_type = std::uint64_t;

  explicit QVRanNumEngine(std::uint64_t seed = 5489u) { Seed(seed); }
  /// Starts the sequence of a seed.
  void Seed(std::uint64_t seed);

  static constexpr result_type min() { return 0; }
  static constexpr result_type max() { return ~result_type{0}; }
  /// 64 random bits.
  result_type operator()() {
    if (next_ == kBlock) MakeBlock();
    return block_[next_++];
  }
  /// A multiple of 2^-53, uniform on [0, 1).
  double GetUniform() { return static_cast<double>((*this)() >> 11) * 0x1p-53; }
  /// An integer, uniform on 0 ... count - 1; 0 for a count of 0. Multiplication with rejection: no
  /// bias, and no division on the usual path.
  /// Source: D. Lemire, "Fast Random Integer Generation in an Interval", ACM Trans. Model. Comput.
  /// Simul. 29(1), 2019.
  std::uint64_t GetIndex(std::uint64_t count) {
    __extension__ using Wide = unsigned __int128;
    Wide product = static_cast<Wide>((*this)()) * count;
    if (static_cast<std::uint64_t>(product) < count) {
      const std::uint64_t refused = (0 - count) % (count == 0 ? 1 : count);
      while (static_cast<std::uint64_t>(product) < refused)
        product = static_cast<Wide>((*this)()) * count;
    }
    return static_cast<std::uint64_t>(product >> 64);
  }
  /// `number` draws of GetIndex(count): `take(index)` receives them in order. It must not draw.
  template <class Take>
  void DrawIndices(std::uint64_t count, std::size_t number, Take take) {
    __extension__ using Wide = unsigned __int128;
    while (number > 0) {
      if (next_ == kBlock) MakeBlock();
      const std::uint64_t* word = block_ + next_;
      const std::uint64_t* const end = word + std::min(number, kBlock - next_);
      for (; word < end; ++word) {
        const Wide product = static_cast<Wide>(*word) * count;
        if (static_cast<std::uint64_t>(product) < count) break;
        take(static_cast<std::uint64_t>(product >> 64));
      }
      const bool mayRefuse = word < end;
      const std::size_t drawn = static_cast<std::size_t>(word - block_) - next_;
      next_ += drawn;
      number -= drawn;
      if (mayRefuse) {
        take(GetIndex(count));
        --number;
      }
    }
  }

 private:
  static constexpr std::size_t kBlock = 312;

  void MakeBlock();

  std::uint64_t state_[kBlock];
  std::uint64_t block_[kBlock];  // the numbers that the state gives
  std::size_t next_;             // the next of them; kBlock when all are drawn
};

/// A law of real numbers from which values are drawn. Parameters outside their range are no error:
/// the values drawn are then NaN.
class QVMATH_EXPORT QVRealGenerator {
 public:
  virtual ~QVRealGenerator();
  /// Draws `count` values into `values`, the same as as many single draws and cheaper.
  virtual void Fill(QVRanNumEngine& engine, double* values, std::size_t count) const = 0;
  /// Draws one value.
  double operator()(QVRanNumEngine& engine) const;
  /// Draws `count` values.
  std::vector<double> Draw(QVRanNumEngine& engine, std::size_t count) const;
};

/// Uniform on [lower, upper).
class QVMATH_EXPORT QVUniformDoubleRNG : public QVRealGenerator {
 public:
  explicit QVUniformDoubleRNG(double lower = 0.0, double upper = 1.0) { SetParams(lower, upper); }
  void SetParams(double lower, double upper);
  void Fill(QVRanNumEngine& engine, double* values, std::size_t count) const override;

 private:
  double lower_;
  double upper_;
};

/// Gaussian with a mean and a standard deviation (>= 0).
class QVMATH_EXPORT QVGaussianRNG : public QVRealGenerator {
 public:
  explicit QVGaussianRNG(double mean = 0.0, double deviation = 1.0) { SetParams(mean, deviation); }
  void SetParams(double mean, double deviation);
  void Fill(QVRanNumEngine& engine, double* values, std::size_t count) const override;

 private:
  double mean_;
  double deviation_;
};

/// location + scale * T, T a Student's t variate with degreesOfFreedom > 0.
class QVMATH_EXPORT QVStudentsTRNG : public QVRealGenerator {
 public:
  explicit QVStudentsTRNG(double location = 0.0, double scale = 1.0,
                          double degreesOfFreedom = 1.0) {
    SetParams(location, scale, degreesOfFreedom);
  }
  void SetParams(double location, double scale, double degreesOfFreedom);
  void Fill(QVRanNumEngine& engine, double* values, std::size_t count) const override;

 private:
  double location_;
  double scale_;
  double degreesOfFreedom_;
};

/// Gamma with density x^(shape - 1) exp(-x / scale) / (Gamma(shape) scale^shape); both > 0.
class QVMATH_EXPORT QVGammaRNG : public QVRealGenerator {
 public:
  explicit QVGammaRNG(double shape = 1.0, double scale = 1.0) { SetParams(shape, scale); }
  void SetParams(double shape, double scale);
  void Fill(QVRanNumEngine& engine, double* values, std::size_t count) const override;

 private:
  double shape_;
  double scale_;
};

/// Chi-squared with degreesOfFreedom > 0, which need not be an integer.
class QVMATH_EXPORT QVChiSquaredRNG : public QVRealGenerator {
 public:
  explicit QVChiSquaredRNG(double degreesOfFreedom = 1.0) { SetParams(degreesOfFreedom); }
  void SetParams(double degreesOfFreedom);
  void Fill(QVRanNumEngine& engine, double* values, std::size_t count) const override;

 private:
  double degreesOfFreedom_;
};

/// Snedecor's F: (chi-squared(d1) / d1) / (chi-squared(d2) / d2); d1, d2 > 0.
class QVMATH_EXPORT QVSnedecorsFRNG : public QVRealGenerator {
 public:
  explicit QVSnedecorsFRNG(double numerator = 1.0, double denominator = 1.0) {
    SetParams(numerator, denominator);
  }
  void SetParams(double numerator, double denominator);
  void Fill(QVRanNumEngine& engine, double* values, std::size_t count) const override;

 private:
  double numerator_;
  double denominator_;
};

/// Beta with density proportional to x^(alpha - 1) (1 - x)^(beta - 1) on [0, 1]; both > 0.
class QVMATH_EXPORT QVBetaRNG : public QVRealGenerator {
 public:
  explicit QVBetaRNG(double alpha = 1.0, double beta = 1.0) { SetParams(alpha, beta); }
  void SetParams(double alpha, double beta);
  void Fill(QVRanNumEngine& engine, double* values, std::size_t count) const override;

 private:
  double alpha_;
  double beta_;
};

/// Gumbel (largest extreme value): distribution function exp(-exp(-(x - location) / scale)),
/// scale > 0.
class QVMATH_EXPORT QVGumbelRNG : public QVRealGenerator {
 public:
  explicit QVGumbelRNG(double location = 0.0, double scale = 1.0) { SetParams(location, scale); }
  void SetParams(double location, double scale);
  void Fill(QVRanNumEngine& engine, double* values, std::size_t count) const override;

 private:
  double location_;
  double scale_;
};

/// Generalised extreme value: distribution function exp(-(1 + shape z)^(-1 / shape)) with
/// z = (x - location) / scale, scale > 0; the Gumbel law at shape 0.
class QVMATH_EXPORT QVGenExtremeValRNG : public QVRealGenerator {
 public:
  explicit QVGenExtremeValRNG(double location = 0.0, double scale = 1.0, double shape = 0.0) {
    SetParams(location, scale, shape);
  }
  void SetParams(double location, double scale, double shape);
  void Fill(QVRanNumEngine& engine, double* values, std::size_t count) const override;

 private:
  double location_;
  double scale_;
  double shape_;
};

/// An integer, uniform on lower ... upper, both included. With upper < lower it is always lower.
class QVMATH_EXPORT QVUniformIntRNG {
 public:
  explicit QVUniformIntRNG(int lower = 0, int upper = 1) { SetParams(lower, upper); }
  void SetParams(int lower, int upper);
  int operator()(QVRanNumEngine& engine) const {
    return static_cast<int>(lower_ + static_cast<std::int64_t>(engine.GetIndex(count_)));
  }
  /// Draws `count` values into `values`, the same as as many single draws.
  void Fill(QVRanNumEngine& engine, int* values, std::size_t count) const {
    Draw(engine, count, [&values](int value) { *values++ = value; });
  }
  /// Draws `number` values, the same again: `take(value)` receives them in order.
  template <class Take>
  void Draw(QVRanNumEngine& engine, std::size_t number, Take take) const {
    engine.DrawIndices(count_, number, [&](std::uint64_t index) {
      take(static_cast<int>(lower_ + static_cast<std::int64_t>(index)));
    });
  }

 private:
  std::int64_t lower_;
  std::uint64_t count_;  // of the integers in the range
};

/// \return a permutation of 0 ... n - 1, each with the same probability (Fisher and Yates).
QVMATH_EXPORT std::vector<std::size_t> QVRandomShuffleOfIndices(std::size_t n,
                                                                QVRanNumEngine& engine);

/// Draws `count` of the candidates without replacement, every subset with the same probability.
/// \param chosen    the drawn ones, in draw order; replaced.
/// \param remaining the others, in no particular order; replaced.
/// A count above the number of candidates draws them all.
QVMATH_EXPORT void QVSampleWithoutReplacement(QVRanNumEngine& engine,
                                              std::vector<std::size_t>& chosen,
                                              std::vector<std::size_t>& remaining,
                                              std::size_t count,
                                              const std::vector<std::size_t>& candidates);

/// \return `count` of the candidates drawn with replacement, in draw order; none without
/// candidates.
QVMATH_EXPORT std::vector<std::size_t> QVSampleWithReplacement(
    QVRanNumEngine& engine, std::size_t count, const std::vector<std::size_t>& candidates);

}  // namespace QVMath

#endif  // QV_PLATFORM_MATH_RANDOM_H
