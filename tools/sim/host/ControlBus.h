// SPDX-License-Identifier: MIT
#pragma once

#include "glib/Owned.h"

#include <functional>
#include <string>

namespace zviptv::sim {

/// The control interface on the bus: owns the name, exports the object, receives calls. Everything happens in
/// the main context of the creating thread; nothing blocks.
class ControlBus
{
public:
    /// Handles a method of the control interface, or Get or GetAll of org.freedesktop.DBus.Properties. The
    /// handler may answer the invocation at any time.
    using Handler = std::function<void(std::string const& method, GVariant* parameters,
                                       GDBusMethodInvocation* invocation)>;

    /// Gets the unique names of clients that have left the bus.
    using Departure = std::function<void(std::string const& client)>;

    ControlBus(Handler handler, Departure onLeft);
    ~ControlBus();
    ControlBus(ControlBus const&) = delete;
    ControlBus& operator=(ControlBus const&) = delete;

    /// Whether it can be called, or never will: then the reason has been printed, unless the bus cannot be
    /// reached.
    bool IsSettled() const { return m_isSettled; }

    /// Whether the bus has closed the connection; queries the bus. The first time, a message is printed.
    bool HasLostBus();

    /// Whether the loss is known; does not query the bus.
    bool KnowsLoss() const { return m_isLost; }

    /// Calls `work` after everything has been written to the bus.
    void AfterFlush(std::function<void()> work);

    /// Sends a signal to all clients, but only after the interface can be called.
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
