// The molecular front-end: training, identity, drift, batches and copies, on both implementations.
#include "stats/api/krige_2d_mol.h"

#include <gmock/gmock.h>

#include <Eigen/Dense>
#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "platform/likeness/fingerprint.h"
#include "platform/likeness/vsepr.h"
#include "platform/system/error_handler.h"
#include "stats/api/krige_vsepr.h"
#include "stats/api/mol_properties.h"
#include "tests/support/matchers.h"
#include "tests/support/molecules.h"

namespace {

using namespace QVStats;
using QVChem::QVGraphMol;

constexpr double kMax = std::numeric_limits<double>::max();

const QVKrigeKernel& ExponentialKernel() {
  static const QVKrigeKernel kernel = [] {
    QVKrigeKernel made(QVKrigeKernelType::Exponential);
    made.SetRange(0.7);
    made.SetSill(1.5);
    made.SetNugget(0.1);
    return made;
  }();
  return kernel;
}

/// The front-end in each of its forms: by fingerprints or by a caller's distance (with and without
/// bulk evaluation), global or local. All mean the same distance, so they must agree.
class PlainDistance : public QVMolDistanceFxn {
 public:
  double operator()(const QVChem::QVMolBase& a, const QVChem::QVMolBase& b) const override {
    return distance_(a, b);
  }
  PlainDistance* CreateCopy() const override { return new PlainDistance(*this); }

 private:
  QVMolKrigeDefaultDistFxn distance_;
};

struct Form {
  const char* name;
  QVMolKrige (*make)();
  QVMolKrige (*makeWithDrift)(const QVChem::QVMolPropertyList& drift);
};
void PrintTo(const Form& form, std::ostream* out) { *out << form.name; }

QVLocalKrigeOptions Local() { return QVLocalKrigeOptions().SetNumLocal(1000); }

const Form kForms[] = {
    {"VseprGlobal", [] { return QVMolKrige(QVGlobalKrigeOptions()); },
     [](const QVChem::QVMolPropertyList& drift) {
       return QVMolKrige(drift, QVGlobalKrigeOptions());
     }},
    {"VseprLocal", [] { return QVMolKrige(Local()); },
     [](const QVChem::QVMolPropertyList& drift) { return QVMolKrige(drift, Local()); }},
    {"BulkDistance", [] { return QVMolKrige(QVMolKrigeDefaultDistFxn(), QVGlobalKrigeOptions()); },
     [](const QVChem::QVMolPropertyList& drift) {
       return QVMolKrige(QVMolKrigeDefaultDistFxn(), drift, QVGlobalKrigeOptions());
     }},
    {"PlainDistance", [] { return QVMolKrige(PlainDistance(), QVGlobalKrigeOptions()); },
     [](const QVChem::QVMolPropertyList& drift) {
       return QVMolKrige(PlainDistance(), drift, QVGlobalKrigeOptions());
     }},
    {"PlainDistanceLocal", [] { return QVMolKrige(PlainDistance(), Local()); },
     [](const QVChem::QVMolPropertyList& drift) {
       return QVMolKrige(PlainDistance(), drift, Local());
     }},
};

QVGraphMol Prepared(QVGraphMol mol) {
  QVMolKrigeDefaultDistFxn().PrepMol(mol);
  return mol;
}

QVGraphMol Query() { return Prepared(MakeMol("CCCCCc1ccccc1")); }

void AddLogP(QVMolKrige& model) {
  for (const MeasuredMol& row : MakeLogPSet())
    ASSERT_TRUE(model.AddTraining(Prepared(row.mol), row.response));
}

class MolKrigeForm : public testing::TestWithParam<Form> {};
INSTANTIATE_TEST_SUITE_P(MolKrige, MolKrigeForm, testing::ValuesIn(kForms),
                         [](const auto& form) { return std::string(form.param.name); });

// Against the ordinary-kriging system written out and solved by hand with the same distances.
TEST_P(MolKrigeForm, SolvesTheOrdinaryKrigingSystem) {
  QVMolKrige model = GetParam().make();
  AddLogP(model);
  ASSERT_TRUE(model.TrainFixed(ExponentialKernel()));
  const QVMolKrigeResult result = model.GetResult(Query());
  ASSERT_TRUE(result.Valid());

  const std::vector<MeasuredMol> set = MakeLogPSet();
  const auto n = static_cast<Eigen::Index>(set.size());
  const QVMolKrigeDefaultDistFxn distance;
  const auto covariance = [&](const QVGraphMol& a, const QVGraphMol& b) {
    return ExponentialKernel().GetSill() -
           ExponentialKernel().GetValue(distance(Prepared(a), Prepared(b)));
  };
  Eigen::MatrixXd system = Eigen::MatrixXd::Ones(n + 1, n + 1);
  Eigen::VectorXd right = Eigen::VectorXd::Ones(n + 1);
  for (Eigen::Index i = 0; i < n; ++i) {
    for (Eigen::Index j = 0; j < n; ++j)
      system(i, j) =
          covariance(set[static_cast<std::size_t>(i)].mol, set[static_cast<std::size_t>(j)].mol);
    right(i) = covariance(set[static_cast<std::size_t>(i)].mol, Query());
  }
  system(n, n) = 0.0;
  const Eigen::VectorXd weights = system.fullPivLu().solve(right);
  double response = 0.0;
  double variance = ExponentialKernel().GetSill();
  for (Eigen::Index i = 0; i < n; ++i) {
    response += weights(i) * set[static_cast<std::size_t>(i)].response;
    variance -= weights(i) * right(i);
  }
  EXPECT_THAT(result.GetResponse(), IsCloseTo(response, 1e-11));
  EXPECT_THAT(result.GetVariance(), IsCloseTo(variance, 1e-11));

  ASSERT_EQ(result.GetNumElements(), set.size());
  for (unsigned int i = 0; i < result.GetNumElements(); ++i) {
    const unsigned int id = result.GetElementID(i);
    EXPECT_THAT(result.GetElementWeight(i),
                IsCloseTo(weights(static_cast<Eigen::Index>(id)), 1e-9));
    EXPECT_EQ(result.GetElementResponse(i), set[id].response);
    EXPECT_EQ(QVChem::QVCreateSmiles(result.GetElement(i)), QVChem::QVCreateSmiles(set[id].mol));
  }
}

TEST_P(MolKrigeForm, BatchesAndCopiesGiveTheSameBits) {
  QVMolKrige model = GetParam().make();
  AddLogP(model);
  ASSERT_TRUE(model.Train());
  const QVMolKrige copy = model;
  const QVGraphMol queries[] = {Query(), Prepared(MakeMol("CCCCCCCO")),
                                Prepared(MakeMol("Fc1ccccc1"))};
  const std::vector<const QVChem::QVMolBase*> pointers = {&queries[0], &queries[1], &queries[2]};
  const std::vector<QVMolKrigeResult> results = copy.GetResults(pointers);
  const std::vector<QVKrigeEstimate> estimates = copy.GetEstimates(pointers);
  for (std::size_t i = 0; i < pointers.size(); ++i) {
    const QVMolKrigeResult single = model.GetResult(queries[i]);
    ASSERT_TRUE(single.Valid());
    EXPECT_EQ(results[i].GetResponse(), single.GetResponse());
    EXPECT_EQ(results[i].GetVariance(), single.GetVariance());
    EXPECT_EQ(copy.GetResult(queries[i]).GetResponse(), single.GetResponse());
    EXPECT_THAT(estimates[i].response, IsCloseTo(single.GetResponse(), 1e-9));
    EXPECT_THAT(estimates[i].variance, IsCloseTo(single.GetVariance(), 1e-9));
  }
}

TEST_P(MolKrigeForm, AConstModelTrainsOnlyACopy) {
  QVMolKrige model = GetParam().make();
  AddLogP(model);
  const QVMolKrige untrained = model;
  const QVMolKrigeResult expected = model.GetResult(Query());  // trains
  ASSERT_TRUE(expected.Valid());
  EXPECT_EQ(untrained.GetResult(Query()).GetResponse(), expected.GetResponse());
  EXPECT_EQ(untrained.GetVariogram().GetNumBins(), expected.GetVariogram().GetNumBins());
  EXPECT_GT(expected.GetVariogram().GetNumBins(), 3U);
}

// Without a baseline of its own the result speaks of the model as it was when it was made.
TEST_P(MolKrigeForm, ResultsOutliveTheModelAndItsChanges) {
  QVMolKrige model = GetParam().make();
  AddLogP(model);
  ASSERT_TRUE(model.TrainFixed(ExponentialKernel()));
  const QVMolKrigeResult before = model.GetResult(Query());
  ASSERT_TRUE(model.AddTraining(Query(), 4.9));
  EXPECT_EQ(before.GetNumElements(), 24U);
  QVSystem::QVIter<const double> responses = before.GetTrainingResponses(true);
  model.Clear();
  EXPECT_EQ(std::distance(responses.begin(), responses.end()), 24);
  EXPECT_GT(before.GetVariogram().GetNumBins(), 3U);
  EXPECT_EQ(QVChem::QVCreateSmiles(before.GetElement(before.GetLargestElements(1)[0])),
            "CCc1ccccc1");
  const QVSystem::QVScopedRecordingSink sink;
  EXPECT_FALSE(model.GetResult(Query()).Valid());
}

TEST_P(MolKrigeForm, EqualMoleculesAreOnePoint) {
  QVMolKrige model = GetParam().make();
  AddLogP(model);
  const QVGraphMol twice = Prepared(MakeMol("CCCCCCCCO"));
  ASSERT_TRUE(model.AddTraining(twice, 2.0));
  ASSERT_TRUE(model.AddTraining(twice, 4.0));
  ASSERT_TRUE(model.AddUnmeasuredTraining(twice, 100.0));
  QVKrigeKernel exact = ExponentialKernel();
  exact.SetNugget(0.0);
  ASSERT_TRUE(model.TrainFixed(exact));
  const QVMolKrigeResult result = model.GetResult(twice);
  ASSERT_TRUE(result.Valid());
  EXPECT_EQ(result.GetNumElements(), 25U);
  EXPECT_EQ(result.GetResponse(), 3.0);  // the mean of what was measured, interpolated exactly
  EXPECT_EQ(result.GetVariance(), 0.0);
  const unsigned int point = result.GetLargestElements(1)[0];
  EXPECT_TRUE(result.GetHasMultipleCopies(point));
  EXPECT_EQ(result.GetNumCopies(point), 3U);
  EXPECT_EQ(result.GetElementResponse(point, 1), 4.0);
  EXPECT_TRUE(result.GetElementIsUnmeasured(point, 2));
  EXPECT_FALSE(result.GetElementIsUnmeasured(point));
  const auto measured = result.GetTrainingResponses(false);
  EXPECT_EQ(std::distance(measured.begin(), measured.end()), 26);
}

// With the response a linear function of the drift property, universal kriging reproduces it.
TEST_P(MolKrigeForm, DriftIsRequiredAndReproduced) {
  QVSCMolPropertyList drift;
  drift.PushTag("x");
  QVMolKrige model = GetParam().makeWithDrift(drift);
  double x = 0.0;
  for (MeasuredMol& row : MakeLogPSet()) {
    row.mol = Prepared(row.mol);
    EXPECT_FALSE(model.AddTraining(row.mol, row.response));
    x = x < 5.0 ? x + 1.3 : x - 4.1;
    row.mol.SetSDData("x", std::to_string(x));
    ASSERT_TRUE(model.AddTraining(row.mol, 10.0 - 2.0 * x));
  }
  ASSERT_TRUE(model.TrainFixed(ExponentialKernel()));
  QVGraphMol query = Query();
  EXPECT_FALSE(model.GetResult(query).Valid());
  query.SetSDData("x", "7.25");
  const QVMolKrigeResult result = model.GetResult(query);
  ASSERT_TRUE(result.Valid());
  EXPECT_THAT(result.GetResponse(), IsCloseTo(10.0 - 2.0 * 7.25, 1e-9));

  const QVGraphMol lacking = Query();
  const auto results = model.GetResults({&lacking, &query});
  const auto estimates = model.GetEstimates({&lacking, &query});
  EXPECT_FALSE(results[0].Valid());
  EXPECT_EQ(estimates[0].response, kMax);
  EXPECT_EQ(results[1].GetResponse(), result.GetResponse());
  // The identifiers stayed dense although molecules were refused.
  for (unsigned int i = 0; i < result.GetNumElements(); ++i)
    if (result.GetElementID(i) == 2) {
      EXPECT_EQ(QVChem::QVCreateSmiles(result.GetElement(i)), "CCCO");
    }
}

TEST_P(MolKrigeForm, TooLittleTrainingIsAWarningAndAnInvalidResult) {
  QVMolKrige model = GetParam().make();
  const QVSystem::QVScopedRecordingSink sink;
  EXPECT_FALSE(model.Train());
  EXPECT_EQ(sink.GetTexts(QVSystem::QVErrorLevel::Warning).size(), 1u);
  EXPECT_FALSE(model.GetResult(Query()).Valid());
  ASSERT_TRUE(model.AddTraining(Query(), 1.0));
  EXPECT_FALSE(model.Train());
  const QVMolKrigeResult result = model.GetResult(Query());
  EXPECT_FALSE(result.Valid());
  EXPECT_EQ(result.GetResponse(), kMax);
  EXPECT_EQ(result.GetVariance(), kMax);
  EXPECT_THAT(sink.GetTexts(QVSystem::QVErrorLevel::Warning), testing::Not(testing::IsEmpty()));
  EXPECT_THAT(sink.GetTexts(QVSystem::QVErrorLevel::Fatal), testing::IsEmpty());
  ASSERT_TRUE(model.TrainFixed(ExponentialKernel()));
  EXPECT_EQ(model.GetResult(Query()).GetResponse(), 1.0);
}

TEST(MolKrige, TheCallersMoleculesAreLeftAlone) {
  QVMolKrige model{QVGlobalKrigeOptions()};
  const QVGraphMol mol = MakeMol("CCO");
  ASSERT_TRUE(model.AddTraining(mol, 1.0));
  EXPECT_FALSE(mol.HasData(QVTrainingFingerprintTag));
  ASSERT_TRUE(model.TrainFixed(ExponentialKernel()));
  const auto* kept = model.GetResult(mol).GetElement(0).FindData<QVLikeness::QVVseprFingerprint>(
      QVTrainingFingerprintTag);
  ASSERT_TRUE(kept);
  EXPECT_EQ(*kept, QVLikeness::QVVseprFingerprint(mol, QVLikeness::QVVseprOptions()));
}

TEST(MolKrige, DistanceOptionsReachTheFingerprint) {
  QVDefaultKrigeDistanceOptions options;
  options.SetMaxPathLength(2).SetStereoAware(true);
  QVMolKrige model(options, QVGlobalKrigeOptions());
  const QVGraphMol left = MakeMol("C[C@H](N)C(=O)O");
  const QVGraphMol right = MakeMol("C[C@@H](N)C(=O)O");
  ASSERT_TRUE(model.AddTraining(left, 1.0));
  ASSERT_TRUE(model.AddTraining(right, 3.0));
  ASSERT_TRUE(model.TrainFixed(ExponentialKernel()));
  const QVMolKrigeResult result = model.GetResult(left);
  EXPECT_EQ(result.GetNumElements(), 2U);
  EXPECT_EQ(result.GetElementDistance(1),
            1.0 - QVLikeness::QVVseprFingerprint(left, options.GetImpl())
                      .GetTanimoto({right, options.GetImpl()}));
}

TEST(MolKrige, MultiConformerMoleculesKeepTheirConformers) {
  QVMolKrige model{QVGlobalKrigeOptions()};
  QVChem::QVMCMol mol(MakeMol("CCO"));
  ASSERT_TRUE(mol.AddConformer(MakeMol("CCO")));
  const unsigned int conformers = mol.GetNumConformers();
  ASSERT_TRUE(model.AddTraining(mol, 1.0));
  ASSERT_TRUE(model.TrainFixed(ExponentialKernel()));
  const QVMolKrigeResult result = model.GetResult(mol);
  const auto* kept = dynamic_cast<const QVChem::QVMCMolBase*>(&result.GetElement(0));
  ASSERT_TRUE(kept);
  EXPECT_EQ(kept->GetNumConformers(), conformers);
}

// The typed models without the front-end's results give the same numbers.
TEST(MolKrige, TypedModelsAgreeWithTheFrontEnd) {
  const QVKrigeOptions options{QVGlobalKrigeOptions()};
  QVSCMolKrige single(PlainDistance(), options, false);
  QVVseprKrige vsepr(options, false);
  QVMolKrige front{QVGlobalKrigeOptions()};
  AddLogP(front);
  const QVLikeness::QVVseprOptions paths;
  for (const MeasuredMol& row : MakeLogPSet()) {
    ASSERT_TRUE(single.AddTraining(Prepared(row.mol), row.response));
    ASSERT_TRUE(vsepr.AddTraining(QVVseprPropFP(row.mol, paths), row.response));
  }
  const double expected = front.GetResult(Query()).GetResponse();
  EXPECT_THAT(single.Predict(Query()), IsCloseTo(expected, 1e-12));
  EXPECT_THAT(vsepr.Predict(QVVseprPropFP(Query(), paths)), IsCloseTo(expected, 1e-12));
}

TEST(MolKrige, FingerprintsRefuseBadPropertyIndices) {
  const QVVseprPropFP fingerprint(MakeMol("CCO"), {1.5, 2.5}, QVLikeness::QVVseprOptions());
  EXPECT_EQ(fingerprint.GetProperty(1), 2.5);
  const QVSystem::QVScopedRecordingSink sink;
  EXPECT_EQ(fingerprint.GetProperty(2), 0.0);
  EXPECT_THAT(sink.GetTexts(QVSystem::QVErrorLevel::Fatal),
              testing::ElementsAre(testing::HasSubstr("stats/krige_vsepr")));
}

}  // namespace
