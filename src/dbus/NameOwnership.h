// SPDX-License-Identifier: MIT
#pragma once

#include "dbus/CloseWatch.h"
#include "dbus/SignalSubscription.h"

#include <memory>
#include <string>

namespace zviptv {

/// The request for a well-known name, which waits in the bus's queue while another connection owns the name.
/// The destructor releases it.
/// It replaces g_bus_own_name_on_connection, whose release waits for the bus's answer: it blocks for 25 s on
/// a bus that has stopped, and ends a process that has no free descriptor.
class NameOwnership
{
public:
    NameOwnership() = default;
    /// Returns at once. `acquired` and `lost` first report the outcome of the request, however late the bus
    /// answers, and then every change, through the main context that is the calling thread's default. `lost`
    /// gets a null connection if the connection has closed. Both may still be called on another thread while
    /// the ownership ends.
    NameOwnership(GDBusConnection* connection, std::string const& name, GBusNameAcquiredCallback acquired,
                  GBusNameLostCallback lost);
    NameOwnership(NameOwnership&& other) noexcept = default;
    NameOwnership& operator=(NameOwnership&& other) noexcept;
    ~NameOwnership();

    /// Returns false if no name was requested.
    explicit operator bool() const { return m_request != nullptr; }

private:
    class Request;
    using Pointer = std::shared_ptr<Request>;

    static void OnAnswered(GObject* source, GAsyncResult* result, void* data);
    static void OnSignal(GDBusConnection* connection, char const* sender, char const* path,
                         char const* interface, char const* signal, GVariant* parameters, void* data);

    Pointer m_request;
    SignalSubscription m_changes;
    CloseWatch m_closed;
};

} // namespace zviptv
