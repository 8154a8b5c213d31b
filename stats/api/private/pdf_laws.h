/// \file
/// \brief The mathematics of each univariate family, without names, checks or results.
///
/// A law holds the parameters of a family and the constants that follow from them. All laws have
/// the same members, which QVUniVarLawImpl (stats/api/pdf_families.h) calls:
/// - SetParams: takes the parameters in the order of their random-variable types; false when one
///   that must be positive is not;
/// - Density, LogDensity, CDF, Survival, LogSurvival at x, and UpperTailPercentile at q;
/// - Mean, Variance, Mode;
/// - ClosedPercentile, or for families whose percentiles are searched GetSlope, and GetPowerForm
/// and
///   FillCDF for computation in bulk.
#ifndef QVSTATS_API_PRIVATE_PDF_LAWS_H
#define QVSTATS_API_PRIVATE_PDF_LAWS_H

#include <array>
#include <cstddef>
#include <cstdint>

#include "platform/math/random.h"
#include "stats/api/ran_var.h"
#include "stats/api/stat_model.h"

namespace QVStats {
namespace QVLaws {

/// A moment, or the failure code that says why there is none.
struct Moment {
  double value;
  unsigned int failure = QVStatModelFailureType::Undefined;
};

/// Where a search for percentiles looks.
enum class Search {
  FromBothSides,  ///< brackets below and above 0
  FromZero,       ///< between 0 and a bracket above
  UnitInterval,   ///< between 0 and 1
  ClosedForm      ///< nowhere: the inverse is known
};

/// Every searched family is of Pearson's system: with s the distance from a point,
/// f'(s) / f(s) = (n0 + n1 s) / (d0 + d1 s + d2 s^2). `radius` is the distance from the point to
/// the nearest complex root of the denominator.
struct Slope {
  double n0, n1, d0, d1, d2, radius;
};

/// The logarithm of a density in parts, log f = p log(first) + q log(second) + rest: the form in
/// which densities are computed in bulk. The powers p, q are the law's GetFirstPower() and
/// GetSecondPower(); HasPowerDensity() is false for parameters with which it would lose digits.
struct PowerForm {
  double first, second, rest;
};

constexpr double kFineTolerance = 2.220446049250313e-14;

/// How many values the functions named Fill take at a time, at most.
constexpr std::size_t kBlock = 256;

/// A power series with positive terms whose coefficients are kept, c_0 = 1.
class PositiveSeries {
 public:
  /// Takes c_(k+1) / c_k from `ratioAt(k)`.
  template <class Ratio>
  void SetRatios(Ratio ratioAt) {
    coefficients_[0] = 1.0;
    for (std::size_t k = 1; k < kSize; ++k)
      coefficients_[k] = coefficients_[k - 1] * ratioAt(static_cast<double>(k - 1));
  }
  /// \return whether the sum at x is complete to rounding within the kept terms.
  bool Sum(double x, double& total) const;
  /// The sums at n arguments, NaN where one is not complete. The arrays may be the same.
  void Fill(std::size_t n, const double* x, double* totals) const;

 private:
  static constexpr std::size_t kSize = 84;  // enough for x = 0.62 where the terms fall like x^k
  std::array<double, kSize> coefficients_{};
};

/// The regularised incomplete beta integral of fixed parameters a, b.
class BetaIntegral {
 public:
  void SetParams(double a, double b);
  /// I_x(a, b), given x and y = 1 - x, each with all its digits.
  double Lower(double x, double y) const;
  double Upper(double x, double y) const;
  /// Lower at n <= kBlock pairs of x and y.
  void FillLower(std::size_t n, const double* x, const double* y, double* values) const;
  /// log I_x(a, b), also where I_x(a, b) underflows.
  double LogLower(double x, double y) const;
  double LogUpper(double x, double y) const;
  /// log(x^a y^b / B(a, b)).
  double LogPower(double x, double y) const;
  double GetLogBeta() const { return logBeta_; }
  /// Whether a and b are so large that x^a y^b / B(a, b) loses digits as the exponential of a sum.
  bool HasLargeParams() const { return large_; }

 private:
  double a_ = 1.0;
  double b_ = 1.0;
  double logBeta_ = 0.0;
  bool large_ = false;
  PositiveSeries lowerSeries_, upperSeries_;
};

/// The regularised incomplete gamma integral of a fixed parameter a.
class GammaIntegral {
 public:
  void SetParams(double a);
  /// P(a, y).
  double Lower(double y) const;
  /// Q(a, y) = 1 - P(a, y).
  double Upper(double y) const;
  /// Lower at n <= kBlock arguments, which may be the array of the values.
  void FillLower(std::size_t n, const double* y, double* values) const;
  /// log Q(a, y), also where Q(a, y) underflows.
  double LogUpper(double y) const;
  /// log(y^a exp(-y) / Gamma(a)).
  double LogPower(double y) const;
  double GetLogGamma() const { return logGamma_; }
  /// Whether a is so large that y^a exp(-y) / Gamma(a) loses digits as the exponential of a sum.
  bool HasLargeParams() const { return large_; }

 private:
  double a_ = 1.0;
  double logGamma_ = 0.0;
  bool large_ = false;
  PositiveSeries series_;
};

class Gauss {
 public:
  static constexpr const char* kClassName = "QVUniVarGaussImpl";
  static constexpr const char* kDrawClassName = kClassName;
  static constexpr std::uint64_t kPdfType = QVPDFType::UniVariateGaussian;
  static constexpr std::uint64_t kNumParams = 2;
  static constexpr std::uint64_t kOutcomeType = 2;
  static constexpr Search kSearch = Search::FromBothSides;
  static constexpr double kTolX = kFineTolerance;
  static constexpr double kTolY = kFineTolerance;

  bool SetParams(const double* params);
  double Density(double x) const;
  double LogDensity(double x) const;
  double CDF(double x) const;
  void FillCDF(std::size_t n, const double* x, double* values) const;
  double Survival(double x) const;
  double LogSurvival(double x) const;
  double UpperTailPercentile(double q) const;
  Moment Mean() const { return {mean_}; }
  Moment Variance() const { return {1.0 / precision_}; }
  Moment Mode() const { return {mean_}; }
  bool HasPowerDensity() const { return true; }
  double GetFirstPower() const { return 0.0; }
  double GetSecondPower() const { return 0.0; }
  PowerForm GetPowerForm(double x) const { return {1.0, 1.0, LogDensity(x)}; }
  Slope GetSlope(double x) const;

  QVMath::QVGaussianRNG generator;

 private:
  double Scale(double x) const { return (x - mean_) * 0.7071067811865475 * rootPrecision_; }
  double mean_ = 0.0;
  double precision_ = 1.0;
  double rootPrecision_ = 1.0;
  double logNorm_ = 0.0;
};

class StudentsT {
 public:
  static constexpr const char* kClassName = "QVUniVarStudentsTImpl";
  static constexpr const char* kDrawClassName = kClassName;
  static constexpr std::uint64_t kPdfType = QVPDFType::UnivariateStudentsT;
  static constexpr std::uint64_t kNumParams = 3;
  static constexpr std::uint64_t kOutcomeType = 3;
  static constexpr Search kSearch = Search::FromBothSides;
  static constexpr double kTolX = 5e-08;
  static constexpr double kTolY = 5e-10;

  bool SetParams(const double* params);
  double Density(double x) const;
  double LogDensity(double x) const;
  double CDF(double x) const;
  void FillCDF(std::size_t n, const double* x, double* values) const;
  double Survival(double x) const;
  double LogSurvival(double x) const;
  double UpperTailPercentile(double q) const;
  Moment Mean() const;
  Moment Variance() const;
  Moment Mode() const { return {location_}; }
  bool HasPowerDensity() const { return true; }
  double GetFirstPower() const { return -0.5 * (dof_ + 1.0); }
  double GetSecondPower() const { return 0.0; }
  PowerForm GetPowerForm(double x) const;
  Slope GetSlope(double x) const;

  QVMath::QVStudentsTRNG generator;

 private:
  /// The probability beyond the distance of x from the location, on one side.
  double Tail(double x) const;
  double LogTail(double x) const;
  /// |x - location| sqrt(precision / nu).
  double GetRatio(double x) const;
  double dof_ = 1.0;
  double location_ = 0.0;
  double precision_ = 1.0;
  double precisionOverDof_ = 1.0;
  double logNorm_ = 0.0;
  BetaIntegral integral_;
};

class Gamma {
 public:
  static constexpr const char* kClassName = "QVGammaImpl";
  static constexpr const char* kDrawClassName = kClassName;
  static constexpr std::uint64_t kPdfType = QVPDFType::Gamma;
  static constexpr std::uint64_t kNumParams = 2;
  static constexpr std::uint64_t kOutcomeType = 2;
  static constexpr Search kSearch = Search::FromZero;
  static constexpr double kTolX = kFineTolerance;
  static constexpr double kTolY = kFineTolerance;

  bool SetParams(const double* params);
  double Density(double x) const;
  double LogDensity(double x) const;
  double CDF(double x) const { return integral_.Lower(rate_ * x); }
  void FillCDF(std::size_t n, const double* x, double* values) const;
  double Survival(double x) const { return integral_.Upper(rate_ * x); }
  double LogSurvival(double x) const { return integral_.LogUpper(rate_ * x); }
  double UpperTailPercentile(double q) const;
  Moment Mean() const { return {shape_ / rate_}; }
  Moment Variance() const { return {shape_ / (rate_ * rate_)}; }
  Moment Mode() const { return {shape_ > 1.0 ? (shape_ - 1.0) / rate_ : 0.0}; }
  bool HasPowerDensity() const { return !integral_.HasLargeParams(); }
  double GetFirstPower() const { return shape_ - 1.0; }
  double GetSecondPower() const { return 0.0; }
  PowerForm GetPowerForm(double x) const { return {x, 1.0, logNorm_ - rate_ * x}; }
  Slope GetSlope(double x) const;

  QVMath::QVGammaRNG generator;

 private:
  double shape_ = 1.0;
  double rate_ = 1.0;
  double logNorm_ = 0.0;
  GammaIntegral integral_;
};

/// The gamma law of shape k / 2 and rate 1 / 2.
class ChiSquare : public Gamma {
 public:
  static constexpr const char* kClassName = "QVChiSquareImpl";
  static constexpr const char* kDrawClassName = "QVGammaImpl";
  static constexpr std::uint64_t kPdfType = QVPDFType::ChiSquared;
  static constexpr std::uint64_t kNumParams = 1;
  static constexpr std::uint64_t kOutcomeType = 1;

  bool SetParams(const double* params);

  QVMath::QVChiSquaredRNG generator;
};

class SnedecorsF {
 public:
  static constexpr const char* kClassName = "QVSnedecorsFImpl";
  static constexpr const char* kDrawClassName = kClassName;
  static constexpr std::uint64_t kPdfType = QVPDFType::SnedecorsF;
  static constexpr std::uint64_t kNumParams = 2;
  static constexpr std::uint64_t kOutcomeType = 2;
  static constexpr Search kSearch = Search::FromZero;
  static constexpr double kTolX = kFineTolerance;
  static constexpr double kTolY = kFineTolerance;

  bool SetParams(const double* params);
  double Density(double x) const;
  double LogDensity(double x) const;
  double CDF(double x) const;
  void FillCDF(std::size_t n, const double* x, double* values) const;
  double Survival(double x) const;
  double LogSurvival(double x) const;
  double UpperTailPercentile(double q) const;
  Moment Mean() const;
  Moment Variance() const;
  Moment Mode() const;
  bool HasPowerDensity() const { return !integral_.HasLargeParams(); }
  double GetFirstPower() const { return 0.5 * numerator_ - 1.0; }
  double GetSecondPower() const { return -0.5 * (numerator_ + denominator_); }
  PowerForm GetPowerForm(double x) const {
    return {x, 1.0 + numerator_ * x / denominator_, logNorm_};
  }
  Slope GetSlope(double x) const;

  QVMath::QVSnedecorsFRNG generator;

 private:
  /// d1 x / (d2 + d1 x) and d2 / (d2 + d1 x).
  struct Shares {
    double numerator, denominator;
  };
  Shares GetShares(double x) const;
  double numerator_ = 1.0;
  double denominator_ = 1.0;
  double logNorm_ = 0.0;
  BetaIntegral integral_;  // of d1 / 2, d2 / 2
};

class Beta {
 public:
  static constexpr const char* kClassName = "QVBetaImpl";
  static constexpr const char* kDrawClassName = kClassName;
  static constexpr std::uint64_t kPdfType = QVPDFType::Beta;
  static constexpr std::uint64_t kNumParams = 2;
  static constexpr std::uint64_t kOutcomeType = 2;
  static constexpr Search kSearch = Search::UnitInterval;
  static constexpr double kTolX = kFineTolerance;
  static constexpr double kTolY = kFineTolerance;

  bool SetParams(const double* params);
  double Density(double x) const;
  double LogDensity(double x) const;
  double CDF(double x) const { return integral_.Lower(x, 1.0 - x); }
  void FillCDF(std::size_t n, const double* x, double* values) const;
  double Survival(double x) const { return integral_.Upper(x, 1.0 - x); }
  double LogSurvival(double x) const { return integral_.LogUpper(x, 1.0 - x); }
  double UpperTailPercentile(double q) const;
  Moment Mean() const { return {alpha_ / (alpha_ + beta_)}; }
  Moment Variance() const;
  Moment Mode() const;
  bool HasPowerDensity() const { return !integral_.HasLargeParams(); }
  double GetFirstPower() const { return alpha_ - 1.0; }
  double GetSecondPower() const { return beta_ - 1.0; }
  PowerForm GetPowerForm(double x) const { return {x, 1.0 - x, -integral_.GetLogBeta()}; }
  Slope GetSlope(double x) const;

  QVMath::QVBetaRNG generator;

 private:
  double alpha_ = 1.0;
  double beta_ = 1.0;
  BetaIntegral integral_;
};

class GeneralizedExtremeValue {
 public:
  static constexpr const char* kClassName = "QVGeneralizedExtremeValueImpl";
  static constexpr const char* kDrawClassName = kClassName;
  static constexpr std::uint64_t kPdfType = QVPDFType::GeneralizedExtremeValue;
  static constexpr std::uint64_t kNumParams = 3;
  static constexpr std::uint64_t kOutcomeType = 3;
  static constexpr Search kSearch = Search::ClosedForm;

  bool SetParams(const double* params);
  double Density(double x) const;
  double LogDensity(double x) const;
  double CDF(double x) const;
  double Survival(double x) const;
  double LogSurvival(double x) const;
  double UpperTailPercentile(double q) const;
  double ClosedPercentile(double p) const;
  Moment Mean() const;
  Moment Variance() const;
  Moment Mode() const;

  QVMath::QVGenExtremeValRNG generator;

 private:
  /// -log of the reduced variate u = -log F(x).
  double GetMinusLogReduced(double x) const;
  /// The x of a given log(-log F).
  double Invert(double logReduced) const;
  double location_ = 0.0;
  double scale_ = 1.0;
  double shape_ = 0.0;
};

/// The generalised extreme value law of shape 0.
class Gumbel : public GeneralizedExtremeValue {
 public:
  static constexpr const char* kClassName = "QVGumbelImpl";
  static constexpr const char* kDrawClassName = kClassName;
  static constexpr std::uint64_t kPdfType = QVPDFType::Gumbel;
  static constexpr std::uint64_t kNumParams = 2;
  static constexpr std::uint64_t kOutcomeType = 2;

  bool SetParams(const double* params);

  QVMath::QVGumbelRNG generator;
};

}  // namespace QVLaws
}  // namespace QVStats

#endif  // QVSTATS_API_PRIVATE_PDF_LAWS_H
