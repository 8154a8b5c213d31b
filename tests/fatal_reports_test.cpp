// Every broken invariant is reported as fatal and, where the sink lets the process go on, the code
// after it stays within its memory and answers with a neutral value. The tests of each area provoke
// the reports of its everyday routines; here stand those that need a caller who is out of his mind.
#include <gmock/gmock.h>

#include <limits>
#include <utility>

#include "platform/chem/mol.h"
#include "platform/likeness/vsepr.h"
#include "platform/system/bit_vector.h"
#include "platform/system/cast.h"
#include "stats/api/data_table_row_predicates.h"
#include "stats/api/data_vector_bootstrap.h"
#include "stats/api/krige_vsepr.h"
#include "stats/api/mol_krige_result.h"
#include "stats/api/pdf.h"
#include "stats/api/pdf_families.h"
#include "stats/api/pdf_setup.h"
#include "stats/api/plskrige.h"
#include "stats/api/private/krige_result_impl.h"
#include "stats/api/svd_data_model.h"
#include "tests/support/krige_support.h"
#include "tests/support/molecules.h"

namespace QVStats {
namespace {

using namespace QVKrigeTest;

constexpr double kMax = std::numeric_limits<double>::max();
const double kNaN = std::numeric_limits<double>::quiet_NaN();

constexpr std::size_t kSome = 0;

struct Row {
  const char* name;
  std::size_t numReports;  ///< kSome: one or more
  void (*provoke)();
};

/// A storage without its element.
struct EmptyStorage : Storage {
  using Storage::Storage;
  bool HasElement() const { return false; }
};

Model MakeLocalModel(double (*distance)(const Point&, const Point&), unsigned int maxPairs) {
  Model model =
      MakeModel(Kind::Ordinary,
                QVKrigeOptions(QVLocalKrigeOptions().SetNumLocal(5).SetMaxVariogramSize(maxPairs)),
                FunctionDistance(distance));
  for (const Sample& sample : MakeSamples(20, 1)) model.AddTraining(sample.point, sample.value);
  return model;
}

double NaNNearTheCorner(const Point& a, const Point& b) {
  return std::min(a[0], b[0]) < -1.0 ? kNaN : Euclid(a, b);
}
double Crooked(const Point& a, const Point& b) { return Euclid(a, b) + (a[0] < b[0] ? 0.5 : 0.0); }

/// A list of properties that are read from a molecule that lacks them.
class Atoms : public QVChem::QVMolPropertyList {
 public:
  bool HasProperties(const QVChem::QVMolBase&) const override { return true; }
  bool HasProperties(const QVChem::QVMCMolBase&) const override { return true; }
  std::size_t GetSize() const override { return 1; }
  double GetProperty(const QVChem::QVMolBase& mol, std::size_t) const override {
    return mol.GetNumAtoms();
  }
  double GetProperty(const QVChem::QVMCMolBase&, std::size_t) const override { return 0.0; }
  Atoms* CreateCopy() const override { return new Atoms(*this); }
};

const Row kRows[] = {
    {"Casts", 3,
     [] {
       QVSystem::QVUnsignedFromIntChecked(-1);
       QVSystem::QVIntFromUnsignedChecked(4000000000u);
       EXPECT_EQ(QVSystem::QVDoubleFromCount((std::uint64_t{1} << 53) + 2), 0x1p53 + 2);
     }},
    {"BitVectorTooLong", 1,
     [] { EXPECT_EQ(QVSystem::QVBitVector(std::size_t{1} << 40).GetSize(), 0u); }},
    {"ConformersPastTheEnd", 2,
     [] {
       QVChem::QVMCMol mol;
       EXPECT_EQ(std::as_const(mol).GetConformer(3).GetNumAtoms(), 0u);
       EXPECT_EQ(&mol.GetConformer(3), &mol);
     }},
    {"FingerprintsOfNothing", 3,
     [] {
       QVLikeness::QVVseprFingerprint fingerprint(MakeMol("CCO"), QVLikeness::QVVseprOptions());
       fingerprint.Setup(QVChem::QVAtomBase(), QVLikeness::QVVseprOptions());
       EXPECT_EQ(fingerprint.GetVolume(), 0.0);
       fingerprint.Setup(QVChem::QVBondBase(), QVLikeness::QVVseprOptions());
       EXPECT_EQ(fingerprint.GetVolume(), 0.0);
       fingerprint.Setup({1, 2, 3}, {1.0}, QVLikeness::QVVseprOptions());
       EXPECT_EQ(fingerprint.GetVolume(), 0.0);
     }},
    {"RowPredicatesWithoutOperands", 6,
     [] {
       const std::vector<std::size_t> numbers = {0, 1, 2};
       const QVRowNumbers rows(numbers);
       EXPECT_FALSE(QVAndOfDataTableRowPreds()(QVDataTableRow(0)));
       EXPECT_FALSE(QVOrOfDataTableRowPreds()(QVDataTableRow(0)));
       EXPECT_FALSE(QVNotOfDataTableRowPred()(QVDataTableRow(0)));
       EXPECT_TRUE(QVAndOfDataTableRowPreds().Select(rows).empty());
       EXPECT_TRUE(QVOrOfDataTableRowPreds().Select(rows).empty());
       QVNotOfDataTableRowPred().Select(rows);
     }},
    {"BootstrapOfPairs", 1,
     [] {
       QVMath::QVRanNumEngine engine(1);
       std::vector<std::pair<double, double>> sample;
       EXPECT_TRUE(
           QVGetBootstrapSampleForDataPairVec(engine, sample, {{1, 2}, {3, 4}}).IsSuccessful());
       EXPECT_EQ(sample.size(), 2u);
     }},
    {"StudentsTOfNoDegrees", 1,
     [] {
       QVRanVarVec parameters, outcomes;
       QVMultiVarStudentsTRanVars::SetupRanVarVecs(3.0, {0.0, 0.0}, {1.0, 0.0, 0.0, 1.0},
                                                   parameters, outcomes);
       parameters[0].SetRanVarVal(-1.0, false);
       QVStatModelResult result(true);
       QVMultiVarStudentsTImpl pdf({"x", "y"}, parameters, outcomes);
       EXPECT_TRUE(pdf.GetMean(result).empty());
       EXPECT_TRUE(result.NotSuccessful());
     }},
    {"MixtureOfTooManyComponents", 1,
     [] {
       QVRanVarVec parameters, outcomes;
       QVUniVarMixtureRanVars::SetupRanVarVecs(
           2, {QVPDFType::UniVariateGaussian, QVPDFType::UniVariateGaussian}, {2, 2}, {0.5, 0.5},
           parameters, outcomes);
       parameters[0].SetRanVarVal(1e300, false);
       QVStatModelResult result(true);
       EXPECT_EQ(QVUniVarMixtureImpl("x", parameters, outcomes).GetMean(result), kMax);
       EXPECT_TRUE(result.NotSuccessful());
     }},
    {"VariogramsPastTheEnd", 4,
     [] {
       QVVariogramImpl variogram;
       EXPECT_EQ(variogram.GetDistance(0), 0.0);
       EXPECT_EQ(variogram.GetSemivariance(0), 0.0);
       QVFullVariogramImpl full;
       full.Push({1.0}, {2.0});
       EXPECT_EQ(full.GetNumBinElements(1), 0u);
       EXPECT_EQ(full.GetHalfSquaredDifference(0, 1), 0.0);
     }},
    {"FitnessOfNothing", kSome,
     [] {
       QVVariogramImpl flat;
       flat.Push(0.0, 0.0);
       const QVKrigeKernel kernel(QVKrigeKernelType::Linear);
       EXPECT_EQ(QVGetFitness(kernel, flat), kMax);
       QVVariogramImpl variogram;
       for (const double d : {1.0, 2.0, 3.0}) variogram.Push(d, d);
       QVKrigeKernel fitted = kernel;
       EXPECT_EQ(QVFitKernelPartial(fitted, variogram, 0.01), kMax);
     }},
    {"ResponsesWhoseSquaresAreInfinite", kSome,
     [] {
       for (const QVKrigeOptions& options :
            {GlobalOptions(), QVKrigeOptions(QVLocalKrigeOptions().SetNumLocal(5))}) {
         Model model = MakeModel(Kind::Ordinary, options);
         for (const Sample& sample : MakeSamples(20, 1))
           model.AddTraining(sample.point, 1e200 * sample.value);
         EXPECT_FALSE(model.Train());
         EXPECT_EQ(model.Predict({0.0, 0.0}), kMax);
       }
     }},
    {"ResultThatIsNoNumber", 1,
     [] {
       QVKrigeResultImpl result;
       result.AddElement(0.0, std::numeric_limits<double>::infinity(), 0.0, false, 0, false);
       result.SetKernel(QVKrigeKernel(QVKrigeKernelType::Linear));
       EXPECT_EQ(QVCalculateResponse(result, 7.0), 7.0);
     }},
    {"GroupsPastTheEnd", 2,
     [] {
       Container container(EuclideanDistance<2>(),
                           QVGetUniqueTrainingDataResponseImpl<Point, Storage>(0), Coordinates(2),
                           QVGetMeanTrainingDataPropFxn<Point, Storage>());
       EXPECT_EQ(container.GetGroupOfElement(3), 0u);
       // A record without its two properties.
       EXPECT_FALSE(container.AddElement({Storage(Point{1, 1}), 1.0, false, 0, false, {}}));
       EXPECT_EQ(container.GetNumElements(), 0u);
     }},
    {"GroupResponseThatIsNoValue", 1,
     [] {
       Container container(
           EuclideanDistance<2>(), QVGetUniqueTrainingDataResponseImpl<Point, Storage>(0),
           QVNoPropertyListFxn<Point>(), QVGetMeanTrainingDataPropFxn<Point, Storage>());
       container.AddElement({Storage(Point{1, 1}), kMax, false, 0, false, {}});
       EXPECT_EQ(container.GetUniqueResponse(0), kMax);
     }},
    {"DriftInOrdinaryKriging", 1,
     [] {
       Model model(QVCreateStandardKrige<QVOrdinaryKrige, Point, Storage>(
           EuclideanDistance<2>(), Coordinates(2), GlobalOptions()));
       model.AddTraining({1, 1}, 2.0);
       EXPECT_FALSE(model.TrainFixed(QVKrigeKernel(QVKrigeKernelType::Exponential)));
     }},
    {"StorageWithoutElement", 2,
     [] {
       for (const QVKrigeOptions& options :
            {GlobalOptions(), QVKrigeOptions(QVLocalKrigeOptions())}) {
         Model model(QVCreateKrige<Point, EmptyStorage>(EuclideanDistance<2>(), options, false));
         EXPECT_FALSE(model.AddTraining({1, 1}, 2.0));
       }
     }},
    {"DistancesThatAreNoNumbers", 3,
     [] {
       Model global =
           MakeModel(Kind::Ordinary, GlobalOptions(), FunctionDistance(&NaNNearTheCorner));
       for (const Sample& sample : MakeSamples(20, 1))
         global.AddTraining(sample.point, sample.value);
       ASSERT_TRUE(global.TrainFixed(QVKrigeKernel(QVKrigeKernelType::Exponential)));
       EXPECT_FALSE(global.GetKrigeResult({-2.0, 0.0}).Valid());
       EXPECT_EQ(global.Predict({-2.0, 0.0}), kMax);
       Model local = MakeLocalModel(&NaNNearTheCorner, 500000);
       ASSERT_TRUE(local.TrainFixed(QVKrigeKernel(QVKrigeKernelType::Exponential)));
       EXPECT_EQ(local.Predict({-2.0, 0.0}), kMax);
     }},
    {"CrookedDistancesOfNeighbours", kSome,
     [] {
       Model local = MakeLocalModel(&Crooked, 10);
       ASSERT_TRUE(local.TrainFixed(QVKrigeKernel(QVKrigeKernelType::Exponential)));
       local.Predict({0.5, 0.5});
     }},
    {"VariogramSizeWithoutExactValue", 1,
     [] {
       // The maximum is put to the test only when there are more pairs than it, 33.5 million.
       const std::vector<bool> unmeasured(8200, false);
       const QVKrigePairSampler sampler(unmeasured, false, 16777217u);
       EXPECT_GT(sampler.GetFraction(), 0.4f);
     }},
    {"LeastSquaresOfOtherSize", 3,
     [] {
       EXPECT_EQ(QVVecPropertyListFxn(2).GetProperty({1.0, 2.0}, 2), 0.0);
       QVSVD<std::vector<double>> model(1, -5.0);
       model.AddTraining({1.0}, 1.0);
       model.AddTraining({2.0}, 3.0);
       EXPECT_EQ(model.Predict({1.0, 2.0}), -5.0);
       EXPECT_EQ(std::as_const(model).Predict({}), -5.0);
     }},
    {"PLSScoresPastTheEnd", 1,
     [] {
       const QVMolPLSPropertyList list((Atoms()));
       EXPECT_EQ(list.GetProperty(MakeMol("CCO"), 0), 0.0);
     }},
    {"MolecularResultsOfUnequalLists", 3,
     [] {
       QVKrigeResultImpl record;
       record.AddElement(0.5, 1.0, 3.0, false, 0, false);  // no identifier
       record.AddElement(0.5, 0.0, 3.0, false, 9, true);   // one past the molecules
       const std::vector<std::shared_ptr<const QVChem::QVMolBase>> mols = {
           std::make_shared<QVChem::QVGraphMol>(MakeMol("CCO"))};
       const QVMolKrigeResult result(QVKrigeResult(record), mols, {3.0, 4.0}, {false},
                                     QVVariogram());
       EXPECT_TRUE(result.GetElement(0).IsEmpty());
       EXPECT_TRUE(result.GetElement(1).IsEmpty());
     }},
    {"ContributionOfNoAtom", 1,
     [] { EXPECT_EQ(QVMolKrigeResult().GetAtomContribution(QVChem::QVAtomBase(), 1.0), 0.0); }},
};

class FatalReports : public testing::TestWithParam<Row> {};
INSTANTIATE_TEST_SUITE_P(All, FatalReports, testing::ValuesIn(kRows),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_P(FatalReports, AreSurvived) {
  const QVSystem::QVScopedRecordingSink sink;
  GetParam().provoke();
  const auto texts = sink.GetTexts(QVSystem::QVErrorLevel::Fatal);
  if (GetParam().numReports == kSome)
    EXPECT_THAT(texts, testing::Not(testing::IsEmpty()));
  else
    EXPECT_THAT(texts, testing::SizeIs(GetParam().numReports));
  for (const std::string& text : texts)
    if (text != "Bad implementation--need to fix!") {
      EXPECT_THAT(text, testing::ContainsRegex(
                            "Assertion failed at line [0-9]+ of (stats|platform)/.*\\.\n$"));
    }
}

}  // namespace
}  // namespace QVStats
