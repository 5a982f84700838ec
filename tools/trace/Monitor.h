// SPDX-License-Identifier: MIT
#pragma once

#include "Message.h"
#include "glib/Owned.h"

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>

namespace zviptv::trace {

/// The bus cannot be watched; the text says why and what to do.
class MonitorError : public std::runtime_error
{
public:
    MonitorError(std::string const& text, bool hasBus) : std::runtime_error(text), m_hasBus(hasBus) {}

    /// False if there is no bus at the address, true if the bus refuses to be watched.
    bool HasBus() const { return m_hasBus; }

private:
    bool m_hasBus;
};

/// Watches a bus: sees every message that the bus passes on, from the return of the constructor on. The
/// messages are queued without a limit until they are handled, so that the bus never waits for them.
class Monitor
{
public:
    struct Handlers
    {
        /// A message, in the order of the bus.
        std::function<void(Message const&)> onMessage;
        /// No more messages are queued at the moment. May be empty.
        std::function<void()> onPause;
        /// The bus has closed the connection; all messages before were handled. May be empty.
        std::function<void(std::string const& reason)> onEnd;
    };

    /// Connects to the bus at `address` and becomes its monitor. The handlers are called while the calling
    /// thread's default main context is iterated. They must not throw. The Monitor has to be destroyed on
    /// the same thread, not by a handler. @throws MonitorError
    Monitor(std::string const& address, Handlers handlers);
    ~Monitor();
    Monitor(Monitor const&) = delete;
    Monitor& operator=(Monitor const&) = delete;

    /// Handles what is queued, then returns.
    void Drain();

    /// Waits until everything is queued that the bus had passed on when this was called, at most 5 seconds;
    /// then handles it. For that it connects to the bus once more.
    void CatchUp();

    /// Messages that GLib could read but not write again; they were not handed over.
    std::uint64_t Lost() const;

private:
    class Inbox;

    static GDBusMessage* Filter(GDBusConnection* connection, GDBusMessage* message, gboolean isIncoming,
                                gpointer inbox);
    static void OnClosed(GDBusConnection* connection, gboolean isRemote, GError* error, gpointer self);

    std::string const m_address;
    std::shared_ptr<Inbox> const m_inbox;
    std::function<void(std::string const& reason)> const m_onEnd;
    Owned<GDBusConnection> m_connection;
    gulong m_closed = 0;
};

} // namespace zviptv::trace
