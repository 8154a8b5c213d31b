/// \file
/// \brief Whether a large array fits into memory, asked before it is made.
///
/// The kernel grants more memory than there is and ends a process that uses it, so a failed
/// allocation is not how a program learns that a matrix of n x n numbers is too large. Routines
/// whose memory grows with the square of their input ask here first.
#ifndef QV_PLATFORM_SYSTEM_MEMORY_H
#define QV_PLATFORM_SYSTEM_MEMORY_H

#include <cstddef>
#include <cstdint>
#include <new>
#include <string>

#include "platform/system/export.h"

namespace QVSystem {

/// The bytes that the process may still take: the least of what the machine has to give without
/// swapping, what the control groups of the process leave to it (versions 1 and 2), and what the
/// limits on its address space and its data leave. The largest value where none is known.
QVSYSTEM_EXPORT std::uint64_t QVGetAvailableMemory();

/// Whether `bytes` of memory are there. Up to 64 MiB the answer is yes at no cost.
/// \return false with `problem` such as "needs 28.8 GB of memory, 20.1 GB are available".
QVSYSTEM_EXPORT bool QVHasMemory(double bytes, std::string& problem);

/// Reports "<what> needs 28.8 GB of memory, 20.1 GB are available" as an error. \return false.
QVSYSTEM_EXPORT bool QVReportMemoryShortage(const std::string& what, const std::string& problem);

/// Asks the system to back an array with large pages where it has them. A matrix of some megabytes
/// that is read by rows and columns touches more small pages than a processor can look up at once:
/// its factorisation is slower by a fifth. To be called before the array is first written; arrays
/// below 4 MiB are left alone. All of a large page is taken as soon as one byte of it is written.
QVSYSTEM_EXPORT void QVPreferLargePages(void* data, std::size_t bytes);

/// Runs `work`, whose arrays take `bytes`, when the memory for it is there.
/// \param what is made, the head of the error that is reported when it is not there, or when the
///     system refuses it all the same.
/// \return whether it ran and returned true.
template <class Work>
bool QVRunWithinMemory(const std::string& what, double bytes, Work work) {
  std::string problem;
  if (!QVHasMemory(bytes, problem)) return QVReportMemoryShortage(what, problem);
  try {
    return work();
  } catch (const std::bad_alloc&) {
    return QVReportMemoryShortage(what, "needs more memory than the system grants");
  }
}

}  // namespace QVSystem

#endif  // QV_PLATFORM_SYSTEM_MEMORY_H
