// Uses the installed library as a client would: links it, computes, and checks what comes back.
#include <cstdio>

#include "stats/api/stat_model.h"
#include "stats/api/version.h"

int main() {
  QVStats::QVStatModelResult result(true);
  result.SetFailureTypeAndWhereFailed(QVStats::QVStatModelFailureType::NoData, "main");
  std::printf("%s %s\n", QVStats::QVStatsGetProductName(), QVStats::QVStatsGetRelease());
  return result.GetFailureType() == QVStats::QVStatModelFailureType::NoData ? 0 : 1;
}
