/// \file
/// \brief Implementations of probability distributions, behind the handles of stats/api/pdf.h.
///
/// A distribution is built from two ordered lists of random variables, its parameters and its
/// outcomes, and reads its numbers from them by random-variable type. It decides once, in its
/// constructor, whether they are valid.
///
/// Queries report through a result. They fail with
/// - InvalidProbDistFunc: the parameters were refused; the value is the bad double;
/// - NullProbDistFunc: the distribution is the null one; likewise;
/// - the failure of the outcome variable's own check when `check` asks for it. The value is then
///   0 for an argument outside the support (LowerBoundViolated, UpperBoundViolated,
///   IntegerArgumentRequired, SumOfArgumentsWrong), otherwise the bad double. GetSurvival,
///   GetLogDensity and GetLogSurvival give their limits there: 1, minus infinity and 0 below the
///   support, 0 and minus infinity above it;
/// - MeanIsUndefined, VarianceIsUndefined, ModeIsUndefined, DensityIsUndefined: no such number;
/// - ArgumentOutOfRange: a probability is not within 0 to 1;
/// - InternalLogicFailure: a search did not end within its steps.
/// With `check` false an argument outside the support gives what the formula gives, maybe NaN.
/// The bad double is QVStatsBadData::BadDouble; failed vector queries return empty vectors.
///
/// Queries are const and may run concurrently on one object; random draws may not.
#ifndef QVSTATS_API_PDF_IMPL_H
#define QVSTATS_API_PDF_IMPL_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/math/random.h"
#include "platform/system/iter.h"
#include "stats/api/export.h"
#include "stats/api/ran_var.h"
#include "stats/api/stat_model.h"

namespace QVStats {

class QVUniVarPDF;
class QVMultiVarPDF;

/// What all distributions share: type, validity, parameters and outcomes.
class QVSTATS_EXPORT QVProbDistFuncImpl {
 public:
  /// Copies the lists; not valid yet.
  QVProbDistFuncImpl(std::uint64_t pdfType, const std::vector<QVRanVar>& parameters,
                     const std::vector<QVRanVar>& outcomes);
  virtual ~QVProbDistFuncImpl();

  /// A new copy that the caller owns.
  virtual QVProbDistFuncImpl* CreateCopy() const = 0;
  /// The distribution and its random variables as text, at most `limit` values of each.
  virtual std::string Print(std::size_t limit) const = 0;

  bool Valid() const { return valid_; }
  void SetValid() { valid_ = true; }
  void SetInValid() { valid_ = false; }

  /// \return a code of QVPDFType, and its name.
  std::uint64_t GetPDFType() const { return pdfType_; }
  const std::string& GetPDFName() const { return QVPDFType::NameOf[pdfType_]; }

  std::size_t GetNumParameterRanVars() const { return parameters_.size(); }
  std::size_t GetNumOutcomeRanVars() const { return outcomes_.size(); }
  QVSystem::QVIter<const QVRanVar> GetParameterRanVars() const;
  QVSystem::QVIter<const QVRanVar> GetOutcomeRanVars() const;

  /// The values of the first parameter (outcome) of a type. RanVarNotFound: there is none;
  /// WrongNumParameters: it does not have the expected number of values. The iterator is then at
  /// its end.
  QVSystem::QVIter<const double> GetParameterRanVarVals(std::uint64_t ranVarType,
                                                        std::size_t expectedCount,
                                                        QVStatModelResult& result) const;
  QVSystem::QVIter<const double> GetOutcomeRanVarVals(std::uint64_t ranVarType,
                                                      std::size_t expectedCount,
                                                      QVStatModelResult& result) const;
  /// The only value of a parameter, or the bad double.
  double GetSingleParameterRanVarVal(std::uint64_t ranVarType, QVStatModelResult& result) const;

  /// What the first outcome of a type says of values. RanVarNotFound: there is none.
  QVStatModelResult CheckIfValsAreOkForOutcomeRanVar(std::uint64_t ranVarType,
                                                     const std::vector<double>& values) const;
  QVStatModelResult CheckIfValIsOkForOutcomeRanVar(std::uint64_t ranVarType, double value) const;

  /// Parameters, then outcomes, each followed by a rule.
  std::string PrintRanVars(std::size_t limit) const;

 protected:
  QVProbDistFuncImpl(const QVProbDistFuncImpl&) = default;
  QVProbDistFuncImpl& operator=(const QVProbDistFuncImpl&) = default;

  const std::vector<QVRanVar>& GetParameterList() const { return parameters_; }
  const std::vector<QVRanVar>& GetOutcomeList() const { return outcomes_; }

 private:
  std::uint64_t pdfType_;
  bool valid_ = false;
  std::vector<QVRanVar> parameters_;
  std::vector<QVRanVar> outcomes_;
};

/// A function of a univariate distribution, for calls over whole vectors. F is the distribution
/// function, f its density.
enum class QVPDFFunction {
  Density,              ///< f(x)
  CDF,                  ///< F(x)
  Percentile,           ///< the x with F(x) = p
  Survival,             ///< 1 - F(x)
  LogDensity,           ///< log f(x)
  LogSurvival,          ///< log(1 - F(x))
  UpperTailPercentile,  ///< the x with 1 - F(x) = p
};

/// A distribution of one real variable.
class QVSTATS_EXPORT QVUniVarPDFImpl : public QVProbDistFuncImpl {
 public:
  QVUniVarPDFImpl(std::uint64_t pdfType, const std::string& variableName,
                  const std::vector<QVRanVar>& parameters, const std::vector<QVRanVar>& outcomes);

  QVUniVarPDFImpl* CreateCopy() const override = 0;

  /// One draw.
  virtual double GetRandomOutcome(QVStatModelResult& result, QVMath::QVRanNumEngine& engine) = 0;
  virtual double GetDensity(double x, QVStatModelResult& result, bool check) const = 0;
  virtual double GetMean(QVStatModelResult& result) const = 0;
  virtual double GetMode(QVStatModelResult& result) const = 0;
  virtual double GetVariance(QVStatModelResult& result) const = 0;
  /// The x at which the distribution function is p.
  virtual double GetPercentile(double p, QVStatModelResult& result) const = 0;
  /// The distribution function at x, the probability of an outcome not above x.
  virtual double GetCDF(double x, QVStatModelResult& result, bool check) const = 0;
  /// The name of the outcome.
  virtual std::string GetVariableName() const;

  // What follows keeps its digits in the tails. The defaults go through the queries above.

  /// 1 - F(x), the probability of an outcome above x.
  virtual double GetSurvival(double x, QVStatModelResult& result, bool check) const;
  /// log f(x); minus infinity where the density is 0.
  virtual double GetLogDensity(double x, QVStatModelResult& result, bool check) const;
  /// log(1 - F(x)); minus infinity where the survival function is 0.
  virtual double GetLogSurvival(double x, QVStatModelResult& result, bool check) const;
  /// The x at which the survival function is q: GetPercentile(1 - q) with the digits of a small q.
  virtual double GetUpperTailPercentile(double q, QVStatModelResult& result) const;
  /// A function at each argument; `check` as in the single queries, which give the same values to
  /// rounding, percentiles within their tolerance. `values`, another vector than `arguments`, is
  /// refilled; one that is kept between calls is not allocated again. All arguments are visited;
  /// the result is the first failure, with a comment that says at which (0-based) argument it
  /// happened.
  virtual void GetValues(QVPDFFunction function, const std::vector<double>& arguments,
                         std::vector<double>& values, QVStatModelResult& result, bool check) const;

  /// One of the functions at one argument.
  double GetValue(QVPDFFunction function, double argument, QVStatModelResult& result,
                  bool check) const;

  /// The name of the distribution, the variable's, and PrintRanVars.
  std::string DefaultPrint(std::size_t limit) const;

 protected:
  /// GetValues for those values that are NaN.
  void FillMissingValues(QVPDFFunction function, const std::vector<double>& arguments,
                         std::vector<double>& values, QVStatModelResult& result, bool check) const;

 private:
  std::string variableName_;
};

/// A distribution of several real variables, its coordinates.
class QVSTATS_EXPORT QVMultiVarPDFImpl : public QVProbDistFuncImpl {
 public:
  QVMultiVarPDFImpl(std::uint64_t pdfType, const std::vector<std::string>& variableNames,
                    const std::vector<QVRanVar>& parameters, const std::vector<QVRanVar>& outcomes);

  QVMultiVarPDFImpl* CreateCopy() const override = 0;

  /// One draw, a value for each coordinate.
  virtual std::vector<double> GetRandomOutcome(QVStatModelResult& result,
                                               QVMath::QVRanNumEngine& engine) = 0;
  virtual double GetDensity(const std::vector<double>& x, QVStatModelResult& result,
                            bool check) const = 0;
  virtual std::vector<double> GetMean(QVStatModelResult& result) const = 0;
  /// d x d values, row by row.
  virtual std::vector<double> GetCovariance(QVStatModelResult& result) const = 0;
  virtual std::vector<double> GetMode(QVStatModelResult& result) const = 0;
  /// The distribution of some of the coordinates, named in coordinate order. Its precision
  /// parameter is the block of the covariance. NameNotFound, NamesOutOfOrder: see below; the
  /// handle is then a null one.
  virtual QVMultiVarPDF GetMultivariateMarginal(const std::vector<std::string>& names,
                                                QVStatModelResult& result) const = 0;
  /// The distribution of one coordinate. Its precision parameter is the diagonal element of the
  /// covariance.
  virtual QVUniVarPDF GetUnivariateMarginal(const std::string& name,
                                            QVStatModelResult& result) const = 0;

  std::size_t GetNumVariables() const { return variableNames_.size(); }
  QVSystem::QVIter<const std::string> GetVariableNames() const;
  /// The position of a name. NameNotFound: it is no coordinate's.
  QVStatModelResult GetIndexOfNameInVarNameList(const std::string& name, std::size_t& index) const;
  /// The positions of names, which must not decrease. NameNotFound; NamesOutOfOrder.
  QVStatModelResult GetIndicesOfNamesInVarNameList(const std::vector<std::string>& names,
                                                   std::vector<std::size_t>& indices) const;

  /// The name of the distribution, the variables', and PrintRanVars.
  std::string DefaultPrint(std::size_t limit) const;
  std::string Print(std::size_t limit) const override { return DefaultPrint(limit); }

 protected:
  const std::vector<std::string>& GetNameList() const { return variableNames_; }

 private:
  std::vector<std::string> variableNames_;
};

/// Answers every query with NullProbDistFunc.
class QVSTATS_EXPORT QVUniVarNullPDFImpl : public QVUniVarPDFImpl {
 public:
  QVUniVarNullPDFImpl(const std::string& variableName, const std::vector<QVRanVar>& parameters,
                      const std::vector<QVRanVar>& outcomes);
  QVUniVarNullPDFImpl* CreateCopy() const override;
  std::string Print(std::size_t limit) const override { return DefaultPrint(limit); }
  double GetRandomOutcome(QVStatModelResult& result, QVMath::QVRanNumEngine& engine) override;
  double GetDensity(double x, QVStatModelResult& result, bool check) const override;
  double GetMean(QVStatModelResult& result) const override;
  double GetMode(QVStatModelResult& result) const override;
  double GetVariance(QVStatModelResult& result) const override;
  double GetPercentile(double p, QVStatModelResult& result) const override;
  double GetCDF(double x, QVStatModelResult& result, bool check) const override;
  double GetSurvival(double x, QVStatModelResult& result, bool check) const override;
  double GetLogDensity(double x, QVStatModelResult& result, bool check) const override;
  double GetLogSurvival(double x, QVStatModelResult& result, bool check) const override;
  double GetUpperTailPercentile(double q, QVStatModelResult& result) const override;
};

/// Answers every query with NullProbDistFunc.
class QVSTATS_EXPORT QVMultiVarNullPDFImpl : public QVMultiVarPDFImpl {
 public:
  QVMultiVarNullPDFImpl(const std::vector<std::string>& variableNames,
                        const std::vector<QVRanVar>& parameters,
                        const std::vector<QVRanVar>& outcomes);
  QVMultiVarNullPDFImpl* CreateCopy() const override;
  std::vector<double> GetRandomOutcome(QVStatModelResult& result,
                                       QVMath::QVRanNumEngine& engine) override;
  double GetDensity(const std::vector<double>& x, QVStatModelResult& result,
                    bool check) const override;
  std::vector<double> GetMean(QVStatModelResult& result) const override;
  std::vector<double> GetCovariance(QVStatModelResult& result) const override;
  std::vector<double> GetMode(QVStatModelResult& result) const override;
  QVMultiVarPDF GetMultivariateMarginal(const std::vector<std::string>& names,
                                        QVStatModelResult& result) const override;
  QVUniVarPDF GetUnivariateMarginal(const std::string& name,
                                    QVStatModelResult& result) const override;
};

/// A new implementation of a univariate distribution by its code of QVPDFType, owned by the
/// caller; the null one for a code that has none.
QVSTATS_EXPORT QVUniVarPDFImpl* QVGetUniVarPDFImpl(std::uint64_t pdfType,
                                                   const std::string& variableName,
                                                   const std::vector<QVRanVar>& parameters,
                                                   const std::vector<QVRanVar>& outcomes);
/// The same for a multivariate one. Only the Gaussian is made by its code; any other, that of the
/// multivariate Student's t included, gives the null one.
QVSTATS_EXPORT QVMultiVarPDFImpl* QVGetMultiVarPDFImpl(
    std::uint64_t pdfType, const std::vector<std::string>& variableNames,
    const std::vector<QVRanVar>& parameters, const std::vector<QVRanVar>& outcomes);

}  // namespace QVStats

#endif  // QVSTATS_API_PDF_IMPL_H
