// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <functional>
#include <thread>

namespace zviptv::test {

/// Asks `condition` every 2 ms on the calling thread until it is true (returns true) or `timeout` has
/// passed (returns its last answer). For conditions without an event to wait for (a file
/// descriptor count, a counter in foreign code); everything on the bus has an event to wait for.
inline bool WaitUntil(std::function<bool()> const& condition, std::chrono::milliseconds timeout)
{
    constexpr std::chrono::milliseconds step{2};
    auto const deadline = std::chrono::steady_clock::now() + timeout;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= deadline) {
            return condition();
        }
        std::this_thread::sleep_for(step);
    }
    return true;
}

} // namespace zviptv::test
