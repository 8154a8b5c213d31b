#include "stats/api/linear_smoother.h"

namespace QVStats {

namespace {

using Create = QVLinearSmootherOnSimilarityBase* (*)(unsigned int, const std::string&,
                                                     const std::string&, const QVDataTable&);

template <class Smoother>
QVLinearSmootherOnSimilarityBase* CreateSmoother(unsigned int kernelType,
                                                 const std::string& responseColName,
                                                 const std::string& similarityColName,
                                                 const QVDataTable& table) {
  return new Smoother(kernelType, responseColName, similarityColName, table);
}

struct SmootherRow {
  /// Null for a model that has no name.
  const char* shortName;
  Create create;
};

/// In the order of the codes.
constexpr SmootherRow kSmoothers[QVLinearSmootherOnSimilarityType::NumTypes] = {
    {nullptr, nullptr},
    {"KernelRegression", CreateSmoother<QVKernelRegressionOnSimilarity>},
    {"GaussianProcess", CreateSmoother<QVGaussianProcessOnSimilarity>},
    {nullptr, CreateSmoother<QVKrigeOnSimilarity>},
    {nullptr, CreateSmoother<QVOrdinaryKrigeOnSimilarity>},
};

}  // namespace

QVLinearSmootherOnSimilarityBase* QVGetLinearSmootherOnSimilarity(
    unsigned int smootherType, unsigned int kernelType, const std::string& responseColName,
    const std::string& similarityColName, const QVDataTable& table) {
  if (smootherType == 0 || smootherType >= QVLinearSmootherOnSimilarityType::NumTypes)
    return new QVNullRegressionOnSimilarity;
  return kSmoothers[smootherType].create(kernelType, responseColName, similarityColName, table);
}

unsigned int QVGetLinearSmootherOnSimilarityType(const std::string& name) {
  for (unsigned int type = 1; type < QVLinearSmootherOnSimilarityType::NumTypes; ++type)
    if (kSmoothers[type].shortName && name == kSmoothers[type].shortName) return type;
  return 0;
}

}  // namespace QVStats
