#include "stats/api/npdf_impl.h"

#include <utility>

#include "stats/api/stats_data_types.h"
#include "stats/failure.h"

namespace QVStats {

namespace {

double NullFailure(QVStatModelResult& result, const char* where) {
  result = QVFailure(QVStatModelFailureType::NullProbDistFunc, where);
  return QVStatsBadData::BadDouble;
}

}  // namespace

nQVProbDistFuncImpl::~nQVProbDistFuncImpl() = default;

nQVProbDistFuncImpl::nQVProbDistFuncImpl(std::uint64_t pdfType, std::vector<nQVRanVar> ranVars)
    : pdfType_(pdfType), ranVars_(std::move(ranVars)) {}

QVSystem::QVIter<const nQVRanVar> nQVProbDistFuncImpl::GetRanVars() const {
  return QVSystem::QVMakeIter<const nQVRanVar>(ranVars_);
}

const std::string& nQVProbDistFuncImpl::GetPDFName() const {
  return nQVPDFType::NameOf[pdfType_ < nQVPDFType::NumTypes ? pdfType_ : nQVPDFType::Unknown];
}

const nQVRanVar& nQVProbDistFuncImpl::BadRanVar() {
  static const nQVRanVar bad;
  return bad;
}

const nQVRanVar& nQVProbDistFuncImpl::GetRanVar(QVStatModelResult& result, unsigned int majorType,
                                                unsigned int minorType) const {
  for (const nQVRanVar& ranVar : ranVars_)
    if (ranVar.IsDesiredType(majorType, minorType)) {
      result = true;
      return ranVar;
    }
  result = QVFailure(QVStatModelFailureType::RanVarNotFound, "nQVProbDistFuncImpl::GetRanVar")
           << "Random Var Type: " << nQVGetRanVarTypeName(majorType, minorType);
  return BadRanVar();
}

std::string nQVProbDistFuncImpl::PrintRanVars(std::size_t limit) const {
  std::string text;
  for (const nQVRanVar& ranVar : ranVars_) text += ranVar.Print(limit) + "---------------------\n";
  return text;
}

nQVUniVarPDFImpl::nQVUniVarPDFImpl(std::uint64_t pdfType, const std::string& variableName,
                                   std::vector<nQVRanVar> ranVars)
    : nQVProbDistFuncImpl(pdfType, std::move(ranVars)), variableName_(variableName) {}

std::string nQVUniVarPDFImpl::DefaultPrint(std::size_t limit) const {
  return "PDF: " + GetPDFName() + "\n Variable name: " + variableName_ + "\n" + PrintRanVars(limit);
}

nQVUniVarNullPDFImpl::nQVUniVarNullPDFImpl(const std::string& variableName,
                                           std::vector<nQVRanVar> ranVars)
    : nQVUniVarPDFImpl(nQVPDFType::NullPDF, variableName, std::move(ranVars)) {}

nQVUniVarNullPDFImpl* nQVUniVarNullPDFImpl::CreateCopy() const {
  return new nQVUniVarNullPDFImpl(*this);
}

std::string nQVUniVarNullPDFImpl::Print(std::size_t limit) const { return DefaultPrint(limit); }

double nQVUniVarNullPDFImpl::GetRandomOutcome(QVStatModelResult& result, QVMath::QVRanNumEngine&) {
  return NullFailure(result, "nQVUniVarNullPDFImpl::GetRandomOutcome");
}

double nQVUniVarNullPDFImpl::GetDensity(QVStatModelResult& result, double, bool) const {
  return NullFailure(result, "nQVUniVarNullPDFImpl::GetDensity");
}

double nQVUniVarNullPDFImpl::GetMean(QVStatModelResult& result) const {
  return NullFailure(result, "nQVUniVarNullPDFImpl::GetMean");
}

double nQVUniVarNullPDFImpl::GetMode(QVStatModelResult& result) const {
  return NullFailure(result, "nQVUniVarNullPDFImpl::GetMode");
}

double nQVUniVarNullPDFImpl::GetVariance(QVStatModelResult& result) const {
  return NullFailure(result, "nQVUniVarNullPDFImpl::GetVariance");
}

double nQVUniVarNullPDFImpl::GetPercentile(QVStatModelResult& result, double) const {
  return NullFailure(result, "nQVUniVarNullPDFImpl::GetPercentile");
}

double nQVUniVarNullPDFImpl::GetCDF(QVStatModelResult& result, double, bool) const {
  return NullFailure(result, "nQVUniVarNullPDFImpl::GetCDF");
}

}  // namespace QVStats
