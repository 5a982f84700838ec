// SPDX-License-Identifier: MIT
#pragma once

#include "client/link/CloseSource.h"
#include "dbus/SignalSubscription.h"

#include <functional>
#include <memory>
#include <string>

namespace zviptv::client {

/// Reports the owner of the service's name, at first and after each change, and the end of the connection.
/// Ends with its owner, also inside a report. Everything runs through the main context that is the default of
/// the thread that made it.
class ServiceWatch
{
public:
    struct Reports
    {
        std::function<void(std::string const& owner)> owned; ///< unique name; empty if nobody owns it
        std::function<void()> closed;                        ///< the connection has closed
    };

    ServiceWatch(GDBusConnection* connection, Reports reports);

private:
    static void OnOwnerChanged(GDBusConnection* connection, char const* sender, char const* path,
                               char const* interface, char const* signal, GVariant* parameters, void* data);
    static void OnOwnerAsked(GObject* source, GAsyncResult* result, void* data);

    std::shared_ptr<Reports const> m_reports;
    SignalSubscription m_changes;
    CloseSource m_closed;
};

} // namespace zviptv::client
