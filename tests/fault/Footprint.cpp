// SPDX-License-Identifier: MIT
#include "Footprint.h"

#include "Sanitizers.h"

#include <malloc.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace zviptv::test {

namespace {

/// The number after a word in /proc/self/status, in KiB.
long Status(std::string const& word)
{
    std::ifstream file("/proc/self/status");
    for (std::string line; std::getline(file, line);) {
        if (line.compare(0, word.size(), word) == 0) {
            return std::stol(line.substr(word.size()));
        }
    }
    return 0;
}

} // namespace

// Free memory that malloc keeps does not count, because its size depends on the load of the machine.
Footprint CurrentFootprint()
{
    malloc_trim(0);
    std::filesystem::directory_iterator const descriptors("/proc/self/fd");
    return {Status("VmRSS:"),
            static_cast<std::size_t>(std::distance(begin(descriptors), end(descriptors))) - 1};
}

long PeakMemory()
{
    return Status("VmHWM:");
}

bool MemoryCounts()
{
    char const* const preloaded = std::getenv("LD_PRELOAD");
    bool const underValgrind = preloaded != nullptr && std::strstr(preloaded, "vgpreload") != nullptr;
    return !UnderAddressSanitizer && !UnderThreadSanitizer && !underValgrind;
}

} // namespace zviptv::test
