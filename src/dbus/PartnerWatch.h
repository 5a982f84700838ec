// SPDX-License-Identifier: MIT
#pragma once

#include "dbus/CloseWatch.h"
#include "dbus/SignalSubscription.h"

#include <memory>
#include <string>

namespace zviptv {

/// Reports once that a bus name has no owner, at first or later, that it has passed from one owner to
/// another, or that the connection has closed. Ends with its destructor.
/// It replaces g_bus_watch_name_on_connection, which logs criticals if the connection closes on another
/// thread while the watch is set up.
class PartnerWatch
{
public:
    PartnerWatch() = default;
    /// `vanished` is called through the main context that is the calling thread's default, with a null
    /// connection if the connection has closed. `userData` is released with `release` when no more calls can
    /// be made.
    PartnerWatch(GDBusConnection* connection, std::string const& name, GBusNameVanishedCallback vanished,
                 void* userData, GDestroyNotify release);
    PartnerWatch(PartnerWatch&& other) noexcept = default;
    PartnerWatch& operator=(PartnerWatch&& other) noexcept;
    ~PartnerWatch();

    /// Not 0 for an active watch.
    guint Id() const { return m_changes.Id(); }

private:
    struct Watched;
    using Pointer = std::shared_ptr<Watched>;

    static void OnOwnerChanged(GDBusConnection* connection, char const* sender, char const* path,
                               char const* interface, char const* signal, GVariant* parameters, void* data);
    static void OnOwnerAsked(GObject* source, GAsyncResult* result, void* data);

    Pointer m_watched;
    SignalSubscription m_changes;
    CloseWatch m_closed;
};

} // namespace zviptv
