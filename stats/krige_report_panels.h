/// \file
/// \brief What the panels of the report share.
#ifndef QVSTATS_KRIGE_REPORT_PANELS_H
#define QVSTATS_KRIGE_REPORT_PANELS_H

#include <string>

#include "platform/depict/image.h"
#include "stats/api/krige_report_options.h"
#include "stats/api/mol_krige_result.h"

namespace QVStats {

/// Standard deviations to either side of the mean that hold 95 % of a normal distribution.
constexpr double kNormal95 = 1.96;

/// Captions and headlines are bold, values plain; both black and centred at first.
inline QVDepict::QVFont GetBoldFont(double size) {
  return QVDepict::QVFont(QVDepict::QVFontFamily::Sans, QVDepict::QVFontStyle::Bold, size,
                          QVDepict::QVAlignment::Center);
}
inline QVDepict::QVFont GetPlainFont(double size) {
  return QVDepict::QVFont(QVDepict::QVFontFamily::Sans, QVDepict::QVFontStyle::Normal, size,
                          QVDepict::QVAlignment::Center);
}

/// Prints responses of one result: all with the format of its element response of largest
/// magnitude, or, unlogged, as 10^value with the format of that number.
class ResponseFormat {
 public:
  ResponseFormat(const QVMolKrigeResult& result, const QVKrigeReportOptions& options);
  std::string GetText(double response) const;
  /// "<response name> <response>", and with a standard deviation " [<low><separator><high>]".
  std::string GetCaption(double response) const;
  std::string GetInterval(double response, double standardDeviation, const char* separator) const;

 private:
  std::string responseName_;
  std::string format_;
  unsigned int significantFigures_;
  bool unlog_;
};

/// Whether the result has a variance, which is 0 for a query that is a training molecule.
bool HasVariance(const QVMolKrigeResult& result);

}  // namespace QVStats

#endif  // QVSTATS_KRIGE_REPORT_PANELS_H
