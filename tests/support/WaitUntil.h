// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <chrono>
#include <functional>
#include <thread>

namespace zviptv::test {

/// Asks `condition` on the calling thread until it is true (returns true) or `timeout` has passed (returns
/// its last answer): at first every 2 ms and later less often, so that the wait takes at most a tenth longer.
/// For conditions without an event to wait for (a file descriptor count, a counter in foreign code);
/// everything on the bus has an event to wait for.
inline bool WaitUntil(std::function<bool()> const& condition, std::chrono::milliseconds timeout)
{
    using Clock = std::chrono::steady_clock;
    auto const start = Clock::now();
    while (!condition()) {
        auto const waited = Clock::now() - start;
        if (waited >= timeout) {
            return condition();
        }
        std::this_thread::sleep_for(std::clamp<Clock::duration>(waited / 10, std::chrono::milliseconds(2),
                                                                std::chrono::milliseconds(20)));
    }
    return true;
}

} // namespace zviptv::test
