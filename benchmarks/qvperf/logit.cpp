#include "benchmarks/qvperf/workloads.h"
#include "stats/api/logisticregression.h"

namespace QVPerf {

bool RunLogit(const Run& run) {
  if (run.GetCase() != "logit1e5") return false;
  using namespace QVStats;
  const Array x = run.Load("logit_x"), y = run.Load("logit_y");
  const std::vector<int> outcomes(y.values.begin(), y.values.end());
  const auto p = static_cast<unsigned int>(x.columns), n = static_cast<unsigned int>(x.rows);
  std::vector<double> w, sigma;
  const auto time = [&](const char* phase, unsigned int type) {
    QVBinaryLinearRegression regression;
    const auto prepare = [&] {
      regression = QVBinaryLinearRegression(p, n, type);
      regression.SetInputData(x.values, outcomes);
      regression.SetNewtonParams(1e-10, 100);
    };
    run.Time(
        phase, prepare, [&] { regression.MaximizeLogLikelihood(); },
        [&] {
          regression.GetBetaSigma(w, sigma);
          QVRegressionLogLikelihoodOpt objective(p, n, type, x.values, outcomes);
          return Check("loglik", -objective(w.data())) + ";" + Check("w1", w[1]) + ";" +
                 Check("se1", sigma[1]);
        });
  };
  time("fit", QVBinaryRegressionType::Logistic);
  time("fit_probit", QVBinaryRegressionType::Probit);
  return true;
}

}  // namespace QVPerf
