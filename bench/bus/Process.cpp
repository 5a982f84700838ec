// SPDX-License-Identifier: MIT
#include "Process.h"

#include <malloc.h>
#include <signal.h>
#include <sys/prctl.h>
#include <time.h>

#include <fstream>
#include <stdexcept>

namespace zviptv::bench {

namespace {

std::int64_t Read(clockid_t clock)
{
    timespec value{};
    clock_gettime(clock, &value);
    return std::int64_t{value.tv_sec} * 1'000'000'000 + value.tv_nsec;
}

} // namespace

std::int64_t Now()
{
    return Read(CLOCK_MONOTONIC);
}

std::int64_t ProcessorTime()
{
    return Read(CLOCK_PROCESS_CPUTIME_ID);
}

void DieWithParent()
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
}

long StatusKiB(std::string const& field)
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.compare(0, field.size() + 1, field + ":") == 0) {
            return std::stol(line.substr(field.size() + 1));
        }
    }
    throw std::runtime_error("no " + field + " in /proc/self/status");
}

void ResetPeakMemory()
{
    std::ofstream refs("/proc/self/clear_refs");
    if (!(refs << 5 << std::flush)) {
        throw std::runtime_error("cannot reset the memory peak in /proc/self/clear_refs");
    }
}

std::size_t HeapBytes()
{
    struct mallinfo2 const heap = mallinfo2();
    return heap.uordblks + heap.hblkhd;
}

} // namespace zviptv::bench
