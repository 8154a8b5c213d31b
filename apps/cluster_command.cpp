#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>
#include <memory>
#include <sstream>

#include "apps/cluster_page.h"
#include "apps/commands.h"
#include "apps/molecule_source.h"
#include "apps/output_file.h"
#include "apps/progress.h"
#include "platform/likeness/fingerprint.h"
#include "platform/system/error_handler.h"
#include "platform/system/memory.h"
#include "platform/system/text.h"
#include "stats/api/snn_dirty.h"

namespace QVApps {

namespace {

using NeighbourLists = std::vector<std::vector<unsigned int>>;

constexpr const char* kSubstructure = "substructure";
constexpr const char* kVsepr = "vsepr";

struct ClusterArguments {
  std::string molecules;
  std::string smilesColumn;
  std::string idColumn;
  std::string by = kVsepr;
  double budget = 0.1;
  unsigned int neighbours = 0;
  unsigned int topic = 0;
  unsigned int noise = 0;
  unsigned int merge = 0;
  unsigned int label = 0;
  std::string page;
  unsigned int pageMembers = 15;
  std::string out = "-";
  bool quiet = false;
};

std::vector<std::string> GetSimilarityNames() {
  std::vector<std::string> names = {kVsepr};
  for (unsigned int type = 1; type < QVLikeness::QVFPType::Count; ++type)
    names.push_back(QVSystem::QVToLower(QVLikeness::QVFPType::TypeName[type]));
  names.push_back(kSubstructure);
  return names;
}

/// The thresholds for n molecules, as far as the user has not set them.
QVStats::QVSNNParameters MakeParameters(const ClusterArguments& arguments, std::size_t n) {
  QVStats::QVSNNParameters params = QVStats::QVGetSNNParameters(n);
  if (arguments.neighbours != 0) {
    // The thresholds keep their share of the length of the lists.
    const auto scale = [&, k = params.nbrCt](unsigned int threshold) {
      return threshold * arguments.neighbours / k;
    };
    params = {arguments.neighbours, scale(params.topic), scale(params.noise), scale(params.merge),
              scale(params.label)};
  }
  if (arguments.topic != 0) params.topic = arguments.topic;
  if (arguments.noise != 0) params.noise = arguments.noise;
  if (arguments.merge != 0) params.merge = arguments.merge;
  if (arguments.label != 0) params.label = arguments.label;
  return params;
}

std::vector<MoleculeRecord> ReadMolecules(const ClusterArguments& arguments, std::size_t& refused) {
  MoleculeSourceOptions options;
  options.smilesColumn = arguments.smilesColumn;
  options.idColumn = arguments.idColumn;
  MoleculeSource source(arguments.molecules, options);
  Progress progress("reading " + arguments.molecules, 0, arguments.quiet);
  std::vector<MoleculeRecord> records;
  for (MoleculeRecord record; source.Next(record); progress.Step()) {
    if (record.error.empty()) {
      record.mol.SetTitle(record.id);
      records.push_back(record);
    } else {
      ++refused;
      std::cerr << source.Locate(record) << ": " << record.error << ", left out\n";
    }
  }
  if (records.empty()) throw Failure(arguments.molecules + ": no molecule to cluster");
  return records;
}

NeighbourLists GetNeighboursBySubstructure(const ClusterArguments& arguments,
                                           std::vector<MoleculeRecord>& records, unsigned int k) {
  std::vector<QVStats::QVMolData> mols;
  for (MoleculeRecord& record : records)
    mols.push_back({&record.mol, static_cast<unsigned int>(mols.size())});
  const std::size_t n = mols.size();
  Progress progress("comparing", n * (n + 1) / 2, arguments.quiet);
  QVStats::QVSimInfo info;
  info.SetTimeBudget(arguments.budget);
  info.SetProgress([&progress, before = std::size_t{0}](std::size_t done, std::size_t) mutable {
    progress.Step(done - before);
    before = done;
  });
  if (!info.InitSimilarity(mols)) throw Failure("the molecules cannot be compared");
  return QVStats::QVGetNearestNeighbours(info.GetMatrix(), n, k);
}

NeighbourLists GetNeighboursByFingerprint(const ClusterArguments& arguments,
                                          const std::vector<MoleculeRecord>& records,
                                          unsigned int k) {
  const std::size_t n = records.size();
  const unsigned int type = QVLikeness::QVGetFPTypeFromName(arguments.by);
  std::vector<QVLikeness::QVFingerPrint> fingerprints(n);
  for (std::size_t i = 0; i < n; ++i)
    QVLikeness::QVMakeFP(fingerprints[i], records[i].mol, type, false);
  std::string problem;
  if (const auto size = static_cast<double>(n);
      !QVSystem::QVHasMemory(size * size * sizeof(double), problem))
    throw Failure("the matrix of " + std::to_string(n) + " molecules " + problem +
                  "; --by vsepr needs less");
  Progress progress("comparing", n, arguments.quiet);
  std::vector<double> matrix(n * n);
  for (std::size_t i = 0; i < n; ++i, progress.Step())
    for (std::size_t j = i; j < n; ++j)
      matrix[n * i + j] =
          static_cast<double>(QVLikeness::QVTanimoto(fingerprints[i], fingerprints[j]));
  return QVStats::QVGetNearestNeighbours(matrix, n, k);
}

NeighbourLists GetNeighbours(const ClusterArguments& arguments,
                             std::vector<MoleculeRecord>& records, unsigned int k) {
  if (arguments.by == kSubstructure) return GetNeighboursBySubstructure(arguments, records, k);
  if (arguments.by != kVsepr) return GetNeighboursByFingerprint(arguments, records, k);
  std::vector<QVLikeness::QVVseprFingerprint> fingerprints;
  for (const MoleculeRecord& record : records)
    fingerprints.emplace_back(record.mol, QVLikeness::QVVseprOptions());
  return QVStats::QVGetNearestNeighbours(fingerprints, k);
}

struct Clustering {
  NeighbourLists clusters;  // the head of each first; the largest cluster first
  std::vector<unsigned int> noise;
};

/// Clusters without the diagnostic lines that the library writes to standard error. Its warnings
/// tell of every head that merges with none: they matter when there are no clusters.
Clustering Cluster(const NeighbourLists& lists, const QVStats::QVSNNParameters& params) {
  Clustering result;
  std::vector<std::string> warnings;
  {
    const QVSystem::QVScopedRecordingSink sink;
    const std::ostringstream diagnostics;
    std::streambuf* const displaced = std::cerr.rdbuf(diagnostics.rdbuf());
    QVStats::QVGetSNNCluster(result.clusters, result.noise, lists.size(), lists, params, true);
    std::cerr.rdbuf(displaced);
    warnings = sink.GetTexts(QVSystem::QVErrorLevel::Warning);
  }
  if (result.clusters.empty())
    for (const std::string& warning : warnings) QVSystem::QVThrow.Warning("%s", warning.c_str());
  std::stable_sort(result.clusters.begin(), result.clusters.end(),
                   [](const auto& a, const auto& b) { return a.size() > b.size(); });
  return result;
}

struct Place {
  std::size_t cluster = 0;  // from 1; 0 for none
  const char* role = "singleton";
};

std::vector<Place> GetPlaces(const Clustering& clustering, std::size_t n) {
  std::vector<Place> places(n);
  for (const unsigned int i : clustering.noise) places[i].role = "noise";
  for (std::size_t c = 0; c < clustering.clusters.size(); ++c)
    for (const unsigned int i : clustering.clusters[c])
      places[i] = {c + 1, i == clustering.clusters[c].front() ? "head" : "member"};
  return places;
}

void WriteTable(const ClusterArguments& arguments, const std::vector<MoleculeRecord>& records,
                const std::vector<Place>& places) {
  OutputFile out(arguments.out);
  WriteCsvRow(out.GetStream(), {"id", "smiles", "cluster", "role"});
  for (std::size_t i = 0; i < records.size(); ++i) {
    const Place& place = places[i];
    WriteCsvRow(out.GetStream(),
                {records[i].id, GetSmilesOf(records[i]),
                 place.cluster == 0 ? "" : std::to_string(place.cluster), place.role});
  }
  out.Commit();
}

void DrawPages(const ClusterArguments& arguments, const std::vector<MoleculeRecord>& records,
               const Clustering& clustering) {
  ClusterPages pages(arguments.page);
  Progress progress("drawing", clustering.clusters.size(), arguments.quiet);
  for (std::size_t c = 0; c < clustering.clusters.size(); ++c, progress.Step()) {
    const auto& cluster = clustering.clusters[c];
    const std::size_t shown = std::min<std::size_t>(cluster.size(), arguments.pageMembers);
    std::vector<const QVChem::QVMolBase*> members;
    for (std::size_t i = 0; i < shown; ++i) members.push_back(&records[cluster[i]].mol);
    std::string heading = QVSystem::QVFormat("Cluster %zu: %zu molecules", c + 1, cluster.size());
    if (shown < cluster.size()) heading += QVSystem::QVFormat(", %zu shown", shown);
    pages.Add(heading, members);
  }
  pages.Close();
}

int ClusterMolecules(const ClusterArguments& arguments) {
  if (!arguments.page.empty() && !QVDepict::QVIsImageFileName(arguments.page))
    throw Failure(arguments.page + ": a page is a .pdf, .png or .svg file");
  std::size_t refused = 0;
  std::vector<MoleculeRecord> records = ReadMolecules(arguments, refused);
  const QVStats::QVSNNParameters params = MakeParameters(arguments, records.size());
  const Clustering clustering = Cluster(GetNeighbours(arguments, records, params.nbrCt), params);
  const std::vector<Place> places = GetPlaces(clustering, records.size());
  WriteTable(arguments, records, places);
  std::size_t clustered = 0;
  for (const auto& cluster : clustering.clusters) clustered += cluster.size();
  std::cerr << QVSystem::QVFormat(
      "%zu molecules: %zu in %zu clusters, %zu noise, %zu singletons (lists of %u, topic %u, "
      "noise %u, merge %u, label %u)\n",
      records.size(), clustered, clustering.clusters.size(), clustering.noise.size(),
      records.size() - clustered - clustering.noise.size(), params.nbrCt, params.topic,
      params.noise, params.merge, params.label);
  if (!arguments.page.empty()) {
    if (clustering.clusters.empty())
      std::cerr << arguments.page << ": not written, there are no clusters\n";
    else
      DrawPages(arguments, records, clustering);
  }
  return refused == 0 ? kDone : kSomeRefused;
}

void AddThresholds(CLI::App& command, ClusterArguments& arguments) {
  const struct {
    const char* name;
    unsigned int& value;
    const char* help;
  } thresholds[] = {
      {"--neighbours", arguments.neighbours, "Length of the neighbour lists; else n / 10, 6 to 30"},
      {"--topic", arguments.topic, "Links that the head of a cluster has at least"},
      {"--noise", arguments.noise, "Links below which a molecule is noise"},
      {"--merge", arguments.merge, "Clusters merge when their heads share more neighbours"},
      {"--label", arguments.label, "A member shares more neighbours with the head"}};
  for (const auto& threshold : thresholds)
    command.add_option(threshold.name, threshold.value, threshold.help)
        ->check(CLI::Range(1, 1000000));
}

}  // namespace

void AddClusterCommand(CLI::App& program, int& exitCode) {
  CLI::App* const command =
      program.add_subcommand("cluster", "Cluster molecules by the near neighbours that they share");
  const auto arguments = std::make_shared<ClusterArguments>();
  command
      ->add_option("--by", arguments->by,
                   "What similarity is: a fingerprint, or the maximum common substructure")
      ->check(CLI::IsMember(GetSimilarityNames()))
      ->capture_default_str();
  command
      ->add_option("--budget", arguments->budget,
                   "Seconds for the common substructure of a pair; 0 for no limit")
      ->check(CLI::NonNegativeNumber)
      ->capture_default_str();
  AddThresholds(*command, *arguments);
  command->add_option("--page", arguments->page,
                      "Draw the clusters: .pdf with all pages; .png or .svg, then a file for each");
  command
      ->add_option("--page-members", arguments->pageMembers,
                   "How many molecules of a cluster to draw at most")
      ->check(CLI::Range(1, 1000000))
      ->capture_default_str();
  command->add_option("--smiles-column", arguments->smilesColumn, "SMILES column of a table");
  command->add_option("--id-column", arguments->idColumn, "Column or SD tag of the identifier");
  command->add_option("--out", arguments->out, "CSV file to write; - for standard output")
      ->capture_default_str();
  command->add_flag("--quiet", arguments->quiet, "No progress line");
  command->add_option("MOLECULES", arguments->molecules, "Molecules, in any of the formats")
      ->required();
  command->footer(
      "Writes a row for each molecule: its cluster, the largest being 1, and its role: head, "
      "member, "
      "noise or singleton. Example:\n"
      "  printf 'CCO\\nCCCO\\nCCCCO\\nCCCCCO\\nCCCCCCO\\nCCCCCCCO\\n' | qvstats cluster -");
  command->callback([arguments, &exitCode] { exitCode = ClusterMolecules(*arguments); });
}

}  // namespace QVApps
