// SPDX-License-Identifier: MIT
#pragma once

#include <cstdio>
#include <cstdlib>

namespace zviptv::test {

/// Ends the process if the condition is false, so that only the intended work is measured.
inline void Require(bool holds, char const* property)
{
    if (!holds) {
        std::fprintf(stderr, "does not hold: %s\n", property);
        std::exit(EXIT_FAILURE);
    }
}

} // namespace zviptv::test
