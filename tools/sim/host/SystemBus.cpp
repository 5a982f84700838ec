#include "SystemBus.h"

#include "glib/Owned.h"

#include <zviptv/ConnectionHelperDBusServer.h>

#include <cstring>

namespace zviptv::sim {

std::string WhyNoSystemBus()
{
    Error error;
    Owned<GDBusConnection> const connection(g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, error.Out()));
    return error ? error.Message() : std::string();
}

bool OwnsServiceName()
{
    Owned<GDBusConnection> const connection(g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, nullptr));
    if (connection == nullptr) {
        return false;
    }
    Owned<GVariant> const answer(g_dbus_connection_call_sync(
        connection.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
        "GetNameOwner", g_variant_new("(s)", CConnectionHelperDBusServer::CONNECTION_NAME),
        G_VARIANT_TYPE("(s)"), G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr));
    if (answer == nullptr) {
        return false;
    }
    char const* owner = nullptr;
    g_variant_get(answer.get(), "(&s)", &owner);
    return std::strcmp(owner, g_dbus_connection_get_unique_name(connection.get())) == 0;
}

} // namespace zviptv::sim
