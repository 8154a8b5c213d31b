/// \file
/// \brief Transforms: small function objects that map one value, two values or a vector of values
/// to a number or to an outcome, sentinels included.
///
/// A transform evaluates arguments of every storage type and answers in every storage type. All
/// transforms here compute in doubles: arguments are converted first and the result last, as
/// stats/api/stats_data_types.h tells, so that sentinels carry over. Columns that apply a transform
/// when they are read are made by the operators of stats/api/data_table_column.h.
///
/// A new transform derives from one of the five result bases and gives its CreateCopy, its name and
/// its evaluation in doubles.
#ifndef QVSTATS_API_DATA_TRANSFORMS_H
#define QVSTATS_API_DATA_TRANSFORMS_H

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "stats/api/export.h"
#include "stats/api/private/data_transforms_impl.h"
#include "stats/api/stats_data_types.h"

namespace QVStats {

/// What all transforms tell of themselves.
class QVSTATS_EXPORT QVDataTransformBase {
 public:
  virtual ~QVDataTransformBase();
  virtual std::string GetTransformName() const = 0;
  /// Codes of QVStatVarDataType and QVStatVariableType.
  virtual unsigned int DataTypeOfTransformArgument() const = 0;
  virtual unsigned int DataTypeOfTransformResult() const = 0;
  virtual unsigned int StatVarTypeOfTransformResult() const = 0;
  /// The texts of a nominal result by their index; empty otherwise.
  virtual std::vector<std::string> GetOutcomes() const { return {}; }
  /// The numbers that a transform was made with.
  virtual std::vector<double> GetParameters() const { return {}; }
};

/// A transform of one argument.
class QVSTATS_EXPORT QVSingleArgDataTransformBase
    : public QVDataTransformBase,
      public QVTransformOverloads<QVTransformEvaluation<unsigned int>, QVTransformEvaluation<int>,
                                  QVTransformEvaluation<double>,
                                  QVTransformEvaluation<const std::string&>> {
 public:
  /// A new copy that the caller owns.
  virtual QVSingleArgDataTransformBase* CreateCopy() const = 0;
  /// Bulk: results[i] = GetDouble(x[i]) or GetUnsigned(x[i]). `results` may be `x`.
  virtual void GetDoubles(const double* x, std::size_t n, double* results) const;
  virtual void GetUnsigneds(const double* x, std::size_t n, unsigned int* results) const;
};

/// A transform of two arguments.
class QVSTATS_EXPORT QVTwoArgsDataTransformBase
    : public QVDataTransformBase,
      public QVTransformOverloads<QVTransformEvaluation<unsigned int, unsigned int>,
                                  QVTransformEvaluation<int, int>,
                                  QVTransformEvaluation<double, double>,
                                  QVTransformEvaluation<const std::string&, const std::string&>> {
 public:
  virtual QVTwoArgsDataTransformBase* CreateCopy() const = 0;
  /// Bulk: results[i] = GetDouble(x[i], y[i]) or GetUnsigned(x[i], y[i]). `results` may be `x`.
  virtual void GetDoubles(const double* x, const double* y, std::size_t n, double* results) const;
  virtual void GetUnsigneds(const double* x, const double* y, std::size_t n,
                            unsigned int* results) const;
};

/// A transform of a vector of arguments.
class QVSTATS_EXPORT QVVecOfArgsDataTransformBase
    : public QVDataTransformBase,
      public QVTransformOverloads<QVTransformEvaluation<const std::vector<unsigned int>&>,
                                  QVTransformEvaluation<const std::vector<int>&>,
                                  QVTransformEvaluation<const std::vector<double>&>,
                                  QVTransformEvaluation<const std::vector<std::string>&>> {
 public:
  virtual QVVecOfArgsDataTransformBase* CreateCopy() const = 0;
};

// The families with their arguments converted to double.
template <class Family>
using QVOfDoubleArg =
    QVConvertsToDouble<QVConvertsToDouble<QVConvertsToDouble<Family, unsigned int>, int>,
                       const std::string&>;
template <class Family>
using QVOfTwoDoubleArgs = QVConvertsToDouble<
    QVConvertsToDouble<QVConvertsToDouble<Family, unsigned int, unsigned int>, int, int>,
    const std::string&, const std::string&>;
template <class Family>
using QVOfVecOfDoubles = QVConvertsToDouble<
    QVConvertsToDouble<QVConvertsToDouble<Family, const std::vector<unsigned int>&>,
                       const std::vector<int>&>,
    const std::vector<std::string>&>;

/// Bases of the concrete transforms. A double result is of ratio level; a nominal result is one of
/// the outcome texts, given at construction.
using QVDoubleResultOfDoubleArg =
    QVDoubleResult<QVOfDoubleArg<QVSingleArgDataTransformBase>, double>;
using QVNominalResultOfDoubleArg =
    QVNominalResult<QVOfDoubleArg<QVSingleArgDataTransformBase>, double>;
using QVDoubleResultOfTwoDoubleArgs =
    QVDoubleResult<QVOfTwoDoubleArgs<QVTwoArgsDataTransformBase>, double, double>;
using QVNominalResultOfTwoDoubleArgs =
    QVNominalResult<QVOfTwoDoubleArgs<QVTwoArgsDataTransformBase>, double, double>;
using QVDoubleResultOfVecOfDoubles =
    QVDoubleResult<QVOfVecOfDoubles<QVVecOfArgsDataTransformBase>, const std::vector<double>&>;

/// A formula of one double as a transform, made from the formula's parameters in their order.
/// A missing or bad argument is returned unchanged.
template <class Formula>
class QVTransformByFormula : public QVDoubleResultOfDoubleArg {
 public:
  template <class... Parameters,
            class = std::enable_if_t<(std::is_arithmetic_v<Parameters> && ...)>>
  explicit QVTransformByFormula(Parameters... parameters)
      : formula_{static_cast<double>(parameters)...},
        parameters_{static_cast<double>(parameters)...} {}
  using QVDoubleResultOfDoubleArg::GetDouble;
  QVTransformByFormula* CreateCopy() const override { return new QVTransformByFormula(*this); }
  std::string GetTransformName() const override { return Formula::kName; }
  std::vector<double> GetParameters() const override { return parameters_; }
  double GetDouble(double x) const override { return Evaluate(formula_, x); }
  void GetDoubles(const double* x, std::size_t n, double* results) const override {
    // A copy: the results cannot overwrite its parameters, so the loop can be vectorised.
    const Formula formula = formula_;
    for (std::size_t i = 0; i < n; ++i) results[i] = Evaluate(formula, x[i]);
  }

 private:
  static double Evaluate(const Formula& formula, double x) {
    const bool missing = x == QVStatsBadData::MissingDouble;
    const bool bad = x == QVStatsBadData::BadDouble;
    return (missing | bad) ? x : formula(x);
  }

  Formula formula_;
  std::vector<double> parameters_;
};

/// A comparison of a double with a scalar as a transform: outcome 1 when it holds, 0 otherwise.
/// Sentinels are compared as the numbers they are.
template <class Comparison>
class QVComparisonWithScalar : public QVNominalResultOfDoubleArg {
 public:
  QVComparisonWithScalar(std::vector<std::string> outcomes, double scalar)
      : QVNominalResultOfDoubleArg(std::move(outcomes)), scalar_(scalar) {}
  using QVNominalResultOfDoubleArg::GetUnsigned;
  QVComparisonWithScalar* CreateCopy() const override { return new QVComparisonWithScalar(*this); }
  std::string GetTransformName() const override { return Comparison::kNameWithScalar; }
  std::vector<double> GetParameters() const override { return {scalar_}; }
  unsigned int GetUnsigned(double x) const override {
    return Comparison::Holds(x, scalar_) ? 1 : 0;
  }
  void GetUnsigneds(const double* x, std::size_t n, unsigned int* results) const override {
    for (std::size_t i = 0; i < n; ++i) results[i] = QVComparisonWithScalar::GetUnsigned(x[i]);
  }

 private:
  double scalar_;
};

/// A formula of two doubles as a transform: missing when either argument is missing, else bad when
/// either is bad.
template <class Formula>
class QVTransformOfTwoByFormula : public QVDoubleResultOfTwoDoubleArgs {
 public:
  using QVDoubleResultOfTwoDoubleArgs::GetDouble;
  QVTransformOfTwoByFormula* CreateCopy() const override {
    return new QVTransformOfTwoByFormula(*this);
  }
  std::string GetTransformName() const override { return Formula::kName; }
  double GetDouble(double x, double y) const override {
    using namespace QVStatsBadData;
    const bool missing = (x == MissingDouble) | (y == MissingDouble);
    const bool bad = (x == BadDouble) | (y == BadDouble);
    return missing ? MissingDouble : bad ? BadDouble : Formula::Evaluate(x, y);
  }
  void GetDoubles(const double* x, const double* y, std::size_t n, double* results) const override {
    for (std::size_t i = 0; i < n; ++i)
      results[i] = QVTransformOfTwoByFormula::GetDouble(x[i], y[i]);
  }
};

/// A comparison of two doubles as a transform: outcome 1 when it holds, 0 otherwise; missing when
/// either argument is missing, else bad when either is bad.
template <class Comparison>
class QVComparisonOfTwo : public QVNominalResultOfTwoDoubleArgs {
 public:
  explicit QVComparisonOfTwo(std::vector<std::string> outcomes)
      : QVNominalResultOfTwoDoubleArgs(std::move(outcomes)) {}
  using QVNominalResultOfTwoDoubleArgs::GetUnsigned;
  QVComparisonOfTwo* CreateCopy() const override { return new QVComparisonOfTwo(*this); }
  std::string GetTransformName() const override { return Comparison::kNameOfTwo; }
  unsigned int GetUnsigned(double x, double y) const override {
    using namespace QVStatsBadData;
    if (x == MissingDouble || y == MissingDouble) return MissingUnsigned;
    if (x == BadDouble || y == BadDouble) return BadUnsigned;
    return Comparison::Holds(x, y) ? 1 : 0;
  }
  void GetUnsigneds(const double* x, const double* y, std::size_t n,
                    unsigned int* results) const override {
    for (std::size_t i = 0; i < n; ++i) results[i] = QVComparisonOfTwo::GetUnsigned(x[i], y[i]);
  }
};

/// A formula of a vector of doubles as a transform: missing when any argument is missing, else bad
/// when any is bad, or when the formula needs more values than there are.
template <class Formula>
class QVTransformOfVecByFormula : public QVDoubleResultOfVecOfDoubles {
 public:
  using QVDoubleResultOfVecOfDoubles::GetDouble;
  QVTransformOfVecByFormula* CreateCopy() const override {
    return new QVTransformOfVecByFormula(*this);
  }
  std::string GetTransformName() const override { return Formula::kName; }
  double GetDouble(const std::vector<double>& values) const override {
    const auto has = [&](double sentinel) {
      return std::find(values.begin(), values.end(), sentinel) != values.end();
    };
    if (has(QVStatsBadData::MissingDouble)) return QVStatsBadData::MissingDouble;
    return has(QVStatsBadData::BadDouble) ? QVStatsBadData::BadDouble : Formula::Evaluate(values);
  }
};

/// The formulas, a struct each: its name and what it computes.
namespace QVFormulas {

struct AddAScalar {
  static constexpr const char* kName = "Addition Of a Scalar";
  double s = 0.0;
  double operator()(double x) const { return x + s; }
};
struct SubtractAScalar {
  static constexpr const char* kName = "Subtraction Of a Scalar";
  double s = 0.0;
  double operator()(double x) const { return x - s; }
};
struct SubtractFromAScalar {
  static constexpr const char* kName = "Subtraction From a Scalar";
  double s = 0.0;
  double operator()(double x) const { return s - x; }
};
struct MultiplyByScalar {
  static constexpr const char* kName = "Multiplication By a Scalar";
  double s = 1.0;
  double operator()(double x) const { return x * s; }
};
struct DivideByScalar {
  static constexpr const char* kName = "Division By a Scalar";
  double s = 1.0;
  double operator()(double x) const { return x / s; }
};
/// Bad for x = 0.
struct DivideIntoScalar {
  static constexpr const char* kName = "Division Into a Scalar";
  double s = 1.0;
  double operator()(double x) const { return x == 0.0 ? QVStatsBadData::BadDouble : s / x; }
};
struct AbsoluteValue {
  static constexpr const char* kName = "Absolute Value Transform";
  double operator()(double x) const { return std::abs(x); }
};
/// A negative x is returned unchanged.
struct Sqrt {
  static constexpr const char* kName = "Square Root Transform";
  double operator()(double x) const { return x >= 0.0 ? std::sqrt(x) : x; }
};
/// The natural logarithm; an x that is not positive is returned unchanged.
struct Log {
  static constexpr const char* kName = "Log Transform";
  double operator()(double x) const { return x > 0.0 ? std::log(x) : x; }
};
/// log((z - low) / (high - z)), z = x kept within [low + epsilon, high - epsilon]; an x outside
/// [low, high] is returned unchanged.
struct Logistic {
  static constexpr const char* kName = "LogisticTransform";
  double low = 0.0;
  double high = 1.0;
  double epsilon = 0.0;
  double operator()(double x) const {
    if (!(low <= x && x <= high)) return x;
    const double z = std::min(std::max(x, low + epsilon), high - epsilon);
    return std::log((z - low) / (high - z));
  }
};

// The names of the comparisons of two speak of argument two first; the tests compare x with y.
struct Greater {
  static constexpr const char* kNameWithScalar = "Arg Greater Than Scalar";
  static constexpr const char* kNameOfTwo = "Arg Two Greater Than Arg One";
  static bool Holds(double x, double y) { return x > y; }
};
struct GreaterEqual {
  static constexpr const char* kNameWithScalar = "Arg Greater Or Equal To Scalar";
  static constexpr const char* kNameOfTwo = "Arg Two Greater Or Equal To Arg One";
  static bool Holds(double x, double y) { return x >= y; }
};
struct Equal {
  static constexpr const char* kNameWithScalar = "Arg Equal To Scalar";
  static constexpr const char* kNameOfTwo = "Arg Two Equal To Arg One";
  static bool Holds(double x, double y) { return x == y; }
};
struct LessEqual {
  static constexpr const char* kNameWithScalar = "Arg Less Or Equal To Scalar";
  static constexpr const char* kNameOfTwo = "Arg Two Less Or Equal To Arg One";
  static bool Holds(double x, double y) { return x <= y; }
};
struct Less {
  static constexpr const char* kNameWithScalar = "Arg Less Than Scalar";
  static constexpr const char* kNameOfTwo = "Arg Two Less Than Arg One";
  static bool Holds(double x, double y) { return x < y; }
};

struct Sum {
  static constexpr const char* kName = "Sum of Two Double Args";
  static double Evaluate(double x, double y) { return x + y; }
};
struct Difference {
  static constexpr const char* kName = "Difference between Two Double Args";
  static double Evaluate(double x, double y) { return x - y; }
};
struct Product {
  static constexpr const char* kName = "Product of Two Double Args";
  static double Evaluate(double x, double y) { return x * y; }
};
struct Quotient {
  static constexpr const char* kName = "Ratio of Two Double Args";
  static double Evaluate(double x, double y) { return x / y; }
};

/// The mean needs one value, the variance (divisor n - 1) two, largest and smallest one; with fewer
/// the result is bad. The range of fewer than two values is 0. More values than a double counts
/// exactly are a fatal report of mean and variance.
struct QVSTATS_EXPORT Average {
  static constexpr const char* kName = "Average value Of a Vec of Doubles";
  static double Evaluate(const std::vector<double>& values);
};
struct QVSTATS_EXPORT Variance {
  static constexpr const char* kName = "Variance Of a Vec of Doubles";
  static double Evaluate(const std::vector<double>& values);
};
struct QVSTATS_EXPORT Range {
  static constexpr const char* kName = "Range of values In a Vec of Doubles";
  static double Evaluate(const std::vector<double>& values);
};
struct QVSTATS_EXPORT Largest {
  static constexpr const char* kName = "Maximum value In a Vec of Doubles";
  static double Evaluate(const std::vector<double>& values);
};
struct QVSTATS_EXPORT Smallest {
  static constexpr const char* kName = "Minimum value In a Vec of Doubles";
  static double Evaluate(const std::vector<double>& values);
};

}  // namespace QVFormulas

// The transforms, by the names that programs use.
using QVAddAScalarDataTransform = QVTransformByFormula<QVFormulas::AddAScalar>;
using QVSubtractAScalarDataTransform = QVTransformByFormula<QVFormulas::SubtractAScalar>;
using QVSubtractFromAScalarDataTransform = QVTransformByFormula<QVFormulas::SubtractFromAScalar>;
using QVMultiplyByScalarDataTransform = QVTransformByFormula<QVFormulas::MultiplyByScalar>;
using QVDivideByScalarDataTransform = QVTransformByFormula<QVFormulas::DivideByScalar>;
using QVDivideIntoScalarDataTransform = QVTransformByFormula<QVFormulas::DivideIntoScalar>;
using QVAbsoluteValueDataTransform = QVTransformByFormula<QVFormulas::AbsoluteValue>;
using QVSqrtDataTransform = QVTransformByFormula<QVFormulas::Sqrt>;
using QVLogDataTransform = QVTransformByFormula<QVFormulas::Log>;
using QVLogisticDataTransform = QVTransformByFormula<QVFormulas::Logistic>;

using QVArgGreaterThanScalar = QVComparisonWithScalar<QVFormulas::Greater>;
using QVArgGreaterEqualToScalar = QVComparisonWithScalar<QVFormulas::GreaterEqual>;
using QVArgEqualToScalar = QVComparisonWithScalar<QVFormulas::Equal>;
using QVArgLessEqualToScalar = QVComparisonWithScalar<QVFormulas::LessEqual>;
using QVArgLessThanScalar = QVComparisonWithScalar<QVFormulas::Less>;

using QVSumOfTwoDoubles = QVTransformOfTwoByFormula<QVFormulas::Sum>;
using QVDifferenceOfTwoDoubles = QVTransformOfTwoByFormula<QVFormulas::Difference>;
using QVProductOfTwoDoubles = QVTransformOfTwoByFormula<QVFormulas::Product>;
using QVRatioOfTwoDoubles = QVTransformOfTwoByFormula<QVFormulas::Quotient>;

using QVArgOneGreaterThanArgTwo = QVComparisonOfTwo<QVFormulas::Greater>;
using QVArgOneGreaterEqualToArgTwo = QVComparisonOfTwo<QVFormulas::GreaterEqual>;
using QVArgOneEqualToArgTwo = QVComparisonOfTwo<QVFormulas::Equal>;
using QVArgOneLessEqualToArgTwo = QVComparisonOfTwo<QVFormulas::LessEqual>;
using QVArgOneLessThanArgTwo = QVComparisonOfTwo<QVFormulas::Less>;

using QVAveOfVecOfDoubles = QVTransformOfVecByFormula<QVFormulas::Average>;
using QVVarianceOfVecOfDoubles = QVTransformOfVecByFormula<QVFormulas::Variance>;
using QVRangeOfVecOfDoubles = QVTransformOfVecByFormula<QVFormulas::Range>;
using QVMaxOfVecOfDoubles = QVTransformOfVecByFormula<QVFormulas::Largest>;
using QVMinOfVecOfDoubles = QVTransformOfVecByFormula<QVFormulas::Smallest>;

}  // namespace QVStats

#endif  // QVSTATS_API_DATA_TRANSFORMS_H
