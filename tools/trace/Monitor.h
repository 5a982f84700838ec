// SPDX-License-Identifier: MIT
#pragma once

#include "Message.h"
#include "glib/Owned.h"

#include <chrono>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>

namespace zviptv::trace {

/// The bus cannot be watched; the text contains the reason and what to do.
class MonitorError : public std::runtime_error
{
public:
    MonitorError(std::string const& text, bool hasBus) : std::runtime_error(text), m_hasBus(hasBus) {}

    /// False if there is no bus at the address, true if the bus refuses to be watched.
    bool HasBus() const { return m_hasBus; }

private:
    bool m_hasBus;
};

/// Time limit for messages in transit. A slow machine may have ten seconds of them.
constexpr std::chrono::seconds TransitTime{15};

/// Watches a bus: receives every message that the bus delivers after the constructor has returned. The
/// messages are queued without a limit until they are handled, so that the bus never waits. Other work of the
/// thread gets its turn after 1,000 messages at the latest.
class Monitor
{
public:
    struct Handlers
    {
        /// A message, in the order of the bus.
        std::function<void(Message const&)> onMessage;
        /// Called after one or more messages, when other work gets its turn. May be empty.
        std::function<void()> onPause;
        /// Called after the bus has closed the connection and all messages were handled. May be empty.
        std::function<void(std::string const& reason)> onEnd;
    };

    /// Connects to the bus at `address` and becomes its monitor. The handlers are called while the calling
    /// thread's default main context is iterated. They must not throw. Destroy the Monitor on the same
    /// thread, not in a handler. @throws MonitorError
    Monitor(std::string const& address, Handlers handlers);
    ~Monitor();
    Monitor(Monitor const&) = delete;
    Monitor& operator=(Monitor const&) = delete;

    /// Iterates the main context until all messages are handled that the bus delivered before the call, until
    /// `limit` has passed, or until `isOver` is true, which is asked after each iteration. Opens another
    /// connection to the bus for this. @return whether all were handled
    bool CatchUp(
        std::chrono::milliseconds limit = TransitTime,
        std::function<bool()> const& isOver = [] { return false; });

    /// Number of messages that GLib could read but not write again; the handlers did not get them.
    std::uint64_t Lost() const;

private:
    class Inbox;
    struct Marker;

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
