// SPDX-License-Identifier: MIT
#include "ServiceWatch.h"

#include <utility>

namespace zviptv::ctl {

ServiceWatch::ServiceWatch(GDBusConnection* connection, Handler handler, char const* name)
    : m_connection(connection), m_handler(std::move(handler)),
      m_closed(g_signal_connect(connection, "closed", G_CALLBACK(OnClosed), this)),
      m_watch(g_bus_watch_name_on_connection(connection, name, G_BUS_NAME_WATCHER_FLAGS_NONE, OnAppeared,
                                             OnVanished, this, nullptr))
{
}

ServiceWatch::~ServiceWatch()
{
    g_signal_handler_disconnect(m_connection, m_closed);
}

void ServiceWatch::OnAppeared(GDBusConnection* /*connection*/, char const* /*name*/, char const* /*owner*/,
                              gpointer self)
{
    static_cast<ServiceWatch*>(self)->m_handler(Event::Present);
}

void ServiceWatch::OnVanished(GDBusConnection* connection, char const* /*name*/, gpointer self)
{
    // Without a connection, the bus has closed it, which OnClosed reports.
    if (connection != nullptr) {
        static_cast<ServiceWatch*>(self)->m_handler(Event::Gone);
    }
}

void ServiceWatch::OnClosed(GDBusConnection* /*connection*/, gboolean /*vanished*/, GError* /*error*/,
                            gpointer self)
{
    static_cast<ServiceWatch*>(self)->m_handler(Event::BusClosed);
}

} // namespace zviptv::ctl
