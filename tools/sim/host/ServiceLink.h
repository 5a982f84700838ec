// SPDX-License-Identifier: MIT
#pragma once

#include "glib/Owned.h"

#include <gio/gunixfdlist.h>

#include <chrono>
#include <climits>
#include <functional>
#include <string>

namespace zviptv::sim {

/// The simulator's end of its connection with a service, which control/Link.h describes. Everything happens
/// in the main context of the creating thread.
class ServiceLink
{
public:
    /// Gets the value, or an error without a value.
    using Reply = std::function<void(GVariant* value, GError const* error)>;
    using Connected = std::function<void()>;
    using Signal = std::function<void(std::string const& interface, std::string const& name, GVariant* body)>;

    /// A call of the service.
    struct Request
    {
        char const* interface;
        std::string method;
        Owned<GVariant> parameters; ///< a tuple; null for none
        std::chrono::milliseconds limit = NoLimit;
        std::string caller; ///< its bus name; empty for the simulator itself
        Reply reply;
        Owned<GUnixFDList> descriptors = {}; ///< descriptors for the parameters
    };
    static constexpr std::chrono::milliseconds NoLimit{INT_MAX};

    /// Takes over the descriptor. Neither function may destroy the link.
    ServiceLink(int descriptor, Connected onConnected, Signal onSignal);
    /// Ends the unanswered calls.
    ~ServiceLink();
    ServiceLink(ServiceLink const&) = delete;
    ServiceLink& operator=(ServiceLink const&) = delete;

    bool IsConnected() const { return m_connection != nullptr; }

    /// Requires a connection. The reply is always called, even after the link has ended; after the time limit
    /// with the error G_IO_ERROR_TIMED_OUT.
    void Call(Request request);

private:
    static void OnConnected(GObject* source, GAsyncResult* result, gpointer self);
    static void OnReply(GObject* source, GAsyncResult* result, gpointer reply);
    static void OnSignal(GDBusConnection* connection, char const* sender, char const* path,
                         char const* interface, char const* name, GVariant* body, gpointer self);

    Connected m_onConnected;
    Signal m_onSignal;
    Owned<GCancellable> m_cancellable;
    Owned<GDBusConnection> m_connection;
    guint m_subscription = 0;
};

} // namespace zviptv::sim
