/// \file
/// \brief Samples of a distribution and points to plot it.
///
/// Every function returns success, or the failure of the distribution with its own name added as
/// a caller. The series may then be partly filled.
#ifndef QVSTATS_API_PDF_FUNCTIONS_H
#define QVSTATS_API_PDF_FUNCTIONS_H

#include <cstddef>
#include <vector>

#include "stats/api/export.h"
#include "stats/api/pdf.h"

namespace QVStats {

/// `sample` becomes n draws, in draw order.
QVSTATS_EXPORT QVStatModelResult QVGetPDFSample(std::vector<double>& sample, QVUniVarPDF& pdf,
                                                std::size_t n, QVMath::QVRanNumEngine& engine);

}  // namespace QVStats

#endif  // QVSTATS_API_PDF_FUNCTIONS_H
