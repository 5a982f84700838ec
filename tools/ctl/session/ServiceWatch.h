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
        Present,  ///< the service is there, or there again
        Gone,     ///< the service is not there, or not any more
        BusClosed ///< the bus closed the connection: nothing will come any more
    };
    using Handler = std::function<void(Event event)>;

    /// The first event, soon, tells how it is now. Another `name` is that of a part of the service.
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
