// SPDX-License-Identifier: MIT
#include "WatchSet.h"

#include <algorithm>
#include <new>

namespace zviptv::test {

namespace {

short PollEventsOf(DBusWatch* watch)
{
    unsigned const flags = dbus_watch_get_flags(watch);
    int events = 0;
    if ((flags & DBUS_WATCH_READABLE) != 0) {
        events |= POLLIN;
    }
    if ((flags & DBUS_WATCH_WRITABLE) != 0) {
        events |= POLLOUT;
    }
    return static_cast<short>(events);
}

unsigned WatchFlagsOf(short events)
{
    unsigned flags = 0;
    if ((events & POLLIN) != 0) {
        flags |= DBUS_WATCH_READABLE;
    }
    if ((events & POLLOUT) != 0) {
        flags |= DBUS_WATCH_WRITABLE;
    }
    if ((events & POLLERR) != 0) {
        flags |= DBUS_WATCH_ERROR;
    }
    if ((events & POLLHUP) != 0) {
        flags |= DBUS_WATCH_HANGUP;
    }
    return flags;
}

WatchSet::Clock::time_point DeadlineOf(DBusTimeout* timeout)
{
    return WatchSet::Clock::now() + std::chrono::milliseconds(dbus_timeout_get_interval(timeout));
}

} // namespace

void WatchSet::Attach(DBusConnection* connection)
{
    bool const watched = dbus_connection_set_watch_functions(connection, AddWatch, RemoveWatch, IgnoreToggle,
                                                             this, nullptr) != 0;
    bool const timed = dbus_connection_set_timeout_functions(connection, AddTimeout, RemoveTimeout,
                                                             ToggleTimeout, this, nullptr) != 0;
    if (!watched || !timed) {
        throw std::bad_alloc();
    }
}

void WatchSet::Detach(DBusConnection* connection)
{
    dbus_connection_set_watch_functions(connection, nullptr, nullptr, nullptr, nullptr, nullptr);
    dbus_connection_set_timeout_functions(connection, nullptr, nullptr, nullptr, nullptr, nullptr);
}

void WatchSet::AddTo(std::vector<pollfd>& polled) const
{
    for (DBusWatch* const watch : m_watches) {
        if (dbus_watch_get_enabled(watch) != 0) {
            polled.push_back(pollfd{dbus_watch_get_unix_fd(watch), PollEventsOf(watch), 0});
        }
    }
}

WatchSet::Clock::time_point WatchSet::NextDeadline() const
{
    auto next = Clock::time_point::max();
    for (auto const& timer : m_timers) {
        if (dbus_timeout_get_enabled(timer.timeout) != 0) {
            next = std::min(next, timer.deadline);
        }
    }
    return next;
}

bool WatchSet::Holds(DBusWatch* watch) const
{
    return std::find(m_watches.begin(), m_watches.end(), watch) != m_watches.end();
}

void WatchSet::HandleEvents(std::vector<pollfd> const& polled)
{
    // Serving one watch may remove or disable others, so each is looked up again.
    for (DBusWatch* const watch : std::vector<DBusWatch*>(m_watches)) {
        if (!Holds(watch) || dbus_watch_get_enabled(watch) == 0) {
            continue;
        }
        int const descriptor = dbus_watch_get_unix_fd(watch);
        int const wanted = PollEventsOf(watch) | POLLERR | POLLHUP;
        int events = 0;
        for (auto const& one : polled) {
            if (one.fd == descriptor) {
                events |= one.revents & wanted;
            }
        }
        if (events != 0) {
            dbus_watch_handle(watch, WatchFlagsOf(static_cast<short>(events)));
        }
    }
}

void WatchSet::HandleTimeouts(Clock::time_point now)
{
    for (auto const& due : std::vector<Timer>(m_timers)) {
        auto const held = std::find_if(m_timers.begin(), m_timers.end(),
                                       [&](Timer const& timer) { return timer.timeout == due.timeout; });
        if (held == m_timers.end() || held->deadline > now || dbus_timeout_get_enabled(held->timeout) == 0) {
            continue;
        }
        held->deadline = DeadlineOf(held->timeout);
        dbus_timeout_handle(due.timeout);
    }
}

dbus_bool_t WatchSet::AddWatch(DBusWatch* watch, void* self)
{
    static_cast<WatchSet*>(self)->m_watches.push_back(watch);
    return TRUE;
}

void WatchSet::RemoveWatch(DBusWatch* watch, void* self)
{
    auto& watches = static_cast<WatchSet*>(self)->m_watches;
    watches.erase(std::remove(watches.begin(), watches.end(), watch), watches.end());
}

void WatchSet::IgnoreToggle(DBusWatch*, void*)
{
    // Whether a watch is enabled is asked before each poll().
}

dbus_bool_t WatchSet::AddTimeout(DBusTimeout* timeout, void* self)
{
    static_cast<WatchSet*>(self)->m_timers.push_back(Timer{timeout, DeadlineOf(timeout)});
    return TRUE;
}

void WatchSet::RemoveTimeout(DBusTimeout* timeout, void* self)
{
    auto& timers = static_cast<WatchSet*>(self)->m_timers;
    timers.erase(std::remove_if(timers.begin(), timers.end(),
                                [&](Timer const& timer) { return timer.timeout == timeout; }),
                 timers.end());
}

void WatchSet::ToggleTimeout(DBusTimeout* timeout, void* self)
{
    for (auto& timer : static_cast<WatchSet*>(self)->m_timers) {
        if (timer.timeout == timeout) {
            timer.deadline = DeadlineOf(timeout);
        }
    }
}

} // namespace zviptv::test
