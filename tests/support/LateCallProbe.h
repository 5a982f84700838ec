// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/MessageBuffer.h>

#include <atomic>
#include <string>
#include <thread>

namespace zviptv::test {

/// The data of a channel's handlers. It is freed when the channel has ended, so that a memory checker finds
/// every late call. The counter finds late calls without one.
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
