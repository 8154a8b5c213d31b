/// \file
/// \brief Public data sets, and diagnostic lines kept out of the way.
#ifndef QVSTATS_TESTS_SUPPORT_MIXTURE_SUPPORT_H
#define QVSTATS_TESTS_SUPPORT_MIXTURE_SUPPORT_H

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "platform/system/diagnostic_stream.h"
#include "platform/system/error_handler.h"

/// The numbers of a file with a header line, row after row. faithful.csv: eruptions and waiting
/// times of Old Faithful (Azzalini and Bowman, Appl. Stat. 39, 1990). galaxies.csv: velocities of
/// 82 galaxies in km/s (Roeder, J. Am. Stat. Assoc. 85, 1990, with the 78th as in R's MASS).
inline std::vector<double> ReadNumbers(const std::string& name) {
  std::ifstream file(QVSTATS_TEST_DATA "/" + name);
  EXPECT_TRUE(file) << name;
  std::string line;
  std::getline(file, line);
  std::vector<double> values;
  for (char separator; std::getline(file, line);) {
    std::istringstream fields(line);
    for (double value; fields >> value; fields >> separator) values.push_back(value);
  }
  return values;
}

/// Every `step`th value from `first` on.
inline std::vector<double> TakeEvery(const std::vector<double>& values, std::size_t first,
                                     std::size_t step) {
  std::vector<double> taken;
  for (std::size_t i = first; i < values.size(); i += step) taken.push_back(values[i]);
  return taken;
}

/// A test whose diagnostic lines and warnings are recorded.
class MixtureTest : public testing::Test {
 protected:
  std::ostringstream lines_;
  QVSystem::QVScopedRecordingSink warnings_;

 private:
  QVSystem::QVScopedDiagnosticStream redirection_{lines_};
};

#endif  // QVSTATS_TESTS_SUPPORT_MIXTURE_SUPPORT_H
