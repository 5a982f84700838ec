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

constexpr int BusLost = 1;

/// Whether this process owns the service's name. The bus handles the requests of a process in order: this
/// answer arrives after the one to the library's request for the name.
bool OwnsServiceName(GDBusConnection* connection)
{
    Owned<GVariant> const answer(g_dbus_connection_call_sync(
        connection, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "GetNameOwner",
        g_variant_new("(s)", CConnectionHelperDBusServer::CONNECTION_NAME), G_VARIANT_TYPE("(s)"),
        G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr));
    if (answer == nullptr) {
        return false;
    }
    char const* owner = nullptr;
    g_variant_get(answer.get(), "(&s)", &owner);
    return std::strcmp(owner, g_dbus_connection_get_unique_name(connection)) == 0;
}

/// The connection that the library uses, too. @throws std::runtime_error if the bus cannot be used
Owned<GDBusConnection> RequireBus()
{
    Error error;
    Owned<GDBusConnection> connection(g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, error.Out()));
    if (error) {
        throw std::runtime_error(std::string("the system bus cannot be reached (") + error.Message() +
                                 "): start it, set DBUS_SYSTEM_BUS_ADDRESS to a bus that runs, or use --bus "
                                 "private");
    }
    g_dbus_connection_set_exit_on_close(connection.get(), FALSE); // the loss of the bus is reported
    if (CConnectionHelperDBusClient::CheckConnection()) {
        throw std::runtime_error("a service runs on this bus already: stop it, or use --bus private");
    }
    return connection;
}

/// Lets applications find the service. @throws std::runtime_error if they cannot
void AnnounceOnBus(Service& service, GDBusConnection* connection)
{
    service.Announce();
    if (!service.IsOnBus()) {
        throw std::runtime_error("the system bus was lost: start it again, or use --bus private");
    }
    if (!OwnsServiceName(connection)) {
        throw std::runtime_error(
            "this user may not own org.corvel.zviptvapi.dbushelper on this bus: install its "
            "policy and run as the user that it names, or use --bus private");
    }
}

/// Ends the loop if the bus closes the connection.
class BusWatch
{
public:
    BusWatch(GDBusConnection* connection, MainLoop& loop)
        : m_connection(connection),
          m_handler(g_signal_connect_swapped(connection, "closed", G_CALLBACK(OnClosed), &loop))
    {
    }
    ~BusWatch() { g_signal_handler_disconnect(m_connection, m_handler); }
    BusWatch(BusWatch const&) = delete;
    BusWatch& operator=(BusWatch const&) = delete;

private:
    static void OnClosed(MainLoop* loop) { loop->Quit(); }

    GDBusConnection* m_connection;
    gulong m_handler;
};

} // namespace

int RunService(ServiceOptions options, bool returns)
{
    options.playback.mayFail = returns;
    options.guideMayFail = returns;
    Owned<GDBusConnection> const bus = RequireBus();
    MainLoop loop;
    BusWatch const watch(bus.get(), loop);
    Service service(options, loop);
    if (Replay* const replay = service.Replayed()) {
        replay->ListUnrecordedIn(link::UnrecordedDescriptor);
    }
    std::optional<ServiceControl> control;
    control.emplace(link::Descriptor, service, loop, [&] {
        AnnounceOnBus(service, bus.get());
        service.Start();
        loop.After(std::chrono::milliseconds(0),
                   [&] { control->ReportReady(); }); // playback has begun by then
    });
    loop.Run();
    return g_dbus_connection_is_closed(bus.get()) != FALSE ? BusLost : 0;
}

} // namespace zviptv::sim
