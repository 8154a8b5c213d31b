#include "platform/system/memory.h"

#include <gmock/gmock.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <limits>
#include <numeric>

#include "platform/system/internal/control_group.h"
#include "stats/api/data_table.h"
#include "stats/api/data_vector_independence.h"
#include "stats/api/linear_smoother.h"
#include "stats/api/snn_dirty.h"
#include "tests/support/krige_support.h"
#include "tests/support/temporary_file.h"

namespace QVStats {
namespace {

using QVSystem::QVGetMemoryLeftByControlGroups;

constexpr std::uint64_t kUnlimited = std::numeric_limits<std::uint64_t>::max();

/// Writes files of a directory that is made for them.
void WriteGroup(const TemporaryDirectory& directory, const std::string& group,
                const std::vector<std::pair<std::string, std::string>>& files) {
  std::filesystem::create_directories(directory.GetPath(group));
  for (const auto& [name, text] : files) directory.Write(group + '/' + name, text);
}

// Wherever an array begins; a wish for pages must not clear what is there.
TEST(LargePages, KeepTheContent) {
  std::vector<int> values(std::size_t{3} << 20);
  std::iota(values.begin(), values.end(), 0);
  QVSystem::QVPreferLargePages(values.data() + 5, (values.size() - 5) * sizeof(int));
  for (std::size_t i = 0; i < values.size(); i += 511) ASSERT_EQ(values[i], static_cast<int>(i));
}

TEST(ControlGroups, TheTightestGroupUpToTheRootCounts) {
  const TemporaryDirectory directory;
  const std::string mount = directory.GetPath("mount");
  WriteGroup(directory, "mount/a/b",
             {{"memory.max", "max\n"}, {"memory.current", "700\n"}, {"memory.stat", "anon 700\n"}});
  WriteGroup(directory, "mount/a",
             {{"memory.max", "1000\n"},
              {"memory.current", "900\n"},
              {"memory.stat", "anon 500\nfile 400\ninactive_file 150\nactive_file 250\n"}});
  const std::string two = directory.Write("two", "0::/a/b\n");
  EXPECT_EQ(QVGetMemoryLeftByControlGroups(two, mount), 250u);
  // Inside a container the group's path does not stand under the mount.
  WriteGroup(directory, "mount", {{"memory.max", "5000\n"}, {"memory.current", "6000\n"}});
  EXPECT_EQ(QVGetMemoryLeftByControlGroups(directory.Write("far", "0::/x/y\n"), mount), 0u);

  WriteGroup(directory, "mount/memory/c",
             {{"memory.limit_in_bytes", "4096\n"},
              {"memory.usage_in_bytes", "4000\n"},
              {"memory.stat", "inactive_file 7\ntotal_inactive_file 1000\n"}});
  const std::string one = directory.Write("one", "3:cpu,cpuacct:/z\n4:hugetlb,memory:/c\n");
  EXPECT_EQ(QVGetMemoryLeftByControlGroups(one, mount), 1096u);

  EXPECT_EQ(QVGetMemoryLeftByControlGroups(directory.Write("none", "4:cpu:/c\nnonsense\n"), mount),
            kUnlimited);
  EXPECT_EQ(QVGetMemoryLeftByControlGroups(directory.GetPath("absent"), mount), kUnlimited);
}

TEST(Memory, SaysWhatIsNeededAndWhatThereIs) {
  std::string problem;
  EXPECT_TRUE(QVSystem::QVHasMemory(1e6, problem));
  EXPECT_FALSE(QVSystem::QVHasMemory(1e18, problem));
  EXPECT_THAT(problem,
              testing::MatchesRegex("needs 1e\\+09 GB of memory, [0-9.]+ GB are available"));
}

// The address sanitizer reserves terabytes of address space.
#ifdef __has_feature
#define QVSTATS_TEST_HAS_FEATURE(name) __has_feature(name)
#else
#define QVSTATS_TEST_HAS_FEATURE(name) 0
#endif
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) && \
    !QVSTATS_TEST_HAS_FEATURE(address_sanitizer) && !QVSTATS_TEST_HAS_FEATURE(thread_sanitizer)

/// Limits the address space to `megabytes` beyond what the process has, and ends it with 0 when
/// `work` then returns true.
template <class Work>
[[noreturn]] void RunWithMoreMemory(std::uint64_t megabytes, Work work) {
  std::uint64_t pages = 0;
  std::ifstream("/proc/self/statm") >> pages;
  const std::uint64_t bytes =
      pages * static_cast<std::uint64_t>(getpagesize()) + megabytes * 1000 * 1000;
  const rlimit limit = {bytes, bytes};
  if (setrlimit(RLIMIT_AS, &limit) != 0) _exit(2);
  const bool held = work();
  _exit(held ? 0 : 1);
}

const testing::ExitedWithCode kHeld(0);

using QVKrigeTest::Kind;
using QVKrigeTest::MakeSamples;

TEST(OutOfMemory, TrainingIsRefused) {
  EXPECT_EXIT(RunWithMoreMemory(300,
                                [] {
                                  auto model = MakeModel(Kind::Ordinary, MakeSamples(5000, 1));
                                  return !model.Train() && !model.GetKrigeResult({0, 0}).Valid();
                                }),
              kHeld,
              "Error: The variogram of 5000 elements needs 0.2 GB of memory, 0.1[0-9]* GB are "
              "available");
  EXPECT_EXIT(
      RunWithMoreMemory(300,
                        [] {
                          auto model = MakeModel(Kind::Universal, MakeSamples(5000, 1));
                          return !model.TrainFixed(QVKrigeKernel(QVKrigeKernelType::Exponential));
                        }),
      kHeld, "The covariance matrix of 5000 elements needs 0.2 GB of memory");
}

// What the system refuses although it seemed to be there is caught.
TEST(OutOfMemory, AnElementIsRefused) {
  for (const auto& [megabytes, text] :
       {std::pair{170u, "training elements needs 0.[01][0-9]* GB of memory, 0.0[0-9]* GB are"},
        std::pair{20u, "training elements needs more memory than the system grants"}})
    EXPECT_EXIT(RunWithMoreMemory(megabytes,
                                  [] {
                                    auto model =
                                        MakeModel(Kind::Simple, QVKrigeTest::GlobalOptions());
                                    for (const auto& sample : MakeSamples(5000, 1))
                                      if (!model.AddTraining(sample.point, sample.value))
                                        return true;
                                    return false;
                                  }),
                kHeld, std::string("The table of distances between [0-9]* ") + text);
}

TEST(OutOfMemory, SquareMatricesAreRefused) {
  EXPECT_EXIT(RunWithMoreMemory(200,
                                [] {
                                  QVSimInfo info(false);
                                  const std::vector<QVMolData> mols(20000);
                                  return !info.InitSimilarity(mols) && info.GetCount() == 0;
                                }),
              kHeld, "a matrix of 20000 objects needs 6.4 GB of memory, 0.[12][0-9]* GB are");
  EXPECT_EXIT(RunWithMoreMemory(200,
                                [] {
                                  Eigen::MatrixXd distances;
                                  const QVStatModelResult result = GetDistanceMatrix(
                                      distances, std::vector<double>(10000), 1, false);
                                  std::cerr << result.ReportStatResultDetails();
                                  return result.NotSuccessful();
                                }),
              kHeld,
              "A distance matrix of 10000 rows needs 0.8 GB of memory, 0.[12][0-9]* GB are "
              "available");
}

#endif

}  // namespace
}  // namespace QVStats
