#include "platform/system/memory.h"

#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <limits>

#include "platform/system/error_handler.h"
#include "platform/system/internal/control_group.h"
#include "platform/system/text.h"

namespace QVSystem {
namespace {

constexpr std::uint64_t kUnlimited = std::numeric_limits<std::uint64_t>::max();

std::uint64_t Subtract(std::uint64_t limit, std::uint64_t used) {
  return limit > used ? limit - used : 0;
}

/// The number after a word at the head of a line, "MemAvailable: 1024 kB" or "inactive_file 4096".
bool FindNumber(const std::string& path, const std::string& word, std::uint64_t& number) {
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    if (line.compare(0, word.size(), word) != 0) continue;
    const auto digit = line.find_first_of("0123456789", word.size());
    if (digit == std::string::npos) return false;
    number = std::strtoull(line.c_str() + digit, nullptr, 10);
    return true;
  }
  return false;
}

/// How the two versions name what they keep of a group.
struct GroupFiles {
  const char* limit;
  const char* used;
  const char* reclaimable;  // in memory.stat
};
constexpr GroupFiles kVersion1 = {"/memory.limit_in_bytes", "/memory.usage_in_bytes",
                                  "total_inactive_file "};
constexpr GroupFiles kVersion2 = {"/memory.max", "/memory.current", "inactive_file "};

std::uint64_t GetMemoryLeftByGroup(const std::string& directory, const GroupFiles& files) {
  std::uint64_t limit = 0, used = 0, reclaimable = 0;
  // A limit of "max" has no number.
  if (!FindNumber(directory + files.limit, "", limit)) return kUnlimited;
  FindNumber(directory + files.used, "", used);
  FindNumber(directory + "/memory.stat", files.reclaimable, reclaimable);
  return Subtract(limit, Subtract(used, reclaimable));
}

std::uint64_t GetMemoryLeftUpToRoot(const std::string& root, std::string group,
                                    const GroupFiles& files) {
  std::uint64_t left = GetMemoryLeftByGroup(root, files);
  for (; group.size() > 1; group.resize(group.rfind('/')))
    left = std::min(left, GetMemoryLeftByGroup(root + group, files));
  return left;
}

/// A limit of the process on `resource`, of which it uses the pages that a column of
/// /proc/self/statm counts.
std::uint64_t GetMemoryLeftByLimit(decltype(RLIMIT_AS) resource, std::size_t column) {
  rlimit limit{};
  if (getrlimit(resource, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) return kUnlimited;
  std::ifstream file("/proc/self/statm");
  std::array<std::uint64_t, 7> pages{};
  for (std::uint64_t& count : pages) file >> count;
  return Subtract(limit.rlim_cur, pages[column] * static_cast<std::uint64_t>(getpagesize()));
}

}  // namespace

std::uint64_t QVGetMemoryLeftByControlGroups(const std::string& membership,
                                             const std::string& mount) {
  std::ifstream file(membership);
  std::uint64_t left = kUnlimited;
  // "<number>:<controllers>:<group>"; version 2 names no controllers.
  for (std::string line; std::getline(file, line);) {
    const auto first = line.find(':'), second = line.find(':', first + 1);
    if (second == std::string::npos) continue;
    const std::string controllers = ',' + line.substr(first + 1, second - first - 1) + ',';
    const std::string group = line.substr(second + 1);
    if (controllers == ",,")
      left = std::min(left, GetMemoryLeftUpToRoot(mount, group, kVersion2));
    else if (controllers.find(",memory,") != std::string::npos)
      left = std::min(left, GetMemoryLeftUpToRoot(mount + "/memory", group, kVersion1));
  }
  return left;
}

std::uint64_t QVGetAvailableMemory() {
  constexpr std::size_t kAddressSpace = 0, kData = 5;  // columns of statm
  std::uint64_t kilobytes = kUnlimited / 1024;
  FindNumber("/proc/meminfo", "MemAvailable:", kilobytes);
  return std::min(
      {kilobytes * 1024, QVGetMemoryLeftByControlGroups("/proc/self/cgroup", "/sys/fs/cgroup"),
       GetMemoryLeftByLimit(RLIMIT_AS, kAddressSpace), GetMemoryLeftByLimit(RLIMIT_DATA, kData)});
}

bool QVHasMemory(double bytes, std::string& problem) {
  constexpr double kAlwaysGranted = 64.0 * 1024 * 1024;
  if (bytes <= kAlwaysGranted) return true;
  const auto available = static_cast<double>(QVGetAvailableMemory());
  if (bytes <= available) return true;
  problem =
      QVFormat("needs %.3g GB of memory, %.3g GB are available", 1e-9 * bytes, 1e-9 * available);
  return false;
}

bool QVReportMemoryShortage(const std::string& what, const std::string& problem) {
  QVThrow.Error("%s %s", what.c_str(), problem.c_str());
  return false;
}

void QVPreferLargePages([[maybe_unused]] void* data, [[maybe_unused]] std::size_t bytes) {
#ifdef MADV_HUGEPAGE
  constexpr std::size_t kLeast = std::size_t{4} << 20;
  if (bytes < kLeast) return;
  const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
  const auto begin = reinterpret_cast<std::uintptr_t>(data);
  const std::uintptr_t offset = (page - begin % page) % page;  // to the first whole page
  // Only a wish: where it is refused the array works as well.
  madvise(static_cast<char*>(data) + offset, bytes - offset, MADV_HUGEPAGE);
#endif
}

}  // namespace QVSystem
