#include "stats/api/pdf_fit.h"

#include <Eigen/Cholesky>
#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

#include "stats/api/matrix.h"
#include "stats/api/pdf_setup.h"
#include "stats/api/stats_data_types.h"
#include "stats/failure.h"
#include "stats/pdf_likelihoods.h"

namespace QVStats {

namespace {

using QVLikelihoods::Role;
using QVLikelihoods::Sample;
using QVLikelihoods::Unit;

constexpr unsigned int kMaxSteps = 200;

bool IsPositive(Role role) { return role != Role::Location && role != Role::RealShape; }

/// The factor by which a parameter of standard units is multiplied for the unit of the data; a
/// location is then shifted by the center.
double FactorOf(Role role, const Unit& unit) {
  switch (role) {
    case Role::Location:
    case Role::Scale:
      return unit.scale;
    case Role::Precision:
      return 1.0 / (unit.scale * unit.scale);
    case Role::Rate:
      return 1.0 / unit.scale;
    case Role::Shape:
    case Role::RealShape:
      break;
  }
  return 1.0;
}

/// The climb to the maximum of one likelihood, in coordinates without bounds: the logarithms of
/// positive parameters.
template <class Likelihood>
class Climb {
 public:
  static constexpr std::size_t N = Likelihood::Roles.size();
  using Params = std::array<double, N>;
  using Jet = QVJet<N>;
  enum class End { AtMaximum, AtLimit, Lost };

  explicit Climb(const Likelihood& likelihood) : likelihood_(likelihood) {
    const Params start = likelihood.Start();
    for (std::size_t i = 0; i < N; ++i)
      coordinates_(static_cast<Eigen::Index>(i)) =
          IsPositive(Likelihood::Roles[i]) ? std::log(start[i]) : start[i];
  }

  End Run() {
    Jet here = Evaluate(coordinates_);
    while (numSteps_ < kMaxSteps && std::isfinite(here.value)) {
      const bool convex = FindStep(here);
      // By how much the likelihood would grow, were it a parabola.
      const double gain = 0.5 * GradientOf(here).dot(step_);
      if (convex && gain < 1e-20) return End::AtMaximum;
      ++numSteps_;
      // Close to the maximum the growth drowns in rounding; there the steps need no check.
      if (convex && gain < 1e-8) {
        coordinates_ += step_;
        here = Evaluate(coordinates_);
      } else if (!Advance(here)) {
        break;
      }
      if (FindParameterAtLimit() != N) return End::AtLimit;
    }
    return End::Lost;
  }

  /// The first parameter that has gone to its limit; N for none.
  std::size_t FindParameterAtLimit() const {
    const Params params = GetParams();
    for (std::size_t i = 0; i < N; ++i) {
      const Role role = Likelihood::Roles[i];
      if (IsPositive(role) && std::abs(std::log(params[i])) > std::log(Likelihood::Limit)) return i;
      if (role == Role::RealShape && params[i] < -0.999) return i;
    }
    return N;
  }

  Params GetParams() const {
    Params params;
    for (std::size_t i = 0; i < N; ++i) {
      const double coordinate = coordinates_(static_cast<Eigen::Index>(i));
      params[i] = IsPositive(Likelihood::Roles[i]) ? std::exp(coordinate) : coordinate;
    }
    return params;
  }

  unsigned int GetNumSteps() const { return numSteps_; }

 private:
  using Vector = Eigen::Matrix<double, static_cast<int>(N), 1>;
  using Matrix = Eigen::Matrix<double, static_cast<int>(N), static_cast<int>(N)>;

  Jet Evaluate(const Vector& coordinates) const {
    std::array<Jet, N> params;
    for (std::size_t i = 0; i < N; ++i) {
      params[i] = Jet::Variable(coordinates(static_cast<Eigen::Index>(i)), i);
      if (IsPositive(Likelihood::Roles[i])) params[i] = Exp(params[i]);
    }
    return likelihood_.MeanLogDensity(params);
  }

  static Vector GradientOf(const Jet& jet) { return Vector(jet.gradient.data()); }

  /// Newton's step, uphill: where the likelihood is not concave its curvature is raised.
  /// \return whether it was concave.
  bool FindStep(const Jet& here) {
    Matrix curvature = Matrix::Zero();
    for (std::size_t i = 0; i < N; ++i)
      for (std::size_t j = 0; j <= i; ++j)
        curvature(static_cast<Eigen::Index>(i), static_cast<Eigen::Index>(j)) = -here.hessian[i][j];
    double raised = 0.0;
    Eigen::LLT<Matrix> factor(curvature);
    for (int tries = 0; factor.info() != Eigen::Success && tries < 60; ++tries) {
      raised = raised > 0.0 ? 4.0 * raised
                            : 1e-3 * std::max(curvature.diagonal().cwiseAbs().maxCoeff(), 1e-3);
      factor.compute(curvature + raised * Matrix::Identity());
    }
    step_ = factor.solve(GradientOf(here));
    // A factor e^2 for a positive parameter is as far as the parabola is trusted.
    const double longest = step_.cwiseAbs().maxCoeff();
    if (longest > 2.0) step_ *= 2.0 / longest;
    return raised == 0.0;
  }

  /// Goes along the step, halved until the likelihood grows.
  /// \return whether it grew.
  bool Advance(Jet& here) {
    for (int halvings = 0; halvings < 50; ++halvings, step_ *= 0.5) {
      const Vector next = coordinates_ + step_;
      const Jet there = Evaluate(next);
      if (!(there.value > here.value)) continue;  // nor where it is undefined
      coordinates_ = next;
      here = there;
      return true;
    }
    return false;
  }

  const Likelihood& likelihood_;
  Vector coordinates_;
  Vector step_;
  unsigned int numSteps_ = 0;
};

QVStatModelResult CheckValue(const char* where, const QVRanVarDescription& outcome, double value,
                             std::size_t index) {
  const std::uint64_t constraint = outcome.kind.constraintType;
  const bool isBounded = constraint == QVRanVarConstraintTypes::Bounded;
  const bool hasLowerBound = isBounded || constraint == QVRanVarConstraintTypes::StrictLowerBound;
  unsigned int fault = QVStatModelFailureType::Undefined;
  if (!std::isfinite(value) || value == QVStatsBadData::BadDouble ||
      value == QVStatsBadData::MissingDouble)
    fault = QVStatModelFailureType::MissingOrBadResponseValue;
  else if (hasLowerBound && value <= outcome.lowerBound)
    fault = QVStatModelFailureType::LowerBoundViolated;
  else if (isBounded && value >= outcome.upperBound)
    fault = QVStatModelFailureType::UpperBoundViolated;
  if (fault == QVStatModelFailureType::Undefined) return true;
  return QVFailure(fault, where) << "Value " << index << " of the sample is " << value;
}

template <class Likelihood>
QVStatModelResult CheckSample(const char* where, const Sample& sample) {
  constexpr std::size_t numParameters = Likelihood::Roles.size();
  if (sample.size() < numParameters)
    return QVFailure(QVStatModelFailureType::NoData, where)
           << "Num values: " << sample.size() << "; at least " << numParameters << " are required";
  const QVRanVarDescription& outcome = Likelihood::RanVars::Descriptions[numParameters];
  for (std::size_t i = 0; i < sample.size(); ++i) {
    const QVStatModelResult result = CheckValue(where, outcome, sample[i], i);
    if (result.NotSuccessful()) return result;
  }
  const auto isFirst = [&](double x) { return x == sample.front(); };
  if (numParameters > 1 && std::all_of(sample.begin(), sample.end(), isFirst))
    return QVFailure(QVStatModelFailureType::SingularScaleOrCovariance, where)
           << "All values of the sample are " << sample.front();
  return true;
}

QVPDFFit NullFit(const std::string& variableName) {
  return {QVUniVarNullPDF(variableName), {}, {}, {}, QVStatsBadData::BadDouble, 0};
}

template <class Likelihood>
QVStatModelResult NoMaximum(const char* where, const Climb<Likelihood>& climb) {
  const std::size_t parameter = climb.FindParameterAtLimit();
  const double value = climb.GetParams()[parameter];
  const bool isReal = Likelihood::Roles[parameter] == Role::RealShape;
  return QVFailure(QVStatModelFailureType::WrongPDFType, where)
         << "The likelihood grows as " << Likelihood::RanVars::NameOf[parameter] << " goes to "
         << (isReal        ? "-1"
             : value > 1.0 ? "infinity"
                           : "0");
}

/// The covariance of the parameters in standard units: the inverse of the information in n
/// observations. Empty if that is not positive definite.
template <class Likelihood>
std::vector<double> FindCovariance(const Likelihood& likelihood,
                                   const typename Climb<Likelihood>::Params& params, double n,
                                   double& meanLogDensity) {
  constexpr std::size_t N = Climb<Likelihood>::N;
  std::array<QVJet<N>, N> variables;
  for (std::size_t i = 0; i < N; ++i) variables[i] = QVJet<N>::Variable(params[i], i);
  const QVJet<N> jet = likelihood.MeanLogDensity(variables);
  meanLogDensity = jet.value;
  std::vector<double> information(N * N), covariance;
  for (std::size_t i = 0; i < N; ++i)
    for (std::size_t j = 0; j <= i; ++j)
      information[i * N + j] = information[j * N + i] = -n * jet.hessian[i][j];
  if (QVInverseOfPosDefMatrix(N, information, covariance).NotSuccessful()) covariance.clear();
  return covariance;
}

/// Whether standard errors exist: a bounded extreme-value distribution may have too much of its
/// probability at its end.
template <class Likelihood>
bool IsRegular(const typename Climb<Likelihood>::Params& params) {
  for (std::size_t i = 0; i < params.size(); ++i)
    if (Likelihood::Roles[i] == Role::RealShape && params[i] <= -0.5) return false;
  return true;
}

/// What was found in standard units, in those of the data.
template <class Likelihood>
QVPDFFit MakeFit(const std::string& variableName, const Likelihood& likelihood, const Unit& unit,
                 std::size_t sampleSize, const Climb<Likelihood>& climb) {
  constexpr std::size_t N = Climb<Likelihood>::N;
  const double n = static_cast<double>(sampleSize);
  const auto params = climb.GetParams();
  double meanLogDensity = 0.0;
  QVPDFFit fit = NullFit(variableName);
  fit.covariance = FindCovariance(likelihood, params, n, meanLogDensity);
  if (!IsRegular<Likelihood>(params)) fit.covariance.clear();
  fit.logLikelihood = n * (meanLogDensity - std::log(unit.scale));
  fit.numSteps = climb.GetNumSteps();
  fit.standardErrors.assign(N, QVStatsBadData::BadDouble);
  for (std::size_t i = 0; i < N; ++i) {
    const Role role = Likelihood::Roles[i];
    const double factor = FactorOf(role, unit);
    fit.parameters.push_back(factor * params[i] + (role == Role::Location ? unit.center : 0.0));
    if (fit.covariance.empty()) continue;
    for (std::size_t j = 0; j < N; ++j) {
      fit.covariance[i * N + j] *= factor;
      fit.covariance[j * N + i] *= factor;
    }
    fit.standardErrors[i] = std::sqrt(fit.covariance[i * N + i]);
  }
  return fit;
}

template <class Likelihood>
QVPDFFit Fit(const char* where, const std::string& variableName, const Sample& sample,
             QVStatModelResult& result) {
  using ClimbType = Climb<Likelihood>;
  result = CheckSample<Likelihood>(where, sample);
  if (result.NotSuccessful()) return NullFit(variableName);
  const Unit unit = Likelihood::Standard(sample);
  Sample standardised = sample;
  for (double& x : standardised) x = (x - unit.center) / unit.scale;
  const Likelihood likelihood(standardised);
  ClimbType climb(likelihood);
  const auto end = climb.Run();
  if (end == ClimbType::End::AtLimit) result = NoMaximum(where, climb);
  if (end == ClimbType::End::Lost)
    result = QVFailure(QVStatModelFailureType::InternalLogicFailure, where)
             << "No maximum of the likelihood found in " << climb.GetNumSteps() << " steps";
  if (result.NotSuccessful()) return NullFit(variableName);
  QVPDFFit fit = MakeFit(variableName, likelihood, unit, sample.size(), climb);
  QVRanVarVec parameters, outcomes;
  result = QVUniVarGenericRanVars::SetupRanVarVecs(Likelihood::RanVars::PdfType, fit.parameters,
                                                   parameters, outcomes);
  if (QVFailedIn(result, where)) return NullFit(variableName);
  fit.pdf = QVUniVarPDF(Likelihood::RanVars::PdfType, variableName, parameters, outcomes);
  return fit;
}

/// The fits by family.
struct FitRow {
  std::uint64_t pdfType;
  const char* name;
  QVPDFFit (*fit)(const char*, const std::string&, const Sample&, QVStatModelResult&);
};

template <class Likelihood>
constexpr FitRow Row(const char* name) {
  return {Likelihood::RanVars::PdfType, name, &Fit<Likelihood>};
}

constexpr FitRow kFits[] = {
    Row<QVLikelihoods::Gaussian>("QVFitUnivariateGaussian"),
    Row<QVLikelihoods::StudentsT>("QVFitUnivariateStudentsT"),
    Row<QVLikelihoods::Gamma>("QVFitGamma"),
    Row<QVLikelihoods::ChiSquared>("QVFitChiSquare"),
    Row<QVLikelihoods::SnedecorsF>("QVFitSnedecorsF"),
    Row<QVLikelihoods::Beta>("QVFitBeta"),
    Row<QVLikelihoods::Gumbel>("QVFitGumbel"),
    Row<QVLikelihoods::GeneralizedExtremeValue>("QVFitGeneralizedExtremeValue"),
};

const FitRow* FindFit(std::uint64_t pdfType) {
  const auto row = std::find_if(std::begin(kFits), std::end(kFits),
                                [&](const FitRow& fit) { return fit.pdfType == pdfType; });
  return row == std::end(kFits) ? nullptr : row;
}

QVPDFFit FitFamily(std::uint64_t pdfType, const std::string& variableName, const Sample& sample,
                   QVStatModelResult& result) {
  const FitRow& row = *FindFit(pdfType);
  return row.fit(row.name, variableName, sample, result);
}

}  // namespace

QVPDFFit QVFitUnivariateGaussian(const std::string& variableName, const Sample& sample,
                                 QVStatModelResult& result) {
  return FitFamily(QVPDFType::UniVariateGaussian, variableName, sample, result);
}

QVPDFFit QVFitUnivariateStudentsT(const std::string& variableName, const Sample& sample,
                                  QVStatModelResult& result) {
  return FitFamily(QVPDFType::UnivariateStudentsT, variableName, sample, result);
}

QVPDFFit QVFitGamma(const std::string& variableName, const Sample& sample,
                    QVStatModelResult& result) {
  return FitFamily(QVPDFType::Gamma, variableName, sample, result);
}

QVPDFFit QVFitChiSquare(const std::string& variableName, const Sample& sample,
                        QVStatModelResult& result) {
  return FitFamily(QVPDFType::ChiSquared, variableName, sample, result);
}

QVPDFFit QVFitSnedecorsF(const std::string& variableName, const Sample& sample,
                         QVStatModelResult& result) {
  return FitFamily(QVPDFType::SnedecorsF, variableName, sample, result);
}

QVPDFFit QVFitBeta(const std::string& variableName, const Sample& sample,
                   QVStatModelResult& result) {
  return FitFamily(QVPDFType::Beta, variableName, sample, result);
}

QVPDFFit QVFitGumbel(const std::string& variableName, const Sample& sample,
                     QVStatModelResult& result) {
  return FitFamily(QVPDFType::Gumbel, variableName, sample, result);
}

QVPDFFit QVFitGeneralizedExtremeValue(const std::string& variableName, const Sample& sample,
                                      QVStatModelResult& result) {
  return FitFamily(QVPDFType::GeneralizedExtremeValue, variableName, sample, result);
}

QVPDFFit QVFitUnivariatePDF(std::uint64_t pdfType, const std::string& variableName,
                            const Sample& sample, QVStatModelResult& result) {
  const char* const where = "QVFitUnivariatePDF";
  const FitRow* row = FindFit(pdfType);
  if (!row) {
    result = QVFailure(QVStatModelFailureType::WrongPDFType, where) << "pdf type: " << pdfType;
    return NullFit(variableName);
  }
  QVPDFFit fit = row->fit(row->name, variableName, sample, result);
  QVFailedIn(result, where);
  return fit;
}

}  // namespace QVStats
