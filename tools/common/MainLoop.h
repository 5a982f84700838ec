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

    /// From now on SIGINT and SIGTERM end Run(); before they end the process.
    void CatchSignals();

    /// Runs until a caught signal comes, or Quit() is called. Returns the signal's number, or 0.
    /// @throws what `work` of After() has thrown, which ends it, too
    int Run();
    void Quit() { End(0); }

    /// Calls `work` once after `delay`; called again only when asked for again.
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
    std::mutex m_mutex; ///< of the next one: work comes from any thread
    std::set<guint> m_workSources;
    std::exception_ptr m_failure;
};

} // namespace zviptv
