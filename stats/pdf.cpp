#include "stats/api/pdf.h"

#include "stats/api/pdf_families.h"
#include "stats/api/pdf_functions.h"
#include "stats/api/pdf_setup.h"
#include "stats/failure.h"

namespace QVStats {

namespace {

/// A distribution from a set-up function and its arguments, or the null one.
template <class Family, class... Arguments>
QVUniVarPDF MakeUniVar(const char* where, const std::string& variableName,
                       QVStatModelResult& result, Arguments... arguments) {
  QVRanVarVec parameters, outcomes;
  result = Family::SetupRanVarVecs(arguments..., parameters, outcomes);
  if (QVFailedIn(result, where)) return QVUniVarNullPDF(variableName);
  result = true;
  return QVUniVarPDF(Family::PdfType, variableName, parameters, outcomes);
}

/// The same for several variables. A distribution that refuses its parameters tells why.
template <class Family, class Impl, class... Arguments>
QVMultiVarPDF MakeMultiVar(const char* where, const std::vector<std::string>& variableNames,
                           QVStatModelResult& result, const Arguments&... arguments) {
  QVRanVarVec parameters, outcomes;
  result = Family::SetupRanVarVecs(arguments..., parameters, outcomes);
  if (QVFailedIn(result, where)) return QVMultiVarNullPDF(variableNames);
  result = true;
  QVMultiVarPDF pdf(Family::PdfType, variableNames, parameters, outcomes);
  if (auto* impl = dynamic_cast<Impl*>(pdf.GetImpl()); impl && !impl->Valid())
    result = QVCalledFrom(where, impl->GetParams());
  return pdf;
}

QVUniVarPDF RefuseMixture(unsigned int failure, const char* where, const std::string& comment,
                          const std::string& variableName, QVStatModelResult& result) {
  result = QVFailure(failure, where) << comment;
  return QVUniVarNullPDF(variableName);
}

/// The components' random variables, one after the other, and their numbers of parameters.
struct Components {
  QVRanVarVec parameters, outcomes;
  std::vector<std::size_t> numParams;

  QVStatModelResult Add(unsigned int pdfType, const std::vector<double>& values) {
    QVRanVarVec ownParameters, ownOutcomes;
    const QVStatModelResult result =
        QVUniVarGenericRanVars::SetupRanVarVecs(pdfType, values, ownParameters, ownOutcomes);
    numParams.push_back(values.size());
    parameters.insert(parameters.end(), ownParameters.begin(), ownParameters.end());
    outcomes.insert(outcomes.end(), ownOutcomes.begin(), ownOutcomes.end());
    return result;
  }
};

/// A mixture whose components are of one family, from one vector for each of its parameters.
QVUniVarPDF MakeMixtureOfOneFamily(const char* where, const std::string& variableName,
                                   std::uint64_t pdfType, const std::vector<double>& mixtureProbs,
                                   const std::vector<const std::vector<double>*>& numbers,
                                   QVStatModelResult& result) {
  if (mixtureProbs.empty())
    return RefuseMixture(QVStatModelFailureType::EmptyStatModel, where, "Empty mixtureProbs vector",
                         variableName, result);
  std::vector<std::vector<double>> paramVecs(mixtureProbs.size());
  for (const std::vector<double>* number : numbers) {
    if (number->size() != mixtureProbs.size())
      return RefuseMixture(QVStatModelFailureType::MismatchBetweenInputVecSizes, where,
                           "Num mix probs:" + std::to_string(mixtureProbs.size()) +
                               " Num params:" + std::to_string(number->size()),
                           variableName, result);
    for (std::size_t k = 0; k < paramVecs.size(); ++k) paramVecs[k].push_back((*number)[k]);
  }
  const std::vector<unsigned int> pdfTypes(mixtureProbs.size(), static_cast<unsigned int>(pdfType));
  QVUniVarPDF pdf = QVUnivariateMixture(variableName, pdfTypes, mixtureProbs, paramVecs, result);
  QVFailedIn(result, where);
  return pdf;
}

}  // namespace

QVUniVarPDF QVUniVarNullPDF(const std::string& variableName) {
  return QVUniVarPDF(QVPDFType::NullPDF, variableName, {}, {});
}

QVMultiVarPDF QVMultiVarNullPDF(const std::vector<std::string>& variableNames) {
  return QVMultiVarPDF(QVPDFType::NullPDF, variableNames, {}, {});
}

QVUniVarPDF QVUnivariateGaussian(const std::string& variableName, double mean, double precision,
                                 QVStatModelResult& result) {
  return MakeUniVar<QVUniVarGaussRanVars>("QVUnivariateGaussian", variableName, result, mean,
                                          precision);
}

QVUniVarPDF QVUnivariateStudentsT(const std::string& variableName, double degreesOfFreedom,
                                  double location, double precision, QVStatModelResult& result) {
  return MakeUniVar<QVUniVarStudentsTRanVars>("QVUnivariateStudentsT", variableName, result,
                                              degreesOfFreedom, location, precision);
}

QVUniVarPDF QVGamma(const std::string& variableName, double shape, double inverseScale,
                    QVStatModelResult& result) {
  return MakeUniVar<QVGammaRanVars>("QVGamma", variableName, result, shape, inverseScale);
}

QVUniVarPDF QVChiSquare(const std::string& variableName, double degreesOfFreedom,
                        QVStatModelResult& result) {
  return MakeUniVar<QVChiSquareRanVars>("QVChiSquare", variableName, result, degreesOfFreedom);
}

QVUniVarPDF QVSnedecorsF(const std::string& variableName, double numeratorDof,
                         double denominatorDof, QVStatModelResult& result) {
  return MakeUniVar<QVSnedecorsFRanVars>("QVSnedecorsF", variableName, result, numeratorDof,
                                         denominatorDof);
}

QVUniVarPDF QVBeta(const std::string& variableName, double alpha, double beta,
                   QVStatModelResult& result) {
  return MakeUniVar<QVBetaRanVars>("QVBeta", variableName, result, alpha, beta);
}

QVUniVarPDF QVGumbel(const std::string& variableName, double location, double scale,
                     QVStatModelResult& result) {
  return MakeUniVar<QVGumbelRanVars>("QVGumbel", variableName, result, location, scale);
}

QVUniVarPDF QVGeneralizedExtremeValue(const std::string& variableName, double location,
                                      double scale, double shape, QVStatModelResult& result) {
  return MakeUniVar<QVGeneralizedExtremeValueRanVars>("QVGeneralizedExtremeValue", variableName,
                                                      result, location, scale, shape);
}

QVMultiVarPDF QVMultivariateGaussian(const std::vector<std::string>& variableNames,
                                     const std::vector<double>& mean,
                                     const std::vector<double>& precisionMatrix,
                                     QVStatModelResult& result) {
  return MakeMultiVar<QVMultiVarGaussRanVars, QVMultiVarGaussImpl>(
      "QVMultivariateGaussian", variableNames, result, mean, precisionMatrix);
}

QVMultiVarPDF QVMultivariateStudentsT(const std::vector<std::string>& variableNames,
                                      double degreesOfFreedom, const std::vector<double>& location,
                                      const std::vector<double>& precisionMatrix,
                                      QVStatModelResult& result) {
  return MakeMultiVar<QVMultiVarStudentsTRanVars, QVMultiVarStudentsTImpl>(
      "QVMultivariateStudentsT", variableNames, result, degreesOfFreedom, location,
      precisionMatrix);
}

QVUniVarPDF QVUniVarContValRandomSample(QVStatModelResult& result, QVUniVarPDF& source,
                                        QVMath::QVRanNumEngine& engine, std::size_t sampleSize) {
  const char* where = "QVUniVarContValRandomSample";
  const std::string name = source.GetVariableName();
  std::vector<double> sample;
  result = QVGetPDFSample(sample, source, sampleSize, engine);
  if (QVFailedIn(result, where)) return QVUniVarNullPDF(name);
  QVRanVarVec parameters, outcomes;
  result = QVUniVarContValRandomSampleRanVars::SetupRanVarVecs(source.GetImpl()->GetPDFType(),
                                                               sample, parameters, outcomes);
  if (QVFailedIn(result, where)) return QVUniVarNullPDF(name);
  QVUniVarPDF pdf(QVPDFType::UniVarContValRandomSample, name, parameters, outcomes);
  if (auto* impl = dynamic_cast<QVUniVarContValRandomSampleImpl*>(pdf.GetImpl());
      impl && !impl->Valid())
    result = QVCalledFrom(where, impl->GetParams());
  return pdf;
}

QVUniVarPDF QVUnivariateMixture(const std::string& variableName,
                                const std::vector<unsigned int>& pdfTypes,
                                const std::vector<double>& mixtureProbs,
                                const std::vector<std::vector<double>>& paramVecs,
                                QVStatModelResult& result) {
  const char* where = "QVUnivariateMixture";
  const std::size_t count = pdfTypes.size();
  if (count == 0)
    return RefuseMixture(QVStatModelFailureType::EmptyStatModel, where, "Empty pdfTypes vector",
                         variableName, result);
  const std::string numTypes = " Num pdf types:" + std::to_string(count);
  if (paramVecs.size() != count)
    return RefuseMixture(QVStatModelFailureType::MismatchBetweenInputVecSizes, where,
                         "Num param vecs:" + std::to_string(paramVecs.size()) + numTypes,
                         variableName, result);
  if (mixtureProbs.size() != count)
    return RefuseMixture(QVStatModelFailureType::MismatchBetweenInputVecSizes, where,
                         "Num mix probs:" + std::to_string(mixtureProbs.size()) + numTypes,
                         variableName, result);
  Components components;
  for (std::size_t k = 0; k < count; ++k) {
    result = components.Add(pdfTypes[k], paramVecs[k]);
    if (QVFailedIn(result, where)) return QVUniVarNullPDF(variableName);
  }
  QVRanVarVec parameters, outcomes;
  result = QVUniVarMixtureRanVars::SetupRanVarVecs(count, pdfTypes, components.numParams,
                                                   mixtureProbs, parameters, outcomes);
  if (QVFailedIn(result, where)) return QVUniVarNullPDF(variableName);
  parameters.insert(parameters.end(), components.parameters.begin(), components.parameters.end());
  outcomes.insert(outcomes.end(), components.outcomes.begin(), components.outcomes.end());
  result = true;
  QVUniVarPDF pdf(QVPDFType::UniVariateMixture, variableName, parameters, outcomes);
  if (auto* impl = dynamic_cast<QVUniVarMixtureImpl*>(pdf.GetImpl()); impl && !impl->Valid())
    result = QVCalledFrom(where, impl->GetParams());
  return pdf;
}

QVUniVarPDF QVUnivariateGaussMixture(const std::string& variableName,
                                     const std::vector<double>& mixtureProbs,
                                     const std::vector<double>& means,
                                     const std::vector<double>& precisions,
                                     QVStatModelResult& result) {
  return MakeMixtureOfOneFamily("QVUnivariateGaussMixture", variableName,
                                QVPDFType::UniVariateGaussian, mixtureProbs, {&means, &precisions},
                                result);
}

QVUniVarPDF QVUnivariateStudentsTMixture(const std::string& variableName,
                                         const std::vector<double>& mixtureProbs,
                                         const std::vector<double>& degreesOfFreedom,
                                         const std::vector<double>& locations,
                                         const std::vector<double>& precisions,
                                         QVStatModelResult& result) {
  return MakeMixtureOfOneFamily("QVUnivariateStudentsTMixture", variableName,
                                QVPDFType::UnivariateStudentsT, mixtureProbs,
                                {&degreesOfFreedom, &locations, &precisions}, result);
}

}  // namespace QVStats
