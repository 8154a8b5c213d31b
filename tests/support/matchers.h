/// \file
/// \brief Matchers that explain the difference they found.
#ifndef QVSTATS_TESTS_SUPPORT_MATCHERS_H
#define QVSTATS_TESTS_SUPPORT_MATCHERS_H

#include <gmock/gmock.h>

#include <cmath>
#include <string>
#include <vector>

/// Relative closeness; absolute when the expected value is 0.
MATCHER_P2(IsCloseTo, expected, tolerance, "") {
  const double scale = expected == 0.0 ? 1.0 : std::abs(static_cast<double>(expected));
  const double error = std::abs(arg - expected) / scale;
  *result_listener << "off by " << error;
  return error <= tolerance;
}

/// A failure with this code, first recorded by this routine.
MATCHER_P2(FailedWith, code, routine, "") {
  *result_listener << arg.ReportStatResultDetails();
  const auto context = arg.GetContext();
  return arg.NotSuccessful() && arg.GetFailureType() == code && context && *context == routine;
}

/// A failure whose report names exactly these routines, innermost first, and these comments.
MATCHER_P3(FailedAlong, code, routines, comments, "") {
  *result_listener << arg.ReportStatResultDetails();
  const auto context = arg.GetContext();
  const auto extra = arg.GetComments();
  return arg.NotSuccessful() && arg.GetFailureType() == code &&
         std::vector<std::string>(context.begin(), context.end()) == routines &&
         std::vector<std::string>(extra.begin(), extra.end()) == comments;
}

#endif  // QVSTATS_TESTS_SUPPORT_MATCHERS_H
