/// \file
/// \brief Distributions on typed random variables.
#ifndef QVSTATS_API_NPDF_IMPL_H
#define QVSTATS_API_NPDF_IMPL_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/math/random.h"
#include "platform/system/iter.h"
#include "stats/api/export.h"
#include "stats/api/nran_var.h"
#include "stats/api/ran_var.h"
#include "stats/api/stat_model.h"

namespace QVStats {

/// The families are those of ran_var.h.
namespace nQVPDFType = QVPDFType;

/// A distribution: its family and its typed random variables.
class QVSTATS_EXPORT nQVProbDistFuncImpl {
 public:
  virtual ~nQVProbDistFuncImpl();
  /// A new copy that the caller owns. Its variables share the values of this one's.
  virtual nQVProbDistFuncImpl* CreateCopy() const = 0;
  virtual std::string Print(std::size_t limit) const = 0;

  std::size_t GetNumRanVars() const { return ranVars_.size(); }
  /// The iterator reads this object.
  QVSystem::QVIter<const nQVRanVar> GetRanVars() const;
  std::uint64_t GetPDFType() const { return pdfType_; }
  const std::string& GetPDFName() const;

  /// The first random variable of a type; a copy shares its value.
  /// \return BadRanVar(), and RanVarNotFound, when there is none.
  const nQVRanVar& GetRanVar(QVStatModelResult& result, unsigned int majorType,
                             unsigned int minorType) const;
  /// A variable without a value.
  static const nQVRanVar& BadRanVar();

  /// Each variable, and a line of hyphens after it.
  std::string PrintRanVars(std::size_t limit) const;

 protected:
  nQVProbDistFuncImpl(std::uint64_t pdfType, std::vector<nQVRanVar> ranVars);

 private:
  std::uint64_t pdfType_;
  std::vector<nQVRanVar> ranVars_;
};

/// A univariate one. A query that fails returns the largest finite double.
class QVSTATS_EXPORT nQVUniVarPDFImpl : public nQVProbDistFuncImpl {
 public:
  nQVUniVarPDFImpl* CreateCopy() const override = 0;

  virtual double GetRandomOutcome(QVStatModelResult& result, QVMath::QVRanNumEngine& engine) = 0;
  /// \param check whether x is checked against the support first.
  virtual double GetDensity(QVStatModelResult& result, double x, bool check) const = 0;
  virtual double GetMean(QVStatModelResult& result) const = 0;
  virtual double GetMode(QVStatModelResult& result) const = 0;
  virtual double GetVariance(QVStatModelResult& result) const = 0;
  virtual double GetPercentile(QVStatModelResult& result, double p) const = 0;
  virtual double GetCDF(QVStatModelResult& result, double x, bool check) const = 0;

  const std::string& GetVariableName() const { return variableName_; }
  /// The names of the family and the variable, then PrintRanVars.
  std::string DefaultPrint(std::size_t limit) const;

 protected:
  nQVUniVarPDFImpl(std::uint64_t pdfType, const std::string& variableName,
                   std::vector<nQVRanVar> ranVars);

 private:
  std::string variableName_;
};

/// No distribution: every query fails with NullProbDistFunc.
class QVSTATS_EXPORT nQVUniVarNullPDFImpl : public nQVUniVarPDFImpl {
 public:
  explicit nQVUniVarNullPDFImpl(const std::string& variableName,
                                std::vector<nQVRanVar> ranVars = {});
  nQVUniVarNullPDFImpl* CreateCopy() const override;
  std::string Print(std::size_t limit) const override;

  double GetRandomOutcome(QVStatModelResult& result, QVMath::QVRanNumEngine& engine) override;
  double GetDensity(QVStatModelResult& result, double x, bool check) const override;
  double GetMean(QVStatModelResult& result) const override;
  double GetMode(QVStatModelResult& result) const override;
  double GetVariance(QVStatModelResult& result) const override;
  double GetPercentile(QVStatModelResult& result, double p) const override;
  double GetCDF(QVStatModelResult& result, double x, bool check) const override;
};

}  // namespace QVStats

#endif  // QVSTATS_API_NPDF_IMPL_H
