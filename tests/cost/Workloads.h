// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace zviptv::test {

/// One thing that applications do over and over.
struct Workload
{
    std::string name;
    int rounds;                    ///< over which its cost is taken
    std::function<void()> prepare; ///< to be run before it, once
    std::function<void()> run;
};

std::vector<Workload> AllWorkloads();

} // namespace zviptv::test
