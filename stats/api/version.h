/// \file
/// \brief What this library calls itself: fixed when it is built.
#ifndef QVSTATS_API_VERSION_H
#define QVSTATS_API_VERSION_H

#include "stats/api/export.h"

namespace QVStats {

/// \return the whole version as one number, major * 10000 + minor * 100 + patch.
QVSTATS_EXPORT unsigned int QVStatsGetVersion();
/// \return "major.minor.patch".
QVSTATS_EXPORT const char* QVStatsGetRelease();
/// \return the name of the library, "libqvstats".
QVSTATS_EXPORT const char* QVStatsGetProductName();
/// \return the platform that the library was built for, as "Linux-x86_64".
QVSTATS_EXPORT const char* QVStatsGetPlatform();
/// \return the terms of use in a line.
QVSTATS_EXPORT const char* QVStatsGetLicense();

}  // namespace QVStats

#endif  // QVSTATS_API_VERSION_H
