// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

namespace zviptv::test {

/// The resources that the process holds.
struct Footprint
{
    long memory;             ///< resident, KiB
    std::size_t descriptors; ///< open files
};

Footprint CurrentFootprint();

/// The most memory that was resident at any time, KiB.
long PeakMemory();

/// False under tools that keep freed memory, where resident memory has no meaning.
bool MemoryCounts();

} // namespace zviptv::test
