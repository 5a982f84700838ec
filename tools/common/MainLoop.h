// SPDX-License-Identifier: MIT
#pragma once

#include "glib/Owned.h"

#include <chrono>
#include <exception>
#include <functional>
#include <mutex>
#include <set>
#include <vector>

namespace zviptv {

/// The process's main loop.
class MainLoop
{
public:
    MainLoop() = default;
    ~MainLoop();
    MainLoop(MainLoop const&) = delete;
    MainLoop& operator=(MainLoop const&) = delete;

    /// After this call, SIGINT and SIGTERM end Run(); before it, they end the process.
    void CatchSignals();

    /// Runs until a caught signal arrives or Quit() is called. Returns the signal's number, or 0.
    /// @throws the exception of a `work` of After(), which also ends it
    int Run();
    void Quit() { End(0); }

    /// Calls `work` once after `delay`.
    /// May be called from any thread.
    void After(std::chrono::milliseconds delay, std::function<void()> work);

private:
    struct Work;

    void End(int signal);
    void Call(guint source, std::function<void()> const& work) noexcept;

    template <int Signal>
    static gboolean OnSignal(gpointer self)
    {
        static_cast<MainLoop*>(self)->End(Signal);
        return G_SOURCE_CONTINUE;
    }

    Owned<GMainLoop> m_loop{g_main_loop_new(nullptr, FALSE)};
    int m_signal = 0;
    std::vector<guint> m_signalSources;
    std::mutex m_mutex; ///< guards the next member: any thread may add work
    std::set<guint> m_workSources;
    std::exception_ptr m_failure;
};

} // namespace zviptv
