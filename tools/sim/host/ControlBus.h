// SPDX-License-Identifier: MIT
#pragma once

#include "glib/Owned.h"

#include <functional>
#include <string>

namespace zviptv::sim {

/// The control interface on the bus: owns the name, exports the object, takes calls. Everything happens in
/// the main context of the thread that makes it; nothing waits.
class ControlBus
{
public:
    /// A method of the control interface, or Get or GetAll of org.freedesktop.DBus.Properties. The handler
    /// answers the invocation, at any time.
    using Handler = std::function<void(std::string const& method, GVariant* parameters,
                                       GDBusMethodInvocation* invocation)>;

    /// Gets the unique names of clients that have left the bus.
    using Departure = std::function<void(std::string const& client)>;

    ControlBus(Handler handler, Departure onLeft);
    ~ControlBus();
    ControlBus(ControlBus const&) = delete;
    ControlBus& operator=(ControlBus const&) = delete;

    /// It can be called, or it is known that it never can: then the user has been told why, unless the bus
    /// cannot be reached.
    bool IsSettled() const { return m_isSettled; }

    /// Whether the bus has closed the connection; asks the bus. The first time, the user is told.
    bool HasLostBus();

    /// Whether that is known; does not ask.
    bool KnowsLoss() const { return m_isLost; }

    /// Calls `work` once everything has been written to the bus.
    void AfterFlush(std::function<void()> work);

    /// To everybody; to nobody before it can be called.
    void Emit(std::string const& interface, std::string const& signal, GVariant* body);

private:
    static void OnConnected(GObject* source, GAsyncResult* result, gpointer self);
    static void OnName(GObject* source, GAsyncResult* result, gpointer self);
    static void OnCall(GDBusConnection* connection, char const* sender, char const* path,
                       char const* interface, char const* method, GVariant* parameters,
                       GDBusMethodInvocation* invocation, gpointer self);

    static void OnOwner(GDBusConnection* connection, char const* sender, char const* path,
                        char const* interface, char const* name, GVariant* body, gpointer self);
    static void OnClosed(ControlBus* self);
    void Follow();

    Handler m_handler;
    Departure m_onLeft;
    Owned<GCancellable> m_cancellable;
    Owned<GDBusConnection> m_connection;
    guint m_exported = 0;
    guint m_departures = 0;
    gulong m_closed = 0;
    bool m_isLost = false;
    bool m_isSettled = false;
};

} // namespace zviptv::sim
