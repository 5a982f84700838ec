// SPDX-License-Identifier: MIT
#include "common/MainLoop.h"

#include <glib-unix.h>

#include <csignal>
#include <memory>
#include <utility>

namespace zviptv {

/// Work to do later.
struct MainLoop::Work
{
    MainLoop& loop;
    std::function<void()> function;

    static gboolean CallOnce(gpointer self)
    {
        auto const* const work = static_cast<Work*>(self);
        work->loop.Call(g_source_get_id(g_main_current_source()), work->function);
        return G_SOURCE_REMOVE;
    }

    static void Delete(gpointer self) { delete static_cast<Work*>(self); }
};

MainLoop::~MainLoop()
{
    for (guint const source : m_signalSources) {
        g_source_remove(source);
    }
    for (guint const source : m_workSources) {
        g_source_remove(source);
    }
}

void MainLoop::CatchSignals()
{
    if (m_signalSources.empty()) {
        m_signalSources = {g_unix_signal_add(SIGINT, OnSignal<SIGINT>, this),
                           g_unix_signal_add(SIGTERM, OnSignal<SIGTERM>, this)};
    }
}

int MainLoop::Run()
{
    if (!m_failure) {
        g_main_loop_run(m_loop.get());
    }
    if (m_failure) {
        std::rethrow_exception(std::exchange(m_failure, nullptr));
    }
    return m_signal;
}

void MainLoop::End(int signal)
{
    m_signal = signal;
    g_main_loop_quit(m_loop.get());
}

void MainLoop::After(std::chrono::milliseconds delay, std::function<void()> work)
{
    auto owned = std::make_unique<Work>(Work{*this, std::move(work)});
    std::lock_guard<std::mutex> const lock(m_mutex); // the work may be due before its number is known
    m_workSources.insert(g_timeout_add_full(G_PRIORITY_DEFAULT, static_cast<guint>(delay.count()),
                                            Work::CallOnce, owned.release(), Work::Delete));
}

/// An exception must not pass into GLib: it is kept until the end of Run().
void MainLoop::Call(guint source, std::function<void()> const& work) noexcept
{
    {
        std::lock_guard<std::mutex> const lock(m_mutex);
        m_workSources.erase(source);
    }
    try {
        work();
    } catch (...) {
        if (!m_failure) {
            m_failure = std::current_exception();
        }
        g_main_loop_quit(m_loop.get());
    }
}

} // namespace zviptv
