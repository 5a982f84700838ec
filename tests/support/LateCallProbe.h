// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/MessageBuffer.h>

#include <atomic>
#include <string>
#include <thread>

namespace zviptv::test {

/// What a channel's handlers touch. Freed as soon as the channel is gone, so that a memory checker sees every
/// late call; the counter tells without one.
struct LateCallProbe
{
    /// `yields`: how long a handler stays, so that the channel is often destroyed just then.
    LateCallProbe(std::atomic<int>& counter, int yields) : lateCalls(counter), stay(yields) {}

    void Touch()
    {
        ++touched;
        for (int i = 0; i < stay; ++i) {
            std::this_thread::yield();
        }
        if (gone) {
            ++lateCalls;
        }
    }

    // Handlers of a channel whose user data is a probe.
    static CMessageBuffer OnMessage(CMessageBuffer& /*request*/, void* probe)
    {
        static_cast<LateCallProbe*>(probe)->Touch();
        return CMessageBuffer();
    }
    static void OnNotification(CMessageBuffer& /*notification*/, void* probe)
    {
        static_cast<LateCallProbe*>(probe)->Touch();
    }
    static void OnLoss(std::string /*partner*/, std::string /*own*/, void* probe)
    {
        static_cast<LateCallProbe*>(probe)->Touch();
    }

    std::atomic<bool> gone{false};
    std::atomic<int> touched{0};
    std::atomic<int>& lateCalls;
    int const stay;
};

} // namespace zviptv::test
