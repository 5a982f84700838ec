// SPDX-License-Identifier: MIT
#pragma once

#include "glib/Owned.h"

#include <zviptv/ConnectionHelperDBusClient.h>

#include <functional>

namespace zviptv::ctl {

/// Follows the service on the bus while the main context is iterated.
class ServiceWatch
{
public:
    enum class Event
    {
        Present,  ///< the service is on the bus, or has come back
        Gone,     ///< the service is not on the bus, or has left
        BusClosed ///< the bus closed the connection: no more events follow
    };
    using Handler = std::function<void(Event event)>;

    /// The first event follows soon and reports the present state. `name` can also be the name of a part of
    /// the service.
    ServiceWatch(GDBusConnection* connection, Handler handler,
                 char const* name = CConnectionHelperDBusClient::BUSNAME);
    ~ServiceWatch();

    ServiceWatch(ServiceWatch const&) = delete;
    ServiceWatch& operator=(ServiceWatch const&) = delete;

private:
    static void OnAppeared(GDBusConnection* connection, char const* name, char const* owner, gpointer self);
    static void OnVanished(GDBusConnection* connection, char const* name, gpointer self);
    static void OnClosed(GDBusConnection* connection, gboolean vanished, GError* error, gpointer self);

    GDBusConnection* m_connection;
    Handler m_handler;
    unsigned long m_closed;
    NameWatch m_watch;
};

} // namespace zviptv::ctl
