#include "stats/api/pdf_impl.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "stats/api/pdf.h"
#include "stats/api/pdf_families.h"
#include "stats/api/stats_data_types.h"
#include "stats/failure.h"

namespace QVStats {

namespace {

using QVStatsBadData::BadDouble;
using RanVarVec = std::vector<QVRanVar>;

/// The first variable of a type, or null with the failure RanVarNotFound.
const QVRanVar* FindRanVar(const RanVarVec& ranVars, std::uint64_t ranVarType, const char* where,
                           QVStatModelResult& result) {
  for (const QVRanVar& ranVar : ranVars)
    if (ranVar.GetRanVarType() == ranVarType) return &ranVar;
  result = QVFailure(QVStatModelFailureType::RanVarNotFound, where)
           << "Random Var Type: " << ranVarType;
  return nullptr;
}

QVSystem::QVIter<const double> GetVals(const RanVarVec& ranVars, std::uint64_t ranVarType,
                                       std::size_t expectedCount, const char* where,
                                       QVStatModelResult& result) {
  const QVRanVar* ranVar = FindRanVar(ranVars, ranVarType, where, result);
  if (!ranVar) return {};
  if (ranVar->GetNumRanVarVals() != expectedCount) {
    result = QVFailure(QVStatModelFailureType::WrongNumParameters, where)
             << "NumRanVarVals = " << ranVar->GetNumRanVarVals() << "; Expected " << expectedCount;
    return {};
  }
  result = true;
  return ranVar->GetRanVarVals();
}

std::string PrintEach(const RanVarVec& ranVars, std::size_t limit) {
  std::string text;
  for (const QVRanVar& ranVar : ranVars) text += ranVar.Print(limit) + "\n---------------------\n";
  return text + "\n%%%%%%%%%%%%%%%%%%%%%%%%%%%%%\n";
}

}  // namespace

// QVProbDistFuncImpl

QVProbDistFuncImpl::QVProbDistFuncImpl(std::uint64_t pdfType, const RanVarVec& parameters,
                                       const RanVarVec& outcomes)
    : pdfType_(pdfType), parameters_(parameters), outcomes_(outcomes) {}

QVProbDistFuncImpl::~QVProbDistFuncImpl() = default;

QVSystem::QVIter<const QVRanVar> QVProbDistFuncImpl::GetParameterRanVars() const {
  return QVSystem::QVMakeIter<const QVRanVar>(parameters_);
}

QVSystem::QVIter<const QVRanVar> QVProbDistFuncImpl::GetOutcomeRanVars() const {
  return QVSystem::QVMakeIter<const QVRanVar>(outcomes_);
}

QVSystem::QVIter<const double> QVProbDistFuncImpl::GetParameterRanVarVals(
    std::uint64_t ranVarType, std::size_t expectedCount, QVStatModelResult& result) const {
  return GetVals(parameters_, ranVarType, expectedCount,
                 "QVProbDistFuncImpl::GetParameterRanVarVals", result);
}

QVSystem::QVIter<const double> QVProbDistFuncImpl::GetOutcomeRanVarVals(
    std::uint64_t ranVarType, std::size_t expectedCount, QVStatModelResult& result) const {
  return GetVals(outcomes_, ranVarType, expectedCount, "QVProbDistFuncImpl::GetOutcomeRanVarVals",
                 result);
}

double QVProbDistFuncImpl::GetSingleParameterRanVarVal(std::uint64_t ranVarType,
                                                       QVStatModelResult& result) const {
  const auto values = GetParameterRanVarVals(ranVarType, 1, result);
  if (QVFailedIn(result, "QVProbDistFuncImpl::GetSingleParameterRanVarVal")) return BadDouble;
  return *values;
}

QVStatModelResult QVProbDistFuncImpl::CheckIfValsAreOkForOutcomeRanVar(
    std::uint64_t ranVarType, const std::vector<double>& values) const {
  const char* where = "QVProbDistFuncImpl::CheckIfValsAreOkForOutcomeRanVar";
  QVStatModelResult result(true);
  const QVRanVar* ranVar = FindRanVar(outcomes_, ranVarType, where, result);
  return ranVar ? QVCalledFrom(where, ranVar->CheckIfRanVarValsAreOk(values)) : result;
}

QVStatModelResult QVProbDistFuncImpl::CheckIfValIsOkForOutcomeRanVar(std::uint64_t ranVarType,
                                                                     double value) const {
  const char* where = "QVProbDistFuncImpl::CheckIfValIsOkForOutcomeRanVar";
  QVStatModelResult result(true);
  const QVRanVar* ranVar = FindRanVar(outcomes_, ranVarType, where, result);
  return ranVar ? QVCalledFrom(where, ranVar->CheckIfRanVarValsAreOk({value})) : result;
}

std::string QVProbDistFuncImpl::PrintRanVars(std::size_t limit) const {
  return PrintEach(parameters_, limit) + PrintEach(outcomes_, limit);
}

// QVUniVarPDFImpl

QVUniVarPDFImpl::QVUniVarPDFImpl(std::uint64_t pdfType, const std::string& variableName,
                                 const RanVarVec& parameters, const RanVarVec& outcomes)
    : QVProbDistFuncImpl(pdfType, parameters, outcomes), variableName_(variableName) {}

std::string QVUniVarPDFImpl::GetVariableName() const { return variableName_; }

double QVUniVarPDFImpl::GetSurvival(double x, QVStatModelResult& result, bool check) const {
  const double cdf = GetCDF(x, result, check);
  if (result.IsSuccessful()) return 1.0 - cdf;
  if (result.GetFailureType() == QVStatModelFailureType::LowerBoundViolated) return 1.0;
  return cdf;
}

double QVUniVarPDFImpl::GetLogDensity(double x, QVStatModelResult& result, bool check) const {
  const double density = GetDensity(x, result, check);
  return result.IsSuccessful() || density == 0.0 ? std::log(density) : density;
}

double QVUniVarPDFImpl::GetLogSurvival(double x, QVStatModelResult& result, bool check) const {
  const double survival = GetSurvival(x, result, check);
  return result.IsSuccessful() || survival <= 1.0 ? std::log(survival) : survival;
}

double QVUniVarPDFImpl::GetUpperTailPercentile(double q, QVStatModelResult& result) const {
  return GetPercentile(1.0 - q, result);
}

double QVUniVarPDFImpl::GetValue(QVPDFFunction function, double argument, QVStatModelResult& result,
                                 bool check) const {
  switch (function) {
    case QVPDFFunction::Density:
      return GetDensity(argument, result, check);
    case QVPDFFunction::CDF:
      return GetCDF(argument, result, check);
    case QVPDFFunction::Percentile:
      return GetPercentile(argument, result);
    case QVPDFFunction::Survival:
      return GetSurvival(argument, result, check);
    case QVPDFFunction::LogDensity:
      return GetLogDensity(argument, result, check);
    case QVPDFFunction::LogSurvival:
      return GetLogSurvival(argument, result, check);
    case QVPDFFunction::UpperTailPercentile:
      return GetUpperTailPercentile(argument, result);
  }
  return BadDouble;
}

void QVUniVarPDFImpl::GetValues(QVPDFFunction function, const std::vector<double>& arguments,
                                std::vector<double>& values, QVStatModelResult& result,
                                bool check) const {
  values.assign(arguments.size(), std::numeric_limits<double>::quiet_NaN());
  FillMissingValues(function, arguments, values, result, check);
}

void QVUniVarPDFImpl::FillMissingValues(QVPDFFunction function,
                                        const std::vector<double>& arguments,
                                        std::vector<double>& values, QVStatModelResult& result,
                                        bool check) const {
  result = true;
  QVStatModelResult single(true);
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    if (!std::isnan(values[i])) continue;
    values[i] = GetValue(function, arguments[i], single, check);
    if (single.IsSuccessful() || result.NotSuccessful()) continue;
    result = single;
    result.AddCallContext("QVUniVarPDFImpl::GetValues");
    result.AddExtraComment("First failure at argument " + std::to_string(i));
  }
}

std::string QVUniVarPDFImpl::DefaultPrint(std::size_t limit) const {
  return "PDF: " + GetPDFName() + "\n Variable name: " + variableName_ + "\n" + PrintRanVars(limit);
}

// QVMultiVarPDFImpl

QVMultiVarPDFImpl::QVMultiVarPDFImpl(std::uint64_t pdfType,
                                     const std::vector<std::string>& variableNames,
                                     const RanVarVec& parameters, const RanVarVec& outcomes)
    : QVProbDistFuncImpl(pdfType, parameters, outcomes), variableNames_(variableNames) {}

QVSystem::QVIter<const std::string> QVMultiVarPDFImpl::GetVariableNames() const {
  return QVSystem::QVMakeIter<const std::string>(variableNames_);
}

QVStatModelResult QVMultiVarPDFImpl::GetIndexOfNameInVarNameList(const std::string& name,
                                                                 std::size_t& index) const {
  const auto found = std::find(variableNames_.begin(), variableNames_.end(), name);
  if (found == variableNames_.end())
    return QVFailure(QVStatModelFailureType::NameNotFound,
                     "QVMultiVarPDFImpl::GetIndexOfNameInVarNameList")
           << "Variable Name " << name << " not found in list";
  index = static_cast<std::size_t>(found - variableNames_.begin());
  return true;
}

QVStatModelResult QVMultiVarPDFImpl::GetIndicesOfNamesInVarNameList(
    const std::vector<std::string>& names, std::vector<std::size_t>& indices) const {
  const char* where = "QVMultiVarPDFImpl::GetIndicesOfNamesInVarNameList";
  indices.clear();
  for (const std::string& name : names) {
    const auto found = std::find(variableNames_.begin(), variableNames_.end(), name);
    if (found == variableNames_.end())
      return QVFailure(QVStatModelFailureType::NameNotFound, where)
             << "Variable Name " << name << " not found in list";
    const auto index = static_cast<std::size_t>(found - variableNames_.begin());
    if (!indices.empty() && index < indices.back())
      return QVFailure(QVStatModelFailureType::NamesOutOfOrder, where)
             << "Query list is not increasing with respect to pdf variable names";
    indices.push_back(index);
  }
  return true;
}

std::string QVMultiVarPDFImpl::DefaultPrint(std::size_t limit) const {
  std::string text = "PDF: " + GetPDFName() + "\n Variable names: ";
  for (const std::string& name : variableNames_) text += name + " ";
  return text + "\n" + PrintRanVars(limit);
}

// The null distributions

namespace {

double RefuseNull(const char* where, QVStatModelResult& result) {
  result = QVFailure(QVStatModelFailureType::NullProbDistFunc, where);
  return BadDouble;
}

std::vector<double> RefuseNullVector(const char* where, QVStatModelResult& result) {
  RefuseNull(where, result);
  return {};
}

}  // namespace

QVUniVarNullPDFImpl::QVUniVarNullPDFImpl(const std::string& variableName,
                                         const RanVarVec& parameters, const RanVarVec& outcomes)
    : QVUniVarPDFImpl(QVPDFType::NullPDF, variableName, parameters, outcomes) {}

QVUniVarNullPDFImpl* QVUniVarNullPDFImpl::CreateCopy() const {
  return new QVUniVarNullPDFImpl(*this);
}
double QVUniVarNullPDFImpl::GetRandomOutcome(QVStatModelResult& result, QVMath::QVRanNumEngine&) {
  return RefuseNull("QVUniVarNullPDFImpl::GetRandomOutcome", result);
}
double QVUniVarNullPDFImpl::GetDensity(double, QVStatModelResult& result, bool) const {
  return RefuseNull("QVUniVarNullPDFImpl::GetDensity", result);
}
double QVUniVarNullPDFImpl::GetMean(QVStatModelResult& result) const {
  return RefuseNull("QVUniVarNullPDFImpl::GetMean", result);
}
double QVUniVarNullPDFImpl::GetMode(QVStatModelResult& result) const {
  return RefuseNull("QVUniVarNullPDFImpl::GetMode", result);
}
double QVUniVarNullPDFImpl::GetVariance(QVStatModelResult& result) const {
  return RefuseNull("QVUniVarNullPDFImpl::GetVariance", result);
}
double QVUniVarNullPDFImpl::GetPercentile(double, QVStatModelResult& result) const {
  return RefuseNull("QVUniVarNullPDFImpl::GetPercentile", result);
}
double QVUniVarNullPDFImpl::GetCDF(double, QVStatModelResult& result, bool) const {
  return RefuseNull("QVUniVarNullPDFImpl::GetCDF", result);
}
double QVUniVarNullPDFImpl::GetSurvival(double, QVStatModelResult& result, bool) const {
  return RefuseNull("QVUniVarNullPDFImpl::GetSurvival", result);
}
double QVUniVarNullPDFImpl::GetLogDensity(double, QVStatModelResult& result, bool) const {
  return RefuseNull("QVUniVarNullPDFImpl::GetLogDensity", result);
}
double QVUniVarNullPDFImpl::GetLogSurvival(double, QVStatModelResult& result, bool) const {
  return RefuseNull("QVUniVarNullPDFImpl::GetLogSurvival", result);
}
double QVUniVarNullPDFImpl::GetUpperTailPercentile(double, QVStatModelResult& result) const {
  return RefuseNull("QVUniVarNullPDFImpl::GetUpperTailPercentile", result);
}

QVMultiVarNullPDFImpl::QVMultiVarNullPDFImpl(const std::vector<std::string>& variableNames,
                                             const RanVarVec& parameters, const RanVarVec& outcomes)
    : QVMultiVarPDFImpl(QVPDFType::NullPDF, variableNames, parameters, outcomes) {}

QVMultiVarNullPDFImpl* QVMultiVarNullPDFImpl::CreateCopy() const {
  return new QVMultiVarNullPDFImpl(*this);
}
std::vector<double> QVMultiVarNullPDFImpl::GetRandomOutcome(QVStatModelResult& result,
                                                            QVMath::QVRanNumEngine&) {
  return RefuseNullVector("QVMultiVarNullPDFImpl::GetRandomOutcome", result);
}
double QVMultiVarNullPDFImpl::GetDensity(const std::vector<double>&, QVStatModelResult& result,
                                         bool) const {
  return RefuseNull("QVMultiVarNullPDFImpl::GetDensity", result);
}
std::vector<double> QVMultiVarNullPDFImpl::GetMean(QVStatModelResult& result) const {
  return RefuseNullVector("QVMultiVarNullPDFImpl::GetMean", result);
}
std::vector<double> QVMultiVarNullPDFImpl::GetCovariance(QVStatModelResult& result) const {
  return RefuseNullVector("QVMultiVarNullPDFImpl::GetCovariance", result);
}
std::vector<double> QVMultiVarNullPDFImpl::GetMode(QVStatModelResult& result) const {
  return RefuseNullVector("QVMultiVarNullPDFImpl::GetMode", result);
}
QVMultiVarPDF QVMultiVarNullPDFImpl::GetMultivariateMarginal(const std::vector<std::string>& names,
                                                             QVStatModelResult& result) const {
  RefuseNull("QVMultiVarNullPDFImpl::GetMultivariateMarginal", result);
  return QVMultiVarNullPDF(names);
}
QVUniVarPDF QVMultiVarNullPDFImpl::GetUnivariateMarginal(const std::string& name,
                                                         QVStatModelResult& result) const {
  RefuseNull("QVMultiVarNullPDFImpl::GetUnivariateMarginal", result);
  return QVUniVarNullPDF(name);
}

// Implementations by code

namespace {

template <class Impl>
QVUniVarPDFImpl* Create(const std::string& variableName, const RanVarVec& parameters,
                        const RanVarVec& outcomes) {
  return new Impl(variableName, parameters, outcomes);
}

struct UniVarRow {
  std::uint64_t pdfType;
  QVUniVarPDFImpl* (*create)(const std::string&, const RanVarVec&, const RanVarVec&);
};

constexpr UniVarRow kUniVarFamilies[] = {
    {QVPDFType::UniVariateGaussian, &Create<QVUniVarGaussImpl>},
    {QVPDFType::UnivariateStudentsT, &Create<QVUniVarStudentsTImpl>},
    {QVPDFType::Gamma, &Create<QVGammaImpl>},
    {QVPDFType::ChiSquared, &Create<QVChiSquareImpl>},
    {QVPDFType::SnedecorsF, &Create<QVSnedecorsFImpl>},
    {QVPDFType::Beta, &Create<QVBetaImpl>},
    {QVPDFType::Gumbel, &Create<QVGumbelImpl>},
    {QVPDFType::GeneralizedExtremeValue, &Create<QVGeneralizedExtremeValueImpl>},
    {QVPDFType::UniVarContValRandomSample, &Create<QVUniVarContValRandomSampleImpl>},
    {QVPDFType::UniVariateMixture, &Create<QVUniVarMixtureImpl>},
};

}  // namespace

QVUniVarPDFImpl* QVGetUniVarPDFImpl(std::uint64_t pdfType, const std::string& variableName,
                                    const RanVarVec& parameters, const RanVarVec& outcomes) {
  for (const UniVarRow& row : kUniVarFamilies)
    if (row.pdfType == pdfType) return row.create(variableName, parameters, outcomes);
  return new QVUniVarNullPDFImpl(variableName, parameters, outcomes);
}

QVMultiVarPDFImpl* QVGetMultiVarPDFImpl(std::uint64_t pdfType,
                                        const std::vector<std::string>& variableNames,
                                        const RanVarVec& parameters, const RanVarVec& outcomes) {
  if (pdfType == QVPDFType::MultiVariateGaussian)
    return new QVMultiVarGaussImpl(variableNames, parameters, outcomes);
  return new QVMultiVarNullPDFImpl(variableNames, parameters, outcomes);
}

}  // namespace QVStats
