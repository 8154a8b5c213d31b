#include "stats/api/pdf_functions.h"

#include "stats/failure.h"

namespace QVStats {

QVStatModelResult QVGetPDFSample(std::vector<double>& sample, QVUniVarPDF& pdf, std::size_t n,
                                 QVMath::QVRanNumEngine& engine) {
  QVStatModelResult result(true);
  sample.clear();
  sample.reserve(n);
  for (std::size_t i = 0; i < n; ++i) {
    const double outcome = pdf.GetRandomOutcome(result, engine);
    if (QVFailedIn(result, "QVGetPDFSample")) return result;
    sample.push_back(outcome);
  }
  return result;
}

}  // namespace QVStats
