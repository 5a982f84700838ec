// SPDX-License-Identifier: MIT
#include "dbus/BusConnection.h"

#include "dbus/FreeDescriptors.h"

#include <mutex>

namespace zviptv {

namespace {

constexpr auto MessageBus = static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                              G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);

/// Whether the bus is at the other end. GIO notices on another thread, a moment later than the socket.
bool IsAlive(Owned<GDBusConnection> const& connection)
{
    if (!IsOpen(connection)) {
        return false;
    }
    GIOStream* const stream = g_dbus_connection_get_stream(connection.get());
    return G_IS_SOCKET_CONNECTION(stream) == FALSE ||
           g_socket_condition_check(g_socket_connection_get_socket(G_SOCKET_CONNECTION(stream)), G_IO_HUP) ==
               0;
}

/// A connection in place of one whose bus has died; null while there is no bus.
Owned<GDBusConnection> Replace(GDBusConnection* dead)
{
    Owned<GDBusConnection> connection(g_dbus_connection_new_for_address_sync(
        SystemBusAddress().c_str(), MessageBus, nullptr, nullptr, nullptr));
    if (connection != nullptr) {
        g_dbus_connection_set_exit_on_close(connection.get(), g_dbus_connection_get_exit_on_close(dead));
    }
    return connection;
}

} // namespace

std::string SystemBusAddress()
{
    Owned<char> const address(g_dbus_address_get_for_bus_sync(G_BUS_TYPE_SYSTEM, nullptr, nullptr));
    return address == nullptr ? std::string() : std::string(address.get());
}

Owned<GDBusConnection> SystemBus(Error& error)
{
    static std::mutex mutex;
    static GWeakRef last; // all zero, which is empty
    std::lock_guard<std::mutex> const lock(mutex);
    Owned<GDBusConnection> current(static_cast<GDBusConnection*>(g_weak_ref_get(&last)));
    if (current != nullptr && IsAlive(current)) {
        return current;
    }
    Error shortage;
    if (!HaveFreeDescriptors(DescriptorsOfAConnection, current == nullptr ? error : shortage)) {
        return current;
    }
    if (current == nullptr) {
        current.reset(g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, error.Out()));
    }
    if (current != nullptr && !IsAlive(current)) {
        if (Owned<GDBusConnection> next = Replace(current.get())) {
            current = std::move(next);
        }
    }
    g_weak_ref_set(&last, current.get());
    return current;
}

bool IsPresent(Owned<GDBusConnection> const& connection)
{
    Error error;
    return connection == nullptr || connection == SystemBus(error);
}

} // namespace zviptv
