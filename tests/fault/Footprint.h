// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

namespace zviptv::test {

/// What the process holds.
struct Footprint
{
    long memory;             ///< resident, KiB
    std::size_t descriptors; ///< open files
};

Footprint CurrentFootprint();

/// The most memory that was resident at any time, KiB.
long PeakMemory();

/// False under tools that keep freed memory: what is resident says nothing there.
bool MemoryCounts();

} // namespace zviptv::test
