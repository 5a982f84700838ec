// SPDX-License-Identifier: MIT
#pragma once

#include <cstdio>
#include <cstdlib>

namespace zviptv::test {

/// Ends the process: what is measured has to be what was meant.
inline void Require(bool holds, char const* property)
{
    if (!holds) {
        std::fprintf(stderr, "does not hold: %s\n", property);
        std::exit(EXIT_FAILURE);
    }
}

} // namespace zviptv::test
