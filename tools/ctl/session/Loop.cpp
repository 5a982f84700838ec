// SPDX-License-Identifier: MIT
#include "Loop.h"

#include "glib/Owned.h"

#include <glib-unix.h>

#include <utility>

namespace zviptv::ctl {

namespace {

gboolean RunWork(gpointer work)
{
    (*static_cast<EventSource::Work*>(work))();
    return G_SOURCE_CONTINUE;
}

struct Timer
{
    GSource source;
    gint64 interval; ///< microseconds
};

/// GLib allocated it for any type.
Timer& TimerOf(GSource* source)
{
    return *static_cast<Timer*>(static_cast<void*>(source));
}

gboolean FireTimer(GSource* source, GSourceFunc work, gpointer data)
{
    gint64 const interval = TimerOf(source).interval;
    gint64 next = g_source_get_ready_time(source) + interval;
    for (gint64 const now = g_get_monotonic_time(); next <= now;) {
        next += interval;
    }
    g_source_set_ready_time(source, next);
    return work(data);
}

GSourceFuncs timerFunctions = {nullptr, nullptr, FireTimer, nullptr, nullptr, nullptr};

} // namespace

EventSource::EventSource(unsigned id, std::unique_ptr<Work> work) : m_id(id), m_work(std::move(work)) {}

EventSource::~EventSource()
{
    if (m_id != 0) {
        g_source_remove(m_id);
    }
}

EventSource::EventSource(EventSource&& other) noexcept
    : m_id(std::exchange(other.m_id, 0)), m_work(std::move(other.m_work))
{
}

EventSource& EventSource::operator=(EventSource&& other) noexcept
{
    std::swap(m_id, other.m_id);
    std::swap(m_work, other.m_work);
    return *this;
}

EventSource Loop::Every(std::chrono::milliseconds interval, EventSource::Work work)
{
    auto owned = std::make_unique<EventSource::Work>(std::move(work));
    Owned<GSource> const source(g_source_new(&timerFunctions, sizeof(Timer)));
    gint64 const microseconds = std::chrono::microseconds(interval).count();
    TimerOf(source.get()).interval = microseconds;
    g_source_set_ready_time(source.get(), g_get_monotonic_time() + microseconds);
    g_source_set_callback(source.get(), RunWork, owned.get(), nullptr);
    unsigned const id = g_source_attach(source.get(), nullptr);
    return EventSource(id, std::move(owned));
}

EventSource Loop::OnSignal(int number, EventSource::Work work)
{
    auto owned = std::make_unique<EventSource::Work>(std::move(work));
    unsigned const id = g_unix_signal_add(number, RunWork, owned.get());
    return EventSource(id, std::move(owned));
}

void Loop::RunPending()
{
    while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
    }
}

void Loop::Run(ErrorHandler const& onError, Hook const& afterEvents)
{
    while (!m_quitting) {
        try {
            g_main_context_iteration(nullptr, TRUE);
        } catch (std::exception const& error) {
            onError(error);
        }
        afterEvents();
    }
}

} // namespace zviptv::ctl
