#include "stats/api/version.h"

#include "stats/version_config.h"

namespace QVStats {

unsigned int QVStatsGetVersion() {
  return QVSTATS_VERSION_MAJOR * 10000 + QVSTATS_VERSION_MINOR * 100 + QVSTATS_VERSION_PATCH;
}
const char* QVStatsGetRelease() { return QVSTATS_VERSION_TEXT; }
const char* QVStatsGetProductName() { return "libqvstats"; }
const char* QVStatsGetPlatform() { return QVSTATS_PLATFORM; }
const char* QVStatsGetLicense() { return "BSD-3-Clause"; }

}  // namespace QVStats
