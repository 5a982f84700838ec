// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace zviptv::test {

/// What the calling thread has asked the heap for since it began: by malloc, calloc, realloc and the aligned
/// ones, which operator new and GLib come down to. GLib's slices do with G_SLICE=always-malloc in the
/// environment of the process. Linked into a program, the counting stands in for the C library's functions.
struct Allocations
{
    std::uint64_t count = 0;
    std::uint64_t bytes = 0; ///< as asked for; a realloc counts with its whole new size

    static Allocations SoFar();

    Allocations operator-(Allocations const& other) const
    {
        return {count - other.count, bytes - other.bytes};
    }
};

} // namespace zviptv::test
