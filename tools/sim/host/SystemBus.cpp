#include "SystemBus.h"

#include <zviptv/ConnectionHelperDBusServer.h>

#include <gio/gio.h>

#include <cstring>
#include <memory>

namespace zviptv::sim {

namespace {

struct Release
{
    void operator()(GDBusConnection* connection) const { g_object_unref(connection); }
    void operator()(GVariant* value) const { g_variant_unref(value); }
    void operator()(GError* error) const { g_error_free(error); }
};

template <typename Handle>
using Owned = std::unique_ptr<Handle, Release>;

} // namespace

std::string WhyNoSystemBus()
{
    GError* raw = nullptr;
    Owned<GDBusConnection> const connection(g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, &raw));
    Owned<GError> const error(raw);
    return error == nullptr ? std::string() : error->message;
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
