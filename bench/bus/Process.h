// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>

namespace zviptv::bench {

/// Nanoseconds of the clock that all processes share.
std::int64_t Now();

/// Nanoseconds of processor time that this process has used, in all threads.
std::int64_t ProcessorTime();

/// This process ends with the one that started it, however that ends.
void DieWithParent();

/// A line of /proc/self/status, in KiB: "VmRSS", "VmHWM".
long StatusKiB(std::string const& field);

/// VmHWM counts from here.
void ResetPeakMemory();

/// Bytes that are allocated and not freed.
std::size_t HeapBytes();

} // namespace zviptv::bench
