/// \file
/// \brief How the report prints numbers.
#ifndef QVSTATS_KRIGE_REPORT_FORMAT_H
#define QVSTATS_KRIGE_REPORT_FORMAT_H

#include <string>

namespace QVStats {

/// The printf format that shows `value` with `n` significant figures: fixed point, or scientific
/// below 1e-5 and above 1e5 (above 10^n when n > 5). "%f" for n = 0 and for what is not finite.
std::string GetFormatString(double value, unsigned int n);

/// `value` printed with the format chosen for it.
std::string FormatNumber(double value, unsigned int n);

}  // namespace QVStats

#endif  // QVSTATS_KRIGE_REPORT_FORMAT_H
