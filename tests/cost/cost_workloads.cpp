// SPDX-License-Identifier: MIT
#include "Allocations.h"
#include "Require.h"
#include "Workloads.h"

#include <glib.h>
#include <gnu/libc-version.h>
#include <valgrind/callgrind.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

// workloads <name>: runs one workload, its measured rounds under callgrind's eyes where callgrind runs it,
// and prints what they asked the heap for. Without a name it lists the workloads; with --versions, what the
// counts depend on.

using namespace zviptv::test;

namespace {

constexpr int WarmUpRounds = 5;

void Measure(Workload const& workload)
{
    workload.prepare();
    for (int i = 0; i < WarmUpRounds; ++i) {
        workload.run();
    }
    Allocations const before = Allocations::SoFar();
    CALLGRIND_START_INSTRUMENTATION;
    for (int i = 0; i < workload.rounds; ++i) {
        workload.run();
    }
    CALLGRIND_STOP_INSTRUMENTATION;
    Allocations const spent = Allocations::SoFar() - before;
    std::printf("%d %ju %ju\n", workload.rounds, static_cast<std::uintmax_t>(spent.count),
                static_cast<std::uintmax_t>(spent.bytes));
}

void PrintVersions()
{
    std::printf("g++ %s\n", __VERSION__);
    std::printf("libstdc++ %d\n", __GLIBCXX__);
    std::printf("GLib %u.%u.%u\n", glib_major_version, glib_minor_version, glib_micro_version);
    std::printf("glibc %s\n", gnu_get_libc_version());
}

} // namespace

int main(int argc, char** argv)
{
    std::vector<Workload> const workloads = AllWorkloads();
    if (argc < 2) {
        for (Workload const& workload : workloads) {
            std::puts(workload.name.c_str());
        }
        return 0;
    }
    if (std::strcmp(argv[1], "--versions") == 0) {
        PrintVersions();
        return 0;
    }
    auto const found = std::find_if(workloads.begin(), workloads.end(),
                                    [&](Workload const& workload) { return workload.name == argv[1]; });
    Require(found != workloads.end(), "the workload is known");
    Measure(*found);
    return 0;
}
