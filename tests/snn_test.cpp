#include "stats/api/snn.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "platform/chem/smiles.h"
#include "platform/system/error_handler.h"
#include "stats/api/snn_dirty.h"

namespace QVStats {
namespace {

using Lists = std::vector<std::vector<unsigned int>>;
using QVSystem::QVErrorLevel;
using QVSystem::QVScopedRecordingSink;
using testing::ElementsAre;

TEST(SNNParameters, FollowTheNumberOfObjects) {
  const auto fields = [](std::size_t n) {
    const QVSNNParameters p = QVGetSNNParameters(n);
    return std::vector<unsigned int>{p.nbrCt, p.topic, p.noise, p.merge, p.label};
  };
  EXPECT_THAT(fields(20), ElementsAre(6, 4, 3, 3, 3));
  EXPECT_THAT(fields(100), ElementsAre(10, 7, 5, 6, 5));
  EXPECT_THAT(fields(1000), ElementsAre(30, 22, 15, 18, 15));
}

TEST(NNStrength, IsOrderedByItsObjectAlone) {
  QVNNStrength record(3, 7, 2);
  record.Add({7, 2});
  EXPECT_EQ(record.GetStrCt(), 2u);
  const QVNNStrength key(3);
  EXPECT_FALSE(key < record || record < key);
  EXPECT_EQ(key.GetStrCt(), 0u);
}

class SNN : public testing::Test {
 protected:
  SNN() { testing::internal::CaptureStderr(); }
  ~SNN() override {
    if (!taken_) testing::internal::GetCapturedStderr();
  }
  std::string TakeNotes() {
    taken_ = true;
    return testing::internal::GetCapturedStderr();
  }

  QVScopedRecordingSink sink_;
  Lists clusters_;
  std::vector<unsigned int> noise_;

 private:
  bool taken_ = false;
};

TEST_F(SNN, NeighboursOfTiesAreTheEarlierObjects) {
  const std::size_t n = 21;
  std::mt19937 engine(5);
  std::uniform_int_distribution<int> few(0, 4);
  std::vector<double> similarity(n * n, -1.0);
  for (std::size_t i = 0; i < n; ++i)
    for (std::size_t j = i; j < n; ++j) similarity[n * i + j] = few(engine) / 4.0;
  const Lists lists = QVGetNearestNeighbours(similarity, n, 6);
  for (unsigned int i = 0; i < n; ++i) {
    std::vector<std::pair<double, unsigned int>> all;
    for (unsigned int j = 0; j < n; ++j)
      all.push_back({-similarity[n * std::min(i, j) + std::max(i, j)], j});
    std::sort(all.begin(), all.end());
    for (std::size_t r = 0; r < 6; ++r) EXPECT_EQ(lists[i][r], all[r].second) << i << ' ' << r;
  }
}

TEST_F(SNN, WhatIsNoSimilarityIsNoNeighbour) {
  const unsigned int n = 40;
  std::vector<double> similarity(n * n, 0.5);
  for (unsigned int i = 0; i < n; ++i) similarity[n * i + i] = 1.0;
  for (unsigned int j = 1; j < n; j += 2) similarity[j] = std::nan("");  // of object 0
  const Lists lists = QVGetNearestNeighbours(similarity, n, 20);
  for (unsigned int r = 0; r < 20; ++r) EXPECT_EQ(lists[0][r], 2 * r);
  EXPECT_EQ(lists[1][0], 1u);
  EXPECT_EQ(lists[1][1], 2u);
}

TEST_F(SNN, LinksAreMutualAndCountSharedNeighbours) {
  const Lists lists = {{0, 1, 2}, {0, 2, 1}, {1, 2}, {0, 3}, {}};
  const auto records = QVGetNeighbourLinks(lists);
  ASSERT_EQ(records.size(), 3u);
  ASSERT_EQ(records[0].GetStrCt(), 1u);  // 2 does not list 0, 0 does not list 3
  EXPECT_EQ(records[0].GetLinks()[0].neighbourIndex, 1u);
  EXPECT_EQ(records[0].GetLinks()[0].strength, 3u);
  ASSERT_EQ(records[1].GetStrCt(), 2u);
  EXPECT_EQ(records[1].GetLinks()[1].neighbourIndex, 2u);
  EXPECT_EQ(records[1].GetLinks()[1].strength, 2u);
  const std::string notes = TakeNotes();
  EXPECT_EQ(std::count(notes.begin(), notes.end(), '\n'), 6);
  EXPECT_EQ(notes.substr(0, 32), "slow unsorted search of size nn\n");
}

/// Objects 0..4 and 5..9 each list their whole group; 10 lists only itself, 11 nothing.
Lists TwoGroups() {
  Lists lists(12);
  for (unsigned int i = 0; i < 10; ++i)
    for (unsigned int j = 0; j < 5; ++j) lists[i].push_back(i / 5 * 5 + j);
  lists[10] = {10};
  return lists;
}

TEST_F(SNN, GroupsClusterAndHeadsMerge) {
  ASSERT_TRUE(QVGetSNNCluster(clusters_, noise_, 12, TwoGroups(), {5, 4, 1, 3, 3}, true));
  EXPECT_THAT(clusters_, ElementsAre(ElementsAre(0, 1, 2, 3, 4), ElementsAre(5, 6, 7, 8, 9)));
  EXPECT_THAT(noise_, ElementsAre(11));
  EXPECT_THAT(sink_.GetTexts(QVErrorLevel::Info), ElementsAre("Singleton Ct = 1, Noise Ct = 1"));
  EXPECT_EQ(sink_.GetTexts(QVErrorLevel::Warning).size(), 8u);  // one for each head taken in
}

TEST_F(SNN, ObjectsAttachToAHeadButNotThroughOneAnother) {
  // 0 heads with links to 1, 2, 3; 3 and 4 are linked, but 4 has no link to the head.
  const Lists lists = {{0, 1, 2, 3}, {0, 1, 2, 3}, {0, 1, 2, 3}, {0, 1, 2, 3, 4}, {3, 4}};
  ASSERT_TRUE(QVGetSNNCluster(clusters_, noise_, 5, lists, {4, 4, 1, 9, 1}, true));
  EXPECT_THAT(clusters_, ElementsAre(ElementsAre(3, 0, 1, 2, 4)));
  clusters_.clear();
  noise_.clear();
  ASSERT_TRUE(QVGetSNNCluster(clusters_, noise_, 5, lists, {4, 4, 1, 9, 2}, true));
  EXPECT_THAT(clusters_, ElementsAre(ElementsAre(3, 0, 1, 2)));
}

TEST_F(SNN, SaysWhyThereAreNoClusters) {
  EXPECT_FALSE(QVGetSNNCluster(clusters_, noise_, 2, {{1}, {1}}, {1, 1, 1, 1, 1}, false));
  EXPECT_FALSE(QVGetSNNCluster(clusters_, noise_, 2, {{1}, {0}}, {1, 2, 1, 1, 1}, false));
  EXPECT_THAT(sink_.GetTexts(QVErrorLevel::Warning),
              ElementsAre("Failed to find any connected near-neighbors",
                          "Failed to identify representative clusters & noise."));
  EXPECT_FALSE(QVGetSNNCluster(clusters_, noise_, 2, {{1}, {2}}, {1, 1, 1, 1, 1}, false));
  EXPECT_FALSE(QVGetSNNCluster(clusters_, noise_, 3, {{1}, {2}}, {1, 1, 1, 1, 1}, false));
  EXPECT_EQ(sink_.GetTexts(QVErrorLevel::Error).size(), 2u);
  EXPECT_TRUE(clusters_.empty());
}

TEST_F(SNN, MoleculesClusterFromTheStore) {
  std::vector<QVChem::QVGraphMol> mols;
  for (const char* chain : {"C", "N"})  // two families of rings with growing tails
    for (std::string tail; tail.size() < 10; tail += chain) {
      mols.emplace_back();
      ASSERT_TRUE(QVChem::QVParseSmiles(mols.back(),
                                        (*chain == 'C' ? "c1ccccc1" : "O=C1CCCCCCCC1") + tail));
    }
  std::vector<QVMolData> data;
  for (auto& mol : mols) data.push_back({&mol, static_cast<unsigned int>(data.size())});
  QVSimInfo info;
  ASSERT_TRUE(info.InitSimilarity(data));
  // Toluene in benzene: 6 common atoms of 6 + 7 - 6. Ring and tail share nothing across families.
  EXPECT_DOUBLE_EQ(info.GetMatrix()[1], 6.0 / 7.0);
  EXPECT_EQ(info.GetMatrix()[20], 0.0) << "only one orientation is written";
  EXPECT_EQ(info.GetItems().size(), 210u);
  EXPECT_TRUE(std::is_sorted(info.GetItems().begin(), info.GetItems().end(), LessSimItem()));

  std::vector<QVClusterNode<QVMolData>> nodes;
  ASSERT_TRUE(QVGetSNNCluster(nodes, data, info));
  for (const auto& node : nodes) {
    const bool aromatic = (*node.GetMembers())->index < 10;
    for (const QVMolData* member : node.GetMembers()) EXPECT_EQ(member->index < 10, aromatic);
  }
  const std::string notes = TakeNotes();
  EXPECT_EQ(notes.rfind(
                "nbrCt = 6\ntopic = 4\nnoise = 3\nmerge = 3\nlabel = 3\n0:  (1,0) (0.857143,1)", 0),
            0u)
      << notes.substr(0, 120);
  EXPECT_NE(notes.find("\nEndPrint\n"), std::string::npos);
}

TEST_F(SNN, FingerprintsGiveTheSameNeighboursWithAndWithoutAMatrix) {
  std::vector<QVChem::QVGraphMol> mols;
  for (const char* smiles :
       {"CCO", "CCCO", "CCN", "c1ccccc1", "Cc1ccccc1", "CCc1ccccc1", "CC(=O)O"}) {
    mols.emplace_back();
    ASSERT_TRUE(QVChem::QVParseSmiles(mols.back(), smiles));
  }
  std::vector<QVMolData> data;
  std::vector<QVLikeness::QVVseprFingerprint> fingerprints;
  for (auto& mol : mols) {
    data.push_back({&mol, static_cast<unsigned int>(data.size())});
    fingerprints.emplace_back(mol, QVLikeness::QVVseprOptions());
  }
  QVSimInfo info;
  ASSERT_TRUE(info.InitSimilarity(data, QVLikeness::QVVseprOptions()));
  EXPECT_EQ(QVGetNearestNeighbours(info.GetMatrix(), mols.size(), 3),
            QVGetNearestNeighbours(fingerprints, 3));
}

TEST_F(SNN, TheStoreRefusesWhatIsNoSquare) {
  QVSimInfo info;
  EXPECT_FALSE(info.InitSimilarity(std::vector<double>(3, 1.0)));
  EXPECT_FALSE(QVGetSNNCluster(clusters_, 0, info));
  EXPECT_THAT(sink_.GetTexts(QVErrorLevel::Warning),
              ElementsAre("Failed to identify near-neghbors"));
}

}  // namespace
}  // namespace QVStats
