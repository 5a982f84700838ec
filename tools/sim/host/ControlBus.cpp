// SPDX-License-Identifier: MIT
#include "ControlBus.h"

#include "common/PrintableText.h"
#include "control/Interface.h"
#include "verbs/Verbs.h"

#include <cstdio>
#include <memory>
#include <utility>

namespace zviptv::sim {

namespace {

constexpr char Bus[] = "org.freedesktop.DBus";
constexpr char BusPath[] = "/org/freedesktop/DBus";
constexpr int PingTimeout = 1000; // milliseconds
constexpr guint32 DoNotQueue = 4;
constexpr guint32 PrimaryOwner = 1;

} // namespace

ControlBus::ControlBus(Handler handler, Departure onLeft)
    : m_handler(std::move(handler)), m_onLeft(std::move(onLeft)), m_cancellable(g_cancellable_new())
{
    g_bus_get(G_BUS_TYPE_SYSTEM, m_cancellable.get(), OnConnected, this);
}

ControlBus::~ControlBus()
{
    g_cancellable_cancel(m_cancellable.get());
    if (m_connection) {
        g_dbus_connection_unregister_object(m_connection.get(), m_exported);
        g_dbus_connection_signal_unsubscribe(m_connection.get(), m_departures);
        g_signal_handler_disconnect(m_connection.get(), m_closed);
    }
}

/// After a cancelled call, `self` no longer exists. The service reports that the bus cannot be reached.
void ControlBus::OnConnected(GObject* /*source*/, GAsyncResult* result, gpointer self)
{
    Error error;
    Owned<GDBusConnection> connection(g_bus_get_finish(result, error.Out()));
    if (error && error.Is(G_IO_ERROR_CANCELLED)) {
        return;
    }
    auto& bus = *static_cast<ControlBus*>(self);
    if (error) {
        bus.m_isSettled = true;
        return;
    }
    static constexpr GDBusInterfaceVTable calls = {OnCall, nullptr, nullptr, {}};
    bus.m_connection = std::move(connection);
    bus.Follow();
    bus.m_exported = g_dbus_connection_register_object(bus.m_connection.get(), verbs::ObjectPath,
                                                       SimulatorInterface(), &calls, self, nullptr, nullptr);
    g_dbus_connection_call(bus.m_connection.get(), Bus, BusPath, Bus, "RequestName",
                           g_variant_new("(su)", verbs::BusName, DoNotQueue), G_VARIANT_TYPE("(u)"),
                           G_DBUS_CALL_FLAGS_NONE, -1, bus.m_cancellable.get(), OnName, self);
}

/// Receives the loss of clients and of the bus.
void ControlBus::Follow()
{
    g_dbus_connection_set_exit_on_close(m_connection.get(), FALSE);
    m_closed = g_signal_connect_swapped(m_connection.get(), "closed", G_CALLBACK(OnClosed), this);
    m_departures =
        g_dbus_connection_signal_subscribe(m_connection.get(), Bus, Bus, "NameOwnerChanged", BusPath, nullptr,
                                           G_DBUS_SIGNAL_FLAGS_NONE, OnOwner, this, nullptr);
}

void ControlBus::OnOwner(GDBusConnection* /*connection*/, char const* /*sender*/, char const* /*path*/,
                         char const* /*interface*/, char const* /*name*/, GVariant* body, gpointer self)
{
    char const* name = nullptr;
    char const* owner = nullptr;
    g_variant_get(body, "(&s&s&s)", &name, nullptr, &owner);
    if (*owner == '\0' && g_dbus_is_unique_name(name) != FALSE) {
        static_cast<ControlBus*>(self)->m_onLeft(name);
    }
}

void ControlBus::OnClosed(ControlBus* self)
{
    if (!std::exchange(self->m_isLost, true)) {
        Owned<char> const address(g_dbus_address_get_for_bus_sync(G_BUS_TYPE_SYSTEM, nullptr, nullptr));
        std::fprintf(stderr,
                     "zviptv-sim: the bus %s is lost: it died, or closed the connection; check that it runs, "
                     "and start the simulator again\n",
                     EscapeText(address ? address.get() : "").c_str());
    }
}

bool ControlBus::HasLostBus()
{
    if (m_connection && !m_isLost) {
        Owned<GVariant> const answer(g_dbus_connection_call_sync(
            m_connection.get(), Bus, BusPath, Bus, "GetId", nullptr, G_VARIANT_TYPE("(s)"),
            G_DBUS_CALL_FLAGS_NONE, PingTimeout, nullptr, nullptr));
        if (g_dbus_connection_is_closed(m_connection.get()) != FALSE) {
            OnClosed(this);
        }
    }
    return m_isLost;
}

void ControlBus::OnName(GObject* source, GAsyncResult* result, gpointer self)
{
    Error error;
    Owned<GVariant> const answer(
        g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, error.Out()));
    if (error && error.Is(G_IO_ERROR_CANCELLED)) {
        return;
    }
    static_cast<ControlBus*>(self)->m_isSettled = true;
    guint32 outcome = PrimaryOwner;
    if (answer) {
        g_variant_get(answer.get(), "(u)", &outcome);
    }
    if (error && !error.Is(G_IO_ERROR_CLOSED)) {
        std::fprintf(stderr,
                     "zviptv-sim: no control interface: this user may not own %s on this bus; install its "
                     "policy and run as the user that it names, or use --bus private\n",
                     verbs::BusName);
    } else if (outcome != PrimaryOwner) {
        std::fprintf(stderr,
                     "zviptv-sim: no control interface: %s has an owner on this bus; stop the other "
                     "simulator, or use --bus private\n",
                     verbs::BusName);
    }
}

void ControlBus::OnCall(GDBusConnection* /*connection*/, char const* /*sender*/, char const* /*path*/,
                        char const* /*interface*/, char const* method, GVariant* parameters,
                        GDBusMethodInvocation* invocation, gpointer self)
{
    static_cast<ControlBus*>(self)->m_handler(method, parameters, invocation);
}

void ControlBus::AfterFlush(std::function<void()> work)
{
    if (!m_connection) {
        work();
        return;
    }
    auto const onFlushed = [](GObject* source, GAsyncResult* result, gpointer data) {
        std::unique_ptr<std::function<void()>> const owned(static_cast<std::function<void()>*>(data));
        g_dbus_connection_flush_finish(G_DBUS_CONNECTION(source), result, nullptr);
        (*owned)();
    };
    g_dbus_connection_flush(m_connection.get(), nullptr, onFlushed,
                            std::make_unique<std::function<void()>>(std::move(work)).release());
}

void ControlBus::Emit(std::string const& interface, std::string const& signal, GVariant* body)
{
    Owned<GVariant> const owned(body == nullptr ? nullptr : g_variant_ref_sink(body));
    if (m_connection) {
        g_dbus_connection_emit_signal(m_connection.get(), nullptr, verbs::ObjectPath, interface.c_str(),
                                      signal.c_str(), owned.get(), nullptr);
    }
}

} // namespace zviptv::sim
