// SPDX-License-Identifier: MIT
#pragma once

#include <dbus/dbus.h>

#include <poll.h>

#include <chrono>
#include <vector>

namespace zviptv::test {

/// The file descriptors and time-outs that a connection wants served, for use with poll(). Belongs to
/// the one thread that uses the connection; `this` must stay where it is while attached.
class WatchSet
{
public:
    using Clock = std::chrono::steady_clock;

    WatchSet() = default;
    WatchSet(WatchSet const&) = delete;
    WatchSet& operator=(WatchSet const&) = delete;

    void Attach(DBusConnection* connection);
    void Detach(DBusConnection* connection);

    /// Appends the descriptors to poll.
    void AddTo(std::vector<pollfd>& polled) const;
    /// Earliest time-out, Clock::time_point::max() if there is none.
    Clock::time_point NextDeadline() const;

    /// Serves the descriptors that poll() has reported.
    void HandleEvents(std::vector<pollfd> const& polled);
    void HandleTimeouts(Clock::time_point now);

private:
    struct Timer
    {
        DBusTimeout* timeout;
        Clock::time_point deadline;
    };

    static dbus_bool_t AddWatch(DBusWatch* watch, void* self);
    static void RemoveWatch(DBusWatch* watch, void* self);
    static void IgnoreToggle(DBusWatch* watch, void* self);
    static dbus_bool_t AddTimeout(DBusTimeout* timeout, void* self);
    static void RemoveTimeout(DBusTimeout* timeout, void* self);
    static void ToggleTimeout(DBusTimeout* timeout, void* self);

    bool Holds(DBusWatch* watch) const;

    std::vector<DBusWatch*> m_watches;
    std::vector<Timer> m_timers;
};

} // namespace zviptv::test
