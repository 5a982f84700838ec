// SPDX-License-Identifier: MIT
#include "ServiceRun.h"

#include "common/MainLoop.h"
#include "control/Link.h"
#include "control/ServiceControl.h"
#include "glib/Owned.h"

#include <zviptv/ConnectionHelperDBusClient.h>
#include <zviptv/ConnectionHelperDBusServer.h>

#include <cstring>
#include <optional>
#include <stdexcept>
#include <string>

namespace zviptv::sim {

namespace {

/// Why the system bus cannot be reached; empty when it can.
std::string WhyNoSystemBus()
{
    Error error;
    Owned<GDBusConnection> const connection(g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, error.Out()));
    return error ? error.Message() : std::string();
}

/// Whether this process owns the service's name. The bus works off a process's requests in order: the answer
/// comes after the one to the library's request for the name.
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

/// @throws std::runtime_error when the bus cannot be used
void RequireBus()
{
    std::string const reason = WhyNoSystemBus();
    if (!reason.empty()) {
        throw std::runtime_error("the system bus cannot be reached (" + reason +
                                 "): start it, set DBUS_SYSTEM_BUS_ADDRESS to a bus that runs, or use --bus "
                                 "private");
    }
    if (CConnectionHelperDBusClient::CheckConnection()) {
        throw std::runtime_error("a service runs on this bus already: stop it, or use --bus private");
    }
}

/// Applications find it from now on. @throws std::runtime_error when they cannot
void GoOnBus(Service& service)
{
    service.Announce();
    if (!service.IsOnBus()) {
        throw std::runtime_error("the system bus went away: start again, or use --bus private");
    }
    if (!OwnsServiceName()) {
        throw std::runtime_error(
            "this user may not own org.corvel.zviptvapi.dbushelper on this bus: install its "
            "policy and be the user whom that names, or use --bus private");
    }
}

} // namespace

void RunService(ServiceOptions const& options)
{
    RequireBus();
    MainLoop loop;
    Service service(options, loop);
    std::optional<ServiceControl> control;
    control.emplace(link::Descriptor, service, loop, [&] {
        GoOnBus(service);
        service.Start();
        loop.After(std::chrono::milliseconds(0), [&] { control->TellReady(); }); // play has begun by then
    });
    loop.Run();
}

} // namespace zviptv::sim
