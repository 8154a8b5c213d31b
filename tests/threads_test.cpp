// Finished objects are asked by eight threads at once, which is what the thread sanitizer is for,
// and give the bits that one thread gets. The threads come first: what is computed when it is first
// asked for is computed under their hands.
#include <gmock/gmock.h>

#include <atomic>
#include <thread>

#include "stats/api/calcauc.h"
#include "stats/api/data_table.h"
#include "stats/api/data_table_row_predicates.h"
#include "stats/api/gaussian_mixture_model.h"
#include "stats/api/gaussian_mixture_multidim.h"
#include "stats/api/krige_2d_mol.h"
#include "stats/api/mol_krige_result.h"
#include "stats/api/pdf.h"
#include "stats/api/snn.h"
#include "stats/api/snn_dirty.h"
#include "tests/support/krige_support.h"
#include "tests/support/mixture_support.h"
#include "tests/support/molecules.h"

namespace QVStats {
namespace {

using Answer = std::vector<double>;

constexpr std::size_t kThreads = 8;

/// Asks `query(0)` ... `query(count - 1)` from every thread, each beginning elsewhere, and then
/// once more from one.
template <class Query>
void ExpectSameFromEveryThread(std::size_t count, const Query& query) {
  std::vector<std::vector<Answer>> answers(kThreads, std::vector<Answer>(count));
  std::atomic<std::size_t> numReady{0};
  std::vector<std::thread> threads;
  for (std::size_t t = 0; t < kThreads; ++t)
    threads.emplace_back([&, t] {
      ++numReady;
      while (numReady < kThreads) std::this_thread::yield();
      for (std::size_t k = 0; k < count; ++k) {
        const std::size_t i = (k + t * count / kThreads) % count;
        answers[t][i] = query(i);
      }
    });
  for (std::thread& thread : threads) thread.join();
  for (std::size_t i = 0; i < count; ++i) {
    const Answer expected = query(i);
    ASSERT_FALSE(expected.empty());
    for (std::size_t t = 0; t < kThreads; ++t) EXPECT_EQ(answers[t][i], expected) << t << ' ' << i;
  }
}

Answer ToAnswer(const std::vector<std::vector<unsigned int>>& lists) {
  Answer answer;
  for (const auto& list : lists) answer.insert(answer.end(), list.begin(), list.end());
  return answer;
}

TEST(Threads, MolecularModel) {
  const std::vector<MeasuredMol> set = MakeLogPSet();
  for (const bool isLocal : {false, true}) {
    QVMolKrige model = isLocal ? QVMolKrige(QVLocalKrigeOptions().SetNumLocal(10))
                               : QVMolKrige(QVGlobalKrigeOptions());
    for (std::size_t i = 0; i < 18; ++i) model.AddTraining(set[i].mol, set[i].response);
    ASSERT_TRUE(model.Train());
    const QVMolKrige& trained = model;
    ExpectSameFromEveryThread(set.size(), [&](std::size_t i) -> Answer {
      const QVMolKrigeResult result = trained.GetResult(set[i].mol);
      const auto estimates = trained.GetEstimates({&set[i].mol, &set[0].mol});
      Answer answer = {result.Valid() ? 1.0 : 0.0, estimates[0].response, estimates[1].variance};
      if (!result.Valid()) return answer;
      answer.push_back(result.GetResponse());
      answer.push_back(result.GetVariance());
      for (const unsigned int k : result.GetLargestElements(3)) {
        answer.push_back(result.GetElementWeight(k));
        answer.push_back(result.GetElement(k).GetNumAtoms());
      }
      return answer;
    });
  }
}

TEST(Threads, EngineModel) {
  using namespace QVKrigeTest;
  const std::vector<Sample> queries = MakeSamples(24, 2);
  for (const Kind kind : {Kind::Simple, Kind::Ordinary, Kind::Universal})
    for (const bool isLocal : {false, true}) {
      const QVKrigeOptions options =
          isLocal ? QVKrigeOptions(QVLocalKrigeOptions().SetNumLocal(12)) : GlobalOptions();
      Model model = MakeModel(kind, MakeSamples(60, 1), options);
      ASSERT_TRUE(model.Train());
      const Model& trained = model;
      std::vector<const Point*> points;
      for (const Sample& query : queries) points.push_back(&query.point);
      const std::vector<QVKrigeResult> shared = trained.GetKrigeResults(points);
      const auto getWeight = [](const QVKrigeResult& result, std::size_t i) {
        return result.Valid() ? result.GetWeight(static_cast<unsigned int>(i % 12)) : 0.0;
      };
      ExpectSameFromEveryThread(queries.size(), [&](std::size_t i) -> Answer {
        const Point& query = queries[i].point;
        const Model copy = trained;
        const QVKrigeResult result = copy.GetKrigeResult(query);
        return {trained.Predict(query),
                trained.GetVariance(query),
                getWeight(result, i),
                getWeight(shared[i], i),
                trained.GetKernel().GetRange(),
                static_cast<double>(trained.GetVariogram().GetNumBins())};
      });
    }
}

TEST(Threads, Table) {
  QVDataTable table("numbers");
  QVDataTableCol number("number", QVStatVariableType::Ratio, 0, 1, false);
  QVDataTableCol kind("kind", QVStatVariableType::Nominal, 0, 1, false);
  for (int i = 0; i < 300; ++i) {
    if (i % 11 == 0)
      QVAppendMissingDataToCol(number);
    else
      QVAppendDoubleToCol(number, 1.0 + i % 37);
    QVAppendStringToCol(kind, i % 3 == 0 ? "first" : "second");
  }
  QVFinishAppendingVars(number);
  QVFinishAppendingVars(kind);
  table.AddColumn(number);
  table.AddColumn(kind);
  QVDataTableCol logarithm = QVLog(number * 2.0);
  logarithm.SetColumnName("logarithm");
  table.AddColumn(logarithm);
  const QVDataTable& finished = table;
  ExpectSameFromEveryThread(20, [&](std::size_t i) -> Answer {
    const QVDataTable copy = finished;
    const QVDataTableCol column = copy.GetColumnFromName("logarithm");
    Answer answer = finished.GetDoubles(column);
    const QVDataTable some("some", finished,
                           QVRowColWithinInclDoubleRange(static_cast<double>(i), 40.0, number, 0) &&
                               !QVRowColEqualsString("first", kind, 0));
    for (const QVDataTableRow& row : some.GetRows()) {
      answer.push_back(row.GetDouble(number, 0));
      answer.push_back(static_cast<double>(row.GetString(kind, 0).size()));
    }
    const QVDataTable firstRows("rows", finished, QVDataTableRowSet(i + 1));
    answer.push_back(static_cast<double>(firstRows.GetNumRows()));
    answer.push_back(kind.GetUnsigned(i, 0));
    answer.push_back(static_cast<double>(kind.PrintSummary().size()));
    return answer;
  });
}

TEST(Threads, Distributions) {
  QVStatModelResult made(true);
  const QVUniVarPDF pdfs[] = {
      QVUnivariateGaussian("x", 1, 2, made),
      QVUnivariateStudentsT("x", 3, 0, 1, made),
      QVGamma("x", 2.5, 0.5, made),
      QVChiSquare("x", 7, made),
      QVSnedecorsF("x", 4, 9, made),
      QVBeta("x", 2, 3, made),
      QVGumbel("x", 0, 1, made),
      QVGeneralizedExtremeValue("x", 0, 1, 0.2, made),
      QVUnivariateStudentsTMixture("x", {0.3, 0.7}, {3, 4}, {-1, 2}, {1, 4}, made)};
  ASSERT_TRUE(made.IsSuccessful()) << made.ReportStatResultDetails();
  const auto ask = [](const QVUniVarPDF& pdf, std::size_t i) -> Answer {
    const double p = (static_cast<double>(i) + 0.5) / 64.0;
    QVStatModelResult result(true);
    const double x = pdf.GetPercentile(p, result);
    const QVUniVarPDF copy = pdf;
    Answer answer, ps;
    for (double q = p / 8; q < 1.0; q += 0.01) ps.push_back(q);
    pdf.GetValues(QVPDFFunction::Percentile, ps, answer, result, true);
    for (const double value :
         {x, copy.GetPercentile(p, result), pdf.GetUpperTailPercentile(p, result),
          pdf.GetCDF(x, result, true), pdf.GetDensity(x, result, true),
          pdf.GetLogSurvival(x, result, true), pdf.GetMean(result), pdf.GetMode(result)})
      answer.push_back(value);
    answer.push_back(result.IsSuccessful() ? 1.0 : 0.0);
    return answer;
  };
  for (const QVUniVarPDF& pdf : pdfs) {
    // Searches for percentiles keep numbers for the next ones; this copy has none of them yet.
    const QVUniVarPDF alone = pdf;
    ExpectSameFromEveryThread(64, [&](std::size_t i) { return ask(pdf, i); });
    for (std::size_t i = 0; i < 64; ++i) EXPECT_EQ(ask(alone, i), ask(pdf, i)) << i;
  }
}

class Mixtures : public MixtureTest {};

TEST_F(Mixtures, FittedOnes) {
  const std::vector<double> data = ReadNumbers("faithful.csv");
  double fitness = 0.0;
  DirGaussGammaMixForEmpiricalNullAlt split(0.4, 1, 1, "waiting", {0.4, 0.6},
                                            TakeEvery(data, 1, 2));
  ASSERT_TRUE(split.FitModel(fitness, 5e-4, 5e-4, 5000).IsSuccessful());
  const QVMixtureDiscovery discovery(split);
  QVMultiDimGaussMixModel plane(2, {"eruptions", "waiting"}, 1.0, data);
  ASSERT_TRUE(plane.FitModel(fitness, 1e-6, 5000).IsSuccessful());
  ExpectSameFromEveryThread(20, [&](std::size_t i) -> Answer {
    QVStatModelResult result(true);
    const double x = 50.0 + 2.0 * static_cast<double>(i);
    Answer answer = {discovery.GetLocalFDR(result, x), discovery.GetTailFDR(result, x),
                     split.GetExpectedProbNull(result), plane.GetModelFitness(result),
                     split.GetPosteriorPredictiveTotDist(result).GetDensity(x, result, true)};
    plane.GetModelParams(answer);
    std::vector<std::size_t> assigned;
    plane.GetAssignments(assigned);
    answer.push_back(static_cast<double>(assigned[i]));
    answer.push_back(static_cast<double>(plane.Print().size()));
    return answer;
  });
}

TEST(Threads, NeighboursAndScores) {
  std::vector<QVLikeness::QVVseprFingerprint> fingerprints;
  for (const MeasuredMol& measured : MakeLogPSet())
    fingerprints.emplace_back(measured.mol, QVLikeness::QVVseprOptions());
  const std::vector<double> actives = {0.9, 0.8, 0.8, 0.3}, decoys = {0.7, 0.8, 0.2, 0.1, 0.0};
  ExpectSameFromEveryThread(4, [&](std::size_t i) -> Answer {
    const auto lists = QVGetNearestNeighbours(fingerprints, static_cast<unsigned int>(5 + i));
    std::vector<std::vector<unsigned int>> clusters;
    std::vector<unsigned int> noise;
    QVGetSNNCluster(clusters, noise, lists.size(), lists, {6, 3, 1, 4, 2}, true);
    Answer answer = ToAnswer(lists);
    for (const double value : ToAnswer(clusters)) answer.push_back(value);
    answer.push_back(QVCalculateAUC(actives, decoys, true));
    answer.push_back(QVCalculateDeLongStandardError(actives, decoys, true));
    return answer;
  });
}

}  // namespace
}  // namespace QVStats
