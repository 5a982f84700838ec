// SPDX-License-Identifier: MIT
#include "GuideGenerator.h"
#include "Sanitizers.h"
#include "TestSupport.h"
#include "guide/ProgrammeGuide.h"

#include <chrono>
#include <fstream>
#include <gtest/gtest.h>
#include <iostream>

namespace zviptv::test {
namespace {

constexpr std::uint64_t MiB = 1024 * 1024;

/// A field of /proc/self/status, in bytes.
std::uint64_t StatusField(std::string const& name)
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.compare(0, name.size(), name) == 0) {
            return std::stoull(line.substr(name.size() + 1)) * 1024;
        }
    }
    return 0;
}

/// Resets the kernel's memory peak.
bool ResetPeak()
{
    std::ofstream reset("/proc/self/clear_refs");
    reset << 5 << std::flush;
    return reset.good();
}

std::uint64_t Megabytes()
{
    char const* const wanted = std::getenv("ZVIPTV_TEST_GUIDE_MB");
    return wanted ? std::stoull(wanted) : 30;
}

TEST(BigGuide, PeakMemoryIsBelowTwiceTheFile)
{
    if (UnderAddressSanitizer || UnderThreadSanitizer) {
        GTEST_SKIP() << "sanitizers keep freed memory, so the peak is meaningless";
    }
    TempFile const file;
    auto const written = WriteGuide(file.Path(), Megabytes() * 1'000'000);
    if (!ResetPeak()) {
        GTEST_SKIP() << "the kernel does not allow resetting the peak";
    }
    std::uint64_t const before = StatusField("VmRSS:");

    auto const begin = std::chrono::steady_clock::now();
    sim::ProgrammeGuide guide;
    auto const warnings = guide.Load(file.Path());
    std::chrono::duration<double> const seconds = std::chrono::steady_clock::now() - begin;

    std::uint64_t const peak = StatusField("VmHWM:") - before;
    std::cout << "file " << written.bytes / MiB << " MiB, " << written.programmes
              << " programmes: " << seconds.count() << " s, peak " << peak / MiB << " MiB\n";

    EXPECT_EQ(warnings.Count(), 0u);
    EXPECT_EQ(guide.Current()->All().count, written.programmes);
    EXPECT_GT(peak, written.bytes / 4) << "the peak is too low: it was not measured correctly";
    EXPECT_LT(peak, written.bytes * 2);
}

TEST(BigGuide, AnswersFromAnyPlaceInTheFile)
{
    TempFile const file;
    auto const written = WriteGuide(file.Path(), 3'000'000);
    sim::ProgrammeGuide guide;
    guide.Load(file.Path());
    for (std::uint32_t event = 1; event <= written.programmes; event += 97) {
        std::uint64_t const service = 1 + (event - 1) % 200;
        auto const found = ParseJson(guide.Find(service, event));
        std::uint32_t const start = 1767225600 + (event - 1) / 200 * 1800;
        ASSERT_EQ(found["start_time"].asUInt(), start);
        ASSERT_EQ(ParseJson(guide.Present(service, start + 1799)), found);
        ASSERT_EQ(ParseJson(guide.List(service, start, 1800))[0], found);
    }
}

} // namespace
} // namespace zviptv::test
