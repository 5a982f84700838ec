#include "Loop.h"

#include <glib-unix.h>
#include <glib.h>

#include <utility>

namespace zviptv::ctl {

namespace {

gboolean RunWork(gpointer work)
{
    (*static_cast<EventSource::Work*>(work))();
    return G_SOURCE_CONTINUE;
}

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
    unsigned const id = g_timeout_add(static_cast<guint>(interval.count()), RunWork, owned.get());
    return EventSource(id, std::move(owned));
}

EventSource Loop::OnSignal(int number, EventSource::Work work)
{
    auto owned = std::make_unique<EventSource::Work>(std::move(work));
    unsigned const id = g_unix_signal_add(number, RunWork, owned.get());
    return EventSource(id, std::move(owned));
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
