// One million calls each of density, distribution function and percentile.

#include "benchmarks/qvperf/workloads.h"
#include "stats/api/pdf.h"

namespace QVPerf {

namespace {

using QVStats::QVPDFFunction;
using QVStats::QVStatModelResult;
using QVStats::QVUniVarPDF;

/// Times single calls of `call` as `phase`, and the bulk call of the same function.
template <class Call>
void TimeCalls(const Run& run, const std::string& phase, const QVUniVarPDF& pdf,
               QVPDFFunction function, const std::vector<double>& arguments, Call call) {
  QVStatModelResult result(true);
  double sum = 0.0;
  std::vector<double> values;
  const auto prepare = [&] { sum = 0.0; };
  const auto check = [&] { return Check("sum", sum); };
  run.Time(
      phase, prepare,
      [&] {
        for (const double argument : arguments) sum += call(argument, result);
      },
      check);
  run.Time(
      phase + "_bulk", prepare,
      [&] {
        pdf.GetValues(function, arguments, values, result, true);
        for (const double value : values) sum += value;
      },
      check);
}

void RunFamily(const Run& run, const std::string& family, const QVUniVarPDF& pdf) {
  const std::vector<double> x = run.Load("dist_" + family + "_x").values;
  const std::vector<double> p = run.Load("dist_p").values;
  TimeCalls(run, family + "_density", pdf, QVPDFFunction::Density, x,
            [&](double at, QVStatModelResult& result) { return pdf.GetDensity(at, result, true); });
  TimeCalls(run, family + "_cdf", pdf, QVPDFFunction::CDF, x,
            [&](double at, QVStatModelResult& result) { return pdf.GetCDF(at, result, true); });
  TimeCalls(run, family + "_percentile", pdf, QVPDFFunction::Percentile, p,
            [&](double at, QVStatModelResult& result) { return pdf.GetPercentile(at, result); });
}

}  // namespace

bool RunDistributions(const Run& run) {
  if (run.GetCase() != "dist1e6") return false;
  QVStatModelResult result(true);
  RunFamily(run, "t", QVStats::QVUnivariateStudentsT("x", 5.3, 0.0, 1.0, result));
  RunFamily(run, "gamma", QVStats::QVGamma("x", 2.7, 1.5, result));
  RunFamily(run, "beta", QVStats::QVBeta("x", 2.3, 3.1, result));
  return true;
}

}  // namespace QVPerf
