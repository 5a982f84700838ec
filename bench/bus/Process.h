// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>

namespace zviptv::bench {

/// The time in nanoseconds, on a clock that is the same for all processes.
std::int64_t Now();

/// The processor time of all threads of this process, in nanoseconds.
std::int64_t ProcessorTime();

/// Ends this process with the one that started it, even if that is killed.
void DieWithParent();

/// A line of /proc/self/status, in KiB: "VmRSS", "VmHWM".
long StatusKiB(std::string const& field);

/// Resets VmHWM.
void ResetPeakMemory();

/// The allocated bytes that are not freed.
std::size_t HeapBytes();

} // namespace zviptv::bench
