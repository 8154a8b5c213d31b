/// \file
/// \brief The workloads, one for each file; each returns false for a case that it does not know.
#ifndef QVSTATS_BENCHMARKS_QVPERF_WORKLOADS_H
#define QVSTATS_BENCHMARKS_QVPERF_WORKLOADS_H

#include "benchmarks/qvperf/qvperf.h"

namespace QVPerf {

bool RunAUC(const Run& run);
bool RunBootstrap(const Run& run);
bool RunCsv(const Run& run);
bool RunDistanceCovariance(const Run& run);
bool RunDistributions(const Run& run);
bool RunFingerprints(const Run& run);
bool RunGaussianProcess(const Run& run);
/// The cases of RunGaussianProcess on similarities.
bool RunSpectralGaussianProcess(const Run& run);
bool RunVariogram(const Run& run);
bool RunLogit(const Run& run);
bool RunMCS(const Run& run);
bool RunMixtures(const Run& run);
bool RunRankCorrelations(const Run& run);
bool RunSNN(const Run& run);

}  // namespace QVPerf

#endif  // QVSTATS_BENCHMARKS_QVPERF_WORKLOADS_H
