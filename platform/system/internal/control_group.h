/// \file
/// \brief What the control groups of a process leave of the memory.
#ifndef QV_PLATFORM_SYSTEM_INTERNAL_CONTROL_GROUP_H
#define QV_PLATFORM_SYSTEM_INTERNAL_CONTROL_GROUP_H

#include <cstdint>
#include <string>

namespace QVSystem {

/// The least that any group from the process's own up to the root leaves: its limit less its use,
/// where file pages that it has not touched lately count as free. A group that the mount does not
/// show, as in a container, is looked for at the root of the mount.
/// \param membership a file like /proc/self/cgroup.
/// \param mount where the groups stand: their own tree (version 2), or a tree for each controller
///     (version 1, here `mount`/memory).
/// \return the largest value without a limit.
std::uint64_t QVGetMemoryLeftByControlGroups(const std::string& membership,
                                             const std::string& mount);

}  // namespace QVSystem

#endif  // QV_PLATFORM_SYSTEM_INTERNAL_CONTROL_GROUP_H
