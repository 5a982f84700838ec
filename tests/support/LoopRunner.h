// SPDX-License-Identifier: MIT
#pragma once

#include "glib/Owned.h"

#include <chrono>
#include <functional>
#include <thread>

namespace zviptv::test {

/// Iterates the calling thread's default main context until `condition` holds (true) or `timeout` has passed
/// (false). The condition is checked after every event, and every few milliseconds for changes by other
/// threads.
bool RunUntil(std::function<bool()> const& condition,
              std::chrono::milliseconds timeout = std::chrono::seconds(20));

/// Handles all ready events of the calling thread's default main context, without waiting.
void RunPending();

/// A thread that iterates the process's default main context, as a host application's main thread would.
/// While it runs, no other thread may iterate that context.
class LoopThread
{
public:
    LoopThread();
    /// Returns when the loop has ended.
    ~LoopThread();
    LoopThread(LoopThread const&) = delete;
    LoopThread& operator=(LoopThread const&) = delete;

    /// Runs `work` on the loop's thread and returns when it is done.
    void Run(std::function<void()> const& work);

private:
    Owned<GMainLoop> m_loop{g_main_loop_new(nullptr, FALSE)};
    std::thread m_thread;
};

} // namespace zviptv::test
