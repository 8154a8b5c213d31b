#include "benchmarks/qvperf/workloads.h"
#include "stats/api/snn_dirty.h"

namespace QVPerf {

bool RunSNN(const Run& run) {
  if (run.GetCase() != "snn2000") return false;
  using namespace QVStats;
  const Array similarity = run.Load("snn_sim");
  const std::size_t n = similarity.rows;
  const QVSNNParameters params = QVGetSNNParameters(n);
  std::vector<std::vector<unsigned int>> lists;
  std::vector<QVNNStrength> records;
  const auto check = [&] {
    double links = 0.0, strength = 0.0;
    for (const QVNNStrength& record : records)
      for (const QVStrValue& link : record.GetLinks()) {
        links += 1.0;
        strength += link.strength;
      }
    return Check("links", links) + ";" + Check("strength_sum", strength);
  };
  lists = QVGetNearestNeighbours(similarity.values, n, params.nbrCt);
  records = QVGetNeighbourLinks(lists);
  run.Time(
      "lists", [] {}, [&] { lists = QVGetNearestNeighbours(similarity.values, n, params.nbrCt); },
      check);
  run.Time(
      "links", [] {}, [&] { records = QVGetNeighbourLinks(lists); }, check);
  std::vector<std::vector<unsigned int>> clusters;
  std::vector<unsigned int> noise;
  const auto clear = [&] {
    clusters.clear();
    noise.clear();
  };
  run.Time(
      "cluster", clear, [&] { QVGetSNNCluster(clusters, noise, n, lists, params, true); }, check);
  QVStats::QVSimInfo info;
  info.InitSimilarity(similarity.values);
  run.Time(
      "cluster_store", clear, [&] { QVGetSNNCluster(clusters, n, info); }, check);
  return true;
}

}  // namespace QVPerf
